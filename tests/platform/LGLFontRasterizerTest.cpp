// LGLFontRasterizerTest.cpp -- system fonts as bitmap display lists: which face fontconfig picks, how
// codes map to characters, the sizes and widths of the glyphs, and what their lists draw.
#include <ostrum_gl/platform/LGLFontRasterizer.h>

#include "TestSupport.h"

#include <GL/gl.h>
#include <iconv.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <string>
#include <vector>

using ostrum_test::FeedbackItem;
using ostrum_test::itemsOf;
using ostrum_test::recordFeedback;

namespace {

constexpr int kWidth = ostrum_test::GLTestWindow::kWidth;
constexpr int kHeight = ostrum_test::GLTestWindow::kHeight;

LGLFontRasterizer::tFontRequest requestFor(const char* face, int height, int weight = 0, bool italic = false,
                                           bool symbolSet = false)
{
    LGLFontRasterizer::tFontRequest request;
    request.faceName = face;
    request.height = height;
    request.weight = weight;
    request.italic = italic;
    request.symbolSet = symbolSet;
    return request;
}

LGLFontRasterizer::tResolvedFace resolve(const LGLFontRasterizer::tFontRequest& request)
{
    LGLFontRasterizer::tResolvedFace face;
    EXPECT_TRUE(LGLFontRasterizer::resolveFace(request, face));
    return face;
}

// What the fontconfig command-line tool answers for a pattern, e.g. "%{family[0]}".
std::string fcMatch(const std::string& pattern, const std::string& format)
{
    const std::string command = "fc-match -f '" + format + "' '" + pattern + "'";
    std::FILE* pipe = popen(command.c_str(), "r");
    if (pipe == nullptr)
        return {};
    std::string out;
    char buffer[256];
    size_t n;
    while ((n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0)
        out.append(buffer, n);
    pclose(pipe);
    return out;
}

// Arial's advance widths in font units of a 2048-unit em, and its Windows ascent plus descent.
struct DesignWidth {
    char c;
    int units;
};
constexpr DesignWidth kArialWidths[] = {
    {' ', 569}, {'!', 569}, {'0', 1139}, {'7', 1139}, {'A', 1366}, {'B', 1366}, {'C', 1479},
    {'H', 1479}, {'I', 569}, {'M', 1706}, {'W', 1933}, {'a', 1139}, {'e', 1139}, {'i', 455},
    {'l', 455},  {'m', 1706}, {'r', 682}, {'s', 1024}, {'w', 1479},
};
constexpr int kArialWinAscentPlusDescent = 1854 + 434;

struct BuiltFont {
    GLuint base = 0;
    std::vector<int> widths = std::vector<int>(256, -1);
    bool built = false;
};

}  // namespace

class LGLFontRasterizerTest : public ostrum_test::GLTest {
protected:
    void TearDown() override
    {
        for (const BuiltFont& font : fonts_)
            glDeleteLists(font.base, 256);
        glListBase(0);
    }

    const BuiltFont& build(const LGLFontRasterizer::tFontRequest& request)
    {
        BuiltFont font;
        font.base = glGenLists(256);
        font.built = LGLFontRasterizer::buildLists(request, font.base, font.widths.data());
        fonts_.push_back(font);
        return fonts_.back();
    }

    // The red channel after drawing `text` in white on black from window pixel (x, y).
    static std::vector<unsigned char> draw(const BuiltFont& font, const std::string& text, int x, int y)
    {
        glClearColor(0, 0, 0, 0);
        glClear(GL_COLOR_BUFFER_BIT);
        setPixelProjection();
        glColor3f(1, 1, 1);
        glRasterPos2i(x, y);
        glListBase(font.base);
        glCallLists(static_cast<GLsizei>(text.size()), GL_UNSIGNED_BYTE, text.data());
        glListBase(0);
        std::vector<unsigned char> red(static_cast<size_t>(kWidth) * kHeight);
        glFinish();
        glPixelStorei(GL_PACK_ALIGNMENT, 1);
        glReadPixels(0, 0, kWidth, kHeight, GL_RED, GL_UNSIGNED_BYTE, red.data());
        return red;
    }

