#ifndef LUMO25D_TESTS_ORBI_LOCATE3_SPACETWIN_H
#define LUMO25D_TESTS_ORBI_LOCATE3_SPACETWIN_H

#include "Point2.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace lumo_test
{

/// The naive twin of the indexes in space.
class SpaceTwin
{
public:
    using Point = ORBI_LUMO25D::Point2;

    static double sqDistance(const Point& p, const Point& q)
    {
        const double dx = p.x() - q.x(), dy = p.y() - q.y(), dz = p.z() - q.z();
        return dx * dx + dy * dy + dz * dz;
    }
    /// Compares both queries of an index that holds vPoints: the box with the corners p and q, and the closest to p.
    template <class Index>
    void expectSame(const Index& index, const Point& p, const Point& q) const
    {
        const auto x = std::minmax({p.x(), q.x()}), y = std::minmax({p.y(), q.y()}), z = std::minmax({p.z(), q.z()});
        const auto within = [](double v, const std::pair<double, double>& range) {
            return v >= range.first && v <= range.second;
        };
        std::vector<std::size_t> vFound, vExpected;
        std::size_t closest = 0, found = vPoints.size();
        for (std::size_t i = 0; i < vPoints.size(); ++i) {
            const Point& v = vPoints[i];
            if (within(v.x(), x) && within(v.y(), y) && within(v.z(), z)) vExpected.push_back(i);
            if (sqDistance(p, v) < sqDistance(p, vPoints[closest])) closest = i;
        }
        index.query(x.first, y.first, z.first, x.second, y.second, z.second, vFound);
        std::sort(vFound.begin(), vFound.end());
        ASSERT_EQ(vFound, vExpected);

        const double sqExpected = sqDistance(p, vPoints[closest]);
        double sq = -1.0;
        ASSERT_TRUE(index.getClosest(p, found, sq));
        ASSERT_EQ(found, closest);
        ASSERT_EQ(sq, sqExpected);
        ASSERT_TRUE(index.getClosest(p, found, sq, sqExpected)); // the limit belongs to it
        ASSERT_FALSE(index.getClosest(p, found, sq, std::nextafter(sqExpected, -1.0)));
    }

    std::vector<Point> vPoints;
};

} // namespace lumo_test

#endif
