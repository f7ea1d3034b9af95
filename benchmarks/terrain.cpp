// Times contours and cut and fill.
//
//     terrain [--rounds N] [--side N] [--gdal]
//
// Contours of a hilly grid of 708 by 708 points by default, a million triangles: the triangles of 200 heights by the index
// (and a few beside them) against a look at every triangle, their contours, and a set of 100 heights; with --gdal,
// gdal_contour makes the same set from the same grid. Cut and fill of two hilly grids of 100, 200, 300, 400 and 800 points a
// side, on the same places, shifted by half a cell and by a tenth, and on random places, so that the growth shows.

#include "measure.h"

#include "CAF_Component.h"
#include "CutAndFill.h"
#include "IsoContours.h"
#include "Lumo_2D.h"
#include "terrain/HeightIndex.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <iostream>
#include <memory>
#include <random>
#include <string>
#include <vector>

using namespace ORBI_LUMO25D;
using benchmarks::Measurement;
using benchmarks::median;
using benchmarks::Times;

namespace
{

double hills(double x, double y)
{
    return 500.0 + 100.0 * std::sin(0.021 * x) * std::cos(0.017 * y) + 20.0 * std::sin(0.11 * x + 0.07 * y);
}

std::vector<Point2> grid(std::size_t side, double shift, double jitter, double change, unsigned seed)
{
    std::mt19937_64 random(seed);
    std::uniform_real_distribution<double> unit(0.0, jitter);
    std::vector<Point2> v;
    v.reserve(side * side);
    for (std::size_t i = 0; i < side * side; ++i) {
        const double x = static_cast<double>(i % side) + shift + (jitter > 0.0 ? unit(random) : 0.0);
        const double y = static_cast<double>(i / side) + shift + (jitter > 0.0 ? unit(random) : 0.0);
        v.emplace_back(x, y, hills(x, y) + change * std::sin(0.05 * x - 0.08 * y));
    }
    return v;
}

/// Median over the rounds, each in a process of its own.
double time(std::size_t rounds, const std::function<Measurement()>& f, unsigned long long& sum)
{
    std::vector<double> vWall;
    for (std::size_t i = 0; i < rounds; ++i) {
        benchmarks::settleMemory(std::size_t(1) << 29);
        const Measurement m = benchmarks::inChild(f);
        vWall.push_back(m.work.wall);
        sum = m.sum;
    }
    return median(vWall);
}

std::vector<double> heights(std::size_t n)
{
    std::vector<double> v;
    for (std::size_t i = 0; i < n; ++i) v.push_back(385.03 + 230.0 * static_cast<double>(i) / static_cast<double>(n));
    return v;
}

struct Ground
{
    Lumo_2D lumo;
    std::vector<Triangle2*> vT;

