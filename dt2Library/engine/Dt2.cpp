#include "engine/Dt2.h"

#include "geometry/RoundToNearest.h"
#include "support/check.h"
#include "support/messages.h"

#include <algorithm>
#include <chrono>
#include <cmath>
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
    : vertexVault(this), bFullDimensional(vertexVault.bFullDimensional), bbox(&orbiTest), progress("DT2")
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
           vDeadTriangles.capacity() * sizeof(Triangle2*) + vRemovedVertices.capacity() * sizeof(Point2*);
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
    if (admit(vInputPoints.begin(), vInputPoints.end())) rescale();
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

/// What all bulk insertions share: append(numPreExisting) puts the points into the vault, and fills the handles.
template <class AppendToVault>
void Dt2::insertBulk(const char* stepName, std::size_t numPoints, std::vector<Point2*>* pHandles, bool bFakeBox,
                     const AppendToVault& append)
{
    // Points that wait without area are part of this bulk: with the fake box they get area now.
    const bool bHadArea = bFullDimensional;
    poolTriangles.reserve(2 * numPoints + 3);
    if (bFakeBox) bFakeBox = vertexVault.createFakeBox(bbox);
    progress.start(stepName, tenPercentMore(numPoints));
    try {
        std::size_t numPreExisting = 0;
        append(numPreExisting);
        progress.step(numPoints / 10);
        if (!bFullDimensional) {
            createFullDimTriangle(numPreExisting);
        } else {
            triangulateNewItems(bHadArea ? numPreExisting : 0, numPreExisting);
        }
    } catch (...) {
        giveUpBulk();
        throw;
    }
    vertexVault.treatDupsAndHandles(pHandles);
    LUMO_CHECK(vertexVault.dupIsClean(), "vertexVault.dupIsClean()");
    vertexVault.sortIfNeeded(true);
    progress.finish();
    if (bFakeBox) vertexVault.removeFakeBox();
}

/// Inserts the items that wait since before this bulk, then the new ones: so the older of two equal points is first.
void Dt2::triangulateNewItems(std::size_t firstWaiting, std::size_t firstNew)
{
    const IdxVtxAct* const pItems = vertexVault.begin();
    if (firstWaiting != firstNew) {
        triangulateRange(pItems + firstWaiting, pItems + firstNew,
                         vertexVault.getCloseTriangle(pItems[firstWaiting].idx));
    }
    triangulateRange(pItems + firstNew, vertexVault.end(), vertexVault.getCloseTriangle(pItems[firstNew].idx));
}

/// A subscriber may throw in the middle of a bulk: what is in the mesh stays, the other points are dropped.
void Dt2::giveUpBulk()
{
    vertexVault.dropPointsWithoutTriangle();
    vertexVault.sortIfNeeded(true);
    if (vertexVault.hasFakeBox()) vertexVault.removeFakeBox();
}

void Dt2::insertToVVault(const std::vector<Point2>& vInputPoints, std::vector<Point2*>* pHandles)
{
    LUMO_CHECK(vertexVault.dupIsClean(), "vertexVault.dupIsClean()");
    if (admit(vInputPoints.begin(), vInputPoints.end())) rescale();
    std::size_t numPreExisting = 0;
    vertexVault.addVertices(vInputPoints, pHandles, numPreExisting);
    LUMO_CHECK(pHandles == nullptr || vInputPoints.size() == pHandles->size(),
               "vInputPoints.size()==pVHandles->size()");
    vertexVault.treatDupsAndHandles(pHandles);
    LUMO_CHECK(vertexVault.dupIsClean(), "vertexVault.dupIsClean()");
    vertexVault.sortIfNeeded(false);
}

} // namespace ORBI_LUMO25D
