#ifndef LUMO25D_CORE_SIMPLEPOOL_H
#define LUMO25D_CORE_SIMPLEPOOL_H

#include "orbi_tools/OrbiPool.h"

namespace ORBI_LUMO25D
{

/// The engine's pool: the memory of vertices, triangles and refinement candidates. See OrbiPool; only the text at the
/// end of memory differs.
template <class T>
class SimplePool : public OrbiPool<T>
{
public:
    SimplePool() : OrbiPool<T>("SimplePool::alloc(..), ERROR: Out of memory") {}
};

} // namespace ORBI_LUMO25D

#endif
