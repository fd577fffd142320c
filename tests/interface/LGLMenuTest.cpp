// LGLMenuTest.cpp -- LGLMenu's defaults, initialisation, the shortcut parser, item state, shortcut
// matching with a given modifier mask, layout and the mouse handlers.
#include <ostrum_gl/interface/LGLMenu.h>

#include "LGLMenuTestHelpers.h"

#include <GL/freeglut.h>

#include <cstdint>

using namespace menu_test;
using ostrum_test::StdoutCapture;

namespace {

constexpr int kShift = 1;
constexpr int kCtrl = 2;
constexpr int kAlt = 4;

void expectColor(const LGL::tGLRGB& c, float r, float g, float b)
{
    EXPECT_FLOAT_EQ(c.r, r);
    EXPECT_FLOAT_EQ(c.g, g);
    EXPECT_FLOAT_EQ(c.b, b);
}

// The one item added with `caption` to a fresh menu.
LGLMenu::tMenuItem parsed(const std::string& caption)
{
    LGLMenu::clearMenus();
    LGLMenu menu;
    menu.addMenu("M");
    menu.addItem(caption, fire<1>);
    return LGLMenu::menus.at(0).items.at(0);
}

}  // namespace

// ================================================================ construction and initialisation

TEST(LGLMenuDefaults, ConstructorSetsTheDesignedDefaults)
{
    LGLMenu menu;
    EXPECT_EQ(menu.hoverMenu, -1);
    EXPECT_EQ(menu.openMenu, -1);
    EXPECT_FALSE(menu.isOpen);
    EXPECT_TRUE(menu.enabled);
    EXPECT_TRUE(menu.visible);
    EXPECT_EQ(menu.font.numFonts, 0);
    expectColor(menu.barColor, 0.94902f, 0.945098f, 0.92549f);
    expectColor(menu.barColor2, 0.94902f, 0.945098f, 0.92549f);
    expectColor(menu.titleColor, 1, 1, 1);
    expectColor(menu.highlightColor, 0.192157f, 0.415686f, 0.772549f);
    expectColor(menu.highlightTextColor, 1, 1, 1);
    expectColor(menu.disabledColor, 0.67451f, 0.658824f, 0.6f);
}

class LGLMenuInitTest : public MenuTest {};

TEST_F(LGLMenuInitTest, InitializeSetsSizesMarginsBarAndColours)
{
    LGLMenu menu;
    menu.barColor = {0, 0, 0};
    menu.initialize("", kFontSize, kBarFactor);
    EXPECT_EQ(menu.fontSize, 13);
    EXPECT_EQ(menu.barHeight, 19);  // trunc(19.5)
    EXPECT_RECT(menu.padding, 6, 9, 6, 9);
    EXPECT_RECT(menu.itemPadding, 13, 0, 15, 0);
    EXPECT_RECT(menu.titlePadding, 8, 0, 8, 0);
    EXPECT_RECT(menu.barRect, 0, 0, kWindowWidth, 19);
    expectColor(menu.barColor, 0.94902f, 0.945098f, 0.92549f);
    EXPECT_FLOAT_EQ(menu.font.color_rp.r, 0.0f);
    EXPECT_FLOAT_EQ(menu.font.color_rp.g, 0.0f);
    EXPECT_FLOAT_EQ(menu.font.color_rp.b, 0.0f);
    ASSERT_EQ(menu.font.numFonts, 1);
    EXPECT_EQ(menu.font.fonts[0].height, 13);
    EXPECT_TRUE(glIsList(menu.font.fonts[0].base + 'A'));
}

TEST_F(LGLMenuInitTest, BarHeightAndMarginsTruncate)
{
    LGLMenu menu;
    menu.initialize("", 10, 1.99);  // 19.9 -> 19
    EXPECT_EQ(menu.barHeight, 19);
    EXPECT_RECT(menu.padding, 5, 9, 5, 9);
    EXPECT_RECT(menu.itemPadding, 10, 0, 12, 0);
    EXPECT_RECT(menu.titlePadding, 6, 0, 6, 0);  // trunc(6.67)
    LGLMenu odd;
    odd.initialize("", 7, 2.0);
    EXPECT_EQ(odd.barHeight, 14);
    EXPECT_RECT(odd.padding, 3, 7, 3, 7);        // 7 / 2 in integers
    EXPECT_RECT(odd.itemPadding, 7, 0, 8, 0);    // trunc(8.4)
    EXPECT_RECT(odd.titlePadding, 4, 0, 4, 0);   // trunc(4.67)
}

TEST_F(LGLMenuInitTest, EmptyFontNameUsesTahoma)
{
    LGLFont tahoma;
    tahoma.create(nullptr, "Tahoma", 17, 0, 0);
    LGLFont mono;
    mono.create(nullptr, "Courier New", 17, 0, 0);
    LGLMenu menu;
    menu.initialize("", 17, 1.5);
    LGLMenu courier;
    courier.initialize("Courier New", 17, 1.5);
    int tahomaDiffers = 0;
    for (int c = 32; c < 127; ++c) {
        EXPECT_EQ(menu.font.fonts[0].widths[c], tahoma.fonts[0].widths[c]) << c;
        EXPECT_EQ(courier.font.fonts[0].widths[c], mono.fonts[0].widths[c]) << c;
        tahomaDiffers += menu.font.fonts[0].widths[c] != mono.fonts[0].widths[c];
    }
    EXPECT_GT(tahomaDiffers, 10);  // the name given is the name used
}

TEST_F(LGLMenuInitTest, InitializeAgainReplacesTheFont)
{
    LGLMenu menu;
    menu.initialize("", 13, 1.5);
    const GLuint oldBase = menu.font.fonts[0].base;
    menu.initialize("", 20, 1.5);
    EXPECT_EQ(menu.font.numFonts, 1);
    EXPECT_EQ(menu.font.currentFont, 0);
    EXPECT_EQ(menu.font.fonts[0].height, 20);
    EXPECT_EQ(menu.barHeight, 30);
    EXPECT_FALSE(glIsList(oldBase + 'A'));
    EXPECT_TRUE(glIsList(menu.font.fonts[0].base + 'A'));
}

