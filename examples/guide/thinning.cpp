// Thins out a terrain in two ways, and draws what the second one leaves.
//
//     thinning POINTS.xyz PICTURE.ps
//
// Points are longitudes and latitudes with heights in metres.

#include "../LocalMetres.h"
#include "../Relief.h"

#include "CloudPrepare.h"
#include "EfficientModel.h"
#include "Lumo_2D.h"
#include "freeFunctions.h"

#include <algorithm>
#include <cstdio>
#include <vector>

using namespace ORBI_LUMO25D;

int main(int argc, char** argv)
{
    std::vector<Point2> vScan;
    if (argc != 3 || !readXYZ(argv[1], vScan)) return 2;
    std::transform(vScan.begin(), vScan.end(), vScan.begin(), LocalMetres(-84.25, 36.6, 36.6));

    // By cells: one point for each square of 1 km, at the middle height; the border stays exact.
    CloudPrepare cloud;
    cloud.add(vScan);
    cloud.uniformSimplifyGrid(1000.0, SMS_MEDIAN, CHS_MINHULL, false);
    Lumo_2D byCells;
    byCells.insert(&cloud, true); // true: the cloud gives its memory back as it goes over

    // By error: as few points as keep the surface within 80 m of every point.
    std::vector<Point2> vFew;
    EfficientModel(vScan).extract(80.0, vFew);
    Lumo_2D byError;
    byError.insert(vFew);
    std::printf("%zu points: %zu by cells, %zu by error\n", vScan.size(), byCells.numberOfPoints(), vFew.size());

    Visualizer2 picture(argv[2]);
    std::vector<Triangle2*> vTriangles;
    byError.getTrianglePointers(vTriangles);
    addRelief(vTriangles, picture);
    byError.show(&picture);
    picture.writeFile();
    return 0;
}
