// LGLScreenTransition.h -- a full-window black overlay that fades out to black or in from black
// between game screens, stepped once per frame and drawn last.
//
// The game starts a transition with init("fade_out" or "fade_in", parameters), calls handle once per
// frame and render after everything else, asks atEnd to know when to switch screens and calls
// disable to remove the overlay. The parameter text holds the change of `value` per frame and,
// optionally, a hold time in tenths of a second that keeps the overlay at its end value before the
// transition counts as ended.
//
// Kept on purpose:
//  - The end test runs before the frame's step: atEnd turns true one handle after the overlay has
//    reached its end value (or once the hold has run out), never on the frame that reaches it.
//  - render draws the overlay whenever the state is not disabled: also before the first handle and
//    after the end, until disable. The finished fade out therefore keeps the screen black.
//  - An unknown action ends the process (exit(-1)) after its line on standard output.
//
// Choices recorded here:
//  - Time is read from a monotonic millisecond clock (std::chrono::steady_clock), never from the
//    process CPU clock. `clockHook`, when set, is called instead of it: tests and replays set it to a
//    clock of their own and put nullptr back to return to the real one.
//  - The parameter text is split at blanks and empty pieces are dropped, so "" leaves `params` empty
//    and "0.5  10" (two blanks) gives 0.5 and 10. Each piece is converted with atof. A new init
//    replaces the parameters of the previous transition.
//  - Without a per-frame step (empty parameter text) the step counts as 0: the overlay stays at its
//    start value, the end test runs as with one parameter, and the transition never ends.
//  - handle does nothing while the transition is disabled (before the first init and after
//    disable), so a game that calls handle every frame keeps a disabled overlay disabled; it also
//    does nothing for an action other than the two fades.
//  - The constructor leaves `value` 0, `action` -1 (none), `holdStart` 0 and `holding` false beside
//    the empty `params` and `state` 0.
//  - The overlay is one quad over the unit square of its orthographic projection, wound (0, 0),
//    (1, 0), (1, 1), (0, 1): top-left, top-right, bottom-right, bottom-left of the window.
//  - render leaves texturing and blending off, the colour opaque white, the depth test on and the
//    matrix mode at GL_MODELVIEW, for every state it draws in.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

class LGLScreenTransition {
public:
    // The clock that times the hold, in milliseconds.
    typedef int64_t (*tClockFunc)();

    double value;                // opacity of the black overlay: 0 clear .. 1 black
    std::vector<double> params;  // [0] change of value per frame, [1] hold time in tenths of a second
    int action;                  // -1 none, 0 fade out, 1 fade in
    int state;                   // 0 disabled, 1 started, 2 running, 3 at end
    int64_t holdStart;           // clock value (ms) when the hold began
    bool holding;                // the hold has begun

    // When not null, called instead of the steady clock for every reading of the time.
    static tClockFunc clockHook;
    // Milliseconds of the steady clock (or of clockHook when set).
    static int64_t now();

    LGLScreenTransition();
    LGLScreenTransition(const LGLScreenTransition& other) = default;
    LGLScreenTransition(LGLScreenTransition&& other) = default;
    LGLScreenTransition& operator=(const LGLScreenTransition& other) = default;
    LGLScreenTransition& operator=(LGLScreenTransition&& other) = default;

    // Starts a transition: "fade_out" (clear to black) or "fade_in" (black to clear).
    void init(std::string action, std::string parameters);
    // One frame of progress.
    void handle();
    // Draws the overlay over the whole window.
    void render();
    // True once the transition has ended (state 3).
    bool atEnd();
    // Nothing more is drawn until the next init.
    void disable();

    static constexpr int kFadeOut = 0;
    static constexpr int kFadeIn = 1;
    static constexpr int kDisabled = 0;
    static constexpr int kStarted = 1;
    static constexpr int kRunning = 2;
    static constexpr int kAtEnd = 3;
};
