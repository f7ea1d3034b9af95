#ifndef LUMO25D_OUTPUT_POSTSCRIPTPAGE_H
#define LUMO25D_OUTPUT_POSTSCRIPTPAGE_H

#include "Bbox2.h"
#include "Color.h"
#include "Label.h"

#include <array>
#include <cstddef>
#include <ostream>
#include <string>
#include <vector>

namespace ORBI_LUMO25D
{

/// A place in the drawing's own coordinates; finite.
struct DrawnPoint
{
    double x = 0.0;
    double y = 0.0;
};

/// A point, a segment or a triangle.
template <std::size_t numCorners>
struct DrawnShape
{
    std::array<DrawnPoint, numCorners> aCorners;
    Color color;
};

struct DrawnCircle
{
    DrawnPoint center;
    double radius = 0.0;
    Color color;
};

struct DrawnLabel
{
    Label label;
    Color color;
};

/// Writes one page of PostScript onto a stream: header, objects, trailer, in this order.
///
/// The box of all objects is mapped onto a square of 480 points above (50, 200), equally scaled in x and y. The
/// stream must be in the classic locale and in default number format. Text is escaped where PostScript needs it.
class PostScriptPage
{
public:
    /// box: valid, with an extent in x and y.
    PostScriptPage(std::ostream& stream_, const Bbox2& box_);

    /// Head of the page: file name, ranges, and a block of at most 10 lines of notes, cut to 120 characters.
    void writeHeader(const std::string& filename, const std::vector<std::string>& vHeaderLines);
    void draw(const DrawnShape<3>& triangle);
    void draw(const DrawnShape<2>& segment);
    void draw(const DrawnShape<1>& point);
    void draw(const DrawnCircle& circle);
    void draw(const DrawnLabel& label);
    void writeTrailer();

private:
    double toPageX(double x) const;
    double toPageY(double y) const;
    double toPageLength(double length) const;

    void writeNotes(const std::vector<std::string>& vHeaderLines);
    void ensureColor(const Color& color);
    void changeColor(const Color& color);
    void writeVertex(const DrawnPoint& p, const char* pOperator);
    void writeCross(const DrawnPoint& p, const Color& color);
    void countObject();

    std::ostream& stream;
    Bbox2 box;
    double preScale; ///< a power of two that keeps the range of a huge box finite
    double scaledRange;
    int updateCtr = 0; ///< objects since the last limiting "stroke"
    Color lastColor;
};

} // namespace ORBI_LUMO25D

#endif
