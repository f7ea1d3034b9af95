// Self-check and statistics.

#include "engine/Dt2.h"

#include "engine/MeshStatistics.h"
#include "engine/ValidityCheck.h"
#include "geometry/RoundToNearest.h"
#include "support/messages.h"

#include <iostream>

namespace ORBI_LUMO25D
{

bool Dt2::checkValidity(bool bCheckEmptyCircleProperty, const char* msg) const
{
    const RoundToNearest rounding;
    if (ValidityCheck(*this).run(bCheckEmptyCircleProperty)) return true;
    msgError("Dt2::checkValidity()", std::string("the triangulation is not valid: ") + (msg == nullptr ? "" : msg));
    return false;
}

void Dt2::statistics(const char* s) const
{
    MeshStatistics(*this).print(std::cout, s == nullptr ? "" : s);
}

} // namespace ORBI_LUMO25D
