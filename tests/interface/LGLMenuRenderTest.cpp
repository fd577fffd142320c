// LGLMenuRenderTest.cpp -- LGLMenu::render on real OpenGL: the bar, titles, highlight, drop-down pane
// and outline, item captions, disabled grey, check boxes, separators and right-aligned shortcut texts,
// seen through GL feedback and the pixels of the window.
#include <ostrum_gl/interface/LGLMenu.h>

#include "LGLMenuTestHelpers.h"

#include <GL/freeglut.h>

#include <cmath>

using namespace menu_test;
using ostrum_test::FeedbackItem;
using ostrum_test::FeedbackVertex;
using ostrum_test::itemsOf;
using ostrum_test::recordFeedback;

namespace {

constexpr float kTolerance = 0.01f;

const LGL::tGLRGB kBar = {0.94902f, 0.945098f, 0.92549f};
const LGL::tGLRGB kHighlight = {0.192157f, 0.415686f, 0.772549f};
const LGL::tGLRGB kDisabled = {0.67451f, 0.658824f, 0.6f};
const LGL::tGLRGB kPane = {0.9254902f, 0.9137255f, 0.84705883f};
const LGL::tGLRGB kOutline = {0.6f, 0.6f, 0.6f};
const LGL::tGLRGB kSeparator = {0.5f, 0.5f, 0.5f};
const LGL::tGLRGB kBlack = {0, 0, 0};
const LGL::tGLRGB kWhite = {1, 1, 1};

bool hasColor(const FeedbackVertex& v, const LGL::tGLRGB& c)
{
    return std::fabs(v.r - c.r) < 1e-4f && std::fabs(v.g - c.g) < 1e-4f && std::fabs(v.b - c.b) < 1e-4f;
}

// Window y (upward) of a pixel row y downward from the top, for vertices and raster positions.
float upward(int yDown)
{
    return static_cast<float>(kWindowHeight - yDown);
}

// Bounds of the polygons drawn in colour c (every vertex of the polygon in c), y downward; `count`
// receives how many polygons there were.
struct Bounds {
    float left = 1e9f, top = 1e9f, right = -1e9f, bottom = -1e9f;
    int count = 0;
};

Bounds polygonsIn(const std::vector<FeedbackItem>& items, const LGL::tGLRGB& c)
{
    Bounds b;
    for (const FeedbackItem& item : itemsOf(items, GL_POLYGON_TOKEN)) {
        bool all = true;
        for (const FeedbackVertex& v : item.vertices)
            all = all && hasColor(v, c);
        if (!all)
            continue;
        ++b.count;
        for (const FeedbackVertex& v : item.vertices) {
            b.left = std::min(b.left, v.x);
            b.right = std::max(b.right, v.x);
            b.top = std::min(b.top, kWindowHeight - v.y);
            b.bottom = std::max(b.bottom, kWindowHeight - v.y);
        }
    }
    return b;
}

void expectBounds(const Bounds& b, const tRect& r)
{
    ASSERT_GT(b.count, 0);
    EXPECT_NEAR(b.left, r.left, kTolerance);
    EXPECT_NEAR(b.top, r.top, kTolerance);
    EXPECT_NEAR(b.right, r.right, kTolerance);
    EXPECT_NEAR(b.bottom, r.bottom, kTolerance);
}

std::vector<FeedbackVertex> bitmaps(const std::vector<FeedbackItem>& items)
{
    std::vector<FeedbackVertex> out;
    for (const FeedbackItem& item : itemsOf(items, GL_BITMAP_TOKEN))
        out.push_back(item.vertices.at(0));
    return out;
}

// Lines drawn in colour c, as (x0, y0, x1, y1) with y downward.
std::vector<std::vector<float>> linesIn(const std::vector<FeedbackItem>& items, const LGL::tGLRGB& c)
{
    std::vector<std::vector<float>> out;
    for (const FeedbackItem& item : itemsOf(items, GL_LINE_TOKEN))
        if (hasColor(item.vertices[0], c) && hasColor(item.vertices[1], c))
            out.push_back({item.vertices[0].x, kWindowHeight - item.vertices[0].y, item.vertices[1].x,
                           kWindowHeight - item.vertices[1].y});
    return out;
}

// RGB of the pixel at (x, y downward), as bytes.
std::vector<int> pixelAt(int x, int yDown)
{
    unsigned char rgba[4] = {0, 0, 0, 0};
    glFinish();
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadBuffer(GL_BACK);
    glReadPixels(x, kWindowHeight - 1 - yDown, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, rgba);
    return {rgba[0], rgba[1], rgba[2]};
}

void expectPixel(int x, int yDown, const LGL::tGLRGB& c)
{
    const std::vector<int> p = pixelAt(x, yDown);
    EXPECT_NEAR(p[0], c.r * 255.0f, 1.0) << "at " << x << ", " << yDown;
    EXPECT_NEAR(p[1], c.g * 255.0f, 1.0) << "at " << x << ", " << yDown;
    EXPECT_NEAR(p[2], c.b * 255.0f, 1.0) << "at " << x << ", " << yDown;
}

}  // namespace

