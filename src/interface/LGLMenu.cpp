// LGLMenu.cpp -- the menu bar: the class-wide menu table, shortcut parsing, keyboard and mouse
// handling, layout and drawing.
#include <ostrum_gl/interface/LGLMenu.h>

#include <ostrum_core/LGeom.h>
#include <ostrum_core/LString.h>

#include <GL/freeglut.h>
#include <GL/gl.h>

#include <algorithm>
#include <cctype>
#include <cstdio>

std::vector<LGLMenu::tMenu> LGLMenu::menus;
std::vector<tRect> LGLMenu::menuRects;

namespace {

const LGL::tGLRGB kPaneColor = {0.9254902f, 0.9137255f, 0.84705883f};
const LGL::tGLRGB kPaneFrameColor = {0.6f, 0.6f, 0.6f};
const LGL::tGLRGB kSeparatorColor = {0.5f, 0.5f, 0.5f};
constexpr int kSeparatorInset = 2;
constexpr int kCtrlCodeToLetter = 96;  // control code 1 + 96 = 'a'

struct tNamedKey {
    const char* word;
    int code;
    bool special;
};

const tNamedKey kNamedKeys[] = {
    {"esc", 27, false},     {"tab", 9, false},          {"enter", 13, false},
    {"space", 32, false},   {"delete", 127, false},     {"insert", GLUT_KEY_INSERT, true},
    {"up", GLUT_KEY_UP, true}, {"down", GLUT_KEY_DOWN, true}, {"right", GLUT_KEY_RIGHT, true},
    {"left", GLUT_KEY_LEFT, true},
};

// "F<n>" (any case) with n of one to three digits up to 127; -1 otherwise.
int functionKeyNumber(const std::string& lowerWord)
{
    if (lowerWord.size() < 2 || lowerWord.size() > 4 || lowerWord[0] != 'f')
        return -1;
    int number = 0;
    for (size_t i = 1; i < lowerWord.size(); ++i) {
        if (!std::isdigit(static_cast<unsigned char>(lowerWord[i])))
            return -1;
        number = number * 10 + (lowerWord[i] - '0');
    }
    return number;
}

void fillRect(int left, int top, int right, int bottom)
{
    tRect rect;
    LGeom::setRect(rect, left, top, right, bottom);
    LGL::RenderRect(rect);
}

}  // namespace

// ================================================================ set-up

LGLMenu::LGLMenu()
    : hoverMenu(-1),
      openMenu(-1),
      isOpen(false),
      enabled(true),
      visible(true),
      font(),
      fontSize(0),
      barHeight(0),
      padding{0, 0, 0, 0},
      itemPadding{0, 0, 0, 0},
      titlePadding{0, 0, 0, 0},
      barRect{0, 0, 0, 0}
{
    setColors();
}

LGLMenu::~LGLMenu() = default;

void LGLMenu::setColors()
{
    LGL::SetColor(barColor, 0.94902f, 0.945098f, 0.92549f);
    LGL::SetColor(barColor2, 0.94902f, 0.945098f, 0.92549f);
    LGL::SetColor(titleColor, 1.0f, 1.0f, 1.0f);
    LGL::SetColor(highlightColor, 0.192157f, 0.415686f, 0.772549f);
    LGL::SetColor(highlightTextColor, 1.0f, 1.0f, 1.0f);
    LGL::SetColor(disabledColor, 0.67451f, 0.658824f, 0.6f);
}

void LGLMenu::initialize(std::string fontName, int size, double barFactor)
{
    fontSize = size;
    barHeight = static_cast<int>(size * barFactor);

    // A second initialize replaces the font rather than adding one behind it.
    if (font.numFonts > 0) {
        font.dispose();
        font.numFonts = 0;
        font.currentFont = 0;
    }
    font.create(nullptr, fontName.empty() ? "Tahoma" : fontName.c_str(), size, 0, 0);

    LGeom::setRect(padding, size / 2, static_cast<int>(barHeight * 0.5), size / 2,
                   static_cast<int>(barHeight * 0.5));
    LGeom::setRect(itemPadding, size, 0, static_cast<int>(size * 1.2), 0);
    const int titleMargin = static_cast<int>(size / 1.5);
    LGeom::setRect(titlePadding, titleMargin, 0, titleMargin, 0);

    setColors();
    font.setColor_rp(0.0f, 0.0f, 0.0f);
    updateBarRect();
    layout();
}

void LGLMenu::clearMenus()
{
    menus.clear();
    menuRects.clear();
}

// ================================================================ menus and items

