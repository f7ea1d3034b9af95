#include "freeFunctions.h"

#include "TestOutput.h"

#include <gtest/gtest.h>

#include <cstdio>

namespace ORBI_LUMO25D
{

using lumo_test::CoutCapture;

TEST(TimerTest, StartsStopsAndStartsAnew)
{
    CoutCapture out;
    EXPECT_EQ(timer("a b"), -1.0);
    EXPECT_EQ(out.take(), "...Timer [a b] start\n");
    EXPECT_EQ(timer("other"), -1.0); // names don't meet
    out.take();
    std::cout.unsetf(std::ios_base::floatfield);
    std::cout.precision(9);
    EXPECT_GE(timer("a b"), 0.0);
    const std::string stop = out.take();
    double seconds = -1.0;
    int length = 0;
    std::sscanf(stop.c_str(), "...Timer [a b] stop, elapsed time: %lf s\n%n", &seconds, &length);
    EXPECT_EQ(static_cast<std::size_t>(length), stop.size()) << stop;
    EXPECT_EQ(stop.size() - stop.find('.', 10), 7U) << stop; // three decimals
    EXPECT_EQ(std::cout.flags() & std::ios_base::floatfield, std::ios_base::fixed);
    EXPECT_EQ(std::cout.precision(), 6);
    EXPECT_EQ(timer("a b"), -1.0);
    timer("a b");
    timer("other");
    std::cout.unsetf(std::ios_base::floatfield);
}

TEST(TimerTest, QuietNamesPrintNothingAndNullIsNoName)
{
    CoutCapture out;
    EXPECT_EQ(timer("[quiet] x"), -1.0);
    EXPECT_GE(timer("[quiet] x"), 0.0);
    EXPECT_EQ(out.take(), "");
    EXPECT_EQ(timer(nullptr), -1.0);
    EXPECT_EQ(timer(nullptr), -1.0);
    timer("x [quiet]"); // the mark counts at the beginning only
    timer("x [quiet]");
    EXPECT_NE(out.take().find("stop"), std::string::npos);
    std::cout.unsetf(std::ios_base::floatfield);
}

TEST(VersionTest, TextAndNumbersAgree)
{
    EXPECT_STREQ(getLumo2DVersion(), "Lumo 2.5D, DEBUG, v1.86.557");
    const std::string numbers = std::to_string(getMajorVersionNumber()) + "." +
                                std::to_string(getMinorVersionNumber()) + "." + std::to_string(getRevisionNumber());
    EXPECT_EQ(numbers, "1.86.557");
    EXPECT_FALSE(isRelease());
}

} // namespace ORBI_LUMO25D
