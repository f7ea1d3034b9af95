#ifndef LUMO25D_MESHING_GRID_H
#define LUMO25D_MESHING_GRID_H

#include "Point2.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <limits>
#include <memory>
#include <set>
#include <vector>

namespace ORBI_LUMO25D
{

/// A raster of heights made of a point cloud, for the analysis of images.
///
/// There are as many columns as the points have different x, and as many rows as they have different y, but 32768 of each
/// at most. They have one width: the extent divided by the number of steps. A cell holds what lies behind its lower and up to
/// its upper bound; the first column and row hold their lower bounds, too. So points that stand on a raster themselves
/// come into the cells below and left of them, those of the first two lines into one, and the last column and row stay
/// empty.
///
/// The points are borrowed and must outlive the object; their coordinates must be finite. Memory for the cells is taken
/// from the system where points lie, whatever their number is.
class Grid
{
public:
    using PointSet = std::set<Point2*, std::less<Point2*>>;

    /// A failed condition for no points.
    explicit Grid(const PointSet& sPoints);

    std::size_t getNumX() const { return xAxis.num; }
    std::size_t getNumY() const { return yAxis.num; }
    /// Extents of the points' box.
    double getSizeX() const { return xAxis.size; }
    double getSizeY() const { return yAxis.size; }

    /// The height of a cell; indices are clamped to the raster. The mean of several points; the largest double for none.
    double getHeight(std::int64_t i, std::int64_t j) const;

    /// Heights as they go to an image.
    class Matrix
    {
    public:
        static constexpr float unknown = std::numeric_limits<float>::max();

        Matrix(std::size_t numX_, std::size_t numY_) : numX(numX_), numY(numY_), vValues(numX_ * numY_, unknown) {}
        std::size_t getNumX() const { return numX; }
        std::size_t getNumY() const { return numY; }
        float& operator()(std::size_t i, std::size_t j) { return vValues[j * numX + i]; }
        float operator()(std::size_t i, std::size_t j) const { return vValues[j * numX + i]; }

    private:
        std::size_t numX, numY;
        std::vector<float> vValues;
    };

    /// All cells, made by the first call: 4 bytes for each.
    const Matrix& getMatrix();

    /// Writes the triangulation of the points into a Geomview file.
    void writePoints(const char* name) const;

private:
    static constexpr std::size_t maxNum = 0x8000;
    static constexpr std::int32_t emptyCell = std::numeric_limits<std::int32_t>::min();

    /// How one coordinate becomes an index.
    struct Axis
    {
        void construct(std::vector<double>& vValues);

        double size = 0.0;
        std::size_t num = 0;
        std::vector<double> vBounds; ///< the upper bounds of the cells, ascending
    };
    struct Free
    {
        void operator()(std::int32_t* p) const { std::free(p); }
    };

    void constructGrid();
    void addToCell(std::size_t cell, std::int32_t index);
    // Stored so that memory that the system gives as zeros means empty cells.
    std::int32_t getCell(std::size_t cell) const { return pCells.get()[cell] ^ emptyCell; }
    void setCell(std::size_t cell, std::int32_t value) { pCells.get()[cell] = value ^ emptyCell; }
    double heightOf(std::int32_t value) const;

    std::unique_ptr<Matrix> pMatrix;
    std::vector<Point2*> vGridPoints;
    Axis xAxis, yAxis;
    /// For each cell, row by row: emptyCell, the index of its only point, or -1 - k for bucket k.
    std::unique_ptr<std::int32_t, Free> pCells;
    std::vector<std::vector<std::int32_t>> vBuckets;
};

} // namespace ORBI_LUMO25D

#endif
