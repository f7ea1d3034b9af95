#include "CutAndFill.h"

#include "CAF_Component.h"
#include "Lumo_2D.h"
#include "Visualizer2.h"
#include "freeFunctions.h"
#include "oracles/Dice.h"
#include "support/TestOutput.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>

using namespace ORBI_LUMO25D;

namespace
{

using Real = long double;

struct Volumes
{
    Real cut = 0, fill = 0, area = 0;
};

// ---- the oracle: one triangle clipped by the other, pair by pair, in extended arithmetic -------------------------

struct Corner
{
    Real x, y;
};
using Polygon = std::vector<Corner>;
using Linear = std::function<Real(const Corner&)>;

/// The part of a convex polygon where f is not negative.
Polygon clip(const Polygon& polygon, const Linear& f)
{
    Polygon result;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        const Corner &a = polygon[i], &b = polygon[(i + 1) % polygon.size()];
        const Real fa = f(a), fb = f(b);
        if (fa >= 0) result.push_back(a);
        if ((fa < 0) != (fb < 0)) {
            const Real t = fa / (fa - fb);
            result.push_back({a.x + t * (b.x - a.x), a.y + t * (b.y - a.y)});
        }
    }
    return result;
}

Real integral(const Polygon& polygon, const Linear& f)
{
    Real sum = 0;
    for (std::size_t i = 2; i < polygon.size(); ++i) {
        const Corner &a = polygon[0], &b = polygon[i - 1], &c = polygon[i];
        sum += ((b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x)) * (f(a) + f(b) + f(c)) / 6;
    }
    return sum;
}

Linear heightOf(const Triangle2& t)
{
    const Point2 &a = *t.getCorner(0), &b = *t.getCorner(1), &c = *t.getCorner(2);
    const Real bx = Real(b.x()) - a.x(), by = Real(b.y()) - a.y(), cx = Real(c.x()) - a.x(), cy = Real(c.y()) - a.y();
    const Real bz = Real(b.z()) - a.z(), cz = Real(c.z()) - a.z(), det = bx * cy - by * cx;
    const Real ax = a.x(), ay = a.y(), az = a.z(), gx = (bz * cy - by * cz) / det, gy = (bx * cz - bz * cx) / det;
    return [=](const Corner& p) { return az + gx * (p.x - ax) + gy * (p.y - ay); };
}

Volumes oracle(const Zone2& before, const Zone2& after)
{
    std::vector<Triangle2*> v0, v1;
    before.getTriangles(v0);
    after.getTriangles(v1);
    Volumes sum;
    for (const Triangle2* p0 : v0) {
        Bbox2 box;
        for (int i = 0; i < 3; ++i) box.add(*p0->getCorner(i));
        for (const Triangle2* p1 : v1) {
            Bbox2 box1;
            for (int i = 0; i < 3; ++i) box1.add(*p1->getCorner(i));
            if (!box.doIntersect(box1)) continue;
            Polygon common;
            for (int i = 0; i < 3; ++i) common.push_back({p0->getCorner(i)->x(), p0->getCorner(i)->y()});
            for (int i = 0; i < 3; ++i) {
                const Point2 &a = *p1->getCorner(i), &b = *p1->getCorner(incIndexBy1(i));
                common = clip(common, [&](const Corner& p) {
                    return (Real(b.x()) - a.x()) * (p.y - a.y()) - (Real(b.y()) - a.y()) * (p.x - a.x());
                });
            }
            const Linear h0 = heightOf(*p0), h1 = heightOf(*p1);
            const Linear cut = [&](const Corner& p) { return h0(p) - h1(p); };
            const Linear fill = [&](const Corner& p) { return h1(p) - h0(p); };
            sum.area += integral(common, [](const Corner&) { return Real(1); });
            sum.cut += integral(clip(common, cut), cut);
            sum.fill += integral(clip(common, fill), fill);
        }
    }
    return sum;
}

// ---- what is tested ------------------------------------------------------------------------------------------------

/// Runs it, and checks what must hold for any result.
Volumes compare(Zone2* pBefore, Zone2* pAfter, double threshold = 0.0)
{
    CutAndFill caf(pBefore, pAfter, threshold);
    EXPECT_TRUE(caf.go());
    Volumes sum;
    Real net = 0;
    for (unsigned int i = 0; i < caf.getNumberOfComponents(); ++i) {
        const CAF_Component& c = *caf.getComponent(i);
        EXPECT_EQ(c.getLabel(), static_cast<int>(i));
        EXPECT_GE(c.getVolume(), 0.0);
        std::vector<Triangle2*> vT;
        c.getTriangles(vT);
        for (const Triangle2* pT : vT) {
            Real d = 0;
            for (int k = 0; k < 3; ++k) {
                const double z = pT->getCorner(k)->z();
                EXPECT_FALSE((c.getCAFType() == CT_CUT && z < 0) || (c.getCAFType() == CT_FILL && z > 0));
                d += z;
            }
            sum.area += pT->getArea2D();
            if (c.getCAFType() != CT_NULL) net += pT->getArea2D() * d / 3; // differences below 0.0001 are none
        }
        (c.getCAFType() == CT_CUT ? sum.cut : sum.fill) += c.getVolume();
    }
    Zone2* pDiff = nullptr;
    std::map<Point2*, std::pair<double, double>> mHeights;
    EXPECT_TRUE(caf.getDiffZone(pDiff, mHeights));
    if (pDiff == nullptr) return sum;
    std::vector<Point2*> vV;
    pDiff->getVertices(vV);
    EXPECT_EQ(vV.size(), mHeights.size());
    for (Point2* p : vV) EXPECT_EQ(p->z(), mHeights.at(p).first - mHeights.at(p).second);
    EXPECT_NEAR(static_cast<double>(sum.area), pDiff->getArea2D(), 1e-9 * pDiff->getArea2D());
    EXPECT_NEAR(static_cast<double>(sum.cut - sum.fill), static_cast<double>(net),
                1e-9 * static_cast<double>(sum.cut + sum.fill) + 1e-12);
    return sum;
}

