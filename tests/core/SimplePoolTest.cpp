#include "core/SimplePool.h"

#include "LumoException.h"
#include "support/TestOutput.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <random>
#include <set>
#include <string>
#include <vector>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define LUMO25D_SANITIZED
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || __has_feature(memory_sanitizer)
#define LUMO25D_SANITIZED
#endif
#endif

using namespace ORBI_LUMO25D;
using lumo_test::failureOutput;

namespace
{

struct Record
{
    std::uint64_t a[6];
};

/// Sizes of all blocks, by filling each of them to its end.
std::vector<std::size_t> blockSizes(std::size_t initialSize, std::ptrdiff_t increaseSize, std::size_t numBlocks)
{
    SimplePool<Record> pool;
    pool.init(initialSize, increaseSize);
    while (pool.numContainers() <= numBlocks) pool.alloc();
    std::vector<std::size_t> vSizes(numBlocks);
    Record* pBlock = nullptr;
    for (std::size_t i = 0; i < numBlocks; ++i) pool.getContainer(i, pBlock, vSizes[i]);
    return vSizes;
}

} // namespace

TEST(SimplePool, BlocksGrowCautiouslyThenDoubleUpToTheLimit)
{
    using Sizes = std::vector<std::size_t>;
    EXPECT_EQ(blockSizes(1, -1, 4), (Sizes{1, 1, 2, 4}));
    EXPECT_EQ(blockSizes(7, 5, 3), (Sizes{7, 5, 5}));
    // 10 million bytes by 48: 208333 slots.
    EXPECT_EQ(blockSizes(500000, -1, 3), (Sizes{500000, 208333, 208333}));
    EXPECT_EQ(blockSizes(300000, -1, 3), (Sizes{300000, 150000, 208333}));
}

TEST(SimplePool, MisuseAndLackOfMemoryFailWithTheirTexts)
{
    SimplePool<Record> pool;
    failureOutput([&] { pool.alloc(); });
    failureOutput([&] { pool.reserve(1); });

    // A first block that can't be had leaves the pool as it was. The first number overflows when counted in bytes.
    std::vector<std::size_t> vImpossible{std::numeric_limits<std::size_t>::max() / 8};
#if !defined(LUMO25D_SANITIZED) // sanitizers end the process where an allocation is impossible
    vImpossible.push_back(std::numeric_limits<std::size_t>::max() / (4 * sizeof(Record)));
#endif
    for (const std::size_t n : vImpossible) {
        const std::string text = failureOutput([&] { pool.init(n, -1); });
        EXPECT_NE(text.find("SimplePool::alloc(..), ERROR: Out of memory\n"), std::string::npos) << text;
    }

    pool.init(2, -1);
    failureOutput([&] { pool.init(2, -1); });
    Record* const pFirst = pool.alloc();
    failureOutput([&] { pool.reserve(vImpossible[0]); });
    failureOutput([&] { pool.at(1); });
    failureOutput([&] { pool.killContainer(1); });
    // Still alive: what a failed reservation has left is given out.
    EXPECT_EQ(pool.alloc(), pFirst + 1);
    EXPECT_EQ(pool.size(), 2u);
}

