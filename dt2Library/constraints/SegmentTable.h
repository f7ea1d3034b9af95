#ifndef LUMO25D_CONSTRAINTS_SEGMENTTABLE_H
#define LUMO25D_CONSTRAINTS_SEGMENTTABLE_H

#include "orbi_tools/BlockMemory.h"

#include "ConstraintSegment2.h"

#include <cstddef>
#include <cstdint>

namespace ORBI_LUMO25D
{

/// Finds the segment between two vertices: an open hash table, from which nothing is ever taken out.
///
/// The line of slots that is tried first follows from the address of the second end alone. Vertices that are near each
/// other in the pool are often near in the plane, too, and most have few segments: so the segments of a neighbourhood lie
/// together, and an area that is being worked on stays in the cache. What finds its line full goes to others at random;
/// a line remembers that, so that most questions for a segment that doesn't exist end at the first line.
class SegmentTable
{
public:
    struct Slot
    {
        ConstraintSegment2* pCSeg; ///< null in a free slot
        std::uint64_t hash;
    };

    /// The segment, or null. The ends are ordered by address.
    ConstraintSegment2* find(const Point2* p0, const Point2* p1) const
    {
        if (numSlots == 0) return nullptr;
        const std::uint64_t hash = hashOf(p0, p1);
        std::uint64_t next = hash;
        for (Slot* pLine = firstLine(p1);; pLine = lineAt(next = mixed(next + 1))) {
            for (Slot* p = pLine; p != pLine + lineLength; ++p) {
                if (p->pCSeg == nullptr) return nullptr;
                if (isThis(*p, hash, p0, p1)) return p->pCSeg;
            }
            if (!hasOverflowed(pLine)) return nullptr;
        }
    }
    /// Asks for the memory in which segments that end at a vertex are likely to be.
    void prefetch(const Point2* pVtx) const
    {
        if (numSlots != 0) __builtin_prefetch(firstLine(pVtx), 1);
    }
    /// True when there must be room for n more segments first.
    bool isFull(std::size_t n) const { return numTaken + n > numSlots / 8 * 5; }
    /// Makes room for them. forEachSegment(f) calls f for all segments that are in the table.
    template <class ForEachSegment>
    void grow(std::size_t n, const ForEachSegment& forEachSegment)
    {
        std::size_t numWanted = 64;
        while (numTaken + n > numWanted / 8 * 5) {
            numWanted *= 2;
        }
        makeEmpty(numWanted);
        forEachSegment([this](ConstraintSegment2* pCSeg) { add(pCSeg); });
    }
    /// Enters a segment that isn't in the table, which isn't full.
    void add(ConstraintSegment2* pCSeg)
    {
        const std::uint64_t hash = hashOf(pCSeg->getSrc(), pCSeg->getTrg());
        std::uint64_t next = hash;
        for (Slot* pLine = firstLine(pCSeg->getTrg());; pLine = lineAt(next = mixed(next + 1))) {
            for (Slot* p = pLine; p != pLine + lineLength; ++p) {
                if (p->pCSeg != nullptr) continue;
                *p = {pCSeg, hash};
                ++numTaken;
                return;
            }
            pLine[lineLength - 1].hash |= overflowBit;
        }
    }
    std::size_t bytes() const { return numSlots * sizeof(Slot); }

private:
    static constexpr std::size_t lineLength = 4; ///< a line of the cache
    /// In the last slot of a line: something that belongs there had to go elsewhere.
    static constexpr std::uint64_t overflowBit = std::uint64_t(1) << 63;

    static std::uint64_t mixed(std::uint64_t h)
    {
        h *= 0x9E3779B97F4A7C15U;
        return h ^ (h >> 32);
    }
    static std::uint64_t address(const Point2* p)
    {
        return static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(p));
    }
    static std::uint64_t hashOf(const Point2* p0, const Point2* p1)
    {
        return mixed(mixed(address(p0)) + address(p1)) & ~overflowBit;
    }

    Slot* lineAt(std::uint64_t number) const
    {
        return pSlots + (static_cast<std::size_t>(number) & (numSlots / lineLength - 1)) * lineLength;
    }
    Slot* firstLine(const Point2* p1) const { return lineAt(address(p1) / 32); } // vertices are a little larger
    static bool isThis(const Slot& slot, std::uint64_t hash, const Point2* p0, const Point2* p1)
    {
        return (slot.hash & ~overflowBit) == hash && slot.pCSeg->getSrc() == p0 && slot.pCSeg->getTrg() == p1;
    }
    static bool hasOverflowed(const Slot* pLine) { return (pLine[lineLength - 1].hash & overflowBit) != 0; }
    void makeEmpty(std::size_t numNew);

    BlockMemory memory;
    Slot* pSlots = nullptr;
    std::size_t numSlots = 0; ///< a power of two; at most five of eight are taken
    std::size_t numTaken = 0;
};

} // namespace ORBI_LUMO25D

#endif
