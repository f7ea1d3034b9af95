#include "orbi_locate3/RTree.h"

#include "geometry/SplitMix64.h"
#include "orbi_locate3/SpaceTwin.h"

#include <initializer_list>

using lumo_test::SpaceTwin;
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

} // namespace

TEST(RTree3, BoxesAndClosestPointsDifferFromAScan)
{
    for (int kind = 0; kind < 3; ++kind) {
        for (const std::size_t n : std::initializer_list<std::size_t>{1, 8, 9, 65, 300, 5000}) {
            SplitMix64 random(10 * n + static_cast<unsigned>(kind));
            SCOPED_TRACE(::testing::Message() << "kind " << kind << ", n " << n);
            RTree tree;
            SpaceTwin twin;
            for (std::size_t i = 0; i < n; ++i) {
                twin.vPoints.push_back(randomPoint(random, kind));
                tree.addPoint(i, twin.vPoints[i]);
            }
            for (int i = 0; i < 60; ++i) {
                const Point2 p = i % 3 == 0 ? twin.vPoints[random.index(n)] : randomPoint(random, kind);
                twin.expectSame(tree, p, randomPoint(random, kind));
                if (HasFatalFailure()) return;
            }
        }
    }
}

TEST(RTree3, ObjectsOwnDistancesAreIgnoredOrAskedForAll)
{
    // Triangles that are points with a ball of 0.1 around: the distance of the ball, not that of the box, counts.
    SplitMix64 random(3);
    RTree tree;
    std::vector<Point2> vCentres;
    for (std::size_t i = 0; i < 2000; ++i) {
        const Point2 c(random.unit(), random.unit(), random.unit());
        vCentres.push_back(c);
        tree.addTriangle(i, Point2(c.x() - 0.1, c.y() + 0.1, c.z()), Point2(c.x(), c.y() - 0.1, c.z() - 0.1),
                         Point2(c.x() + 0.1, c.y(), c.z() + 0.1));
    }
    const auto sqFromBall = [&](const Point2& p, std::size_t i) {
        const double d = std::max(0.0, std::sqrt(SpaceTwin::sqDistance(p, vCentres[i])) - 0.1);
        return d * d;
    };
    std::size_t numAsked = 0, index = 0;
    double sq = 0.0;
    for (int i = 0; i < 100; ++i) {
        const Point2 p(random.between(2, 3), random.between(2, 3), random.between(2, 3));
        std::size_t expected = 0;
        for (std::size_t j = 1; j < vCentres.size(); ++j) {
            if (sqFromBall(p, j) < sqFromBall(p, expected)) expected = j;
        }
        ASSERT_TRUE(tree.getClosest(p, index, sq, 100.0, [&](std::size_t j, double sqBox) {
            ++numAsked;
            EXPECT_LE(sqBox, sqFromBall(p, j));
            return sqFromBall(p, j);
        }));
        ASSERT_EQ(index, expected);
    }
    EXPECT_LT(numAsked, 100 * vCentres.size() / 4);
    EXPECT_FALSE(RTree().getClosest(Point2(0, 0, 0), index, sq));
}