void LGLMenu::addMenu(std::string name)
{
    tMenu menu;
    menu.name = name;
    menu.titleX = 0;
    menu.titleWidth = 0;
    menu.dropRect = {0, 0, 0, 0};
    menu.hoverItem = -1;
    menu.shortcutWidth = 0;
    menus.push_back(menu);
    menuRects.push_back({0, 0, 0, 0});
    layout();
}

bool LGLMenu::isSeparator(const tMenuItem& item)
{
    return !item.text.empty() && item.text[0] == '-';
}

void LGLMenu::parseShortcut(tMenuItem& item)
{
    const size_t open = item.text.rfind('[');
    if (open == std::string::npos)
        return;
    const size_t close = item.text.find(']', open + 1);
    if (close == std::string::npos)
        return;
    item.shortcutText = item.text.substr(open + 1, close - open - 1);

    std::string keyWord;
    for (const std::string& piece : LString::split(item.shortcutText, "-")) {
        const std::string word = LString::trimSpaces(piece);
        const std::string lower = LString::LowerCase(word);
        if (lower == "ctrl")
            item.modifiers |= GLUT_ACTIVE_CTRL;
        else if (lower == "alt")
            item.modifiers |= GLUT_ACTIVE_ALT;
        else if (lower == "shift")
            item.modifiers |= GLUT_ACTIVE_SHIFT;
        else if (!word.empty())
            keyWord = word;
    }
    if (keyWord.empty()) {
        // "[ctrl--]": the minus key itself, which the split leaves as empty words.
        const std::string trimmed = LString::trimSpaces(item.shortcutText);
        if (!trimmed.empty() && trimmed.back() == '-')
            item.key = '-';
        return;
    }

    const std::string lower = LString::LowerCase(keyWord);
    const int function = functionKeyNumber(lower);
    if (function >= 0) {
        item.specialKey = true;
        item.key = function <= 127 ? static_cast<char>(function) : 0;
        return;
    }
    for (const tNamedKey& named : kNamedKeys) {
        if (lower == named.word) {
            item.specialKey = named.special;
            item.key = static_cast<char>(named.code);
            return;
        }
    }
    item.key = lower[0];
}

void LGLMenu::addItem(std::string text, void (*callback)())
{
    if (menus.empty()) {
        std::printf("** WARNING LGLMenu::addItem> no menu for the item \"%s\" (LGLMenu.cpp)\n", text.c_str());
        return;
    }
    tMenuItem item;
    item.text = text;
    item.callback = callback;
    item.enabled = true;
    item.checked = false;
    item.specialKey = false;
    item.key = 0;
    item.modifiers = 0;
    parseShortcut(item);
    menus.back().items.push_back(item);
    layout();
}

std::string LGLMenu::captionOf(const tMenuItem& item)
{
    std::string caption = item.text;
    const size_t open = caption.rfind('[');
    if (open != std::string::npos) {
        const size_t close = caption.find(']', open + 1);
        if (close != std::string::npos)
            caption.erase(open, close - open + 1);
    }
    while (!caption.empty() && std::isspace(static_cast<unsigned char>(caption.back())))
        caption.pop_back();
    return caption;
}

void LGLMenu::enableMenuItem(int menu, int item, bool on)
{
    if (menu < 0 || menu >= static_cast<int>(menus.size()))
        return;
    std::vector<tMenuItem>& items = menus[menu].items;
    if (item < 0 || item >= static_cast<int>(items.size()))
        return;
    items[item].enabled = on;
}

void LGLMenu::checkMenuItem(int menu, int item, bool on)
{
    if (menu < 0 || menu >= static_cast<int>(menus.size()))
        return;
    std::vector<tMenuItem>& items = menus[menu].items;
    if (item < 0 || item >= static_cast<int>(items.size()))
        return;
    items[item].checked = on;
}

// ================================================================ keyboard

void LGLMenu::fireMatching(int key, int modifiers, bool special)
{
    // Indices, re-read every step: a callback may add menus or items while the walk goes on.
    for (size_t m = 0; m < menus.size(); ++m) {
        for (size_t i = 0; i < menus[m].items.size(); ++i) {
            const tMenuItem& item = menus[m].items[i];
            if (!item.enabled || item.specialKey != special || item.key == 0)
                continue;
            if (static_cast<unsigned char>(item.key) != key || item.modifiers != modifiers)
                continue;
            const tCallback callback = item.callback;
            if (callback != nullptr)
                callback();
        }
    }
}

void LGLMenu::handleStandardKeys(unsigned char key)
{
    if (!enabled || menus.empty())
        return;
    handleStandardKeys(key, glutGetModifiers());
}

