// LGLUIWidgetsTest.cpp -- the rows of the LGLUI panel driven as a game drives them: buttons, edit
// texts with their caret, list boxes with their pop-up, list spinners, number spinners and the value
// field with its arrows, checked through values read back, GL feedback and pixels.
#include <ostrum_gl/interface/LGLUI.h>

#include "LGLUITestHelpers.h"

#include <cmath>
#include <limits>

using namespace ui_test;
using font_test::sumOfWidths;
using ostrum_test::recordFeedback;

namespace {

std::vector<std::string> fiveItems()
{
    return {"zero", "one", "two", "three", "four"};
}

int valueOf(LGLUI& ui, int row)
{
    int value = -99;
    ui.getUIInt(row, value);
    return value;
}

std::string textOf(LGLUI& ui, int row)
{
    std::string text = "?";
    ui.getUIString(row, text);
    return text;
}

// Lines of one colour, in order.
std::vector<FeedbackItem> linesOfColour(const std::vector<FeedbackItem>& items, double r, double g, double b, double a)
{
    std::vector<FeedbackItem> out;
    for (const FeedbackItem& line : ostrum_test::itemsOf(items, GL_LINE_TOKEN))
        if (colourIs(line.vertices[0], r, g, b, a))
            out.push_back(line);
    return out;
}

// The darkest red value in the two pixel columns that a two-pixel-wide vertical line at x covers,
// at the given row (y downward).
int darkestAround(int x, int yDown)
{
    return std::min(redAt(x - 1, yDown), redAt(x, yDown));
}

}  // namespace

// ================================================================ button

TEST_F(UITest, AButtonsValueReadsOneInTheFrameOfItsPressAndZeroInTheNextFrame)
{
    auto ui = makePanel();
    const int row = ui->addButton("Apply");
    ui->render();
    const Box face = buttonFaceOf(*ui, row);
    press(*ui, face.centreX(), face.centreY());
    frame(*ui);
    EXPECT_EQ(valueOf(*ui, row), 1);
    EXPECT_TRUE(ui->valueChanged);
    EXPECT_TRUE(ui->keyUsed);
    release(*ui, face.centreX(), face.centreY());
    frame(*ui);
    EXPECT_EQ(valueOf(*ui, row), 0);
}

TEST_F(UITest, EnterPressesTheCurrentButtonForOneFrame)
{
    auto ui = makePanel();
    const int row = ui->addButton("Apply");
    focusPanel(*ui);
    typeAndFrame(*ui, LGLUI::KEY_ENTER);
    EXPECT_EQ(valueOf(*ui, row), 1);
    frame(*ui);
    EXPECT_EQ(valueOf(*ui, row), 0);
    EXPECT_FALSE(ui->keyUsed);
}

TEST_F(UITest, AButtonKeepsItsPressedLookFor100Ms)
{
    auto ui = makePanel();
    ui->addButton("Apply");
    ui->addButton("Other");
    ui->render();
    const Box face = buttonFaceOf(*ui, 0);
    const int start = fakeNow;
    press(*ui, face.centreX(), face.centreY());
    frame(*ui);
    EXPECT_TRUE(ui->editing);
    release(*ui, face.centreX(), face.centreY());
    fakeNow = start + 100;
    frame(*ui);
    EXPECT_TRUE(ui->editing);
    // While pressed, up and down stay on the row.
    specialKeyAndFrame(*ui, LGLUI::KEY_DOWN);
    EXPECT_EQ(ui->current, 0);
    fakeNow = start + 101;
    frame(*ui);
    EXPECT_FALSE(ui->editing);
    specialKeyAndFrame(*ui, LGLUI::KEY_DOWN);
    EXPECT_EQ(ui->current, 1);
}

TEST_F(UITest, APressedButtonSwapsItsLightAndDarkEdges)
{
    auto ui = makePanel();
    ui->addButton("Apply");
    ui->render();
    const Box face = buttonFaceOf(*ui, 0);
    auto edges = [&](double grey) {
        std::vector<Box> out;
        for (const FeedbackItem& line : linesOfColour(recordFeedback([&] { ui->render(); }), grey, grey, grey, 0.8))
            out.push_back(pixelBounds(line));
        return out;
    };
    const Box top = {face.left, face.top, face.right, face.top};
    const Box left = {face.left, face.top, face.left, face.bottom};
    const Box bottom = {face.left, face.bottom, face.right, face.bottom};
    const Box right = {face.right, face.top, face.right, face.bottom};
    auto light = edges(0.3);
    auto dark = edges(0.1);
    EXPECT_TRUE(hasBox(light, top) && hasBox(light, left));
    EXPECT_TRUE(hasBox(dark, bottom) && hasBox(dark, right));
    press(*ui, face.centreX(), face.centreY());
    ui->handle();
    light = edges(0.3);
    dark = edges(0.1);
    EXPECT_TRUE(hasBox(dark, top) && hasBox(dark, left));
    EXPECT_TRUE(hasBox(light, bottom) && hasBox(light, right));
}