TEST_F(LGLMenuInitTest, DestructorDeletesTheFontsLists)
{
    GLuint base = 0;
    {
        LGLMenu menu;
        menu.initialize("", 13, 1.5);
        base = menu.font.fonts[0].base;
        ASSERT_TRUE(glIsList(base));
    }
    EXPECT_FALSE(glIsList(base));
    EXPECT_FALSE(glIsList(base + 255));
}

TEST_F(LGLMenuInitTest, CopyAssignmentCopiesEveryMemberAndSharesTheLists)
{
    LGLMenu menu;
    menu.initialize("", 13, 1.5);
    menu.hoverMenu = 2;
    menu.openMenu = 1;
    menu.isOpen = true;
    menu.visible = false;
    menu.highlightColor = {0.1f, 0.2f, 0.3f};
    LGLMenu copy;
    copy = menu;
    EXPECT_EQ(copy.hoverMenu, 2);
    EXPECT_EQ(copy.openMenu, 1);
    EXPECT_TRUE(copy.isOpen);
    EXPECT_FALSE(copy.visible);
    EXPECT_EQ(copy.barHeight, 19);
    EXPECT_RECT(copy.itemPadding, 13, 0, 15, 0);
    expectColor(copy.highlightColor, 0.1f, 0.2f, 0.3f);
    EXPECT_EQ(copy.font.fonts[0].base, menu.font.fonts[0].base);
    EXPECT_EQ(copy.font.numFonts, 1);
    copy.font.numFonts = 0;  // the lists stay with `menu`, which deletes them
}

// ================================================================ menus, items and the shortcut parser

TEST(LGLMenuItems, AddMenuAppendsAnEmptyMenuAndItsTitleArea)
{
    LGLMenu::clearMenus();
    LGLMenu menu;
    menu.addMenu("File");
    menu.addMenu("Edit");
    ASSERT_EQ(LGLMenu::menus.size(), 2u);
    ASSERT_EQ(LGLMenu::menuRects.size(), 2u);
    EXPECT_EQ(LGLMenu::menus[0].name, "File");
    EXPECT_EQ(LGLMenu::menus[1].name, "Edit");
    EXPECT_TRUE(LGLMenu::menus[1].items.empty());
    EXPECT_EQ(LGLMenu::menus[1].hoverItem, -1);
    LGLMenu::clearMenus();
    EXPECT_TRUE(LGLMenu::menus.empty());
    EXPECT_TRUE(LGLMenu::menuRects.empty());
}

TEST(LGLMenuItems, ItemsGoToTheLastMenuAddedEnabledAndUnchecked)
{
    LGLMenu::clearMenus();
    LGLMenu menu;
    menu.addMenu("File");
    menu.addItem("New", fire<1>);
    menu.addMenu("Edit");
    menu.addItem("Undo", fire<2>);
    menu.addItem("Cut", nullptr);
    ASSERT_EQ(LGLMenu::menus[0].items.size(), 1u);
    ASSERT_EQ(LGLMenu::menus[1].items.size(), 2u);
    const LGLMenu::tMenuItem& undo = LGLMenu::menus[1].items[0];
    EXPECT_EQ(undo.text, "Undo");
    EXPECT_EQ(undo.callback, &fire<2>);
    EXPECT_TRUE(undo.enabled);
    EXPECT_FALSE(undo.checked);
    EXPECT_EQ(LGLMenu::menus[1].items[1].callback, nullptr);
    LGLMenu::clearMenus();
}

TEST(LGLMenuItems, MenusAreSharedByEveryMenuObject)
{
    LGLMenu::clearMenus();
    LGLMenu first;
    LGLMenu second;
    first.addMenu("File");
    second.addItem("New", fire<1>);
    ASSERT_EQ(LGLMenu::menus.size(), 1u);
    EXPECT_EQ(LGLMenu::menus[0].items.size(), 1u);
    LGLMenu::clearMenus();
}

TEST(LGLMenuItems, AddItemWithoutAMenuWarnsAndAddsNothing)
{
    LGLMenu::clearMenus();
    LGLMenu menu;
    StdoutCapture capture;
    menu.addItem("Orphan [ctrl-o]", fire<1>);
    EXPECT_EQ(capture.take(), "** WARNING LGLMenu::addItem> no menu for the item \"Orphan [ctrl-o]\" (LGLMenu.cpp)\n");
    EXPECT_TRUE(LGLMenu::menus.empty());
}

struct ShortcutCase {
    const char* name;
    const char* caption;
    const char* shortcutText;
    bool special;
    int key;
    int modifiers;
};

void PrintTo(const ShortcutCase& c, std::ostream* os)
{
    *os << c.name;
}

class LGLMenuShortcutParser : public ::testing::TestWithParam<ShortcutCase> {
protected:
    void TearDown() override { LGLMenu::clearMenus(); }
};

TEST_P(LGLMenuShortcutParser, CaptionGivesShortcut)
{
    const ShortcutCase& c = GetParam();
    const LGLMenu::tMenuItem item = parsed(c.caption);
    EXPECT_EQ(item.text, c.caption);
    EXPECT_EQ(item.shortcutText, c.shortcutText);
    EXPECT_EQ(item.specialKey, c.special);
    EXPECT_EQ(static_cast<unsigned char>(item.key), c.key);
    EXPECT_EQ(item.modifiers, c.modifiers);
    EXPECT_TRUE(item.enabled);
    EXPECT_FALSE(item.checked);
    EXPECT_EQ(item.callback, &fire<1>);
}

