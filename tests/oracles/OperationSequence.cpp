#include "oracles/OperationSequence.h"

#include "oracles/Corpus.h"
#include "oracles/QueryTwins.h"

#include "LumoExport.h"
#include "Lumo_2D.h"

#include <algorithm>
#include <exception>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace oracles
{

using namespace ORBI_LUMO25D;

namespace
{

const char* const kindNames[] = {"insert", "vector", "coordinates", "threaded", "remove",
                                 "locate", "height", "export",      "clear"};

/// Thrown by the runner, caught by it.
struct Deviation : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

void require(bool bHolds, const char* what)
{
    if (!bHolds) throw Deviation(what);
}

/// The triangulation and its naive model.
class Runner
{
public:
    void perform(const Operation& op);
    void check() const;

private:
    using Place = std::pair<double, double>;

    void insertOneByOne(const std::vector<Point2>& vPoints);
    void insertBulk(const Operation& op);
    void note(const Point2& p, Point2* pHandle);
    void remove(const Point2& p);
    void query(const Point2& p, bool bHeight) const;
    void exportArrays(bool bClear);

    Lumo_2D lumo;
    std::map<Place, double> mHeights;
    std::map<Place, Point2*> mHandles;
};

void Runner::note(const Point2& p, Point2* pHandle)
{
    const Place place(p.x(), p.y());
    mHeights.emplace(place, p.z());
    require(pHandle != nullptr && *pHandle == p, "a handle at another position");
    require(mHandles.emplace(place, pHandle).first->second == pHandle, "a second handle for one position");
    require(pHandle->z() == mHeights[place], "a handle with another height than the first point there");
}

void Runner::insertOneByOne(const std::vector<Point2>& vPoints)
{
    for (const Point2& p : vPoints) {
        note(p, lumo.insert(p));
    }
}

void Runner::insertBulk(const Operation& op)
{
    std::vector<Point2*> vHandles(op.vPoints.size());
    if (op.kind == Operation::COORDINATES) {
        std::vector<double> vCoords;
        for (const Point2& p : op.vPoints) {
            vCoords.insert(vCoords.end(), {p.x(), p.y(), p.z()});
        }
        lumo.insert(static_cast<int>(op.vPoints.size()), vCoords.data(), vHandles.data());
    } else {
        lumo.setNumCPU(op.kind == Operation::THREADED ? 4 : 1);
        lumo.insert(op.vPoints, vHandles);
        lumo.setNumCPU(1);
    }
    require(vHandles.size() == op.vPoints.size(), "another number of handles than points");
    for (std::size_t i = 0; i < op.vPoints.size(); ++i) {
        note(op.vPoints[i], vHandles[i]);
    }
}

void Runner::remove(const Point2& p)
{
    const auto it = mHandles.find({p.x(), p.y()});
    if (it == mHandles.end()) return;
    lumo.remove(it->second);
    require(it->second->getIncidentTriangle() == nullptr, "a removed vertex has a triangle");
    mHeights.erase(it->first);
    mHandles.erase(it);
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
    if (vAt.empty()) {
        require(height == -12345.0, "a failed query changed the height");
        return;
    }
    const auto itVertex = mHeights.find({p.x(), p.y()});
    require(itVertex == mHeights.end() || itVertex->second == height, "a vertex has another height");
    const auto [low, high] = std::minmax({vAt[0]->corner(0)->z(), vAt[0]->corner(1)->z(), vAt[0]->corner(2)->z()});
    const double tolerance = 1e-9 * (1.0 + std::max(std::abs(low), std::abs(high)));
    require(abs(mpq_class(height) - planeHeight(*vAt[0], p)) <= tolerance, "a height off the triangle's plane");
}

void Runner::exportArrays(bool bClear)
{
    LumoExport record;
    const std::size_t numTriangles = lumo.numberOfTriangles();
    lumo.exportTriangulation(record, true, bClear);
    require(static_cast<std::size_t>(record.numPoints) == mHeights.size(), "a wrong number of exported points");
    require(static_cast<std::size_t>(record.numTriangles) == numTriangles, "a wrong number of exported triangles");
    for (int v = 0; v < record.numPoints; ++v) {
        double x = 0.0, y = 0.0, z = 0.0;
        record.getCoordinates(v, x, y, z);
        const auto it = mHeights.find({x, y});
        require(it != mHeights.end() && it->second == z, "a wrong exported point");
    }
    if (!bClear) return;
    mHeights.clear();
    mHandles.clear();
}

void Runner::perform(const Operation& op)
{
    switch (op.kind) {
    case Operation::INSERT:
        insertOneByOne(op.vPoints);
        break;
    case Operation::VECTOR:
    case Operation::COORDINATES:
    case Operation::THREADED:
        insertBulk(op);
        break;
    case Operation::REMOVE:
        for (const Point2& p : op.vPoints) {
            remove(p);
            if (mHeights.size() < 100) check(); // of many, every single one would cost the square of their number
        }
        break;
    case Operation::LOCATE:
    case Operation::HEIGHT:
        for (const Point2& p : op.vPoints) {
            query(p, op.kind == Operation::HEIGHT);
        }
        break;
    case Operation::EXPORT:
    case Operation::CLEAR:
        exportArrays(op.kind == Operation::CLEAR);
        break;
    }
}

void Runner::check() const
{
    require(lumo.checkValidity(true, "after an operation"), "the triangulation isn't valid");
    require(lumo.numberOfPoints() == mHeights.size(), "a wrong number of points");
    std::vector<Point2*> vVertices;
    lumo.getVertexPointers(vVertices);
    require(vVertices.size() == mHeights.size(), "a wrong number of listed vertices");
    for (Point2* pVtx : vVertices) {
        const auto it = mHandles.find({pVtx->x(), pVtx->y()});
        require(it != mHandles.end() && it->second == pVtx, "a vertex that should not be there");
        require(pVtx->z() == mHeights.at(it->first), "a vertex with a wrong height");
        require((pVtx->getIncidentTriangle() != nullptr) == lumo.hasArea(), "a wrong incident triangle");
    }
    if (lumo.hasArea() || mHeights.size() < 3) return;
    const Point2 &a = *vVertices[0], &b = *vVertices[1];
    for (const Point2* p : vVertices) {
        require(sideOf(a, b, *p) == 0, "points with area wait");
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
    bool bChanged = false;
    for (std::size_t length = vItems.size(); length > 0; length /= 2) {
        for (std::size_t begin = 0; begin < vItems.size();) {
            std::vector<T> vRest(vItems.begin(), vItems.begin() + static_cast<std::ptrdiff_t>(begin));
            const std::size_t end = std::min(begin + length, vItems.size());
            vRest.insert(vRest.end(), vItems.begin() + static_cast<std::ptrdiff_t>(end), vItems.end());
            if (fails(vRest)) {
                vItems.swap(vRest);
                bChanged = true;
            } else {
                begin += length;
            }
        }
    }
    return bChanged;
}

} // namespace

OperationSequence shrink(OperationSequence sequence, const std::function<bool(const OperationSequence&)>& fails)
{
    for (bool bChanged = true; bChanged;) {
        bChanged = takeStretchesAway<Operation>(sequence, fails);
        for (std::size_t i = 0; i < sequence.size(); ++i) {
            std::vector<Point2> vPoints = sequence[i].vPoints;
            const bool bFewer = takeStretchesAway<Point2>(vPoints, [&](const std::vector<Point2>& vFewer) {
                OperationSequence candidate = sequence;
                candidate[i].vPoints = vFewer;
                return fails(candidate);
            });
            sequence[i].vPoints = vPoints;
            bChanged = bChanged || bFewer;
        }
    }
    return sequence;
}

// ---- files ------------------------------------------------------------------------------------------------------

bool writeSequenceFile(const std::string& path, const OperationSequence& sequence, const std::string& comment)
{
    std::ofstream out(path);
    out.precision(17);
    out << "# " << comment << '\n';
    for (const Operation& op : sequence) {
        out << "#: " << kindNames[op.kind] << ' ' << op.vPoints.size() << '\n';
        for (const Point2& p : op.vPoints) {
            out << "p " << p.x() << ' ' << p.y() << ' ' << p.z() << '\n';
        }
    }
    out.close();
    return !out.fail();
}

OperationSequence readSequenceFile(const std::string& path)
{
    const std::vector<Point2> vPoints = readCorpusFile(path, path).vPoints;
    OperationSequence sequence;
    std::size_t next = 0;
    std::ifstream in(path);
    for (std::string line; std::getline(in, line);) {
        if (line.rfind("#:", 0) != 0) continue;
        std::istringstream fields(line.substr(2));
        std::string name;
        std::size_t count = 0;
        fields >> name >> count;
        const auto* const pName = std::find(std::begin(kindNames), std::end(kindNames), name);
        if (!fields || pName == std::end(kindNames) || count > vPoints.size() - next)
            throw std::runtime_error(path + ": no such operation, or too few points: " + line);
        const auto begin = vPoints.begin() + static_cast<std::ptrdiff_t>(next);
        sequence.push_back({static_cast<Operation::Kind>(pName - std::begin(kindNames)),
                            std::vector<Point2>(begin, begin + static_cast<std::ptrdiff_t>(count))});
        next += count;
    }
    if (!sequence.empty() && next != vPoints.size())
        throw std::runtime_error(path + ": points that belong to no operation");
    return sequence;
}

std::vector<std::pair<std::string, OperationSequence>> corpusSequences()
{
    std::vector<std::pair<std::string, OperationSequence>> vSequences;
    for (const auto& file : std::filesystem::directory_iterator(LUMO25D_CORPUS_DIR "/sequences")) {
        vSequences.emplace_back(file.path().stem().string(), readSequenceFile(file.path().string()));
    }
    std::sort(vSequences.begin(), vSequences.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    return vSequences;
}

} // namespace oracles
