// LGeomTest.cpp -- rectangles, distances, triangle normals and the sigmoid curve of LGeom.
#include <ostrum_core/LGeom.h>

#include <gtest/gtest.h>

#include <cmath>

namespace {

void expectRect(const tRect& r, int left, int top, int right, int bottom)
{
    EXPECT_EQ(r.left, left);
    EXPECT_EQ(r.top, top);
    EXPECT_EQ(r.right, right);
    EXPECT_EQ(r.bottom, bottom);
}

}  // namespace

// ---------------------------------------------------------------- tRect

TEST(TRectLayout, FourIntsInOrder)
{
    static_assert(sizeof(tRect) == 4 * sizeof(int), "four ints and nothing else");
    tRect r = {1, 2, 3, 4};
    const int* f = &r.left;
    EXPECT_EQ(f[0], 1);
    EXPECT_EQ(f[1], 2);
    EXPECT_EQ(f[2], 3);
    EXPECT_EQ(f[3], 4);
    expectRect(r, 1, 2, 3, 4);
}

TEST(LGeomSetRect, FillsFieldsInOrder)
{
    tRect r = {9, 9, 9, 9};
    LGeom::setRect(r, 10, 20, 110, 70);
    expectRect(r, 10, 20, 110, 70);
    LGeom::setRect(r, -5, -6, -7, -8);
    expectRect(r, -5, -6, -7, -8);
}

TEST(LGeomSetRectExt, RightAndBottomAreLeftPlusWidthAndTopPlusHeight)
{
    tRect r = {9, 9, 9, 9};
    LGeom::setRectExt(r, 10, 20, 100, 50);
    expectRect(r, 10, 20, 110, 70);
    LGeom::setRectExt(r, 5, 5, 0, 0);
    expectRect(r, 5, 5, 5, 5);
}

TEST(LGeomSetRectExt, NegativeSizeIsNotNormalised)
{
    tRect r;
    LGeom::setRectExt(r, 10, 20, -4, -30);
    expectRect(r, 10, 20, 6, -10);
}

TEST(LGeomMoveRect, AddsOffsetsToBothCorners)
{
    tRect r = {10, 20, 110, 70};
    LGeom::moveRect(r, 5, -25);
    expectRect(r, 15, -5, 115, 45);
    LGeom::moveRect(r, 0, 0);
    expectRect(r, 15, -5, 115, 45);
}

// ---------------------------------------------------------------- pointDist

TEST(LGeomPointDist, SpaceDistanceOfTwoPoints)
{
    EXPECT_NEAR(LGeom::pointDist(SVector3D(1, 2, 3), SVector3D(3, 5, 9)), 7.0, 1e-9);  // (2, 3, 6)
    EXPECT_NEAR(LGeom::pointDist(SVector3D(-1, -1, -1), SVector3D(-1, -1, -1)), 0.0, 1e-12);
}

TEST(LGeomPointDist, SpaceDistanceIgnoresW)
{
    EXPECT_NEAR(LGeom::pointDist(SVector3D(0, 0, 0, 1), SVector3D(0, 3, 4, 100)), 5.0, 1e-9);
}

TEST(LGeomPointDist, SpaceDistanceIsSymmetric)
{
    SVector3D a(0.5f, -2.0f, 7.25f), b(-3.0f, 1.5f, 0.0f);
    EXPECT_DOUBLE_EQ(LGeom::pointDist(a, b), LGeom::pointDist(b, a));
    double dx = 3.5, dy = -3.5, dz = 7.25;
    EXPECT_NEAR(LGeom::pointDist(a, b), std::sqrt(dx * dx + dy * dy + dz * dz), 1e-9);
}

TEST(LGeomPointDist, LargeCoordinatesDoNotLosePrecision)
{
    // Differences taken in double: 1e6 + 1 and 1e6 are exact floats one apart.
    EXPECT_NEAR(LGeom::pointDist(SVector3D(1000001.0f, 0, 0), SVector3D(1000000.0f, 0, 0)), 1.0, 1e-9);
}

TEST(LGeomPointDist, PlaneDistanceOfTwoPoints)
{
    EXPECT_NEAR(LGeom::pointDist(1.0, 1.0, 4.0, 5.0), 5.0, 1e-12);
    EXPECT_NEAR(LGeom::pointDist(-2.5, 0.0, -2.5, 0.0), 0.0, 1e-12);
    EXPECT_NEAR(LGeom::pointDist(0.0, 0.0, -1.0, 1.0), std::sqrt(2.0), 1e-12);
}

// ---------------------------------------------------------------- calcNormal

TEST(LGeomCalcNormal, CounterClockwiseTrianglePointsTowardsViewer)
{
    // Seen from +z (the default OpenGL viewer), (0,0) -> (1,0) -> (0,1) runs counter-clockwise.
    SVector3D n;
    LGeom::calcNormal(SVector3D(0, 0, 0), SVector3D(1, 0, 0), SVector3D(0, 1, 0), n);
    EXPECT_NEAR(n.x, 0.0f, 1e-6f);
    EXPECT_NEAR(n.y, 0.0f, 1e-6f);
    EXPECT_NEAR(n.z, 1.0f, 1e-6f);
}

