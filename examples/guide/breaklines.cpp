// Makes the edges of a rock breaklines of its surface, and draws them on it.
//
//     breaklines POINTS.xyz BREAKLINES.seg PICTURE.ps
//
// A line of the second file is a segment, "x y z x y z". The files hold several rocks along a road; one of them is taken.

#include "../Relief.h"

#include "Lumo_2D.h"
#include "freeFunctions.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

using namespace ORBI_LUMO25D;

bool isOnTheRock(const Point2& p)
{
    return std::hypot(p.x() - 21531030.0, p.y() - 6783112.0) < 30.0;
}

/// How far the surface is off the middles of the segments, at worst.
double largestError(const Lumo_2D& lumo, const std::vector<Segment2>& vSegments)
{
    double largest = 0.0;
    for (const Segment2& s : vSegments) {
        const Point2 middle = centerWithShift(s.src, s.trg);
        double height = 0.0;
        if (lumo.getHeight(middle.x(), middle.y(), height)) largest = std::max(largest, std::fabs(height - middle.z()));
    }
    return largest;
}

int main(int argc, char** argv)
{
    std::vector<Point2> vPoints, vEnds;
    if (argc != 4 || !readXYZ(argv[1], vPoints) || !readXYZ(argv[2], vEnds)) return 2;
    std::vector<Segment2> vSegments;
    for (std::size_t i = 0; i + 1 < vEnds.size(); i += 2) {
        if (isOnTheRock(vEnds[i]) && isOnTheRock(vEnds[i + 1])) vSegments.emplace_back(vEnds[i], vEnds[i + 1]);
    }
    vPoints.erase(std::remove_if(vPoints.begin(), vPoints.end(), [](const Point2& p) { return !isOnTheRock(p); }),
                  vPoints.end());

    Lumo_2D lumo;
    lumo.insert(vPoints);
    std::printf("without breaklines: off by up to %.3f m\n", largestError(lumo, vSegments));

    ConstraintGraph2* const pGraph = lumo.createConstraint(vSegments, CIS_CONSTRAINED_DELAUNAY);
    std::printf("with breaklines:    off by up to %.3f m\n", largestError(lumo, vSegments));

    std::vector<ConstraintSegment2*> vEdges;
    pGraph->getChildConstraintSegments(vEdges); // what stands in the mesh now
    std::printf("%zu segments are %zu edges of the mesh\n", vSegments.size(), vEdges.size());

    Visualizer2 picture(argv[3]);
    std::vector<Triangle2*> vTriangles;
    lumo.getTrianglePointers(vTriangles);
    addRelief(vTriangles, picture);
    lumo.show(&picture);
    pGraph->show(&picture, Color(CRED, 1.0F));
    picture.writeFile();
    return 0;
}
