#include "geometry/OrbiTest.h"

#include "geometry/OrbiTest_integers.h"
#include "geometry/OrbiTest_intervals.h"
#include "geometry/distances.h"
#include "support/check.h"
#include "support/messages.h"

#include "freeFunctions.h"

#include <cmath>
#include <limits>
#include <locale>
#include <sstream>

namespace ORBI_LUMO25D
{

namespace
{

/// 2^-52, scaled to the power of two at or above v: v in {2, 4, 8} gives the spacing of doubles there.
constexpr double ulpOfRange(int log2OfV)
{
    double ulp = std::numeric_limits<double>::epsilon();
    for (int i = 0; i < log2OfV; ++i) ulp *= 2.0;
    return ulp;
}

/// Error of D for coordinates of at most 1 in size, in round-to-nearest: 24 times 2^-53. Each product counts a rounded
/// difference of at most 2 and the rounding of a product of at most 4, D itself one of at most 8.
constexpr double staticFactor = 2.0 * (ulpOfRange(1) + ulpOfRange(2) * 0.5) + ulpOfRange(3) * 0.5;
static_assert(staticFactor == 0x3p-50, "the orientation filter's factor");

bool isOnAxisParallelLine(const Point2* p0, const Point2* p1, const Point2* p2)
{
    return (p0->x() == p1->x() && p1->x() == p2->x()) || (p0->y() == p1->y() && p1->y() == p2->y());
}

/// Whether q completes the corners to an axis-parallel rectangle: one corner has its x, one its y, and the other two
/// agree in x, in y. Every cell of a regular grid is such a case.
bool isRectangle(const Point2* p0, const Point2* p1, const Point2* p2, const Point2* q)
{
    const auto pairsUp = [](double v0, double v1, double v2, double vq) {
        const int numEqual = (v0 == vq) + (v1 == vq) + (v2 == vq);
        return numEqual == 1 && (v0 == vq ? v1 == v2 : (v1 == vq ? v0 == v2 : v0 == v1));
    };
    return pairsUp(p0->x(), p1->x(), p2->x(), q->x()) && pairsUp(p0->y(), p1->y(), p2->y(), q->y());
}

Orientation2 orientationOfSign(int sign)
{
    if (sign == 0) return ORIENTATION2_COLLINEAR;
    return sign > 0 ? ORIENTATION2_CCW : ORIENTATION2_CW;
}

CircleInc2 circleIncOfSign(int sign)
{
    if (sign == 0) return CINC2_ZERO;
    return sign > 0 ? CINC2_INCIRCLE : CINC2_OUTCIRCLE;
}

void note(PredicateStage* pStage, PredicateStage stage)
{
    if (pStage != nullptr) *pStage = stage;
}

} // namespace

OrbiTest::OrbiTest() : rangeBound(filters::orientationBoundFor(0.0, 0.0)) {}

OrbiTest::~OrbiTest()
{
    const auto clear = [](mpq_t* aTemp, int num) {
        for (int i = 0; i < num; ++i) mpq_clear(aTemp[i]);
    };
    if (bCircleInit) clear(aCircleTemp, numCircleTemp);
    if (bOrientationInit) clear(aOrientationTemp, numOrientationTemp);
    if (bIntersectionInit) clear(aIntersectionTemp, numIntersectionTemp);
}

// ---- range of the orientation filter --------------------------------------------------------------------------------

void OrbiTest::setStaticBound_MT(double m)
{
    const std::lock_guard<std::mutex> lock(mtxStaticBound);
    if (getMaxCoord() > m) return;
    LUMO_CHECK(m >= 0.0, "maxCoord>=0");
    const double m10 = 10.0 * m;
    if (m10 > m && m10 < std::numeric_limits<double>::max()) m = m10;
    // The range comes last: who sees it sees the bounds that belong to it.
    staticBound.store(staticFactor * m * m, std::memory_order_relaxed);
    rangeBound.store(filters::orientationBoundFor(m, getStaticBound()), std::memory_order_relaxed);
    maxCoord.store(m, std::memory_order_release);
}

void OrbiTest::ensureStaticBound(const Point2* p0, const Point2* p1, const Point2* p2)
{
    const double m = std::fmax(p0->getMaxAbs(), std::fmax(p1->getMaxAbs(), p2->getMaxAbs()));
    if (m > getMaxCoord()) setStaticBound_MT(m);
}

void OrbiTest::warnOutOfRange(const Point2* p0, const Point2* p1, const Point2* p2) const
{
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text.precision(15);
    text << "Static bound: " << getMaxCoord() << "\nmax p0: " << p0->getMaxAbs() << "\nmax p1: " << p1->getMaxAbs()
         << "\nmax p2: " << p2->getMaxAbs();
    printLine(text.str());
    msgWarning("OrbiTest::getOrientation2", "Recompute the static bound!");
}

// ---- cascades -------------------------------------------------------------------------------------------------------

Orientation2 OrbiTest::orientationUnfiltered(const Point2* p0, const Point2* p1, const Point2* p2,
                                             PredicateStage* pStage) const
{
    const filters::OrientationValue value = filters::orientation(p0, p1, p2);
    const double bound = value.bound();
    note(pStage, PredicateStage::TightFilter);
    if (value.det() > bound) return ORIENTATION2_CCW;
    if (value.det() < -bound) return ORIENTATION2_CW;

    note(pStage, PredicateStage::Shortcut);
    if (isOnAxisParallelLine(p0, p1, p2)) return ORIENTATION2_COLLINEAR;

    // What comes here is zero or nearly so, where intervals seldom tell and integers always do, faster.
    note(pStage, PredicateStage::Integers);
    int sign = 0;
    if (integers::orientationSign(p0, p1, p2, sign)) return orientationOfSign(sign);
    return orientationByIntervals(p0, p1, p2, pStage);
}

Orientation2 OrbiTest::orientationByIntervals(const Point2* p0, const Point2* p1, const Point2* p2,
                                              PredicateStage* pStage) const
{
    note(pStage, PredicateStage::Shortcut);
    if (isOnAxisParallelLine(p0, p1, p2)) return ORIENTATION2_COLLINEAR;

    note(pStage, PredicateStage::Intervals);
    if (intervals::orientationUpperBound(p0, p1, p2) < 0.0) return ORIENTATION2_CW;
    if (intervals::orientationLowerBound(p0, p1, p2) > 0.0) return ORIENTATION2_CCW;

    note(pStage, PredicateStage::Integers);
    int sign = 0;
    if (integers::orientationSign(p0, p1, p2, sign)) return orientationOfSign(sign);

    note(pStage, PredicateStage::Rationals);
    return orientationExact(p0, p1, p2);
}

CircleInc2 OrbiTest::circleUnfiltered(const Point2* p0, const Point2* p1, const Point2* p2, const Point2* q,
                                      PredicateStage* pStage) const
{
    const CircleInc2 filtered = circleTightFilter(p0, p1, p2, q);
    note(pStage, PredicateStage::TightFilter);
    if (filtered != CINC2_UNDECIDED) return filtered;

    note(pStage, PredicateStage::Shortcut);
    if (isRectangle(p0, p1, p2, q)) return CINC2_ZERO;

    note(pStage, PredicateStage::Integers);
    int sign = 0;
    if (integers::inCircleSign(p0, p1, p2, q, sign)) return circleIncOfSign(sign);

    note(pStage, PredicateStage::Rationals);
    return circleRationals(p0, p1, p2, q);
}

CircleInc2 OrbiTest::circleTightFilter(const Point2* p0, const Point2* p1, const Point2* p2, const Point2* q)
{
    const filters::InCircleValue value = filters::inCircle(p0, p1, p2, q);
    const double bound = value.permanentBound();
    if (value.det() > bound) return CINC2_INCIRCLE;
    if (value.det() < -bound) return CINC2_OUTCIRCLE;
    return CINC2_UNDECIDED;
}

CircleInc2 OrbiTest::circleIncFast(const Triangle2* t, const Point2* q) const
{
    return circleTightFilter(t->corner(0), t->corner(1), t->corner(2), q);
}

CircleInc2 OrbiTest::circleIncExact(const Triangle2* t, const Point2* q, PredicateStage* pStage) const
{
    note(pStage, PredicateStage::Shortcut);
    if (isRectangle(t->corner(0), t->corner(1), t->corner(2), q)) return CINC2_ZERO;
    note(pStage, PredicateStage::Rationals);
    return circleRationals(t->corner(0), t->corner(1), t->corner(2), q);
}

// ---- further tests --------------------------------------------------------------------------------------------------

SegmentMeet2 OrbiTest::getIntersectionTypeIST(const Point2* p1, const Point2* p2, const Point2* p3,
                                              const Point2* p4) const
{
    const Orientation2 o3 = getOrientation2(p1, p2, p3);
    const Orientation2 o4 = getOrientation2(p1, p2, p4);
    if (o3 == ORIENTATION2_COLLINEAR && o4 == ORIENTATION2_COLLINEAR) {
        const double d12 = sqDistance2D(*p1, *p2), d34 = sqDistance2D(*p3, *p4);
        const double d13 = sqDistance2D(*p1, *p3), d23 = sqDistance2D(*p2, *p3);
        const double d14 = sqDistance2D(*p1, *p4), d24 = sqDistance2D(*p2, *p4);
        const bool bTouch = (d12 >= d13 && d12 >= d23) || (d12 >= d14 && d12 >= d24) || (d34 >= d13 && d34 >= d14) ||
                            (d34 >= d23 && d34 >= d24);
        return bTouch ? IST_COLLINEAR : IST_NOIS;
    }
    if (o3 == o4) return IST_NOIS;
    return getOrientation2(p3, p4, p1) == getOrientation2(p3, p4, p2) ? IST_NOIS : IST_REGULAR;
}

Orientation2 OrbiTest::getOrientation3(const Point2* p1, const Point2* p2, const Point2* p3, const Point2* p4) const
{
    const double dx1 = p1->x() - p4->x(), dy1 = p1->y() - p4->y(), dz1 = p1->z() - p4->z();
    const double dx2 = p2->x() - p4->x(), dy2 = p2->y() - p4->y(), dz2 = p2->z() - p4->z();
    const double dx3 = p3->x() - p4->x(), dy3 = p3->y() - p4->y(), dz3 = p3->z() - p4->z();
    const double det = (dy2 * dz3 - dz2 * dy3) * dx1 + (dy3 * dz1 - dz3 * dy1) * dx2 + (dy1 * dz2 - dz1 * dy2) * dx3;
    if (det > 0.0) return ORIENTATION2_CCW;
    return det < 0.0 ? ORIENTATION2_CW : ORIENTATION2_COLLINEAR;
}

// ---- names ----------------------------------------------------------------------------------------------------------

const char* OrbiTest::toString(Orientation2 ori)
{
    switch (ori) {
    case ORIENTATION2_COLLINEAR:
        return "COL";
    case ORIENTATION2_CCW:
        return "CCW";
    case ORIENTATION2_CW:
        return "CW";
    }
    return "unknown, this is a bug";
}

const char* OrbiTest::toString(CircleInc2 inc)
{
    switch (inc) {
    case CINC2_ZERO:
        return "CINC2_ZERO";
    case CINC2_INCIRCLE:
        return "CINC2_INCIRCLE";
    case CINC2_OUTCIRCLE:
        return "CINC2_OUTCIRCLE";
    case CINC2_UNDECIDED:
        break;
    }
    return "UNKNOWN";
}

const char* OrbiTest::toString(SegmentMeet2 ist)
{
    switch (ist) {
    case IST_NOIS:
        return "IST_NOIS";
    case IST_COLLINEAR:
        return "IST_COLLINEAR";
    case IST_REGULAR:
        return "IST_REGULAR";
    }
    return "UNKNOWN";
}

const char* getString(Orientation2 ori)
{
    switch (ori) {
    case ORIENTATION2_COLLINEAR:
        return "ORIENTATION2_COLLINEAR";
    case ORIENTATION2_CCW:
        return "ORIENTATION2_CCW";
    case ORIENTATION2_CW:
        return "ORIENTATION2_CW";
    }
    return "UNKNOWN";
}

// ---- free functions -------------------------------------------------------------------------------------------------

namespace
{

void checkPointers(const Point2* p0, const Point2* p1, const Point2* p2)
{
    LUMO_CHECK(p0 != nullptr, "p0!=0");
    LUMO_CHECK(p1 != nullptr, "p1!=0");
    LUMO_CHECK(p2 != nullptr, "p2!=0");
}

/// Callers outside the library may pass anything: what is no number must not reach the range of the static object.
void checkFinite(const Point2* p0, const Point2* p1, const Point2* p2)
{
    for (const Point2* p : {p0, p1, p2}) {
        LUMO_CHECK(std::isfinite(p->x()) && std::isfinite(p->y()), "coordinates are finite");
    }
}

} // namespace

Orientation2 getOrientation2(const Point2* p0, const Point2* p1, const Point2* p2)
{
    checkPointers(p0, p1, p2);
    checkFinite(p0, p1, p2);
    static OrbiTest orbiTest;
    orbiTest.ensureStaticBound(p0, p1, p2);
    return orbiTest.getOrientation2(p0, p1, p2);
}

Orientation2 getOrientation2_mt(const Point2* p0, const Point2* p1, const Point2* p2)
{
    checkPointers(p0, p1, p2);
    // Nearly every call ends here, without an object; and what isn't finite has no finite bound.
    const filters::OrientationValue value = filters::orientation(p0, p1, p2);
    const double bound = value.bound();
    if (value.det() > bound) return ORIENTATION2_CCW;
    if (value.det() < -bound) return ORIENTATION2_CW;

    checkFinite(p0, p1, p2);
    OrbiTest orbiTest;
    orbiTest.ensureStaticBound(p0, p1, p2);
    return orbiTest.getOrientation2(p0, p1, p2);
}

} // namespace ORBI_LUMO25D
