#ifndef LUMO25D_GEOMETRY_ROUNDTONEAREST_H
#define LUMO25D_GEOMETRY_ROUNDTONEAREST_H

#include <cfenv>

namespace ORBI_LUMO25D
{

/// Rounds to nearest in its scope; the mode that the thread had comes back at the end, also when something throws. The
/// error bounds of the inlined filters hold for this mode only.
class RoundToNearest
{
public:
    RoundToNearest() : mode(std::fegetround())
    {
        if (mode != FE_TONEAREST) std::fesetround(FE_TONEAREST);
    }
    ~RoundToNearest()
    {
        if (mode != FE_TONEAREST) std::fesetround(mode);
    }
    RoundToNearest(const RoundToNearest&) = delete;
    RoundToNearest& operator=(const RoundToNearest&) = delete;

private:
    int mode;
};

} // namespace ORBI_LUMO25D

#endif
