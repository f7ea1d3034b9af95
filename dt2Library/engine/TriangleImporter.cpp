#include "engine/TriangleImporter.h"

#include "constraints/ConstraintMgr.h"
#include "core/MeshSurgery.h"
#include "engine/ConstraintInserter.h"
#include "engine/Dt2.h"
#include "geometry/finite.h"

#include "Bbox2.h"
#include "SegmentChecker.h"
#include "freeFunctions.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace ORBI_LUMO25D
{

using L = TriangleLinks;

// ---- checks ---------------------------------------------------------------------------------------------------------

bool TriangleImporter::fail(const char* what)
{
    error = what;
    return false;
}

bool TriangleImporter::check(bool bReorient)
{
    if (!isSound()) return false;
    mergePoints();
    if (!orient(bReorient) || !collectEdges()) return false;
    return meetAtEdgesOnly() || fail("triangles overlap, or don't share whole edges");
}

bool TriangleImporter::isSound()
{
    if (vCorners.empty()) return fail("no triangles given");
    if (vCorners.size() % 3 != 0) return fail("the number of points is no multiple of three");
    const auto isFinite = [](const Point2& p) { return isFinite25D(p); };
    if (!std::all_of(vCorners.begin(), vCorners.end(), isFinite)) return fail("a coordinate is not a finite number");
    return true;
}

/// Corners at one place become one point, the first of them.
void TriangleImporter::mergePoints()
{
    std::vector<std::size_t> vOrder(vCorners.size());
    std::iota(vOrder.begin(), vOrder.end(), std::size_t{0});
    std::sort(vOrder.begin(), vOrder.end(), [this](std::size_t i, std::size_t j) {
        return vCorners[i] != vCorners[j] ? vCorners[i] < vCorners[j] : i < j;
    });
    vTriangles.resize(vCorners.size() / 3);
    for (const std::size_t i : vOrder) {
        if (vPoints.empty() || vPoints.back() != vCorners[i]) vPoints.push_back(vCorners[i]);
        vTriangles[i / 3][i % 3] = vPoints.size() - 1;
    }
}

bool TriangleImporter::orient(bool bReorient)
{
    for (Corners& t : vTriangles) {
        switch (getOrientation2_mt(&vPoints[t[0]], &vPoints[t[1]], &vPoints[t[2]])) {
        case ORIENTATION2_COLLINEAR:
            return fail("a triangle is degenerate");
        case ORIENTATION2_CW:
            if (!bReorient) return fail("a triangle is clockwise");
            std::swap(t[1], t[2]);
            break;
        default:
            break;
        }
    }
    return true;
}

/// False when two triangles lie on the same side of an edge.
bool TriangleImporter::collectEdges()
{
    std::vector<Edge> vDirected;
    for (const Corners& t : vTriangles) {
        for (std::size_t i = 0; i < 3; ++i) {
            vDirected.emplace_back(t[i], t[(i + 1) % 3]);
        }
    }
    std::sort(vDirected.begin(), vDirected.end());
    if (std::adjacent_find(vDirected.begin(), vDirected.end()) != vDirected.end()) return fail("triangles overlap");
    for (const Edge& e : vDirected) {
        vEdges.push_back(std::minmax(e.first, e.second));
    }
    std::sort(vEdges.begin(), vEdges.end());
    vEdges.erase(std::unique(vEdges.begin(), vEdges.end()), vEdges.end());
    return true;
}

bool TriangleImporter::meetAtEdgesOnly() const
{
    std::vector<Segment2> vSegments;
    vSegments.reserve(vEdges.size());
    std::vector<Segment2*> vPointers;
    for (const Edge& e : vEdges) {
        vSegments.emplace_back(vPoints[e.first], vPoints[e.second]);
        vPointers.push_back(&vSegments.back());
    }
    std::vector<Segment2*> vIllegal;
    SegmentChecker(vPointers).getIllegalSegments(false, vIllegal);
    return vIllegal.empty();
}

// ---- building -------------------------------------------------------------------------------------------------------

bool TriangleImporter::addBox()
{
    Bbox2 box;
    double minZ = vPoints.front().z();
    double maxZ = minZ;
    for (const Point2& p : vPoints) {
        box.add(p);
        minZ = std::min(minZ, p.z());
        maxZ = std::max(maxZ, p.z());
    }
    const double width = box.get_maxX() - box.get_minX();
    const double height = box.get_maxY() - box.get_minY();
    for (const double x : {box.get_minX() - width, box.get_maxX() + width}) {
        for (const double y : {box.get_minY() - height, box.get_maxY() + height}) {
            if (!std::isfinite(x) || !std::isfinite(y)) return fail("there is no room for the extended box");
            vPoints.emplace_back(x, y, minZ / 2.0 + maxZ / 2.0);
        }
    }
    return true;
}

bool TriangleImporter::build(Dt2& dt2, std::vector<Triangle2*>& vT)
{
    Dt2 scratch(vPoints.size());
    std::vector<Point2*> vScratch;
    scratch.insertVector(vPoints, &vScratch);
    scratch.pConstraintInserter->setExact();
    std::vector<std::pair<Point2*, Point2*>> vPairs;
    for (const Edge& e : vEdges) {
        vPairs.emplace_back(vScratch[e.first], vScratch[e.second]);
    }
    scratch.getConstraintMgr().createConstraint(vPairs, CIS_CONSTRAINED_DELAUNAY, true);

    // With all edges in the mesh, a triangle is missing if and only if there is a point inside of it.
    std::vector<const Triangle2*> vFound;
    for (const Corners& t : vTriangles) {
        const Triangle2* const pT = scratch.getAdjacentTriangle(vScratch[t[0]], vScratch[t[1]]);
        if (pT == nullptr || !pT->hasVertex(vScratch[t[2]])) return fail("triangles overlap");
        vFound.push_back(pT);
    }
    std::vector<Point2*> vVertices;
    dt2.insertToVVault(vPoints, &vVertices);
    const std::vector<Triangle2*> vCopies = copyTriangles(scratch, vScratch, dt2, vVertices);
    keepEdges(dt2);
    for (const Triangle2* pT : vFound) {
        vT.push_back(vCopies[scratch.poolTriangles.indexOf(pT)]);
    }
    return true;
}

/// Copies the triangles and their links; the copy of the triangle with number i in its pool is the i-th of the result.
std::vector<Triangle2*> TriangleImporter::copyTriangles(const Dt2& from, const std::vector<Point2*>& vFrom, Dt2& to,
                                                        const std::vector<Point2*>& vTo)
{
    std::vector<Point2*> vVertices(from.poolVertices.size(), nullptr);
    for (std::size_t i = 0; i < vFrom.size(); ++i) {
        vVertices[from.poolVertices.indexOf(vFrom[i])] = vTo[i];
    }
    const auto vertex = [&](const Triangle2* pT, int i) { return vVertices[from.poolVertices.indexOf(pT->corner(i))]; };
    std::vector<Triangle2*> vAlive;
    from.getTrianglePointers(vAlive);
    std::vector<Triangle2*> vCopies(from.poolTriangles.size(), nullptr);
    for (const Triangle2* pT : vAlive) {
        vCopies[from.poolTriangles.indexOf(pT)] = to.getNewTriangle(vertex(pT, 0), vertex(pT, 1), vertex(pT, 2));
    }
    for (const Triangle2* pT : vAlive) {
        for (int i = 0; i < 3; ++i) {
            if (pT->neighbor(i) == nullptr) continue;
            L::setNeighbor(vCopies[from.poolTriangles.indexOf(pT)], i,
                           vCopies[from.poolTriangles.indexOf(pT->neighbor(i))]);
        }
    }
    to.bFullDimensional = true;
    to.vertexVault.areaChanged();
    return vCopies;
}

/// Makes constraints of the edges that aren't locally Delaunay: the law of the engine, and the reason why they stay.
void TriangleImporter::keepEdges(Dt2& dt2)
{
    std::vector<Triangle2*> vT;
    dt2.getTrianglePointers(vT);
    std::vector<std::pair<Point2*, Point2*>> vPairs;
    for (const Triangle2* pT : vT) {
        for (int i = 0; i < 3; ++i) {
            const Triangle2* const pN = pT->neighbor(i);
            if (pN == nullptr || !(*pT->corner(L::next(i)) < *pT->corner(L::prev(i)))) continue; // each edge once
            const Point2* const pBeyond = pN->corner(L::indexOf(pN, pT));
            if (dt2.orbiTest.circleInc3state(pT, pBeyond) != CINC2_INCIRCLE) continue;
            vPairs.emplace_back(pT->corner(L::next(i)), pT->corner(L::prev(i)));
        }
    }
    dt2.getConstraintMgr().createConstraint(vPairs, CIS_CONSTRAINED_DELAUNAY, false);
}

} // namespace ORBI_LUMO25D
