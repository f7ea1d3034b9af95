#include "oracles/Corpus.h"

#include "oracles/Dice.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <utility>

using ORBI_LUMO25D::Point2;
using ORBI_LUMO25D::Segment2;

namespace oracles
{

namespace
{

using Points = std::vector<Point2>;

// ---- generated families -----------------------------------------------------------------------------------------

/// Points at(0) to at(n - 1).
template <typename At>
Points made(int n, At at)
{
    Points v;
    for (int i = 0; i < n; ++i) v.push_back(at(i));
    return v;
}

Points grid(int numX, int numY, double step)
{
    return made(numX * numY, [=](int i) {
        const int row = i / numX;
        return Point2(i % numX * step, row * step, i * 7 % 11);
    });
}

Points line(int n, double dx, double dy)
{
    return made(n, [=](int i) { return Point2(i * dx, i * dy, i); });
}

Points shuffled(Points v)
{
    Dice(1).shuffle(v);
    return v;
}

Points joined(Points a, const Points& b)
{
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

/// Integer points on the circle of radius 65 * 17 * 29 around (1, 2): exactly cocircular.
Points exactCircle()
{
    const int r = 65 * 17 * 29;
    Points v;
    for (int x = -r; x <= r; ++x) {
        const double rest = static_cast<double>(r) * r - static_cast<double>(x) * x;
        const double y = std::round(std::sqrt(rest));
        if (y * y != rest) continue;
        v.emplace_back(x + 1.0, y + 2.0, x % 13);
        if (y != 0.0) v.emplace_back(x + 1.0, 2.0 - y, x % 17);
    }
    return v;
}

/// Points on a slanted line, each pushed off it by up to two steps of the last bit.
Points nearlyCollinear(Dice dice)
{
    return made(200, [&](int i) {
        const double x = 0.5 + dice.real() * 12.0;
        const double y = x * (1.0 / 3.0) + 0.1;
        return Point2(x, y + (dice.below(5) - 2) * (std::nextafter(y, 1e9) - y), i);
    });
}

/// Neighbouring doubles around (0.5, 0.5) and two far points: nearly every triangle is decided by the last bits.
Points lastBits()
{
    Points v = grid(12, 12, 0x1p-53);
    for (Point2& p : v) p.setCoords(0.5 + p.x(), 0.5 + p.y(), p.z());
    return joined(v, {Point2(12.0, 12.0, 0.0), Point2(24.0, 24.0, 0.0)});
}

/// Sizes from denormal to huge in one input.
Points allMagnitudes(Dice dice)
{
    const auto draw = [&dice] { return std::ldexp(dice.real() - 0.5, dice.below(2000) - 1070); };
    return made(150, [&](int i) {
        const double x = draw();
        return Point2(x, draw(), i);
    });
}

std::vector<CorpusEntry> generatedEntries()
{
    const std::pair<const char*, Points> families[] = {
        {"empty", {}},
        {"one_point", line(1, 1, 1)},
        {"two_points", line(2, 1, 1)},
        {"one_triangle", {Point2(0, 0, 1), Point2(1, 0, 2), Point2(0, 1, 3)}},
        {"grid_rows", grid(30, 20, 1.0)},
        {"grid_shuffled", shuffled(grid(25, 25, 0.1))},
        {"uniform", Dice(2).points(1200, 1000.0, 1000.0)},
        {"circle_exact", exactCircle()},
        {"circle_with_centre", joined(exactCircle(), {Point2(1, 2, 5)})},
        {"circle_rounded", made(360, [](int i) { return Point2(100.0 * std::cos(i), 100.0 * std::sin(i), i); })},
        {"line_slanted", shuffled(line(50, 3.0, 7.0))},
        {"line_then_end", joined(shuffled(line(40, 1.0, 0.0)), {Point2(80.0, 0.0, 0.0), Point2(80.0, 1.0, 0.0)})},
        {"cluster_tight", joined(Dice(3).points(200, 1e-12, 1e-12), Dice(4).points(20, 1000.0, 1000.0))},
        {"nearly_collinear", nearlyCollinear(Dice(99))},
        {"last_bits", lastBits()},
        {"duplicates_one_place", made(40, [](int i) { return Point2(0, 0, i); })},
        {"duplicates_nine_places", made(200, [](int i) { return Point2(i * i % 3, i * 5 % 7 % 3, i); })},
        {"signed_zeros",
         {Point2(0.0, 0.0, 1), Point2(-0.0, 0.0, 2), Point2(1, -0.0, 3), Point2(0.0, 1, 4), Point2(-0.0, -0.0, 5),
          Point2(-0.0, 1, 6), Point2(1, 0.0, 7)}},
        {"huge_grid", grid(8, 8, 0x1p1020)},
        {"largest",
         {Point2(1.7e308, 1.7e308, 0), Point2(-1.7e308, 1.7e308, 1), Point2(-1.7e308, -1.7e308, 2),
          Point2(1.7e308, -1.7e308, 3), Point2(0, 0, 4), Point2(1, 1, 5)}},
        {"tiny_grid_e-160", grid(9, 9, 1e-160)},
        {"tiny_grid_e-79", shuffled(grid(9, 9, 1e-79))},
        {"denormal_grid", grid(9, 9, 0x1p-1074)},
        {"all_magnitudes", allMagnitudes(Dice(5))},
        // One point sees all others along a far, nearly straight line: long thin triangles, long flip chains.
        {"fan", joined(line(1, 0, 0), made(300, [](int i) { return Point2(1000 + i * 1e-3, (i - 150) * 0.25, i); }))},
    };
    std::vector<CorpusEntry> vEntries;
    for (const auto& [name, vPoints] : families) vEntries.push_back({std::string("generated/") + name, vPoints, {}});
    return vEntries;
}

// ---- variants ---------------------------------------------------------------------------------------------------

template <typename Move>
CorpusEntry moved(const CorpusEntry& entry, const char* suffix, Move move)
{
    CorpusEntry result{entry.name + suffix, {}, {}};
    for (const Point2& p : entry.vPoints) result.vPoints.push_back(move(p));
    for (const Segment2& s : entry.vSegments) result.vSegments.emplace_back(move(s.getSrc()), move(s.getTrg()));
    return result;
}

void appendVariants(const CorpusEntry& entry, std::vector<CorpusEntry>& vEntries)
{
    vEntries.push_back(moved(entry, "+turned", [](const Point2& p) { return Point2(-p.y(), p.x(), p.z()); }));
    vEntries.push_back(moved(entry, "+mirrored", [](const Point2& p) { return Point2(-p.x(), p.y(), p.z()); }));
    vEntries.push_back({entry.name + "+doubled", {}, entry.vSegments});
    bool bLarge = false;
    for (const Point2& p : entry.vPoints) {
        vEntries.back().vPoints.push_back(p);
        vEntries.back().vPoints.emplace_back(p.x(), p.y(), p.z() + 1.0);
        bLarge = bLarge || p.getMaxAbs() > 1e6;
    }
    if (bLarge) return;
    vEntries.push_back(moved(entry, "+survey",
                             [](const Point2& p) { return Point2(p.x() + 21530000.125, p.y() + 6782000.375, p.z()); }));
}

} // namespace

// ---- files ------------------------------------------------------------------------------------------------------

CorpusEntry readCorpusFile(const std::string& path, const std::string& name)
{
    std::ifstream in(path);
    if (!in) throw std::runtime_error(path + " can't be read");
    const auto require = [&path](bool bHolds, const std::string& text) {
        if (!bHolds) throw std::runtime_error(path + ": neither a point nor a segment: " + text);
    };
    CorpusEntry entry{name, {}, {}};
    std::vector<std::string> vSegmentLines; // segments may stand before their points
    for (std::string text; std::getline(in, text);) {
        if (text.empty() || text[0] == '#' || text == "\r") continue;
        if (text[0] == 's') {
            vSegmentLines.push_back(text);
            continue;
        }
        double x = 0.0, y = 0.0, z = 0.0;
        char rest = 0; // unlike a stream, sscanf takes denormals
        const bool bFlat = std::sscanf(text.c_str(), "p %lf %lf %c", &x, &y, &rest) == 2;
        require(bFlat || std::sscanf(text.c_str(), "p %lf %lf %lf %c", &x, &y, &z, &rest) == 3, text);
        require(std::isfinite(x) && std::isfinite(y) && std::isfinite(z), text);
        entry.vPoints.emplace_back(x, y, z);
    }
    for (const std::string& text : vSegmentLines) {
        std::size_t src = 0, trg = 0;
        char rest = 0;
        require(std::sscanf(text.c_str(), "s %zu %zu %c", &src, &trg, &rest) == 2, text);
        require(src < entry.vPoints.size() && trg < entry.vPoints.size(), text);
        entry.vSegments.emplace_back(entry.vPoints[src], entry.vPoints[trg]);
    }
    return entry;
}

bool writeCorpusFile(const std::string& path, const CorpusEntry& entry)
{
    std::ofstream out(path);
    out.precision(17);
    out << "# " << entry.name << '\n';
    for (const Point2& p : entry.vPoints) out << "p " << p.x() << ' ' << p.y() << ' ' << p.z() << '\n';
    const auto indexOf = [&entry](const Point2& end) {
        const auto isEnd = [&end](const Point2& p) { return p.samePoint(end); };
        return std::find_if(entry.vPoints.begin(), entry.vPoints.end(), isEnd) - entry.vPoints.begin();
    };
    for (const Segment2& s : entry.vSegments) out << "s " << indexOf(s.getSrc()) << ' ' << indexOf(s.getTrg()) << '\n';
    out.close();
    return !out.fail();
}

std::vector<CorpusEntry> plainCorpus(std::size_t maxPoints)
{
    namespace fs = std::filesystem;
    const fs::path root = LUMO25D_CORPUS_DIR;
    std::vector<CorpusEntry> vEntries;
    for (const fs::directory_entry& item : fs::recursive_directory_iterator(root)) {
        fs::path name = item.path().lexically_relative(root);
        if (item.path().extension() != ".txt" || *name.begin() == "LICENSES") continue;
        name.replace_extension();
        vEntries.push_back(readCorpusFile(item.path().string(), name.generic_string()));
    }
    std::sort(vEntries.begin(), vEntries.end(), [](const auto& a, const auto& b) { return a.name < b.name; });
    for (CorpusEntry& entry : generatedEntries()) vEntries.push_back(std::move(entry));
    const auto tooLarge = [maxPoints](const CorpusEntry& entry) { return entry.vPoints.size() > maxPoints; };
    vEntries.erase(std::remove_if(vEntries.begin(), vEntries.end(), tooLarge), vEntries.end());
    return vEntries;
}

std::vector<CorpusEntry> corpus(std::size_t maxPoints)
{
    std::vector<CorpusEntry> vEntries;
    for (const CorpusEntry& entry : plainCorpus(maxPoints)) {
        vEntries.push_back(entry);
        appendVariants(entry, vEntries);
    }
    return vEntries;
}

// ---- failures ---------------------------------------------------------------------------------------------------

FailureKeeper::FailureKeeper(const CorpusEntry& entry_)
    : entry(entry_), trace(__FILE__, __LINE__, "corpus entry " + entry_.name),
      bFailedBefore(::testing::Test::HasFailure()), numExceptionsBefore(std::uncaught_exceptions())
{
}

FailureKeeper::~FailureKeeper()
{
    const bool bFailed = ::testing::Test::HasFailure() && !bFailedBefore;
    if (!bFailed && std::uncaught_exceptions() == numExceptionsBefore) return;
    std::string path = "failed-" + entry.name + ".txt";
    std::replace(path.begin(), path.end(), '/', '-');
    const bool bWritten = writeCorpusFile(path, entry);
    std::printf("[ corpus   ] %s: the input is kept in %s\n", entry.name.c_str(),
                bWritten ? path.c_str() : "no file, it can't be written");
}

} // namespace oracles
