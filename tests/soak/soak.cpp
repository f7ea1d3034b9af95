// Mixes all public operations at random, on hostile grids and real terrain, and checks what each promises after every
// step. What fails is shrunk and kept as a file of the corpus form.
//
//     soak [seconds [first seed [side by side]]]
//
// With a third number, so many sequences run at a time, in a thread each, and insert enough to use threads themselves.
#include "oracles/Composer.h"

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <iostream>
#include <mutex>
#include <streambuf>
#include <thread>

namespace
{

/// For the library's messages about what it was given; without a buffer, so that several threads may write.
struct Nowhere : std::streambuf
{
    int_type overflow(int_type c) override { return traits_type::not_eof(c); }
    std::streamsize xsputn(const char*, std::streamsize n) override { return n; }
};

class Soak
{
public:
    Soak(int seconds, std::uint64_t firstSeed, int numSideBySide)
        : end(Clock::now() + std::chrono::seconds(seconds)), first(firstSeed), next(firstSeed),
          numThreads(numSideBySide)
    {
    }

    void run()
    {
        std::vector<std::thread> vThreads;
        for (int i = 1; i < numThreads; ++i) vThreads.emplace_back([this] { runSequences(); });
        runSequences();
        for (std::thread& thread : vThreads) thread.join();
    }

    int numberOfFailures() const { return numFailures; }

    void report() const
    {
        std::printf("seeds %llu to %llu, %d failures, %.0f s of processor time; operations:",
                    static_cast<unsigned long long>(first), static_cast<unsigned long long>(next - 1),
                    numFailures.load(), static_cast<double>(std::clock()) / CLOCKS_PER_SEC);
        for (int kind = 0; kind < oracles::numOperationKinds; ++kind)
            std::printf(" %s %zu", oracles::operationNames[kind], numOperations[kind].load());
        std::printf("\n");
    }

private:
    using Clock = std::chrono::steady_clock;

    void runSequences()
    {
        while (Clock::now() < end && numFailures < 10) {
            runOne(next++);
        }
    }

    void runOne(std::uint64_t seed)
    {
        using oracles::Composer;
        const auto repertoire = numThreads > 1 ? Composer::MANY_POINTS : Composer::EVERYTHING;
        const oracles::OperationSequence sequence = Composer(seed, repertoire).sequence(25);
        for (const oracles::Operation& op : sequence) ++numOperations[op.kind];
        const std::string fault = oracles::runSequence(sequence);
        if (fault.empty()) return;
        ++numFailures;
        const std::lock_guard<std::mutex> lock(mtxReport);
        std::fprintf(stderr, "seed %llu: %s\n", static_cast<unsigned long long>(seed), fault.c_str());
        const std::string shrunk = oracles::shrunkReport(sequence, std::to_string(seed));
        std::fprintf(stderr, "  shrunk: %s\n", shrunk.c_str());
    }

    const Clock::time_point end;
    const std::uint64_t first;
    std::atomic<std::uint64_t> next;
    const int numThreads;
    std::atomic<int> numFailures{0};
    std::atomic<std::size_t> numOperations[oracles::numOperationKinds] = {};
    std::mutex mtxReport;
};

} // namespace

int main(int argc, char** argv)
{
    Nowhere nowhere;
    std::streambuf* const pOld = std::cout.rdbuf(&nowhere);
    Soak soak(argc > 1 ? std::atoi(argv[1]) : 120, argc > 2 ? std::strtoull(argv[2], nullptr, 10) : 1,
              argc > 3 ? std::atoi(argv[3]) : 1);
    soak.run();
    std::cout.rdbuf(pOld);
    soak.report();
    return soak.numberOfFailures() == 0 ? 0 : 1;
}
