// LGLApp.cpp -- window creation, full screen, mouse look and the reshape projection.
#include <ostrum_gl/frame/LGLApp.h>

#include <ostrum_gl/platform/LGLPlatform.h>

#include <GL/freeglut.h>
#include <GL/glu.h>

LGLApp::LGLApp()
    : windowId(0),
      screenWidth(0),
      screenHeight(0),
      screenCentreX(0),
      screenCentreY(0),
      windowX(0),
      windowY(0),
      windowWidth(0),
      windowHeight(0),
      camera(),
      lastCursor{0, 0},
      mouseLook(false),
      leftButtonDown(false),
      fullScreen(false)
{
}

void LGLApp::CreateGLWindow(std::string title, int width, int height)
{
    windowWidth = width;
    windowHeight = height;
    screenWidth = glutGet(GLUT_SCREEN_WIDTH);
    screenHeight = glutGet(GLUT_SCREEN_HEIGHT);
    screenCentreX = screenWidth >> 1;
    screenCentreY = screenHeight >> 1;
    // Kept on purpose: the window sits 20 pixels above the centre of the screen.
    windowX = screenWidth / 2 - width / 2;
    windowY = screenHeight / 2 - height / 2 - kWindowLift;
    glutInitWindowPosition(windowX, windowY);
    glutInitWindowSize(width, height);
    windowId = glutCreateWindow(title.c_str());
}

void LGLApp::ToggleFullScreen()
{
    fullScreen = !fullScreen;
    if (!fullScreen) {
        glutReshapeWindow(windowWidth, windowHeight);
        glutPositionWindow(windowX, windowY);
    } else {
        windowX = glutGet(GLUT_WINDOW_X);
        windowY = glutGet(GLUT_WINDOW_Y);
        windowWidth = glutGet(GLUT_WINDOW_WIDTH);
        windowHeight = glutGet(GLUT_WINDOW_HEIGHT);
        glutFullScreen();
    }
}

void LGLApp::RotateCameraWithMouseMotion()
{
    if (!mouseLook)
        return;
    tPoint cursor{0, 0};
    if (!LGLPlatform::getCursorPos(cursor.x, cursor.y))
        return;
    if (cursor.x == lastCursor.x && cursor.y == lastCursor.y)
        return;
    LGLPlatform::setCursorPos(screenCentreX, screenCentreY);
    camera.maxPitch = kMouseLookMaxPitch;
    const float yaw = static_cast<float>((lastCursor.x - cursor.x) / kPixelsPerRadian);
    const float pitch = static_cast<float>((lastCursor.y - cursor.y) / kPixelsPerRadian);
    camera.RotateView(yaw, pitch);
    camera.Update();
    LGLPlatform::getCursorPos(lastCursor.x, lastCursor.y);
}

void LGLApp::MouseFunc(int button, int state, int /*x*/, int /*y*/)
{
    LGLPlatform::getCursorPos(lastCursor.x, lastCursor.y);
    mouseLook = button == GLUT_RIGHT_BUTTON && state == GLUT_DOWN;
    leftButtonDown = button == GLUT_LEFT_BUTTON && state == GLUT_DOWN;
}

void LGLApp::ReshapeFunc(int width, int height) const
{
    const int h = height == 0 ? 1 : height;
    glViewport(0, 0, width, h);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    gluPerspective(kFieldOfViewY, static_cast<float>(width) / static_cast<float>(h), kNearPlane, kFarPlane);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
}
