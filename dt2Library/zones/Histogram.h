#ifndef LUMO25D_ZONES_HISTOGRAM_H
#define LUMO25D_ZONES_HISTOGRAM_H

#include <cstddef>
#include <iosfwd>
#include <limits>
#include <map>
#include <string>

namespace ORBI_LUMO25D
{

/// Counts values in bins. A bin takes the values from above the limit before it up to its own, its own included; the last
/// one is open.
class Histogram
{
public:
    explicit Histogram(std::string name_) : name(std::move(name_)) { addLimit(std::numeric_limits<double>::max()); }

    /// Adds an empty bin with that upper limit: before the first value.
    void addLimit(double limit) { mLimitToCount.emplace(limit, 0); }
    void addValue(double value);

private:
    friend std::ostream& operator<<(std::ostream& stream, const Histogram& histogram);

    std::string name;
    double smallest = std::numeric_limits<double>::max();
    double largest = std::numeric_limits<double>::lowest();
    double sum = 0.0;
    std::size_t count = 0;
    std::map<double, std::size_t> mLimitToCount;
};

/// A line of name, count, mean and extremes, and a line for each bin.
std::ostream& operator<<(std::ostream& stream, const Histogram& histogram);

} // namespace ORBI_LUMO25D

#endif
