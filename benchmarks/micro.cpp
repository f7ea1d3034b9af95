// Parts of the library one by one: keys, sorts, predicates by stage, files. See README.md.

#include "inputs.h"

#include "core/CurveSort.h"
#include "core/HC2.h"
#include "core/SimplePool.h"
#include "geometry/OrbiTest.h"

#include "freeFunctions.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <memory>
#include <random>
#include <string>
#include <unistd.h>

using namespace ORBI_LUMO25D;
using benchmark::State;

namespace
{

void countItems(State& state, std::size_t itemsPerIteration)
{
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) *
                            static_cast<std::int64_t>(itemsPerIteration));
}

// ---- curve order --------------------------------------------------------------------------------------------------

void curveKeys(State& state)
{
    const benchmarks::Points vPoints = benchmarks::uniform(static_cast<std::size_t>(state.range(0)));
    const HC2 curve(-0.5, -0.5, 1.5, 1.5, 30);
    std::vector<std::uint32_t> vKeys(vPoints.size());
    for (auto _ : state) {
        for (std::size_t i = 0; i < vPoints.size(); ++i) vKeys[i] = curve.getIndex(vPoints[i]);
        benchmark::DoNotOptimize(vKeys.data());
        benchmark::ClobberMemory();
    }
    countItems(state, vPoints.size());
}

template <class Record>
Record makeRecord(std::uint32_t idx, std::size_t i);
template <>
KeyedPosition makeRecord<KeyedPosition>(std::uint32_t idx, std::size_t i)
{
    return KeyedPosition(idx, i);
}
template <>
IdxVtxAct makeRecord<IdxVtxAct>(std::uint32_t idx, std::size_t i)
{
    static Point2 vertex;
    return IdxVtxAct(idx, i % 8 != 0, &vertex);
}

/// Times sort on a fresh copy of random records, the copying not counted.
template <class Records, class Sort>
void sortCopies(State& state, Sort sort)
{
    std::mt19937 random(1);
    Records vInput;
    for (std::size_t i = 0; i < static_cast<std::size_t>(state.range(0)); ++i) {
        vInput.push_back(makeRecord<typename Records::value_type>(static_cast<std::uint32_t>(random() >> 2), i));
    }
    for (auto _ : state) {
        state.PauseTiming();
        Records vRecords = vInput;
        state.ResumeTiming();
        sort(vRecords);
        benchmark::DoNotOptimize(vRecords.data());
    }
    countItems(state, vInput.size());
}

void pairsByRadix(State& state)
{
    sortCopies<IdxPairs>(state, [](IdxPairs& v) { sortPairs(v, 1); });
}
void pairsByStdSort(State& state)
{
    sortCopies<IdxPairs>(state, [](IdxPairs& v) { std::sort(v.begin(), v.end()); });
}
void itemsByRadix(State& state)
{
    sortCopies<IdxItems>(state, [](IdxItems& v) { sortItems(v, 1); });
}
void itemsByStdSort(State& state)
{
    sortCopies<IdxItems>(state, [](IdxItems& v) { std::sort(v.begin(), v.end()); });
}

// ---- pool ---------------------------------------------------------------------------------------------------------

void poolAllocAndWrite(State& state)
{
    const std::size_t n = static_cast<std::size_t>(state.range(0));
    for (auto _ : state) {
        SimplePool<Triangle2> pool;
        pool.init(n, -1);
        for (std::size_t i = 0; i < n; ++i) {
            benchmark::DoNotOptimize(new (pool.alloc()) Triangle2);
        }
    }
    countItems(state, n);
}

// ---- predicates ---------------------------------------------------------------------------------------------------

constexpr std::size_t numQuadruples = 4096;
using Quadruple = std::array<Point2, 4>;

/// What the predicates are asked about: ordinary cases, and those that need the later stages.
enum Kind
{
    Random,     ///< small triangles in the unit square
    Collinear,  ///< three points on an inclined line, and one elsewhere
    Kinked,     ///< the same, one coordinate off by its last bit
    Rectangle,  ///< the corners of a grid's cell
    Cocircular, ///< integer coordinates, and no rectangle
    Dented      ///< the same, one coordinate off by its last bit
};

