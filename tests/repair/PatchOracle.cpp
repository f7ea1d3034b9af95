#include "repair/PatchOracle.h"

#include <algorithm>
#include <cmath>
#include <gmpxx.h>
#include <map>
#include <set>
#include <utility>

using namespace ORBI_LUMO25D;

namespace oracles
{

namespace
{

using DirectedEdge = std::pair<XYZ, XYZ>;
using Facet = std::array<XYZ, 3>;

std::vector<Facet> facetsOf(const Corners& vCorners)
{
    std::vector<Facet> v;
    for (std::size_t i = 0; i + 2 < vCorners.size(); i += 3) {
        v.push_back({xyz(vCorners[i]), xyz(vCorners[i + 1]), xyz(vCorners[i + 2])});
    }
    return v;
}

/// The sign of the volume of a, b, c, d: in doubles where that is beyond doubt, otherwise in rationals.
template <class T>
T volume(const XYZ& a, const XYZ& b, const XYZ& c, const XYZ& d)
{
    T m[3][3];
    const XYZ* const apRows[3] = {&a, &b, &c};
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 3; ++j) m[i][j] = T((*apRows[i])[j]) - T(d[j]);
    }
    return T(m[0][0] * (m[1][1] * m[2][2] - m[1][2] * m[2][1]) - m[0][1] * (m[1][0] * m[2][2] - m[1][2] * m[2][0]) +
             m[0][2] * (m[1][0] * m[2][1] - m[1][1] * m[2][0]));
}

int side(const XYZ& a, const XYZ& b, const XYZ& c, const XYZ& d)
{
    double size = 0.0;
    for (std::size_t j = 0; j < 3; ++j) {
        const auto range = std::minmax({a[j], b[j], c[j], d[j]});
        size = std::max(size, range.second - range.first);
    }
    const double v = volume<double>(a, b, c, d);
    if (std::fabs(v) > 1e-13 * size * size * size) return v > 0.0 ? 1 : -1;
    return sgn(volume<mpq_class>(a, b, c, d));
}

bool pierces(const XYZ& p, const XYZ& q, const Facet& t)
{
    if (std::count(t.begin(), t.end(), p) + std::count(t.begin(), t.end(), q) > 0) return false;
    if (side(t[0], t[1], t[2], p) * side(t[0], t[1], t[2], q) >= 0) return false;
    const int s = side(p, q, t[0], t[1]);
    return s != 0 && side(p, q, t[1], t[2]) == s && side(p, q, t[2], t[0]) == s;
}

bool cross(const Facet& a, const Facet& b)
{
    for (std::size_t d = 0; d < 3; ++d) {
        const auto rangeA = std::minmax({a[0][d], a[1][d], a[2][d]}), rangeB = std::minmax({b[0][d], b[1][d], b[2][d]});
        if (rangeA.first > rangeB.second || rangeB.first > rangeA.second) return false;
    }
    for (std::size_t i = 0; i < 3; ++i) {
        if (pierces(a[i], a[(i + 1) % 3], b) || pierces(b[i], b[(i + 1) % 3], a)) return true;
    }
    return false;
}

bool hasArea(const Facet& t)
{
    mpq_class v[3], w[3];
    for (std::size_t i = 0; i < 3; ++i) {
        v[i] = mpq_class(t[1][i]) - mpq_class(t[0][i]);
        w[i] = mpq_class(t[2][i]) - mpq_class(t[0][i]);
    }
    return v[0] * w[1] != v[1] * w[0] || v[1] * w[2] != v[2] * w[1] || v[2] * w[0] != v[0] * w[2];
}

} // namespace

XYZ xyz(const Point2& p)
{
    return {p.x() + 0.0, p.y() + 0.0, p.z() + 0.0};
}

