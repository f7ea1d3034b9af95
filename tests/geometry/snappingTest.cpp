#include "geometry/snapping.h"

#include "geometry/OrbiTest.h"
#include "oracles/Dice.h"
#include "oracles/ExactOracle.h"

#include "Vector2.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace ORBI_LUMO25D;

namespace
{

mpq_class squaredLength(const Point2& a, const Point2& b)
{
    const mpq_class dx = mpq_class(a.x()) - b.x(), dy = mpq_class(a.y()) - b.y();
    return dx * dx + dy * dy;
}

bool isNext(double v, const mpq_class& exact)
{
    constexpr double inf = std::numeric_limits<double>::infinity();
    return mpq_class(std::nextafter(v, -inf)) <= exact && exact <= mpq_class(std::nextafter(v, inf));
}

} // namespace

// Of every size, also where squares have few bits left; in general position, with three in a row, with lines that are
// nearly parallel or one but for rounding.
TEST(Snapping, CrossingsOrQuestionsPartFromRationals)
{
    const OrbiTest orbiTest;
    oracles::Dice dice(3);
    int numCrossings = 0;
    for (int round = 0; round < 20000; ++round) {
        SCOPED_TRACE(round);
        const double scale = std::ldexp(1.0, dice.below(4) == 0 ? 960 - 50 * dice.below(40)
                                             : round % 8 == 0   ? -540
                                                                : 20);
        const double offset = dice.below(2) * 2153e4 * scale, flat = dice.below(3) == 0 ? 1e-12 : 1;
        const bool bGrid = dice.below(2) == 0;
        const auto draw = [&] { return scale * (bGrid ? dice.below(9) : 9 * dice.real()); };
        Point2 p[4];
        for (Point2& q : p) q = Point2(offset + draw(), offset + draw() * flat, 0);
        const auto &a = p[0], &b = p[1], &c = p[2], &d = p[3];
        for (int i = 2; i < 4 && round % 4 == 1; ++i) {
            const double t = 3 * dice.real() - 1;
            p[i] = Point2(a.x() + t * (b.x() - a.x()), a.y() + t * (b.y() - a.y()), 0);
        }
        const mpq_class ab = squaredLength(a, b), ac = squaredLength(a, c), bc = squaredLength(b, c);
        EXPECT_EQ(compareLengths(a, b, a, c), sgn(ab - ac));
        EXPECT_EQ(isInside(c, a, b), ac < ab && bc < ab);
        EXPECT_EQ(isInRange2D(c, a, b), ac <= ab && bc <= ab);
        for (const Vector2& along : {Vector2(d.x(), d.y(), 1.0), Vector2(a.y() - b.y(), b.x() - a.x(), 1.0)}) {
            const mpq_class dx = mpq_class(b.x()) - a.x(), dy = mpq_class(b.y()) - a.y();
            EXPECT_EQ(compareAlong(along, a, b), sgn(mpq_class(dx * along.x() + dy * along.y())));
        }
        if (a == b) continue;
        const mpq_class toC = oracles::orientationDet(a, b, c), toD = oracles::orientationDet(a, b, d);
        const double distance = std::sqrt(std::min(1e307, mpq_class(toC * toC / ab).get_d()));
        EXPECT_EQ(isWithin(c, a, b, distance), toC * toC <= mpq_class(distance) * distance * ab);

        double x = 0.0, y = 0.0;
        if (!roundedCrossing(orbiTest, a, b, c, d, x, y)) {
            EXPECT_TRUE(toC == toD || scale > 0x1p900) << "only with parallel lines, or beyond the doubles";
            continue;
        }
        ++numCrossings;
        const mpq_class t = toC / (toC - toD);
        EXPECT_TRUE(isNext(x, c.x() + t * (mpq_class(d.x()) - c.x())));
        EXPECT_TRUE(isNext(y, c.y() + t * (mpq_class(d.y()) - c.y())));
    }
    EXPECT_GT(numCrossings, 10000);
}
