#ifndef LUMO25D_EFFICIENTMODEL_H
#define LUMO25D_EFFICIENTMODEL_H

#include "Lumo25DApi.h"
#include "MsgBase.h"
#include "Point2.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace ORBI_LUMO25D
{

struct EfficientModelData;

/// Finds few of the points of a scan or a raster whose triangulation is as good as that of all: everywhere within a given
/// height of it. Flat parts lose nearly all their points; ridges, ditches and steps keep theirs, and so stay sharp.
///
/// Guarantees
/// 1. The Delaunay surface of the result has at every input point a height that differs by at most maxError from the
///    point's. That holds whichever diagonal a triangulation draws among cocircular points, but for the rounding of the
///    heights, which Lumo_2D::getHeight() does in such a way that it holds to the last bit when the result is inserted by
///    one call, in its order, on one thread.
/// 2. The corners of the convex hull are among the result.
/// 3. The result is a part of the input, in its order, with custom indices. Same input, same result.
/// 4. Points with a coordinate that is no finite number are refused, with one message. Of several points at one place the
///    first one counts, as in a triangulation.
///
/// Points on one line have no surface: then the polyline through the result stays within maxError.
///
/// The fewest points can't be found in reasonable time; this is greedy insertion of the worst point (M. Garland and
/// P. S. Heckbert, "Fast polygonal approximation of terrains and height fields", 1995), after which every point that has
/// become superfluous is taken out again. O(n log n) in practice.
///
/// One thread at a time may use an object.
///
///     EfficientModel model(vScan);
///     std::vector<Point2> vFew;
///     model.extract(0.1, vFew);
///     lumo.insert(vFew);
class LUMO25D_API EfficientModel
{
public:
    /// Copies the points.
    explicit EfficientModel(const std::vector<Point2>& vPoints);
    ~EfficientModel();
    EfficientModel(const EfficientModel&) = delete;
    EfficientModel& operator=(const EfficientModel&) = delete;

    /// Appends the result for that error and returns its size. A maxError that is negative or no number, or no points at
    /// all: a warning, nothing is appended, and 0. Any number of calls, with any errors, may follow one another.
    std::size_t extract(double maxError, std::vector<Point2>& vOut);

    /// The same, but the result is kept here, where getPoints() reads it; it takes the place of that of the last call.
    std::size_t go(double maxError);
    /// Appends the result of the last go(), nothing before the first one.
    void getPoints(std::vector<Point2>& vOut) const;

    /// Progress of the steps "insert worst points", "remove superfluous points" and "check". Not owned.
    void subscribe(MsgType msgType, MsgBase* pMsg);
    void unsubscribe(MsgType msgType, MsgBase* pMsg);

private:
    std::unique_ptr<EfficientModelData> pData;
};

} // namespace ORBI_LUMO25D

#endif
