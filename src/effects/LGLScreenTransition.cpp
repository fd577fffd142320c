// LGLScreenTransition.cpp -- fade to black and back: starting, stepping per frame, drawing the overlay.
#include <ostrum_gl/effects/LGLScreenTransition.h>

#include <ostrum_core/LString.h>

#include <GL/gl.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>

LGLScreenTransition::tClockFunc LGLScreenTransition::clockHook = nullptr;

int64_t LGLScreenTransition::now()
{
    if (clockHook != nullptr)
        return clockHook();
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

LGLScreenTransition::LGLScreenTransition()
    : value(0.0), params(), action(-1), state(kDisabled), holdStart(0), holding(false)
{
}

void LGLScreenTransition::init(std::string actionText, std::string parameters)
{
    action = -1;
    state = kStarted;
    params.clear();
    for (const std::string& piece : LString::split(parameters, " ")) {
        if (!piece.empty())
            params.push_back(std::atof(piece.c_str()));
    }
    if (actionText == "fade_out") {
        action = kFadeOut;
        value = 0.0;
    } else if (actionText == "fade_in") {
        action = kFadeIn;
        value = 1.0;
    } else {
        std::printf("ERROR in LGLScreenTransition::init:  Unknown action '%s'\n", actionText.c_str());
        std::fflush(stdout);
        std::exit(-1);
    }
    holding = false;
}

void LGLScreenTransition::handle()
{
    if (state == kDisabled || (action != kFadeOut && action != kFadeIn))
        return;
    state = kRunning;

    // A fade out runs from 0 up to 1, a fade in from 1 down to 0.
    const double target = action == kFadeOut ? 1.0 : 0.0;

    // The end test comes before this frame's step.
    if (params.size() >= 2) {
        const int64_t time = now();
        if (!holding && value == target) {
            holding = true;
            holdStart = time;
        }
        if (holding && static_cast<double>(time - holdStart) >= params[1] * 100.0)
            state = kAtEnd;
    } else if (value == target) {
        state = kAtEnd;
    }

    const double step = params.empty() ? 0.0 : params[0];
    if (action == kFadeOut) {
        value += step;
        if (value > 1.0)
            value = 1.0;
    } else {
        value -= step;
        if (value < 0.0)
            value = 0.0;
    }
}

void LGLScreenTransition::render()
{
    if (state == kDisabled)
        return;
    glDisable(GL_DEPTH_TEST);
    glMatrixMode(GL_PROJECTION);
    glPushMatrix();
    glLoadIdentity();
    glOrtho(0.0, 1.0, 1.0, 0.0, -1.0, 1.0);
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();
    glLoadIdentity();

    if (action == kFadeOut || action == kFadeIn) {
        glDisable(GL_TEXTURE_2D);
        glEnable(GL_BLEND);
        glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
        glColor4d(0.0, 0.0, 0.0, value);
        glBegin(GL_QUADS);
        glVertex2i(0, 0);
        glVertex2i(1, 0);
        glVertex2i(1, 1);
        glVertex2i(0, 1);
        glEnd();
        glDisable(GL_BLEND);
        glColor4f(1.0f, 1.0f, 1.0f, 1.0f);
    }

    glMatrixMode(GL_PROJECTION);
    glPopMatrix();
    glMatrixMode(GL_MODELVIEW);
    glPopMatrix();
    glEnable(GL_DEPTH_TEST);
}

bool LGLScreenTransition::atEnd()
{
    return state == kAtEnd;
}

void LGLScreenTransition::disable()
{
    state = kDisabled;
}
