#ifndef LUMO25D_USERPREDICATET_H
#define LUMO25D_USERPREDICATET_H

#include "Lumo25DApi.h"

namespace ORBI_LUMO25D
{

class Triangle2;

/// What peelOffIf() asks of a triangle: derive from it. The object stays the caller's.
///
///     struct TooSteep : UserPredicateT
///     {
///         bool operator()(const Triangle2* pT) override { return pT->getNormalVector().z() < 0.5; }
///     };
class LUMO25D_API UserPredicateT
{
public:
    /// A predicate has no state but that of the class derived.
    UserPredicateT() = default;
    UserPredicateT(const UserPredicateT&) = default;
    UserPredicateT& operator=(const UserPredicateT&) = default;
    virtual ~UserPredicateT();

    /// True when the triangle is to be peeled off. The triangulation may not be changed here.
    virtual bool operator()(const Triangle2* pT) = 0;
};

} // namespace ORBI_LUMO25D

#endif
