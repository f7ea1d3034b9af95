#ifndef LUMO25D_BENCHMARKS_INPUTS_H
#define LUMO25D_BENCHMARKS_INPUTS_H

#include "Point2.h"

#include <cstddef>
#include <string>
#include <vector>

namespace benchmarks
{

using Points = std::vector<ORBI_LUMO25D::Point2>;

// Generated inputs: n points (rounded to a square for the grids), the same on every run.

/// Uniform in the unit square.
Points uniform(std::size_t n);
/// A thousand Gaussian clusters of standard deviation 0.002.
Points clusters(std::size_t n);
/// A scanner's flight: parallel lines flown back and forth, each point off its place by a tenth of the distance.
Points scanLines(std::size_t n);
/// An integer grid: every cell is cocircular. Row by row, or shuffled.
Points grid(std::size_t n, bool bShuffled);
/// On the unit circle, but for the rounding of the coordinates; in random order.
Points circle(std::size_t n);

/// Text file of x, y, z. Ends the program with a message when there is nothing to read.
Points fromFile(const std::string& path);

/// A random permutation of 0 to n - 1.
std::vector<std::size_t> permutation(std::size_t n, unsigned seed);

} // namespace benchmarks

#endif
