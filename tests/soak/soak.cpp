// Mixes all public operations at random, on hostile grids and real terrain, and checks what each promises after every
// step. What fails is shrunk and kept as a file of the corpus form.
//
//     soak [seconds [first seed]]
#include "oracles/Composer.h"
#include "support/TestOutput.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <map>

int main(int argc, char** argv)
{
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + std::chrono::seconds(argc > 1 ? std::atoi(argv[1]) : 120);
    std::uint64_t seed = argc > 2 ? std::strtoull(argv[2], nullptr, 10) : 1;
    const std::uint64_t first = seed;
    std::map<std::string, std::size_t> mNumOperations;
    int numFailures = 0;
    for (; Clock::now() < end && numFailures < 10; ++seed) {
        lumo_test::CoutCapture out; // the library's messages about what it was given
        const oracles::OperationSequence sequence = oracles::Composer(seed, oracles::Composer::EVERYTHING).sequence(25);
        for (const oracles::Operation& op : sequence) ++mNumOperations[oracles::operationNames[op.kind]];
        const std::string fault = oracles::runSequence(sequence);
        if (fault.empty()) continue;
        ++numFailures;
        std::fprintf(stderr, "seed %llu: %s\n", static_cast<unsigned long long>(seed), fault.c_str());
        const std::string report = oracles::shrunkReport(sequence, std::to_string(seed));
        std::fprintf(stderr, "  shrunk: %s\n", report.c_str());
    }
    std::printf("seeds %llu to %llu, %d failures; operations:", static_cast<unsigned long long>(first),
                static_cast<unsigned long long>(seed - 1), numFailures);
    for (const auto& [name, number] : mNumOperations) std::printf(" %s %zu", name.c_str(), number);
    std::printf("\n");
    return numFailures == 0 ? 0 : 1;
}
