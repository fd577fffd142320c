// LGLMenuKeyboardTest.cpp -- LGLMenu's shortcuts from real key presses: XTest presses keys on the X
// server, GLUT delivers them to the test window's keyboard and special-key callbacks, and those
// forward to the menu, which reads the held modifiers from GLUT inside the callback.
#include <ostrum_gl/interface/LGLMenu.h>

#include "LGLMenuTestHelpers.h"

#include <GL/freeglut.h>
#include <GL/glx.h>
#include <X11/Xlib.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>
#include <unistd.h>

#include <vector>

using namespace menu_test;

namespace {

// What GLUT handed to a callback.
struct Delivered {
    bool special = false;
    int key = -1;
    int modifiers = -1;
};

std::vector<Delivered>& delivered()
{
    static std::vector<Delivered> events;
    return events;
}

LGLMenu* target = nullptr;

void keyboardCallback(unsigned char key, int, int)
{
    delivered().push_back({false, key, glutGetModifiers()});
    if (target != nullptr)
        target->handleStandardKeys(key);
}

void specialCallback(int key, int, int)
{
    delivered().push_back({true, key, glutGetModifiers()});
    if (target != nullptr)
        target->handleSpecialKeys(key);
}

}  // namespace

// Holds the pointer lock (other test programs share the X server), gives the test window the
// keyboard focus and forwards its key callbacks to `menu`.
class LGLMenuKeyboardTest : public MenuTest {
protected:
    void SetUp() override
    {
        MenuTest::SetUp();
        display = glXGetCurrentDisplay();
        window = glXGetCurrentDrawable();
        ASSERT_NE(display, nullptr);
        ASSERT_NE(window, 0u);
        int eventBase = 0, errorBase = 0, major = 0, minor = 0;
        ASSERT_TRUE(XTestQueryExtension(display, &eventBase, &errorBase, &major, &minor))
            << "the X server has no XTEST extension";
        for (int i = 0; i < 400; ++i) {
            XWindowAttributes attributes;
            XGetWindowAttributes(display, window, &attributes);
            if (attributes.map_state == IsViewable)
                break;
            glutMainLoopEvent();
            usleep(5000);
        }
        XRaiseWindow(display, window);
        XSetInputFocus(display, window, RevertToParent, CurrentTime);
        XSync(display, False);
        Window focus = 0;
        int revert = 0;
        XGetInputFocus(display, &focus, &revert);
        ASSERT_EQ(focus, window) << "the test window did not get the keyboard focus";
        // Whatever was pending before the test is not this test's.
        ostrum_test::GLTestWindow::pumpEvents(5);

        delivered().clear();
        target = &menu;
        glutKeyboardFunc(keyboardCallback);
        glutSpecialFunc(specialCallback);
    }

    void TearDown() override
    {
        if (display != nullptr) {
            for (KeyCode code : held)
                XTestFakeKeyEvent(display, code, False, CurrentTime);
            held.clear();
            XSync(display, False);
            ostrum_test::GLTestWindow::pumpEvents(5);
            XSetInputFocus(display, PointerRoot, RevertToPointerRoot, CurrentTime);
            XSync(display, False);
        }
        glutKeyboardFunc(nullptr);
        glutSpecialFunc(nullptr);
        target = nullptr;
        delivered().clear();
        MenuTest::TearDown();
    }

    // Presses the keys in order, releases them in reverse order, and lets GLUT run until its
    // callback has seen `key` (a special key or a character); returns what GLUT delivered for it.
    Delivered type(std::vector<KeySym> chord, bool special, int key)
    {
        const size_t before = delivered().size();
        std::vector<KeyCode> codes;
        for (KeySym sym : chord) {
            const KeyCode code = XKeysymToKeycode(display, sym);
            if (code == 0) {
                ADD_FAILURE() << "no key for keysym " << sym;
                return {};
            }
            codes.push_back(code);
        }
        for (KeyCode code : codes) {
            XTestFakeKeyEvent(display, code, True, CurrentTime);
            held.push_back(code);
        }
        for (auto it = codes.rbegin(); it != codes.rend(); ++it) {
            XTestFakeKeyEvent(display, *it, False, CurrentTime);
            held.erase(std::find(held.begin(), held.end(), *it));
        }
        XSync(display, False);
        for (int round = 0; round < 400; ++round) {
            glutMainLoopEvent();
            for (size_t i = before; i < delivered().size(); ++i)
                if (delivered()[i].special == special && delivered()[i].key == key)
                    return delivered()[i];
            usleep(5000);
        }
        ADD_FAILURE() << "GLUT never delivered " << (special ? "special key " : "key ") << key;
        return {};
    }

