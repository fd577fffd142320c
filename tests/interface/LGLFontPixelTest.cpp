// LGLFontPixelTest.cpp -- LGLFont's pixel writes: begin and end, alignment, shadow, tab columns with
// their dotted leaders, the line writer, and text read back from the frame buffer.
#include <ostrum_gl/interface/LGLFont.h>

#include "LGLFontTestHelpers.h"

#include <GL/freeglut.h>

#include <set>

using namespace font_test;
using ostrum_test::itemsOf;
using ostrum_test::recordFeedback;

namespace {

// Window y of a pixel row given with y downward from the top.
float windowY(int y)
{
    return static_cast<float>(kWindowHeight - y);
}

}  // namespace

class LGLFontPixels : public FontTest {
protected:
    void SetUp() override
    {
        FontTest::SetUp();
        font.create(nullptr, "Arial", 16, 0, 0);
        f = &font.fonts[0];
    }

    // Feedback of `draw` between begin and end.
    std::vector<FeedbackItem> record(const std::function<void()>& draw)
    {
        return recordFeedback([&] {
            font.begin();
            draw();
            font.end();
        });
    }

    LGLFont font;
    const LGLFont::GLGLFont* f = nullptr;
};

// ================================================================ begin and end

TEST_F(LGLFontPixels, BeginSetsAPixelOrthographicProjectionOnFreshMatrices)
{
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glFrustum(-1, 1, -1, 1, 1, 10);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glTranslatef(5, 6, 7);
    GLint modelviewDepth = 0, projectionDepth = 0;
    glGetIntegerv(GL_MODELVIEW_STACK_DEPTH, &modelviewDepth);
    glGetIntegerv(GL_PROJECTION_STACK_DEPTH, &projectionDepth);

    font.begin();
    GLint mode = 0, depth = 0;
    glGetIntegerv(GL_MATRIX_MODE, &mode);
    EXPECT_EQ(mode, GL_PROJECTION);
    EXPECT_EQ(font.windowWidth, kWindowWidth);
    EXPECT_EQ(font.windowHeight, kWindowHeight);
    glGetIntegerv(GL_MODELVIEW_STACK_DEPTH, &depth);
    EXPECT_EQ(depth, modelviewDepth + 1);
    glGetIntegerv(GL_PROJECTION_STACK_DEPTH, &depth);
    EXPECT_EQ(depth, projectionDepth + 1);
    GLfloat m[16];
    glGetFloatv(GL_MODELVIEW_MATRIX, m);
    for (int i = 0; i < 16; ++i)
        EXPECT_FLOAT_EQ(m[i], (i % 5 == 0) ? 1.0f : 0.0f) << "modelview element " << i;
    // glOrtho(0, W, H, 0, -1, 1), column by column.
    const float expected[16] = {2.0f / kWindowWidth, 0, 0, 0, 0, -2.0f / kWindowHeight, 0, 0,
                                0, 0, -1, 0, -1, 1, 0, 1};
    glGetFloatv(GL_PROJECTION_MATRIX, m);
    for (int i = 0; i < 16; ++i)
        EXPECT_NEAR(m[i], expected[i], 1e-6) << "projection element " << i;

    font.end();
    glGetIntegerv(GL_MATRIX_MODE, &mode);
    EXPECT_EQ(mode, GL_MODELVIEW);
    glGetIntegerv(GL_MODELVIEW_STACK_DEPTH, &depth);
    EXPECT_EQ(depth, modelviewDepth);
    glGetIntegerv(GL_PROJECTION_STACK_DEPTH, &depth);
    EXPECT_EQ(depth, projectionDepth);
    glGetFloatv(GL_MODELVIEW_MATRIX, m);
    EXPECT_FLOAT_EQ(m[12], 5.0f);
    EXPECT_FLOAT_EQ(m[14], 7.0f);
    glGetFloatv(GL_PROJECTION_MATRIX, m);
    EXPECT_FLOAT_EQ(m[0], 1.0f);   // 2n / (r - l) of the frustum
    EXPECT_FLOAT_EQ(m[11], -1.0f);
}

