#include "MeshGenParams.h"

#include "Zone2.h"

#include <iostream>
#include <memory>

namespace ORBI_LUMO25D
{

MeshGenParams::MeshGenParams(Zone2* pZone_) : pZone(pZone_)
{
    if (pZone != nullptr && pZone->getZoneLocation() != ZL_INSIDE && pZone->getZoneLocation() != ZL_BOUNDED) {
        std::cout
            << "\n\n\nMeshGenParams::MeshGenParams(..), ERROR: \n\tbehavior since Lumo 1.39: The zoneLocation must "
               "be ZL_INSIDE or ZL_BOUNDED. Please convert the zone using pZone->convertToBoundedZone(..)\n\n";
        return;
    }
    gridVector = Vector2(1.0, 0.0, 0.0);
}

namespace
{

MeshGenParams::LockedConstraints* copyOf(const MeshGenParams::LockedConstraints* pOther)
{
    return pOther == nullptr ? nullptr : new MeshGenParams::LockedConstraints(*pOther);
}

} // namespace

MeshGenParams::MeshGenParams(const MeshGenParams& other)
{
    *this = other;
}

MeshGenParams& MeshGenParams::operator=(const MeshGenParams& other)
{
    if (this == &other) return *this;
    std::unique_ptr<LockedConstraints> pCopy(copyOf(other.pLockedConstraints));
    delete pLockedConstraints;
    pLockedConstraints = pCopy.release();
    pGuideTriangulation = other.pGuideTriangulation;
    maxGuideHeightError = other.maxGuideHeightError;
    pZone = other.pZone;
    minAngleDegree = other.minAngleDegree;
    minEdgeLength = other.minEdgeLength;
    maxEdgeLength = other.maxEdgeLength;
    maxTriangleArea = other.maxTriangleArea;
    bAllowConstraintSplitting = other.bAllowConstraintSplitting;
    growthFactor = other.growthFactor;
    growthFactorMinArea = other.growthFactorMinArea;
    gridVector = other.gridVector;
    gridLength = other.gridLength;
    capAspectLimit = other.capAspectLimit;
    bKeepExistingSteinerPoints = other.bKeepExistingSteinerPoints;
    verbosity = other.verbosity;
    return *this;
}

MeshGenParams::~MeshGenParams()
{
    delete pLockedConstraints;
}

double MeshGenParams::getMaxTriangleArea(Triangle2* /*pT*/)
{
    return maxTriangleArea;
}

double MeshGenParams::getMaxEdgeLength(Triangle2* /*pT*/)
{
    return maxEdgeLength;
}

void MeshGenParams::addLockedConstraint(ConstraintSegment2* pCSeg)
{
    if (pLockedConstraints == nullptr) pLockedConstraints = new LockedConstraints();
    pLockedConstraints->insert(pCSeg);
}

} // namespace ORBI_LUMO25D