    ostrum_test::PointerLock lock;
    LGLMenu menu;
    Display* display = nullptr;
    Window window = 0;
    std::vector<KeyCode> held;
};

TEST_F(LGLMenuKeyboardTest, CtrlSItemFiresOnCtrlSAndNotOnAPlainS)
{
    menu.addMenu("File");
    menu.addItem("Save [ctrl-s]", fire<1>);

    const Delivered plain = type({XK_s}, false, 's');
    EXPECT_EQ(plain.modifiers, 0);
    EXPECT_TRUE(fired().empty());

    const Delivered ctrl = type({XK_Control_L, XK_s}, false, 19);  // GLUT hands ctrl+s over as code 19
    EXPECT_EQ(ctrl.modifiers, GLUT_ACTIVE_CTRL);
    EXPECT_EQ(fired(), (std::vector<int>{1}));
}

TEST_F(LGLMenuKeyboardTest, F5ItemFiresOnSpecialKeyFiveAndNotOnTheCharacterFive)
{
    menu.addMenu("View");
    menu.addItem("Redraw [F5]", fire<1>);

    type({XK_5}, false, '5');
    EXPECT_TRUE(fired().empty());

    const Delivered f5 = type({XK_F5}, true, GLUT_KEY_F5);
    EXPECT_EQ(f5.modifiers, 0);
    EXPECT_EQ(fired(), (std::vector<int>{1}));
}

TEST_F(LGLMenuKeyboardTest, ShiftF5FiresTheShiftItemOnly)
{
    menu.addMenu("View");
    menu.addItem("Redraw [F5]", fire<1>);
    menu.addItem("Reload [shift-F5]", fire<2>);

    const Delivered shifted = type({XK_Shift_L, XK_F5}, true, GLUT_KEY_F5);
    EXPECT_EQ(shifted.modifiers, GLUT_ACTIVE_SHIFT);
    EXPECT_EQ(fired(), (std::vector<int>{2}));
    fired().clear();
    type({XK_F5}, true, GLUT_KEY_F5);
    EXPECT_EQ(fired(), (std::vector<int>{1}));
}

TEST_F(LGLMenuKeyboardTest, AltXFiresTheAltItemAndPlainXThePlainOne)
{
    menu.addMenu("File");
    menu.addItem("Quit [alt-x]", fire<1>);
    menu.addItem("Cross [x]", fire<2>);

    const Delivered alt = type({XK_Alt_L, XK_x}, false, 'x');
    EXPECT_EQ(alt.modifiers, GLUT_ACTIVE_ALT);
    EXPECT_EQ(fired(), (std::vector<int>{1}));
    fired().clear();
    type({XK_x}, false, 'x');
    EXPECT_EQ(fired(), (std::vector<int>{2}));
}

TEST_F(LGLMenuKeyboardTest, TwoItemsWithTheSameShortcutBothFire)
{
    menu.addMenu("File");
    menu.addItem("Save [ctrl-s]", fire<1>);
    menu.addItem("Open [ctrl-o]", fire<2>);
    menu.addMenu("Tools");
    menu.addItem("Snapshot [ctrl-s]", fire<3>);
    type({XK_Control_L, XK_s}, false, 19);
    EXPECT_EQ(fired(), (std::vector<int>{1, 3}));
}

