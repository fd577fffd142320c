// TestSupport.h -- what the test suites share: the GL window, standard-output capture, GL feedback
// recording, death-test helpers and the paths of test assets.
#pragma once

#include <GL/gl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
#include <string>
#include <vector>

namespace ostrum_test {

// ---------------------------------------------------------------- paths

// Folder of the shared real-world test files (3DS models, images, movies).
std::string assetsDir();
// A fresh empty directory under the system's temporary folder, removed when the process ends.
std::string makeTempDir();
void writeFile(const std::string& path, const std::string& bytes);
std::string readFile(const std::string& path);

// ---------------------------------------------------------------- standard output

// Captures everything written to a standard stream (C stdio and the C++ stream) while it lives.
class StreamCapture {
public:
    explicit StreamCapture(int fd);
    ~StreamCapture();
    StreamCapture(const StreamCapture&) = delete;
    StreamCapture& operator=(const StreamCapture&) = delete;
    // Stops capturing and returns what was written.
    std::string take();

private:
    int fd_;
    int savedFd_ = -1;
    std::FILE* file_ = nullptr;
    bool active_ = false;
};

class StdoutCapture : public StreamCapture {
public:
    StdoutCapture() : StreamCapture(1) {}
};

class StderrCapture : public StreamCapture {
public:
    StderrCapture() : StreamCapture(2) {}
};

// ---------------------------------------------------------------- death tests

// In a death-test child: standard output goes to standard error, unbuffered, so that the matcher
// sees the lines the library printed before the process ended.
void routeStdoutToStderr();

// Matches output whose last line is exactly `line`.
::testing::Matcher<const std::string&> LastLineIs(const std::string& line);

#define OSTRUM_EXPECT_EXIT_WITH_LINE(statement, status, line)                                        \
    EXPECT_EXIT(                                                                                     \
        {                                                                                            \
            ::ostrum_test::routeStdoutToStderr();                                                    \
            statement;                                                                               \
        },                                                                                           \
        ::testing::ExitedWithCode(status), ::ostrum_test::LastLineIs(line))

// ---------------------------------------------------------------- X pointer

// The X pointer is one per display and test programs run side by side under one X server: a test that
// moves it holds this lock (one file per display) so that no other test moves it under its feet.
class PointerLock {
public:
    PointerLock();
    ~PointerLock();
    PointerLock(const PointerLock&) = delete;
    PointerLock& operator=(const PointerLock&) = delete;

private:
    int fd_ = -1;
};

// ---------------------------------------------------------------- GL window

// One GLUT window per test process, created on first use, double-buffered RGBA with depth.
class GLTestWindow {
public:
    static constexpr int kWidth = 640;
    static constexpr int kHeight = 480;
    // Creates the window (once) and makes its context current; returns the GLUT window id.
    static int ensure();
    // Lets freeglut handle pending window-system events.
    static void pumpEvents(int rounds = 3);
};

// Fixture for tests that draw: the window exists, its context is current, the viewport covers it,
// both matrices are identity and the colour and depth buffers are cleared to black / far.
class GLTest : public ::testing::Test {
protected:
    void SetUp() override;
    // Sets an orthographic projection of the window in pixels, y up (OpenGL's window coordinates).
    static void setPixelProjection();
    // RGBA bytes of one pixel of the back buffer, in window coordinates (y up).
    static std::vector<unsigned char> readPixel(int x, int y);
};

// ---------------------------------------------------------------- feedback

struct FeedbackVertex {
    float x = 0, y = 0, z = 0, w = 1;   // window coordinates
    float r = 0, g = 0, b = 0, a = 0;   // colour
    float s = 0, t = 0, p = 0, q = 1;   // texture coordinates
};

struct FeedbackItem {
    GLenum token = 0;                      // GL_POLYGON_TOKEN, GL_LINE_TOKEN, GL_BITMAP_TOKEN, ...
    std::vector<FeedbackVertex> vertices;  // empty for GL_PASS_THROUGH_TOKEN
    float passThrough = 0;                 // the value of a GL_PASS_THROUGH_TOKEN
};

// Runs `draw` in GL feedback mode (GL_4D_COLOR_TEXTURE) and returns what it produced, in order.
std::vector<FeedbackItem> recordFeedback(const std::function<void()>& draw, size_t bufferFloats = 1 << 20);

// Only the items of one token kind (GL_LINE_RESET_TOKEN counts as GL_LINE_TOKEN).
std::vector<FeedbackItem> itemsOf(const std::vector<FeedbackItem>& items, GLenum token);

}  // namespace ostrum_test
