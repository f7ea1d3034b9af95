#include "engine/SideLinker.h"

#include "geometry/TriangleLinks.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <numeric>

namespace ORBI_LUMO25D
{

using L = TriangleLinks;

namespace
{

constexpr unsigned tableBits = 12; // in the nearest cache but one, and leaves room for the triangles

/// Either of them, without a branch.
inline std::uint64_t choose(bool bFirst, std::uint64_t first, std::uint64_t second)
{
    return second ^ ((first ^ second) & (0 - static_cast<std::uint64_t>(bFirst)));
}

} // namespace

SideLinker::SideLinker(Triangle2* aTriangles_) : aTriangles(aTriangles_), vTable(std::size_t(1) << tableBits) {}

SideLinker::Side SideLinker::sideOf(std::size_t t, int i, Index src, Index trg)
{
    const bool bReversed = src > trg;
    const auto s = static_cast<std::uint64_t>(src);
    const auto r = static_cast<std::uint64_t>(trg);
    return {choose(bReversed, r, s) << 32 | choose(bReversed, s, r) << 1 | static_cast<std::uint64_t>(bReversed),
            std::uint64_t(t) << 2 | static_cast<std::uint64_t>(i)};
}

void SideLinker::add(const Index* aCorners, std::size_t n)
{
    constexpr std::size_t most = 256;
    std::array<Side, 3 * most> aAside;
    for (std::size_t begin = 0; begin < n; begin += most) {
        Side* pAside = aAside.data();
        const std::size_t end = std::min(begin + most, n);
        for (std::size_t t = begin; t < end; ++t, ++numAdded) {
            const Index* const c = aCorners + 3 * t;
            pAside = link(sideOf(numAdded, 0, c[1], c[2]), pAside);
            pAside = link(sideOf(numAdded, 1, c[2], c[0]), pAside);
            pAside = link(sideOf(numAdded, 2, c[0], c[1]), pAside);
        }
        vAside.insert(vAside.end(), aAside.data(), pAside);
    }
}

/// Links the side with its partner or, if that doesn't wait in its place, for the time being with itself, and waits there.
/// Returns the end of those that were put aside.
inline SideLinker::Side* SideLinker::link(Side side, Side* pAside)
{
    Side& slot = vTable[static_cast<std::size_t>((side.edge >> 1) * 0x9E3779B97F4A7C15U >> (64 - tableBits))];
    const Side other = slot;
    const bool bPair = (side.edge ^ other.edge) == 1;
    linkPair(side, {0, choose(bPair, other.place, side.place)});
    slot = {choose(bPair, 0, side.edge), side.place};
    *pAside = other;
    return pAside + static_cast<std::ptrdiff_t>(!bPair && other.edge != 0);
}

inline void SideLinker::linkPair(const Side& a, const Side& b)
{
    L::setNeighbor(aTriangles + a.triangle(), a.index(), aTriangles + b.triangle());
    L::setNeighbor(aTriangles + b.triangle(), b.index(), aTriangles + a.triangle());
}

bool SideLinker::close(std::size_t numVertices, std::vector<Edge>& vBorder)
{
    std::copy_if(vTable.begin(), vTable.end(), std::back_inserter(vAside), [](const Side& s) { return s.edge != 0; });
    vTable = {};
    sortAside(numVertices);
    for (std::size_t i = 0; i < vAside.size();) {
        const Side& a = vAside[i];
        std::size_t end = i + 1;
        while (end < vAside.size() && vAside[end].edge >> 1 == a.edge >> 1) {
            ++end;
        }
        if (end - i == 1) {
            L::setNeighbor(aTriangles + a.triangle(), a.index(), nullptr);
            vBorder.push_back(a.ends());
        } else if (end - i == 2 && a.edge != vAside[i + 1].edge) {
            linkPair(a, vAside[i + 1]);
        } else {
            return false;
        }
        i = end;
    }
    return true;
}

/// Each goes to the stretch of its lower vertex, and the stretches, which are short for most, are sorted.
void SideLinker::sortAside(std::size_t numVertices)
{
    std::vector<std::size_t> vNext(numVertices + 1,
                                   0); // where the next side of each vertex goes; in the end, their ends
    for (const Side& side : vAside) {
        ++vNext[side.lower() + 1];
    }
    std::partial_sum(vNext.begin(), vNext.end(), vNext.begin());
    std::vector<Side> vSorted(vAside.size());
    for (const Side& side : vAside) {
        vSorted[vNext[side.lower()]++] = side;
    }
    vAside.swap(vSorted);
    auto it = vAside.begin();
    for (std::size_t v = 0; v < numVertices; ++v) {
        const auto itEnd = vAside.begin() + static_cast<std::ptrdiff_t>(vNext[v]);
        std::sort(it, itEnd);
        it = itEnd;
    }
}

} // namespace ORBI_LUMO25D
