#include "engine/Dt2.h"
#include "oracles/Corpus.h"
#include "oracles/Dice.h"
#include "oracles/ExactOracle.h"
#include "oracles/MeshOracle.h"
#include "oracles/QueryTwins.h"
#include "support/TestOutput.h"

#include "LumoException.h"
#include "Lumo_2D.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>

namespace
{

using namespace ORBI_LUMO25D;
using lumo_test::CoutCapture;
using oracles::Dice;
using oracles::QueryTwin;

using Points = std::vector<Point2>;

constexpr double untouched = -98765.0;
constexpr double inf = std::numeric_limits<double>::infinity();

/// A triangulation and its twin.
class Subject
{
public:
    explicit Subject(const Points& vPoints_) : vPoints(vPoints_), twin(insert(lumo, vPoints_, vT)) {}

    /// vAt: the triangles that hold p.
    void expectLocated(const Point2& p, const std::vector<Triangle2*>& vAt);
    void expectHeight(const Point2& p, Triangle2* pApproxT, const std::vector<Triangle2*>& vAt);
    void expectNearbyHeight(const Point2& p);
    void expectCut(const Point2& src, const Point2& trg);
    double roundingReach(const mpq_class& x, const mpq_class& y) const;
    void expectHull() const;
    /// Hull, and neighbourhoods of vertices that the dice draw.
    void expectTopology(Dice& dice) const;
    void expectNeighbourhood(Point2* pVtx, Point2* pOther) const;
    /// All of these at one position, with targets and hints drawn by the dice.
    void expectAll(const Point2& p, Dice& dice);

