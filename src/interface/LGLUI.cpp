// LGLUI.cpp -- the settings panel: rows, layout, mouse and key routing, per-frame handling, value
// access, the drawing of pane, title bar and separators, and the row widgets (button, edit text, list
// box with its pop-up, list spinner, number spinner, value field).
//
// Index of sections:
//   [SECTION] records
//   [SECTION] helpers
//   [SECTION] set-up
//   [SECTION] input
//   [SECTION] value access
//   [SECTION] drawing
//   [SECTION] widgets: adding rows
//   [SECTION] widgets: handling
//   [SECTION] widgets: drawing
#include <ostrum_gl/interface/LGLUI.h>

#include <ostrum_core/LGeom.h>
#include <ostrum_core/LString.h>
#include <ostrum_gl/frame/LGL.h>
#include <ostrum_gl/platform/LGLPlatform.h>

#include <GL/freeglut.h>
#include <GL/gl.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>

LGLUI::ClockFunction LGLUI::clockOverride = nullptr;

namespace {

constexpr int kFadeInMs = 500;
constexpr int kFirstRepeatMs = 400;
constexpr int kRepeatMs = 50;

bool contains(const tRect& r, int px, int py)
{
    return px >= r.left && px <= r.right && py >= r.top && py <= r.bottom;
}

}  // namespace

// ================================================================ [SECTION] records

LGLUI::tElement::tElement()
    : kind(KIND_EMPTY),
      value(0.0),
      minValue(0.0),
      maxValue(0.0),
      stepValue(0.0),
      fieldWidth(0),
      cursor(0),
      hotRects(),
      hotIds(),
      numHotRects(0)
{
}

LGLUI::LGLUI()
    : visible(true),
      focused(false),
      userFlag(false),
      keyUsed(false),
      valueChanged(false),
      fadeIn(false),
      fadeStart(-1),
      fade(1.0),
      paneColor{0.9, 0.9, 0.9, 0.8},
      fieldColor{1.0, 1.0, 1.0, 0.8},
      textColor{0.0, 0.0, 0.0, 1.0},
      standardKey(0),
      specialKey(0),
      hotId(-1),
      lastHotId(-2),
      repeatDelay(0),
      x(10),
      y(10),
      labelWidth(0),
      width(0),
      height(0),
      textX(0),
      textY(0),
      fontSize(16),
      rowHeight(16),
      padding{0, 0, 0, 0},
      fieldPadding{0, 0, 0, 0},
      titleBar{0, 0, 0, 0},
      closeBox{0, 0, 0, 0},
      titleHeight(16),
      mouseDown(false),
      dragEnabled(false),
      cursorX(0),
      cursorY(0),
      popupOpen(false),
      lastRepeat(0),
      count(0),
      current(0),
      spinDirection(0),
      editing(false),
      buttonPressTime(0),
      caretTime(0)
{
}

// ================================================================ [SECTION] helpers

int LGLUI::clockMs()
{
    if (clockOverride != nullptr)
        return clockOverride();
    using namespace std::chrono;
    static const steady_clock::time_point start = steady_clock::now();
    return static_cast<int>(duration_cast<milliseconds>(steady_clock::now() - start).count());
}

int LGLUI::rowTop(int row) const
{
    return y + titleHeight + padding.top + rowHeight * row;
}

bool LGLUI::isInCloseBox(int px, int py) const
{
    return contains(closeBox, px, py);
}

int LGLUI::rowsInUse() const
{
    return std::clamp(count, 0, MAX_ELEMENTS);
}

bool LGLUI::checkRow(int row, const char* operation) const
{
    if (row >= 0 && row < MAX_ELEMENTS)
        return true;
    std::printf("ERROR LGLUI::%s> row %d is outside the 50 rows of the panel (LGLUI.cpp)\n", operation, row);
    return false;
}

int LGLUI::newRow(int kind, const std::string& label, const char* operation)
{
    if (count < 0 || count >= MAX_ELEMENTS) {
        std::printf("ERROR LGLUI::%s> the panel already holds 50 rows; the row is not added (LGLUI.cpp)\n",
                    operation);
        return -1;
    }
    const int row = count;
    elements[row] = tElement();
    elements[row].kind = kind;
    elements[row].label = label;
    ++count;
    return row;
}

