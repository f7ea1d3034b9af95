#ifndef LUMO25D_TESTS_SUPPORT_TESTOUTPUT_H
#define LUMO25D_TESTS_SUPPORT_TESTOUTPUT_H

#include "LumoException.h"
#include "MsgBase.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <locale>
#include <sstream>
#include <stdexcept>
#include <string>

namespace lumo_test
{

/// Catches the standard output of its lifetime.
class CoutCapture
{
public:
    CoutCapture() : pOld(std::cout.rdbuf(buffer.rdbuf())) {}
    ~CoutCapture() { std::cout.rdbuf(pOld); }

    /// What has come since the last call.
    std::string take()
    {
        const std::string text = buffer.str();
        buffer.str("");
        return text;
    }

private:
    std::ostringstream buffer;
    std::streambuf* pOld;
};

/// An empty working directory for its lifetime: tests that run side by side must not share files.
class TempWorkDir
{
public:
    TempWorkDir()
        : old(std::filesystem::current_path()), name(std::filesystem::temp_directory_path() / "lumo25d_XXXXXX")
    {
        if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary directory");
        std::filesystem::current_path(name);
    }
    TempWorkDir(const TempWorkDir&) = delete;
    ~TempWorkDir()
    {
        std::error_code ignored;
        std::filesystem::current_path(old, ignored);
        std::filesystem::remove_all(name, ignored);
    }

private:
    std::filesystem::path old;
    std::string name;
};

/// A global locale with commas at the decimals and between groups of digits, for its lifetime.
class CommaLocale
{
public:
    CommaLocale() : old(std::locale::global(std::locale(std::locale::classic(), new Comma))) {}
    ~CommaLocale() { std::locale::global(old); }

private:
    struct Comma : std::numpunct<char>
    {
        char do_decimal_point() const override { return ','; }
        std::string do_grouping() const override { return "\3"; }
    };
    std::locale old;
};

inline std::string readFile(const std::string& filename)
{
    std::ifstream file(filename, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

inline void writeFile(const std::string& filename, const std::string& content)
{
    std::ofstream(filename, std::ios::binary) << content;
}

inline std::size_t countOf(const std::string& part, const std::string& text)
{
    std::size_t n = 0;
    for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos; ++at) ++n;
    return n;
}

/// A number in so many bytes, little endian: how files hold it, made without the library.
inline std::string bytesOf(std::uint64_t bits, int size)
{
    std::string bytes;
    for (int i = 0; i < size; ++i) bytes += static_cast<char>(bits >> (8 * i) & 255U);
    return bytes;
}

inline std::string bytesOf(double value)
{
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, 8);
    return bytesOf(bits, 8);
}

/// Throws at its n-th report, from 1.
struct Interrupter : ORBI_LUMO25D::MsgBase
{
    explicit Interrupter(int n) : numLeft(n) {}
    void update(ORBI_LUMO25D::MsgType, const char*, double) override
    {
        if (--numLeft == 0) throw std::runtime_error("stop");
    }
    int numLeft;
};

/// Runs f, which must fail a condition, and returns what it printed. The log of the failure doesn't stay.
template <class F>
std::string failureOutput(const F& f)
{
    const TempWorkDir directory;
    CoutCapture out;
    try {
        f();
    } catch (const ORBI_LUMO25D::LumoException&) {
        return out.take();
    }
    throw std::logic_error("no condition has failed");
}

} // namespace lumo_test

#endif
