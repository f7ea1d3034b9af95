#include "Visualizer2.h"

#include "Circle2.h"
#include "Edge2.h"
#include "LumoException.h"
#include "Segment2.h"
#include "Triangle2.h"
#include "support/TestOutput.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <limits>
#include <memory>
#include <random>
#include <sstream>

namespace ORBI_LUMO25D
{

using lumo_test::countOf;
using lumo_test::CoutCapture;
using lumo_test::readFile;
using lumo_test::TempWorkDir;

namespace
{

/// The part of a page behind its header (without notes).
std::string bodyOf(const std::string& page)
{
    return page.substr(page.find('\n', page.find("(y-Range: ")) + 1);
}

/// x and y of every vertex of the page's paths.
std::vector<std::pair<double, double>> verticesOf(const std::string& body)
{
    std::vector<std::pair<double, double>> v;
    std::istringstream stream(body);
    for (std::string line; std::getline(stream, line);) {
        double x = 0.0, y = 0.0;
        int length = 0;
        if (std::sscanf(line.c_str(), "%lf\t%lf\t%*1[ml]%*[ovetin]%n", &x, &y, &length) == 2 && length > 0) {
            v.emplace_back(x, y);
        }
    }
    return v;
}

} // namespace

TEST(Visualizer2Test, PageIsByteForByte)
{
    TempWorkDir dir;
    CoutCapture out;
    const lumo_test::CommaLocale commas; // must not reach the page
    Point2 a(0, 0, 5), b(4, 0, 5), c(0, 2, 5);
    Triangle2 t;
    t.setProperties(&a, &b, &c);
    {
        // In an order that is not the page's. A range of 4.8 makes 100 points of the page of each unit.
        Visualizer2 vis("a.ps");
        vis.addObject(Label(Point2(1, 1, 0), "two\nlines", true, 10), Color());
        vis.addObject(Circle2(1, 1, 0.25), Color(CBLUE, 2.0F, true));
        vis.addObject(Point2(4.8, 0, 0), Color(CBLUE, 2.0F, true));
        vis.addObject(Segment2(a, b), Color(CPINK));
        vis.addObject(t, Color(0.25, 1, 0, 0.5, true));
        vis.addObject(t, Color());
        for (const char* pNote : {"note", "another"}) vis.addHeaderLine(pNote);
    }
    EXPECT_EQ(out.take(), "Visualizer2:: Writing a.ps\n"
                          "Calling Visualizer2::writeFile() to complete an unfinished visualization [a.ps\n");
    EXPECT_EQ(
        readFile("a.ps"),
        "%!PS-Adobe-1.0\n\t%%Creator: ORBI PostscriptWriter\n\t%%Title: a.ps\n\t%%CreationDate: none\n"
        "\t%%DocumentMedia: A4 595 842 0 () ()\n\t%%Orientation: Portrait\n\t%%Pages: 1\t%%DocumentFonts: Times-Roman "
        "Helvetica\n\t%%EndComments\n\t%%BeginProlog\n\t%%EndProlog\n\t%%Page: Orbi PostscriptWriter 1\n"
        "0.05\tsetlinewidth\n\t0\t0\t0\tsetrgbcolor\n\t/Times-Roman findfont 17 scalefont\n\tsetfont\n"
        "40\t740\tmoveto\n\t(a.ps)\tshow\n"
        "0.4\t0.4\t0.4\tsetrgbcolor\n\t/Times-Roman findfont 10 scalefont\n\tsetfont\n"
        "40\t725\tmoveto\n(Orbi Lumo 2.5D, )\tshow\n"
        "0.0\t0.0\t0.0\tsetrgbcolor\n\t/Times-Roman findfont 10 scalefont\n\tsetfont\n"
        "40\t705\tmoveto\n(x-Range: [0 - 4.8] =4.8)\tshow\n"
        "40\t695\tmoveto\n(y-Range: [0 - 2] =2)\tshow\n"
        "0.0\t0.0\t0.0\tsetrgbcolor\n\t/Times-Roman findfont 12 scalefont\n\tsetfont\n"
        "240\t695\tmoveto\n(note)\tshow\n240\t647\tmoveto\n(another)\tshow\n"
        "237\t692\tmoveto\n237\t599\tlineto\n237\t692\tmoveto\n570\t692\tlineto\n570\t692\tlineto\n"
        // the filled triangle with its grey border, then the other one
        "stroke\n0.25\t1\t0\tsetrgbcolor\n0.5\tsetlinewidth\n"
        "50\t200\tmoveto\n450\t200\tlineto\n50\t400\tlineto\nclosepath\ngsave\n  fill\ngrestore\n"
        "  0.3 0.3 .3 setrgbcolor\n0.5\tsetlinewidth\nstroke\n"
        "stroke\n0.25\t1\t0\tsetrgbcolor\n0.5\tsetlinewidth\n"
        "stroke\n0\t0\t0\tsetrgbcolor\n0.1\tsetlinewidth\n"
        "50\t200\tmoveto\n450\t200\tlineto\n50\t400\tlineto\nclosepath\nstroke\n"
        // segment
        "stroke\n1\t0.4\t0.7\tsetrgbcolor\n0.1\tsetlinewidth\n50\t200\tmoveto\n450\t200\tlineto\n"
        // point, and the circle in the same colour
        "stroke\n0\t0\t1\tsetrgbcolor\n2\tsetlinewidth\n"
        "526\t196\tmoveto\n534\t204\tlineto\n526\t204\tmoveto\n534\t196\tlineto\n"
        "200\t300\tmoveto\n150\t300\t50\t0\t360\tarc\ngsave\n  fill\ngrestore\nstroke\n"
        // label with its mark
        "stroke\n0\t0\t0\tsetrgbcolor\n0.1\tsetlinewidth\n"
        "/Arial findfont 10 scalefont\n setfont\n150\t300\tmoveto\n(two)\tshow\n150\t290\tmoveto\n(lines)\tshow\n"
        "stroke\n148.5\t298.5\tmoveto\n151.5\t301.5\tlineto\n148.5\t301.5\tmoveto\n151.5\t298.5\tlineto\n"
        "stroke\nshowpage\n%%Trailer\n");
}

TEST(Visualizer2Test, EverythingLiesOnThePageAtEveryMagnitude)
{
    TempWorkDir dir;
    CoutCapture out;
    std::mt19937_64 random(3);
    std::uniform_real_distribution<double> uniform(-1.0, 1.0);
    for (const double magnitude : {5e-324, 1e-310, 1e-5, 1.0, 1e9, 1e305, 1e307, std::numeric_limits<double>::max()}) {
        for (const double offset : {0.0, magnitude < 1e300 ? 1e17 : 0.0}) {
            SCOPED_TRACE(std::to_string(std::log10(magnitude)) + " " + std::to_string(offset));
            auto any = [&] { return Point2(offset + magnitude * uniform(random), magnitude * uniform(random), 0.0); };
            Visualizer2 vis("p.ps");
            for (int i = 0; i < 50; ++i) vis.addObject(Segment2(any(), any()), Color());
            vis.addObject(Segment2(any(), Point2(offset + magnitude, -magnitude, 0.0)), Color());
            vis.addObject(Segment2(any(), Point2(offset - magnitude, magnitude, 0.0)), Color());
            vis.writeFile();
            double low = 1e9, high = 0.0;
            const std::string body = bodyOf(readFile("p.ps"));
            const auto vVertices = verticesOf(body);
            EXPECT_EQ(countOf("stroke\n", body), 2U) << "a path of 52 segments is broken up once";
            ASSERT_EQ(vVertices.size(), 104U);
            for (const auto& [x, y] : vVertices) {
                EXPECT_TRUE(x >= 50.0 && x <= 530.0 && y >= 200.0 && y <= 680.0) << x << " " << y;
                low = std::min(low, x);
                high = std::max(high, x);
            }
            EXPECT_TRUE(offset != 0.0 || high - low == 480.0) << low << " " << high;
        }
    }
    for (const Point2& p : {Point2(3, 5, 0), Point2(-1e17, 1e300, 0)}) { // a box without extent grows to both sides
        Visualizer2 vis("p.ps");
        vis.addObject(p, Color());
        vis.writeFile();
        for (const auto& [x, y] : verticesOf(bodyOf(readFile("p.ps"))))
            EXPECT_TRUE(x >= 48 && x <= 532 && y >= 198 && y <= 682);
    }
}

TEST(Visualizer2Test, UndrawableObjectsAreLeftOutWithOneWarning)
{
    TempWorkDir dir;
    CoutCapture out;
    const double nan = std::nan(""), inf = HUGE_VAL;
    auto pCorner = std::make_unique<Point2>(0, 0, nan);
    Point2 b(4, 0, nan), c(0, 4, 0); // heights don't count
    Triangle2 t, dead;
    t.setProperties(pCorner.get(), &b, &c);
    {
        Visualizer2 vis("p.ps");
        vis.addObject(std::vector<Triangle2*>{&t, nullptr, &dead}, Color());
        vis.addObject(std::vector<Triangle2>{t, dead}, Color());
        vis.addObject(std::vector<Edge2>{Edge2(&t, 0), Edge2(&dead, 1), Edge2(nullptr, 0)}, Color());
        vis.addObject(std::vector<Point2*>{&b, nullptr}, Color());
        vis.addObject(std::vector<Point2>{Point2(nan, 0, 0), Point2(0, inf, 0), c}, Color());
        vis.addObject(std::vector<Segment2>{Segment2(b, c), Segment2(b, Point2(0, -inf, 0))}, Color());
        vis.addObject(Circle2(0, 0, -1), Color());
        vis.addObject(Circle2(1e308, 0, inf), Color());
        vis.addObject(Label(Point2(nan, 0, 0), "l", true, 8), Color());
        vis.addObject(b, Color(0, nan, 0, 1, false));
        vis.addObject(Label(b, nullptr, true, 0), Color()); // drawable: only the mark
        pCorner.reset();                                    // what was added need not live
        EXPECT_EQ(countOf("\n", out.take()), 1U);
        vis.writeFile();
    }
    const std::string text = out.take();
    EXPECT_EQ(countOf("WARNING", text), 1U);
    EXPECT_NE(text.find(": 13 objects"), std::string::npos) << text;
    const std::string page = readFile("p.ps");
    EXPECT_EQ(countOf("nan", page) + countOf("inf", page), 0U) << page;
    EXPECT_EQ(countOf("closepath", page), 2U);
    EXPECT_EQ(verticesOf(bodyOf(page)).size(), 2U * 3 + 2 + 2 * 4 + 2 + 4);
}

TEST(Visualizer2Test, TextsCannotBreakThePage)
{
    TempWorkDir dir;
    CoutCapture out;
    const std::string filename = "a(b)\n\\c\xc3\xa4.ps";
    Visualizer2 vis(filename.c_str());
    vis.addHeaderLine(("(" + std::string(129, 'x')).c_str());
    vis.addHeaderLine("\x01) showpage (");
    vis.addObject(Label(Point2(0, 0, 0), "a)\n\n(\\", false, 8), Color());
    vis.writeFile();
    const std::string page = readFile(filename);
    for (const std::string& piece :
         {std::string("%%Title: a(b)\\012\\c\xc3\xa4.ps\n"), std::string("(a\\(b\\)\\012\\\\c\\303\\244.ps)\tshow"),
          "(\\(" + std::string(119, 'x') + ")\tshow", std::string("(\\001\\) showpage \\()\tshow"), // cut to 120
          std::string("(a\\))\tshow\n290\t432\tmoveto\n()\tshow\n290\t424\tmoveto\n(\\(\\\\)\tshow")}) {
        EXPECT_EQ(countOf(piece, page), 1U) << piece;
    }
}

TEST(Visualizer2Test, MisuseIsAnsweredAsDescribed)
{
    TempWorkDir dir;
    CoutCapture out;
    Visualizer2 vis("p.ps");
    for (int i = 0; i < 11; ++i) vis.addHeaderLine("fits");
    EXPECT_NE(out.take().find("WARNING: skipping text [\"fits\"], maximum number of header lines"), std::string::npos);
    vis.writeFile();
    const std::string page = readFile("p.ps");
    EXPECT_EQ(countOf("(fits)", page), 10U);
    vis.writeFile();
    EXPECT_NE(out.take().find("WARNING: No effect. File has already been closed"), std::string::npos);
    EXPECT_THROW(vis.addObject(Point2(), Color()), LumoException);
    EXPECT_EQ(readFile("p.ps"), page);
    out.take();
    for (const char* pName : {"no/where.ps", static_cast<const char*>(nullptr), "/dev/full"}) {
        const std::string name = pName == nullptr ? "" : pName;
        Visualizer2 unwritable(pName);
        unwritable.writeFile();
        EXPECT_EQ(out.take(), "Visualizer2:: Writing " + name + "\n" + name + " can't be written\n");
    }
}

TEST(ColorTest, NamesComeInTurnAndUnknownOnesAreBlack)
{
    CoutCapture out;
    Color::currentColorName = CCYAN;
    for (int i = 0; i < 45; ++i) EXPECT_EQ(Color::getNextColorName(), i % 15);
    for (const int c : {-1, 17}) EXPECT_EQ(Color(static_cast<Colorname>(c), 0.1F, false), Color());
    EXPECT_NE(out.take().find("Color::Color, WARNING: Colorname unknown, returning black"), std::string::npos);
}

} // namespace ORBI_LUMO25D
