#ifndef LUMO25D_CONSTRAINTS_RINGSORT_H
#define LUMO25D_CONSTRAINTS_RINGSORT_H

#include "ConstraintSegment2.h"

#include <cstddef>
#include <vector>

namespace ORBI_LUMO25D
{

/// Brings segments that form exactly one simple ring into ring order.
class RingSort
{
public:
    explicit RingSort(const std::vector<ConstraintSegment2*>& vSegments_) : vSegments(vSegments_) {}

    /// Walks the ring counterclockwise from its leftmost vertex (of several the lowest) and fills vRing with its segments
    /// and vReverse with whether each is walked from getTrg() to getSrc(). False, with both empty, when there are fewer
    /// than three segments, a vertex has not exactly two, there are several rings, or the two segments at the leftmost
    /// vertex lie on one line. Whether the ring crosses itself isn't looked at. Linear.
    bool run(std::vector<ConstraintSegment2*>& vRing, std::vector<bool>& vReverse);

private:
    static constexpr std::size_t none = static_cast<std::size_t>(-1);

    /// The positions of the two segments at a vertex.
    struct Joint
    {
        const Point2* pVtx = nullptr;
        std::size_t aPositions[2] = {none, none};
    };

    Joint& jointAt(const Point2* pVtx);
    bool makeJoints();
    const Point2* startVertex() const;
    static bool hasEnd(const ConstraintSegment2* pCSeg, const Point2* pVtx);
    static const Point2* otherEnd(const ConstraintSegment2* pCSeg, const Point2* pVtx);
    std::size_t firstSegment(const Point2* pStart) const;
    std::size_t nextSegment(std::size_t position, const Point2* pConnector);

    const std::vector<ConstraintSegment2*>& vSegments;
    std::vector<Joint> vJoints; ///< an open hash over the vertices, at most half full
};

} // namespace ORBI_LUMO25D

#endif
