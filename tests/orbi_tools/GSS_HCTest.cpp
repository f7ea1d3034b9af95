#include "orbi_tools/GSS_HC2.h"
#include "orbi_tools/GSS_HC3.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdlib>
#include <limits>
#include <random>
#include <vector>

using namespace ORBI_LUMO25D;

TEST(GSS_HC2, WalksEveryCellOnceToTheNextOne)
{
    constexpr int n = 64;
    const GSS_HC2 curve(0, 0, n, n, 12);
    std::vector<int> vCells(n * n, -1);
    for (int cell = 0; cell < n * n; ++cell) {
        const std::uint32_t index = curve.getIndex(cell % n + 0.5, cell / n + 0.5);
        ASSERT_LT(index, vCells.size());
        EXPECT_EQ(vCells[index], -1) << "two cells at one position";
        vCells[index] = cell;
    }
    for (std::size_t i = 1; i < vCells.size(); ++i) {
        const int a = vCells[i - 1];
        const int b = vCells[i];
        EXPECT_EQ(std::abs(a % n - b % n) + std::abs(a / n - b / n), 1) << "a jump at position " << i;
    }
}

TEST(GSS_HC3, WalksEveryCellOfACubeOnceToTheNextOne)
{
    for (std::uint32_t bits = 1; bits <= 5; ++bits) {
        const int n = 1 << bits;
        // Any cube: all extents are halved as the one in x.
        const GSS_HC3 curve(-1.0, 20.0, 300.0, -1.0 + 3 * n, 20.0 + 3 * n, 300.0 + 3 * n, 3 * bits);
        std::vector<int> vCells(std::size_t(1) << (3 * bits), -1);
        for (int cell = 0; cell < n * n * n; ++cell) {
            const std::uint32_t index = curve.getIndex(-1.0 + 3 * (cell % n) + 0.1, 20.0 + 3 * (cell / n % n) + 2.9,
                                                       300.0 + 3 * (cell / (n * n)));
            ASSERT_LT(index, vCells.size());
            EXPECT_EQ(vCells[index], -1) << "two cells at one position";
            vCells[index] = cell;
        }
        for (std::size_t i = 1; i < vCells.size(); ++i) {
            const int a = vCells[i - 1];
            const int b = vCells[i];
            EXPECT_EQ(std::abs(a % n - b % n) + std::abs(a / n % n - b / n % n) + std::abs(a / (n * n) - b / (n * n)),
                      1)
                << "a jump at position " << i << " with " << bits << " bits an axis";
        }
    }
}

TEST(GSS_HC3, AnyInputHasAPosition)
{
    const double inf = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double max = std::numeric_limits<double>::max();
    for (const GSS_HC3& curve : {GSS_HC3(0, 0, 0, 1, 1, 1, 30), GSS_HC3(2, 2, 2, 2, 2, 2, 30),
                                 GSS_HC3(-max, -max, -max, max, max, max, 30), GSS_HC3(0, 0, 0, 1, 50, 0, 30)}) {
        for (const double x : {-inf, -max, 0.0, 0.7, max, inf, nan}) {
            for (const double y : {-inf, 0.3, 2.0, nan}) {
                EXPECT_LT(curve.getIndex(x, y, x), 1u << 30);
            }
        }
    }
    EXPECT_EQ(GSS_HC3(0, 0, 0, 1, 1, 1, 0).getIndex(0.5, 0.5, 0.5), 0u);
}

// In children started afresh: the parent may have threads.
TEST(GSS_HCDeathTest, WrongBitLengthsEndTheProcess)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    // Death tests see the standard error stream only: the text is sent there.
    const auto toStandardError = [] { dup2(2, 1); };
    for (const std::uint32_t bad : {15u, 34u}) {
        EXPECT_EXIT((toStandardError(), GSS_HC2(0, 0, 1, 1, bad)), testing::ExitedWithCode(1),
                    "GSS_HC2, invalid parameters\n");
    }
    for (const std::uint32_t bad : {31u, 33u}) {
        EXPECT_EXIT((toStandardError(), GSS_HC3(0, 0, 0, 1, 1, 1, bad)), testing::ExitedWithCode(1),
                    "GSS_HC3::GSS_HC3\\(..\\): invalid bitlength\n");
    }
}
