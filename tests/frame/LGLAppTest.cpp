// LGLAppTest.cpp -- the application window, full screen, the reshape projection and mouse look with
// the real X pointer.
#include <ostrum_gl/frame/LGLApp.h>
#include <ostrum_gl/platform/LGLPlatform.h>

#include "TestSupport.h"
#include "XConnection.h"

#include <GL/freeglut.h>
#include <GL/glu.h>
#include <GL/glx.h>
#include <X11/Xlib.h>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <string>
#include <utility>

namespace {

using ostrum_test::GLTestWindow;

constexpr float kTol = 1e-5f;
constexpr float kMouseBound = 0.17453292f;

#define EXPECT_VEC_NEAR(v, ex, ey, ez, tol)                                                          \
    do {                                                                                             \
        const SVector3D vec_ = (v);                                                                  \
        EXPECT_NEAR(vec_.x, (ex), (tol));                                                            \
        EXPECT_NEAR(vec_.y, (ey), (tol));                                                            \
        EXPECT_NEAR(vec_.z, (ez), (tol));                                                            \
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

struct Cursor {
    int x = -1;
    int y = -1;
};

Cursor cursorNow()
{
    Cursor c;
    EXPECT_TRUE(LGLPlatform::getCursorPos(c.x, c.y));
    return c;
}

// The X pointer is one per display and test programs run side by side under one X server: tests that
// move it hold this lock (one file per display) so that no other test moves it under their feet.
class PointerLock {
public:
    PointerLock()
    {
        std::string display = std::getenv("DISPLAY") ? std::getenv("DISPLAY") : "none";
        for (char& ch : display)
            if (!std::isalnum(static_cast<unsigned char>(ch)))
                ch = '_';
        const std::string path = "/tmp/ostrum_x_pointer_" + display + ".lock";
        fd_ = ::open(path.c_str(), O_CREAT | O_RDWR, 0666);
        if (fd_ >= 0)
            ::flock(fd_, LOCK_EX);
    }
    ~PointerLock()
    {
        if (fd_ >= 0) {
            ::flock(fd_, LOCK_UN);
            ::close(fd_);
        }
    }
    PointerLock(const PointerLock&) = delete;
    PointerLock& operator=(const PointerLock&) = delete;

private:
    int fd_ = -1;
};

// ---------------------------------------------------------------- construction and copies

TEST(LGLAppTest, ConstructorClearsTheFlagsAndBuildsTheDefaultCamera)
{
    LGLApp app;
    EXPECT_FALSE(app.mouseLook);
    EXPECT_FALSE(app.leftButtonDown);
    EXPECT_FALSE(app.fullScreen);
    expectSameCamera(app.camera, LGLCamera());
}

TEST(LGLAppTest, AssignmentCopiesEveryMember)
{
    LGLApp source;
    source.windowId = 1;
    source.screenWidth = 2;
    source.screenHeight = 3;
    source.screenCentreX = 4;
    source.screenCentreY = 5;
    source.windowX = 6;
    source.windowY = 7;
    source.windowWidth = 8;
    source.windowHeight = 9;
    source.camera.SetPosAndView(1, 2, 3, 4, 5, 6, 7, 8, 9);
    source.camera.strafe = SVector3D(10, 11, 12, 13);
    source.camera.viewDirection = SVector3D(14, 15, 16, 17);
    source.camera.maxPitch = 18;
    source.camera.referenceUp = SVector3D(19, 20, 21, 22);
    source.lastCursor = {23, 24};
    source.mouseLook = true;
    source.leftButtonDown = true;
    source.fullScreen = true;

    LGLApp target;
    target = source;
    EXPECT_EQ(target.windowId, 1);
    EXPECT_EQ(target.screenWidth, 2);
    EXPECT_EQ(target.screenHeight, 3);
    EXPECT_EQ(target.screenCentreX, 4);
    EXPECT_EQ(target.screenCentreY, 5);
    EXPECT_EQ(target.windowX, 6);
    EXPECT_EQ(target.windowY, 7);
    EXPECT_EQ(target.windowWidth, 8);
    EXPECT_EQ(target.windowHeight, 9);
    expectSameCamera(target.camera, source.camera);
    EXPECT_EQ(target.lastCursor.x, 23);
    EXPECT_EQ(target.lastCursor.y, 24);
    EXPECT_TRUE(target.mouseLook);
    EXPECT_TRUE(target.leftButtonDown);
    EXPECT_TRUE(target.fullScreen);

    LGLApp moved;
    moved = std::move(target);
    EXPECT_EQ(moved.windowHeight, 9);
    expectSameCamera(moved.camera, source.camera);
    EXPECT_EQ(moved.lastCursor.y, 24);
    EXPECT_TRUE(moved.fullScreen);
}

// ---------------------------------------------------------------- mouse buttons

class LGLAppMouseTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_NE(frame_test::holdXConnection(), nullptr);
        LGLCamera::accumulatedPitch = 0.0f;
        app.screenCentreX = 700;
        app.screenCentreY = 400;
        app.camera.SetPosAndView(0, 0, 0, 0, 0, -2, 0, 1, 0);
    }
    void TearDown() override { LGLCamera::accumulatedPitch = 0.0f; }