    explicit Ground(std::size_t side)
    {
        lumo.insert(grid(side, 0.0, 0.0, 0.0, 1));
        lumo.getTrianglePointers(vT);
    }
};

std::size_t numSegments(const std::vector<std::vector<Segment2>>& vvContours)
{
    std::size_t n = 0;
    for (const auto& vLine : vvContours) n += vLine.size();
    return n;
}

/// What a program without an index has to do at least: find the triangles of each height.
std::size_t scan(const std::vector<Triangle2*>& vT, double height)
{
    std::size_t n = 0;
    for (const Triangle2* pT : vT) {
        const auto [low, high] = std::minmax({pT->getCorner(0)->z(), pT->getCorner(1)->z(), pT->getCorner(2)->z()});
        if (low < height && height < high) ++n;
    }
    return n;
}

void timeLookups(std::size_t side, std::size_t rounds)
{
    unsigned long long found = 0, lookedUp = 0, scanned = 0;
    const double lookups = time(
        rounds,
        [side] {
            const Ground ground(side);
            const HeightIndex heightIndex(ground.vT);
            return benchmarks::measureWork([&] {
                std::size_t n = 0;
                HeightIndex::Found search;
                for (const double height : heights(200)) {
                    heightIndex.findAt(height, search);
                    n += search.size;
                }
                return n;
            });
        },
        lookedUp);
    const double index = time(
        rounds,
        [side] {
            const Ground ground(side);
            const IsoContours iso(ground.vT);
            return benchmarks::measureWork([&] {
                std::size_t n = 0;
                for (const double height : heights(200)) {
                    std::vector<std::vector<Segment2>> vvContours;
                    iso.getContours(height, vvContours, false, true);
                    n += numSegments(vvContours);
                }
                return n;
            });
        },
        found);
    const double all = time(
        rounds,
        [side] {
            const Ground ground(side);
            return benchmarks::measureWork([&] {
                std::size_t n = 0;
                for (const double height : heights(200)) n += scan(ground.vT, height);
                return n;
            });
        },
        scanned);
    std::printf("| 200 heights: triangles by the index | %.4f | %llu triangles |\n", lookups, lookedUp);
    std::printf("| 200 heights: contours by the index, joined | %.4f | %llu segments |\n", index, found);
    benchmarks::addFigure("200 heights, triangles by the index", lookups, "scan of all triangles", all);
    std::printf("| 200 heights: triangles by a scan of all | %.4f | %llu triangles, %.1f times the index%s |\n", all,
                scanned, all / lookups, found == scanned && lookedUp >= scanned ? "" : ", DIFFERENT RESULTS");
}

void writeAsciiGrid(const char* filename, std::size_t side)
{
    std::ofstream file(filename);
    file.precision(17);
    file << "ncols " << side << "\nnrows " << side << "\nxllcenter 0\nyllcenter 0\ncellsize 1\n";
    for (std::size_t row = side; row-- > 0;) {
        for (std::size_t i = 0; i < side; ++i) file << hills(static_cast<double>(i), static_cast<double>(row)) << ' ';
        file << '\n';
    }
}

void timeContourSet(std::size_t side, std::size_t rounds, bool bGdal)
{
    unsigned long long found = 0, unused = 0;
    const double build = time(
        rounds,
        [side] {
            const Ground ground(side);
            return benchmarks::measureWork([&] { return IsoContours(ground.vT).getMaxHeight() > 0.0; });
        },
        unused);
    const double set = time(
        rounds,
        [side] {
            const Ground ground(side);
            std::unique_ptr<IsoContours> pIso; // destroyed after the time was taken, like the contours
            std::vector<std::vector<Segment2>> vvContours;
            return benchmarks::measureWork([&] {
                pIso = std::make_unique<IsoContours>(ground.vT);
                for (const double height : heights(100)) pIso->getContours(height, vvContours, false, true);
                return numSegments(vvContours);
            });
        },
        found);
    std::printf("| index | %.4f | |\n", build);
    std::printf("| 100 heights: contours, index included | %.4f | %llu segments |\n", set, found);
    if (!bGdal) return;
    writeAsciiGrid("terrain_grid.asc", side);
    std::string command = "gdal_contour -q -f MEMORY -a z -fl";
    for (const double height : heights(100)) command += " " + std::to_string(height);
    command += " terrain_grid.asc contours";
    const double gdal = time(
        rounds,
        [&] { return benchmarks::measureWork([&] { return static_cast<std::size_t>(std::system(command.c_str())); }); },
        unused);
    std::printf("| 100 heights: gdal_contour, its start included | %.4f | exit code %llu, %.1f times ours |\n", gdal,
                unused, gdal / set);
    benchmarks::addFigure("100 contours of a million triangles", set, "gdal_contour", gdal);
}

void timeCutAndFill(const char* name, double shift, double jitter, std::size_t rounds)
{
    for (const std::size_t side : {100U, 200U, 300U, 400U, 800U}) {
        unsigned long long components = 0;
        const double seconds = time(
            side > 400 ? 1 : rounds,
            [=] {
                Lumo_2D before, after;
                before.insert(grid(side, 0.0, jitter, 0.0, 1));
                after.insert(grid(side, shift, jitter, 2.0, 2));
                ConstraintGraph2* const pNone = nullptr;
                Zone2* const pBefore = before.createZone(pNone, ZL_GLOBAL);
                Zone2* const pAfter = after.createZone(pNone, ZL_GLOBAL);
                std::unique_ptr<CutAndFill> pCaf; // destroyed after the time was taken
                return benchmarks::measureWork([&]() -> std::size_t {
                    pCaf = std::make_unique<CutAndFill>(pBefore, pAfter, 0.0);
                    return pCaf->go() ? pCaf->getNumberOfComponents() : 0;
                });
            },
            components);
        const double n = static_cast<double>(side * side);
        std::printf("| %s | %zu by %zu | %.3f | %.0f | %llu |\n", name, side, side, seconds,
                    seconds * 1e9 / (n * std::log2(n)), components);
        std::fflush(stdout);
    }
}

} // namespace

int main(int argc, char** argv)
{
    std::size_t rounds = 3, side = 708;
    bool bGdal = false;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--gdal") == 0) {
            bGdal = true;
        } else if (i + 1 < argc && std::strcmp(argv[i], "--rounds") == 0) {
            rounds = std::max(1UL, std::strtoul(argv[++i], nullptr, 10));
        } else if (i + 1 < argc && std::strcmp(argv[i], "--side") == 0) {
            side = std::max(2UL, std::strtoul(argv[++i], nullptr, 10));
        } else {
            std::cerr << "usage: terrain [--rounds N] [--side N] [--gdal]\n";
            return 2;
        }
    }
    std::printf("| grid of %zu by %zu points, %zu triangles | s | |\n|---|---|---|\n", side, side,
                2 * (side - 1) * (side - 1));
    timeLookups(side, rounds);
    timeContourSet(side, rounds, bGdal);
    std::printf("\n| cut and fill | points | s | ns per n log2 n | components |\n|---|---|---|---|---|\n");
    timeCutAndFill("same places", 0.0, 0.0, rounds);
    timeCutAndFill("half a cell", 0.5, 0.0, rounds);
    timeCutAndFill("a tenth of a cell", 0.1, 0.0, rounds);
    timeCutAndFill("random", 0.0, 0.9, rounds);
    return 0;
}