INSTANTIATE_TEST_SUITE_P(
    Captions, LGLMenuShortcutParser,
    ::testing::Values(
        ShortcutCase{"CtrlS", "Save [ctrl-s]", "ctrl-s", false, 's', kCtrl},
        ShortcutCase{"AltX", "Quit [alt-x]", "alt-x", false, 'x', kAlt},
        ShortcutCase{"ShiftF5", "Redraw [shift-F5]", "shift-F5", true, 5, kShift},
        ShortcutCase{"F1", "Help [F1]", "F1", true, 1, 0},
        ShortcutCase{"F12", "Full screen [F12]", "F12", true, 12, 0},
        ShortcutCase{"F13", "Odd [F13]", "F13", true, 13, 0},
        ShortcutCase{"F200GivesNoKey", "Big [F200]", "F200", true, 0, 0},
        ShortcutCase{"Esc", "Close [esc]", "esc", false, 27, 0},
        ShortcutCase{"Tab", "Next [tab]", "tab", false, 9, 0},
        ShortcutCase{"Enter", "Accept [enter]", "enter", false, 13, 0},
        ShortcutCase{"Space", "Jump [space]", "space", false, 32, 0},
        ShortcutCase{"Delete", "Remove [delete]", "delete", false, 127, 0},
        ShortcutCase{"Insert", "Add [insert]", "insert", true, 108, 0},
        ShortcutCase{"Up", "Raise [up]", "up", true, 101, 0},
        ShortcutCase{"Down", "Lower [down]", "down", true, 103, 0},
        ShortcutCase{"Right", "East [right]", "right", true, 102, 0},
        ShortcutCase{"Left", "West [left]", "left", true, 100, 0},
        ShortcutCase{"CtrlLeft", "Nudge [ctrl-left]", "ctrl-left", true, 100, kCtrl},
        ShortcutCase{"AllModifiers", "All [ctrl-alt-shift-Q]", "ctrl-alt-shift-Q", false, 'q', kShift + kCtrl + kAlt},
        ShortcutCase{"MixedCase", "Save as [Ctrl-Shift-S]", "Ctrl-Shift-S", false, 's', kCtrl + kShift},
        ShortcutCase{"UpperCase", "Loud [ALT-ESC]", "ALT-ESC", false, 27, kAlt},
        ShortcutCase{"LowerCaseF5", "Lower case f [f5]", "f5", true, 5, 0},
        ShortcutCase{"FWithoutNumber", "Not a function key [Fx]", "Fx", false, 'f', 0},
        ShortcutCase{"WordGivesFirstLetter", "Word [Zoom]", "Zoom", false, 'z', 0},
        ShortcutCase{"CtrlDigit", "Digit [ctrl-1]", "ctrl-1", false, '1', kCtrl},
        ShortcutCase{"Punctuation", "Bang [!]", "!", false, '!', 0},
        ShortcutCase{"BlanksAroundWords", "Blanks [ ctrl - s ]", " ctrl - s ", false, 's', kCtrl},
        ShortcutCase{"CtrlMinus", "Zoom out [ctrl--]", "ctrl--", false, '-', kCtrl},
        ShortcutCase{"CtrlPlus", "Zoom in [ctrl-+]", "ctrl-+", false, '+', kCtrl},
        ShortcutCase{"ModifierTwice", "Twice [ctrl-ctrl-s]", "ctrl-ctrl-s", false, 's', kCtrl},
        ShortcutCase{"LastKeyWordCounts", "Two keys [ctrl-s-x]", "ctrl-s-x", false, 'x', kCtrl},
        ShortcutCase{"OnlyAModifier", "Only a modifier [ctrl]", "ctrl", false, 0, kCtrl},
        ShortcutCase{"EmptyBrackets", "Empty []", "", false, 0, 0},
        ShortcutCase{"NoBrackets", "No shortcut", "", false, 0, 0},
        ShortcutCase{"UnclosedBracket", "Unclosed [ctrl-s", "", false, 0, 0},
        ShortcutCase{"LastBracketedPart", "Array[2] [alt-a]", "alt-a", false, 'a', kAlt},
        ShortcutCase{"Separator", "-", "", false, 0, 0},
        ShortcutCase{"EmptyCaption", "", "", false, 0, 0}),
    [](const ::testing::TestParamInfo<ShortcutCase>& info) { return std::string(info.param.name); });

TEST(LGLMenuItems, CaptionShownDropsTheShortcutPartAndTrailingBlanks)
{
    LGLMenu::tMenuItem item{};
    item.text = "Save [ctrl-s]";
    EXPECT_EQ(LGLMenu::captionOf(item), "Save");
    item.text = "Plain";
    EXPECT_EQ(LGLMenu::captionOf(item), "Plain");
    item.text = "  Indented\t[F2]";
    EXPECT_EQ(LGLMenu::captionOf(item), "  Indented");
    item.text = "Unclosed [x";
    EXPECT_EQ(LGLMenu::captionOf(item), "Unclosed [x");
    item.text = "Before [F3] after";
    EXPECT_EQ(LGLMenu::captionOf(item), "Before  after");
    item.text = "[esc]";
    EXPECT_EQ(LGLMenu::captionOf(item), "");
}

// ================================================================ item state

class LGLMenuStateTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        LGLMenu::clearMenus();
        menu.addMenu("File");
        menu.addItem("New", fire<1>);
        menu.addItem("Open", fire<2>);
        menu.addMenu("Edit");
        menu.addItem("Undo", fire<3>);
    }
    void TearDown() override { LGLMenu::clearMenus(); }

    // enabled and checked of every item, in order.
    static std::vector<int> flags()
    {
        std::vector<int> out;
        for (const auto& m : LGLMenu::menus)
            for (const auto& i : m.items)
                out.push_back(i.enabled * 2 + i.checked);
        return out;
    }

    LGLMenu menu;
};

TEST_F(LGLMenuStateTest, EnableMenuItemSetsAndClearsOneItem)
{
    menu.enableMenuItem(0, 1, false);
    EXPECT_EQ(flags(), (std::vector<int>{2, 0, 2}));
    menu.enableMenuItem(1, 0, false);
    EXPECT_EQ(flags(), (std::vector<int>{2, 0, 0}));
    menu.enableMenuItem(0, 1, true);
    EXPECT_EQ(flags(), (std::vector<int>{2, 2, 0}));
}

TEST_F(LGLMenuStateTest, CheckMenuItemSetsAndClearsOneItem)
{
    menu.checkMenuItem(0, 0, true);
    EXPECT_EQ(flags(), (std::vector<int>{3, 2, 2}));
    menu.checkMenuItem(1, 0, true);
    EXPECT_EQ(flags(), (std::vector<int>{3, 2, 3}));
    menu.checkMenuItem(0, 0, false);
    EXPECT_EQ(flags(), (std::vector<int>{2, 2, 3}));
}

