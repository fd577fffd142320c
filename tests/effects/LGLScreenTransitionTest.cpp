// LGLScreenTransitionTest.cpp -- fades to and from black: starting, stepping per frame, holding on a
// controlled clock, the end state, and the overlay drawn on Mesa.
#include <ostrum_gl/effects/LGLScreenTransition.h>

#include "TestSupport.h"

#include <GL/gl.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <utility>
#include <vector>

using ostrum_test::FeedbackItem;
using ostrum_test::GLTest;
using ostrum_test::itemsOf;
using ostrum_test::recordFeedback;

namespace {

// The time the transitions see while a test runs, in milliseconds.
int64_t fakeNow = 0;
int64_t fakeClock()
{
    return fakeNow;
}

int64_t steadyMilliseconds()
{
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

class LGLScreenTransitionTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        fakeNow = 50000;
        LGLScreenTransition::clockHook = fakeClock;
    }
    void TearDown() override { LGLScreenTransition::clockHook = nullptr; }
};

class LGLScreenTransitionRenderTest : public GLTest {
protected:
    void SetUp() override
    {
        GLTest::SetUp();
        fakeNow = 50000;
        LGLScreenTransition::clockHook = fakeClock;
        glDisable(GL_BLEND);
        glDisable(GL_TEXTURE_2D);
        glDisable(GL_CULL_FACE);
        glDisable(GL_LIGHTING);
        glDisable(GL_FOG);
        glDisable(GL_ALPHA_TEST);
        glEnable(GL_DEPTH_TEST);
    }
    void TearDown() override
    {
        LGLScreenTransition::clockHook = nullptr;
        // The overlay leaves the depth test on; later tests of this program start with it off.
        glDisable(GL_DEPTH_TEST);
        glDisable(GL_BLEND);
        glDisable(GL_TEXTURE_2D);
        glColor4f(1.0f, 1.0f, 1.0f, 1.0f);
    }

    // Fills the colour buffer with one grey level so that the overlay's blending shows.
    static void clearTo(float grey)
    {
        glClearColor(grey, grey, grey, 1.0f);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        glClearColor(0, 0, 0, 0);
    }

    // The polygons that one render produces.
    static std::vector<FeedbackItem> overlayPolygons(LGLScreenTransition& t)
    {
        return itemsOf(recordFeedback([&] { t.render(); }), GL_POLYGON_TOKEN);
    }
};

}  // namespace

// ---------------------------------------------------------------- construction and starting

TEST_F(LGLScreenTransitionTest, ConstructorLeavesTheTransitionDisabledWithoutParameters)
{
    LGLScreenTransition t;
    EXPECT_EQ(t.state, 0);
    EXPECT_TRUE(t.params.empty());
    EXPECT_EQ(t.action, -1);
    EXPECT_EQ(t.value, 0.0);
    EXPECT_FALSE(t.holding);
    EXPECT_EQ(t.holdStart, 0);
    EXPECT_FALSE(t.atEnd());
}

TEST_F(LGLScreenTransitionTest, FadeOutStartsClearAndFadeInStartsBlack)
{
    LGLScreenTransition out;
    out.init("fade_out", "0.25");
    EXPECT_EQ(out.action, 0);
    EXPECT_EQ(out.value, 0.0);
    EXPECT_EQ(out.state, 1);
    EXPECT_FALSE(out.holding);
    EXPECT_FALSE(out.atEnd());

    LGLScreenTransition in;
    in.init("fade_in", "0.25");
    EXPECT_EQ(in.action, 1);
    EXPECT_EQ(in.value, 1.0);
    EXPECT_EQ(in.state, 1);
    EXPECT_FALSE(in.holding);
}

TEST_F(LGLScreenTransitionTest, InitReadsEveryParameterInOrder)
{
    LGLScreenTransition t;
    t.init("fade_out", "0.5 10");
    EXPECT_THAT(t.params, ::testing::ElementsAre(0.5, 10.0));
    t.init("fade_out", "0.125 2.5 7");
    EXPECT_THAT(t.params, ::testing::ElementsAre(0.125, 2.5, 7.0));
    // Blanks side by side or at either end make no parameters of their own.
    t.init("fade_in", " 0.5  3 ");
    EXPECT_THAT(t.params, ::testing::ElementsAre(0.5, 3.0));
    // Pieces that are not numbers read as atof reads them.
    t.init("fade_in", "abc 4x");
    EXPECT_THAT(t.params, ::testing::ElementsAre(0.0, 4.0));
}

