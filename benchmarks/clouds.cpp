// Times the reduction of clouds: CloudPrepare beside a plain sort of as many 64-bit keys, EfficientModel on a terrain.
//
//     clouds [--rounds N] [--points N] [--terrain FILE.xyz]
//
// By default 10 million points; with 0, the terrain alone.

#include "inputs.h"
#include "measure.h"

#include "CloudPrepare.h"
#include "EfficientModel.h"
#include "Lumo_2D.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

using namespace ORBI_LUMO25D;
using benchmarks::Measurement;

namespace
{

/// A hilly cloud in the unit square; random order, or strip by strip.
std::unique_ptr<CloudPrepare> hills(std::size_t n)
{
    auto pCloud = std::make_unique<CloudPrepare>();
    std::mt19937_64 random(1);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    for (std::size_t i = 0; i < n; ++i) {
        const double x = unit(random), y = unit(random);
        pCloud->add(x, y, 0.1 * (x * (1.0 - x) + y * y) + 0.001 * unit(random), static_cast<std::int32_t>(i));
    }
    return pCloud;
}

Measurement timeSort(std::size_t n)
{
    std::vector<std::uint64_t> vKeys(n);
    std::mt19937_64 random(1);
    for (std::uint64_t& key : vKeys) key = random();
    return benchmarks::measureWork([&vKeys] {
        std::sort(vKeys.begin(), vKeys.end());
        return vKeys[vKeys.size() / 2];
    });
}

/// What work(cloud) takes; the memory is that above the cloud's own.
Measurement timeCloud(std::size_t n, const std::function<std::size_t(CloudPrepare&)>& work)
{
    const auto pCloud = hills(n);
    const double residentBefore = benchmarks::residentNow();
    Measurement m = benchmarks::measureWork([&] { return work(*pCloud); });
    m.peakBytes = benchmarks::residentPeak() - residentBefore;
    return m;
}

class Table
{
public:
    explicit Table(int numRounds_) : numRounds(numRounds_) {}

    /// Prints a line; returns the median time on the clock.
    double line(const char* name, std::size_t n, const std::function<Measurement()>& measure, double reference = 0.0)
    {
        std::vector<double> vWall;
        Measurement m;
        for (int round = 0; round < numRounds; ++round) {
            benchmarks::settleMemory(300 * n); // more than any case takes
            m = benchmarks::inChild(measure);
            vWall.push_back(m.work.wall);
        }
        const double wall = benchmarks::median(vWall);
        const auto size = static_cast<double>(n);
        std::printf("| %s | %zu | %.3f | %.0f | %.0f | %llu |", name, n, wall, 1e9 * wall / size, m.peakBytes / size,
                    m.sum);
        if (reference > 0.0) {
            std::printf(" %.2f |", wall / reference);
            benchmarks::addFigure(name, wall, "std::sort", reference);
        }
        std::printf("\n");
        std::fflush(stdout);
        return wall;
    }

private:
    int numRounds;
};

Measurement timeModel(const std::vector<Point2>& vPoints, double maxError)
{
    return benchmarks::measureWork([&] { return EfficientModel(vPoints).go(maxError); });
}

} // namespace

int main(int argc, char** argv)
{
    int numRounds = 3;
    std::size_t n = 10000000;
    std::string terrain = LUMO25D_TERRAIN_DIR "/jacksboro_srtm.xyz";
    for (int i = 1; i + 1 < argc; i += 2) {
        if (std::strcmp(argv[i], "--rounds") == 0) numRounds = std::max(1, std::atoi(argv[i + 1]));
        if (std::strcmp(argv[i], "--points") == 0) n = std::strtoull(argv[i + 1], nullptr, 10);
        if (std::strcmp(argv[i], "--terrain") == 0) terrain = argv[i + 1];
    }
    Table table(numRounds);
    std::printf("| case | points | s | ns a point | peak B/point | left | in sorts |\n|---|---|---|---|---|---|---|\n");
    if (n > 0) {
        const auto cloud = [n](const std::function<std::size_t(CloudPrepare&)>& work) {
            return [n, work] { return timeCloud(n, work); };
        };
        const double sort = table.line("std::sort of 64-bit keys", n, [n] { return timeSort(n); });
        table.line("cloud in memory", n, [n] {
            return benchmarks::measureRepeated([n] { return hills(n); },
                                               [](CloudPrepare& c) { return c.getNumPoints(); }, 1);
        });
        const double gridLength = 1e-3;
        const struct
        {
            const char* name;
            SumStrategy sum;
            ConvexHullStrategy hull;
        } aGrids[] = {{"grid, minimum", SMS_MINIMUM, CHS_NOHULL},
                      {"grid, median", SMS_MEDIAN, CHS_NOHULL},
                      {"grid, average", SMS_AVERAGE, CHS_NOHULL},
                      {"grid, average, hull", SMS_AVERAGE, CHS_MAXHULL}};
        for (const auto& g : aGrids) {
            table.line(g.name, n, cloud([g, gridLength](CloudPrepare& c) {
                           return c.uniformSimplifyGrid(gridLength, g.sum, g.hull, false);
                       }),
                       sort);
        }
        table.line("a tenth of the points", n, cloud([n](CloudPrepare& c) {
                       return c.uniformSimplifyNum(static_cast<std::ptrdiff_t>(n / 10), SMS_AVERAGE, CHS_NOHULL);
                   }),
                   sort);
        table.line("adaptive", n,
                   cloud([](CloudPrepare& c) { return c.adaptiveSimplify(0.0015, SMS_AVERAGE, CHS_NOHULL, false); }),
                   sort);
        for (const bool bClear : {false, true}) {
            table.line(bClear ? "insert, cloud cleared" : "insert, cloud kept", n, cloud([bClear](CloudPrepare& c) {
                           Lumo_2D lumo;
                           lumo.insert(&c, bClear);
                           return lumo.numberOfTriangles();
                       }),
                       sort);
        }
    }
    const std::vector<Point2> vTerrain = benchmarks::fromFile(terrain);
    for (const double maxError : {10.0, 3.0, 1.0, 0.0}) {
        const std::string name = "model, " + std::to_string(maxError) + " m";
        table.line(name.c_str(), vTerrain.size(), [&] { return timeModel(vTerrain, maxError); });
    }
    return 0;
}
