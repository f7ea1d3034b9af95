// Times the index of boxes and the segment checker; the peer is Boost.Geometry's R-tree, when it is there.
//
//     segments [--rounds N] [--points N]
//
// The same segments, the same queries, the same classification of the hits; both in one run, in turns. By default
// 10 thousand, 100 thousand and a million segments, so that the growth shows.

#include "measure.h"

#include "SegmentChecker.h"
#include "freeFunctions.h"
#include "geometry/OrbiTest.h"
#include "orbi_locate2/RTree.h"
#include "segments/classification.h"

#include "Bbox2.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <vector>

#if defined(LUMO25D_WITH_BOOST_RTREE)
#include <boost/geometry.hpp>
#include <boost/geometry/geometries/box.hpp>
#include <boost/geometry/geometries/point.hpp>
#include <boost/geometry/index/rtree.hpp>
#include <boost/iterator/function_output_iterator.hpp>
#endif

using namespace ORBI_LUMO25D;
using benchmarks::Measurement;
using benchmarks::median;

namespace
{

struct Rect
{
    double xmin, ymin, xmax, ymax;
};

Rect rectOf(const Segment2& s)
{
    return {std::min(s.src.x(), s.trg.x()), std::min(s.src.y(), s.trg.y()), std::max(s.src.x(), s.trg.x()),
            std::max(s.src.y(), s.trg.y())};
}

class OurIndex
{
public:
    explicit OurIndex(const std::vector<Segment2>& vSegments)
    {
        tree.reserve(vSegments.size());
        for (std::size_t i = 0; i < vSegments.size(); ++i) {
            const Rect r = rectOf(vSegments[i]);
            tree.addObject(i, r.xmin, r.ymin, r.xmax, r.ymax);
        }
        tree.build();
    }
    template <class F>
    void forEach(const Rect& r, const F& f) const
    {
        tree.forEach(r.xmin, r.ymin, r.xmax, r.ymax, f);
    }
    std::vector<std::size_t> inSpatialOrder() const { return tree.inSpatialOrder(); }

private:
    ORBI_LOCATE2::RTree tree;
};

#if defined(LUMO25D_WITH_BOOST_RTREE)
namespace bg = boost::geometry;

class PeerIndex
{
    using Box = bg::model::box<bg::model::point<double, 2, bg::cs::cartesian>>;
    using Value = std::pair<Box, std::size_t>;

public:
    explicit PeerIndex(const std::vector<Segment2>& vSegments)
    {
        std::vector<Value> vValues;
        vValues.reserve(vSegments.size());
        for (std::size_t i = 0; i < vSegments.size(); ++i) vValues.emplace_back(boxOf(rectOf(vSegments[i])), i);
        tree = Tree(vValues.begin(), vValues.end()); // its packing constructor, many times faster than insertion
    }
    template <class F>
    void forEach(const Rect& r, const F& f) const
    {
        tree.query(bg::index::intersects(boxOf(r)),
                   boost::iterators::make_function_output_iterator([&f](const Value& value) { f(value.second); }));
    }
    std::vector<std::size_t> inSpatialOrder() const
    {
        std::vector<std::size_t> v;
        for (const Value& value : tree) v.push_back(value.second);
        return v;
    }

private:
    // Of 4, 8, 16 and 32 elements a node, 8 is the fastest in queries (16 is a tenth faster to build).
    using Tree = bg::index::rtree<Value, bg::index::quadratic<8>>;

    static Box boxOf(const Rect& r) { return Box({r.xmin, r.ymin}, {r.xmax, r.ymax}); }

