#include "competitors.h"

#include <boost/polygon/voronoi.hpp>

#include <algorithm>
#include <cstdint>
#include <memory>

namespace benchmarks
{

Measurement boostBuild(const Points& vPoints, std::size_t repetitions)
{
    double min = vPoints[0].x();
    double max = min;
    for (const ORBI_LUMO25D::Point2& p : vPoints) {
        min = std::min({min, p.x(), p.y()});
        max = std::max({max, p.x(), p.y()});
    }
    const double scale = max > min ? 2147483000.0 / (max - min) : 1.0;
    const auto rounded = [=](double d) { return static_cast<std::int32_t>((d - min) * scale - 1073741500.0); };
    std::vector<boost::polygon::point_data<std::int32_t>> vInput;
    vInput.reserve(vPoints.size());
    for (const ORBI_LUMO25D::Point2& p : vPoints) {
        vInput.emplace_back(rounded(p.x()), rounded(p.y()));
    }
    const auto build = [&vInput] {
        auto pDiagram = std::make_unique<boost::polygon::voronoi_diagram<double>>();
        boost::polygon::construct_voronoi(vInput.begin(), vInput.end(), pDiagram.get());
        return pDiagram;
    };
    // Other points after rounding, hence another number of cells: nothing to compare.
    return measureRepeated(
        build, [](const auto&) { return 0ull; }, repetitions);
}

} // namespace benchmarks