TEST_F(UITest, AButtonFaceSpansTheRowWithItsLabelCentredAndIsHotAreaZero)
{
    auto ui = makePanel();
    ui->addButton("Other");
    ui->addButton("Apply");
    const auto items = recordFeedback([&] { ui->render(); });
    const Box face = buttonFaceOf(*ui, 1);
    // Not current: 90% of the pane colour.
    EXPECT_TRUE(hasRect(items, 0.81, 0.81, 0.81, 0.8, face));
    const int centre = (face.left + face.right) / 2;
    const int labelWidth = sumOfWidths(ui->font.fonts[0], "Apply");
    const int start = static_cast<int>(centre - labelWidth * 0.5);
    const auto bitmaps = bitmapsOf(items);
    const BitmapAt* label = bitmapAt(bitmaps, start, baselineOf(*ui, 1));
    ASSERT_NE(label, nullptr);
    EXPECT_TRUE(colourIs(label->vertex, 1, 1, 1, 1));
    EXPECT_EQ(ui->font.alignment, 1);
    EXPECT_EQ(ui->textX, ui->x + ui->padding.left);
    ASSERT_EQ(ui->elements[1].numHotRects, 1);
    EXPECT_EQ(ui->elements[1].hotIds[0], LGLUI::HOT_FIELD);
    EXPECT_EQ(ui->elements[1].hotRects[0].left, face.left);
    EXPECT_EQ(ui->elements[1].hotRects[0].top, face.top);
    EXPECT_EQ(ui->elements[1].hotRects[0].right, face.right);
    EXPECT_EQ(ui->elements[1].hotRects[0].bottom, face.bottom);
}

TEST_F(UITest, AButtonHeldPastTheRepeatDelayPressesAgain)
{
    auto ui = makePanel();
    ui->addButton("Apply");
    ui->render();
    const Box face = buttonFaceOf(*ui, 0);
    const int start = fakeNow;
    press(*ui, face.centreX(), face.centreY());
    frame(*ui);
    ui->valueChanged = false;
    fakeNow = start + 200;
    frame(*ui);  // held back by the repeat delay: nothing runs
    EXPECT_EQ(valueOf(*ui, 0), 1);
    EXPECT_FALSE(ui->valueChanged);
    fakeNow = start + 400;
    frame(*ui);
    EXPECT_EQ(valueOf(*ui, 0), 1);
    EXPECT_TRUE(ui->valueChanged);
}

// ================================================================ edit text

TEST_F(UITest, AddEditTextPutsTheCursorAtTheEndOfTheText)
{
    auto ui = makePanel();
    const int row = ui->addEditText("Name", "hello", 60);
    EXPECT_EQ(ui->elements[row].kind, LGLUI::KIND_EDIT_TEXT);
    EXPECT_EQ(ui->elements[row].cursor, 5);
    EXPECT_EQ(ui->elements[row].fieldWidth, 60);
    EXPECT_EQ(textOf(*ui, row), "hello");
}

TEST_F(UITest, TypingAPlusAndBIntoAnEmptyEditTextLeavesAB)
{
    auto ui = makePanel();
    const int row = ui->addEditText("Name", "", 80);
    focusPanel(*ui);
    typeAndFrame(*ui, 'a');
    typeAndFrame(*ui, '+');
    typeAndFrame(*ui, 'b');
    EXPECT_EQ(textOf(*ui, row), "ab");
    EXPECT_EQ(ui->elements[row].cursor, 2);
}

TEST_F(UITest, OnlyLettersDigitsSpaceUnderscoreBracketsAmpersandBarCommaAndFullStopAreTyped)
{
    const std::string accepted =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789 _()&|,.";
    auto ui = makePanel();
    const int row = ui->addEditText("Name", "", 80);
    focusPanel(*ui);
    for (int key = 1; key < 256; ++key) {
        if (key == LGLUI::KEY_BACKSPACE || key == LGLUI::KEY_DELETE)
            continue;
        ui->setUIString(row, "");
        ui->elements[row].cursor = 0;
        ui->valueChanged = false;
        ui->registerStandardKeys(static_cast<unsigned char>(key));
        ui->handle();
        const bool expected = accepted.find(static_cast<char>(key)) != std::string::npos;
        EXPECT_EQ(textOf(*ui, row), expected ? std::string(1, static_cast<char>(key)) : std::string()) << "key " << key;
        EXPECT_EQ(ui->valueChanged, expected) << "key " << key;
        EXPECT_EQ(LGLUI::isEditTextCharacter(static_cast<unsigned char>(key)), expected) << "key " << key;
    }
}

TEST_F(UITest, CursorKeysMoveTheCursorWithinTheText)
{
    auto ui = makePanel();
    const int row = ui->addEditText("Name", "abc", 80);
    focusPanel(*ui);
    specialKeyAndFrame(*ui, LGLUI::KEY_RIGHT);
    EXPECT_EQ(ui->elements[row].cursor, 3);
    EXPECT_TRUE(ui->keyUsed);
    EXPECT_FALSE(ui->valueChanged);
    for (int i = 0; i < 4; ++i)
        specialKeyAndFrame(*ui, LGLUI::KEY_LEFT);
    EXPECT_EQ(ui->elements[row].cursor, 0);
    specialKeyAndFrame(*ui, LGLUI::KEY_RIGHT);
    typeAndFrame(*ui, 'X');
    EXPECT_EQ(textOf(*ui, row), "aXbc");
    EXPECT_EQ(ui->elements[row].cursor, 2);
}

