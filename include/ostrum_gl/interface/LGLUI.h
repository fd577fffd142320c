// LGLUI.h -- the floating settings panel: a title bar with a close box over a column of up to 50 rows
// (list box, list spinner, number spinner, edit text, button, separator, blank space), drawn
// semi-transparent over the scene, driven by forwarded GLUT events and read back by row index.
//
// Life cycle: construct, initialize (with a current OpenGL context: the panel builds its own "Arial"
// font), add rows, then each frame forward the GLUT keyboard, special-key and mouse events
// (registerStandardKeys, registerSpecialKeys, handleMouseClick), call handle once, and render last in
// the frame. dispose empties the rows; the panel can be filled again without a new initialize.
//
// Rows register their clickable areas (hot rectangles, window pixels, y downward) while render draws
// them; a press searches them (edit texts first, then every other row, later hits winning) and every
// click event empties them again, so a click only ever acts on what the last render showed. render
// empties them too before it draws, so they are always those of the last render alone. Hot-area
// identifiers: 0 value field or button face, 1 left arrow, 2 right arrow or list-box marker, 4 the open
// pop-up, 10 + i item i of the open pop-up.
//
// Clock: every time value (fadeStart, lastRepeat, the button press and the caret blink) is a count of
// milliseconds read through clockMs(), a monotonic clock (std::chrono::steady_clock) counted from the
// first reading in the process, never CPU time. Tests and tools that need to step time by hand set
// clockOverride to a function of their own, which clockMs() then returns instead; nullptr gives the
// real clock back. An int of milliseconds lasts 24 days of running.
//
// Kept on purpose:
//  - render sets the font colour of the text writes to white (1, 1, 1, fade): labels, values and
//    pop-up items are written in white whatever textColor says; textColor only colours the raster
//    position once, in initialize.
//  - The auto-repeat holds back all of handle while the same hot area stays pressed: a button held
//    down keeps its value 1 until its 400 ms repeat delay is over, then presses again every 50 ms;
//    keys registered meanwhile wait for the next frame that gets through, and a drag started on a
//    hot area waits too, then catches up with the cursor.
//  - A press hit by several hot rectangles goes to the last one found; a row below an open pop-up
//    whose value field lies under the pressed item takes the press (an edit text never does: edit
//    texts are searched first).
//  - renderListBoxPopUp sets paneColor's alpha to 1 and leaves it so: the panel is opaque from the
//    first time a pop-up opens.
//  - dispose clears only the item lists and the row count; the next add... overwrites a record.
//  - An edit text never sets editing: up and down always move to the neighbouring row.
//  - The close box is drawn but the panel does not act on it.
//
// Choices recorded here:
//  - The element record is LGLUI::tElement. Last of its fields, numHotRects counts how many of the
//    200 hot rectangles the last render registered; areas past the 200th are not registered (a
//    pop-up therefore offers its first 196 items to the mouse).
//  - The panel holds two more clock values, after `font`: buttonPressTime (the last button press,
//    for the 100 ms pressed look) and caretTime (the last caret movement, from which the caret
//    blinks: shown during the first half of every second).
//  - A 51st row is refused: "ERROR LGLUI::<operation>> the panel already holds 50 rows; the row is not
//    added (LGLUI.cpp)" is written and the add... returns -1, count unchanged.
//  - Row indices are checked against the table of 50, not against count: an operation given a row
//    outside 0..49 writes "ERROR LGLUI::<operation>> row <n> is outside the 50 rows of the panel
//    (LGLUI.cpp)" and does nothing (getUIInt and getUIString leave their result untouched).
//  - Every add... starts from an empty record, so nothing of an earlier row of the same index remains.
//  - handleMouseClick on an invisible or empty panel sets consumed to false.
//  - standardKey is an unsigned char, as GLUT delivers the keys.
//  - Typing, Delete and Backspace also restart the caret blink, like the cursor keys; a cursor left
//    past the end of the text (setUIString with a shorter text) is taken back to the end by the next
//    handleEditText, and the caret is drawn at the end meanwhile.
//  - Selecting a pop-up item with the mouse also sets valueChanged (and keyUsed), like a step does. A
//    step sets valueChanged even when the value was already at its bound.
//  - A list box or list spinner without items never steps; an item index outside the items draws no
//    value text.
//  - The number spinner shows its value as LString::dtoa writes it (2.5 as "2.5", 3.0 as "3").
//  - Arrows are filled in dark grey (0.3, 0.3, 0.3) and outlined in grey (0.6, 0.6, 0.6), both at
//    alpha 0.8 x fade. The button's bevel draws its top and left edges in (0.3, 0.3, 0.3) and its bottom
//    and right edges in (0.1, 0.1, 0.1), swapped while it is held.
//  - The pop-up's top is the list-box row's top. Item i owns the band of rowHeight pixels from
//    top + i x rowHeight; its line is fontSize high, centred in that band; the highlight and the hot
//    area run one pixel above and below the line, and the item's baseline lies where a row's does
//    (line top + fontSize - (fontSize + 0.5) / 5, truncated).
//  - Row navigation with only separators and blank spaces (or none at all) leaves current alone.
//  - When the screen cursor cannot be read, a drag step does not move the panel.
//  - isInCloseBox(x, y) tells the game whether a window point lies in the close box (edges
//    included), for its own mouse callback.
#pragma once

#include <ostrum_core/tRect.h>
#include <ostrum_gl/interface/LGLFont.h>

#include <string>
#include <vector>

class LGLUI {
public:
    static constexpr int MAX_ELEMENTS = 50;
    static constexpr int MAX_HOT_RECTS = 200;