    Tree tree;
};
#endif

std::vector<std::size_t> inputOrder(std::size_t n)
{
    std::vector<std::size_t> v(n);
    for (std::size_t i = 0; i < n; ++i) v[i] = i;
    return v;
}

template <class Index>
Measurement timeBuild(const std::vector<Segment2>& vSegments)
{
    const auto hits = [&vSegments](const Index& index) {
        unsigned long long n = 0;
        for (std::size_t i = 0; i < vSegments.size(); i += 100)
            index.forEach(rectOf(vSegments[i]), [&n](std::size_t) { ++n; });
        return n;
    };
    const std::size_t repetitions = std::max<std::size_t>(1, 300000 / vSegments.size());
    return benchmarks::measureRepeated([&] { return std::make_unique<Index>(vSegments); }, hits, repetitions);
}

/// The objects whose boxes meet each segment's box; classified, if wished.
template <class Index>
Measurement timeQueries(const std::vector<Segment2>& vSegments, bool bSpatialOrder, bool bClassify)
{
    const Index index(vSegments);
    const std::vector<std::size_t> vOrder = bSpatialOrder ? index.inSpatialOrder() : inputOrder(vSegments.size());
    OrbiTest orbiTest;
    std::vector<std::size_t> vHits;
    return benchmarks::measureWork([&] {
        unsigned long long n = 0;
        for (const std::size_t i : vOrder) {
            vHits.clear();
            index.forEach(rectOf(vSegments[i]), [&](std::size_t j) {
                vHits.push_back(j);
                // Otherwise waiting for the hits' segments would be more than half of the time, in both.
                if (bClassify) __builtin_prefetch(&vSegments[j]);
            });
            if (!bClassify) {
                n += vHits.size();
                continue;
            }
            for (const std::size_t j : vHits) {
                if (i != j && classifySegments(orbiTest, vSegments[i], vSegments[j]) == SIT_POINT) ++n;
            }
        }
        return n;
    });
}

/// From the segments to those that are illegal.
Measurement timeChecker(std::vector<Segment2>& vSegments)
{
    std::vector<Segment2*> vPointers;
    for (Segment2& s : vSegments) vPointers.push_back(&s);
    return benchmarks::measureWork([&vPointers] {
        std::vector<Segment2*> vIllegal;
        SegmentChecker(vPointers).getIllegalSegments(false, vIllegal);
        return static_cast<unsigned long long>(vIllegal.size());
    });
}

/// The same by hand, as a user of the index would do it: in its order, and without those that are known already.
template <class Index>
Measurement timeCheckByHand(const std::vector<Segment2>& vSegments)
{
    return benchmarks::measureWork([&vSegments] {
        const Index index(vSegments);
        OrbiTest orbiTest;
        std::vector<char> vIllegal(vSegments.size());
        for (const std::size_t i : index.inSpatialOrder()) {
            if (vIllegal[i] != 0) continue;
            index.forEach(rectOf(vSegments[i]), [&](std::size_t j) {
                if (i == j) return;
                const SegmentIntersectionType sit = classifySegments(orbiTest, vSegments[i], vSegments[j]);
                if (sit == SIT_POINT || sit == SIT_SEGMENT) vIllegal[i] = vIllegal[j] = 1;
            });
        }
        return static_cast<unsigned long long>(std::count(vIllegal.begin(), vIllegal.end(), char(1)));
    });
}

/// Measures ours and the peer's in turns and prints a line. False when they disagree.
bool compare(const char* name, std::size_t n, int numRounds, const std::function<Measurement()>& ours,
             const std::function<Measurement()>& peer)
{
    std::vector<double> vOurs, vPeer, vOursUser, vPeerUser;
    bool bSame = true;
    for (int round = 0; round < numRounds; ++round) {
        const Measurement a = benchmarks::inChild(ours);
        vOurs.push_back(a.work.wall);
        vOursUser.push_back(a.work.user);
        if (!peer) continue;
        const Measurement b = benchmarks::inChild(peer);
        vPeer.push_back(b.work.wall);
        vPeerUser.push_back(b.work.user);
        bSame = bSame && a.sum == b.sum;
    }
    const double size = static_cast<double>(n);
    std::printf("| %s | %zu | %.4f | %.0f | %.1f |", name, n, median(vOurs), 1e9 * median(vOurs) / size,
                1e9 * median(vOurs) / size / std::log2(size));
    if (peer) {
        std::printf(" %.4f | %.2f | %.2f |", median(vPeer), median(vPeer) / median(vOurs),
                    median(vPeerUser) / std::max(1e-9, median(vOursUser)));
        benchmarks::addFigure(name + (", n = " + std::to_string(n)), median(vOurs), "Boost", median(vPeer));
    } else {
        std::printf(" | | |");
    }
    std::printf("%s\n", bSame ? "" : " DIFFERENT RESULTS |");
    std::fflush(stdout);
    return bSame;
}

bool compareAll(std::size_t n, int numRounds)
{
    // Lines of mean length l and random direction meet n * 2 / pi * l^2 others in a unit square, here two.
    const double maxLength = 1.5 * std::sqrt(3.14159265358979 / static_cast<double>(n));
    Bbox2 box;
    box.add(Point2(0, 0, 0));
    box.add(Point2(1, 1, 0));
    std::vector<Segment2> vSegments;
    generateRandomSegments(n, box, maxLength, 1, vSegments);

    bool bSame = true;
    const auto line = [&](const char* name, const std::function<Measurement()>& ours,
                          const std::function<Measurement()>& peer) {
        bSame = compare(name, n, numRounds, ours, peer) && bSame;
    };
    struct
    {
        const char* name;
        bool bSpatialOrder, bClassify;
    } const aQueries[] = {{"boxes, random order", false, false},
                          {"boxes, own order", true, false},
                          {"classified, random", false, true},
                          {"classified, own order", true, true}};
#if defined(LUMO25D_WITH_BOOST_RTREE)
    line(
        "build", [&] { return timeBuild<OurIndex>(vSegments); }, [&] { return timeBuild<PeerIndex>(vSegments); });
    for (const auto& q : aQueries) {
        line(
            q.name, [&] { return timeQueries<OurIndex>(vSegments, q.bSpatialOrder, q.bClassify); },
            [&] { return timeQueries<PeerIndex>(vSegments, q.bSpatialOrder, q.bClassify); });
    }
    line(
        "check", [&] { return timeChecker(vSegments); }, [&] { return timeCheckByHand<PeerIndex>(vSegments); });
#else
    line(
        "build", [&] { return timeBuild<OurIndex>(vSegments); }, nullptr);
    for (const auto& q : aQueries) {
        line(
            q.name, [&] { return timeQueries<OurIndex>(vSegments, q.bSpatialOrder, q.bClassify); }, nullptr);
    }
    line(
        "check", [&] { return timeChecker(vSegments); }, nullptr);
#endif
    return bSame;
}

} // namespace

int main(int argc, char** argv)
{
    int numRounds = 7;
    std::vector<std::size_t> vSizes = {10000, 100000, 1000000};
    for (int i = 1; i + 1 < argc; i += 2) {
        if (std::strcmp(argv[i], "--rounds") == 0) numRounds = std::max(1, std::atoi(argv[i + 1]));
        if (std::strcmp(argv[i], "--points") == 0) vSizes = {std::strtoull(argv[i + 1], nullptr, 10)};
    }
    benchmarks::settleMemory(std::size_t(1) << 30);
    std::printf("| case | n | ours s | ns per n | ns per n log2 n | peer s | wall x | user x |\n"
                "|---|---|---|---|---|---|---|---|\n");
    bool bSame = true;
    for (const std::size_t n : vSizes) bSame = compareAll(n, numRounds) && bSame;
    return bSame ? 0 : 1;
}
