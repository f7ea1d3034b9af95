#include "oracles/OperationSequence.h"

#include "oracles/ConstraintOracle.h"
#include "oracles/ExactOracle.h"
#include "oracles/QueryTwins.h"
#include "oracles/ZoneModel.h"
#include "support/TestOutput.h"

#include "LumoExport.h"
#include "Lumo_2D.h"
#include "Vector2.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdio>
#include <exception>
#include <map>
#include <set>
#include <stdexcept>
#include <unistd.h>

namespace oracles
{

using namespace ORBI_LUMO25D;

namespace
{

void require(bool bHolds, const char* what)
{
    if (!bHolds) throw std::runtime_error(what);
}

/// The triangulation and its naive model.
class Runner
{
public:
    void perform(const Operation& op);
    void check() const;

private:
    void performOne(const Operation& op);
    void insertBulk(const Operation& op);
    void note(const Point2& p, Point2* pHandle);
    void constrain(const Operation& op);
    void split(const Point2& p);
    void takeNewVertices(const std::vector<Point2>& vGiven, bool bFree = false);
    void remove(const Point2& p);
    void query(const Point2& p, bool bHeight) const;
    void exportArrays(bool bClear);
    void cut(const Operation& op);
    void drape(const Operation& op) const;
    void refine();
    void saveAndLoad() const;

