#include "IsoContours.h"

#include "LumoException.h"
#include "Lumo_2D.h"
#include "Vector2.h"
#include "freeFunctions.h"
#include "oracles/Corpus.h"
#include "oracles/Dice.h"
#include "support/TestOutput.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <future>
#include <map>
#include <set>

using namespace ORBI_LUMO25D;

namespace
{

using Contours = std::vector<std::vector<Segment2>>;

/// The length of a height's contours, triangle by triangle, independent of chains and index.
long double naiveLength(const std::vector<Triangle2*>& vT, double height)
{
    long double sum = 0;
    for (const Triangle2* pT : vT) {
        std::vector<std::pair<long double, long double>> vEnds;
        for (int i = 0; i < 3; ++i) {
            const Point2 &a = *pT->getCorner(i), &b = *pT->getCorner(incIndexBy1(i));
            if ((a.z() < height) == (b.z() < height)) continue;
            const long double t =
                (static_cast<long double>(height) - a.z()) / (static_cast<long double>(b.z()) - a.z());
            vEnds.emplace_back(a.x() + t * (static_cast<long double>(b.x()) - a.x()),
                               a.y() + t * (static_cast<long double>(b.y()) - a.y()));
        }
        if (vEnds.size() == 2) {
            sum += std::hypot(vEnds[0].first - vEnds[1].first, vEnds[0].second - vEnds[1].second);
        }
    }
    return sum;
}

/// Continuous, as long as can be, closed ones counterclockwise from the leftmost point; gives the length.
long double checkChains(const Contours& vvContours, double height)
{
    long double length = 0;
    std::map<Point2, int> mUses;
    for (const std::vector<Segment2>& vChain : vvContours) {
        const Point2 start = vChain.front().src;
        const bool bClosed = start == vChain.back().trg;
        long double area = 0;
        for (std::size_t i = 0; i < vChain.size(); ++i) {
            const Segment2& s = vChain[i];
            EXPECT_TRUE(s.src.z() == height && s.trg.z() == height);
            EXPECT_FALSE(s.src == s.trg);
            EXPECT_TRUE(i == 0 || vChain[i - 1].trg == s.src);
            EXPECT_FALSE(bClosed && s.src < start);
            ++mUses[s.src];
            const Vector2 a = s.src - start, b = s.trg - start;
            area += static_cast<long double>(a.x()) * b.y() - static_cast<long double>(a.y()) * b.x();
            length += std::sqrt(static_cast<long double>(s.getSqLen2D()));
        }
        if (bClosed) {
            EXPECT_GE(area, -1e-14 * start.getMaxAbs() * static_cast<double>(vChain.size())); // rounding of points
        } else {
            ++mUses[vChain.back().trg];
            EXPECT_LT(start, vChain.back().trg);
        }
    }
    for (const auto& use : mUses) EXPECT_EQ(use.second, 1); // two chains with a common point would be one chain
    return length;
}

} // namespace

