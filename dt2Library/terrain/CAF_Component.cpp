#include "CAF_Component.h"

#include "Segment2.h"
#include "Triangle2.h"
#include "Visualizer3.h"
#include "support/check.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <string>

namespace ORBI_LUMO25D
{

namespace
{

/// Twice the area in the plane, negative for a clockwise triangle.
double doubleArea(const Triangle2& t)
{
    const Point2 &a = *t.corner(0), &b = *t.corner(1), &c = *t.corner(2);
    return (b.x() - a.x()) * (c.y() - a.y()) - (b.y() - a.y()) * (c.x() - a.x());
}

} // namespace

CAF_Component::CAF_Component(const std::vector<Triangle2*>& vT_,
                             const std::map<Point2*, std::pair<double, double>>& mVtx2BeforeAfter, int label_)
    : label(label_), vT(vT_)
{
    init([&](Point2* pVtx) {
        const auto q_it = mVtx2BeforeAfter.find(pVtx);
        LUMO_CHECK(q_it != mVtx2BeforeAfter.end(), "q_it!=mVtx2BeforeAfter.end()");
        return q_it->second.second - q_it->second.first;
    });
}

CAF_Component::CAF_Component(const std::vector<Triangle2*>& vT_, int label_) : label(label_), vT(vT_)
{
    init([](const Point2* pVtx) { return -pVtx->z(); });
}

/// The solid between the surfaces is the union of prisms over the triangles, cut off by two planes: each has the volume of
/// its base times the mean of its three edges.
template <class RiseAt>
void CAF_Component::init(const RiseAt& riseAt)
{
    constexpr double NEGLIGIBLE = 0.0001;
    double sixfold = 0.0; // after minus before
    for (const Triangle2* pT : vT) {
        double sum = 0.0;
        for (int i = 0; i < 3; ++i) {
            const double d = riseAt(pT->corner(i));
            sum += d;
            if (std::fabs(d) < NEGLIGIBLE || d == 0.0) continue;
            LUMO_CHECK(d < 0.0 || caftype != CT_CUT, "caftype!=CT_CUT");
            LUMO_CHECK(d > 0.0 || caftype != CT_FILL, "caftype!=CT_FILL");
            caftype = d > 0.0 ? CT_FILL : CT_CUT;
        }
        sixfold += doubleArea(*pT) * sum;
    }
    if (caftype == CT_FILL) volume = sixfold / 6.0;
    if (caftype == CT_CUT) volume = -sixfold / 6.0;
}

void CAF_Component::getTriangles(std::vector<Triangle2*>& vTriangles) const
{
    vTriangles.insert(vTriangles.end(), vT.begin(), vT.end());
}

void CAF_Component::getBorder(std::vector<Segment2>& vBorders) const
{
    const std::less<const Triangle2*> byAddress;
    std::vector<const Triangle2*> vSorted(vT.begin(), vT.end());
    std::sort(vSorted.begin(), vSorted.end(), byAddress);
    for (const Triangle2* pT : vT) {
        for (int i = 0; i < 3; ++i) {
            const Triangle2* const pN = pT->neighbor(i);
            if (pN != nullptr && std::binary_search(vSorted.begin(), vSorted.end(), pN, byAddress)) continue;
            vBorders.emplace_back(*pT->corner(incIndexBy2(i)), *pT->corner(incIndexBy1(i)));
        }
    }
}

void CAF_Component::showGeomview(const char* name, const std::vector<Point2>& vBeforeT,
                                 const std::vector<Point2>& vAfterT, const std::vector<Point2>& vWalls) const
{
    const char* const pEnding = caftype == CT_NULL ? "_null.list" : caftype == CT_CUT ? "_cut.list" : "_fill.list";
    Visualizer3 visualizer(((name == nullptr ? "" : name) + std::string(pEnding)).c_str());
    visualizer.addTriangles(vBeforeT, "1 0 0 0.5");
    visualizer.addTriangles(vAfterT, "0 1 0 0.5");
    visualizer.addTriangles(vWalls, "0 0 1 0.5");
}

} // namespace ORBI_LUMO25D
