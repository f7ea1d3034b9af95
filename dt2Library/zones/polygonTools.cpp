// Rings and chains: segments and edges in any order, brought into the order of polygons.

#include "geometry/finite.h"
#include "support/messages.h"

#include "Edge2.h"
#include "SegmentChecker.h"
#include "freeFunctions.h"

#include <algorithm>
#include <unordered_map>

namespace ORBI_LUMO25D
{

namespace
{

bool areFinite(const std::vector<Segment2>& vSegments)
{
    return std::all_of(vSegments.begin(), vSegments.end(), [](const Segment2& s) { return isFinite2D(s); });
}

/// The ends of all segments, ordered by place, so that the segments that meet at a place are found together.
class EndTable
{
public:
    explicit EndTable(const std::vector<Segment2>& vSegments_) : vSegments(vSegments_)
    {
        vEnds.reserve(2 * vSegments.size());
        for (std::size_t i = 0; i < vSegments.size(); ++i) {
            vEnds.push_back({&vSegments[i].src, i});
            vEnds.push_back({&vSegments[i].trg, i});
        }
        std::sort(vEnds.begin(), vEnds.end(), [](const End& a, const End& b) {
            return *a.pPoint != *b.pPoint ? *a.pPoint < *b.pPoint : a.segment < b.segment;
        });
    }

    /// Whether exactly two segments end at each place, and none of them is a point.
    bool isPaired() const
    {
        for (std::size_t i = 0; i + 1 < vEnds.size(); i += 2) {
            const bool bPair = *vEnds[i].pPoint == *vEnds[i + 1].pPoint && vEnds[i].segment != vEnds[i + 1].segment;
            if (!bPair || (i + 2 < vEnds.size() && *vEnds[i + 1].pPoint == *vEnds[i + 2].pPoint)) return false;
        }
        return true;
    }

    /// The other segment that ends at the place; the table must be paired.
    std::size_t partner(const Point2& p, std::size_t segment) const
    {
        const auto it = std::lower_bound(vEnds.begin(), vEnds.end(), p,
                                         [](const End& end, const Point2& place) { return *end.pPoint < place; });
        return it->segment == segment ? (it + 1)->segment : it->segment;
    }

private:
    struct End
    {
        const Point2* pPoint;
        std::size_t segment;
    };
    const std::vector<Segment2>& vSegments;
    std::vector<End> vEnds;
};

/// The segments as one closed chain from the first one on; empty when they are none.
std::vector<Segment2> closedChain(const std::vector<Segment2>& vSegments)
{
    if (vSegments.size() < 3) return {};
    const EndTable ends(vSegments);
    if (!ends.isPaired()) return {};
    std::vector<Segment2> vChain;
    vChain.reserve(vSegments.size());
    std::size_t position = 0;
    do {
        vChain.push_back(vSegments[position]);
        if (vChain.size() > 1 && vChain[vChain.size() - 2].trg != vChain.back().src) vChain.back().swapSrcTrg();
        position = ends.partner(vChain.back().trg, position);
    } while (position != 0);
    if (vChain.size() < vSegments.size()) vChain.clear(); // there is another ring
    return vChain;
}

} // namespace

// ---- segments -------------------------------------------------------------------------------------------------------

bool sortRing(std::vector<Segment2>& vRing)
{
    if (!areFinite(vRing)) {
        msgWarning("sortRing()", "a coordinate is not a finite number");
        return false;
    }
    std::vector<Segment2> vChain = closedChain(vRing);
    if (vChain.empty()) {
        msgWarning("sortRing()", "the segments are not one closed ring");
        return false;
    }
    vRing.swap(vChain);
    return true;
}

bool sortRingCCW(std::vector<Segment2>& vRing)
{
    std::vector<Segment2> vSorted(vRing);
    if (!sortRing(vSorted)) return false;
    const auto it = std::min_element(vSorted.begin(), vSorted.end(),
                                     [](const Segment2& a, const Segment2& b) { return a.src < b.src; });
    const Segment2& before = it == vSorted.begin() ? vSorted.back() : *(it - 1);
    const Orientation2 ori = getOrientation2_mt(&before.src, &it->src, &it->trg);
    if (ori == ORIENTATION2_COLLINEAR) {
        msgWarning("sortRingCCW()", "the ring runs back along itself");
        return false;
    }
    if (ori == ORIENTATION2_CW) {
        std::for_each(vSorted.begin(), vSorted.end(), [](Segment2& s) { s.swapSrcTrg(); });
        std::reverse(vSorted.begin() + 1, vSorted.end());
    }
    vRing.swap(vSorted);
    return true;
}

bool isSimplePolygon(const std::vector<Segment2>& vSegments)
{
    if (!areFinite(vSegments)) {
        msgWarning("isSimplePolygon()", "a coordinate is not a finite number");
        return false;
    }
    std::vector<Segment2> vChain = closedChain(vSegments);
    if (vChain.empty()) return false;
    std::vector<Segment2*> vPointers;
    vPointers.reserve(vChain.size());
    std::transform(vChain.begin(), vChain.end(), std::back_inserter(vPointers), [](Segment2& s) { return &s; });
    std::vector<Segment2*> vIllegal;
    SegmentChecker(vPointers).getIllegalSegments(false, vIllegal);
    return vIllegal.empty();
}

void pointsToPolyline(const std::vector<Point2>& vPoints, bool bClose, std::vector<Segment2>& vSegments)
{
    if (!std::all_of(vPoints.begin(), vPoints.end(), [](const Point2& p) { return isFinite2D(p); })) {
        msgWarning("pointsToPolyline()", "a coordinate is not a finite number, nothing appended");
        return;
    }
    const std::size_t before = vSegments.size();
    const Point2* pLast = vPoints.empty() ? nullptr : &vPoints.front();
    for (const Point2& p : vPoints) {
        if (p == *pLast) continue;
        vSegments.emplace_back(*pLast, p);
        pLast = &p;
    }
    if (bClose && vSegments.size() - before >= 2 && *pLast != vPoints.front()) {
        vSegments.emplace_back(*pLast, vPoints.front());
    }
}

// ---- edges ----------------------------------------------------------------------------------------------------------

namespace
{

/// Takes directed edges apart into closed rings by a walk that cuts a ring off whenever it meets a vertex of its own again,
/// and takes a step back where it comes to an end.
class RingWalk
{
public:
    RingWalk(std::vector<std::vector<Edge2>>& vvPolygons_, std::vector<Edge2>& vRemaining_)
        : vvPolygons(vvPolygons_), vRemaining(vRemaining_)
    {
    }

