#ifndef LUMO25D_MESHING_CONCENTRICSHELLS_H
#define LUMO25D_MESHING_CONCENTRICSHELLS_H

namespace ORBI_LUMO25D
{

class ConstraintSegment2;
class Dt2;
class Point2;

/// How constraints that meet at a sharp angle are split without an end to it (Ruppert 1995, "concentric shells"; Miller,
/// Pav and Walkington 2003). Within 60 degrees, a vertex on one of two constraints lies in the circle of the other one's
/// part: midpoints would call for each other forever. At the same distances from the corner they don't, and the triangles
/// over an edge from one to the other, which are thin because the corner is, are left as they are.
class ConcentricShells
{
public:
    explicit ConcentricShells(const Dt2& dt2_) : dt2(dt2_) {}

    /// Where to split a constraint from pA to pB: the fraction of the way from pA. 0.5, unless just one end is a sharp
    /// corner; then at a power of two from there, the nearest to half of its length.
    double splitFraction(const Point2* pA, const Point2* pB) const;
    /// Whether an edge, which is no constraint itself, joins two constraints that meet at a sharp angle, at the same
    /// distance from their corner.
    bool isAcrossCorner(const Point2* pU, const Point2* pV) const;

private:
    bool isSharpCorner(const Point2* pVtx, const Point2* pEnd) const;
    bool meetOnShell(const ConstraintSegment2& segU, const ConstraintSegment2& segV, const Point2& u,
                     const Point2& v) const;

    const Dt2& dt2;
};

} // namespace ORBI_LUMO25D

#endif
