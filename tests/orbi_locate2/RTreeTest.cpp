#include "orbi_locate2/RTree.h"

#include "LumoException.h"
#include "geometry/SplitMix64.h"
#include "support/TestOutput.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <initializer_list>
#include <limits>

using ORBI_LOCATE2::RTree;
using ORBI_LUMO25D::SplitMix64;

namespace
{

using Rect = std::array<double, 4>; // xmin, ymin, xmax, ymax
constexpr double inf = std::numeric_limits<double>::infinity();
constexpr double largest = std::numeric_limits<double>::max();

std::vector<std::size_t> indexed(const RTree& tree, const Rect& q)
{
    std::vector<std::size_t> v;
    tree.query(q[0], q[1], q[2], q[3], v);
    std::sort(v.begin(), v.end());
    return v;
}

std::vector<std::size_t> scanned(const std::vector<Rect>& vRects, const Rect& q)
{
    std::vector<std::size_t> v;
    for (std::size_t i = 0; i < vRects.size(); ++i) {
        const Rect& r = vRects[i];
        const bool bApart = r[2] < q[0] || q[2] < r[0] || r[3] < q[1] || q[3] < r[1];
        if (!bApart) v.push_back(i);
    }
    return v;
}

/// Boxes on a coarse grid (so that borders meet), spread, in clusters within clusters, all alike, or over all doubles.
Rect randomRect(SplitMix64& random, int kind)
{
    double size = 0.05, x = random.between(-1.0, 1.0), y = random.between(-1.0, 1.0);
    if (kind == 0) {
        return {std::round(4 * x), std::round(4 * y), std::round(4 * x) + static_cast<double>(random.index(3)),
                std::round(4 * y) + static_cast<double>(random.index(3))};
    }
    if (kind == 2) {
        const double scale = std::ldexp(1.0, -20 * static_cast<int>(random.index(8)));
        x *= scale;
        y *= scale;
        size *= scale;
    }
    if (kind == 3) return {5.0, -3.0, 5.0, -3.0};
    if (kind == 4) {
        x *= largest;
        y *= largest;
        return {x, y, std::min(x + 0.1 * largest, largest), y};
    }
    return {x, y, x + random.between(0.0, size), y + random.between(0.0, size)};
}

} // namespace

TEST(RTree2, QueriesDifferFromAScan)
{
    for (int kind = 0; kind < 5; ++kind) {
        for (const std::size_t n : std::initializer_list<std::size_t>{0, 1, 8, 9, 64, 65, 3000}) {
            SplitMix64 random(100 * n + static_cast<unsigned>(kind));
            SCOPED_TRACE(::testing::Message() << "kind " << kind << ", n " << n);
            RTree tree;
            std::vector<Rect> vRects;
            for (std::size_t i = 0; i < n; ++i) {
                vRects.push_back(randomRect(random, kind));
                tree.addObject(i, vRects[i][0], vRects[i][1], vRects[i][2], vRects[i][3]);
            }
            for (int i = 0; i < 60; ++i) {
                Rect q = i % 2 == 0 || n == 0 ? randomRect(random, kind) : vRects[random.index(n)];
                if (i % 10 == 9) q = {-inf, q[1], q[2], inf};
                ASSERT_EQ(indexed(tree, q), scanned(vRects, q));
            }
            // Objects that come after a query are found too.
            vRects.push_back({0.25, 0.25, 0.25, 7.0});
            tree.addObject(n, 0.25, 0.25, 0.25, 7.0);
            EXPECT_EQ(indexed(tree, vRects.back()), scanned(vRects, vRects.back()));
            EXPECT_EQ(indexed(tree, {-inf, -inf, inf, inf}).size(), n + 1);
            EXPECT_EQ(tree.size(), n + 1);
        }
    }
}

TEST(RTree2, BadBoxesEnterTheIndexOrAreFound)
{
    lumo_test::TempWorkDir dir;
    lumo_test::CoutCapture out;
    RTree tree;
    tree.addObject(7, 0, 0, 1, 1);
    const double nan = std::nan("");
    const struct
    {
        Rect box;
        const char* condition;
    } aBad[] = {{{1, 0, 0, 1}, "xmin<=xmax"},           {{0, 1, 1, 0}, "ymin<=ymax"},
                {{nan, 0, 1, 1}, "xmin<=xmax"},         {{0, 0, 1, nan}, "ymin<=ymax"},
                {{-inf, 0, 1, 1}, "the box is finite"}, {{0, 0, 1, inf}, "the box is finite"}};
    for (const auto& bad : aBad) {
        EXPECT_THROW(tree.addObject(1, bad.box[0], bad.box[1], bad.box[2], bad.box[3]), ORBI_LUMO25D::LumoException);
        EXPECT_NE(out.take().find(bad.condition), std::string::npos) << bad.condition;
    }
    EXPECT_EQ(tree.size(), 1U);
    EXPECT_TRUE(indexed(tree, {1, 1, 0, 0}).empty());
    EXPECT_TRUE(indexed(tree, {nan, 0, 1, 1}).empty());
    EXPECT_EQ(indexed(tree, {1, 1, 1, 1}), std::vector<std::size_t>{7});
}

TEST(RTree2, SpatialOrderLosesObjectsOrLocality)
{
    // A far outlier must not spoil the order of the rest: neighbours in it are neighbours in the plane.
    SplitMix64 random(5);
    RTree tree;
    std::vector<Rect> vRects;
    for (std::size_t i = 0; i < 10000; ++i) {
        vRects.push_back(randomRect(random, 1));
        if (i == 5000) vRects.back() = {1e30, 1e30, 1e30, 1e30};
        tree.addObject(i, vRects[i][0], vRects[i][1], vRects[i][2], vRects[i][3]);
    }
    std::vector<std::size_t> vOrder = tree.inSpatialOrder();
    double length = 0.0; // of the way along the order
    for (std::size_t i = 1; i < vOrder.size(); ++i) {
        const Rect &r = vRects[vOrder[i - 1]], &s = vRects[vOrder[i]];
        if (vOrder[i - 1] != 5000 && vOrder[i] != 5000) length += std::hypot(r[0] - s[0], r[1] - s[1]);
    }
    // 10000 steps of about sqrt(4 / 10000); in the order of input it would be 10000.
    EXPECT_LT(length, 500.0);
    std::sort(vOrder.begin(), vOrder.end());
    for (std::size_t i = 0; i < vOrder.size(); ++i) ASSERT_EQ(vOrder[i], i);
}
