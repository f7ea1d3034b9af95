#include "inputs.h"

#include "freeFunctions.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <iostream>
#include <numeric>
#include <random>

namespace benchmarks
{

namespace
{

std::size_t squareSide(std::size_t n)
{
    return static_cast<std::size_t>(std::lround(std::sqrt(static_cast<double>(n))));
}

} // namespace

Points uniform(std::size_t n)
{
    std::mt19937_64 random(1);
    std::uniform_real_distribution<double> coordinate(0.0, 1.0);
    Points vPoints;
    vPoints.reserve(n);
    for (std::size_t i = 0; i < n; ++i) {
        const double x = coordinate(random);
        vPoints.emplace_back(x, coordinate(random), 0.0);
    }
    return vPoints;
}

Points clusters(std::size_t n)
{
    const Points vCentres = uniform(1000);
    std::mt19937_64 random(2);
    std::normal_distribution<double> offset(0.0, 0.002);
    Points vPoints;
    vPoints.reserve(n);
    for (std::size_t i = 0; i < n; ++i) {
        const ORBI_LUMO25D::Point2& centre = vCentres[random() % vCentres.size()];
        const double dx = offset(random);
        vPoints.emplace_back(centre.x() + dx, centre.y() + offset(random), 0.0);
    }
    return vPoints;
}

Points scanLines(std::size_t n)
{
    const std::size_t side = squareSide(n);
    std::mt19937_64 random(3);
    std::normal_distribution<double> jitter(0.0, 0.1);
    Points vPoints;
    vPoints.reserve(side * side);
    for (std::size_t line = 0; line < side; ++line) {
        for (std::size_t i = 0; i < side; ++i) {
            const double along = static_cast<double>(line % 2 == 0 ? i : side - 1 - i);
            const double dx = jitter(random);
            vPoints.emplace_back(along + dx, static_cast<double>(line) + jitter(random), 0.0);
        }
    }
    return vPoints;
}

Points grid(std::size_t n, bool bShuffled)
{
    const std::size_t side = squareSide(n);
    Points vPoints;
    vPoints.reserve(side * side);
    for (std::size_t i = 0; i < side * side; ++i) {
        vPoints.emplace_back(static_cast<double>(i % side), static_cast<double>(i / side), 0.0);
    }
    if (bShuffled) std::shuffle(vPoints.begin(), vPoints.end(), std::mt19937_64(4));
    return vPoints;
}

Points circle(std::size_t n)
{
    std::mt19937_64 random(5);
    std::uniform_real_distribution<double> angle(0.0, 2.0 * 3.14159265358979323846);
    Points vPoints;
    vPoints.reserve(n);
    for (std::size_t i = 0; i < n; ++i) {
        const double a = angle(random);
        vPoints.emplace_back(std::cos(a), std::sin(a), 0.0);
    }
    return vPoints;
}

Points fromFile(const std::string& path)
{
    Points vPoints;
    if (!ORBI_LUMO25D::readXYZ(path.c_str(), vPoints) || vPoints.empty()) {
        std::cerr << path << " has no points\n";
        std::exit(1);
    }
    return vPoints;
}

std::vector<std::size_t> permutation(std::size_t n, unsigned seed)
{
    std::vector<std::size_t> vNumbers(n);
    std::iota(vNumbers.begin(), vNumbers.end(), std::size_t(0));
    std::shuffle(vNumbers.begin(), vNumbers.end(), std::mt19937_64(seed));
    return vNumbers;
}

} // namespace benchmarks
