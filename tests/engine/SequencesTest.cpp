#include "oracles/Composer.h"
#include "oracles/Corpus.h"
#include "oracles/OperationSequence.h"
#include "support/TestOutput.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <limits>
#include <set>
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

/// A fault planted beside the triangulation: it shows when (1, 2) is removed while (3, 0) has come before.
bool plantedFault(const OperationSequence& sequence)
{
    std::set<std::pair<double, double>> sPlaces;
    for (const Operation& op : sequence) {
        for (const Point2& p : op.vPoints) {
            if (op.kind <= Operation::THREADED) sPlaces.insert({p.x(), p.y()});
            if (op.kind == Operation::REMOVE && sPlaces.erase({p.x(), p.y()}) != 0 && p == Point2(1, 2, 0) &&
                sPlaces.count({3, 0}) != 0)
                return true;
        }
    }
    return false;
}

TEST(Sequences, aPlantedFaultIsNotShrunkToItsCoreOrItsFileDoesNotRepeatIt)
{
    const lumo_test::CoutCapture out;
    const lumo_test::TempWorkDir directory;
    int numPlanted = 0;
    for (std::uint64_t seed = 1; numPlanted < 5; ++seed) {
        ASSERT_LT(seed, 2000U);
        const OperationSequence sequence = Composer(seed).sequence(25);
        if (!plantedFault(sequence)) continue;
        ++numPlanted;
        SCOPED_TRACE("seed " + std::to_string(seed));
        const OperationSequence small = oracles::shrink(sequence, plantedFault);
        std::size_t numPoints = 0;
        for (const Operation& op : small) numPoints += op.vPoints.size();
        EXPECT_EQ(numPoints, 3U) << "two points in, one out";
        EXPECT_LE(small.size(), 3U);
        ASSERT_TRUE(oracles::writeSequenceFile("shrunk.txt", small));
        const OperationSequence reread = oracles::readSequenceFile("shrunk.txt");
        EXPECT_TRUE(plantedFault(reread));
        ASSERT_EQ(reread.size(), small.size());
    }
}

TEST(Sequences, theNaiveModelAcceptsABrokenTriangulation)
{
    // A point that isn't finite is refused by the library, which the model doesn't know of: so the runner has to object.
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const lumo_test::CoutCapture out;
    EXPECT_NE(oracles::runSequence({{Operation::VECTOR, {{0, 0, 0}, {nan, 0, 0}, {1, 5, 0}}}}), "");
    EXPECT_NE(oracles::runSequence({{Operation::INSERT, {{0, nan, 0}}}}), "");
}

TEST(Sequences, aBrokenFileIsRead)
{
    const lumo_test::TempWorkDir directory;
    for (const char* content : {"#: vector 2\np 0 0\n", "#: swim 0\n", "#: insert\np 0 0\n", "#: insert 0\np 0 0\n"}) {
        lumo_test::writeFile("bad.txt", content);
        EXPECT_THROW(oracles::readSequenceFile("bad.txt"), std::runtime_error) << content;
    }
}

} // namespace
