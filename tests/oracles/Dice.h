#ifndef LUMO25D_TESTS_ORACLES_DICE_H
#define LUMO25D_TESTS_ORACLES_DICE_H

#include "Point2.h"

#include <cstdint>
#include <random>
#include <utility>
#include <vector>

namespace oracles
{

/// Repeatable on every platform: the distributions of the standard library are not, its engines are.
class Dice
{
public:
    explicit Dice(std::uint64_t seed) : engine(seed) {}
    /// Uniform in [0, 1), all 53 bits in use.
    double real() { return static_cast<double>(engine() >> 11) * 0x1p-53; }
    int below(int n) { return static_cast<int>(real() * n); }

    template <class T>
    const T& of(const std::vector<T>& v)
    {
        return v[engine() % v.size()];
    }

    template <class T>
    void shuffle(std::vector<T>& v)
    {
        for (std::size_t i = v.size(); i > 1; --i) std::swap(v[i - 1], v[engine() % i]);
    }

    /// n points in a rectangle at the origin, z = 0, 1, 2...
    std::vector<ORBI_LUMO25D::Point2> points(int n, double width, double height)
    {
        std::vector<ORBI_LUMO25D::Point2> v;
        for (int i = 0; i < n; ++i) {
            const double x = width * real();
            v.emplace_back(x, height * real(), i);
        }
        return v;
    }

private:
    std::mt19937_64 engine;
};

} // namespace oracles

#endif
