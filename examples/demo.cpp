// The main job, from a file of measured points to what a surveyor wants to know:
//
//     demo POINTS.xyz [OUTPUT_DIRECTORY]
//
// reads points "longitude latitude height" (degrees and metres), triangulates them, prints the figures of the surface,
// answers heights at positions, and leaves two drawings, a page for the browser and the points in both file forms.

#include "LocalMetres.h"
#include "Relief.h"

#include "Lumo_2D.h"
#include "Visualizer2.h"
#include "freeFunctions.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

using namespace ORBI_LUMO25D;

namespace
{

/// Shows how far a long step has come: a dot for every two per cent.
class Gauge : public MsgBase
{
public:
    void update(MsgType, const char* step, double fraction) override
    {
        if (numDots == 0) std::printf("%s ", step);
        for (; numDots < static_cast<int>(fraction * 50.0); ++numDots) std::printf(".");
        if (fraction >= 1.0) std::printf(" done\n");
        std::fflush(stdout);
    }

private:
    int numDots = 0;
};

double secondsSince(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

std::vector<Point2> readMetres(const std::string& filename)
{
    std::vector<Point2> vPoints;
    if (!readXYZ(filename.c_str(), vPoints)) return {};
    Bbox2 box;
    box.add(vPoints.begin(), vPoints.end());
    const LocalMetres toMetres(box.get_minX(), box.get_minY(), box.computeCenter().y());
    std::transform(vPoints.begin(), vPoints.end(), vPoints.begin(), toMetres);
    return vPoints;
}

void printFigures(const Lumo_2D& lumo, const std::vector<Point2>& vPoints, const std::vector<Point2*>& vHandles)
{
    // A point that came at the place of an earlier one has the handle of that one.
    std::vector<Point2*> vDistinct = vHandles;
    std::sort(vDistinct.begin(), vDistinct.end());
    vDistinct.erase(std::unique(vDistinct.begin(), vDistinct.end()), vDistinct.end());

    std::vector<Point2*> vAllHull;
    std::vector<Point2*> vCorners;
    lumo.getConvexHull(true, vAllHull);
    lumo.getConvexHull(false, vCorners);

    std::vector<Triangle2*> vTriangles;
    lumo.getTrianglePointers(vTriangles);
    double area2D = 0.0;
    double area25D = 0.0;
    for (const Triangle2* pT : vTriangles) {
        area2D += pT->getArea2D();
        area25D += pT->getArea25D();
    }

    const auto lower = [](const Point2* a, const Point2* b) { return a->z() < b->z(); };
    const auto range = std::minmax_element(vDistinct.begin(), vDistinct.end(), lower);
    const Bbox2 box = lumo.computeBoundingBox();

    std::printf("points read      %10zu\n", vPoints.size());
    std::printf("duplicates       %10zu\n", vPoints.size() - vDistinct.size());
    std::printf("vertices         %10zu\n", lumo.numberOfPoints());
    std::printf("triangles        %10zu\n", lumo.numberOfTriangles());
    std::printf("on the hull      %10zu  (%zu of them corners)\n", vAllHull.size(), vCorners.size());
    std::printf("extent           %10.0f  by %.0f m\n", box.getRangeX(), box.getRangeY());
    std::printf("area in the plane%10.3f  km2\n", area2D * 1e-6);
    std::printf("surface area     %10.3f  km2\n", area25D * 1e-6);
    std::printf("heights          %10.1f  to %.1f m\n", (*range.first)->z(), (*range.second)->z());
}

void printHeights(const Lumo_2D& lumo)
{
    const Bbox2 box = lumo.computeBoundingBox();
    const double aFractions[][2] = {{0.5, 0.5}, {0.25, 0.75}, {0.9, 0.1}, {0.0, 0.0}, {1.2, 0.5}};
    std::printf("\nheights at positions\n");
    for (const auto& fraction : aFractions) {
        const double x = box.get_minX() + fraction[0] * box.getRangeX();
        const double y = box.get_minY() + fraction[1] * box.getRangeY();
        double height = 0.0;
        if (lumo.getHeight(x, y, height)) {
            std::printf("  (%9.1f, %9.1f)  %8.2f m\n", x, y, height);
        } else {
            std::printf("  (%9.1f, %9.1f)   outside\n", x, y);
        }
    }
}

void addReliefOf(const Lumo_2D& lumo, Visualizer2& visualizer)
{
    std::vector<Triangle2*> vTriangles;
    lumo.getTrianglePointers(vTriangles);
    addRelief(vTriangles, visualizer);
}

void drawRelief(const Lumo_2D& lumo, const std::string& filename)
{
    Visualizer2 visualizer(filename.c_str());
    visualizer.addHeaderLine("Every triangle, tinted by its height and lit from the north-west");
    addReliefOf(lumo, visualizer);
    visualizer.writeFile();
}

/// The mesh around the highest point, with its edges: of the whole surface one would see nothing but ink.
void drawDetail(const std::vector<Point2>& vPoints, double halfWidth, const std::string& filename)
{
    const auto lower = [](const Point2& a, const Point2& b) { return a.z() < b.z(); };
    const Point2 summit = *std::max_element(vPoints.begin(), vPoints.end(), lower);
    std::vector<Point2> vNear;
    for (const Point2& p : vPoints) {
        if (std::max(std::fabs(p.x() - summit.x()), std::fabs(p.y() - summit.y())) < halfWidth) vNear.push_back(p);
    }
    Lumo_2D detail;
    detail.insert(vNear);
    Visualizer2 visualizer(filename.c_str());
    addReliefOf(detail, visualizer);
    detail.show(&visualizer);
    visualizer.addObject(Label(summit, "summit", true, 14), Color(CBLACK, 1.0F, false));
    visualizer.writeFile();
}

/// Writes the vertices in both file forms and reads them back.
bool writeAndReadBack(const Lumo_2D& lumo, const std::string& directory)
{
    std::vector<Point2*> vVertices;
    lumo.getVertexPointers(vVertices);
    const std::string text = directory + "/points.xyz";
    const std::string binary = directory + "/points.bin";
    std::vector<Point2> vText;
    std::vector<Point2> vBinary;
    if (!writePointsASCII(text.c_str(), vVertices) || !writePointsBIN(binary.c_str(), vVertices)) return false;
    if (!readXYZ(text.c_str(), vText) || !readPointsBIN(binary.c_str(), vBinary)) return false;
    const auto same = [](const Point2& p, const Point2* pVtx) { return p.samePoint(*pVtx); };
    return std::equal(vText.begin(), vText.end(), vVertices.begin(), vVertices.end(), same) &&
           std::equal(vBinary.begin(), vBinary.end(), vVertices.begin(), vVertices.end(), same);
}

int run(const std::string& filename, const std::string& directory)
{
    const auto startReading = std::chrono::steady_clock::now();
    const std::vector<Point2> vPoints = readMetres(filename);
    if (vPoints.empty()) return std::printf("no points in %s\n", filename.c_str()), 1;
    const double secondsReading = secondsSince(startReading);

    Gauge gauge;
    Lumo_2D lumo(vPoints.size());
    lumo.subscribe(MSG_PROGRESS, &gauge);
    const auto startInserting = std::chrono::steady_clock::now();
    std::vector<Point2*> vHandles;
    lumo.insert(vPoints, vHandles);
    const double secondsInserting = secondsSince(startInserting);
    lumo.unsubscribe(MSG_PROGRESS, &gauge);
    if (!lumo.hasArea()) return std::printf("all points lie on one line\n"), 1;

    std::printf("\n%s\n", getLumo2DVersion());
    printFigures(lumo, vPoints, vHandles);
    std::printf("reading          %10.3f  s\ntriangulating    %10.3f  s\n", secondsReading, secondsInserting);
    printHeights(lumo);
    std::printf("\n");

    drawRelief(lumo, directory + "/relief.ps");
    drawDetail(vPoints, 1600.0, directory + "/triangulation.ps");
    lumo.setName("Terrain");
    if (!lumo.writeWebScene((directory + "/terrain.html").c_str())) return 1;
    if (!writeAndReadBack(lumo, directory)) return std::printf("the points did not come back from their files\n"), 1;
    std::printf("Points written as text and binary, read back, and the same.\n");
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 2 || argc > 3) {
        std::printf("usage: demo POINTS.xyz [OUTPUT_DIRECTORY]\n");
        return 2;
    }
    try {
        return run(argv[1], argc == 3 ? argv[2] : ".");
    } catch (const std::exception& e) {
        std::printf("%s\n", e.what());
        return 1;
    }
}
