// Times constraints; the peers are CGAL's, when it is there.
//
//     constraints [--rounds N] [--data DIRECTORY]
//
// All contestants get the same input in turns, each in a process of its own. DIRECTORY has surfaces NAME_points.xyz with
// NAME_breaklines.seg (a line "x y z x y z" for each segment), and polygons NAME.rings (a line "R polygon ring n", then
// n lines "x y z").

#include "constraints.h"
#include "inputs.h"

#include "ConstraintGraph2.h"
#include "Lumo_2D.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <memory>
#include <random>
#include <string>

using namespace ORBI_LUMO25D;

namespace benchmarks
{

Measurement lumoConstrained(const Breaklines& input, std::size_t repetitions)
{
    const auto build = [&input] {
        auto pLumo = std::make_unique<Lumo_2D>(input.vPoints.size());
        pLumo->insert(input.vPoints);
        pLumo->createConstraint(input.vSegments, CIS_CONSTRAINED_DELAUNAY);
        return pLumo;
    };
    return measureRepeated(
        build, [](const Lumo_2D& lumo) { return lumo.numberOfPoints(); }, repetitions);
}

} // namespace benchmarks

using namespace benchmarks;

namespace
{

// ---- inputs ---------------------------------------------------------------------------------------------------------

/// Each in a cell of its own.
Breaklines shortSegments(std::size_t numPoints, std::size_t numSegments)
{
    Breaklines result;
    result.vPoints = uniform(numPoints);
    const auto side = static_cast<std::size_t>(std::ceil(std::sqrt(static_cast<double>(numSegments))));
    std::mt19937_64 random(7);
    std::uniform_real_distribution<double> offset(0.05, 0.95);
    for (std::size_t i : permutation(numSegments, 3)) {
        const auto at = [&] {
            return Point2((static_cast<double>(i % side) + offset(random)) / static_cast<double>(side),
                          (static_cast<double>(i / side) + offset(random)) / static_cast<double>(side), 0.0);
        };
        const Point2 a = at();
        result.vSegments.emplace_back(a, at());
    }
    return result;
}

/// A wavy ring.
Breaklines ring(std::size_t n)
{
    Breaklines result;
    const auto at = [n](std::size_t i) {
        const double t = 2.0 * 3.14159265358979 * static_cast<double>(i % n) / static_cast<double>(n);
        const double r = 1.0 + 0.3 * std::sin(9.0 * t) + 0.01 * std::sin(3001.0 * t);
        return Point2(r * std::cos(t), r * std::sin(t), 0.0);
    };
    for (std::size_t i = 0; i < n; ++i) {
        result.vSegments.emplace_back(at(i), at(i + 1));
    }
    return result;
}

/// Chords of a circle, of which a third of all pairs cross.
Breaklines chords(std::size_t n)
{
    Breaklines result;
    std::mt19937_64 random(11);
    std::uniform_real_distribution<double> angle(0.0, 2.0 * 3.14159265358979);
    const auto at = [&] {
        const double t = angle(random);
        return Point2(std::cos(t), std::sin(t), 0.0);
    };
    for (std::size_t i = 0; i < n; ++i) {
        const Point2 a = at();
        result.vSegments.emplace_back(a, at());
    }
    return result;
}

Breaklines surface(const std::string& pointsFile, const std::string& segmentsFile)
{
    Breaklines result;
    result.vPoints = fromFile(pointsFile);
    std::ifstream stream(segmentsFile);
    double a[6];
    while (stream >> a[0] >> a[1] >> a[2] >> a[3] >> a[4] >> a[5]) {
        result.vSegments.emplace_back(Point2(a[0], a[1], a[2]), Point2(a[3], a[4], a[5]));
    }
    return result;
}

Breaklines polygons(const std::string& filename)
{
    Breaklines result;
    std::ifstream stream(filename);
    std::string letter;
    std::size_t polygon = 0;
    std::size_t number = 0;
    std::size_t n = 0;
    while (stream >> letter >> polygon >> number >> n) {
        std::vector<Point2> vRing;
        for (std::size_t i = 0; i < n; ++i) {
            double x = 0.0;
            double y = 0.0;
            double z = 0.0;
            stream >> x >> y >> z;
            vRing.emplace_back(x, y, z);
        }
        for (std::size_t i = 0; i < n; ++i) {
            result.vSegments.emplace_back(vRing[i], vRing[(i + 1) % n]);
        }
    }
    return result;
}

// ---- the contest ----------------------------------------------------------------------------------------------------

struct Case
{
    std::string name;
    Breaklines input;
    bool bCrossing;
    std::size_t repetitions;
};

void run(const Case& c, int numRounds)
{
    std::vector<std::pair<const char*, std::function<Measurement()>>> vContestants;
    vContestants.emplace_back("ours", [&c] { return lumoConstrained(c.input, c.repetitions); });
#ifdef LUMO25D_WITH_CGAL
    vContestants.emplace_back("CGAL", [&c] { return cgalConstrained(c.input, c.bCrossing, c.repetitions); });
    if (c.bCrossing) vContestants.emplace_back("CGAL plus", [&c] { return cgalPlus(c.input, c.repetitions); });
#endif
    std::vector<std::vector<double>> vvWall(vContestants.size());
    std::vector<Measurement> vLast(vContestants.size());
    for (int round = 0; round < numRounds; ++round) {
        for (std::size_t i = 0; i < vContestants.size(); ++i) {
            vLast[i] = inChild(vContestants[i].second);
            vvWall[i].push_back(vLast[i].work.wall);
        }
    }
    const double ours = median(vvWall[0]);
    for (std::size_t i = 0; i < vContestants.size(); ++i) {
        const double wall = median(vvWall[i]);
        if (i > 0) addFigure(c.name, ours, vContestants[i].first, wall);
        std::printf("| %s | %s | %.4f | %.2f | %llu | %.0f |\n", c.name.c_str(), vContestants[i].first, wall,
                    wall / ours, vLast[i].sum, vLast[i].heapBytes / 1e6);
        std::fflush(stdout);
    }
}

std::vector<Case> casesFrom(const std::filesystem::path& directory)
{
    std::vector<Case> vCases;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(directory)) {
        const std::string path = entry.path().string();
        const std::string ending = "_points.xyz";
        if (entry.path().extension() == ".rings") {
            vCases.push_back({entry.path().stem().string(), polygons(path), true, 5});
        } else if (path.size() > ending.size() &&
                   path.compare(path.size() - ending.size(), ending.size(), ending) == 0) {
            const std::string base = path.substr(0, path.size() - ending.size());
            vCases.push_back(
                {std::filesystem::path(base).filename().string(), surface(path, base + "_breaklines.seg"), false, 20});
        }
    }
    // What takes less than a millisecond is not measured by this.
    const auto isSmall = [](const Case& c) { return c.input.vSegments.size() < 1000; };
    vCases.erase(std::remove_if(vCases.begin(), vCases.end(), isSmall), vCases.end());
    return vCases;
}

} // namespace

int main(int argc, char** argv)
{
    int numRounds = 3;
    std::string directory;
    for (int i = 1; i + 1 < argc; i += 2) {
        if (std::strcmp(argv[i], "--rounds") == 0) numRounds = std::max(1, std::atoi(argv[i + 1]));
        if (std::strcmp(argv[i], "--data") == 0) directory = argv[i + 1];
    }
    std::cout.rdbuf(nullptr); // real data has segments without length, and each is worth a warning
    settleMemory(2000000000);
    std::printf("| case | contestant | s | x | vertices | heap MB |\n|---|---|---|---|---|---|\n");
    run({"1M points, 100k short segments", shortSegments(1000000, 100000), false, 1}, numRounds);
    run({"ring of 200k", ring(200000), false, 1}, numRounds);
    run({"2000 chords", chords(2000), true, 1}, numRounds);
    if (directory.empty()) return 0;
    for (const Case& c : casesFrom(directory)) {
        run(c, numRounds);
    }
    return 0;
}