TEST_F(LGLScreenTransitionTest, EmptyParameterTextLeavesParametersEmptyAndTheOverlayStill)
{
    LGLScreenTransition t;
    t.init("fade_out", "");
    EXPECT_TRUE(t.params.empty());
    for (int i = 0; i < 10; ++i)
        t.handle();
    EXPECT_EQ(t.value, 0.0);
    EXPECT_EQ(t.state, 2);
    EXPECT_FALSE(t.atEnd());
}

TEST_F(LGLScreenTransitionTest, UnknownActionEndsTheProcessWithItsMessage)
{
    LGLScreenTransition t;
    OSTRUM_EXPECT_EXIT_WITH_LINE(t.init("fade_sideways", "0.25"), 255,
                                 "ERROR in LGLScreenTransition::init:  Unknown action 'fade_sideways'");
    // The action text is compared exactly: another spelling is unknown too.
    OSTRUM_EXPECT_EXIT_WITH_LINE(t.init("Fade_Out", "0.25"), 255,
                                 "ERROR in LGLScreenTransition::init:  Unknown action 'Fade_Out'");
    OSTRUM_EXPECT_EXIT_WITH_LINE(t.init("", ""), 255, "ERROR in LGLScreenTransition::init:  Unknown action ''");
}

TEST_F(LGLScreenTransitionTest, NewInitRestartsFromAnyState)
{
    LGLScreenTransition t;
    t.init("fade_out", "0.5 1");
    for (int i = 0; i < 3; ++i)
        t.handle();
    fakeNow += 100;
    t.handle();
    ASSERT_TRUE(t.atEnd());
    ASSERT_TRUE(t.holding);

    t.init("fade_in", "0.2");
    EXPECT_EQ(t.state, 1);
    EXPECT_EQ(t.action, 1);
    EXPECT_EQ(t.value, 1.0);
    EXPECT_FALSE(t.holding);
    EXPECT_THAT(t.params, ::testing::ElementsAre(0.2));

    t.disable();
    t.init("fade_out", "0.5");
    EXPECT_EQ(t.state, 1);
    EXPECT_EQ(t.value, 0.0);
}

// ---------------------------------------------------------------- stepping

TEST_F(LGLScreenTransitionTest, FirstHandleMakesTheTransitionRunning)
{
    LGLScreenTransition t;
    t.init("fade_out", "0.1");
    t.handle();
    EXPECT_EQ(t.state, 2);
    EXPECT_DOUBLE_EQ(t.value, 0.1);
}

TEST_F(LGLScreenTransitionTest, FadeOutByAQuarterIsBlackAfterFourFramesAndEndsInTheFifth)
{
    LGLScreenTransition t;
    t.init("fade_out", "0.25");
    const double expected[4] = {0.25, 0.5, 0.75, 1.0};
    for (double v : expected) {
        t.handle();
        EXPECT_EQ(t.value, v);
        EXPECT_FALSE(t.atEnd());
    }
    t.handle();
    EXPECT_EQ(t.value, 1.0);
    EXPECT_TRUE(t.atEnd());
    EXPECT_EQ(t.state, 3);
}

TEST_F(LGLScreenTransitionTest, FadeOutStepPastOneIsClampedToExactlyOne)
{
    LGLScreenTransition t;
    t.init("fade_out", "0.3");
    for (int i = 0; i < 3; ++i)
        t.handle();
    EXPECT_NEAR(t.value, 0.9, 1e-12);
    t.handle();
    EXPECT_EQ(t.value, 1.0);
    EXPECT_FALSE(t.atEnd());
    t.handle();
    EXPECT_TRUE(t.atEnd());
}

TEST_F(LGLScreenTransitionTest, FadeInByPointThreeClampsAtZeroAfterFourFrames)
{
    LGLScreenTransition t;
    t.init("fade_in", "0.3");
    const double expected[3] = {0.7, 0.4, 0.1};
    for (double v : expected) {
        t.handle();
        EXPECT_NEAR(t.value, v, 1e-12);
        EXPECT_FALSE(t.atEnd());
    }
    t.handle();
    EXPECT_EQ(t.value, 0.0);
    EXPECT_FALSE(t.atEnd());
    t.handle();
    EXPECT_EQ(t.value, 0.0);
    EXPECT_TRUE(t.atEnd());
}

