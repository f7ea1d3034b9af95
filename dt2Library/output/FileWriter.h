#ifndef LUMO25D_OUTPUT_FILEWRITER_H
#define LUMO25D_OUTPUT_FILEWRITER_H

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>

namespace ORBI_LUMO25D
{

/// A file that is written in large pieces, replacing what it held. Numbers don't follow the program's locale.
class FileWriter
{
public:
    /// NULL is an empty name, which no file can have.
    explicit FileWriter(const char* filename);

    const std::string& getName() const { return name; }
    bool isOpen() const { return file.is_open(); }

    /// Room for one more item of n bytes (n at most a thousand), to be filled and then added.
    char* getRoom(std::size_t n)
    {
        if (numUsed + n > pieceSize) flush();
        return pPiece.get() + numUsed;
    }
    void add(std::size_t n) { numUsed += n; }

    /// Text or bytes of any length.
    void put(std::string_view text);
    /// The shortest digits that are read back as the same double.
    void put(double value);
    void put(std::uint64_t value);

    /// Completes the file. False when it couldn't be created or not be written to the end.
    bool close();

private:
    void flush();

    static constexpr std::size_t pieceSize = std::size_t(1) << 16;
    std::string name;
    std::ofstream file;
    std::unique_ptr<char[]> pPiece;
    std::size_t numUsed = 0;
};

} // namespace ORBI_LUMO25D

#endif
