#include "Visualizer3.h"

#include "Edge2.h"
#include "Point2.h"
#include "Segment2.h"
#include "Triangle2.h"
#include "output/FileWriter.h"
#include "output/numberScanner.h"
#include "output/sharedCounter.h"
#include "support/check.h"
#include "support/messages.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>

namespace ORBI_LUMO25D
{

namespace
{

/// Apart in hue and in lightness, and neither as dark nor as bright as a background.
const char* const aColors[] = {"0.12 0.47 0.71", "1 0.5 0.05",     "0.17 0.63 0.17", "0.84 0.15 0.16", "0.58 0.4 0.74",
                               "0.55 0.34 0.29", "0.89 0.47 0.76", "0.74 0.74 0.13", "0.09 0.75 0.81", "0.5 0.5 0.5"};
constexpr int numColors = static_cast<int>(sizeof aColors / sizeof *aColors);

using Rgba = std::array<double, 4>;

/// Three or four numbers from 0 to 1.
bool parseColor(const std::string& text, Rgba& rgba)
{
    rgba[3] = 1.0;
    const char* p = text.data();
    const char* const end = p + text.size();
    const auto skipBlanks = [&] {
        while (p != end && (*p == ' ' || *p == '\t')) ++p;
    };
    std::size_t n = 0;
    for (skipBlanks(); p != end; skipBlanks()) {
        if (n == 4 || !scanNumber(p, end, rgba[n]) || rgba[n] < 0.0 || rgba[n] > 1.0) return false;
        ++n;
    }
    return n >= 3;
}

/// Gives addresses numbers from 0 on, in the order in which they come first. A table with open addressing: for a mesh of
/// millions several times as fast as a map.
class AddressNumbers
{
public:
    /// True when the address is new.
    bool number(const Point2* p, std::uint64_t& result)
    {
        if (2 * numUsed >= vSlots.size()) grow();
        Slot& slot = find(p);
        const bool bNew = slot.first == nullptr;
        if (bNew) slot = {p, numUsed++};
        result = slot.second;
        return bNew;
    }

private:
    using Slot = std::pair<const Point2*, std::uint64_t>;

    Slot& find(const Point2* p)
    {
        const std::size_t mask = vSlots.size() - 1;
        std::size_t i = (reinterpret_cast<std::uintptr_t>(p) >> 3) * 0x9e3779b97f4a7c15U >> 20 & mask;
        while (vSlots[i].first != nullptr && vSlots[i].first != p) i = (i + 1) & mask;
        return vSlots[i];
    }
    void grow()
    {
        std::vector<Slot> vOld(2 * vSlots.size());
        vOld.swap(vSlots);
        for (const Slot& slot : vOld) {
            if (slot.first != nullptr) find(slot.first) = slot;
        }
    }

    std::vector<Slot> vSlots = std::vector<Slot>(64);
    std::uint64_t numUsed = 0;
};

/// Readers keep coordinates as floats.
bool isDrawable(const Point2* p)
{
    const double limit = static_cast<double>(std::numeric_limits<float>::max());
    return p != nullptr && std::fabs(p->x()) <= limit && std::fabs(p->y()) <= limit && std::fabs(p->z()) <= limit;
}

} // namespace

/// The file, and what was left out of it. Objects come as their points: n in a row make a point, a segment or a triangle.
class Visualizer3Impl
{
public:
    explicit Visualizer3Impl(const char* filename) : writer(filename)
    {
        printLine("Visualizer3:: Writing " + writer.getName());
        if (!writer.isOpen()) reportFailure();
        writer.put("LIST\n");
    }

    /// Opens an object that consists of shapes of n points each.
    void begin(std::size_t n, const std::string& color);
    /// Takes a shape, unless it can't be drawn. The points must live until end().
    template <std::size_t n>
    void take(const std::array<const Point2*, n>& aPoints);
    void end();
    void countOmitted() { ++numOmitted; }
    bool complete();