void expectSame(const Volumes& a, const Volumes& b, Real tolerance, const std::string& what)
{
    const Real volume = tolerance * (b.cut + b.fill + b.area);
    EXPECT_NEAR(static_cast<double>(a.cut), static_cast<double>(b.cut), static_cast<double>(volume)) << what;
    EXPECT_NEAR(static_cast<double>(a.fill), static_cast<double>(b.fill), static_cast<double>(volume)) << what;
    EXPECT_NEAR(static_cast<double>(a.area), static_cast<double>(b.area), static_cast<double>(tolerance * b.area))
        << what;
}

/// A surface with a zone on it.
struct Surface
{
    Lumo_2D lumo;
    Zone2* pZone = nullptr;

    /// bHoles: some of the triangles only, with islands, holes and corners that touch.
    explicit Surface(const std::vector<Point2>& vPoints, oracles::Dice* pHoles = nullptr)
    {
        lumo.insert(vPoints);
        if (pHoles == nullptr) {
            pZone = lumo.createZone(static_cast<ConstraintGraph2*>(nullptr), ZL_GLOBAL);
            return;
        }
        std::vector<Triangle2*> vT, vSome;
        lumo.getTrianglePointers(vT);
        std::copy_if(vT.begin(), vT.end(), std::back_inserter(vSome), [&](Triangle2*) { return pHoles->below(3) > 0; });
        pZone = lumo.createZone(vSome);
    }
};

std::vector<Point2> grid(int n, double x0, double y0, double step, const std::function<double(double, double)>& height)
{
    std::vector<Point2> v;
    for (int i = 0; i < n * n; ++i) {
        const double x = x0 + step * (i % n), y = y0 + step * (i / n);
        v.emplace_back(x, y, height(x, y));
    }
    return v;
}

} // namespace

// Coinciding, shifted, turned and random edges, edges that differ in the last bit; zones with holes; survey coordinates; both
// ways round.
TEST(CutAndFill, VolumesDifferFromClippingEachPairOfTriangles)
{
    const auto hills = [](double x, double y) { return std::sin(0.7 * x) * std::cos(0.4 * y) + 0.1 * x; };
    for (std::uint64_t seed = 1; seed <= 48; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        oracles::Dice dice(seed);
        const double offset = seed % 3 == 0 ? 5.4e6 : 0;
        const bool bHoles = seed % 2 == 0;
        std::vector<Point2> v0 =
            grid(9, offset, offset, 1, [&](double x, double y) { return hills(x - offset, y - offset); });
        std::vector<Point2> v1 = v0;
        switch (seed % 8) {
        case 0: // the same places, some with another height, some on the other surface
            for (Point2& p : v1) p.setZ(p.z() + 0.5 * (dice.below(3) - 1));
            break;
        case 1:
            v1 = grid(9, offset + 0.5, offset + 0.5, 1, [](double x, double) { return 0.2 * x - 0.5; });
            break;
        case 2: // the same edges, split
            v1 = grid(17, offset, offset, 0.5, [&](double, double) { return dice.real() - 0.3; });
            break;
        case 4: // zero lines that pass vertices by less than the rounding of places
            for (auto* v : {&v0, &v1}) {
                for (Point2& p : *v) {
                    const double aHeights[] = {1, -1, 0, -1e-12, 1e-13, 1e-14};
                    p.setCoords(p.x() + (v == &v1) * 0.25 * dice.below(3), 1000 + p.y(), aHeights[dice.below(6)]);
                }
            }
            break;
        case 3: // lines and areas in common
            for (Point2& p : v1) p.setZ(p.x() > offset + 4 ? p.z() : p.z() + dice.below(2));
            break;
        case 6: // needles on both hulls
        case 7: // edges along each other but for the last bit
            for (std::size_t i = 0; i < v1.size(); ++i) {
                const double angle = seed % 8 == 6 ? 1.0 / static_cast<double>(seed) : 0;
                const double x = static_cast<double>(i % 9) - 4, y = static_cast<double>(i / 9) - 4;
                double shift = 0, shiftY = 0;
                if (seed % 8 == 7) shift = shiftY = seed % 16 == 7 ? 0.1 : 1e-16 * (offset + 8) * dice.below(9);
                if (seed == 39) { // too close to each other for the direct overlay at any resolution
                    shift = 1e-9;
                    shiftY = 0.3;
                }
                v1[i].setCoords(offset + 4 + std::cos(angle) * x - std::sin(angle) * y + shift,
                                offset + 4 + std::sin(angle) * x + std::cos(angle) * y + shiftY, dice.real() - 0.3);
            }
            break;
        default:
            for (auto* v : {&v0, &v1}) {
                *v = dice.points(80, 8, 8);
                for (Point2& p : *v) p.setCoords(offset + p.x(), offset + p.y(), 3 * dice.real());
            }
        }
        Surface before(v0, bHoles ? &dice : nullptr), after(v1, bHoles ? &dice : nullptr);
        const Volumes expected = oracle(*before.pZone, *after.pZone);
        const Volumes there = compare(before.pZone, after.pZone), back = compare(after.pZone, before.pZone);
        expectSame(there, expected, offset > 0 ? 1e-8L : 1e-11L, "there");
        expectSame({back.fill, back.cut, back.area}, there, offset > 0 ? 1e-8L : 1e-11L, "back");
    }
}

