#include "orbi_locate3/RTree.h"

#include "geometry/SplitMix64.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <initializer_list>

using ORBI_LOCATE3::RTree;
using ORBI_LUMO25D::Point2;
using ORBI_LUMO25D::SplitMix64;

namespace
{

Point2 randomPoint(SplitMix64& random, int kind)
{
    const double x = random.between(-1.0, 1.0), y = random.between(-1.0, 1.0), z = random.between(-1.0, 1.0);
    if (kind == 0) return Point2(std::round(2 * x), std::round(2 * y), std::round(2 * z)); // ties
    if (kind == 1) return Point2(6782000.375 + 100 * x, 21530000.125 + 100 * y, 300 + z);  // a terrain
    const double scale = std::ldexp(1.0, -15 * static_cast<int>(random.index(8)));         // clusters
    return Point2(scale * x, scale * y, scale * z);
}

double sqDistance(const Point2& p, const Point2& q)
{
    const double dx = p.x() - q.x(), dy = p.y() - q.y(), dz = p.z() - q.z();
    return dx * dx + dy * dy + dz * dz;
}

} // namespace

TEST(RTree3, BoxesAndClosestPointsDifferFromAScan)
{
    for (int kind = 0; kind < 3; ++kind) {
        for (const std::size_t n : std::initializer_list<std::size_t>{1, 16, 17, 300, 5000}) {
            SplitMix64 random(10 * n + static_cast<unsigned>(kind));
            SCOPED_TRACE(::testing::Message() << "kind " << kind << ", n " << n);
            RTree tree;
            std::vector<Point2> vPoints;
            for (std::size_t i = 0; i < n; ++i) {
                vPoints.push_back(randomPoint(random, kind));
                tree.addPoint(i, vPoints[i]);
            }
            for (int i = 0; i < 60; ++i) {
                const Point2 p = randomPoint(random, kind), q = randomPoint(random, kind);
                const auto x = std::minmax({p.x(), q.x()}), y = std::minmax({p.y(), q.y()}),
                           z = std::minmax({p.z(), q.z()});
                std::vector<std::size_t> vFound, vExpected;
                tree.query(x.first, y.first, z.first, x.second, y.second, z.second, vFound);
                std::size_t closest = 0;
                for (std::size_t j = 0; j < n; ++j) {
                    const Point2& v = vPoints[j];
                    const bool bInside = v.x() >= x.first && v.x() <= x.second && v.y() >= y.first &&
                                         v.y() <= y.second && v.z() >= z.first && v.z() <= z.second;
                    if (bInside) vExpected.push_back(j);
                    if (sqDistance(p, v) < sqDistance(p, vPoints[closest])) closest = j;
                }
                std::sort(vFound.begin(), vFound.end());
                ASSERT_EQ(vFound, vExpected);

                std::size_t index = n;
                double sq = -1.0;
                const double sqExpected = sqDistance(p, vPoints[closest]);
                ASSERT_TRUE(tree.getClosest(p, index, sq));
                ASSERT_EQ(index, closest);
                ASSERT_EQ(sq, sqExpected);
                ASSERT_TRUE(tree.getClosest(p, index, sq, sqExpected)); // the limit belongs to it
                if (sqExpected > 0.0) {
                    ASSERT_FALSE(tree.getClosest(p, index, sq, std::nextafter(sqExpected, 0.0)));
                }
            }
        }
    }
}

TEST(RTree3, ObjectsOwnDistancesAreIgnoredOrAskedForAll)
{
    // Spheres of radius 0.1 in the corners' boxes: the distance of the object, not that of its box, counts.
    SplitMix64 random(3);
    RTree tree;
    std::vector<Point2> vCentres;
    for (std::size_t i = 0; i < 2000; ++i) {
        const Point2 c(random.unit(), random.unit(), random.unit());
        vCentres.push_back(c);
        tree.addObject(i, c.x() - 0.1, c.y() - 0.1, c.z() - 0.1, c.x() + 0.1, c.y() + 0.1, c.z() + 0.1);
    }
    const auto sqFromSphere = [&](const Point2& p, std::size_t i) {
        const double d = std::max(0.0, std::sqrt(sqDistance(p, vCentres[i])) - 0.1);
        return d * d;
    };
    std::size_t numAsked = 0;
    for (int i = 0; i < 100; ++i) {
        const Point2 p(random.between(2, 3), random.between(2, 3), random.between(2, 3));
        std::size_t index = 0, expected = 0;
        double sq = 0.0;
        for (std::size_t j = 1; j < vCentres.size(); ++j) {
            if (sqFromSphere(p, j) < sqFromSphere(p, expected)) expected = j;
        }
        ASSERT_TRUE(tree.getClosest(p, index, sq, 100.0, [&](std::size_t j, double sqBox) {
            ++numAsked;
            EXPECT_LE(sqBox, sqFromSphere(p, j));
            return sqFromSphere(p, j);
        }));
        ASSERT_EQ(index, expected);
    }
    EXPECT_LT(numAsked, 100 * vCentres.size() / 4);
    RTree empty;
    std::size_t index = 0;
    double sq = 0.0;
    EXPECT_FALSE(empty.getClosest(Point2(0, 0, 0), index, sq));
}

TEST(RTree3, TrianglesAreMissedAtTheirCorners)
{
    RTree tree;
    const Point2 p0(0, 5, 2), p1(3, 0, 7), p2(1, 1, -4);
    tree.addTriangle(9, p0, p1, p2);
    std::vector<std::size_t> v;
    for (const Point2& p : {p0, p1, p2}) tree.query(p.x(), p.y(), p.z(), p.x(), p.y(), p.z(), v);
    EXPECT_EQ(v, (std::vector<std::size_t>{9, 9, 9}));
    tree.query(0, 0, 7.5, 3, 5, 9, v);
    EXPECT_EQ(v.size(), 3U);
}