    struct Vertex
    {
        double height; ///< of the first point there
        Point2* pHandle;
    };
    Lumo_2D lumo;
    ZoneModel zones{lumo};
    bool bCut = false; ///< edges need not be Delaunay any more
    std::vector<GivenConstraint> vConstraints;
    std::map<std::pair<double, double>, Vertex> mVertices;
};

void Runner::note(const Point2& p, Point2* pHandle)
{
    const Vertex& vertex = mVertices.insert({{p.x(), p.y()}, {p.z(), pHandle}}).first->second;
    require(pHandle != nullptr && *pHandle == p, "a handle at another position");
    require(vertex.pHandle == pHandle, "a second handle for one position");
    require(vertex.height == pHandle->z(), "a handle with another height than the first point there");
}

void Runner::insertBulk(const Operation& op)
{
    std::vector<Point2*> vHandles(op.vPoints.size());
    if (op.kind == Operation::COORDINATES) {
        std::vector<double> vCoords;
        for (const Point2& p : op.vPoints) vCoords.insert(vCoords.end(), {p.x(), p.y(), p.z()});
        lumo.insert(static_cast<int>(op.vPoints.size()), vCoords.data(), vHandles.data());
    } else {
        lumo.setNumCPU(op.kind == Operation::THREADED ? 4 : 1);
        lumo.insert(op.vPoints, vHandles);
        lumo.setNumCPU(1);
    }
    require(vHandles.size() == op.vPoints.size(), "another number of handles than points");
    for (std::size_t i = 0; i < op.vPoints.size(); ++i) note(op.vPoints[i], vHandles[i]);
}

void Runner::constrain(const Operation& op)
{
    const std::size_t n = op.vPoints.size(), step = op.kind == Operation::ORIENTED ? 1 : 2;
    std::vector<Segment2> vSegments;
    std::set<std::pair<Point2, Point2>> sSeen;
    for (std::size_t i = 0; i < n; i += step) {
        const Point2 &a = op.vPoints[i], &b = op.vPoints[(i + 1) % n];
        if (step == 1 && !sSeen.insert(std::minmax(a, b)).second) break; // one segment has one direction
        vSegments.emplace_back(a, b);
    }
    if (vSegments.empty()) return;
    const auto cis = op.kind == Operation::CONFORMING ? CIS_CONFORMING_DELAUNAY : CIS_CONSTRAINED_DELAUNAY;
    vConstraints.push_back({lumo.createConstraint(vSegments, cis, step == 1), vSegments});
    require(vConstraints.back().pGraph != nullptr, "no graph");
    takeNewVertices(op.vPoints);
}

void Runner::split(const Point2& p)
{
    std::vector<ConstraintSegment2*> vAlive;
    lumo.getAliveConstraintSegments(vAlive);
    for (ConstraintSegment2* pCSeg : vAlive) {
        const Point2 &a = *pCSeg->getSrc(), &b = *pCSeg->getTrg();
        const bool bEnd = p == a || p == b, bBetween = (a < p) == (p < b) && orientationSign(a, b, p) == 0;
        if (!pCSeg->isAlive() || !(bEnd || bBetween)) continue;
        const Point2* const pSplit = pCSeg->insertAndSplit(p);
        require(bEnd ? pSplit == nullptr && pCSeg->isAlive() : *pSplit == p && !pCSeg->isAlive(), "a wrong split");
    }
    takeNewVertices({});
}

void Runner::takeNewVertices(const std::vector<Point2>& vGiven, bool bFree)
{
    // Chains of Delaunay edges would repair a cut triangulation around them, which changes the surface.
    if (lumo.hasArea() && !bCut) lumo.applyConstraintsAndZones();
    std::vector<Point2*> vVertices;
    lumo.getVertexPointers(vVertices);
    for (Point2* pVtx : vVertices) {
        const bool bNew = mVertices.insert({{pVtx->x(), pVtx->y()}, {pVtx->z(), pVtx}}).second;
        const bool bGiven = std::find(vGiven.begin(), vGiven.end(), *pVtx) != vGiven.end();
        require(!bNew || bGiven || bFree || lumo.isConstraint(pVtx), "a new vertex that no constraint needs");
    }
}

void Runner::remove(const Point2& p)
{
    const auto it = mVertices.find({p.x(), p.y()});
    if (it == mVertices.end() || lumo.isConstraint(it->second.pHandle)) return;
    lumo.remove(it->second.pHandle);
    require(it->second.pHandle->getIncidentTriangle() == nullptr, "a removed vertex has a triangle");
    mVertices.erase(it);
    if (mVertices.size() < 100) check(); // of many, every single one would cost the square of their number
}

void Runner::query(const Point2& p, bool bHeight) const
{
    std::vector<Triangle2*> vT;
    lumo.getTrianglePointers(vT);
    const std::vector<Triangle2*> vAt = QueryTwin(vT).trianglesAt(p);
    if (!bHeight) {
        Triangle2* const pT = lumo.locate(p);
        require((pT == nullptr) == vAt.empty(), "a point in the hull isn't found, or one outside is");
        require(pT == nullptr || std::find(vAt.begin(), vAt.end(), pT) != vAt.end(), "a wrong triangle is found");
        return;
    }
    double height = -12345.0;
    require(lumo.getHeight(p.x(), p.y(), height) == !vAt.empty(), "a height where there is none, or none");
    const mpq_class expected = vAt.empty() ? mpq_class(-12345) : planeHeight(*vAt[0], p);
    require(abs(mpq_class(height) - expected) <= 1e-8, "a height off the triangle's plane, or changed outside");
}

void Runner::exportArrays(bool bClear)
{
    LumoExport record;
    const std::size_t numTriangles = lumo.numberOfTriangles();
    lumo.exportTriangulation(record, true, bClear);
    require(static_cast<std::size_t>(record.numPoints) == mVertices.size(), "a wrong number of exported points");
    require(static_cast<std::size_t>(record.numTriangles) == numTriangles, "a wrong number of exported triangles");
    for (int v = 0; v < record.numPoints; ++v) {
        double x = 0.0, y = 0.0, z = 0.0;
        record.getCoordinates(v, x, y, z);
        const auto it = mVertices.find({x, y});
        require(it != mVertices.end() && it->second.height == z, "a wrong exported point");
    }
    if (!bClear) return;
    mVertices.clear();
    vConstraints.clear();
    zones.clear();
    bCut = false;
}

/// How far heights may be off after vertices were rounded to doubles: by the steepest triangle. Infinite where the slopes
/// can't be told in doubles.
double heightTolerance(const std::vector<Triangle2*>& vT)
{
    double steepest = 0.0, size = 0.0, height = 0.0;
    for (const Triangle2* pT : vT) {
        const Point2 &a = *pT->corner(0), &b = *pT->corner(1), &c = *pT->corner(2);
        const Vector2 u(b.x() - a.x(), b.y() - a.y(), b.z() - a.z()), v(c.x() - a.x(), c.y() - a.y(), c.z() - a.z());
        const double det = std::fabs(orientationDet(a, b, c).get_d());
        const double nx = u.y() * v.z() - u.z() * v.y(), ny = u.z() * v.x() - u.x() * v.z();
        steepest = std::max(steepest, std::hypot(nx, ny) / det);
        for (const Point2* p : {&a, &b, &c}) {
            size = std::max({size, std::fabs(p->x()), std::fabs(p->y())});
            height = std::max(height, std::fabs(p->z()));
        }
    }
    if (size > 1e150) return HUGE_VAL;
    return 1e-12 * (1.0 + height) + steepest * size * 0x1p-48;
}

void Runner::cut(const Operation& op)
{
    if (!lumo.hasArea()) return;
    lumo.applyConstraintsAndZones();
    takeNewVertices({});
    std::vector<Triangle2*> vT;
    lumo.getTrianglePointers(vT);
    const double tolerance = heightTolerance(vT);
    std::vector<Point2> vBefore; // the middles of the triangles, which none of them shares
    for (const Triangle2* pT : vT) {
        const Point2 &a = *pT->corner(0), &b = *pT->corner(1), &c = *pT->corner(2);
        Point2 p((a.x() / 3 + b.x() / 3) + c.x() / 3, (a.y() / 3 + b.y() / 3) + c.y() / 3, 0.0);
        if (sideOf(a, b, p) < 0 || sideOf(b, c, p) < 0 || sideOf(c, a, p) < 0) continue;
        p.setZ(planeHeight(*pT, p).get_d());
        vBefore.push_back(p);
    }
    for (std::size_t i = 1; i < op.vPoints.size(); i += 2)
        lumo.cutTriangles(op.vPoints[i - 1], op.vPoints[i], op.kind == Operation::KNIFE);
    bCut = true;
    takeNewVertices({}, true);
    if (!std::isfinite(tolerance) || mVertices.size() >= 300) return;
    vT.clear();
    lumo.getTrianglePointers(vT);
    const QueryTwin twin(vT);
    for (const Point2& p : vBefore) {
        const std::vector<Triangle2*> vAt = twin.trianglesAt(p);
        require(!vAt.empty(), "a cut took a part of the surface away");
        const double change = std::fabs(planeHeight(*vAt[0], p).get_d() - p.z());
        require(change <= tolerance,
                ("a cut changed the surface by " + std::to_string(change / tolerance) + " times what rounding may do")
                    .c_str());
    }
}

void Runner::drape(const Operation& op) const
{
    if (!lumo.hasArea()) return;
    std::vector<Triangle2*> vT;
    lumo.getTrianglePointers(vT);
    const QueryTwin twin(vT);
    const double tolerance = heightTolerance(vT);
    for (std::size_t i = 1; i < op.vPoints.size(); i += 2) {
        std::vector<Segment2> vPieces;
        const bool bWhole = lumo.drape({Segment2(op.vPoints[i - 1], op.vPoints[i])}, vPieces, -1.0);
        if (op.vPoints[i - 1] == op.vPoints[i]) continue;
        require(!bWhole || !vPieces.empty(), "a segment in the hull is not draped");
        require(!bWhole || (vPieces.front().src == op.vPoints[i - 1] && vPieces.back().trg == op.vPoints[i]),
                "a draped segment has other ends");
        for (std::size_t k = 0; k < vPieces.size(); ++k) {
            if (bWhole && k > 0) require(vPieces[k - 1].trg == vPieces[k].src, "a draped segment has a gap");
            const std::vector<Triangle2*> vAt = twin.trianglesAt(vPieces[k].src);
            if (vAt.empty() || !std::isfinite(tolerance)) continue; // rounded across the hull
            const double error = std::fabs(planeHeight(*vAt[0], vPieces[k].src).get_d() - vPieces[k].src.z());
            require(error <= tolerance, "a draped segment is off the surface");
        }
    }
}

void Runner::refine()
{
    Zone2* const pZone = zones.last();
    if (pZone == nullptr || bCut || mVertices.size() > 300) return;
    lumo.applyConstraintsAndZones();
    takeNewVertices({});
    const Bbox2 box = pZone->getBoundingBox();
    const double size = std::hypot(box.getRangeX(), box.getRangeY());
    const double area = pZone->getArea2D();
    lumo.refine(pZone, 20.0, size / 50.0, size / 4.0, true);
    // The vertices on its border are rounded.
    const double rounding = size * std::max(box.getMinPoint().getMaxAbs(), box.getMaxPoint().getMaxAbs()) * 0x1p-48;
    require(std::fabs(pZone->getArea2D() - area) <= 1e-12 * area + rounding || !std::isfinite(area),
            "refined, a zone has another area");
    takeNewVertices({}, true);
    require(mVertices.size() < 20000, "refinement made far too many vertices");
}

void Runner::saveAndLoad() const
{
    static std::atomic<unsigned> number{0}; // sequences may run side by side
    const std::string name = "sequence" + std::to_string(getpid()) + "_" + std::to_string(number++);
    const std::string first = name + "a.bin", second = name + "b.bin";
    std::vector<Zone2*> vZones, vLoaded;
    zones.getZones(vZones);
    const_cast<Lumo_2D&>(lumo).saveTriangulation(first.c_str(), vZones);
    Lumo_2D other;
    const bool bLoaded = other.load(first.c_str(), vLoaded);
    other.saveTriangulation(second.c_str(), vLoaded);
    const std::string a = lumo_test::readFile(first), b = lumo_test::readFile(second);
    std::remove(first.c_str());
    std::remove(second.c_str());
    require(bLoaded && vLoaded.size() == vZones.size(), "a saved triangulation can't be loaded");
    require(other.checkValidity(!bCut, "loaded"), "a loaded triangulation isn't valid");
    require(a == b, "saved, loaded and saved again, a triangulation is another one");
}

void Runner::perform(const Operation& op)
{
    const bool bHadArea = lumo.hasArea();
    performOne(op);
    if (!bHadArea && lumo.hasArea()) takeNewVertices({}); // constraints have waited
}

void Runner::performOne(const Operation& op)
{
    using O = Operation;
    switch (op.kind) {
    case O::VECTOR:
    case O::COORDINATES:
    case O::THREADED:
        return insertBulk(op);
    case O::CONSTRAINT:
    case O::CONFORMING:
    case O::ORIENTED:
        return constrain(op);
    case O::EXPORT:
    case O::CLEAR:
        return exportArrays(op.kind == O::CLEAR);
    case O::ZONE:
        zones.addInside(op.vPoints);
        return takeNewVertices(op.vPoints);
    case O::BOOLEAN:
        return zones.combine();
    case O::BOUNDED:
        zones.bound();
        return takeNewVertices({}, bCut);
    case O::CUT:
    case O::KNIFE:
        return cut(op);
    case O::DRAPE:
        return drape(op);
    case O::REFINE:
        return refine();
    case O::SAVE:
        return saveAndLoad();
    default:
        break;
    }
    for (const Point2& p : op.vPoints) {
        if (op.kind == O::SPLIT) split(p);
        if (op.kind == O::INSERT) note(p, lumo.insert(p));
        if (op.kind == O::REMOVE) remove(p);
        if (op.kind == O::LOCATE || op.kind == O::HEIGHT) query(p, op.kind == O::HEIGHT);
    }
}

void Runner::check() const
{
    require(lumo.checkValidity(!bCut, "after an operation"), "the triangulation isn't valid");
    if (mVertices.size() < 100) zones.check();
    if (!vConstraints.empty() && !bCut && mVertices.size() < 100) {
        const std::string fault = constraintFault(lumo, vConstraints, 3.0);
        require(fault.empty(), fault.c_str());
    }
    std::vector<Point2*> vVertices;
    lumo.getVertexPointers(vVertices);
    require(lumo.numberOfPoints() == mVertices.size(), "a wrong number of points");
    require(vVertices.size() == mVertices.size(), "a wrong number of listed vertices");
    for (Point2* pVtx : vVertices) {
        const auto it = mVertices.find({pVtx->x(), pVtx->y()});
        require(it != mVertices.end() && it->second.pHandle == pVtx, "a vertex that should not be there");
        require(pVtx->z() == it->second.height, "a vertex with a wrong height");
        require((pVtx->getIncidentTriangle() != nullptr) == lumo.hasArea(), "a wrong incident triangle");
        require(lumo.hasArea() || sideOf(*vVertices[0], *vVertices.back(), *pVtx) == 0, "points with area wait");
    }
}

} // namespace

std::string runSequence(const OperationSequence& sequence)
{
    Runner runner;
    std::size_t step = 0;
    try {
        for (; step < sequence.size(); ++step) {
            runner.perform(sequence[step]);
            runner.check();
        }
    } catch (const std::exception& e) {
        return "operation " + std::to_string(step) + " (" + operationNames[sequence[step].kind] + "): " + e.what();
    }
    return "";
}

} // namespace oracles
