#ifndef LUMO25D_MESHING_CANDIDATEQUEUE_H
#define LUMO25D_MESHING_CANDIDATEQUEUE_H

#include "Triangle2.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace ORBI_LUMO25D
{

/// The triangles that wait for refinement, those with the smallest angles first.
///
/// A bucket for each squared sine to eight binary digits: the order of angles is kept to less than a hundredth of each. In
/// a bucket, what came last goes first, which is mostly close to where the mesh was changed last, and still in the cache.
/// Constant time; a hint of what is free and what is not, in two levels of bits, finds the next bucket.
class CandidateQueue
{
public:
    /// A triangle and the corners that it had when it was entered.
    struct Entry
    {
        /// False for a triangle that was flipped, split or reused since.
        bool isAlive() const
        {
            return pT->corner(0) == aCorners[0] && pT->corner(1) == aCorners[1] && pT->corner(2) == aCorners[2];
        }
        Triangle2* pT;
        Point2* aCorners[3];
    };

    CandidateQueue();

    /// sqSine: the squared sine of the triangle's smallest angle.
    void push(double sqSine, Triangle2* pT);
    /// False when there is none left.
    bool pop(Entry& entry);

private:
    struct Node
    {
        Entry entry;
        std::uint32_t next;
    };
    static constexpr std::uint32_t none = 0xffffffffU;
    static constexpr std::size_t numBuckets = 0x4000; ///< the upper halves of the floats below 2.0
    static std::size_t bucketOf(double sqSine);

    std::vector<Node> vNodes;
    std::vector<std::uint32_t> vFirst; ///< by bucket
    std::uint64_t aFilled[numBuckets / 64] = {};
    std::uint64_t aFilledWords[numBuckets / 64 / 64] = {};
    std::uint32_t firstFree = none;
    std::size_t numEntries = 0;
};

} // namespace ORBI_LUMO25D

#endif
