#include "terrain/ContourChains.h"

#include "freeFunctions.h"
#include "support/check.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace ORBI_LUMO25D
{

namespace
{

std::uint64_t hashOf(double x, double y)
{
    // -0.0 equals 0.0 and must meet it in the table.
    const double aXY[2] = {x + 0.0, y + 0.0};
    std::uint64_t aBits[2];
    std::memcpy(aBits, aXY, sizeof aBits);
    std::uint64_t h = aBits[0] * 0x9e3779b97f4a7c15ULL;
    h = (h ^ (h >> 32U) ^ aBits[1]) * 0xd6e8feb86659fd93ULL;
    return h ^ (h >> 32U);
}

} // namespace

ContourChains::ContourChains(const std::vector<PlanarSegment>& vSegments) : numSegments(vSegments.size())
{
    const std::size_t n = numSegments;
    LUMO_CHECK(n < none / 4, "vSegments.size()<none/4");
    std::size_t tableSize = 16;
    while (tableSize < 4 * n) tableSize *= 2; // at most two nodes a segment, usually one
    vTable.assign(tableSize, none);
    vNodes.reserve(n + n / 8 + 2);
    vEnds.resize(2 * n);
    vDone.assign(n, false);
    for (std::uint32_t i = 0; i < n && !bBranching; ++i) {
        for (const int end : {0, 1}) addEnd(i, end, vSegments[i].aX[end], vSegments[i].aY[end]);
    }
}

std::uint32_t ContourChains::nodeOf(double x, double y)
{
    const std::size_t mask = vTable.size() - 1;
    std::size_t slot = hashOf(x, y) & mask;
    for (; vTable[slot] != none; slot = (slot + 1) & mask) {
        if (vNodes[vTable[slot]].isAt(x, y)) return vTable[slot];
    }
    vTable[slot] = static_cast<std::uint32_t>(vNodes.size());
    vNodes.push_back({x, y, {none, none}});
    return vTable[slot];
}

void ContourChains::addEnd(std::uint32_t segment, int end, double x, double y)
{
    const std::uint32_t node = nodeOf(x, y);
    vEnds[2 * segment + static_cast<std::uint32_t>(end)] = node;
    std::uint32_t* const aAtNode = vNodes[node].aSegments;
    if (aAtNode[0] == none) {
        aAtNode[0] = segment;
    } else if (aAtNode[1] == none) {
        aAtNode[1] = segment;
    } else {
        bBranching = true;
    }
}

void ContourChains::append(double height, std::vector<std::vector<Segment2>>& vvContours)
{
    const auto byPoint = [this](std::uint32_t a, std::uint32_t b) { return vNodes[a] < vNodes[b]; };
    std::vector<std::uint32_t> vStarts;
    for (std::uint32_t i = 0; i < vNodes.size(); ++i) {
        if (vNodes[i].aSegments[1] == none) vStarts.push_back(i);
    }
    std::sort(vStarts.begin(), vStarts.end(), byPoint);
    for (const std::uint32_t start : vStarts) {
        const std::uint32_t segment = vNodes[start].aSegments[0];
        if (!vDone[segment]) vvContours.push_back(walk(start, segment, 0, height));
    }

    const std::vector<bool> vInOpenChain = vDone;
    std::vector<Ring> vRings;
    for (std::uint32_t i = 0; i < numSegments; ++i) {
        if (!vDone[i]) vRings.push_back(goRound(i));
    }
    vDone = vInOpenChain;
    std::sort(vRings.begin(), vRings.end(), [&](const Ring& a, const Ring& b) { return byPoint(a.start, b.start); });
    for (const Ring& ring : vRings) vvContours.push_back(walk(ring.start, ring.segment, ring.size, height));
}

/// Marks the ring's segments as done.
///
/// It is the area that tells the direction: where triangles are so thin that rounded points make a ring cross itself, the
/// turn at one point may belong to a loop of a few units in the last place.
ContourChains::Ring ContourChains::goRound(std::uint32_t segment)
{
    std::uint32_t node = vEnds[2 * segment];
    const Node& origin = vNodes[node];
    std::uint32_t smallest = node, forward = segment, backward = none;
    double area = 0.0, areaOfTerms = 0.0;
    std::size_t size = 0;
    while (!vDone[segment]) {
        vDone[segment] = true;
        ++size;
        const double fromX = vNodes[node].x - origin.x, fromY = vNodes[node].y - origin.y;
        node = farNode(segment, node);
        const double toX = vNodes[node].x - origin.x, toY = vNodes[node].y - origin.y;
        area += fromX * toY - fromY * toX;
        areaOfTerms += std::fabs(fromX * toY) + std::fabs(fromY * toX);
        const std::uint32_t next = otherSegment(node, segment);
        const bool bBackAgain = backward == none && vDone[next];
        if (bBackAgain || vNodes[node] < vNodes[smallest]) {
            smallest = node;
            backward = segment;
            forward = next;
        }
        segment = next;
    }
    constexpr double unsure = 1e-9; // of the terms' sum: more than rounding makes of a million of them
    if (area > unsure * areaOfTerms) return {smallest, forward, size};
    if (area < -unsure * areaOfTerms) return {smallest, backward, size};
    return {smallest, counterclockwiseSegment(smallest), size};
}

/// By the turn at the start, which decides it for every ring that doesn't cross itself.
std::uint32_t ContourChains::counterclockwiseSegment(std::uint32_t start) const
{
    const std::uint32_t* const aAtNode = vNodes[start].aSegments;
    const Point2 point = vNodes[start].pointAt(0.0);
    const Point2 a = vNodes[farNode(aAtNode[0], start)].pointAt(0.0);
    const Point2 b = vNodes[farNode(aAtNode[1], start)].pointAt(0.0);
    switch (getOrientation2_mt(&point, &a, &b)) {
    case ORIENTATION2_CCW:
        return aAtNode[0];
    case ORIENTATION2_CW:
        return aAtNode[1];
    case ORIENTATION2_COLLINEAR:
        break; // the ring runs back along itself
    }
    return a.y() < b.y() ? aAtNode[0] : aAtNode[1];
}

std::vector<Segment2> ContourChains::walk(std::uint32_t start, std::uint32_t segment, std::size_t expectedSize,
                                          double height)
{
    std::vector<Segment2> vChain;
    vChain.reserve(expectedSize);
    std::uint32_t node = start;
    while (segment != none && !vDone[segment]) {
        vDone[segment] = true;
        const std::uint32_t next = farNode(segment, node);
        vChain.emplace_back(vNodes[node].pointAt(height), vNodes[next].pointAt(height));
        node = next;
        segment = otherSegment(node, segment);
    }
    return vChain;
}

} // namespace ORBI_LUMO25D