TEST_F(LGLMenuStateTest, CheckMenuItemWithAMenuPastTheLastChangesNothing)
{
    menu.checkMenuItem(2, 0, true);
    menu.checkMenuItem(99, 0, true);
    EXPECT_EQ(flags(), (std::vector<int>{2, 2, 2}));
}

TEST_F(LGLMenuStateTest, IndicesPastTheLastItemOrNegativeChangeNothing)
{
    menu.checkMenuItem(0, 2, true);
    menu.checkMenuItem(1, 1, true);
    menu.enableMenuItem(0, 2, false);
    menu.enableMenuItem(2, 0, false);
    menu.checkMenuItem(-1, 0, true);
    menu.checkMenuItem(0, -1, true);
    menu.enableMenuItem(-1, 0, false);
    menu.enableMenuItem(0, -1, false);
    EXPECT_EQ(flags(), (std::vector<int>{2, 2, 2}));
}

// ================================================================ shortcuts with a given modifier mask

class LGLMenuShortcutTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        LGLMenu::clearMenus();
        fired().clear();
    }
    void TearDown() override
    {
        LGLMenu::clearMenus();
        fired().clear();
    }
    LGLMenu menu;
};

TEST_F(LGLMenuShortcutTest, EveryMatchingItemFiresInMenuAndItemOrder)
{
    menu.addMenu("File");
    menu.addItem("Save [ctrl-s]", fire<1>);
    menu.addItem("Other [ctrl-o]", fire<2>);
    menu.addItem("Save too [ctrl-s]", fire<3>);
    menu.addMenu("Edit");
    menu.addItem("Save again [Ctrl-S]", fire<4>);
    menu.handleStandardKeys(19, kCtrl);
    EXPECT_EQ(fired(), (std::vector<int>{1, 3, 4}));
}

TEST_F(LGLMenuShortcutTest, CtrlTurnsEveryControlCodeBackIntoItsLetter)
{
    menu.addMenu("Letters");
    static void (*const functions[26])() = {
        fire<'a'>, fire<'b'>, fire<'c'>, fire<'d'>, fire<'e'>, fire<'f'>, fire<'g'>, fire<'h'>, fire<'i'>,
        fire<'j'>, fire<'k'>, fire<'l'>, fire<'m'>, fire<'n'>, fire<'o'>, fire<'p'>, fire<'q'>, fire<'r'>,
        fire<'s'>, fire<'t'>, fire<'u'>, fire<'v'>, fire<'w'>, fire<'x'>, fire<'y'>, fire<'z'>};
    for (int i = 0; i < 26; ++i)
        menu.addItem(std::string("Letter [ctrl-") + static_cast<char>('a' + i) + "]", functions[i]);
    for (int code = 1; code <= 26; ++code) {
        fired().clear();
        menu.handleStandardKeys(static_cast<unsigned char>(code), kCtrl);
        EXPECT_EQ(fired(), (std::vector<int>{code + 96})) << code;
    }
}

TEST_F(LGLMenuShortcutTest, ControlCodeWithoutCtrlIsNotALetter)
{
    menu.addMenu("File");
    menu.addItem("Save [ctrl-s]", fire<1>);
    menu.addItem("Plain [s]", fire<2>);
    menu.handleStandardKeys(19, 0);
    menu.handleStandardKeys(19, kAlt);
    EXPECT_TRUE(fired().empty());
    menu.handleStandardKeys('s', 0);
    EXPECT_EQ(fired(), (std::vector<int>{2}));
}

TEST_F(LGLMenuShortcutTest, CtrlWithShiftComparesTheWholeMask)
{
    menu.addMenu("File");
    menu.addItem("Save [ctrl-s]", fire<1>);
    menu.addItem("Save as [ctrl-shift-s]", fire<2>);
    menu.handleStandardKeys(19, kCtrl + kShift);
    EXPECT_EQ(fired(), (std::vector<int>{2}));
}

TEST_F(LGLMenuShortcutTest, ShiftAloneIsComparedAsNoModifier)
{
    menu.addMenu("File");
    menu.addItem("Bang [!]", fire<1>);
    menu.addItem("Shift letter [shift-a]", fire<2>);
    menu.addItem("Shift bang [shift-!]", fire<3>);
    menu.handleStandardKeys('!', kShift);
    EXPECT_EQ(fired(), (std::vector<int>{1}));
    fired().clear();
    menu.handleStandardKeys('A', kShift);
    menu.handleStandardKeys('a', kShift);
    EXPECT_TRUE(fired().empty());
}

TEST_F(LGLMenuShortcutTest, ModifierMasksMustBeEqual)
{
    menu.addMenu("File");
    menu.addItem("Plain [x]", fire<1>);
    menu.addItem("Alt [alt-x]", fire<2>);
    menu.addItem("Ctrl alt [ctrl-alt-x]", fire<3>);
    menu.handleStandardKeys('x', kAlt);
    EXPECT_EQ(fired(), (std::vector<int>{2}));
    fired().clear();
    menu.handleStandardKeys('x', 0);
    EXPECT_EQ(fired(), (std::vector<int>{1}));
    fired().clear();
    menu.handleStandardKeys(24, kCtrl + kAlt);
    EXPECT_EQ(fired(), (std::vector<int>{3}));
}

TEST_F(LGLMenuShortcutTest, DisabledItemDoesNotFireFromItsShortcut)
{
    menu.addMenu("File");
    menu.addItem("Save [ctrl-s]", fire<1>);
    menu.addItem("Help [F1]", fire<2>);
    menu.enableMenuItem(0, 0, false);
    menu.enableMenuItem(0, 1, false);
    menu.handleStandardKeys(19, kCtrl);
    menu.handleSpecialKeys(GLUT_KEY_F1, 0);
    EXPECT_TRUE(fired().empty());
    menu.enableMenuItem(0, 0, true);
    menu.handleStandardKeys(19, kCtrl);
    EXPECT_EQ(fired(), (std::vector<int>{1}));
}

