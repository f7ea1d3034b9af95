#include "freeFunctions.h"

#include "output/stlReader.h"
#include "support/TestOutput.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <limits>
#include <random>

namespace ORBI_LUMO25D
{

using lumo_test::bytesOf;
using lumo_test::CoutCapture;
using lumo_test::readFile;
using lumo_test::TempWorkDir;
using lumo_test::writeFile;

namespace
{

std::string headerBytes(unsigned fileType, unsigned long long n)
{
    return bytesOf(fileType, 4) + bytesOf(n, 8);
}

std::string doubleBytes(const std::vector<double>& vValues)
{
    std::string bytes;
    for (const double value : vValues) bytes += bytesOf(value);
    return bytes;
}

std::vector<double> coordsOf(const std::vector<Point2>& vPoints)
{
    std::vector<double> v;
    for (const Point2& p : vPoints) v.insert(v.end(), {p.x(), p.y(), p.z()});
    return v;
}

std::vector<double> coordsOf(const std::vector<Segment2>& vSegments)
{
    std::vector<Point2> vPoints;
    for (const Segment2& s : vSegments) vPoints.insert(vPoints.end(), {s.src, s.trg});
    return coordsOf(vPoints);
}

/// Doubles of every magnitude, and the special ones that a file can hold.
std::vector<Point2> anyPoints(std::size_t n, std::mt19937_64& random)
{
    using Limits = std::numeric_limits<double>;
    std::vector<double> v = {0.0, -0.0, Limits::denorm_min(), -Limits::min(), Limits::max(), Limits::lowest()};
    while (v.size() < 3 * n) {
        const std::uint64_t bits = random();
        double value = 0.0;
        std::memcpy(&value, &bits, 8);
        if (std::isfinite(value)) v.push_back(value);
    }
    std::vector<Point2> vPoints;
    for (std::size_t i = 0; i < n; ++i) vPoints.emplace_back(v[3 * i], v[3 * i + 1], v[3 * i + 2]);
    return vPoints;
}

} // namespace

TEST(PointFilesTest, RoundTripsKeepEveryBitAndAppend)
{
    SCOPED_TRACE("seed 20240501");
    std::mt19937_64 random(20240501);
    const TempWorkDir dir;
    const lumo_test::CommaLocale commas;                              // must reach no file
    for (const std::size_t n : {std::size_t(2), std::size_t(5000)}) { // within one piece of the file, over several
        std::vector<Point2> vPoints = anyPoints(n, random);
        std::vector<Point2*> vPointers;
        for (Point2& p : vPoints) vPointers.push_back(&p);
        const std::string bytes = doubleBytes(coordsOf(vPoints));
        ASSERT_TRUE(writePointsBIN("p.bin", vPointers) && writePointsBIN("p2.bin", vPoints));
        EXPECT_EQ(readFile("p.bin"), headerBytes(30, n) + bytes);
        EXPECT_EQ(readFile("p2.bin"), readFile("p.bin"));
        ASSERT_TRUE(writePointsASCII("p.xyz", vPointers) && writePointsASCII("p2.xyz", vPoints));
        EXPECT_EQ(readFile("p2.xyz"), readFile("p.xyz"));
        std::vector<Point2> vRead;
        ASSERT_TRUE(readPointsBIN("p.bin", vRead) && readXYZ("p.xyz", vRead));
        EXPECT_EQ(doubleBytes(coordsOf(vRead)), bytes + bytes);

        std::vector<Segment2> vSegments, vSegmentsRead(1);
        for (std::size_t i = 0; i + 1 < n; i += 2) vSegments.emplace_back(vPoints[i], vPoints[i + 1]);
        ASSERT_TRUE(writeSegmentsBIN("s.bin", vSegments) && readSegmentsBIN("s.bin", vSegmentsRead));
        EXPECT_EQ(readFile("s.bin"), headerBytes(31, n / 2) + bytes);
        EXPECT_EQ(doubleBytes(coordsOf(vSegmentsRead)).substr(48), bytes);
    }
    writePointsASCII("18.xyz", std::vector<Point2>{{0.1, -2000.0, 1e300}});
    EXPECT_EQ(readFile("18.xyz"), "0.100000000000000006 -2000 1.00000000000000005e+300\n");
    // Files of the plane are read with height 0.
    writeFile("20", headerBytes(20, 2) + doubleBytes({1, 2, 3, 4}));
    writeFile("21", headerBytes(21, 1) + doubleBytes({1, 2, 3, 4}));
    std::vector<Point2> vPoints;
    std::vector<Segment2> vSegments;
    ASSERT_TRUE(readPointsBIN("20", vPoints) && readSegmentsBIN("21", vSegments));
    EXPECT_EQ(coordsOf(vPoints), (std::vector<double>{1, 2, 0, 3, 4, 0}));
    EXPECT_EQ(coordsOf(vSegments), coordsOf(vPoints));
}

TEST(PointFilesTest, TruncatedFilesGiveWhatTheyHold)
{
    TempWorkDir dir;
    CoutCapture out;
    const std::string whole = headerBytes(30, 3) + doubleBytes({1, 2, 3, 4, 5, 6, 7, 8, 9});
    for (std::size_t length = 4; length <= whole.size(); ++length) {
        SCOPED_TRACE(length);
        writeFile("t", whole.substr(0, length));
        std::vector<Point2> vPoints;
        out.take();
        EXPECT_TRUE(readPointsBIN("t", vPoints));
        const std::size_t body = length < 12 ? 0 : length - 12;
        EXPECT_EQ(vPoints.size(), (body + 23) / 24);
        EXPECT_EQ(out.take().empty(), length == whole.size());
        // Whole coordinates are those of the file; what is missing of a record is taken from the one before.
        std::vector<double> vExpected;
        for (std::size_t i = 0; i < 3 * vPoints.size(); ++i) {
            vExpected.push_back(8 * (i + 1) <= body ? static_cast<double>(i + 1) : i < 3 ? 0.0 : vExpected[i - 3]);
        }
        EXPECT_EQ(coordsOf(vPoints), vExpected);
    }
}

TEST(PointFilesTest, AnnouncedCountsTakeNoMemory)
{
    TempWorkDir dir;
    CoutCapture out;
    for (const unsigned long long n : {0xffffffffULL, 0x100000000ULL, 0xffffffffffffffffULL}) {
        writeFile("p", headerBytes(30, n) + doubleBytes({1, 2, 3}));
        writeFile("s", headerBytes(31, n) + doubleBytes({1, 2, 3, 4, 5, 6}));
        std::vector<Point2> vPoints;
        std::vector<Segment2> vSegments;
        EXPECT_TRUE(readPointsBIN("p", vPoints));
        EXPECT_TRUE(readSegmentsBIN("s", vSegments));
        EXPECT_EQ(coordsOf(vPoints), (std::vector<double>{1, 2, 3}));
        EXPECT_EQ(coordsOf(vSegments), (std::vector<double>{1, 2, 3, 4, 5, 6}));
        EXPECT_LT(vPoints.capacity() + vSegments.capacity(), 10U);
        EXPECT_NE(out.take().find("p is truncated: " + std::to_string(n) + " records announced, 1 read"),
                  std::string::npos);
    }
}

TEST(PointFilesTest, FilesThatCannotBeUsedAreToldAndAnsweredFalse)
{
    TempWorkDir dir;
    std::filesystem::create_directory("d");
    writeFile("bad", headerBytes(0xfffffff9U, 1));
    CoutCapture out;
    std::vector<Point2> vPoints(1);
    std::vector<Segment2> vSegments;
    for (const char* pName : {"d", "", "d/no/where", static_cast<const char*>(nullptr)}) {
        EXPECT_FALSE(writePointsASCII(pName, vPoints) || writePointsBIN(pName, vPoints));
        EXPECT_FALSE(writeSegmentsBIN(pName, vSegments) || readXY(pName, vPoints) || readXYZ(pName, vPoints));
        EXPECT_FALSE(readPointsBIN(pName, vPoints) || readSegmentsBIN(pName, vSegments));
        EXPECT_FALSE(readSTL(pName == nullptr ? "" : pName, vPoints));
        const std::string text = out.take();
        EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 8) << text;
    }
    EXPECT_FALSE(readPointsBIN("bad", vPoints));
    EXPECT_EQ(out.take(), "bad has wrong filetype -7, expected: 30 or 20\n");
    EXPECT_FALSE(readSegmentsBIN("bad", vSegments));
    EXPECT_EQ(out.take(), "bad has wrong file type: -7 instead of 31 or 21\n");
    EXPECT_FALSE(writePointsBIN("/dev/full", vPoints)); // opens, but holds nothing
    EXPECT_EQ(out.take(), "/dev/full can't be written\n");
    EXPECT_FALSE(writePointsBIN("null", std::vector<Point2*>{vPoints.data(), nullptr}));
    EXPECT_FALSE(std::filesystem::exists("null"));
    EXPECT_EQ(vPoints.size(), 1U);
}

