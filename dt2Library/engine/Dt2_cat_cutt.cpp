// Knife cuts, segments laid on the surface, and triangles that come from outside.

#include "engine/Dt2.h"

#include "constraints/ConstraintMgr.h"
#include "engine/Draper.h"
#include "engine/KnifeCutter.h"
#include "engine/TriangleImporter.h"
#include "geometry/RoundToNearest.h"
#include "support/messages.h"

#include "Segment2.h"
#include "VertexPair2.h"

#include <cmath>
#include <set>

namespace ORBI_LUMO25D
{

namespace
{

bool isFinite2D(const Segment2& s)
{
    return std::isfinite(s.src.x()) && std::isfinite(s.src.y()) && std::isfinite(s.trg.x()) && std::isfinite(s.trg.y());
}

/// Sets a flag for its scope.
class FlagSet
{
public:
    explicit FlagSet(bool& bFlag_) : bFlag(bFlag_) { bFlag = true; }
    ~FlagSet() { bFlag = false; }
    FlagSet(const FlagSet&) = delete;
    FlagSet& operator=(const FlagSet&) = delete;

private:
    bool& bFlag;
};

} // namespace

// ---- knife cuts -----------------------------------------------------------------------------------------------------

void Dt2::cutAlong(const std::vector<Segment2>& vSegments, std::vector<std::pair<Point2*, Point2*>>& vPieces)
{
    if (!bFullDimensional) {
        msgWarning("Dt2::CUTT_cutTriangles()", "The triangulation has no area yet, nothing to cut");
        return;
    }
    const RoundToNearest rounding;
    const FlagSet cutMode(bCutMode);
    KnifeCutter cutter(*this);
    std::size_t numWithout = 0;
    std::size_t numRefused = 0;
    progress.start("cutTriangles", vSegments.size());
    for (const Segment2& segment : vSegments) {
        if (!isFinite2D(segment)) {
            ++numRefused;
        } else if (!cutter.cut(segment)) {
            ++numWithout;
        }
        progress.step(1);
    }
    progress.finish();
    if (numRefused > 0) {
        msgError("Dt2::CUTT_cutTriangles()",
                 std::to_string(numRefused) + " segment(s) refused: a coordinate is not a finite number");
    }
    if (numWithout > 0) {
        msgWarning("Dt2::CUTT_cutTriangles()",
                   std::to_string(numWithout) + " segment(s) without effect: no length, or outside of the hull");
    }
    vPieces.insert(vPieces.end(), cutter.getPieces().begin(), cutter.getPieces().end());
}

void Dt2::CUTT_cutTriangles(const std::vector<Segment2>& vSegments, bool bProtectEdges,
                            std::vector<ConstraintSegment2*>& vCSegs)
{
    std::vector<std::pair<Point2*, Point2*>> vPieces;
    cutAlong(vSegments, vPieces);
    if (vPieces.empty()) return;
    const RoundToNearest rounding;
    pConstraintMgr->createConstraint(vPieces, CIS_CONSTRAINED_DELAUNAY, false);
    for (const auto& [pA, pB] : vPieces) {
        ConstraintSegment2* const pCSeg = pConstraintMgr->getCSeg(pA, pB);
        if (pCSeg != nullptr) vCSegs.push_back(pCSeg);
    }
    if (bProtectEdges) protectStars(vPieces);
}

/// Makes constraints of all edges of the triangles around the ends of some edges.
void Dt2::protectStars(const std::vector<std::pair<Point2*, Point2*>>& vEdges)
{
    std::vector<Triangle2*> vT;
    for (const auto& [pA, pB] : vEdges) {
        getIncidentTriangles(pA, vT);
        getIncidentTriangles(pB, vT);
    }
    std::vector<std::pair<Point2*, Point2*>> vProtected;
    std::set<VertexPair2> sSeen;
    for (const Triangle2* pT : vT) {
        for (int i = 0; i < 3; ++i) {
            Point2* const p = pT->corner(incIndexBy1(i));
            Point2* const q = pT->corner(incIndexBy2(i));
            if (!isConstraint(p, q) && sSeen.insert(VertexPair2(p, q)).second) vProtected.emplace_back(p, q);
        }
    }
    pConstraintMgr->createConstraint(vProtected, CIS_CONSTRAINED_DELAUNAY, false);
}

// ---- draping --------------------------------------------------------------------------------------------------------

bool Dt2::drape(const std::vector<Segment2>& vSegmentsIn, std::vector<Segment2>& vSegmentsOut, double zTolerance)
{
    if (!bFullDimensional) {
        msgWarning("Dt2::drape()", "The triangulation has no area yet");
        return false;
    }
    if (std::isnan(zTolerance)) {
        msgWarning("Dt2::drape()", "the tolerance is not a number");
        return false;
    }
    const RoundToNearest rounding;
    Draper draper(*this, zTolerance);
    std::size_t numRefused = 0;
    bool bInside = true;
    for (const Segment2& segment : vSegmentsIn) {
        if (!isFinite2D(segment)) {
            ++numRefused;
        } else if (!draper.drape(segment, vSegmentsOut)) {
            bInside = false;
        }
    }
    if (numRefused == 0) return bInside;
    msgError("Dt2::drape()", std::to_string(numRefused) + " segment(s) refused: a coordinate is not a finite number");
    return false;
}

// ---- import ---------------------------------------------------------------------------------------------------------

bool Dt2::importTriangles(const std::vector<Point2>& vPoints, bool bReorientIfNeeded, bool bCreateExtendedBoundingBox,
                          std::vector<Triangle2*>& vT)
{
    if (vertexVault.numActive() > 0) {
        msgError("Dt2::importTriangles()", "the triangulation must be empty");
        return false;
    }
    const RoundToNearest rounding;
    TriangleImporter importer(vPoints);
    const bool bOK = importer.check(bReorientIfNeeded) && (!bCreateExtendedBoundingBox || importer.addBox()) &&
                     importer.build(*this, vT);
    if (!bOK) msgError("Dt2::importTriangles()", importer.getError());
    return bOK;
}

} // namespace ORBI_LUMO25D