    // Right button pressed with the cursor at (x, y).
    void pressRightAt(int x, int y)
    {
        LGLPlatform::setCursorPos(x, y);
        app.MouseFunc(GLUT_RIGHT_BUTTON, GLUT_DOWN, 0, 0);
        ASSERT_TRUE(app.mouseLook);
        ASSERT_EQ(app.lastCursor.x, x);
        ASSERT_EQ(app.lastCursor.y, y);
    }

    PointerLock lock;
    LGLApp app;
};

TEST_F(LGLAppMouseTest, MouseFuncRecordsTheCursorOnEveryEvent)
{
    LGLPlatform::setCursorPos(123, 234);
    app.MouseFunc(0, 0, 5, 6);
    EXPECT_EQ(app.lastCursor.x, 123);
    EXPECT_EQ(app.lastCursor.y, 234);
    LGLPlatform::setCursorPos(345, 456);
    app.MouseFunc(0, 1, 5, 6);  // a release too; the window coordinates play no part
    EXPECT_EQ(app.lastCursor.x, 345);
    EXPECT_EQ(app.lastCursor.y, 456);
    LGLPlatform::setCursorPos(17, 19);
    app.MouseFunc(1, 0, 345, 456);
    EXPECT_EQ(app.lastCursor.x, 17);
    EXPECT_EQ(app.lastCursor.y, 19);
}

TEST_F(LGLAppMouseTest, RightButtonPressStartsMouseLook)
{
    app.MouseFunc(2, 0, 0, 0);
    EXPECT_TRUE(app.mouseLook);
    EXPECT_FALSE(app.leftButtonDown);
    app.MouseFunc(2, 0, 0, 0);  // a repeated press keeps it on
    EXPECT_TRUE(app.mouseLook);
}

TEST_F(LGLAppMouseTest, LeftPressAfterARightPressEndsMouseLook)
{
    app.MouseFunc(2, 0, 0, 0);
    app.MouseFunc(0, 0, 0, 0);
    EXPECT_FALSE(app.mouseLook);
    EXPECT_TRUE(app.leftButtonDown);
}

TEST_F(LGLAppMouseTest, ReleasingTheRightButtonEndsMouseLook)
{
    app.MouseFunc(2, 0, 0, 0);
    app.MouseFunc(2, 1, 0, 0);
    EXPECT_FALSE(app.mouseLook);
    EXPECT_FALSE(app.leftButtonDown);
}

