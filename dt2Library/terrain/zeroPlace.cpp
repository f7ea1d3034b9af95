#include "terrain/zeroPlace.h"

#include "geometry/midCoordinate.h"
#include "geometry/numericTools.h"
#include "geometry/snapping.h"
#include "support/messages.h"

#include <cmath>
#include <sstream>

namespace ORBI_LUMO25D
{

namespace
{

bool isApart(const Point2& a, const Point2& b, double distance)
{
    return std::fabs(a.x() - b.x()) > distance || std::fabs(a.y() - b.y()) > distance;
}

} // namespace

double ZeroPlace::height(const Point2& p0, const SurfaceHeights::Pair& pair0, const Point2& p1,
                         const SurfaceHeights::Pair& pair1) const
{
    double aHeights[2] = {0.0, 0.0};
    for (int ith = 0; ith < 2; ++ith) {
        aHeights[ith] = heightOnSegment(Point2(p0.x(), p0.y(), pair0.aHeights[ith]),
                                        Point2(p1.x(), p1.y(), pair1.aHeights[ith]), place.x(), place.y());
    }
    if (std::fabs(aHeights[0] - aHeights[1]) > 0.0001) {
        std::ostringstream text;
        text << "height difference=" << aHeights[0] - aHeights[1];
        msgWarning("CutAndFill::cutT()", text.str());
    }
    return midCoordinate(aHeights[0], aHeights[1]);
}

ZeroPlace findZeroPlace(const Point2& p0, const Point2& p1)
{
    const double h0 = std::fabs(p0.z()), h1 = std::fabs(p1.z());
    ZeroPlace zero;
    // From the nearer end, so that a place close to it is right to its last digits.
    zero.bNearFirst = h0 <= h1;
    const Point2 &origin = zero.bNearFirst ? p0 : p1, &target = zero.bNearFirst ? p1 : p0;
    zero.fraction = (zero.bNearFirst ? h0 : h1) / (h0 + h1);
    zero.place.setCoords(origin.x() + (target.x() - origin.x()) * zero.fraction,
                         origin.y() + (target.y() - origin.y()) * zero.fraction, 0.0);
    const double distance = 2.0 * snapDistance(p0, p1);
    zero.bApart = isApart(zero.place, origin, distance) && isApart(zero.place, target, distance);
    return zero;
}

void warnOfSkippedCut(double h0, double h1)
{
    msgWarning("CutAndFillImpl::virtualCut()", "close intersection skipped");
    std::ostringstream values;
    values << "h0=" << h0 << " h1=" << h1;
    printLine(values.str());
}

} // namespace ORBI_LUMO25D
