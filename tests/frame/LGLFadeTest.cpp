// LGLFadeTest.cpp -- the frame-counted fade to black: its level, the frames it takes, what it draws
// and the state it leaves behind.
#include <ostrum_gl/frame/LGL.h>

#include "LGLTestHelpers.h"

using lgl_test::expectSameFeedback;
using lgl_test::LGLDrawTest;
using ostrum_test::recordFeedback;

class LGLFade : public LGLDrawTest {};

TEST_F(LGLFade, InFadeOutIsTrueRightAfterInitFadeOut)
{
    LGL::fadeLevel = 0.7;
    LGL::InitFadeOut();
    EXPECT_EQ(LGL::fadeLevel, 0.0);
    EXPECT_TRUE(LGL::InFadeOut());
}

TEST_F(LGLFade, InitFadeOutKeepsTheViewport)
{
    glViewport(10, 20, 300, 200);
    LGL::InitFadeOut();
    EXPECT_EQ(LGL::fadeViewport[0], 10);
    EXPECT_EQ(LGL::fadeViewport[1], 20);
    EXPECT_EQ(LGL::fadeViewport[2], 300);
    EXPECT_EQ(LGL::fadeViewport[3], 200);
}

TEST_F(LGLFade, TheHundredthRenderFadeOutEndsTheFade)
{
    LGL::InitFadeOut();
    for (int frame = 1; frame <= 99; ++frame) {
        LGL::RenderFadeOut();
        ASSERT_TRUE(LGL::InFadeOut()) << "frame " << frame;
        ASSERT_NEAR(LGL::fadeLevel, frame / 100.0, 1e-9);
    }
    LGL::RenderFadeOut();
    EXPECT_FALSE(LGL::InFadeOut());
    EXPECT_EQ(LGL::fadeLevel, 1.0);
    // It stays black until the next InitFadeOut.
    LGL::RenderFadeOut();
    EXPECT_EQ(LGL::fadeLevel, 1.0);
    EXPECT_FALSE(LGL::InFadeOut());
    LGL::InitFadeOut();
    EXPECT_TRUE(LGL::InFadeOut());
}

TEST_F(LGLFade, EachFrameDarkensAWhiteQuadByTheFadeLevel)
{
    LGL::InitFadeOut();
    for (int frame = 1; frame <= 100; ++frame) {
        SCOPED_TRACE("frame " + std::to_string(frame));
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        glDisable(GL_DEPTH_TEST);
        setPixelProjection();
        glColor3f(1, 1, 1);
        glBegin(GL_TRIANGLE_STRIP);
        glVertex2i(100, 100);
        glVertex2i(540, 100);
        glVertex2i(100, 380);
        glVertex2i(540, 380);
        glEnd();
        LGL::RenderFadeOut();
        // White under black at alpha = level: 255 * (1 - level); the cleared black stays black.
        const double expected = 255.0 * (1.0 - frame / 100.0);
        auto inside = readPixel(320, 240);
        ASSERT_NEAR(inside[0], expected, 1.0);
        ASSERT_NEAR(inside[1], expected, 1.0);
        ASSERT_NEAR(inside[2], expected, 1.0);
        auto outside = readPixel(20, 20);
        ASSERT_EQ(outside[0], 0);
    }
}

TEST_F(LGLFade, RenderFadeOutCoversTheWholeViewportInBlackAtTheFadeLevel)
{
    LGL::InitFadeOut();
    LGL::RenderFadeOut();
    LGL::RenderFadeOut();
    auto actual = recordFeedback([] { LGL::RenderFadeOut(); });
    // glOrtho(0, 1, 1, 0) puts (x, y) of the unit square at window (640 x, 480 (1 - y)).
    setPixelProjection();
    auto expected = recordFeedback([] {
        glColor4f(0, 0, 0, 0.03f);
        glBegin(GL_TRIANGLE_STRIP);
        glVertex2i(640, 480);
        glVertex2i(0, 480);
        glVertex2i(640, 0);
        glVertex2i(0, 0);
        glEnd();
    });
    ASSERT_EQ(actual.size(), 2u);
    expectSameFeedback(actual, expected);
}

TEST_F(LGLFade, RenderFadeOutLeavesTexturingOffDepthTestOnAndWhiteCurrent)
{
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(-1, 3, -2, 4, -5, 6);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glTranslatef(1, 2, 3);
    GLfloat projectionBefore[16], modelviewBefore[16], projectionAfter[16], modelviewAfter[16];
    glGetFloatv(GL_PROJECTION_MATRIX, projectionBefore);
    glGetFloatv(GL_MODELVIEW_MATRIX, modelviewBefore);
    glEnable(GL_TEXTURE_2D);
    glDisable(GL_DEPTH_TEST);
    glEnable(GL_BLEND);
    glColor4f(0.1f, 0.2f, 0.3f, 0.4f);

    LGL::InitFadeOut();
    LGL::RenderFadeOut();

    EXPECT_FALSE(glIsEnabled(GL_TEXTURE_2D));
    EXPECT_TRUE(glIsEnabled(GL_DEPTH_TEST));
    EXPECT_FALSE(glIsEnabled(GL_BLEND));
    GLfloat colour[4];
    glGetFloatv(GL_CURRENT_COLOR, colour);
    EXPECT_EQ(colour[0], 1.0f);
    EXPECT_EQ(colour[1], 1.0f);
    EXPECT_EQ(colour[2], 1.0f);
    EXPECT_EQ(colour[3], 1.0f);
    GLint mode = 0;
    glGetIntegerv(GL_MATRIX_MODE, &mode);
    EXPECT_EQ(mode, GL_MODELVIEW);
    glGetFloatv(GL_PROJECTION_MATRIX, projectionAfter);
    glGetFloatv(GL_MODELVIEW_MATRIX, modelviewAfter);
    for (int i = 0; i < 16; ++i) {
        EXPECT_EQ(projectionBefore[i], projectionAfter[i]);
        EXPECT_EQ(modelviewBefore[i], modelviewAfter[i]);
    }
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}
