#include "orbi_tools/GSS_HC2.h"
#include "orbi_tools/GSS_HC3.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdlib>
#include <limits>
#include <vector>

using namespace ORBI_LUMO25D;

namespace
{

/// Fills all cells of a cube of side n (a square if nZ is 1), which must be walked once each, without a jump.
template <class IndexOf>
void expectWalk(int n, int nZ, IndexOf indexOf)
{
    std::vector<int> vCells(static_cast<std::size_t>(n * n * nZ), -1);
    for (int cell = 0; cell < n * n * nZ; ++cell) {
        const std::uint32_t index = indexOf(cell % n, cell / n % n, cell / (n * n));
        ASSERT_LT(index, vCells.size());
        EXPECT_EQ(vCells[index], -1) << "two cells at one position";
        vCells[index] = cell;
    }
    for (std::size_t i = 1; i < vCells.size(); ++i) {
        const int a = vCells[i - 1], b = vCells[i];
        EXPECT_EQ(std::abs(a % n - b % n) + std::abs(a / n % n - b / n % n) + std::abs(a / (n * n) - b / (n * n)), 1)
            << "a jump at position " << i << ", n " << n;
    }
}

} // namespace

TEST(GSS_HC, WalksEveryCellOnceToTheNextOne)
{
    const GSS_HC2 flat(0, 0, 64, 64, 12);
    expectWalk(64, 1, [&flat](int x, int y, int) { return flat.getIndex(x + 0.5, y + 0.5); });
    for (std::uint32_t bits = 1; bits <= 5; ++bits) {
        const int n = 1 << bits; // any cube: all extents are halved as the one in x
        const GSS_HC3 curve(-1.0, 20.0, 300.0, -1.0 + 3 * n, 20.0 + 3 * n, 300.0 + 3 * n, 3 * bits);
        expectWalk(n, n, [&](int x, int y, int z) { return curve.getIndex(3 * x - 0.9, 22.9 + 3 * y, 300.0 + 3 * z); });
    }
}

TEST(GSS_HC3, AnyInputHasAPosition)
{
    using Limits = std::numeric_limits<double>;
    const double inf = Limits::infinity(), nan = Limits::quiet_NaN(), max = Limits::max();
    for (const GSS_HC3& curve : {GSS_HC3(0, 0, 0, 1, 1, 1, 30), GSS_HC3(2, 2, 2, 2, 2, 2, 30),
                                 GSS_HC3(-max, -max, -max, max, max, max, 30), GSS_HC3(0, 0, 0, 1, 50, 0, 30)}) {
        for (const double x : {-inf, -max, 0.0, 0.7, max, inf, nan}) {
            for (const double y : {-inf, 0.3, 2.0, nan}) EXPECT_LT(curve.getIndex(x, y, x), 1u << 30);
        }
    }
    EXPECT_EQ(GSS_HC3(0, 0, 0, 1, 1, 1, 0).getIndex(0.5, 0.5, 0.5), 0u);
}

// In children started afresh: the parent may have threads.
TEST(GSS_HCDeathTest, WrongBitLengthsEndTheProcess)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto toStandardError = [] { dup2(2, 1); }; // death tests see the standard error stream only
    const auto exited = testing::ExitedWithCode(1);
    EXPECT_EXIT((toStandardError(), GSS_HC2(0, 0, 1, 1, 15)), exited, "GSS_HC2, invalid parameters\n");
    EXPECT_EXIT((toStandardError(), GSS_HC2(0, 0, 1, 1, 34)), exited, "GSS_HC2, invalid parameters\n");
    for (const std::uint32_t bad : {31u, 33u}) {
        EXPECT_EXIT((toStandardError(), GSS_HC3(0, 0, 0, 1, 1, 1, bad)), exited,
                    "GSS_HC3::GSS_HC3\\(..\\): invalid bitlength\n");
    }
}