    // Element kinds.
    static constexpr int KIND_EMPTY = 0;
    static constexpr int KIND_LIST_BOX = 1;
    static constexpr int KIND_LIST_SPINNER = 2;
    static constexpr int KIND_NUMBER_SPINNER = 3;
    static constexpr int KIND_EDIT_TEXT = 4;
    static constexpr int KIND_BUTTON = 5;
    static constexpr int KIND_SEPARATOR = 6;
    static constexpr int KIND_BLANK_SPACE = 7;

    // Hot-area identifiers.
    static constexpr int HOT_FIELD = 0;
    static constexpr int HOT_LEFT_ARROW = 1;
    static constexpr int HOT_RIGHT_ARROW = 2;
    static constexpr int HOT_POPUP = 4;
    static constexpr int HOT_POPUP_ITEM = 10;

    // GLUT key codes the panel reads.
    static constexpr int KEY_LEFT = 100;
    static constexpr int KEY_UP = 101;
    static constexpr int KEY_RIGHT = 102;
    static constexpr int KEY_DOWN = 103;
    static constexpr unsigned char KEY_BACKSPACE = 8;
    static constexpr unsigned char KEY_ENTER = 13;
    static constexpr unsigned char KEY_DELETE = 127;

    struct tColor {
        double r;
        double g;
        double b;
        double a;
    };

    // One row of the panel.
    struct tElement {
        int kind;
        std::string label;
        std::vector<std::string> items;
        double value;
        double minValue;
        double maxValue;
        double stepValue;
        std::string text;
        int fieldWidth;
        int cursor;
        tRect hotRects[MAX_HOT_RECTS];
        int hotIds[MAX_HOT_RECTS];
        int numHotRects;  // hot rectangles registered since they were last emptied

        tElement();
    };

    using ClockFunction = int (*)();

    // ------------------------------------------------------------ data

    tElement elements[MAX_ELEMENTS];
    bool visible;
    bool focused;
    bool userFlag;
    bool keyUsed;
    bool valueChanged;
    bool fadeIn;
    int fadeStart;
    double fade;
    tColor paneColor;
    tColor fieldColor;
    tColor textColor;
    unsigned char standardKey;
    int specialKey;
    int hotId;
    int lastHotId;
    int repeatDelay;
    int x;
    int y;
    int labelWidth;
    int width;
    int height;
    int textX;
    int textY;
    int fontSize;
    int rowHeight;
    tRect padding;
    tRect fieldPadding;
    tRect titleBar;
    tRect closeBox;
    int titleHeight;
    bool mouseDown;
    bool dragEnabled;
    int cursorX;
    int cursorY;
    bool popupOpen;
    int lastRepeat;
    int count;
    int current;
    int spinDirection;
    bool editing;
    LGLFont font;
    int buttonPressTime;  // clock value of the last button press
    int caretTime;        // clock value of the last caret movement

    // When set, clockMs() returns what this function returns.
    static ClockFunction clockOverride;

    // ------------------------------------------------------------ panel

    LGLUI();
    LGLUI(const LGLUI& other) = default;
    LGLUI(LGLUI&& other) = default;
    LGLUI& operator=(const LGLUI& other) = default;
    LGLUI& operator=(LGLUI&& other) = default;

    void initialize(int x, int y, int fontSize, double rowFactor, bool userFlag);
    void dispose();
    void updateUIDimension();

    void registerStandardKeys(unsigned char key);
    void registerSpecialKeys(int key);
    void handleMouseClick(int x, int y, int button, bool pressed, bool& consumed);
    void handle();
    void render();

    void getUIInt(int row, int& value);
    void setUIInt(int row, int value);
    void getUIString(int row, std::string& text);
    void setUIString(int row, std::string text);
    void setUIFontPosition(int row);
    void setUIStepValue(int row, double step);

    void renderPane(tRect area, tColor color);
    void renderSeparator(int row);

    void addSeparator();
    void addBlankSpace();

    // ------------------------------------------------------------ widgets

    int addButton(std::string label);
    int addEditText(std::string label, std::string text, int fieldWidth);
    int addListBox(std::string label, std::vector<std::string>& items, int selected);
    int addListSpinner(std::string label, std::vector<std::string>& items, int selected);
    int addNumberSpinner(std::string label, double minValue, double maxValue, double stepValue, double value);

    void handleButton(int row);
    void handleEditText(int row);
    void handleListBox(int row);
    void handleListSpinner(int row);
    void handleNumberSpinner(int row);

    void renderButton(int row);
    void renderEditText(int row);
    void renderListBox(int row);
    void renderListBoxPopUp(int row);
    void renderListSpinner(int row);
    void renderNumberSpinner(int row);
    void renderValueFieldPane(int row, bool leftArrow, bool rightArrow);

    // ------------------------------------------------------------ helpers

    // Top of row i in window pixels: y + titleHeight + padding.top + rowHeight x i.
    int rowTop(int row) const;
    // True when the window point lies in closeBox, edges included.
    bool isInCloseBox(int x, int y) const;
    // Whether typing `key` into an edit text inserts it.
    static bool isEditTextCharacter(unsigned char key);
    // Milliseconds of the panel clock (see the header comment).
    static int clockMs();

private:
    // True when the row lies in the table; otherwise writes the line naming `operation` and returns
    // false.
    bool checkRow(int row, const char* operation) const;
    // The index of a new row, or -1 (after the message) when the table is full.
    int newRow(int kind, const std::string& label, const char* operation);
    void addHotRect(int row, const tRect& area, int id);
    void clearHotRects();
    // Moves current by `direction` rows, wrapping, past separators and blank spaces.
    void moveCurrent(int direction);
    // A spinner step of `direction` on a list row.
    void stepList(int row, int direction);
    void writeLabelAndValue(int row, const std::string& value);
    // count within 0..50, for the loops over the rows.
    int rowsInUse() const;
};
