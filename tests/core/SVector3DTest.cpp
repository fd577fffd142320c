// SVector3DTest.cpp -- arithmetic, length, cross product, rotation, angles and text of SVector3D.
#include <ostrum_core/SVector3D.h>

#include <gtest/gtest.h>

#include <cmath>
#include <type_traits>

namespace {

const double kPi = 3.14159265358979323846;
const float kTol = 1e-6f;

void expectVector(const SVector3D& v, float x, float y, float z, float tol = kTol)
{
    EXPECT_NEAR(v.x, x, tol);
    EXPECT_NEAR(v.y, y, tol);
    EXPECT_NEAR(v.z, z, tol);
}

}  // namespace

// ---------------------------------------------------------------- layout and construction

TEST(SVector3DLayout, FourFloatsInOrderWithoutVirtuals)
{
    static_assert(sizeof(SVector3D) == 4 * sizeof(float), "four floats and nothing else");
    static_assert(std::is_standard_layout<SVector3D>::value, "plain member-wise layout");
    static_assert(!std::is_polymorphic<SVector3D>::value, "no virtual operations");
    SVector3D v(1.0f, 2.0f, 3.0f, 4.0f);
    const float* f = &v.x;
    EXPECT_EQ(f[0], 1.0f);
    EXPECT_EQ(f[1], 2.0f);
    EXPECT_EQ(f[2], 3.0f);
    EXPECT_EQ(f[3], 4.0f);
}

TEST(SVector3DConstruction, DefaultIsZeroWithWOne)
{
    SVector3D v;
    EXPECT_EQ(v.x, 0.0f);
    EXPECT_EQ(v.y, 0.0f);
    EXPECT_EQ(v.z, 0.0f);
    EXPECT_EQ(v.w, 1.0f);
}

TEST(SVector3DConstruction, FromNumbersCarriesWOne)
{
    SVector3D v(1.5f, -2.0f, 3.25f);
    EXPECT_EQ(v.x, 1.5f);
    EXPECT_EQ(v.y, -2.0f);
    EXPECT_EQ(v.z, 3.25f);
    EXPECT_EQ(v.w, 1.0f);
}

// ---------------------------------------------------------------- copying and arithmetic

TEST(SVector3DAssign, CopiesAllFourFloats)
{
    SVector3D a(1.0f, 2.0f, 3.0f, 0.5f);
    SVector3D b;
    const SVector3D& r = (b = a);
    EXPECT_EQ(&r, &b);
    EXPECT_EQ(b.x, 1.0f);
    EXPECT_EQ(b.y, 2.0f);
    EXPECT_EQ(b.z, 3.0f);
    EXPECT_EQ(b.w, 0.5f);
    SVector3D c(a);
    EXPECT_EQ(c.w, 0.5f);
}

TEST(SVector3DSubtractAssign, SubtractsXYZAndKeepsW)
{
    SVector3D a(5.0f, 7.0f, -1.0f, 0.25f);
    SVector3D b(1.0f, 10.0f, 2.0f, 9.0f);
    const SVector3D& r = (a -= b);
    EXPECT_EQ(&r, &a);
    EXPECT_EQ(a.x, 4.0f);
    EXPECT_EQ(a.y, -3.0f);
    EXPECT_EQ(a.z, -3.0f);
    EXPECT_EQ(a.w, 0.25f);
}

TEST(SVector3DArithmetic, OperatorsWorkOnXYZAndKeepLeftW)
{
    SVector3D a(1.0f, 2.0f, 3.0f, 0.5f);
    SVector3D b(4.0f, -5.0f, 6.0f, 7.0f);
    SVector3D sum = a + b;
    expectVector(sum, 5.0f, -3.0f, 9.0f);
    EXPECT_EQ(sum.w, 0.5f);
    SVector3D diff = a - b;
    expectVector(diff, -3.0f, 7.0f, -3.0f);
    EXPECT_EQ(diff.w, 0.5f);
    SVector3D scaled = a * 2.0f;
    expectVector(scaled, 2.0f, 4.0f, 6.0f);
    EXPECT_EQ(scaled.w, 0.5f);
    a += b;
    expectVector(a, 5.0f, -3.0f, 9.0f);
    EXPECT_EQ(a.w, 0.5f);
    a *= -1.0f;
    expectVector(a, -5.0f, 3.0f, -9.0f);
    EXPECT_EQ(a.w, 0.5f);
}

