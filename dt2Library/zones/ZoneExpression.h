#ifndef LUMO25D_ZONES_ZONEEXPRESSION_H
#define LUMO25D_ZONES_ZONEEXPRESSION_H

#include "Triangle2.h"

#include <cstddef>
#include <unordered_map>
#include <vector>

namespace ORBI_LUMO25D
{

class Zone2;

/// Finds the triangles of a combination of zones, each once, in the order of their addresses.
///
/// Combinations may be nested to any depth, and a zone may occur in any number of places: it is asked once. What an operand
/// gave is kept only until the last combination that needs it is done.
class ZoneExpression
{
public:
    explicit ZoneExpression(const Zone2& root_) : root(root_) {}

    /// Appends them.
    void run(std::vector<Triangle2*>& vT);

private:
    struct Operand
    {
        std::size_t numUses = 0; ///< combinations that are still to come
        std::vector<Triangle2*> vT;
    };
    std::vector<const Zone2*> inOrder();
    void combine(const Zone2& zone, std::vector<Triangle2*>& vOut);

    const Zone2& root;
    std::unordered_map<const Zone2*, Operand> mOperands;
};

} // namespace ORBI_LUMO25D

#endif