TEST(LGeomCalcNormal, ClockwiseTrianglePointsAway)
{
    SVector3D n;
    LGeom::calcNormal(SVector3D(0, 0, 0), SVector3D(0, 1, 0), SVector3D(1, 0, 0), n);
    EXPECT_NEAR(n.z, -1.0f, 1e-6f);
}

TEST(LGeomCalcNormal, FloorTriangleSeenFromAbovePointsUp)
{
    // Counter-clockwise seen from above (+y looking down): x -> -z.
    SVector3D n;
    LGeom::calcNormal(SVector3D(0, 0, 0), SVector3D(2, 0, 0), SVector3D(0, 0, -3), n);
    EXPECT_NEAR(n.x, 0.0f, 1e-6f);
    EXPECT_NEAR(n.y, 1.0f, 1e-6f);
    EXPECT_NEAR(n.z, 0.0f, 1e-6f);
}

TEST(LGeomCalcNormal, GeneralTriangleHasUnitNormalByFormula)
{
    SVector3D a(1, 2, 3), b(4, -1, 2), c(0, 5, -2);
    SVector3D n(7, 7, 7, 0);
    LGeom::calcNormal(a, b, c, n);
    // (b - a) x (c - a) = (3, -3, -1) x (-1, 3, -5) = (15 + 3, 1 + 15, 9 - 3) = (18, 16, 6)
    const double len = std::sqrt(18.0 * 18 + 16 * 16 + 6 * 6);
    EXPECT_NEAR(n.x, 18 / len, 1e-6);
    EXPECT_NEAR(n.y, 16 / len, 1e-6);
    EXPECT_NEAR(n.z, 6 / len, 1e-6);
    EXPECT_EQ(n.w, 1.0f);
}

TEST(LGeomCalcNormal, RotatingCornersKeepsNormal)
{
    SVector3D a(1, 2, 3), b(4, -1, 2), c(0, 5, -2);
    SVector3D n1, n2, n3;
    LGeom::calcNormal(a, b, c, n1);
    LGeom::calcNormal(b, c, a, n2);
    LGeom::calcNormal(c, a, b, n3);
    EXPECT_NEAR(n1.x, n2.x, 1e-6f);
    EXPECT_NEAR(n1.y, n2.y, 1e-6f);
    EXPECT_NEAR(n1.z, n2.z, 1e-6f);
    EXPECT_NEAR(n1.x, n3.x, 1e-6f);
    EXPECT_NEAR(n1.y, n3.y, 1e-6f);
    EXPECT_NEAR(n1.z, n3.z, 1e-6f);
}

TEST(LGeomCalcNormal, DegenerateTriangleGivesZeroVector)
{
    SVector3D n(5, 5, 5);
    LGeom::calcNormal(SVector3D(0, 0, 0), SVector3D(1, 1, 1), SVector3D(2, 2, 2), n);
    EXPECT_TRUE(n.IsZero());
    LGeom::calcNormal(SVector3D(3, 3, 3), SVector3D(3, 3, 3), SVector3D(3, 3, 3), n);
    EXPECT_TRUE(n.IsZero());
}

// ---------------------------------------------------------------- sigmoid

TEST(LGeomSigmoid, LogisticCurveOverTheUnitInterval)
{
    for (double x : {-1.0, 0.0, 0.1, 0.25, 0.5, 0.8, 1.0, 2.0})
        EXPECT_NEAR(LGeom::sigmoid(x), 1.0 / (1.0 + std::exp(4.0 - 8.0 * x)), 1e-12) << x;
    EXPECT_DOUBLE_EQ(LGeom::sigmoid(0.5), 0.5);
    EXPECT_NEAR(LGeom::sigmoid(0.0), 0.01799, 1e-5);
    EXPECT_NEAR(LGeom::sigmoid(1.0), 0.98201, 1e-5);
}

TEST(LGeomSigmoid, RisesEverywhere)
{
    double previous = LGeom::sigmoid(-2.0);
    for (int i = -199; i <= 300; ++i) {
        double value = LGeom::sigmoid(i / 100.0);
        EXPECT_GT(value, previous) << i / 100.0;
        previous = value;
    }
}

TEST(LGeomSigmoid, PointSymmetricAboutOneHalf)
{
    for (double x : {0.0, 0.1, 0.3, 0.45})
        EXPECT_NEAR(LGeom::sigmoid(x) + LGeom::sigmoid(1.0 - x), 1.0, 1e-12);
}

TEST(LGeomSigmoid, StaysWithinZeroAndOneFarOut)
{
    double low = LGeom::sigmoid(-1e6);
    double high = LGeom::sigmoid(1e6);
    EXPECT_FALSE(std::isnan(low));
    EXPECT_FALSE(std::isnan(high));
    EXPECT_GE(low, 0.0);
    EXPECT_LT(low, 1e-9);
    EXPECT_LE(high, 1.0);
    EXPECT_GT(high, 1.0 - 1e-9);
}
