#include "Mesh3.h"

#include "geometry/finite.h"
#include "repair/BorderWalk.h"
#include "repair/meshFiles.h"
#include "support/messages.h"

#include <deque>
#include <functional>
#include <string>
#include <unordered_map>

namespace ORBI_LUMO25D
{

namespace
{

struct Func_hashXYZ
{
    std::size_t operator()(const Point2* p) const
    {
        const std::hash<double> h;
        std::size_t seed = h(p->x()) * 0x9E3779B97F4A7C15U;
        seed = (seed ^ (seed >> 32U) ^ h(p->y())) * 0x9E3779B97F4A7C15U;
        return (seed ^ (seed >> 32U) ^ h(p->z())) * 0x9E3779B97F4A7C15U;
    }
};

struct Func_sameXYZ
{
    bool operator()(const Point2* p, const Point2* q) const { return p->samePoint(*q); }
};

} // namespace

struct Mesh3Data
{
    struct Vertex
    {
        Point2 point;
        std::vector<Triangle2*> vTriangles; ///< around it, in the order of creation
    };

    const Vertex* find(const Point2* pVertex) const
    {
        const auto it = mPointToVertex.find(pVertex);
        return it == mPointToVertex.end() ? nullptr : it->second;
    }
    Point2* addVertex(const Point2& p);
    Triangle2* addTriangle(Point2* p0, Point2* p1, Point2* p2);
    void getEdges(const Point2* pSrc, const Point2* pTrg, std::vector<Edge2>& vEdges) const;
    std::size_t countEdges(const Edge2& edge, bool bReverse) const;
    void relink(const Edge2& edge);
    bool turnThroughTriangles(Edge2& edge) const;