// Real and nasty surfaces, at heights between vertices and at heights of vertices.
TEST(IsoContours, ChainsAreBrokenOrDifferFromAScanOfAllTriangles)
{
    for (oracles::CorpusEntry& entry : oracles::corpus(20000)) {
        const oracles::FailureKeeper keeper(entry);
        double extent = 0.0;
        for (const Point2& p : entry.vPoints) extent = std::max(extent, p.getMaxAbs());
        if (extent > 1e100 || extent < 1e-100) continue; // squares of lengths overflow or vanish in this test
        oracles::Dice dice(1);
        const bool bFlat = std::all_of(entry.vPoints.begin(), entry.vPoints.end(),
                                       [&](const Point2& p) { return p.z() == entry.vPoints[0].z(); });
        // Few heights: plateaus, saddles and pits in plenty.
        if (bFlat) {
            for (Point2& p : entry.vPoints) p.setZ(dice.below(4) - 1.0);
        }
        Lumo_2D lumo;
        lumo.insert(entry.vPoints);
        if (!lumo.hasArea()) continue;
        std::vector<Triangle2*> vT;
        lumo.getTrianglePointers(vT);
        // Points on triangles as thin as the rounding of coordinates meet at any height.
        const bool bThin = std::any_of(vT.begin(), vT.end(), [&](const Triangle2* pT) {
            return pT->getArea2D() <= 1e-13 * extent * std::sqrt(pT->getMaxSqEdgeLen2D());
        });
        const IsoContours iso(vT);
        const double low = iso.getMinHeight(), range = iso.getMaxHeight() - low;
        for (const double height : {0.0, 1.0, dice.of(vT)->getCorner(0)->z(), low + 0.5 * range,
                                    low + dice.real() * range, low, low + range}) {
            Contours vvContours;
            const bool bPlain = iso.getContours(height, vvContours, false, false);
            Contours vvNoisy;
            if (!iso.getContours(height, vvNoisy, false, true)) {
                EXPECT_TRUE(bThin) << "height " << height;
                continue;
            }
            const double used = vvNoisy.empty() ? height : vvNoisy[0][0].src.z();
            EXPECT_TRUE(used >= height && used - height <= 1e-6 * (1 + std::fabs(height) + extent));
            EXPECT_TRUE(!bPlain || used == height);
            const long double length = checkChains(vvNoisy, used);
            if (vvNoisy.empty()) continue;
            const long double naive = naiveLength(vT, used);
            EXPECT_NEAR(static_cast<double>(length), static_cast<double>(naive),
                        static_cast<double>(1e-9L * naive + 1e-15L * extent * static_cast<long double>(vT.size())));
        }
    }
}

// What triangles say of their neighbours only makes contours quicker: the same ones without it, with lies, in any order.
TEST(IsoContours, NeighboursOrOrderInMemoryChangeTheContours)
{
    for (int seed = 0; seed < 60; ++seed) {
        oracles::Dice dice(static_cast<std::uint64_t>(seed));
        Lumo_2D lumo;
        lumo.insert(dice.points(10 + 20 * seed, 100.0, 50.0));
        std::vector<Triangle2*> vT, vCopies;
        lumo.getTrianglePointers(vT);
        dice.shuffle(vT);
        if (vT.size() > 5) vT.resize(vT.size() - vT.size() / 20); // and with gaps
        std::vector<Point2> vCorners(3 * vT.size());
        std::vector<Triangle2> vSoup(vT.size());
        for (std::size_t i = 0; i < vT.size(); ++i) {
            Point2* const aCorners = &vCorners[3 * i];
            for (int k = 0; k < 3; ++k) aCorners[k] = *vT[i]->corner(k);
            vSoup[i].setProperties(&aCorners[0], &aCorners[1], &aCorners[2]);
            vCopies.push_back(&vSoup[i]);
        }
        const IsoContours iso(vT), copies(vCopies);
        for (const bool bLies : {false, true}) {
            for (std::size_t i = 0; bLies && i < 3 * vSoup.size(); ++i)
                vSoup[i / 3].setOppTriangle(static_cast<int>(i % 3), dice.of(vCopies));
            for (const double height : {5.0, 20.0 + dice.real(), 40.0 * dice.real()}) {
                Contours vvContours, vvOfCopies;
                ASSERT_EQ(iso.getContours(height, vvContours, false, true),
                          copies.getContours(height, vvOfCopies, false, true));
                ASSERT_EQ(vvContours.size(), vvOfCopies.size());
                for (std::size_t i = 0; i < vvContours.size(); ++i) {
                    ASSERT_EQ(vvContours[i], vvOfCopies[i]);
                    ASSERT_EQ(vvContours[i][0].src, vvOfCopies[i][0].src);
                }
            }
        }
    }
}

