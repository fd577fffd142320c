// LGLFontTest.cpp -- LGLFont's defaults, creation, font selection, colours, grid writes, text buffer,
// life cycle and fatal faults.
#include <ostrum_gl/interface/LGLFont.h>
#include <ostrum_gl/platform/LGLFontRasterizer.h>

#include "LGLFontTestHelpers.h"

#include <GL/freeglut.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>

using namespace font_test;
using ostrum_test::recordFeedback;
using ostrum_test::StdoutCapture;

namespace {

// Widths the rasteriser gives for a request, built into lists of their own (deleted again).
std::vector<int> rasterizerWidths(const char* face, int height, int weight, bool italic, bool symbolSet)
{
    LGLFontRasterizer::tFontRequest request;
    request.faceName = face;
    request.height = height;
    request.weight = weight;
    request.italic = italic;
    request.symbolSet = symbolSet;
    const GLuint base = glGenLists(256);
    std::vector<int> widths(256, -1);
    LGLFontRasterizer::buildLists(request, base, widths.data());
    glDeleteLists(base, 256);
    return widths;
}

std::vector<int> widthsOf(const LGLFont::GLGLFont& font)
{
    return std::vector<int>(font.widths, font.widths + 256);
}

// The red channel of the window after drawing `text` in white with the lists from `base` at window
// pixel (x, y) on black.
std::vector<unsigned char> drawLists(GLuint base, const char* text, int x, int y)
{
    glClearColor(0, 0, 0, 0);
    glClear(GL_COLOR_BUFFER_BIT);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(0, kWindowWidth, 0, kWindowHeight, -1, 1);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glColor3f(1, 1, 1);
    glRasterPos2i(x, y);
    glListBase(base);
    glCallLists(static_cast<GLsizei>(std::strlen(text)), GL_UNSIGNED_BYTE, text);
    glListBase(0);
    std::vector<unsigned char> red = readRed();
    // readRed counts dark pixels as ink; turn white-on-black into ink-on-paper.
    for (unsigned char& value : red)
        value = static_cast<unsigned char>(255 - value);
    return red;
}

void createFonts(int count)
{
    LGLFont font;
    for (int i = 0; i < count; ++i)
        font.create(nullptr, "Arial", 12, 0, 0);
}

void selectFontOf(int created, int id)
{
    LGLFont font;
    for (int i = 0; i < created; ++i)
        font.create(nullptr, "Arial", 12, 0, 0);
    font.selectFont(id);
}

// Creates a font while fontconfig can see no font at all; exits 0 when the font was still added with
// empty lists and zero widths.
void createWithoutAnyFont()
{
    const std::string dir = ostrum_test::makeTempDir();
    const std::string config = dir + "/empty.conf";
    ostrum_test::writeFile(config, "<?xml version=\"1.0\"?>\n<!DOCTYPE fontconfig SYSTEM \"fonts.dtd\">\n"
                                   "<fontconfig></fontconfig>\n");
    setenv("FONTCONFIG_FILE", config.c_str(), 1);
    LGLFont font;
    font.create(nullptr, "Arial", 16, 0, 0);
    bool ok = font.numFonts == 1 && font.fonts[0].base != 0 && font.fonts[0].height == 16;
    for (int c = 0; c < 256; ++c)
        ok = ok && font.fonts[0].widths[c] == 0 && glIsList(font.fonts[0].base + c);
    std::exit(ok ? 0 : 1);
}

}  // namespace

// ================================================================ defaults and copies

TEST(LGLFontDefaults, ConstructorSetsTheDefaults)
{
    LGLFont font;
    EXPECT_EQ(font.alignment, 1);
    EXPECT_FALSE(font.shadow);
    EXPECT_FALSE(font.tabLines);
    EXPECT_EQ(font.numFonts, 0);
    EXPECT_FLOAT_EQ(font.color.r, 0.5f);
    EXPECT_FLOAT_EQ(font.color.g, 0.5f);
    EXPECT_FLOAT_EQ(font.color.b, 0.5f);
    EXPECT_FLOAT_EQ(font.color_rp.r, 1.0f);
    EXPECT_FLOAT_EQ(font.color_rp.g, 1.0f);
    EXPECT_FLOAT_EQ(font.color_rp.b, 1.0f);
    EXPECT_FLOAT_EQ(font.color_rp.a, 1.0f);
    EXPECT_EQ(font.pos_rp.x, 0);
    EXPECT_EQ(font.pos_rp.y, 0);
    EXPECT_EQ(font.lineSpacing_rp, 20);
    EXPECT_EQ(font.currentFont, 0);
    EXPECT_EQ(font.windowWidth, 1);
    EXPECT_EQ(font.windowHeight, 1);
    for (const LGLFont::GLGLFont& record : font.fonts) {
        EXPECT_EQ(record.base, 0u);
        EXPECT_EQ(record.height, 0);
        for (int width : record.widths)
            EXPECT_EQ(width, 0);
    }
}