/// Random sequences of all ways to take slots, against a plain list of the pointers that came out.
TEST(SimplePool, NumbersAndEnumerationFollowTheOrderOfAllocation)
{
    for (const unsigned seed : {1u, 2u, 3u, 4u, 5u, 6u}) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 random(seed);
        SimplePool<Record> pool;
        pool.init(1 + random() % 50, seed % 3 == 0 ? 1 + static_cast<std::ptrdiff_t>(random() % 20) : -1);
        std::vector<Record*> vAll;
        const auto take = [&](Record* p) {
            p->a[0] = vAll.size();
            p->a[5] = ~vAll.size();
            vAll.push_back(p);
        };
        for (int step = 0; step < 3000; ++step) {
            const std::size_t n = random() % (random() % 50 == 0 ? 2000 : 9);
            const unsigned kind = random() % 4;
            if (kind == 0) {
                Record* const pFirst = pool.allocRange(n);
                for (std::size_t i = 0; i < n; ++i) take(pFirst + i);
            } else if (kind == 1) {
                pool.reserve(n);
                for (std::size_t i = 0; i < n; ++i) {
                    take(pool.alloc());
                    ASSERT_TRUE(i == 0 || vAll.back() == vAll[vAll.size() - 2] + 1) << "not in a row";
                }
            } else {
                take(pool.alloc());
            }
        }
        ASSERT_EQ(pool.size(), vAll.size());
        std::vector<Record*> vSeen;
        pool.forEach([&](Record* p) { vSeen.push_back(p); });
        EXPECT_EQ(vSeen, vAll);
        for (std::size_t i = 0; i < vAll.size(); ++i) {
            ASSERT_EQ(vAll[i]->a[0], i) << "two slots overlap";
            ASSERT_EQ(vAll[i]->a[5], ~i) << "two slots overlap";
            ASSERT_EQ(pool.indexOf(vAll[i]), i);
            ASSERT_EQ(pool.at(i), vAll[i]);
        }
        // Hardly anything is lost: the blocks hold what was taken, but for rests too short for the last reservations.
        std::size_t numUsed = 0;
        for (std::size_t i = 0; i < pool.numContainers(); ++i) {
            Record* pBlock = nullptr;
            std::size_t n = 0;
            pool.getContainer(i, pBlock, n);
            numUsed += n;
            EXPECT_TRUE(n == 0 || pool.contains(pBlock + n - 1));
        }
        EXPECT_EQ(numUsed, vAll.size());
        EXPECT_TRUE(seed % 3 == 0 || pool.numContainers() < 60) << "blocks don't grow: " << pool.numContainers();
        EXPECT_GE(pool.bytes(), vAll.size() * sizeof(Record));
    }
}

TEST(SimplePool, RestOfALeftBlockIsGivenOutLater)
{
    SimplePool<Record> pool;
    pool.init(10, -1);
    Record* const pFirst = pool.alloc();
    Record* const pRow = pool.allocRange(100); // more than the 9 that are left
    EXPECT_EQ(pool.allocRange(9), pFirst + 1);
    EXPECT_EQ(pool.bytes(), 110 * sizeof(Record));
    EXPECT_FALSE(pool.contains(reinterpret_cast<Record*>(reinterpret_cast<char*>(pRow) + 8))) << "within a slot";
}

TEST(SimplePool, KilledBlockVanishesAndNumbersOfOthersStay)
{
    for (const bool bKillCurrent : {false, true}) {
        SimplePool<Record> pool;
        pool.init(4, -1);
        std::vector<Record*> vAll;
        for (int i = 0; i < 5; ++i) vAll.push_back(pool.alloc()); // four in block 0, one of two in block 1
        const std::size_t bytesBefore = pool.bytes();
        pool.killContainer(bKillCurrent ? 1 : 0);
        EXPECT_THROW(pool.killContainer(bKillCurrent ? 1 : 0), LumoException);
        EXPECT_LT(pool.bytes(), bytesBefore);
        Record* const pNew = pool.alloc();
        pNew->a[5] = 1; // a slot of a freed block would be found by the address sanitizer
        EXPECT_EQ(pool.size(), 6u);
        EXPECT_EQ(pool.indexOf(pNew), 5u);
        EXPECT_EQ(pool.at(0), bKillCurrent ? vAll[0] : nullptr);
        EXPECT_EQ(pool.at(4), bKillCurrent ? nullptr : vAll[4]);
        EXPECT_EQ(pool.contains(vAll[0]), bKillCurrent);
        std::size_t numSeen = 0;
        pool.forEach([&](Record*) { ++numSeen; });
        EXPECT_EQ(numSeen, bKillCurrent ? 5u : 2u);
    }
}

TEST(SimplePool, BlocksOnHugePagesAreWritableToTheEnd)
{
    for (const std::size_t n : {std::size_t(100001), std::size_t(700001)}) { // 4.8 and 33.6 MB, no multiples of 2 MB
        SimplePool<Record> pool;
        pool.init(n, -1);
        Record* const pFirst = pool.allocRange(n);
        const std::uintptr_t address = reinterpret_cast<std::uintptr_t>(pFirst);
        EXPECT_EQ(address % (n > 700000 ? 2u << 20 : 64u), 0u);
        std::fill(reinterpret_cast<unsigned char*>(pFirst), reinterpret_cast<unsigned char*>(pFirst + n), 0xA5);
        EXPECT_EQ(pFirst[n - 1].a[5], 0xA5A5A5A5A5A5A5A5u);
    }
}
