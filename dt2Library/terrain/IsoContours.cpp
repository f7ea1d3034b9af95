#include "IsoContours.h"

#include "Func_Rot3D.h"
#include "Vector2.h"
#include "support/check.h"
#include "support/messages.h"
#include "terrain/ContourChains.h"
#include "terrain/ContourTracer.h"
#include "terrain/HeightIndex.h"
#include "terrain/PlanarPoint.h"

#include <algorithm>
#include <cmath>
#include <mutex>
#include <sstream>

namespace ORBI_LUMO25D
{

namespace
{

/// A turn in space and the way back.
class Turn
{
public:
    explicit Turn(const Vector2& toZ)
        : forward(normalize(toZ)), rowX(forward(Point2(1, 0, 0))), rowY(forward(Point2(0, 1, 0))),
          rowZ(forward(Point2(0, 0, 1)))
    {
    }
    Point2 operator()(const Point2& p) const { return forward(p); }
    /// The inverse of a rotation is its transpose: its rows are the images of the axes.
    Point2 back(const Point2& p) const { return Point2(dot(rowX, p), dot(rowY, p), dot(rowZ, p)); }

private:
    static double dot(const Point2& a, const Point2& b) { return a.x() * b.x() + a.y() * b.y() + a.z() * b.z(); }

    Func_Rot3D forward;
    Point2 rowX, rowY, rowZ;
};

/// What a plane and a triangle have in common.
struct Section
{
    int numCornersIn = 0;  ///< corners in the plane
    bool bSegment = false; ///< more than a point: from a to b
    Point2 a, b;
};

Section sectionOf(const Triangle2& t, double height)
{
    Section s;
    Point2 aPoints[3];
    int numPoints = 0;
    for (int i = 0; i < 3; ++i) {
        const Point2* const p = t.corner(i);
        const Point2* const pNext = t.corner(incIndexBy1(i));
        if (p->z() == height) {
            ++s.numCornersIn;
            aPoints[numPoints++] = *p;
        } else if (pNext->z() != height && (p->z() < height) != (pNext->z() < height)) {
            const bool bUp = p->z() < height;
            aPoints[numPoints++] = placeAt(bUp ? *p : *pNext, bUp ? *pNext : *p, height).at(height);
        }
    }
    // One point: the plane touches a corner, or both points are the same in rounding.
    s.bSegment = numPoints == 2 && aPoints[0] != aPoints[1];
    if (s.bSegment) {
        s.a.setCoords(aPoints[0].x(), aPoints[0].y(), height);
        s.b.setCoords(aPoints[1].x(), aPoints[1].y(), height);
    }
    return s;
}

/// The smallest power of two, from 1.0 downward, that changes the height.
double smallestPower(double height)
{
    double add = 1.0;
    while (height + add / 2.0 > height) add /= 2.0;
    return add;
}

double firstNoise(double height)
{
    const double add = smallestPower(height);
    return add * 1000.0 < 1e-6 ? add * 1000.0 : add;
}

void warn(const char* operation, const char* what, double height, const std::string& advice)
{
    std::ostringstream text;
    text << what << height << advice;
    msgWarning(operation, text.str());
}

void warnOfContours(const char* what, double height)
{
    warn("IsoContours::getContours()", what, height,
         ".\n      Please add a little noise and try again. Use bVerbose=false to suppress this message.");
}

void warnOfNoise(double height, double add)
{
    std::ostringstream advice;
    advice << ". Adding " << add << " automatically.\n      Use bVerbose=false to suppress this message.";
    warn("IsoContours::getContours()", "Degenerate intersection at height z=", height, advice.str());
}

const char* const degenerate = "Degenerate intersection at height z=";
const char* const inaccurate = "Bad numerical accuracy at height z=";

} // namespace

/// What a query for contours works with. Large enough to be kept for the next one.
struct ContourQuery
{
    explicit ContourQuery(const HeightIndex& index) : tracer(index) {}

