#include "oracles/Corpus.h"

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <set>

using ORBI_LUMO25D::Point2;
using ORBI_LUMO25D::Segment2;
using namespace oracles;

namespace
{

/// A fresh folder of its own below the working directory.
std::string freshFolder(const std::string& name)
{
    std::filesystem::remove_all(name);
    std::filesystem::create_directories(name);
    return name;
}

void expectSame(const CorpusEntry& a, const CorpusEntry& b)
{
    ASSERT_EQ(a.vPoints.size(), b.vPoints.size());
    for (std::size_t i = 0; i < a.vPoints.size(); ++i) {
        EXPECT_TRUE(a.vPoints[i].samePoint(b.vPoints[i])) << "point " << i;
    }
    ASSERT_EQ(a.vSegments.size(), b.vSegments.size());
    for (std::size_t i = 0; i < a.vSegments.size(); ++i) {
        EXPECT_TRUE(a.vSegments[i].getSrc().samePoint(b.vSegments[i].getSrc())) << "segment " << i;
        EXPECT_TRUE(a.vSegments[i].getTrg().samePoint(b.vSegments[i].getTrg())) << "segment " << i;
    }
}

} // namespace

TEST(Corpus, WrittenInputsComeBackBitForBit)
{
    const std::string folder = freshFolder("corpus_roundtrip");
    for (const CorpusEntry& entry : plainCorpus()) {
        SCOPED_TRACE(entry.name);
        ASSERT_TRUE(writeCorpusFile(folder + "/entry.txt", entry));
        expectSame(readCorpusFile(folder + "/entry.txt", entry.name), entry);
    }
}

TEST(Corpus, VariantsKeepShapeAndNamesAreUnique)
{
    std::set<std::string> sNames;
    std::size_t numSegments = 0;
    const CorpusEntry* pPlain = nullptr;
    const std::vector<CorpusEntry> vEntries = corpus(3000);
    for (const CorpusEntry& entry : vEntries) {
        SCOPED_TRACE(entry.name);
        EXPECT_TRUE(sNames.insert(entry.name).second);
        for (const Point2& p : entry.vPoints) ASSERT_TRUE(std::isfinite(p.x()) && std::isfinite(p.y()));
        if (entry.name.find('+') == std::string::npos) {
            pPlain = &entry;
            numSegments += entry.vSegments.size();
            EXPECT_LE(entry.vPoints.size(), 3000u);
            continue;
        }
        ASSERT_EQ(entry.name.rfind(pPlain->name + "+", 0), 0u);
        const bool bDoubled = entry.name == pPlain->name + "+doubled";
        EXPECT_EQ(entry.vPoints.size(), pPlain->vPoints.size() * (bDoubled ? 2 : 1));
        EXPECT_EQ(entry.vSegments.size(), pPlain->vSegments.size());
    }
    EXPECT_GT(sNames.size(), 600u);
    EXPECT_GT(numSegments, 10000u);
}

TEST(Corpus, BrokenFilesAndAnEmptyFolderAreErrors)
{
    const std::string folder = freshFolder("corpus_broken");
    EXPECT_THROW(readCorpusFolder(folder), std::runtime_error);
    EXPECT_THROW(readCorpusFolder(folder + "/missing"), std::runtime_error);
    for (const char* content : {"p 1\n", "p 1 2 3 4\n", "p 1 nan\n", "p 1 x\n", "s 0 1\n", "p 0 0\np 1 1\ns 0 2\n",
                                "p 0 0\ns 0 -1\n", "p 0 0\np 1 1\ns 0 0.5\n", "point 0 0\n"}) {
        std::ofstream(folder + "/bad.txt") << content;
        EXPECT_THROW(readCorpusFolder(folder), std::runtime_error) << content;
    }
    std::ofstream(folder + "/bad.txt") << "# only\r\n\ns 1 0\r\np 1 2\r\np 3 4 5\r\n";
    expectSame(readCorpusFolder(folder).at(0),
               {"", {Point2(1, 2, 0), Point2(3, 4, 5)}, {Segment2(Point2(3, 4, 5), Point2(1, 2, 0))}});
}

TEST(Corpus, FailureLeavesItsInputAsACorpusFile)
{
    static const CorpusEntry entry = {"some/thing+turned", {Point2(0.1, 1e300, -0.0), Point2(5e-324, 1, 2)}, {}};
    std::remove("failed-some-thing+turned.txt");
    {
        const FailureKeeper keeper(entry);
    }
    EXPECT_FALSE(std::filesystem::exists("failed-some-thing+turned.txt"));
    try {
        const FailureKeeper keeper(entry);
        throw std::runtime_error("a failed condition");
    } catch (const std::runtime_error&) {
    }
    expectSame(readCorpusFile("failed-some-thing+turned.txt", ""), entry);
}
