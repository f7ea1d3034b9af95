#ifndef LUMO25D_TESTS_ORACLES_ZONEMODEL_H
#define LUMO25D_TESTS_ORACLES_ZONEMODEL_H

#include "Lumo_2D.h"
#include "Point2.h"

#include <cstddef>
#include <memory>
#include <set>
#include <vector>

namespace oracles
{

/// What is known of the zones that a sequence of operations has made: the ring of each that was made from one, the
/// two inputs of each combination.
class ZoneModel
{
public:
    explicit ZoneModel(ORBI_LUMO25D::Lumo_2D& lumo_) : lumo(lumo_) {}

    /// Sorts the points around their middle; a ring of points that are no corners of a simple polygon then is left out.
    void addInside(const std::vector<ORBI_LUMO25D::Point2>& vPoints);
    /// The four combinations of the last two zones.
    void combine();
    /// A bounded zone of the last one.
    void bound();
    /// The last zone that has a ring, or null.
    ORBI_LUMO25D::Zone2* last() const { return vRings.empty() ? nullptr : vRings.back().pZone; }
    void getZones(std::vector<ORBI_LUMO25D::Zone2*>& vZones) const;
    void clear();

    /// Throws std::runtime_error when a zone holds other triangles than its ring or its inputs tell. Triangles whose
    /// middle is closer to the ring than chains may stray from their segments are not looked at.
    void check() const;

private:
    struct Ring
    {
        ORBI_LUMO25D::Zone2* pZone;
        std::vector<ORBI_LUMO25D::Point2> vCorners;
    };
    struct Combination
    {
        ORBI_LUMO25D::Zone2 *pA, *pB;
        ORBI_LUMO25D::Zone2* aResults[4]; ///< union, intersection, difference, symmetric difference
    };

    ORBI_LUMO25D::Lumo_2D& lumo;
    std::vector<Ring> vRings;
    std::vector<Combination> vCombinations;
};

/// The triangles of a zone, each of which must be there once.
std::set<ORBI_LUMO25D::Triangle2*> trianglesOf(const ORBI_LUMO25D::Zone2& zone);

} // namespace oracles

#endif
