// An advancing front over the border of a hole, as in W. Zhao, S. Gao, H. Lin: A robust hole-filling algorithm for
// triangular mesh. The Visual Computer 23 (2007): the sharpest corner first; one triangle for a sharp corner, two for a
// middle one, three for an open one. Particular here: new points follow the bend of the surface; a front that comes
// close to itself is split into two; and what that can't finish is closed in a second pass, shortest gap first.

#include "HoleFiller.h"

#include "geometry/numericTools.h"
#include "repair/HoleFillerImpl.h"
#include "repair/sortEdges_tools.h"
#include "support/check.h"
#include "support/messages.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

namespace ORBI_LUMO25D
{

namespace
{

constexpr std::size_t maxSteps = 100000;

/// A patch of n border edges and triangles of their size has about n^2/11 vertices inside when it is flat, and twice as
/// many when it is half a sphere. A front that takes more has left the hole.
std::size_t boundOfNewVertices(std::size_t numEdges)
{
    return numEdges > maxSteps ? 0 : numEdges * numEdges / 4 + 64;
}

/// Steps after which no more points are added, so that what is open then can still be closed within the limit.
std::size_t boundOfStepsWithPoints(std::size_t numEdges)
{
    const std::size_t reserve = 10000 + 2 * numEdges;
    return reserve < maxSteps ? maxSteps - reserve : 0;
}

/// Sine of 0.001 degrees: an angle below is none.
constexpr double flatSine = 1.75e-5;

} // namespace

// ---- construction ---------------------------------------------------------------------------------------------------

HoleFillerImpl::HoleFillerImpl(Mesh3* pMesh, bool bAddPoints_, bool bVerbose_, const std::vector<Edge2>& vPolygonEdges)
    : bAddPoints(bAddPoints_), bVerbose(bVerbose_), surface(pMesh), index(front, surface)
{
    std::srand(0);
    std::vector<Edge2> vEdges(vPolygonEdges);
    bOK = isProperBorder(pMesh, vEdges) && sortEdgesToRing(vEdges) == RingState::Ring;
    if (!bOK) {
        if (bVerbose) msgWarning("HoleFiller::HoleFiller()", "bad parameter vPolygon");
        return;
    }
    // Against the border edges: the triangle of a corner, (base, inc, dec), then goes on with their orientation.
    std::vector<std::size_t> vRing;
    for (auto it = vEdges.rbegin(); it != vEdges.rend(); ++it) vRing.push_back(surface.addRingVertex(it->getSrc()));
    computeMedianEdgeLength(vEdges);
    maxNewVertices = boundOfNewVertices(vEdges.size());
    maxStepsWithPoints = boundOfStepsWithPoints(vEdges.size());
    pCheck = std::make_unique<SpatialCheck>(front, index, surface, medianEdgeLength);
    vPendingRings.push_back(front.addRing(vRing));
    vQueues.emplace_back();
    for (std::size_t node = 0; node < vRing.size(); ++node) index.add(node);
}

bool HoleFillerImpl::isProperBorder(const Mesh3* pMesh, const std::vector<Edge2>& vEdges) const
{
    return pMesh != nullptr &&
           std::all_of(vEdges.begin(), vEdges.end(), [pMesh](const Edge2& e) { return pMesh->isBorderEdge(e); });
}

void HoleFillerImpl::computeMedianEdgeLength(const std::vector<Edge2>& vEdges)
{
    std::vector<double> vLengths;
    for (const Edge2& edge : vEdges) vLengths.push_back((*edge.getTrg() - *edge.getSrc()).length());
    std::sort(vLengths.begin(), vLengths.end());
    medianEdgeLength = vLengths[vLengths.size() / 2];
}

// ---- passes ---------------------------------------------------------------------------------------------------------

bool HoleFillerImpl::fill()
{
    if (!bOK) {
        if (bVerbose) msgWarning("HoleFiller::fill()", "Bad polygon, can't triangulate, returning false");
        return false;
    }
    if (bFilled) return bResult;
    bFilled = true;
    if (bAddPoints && isOuterRim()) bAddPoints = false;
    enqueueAll(vPendingRings.back());
    bResult = true;
    while (!vPendingRings.empty()) {
        const std::size_t ring = vPendingRings.back();
        vPendingRings.pop_back();
        bResult = fillRing(ring) && bResult;
    }
    return bResult;
}

/// The rim of an open sheet: what continued the surface there would spread before it could close, if ever. By Gauss and
/// Bonnet, a border turns by 360 degrees in all, less the curvature of what is missing: 360 around a flat hole, 0 at the
/// end of a tube and around half a sphere, -360 around a flat sheet. The border is taken for one of a part of a sphere,
/// which has n^2 / (5.44 (1 + turn / 360)) vertices.
bool HoleFillerImpl::isOuterRim() const
{
    double turn = 0.0;
    const auto n = static_cast<double>(front.ring(0).size);
    for (std::size_t node = 0; node < front.ring(0).size; ++node) turn += cornerAt(node).computeTurn();
    return (1.0 + turn / 360.0) * static_cast<double>(maxNewVertices) < n * n / 5.44;
}

/// False if the ring could not be closed. True, too, when it was split and its parts wait.
bool HoleFillerImpl::fillRing(std::size_t ring)
{
    pass = Pass::Careful;
    if (fillLoop(ring) == Step::Split) return true;
    for (const Pass next : {Pass::Rough, Pass::LastResort}) {
        if (front.ring(ring).size <= 2) break;
        pass = next;
        longRunCounter = 0;
        enqueueAll(ring);
        fillLoop(ring);
    }
    return front.ring(ring).size <= 2;
}

HoleFillerImpl::Step HoleFillerImpl::fillLoop(std::size_t ring)
{
    std::size_t node = 0;
    while (getNextBase(ring, node)) {
        ++longRunCounter;
        if (longRunCounter > maxSteps) {
            msgError("HoleFiller::fillLoop()", "HoleFiller::fillLoop(), longRun. Throwing an exception");
            LUMO_CHECK(false, "Err: LongRun, throwing now...");
        }
        if (createTriangleGate(node) == Step::Split) return Step::Split;
        const bool bRunAway = surface.numberOfNewVertices() > maxNewVertices || longRunCounter > maxStepsWithPoints;
        if (pass == Pass::Careful && bAddPoints && bRunAway) {
            bAddPoints = false;
            break; // the rough pass closes what is open
        }
    }
    return Step::Done;
}

/// The first corner of the queue whose value is still true.
bool HoleFillerImpl::getNextBase(std::size_t ring, std::size_t& node)
{
    Queue& queue = vQueues[ring];
    while (front.ring(ring).size > 2 && !queue.empty()) {
        const HoleFillerItem item = queue.top();
        queue.pop();
        node = item.node;
        if (!front.node(node).bAlive || front.node(node).ring != ring) continue;
        const CornerGeometry corner = cornerAt(node);
        if (valueOf(node, corner) == item.value && corner.getAngle() == item.angle) return true;
        enqueue(node, corner);
    }
    return false;
}

CornerGeometry HoleFillerImpl::cornerAt(std::size_t node) const
{
    return CornerGeometry(surface, front.node(node).vertex, front.dec(node), front.inc(node), bVerbose);
}

double HoleFillerImpl::valueOf(std::size_t node, const CornerGeometry& corner) const
{
    if (pass == Pass::Careful) return HoleFillerItem::qualityValue(corner.getAngle(), corner.getNormalAngle());
    return (surface.point(front.inc(node)) - surface.point(front.dec(node))).length();
}

void HoleFillerImpl::enqueue(std::size_t node)
{
    if (ringSize(node) > 2) enqueue(node, cornerAt(node));
}

void HoleFillerImpl::enqueue(std::size_t node, const CornerGeometry& corner)
{
    const double a = corner.getAngle(), value = valueOf(node, corner);
    LUMO_CHECK(std::isfinite(value), "the value is a number");
    if (pass == Pass::Careful && a >= 179.9) return;
    if (pass == Pass::Rough && (a < 0.001 || std::fabs(a - 180.0) < 0.001 || 360.0 - a < 0.001)) return;
    vQueues[front.node(node).ring].push({value, a, numArrivals++, node});
}

void HoleFillerImpl::enqueueAll(std::size_t ring)
{
    vQueues[ring] = Queue();
    const std::size_t first = front.ring(ring).first;
    std::size_t node = first;
    do {
        enqueue(node);
        node = front.node(node).next;
    } while (node != first);
}

// ---- a step ---------------------------------------------------------------------------------------------------------

HoleFillerImpl::Step HoleFillerImpl::createTriangleGate(std::size_t node)
{
    LUMO_CHECK(ringSize(node) > 2, "vVtx.size()>2");
    std::vector<Point2> vCandidates;
    const bool bOpen = bAddPoints && pass == Pass::Careful && ringSize(node) > 3;
    if (bOpen) {
        const CornerGeometry corner = cornerAt(node);
        const double closeDist = proposePoints(corner, vCandidates);
        std::vector<std::size_t> vClose;
        findCloseVertices(node, vCandidates, closeDist, vClose);
        std::size_t partner = 0;
        if (findPartner(node, corner, vClose, partner)) {
            splitAndSave(node, partner);
            return Step::Split;
        }
        const bool bRoom =
            vClose.empty() && !vCandidates.empty() && pCheck->isRoomForFan(node, vCandidates, corner.getNNV());
        if (!bRoom) vCandidates.clear();
    }
    if (!vCandidates.empty() && createTriangle_intraNew(node, vCandidates)) return Step::Done;
    if (!mayClose(node)) return Step::Refused;
    createTriangle_intra0(node);
    return Step::Done;
}

/// New points for an open corner; returns how close to the front is too close for them, negative for none.
double HoleFillerImpl::proposePoints(const CornerGeometry& corner, std::vector<Point2>& vCandidates) const
{
    if (corner.getAngle() < 85.0) return -1.0;
    Point2 add0, add1;
    if (corner.getAngle() >= 135.0) {
        if (!corner.computeTwoAddPoints(medianEdgeLength, add0, add1)) return -1.0;
        vCandidates = {add0, add1};
        return 0.5 * (add1 - add0).length();
    }
    if (!corner.computeAddPoint(medianEdgeLength, add0)) return -1.0;
    vCandidates = {add0};
    return 0.5 * std::min((add0 - corner.getDec()).length(), (add0 - corner.getInc()).length());
}

/// The ends, except the corner itself, of the edges of its ring that a candidate is too close to: the closest first.
void HoleFillerImpl::findCloseVertices(std::size_t node, const std::vector<Point2>& vCandidates, double closeDist,
                                       std::vector<std::size_t>& vClose) const
{
    std::vector<std::pair<double, std::size_t>> vFound;
    for (const Point2& c : vCandidates) {
        const ORBI_LOCATE3::RTree::Box box{{c.x() - closeDist, c.y() - closeDist, c.z() - closeDist},
                                           {c.x() + closeDist, c.y() + closeDist, c.z() + closeDist}};
        index.forEach(front.node(node).ring, box, [&](std::size_t edge) {
            const std::size_t next = front.node(edge).next;
            const Point2 &a = surface.point(front.node(edge).vertex), &b = surface.point(front.node(next).vertex);
            if (distanceFromSegment25D(a, b, c) > closeDist) return;
            if (edge != node) vFound.emplace_back((a - c).length(), edge);
            if (next != node) vFound.emplace_back((b - c).length(), next);
        });
    }
    std::sort(vFound.begin(), vFound.end());
    constexpr std::size_t enough = 16; // a long edge beside many short ones may be close to all of these
    for (auto it = vFound.begin(); it != vFound.end() && vClose.size() < enough; ++it) {
        if (std::find(vClose.begin(), vClose.end(), it->second) == vClose.end()) vClose.push_back(it->second);
    }
}

/// The first of the close nodes that the corner can be joined with: not over an edge that is there, nor across the front.
bool HoleFillerImpl::findPartner(std::size_t node, const CornerGeometry& corner, const std::vector<std::size_t>& vClose,
                                 std::size_t& partner) const
{
    const Front::Node& base = front.node(node);
    for (const std::size_t close : vClose) {
        partner = close;
        if (close == base.prev) partner = front.node(close).prev;
        if (close == base.next) partner = front.node(close).next;
        if (surface.hasEdge(base.vertex, front.node(partner).vertex)) continue;
        if (isFlat(node, partner) || isFlat(partner, node)) continue;
        if (pCheck->isVisible(node, partner, corner.getNNV())) return true;
    }
    return false;
}

/// The first part goes from the node forward to its partner and waits longer than the second one.
void HoleFillerImpl::splitAndSave(std::size_t node, std::size_t partner)
{
    surface.addLink(front.node(node).vertex, front.node(partner).vertex);
    const std::size_t oldRing = front.node(node).ring;
    bool bSecondIsNew = false;
    const std::size_t newRing = front.split(node, partner, bSecondIsNew);
    vQueues.emplace_back();
    // The four edges that end at a new node or are new.
    const std::size_t copy = front.ring(oldRing).first, copyNext = front.node(copy).next;
    for (const std::size_t i : {front.node(copy).prev, copy, copyNext}) index.add(i);
    index.add(front.node(front.ring(newRing).first).prev);
    enqueue(copy);
    enqueue(copyNext);
    enqueueAll(newRing);
    vPendingRings.push_back(bSecondIsNew ? oldRing : newRing);
    vPendingRings.push_back(bSecondIsNew ? newRing : oldRing);
}

/// Whether a corner may be cut off by its own triangle.
bool HoleFillerImpl::mayClose(std::size_t node) const
{
    bool bArea = false;
    getNormalVector(surface.point(front.node(node).vertex), surface.point(front.inc(node)),
                    surface.point(front.dec(node)), bArea);
    if (!bArea) return false;
    if (ringSize(node) > 3) {
        if (isFlat(front.node(node).next, front.node(node).prev)) return false;
        if (pass != Pass::LastResort && surface.hasEdge(front.dec(node), front.inc(node))) return false;
    }
    return pass != Pass::Careful || pCheck->getSpatialQuality(node) == 0;
}

/// True when all nodes from one forward to another are on one line: a ring closed there could not be filled.
bool HoleFillerImpl::isFlat(std::size_t first, std::size_t last) const
{
    const double sine = pass == Pass::LastResort ? 0.0 : flatSine;
    const Point2 &pFirst = surface.point(front.node(first).vertex), &pLast = surface.point(front.node(last).vertex);
    const Vector2 line = normalize(pLast - pFirst);
    for (std::size_t i = front.node(first).next; i != last; i = front.node(i).next) {
        const Point2& p = surface.point(front.node(i).vertex);
        const Vector2 v = normalize(p - pFirst), w = normalize(p - pLast);
        if (crossProduct(line, v).length() > sine && crossProduct(line, w).length() > sine) return false;
    }
    return true;
}

void HoleFillerImpl::createTriangle_intra0(std::size_t node)
{
    const std::size_t dec = front.node(node).prev, inc = front.node(node).next;
    surface.addTriangle(front.node(node).vertex, front.node(inc).vertex, front.node(dec).vertex);
    front.remove(node);
    if (ringSize(dec) <= 2) return;
    index.add(dec);
    enqueue(dec);
    enqueue(inc);
}

/// Puts one or two new vertices into the place of the node, which get two or three triangles with it. False, and nothing
/// happens, if there is a vertex already where one would be.
bool HoleFillerImpl::createTriangle_intraNew(std::size_t node, const std::vector<Point2>& vCandidates)
{
    for (const Point2& place : vCandidates) {
        if (!surface.isFree(place)) return false;
    }
    std::vector<std::size_t> vVertices;
    for (const Point2& place : vCandidates) vVertices.push_back(surface.addNewVertex(place));
    const std::size_t dec = front.node(node).prev, inc = front.node(node).next, base = front.node(node).vertex;
    std::size_t last = front.node(dec).vertex; // the fan around the base, from dec to inc
    for (const std::size_t vertex : vVertices) {
        surface.addTriangle(base, vertex, last);
        last = vertex;
    }
    surface.addTriangle(base, front.node(inc).vertex, last);
    std::size_t behind = node;
    for (const std::size_t vertex : vVertices) behind = front.insertBehind(behind, vertex);
    front.remove(node);
    for (std::size_t i = dec; i != inc; i = front.node(i).next) index.add(i);
    for (std::size_t i = dec; i != front.node(inc).next; i = front.node(i).next) enqueue(i);
    return true;
}

void HoleFillerImpl::getNewTriangles(std::vector<Point2>& vCorners) const
{
    for (const auto& triangle : surface.getTriangles()) {
        for (const std::size_t vertex : triangle) vCorners.push_back(surface.point(vertex));
    }
}

// ---- the public face ------------------------------------------------------------------------------------------------

HoleFiller::HoleFiller(Mesh3* pMesh, bool bAddPoints, bool bVerbose, const std::vector<Edge2>& vPolygonEdges)
    : pImpl(std::make_unique<HoleFillerImpl>(pMesh, bAddPoints, bVerbose, vPolygonEdges))
{
}

HoleFiller::~HoleFiller() = default;

bool HoleFiller::fill()
{
    return pImpl->fill();
}

void HoleFiller::getNewTriangles(std::vector<Point2>& vCorners) const
{
    pImpl->getNewTriangles(vCorners);
}

} // namespace ORBI_LUMO25D
