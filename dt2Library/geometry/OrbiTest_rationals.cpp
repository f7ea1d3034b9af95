// The exact stages on GMP's rationals. A double is a dyadic rational, so that reading it is exact, and so is all that
// follows, at any magnitude. Results that are numbers are truncated toward zero to doubles, once.

#include "geometry/OrbiTest.h"

#include "support/check.h"
#include "support/messages.h"

#include <cmath>
#include <cstddef>
#include <initializer_list>
#include <utility>

namespace ORBI_LUMO25D
{

namespace
{

/// GMP ends the process on a value that is no finite number.
bool areFinite(std::initializer_list<double> values)
{
    for (const double v : values) {
        if (!std::isfinite(v)) return false;
    }
    return true;
}

void initOnce(mpq_t* aTemp, int num, bool& bInit)
{
    if (bInit) return;
    for (int i = 0; i < num; ++i) mpq_init(aTemp[i]);
    bInit = true;
}

/// Sets consecutive rationals to the given values.
void assign(mpq_t* aTemp, std::initializer_list<double> values)
{
    for (const double v : values) mpq_set_d(*aTemp++, v);
}

/// result = a * b - c * d. product is scratch; result must be none of the factors.
void determinant(mpq_t& result, const mpq_t& a, const mpq_t& b, const mpq_t& c, const mpq_t& d, mpq_t& product)
{
    mpq_mul(result, a, b);
    mpq_mul(product, c, d);
    mpq_sub(result, result, product);
}

/// Rationals that live as long as the scope.
template <std::size_t N>
struct Rationals
{
    Rationals()
    {
        for (mpq_t& q : a) mpq_init(q);
    }
    ~Rationals()
    {
        for (mpq_t& q : a) mpq_clear(q);
    }
    Rationals(const Rationals&) = delete;
    Rationals& operator=(const Rationals&) = delete;

