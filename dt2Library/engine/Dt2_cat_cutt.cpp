// Knife cuts, segments laid on the surface, triangles that come from outside, and saved states.

#include "engine/Dt2.h"

#include "constraints/ConstraintMgr.h"
#include "engine/Draper.h"
#include "engine/KnifeCutter.h"
#include "engine/TriangleImporter.h"
#include "engine/TriangulationLoader.h"
#include "engine/TriangulationSaver.h"
#include "geometry/RoundToNearest.h"
#include "geometry/finite.h"
#include "output/triangulationFile.h"
#include "support/messages.h"

#include "Segment2.h"
#include "VertexPair2.h"

#include <algorithm>
#include <functional>
#include <set>

namespace ORBI_LUMO25D
{

namespace
{

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

// ---- save and load --------------------------------------------------------------------------------------------------

namespace
{

/// Whether each is one of these zones, or null. What isn't is not read.
bool areKnown(const std::vector<Zone2*>& vZones, const std::vector<std::unique_ptr<Zone2>>& vOwn)
{
    std::vector<Zone2*> vSorted{nullptr};
    for (const std::unique_ptr<Zone2>& pZone : vOwn) {
        vSorted.push_back(pZone.get());
    }
    std::sort(vSorted.begin(), vSorted.end(), std::less<Zone2*>());
    return std::all_of(vZones.begin(), vZones.end(), [&vSorted](Zone2* pZone) {
        return std::binary_search(vSorted.begin(), vSorted.end(), pZone, std::less<Zone2*>());
    });
}

bool failLoading(const std::string& filename, const std::string& reason)
{
    if (!reason.empty()) printLine(filename + ": " + reason);
    msgWarning("Dt2::load()", "failed, wrong file format?");
    return false;
}

} // namespace

bool Dt2::saveInternal(const char* filename, const std::vector<Zone2*>& vSaveZones, bool bZonesOnly)
{
    const char* const function = "Dt2::saveInternal()";
    if (!areKnown(vSaveZones, vZones)) {
        msgWarning(function, "A zone does not belong to the triangulation, nothing is saved");
        return false;
    }
    const RoundToNearest rounding;
    TriangulationSaver saver(*this, vSaveZones);
    bool bOK = saver.collectAll();
    if (bOK && saver.numLeftOut() > 0) {
        applyConstraintsAndZones();
        bOK = saver.collectAll();
    }
    const std::size_t numLeftOut = saver.numLeftOut();
    if (!bOK || !saver.addZones(bZonesOnly)) {
        msgError(function, saver.getError() + ", nothing is saved");
        return false;
    }
    if (numLeftOut > 0) {
        msgWarning(function, std::to_string(numLeftOut) +
                                 " constraint segment(s) can't be made edges of the triangulation and are left out");
    }
    return saver.write(filename);
}

bool Dt2::load(const char* filename, std::vector<Zone2*>& vZones_)
{
    if (vertexVault.numActive() > 0) {
        msgWarning("Dt2::load()", "function can only be called on an empty triangulation");
        return false;
    }
    TriangulationReader reader(filename);
    if (!reader.isOpen()) {
        printLine(reader.getName() + " can't be read");
        return false;
    }
    if (!reader.readType()) {
        msgWarning("Dt2::load()", "wrong filetype, expected 32 or 22");
        return false;
    }
    progress.start("load", 3);
    const RoundToNearest rounding;
    TriangulationLoader loader(*this);
    if (!loader.readMesh(reader)) return failLoading(reader.getName(), loader.getError());
    progress.step(1);
    if (!loader.readConstraints(reader)) return failLoading(reader.getName(), loader.getError());
    progress.step(1);
    {
        // A subscriber may throw: none is called while there is but a part of the triangulation.
        const Progress::Muted muted(progress);
        std::vector<Zone2*> vLoaded;
        loader.build(vLoaded);
        vZones_.insert(vZones_.end(), vLoaded.begin(), vLoaded.end());
    }
    progress.finish();
    return true;
}

bool Dt2::takeMesh(const std::vector<Point2>& vPoints, const std::vector<std::int32_t>& vCorners)
{
    LUMO_CHECK(vertexVault.numActive() == 0, "vertexVault.numActive()==0");
    const RoundToNearest rounding;
    TriangulationLoader loader(*this);
    if (!loader.takeMesh(vPoints, vCorners)) return false;
    std::vector<Zone2*> vNone;
    loader.build(vNone);
    return true;
}

} // namespace ORBI_LUMO25D
