#include "engine/WebSceneExport.h"

#include "engine/Dt2.h"
#include "geometry/aroundVertex.h"
#include "output/WebSceneWriter.h"
#include "support/messages.h"
#include "zones/triangleSets.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace ORBI_LUMO25D
{

namespace
{

const std::uint32_t NONE = std::numeric_limits<std::uint32_t>::max();

bool isHeightKnown(const Point2* pVtx)
{
    // The largest double stands for a height that isn't known, the lowest for one that was never set.
    return std::fabs(pVtx->z()) < std::numeric_limits<double>::max();
}

template <class Visit>
void forEachVertex(const Dt2& dt2, const Visit& visit)
{
    const IdxVtxAct* const pEnd = dt2.vertexVault.end();
    for (const IdxVtxAct* pItem = dt2.vertexVault.begin(); pItem != pEnd; ++pItem) {
        if (pItem->bActive) visit(static_cast<const Point2*>(pItem->pVtx));
    }
}

WebSceneHead makeHead(const Dt2& dt2)
{
    WebSceneHead head;
    double aMin[3], aMax[3];
    std::fill(aMin, aMin + 3, std::numeric_limits<double>::max());
    std::fill(aMax, aMax + 3, std::numeric_limits<double>::lowest());
    forEachVertex(dt2, [&](const Point2* pVtx) {
        const double aCoords[3] = {pVtx->x(), pVtx->y(), pVtx->z()};
        for (int k = 0; k < (isHeightKnown(pVtx) ? 3 : 2); ++k) {
            aMin[k] = std::min(aMin[k], aCoords[k]);
            aMax[k] = std::max(aMax[k], aCoords[k]);
        }
    });
    if (aMin[2] > aMax[2]) aMin[2] = aMax[2] = 0.0;
    head.setRange(aMin, aMax);
    head.numVertices = dt2.vertexVault.numActive();
    head.numTriangles = dt2.numberOfTriangles();
    return head;
}

} // namespace

WebSceneExport::WebSceneExport(const Dt2& dt2_, const std::vector<const Zone2*>& vZones) : dt2(dt2_)
{
    for (const Zone2* pZone : vZones) {
        vvZoneTriangles.push_back(trianglesByAge(*pZone));
    }
}

bool WebSceneExport::write(const char* filename, const std::string& title, const std::string& lengthUnit)
{
    if (dt2.vertexVault.numActive() >= NONE || dt2.numberOfTriangles() >= NONE) {
        msgError("Dt2::writeWebScene()", "too many vertices or triangles for 32-bit numbers, nothing is written");
        return false;
    }
    WebSceneWriter writer(filename);
    if (!writer.begin()) return false;
    WebSceneHead head = makeHead(dt2);
    head.title = title;
    head.lengthUnit = lengthUnit;
    for (const auto& vT : vvZoneTriangles) {
        head.vZoneAreas.push_back(sumArea2D(vT));
    }
    writer.putHead(head);
    numberVertices();
    writeVertices(writer, head);
    writeTriangles(writer);
    writeSegments(writer, "border", vBorder);
    writeConstraints(writer);
    for (std::size_t i = 0; i < vvZoneTriangles.size(); ++i) {
        writeZone(writer, i);
    }
    return writer.finish();
}

/// A vertex without a height keeps its number, so that the numbers are those of the vault, and is in no triangle.
void WebSceneExport::numberVertices()
{
    vNumber.assign(dt2.poolVertices.size(), NONE);
    std::uint32_t next = 0;
    forEachVertex(dt2, [&](const Point2* pVtx) {
        if (isHeightKnown(pVtx)) vNumber[dt2.poolVertices.indexOf(pVtx)] = next;
        ++next;
    });
}

std::uint32_t WebSceneExport::numberOf(const Point2* pVtx) const
{
    return vNumber[dt2.poolVertices.indexOf(pVtx)];
}

bool WebSceneExport::isDrawn(const Triangle2* pT) const
{
    return isHeightKnown(pT->corner(0)) && isHeightKnown(pT->corner(1)) && isHeightKnown(pT->corner(2));
}

void WebSceneExport::writeVertices(WebSceneWriter& writer, const WebSceneHead& head) const
{
    writer.beginBlock("positions");
    forEachVertex(dt2, [&](const Point2* pVtx) {
        writer.put(head.normalize(0, pVtx->x()));
        writer.put(head.normalize(1, pVtx->y()));
        writer.put(isHeightKnown(pVtx) ? head.normalize(2, pVtx->z()) : 0.0F);
    });
    writer.endBlock();
}

void WebSceneExport::writeTriangles(WebSceneWriter& writer)
{
    if (!vvZoneTriangles.empty()) vOrdinal.assign(dt2.poolTriangles.size(), NONE);
    std::uint32_t next = 0;
    writer.beginBlock("triangles");
    forEachVertex(dt2, [&](const Point2* pVtx) {
        const std::uint32_t a = numberOf(pVtx);
        if (a == NONE || pVtx->getIncidentTriangle() == nullptr) return;
        forEachTriangleAround(pVtx, [&](const Triangle2* pT) {
            const int i = pT->getIntraTriangleIndex(pVtx);
            const std::uint32_t b = numberOf(pT->corner(incIndexBy1(i)));
            const std::uint32_t c = numberOf(pT->corner(incIndexBy2(i)));
            if (a > b || a > c || b == NONE || c == NONE) return;
            writer.put(a);
            writer.put(b);
            writer.put(c);
            if (!vOrdinal.empty()) vOrdinal[dt2.poolTriangles.indexOf(pT)] = next;
            ++next;
            addBorder(pT);
        });
    });
    writer.endBlock();
}

void WebSceneExport::addBorder(const Triangle2* pT)
{
    for (int i = 0; i < 3; ++i) {
        if (pT->neighbor(i) != nullptr && isDrawn(pT->neighbor(i))) continue;
        vBorder.push_back(numberOf(pT->corner(incIndexBy1(i))));
        vBorder.push_back(numberOf(pT->corner(incIndexBy2(i))));
    }
}

void WebSceneExport::writeSegments(WebSceneWriter& writer, const char* name,
                                   const std::vector<std::uint32_t>& vEnds) const
{
    writer.beginBlock(name);
    for (std::size_t i = 0; i + 1 < vEnds.size(); i += 2) {
        if (vEnds[i] == NONE || vEnds[i + 1] == NONE) continue;
        writer.put(vEnds[i]);
        writer.put(vEnds[i + 1]);
    }
    writer.endBlock();
}

void WebSceneExport::writeConstraints(WebSceneWriter& writer) const
{
    std::vector<ConstraintSegment2*> vSegments;
    dt2.getAliveConstraintSegments(vSegments);
    std::vector<std::uint32_t> vEnds;
    vEnds.reserve(2 * vSegments.size());
    for (const ConstraintSegment2* pSegment : vSegments) {
        vEnds.push_back(numberOf(pSegment->getSrc()));
        vEnds.push_back(numberOf(pSegment->getTrg()));
    }
    writeSegments(writer, "constraints", vEnds);
}

void WebSceneExport::writeZone(WebSceneWriter& writer, std::size_t i) const
{
    const std::vector<Triangle2*>& vT = vvZoneTriangles[i];
    std::vector<std::uint32_t> vMembers;
    vMembers.reserve(vT.size());
    for (const Triangle2* pT : vT) {
        const std::uint32_t ordinal = vOrdinal[dt2.poolTriangles.indexOf(pT)];
        if (ordinal != NONE) vMembers.push_back(ordinal);
    }
    std::sort(vMembers.begin(), vMembers.end());
    vMembers.erase(std::unique(vMembers.begin(), vMembers.end()), vMembers.end());
    const std::string name = "zone" + std::to_string(i);
    writer.beginBlock(name);
    for (const std::uint32_t member : vMembers) writer.put(member);
    writer.endBlock();

    std::vector<Edge2> vEdges;
    getBorderEdges(dt2, vT, vEdges);
    std::vector<std::uint32_t> vEnds;
    vEnds.reserve(2 * vEdges.size());
    for (const Edge2& edge : vEdges) {
        vEnds.push_back(numberOf(edge.getSrc()));
        vEnds.push_back(numberOf(edge.getTrg()));
    }
    writeSegments(writer, (name + "border").c_str(), vEnds);
}

} // namespace ORBI_LUMO25D