TEST_F(LGLAppMouseTest, AnyOtherEventClearsTheLeftButtonFlag)
{
    app.MouseFunc(0, 0, 0, 0);
    EXPECT_TRUE(app.leftButtonDown);
    app.MouseFunc(0, 1, 0, 0);
    EXPECT_FALSE(app.leftButtonDown);
    app.MouseFunc(0, 0, 0, 0);
    app.MouseFunc(1, 0, 0, 0);  // middle button
    EXPECT_FALSE(app.leftButtonDown);
    EXPECT_FALSE(app.mouseLook);
    app.MouseFunc(0, 0, 0, 0);
    app.MouseFunc(2, 0, 0, 0);
    EXPECT_FALSE(app.leftButtonDown);
    EXPECT_TRUE(app.mouseLook);
}

// ---------------------------------------------------------------- mouse look

TEST_F(LGLAppMouseTest, MouseLookStepTurnsTheCameraByTheCursorMovementAndRecentres)
{
    pressRightAt(900, 500);
    LGLPlatform::setCursorPos(950, 450);  // 50 pixels right and 50 up
    app.RotateCameraWithMouseMotion();

    // Right gives yaw (900 - 950) / 500 = -0.1, up gives pitch (500 - 450) / 500 = 0.1: pitch about +x
    // first, then yaw about y.
    const double p = 0.1, y = -0.1;
    const double vx = -2 * std::cos(p) * std::sin(y), vy = 2 * std::sin(p), vz = -2 * std::cos(p) * std::cos(y);
    const double ux = std::sin(p) * std::sin(y), uy = std::cos(p), uz = std::sin(p) * std::cos(y);
    EXPECT_VEC_NEAR(app.camera.view, vx, vy, vz, kTol);
    EXPECT_VEC_NEAR(app.camera.upVector, ux, uy, uz, kTol);
    EXPECT_GT(app.camera.view.x, 0.0f);  // turned to the right
    EXPECT_GT(app.camera.view.y, 0.0f);  // and up
    EXPECT_FLOAT_EQ(LGLCamera::accumulatedPitch, -0.1f);
    EXPECT_EQ(app.camera.maxPitch, kMouseBound);

    // The strafe vector follows the turn: (view - position) x up, normalised.
    double sx = vy * uz - vz * uy, sy = vz * ux - vx * uz, sz = vx * uy - vy * ux;
    const double sl = std::sqrt(sx * sx + sy * sy + sz * sz);
    EXPECT_VEC_NEAR(app.camera.strafe, sx / sl, sy / sl, sz / sl, kTol);

    // The cursor went back to the screen centre, and that is where the next step measures from.
    const Cursor now = cursorNow();
    EXPECT_EQ(now.x, 700);
    EXPECT_EQ(now.y, 400);
    EXPECT_EQ(app.lastCursor.x, 700);
    EXPECT_EQ(app.lastCursor.y, 400);
    EXPECT_TRUE(app.mouseLook);
}

TEST_F(LGLAppMouseTest, FirstStepMeasuresFromThePressPositionNotFromTheScreenCentre)
{
    pressRightAt(300, 200);
    LGLPlatform::setCursorPos(310, 205);  // from the centre (700, 400) this would be a large turn
    app.RotateCameraWithMouseMotion();
    const double p = (200 - 205) / 500.0, y = (300 - 310) / 500.0;
    EXPECT_VEC_NEAR(app.camera.view, -2 * std::cos(p) * std::sin(y), 2 * std::sin(p), -2 * std::cos(p) * std::cos(y),
                    kTol);
    EXPECT_FLOAT_EQ(LGLCamera::accumulatedPitch, 0.01f);
    const Cursor now = cursorNow();
    EXPECT_EQ(now.x, 700);
    EXPECT_EQ(now.y, 400);
}

