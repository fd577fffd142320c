// QuaternionTest.cpp -- Quaternion against hand-worked values, Hamilton products and GL rotation matrices.
#include <ostrum_gl/frame/Quaternion.h>

#include <GL/gl.h>

#include <TestSupport.h>

#include <array>
#include <cmath>

namespace {

using ostrum_test::GLTest;
using ostrum_test::StdoutCapture;

const double kTolerance = 1e-6;
const double kHalfRoot2 = std::sqrt(0.5);

void expectQuat(const Quaternion& q, double x, double y, double z, double w, double tolerance = kTolerance)
{
    EXPECT_NEAR(q.x, x, tolerance);
    EXPECT_NEAR(q.y, y, tolerance);
    EXPECT_NEAR(q.z, z, tolerance);
    EXPECT_NEAR(q.w, w, tolerance);
}

Quaternion raw(float x, float y, float z, float w)
{
    Quaternion q;
    q.x = x;
    q.y = y;
    q.z = z;
    q.w = w;
    return q;
}

// The usual Hamilton product a.b, in (x, y, z, w) order, written out independently of the class.
std::array<double, 4> hamilton(const std::array<double, 4>& a, const std::array<double, 4>& b)
{
    return {a[3] * b[0] + a[0] * b[3] + a[1] * b[2] - a[2] * b[1],
            a[3] * b[1] + a[1] * b[3] + a[2] * b[0] - a[0] * b[2],
            a[3] * b[2] + a[2] * b[3] + a[0] * b[1] - a[1] * b[0],
            a[3] * b[3] - a[0] * b[0] - a[1] * b[1] - a[2] * b[2]};
}

// Rotation by `degrees` about a unit axis, as a quaternion in (x, y, z, w) order.
std::array<double, 4> axisRotation(double ax, double ay, double az, double degrees)
{
    const double half = degrees * M_PI / 360.0;
    return {ax * std::sin(half), ay * std::sin(half), az * std::sin(half), std::cos(half)};
}

// ---------------------------------------------------------------- construction and normalisation

TEST(QuaternionTest, DefaultIsTheIdentity)
{
    expectQuat(Quaternion(), 0, 0, 0, 1, 0);
}

TEST(QuaternionTest, FourFloatConstructorWithZeroZeroZeroTwoYieldsIdentity)
{
    const Quaternion q(0.0f, 0.0f, 0.0f, 2.0f);
    EXPECT_EQ(q.x, 0.0f);
    EXPECT_EQ(q.y, 0.0f);
    EXPECT_EQ(q.z, 0.0f);
    EXPECT_EQ(q.w, 1.0f);
}

TEST(QuaternionTest, FourFloatConstructorDividesByTheNorm)
{
    const double n = std::sqrt(30.0);
    expectQuat(Quaternion(1.0f, 2.0f, 3.0f, 4.0f), 1 / n, 2 / n, 3 / n, 4 / n);
    expectQuat(Quaternion(-3.0f, 0.0f, 4.0f, 0.0f), -0.6, 0, 0.8, 0);
}

TEST(QuaternionTest, NormalizeScalesToUnitLengthWithoutChangingDirection)
{
    Quaternion q = raw(0.0f, -6.0f, 0.0f, 8.0f);
    q.Normalize();
    expectQuat(q, 0, -0.6, 0, 0.8);
    // Already normalised: unchanged.
    q.Normalize();
    expectQuat(q, 0, -0.6, 0, 0.8);
}

TEST(QuaternionTest, NormalizeOfTheZeroQuaternionYieldsNotANumber)
{
    Quaternion q = raw(0.0f, 0.0f, 0.0f, 0.0f);
    q.Normalize();
    EXPECT_TRUE(std::isnan(q.x));
    EXPECT_TRUE(std::isnan(q.y));
    EXPECT_TRUE(std::isnan(q.z));
    EXPECT_TRUE(std::isnan(q.w));
}

TEST(QuaternionTest, IdentityResetsAllFourValues)
{
    Quaternion q(1.0f, 2.0f, 3.0f, 4.0f);
    q.Identity();
    expectQuat(q, 0, 0, 0, 1, 0);
}

TEST(QuaternionTest, GetValuesCopiesOutXYZW)
{
    const Quaternion q = raw(0.1f, -0.2f, 0.3f, 0.9f);
    float x = 0, y = 0, z = 0, w = 0;
    q.GetValues(x, y, z, w);
    EXPECT_EQ(x, 0.1f);
    EXPECT_EQ(y, -0.2f);
    EXPECT_EQ(z, 0.3f);
    EXPECT_EQ(w, 0.9f);
}

TEST(QuaternionTest, ZeroClampTurnsZeroPointZeroZeroFourIntoZeroAndKeepsZeroPointZeroZeroFive)
{
    Quaternion q = raw(0.004f, 0.005f, -0.004f, -0.005f);
    q.Zero_Clamp();
    EXPECT_EQ(q.x, 0.0f);
    EXPECT_EQ(q.y, 0.005f);
    EXPECT_EQ(q.z, 0.0f);
    EXPECT_EQ(q.w, -0.005f);
    // Larger components stay, and nothing is renormalised.
    Quaternion r = raw(0.5f, 0.0049f, 0.25f, 0.3f);
    r.Zero_Clamp();
    EXPECT_EQ(r.x, 0.5f);
    EXPECT_EQ(r.y, 0.0f);
    EXPECT_EQ(r.z, 0.25f);
    EXPECT_EQ(r.w, 0.3f);
}

TEST(QuaternionTest, AssignmentAndCopyCopyTheFourValues)
{
    const Quaternion a = raw(0.1f, 0.2f, 0.3f, 0.4f);
    Quaternion b;
    b = a;
    const Quaternion c(a);
    expectQuat(b, 0.1f, 0.2f, 0.3f, 0.4f, 0);
    expectQuat(c, 0.1f, 0.2f, 0.3f, 0.4f, 0);
}

// ---------------------------------------------------------------- Euler angles (degrees)

TEST(QuaternionTest, EulerNinetyAboutXGivesHalfRootTwoInXAndW)
{
    Quaternion q;
    q.EulerToQuat(90.0f, 0.0f, 0.0f);
    expectQuat(q, 0.7071068, 0, 0, 0.7071068);
}

TEST(QuaternionTest, EulerAnglesAreDegreesForEachAxis)
{
    expectQuat(Quaternion(0.0f, 90.0f, 0.0f), 0, kHalfRoot2, 0, kHalfRoot2);
    expectQuat(Quaternion(0.0f, 0.0f, 90.0f), 0, 0, kHalfRoot2, kHalfRoot2);
    expectQuat(Quaternion(180.0f, 0.0f, 0.0f), 1, 0, 0, 0);
    expectQuat(Quaternion(0.0f, 0.0f, -60.0f), 0, 0, -0.5, std::sqrt(0.75));
    expectQuat(Quaternion(0.0f, 0.0f, 0.0f), 0, 0, 0, 1);
}

TEST(QuaternionTest, EulerRotatesAboutXThenYThenZ)
{
    const float a1 = 30.0f, a2 = -45.0f, a3 = 110.0f;
    // Rotating about x first, then y, then z is the Hamilton product qz.qy.qx.
    const auto expected =
        hamilton(axisRotation(0, 0, 1, a3), hamilton(axisRotation(0, 1, 0, a2), axisRotation(1, 0, 0, a1)));
    const Quaternion q(a1, a2, a3);
    expectQuat(q, expected[0], expected[1], expected[2], expected[3]);
    Quaternion viaMember;
    viaMember.EulerToQuat(a1, a2, a3);
    expectQuat(viaMember, q.x, q.y, q.z, q.w, 0);
}

TEST(QuaternionTest, EulerConstructorEqualsTheProductOfItsSingleAxisRotationsLeftToRight)
{
    const Quaternion composed = Quaternion(25.0f, 0.0f, 0.0f) * Quaternion(0.0f, 70.0f, 0.0f) * Quaternion(0.0f, 0.0f, -40.0f);
    const Quaternion direct(25.0f, 70.0f, -40.0f);
    expectQuat(composed, direct.x, direct.y, direct.z, direct.w, 1e-6);
}

// ---------------------------------------------------------------- axis and angle (radians)

TEST(QuaternionTest, AxisAngleIsRadians)
{
    Quaternion q;
    q.AxisToQuat(SVector3D(0.0f, 1.0f, 0.0f), float(M_PI / 2));
    expectQuat(q, 0, kHalfRoot2, 0, kHalfRoot2);
    expectQuat(Quaternion(SVector3D(1.0f, 0.0f, 0.0f), float(M_PI)), 1, 0, 0, 0);
    expectQuat(Quaternion(SVector3D(0.0f, 0.0f, -1.0f), float(M_PI / 3)), 0, 0, -0.5, std::sqrt(0.75));
}

TEST(QuaternionTest, AxisToQuatDoesNotNormaliseTheAxisFirst)
{
    // Axis (0, 2, 0) at a right angle: (0, 2 sin 45, 0, cos 45) normalised is (0, 2, 0, 1) / sqrt 5.
    const Quaternion q(SVector3D(0.0f, 2.0f, 0.0f), float(M_PI / 2));
    expectQuat(q, 0, 2 / std::sqrt(5.0), 0, 1 / std::sqrt(5.0));
}

TEST(QuaternionTest, AxisToQuatWithAZeroAxisOnTheIdentityLeavesTheIdentity)
{
    Quaternion q;
    q.AxisToQuat(SVector3D(0.0f, 0.0f, 0.0f), 1.0f);
    expectQuat(q, 0, 0, 0, 1, 0);
}

TEST(QuaternionTest, AxisToQuatWithAZeroAxisSetsOnlyW)
{
    Quaternion q = raw(0.3f, 0.4f, 0.5f, 0.2f);
    q.AxisToQuat(SVector3D(0.0f, 0.0f, 0.0f), 2.0f);
    expectQuat(q, 0.3f, 0.4f, 0.5f, 1.0f, 0);
}

TEST(QuaternionTest, AxisConstructorWithAZeroAxisGivesTheIdentity)
{
    expectQuat(Quaternion(SVector3D(0.0f, 0.0f, 0.0f), 0.7f), 0, 0, 0, 1, 0);
}

TEST(QuaternionTest, GetAxisAngleOnTheIdentityReturnsAngleZeroAndAxisZ)
{
    SVector3D axis(5.0f, 5.0f, 5.0f);
    float angle = 9.0f;
    Quaternion().GetAxisAngle(axis, angle);
    EXPECT_EQ(angle, 0.0f);
    EXPECT_EQ(axis.x, 0.0f);
    EXPECT_EQ(axis.y, 0.0f);
    EXPECT_EQ(axis.z, 1.0f);
}

TEST(QuaternionTest, GetAxisAngleReturnsTheAxisAndAngleThatBuiltIt)
{
    const SVector3D built(1.0f / 3, 2.0f / 3, -2.0f / 3);
    const Quaternion q(built, 1.2f);
    SVector3D axis;
    float angle = 0;
    q.GetAxisAngle(axis, angle);
    EXPECT_NEAR(angle, 1.2, 1e-6);
    EXPECT_NEAR(axis.x, 1.0 / 3, 1e-6);
    EXPECT_NEAR(axis.y, 2.0 / 3, 1e-6);
    EXPECT_NEAR(axis.z, -2.0 / 3, 1e-6);
}

TEST(QuaternionTest, GetAxisAngleOfANegativeScalarPartGivesAnAngleAboveHalfATurn)
{
    // (0, 0, sin 135, cos 135): three quarters of a turn about z.
    const Quaternion q = raw(0.0f, 0.0f, float(kHalfRoot2), float(-kHalfRoot2));
    SVector3D axis;
    float angle = 0;
    q.GetAxisAngle(axis, angle);
    EXPECT_NEAR(angle, 1.5 * M_PI, 1e-6);
    EXPECT_NEAR(axis.x, 0, 1e-7);
    EXPECT_NEAR(axis.y, 0, 1e-7);
    EXPECT_NEAR(axis.z, 1, 1e-7);
}

TEST(QuaternionTest, GetAxisAngleTreatsAVectorPartShorterThanZeroPointZeroZeroFiveAsNoRotation)
{
    SVector3D axis;
    float angle = 0;
    raw(0.0f, 0.004f, 0.0f, 0.99999f).GetAxisAngle(axis, angle);
    EXPECT_EQ(angle, 0.0f);
    EXPECT_EQ(axis.x, 0.0f);
    EXPECT_EQ(axis.y, 0.0f);
    EXPECT_EQ(axis.z, 1.0f);
    // A vector part of exactly the float 0.005 is not below the threshold: its own axis comes back.
    raw(0.005f, 0.0f, 0.0f, 1.0f).GetAxisAngle(axis, angle);
    EXPECT_EQ(angle, 0.0f);  // acos(1)
    EXPECT_FLOAT_EQ(axis.x, 1.0f);
    EXPECT_EQ(axis.y, 0.0f);
    EXPECT_EQ(axis.z, 0.0f);
    // Just above: the axis of the vector part and twice acos(w).
    raw(0.0f, 0.0f, -0.006f, 0.5f).GetAxisAngle(axis, angle);
    EXPECT_NEAR(angle, 2 * std::acos(0.5), 1e-6);
    EXPECT_FLOAT_EQ(axis.z, -1.0f);
}

TEST(QuaternionTest, GetAxisAngleReturnsAUnitAxisForAnUnnormalisedQuaternion)
{
    SVector3D axis;
    float angle = 0;
    raw(0.3f, 0.0f, 0.4f, 0.0f).GetAxisAngle(axis, angle);
    EXPECT_NEAR(angle, M_PI, 1e-6);
    EXPECT_NEAR(axis.x, 0.6, 1e-6);
    EXPECT_NEAR(axis.y, 0.0, 1e-6);
    EXPECT_NEAR(axis.z, 0.8, 1e-6);
}

// ---------------------------------------------------------------- product

TEST(QuaternionTest, ProductHasTheCrossTermsReversed)
{
    // i * j: the usual product gives k; this one gives j.i = -k.
    expectQuat(Quaternion(1.0f, 0.0f, 0.0f, 0.0f) * Quaternion(0.0f, 1.0f, 0.0f, 0.0f), 0, 0, -1, 0);
    expectQuat(Quaternion(0.0f, 1.0f, 0.0f, 0.0f) * Quaternion(0.0f, 0.0f, 1.0f, 0.0f), -1, 0, 0, 0);
    expectQuat(Quaternion(0.0f, 0.0f, 1.0f, 0.0f) * Quaternion(1.0f, 0.0f, 0.0f, 0.0f), 0, -1, 0, 0);
}

TEST(QuaternionTest, ProductOfTwoGeneralQuaternionsMatchesHandWorkedValues)
{
    // (1, 2, 3, 4) and (5, 6, 7, 8) worked by hand with the reversed cross terms:
    // x = 4*5 + 1*8 + 3*6 - 2*7 = 32, y = 4*6 + 2*8 + 1*7 - 3*5 = 32,
    // z = 4*7 + 3*8 + 2*5 - 1*6 = 56, w = 4*8 - 1*5 - 2*6 - 3*7 = -6; length sqrt(5220).
    const double n = std::sqrt(5220.0);
    expectQuat(Quaternion(1.0f, 2.0f, 3.0f, 4.0f) * Quaternion(5.0f, 6.0f, 7.0f, 8.0f), 32 / n, 32 / n, 56 / n, -6 / n);
    // The same factors, unnormalised: the product is normalised all the same.
    expectQuat(raw(1.0f, 2.0f, 3.0f, 4.0f) * raw(5.0f, 6.0f, 7.0f, 8.0f), 32 / n, 32 / n, 56 / n, -6 / n);
}

TEST(QuaternionTest, ProductEqualsTheUsualProductWithTheFactorsSwapped)
{
    const Quaternion p(10.0f, -20.0f, 35.0f);
    const Quaternion q(SVector3D(0.0f, 0.6f, 0.8f), 2.1f);
    const auto expected = hamilton({q.x, q.y, q.z, q.w}, {p.x, p.y, p.z, p.w});
    expectQuat(p * q, expected[0], expected[1], expected[2], expected[3]);
}

TEST(QuaternionTest, ProductWithTheIdentityLeavesTheOtherFactor)
{
    const Quaternion p(12.0f, 34.0f, 56.0f);
    expectQuat(p * Quaternion(), p.x, p.y, p.z, p.w);
    expectQuat(Quaternion() * p, p.x, p.y, p.z, p.w);
}

// ---------------------------------------------------------------- text

TEST(QuaternionTest, PrintWritesQuaternionIsXYZThenWIsW)
{
    StdoutCapture capture;
    Quaternion(90.0f, 0.0f, 0.0f).Print();
    raw(0.5f, -0.25f, 1e-7f, 1.0f).Print();
    EXPECT_EQ(capture.take(), "Quaternion is 0.707107 0 0 w is 0.707107\n"
                              "Quaternion is 0.5 -0.25 1e-07 w is 1\n");
}

TEST(QuaternionTest, AsStringListsTheFourValuesInParentheses)
{
    EXPECT_EQ(raw(0.5f, -0.25f, 0.0f, 1.0f).asString(), "(0.5, -0.25, 0, 1)");
    // Each value is the shortest text of the float widened to double.
    EXPECT_EQ(raw(0.1f, 2.0f, -3.0f, 1e-7f).asString(), "(0.10000000149011612, 2, -3, 1.0000000116860974e-07)");
}

// ---------------------------------------------------------------- as GL rotations

class QuaternionGLTest : public GLTest {
protected:
    static std::array<float, 16> modelview()
    {
        std::array<float, 16> m{};
        glGetFloatv(GL_MODELVIEW_MATRIX, m.data());
        return m;
    }
    // The matrix of glRotatef with the axis and angle (radians turned to degrees) of q.
    static std::array<float, 16> rotationOf(const Quaternion& q)
    {
        SVector3D axis;
        float angle = 0;
        q.GetAxisAngle(axis, angle);
        glLoadIdentity();
        glRotatef(angle * 57.29577951308232f, axis.x, axis.y, axis.z);
        return modelview();
    }
    static void expectMatrix(const std::array<float, 16>& actual, const std::array<float, 16>& expected)
    {
        for (int i = 0; i < 16; ++i) EXPECT_NEAR(actual[i], expected[i], 1e-5) << "element " << i;
    }
};

TEST_F(QuaternionGLTest, EulerAxisAngleGivesTheMatrixOfRotationsAboutXThenYThenZ)
{
    const float a1 = 40.0f, a2 = -25.0f, a3 = 130.0f;
    // Vertices meet the last glRotatef first: x, then y, then z.
    glLoadIdentity();
    glRotatef(a3, 0, 0, 1);
    glRotatef(a2, 0, 1, 0);
    glRotatef(a1, 1, 0, 0);
    const auto expected = modelview();
    expectMatrix(rotationOf(Quaternion(a1, a2, a3)), expected);
}

TEST_F(QuaternionGLTest, ProductRotatesByTheLeftFactorFirst)
{
    const Quaternion p(SVector3D(1.0f, 0.0f, 0.0f), 0.9f);
    const Quaternion q(SVector3D(0.0f, 0.0f, 1.0f), -1.4f);
    glLoadIdentity();
    glRotatef(-1.4f * 57.29577951308232f, 0, 0, 1);
    glRotatef(0.9f * 57.29577951308232f, 1, 0, 0);
    const auto expected = modelview();
    expectMatrix(rotationOf(p * q), expected);
}

TEST_F(QuaternionGLTest, AxisAngleRoundTripGivesTheSameGLRotation)
{
    glLoadIdentity();
    glRotatef(200.0f, 2.0f, -1.0f, 2.0f);  // GL normalises the axis itself
    const auto expected = modelview();
    SVector3D axis(2.0f / 3, -1.0f / 3, 2.0f / 3);
    expectMatrix(rotationOf(Quaternion(axis, 200.0f * float(M_PI) / 180.0f)), expected);
}

}  // namespace