// ================================================================ writeAt_rp

TEST_F(LGLFontPixels, WriteAtRpWritesAtThePixelInTheGivenColourAndRestoresTheColour)
{
    glColor4f(0.1f, 0.2f, 0.3f, 0.4f);
    const std::vector<FeedbackVertex> tokens = bitmaps(record([&] { font.writeAt_rp(100, 50, "Hey", 1.0f, 0.5f, 0.0f); }));
    ASSERT_EQ(tokens.size(), 3u);
    EXPECT_NEAR(tokens[0].x, 100.0f, 1e-3);
    EXPECT_NEAR(tokens[1].x, 100.0f + f->widths[code('H')], 1e-3);
    EXPECT_NEAR(tokens[2].x, 100.0f + f->widths[code('H')] + f->widths[code('e')], 1e-3);
    for (const FeedbackVertex& v : tokens) {
        EXPECT_NEAR(v.y, windowY(50), 1e-3);
        EXPECT_FLOAT_EQ(v.r, 1.0f);
        EXPECT_FLOAT_EQ(v.g, 0.5f);
        EXPECT_FLOAT_EQ(v.b, 0.0f);
    }
    GLfloat colour[4];
    glGetFloatv(GL_CURRENT_COLOR, colour);
    EXPECT_FLOAT_EQ(colour[0], 0.1f);
    EXPECT_FLOAT_EQ(colour[1], 0.2f);
    EXPECT_FLOAT_EQ(colour[2], 0.3f);
    EXPECT_FLOAT_EQ(colour[3], 0.4f);
}

TEST_F(LGLFontPixels, WriteAtRpWithoutAColourUsesColorRp)
{
    font.setColor_rp(0.25f, 0.5f, 0.75f);
    const std::vector<FeedbackVertex> tokens = bitmaps(record([&] { font.writeAt_rp(20, 30, std::string("ok")); }));
    ASSERT_EQ(tokens.size(), 2u);
    EXPECT_NEAR(tokens[0].x, 20.0f, 1e-3);
    EXPECT_NEAR(tokens[0].y, windowY(30), 1e-3);
    EXPECT_FLOAT_EQ(tokens[0].r, 0.25f);
    EXPECT_FLOAT_EQ(tokens[0].g, 0.5f);
    EXPECT_FLOAT_EQ(tokens[0].b, 0.75f);
}

TEST_F(LGLFontPixels, RightAlignedTextEndsAtX)
{
    const std::string text = "Score";
    const int w = sumOfWidths(*f, text);
    for (int alignment : {-1, -5}) {
        font.alignment = alignment;
        std::vector<float> end;
        const std::vector<FeedbackVertex> tokens = bitmaps(record([&] {
            font.writeAt_rp(400, 100, text, 1, 1, 1);
            end = rasterPosition();
        }));
        ASSERT_EQ(tokens.size(), text.size());
        EXPECT_NEAR(tokens[0].x, 400.0f - w, 1e-3);
        EXPECT_NEAR(end[0], 400.0f, 1e-3);
    }
}

TEST_F(LGLFontPixels, CentredTextOfWidth101AtX50StartsAtZero)
{
    const std::string text = textOfWidth(*f, 101);
    ASSERT_FALSE(text.empty());
    ASSERT_EQ(font.pixWidthOf(text), 101);
    font.alignment = 0;
    const std::vector<FeedbackVertex> tokens = bitmaps(record([&] { font.writeAt_rp(50, 100, text, 1, 1, 1); }));
    // trunc(50 - 50.5) = trunc(-0.5) = 0: the text starts on the window's left edge and is drawn.
    ASSERT_EQ(tokens.size(), text.size());
    EXPECT_NEAR(tokens[0].x, 0.0f, 1e-3);
}

