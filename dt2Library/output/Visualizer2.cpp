#include "Visualizer2.h"

#include "Bbox2.h"
#include "Circle2.h"
#include "Edge2.h"
#include "Point2.h"
#include "Segment2.h"
#include "Triangle2.h"
#include "output/PostScriptPage.h"
#include "support/check.h"
#include "support/messages.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <fstream>
#include <limits>
#include <locale>
#include <string>

namespace ORBI_LUMO25D
{

namespace
{

bool isFinite(const Color& color)
{
    return std::isfinite(color.r) && std::isfinite(color.g) && std::isfinite(color.b) && std::isfinite(color.width);
}

/// Two values that differ and lie around v: v - 1 and v + 1, or neighbours that are far enough if v is so large that 1
/// is lost.
void getAround(double v, double& lower, double& upper)
{
    const double highest = std::numeric_limits<double>::max();
    const double d = v - 1.0 < v && v + 1.0 > v ? 1.0 : 1e-15 * std::fabs(v);
    lower = std::max(v - d, -highest);
    upper = std::min(v + d, highest);
}

} // namespace

/// What has been added so far, and the file that it goes to.
class Visualizer2Impl
{
public:
    explicit Visualizer2Impl(const char* filename_);

    template <std::size_t n>
    void add(std::vector<DrawnShape<n>>& vShapes, const Point2* const (&aPoints)[n], const Color& color);
    void add(const Circle2& circle, const Color& color);
    void add(const Label& label, const Color& color);
    void countOmitted() { ++numOmitted; }

    void writeFile();

    std::string filename;
    std::vector<DrawnShape<2>> vSegments;
    std::vector<DrawnCircle> vCircles;
    std::vector<DrawnShape<1>> vPoints;
    std::vector<DrawnShape<3>> vTriangles;
    std::vector<DrawnLabel> vLabels;
    std::vector<std::string> vHeaderLines;
    bool bFileClosed = false;

private:
    bool isDrawable(double x, double y, const Color& color);
    template <std::size_t n>
    static void addToBox(const std::vector<DrawnShape<n>>& vShapes, Bbox2& box);
    Bbox2 computeBox() const;