TEST(PointFilesTest, TextIsReadAsNumbersWhateverItsLines)
{
    TempWorkDir dir;
    const struct
    {
        const char* content;
        std::vector<double> vXY, vXYZ;
    } aCases[] = {
        {"", {}, {}},
        {"1 2 3\n4 5 6\n", {1, 2, 0, 3, 4, 0, 5, 6, 0}, {1, 2, 3, 4, 5, 6}},
        {"\t+1\r\n-2e1\n\n .5 5.", {1, -20, 0, .5, 5, 0}, {1, -20, .5}},
        {"1 2 x 3 4 5 6", {1, 2, 0}, {}},
        {"1,2 3 4", {}, {}},
        {"1 2 1e400 4 5 6", {1, 2, 0}, {}},
        {"1-2+3", {1, -2, 0}, {1, -2, 3}},
    };
    for (const auto& c : aCases) {
        writeFile("t", c.content);
        std::vector<Point2> vXY, vXYZ;
        EXPECT_TRUE(readXY("t", vXY) && readXYZ("t", vXYZ));
        EXPECT_EQ(coordsOf(vXY), c.vXY) << c.content;
        EXPECT_EQ(coordsOf(vXYZ), c.vXYZ) << c.content;
    }
}

TEST(PointFilesTest, StlKeepsTriplesTogetherAndItsCaseRules)
{
    TempWorkDir dir;
    CoutCapture out;
    writeFile("t.stl", "solid s\nvertex 9 9 9\n facet normal 0 0 1\n  outer loop\r\n   vertex 1 2 3\r\n"
                       "   vertex 4 5 6e0\r\n\tvertex\t7 8 9 10\r\n  endloop\n endfacet\n"
                       "OUTER LOOP\nVERTEX 0 0 0\nvertex 10 11 12\nENDLOOP\nvertex 13 14 15\nvertex 16 17 18\nendloop\n"
                       "outer loop\nvertex 0 0 0\nvertex 1 nan 0\nvertex\nvertex 1 1 1\nendloop\n"
                       "outer loop\nvertex -1 0 0\n");
    std::vector<Point2> vPoints(1, Point2(0, 0, 0));
    EXPECT_TRUE(readSTL("t.stl", vPoints));
    std::vector<double> vExpected = {0, 0, 0};
    for (int i = 1; i <= 18; ++i) vExpected.push_back(i);
    vExpected.insert(vExpected.end(), {-1, 0, 0});
    EXPECT_EQ(coordsOf(vPoints), vExpected);
    EXPECT_NE(out.take().find("readSTL(), WARNING: 1 facets of t.stl"), std::string::npos);
}

} // namespace ORBI_LUMO25D