TEST_F(UITest, DeleteRemovesTheCharacterAtTheCursorAndNothingAtTheEnd)
{
    auto ui = makePanel();
    const int row = ui->addEditText("Name", "abc", 80);
    focusPanel(*ui);
    ui->valueChanged = false;
    typeAndFrame(*ui, LGLUI::KEY_DELETE);
    EXPECT_EQ(textOf(*ui, row), "abc");
    EXPECT_FALSE(ui->valueChanged);
    specialKeyAndFrame(*ui, LGLUI::KEY_LEFT);
    specialKeyAndFrame(*ui, LGLUI::KEY_LEFT);
    typeAndFrame(*ui, LGLUI::KEY_DELETE);
    EXPECT_EQ(textOf(*ui, row), "ac");
    EXPECT_EQ(ui->elements[row].cursor, 1);
    EXPECT_TRUE(ui->valueChanged);
    EXPECT_TRUE(ui->keyUsed);
}

TEST_F(UITest, BackspaceRemovesTheCharacterBeforeTheCursor)
{
    auto ui = makePanel();
    const int row = ui->addEditText("Name", "abc", 80);
    focusPanel(*ui);
    specialKeyAndFrame(*ui, LGLUI::KEY_LEFT);
    ui->valueChanged = false;
    typeAndFrame(*ui, LGLUI::KEY_BACKSPACE);
    EXPECT_EQ(textOf(*ui, row), "ac");
    EXPECT_EQ(ui->elements[row].cursor, 1);
    EXPECT_TRUE(ui->valueChanged);
    EXPECT_TRUE(ui->keyUsed);
}

TEST_F(UITest, BackspaceWithTheCursorAtZeroChangesNothing)
{
    auto ui = makePanel();
    const int row = ui->addEditText("Name", "abc", 80);
    focusPanel(*ui);
    for (int i = 0; i < 3; ++i)
        specialKeyAndFrame(*ui, LGLUI::KEY_LEFT);
    ui->valueChanged = false;
    typeAndFrame(*ui, LGLUI::KEY_BACKSPACE);
    EXPECT_EQ(textOf(*ui, row), "abc");
    EXPECT_EQ(ui->elements[row].cursor, 0);
    EXPECT_FALSE(ui->valueChanged);
    EXPECT_FALSE(ui->keyUsed);
}

TEST_F(UITest, ACursorPastAShortenedTextIsTakenBackToTheEnd)
{
    auto ui = makePanel();
    const int row = ui->addEditText("Name", "abcdef", 80);
    focusPanel(*ui);
    ui->setUIString(row, "ab");
    typeAndFrame(*ui, 'c');
    EXPECT_EQ(textOf(*ui, row), "abc");
    EXPECT_EQ(ui->elements[row].cursor, 3);
}

TEST_F(UITest, TheCaretStandsAfterTheFirstCursorCharactersInBlack)
{
    auto ui = makePanel();
    const int row = ui->addEditText("Name", "Hello", 80);
    focusPanel(*ui);
    specialKeyAndFrame(*ui, LGLUI::KEY_LEFT);
    specialKeyAndFrame(*ui, LGLUI::KEY_LEFT);  // cursor 3
    const auto items = recordFeedback([&] { ui->render(); });
    const auto black = linesOfColour(items, 0, 0, 0, 1);
    ASSERT_EQ(black.size(), 1u);
    const int caretX = ui->x + ui->padding.left + ui->labelWidth + sumOfWidths(ui->font.fonts[0], "Hel");
    const int caretTop = baselineOf(*ui, row) + 2 + 2 - 16;
    EXPECT_TRUE(sameBox(pixelBounds(black[0]), {caretX, caretTop, caretX, caretTop + 16}));
}

TEST_F(UITest, TheCaretBlinksOnceASecondFromTheLastCursorMovement)
{
    auto ui = makePanel();
    const int row = ui->addEditText("Name", "Hi", 80);
    focusPanel(*ui);
    const int moved = fakeNow;
    specialKeyAndFrame(*ui, LGLUI::KEY_LEFT);  // cursor 1
    const int caretX = ui->x + ui->padding.left + ui->labelWidth + sumOfWidths(ui->font.fonts[0], "H");
    const int middle = baselineOf(*ui, row) + 4 - 16 + 8;
    const struct {
        int after;
        bool shown;
    } times[] = {{0, true}, {250, true}, {499, true}, {500, false}, {999, false}, {1000, true}, {1700, false}};
    for (const auto& t : times) {
        fakeNow = moved + t.after;
        glClear(GL_COLOR_BUFFER_BIT);
        ui->render();
        if (t.shown)
            EXPECT_LT(darkestAround(caretX, middle), 40) << t.after << " ms";
        else
            EXPECT_GT(darkestAround(caretX, middle), 150) << t.after << " ms";
    }
    // Typing moves the caret and restarts the blink.
    fakeNow = moved + 1700;
    typeAndFrame(*ui, 'a');
    glClear(GL_COLOR_BUFFER_BIT);
    ui->render();
    const int newX = ui->x + ui->padding.left + ui->labelWidth + sumOfWidths(ui->font.fonts[0], "Ha");
    EXPECT_LT(darkestAround(newX, middle), 40);
}

