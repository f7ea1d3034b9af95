// New zones of old ones: Boolean combinations and erosion.

#include "engine/Dt2.h"
#include "support/messages.h"
#include "zones/PoolMarks.h"
#include "zones/triangleSets.h"

#include "UserPredicateT.h"
#include "Zone2.h"
#include "freeFunctions.h"

#include <iostream>

namespace ORBI_LUMO25D
{

// ---- Boolean combinations -------------------------------------------------------------------------------------------

Zone2* Zone2::combine(Zone2* pZone0, Zone2* pZone1, ZoneLocation location, const char* function)
{
    Dt2* const pDt = pZone0->getDelaunayTriangulation();
    if (pDt != pZone1->getDelaunayTriangulation()) {
        msgError(function, "The zones must belong to the same triangulation! Returning NULL");
        return nullptr;
    }
    Zone2* const pResult = pDt->createZone(nullptr, location);
    if (pResult != nullptr) pResult->vInputZones = {pZone0, pZone1};
    return pResult;
}

Zone2* zoneUnion(Zone2* pZone0, Zone2* pZone1)
{
    return Zone2::combine(pZone0, pZone1, ZL_RESULT_UNION, "Zone2::zoneUnion(...)");
}

Zone2* zoneIntersection(Zone2* pZone0, Zone2* pZone1)
{
    return Zone2::combine(pZone0, pZone1, ZL_RESULT_INTERSECTION, "zoneUnion(...)");
}

Zone2* zoneDifference(Zone2* pZone0, Zone2* pZone1)
{
    return Zone2::combine(pZone0, pZone1, ZL_RESULT_DIFFERENCE, "zoneUnion(...)");
}

Zone2* zoneSymmetricDifference(Zone2* pZone0, Zone2* pZone1)
{
    return Zone2::combine(pZone0, pZone1, ZL_RESULT_SYM_DIFFERENCE, "zoneUnion(...)");
}

// ---- erosion --------------------------------------------------------------------------------------------------------

UserPredicateT::~UserPredicateT() = default;

namespace
{

constexpr std::uint8_t kept = 1;

void printMeasures(const char* title, const std::vector<Triangle2*>& vT)
{
    std::cout << title << " numT=" << vT.size() << " area2D=" << sumArea2D(vT) << " area25D=" << sumArea25D(vT) << '\n';
}

bool isAtBorder(const Triangle2* pT, const PoolMarks<Triangle2>& marks)
{
    for (int i = 0; i < 3; ++i) {
        const Triangle2* const pN = pT->neighbor(i);
        if (pN == nullptr || marks[pN] != kept) return true;
    }
    return false;
}

/// Takes triangles at the border away as long as the predicate holds for one.
void peel(const Dt2& dt2, UserPredicateT& predicate, std::vector<Triangle2*>& vT)
{
    PoolMarks<Triangle2> marks(dt2.poolTriangles, vT, kept);
    std::vector<Triangle2*> vWork = vT;
    while (!vWork.empty()) {
        const Triangle2* const pT = vWork.back();
        vWork.pop_back();
        if (marks[pT] != kept || !isAtBorder(pT, marks) || !predicate(pT)) continue;
        marks[pT] = 0;
        for (int i = 0; i < 3; ++i) {
            Triangle2* const pN = pT->neighbor(i);
            if (pN != nullptr && marks[pN] == kept) vWork.push_back(pN);
        }
    }
    vT.erase(std::remove_if(vT.begin(), vT.end(), [&marks](const Triangle2* pT) { return marks[pT] != kept; }),
             vT.end());
}

} // namespace

Zone2* peelOffIf(Zone2* pZone, UserPredicateT* pPredicate, bool bVerbose)
{
    if (pZone == nullptr) {
        msgWarning("peelOffIf()", "Input zone is NULL, returning NULL");
        return nullptr;
    }
    if (pPredicate == nullptr) {
        msgWarning("peelOffIf()", "The predicate is NULL, returning NULL");
        return nullptr;
    }
    std::vector<Triangle2*> vT;
    pZone->getTriangles(vT);
    if (bVerbose) printMeasures("\nZone2::peelOffIf(), original Zone:", vT);
    if (vT.empty()) {
        msgWarning("peelOffIf()", "Input zone is empty, returning NULL");
        return nullptr;
    }
    Dt2* const pDt = pZone->getDelaunayTriangulation();
    peel(*pDt, *pPredicate, vT);
    if (vT.empty()) return nullptr;
    Zone2* const pResult = pDt->createZone(vT);
    if (bVerbose && pResult != nullptr) {
        std::vector<Triangle2*> vResult;
        pResult->getTriangles(vResult);
        printMeasures("Output Zone:", vResult);
    }
    return pResult;
}

} // namespace ORBI_LUMO25D