void LGLMenu::handleStandardKeys(unsigned char key, int modifiers)
{
    if (!enabled || menus.empty())
        return;
    int code = key;
    if ((modifiers & GLUT_ACTIVE_CTRL) != 0 && code >= 1 && code <= 26)
        code += kCtrlCodeToLetter;
    // The typed character already tells the shift.
    if (modifiers == GLUT_ACTIVE_SHIFT)
        modifiers = 0;
    fireMatching(code, modifiers, false);
}

void LGLMenu::handleSpecialKeys(int key)
{
    if (!enabled || menus.empty())
        return;
    handleSpecialKeys(key, glutGetModifiers());
}

void LGLMenu::handleSpecialKeys(int key, int modifiers)
{
    if (!enabled || menus.empty())
        return;
    fireMatching(key, modifiers, true);
}

// ================================================================ layout

int LGLMenu::baselineOf(int rowTop) const
{
    return rowTop + padding.top + fontSize / 3;
}

void LGLMenu::updateBarRect()
{
    LGeom::setRect(barRect, 0, 0, glutGet(GLUT_WINDOW_WIDTH), barHeight);
}

void LGLMenu::layout()
{
    if (menuRects.size() != menus.size())
        menuRects.resize(menus.size(), {0, 0, 0, 0});
    int x = padding.left;
    for (size_t k = 0; k < menus.size(); ++k) {
        tMenu& menu = menus[k];
        menu.titleX = x;
        menu.titleWidth = titlePadding.left + font.pixWidthOf(menu.name) + titlePadding.right;
        LGeom::setRect(menuRects[k], x, 0, x + menu.titleWidth, barHeight);
        x += menu.titleWidth;

        int captionWidth = 0;
        int shortcutWidth = 0;
        for (const tMenuItem& item : menu.items) {
            captionWidth = std::max(captionWidth, font.pixWidthOf(captionOf(item)));
            shortcutWidth = std::max(shortcutWidth, font.pixWidthOf(item.shortcutText));
        }
        menu.shortcutWidth = shortcutWidth;
        int width = CHECK_BOX_SIZE + itemPadding.left + captionWidth + itemPadding.right;
        if (shortcutWidth > 0)
            width += shortcutWidth + itemPadding.right;
        width = std::max(width, menu.titleWidth);
        LGeom::setRect(menu.dropRect, menu.titleX, barHeight, menu.titleX + width,
                       barHeight + barHeight * static_cast<int>(menu.items.size()));
    }
}

void LGLMenu::handle()
{
    updateBarRect();
    layout();
}

// ================================================================ mouse

bool LGLMenu::inRect(const tRect& rect, int x, int y)
{
    return x >= rect.left && x <= rect.right && y >= rect.top && y <= rect.bottom;
}

bool LGLMenu::hasOpenMenu() const
{
    return isOpen && openMenu >= 0 && openMenu < static_cast<int>(menus.size());
}

int LGLMenu::titleAt(int x, int y) const
{
    for (size_t k = 0; k < menuRects.size(); ++k)
        if (inRect(menuRects[k], x, y))
            return static_cast<int>(k);
    return -1;
}

int LGLMenu::itemAt(const tMenu& menu, int x, int y) const
{
    if (x < menu.dropRect.left || x > menu.dropRect.right)
        return -1;
    int hit = -1;
    for (size_t j = 0; j < menu.items.size(); ++j) {
        const int top = menu.dropRect.top + barHeight * static_cast<int>(j) + 1;
        const int bottom = menu.dropRect.top + barHeight * static_cast<int>(j + 1) - 1;
        if (y >= top && y <= bottom)
            hit = static_cast<int>(j);
    }
    return hit;
}

void LGLMenu::openMenuAt(int k)
{
    if (!isOpen || openMenu != k)
        menus[k].hoverItem = -1;
    openMenu = k;
    isOpen = true;
}

void LGLMenu::close()
{
    hoverMenu = -1;
    openMenu = -1;
    isOpen = false;
}

void LGLMenu::handleMousePassiveMotion(int x, int y)
{
    if (!enabled || !visible)
        return;
    layout();
    if (!isOpen) {
        hoverMenu = -1;
        if (y > barHeight)
            return;
    }
    const int title = titleAt(x, y);
    if (title >= 0) {
        hoverMenu = title;
        if (isOpen)
            openMenuAt(title);
        return;
    }
    if (hasOpenMenu()) {
        tMenu& menu = menus[openMenu];
        menu.hoverItem = itemAt(menu, x, y);
    }
}

