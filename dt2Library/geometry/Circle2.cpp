#include "Circle2.h"

#include <ostream>

namespace ORBI_LUMO25D
{

std::ostream& operator<<(std::ostream& stream, const Circle2& circle)
{
    return stream << "Circle2: " << circle.getCenter() << ", r=" << circle.getRadius();
}

} // namespace ORBI_LUMO25D