TEST_F(LGLFontPixels, CentredTextStartsHalfItsWidthLeftOfX)
{
    const std::string text = textOfWidth(*f, 60);
    ASSERT_FALSE(text.empty());
    font.alignment = 0;
    const std::vector<FeedbackVertex> tokens = bitmaps(record([&] { font.writeAt_rp(200, 100, text, 1, 1, 1); }));
    ASSERT_EQ(tokens.size(), text.size());
    EXPECT_NEAR(tokens[0].x, 170.0f, 1e-3);
}

TEST_F(LGLFontPixels, AlignmentAboveOneIsLeft)
{
    font.alignment = 3;
    const std::vector<FeedbackVertex> tokens = bitmaps(record([&] { font.writeAt_rp(200, 100, "Left", 1, 1, 1); }));
    ASSERT_EQ(tokens.size(), 4u);
    EXPECT_NEAR(tokens[0].x, 200.0f, 1e-3);
}

TEST_F(LGLFontPixels, ShadowDrawsTheTextInGreyOnePixelRightAndDownFirst)
{
    font.shadow = true;
    glColor4f(0.9f, 0.1f, 0.1f, 1.0f);
    const std::vector<FeedbackVertex> tokens = bitmaps(record([&] { font.writeAt_rp(100, 60, "Ab", 0, 0, 1); }));
    ASSERT_EQ(tokens.size(), 4u);
    EXPECT_NEAR(tokens[0].x, 101.0f, 1e-3);
    EXPECT_NEAR(tokens[0].y, windowY(61), 1e-3);
    EXPECT_NEAR(tokens[1].x, 101.0f + f->widths[code('A')], 1e-3);
    EXPECT_NEAR(tokens[2].x, 100.0f, 1e-3);
    EXPECT_NEAR(tokens[2].y, windowY(60), 1e-3);
    for (int i = 0; i < 2; ++i) {
        EXPECT_NEAR(tokens[i].r, 0.3f, 1e-6);
        EXPECT_NEAR(tokens[i].g, 0.3f, 1e-6);
        EXPECT_NEAR(tokens[i].b, 0.3f, 1e-6);
    }
    for (int i = 2; i < 4; ++i) {
        EXPECT_FLOAT_EQ(tokens[i].r, 0.0f);
        EXPECT_FLOAT_EQ(tokens[i].b, 1.0f);
    }
    GLfloat colour[4];
    glGetFloatv(GL_CURRENT_COLOR, colour);
    EXPECT_FLOAT_EQ(colour[0], 0.9f);
    EXPECT_FLOAT_EQ(colour[1], 0.1f);
}

TEST_F(LGLFontPixels, ShadowFollowsTheAlignedStart)
{
    font.shadow = true;
    font.alignment = -1;
    const int w = font.pixWidthOf("Ab");
    const std::vector<FeedbackVertex> tokens = bitmaps(record([&] { font.writeAt_rp(300, 60, "Ab", 1, 1, 1); }));
    ASSERT_EQ(tokens.size(), 4u);
    EXPECT_NEAR(tokens[0].x, 300.0f - w + 1, 1e-3);
    EXPECT_NEAR(tokens[2].x, 300.0f - w, 1e-3);
}

TEST_F(LGLFontPixels, PixelWritesUseTheSelectedFont)
{
    font.create(nullptr, "Arial", 30, 0, 0);
    font.selectFont(1);
    const std::vector<FeedbackVertex> tokens = bitmaps(record([&] { font.writeAt_rp(10, 100, "WW", 1, 1, 1); }));
    ASSERT_EQ(tokens.size(), 2u);
    EXPECT_NEAR(tokens[1].x - tokens[0].x, static_cast<float>(font.fonts[1].widths[code('W')]), 1e-3);
    EXPECT_NE(font.fonts[1].widths[code('W')], f->widths[code('W')]);
}

// ================================================================ tab columns

