#ifndef LUMO25D_CAF_COMPONENT_H
#define LUMO25D_CAF_COMPONENT_H

#include "Lumo25DApi.h"

#include <map>
#include <utility>
#include <vector>

namespace ORBI_LUMO25D
{

class Point2;
class Segment2;
class Triangle2;

/// What happened to the ground.
enum CAFTYP
{
    CT_NULL = 0, ///< nothing: the surfaces agree
    CT_CUT = 1,  ///< earth was removed: the after surface lies below the before surface
    CT_FILL = 2  ///< earth was added: it lies above
};

/// A connected area of a cut-and-fill result, of one kind, with the volume between the two surfaces over it.
///
/// A value: copies are independent of each other. The triangles belong to the CutAndFill object and live as long as it.
class LUMO25D_API CAF_Component
{
public:
    /// The map gives each corner's heights before and after; one that is missing is a failed condition, and so is a
    /// difference of the other sign. Differences below 0.0001 count as none for the kind, and a component that has no
    /// others is CT_NULL with volume 0.
    CAF_Component(const std::vector<Triangle2*>& vT_,
                  const std::map<Point2*, std::pair<double, double>>& mVtx2BeforeAfter, int label_);

    /// What became of the ground here.
    CAFTYP getCAFType() const { return caftype; }
    /// The volume, in cubes of the coordinates' unit: not negative, for triangles that are counterclockwise.
    double getVolume() const { return volume; }
    /// The running number in the result, from 0.
    int getLabel() const { return label; }
    /// Appends the triangles. Their corners carry the difference before minus after as z.
    void getTriangles(std::vector<Triangle2*>& vTriangles) const;
    /// Appends the sides behind which the component ends, each from corner i+2 to corner i+1 of its triangle: with the
    /// component on the right. O(n log n).
    void getBorder(std::vector<Segment2>& vBorders) const;

protected:
    /// For inspection: writes the two surfaces and the walls between them, three points in a row for each triangle, in
    /// red, green and blue into a Geomview file: the name with "_null.list", "_cut.list" or "_fill.list" by the kind.
    void showGeomview(const char* name, const std::vector<Point2>& vBeforeT, const std::vector<Point2>& vAfterT,
                      const std::vector<Point2>& vWalls) const;

private:
    friend class CutAndFillImpl;

    /// The corners' z are the differences before minus after.
    CAF_Component(const std::vector<Triangle2*>& vT_, int label_);
    /// riseAt(vertex) is the difference after minus before.
    template <class RiseAt>
    void init(const RiseAt& riseAt);

    int label;
    CAFTYP caftype = CT_NULL;
    double volume = 0.0;
    std::vector<Triangle2*> vT;
};

} // namespace ORBI_LUMO25D

#endif
