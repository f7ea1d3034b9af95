#ifndef LUMO25D_TERRAIN_SURFACEHEIGHTS_H
#define LUMO25D_TERRAIN_SURFACEHEIGHTS_H

#include "Point2.h"
#include "core/SimplePool.h"
#include "geometry/midCoordinate.h"
#include "support/check.h"

#include <cmath>
#include <limits>
#include <vector>

namespace ORBI_LUMO25D
{

/// The heights of two surfaces at the vertices of a triangulation.
class SurfaceHeights
{
public:
    /// A height that isn't known.
    static constexpr double UNKNOWN = std::numeric_limits<double>::max();

    struct Pair
    {
        double aHeights[2] = {UNKNOWN, UNKNOWN}; ///< before, after

        bool isKnown() const { return aHeights[0] != UNKNOWN && aHeights[1] != UNKNOWN; }
        double difference() const { return aHeights[0] - aHeights[1]; }
    };

    explicit SurfaceHeights(const SimplePool<Point2>& pool_) : pool(pool_) {}

    /// The pair of a vertex, to be written; valid until vertices are added. New vertices have nothing known.
    Pair& at(const Point2* pVtx)
    {
        const std::size_t i = pool.indexOf(pVtx);
        if (i >= vPairs.size()) vPairs.resize(pool.size());
        return vPairs[i];
    }
    Pair get(const Point2* pVtx) const
    {
        const std::size_t i = pool.indexOf(pVtx);
        return i < vPairs.size() ? vPairs[i] : Pair();
    }

    /// Makes the difference, before minus after, the vertex's z. Up to the threshold it is none: both surfaces get their
    /// mean there.
    void settle(Point2* pVtx, double threshold) { settle(*pVtx, at(pVtx), threshold); }
    static void settle(Point2& vertex, Pair& pair, double threshold)
    {
        LUMO_CHECK(pair.isKnown(), "h0!=1.7976931348623158e+308 && h1!=1.7976931348623158e+308");
        LUMO_CHECK(std::isfinite(pair.difference()), "std::isfinite(h0-h1)");
        if (std::fabs(pair.difference()) > threshold) {
            vertex.setHeight(pair.difference());
        } else {
            unite(vertex, pair);
        }
    }
    /// Both surfaces get their mean at the vertex.
    void unite(Point2* pVtx) { unite(*pVtx, at(pVtx)); }
    static void unite(Point2& vertex, Pair& pair)
    {
        if (pair.difference() != 0.0) {
            const double mean = midCoordinate(pair.aHeights[0], pair.aHeights[1]);
            pair.aHeights[0] = pair.aHeights[1] = mean;
        }
        vertex.setHeight(0.0);
    }

private:
    const SimplePool<Point2>& pool;
    std::vector<Pair> vPairs; ///< by the vertices' numbers in the pool
};

} // namespace ORBI_LUMO25D

#endif
