// Times the refinement of zones, beside CGAL's Delaunay_mesher_2 where that was found at build time.
//
//     meshes [--rounds N]
//
// All programs take turns, each measurement in a process of its own; medians over the rounds. Exit code 1 when we need more
// than 1.15 times the triangles that CGAL makes for the same domain, angle and lengths.

#include "meshes.h"

#include "Lumo_2D.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

using namespace ORBI_LUMO25D;

namespace benchmarks
{

Measurement lumoMesh(const MeshTask& task)
{
    Lumo_2D lumo;
    Zone2* const pZone =
        lumo.createZone(lumo.createConstraint(task.vSegments, CIS_CONSTRAINED_DELAUNAY, true), ZL_INSIDE);
    const double maxEdgeLength = task.maxEdgeLength > 0.0 ? task.maxEdgeLength : std::numeric_limits<double>::max();
    Measurement m = measureWork([&] {
        lumo.refine(pZone, task.minAngle, 1e-6, maxEdgeLength, true);
        return static_cast<unsigned long long>(0);
    });
    m.sum = pZone->getNumberOfTriangles();
    return m;
}

} // namespace benchmarks

namespace
{

using benchmarks::Measurement;
using benchmarks::MeshTask;

void addRing(std::vector<Segment2>& v, const std::vector<Point2>& vCorners)
{
    for (std::size_t i = 0; i < vCorners.size(); ++i) {
        v.emplace_back(vCorners[i], vCorners[(i + 1) % vCorners.size()]);
    }
}

/// Points on a circle whose radius goes up and down; clockwise for a hole.
std::vector<Point2> wavyRing(std::size_t n, double radius, bool bHole)
{
    std::vector<Point2> v;
    for (std::size_t i = 0; i < n; ++i) {
        const double t = 6.283185307179586 * static_cast<double>(i) / static_cast<double>(n);
        const double r = radius * (1.0 + 0.3 * std::sin(7.0 * t) + 0.05 * std::sin(83.0 * t));
        v.emplace_back(r * std::cos(t), r * std::sin(t), 0.0);
    }
    if (bHole) std::reverse(v.begin(), v.end());
    return v;
}

struct Case
{
    std::string name;
    MeshTask task;
};

std::vector<Case> cases()
{
    std::vector<Case> v;
    for (const double length : {0.01, 0.005, 0.00407, 0.0025}) {
        v.push_back({"square, 27 degrees, edges up to " + std::to_string(length), {{}, {}, 27.0, length}});
        addRing(v.back().task.vSegments, {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}});
    }
    for (const double angle : {20.0, 25.0, 27.0}) {
        v.push_back({"coast with a lake, " + std::to_string(int(angle)) + " degrees", {{}, {{0, 0, 0}}, angle, 0.0}});
        addRing(v.back().task.vSegments, wavyRing(20000, 1.0, false));
        addRing(v.back().task.vSegments, wavyRing(5000, 0.3, true));
    }
    v.push_back({"L, 25 degrees, edges up to 0.05", {{}, {}, 25.0, 0.05}});
    addRing(v.back().task.vSegments, {{0, 0, 0}, {4, 0, 0}, {4, 1, 0}, {1, 1, 0}, {1, 4, 0}, {0, 4, 0}});
    return v;
}

/// False when too many triangles were needed.
bool run(const Case& c, int numRounds)
{
    std::vector<double> vOurs, vTheirs;
    Measurement ours, theirs;
    for (int i = 0; i < numRounds; ++i) {
        ours = benchmarks::inChild([&c] { return benchmarks::lumoMesh(c.task); });
        vOurs.push_back(ours.work.user + ours.work.system);
#ifdef LUMO25D_WITH_CGAL
        theirs = benchmarks::inChild([&c] { return benchmarks::cgalMesh(c.task); });
        vTheirs.push_back(theirs.work.user + theirs.work.system);
#endif
    }
    const double seconds = benchmarks::median(vOurs);
    std::printf("| %s | %llu | %.3f | %.2f |", c.name.c_str(), ours.sum, seconds,
                seconds * 1e6 / static_cast<double>(ours.sum));
    const double ratio = vTheirs.empty() ? 0.0 : static_cast<double>(ours.sum) / static_cast<double>(theirs.sum);
    if (!vTheirs.empty()) {
        std::printf(" %.3f | %.2f | %.1f |", benchmarks::median(vTheirs), ratio, benchmarks::median(vTheirs) / seconds);
        benchmarks::addFigure(c.name, seconds, "CGAL", benchmarks::median(vTheirs));
    }
    std::printf("\n");
    std::fflush(stdout);
    return ratio <= 1.15;
}

} // namespace

int main(int argc, char** argv)
{
    int numRounds = 3;
    if (argc == 3 && std::strcmp(argv[1], "--rounds") == 0) numRounds = std::max(1, std::atoi(argv[2]));
    std::printf("| case | triangles | ours s | us a triangle | CGAL s | our triangles / CGAL's | times as fast |\n"
                "|---|---|---|---|---|---|---|\n");
    bool bOK = true;
    for (const Case& c : cases()) {
        bOK = run(c, numRounds) && bOK;
    }
    return bOK ? 0 : 1;
}
