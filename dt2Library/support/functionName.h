#ifndef LUMO25D_SUPPORT_FUNCTIONNAME_H
#define LUMO25D_SUPPORT_FUNCTIONNAME_H

#include <string>

namespace ORBI_LUMO25D
{

/// Cuts a compiler's signature (__PRETTY_FUNCTION__ of gcc or clang) down to the qualified name: "void
/// A::f(int) const" becomes "A::f". Template parameters of classes stay as written ("Pool<T>::get");
/// parameters of enclosing functions go ("A::f(int)::Local::g()" becomes "A::f::Local::g"). A text that is no
/// signature comes back unchanged.
std::string qualifiedFunctionName(const std::string& signature);

} // namespace ORBI_LUMO25D

#endif
