#ifndef LUMO25D_OUTPUT_OPENFORREADING_H
#define LUMO25D_OUTPUT_OPENFORREADING_H

#include <cstdint>
#include <fstream>
#include <string>

namespace ORBI_LUMO25D
{

/// Opens for reading; false also for a directory, which opens but can't be read.
inline bool openForReading(std::ifstream& file, const std::string& name)
{
    file.open(name, std::ios::in | std::ios::binary);
    if (!file) return false;
    file.peek();
    if (file.bad()) return false;
    file.clear(); // an empty file is a file
    return true;
}

/// The size of an open file of which nothing was read yet, 0 when it has none, as a pipe.
inline std::uint64_t sizeOf(std::ifstream& file)
{
    file.seekg(0, std::ios::end);
    const std::streamoff end = file.tellg();
    file.clear();
    file.seekg(0, std::ios::beg);
    file.clear();
    return end > 0 ? static_cast<std::uint64_t>(end) : 0;
}

} // namespace ORBI_LUMO25D

#endif
