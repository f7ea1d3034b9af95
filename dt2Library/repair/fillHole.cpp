#include "HoleFiller.h"
#include "Mesh3.h"

#include "geometry/finite.h"
#include "repair/sortEdges_tools.h"
#include "support/messages.h"

#include <cmath>
#include <sstream>
#include <string>

namespace ORBI_LUMO25D
{

namespace
{

using SegmentAndNormal = std::pair<Segment2, Vector2>;

bool fail(bool bVerbose, const std::string& text)
{
    if (bVerbose) msgError("fillHole()", text);
    return false;
}

bool fail(bool bVerbose, const std::string& text, const Segment2& segment)
{
    std::ostringstream stream;
    stream << text << "\n(" << segment.src << ") to (" << segment.trg << ")";
    return fail(bVerbose, stream.str());
}

/// Runs f; false for whatever it throws.
template <class F>
bool withoutExceptions(const F& f)
{
    try {
        return f();
    } catch (...) {
        return false; // a failed condition was printed when it was thrown
    }
}

bool isRing(const std::vector<Edge2>& vEdges, bool bVerbose)
{
    std::vector<Edge2> vSorted(vEdges);
    const RingState state = sortEdgesToRing(vSorted);
    if (state == RingState::NotClosed) return fail(bVerbose, "Err4: Not a closed polygon");
    if (state == RingState::NotSimple) return fail(bVerbose, "Err5: Not a simple polygon");
    return true;
}

bool findBorderEdge(const Mesh3& mesh, const Segment2& segment, bool bVerbose, std::vector<Edge2>& vEdges)
{
    const Point2 *const pSrc = mesh.getVertex(segment.src), *const pTrg = mesh.getVertex(segment.trg);
    if (pSrc == nullptr || pTrg == nullptr) return fail(bVerbose, "Err1: Not an edge of the input mesh", segment);
    std::vector<Edge2> vFound;
    mesh.getEdges(pSrc, pTrg, vFound);
    if (vFound.empty()) return fail(bVerbose, "Err2: Not an edge of the input mesh", segment);
    mesh.getEdges(pTrg, pSrc, vFound);
    if (vFound.size() != 1) return fail(bVerbose, "Err3: Not a border-edge of the input mesh", segment);
    vEdges.push_back(vFound.front());
    return true;
}

bool isFinite(const Vector2& v)
{
    return std::isfinite(v.x()) && std::isfinite(v.y()) && std::isfinite(v.z());
}

/// The direction across a segment in the surface, to the left seen with the normal up; null if the normal is along it.
Vector2 leftOf(const Segment2& segment, const Vector2& normal)
{
    constexpr double along = 1e-6; // sine of the angle between them
    const Vector2 left = crossProduct(normalize(normal), normalize(segment.trg - segment.src));
    return left.length() > along ? normalize(left) : Vector2();
}

/// Appends the pairs that are fit for use.
bool checkPairs(const std::vector<SegmentAndNormal>& vPairs, bool bVerbose, std::vector<SegmentAndNormal>& vGood)
{
    for (const SegmentAndNormal& pair : vPairs) {
        const Segment2& segment = pair.first;
        if (pair.second.isDegenerate()) {
            return fail(bVerbose, "Degenerate normal vector provided, returning false");
        }
        if (segment.src.samePoint(segment.trg)) {
            if (bVerbose) msgWarning("fillHole()", "degenerate segment skipped");
            continue;
        }
        const bool bFinite = isFinite25D(segment) && isFinite(pair.second);
        if (!bFinite || leftOf(segment, pair.second).isDegenerate()) {
            return fail(bVerbose, "Err2: Bad segment/vector pair", segment);
        }
        vGood.push_back(pair);
    }
    return true;
}

/// Whether the normals see the ring of the segments counterclockwise: the missing surface is on the right then. By the
/// ring's area vector, which doesn't depend on the order of the segments.
bool isHoleOnTheLeft(const std::vector<SegmentAndNormal>& vPairs)
{
    Vector2 area, normals;
    double length = 0.0;
    for (const auto& [segment, normal] : vPairs) {
        // Relative to one point: survey coordinates would lose the digits that matter.
        const Vector2 edge = segment.trg - segment.src;
        area = area + crossProduct(segment.src - vPairs.front().first.src, edge) * 0.5;
        normals = normals + normalize(normal) * edge.length();
        length += edge.length();
    }
    constexpr double undecided = 1e-3;
    return area * normals > undecided * area.length() * length;
}

/// A triangle of the missing surface, with the segment opposite its corner 2. NULL for numbers out of range.
Triangle2* createDummy(Mesh3& mesh, const Segment2& segment, const Vector2& normal)
{
    const double length = (segment.trg - segment.src).length();
    const Point2 apex = centerWithShift(segment.src, segment.trg) + length * leftOf(segment, normal);
    Point2* const pApex = mesh.createVertex(apex, true);
    if (pApex == nullptr) return nullptr;
    return mesh.createTriangle(mesh.getVertex(segment.src), mesh.getVertex(segment.trg), pApex);
}

} // namespace

bool fillHole(Mesh3* pMesh, std::vector<Edge2>& vPolygonEdges, bool bAddPoints, bool bVerbose,
              std::vector<Point2>& vCorners)
{
    return withoutExceptions([&] {
        HoleFiller filler(pMesh, bAddPoints, bVerbose, vPolygonEdges);
        const bool bResult = filler.fill();
        filler.getNewTriangles(vCorners);
        return bResult;
    });
}

bool fillHole(const std::vector<Point2>& vMeshCorners, const std::vector<Segment2>& vPolygonSegments, bool bAddPoints,
              bool bVerbose, std::vector<Point2>& vCorners)
{
    return withoutExceptions([&] {
        Mesh3 mesh(vMeshCorners);
        std::vector<Edge2> vEdges;
        for (const Segment2& segment : vPolygonSegments) {
            if (!findBorderEdge(mesh, segment, bVerbose, vEdges)) return false;
        }
        return isRing(vEdges, bVerbose) && fillHole(&mesh, vEdges, bAddPoints, bVerbose, vCorners);
    });
}

bool fillHole(const std::vector<SegmentAndNormal>& vSegmentsAndNormals, bool bAddPoints, bool bVerbose,
              std::vector<Point2>& vCorners)
{
    return withoutExceptions([&] {
        std::vector<SegmentAndNormal> vPairs;
        if (!checkPairs(vSegmentsAndNormals, bVerbose, vPairs)) return false;
        const bool bReverse = !vPairs.empty() && isHoleOnTheLeft(vPairs);
        Mesh3 mesh;
        // The ring's vertices first, so that none is welded with the apex of a dummy triangle.
        for (auto& [segment, normal] : vPairs) {
            if (bReverse) segment.swapSrcTrg();
            mesh.createVertex(segment.src, false);
            mesh.createVertex(segment.trg, false);
        }
        std::vector<Edge2> vEdges;
        for (const auto& [segment, normal] : vPairs) {
            Triangle2* const pT = createDummy(mesh, segment, normal);
            if (pT == nullptr) return fail(bVerbose, "Err2: Bad segment/vector pair", segment);
            vEdges.emplace_back(pT, 2);
        }
        return isRing(vEdges, bVerbose) && fillHole(&mesh, vEdges, bAddPoints, bVerbose, vCorners);
    });
}

} // namespace ORBI_LUMO25D
