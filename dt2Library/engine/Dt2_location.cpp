// Point location by a visibility walk through the triangles (Devillers, Pion and Teillaud, "Walking in a triangulation",
// 2002), and read-only queries.

#include "engine/Dt2.h"

#include "core/MeshSurgery.h"
#include "geometry/RoundToNearest.h"
#include "support/check.h"
#include "support/messages.h"

#include <cmath>

namespace ORBI_LUMO25D
{

// ---- the walk -------------------------------------------------------------------------------------------------------

namespace
{

/// After this many steps the order of the edges is drawn at random, which ends any cycle.
constexpr unsigned maxStraightSteps = 1000;

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

/// One walk. The fast step keeps the crossed edge in registers and looks at the far corner only; where the filter can't
/// tell, examine() asks the exact predicates for this one triangle.
class Dt2::Walk
{
public:
    Walk(const OrbiTest& orbiTest_, const Point2& p_, Triangle2* pStart)
        : pT(pStart), edgeIdx(-1), orbiTest(orbiTest_), p(p_), px(p_.x()), py(p_.y()), bound(orbiTest_.filterBound())
    {
    }

    int run();

    Triangle2* pT; ///< where the walk stands
    int edgeIdx;   ///< the last collinear edge of pT, or -1

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
    Outcome fastStep();
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
    const double px, py;
    const double bound;
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

/// The same for a triangle that was entered across edge order[0], by the filter alone where it can tell.
Dt2::Walk::Outcome Dt2::Walk::fastStep()
{
    const int e = order[0];
    const Point2* const pU = pT->corner(L::next(e));
    const Point2* const pV = pT->corner(L::prev(e));
    const Point2* const pW = pT->corner(e);
    const double ux = pU->x() - px, uy = pU->y() - py;
    const double vx = pV->x() - px, vy = pV->y() - py;
    const double wx = pW->x() - px, wy = pW->y() - py;
    // The edges opposite u = corner e+1 and v = corner e+2, both at once: the second costs nothing while the first is
    // waited for.
    const double beyondU = vx * wy - vy * wx;
    const double beyondV = wx * uy - wy * ux;
    const bool bUFirst = order[1] == L::next(e);
    const double first = bUFirst ? beyondU : beyondV;
    const double second = bUFirst ? beyondV : beyondU;
    if (first < -bound) {
        k = 1;
        return CROSS;
    }
    if (first > bound) {
        if (second < -bound) {
            k = 2;
            return CROSS;
        }
        if (second > bound) return INSIDE;
    }
    return examine();
}

/// Crosses edge order[k]; false when it is a hull edge.
bool Dt2::Walk::cross()
{
    const int i = order[k];
    Triangle2* const pN = pT->neighbor(i);
    if (pN == nullptr) return false;
    const int e = L::indexOf(pN, pT);
    // Successive steps alternate their preferred side, so that the walk does not drift. The edge just crossed is not
    // asked again.
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
    if (++steps > maxStraightSteps) {
        order[0] = lottery.draw();
        order[1] = L::next(order[0]);
        order[2] = L::prev(order[0]);
        k = 0;
    }
}

int Dt2::Walk::run()
{
    Outcome outcome = examine();
    for (;;) {
        if (outcome == INSIDE) return -1;
        if (outcome == CORNER) return 4;
        if (outcome == HULL) {
            const int state = atHull(order[k]);
            if (state != restart) return state;
        } else if (!cross()) {
            return order[k];
        }
        outcome = k == 1 ? fastStep() : examine();
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
    Walk walk(orbiTest, p, *ppStartT);
    const int state = walk.run();
    *ppStartT = walk.pT;
    *pEdgeIdx = walk.edgeIdx;
    return state;
}

Triangle2* Dt2::locate(const Point2& p)
{
    // The working box holds the hull. The test also keeps the filter's bound from growing with every odd query.
    if (!bFullDimensional || !bbox.isInBox(p)) return nullptr;
    return locateFrom(p, vertexVault.getCloseTriangle(hilbertCurve.getIndex(p)));
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
