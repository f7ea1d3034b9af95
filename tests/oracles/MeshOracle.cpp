#include "oracles/MeshOracle.h"

#include "oracles/ExactOracle.h"

#include "Lumo_2D.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

namespace oracles
{

using namespace ORBI_LUMO25D;
using ::testing::AssertionFailure;
using ::testing::AssertionResult;
using ::testing::AssertionSuccess;

std::vector<Point2> distinctPoints(const std::vector<Point2>& vPoints)
{
    std::vector<Point2> vDistinct(vPoints);
    std::stable_sort(vDistinct.begin(), vDistinct.end());
    vDistinct.erase(std::unique(vDistinct.begin(), vDistinct.end()), vDistinct.end());
    return vDistinct;
}

std::vector<Point2> convexHull(const std::vector<Point2>& vPoints, bool bWithCollinear)
{
    const std::vector<Point2> v = distinctPoints(vPoints);
    std::vector<Point2> vHull;
    const auto addChain = [&](auto first, auto last) {
        const std::size_t base = vHull.size();
        for (; first != last; ++first) {
            while (vHull.size() >= base + 2) {
                const int sign = orientationSign(vHull[vHull.size() - 2], vHull.back(), *first);
                if (sign > 0 || (sign == 0 && bWithCollinear)) break;
                vHull.pop_back();
            }
            vHull.push_back(*first);
        }
        vHull.pop_back(); // the next chain begins with it
    };
    addChain(v.begin(), v.end());
    addChain(v.rbegin(), v.rend());
    return vHull;
}

namespace
{

bool haveArea(const std::vector<Point2>& vPoints)
{
    const std::vector<Point2> v = distinctPoints(vPoints);
    for (std::size_t i = 2; i < v.size(); ++i) {
        if (orientationSign(v[0], v[1], v[i]) != 0) return true;
    }
    return false;
}

using PointPair = std::pair<const Point2*, const Point2*>;

AssertionResult edgesMatch(const std::vector<Triangle2*>& vT, std::size_t& numBorderEdges)
{
    std::map<PointPair, std::pair<const Triangle2*, int>> mEdges;
    for (const Triangle2* pT : vT) {
        for (int i = 0; i < 3; ++i) {
            const PointPair edge(pT->getCorner((i + 1) % 3), pT->getCorner((i + 2) % 3));
            if (!mEdges.emplace(edge, std::make_pair(pT, i)).second)
                return AssertionFailure() << "two triangles left of an edge: " << *pT;
        }
    }
    numBorderEdges = 0;
    for (const auto& entry : mEdges) {
        const Triangle2* const pT = entry.second.first;
        const auto itTwin = mEdges.find({entry.first.second, entry.first.first});
        const Triangle2* const pN = itTwin == mEdges.end() ? nullptr : itTwin->second.first;
        if (pT->getOppositeTriangle(entry.second.second) != pN) return AssertionFailure() << "wrong neighbour: " << *pT;
        if (pN == nullptr) {
            ++numBorderEdges;
        } else if (pN->getOppositeTriangle(itTwin->second.second) != pT) {
            return AssertionFailure() << "link isn't symmetric: " << *pT;
        } else if (inCircleSign(*pT->getCorner(0), *pT->getCorner(1), *pT->getCorner(2),
                                *pN->getCorner(itTwin->second.second)) > 0) {
            return AssertionFailure() << "not Delaunay: " << *pT << " and " << *pN;
        }
    }
    return AssertionSuccess();
}

} // namespace

AssertionResult isDelaunay(const std::vector<Triangle2*>& vT, const std::vector<Point2>& vPoints)
{
    const std::vector<Point2> vDistinct = distinctPoints(vPoints);
    if (!haveArea(vPoints)) {
        return vT.empty() ? AssertionSuccess() : AssertionFailure() << "triangles without area";
    }
    std::set<const Point2*> sCorners;
    for (const Triangle2* pT : vT) {
        for (int i = 0; i < 3; ++i) {
            const Point2* const pVtx = pT->getCorner(i);
            sCorners.insert(pVtx);
            if (pVtx->getIncidentTriangle() == nullptr || !pVtx->getIncidentTriangle()->hasVertex(pVtx))
                return AssertionFailure() << "wrong incident triangle: " << *pVtx;
        }
        if (orientationSign(*pT->getCorner(0), *pT->getCorner(1), *pT->getCorner(2)) <= 0)
            return AssertionFailure() << "not counterclockwise: " << *pT;
    }
    std::vector<Point2> vCorners;
    for (const Point2* pVtx : sCorners) vCorners.push_back(*pVtx);
    std::sort(vCorners.begin(), vCorners.end());
    if (vCorners != vDistinct)
        return AssertionFailure() << vCorners.size() << " corners, not the " << vDistinct.size() << " distinct points";
    std::size_t numBorderEdges = 0;
    const AssertionResult edges = edgesMatch(vT, numBorderEdges);
    if (!edges) return edges;
    const std::size_t numHull = convexHull(vPoints, true).size();
    if (numBorderEdges != numHull) return AssertionFailure() << numBorderEdges << " border edges, hull of " << numHull;
    if (vT.size() + 2 + numHull != 2 * vDistinct.size())
        return AssertionFailure() << "Euler's formula: " << vT.size() << " triangles";
    return AssertionSuccess();
}

AssertionResult isSound(const Lumo_2D& lumo, const std::vector<Point2>& vPoints, bool bWithOracle)
{
    std::vector<Triangle2*> vT;
    lumo.getTrianglePointers(vT);
    if (bWithOracle) {
        const AssertionResult result = isDelaunay(vT, vPoints);
        if (!result) return result;
    }
    if (!lumo.checkValidity(true, "sound")) return AssertionFailure() << "invalid by the library's own check";
    if (lumo.numberOfPoints() != distinctPoints(vPoints).size())
        return AssertionFailure() << "a wrong number of points";
    if (lumo.numberOfTriangles() != vT.size()) return AssertionFailure() << "a wrong number of triangles";
    if (lumo.hasArea() != !vT.empty()) return AssertionFailure() << "area without triangles, or the reverse";
    return AssertionSuccess();
}

} // namespace oracles
