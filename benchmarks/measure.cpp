#include "measure.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <string>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

namespace benchmarks
{

namespace
{

double seconds(const timeval& t)
{
    return static_cast<double>(t.tv_sec) + 1e-6 * static_cast<double>(t.tv_usec);
}

/// A line "name: number kB" of the process's status.
double statusBytes(const std::string& name)
{
    std::ifstream file("/proc/self/status");
    std::string word;
    while (file >> word) {
        double kiloBytes = 0.0;
        if (word == name + ":" && file >> kiloBytes) return 1024.0 * kiloBytes;
    }
    return 0.0;
}

[[noreturn]] void fail(const char* text)
{
    std::cerr << text << '\n';
    std::exit(1);
}

} // namespace

Times Times::now()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto sinceEpoch = std::chrono::steady_clock::now().time_since_epoch();
    return {std::chrono::duration<double>(sinceEpoch).count(), seconds(usage.ru_utime), seconds(usage.ru_stime)};
}

double heapInUse()
{
#if defined(__GLIBC__) && (__GLIBC__ > 2 || __GLIBC_MINOR__ >= 33)
    const struct mallinfo2 info = mallinfo2();
    return static_cast<double>(info.uordblks) + static_cast<double>(info.hblkhd);
#else
    return 0.0;
#endif
}

double residentNow()
{
    return statusBytes("VmRSS");
}

double residentPeak()
{
    return statusBytes("VmHWM");
}

void settleMemory(std::size_t numBytes)
{
    void* const p = mmap(nullptr, numBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (p == MAP_FAILED) return;
#if defined(MADV_HUGEPAGE)
    madvise(p, numBytes, MADV_HUGEPAGE);
#endif
    volatile char* const pBytes = static_cast<char*>(p);
    for (std::size_t i = 0; i < numBytes; i += 4096) {
        pBytes[i] = 1;
    }
    munmap(p, numBytes);
}

double median(std::vector<double> v)
{
    std::sort(v.begin(), v.end());
    return v[v.size() / 2];
}

std::size_t option(int argc, char** argv, const char* name, std::size_t byDefault)
{
    for (int i = 1; i + 1 < argc; ++i) {
        if (std::strcmp(argv[i], name) == 0) return std::max<std::size_t>(1, std::strtoull(argv[i + 1], nullptr, 10));
    }
    return byDefault;
}

void addFigure(const std::string& caseName, double ourSeconds, const std::string& peer, double peerSeconds)
{
    const char* const filename = std::getenv("LUMO25D_FIGURES");
    if (filename == nullptr) return;
    std::FILE* const pFile = std::fopen(filename, "a");
    if (pFile == nullptr) fail("the table of figures can't be written");
    std::fprintf(pFile, "| %s | %s | %.4g | %s | %.4g | %.2f |\n", program_invocation_short_name, caseName.c_str(),
                 ourSeconds, peer.c_str(), peerSeconds, peerSeconds / ourSeconds);
    std::fclose(pFile);
}

Measurement inChild(const std::function<Measurement()>& f)
{
    int aPipe[2];
    if (pipe(aPipe) != 0) fail("no pipe");
    std::cout.flush();
    const pid_t child = fork();
    if (child < 0) fail("no child process");
    if (child == 0) {
        const Measurement m = f();
        const bool bWritten = write(aPipe[1], &m, sizeof(m)) == static_cast<ssize_t>(sizeof(m));
        _exit(bWritten ? 0 : 1);
    }
    close(aPipe[1]);
    Measurement m;
    const bool bRead = read(aPipe[0], &m, sizeof(m)) == static_cast<ssize_t>(sizeof(m));
    close(aPipe[0]);
    int status = 0;
    waitpid(child, &status, 0);
    if (!bRead || !WIFEXITED(status) || WEXITSTATUS(status) != 0) fail("a measurement has failed");
    return m;
}

} // namespace benchmarks
