#include "orbi_locate2/RTree.h"

#include "orbi_tools/HilbertCurve2.h"
#include "support/check.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace ORBI_LOCATE2
{

namespace
{

/// The curve wraps around at the upper border of its rectangle: points there belong inside.
double beyond(double lo, double hi)
{
    const double raised = hi + (0.5 * hi - 0.5 * lo) * 0x1p-15;
    return std::min(raised > hi ? raised : std::nextafter(hi, HUGE_VAL), std::numeric_limits<double>::max());
}

} // namespace

void RTree::addObject(std::size_t index, double xmin, double ymin, double xmax, double ymax)
{
    LUMO_CHECK(xmin <= xmax, "xmin<=xmax");
    LUMO_CHECK(ymin <= ymax, "ymin<=ymax");
    LUMO_CHECK(std::isfinite(xmin) && std::isfinite(ymin) && std::isfinite(xmax) && std::isfinite(ymax),
               "the box is finite");
    tree.add(index, {{xmin, ymin}, {xmax, ymax}});
}

void RTree::build() const
{
    tree.build([](const ORBI_LUMO25D::BoxN<2>& extent) {
        const ORBI_LUMO25D::HilbertCurve2 curve(extent.lo[0], extent.lo[1], beyond(extent.lo[0], extent.hi[0]),
                                                beyond(extent.lo[1], extent.hi[1]),
                                                ORBI_LUMO25D::KeyedPosition::keyBits);
        return [curve](const double(&p)[2]) { return curve.index(p[0], p[1]); };
    });
}

} // namespace ORBI_LOCATE2
