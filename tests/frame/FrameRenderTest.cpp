// FrameRenderTest.cpp -- one frame as a game draws it: reshape, camera turn and Look, a quad, then the
// fade to black over it; the pixels read back show where the quad landed and how dark the fade made it.
#include <ostrum_gl/frame/LGL.h>
#include <ostrum_gl/frame/LGLApp.h>
#include <ostrum_gl/frame/LGLCamera.h>

#include "TestSupport.h"

#include <cmath>

using namespace ostrum_test;

namespace {

class FrameRender : public GLTest {
protected:
    void SetUp() override
    {
        GLTest::SetUp();
        app.ReshapeFunc(GLTestWindow::kWidth, GLTestWindow::kHeight);
        app.camera.SetPosAndView(0, 0, 100, 0, 0, 0, 0, 1, 0);
        glDisable(GL_TEXTURE_2D);
        glDisable(GL_LIGHTING);
        glDisable(GL_CULL_FACE);
    }

    // The frame: identity, Look, a red 10 x 10 quad at the origin facing the camera.
    void drawScene()
    {
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        glLoadIdentity();
        app.camera.Update();
        app.camera.Look();
        glColor3f(1, 0, 0);
        glBegin(GL_QUADS);
        glVertex3f(-5, -5, 0);
        glVertex3f(5, -5, 0);
        glVertex3f(5, 5, 0);
        glVertex3f(-5, 5, 0);
        glEnd();
    }

    // Pixels per world unit at distance 100 with the 17.5-degree vertical field of view.
    static double pixelsPerUnitAt100()
    {
        return (GLTestWindow::kHeight / 2.0) / (100.0 * std::tan(17.5 / 2.0 * M_PI / 180.0));
    }

    LGLApp app;
};

}  // namespace

TEST_F(FrameRender, LookPutsTheQuadInTheMiddleOfTheWindow)
{
    drawScene();
    const int halfWidthPx = static_cast<int>(5 * pixelsPerUnitAt100());  // about 78 pixels
    EXPECT_EQ(readPixel(320, 240)[0], 255);
    EXPECT_EQ(readPixel(320 + halfWidthPx - 3, 240)[0], 255);
    EXPECT_EQ(readPixel(320 + halfWidthPx + 3, 240)[0], 0);
    EXPECT_EQ(readPixel(320, 240 - halfWidthPx - 3)[0], 0);
}

TEST_F(FrameRender, TurningTheCameraLeftMovesTheQuadRight)
{
    const float yaw = 0.05f;  // a positive yaw turns the line of sight towards -x
    LGLCamera::accumulatedPitch = 0;
    app.camera.RotateView(yaw, 0.0f);
    drawScene();
    const int shift = static_cast<int>(std::lround(100.0 * std::tan(yaw) * pixelsPerUnitAt100()));
    EXPECT_GT(shift, 70);
    EXPECT_EQ(readPixel(320 + shift, 240)[0], 255);
    EXPECT_EQ(readPixel(320 - 20, 240)[0], 0);
}

TEST_F(FrameRender, FiftyFadeFramesHalveTheQuadAndLeaveTheBackgroundBlack)
{
    LGL::InitFadeOut();
    for (int frame = 0; frame < 50; ++frame) {
        drawScene();
        LGL::RenderFadeOut();
    }
    EXPECT_TRUE(LGL::InFadeOut());
    EXPECT_NEAR(LGL::fadeLevel, 0.5, 1e-9);
    // red * (1 - 0.5) over a cleared scene
    std::vector<unsigned char> centre = readPixel(320, 240);
    EXPECT_NEAR(centre[0], 127.5, 1.5);
    EXPECT_EQ(centre[1], 0);
    EXPECT_EQ(readPixel(20, 20)[0], 0);

    for (int frame = 50; frame < 100; ++frame) {
        drawScene();
        LGL::RenderFadeOut();
    }
    EXPECT_FALSE(LGL::InFadeOut());
    EXPECT_EQ(readPixel(320, 240)[0], 0);
}
