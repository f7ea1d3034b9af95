#include "constraints/SegmentTable.h"

#include "support/check.h"

#include <cstring>
#include <utility>

namespace ORBI_LUMO25D
{

void SegmentTable::makeEmpty(std::size_t numNew)
{
    BlockMemory newMemory(numNew * sizeof(Slot));
    LUMO_CHECK(newMemory.data() != nullptr, "out of memory for constraint segments");
    std::memset(newMemory.data(), 0, numNew * sizeof(Slot));
    memory = std::move(newMemory);
    pSlots = reinterpret_cast<Slot*>(memory.data());
    numSlots = numNew;
    numTaken = 0;
}

} // namespace ORBI_LUMO25D