    void add(const Edge2& edge)
    {
        if (edge.getTriangle() == nullptr) {
            vRemaining.push_back(edge);
            return;
        }
        vEdges.push_back(edge);
        mOutgoing[edge.getSrc()].vUnused.push_back(edge);
    }

    void run()
    {
        for (const Edge2& edge : vEdges) {
            Vertex& start = mOutgoing[edge.getSrc()];
            const auto it = std::find(start.vUnused.begin(), start.vUnused.end(), edge);
            if (it == start.vUnused.end()) continue;
            start.vUnused.erase(it);
            walkFrom(edge);
        }
    }

private:
    struct Vertex
    {
        std::vector<Edge2> vUnused;  ///< outgoing edges that the walk hasn't taken yet
        std::size_t position = none; ///< of the vertex' outgoing edge in vPath
    };
    static constexpr std::size_t none = static_cast<std::size_t>(-1);

    void walkFrom(const Edge2& first)
    {
        push(first);
        while (!vPath.empty()) {
            const Edge2 last = vPath.back();
            Vertex& here = mOutgoing[last.getTrg()];
            if (here.position != none) {
                cutRing(here.position);
                if (!vPath.empty()) continue;
                return;
            }
            if (here.vUnused.empty()) {
                mOutgoing[last.getSrc()].position = none;
                vPath.pop_back();
                vRemaining.push_back(last);
            } else {
                push(takeNext(here.vUnused, last));
            }
        }
    }

    void push(const Edge2& edge)
    {
        mOutgoing[edge.getSrc()].position = vPath.size();
        vPath.push_back(edge);
    }

    void cutRing(std::size_t position)
    {
        const auto itFirst = vPath.begin() + static_cast<std::ptrdiff_t>(position);
        vvPolygons.emplace_back(itFirst, vPath.end());
        for (const Edge2& edge : vvPolygons.back()) {
            mOutgoing[edge.getSrc()].position = none;
        }
        vPath.erase(itFirst, vPath.end());
    }

    /// The edge that bounds the same area on the left: the first one clockwise from the way back.
    static Edge2 takeNext(std::vector<Edge2>& vUnused, const Edge2& last)
    {
        const auto it = std::min_element(vUnused.begin(), vUnused.end(), [&last](const Edge2& a, const Edge2& b) {
            return isClockwiseBefore(*last.getTrg(), *last.getSrc(), *a.getTrg(), *b.getTrg());
        });
        const Edge2 next = *it;
        vUnused.erase(it);
        return next;
    }

    /// In which part of the turn from center-start on a direction lies: right half, straight on, left half, start itself.
    static int partOfTurn(const Point2& center, const Point2& start, const Point2& p)
    {
        switch (getOrientation2_mt(&center, &start, &p)) {
        case ORIENTATION2_CW:
            return 0;
        case ORIENTATION2_CCW:
            return 2;
        default:
            return (start < center) == (p < center) ? 3 : 1;
        }
    }

    static bool isClockwiseBefore(const Point2& center, const Point2& start, const Point2& a, const Point2& b)
    {
        const int partA = partOfTurn(center, start, a);
        const int partB = partOfTurn(center, start, b);
        if (partA != partB) return partA < partB;
        return getOrientation2_mt(&center, &a, &b) == ORIENTATION2_CW;
    }

    std::vector<std::vector<Edge2>>& vvPolygons;
    std::vector<Edge2>& vRemaining;
    std::vector<Edge2> vEdges;
    std::vector<Edge2> vPath;
    std::unordered_map<const Point2*, Vertex> mOutgoing;
};

} // namespace

void edgesToPolygons(const std::vector<Edge2>& vEdges, std::vector<std::vector<Edge2>>& vvPolygons,
                     std::vector<Edge2>& vRemaining)
{
    RingWalk walk(vvPolygons, vRemaining);
    for (const Edge2& edge : vEdges) {
        walk.add(edge);
    }
    walk.run();
}

} // namespace ORBI_LUMO25D
