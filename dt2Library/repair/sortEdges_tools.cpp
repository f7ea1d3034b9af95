#include "repair/sortEdges_tools.h"

#include <cstddef>
#include <unordered_map>

namespace ORBI_LUMO25D
{

namespace
{

struct Degrees
{
    std::size_t numOut = 0;
    std::size_t numIn = 0;
    std::size_t outgoing = 0; ///< position of the last edge that begins here
};

} // namespace

RingState sortEdgesToRing(std::vector<Edge2>& vEdges)
{
    if (vEdges.size() < 3) return RingState::NotClosed;
    std::unordered_map<const Point2*, Degrees> mVertexToDegrees;
    for (std::size_t i = 0; i < vEdges.size(); ++i) {
        Degrees& src = mVertexToDegrees[vEdges[i].getSrc()];
        ++src.numOut;
        src.outgoing = i;
        ++mVertexToDegrees[vEdges[i].getTrg()].numIn;
    }
    bool bSimple = true;
    for (const auto& entry : mVertexToDegrees) {
        if (entry.second.numIn != entry.second.numOut) return RingState::NotClosed;
        bSimple = bSimple && entry.second.numOut == 1;
    }
    if (!bSimple) return RingState::NotSimple;

    std::vector<Edge2> vRing;
    std::size_t i = 0;
    do {
        vRing.push_back(vEdges[i]);
        i = mVertexToDegrees[vEdges[i].getTrg()].outgoing;
    } while (i != 0);
    if (vRing.size() != vEdges.size()) return RingState::NotSimple;
    vEdges.swap(vRing);
    return RingState::Ring;
}

} // namespace ORBI_LUMO25D
