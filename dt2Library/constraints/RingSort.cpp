#include "constraints/RingSort.h"

#include "freeFunctions.h"

#include <cstdint>

namespace ORBI_LUMO25D
{

bool RingSort::run(std::vector<ConstraintSegment2*>& vRing, std::vector<bool>& vReverse)
{
    vRing.clear();
    vReverse.clear();
    if (vSegments.size() < 3) return false;
    const Point2* const pStart = startVertex();
    std::size_t position = firstSegment(pStart);
    if (position == none || !makeJoints()) return false;

    const Point2* pConnector = pStart;
    do {
        ConstraintSegment2* const pCSeg = vSegments[position];
        vRing.push_back(pCSeg);
        vReverse.push_back(pCSeg->getTrg() == pConnector);
        pConnector = otherEnd(pCSeg, pConnector);
        position = nextSegment(position, pConnector);
    } while (pConnector != pStart);
    if (vRing.size() == vSegments.size()) return true;
    vRing.clear();
    vReverse.clear();
    return false;
}

/// The other segment at a vertex: mostly the one before or behind in the input, without a look into the table.
std::size_t RingSort::nextSegment(std::size_t position, const Point2* pConnector)
{
    const std::size_t n = vSegments.size();
    const std::size_t behind = position + 1 == n ? 0 : position + 1;
    if (hasEnd(vSegments[behind], pConnector)) return behind;
    const std::size_t before = position == 0 ? n - 1 : position - 1;
    if (hasEnd(vSegments[before], pConnector)) return before;
    const Joint& joint = jointAt(pConnector);
    return joint.aPositions[joint.aPositions[0] == position ? 1 : 0];
}

bool RingSort::hasEnd(const ConstraintSegment2* pCSeg, const Point2* pVtx)
{
    return pCSeg->getSrc() == pVtx || pCSeg->getTrg() == pVtx;
}

const Point2* RingSort::startVertex() const
{
    const Point2* pStart = vSegments.front()->getSrc();
    for (const ConstraintSegment2* pCSeg : vSegments) {
        for (const Point2* p : {pCSeg->getSrc(), pCSeg->getTrg()}) {
            if (*p < *pStart) pStart = p;
        }
    }
    return pStart;
}

const Point2* RingSort::otherEnd(const ConstraintSegment2* pCSeg, const Point2* pVtx)
{
    return pCSeg->getSrc() == pVtx ? pCSeg->getTrg() : pCSeg->getSrc();
}

/// Of the two segments at the start vertex, which is on the hull, the one that has the other on its left. Most sequences
/// that are no ring fail here, before anything is built.
std::size_t RingSort::firstSegment(const Point2* pStart) const
{
    std::size_t aIncident[2] = {none, none};
    for (std::size_t i = 0; i < vSegments.size(); ++i) {
        if (!hasEnd(vSegments[i], pStart)) continue;
        if (aIncident[1] != none) return none;
        aIncident[aIncident[0] == none ? 0 : 1] = i;
    }
    if (aIncident[1] == none) return none;
    switch (getOrientation2_mt(pStart, otherEnd(vSegments[aIncident[0]], pStart),
                               otherEnd(vSegments[aIncident[1]], pStart))) {
    case ORIENTATION2_CCW:
        return aIncident[0];
    case ORIENTATION2_CW:
        return aIncident[1];
    default:
        return none;
    }
}

bool RingSort::makeJoints()
{
    std::size_t numSlots = 16;
    while (numSlots < 2 * vSegments.size()) {
        numSlots *= 2;
    }
    vJoints.assign(numSlots, Joint());
    std::size_t numVertices = 0;
    for (std::size_t i = 0; i < vSegments.size(); ++i) {
        for (const Point2* p : {vSegments[i]->getSrc(), vSegments[i]->getTrg()}) {
            Joint& joint = jointAt(p);
            if (joint.pVtx == nullptr && ++numVertices > vSegments.size()) return false;
            joint.pVtx = p;
            if (joint.aPositions[1] != none) return false;
            joint.aPositions[joint.aPositions[0] == none ? 0 : 1] = i;
        }
    }
    // n segments have 2n ends: when no vertex has more than two and there are n vertices, each has two.
    return numVertices == vSegments.size();
}

/// The vertex' slot, or the free one that it belongs in.
RingSort::Joint& RingSort::jointAt(const Point2* pVtx)
{
    const std::size_t mask = vJoints.size() - 1;
    const auto key = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(pVtx));
    std::size_t slot = static_cast<std::size_t>((key * 0x9E3779B97F4A7C15U) >> 20) & mask;
    while (vJoints[slot].pVtx != nullptr && vJoints[slot].pVtx != pVtx) {
        slot = (slot + 1) & mask;
    }
    return vJoints[slot];
}

} // namespace ORBI_LUMO25D
