#include "competitors.h"

#include "Lumo_2D.h"

#include <memory>

using ORBI_LUMO25D::Lumo_2D;
using ORBI_LUMO25D::Point2;

namespace benchmarks
{

Measurement lumoBuild(const Points& vPoints, std::size_t repetitions)
{
    const auto build = [&vPoints] {
        auto pLumo = std::make_unique<Lumo_2D>();
        pLumo->insert(vPoints);
        return pLumo;
    };
    const auto count = [](const Lumo_2D& lumo) { return 4ull * lumo.numberOfPoints() + lumo.numberOfTriangles(); };
    return measureRepeated(build, count, repetitions);
}

Measurement lumoLocate(const Points& vPoints, const Points& vQueries)
{
    Lumo_2D lumo;
    lumo.insert(vPoints);
    return measureWork([&] {
        unsigned long long numFound = 0;
        for (const Point2& query : vQueries) {
            numFound += lumo.locate(query) != nullptr;
        }
        return numFound;
    });
}

Measurement lumoOneByOne(const Points& vPoints)
{
    const auto build = [&vPoints] {
        auto pLumo = std::make_unique<Lumo_2D>();
        for (const Point2& p : vPoints) {
            pLumo->insert(p);
        }
        return pLumo;
    };
    const auto count = [](const Lumo_2D& lumo) { return 4ull * lumo.numberOfPoints() + lumo.numberOfTriangles(); };
    return measureRepeated(build, count, 1);
}

Measurement lumoRemove(const Points& vPoints, const std::vector<std::size_t>& vPositions)
{
    Lumo_2D lumo;
    std::vector<Point2*> vHandles;
    lumo.insert(vPoints, vHandles);
    return measureWork([&] {
        for (const std::size_t position : vPositions) {
            lumo.remove(vHandles[position]);
        }
        return 4ull * lumo.numberOfPoints() + lumo.numberOfTriangles();
    });
}

} // namespace benchmarks