TEST_F(LGLMenuShortcutTest, NothingFiresWhileTheMenuIsDisabled)
{
    menu.addMenu("File");
    menu.addItem("Save [ctrl-s]", fire<1>);
    menu.addItem("Help [F1]", fire<2>);
    menu.enabled = false;
    menu.handleStandardKeys(19, kCtrl);
    menu.handleSpecialKeys(GLUT_KEY_F1, 0);
    EXPECT_TRUE(fired().empty());
}

TEST_F(LGLMenuShortcutTest, ShortcutsStillFireWhileTheMenuIsHidden)
{
    menu.addMenu("File");
    menu.addItem("Save [ctrl-s]", fire<1>);
    menu.visible = false;
    menu.handleStandardKeys(19, kCtrl);
    EXPECT_EQ(fired(), (std::vector<int>{1}));
}

TEST_F(LGLMenuShortcutTest, CheckedItemsFireLikeOthers)
{
    menu.addMenu("View");
    menu.addItem("Grid [g]", fire<1>);
    menu.checkMenuItem(0, 0, true);
    menu.handleStandardKeys('g', 0);
    EXPECT_EQ(fired(), (std::vector<int>{1}));
}


TEST_F(LGLMenuShortcutTest, FunctionKeyItemFiresOnSpecialKeyFiveNotOnTheCharacterFive)
{
    menu.addMenu("View");
    menu.addItem("Redraw [F5]", fire<1>);
    menu.addItem("Five [5]", fire<2>);
    menu.handleStandardKeys('5', 0);
    EXPECT_EQ(fired(), (std::vector<int>{2}));
    fired().clear();
    menu.handleStandardKeys(5, 0);  // the control code 5 is no F5 either
    EXPECT_TRUE(fired().empty());
    menu.handleSpecialKeys(GLUT_KEY_F5, 0);
    EXPECT_EQ(fired(), (std::vector<int>{1}));
    fired().clear();
    menu.handleSpecialKeys('5', 0);
    EXPECT_TRUE(fired().empty());
}

TEST_F(LGLMenuShortcutTest, SpecialKeysCompareTheWholeMaskShiftIncluded)
{
    menu.addMenu("View");
    menu.addItem("Redraw [F5]", fire<1>);
    menu.addItem("Reload [shift-F5]", fire<2>);
    menu.addItem("Reset [ctrl-shift-F5]", fire<3>);
    menu.handleSpecialKeys(GLUT_KEY_F5, kShift);
    EXPECT_EQ(fired(), (std::vector<int>{2}));
    fired().clear();
    menu.handleSpecialKeys(GLUT_KEY_F5, 0);
    EXPECT_EQ(fired(), (std::vector<int>{1}));
    fired().clear();
    menu.handleSpecialKeys(GLUT_KEY_F5, kShift + kCtrl);
    EXPECT_EQ(fired(), (std::vector<int>{3}));
}

TEST_F(LGLMenuShortcutTest, NamedSpecialKeysFireFromTheSpecialKeyHandler)
{
    menu.addMenu("Move");
    menu.addItem("Add [insert]", fire<1>);
    menu.addItem("Raise [up]", fire<2>);
    menu.addItem("Lower [down]", fire<3>);
    menu.addItem("East [right]", fire<4>);
    menu.addItem("West [left]", fire<5>);
    menu.addItem("d [d]", fire<6>);  // 'd' is 100, GLUT's left arrow
    for (int key : {GLUT_KEY_INSERT, GLUT_KEY_UP, GLUT_KEY_DOWN, GLUT_KEY_RIGHT, GLUT_KEY_LEFT})
        menu.handleSpecialKeys(key, 0);
    EXPECT_EQ(fired(), (std::vector<int>{1, 2, 3, 4, 5}));
    fired().clear();
    menu.handleStandardKeys(100, 0);
    EXPECT_EQ(fired(), (std::vector<int>{6}));
}

TEST_F(LGLMenuShortcutTest, NamedAsciiKeysFireFromTheKeyboardHandler)
{
    menu.addMenu("Keys");
    menu.addItem("Close [esc]", fire<1>);
    menu.addItem("Next [tab]", fire<2>);
    menu.addItem("Accept [enter]", fire<3>);
    menu.addItem("Jump [space]", fire<4>);
    menu.addItem("Remove [delete]", fire<5>);
    for (unsigned char key : {27, 9, 13, 32, 127})
        menu.handleStandardKeys(key, 0);
    EXPECT_EQ(fired(), (std::vector<int>{1, 2, 3, 4, 5}));
    fired().clear();
    menu.handleStandardKeys(9, kCtrl);  // ctrl+tab reads as ctrl+i
    EXPECT_TRUE(fired().empty());
}

TEST_F(LGLMenuShortcutTest, ItemsWithoutFunctionOrShortcutAreSkipped)
{
    menu.addMenu("File");
    menu.addItem("Nothing to run [ctrl-s]", nullptr);
    menu.addItem("No shortcut", fire<1>);
    menu.addItem("Only ctrl [ctrl]", fire<2>);
    menu.addItem("Save [ctrl-s]", fire<3>);
    menu.handleStandardKeys(19, kCtrl);
    menu.handleStandardKeys(0, 0);
    menu.handleStandardKeys(0, kCtrl);
    menu.handleSpecialKeys(0, 0);
    EXPECT_EQ(fired(), (std::vector<int>{3}));
}

namespace {
void addItemWhileFiring()
{
    fired().push_back(100);
    LGLMenu other;
    for (int i = 0; i < 50; ++i)
        other.addItem("Added [ctrl-s]", fire<101>);
    other.addMenu("Added menu");
}
}  // namespace

TEST_F(LGLMenuShortcutTest, FunctionThatAddsItemsDuringTheWalkIsSafe)
{
    menu.addMenu("File");
    menu.addItem("Grow [ctrl-s]", addItemWhileFiring);
    menu.handleStandardKeys(19, kCtrl);
    // The items added during the walk match too and are reached by it.
    ASSERT_GE(fired().size(), 1u);
    EXPECT_EQ(fired()[0], 100);
    EXPECT_EQ(fired().size(), 51u);
    EXPECT_EQ(LGLMenu::menus.size(), 2u);
    EXPECT_EQ(LGLMenu::menus[0].items.size(), 51u);
}

