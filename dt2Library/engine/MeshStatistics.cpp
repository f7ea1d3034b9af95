#include "engine/MeshStatistics.h"

#include "engine/Dt2.h"

#include <algorithm>
#include <cmath>
#include <ostream>

namespace ORBI_LUMO25D
{

void MeshStatistics::Range::add(double value)
{
    min = n == 0 ? value : std::min(min, value);
    max = n == 0 ? value : std::max(max, value);
    sum += value;
    ++n;
}

MeshStatistics::MeshStatistics(const Dt2& dt2)
    : numPoints(dt2.vertexVault.numActive()), numTriangles(dt2.numberOfTriangles()), numBytes(dt2.bytes())
{
    for (const IdxVtxAct* pItem = dt2.vertexVault.begin(); pItem != dt2.vertexVault.end(); ++pItem) {
        if (pItem->bActive) height.add(pItem->pVtx->z());
    }
    dt2.poolTriangles.forEach([this](const Triangle2* pT) {
        if (pT->corner(0) != nullptr) addTriangle(*pT);
    });
    addDegrees(dt2);
}

void MeshStatistics::addTriangle(const Triangle2& t)
{
    double smallest = 180.0;
    double largest = 0.0;
    for (int i = 0; i < 3; ++i) {
        const Triangle2* const pN = t.neighbor(i);
        if (pN == nullptr) ++numHullEdges;
        // An inner edge is counted from the triangle where its source has the lower address.
        if (pN == nullptr || std::less<const Point2*>()(t.corner(incIndexBy1(i)), t.corner(incIndexBy2(i)))) {
            edgeLength.add(std::sqrt(t.getSquaredEdgeLength2D(i)));
        }
        const double angle = t.getInteriorAngle2D(i);
        smallest = std::min(smallest, angle);
        largest = std::max(largest, angle);
    }
    minAngle.add(smallest);
    maxAngle.add(largest);
    area.add(t.getArea2D());
}

void MeshStatistics::addDegrees(const Dt2& dt2)
{
    std::vector<std::uint32_t> vDegree(dt2.poolVertices.size(), 0);
    dt2.poolTriangles.forEach([&](const Triangle2* pT) {
        if (pT->corner(0) == nullptr) return;
        for (int i = 0; i < 3; ++i) {
            ++vDegree[dt2.poolVertices.indexOf(pT->corner(i))];
            // A hull vertex has one edge more than triangles.
            if (pT->neighbor(i) == nullptr) ++vDegree[dt2.poolVertices.indexOf(pT->corner(incIndexBy1(i)))];
        }
    });
    for (const std::uint32_t d : vDegree) {
        if (d > 0) degree.add(d);
    }
}

void MeshStatistics::printRange(std::ostream& stream, const char* what, const Range& range)
{
    stream << "  " << what << ": min " << range.min << ", mean " << range.mean() << ", max " << range.max << '\n';
}

void MeshStatistics::print(std::ostream& stream, const char* title) const
{
    stream << "Statistics " << title << '\n'
           << "  vertices: " << numPoints << '\n'
           << "  triangles: " << numTriangles << '\n'
           << "  edges: " << edgeLength.n << ", on the hull: " << numHullEdges << '\n';
    if (numPoints > 0) printRange(stream, "heights", height);
    if (numTriangles > 0) {
        printRange(stream, "degrees", degree);
        printRange(stream, "edge lengths (2D)", edgeLength);
        printRange(stream, "smallest angles in degrees", minAngle);
        printRange(stream, "largest angles in degrees", maxAngle);
        printRange(stream, "areas (2D)", area);
    }
    stream << "  memory: " << numBytes << " bytes";
    if (numPoints > 0) stream << ", " << static_cast<double>(numBytes) / static_cast<double>(numPoints) << " a vertex";
    stream << '\n';
}

} // namespace ORBI_LUMO25D
