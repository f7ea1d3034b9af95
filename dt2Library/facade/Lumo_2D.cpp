#include "Lumo_2D.h"

#include "core/Stretches.h"
#include "engine/Dt2.h"
#include "geometry/finite.h"
#include "support/messages.h"
#include "zones/triangleSets.h"

#include "Edge2.h"
#include "MeshGenParams.h"
#include "Segment2.h"
#include "Visualizer3.h"
#include "freeFunctions.h"

#include <algorithm>
#include <cmath>
#include <iostream>

namespace ORBI_LUMO25D
{

namespace
{

void reportRefused(std::size_t numRefused)
{
    msgError("Lumo_2D::insert()",
             std::to_string(numRefused) + " point(s) refused: a coordinate is not a finite number");
}

/// Puts the handles of the accepted points back to the positions of the input; refused points get NULL.
template <class IsAccepted>
void spreadHandles(std::size_t numPoints, const IsAccepted& isAccepted, const std::vector<Point2*>& vAccepted,
                   Point2** aHandles)
{
    auto it = vAccepted.begin();
    for (std::size_t i = 0; i < numPoints; ++i) {
        aHandles[i] = isAccepted(i) ? *it++ : nullptr;
    }
}

} // namespace

// ---- life -----------------------------------------------------------------------------------------------------------

Lumo_2D::Lumo_2D(std::size_t numExpectedVertices)
{
    initLumo(numExpectedVertices);
}

Lumo_2D::~Lumo_2D()
{
    delete pImpl;
}

void Lumo_2D::initLumo(std::size_t numExpectedVertices)
{
    pImpl = new Dt2(numExpectedVertices);
}

// ---- points in and out ----------------------------------------------------------------------------------------------

Point2* Lumo_2D::insert(const Point2& p)
{
    if (!isFinite25D(p)) {
        reportRefused(1);
        return nullptr;
    }
    return pImpl->insert(p);
}

namespace
{

/// Copies the points that are finite; false when all of them are, and nothing was done.
bool copyFiniteOnly(const std::vector<Point2>& vPoints, std::vector<Point2>& vAccepted, int numCPU)
{
    const auto areFinite = [&vPoints](const Stretch& s) {
        const auto it = vPoints.begin();
        return std::all_of(it + static_cast<std::ptrdiff_t>(s.begin), it + static_cast<std::ptrdiff_t>(s.end),
                           [](const Point2& p) { return isFinite25D(p); });
    };
    if (allStretches(vPoints.size(), threadsForScan(vPoints.size(), numCPU), areFinite)) return false;
    std::copy_if(vPoints.begin(), vPoints.end(), std::back_inserter(vAccepted),
                 [](const Point2& p) { return isFinite25D(p); });
    reportRefused(vPoints.size() - vAccepted.size());
    return true;
}

/// Inserts the points that are finite; false when all of them are, and nothing was done.
bool insertFiniteOnly(Dt2& dt2, const std::vector<Point2>& vPoints, std::vector<Point2*>* pHandles)
{
    std::vector<Point2> vAccepted;
    if (!copyFiniteOnly(vPoints, vAccepted, dt2.numCPU)) return false;
    const auto isAccepted = [&vPoints](std::size_t i) { return isFinite25D(vPoints[i]); };
    std::vector<Point2*> vAcceptedHandles;
    dt2.insertVector(vAccepted, pHandles == nullptr ? nullptr : &vAcceptedHandles);
    if (pHandles != nullptr) {
        pHandles->resize(vPoints.size());
        spreadHandles(vPoints.size(), isAccepted, vAcceptedHandles, pHandles->data());
    }
    return true;
}

} // namespace

void Lumo_2D::insert(const std::vector<Point2>& vPoints)
{
    if (!insertFiniteOnly(*pImpl, vPoints, nullptr)) pImpl->insertVector(vPoints, nullptr);
}

void Lumo_2D::insert(const std::vector<Point2>& vPoints, std::vector<Point2*>& vHandles)
{
    if (!insertFiniteOnly(*pImpl, vPoints, &vHandles)) pImpl->insertVector(vPoints, &vHandles);
}

void Lumo_2D::insert(int numPoints, double* aCoordinates, Point2** aHandles)
{
    if (numPoints < 0 || (numPoints > 0 && aCoordinates == nullptr)) {
        msgError("Lumo_2D::insert()", "negative number of points or no coordinates, nothing inserted");
        return;
    }
    const auto n = static_cast<std::size_t>(numPoints);
    const auto isAccepted = [aCoordinates](std::size_t i) {
        const double* const p = aCoordinates + 3 * i;
        return std::isfinite(p[0]) && std::isfinite(p[1]) && std::isfinite(p[2]);
    };
    std::vector<double> vAccepted;
    std::size_t numAccepted = 0;
    while (numAccepted < n && isAccepted(numAccepted)) {
        ++numAccepted;
    }
    if (numAccepted == n) {
        pImpl->insert(n, aCoordinates, aHandles);
        return;
    }
    for (std::size_t i = 0; i < n; ++i) {
        if (isAccepted(i)) vAccepted.insert(vAccepted.end(), aCoordinates + 3 * i, aCoordinates + 3 * i + 3);
    }
    numAccepted = vAccepted.size() / 3;
    reportRefused(n - numAccepted);
    std::vector<Point2*> vAcceptedHandles(numAccepted);
    pImpl->insert(numAccepted, vAccepted.data(), aHandles == nullptr ? nullptr : vAcceptedHandles.data());
    if (aHandles != nullptr) spreadHandles(n, isAccepted, vAcceptedHandles, aHandles);
}

void Lumo_2D::insert(CloudPrepare* pCloudPrepare, bool bClear)
{
    if (pCloudPrepare == nullptr) {
        msgWarning("Lumo_2D::insert()", "no cloud given");
        return;
    }
    pImpl->insert(pCloudPrepare, bClear);
}

void Lumo_2D::remove(Point2* pVertex)
{
    pImpl->remove(pVertex);
}

// ---- constraints ----------------------------------------------------------------------------------------------------

ConstraintGraph2* Lumo_2D::createConstraint(const std::vector<Segment2>& vSegments, ConstraintInsertionStrategy cis,
                                            bool bOrientedSegments)
{
    if (vSegments.empty()) {
        msgWarning("Lumo_2D::createConstraint()", "You have not supplied any segments. Returning NULL!");
        return nullptr;
    }
    if (cis != CIS_CONFORMING_DELAUNAY && cis != CIS_CONSTRAINED_DELAUNAY &&
        cis != CIS_CONFORMING_DELAUNAY_SEGMENT_LEVEL) {
        msgError("Lumo_2D::createConstraint()", "unknown insertion strategy, returning NULL");
        return nullptr;
    }
    std::vector<Segment2> vFinite;
    const auto isAccepted = [](const Segment2& segment) { return isFinite25D(segment); };
    if (std::all_of(vSegments.begin(), vSegments.end(), isAccepted)) {
        return pImpl->createConstraint(vSegments, cis, bOrientedSegments);
    }
    std::copy_if(vSegments.begin(), vSegments.end(), std::back_inserter(vFinite), isAccepted);
    msgError("Lumo_2D::createConstraint()", std::to_string(vSegments.size() - vFinite.size()) +
                                                " segment(s) refused: a coordinate is not a finite number");
    return vFinite.empty() ? nullptr : pImpl->createConstraint(vFinite, cis, bOrientedSegments);
}

bool Lumo_2D::isConstraint(Triangle2* pT, int ith) const
{
    return pT != nullptr && pImpl->isConstraint(pT, ith);
}

bool Lumo_2D::isConstraint(Point2* pA, Point2* pB) const
{
    return pA != nullptr && pB != nullptr && pImpl->isConstraint(pA, pB);
}

bool Lumo_2D::isConstraint(Point2* pVertex) const
{
    return pVertex != nullptr && pImpl->isConstraint(pVertex);
}

ConstraintSegment2* Lumo_2D::getConstraintSegment(Point2* pA, Point2* pB) const
{
    return pA == nullptr || pB == nullptr ? nullptr : pImpl->getConstraintSegment(pA, pB);
}

void Lumo_2D::getAliveConstraintSegments(std::vector<ConstraintSegment2*>& vSegments) const
{
    pImpl->getAliveConstraintSegments(vSegments);
}

void Lumo_2D::getAliveAndDeadConstraintSegments(std::vector<ConstraintSegment2*>& vSegments) const
{
    pImpl->getAliveAndDeadConstraintSegments(vSegments);
}

void Lumo_2D::applyConstraintsAndZones()
{
    if (!hasArea()) {
        msgWarning("Lumo2D::applyConstraintsAndZones()",
                   "The triangulation has no area yet, can't apply the constraints");
        return;
    }
    pImpl->applyConstraintsAndZones();
}

// ---- knives ---------------------------------------------------------------------------------------------------------

void Lumo_2D::cutTriangles(const Point2& knifeStart, const Point2& knifeEnd, bool bTurnEdgesIntoConstraints)
{
    cutTriangles(std::vector<Segment2>{Segment2(knifeStart, knifeEnd)}, bTurnEdgesIntoConstraints);
}

void Lumo_2D::cutTriangles(const std::vector<Segment2>& vSegments, bool bTurnEdgesIntoConstraints)
{
    if (vSegments.empty()) {
        msgWarning("Lumo_2D::cutTriangles()", "no segments given");
        return;
    }
    if (bTurnEdgesIntoConstraints) {
        std::vector<ConstraintSegment2*> vCSegs;
        pImpl->CUTT_cutTriangles(vSegments, false, vCSegs);
    } else {
        std::vector<std::pair<Point2*, Point2*>> vPieces;
        pImpl->cutAlong(vSegments, vPieces);
    }
}

// ---- zones ----------------------------------------------------------------------------------------------------------

namespace
{

Zone2* reportMissing(Zone2* pZone, bool bVerbose)
{
    if (pZone == nullptr && bVerbose) {
        msgWarning("Lumo_2D::createZone(..)", "No zone created, returning NULL (bVerbose==true)");
    }
    return pZone;
}

} // namespace

Zone2* Lumo_2D::createZone(ConstraintGraph2* pConstraintGraph, ZoneLocation zoneLoc, bool bVerbose)
{
    return reportMissing(pImpl->createZone(pConstraintGraph, zoneLoc), bVerbose);
}

Zone2* Lumo_2D::createZone(const std::vector<ConstraintGraph2*>& vConstraintGraphs, ZoneLocation zoneLoc,
                           const Point2& startPoint, bool bVerbose)
{
    return reportMissing(pImpl->createZone(vConstraintGraphs, zoneLoc, startPoint), bVerbose);
}

Zone2* Lumo_2D::createZone(ConstraintGraph2* pConstraintGraph, ZoneLocation zoneLoc, const Point2& startPoint,
                           bool bVerbose)
{
    return reportMissing(pImpl->createZone(pConstraintGraph, zoneLoc, startPoint), bVerbose);
}

Zone2* Lumo_2D::createZone(const std::vector<Triangle2*>& vTriangles, bool bVerbose)
{
    return reportMissing(pImpl->createZone(vTriangles), bVerbose);
}

Zone2* Lumo_2D::createZone_cookieCutter(const std::vector<Segment2>& vSegments, bool bProtectEdges)
{
    const auto isAccepted = [](const Segment2& segment) { return isFinite25D(segment); };
    if (!std::all_of(vSegments.begin(), vSegments.end(), isAccepted)) {
        msgError("Lumo_2D::createZone_cookieCutter()", "a coordinate is not a finite number, returning NULL");
        return nullptr;
    }
    return pImpl->createZone_cookieCutter(vSegments, bProtectEdges);
}

Zone2* Lumo_2D::createZone_cookieCutter(const std::vector<Segment2*>& vSegments, bool bProtectEdges)
{
    std::vector<Segment2> vCopies;
    for (const Segment2* pSegment : vSegments) {
        if (pSegment == nullptr) {
            msgError("Lumo_2D::createZone_cookieCutter()", "a segment is NULL, returning NULL");
            return nullptr;
        }
        vCopies.push_back(*pSegment);
    }
    return createZone_cookieCutter(vCopies, bProtectEdges);
}

void Lumo_2D::deleteZone(Zone2* pZone)
{
    pImpl->deleteZone(pZone);
}

bool Lumo_2D::checkZoneQuality(Zone2* pZone, double minAngle, const char* name, const AcceptExperimentalFeature&)
{
    if (pZone == nullptr || pZone->getDelaunayTriangulation() != pImpl) {
        msgWarning("Lumo_2D::checkZoneQuality()", "no zone of this triangulation, nothing is checked");
        return false;
    }
    return pImpl->checkZoneQuality(pZone, minAngle, name);
}

// ---- segments on the surface, triangles from outside ----------------------------------------------------------------

bool Lumo_2D::drape(const std::vector<Segment2>& vSegmentsIn, std::vector<Segment2>& vSegmentsOut,
                    double zTolerance) const
{
    return pImpl->drape(vSegmentsIn, vSegmentsOut, zTolerance);
}

Zone2* Lumo_2D::importTriangles(const std::vector<Point2>& vPoints, bool bReorientIfNeeded,
                                bool bCreateExtendedBoundingBox)
{
    std::vector<Triangle2*> vT;
    if (!pImpl->importTriangles(vPoints, bReorientIfNeeded, bCreateExtendedBoundingBox, vT)) return nullptr;
    // Bounded: a start point to grow from would have to be found in triangles that may be too flat to hold a double.
    std::vector<Edge2> vBorder;
    getBorderEdges(*pImpl, vT, vBorder);
    return pImpl->createZone(vBorder, ZL_BOUNDED);
}

// ---- quality meshes -------------------------------------------------------------------------------------------------

void Lumo_2D::refine(Zone2* pZone, double minAngleDegree, double minEdgeLength, double maxEdgeLength,
                     bool bAllowConstraintSplitting)
{
    if (pZone == nullptr) {
        std::cerr << "\nWarning: Lumo_2D::refine(..) has been called with pZone==NULL\n";
        return;
    }
    if (minAngleDegree > 30.0) {
        std::cerr << "\nWarning: Lumo_2D::refine(..), minAngleDegree can't be >30\n";
        return;
    }
    pImpl->refine(pZone, minAngleDegree, minEdgeLength, maxEdgeLength, bAllowConstraintSplitting);
}

void Lumo_2D::refineAdvanced(MeshGenParams* pParams)
{
    if (pParams == nullptr) {
        msgWarning("Lumo_2D::refineAdvanced()", "no parameters given, return");
        return;
    }
    const Lumo_2D* const pGuide = pParams->pGuideTriangulation;
    pImpl->refineAdvanced(pParams, pGuide == nullptr ? nullptr : pGuide->getImpl());
}

// ---- settings -------------------------------------------------------------------------------------------------------

int Lumo_2D::setNumCPU(int numCPU)
{
    return pImpl->setNumCPU(numCPU);
}

void Lumo_2D::enableMultithreading()
{
    setNumCPU(0);
}

void Lumo_2D::setFastMode(bool bFast)
{
    pImpl->setFastMode(bFast);
}

void Lumo_2D::setName(const char* s)
{
    pImpl->name = s == nullptr ? "" : s;
}

const char* Lumo_2D::getName() const
{
    return pImpl->name.c_str();
}

void Lumo_2D::setDev(const char* s, int i, double d)
{
    pImpl->setDev(s == nullptr ? "" : s, i, d);
}

void Lumo_2D::internal(int a, int b, const char* /*s*/)
{
    if (a == -7 && (b == -2000 || b == -1000)) std::cout << "internal debug is disbled in your version\n";
}

// ---- state and queries ----------------------------------------------------------------------------------------------

bool Lumo_2D::hasArea() const
{
    return pImpl->hasArea();
}

bool Lumo_2D::is2D() const
{
    return pImpl->hasArea();
}

std::size_t Lumo_2D::numberOfPoints() const
{
    return pImpl->vertexVault.numActive();
}

std::size_t Lumo_2D::numberOfTriangles() const
{
    return pImpl->numberOfTriangles();
}

Orientation2 Lumo_2D::getOrientation(const Point2& p0, const Point2& p1, const Point2& p2) const
{
    return getOrientation2_mt(&p0, &p1, &p2);
}

Triangle2* Lumo_2D::locate(const Point2& p) const
{
    return pImpl->locate(p);
}

void Lumo_2D::getVertexPointers(std::vector<Point2*>& vVertices) const
{
    pImpl->getVertexPointers(vVertices);
}

void Lumo_2D::getTrianglePointers(std::vector<Triangle2*>& vTriangles) const
{
    pImpl->getTrianglePointers(vTriangles);
}

Bbox2 Lumo_2D::computeBoundingBox() const
{
    return pImpl->computeBoundingBox();
}

double Lumo_2D::measureTriangulationTime(const std::vector<Point2>& vPoints) const
{
    std::vector<Point2> vAccepted;
    if (!copyFiniteOnly(vPoints, vAccepted, pImpl->numCPU)) return pImpl->measureTriangulationTime(vPoints);
    return pImpl->measureTriangulationTime(vAccepted);
}

bool Lumo_2D::getHeight(double x, double y, double& height, Triangle2* pApproxT, double tolerance) const
{
    return pImpl->getHeight(x, y, height, pApproxT, tolerance);
}

void Lumo_2D::getConvexHull(bool bAllVertices, std::vector<Point2*>& vConvexHull) const
{
    pImpl->getConvexHull(bAllVertices, vConvexHull);
}

namespace
{

/// Vertices that wait for area go on to the engine, which tells what is missing.
bool isOwnVertex(const Dt2& dt2, const Point2* pVertex, const char* function)
{
    if (dt2.isMeshVertex(pVertex)) return true;
    if (!dt2.hasArea() && pVertex != nullptr && dt2.poolVertices.contains(pVertex)) return true;
    msgWarning(function, "vertex does not belong to the triangulation, return");
    return false;
}

} // namespace

Triangle2* Lumo_2D::getAdjacentTriangle(Point2* p0, Point2* p1) const
{
    // NULL is the engine's to fail on.
    if (p0 != nullptr && p1 != nullptr && !isOwnVertex(*pImpl, p0, "Lumo_2D::getAdjacentTriangle()")) return nullptr;
    return pImpl->getAdjacentTriangle(p0, p1);
}

void Lumo_2D::getIncidentTriangles(Point2* pVertex, std::vector<Triangle2*>& vTriangles) const
{
    if (isOwnVertex(*pImpl, pVertex, "Lumo_2D::getIncidentTriangles()")) {
        pImpl->getIncidentTriangles(pVertex, vTriangles);
    }
}

void Lumo_2D::getIncidentVertices(Point2* pVertex, std::vector<Point2*>& vVertices) const
{
    if (isOwnVertex(*pImpl, pVertex, "Lumo_2D::getIncidentVertices()")) {
        pImpl->getIncidentVertices(pVertex, vVertices);
    }
}

bool Lumo_2D::checkValidity(bool bCheckEmptyCircleProperty, const char* msg) const
{
    return pImpl->checkValidity(bCheckEmptyCircleProperty, msg);
}

void Lumo_2D::statistics(const char* s) const
{
    pImpl->statistics(s);
}

// ---- output and progress --------------------------------------------------------------------------------------------

void Lumo_2D::show(const std::string& filename) const
{
    Visualizer2 visualizer(filename.c_str());
    show(&visualizer);
    visualizer.writeFile();
}

void Lumo_2D::show(Visualizer2* pVisualizer) const
{
    if (pVisualizer == nullptr) {
        msgWarning("Lumo_2D::show()", "no visualizer given");
        return;
    }
    pImpl->show(*pVisualizer);
}

void Lumo_2D::showGeomview(const std::string& filename) const
{
    Visualizer3 visualizer(filename.c_str());
    pImpl->showGeomview(visualizer, std::string());
}

void Lumo_2D::showGeomview(Visualizer3* pVisualizer, const std::string& color) const
{
    if (pVisualizer == nullptr) {
        msgWarning("Lumo_2D::showGeomview()", "no visualizer given");
        return;
    }
    pImpl->showGeomview(*pVisualizer, color);
}

bool Lumo_2D::writeObj(const char* filename) const
{
    return pImpl->writeObj(filename);
}

bool Lumo_2D::writeObj(const char* filename, const std::vector<Zone2*>& vZones) const
{
    return pImpl->writeObj(filename, std::vector<const Zone2*>(vZones.begin(), vZones.end()));
}

bool Lumo_2D::writeWebScene(const char* filename, const char* pUnit) const
{
    return pImpl->writeWebScene(filename, {}, pUnit);
}

bool Lumo_2D::writeWebScene(const char* filename, const std::vector<Zone2*>& vZones, const char* pUnit) const
{
    return pImpl->writeWebScene(filename, std::vector<const Zone2*>(vZones.begin(), vZones.end()), pUnit);
}

void Lumo_2D::exportTriangulation(LumoExport& lumoExport, bool bCustomIndices, bool bClear)
{
    if (pImpl->exportTriangulationArray(lumoExport, bCustomIndices) && bClear) renew();
}

/// An empty engine with the same number of threads, mode and subscribers.
void Lumo_2D::renew()
{
    Dt2* const pCleared = pImpl;
    initLumo(3);
    pImpl->setNumCPU(pCleared->numCPU);
    pImpl->setFastMode(pCleared->bFastMode);
    pImpl->progress.takeSubscribers(pCleared->progress);
    delete pCleared;
}

bool Lumo_2D::saveTriangulation(const char* filename, const std::vector<Zone2*>& vSaveZones)
{
    return pImpl->saveInternal(filename, vSaveZones, false);
}

bool Lumo_2D::saveZones(const char* filename, const std::vector<Zone2*>& vSaveZones)
{
    return pImpl->saveInternal(filename, vSaveZones, true);
}

bool Lumo_2D::load(const char* filename, std::vector<Zone2*>& vZones)
{
    const bool bEmpty = pImpl->vertexVault.numActive() == 0;
    const std::size_t numBefore = vZones.size();
    try {
        return pImpl->load(filename, vZones);
    } catch (...) {
        // Memory has run out, or a subscriber has thrown: half a triangulation is none.
        vZones.resize(std::min(vZones.size(), numBefore));
        if (bEmpty) renew();
        throw;
    }
}

void Lumo_2D::subscribe(MsgType msgType, MsgBase* pMsg)
{
    pImpl->progress.subscribe(msgType, pMsg);
}

void Lumo_2D::unsubscribe(MsgType msgType, MsgBase* pMsg)
{
    pImpl->progress.unsubscribe(msgType, pMsg);
}

} // namespace ORBI_LUMO25D