TEST(SVector3DCompare, EqualityLooksAtXYZOnly)
{
    EXPECT_TRUE(SVector3D(1, 2, 3, 1) == SVector3D(1, 2, 3, 0));
    EXPECT_FALSE(SVector3D(1, 2, 3) == SVector3D(1, 2, 4));
    EXPECT_TRUE(SVector3D(1, 2, 3) != SVector3D(0, 2, 3));
}

TEST(SVector3DLength, LengthAndDot)
{
    SVector3D v(2.0f, 3.0f, 6.0f);
    EXPECT_NEAR(v.Length(), 7.0f, kTol);
    EXPECT_NEAR(v.Dot(SVector3D(1.0f, -1.0f, 2.0f)), 2.0f - 3.0f + 12.0f, kTol);
}

// ---------------------------------------------------------------- Normalize and SetLength

TEST(SVector3DNormalize, ScalesToUnitLengthAndReturnsFormerLength)
{
    SVector3D v(3.0f, 0.0f, -4.0f, 0.5f);
    float former = v.Normalize();
    EXPECT_NEAR(former, 5.0f, kTol);
    expectVector(v, 0.6f, 0.0f, -0.8f);
    EXPECT_EQ(v.w, 0.5f);
}

TEST(SVector3DNormalize, ZeroVectorStaysZero)
{
    SVector3D v(0.0f, 0.0f, 0.0f);
    float former = v.Normalize();
    EXPECT_EQ(former, 0.0f);
    EXPECT_EQ(v.x, 0.0f);
    EXPECT_EQ(v.y, 0.0f);
    EXPECT_EQ(v.z, 0.0f);
    EXPECT_FALSE(std::isnan(v.x) || std::isnan(v.y) || std::isnan(v.z));
}

TEST(SVector3DSetLength, ScalesToGivenLength)
{
    SVector3D v(1.0f, 2.0f, 2.0f);
    float length = 6.0f;
    v.SetLength(length);
    expectVector(v, 2.0f, 4.0f, 4.0f, 1e-5f);
    EXPECT_NEAR(v.Length(), 6.0f, 1e-5f);
    EXPECT_EQ(length, 6.0f);
}

TEST(SVector3DSetLength, NegativeLengthReverses)
{
    SVector3D v(0.0f, 3.0f, 4.0f);
    float length = -10.0f;
    v.SetLength(length);
    expectVector(v, 0.0f, -6.0f, -8.0f, 1e-5f);
}

TEST(SVector3DSetLength, ZeroVectorStaysZero)
{
    SVector3D v(0.0f, 0.0f, 0.0f);
    float length = 3.0f;
    v.SetLength(length);
    EXPECT_TRUE(v.IsZero());
}

// ---------------------------------------------------------------- CrossProduct

TEST(SVector3DCrossProduct, RightHandedXCrossYIsZ)
{
    SVector3D c;
    c.CrossProduct(SVector3D(1, 0, 0), SVector3D(0, 1, 0));
    expectVector(c, 0, 0, 1);
    c.CrossProduct(SVector3D(0, 1, 0), SVector3D(0, 0, 1));
    expectVector(c, 1, 0, 0);
    c.CrossProduct(SVector3D(0, 0, 1), SVector3D(1, 0, 0));
    expectVector(c, 0, 1, 0);
    c.CrossProduct(SVector3D(0, 1, 0), SVector3D(1, 0, 0));
    expectVector(c, 0, 0, -1);
}

TEST(SVector3DCrossProduct, GeneralVectorsByFormula)
{
    SVector3D a(1.0f, 2.0f, 3.0f);
    SVector3D b(-4.0f, 0.5f, 2.0f);
    SVector3D c;
    c.CrossProduct(a, b);
    // (a.y b.z - a.z b.y, a.z b.x - a.x b.z, a.x b.y - a.y b.x)
    expectVector(c, 2.0f * 2.0f - 3.0f * 0.5f, 3.0f * -4.0f - 1.0f * 2.0f, 1.0f * 0.5f - 2.0f * -4.0f);
    EXPECT_NEAR(c.Dot(a), 0.0f, 1e-5f);
    EXPECT_NEAR(c.Dot(b), 0.0f, 1e-5f);
}