TEST_F(LGLScreenTransitionTest, FadeOutWithAHoldStaysBlackAndEndsOneSecondLater)
{
    LGLScreenTransition t;
    t.init("fade_out", "0.5 10");
    t.handle();
    EXPECT_EQ(t.value, 0.5);
    t.handle();
    EXPECT_EQ(t.value, 1.0);
    EXPECT_FALSE(t.holding);
    // The frame that finds the overlay black starts the hold.
    fakeNow = 60000;
    t.handle();
    EXPECT_TRUE(t.holding);
    EXPECT_EQ(t.holdStart, 60000);
    EXPECT_FALSE(t.atEnd());
    // Black and not ended for the whole second, however many frames pass.
    for (int64_t ms = 60000; ms <= 60999; ms += 111) {
        fakeNow = ms;
        t.handle();
        EXPECT_EQ(t.value, 1.0);
        EXPECT_FALSE(t.atEnd()) << ms;
    }
    fakeNow = 60999;
    t.handle();
    EXPECT_FALSE(t.atEnd());
    EXPECT_EQ(t.holdStart, 60000);
    fakeNow = 61000;
    t.handle();
    EXPECT_TRUE(t.atEnd());
    EXPECT_EQ(t.value, 1.0);
}

TEST_F(LGLScreenTransitionTest, FadeInWithAHoldEndsAfterTheHoldOnceClear)
{
    LGLScreenTransition t;
    t.init("fade_in", "0.5 2.5");
    t.handle();
    t.handle();
    ASSERT_EQ(t.value, 0.0);
    fakeNow = 1000;
    t.handle();
    EXPECT_TRUE(t.holding);
    fakeNow = 1249;
    t.handle();
    EXPECT_FALSE(t.atEnd());
    fakeNow = 1250;
    t.handle();
    EXPECT_TRUE(t.atEnd());
}

TEST_F(LGLScreenTransitionTest, HoldOfZeroEndsOnTheFrameThatFindsTheOverlayBlack)
{
    LGLScreenTransition t;
    t.init("fade_out", "0.5 0");
    t.handle();
    t.handle();
    EXPECT_FALSE(t.atEnd());
    t.handle();
    EXPECT_TRUE(t.holding);
    EXPECT_TRUE(t.atEnd());
}

TEST_F(LGLScreenTransitionTest, HandleWhileDisabledChangesNothing)
{
    LGLScreenTransition fresh;
    fresh.handle();
    EXPECT_EQ(fresh.state, 0);
    EXPECT_EQ(fresh.value, 0.0);

    LGLScreenTransition t;
    t.init("fade_out", "0.25");
    t.handle();
    t.disable();
    t.handle();
    EXPECT_EQ(t.state, 0);
    EXPECT_EQ(t.value, 0.25);
}

TEST_F(LGLScreenTransitionTest, DisableEndsTheTransitionWhateverItsState)
{
    LGLScreenTransition t;
    t.init("fade_out", "0.5");
    t.disable();
    EXPECT_EQ(t.state, 0);
    t.init("fade_out", "0.5");
    for (int i = 0; i < 3; ++i)
        t.handle();
    ASSERT_TRUE(t.atEnd());
    t.disable();
    EXPECT_EQ(t.state, 0);
    EXPECT_FALSE(t.atEnd());
}

// ---------------------------------------------------------------- copies and the clock

TEST_F(LGLScreenTransitionTest, CopiesAndMovesCarryEveryMember)
{
    LGLScreenTransition t;
    t.init("fade_in", "0.25 3");
    t.handle();
    t.handle();
    t.handle();
    t.handle();
    t.handle();
    ASSERT_TRUE(t.holding);

    auto same = [](const LGLScreenTransition& a, const LGLScreenTransition& b) {
        EXPECT_EQ(a.value, b.value);
        EXPECT_EQ(a.params, b.params);
        EXPECT_EQ(a.action, b.action);
        EXPECT_EQ(a.state, b.state);
        EXPECT_EQ(a.holdStart, b.holdStart);
        EXPECT_EQ(a.holding, b.holding);
    };
    LGLScreenTransition copy(t);
    same(copy, t);
    LGLScreenTransition assigned;
    assigned = t;
    same(assigned, t);
    LGLScreenTransition source(t);
    LGLScreenTransition moved(std::move(source));
    same(moved, t);
    LGLScreenTransition moveAssigned;
    LGLScreenTransition source2(t);
    moveAssigned = std::move(source2);
    same(moveAssigned, t);
    // The copy's parameters are its own.
    copy.params[0] = 9.0;
    EXPECT_EQ(t.params[0], 0.25);
}

