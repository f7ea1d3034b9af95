#include "cloud/ModelMesh.h"

#include "engine/Dt2.h"
#include "geometry/TriangleLinks.h"
#include "support/Progress.h"
#include "support/check.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace ORBI_LUMO25D
{

namespace
{

/// Another evaluation of the same height may differ by a few roundings: by so much, relative to the height, the bound is
/// kept from being exhausted.
constexpr double heightSlack = 0x1p-48;

/// Vertices on one circle whose 560 triangles are still looked at one by one.
constexpr std::size_t maxFaceSize = 16;

/// Bounds of the heights that triangles of given vertices can have at a place. Seen from any plane, the heights between
/// vertices are means of theirs: so one near the vertices bounds them closely.
class HeightBounds
{
public:
    /// The plane is that of the triangle abc, as far as rounding lets it.
    HeightBounds(const Triangle2& t, const std::vector<const Point2*>& vVertices) : origin(*t.corner(0))
    {
        const Point2& b = *t.corner(1);
        const Point2& c = *t.corner(2);
        const double bx = b.x() - origin.x(), by = b.y() - origin.y(), bz = b.z() - origin.z();
        const double cx = c.x() - origin.x(), cy = c.y() - origin.y(), cz = c.z() - origin.z();
        const double det = bx * cy - by * cx;
        slopeX = (bz * cy - by * cz) / det;
        slopeY = (bx * cz - bz * cx) / det;
        for (const Point2* pVtx : vVertices) {
            const Deviation d = deviation(*pVtx);
            highest = std::max(highest, d.value + d.rounding);
            lowest = std::min(lowest, d.value - d.rounding);
            if (std::isnan(d.value)) highest = HUGE_VAL;
        }
    }

    /// No such triangle is off by more at p. What isn't a number counts as infinite.
    double maxError(const Point2& p) const
    {
        const Deviation d = deviation(p);
        const double off = std::max(highest - d.value, d.value - lowest) + d.rounding;
        return std::isnan(off) ? HUGE_VAL : off;
    }

private:
    struct Deviation
    {
        double value;    ///< height above the plane
        double rounding; ///< by how much that may be wrong
    };
    Deviation deviation(const Point2& p) const
    {
        const double dx = slopeX * (p.x() - origin.x()), dy = slopeY * (p.y() - origin.y());
        return {(p.z() - origin.z()) - (dx + dy),
                heightSlack * (std::fabs(p.z()) + std::fabs(origin.z()) + std::fabs(dx) + std::fabs(dy))};
    }

    Point2 origin;
    double slopeX = 0.0, slopeY = 0.0;
    double highest = 0.0, lowest = 0.0; ///< deviations of the vertices
};

} // namespace

ModelMesh::ModelMesh(const std::vector<Point2>& vPoints_, const std::vector<std::size_t>& vCorners)
    : vPoints(vPoints_), pDt(std::make_unique<Dt2>(vPoints_.size() / 2)), vVertices(vPoints_.size(), nullptr),
      vPermanent(vPoints_.size(), false), vNext(vPoints_.size(), none)
{
    std::vector<Point2> vHull;
    for (const std::size_t i : vCorners) vHull.push_back(vPoints[i]);
    std::vector<Point2*> vHandles;
    pDt->insertVector(vHull, &vHandles);
    LUMO_CHECK(pDt->hasArea(), "dt0.hasArea()");
    for (std::size_t k = 0; k < vCorners.size(); ++k) {
        vVertices[vCorners[k]] = vHandles[k];
        vPermanent[vCorners[k]] = true;
    }
    int exponent = 0;
    const double range = pDt->computeBoundingBox().getMaxRange();
    if (std::isfinite(range)) std::frexp(range, &exponent);
    scale = std::ldexp(1.0, std::clamp(-exponent, -1000, 1000));

    Triangle2* pT = vHandles[0]->getIncidentTriangle();
    for (std::size_t i = 0; i < vPoints.size(); ++i) {
        if (!isVertex(i)) assign(i, pT);
    }
}

ModelMesh::~ModelMesh() = default;

std::size_t ModelMesh::numVertices() const
{
    return static_cast<std::size_t>(
        std::count_if(vVertices.begin(), vVertices.end(), [](const Point2* p) { return p != nullptr; }));
}

// ---- points under triangles -----------------------------------------------------------------------------------------

ModelMesh::Slot& ModelMesh::slotOf(const Triangle2* pT)
{
    const std::size_t number = pDt->poolTriangles.indexOf(pT);
    if (number >= vSlots.size()) vSlots.resize(pDt->poolTriangles.size());
    return vSlots[number];
}

/// How far p lies above or below the plane of three points that turn counterclockwise, in whose triangle it is. What
/// can't be told counts as infinite.
double ModelMesh::error(const Point2& a, const Point2& b, const Point2& c, const Point2& p) const
{
    const double ax = scale * (a.x() - p.x()), ay = scale * (a.y() - p.y());
    const double bx = scale * (b.x() - p.x()), by = scale * (b.y() - p.y());
    const double cx = scale * (c.x() - p.x()), cy = scale * (c.y() - p.y());
    // Areas of the triangles of p and an edge. Rounding may put a point on an edge outside of it.
    const double wa = std::max(0.0, bx * cy - by * cx);
    const double wb = std::max(0.0, cx * ay - cy * ax);
    const double wc = std::max(0.0, ax * by - ay * bx);
    const double sum = wa + wb + wc;
    const double off = std::fabs(wa * (a.z() - p.z()) + wb * (b.z() - p.z()) + wc * (c.z() - p.z())) / sum;
    if (std::isnan(off)) return HUGE_VAL;
    return off == 0.0 ? 0.0 : off + heightSlack * std::fabs(p.z());
}

/// Makes the points of a triangle loose.
void ModelMesh::takeList(const Triangle2* pT)
{
    Slot& slot = slotOf(pT);
    for (std::size_t i = slot.first; i != none; i = vNext[i]) vLoose.push_back(i);
    slot = Slot();
}

/// Puts a point into the list of the triangle that holds it, to which pT is moved.
void ModelMesh::assign(std::size_t i, Triangle2*& pT)
{
    const Point2& p = vPoints[i];
    int edge = -1;
    const int state = pDt->locateConflictTriangle(p, &pT, &edge);
    LUMO_CHECK(state != 4, "points are different");
    Slot& slot = slotOf(pT);
    vNext[i] = slot.first;
    slot.first = i;
    const double e = error(*pT->corner(0), *pT->corner(1), *pT->corner(2), p);
    if (e > slot.error || slot.worst == none) {
        slot.error = e;
        slot.worst = i;
    }
    if (vChanged.empty() || vChanged.back() != pT) vChanged.push_back(pT);
}

/// Assigns the loose points, beginning at pT. False, with the others still loose, as soon as one is off by more.
bool ModelMesh::assignWithin(double maxError, Triangle2* pT)
{
    while (!vLoose.empty()) {
        const std::size_t i = vLoose.back();
        vLoose.pop_back();
        assign(i, pT);
        if (slotOf(pT).error > maxError) return false;
    }
    return true;
}

// ---- vertices -------------------------------------------------------------------------------------------------------

/// Makes a point a vertex, which must be in a list or loose; the list of every triangle that changes moves on.
void ModelMesh::insertVertex(std::size_t i)
{
    Point2* const pVtx = pDt->insert(vPoints[i]);
    vVertices[i] = pVtx;
    vStar.clear();
    pDt->getIncidentTriangles(pVtx, vStar);
    // The triangles that went are those of the star, in other shape, and the new ones have no points yet.
    for (const Triangle2* pT : vStar) takeList(pT);
    vLoose.erase(std::remove(vLoose.begin(), vLoose.end(), i), vLoose.end());
    vChanged.assign(vStar.begin(), vStar.end());
    assignWithin(HUGE_VAL, pVtx->getIncidentTriangle());
}

/// Takes a vertex out, unless a point would be off by more than maxError then.
bool ModelMesh::removeVertex(std::size_t i, double maxError)
{
    vStar.clear();
    pDt->getIncidentTriangles(vVertices[i], vStar);
    for (const Triangle2* pT : vStar) takeList(pT);
    pDt->remove(vVertices[i]);
    vVertices[i] = nullptr;
    vLoose.push_back(i); // the first to be looked at: it is the most likely one to be off
    // The hole is filled with what was the star; two of its triangles are dead now.
    vStar.erase(
        std::remove_if(vStar.begin(), vStar.end(), [](const Triangle2* pT) { return pT->corner(0) == nullptr; }),
        vStar.end());
    vChanged.assign(vStar.begin(), vStar.end());
    if (assignWithin(maxError, vStar.front()) && areFacesWithin(maxError)) return true;
    insertVertex(i);
    return false;
}

// ---- faces ----------------------------------------------------------------------------------------------------------

/// Collects the triangles with the circumcircle of pT that hang together with it, and their corners.
void ModelMesh::collectFace(Triangle2* pT)
{
    vFace.assign(1, pT);
    vFaceVertices = {pT->corner(0), pT->corner(1), pT->corner(2)};
    for (std::size_t k = 0; k < vFace.size(); ++k) {
        for (int e = 0; e < 3; ++e) {
            Triangle2* const pN = vFace[k]->neighbor(e);
            if (pN == nullptr || std::find(vFace.begin(), vFace.end(), pN) != vFace.end()) continue;
            const Point2* const pApex = pN->corner(TriangleLinks::indexOf(pN, vFace[k]));
            if (pDt->orbiTest.circleInc3state(pT, pApex) != CINC2_ZERO) continue;
            vFace.push_back(pN);
            vFaceVertices.push_back(pApex);
        }
    }
}

/// The largest error of a point over all triangles of the face's vertices that hold it.
double ModelMesh::worstError(std::size_t i) const
{
    const Point2& p = vPoints[i];
    const auto turn = [this](const Point2* a, const Point2* b, const Point2* c) {
        return pDt->orbiTest.orientationInRange(a, b, c);
    };
    double worst = 0.0;
    const std::size_t n = vFaceVertices.size();
    for (std::size_t k0 = 0; k0 < n; ++k0) {
        for (std::size_t k1 = k0 + 1; k1 < n; ++k1) {
            // No three of them are on one line.
            const Orientation2 side = turn(vFaceVertices[k0], vFaceVertices[k1], &p);
            for (std::size_t k2 = k1 + 1; k2 < n; ++k2) {
                const Point2* a = vFaceVertices[k0];
                const Point2* b = vFaceVertices[k1];
                const Point2* c = vFaceVertices[k2];
                const Orientation2 direction = turn(a, b, c);
                if (side != ORIENTATION2_COLLINEAR && side != direction) continue;
                if (direction == ORIENTATION2_CW) std::swap(a, b);
                if (turn(b, c, &p) == ORIENTATION2_CW || turn(c, a, &p) == ORIENTATION2_CW) continue;
                worst = std::max(worst, error(*a, *b, *c, p));
            }
        }
    }
    return worst;
}

/// The worst point of the face of pT; points that are within maxError are passed over where that is quickly seen. On a
/// circle with many vertices, whose triangles are too many to be looked at one by one, it is the bound that counts: a few
/// points more than needed, and the face falls apart.
ModelMesh::Candidate ModelMesh::worstOfFace(Triangle2* pT, double maxError)
{
    collectFace(pT);
    if (vFace.size() == 1) {
        const Slot& slot = slotOf(pT);
        return {slot.error, slot.worst, pT};
    }
    const HeightBounds bounds(*pT, vFaceVertices);
    Candidate worst = {0.0, none, pT};
    for (Triangle2* pFaceT : vFace) {
        for (std::size_t i = slotOf(pFaceT).first; i != none; i = vNext[i]) {
            const double bound = bounds.maxError(vPoints[i]);
            if (bound <= maxError) continue;
            const Candidate other = {vFaceVertices.size() > maxFaceSize ? bound : worstError(i), i, pFaceT};
            if (worst.point == none || worst < other) worst = other;
        }
    }
    return worst;
}

bool ModelMesh::areFacesWithin(double maxError)
{
    return std::all_of(vChanged.begin(), vChanged.end(),
                       [this, maxError](Triangle2* pT) { return worstOfFace(pT, maxError).error <= maxError; });
}

/// Inserts the worst point of each face, and of those that come about so, until all are within maxError.
void ModelMesh::settleFaces(std::vector<Triangle2*> vQueue, double maxError)
{
    while (!vQueue.empty()) {
        Triangle2* const pT = vQueue.back();
        vQueue.pop_back();
        if (pT->corner(0) == nullptr) continue;
        const Candidate worst = worstOfFace(pT, maxError);
        if (worst.error <= maxError) continue;
        insertVertex(worst.point);
        vInOrder.push_back(worst.point);
        vQueue.insert(vQueue.end(), vChanged.begin(), vChanged.end());
    }
}

// ---- the two ways ---------------------------------------------------------------------------------------------------

void ModelMesh::offerChanged()
{
    for (Triangle2* pT : vChanged) {
        const Slot& slot = slotOf(pT);
        if (slot.worst != none) queue.push({slot.error, slot.worst, pT});
    }
}

void ModelMesh::insertWorst(double maxError, Progress& progress)
{
    progress.start("insert worst points", vPoints.size());
    offerChanged();
    while (!queue.empty() && queue.top().error > maxError) {
        const Candidate worst = queue.top();
        queue.pop();
        const Slot& slot = slotOf(worst.pT);
        if (slot.worst != worst.point || slot.error != worst.error) continue; // out of date
        insertVertex(worst.point);
        vInOrder.push_back(worst.point);
        offerChanged();
        progress.step(1);
    }
    std::vector<Triangle2*> vAll;
    pDt->getTrianglePointers(vAll);
    settleFaces(std::move(vAll), maxError);
    progress.finish();
}

void ModelMesh::removeSuperfluous(double maxError, Progress& progress)
{
    constexpr int maxPasses = 4;
    for (int pass = 0; pass < maxPasses; ++pass) {
        progress.start("remove superfluous points", vInOrder.size());
        const std::size_t numBefore = vInOrder.size();
        vInOrder.erase(std::remove_if(vInOrder.begin(), vInOrder.end(),
                                      [&](std::size_t i) {
                                          progress.step(1);
                                          return removeVertex(i, maxError);
                                      }),
                       vInOrder.end());
        progress.finish();
        // Each removal may make another one possible, but ever fewer.
        if (numBefore - vInOrder.size() < numBefore / 200 + 1) break;
    }
}

void ModelMesh::insert(const std::vector<std::size_t>& vPositions, double maxError)
{
    std::vector<Triangle2*> vQueue;
    for (const std::size_t i : vPositions) {
        if (isVertex(i)) continue;
        insertVertex(i);
        vQueue.insert(vQueue.end(), vChanged.begin(), vChanged.end());
    }
    settleFaces(std::move(vQueue), maxError);
}

} // namespace ORBI_LUMO25D
