#ifndef LUMO25D_TESTS_ORBI_LOCATE3_SPACETWIN_H
#define LUMO25D_TESTS_ORBI_LOCATE3_SPACETWIN_H

#include "Point2.h"
#include "geometry/SplitMix64.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace lumo_test
{

/// The naive twin of the indexes in space.
class SpaceTwin
{
    using Point = ORBI_LUMO25D::Point2;

public:
    /// Adds points of each kind to an index, with questions in between.
    template <class Index, bool bWithClosest = true>
    static void expectAgreement()
    {
        for (int kind = 0; kind < numKinds; ++kind) {
            SCOPED_TRACE(kind);
            ORBI_LUMO25D::SplitMix64 random(static_cast<unsigned>(kind));
            Index index;
            SpaceTwin twin;
            for (std::size_t i = 0; i < 2000; ++i) {
                twin.vPoints.push_back(randomPoint(random, kind, i));
                index.addPoint(i, twin.vPoints[i]);
                if (i > 33 && i % 13 != 0) continue;
                const Point p = i % 2 == 0 ? twin.vPoints[random.index(i + 1)] : randomPoint(random, kind, i);
                twin.expectSameInBox(index, p, randomPoint(random, kind, random.index(i + 1)));
                if constexpr (bWithClosest) twin.expectSameClosest(index, p);
                if (testing::Test::HasFatalFailure()) return;
            }
            EXPECT_EQ(index.size(), twin.vPoints.size());
        }
    }

private:
    static constexpr int numKinds = 6;
    /// The i-th point of a kind: on a grid with ties and points at one place, a terrain where a last bit of x is more than
    /// its extent in z, sorted, at all magnitudes, at one place but for some far away, neighbours by a last bit.
    static Point randomPoint(ORBI_LUMO25D::SplitMix64& random, int kind, std::size_t i)
    {
        const double x = random.between(-1.0, 1.0), y = random.between(-1.0, 1.0), z = random.between(-1.0, 1.0);
        const double scale = std::ldexp(1.0, static_cast<int>(random.index(600)) - 300);
        const Point aPoints[numKinds] = {
            {std::round(x), std::round(y), std::round(z)},
            {6782000.375 + 100 * x, 21530000.125 + 100 * y, 1e-12 * z},
            {static_cast<double>(i), 0.0, 0.0},
            {scale * x, scale * y, scale * z},
            i % 20 == 19 ? Point(1e300, -1e300, 1e300 * z) : Point(0, 0, 0),
            {i % 2 == 0 ? 1e6 : std::nextafter(1e6, 2e6), std::nextafter(0.1, i % 3 == 0 ? 0.0 : 1.0), z}};
        return aPoints[kind];
    }
    static double sqDistance(const Point& p, const Point& q)
    {
        const double dx = p.x() - q.x(), dy = p.y() - q.y(), dz = p.z() - q.z();
        return dx * dx + dy * dy + dz * dz;
    }
    /// Of an index that holds vPoints: what is in the box with the corners p and q.
    template <class Index>
    void expectSameInBox(const Index& index, const Point& p, const Point& q) const
    {
        const auto x = std::minmax({p.x(), q.x()}), y = std::minmax({p.y(), q.y()}), z = std::minmax({p.z(), q.z()});
        const auto within = [](double v, const std::pair<double, double>& range) {
            return v >= range.first && v <= range.second;
        };
        std::vector<std::size_t> vFound, vExpected;
        for (std::size_t i = 0; i < vPoints.size(); ++i) {
            const Point& v = vPoints[i];
            if (within(v.x(), x) && within(v.y(), y) && within(v.z(), z)) vExpected.push_back(i);
        }
        index.query(x.first, y.first, z.first, x.second, y.second, z.second, vFound);
        std::sort(vFound.begin(), vFound.end());
        ASSERT_EQ(vFound, vExpected);
    }
    template <class Index>
    void expectSameClosest(const Index& index, const Point& p) const
    {
        std::size_t closest = 0, found = vPoints.size();
        for (std::size_t i = 0; i < vPoints.size(); ++i) {
            if (sqDistance(p, vPoints[i]) < sqDistance(p, vPoints[closest])) closest = i;
        }
        const double sqExpected = sqDistance(p, vPoints[closest]);
        double sq = -1.0;
        ASSERT_TRUE(index.getClosest(p, found, sq));
        ASSERT_TRUE(found == closest && sq == sqExpected) << found << " instead of " << closest;
        ASSERT_TRUE(index.getClosest(p, found, sq, sqExpected)); // the limit belongs to it
        ASSERT_FALSE(index.getClosest(p, found, sq, std::nextafter(sqExpected, -1.0)));
    }

    std::vector<Point> vPoints;
};

} // namespace lumo_test

#endif