TEST_F(LGLMenuShortcutTest, NoMenusMeansNothingHappens)
{
    menu.handleStandardKeys('s', 0);
    menu.handleSpecialKeys(GLUT_KEY_F5, 0);
    EXPECT_TRUE(fired().empty());
    EXPECT_TRUE(LGLMenu::menus.empty());
}

// ================================================================ layout

class LGLMenuLayoutTest : public MenuTest {
protected:
    void SetUp() override
    {
        MenuTest::SetUp();
        menu.initialize("", kFontSize, kBarFactor);
        addSampleMenus(menu);
        expected = expectedLayout(menu);
    }
    LGLMenu menu;
    Expected expected{};
};

TEST_F(LGLMenuLayoutTest, TitlesFollowOneAnotherFromTheLeftPadding)
{
    ASSERT_EQ(LGLMenu::menuRects.size(), 3u);
    for (int k = 0; k < 3; ++k) {
        const tRect& e = expected.title[k];
        EXPECT_RECT(LGLMenu::menuRects[k], e.left, e.top, e.right, e.bottom);
        EXPECT_EQ(LGLMenu::menus[k].titleX, e.left);
        EXPECT_EQ(LGLMenu::menus[k].titleWidth, e.right - e.left);
    }
    EXPECT_EQ(LGLMenu::menuRects[0].left, 6);
    EXPECT_GT(LGLMenu::menuRects[0].right - LGLMenu::menuRects[0].left, 16);  // the title has a width
}

TEST_F(LGLMenuLayoutTest, DropDownHangsBelowItsTitleOneBarHeightPerItem)
{
    for (int k = 0; k < 3; ++k) {
        const tRect& e = expected.drop[k];
        EXPECT_RECT(LGLMenu::menus[k].dropRect, e.left, e.top, e.right, e.bottom);
    }
    EXPECT_EQ(LGLMenu::menus[0].shortcutWidth, std::max(widthOf(menu, "ctrl-n"), widthOf(menu, "alt-x")));
    EXPECT_EQ(LGLMenu::menus[2].shortcutWidth, 0);
}

TEST_F(LGLMenuLayoutTest, LayoutFollowsLaterItemsAndTheObjectsFont)
{
    menu.addMenu("Tools");
    menu.addItem("A much longer caption than any other [ctrl-alt-shift-F12]", fire<1>);
    const LGLMenu::tMenu& tools = LGLMenu::menus[3];
    const int expectedWidth = 10 + kItemPadLeft + widthOf(menu, "A much longer caption than any other") +
                              kItemPadRight + widthOf(menu, "ctrl-alt-shift-F12") + kItemPadRight;
    EXPECT_EQ(tools.dropRect.right - tools.dropRect.left, expectedWidth);
    EXPECT_EQ(tools.dropRect.left, expected.title[2].right);

    // A second menu object with a larger font lays the same menus out for its own font.
    LGLMenu large;
    large.initialize("", 26, 1.5);
    large.handle();
    EXPECT_EQ(LGLMenu::menuRects[0].left, 13);
    EXPECT_EQ(LGLMenu::menuRects[0].bottom, 39);
    EXPECT_EQ(LGLMenu::menus[0].dropRect.top, 39);
    menu.handle();
    EXPECT_RECT(LGLMenu::menuRects[0], expected.title[0].left, 0, expected.title[0].right, kBarHeight);
}

TEST_F(LGLMenuLayoutTest, HandleFollowsTheWindowWidth)
{
    menu.barRect = {1, 2, 3, 4};
    menu.handle();
    EXPECT_RECT(menu.barRect, 0, 0, kWindowWidth, kBarHeight);
}

// ================================================================ mouse

class LGLMenuMouseTest : public LGLMenuLayoutTest {
protected:
    void move(int x, int y) { menu.handleMousePassiveMotion(x, y); }
    bool click(int x, int y, int button = GLUT_LEFT_BUTTON, bool pressed = true)
    {
        bool consumed = !pressed;  // either way, the handler must set it
        menu.handleMenuMouseClick(x, y, button, pressed, consumed);
        return consumed;
    }
    int titleMiddle(int k) const { return (expected.title[k].left + expected.title[k].right) / 2; }
    int dropMiddle(int k) const { return (expected.drop[k].left + expected.drop[k].right) / 2; }
    void openFile()
    {
        ASSERT_TRUE(click(titleMiddle(0), 5));
        ASSERT_TRUE(menu.isOpen);
        ASSERT_EQ(menu.openMenu, 0);
    }
    void expectClosed()
    {
        EXPECT_FALSE(menu.isOpen);
        EXPECT_EQ(menu.openMenu, -1);
        EXPECT_EQ(menu.hoverMenu, -1);
    }
};

TEST_F(LGLMenuMouseTest, HoveringATitleMarksIt)
{
    move(titleMiddle(1), 5);
    EXPECT_EQ(menu.hoverMenu, 1);
    EXPECT_FALSE(menu.isOpen);
    EXPECT_EQ(menu.openMenu, -1);
    move(titleMiddle(0), 10);
    EXPECT_EQ(menu.hoverMenu, 0);
}

TEST_F(LGLMenuMouseTest, TitleAreasIncludeTheirEdges)
{
    const tRect& file = expected.title[0];
    const tRect& view = expected.title[2];
    move(file.left, 0);
    EXPECT_EQ(menu.hoverMenu, 0);
    move(file.left, kBarHeight);
    EXPECT_EQ(menu.hoverMenu, 0);
    move(file.right, 3);  // shared with Edit's left edge: the first menu wins
    EXPECT_EQ(menu.hoverMenu, 0);
    move(file.right + 1, 3);
    EXPECT_EQ(menu.hoverMenu, 1);
    move(view.right, 3);
    EXPECT_EQ(menu.hoverMenu, 2);
    move(view.right + 1, 3);
    EXPECT_EQ(menu.hoverMenu, -1);
    move(file.left - 1, 3);
    EXPECT_EQ(menu.hoverMenu, -1);
}