    std::ofstream stream;
    bool bOpened = false;
    std::size_t numOmitted = 0;
};

Visualizer2Impl::Visualizer2Impl(const char* filename_) : filename(filename_ == nullptr ? "" : filename_)
{
    printLine("Visualizer2:: Writing " + filename);
    stream.imbue(std::locale::classic()); // the caller's global locale would write decimal commas
    stream.open(filename);
    bOpened = stream.is_open();
    if (!bOpened) printLine(filename + " can't be written");
}

bool Visualizer2Impl::isDrawable(double x, double y, const Color& color)
{
    if (std::isfinite(x) && std::isfinite(y) && isFinite(color)) return true;
    countOmitted();
    return false;
}

template <std::size_t n>
void Visualizer2Impl::add(std::vector<DrawnShape<n>>& vShapes, const Point2* const (&aPoints)[n], const Color& color)
{
    DrawnShape<n> shape;
    shape.color = color;
    for (std::size_t i = 0; i < n; ++i) {
        if (aPoints[i] == nullptr) {
            countOmitted();
            return;
        }
        if (!isDrawable(aPoints[i]->x(), aPoints[i]->y(), color)) return;
        shape.aCorners[i] = DrawnPoint{aPoints[i]->x(), aPoints[i]->y()};
    }
    vShapes.push_back(shape);
}

void Visualizer2Impl::add(const Circle2& circle, const Color& color)
{
    const Point2 center = circle.getCenter();
    const double r = circle.getRadius();
    if (!isDrawable(center.x() - r, center.y() - r, color) || !isDrawable(center.x() + r, center.y() + r, color)) {
        return;
    }
    vCircles.push_back(DrawnCircle{{center.x(), center.y()}, r, color});
}

void Visualizer2Impl::add(const Label& label, const Color& color)
{
    if (isDrawable(label.getPosition().x(), label.getPosition().y(), color)) {
        vLabels.push_back(DrawnLabel{label, color});
    }
}

template <std::size_t n>
void Visualizer2Impl::addToBox(const std::vector<DrawnShape<n>>& vShapes, Bbox2& box)
{
    for (const DrawnShape<n>& shape : vShapes) {
        for (const DrawnPoint& p : shape.aCorners) box.add(Point2(p.x, p.y, 0.0));
    }
}

Bbox2 Visualizer2Impl::computeBox() const
{
    Bbox2 box;
    addToBox(vSegments, box);
    addToBox(vPoints, box);
    addToBox(vTriangles, box);
    for (const DrawnCircle& circle : vCircles) {
        box.add(Point2(circle.center.x - circle.radius, circle.center.y - circle.radius, 0.0));
        box.add(Point2(circle.center.x + circle.radius, circle.center.y + circle.radius, 0.0));
    }
    for (const DrawnLabel& label : vLabels) box.add(label.label.getPosition());
    if (!box.isValid()) box.add(Point2(0.0, 0.0, 0.0)); // an empty page

    // Half a point of the page per character makes some room to the right; the scale that this is measured in is that
    // of the positions. An infinite range leaves no room to make.
    const double range = box.getMaxRange();
    for (const DrawnLabel& label : vLabels) {
        const double numChars = static_cast<double>(std::min<std::size_t>(std::strlen(label.label.getCS()), 20));
        const double x = label.label.getPosition().x() + 0.5 * numChars * range / 480.0;
        if (std::isfinite(x)) box.add(Point2(x, label.label.getPosition().y(), 0.0));
    }

    double lower = 0.0;
    double upper = 0.0;
    if (box.get_minX() == box.get_maxX()) {
        getAround(box.get_minX(), lower, upper);
        box.add(Point2(lower, box.get_minY(), 0.0));
        box.add(Point2(upper, box.get_minY(), 0.0));
    }
    if (box.get_minY() == box.get_maxY()) {
        getAround(box.get_minY(), lower, upper);
        box.add(Point2(box.get_minX(), lower, 0.0));
        box.add(Point2(box.get_minX(), upper, 0.0));
    }
    return box;
}

void Visualizer2Impl::writeFile()
{
    bFileClosed = true;
    if (numOmitted > 0) {
        msgWarning("Visualizer2::writeFile()",
                   std::to_string(numOmitted) + " objects without finite coordinates or colors are left out");
    }
    PostScriptPage page(stream, computeBox());
    page.writeHeader(filename, vHeaderLines);
    for (const auto& triangle : vTriangles) page.draw(triangle);
    for (const auto& segment : vSegments) page.draw(segment);
    for (const auto& point : vPoints) page.draw(point);
    for (const auto& circle : vCircles) page.draw(circle);
    for (const auto& label : vLabels) page.draw(label);
    page.writeTrailer();
    stream.close();
    if (bOpened && !stream) printLine(filename + " can't be written");
}

Visualizer2::Visualizer2(const char* filename) : pImpl(std::make_unique<Visualizer2Impl>(filename)) {}

Visualizer2::~Visualizer2()
{
    if (pImpl->bFileClosed) return;
    try {
        printLine("Calling Visualizer2::writeFile() to complete an unfinished visualization [" + pImpl->filename);
        writeFile();
    } catch (...) {
        // A drawing that can't be completed must not end the program.
    }
}

void Visualizer2::addObject(const Segment2& segment, const Color& color)
{
    LUMO_CHECK(!pImpl->bFileClosed, "!bFileClosed");
    pImpl->add(pImpl->vSegments, {&segment.src, &segment.trg}, color);
}

void Visualizer2::addObject(const Edge2& edge, const Color& color)
{
    LUMO_CHECK(!pImpl->bFileClosed, "!bFileClosed");
    if (edge.getTriangle() == nullptr) {
        pImpl->countOmitted();
        return;
    }
    pImpl->add(pImpl->vSegments, {edge.getSrc(), edge.getTrg()}, color);
}

void Visualizer2::addObject(const Point2& point, const Color& color)
{
    LUMO_CHECK(!pImpl->bFileClosed, "!bFileClosed");
    pImpl->add(pImpl->vPoints, {&point}, color);
}

void Visualizer2::addObject(const Circle2& circle, const Color& color)
{
    LUMO_CHECK(!pImpl->bFileClosed, "!bFileClosed");
    pImpl->add(circle, color);
}

void Visualizer2::addObject(const Triangle2& triangle, const Color& color)
{
    LUMO_CHECK(!pImpl->bFileClosed, "!bFileClosed");
    pImpl->add(pImpl->vTriangles, {triangle.corner(0), triangle.corner(1), triangle.corner(2)}, color);
}

void Visualizer2::addObject(const Label& label, const Color& color)
{
    LUMO_CHECK(!pImpl->bFileClosed, "!bFileClosed");
    pImpl->add(label, color);
}

void Visualizer2::addObject(const std::vector<Point2>& vPoints, const Color& color)
{
    LUMO_CHECK(!pImpl->bFileClosed, "!bFileClosed");
    for (const Point2& point : vPoints) addObject(point, color);
}

void Visualizer2::addObject(const std::vector<Point2*>& vPoints, const Color& color)
{
    LUMO_CHECK(!pImpl->bFileClosed, "!bFileClosed");
    for (const Point2* pPoint : vPoints) pImpl->add(pImpl->vPoints, {pPoint}, color);
}

void Visualizer2::addObject(const std::vector<Segment2>& vSegments, const Color& color)
{
    LUMO_CHECK(!pImpl->bFileClosed, "!bFileClosed");
    for (const Segment2& segment : vSegments) addObject(segment, color);
}

void Visualizer2::addObject(const std::vector<Edge2>& vEdges, const Color& color)
{
    LUMO_CHECK(!pImpl->bFileClosed, "!bFileClosed");
    for (const Edge2& edge : vEdges) addObject(edge, color);
}

void Visualizer2::addObject(const std::vector<Triangle2>& vTriangles, const Color& color)
{
    LUMO_CHECK(!pImpl->bFileClosed, "!bFileClosed");
    for (const Triangle2& triangle : vTriangles) addObject(triangle, color);
}

void Visualizer2::addObject(const std::vector<Triangle2*>& vTriangles, const Color& color)
{
    LUMO_CHECK(!pImpl->bFileClosed, "!bFileClosed");
    for (const Triangle2* pTriangle : vTriangles) {
        if (pTriangle == nullptr) {
            pImpl->countOmitted();
        } else {
            addObject(*pTriangle, color);
        }
    }
}

void Visualizer2::addHeaderLine(const char* s)
{
    LUMO_CHECK(!pImpl->bFileClosed, "!bFileClosed");
    const std::string text(s == nullptr ? "" : s);
    if (pImpl->vHeaderLines.size() >= 10) {
        msgWarning("Visualizer2::addHeaderLine()",
                   "skipping text [\"" + text + "\"], maximum number of header lines reached");
        return;
    }
    pImpl->vHeaderLines.push_back(text);
}

void Visualizer2::writeFile()
{
    if (pImpl->bFileClosed) {
        msgWarning("Visualizer2::writeFile()", "No effect. File has already been closed");
        return;
    }
    pImpl->writeFile();
}

} // namespace ORBI_LUMO25D
