// Point location by a visibility walk through the triangles (Devillers, Pion and Teillaud, "Walking in a triangulation",
// 2002), and read-only queries.

#include "engine/Dt2.h"

#include "core/FilterWalk.h"
#include "core/MeshSurgery.h"
#include "geometry/RoundToNearest.h"
#include "support/check.h"

#include <cmath>

namespace ORBI_LUMO25D
{

// ---- the walk -------------------------------------------------------------------------------------------------------

namespace
{

/// xorshift32 (Marsaglia 2003): a walk's own source, so that results don't depend on anything before it.
class EdgeLottery
{
public:
    int draw()
    {
        state ^= state << 13U;
        state ^= state >> 17U;
        state ^= state << 5U;
        return static_cast<int>(state % 3U);
    }

private:
    std::uint32_t state = 2463534242U;
};

} // namespace

/// One walk, every decision of which is asked of the exact predicates, in the order of edges that keeps the walk from
/// drifting. Where the filters can tell, FilterWalk has done the same before. After many steps the order of the edges is
/// drawn at random, which ends any cycle.
class Dt2::Walk
{
public:
    Walk(const OrbiTest& orbiTest_, const Point2& p_, Triangle2* pStart) : pT(pStart), orbiTest(orbiTest_), p(p_) {}

    int run();

    Triangle2* pT;    ///< where the walk stands
    int edgeIdx = -1; ///< the last collinear edge of pT, or -1

private:
    using L = TriangleLinks;

    enum Outcome
    {
        CROSS,  ///< p lies beyond the edge order[k]
        INSIDE, ///< p lies in the triangle
        CORNER, ///< p equals a corner
        HULL    ///< p lies on the line of the hull edge order[k]
    };
    static constexpr int restart = -2; ///< no state: the walk goes on

    Outcome examine();
    bool cross();
    void enter(Triangle2* pN, int first, int second, int third, int from);
    int atHull(int i);
    Orientation2 orientation(int i) const
    {
        return orbiTest.orientationInRange(pT->corner(L::next(i)), pT->corner(L::prev(i)), &p);
    }
    bool isAtCorner() const { return *pT->corner(0) == p || *pT->corner(1) == p || *pT->corner(2) == p; }

    const OrbiTest& orbiTest;
    const Point2& p;
    int order[3] = {0, 1, 2}; ///< the order in which the edges are asked
    int k = 0;                ///< position in it
    unsigned steps = 0;
    EdgeLottery lottery;
};

/// Asks the edges from position k on. Stops at the first that p lies beyond.
Dt2::Walk::Outcome Dt2::Walk::examine()
{
    for (; k < 3; ++k) {
        const int i = order[k];
        const Orientation2 ori = orientation(i);
        if (ori == ORIENTATION2_CCW) continue;
        if (ori == ORIENTATION2_CW) {
            edgeIdx = -1;
            return CROSS;
        }
        if (isAtCorner()) return CORNER;
        edgeIdx = i;
        if (pT->neighbor(i) == nullptr) return HULL;
    }
    return INSIDE;
}

/// Crosses edge order[k]; false when it is a hull edge.
bool Dt2::Walk::cross()
{
    const int i = order[k];
    Triangle2* const pN = pT->neighbor(i);
    if (pN == nullptr) return false;
    const int e = L::indexOf(pN, pT);
    // Successive steps alternate their preferred side. The edge just crossed is not asked again.
    if (k == 1) {
        enter(pN, e, L::prev(e), L::next(e), 1);
    } else {
        enter(pN, e, L::next(e), L::prev(e), 1);
    }
    return true;
}

void Dt2::Walk::enter(Triangle2* pN, int first, int second, int third, int from)
{
    pT = pN;
    order[0] = first;
    order[1] = second;
    order[2] = third;
    k = from;
    if (++steps > FilterWalk::maxStraightSteps) {
        order[0] = lottery.draw();
        order[1] = L::next(order[0]);
        order[2] = L::prev(order[0]);
        k = 0;
    }
}

int Dt2::Walk::run()
{
    for (;;) {
        const Outcome outcome = examine();
        if (outcome == INSIDE) return -1;
        if (outcome == CORNER) return 4;
        if (outcome == HULL) {
            const int state = atHull(order[k]);
            if (state != restart) return state;
        } else if (!cross()) {
            return order[k];
        }
    }
}

/// p lies on the line of hull edge i of pT. The state, or restart when the walk goes on from pT.
int Dt2::Walk::atHull(int i)
{
    const int j = L::next(i);
    const int l = L::prev(i);
    const Orientation2 ori1 = orientation(j);
    const Orientation2 ori2 = orientation(l);
    if (ori1 == ORIENTATION2_CCW && ori2 == ORIENTATION2_CCW) return i;
    int beyond = -1;
    if (ori1 == ORIENTATION2_CW) {
        LUMO_CHECK(ori2 == ORIENTATION2_CCW, "ori2==ORIENTATION2_CCW");
        beyond = j;
    } else if (ori2 == ORIENTATION2_CW) {
        LUMO_CHECK(ori1 == ORIENTATION2_CCW, "ori1==ORIENTATION2_CCW");
        beyond = l;
    }
    // Both collinear would mean a corner, which examine() has told already.
    LUMO_CHECK(beyond >= 0, "beyond>=0");
    Triangle2* const pN = pT->neighbor(beyond);
    if (pN == nullptr) return beyond;
    edgeIdx = -1;
    enter(pN, 0, 1, 2, 0);
    return restart;
}

int Dt2::locateConflictTriangle(const Point2& p, Triangle2** ppStartT, int* pEdgeIdx) const
{
    LUMO_CHECK(*ppStartT != nullptr, "pStartTriangle!=0");
    FilterWalk filterWalk;
    const FilterWalk::Result result =
        filterWalk.run(p, orbiTest.filterBound(), *ppStartT, [](const Triangle2*) { return true; });
    if (result != FilterWalk::UNDECIDED) {
        *ppStartT = filterWalk.pT;
        *pEdgeIdx = -1;
        return result == FilterWalk::INSIDE ? -1 : filterWalk.hullEdge;
    }
    Walk walk(orbiTest, p, filterWalk.pT);
    const int state = walk.run();
    *ppStartT = walk.pT;
    *pEdgeIdx = walk.edgeIdx;
    return state;
}

Triangle2* Dt2::locate(const Point2& p)
{
    // The working box holds the hull. The test also keeps the filter's bound from growing with every odd query.
    if (!bFullDimensional || !bbox.isInBox(p)) return nullptr;
    return locateFrom(p, vertexVault.getCloseTriangle(p));
}

Triangle2* Dt2::locateFrom(const Point2& p, Triangle2* pT)
{
    if (!bbox.isInBox(p)) return nullptr;
    const RoundToNearest rounding;
    int edge = -1;
    const int state = locateConflictTriangle(p, &pT, &edge);
    if (state == 4 || state == -1) return pT;
    const bool bOutside = orbiTest.orientationInRange(pT->corner(incIndexBy1(state)), pT->corner(incIndexBy2(state)),
                                                      &p) == ORIENTATION2_CW;
    return bOutside ? nullptr : pT;
}

// ---- lists ----------------------------------------------------------------------------------------------------------

void Dt2::getTrianglePointers(std::vector<Triangle2*>& vT) const
{
    if (!bFullDimensional) return;
    vT.reserve(vT.size() + numberOfTriangles());
    poolTriangles.forEach([&vT](Triangle2* pT) {
        if (pT->corner(0) != nullptr) vT.push_back(pT); // a dead triangle has no corners
    });
}

} // namespace ORBI_LUMO25D