TEST(SVector3DCrossProduct, OperandMayBeTheVectorItself)
{
    SVector3D v(1, 0, 0);
    v.CrossProduct(v, SVector3D(0, 1, 0));
    expectVector(v, 0, 0, 1);
    SVector3D u(0, 1, 0);
    u.CrossProduct(SVector3D(0, 0, 1), u);
    expectVector(u, -1, 0, 0);
}

// ---------------------------------------------------------------- FRotate and Rotate

TEST(SVector3DFRotate, XAboutZByQuarterTurnGivesY)
{
    SVector3D v(1, 0, 0);
    v.FRotate(static_cast<float>(kPi / 2), SVector3D(0, 0, 1));
    expectVector(v, 0, 1, 0);
}

TEST(SVector3DFRotate, CounterClockwiseLookingDownEachAxis)
{
    SVector3D v(0, 1, 0);
    v.FRotate(static_cast<float>(kPi / 2), SVector3D(1, 0, 0));
    expectVector(v, 0, 0, 1);
    SVector3D u(0, 0, 1);
    u.FRotate(static_cast<float>(kPi / 2), SVector3D(0, 1, 0));
    expectVector(u, 1, 0, 0);
    SVector3D t(1, 0, 0);
    t.FRotate(-1.5707964f, SVector3D(0, 0, 1));
    expectVector(t, 0, -1, 0);
}

TEST(SVector3DFRotate, GeneralRotationMatchesRodriguesFormula)
{
    // Axis (1, 1, 1)/sqrt(3) by 2*pi/3 permutes the axes cyclically: x -> y -> z -> x.
    const float s = static_cast<float>(1.0 / std::sqrt(3.0));
    SVector3D axis(s, s, s);
    SVector3D v(2.0f, -1.0f, 0.5f, 0.25f);
    v.FRotate(static_cast<float>(2.0 * kPi / 3.0), axis);
    expectVector(v, 0.5f, 2.0f, -1.0f, 1e-5f);
    EXPECT_EQ(v.w, 0.25f);
}

TEST(SVector3DFRotate, KeepsLengthAndComponentAlongAxis)
{
    SVector3D axis(0.0f, 0.6f, 0.8f);
    SVector3D v(3.0f, -2.0f, 1.0f);
    float length = v.Length();
    float along = v.Dot(axis);
    v.FRotate(0.7f, axis);
    EXPECT_NEAR(v.Length(), length, 1e-5f);
    EXPECT_NEAR(v.Dot(axis), along, 1e-5f);
}

TEST(SVector3DFRotate, ZeroAngleAndFullTurnLeaveVector)
{
    SVector3D v(0.3f, -0.4f, 2.0f);
    v.FRotate(0.0f, SVector3D(0, 1, 0));
    expectVector(v, 0.3f, -0.4f, 2.0f);
    v.FRotate(static_cast<float>(2 * kPi), SVector3D(0, 1, 0));
    expectVector(v, 0.3f, -0.4f, 2.0f, 1e-5f);
}

TEST(SVector3DRotate, RotatesLikeFRotate)
{
    SVector3D axis(0.0f, 0.6f, -0.8f);
    for (float angle : {-1.5707964f, 0.3f, 1.0f, 3.0f}) {
        SVector3D a(1.0f, 2.0f, 3.0f);
        SVector3D b(1.0f, 2.0f, 3.0f);
        a.Rotate(angle, axis);
        b.FRotate(angle, axis);
        EXPECT_NEAR(a.x, b.x, kTol);
        EXPECT_NEAR(a.y, b.y, kTol);
        EXPECT_NEAR(a.z, b.z, kTol);
    }
    SVector3D x(1, 0, 0);
    x.Rotate(static_cast<float>(kPi / 2), SVector3D(0, 0, 1));
    expectVector(x, 0, 1, 0);
}

// ---------------------------------------------------------------- GetAngles

TEST(SVector3DGetAngles, MinusZIsZeroZero)
{
    double a = 9, b = 9;
    SVector3D(0, 0, -1).GetAngles(a, b);
    EXPECT_NEAR(a, 0.0, 1e-9);
    EXPECT_NEAR(b, 0.0, 1e-9);
}

TEST(SVector3DGetAngles, PlusXIsHeadingQuarterTurn)
{
    double a = 9, b = 9;
    SVector3D(1, 0, 0).GetAngles(a, b);
    EXPECT_NEAR(a, kPi / 2, 1e-9);
    EXPECT_NEAR(b, 0.0, 1e-9);
    SVector3D(-1, 0, 0).GetAngles(a, b);
    EXPECT_NEAR(a, -kPi / 2, 1e-9);
    EXPECT_NEAR(b, 0.0, 1e-9);
}

