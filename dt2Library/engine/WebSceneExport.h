#ifndef LUMO25D_ENGINE_WEBSCENEEXPORT_H
#define LUMO25D_ENGINE_WEBSCENEEXPORT_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace ORBI_LUMO25D
{

class Dt2;
class Point2;
class Triangle2;
class WebSceneWriter;
struct WebSceneHead;
class Zone2;

/// Writes the page that shows a triangulation with its alive constraints and some zones. Triangles with a corner whose
/// height isn't known are left out of the picture.
///
/// The vertices are numbered along the curve, and each triangle comes with the first of its corners: so neighbours in the
/// page's order are neighbours in the plane. Needs four bytes for each vertex, and with zones four for each triangle.
class WebSceneExport
{
public:
    /// The triangulation must have area, and the zones must be its own. Finds the zones' triangles, which may throw.
    WebSceneExport(const Dt2& dt2_, const std::vector<const Zone2*>& vZones);

    /// False, with a message, when the file can't be written or the surface has too many vertices or triangles for 32 bits.
    bool write(const char* filename, const std::string& title, const std::string& lengthUnit);

private:
    void numberVertices();
    std::uint32_t numberOf(const Point2* pVtx) const;
    bool isDrawn(const Triangle2* pT) const;
    void writeVertices(WebSceneWriter& writer, const WebSceneHead& head) const;
    void writeTriangles(WebSceneWriter& writer);
    void addBorder(const Triangle2* pT);
    void writeSegments(WebSceneWriter& writer, const char* name, const std::vector<std::uint32_t>& vEnds) const;
    void writeConstraints(WebSceneWriter& writer) const;
    void writeZone(WebSceneWriter& writer, std::size_t i) const;

    const Dt2& dt2;
    std::vector<std::vector<Triangle2*>> vvZoneTriangles;
    std::vector<std::uint32_t> vNumber;  ///< of the vertices, by their places in the pool
    std::vector<std::uint32_t> vOrdinal; ///< of the triangles in the page, by their places in the pool; only for zones
    std::vector<std::uint32_t> vBorder;
};

} // namespace ORBI_LUMO25D

#endif