void LGLUI::addHotRect(int row, const tRect& area, int id)
{
    tElement& e = elements[row];
    if (e.numHotRects < 0)
        e.numHotRects = 0;
    if (e.numHotRects >= MAX_HOT_RECTS)
        return;
    e.hotRects[e.numHotRects] = area;
    e.hotIds[e.numHotRects] = id;
    ++e.numHotRects;
}

void LGLUI::clearHotRects()
{
    for (tElement& e : elements) {
        for (int i = 0; i < MAX_HOT_RECTS; ++i) {
            e.hotRects[i] = tRect{0, 0, 0, 0};
            e.hotIds[i] = 0;
        }
        e.numHotRects = 0;
    }
}

// ================================================================ [SECTION] set-up

void LGLUI::initialize(int x_, int y_, int fontSize_, double rowFactor, bool userFlag_)
{
    x = x_;
    y = y_;
    fontSize = fontSize_;
    if (rowFactor == 0.0 || std::isnan(rowFactor))
        rowHeight = static_cast<int>(std::lround(fontSize * 1.5));
    else
        rowHeight = static_cast<int>(fontSize * rowFactor);

    font.create(nullptr, "Arial", fontSize, 0, 0);
    font.setColor(static_cast<float>(textColor.r), static_cast<float>(textColor.g),
                  static_cast<float>(textColor.b));

    LGeom::setRect(padding, fontSize / 2, static_cast<int>(rowHeight * 0.5), fontSize / 2,
                   static_cast<int>(rowHeight * 0.5));
    LGeom::setRect(fieldPadding, fontSize / 4, 2, fontSize / 4, 2);

    // The height uses the title height held before it is set to 16, as the panel always did.
    height = fontSize + (count - 1) * rowHeight + padding.top + padding.bottom + titleHeight;
    userFlag = userFlag_;
    titleHeight = 16;
    updateUIDimension();
    clearHotRects();
}

void LGLUI::dispose()
{
    const int rows = rowsInUse();
    for (int row = 0; row < rows; ++row)
        elements[row].items.clear();
    count = 0;
}

void LGLUI::updateUIDimension()
{
    int maxLabel = 0;
    int maxValue = 0;
    const int rows = rowsInUse();
    for (int row = 0; row < rows; ++row) {
        tElement& e = elements[row];
        int labelW = 0;
        int valueW = 0;
        switch (e.kind) {
        case KIND_LIST_BOX:
        case KIND_LIST_SPINNER:
            labelW = font.pixWidthOf(e.label);
            for (const std::string& item : e.items)
                valueW = std::max(valueW, font.pixWidthOf(item));
            break;
        case KIND_NUMBER_SPINNER:
            labelW = font.pixWidthOf(e.label);
            valueW = font.pixWidthOf(LString::itoa(static_cast<int>(e.value)));
            break;
        case KIND_EDIT_TEXT:
            labelW = font.pixWidthOf(e.label);
            valueW = std::max(e.fieldWidth, font.pixWidthOf(e.text));
            break;
        case KIND_BUTTON:
            labelW = static_cast<int>(font.pixWidthOf(e.label) * 1.2);
            break;
        default:
            break;
        }
        maxLabel = std::max(maxLabel, labelW);
        maxValue = std::max(maxValue, valueW);
    }
    labelWidth = maxLabel + 2 * fontSize;
    width = static_cast<int>(labelWidth + maxValue + fontSize * 1.5);
    LGeom::setRectExt(titleBar, x, y, width, titleHeight);
    LGeom::setRectExt(closeBox, x + width - titleHeight + 1, y + 1, titleHeight - 2, titleHeight - 2);
}

void LGLUI::addSeparator()
{
    if (newRow(KIND_SEPARATOR, "", "addSeparator") >= 0)
        updateUIDimension();
}

void LGLUI::addBlankSpace()
{
    if (newRow(KIND_BLANK_SPACE, "", "addBlankSpace") >= 0)
        updateUIDimension();
}

// ================================================================ [SECTION] input

void LGLUI::registerStandardKeys(unsigned char key)
{
    if (visible && count > 0 && focused)
        standardKey = key;
}