TEST_F(LGLMenuMouseTest, MovingBelowTheBarWithNothingOpenClearsTheHover)
{
    move(titleMiddle(0), 5);
    ASSERT_EQ(menu.hoverMenu, 0);
    move(titleMiddle(0), kBarHeight + 1);
    EXPECT_EQ(menu.hoverMenu, -1);
    EXPECT_EQ(LGLMenu::menus[0].hoverItem, -1);
}

TEST_F(LGLMenuMouseTest, ClickOnATitleOpensItsMenu)
{
    move(titleMiddle(1), 5);
    EXPECT_TRUE(click(titleMiddle(1), 5));
    EXPECT_TRUE(menu.isOpen);
    EXPECT_EQ(menu.openMenu, 1);
    EXPECT_EQ(menu.hoverMenu, 1);
    // A click on the title of the open menu keeps it open.
    EXPECT_TRUE(click(titleMiddle(1), 5));
    EXPECT_TRUE(menu.isOpen);
    EXPECT_EQ(menu.openMenu, 1);
}

TEST_F(LGLMenuMouseTest, MovingAlongTheBarSwitchesTheOpenMenu)
{
    openFile();
    move(titleMiddle(1), 4);
    EXPECT_EQ(menu.openMenu, 1);
    EXPECT_EQ(menu.hoverMenu, 1);
    EXPECT_TRUE(menu.isOpen);
    // Leaving the bar downwards keeps the menu open and its title marked.
    move(titleMiddle(1), 200);
    EXPECT_EQ(menu.openMenu, 1);
    EXPECT_EQ(menu.hoverMenu, 1);
    EXPECT_TRUE(menu.isOpen);
}

TEST_F(LGLMenuMouseTest, HoverItemFollowsTheRowsOneBarHeightApart)
{
    openFile();
    const tRect& drop = expected.drop[0];
    for (int j = 0; j < 4; ++j) {
        const int top = drop.top + kBarHeight * j;
        move(dropMiddle(0), top + kBarHeight / 2);
        EXPECT_EQ(LGLMenu::menus[0].hoverItem, j);
        move(drop.left, top + 1);
        EXPECT_EQ(LGLMenu::menus[0].hoverItem, j) << "first row of item " << j;
        move(drop.right, top + kBarHeight - 1);
        EXPECT_EQ(LGLMenu::menus[0].hoverItem, j) << "last row of item " << j;
        if (j > 0) {
            move(dropMiddle(0), top);
            EXPECT_EQ(LGLMenu::menus[0].hoverItem, -1) << "row between items, above item " << j;
        }
    }
    move(drop.left - 1, rowMiddle(0));
    EXPECT_EQ(LGLMenu::menus[0].hoverItem, -1);
    move(drop.right + 1, rowMiddle(0));
    EXPECT_EQ(LGLMenu::menus[0].hoverItem, -1);
    move(dropMiddle(0), drop.bottom + 3);
    EXPECT_EQ(LGLMenu::menus[0].hoverItem, -1);
    EXPECT_TRUE(menu.isOpen);
}

TEST_F(LGLMenuMouseTest, HoveringItemsOfAClosedMenuDoesNothing)
{
    move(dropMiddle(0), rowMiddle(0));
    EXPECT_EQ(LGLMenu::menus[0].hoverItem, -1);
    EXPECT_EQ(menu.hoverMenu, -1);
}

TEST_F(LGLMenuMouseTest, ClickOnAnItemRunsItsFunctionAndCloses)
{
    openFile();
    move(dropMiddle(0), rowMiddle(2));
    EXPECT_TRUE(click(dropMiddle(0), rowMiddle(2)));
    EXPECT_EQ(fired(), (std::vector<int>{3}));
    EXPECT_EQ(LGLMenu::menus[0].hoverItem, -1);
    expectClosed();
}

TEST_F(LGLMenuMouseTest, ClickOnAnItemWithoutPriorMotionActsOnTheItemUnderIt)
{
    openFile();
    EXPECT_TRUE(click(dropMiddle(0), rowMiddle(3)));
    EXPECT_EQ(fired(), (std::vector<int>{4}));
    expectClosed();
}

TEST_F(LGLMenuMouseTest, ClickOnAnItemWithoutFunctionClosesTheMenu)
{
    LGLMenu::menus[0].items[0].callback = nullptr;
    openFile();
    EXPECT_TRUE(click(dropMiddle(0), rowMiddle(0)));
    EXPECT_TRUE(fired().empty());
    expectClosed();
}

TEST_F(LGLMenuMouseTest, ClickOnADisabledItemRunsNothingAndKeepsTheMenuOpen)
{
    move(titleMiddle(1), 5);
    ASSERT_TRUE(click(titleMiddle(1), 5));
    move(dropMiddle(1), rowMiddle(1));
    EXPECT_EQ(LGLMenu::menus[1].hoverItem, 1);
    EXPECT_TRUE(click(dropMiddle(1), rowMiddle(1)));
    EXPECT_TRUE(fired().empty());
    EXPECT_TRUE(menu.isOpen);
    EXPECT_EQ(menu.openMenu, 1);
    // Enabled again, the same click runs it.
    menu.enableMenuItem(1, 1, true);
    EXPECT_TRUE(click(dropMiddle(1), rowMiddle(1)));
    EXPECT_EQ(fired(), (std::vector<int>{12}));
    EXPECT_FALSE(menu.isOpen);
}

TEST_F(LGLMenuMouseTest, ClickOnASeparatorRunsNothingAndKeepsTheMenuOpen)
{
    LGLMenu::menus[0].items[1].callback = fire<2>;
    openFile();
    EXPECT_TRUE(click(dropMiddle(0), rowMiddle(1)));
    EXPECT_TRUE(fired().empty());
    EXPECT_TRUE(menu.isOpen);
}

