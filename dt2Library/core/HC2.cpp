#include "core/HC2.h"

#include "support/messages.h"

namespace ORBI_LUMO25D
{

namespace
{

bool isValid(std::uint32_t numBits)
{
    return numBits <= 32 && numBits % 2 == 0;
}

} // namespace

HC2::HC2(double minX, double minY, double maxX, double maxY, std::uint32_t numBits_)
    : numBits(numBits_), curve(minX, minY, maxX, maxY, numBits_)
{
    if (!isValid(numBits)) {
        msgError("HC2::HC2(..)", "Can't determine Hermite factors");
        LUMO_CHECK(false, "false");
    }
}

void HC2::setRange(double minX, double minY, double maxX, double maxY, std::uint32_t numBits_)
{
    if (!isValid(numBits)) {
        msgError("HC2::HC2(..)", "invalid bitlength");
        LUMO_CHECK(false, "false");
    }
    numBits = numBits_;
    curve = HilbertCurve2(minX, minY, maxX, maxY, numBits_);
}

} // namespace ORBI_LUMO25D
