#include "SegmentChecker.h"

#include "Visualizer2.h"
#include "geometry/OrbiTest.h"
#include "geometry/finite.h"
#include "geometry/numericTools.h"
#include "orbi_locate2/RTree.h"
#include "segments/classification.h"
#include "support/Progress.h"
#include "support/check.h"
#include "support/messages.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <string>

namespace ORBI_LUMO25D
{

struct SegmentCheckerData
{
    using Entry = std::pair<const Segment2*, std::size_t>;

    std::unique_ptr<ORBI_LOCATE2::RTree> pRTree;
    std::unique_ptr<OrbiTest> pPredicates;
    std::vector<Segment2*> vSegments;
    std::vector<Entry> mSegmentIndex; ///< sorted by pointer and index; filled when somebody asks for an index
    std::unique_ptr<Progress> pProgress;
};

namespace
{

constexpr std::size_t candidatesAtStart = 1000;

/// Whether there is something that can be classified; told if not.
bool isUsable(const Segment2* pSegment, const char* functionName)
{
    if (pSegment == nullptr) {
        msgWarning(functionName, "Segment is NULL");
        return false;
    }
    const bool bFinite = isFinite2D(*pSegment);
    if (!bFinite) msgWarning(functionName, "Segment has a coordinate that is no finite number");
    return bFinite;
}

/// Whether the type is one of those looked for. A value that no classification gives is told under functionName, unless
/// that is NULL, and a failed condition.
bool isIntersection(SegmentIntersectionType sit, bool bAlsoEndPointIntersections, const char* functionName = nullptr)
{
    switch (sit) {
    case SIT_NONE:
        return false;
    case SIT_SEGMENT:
    case SIT_POINT:
        return true;
    case SIT_ENDPOINT:
        return bAlsoEndPointIntersections;
    case SIT_UNINITIALIZED:
        break;
    }
    if (functionName != nullptr) msgError(functionName, "impossible case");
    LUMO_CHECK(false, "false");
}

template <class F>
void forEachBoxNeighbor(const ORBI_LOCATE2::RTree& rTree, const Segment2& s, const F& f)
{
    const auto x = std::minmax({s.src.x(), s.trg.x()});
    const auto y = std::minmax({s.src.y(), s.trg.y()});
    rTree.forEach(x.first, y.first, x.second, y.second, f);
}

/// The positions of the segments whose boxes a segment meets, ascending, and perhaps some more.
void findCandidates(const ORBI_LOCATE2::RTree& rTree, const Segment2& s, std::vector<std::size_t>& vCandidates)
{
    const auto add = [&vCandidates](std::size_t c) { vCandidates.push_back(c); };
    forEachBoxNeighbor(rTree, s, add);
    const double width = s.trg.x() - s.src.x();
    const double height = s.trg.y() - s.src.y();
    const auto size = std::minmax({std::fabs(width), std::fabs(height)});
    // The box of a long slanted segment is full of others that are far from it: a chain of smaller boxes is not.
    constexpr int numPieces = 32;
    constexpr std::size_t many = 16 * numPieces;
    if (vCandidates.size() > many && std::isfinite(size.second) && numPieces * size.first > size.second) {
        vCandidates.clear();
        const double margin = 0x1p-49 * std::max(s.src.getMaxAbs(), s.trg.getMaxAbs()); // far more than all roundings
        for (int i = 0; i < numPieces; ++i) {
            const double from = static_cast<double>(i) / numPieces;
            const double to = static_cast<double>(i + 1) / numPieces;
            const auto x = std::minmax({s.src.x() + from * width, s.src.x() + to * width});
            const auto y = std::minmax({s.src.y() + from * height, s.src.y() + to * height});
            rTree.forEach(x.first - margin, y.first - margin, x.second + margin, y.second + margin, add);
        }
    }
    std::sort(vCandidates.begin(), vCandidates.end());
    vCandidates.erase(std::unique(vCandidates.begin(), vCandidates.end()), vCandidates.end());
}

/// One run over all segments: a mark for each of them that takes part in an illegal intersection.
class IllegalSearch
{
public:
    IllegalSearch(const SegmentCheckerData& data_, bool bAlsoEndPointIntersections_)
        : data(data_), bAlsoEndPoint(bAlsoEndPointIntersections_), vMarks(data_.vSegments.size())
    {
        vCandidates.reserve(candidatesAtStart);
    }

