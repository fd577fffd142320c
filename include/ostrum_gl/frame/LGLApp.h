// LGLApp.h -- the game's application object: the centred GLUT window, full screen, mouse look and the
// projection on resize.
//
// The game owns GLUT: it calls glutInit, registers every callback and runs the main loop; this class
// registers no callback and runs no loop. The game forwards its mouse callback to MouseFunc, its
// reshape callback to ReshapeFunc, and calls RotateCameraWithMouseMotion once per frame.
//
// Mouse look reads and warps the real screen cursor through LGLPlatform (screen pixels). While the
// right button is held, every step turns `camera` by the cursor's movement since the last step at
// 500 pixels per radian (right gives a negative yaw, up a positive pitch), re-centres the cursor on
// the screen and sets the camera's maxPitch to ten degrees, on every step.
//
// Kept on purpose: the window is centred and then lifted 20 pixels; the projection is fixed at a
// vertical field of view of 17.5 degrees, near plane 5 and far plane 5000.
//
// Choices recorded here:
//  - lastCursor is a tPoint of two ints, the screen-pixel point that the cursor calls use.
//  - The constructor sets the integers and lastCursor to 0 as well as the three flags to false, so a
//    copy or a stray call before CreateGLWindow never reads indeterminate values.
//  - When the cursor cannot be read (no X display) a mouse-look step does nothing.
//  - ReshapeFunc reads no member but stays an ordinary member function, called on the application
//    object like the other forwarders.
#pragma once

#include <ostrum_gl/frame/LGLCamera.h>

#include <string>

class LGLApp {
public:
    // A point of the screen in pixels, y growing downwards.
    struct tPoint {
        int x;
        int y;
    };

    int windowId;       // identifier returned by glutCreateWindow
    int screenWidth;    // glutGet(GLUT_SCREEN_WIDTH)
    int screenHeight;   // glutGet(GLUT_SCREEN_HEIGHT)
    int screenCentreX;  // screenWidth >> 1
    int screenCentreY;  // screenHeight >> 1
    int windowX;        // windowed geometry: set at creation, saved on entering full screen
    int windowY;
    int windowWidth;
    int windowHeight;
    LGLCamera camera;   // the camera turned by the mouse
    tPoint lastCursor;  // last cursor position in screen pixels
    bool mouseLook;     // true while the right button is held
    bool leftButtonDown;  // true after a left-button press, false after any other mouse event
    bool fullScreen;    // true while in full-screen mode

    LGLApp();
    LGLApp(const LGLApp& other) = default;
    LGLApp(LGLApp&& other) = default;
    LGLApp& operator=(const LGLApp& other) = default;
    LGLApp& operator=(LGLApp&& other) = default;

    // Creates the window centred on the screen and lifted 20 pixels; it becomes GLUT's current window.
    void CreateGLWindow(std::string title, int width, int height);
    // Windowed <-> full screen, on GLUT's current window; the windowed geometry is saved on entry and
    // restored on exit.
    void ToggleFullScreen();
    // One mouse-look step; call once per frame.
    void RotateCameraWithMouseMotion();
    // The GLUT mouse callback's arguments (button 0 left, 2 right; state 0 down); x and y are unused.
    void MouseFunc(int button, int state, int x, int y);
    // The GLUT reshape callback's arguments: viewport and perspective projection of the window.
    void ReshapeFunc(int width, int height) const;

    static constexpr float kMouseLookMaxPitch = 0.17453292f;  // ten degrees in radians
    static constexpr double kPixelsPerRadian = 500.0;
    static constexpr int kWindowLift = 20;
    static constexpr double kFieldOfViewY = 17.5;
    static constexpr double kNearPlane = 5.0;
    static constexpr double kFarPlane = 5000.0;
};
