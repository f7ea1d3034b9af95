#include "Edge2.h"

namespace ORBI_LUMO25D
{

void Edge2::getTriangles(Triangle2*& pT0, Triangle2*& pT1, int& idx0, int& idx1) const
{
    pT0 = pT;
    idx0 = oppIdx;
    pT1 = pT->getOppositeTriangle(oppIdx);
    idx1 = pT1 == nullptr ? -1 : pT1->getIntraTriangleIndex(pT);
}

} // namespace ORBI_LUMO25D
