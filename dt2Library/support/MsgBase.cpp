#include "MsgBase.h"

namespace ORBI_LUMO25D
{

// The key function: one virtual table, in the library.
MsgBase::~MsgBase() = default;

} // namespace ORBI_LUMO25D
