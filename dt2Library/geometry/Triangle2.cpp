#include "Triangle2.h"

#include "Orientation2.h"
#include "Vector2.h"
#include "freeFunctions.h"
#include "geometry/distances.h"
#include "geometry/finite.h"
#include "support/check.h"
#include "support/messages.h"

#include <algorithm>
#include <cmath>
#include <iostream>
#include <limits>

namespace ORBI_LUMO25D
{

namespace
{

bool checkRange(int ith)
{
    return ith >= 0 && ith < 3;
}

/// Finite even where the sum overflows.
double mean(double a, double b, double c)
{
    const double sum = a + b + c;
    if (std::isfinite(sum)) return sum / 3.0;
    const auto [lo, hi] = std::minmax({a, b, c});
    return std::clamp(a / 3.0 + b / 3.0 + c / 3.0, lo, hi);
}

/// Heron's formula. The corners are for the message alone.
double heronArea(double len0, double len1, double len2, const Point2& p0, const Point2& p1, const Point2& p2)
{
    const double halfCircumference = (len0 + len1 + len2) / 2.0;
    const double sqArea =
        (halfCircumference - len0) * halfCircumference * (halfCircumference - len1) * (halfCircumference - len2);
    if (std::isnan(sqArea)) {
        msgWarning("Triangle2::computeArea()", "invalid value, no area for this triangle");
        std::cout << "ownHalfCircf=" << halfCircumference << "\nCorners are: \n"
                  << p0 << "\n"
                  << p1 << "\n"
                  << p2 << "\nlen0=" << len0 << "\nlen1=" << len1 << "\nlen2=" << len2 << std::endl;
        return sqArea;
    }
    if (sqArea <= 0.0) {
        // A little below zero is rounding on a needle, more is worth a word.
        if (sqArea < -1.0) {
            msgWarning("Triangle2::computeArea()", "Numeric issue in Triangle::getArea()");
            std::cout << "sqArea=" << sqArea << std::endl;
        }
        return 0.0;
    }
    return std::sqrt(sqArea);
}

double interiorAngle(const Vector2& v, const Vector2& w)
{
    return getAngleDegree(normalize(v), normalize(w));
}

/// The mean of the values with the smallest and the largest magnitude, as a float where it is in a float's range.
double commonOffset(double a, double b, double c)
{
    const auto lessAbs = [](double l, double r) { return std::fabs(l) < std::fabs(r); };
    const auto [lo, hi] = std::minmax({a, b, c}, lessAbs);
    const double mean = 0.5 * lo + 0.5 * hi;
    if (std::fabs(mean) > static_cast<double>(std::numeric_limits<float>::max())) return mean;
    return static_cast<double>(static_cast<float>(mean));
}

} // namespace

int incIndexBy2(int num)
{
    LUMO_CHECK(num >= 0 && num < 3, "num>=0 && num<3");
    return num == 0 ? 2 : num - 1;
}

// ---- corners and neighbours ---------------------------------------------------------------------------------------

Point2* Triangle2::getCorner(int ith) const
{
    LUMO_CHECK(checkRange(ith), "checkRange(ith)");
    return aVertexPointer[ith];
}

Triangle2* Triangle2::getOppositeTriangle(int ith) const
{
    LUMO_CHECK(checkRange(ith), "checkRange(ith)");
    return aOppTriangles[ith];
}

void Triangle2::setOppTriangle(int ith, Triangle2* pTriangle)
{
    LUMO_CHECK(checkRange(ith), "checkRange(ith)");
    aOppTriangles[ith] = pTriangle;
}

void Triangle2::setVertexPointer(int ith, Point2* pVertex)
{
    LUMO_CHECK(checkRange(ith), "checkRange(ith)");
    aVertexPointer[ith] = pVertex;
}

void Triangle2::setProperties(Point2* pI, Point2* pJ, Point2* pK)
{
    setPropertiesAndOppT(pI, pJ, pK, nullptr, nullptr, nullptr);
}

void Triangle2::setPropertiesAndOppT(Point2* pI, Point2* pJ, Point2* pK, Triangle2* pOppI, Triangle2* pOppJ,
                                     Triangle2* pOppK)
{
    LUMO_CHECK(pI != nullptr && pJ != nullptr && pK != nullptr, "(pI!=NULL && pJ!=NULL && pK!=NULL)");
    aVertexPointer[0] = pI;
    aVertexPointer[1] = pJ;
    aVertexPointer[2] = pK;
    for (Point2* pVertex : aVertexPointer) {
        pVertex->setIncidentTriangle(this);
    }
    aOppTriangles[0] = pOppI;
    aOppTriangles[1] = pOppJ;
    aOppTriangles[2] = pOppK;
}

void Triangle2::clearProperties()
{
    *this = Triangle2();
}

void Triangle2::failIndexSearch()
{
    // The searches are inline; the report names them, not this function.
    failCondition("false", "int ORBI_LUMO25D::Triangle2::getIntraTriangleIndex() const", __FILE__, __LINE__);
}

int Triangle2::getIntraTriangleIndex(const Point2* p0, const Point2* p1) const
{
    for (int i = 0; i < 3; ++i) {
        const Point2* pSrc = aVertexPointer[incIndexBy1(i)];
        const Point2* pTrg = aVertexPointer[incIndexBy2(i)];
        if ((pSrc == p0 && pTrg == p1) || (pSrc == p1 && pTrg == p0)) return i;
    }
    std::cout << "BUG: Triangle2::getIntraTriangleIndex failed for\n";
    for (const Point2* p : {p0, p1}) {
        if (p == nullptr) {
            std::cout << "NULL\n";
        } else {
            std::cout << *p << "\n";
        }
    }
    std::cout << *this << std::endl;
    failIndexSearch();
}

bool Triangle2::hasVertex(const Point2& p) const
{
    return std::any_of(std::begin(aVertexPointer), std::end(aVertexPointer),
                       [&p](const Point2* pCorner) { return pCorner->samePoint(p); });
}

bool Triangle2::hasOnEdge(int i, const Point2& p) const
{
    const Point2* pI = getCorner(i);
    const Point2* pJ = getCorner(incIndexBy1(i));
    const Point2* pK = getCorner(incIndexBy2(i));
    return getOrientation2_mt(pJ, pK, &p) == ORIENTATION2_COLLINEAR &&
           getOrientation2_mt(pI, pJ, &p) != ORIENTATION2_CW && getOrientation2_mt(pK, pI, &p) != ORIENTATION2_CW;
}

// ---- measures -----------------------------------------------------------------------------------------------------

double Triangle2::computeArea(double len0, double len1, double len2) const
{
    return heronArea(len0, len1, len2, *aVertexPointer[0], *aVertexPointer[1], *aVertexPointer[2]);
}

double Triangle2::getArea2D() const
{
    return computeArea(std::sqrt(getSquaredEdgeLength2D(0)), std::sqrt(getSquaredEdgeLength2D(1)),
                       std::sqrt(getSquaredEdgeLength2D(2)));
}

double Triangle2::getArea25D() const
{
    return ORBI_LUMO25D::getArea25D(aVertexPointer[0], aVertexPointer[1], aVertexPointer[2]);
}

double Triangle2::getInteriorAngle2D(int ith) const
{
    const Vector2 v = *getCorner(incIndexBy1(ith)) - *getCorner(ith);
    const Vector2 w = *getCorner(incIndexBy2(ith)) - *getCorner(ith);
    return interiorAngle(Vector2(v.x(), v.y(), 0.0), Vector2(w.x(), w.y(), 0.0));
}

double Triangle2::getInteriorAngle25D(int ith) const
{
    return interiorAngle(*getCorner(incIndexBy1(ith)) - *getCorner(ith),
                         *getCorner(incIndexBy2(ith)) - *getCorner(ith));
}

double Triangle2::getSquaredEdgeLength2D(int ith) const
{
    return sqDistance2D(*getCorner(incIndexBy1(ith)), *getCorner(incIndexBy2(ith)));
}

double Triangle2::getSquaredEdgeLength25D(int ith) const
{
    return sqDistance25D(*getCorner(incIndexBy1(ith)), *getCorner(incIndexBy2(ith)));
}

int Triangle2::getMaxIndex() const
{
    int maxIndex = 0;
    for (int i = 1; i < 3; ++i) {
        if (getSquaredEdgeLength2D(i) > getSquaredEdgeLength2D(maxIndex)) maxIndex = i;
    }
    return maxIndex;
}

int Triangle2::getMinIndex() const
{
    int minIndex = 0;
    for (int i = 1; i < 3; ++i) {
        if (getSquaredEdgeLength2D(i) < getSquaredEdgeLength2D(minIndex)) minIndex = i;
    }
    return minIndex;
}

double Triangle2::getMaxSqEdgeLen2D() const
{
    return std::max({getSquaredEdgeLength2D(0), getSquaredEdgeLength2D(1), getSquaredEdgeLength2D(2)});
}

Point2 Triangle2::getBarycenter() const
{
    const Point2& p0 = *aVertexPointer[0];
    const Point2& p1 = *aVertexPointer[1];
    const Point2& p2 = *aVertexPointer[2];
    return Point2(mean(p0.x(), p1.x(), p2.x()), mean(p0.y(), p1.y(), p2.y()), mean(p0.z(), p1.z(), p2.z()));
}

Vector2 Triangle2::getNormalVector() const
{
    const Vector2 product =
        crossProduct(*aVertexPointer[1] - *aVertexPointer[0], *aVertexPointer[2] - *aVertexPointer[0]);
    if (product.isDegenerate()) {
        msgWarning("Triangle2::getNormalVector()", "degenerate normal");
        return product;
    }
    return normalize(product);
}

// ---- circumcentre -------------------------------------------------------------------------------------------------

std::pair<Point2, bool> Triangle2::getDual() const
{
    double ox = 0.0;
    double oy = 0.0;
    getCommonOffset(ox, oy);
    const int maxIndex = getMaxIndex();

    Point2 center;
    if (getCC_strategy1(ox, oy, center) && isAccurateCC(maxIndex, center)) return {center, true};
    getCC_strategy2(maxIndex, ox, oy, center);
    return {center, isAccurateCC(maxIndex, center)};
}

void Triangle2::getCommonOffset(double& ox, double& oy) const
{
    // A float's short mantissa makes the subtraction of the offset exact in most cases.
    ox = commonOffset(aVertexPointer[0]->x(), aVertexPointer[1]->x(), aVertexPointer[2]->x());
    oy = commonOffset(aVertexPointer[0]->y(), aVertexPointer[1]->y(), aVertexPointer[2]->y());
}

bool Triangle2::getCC_strategy1(double ox, double oy, Point2& result) const
{
    double x[3];
    double y[3];
    double a[3];
    for (int i = 0; i < 3; ++i) {
        x[i] = aVertexPointer[i]->x() - ox;
        y[i] = aVertexPointer[i]->y() - oy;
        a[i] = x[i] * x[i] + y[i] * y[i];
    }
    const double d = 2.0 * ((x[0] * y[1] + x[1] * y[2] + x[2] * y[0]) - (x[0] * y[2] + x[1] * y[0] + x[2] * y[1]));
    if (d == 0.0) return false;
    const double cx = ((y[1] - y[2]) * a[0] + (y[2] - y[0]) * a[1] + (y[0] - y[1]) * a[2]) / d + ox;
    const double cy = ((x[2] - x[1]) * a[0] + (x[0] - x[2]) * a[1] + (x[1] - x[0]) * a[2]) / d + oy;
    result = Point2(cx, cy, 0.0);
    return true;
}

void Triangle2::getCC_strategy2(int ith, double ox, double oy, Point2& result) const
{
    const Point2& cornerQ = *aVertexPointer[incIndexBy1(ith)];
    const Point2& cornerR = *aVertexPointer[incIndexBy2(ith)];
    const Vector2 offset(ox, oy, 0.0);
    const Point2 p = *aVertexPointer[ith] - offset;
    const Point2 q = cornerQ - offset;
    const Point2 r = cornerR - offset;

    // Where the longest edge has no length or none that a double can hold, there is no bisector to search along.
    result = centerWithShift(cornerQ, cornerR);
    const double edgeX = r.x() - q.x();
    const double edgeY = r.y() - q.y();
    if ((edgeX == 0.0 && edgeY == 0.0) || !std::isfinite(edgeX) || !std::isfinite(edgeY)) return;

    // The perpendicular bisector of the longest edge, from its middle into the half where the centre lies: to the side
    // of p when the angle at p is acute, else away from p. There the angle may be nearly straight and the centre as
    // far as it likes, hence the large range.
    constexpr double FAR_AWAY = 1e13;
    constexpr double EQUAL_DISTANCES = 1e-16;
    const Point2 mid = centerWithShift(q, r);
    Vector2 v = Vector2(edgeX, edgeY, 0.0).orthogonalVector();
    const double sqDistMidP = sqDistance2D(p, mid);
    const bool bAcute = sqDistMidP > sqDistance2D(q, mid);
    if (!bAcute) v = -v;
    const double sign = bAcute ? 1.0 : -1.0;
    const double scale = (bAcute ? std::sqrt(sqDistMidP) : FAR_AWAY) / v.length();

    double lo = 0.0;
    double hi = 1.0;
    double t = 0.5;
    while (t != lo && t != hi) {
        const Point2 c = mid + (v * scale) * t;
        const double diff = sqDistance2D(c, p) - sqDistance2D(c, q);
        if (std::fabs(diff) < EQUAL_DISTANCES) break;
        if (sign * diff < 0.0) {
            hi = t;
        } else {
            lo = t;
        }
        t = (lo + hi) / 2.0;
    }
    const Point2 center = mid + (v * scale) * t + offset;
    if (isFinite2D(center)) result = center;
}

bool Triangle2::isAccurateCC(int ith, const Point2& cc) const
{
    constexpr double TOLERANCE = 1e-6;
    const Point2* pI = getCorner(ith);
    const Point2* pJ = getCorner(incIndexBy1(ith));
    const Point2* pK = getCorner(incIndexBy2(ith));
    const double r0 = std::sqrt(sqDistance2D(cc, *pI));
    const double r1 = std::sqrt(sqDistance2D(cc, *pJ));
    const double r2 = std::sqrt(sqDistance2D(cc, *pK));
    // Written so that a distance that is no number, from a centre that is none, is refused.
    const bool bEqual =
        std::fabs(r0 - r1) < TOLERANCE && std::fabs(r1 - r2) < TOLERANCE && std::fabs(r2 - r0) < TOLERANCE;
    if (!bEqual) return false;
    // A predicate object of its own for each call: workers come here at the same time, and one far centre shall not
    // spoil the error bound for all later ones.
    return getOrientation2_mt(pK, pI, &cc) != ORIENTATION2_CW && getOrientation2_mt(pI, pJ, &cc) != ORIENTATION2_CW;
}

// ---- free functions -----------------------------------------------------------------------------------------------

double getArea25D(const Point2* p0, const Point2* p1, const Point2* p2)
{
    return heronArea(std::sqrt(sqDistance25D(*p1, *p2)), std::sqrt(sqDistance25D(*p2, *p0)),
                     std::sqrt(sqDistance25D(*p0, *p1)), *p0, *p1, *p2);
}

Vector2 getNormalVector(const Point2& p0, const Point2& p1, const Point2& p2, bool& bOK)
{
    bOK = false;
    const Vector2 v = p1 - p0;
    const Vector2 w = p2 - p0;
    if (v.isDegenerate() || w.isDegenerate()) return Vector2();
    const Vector2 product = crossProduct(normalize(v), normalize(w));
    if (product.isDegenerate()) return product;
    bOK = true;
    return normalize(product);
}

std::ostream& operator<<(std::ostream& stream, const Triangle2& t)
{
    stream << "Triangle(" << static_cast<const void*>(&t) << "): ";
    bool bFinite = true;
    for (int i = 0; i < 3; ++i) {
        const Point2* pCorner = t.corner(i);
        if (pCorner == nullptr) return stream << "dead, no corners";
        bFinite = bFinite && isFinite2D(*pCorner);
    }
    stream << "area2D=" << t.getArea2D() << ", "
           << "area2.5D=" << t.getArea25D() << ", ";
    for (int i = 0; i < 3; ++i) {
        stream << *t.corner(i) << ", ";
    }
    if (!bFinite) return stream << "ATTENTION, COORDINATES ARE NO FINITE NUMBERS";
    switch (getOrientation2_mt(t.corner(0), t.corner(1), t.corner(2))) {
    case ORIENTATION2_CCW:
        return stream << "CCW";
    case ORIENTATION2_CW:
        return stream << "ATTENTION, CLOCKWISE CORNERS!";
    default:
        return stream << "ATTENTION, COLLINEAR CORNERS";
    }
}

} // namespace ORBI_LUMO25D
