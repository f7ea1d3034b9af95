#include "Zone2.h"

#include "engine/Dt2.h"
#include "oracles/Dice.h"
#include "oracles/ExactOracle.h"
#include "support/TestOutput.h"
#include "zones/triangleSets.h"

#include "AcceptExperimentalFeature.h"
#include "Color.h"
#include "ConstraintGraph2.h"
#include "LumoException.h"
#include "Lumo_2D.h"
#include "UserPredicateT.h"
#include "freeFunctions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <limits>
#include <set>

using namespace ORBI_LUMO25D;
using oracles::Dice;
using oracles::doubledArea;
using oracles::exact;
using oracles::ExactPoint;
using oracles::middleOf;
using ::testing::HasSubstr;

namespace
{

using Triangles = std::vector<Triangle2*>;
using Segments = std::vector<Segment2>;

// ---- oracles --------------------------------------------------------------------------------------------------------

/// Even-odd rule; an edge walked both ways doesn't count.
bool isInside(const Segments& v, const ExactPoint& p)
{
    bool bInside = false;
    for (const Segment2& s : v) {
        const ExactPoint a = exact(s.src), b = exact(s.trg);
        if ((a.y > p.y) == (b.y > p.y)) continue;
        if ((sgn(doubledArea(a, b, p)) > 0) == (b.y > a.y)) bInside = !bInside;
    }
    return bInside;
}

mpq_class shoelace(const Segments& v)
{
    mpq_class sum = 0;
    for (const Segment2& s : v) {
        sum += mpq_class(s.src.x()) * s.trg.y() - mpq_class(s.trg.x()) * s.src.y();
    }
    return sum / 2;
}

void expectArea(const mpq_class& expected, double area, double tolerance)
{
    EXPECT_LE(std::fabs(mpq_class(expected - mpq_class(area)).get_d()), tolerance * expected.get_d())
        << expected.get_d();
}

/// A triangle, and whether its barycentre is in each of two areas.
struct Known
{
    Triangle2* pT;
    mpq_class doubledArea;
    bool a, b;
};
using Rule = std::function<bool(bool a, bool b)>;

std::vector<Known> classify(const Lumo_2D& lumo, const Segments& a, const Segments& b)
{
    Triangles vT;
    lumo.getTrianglePointers(vT);
    std::vector<Known> v;
    for (Triangle2* pT : vT) {
        const ExactPoint p = middleOf(*pT);
        v.push_back({pT, oracles::orientationDet(*pT->corner(0), *pT->corner(1), *pT->corner(2)), isInside(a, p),
                     isInside(b, p)});
    }
    return v;
}

/// Membership of all triangles but slivers of rounding, order, area and border, against the definition.
void expectZone(const std::vector<Known>& vKnown, const Zone2& zone, const Rule& rule)
{
    Triangles vT;
    zone.getTriangles(vT);
    EXPECT_TRUE(zone.getZoneLocation() == ZL_GROW || std::is_sorted(vT.begin(), vT.end(), std::less<Triangle2*>()));
    const std::set<Triangle2*> sT(vT.begin(), vT.end());
    EXPECT_EQ(sT.size(), vT.size());
    const auto& pool = zone.getDelaunayTriangulation()->poolTriangles;
    std::sort(vT.begin(), vT.end(),
              [&pool](const auto* a, const auto* b) { return pool.indexOf(a) < pool.indexOf(b); });
    EXPECT_EQ(trianglesByAge(zone), vT);
    mpq_class area = 0;
    std::size_t numWrong = 0, numEdges = 0;
    for (const Known& known : vKnown) {
        const bool bMember = sT.count(known.pT) != 0;
        if (known.doubledArea > 1 && rule(known.a, known.b) != bMember) ++numWrong;
        if (!bMember) continue;
        area += known.doubledArea / 2;
        for (int i = 0; i < 3; ++i) numEdges += sT.count(known.pT->neighbor(i)) == 0;
    }
    EXPECT_EQ(numWrong, 0U) << "of " << vKnown.size() << ", zone of " << vT.size();
    expectArea(area, zone.getArea2D(), 1e-13);
    std::vector<Edge2> vEdges;
    zone.getBorderEdges(vEdges);
    EXPECT_EQ(vEdges.size(), numEdges);
    Segments vBorder;
    zone.getBoundarySegments(vBorder);
    EXPECT_TRUE(shoelace(vBorder) == area);
}

// ---- random scenes --------------------------------------------------------------------------------------------------

/// Coordinates are integers, of which midpoints of midpoints are too: nothing is rounded where constraints don't cross.
constexpr double unit = 0x1p20;

Point2 gridPoint(Dice& dice, int from, int to, double z)
{
    const double x = from + dice.below(to - from);
    return {unit * x, unit * (from + dice.below(to - from)), z};
}

/// The border of a random set of triangles, with the set on its left: parts, holes, corners where both touch. Some edges
/// inside and outside come besides, both ways.
Segments randomRings(Dice& dice, Triangles vT, bool bSpikes)
{
    const std::size_t n = 1 + static_cast<std::size_t>(dice.below(static_cast<int>(vT.size())));
    dice.shuffle(vT);
    const std::set<Triangle2*> sT(vT.begin(), vT.begin() + static_cast<std::ptrdiff_t>(n));
    Segments v;
    for (Triangle2* pT : vT) {
        for (int i = 0; i < 3; ++i) {
            const Edge2 edge(pT, i);
            const bool bBorder = sT.count(pT) != 0 && sT.count(pT->neighbor(i)) == 0;
            const bool bSame = (sT.count(pT) != 0) == (sT.count(pT->neighbor(i)) != 0);
            if (bBorder) v.emplace_back(*edge.getSrc(), *edge.getTrg());
            // Only one spike: several may enclose an area, which an inside zone doesn't reach.
            if (!bSpikes || !bSame || dice.below(4) != 0) continue;
            v.emplace_back(*edge.getSrc(), *edge.getTrg());
            v.emplace_back(*edge.getTrg(), *edge.getSrc());
            bSpikes = false;
        }
    }
    return v;
}

void edit(Lumo_2D& lumo, Dice& dice)
{
    std::vector<ConstraintSegment2*> vCSegs;
    std::vector<Point2> vPoints;
    switch (dice.below(5)) {
    case 0:
        lumo.insert(gridPoint(dice, -4, 28, 7));
        break;
    case 1:
        for (int i = 0; i < 40; ++i) vPoints.push_back(gridPoint(dice, 0, 24, i));
        lumo.insert(vPoints);
        break;
    case 2:
        lumo.getAliveConstraintSegments(vCSegs);
        for (int i = 0; i < 4; ++i) {
            ConstraintSegment2* const pCSeg = dice.of(vCSegs);
            const Point2 middle = centerWithShift(*pCSeg->getSrc(), *pCSeg->getTrg());
            const bool bExact = middle.x() == std::floor(middle.x()) && middle.y() == std::floor(middle.y());
            if (pCSeg->isAlive() && bExact) pCSeg->insertAndSplit(middle);
        }
        break;
    case 3: // crosses borders, which are split there
        lumo.createConstraint({{gridPoint(dice, 0, 24, 0), gridPoint(dice, 0, 24, 9)}},
                              dice.below(2) == 0 ? CIS_CONSTRAINED_DELAUNAY : CIS_CONFORMING_DELAUNAY);
        break;
    default:
        lumo.applyConstraintsAndZones();
    }
}

TEST(Zone2, TriangleIsInTheWrongZoneAfterEdits)
{
    lumo_test::CoutCapture quiet;
    for (std::uint64_t seed = 1; seed <= 20; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Dice dice(seed);
        Lumo_2D pattern, lumo;
        for (int i = 0; i < 30; ++i) pattern.insert(gridPoint(dice, 0, 24, i));
        for (int i = 0; i < 50; ++i) lumo.insert(gridPoint(dice, 4, 20, i));
        Triangles vPattern;
        pattern.getTrianglePointers(vPattern);
        const Segments a = randomRings(dice, vPattern, true), b = randomRings(dice, vPattern, false);
        ConstraintGraph2* const pA = lumo.createConstraint(a, CIS_CONSTRAINED_DELAUNAY, true);
        ConstraintGraph2* const pB = lumo.createConstraint(b, CIS_CONSTRAINED_DELAUNAY, true);
        Zone2* const pInA = lumo.createZone(pA, ZL_INSIDE);
        Zone2* const pInB = lumo.createZone(pB, ZL_INSIDE);
        expectArea(shoelace(a), pInA->getArea2D(), 1e-12);
        std::vector<std::pair<Zone2*, Rule>> vZones{
            {pInA, [](bool a_, bool) { return a_; }},
            {pInB, [](bool, bool b_) { return b_; }},
            {lumo.createZone(nullptr, ZL_GLOBAL), [](bool, bool) { return true; }},
            {lumo.createZone(pA, ZL_OUTSIDE), [](bool a_, bool) { return !a_; }},
            {zoneUnion(pInA, pInB), [](bool a_, bool b_) { return a_ || b_; }},
            {zoneIntersection(pInA, pInB), [](bool a_, bool b_) { return a_ && b_; }},
            {zoneDifference(pInB, pInA), [](bool a_, bool b_) { return b_ && !a_; }},
            {zoneSymmetricDifference(pInA, pInB), [](bool a_, bool b_) { return a_ != b_; }}};
        vZones.emplace_back(zoneDifference(vZones[4].first, vZones[5].first), vZones[7].second);
        for (const std::size_t i : {6U, 7U}) { // held by constraints, and grown
            if (vZones[i].first->getNumberOfTriangles() == 0) continue;
            vZones.emplace_back(vZones[i].first->convertToBoundedZone(), vZones[i].second);
            Triangles vT;
            vZones[i].first->getTriangles(vT);
            dice.shuffle(vT);
            vZones.emplace_back(lumo.createZone(vT), vZones[i].second);
        }
        // Two graphs in one zone that share borders.
        if (Zone2* const pOnlyB = vZones[6].first->convertToBoundedZone()) {
            const std::vector<ConstraintGraph2*> vGraphs{pA, pOnlyB->getConstraintGraph()};
            vZones.emplace_back(lumo.getImpl()->createZone(vGraphs, ZL_INSIDE), vZones[4].second);
            vZones.emplace_back(lumo.getImpl()->createZone(vGraphs, ZL_OUTSIDE),
                                [](bool a_, bool b_) { return !a_ && !b_; });
        }
        for (int round = 0; round < 4 && !HasFailure(); ++round) {
            const std::vector<Known> vKnown = classify(lumo, a, b);
            for (std::size_t i = 0; i < vZones.size(); ++i) {
                SCOPED_TRACE("zone " + std::to_string(i) + " round " + std::to_string(round));
                expectZone(vKnown, *vZones[i].first, vZones[i].second);
            }
            for (int i = 0; i < 3; ++i) edit(lumo, dice);
        }
        ASSERT_FALSE(HasFailure()) << quiet.take();
    }
}

// ---- cookie cutter --------------------------------------------------------------------------------------------------

/// The part of a ring within a convex counterclockwise ring (Sutherland and Hodgman 1974): its area is right even where
/// the part has several pieces.
mpq_class clippedArea(std::vector<ExactPoint> ring, const std::vector<ExactPoint>& convex)
{
    for (std::size_t i = 0; i < convex.size(); ++i) {
        const ExactPoint &a = convex[i], &b = convex[(i + 1) % convex.size()];
        std::vector<ExactPoint> v;
        for (std::size_t k = 0; k < ring.size(); ++k) {
            const ExactPoint &p = ring[k], &q = ring[(k + 1) % ring.size()];
            const mpq_class sideP = doubledArea(a, b, p), sideQ = doubledArea(a, b, q);
            if (sideP >= 0) v.push_back(p);
            if (sgn(sideP) * sgn(sideQ) >= 0) continue;
            const mpq_class t = sideP / (sideP - sideQ);
            v.push_back({p.x + t * (q.x - p.x), p.y + t * (q.y - p.y)});
        }
        ring = v;
    }
    mpq_class sum = 0;
    for (std::size_t i = 2; i < ring.size(); ++i) sum += doubledArea(ring[0], ring[i - 1], ring[i]);
    return sum / 2;
}

TEST(Zone2, CookieIsNotTheCommonPartOfPolygonAndHull)
{
    lumo_test::CoutCapture quiet;
    for (std::uint64_t seed = 1; seed <= 80; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Dice dice(seed);
        Lumo_2D lumo;
        const auto onPlane = [&dice] {
            Point2 p = gridPoint(dice, 4, 20, 0);
            p.setZ(p.x() + 2 * p.y());
            return p;
        };
        for (int i = 0; i < 25; ++i) lumo.insert(onPlane());
        if (dice.below(2) == 0) lumo.createConstraint({{onPlane(), onPlane()}}, CIS_CONSTRAINED_DELAUNAY);
        std::vector<Point2*> vHull;
        lumo.getConvexHull(false, vHull);
        std::vector<ExactPoint> hull, ring;
        for (const Point2* p : vHull) hull.push_back(exact(*p));

        Segments polygon;
        const double low = seed % 3 == 0 ? 5 : -2; // corners outside, or hardly any
        Bbox2 box;
        box.add({low * unit, low * unit, 0});
        box.add({(24 - low) * unit, (24 - low) * unit, 0});
        generateRandomPolygon(3 + static_cast<std::size_t>(dice.below(12)), box, seed, polygon);
        for (Segment2& s : polygon) { // along the grid, and the hull's corners, where that leaves it simple
            s.trg = {unit * std::round(s.trg.x() / unit), unit * std::round(s.trg.y() / unit), 1e9};
        }
        for (std::size_t i = 0; i < polygon.size(); ++i) polygon[(i + 1) % polygon.size()].src = polygon[i].trg;
        if (!isSimplePolygon(polygon)) continue;
        for (const Segment2& s : polygon) ring.push_back(exact(s.src));
        const mpq_class expected = abs(clippedArea(ring, hull)); // on the grid, it may have turned
        dice.shuffle(polygon);

        Zone2* const pZone = lumo.createZone_cookieCutter(polygon, seed % 2 == 0);
        if (pZone == nullptr || expected == 0) { // where both only touch, rounding may leave a sliver
            ASSERT_TRUE(expected == 0 && (pZone == nullptr || pZone->getArea2D() < 1)) << quiet.take();
            continue;
        }
        EXPECT_EQ(pZone->getZoneLocation(), ZL_BOUNDED);
        expectArea(expected, pZone->getArea2D(), 1e-9);
        std::vector<Point2*> vV;
        pZone->getVertices(vV);
        for (const Point2* p : vV) EXPECT_NEAR(p->z(), p->x() + 2 * p->y(), 1e-4);
        EXPECT_TRUE(lumo.checkValidity(false, "cookie"));
        lumo.insert(gridPoint(dice, -4, 28, 0));
        lumo.applyConstraintsAndZones();
        expectArea(expected, pZone->getArea2D(), 1e-9);
    }
}

// ---- sets of triangles ----------------------------------------------------------------------------------------------

/// Holds for some triangles, whatever their order.
struct Chosen : UserPredicateT
{
    explicit Chosen(int modulus_) : modulus(modulus_) {}
    bool operator()(const Triangle2* pT) override
    {
        return static_cast<std::int64_t>(pT->getBarycenter().x() * 3 / unit * 7) % 5 < modulus;
    }
    int modulus;
};

/// Rounds over the whole set until nothing changes.
std::set<Triangle2*> peeledTwin(std::set<Triangle2*> sT, UserPredicateT& predicate)
{
    for (bool bChanged = true; bChanged;) {
        bChanged = false;
        for (auto it = sT.begin(); it != sT.end();) {
            const auto isIn = [&](int i) { return sT.count((*it)->neighbor(i)) != 0; };
            const bool bPeeled = !(isIn(0) && isIn(1) && isIn(2)) && predicate(*it);
            it = bPeeled ? sT.erase(it) : std::next(it);
            bChanged = bChanged || bPeeled;
        }
    }
    return sT;
}

TEST(Zone2, SetOfTrianglesIsPeeledOrSplitWrongly)
{
    lumo_test::CoutCapture quiet;
    for (std::uint64_t seed = 1; seed <= 40; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Dice dice(seed);
        Lumo_2D lumo;
        for (int i = 0; i < 120; ++i) lumo.insert(gridPoint(dice, 0, 24, i));
        Triangles vT;
        lumo.getTrianglePointers(vT);
        dice.shuffle(vT);
        vT.resize(vT.size() * (1 + seed % 3) / 3);
        Zone2* const pZone = lumo.createZone(vT);
        const std::set<Triangle2*> sT(vT.begin(), vT.end());
        // Triangles come by address: what is made of them must not depend on their order.
        std::vector<ConstraintSegment2*> vOriginal, vAgain;
        pZone->getConstraintGraph()->getOriginalConstraintSegments(vOriginal);
        dice.shuffle(vT);
        lumo.createZone(vT)->getConstraintGraph()->getOriginalConstraintSegments(vAgain);
        EXPECT_EQ(vOriginal, vAgain);

        std::vector<Triangles> vvT;
        getConnectedComponents(*lumo.getImpl(), vT, vvT);
        Triangles vGrown, vAll;
        pZone->getTriangles(vGrown);
        for (const Triangles& v : vvT) vAll.insert(vAll.end(), v.begin(), v.end());
        EXPECT_EQ(std::set<Triangle2*>(vAll.begin(), vAll.end()), sT);
        EXPECT_EQ(std::set<Triangle2*>(vGrown.begin(), vGrown.end()), sT);
        EXPECT_EQ(vAll.size(), sT.size());
        EXPECT_EQ(vGrown.size(), sT.size()); // as many start points as components
        std::vector<Edge2> vBorder, vEdges;
        pZone->getBoundaryEdges(vBorder);
        getUndirectedEdges(*lumo.getImpl(), vT, vEdges);
        EXPECT_EQ(2 * vEdges.size(), 3 * sT.size() + vBorder.size());

        for (int modulus = 0; modulus <= 5; modulus += dice.below(4) + 1) {
            Chosen chosen(modulus);
            const std::set<Triangle2*> sTwin = peeledTwin(sT, chosen);
            Zone2* const pPeeled = peelOffIf(pZone, &chosen, true);
            ASSERT_EQ(pPeeled == nullptr, sTwin.empty());
            Triangles vPeeled;
            if (pPeeled != nullptr) pPeeled->getTriangles(vPeeled);
            EXPECT_EQ(std::set<Triangle2*>(vPeeled.begin(), vPeeled.end()), sTwin);
            lumo.deleteZone(pPeeled);
        }
    }
}

TEST(Zone2, AreaLosesDigitsInNeedlesOrLongSums)
{
    const auto area = [](const std::vector<Point2>& vCorners, std::size_t n, Triangle2& t, std::vector<Point2>& v) {
        v = vCorners;
        t.setProperties(&v[0], &v[1], &v[2]);
        return static_cast<double>(n) * mpq_class(oracles::orientationDet(v[0], v[1], v[2]) / 2).get_d();
    };
    Triangle2 needle, large, small;
    std::vector<Point2> aCorners[3];
    const double ofNeedle = area({{0, 0, 0}, {500.25, 500.25, 0}, {250.125, 250.12500001, 0}}, 1, needle, aCorners[0]);
    EXPECT_NEAR(sumArea2D({&needle}), ofNeedle, 1e-13 * ofNeedle);
    const double ofLarge = area({{0, 0, 0}, {0x1p27, 0, 0}, {0, 0x1p27, 0}}, 1, large, aCorners[1]);
    const double ofSmall = area({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, 100000, small, aCorners[2]);
    Triangles vT(100001, &small);
    vT[0] = &large;
    EXPECT_EQ(sumArea2D(vT), ofLarge + ofSmall);
}

// ---- misuse and extremes --------------------------------------------------------------------------------------------

TEST(Zone2, MisuseGoesThroughOrChangesSomething)
{
    lumo_test::CoutCapture out;
    const lumo_test::TempWorkDir directory;
    Lumo_2D lumo, other;
    EXPECT_EQ(lumo.createZone(nullptr, ZL_GLOBAL), nullptr);
    EXPECT_THAT(out.take(), HasSubstr("Dt2::createZone, WARNING: The triangulation has no area yet. Returning NULL"));
    for (Lumo_2D* p : {&lumo, &other}) p->insert({{0, 0, 0}, {8, 0, 0}, {8, 8, 0}, {0, 8, 0}});
    ConstraintGraph2* const pLine = lumo.createConstraint({{{1, 1, 0}, {2, 2, 0}}}, CIS_CONSTRAINED_DELAUNAY);
    const auto numTriangles = lumo.numberOfTriangles();
    const std::vector<Segment2> bowTie{
        {{1, 1, 0}, {7, 7, 0}}, {{7, 7, 0}, {7, 1, 0}}, {{7, 1, 0}, {1, 7, 0}}, {{1, 7, 0}, {1, 1, 0}}};
    const std::vector<Segment2> away{{{20, 0, 0}, {30, 0, 0}}, {{30, 0, 0}, {30, 9, 0}}, {{30, 9, 0}, {20, 0, 0}}};
    Zone2* const pGlobal = lumo.createZone(nullptr, ZL_GLOBAL);
    Zone2* const pOther = other.createZone(nullptr, ZL_GLOBAL);
    const std::vector<std::pair<std::function<Zone2*()>, const char*>> vCases{
        {[&] { return lumo.createZone(nullptr, ZL_INSIDE); },
         "Dt::createZone(), ERROR: pConstraintGraph==NULL, but zoneLoc!=ZL_GLOBAL or ZL_RESULT. Returning NULL"},
        {[&] { return lumo.createZone(pLine, ZL_INSIDE, true); },
         "The constraint graph is not oriented, returning NULL"},
        {[&] { return lumo.createZone(pLine, ZL_INSIDE, Point2(3, 3, 0)); },
         "accepts only ZL_GROW as zoneLocation. Returning NULL"},
        {[&] { return lumo.createZone(nullptr, ZL_GROW, Point2(3, 3, 0)); }, "bVerbose==true"},
        {[&] { return lumo.getImpl()->createZone(std::vector<ConstraintGraph2*>{pLine}, ZL_GROW); },
         "accepts only ZL_INSIDE and ZL_OUTSIDE"},
        {[&] { return other.createZone(pLine, ZL_INSIDE); }, "belongs to another triangulation"},
        {[&] { return other.createZone(pLine, ZL_GROW, Point2(3, 3, 0)); }, "belongs to another triangulation"},
        {[&] { return zoneUnion(pGlobal, pOther); },
         "Zone2::zoneUnion(...), ERROR: The zones must belong to the same triangulation! Returning NULL"},
        {[&] { return zoneDifference(pOther, pGlobal); }, "] zoneUnion(...), ERROR: The zones"},
        {[&] { return lumo.createZone_cookieCutter(bowTie, false); }, ""},
        {[&] { return peelOffIf(nullptr, nullptr, false); },
         "peelOffIf(), WARNING: Input zone is NULL, returning NULL"}};
    for (const auto& [f, message] : vCases) {
        EXPECT_EQ(f(), nullptr);
        EXPECT_THAT(out.take(), HasSubstr(message));
    }
    ConstraintGraph2* const pRing = lumo.createConstraint(
        {{{0, 0, 0}, {8, 0, 0}}, {{8, 0, 0}, {8, 8, 0}}, {{8, 8, 0}, {0, 0, 0}}}, CIS_CONSTRAINED_DELAUNAY);
    EXPECT_THROW(lumo.createZone(pRing, ZL_GROW), LumoException);
    EXPECT_THROW(lumo.getImpl()->createZone(std::vector<ConstraintGraph2*>{}, ZL_INSIDE), LumoException);
    EXPECT_EQ(lumo.numberOfTriangles(), numTriangles);
    EXPECT_EQ(lumo.getImpl()->vZones.size(), 1U);

    // Start points are not compared; one on the hull's edge counts, one outside is warned about.
    Triangles vT, vForeign;
    pOther->getTriangles(vForeign);
    lumo.getImpl()->growZoneAreas({pRing}, {{7, 1, 0}, {8, 4, 0}, {9, 9, 0}}, vT);
    EXPECT_EQ(sumArea2D(vT), 64.0);
    EXPECT_THAT(out.take(), HasSubstr("growZoneArea(), WARNING: pVtx is outside the convex hull"));
    EXPECT_EQ(lumo.createZone({nullptr, vForeign[0], vT[0]})->getNumberOfTriangles(), 1U);
    Zone2* const pEmpty = lumo.createZone(Triangles{});
    EXPECT_THAT(out.take(), HasSubstr("Dt2::createConstraint(..), WARNING: vSegments is empty, returning NULL"));
    EXPECT_EQ(pEmpty->getNumberOfTriangles(), 0U);
    EXPECT_FALSE(pEmpty->getBoundingBox().isValid());
    EXPECT_EQ(pEmpty->convertToBoundedZone(), nullptr);
    EXPECT_EQ(lumo.createZone_cookieCutter(away, false), nullptr);
    EXPECT_THAT(out.take(), HasSubstr("output domain empty"));
    lumo.deleteZone(pEmpty);
    lumo.deleteZone(pEmpty);
    EXPECT_THAT(out.take(), HasSubstr("Dt2::deleteZone(..), WARNING: trying to delete a non-existing zone"));
    *pGlobal = *lumo.createZone(pRing, ZL_INSIDE);
    EXPECT_EQ(pGlobal->getArea2D(), 32.0);
    EXPECT_EQ(pGlobal->convertToBoundedZone(), pGlobal);

    // Combinations of any depth, and of one zone in many places.
    Zone2* pDeep = pGlobal;
    for (int i = 0; i < 100000; ++i) pDeep = zoneUnion(pDeep, pDeep);
    EXPECT_EQ(pDeep->getArea2D(), 32.0);
    *pGlobal = *zoneUnion(pDeep, pDeep);
    EXPECT_THROW(pDeep->getNumberOfTriangles(), LumoException);
}

TEST(Zone2, FlatTriangleIsMeasuredGrownOrJudgedWrongly)
{
    lumo_test::CoutCapture out;
    const lumo_test::TempWorkDir directory;
    Lumo_2D needles, flat;
    Segments ring;
    const double x0 = 5e6, y0 = 6e6;
    for (int i = 0; i <= 1000; ++i) needles.insert({x0 + i, y0 + 1e-9 * (i % 7), 0});
    needles.insert({x0 + 500, y0 + 1e-3, 0});
    Zone2* const pNeedles = needles.createZone(nullptr, ZL_GLOBAL);
    pNeedles->getBoundarySegments(ring);
    expectArea(shoelace(ring), pNeedles->getArea2D(), 1e-12);

    // No double lies strictly inside of the lower triangle: the part is lost, the other is kept.
    const double up = std::nextafter(1.0, 2.0);
    flat.insert({{1, 1, 0}, {up, up, 0}, {up, 1, 0}});
    flat.insert(Dice(1).points(50, 9, 9));
    Triangles vPart;
    flat.getTrianglePointers(vPart);
    const auto isAtFlat = [](const Triangle2* pT) {
        const auto isFlat = [pT](int i) { return pT->corner(i)->getMaxAbs() == std::nextafter(1.0, 2.0); };
        return isFlat(0) || isFlat(1) || isFlat(2);
    };
    const auto isOther = [&](const Triangle2* pT) { return isAtFlat(pT) && !(pT->getMaxSqEdgeLen2D() < 1e-20); };
    vPart.erase(std::remove_if(vPart.begin(), vPart.end(), isOther), vPart.end());
    EXPECT_EQ(flat.createZone(vPart)->getNumberOfTriangles(), vPart.size() - 1);
    EXPECT_THAT(out.take(), HasSubstr("An almost degenerate part of the zone has no start point for zone growing!"));

    const AcceptExperimentalFeature accept;
    const double growth = std::numeric_limits<double>::max(), heights = -500.0;
    struct Case
    {
        Point2 apex;
        double mode;
        bool bGood;
        const char* report;
    };
    const std::vector<Case> vCases{{{2, 3, 0}, 30.0, true, "worst degree="},
                                   {{2, 0.3, 0}, 30.0, false, "HHH, Lumo2D::checkZoneQuality(t): angle("},
                                   {{2, 3, 0}, heights, true, ""},
                                   {{2, 0.05, 0}, heights, false, "Bad height ratio: "},
                                   {{2, 5, 0}, growth, true, ""},
                                   {{2, 40, 0}, growth, false, "Bad grow factor, area=80"},
                                   {{2, 3, 0}, -1000.0, true, "child segments to t_c0_con.bin"},
                                   {{2, 0.3, 0}, -999.0, true, "This is Zone2::debug()"}};
    for (const Case& c : vCases) {
        Lumo_2D lumo;
        lumo.insert({{0, 0, 0}, {4, 0, 0}, {2, -3, 0}, c.apex});
        lumo.createConstraint({{{0, 0, 0}, {4, 0, 0}}}, CIS_CONSTRAINED_DELAUNAY);
        Zone2* const pZone = lumo.createZone(nullptr, ZL_GLOBAL);
        EXPECT_EQ(lumo.checkZoneQuality(pZone, c.mode, "t", accept), c.bGood) << c.apex;
        EXPECT_THAT(out.take(), HasSubstr(c.report));
    }
}

TEST(Zone2, DrawingOrFileHoldsOtherTriangles)
{
    const lumo_test::TempWorkDir directory;
    const lumo_test::CoutCapture out;
    Lumo_2D lumo;
    lumo.insert(Dice(3).points(200, 9, 9));
    Triangles vT;
    lumo.getTrianglePointers(vT);
    std::vector<Zone2*> vZones;
    std::set<const Point2*> sCorners;
    std::set<std::pair<const Point2*, const Point2*>> sEdges; // of the first zone
    for (const auto& [first, last] : {std::pair<int, int>(0, 40), {30, 90}}) {
        vZones.push_back(lumo.createZone(Triangles(vT.begin() + first, vT.begin() + last)));
        for (int t = first; t < last; ++t) {
            const Triangle2* const pT = vT[static_cast<std::size_t>(t)];
            for (int i = 0; i < 3; ++i) {
                const Point2 *const pA = pT->corner(i), *const pB = pT->corner(incIndexBy1(i));
                sCorners.insert(pA);
                if (first == 0) sEdges.insert(std::minmax(pA, pB));
            }
        }
    }
    const auto count = [](const char* filename, const std::string& part) {
        return lumo_test::countOf(part, lumo_test::readFile(filename));
    };
    ASSERT_TRUE(lumo.writeObj("both.obj", vZones));
    EXPECT_EQ(count("both.obj", "\nv "), sCorners.size());
    EXPECT_EQ(count("both.obj", "\nf "), 100U);
    EXPECT_EQ(count("both.obj", "\ng zone"), 2U);
    ASSERT_TRUE(vZones[0]->writeObj("one.obj"));
    EXPECT_EQ(count("one.obj", "\nf "), 40U);
    vZones[0]->show("zone.ps");
    EXPECT_EQ(count("zone.ps", "lineto"), sEdges.size());
    vZones[0]->showGeomview("zone.list", "1 1 1 0.5");
    EXPECT_EQ(count("zone.list", "\n3 "), 40U);
    vZones[0]->show(static_cast<Visualizer2*>(nullptr), Color());
    vZones[0]->showGeomview(static_cast<Visualizer3*>(nullptr), "");
}

} // namespace