TEST_F(UITest, NoCaretIsDrawnOnARowThatIsNotCurrentOrInAnUnfocusedPanel)
{
    auto ui = makePanel();
    ui->addEditText("Name", "Hi", 80);
    ui->addButton("B");
    focusPanel(*ui);
    EXPECT_EQ(linesOfColour(recordFeedback([&] { ui->render(); }), 0, 0, 0, 1).size(), 1u);
    specialKeyAndFrame(*ui, LGLUI::KEY_DOWN);
    EXPECT_TRUE(linesOfColour(recordFeedback([&] { ui->render(); }), 0, 0, 0, 1).empty());
    specialKeyAndFrame(*ui, LGLUI::KEY_UP);
    press(*ui, 630, 470);
    EXPECT_FALSE(ui->focused);
    EXPECT_TRUE(linesOfColour(recordFeedback([&] { ui->render(); }), 0, 0, 0, 1).empty());
}

TEST_F(UITest, AnEditTextShowsItsTextInAFieldWithoutArrows)
{
    auto ui = makePanel();
    ui->addButton("B");
    const int row = ui->addEditText("Name", "Text", 80);
    const auto items = recordFeedback([&] { ui->render(); });
    EXPECT_TRUE(hasRect(items, 1, 1, 1, 0.8, fieldOf(*ui, row)));
    EXPECT_EQ(ui->elements[row].numHotRects, 1);
    const auto bitmaps = bitmapsOf(items);
    EXPECT_NE(bitmapAt(bitmaps, ui->x + ui->padding.left, baselineOf(*ui, row)), nullptr);
    EXPECT_NE(bitmapAt(bitmaps, ui->x + ui->padding.left + ui->labelWidth, baselineOf(*ui, row)), nullptr);
    EXPECT_TRUE(polygonBoxes(items, 0.3, 0.3, 0.3, 0.8).empty());
}

// ================================================================ list box

TEST_F(UITest, ClickingItem3OfAnOpenPopUpSetsTheListBoxsValueTo3)
{
    auto ui = makePanel();
    std::vector<std::string> items = fiveItems();
    const int row = ui->addListBox("Choice", items, 0);
    for (int i = 0; i < 4; ++i)
        ui->addEditText("Text " + std::to_string(i), "", 150);
    ui->render();
    const Box marker = markerOf(*ui, row);
    clickAndFrame(*ui, marker.centreX(), marker.centreY());
    ASSERT_TRUE(ui->editing);
    ASSERT_EQ(ui->current, row);
    const Box item = popUpItemOf(*ui, row, 3);
    ui->valueChanged = false;
    press(*ui, item.centreX(), item.centreY());
    EXPECT_EQ(ui->hotId, LGLUI::HOT_POPUP_ITEM + 3);
    frame(*ui);
    EXPECT_EQ(valueOf(*ui, row), 3);
    EXPECT_TRUE(ui->valueChanged);
    EXPECT_TRUE(ui->popupOpen);
    // The release closes the pop-up.
    release(*ui, item.centreX(), item.centreY());
    EXPECT_FALSE(ui->editing);
    EXPECT_FALSE(ui->popupOpen);
    frame(*ui);
    EXPECT_EQ(valueOf(*ui, row), 3);
    EXPECT_EQ(ui->elements[row].numHotRects, 2);  // field and marker: no pop-up any more
}

TEST_F(UITest, ARowBelowAnOpenPopUpTakesAPressOnItsFieldUnderTheItem)
{
    // Later hits win: a spinner's field lying under the pop-up takes the press.
    auto ui = makePanel();
    std::vector<std::string> items = fiveItems();
    ui->addListBox("Choice", items, 0);
    ui->addNumberSpinner("Number", 0, 10, 1, 0);
    ui->addEditText("Wide", "", 150);
    focusPanel(*ui);
    specialKeyAndFrame(*ui, LGLUI::KEY_RIGHT);
    const Box item = popUpItemOf(*ui, 0, 1);
    const Box field = fieldOf(*ui, 1);
    const int px = std::max(item.left, field.left) + 1;
    const int py = std::max(item.top, field.top) + 1;
    ASSERT_TRUE(px <= std::min(item.right, field.right) && py <= std::min(item.bottom, field.bottom));
    press(*ui, px, py);
    EXPECT_EQ(ui->current, 1);
    EXPECT_EQ(ui->hotId, LGLUI::HOT_FIELD);
    EXPECT_FALSE(ui->editing);
}

TEST_F(UITest, TheRightKeyOrTheMarkerOpensThePopUpAndTheLeftKeyOrEnterClosesIt)
{
    auto ui = makePanel();
    std::vector<std::string> items = fiveItems();
    ui->addListBox("Choice", items, 2);
    focusPanel(*ui);
    specialKeyAndFrame(*ui, LGLUI::KEY_RIGHT);
    EXPECT_TRUE(ui->editing);
    EXPECT_TRUE(ui->keyUsed);
    specialKeyAndFrame(*ui, LGLUI::KEY_LEFT);
    EXPECT_FALSE(ui->editing);
    EXPECT_TRUE(ui->keyUsed);
    const Box marker = markerOf(*ui, 0);
    clickAndFrame(*ui, marker.centreX(), marker.centreY());
    EXPECT_TRUE(ui->editing);
    typeAndFrame(*ui, LGLUI::KEY_ENTER);
    EXPECT_FALSE(ui->editing);
    EXPECT_EQ(valueOf(*ui, 0), 2);
}

