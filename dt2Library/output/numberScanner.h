#ifndef LUMO25D_OUTPUT_NUMBERSCANNER_H
#define LUMO25D_OUTPUT_NUMBERSCANNER_H

#include <cstddef>
#include <istream>
#include <vector>

namespace ORBI_LUMO25D
{

/// Takes one number from [p, end) as an input stream of the classic locale does: leading white space is skipped, the
/// number ends at the first character that can't continue it, "+1", ".5" and "5." are numbers; "nan", "inf", "1e",
/// hexadecimal digits and values beyond the largest double are not. Several times as fast as the stream.
///
/// True: value is set, p stands behind the number. False: there is no number, p stands somewhere behind it.
bool scanNumber(const char*& p, const char* end, double& value);

/// Reads white-space separated numbers from a stream in large pieces.
class NumberReader
{
public:
    explicit NumberReader(std::istream& stream_);

    /// The next number; false at the end of the stream and for anything that is no number.
    bool next(double& value);

private:
    bool refill();

    std::istream& stream;
    std::vector<char> buffer;
    std::size_t pos = 0;  ///< next character
    std::size_t size = 0; ///< characters in the buffer
    bool bAtEnd = false;  ///< the stream has no more
};

} // namespace ORBI_LUMO25D

#endif