// The x of the first glyph of each column, given the number of characters of each column.
static std::vector<float> columnStarts(const std::vector<FeedbackVertex>& tokens, const std::vector<size_t>& lengths)
{
    std::vector<float> starts;
    size_t index = 0;
    for (size_t length : lengths) {
        starts.push_back(index < tokens.size() ? tokens[index].x : -1.0f);
        index += length;
    }
    return starts;
}

TEST_F(LGLFontPixels, ColumnStepsCompoundFromTheTotalWidth)
{
    // The example of LGLFont.h: with tab width 40, a first column 30 pixels wide puts the second at
    // x + 40; a second column 35 pixels wide then puts the third at x + 40 + 80.
    const std::string first = textOfWidth(*f, 30), second = textOfWidth(*f, 35);
    ASSERT_FALSE(first.empty());
    ASSERT_FALSE(second.empty());
    const std::vector<FeedbackVertex> tokens =
        bitmaps(record([&] { font.writeAt_rp_tab(20, 100, first + "\t" + second + "\tE", 1, 1, 1); }));
    ASSERT_EQ(tokens.size(), first.size() + second.size() + 1);
    const std::vector<float> starts = columnStarts(tokens, {first.size(), second.size(), 1});
    EXPECT_NEAR(starts[0], 20.0f, 1e-3);
    EXPECT_NEAR(starts[1], 60.0f, 1e-3);
    EXPECT_NEAR(starts[2], 140.0f, 1e-3);
    for (const FeedbackVertex& v : tokens)
        EXPECT_NEAR(v.y, windowY(100), 1e-3);
}

TEST_F(LGLFontPixels, TabsAndSlashesBothStartAColumn)
{
    const std::string a = textOfWidth(*f, 50), b = textOfWidth(*f, 20);
    ASSERT_FALSE(a.empty());
    ASSERT_FALSE(b.empty());
    const std::vector<FeedbackVertex> tokens =
        bitmaps(record([&] { font.writeAt_rp_tab(10, 100, a + "/" + b + "\tZ", 1, 1, 1); }));
    ASSERT_EQ(tokens.size(), a.size() + b.size() + 1);
    const std::vector<float> starts = columnStarts(tokens, {a.size(), b.size(), 1});
    // total 50 -> first stop at or past it is 80; total 70 -> 80 again, from the second column's start.
    EXPECT_NEAR(starts[0], 10.0f, 1e-3);
    EXPECT_NEAR(starts[1], 90.0f, 1e-3);
    EXPECT_NEAR(starts[2], 170.0f, 1e-3);
}

TEST_F(LGLFontPixels, EmptyColumnsStillStepToTheNextStop)
{
    const std::vector<FeedbackVertex> tokens = bitmaps(record([&] { font.writeAt_rp_tab(10, 100, "\t\tX", 1, 1, 1); }));
    ASSERT_EQ(tokens.size(), 1u);
    // total stays 0: each empty column steps by the first stop at or past 0, which is 40.
    EXPECT_NEAR(tokens[0].x, 90.0f, 1e-3);
}

TEST_F(LGLFontPixels, ColumnWiderThanTheLastStopAdvancesByTheTotal)
{
    // The first column starts left of the window (its glyphs are clipped away with their raster
    // position); where the second one lands shows the step.
    for (int width : {800, 801, 850}) {
        SCOPED_TRACE("first column " + std::to_string(width) + " pixels");
        const std::string wide = textOfWidth(*f, width);
        ASSERT_FALSE(wide.empty());
        const std::vector<FeedbackVertex> tokens =
            bitmaps(record([&] { font.writeAt_rp_tab(-790, 100, wide + "\tX", 1, 1, 1); }));
        ASSERT_EQ(tokens.size(), 1u);
        // 800 is the last stop itself; past it the step is the total.
        EXPECT_NEAR(tokens[0].x, -790.0f + width, 1e-3);
    }
}

