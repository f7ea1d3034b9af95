#include "output/FileWriter.h"

#include <algorithm>
#include <charconv>
#include <cstring>

namespace ORBI_LUMO25D
{

FileWriter::FileWriter(const char* filename)
    : name(filename == nullptr ? "" : filename), file(name, std::ios::out | std::ios::binary),
      pPiece(new char[pieceSize])
{
}

void FileWriter::put(std::string_view text)
{
    if (text.size() >= pieceSize) {
        flush();
        file.write(text.data(), static_cast<std::streamsize>(text.size()));
        return;
    }
    while (!text.empty()) {
        if (numUsed == pieceSize) flush();
        const std::size_t n = std::min(text.size(), pieceSize - numUsed);
        std::memcpy(pPiece.get() + numUsed, text.data(), n);
        numUsed += n;
        text.remove_prefix(n);
    }
}

void FileWriter::put(double value)
{
    const std::size_t room = 32; // sign, 17 digits, point and "e-308", with some to spare
    char* const p = getRoom(room);
    add(static_cast<std::size_t>(std::to_chars(p, p + room, value).ptr - p));
}

void FileWriter::put(std::uint64_t value)
{
    const std::size_t room = 20;
    char* const p = getRoom(room);
    add(static_cast<std::size_t>(std::to_chars(p, p + room, value).ptr - p));
}

bool FileWriter::close()
{
    flush();
    file.close();
    return file.good();
}

void FileWriter::flush()
{
    file.write(pPiece.get(), static_cast<std::streamsize>(numUsed));
    numUsed = 0;
}

} // namespace ORBI_LUMO25D
