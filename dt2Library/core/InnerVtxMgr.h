#ifndef LUMO25D_CORE_INNERVTXMGR_H
#define LUMO25D_CORE_INNERVTXMGR_H

#include <map>
#include <set>

namespace ORBI_LUMO25D
{

class Dt2;
class Point2;

/// The free vertices that a running refinement has inserted, so that those inside the diametral circle of a segment that
/// is split can be taken out again (Ruppert 1995).
class InnerVtxMgr
{
public:
    void add(Point2* pVtx);
    /// A vertex that became an end of a constraint isn't free any more. Nothing for one that isn't listed.
    void forget(Point2* pVtx);
    void clear();
    /// Removes the listed vertices whose squared distance from the vertex is below sqRadius, except ends of constraints,
    /// from the list and from the triangulation.
    void removePreviouslyInsertedVertices(Dt2& dt2, const Point2* pCenter, double sqRadius);

private:
    std::set<Point2*> sInsertedInnerPoints;
    std::multimap<double, Point2*> mmX2Vtx;
};

} // namespace ORBI_LUMO25D

#endif
