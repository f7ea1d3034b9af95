#include "orbi_locate2/RTree.h"

#include "LumoException.h"
#include "geometry/SplitMix64.h"
#include "support/TestOutput.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cfenv>
#include <cmath>
#include <limits>
#include <thread>

using ORBI_LOCATE2::RTree;
using ORBI_LUMO25D::SplitMix64;

namespace
{

using Rect = std::array<double, 4>; // xmin, ymin, xmax, ymax
constexpr double inf = std::numeric_limits<double>::infinity();
constexpr double largest = std::numeric_limits<double>::max();

/// An index and its naive twin.
struct Twins
{
    void add(const Rect& r)
    {
        tree.addObject(vRects.size(), r[0], r[1], r[2], r[3]);
        vRects.push_back(r);
    }
    void expectSame(const Rect& q, int roundingMode = FE_TONEAREST) const
    {
        std::vector<std::size_t> vFound, vExpected;
        std::fesetround(roundingMode);
        tree.query(q[0], q[1], q[2], q[3], vFound);
        std::fesetround(FE_TONEAREST);
        std::sort(vFound.begin(), vFound.end());
        const bool bMeets = q[0] <= q[2] && q[1] <= q[3];
        for (std::size_t i = 0; bMeets && i < vRects.size(); ++i) {
            const Rect& r = vRects[i];
            if (r[0] <= q[2] && q[0] <= r[2] && r[1] <= q[3] && q[1] <= r[3]) vExpected.push_back(i);
        }
        ASSERT_EQ(vFound, vExpected);
    }
    RTree tree;
    std::vector<Rect> vRects;
};

constexpr int numKinds = 6;

/// By kind: on a coarse grid (so that borders meet), spread, in clusters within clusters, all alike, over all doubles, with
/// few bits left.
Rect randomRect(SplitMix64& random, int kind)
{
    const double aScales[] = {4.0, 1.0, std::ldexp(1.0, -20 * int(random.index(8))), 0.0, largest, 0x1p-1070};
    const double x = random.between(-1.0, 1.0), y = random.between(-1.0, 1.0), size = kind == 0 ? 0.5 : 0.05;
    Rect r = {x, y, x + random.between(0, size), y + random.between(0, size)};
    for (double& v : r) v = kind == 0 ? std::round(4.0 * v) : std::min(v, 1.0) * aScales[kind];
    return r;
}

} // namespace

TEST(RTree2, QueriesDifferFromAScan)
{
    const int aModes[] = {FE_TONEAREST, FE_DOWNWARD, FE_UPWARD, FE_TOWARDZERO};
    for (int kind = 0; kind < numKinds; ++kind) {
        for (const std::size_t n : {0U, 1U, 32U, 33U, 1024U, 1025U, 3000U}) {
            SplitMix64 random(100 * n + static_cast<unsigned>(kind));
            SCOPED_TRACE(::testing::Message() << "kind " << kind << ", n " << n);
            Twins twins;
            for (std::size_t i = 0; i < n; ++i) twins.add(randomRect(random, kind));
            std::fesetround(aModes[n % 4]);
            twins.tree.build();
            for (int i = 0; i < 60; ++i) {
                Rect q = i % 2 == 0 || n == 0 ? randomRect(random, kind) : twins.vRects[random.index(n)];
                if (i % 10 == 9) q = {-inf, q[1], q[2], inf};
                if (i % 4 == 1) q = {q[2], q[1], q[2], q[3]}; // along a border, and next to it
                if (i % 8 == 1) q[0] = q[2] = std::nextafter(q[2], inf);
                twins.expectSame(q, aModes[random.index(4)]);
            }
            twins.add({0.25, 0.25, 0.25, 7.0}); // objects that come after a query are found too
            twins.expectSame({0.25, 0.25, 0.25, 7.0});
            twins.expectSame({-inf, -inf, inf, inf});
            ASSERT_FALSE(HasFailure());
        }
    }
}

TEST(RTree2, BadBoxesEnterTheIndexOrAreFound)
{
    lumo_test::TempWorkDir dir;
    lumo_test::CoutCapture out;
    Twins twins;
    twins.add({0, 0, 1, 1});
    const double nan = std::nan("");
    const std::pair<const char*, Rect> aBad[] = {
        {"xmin<=xmax", {1, 0, 0, 1}},   {"ymin<=ymax", {0, 1, 1, 0}},           {"xmin<=xmax", {nan, 0, 1, 1}},
        {"ymin<=ymax", {0, 0, 1, nan}}, {"the box is finite", {-inf, 0, 1, 1}}, {"the box is finite", {0, 0, 1, inf}}};
    for (const auto& [condition, box] : aBad) {
        EXPECT_THROW(twins.add(box), ORBI_LUMO25D::LumoException);
        EXPECT_NE(out.take().find(condition), std::string::npos) << condition;
    }
    for (const Rect& q : {Rect{1, 1, 0, 0}, Rect{nan, 0, 1, 1}, Rect{0, 0, 1, 1}}) twins.expectSame(q);
}

TEST(RTree2, SpatialOrderJumps)
{
    // A far outlier must not spoil the order of the rest: neighbours in it are neighbours in the plane.
    SplitMix64 random(5);
    Twins twins;
    twins.add({1e30, 1e30, 1e30, 1e30});
    for (int i = 0; i < 10000; ++i) twins.add(randomRect(random, 1));
    const std::vector<std::size_t>& vOrder = twins.tree.inSpatialOrder();
    double length = 0.0; // of the way along the order
    for (std::size_t i = 1; i < vOrder.size(); ++i) {
        const Rect &r = twins.vRects[vOrder[i - 1]], &s = twins.vRects[vOrder[i]];
        length += std::min(9.0, std::hypot(r[0] - s[0], r[1] - s[1]));
    }
    EXPECT_LT(length, 500.0); // 10000 steps of about sqrt(4 / 10000); in the order of input it would be 10000
}

TEST(RTree2, ThreadsThatQueryABuiltTreeDisturbEachOther)
{
    SplitMix64 random(6);
    Twins twins;
    for (int i = 0; i < 1100; ++i) twins.add(randomRect(random, 1));
    twins.tree.build();
    const auto query = [&twins] {
        for (const Rect& r : twins.vRects) twins.expectSame(r);
    };
    std::thread other(query);
    query();
    other.join();
}
