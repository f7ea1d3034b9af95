// Speed and memory against other libraries, in one run, in turns. See README.md.

#include "competitors.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <iostream>
#include <map>
#include <string>

namespace
{

using namespace benchmarks;

struct Options
{
    int rounds = 5;
    std::size_t numPoints = 1000000;
    bool bMore = false; ///< the slower peers too
    std::vector<std::string> vCases;
    std::vector<std::string> vFiles;
};

struct Contestant
{
    std::string name;
    std::function<Measurement()> measure;
};

/// One line of the table: the first contestant is ours, the second the one that it is compared with.
struct Case
{
    std::string name;
    std::size_t numPoints;     ///< of the triangulation
    std::size_t numOperations; ///< what a time or an amount is divided by
    std::vector<Contestant> vContestants;
    bool bBuilds; ///< memory and destruction mean something
};

/// The medians of a contestant's measurements.
struct Summary
{
    explicit Summary(const std::vector<Measurement>& v)
        : wall(of(v, [](const Measurement& m) { return m.work.wall; })),
          user(of(v, [](const Measurement& m) { return m.work.user; })),
          system(of(v, [](const Measurement& m) { return m.work.system; })),
          destruction(of(v, [](const Measurement& m) { return m.destruction.wall; })),
          heap(of(v, [](const Measurement& m) { return m.heapBytes; })),
          peak(of(v, [](const Measurement& m) { return m.peakBytes; }))
    {
    }

