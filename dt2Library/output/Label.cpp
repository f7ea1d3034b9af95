#include "Label.h"

namespace ORBI_LUMO25D
{

Label::Label(const Point2& p, const char* s, bool bWithMark_, int fontSize_)
    : text(s == nullptr ? "" : s), position(p), bWithMark(bWithMark_), fontSize(fontSize_)
{
}

} // namespace ORBI_LUMO25D
