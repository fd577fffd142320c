// LGLMenuTestHelpers.h -- the fixture, item functions and hand-computed layout shared by the tests of
// LGLMenu.
#pragma once

#include <ostrum_gl/interface/LGLMenu.h>

#include "TestSupport.h"

#include <GL/gl.h>

#include <algorithm>
#include <string>
#include <vector>

namespace menu_test {

// The numbers of the item functions that ran, in order.
inline std::vector<int>& fired()
{
    static std::vector<int> numbers;
    return numbers;
}

// Item functions: each records its number.
template <int N>
void fire()
{
    fired().push_back(N);
}

constexpr int kFontSize = 13;
constexpr double kBarFactor = 1.5;
constexpr int kBarHeight = 19;  // trunc(13 * 1.5)
constexpr int kWindowWidth = ostrum_test::GLTestWindow::kWidth;
constexpr int kWindowHeight = ostrum_test::GLTestWindow::kHeight;

// Margins initialize gives for kFontSize and kBarFactor, worked out by hand.
constexpr int kPadLeft = 6;        // 13 / 2
constexpr int kPadTop = 9;         // trunc(19 * 0.5)
constexpr int kItemPadLeft = 13;   // fontSize
constexpr int kItemPadRight = 15;  // trunc(13 * 1.2) = trunc(15.6)
constexpr int kTitlePad = 8;       // trunc(13 / 1.5) = trunc(8.67)
constexpr int kTextDrop = 4;       // 13 / 3: baseline below the row's middle

// GLTest with an empty class-wide menu table and no recorded item functions before and after each test.
class MenuTest : public ostrum_test::GLTest {
protected:
    void SetUp() override
    {
        GLTest::SetUp();
        LGLMenu::clearMenus();
        fired().clear();
        while (glGetError() != GL_NO_ERROR) {
        }
    }
    void TearDown() override
    {
        LGLMenu::clearMenus();
        fired().clear();
        glMatrixMode(GL_MODELVIEW);
        glColor4f(1, 1, 1, 1);
    }

    // Pixel width of text in the menu's font, summed from its width table.
    static int widthOf(const LGLMenu& menu, const std::string& text)
    {
        int width = 0;
        for (unsigned char c : text)
            width += menu.font.fonts[0].widths[c];
        return width;
    }

    // The sample menus most tests use: "File" with four items, "Edit" with three, "View" with none.
    //   File: 0 "New [ctrl-n]", 1 "-", 2 "Open...", 3 "Quit [alt-x]"
    //   Edit: 0 "Undo [ctrl-z]", 1 "Redo [ctrl-y]" (disabled), 2 "Grid [F5]" (checked)
    static void addSampleMenus(LGLMenu& menu)
    {
        menu.addMenu("File");
        menu.addItem("New [ctrl-n]", fire<1>);
        menu.addItem("-", nullptr);
        menu.addItem("Open...", fire<3>);
        menu.addItem("Quit [alt-x]", fire<4>);
        menu.addMenu("Edit");
        menu.addItem("Undo [ctrl-z]", fire<11>);
        menu.addItem("Redo [ctrl-y]", fire<12>);
        menu.addItem("Grid [F5]", fire<13>);
        menu.addMenu("View");
        menu.enableMenuItem(1, 1, false);
        menu.checkMenuItem(1, 2, true);
    }

    // Title areas worked out from the widths: they start at padding.left and follow one another.
    struct Expected {
        tRect title[3];
        tRect drop[3];
    };
    static Expected expectedLayout(const LGLMenu& menu)
    {
        Expected e{};
        const char* names[3] = {"File", "Edit", "View"};
        int x = kPadLeft;
        for (int k = 0; k < 3; ++k) {
            const int w = kTitlePad + widthOf(menu, names[k]) + kTitlePad;
            e.title[k] = {x, 0, x + w, kBarHeight};
            x += w;
        }
        // File: widest caption of "New", "-", "Open...", "Quit"; widest shortcut of "ctrl-n", "alt-x".
        auto dropWidth = [&](std::vector<std::string> captions, std::vector<std::string> shortcuts, int titleW) {
            int c = 0, s = 0;
            for (auto& t : captions)
                c = std::max(c, widthOf(menu, t));
            for (auto& t : shortcuts)
                s = std::max(s, widthOf(menu, t));
            int w = 10 + kItemPadLeft + c + kItemPadRight + (s > 0 ? s + kItemPadRight : 0);
            return std::max(w, titleW);
        };
        const int fileW = dropWidth({"New", "-", "Open...", "Quit"}, {"ctrl-n", "alt-x"},
                                    e.title[0].right - e.title[0].left);
        const int editW = dropWidth({"Undo", "Redo", "Grid"}, {"ctrl-z", "ctrl-y", "F5"},
                                    e.title[1].right - e.title[1].left);
        const int viewW = dropWidth({}, {}, e.title[2].right - e.title[2].left);
        e.drop[0] = {e.title[0].left, kBarHeight, e.title[0].left + fileW, kBarHeight + 4 * kBarHeight};
        e.drop[1] = {e.title[1].left, kBarHeight, e.title[1].left + editW, kBarHeight + 3 * kBarHeight};
        e.drop[2] = {e.title[2].left, kBarHeight, e.title[2].left + viewW, kBarHeight};
        return e;
    }

    // The middle of row j of a drop-down, in window pixels (y downward).
    static int rowMiddle(int j) { return kBarHeight + kBarHeight * j + kBarHeight / 2; }
};

inline bool sameRect(const tRect& a, const tRect& b)
{
    return a.left == b.left && a.top == b.top && a.right == b.right && a.bottom == b.bottom;
}

inline std::string rectText(const tRect& r)
{
    return "(" + std::to_string(r.left) + ", " + std::to_string(r.top) + ", " + std::to_string(r.right) + ", " +
           std::to_string(r.bottom) + ")";
}

#define EXPECT_RECT(actual, left, top, right, bottom)                                                  \
    EXPECT_PRED2(::menu_test::sameRect, actual, (tRect{left, top, right, bottom}))                     \
        << ::menu_test::rectText(actual)

}  // namespace menu_test