TEST_F(LGLMenuKeyboardTest, DisabledItemDoesNotFireFromItsShortcut)
{
    menu.addMenu("File");
    menu.addItem("Save [ctrl-s]", fire<1>);
    menu.addItem("Redraw [F5]", fire<2>);
    menu.enableMenuItem(0, 0, false);
    menu.enableMenuItem(0, 1, false);
    type({XK_Control_L, XK_s}, false, 19);
    type({XK_F5}, true, GLUT_KEY_F5);
    EXPECT_TRUE(fired().empty());
}

TEST_F(LGLMenuKeyboardTest, CtrlShiftSFiresTheCtrlShiftItemOnly)
{
    menu.addMenu("File");
    menu.addItem("Save [ctrl-s]", fire<1>);
    menu.addItem("Save as [ctrl-shift-s]", fire<2>);
    const Delivered both = type({XK_Control_L, XK_Shift_L, XK_s}, false, 19);
    EXPECT_EQ(both.modifiers, GLUT_ACTIVE_CTRL | GLUT_ACTIVE_SHIFT);
    EXPECT_EQ(fired(), (std::vector<int>{2}));
}

TEST_F(LGLMenuKeyboardTest, ShiftedCharacterFiresTheItemNamingThatCharacter)
{
    menu.addMenu("File");
    menu.addItem("Bang [!]", fire<1>);
    menu.addItem("Shift one [shift-1]", fire<2>);
    menu.addItem("Shift a [shift-a]", fire<3>);
    const Delivered bang = type({XK_Shift_L, XK_1}, false, '!');
    EXPECT_EQ(bang.modifiers, GLUT_ACTIVE_SHIFT);
    EXPECT_EQ(fired(), (std::vector<int>{1}));
    fired().clear();
    type({XK_Shift_L, XK_a}, false, 'A');
    EXPECT_TRUE(fired().empty());
}

TEST_F(LGLMenuKeyboardTest, NamedAsciiKeysFire)
{
    menu.addMenu("Keys");
    menu.addItem("Close [esc]", fire<1>);
    menu.addItem("Accept [enter]", fire<2>);
    menu.addItem("Jump [space]", fire<3>);
    menu.addItem("Next [tab]", fire<4>);
    menu.addItem("Remove [delete]", fire<5>);
    type({XK_Escape}, false, 27);
    type({XK_Return}, false, 13);
    type({XK_space}, false, 32);
    type({XK_Tab}, false, 9);
    type({XK_Delete}, false, 127);
    EXPECT_EQ(fired(), (std::vector<int>{1, 2, 3, 4, 5}));
}

TEST_F(LGLMenuKeyboardTest, ArrowAndInsertKeysFire)
{
    menu.addMenu("Move");
    menu.addItem("Add [insert]", fire<1>);
    menu.addItem("Raise [up]", fire<2>);
    menu.addItem("Lower [down]", fire<3>);
    menu.addItem("East [right]", fire<4>);
    menu.addItem("West [left]", fire<5>);
    menu.addItem("Nudge west [ctrl-left]", fire<6>);
    type({XK_Insert}, true, GLUT_KEY_INSERT);
    type({XK_Up}, true, GLUT_KEY_UP);
    type({XK_Down}, true, GLUT_KEY_DOWN);
    type({XK_Right}, true, GLUT_KEY_RIGHT);
    type({XK_Left}, true, GLUT_KEY_LEFT);
    EXPECT_EQ(fired(), (std::vector<int>{1, 2, 3, 4, 5}));
    fired().clear();
    type({XK_Control_L, XK_Left}, true, GLUT_KEY_LEFT);
    EXPECT_EQ(fired(), (std::vector<int>{6}));
}

TEST_F(LGLMenuKeyboardTest, KeysAreIgnoredWhileTheMenuIsDisabled)
{
    menu.addMenu("File");
    menu.addItem("Save [ctrl-s]", fire<1>);
    menu.addItem("Redraw [F5]", fire<2>);
    menu.enabled = false;
    type({XK_Control_L, XK_s}, false, 19);
    type({XK_F5}, true, GLUT_KEY_F5);
    EXPECT_TRUE(fired().empty());
}
