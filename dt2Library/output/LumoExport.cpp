#include "LumoExport.h"

#include "output/ObjWriter.h"

#include <algorithm>
#include <iostream>
#include <tuple>

namespace ORBI_LUMO25D
{

namespace
{

template <class T>
T* copyOf(const T* aSource, std::size_t n)
{
    if (aSource == nullptr) return nullptr;
    T* const aCopy = new T[n];
    std::copy(aSource, aSource + n, aCopy);
    return aCopy;
}

std::size_t count(std::int32_t n)
{
    return static_cast<std::size_t>(n);
}

} // namespace

LumoExport::LumoExport(const LumoExport& other) : LumoExport()
{
    // Delegating: what has been copied is freed when a later array finds no memory.
    numCustomIndices = other.numCustomIndices;
    numTriangles = other.numTriangles;
    numPoints = other.numPoints;
    dim = other.dim;
    aCoords = copyOf(other.aCoords, count(numPoints) * count(dim));
    aCustomIndices = copyOf(other.aCustomIndices, count(numCustomIndices));
    aTriangles = copyOf(other.aTriangles, 3 * count(numTriangles));
}

LumoExport::LumoExport(LumoExport&& other) noexcept
{
    swap(other);
}

LumoExport& LumoExport::operator=(LumoExport other) noexcept
{
    swap(other);
    return *this;
}

LumoExport::~LumoExport()
{
    delete[] aCoords;
    delete[] aCustomIndices;
    delete[] aTriangles;
}

void LumoExport::swap(LumoExport& other) noexcept
{
    std::swap(numCustomIndices, other.numCustomIndices);
    std::swap(numTriangles, other.numTriangles);
    std::swap(numPoints, other.numPoints);
    std::swap(aCoords, other.aCoords);
    std::swap(aCustomIndices, other.aCustomIndices);
    std::swap(aTriangles, other.aTriangles);
    std::swap(dim, other.dim);
}

void LumoExport::getCornerIndices(int t, int& a, int& b, int& c) const
{
    const std::int32_t* const p = aTriangles + 3 * static_cast<std::ptrdiff_t>(t);
    a = p[0];
    b = p[1];
    c = p[2];
}

void LumoExport::getCoordinates(int v, double& x, double& y, double& z) const
{
    const double* const p = aCoords + dim * static_cast<std::ptrdiff_t>(v);
    x = p[0];
    y = p[1];
    z = dim > 2 ? p[2] : 0.0;
}

void LumoExport::extractTriangleNeighborships(std::vector<std::pair<int, int>>& vNeigs) const
{
    using Record = std::tuple<int, int, int>; // the edge's vertices, ascending, and a triangle at it
    vNeigs.reserve(vNeigs.size() + 3 * count(numTriangles) / 2);
    std::vector<Record> vRecords;
    vRecords.reserve(3 * count(numTriangles));
    for (int t = 0; t < numTriangles; ++t) {
        int a[3];
        getCornerIndices(t, a[0], a[1], a[2]);
        std::sort(a, a + 3);
        vRecords.emplace_back(a[0], a[1], t);
        vRecords.emplace_back(a[1], a[2], t);
        vRecords.emplace_back(a[0], a[2], t);
    }
    std::sort(vRecords.begin(), vRecords.end());
    for (std::size_t i = 1; i < vRecords.size(); ++i) {
        const auto& [a0, b0, t0] = vRecords[i - 1];
        const auto& [a1, b1, t1] = vRecords[i];
        if (a0 == a1 && b0 == b1) vNeigs.emplace_back(t0, t1);
    }
}

bool LumoExport::writeObj(const char* name) const
{
    ObjWriter writer(name);
    if (!writer.isOpen()) return false;
    for (std::size_t v = 0; v < count(numPoints); ++v) {
        writer.addVertex(aCoords + v * count(dim), dim);
    }
    for (int t = 0; t < numTriangles; ++t) {
        int a = 0, b = 0, c = 0;
        getCornerIndices(t, a, b, c);
        writer.addTriangle(static_cast<std::size_t>(a), static_cast<std::size_t>(b), static_cast<std::size_t>(c));
    }
    return writer.finish();
}

void LumoExport::print() const
{
    for (int v = 0; v < numPoints; ++v) {
        double x = 0.0, y = 0.0, z = 0.0;
        getCoordinates(v, x, y, z);
        std::cout << "vertex " << v << ": " << x << ' ' << y << ' ' << z;
        if (numCustomIndices > 0) std::cout << " (customIndex=" << aCustomIndices[v] << ")";
        std::cout << '\n';
    }
    for (int t = 0; t < numTriangles; ++t) {
        int a = 0, b = 0, c = 0;
        getCornerIndices(t, a, b, c);
        std::cout << "triangle " << t << ": " << a << ' ' << b << ' ' << c << '\n';
    }
    std::vector<std::pair<int, int>> vNeigs;
    extractTriangleNeighborships(vNeigs);
    for (const auto& [t0, t1] : vNeigs) {
        std::cout << "neighbours: " << t0 << ' ' << t1 << '\n';
    }
}

} // namespace ORBI_LUMO25D