    /// By position in vSegments. What is marked doesn't depend on the order of the search, so that it can follow the
    /// index's.
    std::vector<bool> run()
    {
        if (data.pProgress) data.pProgress->start("getIllegalSegments", data.vSegments.size());
        const std::vector<std::size_t>& vOrder = data.pRTree->inSpatialOrder();
        for (std::size_t k = 0; k < vOrder.size(); ++k) {
            // Segments lie in the caller's order, all over memory; those that come soon are asked for in time.
            if (k + ahead < vOrder.size()) prefetch(data.vSegments[vOrder[k + ahead]]);
            const std::size_t i = vOrder[k];
            if (!vMarks[i].bIllegal) search(i);
            if (data.pProgress) data.pProgress->step(1);
        }
        if (data.pProgress) data.pProgress->finish();
        std::vector<bool> vIllegal(vMarks.size());
        for (std::size_t i = 0; i < vMarks.size(); ++i) vIllegal[i] = vMarks[i].bIllegal;
        return vIllegal;
    }

private:
    static constexpr std::size_t ahead = 12;

    static void prefetch(const Segment2* pSegment)
    {
        __builtin_prefetch(&pSegment->src);
        __builtin_prefetch(&pSegment->trg);
    }

    struct Mark
    {
        bool bIllegal = false;
        bool bSearched = false; ///< its pairs are all known
    };

    void search(std::size_t i)
    {
        vMarks[i].bSearched = true;
        Segment2* const pSegment = data.vSegments[i];
        vCandidates.clear();
        forEachBoxNeighbor(*data.pRTree, *pSegment, [this](std::size_t c) {
            if (vMarks[c].bSearched) return;
            prefetch(data.vSegments[c]);
            vCandidates.push_back(c);
        });
        for (const std::size_t c : vCandidates) {
            const Segment2* const pCandidate = data.vSegments[c];
            // A pointer that was given twice is one segment.
            if (pCandidate == pSegment) continue;
            if (!isIntersection(classifySegments(*data.pPredicates, *pSegment, *pCandidate), bAlsoEndPoint)) continue;
            vMarks[i].bIllegal = true;
            vMarks[c].bIllegal = true;
        }
    }