TEST_F(LGLAppMouseTest, LaterStepsMeasureFromTheScreenCentre)
{
    pressRightAt(900, 500);
    LGLPlatform::setCursorPos(950, 450);
    app.RotateCameraWithMouseMotion();
    LGLPlatform::setCursorPos(700 - 25, 400 + 40);  // 25 left and 40 down from the centre
    app.RotateCameraWithMouseMotion();

    // The same two turns worked by hand in angles: (-0.1, 0.1), then (25 / 500, -40 / 500).
    LGLCamera::accumulatedPitch = 0.0f;
    LGLCamera expected;
    expected.SetPosAndView(0, 0, 0, 0, 0, -2, 0, 1, 0);
    expected.maxPitch = kMouseBound;
    expected.RotateView(-0.1f, 0.1f);
    expected.RotateView(0.05f, -0.08f);
    EXPECT_VEC_NEAR(app.camera.view, expected.view.x, expected.view.y, expected.view.z, kTol);
    EXPECT_VEC_NEAR(app.camera.upVector, expected.upVector.x, expected.upVector.y, expected.upVector.z, kTol);
    EXPECT_NEAR(LGLCamera::accumulatedPitch, -0.1f + 0.08f, kTol);
    const Cursor now = cursorNow();
    EXPECT_EQ(now.x, 700);
    EXPECT_EQ(now.y, 400);
}

TEST_F(LGLAppMouseTest, WithoutCursorMovementTheStepNeitherRecentresNorTouchesTheCamera)
{
    pressRightAt(900, 500);
    const LGLCamera before = app.camera;
    app.RotateCameraWithMouseMotion();
    expectSameCamera(app.camera, before);  // maxPitch stays 1 too: the step ended before setting it
    EXPECT_EQ(LGLCamera::accumulatedPitch, 0.0f);
    Cursor now = cursorNow();
    EXPECT_EQ(now.x, 900);
    EXPECT_EQ(now.y, 500);
    EXPECT_EQ(app.lastCursor.x, 900);
    EXPECT_EQ(app.lastCursor.y, 500);

    // Likewise after a step has re-centred the cursor.
    LGLPlatform::setCursorPos(910, 500);
    app.RotateCameraWithMouseMotion();
    const LGLCamera turned = app.camera;
    const float pitch = LGLCamera::accumulatedPitch;
    app.RotateCameraWithMouseMotion();
    expectSameCamera(app.camera, turned);
    EXPECT_EQ(LGLCamera::accumulatedPitch, pitch);
    now = cursorNow();
    EXPECT_EQ(now.x, 700);
    EXPECT_EQ(now.y, 400);
}

TEST_F(LGLAppMouseTest, WithoutMouseLookTheStepDoesNothing)
{
    LGLPlatform::setCursorPos(900, 500);
    app.MouseFunc(0, 0, 0, 0);  // left press: no mouse look
    LGLPlatform::setCursorPos(950, 450);
    const LGLCamera before = app.camera;
    app.RotateCameraWithMouseMotion();
    expectSameCamera(app.camera, before);
    const Cursor now = cursorNow();
    EXPECT_EQ(now.x, 950);
    EXPECT_EQ(now.y, 450);
    EXPECT_EQ(app.lastCursor.x, 900);

    // Nor after the right button was released.
    pressRightAt(900, 500);
    app.MouseFunc(2, 1, 0, 0);
    LGLPlatform::setCursorPos(990, 450);
    app.RotateCameraWithMouseMotion();
    expectSameCamera(app.camera, before);
    EXPECT_EQ(cursorNow().x, 990);
}

TEST_F(LGLAppMouseTest, EveryStepSetsTheTenDegreePitchBound)
{
    pressRightAt(900, 500);
    LGLPlatform::setCursorPos(905, 500);
    app.RotateCameraWithMouseMotion();
    EXPECT_EQ(app.camera.maxPitch, kMouseBound);
    app.camera.maxPitch = 3.0f;
    LGLPlatform::setCursorPos(705, 400);
    app.RotateCameraWithMouseMotion();
    EXPECT_EQ(app.camera.maxPitch, kMouseBound);
}

