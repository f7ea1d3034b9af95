#include "core/CurveSort.h"

#include "Point2.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>
#include <string>
#include <vector>

using namespace ORBI_LUMO25D;

namespace
{

struct KeyKind
{
    const char* pName;
    std::function<std::uint32_t(std::mt19937&, std::size_t)> make; ///< by generator and position
};

const KeyKind aKeyKinds[] = {
    {"all bits", [](std::mt19937& random, std::size_t) { return static_cast<std::uint32_t>(random()); }},
    {"few values", [](std::mt19937& random, std::size_t) { return static_cast<std::uint32_t>(random() % 3 << 20); }},
    {"one value", [](std::mt19937&, std::size_t) { return 77u; }},
    {"ascending", [](std::mt19937&, std::size_t i) { return static_cast<std::uint32_t>(i / 2); }},
    {"descending", [](std::mt19937&, std::size_t i) { return static_cast<std::uint32_t>((1u << 30) - 1 - i); }},
    {"one outlier", [](std::mt19937&, std::size_t i) { return i == 5 ? (1u << 30) - 1 : 0u; }},
};
const std::size_t aSizes[] = {0, 1, 2, 499, 501, 9999, 10000, 60000};

bool sameItem(const IdxVtxAct& a, const IdxVtxAct& b)
{
    return a.idx == b.idx && a.bActive == b.bActive && a.pVtx == b.pVtx;
}

} // namespace

TEST(CurveSort, PairsComeOutByIndexThenPositionOnAnyNumberOfThreads)
{
    for (const KeyKind& kind : aKeyKinds) {
        for (const std::size_t n : aSizes) {
            for (const bool bShuffled : {false, true}) {
                SCOPED_TRACE(std::string(kind.pName) + ", " + std::to_string(n) + (bShuffled ? ", shuffled" : ""));
                std::mt19937 random(3);
                IdxPairs vInput;
                for (std::size_t i = 0; i < n; ++i) vInput.emplace_back(kind.make(random, i) & ((1u << 30) - 1), i);
                if (bShuffled) std::shuffle(vInput.begin(), vInput.end(), random);
                IdxPairs vExpected = vInput;
                std::sort(vExpected.begin(), vExpected.end());
                const auto areEqual = [](const KeyedPosition& a, const KeyedPosition& b) {
                    return !(a < b) && !(b < a);
                };
                for (const int numCPU : {1, 2, 7}) {
                    IdxPairs vPairs = vInput;
                    sortPairs(vPairs, numCPU);
                    EXPECT_TRUE(std::equal(vPairs.begin(), vPairs.end(), vExpected.begin(), areEqual));
                }
            }
        }
    }
}

TEST(CurveSort, IndexAndPositionShareAPairWithoutTouching)
{
    const KeyedPosition last((1u << 30) - 1, KeyedPosition::maxPositions - 1);
    EXPECT_TRUE(last.key() == (1u << 30) - 1 && last.position() == KeyedPosition::maxPositions - 1);
    EXPECT_TRUE(KeyedPosition(1, KeyedPosition::maxPositions - 1) < KeyedPosition(2, 0));
}

TEST(CurveSort, ItemsComeOutActiveFirstOnOneThreadAndByStretchOnFour)
{
    std::vector<Point2> vPoints(*std::max_element(std::begin(aSizes), std::end(aSizes)));
    for (const KeyKind& kind : aKeyKinds) {
        for (const std::size_t n : aSizes) {
            for (const unsigned percentInactive : {0u, 30u, 100u}) {
                SCOPED_TRACE(std::string(kind.pName) + ", " + std::to_string(n) + ", " +
                             std::to_string(percentInactive) + " % inactive");
                std::mt19937 random(5);
                IdxItems vInput;
                for (std::size_t i = 0; i < n; ++i) {
                    vInput.emplace_back(kind.make(random, i), random() % 100 >= percentInactive, &vPoints[i]);
                }
                IdxItems vExpected = vInput;
                std::stable_sort(vExpected.begin(), vExpected.end());
                IdxItems vPlain = vInput;
                sortItems(vPlain, 3);
                EXPECT_TRUE(std::equal(vPlain.begin(), vPlain.end(), vExpected.begin(), sameItem));

                IdxItems vInFour = vInput;
                sortItems(vInFour, 4);
                const bool bSameAsPlain = std::equal(vInFour.begin(), vInFour.end(), vPlain.begin(), sameItem);
                if (n < 10000 || percentInactive == 0) {
                    EXPECT_TRUE(bSameAsPlain);
                } else if (percentInactive == 30 && kind.pName == std::string("all bits")) {
                    EXPECT_FALSE(bSameAsPlain) << "inactive items stay in their stretch";
                }
                // Without the inactive ones it is the same order, and nothing got lost.
                const auto isInactive = [](const IdxVtxAct& item) { return !item.bActive; };
                std::stable_partition(vInFour.begin(), vInFour.end(), std::not_fn(isInactive));
                const auto byVertex = [](const IdxVtxAct& a, const IdxVtxAct& b) { return a.pVtx < b.pVtx; };
                for (IdxItems* pItems : {&vInFour, &vPlain}) {
                    std::sort(std::find_if(pItems->begin(), pItems->end(), isInactive), pItems->end(), byVertex);
                }
                EXPECT_TRUE(std::equal(vInFour.begin(), vInFour.end(), vPlain.begin(), sameItem));
            }
        }
    }
}
