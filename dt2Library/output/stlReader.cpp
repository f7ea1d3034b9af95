#include "output/stlReader.h"

#include "output/numberScanner.h"
#include "output/openForReading.h"
#include "support/messages.h"

#include <cstddef>
#include <fstream>

namespace ORBI_LUMO25D
{

namespace
{

bool contains(const std::string& line, const char* pText)
{
    return line.find(pText) != std::string::npos;
}

/// "vertex x y z", whatever the first word is. False if there aren't three numbers.
bool parseVertex(const std::string& line, Point2& point)
{
    const char* const pWhite = " \t\n\v\f\r";
    const std::size_t keyword = line.find_first_not_of(pWhite);
    const std::size_t behind = line.find_first_of(pWhite, keyword);
    if (behind == std::string::npos) return false;

    const char* p = line.data() + behind;
    const char* const pEnd = line.data() + line.size();
    double aXYZ[3];
    for (double& value : aXYZ) {
        if (!scanNumber(p, pEnd, value)) return false;
    }
    point.setCoords(aXYZ[0], aXYZ[1], aXYZ[2]);
    return true;
}

/// The lines of one facet, up to its end. False if one of its vertices is unreadable; it then gives no points.
bool readFacet(std::istream& file, std::vector<Point2>& vPoints)
{
    const std::size_t numBefore = vPoints.size();
    bool bOK = true;
    std::string line;
    while (std::getline(file, line) && !contains(line, "endloop")) {
        if (!contains(line, "vertex")) continue;
        Point2 point;
        bOK = parseVertex(line, point) && bOK;
        vPoints.push_back(point);
    }
    if (!bOK) vPoints.resize(numBefore);
    return bOK;
}

} // namespace

bool readSTL(const std::string& filename, std::vector<Point2>& vPoints)
{
    std::ifstream file;
    if (!openForReading(file, filename)) {
        printLine("readSTL(): " + filename + " is unreadable");
        return false;
    }
    std::size_t numBroken = 0;
    std::string line;
    while (std::getline(file, line)) {
        if (!contains(line, "outer loop") && !contains(line, "OUTER LOOP")) continue;
        if (!readFacet(file, vPoints)) ++numBroken;
    }
    if (numBroken > 0) {
        msgWarning("readSTL()", std::to_string(numBroken) + " facets of " + filename +
                                    " have an unreadable vertex and are left out");
    }
    return true;
}

} // namespace ORBI_LUMO25D
