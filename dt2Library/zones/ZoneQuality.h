#ifndef LUMO25D_ZONES_ZONEQUALITY_H
#define LUMO25D_ZONES_ZONEQUALITY_H

#include "Triangle2.h"

#include <string>
#include <vector>

namespace ORBI_LUMO25D
{

class Dt2;
class Zone2;

/// Looks for badly shaped triangles in a zone and reports them on the standard output: what refinement made can be judged
/// by it. Lengths, angles and areas are those in space. Each check returns whether all triangles are good.
class ZoneQuality
{
public:
    /// The triangles are those of the zone now. The name goes into reports and names of files.
    ZoneQuality(Dt2& dt2_, const Zone2& zone, std::string name_);

    /// No triangle may have more than three times the area of a neighbour in the zone, unless that has less than 0.25.
    bool checkGrowFactor() const;
    /// The longest side of a triangle may be at most ten times its height, the length of the vector product of two sides.
    bool checkHeightAspect() const;
    /// The longest side may be at most ten times the shortest, and no angle smaller than minAngle degrees.
    bool checkAspectAndAngle(double minAngle) const;

private:
    bool reportGrowth(const Triangle2* pT, int ith) const;
    void drawBad(const std::string& filename, const std::vector<const Triangle2*>& vBad) const;

    Dt2& dt2;
    std::string name;
    std::vector<Triangle2*> vT;
};

} // namespace ORBI_LUMO25D

#endif