// Two laser scans of one place, which differ in places, density and extent; and a scan against every third of its points.
TEST(CutAndFill, VolumesOfSurveysAreOff)
{
    const std::string folder = LUMO25D_CORPUS_DIR "/../../examples/data/terrain/autzen_bmx_";
    std::vector<Point2> v0, v1, vFew;
    ASSERT_TRUE(readXYZ((folder + "2010.xyz").c_str(), v0) && readXYZ((folder + "2023.xyz").c_str(), v1));
    for (std::size_t i = 0; i < v0.size(); i += 3) vFew.push_back(v0[i]);
    Surface before(v0), after(v1), thinned(vFew);
    for (Zone2* pOther : {after.pZone, thinned.pZone}) {
        const Volumes expected = oracle(*before.pZone, *pOther);
        EXPECT_GT(expected.area, 900);
        expectSame(compare(before.pZone, pOther), expected, 1e-9L, "surveys");
    }
}

TEST(CutAndFill, NoCommonAreaOrThresholdGoWrong)
{
    const auto flat = [](double z) { return [=](double, double) { return z; }; };
    Surface ground(grid(3, 0, 0, 1, flat(5))), higher(grid(4, 0, 0, 1, flat(5.25))), beside(grid(3, 2, 0, 1, flat(5))),
        away(grid(3, 20, 0, 1, flat(5)));
    lumo_test::CoutCapture out;
    for (Zone2* pOther : {beside.pZone, away.pZone, static_cast<Zone2*>(nullptr)}) {
        CutAndFill caf(ground.pZone, pOther, 0);
        out.take();
        EXPECT_FALSE(caf.go());
        EXPECT_NE(out.take().find("pCombinedZone==NULL. Make sure that the two input areas overlap."),
                  std::string::npos);
        EXPECT_EQ(caf.getNumberOfComponents(), 0u);
        Zone2* pDiff = ground.pZone;
        std::map<Point2*, std::pair<double, double>> mHeights;
        EXPECT_FALSE(caf.getDiffZone(pDiff, mHeights));
        EXPECT_EQ(pDiff, nullptr);
        EXPECT_NE(out.take().find("pCombinedZone is NULL. Setting pDiffZone=NULL."), std::string::npos);
    }
    // Exactly the threshold is no difference; then both are at their mean.
    CutAndFill same(ground.pZone, higher.pZone, 0.25);
    ASSERT_TRUE(same.go());
    ASSERT_EQ(same.getNumberOfComponents(), 1u);
    EXPECT_EQ(same.getComponent(0)->getCAFType(), CT_NULL);
    Zone2* pDiff = nullptr;
    std::map<Point2*, std::pair<double, double>> mHeights;
    same.getDiffZone(pDiff, mHeights);
    for (const auto& entry : mHeights) EXPECT_EQ(entry.second, std::make_pair(5.125, 5.125));
    std::vector<Segment2> vBorder;
    same.getComponent(0)->getBorder(vBorder);
    EXPECT_EQ(vBorder.size(), 8u);

    struct Gauge : MsgBase
    {
        void update(MsgType, const char* s, double d) override
        {
            EXPECT_STREQ(s, "CutAndFill");
            EXPECT_GE(d, last);
            last = d;
        }
        double last = 0;
    } gauge;
    CutAndFill fill(ground.pZone, higher.pZone, 0.24);
    fill.subscribe(MSG_PROGRESS, &gauge);
    ASSERT_TRUE(fill.go());
    EXPECT_EQ(gauge.last, 1.0);
    EXPECT_EQ(fill.getComponent(0)->getCAFType(), CT_FILL);
    const lumo_test::TempWorkDir directory;
    Visualizer2 vis("fill.ps");
    fill.show(&vis);
    vis.writeFile();
    EXPECT_NE(lumo_test::readFile("fill.ps").find("Type: FILL"), std::string::npos);
}
