#include "core/ChunkRegion.h"

#include "core/CircleBound.h"
#include "engine/Dt2.h"

#include <cstdint>
#include <vector>

namespace ORBI_LUMO25D
{

namespace
{

/// More coarse triangles than this at one box are not worth the looking: the chunk runs alone.
constexpr std::size_t maxTrianglesAtBox = 500;
/// In fast mode, the part of its radius by which a disk grows.
constexpr double fastModeMargin = 0.05;

/// A set of triangles with a flag each: a table of addresses, searched from a place that the address gives.
class TriangleFlags
{
public:
    TriangleFlags() : vTable(256) {}

    /// The flag of a triangle. bNew tells that it has come in just now.
    bool& flagOf(const Triangle2* pT, bool& bNew)
    {
        if (2 * numUsed >= vTable.size()) grow();
        Entry& entry = find(pT);
        bNew = entry.pT == nullptr;
        numUsed += bNew ? 1U : 0U;
        entry.pT = pT;
        return entry.bFlag;
    }

private:
    struct Entry
    {
        const Triangle2* pT = nullptr;
        bool bFlag = false;
    };
    Entry& find(const Triangle2* pT)
    {
        const auto hash =
            static_cast<std::size_t>(reinterpret_cast<std::uintptr_t>(pT) / 16 * 0x9E3779B97F4A7C15U >> 20U);
        std::size_t i = hash & (vTable.size() - 1);
        while (vTable[i].pT != nullptr && vTable[i].pT != pT) {
            i = (i + 1) & (vTable.size() - 1);
        }
        return vTable[i];
    }
    void grow()
    {
        std::vector<Entry> vOld(2 * vTable.size());
        vOld.swap(vTable);
        for (const Entry& entry : vOld) {
            if (entry.pT != nullptr) find(entry.pT) = entry;
        }
    }

    std::vector<Entry> vTable;
    std::size_t numUsed = 0;
};

} // namespace

/// A disk that meets the box, but not its border, lies in the box; so it is enough to look along the border. The coarse
/// triangles whose disks meet it are connected: those in conflict with one point are, and they change one by one as the
/// point moves along the border.
void ChunkRegion::determine(const Dt2& dt2, const Bbox2& inputBox, const Bbox2& box, Triangle2* pStartT)
{
    const double margin = dt2.bFastMode ? fastModeMargin : 0.0;
    extBox = box;
    TriangleFlags trusted;
    std::vector<const Triangle2*> vAtBox;
    // Adds the disk of a triangle to the region, once; whether it can be trusted.
    const auto look = [&](const Triangle2* pT) {
        bool bNew = false;
        bool& bTrusted = trusted.flagOf(pT, bNew);
        if (!bNew) return bTrusted;
        const CircleBound disk(*pT, margin);
        bTrusted = disk.isTrusted();
        if (bTrusted) {
            add(dt2, inputBox, disk);
        } else {
            ++numBad1;
        }
        if (!bTrusted || disk.meetsBorder(box)) vAtBox.push_back(pT);
        return bTrusted;
    };
    int edge = -1;
    dt2.locateConflictTriangle(box.getMinPoint(), &pStartT, &edge);
    look(pStartT);
    for (std::size_t k = 0; k < vAtBox.size() && k < maxTrianglesAtBox; ++k) {
        for (int i = 0; i < 3; ++i) {
            const Triangle2* const pN = vAtBox[k]->neighbor(i);
            if (pN != nullptr && !look(pN)) ++numBad2;
        }
    }
    bWholePlane = numBad1 > 0 || vAtBox.size() > maxTrianglesAtBox;
}

void ChunkRegion::add(const Dt2& dt2, const Bbox2& inputBox, const CircleBound& disk)
{
    disk.addTo(extBox, inputBox);
    for (unsigned i = 0; i < 4; ++i) {
        if (disk.contains(*dt2.vertexVault.getFakeBoxCorner(i))) cornerMask |= 1U << i;
    }
}

} // namespace ORBI_LUMO25D
