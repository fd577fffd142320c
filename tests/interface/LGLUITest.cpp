// LGLUITest.cpp -- the LGLUI panel driven as a game drives it: defaults, initialisation and layout,
// mouse focus and the hot-area search, keys, per-frame handling (fade-in, auto-repeat, row
// navigation, dragging with the real cursor), value access, the row limit and the panel's drawing.
#include <ostrum_gl/interface/LGLUI.h>
#include <ostrum_gl/platform/LGLPlatform.h>

#include "LGLUITestHelpers.h"

#include <GL/freeglut.h>

#include <cmath>
#include <limits>

using namespace ui_test;
using font_test::sumOfWidths;
using ostrum_test::recordFeedback;
using ostrum_test::StdoutCapture;

namespace {

std::vector<std::string> threeModes()
{
    return {"Low", "Medium", "High"};
}

// Rows: 0 number spinner, 1 list spinner, 2 separator, 3 edit text, 4 blank space, 5 button.
void addStandardRows(LGLUI& ui)
{
    std::vector<std::string> modes = threeModes();
    ui.addNumberSpinner("Speed", 0, 100, 1, 10);
    ui.addListSpinner("Mode", modes, 0);
    ui.addSeparator();
    ui.addEditText("Name", "abc", 80);
    ui.addBlankSpace();
    ui.addButton("Apply");
}

int expectedHeight(const LGLUI& ui)
{
    return ui.fontSize + (ui.count - 1) * ui.rowHeight + ui.padding.top + ui.padding.bottom + ui.titleHeight;
}

}  // namespace

// ================================================================ defaults

TEST(LGLUIDefaults, ConstructorSetsTheDefaults)
{
    auto ui = std::make_unique<LGLUI>();
    EXPECT_TRUE(ui->visible);
    EXPECT_FALSE(ui->focused);
    EXPECT_FALSE(ui->fadeIn);
    EXPECT_EQ(ui->fadeStart, -1);
    EXPECT_DOUBLE_EQ(ui->fade, 1.0);
    EXPECT_DOUBLE_EQ(ui->paneColor.r, 0.9);
    EXPECT_DOUBLE_EQ(ui->paneColor.g, 0.9);
    EXPECT_DOUBLE_EQ(ui->paneColor.b, 0.9);
    EXPECT_DOUBLE_EQ(ui->paneColor.a, 0.8);
    EXPECT_DOUBLE_EQ(ui->fieldColor.r, 1.0);
    EXPECT_DOUBLE_EQ(ui->fieldColor.a, 0.8);
    EXPECT_DOUBLE_EQ(ui->textColor.r, 0.0);
    EXPECT_DOUBLE_EQ(ui->textColor.g, 0.0);
    EXPECT_DOUBLE_EQ(ui->textColor.b, 0.0);
    EXPECT_DOUBLE_EQ(ui->textColor.a, 1.0);
    EXPECT_EQ(ui->hotId, -1);
    EXPECT_EQ(ui->lastHotId, -2);
    EXPECT_EQ(ui->repeatDelay, 0);
    EXPECT_EQ(ui->x, 10);
    EXPECT_EQ(ui->y, 10);
    EXPECT_EQ(ui->fontSize, 16);
    EXPECT_EQ(ui->rowHeight, 16);
    EXPECT_EQ(ui->titleHeight, 16);
    EXPECT_FALSE(ui->dragEnabled);
    EXPECT_EQ(ui->count, 0);
    EXPECT_EQ(ui->standardKey, 0);
    EXPECT_EQ(ui->specialKey, 0);
    for (const LGLUI::tElement& e : ui->elements) {
        EXPECT_EQ(e.kind, LGLUI::KIND_EMPTY);
        EXPECT_TRUE(e.label.empty());
        EXPECT_TRUE(e.items.empty());
        EXPECT_TRUE(e.text.empty());
        EXPECT_EQ(e.numHotRects, 0);
    }
}

// ================================================================ initialisation and layout

TEST_F(UITest, InitializeStoresPositionAndSizeAndBuildsAnArialFontOfThatHeight)
{
    auto ui = makePanel(33, 44, 16);
    EXPECT_EQ(ui->x, 33);
    EXPECT_EQ(ui->y, 44);
    EXPECT_EQ(ui->fontSize, 16);
    ASSERT_EQ(ui->font.numFonts, 1);
    EXPECT_EQ(ui->font.fonts[0].height, 16);
    LGLFont arial;
    arial.create(nullptr, "Arial", 16, 0, 0);
    for (int c = 32; c < 127; ++c)
        EXPECT_EQ(ui->font.fonts[0].widths[c], arial.fonts[0].widths[c]) << "character " << c;
}

TEST_F(UITest, WithRowFactorZeroAndFontSize16RowsAre24PixelsApart)
{
    auto ui = makePanel(10, 10, 16, 0.0);
    EXPECT_EQ(ui->rowHeight, 24);
    ui->addButton("One");
    ui->addButton("Two");
    EXPECT_EQ(ui->rowTop(1) - ui->rowTop(0), 24);
    // The drawn button faces lie one row apart.
    const auto items = recordFeedback([&] { ui->render(); });
    const Box first = buttonFaceOf(*ui, 0);
    const Box second = buttonFaceOf(*ui, 1);
    EXPECT_EQ(second.top - first.top, 24);
    const auto faces = rectsOfColour(items, 0.95, 0.95, 0.95, 0.8);  // the current row's face
    ASSERT_EQ(faces.size(), 1u);
    EXPECT_TRUE(sameBox(faces[0], first));
    const auto others = rectsOfColour(items, 0.81, 0.81, 0.81, 0.8);  // 90% of the pane colour
    ASSERT_EQ(others.size(), 1u);
    EXPECT_TRUE(sameBox(others[0], second));
}

TEST_F(UITest, WithRowFactor1Point2AndFontSize16RowsAre19PixelsApart)
{
    auto ui = makePanel(10, 10, 16, 1.2);
    EXPECT_EQ(ui->rowHeight, 19);
    ui->addButton("One");
    ui->addButton("Two");
    const auto items = recordFeedback([&] { ui->render(); });
    const auto first = rectsOfColour(items, 0.95, 0.95, 0.95, 0.8);
    const auto second = rectsOfColour(items, 0.81, 0.81, 0.81, 0.8);
    ASSERT_EQ(first.size(), 1u);
    ASSERT_EQ(second.size(), 1u);
    EXPECT_EQ(second[0].top - first[0].top, 19);
}

