#include "meshing/CandidateQueue.h"

#include "support/check.h"

#include <cstring>

namespace ORBI_LUMO25D
{

namespace
{

std::uint64_t bitOf(std::size_t i)
{
    return std::uint64_t(1) << (i % 64);
}

} // namespace

CandidateQueue::CandidateQueue() : vFirst(numBuckets, none) {}

std::size_t CandidateQueue::bucketOf(double sqSine)
{
    // The bits of positive floats are in the order of their values. What is no number has no angle: it comes first.
    const float f = sqSine > 0.0 ? static_cast<float>(sqSine) : 0.0F;
    std::uint32_t bits = 0;
    std::memcpy(&bits, &f, sizeof(bits));
    return bits >> 16U < numBuckets ? bits >> 16U : numBuckets - 1;
}

void CandidateQueue::push(double sqSine, Triangle2* pT)
{
    const std::size_t bucket = bucketOf(sqSine);
    std::uint32_t node = firstFree;
    if (node == none) {
        LUMO_CHECK(vNodes.size() < none, "vNodes.size()<none");
        node = static_cast<std::uint32_t>(vNodes.size());
        vNodes.emplace_back();
    } else {
        firstFree = vNodes[node].next;
    }
    vNodes[node] = {{pT, {pT->corner(0), pT->corner(1), pT->corner(2)}}, vFirst[bucket]};
    vFirst[bucket] = node;
    aFilled[bucket / 64] |= bitOf(bucket);
    aFilledWords[bucket / 64 / 64] |= bitOf(bucket / 64);
    ++numEntries;
}

bool CandidateQueue::pop(Entry& entry)
{
    if (numEntries == 0) return false;
    std::size_t group = 0;
    while (aFilledWords[group] == 0) {
        ++group;
    }
    const std::size_t word = group * 64 + static_cast<std::size_t>(__builtin_ctzll(aFilledWords[group]));
    const std::size_t bucket = word * 64 + static_cast<std::size_t>(__builtin_ctzll(aFilled[word]));
    const std::uint32_t node = vFirst[bucket];
    entry = vNodes[node].entry;
    vFirst[bucket] = vNodes[node].next;
    if (vFirst[bucket] == none) {
        aFilled[word] &= ~bitOf(bucket);
        if (aFilled[word] == 0) aFilledWords[group] &= ~bitOf(word);
    }
    vNodes[node].next = firstFree;
    firstFree = node;
    --numEntries;
    return true;
}

} // namespace ORBI_LUMO25D
