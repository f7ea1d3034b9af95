#include "IsoContours.h"

#include "Func_Rot3D.h"
#include "Vector2.h"
#include "support/check.h"
#include "support/messages.h"
#include "terrain/ContourChains.h"
#include "terrain/HeightIndex.h"

#include <algorithm>
#include <cmath>
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

/// The coordinate at a height on an edge from a to b, where az < height < bz.
double coordinateAt(double a, double b, double az, double bz, double height)
{
    const double slope = (b - a) / (bz - az);
    double result = a + slope * (height - az);
    if (!std::isfinite(slope) || !std::isfinite(result)) {
        // Differences beyond the largest double, or heights that almost coincide: long double has the exponents for them.
        using Long = long double;
        const Long la = Long(a), lz = Long(az);
        result = static_cast<double>(la + (Long(b) - la) / (Long(bz) - lz) * (Long(height) - lz));
    }
    const auto [low, high] = std::minmax(a, b);
    return std::clamp(result, low, high);
}

/// Where the edge between two vertices has the height.
void placeAt(const Point2* pA, const Point2* pB, double height, double& x, double& y)
{
    // From the lower end, whoever asks: both triangles of an edge get the same point.
    if (pB->z() < pA->z()) std::swap(pA, pB);
    x = coordinateAt(pA->x(), pB->x(), pA->z(), pB->z(), height);
    y = coordinateAt(pA->y(), pB->y(), pA->z(), pB->z(), height);
}

/// What a plane and a triangle have in common.
struct Section
{
    int numCornersIn = 0;  ///< corners in the plane
    bool bSegment = false; ///< more than a point: from a to b
    Point2 a, b;
};

Section sectionOf(const HeightIndex::Corners& t, double height)
{
    Section s;
    Point2 aPoints[3];
    int numPoints = 0;
    for (int i = 0; i < 3; ++i) {
        const Point2* p = t[static_cast<std::size_t>(i)];
        const Point2* pNext = t[static_cast<std::size_t>(incIndexBy1(i))];
        if (p->z() == height) {
            ++s.numCornersIn;
            aPoints[numPoints++] = *p;
        } else if (pNext->z() != height && (p->z() < height) != (pNext->z() < height)) {
            double x = 0.0, y = 0.0;
            placeAt(p, pNext, height, x, y);
            aPoints[numPoints++].setCoords(x, y, height);
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

    /// The contours' segments. False when a vertex has this height.
    bool cut(double height, std::vector<PlanarSegment>& vSegments) const;
    /// The segments of a profile. False when a triangle lies in the plane.
    bool cutThrough(double height, std::vector<Segment2>& vSegments) const;
    /// The number to add to a height that can't be cut so that it can, with the segments there.
    double findNoise(double height, std::vector<PlanarSegment>& vSegments) const;

private:
    std::vector<Triangle2*> turned(const std::vector<Point2>& vCorners);
    bool cutApart(double height, double resolution, std::vector<PlanarSegment>& vSegments, bool& bApart) const;

    std::unique_ptr<Turn> pTurn;
    std::vector<Point2> vTurnedPoints;
    std::vector<Triangle2> vTurnedTriangles;
    HeightIndex index;
};

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

bool IsoContoursImpl::cut(double height, std::vector<PlanarSegment>& vSegments) const
{
    bool bApart = true;
    return cutApart(height, 0.0, vSegments, bApart);
}

/// bApart: both ends of each segment are further apart than the resolution, and no segment has shrunk to a point.
bool IsoContoursImpl::cutApart(double height, double resolution, std::vector<PlanarSegment>& vSegments,
                               bool& bApart) const
{
    vSegments.clear();
    bApart = true;
    return index.forEachAt(height, [&](const HeightIndex::Corners& t) {
        const double z0 = t[0]->z(), z1 = t[1]->z(), z2 = t[2]->z();
        if (z0 == height || z1 == height || z2 == height) return false;
        // One corner is alone on its side of the plane, and its two edges are cut.
        const bool b0 = z0 < height, b1 = z1 < height, b2 = z2 < height;
        const std::size_t alone = b1 == b2 ? 0 : (b0 == b2 ? 1 : 2);
        PlanarSegment s{};
        placeAt(t[alone], t[alone == 2 ? 0 : alone + 1], height, s.aX[0], s.aY[0]);
        placeAt(t[alone], t[alone == 0 ? 2 : alone - 1], height, s.aX[1], s.aY[1]);
        const double length = std::max(std::fabs(s.aX[0] - s.aX[1]), std::fabs(s.aY[0] - s.aY[1]));
        if (length > 0.0) vSegments.push_back(s);
        if (length <= resolution) bApart = false;
        return true;
    });
}

bool IsoContoursImpl::cutThrough(double height, std::vector<Segment2>& vSegments) const
{
    vSegments.clear();
    std::vector<Segment2> vEdges; // in the plane: both of their triangles have them
    const bool bOK = index.forEachAt(height, [&](const HeightIndex::Corners& t) {
        const Section s = sectionOf(t, height);
        if (s.numCornersIn == 3) return false;
        if (!s.bSegment) return true;
        if (s.numCornersIn == 2) {
            vEdges.emplace_back(std::min(s.a, s.b), std::max(s.a, s.b));
        } else {
            vSegments.emplace_back(s.a, s.b);
        }
        return true;
    });
    std::sort(vEdges.begin(), vEdges.end(),
              [](const Segment2& a, const Segment2& b) { return Func_compareSegment()(&a, &b); });
    vEdges.erase(std::unique(vEdges.begin(), vEdges.end()), vEdges.end());
    vSegments.insert(vSegments.end(), vEdges.begin(), vEdges.end());
    return bOK;
}

double IsoContoursImpl::findNoise(double height, std::vector<PlanarSegment>& vSegments) const
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
        bool bApart = true;
        if (!cutApart(height + add, resolution, vSegments, bApart)) continue;
        const bool bChains = !ContourChains(vSegments).isBranching();
        if (bChains && bApart) return add;
        if (bChains && firstChain == 0.0) firstChain = add;
        if (firstFree == 0.0) firstFree = add;
    }
    // Triangles as thin as the rounding stay so at any height.
    const double add = firstChain > 0.0 ? firstChain : firstFree;
    cut(height + add, vSegments);
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
    std::vector<PlanarSegment> vSegments;
    const bool bFree = pImpl->cut(height, vSegments);
    if (!bFree && !bAutoNoise) {
        if (bVerbose) warnOfContours(degenerate, height);
        vvContours.clear();
        return false;
    }
    auto pChains = std::make_unique<ContourChains>(vSegments);
    if (bAutoNoise && (!bFree || pChains->isBranching())) {
        const double add = pImpl->findNoise(height, vSegments);
        if (bVerbose) warnOfNoise(height, add);
        height += add;
        pChains = std::make_unique<ContourChains>(vSegments);
    }
    if (pChains->isBranching()) {
        if (bVerbose) warnOfContours(inaccurate, height);
        return false;
    }
    pChains->append(height, vvContours);
    return true;
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
