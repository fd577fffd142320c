// LGLCameraTest.cpp -- the camera's turns, moves, blend, copies and its gluLookAt on real Mesa GL.
#include <ostrum_gl/frame/LGLCamera.h>

#include "TestSupport.h"
#include "XConnection.h"

#include <GL/glu.h>

#include <array>
#include <cmath>
#include <cstdlib>
#include <utility>

namespace {

constexpr float kTol = 1e-5f;
constexpr float kMouseBound = 0.17453292f;

#define EXPECT_VEC_NEAR(v, ex, ey, ez, tol)                                                          \
    do {                                                                                             \
        const SVector3D vec_ = (v);                                                                  \
        EXPECT_NEAR(vec_.x, (ex), (tol));                                                            \
        EXPECT_NEAR(vec_.y, (ey), (tol));                                                            \
        EXPECT_NEAR(vec_.z, (ez), (tol));                                                            \
    } while (0)

#define EXPECT_VEC_EQ(v, ex, ey, ez, ew)                                                             \
    do {                                                                                             \
        const SVector3D vec_ = (v);                                                                  \
        EXPECT_EQ(vec_.x, (ex));                                                                     \
        EXPECT_EQ(vec_.y, (ey));                                                                     \
        EXPECT_EQ(vec_.z, (ez));                                                                     \
        EXPECT_EQ(vec_.w, (ew));                                                                     \
    } while (0)

void expectSameVector(const SVector3D& a, const SVector3D& b)
{
    EXPECT_EQ(a.x, b.x);
    EXPECT_EQ(a.y, b.y);
    EXPECT_EQ(a.z, b.z);
    EXPECT_EQ(a.w, b.w);
}

void expectSameCamera(const LGLCamera& a, const LGLCamera& b)
{
    expectSameVector(a.position, b.position);
    expectSameVector(a.view, b.view);
    expectSameVector(a.upVector, b.upVector);
    expectSameVector(a.strafe, b.strafe);
    expectSameVector(a.viewDirection, b.viewDirection);
    EXPECT_EQ(a.maxPitch, b.maxPitch);
    expectSameVector(a.referenceUp, b.referenceUp);
}

// A camera whose every member holds a distinct value.
LGLCamera distinctCamera()
{
    LGLCamera c;
    c.position = SVector3D(1, 2, 3, 4);
    c.view = SVector3D(5, 6, 7, 8);
    c.upVector = SVector3D(9, 10, 11, 12);
    c.strafe = SVector3D(13, 14, 15, 16);
    c.viewDirection = SVector3D(17, 18, 19, 20);
    c.maxPitch = 21;
    c.referenceUp = SVector3D(22, 23, 24, 25);
    return c;
}

// The camera at the origin looking down -z, up +y (line of sight of length 2).
LGLCamera lookingDownMinusZ()
{
    LGLCamera c;
    c.SetPosAndView(0, 0, 0, 0, 0, -2, 0, 1, 0);
    return c;
}

class LGLCameraTest : public ::testing::Test {
protected:
    void SetUp() override { LGLCamera::accumulatedPitch = 0.0f; }
    void TearDown() override { LGLCamera::accumulatedPitch = 0.0f; }
};

// ---------------------------------------------------------------- construction and copies

TEST_F(LGLCameraTest, ConstructorSetsTheDesignedDefaults)
{
    LGLCamera c;
    EXPECT_VEC_EQ(c.position, 0.0f, 0.0f, 0.0f, 1.0f);
    EXPECT_VEC_EQ(c.view, 0.0f, 1.0f, 0.5f, 1.0f);
    EXPECT_VEC_EQ(c.upVector, 0.0f, 0.0f, 1.0f, 1.0f);
    EXPECT_EQ(c.maxPitch, 1.0f);
    EXPECT_VEC_EQ(c.referenceUp, 0.0f, 1.0f, 0.0f, 1.0f);
}

TEST(LGLCameraProcessTest, AccumulatedPitchStartsAtZero)
{
    // The death-test child is a fresh process, so it sees the class-wide value as the program starts.
    EXPECT_EXIT(std::exit(LGLCamera::accumulatedPitch == 0.0f ? 0 : 1), ::testing::ExitedWithCode(0), "");
}

TEST_F(LGLCameraTest, CopyConstructionCopiesEveryMember)
{
    const LGLCamera original = distinctCamera();
    LGLCamera copy(original);
    expectSameCamera(copy, original);
}

TEST_F(LGLCameraTest, AssignmentCopiesEveryMember)
{
    const LGLCamera original = distinctCamera();
    LGLCamera target;
    target = original;
    expectSameCamera(target, original);
}

TEST_F(LGLCameraTest, MovingAssignmentCopiesEveryMember)
{
    LGLCamera source = distinctCamera();
    LGLCamera target;
    target = std::move(source);
    expectSameCamera(target, distinctCamera());
}

TEST_F(LGLCameraTest, CopiesLeaveTheSharedPitchAlone)
{
    LGLCamera::accumulatedPitch = 0.25f;
    LGLCamera a = distinctCamera();
    LGLCamera b;
    b = a;
    EXPECT_EQ(LGLCamera::accumulatedPitch, 0.25f);
}

TEST_F(LGLCameraTest, GettersReturnCopiesOfTheMembers)
{
    LGLCamera c = distinctCamera();
    SVector3D p = c.GetPosition();
    expectSameVector(p, c.position);
    expectSameVector(c.GetView(), c.view);
    expectSameVector(c.GetUpVector(), c.upVector);
    expectSameVector(c.GetStrafe(), c.strafe);
    p.x = 100;
    EXPECT_EQ(c.position.x, 1.0f);
}

// ---------------------------------------------------------------- setting vectors

TEST_F(LGLCameraTest, SetPosAndViewSetsTheThreeVectorsWithUnitW)
{
    LGLCamera c = distinctCamera();
    c.SetPosAndView(1.5f, -2, 3, 4, 5.25f, -6, 0, 0, 1);
    EXPECT_VEC_EQ(c.position, 1.5f, -2.0f, 3.0f, 1.0f);
    EXPECT_VEC_EQ(c.view, 4.0f, 5.25f, -6.0f, 1.0f);
    EXPECT_VEC_EQ(c.upVector, 0.0f, 0.0f, 1.0f, 1.0f);
    // The derived vectors are left alone.
    EXPECT_VEC_EQ(c.strafe, 13.0f, 14.0f, 15.0f, 16.0f);
    EXPECT_VEC_EQ(c.viewDirection, 17.0f, 18.0f, 19.0f, 20.0f);
}

TEST_F(LGLCameraTest, ResetUpVectorSetsWorldUp)
{
    LGLCamera c;  // the constructor's up vector is (0, 0, 1)
    c.upVector.w = 3;
    c.ResetUpVector();
    EXPECT_VEC_EQ(c.upVector, 0.0f, 1.0f, 0.0f, 1.0f);
}

// ---------------------------------------------------------------- free turn

TEST_F(LGLCameraTest, PositiveYawTurnsSightAndUpLeftAboutWorldY)
{
    LGLCamera c;
    const float s = std::sqrt(0.5f);
    c.SetPosAndView(1, 2, 3, 1, 2, 1, s, s, 0);  // sight (0, 0, -2)
    const double t = 0.4;
    c.RotateView(0.4f, 0.0f);
    // (x, y, z) about y by t: (x cos t + z sin t, y, -x sin t + z cos t)
    EXPECT_VEC_NEAR(c.view, 1 - 2 * std::sin(t), 2, 3 - 2 * std::cos(t), kTol);
    EXPECT_VEC_NEAR(c.upVector, s * std::cos(t), s, -s * std::sin(t), kTol);
    EXPECT_VEC_EQ(c.position, 1.0f, 2.0f, 3.0f, 1.0f);
    EXPECT_EQ(LGLCamera::accumulatedPitch, 0.0f);
}

TEST_F(LGLCameraTest, PositivePitchLiftsSightAndTurnsUpAboutTheStrafeAxis)
{
    LGLCamera c = lookingDownMinusZ();
    const double p = 0.3;
    c.RotateView(0.0f, 0.3f);
    // The axis is sight x up = +x: (x, y, z) -> (x, y cos p - z sin p, y sin p + z cos p).
    EXPECT_VEC_NEAR(c.view, 0, 2 * std::sin(p), -2 * std::cos(p), kTol);
    EXPECT_VEC_NEAR(c.upVector, 0, std::cos(p), std::sin(p), kTol);
    EXPECT_FLOAT_EQ(LGLCamera::accumulatedPitch, -0.3f);
}

TEST_F(LGLCameraTest, RotateViewPitchesBeforeItYaws)
{
    LGLCamera c = lookingDownMinusZ();
    const double p = 0.1, y = -0.1;
    c.RotateView(-0.1f, 0.1f);
    // Pitch first: sight (0, 2 sin p, -2 cos p), up (0, cos p, sin p); then both about y by y.
    EXPECT_VEC_NEAR(c.view, -2 * std::cos(p) * std::sin(y), 2 * std::sin(p), -2 * std::cos(p) * std::cos(y), kTol);
    EXPECT_VEC_NEAR(c.upVector, std::sin(p) * std::sin(y), std::cos(p), std::sin(p) * std::cos(y), kTol);
}

TEST_F(LGLCameraTest, PitchIsNeverClampedWhenMaxPitchIsZero)
{
    LGLCamera c = lookingDownMinusZ();
    c.maxPitch = 0.0f;
    for (int i = 0; i < 4; ++i)
        c.RotateView(0.0f, 0.5f);
    EXPECT_FLOAT_EQ(LGLCamera::accumulatedPitch, -2.0f);
    EXPECT_VEC_NEAR(c.view, 0, 2 * std::sin(2.0), -2 * std::cos(2.0), 1e-4);
    for (int i = 0; i < 3; ++i)
        c.RotateView(0.0f, -1.0f);
    EXPECT_FLOAT_EQ(LGLCamera::accumulatedPitch, 1.0f);
    EXPECT_VEC_NEAR(c.view, 0, 2 * std::sin(-1.0), -2 * std::cos(-1.0), 1e-4);
}

TEST_F(LGLCameraTest, RepeatedDownwardTurnsHoldAccumulatedPitchAtTheBoundWhileTheViewKeepsTurning)
{
    LGLCamera c = lookingDownMinusZ();
    c.maxPitch = kMouseBound;
    for (int i = 1; i <= 5; ++i) {
        c.RotateView(0.0f, -0.1f);
        if (i >= 2) {
            EXPECT_EQ(LGLCamera::accumulatedPitch, kMouseBound) << "after turn " << i;
        }
    }
    // Kept on purpose: the clamp records the bound but never stops the turn, so all 0.5 rad are turned.
    EXPECT_VEC_NEAR(c.view, 0, 2 * std::sin(-0.5), -2 * std::cos(0.5), 1e-4);
}

TEST_F(LGLCameraTest, RepeatedUpwardTurnsHoldAccumulatedPitchAtTheNegativeBoundWhileTheViewKeepsTurning)
{
    LGLCamera c = lookingDownMinusZ();
    c.maxPitch = kMouseBound;
    for (int i = 1; i <= 5; ++i) {
        c.RotateView(0.0f, 0.1f);
        if (i >= 2) {
            EXPECT_EQ(LGLCamera::accumulatedPitch, -kMouseBound) << "after turn " << i;
        }
    }
    EXPECT_VEC_NEAR(c.view, 0, 2 * std::sin(0.5), -2 * std::cos(0.5), 1e-4);
    EXPECT_VEC_NEAR(c.upVector, 0, std::cos(0.5), std::sin(0.5), 1e-4);
}

TEST_F(LGLCameraTest, NegativeMaxPitchSkipsThePitchButStillYaws)
{
    LGLCamera c = lookingDownMinusZ();
    c.maxPitch = -0.2f;
    const double y = 0.3;
    c.RotateView(0.3f, 0.1f);
    EXPECT_EQ(LGLCamera::accumulatedPitch, 0.2f);
    EXPECT_VEC_NEAR(c.view, -2 * std::sin(y), 0, -2 * std::cos(y), kTol);
    EXPECT_VEC_NEAR(c.upVector, 0, 1, 0, kTol);
}

TEST_F(LGLCameraTest, TwoCamerasShareAccumulatedPitch)
{
    LGLCamera a = lookingDownMinusZ();
    LGLCamera b = lookingDownMinusZ();
    a.maxPitch = 0.2f;
    b.maxPitch = 0.2f;
    a.RotateView(0.0f, 0.15f);
    EXPECT_FLOAT_EQ(LGLCamera::accumulatedPitch, -0.15f);
    // On its own b would stand at -0.15; it starts from what a left and meets the bound.
    b.RotateView(0.0f, 0.15f);
    EXPECT_EQ(LGLCamera::accumulatedPitch, -0.2f);
    // A camera without a bound carries on from the shared value.
    LGLCamera free = lookingDownMinusZ();
    free.maxPitch = 0.0f;
    free.RotateView(0.0f, 0.1f);
    EXPECT_FLOAT_EQ(LGLCamera::accumulatedPitch, -0.3f);
    // A negative bound on a makes it skip its pitch, whatever b did.
    a.maxPitch = -0.05f;
    const SVector3D before = a.view;
    a.RotateView(0.0f, 0.1f);
    EXPECT_EQ(LGLCamera::accumulatedPitch, 0.05f);
    expectSameVector(a.view, before);
}

TEST_F(LGLCameraTest, RotateViewAboutAnAxisTurnsTheViewAroundTheEyeAndKeepsUp)
{
    LGLCamera c;
    c.SetPosAndView(1, 1, 1, 1, 1, 0, 0.5f, 0.5f, 0);
    c.RotateView(static_cast<float>(M_PI / 2), SVector3D(0, 1, 0));
    EXPECT_VEC_NEAR(c.view, 0, 1, 1, kTol);
    EXPECT_VEC_EQ(c.upVector, 0.5f, 0.5f, 0.0f, 1.0f);
    EXPECT_VEC_EQ(c.position, 1.0f, 1.0f, 1.0f, 1.0f);
    EXPECT_EQ(LGLCamera::accumulatedPitch, 0.0f);

    c.RotateView(static_cast<float>(M_PI / 2), SVector3D(0, 0, 1));  // sight (-1, 0, 0) -> (0, -1, 0)
    EXPECT_VEC_NEAR(c.view, 1, 0, 1, kTol);
}

// ---------------------------------------------------------------- steady turn

TEST_F(LGLCameraTest, RotateViewSteadyPitchesAboutTheWorldUpAxisAndKeepsTheUpVector)
{
    LGLCamera c;
    const float s = std::sin(0.3f), k = std::cos(0.3f);
    c.SetPosAndView(0, 0, 0, 0, 0, -1, s, k, 0);  // a banked up vector
    const double p = 0.2;
    c.RotateViewSteady(0.0f, 0.2f);
    // Axis (0, 0, -1) x (0, 1, 0) = +x, not the axis across the banked up vector.
    EXPECT_VEC_NEAR(c.view, 0, std::sin(p), -std::cos(p), kTol);
    EXPECT_VEC_EQ(c.upVector, s, k, 0.0f, 1.0f);
    EXPECT_FLOAT_EQ(LGLCamera::accumulatedPitch, -0.2f);

    // The free turn of the same camera takes the banked axis (cos 0.3, -sin 0.3, 0) instead.
    LGLCamera free;
    free.SetPosAndView(0, 0, 0, 0, 0, -1, s, k, 0);
    free.RotateView(0.0f, 0.2f);
    EXPECT_GT(std::fabs(free.view.x), 0.01f);
}

TEST_F(LGLCameraTest, RotateViewSteadyYawsAboutWorldYAndKeepsTheUpVector)
{
    LGLCamera c;
    c.SetPosAndView(2, 0, 0, 2, 0, -3, 0, 0, 1);  // the constructor's kind of up vector
    const double y = -0.7;
    c.RotateViewSteady(-0.7f, 0.0f);
    EXPECT_VEC_NEAR(c.view, 2 - 3 * std::sin(y), 0, -3 * std::cos(y), kTol);
    EXPECT_VEC_EQ(c.upVector, 0.0f, 0.0f, 1.0f, 1.0f);
}

TEST_F(LGLCameraTest, RotateViewSteadyRecordsTheBoundButKeepsTurning)
{
    LGLCamera c = lookingDownMinusZ();
    c.maxPitch = 0.1f;
    c.RotateViewSteady(0.0f, 0.3f);
    EXPECT_EQ(LGLCamera::accumulatedPitch, -0.1f);
    EXPECT_VEC_NEAR(c.view, 0, 2 * std::sin(0.3), -2 * std::cos(0.3), kTol);

    c.maxPitch = -0.1f;
    const SVector3D before = c.view;
    c.RotateViewSteady(0.0f, 0.3f);
    EXPECT_EQ(LGLCamera::accumulatedPitch, 0.1f);
    expectSameVector(c.view, before);
}

TEST_F(LGLCameraTest, RotateViewSteadySharesAccumulatedPitchWithRotateView)
{
    LGLCamera a = lookingDownMinusZ();
    LGLCamera b = lookingDownMinusZ();
    a.RotateView(0.0f, 0.25f);
    b.RotateViewSteady(0.0f, -0.75f);
    EXPECT_FLOAT_EQ(LGLCamera::accumulatedPitch, 0.5f);
}

// ---------------------------------------------------------------- bank

TEST_F(LGLCameraTest, BankViewRollsTheUpVectorAboutTheLineOfSight)
{
    LGLCamera c;
    c.SetPosAndView(3, 3, 3, 3, 3, -2, 0, 1, 0);  // sight down -z, length 5
    c.BankView(static_cast<float>(M_PI / 2));
    // Counter-clockwise looking down -z towards the origin: +y goes to +x.
    EXPECT_VEC_NEAR(c.upVector, 1, 0, 0, kTol);
    c.BankView(0.25f);
    EXPECT_VEC_NEAR(c.upVector, std::cos(0.25), -std::sin(0.25), 0, kTol);
    EXPECT_VEC_EQ(c.view, 3.0f, 3.0f, -2.0f, 1.0f);
    EXPECT_VEC_EQ(c.position, 3.0f, 3.0f, 3.0f, 1.0f);
}

// ---------------------------------------------------------------- derived vectors

TEST_F(LGLCameraTest, UpdateMakesStrafePlusXForSightDownMinusZAndUpPlusY)
{
    LGLCamera c;
    c.SetPosAndView(1, 1, 1, 1, 1, -4, 0, 3, 0);
    c.Update();
    EXPECT_VEC_NEAR(c.strafe, 1, 0, 0, kTol);
    EXPECT_VEC_NEAR(c.GetStrafe(), 1, 0, 0, kTol);
}

TEST_F(LGLCameraTest, UpdateNormalisesTheCrossProduct)
{
    LGLCamera c;
    c.SetPosAndView(0, 0, 0, 1, 0, 0, 0, 1, 1);  // (1, 0, 0) x (0, 1, 1) = (0, -1, 1)
    c.Update();
    const double r = std::sqrt(0.5);
    EXPECT_VEC_NEAR(c.strafe, 0, -r, r, kTol);
}

TEST_F(LGLCameraTest, UpdateViewPosNormSetsTheUnitSightDirection)
{
    LGLCamera c;
    c.SetPosAndView(1, 2, 3, 4, 6, 3, 0, 1, 0);  // sight (3, 4, 0)
    c.UpdateViewPosNorm();
    EXPECT_VEC_NEAR(c.viewDirection, 0.6, 0.8, 0, kTol);
}

TEST_F(LGLCameraTest, DerivedVectorsGoStaleUntilRefreshed)
{
    LGLCamera c = lookingDownMinusZ();
    c.Update();
    c.UpdateViewPosNorm();
    c.RotateView(static_cast<float>(M_PI / 2), 0.0f);
    EXPECT_VEC_NEAR(c.strafe, 1, 0, 0, kTol);
    EXPECT_VEC_NEAR(c.viewDirection, 0, 0, -1, kTol);
    c.Update();
    c.UpdateViewPosNorm();
    EXPECT_VEC_NEAR(c.strafe, 0, 0, -1, kTol);
    EXPECT_VEC_NEAR(c.viewDirection, -1, 0, 0, kTol);
}

// ---------------------------------------------------------------- moves

TEST_F(LGLCameraTest, StrafeSlidesEyeAndViewAlongTheStrafeVector)
{
    LGLCamera c = lookingDownMinusZ();
    c.Update();
    c.Strafe(2.5f);
    EXPECT_VEC_NEAR(c.position, 2.5, 0, 0, kTol);
    EXPECT_VEC_NEAR(c.view, 2.5, 0, -2, kTol);
    // It uses the stored vector as it stands, stale or not.
    c.strafe = SVector3D(0, 0, 2);
    c.Strafe(-1.0f);
    EXPECT_VEC_NEAR(c.position, 2.5, 0, -2, kTol);
    EXPECT_VEC_NEAR(c.view, 2.5, 0, -4, kTol);
}

TEST_F(LGLCameraTest, ClimbMovesAlongTheUpVectorScaledByDistance)
{
    LGLCamera c;
    c.SetPosAndView(1, 1, 1, 1, 1, 0, 0, 2, 1);
    c.Climb(1.5f);
    EXPECT_VEC_NEAR(c.position, 1, 4, 2.5, kTol);
    EXPECT_VEC_NEAR(c.view, 1, 4, 1.5, kTol);
}

TEST_F(LGLCameraTest, MoveUpChangesOnlyWorldYWhateverTheUpVector)
{
    LGLCamera c;  // up vector (0, 0, 1)
    c.MoveUp(3.0f);
    EXPECT_VEC_EQ(c.position, 0.0f, 3.0f, 0.0f, 1.0f);
    EXPECT_VEC_EQ(c.view, 0.0f, 4.0f, 0.5f, 1.0f);
    EXPECT_VEC_EQ(c.upVector, 0.0f, 0.0f, 1.0f, 1.0f);
}

TEST_F(LGLCameraTest, MoveByZeroLeavesCameraUnchanged)
{
    LGLCamera c = distinctCamera();
    c.Move(0.0f);
    expectSameCamera(c, distinctCamera());
}

TEST_F(LGLCameraTest, MoveGoesAlongTheLineOfSightByDistance)
{
    LGLCamera c;
    c.SetPosAndView(1, 2, 3, 4, 6, 3, 0, 1, 0);  // sight (3, 4, 0), length 5
    c.Move(10.0f);
    EXPECT_VEC_NEAR(c.position, 7, 10, 3, kTol);
    EXPECT_VEC_NEAR(c.view, 10, 14, 3, kTol);
    c.Move(1.0f);
    EXPECT_VEC_NEAR(c.position, 7.6, 10.8, 3, kTol);
    EXPECT_VEC_NEAR(c.view, 10.6, 14.8, 3, kTol);
}

TEST_F(LGLCameraTest, NegativeMoveGoesBackwards)
{
    LGLCamera c;
    c.SetPosAndView(1, 2, 3, 4, 6, 3, 0, 1, 0);
    c.Move(-5.0f);
    EXPECT_VEC_NEAR(c.position, -2, -2, 3, kTol);
    EXPECT_VEC_NEAR(c.view, 1, 2, 3, kTol);
}

TEST_F(LGLCameraTest, MovedReturnsWhereMoveWouldGoWithoutMoving)
{
    LGLCamera c;
    c.SetPosAndView(1, 2, 3, 4, 6, 3, 0, 1, 0);
    const SVector3D ahead = c.Moved(2.5f);
    EXPECT_VEC_NEAR(ahead, 2.5, 4, 3, kTol);
    EXPECT_VEC_NEAR(c.Moved(-5.0f), -2, -2, 3, kTol);
    EXPECT_VEC_EQ(c.position, 1.0f, 2.0f, 3.0f, 1.0f);
    EXPECT_VEC_EQ(c.view, 4.0f, 6.0f, 3.0f, 1.0f);
}

TEST_F(LGLCameraTest, MovedByZeroReturnsThePosition)
{
    LGLCamera c;
    c.SetPosAndView(1, 2, 3, 4, 6, 3, 0, 1, 0);
    // SetLength(0) of the sight yields the zero vector, so the eye itself comes back.
    SVector3D zero = c.view - c.position;
    float nothing = 0.0f;
    zero.SetLength(nothing);
    EXPECT_TRUE(zero.IsZero());
    EXPECT_VEC_EQ(c.Moved(0.0f), 1.0f, 2.0f, 3.0f, 1.0f);
}

TEST_F(LGLCameraTest, MoveToStepsEyeAndViewTowardsTheTarget)
{
    LGLCamera c;
    c.SetPosAndView(1, 2, 3, 1, 2, 2, 0, 1, 0);
    c.MoveTo(SVector3D(4, 6, 3), 10.0);  // direction (3, 4, 0) / 5
    EXPECT_VEC_NEAR(c.position, 7, 10, 3, kTol);
    EXPECT_VEC_NEAR(c.view, 7, 10, 2, kTol);
    c.MoveTo(SVector3D(7, 10, 0), -0.5);  // direction (0, 0, -1), stepping away
    EXPECT_VEC_NEAR(c.position, 7, 10, 3.5, kTol);
    EXPECT_VEC_NEAR(c.view, 7, 10, 2.5, kTol);
}

TEST_F(LGLCameraTest, MoveToOwnPositionNormalisesAZeroVectorAndLeavesTheCameraUnchanged)
{
    LGLCamera c;
    c.SetPosAndView(1, 2, 3, 1, 2, 2, 0, 1, 0);
    SVector3D zero(0, 0, 0);
    zero.Normalize();
    ASSERT_TRUE(zero.IsZero());  // what Normalize yields for the zero vector
    c.MoveTo(SVector3D(1, 2, 3), 7.0);
    EXPECT_VEC_EQ(c.position, 1.0f, 2.0f, 3.0f, 1.0f);
    EXPECT_VEC_EQ(c.view, 1.0f, 2.0f, 2.0f, 1.0f);
}

// ---------------------------------------------------------------- angles and blend

TEST_F(LGLCameraTest, GetViewAnglesHandsOnTheAnglesOfTheSight)
{
    LGLCamera c;
    c.SetPosAndView(5, 5, 5, 6, 5, 4, 0, 1, 0);  // sight (1, 0, -1)
    double a = -1, b = -1;
    c.GetViewAngles(a, b);
    EXPECT_NEAR(a, M_PI / 4, 1e-6);
    EXPECT_NEAR(b, 0.0, 1e-6);

    c.SetPosAndView(5, 5, 5, 5, 4, 4, 0, 1, 0);  // sight (0, -1, -1): below the horizon
    c.GetViewAngles(a, b);
    EXPECT_NEAR(a, 0.0, 1e-6);
    EXPECT_NEAR(b, M_PI / 4, 1e-6);

    c.SetPosAndView(1, 0, 0, -2, 3, 4, 0, 1, 0);  // the same as the vector's own angles
    double va = 0, vb = 0;
    SVector3D(-3, 3, 4).GetAngles(va, vb);
    c.GetViewAngles(a, b);
    EXPECT_EQ(a, va);
    EXPECT_EQ(b, vb);
}

TEST_F(LGLCameraTest, MorphToZeroCopiesPositionViewAndUpOfTheOther)
{
    LGLCamera c = distinctCamera();
    LGLCamera other;
    other.SetPosAndView(-1, -2, -3, -4, -5, -6, -7, -8, -9);
    c.MorphTo(other, 0.0);
    EXPECT_VEC_EQ(c.position, -1.0f, -2.0f, -3.0f, 4.0f);
    EXPECT_VEC_EQ(c.view, -4.0f, -5.0f, -6.0f, 8.0f);
    EXPECT_VEC_EQ(c.upVector, -7.0f, -8.0f, -9.0f, 12.0f);
    // Everything else keeps its value, the fourth components included.
    EXPECT_VEC_EQ(c.strafe, 13.0f, 14.0f, 15.0f, 16.0f);
    EXPECT_VEC_EQ(c.viewDirection, 17.0f, 18.0f, 19.0f, 20.0f);
    EXPECT_EQ(c.maxPitch, 21.0f);
    EXPECT_VEC_EQ(c.referenceUp, 22.0f, 23.0f, 24.0f, 25.0f);
}

TEST_F(LGLCameraTest, MorphToOneChangesNothing)
{
    LGLCamera c = distinctCamera();
    LGLCamera other;
    other.SetPosAndView(-1, -2, -3, -4, -5, -6, -7, -8, -9);
    c.MorphTo(other, 1.0);
    expectSameCamera(c, distinctCamera());
}

TEST_F(LGLCameraTest, MorphToWeighsTheCurrentCameraByT)
{
    LGLCamera c;
    c.SetPosAndView(4, 8, 12, 0, 0, 0, 0, 4, 0);
    LGLCamera other;
    other.SetPosAndView(0, 0, 0, 8, 4, -4, 4, 0, 0);
    c.MorphTo(other, 0.25);
    EXPECT_VEC_NEAR(c.position, 1, 2, 3, kTol);
    EXPECT_VEC_NEAR(c.view, 6, 3, -3, kTol);
    EXPECT_VEC_NEAR(c.upVector, 3, 1, 0, kTol);
    // The other camera was taken by value and is untouched.
    EXPECT_VEC_EQ(other.position, 0.0f, 0.0f, 0.0f, 1.0f);
}

// ---------------------------------------------------------------- gluLookAt on real GL

class LGLCameraGLTest : public ::ostrum_test::GLTest {
protected:
    void SetUp() override
    {
        ASSERT_NE(frame_test::holdXConnection(), nullptr);
        GLTest::SetUp();
    }
};

std::array<float, 16> currentModelview()
{
    std::array<float, 16> m{};
    glGetFloatv(GL_MODELVIEW_MATRIX, m.data());
    return m;
}

// The look-at matrix built by hand (column-major, as OpenGL stores it).
std::array<double, 16> lookAtByHand(const double eye[3], const double centre[3], const double up[3])
{
    double f[3] = {centre[0] - eye[0], centre[1] - eye[1], centre[2] - eye[2]};
    const double fl = std::sqrt(f[0] * f[0] + f[1] * f[1] + f[2] * f[2]);
    for (double& v : f)
        v /= fl;
    double s[3] = {f[1] * up[2] - f[2] * up[1], f[2] * up[0] - f[0] * up[2], f[0] * up[1] - f[1] * up[0]};
    const double sl = std::sqrt(s[0] * s[0] + s[1] * s[1] + s[2] * s[2]);
    for (double& v : s)
        v /= sl;
    const double u[3] = {s[1] * f[2] - s[2] * f[1], s[2] * f[0] - s[0] * f[2], s[0] * f[1] - s[1] * f[0]};
    std::array<double, 16> m{};
    for (int i = 0; i < 3; ++i) {
        m[i * 4 + 0] = s[i];
        m[i * 4 + 1] = u[i];
        m[i * 4 + 2] = -f[i];
    }
    m[12] = -(s[0] * eye[0] + s[1] * eye[1] + s[2] * eye[2]);
    m[13] = -(u[0] * eye[0] + u[1] * eye[1] + u[2] * eye[2]);
    m[14] = f[0] * eye[0] + f[1] * eye[1] + f[2] * eye[2];
    m[15] = 1.0;
    return m;
}

TEST_F(LGLCameraGLTest, LookLoadsTheLookAtMatrixOfPositionViewAndUp)
{
    LGLCamera c;
    c.SetPosAndView(3, 4, 10, 1, 2, -3, 0.2f, 1, 0.1f);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    c.Look();
    const double eye[3] = {3, 4, 10}, centre[3] = {1, 2, -3}, up[3] = {0.2f, 1, 0.1f};
    const auto expected = lookAtByHand(eye, centre, up);
    const auto m = currentModelview();
    for (int i = 0; i < 16; ++i)
        EXPECT_NEAR(m[i], expected[i], 1e-4) << "element " << i;
}

TEST_F(LGLCameraGLTest, LookAfterATurnMatchesGluLookAtOfTheTurnedVectors)
{
    LGLCamera::accumulatedPitch = 0.0f;
    LGLCamera c;
    c.SetPosAndView(1, 2, 3, 1, 2, 1, 0, 1, 0);  // sight (0, 0, -2)
    c.RotateView(-0.1f, 0.1f);
    LGLCamera::accumulatedPitch = 0.0f;
    // The turned vectors worked out by hand: pitch 0.1 about +x, then yaw -0.1 about y.
    const double p = 0.1, y = -0.1;
    const double view[3] = {1 - 2 * std::cos(p) * std::sin(y), 2 + 2 * std::sin(p), 3 - 2 * std::cos(p) * std::cos(y)};
    const double up[3] = {std::sin(p) * std::sin(y), std::cos(p), std::sin(p) * std::cos(y)};
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    gluLookAt(1, 2, 3, view[0], view[1], view[2], up[0], up[1], up[2]);
    const auto expected = currentModelview();
    glLoadIdentity();
    c.Look();
    const auto m = currentModelview();
    for (int i = 0; i < 16; ++i)
        EXPECT_NEAR(m[i], expected[i], 1e-5) << "element " << i;
}

TEST_F(LGLCameraGLTest, LookMultipliesOntoTheCurrentMatrix)
{
    LGLCamera c;
    c.SetPosAndView(0, 0, 5, 0, 0, 0, 0, 1, 0);  // pure translation by (0, 0, -5)
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glTranslatef(1, 2, 3);
    c.Look();
    const auto m = currentModelview();
    EXPECT_NEAR(m[12], 1, 1e-5);
    EXPECT_NEAR(m[13], 2, 1e-5);
    EXPECT_NEAR(m[14], -2, 1e-5);
    EXPECT_NEAR(m[0], 1, 1e-5);
    EXPECT_NEAR(m[5], 1, 1e-5);
    EXPECT_NEAR(m[10], 1, 1e-5);
}

// A red quad in the plane z = 0, seen by a camera on the +z axis through a 45-degree perspective.
class LGLCameraRenderTest : public ::ostrum_test::GLTest {
protected:
    static constexpr double kDistance = 10.0;
    static constexpr double kFovY = 45.0;