void moveByLastBit(Point2& p)
{
    p.setCoords(std::nextafter(p.x(), 0.0), p.y(), p.z());
}

/// The circle test is asked about points 0, 1, 2 and 3, the orientation test about 0, 1 and 3.
Quadruple makeQuadruple(Kind kind, std::mt19937& random)
{
    const auto upTo = [&random](unsigned n) { return static_cast<double>(random() % n); };
    Quadruple q;
    if (kind == Random) {
        const double x = upTo(1000) * 1e-3;
        for (Point2& p : q) {
            p = Point2(x + upTo(1u << 20) * 1e-9, upTo(1u << 20) * 1e-9, 0.0);
        }
        if (getOrientation2(&q[0], &q[1], &q[2]) == ORIENTATION2_CW) std::swap(q[1], q[2]);
    } else if (kind == Collinear || kind == Kinked) {
        const double dx = upTo(1000) + 1.0, dy = upTo(1000) + 1.0;
        q = {Point2(0.0, 0.0, 0.0), Point2(0.125 * dx, 0.125 * dy, 0.0), Point2(-dy, dx, 0.0), Point2(dx, dy, 0.0)};
        if (kind == Kinked) moveByLastBit(q[3]);
    } else if (kind == Rectangle) {
        const double x = upTo(1000), y = upTo(1000);
        q = {Point2(x, y, 0), Point2(x + 1, y, 0), Point2(x + 1, y + 1, 0), Point2(x, y + 1, 0)};
    } else {
        // 5525 = 74^2 + 7^2 = 14^2 + 73^2 = 71^2 + 22^2 = 25^2 + 70^2
        const double s = 1.0 + upTo(100);
        q = {Point2(74 * s, 7 * s, 0), Point2(14 * s, 73 * s, 0), Point2(-71 * s, 22 * s, 0),
             Point2(-25 * s, -70 * s, 0)};
        if (kind == Dented) moveByLastBit(q[3]);
    }
    return q;
}

std::vector<Quadruple> makeQuadruples(Kind kind)
{
    std::mt19937 random(1);
    std::vector<Quadruple> v;
    for (std::size_t i = 0; i < numQuadruples; ++i) {
        v.push_back(makeQuadruple(kind, random));
    }
    return v;
}

/// Times ask(tester, quadruple) and notes which stages decided: a label like "filter 4000  integers 96".
template <class Ask>
void predicate(State& state, Ask ask)
{
    const std::vector<Quadruple> vQuadruples = makeQuadruples(static_cast<Kind>(state.range(0)));
    OrbiTest tester;
    for (const Quadruple& q : vQuadruples) {
        for (const Point2& p : q) {
            tester.ensureStaticBound(&p);
        }
    }
    for (auto _ : state) {
        int sum = 0;
        for (const Quadruple& q : vQuadruples) {
            sum += ask(tester, q, nullptr);
        }
        benchmark::DoNotOptimize(sum);
    }
    std::array<int, 6> aCounts{};
    for (const Quadruple& q : vQuadruples) {
        PredicateStage stage = PredicateStage::Filter;
        ask(tester, q, &stage);
        ++aCounts[static_cast<std::size_t>(stage)];
    }
    static const char* const aNames[] = {"filter", "tight filter", "shortcut", "integers", "intervals", "rationals"};
    std::string label;
    for (std::size_t i = 0; i < aCounts.size(); ++i) {
        if (aCounts[i] > 0) label += std::string(aNames[i]) + " " + std::to_string(aCounts[i]) + "  ";
    }
    state.SetLabel(label);
    countItems(state, numQuadruples);
}

