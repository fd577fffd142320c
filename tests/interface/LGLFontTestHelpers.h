// LGLFontTestHelpers.h -- the fixture, feedback filters, ink measurement and exact-width texts shared
// by the tests of LGLFont.
#pragma once

#include <ostrum_gl/interface/LGLFont.h>

#include "TestSupport.h"

#include <GL/gl.h>

#include <algorithm>
#include <string>
#include <vector>

namespace font_test {

using ostrum_test::FeedbackItem;
using ostrum_test::FeedbackVertex;

// A character as an index into a width table.
constexpr int code(char c)
{
    return static_cast<unsigned char>(c);
}

constexpr int kWindowWidth = ostrum_test::GLTestWindow::kWidth;
constexpr int kWindowHeight = ostrum_test::GLTestWindow::kHeight;

// GLTest with the state LGLFont leaves behind put back to OpenGL's defaults before and after each
// test, and the class-wide text buffer emptied.
class FontTest : public ostrum_test::GLTest {
protected:
    void SetUp() override
    {
        GLTest::SetUp();
        resetState();
    }
    void TearDown() override { resetState(); }

    static void resetState()
    {
        glDisable(GL_LINE_STIPPLE);
        glLineStipple(1, 0xFFFF);
        glListBase(0);
        glMatrixMode(GL_MODELVIEW);
        glColor4f(1, 1, 1, 1);
        LGLFont::textBuffer.clear();
        while (glGetError() != GL_NO_ERROR) {
        }
    }

    // The window-coordinate vertices of the GL_BITMAP_TOKEN items, in order.
    static std::vector<FeedbackVertex> bitmaps(const std::vector<FeedbackItem>& items)
    {
        std::vector<FeedbackVertex> out;
        for (const FeedbackItem& item : ostrum_test::itemsOf(items, GL_BITMAP_TOKEN))
            out.push_back(item.vertices.at(0));
        return out;
    }

    static std::vector<float> rasterPosition()
    {
        std::vector<float> position(4);
        glGetFloatv(GL_CURRENT_RASTER_POSITION, position.data());
        return position;
    }
};

// Where the dark pixels (red below 128) of a window area lie, in window coordinates (y up).
struct Ink {
    int left = 0, right = -1, bottom = 0, top = -1;  // inclusive; right < left when there is none
    int count = 0;
    int grey = 0;  // pixels neither pure black nor pure white
    bool empty() const { return count == 0; }
    int width() const { return right - left + 1; }
    int height() const { return top - bottom + 1; }
};

// The whole window's red channel, rows bottom-up.
inline std::vector<unsigned char> readRed()
{
    std::vector<unsigned char> red(static_cast<size_t>(kWindowWidth) * kWindowHeight);
    glFinish();
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadBuffer(GL_BACK);
    glReadPixels(0, 0, kWindowWidth, kWindowHeight, GL_RED, GL_UNSIGNED_BYTE, red.data());
    return red;
}

inline Ink inkIn(const std::vector<unsigned char>& red, int x0, int y0, int x1, int y1)
{
    Ink ink;
    for (int y = y0; y <= y1; ++y) {
        for (int x = x0; x <= x1; ++x) {
            const unsigned char value = red[static_cast<size_t>(y) * kWindowWidth + x];
            if (value != 0 && value != 255)
                ++ink.grey;
            if (value >= 128)
                continue;
            if (ink.count == 0) {
                ink.left = ink.right = x;
                ink.bottom = ink.top = y;
            }
            ink.left = std::min(ink.left, x);
            ink.right = std::max(ink.right, x);
            ink.bottom = std::min(ink.bottom, y);
            ink.top = std::max(ink.top, y);
            ++ink.count;
        }
    }
    return ink;
}

// A text of printable characters whose widths in `font` add up to exactly `width`, found by a
// change-making search over the width table (empty when no combination exists).
inline std::string textOfWidth(const LGLFont::GLGLFont& font, int width)
{
    std::vector<int> via(static_cast<size_t>(width) + 1, -1);
    std::vector<bool> reachable(static_cast<size_t>(width) + 1, false);
    reachable[0] = true;
    for (int w = 1; w <= width; ++w) {
        for (int c = 'A'; c <= 'z'; ++c) {
            const int cw = font.widths[c];
            if (cw > 0 && cw <= w && reachable[w - cw]) {
                reachable[w] = true;
                via[w] = c;
                break;
            }
        }
    }
    if (!reachable[width])
        return {};
    std::string text;
    for (int w = width; w > 0; w -= font.widths[via[w]])
        text.push_back(static_cast<char>(via[w]));
    return text;
}

inline int sumOfWidths(const LGLFont::GLGLFont& font, const std::string& text)
{
    int sum = 0;
    for (unsigned char c : text)
        sum += font.widths[c];
    return sum;
}

}  // namespace font_test
