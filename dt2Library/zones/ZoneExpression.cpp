#include "zones/ZoneExpression.h"

#include "support/check.h"
#include "support/messages.h"

#include "Zone2.h"

#include <algorithm>
#include <functional>
#include <iterator>

namespace ORBI_LUMO25D
{

/// All zones of the expression, operands before what combines them. Without recursion: the depth is the caller's choice.
std::vector<const Zone2*> ZoneExpression::inOrder()
{
    enum State
    {
        OPEN, ///< its operands are on the way
        CLOSED
    };
    std::unordered_map<const Zone2*, State> mState;
    std::vector<const Zone2*> vOrder;
    std::vector<const Zone2*> vStack{&root};
    while (!vStack.empty()) {
        const Zone2* const pZone = vStack.back();
        const auto [it, bNew] = mState.emplace(pZone, OPEN);
        if (!bNew) {
            vStack.pop_back();
            if (it->second == OPEN) vOrder.push_back(pZone);
            it->second = CLOSED;
            continue;
        }
        if (!pZone->isResult()) continue;
        LUMO_CHECK(pZone->vInputZones.size() == 2, "vInputZones.size()==2");
        for (const Zone2* pInput : pZone->vInputZones) {
            ++mOperands[pInput].numUses;
            const auto itInput = mState.find(pInput);
            LUMO_CHECK(itInput == mState.end() || itInput->second == CLOSED, "no zone is its own operand");
            vStack.push_back(pInput);
        }
    }
    return vOrder;
}

void ZoneExpression::run(std::vector<Triangle2*>& vT)
{
    for (const Zone2* pZone : inOrder()) {
        if (pZone == &root) {
            combine(*pZone, vT);
            return;
        }
        std::vector<Triangle2*> vOut;
        if (pZone->isResult()) {
            combine(*pZone, vOut);
        } else {
            pZone->findTriangles(vOut);
            // Several start points may have given triangles twice, and in an order of their own.
            if (!std::is_sorted(vOut.begin(), vOut.end(), std::less<Triangle2*>())) {
                std::sort(vOut.begin(), vOut.end(), std::less<Triangle2*>());
            }
            vOut.erase(std::unique(vOut.begin(), vOut.end()), vOut.end());
        }
        mOperands[pZone].vT = std::move(vOut);
    }
}

void ZoneExpression::combine(const Zone2& zone, std::vector<Triangle2*>& vOut)
{
    Operand& operand0 = mOperands[zone.vInputZones[0]];
    Operand& operand1 = mOperands[zone.vInputZones[1]];
    const std::vector<Triangle2*>& v0 = operand0.vT;
    const std::vector<Triangle2*>& v1 = operand1.vT;
    const auto out = std::back_inserter(vOut);
    const std::less<Triangle2*> less;
    switch (zone.getZoneLocation()) {
    case ZL_RESULT_UNION:
        std::set_union(v0.begin(), v0.end(), v1.begin(), v1.end(), out, less);
        break;
    case ZL_RESULT_INTERSECTION:
        std::set_intersection(v0.begin(), v0.end(), v1.begin(), v1.end(), out, less);
        break;
    case ZL_RESULT_DIFFERENCE:
        std::set_difference(v0.begin(), v0.end(), v1.begin(), v1.end(), out, less);
        break;
    case ZL_RESULT_SYM_DIFFERENCE:
        std::set_symmetric_difference(v0.begin(), v0.end(), v1.begin(), v1.end(), out, less);
        break;
    default:
        msgError("Zone2::getTriangles_RESULT", "Unexpected value");
        LUMO_CHECK(false, "false");
    }
    for (Operand* pOperand : {&operand0, &operand1}) {
        if (--pOperand->numUses == 0) std::vector<Triangle2*>().swap(pOperand->vT);
    }
}

} // namespace ORBI_LUMO25D