void LGLUI::registerSpecialKeys(int key)
{
    if (visible && count > 0 && focused)
        specialKey = key;
}

void LGLUI::handleMouseClick(int mx, int my, int /*button*/, bool pressed, bool& consumed)
{
    if (!visible || count == 0) {
        focused = false;
        consumed = false;
        return;
    }
    consumed = false;
    mouseDown = pressed;
    if (!pressed)
        hotId = -1;

    const bool inside = mx >= x && mx <= x + width && my >= y && my <= y + height;
    bool search = pressed;
    if (inside) {
        consumed = true;
        if (!focused) {
            if (pressed)
                focused = true;
            else
                search = false;
        }
    } else if (focused) {
        if (pressed)
            focused = false;
        else
            search = false;
    }

    if (search) {
        // Edit texts first, then every other row: a later hit overrides an earlier one.
        const int rows = rowsInUse();
        for (int pass = 0; pass < 2; ++pass) {
            for (int row = 0; row < rows; ++row) {
                const tElement& e = elements[row];
                if ((e.kind == KIND_EDIT_TEXT) != (pass == 0))
                    continue;
                const int rects = std::clamp(e.numHotRects, 0, MAX_HOT_RECTS);
                for (int k = 0; k < rects; ++k) {
                    if (!contains(e.hotRects[k], mx, my))
                        continue;
                    if (row != current)
                        editing = false;
                    current = row;
                    hotId = e.hotIds[k];
                    focused = true;
                }
            }
        }
    }

    if (focused) {
        if (!pressed && popupOpen) {
            editing = false;
            popupOpen = false;
        }
    } else {
        editing = false;
        popupOpen = false;
    }
    clearHotRects();
}

void LGLUI::moveCurrent(int direction)
{
    const int rows = rowsInUse();
    if (rows == 0)
        return;
    int row = current;
    for (int step = 0; step < rows; ++step) {
        row = ((row + direction) % rows + rows) % rows;
        const int kind = elements[row].kind;
        if (kind != KIND_SEPARATOR && kind != KIND_BLANK_SPACE) {
            current = row;
            return;
        }
    }
}

void LGLUI::handle()
{
    if (!visible)
        return;
    keyUsed = false;
    const int now = clockMs();

    if (fadeIn) {
        if (fadeStart == -1)
            fadeStart = now;
        fade = std::min(1.0, static_cast<double>(now - fadeStart) / kFadeInMs);
    } else {
        fadeStart = -1;
    }

    if (hotId >= 0 && hotId == lastHotId) {
        if (now - lastRepeat < repeatDelay)
            return;
        lastRepeat = now;
        repeatDelay = kRepeatMs;
    }

    int cx = 0;
    int cy = 0;
    if (!LGLPlatform::getCursorPos(cx, cy)) {
        cx = cursorX;
        cy = cursorY;
    }
    if (count == 0 || !focused) {
        cursorX = cx;
        cursorY = cy;
        return;
    }

    if (!editing) {
        if (specialKey == KEY_UP) {
            moveCurrent(-1);
            keyUsed = true;
        } else if (specialKey == KEY_DOWN) {
            moveCurrent(1);
            keyUsed = true;
        }
    }

    if (current >= 0 && current < rowsInUse()) {
        switch (elements[current].kind) {
        case KIND_LIST_BOX:
            handleListBox(current);
            break;
        case KIND_LIST_SPINNER:
            handleListSpinner(current);
            break;
        case KIND_NUMBER_SPINNER:
            handleNumberSpinner(current);
            break;
        case KIND_EDIT_TEXT:
            handleEditText(current);
            break;
        case KIND_BUTTON:
            handleButton(current);
            break;
        default:
            break;
        }
    }

    if (focused && mouseDown && dragEnabled) {
        x += cx - cursorX;
        y += cy - cursorY;
        updateUIDimension();
    }

    cursorX = cx;
    cursorY = cy;
    standardKey = 0;
    specialKey = 0;

    if (hotId != lastHotId) {
        lastRepeat = now;
        repeatDelay = kFirstRepeatMs;
        lastHotId = hotId;
    }
}

// ================================================================ [SECTION] value access