class LGLMenuRenderTest : public MenuTest {
protected:
    void SetUp() override
    {
        MenuTest::SetUp();
        menu.initialize("", kFontSize, kBarFactor);
        addSampleMenus(menu);
        expected = expectedLayout(menu);
    }

    std::vector<FeedbackItem> record()
    {
        return recordFeedback([this] { menu.render(); });
    }

    void open(int k)
    {
        bool consumed = false;
        const tRect& t = expected.title[k];
        menu.handleMenuMouseClick((t.left + t.right) / 2, 5, GLUT_LEFT_BUTTON, true, consumed);
        ASSERT_TRUE(consumed);
        ASSERT_EQ(menu.openMenu, k);
        // Leave the bar so that only the open menu marks its title.
        menu.handleMousePassiveMotion(600, 400);
    }

    void hoverItem(int k, int j)
    {
        const tRect& d = expected.drop[k];
        menu.handleMousePassiveMotion((d.left + d.right) / 2, rowMiddle(j));
        ASSERT_EQ(LGLMenu::menus[k].hoverItem, j);
    }

    // Checks that `text` is written with its first glyph at (x, baseline y downward) in colour c,
    // the glyphs advancing by the font's widths, starting at bitmaps[index]; returns the next index.
    size_t expectText(const std::vector<FeedbackVertex>& glyphs, size_t index, const std::string& text, int x,
                      int baseline, const LGL::tGLRGB& c)
    {
        float at = static_cast<float>(x);
        for (unsigned char ch : text) {
            if (index >= glyphs.size()) {
                ADD_FAILURE() << "too few glyphs for \"" << text << "\"";
                return index;
            }
            const FeedbackVertex& g = glyphs[index++];
            EXPECT_NEAR(g.x, at, kTolerance) << "\"" << text << "\" at '" << ch << "'";
            EXPECT_NEAR(g.y, upward(baseline), kTolerance) << "\"" << text << "\"";
            EXPECT_TRUE(hasColor(g, c)) << "\"" << text << "\" colour " << g.r << ", " << g.g << ", " << g.b;
            at += static_cast<float>(menu.font.fonts[0].widths[ch]);
        }
        return index;
    }

    // x where a title centred in area k starts.
    int titleStart(int k, const std::string& name) const
    {
        const tRect& t = expected.title[k];
        const int centre = t.left + (t.right - t.left) / 2;
        return static_cast<int>(centre - widthOf(menu, name) * 0.5f);
    }

    // Checks the three titles, black except `white` (-1: none); returns the next glyph index.
    size_t expectTitles(const std::vector<FeedbackVertex>& glyphs, int white)
    {
        size_t index = 0;
        const char* names[3] = {"File", "Edit", "View"};
        for (int k = 0; k < 3; ++k)
            index = expectText(glyphs, index, names[k], titleStart(k, names[k]), kPadTop + kTextDrop,
                               k == white ? kWhite : kBlack);
        return index;
    }

    int captionX(int k) const { return expected.drop[k].left + kItemPadLeft + 10; }
    int shortcutX(int k, const std::string& shortcut) const
    {
        return expected.drop[k].right - kItemPadRight - widthOf(menu, shortcut);
    }
    static int baseline(int j) { return kBarHeight + kBarHeight * j + kPadTop + kTextDrop; }

    LGLMenu menu;
    Expected expected{};
};

// ================================================================ nothing to draw

TEST_F(LGLMenuRenderTest, HiddenMenuDrawsNothing)
{
    open(0);
    menu.visible = false;
    EXPECT_TRUE(record().empty());
}

