#include "orbi_locate3/RTree.h"

#include "orbi_tools/GSS_HC3.h"
#include "support/check.h"

#include <algorithm>
#include <cmath>

namespace ORBI_LOCATE3
{

void RTree::addObject(std::size_t index, double xmin, double ymin, double zmin, double xmax, double ymax, double zmax)
{
    LUMO_CHECK(xmin <= xmax, "xmin<=xmax");
    LUMO_CHECK(ymin <= ymax, "ymin<=ymax");
    LUMO_CHECK(zmin <= zmax, "zmin<=zmax");
    LUMO_CHECK(std::isfinite(xmin) && std::isfinite(ymin) && std::isfinite(zmin) && std::isfinite(xmax) &&
                   std::isfinite(ymax) && std::isfinite(zmax),
               "the box is finite");
    tree.add(index, {{xmin, ymin, zmin}, {xmax, ymax, zmax}});
}

void RTree::build() const
{
    tree.build([](const Box& extent) {
        // The curve fills a cube; coordinates are halved, so that its size stays finite.
        double size = 0.0;
        for (std::size_t d = 0; d < 3; ++d) size = std::max(size, 0.5 * extent.hi[d] - 0.5 * extent.lo[d]);
        const double x = 0.5 * extent.lo[0], y = 0.5 * extent.lo[1], z = 0.5 * extent.lo[2];
        const ORBI_LUMO25D::GSS_HC3 curve(0.0, 0.0, 0.0, size, size, size, ORBI_LUMO25D::KeyedPosition::keyBits);
        return [curve, x, y, z](const double(&p)[3]) {
            return curve.getIndex(0.5 * p[0] - x, 0.5 * p[1] - y, 0.5 * p[2] - z);
        };
    });
}

void RTree::query(double xmin, double ymin, double zmin, double xmax, double ymax, double zmax,
                  std::vector<std::size_t>& vIndices) const
{
    if (!(xmin <= xmax && ymin <= ymax && zmin <= zmax)) return;
    build();
    tree.forEachIntersecting({{xmin, ymin, zmin}, {xmax, ymax, zmax}},
                             [&vIndices](std::size_t index) { vIndices.push_back(index); });
}

} // namespace ORBI_LOCATE3