void LGLUI::getUIInt(int row, int& value)
{
    if (count <= 0 || !checkRow(row, "getUIInt"))
        return;
    const tElement& e = elements[row];
    switch (e.kind) {
    case KIND_LIST_BOX:
    case KIND_LIST_SPINNER:
    case KIND_NUMBER_SPINNER:
    case KIND_BUTTON:
        value = static_cast<int>(e.value);
        break;
    default:
        value = 0;
        break;
    }
}

void LGLUI::setUIInt(int row, int value)
{
    if (count <= 0 || !checkRow(row, "setUIInt"))
        return;
    tElement& e = elements[row];
    switch (e.kind) {
    case KIND_LIST_BOX:
    case KIND_LIST_SPINNER:
    case KIND_NUMBER_SPINNER:
    case KIND_BUTTON:
        e.value = value;
        break;
    default:
        e.value = 0.0;
        break;
    }
}

void LGLUI::getUIString(int row, std::string& text)
{
    if (count <= 0 || !checkRow(row, "getUIString"))
        return;
    const tElement& e = elements[row];
    text = e.kind == KIND_EDIT_TEXT ? e.text : std::string();
}

void LGLUI::setUIString(int row, std::string text)
{
    if (count <= 0 || !checkRow(row, "setUIString"))
        return;
    tElement& e = elements[row];
    if (e.kind == KIND_EDIT_TEXT)
        e.text = text;
    else
        e.text.clear();
}

void LGLUI::setUIFontPosition(int row)
{
    textX = x + padding.left;
    textY = static_cast<int>((rowTop(row) + fontSize) - (fontSize + 0.5) / 5);
}

void LGLUI::setUIStepValue(int row, double step)
{
    if (checkRow(row, "setUIStepValue"))
        elements[row].stepValue = step;
}

// ================================================================ [SECTION] drawing

void LGLUI::renderPane(tRect area, tColor color)
{
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    tRect shadow = area;
    LGeom::moveRect(shadow, 3, 2);
    glColor4d(0.1, 0.1, 0.1, 0.4 * fade);
    LGL::RenderRect(shadow);
    glColor4d(color.r, color.g, color.b, color.a * fade);
    LGL::RenderRect(area);
    glColor4d(0.6, 0.6, 0.6, 0.8 * fade);
    LGL::RenderRectFrame(area);
    glDisable(GL_BLEND);
    glColor4f(1.0f, 1.0f, 1.0f, 1.0f);
}

void LGLUI::renderSeparator(int row)
{
    const int lineY = rowTop(row) + fontSize / 2;
    glColor4f(0.1f, 0.1f, 0.1f, 0.8f);
    glBegin(GL_LINES);
    glVertex2i(x + padding.left, lineY);
    glVertex2i(x + width - padding.right, lineY);
    glEnd();
}

void LGLUI::render()
{
    if (!visible || count == 0)
        return;

    glDisable(GL_DEPTH_TEST);
    glDisable(GL_TEXTURE_2D);
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();
    glLoadIdentity();
    glMatrixMode(GL_PROJECTION);
    glPushMatrix();
    glLoadIdentity();
    glOrtho(0.0, glutGet(GLUT_WINDOW_WIDTH), glutGet(GLUT_WINDOW_HEIGHT), 0.0, -1.0, 1.0);
    glMatrixMode(GL_MODELVIEW);

    // The rows register their hot areas again as they draw.
    clearHotRects();

    height = fontSize + (count - 1) * rowHeight + padding.top + padding.bottom + titleHeight;
    tRect pane;
    LGeom::setRectExt(pane, x, y, width, height);
    renderPane(pane, paneColor);

    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    const float alpha = static_cast<float>(0.8 * fade);
    glColor4f(0.0f, 0.33333334f, 0.9019608f, alpha);
    LGL::RenderRect(titleBar);
    glColor4f(0.90588236f, 0.43529412f, 0.32156864f, alpha);
    LGL::RenderRect(closeBox);
    glColor4f(1.0f, 1.0f, 1.0f, alpha);
    LGL::RenderRectFrame(closeBox);
    glLineWidth(2.0f);
    glBegin(GL_LINES);
    glVertex2i(closeBox.right - 2, closeBox.top + 2);
    glVertex2i(closeBox.left + 2, closeBox.bottom - 2);
    glVertex2i(closeBox.left + 2, closeBox.top + 2);
    glVertex2i(closeBox.right - 2, closeBox.bottom - 2);
    glEnd();
    glLineWidth(1.0f);
    glDisable(GL_BLEND);

    font.setColor_rp(1.0f, 1.0f, 1.0f, static_cast<float>(fade));

    const int rows = rowsInUse();
    for (int row = 0; row < rows; ++row) {
        switch (elements[row].kind) {
        case KIND_LIST_BOX:
            renderListBox(row);
            break;
        case KIND_LIST_SPINNER:
            renderListSpinner(row);
            break;
        case KIND_NUMBER_SPINNER:
            renderNumberSpinner(row);
            break;
        case KIND_EDIT_TEXT:
            renderEditText(row);
            break;
        case KIND_BUTTON:
            renderButton(row);
            break;
        case KIND_SEPARATOR:
            renderSeparator(row);
            break;
        default:
            break;
        }
    }

    // Only the current row's pop-up can be open; it lies over the rows below it.
    if (current >= 0 && current < rows && elements[current].kind == KIND_LIST_BOX && editing)
        renderListBoxPopUp(current);

    glColor4f(1.0f, 1.0f, 1.0f, 1.0f);
    glDisable(GL_BLEND);
    glMatrixMode(GL_PROJECTION);
    glPopMatrix();
    glMatrixMode(GL_MODELVIEW);
    glPopMatrix();
    glEnable(GL_DEPTH_TEST);
}

