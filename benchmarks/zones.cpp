// Times zones of a million triangles, beside the same work on std::set.
//
//     zones [--points N] [--rounds N]
//
// The zones are the insides of two large polygons in uniform points. Times are the best of the rounds.

#include "inputs.h"
#include "measure.h"

#include "ConstraintGraph2.h"
#include "ConstraintSegment2.h"
#include "Lumo_2D.h"
#include "freeFunctions.h"

#include <algorithm>
#include <cstdio>
#include <functional>
#include <iterator>
#include <limits>
#include <set>
#include <utility>
#include <vector>

using namespace ORBI_LUMO25D;
using benchmarks::Times;

namespace
{

using Triangles = std::vector<Triangle2*>;
using TriangleSet = std::set<Triangle2*>;

// ---- the same work on sets ------------------------------------------------------------------------------------------

using EdgeSet = std::set<std::pair<Point2*, Point2*>>;

EdgeSet edgesOf(const ConstraintGraph2& graph)
{
    std::vector<ConstraintSegment2*> v;
    graph.getChildConstraintSegments(v);
    EdgeSet s;
    for (const ConstraintSegment2* p : v) s.emplace(p->getSrc(), p->getTrg());
    return s;
}

TriangleSet floodOnSets(Lumo_2D& lumo, const ConstraintGraph2& graph)
{
    const EdgeSet borders = edgesOf(graph);
    std::vector<Point2*> vEnds;
    graph.getPolygonVertices(vEnds);
    Triangles vWork;
    for (std::size_t i = 0; i < vEnds.size(); i += 2) vWork.push_back(lumo.getAdjacentTriangle(vEnds[i], vEnds[i + 1]));
    TriangleSet sT;
    while (!vWork.empty()) {
        Triangle2* const pT = vWork.back();
        vWork.pop_back();
        sT.insert(pT);
        for (int i = 0; i < 3; ++i) {
            Triangle2* const pN = pT->getOppositeTriangle(i);
            if (pN == nullptr || sT.count(pN) != 0) continue;
            std::pair<Point2*, Point2*> ends{pT->getCorner(incIndexBy1(i)), pT->getCorner(incIndexBy2(i))};
            if (std::less<Point2*>()(ends.second, ends.first)) std::swap(ends.first, ends.second);
            if (borders.count(ends) == 0) vWork.push_back(pN);
        }
    }
    return sT;
}

// ---- measuring ------------------------------------------------------------------------------------------------------

void line(const char* name, std::size_t n, int numRounds, const std::function<double()>& work)
{
    double best = std::numeric_limits<double>::max();
    double result = 0.0;
    for (int i = 0; i < numRounds; ++i) {
        const Times start = Times::now();
        result = work();
        best = std::min(best, (Times::now() - start).wall);
    }
    std::printf("| %-34s | %8.1f | %6.1f | %.9g |\n", name, best * 1e3, best * 1e9 / static_cast<double>(n), result);
    std::fflush(stdout);
}

double asDouble(std::size_t n)
{
    return static_cast<double>(n);
}

/// One look at each neighbour of each triangle: what a flood can't do without.
double plainPass(const Triangles& vT)
{
    std::size_t n = 0;
    for (const Triangle2* pT : vT) {
        for (int i = 0; i < 3; ++i) {
            const Triangle2* const pN = pT->neighbor(i);
            if (pN != nullptr) n += pN->neighbor(0) == pT ? 1U : 0U;
        }
    }
    return asDouble(n);
}

ConstraintGraph2* ring(Lumo_2D& lumo, const Point2& center)
{
    std::vector<Segment2> v;
    generateCircle(2000, center, 0.42, v);
    return lumo.createConstraint(v, CIS_CONSTRAINED_DELAUNAY);
}

} // namespace

int main(int argc, char** argv)
{
    const std::size_t numPoints = benchmarks::option(argc, argv, "--points", 900000);
    const int numRounds = static_cast<int>(benchmarks::option(argc, argv, "--rounds", 3));
    benchmarks::settleMemory(std::size_t(1) << 30);
    Lumo_2D lumo(numPoints);
    lumo.insert(benchmarks::uniform(numPoints));
    ConstraintGraph2* const pGraph = ring(lumo, {0.45, 0.5, 0});
    Zone2* const pA = lumo.createZone(pGraph, ZL_INSIDE);
    Zone2* const pB = lumo.createZone(ring(lumo, {0.55, 0.5, 0}), ZL_INSIDE);
    Triangles vA, vB;
    pA->getTriangles(vA);
    pB->getTriangles(vB);
    const std::size_t n = vA.size();
    const TriangleSet sA(vA.begin(), vA.end()), sB(vB.begin(), vB.end());
    std::printf("| %zu and %zu triangles | ms | ns a triangle | result |\n|---|---|---|---|\n", n, vB.size());

    line("plain pass over the neighbours", n, numRounds, [&] { return plainPass(vA); });
    line("getTriangles", n, numRounds, [&] {
        Triangles v;
        pA->getTriangles(v);
        return asDouble(v.size());
    });
    line("the same on std::set", n, numRounds, [&] { return asDouble(floodOnSets(lumo, *pGraph).size()); });
    line("getArea2D, flood included", n, numRounds, [&] { return pA->getArea2D(); });
    line("Triangle2::getArea2D on the set", n, numRounds, [&] {
        double sum = 0;
        for (const Triangle2* pT : floodOnSets(lumo, *pGraph)) sum += pT->getArea2D();
        return sum;
    });
    line("getBorderEdges, flood included", n, numRounds, [&] {
        std::vector<Edge2> v;
        pA->getBorderEdges(v);
        return asDouble(v.size());
    });
    line("the same on std::set", n, numRounds, [&] {
        std::size_t num = 0;
        const TriangleSet s = floodOnSets(lumo, *pGraph);
        for (Triangle2* pT : s) {
            for (int i = 0; i < 3; ++i) num += s.count(pT->getOppositeTriangle(i)) == 0 ? 1U : 0U;
        }
        return asDouble(num);
    });
    for (const auto& [pZone, name] :
         {std::pair{zoneUnion(pA, pB), "zoneUnion, both floods included"},
          std::pair{zoneIntersection(pA, pB), "zoneIntersection, likewise"},
          std::pair{zoneSymmetricDifference(pA, pB), "zoneSymmetricDifference, likewise"}}) {
        line(name, n, numRounds, [pZone = pZone] { return asDouble(pZone->getNumberOfTriangles()); });
    }
    line("union of two std::set that stand", n, numRounds, [&] {
        TriangleSet s;
        std::set_union(sA.begin(), sA.end(), sB.begin(), sB.end(), std::inserter(s, s.end()));
        return asDouble(s.size());
    });
    return 0;
}
