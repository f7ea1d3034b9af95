#ifndef LUMO25D_CORE_APPENDTASKS_H
#define LUMO25D_CORE_APPENDTASKS_H

#include "core/CurveSort.h"
#include "core/HC2.h"
#include "core/IdxVtxAct.h"
#include "core/MTCtrl.h"

#include "Point2.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <new>
#include <vector>

/// The pieces of work of a bulk append to the vault, which may be shared out to threads by stretches of the input.
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
    void fill(std::size_t i, Point2* pVtx) const { new (pVtx) Point2(vPoints[i]); }
    const void* address(std::size_t i) const { return &vPoints[i]; }
    bool mayUseThreads() const { return true; }

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
    void fill(std::size_t i, Point2* pVtx) const
    {
        new (pVtx) Point2(aCoordinates[3 * i], aCoordinates[3 * i + 1], aCoordinates[3 * i + 2]);
    }
    const void* address(std::size_t i) const { return aCoordinates + 3 * i; }
    bool mayUseThreads() const { return false; }

private:
    std::size_t n;
    const double* aCoordinates;
};

/// A stretch of input positions.
struct Stretch
{
    std::size_t begin;
    std::size_t end;
};

inline std::vector<Stretch> cutIntoStretches(std::size_t n, std::size_t numParts)
{
    std::vector<Stretch> vStretches;
    const std::size_t length = n / numParts + 1;
    for (std::size_t begin = 0; begin < n; begin += length) {
        vStretches.push_back({begin, std::min(begin + length, n)});
    }
    return vStretches;
}

/// Computes the curve indices of a stretch of the input.
template <class Source>
class Task
{
public:
    Task(Stretch s, const Source& source_, const HC2& curve_, std::vector<IdxPos>& vPairs_)
        : stretch(s), source(source_), curve(curve_), vPairs(vPairs_)
    {
    }
    void run()
    {
        for (std::size_t i = stretch.begin; i < stretch.end; ++i) {
            vPairs[i] = IdxPos(curve.getIndex(source.x(i), source.y(i)), i);
        }
    }

private:
    Stretch stretch;
    const Source& source;
    const HC2& curve;
    std::vector<IdxPos>& vPairs;
};

/// Fills vertices, items and handles of a stretch of the sorted pairs.
template <class Source>
class FTask
{
public:
    FTask(Stretch s, const Source& source_, const std::vector<IdxPos>& vPairs_, Point2* aVertices_, IdxVtxAct* aItems_,
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
            Point2* const pVtx = aVertices + k;
            source.fill(position, pVtx);
            aItems[k] = {vPairs[k].idx(), true, pVtx};
            if (aHandles != nullptr) aHandles[position] = pVtx;
        }
    }

private:
    Stretch stretch;
    const Source& source;
    const std::vector<IdxPos>& vPairs;
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
