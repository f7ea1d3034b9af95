#include "zones/Histogram.h"

#include <algorithm>
#include <ostream>

namespace ORBI_LUMO25D
{

void Histogram::addValue(double value)
{
    ++count;
    sum += value;
    smallest = std::min(smallest, value);
    largest = std::max(largest, value);
    const auto it = mLimitToCount.lower_bound(value);
    ++(it == mLimitToCount.end() ? mLimitToCount.rbegin()->second : it->second);
}

std::ostream& operator<<(std::ostream& stream, const Histogram& histogram)
{
    if (histogram.count == 0) return stream << "Empty histogram [ " << histogram.name << " ]\n";
    stream << histogram.name << ": " << histogram.count
           << " (avg=" << histogram.sum / static_cast<double>(histogram.count) << " , min=" << histogram.smallest
           << ", max=" << histogram.largest << "):\n";
    double lower = std::min(0.0, histogram.smallest);
    for (const auto& [limit, count] : histogram.mLimitToCount) {
        stream << lower << " - ";
        if (limit == std::numeric_limits<double>::max()) {
            stream << "  max: " << count << '\n';
        } else {
            stream << limit << ": " << count << '\n';
        }
        lower = limit;
    }
    return stream;
}

} // namespace ORBI_LUMO25D
