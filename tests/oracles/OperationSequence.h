#ifndef LUMO25D_TESTS_ORACLES_OPERATIONSEQUENCE_H
#define LUMO25D_TESTS_ORACLES_OPERATIONSEQUENCE_H

#include "Point2.h"

#include <functional>
#include <string>
#include <vector>

namespace oracles
{

/// One call of a triangulation, in terms of positions, so that it keeps its meaning when calls before it are taken away.
struct Operation
{
    enum Kind
    {
        INSERT,      ///< each point, one by one
        VECTOR,      ///< all points at once, with handles
        COORDINATES, ///< all points at once, as an array
        THREADED,    ///< all points at once, by four threads
        CONSTRAINT,  ///< each pair of points as a segment
        CONFORMING,  ///< the same, as chains of Delaunay edges
        ORIENTED,    ///< a closed line through the points, with directions, until it comes back along itself
        SPLIT,       ///< insertAndSplit() of the constraints that a point lies on
        REMOVE,      ///< the vertices at these positions, where there are any
        LOCATE,      ///< a query at each position
        HEIGHT,      ///< the same
        EXPORT,      ///< array export
        CLEAR,       ///< array export that empties the triangulation
        ZONE,        ///< a ring through the points, sorted around their middle, and the zone inside of it
        BOOLEAN,     ///< the four combinations of the last two zones
        BOUNDED,     ///< a bounded zone of the last zone
        CUT,         ///< each pair of points as a knife
        KNIFE,       ///< the same, with constraints along the cuts
        DRAPE,       ///< each pair of points as a segment laid on the surface
        REFINE,      ///< the last zone gets a quality mesh
        SAVE         ///< saved with its zones, loaded into another triangulation, and saved again
    };
    Kind kind = INSERT;
    std::vector<ORBI_LUMO25D::Point2> vPoints;
};

constexpr int numOperationKinds = Operation::SAVE + 1;
/// As they stand in files.
extern const char* const operationNames[numOperationKinds];

using OperationSequence = std::vector<Operation>;

/// Carries the sequence out on a new triangulation beside a naive model (positions and the height of the first point at
/// each). After every operation (and every removal from a small triangulation) the triangulation is checked, exactly,
/// and compared with the model, which takes over the vertices that constraints, knives and refinement bring; every zone is
/// compared with its ring. Returns an empty text when all is well, else what went wrong at which operation. numCPU is
/// left at 1 but in THREADED. Files are written into the working directory.
std::string runSequence(const OperationSequence& sequence);

/// Takes operations and points away as long as the sequence still fails: in the end, no single one can be missed.
/// (Zeller and Hildebrandt, "Simplifying and isolating failure-inducing input", 2002.)
OperationSequence shrink(OperationSequence sequence, const std::function<bool(const OperationSequence&)>& fails);

/// The corpus form, with a comment "#: name count" before the points of each operation: still readable as points alone.
bool writeSequenceFile(const std::string& path, const OperationSequence& sequence);
/// A file that breaks the form is an std::runtime_error.
OperationSequence readSequenceFile(const std::string& path);

} // namespace oracles

#endif
