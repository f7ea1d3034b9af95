#include "orbi_octree/Octree.h"

#include "LumoException.h"
#include "geometry/SplitMix64.h"
#include "support/TestOutput.h"

#include <gtest/gtest.h>

#include <cmath>

using ORBI_LUMO25D::Point2;
using ORBI_LUMO25D::SplitMix64;
using ORBI_OCTREE::Octree;

namespace
{

constexpr int numKinds = 6;

Point2 randomPoint(SplitMix64& random, int kind, std::size_t i)
{
    const double x = random.between(-1.0, 1.0), y = random.between(-1.0, 1.0), z = random.between(-1.0, 1.0);
    const auto exponent = static_cast<int>(random.index(600)) - 300;
    switch (kind) {
    case 0: // ties and many points at one place
        return Point2(std::round(x), std::round(y), std::round(z));
    case 1: // a terrain, where a last bit of x is more than the extent in z
        return Point2(6782000.375 + 100 * x, 21530000.125 + 100 * y, 1e-12 * z);
    case 2: // sorted
        return Point2(static_cast<double>(i), 0.0, 0.0);
    case 3: // at all magnitudes
        return Point2(std::ldexp(x, exponent), std::ldexp(y, exponent), std::ldexp(z, exponent));
    case 4: // all at one place, and the rest far away
        return i % 20 == 19 ? Point2(1e300, -1e300, 1e300 * z) : Point2(0, 0, 0);
    default: // neighbours by a last bit
        return Point2(i % 2 == 0 ? 1e6 : std::nextafter(1e6, 2e6), std::nextafter(0.1, i % 3 == 0 ? 0.0 : 1.0), z);
    }
}

double sqDistance(const Point2& p, const Point2& q)
{
    const double dx = p.x() - q.x(), dy = p.y() - q.y(), dz = p.z() - q.z();
    return dx * dx + dy * dy + dz * dz;
}

} // namespace

TEST(Octree, AnswersBetweenAdditionsDifferFromAScan)
{
    for (int kind = 0; kind < numKinds; ++kind) {
        SCOPED_TRACE(kind);
        SplitMix64 random(static_cast<unsigned>(kind));
        Octree octree;
        std::vector<Point2> vPoints;
        std::size_t index = 0;
        double sq = 0.0;
        EXPECT_FALSE(octree.getClosest(Point2(0, 0, 0), index, sq));
        for (std::size_t i = 0; i < 2000; ++i) {
            vPoints.push_back(randomPoint(random, kind, i));
            octree.addPoint(i, vPoints[i]);
            if (i % 13 != 0) continue;
            const Point2 p = i % 2 == 0 ? vPoints[random.index(i + 1)] : randomPoint(random, kind, i);
            const Point2 q = randomPoint(random, kind, random.index(i + 1));
            const auto x = std::minmax({p.x(), q.x()}), y = std::minmax({p.y(), q.y()}),
                       z = std::minmax({p.z(), q.z()});
            std::vector<std::size_t> vFound, vExpected;
            octree.query(x.first, y.first, z.first, x.second, y.second, z.second, vFound);
            std::size_t closest = 0;
            for (std::size_t j = 0; j <= i; ++j) {
                const Point2& v = vPoints[j];
                const bool bInside = v.x() >= x.first && v.x() <= x.second && v.y() >= y.first && v.y() <= y.second &&
                                     v.z() >= z.first && v.z() <= z.second;
                if (bInside) vExpected.push_back(j);
                if (sqDistance(p, v) < sqDistance(p, vPoints[closest])) closest = j;
            }
            ASSERT_EQ(vFound, vExpected);
            ASSERT_TRUE(octree.getClosest(p, index, sq));
            ASSERT_EQ(index, closest);
            const double sqExpected = sqDistance(p, vPoints[closest]);
            ASSERT_EQ(sq, sqExpected);
            if (sqExpected > 0.0) {
                ASSERT_FALSE(octree.getClosest(p, index, sq, std::nextafter(sqExpected, 0.0)));
            }
        }
        EXPECT_EQ(octree.size(), vPoints.size());
    }
}

TEST(Octree, CoordinatesOutOfRangeEnter)
{
    lumo_test::TempWorkDir dir;
    lumo_test::CoutCapture out;
    Octree octree;
    for (const double bad : {std::nan(""), HUGE_VAL, -2e300}) {
        EXPECT_THROW(octree.addPoint(0, Point2(bad, 0, 0)), ORBI_LUMO25D::LumoException);
        EXPECT_THROW(octree.addPoint(0, Point2(0, 0, bad)), ORBI_LUMO25D::LumoException);
    }
    EXPECT_EQ(octree.size(), 0U);
}
