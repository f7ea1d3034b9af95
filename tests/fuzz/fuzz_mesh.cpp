// Meshes as OBJ and as text STL: whatever the bytes are, whole triangles, no more than the file can hold, and never a
// crash in what is made of them. The first byte tells the form.

#include "fuzz.h"

#include "Mesh3.h"

#include <cmath>
#include <vector>

using namespace ORBI_LUMO25D;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t size)
{
    static const fuzz::InputFile obj(".obj"), stl(".stl");
    if (size == 0) return 0;
    const fuzz::InputFile& file = pData[0] % 2 == 0 ? obj : stl;
    std::vector<Point2> vCorners;
    if (!Mesh3::readCorners(file.write(pData + 1, size - 1), vCorners)) {
        fuzz::require(vCorners.empty(), "a refused file gives nothing");
        return 0;
    }
    fuzz::require(vCorners.size() % 3 == 0 && vCorners.size() <= 3 * size, "whole triangles");
    for (const Point2& p : vCorners) {
        fuzz::require(std::isfinite(p.x()) && std::isfinite(p.y()) && std::isfinite(p.z()), "finite coordinates");
    }
    Mesh3 mesh(vCorners);
    std::vector<std::vector<Edge2>> vRings;
    mesh.getBorderRings(vRings);
    return 0;
}
