#ifndef LUMO25D_SUPPORT_CHECK_H
#define LUMO25D_SUPPORT_CHECK_H

namespace ORBI_LUMO25D
{

/// Reports a failed condition and throws LumoException: prints condition, file, line and function, and writes
/// the condition to "LUMO_LOG.txt". pPrettyFunction is the compiler's full signature; it is cut down to the
/// qualified name.
[[noreturn]] void failCondition(const char* condition, const char* pPrettyFunction, const char* file, int line);

} // namespace ORBI_LUMO25D

/// Checks an invariant. The condition's text is an argument of its own, so that formatting never changes it.
#define LUMO_CHECK(condition, text)                                                                                    \
    do {                                                                                                               \
        if (__builtin_expect(!(condition), 0)) {                                                                       \
            ::ORBI_LUMO25D::failCondition(text, __PRETTY_FUNCTION__, __FILE__, __LINE__);                              \
        }                                                                                                              \
    } while (false)

#endif