void LGLMenu::handleMenuMouseClick(int x, int y, int button, bool pressed, bool& consumed)
{
    consumed = false;
    if (!enabled || !visible)
        return;
    if (button != GLUT_LEFT_BUTTON || !pressed)
        return;
    layout();

    if (hasOpenMenu()) {
        tMenu& menu = menus[openMenu];
        menu.hoverItem = itemAt(menu, x, y);
        if (menu.hoverItem >= 0) {
            const tMenuItem& item = menu.items[menu.hoverItem];
            consumed = true;
            if (!item.enabled || isSeparator(item))
                return;
            const tCallback callback = item.callback;
            menu.hoverItem = -1;
            close();
            if (callback != nullptr)
                callback();
            return;
        }
    }

    const int title = titleAt(x, y);
    if (title >= 0) {
        openMenuAt(title);
        consumed = true;
        return;
    }
    close();
}

// ================================================================ drawing

void LGLMenu::renderDropDown(const tMenu& menu)
{
    if (menu.items.empty())
        return;
    const tRect& drop = menu.dropRect;
    LGL::UseColor(kPaneColor);
    LGL::RenderRect(drop);

    const LGL::tGLRGB normal = {font.color_rp.r, font.color_rp.g, font.color_rp.b};
    for (size_t j = 0; j < menu.items.size(); ++j) {
        const tMenuItem& item = menu.items[j];
        const int rowTop = drop.top + barHeight * static_cast<int>(j);
        if (isSeparator(item)) {
            LGL::UseColor(kSeparatorColor);
            const int middle = rowTop + barHeight / 2;
            glBegin(GL_LINES);
            glVertex2i(drop.left + kSeparatorInset, middle);
            glVertex2i(drop.right - kSeparatorInset, middle);
            glEnd();
            continue;
        }

        LGL::tGLRGB text = normal;
        if (!item.enabled) {
            text = disabledColor;
        } else if (menu.hoverItem == static_cast<int>(j)) {
            LGL::UseColor(highlightColor);
            fillRect(drop.left, rowTop, drop.right, rowTop + barHeight);
            text = highlightTextColor;
        }

        if (item.checked) {
            LGL::UseColor(text);
            const int boxLeft = drop.left + CHECK_BOX_LEFT;
            const int boxTop = rowTop + (barHeight - CHECK_BOX_SIZE) / 2;
            fillRect(boxLeft, boxTop, boxLeft + CHECK_BOX_SIZE, boxTop + CHECK_BOX_SIZE);
        }

        const int baseline = baselineOf(rowTop);
        font.writeAt_rp(drop.left + itemPadding.left + CHECK_BOX_SIZE, baseline, captionOf(item), text.r, text.g,
                        text.b);
        if (!item.shortcutText.empty()) {
            font.alignment = -1;
            font.writeAt_rp(drop.right - itemPadding.right, baseline, item.shortcutText, text.r, text.g, text.b);
            font.alignment = 1;
        }
    }

    LGL::UseColor(kPaneFrameColor);
    LGL::RenderRectFrame(drop);
}

void LGLMenu::render()
{
    if (!visible || font.numFonts == 0)
        return;
    layout();

    glPushAttrib(GL_ENABLE_BIT | GL_CURRENT_BIT);
    for (GLenum capability : {GL_TEXTURE_2D, GL_LIGHTING, GL_DEPTH_TEST, GL_FOG, GL_BLEND, GL_CULL_FACE,
                              GL_ALPHA_TEST, GL_LINE_STIPPLE})
        glDisable(capability);

    font.begin();
    LGeom::setRect(barRect, 0, 0, font.windowWidth, barHeight);

    glBegin(GL_QUADS);
    LGL::UseColor(barColor);
    glVertex2i(barRect.left, barRect.top);
    glVertex2i(barRect.right, barRect.top);
    LGL::UseColor(barColor2);
    glVertex2i(barRect.right, barRect.bottom);
    glVertex2i(barRect.left, barRect.bottom);
    glEnd();

    const LGL::tGLRGB normal = {font.color_rp.r, font.color_rp.g, font.color_rp.b};
    font.alignment = 0;
    for (size_t k = 0; k < menus.size(); ++k) {
        const tRect& area = menuRects[k];
        const int index = static_cast<int>(k);
        LGL::tGLRGB text = normal;
        if (index == hoverMenu || (hasOpenMenu() && index == openMenu)) {
            LGL::UseColor(highlightColor);
            LGL::RenderRect(area);
            text = titleColor;
        }
        font.writeAt_rp(area.left + menus[k].titleWidth / 2, baselineOf(0), menus[k].name, text.r, text.g, text.b);
    }
    font.alignment = 1;

    if (hasOpenMenu())
        renderDropDown(menus[openMenu]);

    font.end();
    glPopAttrib();
}