TEST_F(LGLScreenTransitionTest, ClockHookReplacesTheSteadyClock)
{
    fakeNow = 123456;
    EXPECT_EQ(LGLScreenTransition::now(), 123456);
    fakeNow = -5;
    EXPECT_EQ(LGLScreenTransition::now(), -5);
}

TEST_F(LGLScreenTransitionTest, WithoutAHookTimeIsTheSteadyClockInMilliseconds)
{
    LGLScreenTransition::clockHook = nullptr;
    const int64_t before = steadyMilliseconds();
    const int64_t first = LGLScreenTransition::now();
    const int64_t second = LGLScreenTransition::now();
    const int64_t after = steadyMilliseconds();
    EXPECT_LE(before, first);
    EXPECT_LE(first, second);
    EXPECT_LE(second, after);
}

// ---------------------------------------------------------------- drawing

TEST_F(LGLScreenTransitionRenderTest, RenderDrawsOneBlackQuadOverTheWholeWindowAtTheCurrentOpacity)
{
    LGLScreenTransition t;
    t.init("fade_out", "0.25");
    t.handle();
    t.handle();
    auto polygons = overlayPolygons(t);
    ASSERT_EQ(polygons.size(), 2u);  // the quad reaches feedback as two triangles
    // Corners in window coordinates (y up): top-left, top-right, bottom-right, bottom-left.
    const float W = 640, H = 480;
    const float corners[4][2] = {{0, H}, {W, H}, {W, 0}, {0, 0}};
    // Each triangle of the split quad keeps the quad's vertex order, and together they use all four
    // corners (how the quad is split is the driver's business).
    std::vector<int> used;
    for (const auto& p : polygons) {
        ASSERT_EQ(p.vertices.size(), 3u);
        int previous = -1;
        for (const auto& v : p.vertices) {
            EXPECT_FLOAT_EQ(v.r, 0.0f);
            EXPECT_FLOAT_EQ(v.g, 0.0f);
            EXPECT_FLOAT_EQ(v.b, 0.0f);
            EXPECT_FLOAT_EQ(v.a, 0.5f);
            int corner = -1;
            for (int c = 0; c < 4; ++c) {
                if (std::fabs(v.x - corners[c][0]) < 1e-3 && std::fabs(v.y - corners[c][1]) < 1e-3)
                    corner = c;
            }
            ASSERT_GE(corner, 0) << v.x << ", " << v.y;
            EXPECT_GT(corner, previous);
            previous = corner;
            used.push_back(corner);
        }
    }
    EXPECT_EQ(used.front(), 0);
    for (int c = 0; c < 4; ++c)
        EXPECT_NE(std::find(used.begin(), used.end(), c), used.end()) << c;
}

TEST_F(LGLScreenTransitionRenderTest, RenderBlendsBlackOverWhatIsOnScreen)
{
    LGLScreenTransition t;
    t.init("fade_out", "0.25");
    t.handle();
    clearTo(1.0f);
    t.render();
    // One quarter black over white: 255 * 0.75.
    for (auto xy : {std::pair<int, int>{0, 0}, {639, 479}, {320, 240}, {5, 470}}) {
        auto p = readPixel(xy.first, xy.second);
        EXPECT_NEAR(p[0], 191, 1);
        EXPECT_NEAR(p[1], 191, 1);
        EXPECT_NEAR(p[2], 191, 1);
    }
    t.handle();
    t.handle();
    t.handle();
    clearTo(1.0f);
    t.render();
    auto black = readPixel(320, 240);
    EXPECT_EQ(black[0], 0);
    EXPECT_EQ(black[1], 0);
    EXPECT_EQ(black[2], 0);
}

TEST_F(LGLScreenTransitionRenderTest, RenderCoversWhateverDepthAndMatricesTheSceneLeft)
{
    // A scene's perspective and a depth buffer at the near plane do not hide the overlay.
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glFrustum(-1, 1, -1, 1, 1, 100);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glTranslatef(3, 4, -50);
    glClearDepth(0.0);
    glClear(GL_DEPTH_BUFFER_BIT);
    glClearDepth(1.0);
    LGLScreenTransition t;
    t.init("fade_in", "0.1");
    clearTo(1.0f);
    t.render();
    auto p = readPixel(100, 100);
    EXPECT_EQ(p[0], 0);
    EXPECT_EQ(p[1], 0);
    EXPECT_EQ(p[2], 0);
}

