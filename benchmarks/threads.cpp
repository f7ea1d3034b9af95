// What threads give: bulk insertions on several threads against one, in turns. See README.md.

#include "inputs.h"
#include "measure.h"

#include "Lumo_2D.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace
{

using namespace benchmarks;
using ORBI_LUMO25D::Lumo_2D;

struct Options
{
    int rounds = 7;
    std::vector<int> vThreads{1, 2};
    std::vector<std::string> vCases;
};

struct Case
{
    const char* name;
    std::size_t numPoints;
    Points (*make)(std::size_t);
};

Points gridShuffled(std::size_t n)
{
    return grid(n, true);
}

/// Every tenth point on the rim of a disk, the others inside.
Points rimmedDisk(std::size_t n)
{
    Points vPoints = circle(n / 10);
    for (const auto& p : uniform(2 * n)) {
        const ORBI_LUMO25D::Point2 q(2.0 * p.x() - 1.0, 2.0 * p.y() - 1.0, 0.0);
        if (q.x() * q.x() + q.y() * q.y() < 1.0 && vPoints.size() < n) vPoints.push_back(q);
    }
    return vPoints;
}

const Case aCases[] = {
    {"uniform20k", 20000, uniform},
    {"uniform100k", 100000, uniform},
    {"uniform1M", 1000000, uniform},
    {"uniform5M", 5000000, uniform},
    {"clusters1M", 1000000, clusters},
    {"scanlines1M", 1000000, scanLines},
    {"gridshuffled1M", 1000000, gridShuffled},
    {"rimmed1M", 1000000, rimmedDisk},
    {"circle1M", 1000000, circle},
};

Measurement build(const Points& vPoints, int numThreads)
{
    const auto make = [&] {
        auto pLumo = std::make_unique<Lumo_2D>();
        pLumo->setNumCPU(numThreads);
        pLumo->insert(vPoints);
        return pLumo;
    };
    const auto count = [](const Lumo_2D& lumo) { return 4ull * lumo.numberOfPoints() + lumo.numberOfTriangles(); };
    return measureRepeated(make, count, std::max<std::size_t>(1, 300000 / vPoints.size()));
}

double medianWall(const std::vector<Measurement>& v)
{
    std::vector<double> vWall;
    for (const Measurement& m : v) vWall.push_back(m.work.wall);
    return median(vWall);
}

/// Prints a line for each number of threads; false when the results differ.
bool runCase(const Case& c, const Options& options)
{
    const Points vPoints = c.make(c.numPoints);
    std::vector<std::vector<Measurement>> vvResults(options.vThreads.size());
    for (int round = 0; round < options.rounds; ++round) {
        for (std::size_t i = 0; i < options.vThreads.size(); ++i) {
            settleMemory(500 * vPoints.size());
            vvResults[i].push_back(inChild([&] { return build(vPoints, options.vThreads[i]); }));
        }
    }
    const double first = medianWall(vvResults[0]);
    for (std::size_t i = 0; i < vvResults.size(); ++i) {
        const double wall = medianWall(vvResults[i]);
        const double speedup = first / wall;
        const double p = options.vThreads[i];
        const double peak = vvResults[i][0].peakBytes / static_cast<double>(vPoints.size());
        std::printf("| %s | %d | %.4f | %.2f | ", i == 0 ? c.name : "", options.vThreads[i], wall, speedup);
        if (i > 0 && p > 1.0) std::printf("%.1f %%", 100.0 * (1.0 / speedup - 1.0 / p) / (1.0 - 1.0 / p));
        std::printf(" | %.0f |\n", peak);
        if (i > 0)
            addFigure(c.name + (", " + std::to_string(options.vThreads[i])) + " threads", wall, "1 thread", first);
        if (vvResults[i][0].sum != vvResults[0][0].sum) {
            std::printf("| %s | DIFFERENT RESULTS |\n", c.name);
            return false;
        }
    }
    std::fflush(stdout);
    return true;
}

Options readOptions(int argc, char** argv)
{
    Options options;
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        if (word == "--rounds" && i + 1 < argc) {
            options.rounds = std::max(1, std::atoi(argv[++i]));
        } else if (word == "--threads" && i + 1 < argc) {
            options.vThreads = {1};
            for (const char* p = argv[++i]; *p != '\0';) {
                char* pEnd = nullptr;
                const long numThreads = std::strtol(p, &pEnd, 10);
                if (pEnd == p || numThreads < 1) break;
                if (numThreads > 1) options.vThreads.push_back(static_cast<int>(numThreads));
                p = *pEnd == ',' ? pEnd + 1 : pEnd;
            }
        } else {
            options.vCases.push_back(word);
        }
    }
    return options;
}

} // namespace

int main(int argc, char** argv)
{
    const Options options = readOptions(argc, argv);
    std::printf("| case | threads | wall s | x | serial | peak B/point |\n|---|---|---|---|---|---|\n");
    bool bAgree = true;
    for (const Case& c : aCases) {
        const auto& v = options.vCases;
        if (v.empty() || std::find(v.begin(), v.end(), c.name) != v.end()) bAgree = runCase(c, options) && bAgree;
    }
    return bAgree ? 0 : 1;
}
