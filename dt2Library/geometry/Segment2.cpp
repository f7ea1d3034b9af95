#include "Segment2.h"

#include <ostream>

namespace ORBI_LUMO25D
{

std::ostream& operator<<(std::ostream& stream, const Segment2& segment)
{
    return stream << "Segment2 (" << static_cast<const void*>(&segment) << "): " << segment.src << "," << segment.trg;
}

} // namespace ORBI_LUMO25D
