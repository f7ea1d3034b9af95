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

TEST(Corpus, BrokenFileIsRead)
{
    const lumo_test::TempWorkDir directory;
    EXPECT_THROW(readCorpusFile("missing.txt", ""), std::runtime_error);
    for (const char* content : {"p 1\n", "p 1 2 3 4\n", "p 1 nan\n", "p 1 2 x\n", "s 0 1\n", "p 0 0\np 1 1\ns 0 2\n",
                                "p 0 0\ns 0 -1\n", "p 0 0\np 1 1\ns 0 0.5\n", "point 0 0\n"}) {
        lumo_test::writeFile("bad.txt", content);
        EXPECT_THROW(readCorpusFile("bad.txt", ""), std::runtime_error) << content;
    }
    lumo_test::writeFile("good.txt", "# only\r\n\ns 1 0\r\np 1 2\r\np 3 4 5\r\n");
    const Point2 a(1, 2, 0), b(3, 4, 5);
    EXPECT_TRUE(same(readCorpusFile("good.txt", ""), {"", {a, b}, {Segment2(b, a)}}));
}

TEST(Corpus, FailureLeavesNoCorpusFileOfItsInput)
{
    const lumo_test::TempWorkDir directory;
    const CorpusEntry entry = {"some/thing+turned", {Point2(0.1, 1e300, -0.0), Point2(5e-324, 1, 2)}, {}};
    try {
        const FailureKeeper keeper(entry);
        throw std::runtime_error("a failed condition");
    } catch (const std::runtime_error&) {
    }
    EXPECT_TRUE(same(readCorpusFile("failed-some-thing+turned.txt", ""), entry));
}
