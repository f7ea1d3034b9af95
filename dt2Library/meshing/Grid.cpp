#include "meshing/Grid.h"

#include "engine/Dt2.h"
#include "support/check.h"

#include "Zone2.h"
#include "freeFunctions.h"

#include <algorithm>
#include <new>

namespace ORBI_LUMO25D
{

Grid::Grid(const PointSet& sPoints) : vGridPoints(sPoints.begin(), sPoints.end())
{
    timer("Grid::constructGrid()");
    constructGrid();
    timer("Grid::constructGrid()");
}

void Grid::Axis::construct(std::vector<double>& vValues)
{
    std::sort(vValues.begin(), vValues.end());
    vValues.erase(std::unique(vValues.begin(), vValues.end()), vValues.end());
    size = vValues.back() - vValues.front();
    num = std::min(vValues.size(), maxNum);
    // A single value has no steps: its cell is a line.
    const double cell = num == 1 ? 0.0 : size / static_cast<double>(num - 1);
    vBounds.reserve(num);
    for (std::size_t i = 0; i < num; ++i) {
        vBounds.push_back(static_cast<double>(i + 1) * cell + vValues.front());
    }
}

void Grid::constructGrid()
{
    LUMO_CHECK(!vGridPoints.empty(), "!vGridPoints.empty()");
    LUMO_CHECK(vGridPoints.size() <= std::numeric_limits<std::int32_t>::max(), "vGridPoints.size()<=INT32_MAX");
    std::vector<double> vX, vY;
    for (const Point2* p : vGridPoints) {
        vX.push_back(p->x());
        vY.push_back(p->y());
    }
    xAxis.construct(vX);
    yAxis.construct(vY);
    pCells.reset(static_cast<std::int32_t*>(std::calloc(xAxis.num * yAxis.num, sizeof(std::int32_t))));
    if (pCells == nullptr) throw std::bad_alloc();
    for (std::size_t k = 0; k < vGridPoints.size(); ++k) {
        const Point2& p = *vGridPoints[k];
        const auto qx_it = std::lower_bound(xAxis.vBounds.begin(), xAxis.vBounds.end(), p.x());
        const auto qy_it = std::lower_bound(yAxis.vBounds.begin(), yAxis.vBounds.end(), p.y());
        LUMO_CHECK(qx_it != xAxis.vBounds.end(), "qx_it!=mXCoordIdx.end()");
        LUMO_CHECK(qy_it != yAxis.vBounds.end(), "qy_it!=mYCoordIdx.end()");
        const auto i = static_cast<std::size_t>(qx_it - xAxis.vBounds.begin());
        const auto j = static_cast<std::size_t>(qy_it - yAxis.vBounds.begin());
        addToCell(j * xAxis.num + i, static_cast<std::int32_t>(k));
    }
}

void Grid::addToCell(std::size_t cell, std::int32_t index)
{
    const std::int32_t value = getCell(cell);
    if (value == emptyCell) {
        setCell(cell, index);
    } else if (value >= 0) {
        setCell(cell, -1 - static_cast<std::int32_t>(vBuckets.size()));
        vBuckets.push_back({value, index});
    } else {
        vBuckets[static_cast<std::size_t>(-1 - value)].push_back(index);
    }
}

double Grid::getHeight(std::int64_t i, std::int64_t j) const
{
    const auto clamped = [](std::int64_t k, std::size_t num) {
        return static_cast<std::size_t>(std::clamp<std::int64_t>(k, 0, static_cast<std::int64_t>(num) - 1));
    };
    return heightOf(getCell(clamped(j, yAxis.num) * xAxis.num + clamped(i, xAxis.num)));
}

double Grid::heightOf(std::int32_t value) const
{
    if (value == emptyCell) return std::numeric_limits<double>::max();
    if (value >= 0) return vGridPoints[static_cast<std::size_t>(value)]->z();
    const std::vector<std::int32_t>& vBucket = vBuckets[static_cast<std::size_t>(-1 - value)];
    double sum = 0.0;
    for (const std::int32_t index : vBucket) {
        sum += vGridPoints[static_cast<std::size_t>(index)]->z();
    }
    return sum / static_cast<double>(vBucket.size());
}

const Grid::Matrix& Grid::getMatrix()
{
    if (pMatrix) return *pMatrix;
    auto pNew = std::make_unique<Matrix>(xAxis.num, yAxis.num);
    for (std::size_t j = 0; j < yAxis.num; ++j) {
        for (std::size_t i = 0; i < xAxis.num; ++i) {
            const double height = heightOf(getCell(j * xAxis.num + i));
            constexpr auto largest = static_cast<double>(std::numeric_limits<float>::max());
            (*pNew)(i, j) = static_cast<float>(std::clamp(height, -largest, largest));
        }
    }
    pMatrix = std::move(pNew);
    return *pMatrix;
}

void Grid::writePoints(const char* name) const
{
    std::vector<double> vCoords;
    vCoords.reserve(3 * vGridPoints.size());
    for (const Point2* p : vGridPoints) {
        vCoords.insert(vCoords.end(), {p->x(), p->y(), p->z()});
    }
    Dt2 dt2(vGridPoints.size());
    dt2.insert(vGridPoints.size(), vCoords.data(), nullptr);
    Zone2(&dt2, ZL_GLOBAL).showGeomview(name, "1 1 1 0.5");
}

} // namespace ORBI_LUMO25D