TEST_F(LGLAppMouseTest, LargeUpwardMoveRecordsTheBoundButTurnsInFull)
{
    pressRightAt(900, 600);
    LGLPlatform::setCursorPos(900, 400);  // 200 pixels up: pitch 0.4
    app.RotateCameraWithMouseMotion();
    EXPECT_EQ(LGLCamera::accumulatedPitch, -kMouseBound);
    EXPECT_VEC_NEAR(app.camera.view, 0, 2 * std::sin(0.4), -2 * std::cos(0.4), kTol);
}

// ---------------------------------------------------------------- window

class LGLAppWindowTest : public ostrum_test::GLTest {
protected:
    void SetUp() override
    {
        ASSERT_NE(frame_test::holdXConnection(), nullptr);
        GLTest::SetUp();
    }
    void TearDown() override
    {
        if (created_ != 0) {
            glutDestroyWindow(created_);
            created_ = 0;
        }
        glutSetWindow(GLTestWindow::ensure());
        GLTestWindow::pumpEvents(5);
    }

    // What the game does around CreateGLWindow: its own display callback, then events.
    void create(LGLApp& app, const std::string& title, int width, int height)
    {
        app.CreateGLWindow(title, width, height);
        created_ = app.windowId;
        glutDisplayFunc([] {});
        GLTestWindow::pumpEvents(10);
        glutSetWindow(created_);
    }

    static std::string windowTitle(int glutWindow)
    {
        glutSetWindow(glutWindow);
        const GLXDrawable drawable = glXGetCurrentDrawable();
        Display* display = XOpenDisplay(nullptr);
        if (display == nullptr)
            return "";
        char* name = nullptr;
        std::string title;
        if (XFetchName(display, drawable, &name) && name != nullptr) {
            title = name;
            XFree(name);
        }
        XCloseDisplay(display);
        return title;
    }

    int created_ = 0;
};

TEST_F(LGLAppWindowTest, CreateGLWindowCentresTheWindowTwentyPixelsAboveTheMiddle)
{
    const int sw = glutGet(GLUT_SCREEN_WIDTH), sh = glutGet(GLUT_SCREEN_HEIGHT);
    ASSERT_GT(sw, 401);
    ASSERT_GT(sh, 301);
    LGLApp app;
    create(app, "ostrum window test", 401, 301);
    EXPECT_EQ(app.screenWidth, sw);
    EXPECT_EQ(app.screenHeight, sh);
    EXPECT_EQ(app.screenCentreX, sw / 2);
    EXPECT_EQ(app.screenCentreY, sh / 2);
    EXPECT_EQ(app.windowWidth, 401);
    EXPECT_EQ(app.windowHeight, 301);
    EXPECT_EQ(app.windowX, sw / 2 - 200);
    EXPECT_EQ(app.windowY, sh / 2 - 150 - 20);
    EXPECT_NE(app.windowId, 0);
    EXPECT_NE(app.windowId, GLTestWindow::ensure());
    glutSetWindow(app.windowId);
    EXPECT_EQ(glutGet(GLUT_WINDOW_X), sw / 2 - 200);
    EXPECT_EQ(glutGet(GLUT_WINDOW_Y), sh / 2 - 170);
    EXPECT_EQ(glutGet(GLUT_WINDOW_WIDTH), 401);
    EXPECT_EQ(glutGet(GLUT_WINDOW_HEIGHT), 301);
    EXPECT_EQ(windowTitle(app.windowId), "ostrum window test");
    EXPECT_FALSE(app.fullScreen);
}

TEST_F(LGLAppWindowTest, WindowOf800x600OnA1920x1080ScreenIsPlacedAt560And220)
{
    if (glutGet(GLUT_SCREEN_WIDTH) != 1920 || glutGet(GLUT_SCREEN_HEIGHT) != 1080)
        GTEST_SKIP() << "needs the 1920 x 1080 screen of the test X server";
    LGLApp app;
    create(app, "800 x 600", 800, 600);
    EXPECT_EQ(app.windowX, 560);
    EXPECT_EQ(app.windowY, 220);
    EXPECT_EQ(app.screenCentreX, 960);
    EXPECT_EQ(app.screenCentreY, 540);
    glutSetWindow(app.windowId);
    EXPECT_EQ(glutGet(GLUT_WINDOW_X), 560);
    EXPECT_EQ(glutGet(GLUT_WINDOW_Y), 220);
    EXPECT_EQ(glutGet(GLUT_WINDOW_WIDTH), 800);
    EXPECT_EQ(glutGet(GLUT_WINDOW_HEIGHT), 600);
}

