#include "oracles/Corpus.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <stdexcept>
#include <utility>

using ORBI_LUMO25D::Point2;
using ORBI_LUMO25D::Segment2;

namespace oracles
{

namespace
{

constexpr double PI = 3.14159265358979323846;

// ---- generated families -----------------------------------------------------------------------------------------

/// Repeatable on every platform: the distributions of the standard library are not, its engines are.
class Dice
{
public:
    explicit Dice(std::uint64_t seed) : engine(seed) {}
    /// Uniform in [0, 1), all 53 bits in use.
    double real() { return static_cast<double>(engine() >> 11) * 0x1p-53; }
    int below(int n) { return static_cast<int>(real() * n); }

private:
    std::mt19937_64 engine;
};

using Points = std::vector<Point2>;

Points grid(int numX, int numY, double step)
{
    Points v;
    for (int j = 0; j < numY; ++j) {
        for (int i = 0; i < numX; ++i) v.emplace_back(i * step, j * step, (i * 7 + j * 3) % 11);
    }
    return v;
}

Points shuffled(Points v, std::uint64_t seed)
{
    Dice dice(seed);
    for (std::size_t i = v.size(); i > 1; --i)
        std::swap(v[i - 1], v[static_cast<std::size_t>(dice.below(static_cast<int>(i)))]);
    return v;
}

Points uniform(int n, double size, std::uint64_t seed)
{
    Dice dice(seed);
    Points v;
    for (int i = 0; i < n; ++i) {
        const double x = (dice.real() - 0.5) * size;
        v.emplace_back(x, (dice.real() - 0.5) * size, i % 100);
    }
    return v;
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

Points roundedCircle(int n, double radius)
{
    Points v;
    for (int i = 0; i < n; ++i) {
        const double angle = 2.0 * PI * i / n;
        v.emplace_back(radius * std::cos(angle), radius * std::sin(angle), i % 5);
    }
    return v;
}

/// n points in steps of (dx, dy); multiples of small integers stay exactly collinear.
Points line(int n, double dx, double dy)
{
    Points v;
    for (int i = 0; i < n; ++i) v.emplace_back(i * dx, i * dy, i);
    return v;
}

Points clusters(int numClusters, int numEach, double spread)
{
    Dice dice(4711);
    Points v;
    for (int c = 0; c < numClusters; ++c) {
        const double cx = dice.real() * 1000.0;
        const double cy = dice.real() * 1000.0;
        for (int i = 0; i < numEach; ++i) {
            const double x = cx + (dice.real() - 0.5) * spread;
            v.emplace_back(x, cy + (dice.real() - 0.5) * spread, c);
        }
    }
    return v;
}

/// Points on a slanted line, each pushed off it by up to two steps of the last bit.
Points nearlyCollinear(int n)
{
    Dice dice(99);
    Points v;
    for (int i = 0; i < n; ++i) {
        const double x = 0.5 + dice.real() * 12.0;
        double y = x * (1.0 / 3.0) + 0.1;
        for (int k = dice.below(5) - 2; k != 0; k += k < 0 ? 1 : -1) y = std::nextafter(y, k < 0 ? -1e9 : 1e9);
        v.emplace_back(x, y, i);
    }
    return v;
}

/// Neighbouring doubles around (0.5, 0.5) and two far points: nearly every triangle is decided by the last bits.
Points lastBits()
{
    Points v;
    for (int j = 0; j < 12; ++j) {
        for (int i = 0; i < 12; ++i) v.emplace_back(0.5 + i * 0x1p-53, 0.5 + j * 0x1p-53, i - j);
    }
    v.emplace_back(12.0, 12.0, 0.0);
    v.emplace_back(24.0, 24.0, 0.0);
    return v;
}

/// One place, many heights: the same few points over and over.
Points duplicates(int numPlaces, int num)
{
    Dice dice(7);
    Points v;
    for (int i = 0; i < num; ++i) {
        const int place = dice.below(numPlaces);
        const int row = place / 3;
        v.emplace_back(place % 3, row, i);
    }
    return v;
}

/// Sizes from denormal to huge in one input.
Points allMagnitudes()
{
    Dice dice(5);
    Points v;
    for (int i = 0; i < 150; ++i) {
        const double x = std::ldexp(dice.real() - 0.5, dice.below(2000) - 1070);
        v.emplace_back(x, std::ldexp(dice.real() - 0.5, dice.below(2000) - 1070), i);
    }
    return v;
}

Points scaled(Points v, double factor)
{
    for (Point2& p : v) p.setCoords(p.x() * factor, p.y() * factor, p.z());
    return v;
}

/// A fan: one point that sees all others along a far, nearly straight line: long thin triangles, long flip chains.
Points fan(int n)
{
    Points v = {Point2(0, 0, 0)};
    for (int i = 0; i < n; ++i) v.emplace_back(1000.0 + i * 1e-3, (i - 0.5 * n) * 0.25, i);
    return v;
}

/// Scan lines driven to and fro, as a laser scanner delivers them, with equal steps in most lines.
Points scanLines()
{
    Points v;
    for (int j = 0; j < 25; ++j) {
        for (int i = 0; i < 40; ++i) v.emplace_back((j % 2 == 0 ? i : 39 - i) * 0.3 + (j % 5) * 0.01, j * 1.7, i + j);
    }
    return v;
}

Points joined(Points a, const Points& b)
{
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

std::vector<CorpusEntry> generatedEntries()
{
    const Points empty;
    const std::vector<std::pair<const char*, Points>> families = {
        {"empty", empty},
        {"one_point", line(1, 1, 1)},
        {"two_points", line(2, 1, 1)},
        {"one_triangle", {Point2(0, 0, 1), Point2(1, 0, 2), Point2(0, 1, 3)}},
        {"grid_rows", grid(30, 20, 1.0)},
        {"grid_shuffled", shuffled(grid(25, 25, 0.1), 1)},
        {"grid_two_rows", grid(60, 2, 1.0)},
        {"uniform", uniform(1200, 1000.0, 2)},
        {"circle_exact", exactCircle()},
        {"circle_rounded", roundedCircle(360, 100.0)},
        {"circle_with_centre", joined(exactCircle(), {Point2(1, 2, 5)})},
        {"line_horizontal", line(50, 1.0, 0.0)},
        {"line_vertical", line(50, 0.0, -3.0)},
        {"line_slanted", shuffled(line(50, 3.0, 7.0), 3)},
        {"line_then_one", joined(line(40, 1.0, 2.0), {Point2(5.0, 5.0, 0.0)})},
        {"line_then_end", joined(shuffled(line(40, 1.0, 0.0), 4), {Point2(80.0, 0.0, 0.0), Point2(80.0, 1.0, 0.0)})},
        {"clusters", clusters(8, 100, 1e-6)},
        {"clusters_tight", clusters(5, 60, 1e-12)},
        {"nearly_collinear", nearlyCollinear(200)},
        {"last_bits", lastBits()},
        {"duplicates_one_place", duplicates(1, 40)},
        {"duplicates_three_in_line", duplicates(3, 60)},
        {"duplicates_nine_places", duplicates(9, 200)},
        {"signed_zeros",
         {Point2(0.0, 0.0, 1), Point2(-0.0, 0.0, 2), Point2(1, -0.0, 3), Point2(0.0, 1, 4), Point2(-0.0, -0.0, 5),
          Point2(-0.0, 1, 6), Point2(1, 0.0, 7)}},
        {"huge", scaled(uniform(200, 2.0, 8), 1e300)},
        {"huge_grid", scaled(grid(8, 8, 1.0), 0x1p1020)},
        {"largest",
         {Point2(1.7e308, 1.7e308, 0), Point2(-1.7e308, 1.7e308, 1), Point2(-1.7e308, -1.7e308, 2),
          Point2(1.7e308, -1.7e308, 3), Point2(0, 0, 4), Point2(1, 1, 5)}},
        {"tiny", scaled(uniform(200, 2.0, 9), 1e-300)},
        {"tiny_grid_e-160", scaled(grid(9, 9, 1.0), 1e-160)},
        {"tiny_grid_e-79", scaled(shuffled(grid(9, 9, 1.0), 10), 1e-79)},
        {"denormal_grid", scaled(grid(9, 9, 1.0), 0x1p-1074)},
        {"all_magnitudes", allMagnitudes()},
        {"fan", fan(300)},
        {"scan_lines", scanLines()},
    };
    std::vector<CorpusEntry> vEntries;
    vEntries.reserve(families.size());
    for (const auto& [name, vPoints] : families) vEntries.push_back({std::string("generated/") + name, vPoints, {}});
    return vEntries;
}

// ---- variants ---------------------------------------------------------------------------------------------------

template <typename Move>
CorpusEntry moved(const CorpusEntry& entry, const char* suffix, Move move)
{
    CorpusEntry result{entry.name + suffix, {}, {}};
    result.vPoints.reserve(entry.vPoints.size());
    for (const Point2& p : entry.vPoints) result.vPoints.push_back(move(p));
    for (const Segment2& s : entry.vSegments) result.vSegments.emplace_back(move(s.getSrc()), move(s.getTrg()));
    return result;
}

CorpusEntry doubled(const CorpusEntry& entry)
{
    CorpusEntry result{entry.name + "+doubled", {}, entry.vSegments};
    result.vPoints.reserve(2 * entry.vPoints.size());
    for (const Point2& p : entry.vPoints) {
        result.vPoints.push_back(p);
        result.vPoints.emplace_back(p.x(), p.y(), p.z() + 1.0);
    }
    return result;
}

void appendVariants(const CorpusEntry& entry, std::vector<CorpusEntry>& vEntries)
{
    vEntries.push_back(moved(entry, "+turned", [](const Point2& p) { return Point2(-p.y(), p.x(), p.z()); }));
    vEntries.push_back(moved(entry, "+mirrored", [](const Point2& p) { return Point2(-p.x(), p.y(), p.z()); }));
    vEntries.push_back(doubled(entry));
    const bool bLarge =
        std::any_of(entry.vPoints.begin(), entry.vPoints.end(), [](const Point2& p) { return p.getMaxAbs() > 1e6; });
    if (bLarge) return;
    vEntries.push_back(moved(entry, "+survey",
                             [](const Point2& p) { return Point2(p.x() + 21530000.125, p.y() + 6782000.375, p.z()); }));
}

// ---- files ------------------------------------------------------------------------------------------------------

[[noreturn]] void refuse(const std::string& path, std::size_t lineNumber, const std::string& why)
{
    throw std::runtime_error(path + ":" + std::to_string(lineNumber) + ": " + why);
}

/// Reads the numbers of one line by strtod, which, unlike a stream, takes denormals.
std::vector<double> numbersOf(const std::string& text)
{
    std::vector<double> vNumbers;
    const char* pos = text.c_str();
    for (;;) {
        char* end = nullptr;
        const double d = std::strtod(pos, &end);
        if (end == pos) break;
        vNumbers.push_back(d);
        pos = end;
    }
    while (*pos == ' ' || *pos == '\t' || *pos == '\r') ++pos;
    if (*pos != '\0') vNumbers.clear(); // trailing rubbish: no valid line
    return vNumbers;
}

const Point2& pointAt(const CorpusEntry& entry, double index, const std::string& path, std::size_t lineNumber)
{
    if (!(index >= 0.0) || index >= static_cast<double>(entry.vPoints.size()) || index != std::floor(index)) {
        refuse(path, lineNumber, "no such point");
    }
    return entry.vPoints[static_cast<std::size_t>(index)];
}

} // namespace

CorpusEntry readCorpusFile(const std::string& path, const std::string& name)
{
    std::ifstream in(path);
    if (!in) throw std::runtime_error(path + " can't be read");
    CorpusEntry entry{name, {}, {}};
    std::vector<std::pair<std::size_t, std::vector<double>>> vSegmentLines; // segments may stand before their points
    std::string text;
    for (std::size_t lineNumber = 1; std::getline(in, text); ++lineNumber) {
        if (text.empty() || text[0] == '#' || text == "\r") continue;
        const std::vector<double> v = numbersOf(text.substr(1));
        const bool bFinite = std::all_of(v.begin(), v.end(), [](double d) { return std::isfinite(d); });
        if (text[0] == 'p' && (v.size() == 2 || v.size() == 3) && bFinite) {
            entry.vPoints.emplace_back(v[0], v[1], v.size() == 3 ? v[2] : 0.0);
        } else if (text[0] == 's' && v.size() == 2) {
            vSegmentLines.emplace_back(lineNumber, v);
        } else {
            refuse(path, lineNumber, "neither a point nor a segment: " + text);
        }
    }
    for (const auto& [lineNumber, v] : vSegmentLines) {
        entry.vSegments.emplace_back(pointAt(entry, v[0], path, lineNumber), pointAt(entry, v[1], path, lineNumber));
    }
    return entry;
}

bool writeCorpusFile(const std::string& path, const CorpusEntry& entry)
{
    std::ofstream out(path);
    out.precision(17);
    out << "# " << entry.name << '\n';
    const auto writePoint = [&out](const Point2& p) { out << "p " << p.x() << ' ' << p.y() << ' ' << p.z() << '\n'; };
    for (const Point2& p : entry.vPoints) writePoint(p);
    std::size_t numPoints = entry.vPoints.size();
    for (const Segment2& s : entry.vSegments) {
        // An end is an input point as a rule; one that isn't is written as a further point.
        const Point2 ends[2] = {s.getSrc(), s.getTrg()};
        std::size_t index[2] = {};
        for (int i = 0; i < 2; ++i) {
            const auto it = std::find_if(entry.vPoints.begin(), entry.vPoints.end(),
                                         [&](const Point2& p) { return p.samePoint(ends[i]); });
            index[i] = static_cast<std::size_t>(it - entry.vPoints.begin());
            if (it != entry.vPoints.end()) continue;
            writePoint(ends[i]);
            index[i] = numPoints++;
        }
        out << "s " << index[0] << ' ' << index[1] << '\n';
    }
    out.close();
    return !out.fail();
}

std::vector<CorpusEntry> readCorpusFolder(const std::string& folder)
{
    namespace fs = std::filesystem;
    const fs::path root = folder;
    std::vector<fs::path> vPaths;
    if (fs::is_directory(root)) {
        for (const fs::directory_entry& item : fs::recursive_directory_iterator(root)) {
            const fs::path relative = item.path().lexically_relative(root);
            const bool bLicence = *relative.begin() == "LICENSES";
            if (item.is_regular_file() && item.path().extension() == ".txt" && !bLicence) vPaths.push_back(relative);
        }
    }
    if (vPaths.empty()) throw std::runtime_error("the corpus is empty: no .txt file below " + folder);
    std::sort(vPaths.begin(), vPaths.end());

    std::vector<CorpusEntry> vEntries;
    for (const fs::path& path : vPaths) {
        const std::string name = fs::path(path).replace_extension().generic_string();
        vEntries.push_back(readCorpusFile((root / path).string(), name));
    }
    return vEntries;
}

std::vector<CorpusEntry> plainCorpus(std::size_t maxPoints)
{
    std::vector<CorpusEntry> vEntries = readCorpusFolder(LUMO25D_CORPUS_DIR);
    for (CorpusEntry& entry : generatedEntries()) vEntries.push_back(std::move(entry));
    const auto tooLarge = [maxPoints](const CorpusEntry& entry) { return entry.vPoints.size() > maxPoints; };
    vEntries.erase(std::remove_if(vEntries.begin(), vEntries.end(), tooLarge), vEntries.end());
    return vEntries;
}

std::vector<CorpusEntry> corpus(std::size_t maxPoints)
{
    std::vector<CorpusEntry> vEntries;
    for (CorpusEntry& entry : plainCorpus(maxPoints)) {
        vEntries.push_back(std::move(entry));
        const CorpusEntry plain = vEntries.back(); // a copy: the vector grows
        appendVariants(plain, vEntries);
    }
    return vEntries;
}

// ---- failures ---------------------------------------------------------------------------------------------------

namespace
{

int numFailures()
{
    const ::testing::TestInfo* pInfo = ::testing::UnitTest::GetInstance()->current_test_info();
    if (pInfo == nullptr) return 0;
    int num = 0;
    for (int i = 0; i < pInfo->result()->total_part_count(); ++i) {
        if (pInfo->result()->GetTestPartResult(i).failed()) ++num;
    }
    return num;
}

} // namespace

FailureKeeper::FailureKeeper(const CorpusEntry& entry_)
    : entry(entry_), trace(__FILE__, __LINE__, "corpus entry " + entry_.name), numFailuresBefore(numFailures()),
      numExceptionsBefore(std::uncaught_exceptions())
{
}

FailureKeeper::~FailureKeeper()
{
    if (numFailures() == numFailuresBefore && std::uncaught_exceptions() == numExceptionsBefore) return;
    std::string path = "failed-" + entry.name + ".txt";
    std::replace(path.begin(), path.end(), '/', '-');
    const bool bWritten = writeCorpusFile(path, entry);
    std::printf("[ corpus   ] %s: the input is kept in %s\n", entry.name.c_str(),
                bWritten ? path.c_str() : "no file, it can't be written");
}

} // namespace oracles
