#ifndef LUMO25D_CORE_IDXVTXACT_H
#define LUMO25D_CORE_IDXVTXACT_H

#include "support/check.h"

#include <cstdint>

namespace ORBI_LUMO25D
{

class Point2;

/// A vertex in the vault's list: its place on the curve, and whether it is part of the triangulation.
///
/// Stored by value: a sort or a search along the curve reads a contiguous array and never touches the vertices.
struct IdxVtxAct
{
    std::uint32_t idx = 0;  ///< curve index of the vertex
    bool bActive = true;    ///< false once the vertex was removed or found to be a duplicate
    Point2* pVtx = nullptr; ///< set in every item of a vault

    IdxVtxAct() = default;
    IdxVtxAct(std::uint32_t idx_, bool bActive_, Point2* pVtx_) : idx(idx_), bActive(bActive_), pVtx(pVtx_) {}

    /// Active items by index, then the inactive ones, which have no order among themselves. Items without a vertex are a
    /// failed condition.
    bool operator<(const IdxVtxAct& other) const
    {
        LUMO_CHECK(pVtx != nullptr, "pVtx!=NULL");
        LUMO_CHECK(other.pVtx != nullptr, "other.pVtx!=NULL");
        return bActive && (!other.bActive || idx < other.idx);
    }
};

static_assert(sizeof(IdxVtxAct) <= 8 + sizeof(Point2*), "two items in 32 bytes");

} // namespace ORBI_LUMO25D

#endif
