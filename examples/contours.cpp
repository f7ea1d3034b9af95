// Contour lines of a terrain, as a drawing and for map programs.
//
//     contours POINTS.xyz INTERVAL PICTURE.ps LINES.geojson
//
// Points are longitude and latitude in degrees, with heights in metres. Every fifth line is drawn bolder, as on a map.

#include "LocalMetres.h"

#include "IsoContours.h"
#include "Lumo_2D.h"
#include "Visualizer2.h"
#include "freeFunctions.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <vector>

using namespace ORBI_LUMO25D;

namespace
{

using Line = std::vector<Segment2>;

bool isClosed(const Line& line)
{
    return line.front().src == line.back().trg;
}

/// Green in the valleys, brown on the slopes, red at the top.
Color lineColor(double fraction, bool bBold)
{
    return Color(0.15 + 0.6 * fraction, 0.45 - 0.3 * fraction, 0.15, bBold ? 0.5 : 0.15, false);
}

/// One line string for each contour, with its height as a property: see RFC 7946.
bool writeGeoJson(const char* filename, const std::vector<Line>& vLines, const LocalMetres& metres)
{
    std::FILE* const pFile = std::fopen(filename, "w");
    if (pFile == nullptr) return false;
    std::fprintf(pFile, "{\"type\": \"FeatureCollection\", \"features\": [");
    const char* separator = "";
    for (const Line& line : vLines) {
        std::fprintf(pFile, "%s\n{\"type\": \"Feature\", \"properties\": {\"height\": %.2f, \"closed\": %s}, ",
                     separator, line.front().src.z(), isClosed(line) ? "true" : "false");
        std::fprintf(pFile, "\"geometry\": {\"type\": \"LineString\", \"coordinates\": [");
        const Point2 start = metres.toDegrees(line.front().src);
        std::fprintf(pFile, "[%.7f, %.7f]", start.x(), start.y());
        for (const Segment2& s : line) {
            const Point2 p = metres.toDegrees(s.trg);
            std::fprintf(pFile, ", [%.7f, %.7f]", p.x(), p.y());
        }
        std::fprintf(pFile, "]}}");
        separator = ",";
    }
    std::fprintf(pFile, "\n]}\n");
    return std::fclose(pFile) == 0;
}

} // namespace

int main(int argc, char** argv)
{
    std::vector<Point2> vPoints;
    const double interval = argc == 5 ? std::atof(argv[2]) : 0.0;
    if (!(interval > 0.0) || !readXYZ(argv[1], vPoints)) {
        std::printf("usage: contours POINTS.xyz INTERVAL PICTURE.ps LINES.geojson\n");
        return 2;
    }
    Bbox2 box;
    box.add(vPoints.begin(), vPoints.end());
    const LocalMetres metres(box.get_minX(), box.get_minY(), box.computeCenter().y());
    std::transform(vPoints.begin(), vPoints.end(), vPoints.begin(), metres);

    Lumo_2D lumo;
    lumo.insert(vPoints);
    std::vector<Triangle2*> vTriangles;
    lumo.getTrianglePointers(vTriangles);
    const IsoContours iso(vTriangles); // one index for all heights
    const double low = iso.getMinHeight(), range = iso.getMaxHeight() - low;

    Visualizer2 vis(argv[3]);
    std::vector<Line> vAll;
    for (double i = std::ceil(low / interval); i * interval <= low + range; ++i) {
        std::vector<Line> vLines;
        // Measured heights are often round: the last argument lets it step aside by a tiny amount.
        if (!iso.getContours(i * interval, vLines, false, true)) return 1;
        const Color color = lineColor((i * interval - low) / range, std::fmod(i, 5.0) == 0.0);
        for (Line& line : vLines) {
            vis.addObject(line, color);
            vAll.push_back(std::move(line));
        }
    }
    vis.addHeaderLine("Contours");
    vis.writeFile();

    double length = 0.0;
    for (const Line& line : vAll) {
        for (const Segment2& s : line) length += std::sqrt(s.getSqLen2D());
    }
    const auto numClosed = std::count_if(vAll.begin(), vAll.end(), isClosed);
    std::printf("heights %.2f to %.2f m: %zu open lines, %zu closed ones, %.0f km in all\n", low, low + range,
                vAll.size() - static_cast<std::size_t>(numClosed), static_cast<std::size_t>(numClosed),
                length / 1000.0);
    return writeGeoJson(argv[4], vAll, metres) ? 0 : 1;
}