    mpq_t a[N];
};

} // namespace

Orientation2 OrbiTest::orientationExact(const Point2* p0, const Point2* p1, const Point2* p2) const
{
    LUMO_CHECK(areFinite({p0->x(), p0->y(), p1->x(), p1->y(), p2->x(), p2->y()}), "coordinates are finite");
    const std::lock_guard<std::mutex> lock(mtxOrientation);
    initOnce(aOrientationTemp, numOrientationTemp, bOrientationInit);
    mpq_t* const xy = aOrientationTemp; // x0 y0 x1 y1 x2 y2
    mpq_t* const diff = xy + 6;
    mpq_t* const product = diff + 4;
    assign(xy, {p0->x(), p0->y(), p1->x(), p1->y(), p2->x(), p2->y()});
    mpq_sub(diff[0], xy[0], xy[4]);
    mpq_sub(diff[1], xy[3], xy[5]);
    mpq_sub(diff[2], xy[1], xy[5]);
    mpq_sub(diff[3], xy[2], xy[4]);
    mpq_mul(product[0], diff[0], diff[1]);
    mpq_mul(product[1], diff[2], diff[3]);
    const int order = mpq_cmp(product[0], product[1]);
    if (order == 0) return ORIENTATION2_COLLINEAR;
    return order > 0 ? ORIENTATION2_CCW : ORIENTATION2_CW;
}

CircleInc2 OrbiTest::circleRationals(const Point2* p0, const Point2* p1, const Point2* p2, const Point2* q) const
{
    LUMO_CHECK(areFinite({p0->x(), p0->y(), p1->x(), p1->y(), p2->x(), p2->y(), q->x(), q->y()}),
               "coordinates are finite");
    const std::lock_guard<std::mutex> lock(mtxCircle);
    initOnce(aCircleTemp, numCircleTemp, bCircleInit);
    mpq_t* const xy = aCircleTemp;     // of the corners a, b, c and of q
    mpq_t* const diff = xy + 8;        // adx ady bdx bdy cdx cdy
    mpq_t* const square = diff + 6;    // of the differences
    mpq_t* const product = square + 6; // two for each minor
    mpq_t* const lift = product + 6;
    mpq_t* const minor = lift + 3;
    mpq_t* const lifted = minor + 3;
    mpq_t& sum = lifted[3];

    assign(xy, {p0->x(), p0->y(), p1->x(), p1->y(), p2->x(), p2->y(), q->x(), q->y()});
    for (int i = 0; i < 6; ++i) {
        mpq_sub(diff[i], xy[i], xy[6 + i % 2]);
        mpq_mul(square[i], diff[i], diff[i]);
    }
    for (int i = 0; i < 3; ++i) {
        const int j = (i + 1) % 3, k = (i + 2) % 3;
        mpq_mul(product[2 * i], diff[2 * j], diff[2 * k + 1]);
        mpq_mul(product[2 * i + 1], diff[2 * k], diff[2 * j + 1]);
        mpq_sub(minor[i], product[2 * i], product[2 * i + 1]);
        mpq_add(lift[i], square[2 * i], square[2 * i + 1]);
        mpq_mul(lifted[i], minor[i], lift[i]);
    }
    mpq_add(sum, lifted[0], lifted[1]);
    mpq_add(sum, sum, lifted[2]);

    const int intResult = mpq_sgn(sum);
    if (intResult > 0) return CINC2_INCIRCLE;
    if (intResult < 0) return CINC2_OUTCIRCLE;
    LUMO_CHECK(intResult == 0, "intResult==0");
    return CINC2_ZERO;
}

void OrbiTest::getIntersectionCoords_gmp_MT(const Point2* p1, const Point2* p2, const Point2* p3, const Point2* p4,
                                            double& x, double& y) const
{
    LUMO_CHECK(areFinite({p1->x(), p1->y(), p2->x(), p2->y(), p3->x(), p3->y(), p4->x(), p4->y()}),
               "coordinates are finite");
    const std::lock_guard<std::mutex> lock(mtxIntersection);
    initOnce(aIntersectionTemp, numIntersectionTemp, bIntersectionInit);
    mpq_t* const p = aIntersectionTemp; // x1 y1 x2 y2 x3 y3 x4 y4
    mpq_t* const diff = p + 8;          // x1 - x2, y1 - y2, x3 - x4, y3 - y4
    mpq_t& a = diff[4];
    mpq_t& b = diff[5];
    mpq_t& denom = diff[6];
    mpq_t* const result = diff + 7; // X, Y
    mpq_t& scratch = diff[9];

    assign(p, {p1->x(), p1->y(), p2->x(), p2->y(), p3->x(), p3->y(), p4->x(), p4->y()});
    mpq_sub(diff[0], p[0], p[2]);
    mpq_sub(diff[1], p[1], p[3]);
    mpq_sub(diff[2], p[4], p[6]);
    mpq_sub(diff[3], p[5], p[7]);
    determinant(denom, diff[0], diff[3], diff[1], diff[2], scratch);
    if (mpq_sgn(denom) == 0) {
        msgError("OrbiTest::getIntersectionCoords()", "denom=0 -> parallel segments");
        LUMO_CHECK(false, "false");
    }
    determinant(a, p[0], p[3], p[1], p[2], scratch);
    determinant(b, p[4], p[7], p[5], p[6], scratch);
    determinant(result[0], a, diff[2], diff[0], b, scratch);
    determinant(result[1], a, diff[3], diff[1], b, scratch);
    mpq_div(result[0], result[0], denom);
    mpq_div(result[1], result[1], denom);
    x = mpq_get_d(result[0]);
    y = mpq_get_d(result[1]);
}

double OrbiTest::getPlaneHeightExact(const Point2* p0, const Point2* p1, const Point2* p2, double x, double y)
{
    LUMO_CHECK(areFinite({p0->x(), p0->y(), p0->z(), p1->x(), p1->y(), p1->z(), p2->x(), p2->y(), p2->z(), x, y}),
               "coordinates are finite");
    static std::mutex mtx;
    static Rationals<21> temp;
    const std::lock_guard<std::mutex> lock(mtx);
    mpq_t* const p = temp.a;   // x0 y0 z0 x1 y1 z1 x2 y2 z2 x y
    mpq_t* const d1 = p + 11;  // p1 - p0
    mpq_t* const d2 = d1 + 3;  // p2 - p0
    mpq_t* const det = d2 + 3; // A = xz, B = xy, C = yz of d1 and d2
    mpq_t& scratch = det[3];
    assign(p, {p0->x(), p0->y(), p0->z(), p1->x(), p1->y(), p1->z(), p2->x(), p2->y(), p2->z(), x, y});
    for (int i = 0; i < 3; ++i) {
        mpq_sub(d1[i], p[3 + i], p[i]);
        mpq_sub(d2[i], p[6 + i], p[i]);
    }
    determinant(det[0], d1[0], d2[2], d2[0], d1[2], scratch);
    determinant(det[1], d1[0], d2[1], d2[0], d1[1], scratch);
    determinant(det[2], d1[1], d2[2], d2[1], d1[2], scratch);
    LUMO_CHECK(mpq_sgn(det[1]) != 0, "B!=0");
    mpq_div(det[0], det[0], det[1]);
    mpq_div(det[2], det[2], det[1]);
    mpq_sub(p[10], p[10], p[1]);
    mpq_sub(p[9], p[9], p[0]);
    determinant(d1[0], det[0], p[10], det[2], p[9], scratch);
    mpq_add(d1[0], d1[0], p[2]);
    return mpq_get_d(d1[0]);
}

double OrbiTest::getLineHeightExact(const Point2* p0, const Point2* p1, double x, double y)
{
    double x0 = p0->x(), y0 = p0->y(), x1 = p1->x(), y1 = p1->y();
    LUMO_CHECK(areFinite({x0, y0, p0->z(), x1, y1, p1->z(), x, y}), "coordinates are finite");
    if (std::fabs(y0 - y1) > std::fabs(x0 - x1)) {
        std::swap(x0, y0);
        std::swap(x1, y1);
        std::swap(x, y);
    }
    LUMO_CHECK(x0 != x1, "x0!=x1");
    Rationals<5> temp;
    mpq_t* const t = temp.a; // x0 z0 x1 z1 x
    assign(t, {x0, p0->z(), x1, p1->z(), x});
    mpq_sub(t[3], t[3], t[1]);
    mpq_sub(t[2], t[2], t[0]);
    mpq_sub(t[4], t[4], t[0]);
    mpq_div(t[3], t[3], t[2]);
    mpq_mul(t[3], t[3], t[4]);
    mpq_add(t[3], t[3], t[1]);
    return mpq_get_d(t[3]);
}

} // namespace ORBI_LUMO25D
