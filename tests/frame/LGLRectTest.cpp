// LGLRectTest.cpp -- flat rectangles, frames, bare rectangle vertices and windows, observed through
// GL feedback and pixels read back.
#include <ostrum_gl/frame/LGL.h>

#include "LGLTestHelpers.h"

using lgl_test::expectAt;
using lgl_test::expectSameFeedback;
using lgl_test::LGLDrawTest;
using ostrum_test::FeedbackItem;
using ostrum_test::itemsOf;
using ostrum_test::recordFeedback;

namespace {

// A triangle strip through the given (x, y) points, in the order given.
std::vector<FeedbackItem> stripOf(std::initializer_list<std::pair<int, int>> points)
{
    return recordFeedback([&] {
        glBegin(GL_TRIANGLE_STRIP);
        for (auto p : points)
            glVertex2i(p.first, p.second);
        glEnd();
    });
}

// The lines of a feedback recording must run p0-p1, p1-p2, ..., pn-p0.
void expectLoopThrough(const std::vector<FeedbackItem>& items, std::vector<std::pair<float, float>> points)
{
    auto lines = itemsOf(items, GL_LINE_TOKEN);
    ASSERT_EQ(items.size(), points.size());
    ASSERT_EQ(lines.size(), points.size());
    for (size_t i = 0; i < points.size(); ++i) {
        SCOPED_TRACE("line " + std::to_string(i));
        const auto& from = points[i];
        const auto& to = points[(i + 1) % points.size()];
        expectAt(lines[i].vertices[0], from.first, from.second);
        expectAt(lines[i].vertices[1], to.first, to.second);
    }
}

}  // namespace

class LGLRects : public LGLDrawTest {
protected:
    void SetUp() override
    {
        LGLDrawTest::SetUp();
        setPixelProjection();
    }
};

TEST_F(LGLRects, RenderRectDrawsStripRightTopLeftTopRightBottomLeftBottom)
{
    const tRect r{100, 50, 300, 200};
    auto actual = recordFeedback([&] { LGL::RenderRect(r); });
    ASSERT_EQ(actual.size(), 2u);
    expectSameFeedback(actual, stripOf({{300, 50}, {100, 50}, {300, 200}, {100, 200}}));
    expectAt(actual[0].vertices[0], 300, 50);
}

TEST_F(LGLRects, RenderRectWithInsetShrinksEverySide)
{
    const tRect r{100, 50, 300, 200};
    auto actual = recordFeedback([&] { LGL::RenderRect(r, 7); });
    expectSameFeedback(actual, stripOf({{293, 57}, {107, 57}, {293, 193}, {107, 193}}));
}

TEST_F(LGLRects, RenderRectWithInsetLargerThanHalfTheWidthDrawsACrossedStrip)
{
    // 40 wide, inset 30: left becomes 130 and right 110, and the strip is drawn turned inside out.
    const tRect r{100, 100, 140, 200};
    auto actual = recordFeedback([&] { LGL::RenderRect(r, 30); });
    ASSERT_EQ(actual.size(), 2u);
    expectSameFeedback(actual, stripOf({{110, 130}, {130, 130}, {110, 170}, {130, 170}}));
    // Its first vertex, the "right" one, lies left of the second, the "left" one.
    EXPECT_LT(actual[0].vertices[0].x, actual[0].vertices[1].x);
}

TEST_F(LGLRects, RenderRectFrameDrawsLoopRightTopLeftTopLeftBottomRightBottom)
{
    const tRect r{100, 50, 300, 200};
    auto items = recordFeedback([&] { LGL::RenderRectFrame(r); });
    expectLoopThrough(items, {{300, 50}, {100, 50}, {100, 200}, {300, 200}});
}

TEST_F(LGLRects, RenderRectFrameWithInsetKeepsTheOrderOnTheSmallerRectangle)
{
    const tRect r{100, 50, 300, 200};
    auto items = recordFeedback([&] { LGL::RenderRectFrame(r, 10); });
    expectLoopThrough(items, {{290, 60}, {110, 60}, {110, 190}, {290, 190}});
}

TEST_F(LGLRects, RenderRectVerticesIssuesOnlyFourVerticesAtTheGivenDepth)
{
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(0, 640, 0, 480, -10, 10);
    glMatrixMode(GL_MODELVIEW);
    const tRect r{100, 50, 300, 200};
    // Inside the caller's own line loop, so the order shows in the lines; no block of its own.
    auto items = recordFeedback([&] {
        glBegin(GL_LINE_LOOP);
        LGL::RenderRectVertices(r, 4);
        glEnd();
    });
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    expectLoopThrough(items, {{100, 50}, {300, 50}, {300, 200}, {100, 200}});
    // Window depth of z = 4 under glOrtho(..., -10, 10): (1 - 4 / 10) / 2.
    for (const auto& item : items)
        for (const auto& v : item.vertices)
            EXPECT_NEAR(v.z, 0.3f, 1e-5f);
}

