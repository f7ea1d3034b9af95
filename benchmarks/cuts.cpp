// Times knife cuts and draped lines in a large mesh: the time for each triangle that is met.
//
//     cuts [--points N] [--rounds N]
//
// Knives of different lengths, each kind in a mesh of its own. Times are the best of the rounds.

#include "inputs.h"
#include "measure.h"

#include "Lumo_2D.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <vector>

using namespace ORBI_LUMO25D;
using benchmarks::Times;

namespace
{

std::vector<Segment2> knives(int num, double length)
{
    std::vector<Segment2> v;
    for (int i = 0; i < num; ++i) {
        const double angle = 2.4 * i, radius = 0.45 * (1.0 - length) * std::sqrt((i + 0.5) / num);
        const double x = 0.5 + radius * std::cos(angle), y = 0.5 + radius * std::sin(angle);
        const double dx = 0.5 * length * std::cos(1.7 * angle), dy = 0.5 * length * std::sin(1.7 * angle);
        v.emplace_back(Point2(x - dx, y - dy, 0), Point2(x + dx, y + dy, 0));
    }
    return v;
}

struct Row
{
    double drapeTime = std::numeric_limits<double>::max();
    double cutTime = std::numeric_limits<double>::max();
    std::size_t numPieces = 0;
    std::size_t numNew = 0;
};

void measure(std::size_t numPoints, int num, double length, int numRounds)
{
    const std::vector<Segment2> vKnives = knives(num, length);
    Row row;
    for (int i = 0; i < numRounds; ++i) {
        Lumo_2D lumo(numPoints);
        lumo.insert(benchmarks::uniform(numPoints));
        const std::size_t before = lumo.numberOfPoints();
        std::vector<Segment2> vPieces;
        const Times start = Times::now();
        lumo.drape(vKnives, vPieces, -1.0);
        const Times draped = Times::now();
        lumo.cutTriangles(vKnives, false);
        row.cutTime = std::min(row.cutTime, (Times::now() - draped).wall);
        row.drapeTime = std::min(row.drapeTime, (draped - start).wall);
        row.numPieces = vPieces.size();
        row.numNew = lumo.numberOfPoints() - before;
    }
    std::printf("| %6d of length %-6g | %9zu | %8.2f | %6.0f | %9zu | %8.2f | %6.0f |\n", num, length, row.numPieces,
                row.drapeTime * 1e3, row.drapeTime * 1e9 / static_cast<double>(row.numPieces), row.numNew,
                row.cutTime * 1e3, row.cutTime * 1e9 / static_cast<double>(row.numNew));
    std::fflush(stdout);
}

} // namespace

int main(int argc, char** argv)
{
    const std::size_t numPoints = benchmarks::option(argc, argv, "--points", 1000000);
    const int numRounds = static_cast<int>(benchmarks::option(argc, argv, "--rounds", 3));
    benchmarks::settleMemory(std::size_t(1) << 30);
    std::printf("| knives | pieces of drape | ms | ns a piece | vertices of cut | ms | ns a vertex |\n"
                "|---|---|---|---|---|---|---|\n");
    measure(numPoints, 1, 0.9, numRounds);
    measure(numPoints, 10, 0.9, numRounds);
    measure(numPoints, 100, 0.09, numRounds);
    measure(numPoints, 10000, 0.009, numRounds);
    return 0;
}
