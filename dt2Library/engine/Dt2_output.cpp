// What leaves the engine as pictures, arrays and files.

#include "engine/Dt2.h"

#include "Color.h"
#include "Edge2.h"
#include "LumoExport.h"
#include "Visualizer2.h"
#include "Visualizer3.h"

#include "engine/WebSceneExport.h"
#include "output/ObjWriter.h"
#include "support/check.h"
#include "support/messages.h"
#include "zones/triangleSets.h"

#include <algorithm>
#include <filesystem>
#include <limits>

namespace ORBI_LUMO25D
{

bool Dt2::areOwn(const std::vector<const Zone2*>& vChosen, const char* functionName) const
{
    const auto isOwn = [this](const Zone2* p) { return p != nullptr && p->getDelaunayTriangulation() == this; };
    if (std::all_of(vChosen.begin(), vChosen.end(), isOwn)) return true;
    msgWarning(functionName, "A zone is NULL or belongs to another triangulation, nothing is written");
    return false;
}

// ---- drawings -------------------------------------------------------------------------------------------------------

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

void Dt2::showGeomview(Visualizer3& visualizer, const std::string& color) const
{
    if (bFullDimensional) {
        std::vector<Triangle2*> vT;
        getTrianglePointers(vT);
        visualizer.addObject(vT, color);
    } else {
        std::vector<Point2*> vVertices;
        getVertexPointers(vVertices);
        visualizer.addObject(vVertices, color);
    }
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

// ---- meshes for other programs --------------------------------------------------------------------------------------

namespace
{

void putVertex(ObjWriter& writer, const Point2& p)
{
    const double aCoords[] = {p.x(), p.y(), p.z()};
    writer.addVertex(aCoords, 3);
}

} // namespace

void Dt2::putTriangle(ObjWriter& writer, const Triangle2& t, const std::vector<std::size_t>& vNumber) const
{
    writer.addTriangle(vNumber[poolVertices.indexOf(t.corner(0))], vNumber[poolVertices.indexOf(t.corner(1))],
                       vNumber[poolVertices.indexOf(t.corner(2))]);
}

bool Dt2::writeObj(const char* filename) const
{
    ObjWriter writer(filename);
    if (!writer.isOpen()) return false;
    for (const IdxVtxAct* pItem = vertexVault.begin(); pItem != vertexVault.end(); ++pItem) {
        if (pItem->bActive) putVertex(writer, *pItem->pVtx);
    }
    const std::vector<std::size_t> vNumber = numberActiveVertices();
    poolTriangles.forEach([&](const Triangle2* pT) {
        if (pT->corner(0) != nullptr) putTriangle(writer, *pT, vNumber);
    });
    return writer.finish();
}

bool Dt2::writeObj(const char* filename, const std::vector<const Zone2*>& vChosen) const
{
    if (!areOwn(vChosen, "Dt2::writeObj()")) return false;
    std::vector<std::vector<Triangle2*>> vvT;
    for (const Zone2* pZone : vChosen) {
        vvT.push_back(trianglesByAge(*pZone));
    }
    ObjWriter writer(filename);
    if (!writer.isOpen()) return false;
    std::vector<std::size_t> vNumber(poolVertices.size(), std::numeric_limits<std::size_t>::max());
    std::size_t next = 0;
    for (const std::vector<Triangle2*>& vT : vvT) {
        for (std::size_t i = 0; i < 3 * vT.size(); ++i) {
            const Point2* const pVtx = vT[i / 3]->corner(static_cast<int>(i % 3));
            std::size_t& number = vNumber[poolVertices.indexOf(pVtx)];
            if (number < next) continue;
            number = next++;
            putVertex(writer, *pVtx);
        }
    }
    for (std::size_t i = 0; i < vvT.size(); ++i) {
        if (vvT.size() > 1) writer.beginGroup(("zone" + std::to_string(i)).c_str());
        for (const Triangle2* pT : vvT[i]) putTriangle(writer, *pT, vNumber);
    }
    return writer.finish();
}

// ---- scenes ---------------------------------------------------------------------------------------------------------

bool Dt2::writeWebScene(const char* filename, const std::vector<const Zone2*>& vChosen, const char* lengthUnit) const
{
    if (!areOwn(vChosen, "Dt2::writeWebScene()")) return false;
    if (!hasArea()) {
        msgWarning("Dt2::writeWebScene()", "The triangulation has no area yet, nothing is written");
        return false;
    }
    std::string title = name;
    if (title.empty()) title = std::filesystem::path(filename == nullptr ? "" : filename).stem().string();
    return WebSceneExport(*this, vChosen).write(filename, title, lengthUnit == nullptr ? "" : lengthUnit);
}

} // namespace ORBI_LUMO25D
