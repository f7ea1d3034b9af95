#ifndef LUMO25D_TESTS_FUZZ_FUZZ_H
#define LUMO25D_TESTS_FUZZ_FUZZ_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string>

/// What the fuzzers of file readers share: the bytes become a file, and the library's messages go nowhere.
namespace fuzz
{

/// Ends the process in a way that the fuzzer takes for a finding.
inline void require(bool bCondition, const char* what)
{
    if (bCondition) return;
    std::fprintf(stderr, "not true: %s\n", what);
    std::abort();
}

/// A file of this process in memory, if the system has such a place, with the given ending.
class InputFile
{
public:
    explicit InputFile(const char* ending)
    {
        std::cout.setstate(std::ios::failbit);
        std::error_code error;
        const bool bShm = std::filesystem::is_directory("/dev/shm", error);
        std::string name = ((bShm ? "/dev/shm" : std::filesystem::temp_directory_path()) / "lumo25d_fuzz_XXXXXX");
        const int handle = mkstemp(name.data());
        require(handle >= 0, "there is room for a file");
        std::fclose(fdopen(handle, "wb"));
        std::remove(name.c_str());
        path = name + ending;
    }
    ~InputFile() { std::remove(path.c_str()); }
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    const char* name() const { return path.c_str(); }
    const char* write(const std::uint8_t* pData, std::size_t size) const
    {
        std::FILE* const pFile = std::fopen(path.c_str(), "wb");
        require(pFile != nullptr && std::fwrite(pData, 1, size, pFile) == size, "the file is written");
        std::fclose(pFile);
        return path.c_str();
    }

private:
    std::string path;
};

} // namespace fuzz

#endif