    /// False at the height of a vertex.
    bool trace(double height) { return tracer.trace(height); }
    /// False where there are branches.
    bool join() { return chains.join(tracer.points(), tracer.pieces()); }

    ContourTracer tracer;
    ContourChains chains;
};

/// The triangles, turned for profiles, with their index.
class IsoContoursImpl
{
public:
    explicit IsoContoursImpl(const std::vector<Triangle2*>& vT) : index(vT) {}
    IsoContoursImpl(const std::vector<Point2>& vCorners, const Vector2& dirVec)
        : pTurn(std::make_unique<Turn>(dirVec)), index(turned(vCorners))
    {
    }

    const HeightIndex& getIndex() const { return index; }
    const Turn* getTurn() const { return pTurn.get(); }

    /// One that is idle, or a new one: several threads may ask at once. What isn't given back, as after an exception, is
    /// no loss.
    std::unique_ptr<ContourQuery> takeQuery();
    void giveBack(std::unique_ptr<ContourQuery> pQuery);

    /// The number to add to a height that can't be cut so that it can; the query has the contours there then, and
    /// bChains tells whether they were joined.
    double findNoise(double height, ContourQuery& query, bool& bChains) const;
    /// The segments of a profile. False when a triangle lies in the plane.
    bool cutThrough(double height, std::vector<Segment2>& vSegments) const;

private:
    std::vector<Triangle2*> turned(const std::vector<Point2>& vCorners);

