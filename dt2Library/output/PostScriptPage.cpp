#include "output/PostScriptPage.h"

#include "support/messages.h"

#include <algorithm>
#include <charconv>

namespace ORBI_LUMO25D
{

namespace
{

const double pageSize = 480.0; // of the drawing, in points of 1/72 inch, in both directions
const double pageLeft = 50.0;
const double pageBottom = 200.0;

const std::size_t maxNotes = 10;
const std::size_t maxNoteLength = 120;

bool isControl(char c)
{
    return static_cast<unsigned char>(c) < 32 || c == 127;
}

std::string octal(char c)
{
    const unsigned value = static_cast<unsigned char>(c);
    std::string result = "\\";
    for (const unsigned shift : {6U, 3U, 0U}) result += static_cast<char>('0' + ((value >> shift) & 7U));
    return result;
}

/// For a PostScript string between parentheses.
std::string escaped(const std::string& text)
{
    std::string result;
    for (const char c : text) {
        if (c == '(' || c == ')' || c == '\\') {
            result += '\\';
            result += c;
        } else if (isControl(c) || static_cast<unsigned char>(c) > 127) {
            result += octal(c);
        } else {
            result += c;
        }
    }
    return result;
}

/// For a comment, which must stay on its line.
std::string escapedForComment(const std::string& text)
{
    std::string result;
    for (const char c : text) result += isControl(c) ? octal(c) : std::string(1, c);
    return result;
}

std::vector<std::string> splitLines(const std::string& text)
{
    std::vector<std::string> vLines(1);
    for (const char c : text) {
        if (c == '\n') {
            vLines.emplace_back();
        } else {
            vLines.back() += c;
        }
    }
    return vLines;
}

} // namespace

PostScriptPage::PostScriptPage(std::ostream& stream_, const Bbox2& box_)
    : stream(stream_), box(box_), preScale(box_.getMaxRange() < 1e300 ? 1.0 : 0x1p-20),
      scaledRange(std::max(box_.get_maxX() * preScale - box_.get_minX() * preScale,
                           box_.get_maxY() * preScale - box_.get_minY() * preScale))
{
}

// The multiplication goes first: 480 / range would overflow for the tiniest ranges.
double PostScriptPage::toPageX(double x) const
{
    return (x * preScale - box.get_minX() * preScale) * pageSize / scaledRange + pageLeft;
}

double PostScriptPage::toPageY(double y) const
{
    return (y * preScale - box.get_minY() * preScale) * pageSize / scaledRange + pageBottom;
}

double PostScriptPage::toPageLength(double length) const
{
    return length * preScale * pageSize / scaledRange;
}

void PostScriptPage::writeHeader(const std::string& filename, const std::vector<std::string>& vHeaderLines)
{
    stream << "%!PS-Adobe-1.0\n\t%%Creator: ORBI PostscriptWriter\n\t%%Title: " << escapedForComment(filename) << "\n";
    stream << "\t%%CreationDate: none\n";
    stream << "\t%%DocumentMedia: A4 595 842 0 () ()\n\t%%Orientation: Portrait\n\t%%Pages: 1\t%%DocumentFonts: "
              "Times-Roman Helvetica\n\t%%EndComments\n\t%%BeginProlog\n\t%%EndProlog\n\t%%Page: Orbi "
              "PostscriptWriter 1\n";
    stream << 0.05 << "\tsetlinewidth\n\t0\t0\t0\tsetrgbcolor\n\t/Times-Roman findfont 17 scalefont\n\tsetfont\n";
    stream << "40\t740\tmoveto\n\t(" << escaped(filename) << ")\tshow\n";
    stream << "0.4\t0.4\t0.4\tsetrgbcolor\n\t/Times-Roman findfont 10 scalefont\n\tsetfont\n";
    stream << "40\t725\tmoveto\n(Orbi Lumo 2.5D, )\tshow\n";
    stream << "0.0\t0.0\t0.0\tsetrgbcolor\n\t/Times-Roman findfont 10 scalefont\n\tsetfont\n";
    stream << "40\t705\tmoveto\n(x-Range: [" << box.get_minX() << " - " << box.get_maxX() << "] =" << box.getRangeX()
           << ")\tshow\n";
    stream << "40\t695\tmoveto\n(y-Range: [" << box.get_minY() << " - " << box.get_maxY() << "] =" << box.getRangeY()
           << ")\tshow\n";
    if (!vHeaderLines.empty()) writeNotes(vHeaderLines);
}

void PostScriptPage::writeNotes(const std::vector<std::string>& vHeaderLines)
{
    std::vector<std::string> vNotes;
    std::size_t maxLength = 0;
    for (std::size_t i = 0; i < std::min(vHeaderLines.size(), maxNotes); ++i) {
        vNotes.push_back(vHeaderLines[i].substr(0, maxNoteLength));
        maxLength = std::max(maxLength, vNotes.back().size());
    }
    // Times is about half as wide as high: the longest line ends within 250 points, on the page.
    const double fontSize = maxLength == 0 ? 12.0 : std::min(12.0, 500.0 / static_cast<double>(maxLength));
    const double lineDistance = 100.0 / static_cast<double>(vNotes.size()) - 2.0;
    const double top = 695.0;

    stream << "0.0\t0.0\t0.0\tsetrgbcolor\n\t/Times-Roman findfont " << fontSize << " scalefont\n\tsetfont\n";
    double y = top;
    for (const std::string& text : vNotes) {
        if (y < top - 100.0) {
            printLine("Visualizer2::writeHeader(), no space for line " + text + " - skipped!");
            continue;
        }
        stream << "240\t" << y << "\tmoveto\n(" << escaped(text) << ")\tshow\n";
        y -= lineDistance;
    }
    stream << "237\t692\tmoveto\n237\t" << y << "\tlineto\n237\t692\tmoveto\n570\t692\tlineto\n570\t692\tlineto\n";
}

void PostScriptPage::ensureColor(const Color& color)
{
    if (color != lastColor) changeColor(color);
}

void PostScriptPage::changeColor(const Color& color)
{
    stream << "stroke\n" << color.r << "\t" << color.g << "\t" << color.b << "\tsetrgbcolor\n";
    stream << color.width << "\tsetlinewidth\n";
    lastColor = color;
}

/// Most of a page: to_chars writes what the stream in its default format would, in a fraction of the time.
void PostScriptPage::writeVertex(const DrawnPoint& p, const char* pOperator)
{
    char aLine[64];
    char* pEnd = aLine;
    for (const double value : {toPageX(p.x), toPageY(p.y)}) {
        pEnd = std::to_chars(pEnd, aLine + sizeof(aLine) - 1, value, std::chars_format::general, 6).ptr;
        *pEnd++ = '\t';
    }
    stream.write(aLine, pEnd - aLine);
    stream << pOperator << '\n';
}

void PostScriptPage::writeCross(const DrawnPoint& p, const Color& color)
{
    const double s = std::max(2.0 * static_cast<double>(color.width), 1.5);
    const double x = toPageX(p.x);
    const double y = toPageY(p.y);
    stream << x - s << "\t" << y - s << "\tmoveto\n" << x + s << "\t" << y + s << "\tlineto\n";
    stream << x - s << "\t" << y + s << "\tmoveto\n" << x + s << "\t" << y - s << "\tlineto\n";
}

/// A path that is stroked now and then stays within what interpreters hold.
void PostScriptPage::countObject()
{
    if (++updateCtr > 30) {
        updateCtr = 0;
        stream << "stroke\n";
    }
}

void PostScriptPage::draw(const DrawnShape<3>& triangle)
{
    const Color& color = triangle.color;
    ensureColor(color);
    writeVertex(triangle.aCorners[0], "moveto");
    writeVertex(triangle.aCorners[1], "lineto");
    writeVertex(triangle.aCorners[2], "lineto");
    stream << "closepath\n";
    if (!color.bFill) {
        stream << "stroke\n";
    } else {
        stream << "gsave\n  fill\ngrestore\n";
        if (color.width != 0.0F) { // the border, in grey, shows where a filled triangle ends
            stream << "  0.3 0.3 .3 setrgbcolor\n" << color.width << "\tsetlinewidth\nstroke\n";
            changeColor(color);
        }
    }
    countObject();
}

void PostScriptPage::draw(const DrawnShape<2>& segment)
{
    ensureColor(segment.color);
    writeVertex(segment.aCorners[0], "moveto");
    writeVertex(segment.aCorners[1], "lineto");
    countObject();
}

void PostScriptPage::draw(const DrawnShape<1>& point)
{
    ensureColor(point.color);
    writeCross(point.aCorners[0], point.color);
    countObject();
}

void PostScriptPage::draw(const DrawnCircle& circle)
{
    ensureColor(circle.color);
    const double x = toPageX(circle.center.x);
    const double y = toPageY(circle.center.y);
    const double r = toPageLength(circle.radius);
    stream << x + r << "\t" << y << "\tmoveto\n";
    stream << x << "\t" << y << "\t" << r << "\t" << 0 << "\t" << 360 << "\tarc\n";
    if (circle.color.bFill) stream << "gsave\n  fill\ngrestore\n";
    stream << "stroke\n";
    countObject();
}

void PostScriptPage::draw(const DrawnLabel& label)
{
    ensureColor(label.color);
    const int fontSize = label.label.getFontSize();
    const DrawnPoint position{label.label.getPosition().x(), label.label.getPosition().y()};
    const double x = toPageX(position.x);
    double y = toPageY(position.y);

    if (fontSize > 0) { // interpreters stop at a font without extent
        stream << "/Arial findfont " << fontSize << " scalefont\n setfont\n";
        for (const std::string& line : splitLines(label.label.getCS())) {
            stream << x << "\t" << y << "\tmoveto\n(" << escaped(line) << ")\tshow\n";
            y -= fontSize;
        }
    }
    stream << "stroke\n";
    if (label.label.hasMark()) writeCross(position, label.color);
    countObject();
}

void PostScriptPage::writeTrailer()
{
    stream << "stroke\nshowpage\n%%Trailer\n";
}

} // namespace ORBI_LUMO25D
