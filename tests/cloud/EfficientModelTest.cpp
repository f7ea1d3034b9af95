#include "EfficientModel.h"

#include "CloudPrepare.h"
#include "Lumo_2D.h"
#include "freeFunctions.h"
#include "oracles/Dice.h"
#include "oracles/QueryTwins.h"
#include "support/TestOutput.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <string>
#include <vector>

using namespace ORBI_LUMO25D;
using oracles::Dice;
using Points = std::vector<Point2>;

namespace
{

constexpr int numSeeds = 150;

/// The height of the triangle's plane at p, by Cramer's rule: otherwise than in the library.
double planeHeight(const Triangle2& t, const Point2& p)
{
    const Point2 &a = *t.getCorner(0), &b = *t.getCorner(1), &c = *t.getCorner(2);
    const double ux = b.x() - a.x(), uy = b.y() - a.y(), vx = c.x() - a.x(), vy = c.y() - a.y();
    const double px = p.x() - a.x(), py = p.y() - a.y(), det = ux * vy - uy * vx;
    return a.z() + (px * vy - py * vx) / det * (b.z() - a.z()) + (ux * py - uy * px) / det * (c.z() - a.z());
}

/// The largest error of a model, whose points are inserted as they are given: so ties are broken otherwise each time.
double largestError(const Points& vAll, const Points& vModel)
{
    Lumo_2D lumo;
    lumo.insert(vModel);
    double largest = 0.0;
    for (const Point2& p : vAll) {
        const Triangle2* const pT = lumo.locate(p);
        if (pT == nullptr) return HUGE_VAL;
        largest = std::max(largest, std::fabs(planeHeight(*pT, p) - p.z()));
    }
    return largest;
}

/// The points of real terrain, one for each place.
Points terrain(const char* name)
{
    Points vAll, vUnique;
    readXYZ((std::string(LUMO25D_TERRAIN_DIR "/") + name).c_str(), vAll);
    Lumo_2D lumo;
    lumo.insert(vAll);
    std::vector<Point2*> vVertices;
    lumo.getVertexPointers(vVertices);
    for (const Point2* pVtx : vVertices) vUnique.push_back(*pVtx);
    return vUnique;
}

/// A small cloud with many ties: steps, slopes and noise on a lattice or on scattered places, at times on one line.
Points roughCloud(Dice& dice)
{
    const int shape = dice.below(5), n = 1 + dice.below(150);
    const double offset = dice.of(std::vector<double>{0.0, -3e6, 1e12});
    Points v;
    for (int i = 0; i < n; ++i) {
        double x = dice.below(9), y = dice.below(9);
        if (shape == 1) x += dice.real(), y += dice.real();
        if (shape == 2) y = 2.0 * x;
        if (shape == 3) x = dice.below(2);
        const double z = (x > 4 ? 10.0 : 0.0) + 0.25 * y + (shape == 4 ? 0.0 : dice.below(3));
        v.emplace_back(x + offset, y + offset, z);
        v.back().setCustomIndex(i);
    }
    return v;
}

} // namespace

TEST(EfficientModel, SurfaceLeavesTheBoundOnRealTerrain)
{
    for (const auto& [name, vErrors] : {std::pair("jacksboro_srtm.xyz", std::vector{5.0, 20.0}),
                                        std::pair("southern_africa_stations.xyz", std::vector{100.0})}) {
        const Points vAll = terrain(name);
        ASSERT_GT(vAll.size(), 10000u);
        EfficientModel model(vAll);
        std::size_t numBefore = vAll.size();
        for (const double maxError : vErrors) {
            Points vModel;
            model.extract(maxError, vModel);
            EXPECT_LT(vModel.size(), numBefore);
            numBefore = vModel.size();
            EXPECT_LE(largestError(vAll, vModel), maxError);
        }
    }
}