TEST_F(LGLMenuRenderTest, MenuDrawsNothingBeforeInitialize)
{
    LGLMenu bare;
    EXPECT_TRUE(recordFeedback([&] { bare.render(); }).empty());
    expectPixel(5, 5, kBlack);
}

// ================================================================ the bar and titles

TEST_F(LGLMenuRenderTest, BarSpansTheWindowWidthInTheBarColour)
{
    const std::vector<FeedbackItem> items = record();
    ASSERT_FALSE(items.empty());
    ASSERT_EQ(items[0].token, static_cast<GLenum>(GL_POLYGON_TOKEN));  // the bar comes first
    expectBounds(polygonsIn(items, kBar), tRect{0, 0, kWindowWidth, kBarHeight});
    EXPECT_EQ(polygonsIn(items, kHighlight).count, 0);
    EXPECT_EQ(polygonsIn(items, kPane).count, 0);
    EXPECT_RECT(menu.barRect, 0, 0, kWindowWidth, kBarHeight);

    menu.render();
    expectPixel(kWindowWidth - 1, 0, kBar);
    expectPixel(kWindowWidth - 10, kBarHeight - 1, kBar);
    expectPixel(1, 10, kBar);
    expectPixel(kWindowWidth - 10, kBarHeight + 1, kBlack);
}

TEST_F(LGLMenuRenderTest, BarIsShadedFromTheFirstToTheSecondBackground)
{
    menu.barColor2 = {1, 0, 0};
    const std::vector<FeedbackItem> items = record();
    int top = 0, bottom = 0;
    for (const FeedbackItem& item : itemsOf(items, GL_POLYGON_TOKEN)) {
        for (const FeedbackVertex& v : item.vertices) {
            if (std::fabs(v.y - upward(0)) < kTolerance && hasColor(v, kBar))
                ++top;
            if (std::fabs(v.y - upward(kBarHeight)) < kTolerance && hasColor(v, menu.barColor2) && v.x > 600)
                ++bottom;
        }
    }
    EXPECT_GE(top, 2);
    EXPECT_GE(bottom, 1);
}

TEST_F(LGLMenuRenderTest, TitlesAreWrittenCentredInTheirAreasInBlack)
{
    const std::vector<FeedbackVertex> glyphs = bitmaps(record());
    EXPECT_EQ(expectTitles(glyphs, -1), glyphs.size());
    EXPECT_EQ(menu.font.alignment, 1);  // set back to left
}

TEST_F(LGLMenuRenderTest, HoveredTitleSitsOnTheHighlightWithWhiteText)
{
    menu.handleMousePassiveMotion((expected.title[1].left + expected.title[1].right) / 2, 3);
    ASSERT_EQ(menu.hoverMenu, 1);
    const std::vector<FeedbackItem> items = record();
    expectBounds(polygonsIn(items, kHighlight), expected.title[1]);
    expectTitles(bitmaps(items), 1);

    menu.render();
    expectPixel(expected.title[1].left + 1, 1, kHighlight);
    expectPixel(expected.title[1].right - 1, kBarHeight - 1, kHighlight);
    expectPixel(expected.title[0].left + 1, 1, kBar);
}

TEST_F(LGLMenuRenderTest, OpenMenusTitleIsHighlightedWithoutHover)
{
    open(0);  // a click opens it; the pointer then leaves the bar
    ASSERT_EQ(menu.hoverMenu, -1);
    const std::vector<FeedbackItem> items = record();
    expectBounds(polygonsIn(items, kHighlight), expected.title[0]);
    expectTitles(bitmaps(items), 0);
}

// ================================================================ the drop-down

