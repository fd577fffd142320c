// LGLFont.h -- bitmap fonts: up to ten system fonts as OpenGL display lists with their width tables,
// written on a character grid or in window pixels with colour, alignment, shadow and tab columns.
//
// A font is built for the OpenGL context current on the calling thread; the HDC that create takes is
// never read (nullptr is fine). The faces come from the system through LGLFontRasterizer (see
// ostrum_gl/platform/LGLFontRasterizer.h for how names, heights, weights and the character sets are
// read): list base + c draws code c at the raster position, on the baseline, and advances the raster
// position by widths[c] pixels.
//
// Text is bytes, one per character: Windows-1252 in the ANSI fonts, the Adobe Symbol encoding in the
// "symbol" font. UTF-8 text shows its bytes as 1252 characters ("é" in UTF-8 draws as "Ã©").
//
// Choices recorded here:
//  - Widths of codes 128 to 255: the width of a byte is always its own entry of the width table, the
//    byte read as unsigned. Alignment, pixWidthOf and the tab columns therefore measure accented and
//    other upper-half characters exactly as far as their display lists advance, like every other code.
//  - GLGLFont names its fields base (first of the 256 lists), widths (advance of each code in pixels)
//    and height (the height given to create). Records not created are all zero.
//  - Grid writes set the raster position directly in window coordinates (glWindowPos), whatever the
//    matrices; writeBuffer starts every line one grid column in, at x = trunc(0.4 h), on row i + 1.
//  - The re-latch of the colour shortcuts reads the raster position as floats and sets it back
//    through the pixel orthographic projection of begin without rounding.
//  - The pixel writes save and restore only the current colour around each pass, not the raster
//    position, which is left where the last glyph took it. The dotted tab leader lines are drawn in
//    grey 0.6, and that grey stays the current colour after a line that drew one; line stipple is left
//    disabled.
//  - The copy constructor copies every member, display-list names included, and then, like every
//    constructor, resets the class-wide tab stops to 40, 80, ..., 800.
//  - create with a null face name asks for the system's default face (as an empty name does). When
//    not a single font can be found on the system the font is still added, with empty lists and zero
//    widths, and "** WARNING LGLFont::create> no font face found for "<name>" (LGLFont.cpp)" is written.
//  - A null text draws nothing, like an empty one.
//  - Indexes into fonts are not checked beyond what selectFont does: currentFont set directly to a
//    value outside 0..9 is the game's error.
#pragma once

#include <ostrum_core/WinTypes.h>
#include <ostrum_gl/frame/LGL.h>

#include <string>
#include <vector>

class LGLFont {
public:
    // One created font.
    struct GLGLFont {
        unsigned int base;
        int widths[256];
        int height;
    };

    // Window pixels, y downward.
    struct tPoint {
        int x;
        int y;
    };

    static constexpr int MAX_FONTS = 10;
    static constexpr int NUM_TAB_STOPS = 20;

    LGLFont();
    LGLFont(const LGLFont& other);
    LGLFont& operator=(const LGLFont& other) = default;
    ~LGLFont();

    // ------------------------------------------------------------ set-up

    void create(HDC dc, const char* faceName, int height, int weight, unsigned long italic);
    void selectFont(int fontId);
    // Deletes the 256 lists of every created font; numFonts stays as it is.
    void dispose();

    // ------------------------------------------------------------ colours

    void cWhite();
    void cBlack();
    void cRed();
    void cGreen();
    void cDarkGreen();
    void cBlue();
    void cDarkBlue();
    void cYellow();
    void cPurple();
    void cCyan();
    void cGray(float level);
    // Like the shortcuts, without storing into color.
    void setColor(float r, float g, float b);
    void setColor_rp(float r, float g, float b);
    void setColor_rp(float r, float g, float b, float a);

    // ------------------------------------------------------------ grid writes

    void write(const std::string& text);
    void writeAt(int col, int row, const std::string& text);
    void writeAt(int col, int row, const char* text);
    int pixWidthOf(const std::string& text);
    void push(std::string line);
    void writeBuffer();
    void clearBuffer();

    // ------------------------------------------------------------ pixel writes

    void begin();
    void end();
    void writeAt_rp(int x, int y, const char* text, float r, float g, float b);
    void writeAt_rp(int x, int y, const std::string& text);
    // Convenience: the coloured write for a std::string.
    void writeAt_rp(int x, int y, const std::string& text, float r, float g, float b);
    // A line of columns: a tab or a slash starts a new column. Each column starts at the previous
    // column's start plus the first tab stop at or past the width of all columns so far (that width
    // itself past the last stop). The steps compound on purpose: with stops 40 apart, a first column
    // 30 pixels wide puts the second at x + 40, and a second 35 wide puts the third at x + 40 + 80.
    // With tabLines set, a grey dotted leader joins each column to the next.
    void writeAt_rp_tab(int x, int y, const std::string& text, float r, float g, float b);
    void writeAt_rp_tab(int x, int y, const std::string& text);
    void writeLine_rp_tab(const std::string& text);
    void writeLine_rp_tab(int line, const std::string& text);
    void writeLine_rp_tab(int col, int line, const std::string& text);

    void getPos_rp(int& x, int& y);
    void setPos_rp(int x, int y);
    void setLineSpacing_rp(int spacing);
    int getLineSpacing_rp();
    // Class-wide: tabStops[i] = (i + 1) * w.
    void setTabWidth(int w);

    // ------------------------------------------------------------ data

    int alignment;
    bool shadow;
    bool tabLines;
    GLGLFont fonts[MAX_FONTS];
    int numFonts;
    LGL::tGLRGB color;
    LGL::tGLRGBA color_rp;
    tPoint pos_rp;
    int lineSpacing_rp;
    int currentFont;
    int windowWidth;
    int windowHeight;

    static std::vector<int> tabStops;
    static std::vector<std::string> textBuffer;

private:
    void puts(const GLGLFont& font, const char* text);
    void writeAt_rp_inner(int x, int y, const char* text, float r, float g, float b, int& width);

    // Sets the colour and re-latches the raster position so that bitmap text takes it.
    void latchColor(float r, float g, float b);
    void storeAndLatch(float r, float g, float b);
    // Float sum of the widths of the bytes of text in the current font.
    float widthOf(const char* text) const;
    void resetTabStops();
};
