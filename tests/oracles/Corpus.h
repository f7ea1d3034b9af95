#ifndef LUMO25D_TESTS_ORACLES_CORPUS_H
#define LUMO25D_TESTS_ORACLES_CORPUS_H

#include "Point2.h"
#include "Segment2.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <limits>
#include <string>
#include <vector>

namespace oracles
{

/// One input of the corpus.
struct CorpusEntry
{
    std::string name; ///< folder and file, or "generated/..."; a variant has "+turned" or the like at its end
    std::vector<ORBI_LUMO25D::Point2> vPoints; ///< in the order of the file; may hold points twice
    std::vector<ORBI_LUMO25D::Segment2> vSegments;
};

/// Every file below tests/corpus, sorted by name, then the generated families, each as it is. Entries of more than
/// maxPoints points are left out.
std::vector<CorpusEntry> plainCorpus(std::size_t maxPoints = std::numeric_limits<std::size_t>::max());

/// The plain corpus and four variants of each entry:
/// "+turned"   by 90 degrees: (-y, x), exact;
/// "+mirrored" (-x, y), exact;
/// "+doubled"  every point a second time right after the first, 1 higher;
/// "+survey"   moved by (21530000.125, 6782000.375), which rounds: near points may meet. Left out for an entry with a
///             coordinate of more than 1e6 in size, which such a step would not change in kind.
/// maxPoints holds before doubling.
std::vector<CorpusEntry> corpus(std::size_t maxPoints = std::numeric_limits<std::size_t>::max());

/// Reads one file in the corpus form (tests/corpus/README.md); one that breaks it is an std::runtime_error.
CorpusEntry readCorpusFile(const std::string& path, const std::string& name);
/// Writes the entry, whose segments end at its points, in the corpus form; the numbers come back bit for bit. False when
/// the file can't be written.
bool writeCorpusFile(const std::string& path, const CorpusEntry& entry);

/// Put at the top of a loop over the corpus: names the entry in every failure, and for the first entry of a test that
/// fails writes the input to "failed-<name>.txt" in the working directory and prints that name, so that a failure becomes a
/// corpus entry by copying a file.
class FailureKeeper
{
public:
    explicit FailureKeeper(const CorpusEntry& entry_);
    ~FailureKeeper();
    FailureKeeper(const FailureKeeper&) = delete;
    FailureKeeper& operator=(const FailureKeeper&) = delete;

private:
    const CorpusEntry& entry;
    ::testing::ScopedTrace trace;
    bool bFailedBefore;
    int numExceptionsBefore;
};

} // namespace oracles

#endif
