#ifndef LUMO25D_OUTPUT_SHAREDCOUNTER_H
#define LUMO25D_OUTPUT_SHAREDCOUNTER_H

namespace ORBI_LUMO25D
{

/// Replaces a value by next(value) and returns what it became. Several threads may do so at a time: drawings count their
/// colours in one variable of the whole process, which callers may read and set.
template <class T, class Next>
T countOn(T& value, const Next& next)
{
    T before;
    __atomic_load(&value, &before, __ATOMIC_RELAXED);
    T after = next(before);
    while (!__atomic_compare_exchange(&value, &before, &after, true, __ATOMIC_RELAXED, __ATOMIC_RELAXED)) {
        after = next(before);
    }
    return after;
}

} // namespace ORBI_LUMO25D

#endif