TEST_F(LGLFontPixels, TabWriteWithoutAColourUsesColorRp)
{
    font.setColor_rp(0.5f, 0.25f, 1.0f);
    const std::vector<FeedbackVertex> tokens = bitmaps(record([&] { font.writeAt_rp_tab(10, 100, "a\tb"); }));
    ASSERT_EQ(tokens.size(), 2u);
    for (const FeedbackVertex& v : tokens) {
        EXPECT_FLOAT_EQ(v.r, 0.5f);
        EXPECT_FLOAT_EQ(v.g, 0.25f);
        EXPECT_FLOAT_EQ(v.b, 1.0f);
    }
}

TEST_F(LGLFontPixels, SetTabWidthOnOneFontChangesTheStopsOfEveryFont)
{
    LGLFont other;
    other.setTabWidth(25);
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(LGLFont::tabStops[i], (i + 1) * 25);
    const std::string first = textOfWidth(*f, 30);
    ASSERT_FALSE(first.empty());
    const std::vector<FeedbackVertex> tokens =
        bitmaps(record([&] { font.writeAt_rp_tab(10, 100, first + "\tX", 1, 1, 1); }));
    ASSERT_EQ(tokens.size(), first.size() + 1);
    EXPECT_NEAR(tokens.back().x, 60.0f, 1e-3);  // first stop at or past 30 is now 50
}

TEST_F(LGLFontPixels, TabLinesDrawGreyLeadersBetweenColumnsButNotAfterTheLast)
{
    const std::string a = textOfWidth(*f, 30), b = textOfWidth(*f, 35);
    ASSERT_FALSE(a.empty());
    ASSERT_FALSE(b.empty());
    const std::string text = a + "\t" + b + "\tE";
    EXPECT_TRUE(itemsOf(record([&] { font.writeAt_rp_tab(20, 100, text, 1, 1, 1); }), GL_LINE_TOKEN).empty());

    font.tabLines = true;
    const std::vector<FeedbackItem> lines = itemsOf(record([&] { font.writeAt_rp_tab(20, 100, text, 1, 1, 1); }), GL_LINE_TOKEN);
    ASSERT_EQ(lines.size(), 2u);
    // Column 1: 20 + 30 + 2 to 60 - 2; column 2: 60 + 35 + 2 to 140 - 2.
    const float expected[2][2] = {{52.0f, 58.0f}, {97.0f, 138.0f}};
    for (int i = 0; i < 2; ++i) {
        SCOPED_TRACE("leader " + std::to_string(i));
        ASSERT_EQ(lines[i].vertices.size(), 2u);
        for (int k = 0; k < 2; ++k) {
            EXPECT_NEAR(lines[i].vertices[k].x, expected[i][k], 1e-3);
            EXPECT_NEAR(lines[i].vertices[k].y, windowY(100), 1e-3);
            EXPECT_NEAR(lines[i].vertices[k].r, 0.6f, 1e-6);
            EXPECT_NEAR(lines[i].vertices[k].g, 0.6f, 1e-6);
            EXPECT_NEAR(lines[i].vertices[k].b, 0.6f, 1e-6);
        }
    }
    EXPECT_FALSE(glIsEnabled(GL_LINE_STIPPLE));
    GLint pattern = 0, repeat = 0;
    glGetIntegerv(GL_LINE_STIPPLE_PATTERN, &pattern);
    glGetIntegerv(GL_LINE_STIPPLE_REPEAT, &repeat);
    EXPECT_EQ(pattern, 0x0101);
    EXPECT_EQ(repeat, 1);
}

TEST_F(LGLFontPixels, LeaderLinesAreDottedOnePixelInEight)
{
    font.tabLines = true;
    glClearColor(0, 0, 0, 0);
    glClear(GL_COLOR_BUFFER_BIT);
    const std::string a = textOfWidth(*f, 10);
    ASSERT_FALSE(a.empty());
    // The leader runs from 20 + 10 + 2 = 32 to 20 + 40 - 2 = 58, on the row at y = 200 from the top.
    font.begin();
    font.writeAt_rp_tab(20, 200, a + "\tB", 1, 1, 1);
    font.end();
    const std::vector<unsigned char> red = readRed();
    std::set<int> lit;
    for (int row = kWindowHeight - 201; row <= kWindowHeight - 199; ++row)
        for (int x = 30; x <= 60; ++x)
            if (red[static_cast<size_t>(row) * kWindowWidth + x] == 153)  // grey 0.6
                lit.insert(x);
    EXPECT_EQ(lit, (std::set<int>{32, 40, 48, 56}));
}

