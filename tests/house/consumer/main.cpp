#include "Lumo_2D.h"
#include "freeFunctions.h"

#include <iostream>
#include <string>

/// Zero when all of the library is there (everyName.cpp).
int everyName();

/// Makes a small triangulation and asks it for a height; the version must be the one that the package names.
int main(int argc, char** argv)
{
    using namespace ORBI_LUMO25D;
    const std::string version = std::to_string(getMajorVersionNumber()) + "." +
                                std::to_string(getMinorVersionNumber()) + "." + std::to_string(getRevisionNumber());
    std::vector<Point2> vPoints = {Point2(0, 0, 0), Point2(10, 0, 10), Point2(10, 10, 20), Point2(0, 10, 10)};
    Lumo_2D lumo;
    lumo.insert(vPoints);
    double height = 0.0;
    const bool bFound = lumo.getHeight(5.0, 2.5, height);
    std::cout << "version " << version << ", " << lumo.numberOfTriangles() << " triangles, height " << height << '\n';
    return argc == 2 && version == argv[1] && bFound && lumo.numberOfTriangles() == 2 && height == 7.5 ? everyName()
                                                                                                       : 1;
}