TEST_F(LGLMenuRenderTest, OpenMenuDrawsItsPaneOutlineCaptionsAndShortcuts)
{
    open(0);
    const std::vector<FeedbackItem> items = record();
    const tRect& d = expected.drop[0];
    expectBounds(polygonsIn(items, kPane), d);

    // The outline: four grey segments along the pane's edges, drawn after the pane.
    const std::vector<std::vector<float>> outline = linesIn(items, kOutline);
    ASSERT_EQ(outline.size(), 4u);
    float left = 1e9f, right = -1e9f, top = 1e9f, bottom = -1e9f;
    for (const auto& l : outline) {
        left = std::min({left, l[0], l[2]});
        right = std::max({right, l[0], l[2]});
        top = std::min({top, l[1], l[3]});
        bottom = std::max({bottom, l[1], l[3]});
        EXPECT_TRUE(std::fabs(l[0] - l[2]) < kTolerance || std::fabs(l[1] - l[3]) < kTolerance);
    }
    EXPECT_NEAR(left, d.left, kTolerance);
    EXPECT_NEAR(right, d.right, kTolerance);
    EXPECT_NEAR(top, d.top, kTolerance);
    EXPECT_NEAR(bottom, d.bottom, kTolerance);
    EXPECT_EQ(itemsOf(items, GL_LINE_TOKEN).back().vertices[0].r, kOutline.r);

    // The separator: one line across the middle of its row, 2 pixels in from either side.
    const std::vector<std::vector<float>> separator = linesIn(items, kSeparator);
    ASSERT_EQ(separator.size(), 1u);
    EXPECT_NEAR(std::min(separator[0][0], separator[0][2]), d.left + 2, kTolerance);
    EXPECT_NEAR(std::max(separator[0][0], separator[0][2]), d.right - 2, kTolerance);
    EXPECT_NEAR(separator[0][1], kBarHeight + kBarHeight + kBarHeight / 2, kTolerance);
    EXPECT_NEAR(separator[0][3], separator[0][1], kTolerance);

    // Captions without their shortcut part, shortcut texts ending itemPadding.right before the edge.
    const std::vector<FeedbackVertex> glyphs = bitmaps(items);
    size_t i = expectTitles(glyphs, 0);
    i = expectText(glyphs, i, "New", captionX(0), baseline(0), kBlack);
    i = expectText(glyphs, i, "ctrl-n", shortcutX(0, "ctrl-n"), baseline(0), kBlack);
    i = expectText(glyphs, i, "Open...", captionX(0), baseline(2), kBlack);
    i = expectText(glyphs, i, "Quit", captionX(0), baseline(3), kBlack);
    i = expectText(glyphs, i, "alt-x", shortcutX(0, "alt-x"), baseline(3), kBlack);
    EXPECT_EQ(i, glyphs.size());
    EXPECT_EQ(polygonsIn(items, kBlack).count, 0);  // nothing is checked
    EXPECT_EQ(menu.font.alignment, 1);
}

TEST_F(LGLMenuRenderTest, ShortcutTextsAreRightAlignedInPixels)
{
    open(0);
    menu.render();
    const tRect& d = expected.drop[0];
    // The ink of row 0 to the right of the caption: the shortcut text, ending at its right margin.
    int rightmost = -1;
    for (int x = captionX(0) + widthOf(menu, "New") + 2; x < d.right; ++x)
        for (int y = kBarHeight + 1; y < 2 * kBarHeight; ++y)
            if (pixelAt(x, y)[0] < 128)
                rightmost = std::max(rightmost, x);
    const int end = d.right - kItemPadRight;
    EXPECT_LE(rightmost, end);
    EXPECT_GE(rightmost, end - 3);  // the last glyph's ink stops within its right bearing
    expectPixel(d.left + 3, rowMiddle(0), kPane);
    expectPixel(d.right - 3, rowMiddle(3), kPane);
}

TEST_F(LGLMenuRenderTest, HoveredItemSitsOnTheHighlightWithWhiteText)
{
    open(0);
    hoverItem(0, 3);
    const std::vector<FeedbackItem> items = record();
    const tRect& d = expected.drop[0];
    const Bounds highlight = polygonsIn(items, kHighlight);
    // Title of the open menu and the row of the item.
    EXPECT_NEAR(highlight.bottom, kBarHeight + 4 * kBarHeight, kTolerance);
    std::vector<FeedbackItem> rowOnly;
    for (const FeedbackItem& item : itemsOf(items, GL_POLYGON_TOKEN))
        if (hasColor(item.vertices[0], kHighlight) && kWindowHeight - item.vertices[0].y > kBarHeight + 0.5f)
            rowOnly.push_back(item);
    expectBounds(polygonsIn(rowOnly, kHighlight), tRect{d.left, kBarHeight + 3 * kBarHeight, d.right, kBarHeight + 4 * kBarHeight});

    const std::vector<FeedbackVertex> glyphs = bitmaps(items);
    size_t i = expectTitles(glyphs, 0);
    i = expectText(glyphs, i, "New", captionX(0), baseline(0), kBlack);
    i = expectText(glyphs, i, "ctrl-n", shortcutX(0, "ctrl-n"), baseline(0), kBlack);
    i = expectText(glyphs, i, "Open...", captionX(0), baseline(2), kBlack);
    i = expectText(glyphs, i, "Quit", captionX(0), baseline(3), kWhite);
    expectText(glyphs, i, "alt-x", shortcutX(0, "alt-x"), baseline(3), kWhite);

    menu.render();
    expectPixel(d.left + 3, rowMiddle(3), kHighlight);
    expectPixel(d.right - 3, rowMiddle(3), kHighlight);
    expectPixel(d.left + 3, rowMiddle(2), kPane);
}

