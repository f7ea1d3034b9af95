#include "geometry/RandomPolygon.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace ORBI_LUMO25D
{

namespace
{

// A choice fails by chance with a probability of about num/2^53 in a wide box: where so many fail it is too narrow.
constexpr int MAX_ATTEMPTS = 50;

} // namespace

RandomPolygon::RandomPolygon(std::size_t num_, double minX_, double minY_, double maxX_, double maxY_,
                             std::uint64_t seed)
    : num(num_), minX(minX_), minY(minY_), maxX(maxX_), maxY(maxY_), random(seed)
{
    orbiTest.setStaticBound_MT(std::max({std::fabs(minX), std::fabs(minY), std::fabs(maxX), std::fabs(maxY)}));
}

bool RandomPolygon::run()
{
    return drawCorners() && orderCorners();
}

bool RandomPolygon::drawCorners()
{
    vCorners.clear();
    vCorners.reserve(num);
    for (int i = 0; i < MAX_ATTEMPTS && vCorners.size() < num; ++i) {
        while (vCorners.size() < num) {
            const double x = random.between(minX, maxX);
            const double y = random.between(minY, maxY);
            vCorners.emplace_back(x, y, 0.0);
        }
        std::sort(vCorners.begin(), vCorners.end());
        vCorners.erase(std::unique(vCorners.begin(), vCorners.end()), vCorners.end());
    }
    return vCorners.size() == num;
}

bool RandomPolygon::orderCorners()
{
    bool bDivided = false;
    for (int i = 0; i < MAX_ATTEMPTS && !bDivided; ++i) bDivided = divideByDiagonal();
    while (bDivided && !vChains.empty()) {
        const Chain chain = vChains.back();
        vChains.pop_back();
        bDivided = divideChain(chain);
    }
    return bDivided;
}

bool RandomPolygon::divideByDiagonal()
{
    std::swap(vCorners[0], vCorners[random.index(num)]);
    std::swap(vCorners[1], vCorners[1 + random.index(num - 1)]);
    std::size_t middle = 0;
    if (!moveSideFirst(2, num, vCorners[0], vCorners[1], ORIENTATION2_CW, middle)) return false;
    // From a, b, right side, left side to the order of the polygon: a, right side, b, left side.
    std::swap(vCorners[1], vCorners[middle - 1]);
    vChains = {{1, middle - 1}, {middle, num}};
    return true;
}

bool RandomPolygon::divideChain(const Chain& chain)
{
    if (chain.begin == chain.end) return true;
    const Point2& source = vCorners[chain.begin - 1];
    const Point2& target = vCorners[chain.end == num ? 0 : chain.end];
    for (int i = 0; i < MAX_ATTEMPTS; ++i) {
        const std::size_t chosen = chain.begin + random.index(chain.end - chain.begin);
        std::swap(vCorners[chain.begin], vCorners[chosen]);
        const double t = random.unit();
        const Point2 onLine((1.0 - t) * source.x() + t * target.x(), (1.0 - t) * source.y() + t * target.y(), 0.0);
        if (tryLine(chain, onLine)) return true;
    }
    return false;
}

bool RandomPolygon::tryLine(const Chain& chain, const Point2& onLine)
{
    const Point2 chosen = vCorners[chain.begin];
    const Point2& source = vCorners[chain.begin - 1];
    const Point2& target = vCorners[chain.end == num ? 0 : chain.end];
    orbiTest.ensureStaticBound(&onLine);
    const Orientation2 sourceSide = orbiTest.getOrientation2(&chosen, &onLine, &source);
    const Orientation2 targetSide = orbiTest.getOrientation2(&chosen, &onLine, &target);
    if (sourceSide == ORIENTATION2_COLLINEAR || targetSide == ORIENTATION2_COLLINEAR || sourceSide == targetSide) {
        return false;
    }
    std::size_t middle = 0;
    if (!moveSideFirst(chain.begin + 1, chain.end, chosen, onLine, sourceSide, middle)) return false;
    std::swap(vCorners[chain.begin], vCorners[middle - 1]);
    vChains.push_back({chain.begin, middle - 1});
    vChains.push_back({middle, chain.end});
    return true;
}

/// Moves the corners on the given side of the line to the front; middle is the end of these. False, with the corners in
/// some order, when one of them lies on the line. A loop of our own, since the order that std::partition leaves differs
/// from library to library.
bool RandomPolygon::moveSideFirst(std::size_t begin, std::size_t end, const Point2& p0, const Point2& p1,
                                  Orientation2 side, std::size_t& middle)
{
    middle = begin;
    for (std::size_t i = begin; i < end; ++i) {
        const Orientation2 ori = orbiTest.getOrientation2(&p0, &p1, &vCorners[i]);
        if (ori == ORIENTATION2_COLLINEAR) return false;
        if (ori == side) std::swap(vCorners[i], vCorners[middle++]);
    }
    return true;
}

} // namespace ORBI_LUMO25D
