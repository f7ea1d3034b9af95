#ifndef LUMO25D_EXAMPLES_RELIEF_H
#define LUMO25D_EXAMPLES_RELIEF_H

#include "Color.h"
#include "Triangle2.h"
#include "Vector2.h"
#include "Visualizer2.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

/// Adds triangles to a drawing: green valleys, brown slopes, white tops, brighter where they face the light in the
/// north-west.
inline void addRelief(const std::vector<ORBI_LUMO25D::Triangle2*>& vTriangles, ORBI_LUMO25D::Visualizer2& picture)
{
    using namespace ORBI_LUMO25D;
    static const double aTints[][3] = {{0.36, 0.55, 0.33}, {0.72, 0.73, 0.45}, {0.66, 0.50, 0.34}, {0.97, 0.96, 0.95}};
    double minZ = std::numeric_limits<double>::max(), maxZ = std::numeric_limits<double>::lowest();
    for (const Triangle2* pT : vTriangles) {
        minZ = std::min(minZ, pT->getBarycenter().z());
        maxZ = std::max(maxZ, pT->getBarycenter().z());
    }
    for (const Triangle2* pT : vTriangles) {
        const double level = maxZ > minZ ? (pT->getBarycenter().z() - minZ) / (maxZ - minZ) * 2.999 : 0.0;
        const int band = static_cast<int>(level);
        const double facing = pT->getNormalVector() * Vector2(-0.5, 0.5, 0.7071) / 0.7071;
        const double light = std::clamp(0.35 + 0.65 * facing, 0.2, 1.15);
        double aRgb[3];
        for (int i = 0; i < 3; ++i) {
            const double tint = aTints[band][i] + (level - band) * (aTints[band + 1][i] - aTints[band][i]);
            aRgb[i] = std::round(std::min(tint * light, 1.0) * 64.0) / 64.0; // few different colours make a small file
        }
        picture.addObject(*pT, Color(aRgb[0], aRgb[1], aRgb[2], 0.0, true));
    }
}

#endif