TEST_F(LGLMenuRenderTest, SeparatorIsNeverHighlighted)
{
    open(0);
    hoverItem(0, 1);
    const std::vector<FeedbackItem> items = record();
    const Bounds highlight = polygonsIn(items, kHighlight);
    EXPECT_NEAR(highlight.bottom, kBarHeight, kTolerance);  // only the title
    EXPECT_EQ(linesIn(items, kSeparator).size(), 1u);
}

TEST_F(LGLMenuRenderTest, DisabledItemIsGreyAndNeverHighlighted)
{
    open(1);
    hoverItem(1, 1);
    const std::vector<FeedbackItem> items = record();
    EXPECT_NEAR(polygonsIn(items, kHighlight).bottom, kBarHeight, kTolerance);
    const std::vector<FeedbackVertex> glyphs = bitmaps(items);
    size_t i = expectTitles(glyphs, 1);
    i = expectText(glyphs, i, "Undo", captionX(1), baseline(0), kBlack);
    i = expectText(glyphs, i, "ctrl-z", shortcutX(1, "ctrl-z"), baseline(0), kBlack);
    i = expectText(glyphs, i, "Redo", captionX(1), baseline(1), kDisabled);
    i = expectText(glyphs, i, "ctrl-y", shortcutX(1, "ctrl-y"), baseline(1), kDisabled);
    i = expectText(glyphs, i, "Grid", captionX(1), baseline(2), kBlack);
    i = expectText(glyphs, i, "F5", shortcutX(1, "F5"), baseline(2), kBlack);
    EXPECT_EQ(i, glyphs.size());

    // In pixels: the row of the disabled item holds grey ink and no black.
    menu.render();
    int grey = 0, black = 0;
    for (int x = expected.drop[1].left + 1; x < expected.drop[1].right; ++x) {
        for (int y = kBarHeight * 2 + 1; y < kBarHeight * 3; ++y) {
            const std::vector<int> p = pixelAt(x, y);
            grey += std::abs(p[0] - 172) <= 1 && std::abs(p[1] - 168) <= 1 && std::abs(p[2] - 153) <= 1;
            black += p[0] == 0 && p[1] == 0 && p[2] == 0;
        }
    }
    EXPECT_GT(grey, 20);
    EXPECT_EQ(black, 0);
}

TEST_F(LGLMenuRenderTest, CheckedItemShowsATenPixelBoxEightPixelsIn)
{
    open(1);
    const std::vector<FeedbackItem> items = record();
    const tRect& d = expected.drop[1];
    const int boxTop = kBarHeight + 2 * kBarHeight + (kBarHeight - 10) / 2;
    expectBounds(polygonsIn(items, kBlack), tRect{d.left + 8, boxTop, d.left + 18, boxTop + 10});

    menu.render();
    int inside = 0;
    for (int x = d.left + 8; x < d.left + 18; ++x)
        for (int y = boxTop; y < boxTop + 10; ++y)
            inside += pixelAt(x, y) == std::vector<int>{0, 0, 0};
    EXPECT_EQ(inside, 100);
    expectPixel(d.left + 7, boxTop + 5, kPane);
    expectPixel(d.left + 18, boxTop + 5, kPane);
    expectPixel(d.left + 12, boxTop - 1, kPane);
    expectPixel(d.left + 12, boxTop + 10, kPane);
}

