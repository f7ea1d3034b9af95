#include "engine/Dt2.h"

#include "cloud/CloudPrepareImpl.h"
#include "constraints/ConstraintMgr.h"
#include "core/CoordinateRange.h"
#include "core/Stretches.h"
#include "engine/ConstraintInserter.h"
#include "geometry/RoundToNearest.h"
#include "support/check.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <iterator>
#include <limits>
#include <thread>

namespace ORBI_LUMO25D
{

namespace
{

/// Bits of a curve index: 15 for each axis.
constexpr unsigned numCurveBits = 30;

std::size_t tenPercentMore(std::size_t n)
{
    return static_cast<std::size_t>(1.1 * static_cast<double>(n));
}

} // namespace

// ---- life and settings ----------------------------------------------------------------------------------------------

Dt2::Dt2(std::size_t numExpectedVertices)
    : vertexVault(this), bFullDimensional(vertexVault.bFullDimensional), bbox(&orbiTest),
      pConstraintMgr(std::make_unique<ConstraintMgr>(this)), progress("DT2"),
      pConstraintInserter(std::make_unique<ConstraintInserter>(*this))
{
    const std::size_t n = std::max<std::size_t>(numExpectedVertices, 3);
    poolVertices.init(n, -1);
    poolTriangles.init(2 * n + 10, -1);
}

Dt2::~Dt2() = default;

int Dt2::setNumCPU(int n)
{
    if (n == 0) n = static_cast<int>(std::thread::hardware_concurrency());
    numCPU = std::max(n, 1);
    return numCPU;
}

void Dt2::setFastMode(bool bFast)
{
    bFastMode = bFast;
    starRepair.setFastMode(bFast);
}

void Dt2::setDev(const char* s, int i, double d)
{
    mDev[s] = {i, d};
}

std::size_t Dt2::numberOfTriangles() const
{
    const std::size_t numAllT = poolTriangles.size();
    const std::size_t numDeadT = vDeadTriangles.size();
    LUMO_CHECK(numDeadT <= numAllT, "numDeadT<=numAllT");
    return numAllT - numDeadT;
}

double Dt2::measureTriangulationTime(const std::vector<Point2>& vPoints) const
{
    Dt2 temporary(3);
    temporary.setNumCPU(numCPU);
    // A clock of its own: the named stopwatches are one map for the whole process, and several triangulations may be
    // measured at a time.
    const auto start = std::chrono::steady_clock::now();
    temporary.insertVector(vPoints, nullptr);
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

std::size_t Dt2::bytes() const
{
    return poolTriangles.bytes() + poolVertices.bytes() + vertexVault.bytes() +
           vDeadTriangles.capacity() * sizeof(Triangle2*) + vRemovedVertices.capacity() * sizeof(Point2*) +
           pConstraintMgr->bytes();
}

// ---- the working box ------------------------------------------------------------------------------------------------

/// Notes coordinates that are about to come in. Returns whether the box changed.
template <class Iterator>
bool Dt2::admit(Iterator first, Iterator last)
{
    bool bChanged = false;
    for (; first != last; ++first) {
        bChanged = bbox.add(*first) || bChanged;
        starRepair.admit(first->x());
        starRepair.admit(first->y());
    }
    return bChanged;
}

/// The same for many points, on several threads.
bool Dt2::admitPoints(const std::vector<Point2>& vPoints)
{
    std::vector<CoordinateRange> vParts(threadsForScan(vPoints.size(), numCPU));
    forStretches(vPoints.size(), vParts.size(), [&](const Stretch& s) {
        CoordinateRange range;
        for (std::size_t i = s.begin; i < s.end; ++i) {
            range.add(vPoints[i]);
        }
        vParts[s.number] = range;
    });
    bool bChanged = false;
    for (const CoordinateRange& part : vParts) {
        bChanged = admitRange(part) || bChanged;
    }
    return bChanged;
}

bool Dt2::admitRange(const CoordinateRange& range)
{
    starRepair.admit(range.smallestSize);
    const bool bLower = bbox.add(range.box.getMinPoint());
    return bbox.add(range.box.getMaxPoint()) || bLower;
}

bool Dt2::admitCoordinates(std::size_t n, const double* aCoordinates)
{
    for (std::size_t i = 0; i < n; ++i) {
        starRepair.admit(aCoordinates[3 * i]);
        starRepair.admit(aCoordinates[3 * i + 1]);
    }
    return bbox.add(n, aCoordinates);
}

/// The box has grown: it is doubled, so that the next points find room, and every curve index is computed anew.
void Dt2::rescale()
{
    bbox.doubleTheBox();
    // The curve divides by the ranges. The working box itself stays without extent: whatever were added to it now might
    // be far too large for the points to come.
    Bbox2 curveBox(nullptr);
    curveBox.add(bbox.getMinPoint());
    curveBox.add(bbox.getMaxPoint());
    curveBox.inflateIfDegenerate(1.0);
    hilbertCurve.setRange(curveBox.get_minX(), curveBox.get_minY(), curveBox.get_maxX(), curveBox.get_maxY(),
                          numCurveBits);
    vertexVault.reindexAll();
}

// ---- the road of one point ------------------------------------------------------------------------------------------

Point2* Dt2::insert(const Point2& p)
{
    const RoundToNearest rounding;
    if (admit(&p, &p + 1)) rescale();
    if (!bFullDimensional) return insertWithoutArea(p);

    std::uint32_t idx = 0;
    Point2* pVtx = newVertex(p, idx);
    Point2* const pNew = pVtx;
    Triangle2* const pHint = vertexVault.getCloseTriangle(p);
    vertexVault.addVertex(idx, pVtx);
    insertOneVertex(&pVtx, pHint);
    if (!vertexVault.dupIsClean()) return vertexVault.treatOneDupGetHandle(pNew);
    LUMO_CHECK(pVtx->getIncidentTriangle() != nullptr, "pVtx->getIncidentTriangle()!=NULL");
    vertexVault.sortIfNeeded(true);
    return pVtx;
}

Point2* Dt2::insertWithoutArea(const Point2& p)
{
    if (Point2* const pExisting = vertexVault.findWaiting(p)) return pExisting;
    std::uint32_t idx = 0;
    Point2* const pVtx = newVertex(p, idx);
    vertexVault.addVertex(idx, pVtx);
    createFullDimTriangle(0);
    return pVtx;
}

Point2* Dt2::newVertex(const Point2& p, std::uint32_t& idx)
{
    Point2* const pVtx = new (poolVertices.alloc()) Point2(p);
    idx = hilbertCurve.getIndex(*pVtx);
    return pVtx;
}

// ---- the road of many points ----------------------------------------------------------------------------------------

void Dt2::insertVector(const std::vector<Point2>& vInputPoints, std::vector<Point2*>* pHandles)
{
    if (vInputPoints.empty()) {
        if (pHandles != nullptr) pHandles->clear();
        progress.notify(MSG_PROGRESS, "insertVector", 1.0);
        return;
    }
    const RoundToNearest rounding;
    LUMO_CHECK(vertexVault.dupIsClean(), "vertexVault.dupIsClean()");
    if (admitPoints(vInputPoints)) rescale();
    insertBulk("insert vertices", vInputPoints.size(), pHandles, numCPU > 1, [&](std::size_t& numPreExisting) {
        vertexVault.addVertices(vInputPoints, pHandles, numPreExisting);
        LUMO_CHECK(pHandles == nullptr || vInputPoints.size() == pHandles->size(),
                   "vInputPoints.size()==pVHandles->size()");
    });
}

void Dt2::insert(std::size_t numPoints, const double* aCoordinates, Point2** aHandles)
{
    LUMO_CHECK(vertexVault.dupIsClean(), "vertexVault.dupIsClean()");
    if (numPoints == 0) return;
    std::vector<Point2*> vHandles;
    if (numCPU > 1 && numPoints >= 1000) {
        std::vector<Point2> vPoints;
        vPoints.reserve(numPoints);
        for (std::size_t i = 0; i < numPoints; ++i) {
            vPoints.emplace_back(aCoordinates[3 * i], aCoordinates[3 * i + 1], aCoordinates[3 * i + 2]);
        }
        insertVector(vPoints, aHandles == nullptr ? nullptr : &vHandles);
    } else {
        const RoundToNearest rounding;
        if (admitCoordinates(numPoints, aCoordinates)) rescale();
        if (aHandles != nullptr) vHandles.resize(numPoints);
        insertBulk("insert", numPoints, aHandles == nullptr ? nullptr : &vHandles, false,
                   [&](std::size_t& numPreExisting) {
                       vertexVault.addCoordinates(numPoints, aCoordinates, vHandles.empty() ? nullptr : vHandles.data(),
                                                  numPreExisting);
                   });
    }
    std::copy(vHandles.begin(), vHandles.end(), aHandles);
}

void Dt2::insert(CloudPrepare* pCloudPrepare, bool bClear)
{
    CloudPrepareImpl& cloud = *pCloudPrepare->getImpl();
    const std::size_t numPoints = cloud.getPoints().size();
    if (numPoints == 0) {
        progress.notify(MSG_PROGRESS, "insert(CloudPrepare*,bool&)", 1.0);
        return;
    }
    const RoundToNearest rounding;
    LUMO_CHECK(vertexVault.dupIsClean(), "vertexVault.dupIsClean()");
    const CloudBounds bounds = cloud.updateBounds();
    const Point2 aCorners[] = {{bounds.minX, bounds.minY, 0.0}, {bounds.maxX, bounds.maxY, 0.0}};
    if (admit(std::begin(aCorners), std::end(aCorners))) rescale();
    insertBulk("insert vertices", numPoints, nullptr, numCPU > 1, [&](std::size_t& numPreExisting) {
        PointBlocks points = bClear ? cloud.takePoints() : PointBlocks();
        // Very small coordinates switch filters off: every one has to be seen.
        const PointBlocks& source = bClear ? points : cloud.getPoints();
        for (std::size_t i = 0; i < numPoints; ++i) {
            starRepair.admit(source[i].x);
            starRepair.admit(source[i].y);
        }
        if (bClear) {
            vertexVault.drainCloud(points, numPreExisting);
        } else {
            vertexVault.addCloud(cloud.getPoints(), numPreExisting);
        }
    });
}

/// What all bulk insertions share: append(numPreExisting) puts the points into the vault, and fills the handles.
template <class AppendToVault>
void Dt2::insertBulk(const char* stepName, std::size_t numPoints, std::vector<Point2*>* pHandles, bool bFakeBox,
                     const AppendToVault& append)
{
    // Points that wait without area are part of this bulk: with the fake box they get area now.
    const std::size_t numWaiting = bFullDimensional ? 0 : vertexVault.numItems();
    poolTriangles.reserve(2 * numPoints + 3);
    progress.start(stepName, tenPercentMore(numPoints));
    try {
        if (bFakeBox) {
            const Progress::Muted muted(progress);
            vertexVault.createFakeBox(bbox);
        }
        std::size_t numPreExisting = 0;
        append(numPreExisting);
        progress.step(numPoints / 10);
        triangulateNewItems(numPreExisting - numWaiting, numPreExisting);
        vertexVault.treatDupsAndHandles(pHandles);
        LUMO_CHECK(vertexVault.dupIsClean(), "vertexVault.dupIsClean()");
        vertexVault.sortIfNeeded(true);
        if (vertexVault.hasFakeBox()) vertexVault.removeFakeBox();
    } catch (...) {
        giveUpBulk(numWaiting);
        throw;
    }
    progress.finish();
}

/// Inserts the items that wait since before this bulk, then the new ones: so the older of two equal points is first.
void Dt2::triangulateNewItems(std::size_t firstWaiting, std::size_t firstNew)
{
    const IdxVtxAct* const pItems = vertexVault.begin();
    if (bFullDimensional && firstWaiting != firstNew) {
        triangulateRange(pItems + firstWaiting, pItems + firstNew,
                         vertexVault.getCloseTriangle(pItems[firstWaiting].idx));
    }
    if (bFullDimensional) {
        triangulateRange(pItems + firstNew, vertexVault.end(), vertexVault.getCloseTriangle(pItems[firstNew].idx));
    }
    if (!bFullDimensional) {
        // Not yet, or not without the fake box that a range has given up: a line has no duplicates that a walk found.
        vertexVault.forgetDups(0);
        createFullDimTriangle(firstNew);
    }
}

/// A subscriber may throw in the middle of a bulk, or memory may run out, on a worker, too: what is in the mesh stays, the
/// other points are dropped, and the triangulation can be used as before. (A vertex whose repair broke off for want of
/// memory leaves edges that aren't Delaunay.) The first numWaiting items go into the mesh or, if there is none, wait on:
/// earlier calls have given the caller handles of them, and segments have them for ends. Should memory be wanting even for
/// that or for the removal of the fake box, the triangulation can only be destroyed.
void Dt2::giveUpBulk(std::size_t numWaiting)
{
    if (vertexVault.hasFakeBox()) vertexVault.removeFakeBox();
    if (bFullDimensional && numWaiting > 0) {
        const Progress::Muted muted(progress);
        const IdxVtxAct* const pItems = vertexVault.begin();
        triangulateRec(pItems, pItems + numWaiting, vertexVault.getCloseTriangle(pItems->idx));
    }
    vertexVault.dropPointsWithoutTriangle(numWaiting);
    // Last, because it wants memory; without it, look-ups are slow.
    vertexVault.sortIfNeeded(true);
}

void Dt2::insertToVVault(const std::vector<Point2>& vInputPoints, std::vector<Point2*>* pHandles)
{
    LUMO_CHECK(vertexVault.dupIsClean(), "vertexVault.dupIsClean()");
    if (admitPoints(vInputPoints)) rescale();
    std::size_t numPreExisting = 0;
    vertexVault.addVertices(vInputPoints, pHandles, numPreExisting);
    LUMO_CHECK(pHandles == nullptr || vInputPoints.size() == pHandles->size(),
               "vInputPoints.size()==pVHandles->size()");
    vertexVault.treatDupsAndHandles(pHandles);
    LUMO_CHECK(vertexVault.dupIsClean(), "vertexVault.dupIsClean()");
    vertexVault.sortIfNeeded(false);
}

void Dt2::adoptVertices(Point2* aVertices, std::size_t n, const CoordinateRange& range)
{
    if (admitRange(range)) rescale();
    vertexVault.adoptVertices(aVertices, n);
}

} // namespace ORBI_LUMO25D