TEST_F(UITest, UpAndDownStepThroughTheItemsOfAnOpenPopUpWithinItsEnds)
{
    auto ui = makePanel();
    std::vector<std::string> items = {"a", "b", "c"};
    ui->addListBox("Choice", items, 1);
    focusPanel(*ui);
    specialKeyAndFrame(*ui, LGLUI::KEY_RIGHT);
    ui->valueChanged = false;
    specialKeyAndFrame(*ui, LGLUI::KEY_DOWN);
    EXPECT_EQ(valueOf(*ui, 0), 2);
    EXPECT_TRUE(ui->valueChanged);
    specialKeyAndFrame(*ui, LGLUI::KEY_DOWN);
    EXPECT_EQ(valueOf(*ui, 0), 2);
    for (int i = 0; i < 4; ++i)
        specialKeyAndFrame(*ui, LGLUI::KEY_UP);
    EXPECT_EQ(valueOf(*ui, 0), 0);
    EXPECT_EQ(ui->spinDirection, 0);
    EXPECT_EQ(ui->current, 0);
}

TEST_F(UITest, TheMarkerShowsOnlyOnTheCurrentListBox20PixelsLeftOfItsField)
{
    auto ui = makePanel();
    std::vector<std::string> items = {"a", "b"};
    ui->addListBox("First", items, 0);
    ui->addListBox("Second", items, 1);
    const auto items0 = recordFeedback([&] { ui->render(); });
    const auto fills = mergeTouching(polygonBoxes(items0, 0.3, 0.3, 0.3, 0.8));
    ASSERT_EQ(fills.size(), 1u);
    EXPECT_TRUE(sameBox(fills[0], markerOf(*ui, 0)));
    ASSERT_EQ(ui->elements[0].numHotRects, 2);
    EXPECT_EQ(ui->elements[0].hotIds[1], LGLUI::HOT_RIGHT_ARROW);
    EXPECT_EQ(ui->elements[0].hotRects[1].left, markerOf(*ui, 0).left);
    EXPECT_EQ(ui->elements[1].numHotRects, 1);
    // The selected item is written in the value column.
    const auto bitmaps = bitmapsOf(items0);
    const BitmapAt* value = bitmapAt(bitmaps, ui->x + ui->padding.left + ui->labelWidth, baselineOf(*ui, 1));
    EXPECT_NE(value, nullptr);
}

TEST_F(UITest, TheOpenPopUpIsDrawnAfterAllRowsWithItsHotAreas)
{
    auto ui = makePanel();
    std::vector<std::string> items = {"red", "green", "blue"};
    const int row = ui->addListBox("Colour", items, 1);
    ui->addEditText("Name", "", 150);
    ui->addNumberSpinner("N", 0, 10, 1, 0);
    focusPanel(*ui);
    specialKeyAndFrame(*ui, LGLUI::KEY_RIGHT);
    const auto feedback = recordFeedback([&] { ui->render(); });
    const Box pane = popUpOf(*ui, row);
    EXPECT_EQ(pane.bottom - pane.top, 3 * ui->rowHeight);
    // The last polygons of the frame are the pop-up's: shadow, pane, then the highlight.
    const auto polygons = ostrum_test::itemsOf(feedback, GL_POLYGON_TOKEN);
    ASSERT_GE(polygons.size(), 6u);
    const size_t n = polygons.size();
    EXPECT_TRUE(sameBox(mergeTouching({pixelBounds(polygons[n - 6]), pixelBounds(polygons[n - 5])})[0],
                        {pane.left + 3, pane.top + 2, pane.right + 3, pane.bottom + 2}));
    EXPECT_TRUE(sameBox(mergeTouching({pixelBounds(polygons[n - 4]), pixelBounds(polygons[n - 3])})[0],
                        {pane.left, pane.top, pane.right, pane.bottom}));
    EXPECT_TRUE(colourIs(polygons[n - 4].vertices[0], 0.9, 0.9, 0.9, 1.0));
    EXPECT_TRUE(sameBox(mergeTouching({pixelBounds(polygons[n - 2]), pixelBounds(polygons[n - 1])})[0],
                        popUpItemOf(*ui, row, 1)));
    EXPECT_TRUE(colourIs(polygons[n - 2].vertices[0], 1, 1, 1, 0.8));
    // Hot areas: field, marker, the pop-up (4) and item i (10 + i).
    const LGLUI::tElement& e = ui->elements[row];
    ASSERT_EQ(e.numHotRects, 6);
    EXPECT_EQ(e.hotIds[0], LGLUI::HOT_FIELD);
    EXPECT_EQ(e.hotIds[1], LGLUI::HOT_RIGHT_ARROW);
    EXPECT_EQ(e.hotIds[2], LGLUI::HOT_POPUP);
    EXPECT_TRUE(sameBox({e.hotRects[2].left, e.hotRects[2].top, e.hotRects[2].right, e.hotRects[2].bottom}, pane));
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(e.hotIds[3 + i], LGLUI::HOT_POPUP_ITEM + i);
        const tRect& r = e.hotRects[3 + i];
        EXPECT_TRUE(sameBox({r.left, r.top, r.right, r.bottom}, popUpItemOf(*ui, row, i))) << "item " << i;
    }
    // The items are written half a font size in, one per row height.
    const auto bitmaps = bitmapsOf(feedback);
    for (int i = 0; i < 3; ++i) {
        const Box band = popUpItemOf(*ui, row, i);
        const int baseline = static_cast<int>((band.top + 1 + ui->fontSize) - (ui->fontSize + 0.5) / 5);
        EXPECT_NE(bitmapAt(bitmaps, pane.left + ui->fontSize / 2, baseline), nullptr) << "item " << i;
    }
}