void orientation(State& state)
{
    predicate(state, [](const OrbiTest& tester, const Quadruple& q, PredicateStage* pStage) {
        return static_cast<int>(tester.orientationInRange(&q[0], &q[1], &q[3], pStage));
    });
}
void orientationByIntervals(State& state)
{
    predicate(state, [](const OrbiTest& tester, const Quadruple& q, PredicateStage* pStage) {
        return static_cast<int>(tester.orientationByIntervals(&q[0], &q[1], &q[3], pStage));
    });
}
void orientationByRationals(State& state)
{
    predicate(state, [](const OrbiTest& tester, const Quadruple& q, PredicateStage* pStage) {
        if (pStage != nullptr) *pStage = PredicateStage::Rationals;
        return static_cast<int>(tester.orientationExact(&q[0], &q[1], &q[3]));
    });
}
void inCircle(State& state)
{
    predicate(state, [](const OrbiTest& tester, const Quadruple& q, PredicateStage* pStage) {
        return static_cast<int>(tester.circleInc3state(&q[0], &q[1], &q[2], &q[3], pStage));
    });
}
void inCircleByRationals(State& state)
{
    predicate(state, [](const OrbiTest& tester, const Quadruple& q, PredicateStage* pStage) {
        Triangle2 t;
        for (int i = 0; i < 3; ++i) {
            t.setVertexPointer(i, const_cast<Point2*>(&q[static_cast<std::size_t>(i)]));
        }
        return static_cast<int>(tester.circleIncExact(&t, &q[3], pStage));
    });
}

// ---- files --------------------------------------------------------------------------------------------------------

/// A point file in the directory for temporary files, which goes with the object.
class TemporaryPointFile
{
public:
    template <class Write>
    TemporaryPointFile(std::size_t numPoints, Write write)
        : path((std::filesystem::temp_directory_path() / ("lumo25d_micro_" + std::to_string(getpid()))).string())
    {
        if (!write(path.c_str(), benchmarks::uniform(numPoints))) path.clear();
    }
    TemporaryPointFile(const TemporaryPointFile&) = delete;
    TemporaryPointFile& operator=(const TemporaryPointFile&) = delete;
    ~TemporaryPointFile()
    {
        std::error_code error;
        std::filesystem::remove(path, error);
    }

    std::string path;
};

template <class Write, class Read>
void readFile(State& state, Write write, Read read)
{
    const std::size_t n = static_cast<std::size_t>(state.range(0));
    const TemporaryPointFile file(n, write);
    for (auto _ : state) {
        std::vector<Point2> vPoints;
        if (!read(file.path.c_str(), vPoints) || vPoints.size() != n) {
            state.SkipWithError("the file can't be read");
            return;
        }
    }
    countItems(state, n);
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                            static_cast<std::int64_t>(std::filesystem::file_size(file.path)));
}

void readText(State& state)
{
    readFile(
        state, [](const char* path, const std::vector<Point2>& v) { return writePointsASCII(path, v); }, readXYZ);
}
void readBinary(State& state)
{
    readFile(
        state, [](const char* path, const std::vector<Point2>& v) { return writePointsBIN(path, v); }, readPointsBIN);
}

} // namespace

BENCHMARK(curveKeys)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(pairsByRadix)->Arg(10000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(pairsByStdSort)->Arg(10000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(itemsByRadix)->Arg(10000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(itemsByStdSort)->Arg(10000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(poolAllocAndWrite)->Arg(2000000)->Unit(benchmark::kMillisecond);
BENCHMARK(orientation)->ArgName("kind")->DenseRange(Random, Kinked);
BENCHMARK(orientationByIntervals)->ArgName("kind")->DenseRange(Random, Kinked);
BENCHMARK(orientationByRationals)->ArgName("kind")->DenseRange(Random, Kinked);
BENCHMARK(inCircle)->ArgName("kind")->Arg(Random)->DenseRange(Rectangle, Dented);
BENCHMARK(inCircleByRationals)->ArgName("kind")->Arg(Random)->DenseRange(Rectangle, Dented);
BENCHMARK(readText)->Arg(200000)->Unit(benchmark::kMillisecond);
BENCHMARK(readBinary)->Arg(200000)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