TEST_F(LGLScreenTransitionRenderTest, RenderRestoresMatricesAndLeavesItsStateBehind)
{
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(-7, 9, -3, 5, -20, 20);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glRotatef(30, 0, 0, 1);
    glTranslatef(2, 3, 4);
    GLdouble projection[16], model[16];
    glGetDoublev(GL_PROJECTION_MATRIX, projection);
    glGetDoublev(GL_MODELVIEW_MATRIX, model);
    GLint projectionDepth = 0, modelDepth = 0;
    glGetIntegerv(GL_PROJECTION_STACK_DEPTH, &projectionDepth);
    glGetIntegerv(GL_MODELVIEW_STACK_DEPTH, &modelDepth);
    glDisable(GL_DEPTH_TEST);
    glEnable(GL_TEXTURE_2D);
    glColor4f(0.2f, 0.3f, 0.4f, 0.5f);

    LGLScreenTransition t;
    t.init("fade_out", "0.5");
    t.render();

    GLdouble projectionAfter[16], modelAfter[16];
    glGetDoublev(GL_PROJECTION_MATRIX, projectionAfter);
    glGetDoublev(GL_MODELVIEW_MATRIX, modelAfter);
    for (int i = 0; i < 16; ++i) {
        EXPECT_DOUBLE_EQ(projectionAfter[i], projection[i]);
        EXPECT_DOUBLE_EQ(modelAfter[i], model[i]);
    }
    GLint depth = 0;
    glGetIntegerv(GL_PROJECTION_STACK_DEPTH, &depth);
    EXPECT_EQ(depth, projectionDepth);
    glGetIntegerv(GL_MODELVIEW_STACK_DEPTH, &depth);
    EXPECT_EQ(depth, modelDepth);
    GLint mode = 0;
    glGetIntegerv(GL_MATRIX_MODE, &mode);
    EXPECT_EQ(mode, GL_MODELVIEW);
    EXPECT_TRUE(glIsEnabled(GL_DEPTH_TEST));
    EXPECT_FALSE(glIsEnabled(GL_BLEND));
    EXPECT_FALSE(glIsEnabled(GL_TEXTURE_2D));
    GLfloat colour[4];
    glGetFloatv(GL_CURRENT_COLOR, colour);
    EXPECT_FLOAT_EQ(colour[0], 1.0f);
    EXPECT_FLOAT_EQ(colour[1], 1.0f);
    EXPECT_FLOAT_EQ(colour[2], 1.0f);
    EXPECT_FLOAT_EQ(colour[3], 1.0f);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

TEST_F(LGLScreenTransitionRenderTest, RenderDrawsWhileStartedBeforeTheFirstHandle)
{
    LGLScreenTransition t;
    t.init("fade_in", "0.25");
    ASSERT_EQ(t.state, 1);
    auto polygons = overlayPolygons(t);
    ASSERT_EQ(polygons.size(), 2u);
    EXPECT_FLOAT_EQ(polygons[0].vertices[0].a, 1.0f);
}

TEST_F(LGLScreenTransitionRenderTest, AfterAFadeOutEndsTheBlackOverlayIsDrawnUntilDisable)
{
    LGLScreenTransition t;
    t.init("fade_out", "0.5");
    for (int i = 0; i < 3; ++i)
        t.handle();
    ASSERT_TRUE(t.atEnd());
    for (int frame = 0; frame < 3; ++frame) {
        t.handle();
        ASSERT_TRUE(t.atEnd());
        clearTo(1.0f);
        t.render();
        auto p = readPixel(320, 240);
        EXPECT_EQ(p[0], 0);
        EXPECT_EQ(p[1], 0);
        EXPECT_EQ(p[2], 0);
    }
    t.disable();
    clearTo(1.0f);
    t.render();
    auto p = readPixel(320, 240);
    EXPECT_EQ(p[0], 255);
    EXPECT_EQ(p[1], 255);
    EXPECT_EQ(p[2], 255);
    EXPECT_TRUE(overlayPolygons(t).empty());
}

TEST_F(LGLScreenTransitionRenderTest, RenderWhileDisabledDrawsAndChangesNothing)
{
    LGLScreenTransition t;
    glDisable(GL_DEPTH_TEST);
    glEnable(GL_TEXTURE_2D);
    auto items = recordFeedback([&] { t.render(); });
    EXPECT_TRUE(items.empty());
    EXPECT_FALSE(glIsEnabled(GL_DEPTH_TEST));
    EXPECT_TRUE(glIsEnabled(GL_TEXTURE_2D));
    glDisable(GL_TEXTURE_2D);
}
