#include "CloudPrepare.h"

#include "cloud/CloudPrepareImpl.h"
#include "support/messages.h"

#include <string>

namespace ORBI_LUMO25D
{

namespace
{

void reportRefused(std::size_t numRefused)
{
    if (numRefused == 0) return;
    msgError("CloudPrepare::add()",
             std::to_string(numRefused) + " point(s) refused: a coordinate is not a finite number");
}

} // namespace

CloudPrepare::CloudPrepare() : pImpl(std::make_unique<CloudPrepareImpl>()) {}

CloudPrepare::~CloudPrepare() = default;

void CloudPrepare::add(double x, double y, double z, std::int32_t customIndex)
{
    if (!pImpl->add(x, y, z, customIndex)) reportRefused(1);
}

void CloudPrepare::add(const std::vector<Point2>& vPoints)
{
    std::size_t numRefused = 0;
    for (const Point2& p : vPoints) {
        if (!pImpl->add(p.x(), p.y(), p.z(), p.getCustomIndex())) ++numRefused;
    }
    reportRefused(numRefused);
}

void CloudPrepare::add(std::size_t num, const double* aCoordinates)
{
    if (num > 0 && aCoordinates == nullptr) {
        msgError("CloudPrepare::add()", "no coordinates, nothing added");
        return;
    }
    std::size_t numRefused = 0;
    for (std::size_t i = 0; i < num; ++i) {
        if (!pImpl->add(aCoordinates[3 * i], aCoordinates[3 * i + 1], aCoordinates[3 * i + 2], -1)) ++numRefused;
    }
    reportRefused(numRefused);
}

std::size_t CloudPrepare::getNumPoints() const
{
    return pImpl->getPoints().size();
}

void CloudPrepare::getPoints(std::vector<Point2>& vPoints) const
{
    const PointBlocks& points = pImpl->getPoints();
    vPoints.reserve(vPoints.size() + points.size());
    for (std::size_t i = 0; i < points.size(); ++i) {
        const Coords& c = points[i];
        vPoints.emplace_back(c.x, c.y, c.z);
        vPoints.back().setCustomIndex(c.customIndex);
    }
}

void CloudPrepare::clear()
{
    pImpl->clear();
}

double CloudPrepare::getRangeX() const
{
    return pImpl->updateBounds().rangeX();
}

double CloudPrepare::getRangeY() const
{
    return pImpl->updateBounds().rangeY();
}

double CloudPrepare::getRangeZ() const
{
    return pImpl->updateBounds().rangeZ();
}

void CloudPrepare::getBounds(double& minX, double& minY, double& minZ, double& maxX, double& maxY, double& maxZ) const
{
    const CloudBounds& b = pImpl->updateBounds();
    minX = b.minX;
    minY = b.minY;
    minZ = b.minZ;
    maxX = b.maxX;
    maxY = b.maxY;
    maxZ = b.maxZ;
}

bool CloudPrepare::computeConvexHull(bool bAllPoints, std::vector<Point2>& vConvexHull) const
{
    return pImpl->computeConvexHull(bAllPoints, vConvexHull);
}

std::size_t CloudPrepare::uniformSimplifyGrid(double gridLength, SumStrategy sumStrategy,
                                              ConvexHullStrategy hullStrategy, bool bDryRun)
{
    return pImpl->uniformSimplifyGrid(gridLength, sumStrategy, hullStrategy, bDryRun);
}

std::size_t CloudPrepare::uniformSimplifyNum(std::ptrdiff_t numPoints, SumStrategy sumStrategy,
                                             ConvexHullStrategy hullStrategy)
{
    return pImpl->uniformSimplifyNum(numPoints, sumStrategy, hullStrategy);
}

std::size_t CloudPrepare::adaptiveSimplify(double maxDiffZ, SumStrategy sumStrategy, ConvexHullStrategy hullStrategy,
                                           bool bDryRun)
{
    return pImpl->adaptiveSimplify(maxDiffZ, sumStrategy, hullStrategy, bDryRun);
}

} // namespace ORBI_LUMO25D
