#ifndef LUMO25D_GEOMETRY_RATIONAL_H
#define LUMO25D_GEOMETRY_RATIONAL_H

#include <gmp.h>

namespace ORBI_LUMO25D
{

/// An exact number, made of finite doubles, with just the operators that are needed here. For what is asked seldom: every
/// one takes memory; the predicates keep theirs.
class Rational
{
public:
    explicit Rational(double v)
    {
        mpq_init(q);
        mpq_set_d(q, v);
    }
    Rational(const Rational& other)
    {
        mpq_init(q);
        mpq_set(q, other.q);
    }
    Rational& operator=(const Rational&) = delete;
    ~Rational() { mpq_clear(q); }

    Rational& operator-=(const Rational& other)
    {
        mpq_sub(q, q, other.q);
        return *this;
    }
    Rational& operator+=(const Rational& other)
    {
        mpq_add(q, q, other.q);
        return *this;
    }
    Rational& operator*=(const Rational& other)
    {
        mpq_mul(q, q, other.q);
        return *this;
    }
    int compare(const Rational& other) const { return mpq_cmp(q, other.q); }
    int sign() const { return mpq_sgn(q); }

private:
    mpq_t q;
};

/// a - b
inline Rational difference(double a, double b)
{
    Rational r(a);
    r -= Rational(b);
    return r;
}

inline Rational product(Rational a, const Rational& b)
{
    a *= b;
    return a;
}

} // namespace ORBI_LUMO25D

#endif
