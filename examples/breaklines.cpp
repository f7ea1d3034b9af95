// A surface with breaklines: edges of rock, kerbs, ditches, which no triangle may cross.
//
//     breaklines POINTS.xyz BREAKLINES.seg [PICTURE.ps]
//
// BREAKLINES.seg has a segment "x y z x y z" in each line. Prints how far the surface of the points alone is off the
// breaklines, and that it isn't when they are constraints.

#include "Color.h"
#include "Lumo_2D.h"
#include "Visualizer2.h"
#include "freeFunctions.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

using namespace ORBI_LUMO25D;

namespace
{

/// The largest difference in height between the surface and the middle of a segment.
double largestError(const Lumo_2D& lumo, const std::vector<Segment2>& vSegments)
{
    double largest = 0.0;
    for (const Segment2& s : vSegments) {
        double height = 0.0;
        if (!lumo.getHeight((s.src.x() + s.trg.x()) / 2, (s.src.y() + s.trg.y()) / 2, height)) continue;
        largest = std::max(largest, std::fabs(height - (s.src.z() + s.trg.z()) / 2));
    }
    return largest;
}

} // namespace

int main(int argc, char** argv)
{
    std::vector<Point2> vPoints, vEnds;
    if (argc < 3 || !readXYZ(argv[1], vPoints) || !readXYZ(argv[2], vEnds)) {
        std::printf("usage: breaklines POINTS.xyz BREAKLINES.seg [PICTURE.ps]\n");
        return 2;
    }
    std::vector<Segment2> vSegments;
    for (std::size_t i = 0; i + 1 < vEnds.size(); i += 2) {
        vSegments.emplace_back(vEnds[i], vEnds[i + 1]);
    }

    Lumo_2D lumo;
    lumo.insert(vPoints);
    std::printf("without breaklines: off by up to %.3f\n", largestError(lumo, vSegments));

    ConstraintGraph2* const pGraph = lumo.createConstraint(vSegments, CIS_CONSTRAINED_DELAUNAY);
    if (pGraph == nullptr) return 1;
    std::vector<ConstraintSegment2*> vEdges;
    pGraph->getChildConstraintSegments(vEdges);
    std::printf("with breaklines:    off by up to %.3f\n", largestError(lumo, vSegments));
    std::printf("%zu segments are %zu edges of the mesh\n", vSegments.size(), vEdges.size());

    if (argc > 3) {
        Visualizer2 visualizer(argv[3]);
        lumo.show(&visualizer);
        pGraph->show(&visualizer, Color(CRED));
        visualizer.writeFile();
    }
    return 0;
}