// ================================================================ [SECTION] widgets: adding rows

int LGLUI::addButton(std::string label)
{
    const int row = newRow(KIND_BUTTON, label, "addButton");
    if (row < 0)
        return row;
    elements[row].value = 0.0;
    updateUIDimension();
    return row;
}

int LGLUI::addEditText(std::string label, std::string text, int fieldWidth)
{
    const int row = newRow(KIND_EDIT_TEXT, label, "addEditText");
    if (row < 0)
        return row;
    tElement& e = elements[row];
    e.text = text;
    e.fieldWidth = fieldWidth;
    e.cursor = static_cast<int>(text.size());
    updateUIDimension();
    return row;
}

int LGLUI::addListBox(std::string label, std::vector<std::string>& items, int selected)
{
    const int row = newRow(KIND_LIST_BOX, label, "addListBox");
    if (row < 0)
        return row;
    elements[row].items = items;
    elements[row].value = selected;
    updateUIDimension();
    return row;
}

int LGLUI::addListSpinner(std::string label, std::vector<std::string>& items, int selected)
{
    const int row = newRow(KIND_LIST_SPINNER, label, "addListSpinner");
    if (row < 0)
        return row;
    elements[row].items = items;
    elements[row].value = selected;
    updateUIDimension();
    return row;
}

int LGLUI::addNumberSpinner(std::string label, double minValue, double maxValue, double stepValue, double value)
{
    const int row = newRow(KIND_NUMBER_SPINNER, label, "addNumberSpinner");
    if (row < 0)
        return row;
    tElement& e = elements[row];
    e.minValue = minValue;
    e.maxValue = maxValue;
    e.stepValue = stepValue;
    if (!(value > minValue))
        value = minValue;
    else if (!(value < maxValue))
        value = maxValue;
    e.value = value;
    updateUIDimension();
    return row;
}

// ================================================================ [SECTION] widgets: handling

bool LGLUI::isEditTextCharacter(unsigned char key)
{
    if ((key >= 'a' && key <= 'z') || (key >= 'A' && key <= 'Z') || (key >= '0' && key <= '9'))
        return true;
    switch (key) {
    case ' ':
    case '_':
    case '(':
    case ')':
    case '&':
    case '|':
    case ',':
    case '.':
        return true;
    default:
        return false;
    }
}

void LGLUI::handleButton(int row)
{
    if (!checkRow(row, "handleButton"))
        return;
    tElement& e = elements[row];
    const int now = clockMs();
    e.value = 0.0;
    if (standardKey == KEY_ENTER || hotId == HOT_FIELD) {
        e.value = 1.0;
        editing = true;
        valueChanged = true;
        keyUsed = true;
        buttonPressTime = now;
    }
    if (now - buttonPressTime > 100)
        editing = false;
}

