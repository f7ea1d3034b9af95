// What leaves the engine as pictures, arrays and files.

#include "engine/Dt2.h"

#include "Color.h"
#include "Edge2.h"
#include "LumoExport.h"
#include "Visualizer2.h"

#include "output/ObjWriter.h"
#include "support/check.h"
#include "support/messages.h"

#include <limits>

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

// ---- arrays ---------------------------------------------------------------------------------------------------------

/// For each vertex of the pool, by its dense number, its place among the active vertices.
std::vector<std::size_t> Dt2::numberActiveVertices() const
{
    std::vector<std::size_t> vNumber(poolVertices.size(), 0);
    std::size_t next = 0;
    for (const IdxVtxAct* pItem = vertexVault.begin(); pItem != vertexVault.end(); ++pItem) {
        if (pItem->bActive) vNumber[poolVertices.indexOf(pItem->pVtx)] = next++;
    }
    return vNumber;
}

bool Dt2::exportTriangulationArray(LumoExport& lumoExport, bool bCustomIndices) const
{
    LUMO_CHECK(lumoExport.aTriangles == nullptr, "lumoExport.aTriangles==0");
    LUMO_CHECK(lumoExport.aCoords == nullptr, "lumoExport.aCoords==0");
    LUMO_CHECK(lumoExport.aCustomIndices == nullptr, "lumoExport.aCustomIndices==0");
    LUMO_CHECK(lumoExport.numCustomIndices == 0, "lumoExport.numCustomIndices==0");
    constexpr auto maxCount = static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max());
    const std::size_t numPoints = vertexVault.numActive();
    if (numPoints > maxCount || numberOfTriangles() > maxCount) {
        msgError("Dt2::exportTriangulationArray()",
                 "too many vertices or triangles for 32-bit counts, nothing exported");
        return false;
    }
    LumoExport result;
    result.numPoints = static_cast<std::int32_t>(numPoints);
    result.aCoords = new double[3 * numPoints];
    vertexVault.export_fetchCoordinates(result.aCoords);
    if (bCustomIndices) {
        result.aCustomIndices = new std::int32_t[numPoints];
        result.numCustomIndices = result.numPoints;
        vertexVault.export_fetchCustomIndices(result.aCustomIndices);
    }
    const std::vector<std::size_t> vNumber = numberActiveVertices();
    result.numTriangles = static_cast<std::int32_t>(numberOfTriangles());
    result.aTriangles = new std::int32_t[3 * numberOfTriangles()];
    std::int32_t* pOut = result.aTriangles;
    poolTriangles.forEach([&](const Triangle2* pT) {
        if (pT->corner(0) == nullptr) return;
        for (int i = 0; i < 3; ++i) {
            *pOut++ = static_cast<std::int32_t>(vNumber[poolVertices.indexOf(pT->corner(i))]);
        }
    });
    lumoExport.swap(result);
    return true;
}

bool Dt2::writeObj(const std::string& filename) const
{
    ObjWriter writer(filename);
    if (!writer.isOpen()) return false;
    for (const IdxVtxAct* pItem = vertexVault.begin(); pItem != vertexVault.end(); ++pItem) {
        if (!pItem->bActive) continue;
        double aCoords[3];
        pItem->pVtx->xyz(aCoords[0], aCoords[1], aCoords[2]);
        writer.addVertex(aCoords, 3);
    }
    const std::vector<std::size_t> vNumber = numberActiveVertices();
    poolTriangles.forEach([&](const Triangle2* pT) {
        if (pT->corner(0) == nullptr) return;
        writer.addTriangle(vNumber[poolVertices.indexOf(pT->corner(0))], vNumber[poolVertices.indexOf(pT->corner(1))],
                           vNumber[poolVertices.indexOf(pT->corner(2))]);
    });
    return writer.finish();
}

} // namespace ORBI_LUMO25D
