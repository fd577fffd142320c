// LGLUITestHelpers.h -- the fixture, hand-stepped clock, game-like event drivers, geometry computed
// from the layout rules and feedback filters shared by the tests of LGLUI and its widgets.
#pragma once

#include <ostrum_gl/interface/LGLUI.h>

#include "LGLFontTestHelpers.h"
#include "TestSupport.h"

#include <GL/gl.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <string>
#include <vector>

namespace ui_test {

using ostrum_test::FeedbackItem;
using ostrum_test::FeedbackVertex;

constexpr int kWindowHeight = ostrum_test::GLTestWindow::kHeight;

// The panel clock while a test runs: milliseconds the test sets by hand.
inline int fakeNow = 0;
inline int fakeClock()
{
    return fakeNow;
}

// GLTest with the panel clock under the test's control and the GL state that the panel leaves behind
// (depth test on, line width, polygon mode, blending) put back before and after each test.
class UITest : public ostrum_test::GLTest {
protected:
    void SetUp() override
    {
        GLTest::SetUp();
        fakeNow = 1000;
        LGLUI::clockOverride = &fakeClock;
        resetState();
    }
    void TearDown() override
    {
        LGLUI::clockOverride = nullptr;
        resetState();
    }

    static void resetState()
    {
        glDisable(GL_DEPTH_TEST);
        glDisable(GL_BLEND);
        glDisable(GL_TEXTURE_2D);
        glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
        glLineWidth(1.0f);
        glMatrixMode(GL_MODELVIEW);
        glColor4f(1, 1, 1, 1);
        while (glGetError() != GL_NO_ERROR) {
        }
    }