void LGLUI::handleEditText(int row)
{
    if (!checkRow(row, "handleEditText"))
        return;
    tElement& e = elements[row];
    const int length = static_cast<int>(e.text.size());
    e.cursor = std::clamp(e.cursor, 0, length);

    if (specialKey == KEY_RIGHT) {
        e.cursor = std::min(e.cursor + 1, length);
        caretTime = clockMs();
        keyUsed = true;
    } else if (specialKey == KEY_LEFT) {
        e.cursor = std::max(e.cursor - 1, 0);
        caretTime = clockMs();
        keyUsed = true;
    }

    if (standardKey == 0)
        return;
    bool changed = false;
    if (isEditTextCharacter(standardKey)) {
        e.text.insert(static_cast<size_t>(e.cursor), 1, static_cast<char>(standardKey));
        ++e.cursor;
        changed = true;
    } else if (standardKey == KEY_DELETE) {
        if (e.cursor < static_cast<int>(e.text.size())) {
            e.text.erase(static_cast<size_t>(e.cursor), 1);
            changed = true;
        }
    } else if (standardKey == KEY_BACKSPACE) {
        if (e.cursor > 0) {
            e.text.erase(static_cast<size_t>(e.cursor - 1), 1);
            --e.cursor;
            changed = true;
        }
    }
    if (changed) {
        caretTime = clockMs();
        valueChanged = true;
        keyUsed = true;
    }
}

void LGLUI::stepList(int row, int direction)
{
    tElement& e = elements[row];
    const int items = static_cast<int>(e.items.size());
    if (items == 0)
        return;
    // No wrap-around: the ends hold.
    e.value = std::clamp(e.value + direction, 0.0, static_cast<double>(items - 1));
    valueChanged = true;
}

void LGLUI::handleListBox(int row)
{
    if (!checkRow(row, "handleListBox"))
        return;
    tElement& e = elements[row];
    if (editing) {
        if (specialKey == KEY_UP) {
            spinDirection = -1;
            keyUsed = true;
        } else if (specialKey == KEY_DOWN) {
            spinDirection = 1;
            keyUsed = true;
        }
    }
    if (specialKey == KEY_RIGHT || hotId == HOT_RIGHT_ARROW) {
        editing = true;
        keyUsed = true;
    }
    if (specialKey == KEY_LEFT || standardKey == KEY_ENTER) {
        editing = false;
        keyUsed = true;
    }
    if (hotId >= HOT_POPUP_ITEM) {
        const int item = hotId - HOT_POPUP_ITEM;
        if (item < static_cast<int>(e.items.size())) {
            e.value = item;
            popupOpen = true;
            valueChanged = true;
            keyUsed = true;
        }
    }
    if (spinDirection != 0)
        stepList(row, spinDirection);
    spinDirection = 0;
}

void LGLUI::handleListSpinner(int row)
{
    if (!checkRow(row, "handleListSpinner"))
        return;
    if (specialKey == KEY_RIGHT || hotId == HOT_RIGHT_ARROW) {
        keyUsed = true;
        stepList(row, 1);
    }
    if (specialKey == KEY_LEFT || hotId == HOT_LEFT_ARROW) {
        keyUsed = true;
        stepList(row, -1);
    }
}

void LGLUI::handleNumberSpinner(int row)
{
    if (!checkRow(row, "handleNumberSpinner"))
        return;
    tElement& e = elements[row];
    if (specialKey == KEY_RIGHT || hotId == HOT_RIGHT_ARROW) {
        e.value = std::min(e.value + e.stepValue, e.maxValue);
        valueChanged = true;
        keyUsed = true;
    }
    if (specialKey == KEY_LEFT || hotId == HOT_LEFT_ARROW) {
        e.value = std::max(e.value - e.stepValue, e.minValue);
        valueChanged = true;
        keyUsed = true;
    }
}

// ================================================================ [SECTION] widgets: drawing

