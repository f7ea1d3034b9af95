// Triangulates on all threads, then computes contours on four threads and draws those of each in a colour of its own.
//
//     threads POINTS.xyz PICTURE.ps
//
// Points are longitudes and latitudes with heights in metres.

#include "../LocalMetres.h"

#include "IsoContours.h"
#include "Lumo_2D.h"
#include "freeFunctions.h"

#include <algorithm>
#include <cstdio>
#include <thread>
#include <vector>

using namespace ORBI_LUMO25D;

int main(int argc, char** argv)
{
    std::vector<Point2> vPoints;
    if (argc != 3 || !readXYZ(argv[1], vPoints)) return 2;
    std::transform(vPoints.begin(), vPoints.end(), vPoints.begin(), LocalMetres(-84.25, 36.6, 36.6));

    Lumo_2D lumo(vPoints.size());
    lumo.enableMultithreading(); // as many threads as the machine has
    lumo.insert(vPoints);
    std::printf("%zu triangles\n", lumo.numberOfTriangles());

    std::vector<Triangle2*> vTriangles;
    lumo.getTrianglePointers(vTriangles);
    const IsoContours iso(vTriangles); // any number of threads may ask it at once

    const int numThreads = 4;
    std::vector<std::vector<Segment2>> avvLines[numThreads]; // a place of its own for each thread
    std::vector<std::thread> vThreads;
    for (int i = 0; i < numThreads; ++i) {
        vThreads.emplace_back([&iso, i, &vvLines = avvLines[i]] {
            for (double z = 300.0 + 100.0 * i; z < iso.getMaxHeight(); z += 100.0 * numThreads)
                iso.getContours(z, vvLines, false, true);
        });
    }
    for (std::thread& thread : vThreads) thread.join();

    const Color aColors[numThreads] = {Color(CRED, 0.6F), Color(CBLUE, 0.6F), Color(CORANGE, 0.6F),
                                       Color(COLIVE, 0.6F)};
    Visualizer2 picture(argv[2]);
    for (int i = 0; i < numThreads; ++i) {
        std::printf("thread %d: %zu contours\n", i, avvLines[i].size());
        for (const std::vector<Segment2>& vLine : avvLines[i]) picture.addObject(vLine, aColors[i]);
    }
    picture.writeFile();
    return 0;
}
