#include "Vector2.h"

#include "Plane.h"
#include "geometry/SplitMix64.h"

#include <gmpxx.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace ORBI_LUMO25D;

namespace
{

constexpr double DENORM_MIN = std::numeric_limits<double>::denorm_min();
constexpr double MAX_DOUBLE = std::numeric_limits<double>::max();
constexpr double SLACK = 4 * std::numeric_limits<double>::epsilon();

/// Any finite double, all binary exponents alike; sometimes 0.
double anyDouble(SplitMix64& random)
{
    const double mantissa = random.between(-2.0, 2.0);
    const int exponent = static_cast<int>(random.index(2090)) - 1070;
    return random.index(8) == 0 ? 0.0 : std::ldexp(mantissa, std::min(exponent, 1022));
}

/// |v| is len, within a few units in the last place or one of the smallest denormal.
bool isLengthOf(const mpq_class& len, const Vector2& v)
{
    const mpq_class slack = len * mpq_class(SLACK) + mpq_class(DENORM_MIN), lower = len - slack, upper = len + slack;
    const mpq_class x(v.x()), y(v.y()), z(v.z()), sq = x * x + y * y + z * z;
    return (lower < 0 || lower * lower <= sq) && sq <= upper * upper;
}

} // namespace

TEST(Vector2, LengthsUnitVectorsAndNormalsAreRightAtEveryMagnitude)
{
    SplitMix64 random(11);
    for (int i = 0; i < 3000; ++i) {
        const double x = anyDouble(random);
        const double y = i % 3 == 0 ? x * random.unit() : anyDouble(random);
        const Vector2 v(x, y, i % 3 == 0 ? x * random.unit() : anyDouble(random));
        SCOPED_TRACE(testing::Message() << "seed 11, vector " << i << ": " << v);
        const double len = v.length();
        EXPECT_TRUE(std::isfinite(len) ? isLengthOf(len, v) : Vector2(v / 2).length() > MAX_DOUBLE / 2);
        EXPECT_TRUE(v.isDegenerate() || isLengthOf(1, normalize(v)));
        const double aAbs[3] = {std::fabs(v.x()), std::fabs(v.y()), std::fabs(v.z())};
        EXPECT_EQ(v.getMaxIndex(), std::max_element(aAbs, aAbs + 3) - aAbs) << "the first on ties";
        const Vector2 n = v.orthogonalVector();
        const mpq_class cross = mpq_class(v.x()) * mpq_class(n.y()) - mpq_class(v.y()) * mpq_class(n.x());
        const mpq_class dot = mpq_class(v.x()) * mpq_class(n.x()) + mpq_class(v.y()) * mpq_class(n.y());
        if (v.x() == 0.0 && v.y() == 0.0) {
            EXPECT_TRUE(n.isDegenerate());
        } else {
            EXPECT_TRUE(cross > 0 && isLengthOf(1, n) && n.z() == 0.0) << "not the unit normal on the left";
            EXPECT_TRUE(abs(dot) <= cross * mpq_class(SLACK) + mpq_class(2 * DENORM_MIN)) << "not perpendicular";
        }
    }
    EXPECT_EQ(normalize(Vector2(0, -DENORM_MIN, 0)).y(), -1.0);
    EXPECT_TRUE(isLengthOf(1, normalize(Vector2(MAX_DOUBLE, MAX_DOUBLE, -MAX_DOUBLE))));
}

TEST(Vector2, BadLengthsAreReportedAndAnglesClamped)
{
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    EXPECT_TRUE(normalize(Vector2()).isDegenerate());
    EXPECT_EQ(getAngleDegree(Vector2(1.05, 0, 0), Vector2(1.05, 0, 0)), 0.0) << "beyond 1 must give no NaN";
    EXPECT_EQ(getAngleDegree(Vector2(0, 0, 1.05), Vector2(0, 0, -1.05)), 180.0);
    EXPECT_NEAR(getAngleDegree(Vector2(1, 0, 0), Vector2(0.6, 0.8, 0)), 53.130102354155979, 1e-12);
    getAngleDegree(Vector2(1, 0, 0), Vector2(0, 1.2, 0));
    EXPECT_NE(testing::internal::GetCapturedStdout().find("Null length vector!"), std::string::npos);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "getAngleDegree has been called for vectors with length!=1.0:\n   len1=1, len2=1.2\n");
}

TEST(Plane, NearlyCollinearPointsGiveAPlaneAndCollinearOnesAWarning)
{
    const Plane plane(Point2(1, 2, 3), Point2(5, 1, -2), Point2(2, 8, 4));
    const Point2 p(7, 7, 7), foot = plane.projection(p);
    EXPECT_NEAR(plane.distance(foot), 0.0, 1e-14);
    EXPECT_NEAR((p - foot).length(), plane.signedDistance(p), 1e-14) << "above: the corners are counterclockwise";
    EXPECT_TRUE(plane.hasOnPositiveSide(p) && !plane.hasOnNegativeSide(p));
    const Point2 origin(0, 0, 0), onAxis(1, 0, 0);
    for (const double tiny : {DENORM_MIN, 1e-320, 1e-200, 1e-17}) {
        EXPECT_TRUE(Plane::canConstruct(origin, onAxis, Point2(1, tiny, tiny)));
        EXPECT_NEAR(Plane(origin, onAxis, Point2(1, tiny, tiny)).normal.length(), 1.0, 1e-15);
    }
    testing::internal::CaptureStdout();
    EXPECT_TRUE(Plane(origin, onAxis, Point2(2, 0, 0)).normal.isDegenerate());
    EXPECT_NE(testing::internal::GetCapturedStdout().find("WARNING: Degenerate plane"), std::string::npos);
    EXPECT_FALSE(Plane::canConstruct(origin, origin, onAxis));
}