namespace {

// A triangle filling `area`, its tip at the middle of the left or right side; drawn filled, then
// outlined with the polygon mode set to lines (the caller restores the fill mode).
void drawArrow(const tRect& area, bool pointsLeft, double fade)
{
    const float middle = (static_cast<float>(area.top) + static_cast<float>(area.bottom)) * 0.5f;
    const float back = static_cast<float>(pointsLeft ? area.right : area.left);
    const float tip = static_cast<float>(pointsLeft ? area.left : area.right);
    auto vertices = [&] {
        glBegin(GL_TRIANGLES);
        glVertex2f(back, static_cast<float>(area.top));
        glVertex2f(tip, middle);
        glVertex2f(back, static_cast<float>(area.bottom));
        glEnd();
    };
    glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
    glColor4d(0.3, 0.3, 0.3, 0.8 * fade);
    vertices();
    glPolygonMode(GL_FRONT_AND_BACK, GL_LINE);
    glLineWidth(2.0f);
    glColor4d(0.6, 0.6, 0.6, 0.8 * fade);
    vertices();
}

}  // namespace

void LGLUI::writeLabelAndValue(int row, const std::string& value)
{
    setUIFontPosition(row);
    font.writeAt_rp_tab(textX, textY, elements[row].label);
    font.writeAt_rp_tab(textX + labelWidth, textY, value);
}

void LGLUI::renderValueFieldPane(int row, bool leftArrow, bool rightArrow)
{
    if (!checkRow(row, "renderValueFieldPane"))
        return;
    tRect field;
    LGeom::setRectExt(field, x + labelWidth + padding.left - fieldPadding.left, rowTop(row) - fieldPadding.top,
                      width - padding.right - labelWidth - padding.left,
                      fieldPadding.top + fieldPadding.bottom + fontSize);

    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    const double shade = row == current ? 0.9 : 1.0;
    glColor4d(fieldColor.r * shade, fieldColor.g * shade, fieldColor.b * shade, fieldColor.a * fade);
    LGL::RenderRect(field);
    addHotRect(row, field, HOT_FIELD);

    const int arrowWidth = fontSize / 2;
    if (leftArrow) {
        tRect arrow;
        LGeom::setRect(arrow, field.left - arrowWidth - 1, field.top + 1, field.left - 1, field.bottom - 1);
        drawArrow(arrow, true, fade);
        addHotRect(row, arrow, HOT_LEFT_ARROW);
    }
    if (rightArrow) {
        // Drawn alone it is the list-box marker, which stands in the label column, as intended.
        const int base = leftArrow ? field.right : field.left - 20;
        tRect arrow;
        LGeom::setRect(arrow, base + 2, field.top + 1, base + arrowWidth + 1, field.bottom - 1);
        drawArrow(arrow, false, fade);
        addHotRect(row, arrow, HOT_RIGHT_ARROW);
    }

    glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
    glLineWidth(1.0f);
    glDisable(GL_BLEND);
    glColor4f(1.0f, 1.0f, 1.0f, 1.0f);
}

void LGLUI::renderButton(int row)
{
    if (!checkRow(row, "renderButton"))
        return;
    setUIFontPosition(row);
    const int top = rowTop(row) - fieldPadding.top;
    tRect face;
    LGeom::setRect(face, x + padding.left - fieldPadding.left, top, x + width - padding.right,
                   top + fieldPadding.top + fontSize + fieldPadding.bottom);

    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    const double alpha = 0.8 * fade;
    if (row == current)
        glColor4d(0.95, 0.95, 0.95, alpha);
    else
        glColor4d(paneColor.r * 0.9, paneColor.g * 0.9, paneColor.b * 0.9, alpha);
    LGL::RenderRect(face);

    const bool held = editing && row == current;
    const double topLeft = held ? 0.1 : 0.3;
    const double bottomRight = held ? 0.3 : 0.1;
    glBegin(GL_LINES);
    glColor4d(topLeft, topLeft, topLeft, alpha);
    glVertex2i(face.left, face.top);
    glVertex2i(face.right, face.top);
    glVertex2i(face.left, face.top);
    glVertex2i(face.left, face.bottom);
    glColor4d(bottomRight, bottomRight, bottomRight, alpha);
    glVertex2i(face.left, face.bottom);
    glVertex2i(face.right, face.bottom);
    glVertex2i(face.right, face.top);
    glVertex2i(face.right, face.bottom);
    glEnd();
    glDisable(GL_BLEND);
    glColor4f(1.0f, 1.0f, 1.0f, 1.0f);

    const int savedTextX = textX;
    const int savedAlignment = font.alignment;
    textX = (face.left + face.right) / 2;
    font.alignment = 0;
    font.writeAt_rp_tab(textX, textY, elements[row].label);
    font.alignment = savedAlignment;
    textX = savedTextX;

    addHotRect(row, face, HOT_FIELD);
}

