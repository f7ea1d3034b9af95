#ifndef LUMO25D_ENGINE_MESHSTATISTICS_H
#define LUMO25D_ENGINE_MESHSTATISTICS_H

#include <cstddef>
#include <iosfwd>

namespace ORBI_LUMO25D
{

class Dt2;
class Triangle2;

/// Figures about a triangulation, collected in one pass over its triangles.
class MeshStatistics
{
public:
    explicit MeshStatistics(const Dt2& dt2);

    /// Several lines, the first of which is the title.
    void print(std::ostream& stream, const char* title) const;

private:
    /// Smallest, largest and mean value of a series.
    struct Range
    {
        double min = 0.0;
        double max = 0.0;
        double sum = 0.0;
        std::size_t n = 0;
        void add(double value);
        double mean() const { return n == 0 ? 0.0 : sum / static_cast<double>(n); }
    };

    void addTriangle(const Triangle2& t);
    void addDegrees(const Dt2& dt2);
    static void printRange(std::ostream& stream, const char* what, const Range& range);

    std::size_t numPoints;
    std::size_t numTriangles;
    std::size_t numHullEdges = 0;
    std::size_t numBytes;
    Range edgeLength, minAngle, maxAngle, area, height, degree;
};

} // namespace ORBI_LUMO25D

#endif
