#include "Zone2.h"

#include "engine/Dt2.h"
#include "support/Progress.h"
#include "support/check.h"
#include "support/messages.h"
#include "zones/Histogram.h"
#include "zones/SurfaceOptimizer.h"
#include "zones/ZoneExpression.h"
#include "zones/ZoneFlood.h"
#include "zones/triangleSets.h"

#include "Color.h"
#include "ConstraintGraph2.h"
#include "Vector2.h"
#include "Visualizer2.h"
#include "Visualizer3.h"

#include <algorithm>
#include <functional>
#include <iostream>

namespace ORBI_LUMO25D
{

// ---- construction ---------------------------------------------------------------------------------------------------

namespace
{

[[noreturn]] void failConstruction(const char* message)
{
    msgError("Zone2::Zone2(..)", message);
    LUMO_CHECK(false, "false");
}

[[noreturn]] void failLocation(ZoneLocation zoneLoc, const char* message)
{
    std::cout << "zoneLoc=" << static_cast<int>(zoneLoc) << '\n';
    failConstruction(message);
}

} // namespace

Zone2::Zone2(Dt2* pDt_, ZoneLocation zoneLoc_)
    : pDt(pDt_), pProgress(std::make_shared<Progress>("ZoneProgress")), zoneLoc(zoneLoc_)
{
    LUMO_CHECK(zoneLoc == ZL_GLOBAL || isResult(),
               "zoneLoc==ZL_GLOBAL || zoneLoc==ZL_RESULT_UNION || zoneLoc==ZL_RESULT_INTERSECTION || "
               "zoneLoc==ZL_RESULT_DIFFERENCE || zoneLoc==ZL_RESULT_SYM_DIFFERENCE");
}

Zone2::Zone2(Dt2* pDt_, ZoneLocation zoneLoc_, ConstraintGraph2* pConstraintGraph)
    : pDt(pDt_), pProgress(std::make_shared<Progress>("ZoneProgress")), zoneLoc(zoneLoc_)
{
    if (pConstraintGraph == nullptr) failConstruction("The ConstraintGraph is NULL");
    if (!pConstraintGraph->isOriented()) failConstruction("The ConstraintGraph is not oriented");
    if (zoneLoc != ZL_INSIDE && zoneLoc != ZL_OUTSIDE && zoneLoc != ZL_BOUNDED) {
        failLocation(zoneLoc,
                     "The ZoneLocation for this constructor can only be one of ZL_INSIDE, ZL_OUTSIDE, ZL_BOUNDED");
    }
    vConstraintGraphs.push_back(pConstraintGraph);
}

Zone2::Zone2(Dt2* pDt_, ZoneLocation zoneLoc_, const std::vector<ConstraintGraph2*>& vConstraintGraphs_)
    : pDt(pDt_), pProgress(std::make_shared<Progress>("ZoneProgress")), zoneLoc(zoneLoc_),
      vConstraintGraphs(vConstraintGraphs_)
{
    if (vConstraintGraphs.empty()) failConstruction("vConstraintGraphs is empty");
    const auto isOriented = [](const ConstraintGraph2* pGraph) { return pGraph != nullptr && pGraph->isOriented(); };
    if (!std::all_of(vConstraintGraphs.begin(), vConstraintGraphs.end(), isOriented)) {
        failConstruction("One of the ConstraintGraphs is not oriented!");
    }
    if (zoneLoc != ZL_INSIDE && zoneLoc != ZL_OUTSIDE) {
        failLocation(zoneLoc, "ZoneLocation for this constructor must be ZL_INSIDE or ZL_OUTSIDE!");
    }
}

Zone2::Zone2(Dt2* pDt_, const std::vector<ConstraintGraph2*>& vConstraintGraphs_, ZoneLocation zoneLoc_,
             const std::vector<Point2>& vStartPoints_)
    : pDt(pDt_), pProgress(std::make_shared<Progress>("ZoneProgress")), zoneLoc(zoneLoc_),
      vConstraintGraphs(vConstraintGraphs_), vStartPoints(vStartPoints_)
{
    LUMO_CHECK(zoneLoc == ZL_GROW, "zoneLoc==ZL_GROW");
}

Zone2& Zone2::operator=(const Zone2&) = default;
Zone2::~Zone2() = default;

// ---- the triangles --------------------------------------------------------------------------------------------------

void Zone2::getTriangles(std::vector<Triangle2*>& vT) const
{
    if (!pDt->hasArea()) {
        msgWarning("Zone2::getTriangles()", "The triangulation has no area yet");
        return;
    }
    if (isResult()) {
        ZoneExpression(*this).run(vT);
    } else {
        findTriangles(vT);
    }
}

void Zone2::findTriangles(std::vector<Triangle2*>& vT) const
{
    if (zoneLoc == ZL_GROW) {
        pDt->growZoneAreas(vConstraintGraphs, vStartPoints, vT);
        return;
    }
    if (zoneLoc == ZL_GLOBAL) {
        const std::size_t first = vT.size();
        pDt->getTrianglePointers(vT);
        const auto it = vT.begin() + static_cast<std::ptrdiff_t>(first);
        LUMO_CHECK(it != vT.end(), "pT!=NULL");
        // The blocks of the pool mostly come in this order anyway.
        if (!std::is_sorted(it, vT.end(), std::less<Triangle2*>())) std::sort(it, vT.end(), std::less<Triangle2*>());
        return;
    }
    ZoneFlood flood(*pDt);
    if (zoneLoc == ZL_OUTSIDE) {
        flood.stopOutside(vConstraintGraphs);
    } else if (zoneLoc == ZL_INSIDE || zoneLoc == ZL_BOUNDED) {
        flood.stopInside(vConstraintGraphs);
        if (flood.seeds().empty()) {
            msgError("Zone2::getTriangles()",
                     "An inside zone is empty - have you called Lumo_2D::applyConstraintsAndZones()?");
            LUMO_CHECK(false, "!vWorkspace.empty()");
        }
    } else {
        msgError("Zone2::getTriangles()", "unknown zoneLoc value");
        LUMO_CHECK(false, "false");
    }
    flood.run(flood.seeds(), vT);
}

namespace
{

std::vector<Triangle2*> trianglesOf(const Zone2& zone)
{
    std::vector<Triangle2*> vT;
    zone.getTriangles(vT);
    return vT;
}

} // namespace

void Zone2::getVertices(std::vector<Point2*>& vV) const
{
    getCorners(*pDt, trianglesOf(*this), vV);
}

Bbox2 Zone2::getBoundingBox() const
{
    Bbox2 box;
    for (const Triangle2* pT : trianglesOf(*this)) {
        for (int i = 0; i < 3; ++i) {
            box.add(*pT->corner(i));
        }
    }
    return box;
}

std::size_t Zone2::getNumberOfTriangles() const
{
    return trianglesOf(*this).size();
}

double Zone2::getArea2D() const
{
    return sumArea2D(trianglesByAge(*this));
}

double Zone2::getArea25D() const
{
    return sumArea25D(trianglesByAge(*this));
}

// ---- the border -----------------------------------------------------------------------------------------------------

void Zone2::getBoundaryEdges(std::vector<Edge2>& vEdges) const
{
    std::vector<Triangle2*> vT = trianglesOf(*this);
    if (!std::is_sorted(vT.begin(), vT.end(), std::less<Triangle2*>())) {
        std::sort(vT.begin(), vT.end(), std::less<Triangle2*>());
    }
    ORBI_LUMO25D::getBorderEdges(*pDt, vT, vEdges);
}

void Zone2::getBorderEdges(std::vector<Edge2>& vEdges) const
{
    getBoundaryEdges(vEdges);
}

void Zone2::getBoundarySegments(std::vector<Segment2>& vSegments) const
{
    std::vector<Edge2> vEdges;
    ORBI_LUMO25D::getBorderEdges(*pDt, trianglesOf(*this), vEdges);
    vSegments.reserve(vSegments.size() + vEdges.size());
    for (const Edge2& edge : vEdges) {
        vSegments.emplace_back(*edge.getSrc(), *edge.getTrg());
    }
}

Zone2* Zone2::convertToBoundedZone()
{
    if (zoneLoc == ZL_INSIDE) return this;
    pDt->applyConstraintsAndZones();
    const std::vector<Triangle2*> vT = trianglesOf(*this);
    if (vT.empty()) {
        msgWarning("Zone2::convertToBoundedZone()", "No triangles available, returning NULL");
        return nullptr;
    }
    std::vector<Edge2> vEdges;
    ORBI_LUMO25D::getBorderEdges(*pDt, vT, vEdges);
    return pDt->createZone(vEdges, ZL_BOUNDED);
}

// ---- the rule -------------------------------------------------------------------------------------------------------

void Zone2::getConstraintGraphs(std::vector<ConstraintGraph2*>& vGraphs) const
{
    vGraphs.insert(vGraphs.end(), vConstraintGraphs.begin(), vConstraintGraphs.end());
}

ConstraintGraph2* Zone2::getConstraintGraph() const
{
    if (vConstraintGraphs.size() > 1) {
        msgError("Zone2::getConstraintGraph()", "There is more than one constraint graph, use "
                                                "Zone2::getConstraintGraphs() instead. Returning NULL");
        return nullptr;
    }
    return vConstraintGraphs.empty() ? nullptr : vConstraintGraphs.front();
}

// ---- the surface ----------------------------------------------------------------------------------------------------

void Zone2::slopeValleyRidgeOptimization()
{
    ORBI_LUMO25D::slopeValleyRidgeOptimization(*pDt, trianglesOf(*this), *pProgress);
}

void Zone2::optimizeValleysAndRidges(double tolerance2D, double lowerThreshold25D)
{
    ORBI_LUMO25D::optimizeValleysAndRidges(*pDt, trianglesOf(*this), tolerance2D, lowerThreshold25D, *pProgress);
}

void Zone2::smoothing(int numIterations)
{
    ORBI_LUMO25D::smoothing(*pDt, trianglesOf(*this), numIterations, *pProgress);
}

void Zone2::unifyGrid(double tolerance)
{
    ORBI_LUMO25D::unifyGrid(*pDt, trianglesOf(*this), tolerance, *pProgress);
}

// ---- files ----------------------------------------------------------------------------------------------------------

bool Zone2::save(const char* filename)
{
    return pDt->saveInternal(filename, {this}, true);
}

// ---- inspection -----------------------------------------------------------------------------------------------------

namespace
{

/// With limits every ten degrees.
Histogram angleHistogram(const std::string& name)
{
    Histogram histogram(name);
    for (int degrees = 10; degrees <= 170; degrees += 10) {
        histogram.addLimit(degrees);
    }
    return histogram;
}

} // namespace

void Zone2::statistics(const char* name) const
{
    std::cout << "\n\n\n********* ZONE STATISTICS (" << (name == nullptr ? "" : name) << ") **********\n\n";
    Histogram histogram = angleHistogram("INTERIOR ANGLES");
    const std::vector<Triangle2*> vT = trianglesByAge(*this);
    std::cout << "Number of triangles: " << vT.size() << '\n';
    for (const Triangle2* pT : vT) {
        for (int i = 0; i < 3; ++i) {
            histogram.addValue(pT->getInteriorAngle25D(i));
        }
    }
    std::cout << histogram;
}

void Zone2::analyzeAngles(const char* name) const
{
    Histogram histogram = angleHistogram("DIHEDRAL ANGLES (" + std::string(name == nullptr ? "" : name) + ")");
    std::vector<Edge2> vEdges;
    getUndirectedEdges(*pDt, trianglesByAge(*this), vEdges);
    for (const Edge2& edge : vEdges) {
        const Triangle2* const pN = edge.getTriangle()->neighbor(edge.getIndex());
        if (pN != nullptr) {
            histogram.addValue(getAngleDegree(edge.getTriangle()->getNormalVector(), pN->getNormalVector()));
        }
    }
    std::cout << histogram;
}

void Zone2::show(const char* filename) const
{
    Visualizer2 visualizer(filename);
    show(&visualizer, Color());
    visualizer.writeFile();
}

void Zone2::show(Visualizer2* pVisualizer, const Color& color) const
{
    if (pVisualizer == nullptr) {
        msgWarning("Zone2::show()", "no visualizer given");
        return;
    }
    std::vector<Edge2> vEdges;
    getUndirectedEdges(*pDt, trianglesByAge(*this), vEdges);
    pVisualizer->addObject(vEdges, color);
}

void Zone2::showGeomview(const char* filename, const std::string& color) const
{
    Visualizer3 visualizer(filename);
    showGeomview(&visualizer, color);
}

void Zone2::showGeomview(Visualizer3* pVisualizer, const std::string& color) const
{
    if (pVisualizer == nullptr) {
        msgWarning("Zone2::showGeomview()", "no visualizer given");
        return;
    }
    pVisualizer->addObject(trianglesByAge(*this), color);
}

bool Zone2::writeObj(const char* filename) const
{
    return pDt->writeObj(filename, {this});
}

void Zone2::debug(const char* name) const
{
    std::cout << "This is Zone2::debug()\n";
    Visualizer2 visualizer(name == nullptr || *name == '\0' ? "debug.ps" : name);
    visualizer.addObject(trianglesByAge(*this), Color(0.3, 0.3, 0.3, 0.05, false));
    for (const ConstraintGraph2* pGraph : vConstraintGraphs) {
        pGraph->show(&visualizer, Color(1.0, 0.0, 0.0, 0.5, false));
    }
    visualizer.writeFile();
}

void Zone2::subscribe(MsgType msgType, MsgBase* pMsg)
{
    pProgress->subscribe(msgType, pMsg);
}

void Zone2::unsubscribe(MsgType msgType, MsgBase* pMsg)
{
    pProgress->unsubscribe(msgType, pMsg);
}

} // namespace ORBI_LUMO25D
