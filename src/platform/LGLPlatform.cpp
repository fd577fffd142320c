// LGLPlatform.cpp -- the Linux implementation of the platform contract: X11, GLX and freeglut.
#include <ostrum_gl/platform/LGLPlatform.h>

#include <GL/freeglut.h>
#include <GL/glx.h>
#include <X11/Xlib.h>

#include <cstdio>

namespace {

void writeToStandardError(const std::string& text, const std::string& caption)
{
    std::fprintf(stderr, "%s: %s\n", caption.c_str(), text.c_str());
    std::fflush(stderr);
}

LGLPlatform::MessageHandler messageHandler = writeToStandardError;

// The display used for the screen cursor; opened on first use and kept for the life of the process.
Display* cursorDisplay()
{
    static Display* display = XOpenDisplay(nullptr);
    return display;
}

}  // namespace

void LGLPlatform::messageBox(const std::string& text, const std::string& caption)
{
    messageHandler(text, caption);
}

void LGLPlatform::setMessageHandler(MessageHandler handler)
{
    messageHandler = handler ? handler : writeToStandardError;
}

void LGLPlatform::postQuit()
{
    // freeglut ends the process when glutLeaveMainLoop is called before glutInit; a quit request
    // without a running GLUT has nothing to stop.
    if (glutGet(GLUT_INIT_STATE))
        glutLeaveMainLoop();
}

void* LGLPlatform::getProcAddress(const char* name)
{
    if (name == nullptr)
        return nullptr;
    return reinterpret_cast<void*>(glXGetProcAddressARB(reinterpret_cast<const GLubyte*>(name)));
}

bool LGLPlatform::getCursorPos(int& x, int& y)
{
    x = 0;
    y = 0;
    Display* display = cursorDisplay();
    if (display == nullptr)
        return false;
    Window root = DefaultRootWindow(display);
    Window rootReturn = 0, childReturn = 0;
    int rootX = 0, rootY = 0, winX = 0, winY = 0;
    unsigned int mask = 0;
    if (!XQueryPointer(display, root, &rootReturn, &childReturn, &rootX, &rootY, &winX, &winY, &mask))
        return false;
    x = rootX;
    y = rootY;
    return true;
}

void LGLPlatform::setCursorPos(int x, int y)
{
    Display* display = cursorDisplay();
    if (display == nullptr)
        return;
    XWarpPointer(display, None, DefaultRootWindow(display), 0, 0, 0, 0, x, y);
    XFlush(display);
}
