#include "terrain/ContourChains.h"

#include "freeFunctions.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace ORBI_LUMO25D
{

namespace
{

std::uint64_t hashOf(const PlanarPoint& p)
{
    // -0.0 equals 0.0 and must have the same value.
    const double aXY[2] = {p.x + 0.0, p.y + 0.0};
    std::uint64_t aBits[2];
    std::memcpy(aBits, aXY, sizeof aBits);
    std::uint64_t h = aBits[0] * 0x9e3779b97f4a7c15ULL;
    h = (h ^ (h >> 32U) ^ aBits[1]) * 0xd6e8feb86659fd93ULL;
    return h ^ (h >> 32U);
}

/// The end of a piece at a point, ContourChains' number for it; none inside a piece.
std::size_t endAt(std::size_t point, const std::vector<ContourPiece>& vPieces, std::size_t none)
{
    const auto after = std::upper_bound(vPieces.begin(), vPieces.end(), point,
                                        [](std::size_t i, const ContourPiece& piece) { return i < piece.first; });
    const ContourPiece& piece = *(after - 1);
    const auto number = 2 * static_cast<std::size_t>(after - 1 - vPieces.begin());
    if (piece.bClosed) return none;
    if (point == piece.first) return number;
    return point + 1 == piece.end ? number + 1 : none;
}

} // namespace

bool ContourChains::join(const std::vector<PlanarPoint>& vPoints, const std::vector<ContourPiece>& vPieces)
{
    vChains.clear();
    vJoined.clear();
    findSuspects(vPoints);
    if (!findPartners(vPoints, vPieces)) return false;
    vDone.assign(vPieces.size(), false);
    for (std::size_t end = 0; end < vPartners.size(); ++end) { // of polylines
        const bool bOpen = !vPieces[end / 2].bClosed && vPartners[end] == none;
        if (bOpen && !vDone[end / 2]) concatenate(end, vPoints, vPieces);
    }
    for (std::size_t i = 0; i < vPieces.size(); ++i) {
        if (!vDone[i]) concatenate(2 * i, vPoints, vPieces);
    }
    std::sort(vChains.begin(), vChains.end(), [](const Chain& a, const Chain& b) {
        return a.bClosed != b.bClosed ? b.bClosed : a.startPoint() < b.startPoint();
    });
    return true;
}

/// All points that are equal to others, and a few more.
void ContourChains::findSuspects(const std::vector<PlanarPoint>& vPoints)
{
    std::size_t numWords = 16;
    while (numWords < vPoints.size() / 4) numWords *= 2; // at least 16 bits for a point
    const std::uint64_t mask = 64 * numWords - 1;
    vSeen.assign(numWords, 0);
    vShared.assign(numWords, 0);
    for (const PlanarPoint& p : vPoints) {
        const std::uint64_t slot = hashOf(p) & mask, bit = std::uint64_t(1) << (slot % 64);
        vShared[slot / 64] |= vSeen[slot / 64] & bit;
        vSeen[slot / 64] |= bit;
    }
    vSuspects.clear();
    for (std::size_t i = 0; i < vPoints.size(); ++i) {
        const std::uint64_t slot = hashOf(vPoints[i]) & mask;
        if ((vShared[slot / 64] >> (slot % 64) & 1U) != 0) vSuspects.push_back(i);
    }
}

/// Two equal points must be ends of pieces, which are joined there; anything else is a branching.
bool ContourChains::findPartners(const std::vector<PlanarPoint>& vPoints, const std::vector<ContourPiece>& vPieces)
{
    vPartners.assign(2 * vPieces.size(), none);
    std::sort(vSuspects.begin(), vSuspects.end(),
              [&](std::size_t a, std::size_t b) { return vPoints[a] < vPoints[b]; });
    for (std::size_t i = 0; i + 1 < vSuspects.size(); ++i) {
        const PlanarPoint& p = vPoints[vSuspects[i]];
        if (p != vPoints[vSuspects[i + 1]]) continue;
        if (i + 2 < vSuspects.size() && p == vPoints[vSuspects[i + 2]]) return false;
        const std::size_t a = endAt(vSuspects[i], vPieces, none), b = endAt(vSuspects[i + 1], vPieces, none);
        if (a == none || b == none) return false;
        vPartners[a] = b;
        vPartners[b] = a;
    }
    return true;
}

/// Makes a chain of the piece with that end and of all that follow it. For a polyline it must be an end without a partner.
void ContourChains::concatenate(std::size_t end, const std::vector<PlanarPoint>& vPoints,
                                const std::vector<ContourPiece>& vPieces)
{
    const ContourPiece& only = vPieces[end / 2];
    if (vPartners[end] == none && vPartners[end ^ 1U] == none) {
        vDone[end / 2] = true;
        addChain(&vPoints[only.first], only.end - only.first, only.bClosed);
        return;
    }
    vJoined.reserve(vPoints.size()); // so that no chain's points move
    const std::size_t first = vJoined.size();
    std::size_t from = end;
    do {
        vDone[from / 2] = true;
        const ContourPiece& piece = vPieces[from / 2];
        const std::size_t skip = from == end ? 0 : 1; // the point where they are joined
        const auto begin = vPoints.begin() + static_cast<std::ptrdiff_t>(piece.first);
        const auto size = static_cast<std::ptrdiff_t>(piece.end - piece.first);
        if (from % 2 == 0) {
            vJoined.insert(vJoined.end(), begin + static_cast<std::ptrdiff_t>(skip), begin + size);
        } else {
            const auto rBegin = std::make_reverse_iterator(begin + size);
            vJoined.insert(vJoined.end(), rBegin + static_cast<std::ptrdiff_t>(skip), rBegin + size);
        }
        from = vPartners[from ^ 1U];
    } while (from != none && from != end);
    if (from == end) vJoined.pop_back(); // the first one again
    addChain(&vJoined[first], vJoined.size() - first, from == end);
}

void ContourChains::addChain(const PlanarPoint* aPoints, std::size_t size, bool bClosed)
{
    Chain chain{aPoints, size, bClosed, 0, false};
    if (bClosed) {
        orient(chain);
    } else if (aPoints[size - 1] < aPoints[0]) {
        chain.start = size - 1;
        chain.bBackward = true;
    }
    vChains.push_back(chain);
}

/// Finds the smallest point, and the direction.
///
/// It is the area that tells the direction: where triangles are so thin that rounded points make a ring cross itself, the
/// turn at one point may belong to a loop of a few units in the last place.
void ContourChains::orient(Chain& ring)
{
    const PlanarPoint origin = ring.aPoints[0];
    double area = 0.0, areaOfTerms = 0.0, fromX = 0.0, fromY = 0.0;
    for (std::size_t i = 1; i < ring.size; ++i) {
        const PlanarPoint& p = ring.aPoints[i];
        const double toX = p.x - origin.x, toY = p.y - origin.y;
        area += fromX * toY - fromY * toX;
        areaOfTerms += std::fabs(fromX * toY) + std::fabs(fromY * toX);
        fromX = toX;
        fromY = toY;
        if (p < ring.startPoint()) ring.start = i;
    }
    constexpr double unsure = 1e-9; // of the terms' sum: more than rounding makes of a million of them
    ring.bBackward = std::fabs(area) > unsure * areaOfTerms ? area < 0.0 : !turnsLeft(ring);
}

/// By the turn at the start, which decides it for every ring that doesn't cross itself.
bool ContourChains::turnsLeft(const Chain& ring)
{
    const Point2 start = ring.startPoint().at(0.0);
    const Point2 a = ring.aPoints[ring.after(ring.start)].at(0.0);
    const Point2 b = ring.aPoints[ring.before(ring.start)].at(0.0);
    switch (getOrientation2_mt(&start, &a, &b)) {
    case ORIENTATION2_CCW:
        return true;
    case ORIENTATION2_CW:
        return false;
    case ORIENTATION2_COLLINEAR:
        break; // the ring runs back along itself
    }
    return a.y() < b.y();
}

void ContourChains::append(double height, std::vector<std::vector<Segment2>>& vvContours) const
{
    vvContours.reserve(std::max(vvContours.size() + vChains.size(), vvContours.capacity()));
    for (const Chain& chain : vChains) {
        const std::size_t numSegments = chain.bClosed ? chain.size : chain.size - 1;
        std::vector<Segment2>& vSegments = vvContours.emplace_back();
        vSegments.reserve(numSegments);
        Point2 from = chain.startPoint().at(height);
        for (std::size_t i = chain.start; vSegments.size() < numSegments;) {
            i = chain.bBackward ? chain.before(i) : chain.after(i);
            const Point2 to = chain.aPoints[i].at(height);
            vSegments.emplace_back(from, to);
            from = to;
        }
    }
}

} // namespace ORBI_LUMO25D
