// LGLPlatform.h -- what ostrum_gl needs from the operating system, and nothing more.
//
// The library's classes were designed around a handful of desktop calls: a message box for set-up
// faults, a quit request, the lookup of OpenGL extension entry points and the screen cursor. This is
// the one contract through which the rest of the library reaches them; the implementation for X11,
// GLX and freeglut lives in src/platform/ and is the only code that includes those headers.
//
//  message boxes   never block. The default handler writes one line "caption: text" to standard
//                  error; a game installs its own with setMessageHandler (nullptr restores the default).
//  quit requests   glutLeaveMainLoop(): the game's glutMainLoop returns.
//  entry points    glXGetProcAddressARB; null when the name is unknown to the driver.
//  screen cursor   XQueryPointer / XWarpPointer on the root window of the default display, in screen
//                  pixels. Without an X display getCursorPos leaves (0, 0) and returns false and
//                  setCursorPos does nothing.
#pragma once

#include <string>

class LGLPlatform {
public:
    using MessageHandler = void (*)(const std::string& text, const std::string& caption);

    // Shows a message to the player; never blocks.
    static void messageBox(const std::string& text, const std::string& caption);
    static void setMessageHandler(MessageHandler handler);

    // Asks the game's main loop to return.
    static void postQuit();

    // Address of an OpenGL entry point of the current context's driver, or nullptr.
    static void* getProcAddress(const char* name);

    // The pointer's position in screen pixels; false when no display could be reached.
    static bool getCursorPos(int& x, int& y);
    static void setCursorPos(int x, int y);
};
