// TestSupport.cpp -- the shared test helpers: paths, stdout capture, death-test matchers, the GLUT
// test window and GL feedback parsing.
#include "TestSupport.h"

#include <GL/freeglut.h>
#include <X11/Xlib.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>

namespace fs = std::filesystem;

namespace ostrum_test {

// ---------------------------------------------------------------- paths

std::string assetsDir()
{
    if (const char* dir = std::getenv("OSTRUM_ASSETS_DIR"))
        return dir;
    return OSTRUM_ASSETS_DIR;
}

namespace {
struct TempDirs {
    std::vector<fs::path> dirs;
    pid_t owner = getpid();
    ~TempDirs()
    {
        if (getpid() != owner)
            return;  // a death-test child leaves the parent's folders alone
        std::error_code ec;
        for (const auto& d : dirs)
            fs::remove_all(d, ec);
    }
};
TempDirs& tempDirs()
{
    static TempDirs dirs;
    return dirs;
}
}  // namespace

std::string makeTempDir()
{
    std::string pattern = (fs::temp_directory_path() / "ostrum_test_XXXXXX").string();
    std::vector<char> buf(pattern.begin(), pattern.end());
    buf.push_back('\0');
    if (mkdtemp(buf.data()) == nullptr) {
        ADD_FAILURE() << "mkdtemp failed";
        return {};
    }
    std::string dir = buf.data();
    tempDirs().dirs.push_back(dir);
    return dir;
}

void writeFile(const std::string& path, const std::string& bytes)
{
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!out)
        ADD_FAILURE() << "could not write " << path;
}

std::string readFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

// ---------------------------------------------------------------- standard output

namespace {
void flushStandardStreams()
{
    std::cout.flush();
    std::cerr.flush();
    std::fflush(stdout);
    std::fflush(stderr);
}
}  // namespace

StreamCapture::StreamCapture(int fd) : fd_(fd)
{
    flushStandardStreams();
    file_ = std::tmpfile();
    savedFd_ = dup(fd_);
    if (file_ == nullptr || savedFd_ < 0) {
        ADD_FAILURE() << "could not capture stream " << fd_;
        return;
    }
    dup2(fileno(file_), fd_);
    active_ = true;
}

StreamCapture::~StreamCapture()
{
    take();
    if (file_)
        std::fclose(file_);
}

std::string StreamCapture::take()
{
    if (!active_)
        return {};
    flushStandardStreams();
    dup2(savedFd_, fd_);
    close(savedFd_);
    active_ = false;
    std::string text;
    std::rewind(file_);
    char buf[4096];
    size_t n;
    while ((n = std::fread(buf, 1, sizeof buf, file_)) > 0)
        text.append(buf, n);
    return text;
}

// ---------------------------------------------------------------- death tests

void routeStdoutToStderr()
{
    std::cout.flush();
    std::fflush(stdout);
    dup2(STDERR_FILENO, STDOUT_FILENO);
    std::setvbuf(stdout, nullptr, _IONBF, 0);
}

namespace {
class LastLineMatcher : public ::testing::MatcherInterface<const std::string&> {
public:
    explicit LastLineMatcher(std::string line) : line_(std::move(line)) {}
    bool MatchAndExplain(const std::string& text, ::testing::MatchResultListener* listener) const override
    {
        std::string body = text;
        if (!body.empty() && body.back() == '\n')
            body.pop_back();
        size_t cut = body.rfind('\n');
        std::string last = cut == std::string::npos ? body : body.substr(cut + 1);
        *listener << "whose last line is \"" << last << "\"";
        return last == line_;
    }
    void DescribeTo(std::ostream* os) const override { *os << "has the last line \"" << line_ << "\""; }
    void DescribeNegationTo(std::ostream* os) const override { *os << "does not end in the line \"" << line_ << "\""; }

private:
    std::string line_;
};
}  // namespace

::testing::Matcher<const std::string&> LastLineIs(const std::string& line)
{
    return ::testing::MakeMatcher(new LastLineMatcher(line));
}

// ---------------------------------------------------------------- X pointer

PointerLock::PointerLock()
{
    std::string display = std::getenv("DISPLAY") ? std::getenv("DISPLAY") : "none";
    for (char& ch : display)
        if (!std::isalnum(static_cast<unsigned char>(ch)))
            ch = '_';
    const std::string path = (fs::temp_directory_path() / ("ostrum_x_pointer_" + display + ".lock")).string();
    fd_ = ::open(path.c_str(), O_CREAT | O_RDWR, 0666);
    if (fd_ >= 0)
        ::flock(fd_, LOCK_EX);
}

PointerLock::~PointerLock()
{
    if (fd_ >= 0) {
        ::flock(fd_, LOCK_UN);
        ::close(fd_);
    }
}

// ---------------------------------------------------------------- GL window

