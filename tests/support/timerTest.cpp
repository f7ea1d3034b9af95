#include "freeFunctions.h"

#include "TestOutput.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace ORBI_LUMO25D
{

TEST(TimerTest, StartsStopsAndStartsAnewAndQuietNamesPrintNothing)
{
    lumo_test::CoutCapture out;
    EXPECT_EQ(timer("a b"), -1.0);
    EXPECT_EQ(out.take(), "...Timer [a b] start\n");
    EXPECT_EQ(timer("[quiet] a b"), -1.0); // names don't meet
    EXPECT_GE(timer("[quiet] a b"), 0.0);
    EXPECT_EQ(out.take(), "");
    EXPECT_GE(timer("a b"), 0.0);
    EXPECT_THAT(out.take(), testing::MatchesRegex("\\.\\.\\.Timer \\[a b\\] stop, elapsed time: [0-9]+\\.[0-9]+ s\n"));
    EXPECT_EQ(timer("a b"), -1.0);
    timer("a b");
    std::cout.unsetf(std::ios_base::floatfield);
    for (int i = 0; i < 2; ++i) EXPECT_EQ(timer(nullptr), -1.0);
}

TEST(VersionTest, TextAndNumbersAgree)
{
    EXPECT_STREQ(getLumo2DVersion(), "Lumo 2.5D, DEBUG, v1.86.557");
    EXPECT_EQ(getMajorVersionNumber() * 1000000 + getMinorVersionNumber() * 1000 + getRevisionNumber(), 1086557);
}

} // namespace ORBI_LUMO25D
