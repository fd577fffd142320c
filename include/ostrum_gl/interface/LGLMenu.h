// LGLMenu.h -- the menu bar: a desktop-style bar across the top of the window with drop-down menus
// of items that run the game's functions when clicked or when their keyboard shortcut is typed.
//
// The menus and their items are class-wide (menus, menuRects): every LGLMenu object shows and serves
// the same table. The game adds menus and items once, calls initialize with the font, forwards its
// GLUT keyboard, special-key, mouse and passive-motion callbacks to the handlers, and calls render in
// the 2-D layer at the end of each frame. Mouse coordinates are GLUT's window pixels, y downward.
//
// Shortcuts are written in square brackets in the caption: "Save [ctrl-s]", "Quit [alt-x]",
// "Redraw [shift-F5]", "Close [esc]". The part is split at "-"; "ctrl", "alt" and "shift" add the GLUT
// modifiers 2, 4 and 1; the other word names the key: "F<n>" the special key n, "esc", "tab",
// "enter", "space" and "delete" the ASCII codes 27, 9, 13, 32 and 127, "insert", "up", "down",
// "right" and "left" the GLUT special keys 108, 101, 103, 102 and 100, any other word its first
// character in lower case. An item whose caption begins with "-" is a separator.
//
// handleStandardKeys and handleSpecialKeys read the held modifiers with glutGetModifiers, which GLUT
// answers only inside one of its input callbacks: call them from the game's keyboard and special-key
// callbacks. The overloads that take the modifier mask serve keys that arrive some other way.
//
// Kept on purpose:
//  - Every enabled item whose shortcut matches fires, in menu and item order, not only the first.
//  - With ctrl held, GLUT delivers the letters as the control codes 1 to 26; they are turned back
//    into the letters a to z. Any code 1 to 26 is taken so, so ctrl+tab reads as ctrl+i and
//    ctrl+enter as ctrl+m.
//  - With shift held alone, typed characters are compared with no modifier at all: the character
//    already tells the shift ("[!]" fires on shift+1). A shortcut of shift with a letter therefore
//    never fires; ctrl-shift-s and alt-shift-s do (their mask is compared whole).
//  - Item rows are one barHeight apart, the first directly below the bar; the pixel rows where two
//    items meet belong to neither. The title areas include their edges.
//  - A click anywhere but on an item or a title closes the open menu without consuming the click.
//
// Choices recorded here:
//  - Special keys compare the whole modifier mask, shift included: "[shift-F5]" fires on shift+F5 and
//    "[F5]" only on F5 alone (the shift rule above exists for typed characters only).
//  - Modifier and key words are read without regard to case ("[Ctrl-S]", "[ESC]", "[f5]"); the
//    shortcut text shown keeps the caption's spelling. Words are trimmed of blanks. When the part
//    holds several key words the last one counts; "[ctrl--]" is ctrl with the minus key. A modifier
//    named twice counts once. "F" with a number above 127 gives no shortcut. Without a closing "]"
//    after the last "[" the caption has no shortcut.
//  - The caption shown is the text without its bracketed part and without trailing blanks ("Save
//    [ctrl-s]" shows "Save"); captionOf gives it.
//  - Only a press of the left button acts on the menu. Other buttons, releases and the wheel change
//    nothing and are never consumed.
//  - A click acts on what lies under it: the open menu's item under the click point is looked up
//    again before anything runs, so a click never fires an item the pointer left without a motion
//    event. Clicking an enabled item closes the menu, consumes the click and then calls the item's
//    function (closed first, so the function may change the menus or open one again). Clicking a
//    disabled item or a separator consumes the click, runs nothing and leaves the menu open.
//  - A menu always opens with no item highlighted, whether opened by a click or by moving along the
//    bar. Clicking the title of the menu that is open keeps it open.
//  - Disabled items and separators are never highlighted; disabled captions, shortcut texts and check
//    boxes are drawn in disabledColor.
//  - Layout: titles start padding.left pixels from the left edge, each title area titlePadding.left +
//    the title's width + titlePadding.right wide and as high as the bar, the next starting where the
//    previous ends; the title is centred in it. A drop-down hangs from the left edge of its title,
//    directly below the bar, one barHeight per item. Its width is the width of the check-box column
//    (10 pixels) + itemPadding.left + the widest caption + itemPadding.right, plus the widest shortcut
//    text + itemPadding.right when an item has one, and never less than its title area. Captions
//    start at the drop-down's left edge + itemPadding.left + 10; shortcut texts are right-aligned to
//    end itemPadding.right pixels before the drop-down's right edge. The text baseline of a row lies
//    padding.top + fontSize / 3 pixels below the row's top, which centres capitals in the row.
//  - The check box of a checked item is a filled 10 x 10 square in the item's text colour, 8 pixels
//    from the drop-down's left edge, centred in the row (top at (barHeight - 10) / 2 into it).
//    Separators are a line across the row's middle, 2 pixels in from either side.
//  - Untouched text is drawn in the font's colour of the _rp writes (black after initialize); the
//    highlighted title in titleColor and the highlighted item in highlightTextColor (both white). The
//    bar is shaded from barColor at its top to barColor2 at its bottom (the same grey, so flat, unless
//    the game changes one). The drop-down pane, its outline and the separators use the fixed colours
//    (0.9254902, 0.9137255, 0.84705883), 0.6 grey and 0.5 grey.
//  - render draws nothing before initialize (there is no font to write with) and leaves the OpenGL
//    state as it found it, except that the matrix mode is model-view afterwards (the font's end). It
//    turns texturing, lighting, depth test, fog, blending, face culling, alpha test and line stipple
//    off for its own drawing.
//  - initialize again replaces the menu's font (the old display lists are deleted) instead of adding
//    a second one. The constructor already sets the colours, so a menu is never read uninitialised.
//  - Layout follows the menus, the items and this object's font at every call that needs it (add,
//    handle, mouse, render), so two menu objects with different fonts each hit-test what they draw.
//    barRect follows the window's width at initialize, handle and render.
//  - enableMenuItem and checkMenuItem ignore negative indices as well as those past the end.
//  - addItem before any addMenu adds nothing and writes "** WARNING LGLMenu::addItem> no menu for the
//    item "<text>" (LGLMenu.cpp)".
//  - handle lays the bar out for the current window; nothing else needs upkeep per frame.
#pragma once