TEST_F(LGLAppWindowTest, ToggleFullScreenSavesTheWindowedGeometryAndRestoresIt)
{
    const int sw = glutGet(GLUT_SCREEN_WIDTH), sh = glutGet(GLUT_SCREEN_HEIGHT);
    LGLApp app;
    create(app, "full screen", 320, 200);
    // The player moved and resized the window since it was created.
    glutPositionWindow(100, 50);
    glutReshapeWindow(700, 500);
    GLTestWindow::pumpEvents(10);
    glutSetWindow(app.windowId);
    ASSERT_EQ(glutGet(GLUT_WINDOW_X), 100);
    ASSERT_EQ(glutGet(GLUT_WINDOW_WIDTH), 700);

    app.ToggleFullScreen();
    EXPECT_TRUE(app.fullScreen);
    EXPECT_EQ(app.windowX, 100);
    EXPECT_EQ(app.windowY, 50);
    EXPECT_EQ(app.windowWidth, 700);
    EXPECT_EQ(app.windowHeight, 500);
    GLTestWindow::pumpEvents(10);
    glutSetWindow(app.windowId);
    EXPECT_EQ(glutGet(GLUT_FULL_SCREEN), 1);
    EXPECT_EQ(glutGet(GLUT_WINDOW_WIDTH), sw);
    EXPECT_EQ(glutGet(GLUT_WINDOW_HEIGHT), sh);

    app.ToggleFullScreen();
    EXPECT_FALSE(app.fullScreen);
    GLTestWindow::pumpEvents(10);
    glutSetWindow(app.windowId);
    EXPECT_EQ(glutGet(GLUT_FULL_SCREEN), 0);
    EXPECT_EQ(glutGet(GLUT_WINDOW_X), 100);
    EXPECT_EQ(glutGet(GLUT_WINDOW_Y), 50);
    EXPECT_EQ(glutGet(GLUT_WINDOW_WIDTH), 700);
    EXPECT_EQ(glutGet(GLUT_WINDOW_HEIGHT), 500);
    EXPECT_EQ(app.windowX, 100);
    EXPECT_EQ(app.windowWidth, 700);
}

// ---------------------------------------------------------------- reshape

class LGLAppReshapeTest : public ostrum_test::GLTest {
protected:
    void SetUp() override
    {
        ASSERT_NE(frame_test::holdXConnection(), nullptr);
        GLTest::SetUp();
    }
};

std::array<float, 16> matrix(GLenum which)
{
    std::array<float, 16> m{};
    glGetFloatv(which, m.data());
    return m;
}

// gluPerspective written out: column-major, as OpenGL stores it.
std::array<double, 16> perspectiveByHand(double fovY, double aspect, double zNear, double zFar)
{
    const double f = 1.0 / std::tan(fovY * M_PI / 360.0);
    std::array<double, 16> m{};
    m[0] = f / aspect;
    m[5] = f;
    m[10] = (zFar + zNear) / (zNear - zFar);
    m[11] = -1.0;
    m[14] = 2.0 * zFar * zNear / (zNear - zFar);
    return m;
}

void expectViewport(int x, int y, int w, int h)
{
    GLint vp[4] = {-1, -1, -1, -1};
    glGetIntegerv(GL_VIEWPORT, vp);
    EXPECT_EQ(vp[0], x);
    EXPECT_EQ(vp[1], y);
    EXPECT_EQ(vp[2], w);
    EXPECT_EQ(vp[3], h);
}

