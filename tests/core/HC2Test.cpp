#include "core/HC2.h"

#include "support/TestOutput.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <string>

using namespace ORBI_LUMO25D;
using lumo_test::failureOutput;

namespace
{

/// Position of a cell by turning the square at each level; no tables.
std::uint32_t positionByRotation(std::uint32_t bits, std::uint32_t x, std::uint32_t y)
{
    std::uint32_t position = 0;
    for (std::uint32_t s = 1u << (bits - 1); s > 0; s /= 2) {
        const bool bRight = (x & s) != 0, bUpper = (y & s) != 0;
        position = position * 4 + (bRight ? (bUpper ? 2u : 3u) : (bUpper ? 1u : 0u));
        if (!bUpper) {
            if (bRight) x = ~x, y = ~y;
            std::swap(x, y);
        }
    }
    return position;
}

} // namespace

TEST(HC2, IndicesAreHilbertPositionsForEveryBitLength)
{
    std::mt19937 random(7);
    for (std::uint32_t bits = 1; bits <= 16; ++bits) {
        const double cells = static_cast<double>(1u << bits);
        const auto inCell = [&random] { return static_cast<double>(random() % 4) * 0.25; };
        const HC2 curve(-5.0, 100.0, -5.0 + cells, 100.0 + 2 * cells, 2 * bits);
        for (int i = 0; i < 3000; ++i) {
            const std::uint32_t x = static_cast<std::uint32_t>(random()) >> (32 - bits);
            const std::uint32_t y = static_cast<std::uint32_t>(random()) >> (32 - bits);
            const Point2 p(x - 5.0 + inCell(), 100.0 + 2.0 * y + 2 * inCell(), 0.0);
            ASSERT_EQ(curve.getIndex(p), positionByRotation(bits, x, y)) << bits << " bits, cell " << x << ", " << y;
        }
    }
}

TEST(HC2, OutsideWrapsAroundAndNothingIsUndefined)
{
    const double inf = std::numeric_limits<double>::infinity();
    const double max = std::numeric_limits<double>::max();
    const HC2 curve(0.0, 0.0, 1024.0, 1024.0, 20);
    // One cell beyond the upper border is the first cell again; truncation is towards zero.
    EXPECT_EQ(curve.getIndex(Point2(1024.0, 3.0, 0)), curve.getIndex(Point2(0.0, 3.0, 0)));
    EXPECT_EQ(curve.getIndex(Point2(-0.9, 3.0, 0)), curve.getIndex(Point2(0.0, 3.0, 0)));
    EXPECT_EQ(curve.getIndex(Point2(-1.0, 3.0, 0)), curve.getIndex(Point2(1023.0, 3.0, 0)));
    EXPECT_EQ(curve.getIndex(Point2(inf, -inf, 0)), 0u);
    EXPECT_EQ(curve.getIndex(Point2(std::numeric_limits<double>::quiet_NaN(), 1e300, 0)), 0u);

    for (const HC2& c : {HC2(3, 3, 3, 3, 30), HC2(0, 5, 1, 5, 30), HC2(1, 1, 0, 0, 30), HC2(-inf, 0, inf, 1, 30),
                         HC2(0, 0, 5e-324, 5e-324, 30), HC2(-max, -max, max, max, 30)}) {
        for (const double x : {-max, -1e19, -1.0, 0.0, 3.0, 5e-324, 1e19, max, inf, -inf}) {
            for (const double y : {-max, 0.0, 5.0, max, inf}) {
                EXPECT_LT(c.getIndex(Point2(x, y, 0)), 1u << 30);
            }
        }
    }
}

TEST(HC2, RangesThatOverflowStillOrderTheirPoints)
{
    const double max = std::numeric_limits<double>::max();
    const HC2 whole(-max, -max, max, max, 30);
    const HC2 unit(-1.0, -1.0, 1.0, 1.0, 30);
    std::mt19937 random(11);
    std::uniform_real_distribution<double> coordinate(-0.99, 0.99);
    for (int i = 0; i < 1000; ++i) {
        // Powers of two scale without rounding.
        const Point2 p(coordinate(random), coordinate(random), 0);
        const double scale = 8.98846567431158e307; // 2^1023
        EXPECT_EQ(HC2(-scale, -scale, scale, scale, 30).getIndex(Point2(p.x() * scale, p.y() * scale, 0)),
                  unit.getIndex(p));
        // The corners' quadrants, in the order of the curve.
        const std::uint32_t quadrant = p.x() < 0 ? (p.y() < 0 ? 0u : 1u) : (p.y() < 0 ? 3u : 2u);
        EXPECT_EQ(whole.getIndex(Point2(p.x() * max, p.y() * max, 0)) >> 28, quadrant);
    }
}

TEST(HC2, BitLengthsAreCheckedWhereTheyWereAlways)
{
    EXPECT_NE(failureOutput([] { HC2(0, 0, 1, 1, 34); }).find("HC2::HC2(..), ERROR: Can't determine Hermite factors"),
              std::string::npos);
    failureOutput([] { HC2().getIndex(Point2(0, 0, 0)); });
    // The new value is taken as it is; the next call finds it.
    for (const std::uint32_t bad : {33u, 34u, 64u, 0xFFFFFFFFu}) {
        HC2 curve;
        curve.setRange(0, 0, 1, 1, bad);
        curve.getIndex(Point2(0.3, 0.7, 0)); // some number, without undefined shifts
        const std::string text = failureOutput([&] { curve.setRange(0, 0, 1, 1, 30); });
        EXPECT_NE(text.find("HC2::HC2(..), ERROR: invalid bitlength"), std::string::npos);
    }
    HC2 curve;
    curve.setRange(0, 0, 4, 4, 2);
    curve.setRange(0, 0, 4, 4, 30);
    EXPECT_GE(curve.getIndex(Point2(1.999, 2.0, 0)), 1u << 28) << "the lower left quarter comes first";
}