    const Points& vPoints;
    Lumo_2D lumo;
    std::vector<Triangle2*> vT;
    const QueryTwin twin;

private:
    static QueryTwin insert(Lumo_2D& lumo, const Points& vPoints, std::vector<Triangle2*>& vT)
    {
        lumo.insert(vPoints);
        lumo.getTrianglePointers(vT);
        return QueryTwin(vT);
    }
};

void Subject::expectLocated(const Point2& p, const std::vector<Triangle2*>& vAt)
{
    Triangle2* const pT = lumo.locate(p);
    ASSERT_EQ(pT == nullptr, vAt.empty()) << p;
    ASSERT_TRUE(pT == nullptr || std::find(vAt.begin(), vAt.end(), pT) != vAt.end()) << p << " isn't in " << *pT;
}

/// A bound of the error of interpolation.
double heightTolerance(const Triangle2& t)
{
    const auto [low, high] = std::minmax({t.corner(0)->z(), t.corner(1)->z(), t.corner(2)->z()});
    return 4e-16 * std::max(std::fabs(low), std::fabs(high)) + 0x1p-43 * (high - low);
}

void Subject::expectHeight(const Point2& p, Triangle2* pApproxT, const std::vector<Triangle2*>& vAt)
{
    double height = untouched;
    const bool bFound = lumo.getHeight(p.x(), p.y(), height, pApproxT);
    ASSERT_EQ(bFound, !vAt.empty()) << p;
    if (!bFound) {
        ASSERT_EQ(height, untouched);
        return;
    }
    double tolerance = 0.0;
    bool bInRange = false;
    for (const Triangle2* pT : vAt) {
        tolerance = std::max(tolerance, heightTolerance(*pT));
        const auto [low, high] = std::minmax({pT->corner(0)->z(), pT->corner(1)->z(), pT->corner(2)->z()});
        bInRange = bInRange || (height >= low && height <= high); // so that flat triangles are exact
        for (int i = 0; i < 3; ++i) {
            ASSERT_TRUE(*pT->corner(i) != p || height == pT->corner(i)->z()) << "at corner " << p;
        }
    }
    ASSERT_TRUE(bInRange) << height << " at " << p;
    const mpq_class error = abs(mpq_class(height) - oracles::planeHeight(*vAt[0], p));
    ASSERT_LE(error.get_d(), tolerance) << p << " in " << *vAt[0];
}

/// p lies outside of the hull.
void Subject::expectNearbyHeight(const Point2& p)
{
    const oracles::NearestOnHull nearest = twin.nearestOnHull(p);
    if (nearest.bDoubtful) return;
    double height = untouched;
    if (!nearest.bOnEdge) {
        ASSERT_FALSE(lumo.getHeight(p.x(), p.y(), height, nullptr, 1e308)) << p;
        ASSERT_EQ(height, untouched);
        return;
    }
    ASSERT_TRUE(lumo.getHeight(p.x(), p.y(), height, nullptr, inf)) << p;
    ASSERT_NEAR(height, nearest.height.get_d(), 1e-6 * (1.0 + std::fabs(height))) << p;
    const double distance = mpf_class(sqrt(mpf_class(nearest.sqDistance, 128))).get_d();
    // Nearer to an edge than rounding lets tell, or beyond the doubles, there is nothing to compare.
    if (!(distance > 1e-9 * std::max(p.getMaxAbs(), 1e-290) && distance < 1e307)) return;
    ASSERT_TRUE(lumo.getHeight(p.x(), p.y(), height, nullptr, distance * (1.0 + 1e-6))) << p << " at " << distance;
    ASSERT_FALSE(lumo.getHeight(p.x(), p.y(), height, nullptr, distance * (1.0 - 1e-6))) << p << " at " << distance;
}

/// How far a crossing at this place of the border has to move, in lengths of the triangle there, so that it gains a few
/// steps of the doubles in height over the border: 1 and more in needles that hold no position but their corners.
double Subject::roundingReach(const mpq_class& x, const mpq_class& y) const
{
    double reach = 0.0;
    for (const QueryTwin::BorderEdge& e : twin.border()) {
        const mpq_class ax(e.first->x()), ay(e.first->y());
        const mpq_class dx = mpq_class(e.second->x()) - ax, dy = mpq_class(e.second->y()) - ay;
        if (dx * (y - ay) != dy * (x - ax)) continue;
        const Triangle2& t = *twin.triangleLeftOf(e.first, e.second);
        const mpq_class twiceArea = oracles::orientationDet(*t.corner(0), *t.corner(1), *t.corner(2));
        const mpq_class step = 2e-15 * std::max(e.first->getMaxAbs(), e.second->getMaxAbs());
        const mpq_class sqRatio = step * step * (dx * dx + dy * dy) / (twiceArea * twiceArea);
        reach = std::max(reach, std::sqrt(sqRatio.get_d()));
    }
    return reach;
}

/// src lies outside of the hull.
void Subject::expectCut(const Point2& src, const Point2& trg)
{
    bool bOK = false;
    const Point2 cut = lumo.getImpl()->cutLineAtCH(src, trg, bOK);
    mpq_class x, y;
    const bool bMeets = twin.entry(src, trg, x, y);
    ASSERT_TRUE(bOK == bMeets || (bMeets && roundingReach(x, y) > 0.5)) << src << " to " << trg;
    if (!bOK) return;
    ASSERT_FALSE(twin.trianglesAt(cut).empty()) << cut << " from " << src << " to " << trg;
    const Bbox2 box = lumo.computeBoundingBox();
    const double size = std::max({std::fabs(box.getMinCoord()), std::fabs(box.getMaxCoord()), 1e-290});
    const mpq_class error = std::max<mpq_class>(abs(mpq_class(cut.x()) - x), abs(mpq_class(cut.y()) - y));
    if (error <= 1e-14 * size) return;
    ASSERT_LE(error.get_d(), 2.0 * roundingReach(x, y) * std::min(box.getMaxRange(), size))
        << cut << " from " << src << " to " << trg;
}

void Subject::expectHull() const
{
    for (const bool bAllVertices : {true, false}) {
        std::vector<Point2*> vHull(1, nullptr); // what was there stays in front
        lumo.getConvexHull(bAllVertices, vHull);
        const Points vExpected = oracles::convexHull(vPoints, bAllVertices);
        ASSERT_EQ(vHull.size(), vExpected.size() + 1);
        for (std::size_t i = 0; i < vExpected.size(); ++i) {
            ASSERT_EQ(*vHull[i + 1], vExpected[i]) << bAllVertices;
        }
    }
}

void Subject::expectNeighbourhood(Point2* pVtx, Point2* pOther) const
{
    std::vector<Triangle2*> vAround;
    std::vector<Point2*> vNeighbours;
    lumo.getIncidentTriangles(pVtx, vAround);
    lumo.getIncidentVertices(pVtx, vNeighbours);
    const auto sAround = twin.trianglesAround(pVtx);
    const auto sNeighbours = twin.neighboursOf(pVtx);
    ASSERT_EQ(vAround.size(), sAround.size());
    ASSERT_EQ(vNeighbours.size(), sNeighbours.size());
    ASSERT_EQ(std::set<Triangle2*>(vAround.begin(), vAround.end()), sAround);
    ASSERT_EQ(std::set<Point2*>(vNeighbours.begin(), vNeighbours.end()), sNeighbours);
    vNeighbours.push_back(pOther);
    for (Point2* p : vNeighbours) {
        if (p == pVtx) continue;
        ASSERT_EQ(lumo.getAdjacentTriangle(pVtx, p), twin.triangleLeftOf(pVtx, p));
        ASSERT_EQ(lumo.getAdjacentTriangle(p, pVtx), twin.triangleLeftOf(p, pVtx));
    }
}

void Subject::expectTopology(Dice& dice) const
{
    expectHull();
    std::vector<Point2*> vVertices;
    lumo.getVertexPointers(vVertices);
    for (int k = 0; k < 5; ++k) expectNeighbourhood(dice.of(vVertices), dice.of(vVertices));
}

void Subject::expectAll(const Point2& p, Dice& dice)
{
    const std::vector<Triangle2*> vAt = twin.trianglesAt(p);
    expectLocated(p, vAt);
    expectHeight(p, nullptr, vAt);
    expectHeight(p, dice.of(vT), vAt);
    if (!vAt.empty()) return;
    expectNearbyHeight(p);
    const Point2& a = dice.of(vPoints);
    const Point2& b = dice.of(vPoints);
    expectCut(p, a);
    expectCut(p, Point2(0.5 * a.x() + 0.5 * b.x(), 0.5 * a.y() + 0.5 * b.y(), 0.0));
    const Point2 beyond(a.x() + (a.x() - p.x()), a.y() + (a.y() - p.y()), 0.0);
    if (std::isfinite(beyond.getMaxAbs())) expectCut(p, beyond);
}

/// Positions that decide: at and beside vertices, on edges, on the hull's edges and on their lines, far outside.
Points positionsFor(const Subject& s, Dice& dice, int numEach)
{
    Points v = {{1e300, -1e300, 0}, {-3.0, 1e300, 0}, {-1.7e308, -1.7e308, 0}, {0.0, -0.0, 0}};
    const double box[4] = {s.lumo.computeBoundingBox().get_minX(), s.lumo.computeBoundingBox().get_minY(),
                           s.lumo.computeBoundingBox().get_maxX(), s.lumo.computeBoundingBox().get_maxY()};
    for (int k = 0; k < numEach; ++k) {
        const Point2& p = dice.of(s.vPoints);
        v.push_back(p);
        v.emplace_back(std::nextafter(p.x(), dice.below(2) == 0 ? -inf : inf), p.y(), 0.0);
        const double u = 1.4 * dice.real() - 0.2, w = 1.4 * dice.real() - 0.2;
        v.emplace_back((1.0 - u) * box[0] + u * box[2], (1.0 - w) * box[1] + w * box[3], 0.0);
        const Triangle2& t = *dice.of(s.vT);
        const int i = dice.below(3);
        const Point2 &a = *t.corner(i), &b = *t.corner((i + 1) % 3);
        v.emplace_back(0.5 * a.x() + 0.5 * b.x(), 0.5 * a.y() + 0.5 * b.y(), 0.0);
        const QueryTwin::BorderEdge& e = dice.of(s.twin.border());
        const double dx = e.second->x() - e.first->x(), dy = e.second->y() - e.first->y();
        for (const double f : {0.5, -1.0, 2.0}) v.emplace_back(e.first->x() + f * dx, e.first->y() + f * dy, 0.0);
        v.emplace_back(e.first->x() + u * dx + w * dy, e.first->y() + u * dy - w * dx, 0.0);
    }
    v.erase(std::remove_if(v.begin(), v.end(), [](const Point2& p) { return !std::isfinite(p.getMaxAbs()); }), v.end());
    return v;
}

TEST(Queries, answersDifferFromNaiveTwinsOnTheCorpus)
{
    std::uint64_t seed = 2024;
    for (const oracles::CorpusEntry& entry : oracles::corpus(150)) {
        const oracles::FailureKeeper keeper(entry);
        Subject subject(entry.vPoints);
        if (subject.vT.empty()) continue;
        Dice dice(++seed);
        SCOPED_TRACE("seed " + std::to_string(seed));
        subject.expectTopology(dice);
        const bool bVariant = entry.name.find('+') != std::string::npos; // of which there are four
        for (const Point2& p : positionsFor(subject, dice, bVariant ? 1 : 2)) {
            subject.expectAll(p, dice);
            if (HasFatalFailure()) return;
        }
    }
}

TEST(Queries, answersDifferFromNaiveTwinsOnSmallGridsFullOfDegeneracies)
{
    for (std::uint64_t seed = 1; seed <= 600; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Dice dice(seed);
        const int size = 3 + dice.below(4);
        const double zSize = seed % 3 == 0 ? 1e6 : (seed % 3 == 1 ? 1.0 : 0.0); // steep, ordinary, flat
        Points vPoints;
        for (int i = 3 + dice.below(12); i > 0; --i) {
            const double x = dice.below(size);
            vPoints.emplace_back(x, dice.below(size), zSize * dice.below(5));
        }
        Subject subject(vPoints);
        if (subject.vT.empty()) continue;
        subject.expectTopology(dice);
        for (int k = 0; k < 12; ++k) {
            const double x = 0.5 * (dice.below(2 * size + 4) - 2);
            subject.expectAll(Point2(x, 0.5 * (dice.below(2 * size + 4) - 2), 0.0), dice);
        }
        if (HasFatalFailure()) return;
    }
}

TEST(Queries, positionsThatAreNoNumbersOrWithoutAreaGiveNothingAndChangeNothing)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    Lumo_2D empty, line, area;
    std::vector<Point2*> vWaiting;
    line.insert({{0, 0, 1}, {1, 1, 1}, {2, 2, 1}, {3, 3, 1}}, vWaiting);
    area.insert({{0, 0, 1}, {4, 0, 1}, {4, 4, 1}, {0, 4, 1}});
    for (Lumo_2D* pLumo : {&empty, &line, &area}) {
        for (const Point2& p : Points{{nan, 1, 0}, {1, nan, 0}, {inf, 1, 0}, {1, -inf, 0}, {1, 1, nan}}) {
            bool bOK = false;
            double height = untouched;
            const bool bInside = pLumo == &area && p.x() == 1.0 && p.y() == 1.0;
            EXPECT_EQ(pLumo->locate(p) != nullptr, bInside);
            EXPECT_EQ(pLumo->getHeight(p.x(), p.y(), height, nullptr, inf), bInside);
            EXPECT_EQ(height, bInside ? 1.0 : untouched);
            pLumo->getImpl()->cutLineAtCH({-9, -9, 0}, p, bOK);
            EXPECT_EQ(bOK, bInside);
        }
        EXPECT_TRUE(pLumo->checkValidity(true, "after queries"));
    }
    double height = untouched;
    EXPECT_FALSE(line.getHeight(1.0, 1.0, height, nullptr, 1.0)) << "without area there is no surface";
    EXPECT_TRUE(area.getHeight(2.0, -1.0, height, nullptr, 1.0)) << "just as far as allowed";
    CoutCapture out;
    std::vector<Point2*> vHull;
    std::vector<Triangle2*> vT;
    line.getConvexHull(true, vHull);
    line.getTrianglePointers(vT);
    EXPECT_TRUE(vHull.empty() && vT.empty());
    EXPECT_NE(out.take().find("the triangulation has no area yet"), std::string::npos);
    EXPECT_THROW(line.getIncidentTriangles(vWaiting[0], vT), LumoException);
    EXPECT_THROW(line.getAdjacentTriangle(vWaiting[0], vWaiting[1]), LumoException);
}

