#include "orbi_octree/Octree.h"

#include "LumoException.h"
#include "geometry/SplitMix64.h"
#include "orbi_locate3/SpaceTwin.h"
#include "support/TestOutput.h"

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

} // namespace

TEST(Octree, AnswersBetweenAdditionsDifferFromAScan)
{
    for (int kind = 0; kind < numKinds; ++kind) {
        SCOPED_TRACE(kind);
        SplitMix64 random(static_cast<unsigned>(kind));
        Octree octree;
        lumo_test::SpaceTwin twin;
        for (std::size_t i = 0; i < 2000; ++i) {
            twin.vPoints.push_back(randomPoint(random, kind, i));
            octree.addPoint(i, twin.vPoints[i]);
            if (i % 13 != 0) continue;
            const Point2 p = i % 2 == 0 ? twin.vPoints[random.index(i + 1)] : randomPoint(random, kind, i);
            twin.expectSame(octree, p, randomPoint(random, kind, random.index(i + 1)));
            if (HasFatalFailure()) return;
        }
        EXPECT_EQ(octree.size(), twin.vPoints.size());
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
    std::size_t index = 0;
    double sq = 0.0;
    EXPECT_FALSE(octree.size() > 0 || octree.getClosest(Point2(0, 0, 0), index, sq));
}
