#include "oracles/OperationSequence.h"

#include "oracles/ConstraintOracle.h"
#include "oracles/Corpus.h"
#include "oracles/ExactOracle.h"
#include "oracles/QueryTwins.h"

#include "LumoExport.h"
#include "Lumo_2D.h"

#include <algorithm>
#include <exception>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <stdexcept>

namespace oracles
{

using namespace ORBI_LUMO25D;

namespace
{

const char* const kindNames[] = {"insert", "vector", "coordinates", "threaded", "constraint", "conforming", "oriented",
                                 "split",  "remove", "locate",      "height",   "export",     "clear"};

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
    void takeNewVertices(const std::vector<Point2>& vGiven);
    void remove(const Point2& p);
    void query(const Point2& p, bool bHeight) const;
    void exportArrays(bool bClear);

    struct Vertex
    {
        double height; ///< of the first point there
        Point2* pHandle;
    };
    Lumo_2D lumo;
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

void Runner::takeNewVertices(const std::vector<Point2>& vGiven)
{
    if (lumo.hasArea()) lumo.applyConstraintsAndZones();
    std::vector<Point2*> vVertices;
    lumo.getVertexPointers(vVertices);
    for (Point2* pVtx : vVertices) {
        const bool bNew = mVertices.insert({{pVtx->x(), pVtx->y()}, {pVtx->z(), pVtx}}).second;
        const bool bGiven = std::find(vGiven.begin(), vGiven.end(), *pVtx) != vGiven.end();
        require(!bNew || bGiven || lumo.isConstraint(pVtx), "a new vertex that no constraint needs");
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
}

void Runner::perform(const Operation& op)
{
    const bool bHadArea = lumo.hasArea();
    performOne(op);
    if (!bHadArea && lumo.hasArea()) takeNewVertices({}); // constraints have waited
}

void Runner::performOne(const Operation& op)
{
    if (op.kind >= Operation::EXPORT) exportArrays(op.kind == Operation::CLEAR);
    if (op.kind >= Operation::VECTOR && op.kind <= Operation::THREADED) {
        insertBulk(op);
        return;
    }
    if (op.kind >= Operation::CONSTRAINT && op.kind <= Operation::ORIENTED) constrain(op);
    for (const Point2& p : op.vPoints) {
        if (op.kind == Operation::SPLIT) split(p);
        if (op.kind == Operation::INSERT) note(p, lumo.insert(p));
        if (op.kind == Operation::REMOVE) remove(p);
        if (op.kind == Operation::LOCATE || op.kind == Operation::HEIGHT) query(p, op.kind == Operation::HEIGHT);
    }
}

void Runner::check() const
{
    require(lumo.checkValidity(true, "after an operation"), "the triangulation isn't valid");
    if (!vConstraints.empty() && mVertices.size() < 100) {
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
        return "operation " + std::to_string(step) + " (" + kindNames[sequence[step].kind] + "): " + e.what();
    }
    return "";
}

// ---- shrinking --------------------------------------------------------------------------------------------------

namespace
{

/// Takes stretches of items away, large ones first, while the rest still fails. True when anything could go.
template <class T>
bool takeStretchesAway(std::vector<T>& vItems, const std::function<bool(const std::vector<T>&)>& fails)
{
    const std::size_t numBefore = vItems.size();
    for (std::size_t length = vItems.size(); length > 0; length /= 2) {
        for (std::size_t begin = 0; begin < vItems.size();) {
            std::vector<T> vRest;
            for (std::size_t i = 0; i < vItems.size(); ++i) {
                if (i < begin || i >= begin + length) vRest.push_back(vItems[i]);
            }
            if (fails(vRest)) {
                vItems.swap(vRest);
            } else {
                begin += length;
            }
        }
    }
    return vItems.size() != numBefore;
}

} // namespace

OperationSequence shrink(OperationSequence sequence, const std::function<bool(const OperationSequence&)>& fails)
{
    for (bool bChanged = true; bChanged;) {
        bChanged = takeStretchesAway<Operation>(sequence, fails);
        for (std::size_t i = 0; i < sequence.size(); ++i) {
            OperationSequence candidate = sequence;
            bChanged |= takeStretchesAway<Point2>(sequence[i].vPoints, [&](const std::vector<Point2>& vFewer) {
                candidate[i].vPoints = vFewer;
                return fails(candidate);
            });
        }
    }
    return sequence;
}

// ---- files ------------------------------------------------------------------------------------------------------

bool writeSequenceFile(const std::string& path, const OperationSequence& sequence)
{
    std::ofstream out(path);
    out.precision(17);
    for (const Operation& op : sequence) {
        out << "#: " << kindNames[op.kind] << ' ' << op.vPoints.size() << '\n';
        for (const Point2& p : op.vPoints) out << "p " << p.x() << ' ' << p.y() << ' ' << p.z() << '\n';
    }
    out.close();
    return !out.fail();
}

OperationSequence readSequenceFile(const std::string& path)
{
    const std::vector<Point2> vPoints = readCorpusFile(path, path).vPoints;
    auto next = vPoints.begin();
    OperationSequence sequence;
    std::ifstream in(path);
    for (std::string line; std::getline(in, line);) {
        if (line.rfind("#:", 0) != 0) continue;
        std::istringstream fields(line.substr(2));
        std::string name;
        std::ptrdiff_t count = 0;
        fields >> name >> count;
        const auto* const pName = std::find(std::begin(kindNames), std::end(kindNames), name);
        if (!fields || pName == std::end(kindNames) || count > vPoints.end() - next)
            throw std::runtime_error(path + ": no such operation, or too few points: " + line);
        sequence.push_back({static_cast<Operation::Kind>(pName - std::begin(kindNames)), {next, next + count}});
        next += count;
    }
    if (next != vPoints.end()) throw std::runtime_error(path + ": points that belong to no operation");
    return sequence;
}

} // namespace oracles
