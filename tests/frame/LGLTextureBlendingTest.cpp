// LGLTextureBlendingTest.cpp -- two-texture cross-fades on Mesa: entry points, the combiner state,
// blended pixels at weights 1, 0 and 0.5, and switching off.
#include <ostrum_gl/frame/LGLTextureBlending.h>

#include <ostrum_gl/frame/LGL.h>
#include <ostrum_gl/platform/LGLPlatform.h>

#include "TestSupport.h"

#include <GL/freeglut.h>
#include <GL/glext.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

using namespace ostrum_test;

namespace {

// Colours of the two test textures, made as BMP files by ffmpeg.
const int first[3] = {200, 40, 100};
const int second[3] = {20, 220, 60};

std::string bmpOfColour(const std::string& dir, const char* name, const int rgb[3])
{
    char colour[16];
    std::snprintf(colour, sizeof colour, "0x%02X%02X%02X", rgb[0], rgb[1], rgb[2]);
    const std::string file = dir + "/" + name;
    const std::string command = "ffmpeg -y -nostdin -loglevel error -f lavfi -i color=c=" + std::string(colour) +
                                ":s=16x16,format=bgr24 -frames:v 1 " + file;
    EXPECT_EQ(std::system(command.c_str()), 0) << command;
    return file;
}

GLint activeUnit()
{
    GLint unit = 0;
    glGetIntegerv(GL_ACTIVE_TEXTURE_ARB, &unit);
    return unit;
}

GLint envOfUnit1(GLenum pname)
{
    GLint saved = activeUnit();
    LGLTextureBlending::glActiveTextureARB(GL_TEXTURE1_ARB);
    GLint value = -1;
    glGetTexEnviv(GL_TEXTURE_ENV, pname, &value);
    LGLTextureBlending::glActiveTextureARB(static_cast<unsigned int>(saved));
    return value;
}

struct UnitState {
    bool enabled;
    GLint binding;
};

UnitState unitState(GLenum unit)
{
    GLint saved = activeUnit();
    LGLTextureBlending::glActiveTextureARB(unit);
    UnitState state{glIsEnabled(GL_TEXTURE_2D) == GL_TRUE, 0};
    glGetIntegerv(GL_TEXTURE_BINDING_2D, &state.binding);
    LGLTextureBlending::glActiveTextureARB(static_cast<unsigned int>(saved));
    return state;
}

// A blended quad over the pixels (100, 100)-(300, 300), both units' coordinates from (0, 0) to (1, 1).
void drawBlendedQuad()
{
    auto vertex = [](float s, float t, int x, int y) {
        LGLTextureBlending::glMultiTexCoord2fARB(GL_TEXTURE0_ARB, s, t);
        LGLTextureBlending::glMultiTexCoord2fARB(GL_TEXTURE1_ARB, s, t);
        glVertex2i(x, y);
    };
    glBegin(GL_QUADS);
    vertex(0, 0, 100, 100);
    vertex(1, 0, 300, 100);
    vertex(1, 1, 300, 300);
    vertex(0, 1, 100, 300);
    glEnd();
}

class LGLTextureBlendingTest : public GLTest {
protected:
    void SetUp() override
    {
        GLTest::SetUp();
        setPixelProjection();
        LGLTextureBlending::Init();
        ASSERT_NE(LGLTextureBlending::glActiveTextureARB, nullptr);
        const std::string dir = makeTempDir();
        LGL::CreateTexture(texture0, bmpOfColour(dir, "first.bmp", first));
        LGL::CreateTexture(texture1, bmpOfColour(dir, "second.bmp", second));
        while (glGetError() != GL_NO_ERROR) {
        }
    }
    void TearDown() override
    {
        LGLTextureBlending::glActiveTextureARB(GL_TEXTURE1_ARB);
        glDisable(GL_TEXTURE_2D);
        glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
        LGLTextureBlending::glActiveTextureARB(GL_TEXTURE0_ARB);
        glDisable(GL_TEXTURE_2D);
        glDeleteTextures(1, &texture0);
        glDeleteTextures(1, &texture1);
    }

    // The blended colour at the middle of the quad.
    std::vector<unsigned char> blendAt(float weight)
    {
        glClear(GL_COLOR_BUFFER_BIT);
        LGLTextureBlending::Activate(texture0, texture1, weight);
        drawBlendedQuad();
        LGLTextureBlending::Disactivate();
        return readPixel(200, 200);
    }

