#include "oracles/Corpus.h"
#include "support/TestOutput.h"

#include <algorithm>
#include <set>

using ORBI_LUMO25D::Point2;
using ORBI_LUMO25D::Segment2;
using namespace oracles;

namespace
{

bool same(const CorpusEntry& a, const CorpusEntry& b)
{
    const auto samePoints = [](const Point2& p, const Point2& q) { return p.samePoint(q); };
    const auto sameEnds = [](const Segment2& s, const Segment2& t) {
        return s.getSrc().samePoint(t.getSrc()) && s.getTrg().samePoint(t.getTrg());
    };
    return std::equal(a.vPoints.begin(), a.vPoints.end(), b.vPoints.begin(), b.vPoints.end(), samePoints) &&
           std::equal(a.vSegments.begin(), a.vSegments.end(), b.vSegments.begin(), b.vSegments.end(), sameEnds);
}

} // namespace

TEST(Corpus, WrittenInputDoesNotComeBackBitForBitOrTheCorpusShrank)
{
    const lumo_test::TempWorkDir directory;
    std::set<std::string> sNames;
    std::size_t numSegments = 0;
    for (const CorpusEntry& entry : corpus(1500)) {
        ASSERT_TRUE(writeCorpusFile("entry.txt", entry));
        EXPECT_TRUE(same(readCorpusFile("entry.txt", entry.name), entry)) << entry.name;
        EXPECT_TRUE(sNames.insert(entry.name).second) << entry.name;
        numSegments += entry.vSegments.size();
    }
    EXPECT_GT(sNames.size(), 500u);
    EXPECT_GT(numSegments, 30000u);
}
