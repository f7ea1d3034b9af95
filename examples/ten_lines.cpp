#include "Lumo_2D.h"
#include <iostream>
using namespace ORBI_LUMO25D;
int main()
{
    Lumo_2D terrain;
    terrain.insert({{0, 0, 102}, {50, 0, 98}, {60, 50, 104}, {0, 50, 110}, {20, 20, 121}});
    double height = 0.0;
    if (terrain.getHeight(30.0, 10.0, height)) std::cout << "The height at (30, 10) is " << height << " m\n";
}