    unsigned int texture0 = 0, texture1 = 0;
};

void expectColour(const std::vector<unsigned char>& pixel, double r, double g, double b, double tolerance)
{
    EXPECT_NEAR(pixel[0], r, tolerance);
    EXPECT_NEAR(pixel[1], g, tolerance);
    EXPECT_NEAR(pixel[2], b, tolerance);
}

}  // namespace

TEST_F(LGLTextureBlendingTest, InitFetchesBothEntryPointsOfTheDriver)
{
    EXPECT_EQ(reinterpret_cast<void*>(LGLTextureBlending::glActiveTextureARB),
              LGLPlatform::getProcAddress("glActiveTextureARB"));
    EXPECT_EQ(reinterpret_cast<void*>(LGLTextureBlending::glMultiTexCoord2fARB),
              LGLPlatform::getProcAddress("glMultiTexCoord2fARB"));
    EXPECT_NE(LGLTextureBlending::glMultiTexCoord2fARB, nullptr);
}

TEST_F(LGLTextureBlendingTest, ActivateSetsUpBothUnitsAndTheCombinerAndLeavesUnit1Active)
{
    LGLTextureBlending::Activate(texture0, texture1, 0.25f);
    EXPECT_EQ(activeUnit(), GL_TEXTURE1_ARB);
    UnitState unit0 = unitState(GL_TEXTURE0_ARB), unit1 = unitState(GL_TEXTURE1_ARB);
    EXPECT_TRUE(unit0.enabled);
    EXPECT_EQ(unit0.binding, static_cast<GLint>(texture0));
    EXPECT_TRUE(unit1.enabled);
    EXPECT_EQ(unit1.binding, static_cast<GLint>(texture1));

    EXPECT_EQ(envOfUnit1(GL_TEXTURE_ENV_MODE), GL_COMBINE_ARB);
    EXPECT_EQ(envOfUnit1(GL_COMBINE_RGB_ARB), GL_INTERPOLATE_ARB);
    EXPECT_EQ(envOfUnit1(GL_SOURCE0_RGB_ARB), GL_PREVIOUS_ARB);
    EXPECT_EQ(envOfUnit1(GL_OPERAND0_RGB_ARB), GL_SRC_COLOR);
    EXPECT_EQ(envOfUnit1(GL_SOURCE1_RGB_ARB), GL_TEXTURE);
    EXPECT_EQ(envOfUnit1(GL_OPERAND1_RGB_ARB), GL_SRC_COLOR);
    EXPECT_EQ(envOfUnit1(GL_SOURCE2_RGB_ARB), GL_PRIMARY_COLOR_ARB);
    EXPECT_EQ(envOfUnit1(GL_OPERAND2_RGB_ARB), GL_SRC_ALPHA);

    GLfloat colour[4] = {0, 0, 0, 0};
    glGetFloatv(GL_CURRENT_COLOR, colour);
    EXPECT_FLOAT_EQ(colour[0], 1.0f);
    EXPECT_FLOAT_EQ(colour[1], 1.0f);
    EXPECT_FLOAT_EQ(colour[2], 1.0f);
    EXPECT_FLOAT_EQ(colour[3], 0.25f);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

TEST_F(LGLTextureBlendingTest, WeightOneShowsOnlyTheFirstTexture)
{
    expectColour(blendAt(1.0f), first[0], first[1], first[2], 1);
}

TEST_F(LGLTextureBlendingTest, WeightZeroShowsOnlyTheSecondTexture)
{
    expectColour(blendAt(0.0f), second[0], second[1], second[2], 1);
}

TEST_F(LGLTextureBlendingTest, WeightHalfGivesTheAverageOfBothTextures)
{
    expectColour(blendAt(0.5f), (first[0] + second[0]) / 2.0, (first[1] + second[1]) / 2.0,
                 (first[2] + second[2]) / 2.0, 2);
}

TEST_F(LGLTextureBlendingTest, WeightQuarterMixesOneToThree)
{
    expectColour(blendAt(0.25f), 0.25 * first[0] + 0.75 * second[0], 0.25 * first[1] + 0.75 * second[1],
                 0.25 * first[2] + 0.75 * second[2], 2);
}

TEST_F(LGLTextureBlendingTest, DisactivateSwitchesBothUnitsOffAndLeavesUnit0Active)
{
    LGLTextureBlending::Activate(texture0, texture1, 0.75f);
    LGLTextureBlending::Disactivate();
    EXPECT_EQ(activeUnit(), GL_TEXTURE0_ARB);
    EXPECT_FALSE(unitState(GL_TEXTURE0_ARB).enabled);
    EXPECT_FALSE(unitState(GL_TEXTURE1_ARB).enabled);
    // The combiner of unit 1 and the current colour stay as Activate left them.
    EXPECT_EQ(envOfUnit1(GL_TEXTURE_ENV_MODE), GL_COMBINE_ARB);
    EXPECT_EQ(envOfUnit1(GL_COMBINE_RGB_ARB), GL_INTERPOLATE_ARB);
    GLfloat colour[4] = {0, 0, 0, 0};
    glGetFloatv(GL_CURRENT_COLOR, colour);
    EXPECT_FLOAT_EQ(colour[3], 0.75f);
}

TEST_F(LGLTextureBlendingTest, AfterDisactivateSingleTextureDrawingNeedsTexturingEnabledAgain)
{
    LGLTextureBlending::Activate(texture0, texture1, 0.5f);
    drawBlendedQuad();
    LGLTextureBlending::Disactivate();

    auto drawPlainQuad = [] {
        glClear(GL_COLOR_BUFFER_BIT);
        glColor4f(1, 1, 1, 1);
        glBegin(GL_QUADS);
        glTexCoord2f(0, 0);
        glVertex2i(100, 100);
        glTexCoord2f(1, 0);
        glVertex2i(300, 100);
        glTexCoord2f(1, 1);
        glVertex2i(300, 300);
        glTexCoord2f(0, 1);
        glVertex2i(100, 300);
        glEnd();
    };
    glBindTexture(GL_TEXTURE_2D, texture0);
    drawPlainQuad();
    expectColour(readPixel(200, 200), 255, 255, 255, 0);

    glEnable(GL_TEXTURE_2D);
    drawPlainQuad();
    expectColour(readPixel(200, 200), first[0], first[1], first[2], 1);
}

namespace {
std::string quitMessage;
void recordQuitMessage(const std::string& text, const std::string& caption)
{
    quitMessage = caption + ": " + text;
}
void* findNothing(const char*)
{
    return nullptr;
}
void* findOnlyActiveTexture(const char* name)
{
    return std::strcmp(name, "glActiveTextureARB") == 0 ? LGLPlatform::getProcAddress(name) : nullptr;
}
}  // namespace

// Init runs from a GLUT timer inside the game's main loop; the loop must return because of it.
#define EXPECT_INIT_SHOWS_MESSAGE_AND_QUITS(lookup)                                                          \
    OSTRUM_EXPECT_EXIT_WITH_LINE(                                                                            \
        {                                                                                                    \
            LGLPlatform::setMessageHandler(recordQuitMessage);                                               \
            glutTimerFunc(20, [](int) { LGLTextureBlending::Init(lookup); }, 0);                             \
            glutTimerFunc(10000, [](int) { std::exit(9); }, 0);                                              \
            glutMainLoop();                                                                                  \
            std::printf("main loop returned after \"%s\"\n", quitMessage.c_str());                           \
            std::exit(3);                                                                                    \
        },                                                                                                   \
        3, "main loop returned after \"Error: Multitexturing not supported!\"")

TEST_F(LGLTextureBlendingTest, InitWithoutMultitexturingShowsMessageAndAsksTheMainLoopToQuit)
{
    EXPECT_INIT_SHOWS_MESSAGE_AND_QUITS(findNothing);
}

TEST_F(LGLTextureBlendingTest, InitMissingOnlyOneEntryPointAlsoQuits)
{
    EXPECT_INIT_SHOWS_MESSAGE_AND_QUITS(findOnlyActiveTexture);
}

TEST_F(LGLTextureBlendingTest, SuccessfulInitShowsNoMessage)
{
    quitMessage.clear();
    LGLPlatform::setMessageHandler(recordQuitMessage);
    LGLTextureBlending::Init();
    LGLPlatform::setMessageHandler(nullptr);
    EXPECT_EQ(quitMessage, "");
}
