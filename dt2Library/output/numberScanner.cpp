#include "output/numberScanner.h"

#include <algorithm>
#include <charconv>
#include <locale>
#include <sstream>
#include <string>

namespace ORBI_LUMO25D
{

namespace
{

const std::size_t bufferSize = std::size_t(1) << 16;

bool isSpace(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

const char* skipDigits(const char* p, const char* end)
{
    while (p != end && isDigit(*p)) ++p;
    return p;
}

/// The end of what an input stream would collect for a number: sign, digits, point, digits, exponent. What it collects
/// need not be a number ("1e", ".").
const char* endOfNumber(const char* p, const char* end)
{
    if (p != end && (*p == '+' || *p == '-')) ++p;
    p = skipDigits(p, end);
    if (p != end && *p == '.') p = skipDigits(p + 1, end);
    if (p != end && (*p == 'e' || *p == 'E')) {
        ++p;
        if (p != end && (*p == '+' || *p == '-')) ++p;
        p = skipDigits(p, end);
    }
    return p;
}

} // namespace

bool scanNumber(const char*& p, const char* end, double& value)
{
    while (p != end && isSpace(*p)) ++p;
    const char* const pBegin = p;
    p = endOfNumber(p, end);
    // from_chars takes no plus sign; "+-1" never gets here because the second sign ends the number.
    const char* const pFirst = pBegin != p && *pBegin == '+' ? pBegin + 1 : pBegin;
    const std::from_chars_result result = std::from_chars(pFirst, p, value);
    if (result.ec == std::errc() && result.ptr == p) return true;
    if (result.ec != std::errc::result_out_of_range) return false;

    // Too large is no number, too small is 0 or a denormal; implementations of from_chars don't tell them apart.
    std::istringstream stream(std::string(pBegin, p));
    stream.imbue(std::locale::classic());
    return static_cast<bool>(stream >> value) && stream.peek() == std::istringstream::traits_type::eof();
}

NumberReader::NumberReader(std::istream& stream_) : stream(stream_), buffer(bufferSize) {}

/// Moves what is left to the front and appends a piece of the stream. False, with nothing moved, if there is none.
bool NumberReader::refill()
{
    if (bAtEnd) return false;
    std::copy(buffer.data() + pos, buffer.data() + size, buffer.data());
    size -= pos;
    pos = 0;
    // Grows only for a number that is longer than a piece; by doubling, since such a number is scanned anew each time.
    buffer.resize(std::max(buffer.size(), 2 * size));
    stream.read(buffer.data() + size, static_cast<std::streamsize>(buffer.size() - size));
    size += static_cast<std::size_t>(stream.gcount());
    bAtEnd = !stream;
    return true;
}

bool NumberReader::next(double& value)
{
    for (;;) {
        while (pos < size && isSpace(buffer[pos])) ++pos;
        const char* p = buffer.data() + pos;
        const char* const pEnd = buffer.data() + size;
        const bool bOK = scanNumber(p, pEnd, value);
        // A number that touches the end of the buffer may go on in the next piece.
        if (p != pEnd || !refill()) {
            pos += static_cast<std::size_t>(p - (buffer.data() + pos));
            return bOK;
        }
    }
}

} // namespace ORBI_LUMO25D
