#include "core/VertexVault.h"

#include "core/AppendTasks.h"
#include "core/CurveRefinement.h"
#include "core/CurveSort.h"
#include "engine/Dt2.h"
#include "geometry/distances.h"
#include "support/check.h"
#include "support/messages.h"

#include <algorithm>
#include <cmath>
#include <iostream>
#include <limits>
#include <set>
#include <sstream>

namespace ORBI_LUMO25D
{

namespace
{

struct LessByPosition
{
    bool operator()(const Point2* pA, const Point2* pB) const { return *pA < *pB; }
};

constexpr std::size_t notFound = static_cast<std::size_t>(-1);

/// Items that share one entry of the lookup table, on the average.
constexpr std::size_t itemsPerStretch = 4;

} // namespace

/// While there is no area: the active vertices by position, so that a stream of single points finds its duplicates
/// without a scan of all items.
class WaitingPoints
{
public:
    std::set<Point2*, LessByPosition> sPoints;
};

VertexVault::VertexVault(Dt2* pDt2_) : pDt2(pDt2_) {}

VertexVault::~VertexVault() = default;

// ---- appending ------------------------------------------------------------------------------------------------------

void VertexVault::addVertex(std::uint32_t idx, Point2* pVtx)
{
    vItems.push_back({idx, true, pVtx});
    ++numActiveItems;
    if (pWaiting) pWaiting->sPoints.insert(pVtx);
}

namespace
{

template <class Source>
Point2* takeSlots(const Source& source, SimplePool<Point2>& pool)
{
    return pool.allocRange(source.size());
}

Point2* takeSlots(const StandingSource& source, SimplePool<Point2>&)
{
    return source.fill(0, nullptr);
}

} // namespace

template <class Source>
Point2* VertexVault::appendInCurveOrder(const Source& source, Point2** aHandles, std::size_t& numPreExisting)
{
    numPreExisting = vItems.size();
    const std::size_t n = source.size();
    const int numCPU = source.mayUseThreads() ? pDt2->numCPU : 1;
    const std::size_t numThreads = threadsForScan(n, numCPU);

    IdxPairs vPairs(n);
    runOnStretches<Task<Source>>(n, numThreads, source, pDt2->hilbertCurve, std::ref(vPairs));
    sortPairs(vPairs, numCPU);
    refineEqualRuns(
        vPairs, [&source](std::size_t i) { return std::make_pair(source.x(i), source.y(i)); }, numCPU);

    source.arrange(vPairs);
    Point2* const aVertices = takeSlots(source, pDt2->poolVertices);
    vItems.resize(numPreExisting + n);
    try {
        runOnStretches<FTask<Source>>(n, numThreads, source, vPairs, aVertices, vItems.data() + numPreExisting,
                                      aHandles);
    } catch (...) {
        vItems.resize(numPreExisting); // items without a value
        throw;
    }
    numActiveItems += n;
    pBulkBegin = aVertices;
    pBulkEnd = aVertices + n;
    pWaiting.reset();
    return aVertices;
}

void VertexVault::addVertices(const std::vector<Point2>& vInputPoints, std::vector<Point2*>* pVHandles,
                              std::size_t& numPreExisting)
{
    if (pVHandles != nullptr) pVHandles->resize(vInputPoints.size());
    appendInCurveOrder(PointSource(vInputPoints), pVHandles == nullptr ? nullptr : pVHandles->data(), numPreExisting);
}

void VertexVault::addCoordinates(std::size_t n, const double* aCoordinates, Point2** aHandles,
                                 std::size_t& numPreExisting)
{
    appendInCurveOrder(CoordinateSource(n, aCoordinates), aHandles, numPreExisting);
}

void VertexVault::addCloud(const PointBlocks& points, std::size_t& numPreExisting)
{
    appendInCurveOrder(BlockSource(points), nullptr, numPreExisting);
}

void VertexVault::drainCloud(PointBlocks& points, std::size_t& numPreExisting)
{
    appendInCurveOrder(DrainedSource(points), nullptr, numPreExisting);
    points.clear();
}

void VertexVault::adoptVertices(Point2* aVertices, std::size_t n)
{
    LUMO_CHECK(numActiveItems == 0 && dupIsClean(), "numActiveItems==0");
    vItems.clear();
    std::size_t numPreExisting = 0;
    appendInCurveOrder(StandingSource(aVertices, n), nullptr, numPreExisting);
    numRemoved = 0;
    numSorted = n;
    areaChanged();
    buildLookup();
}

// ---- looking up -----------------------------------------------------------------------------------------------------

/// The first sorted position whose index is not less than idx; the last one when there is none.
std::size_t VertexVault::lowerBound(std::uint32_t idx) const
{
    const std::size_t stretch = std::min<std::size_t>(idx >> stretchShift, vFirstOfStretch.size() - 2);
    const auto itBegin = vItems.begin() + static_cast<std::ptrdiff_t>(vFirstOfStretch[stretch]);
    const auto itEnd = vItems.begin() + static_cast<std::ptrdiff_t>(vFirstOfStretch[stretch + 1]);
    const auto it = std::lower_bound(itBegin, itEnd, idx,
                                     [](const IdxVtxAct& item, std::uint32_t value) { return item.idx < value; });
    return std::min(static_cast<std::size_t>(it - vItems.begin()), numSorted - 1);
}

void VertexVault::buildLookup()
{
    vFirstOfStretch.clear();
    if (numSorted == 0) return;
    const IdxVtxAct* const pItems = vItems.data();
    LUMO_CHECK(pItems[numSorted - 1].bActive, "vItems[numSorted-1].bActive");
    const std::uint32_t maxIdx = pItems[numSorted - 1].idx;
    stretchShift = 0;
    while ((maxIdx >> stretchShift) > numSorted / itemsPerStretch) {
        ++stretchShift;
    }
    vFirstOfStretch.resize((maxIdx >> stretchShift) + 2);
    vFirstOfStretch.back() = numSorted;
    // The first item of a stretch is also where the empty stretches before it begin. Inactive items have no place.
    forStretches(numSorted, threadsForScan(numSorted, pDt2->numCPU), [&](const Stretch& s) {
        std::size_t before = s.begin;
        while (before > 0 && !pItems[before - 1].bActive) {
            --before;
        }
        std::size_t stretch = before == 0 ? 0 : (pItems[before - 1].idx >> stretchShift) + 1;
        for (std::size_t i = s.begin; i < s.end; ++i) {
            if (!pItems[i].bActive) continue;
            for (; stretch <= pItems[i].idx >> stretchShift; ++stretch) {
                vFirstOfStretch[stretch] = i;
            }
        }
    });
}

/// The incident triangle of the item's vertex; null when the item is off.
Triangle2* VertexVault::triangleAround(std::size_t pos) const
{
    if (!vItems[pos].bActive) return nullptr;
    return vItems[pos].pVtx->getIncidentTriangle();
}

Triangle2* VertexVault::getCloseTriangle(std::uint32_t idx) const
{
    LUMO_CHECK(bFullDimensional, "bFullDimensional");
    if (numSorted != 0) {
        const std::size_t pos = lowerBound(idx);
        // Removals may have switched off long stretches of the curve: probe at doubling distances before scanning.
        if (Triangle2* const pT = triangleAround(pos)) return pT;
        for (std::size_t distance = 1; distance < numSorted; distance *= 2) {
            Triangle2* const pBehind = pos + distance < numSorted ? triangleAround(pos + distance) : nullptr;
            if (pBehind != nullptr) return pBehind;
            Triangle2* const pBefore = distance <= pos ? triangleAround(pos - distance) : nullptr;
            if (pBefore != nullptr) return pBefore;
        }
        for (std::size_t i = 0; i < numSorted; ++i) {
            if (Triangle2* const pT = triangleAround(i)) return pT;
        }
    }
    // Before the first points are in, the fake box is all there is.
    if (hasFakeBox()) {
        if (Triangle2* const pFakeT = getFakeBoxCorner(0)->getIncidentTriangle()) return pFakeT;
    }
    if (Triangle2* const pT = triangleFromTail(idx)) return pT;
    msgError("Vault", "getCloT() failed");
    LUMO_CHECK(false, "false");
}

namespace
{

/// More items than this with one key are searched by their places.
constexpr std::size_t longRun = 64;

} // namespace

/// In a long run of items with the key of position begin, which stands in the order of a finer curve: a position near p,
/// by samples that close in on the nearest. O(log n).
std::size_t VertexVault::nearInRun(std::size_t begin, const Point2& p) const
{
    const auto itBegin = vItems.begin() + static_cast<std::ptrdiff_t>(begin);
    const auto itEnd = std::upper_bound(itBegin, vItems.begin() + static_cast<std::ptrdiff_t>(numSorted), itBegin->idx,
                                        [](std::uint32_t value, const IdxVtxAct& item) { return value < item.idx; });
    std::size_t low = begin;
    std::size_t high = static_cast<std::size_t>(itEnd - vItems.begin());
    std::size_t best = begin;
    double sqBest = sqDistance2D(*vItems[begin].pVtx, p);
    for (std::size_t step = (high - low) / 16; step > 0; step /= 8) {
        for (std::size_t i = low; i < high; i += step) {
            const double sqDist = sqDistance2D(*vItems[i].pVtx, p);
            if (sqDist < sqBest) {
                sqBest = sqDist;
                best = i;
            }
        }
        low = best < low + step ? low : best - step;
        high = std::min(high, best + step);
    }
    return best;
}

Triangle2* VertexVault::getCloseTriangle(const Point2& p) const
{
    // A step of the walk costs two looks at memory, one after the other; these few come all at once.
    constexpr std::size_t reach = 3;
    const std::uint32_t idx = pDt2->hilbertCurve.getIndex(p);
    if (numSorted == 0) return getCloseTriangle(idx);
    std::size_t pos = lowerBound(idx);
    if (pos + longRun < numSorted && vItems[pos + longRun].idx == vItems[pos].idx) pos = nearInRun(pos, p);
    const std::size_t first = pos < reach ? 0 : pos - reach;
    const std::size_t last = std::min(pos + reach, numSorted);
    const Point2* pNearest = nullptr;
    double sqNearest = std::numeric_limits<double>::infinity();
    for (std::size_t i = first; i < last; ++i) {
        const Point2* const pVtx = vItems[i].pVtx;
        const double sqDist = sqDistance2D(*pVtx, p);
        const bool bNearer = vItems[i].bActive && sqDist < sqNearest;
        pNearest = bNearer ? pVtx : pNearest;
        sqNearest = bNearer ? sqDist : sqNearest;
    }
    Triangle2* const pT = pNearest == nullptr ? nullptr : pNearest->getIncidentTriangle();
    return pT == nullptr ? getCloseTriangle(idx) : pT;
}

/// Among the items behind the sorted part, the one whose index is nearest.
Triangle2* VertexVault::triangleFromTail(std::uint32_t idx) const
{
    Triangle2* pBest = nullptr;
    std::uint32_t bestDistance = 0;
    for (std::size_t i = numSorted; i < vItems.size(); ++i) {
        Triangle2* const pT = triangleAround(i);
        if (pT == nullptr) continue;
        const std::uint32_t distance = vItems[i].idx < idx ? idx - vItems[i].idx : vItems[i].idx - idx;
        if (pBest == nullptr || distance < bestDistance) {
            pBest = pT;
            bestDistance = distance;
        }
    }
    return pBest;
}

bool VertexVault::getThreeInitialPoints(Point2*& p0, Point2*& p1, Point2*& p2)
{
    if (vItems.size() < 3) return false;
    LUMO_CHECK(!bFullDimensional, "!bFullDimensional");
    const auto nextActive = [this](std::size_t i) {
        while (i < vItems.size() && !vItems[i].bActive) {
            ++i;
        }
        return i;
    };
    const std::size_t i0 = nextActive(0);
    if (i0 == vItems.size()) return false;
    p0 = vItems[i0].pVtx;
    std::size_t i1 = nextActive(i0 + 1);
    while (i1 < vItems.size() && *vItems[i1].pVtx == *p0) {
        i1 = nextActive(i1 + 1);
    }
    if (i1 == vItems.size()) return false;
    p1 = vItems[i1].pVtx;
    // Items that an earlier call found on one line still are; only what came since has to be asked.
    for (std::size_t i = nextActive(std::max(i1 + 1, numKnownCollinear)); i < vItems.size(); i = nextActive(i + 1)) {
        p2 = vItems[i].pVtx;
        const Orientation2 ori = pDt2->orbiTest.getOrientation2(p0, p1, p2);
        if (ori == ORIENTATION2_COLLINEAR) continue;
        if (ori == ORIENTATION2_CW) std::swap(p1, p2);
        return true;
    }
    numKnownCollinear = vItems.size();
    return false;
}

/// Position of the active item with p's position, and with the vertex pVtx unless that is null.
std::size_t VertexVault::findActive(const Point2& p, std::uint32_t idx, const Point2* pVtx) const
{
    const auto isIt = [this, &p, pVtx](std::size_t i) {
        const IdxVtxAct& item = vItems[i];
        return item.bActive && (pVtx == nullptr ? *item.pVtx == p : item.pVtx == pVtx);
    };
    if (pVtx != nullptr) {
        // After one bulk insertion, items and vertices stand in the same order.
        const std::size_t guess = pDt2->poolVertices.indexOf(pVtx);
        if (guess < vItems.size() && isIt(guess)) return guess;
    }
    if (numSorted != 0) {
        for (std::size_t i = lowerBound(idx); i < numSorted && vItems[i].idx <= idx; ++i) {
            if (isIt(i)) return i;
        }
    }
    // The tail was appended since the last sort; the sorted part is scanned as a last resort, because a sort in four
    // parts leaves inactive items in between.
    for (std::size_t i = vItems.size(); i-- > 0;) {
        if (isIt(i)) return i;
    }
    return notFound;
}

std::size_t VertexVault::getIdxOfActiveVtx(const Point2* pVtx) const
{
    const std::size_t pos = findActive(*pVtx, pDt2->hilbertCurve.getIndex(*pVtx), pVtx);
    if (pos == notFound) {
        msgError("VertexVault::getIdxOfActiveVtx", "pQuery not found");
        LUMO_CHECK(false, "false");
    }
    return pos;
}

bool VertexVault::isActive(const Point2* pVtx) const
{
    if (bFullDimensional) return pVtx->getIncidentTriangle() != nullptr;
    return !vItems.empty() && findActive(*pVtx, pDt2->hilbertCurve.getIndex(*pVtx), pVtx) != notFound;
}

Point2* VertexVault::getVertex(const Point2& p) const
{
    if (vItems.empty()) return nullptr;
    const std::size_t pos = findActive(p, pDt2->hilbertCurve.getIndex(p), nullptr);
    return pos == notFound ? nullptr : vItems[pos].pVtx;
}

Point2* VertexVault::findWaiting(const Point2& p)
{
    if (!pWaiting) {
        pWaiting = std::make_unique<WaitingPoints>();
        for (const IdxVtxAct& item : vItems) {
            if (item.bActive) pWaiting->sPoints.insert(item.pVtx);
        }
    }
    Point2 query(p);
    const auto it = pWaiting->sPoints.find(&query);
    return it == pWaiting->sPoints.end() ? nullptr : *it;
}

void VertexVault::areaChanged()
{
    pWaiting.reset();
    numKnownCollinear = 0;
}

void VertexVault::getActiveVertices(std::vector<Point2*>& vVertices) const
{
    vVertices.reserve(vVertices.size() + numActiveItems);
    for (const IdxVtxAct& item : vItems) {
        if (item.bActive) vVertices.push_back(item.pVtx);
    }
}

Bbox2 VertexVault::getBoundingBox() const
{
    Bbox2 box(nullptr);
    for (const IdxVtxAct& item : vItems) {
        if (item.bActive) {
            box.add(*item.pVtx);
        } else {
            LUMO_CHECK(item.pVtx->getIncidentTriangle() == nullptr, "pIdxVtxAct->pVtx->getIncidentTriangle()==NULL");
        }
    }
    return box;
}

Triangle2* VertexVault::getOneValidTriangle() const
{
    if (!bFullDimensional) {
        msgWarning("getOneValidTriangle()", "Triangulation is not 2D, returning NULL");
        return nullptr;
    }
    for (const IdxVtxAct& item : vItems) {
        if (item.bActive) return item.pVtx->getIncidentTriangle();
    }
    msgWarning("getOneValidTriangle()", "No valid triangle found");
    return nullptr;
}

// ---- duplicates -----------------------------------------------------------------------------------------------------

void VertexVault::registerDup(Point2* pDup, Point2* pExisting)
{
    if (pDup == pExisting) return;
    const std::lock_guard<std::mutex> lock(mtxDup);
    vRedundant2Unique.emplace_back(pDup, pExisting);
}

void VertexVault::registerDups(const Dups& vDups)
{
    const std::lock_guard<std::mutex> lock(mtxDup);
    vRedundant2Unique.insert(vRedundant2Unique.end(), vDups.begin(), vDups.end());
}

/// Middle-first insertion may meet the later of several equal points first. The vertex that is in the mesh stays, but
/// the height and the custom index that count are those of the earliest point: in a bulk, equal points stand in memory
/// in input order.
void VertexVault::keepEarliestData()
{
    const std::less<const Point2*> before;
    std::sort(vRedundant2Unique.begin(), vRedundant2Unique.end(), [&before](const auto& a, const auto& b) {
        return a.second != b.second ? before(a.second, b.second) : before(a.first, b.first);
    });
    const auto isInBulk = [this, &before](const Point2* p) { return !before(p, pBulkBegin) && before(p, pBulkEnd); };
    const Point2* pLastKept = nullptr;
    for (const auto& [pDup, pKept] : vRedundant2Unique) {
        if (pKept == pLastKept) continue;
        pLastKept = pKept;
        if (!before(pDup, pKept) || !isInBulk(pDup) || !isInBulk(pKept)) continue;
        const Point2 earliest(*pDup);
        pDup->setCoords(pKept->x(), pKept->y(), pKept->z());
        pDup->setCustomIndex(pKept->getCustomIndex());
        pKept->setCoords(earliest.x(), earliest.y(), earliest.z());
        pKept->setCustomIndex(earliest.getCustomIndex());
    }
}

void VertexVault::deactivate(IdxVtxAct& item)
{
    item.bActive = false;
    --numActiveItems;
}

Point2* VertexVault::treatOneDupGetHandle(const Point2* pDup)
{
    LUMO_CHECK(bFullDimensional, "bFullDimensional");
    LUMO_CHECK(vRedundant2Unique.size() == 1, "mRedundant2UniqueVtx.size()==1");
    IdxVtxAct& lastItem = vItems.back();
    LUMO_CHECK(pDup == lastItem.pVtx, "pDup==pLastItem->pVtx");
    LUMO_CHECK(vRedundant2Unique.front().first == pDup, "q_it!=mRedundant2UniqueVtx.end()");
    deactivate(lastItem);
    Point2* const pKept = vRedundant2Unique.front().second;
    vRedundant2Unique.clear();
    return pKept;
}

/// Rewrites the handles of duplicates; the number of handles rewritten. The record of duplicates must be sorted.
std::size_t VertexVault::replaceDupHandles(std::vector<Point2*>& vHandles) const
{
    std::size_t numFound = 0;
    for (Point2*& pHandle : vHandles) {
        if (pHandle->getIncidentTriangle() != nullptr) continue;
        const auto it = std::lower_bound(vRedundant2Unique.begin(), vRedundant2Unique.end(), pHandle,
                                         [](const std::pair<Point2*, Point2*>& entry, const Point2* p) {
                                             return std::less<const Point2*>()(entry.first, p);
                                         });
        if (it == vRedundant2Unique.end() || it->first != pHandle) continue;
        LUMO_CHECK(*pHandle == *it->second, "**it==*pExistingVtx");
        pHandle = it->second;
        ++numFound;
    }
    return numFound;
}

void VertexVault::treatDupsAndHandles(std::vector<Point2*>* pHandles)
{
    if (!bFullDimensional) {
        LUMO_CHECK(vRedundant2Unique.empty(), "mRedundant2UniqueVtx.empty()");
        findDupsWithoutArea();
    }
    if (vRedundant2Unique.empty()) return;
    if (bFullDimensional) keepEarliestData();

    std::sort(vRedundant2Unique.begin(), vRedundant2Unique.end(),
              [](const auto& a, const auto& b) { return std::less<Point2*>()(a.first, b.first); });
    if (pHandles != nullptr) {
        const std::size_t numFoundInHandles = replaceDupHandles(*pHandles);
        LUMO_CHECK(!bFullDimensional || vRedundant2Unique.size() == numFoundInHandles,
                   "mRedundant2UniqueVtx.size()==numFoundInHandles");
    }
    if (bFullDimensional) {
        std::size_t numFoundInIdxVtxAct = 0;
        for (std::size_t i = numSorted; i < vItems.size(); ++i) {
            if (!vItems[i].bActive || vItems[i].pVtx->getIncidentTriangle() != nullptr) continue;
            deactivate(vItems[i]);
            ++numFoundInIdxVtxAct;
        }
        if (vRedundant2Unique.size() != numFoundInIdxVtxAct) {
            std::cout << "BUG: mRedundant2UniqueVtx.size()=" << vRedundant2Unique.size() << '\n'
                      << "     numFoundInIdxVtxAct=" << numFoundInIdxVtxAct << '\n';
        }
        LUMO_CHECK(vRedundant2Unique.size() == numFoundInIdxVtxAct, "mRedundant2UniqueVtx.size()==numFoundInIdxVtxAct");
        vRedundant2Unique.clear();
    } else {
        vRedundant2Unique.clear();
        sortIfNeeded(false);
    }
}

/// Without triangles no walk finds duplicates. The earliest item wins; in a bulk, items with equal points stand in input
/// order, and a sort along the curve, which brings equal points together, is stable.
void VertexVault::findDupsWithoutArea()
{
    sortIfNeeded(false);
    std::vector<IdxVtxAct*> vRun; // active items with one key
    for (std::size_t i = 0; i < vItems.size();) {
        vRun.clear();
        const std::uint32_t idx = vItems[i].idx;
        for (; i < vItems.size() && (vItems[i].idx == idx || !vItems[i].bActive); ++i) {
            if (vItems[i].bActive) vRun.push_back(&vItems[i]);
        }
        if (vRun.size() > 1) findDupsInRun(vRun);
    }
}

void VertexVault::findDupsInRun(std::vector<IdxVtxAct*>& vRun)
{
    std::stable_sort(vRun.begin(), vRun.end(),
                     [](const IdxVtxAct* pA, const IdxVtxAct* pB) { return *pA->pVtx < *pB->pVtx; });
    const IdxVtxAct* pKept = vRun.front();
    for (IdxVtxAct* pItem : vRun) {
        if (pItem == pKept) continue;
        if (*pItem->pVtx != *pKept->pVtx) {
            pKept = pItem;
            continue;
        }
        deactivate(*pItem);
        vRedundant2Unique.emplace_back(pItem->pVtx, pKept->pVtx);
    }
}

void VertexVault::replaceDuplicateVertexHandlesFullDim(std::vector<Point2*>& vHandles)
{
    std::size_t numReplaced = 0;
    for (Point2*& pHandle : vHandles) {
        if (pHandle->getIncidentTriangle() != nullptr) continue;
        if (numReplaced == 0) sortIfNeeded(false);
        Point2* const pKept = getVertex(*pHandle);
        LUMO_CHECK(pKept != nullptr, "q_it!=vIdxVtxAct.end()");
        pHandle = pKept;
        ++numReplaced;
    }
    if (numReplaced > 500 && static_cast<double>(numReplaced) > 0.2 * static_cast<double>(vHandles.size())) {
        msgWarning("Lumo_2D", "possible slow down due to massive duplicate vertex insertion");
    }
}

// ---- upkeep ---------------------------------------------------------------------------------------------------------

void VertexVault::sortIfNeeded(bool bConditional)
{
    if (bConditional) {
        const auto sorted = static_cast<double>(numSorted);
        const bool bFewNew = static_cast<double>(vItems.size()) <= 1.35 * sorted;
        const bool bFewRemoved = static_cast<double>(numRemoved) <= 0.5 * sorted || numRemoved < 1001;
        if (bFewNew && bFewRemoved) return;
    }
    numRemoved = 0;
    if (numKnownCollinear < vItems.size()) numKnownCollinear = 0; // the known ones don't stay in front
    sortItems(vItems, pDt2->numCPU);
    while (!vItems.empty() && !vItems.back().bActive) {
        vItems.pop_back();
    }
    numKnownCollinear = std::min(numKnownCollinear, vItems.size());
    numSorted = vItems.size();
    buildLookup();
}

void VertexVault::reindexAll()
{
    for (IdxVtxAct& item : vItems) {
        item.idx = pDt2->hilbertCurve.getIndex(*item.pVtx);
    }
    sortIfNeeded(false);
}

void VertexVault::setInactive(Point2* pVtx)
{
    LUMO_CHECK(!vItems.empty(), "!vIdxVtxAct.empty()");
    const std::size_t vertexPos = getIdxOfActiveVtx(pVtx);
    LUMO_CHECK(vItems[vertexPos].pVtx == pVtx, "vIdxVtxAct[vertexPos]->pVtx==pRemovedVertex");
    LUMO_CHECK(vItems[vertexPos].bActive, "vIdxVtxAct[vertexPos]->bActive==true");
    ++numRemoved;
    pVtx->setIncidentTriangle(nullptr);
    deactivate(vItems[vertexPos]);
    areaChanged();
    // Without area all items are kept in order. Where they are already, a gap more doesn't hurt that, and sorting after
    // every one of many removals would cost the square of their number.
    if (!bFullDimensional) sortIfNeeded(numSorted == vItems.size());
}

void VertexVault::dropPointsWithoutTriangle(std::size_t firstToDrop)
{
    vRedundant2Unique.clear();
    for (std::size_t i = firstToDrop; i < vItems.size(); ++i) {
        if (vItems[i].bActive && vItems[i].pVtx->getIncidentTriangle() == nullptr) deactivate(vItems[i]);
    }
}

// ---- the fake box ---------------------------------------------------------------------------------------------------

namespace
{

/// Moves each bound to the next double; enlargeRanges() lets the predicates know.
void stepOutwards(Bbox2& box)
{
    constexpr double limit = std::numeric_limits<double>::max();
    box.setMinX(std::nextafter(box.get_minX(), -limit));
    box.setMinY(std::nextafter(box.get_minY(), -limit));
    box.setMaxX(std::nextafter(box.get_maxX(), limit));
    box.setMaxY(std::nextafter(box.get_maxY(), limit));
    box.enlargeRanges(1.0);
}

} // namespace

bool VertexVault::createFakeBox(const Bbox2& box)
{
    Bbox2 outer(box);
    outer.inflateIfDegenerate(1.0);
    outer.enlargeRanges(1.01);
    // A box of a few steps of the doubles does not grow by a hundredth.
    if (outer.get_minX() == box.get_minX() || outer.get_minY() == box.get_minY() ||
        outer.get_maxX() == box.get_maxX() || outer.get_maxY() == box.get_maxY()) {
        stepOutwards(outer);
    }
    // At the end of the doubles the box could not keep its distance from the points.
    constexpr double limit = std::numeric_limits<double>::max();
    if (outer.get_minX() == -limit || outer.get_minY() == -limit || outer.get_maxX() == limit ||
        outer.get_maxY() == limit) {
        return false;
    }
    std::vector<Point2> vCorners;
    outer.getCorners(vCorners);
    std::vector<std::unique_ptr<Point2>> vHandles; // all four, or none
    for (const Point2& corner : vCorners) {
        vHandles.push_back(std::make_unique<Point2>(corner));
    }
    vFakeBoxHandles.swap(vHandles);
    if (bFullDimensional) {
        for (const auto& pCorner : vFakeBoxHandles) {
            Point2* pVtx = pCorner.get();
            pDt2->insertOneVertex(&pVtx, getCloseTriangle(pDt2->hilbertCurve.getIndex(*pVtx)));
        }
        return true;
    }
    bFullDimensional = true;
    Point2* const c0 = vFakeBoxHandles[0].get();
    Point2* const c2 = vFakeBoxHandles[2].get();
    Triangle2* const pT0 = pDt2->getNewTriangle(c0, vFakeBoxHandles[1].get(), c2);
    Triangle2* const pT1 = pDt2->getNewTriangle(c0, c2, vFakeBoxHandles[3].get());
    pT0->setOppTriangle(1, pT1);
    pT1->setOppTriangle(2, pT0);
    return true;
}

void VertexVault::removeFakeBox()
{
    LUMO_CHECK(vFakeBoxHandles.size() == 4, "vFakeBoxHandles.size()==4");
    for (const auto& pCorner : vFakeBoxHandles) {
        // The last corners have no triangle any more when the points behind them have no area.
        if (pCorner->getIncidentTriangle() != nullptr) pDt2->removeHullVertex(pCorner.get(), false);
    }
    vFakeBoxHandles.clear();
    areaChanged();
}

Point2* VertexVault::getFakeBoxCorner(std::size_t i) const
{
    LUMO_CHECK(vFakeBoxHandles.size() > i, "vFakeBoxHandles.size()>i");
    return vFakeBoxHandles[i].get();
}

// ---- export ---------------------------------------------------------------------------------------------------------

void VertexVault::export_fetchCoordinates(double* aCoords) const
{
    for (const IdxVtxAct& item : vItems) {
        if (!item.bActive) continue;
        item.pVtx->xyz(aCoords[0], aCoords[1], aCoords[2]);
        aCoords += 3;
    }
}

void VertexVault::export_fetchCustomIndices(std::int32_t* aCustomIndices) const
{
    for (const IdxVtxAct& item : vItems) {
        if (item.bActive) *aCustomIndices++ = item.pVtx->getCustomIndex();
    }
}

// ---- checks ---------------------------------------------------------------------------------------------------------

bool VertexVault::checkVault() const
{
    std::size_t numViolations = 0;
    const auto report = [&numViolations](const IdxVtxAct& item, const char* what) {
        std::ostringstream text;
        text << what << ": " << *item.pVtx;
        msgError("VertexVault::checkVault()", text.str());
        ++numViolations;
    };
    std::size_t numActiveFound = 0;
    for (const IdxVtxAct& item : vItems) {
        numActiveFound += item.bActive ? 1U : 0U;
        const Triangle2* const pT = item.pVtx->getIncidentTriangle();
        if (!item.bActive && pT != nullptr) report(item, "inactive vertex with a triangle");
        if (item.bActive && bFullDimensional && pT == nullptr) report(item, "active vertex without a triangle");
        if (item.bActive && pT != nullptr && !pT->hasVertex(item.pVtx))
            report(item, "incident triangle without the vertex");
        if (item.bActive && !bFullDimensional && pT != nullptr) report(item, "triangle without area");
    }
    if (numActiveFound != numActiveItems || !dupIsClean()) {
        msgError("VertexVault::checkVault()", "counts of active items or duplicates are wrong");
        ++numViolations;
    }
    return numViolations == 0;
}

std::size_t VertexVault::bytes() const
{
    return vItems.capacity() * sizeof(IdxVtxAct) + vFirstOfStretch.capacity() * sizeof(std::size_t);
}

} // namespace ORBI_LUMO25D
