// Times saved states beside the triangulation that they spare, and files for other programs.
//
//     saving [--points N] [--rounds N]
//
// Uniform points with a tenth as many constraint segments, in rings that don't touch; the web page has half of the points,
// which make as many triangles as there are points here. Times are medians of the rounds; files lie in the system's cache.

#include "inputs.h"
#include "measure.h"

#include "Lumo_2D.h"
#include "freeFunctions.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <vector>

using namespace ORBI_LUMO25D;
using benchmarks::Times;

namespace
{

constexpr std::size_t ringSize = 100;
std::size_t settledBytes = 0;

/// Rings of that many segments, each in a cell of its own.
std::vector<std::vector<Segment2>> rings(std::size_t numSegments)
{
    const auto side = static_cast<std::size_t>(std::ceil(std::sqrt(static_cast<double>(numSegments) / ringSize)));
    std::vector<std::vector<Segment2>> vvRings;
    for (std::size_t i = 0; i < numSegments / ringSize; ++i) {
        const double x = (static_cast<double>(i % side) + 0.5) / static_cast<double>(side);
        const double y = (static_cast<double>(i / side) + 0.5) / static_cast<double>(side);
        vvRings.emplace_back();
        generateCircle(ringSize, Point2(x, y, 0), 0.4 / static_cast<double>(side), vvRings.back());
    }
    return vvRings;
}

/// What one kind of work took in all rounds, and the size of its file.
struct Work
{
    const char* name;
    std::vector<Times> vTimes;
    double megabytes = 0.0;

    /// Memory that the system has taken back meanwhile is fetched beforehand.
    template <class F>
    bool time(const F& f)
    {
        benchmarks::settleMemory(settledBytes);
        const Times start = Times::now();
        const bool bOK = f();
        vTimes.push_back(Times::now() - start);
        return bOK;
    }
    double median(double (*value)(const Times&)) const
    {
        std::vector<double> v;
        for (const Times& t : vTimes) v.push_back(value(t));
        std::sort(v.begin(), v.end());
        return v[v.size() / 2];
    }
    double wall() const
    {
        return median([](const Times& t) { return t.wall; });
    }
    double user() const
    {
        return median([](const Times& t) { return t.user; });
    }
    double kernel() const
    {
        return median([](const Times& t) { return t.system; });
    }
};

double megabytesOf(const std::string& filename)
{
    return static_cast<double>(std::filesystem::file_size(filename)) * 1e-6;
}

struct Round
{
    Work triangulate{"triangulate", {}}, save{"save", {}}, load{"load", {}}, read{"read the bytes", {}},
        obj{"OBJ file", {}}, geomview{"Geomview file", {}}, page{"web page", {}};
};

/// The work of writing a file that another program reads.
template <class F>
bool timeFile(Work& work, const std::string& filename, const F& write)
{
    const bool bOK = work.time([&] { return write(filename.c_str()); });
    work.megabytes = megabytesOf(filename);
    std::filesystem::remove(filename);
    return bOK;
}

/// False when what was loaded differs.
bool run(const std::vector<Point2>& vPoints, const std::vector<Segment2>& vSegments, const std::vector<Segment2>& vRing,
         const char* filename, Round& round)
{
    Lumo_2D lumo(vPoints.size() + vSegments.size());
    round.triangulate.time([&] {
        lumo.insert(vPoints);
        return lumo.createConstraint(vSegments, CIS_CONSTRAINED_DELAUNAY) != nullptr;
    });
    const std::vector<Zone2*> vZones{
        lumo.createZone(lumo.createConstraint(vRing, CIS_CONSTRAINED_DELAUNAY), ZL_INSIDE)};
    bool bOK = round.save.time([&] { return lumo.saveTriangulation(filename, vZones); });
    round.save.megabytes = megabytesOf(filename);

    std::unique_ptr<Lumo_2D> pLoaded;
    std::vector<Zone2*> vLoaded;
    bOK = round.load.time([&] {
        pLoaded = std::make_unique<Lumo_2D>();
        return pLoaded->load(filename, vLoaded);
    }) && bOK;
    bOK = bOK && pLoaded->numberOfPoints() == lumo.numberOfPoints() &&
          pLoaded->numberOfTriangles() == lumo.numberOfTriangles() &&
          vLoaded[0]->getNumberOfTriangles() == vZones[0]->getNumberOfTriangles();
    pLoaded.reset();

    bOK = round.read.time([&] { // what a reading of the bytes alone costs
        std::FILE* const pFile = std::fopen(filename, "rb");
        if (pFile == nullptr) return false;
        std::vector<char> vBytes(std::filesystem::file_size(filename));
        const std::size_t numRead = std::fread(vBytes.data(), 1, vBytes.size(), pFile);
        std::fclose(pFile);
        return numRead == vBytes.size();
    }) && bOK;

    const std::string other = std::string(filename) + ".other";
    bOK = timeFile(round.obj, other, [&](const char* name) { return lumo.writeObj(name); }) && bOK;
    bOK = timeFile(round.geomview, other,
                   [&](const char* name) {
                       lumo.showGeomview(name);
                       return true;
                   }) &&
          bOK;
    Lumo_2D half;
    half.insert(
        std::vector<Point2>(vPoints.begin(), vPoints.begin() + static_cast<std::ptrdiff_t>(vPoints.size() / 2)));
    return timeFile(round.page, other, [&](const char* name) { return half.writeWebScene(name); }) && bOK;
}

} // namespace

int main(int argc, char** argv)
{
    const std::size_t numPoints = benchmarks::option(argc, argv, "--points", 1000000);
    const int numRounds = static_cast<int>(benchmarks::option(argc, argv, "--rounds", 5));
    const auto vPoints = benchmarks::uniform(numPoints);
    const auto vvRings = rings(numPoints / 10);
    std::vector<Segment2> vSegments;
    for (const auto& vRing : vvRings) vSegments.insert(vSegments.end(), vRing.begin(), vRing.end());
    const std::string filename = (std::filesystem::temp_directory_path() / "lumo25d_saving.bin").string();
    settledBytes = 500 * numPoints;
    Round round;
    bool bOK = true;
    for (int i = 0; i < numRounds; ++i) {
        bOK = run(vPoints, vSegments, vvRings.front(), filename.c_str(), round) && bOK;
    }
    std::printf(
        "| %zu points, %zu segments | wall s | of triangulating | user s | kernel s | CPU, of triangulating | MB |\n"
        "|---|---|---|---|---|---|---|\n",
        numPoints, vSegments.size());
    Work& whole = round.triangulate;
    for (Work* p : {&whole, &round.save, &round.load, &round.read, &round.obj, &round.geomview, &round.page}) {
        std::printf("| %s | %.3f | %.2f | %.3f | %.3f | %.2f | %.1f |\n", p->name, p->wall(), p->wall() / whole.wall(),
                    p->user(), p->kernel(), (p->user() + p->kernel()) / (whole.user() + whole.kernel()), p->megabytes);
    }
    for (Work* p : {&round.save, &round.load}) benchmarks::addFigure(p->name, p->wall(), "triangulating", whole.wall());
    std::filesystem::remove(filename);
    if (!bOK) std::printf("DIFFERENT RESULTS\n");
    return bOK ? 0 : 1;
}