    void SetUp() override
    {
        ASSERT_NE(frame_test::holdXConnection(), nullptr);
        GLTest::SetUp();
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        gluPerspective(kFovY, double(ostrum_test::GLTestWindow::kWidth) / ostrum_test::GLTestWindow::kHeight, 1.0,
                       100.0);
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        glDisable(GL_DEPTH_TEST);
        glDisable(GL_LIGHTING);
        glDisable(GL_TEXTURE_2D);
    }

    static void drawQuad(float x0, float y0, float x1, float y1)
    {
        glColor3f(1, 0, 0);
        glBegin(GL_QUADS);
        glVertex3f(x0, y0, 0);
        glVertex3f(x1, y0, 0);
        glVertex3f(x1, y1, 0);
        glVertex3f(x0, y1, 0);
        glEnd();
    }

    // Window pixel of a point in the plane z = 0 for an eye at (ex, ey, 10) looking down -z.
    static void project(double eyeX, double eyeY, double x, double y, double& wx, double& wy)
    {
        const double halfH = kDistance * std::tan(kFovY / 2 * M_PI / 180);
        const double halfW = halfH * ostrum_test::GLTestWindow::kWidth / ostrum_test::GLTestWindow::kHeight;
        wx = (1 + (x - eyeX) / halfW) * ostrum_test::GLTestWindow::kWidth / 2;
        wy = (1 + (y - eyeY) / halfH) * ostrum_test::GLTestWindow::kHeight / 2;
    }

