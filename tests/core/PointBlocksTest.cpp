#include "core/PointBlocks.h"

#include "core/AppendTasks.h"

#include <gtest/gtest.h>

using namespace ORBI_LUMO25D;

TEST(PointBlocks, DrainedCloudIsTwiceInMemoryOrInDisorder)
{
    const std::size_t n = 5 * PointBlocks::blockSize / 2, step = 1234567; // without a common divisor: a permutation
    PointBlocks points;
    IdxPairs vPairs;
    for (std::size_t i = 0; i < n; ++i) {
        points.push_back({static_cast<double>(i), -1.0, 2.0, static_cast<std::int32_t>(i)});
        vPairs.emplace_back(static_cast<std::uint32_t>(i), i * step % n);
    }
    EXPECT_EQ(points.bytes(), 3 * PointBlocks::blockSize * sizeof(Coords));
    const DrainedSource source(points);
    source.arrange(vPairs);
    for (std::size_t i = 0; i < n; ++i) {
        ASSERT_EQ(vPairs[i].position(), i);
        ASSERT_EQ(vPairs[i].key(), i);
        Point2 vertex;
        source.fill(i, &vertex);
        ASSERT_EQ(vertex.x(), static_cast<double>(i * step % n));
        ASSERT_EQ(vertex.getCustomIndex(), static_cast<std::int32_t>(i * step % n));
        ASSERT_EQ(points.bytes(), (3 - i / PointBlocks::blockSize) * PointBlocks::blockSize * sizeof(Coords));
    }
    points.clear();
    EXPECT_EQ(points.bytes(), 0u);
}
