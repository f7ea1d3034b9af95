#ifndef LUMO25D_LUMOEXCEPTION_H
#define LUMO25D_LUMOEXCEPTION_H

#include "Lumo25DApi.h"

#include <exception>

namespace ORBI_LUMO25D
{

/// Thrown when a condition of the library fails: a bug, or a wrong use that the library does not answer
/// neutrally.
///
/// The condition, its file, line and function have been printed to the standard output before, and the
/// condition stands in "LUMO_LOG.txt" in the current directory. The exception may be caught and the program
/// may go on, but the object that raised it may be left half-changed: destroy it, and don't use it otherwise.
struct LUMO25D_API LumoException : public std::exception
{
    /// Nothing to hold: the text is fixed.
    LumoException() = default;
    LumoException(const LumoException&) = default;
    LumoException& operator=(const LumoException&) = default;
    ~LumoException() override;

    /// A fixed text; the facts about the failure were printed before.
    const char* what() const noexcept override;
};

} // namespace ORBI_LUMO25D

#endif