TEST_F(UITest, APopUpOfManyItemsRegistersNoMoreThanTheRowsTwoHundredHotAreas)
{
    auto ui = makePanel();
    std::vector<std::string> items;
    for (int i = 0; i < 250; ++i)
        items.push_back("item " + std::to_string(i));
    ui->addListBox("Many", items, 0);
    focusPanel(*ui);
    specialKeyAndFrame(*ui, LGLUI::KEY_RIGHT);
    const LGLUI::tElement& e = ui->elements[0];
    ASSERT_EQ(e.numHotRects, LGLUI::MAX_HOT_RECTS);
    EXPECT_EQ(e.hotIds[2], LGLUI::HOT_POPUP);
    EXPECT_EQ(e.hotIds[199], LGLUI::HOT_POPUP_ITEM + 196);
    // The first items still answer the mouse.
    const Box item = popUpItemOf(*ui, 0, 2);
    press(*ui, item.centreX(), item.centreY());
    frame(*ui);
    EXPECT_EQ(valueOf(*ui, 0), 2);
}

TEST_F(UITest, APopUpLeavesThePaneColourOpaque)
{
    auto ui = makePanel();
    std::vector<std::string> items = {"a", "b"};
    ui->addListBox("Choice", items, 0);
    focusPanel(*ui);
    EXPECT_DOUBLE_EQ(ui->paneColor.a, 0.8);
    specialKeyAndFrame(*ui, LGLUI::KEY_RIGHT);
    EXPECT_DOUBLE_EQ(ui->paneColor.a, 1.0);
    specialKeyAndFrame(*ui, LGLUI::KEY_LEFT);
    const auto feedback = recordFeedback([&] { ui->render(); });
    EXPECT_TRUE(hasRect(feedback, 0.9, 0.9, 0.9, 1.0, {ui->x, ui->y, ui->x + ui->width, ui->y + ui->height}));
    EXPECT_DOUBLE_EQ(ui->paneColor.a, 1.0);
}

TEST_F(UITest, RenderListBoxPopUpDrawsThePopUpOfAnyRowItIsGiven)
{
    auto ui = makePanel(200, 10);
    std::vector<std::string> items = {"a", "b"};
    ui->addButton("B");
    ui->addListBox("Choice", items, 0);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(0, 640, 480, 0, -1, 1);
    glMatrixMode(GL_MODELVIEW);
    const auto feedback = recordFeedback([&] { ui->renderListBoxPopUp(1); });
    EXPECT_TRUE(hasRect(feedback, 0.9, 0.9, 0.9, 1.0, popUpOf(*ui, 1)));
    EXPECT_EQ(ui->elements[1].numHotRects, 3);  // the pop-up and its two items
}

// ================================================================ list spinner

TEST_F(UITest, AListSpinnerAtItsLastItemStaysThereOnAFurtherRightStep)
{
    auto ui = makePanel();
    std::vector<std::string> items = {"a", "b", "c"};
    ui->addListSpinner("Mode", items, 2);
    focusPanel(*ui);
    specialKeyAndFrame(*ui, LGLUI::KEY_RIGHT);
    EXPECT_EQ(valueOf(*ui, 0), 2);
    EXPECT_TRUE(ui->keyUsed);
}

TEST_F(UITest, AListSpinnerStepsWithItsKeysAndArrowsWithoutWrapping)
{
    auto ui = makePanel();
    std::vector<std::string> items = {"a", "b", "c"};
    ui->addListSpinner("Mode", items, 0);
    focusPanel(*ui);
    ui->valueChanged = false;
    specialKeyAndFrame(*ui, LGLUI::KEY_LEFT);
    EXPECT_EQ(valueOf(*ui, 0), 0);
    specialKeyAndFrame(*ui, LGLUI::KEY_RIGHT);
    EXPECT_EQ(valueOf(*ui, 0), 1);
    EXPECT_TRUE(ui->valueChanged);
    const Box right = rightArrowOf(*ui, 0);
    clickAndFrame(*ui, right.centreX(), right.centreY());
    EXPECT_EQ(valueOf(*ui, 0), 2);
    const Box left = leftArrowOf(*ui, 0);
    clickAndFrame(*ui, left.centreX(), left.centreY());
    clickAndFrame(*ui, left.centreX(), left.centreY());
    clickAndFrame(*ui, left.centreX(), left.centreY());
    EXPECT_EQ(valueOf(*ui, 0), 0);
}