    double wall, user, system, destruction, heap, peak;

private:
    template <class Field>
    static double of(const std::vector<Measurement>& v, Field field)
    {
        std::vector<double> vValues;
        for (const Measurement& m : v) {
            vValues.push_back(field(m));
        }
        return median(vValues);
    }
};

void printHead()
{
    std::printf(
        "| case | | wall s | user s | system s | us a point | destruction s | heap B/point | peak B/point | wall x | "
        "user x |\n|---|---|---|---|---|---|---|---|---|---|---|\n");
}

/// Runs the contestants in turns and prints a line for each. False when their results differ.
bool runCase(const Case& c, int rounds)
{
    std::vector<std::vector<Measurement>> vvResults(c.vContestants.size());
    for (int round = 0; round < rounds; ++round) {
        for (std::size_t i = 0; i < c.vContestants.size(); ++i) {
            settleMemory(500 * c.numPoints); // more than any of them takes
            vvResults[i].push_back(inChild(c.vContestants[i].measure));
        }
    }
    const Summary ours(vvResults[0]);
    bool bAgree = true;
    const double n = static_cast<double>(c.numOperations);
    for (std::size_t i = 0; i < c.vContestants.size(); ++i) {
        const Summary s(vvResults[i]);
        std::printf("| %s | %s | %.4f | %.4f | %.4f | %.3f |", i == 0 ? c.name.c_str() : "",
                    c.vContestants[i].name.c_str(), s.wall, s.user, s.system, 1e6 * s.wall / n);
        if (c.bBuilds) {
            std::printf(" %.4f | %.0f | %.0f |", s.destruction, s.heap / n, s.peak / n);
        } else {
            std::printf(" | | |");
        }
        if (i > 0) {
            std::printf(" %.2f | %.2f |\n", s.wall / ours.wall, s.user / ours.user);
            addFigure(c.name, ours.wall, c.vContestants[i].name, s.wall);
        } else {
            std::printf(" | |\n");
        }
        const unsigned long long sum = vvResults[i][0].sum;
        if (sum != 0 && sum != vvResults[0][0].sum) bAgree = false;
    }
    if (!bAgree) std::printf("| %s | DIFFERENT RESULTS |\n", c.name.c_str());
    std::fflush(stdout);
    return bAgree;
}

Case buildCase(const std::string& name, const Points& vPoints, bool bMore)
{
    const std::size_t repetitions = std::max<std::size_t>(1, 300000 / vPoints.size());
    Case c{name, vPoints.size(), vPoints.size(), {}, true};
    c.vContestants.push_back({"ours", [&vPoints, repetitions] { return lumoBuild(vPoints, repetitions); }});
#if defined(LUMO25D_WITH_CGAL)
    c.vContestants.push_back({"CGAL", [&vPoints, repetitions] { return cgalBuild(vPoints, repetitions); }});
#endif
#if defined(LUMO25D_WITH_BOOST)
    if (bMore) {
        c.vContestants.push_back({"Boost", [&vPoints, repetitions] { return boostBuild(vPoints, repetitions); }});
    }
#else
    static_cast<void>(bMore);
#endif
    return c;
}

/// A case of another kind: two measurements of the same thing.
Case pairCase(const std::string& name, std::size_t numPoints, std::size_t numOperations, bool bBuilds,
              std::function<Measurement()> ours, [[maybe_unused]] std::function<Measurement()> cgal)
{
    Case c{name, numPoints, numOperations, {{"ours", std::move(ours)}}, bBuilds};
#if defined(LUMO25D_WITH_CGAL)
    c.vContestants.push_back({"CGAL", std::move(cgal)});
#endif
    return c;
}

using CaseRunner = std::function<bool(const Options&)>;

CaseRunner generated(const char* name, Points (*generate)(std::size_t), std::size_t factor = 1)
{
    return [=](const Options& options) {
        const Points vPoints = generate(factor * options.numPoints);
        return runCase(buildCase(name, vPoints, options.bMore), options.rounds);
    };
}

bool runFiles(const Options& options)
{
    bool bAgree = true;
    for (const std::string& path : options.vFiles) {
        const Points vPoints = fromFile(path);
        const std::string name = std::filesystem::path(path).filename().string();
        bAgree = runCase(buildCase(name, vPoints, options.bMore), options.rounds) && bAgree;
    }
    return bAgree;
}

bool runLocate(const Options& options)
{
    const Points vAll = uniform(2 * options.numPoints);
    const auto middle_it = vAll.begin() + static_cast<std::ptrdiff_t>(options.numPoints);
    const Points vPoints(vAll.begin(), middle_it);
    const Points vQueries(middle_it, vAll.end());
    return runCase(pairCase(
                       "locate, in random order", vPoints.size(), vQueries.size(), false,
                       [&] { return lumoLocate(vPoints, vQueries); }, [&] { return cgalLocate(vPoints, vQueries); }),
                   options.rounds);
}

bool runOneByOne(const Options& options)
{
    const Points vPoints = uniform(options.numPoints / 5);
    return runCase(pairCase(
                       "one by one, in random order", vPoints.size(), vPoints.size(), true,
                       [&] { return lumoOneByOne(vPoints); }, [&] { return cgalOneByOne(vPoints); }),
                   options.rounds);
}

bool runRemove(const Options& options)
{
    const Points vPoints = uniform(options.numPoints);
    std::vector<std::size_t> vPositions = permutation(vPoints.size(), 6);
    vPositions.resize(vPoints.size() / 10);
    return runCase(pairCase(
                       "removal of random vertices", vPoints.size(), vPositions.size(), false,
                       [&] { return lumoRemove(vPoints, vPositions); },
                       [&] { return cgalRemove(vPoints, vPositions); }),
                   options.rounds);
}

const std::vector<std::pair<std::string, CaseRunner>> vCaseRunners = {
    {"uniform", generated("uniform", uniform)},
    {"clusters", generated("clusters", clusters)},
    {"scanlines", generated("scan lines with jitter", scanLines)},
    {"grid", generated("integer grid, row order", [](std::size_t n) { return grid(n, false); })},
    {"gridshuffled", generated("integer grid, shuffled", [](std::size_t n) { return grid(n, true); })},
    {"circle", generated("circle, rounded", circle)},
    {"files", runFiles},
    {"locate", runLocate},
    {"onebyone", runOneByOne},
    {"remove", runRemove},
    {"uniform10", generated("uniform, ten times as many", uniform, 10)}, // by name only
};

[[noreturn]] void usage(int exitCode)
{
    std::cout << "usage: peers [--rounds N] [--points N] [--more] [case or file.xyz]...\n"
                 "  --rounds N   measurements of each case, 5 by default; medians are printed\n"
                 "  --points N   points of the generated inputs, 1000000 by default\n"
                 "  --more       slower peers too\n"
                 "cases (all but the last by default):\n ";
    for (const auto& runner : vCaseRunners) {
        std::cout << ' ' << runner.first;
    }
    std::cout << '\n';
    std::exit(exitCode);
}

Options parse(int argc, char** argv)
{
    Options options;
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        const bool bHasValue = i + 1 < argc;
        if (argument == "--rounds" && bHasValue) {
            options.rounds = std::max(1, std::atoi(argv[++i]));
        } else if (argument == "--points" && bHasValue) {
            options.numPoints = static_cast<std::size_t>(std::max(100L, std::atol(argv[++i])));
        } else if (argument == "--more") {
            options.bMore = true;
        } else if (std::filesystem::is_regular_file(argument)) {
            options.vFiles.push_back(argument);
        } else if (std::any_of(vCaseRunners.begin(), vCaseRunners.end(),
                               [&](const auto& runner) { return runner.first == argument; })) {
            options.vCases.push_back(argument);
        } else {
            usage(argument == "--help" ? 0 : 1);
        }
    }
    if (options.vCases.empty() && options.vFiles.empty()) {
        for (std::size_t i = 0; i + 1 < vCaseRunners.size(); ++i) {
            options.vCases.push_back(vCaseRunners[i].first);
        }
    }
    if (options.vFiles.empty()) {
        for (const auto& entry : std::filesystem::directory_iterator(LUMO25D_TERRAIN_DIR)) {
            if (entry.path().extension() == ".xyz") options.vFiles.push_back(entry.path().string());
        }
        std::sort(options.vFiles.begin(), options.vFiles.end());
    } else if (std::find(options.vCases.begin(), options.vCases.end(), "files") == options.vCases.end()) {
        options.vCases.push_back("files");
    }
    return options;
}

} // namespace

int main(int argc, char** argv)
{
    const Options options = parse(argc, argv);
    printHead();
    bool bAgree = true;
    for (const auto& [name, run] : vCaseRunners) {
        if (std::find(options.vCases.begin(), options.vCases.end(), name) == options.vCases.end()) continue;
        bAgree = run(options) && bAgree;
    }
    return bAgree ? 0 : 1;
}