#include <ostrum_core/tRect.h>
#include <ostrum_gl/frame/LGL.h>
#include <ostrum_gl/interface/LGLFont.h>

#include <string>
#include <vector>

class LGLMenu {
public:
    using tCallback = void (*)();

    struct tMenuItem {
        std::string text;          // the caption as given, shortcut part included
        std::string shortcutText;  // the text between the square brackets
        tCallback callback;        // may be null
        bool enabled;
        bool checked;
        bool specialKey;  // key is a GLUT special-key code
        char key;         // 0: no shortcut
        int modifiers;    // GLUT mask: shift 1, ctrl 2, alt 4
    };

    struct tMenu {
        std::string name;
        std::vector<tMenuItem> items;
        int titleX;      // left edge of the title area
        int titleWidth;  // width of the title area
        tRect dropRect;  // the drop-down pane
        int hoverItem;   // item under the pointer, -1 for none
        int shortcutWidth;  // widest shortcut text of the items
    };

    // Size of the check box and its distance from the drop-down's left edge.
    static constexpr int CHECK_BOX_SIZE = 10;
    static constexpr int CHECK_BOX_LEFT = 8;

    LGLMenu();
    LGLMenu(const LGLMenu& other) = default;
    LGLMenu& operator=(const LGLMenu& other) = default;
    // The font's display lists are deleted with the font.
    ~LGLMenu();

    // An empty fontName means "Tahoma"; barHeight = trunc(fontSize * barFactor).
    void initialize(std::string fontName, int fontSize, double barFactor);

    void addMenu(std::string name);
    void addItem(std::string text, void (*callback)());
    void enableMenuItem(int menu, int item, bool on);
    void checkMenuItem(int menu, int item, bool on);

    // From the GLUT keyboard and special-key callbacks (they read glutGetModifiers).
    void handleStandardKeys(unsigned char key);
    void handleSpecialKeys(int key);
    // The same with the held GLUT modifier mask given.
    void handleStandardKeys(unsigned char key, int modifiers);
    void handleSpecialKeys(int key, int modifiers);

    void handleMenuMouseClick(int x, int y, int button, bool pressed, bool& consumed);
    void handleMousePassiveMotion(int x, int y);

    void render();
    void handle();

    // The caption drawn for an item: its text without the shortcut part and trailing blanks.
    static std::string captionOf(const tMenuItem& item);
    // Empties the class-wide menu table.
    static void clearMenus();

    // ------------------------------------------------------------ data

    int hoverMenu;
    int openMenu;
    bool isOpen;
    bool enabled;
    bool visible;
    LGLFont font;
    int fontSize;
    int barHeight;
    tRect padding;
    tRect itemPadding;
    tRect titlePadding;
    tRect barRect;
    LGL::tGLRGB barColor;
    LGL::tGLRGB barColor2;
    LGL::tGLRGB titleColor;
    LGL::tGLRGB highlightColor;
    LGL::tGLRGB highlightTextColor;
    LGL::tGLRGB disabledColor;

    static std::vector<tMenu> menus;
    static std::vector<tRect> menuRects;

private:
    static void parseShortcut(tMenuItem& item);
    static bool isSeparator(const tMenuItem& item);
    static bool inRect(const tRect& rect, int x, int y);

    void setColors();
    // Title areas and drop-downs for this object's font.
    void layout();
    void updateBarRect();
    // The item of menu m whose row holds (x, y), -1 for none.
    int itemAt(const tMenu& menu, int x, int y) const;
    int titleAt(int x, int y) const;
    bool hasOpenMenu() const;
    void openMenuAt(int k);
    void close();
    void fireMatching(int key, int modifiers, bool special);
    int baselineOf(int rowTop) const;

    void renderDropDown(const tMenu& menu);
};