TEST_F(UITest, AListSpinnerWithoutItemsNeverSteps)
{
    auto ui = makePanel();
    std::vector<std::string> none;
    ui->addListSpinner("Mode", none, 0);
    focusPanel(*ui);
    ui->valueChanged = false;
    specialKeyAndFrame(*ui, LGLUI::KEY_RIGHT);
    EXPECT_EQ(valueOf(*ui, 0), 0);
    EXPECT_FALSE(ui->valueChanged);
}

TEST_F(UITest, AListSpinnerShowsBothArrowsOnlyWhileCurrent)
{
    auto ui = makePanel();
    std::vector<std::string> items = {"a", "b"};
    ui->addListSpinner("First", items, 0);
    ui->addListSpinner("Second", items, 1);
    const auto feedback = recordFeedback([&] { ui->render(); });
    const auto fills = mergeTouching(polygonBoxes(feedback, 0.3, 0.3, 0.3, 0.8));
    ASSERT_EQ(fills.size(), 2u);
    EXPECT_TRUE(hasBox(fills, leftArrowOf(*ui, 0)));
    EXPECT_TRUE(hasBox(fills, rightArrowOf(*ui, 0)));
    EXPECT_EQ(ui->elements[0].numHotRects, 3);
    EXPECT_EQ(ui->elements[0].hotIds[1], LGLUI::HOT_LEFT_ARROW);
    EXPECT_EQ(ui->elements[0].hotIds[2], LGLUI::HOT_RIGHT_ARROW);
    EXPECT_EQ(ui->elements[1].numHotRects, 1);
}

// ================================================================ number spinner

TEST_F(UITest, ANumberSpinnerAddedBelowItsMinimumStartsAtTheMinimum)
{
    auto ui = makePanel();
    ui->addNumberSpinner("N", 5, 50, 1, -3);
    EXPECT_DOUBLE_EQ(ui->elements[0].value, 5.0);
    ui->addNumberSpinner("NaN", 5, 50, 1, std::numeric_limits<double>::quiet_NaN());
    EXPECT_DOUBLE_EQ(ui->elements[1].value, 5.0);
}

TEST_F(UITest, ANumberSpinnerAddedAboveItsMaximumStartsAtTheMaximum)
{
    auto ui = makePanel();
    ui->addNumberSpinner("N", 5, 50, 1, 80);
    EXPECT_DOUBLE_EQ(ui->elements[0].value, 50.0);
    ui->addNumberSpinner("Inside", 5, 50, 1, 20);
    EXPECT_DOUBLE_EQ(ui->elements[1].value, 20.0);
    EXPECT_DOUBLE_EQ(ui->elements[1].minValue, 5.0);
    EXPECT_DOUBLE_EQ(ui->elements[1].maxValue, 50.0);
    EXPECT_DOUBLE_EQ(ui->elements[1].stepValue, 1.0);
}

TEST_F(UITest, ANumberSpinnerStepsByItsStepWithinItsRange)
{
    auto ui = makePanel();
    ui->addNumberSpinner("N", 0, 10, 4, 2);
    focusPanel(*ui);
    specialKeyAndFrame(*ui, LGLUI::KEY_RIGHT);
    EXPECT_DOUBLE_EQ(ui->elements[0].value, 6.0);
    EXPECT_TRUE(ui->valueChanged);
    specialKeyAndFrame(*ui, LGLUI::KEY_RIGHT);
    EXPECT_DOUBLE_EQ(ui->elements[0].value, 10.0);
    specialKeyAndFrame(*ui, LGLUI::KEY_RIGHT);
    EXPECT_DOUBLE_EQ(ui->elements[0].value, 10.0);
    ui->setUIStepValue(0, 7);
    const Box left = leftArrowOf(*ui, 0);
    clickAndFrame(*ui, left.centreX(), left.centreY());
    EXPECT_DOUBLE_EQ(ui->elements[0].value, 3.0);
    clickAndFrame(*ui, left.centreX(), left.centreY());
    EXPECT_DOUBLE_EQ(ui->elements[0].value, 0.0);
}

TEST_F(UITest, ANumberSpinnerShowsItsValueAsDecimalText)
{
    auto ui = makePanel();
    ui->addNumberSpinner("N", 0, 10, 0.5, 2.5);
    const auto feedback = recordFeedback([&] { ui->render(); });
    const int valueX = ui->x + ui->padding.left + ui->labelWidth;
    const int baseline = baselineOf(*ui, 0);
    std::vector<int> xs;
    for (const BitmapAt& b : bitmapsOf(feedback))
        if (b.y == baseline && b.x >= valueX)
            xs.push_back(b.x);
    const LGLFont::GLGLFont& f = ui->font.fonts[0];
    const int two = f.widths[font_test::code('2')];
    const int point = f.widths[font_test::code('.')];
    EXPECT_EQ(xs, (std::vector<int>{valueX, valueX + two, valueX + two + point}));
}

// ================================================================ value field