namespace {
// Mesa unloads its driver when the process ends, before the leak checker reports; leaks of memory the
// driver keeps for the process's life would then show as "<unknown module>" and escape the suppression
// file, which names the driver. Pinning the driver keeps its name in the reports.
// Waits until the X server takes connections, and keeps one open for the life of the process.
void holdXConnection()
{
    static Display* display = [] {
        for (int attempt = 0; attempt < 100; ++attempt) {
            if (Display* d = XOpenDisplay(nullptr))
                return d;
            usleep(20000);
        }
        return static_cast<Display*>(nullptr);
    }();
    (void)display;
}

void pinGLDriver()
{
    for (const char* driver : {"swrast_dri.so", "kms_swrast_dri.so", "/usr/lib/x86_64-linux-gnu/dri/swrast_dri.so"})
        if (dlopen(driver, RTLD_LAZY | RTLD_NODELETE))
            break;
}
}  // namespace

int GLTestWindow::ensure()
{
    static int window = 0;
    if (window == 0) {
        holdXConnection();
        pinGLDriver();
        int argc = 1;
        char name[] = "ostrum_tests";
        char* argv[] = {name, nullptr};
        glutInit(&argc, argv);
        glutSetOption(GLUT_ACTION_ON_WINDOW_CLOSE, GLUT_ACTION_GLUTMAINLOOP_RETURNS);
        glutInitDisplayMode(GLUT_RGBA | GLUT_DOUBLE | GLUT_DEPTH);
        glutInitWindowSize(kWidth, kHeight);
        glutInitWindowPosition(0, 0);
        window = glutCreateWindow("ostrum tests");
        glutDisplayFunc([] {});
        pumpEvents(5);
    }
    glutSetWindow(window);
    return window;
}

void GLTestWindow::pumpEvents(int rounds)
{
    for (int i = 0; i < rounds; ++i)
        glutMainLoopEvent();
}

void GLTest::SetUp()
{
    GLTestWindow::ensure();
    glViewport(0, 0, GLTestWindow::kWidth, GLTestWindow::kHeight);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glDrawBuffer(GL_BACK);
    glReadBuffer(GL_BACK);
    glClearColor(0, 0, 0, 0);
    glClearDepth(1.0);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glColor4f(1, 1, 1, 1);
}

void GLTest::setPixelProjection()
{
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(0, GLTestWindow::kWidth, 0, GLTestWindow::kHeight, -1, 1);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
}

std::vector<unsigned char> GLTest::readPixel(int x, int y)
{
    std::vector<unsigned char> rgba(4, 0);
    glFinish();
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(x, y, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, rgba.data());
    return rgba;
}

// ---------------------------------------------------------------- feedback

std::vector<FeedbackItem> recordFeedback(const std::function<void()>& draw, size_t bufferFloats)
{
    std::vector<GLfloat> buffer(bufferFloats);
    glFeedbackBuffer(static_cast<GLsizei>(buffer.size()), GL_4D_COLOR_TEXTURE, buffer.data());
    glRenderMode(GL_FEEDBACK);
    draw();
    GLint count = glRenderMode(GL_RENDER);
    std::vector<FeedbackItem> items;
    if (count < 0) {
        ADD_FAILURE() << "feedback buffer overflow";
        return items;
    }
    size_t i = 0;
    const size_t n = static_cast<size_t>(count);
    auto readVertex = [&](FeedbackVertex& v) {
        if (i + 12 > n)
            return false;
        const GLfloat* f = &buffer[i];
        v = {f[0], f[1], f[2], f[3], f[4], f[5], f[6], f[7], f[8], f[9], f[10], f[11]};
        i += 12;
        return true;
    };
    while (i < n) {
        FeedbackItem item;
        item.token = static_cast<GLenum>(buffer[i++]);
        size_t vertexCount = 0;
        switch (item.token) {
        case GL_POINT_TOKEN:
        case GL_BITMAP_TOKEN:
        case GL_DRAW_PIXEL_TOKEN:
        case GL_COPY_PIXEL_TOKEN:
            vertexCount = 1;
            break;
        case GL_LINE_TOKEN:
        case GL_LINE_RESET_TOKEN:
            vertexCount = 2;
            break;
        case GL_POLYGON_TOKEN:
            if (i >= n)
                return items;
            vertexCount = static_cast<size_t>(buffer[i++]);
            break;
        case GL_PASS_THROUGH_TOKEN:
            if (i >= n)
                return items;
            item.passThrough = buffer[i++];
            break;
        default:
            ADD_FAILURE() << "unknown feedback token " << item.token;
            return items;
        }
        item.vertices.resize(vertexCount);
        for (auto& v : item.vertices)
            if (!readVertex(v))
                return items;
        items.push_back(std::move(item));
    }
    return items;
}

std::vector<FeedbackItem> itemsOf(const std::vector<FeedbackItem>& items, GLenum token)
{
    std::vector<FeedbackItem> out;
    for (const auto& item : items) {
        GLenum t = item.token == GL_LINE_RESET_TOKEN ? GL_LINE_TOKEN : item.token;
        if (t == token)
            out.push_back(item);
    }
    return out;
}

}  // namespace ostrum_test