// ================================================================ the line writer

TEST_F(LGLFontPixels, WriteLineThreeTimesWritesDownTheLinesAndAdvancesThePosition)
{
    font.setPos_rp(10, 10);
    font.setLineSpacing_rp(20);
    const std::vector<FeedbackVertex> tokens = bitmaps(record([&] {
        font.writeLine_rp_tab("A");
        font.writeLine_rp_tab("B");
        font.writeLine_rp_tab("C");
    }));
    ASSERT_EQ(tokens.size(), 3u);
    const float ys[3] = {windowY(10), windowY(30), windowY(50)};
    for (int i = 0; i < 3; ++i) {
        EXPECT_NEAR(tokens[i].x, 10.0f, 1e-3);
        EXPECT_NEAR(tokens[i].y, ys[i], 1e-3);
    }
    int x = 0, y = 0;
    font.getPos_rp(x, y);
    EXPECT_EQ(x, 10);
    EXPECT_EQ(y, 70);
}

TEST_F(LGLFontPixels, WriteLineAtALineNumberLeavesThePositionAlone)
{
    font.setPos_rp(10, 10);
    font.setLineSpacing_rp(20);
    font.setColor_rp(0.0f, 1.0f, 0.0f);
    const std::vector<FeedbackVertex> tokens = bitmaps(record([&] {
        font.writeLine_rp_tab(2, "A");
        font.writeLine_rp_tab(30, 1, "B");
    }));
    ASSERT_EQ(tokens.size(), 2u);
    EXPECT_NEAR(tokens[0].x, 10.0f, 1e-3);
    EXPECT_NEAR(tokens[0].y, windowY(50), 1e-3);
    EXPECT_NEAR(tokens[1].x, 40.0f, 1e-3);
    EXPECT_NEAR(tokens[1].y, windowY(30), 1e-3);
    EXPECT_FLOAT_EQ(tokens[1].g, 1.0f);
    EXPECT_FLOAT_EQ(tokens[1].r, 0.0f);
    EXPECT_EQ(font.pos_rp.x, 10);
    EXPECT_EQ(font.pos_rp.y, 10);
}

TEST_F(LGLFontPixels, WriteLineSplitsColumns)
{
    font.setPos_rp(10, 40);
    const std::string first = textOfWidth(*f, 30);
    ASSERT_FALSE(first.empty());
    const std::vector<FeedbackVertex> tokens = bitmaps(record([&] { font.writeLine_rp_tab(first + "/X"); }));
    ASSERT_EQ(tokens.size(), first.size() + 1);
    EXPECT_NEAR(tokens.back().x, 50.0f, 1e-3);
}

TEST_F(LGLFontPixels, PositionAndSpacingAccessors)
{
    font.setPos_rp(-4, 123);
    int x = 0, y = 0;
    font.getPos_rp(x, y);
    EXPECT_EQ(x, -4);
    EXPECT_EQ(y, 123);
    EXPECT_EQ(font.pos_rp.x, -4);
    EXPECT_EQ(font.getLineSpacing_rp(), 20);
    font.setLineSpacing_rp(33);
    EXPECT_EQ(font.getLineSpacing_rp(), 33);
    EXPECT_EQ(font.lineSpacing_rp, 33);
}

// ================================================================ text read back from the frame buffer

class LGLFontRendering : public LGLFontPixels {
protected:
    std::vector<unsigned char> drawBlackOnWhite(int x, int y, const std::string& text)
    {
        glClearColor(1, 1, 1, 1);
        glClear(GL_COLOR_BUFFER_BIT);
        font.begin();
        font.writeAt_rp(x, y, text.c_str(), 0, 0, 0);
        font.end();
        return readRed();
    }
};