// Around a pit, a saddle and on a ridge the points have to come apart, wherever the surface lies.
TEST(IsoContours, NoiseLeavesPointsTogether)
{
    for (const double z0 : {0.0, 1.0, -1.0, 2500.0, 3e7}) {
        for (const double offset : {0.0, 3.0, 5.4e6}) {
            std::vector<Point2> vPoints;
            for (int i = 0; i < 49; ++i) {
                const int x = i % 7 - 3, y = i / 7 - 3;
                vPoints.emplace_back(offset + x + 0.25 * y, offset + y, z0 + (x * x - y * y) * (x * x + y * y - 5));
            }
            Lumo_2D lumo;
            lumo.insert(vPoints);
            std::vector<Triangle2*> vT;
            lumo.getTrianglePointers(vT);
            const IsoContours iso(vT);
            Contours vvContours(1);
            EXPECT_FALSE(iso.getContours(z0, vvContours, false, false));
            EXPECT_TRUE(vvContours.empty());
            ASSERT_TRUE(iso.getContours(z0, vvContours, false, true)) << z0 << " " << offset;
            // The sign of each corner against the plane gives the number of crossed triangles, and the segments with it.
            std::size_t numSegments = 0, numCrossed = 0;
            for (const auto& vChain : vvContours) numSegments += vChain.size();
            for (const Triangle2* pT : vT) {
                int numAbove = 0;
                for (int i = 0; i < 3; ++i) numAbove += pT->getCorner(i)->z() > z0;
                numCrossed += numAbove == 1 || numAbove == 2;
            }
            EXPECT_EQ(numSegments, numCrossed) << z0 << " " << offset;
            checkChains(vvContours, vvContours.at(0).at(0).src.z());
        }
    }
}