void LGLUI::renderEditText(int row)
{
    if (!checkRow(row, "renderEditText"))
        return;
    const tElement& e = elements[row];
    renderValueFieldPane(row, false, false);
    writeLabelAndValue(row, e.text);

    if (row != current || !focused)
        return;
    const int sinceMove = clockMs() - caretTime;
    if (((sinceMove % 1000) + 1000) % 1000 >= 500)
        return;
    const int cursor = std::clamp(e.cursor, 0, static_cast<int>(e.text.size()));
    const int caretX = textX + labelWidth + font.pixWidthOf(e.text.substr(0, static_cast<size_t>(cursor)));
    const int caretTop = textY + fieldPadding.top + fieldPadding.bottom - fontSize;
    glLineWidth(2.0f);
    glColor4f(0.0f, 0.0f, 0.0f, 1.0f);
    glBegin(GL_LINES);
    glVertex2i(caretX, caretTop);
    glVertex2i(caretX, caretTop + fontSize);
    glEnd();
    glLineWidth(1.0f);
    glColor4f(1.0f, 1.0f, 1.0f, 1.0f);
}

namespace {

// The text of the selected item, empty when the index lies outside the items.
std::string selectedItem(const LGLUI::tElement& e)
{
    const int index = static_cast<int>(e.value);
    if (index < 0 || index >= static_cast<int>(e.items.size()))
        return std::string();
    return e.items[static_cast<size_t>(index)];
}

}  // namespace

void LGLUI::renderListBox(int row)
{
    if (!checkRow(row, "renderListBox"))
        return;
    renderValueFieldPane(row, false, row == current);
    writeLabelAndValue(row, selectedItem(elements[row]));
}

void LGLUI::renderListBoxPopUp(int row)
{
    if (!checkRow(row, "renderListBoxPopUp"))
        return;
    const tElement& e = elements[row];
    setUIFontPosition(row);
    const int items = static_cast<int>(e.items.size());
    tRect pane;
    LGeom::setRectExt(pane, width + textX - 190, rowTop(row), 100, items * rowHeight);

    // Kept on purpose: the pane colour stays opaque after the first pop-up.
    paneColor.a = 1.0;
    renderPane(pane, paneColor);
    addHotRect(row, pane, HOT_POPUP);

    const int selected = static_cast<int>(e.value);
    for (int i = 0; i < items; ++i) {
        const int lineTop = pane.top + i * rowHeight + (rowHeight - fontSize) / 2;
        tRect band;
        LGeom::setRect(band, pane.left + 8, lineTop - 1, pane.right - 8, lineTop + fontSize + 1);
        if (i == selected) {
            glEnable(GL_BLEND);
            glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
            glColor4d(fieldColor.r, fieldColor.g, fieldColor.b, fieldColor.a * fade);
            LGL::RenderRect(band);
            glDisable(GL_BLEND);
            glColor4f(1.0f, 1.0f, 1.0f, 1.0f);
        }
        const int baseline = static_cast<int>((lineTop + fontSize) - (fontSize + 0.5) / 5);
        font.writeAt_rp_tab(pane.left + fontSize / 2, baseline, e.items[static_cast<size_t>(i)]);
        addHotRect(row, band, HOT_POPUP_ITEM + i);
    }
}

void LGLUI::renderListSpinner(int row)
{
    if (!checkRow(row, "renderListSpinner"))
        return;
    const bool arrows = row == current;
    renderValueFieldPane(row, arrows, arrows);
    writeLabelAndValue(row, selectedItem(elements[row]));
}

void LGLUI::renderNumberSpinner(int row)
{
    if (!checkRow(row, "renderNumberSpinner"))
        return;
    const bool arrows = row == current;
    renderValueFieldPane(row, arrows, arrows);
    writeLabelAndValue(row, LString::dtoa(elements[row].value));
}