TEST(LGLFontDefaults, EveryConstructionResetsTheSharedTabStopsToStepsOf40)
{
    auto expectSteps40 = [] {
        ASSERT_EQ(LGLFont::tabStops.size(), 20u);
        for (int i = 0; i < 20; ++i)
            EXPECT_EQ(LGLFont::tabStops[i], (i + 1) * 40);
    };
    LGLFont::tabStops.assign(3, 7);
    LGLFont a;
    expectSteps40();
    a.setTabWidth(25);
    EXPECT_EQ(LGLFont::tabStops[19], 500);
    LGLFont b;
    expectSteps40();
    LGLFont::tabStops.assign(30, 1);
    LGLFont c(a);
    expectSteps40();
}

TEST(LGLFontDefaults, CopiesCopyEveryMember)
{
    LGLFont a;
    a.alignment = -1;
    a.shadow = true;
    a.tabLines = true;
    a.numFonts = 2;
    a.fonts[1].base = 77;
    a.fonts[1].height = 13;
    a.fonts[1].widths[65] = 9;
    a.color = {0.1f, 0.2f, 0.3f};
    a.color_rp = {0.4f, 0.5f, 0.6f, 0.7f};
    a.pos_rp = {11, 12};
    a.lineSpacing_rp = 17;
    a.currentFont = 1;
    a.windowWidth = 800;
    a.windowHeight = 600;
    LGLFont b(a);
    LGLFont c;
    c = a;
    for (const LGLFont* copy : {&b, &c}) {
        EXPECT_EQ(copy->alignment, -1);
        EXPECT_TRUE(copy->shadow);
        EXPECT_TRUE(copy->tabLines);
        EXPECT_EQ(copy->numFonts, 2);
        EXPECT_EQ(copy->fonts[1].base, 77u);
        EXPECT_EQ(copy->fonts[1].height, 13);
        EXPECT_EQ(copy->fonts[1].widths[65], 9);
        EXPECT_FLOAT_EQ(copy->color.g, 0.2f);
        EXPECT_FLOAT_EQ(copy->color_rp.a, 0.7f);
        EXPECT_EQ(copy->pos_rp.x, 11);
        EXPECT_EQ(copy->pos_rp.y, 12);
        EXPECT_EQ(copy->lineSpacing_rp, 17);
        EXPECT_EQ(copy->currentFont, 1);
        EXPECT_EQ(copy->windowWidth, 800);
        EXPECT_EQ(copy->windowHeight, 600);
    }
    // These records were made up, not created: keep the destructors away from list names 77...
    a.numFonts = b.numFonts = c.numFonts = 0;
}

// ================================================================ create and selectFont

class LGLFontCreate : public FontTest {};