TEST_F(LGLMenuMouseTest, ClickOutsideClosesWithoutConsuming)
{
    openFile();
    move(dropMiddle(0), rowMiddle(0));
    EXPECT_FALSE(click(400, 300));
    EXPECT_TRUE(fired().empty());
    expectClosed();
    // Closed, an outside click stays unconsumed and changes nothing.
    EXPECT_FALSE(click(400, 300));
    expectClosed();
}

TEST_F(LGLMenuMouseTest, ClickOnTheBarBesideTheTitlesClosesWithoutConsuming)
{
    openFile();
    EXPECT_FALSE(click(expected.title[2].right + 20, 5));
    expectClosed();
}

TEST_F(LGLMenuMouseTest, ClickBetweenTwoItemsClosesWithoutConsuming)
{
    openFile();
    EXPECT_FALSE(click(dropMiddle(0), expected.drop[0].top + kBarHeight));
    EXPECT_TRUE(fired().empty());
    expectClosed();
}

TEST_F(LGLMenuMouseTest, ClickOnATitleNeverFiresAnItemLeftHighlighted)
{
    openFile();
    move(dropMiddle(0), rowMiddle(0));
    ASSERT_EQ(LGLMenu::menus[0].hoverItem, 0);
    // Straight to the title of another menu, with no motion event on the way.
    EXPECT_TRUE(click(titleMiddle(1), 5));
    EXPECT_TRUE(fired().empty());
    EXPECT_EQ(menu.openMenu, 1);
    EXPECT_TRUE(menu.isOpen);
}

TEST_F(LGLMenuMouseTest, AMenuOpensWithNoItemHighlighted)
{
    openFile();
    move(dropMiddle(0), rowMiddle(2));
    ASSERT_EQ(LGLMenu::menus[0].hoverItem, 2);
    move(titleMiddle(1), 5);  // switch to Edit along the bar
    EXPECT_EQ(LGLMenu::menus[1].hoverItem, -1);
    move(titleMiddle(0), 5);  // and back
    EXPECT_EQ(LGLMenu::menus[0].hoverItem, -1);
    LGLMenu::menus[1].hoverItem = 2;
    EXPECT_FALSE(click(500, 400));
    EXPECT_TRUE(click(titleMiddle(1), 5));
    EXPECT_EQ(LGLMenu::menus[1].hoverItem, -1);
}

TEST_F(LGLMenuMouseTest, OnlyALeftButtonPressActs)
{
    openFile();
    move(dropMiddle(0), rowMiddle(0));
    EXPECT_FALSE(click(dropMiddle(0), rowMiddle(0), GLUT_LEFT_BUTTON, false));
    EXPECT_FALSE(click(dropMiddle(0), rowMiddle(0), GLUT_RIGHT_BUTTON, true));
    EXPECT_FALSE(click(dropMiddle(0), rowMiddle(0), GLUT_MIDDLE_BUTTON, true));
    EXPECT_FALSE(click(dropMiddle(0), rowMiddle(0), 3, true));  // wheel
    EXPECT_FALSE(click(400, 300, GLUT_RIGHT_BUTTON, true));
    EXPECT_TRUE(fired().empty());
    EXPECT_TRUE(menu.isOpen);
    EXPECT_EQ(LGLMenu::menus[0].hoverItem, 0);
    EXPECT_FALSE(click(titleMiddle(1), 5, GLUT_RIGHT_BUTTON, true));
    EXPECT_EQ(menu.openMenu, 0);
}

TEST_F(LGLMenuMouseTest, MouseIsIgnoredWhileDisabled)
{
    menu.enabled = false;
    move(titleMiddle(0), 5);
    EXPECT_EQ(menu.hoverMenu, -1);
    EXPECT_FALSE(click(titleMiddle(0), 5));
    EXPECT_FALSE(menu.isOpen);
    menu.enabled = true;
    openFile();
    menu.enabled = false;
    EXPECT_FALSE(click(dropMiddle(0), rowMiddle(0)));
    EXPECT_FALSE(click(400, 300));
    EXPECT_TRUE(fired().empty());
    EXPECT_TRUE(menu.isOpen);
}

TEST_F(LGLMenuMouseTest, MouseIsIgnoredWhileHidden)
{
    menu.visible = false;
    move(titleMiddle(0), 5);
    EXPECT_EQ(menu.hoverMenu, -1);
    EXPECT_FALSE(click(titleMiddle(0), 5));
    EXPECT_FALSE(menu.isOpen);
    menu.visible = true;
    openFile();
    move(dropMiddle(0), rowMiddle(0));
    menu.visible = false;
    move(dropMiddle(0), rowMiddle(2));
    EXPECT_EQ(LGLMenu::menus[0].hoverItem, 0);
    EXPECT_FALSE(click(dropMiddle(0), rowMiddle(0)));
    EXPECT_TRUE(fired().empty());
    EXPECT_TRUE(menu.isOpen);
}

TEST_F(LGLMenuMouseTest, EmptyMenuOpensAndHasNoItems)
{
    EXPECT_TRUE(click(titleMiddle(2), 5));
    EXPECT_EQ(menu.openMenu, 2);
    move(titleMiddle(2), kBarHeight + 5);
    EXPECT_EQ(LGLMenu::menus[2].hoverItem, -1);
    EXPECT_FALSE(click(titleMiddle(2), kBarHeight + 5));
    expectClosed();
}

namespace {
LGLMenu* reopeningMenu = nullptr;
void reopenFirstMenu()
{
    fired().push_back(50);
    bool consumed = false;
    const tRect title = LGLMenu::menuRects[0];
    reopeningMenu->handleMenuMouseClick((title.left + title.right) / 2, 5, GLUT_LEFT_BUTTON, true, consumed);
}
}  // namespace

TEST_F(LGLMenuMouseTest, FunctionRunsAfterTheMenuClosedAndMayOpenItAgain)
{
    LGLMenu::menus[0].items[2].callback = reopenFirstMenu;
    reopeningMenu = &menu;
    openFile();
    EXPECT_TRUE(click(dropMiddle(0), rowMiddle(2)));
    EXPECT_EQ(fired(), (std::vector<int>{50}));
    EXPECT_TRUE(menu.isOpen);
    EXPECT_EQ(menu.openMenu, 0);
    reopeningMenu = nullptr;
}