std::string faultOfPatch(const std::vector<Segment2>& vRing, const Corners& vPatch, bool bAddPoints)
{
    std::map<DirectedEdge, int> mEdgeToCount; // those of the patch, and the border's own
    for (const Segment2& s : vRing) ++mEdgeToCount[{xyz(s.src), xyz(s.trg)}];
    std::set<Facet> sFacets;
    std::set<XYZ> sVertices;
    for (Facet t : facetsOf(vPatch)) {
        if (!hasArea(t)) return "degenerate triangle";
        for (std::size_t i = 0; i < 3; ++i) ++mEdgeToCount[{t[i], t[(i + 1) % 3]}];
        sVertices.insert(t.begin(), t.end());
        std::sort(t.begin(), t.end());
        if (!sFacets.insert(t).second) return "triangle twice";
    }
    for (const auto& [edge, count] : mEdgeToCount) {
        if (count > 1) return "edge twice, or a border edge of the wrong sense";
        if (mEdgeToCount.count({edge.second, edge.first}) == 0) return "edge without an opposite one";
    }
    if (sVertices.size() + sFacets.size() != mEdgeToCount.size() / 2 + 1) return "not a disc";
    if (!bAddPoints && vPatch.size() / 3 + 2 != vRing.size()) return "number of triangles";
    return "";
}

std::size_t countCrossings(const Corners& vMesh, const Corners& vPatch)
{
    std::vector<Facet> vAll = facetsOf(vMesh);
    std::size_t num = 0;
    for (const Facet& t : facetsOf(vPatch)) {
        for (const Facet& other : vAll) num += cross(t, other) ? 1U : 0U;
        vAll.push_back(t);
    }
    return num;
}

Corners makeGrid(int nu, int nv, bool bWrapU, bool bWrapV, const Surface& surface, const Region& hole)
{
    const auto at = [&](int i, int j) {
        return surface(double(bWrapU ? i % nu : i) / nu, double(bWrapV ? j % nv : j) / nv);
    };
    Corners v;
    for (int i = 0; i < nu; ++i) {
        for (int j = 0; j < nv; ++j) {
            if (hole((i + 0.5) / nu, (j + 0.5) / nv)) continue;
            const Point2 a = at(i, j), b = at(i + 1, j), c = at(i + 1, j + 1), d = at(i, j + 1);
            v.insert(v.end(), {a, b, c, a, c, d});
        }
    }
    return v;
}

Corners makeSphere(int n, double radius, double angle)
{
    const double dir[3] = {1.0 / std::sqrt(14.0), 2.0 / std::sqrt(14.0), 3.0 / std::sqrt(14.0)};
    Corners v;
    for (int octant = 0; octant < 8; ++octant) {
        const double s[3] = {octant & 1 ? -1.0 : 1.0, octant & 2 ? -1.0 : 1.0, octant & 4 ? -1.0 : 1.0};
        const auto at = [&](int i, int j) {
            const double x = i, y = j, z = n - i - j, len = std::sqrt(x * x + y * y + z * z);
            return Point2(s[0] * radius * (x / len), s[1] * radius * (y / len), s[2] * radius * (z / len));
        };
        const auto add = [&](const Point2& a, const Point2& b, const Point2& c) {
            const double x = a.x() + b.x() + c.x(), y = a.y() + b.y() + c.y(), z = a.z() + b.z() + c.z();
            const double cosine = (x * dir[0] + y * dir[1] + z * dir[2]) / std::sqrt(x * x + y * y + z * z);
            if (cosine > std::cos(angle * 3.14159265358979 / 180.0)) return;
            if (s[0] * s[1] * s[2] > 0.0) {
                v.insert(v.end(), {a, b, c});
            } else {
                v.insert(v.end(), {a, c, b});
            }
        };
        for (int i = 0; i < n; ++i) {
            for (int j = 0; i + j < n; ++j) {
                add(at(i, j), at(i + 1, j), at(i, j + 1));
                if (i + j < n - 1) add(at(i + 1, j), at(i + 1, j + 1), at(i, j + 1));
            }
        }
    }
    return v;
}

} // namespace oracles