// The planes go through vertices and along edges of a grid. Parameter along the plane: no gap, no overlap.
TEST(IsoContours, ProfileHasGapsOrOverlaps)
{
    std::vector<Point2> vCorners;
    for (const double offset : {0.0, 4.5e6}) {
        Lumo_2D lumo;
        oracles::Dice dice(3);
        for (int i = 0; i < 121; ++i) lumo.insert(Point2(offset + i % 11, offset + i / 11, 5 * dice.real()));
        std::vector<Triangle2*> vT;
        lumo.getTrianglePointers(vT);
        vCorners.clear();
        for (const Triangle2* pT : vT) {
            for (int i = 0; i < 3; ++i) vCorners.push_back(*pT->getCorner(i));
        }
        for (const Vector2& normal :
             {Vector2(7, 0, 0), Vector2(0, -0.01, 0), Vector2(1, -1, 0), Vector2(1, 2, 0), Vector2(3, 1.7, 0)}) {
            const IsoContours iso(vCorners, normal);
            const Vector2 along = normalize(Vector2(-normal.y(), normal.x(), 0));
            const Point2 centre(offset + 5, offset + 5, -77);
            std::vector<Segment2> vProfile;
            iso.getProfile(centre, vProfile);
            std::vector<std::pair<double, double>> vRanges;
            for (const Segment2& s : vProfile) {
                vRanges.push_back(std::minmax((s.src - centre) * along, (s.trg - centre) * along));
                for (const Point2& p : {s.src, s.trg}) {
                    double height = 0;
                    const double x = std::clamp(p.x(), offset, offset + 10), y = std::clamp(p.y(), offset, offset + 10);
                    ASSERT_TRUE(lumo.getHeight(x, y, height));
                    EXPECT_NEAR(p.z(), height, 1e-7);
                    EXPECT_NEAR((p - centre) * normalize(normal), 0, 1e-8);
                }
            }
            std::sort(vRanges.begin(), vRanges.end());
            const double half = 5 / std::max(std::fabs(along.x()), std::fabs(along.y()));
            double reached = -half;
            for (const auto& range : vRanges) {
                EXPECT_NEAR(range.first, reached, 1e-8);
                reached = range.second;
            }
            EXPECT_NEAR(reached, half, 1e-8);
        }
    }
    // A wall in the plane: the plane steps aside.
    const IsoContours wall({{0, 0, 0}, {0, 1, 0}, {0, 0, 1}, {0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, Vector2(1, 0, 0));
    std::vector<Segment2> vProfile;
    wall.getProfile(Point2(0, 0, 0), vProfile);
    ASSERT_EQ(vProfile.size(), 1u);
    EXPECT_NEAR(std::sqrt(vProfile[0].getSqLen2D()), 1, 1e-12);
}

TEST(IsoContours, MisuseOrMessagesChanged)
{
    lumo_test::CoutCapture out;
    Contours vvContours;
    std::vector<Segment2> vSegments;
    const IsoContours nothing(std::vector<Triangle2*>{});
    EXPECT_TRUE(nothing.getMinHeight() == -1.0 && nothing.getMaxHeight() == -1.0);
    EXPECT_TRUE(nothing.getContours(1, vvContours, true, true) && vvContours.empty());
    EXPECT_EQ(out.take(), "");
    nothing.getProfile(Point2(0, 0, 0), vSegments);
    EXPECT_NE(
        out.take().find("that the IsoContours object is created with the constructor that takes a direction vector!"),
        std::string::npos);

    Point2 aCorners[] = {{0, 0, 0}, {8, 0, 10}, {0, 8, 20}, {0, 0, std::nan("")}};
    Triangle2 t, bad, dead;
    t.setProperties(&aCorners[0], &aCorners[1], &aCorners[2]);
    bad.setProperties(&aCorners[3], &aCorners[1], &aCorners[2]);
    const IsoContours iso(std::vector<Triangle2*>{&t, nullptr, &bad, &dead, &t});
    EXPECT_NE(out.take().find("3 triangles without"), std::string::npos);
    EXPECT_TRUE(iso.getContours(5, vvContours, true, false));
    EXPECT_EQ(vvContours.size(), 1u);
    EXPECT_EQ(vvContours[0][0].src.x(), 0); // from the smaller end
    EXPECT_TRUE(iso.getContours(-5, vvContours, true, false) && iso.getContours(25, vvContours, true, false) &&
                iso.getContours(std::nan(""), vvContours, true, true));
    EXPECT_EQ(vvContours.size(), 1u);
    EXPECT_EQ(out.take(), "");
    EXPECT_FALSE(iso.getContours(10, vvContours, true, false));
    EXPECT_NE(out.take().find(
                  "IsoContours::getContours(), WARNING: Degenerate intersection at height z=10.\n      Please add"),
              std::string::npos);
    EXPECT_TRUE(iso.getContours(10, vvContours, true, true));
    EXPECT_NE(out.take().find("height z=10. Adding 1.77636e-12 automatically.\n      Use bVerbose=false"),
              std::string::npos);
    // Three sheets at one edge.
    Point2 aMore[] = {{0, -8, 1}, {4, 4, 30}};
    Triangle2 t1, t2;
    t1.setProperties(&aCorners[0], &aMore[0], &aCorners[1]);
    t2.setProperties(&aCorners[0], &aCorners[1], &aMore[1]);
    EXPECT_FALSE(IsoContours({&t, &t1, &t2}).getContours(5, vvContours, true, true));
    EXPECT_NE(out.take().find("Bad numerical accuracy at height z=5"), std::string::npos);
    EXPECT_THROW(IsoContours(std::vector<Point2>(), Vector2(0, 0, 0)), LumoException);
    aCorners[0].setZ(0x1p60);
    EXPECT_THROW(IsoContours({&t}).getContours(0x1p60, vvContours, false, true), LumoException);
}

TEST(IsoContours, ThreadsThatAskAtOnceGetOtherAnswersThanOne)
{
    Lumo_2D lumo;
    lumo.insert(oracles::Dice(3).points(2000, 100.0, 100.0));
    std::vector<Segment2> vRing;
    generateCircle(64, Point2(50, 50, 0), 30, vRing);
    const Zone2* const pZone = lumo.createZone(lumo.createConstraint(vRing, CIS_CONSTRAINED_DELAUNAY), ZL_INSIDE);
    std::vector<Triangle2*> vT;
    pZone->getTriangles(vT);
    const IsoContours iso(vT);
    const auto ask = [&] {
        Contours vvContours;
        for (int i = 0; i < 20; ++i)
            iso.getContours(iso.getMinHeight() + 0.05 * i * iso.getMaxHeight(), vvContours, false, true);
        std::vector<Edge2> vBorder;
        pZone->getBorderEdges(vBorder);
        return std::make_pair(vvContours, pZone->getArea25D() + static_cast<double>(vBorder.size()));
    };
    const auto expected = ask();
    std::vector<std::future<decltype(ask())>> vAnswers;
    for (int i = 0; i < 4; ++i) vAnswers.push_back(std::async(std::launch::async, ask));
    for (auto& answer : vAnswers) EXPECT_EQ(answer.get(), expected);
}