    bool bClosed = false;

private:
    static Rgba colorOf(const std::string& text);
    void reportFailure() const { printLine(writer.getName() + " can't be written"); }
    void putNumbers(std::initializer_list<std::uint64_t> numbers);
    void putPoint(const Point2& p);
    void putTriangles();
    void putVectors();

    FileWriter writer;
    std::size_t numOmitted = 0;
    std::size_t pointsPerShape = 0;
    Rgba rgba{};
    std::vector<const Point2*> vPoints;
};

Rgba Visualizer3Impl::colorOf(const std::string& text)
{
    Rgba rgba{};
    if (!text.empty()) {
        if (parseColor(text, rgba)) return rgba;
        msgWarning("Visualizer3::addObject()", "\"" + text + "\" is no color, taking the next one");
    }
    parseColor(Visualizer3::getNextColor(), rgba);
    return rgba;
}

void Visualizer3Impl::begin(std::size_t n, const std::string& color)
{
    LUMO_CHECK(!bClosed, "!bFileClosed");
    pointsPerShape = n;
    rgba = colorOf(color);
    vPoints.clear();
}

template <std::size_t n>
void Visualizer3Impl::take(const std::array<const Point2*, n>& aPoints)
{
    for (const Point2* p : aPoints) {
        if (!isDrawable(p)) return countOmitted();
    }
    vPoints.insert(vPoints.end(), aPoints.begin(), aPoints.end());
}

void Visualizer3Impl::end()
{
    if (vPoints.empty()) return;
    if (pointsPerShape == 3) {
        putTriangles();
    } else {
        putVectors();
    }
    vPoints.clear();
}

void Visualizer3Impl::putNumbers(std::initializer_list<std::uint64_t> numbers)
{
    for (const std::uint64_t& number : numbers) {
        writer.put(number);
        writer.put(&number + 1 == numbers.end() ? "\n" : " ");
    }
}

void Visualizer3Impl::putPoint(const Point2& p)
{
    writer.put(p.x());
    writer.put(" ");
    writer.put(p.y());
    writer.put(" ");
    writer.put(p.z());
    writer.put("\n");
}

void Visualizer3Impl::putTriangles()
{
    AddressNumbers numbers;
    std::vector<const Point2*> vVertices;
    std::vector<std::uint64_t> vNumbers;
    vNumbers.reserve(vPoints.size());
    for (const Point2* p : vPoints) {
        std::uint64_t number = 0;
        if (numbers.number(p, number)) vVertices.push_back(p);
        vNumbers.push_back(number);
    }
    writer.put("{ appearance { +face -edge ");
    if (rgba[3] < 1.0) writer.put("+transparent ");
    writer.put("material { diffuse");
    for (int k = 0; k < 3; ++k) {
        writer.put(" ");
        writer.put(rgba[static_cast<std::size_t>(k)]);
    }
    writer.put(" alpha ");
    writer.put(rgba[3]);
    writer.put(" } }\nOFF\n");
    putNumbers({vVertices.size(), vPoints.size() / 3, 0});
    for (const Point2* p : vVertices) putPoint(*p);
    for (std::size_t i = 0; i < vNumbers.size(); i += 3) {
        putNumbers({3, vNumbers[i], vNumbers[i + 1], vNumbers[i + 2]});
    }
    writer.put("}\n");
}

/// Each point or segment is a polyline of its own; the first has the colour, which the others take over.
void Visualizer3Impl::putVectors()
{
    const std::size_t numShapes = vPoints.size() / pointsPerShape;
    writer.put(pointsPerShape == 1 ? "{ appearance { linewidth 4 }\nVECT\n" : "{ appearance { linewidth 2 }\nVECT\n");
    putNumbers({numShapes, vPoints.size(), 1});
    for (std::size_t i = 0; i < numShapes; ++i) writer.put(pointsPerShape == 1 ? "1\n" : "2\n");
    for (std::size_t i = 0; i < numShapes; ++i) writer.put(i == 0 ? "1\n" : "0\n");
    for (const Point2* p : vPoints) putPoint(*p);
    for (const double value : rgba) {
        writer.put(value);
        writer.put(" ");
    }
    writer.put("\n}\n");
}

bool Visualizer3Impl::complete()
{
    bClosed = true;
    if (numOmitted > 0) {
        msgWarning("Visualizer3::writeFile()",
                   std::to_string(numOmitted) + " objects that can't be drawn are left out");
    }
    const bool bWasOpen = writer.isOpen();
    if (writer.close()) return true;
    if (bWasOpen) reportFailure();
    return false;
}

// ---- the class ------------------------------------------------------------------------------------------------------

int Visualizer3::nextColor = 0;

std::string Visualizer3::getNextColor()
{
    // A caller may have set the counter to anything.
    const int next = countOn(nextColor, [](int n) { return n == std::numeric_limits<int>::max() ? 0 : n + 1; });
    return aColors[((next - 1) % numColors + numColors) % numColors];
}

Visualizer3::Visualizer3(const char* filename) : pImpl(std::make_unique<Visualizer3Impl>(filename)) {}

Visualizer3::~Visualizer3()
{
    if (pImpl->bClosed) return;
    try {
        pImpl->complete();
    } catch (...) {
        // A drawing that can't be completed must not end the program.
    }
}

void Visualizer3::addObject(const std::vector<Triangle2*>& vTriangles, const std::string& color)
{
    pImpl->begin(3, color);
    for (const Triangle2* pT : vTriangles) {
        if (pT == nullptr) {
            pImpl->countOmitted();
        } else {
            pImpl->take<3>({pT->corner(0), pT->corner(1), pT->corner(2)});
        }
    }
    pImpl->end();
}

void Visualizer3::addObject(const std::vector<Triangle2>& vTriangles, const std::string& color)
{
    pImpl->begin(3, color);
    for (const Triangle2& t : vTriangles) pImpl->take<3>({t.corner(0), t.corner(1), t.corner(2)});
    pImpl->end();
}

void Visualizer3::addObject(const std::vector<Point2*>& vPoints, const std::string& color)
{
    pImpl->begin(1, color);
    for (const Point2* p : vPoints) pImpl->take<1>({p});
    pImpl->end();
}

void Visualizer3::addObject(const std::vector<Point2>& vPoints, const std::string& color)
{
    pImpl->begin(1, color);
    for (const Point2& p : vPoints) pImpl->take<1>({&p});
    pImpl->end();
}

void Visualizer3::addObject(const std::vector<Segment2>& vSegments, const std::string& color)
{
    pImpl->begin(2, color);
    for (const Segment2& segment : vSegments) pImpl->take<2>({&segment.src, &segment.trg});
    pImpl->end();
}

void Visualizer3::addObject(const std::vector<Edge2>& vEdges, const std::string& color)
{
    pImpl->begin(2, color);
    for (const Edge2& edge : vEdges) {
        if (edge.getTriangle() == nullptr) {
            pImpl->countOmitted();
        } else {
            pImpl->take<2>({edge.getSrc(), edge.getTrg()});
        }
    }
    pImpl->end();
}

void Visualizer3::addTriangles(const std::vector<Point2>& vCorners, const std::string& color)
{
    pImpl->begin(3, color);
    for (std::size_t i = 2; i < vCorners.size(); i += 3) {
        pImpl->take<3>({&vCorners[i - 2], &vCorners[i - 1], &vCorners[i]});
    }
    pImpl->end();
}

bool Visualizer3::writeFile()
{
    if (pImpl->bClosed) {
        msgWarning("Visualizer3::writeFile()", "No effect. File has already been closed");
        return false;
    }
    return pImpl->complete();
}

} // namespace ORBI_LUMO25D
