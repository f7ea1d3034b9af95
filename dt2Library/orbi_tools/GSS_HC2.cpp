#include "orbi_tools/GSS_HC2.h"

#include "support/messages.h"

#include <cstdlib>

namespace ORBI_LUMO25D
{

GSS_HC2::GSS_HC2(double minX, double minY, double maxX, double maxY, std::uint32_t numBits)
    : curve(minX, minY, maxX, maxY, numBits)
{
    if (numBits > 32 || numBits % 2 != 0) {
        printLine("GSS_HC2, invalid parameters");
        std::exit(1);
    }
}

} // namespace ORBI_LUMO25D