void expectIdentityModelview()
{
    GLint mode = 0;
    glGetIntegerv(GL_MATRIX_MODE, &mode);
    EXPECT_EQ(mode, GL_MODELVIEW);
    const auto m = matrix(GL_MODELVIEW_MATRIX);
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(m[i], (i % 5 == 0) ? 1.0f : 0.0f) << "element " << i;
}

TEST_F(LGLAppReshapeTest, ReshapeSetsTheViewportAndTheFixedPerspective)
{
    glMatrixMode(GL_MODELVIEW);
    glTranslatef(1, 2, 3);
    glMatrixMode(GL_PROJECTION);
    glOrtho(0, 1, 0, 1, -1, 1);
    const LGLApp app;
    app.ReshapeFunc(600, 400);
    expectViewport(0, 0, 600, 400);
    expectIdentityModelview();
    const auto expected = perspectiveByHand(17.5, 1.5, 5.0, 5000.0);
    const auto p = matrix(GL_PROJECTION_MATRIX);
    for (int i = 0; i < 16; ++i)
        EXPECT_NEAR(p[i], expected[i], 1e-4 * std::max(1.0, std::fabs(expected[i]))) << "element " << i;
}

TEST_F(LGLAppReshapeTest, ReshapeToHeightZeroSetsAOnePixelViewportAndAspectWidthOverOne)
{
    const LGLApp app;
    app.ReshapeFunc(300, 0);
    expectViewport(0, 0, 300, 1);
    expectIdentityModelview();
    const auto expected = perspectiveByHand(17.5, 300.0, 5.0, 5000.0);
    const auto p = matrix(GL_PROJECTION_MATRIX);
    for (int i = 0; i < 16; ++i)
        EXPECT_NEAR(p[i], expected[i], 1e-4 * std::max(1.0, std::fabs(expected[i]))) << "element " << i;
}

TEST_F(LGLAppReshapeTest, ReshapeThenLookShowsAQuadWhereItProjects)
{
    const LGLApp app;
    app.ReshapeFunc(GLTestWindow::kWidth, GLTestWindow::kHeight);
    LGLCamera camera;
    camera.SetPosAndView(0, 0, 100, 0, 0, 0, 0, 1, 0);
    camera.Look();
    glDisable(GL_DEPTH_TEST);
    glColor3f(0, 0, 1);
    glBegin(GL_QUADS);  // x 2..6, y -4..-1 in the plane z = 0, 100 units ahead
    glVertex3f(2, -4, 0);
    glVertex3f(6, -4, 0);
    glVertex3f(6, -1, 0);
    glVertex3f(2, -1, 0);
    glEnd();
    const double halfH = 100 * std::tan(17.5 / 2 * M_PI / 180);
    const double halfW = halfH * GLTestWindow::kWidth / GLTestWindow::kHeight;
    auto wx = [&](double x) { return (1 + x / halfW) * GLTestWindow::kWidth / 2; };
    auto wy = [&](double y) { return (1 + y / halfH) * GLTestWindow::kHeight / 2; };
    auto blue = [](int x, int y) {
        const auto p = ostrum_test::GLTest::readPixel(x, y);
        return p[0] == 0 && p[1] == 0 && p[2] == 255;
    };
    const int midY = int((wy(-4) + wy(-1)) / 2), midX = int((wx(2) + wx(6)) / 2);
    EXPECT_TRUE(blue(int(wx(2)) + 2, midY));
    EXPECT_TRUE(blue(int(wx(6)) - 2, midY));
    EXPECT_TRUE(blue(midX, int(wy(-4)) + 2));
    EXPECT_TRUE(blue(midX, int(wy(-1)) - 2));
    EXPECT_FALSE(blue(int(wx(2)) - 2, midY));
    EXPECT_FALSE(blue(int(wx(6)) + 2, midY));
    EXPECT_FALSE(blue(midX, int(wy(-4)) - 2));
    EXPECT_FALSE(blue(midX, int(wy(-1)) + 2));
}

}  // namespace
