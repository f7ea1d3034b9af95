#include "repair/Front.h"

#include "support/check.h"

namespace ORBI_LUMO25D
{

std::size_t Front::addRing(const std::vector<std::size_t>& vVertices)
{
    const std::size_t first = vNodes.size(), n = vVertices.size();
    for (std::size_t i = 0; i < n; ++i) {
        vNodes.push_back({vVertices[i], first + (i + n - 1) % n, first + (i + 1) % n, vRings.size(), true});
    }
    vRings.push_back({first, n});
    return vRings.size() - 1;
}

void Front::remove(std::size_t i)
{
    Node& node = vNodes[i];
    Ring& ring = vRings[node.ring];
    vNodes[node.prev].next = node.next;
    vNodes[node.next].prev = node.prev;
    node.bAlive = false;
    ring.first = node.next;
    --ring.size;
}

std::size_t Front::insertBehind(std::size_t i, std::size_t vertex)
{
    const std::size_t added = vNodes.size(), next = vNodes[i].next, ring = vNodes[i].ring;
    vNodes.push_back({vertex, i, next, ring, true});
    vNodes[i].next = vNodes[next].prev = added;
    ++vRings[ring].size;
    return added;
}

/// Walks both parts at once: as far as the smaller one is long.
bool Front::isForwardPartSmaller(std::size_t a, std::size_t b) const
{
    std::size_t forward = vNodes[a].next, backward = vNodes[a].prev;
    while (forward != b && backward != b) {
        forward = vNodes[forward].next;
        backward = vNodes[backward].prev;
    }
    return forward == b;
}

std::size_t Front::split(std::size_t a, std::size_t b, bool& bSecondIsNew)
{
    LUMO_CHECK(vNodes[a].ring == vNodes[b].ring && vNodes[a].next != b && vNodes[a].prev != b,
               "the nodes can be joined");
    // The smaller part leaves: from its first node forward to its last one.
    bSecondIsNew = !isForwardPartSmaller(a, b);
    const std::size_t first = bSecondIsNew ? b : a, last = bSecondIsNew ? a : b;
    Ring& oldRing = vRings[vNodes[a].ring];
    const std::size_t sizeBefore = oldRing.size;

    // Copies of both stay in the old ring.
    const std::size_t firstLeft = vNodes.size(), lastLeft = firstLeft + 1;
    const Node nodeFirst = vNodes[first], nodeLast = vNodes[last];
    vNodes.push_back({nodeFirst.vertex, nodeFirst.prev, lastLeft, nodeFirst.ring, true});
    vNodes.push_back({nodeLast.vertex, firstLeft, nodeLast.next, nodeLast.ring, true});
    vNodes[nodeFirst.prev].next = firstLeft;
    vNodes[nodeLast.next].prev = lastLeft;
    oldRing.first = firstLeft;

    const std::size_t newRing = vRings.size();
    vNodes[first].prev = last;
    vNodes[last].next = first;
    std::size_t size = 0, i = first;
    do {
        vNodes[i].ring = newRing;
        ++size;
        i = vNodes[i].next;
    } while (i != first);
    oldRing.size = sizeBefore - size + 2;
    vRings.push_back({first, size});
    return newRing;
}

} // namespace ORBI_LUMO25D
