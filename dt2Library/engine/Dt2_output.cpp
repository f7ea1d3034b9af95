// What leaves the engine as pictures and files.

#include "engine/Dt2.h"

#include "Color.h"
#include "Edge2.h"
#include "Visualizer2.h"

namespace ORBI_LUMO25D
{

void Dt2::show(Visualizer2& visualizer) const
{
    const Color color(CBLACK, 0.1F, false);
    std::vector<Triangle2*> vT;
    getTrianglePointers(vT);
    for (Triangle2* pT : vT) {
        for (int i = 0; i < 3; ++i) {
            // An inner edge belongs to two triangles and is drawn once.
            if (pT->neighbor(i) == nullptr || poolTriangles.indexOf(pT) < poolTriangles.indexOf(pT->neighbor(i))) {
                visualizer.addObject(Edge2(pT, i), color);
            }
        }
    }
    if (bFullDimensional) return;
    std::vector<Point2*> vVertices;
    getVertexPointers(vVertices);
    visualizer.addObject(vVertices, color);
}

} // namespace ORBI_LUMO25D
