#include "engine/Dt2.h"
#include "engine/ValidityCheck.h"
#include "geometry/TriangleLinks.h"
#include "support/TestOutput.h"

#include "Lumo_2D.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

namespace
{

using namespace ORBI_LUMO25D;
using lumo_test::CoutCapture;
using L = TriangleLinks;

/// A grid of 5 by 5 points, each moved a little, so that all Delaunay triangles are strict; the hull has 16 vertices.
struct Field
{
    Field()
    {
        for (int j = 0; j < 5; ++j) {
            for (int i = 0; i < 5; ++i) {
                const double bulge = 0.01 * (i * (4 - i) + j * (4 - j));
                const double sx = (i - 2) * (1.0 + bulge), sy = (j - 2) * (1.0 + bulge);
                vPoints.emplace_back(sx + 0.003 * ((i * 3 + j) % 4), sy + 0.002 * ((i + j * 2) % 3), i + j);
            }
        }
        lumo.insert(vPoints, vHandles);
        pInner = lumo.locate(Point2(0.3, 0.2, 0.0));
        for (int i = 0; i < 3; ++i) {
            if (pInner->neighbor(i) == nullptr) throw std::logic_error("not an inner triangle");
        }
        std::vector<Triangle2*> vT;
        lumo.getTrianglePointers(vT);
        for (Triangle2* pT : vT) {
            for (int i = 0; i < 3; ++i) {
                if (pT->neighbor(i) == nullptr) pAtHull = pT;
            }
        }
    }

    Dt2& dt2() const { return *lumo.getImpl(); }
    Point2* centre() const { return vHandles[12]; }
    IdxVtxAct& item(std::size_t i) const { return const_cast<IdxVtxAct&>(dt2().vertexVault.begin()[i]); }