TEST_F(LGLMenuRenderTest, CheckBoxTakesTheColourOfItsRow)
{
    open(1);
    menu.checkMenuItem(1, 1, true);  // disabled and checked
    hoverItem(1, 2);                 // checked and highlighted
    const std::vector<FeedbackItem> items = record();
    const tRect& d = expected.drop[1];
    const int top1 = kBarHeight + kBarHeight + (kBarHeight - 10) / 2;
    const int top2 = kBarHeight + 2 * kBarHeight + (kBarHeight - 10) / 2;
    expectBounds(polygonsIn(items, kDisabled), tRect{d.left + 8, top1, d.left + 18, top1 + 10});
    expectBounds(polygonsIn(items, kWhite), tRect{d.left + 8, top2, d.left + 18, top2 + 10});
    EXPECT_EQ(polygonsIn(items, kBlack).count, 0);
}

TEST_F(LGLMenuRenderTest, EmptyMenuShowsNoPane)
{
    open(2);
    const std::vector<FeedbackItem> items = record();
    EXPECT_EQ(polygonsIn(items, kPane).count, 0);
    EXPECT_TRUE(linesIn(items, kOutline).empty());
    expectBounds(polygonsIn(items, kHighlight), expected.title[2]);
}

TEST_F(LGLMenuRenderTest, TextColourOfTheRpWritesIsTheUntouchedTextColour)
{
    menu.font.setColor_rp(0, 0.5f, 0);
    open(0);
    const std::vector<FeedbackVertex> glyphs = bitmaps(record());
    ASSERT_GT(glyphs.size(), 12u);
    EXPECT_TRUE(hasColor(glyphs[0], kWhite));               // F of the open menu
    EXPECT_TRUE(hasColor(glyphs[4], LGL::tGLRGB{0, 0.5f, 0}));  // E of Edit
    EXPECT_TRUE(hasColor(glyphs[12], LGL::tGLRGB{0, 0.5f, 0})); // N of New
}

// ================================================================ OpenGL state

TEST_F(LGLMenuRenderTest, RenderLeavesTheOpenGLStateAsItFoundIt)
{
    open(1);
    glEnable(GL_TEXTURE_2D);
    glEnable(GL_LIGHTING);
    glEnable(GL_DEPTH_TEST);
    glEnable(GL_BLEND);
    glEnable(GL_LINE_STIPPLE);
    glColor4f(0.2f, 0.3f, 0.4f, 0.5f);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(-1, 1, -2, 2, -3, 3);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glTranslatef(1, 2, 3);
    GLfloat projection[16], modelview[16];
    glGetFloatv(GL_PROJECTION_MATRIX, projection);
    glGetFloatv(GL_MODELVIEW_MATRIX, modelview);

    menu.render();

    EXPECT_TRUE(glIsEnabled(GL_TEXTURE_2D));
    EXPECT_TRUE(glIsEnabled(GL_LIGHTING));
    EXPECT_TRUE(glIsEnabled(GL_DEPTH_TEST));
    EXPECT_TRUE(glIsEnabled(GL_BLEND));
    EXPECT_TRUE(glIsEnabled(GL_LINE_STIPPLE));
    GLfloat color[4];
    glGetFloatv(GL_CURRENT_COLOR, color);
    EXPECT_FLOAT_EQ(color[0], 0.2f);
    EXPECT_FLOAT_EQ(color[1], 0.3f);
    EXPECT_FLOAT_EQ(color[2], 0.4f);
    EXPECT_FLOAT_EQ(color[3], 0.5f);
    GLint mode = 0;
    glGetIntegerv(GL_MATRIX_MODE, &mode);
    EXPECT_EQ(mode, GL_MODELVIEW);
    GLfloat afterProjection[16], afterModelview[16];
    glGetFloatv(GL_PROJECTION_MATRIX, afterProjection);
    glGetFloatv(GL_MODELVIEW_MATRIX, afterModelview);
    for (int i = 0; i < 16; ++i) {
        EXPECT_FLOAT_EQ(afterProjection[i], projection[i]);
        EXPECT_FLOAT_EQ(afterModelview[i], modelview[i]);
    }
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));

    // Lighting, texturing and blending of the game played no part in the colours drawn.
    glDisable(GL_TEXTURE_2D);
    glDisable(GL_LIGHTING);
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_BLEND);
    glDisable(GL_LINE_STIPPLE);
    expectPixel(kWindowWidth - 5, 5, kBar);
    expectPixel(expected.title[1].left + 1, 1, kHighlight);
    expectPixel(expected.drop[1].left + 3, rowMiddle(0), kPane);
}
