// Draped segments against a dense sample of the surface.

#include "Lumo_2D.h"

#include "oracles/Dice.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace ORBI_LUMO25D;

TEST(Drape, FollowsTheSurfaceWithinTheToleranceAndStopsAtTheHull)
{
    for (int round = 0; round < 120; ++round) {
        SCOPED_TRACE(round);
        oracles::Dice dice(99 + static_cast<std::uint64_t>(round));
        const bool bGrid = round % 2 == 0;
        const auto place = [&](double beyond) {
            const double width = 8.0 + 2.0 * beyond;
            const double x = width * dice.real() - beyond, y = width * dice.real() - beyond;
            return bGrid ? Point2(std::floor(2.0 * x) / 2.0, std::floor(2.0 * y) / 2.0, -99.0) : Point2(x, y, -99.0);
        };
        Lumo_2D lumo;
        for (int i = 0; i < 50; ++i) {
            Point2 p = place(0.0);
            p.setHeight(dice.real());
            lumo.insert(p);
        }
        const double tolerance = round % 3 == 0 ? -1.0 : 0.1 * (round % 3 - 1);
        for (int i = 0; i < 10; ++i) {
            const Segment2 segment(place(1.0), place(1.0));
            if (segment.src == segment.trg) continue;
            std::vector<Segment2> vPieces;
            const bool bInside = lumo.drape({segment}, vPieces, tolerance);
            EXPECT_EQ(bInside, lumo.locate(segment.src) != nullptr && lumo.locate(segment.trg) != nullptr);
            // By position along the segment: the height of the piece there, or the surface's where there is none.
            const double dx = segment.trg.x() - segment.src.x(), dy = segment.trg.y() - segment.src.y();
            for (int k = 1; k < 500; ++k) {
                const double t = k / 500.0;
                const Point2 p(segment.src.x() + t * dx, segment.src.y() + t * dy, 0.0);
                double z = 0.0, zPiece = std::numeric_limits<double>::quiet_NaN();
                const bool bCovered = [&] {
                    for (const Segment2& piece : vPieces) {
                        const double px = piece.trg.x() - piece.src.x(), py = piece.trg.y() - piece.src.y();
                        const double s =
                            ((p.x() - piece.src.x()) * px + (p.y() - piece.src.y()) * py) / piece.getSqLen2D();
                        zPiece = piece.src.z() + s * (piece.trg.z() - piece.src.z());
                        if (s >= 0.0 && s <= 1.0) return true;
                    }
                    return false;
                }();
                if (!lumo.getHeight(p.x(), p.y(), z)) {
                    EXPECT_FALSE(bCovered && std::isnan(zPiece));
                    continue;
                }
                if (bCovered) {
                    ASSERT_NEAR(z, zPiece, std::max(tolerance, 0.0) + 1e-9);
                    continue;
                }
                double inner = 0.0; // clearly inside
                EXPECT_FALSE(lumo.getHeight(p.x() + 1e-9, p.y(), inner) && lumo.getHeight(p.x() - 1e-9, p.y(), inner) &&
                             lumo.getHeight(p.x(), p.y() + 1e-9, inner) && lumo.getHeight(p.x(), p.y() - 1e-9, inner))
                    << segment;
            }
            for (std::size_t k = 1; k < vPieces.size(); ++k) EXPECT_TRUE(vPieces[k - 1].trg.samePoint(vPieces[k].src));
        }
    }
}
