#include "engine/GapFiller.h"

#include "constraints/ConstraintMgr.h"
#include "engine/ConstraintInserter.h"
#include "engine/Dt2.h"

#include <algorithm>

namespace ORBI_LUMO25D
{

using L = TriangleLinks;

bool GapFiller::run(std::vector<std::int32_t>& vTriangles)
{
    Dt2 scratch(vVertices.size());
    if (!insertVertices(scratch) || !insertBorder(scratch)) return false;
    std::vector<Triangle2*> vT;
    scratch.getTrianglePointers(vT);
    label(scratch, vT);
    if (!isConsistent(scratch, vT)) return false;
    for (const Triangle2* pT : vT) {
        if (vLabels[scratch.poolTriangles.indexOf(pT)] != Gap) continue;
        for (int i = 0; i < 3; ++i) {
            vTriangles.push_back(numberOf(scratch, pT->corner(i)));
        }
    }
    return true;
}

/// False when two are at one place.
bool GapFiller::insertVertices(Dt2& scratch)
{
    scratch.insertVector(vVertices, &vHandles);
    if (scratch.vertexVault.numActive() != vVertices.size()) return false;
    vNumbers.assign(scratch.poolVertices.size(), -1);
    for (std::size_t i = 0; i < vHandles.size(); ++i) {
        vNumbers[scratch.poolVertices.indexOf(vHandles[i])] = static_cast<std::int32_t>(i);
    }
    return true;
}

/// False when a border edge meets another one or a vertex on its way. Ends at the first: crossings could be many.
bool GapFiller::insertBorder(Dt2& scratch) const
{
    scratch.pConstraintInserter->setExact();
    std::vector<ConstraintMgr::VertexPair> vPairs;
    for (std::size_t i = 0; i < border.size(); ++i) {
        vPairs.emplace_back(vHandles[static_cast<std::size_t>(border.src(i))],
                            vHandles[static_cast<std::size_t>(border.trg(i))]);
    }
    ConstraintMgr& manager = scratch.getConstraintMgr();
    manager.createConstraint(vPairs, CIS_CONSTRAINED_DELAUNAY, false);
    std::vector<ConstraintSegment2*> vCSegs;
    manager.getAllSegments(vCSegs);
    scratch.beginEstablishing();
    const auto stands = [&](ConstraintSegment2* pCSeg) {
        return pCSeg->isAlive() && manager.applyOne(pCSeg) && pCSeg->isAlive();
    };
    const bool bOK = std::all_of(vCSegs.begin(), vCSegs.end(), stands);
    scratch.endEstablishing();
    // Who crosses an earlier one splits both.
    return bOK && scratch.vertexVault.numActive() == vVertices.size();
}

std::int32_t GapFiller::numberOf(const Dt2& scratch, const Point2* pVtx) const
{
    return vNumbers[scratch.poolVertices.indexOf(pVtx)];
}

GapFiller::Side GapFiller::sideOf(const Dt2& scratch, const Triangle2* pT, int ith) const
{
    const std::int32_t src = numberOf(scratch, pT->corner(L::next(ith)));
    const std::int32_t trg = numberOf(scratch, pT->corner(L::prev(ith)));
    return {border.find(src, trg) != EdgeKeys::none, border.find(trg, src) != EdgeKeys::none};
}

void GapFiller::label(const Dt2& scratch, const std::vector<Triangle2*>& vT)
{
    vLabels.assign(scratch.poolTriangles.size(), Unknown);
    std::vector<const Triangle2*> vWork;
    const auto reach = [&](const Triangle2* pT, Label value) {
        Label& mark = vLabels[scratch.poolTriangles.indexOf(pT)];
        if (mark != Unknown) return;
        mark = value;
        vWork.push_back(pT);
    };
    for (const Triangle2* pT : vT) {
        for (int i = 0; i < 3; ++i) {
            const Side side = sideOf(scratch, pT, i);
            if (side.bLeft || side.bRight) reach(pT, side.bLeft ? Covered : Gap);
        }
    }
    while (!vWork.empty()) {
        const Triangle2* const pT = vWork.back();
        vWork.pop_back();
        for (int i = 0; i < 3; ++i) {
            const Side side = sideOf(scratch, pT, i);
            if (pT->neighbor(i) == nullptr || side.bLeft || side.bRight) continue;
            reach(pT->neighbor(i), vLabels[scratch.poolTriangles.indexOf(pT)]);
        }
    }
}

bool GapFiller::isConsistent(const Dt2& scratch, const std::vector<Triangle2*>& vT) const
{
    std::size_t numLeft = 0;
    for (const Triangle2* pT : vT) {
        const Label here = vLabels[scratch.poolTriangles.indexOf(pT)];
        for (int i = 0; i < 3; ++i) {
            const Side side = sideOf(scratch, pT, i);
            const Triangle2* const pN = pT->neighbor(i);
            const Label beyond = pN == nullptr ? Gap : vLabels[scratch.poolTriangles.indexOf(pN)];
            const bool bOK = side.bLeft    ? here == Covered && beyond == Gap
                             : side.bRight ? here == Gap && beyond == Covered
                                           : here == beyond;
            if (!bOK) return false;
            numLeft += side.bLeft ? 1U : 0U;
        }
    }
    return numLeft == border.size();
}

} // namespace ORBI_LUMO25D
