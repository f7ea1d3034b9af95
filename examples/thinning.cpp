// Thinning a scan before it is triangulated: by a grid, adaptively, and with a bound on the error.
//
//     thinning POINTS.xyz MAX_ERROR [FEW.xyz]
//
// prints how many points each way leaves, and by how much the surface of the rest is off at worst. The three get about
// the same number of points: what the bound on the error needs.

#include "CloudPrepare.h"
#include "EfficientModel.h"
#include "Lumo_2D.h"
#include "freeFunctions.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <vector>

using namespace ORBI_LUMO25D;

namespace
{

/// How far the surface is off at the points of the scan.
double largestError(const std::vector<Point2>& vScan, const Lumo_2D& surface)
{
    double largest = 0.0;
    for (const Point2& p : vScan) {
        double height = 0.0;
        if (surface.getHeight(p.x(), p.y(), height)) largest = std::max(largest, std::fabs(height - p.z()));
    }
    return largest;
}

void report(const char* method, const std::vector<Point2>& vScan, const Lumo_2D& surface)
{
    const double share = 100.0 * static_cast<double>(surface.numberOfPoints()) / static_cast<double>(vScan.size());
    std::printf("%-10s %8zu points (%5.1f %%), off by at most %7.2f\n", method, surface.numberOfPoints(), share,
                largestError(vScan, surface));
}

/// Halves the interval of height differences until about that many points would be left: dry runs change nothing.
double findMaxDiffZ(CloudPrepare& cloud, std::size_t numWanted)
{
    double low = 0.0;
    double high = cloud.getRangeZ();
    for (int step = 0; step < 20; ++step) {
        const double mid = (low + high) / 2.0;
        (cloud.adaptiveSimplify(mid, SMS_MEDIAN, CHS_MINHULL, true) > numWanted ? low : high) = mid;
    }
    return high;
}

} // namespace

int main(int argc, char** argv)
{
    std::vector<Point2> vScan;
    if (argc < 3 || !readXYZ(argv[1], vScan)) {
        std::printf("usage: thinning POINTS.xyz MAX_ERROR [FEW.xyz]\n");
        return 2;
    }
    // A triangulation keeps the first of several returns at one place: compare with those only.
    Lumo_2D all;
    all.insert(vScan);
    std::vector<Point2*> vVertices;
    all.getVertexPointers(vVertices);
    vScan.clear();
    for (const Point2* pVtx : vVertices) vScan.push_back(*pVtx);
    report("all", vScan, all);

    // The fewest points that keep the surface within the bound.
    std::vector<Point2> vFew;
    EfficientModel(vScan).extract(std::atof(argv[2]), vFew);
    Lumo_2D model;
    model.insert(vFew);
    report("model", vScan, model);

    // As many from a regular grid. With bClear, the cloud's memory goes as the vertices come.
    CloudPrepare grid;
    grid.add(vScan);
    grid.uniformSimplifyNum(static_cast<std::ptrdiff_t>(vFew.size()), SMS_MEDIAN, CHS_MINHULL);
    Lumo_2D byGrid;
    byGrid.insert(&grid, true);
    report("grid", vScan, byGrid);

    // As many, with small cells where heights vary.
    CloudPrepare adaptive;
    adaptive.add(vScan);
    adaptive.adaptiveSimplify(findMaxDiffZ(adaptive, vFew.size()), SMS_MEDIAN, CHS_MINHULL, false);
    Lumo_2D byHeight;
    byHeight.insert(&adaptive, true);
    report("adaptive", vScan, byHeight);

    if (argc > 3 && !writePointsASCII(argv[3], vFew)) return 1;
    return 0;
}
