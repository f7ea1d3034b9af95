#ifndef LUMO25D_ENGINE_VALIDITYCHECK_H
#define LUMO25D_ENGINE_VALIDITYCHECK_H

#include <cstddef>
#include <string>
#include <vector>

namespace ORBI_LUMO25D
{

class Dt2;
class Point2;
class Triangle2;

/// The layered self-check of a triangulation. Each layer can be run alone and relies on those before it; all geometry is
/// decided by the exact predicates. Every violation is reported as an error message with its place.
///
/// A layer returns true when it found nothing. Nothing is changed. Linear in the number of triangles.
class ValidityCheck
{
public:
    explicit ValidityCheck(const Dt2& dt2_);

    /// All layers in order; stops behind a layer with violations, because the later ones build on it.
    bool run(bool bCheckEmptyCircleProperty);

    /// Corners and neighbours are alive records of this triangulation, and neighbours share their edge.
    bool checkLinks();
    /// All triangles turn counterclockwise.
    bool checkOrientation();
    /// Each corner's incident triangle is an alive one around it.
    bool checkIncidentTriangles();
    /// The border is one convex closed chain, and Euler's formula holds: the triangles cover the hull once.
    bool checkHull();
    /// The vault's items and the mesh agree: exactly the active vertices are corners.
    bool checkVault();
    /// No neighbour's far corner lies inside a circumcircle; with locally Delaunay edges all circles are empty.
    bool checkEmptyCircles();

private:
    void report(const char* layer, const std::string& what);
    void report(const char* layer, const char* what, const Triangle2* pT);
    bool isAlive(const Triangle2* pT) const;
    bool checkNeighbor(const Triangle2* pT, int i);
    std::size_t walkBorder(const Triangle2* pStart, int ith);
    void checkItems(std::vector<char>& vMarks);

    const Dt2& dt2;
    std::vector<Triangle2*> vT;
    std::size_t numViolations = 0;
};

} // namespace ORBI_LUMO25D

#endif
