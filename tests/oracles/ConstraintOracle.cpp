#include "oracles/ConstraintOracle.h"

#include "oracles/ExactOracle.h"

#include "Lumo_2D.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <set>
#include <stdexcept>

namespace oracles
{

using namespace ORBI_LUMO25D;

namespace
{

void require(bool bHolds, const char* what)
{
    if (!bHolds) throw std::runtime_error(what);
}

void checkMesh(const Lumo_2D& lumo, bool bConforming)
{
    std::vector<Triangle2*> vT;
    lumo.getTrianglePointers(vT);
    std::set<std::pair<const Point2*, const Point2*>> sEdges;
    for (const Triangle2* pT : vT) {
        const Point2 *a = pT->getCorner(0), *b = pT->getCorner(1), *c = pT->getCorner(2);
        require(orientationSign(*a, *b, *c) > 0, "a triangle that isn't counterclockwise");
        for (int i = 0; i < 3; ++i) {
            Point2 *p = pT->getCorner((i + 1) % 3), *q = pT->getCorner((i + 2) % 3);
            sEdges.insert({p, q});
            sEdges.insert({q, p});
            const Triangle2* const pN = pT->getOppositeTriangle(i);
            if (pN == nullptr || (!bConforming && lumo.isConstraint(p, q))) continue;
            const Point2* const d = pN->getCorner(pN->getIntraTriangleIndex(p, q));
            require(inCircleSign(*a, *b, *c, *d) <= 0, "an edge that should be Delaunay isn't");
        }
    }
    std::vector<ConstraintSegment2*> vAlive;
    lumo.getAliveConstraintSegments(vAlive);
    for (const ConstraintSegment2* pCSeg : vAlive) {
        require(pCSeg->getNumberOfOwners() > 0, "a segment without owner");
        require(lumo.isConstraint(pCSeg->getSrc(), pCSeg->getTrg()), "an alive segment that isn't found");
        require(sEdges.count({pCSeg->getSrc(), pCSeg->getTrg()}) != 0, "an alive segment that is no edge");
    }
}

/// The distance of p from the line through a and b is at most the given number of "snaps".
bool isNear(const Point2& p, const Point2& a, const Point2& b, double maxSnaps)
{
    const double size = std::max(a.getMaxAbs(), b.getMaxAbs());
    const mpq_class snap(4.0 * std::max(size * 0x1p-52, 0x1p-1074));
    const mpq_class dx = mpq_class(b.x()) - mpq_class(a.x()), dy = mpq_class(b.y()) - mpq_class(a.y());
    const mpq_class det = orientationDet(a, b, p), limit = snap * mpq_class(maxSnaps);
    return det * det <= limit * limit * (dx * dx + dy * dy);
}

void checkCovered(ConstraintSegment2* pGiven, double maxSnaps)
{
    std::vector<ConstraintSegment2*> vLeaves;
    if (pGiven->isAlive()) return;
    pGiven->getChildrenRec(vLeaves);
    std::map<Point2*, int> mDegree;
    for (ConstraintSegment2* pCSeg : vLeaves) {
        for (Point2* pEnd : {pCSeg->getSrc(), pCSeg->getTrg()}) {
            ++mDegree[pEnd];
            require(isNear(*pEnd, *pGiven->getSrc(), *pGiven->getTrg(), maxSnaps), "a chain that strays");
        }
    }
    // Every connected piece has an even number of odd vertices: when there are but these two, a path joins them.
    for (const auto& [pVtx, degree] : mDegree) {
        const bool bEnd = pVtx == pGiven->getSrc() || pVtx == pGiven->getTrg();
        require((degree % 2 != 0) == bEnd, "a chain with a gap, or without an end");
    }
}

void checkGraph(const GivenConstraint& given, double maxSnaps)
{
    std::vector<Segment2> vProper;
    std::copy_if(given.vSegments.begin(), given.vSegments.end(), std::back_inserter(vProper),
                 [](const Segment2& s) { return s.src != s.trg; });
    std::vector<ConstraintSegment2*> vOriginals, vAlive;
    given.pGraph->getOriginalConstraintSegments(vOriginals);
    given.pGraph->getChildConstraintSegments(vAlive);
    std::vector<Point2*> v;
    given.pGraph->getPolygonVertices(v);
    require(vOriginals.size() == vProper.size(), "not all segments are kept");
    require(v.size() == 2 * vAlive.size(), "a wrong number of chain vertices");
    for (ConstraintSegment2* pCSeg : vOriginals) checkCovered(pCSeg, maxSnaps);
    for (ConstraintSegment2* pCSeg : vAlive) require(given.pGraph->isConstraint(pCSeg), "a part isn't known");
    // A segment has one direction in a graph: where one overlaps itself, there is no order along the chain.
    const bool bSimple = std::set<ConstraintSegment2*>(vAlive.begin(), vAlive.end()).size() == vAlive.size();
    if (!bSimple || !given.pGraph->isOriented() || v.empty()) return;
    int numGaps = 0, numGivenGaps = 1;
    for (std::size_t i = 0; i < v.size(); i += 2) numGaps += v[(i + v.size() - 1) % v.size()] == v[i] ? 0 : 1;
    for (std::size_t i = 1; i < vProper.size(); ++i) numGivenGaps += vProper[i - 1].trg == vProper[i].src ? 0 : 1;
    if (given.pGraph->isPolygon()) {
        require(numGaps == 0, "a ring with a gap");
    } else {
        if (*v.front() == *v.back()) ++numGaps;
        require(*v.front() == vProper.front().src && *v.back() == vProper.back().trg, "a chain with other ends");
        require(numGaps == numGivenGaps, "a chain out of order");
    }
}

} // namespace

std::string constraintFault(const Lumo_2D& lumo, const std::vector<GivenConstraint>& vGiven, double maxSnaps,
                            bool bConforming)
{
    try {
        if (lumo.hasArea()) checkMesh(lumo, bConforming);
        for (const GivenConstraint& given : vGiven) checkGraph(given, maxSnaps);
    } catch (const std::runtime_error& e) {
        return e.what();
    }
    return "";
}

} // namespace oracles