    std::vector<Point2> vPoints;
    std::vector<Point2*> vHandles;
    Lumo_2D lumo;
    Triangle2* pInner = nullptr;
    Triangle2* pAtHull = nullptr;
};

using Layer = bool (ValidityCheck::*)();

struct Fault
{
    const char* name;
    Layer layer;           ///< the one that has to find it, alone
    const char* layerName; ///< in the message of the whole check; an earlier layer may be the first to stumble
    std::function<void(Field&)> plant;
};

/// The edge of pT whose flip leaves two counterclockwise triangles.
int flippableEdge(const Field& f)
{
    for (int i = 0; i < 3; ++i) {
        if (f.dt2().canBeFlipped(f.pInner, i)) return i;
    }
    throw std::logic_error("no edge can be flipped");
}

const Triangle2* strangeTriangle()
{
    static const Triangle2 triangle;
    return &triangle;
}

Point2 strangePoint(0.5, 0.25, 0.0);

const Fault faults[] = {
    {"a link is cut on one side", &ValidityCheck::checkLinks, "links",
     [](Field& f) { L::setNeighbor(f.pInner->neighbor(0), L::indexOf(f.pInner->neighbor(0), f.pInner), nullptr); }},
    {"a link leads out of the triangulation", &ValidityCheck::checkLinks, "links",
     [](Field& f) { L::setNeighbor(f.pInner, 2, const_cast<Triangle2*>(strangeTriangle())); }},
    {"a triangle is counted as dead", &ValidityCheck::checkLinks, "links",
     [](Field& f) { f.dt2().vDeadTriangles.push_back(f.pInner); }},
    {"a triangle has a corner twice", &ValidityCheck::checkLinks, "links",
     [](Field& f) { L::setCorner(f.pInner, 0, f.pInner->corner(1)); }},
    {"a vertex was moved over an edge", &ValidityCheck::checkOrientation, "orientation",
     [](Field& f) { f.centre()->setCoords(f.centre()->x() + 1.5, f.centre()->y(), 0.0); }},
    {"a vertex has no triangle", &ValidityCheck::checkIncidentTriangles, "incident triangles",
     [](Field& f) { f.centre()->setIncidentTriangle(nullptr); }},
    {"a vertex has a triangle from outside", &ValidityCheck::checkIncidentTriangles, "incident triangles",
     [](Field& f) { f.centre()->setIncidentTriangle(const_cast<Triangle2*>(strangeTriangle())); }},

    {"a slit inside", &ValidityCheck::checkHull, "hull",
     [](Field& f) {
         Triangle2* const pN = f.pInner->neighbor(0);
         L::setNeighbor(pN, L::indexOf(pN, f.pInner), nullptr);
         L::setNeighbor(f.pInner, 0, nullptr);
     }},
    {"a vertex of the hull stands behind its neighbours", &ValidityCheck::checkHull, "hull",
     [](Field& f) {
         Point2* const p = f.vHandles[2]; // in the middle of the lower side
         p->setCoords(p->x(), p->y() + 0.2, 0.0);
     }},
    {"a hull triangle is missing", &ValidityCheck::checkHull, "hull",
     [](Field& f) {
         Triangle2* const pT = f.pAtHull;
         for (int i = 0; i < 3; ++i) {
             Triangle2* const pN = pT->neighbor(i);
             if (pN == nullptr) continue;
             L::setNeighbor(pN, L::indexOf(pN, pT), nullptr);
             pT->corner(L::next(i))->setIncidentTriangle(pN);
             pT->corner(L::prev(i))->setIncidentTriangle(pN);
         }
         pT->clearProperties();
         f.dt2().vDeadTriangles.push_back(pT);
     }},

    {"a corner is switched off in the vault", &ValidityCheck::checkVault, "checkVault()",
     [](Field& f) { f.item(7).bActive = false; }},
    {"an item waits for a triangle", &ValidityCheck::checkVault, "hull",
     [](Field& f) {
         Point2* const p = new (f.dt2().poolVertices.alloc()) Point2(0.1, 0.1, 0.0);
         f.dt2().vertexVault.addVertex(1, p);
     }},
    {"two items hold one vertex", &ValidityCheck::checkVault, "vault",
     [](Field& f) { f.item(3).pVtx = f.item(4).pVtx; }},
    {"a duplicate was left on record", &ValidityCheck::checkVault, "checkVault()",
     [](Field& f) { f.dt2().vertexVault.registerDup(f.vHandles[1], f.vHandles[2]); }},
    {"a corner is no vertex of this triangulation", &ValidityCheck::checkVault, "vault",
     [](Field& f) {
         Point2* const pOld = f.centre();
         strangePoint = Point2(*pOld);
         std::vector<Triangle2*> vT;
         f.lumo.getIncidentTriangles(pOld, vT);
         for (Triangle2* pT : vT) {
             L::setCorner(pT, L::indexOf(pT, pOld), &strangePoint);
         }
         strangePoint.setIncidentTriangle(vT[0]);
     }},

    {"a diagonal lies the wrong way", &ValidityCheck::checkEmptyCircles, "empty circles",
     [](Field& f) { f.dt2().flip(f.pInner, flippableEdge(f)); }},
};

TEST(Validity, aPlantedFaultStaysHiddenFromItsLayer)
{
    for (const Fault& fault : faults) {
        SCOPED_TRACE(fault.name);
        Field field;
        ASSERT_TRUE(field.lumo.checkValidity(true, nullptr));
        fault.plant(field);
        CoutCapture out;
        ValidityCheck check(field.dt2());
        EXPECT_FALSE((check.*fault.layer)());
        EXPECT_FALSE(out.take().empty());
        EXPECT_FALSE(field.lumo.checkValidity(true, "planted on purpose"));
        const std::string text = out.take();
        EXPECT_NE(text.find(fault.layerName), std::string::npos) << text;
        EXPECT_NE(text.find("planted on purpose"), std::string::npos) << text;
    }
}

TEST(Validity, triangulationsWithoutAreaAreNotChecked)
{
    Lumo_2D lumo;
    EXPECT_TRUE(lumo.checkValidity(true, nullptr));
    std::vector<Point2*> vHandles;
    lumo.insert({{0, 0, 0}, {1, 1, 0}, {2, 2, 0}}, vHandles);
    EXPECT_TRUE(lumo.checkValidity(true, nullptr));
    Triangle2 strange;
    vHandles[1]->setIncidentTriangle(&strange);
    CoutCapture out;
    EXPECT_FALSE(lumo.checkValidity(false, nullptr));
    vHandles[1]->setIncidentTriangle(nullptr);
    EXPECT_TRUE(lumo.checkValidity(false, nullptr));
    lumo.getImpl()->getNewTriangle();
    EXPECT_FALSE(lumo.checkValidity(false, nullptr));
}

} // namespace
