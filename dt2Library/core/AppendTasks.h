#ifndef LUMO25D_CORE_APPENDTASKS_H
#define LUMO25D_CORE_APPENDTASKS_H

#include "core/CurveSort.h"
#include "core/HC2.h"
#include "core/IdxVtxAct.h"
#include "core/PointBlocks.h"
#include "core/Stretches.h"

#include "Point2.h"

#include <cstddef>
#include <new>
#include <vector>

/// The pieces of work of a bulk append to the vault, which may be shared out to threads by stretches of the input.
///
/// A source of points is a class with the operations of PointSource. fill() makes the vertex in the given slot, or has its
/// own. arrange() comes when the order is known, before any point is fetched: the source may bring its points into that
/// order, and puts their new positions into the pairs.
namespace ORBI_LUMO25D
{

/// Input points as values.
class PointSource
{
public:
    explicit PointSource(const std::vector<Point2>& vPoints_) : vPoints(vPoints_) {}
    std::size_t size() const { return vPoints.size(); }
    double x(std::size_t i) const { return vPoints[i].x(); }
    double y(std::size_t i) const { return vPoints[i].y(); }
    Point2* fill(std::size_t i, Point2* pVtx) const { return new (pVtx) Point2(vPoints[i]); }
    const void* address(std::size_t i) const { return &vPoints[i]; }
    bool mayUseThreads() const { return true; }
    void arrange(IdxPairs&) const {}

private:
    const std::vector<Point2>& vPoints;
};

/// Input points as triples x, y, z.
class CoordinateSource
{
public:
    CoordinateSource(std::size_t n_, const double* aCoordinates_) : n(n_), aCoordinates(aCoordinates_) {}
    std::size_t size() const { return n; }
    double x(std::size_t i) const { return aCoordinates[3 * i]; }
    double y(std::size_t i) const { return aCoordinates[3 * i + 1]; }
    Point2* fill(std::size_t i, Point2* pVtx) const
    {
        return new (pVtx) Point2(aCoordinates[3 * i], aCoordinates[3 * i + 1], aCoordinates[3 * i + 2]);
    }
    const void* address(std::size_t i) const { return aCoordinates + 3 * i; }
    bool mayUseThreads() const { return false; }
    void arrange(IdxPairs&) const {}

private:
    std::size_t n;
    const double* aCoordinates;
};

/// Points of a cloud, which stay there.
class BlockSource
{
public:
    explicit BlockSource(const PointBlocks& points_) : points(points_) {}
    std::size_t size() const { return points.size(); }
    double x(std::size_t i) const { return points[i].x; }
    double y(std::size_t i) const { return points[i].y; }
    Point2* fill(std::size_t i, Point2* pVtx) const
    {
        const Coords& c = points[i];
        new (pVtx) Point2(c.x, c.y, c.z);
        pVtx->setCustomIndex(c.customIndex);
        return pVtx;
    }
    const void* address(std::size_t i) const { return &points[i]; }
    bool mayUseThreads() const { return true; }
    void arrange(IdxPairs&) const {}

private:
    const PointBlocks& points;
};

/// Points of a cloud, which move out: they are brought into curve order where they are, and as they are fetched from the
/// front on, the memory of those before is given back. So the points are never in memory twice. On one thread.
class DrainedSource
{
public:
    explicit DrainedSource(PointBlocks& points_) : points(points_), source(points_) {}
    std::size_t size() const { return source.size(); }
    double x(std::size_t i) const { return source.x(i); }
    double y(std::size_t i) const { return source.y(i); }
    Point2* fill(std::size_t i, Point2* pVtx) const
    {
        source.fill(i, pVtx);
        points.releaseBefore(i);
        return pVtx;
    }
    const void* address(std::size_t i) const { return source.address(i); }
    bool mayUseThreads() const { return false; }
    /// Cycle by cycle. A pair that has its own position is done with.
    void arrange(IdxPairs& vPairs) const
    {
        for (std::size_t k = 0; k < vPairs.size(); ++k) {
            if (vPairs[k].position() == k) continue;
            const Coords first = points[k];
            std::size_t to = k;
            for (std::size_t from = vPairs[to].position(); from != k; from = vPairs[to].position()) {
                points[to] = points[from];
                vPairs[to] = KeyedPosition(vPairs[to].key(), to);
                to = from;
            }
            points[to] = first;
            vPairs[to] = KeyedPosition(vPairs[to].key(), to);
        }
    }

private:
    PointBlocks& points;
    BlockSource source;
};

/// Vertices that lie in the pool already and stay where they are.
class StandingSource
{
public:
    StandingSource(Point2* aVertices_, std::size_t n_) : aVertices(aVertices_), n(n_) {}
    std::size_t size() const { return n; }
    double x(std::size_t i) const { return aVertices[i].x(); }
    double y(std::size_t i) const { return aVertices[i].y(); }
    Point2* fill(std::size_t i, Point2*) const { return aVertices + i; }
    const void* address(std::size_t) const { return aVertices; } // nothing is read
    bool mayUseThreads() const { return true; }
    void arrange(IdxPairs&) const {}

private:
    Point2* aVertices;
    std::size_t n;
};

/// Computes the curve indices of a stretch of the input.
template <class Source>
class Task
{
public:
    Task(Stretch s, const Source& source_, const HC2& curve_, IdxPairs& vPairs_)
        : stretch(s), source(source_), curve(curve_), vPairs(vPairs_)
    {
    }
    void run()
    {
        for (std::size_t i = stretch.begin; i < stretch.end; ++i) {
            vPairs[i] = KeyedPosition(curve.getIndex(source.x(i), source.y(i)), i);
        }
    }

private:
    Stretch stretch;
    const Source& source;
    const HC2& curve;
    IdxPairs& vPairs;
};

/// Fills vertices, items and handles of a stretch of the sorted pairs.
template <class Source>
class FTask
{
public:
    FTask(Stretch s, const Source& source_, const IdxPairs& vPairs_, Point2* aVertices_, IdxVtxAct* aItems_,
          Point2** aHandles_)
        : stretch(s), source(source_), vPairs(vPairs_), aVertices(aVertices_), aItems(aItems_), aHandles(aHandles_)
    {
    }
    void run()
    {
        // The input is read in curve order, that is, at random: ask for it in time.
        constexpr std::size_t ahead = 24;
        for (std::size_t k = stretch.begin; k < stretch.end; ++k) {
            if (k + ahead < stretch.end) __builtin_prefetch(source.address(vPairs[k + ahead].position()));
            const std::size_t position = vPairs[k].position();
            Point2* const pVtx = source.fill(position, aVertices + k);
            aItems[k] = {vPairs[k].key(), true, pVtx};
            if (aHandles != nullptr) aHandles[position] = pVtx;
        }
    }

private:
    Stretch stretch;
    const Source& source;
    const IdxPairs& vPairs;
    Point2* aVertices;
    IdxVtxAct* aItems;
    Point2** aHandles;
};

template <class TaskType, class... Args>
void runOnStretches(std::size_t n, std::size_t numThreads, const Args&... args)
{
    std::vector<TaskType> vTasks;
    for (const Stretch& s : cutIntoStretches(n, numThreads)) {
        vTasks.emplace_back(s, args...);
    }
    MTCtrl<TaskType> control;
    for (TaskType& task : vTasks) {
        control.add(&task);
    }
    control.run(&TaskType::run, static_cast<int>(numThreads));
}

} // namespace ORBI_LUMO25D

#endif