    static bool isRed(int x, int y)
    {
        const auto p = readPixel(x, y);
        return p[0] == 255 && p[1] == 0 && p[2] == 0;
    }
    static bool isBlack(int x, int y)
    {
        const auto p = readPixel(x, y);
        return p[0] == 0 && p[1] == 0 && p[2] == 0;
    }
};

TEST_F(LGLCameraRenderTest, LookedAtQuadAppearsWhereItProjects)
{
    LGLCamera c;
    c.SetPosAndView(0, 0, static_cast<float>(kDistance), 0, 0, 0, 0, 1, 0);
    c.Look();
    drawQuad(1, 0.5f, 2, 1.5f);
    double left, bottom, right, top;
    project(0, 0, 1, 0.5, left, bottom);
    project(0, 0, 2, 1.5, right, top);
    // Inside, a few pixels from each edge, and outside, a few pixels beyond.
    EXPECT_TRUE(isRed(int(left) + 3, int(bottom) + 3));
    EXPECT_TRUE(isRed(int(right) - 3, int(top) - 3));
    EXPECT_TRUE(isRed(int((left + right) / 2), int((bottom + top) / 2)));
    EXPECT_TRUE(isBlack(int(left) - 3, int((bottom + top) / 2)));
    EXPECT_TRUE(isBlack(int(right) + 3, int((bottom + top) / 2)));
    EXPECT_TRUE(isBlack(int((left + right) / 2), int(bottom) - 3));
    EXPECT_TRUE(isBlack(int((left + right) / 2), int(top) + 3));
    EXPECT_TRUE(isBlack(320, 240));
}

TEST_F(LGLCameraRenderTest, StrafedCameraSeesTheQuadShiftTheOtherWay)
{
    LGLCamera c;
    c.SetPosAndView(0, 0, static_cast<float>(kDistance), 0, 0, 0, 0, 1, 0);
    c.Update();
    c.Strafe(1.5f);  // strafe is +x: the eye moves right, the picture moves left
    c.Look();
    drawQuad(1, 0.5f, 2, 1.5f);
    double left, bottom, right, top;
    project(1.5, 0, 1, 0.5, left, bottom);
    project(1.5, 0, 2, 1.5, right, top);
    ASSERT_LT(left, 320);
    ASSERT_GT(right, 320);
    EXPECT_TRUE(isRed(int(left) + 3, int(bottom) + 3));
    EXPECT_TRUE(isRed(int(right) - 3, int(top) - 3));
    EXPECT_TRUE(isBlack(int(left) - 3, int((bottom + top) / 2)));
    EXPECT_TRUE(isBlack(int(right) + 3, int((bottom + top) / 2)));
}

TEST_F(LGLCameraRenderTest, CameraTurnedAwaySeesNothing)
{
    LGLCamera::accumulatedPitch = 0.0f;
    LGLCamera c;
    c.SetPosAndView(0, 0, static_cast<float>(kDistance), 0, 0, 0, 0, 1, 0);
    c.RotateView(static_cast<float>(M_PI), 0.0f);  // now looking down +z, away from the quad
    c.Look();
    drawQuad(-5, -5, 5, 5);
    EXPECT_TRUE(isBlack(320, 240));
    EXPECT_TRUE(isBlack(10, 10));
    EXPECT_TRUE(isBlack(630, 470));
}

}  // namespace