    // Lowest and highest lit row and leftmost and rightmost lit column, or false when nothing is lit.
    static bool inkBox(const std::vector<unsigned char>& red, int& left, int& right, int& bottom, int& top)
    {
        bool any = false;
        for (int y = 0; y < kHeight; ++y)
            for (int x = 0; x < kWidth; ++x)
                if (red[static_cast<size_t>(y) * kWidth + x] >= 128) {
                    if (!any) {
                        left = right = x;
                        bottom = top = y;
                        any = true;
                    }
                    left = std::min(left, x);
                    right = std::max(right, x);
                    bottom = std::min(bottom, y);
                    top = std::max(top, y);
                }
        return any;
    }

    std::deque<BuiltFont> fonts_;  // a deque keeps the references build hands out valid
};

// ================================================================ face choice

TEST(LGLFontRasterizerFaces, ArialResolvesToTheMetricCompatibleLiberationSans)
{
    EXPECT_EQ(resolve(requestFor("Arial", 16)).family, "Liberation Sans");
    EXPECT_EQ(resolve(requestFor("arial", 16)).family, "Liberation Sans");
    EXPECT_EQ(resolve(requestFor("Arial", 16)).style, "Regular");
    EXPECT_EQ(resolve(requestFor("Arial", 16, 700)).style, "Bold");
    EXPECT_EQ(resolve(requestFor("Arial", 16, 0, true)).style, "Italic");
    EXPECT_EQ(resolve(requestFor("Arial", 16, 700, true)).style, "Bold Italic");
}

TEST(LGLFontRasterizerFaces, TahomaResolvesToASansFace)
{
    const LGLFontRasterizer::tResolvedFace face = resolve(requestFor("Tahoma", 12));
    EXPECT_TRUE(face.family == "Tahoma" || face.family == "DejaVu Sans") << face.family;
    EXPECT_FALSE(face.emboldened);
    EXPECT_NE(resolve(requestFor("Tahoma", 12, 700)).style.find("Bold"), std::string::npos);
}

TEST(LGLFontRasterizerFaces, UnknownFaceFallsBackToFontconfigsBestMatch)
{
    const LGLFontRasterizer::tResolvedFace face = resolve(requestFor("No Such Face Anywhere", 16));
    EXPECT_FALSE(face.file.empty());
    EXPECT_EQ(face.family, fcMatch("No Such Face Anywhere", "%{family[0]}"));
    EXPECT_EQ(face.file, fcMatch("No Such Face Anywhere", "%{file}"));
}

TEST(LGLFontRasterizerFaces, WeightZeroAndBelowAreTheNormalWeight)
{
    const std::string normal = resolve(requestFor("Arial", 16, 400)).file;
    EXPECT_EQ(resolve(requestFor("Arial", 16, 0)).file, normal);
    EXPECT_EQ(resolve(requestFor("Arial", 16, -20)).file, normal);
    EXPECT_EQ(resolve(requestFor("Arial", 16, 300)).file, normal);
    EXPECT_EQ(resolve(requestFor("Arial", 16, 700)).file, fcMatch("Liberation Sans:bold", "%{file}"));
    EXPECT_EQ(resolve(requestFor("Arial", 16, 5000)).file, resolve(requestFor("Arial", 16, 1000)).file);
}

TEST(LGLFontRasterizerFaces, MissingBoldAndItalicAreSynthesised)
{
    // This family comes in one upright extra-light style only.
    const char* single = "DejaVu Sans Light";
    ASSERT_EQ(resolve(requestFor(single, 16)).style, "ExtraLight");
    EXPECT_FALSE(resolve(requestFor(single, 16)).emboldened);
    EXPECT_FALSE(resolve(requestFor(single, 16)).slanted);
    EXPECT_TRUE(resolve(requestFor(single, 16, 700)).emboldened);
    EXPECT_TRUE(resolve(requestFor(single, 16, 0, true)).slanted);
}

// ================================================================ character sets

TEST(LGLFontRasterizerCodes, AnsiCodesAreWindows1252)
{
    iconv_t converter = iconv_open("UTF-32LE", "CP1252");
    ASSERT_NE(converter, reinterpret_cast<iconv_t>(-1));
    for (int code = 0; code < 256; ++code) {
        char in = static_cast<char>(code);
        unsigned char out[4] = {0, 0, 0, 0};
        char* inPtr = &in;
        char* outPtr = reinterpret_cast<char*>(out);
        size_t inLeft = 1, outLeft = 4;
        iconv(converter, nullptr, nullptr, nullptr, nullptr);
        const bool defined = iconv(converter, &inPtr, &inLeft, &outPtr, &outLeft) != static_cast<size_t>(-1);
        const unsigned int expected = defined ? out[0] | out[1] << 8 | out[2] << 16 | out[3] << 24
                                              : static_cast<unsigned int>(code);
        EXPECT_EQ(LGLFontRasterizer::unicodeOf(code, false), expected) << "code " << code;
    }
    iconv_close(converter);
    EXPECT_EQ(LGLFontRasterizer::unicodeOf(0x80, false), 0x20ACu);  // the euro sign
    EXPECT_EQ(LGLFontRasterizer::unicodeOf(0x81, false), 0x81u);    // undefined in 1252
    EXPECT_EQ(LGLFontRasterizer::unicodeOf(0xE9, false), 0xE9u);
    EXPECT_EQ(LGLFontRasterizer::unicodeOf(256, false), 0u);
    EXPECT_EQ(LGLFontRasterizer::unicodeOf(-1, false), 0u);
}

TEST(LGLFontRasterizerCodes, SymbolCodesAreTheAdobeSymbolEncoding)
{
    struct Pair {
        int code;
        unsigned int character;
    };
    const Pair pairs[] = {
        {'a', 0x03B1}, {'b', 0x03B2}, {'p', 0x03C0}, {'W', 0x03A9}, {'D', 0x0394}, {'S', 0x03A3},
        {'m', 0x03BC}, {'0', '0'},    {'+', '+'},    {'"', 0x2200}, {'$', 0x2203}, {'-', 0x2212},
        {0xA5, 0x221E}, {0xB1, 0x00B1}, {0xB3, 0x2265}, {0xB9, 0x2260}, {0xAE, 0x2192}, {0xC6, 0x2205},
        {0xD6, 0x221A}, {0xE5, 0x2211}, {0xF2, 0x222B}, {0xB0, 0x00B0}, {0xA7, 0x2663},
        {0xF0, 0},      {0xFF, 0},
    };
    for (const Pair& pair : pairs)
        EXPECT_EQ(LGLFontRasterizer::unicodeOf(pair.code, true), pair.character) << "code " << pair.code;
}

// ================================================================ lists and widths

TEST_F(LGLFontRasterizerTest, EveryCodeHasOneBitmapListThatAdvancesByItsWidth)
{
    for (bool symbolSet : {false, true}) {
        SCOPED_TRACE(symbolSet ? "symbol set" : "ANSI set");
        const BuiltFont& font = build(requestFor(symbolSet ? "symbol" : "Arial", 16, 0, false, symbolSet));
        ASSERT_TRUE(font.built);
        EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
        setPixelProjection();
        for (int code = 0; code < 256; ++code) {
            const GLuint list = font.base + static_cast<GLuint>(code);
            ASSERT_TRUE(glIsList(list)) << "code " << code;
            std::vector<float> after(4);
            const std::vector<FeedbackItem> items = recordFeedback([&] {
                glRasterPos2i(100, 200);
                glCallList(list);
                glGetFloatv(GL_CURRENT_RASTER_POSITION, after.data());
            });
            ASSERT_EQ(items.size(), 1u) << "code " << code;
            EXPECT_EQ(items[0].token, static_cast<GLenum>(GL_BITMAP_TOKEN));
            EXPECT_NEAR(items[0].vertices[0].x, 100.0f, 1e-3);
            EXPECT_NEAR(after[0], 100.0f + font.widths[code], 1e-3) << "code " << code;
            EXPECT_NEAR(after[1], 200.0f, 1e-3) << "code " << code;
            EXPECT_GE(font.widths[code], 0);
        }
    }
}

TEST_F(LGLFontRasterizerTest, ArialWidthsAreArialsDesignWidthsAtTheEmOfTheCellHeight)
{
    // A positive height is the cell: ascent plus descent. The em is the cell times 2048 / 2288,
    // rounded to whole pixels as the desktop rasteriser does.
    for (int height : {16, 24, 32, 11}) {
        SCOPED_TRACE("height " + std::to_string(height));
        const double em = std::round(height * 2048.0 / kArialWinAscentPlusDescent);
        const BuiltFont& font = build(requestFor("Arial", height));
        for (const DesignWidth& d : kArialWidths)
            EXPECT_EQ(font.widths[static_cast<unsigned char>(d.c)], static_cast<int>(std::lround(d.units * em / 2048.0)))
                << "character " << d.c;
    }
}

TEST_F(LGLFontRasterizerTest, NegativeHeightIsTheEmAndZeroIsASixteenPixelCell)
{
    const BuiltFont& cell16 = build(requestFor("Arial", 16));
    const BuiltFont& em14 = build(requestFor("Arial", -14));
    const BuiltFont& zero = build(requestFor("Arial", 0));
    const BuiltFont& em30 = build(requestFor("Arial", -30));
    EXPECT_EQ(em14.widths, cell16.widths);
    EXPECT_EQ(zero.widths, cell16.widths);
    EXPECT_EQ(em30.widths['W'], static_cast<int>(std::lround(1933 * 30 / 2048.0)));
}

TEST_F(LGLFontRasterizerTest, GlyphsSitOnTheBaselineAtTheRasterPosition)
{
    const BuiltFont& font = build(requestFor("Arial", 32));
    int left = 0, right = 0, bottom = 0, top = 0;
    for (char c : std::string("HExzN1")) {
        SCOPED_TRACE(std::string("character ") + c);
        ASSERT_TRUE(inkBox(draw(font, std::string(1, c), 100, 150), left, right, bottom, top));
        EXPECT_EQ(bottom, 150);
        EXPECT_GE(left, 100);
        EXPECT_LT(right, 100 + font.widths[static_cast<unsigned char>(c)]);
    }
    // Capital height: 1466 of 2048 units at a 29-pixel em is 20.8 pixels.
    ASSERT_TRUE(inkBox(draw(font, "H", 100, 150), left, right, bottom, top));
    EXPECT_GE(top - bottom + 1, 20);
    EXPECT_LE(top - bottom + 1, 22);
}

TEST_F(LGLFontRasterizerTest, CallersUnpackStateNeitherShapesTheBitmapsNorIsLost)
{
    const BuiltFont& plain = build(requestFor("Arial", 20));
    glPixelStorei(GL_UNPACK_ALIGNMENT, 8);
    glPixelStorei(GL_UNPACK_LSB_FIRST, GL_TRUE);
    glPixelStorei(GL_UNPACK_ROW_LENGTH, 3);
    const BuiltFont& odd = build(requestFor("Arial", 20));
    GLint alignment = 0, lsbFirst = 0, rowLength = 0;
    glGetIntegerv(GL_UNPACK_ALIGNMENT, &alignment);
    glGetIntegerv(GL_UNPACK_LSB_FIRST, &lsbFirst);
    glGetIntegerv(GL_UNPACK_ROW_LENGTH, &rowLength);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    glPixelStorei(GL_UNPACK_LSB_FIRST, GL_FALSE);
    glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
    EXPECT_EQ(alignment, 8);
    EXPECT_EQ(lsbFirst, GL_TRUE);
    EXPECT_EQ(rowLength, 3);
    EXPECT_TRUE(draw(plain, "Quick@%", 50, 100) == draw(odd, "Quick@%", 50, 100));
}

TEST_F(LGLFontRasterizerTest, SymbolSetDrawsPiWhereTheAnsiSetDrawsP)
{
    const LGLFontRasterizer::tResolvedFace symbolFace = resolve(requestFor("symbol", 24, 0, false, true));
    const BuiltFont& symbol = build(requestFor("symbol", 24, 0, false, true));
    const BuiltFont& ansi = build(requestFor(symbolFace.family.c_str(), 24));
    ASSERT_EQ(resolve(requestFor(symbolFace.family.c_str(), 24)).file, symbolFace.file);
    int left = 0, right = 0, bottom = 0, top = 0;
    // p has a descender, pi has none.
    ASSERT_TRUE(inkBox(draw(ansi, "p", 100, 150), left, right, bottom, top));
    EXPECT_LT(bottom, 148);
    ASSERT_TRUE(inkBox(draw(symbol, "p", 100, 150), left, right, bottom, top));
    EXPECT_GE(bottom, 149);
    // Digits are digits in both sets.
    EXPECT_EQ(symbol.widths['7'], ansi.widths['7']);
    EXPECT_TRUE(draw(symbol, "7", 100, 150) == draw(ansi, "7", 100, 150));
}

TEST_F(LGLFontRasterizerTest, UnmappedCodesDrawTheFacesDefaultGlyph)
{
    // 0x81 is undefined in Windows-1252 and no face has a glyph for the control it stands for.
    const BuiltFont& font = build(requestFor("DejaVu Sans", 20));
    EXPECT_GT(font.widths[0x81], 0);
    EXPECT_EQ(font.widths[0x81], font.widths[0x8D]);
    EXPECT_TRUE(draw(font, "\x81", 100, 100) == draw(font, "\x8D", 100, 100));
}

TEST_F(LGLFontRasterizerTest, SynthesisedBoldIsWiderAndHeavier)
{
    const char* single = "DejaVu Sans Light";
    const BuiltFont& regular = build(requestFor(single, 24));
    const BuiltFont& bold = build(requestFor(single, 24, 700));
    EXPECT_GE(bold.widths['l'], regular.widths['l']);
    auto litCount = [](const std::vector<unsigned char>& red) {
        size_t n = 0;
        for (unsigned char v : red)
            n += v >= 128 ? 1 : 0;
        return n;
    };
    EXPECT_GT(litCount(draw(bold, "Hello", 100, 100)), litCount(draw(regular, "Hello", 100, 100)));
}

TEST_F(LGLFontRasterizerTest, SynthesisedItalicLeansRight)
{
    const char* single = "DejaVu Sans Light";
    const BuiltFont& upright = build(requestFor(single, 40));
    const BuiltFont& slanted = build(requestFor(single, 40, 0, true));
    // How far right the ink of the glyph's top quarter lies of the ink of its bottom quarter.
    auto lean = [&](const BuiltFont& font) {
        const std::vector<unsigned char> red = draw(font, "H", 100, 100);
        int left = 0, right = 0, bottom = 0, top = 0;
        EXPECT_TRUE(inkBox(red, left, right, bottom, top));
        const int quarter = std::max(1, (top - bottom + 1) / 4);
        auto meanX = [&](int fromRow, int toRow) {
            double sum = 0;
            int n = 0;
            for (int y = fromRow; y <= toRow; ++y)
                for (int x = 0; x < kWidth; ++x)
                    if (red[static_cast<size_t>(y) * kWidth + x] >= 128) {
                        sum += x;
                        ++n;
                    }
            return n > 0 ? sum / n : 0.0;
        };
        return meanX(top - quarter + 1, top) - meanX(bottom, bottom + quarter - 1);
    };
    // The shear of 0.2 moves the top of a 26-pixel capital about 4 pixels further right than its foot.
    EXPECT_NEAR(lean(upright), 0.0, 1.0);
    EXPECT_GT(lean(slanted), 3.0);
}

// ================================================================ no fonts at all

namespace {
void buildWithoutAnyFont()
{
    const std::string dir = ostrum_test::makeTempDir();
    const std::string config = dir + "/empty.conf";
    ostrum_test::writeFile(config, "<?xml version=\"1.0\"?>\n<!DOCTYPE fontconfig SYSTEM \"fonts.dtd\">\n"
                                   "<fontconfig></fontconfig>\n");
    setenv("FONTCONFIG_FILE", config.c_str(), 1);
    LGLFontRasterizer::tResolvedFace face;
    bool ok = !LGLFontRasterizer::resolveFace(requestFor("Arial", 16), face);
    const GLuint base = glGenLists(256);
    std::vector<int> widths(256, -1);
    ok = ok && !LGLFontRasterizer::buildLists(requestFor("Arial", 16), base, widths.data());
    for (int code = 0; code < 256; ++code) {
        ok = ok && widths[code] == 0 && glIsList(base + code);
        const std::vector<FeedbackItem> items = recordFeedback([&] {
            glRasterPos2i(0, 0);
            glCallList(base + code);
        });
        ok = ok && items.size() == 1 && items[0].token == GL_BITMAP_TOKEN;
    }
    std::exit(ok ? 0 : 1);
}
}  // namespace

class LGLFontRasterizerDeathTest : public ostrum_test::GLTest {};

TEST_F(LGLFontRasterizerDeathTest, WithoutAnyFontTheListsAreEmptyAndTheWidthsZero)
{
    EXPECT_EXIT(buildWithoutAnyFont(), ::testing::ExitedWithCode(0), "");
}