TEST_F(LGLFontRendering, ArialLineReadsBackAsDarkGlyphsAtTheExpectedPlaceAndWidth)
{
    const std::string text = "Hello World";
    const int w = font.pixWidthOf(text);
    const std::vector<unsigned char> red = drawBlackOnWhite(40, 100, text);
    const Ink ink = inkIn(red, 0, 0, kWindowWidth - 1, kWindowHeight - 1);
    ASSERT_FALSE(ink.empty());
    // One-bit glyphs: every pixel is paper or ink.
    EXPECT_EQ(ink.grey, 0);
    // The baseline is the raster row; "Hello World" has no descender, so the ink ends on it.
    EXPECT_EQ(ink.bottom, kWindowHeight - 100);
    // Arial's capitals and ascenders are 1466 of 2048 units high: 10 pixels at a 14-pixel em.
    EXPECT_GE(ink.height(), 9);
    EXPECT_LE(ink.height(), 11);
    // H starts a side bearing (one pixel at this size) right of x; d ends a bearing short of the width.
    EXPECT_GE(ink.left, 40);
    EXPECT_LE(ink.left, 42);
    EXPECT_LE(ink.right, 40 + w - 1);
    EXPECT_GE(ink.right, 40 + w - 3);
    EXPECT_GT(ink.count, 100);
}

TEST_F(LGLFontRendering, EachAdvanceInPixelsIsTheWidthTableEntry)
{
    for (char c : std::string("HMWaeilo0%\xE9")) {
        SCOPED_TRACE(std::string("character ") + c);
        const int advance = f->widths[static_cast<unsigned char>(c)];
        const std::vector<unsigned char> one = drawBlackOnWhite(100, 100, std::string(1, c));
        const std::vector<unsigned char> two = drawBlackOnWhite(100, 100, std::string(2, c));
        // The pair is the single glyph and the same glyph `advance` pixels further right.
        size_t mismatches = 0;
        for (int y = 60; y < 420; ++y) {
            for (int x = 80; x < 200; ++x) {
                const size_t at = static_cast<size_t>(y) * kWindowWidth + x;
                const bool inkOne = one[at] < 128;
                const bool inkShifted = one[at - advance] < 128;
                const bool inkTwo = two[at] < 128;
                if (inkTwo != (inkOne || inkShifted))
                    ++mismatches;
            }
        }
        EXPECT_EQ(mismatches, 0u);
        EXPECT_FALSE(inkIn(one, 0, 0, kWindowWidth - 1, kWindowHeight - 1).empty());
    }
}

TEST_F(LGLFontRendering, GlyphsSitOnACommonBaselineAtTheRasterPosition)
{
    const std::string text = "HxEz";
    const std::vector<unsigned char> red = drawBlackOnWhite(60, 200, text);
    int x = 60;
    for (char c : text) {
        SCOPED_TRACE(std::string("character ") + c);
        const int advance = f->widths[static_cast<unsigned char>(c)];
        const Ink ink = inkIn(red, x, 0, x + advance - 1, kWindowHeight - 1);
        ASSERT_FALSE(ink.empty());
        EXPECT_EQ(ink.bottom, kWindowHeight - 200);
        x += advance;
    }
}

TEST_F(LGLFontRendering, DescendersReachBelowTheBaseline)
{
    const std::vector<unsigned char> red = drawBlackOnWhite(60, 200, "gpq");
    const Ink ink = inkIn(red, 0, 0, kWindowWidth - 1, kWindowHeight - 1);
    ASSERT_FALSE(ink.empty());
    // Arial's descenders are about 0.21 em: 3 pixels at a 14-pixel em.
    EXPECT_GE(kWindowHeight - 200 - ink.bottom, 2);
    EXPECT_LE(kWindowHeight - 200 - ink.bottom, 4);
}