    // Deques: addresses stay.
    std::deque<Vertex> vVertices;
    std::deque<Triangle2> vTriangles;
    std::unordered_map<const Point2*, Vertex*> mPointToVertex;
    std::unordered_map<const Point2*, Point2*, Func_hashXYZ, Func_sameXYZ> mPlaceToVertex;
    mutable std::vector<Edge2> vScratch;
};

Point2* Mesh3Data::addVertex(const Point2& p)
{
    vVertices.emplace_back();
    Vertex& vertex = vVertices.back();
    vertex.point.set(p);
    mPointToVertex.emplace(&vertex.point, &vertex);
    mPlaceToVertex.emplace(&vertex.point, &vertex.point); // the first one at a place stays
    return &vertex.point;
}

Triangle2* Mesh3Data::addTriangle(Point2* p0, Point2* p1, Point2* p2)
{
    vTriangles.emplace_back();
    Triangle2* const pT = &vTriangles.back();
    pT->setProperties(p0, p1, p2);
    for (const Point2* p : {p0, p1, p2}) mPointToVertex.at(p)->vTriangles.push_back(pT);
    return pT;
}

void Mesh3Data::getEdges(const Point2* pSrc, const Point2* pTrg, std::vector<Edge2>& vEdges) const
{
    const Vertex* const pS = find(pSrc);
    const Vertex* const pT = find(pTrg);
    if (pS == nullptr || pT == nullptr || pS == pT) return;
    // The end with fewer triangles: a vertex may have as many as the mesh.
    for (Triangle2* pTriangle : pS->vTriangles.size() < pT->vTriangles.size() ? pS->vTriangles : pT->vTriangles) {
        for (int i = 0; i < 3; ++i) {
            if (pTriangle->corner(i) == pSrc && pTriangle->corner(incIndexBy1(i)) == pTrg) {
                vEdges.emplace_back(pTriangle, incIndexBy2(i));
            }
        }
    }
}

std::size_t Mesh3Data::countEdges(const Edge2& edge, bool bReverse) const
{
    vScratch.clear();
    if (bReverse) {
        getEdges(edge.getTrg(), edge.getSrc(), vScratch);
    } else {
        getEdges(edge.getSrc(), edge.getTrg(), vScratch);
    }
    return vScratch.size();
}

/// Sets the neighbours across an edge, or clears them where there isn't one on each side.
void Mesh3Data::relink(const Edge2& edge)
{
    vScratch.clear();
    getEdges(edge.getSrc(), edge.getTrg(), vScratch);
    const std::size_t numForward = vScratch.size();
    getEdges(edge.getTrg(), edge.getSrc(), vScratch);
    if (numForward == 1 && vScratch.size() == 2) {
        const Edge2 &e0 = vScratch[0], &e1 = vScratch[1];
        e0.getTriangle()->setOppTriangle(e0.getIndex(), e1.getTriangle());
        e1.getTriangle()->setOppTriangle(e1.getIndex(), e0.getTriangle());
    } else {
        for (const Edge2& e : vScratch) e.getTriangle()->setOppTriangle(e.getIndex(), nullptr);
    }
}

/// From a border edge around its target, through the triangles there, to the border edge that leaves it. False if a
/// non-manifold edge comes in between.
bool Mesh3Data::turnThroughTriangles(Edge2& edge) const
{
    edge = Edge2(edge.getTriangle(), incIndexBy1(edge.getIndex()));
    while (Triangle2* const pNext = edge.getTriangle()->neighbor(edge.getIndex())) {
        edge = Edge2(pNext, incIndexBy1(pNext->getIntraTriangleIndex(edge.getSrc(), edge.getTrg())));
    }
    return countEdges(edge, false) == 1 && countEdges(edge, true) == 0;
}

// ---- construction ---------------------------------------------------------------------------------------------------

Mesh3::Mesh3() : pData(std::make_unique<Mesh3Data>()) {}

Mesh3::~Mesh3() = default;

Mesh3::Mesh3(const std::vector<Point2>& vCorners) : Mesh3()
{
    const std::size_t num = vCorners.size() / 3;
    std::size_t numLeftOut = vCorners.size() % 3 == 0 ? 0 : 1;
    for (std::size_t i = 0; i < num; ++i) {
        const Point2 *p0 = &vCorners[3 * i], *p1 = p0 + 1, *p2 = p0 + 2;
        if (!isFinite25D(*p0) || !isFinite25D(*p1) || !isFinite25D(*p2) || p0->samePoint(*p1) || p1->samePoint(*p2) ||
            p2->samePoint(*p0)) {
            ++numLeftOut;
            continue;
        }
        Point2* const pV0 = createVertex(*p0, false);
        Point2* const pV1 = createVertex(*p1, false);
        pData->addTriangle(pV0, pV1, createVertex(*p2, false));
    }
    for (Triangle2& t : pData->vTriangles) {
        for (int i = 0; i < 3; ++i) {
            if (t.neighbor(i) == nullptr) pData->relink(Edge2(&t, i));
        }
    }
    if (numLeftOut > 0) {
        msgWarning("Mesh3::Mesh3()", std::to_string(numLeftOut) + " triangles that aren't proper ones are left out");
    }
    for (Triangle2& t : pData->vTriangles) {
        for (int i = 0; i < 3; ++i) {
            const Edge2 edge(&t, i);
            if (t.neighbor(i) != nullptr || pData->countEdges(edge, false) + pData->countEdges(edge, true) <= 2)
                continue;
            msgWarning("Mesh3::Mesh3()", "Non-manifold mesh. Expect trouble");
            return;
        }
    }
}

Point2* Mesh3::createVertex(const Point2& p, bool bAlwaysNew)
{
    if (!isFinite25D(p)) {
        msgWarning("Mesh3::createVertex()", "coordinates are not finite");
        return nullptr;
    }
    Point2* const pThere = bAlwaysNew ? nullptr : getVertex(p);
    return pThere != nullptr ? pThere : pData->addVertex(p);
}

Triangle2* Mesh3::createTriangle(Point2* p0, Point2* p1, Point2* p2)
{
    const bool bKnown = pData->find(p0) != nullptr && pData->find(p1) != nullptr && pData->find(p2) != nullptr;
    if (!bKnown || p0 == p1 || p1 == p2 || p2 == p0) {
        msgWarning("Mesh3::createTriangle()", "not three different vertices of this mesh");
        return nullptr;
    }
    Triangle2* const pT = pData->addTriangle(p0, p1, p2);
    for (int i = 0; i < 3; ++i) pData->relink(Edge2(pT, i));
    return pT;
}

// ---- queries --------------------------------------------------------------------------------------------------------

std::size_t Mesh3::numberOfVertices() const
{
    return pData->vVertices.size();
}

std::size_t Mesh3::numberOfTriangles() const
{
    return pData->vTriangles.size();
}

void Mesh3::getVertexPointers(std::vector<Point2*>& vVertices) const
{
    for (Mesh3Data::Vertex& vertex : pData->vVertices) vVertices.push_back(&vertex.point);
}

void Mesh3::getTrianglePointers(std::vector<Triangle2*>& vTriangles) const
{
    for (Triangle2& t : pData->vTriangles) vTriangles.push_back(&t);
}

Point2* Mesh3::getVertex(const Point2& p) const
{
    const auto it = pData->mPlaceToVertex.find(&p);
    return it == pData->mPlaceToVertex.end() ? nullptr : it->second;
}

void Mesh3::getIncidentTriangles(const Point2* pVertex, std::vector<Triangle2*>& vTriangles) const
{
    const Mesh3Data::Vertex* const p = pData->find(pVertex);
    if (p != nullptr) vTriangles.insert(vTriangles.end(), p->vTriangles.begin(), p->vTriangles.end());
}

void Mesh3::getEdges(const Point2* pSrc, const Point2* pTrg, std::vector<Edge2>& vEdges) const
{
    pData->getEdges(pSrc, pTrg, vEdges);
}

bool Mesh3::isBorderEdge(const Edge2& edge) const
{
    if (edge.getTriangle() == nullptr || edge.getIndex() < 0 || edge.getIndex() > 2) return false;
    return pData->countEdges(edge, false) == 1 && pData->vScratch[0] == edge && pData->countEdges(edge, true) == 0;
}

void Mesh3::getBorderEdges(std::vector<Edge2>& vEdges) const
{
    for (Triangle2& t : pData->vTriangles) {
        for (int i = 0; i < 3; ++i) {
            if (t.neighbor(i) == nullptr && isBorderEdge(Edge2(&t, i))) vEdges.emplace_back(&t, i);
        }
    }
}

void Mesh3::getBorderRings(std::vector<std::vector<Edge2>>& vRings) const
{
    std::vector<Edge2> vBorder;
    getBorderEdges(vBorder);
    BorderWalk walk(
        vBorder, [this](Edge2& edge) { return pData->turnThroughTriangles(edge); },
        [this](const Point2* pVertex) { return getNormalVector(pVertex); });
    walk.getRings(vRings);
}

bool Mesh3::hasNonManifoldEdges() const
{
    for (Triangle2& t : pData->vTriangles) {
        for (int i = 0; i < 3; ++i) {
            if (t.neighbor(i) == nullptr && !isBorderEdge(Edge2(&t, i))) return true;
        }
    }
    return false;
}

Vector2 Mesh3::getNormalVector(const Point2* pVertex) const
{
    const Mesh3Data::Vertex* const pV = pData->find(pVertex);
    Vector2 sum;
    if (pV == nullptr) return sum;
    for (const Triangle2* pT : pV->vTriangles) {
        const int i = pT->getIntraTriangleIndex(pVertex);
        const Point2 &next = *pT->corner(incIndexBy1(i)), &prev = *pT->corner(incIndexBy2(i));
        bool bOK = false;
        const Vector2 normal = ORBI_LUMO25D::getNormalVector(*pVertex, next, prev, bOK);
        if (bOK) sum = sum + normal * getAngleDegree(normalize(next - *pVertex), normalize(prev - *pVertex));
    }
    return sum.isDegenerate() ? sum : normalize(sum);
}

bool Mesh3::readCorners(const std::string& filename, std::vector<Point2>& vCorners)
{
    return readMeshCorners(filename, vCorners);
}

} // namespace ORBI_LUMO25D
