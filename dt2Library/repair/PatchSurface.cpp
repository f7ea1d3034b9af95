#include "repair/PatchSurface.h"

#include "geometry/finite.h"
#include "support/check.h"

#include <algorithm>
#include <cmath>

namespace ORBI_LUMO25D
{

Vector2 reliableNormal(const Point2& p0, const Point2& p1, const Point2& p2)
{
    bool bOK = false;
    const Vector2 normal = getNormalVector(p0, p1, p2, bOK);
    if (!bOK) return Vector2();
    const Vector2 v = p1 - p0, w = p2 - p0;
    const double length = std::max({v.length(), w.length(), (w - v).length()});
    const double height = crossProduct(v / length, w / length).length() * length;
    const double maxAbs = std::max({std::fabs(p0.x()), std::fabs(p0.y()), std::fabs(p0.z())}) + length;
    return height > 1e4 * 0x1p-53 * maxAbs && height > 1e-9 * length ? normal : Vector2();
}

void PatchSurface::addFacet(std::size_t vertex, const Point2* p0, const Point2* p1, const Point2* p2)
{
    Vertex& v = vVertices[vertex];
    const Point2& p = *v.pPoint;
    const Facet facet{{p0, p1, p2}, reliableNormal(*p0, *p1, *p2), ((*p0 - p) + (*p1 - p) + (*p2 - p)) / 3.0};
    v.vFacets.push_back(facet);
    v.sum.add(facet.normal, facet.centre, 1.0);
}

std::size_t PatchSurface::addRingVertex(Point2* pVertex)
{
    const std::size_t vertex = vVertices.size();
    vVertices.push_back({pVertex, {}, {}, {}});
    std::vector<Triangle2*> vIncident;
    pMesh->getIncidentTriangles(pVertex, vIncident);
    for (const Triangle2* pT : vIncident) {
        addFacet(vertex, pT->corner(0), pT->corner(1), pT->corner(2));
        if (sNearby.insert(pT).second) nearby.add({pT->corner(0), pT->corner(1), pT->corner(2)});
    }
    return vertex;
}

bool PatchSurface::isFree(const Point2& place) const
{
    return isFinite25D(place) && pMesh->getVertex(place) == nullptr;
}

std::size_t PatchSurface::addNewVertex(const Point2& place)
{
    vVertices.push_back({pMesh->createVertex(place, true), {}, {}, {}});
    ++numNewVertices;
    return vVertices.size() - 1;
}

void PatchSurface::addTriangle(std::size_t a, std::size_t b, std::size_t c)
{
    const Point2 *p0 = &point(a), *p1 = &point(b), *p2 = &point(c);
    LUMO_CHECK(p0 != p1 && p1 != p2 && p2 != p0, "p0!=p1 && p1!=p2 && p2!=p0");
    LUMO_CHECK(!p0->samePoint(*p1), "!samePoint(*p0,*p1)");
    LUMO_CHECK(!p1->samePoint(*p2), "!samePoint(*p1,*p2)");
    LUMO_CHECK(!p2->samePoint(*p0), "!samePoint(*p2,*p0)");
    for (const std::size_t vertex : {a, b, c}) addFacet(vertex, p0, p1, p2);
    vTriangles.push_back({a, b, c});
    nearby.add({p0, p1, p2});
}

void PatchSurface::addLink(std::size_t a, std::size_t b)
{
    vVertices[a].vLinks.push_back(b);
    vVertices[b].vLinks.push_back(a);
}

bool PatchSurface::hasEdge(std::size_t a, std::size_t b) const
{
    if (vVertices[b].vFacets.size() < vVertices[a].vFacets.size()) std::swap(a, b);
    const Vertex& va = vVertices[a];
    const Point2* const pB = vVertices[b].pPoint;
    return std::find(va.vLinks.begin(), va.vLinks.end(), b) != va.vLinks.end() ||
           std::any_of(va.vFacets.begin(), va.vFacets.end(), [pB](const Facet& f) { return f.hasCorner(pB); });
}

} // namespace ORBI_LUMO25D
