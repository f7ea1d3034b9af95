// Rings against random polygons, whose order is known; polygons from edges against the area that they bound.

#include "Lumo_2D.h"

#include "oracles/Dice.h"

#include "Bbox2.h"
#include "Edge2.h"
#include "Vector2.h"
#include "freeFunctions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <set>

using namespace ORBI_LUMO25D;

namespace
{

double doubleArea(const std::vector<Segment2>& v)
{
    double sum = 0.0;
    for (const Segment2& s : v) sum += s.src.x() * s.trg.y() - s.trg.x() * s.src.y();
    return sum;
}

bool isClosedWalk(const std::vector<Segment2>& v)
{
    for (std::size_t i = 0; i < v.size(); ++i) {
        if (v[i].trg != v[(i + 1) % v.size()].src) return false;
    }
    return true;
}

void jumble(oracles::Dice& dice, std::vector<Segment2>& v)
{
    dice.shuffle(v);
    for (Segment2& s : v) {
        if (dice.below(2) == 0) s.swapSrcTrg();
    }
}

} // namespace

TEST(Rings, AreSortedWhateverTheOrderAndOnlyWhenTheyAreOne)
{
    for (int round = 0; round < 100; ++round) {
        SCOPED_TRACE(round);
        oracles::Dice dice(7 + static_cast<std::uint64_t>(round));
        std::vector<Segment2> vRing, vOther;
        Bbox2 box;
        box.add(Point2(0, 0, 0));
        box.add(Point2(9, 9, 0));
        generateRandomPolygon(3 + static_cast<std::size_t>(dice.below(40)), box, static_cast<std::uint64_t>(round),
                              vRing);
        const double area = doubleArea(vRing);
        jumble(dice, vRing);
        EXPECT_TRUE(isSimplePolygon(vRing));
        std::vector<Segment2> vSorted(vRing), vCCW(vRing);
        ASSERT_TRUE(sortRing(vSorted) && sortRingCCW(vCCW));
        EXPECT_TRUE(isClosedWalk(vSorted) && isClosedWalk(vCCW));
        EXPECT_TRUE(vSorted.front().src == vRing.front().src && vSorted.front().trg == vRing.front().trg);
        EXPECT_EQ(vSorted.size(), vRing.size());
        EXPECT_NEAR(doubleArea(vCCW), area, 1e-9);
        // A second ring, touching or apart; an open chain; a double segment; a point.
        for (const Segment2& s : vRing) {
            const Point2& o = vRing.front().src; // shrunk towards a corner: the rings touch there
            const auto shrunk = [&o](const Point2& p) { return Point2((o.x() + p.x()) / 2, (o.y() + p.y()) / 2, 0); };
            vOther.emplace_back(shrunk(s.src), shrunk(s.trg));
        }
        std::vector<std::vector<Segment2>> vvBad(5, vRing);
        vvBad[0].insert(vvBad[0].end(), vOther.begin(), vOther.end());
        const Vector2 away(100, 0, 0);
        for (const Segment2& s : vOther) vvBad[4].emplace_back(s.src + away, s.trg + away);
        vvBad[1].pop_back();
        vvBad[2].push_back(vRing.back());
        vvBad[3].emplace_back(vRing.front().src, vRing.front().src);
        for (std::vector<Segment2>& vBad : vvBad) {
            const std::vector<Segment2> vBefore(vBad);
            EXPECT_FALSE(sortRing(vBad) || sortRingCCW(vBad) || isSimplePolygon(vBad));
            EXPECT_EQ(vBad, vBefore);
        }
    }
}

TEST(Rings, AreNotSimpleWhenTheyCrossOrTouchThemselves)
{
    const auto isSimple = [](const std::vector<Point2>& vPoints) {
        std::vector<Segment2> vRing;
        pointsToPolyline(vPoints, true, vRing);
        return isSimplePolygon(vRing);
    };
    const Point2 a(0, 0, 0), b(4, 0, 0), c(4, 4, 0), d(0, 4, 0), onAB(2, 0, 0), beyond(6, 0, 0);
    EXPECT_TRUE(isSimple({a, a, b, c, d, a}) && isSimple({a, onAB, b, c, d}));
    EXPECT_FALSE(isSimple({a, c, b, d}) || isSimple({a, b, c, onAB, d}) || isSimple({a, beyond, b, c}));
    std::vector<Segment2> vHourglass; // one walk, but twice through the middle
    const Point2 middle(2, 2, 0);
    pointsToPolyline({a, b, middle, c, d, middle}, true, vHourglass);
    EXPECT_FALSE(sortRing(vHourglass) || isSimplePolygon(vHourglass));
    EXPECT_FALSE(isSimple({a, b}) || isSimple({}) || isSimple({a, b, Point2(0, std::nan(""), 0)}));
}

TEST(Polygons, FromEdgesBoundTheSameAreaAndPassNoVertexTwice)
{
    for (int round = 0; round < 100; ++round) {
        SCOPED_TRACE(round);
        oracles::Dice dice(55 + static_cast<std::uint64_t>(round));
        Lumo_2D lumo;
        lumo.insert(dice.points(60, 1.0, 1.0));
        std::vector<Triangle2*> vT;
        lumo.getTrianglePointers(vT);
        dice.shuffle(vT);
        vT.resize(vT.size() / 2);
        const std::set<Triangle2*> sT(vT.begin(), vT.end());
        std::vector<Edge2> vEdges, vRemaining;
        double area = 0.0;
        for (Triangle2* pT : vT) {
            area += pT->getArea2D();
            for (int i = 0; i < 3; ++i) {
                if (sT.count(pT->getOppositeTriangle(i)) == 0) vEdges.emplace_back(pT, i);
            }
        }
        const std::size_t numMissing = round % 2 == 0 ? 0 : 5;
        dice.shuffle(vEdges);
        vEdges.resize(vEdges.size() - numMissing, Edge2(nullptr, 0));
        std::vector<std::vector<Edge2>> vvPolygons;
        edgesToPolygons(vEdges, vvPolygons, vRemaining);
        std::multiset<Edge2> sFound(vRemaining.begin(), vRemaining.end());
        double found = 0.0;
        for (const std::vector<Edge2>& vPolygon : vvPolygons) {
            std::set<Point2*> sVertices;
            std::vector<Segment2> vSegments;
            for (const Edge2& edge : vPolygon) {
                sVertices.insert(edge.getSrc());
                vSegments.emplace_back(*edge.getSrc(), *edge.getTrg());
            }
            EXPECT_EQ(sVertices.size(), vPolygon.size());
            EXPECT_TRUE(isClosedWalk(vSegments) && isSimplePolygon(vSegments));
            found += 0.5 * doubleArea(vSegments);
            sFound.insert(vPolygon.begin(), vPolygon.end());
        }
        EXPECT_EQ(sFound, std::multiset<Edge2>(vEdges.begin(), vEdges.end()));
        if (numMissing > 0) continue;
        EXPECT_TRUE(vRemaining.empty());
        EXPECT_NEAR(found, area, 1e-9);
    }
}