TEST_F(UITest, TheValueFieldSpansTheValueColumnAndIsShadedOnTheCurrentRow)
{
    auto ui = makePanel();
    std::vector<std::string> items = {"a", "b"};
    ui->addListSpinner("First", items, 0);
    ui->addNumberSpinner("Second", 0, 10, 1, 0);
    const auto feedback = recordFeedback([&] { ui->render(); });
    const Box first = fieldOf(*ui, 0);
    const Box second = fieldOf(*ui, 1);
    EXPECT_EQ(first.left, ui->x + ui->labelWidth + 8 - 4);
    EXPECT_EQ(first.right - first.left, ui->width - 8 - ui->labelWidth - 8);
    EXPECT_EQ(first.bottom - first.top, 2 + 2 + 16);
    EXPECT_TRUE(hasRect(feedback, 0.9, 0.9, 0.9, 0.8, first));
    EXPECT_TRUE(hasRect(feedback, 1.0, 1.0, 1.0, 0.8, second));
    ASSERT_GE(ui->elements[1].numHotRects, 1);
    EXPECT_EQ(ui->elements[1].hotIds[0], LGLUI::HOT_FIELD);
    EXPECT_EQ(ui->elements[1].hotRects[0].top, second.top);
    EXPECT_EQ(ui->elements[1].hotRects[0].right, second.right);
}

TEST_F(UITest, ArrowsAreFilledThenOutlinedInGreyAndPointOutwards)
{
    auto ui = makePanel();
    ui->addNumberSpinner("N", 0, 10, 1, 0);
    const auto feedback = recordFeedback([&] { ui->render(); });
    const Box left = leftArrowOf(*ui, 0);
    const Box right = rightArrowOf(*ui, 0);
    std::vector<FeedbackItem> fills;
    for (const FeedbackItem& p : ostrum_test::itemsOf(feedback, GL_POLYGON_TOKEN))
        if (colourIs(p.vertices[0], 0.3, 0.3, 0.3, 0.8))
            fills.push_back(p);
    ASSERT_EQ(fills.size(), 2u);
    EXPECT_TRUE(sameBox(pixelBounds(fills[0]), left));
    EXPECT_TRUE(sameBox(pixelBounds(fills[1]), right));
    // The left arrow's tip is its leftmost vertex, at mid height; the right arrow's its rightmost.
    const FeedbackVertex& leftTip = fills[0].vertices[1];
    EXPECT_NEAR(leftTip.x, left.left, 0.01);
    EXPECT_NEAR(kWindowHeight - leftTip.y, (left.top + left.bottom) / 2.0, 0.01);
    const FeedbackVertex& rightTip = fills[1].vertices[1];
    EXPECT_NEAR(rightTip.x, right.right, 0.01);
    // Each outline is three grey lines over the same triangle.
    const auto outlines = linesOfColour(feedback, 0.6, 0.6, 0.6, 0.8);
    std::vector<Box> leftLines, rightLines;
    for (const FeedbackItem& line : outlines) {
        const Box b = pixelBounds(line);
        if (b.left >= left.left && b.right <= left.right && b.top >= left.top && b.bottom <= left.bottom)
            leftLines.push_back(b);
        if (b.left >= right.left && b.right <= right.right && b.top >= right.top && b.bottom <= right.bottom)
            rightLines.push_back(b);
    }
    EXPECT_EQ(leftLines.size(), 3u);
    EXPECT_EQ(rightLines.size(), 3u);
    EXPECT_TRUE(sameBox(mergeTouching(leftLines)[0], left));
    EXPECT_TRUE(sameBox(mergeTouching(rightLines)[0], right));
}

TEST_F(UITest, RenderValueFieldPaneRestoresFillModeLineWidthBlendingAndWhite)
{
    auto ui = makePanel();
    ui->addNumberSpinner("N", 0, 10, 1, 0);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(0, 640, 480, 0, -1, 1);
    glMatrixMode(GL_MODELVIEW);
    ui->renderValueFieldPane(0, true, true);
    GLint modes[2] = {0, 0};
    glGetIntegerv(GL_POLYGON_MODE, modes);
    EXPECT_EQ(modes[0], GL_FILL);
    EXPECT_EQ(modes[1], GL_FILL);
    GLfloat lineWidth = 0;
    glGetFloatv(GL_LINE_WIDTH, &lineWidth);
    EXPECT_FLOAT_EQ(lineWidth, 1.0f);
    EXPECT_FALSE(glIsEnabled(GL_BLEND));
    GLfloat colour[4];
    glGetFloatv(GL_CURRENT_COLOR, colour);
    EXPECT_FLOAT_EQ(colour[0], 1.0f);
    EXPECT_FLOAT_EQ(colour[3], 1.0f);
    EXPECT_EQ(ui->elements[0].numHotRects, 3);
}

TEST_F(UITest, TheCurrentFieldShowsItsShadedColourInPixels)
{
    auto ui = makePanel();
    std::vector<std::string> items = {"a", "b"};
    ui->addListSpinner("First", items, 0);
    ui->addListSpinner("Second", items, 0);
    glClearColor(0, 0, 0, 0);
    glClear(GL_COLOR_BUFFER_BIT);
    ui->render();
    const double pane = 0.9 * 0.8 + 0.1 * 0.4 * 0.2;
    // Near the right end of each field, clear of the value text.
    const Box first = fieldOf(*ui, 0);
    const Box second = fieldOf(*ui, 1);
    EXPECT_NEAR(redAt(first.right - 3, first.top + 2), (0.9 * 0.8 + pane * 0.2) * 255, 2.0);
    EXPECT_NEAR(redAt(second.right - 3, second.top + 2), (1.0 * 0.8 + pane * 0.2) * 255, 2.0);
}
