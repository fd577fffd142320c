// LGLPlatformTest.cpp -- the platform layer on X11 and freeglut: message boxes, quit requests, GL
// entry points and the screen cursor.
#include <ostrum_gl/platform/LGLPlatform.h>

#include "TestSupport.h"

#include <GL/freeglut.h>

#include <cstdlib>

using namespace ostrum_test;

namespace {
std::string lastText, lastCaption;
int handled = 0;
void recordMessage(const std::string& text, const std::string& caption)
{
    lastText = text;
    lastCaption = caption;
    ++handled;
}
}  // namespace

TEST(LGLPlatformTest, DefaultMessageBoxWritesCaptionAndTextLineToStandardError)
{
    StderrCapture err;
    LGLPlatform::messageBox("Multitexturing not supported!", "ERROR");
    EXPECT_EQ(err.take(), "ERROR: Multitexturing not supported!\n");
}

TEST(LGLPlatformTest, InstalledHandlerReceivesEveryMessageInsteadOfStandardError)
{
    handled = 0;
    LGLPlatform::setMessageHandler(recordMessage);
    StderrCapture err;
    LGLPlatform::messageBox("Failed To Open The AVI Stream", "Error");
    EXPECT_EQ(err.take(), "");
    EXPECT_EQ(handled, 1);
    EXPECT_EQ(lastText, "Failed To Open The AVI Stream");
    EXPECT_EQ(lastCaption, "Error");
    LGLPlatform::setMessageHandler(nullptr);
}

TEST(LGLPlatformTest, NullHandlerRestoresTheDefault)
{
    handled = 0;
    LGLPlatform::setMessageHandler(recordMessage);
    LGLPlatform::setMessageHandler(nullptr);
    StderrCapture err;
    LGLPlatform::messageBox("text", "caption");
    EXPECT_EQ(err.take(), "caption: text\n");
    EXPECT_EQ(handled, 0);
}

TEST(LGLPlatformTest, QuitRequestWithoutGlutIsHarmless)
{
    // freeglut would end the process with its own error if asked to leave a loop it never set up.
    EXPECT_EXIT(
        {
            LGLPlatform::postQuit();
            std::exit(7);
        },
        ::testing::ExitedWithCode(7), "");
}

TEST(LGLPlatformTest, QuitRequestMakesTheGlutMainLoopReturn)
{
    EXPECT_EXIT(
        {
            GLTestWindow::ensure();
            glutTimerFunc(20, [](int) { LGLPlatform::postQuit(); }, 0);
            glutMainLoop();
            std::exit(3);
        },
        ::testing::ExitedWithCode(3), "");
}

class LGLPlatformGLTest : public GLTest {};

TEST_F(LGLPlatformGLTest, EntryPointsOfTheDriverAreFound)
{
    EXPECT_NE(LGLPlatform::getProcAddress("glActiveTextureARB"), nullptr);
    EXPECT_NE(LGLPlatform::getProcAddress("glCompressedTexImage2DARB"), nullptr);
    EXPECT_EQ(LGLPlatform::getProcAddress(nullptr), nullptr);
}

TEST(LGLPlatformTest, CursorWarpIsReadBackInScreenPixels)
{
    PointerLock lock;
    LGLPlatform::setCursorPos(123, 456);
    int x = -1, y = -1;
    ASSERT_TRUE(LGLPlatform::getCursorPos(x, y));
    EXPECT_EQ(x, 123);
    EXPECT_EQ(y, 456);
    LGLPlatform::setCursorPos(700, 20);
    ASSERT_TRUE(LGLPlatform::getCursorPos(x, y));
    EXPECT_EQ(x, 700);
    EXPECT_EQ(y, 20);
}

TEST(LGLPlatformTest, CursorWithoutDisplayReadsZeroAndFalse)
{
    EXPECT_EXIT(
        {
            unsetenv("DISPLAY");
            int x = 5;
            int y = 5;
            bool ok = LGLPlatform::getCursorPos(x, y);
            LGLPlatform::setCursorPos(10, 10);
            std::exit(!ok && x == 0 && y == 0 ? 0 : 1);
        },
        ::testing::ExitedWithCode(0), "");
}
