#include "Func_Rot3D.h"

#include "oracles/Dice.h"
#include "support/TestOutput.h"

#include <cmath>
#include <gtest/gtest.h>

using namespace ORBI_LUMO25D;

// A rotation keeps lengths and handedness, and takes its direction to the z axis.
TEST(Func_Rot3D, IsNoRotationToTheZAxis)
{
    const auto rotated = [](const Func_Rot3D& f, const Vector2& v) {
        return f(Point2(v.x(), v.y(), v.z())) - Point2(0, 0, 0);
    };
    oracles::Dice dice(8);
    const Vector2 x(1, 0, 0), y(0, 1, 0), z(0, 0, 1);
    for (int i = 0; i < 2000; ++i) {
        const double h =
            i % 4 == 0 ? -1.0 + 1e-8 * std::pow(10.0, dice.below(8)) * dice.real() : 1.998 * dice.real() - 1;
        const double t = 6.28 * dice.real(), r = std::sqrt(1 - h * h);
        const Vector2 nnv(r * std::cos(t), r * std::sin(t), h);
        const Func_Rot3D f(nnv);
        ASSERT_FALSE(f.isIdentity());
        // Straight below, within 0.001 in x and y, half a turn stands for all directions.
        EXPECT_NEAR((rotated(f, nnv) - z).length(), 0.0, r < 0.0015 ? 0.0015 : 1e-9) << h;
        const Vector2 fx = rotated(f, x), fy = rotated(f, y), fz = rotated(f, z);
        EXPECT_NEAR((crossProduct(fx, fy) - fz).length(), 0.0, 1e-9);
        EXPECT_NEAR(fx * fx + fy * fy + fz * fz, 3.0, 1e-9);
    }
    for (const auto& [nnv, text] : {std::pair(z, "Rotation for (almost) vertical nnv skipped"),
                                    std::pair(0.9 * x, "expects a normalized vector, invalid!")}) {
        testing::internal::CaptureStdout();
        EXPECT_TRUE(Func_Rot3D(nnv).isIdentity());
        EXPECT_NE(testing::internal::GetCapturedStdout().find(text), std::string::npos);
    }
    lumo_test::failureOutput([] { Func_Rot3D{Vector2()}; });
}

TEST(EstimateNNV, PlaneIsMissed)
{
    oracles::Dice dice(9);
    for (int i = 0; i < 300; ++i) {
        const Vector2 n =
            normalize(Vector2(dice.real() - 0.5, dice.real() - 0.5, i % 3 == 0 ? 0.0 : dice.real() - 0.5));
        const Vector2 u = normalize(crossProduct(n, Vector2(0.3, 0.5, 0.8))), v = crossProduct(n, u);
        std::vector<Point2> vPoints;
        const Point2 origin(6.7e6, 2.1e7, 300.0);
        for (int k = 0; k < 3 + i % 20; ++k) vPoints.push_back(origin + 50 * dice.real() * u + 50 * dice.real() * v);
        std::vector<Point2*> vP;
        for (Point2& p : vPoints) vP.push_back(&p);
        EXPECT_GT(std::fabs(estimateNNV(vP) * n), 1 - 1e-9) << i;
    }
    Point2 a(1, 2, 3), b(2, 4, 6), c(3, 6, 9);
    EXPECT_TRUE(estimateNNV({&a, &b, &c}).isDegenerate());
    lumo_test::failureOutput([&] { estimateNNV({&a, &b}); });
}
