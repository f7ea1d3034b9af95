#ifndef LUMO25D_CLOUDPREPARE_H
#define LUMO25D_CLOUDPREPARE_H

#include "Lumo25DApi.h"
#include "Point2.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace ORBI_LUMO25D
{

class CloudPrepareImpl;

/// How the points of a cell become one.
enum SumStrategy : int
{
    SMS_MINIMUM = 0, ///< the smallest z; x and y are the mean of the points that have it
    SMS_MAXIMUM = 1, ///< the largest z; x and y as above
    SMS_MEDIAN = 2,  ///< the middle z (of an even number, the upper one); x and y as above
    SMS_AVERAGE = 3  ///< the mean of x, of y and of z
};

/// What is kept of the cloud's convex hull. Cells with a hull point become their hull points instead of a summary.
enum ConvexHullStrategy : int
{
    CHS_NOHULL = 0,  ///< nothing: cells at the border become one point as well
    CHS_MAXHULL = 1, ///< all points on the hull, those in the middle of a straight side included
    CHS_MINHULL = 2  ///< the hull's corners only
};

/// Thins out a large cloud of points, such as a laser scan, before it is triangulated: by a regular grid, to a wanted
/// number of points, or adaptively, with small cells only where heights vary.
///
/// Guarantees
/// 1. Each cell that holds points becomes one point, or its points on the hull, unchanged. A hull that is kept is the hull
///    of the result, exactly: a mean that rounding puts outside gives way to the place of one of its points. Of points at
///    one place the first one stands for the hull; of a cloud on a straight line the two ends are the hull.
/// 2. A point that stands for itself alone keeps its custom index; all others have -1.
/// 3. Nothing depends on addresses, threads or the clock: same points, same order, same result.
/// 4. Bad parameters, and points with a coordinate that is no finite number, get a message; the cloud stays as it was.
///
/// A point takes 32 bytes; a simplification needs 16 more for each while it runs, and the memory of its result.
/// Simplification costs about as much as a sort of that many numbers. One thread at a time may use an object.
///
///     CloudPrepare cloud;
///     cloud.add(vScan);
///     cloud.uniformSimplifyGrid(0.5, SMS_MEDIAN, CHS_MINHULL, false);
///     lumo.insert(&cloud, true);
class LUMO25D_API CloudPrepare
{
public:
    CloudPrepare();
    ~CloudPrepare();
    CloudPrepare(const CloudPrepare&) = delete;
    CloudPrepare& operator=(const CloudPrepare&) = delete;

    // ---- points in and out --------------------------------------------------------------------------------------

    /// Append points; customIndex -1 is none. Points that aren't finite are refused, with one message that tells how
    /// many.
    void add(double x, double y, double z, std::int32_t customIndex);
    void add(const std::vector<Point2>& vPoints);
    /// num triples x, y, z.
    void add(std::size_t num, const double* aCoordinates);

    /// As many as the last simplification left and were added since.
    std::size_t getNumPoints() const;
    /// Appends all points.
    void getPoints(std::vector<Point2>& vPoints) const;
    /// Removes all points and gives their memory back.
    void clear();

    // ---- measures -----------------------------------------------------------------------------------------------

    /// Extents of the cloud as it is now; 0 for an empty one.
    double getRangeX() const;
    double getRangeY() const;
    double getRangeZ() const;
    /// The tight box; of an empty cloud, the largest double for each minimum and the lowest for each maximum.
    void getBounds(double& minX, double& minY, double& minZ, double& maxX, double& maxY, double& maxZ) const;

    /// Appends the convex hull, counterclockwise from the leftmost point (of several, the lowest), with custom indices;
    /// bAllPoints as CHS_MAXHULL. False, and nothing appended, for points on one line; without points it says so.
    bool computeConvexHull(bool bAllPoints, std::vector<Point2>& vConvexHull) const;

    // ---- simplification: the number of points of the result; with bDryRun the cloud stays as it was ---------------

    /// One point for each cell of a square grid whose cells have the side gridLength, with the cloud's lower left corner
    /// at a corner of a cell. gridLength must be above 0 and finite, otherwise: a warning, and 0. A grid of more than 2^32
    /// cells an axis is a failed condition, as is an empty cloud.
    std::size_t uniformSimplifyGrid(double gridLength, SumStrategy sumStrategy, ConvexHullStrategy hullStrategy,
                                    bool bDryRun);
    /// The same with a length found by search, so that about numPoints remain (within a 10000th of it, if there is such
    /// a length, hull points of their own not counted). numPoints must be from 1 to one less than the cloud has,
    /// otherwise: a warning, and 0.
    std::size_t uniformSimplifyNum(std::ptrdiff_t numPoints, SumStrategy sumStrategy, ConvexHullStrategy hullStrategy);
    /// Cells are divided into four as long as their heights differ by more than maxDiffZ. At the finest level, a 2^31st of
    /// the extent, a cell becomes one point whatever its heights: two returns at one place do. A maxDiffZ that is no
    /// number gets a warning, and 0; an empty cloud is a failed condition.
    std::size_t adaptiveSimplify(double maxDiffZ, SumStrategy sumStrategy, ConvexHullStrategy hullStrategy,
                                 bool bDryRun);

    /// What is behind it: for the library's own classes.
    CloudPrepareImpl* getImpl() const { return pImpl.get(); }

private:
    std::unique_ptr<CloudPrepareImpl> pImpl;
};

} // namespace ORBI_LUMO25D

#endif
