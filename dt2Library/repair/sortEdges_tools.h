#ifndef LUMO25D_REPAIR_SORTEDGES_TOOLS_H
#define LUMO25D_REPAIR_SORTEDGES_TOOLS_H

#include "Edge2.h"

#include <vector>

namespace ORBI_LUMO25D
{

/// What a set of directed edges forms.
enum class RingState
{
    Ring,      ///< one closed chain of at least three edges that visits no vertex twice
    NotClosed, ///< a vertex where not as many edges end as begin, or fewer than three edges
    NotSimple  ///< closed, but with a vertex that is visited twice, or more than one ring
};

/// Sorts edges in place into a ring that begins with the first one, so that each edge's target is the next one's source.
/// They stay as they are when they don't form a ring. O(n) expected.
RingState sortEdgesToRing(std::vector<Edge2>& vEdges);

} // namespace ORBI_LUMO25D

#endif