TEST(SVector3DGetAngles, DownwardDirectionHasPositivePitch)
{
    double a = 9, b = 9;
    SVector3D(0, -1, 0).GetAngles(a, b);
    EXPECT_NEAR(b, kPi / 2, 1e-9);
    SVector3D(0, 1, 0).GetAngles(a, b);
    EXPECT_NEAR(b, -kPi / 2, 1e-9);
}

TEST(SVector3DGetAngles, GeneralDirectionByFormula)
{
    double a = 0, b = 0;
    SVector3D(1, -1, -1).GetAngles(a, b);
    EXPECT_NEAR(a, kPi / 4, 1e-6);                              // halfway from -z to +x
    EXPECT_NEAR(b, std::atan(1.0 / std::sqrt(2.0)), 1e-6);      // 35.26 degrees below the horizon
    SVector3D(0, 0, 2).GetAngles(a, b);
    EXPECT_NEAR(std::fabs(a), kPi, 1e-6);                       // straight behind
    EXPECT_NEAR(b, 0.0, 1e-9);
    SVector3D(0, 3, -3).GetAngles(a, b);
    EXPECT_NEAR(a, 0.0, 1e-9);
    EXPECT_NEAR(b, -kPi / 4, 1e-6);
}

TEST(SVector3DGetAngles, LengthDoesNotMatter)
{
    double a1, b1, a2, b2;
    SVector3D(0.2f, -0.3f, 0.4f).GetAngles(a1, b1);
    SVector3D(20.0f, -30.0f, 40.0f).GetAngles(a2, b2);
    EXPECT_NEAR(a1, a2, 1e-6);
    EXPECT_NEAR(b1, b2, 1e-6);
}

TEST(SVector3DGetAngles, ZeroVectorGivesZeroZero)
{
    double a = 9, b = 9;
    SVector3D(0, 0, 0).GetAngles(a, b);
    EXPECT_EQ(a, 0.0);
    EXPECT_EQ(b, 0.0);
}

TEST(SVector3DGetAngles, AnglesRebuildTheDirection)
{
    // Turning -z by pitch b about x (downwards) and then by heading a about -y gives the direction
    // back: d = (cos b sin a, -sin b, -cos b cos a).
    const SVector3D dirs[] = {SVector3D(0.3f, -0.5f, -0.8f), SVector3D(-0.7f, 0.2f, 0.4f),
                              SVector3D(0.0f, 0.9f, 0.1f)};
    for (SVector3D d : dirs) {
        d.Normalize();
        double a, b;
        d.GetAngles(a, b);
        EXPECT_NEAR(std::cos(b) * std::sin(a), d.x, 1e-6);
        EXPECT_NEAR(-std::sin(b), d.y, 1e-6);
        EXPECT_NEAR(-std::cos(b) * std::cos(a), d.z, 1e-6);
    }
}

// ---------------------------------------------------------------- IsZero and asString

TEST(SVector3DIsZero, TrueOnlyWhenXYZAreZero)
{
    EXPECT_TRUE(SVector3D(0, 0, 0, 1).IsZero());
    EXPECT_TRUE(SVector3D(0, 0, 0, 0).IsZero());
    EXPECT_TRUE(SVector3D(-0.0f, 0, 0).IsZero());
    EXPECT_FALSE(SVector3D(1e-30f, 0, 0).IsZero());
    EXPECT_FALSE(SVector3D(0, -1, 0).IsZero());
    EXPECT_FALSE(SVector3D(0, 0, 2).IsZero());
}

TEST(SVector3DAsString, ShowsTheFourValues)
{
    EXPECT_EQ(SVector3D(1.0f, -2.5f, 0.125f).asString(), "(1.000000, -2.500000, 0.125000, 1.000000)");
    EXPECT_EQ(SVector3D(0, 0, 0, 0).asString(), "(0.000000, 0.000000, 0.000000, 0.000000)");
}

TEST(SVector3DAsString, HugeValuesAreNotCut)
{
    std::string s = SVector3D(-3.0e38f, -3.0e38f, -3.0e38f, -3.0e38f).asString();
    EXPECT_EQ(s.front(), '(');
    EXPECT_EQ(s.back(), ')');
    EXPECT_EQ(s.size(), 2 + 4 * 47 + 3 * 2u);
}