    // A panel at (x, y) with font size 16 and the default row spacing (24 pixels).
    static std::unique_ptr<LGLUI> makePanel(int x = 10, int y = 10, int fontSize = 16, double rowFactor = 0.0)
    {
        auto ui = std::make_unique<LGLUI>();
        ui->initialize(x, y, fontSize, rowFactor, false);
        return ui;
    }
};

// ---------------------------------------------------------------- events as a game forwards them

inline bool press(LGLUI& ui, int x, int y)
{
    bool consumed = true;
    ui.handleMouseClick(x, y, 0, true, consumed);
    return consumed;
}

inline bool release(LGLUI& ui, int x, int y)
{
    bool consumed = true;
    ui.handleMouseClick(x, y, 0, false, consumed);
    return consumed;
}

// One frame: handle, then render.
inline void frame(LGLUI& ui)
{
    ui.handle();
    ui.render();
}

// A full click of one frame each for the press and the release, on what the last render showed.
inline void clickAndFrame(LGLUI& ui, int x, int y)
{
    press(ui, x, y);
    frame(ui);
    release(ui, x, y);
    frame(ui);
}

inline void specialKeyAndFrame(LGLUI& ui, int key)
{
    ui.registerSpecialKeys(key);
    frame(ui);
}

inline void typeAndFrame(LGLUI& ui, unsigned char key)
{
    ui.registerStandardKeys(key);
    frame(ui);
}

// Focuses the panel with a click on its title bar, where no row has a hot area.
inline void focusPanel(LGLUI& ui)
{
    ui.render();
    clickAndFrame(ui, ui.x + 3, ui.y + 3);
}

// ---------------------------------------------------------------- layout, computed from its rules

struct Box {
    int left, top, right, bottom;
    int centreX() const { return (left + right) / 2; }
    int centreY() const { return (top + bottom) / 2; }
};

inline int rowTopOf(const LGLUI& ui, int row)
{
    return ui.y + ui.titleHeight + ui.padding.top + ui.rowHeight * row;
}

inline int baselineOf(const LGLUI& ui, int row)
{
    return static_cast<int>((rowTopOf(ui, row) + ui.fontSize) - (ui.fontSize + 0.5) / 5);
}

inline Box fieldOf(const LGLUI& ui, int row)
{
    const int left = ui.x + ui.labelWidth + ui.padding.left - ui.fieldPadding.left;
    const int top = rowTopOf(ui, row) - ui.fieldPadding.top;
    const int w = ui.width - ui.padding.right - ui.labelWidth - ui.padding.left;
    const int h = ui.fieldPadding.top + ui.fieldPadding.bottom + ui.fontSize;
    return {left, top, left + w, top + h};
}

inline Box leftArrowOf(const LGLUI& ui, int row)
{
    const Box f = fieldOf(ui, row);
    return {f.left - ui.fontSize / 2 - 1, f.top + 1, f.left - 1, f.bottom - 1};
}

inline Box rightArrowOf(const LGLUI& ui, int row)
{
    const Box f = fieldOf(ui, row);
    return {f.right + 2, f.top + 1, f.right + ui.fontSize / 2 + 1, f.bottom - 1};
}

// The list-box marker: a right arrow whose base lies 20 pixels left of the field.
inline Box markerOf(const LGLUI& ui, int row)
{
    const Box f = fieldOf(ui, row);
    const int base = f.left - 20;
    return {base + 2, f.top + 1, base + ui.fontSize / 2 + 1, f.bottom - 1};
}

inline Box buttonFaceOf(const LGLUI& ui, int row)
{
    const int top = rowTopOf(ui, row) - ui.fieldPadding.top;
    return {ui.x + ui.padding.left - ui.fieldPadding.left, top, ui.x + ui.width - ui.padding.right,
            top + ui.fieldPadding.top + ui.fontSize + ui.fieldPadding.bottom};
}

inline Box popUpOf(const LGLUI& ui, int row)
{
    const int left = ui.width + (ui.x + ui.padding.left) - 190;
    const int top = rowTopOf(ui, row);
    return {left, top, left + 100, top + static_cast<int>(ui.elements[row].items.size()) * ui.rowHeight};
}

// The band of item i of an open pop-up: its highlight and its hot area.
inline Box popUpItemOf(const LGLUI& ui, int row, int item)
{
    const Box p = popUpOf(ui, row);
    const int lineTop = p.top + item * ui.rowHeight + (ui.rowHeight - ui.fontSize) / 2;
    return {p.left + 8, lineTop - 1, p.right - 8, lineTop + ui.fontSize + 1};
}

// ---------------------------------------------------------------- feedback

// The bounds of an item's vertices in window pixels with y downward, as the panel places them.
inline Box pixelBounds(const FeedbackItem& item)
{
    float minX = 1e9f, maxX = -1e9f, minY = 1e9f, maxY = -1e9f;
    for (const FeedbackVertex& v : item.vertices) {
        minX = std::min(minX, v.x);
        maxX = std::max(maxX, v.x);
        minY = std::min(minY, v.y);
        maxY = std::max(maxY, v.y);
    }
    return {static_cast<int>(std::lround(minX)), static_cast<int>(std::lround(kWindowHeight - maxY)),
            static_cast<int>(std::lround(maxX)), static_cast<int>(std::lround(kWindowHeight - minY))};
}

inline bool sameBox(const Box& a, const Box& b)
{
    return a.left == b.left && a.top == b.top && a.right == b.right && a.bottom == b.bottom;
}

inline bool colourIs(const FeedbackVertex& v, double r, double g, double b, double a, double tolerance = 1e-3)
{
    return std::fabs(v.r - r) < tolerance && std::fabs(v.g - g) < tolerance && std::fabs(v.b - b) < tolerance &&
           std::fabs(v.a - a) < tolerance;
}

// The union of the bounds of every polygon of the given colour.
inline std::vector<Box> polygonBoxes(const std::vector<FeedbackItem>& items, double r, double g, double b, double a)
{
    std::vector<Box> out;
    for (const FeedbackItem& item : ostrum_test::itemsOf(items, GL_POLYGON_TOKEN))
        if (!item.vertices.empty() && colourIs(item.vertices[0], r, g, b, a))
            out.push_back(pixelBounds(item));
    return out;
}

// Boxes of polygons that share edges merged: a rectangle drawn as a strip of two triangles gives one
// box.
inline std::vector<Box> mergeTouching(std::vector<Box> boxes)
{
    bool merged = true;
    while (merged) {
        merged = false;
        for (size_t i = 0; i < boxes.size() && !merged; ++i) {
            for (size_t j = i + 1; j < boxes.size() && !merged; ++j) {
                const Box& a = boxes[i];
                const Box& b = boxes[j];
                if (a.left <= b.right && b.left <= a.right && a.top <= b.bottom && b.top <= a.bottom) {
                    boxes[i] = {std::min(a.left, b.left), std::min(a.top, b.top), std::max(a.right, b.right),
                                std::max(a.bottom, b.bottom)};
                    boxes.erase(boxes.begin() + static_cast<long>(j));
                    merged = true;
                }
            }
        }
    }
    return boxes;
}

inline std::vector<Box> rectsOfColour(const std::vector<FeedbackItem>& items, double r, double g, double b, double a)
{
    return mergeTouching(polygonBoxes(items, r, g, b, a));
}

// Whether a rectangle of that colour was drawn as two polygons in a row (the two triangles of
// LGL::RenderRect) covering exactly `box`, whatever else of the same colour lies around it.
inline bool hasRect(const std::vector<FeedbackItem>& items, double r, double g, double b, double a, const Box& box)
{
    const auto polygons = ostrum_test::itemsOf(items, GL_POLYGON_TOKEN);
    for (size_t i = 0; i + 1 < polygons.size(); ++i) {
        if (polygons[i].vertices.empty() || polygons[i + 1].vertices.empty())
            continue;
        if (!colourIs(polygons[i].vertices[0], r, g, b, a) || !colourIs(polygons[i + 1].vertices[0], r, g, b, a))
            continue;
        const Box p = pixelBounds(polygons[i]);
        const Box q = pixelBounds(polygons[i + 1]);
        const Box u = {std::min(p.left, q.left), std::min(p.top, q.top), std::max(p.right, q.right),
                       std::max(p.bottom, q.bottom)};
        if (sameBox(u, box))
            return true;
    }
    return false;
}

inline bool hasBox(const std::vector<Box>& boxes, const Box& box)
{
    for (const Box& b : boxes)
        if (sameBox(b, box))
            return true;
    return false;
}

// Where each bitmap (one per character) was drawn: the raster position, pixels with y downward.
struct BitmapAt {
    int x, y;
    FeedbackVertex vertex;
};

inline std::vector<BitmapAt> bitmapsOf(const std::vector<FeedbackItem>& items)
{
    std::vector<BitmapAt> out;
    for (const FeedbackItem& item : ostrum_test::itemsOf(items, GL_BITMAP_TOKEN)) {
        const FeedbackVertex& v = item.vertices.at(0);
        out.push_back({static_cast<int>(std::lround(v.x)), static_cast<int>(std::lround(kWindowHeight - v.y)), v});
    }
    return out;
}

// The first bitmap drawn at (x, y), or null.
inline const BitmapAt* bitmapAt(const std::vector<BitmapAt>& bitmaps, int x, int y)
{
    for (const BitmapAt& b : bitmaps)
        if (b.x == x && b.y == y)
            return &b;
    return nullptr;
}

// The result points into `bitmaps`, which must outlive it.
const BitmapAt* bitmapAt(std::vector<BitmapAt>&& bitmaps, int x, int y) = delete;

// The red channel of one back-buffer pixel given with y downward.
inline int redAt(int x, int yDown)
{
    unsigned char rgba[4] = {0, 0, 0, 0};
    glFinish();
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadBuffer(GL_BACK);
    glReadPixels(x, kWindowHeight - 1 - yDown, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, rgba);
    return rgba[0];
}

inline std::vector<int> rgbaAt(int x, int yDown)
{
    unsigned char rgba[4] = {0, 0, 0, 0};
    glFinish();
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadBuffer(GL_BACK);
    glReadPixels(x, kWindowHeight - 1 - yDown, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, rgba);
    return {rgba[0], rgba[1], rgba[2], rgba[3]};
}

}  // namespace ui_test