TEST_F(UITest, RowFactorNotANumberUsesOneAndAHalfFontSizesRoundedHalfAwayFromZero)
{
    auto nan = makePanel(10, 10, 16, std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(nan->rowHeight, 24);
    auto odd = makePanel(10, 10, 15, 0.0);
    EXPECT_EQ(odd->rowHeight, 23);  // 22.5 rounds up
    auto truncated = makePanel(10, 10, 15, 1.3);
    EXPECT_EQ(truncated->rowHeight, 19);  // 19.5 truncates
}

TEST_F(UITest, InitializeSetsThePaddingsFromFontSizeAndRowHeight)
{
    auto ui = makePanel(10, 10, 18, 1.3);  // row height trunc(23.4) = 23
    ASSERT_EQ(ui->rowHeight, 23);
    EXPECT_EQ(ui->padding.left, 9);
    EXPECT_EQ(ui->padding.top, 11);
    EXPECT_EQ(ui->padding.right, 9);
    EXPECT_EQ(ui->padding.bottom, 11);
    EXPECT_EQ(ui->fieldPadding.left, 4);
    EXPECT_EQ(ui->fieldPadding.top, 2);
    EXPECT_EQ(ui->fieldPadding.right, 4);
    EXPECT_EQ(ui->fieldPadding.bottom, 2);
}

TEST_F(UITest, InitializeComputesTheHeightWithTheTitleHeightHeldBeforeItSetsIt16)
{
    auto ui = std::make_unique<LGLUI>();
    ui->titleHeight = 30;
    ui->initialize(10, 10, 16, 0.0, true);
    // No rows yet: 16 + (0 - 1) x 24 + 12 + 12 + 30.
    EXPECT_EQ(ui->height, 16 - 24 + 12 + 12 + 30);
    EXPECT_EQ(ui->titleHeight, 16);
    EXPECT_TRUE(ui->userFlag);
}

TEST_F(UITest, InitializeSetsTheTextColourOnTheRasterPosition)
{
    auto ui = std::make_unique<LGLUI>();
    ui->textColor = {0.2, 0.4, 0.6, 1.0};
    // The pixel projection that the font's colour shortcuts expect, and a raster position inside it.
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(0, 640, 480, 0, -1, 1);
    glMatrixMode(GL_MODELVIEW);
    glColor4f(1, 1, 1, 1);
    glRasterPos2i(100, 100);
    ui->initialize(10, 10, 16, 0.0, false);
    GLfloat colour[4];
    glGetFloatv(GL_CURRENT_COLOR, colour);
    EXPECT_NEAR(colour[0], 0.2, 1e-6);
    EXPECT_NEAR(colour[1], 0.4, 1e-6);
    EXPECT_NEAR(colour[2], 0.6, 1e-6);
    glGetFloatv(GL_CURRENT_RASTER_COLOR, colour);
    EXPECT_NEAR(colour[0], 0.2, 1e-6);
    EXPECT_NEAR(colour[1], 0.4, 1e-6);
    EXPECT_NEAR(colour[2], 0.6, 1e-6);
}

TEST_F(UITest, InitializeEmptiesTheHotRectanglesOfAllFiftyRecords)
{
    auto ui = makePanel();
    addStandardRows(*ui);
    ui->render();
    ASSERT_GT(ui->elements[0].numHotRects, 0);
    ui->initialize(10, 10, 16, 0.0, false);
    for (const LGLUI::tElement& e : ui->elements)
        EXPECT_EQ(e.numHotRects, 0);
}

TEST_F(UITest, WidthsFollowTheWidestLabelAndTheWidestValue)
{
    auto ui = makePanel();
    const LGLFont::GLGLFont& f = ui->font.fonts[0];
    std::vector<std::string> sizes = {"a", "a rather wide item"};
    ui->addListBox("Size", sizes, 0);
    ui->addNumberSpinner("Count of things", 0, 1000, 1, 123.7);
    ui->addEditText("Name", "xy", 90);
    ui->addButton("Go");
    const int maxLabel = std::max({sumOfWidths(f, "Size"), sumOfWidths(f, "Count of things"),
                                   sumOfWidths(f, "Name"), static_cast<int>(sumOfWidths(f, "Go") * 1.2)});
    const int maxValue = std::max({sumOfWidths(f, "a rather wide item"), sumOfWidths(f, "123"), 90,
                                   sumOfWidths(f, "xy")});
    EXPECT_EQ(ui->labelWidth, maxLabel + 32);
    EXPECT_EQ(ui->width, static_cast<int>(maxLabel + 32 + maxValue + 24.0));
}

TEST_F(UITest, AButtonLabelCountsOneAndAFifthTimesItsWidth)
{
    auto ui = makePanel();
    const std::string label = "A long button caption";
    ui->addButton(label);
    EXPECT_EQ(ui->labelWidth, static_cast<int>(sumOfWidths(ui->font.fonts[0], label) * 1.2) + 32);
    EXPECT_EQ(ui->width, static_cast<int>(ui->labelWidth + 24.0));
}

TEST_F(UITest, AnEditTextFieldIsAtLeastItsFieldWidthAndGrowsWithItsText)
{
    auto ui = makePanel();
    ui->addEditText("N", "ab", 150);
    const int labelWidth = sumOfWidths(ui->font.fonts[0], "N") + 32;
    EXPECT_EQ(ui->width, labelWidth + 150 + 24);
    const std::string longText = "a text much wider than the one hundred and fifty pixel field";
    ui->setUIString(0, longText);
    ui->updateUIDimension();
    EXPECT_EQ(ui->width, labelWidth + sumOfWidths(ui->font.fonts[0], longText) + 24);
}

TEST_F(UITest, TitleBarAndCloseBoxFollowThePanelWidth)
{
    auto ui = makePanel(20, 30);
    ui->addEditText("Name", "", 100);
    EXPECT_EQ(ui->titleBar.left, 20);
    EXPECT_EQ(ui->titleBar.top, 30);
    EXPECT_EQ(ui->titleBar.right, 20 + ui->width);
    EXPECT_EQ(ui->titleBar.bottom, 30 + 16);
    EXPECT_EQ(ui->closeBox.left, 20 + ui->width - 16 + 1);
    EXPECT_EQ(ui->closeBox.top, 31);
    EXPECT_EQ(ui->closeBox.right, 20 + ui->width - 16 + 1 + 14);
    EXPECT_EQ(ui->closeBox.bottom, 31 + 14);
    EXPECT_TRUE(ui->isInCloseBox(ui->closeBox.left, ui->closeBox.top));
    EXPECT_TRUE(ui->isInCloseBox(ui->closeBox.right, ui->closeBox.bottom));
    EXPECT_FALSE(ui->isInCloseBox(ui->closeBox.left - 1, ui->closeBox.top));
    EXPECT_FALSE(ui->isInCloseBox(ui->closeBox.right, ui->closeBox.bottom + 1));
}

TEST_F(UITest, EveryAddReturnsTheNewRowIndexAndUpdatesTheWidths)
{
    auto ui = makePanel();
    std::vector<std::string> items = {"x"};
    EXPECT_EQ(ui->addButton("B"), 0);
    const int narrow = ui->width;
    EXPECT_EQ(ui->addEditText("E", "", 300), 1);
    EXPECT_GT(ui->width, narrow + 250);
    EXPECT_EQ(ui->addListBox("L", items, 0), 2);
    EXPECT_EQ(ui->addListSpinner("S", items, 0), 3);
    EXPECT_EQ(ui->addNumberSpinner("N", 0, 1, 1, 0), 4);
    ui->addSeparator();
    ui->addBlankSpace();
    EXPECT_EQ(ui->count, 7);
    EXPECT_EQ(ui->elements[5].kind, LGLUI::KIND_SEPARATOR);
    EXPECT_EQ(ui->elements[6].kind, LGLUI::KIND_BLANK_SPACE);
    EXPECT_TRUE(ui->elements[5].label.empty());
    EXPECT_DOUBLE_EQ(ui->elements[6].value, 0.0);
}

TEST_F(UITest, SetUIFontPositionPutsTheTextOnTheRowBaseline)
{
    auto ui = makePanel(10, 10, 16);
    ui->setUIFontPosition(2);
    EXPECT_EQ(ui->textX, 10 + 8);
    // Row 2 starts at 10 + 16 + 12 + 48 = 86; the baseline is trunc(86 + 16 - 16.5 / 5) = 98.
    EXPECT_EQ(ui->textY, 98);
}

// ================================================================ the row limit and row indices

TEST_F(UITest, AFiftyFirstRowIsRefusedWithALine)
{
    auto ui = makePanel();
    for (int i = 0; i < 50; ++i)
        ASSERT_EQ(ui->addButton("B" + std::to_string(i)), i);
    std::vector<std::string> items = {"x"};
    struct Case {
        std::function<int()> add;
        const char* line;
    };
    const std::vector<Case> cases = {
        {[&] { return ui->addButton("Too many"); },
         "ERROR LGLUI::addButton> the panel already holds 50 rows; the row is not added (LGLUI.cpp)\n"},
        {[&] { return ui->addEditText("E", "t", 10); },
         "ERROR LGLUI::addEditText> the panel already holds 50 rows; the row is not added (LGLUI.cpp)\n"},
        {[&] { return ui->addListBox("L", items, 0); },
         "ERROR LGLUI::addListBox> the panel already holds 50 rows; the row is not added (LGLUI.cpp)\n"},
        {[&] { return ui->addListSpinner("S", items, 0); },
         "ERROR LGLUI::addListSpinner> the panel already holds 50 rows; the row is not added (LGLUI.cpp)\n"},
        {[&] { return ui->addNumberSpinner("N", 0, 1, 1, 0); },
         "ERROR LGLUI::addNumberSpinner> the panel already holds 50 rows; the row is not added (LGLUI.cpp)\n"},
        {[&] { ui->addSeparator(); return -1; },
         "ERROR LGLUI::addSeparator> the panel already holds 50 rows; the row is not added (LGLUI.cpp)\n"},
        {[&] { ui->addBlankSpace(); return -1; },
         "ERROR LGLUI::addBlankSpace> the panel already holds 50 rows; the row is not added (LGLUI.cpp)\n"},
    };
    for (const Case& c : cases) {
        StdoutCapture out;
        EXPECT_EQ(c.add(), -1);
        EXPECT_EQ(out.take(), c.line);
        EXPECT_EQ(ui->count, 50);
    }
    EXPECT_EQ(ui->elements[49].label, "B49");
    EXPECT_EQ(ui->elements[49].kind, LGLUI::KIND_BUTTON);
}

TEST_F(UITest, ARowOutsideTheTableIsRefusedWithALine)
{
    auto ui = makePanel();
    ui->addNumberSpinner("N", 0, 10, 1, 5);
    int value = 77;
    std::string text = "kept";
    StdoutCapture out;
    ui->getUIInt(50, value);
    ui->setUIInt(-1, 3);
    ui->getUIString(51, text);
    ui->setUIString(-2, "x");
    ui->setUIStepValue(50, 2.0);
    ui->renderButton(-1);
    EXPECT_EQ(out.take(),
              "ERROR LGLUI::getUIInt> row 50 is outside the 50 rows of the panel (LGLUI.cpp)\n"
              "ERROR LGLUI::setUIInt> row -1 is outside the 50 rows of the panel (LGLUI.cpp)\n"
              "ERROR LGLUI::getUIString> row 51 is outside the 50 rows of the panel (LGLUI.cpp)\n"
              "ERROR LGLUI::setUIString> row -2 is outside the 50 rows of the panel (LGLUI.cpp)\n"
              "ERROR LGLUI::setUIStepValue> row 50 is outside the 50 rows of the panel (LGLUI.cpp)\n"
              "ERROR LGLUI::renderButton> row -1 is outside the 50 rows of the panel (LGLUI.cpp)\n");
    EXPECT_EQ(value, 77);
    EXPECT_EQ(text, "kept");
}

TEST_F(UITest, RowsPastCountButInsideTheTableAreReadAsTheyStand)
{
    auto ui = makePanel();
    ui->addButton("B");
    int value = 5;
    ui->getUIInt(7, value);  // an empty record: not a valued kind
    EXPECT_EQ(value, 0);
}

// ================================================================ value access

TEST_F(UITest, GetUIIntOnAnEditTextYieldsZero)
{
    auto ui = makePanel();
    ui->addEditText("Name", "42", 50);
    int value = 9;
    ui->getUIInt(0, value);
    EXPECT_EQ(value, 0);
}

TEST_F(UITest, SetUIIntOnAnEditTextZeroesItsValueAndLeavesItsText)
{
    auto ui = makePanel();
    ui->addEditText("Name", "hello", 50);
    ui->elements[0].value = 4.0;
    ui->setUIInt(0, 12);
    EXPECT_DOUBLE_EQ(ui->elements[0].value, 0.0);
    EXPECT_EQ(ui->elements[0].text, "hello");
}

TEST_F(UITest, GetUIIntTruncatesTheValueOfEveryValuedKind)
{
    auto ui = makePanel();
    std::vector<std::string> items = {"a", "b", "c"};
    ui->addListBox("L", items, 2);
    ui->addListSpinner("S", items, 1);
    ui->addNumberSpinner("N", -10, 10, 0.5, -2.7);
    ui->addButton("B");
    ui->addSeparator();
    int value = 0;
    ui->getUIInt(0, value);
    EXPECT_EQ(value, 2);
    ui->getUIInt(1, value);
    EXPECT_EQ(value, 1);
    ui->getUIInt(2, value);
    EXPECT_EQ(value, -2);
    ui->elements[3].value = 1.0;
    ui->getUIInt(3, value);
    EXPECT_EQ(value, 1);
    ui->getUIInt(4, value);
    EXPECT_EQ(value, 0);
}

TEST_F(UITest, SetUIIntSetsValuedKindsAndZeroesOthers)
{
    auto ui = makePanel();
    ui->addNumberSpinner("N", 0, 100, 1, 1);
    ui->addSeparator();
    ui->elements[1].value = 3.0;
    ui->setUIInt(0, 64);
    ui->setUIInt(1, 64);
    EXPECT_DOUBLE_EQ(ui->elements[0].value, 64.0);
    EXPECT_DOUBLE_EQ(ui->elements[1].value, 0.0);
}

TEST_F(UITest, WithNoRowsValueAccessLeavesEverythingUntouched)
{
    auto ui = makePanel();
    int value = 31;
    std::string text = "kept";
    ui->getUIInt(0, value);
    ui->getUIString(0, text);
    EXPECT_EQ(value, 31);
    EXPECT_EQ(text, "kept");
    ui->elements[0].value = 2.0;
    ui->elements[0].text = "old";
    ui->setUIInt(0, 9);
    ui->setUIString(0, "new");
    EXPECT_DOUBLE_EQ(ui->elements[0].value, 2.0);
    EXPECT_EQ(ui->elements[0].text, "old");
}

TEST_F(UITest, StringsAreReadAndWrittenOnlyOnEditTexts)
{
    auto ui = makePanel();
    ui->addEditText("Name", "first", 50);
    ui->addButton("B");
    std::string text = "x";
    ui->getUIString(0, text);
    EXPECT_EQ(text, "first");
    ui->setUIString(0, "second");
    EXPECT_EQ(ui->elements[0].text, "second");
    ui->elements[1].text = "stray";
    ui->getUIString(1, text);
    EXPECT_EQ(text, "");
    ui->setUIString(1, "ignored");
    EXPECT_EQ(ui->elements[1].text, "");
}

TEST_F(UITest, SetUIStepValueSetsTheStepOfAnyRow)
{
    auto ui = makePanel();
    ui->addNumberSpinner("N", 0, 10, 1, 0);
    ui->addButton("B");
    ui->setUIStepValue(0, 2.5);
    ui->setUIStepValue(1, 4.0);  // no kind check
    EXPECT_DOUBLE_EQ(ui->elements[0].stepValue, 2.5);
    EXPECT_DOUBLE_EQ(ui->elements[1].stepValue, 4.0);
}

TEST_F(UITest, DisposeEmptiesTheRowsAndThePanelFillsAgain)
{
    auto ui = makePanel();
    std::vector<std::string> items = {"a", "b"};
    ui->addListBox("L", items, 1);
    ui->addButton("B");
    ui->dispose();
    EXPECT_EQ(ui->count, 0);
    EXPECT_TRUE(ui->elements[0].items.empty());
    EXPECT_EQ(ui->addEditText("E", "t", 40), 0);
    EXPECT_EQ(ui->elements[0].kind, LGLUI::KIND_EDIT_TEXT);
    EXPECT_DOUBLE_EQ(ui->elements[0].value, 0.0);
    EXPECT_EQ(ui->count, 1);
}

TEST_F(UITest, CopiesAndMovesCarryEveryRow)
{
    auto ui = makePanel(40, 50);
    addStandardRows(*ui);
    ui->elements[0].value = 33;
    auto copy = std::make_unique<LGLUI>(*ui);
    EXPECT_EQ(copy->count, 6);
    EXPECT_EQ(copy->x, 40);
    EXPECT_EQ(copy->width, ui->width);
    EXPECT_DOUBLE_EQ(copy->elements[0].value, 33.0);
    EXPECT_EQ(copy->elements[3].text, "abc");
    EXPECT_EQ(copy->elements[1].items, threeModes());
    auto moved = std::make_unique<LGLUI>(std::move(*copy));
    EXPECT_EQ(moved->elements[5].label, "Apply");
    auto assigned = std::make_unique<LGLUI>();
    *assigned = *moved;
    EXPECT_EQ(assigned->elements[1].items, threeModes());
    EXPECT_EQ(assigned->font.fonts[0].base, ui->font.fonts[0].base);
}

// ================================================================ the clock

TEST_F(UITest, TheClockOverrideStandsInForTheRealClock)
{
    fakeNow = 123456;
    EXPECT_EQ(LGLUI::clockMs(), 123456);
    LGLUI::clockOverride = nullptr;
    const int first = LGLUI::clockMs();
    const int second = LGLUI::clockMs();
    EXPECT_GE(first, 0);
    EXPECT_GE(second, first);
}

// ================================================================ keys

TEST_F(UITest, KeysAreTakenOnlyByAVisibleFocusedPanelWithRows)
{
    auto ui = makePanel();
    ui->registerStandardKeys('a');
    EXPECT_EQ(ui->standardKey, 0);  // no rows
    addStandardRows(*ui);
    ui->registerStandardKeys('a');
    ui->registerSpecialKeys(LGLUI::KEY_DOWN);
    EXPECT_EQ(ui->standardKey, 0);  // not focused
    EXPECT_EQ(ui->specialKey, 0);
    focusPanel(*ui);
    ui->registerStandardKeys('a');
    ui->registerSpecialKeys(LGLUI::KEY_DOWN);
    EXPECT_EQ(ui->standardKey, 'a');
    EXPECT_EQ(ui->specialKey, LGLUI::KEY_DOWN);
    ui->standardKey = 0;
    ui->specialKey = 0;
    ui->visible = false;
    ui->registerStandardKeys('b');
    ui->registerSpecialKeys(LGLUI::KEY_UP);
    EXPECT_EQ(ui->standardKey, 0);
    EXPECT_EQ(ui->specialKey, 0);
}

TEST_F(UITest, HandleClearsTheKeysOfTheFrame)
{
    auto ui = makePanel();
    addStandardRows(*ui);
    focusPanel(*ui);
    ui->registerStandardKeys('q');
    ui->registerSpecialKeys(LGLUI::KEY_LEFT);
    ui->handle();
    EXPECT_EQ(ui->standardKey, 0);
    EXPECT_EQ(ui->specialKey, 0);
}

// ================================================================ mouse focus

TEST_F(UITest, APressOutsideAFocusedPanelDefocusesItAndIsNotConsumedNorIsTheFollowingRelease)
{
    auto ui = makePanel();
    addStandardRows(*ui);
    focusPanel(*ui);
    ASSERT_TRUE(ui->focused);
    ui->render();
    EXPECT_FALSE(press(*ui, 600, 400));
    EXPECT_FALSE(ui->focused);
    ui->handle();
    EXPECT_FALSE(release(*ui, 600, 400));
    EXPECT_FALSE(ui->focused);
}

TEST_F(UITest, APressInsideFocusesThePanelAndIsConsumed)
{
    auto ui = makePanel();
    addStandardRows(*ui);
    ui->render();
    EXPECT_TRUE(press(*ui, ui->x + ui->width, ui->y + ui->height));  // the corner, edges included
    EXPECT_TRUE(ui->focused);
    EXPECT_TRUE(ui->mouseDown);
    EXPECT_TRUE(release(*ui, ui->x, ui->y));
    EXPECT_TRUE(ui->focused);
    EXPECT_FALSE(ui->mouseDown);
}

TEST_F(UITest, AReleaseInsideAnUnfocusedPanelIsConsumedButDoesNotFocusIt)
{
    auto ui = makePanel();
    addStandardRows(*ui);
    ui->render();
    EXPECT_TRUE(release(*ui, ui->x + 5, ui->y + 5));
    EXPECT_FALSE(ui->focused);
}

TEST_F(UITest, ClicksOnAnInvisibleOrEmptyPanelDefocusItAndAreNotConsumed)
{
    auto ui = makePanel();
    addStandardRows(*ui);
    focusPanel(*ui);
    ui->visible = false;
    EXPECT_FALSE(press(*ui, ui->x + 5, ui->y + 5));
    EXPECT_FALSE(ui->focused);

    auto empty = makePanel();
    empty->focused = true;
    EXPECT_FALSE(press(*empty, empty->x + 1, empty->y + 1));
    EXPECT_FALSE(empty->focused);
}

TEST_F(UITest, APressOnARowsFieldMakesItCurrentAndAReleaseClearsTheHotArea)
{
    auto ui = makePanel();
    addStandardRows(*ui);
    ui->render();
    const Box field = fieldOf(*ui, 3);
    EXPECT_TRUE(press(*ui, field.left, field.bottom));  // edges included
    EXPECT_EQ(ui->current, 3);
    EXPECT_EQ(ui->hotId, LGLUI::HOT_FIELD);
    EXPECT_TRUE(ui->focused);
    release(*ui, field.left, field.bottom);
    EXPECT_EQ(ui->hotId, -1);
    EXPECT_EQ(ui->current, 3);
}

TEST_F(UITest, EveryClickEventEmptiesTheHotRectanglesUntilTheNextRender)
{
    auto ui = makePanel();
    addStandardRows(*ui);
    ui->render();
    EXPECT_EQ(ui->elements[0].numHotRects, 3);  // field and both arrows of the current spinner
    EXPECT_EQ(ui->elements[3].numHotRects, 1);
    EXPECT_EQ(ui->elements[5].numHotRects, 1);
    release(*ui, 600, 400);
    for (const LGLUI::tElement& e : ui->elements)
        EXPECT_EQ(e.numHotRects, 0);
    // Without a render in between, a press finds nothing.
    const Box field = fieldOf(*ui, 3);
    press(*ui, field.centreX(), field.centreY());
    EXPECT_EQ(ui->current, 0);
    EXPECT_EQ(ui->hotId, -1);
}

TEST_F(UITest, RenderRegistersEachAreaOnceHoweverOftenItRuns)
{
    auto ui = makePanel();
    addStandardRows(*ui);
    for (int i = 0; i < 300; ++i)
        ui->render();
    EXPECT_EQ(ui->elements[0].numHotRects, 3);
    const Box field = fieldOf(*ui, 0);
    EXPECT_EQ(ui->elements[0].hotRects[0].left, field.left);
    EXPECT_EQ(ui->elements[0].hotRects[0].bottom, field.bottom);
}

TEST_F(UITest, ARowFoundInTheSecondPassWinsOverAnEditTextUnderneath)
{
    // An open pop-up of row 0 lies over the field of the edit text of row 1.
    auto ui = makePanel();
    std::vector<std::string> items = {"zero", "one", "two"};
    ui->addListBox("List", items, 0);
    ui->addEditText("Text", "", 150);
    focusPanel(*ui);
    specialKeyAndFrame(*ui, LGLUI::KEY_RIGHT);  // opens the pop-up
    ASSERT_TRUE(ui->editing);
    const Box item = popUpItemOf(*ui, 0, 1);
    const Box field = fieldOf(*ui, 1);
    const int px = std::max(item.left, field.left) + 2;
    const int py = std::max(item.top, field.top) + 2;
    ASSERT_TRUE(px <= std::min(item.right, field.right) && py <= std::min(item.bottom, field.bottom));
    press(*ui, px, py);
    EXPECT_EQ(ui->current, 0);
    EXPECT_EQ(ui->hotId, LGLUI::HOT_POPUP_ITEM + 1);
}

TEST_F(UITest, AnEditTextHitAloneTakesThePress)
{
    auto ui = makePanel();
    ui->addButton("B");
    ui->addEditText("Text", "", 150);
    ui->render();
    const Box field = fieldOf(*ui, 1);
    press(*ui, field.centreX(), field.centreY());
    EXPECT_EQ(ui->current, 1);
    EXPECT_EQ(ui->hotId, LGLUI::HOT_FIELD);
}

TEST_F(UITest, APressOnAnotherRowClosesTheOpenPopUp)
{
    auto ui = makePanel();
    std::vector<std::string> items = {"a", "b"};
    ui->addListBox("List", items, 0);
    ui->addButton("Button");
    focusPanel(*ui);
    specialKeyAndFrame(*ui, LGLUI::KEY_RIGHT);
    ASSERT_TRUE(ui->editing);
    const Box face = buttonFaceOf(*ui, 1);
    // A point of the face left of the pop-up.
    press(*ui, face.left + 2, face.centreY());
    EXPECT_EQ(ui->current, 1);
    EXPECT_FALSE(ui->editing);
}

// ================================================================ per-frame handling

TEST_F(UITest, WithFadeInTheAlphaGrowsLinearlyFromZeroToOneOverTheFirst500Ms)
{
    auto ui = makePanel();
    addStandardRows(*ui);
    ui->fadeIn = true;
    const int start = fakeNow;
    const struct {
        int after;
        double fade;
    } steps[] = {{0, 0.0}, {100, 0.2}, {250, 0.5}, {400, 0.8}, {500, 1.0}, {900, 1.0}};
    for (const auto& step : steps) {
        fakeNow = start + step.after;
        ui->handle();
        EXPECT_NEAR(ui->fade, step.fade, 1e-12) << step.after << " ms";
        EXPECT_EQ(ui->fadeStart, start);
        // The pane is drawn with the pane alpha times the fade.
        const auto items = recordFeedback([&] { ui->render(); });
        EXPECT_TRUE(hasRect(items, 0.9, 0.9, 0.9, 0.8 * step.fade, {ui->x, ui->y, ui->x + ui->width, ui->y + ui->height}))
            << step.after << " ms";
    }
}

TEST_F(UITest, WithFadeInClearTheFadeStopsWhereItIs)
{
    auto ui = makePanel();
    addStandardRows(*ui);
    ui->fadeIn = true;
    ui->handle();
    fakeNow += 150;
    ui->handle();
    EXPECT_NEAR(ui->fade, 0.3, 1e-12);
    ui->fadeIn = false;
    fakeNow += 1000;
    ui->handle();
    EXPECT_EQ(ui->fadeStart, -1);
    EXPECT_NEAR(ui->fade, 0.3, 1e-12);
    // Setting it again starts a new fade from the frame it is seen.
    ui->fadeIn = true;
    ui->handle();
    EXPECT_EQ(ui->fadeStart, fakeNow);
    EXPECT_NEAR(ui->fade, 0.0, 1e-12);
}

TEST_F(UITest, HoldingTheButtonOnASpinnerArrowStepsOnceThenAfter400MsThenEvery50Ms)
{
    auto ui = makePanel();
    ui->addNumberSpinner("Speed", 0, 1000, 1, 0);
    ui->render();
    const Box arrow = rightArrowOf(*ui, 0);
    const int start = fakeNow;
    press(*ui, arrow.centreX(), arrow.centreY());
    std::vector<int> stepTimes;
    double last = ui->elements[0].value;
    for (int t = 0; t <= 600; t += 10) {
        fakeNow = start + t;
        frame(*ui);
        if (ui->elements[0].value != last)
            stepTimes.push_back(t);
        last = ui->elements[0].value;
    }
    EXPECT_EQ(stepTimes, (std::vector<int>{0, 400, 450, 500, 550, 600}));
    // Letting go stops the steps.
    release(*ui, arrow.centreX(), arrow.centreY());
    for (int t = 610; t <= 1000; t += 10) {
        fakeNow = start + t;
        frame(*ui);
    }
    EXPECT_DOUBLE_EQ(ui->elements[0].value, 6.0);
}

TEST_F(UITest, UpOnRowZeroGoesToTheLastRowThatIsNeitherSeparatorNorBlankSpace)
{
    auto ui = makePanel();
    std::vector<std::string> items = {"a"};
    ui->addNumberSpinner("N", 0, 10, 1, 0);
    ui->addButton("B");
    ui->addSeparator();
    ui->addListSpinner("S", items, 0);
    ui->addBlankSpace();
    ui->addSeparator();
    focusPanel(*ui);
    ASSERT_EQ(ui->current, 0);
    specialKeyAndFrame(*ui, LGLUI::KEY_UP);
    EXPECT_EQ(ui->current, 3);
    EXPECT_TRUE(ui->keyUsed);
}

TEST_F(UITest, DownMovesToTheNextRowSkippingSeparatorsAndBlankSpacesAndWraps)
{
    auto ui = makePanel();
    addStandardRows(*ui);  // 0 spinner, 1 spinner, 2 separator, 3 edit, 4 blank, 5 button
    focusPanel(*ui);
    std::vector<int> visited;
    for (int i = 0; i < 5; ++i) {
        specialKeyAndFrame(*ui, LGLUI::KEY_DOWN);
        visited.push_back(ui->current);
    }
    EXPECT_EQ(visited, (std::vector<int>{1, 3, 5, 0, 1}));
    specialKeyAndFrame(*ui, LGLUI::KEY_UP);
    EXPECT_EQ(ui->current, 0);
}

TEST_F(UITest, WithOnlySeparatorsAndBlankSpacesNavigationStaysPut)
{
    auto ui = makePanel();
    ui->addSeparator();
    ui->addBlankSpace();
    focusPanel(*ui);
    specialKeyAndFrame(*ui, LGLUI::KEY_DOWN);
    EXPECT_EQ(ui->current, 0);
    specialKeyAndFrame(*ui, LGLUI::KEY_UP);
    EXPECT_EQ(ui->current, 0);
}

TEST_F(UITest, WhileEditingUpAndDownDoNotLeaveTheRow)
{
    auto ui = makePanel();
    std::vector<std::string> items = {"a", "b", "c"};
    ui->addListBox("List", items, 0);
    ui->addButton("B");
    focusPanel(*ui);
    specialKeyAndFrame(*ui, LGLUI::KEY_RIGHT);
    ASSERT_TRUE(ui->editing);
    specialKeyAndFrame(*ui, LGLUI::KEY_DOWN);
    EXPECT_EQ(ui->current, 0);
    EXPECT_DOUBLE_EQ(ui->elements[0].value, 1.0);
}

TEST_F(UITest, KeyUsedIsClearedAtTheStartOfEveryHandle)
{
    auto ui = makePanel();
    addStandardRows(*ui);
    focusPanel(*ui);
    specialKeyAndFrame(*ui, LGLUI::KEY_DOWN);
    EXPECT_TRUE(ui->keyUsed);
    frame(*ui);
    EXPECT_FALSE(ui->keyUsed);
}

TEST_F(UITest, AnUnfocusedPanelRemembersTheCursorAndHandlesNoKeys)
{
    ostrum_test::PointerLock lock;
    auto ui = makePanel();
    addStandardRows(*ui);
    LGLPlatform::setCursorPos(321, 234);
    ui->focused = false;
    ui->specialKey = LGLUI::KEY_DOWN;  // as if left over
    ui->handle();
    EXPECT_EQ(ui->cursorX, 321);
    EXPECT_EQ(ui->cursorY, 234);
    EXPECT_EQ(ui->current, 0);
    EXPECT_EQ(ui->specialKey, LGLUI::KEY_DOWN);
    EXPECT_EQ(ui->lastHotId, -2);
}

TEST_F(UITest, HoldingTheButtonInsideADragEnabledPanelDragsItWithTheRealCursor)
{
    ostrum_test::PointerLock lock;
    auto ui = makePanel(10, 10);
    addStandardRows(*ui);
    ui->dragEnabled = true;
    LGLPlatform::setCursorPos(400, 300);
    frame(*ui);  // unfocused: remembers the cursor
    press(*ui, ui->x + 3, ui->y + 3);
    frame(*ui);
    EXPECT_EQ(ui->x, 10);
    EXPECT_EQ(ui->y, 10);
    LGLPlatform::setCursorPos(430, 320);
    frame(*ui);
    EXPECT_EQ(ui->x, 40);
    EXPECT_EQ(ui->y, 30);
    EXPECT_EQ(ui->titleBar.left, 40);
    EXPECT_EQ(ui->closeBox.top, 31);
    // The rows follow.
    EXPECT_EQ(fieldOf(*ui, 0).left, ui->elements[0].hotRects[0].left);
    EXPECT_EQ(fieldOf(*ui, 0).top, ui->elements[0].hotRects[0].top);
    release(*ui, ui->x + 3, ui->y + 3);
    LGLPlatform::setCursorPos(500, 400);
    frame(*ui);
    EXPECT_EQ(ui->x, 40);
    EXPECT_EQ(ui->y, 30);
}

TEST_F(UITest, WithoutDragEnabledAHeldButtonLeavesThePanelInPlace)
{
    ostrum_test::PointerLock lock;
    auto ui = makePanel(10, 10);
    addStandardRows(*ui);
    LGLPlatform::setCursorPos(400, 300);
    frame(*ui);
    press(*ui, ui->x + 3, ui->y + 3);
    frame(*ui);
    LGLPlatform::setCursorPos(480, 350);
    frame(*ui);
    EXPECT_EQ(ui->x, 10);
    EXPECT_EQ(ui->y, 10);
}

TEST_F(UITest, AnInvisiblePanelNeitherHandlesNorDraws)
{
    auto ui = makePanel();
    addStandardRows(*ui);
    focusPanel(*ui);
    ui->visible = false;
    ui->fadeIn = true;
    ui->keyUsed = true;
    ui->specialKey = LGLUI::KEY_DOWN;
    ui->handle();
    EXPECT_EQ(ui->current, 0);
    EXPECT_TRUE(ui->keyUsed);
    EXPECT_EQ(ui->fadeStart, -1);
    const auto items = recordFeedback([&] { ui->render(); });
    EXPECT_TRUE(items.empty());
}

// ================================================================ drawing

TEST_F(UITest, AnEmptyPanelDrawsNothing)
{
    auto ui = makePanel();
    const auto items = recordFeedback([&] { ui->render(); });
    EXPECT_TRUE(items.empty());
}

TEST_F(UITest, RenderDrawsThePaneWithItsShadowFillAndOutlineFirst)
{
    auto ui = makePanel(20, 30);
    addStandardRows(*ui);
    const auto items = recordFeedback([&] { ui->render(); });
    EXPECT_EQ(ui->height, expectedHeight(*ui));
    const Box pane = {20, 30, 20 + ui->width, 30 + ui->height};
    const auto polygons = ostrum_test::itemsOf(items, GL_POLYGON_TOKEN);
    ASSERT_GE(polygons.size(), 4u);
    // Shadow: two triangles moved by (3, 2) in dark grey at alpha 0.4.
    EXPECT_TRUE(sameBox(mergeTouching({pixelBounds(polygons[0]), pixelBounds(polygons[1])})[0],
                        {pane.left + 3, pane.top + 2, pane.right + 3, pane.bottom + 2}));
    EXPECT_TRUE(colourIs(polygons[0].vertices[0], 0.1, 0.1, 0.1, 0.4));
    // The pane itself in the pane colour.
    EXPECT_TRUE(sameBox(mergeTouching({pixelBounds(polygons[2]), pixelBounds(polygons[3])})[0], pane));
    EXPECT_TRUE(colourIs(polygons[2].vertices[0], 0.9, 0.9, 0.9, 0.8));
    // Its outline: the first four lines, grey at alpha 0.8.
    const auto lines = ostrum_test::itemsOf(items, GL_LINE_TOKEN);
    ASSERT_GE(lines.size(), 4u);
    std::vector<Box> outline;
    for (int i = 0; i < 4; ++i) {
        EXPECT_TRUE(colourIs(lines[i].vertices[0], 0.6, 0.6, 0.6, 0.8));
        outline.push_back(pixelBounds(lines[i]));
    }
    EXPECT_TRUE(sameBox(mergeTouching(outline)[0], pane));
}

TEST_F(UITest, RenderDrawsTheTitleBarAndTheCloseBoxWithItsCross)
{
    auto ui = makePanel(20, 30);
    addStandardRows(*ui);
    const auto items = recordFeedback([&] { ui->render(); });
    const auto bars = rectsOfColour(items, 0.0, 0.33333334, 0.9019608, 0.8);
    ASSERT_EQ(bars.size(), 1u);
    EXPECT_TRUE(sameBox(bars[0], {ui->titleBar.left, ui->titleBar.top, ui->titleBar.right, ui->titleBar.bottom}));
    const auto boxes = rectsOfColour(items, 0.90588236, 0.43529412, 0.32156864, 0.8);
    ASSERT_EQ(boxes.size(), 1u);
    const tRect& c = ui->closeBox;
    EXPECT_TRUE(sameBox(boxes[0], {c.left, c.top, c.right, c.bottom}));
    // The white outline and the two strokes of the cross.
    std::vector<Box> white;
    for (const FeedbackItem& line : ostrum_test::itemsOf(items, GL_LINE_TOKEN))
        if (colourIs(line.vertices[0], 1, 1, 1, 0.8))
            white.push_back(pixelBounds(line));
    ASSERT_GE(white.size(), 6u);
    EXPECT_TRUE(sameBox(mergeTouching({white[0], white[1], white[2], white[3]})[0], {c.left, c.top, c.right, c.bottom}));
    EXPECT_TRUE(sameBox(white[4], {c.left + 2, c.top + 2, c.right - 2, c.bottom - 2}));
    EXPECT_TRUE(sameBox(white[5], {c.left + 2, c.top + 2, c.right - 2, c.bottom - 2}));
    // The first stroke runs from the top right to the bottom left.
    const auto strokes = ostrum_test::itemsOf(items, GL_LINE_TOKEN);
    for (const FeedbackItem& line : strokes) {
        if (!colourIs(line.vertices[0], 1, 1, 1, 0.8) || !sameBox(pixelBounds(line), white[4]))
            continue;
        EXPECT_NEAR(line.vertices[0].x, c.right - 2, 0.5);
        EXPECT_NEAR(kWindowHeight - line.vertices[0].y, c.top + 2, 0.5);
        break;
    }
}

TEST_F(UITest, ThePaneAndTitleBarShowTheirBlendedColours)
{
    auto ui = makePanel(20, 30);
    addStandardRows(*ui);
    glClearColor(0, 0, 0, 0);
    glClear(GL_COLOR_BUFFER_BIT);
    ui->render();
    // Pane over black, over its own shadow: 0.9 x 0.8 + (0.1 x 0.4) x 0.2.
    const double pane = 0.9 * 0.8 + 0.1 * 0.4 * 0.2;
    const int labelColumnX = ui->x + ui->padding.left + 1;
    const auto panePixel = rgbaAt(labelColumnX + 100, rowTopOf(*ui, 4) + 6);  // the blank row
    EXPECT_NEAR(panePixel[0], pane * 255, 2.0);
    EXPECT_NEAR(panePixel[1], pane * 255, 2.0);
    EXPECT_NEAR(panePixel[2], pane * 255, 2.0);
    // Title bar over the pane.
    const auto title = rgbaAt(ui->x + 5, ui->y + 8);
    EXPECT_NEAR(title[0], (0.0 * 0.8 + pane * 0.2) * 255, 2.0);
    EXPECT_NEAR(title[1], (0.33333334 * 0.8 + pane * 0.2) * 255, 2.0);
    EXPECT_NEAR(title[2], (0.9019608 * 0.8 + pane * 0.2) * 255, 2.0);
    // Outside the panel and its shadow the window stays black.
    EXPECT_EQ(redAt(ui->x + ui->width + 10, ui->y + 10), 0);
}

TEST_F(UITest, RenderWritesLabelsAndValuesInWhiteOnTheRowBaselines)
{
    auto ui = makePanel();
    addStandardRows(*ui);
    const auto items = recordFeedback([&] { ui->render(); });
    const auto bitmaps = bitmapsOf(items);
    const int textX = ui->x + ui->padding.left;
    for (int row : {0, 1, 3}) {
        const BitmapAt* label = bitmapAt(bitmaps, textX, baselineOf(*ui, row));
        ASSERT_NE(label, nullptr) << "row " << row;
        EXPECT_TRUE(colourIs(label->vertex, 1, 1, 1, 1)) << "row " << row;
        const BitmapAt* value = bitmapAt(bitmaps, textX + ui->labelWidth, baselineOf(*ui, row));
        ASSERT_NE(value, nullptr) << "row " << row;
        EXPECT_TRUE(colourIs(value->vertex, 1, 1, 1, 1)) << "row " << row;
    }
    EXPECT_FLOAT_EQ(ui->font.color_rp.a, 1.0f);
}

TEST_F(UITest, TheFontColourOfTheTextWritesCarriesTheFade)
{
    auto ui = makePanel();
    addStandardRows(*ui);
    ui->fade = 0.25;
    ui->render();
    EXPECT_FLOAT_EQ(ui->font.color_rp.r, 1.0f);
    EXPECT_FLOAT_EQ(ui->font.color_rp.a, 0.25f);
}

TEST_F(UITest, ASeparatorIsADarkLineAcrossTheRow)
{
    auto ui = makePanel();
    std::vector<std::string> items = {"a"};
    ui->addListSpinner("Above", items, 0);
    ui->addSeparator();
    ui->addEditText("Below", "", 60);
    const auto feedback = recordFeedback([&] { ui->render(); });
    std::vector<FeedbackItem> dark;
    for (const FeedbackItem& line : ostrum_test::itemsOf(feedback, GL_LINE_TOKEN))
        if (colourIs(line.vertices[0], 0.1, 0.1, 0.1, 0.8))
            dark.push_back(line);
    ASSERT_EQ(dark.size(), 1u);
    const int lineY = rowTopOf(*ui, 1) + ui->fontSize / 2;
    EXPECT_TRUE(sameBox(pixelBounds(dark[0]), {ui->x + ui->padding.left, lineY, ui->x + ui->width - ui->padding.right, lineY}));
    // It registers no hot area and has no value.
    EXPECT_EQ(ui->elements[1].numHotRects, 0);
}

TEST_F(UITest, RenderPaneDrawsShadowFillAndOutlineWithTheFade)
{
    auto ui = makePanel();
    ui->fade = 0.5;
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(0, 640, 480, 0, -1, 1);
    glMatrixMode(GL_MODELVIEW);
    const tRect area = {100, 50, 200, 120};
    const auto items = recordFeedback([&] { ui->renderPane(area, {0.2, 0.4, 0.6, 0.5}); });
    const auto shadow = rectsOfColour(items, 0.1, 0.1, 0.1, 0.2);
    ASSERT_EQ(shadow.size(), 1u);
    EXPECT_TRUE(sameBox(shadow[0], {103, 52, 203, 122}));
    const auto fill = rectsOfColour(items, 0.2, 0.4, 0.6, 0.25);
    ASSERT_EQ(fill.size(), 1u);
    EXPECT_TRUE(sameBox(fill[0], {100, 50, 200, 120}));
    std::vector<Box> outline;
    for (const FeedbackItem& line : ostrum_test::itemsOf(items, GL_LINE_TOKEN)) {
        EXPECT_TRUE(colourIs(line.vertices[0], 0.6, 0.6, 0.6, 0.4));
        outline.push_back(pixelBounds(line));
    }
    ASSERT_EQ(outline.size(), 4u);
    EXPECT_TRUE(sameBox(mergeTouching(outline)[0], {100, 50, 200, 120}));
    EXPECT_FALSE(glIsEnabled(GL_BLEND));
    GLfloat colour[4];
    glGetFloatv(GL_CURRENT_COLOR, colour);
    EXPECT_FLOAT_EQ(colour[0], 1.0f);
    EXPECT_FLOAT_EQ(colour[3], 1.0f);
}

TEST_F(UITest, RenderLeavesDepthTestOnBlendingAndTexturingOffAndTheMatricesAsTheyWere)
{
    auto ui = makePanel();
    addStandardRows(*ui);
    glEnable(GL_TEXTURE_2D);
    glEnable(GL_BLEND);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(-5, 5, -5, 5, -5, 5);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glTranslatef(1, 2, 3);
    GLfloat projectionBefore[16], modelviewBefore[16];
    glGetFloatv(GL_PROJECTION_MATRIX, projectionBefore);
    glGetFloatv(GL_MODELVIEW_MATRIX, modelviewBefore);
    ui->render();
    EXPECT_TRUE(glIsEnabled(GL_DEPTH_TEST));
    EXPECT_FALSE(glIsEnabled(GL_BLEND));
    EXPECT_FALSE(glIsEnabled(GL_TEXTURE_2D));
    GLint mode = 0;
    glGetIntegerv(GL_MATRIX_MODE, &mode);
    EXPECT_EQ(mode, GL_MODELVIEW);
    GLfloat projectionAfter[16], modelviewAfter[16];
    glGetFloatv(GL_PROJECTION_MATRIX, projectionAfter);
    glGetFloatv(GL_MODELVIEW_MATRIX, modelviewAfter);
    for (int i = 0; i < 16; ++i) {
        EXPECT_FLOAT_EQ(projectionAfter[i], projectionBefore[i]);
        EXPECT_FLOAT_EQ(modelviewAfter[i], modelviewBefore[i]);
    }
    GLfloat colour[4];
    glGetFloatv(GL_CURRENT_COLOR, colour);
    EXPECT_FLOAT_EQ(colour[0], 1.0f);
    EXPECT_FLOAT_EQ(colour[1], 1.0f);
    EXPECT_FLOAT_EQ(colour[2], 1.0f);
    EXPECT_FLOAT_EQ(colour[3], 1.0f);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

TEST_F(UITest, TheCloseBoxIsDrawnButNotActedOn)
{
    auto ui = makePanel();
    addStandardRows(*ui);
    ui->render();
    const int cx = (ui->closeBox.left + ui->closeBox.right) / 2;
    const int cy = (ui->closeBox.top + ui->closeBox.bottom) / 2;
    EXPECT_TRUE(ui->isInCloseBox(cx, cy));
    EXPECT_TRUE(press(*ui, cx, cy));
    frame(*ui);
    release(*ui, cx, cy);
    frame(*ui);
    EXPECT_TRUE(ui->visible);
    EXPECT_EQ(ui->hotId, -1);
    EXPECT_EQ(ui->current, 0);
}
