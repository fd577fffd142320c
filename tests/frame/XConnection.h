// XConnection.h -- a connection to the test X server held open for the life of a test process.
//
// Xvfb regenerates itself whenever its last client leaves and drops connections that arrive
// meanwhile. Test processes start and stop side by side, so a process's first connection can land in
// such a gap; opening one with a few retries and keeping it open lets every later connection of the
// process (GLUT's, the platform layer's cursor display) find the server up.
#pragma once

#include <X11/Xlib.h>
#include <unistd.h>

namespace frame_test {

inline Display* holdXConnection()
{
    static Display* display = [] {
        for (int attempt = 0; attempt < 100; ++attempt) {
            if (Display* d = XOpenDisplay(nullptr))
                return d;
            usleep(20000);
        }
        return static_cast<Display*>(nullptr);
    }();
    return display;
}

}  // namespace frame_test
