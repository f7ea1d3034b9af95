// Point and segment files, as text and binary: whatever the bytes are, nothing but points, no more than the file can hold,
// and what was read comes back when it is written and read again.

#include "fuzz.h"

#include "freeFunctions.h"

#include <algorithm>
#include <cstring>
#include <vector>

using namespace ORBI_LUMO25D;

namespace
{

bool same(double a, double b)
{
    return std::memcmp(&a, &b, sizeof a) == 0;
}
bool same(const Point2& a, const Point2& b)
{
    return same(a.x(), b.x()) && same(a.y(), b.y()) && same(a.z(), b.z());
}
bool same(const Segment2& a, const Segment2& b)
{
    return same(a.src, b.src) && same(a.trg, b.trg);
}

template <class T, class Read, class Write>
void roundTrip(const char* filename, std::size_t maxRecords, const Read& read, const Write& write)
{
    std::vector<T> v, vAgain;
    if (!read(filename, v)) {
        fuzz::require(v.empty(), "a refused file gives nothing");
        return;
    }
    fuzz::require(v.size() <= maxRecords, "no more than the file holds");
    fuzz::require(write(filename, v) && read(filename, vAgain), "what was read can be written");
    fuzz::require(v.size() == vAgain.size() &&
                      std::equal(v.begin(), v.end(), vAgain.begin(), [](const T& a, const T& b) { return same(a, b); }),
                  "it comes back the same");
}

using Points = std::vector<Point2>;
using Segments = std::vector<Segment2>;

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t size)
{
    static const fuzz::InputFile file(".dat");
    const auto writePoints = [](const char* s, const Points& v) { return writePointsBIN(s, v); };
    const auto writeText = [](const char* s, const Points& v) { return writePointsASCII(s, v); };
    roundTrip<Point2>(file.write(pData, size), size / 16 + 1, readPointsBIN, writePoints);
    roundTrip<Segment2>(file.write(pData, size), size / 32 + 1, readSegmentsBIN, writeSegmentsBIN);
    Points v;
    fuzz::require(readXY(file.write(pData, size), v) && v.size() <= size / 4 + 1, "pairs are read");
    roundTrip<Point2>(file.write(pData, size), size / 6 + 1, readXYZ, writeText);
    return 0;
}