    std::unique_ptr<Turn> pTurn;
    std::vector<Point2> vTurnedPoints;
    std::vector<Triangle2> vTurnedTriangles;
    HeightIndex index;
    std::mutex mtxIdle;
    std::vector<std::unique_ptr<ContourQuery>> vIdle;
};

std::unique_ptr<ContourQuery> IsoContoursImpl::takeQuery()
{
    const std::lock_guard<std::mutex> lock(mtxIdle);
    if (vIdle.empty()) return std::make_unique<ContourQuery>(index);
    std::unique_ptr<ContourQuery> pQuery = std::move(vIdle.back());
    vIdle.pop_back();
    return pQuery;
}

void IsoContoursImpl::giveBack(std::unique_ptr<ContourQuery> pQuery)
{
    const std::lock_guard<std::mutex> lock(mtxIdle);
    vIdle.push_back(std::move(pQuery));
}

std::vector<Triangle2*> IsoContoursImpl::turned(const std::vector<Point2>& vCorners)
{
    const std::size_t n = vCorners.size() / 3;
    if (vCorners.size() % 3 != 0) {
        msgWarning("IsoContours", "The number of corners is not a multiple of 3, the last ones are left out");
    }
    vTurnedPoints.reserve(3 * n);
    for (std::size_t i = 0; i < 3 * n; ++i) vTurnedPoints.push_back((*pTurn)(vCorners[i]));
    vTurnedTriangles.resize(n);
    std::vector<Triangle2*> vT(n);
    for (std::size_t i = 0; i < n; ++i) {
        vTurnedTriangles[i].setProperties(&vTurnedPoints[3 * i], &vTurnedPoints[3 * i + 1], &vTurnedPoints[3 * i + 2]);
        vT[i] = &vTurnedTriangles[i];
    }
    return vT;
}

bool IsoContoursImpl::cutThrough(double height, std::vector<Segment2>& vSegments) const
{
    vSegments.clear();
    std::vector<Segment2> vEdges; // in the plane: both of their triangles have them
    HeightIndex::Found found;
    index.findAt(height, found);
    for (std::size_t i = 0; i < found.size; ++i) {
        const Section s = sectionOf(*index.triangle(found.vNumbers[i]), height);
        if (s.numCornersIn == 3) return false;
        if (!s.bSegment) continue;
        if (s.numCornersIn == 2) {
            vEdges.emplace_back(std::min(s.a, s.b), std::max(s.a, s.b));
        } else {
            vSegments.emplace_back(s.a, s.b);
        }
    }
    std::sort(vEdges.begin(), vEdges.end(),
              [](const Segment2& a, const Segment2& b) { return Func_compareSegment()(&a, &b); });
    vEdges.erase(std::unique(vEdges.begin(), vEdges.end()), vEdges.end());
    vSegments.insert(vSegments.end(), vEdges.begin(), vEdges.end());
    return true;
}

double IsoContoursImpl::findNoise(double height, ContourQuery& query, bool& bChains) const
{
    // Points at least this far apart differ in their coordinates. They move apart by the noise over the slope: no slope is
    // so small that less than `useful` would do, and beyond `most` it's not the noise that is missing.
    const double resolution = std::ldexp(index.maxAbs(), -52);
    const double useful = std::ldexp(resolution, -20);
    const double most = std::ldexp(resolution, 20);
    double firstFree = 0.0;  // of vertices
    double firstChain = 0.0; // free, and without branches, but with points that are the same in rounding
    for (double add = firstNoise(height); firstFree == 0.0 || add <= most; add *= 2.0) {
        LUMO_CHECK(height + add > height, "height+add>height");
        if (firstFree > 0.0 && add < useful) continue;
        if (!query.trace(height + add)) continue;
        bChains = query.join();
        if (bChains && query.tracer.shortestSection() > resolution) return add;
        if (bChains && firstChain == 0.0) firstChain = add;
        if (firstFree == 0.0) firstFree = add;
    }
    // Triangles as thin as the rounding stay so at any height.
    const double add = firstChain > 0.0 ? firstChain : firstFree;
    query.trace(height + add);
    bChains = query.join();
    return add;
}

IsoContours::IsoContours(const std::vector<Triangle2*>& vTriangles)
    : pImpl(std::make_unique<IsoContoursImpl>(vTriangles))
{
}

IsoContours::IsoContours(const std::vector<Point2>& vTriangleCorners, const Vector2& dirVec)
    : pImpl(std::make_unique<IsoContoursImpl>(vTriangleCorners, dirVec))
{
}

IsoContours::~IsoContours() = default;

double IsoContours::getMinHeight() const
{
    const HeightIndex& index = pImpl->getIndex();
    return index.empty() ? -1.0 : index.minZ();
}

double IsoContours::getMaxHeight() const
{
    const HeightIndex& index = pImpl->getIndex();
    return index.empty() ? -1.0 : index.maxZ();
}

bool IsoContours::getContours(double height, std::vector<std::vector<Segment2>>& vvContours, bool bVerbose,
                              bool bAutoNoise) const
{
    std::unique_ptr<ContourQuery> pQuery = pImpl->takeQuery();
    bool bFree = pQuery->trace(height); // of vertices
    bool bChains = bFree && pQuery->join();
    if (bAutoNoise && !bChains) {
        const double add = pImpl->findNoise(height, *pQuery, bChains);
        if (bVerbose) warnOfNoise(height, add);
        height += add;
        bFree = true;
    }
    if (bChains) {
        pQuery->chains.append(height, vvContours);
    } else {
        if (bVerbose) warnOfContours(bFree ? inaccurate : degenerate, height);
        if (!bFree) vvContours.clear();
    }
    pImpl->giveBack(std::move(pQuery));
    return bChains;
}

void IsoContours::getProfile(const Point2& p, std::vector<Segment2>& vSegments) const
{
    const Turn* const pTurn = pImpl->getTurn();
    if (pTurn == nullptr) {
        msgError("IsoContours::getProfile()", "This method requires that the IsoContours object is created with the "
                                              "constructor that takes a direction vector!");
        return;
    }
    std::vector<Segment2> vFound;
    for (double height = (*pTurn)(p).z(); !pImpl->cutThrough(height, vFound);) {
        double add = smallestPower(height);
        while (height + add == height) add *= 2.0; // from 2^53 on
        height += add;
    }
    vSegments.reserve(vSegments.size() + vFound.size());
    for (const Segment2& s : vFound) vSegments.emplace_back(pTurn->back(s.src), pTurn->back(s.trg));
}

} // namespace ORBI_LUMO25D
