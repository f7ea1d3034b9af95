#include "repair/CornerGeometry.h"

#include "support/check.h"
#include "support/messages.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace ORBI_LUMO25D
{

namespace
{

constexpr double radiansPerDegree = 0.017453292519944444;

/// New points whose direction comes closer than 15 degrees to an edge of the corner would make needles.
constexpr double maxCosToHand = 0.966;

/// The part of v in the plane with the unit normal n.
Vector2 tangentialPart(const Vector2& v, const Vector2& n)
{
    return v - (v * n) * n;
}

/// Length 1, or null for what is null.
Vector2 unitOrNull(const Vector2& v)
{
    return v.isDegenerate() ? v : normalize(v);
}

} // namespace

CornerGeometry::CornerGeometry(const PatchSurface& surface_, std::size_t base, std::size_t dec, std::size_t inc,
                               bool bVerbose_)
    : surface(surface_), baseVertex(base), decVertex(dec), incVertex(inc), pBase(&surface_.point(base)),
      pDec(&surface_.point(dec)), pInc(&surface_.point(inc)), bVerbose(bVerbose_)
{
    LUMO_CHECK(pBase != pDec, "pBase!=pDec");
    LUMO_CHECK(pBase != pInc, "pBase!=pInc");
    LUMO_CHECK(pInc != pDec, "pInc!=pDec");
    const Vector2 decHandLong = *pDec - *pBase, incHandLong = *pInc - *pBase;
    lenDec = decHandLong.length();
    lenInc = incHandLong.length();
    LUMO_CHECK(lenDec > 0.0, "decHandLong.sqLength()>0");
    LUMO_CHECK(lenInc > 0.0, "incHandLong.sqLength()>0");
    LUMO_CHECK(std::isfinite(lenDec) && std::isfinite(lenInc), "lengths are finite");
    handDec = normalize(decHandLong);
    handInc = normalize(incHandLong);
    handAngle = getAngleDegree(handDec, handInc);

    normal = reliableNormal(*pBase, *pInc, *pDec);
    const NormalSum sum = computeVertexNNV();
    nnv = unitOrNull(sum.normal);
    if (sum.weight > 0.0) centreOfNNV = sum.centre / sum.weight;
    if (!normal.isDegenerate() && !nnv.isDegenerate()) normalAngle = getAngleDegree(nnv, normal);
    angle = normalAngle > 90.0 && handAngle > 1.0 ? handAngle + 180.0 : handAngle;
}

double CornerGeometry::computeTurn() const
{
    const Vector2 up = unitOrNull(surface.normalSum(baseVertex).normal);
    const double sine = crossProduct(handInc, handDec) * up;
    const double cosine = tangentialPart(handInc, up) * tangentialPart(handDec, up);
    if (sine == 0.0 && cosine == 0.0) return 0.0;
    const double opening = std::atan2(sine, cosine) / radiansPerDegree;
    return 180.0 - (opening < 0.0 ? opening + 360.0 : opening);
}

/// Of those triangles at the base that hold dec or inc.
NormalSum CornerGeometry::sumNormalsAtEdges() const
{
    NormalSum sum;
    surface.forEachAtEdge(baseVertex, decVertex,
                          [&sum](const PatchSurface::Facet& f) { sum.add(f.normal, f.centre, 1.0); });
    surface.forEachAtEdge(baseVertex, incVertex, [&](const PatchSurface::Facet& f) {
        if (!f.hasCorner(pDec)) sum.add(f.normal, f.centre, 1.0);
    });
    return sum;
}

/// In an open corner the triangles at its edges know best how the surface goes on; a sharp one all but lies in its own
/// triangle.
NormalSum CornerGeometry::computeVertexNNV() const
{
    if (handAngle > 135.0) {
        const NormalSum atEdges = sumNormalsAtEdges();
        if (atEdges.num == 2 && !atEdges.normal.isDegenerate()) return atEdges;
        const NormalSum& all = surface.normalSum(baseVertex);
        if (bVerbose && all.normal.isDegenerate()) {
            msgWarning("HoleFiller::computeVertexNNV()", "sumNormals degenerate!!");
        }
        return all;
    }
    NormalSum sum = surface.normalSum(baseVertex);
    const Vector2 ownCentre = ((*pDec - *pBase) + (*pInc - *pBase)) / 3.0;
    if (handAngle < 85.0) {
        sum.add(normal, ownCentre, 1.0);
    } else {
        LUMO_CHECK(handAngle >= 85.0 && handAngle <= 135.0, "handAngle>=85.0 && handAngle<=135");
        sum.add(normal, ownCentre, 85.0 / handAngle);
    }
    if (bVerbose && sum.normal.isDegenerate()) {
        msgWarning("HoleFiller::computeVertexNNV()", "sumNormals degenerate!");
    }
    return sum;
}

/// How fast the normal turns around the base, in radians per unit of length: the slope of the linear regression of the
/// triangles' normals over their centres, the same one for all directions.
double CornerGeometry::computeCurvature() const
{
    const NormalSum& sum = surface.normalSum(baseVertex);
    if (sum.weight == 0.0) return 0.0;
    const double covariance = sum.products - sum.normal * sum.centre / sum.weight;
    const double variance = sum.squares - sum.centre * sum.centre / sum.weight;
    return variance > 0.0 ? std::fabs(covariance / variance) : 0.0;
}

/// Points to where the surface around the base bends: the direction of the sum of the unit vectors to its neighbours.
Vector2 CornerGeometry::computeLaplacian() const
{
    std::vector<const Point2*> vP;
    for (const PatchSurface::Facet& facet : surface.facetsAt(baseVertex)) {
        for (const Point2* p : facet.apCorners) {
            if (p != pBase) vP.push_back(p);
        }
    }
    // By place, not by address, so that the sum's rounding is the same on every run.
    std::sort(vP.begin(), vP.end(), Func_ltPointXYZ());
    vP.erase(std::unique(vP.begin(), vP.end()), vP.end());
    LUMO_CHECK(!vP.empty(), "!vP.empty()");
    Vector2 sum;
    for (const Point2* p : vP) {
        const Vector2 vec = *p - *pBase;
        LUMO_CHECK(vec.length() > 0.0, "vec.length()>0");
        sum = sum + normalize(vec);
    }
    return sum.isDegenerate() ? normalize(*vP.front() - *pBase) : normalize(sum);
}

/// The surface goes on along the bisector, in the tangent plane, and bends as it did so far: by half the angle phi, to the
/// side of the Laplacian. A chord from the place whose normal nnv is to the new point would turn by the normal's turn over
/// half its length; nnv belongs to the triangles' centres, and these lie behind the base.
///
/// Measured on 119 sphere holes of up to half a sphere: all patches stay within 2.3 % of the radius. With phi from the
/// bisector b alone, about 0.45 |b * nnv|, 100 of them leave 5 % (a hole of 60 degrees by 40 %); a larger factor suits
/// holes of one size and density only. With lengths from the corner's edges alone, fronts on planes run away in ever
/// shorter edges.
bool CornerGeometry::computeBend(double len, Bend& bend) const
{
    if ((handDec + handInc).isDegenerate() || nnv.isDegenerate()) return false;
    const Vector2 lap = computeLaplacian();
    if (lap.isDegenerate()) return false;
    const double sign = nnv * lap < 0.0 ? 1.0 : -1.0;
    constexpr double steep = 0.2;
    bend.tangent = tangentialPart(normalize(handDec + handInc), nnv);
    bend.bSteep = bend.tangent.length() < steep;
    // At the end of a tube the bisector points across the surface; the tangent is what is square to the edges.
    if (bend.bSteep) bend.tangent = crossProduct(nnv, handInc - handDec);
    if (bend.tangent.isDegenerate()) return false;
    bend.tangent = normalize(bend.tangent);

    constexpr double maxPhi = 1.0;        // 57 degrees
    constexpr double shareOfBehind = 0.4; // found on spheres: with 0 a patch bulges out, with 1 it dents in
    const double behind = std::max(0.0, -(centreOfNNV * bend.tangent));
    double phi = std::min(2.0 * computeCurvature() * (shareOfBehind * behind + len / 2.0), maxPhi);
    constexpr double flat = 1e-4; // continued bends grow from row to row: those of rounding would, too
    if (phi < flat) phi = 0.0;
    const Vector2 w = std::cos(phi) * nnv + std::sin(phi) * bend.tangent;
    // (cos phi - 1) / (w * tangent) with w * tangent = sin phi, in the form that is no 0/0 in a plane.
    bend.offset = (sign * -std::tan(phi / 2.0)) * w;
    return true;
}

bool CornerGeometry::isClearOfHands(const Vector2& direction) const
{
    return direction * handDec < maxCosToHand && direction * handInc < maxCosToHand;
}

/// As long as the corner's edges, or growing towards the border's: a front whose edges get shorter as it closes would
/// otherwise never find back to triangles of similar size.
double CornerGeometry::newEdgeLength(double medianEdgeLength) const
{
    const double len = std::max((lenDec + lenInc) / 2.0, medianEdgeLength);
    return std::min(len, 2.0 * std::min(lenDec, lenInc));
}

bool CornerGeometry::computeAddPoint(double medianEdgeLength, Point2& add0) const
{
    Bend bend;
    const double len = std::max(newEdgeLength(medianEdgeLength), medianEdgeLength / 10.0);
    if (!computeBend(len, bend)) return false;
    const Vector2 dir = unitOrNull(bend.tangent + bend.offset);
    if (dir.isDegenerate() || !isClearOfHands(dir)) return false;
    add0 = *pBase + len * dir;
    if (add0.samePoint(*pBase)) {
        if (bVerbose) msgWarning("HoleFiller::computeAddPoint()", "add0 is pBase");
        add0 = *pBase + normalize(handDec + handInc);
    }
    LUMO_CHECK(!add0.samePoint(*pBase), "!samePoint(add0,*pBase)");
    return true;
}

/// The directions at the thirds of the opening, in the tangent plane; may be null.
void CornerGeometry::computeThirds(const Bend& bend, Vector2& third0, Vector2& third1) const
{
    const Vector2 across = normalize(handInc - handDec);
    const double sixth = handAngle * radiansPerDegree / 6.0;
    if (bend.bSteep) {
        third0 = std::cos(sixth) * bend.tangent - std::sin(sixth) * across;
        third1 = std::cos(sixth) * bend.tangent + std::sin(sixth) * across;
    } else {
        // By the law of sines: how far on the line between the hands' tips the first third of the opening ends.
        const double right = 90.0 * radiansPerDegree;
        const Vector2 q = across * (std::sin(2.0 * sixth) / std::sin(sixth + right));
        third0 = handDec + q;
        third1 = handInc - q;
    }
    third0 = unitOrNull(tangentialPart(unitOrNull(third0), nnv));
    third1 = unitOrNull(tangentialPart(unitOrNull(third1), nnv));
}

bool CornerGeometry::computeTwoAddPoints(double medianEdgeLength, Point2& add0, Point2& add1) const
{
    Bend bend;
    const double len = newEdgeLength(medianEdgeLength);
    if (!computeBend(len, bend) || (handInc - handDec).isDegenerate()) return false;
    Vector2 dir0, dir1;
    computeThirds(bend, dir0, dir1);
    if (dir0.isDegenerate() || dir1.isDegenerate()) return false;
    dir0 = unitOrNull(dir0 + bend.offset);
    dir1 = unitOrNull(dir1 + bend.offset);
    if (dir0.isDegenerate() || dir1.isDegenerate() || dir0 * dir1 > maxCosToHand) return false;
    if (!isClearOfHands(dir0) || !isClearOfHands(dir1)) return false;
    add0 = *pBase + len * dir0;
    add1 = *pBase + len * dir1;
    return true;
}

} // namespace ORBI_LUMO25D
