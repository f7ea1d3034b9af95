#include "LumoException.h"

namespace ORBI_LUMO25D
{

// Out of line, so that the type's identity lives in the library and a catch in the caller's program finds it.
LumoException::~LumoException() = default;

const char* LumoException::what() const noexcept
{
    return "\n  LUMO EXCEPTION due to a bug _or_ wrong usage of Lumo. If you think it is a \n  bug then "
           "please report "
           "this incident and it will be fixed quickly: please contact the maintainers of Lumo 2.5D";
}

} // namespace ORBI_LUMO25D