TEST(EfficientModel, RandomCloudsLeaveTheBoundWhateverTheDiagonals)
{
    for (int seed = 0; seed < numSeeds; ++seed) {
        SCOPED_TRACE(seed);
        Dice dice(static_cast<std::uint64_t>(seed));
        const Points vCloud = roughCloud(dice);
        const double maxError = dice.of(std::vector<double>{0.0, 0.5, 1.0, 3.0});
        Points vModel, vHull;
        EfficientModel(vCloud).extract(maxError, vModel);

        // A part of the input in its order, one point for each place, and that the first one there.
        std::map<std::pair<double, double>, std::int32_t> mFirst;
        for (const Point2& p : vCloud) mFirst.insert({{p.x(), p.y()}, p.getCustomIndex()});
        std::int32_t before = -1;
        for (const Point2& p : vModel) {
            EXPECT_EQ(mFirst.at({p.x(), p.y()}), p.getCustomIndex());
            EXPECT_LT(before, p.getCustomIndex());
            before = p.getCustomIndex();
        }
        CloudPrepare cloud;
        cloud.add(vCloud);
        if (!cloud.computeConvexHull(false, vHull)) continue; // one line: see below
        for (const Point2& p : vHull) EXPECT_TRUE(std::count(vModel.begin(), vModel.end(), p) == 1) << p;

        for (int order = 0; order < 4; ++order) {
            Lumo_2D lumo;
            lumo.insert(vModel);
            std::vector<Triangle2*> vT;
            lumo.getTrianglePointers(vT);
            const oracles::QueryTwin twin(vT);
            for (const Point2& p : vCloud) {
                if (mFirst.at({p.x(), p.y()}) != p.getCustomIndex()) continue;
                const auto vAt = twin.trianglesAt(p);
                ASSERT_FALSE(vAt.empty());
                const mpq_class error = oracles::planeHeight(*vAt.front(), p) - mpq_class(p.z());
                EXPECT_TRUE(abs(error) <= maxError) << p << " by " << error.get_d();
            }
            dice.shuffle(vModel);
        }
        if (::testing::Test::HasFailure()) return;
    }
}

TEST(EfficientModel, FlatPartsKeepPointsOrBreaklinesLoseThem)
{
    Points vRoof; // two planes that meet in a ridge at x = 10
    for (int i = 0; i < 21 * 31; ++i) {
        const int x = i % 21, y = i / 21;
        vRoof.emplace_back(x, y, 10 - std::abs(x - 10) + 2 * y);
    }
    Points vModel;
    EfficientModel roof(vRoof);
    EXPECT_EQ(roof.go(0.0), 6u); // the corners and the ridge's ends
    roof.getPoints(vModel);
    EXPECT_EQ(largestError(vRoof, vModel), 0.0);
    EXPECT_EQ(roof.go(1e9), 4u);

    Points vLine; // the profile of a dam, across the country
    for (int i = 0; i <= 100; ++i)
        vLine.emplace_back(3.0 * i, -4.0 * i, i < 40 || i > 60 ? 0.0 : 10 - std::abs(i - 50));
    EXPECT_EQ(EfficientModel(vLine).go(0.0), 5u);
    EXPECT_EQ(EfficientModel(vLine).go(20.0), 2u);
    EXPECT_EQ(EfficientModel(Points(5, Point2(1, 2, 3))).go(0.0), 1u);
}

TEST(EfficientModel, BadInputIsNotRefused)
{
    struct Listener : MsgBase
    {
        void update(MsgType, const char* text, double fraction) override { mLast[text] = fraction; }
        std::map<std::string, double> mLast;
    } listener;
    lumo_test::CoutCapture output;
    Points vModel;
    EfficientModel model({{0, 0, 0}, {1, 0, std::nan("")}, {1, 1, 5}, {HUGE_VAL, 0, 0}, {0, 1, 1}, {1, 0, 2}});
    EXPECT_THAT(output.take(), ::testing::HasSubstr("2 point(s) refused"));
    for (const double maxError : {-1.0, std::nan("")}) {
        EXPECT_EQ(model.extract(maxError, vModel), 0u);
        EXPECT_THAT(output.take(), ::testing::HasSubstr("maxError"));
    }
    EXPECT_EQ(EfficientModel({}).go(1.0), 0u);
    EXPECT_THAT(output.take(), ::testing::HasSubstr("no points"));
    model.subscribe(MSG_PROGRESS, &listener);
    EXPECT_EQ(model.go(HUGE_VAL), 4u);
    model.getPoints(vModel);
    EXPECT_EQ(vModel.size(), 4u);
    EXPECT_EQ(listener.mLast, (std::map<std::string, double>{
                                  {"insert worst points", 1.0}, {"remove superfluous points", 1.0}, {"check", 1.0}}));
}