    const SegmentCheckerData& data;
    bool bAlsoEndPoint;
    std::vector<Mark> vMarks;
    std::vector<std::size_t> vCandidates;
};

/// Keeps the first of equal pointers, and their order.
void dropRepetitions(std::vector<Segment2*>& v)
{
    // Mostly the segments lie in an array, and nothing is to be done.
    if (std::adjacent_find(v.begin(), v.end(), std::greater_equal<Segment2*>()) == v.end()) return;
    std::vector<SegmentCheckerData::Entry> vByPointer;
    for (std::size_t i = 0; i < v.size(); ++i) vByPointer.emplace_back(v[i], i);
    std::sort(vByPointer.begin(), vByPointer.end());
    for (std::size_t i = 1; i < vByPointer.size(); ++i) {
        if (vByPointer[i].first == vByPointer[i - 1].first) v[vByPointer[i].second] = nullptr;
    }
    v.erase(std::remove(v.begin(), v.end(), nullptr), v.end());
}

} // namespace

// ---- the set --------------------------------------------------------------------------------------------------------

SegmentChecker::SegmentChecker() : pSCD(std::make_unique<SegmentCheckerData>())
{
    pSCD->pRTree = std::make_unique<ORBI_LOCATE2::RTree>();
    pSCD->pPredicates = std::make_unique<OrbiTest>();
}

SegmentChecker::SegmentChecker(const std::vector<Segment2*>& vSegments) : SegmentChecker()
{
    addSegments(vSegments);
}

SegmentChecker::~SegmentChecker() = default;

void SegmentChecker::addSegments(const std::vector<Segment2*>& vSegments)
{
    std::size_t numRefused = 0;
    pSCD->vSegments.reserve(vSegments.size());
    pSCD->pRTree->reserve(vSegments.size());
    for (Segment2* pSegment : vSegments) {
        if (pSegment == nullptr || !isFinite25D(*pSegment)) {
            ++numRefused;
            continue;
        }
        const auto x = std::minmax({pSegment->src.x(), pSegment->trg.x()});
        const auto y = std::minmax({pSegment->src.y(), pSegment->trg.y()});
        pSCD->pRTree->addObject(pSCD->vSegments.size(), x.first, y.first, x.second, y.second);
        pSCD->vSegments.push_back(pSegment);
    }
    if (numRefused == 0) return;
    msgWarning("SegmentChecker::addSegments()",
               "Refused, because NULL or not finite: " + std::to_string(numRefused) + " segments");
}

std::size_t SegmentChecker::getNumberOfSegments() const
{
    return pSCD->vSegments.size();
}

Segment2* SegmentChecker::getSegment(std::size_t i) const
{
    LUMO_CHECK(i < pSCD->vSegments.size(), "i<pSCD->vSegments.size()");
    return pSCD->vSegments[i];
}

std::ptrdiff_t SegmentChecker::getIndex(const Segment2* pSegment) const
{
    std::vector<SegmentCheckerData::Entry>& mSegmentIndex = pSCD->mSegmentIndex;
    if (mSegmentIndex.empty()) {
        mSegmentIndex.reserve(pSCD->vSegments.size());
        for (std::size_t i = 0; i < pSCD->vSegments.size(); ++i) mSegmentIndex.emplace_back(pSCD->vSegments[i], i);
        std::sort(mSegmentIndex.begin(), mSegmentIndex.end());
    }
    const auto behind = [](const Segment2* p, const SegmentCheckerData::Entry& entry) { return p < entry.first; };
    const auto it = std::upper_bound(mSegmentIndex.begin(), mSegmentIndex.end(), pSegment, behind);
    if (it != mSegmentIndex.begin() && std::prev(it)->first == pSegment) {
        return static_cast<std::ptrdiff_t>(std::prev(it)->second);
    }
    msgWarning("SegmentChecker::getIndex()", "No such segment");
    return -1;
}

void SegmentChecker::subscribe(MsgType msgType, MsgBase* pMsg)
{
    if (!pSCD->pProgress) pSCD->pProgress = std::make_unique<Progress>("SEGCHECK");
    pSCD->pProgress->subscribe(msgType, pMsg);
}

void SegmentChecker::unsubscribe(MsgType msgType, MsgBase* pMsg)
{
    if (!pSCD->pProgress) {
        msgWarning("SegmentChecker::unsubscribe()", "No publisher present");
        return;
    }
    pSCD->pProgress->unsubscribe(msgType, pMsg);
}

// ---- searches -------------------------------------------------------------------------------------------------------

void SegmentChecker::getIllegalSegments(bool bAlsoEndPointIntersections, std::vector<Segment2*>& vIllegalSegments) const
{
    const std::vector<bool> vIllegal = IllegalSearch(*pSCD, bAlsoEndPointIntersections).run();
    std::vector<Segment2*> vFound;
    for (std::size_t i = 0; i < vIllegal.size(); ++i) {
        if (vIllegal[i]) vFound.push_back(pSCD->vSegments[i]);
    }
    dropRepetitions(vFound);
    vIllegalSegments.insert(vIllegalSegments.end(), vFound.begin(), vFound.end());
}

void SegmentChecker::getIntersectors(const Segment2* pSegment, bool bAlsoEndPointIntersections,
                                     std::vector<std::pair<Segment2*, SegmentIntersectionType>>& vIntersectors) const
{
    if (!isUsable(pSegment, "SegmentChecker::getIntersectors()")) return;
    std::vector<std::size_t> vCandidates;
    vCandidates.reserve(candidatesAtStart);
    findCandidates(*pSCD->pRTree, *pSegment, vCandidates);
    for (const std::size_t c : vCandidates) {
        Segment2* const pCandidate = pSCD->vSegments[c];
        if (pCandidate == pSegment) continue;
        const SegmentIntersectionType sit = classifySegments(*pSCD->pPredicates, *pSegment, *pCandidate);
        if (isIntersection(sit, bAlsoEndPointIntersections, "getIntersectors()")) {
            vIntersectors.emplace_back(pCandidate, sit);
        }
    }
}

// ---- pairs ----------------------------------------------------------------------------------------------------------

SegmentIntersectionType SegmentChecker::getIntersectionType(const Segment2* pA, const Segment2* pB) const
{
    const char* const functionName = "SegmentChecker::getIntersectionType()";
    if (!isUsable(pA, functionName) || !isUsable(pB, functionName)) return SIT_UNINITIALIZED;
    return pA == pB ? SIT_SEGMENT : classifySegments(*pSCD->pPredicates, *pA, *pB);
}

const char* SegmentChecker::getIntersectionTypeString(SegmentIntersectionType sit)
{
    switch (sit) {
    case SIT_UNINITIALIZED:
        return "SIT_UNINITIALIZED";
    case SIT_NONE:
        return "SIT_NONE";
    case SIT_SEGMENT:
        return "SIT_SEGMENT";
    case SIT_POINT:
        return "SIT_POINT";
    case SIT_ENDPOINT:
        return "SIT_ENDPOINT";
    }
    return "UNKNOWN SIT";
}

void SegmentChecker::getIntersectionPoint(SegmentIntersectionType sit, const Segment2& a, const Segment2& b,
                                          Point2& onA, Point2& onB) const
{
    const char* const functionName = "SegmentChecker::getIntersectionPoint()";
    if (sit != SIT_ENDPOINT && sit != SIT_POINT) {
        msgWarning(functionName, "wrong SegmentIntersectionType provided");
        return;
    }
    if (!isUsable(&a, functionName) || !isUsable(&b, functionName)) return;
    if (sit == SIT_ENDPOINT) {
        for (const Point2* pA : {&a.src, &a.trg}) {
            for (const Point2* pB : {&b.src, &b.trg}) {
                if (*pA != *pB) continue;
                // Both are read before one is written: the results may be ends of the segments.
                const Point2 endA = *pA, endB = *pB;
                onA = endA;
                onB = endB;
                return;
            }
        }
        msgWarning(functionName, "SIT_ENDPOINT is a wrong SegmentIntersectionType for the preset segments");
        return;
    }
    if (classifySegments(*pSCD->pPredicates, a, b) != SIT_POINT) {
        msgWarning(functionName, "SIT_POINT is a wrong SegmentIntersectionType for the preset segments");
        return;
    }
    SegmentCrossing crossing;
    if (!computeCrossing(*pSCD->pPredicates, a, b, crossing)) {
        // One of them is a point on the other's inside.
        const Point2 q = a.src == a.trg ? a.src : b.src;
        crossing.onFirst = Point2(q.x(), q.y(), heightOnSegment(a.src, a.trg, q.x(), q.y()));
        crossing.onSecond = Point2(q.x(), q.y(), heightOnSegment(b.src, b.trg, q.x(), q.y()));
    }
    onA = crossing.onFirst;
    onB = crossing.onSecond;
}

namespace
{

/// Whether all four ends are on one line.
bool areOnOneLine(OrbiTest& orbiTest, const Segment2& a, const Segment2& b)
{
    if (a.src == a.trg && b.src == b.trg) return a.src == b.src;
    const Segment2& line = a.src == a.trg ? b : a;
    const Segment2& other = a.src == a.trg ? a : b;
    orbiTest.ensureStaticBound(&line.src, &line.trg, &other.src);
    orbiTest.ensureStaticBound(&other.trg);
    return orbiTest.getOrientation2(&line.src, &line.trg, &other.src) == ORIENTATION2_COLLINEAR &&
           orbiTest.getOrientation2(&line.src, &line.trg, &other.trg) == ORIENTATION2_COLLINEAR;
}

/// A point of the segment with the segment's height: its own at an end.
Point2 atHeightOf(const Segment2& s, const Point2& p)
{
    if (p == s.src) return s.src;
    if (p == s.trg) return s.trg;
    return Point2(p.x(), p.y(), interpolateHeight(s.src, s.trg, p.x(), p.y()));
}

} // namespace

void SegmentChecker::getIntersectionSegment(const Segment2& a, const Segment2& b, Segment2& onA, Segment2& onB) const
{
    const char* const functionName = "SegmentChecker::getIntersectionSegment()";
    if (!isUsable(&a, functionName) || !isUsable(&b, functionName)) return;
    double loX = 0.0, hiX = 0.0, loY = 0.0, hiY = 0.0;
    if (!commonRange(a.src.x(), a.trg.x(), b.src.x(), b.trg.x(), loX, hiX) ||
        !commonRange(a.src.y(), a.trg.y(), b.src.y(), b.trg.y(), loY, hiY)) {
        msgWarning(functionName, "segments have no common range");
        return;
    }
    if (!areOnOneLine(*pSCD->pPredicates, a, b)) {
        msgWarning("SegmentChecker::getIntersectionPoint()", "segments seem to be non-collinear");
        return;
    }
    // The ends of the overlap are ends of the segments: nothing is computed but heights.
    // The longer axis is that of the line, so that a single common point is found along it, too.
    const Segment2& line = a.src == a.trg ? b : a;
    const bool bAlongX = std::fabs(line.trg.x() - line.src.x()) >= std::fabs(line.trg.y() - line.src.y());
    const auto before = [bAlongX](const Point2& p, const Point2& q) { return bAlongX ? p.x() < q.x() : p.y() < q.y(); };
    const auto rangeA = std::minmax(a.src, a.trg, before);
    const auto rangeB = std::minmax(b.src, b.trg, before);
    const Point2 lo = std::max(rangeA.first, rangeB.first, before);
    const Point2 hi = std::min(rangeA.second, rangeB.second, before);
    const Segment2 partOfA(atHeightOf(a, lo), atHeightOf(a, hi));
    const Segment2 partOfB(atHeightOf(b, lo), atHeightOf(b, hi));
    onA = partOfA;
    onB = partOfB;
}

// ---- pictures -------------------------------------------------------------------------------------------------------

void SegmentChecker::showSegments(const char* name) const
{
    printLine("SegmentChecker::showSegments(), numSegments=" + std::to_string(pSCD->vSegments.size()));
    Visualizer2 visualizer(name);
    for (const Segment2* pSegment : pSCD->vSegments) visualizer.addObject(*pSegment, Color(CGRAY));
    visualizer.writeFile();
}

void SegmentChecker::markCommonParts(std::size_t i, bool bAlsoEndPointIntersections, Visualizer2& visualizer) const
{
    const Color color(CBLUE, 0.8F);
    const Segment2& s = *pSCD->vSegments[i];
    Segment2 lastMark;
    forEachBoxNeighbor(*pSCD->pRTree, s, [&](std::size_t c) {
        const Segment2& partner = *pSCD->vSegments[c];
        if (c <= i || &partner == &s) return; // each pair once
        const SegmentIntersectionType sit = classifySegments(*pSCD->pPredicates, s, partner);
        if (!isIntersection(sit, bAlsoEndPointIntersections)) return;
        Segment2 mark, onPartner;
        if (sit == SIT_SEGMENT) {
            getIntersectionSegment(s, partner, mark, onPartner);
        } else {
            getIntersectionPoint(sit, s, partner, mark.src, onPartner.src);
            mark.trg = mark.src;
        }
        // Equal segments follow each other here: of n copies, n marks are drawn, not n * n.
        if (mark == lastMark) return;
        lastMark = mark;
        if (sit == SIT_SEGMENT) {
            visualizer.addObject(mark, color);
        } else {
            visualizer.addObject(mark.src, color);
        }
    });
}

void SegmentChecker::showIllegalSegments(bool bAlsoEndPointIntersections, const char* name) const
{
    const Color legalColor(CGRAY);
    const Color illegalColor(CRED, 0.3F);
    const std::vector<bool> vIllegal = IllegalSearch(*pSCD, bAlsoEndPointIntersections).run();
    const auto numIllegal = static_cast<std::size_t>(std::count(vIllegal.begin(), vIllegal.end(), true));

    Visualizer2 visualizer(name);
    visualizer.addHeaderLine("SegmentChecker::showIllegalSegments()");
    visualizer.addHeaderLine(("Number of segments: " + std::to_string(vIllegal.size())).c_str());
    visualizer.addHeaderLine(("Legal segments: " + std::to_string(vIllegal.size() - numIllegal)).c_str());
    visualizer.addHeaderLine(("Illegal segments: " + std::to_string(numIllegal)).c_str());
    for (const bool bIllegal : {false, true}) {
        for (std::size_t i = 0; i < vIllegal.size(); ++i) {
            if (vIllegal[i] != bIllegal) continue;
            visualizer.addObject(*pSCD->vSegments[i], bIllegal ? illegalColor : legalColor);
        }
    }
    for (std::size_t i = 0; i < vIllegal.size(); ++i) {
        if (vIllegal[i]) markCommonParts(i, bAlsoEndPointIntersections, visualizer);
    }
    visualizer.writeFile();
}

} // namespace ORBI_LUMO25D