TEST(Queries, heightInANeedleIsAsCoarseAsItsCoordinates)
{
    // Half a millimetre high at survey coordinates, and not steep: plain products leave four digits of the area.
    const Point2 a(5412345.125, 6543210.25, 0), b(5412845.375, 6543710.5, 10), c(5412595.25, 6543460.3755, 5.0003);
    Lumo_2D lumo;
    lumo.insert({a, b, c});
    Dice dice(3);
    int numInside = 0;
    for (int i = 0; i < 200; ++i) {
        const double u = dice.real(), v = dice.real() * (1.0 - u);
        const double x = a.x() + u * (b.x() - a.x()) + v * (c.x() - a.x());
        const double y = a.y() + u * (b.y() - a.y()) + v * (c.y() - a.y());
        double height = untouched;
        if (!lumo.getHeight(x, y, height)) continue;
        ++numInside;
        EXPECT_NEAR(height, OrbiTest::getPlaneHeightExact(&a, &b, &c, x, y), 1e-11);
    }
    EXPECT_GT(numInside, 150);
}

TEST(Queries, aWalkOfThousandsOfStepsLosesItsWay)
{
    // Two long rows of points: every walk from end to end crosses all of the strip.
    Points vPoints;
    for (int i = 0; i < 4000; ++i) {
        vPoints.emplace_back(i, 0.0, i);
        vPoints.emplace_back(i + 0.5, 0.001, i);
    }
    Subject subject(vPoints);
    for (const double start : {0.5, 3999.2}) {
        Triangle2* const pStart = subject.lumo.locate(Point2(start, 0.0003, 0.0));
        for (const double y : {0.0005, 0.0, 0.002}) {
            for (const double x : {0.25, 1999.9, 3999.2}) {
                const Point2 p(x, y, 0.0);
                subject.expectHeight(p, pStart, subject.twin.trianglesAt(p));
            }
        }
    }
}

} // namespace
