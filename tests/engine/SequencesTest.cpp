#include "oracles/Composer.h"
#include "oracles/Corpus.h"
#include "oracles/OperationSequence.h"
#include "support/TestOutput.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <limits>
#include <stdexcept>

namespace
{

using namespace ORBI_LUMO25D;
using oracles::Composer;
using oracles::Operation;
using oracles::OperationSequence;

/// The seeds to run: fixed ones, or "first-last" from the environment, to repeat a report or to search further.
std::pair<std::uint64_t, std::uint64_t> seedRange()
{
    unsigned long first = 1, last = 150;
    const char* const pText = std::getenv("LUMO25D_TEST_SEEDS");
    if (pText != nullptr && std::sscanf(pText, "%lu-%lu", &first, &last) != 2)
        throw std::runtime_error("LUMO25D_TEST_SEEDS isn't of the form first-last");
    return {first, last};
}

TEST(Sequences, randomOperationsPartFromTheNaiveModel)
{
    const lumo_test::CoutCapture out;
    const auto [first, last] = seedRange();
    for (std::uint64_t seed = first; seed <= last; ++seed) {
        const OperationSequence sequence = Composer(seed).sequence(25);
        const std::string failure = oracles::runSequence(sequence);
        if (failure.empty()) continue;
        FAIL() << "seed " << seed << ", " << failure
               << "\n shrunk: " << oracles::shrunkReport(sequence, std::to_string(seed));
    }
}

TEST(Sequences, aSequenceThatOnceFailedFailsAgain)
{
    std::size_t numSequences = 0;
    for (const auto& entry : oracles::plainCorpus()) {
        if (entry.name.rfind("sequences/", 0) != 0) continue;
        ++numSequences;
        const OperationSequence sequence = oracles::readSequenceFile(LUMO25D_CORPUS_DIR "/" + entry.name + ".txt");
        EXPECT_EQ(oracles::runSequence(sequence), "") << entry.name;
    }
    EXPECT_GT(numSequences, 0U);
}

TEST(Sequences, theNaiveModelAcceptsABrokenTriangulation)
{
    // A point that isn't finite is refused by the library, which the model doesn't know of: so the runner has to object.
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const lumo_test::CoutCapture out;
    EXPECT_NE(oracles::runSequence({{Operation::VECTOR, {{0, 0, 0}, {nan, 0, 0}, {1, 5, 0}}}}), "");
    EXPECT_NE(oracles::runSequence({{Operation::INSERT, {{0, nan, 0}}}}), "");
}

} // namespace
