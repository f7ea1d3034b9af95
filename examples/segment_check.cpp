// Are these segments fit to be constraints? Finds those that cross or overlap, before a triangulation sees them.
//
//     segment_check SEGMENTS.bin [PICTURE.ps]
//
// reads a binary segment file; without arguments a small plan of a street with two mistakes in it is checked.

#include "SegmentChecker.h"
#include "freeFunctions.h"

#include <cstdio>
#include <vector>

using namespace ORBI_LUMO25D;

namespace
{

/// Two kerbs, a wall that runs across one of them, and a stretch of the other that was drawn twice.
std::vector<Segment2> smallPlan()
{
    return {{{0, 0, 101}, {40, 0, 102}},   {{40, 0, 102}, {80, 5, 103}}, // the lower kerb
            {{0, 10, 101}, {40, 10, 102}}, {{40, 10, 102}, {80, 15, 103}}, {{20, -5, 104}, {20, 5, 104}}, // the wall
            {{30, 10, 101}, {35, 10, 101}}};
}

} // namespace

int main(int argc, char** argv)
{
    std::vector<Segment2> vSegments;
    if (argc < 2) {
        vSegments = smallPlan();
    } else if (!readSegmentsBIN(argv[1], vSegments)) {
        std::printf("usage: segment_check SEGMENTS.bin [PICTURE.ps]\n");
        return 2;
    }
    // The checker borrows the segments: they have to stay where they are.
    std::vector<Segment2*> vPointers;
    for (Segment2& s : vSegments) vPointers.push_back(&s);
    const SegmentChecker checker(vPointers);

    // A chain of segments shares end points; that is legal.
    const bool bAlsoEndPointIntersections = false;
    std::vector<Segment2*> vIllegal;
    checker.getIllegalSegments(bAlsoEndPointIntersections, vIllegal);
    std::printf("%zu of %zu segments are illegal\n", vIllegal.size(), checker.getNumberOfSegments());

    for (const Segment2* pSegment : vIllegal) {
        std::vector<std::pair<Segment2*, SegmentIntersectionType>> vPartners;
        checker.getIntersectors(pSegment, bAlsoEndPointIntersections, vPartners);
        for (const auto& partner : vPartners) {
            const auto i = checker.getIndex(pSegment), j = checker.getIndex(partner.first);
            if (j < i) continue; // each pair once
            if (partner.second == SIT_POINT) {
                // One place, and a height on each of the two.
                Point2 onFirst, onSecond;
                checker.getIntersectionPoint(partner.second, *pSegment, *partner.first, onFirst, onSecond);
                std::printf("%td and %td meet at (%.2f, %.2f), at heights %.2f and %.2f\n", i, j, onFirst.x(),
                            onFirst.y(), onFirst.z(), onSecond.z());
            } else {
                Segment2 onFirst, onSecond;
                checker.getIntersectionSegment(*pSegment, *partner.first, onFirst, onSecond);
                std::printf("%td and %td overlap from (%.2f, %.2f) to (%.2f, %.2f)\n", i, j, onFirst.src.x(),
                            onFirst.src.y(), onFirst.trg.x(), onFirst.trg.y());
            }
        }
    }
    if (argc > 2) checker.showIllegalSegments(bAlsoEndPointIntersections, argv[2]);
    return vIllegal.empty() ? 0 : 1;
}