TEST_F(LGLRects, RenderWindowDrawsBlendedFillThenFrameInFrameColour)
{
    const tRect r{100, 50, 300, 200};
    const LGL::tGLRGBA fill{0.2f, 0.4f, 0.6f, 0.5f};
    const LGL::tGLRGBA frame{0.9f, 0.8f, 0.7f, 1.0f};
    auto items = recordFeedback([&] { LGL::RenderWindow(r, fill, frame); });
    auto expected = recordFeedback([&] {
        glColor4f(0.2f, 0.4f, 0.6f, 0.5f);
        glBegin(GL_TRIANGLE_STRIP);
        glVertex2i(300, 50);
        glVertex2i(100, 50);
        glVertex2i(300, 200);
        glVertex2i(100, 200);
        glEnd();
        glColor4f(0.9f, 0.8f, 0.7f, 1.0f);
        glBegin(GL_LINE_LOOP);
        glVertex2i(300, 50);
        glVertex2i(100, 50);
        glVertex2i(100, 200);
        glVertex2i(300, 200);
        glEnd();
    });
    expectSameFeedback(items, expected);
}

TEST_F(LGLRects, RenderWindowLeavesBlendingOffAndTheFrameColourCurrent)
{
    const LGL::tGLRGBA fill{0.2f, 0.4f, 0.6f, 0.5f};
    const LGL::tGLRGBA frame{0.9f, 0.8f, 0.7f, 0.6f};
    LGL::RenderWindow(tRect{10, 10, 50, 50}, fill, frame);
    EXPECT_FALSE(glIsEnabled(GL_BLEND));
    GLint src = 0;
    GLint dst = 0;
    glGetIntegerv(GL_BLEND_SRC, &src);
    glGetIntegerv(GL_BLEND_DST, &dst);
    EXPECT_EQ(src, GL_SRC_ALPHA);
    EXPECT_EQ(dst, GL_ONE_MINUS_SRC_ALPHA);
    GLfloat colour[4];
    glGetFloatv(GL_CURRENT_COLOR, colour);
    EXPECT_FLOAT_EQ(colour[0], 0.9f);
    EXPECT_FLOAT_EQ(colour[1], 0.8f);
    EXPECT_FLOAT_EQ(colour[2], 0.7f);
    EXPECT_FLOAT_EQ(colour[3], 0.6f);
}

TEST_F(LGLRects, RenderWindowBlendsItsFillOverWhatIsBelow)
{
    // White below, half-transparent black fill: the inside turns mid grey; the frame is opaque red.
    glColor3f(1, 1, 1);
    LGL::RenderRect(tRect{0, 0, 640, 480});
    LGL::RenderWindow(tRect{100, 100, 300, 200}, LGL::tGLRGBA{0, 0, 0, 0.5f}, LGL::tGLRGBA{1, 0, 0, 1});
    auto inside = readPixel(200, 150);
    EXPECT_NEAR(inside[0], 128, 1);
    EXPECT_NEAR(inside[1], 128, 1);
    EXPECT_NEAR(inside[2], 128, 1);
    auto outside = readPixel(50, 50);
    EXPECT_EQ(outside[1], 255);
    // The left side of the frame runs along x = 100, between two pixel columns: one of them is red.
    auto a = readPixel(99, 150);
    auto b = readPixel(100, 150);
    auto& edge = (a[0] == 255 && a[1] == 0) ? a : b;
    EXPECT_EQ(edge[0], 255);
    EXPECT_EQ(edge[1], 0);
    EXPECT_EQ(edge[2], 0);
}

TEST_F(LGLRects, RenderWindowFromPositionAndSizeSpansWidthAndHeight)
{
    const LGL::tGLRGBA fill{0.2f, 0.4f, 0.6f, 0.5f};
    const LGL::tGLRGBA frame{0.9f, 0.8f, 0.7f, 1.0f};
    auto items = recordFeedback([&] { LGL::RenderWindow(30, 40, 200, 100, fill, frame); });
    auto expected = recordFeedback([&] { LGL::RenderWindow(tRect{30, 40, 230, 140}, fill, frame); });
    expectSameFeedback(items, expected);
    ASSERT_EQ(items.size(), 6u);
    expectAt(items[0].vertices[0], 230, 40);
}