TEST_F(LGLFontCreate, CreateAddsOneRecordWithListsWidthsAndTheGivenHeight)
{
    LGLFont font;
    StdoutCapture out;
    font.create(nullptr, "Arial", 16, 0, 0);
    EXPECT_EQ(out.take(), "");
    ASSERT_EQ(font.numFonts, 1);
    const LGLFont::GLGLFont& record = font.fonts[0];
    ASSERT_NE(record.base, 0u);
    for (GLuint c = 0; c < 256; ++c)
        EXPECT_TRUE(glIsList(record.base + c)) << "code " << c;
    EXPECT_EQ(record.height, 16);
    EXPECT_EQ(widthsOf(record), rasterizerWidths("Arial", 16, 0, false, false));
    EXPECT_EQ(font.fonts[1].base, 0u);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

TEST_F(LGLFontCreate, CreateIgnoresTheDeviceContext)
{
    LGLFont font;
    font.create(reinterpret_cast<HDC>(static_cast<uintptr_t>(0x1234)), "Arial", 16, 0, 0);
    font.create(nullptr, "Arial", 16, 0, 0);
    ASSERT_EQ(font.numFonts, 2);
    EXPECT_EQ(widthsOf(font.fonts[0]), widthsOf(font.fonts[1]));
    EXPECT_GT(font.fonts[0].widths[code('H')], 0);
}

TEST_F(LGLFontCreate, FontsAreAddedInCreationOrderWithListsOfTheirOwn)
{
    LGLFont font;
    font.create(nullptr, "Arial", 16, 0, 0);
    font.create(nullptr, "Arial", 24, 700, 0);
    font.create(nullptr, "Tahoma", 12, 0, 0);
    ASSERT_EQ(font.numFonts, 3);
    EXPECT_EQ(font.fonts[0].height, 16);
    EXPECT_EQ(font.fonts[1].height, 24);
    EXPECT_EQ(font.fonts[2].height, 12);
    EXPECT_EQ(widthsOf(font.fonts[1]), rasterizerWidths("Arial", 24, 700, false, false));
    EXPECT_EQ(widthsOf(font.fonts[2]), rasterizerWidths("Tahoma", 12, 0, false, false));
    for (int i = 0; i < 3; ++i)
        for (int k = i + 1; k < 3; ++k) {
            const GLuint a = font.fonts[i].base, b = font.fonts[k].base;
            EXPECT_TRUE(a + 256 <= b || b + 256 <= a) << "fonts " << i << " and " << k << " share list names";
        }
}

TEST_F(LGLFontCreate, TenFontsFit)
{
    LGLFont font;
    StdoutCapture out;
    for (int i = 0; i < 10; ++i)
        font.create(nullptr, "Arial", 10 + i, 0, 0);
    EXPECT_EQ(out.take(), "");
    EXPECT_EQ(font.numFonts, 10);
    EXPECT_EQ(font.fonts[9].height, 19);
    EXPECT_TRUE(glIsList(font.fonts[9].base + 255));
}

TEST_F(LGLFontCreate, CreateClearsShadow)
{
    LGLFont font;
    font.shadow = true;
    font.create(nullptr, "Arial", 16, 0, 0);
    EXPECT_FALSE(font.shadow);
}

TEST_F(LGLFontCreate, CreateWithoutDisplayListNamesAddsNothingAndSaysNothing)
{
    LGLFont font;
    font.shadow = true;
    StdoutCapture out;
    // OpenGL hands out no list names between glBegin and glEnd.
    glBegin(GL_POINTS);
    font.create(nullptr, "Arial", 16, 0, 0);
    glEnd();
    EXPECT_EQ(out.take(), "");
    EXPECT_EQ(font.numFonts, 0);
    EXPECT_EQ(font.fonts[0].base, 0u);
    EXPECT_EQ(font.fonts[0].widths[code('H')], 0);
    EXPECT_FALSE(font.shadow);
}

TEST_F(LGLFontCreate, SymbolInAnyLetterCaseChoosesTheSymbolSet)
{
    LGLFont font;
    font.create(nullptr, "SyMbOl", 16, 0, 0);
    font.create(nullptr, "symbol", 16, 0, 0);
    const std::vector<int> symbolWidths = rasterizerWidths("symbol", 16, 0, false, true);
    const std::vector<int> ansiWidths = rasterizerWidths("symbol", 16, 0, false, false);
    ASSERT_NE(symbolWidths, ansiWidths);
    EXPECT_EQ(widthsOf(font.fonts[0]), symbolWidths);
    EXPECT_EQ(widthsOf(font.fonts[1]), symbolWidths);
}

TEST_F(LGLFontCreate, OtherFaceNamesUseTheAnsiSet)
{
    LGLFont font;
    font.create(nullptr, "DejaVu Sans", 16, 0, 0);
    font.create(nullptr, "symbols", 16, 0, 0);
    EXPECT_EQ(widthsOf(font.fonts[0]), rasterizerWidths("DejaVu Sans", 16, 0, false, false));
    EXPECT_EQ(widthsOf(font.fonts[1]), rasterizerWidths("symbols", 16, 0, false, false));
}

TEST_F(LGLFontCreate, WeightReachesTheRasteriser)
{
    LGLFont font;
    font.create(nullptr, "Arial", 16, 700, 0);
    font.create(nullptr, "Arial", 16, 0, 0);
    EXPECT_EQ(widthsOf(font.fonts[0]), rasterizerWidths("Arial", 16, 700, false, false));
    EXPECT_NE(widthsOf(font.fonts[0]), widthsOf(font.fonts[1]));
}

TEST_F(LGLFontCreate, AnyNonZeroItalicFlagDrawsItalic)
{
    LGLFont font;
    font.create(nullptr, "Arial", 24, 0, 255);
    font.create(nullptr, "Arial", 24, 0, 0);
    LGLFontRasterizer::tFontRequest request;
    request.faceName = "Arial";
    request.height = 24;
    request.italic = true;
    const GLuint base = glGenLists(256);
    std::vector<int> widths(256);
    LGLFontRasterizer::buildLists(request, base, widths.data());

    const std::vector<unsigned char> created = drawLists(font.fonts[0].base, "Ill", 50, 100);
    const std::vector<unsigned char> italic = drawLists(base, "Ill", 50, 100);
    const std::vector<unsigned char> upright = drawLists(font.fonts[1].base, "Ill", 50, 100);
    glDeleteLists(base, 256);
    EXPECT_FALSE(inkIn(created, 0, 0, kWindowWidth - 1, kWindowHeight - 1).empty());
    EXPECT_TRUE(created == italic);
    EXPECT_FALSE(created == upright);
}

TEST_F(LGLFontCreate, SelectFontMakesTheFontCurrentForEveryWrite)
{
    LGLFont font;
    font.create(nullptr, "Arial", 16, 0, 0);
    font.create(nullptr, "Arial", 32, 0, 0);
    font.selectFont(1);
    EXPECT_EQ(font.currentFont, 1);
    EXPECT_EQ(font.pixWidthOf("Width"), sumOfWidths(font.fonts[1], "Width"));
    font.selectFont(0);
    EXPECT_EQ(font.currentFont, 0);
    EXPECT_EQ(font.pixWidthOf("Width"), sumOfWidths(font.fonts[0], "Width"));
    EXPECT_NE(sumOfWidths(font.fonts[0], "Width"), sumOfWidths(font.fonts[1], "Width"));
}

// ================================================================ fatal faults

class LGLFontDeathTest : public FontTest {};

TEST_F(LGLFontDeathTest, EleventhCreateEndsTheProcessWithMinusOne)
{
    OSTRUM_EXPECT_EXIT_WITH_LINE(createFonts(11), 255, "ERROR: NumFonts>10");
}

TEST_F(LGLFontDeathTest, SelectingAnIdPastTheLastFontEndsTheProcessWithMinus15)
{
    OSTRUM_EXPECT_EXIT_WITH_LINE(selectFontOf(2, 2), 241, "ERROR LGLFont::selectFont> illegal font_id 2");
}

TEST_F(LGLFontDeathTest, SelectingANegativeIdEndsTheProcessWithMinus15)
{
    OSTRUM_EXPECT_EXIT_WITH_LINE(selectFontOf(1, -3), 241, "ERROR LGLFont::selectFont> illegal font_id -3");
}

TEST_F(LGLFontDeathTest, SelectingAnyIdBeforeTheFirstCreateEndsTheProcess)
{
    OSTRUM_EXPECT_EXIT_WITH_LINE(selectFontOf(0, 0), 241, "ERROR LGLFont::selectFont> illegal font_id 0");
}

TEST_F(LGLFontDeathTest, WithoutAnyFontOnTheSystemCreateWarnsAndAddsAnEmptyFont)
{
    OSTRUM_EXPECT_EXIT_WITH_LINE(createWithoutAnyFont(), 0,
                                 "** WARNING LGLFont::create> no font face found for \"Arial\" (LGLFont.cpp)");
}

// ================================================================ colours

class LGLFontColour : public FontTest {
protected:
    // Inside begin/end, a raster position at pixel (100, 50) latched in a colour no shortcut uses.
    static void placeRaster()
    {
        glColor3f(0.2f, 0.4f, 0.6f);
        glRasterPos2i(100, 50);
    }
    static void expectCurrent(GLenum what, float r, float g, float b)
    {
        GLfloat value[4];
        glGetFloatv(what, value);
        EXPECT_NEAR(value[0], r, 1e-6);
        EXPECT_NEAR(value[1], g, 1e-6);
        EXPECT_NEAR(value[2], b, 1e-6);
    }
    static void expectRasterAt(float x, float y)
    {
        const std::vector<float> position = rasterPosition();
        EXPECT_NEAR(position[0], x, 1e-3);
        EXPECT_NEAR(position[1], y, 1e-3);
    }
};

TEST_F(LGLFontColour, EachShortcutStoresSetsAndLatchesItsColour)
{
    struct Shortcut {
        const char* name;
        void (LGLFont::*call)();
        float r, g, b;
    };
    const Shortcut shortcuts[] = {
        {"cWhite", &LGLFont::cWhite, 1, 1, 1},       {"cBlack", &LGLFont::cBlack, 0, 0, 0},
        {"cRed", &LGLFont::cRed, 1, 0, 0},           {"cGreen", &LGLFont::cGreen, 0, 1, 0},
        {"cDarkGreen", &LGLFont::cDarkGreen, 0, 0.5f, 0}, {"cBlue", &LGLFont::cBlue, 0, 0, 1},
        {"cDarkBlue", &LGLFont::cDarkBlue, 0, 0, 0.5f},   {"cYellow", &LGLFont::cYellow, 1, 1, 0},
        {"cPurple", &LGLFont::cPurple, 1, 0, 1},     {"cCyan", &LGLFont::cCyan, 0, 1, 1},
    };
    LGLFont font;
    font.begin();
    for (const Shortcut& shortcut : shortcuts) {
        SCOPED_TRACE(shortcut.name);
        placeRaster();
        (font.*shortcut.call)();
        EXPECT_FLOAT_EQ(font.color.r, shortcut.r);
        EXPECT_FLOAT_EQ(font.color.g, shortcut.g);
        EXPECT_FLOAT_EQ(font.color.b, shortcut.b);
        expectCurrent(GL_CURRENT_COLOR, shortcut.r, shortcut.g, shortcut.b);
        expectCurrent(GL_CURRENT_RASTER_COLOR, shortcut.r, shortcut.g, shortcut.b);
        expectRasterAt(100, kWindowHeight - 50);
    }
    placeRaster();
    font.cGray(0.25f);
    EXPECT_FLOAT_EQ(font.color.r, 0.25f);
    EXPECT_FLOAT_EQ(font.color.g, 0.25f);
    EXPECT_FLOAT_EQ(font.color.b, 0.25f);
    expectCurrent(GL_CURRENT_RASTER_COLOR, 0.25f, 0.25f, 0.25f);
    expectRasterAt(100, kWindowHeight - 50);
    font.end();
}

TEST_F(LGLFontColour, SetColorLatchesWithoutStoring)
{
    LGLFont font;
    font.begin();
    placeRaster();
    font.setColor(0.9f, 0.8f, 0.7f);
    EXPECT_FLOAT_EQ(font.color.r, 0.5f);
    EXPECT_FLOAT_EQ(font.color.g, 0.5f);
    EXPECT_FLOAT_EQ(font.color.b, 0.5f);
    expectCurrent(GL_CURRENT_COLOR, 0.9f, 0.8f, 0.7f);
    expectCurrent(GL_CURRENT_RASTER_COLOR, 0.9f, 0.8f, 0.7f);
    expectRasterAt(100, kWindowHeight - 50);
    font.end();
}

TEST_F(LGLFontColour, SetColorRpOnlyStoresTheColour)
{
    LGLFont font;
    font.begin();
    placeRaster();
    const std::vector<FeedbackItem> items = recordFeedback([&] { font.setColor_rp(0.1f, 0.2f, 0.3f, 0.25f); });
    EXPECT_TRUE(items.empty());
    EXPECT_FLOAT_EQ(font.color_rp.r, 0.1f);
    EXPECT_FLOAT_EQ(font.color_rp.g, 0.2f);
    EXPECT_FLOAT_EQ(font.color_rp.b, 0.3f);
    EXPECT_FLOAT_EQ(font.color_rp.a, 0.25f);
    font.setColor_rp(0.7f, 0.8f, 0.9f);
    EXPECT_FLOAT_EQ(font.color_rp.r, 0.7f);
    EXPECT_FLOAT_EQ(font.color_rp.g, 0.8f);
    EXPECT_FLOAT_EQ(font.color_rp.b, 0.9f);
    EXPECT_FLOAT_EQ(font.color_rp.a, 0.25f);
    expectCurrent(GL_CURRENT_COLOR, 0.2f, 0.4f, 0.6f);
    expectCurrent(GL_CURRENT_RASTER_COLOR, 0.2f, 0.4f, 0.6f);
    font.end();
}

TEST_F(LGLFontColour, TextAfterAShortcutTakesItsColour)
{
    LGLFont font;
    font.create(nullptr, "Arial", 16, 0, 0);
    font.begin();
    placeRaster();
    font.cRed();
    const std::vector<FeedbackVertex> red = bitmaps(recordFeedback([&] { font.write("AB"); }));
    // A plain colour change without the re-latch leaves the text in the latched colour.
    placeRaster();
    glColor3f(1, 0, 0);
    const std::vector<FeedbackVertex> latched = bitmaps(recordFeedback([&] { font.write("AB"); }));
    font.end();
    ASSERT_EQ(red.size(), 2u);
    ASSERT_EQ(latched.size(), 2u);
    for (const FeedbackVertex& v : red) {
        EXPECT_FLOAT_EQ(v.r, 1.0f);
        EXPECT_FLOAT_EQ(v.g, 0.0f);
        EXPECT_FLOAT_EQ(v.b, 0.0f);
    }
    EXPECT_NEAR(latched[0].r, 0.2f, 1e-6);
    EXPECT_NEAR(latched[0].b, 0.6f, 1e-6);
    EXPECT_NEAR(red[0].x, 100.0f, 1e-3);
    EXPECT_NEAR(red[0].y, kWindowHeight - 50.0f, 1e-3);
}

// ================================================================ grid writes

class LGLFontGrid : public FontTest {
protected:
    // A raster position at window pixel (x, y), set through a pixel projection.
    static void rasterAt(int x, int y)
    {
        setPixelProjection();
        glRasterPos2i(x, y);
    }
};

TEST_F(LGLFontGrid, WriteAtPutsTextOnTheCharacterGridInWindowCoordinates)
{
    LGLFont font;
    font.create(nullptr, "Arial", 13, 0, 0);
    // Matrices that would move any object-space raster position: the grid ignores them.
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glFrustum(-1, 1, -1, 1, 1, 10);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glTranslatef(3, -2, -5);
    const std::vector<FeedbackVertex> a = bitmaps(recordFeedback([&] { font.writeAt(3, 2, std::string("Hi")); }));
    const std::vector<FeedbackVertex> b = bitmaps(recordFeedback([&] { font.writeAt(7, 5, "Hi"); }));
    ASSERT_EQ(a.size(), 2u);
    ASSERT_EQ(b.size(), 2u);
    // Column 3 of a 13-pixel font: trunc(39 * 0.4) = 15; row 2: 26.
    EXPECT_NEAR(a[0].x, 15.0f, 1e-3);
    EXPECT_NEAR(a[0].y, 26.0f, 1e-3);
    EXPECT_NEAR(a[1].x, 15.0f + font.fonts[0].widths[code('H')], 1e-3);
    // Column 7: trunc(91 * 0.4) = trunc(36.4) = 36; row 5: 65.
    EXPECT_NEAR(b[0].x, 36.0f, 1e-3);
    EXPECT_NEAR(b[0].y, 65.0f, 1e-3);
}

TEST_F(LGLFontGrid, WriteHonoursAlignment)
{
    LGLFont font;
    font.create(nullptr, "Arial", 16, 0, 0);
    const std::string text = "Hello";
    const float w = static_cast<float>(sumOfWidths(font.fonts[0], text));
    struct Case {
        int alignment;
        float firstGlyphX;
        bool moves;
    };
    const Case cases[] = {{1, 300.0f, false}, {2, 300.0f, false}, {0, 300.0f - w / 2.0f, true},
                          {-1, 300.0f - w, true}, {-7, 300.0f - w, true}};
    for (const Case& c : cases) {
        SCOPED_TRACE("alignment " + std::to_string(c.alignment));
        font.alignment = c.alignment;
        const std::vector<FeedbackVertex> tokens = bitmaps(recordFeedback([&] {
            rasterAt(300, 200);
            font.write(text);
        }));
        const size_t glyphs = c.moves ? 1 : 0;
        ASSERT_EQ(tokens.size(), text.size() + glyphs);
        if (c.moves) {
            EXPECT_NEAR(tokens[0].x, 300.0f, 1e-3);  // the invisible move starts where the raster was
        }
        EXPECT_NEAR(tokens[glyphs].x, c.firstGlyphX, 1e-3);
        EXPECT_NEAR(tokens[glyphs].y, 200.0f, 1e-3);
        EXPECT_NEAR(rasterPosition()[0], c.firstGlyphX + w, 1e-3);
    }
}

TEST_F(LGLFontGrid, EmptyStringDrawsNothingAndHasNoWidth)
{
    LGLFont font;
    font.create(nullptr, "Arial", 16, 0, 0);
    EXPECT_EQ(font.pixWidthOf(""), 0);
    rasterAt(100, 100);
    EXPECT_TRUE(recordFeedback([&] { font.write(""); }).empty());
    for (int alignment : {1, 0, -1}) {
        font.alignment = alignment;
        font.begin();
        EXPECT_TRUE(recordFeedback([&] {
                        font.writeAt_rp(100, 100, "");
                        font.writeAt_rp(100, 100, "", 1, 1, 1);
                        font.writeAt_rp_tab(100, 100, "");
                    }).empty());
        font.end();
    }
    glClearColor(1, 1, 1, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    glColor3f(0, 0, 0);
    for (int alignment : {1, 0, -1}) {
        font.alignment = alignment;
        rasterAt(100, 100);
        font.write("");
        font.writeAt(2, 2, "");
        font.begin();
        font.writeAt_rp(100, 100, "", 0, 0, 0);
        font.end();
    }
    EXPECT_TRUE(inkIn(readRed(), 0, 0, kWindowWidth - 1, kWindowHeight - 1).empty());
}

TEST_F(LGLFontGrid, PixWidthOfIsTheSumOfTheCurrentFontsWidths)
{
    LGLFont font;
    font.create(nullptr, "Arial", 16, 0, 0);
    const LGLFont::GLGLFont& f = font.fonts[0];
    EXPECT_EQ(font.pixWidthOf("Hello, World"), 2 * f.widths[code('l')] + f.widths[code('H')] + f.widths[code('e')] + f.widths[code('l')] +
                                                   2 * f.widths[code('o')] + f.widths[code(',')] + f.widths[code(' ')] +
                                                   f.widths[code('W')] + f.widths[code('r')] + f.widths[code('d')]);
    // Arial's H is 1479 of 2048 units wide; a 16-pixel cell is a 14-pixel em: round(10.1) = 10.
    EXPECT_EQ(font.pixWidthOf("H"), 10);
}

TEST_F(LGLFontGrid, ListsAdvanceByTheWidthsThatPixWidthOfAdds)
{
    LGLFont font;
    font.create(nullptr, "Arial", 16, 0, 0);
    std::string text;
    for (int c = 32; c < 127; ++c)
        text.push_back(static_cast<char>(c));
    const std::vector<FeedbackVertex> tokens = bitmaps(recordFeedback([&] {
        rasterAt(10, 200);
        font.write(text);
    }));
    ASSERT_EQ(tokens.size(), text.size());
    float x = 10.0f;
    for (size_t i = 0; i < text.size(); ++i) {
        SCOPED_TRACE(std::string("character ") + text[i]);
        EXPECT_NEAR(tokens[i].x, x, 1e-3);
        EXPECT_NEAR(tokens[i].y, 200.0f, 1e-3);
        x += static_cast<float>(font.fonts[0].widths[static_cast<unsigned char>(text[i])]);
    }
    EXPECT_NEAR(rasterPosition()[0], 10.0f + font.pixWidthOf(text), 1e-3);
}

TEST_F(LGLFontGrid, UpperHalfCodesAreMeasuredByTheirOwnWidths)
{
    LGLFont font;
    font.create(nullptr, "Arial", 16, 0, 0);
    const LGLFont::GLGLFont& f = font.fonts[0];
    const std::string text = "\xC9t\xE9 \x80\xFC\xA9";
    const int expected = f.widths[0xC9] + f.widths[code('t')] + f.widths[0xE9] + f.widths[code(' ')] + f.widths[0x80] +
                         f.widths[0xFC] + f.widths[0xA9];
    EXPECT_EQ(font.pixWidthOf(text), expected);
    // Drawn left-aligned the text advances exactly that far; right-aligned it ends where it began.
    rasterAt(100, 100);
    font.write(text);
    EXPECT_NEAR(rasterPosition()[0], 100.0f + expected, 1e-3);
    font.alignment = -1;
    rasterAt(300, 100);
    font.write(text);
    EXPECT_NEAR(rasterPosition()[0], 300.0f, 1e-3);
}

TEST_F(LGLFontGrid, WriteBufferWritesEachLineOnTheNextGridRow)
{
    LGLFont font;
    font.create(nullptr, "Arial", 13, 0, 0);
    font.push("one");
    font.push("two");
    font.push("three");
    const std::vector<FeedbackVertex> tokens = bitmaps(recordFeedback([&] { font.writeBuffer(); }));
    ASSERT_EQ(tokens.size(), 11u);
    // Lines start at x = trunc(13 * 0.4) = 5, on y = 13, 26, 39.
    EXPECT_NEAR(tokens[0].x, 5.0f, 1e-3);
    EXPECT_NEAR(tokens[0].y, 13.0f, 1e-3);
    EXPECT_NEAR(tokens[3].x, 5.0f, 1e-3);
    EXPECT_NEAR(tokens[3].y, 26.0f, 1e-3);
    EXPECT_NEAR(tokens[6].x, 5.0f, 1e-3);
    EXPECT_NEAR(tokens[6].y, 39.0f, 1e-3);
    EXPECT_NEAR(tokens[7].x, 5.0f + font.fonts[0].widths[code('t')], 1e-3);
}

TEST_F(LGLFontGrid, PushKeepsACopyInTheBufferSharedByAllFonts)
{
    LGLFont a, b;
    a.create(nullptr, "Arial", 13, 0, 0);
    std::string line = "abc";
    a.push(line);
    line[0] = 'x';
    b.push("de");
    ASSERT_EQ(LGLFont::textBuffer.size(), 2u);
    EXPECT_EQ(LGLFont::textBuffer[0], "abc");
    EXPECT_EQ(LGLFont::textBuffer[1], "de");
    EXPECT_EQ(bitmaps(recordFeedback([&] { a.writeBuffer(); })).size(), 5u);
    b.clearBuffer();
    EXPECT_TRUE(LGLFont::textBuffer.empty());
    EXPECT_TRUE(recordFeedback([&] { a.writeBuffer(); }).empty());
}

TEST_F(LGLFontGrid, WritesWithoutAFontUseTheEmptyFirstRecord)
{
    LGLFont font;
    EXPECT_EQ(font.pixWidthOf("anything"), 0);
    // With list base 0 the bytes themselves are the list names; none of these is a list here, so
    // nothing is drawn and nothing fails.
    for (char c : std::string("abc"))
        ASSERT_FALSE(glIsList(static_cast<GLuint>(code(c))));
    EXPECT_TRUE(recordFeedback([&] {
                    rasterAt(100, 100);
                    font.write("abc");
                }).empty());
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

// ================================================================ life cycle

class LGLFontLife : public FontTest {};

TEST_F(LGLFontLife, DisposeDeletesTheListsOfEveryFontAndKeepsTheCount)
{
    LGLFont font;
    font.create(nullptr, "Arial", 16, 0, 0);
    font.create(nullptr, "Arial", 20, 0, 0);
    font.dispose();
    EXPECT_EQ(font.numFonts, 2);
    for (int i = 0; i < 2; ++i)
        for (GLuint c = 0; c < 256; ++c)
            EXPECT_FALSE(glIsList(font.fonts[i].base + c));
}

TEST_F(LGLFontLife, DestructorDeletesTheLists)
{
    GLuint base = 0;
    {
        LGLFont font;
        font.create(nullptr, "Arial", 16, 0, 0);
        base = font.fonts[0].base;
        ASSERT_TRUE(glIsList(base));
    }
    for (GLuint c = 0; c < 256; ++c)
        EXPECT_FALSE(glIsList(base + c));
}

TEST_F(LGLFontLife, DisposeThenDestructorDeletesTheSameListsTwiceHarmlessly)
{
    GLuint base = 0;
    {
        LGLFont font;
        font.create(nullptr, "Arial", 16, 0, 0);
        base = font.fonts[0].base;
        font.dispose();
        EXPECT_FALSE(glIsList(base));
    }
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    EXPECT_FALSE(glIsList(base));
}

TEST_F(LGLFontLife, CopiesShareTheListsAndEitherDeletesThemForBoth)
{
    LGLFont a;
    a.create(nullptr, "Arial", 16, 0, 0);
    const GLuint base = a.fonts[0].base;
    {
        LGLFont b(a);
        LGLFont c;
        c = a;
        EXPECT_EQ(b.fonts[0].base, base);
        EXPECT_EQ(c.fonts[0].base, base);
        EXPECT_EQ(widthsOf(c.fonts[0]), widthsOf(a.fonts[0]));
    }
    EXPECT_FALSE(glIsList(base));
    EXPECT_EQ(a.fonts[0].base, base);
}
