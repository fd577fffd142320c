// ScenePictureFiles.h -- small picture files for the skybox and backdrop tests: 24-bit bitmaps written
// with the core library, JPEG files written by the real ffmpeg program, and reading a texture back.
#pragma once

#include <ostrum_core/LImage.h>

#include "TestSupport.h"

#include <GL/gl.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

namespace scene_test {

// A fresh folder for one test. A death-test child runs its test again from the start; it works in the
// folder of its parent, so that the paths in the lines it prints are the ones the parent expects.
inline std::string testFolder()
{
    static const char* const kVariable = "OSTRUM_SCENE_TEST_DIR";
    if (!GTEST_FLAG_GET(internal_run_death_test).empty())
        if (const char* inherited = std::getenv(kVariable))
            return inherited;
    std::string dir = ostrum_test::makeTempDir();
    setenv(kVariable, dir.c_str(), 1);
    return dir;
}

// Takes every pending OpenGL error, so that a later glGetError sees only new ones.
inline void clearGLErrors()
{
    for (int i = 0; i < 100 && glGetError() != GL_NO_ERROR; ++i) {
    }
}

// Puts back OpenGL's initial values of what the skybox and backdrop leave behind (culling, blending,
// the alpha and depth tests, texturing, line width, colour), so that later tests of the same program
// start from the state they expect.
inline void restoreDefaultState()
{
    glDisable(GL_CULL_FACE);
    glCullFace(GL_BACK);
    glFrontFace(GL_CCW);
    glDisable(GL_BLEND);
    glBlendFunc(GL_ONE, GL_ZERO);
    glDisable(GL_ALPHA_TEST);
    glAlphaFunc(GL_ALWAYS, 0.0f);
    glDisable(GL_DEPTH_TEST);
    glDepthFunc(GL_LESS);
    glDisable(GL_TEXTURE_2D);
    glBindTexture(GL_TEXTURE_2D, 0);
    glLineWidth(1.0f);
    glColor4f(1.0f, 1.0f, 1.0f, 1.0f);
    glClearColor(0.0f, 0.0f, 0.0f, 0.0f);
    glViewport(0, 0, ostrum_test::GLTestWindow::kWidth, ostrum_test::GLTestWindow::kHeight);
    clearGLErrors();
}

struct RGB {
    int r, g, b;
};

// A w x h 24-bit bitmap whose pixel (x, y), y = 0 the top row of the picture, is colour(x, y).
inline void writeBmp(const std::string& path, int w, int h, const std::function<RGB(int, int)>& colour)
{
    BITMAPINFO info;
    std::memset(&info, 0, sizeof info);
    info.bmiHeader.biSize = 40;
    info.bmiHeader.biWidth = w;
    info.bmiHeader.biHeight = h;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 24;
    info.bmiHeader.biCompression = BI_RGB;
    const int rowBytes = (w * 3 + 3) / 4 * 4;
    info.bmiHeader.biSizeImage = static_cast<uint32_t>(rowBytes * h);
    std::vector<char> bits(static_cast<size_t>(rowBytes) * h, 0);
    for (int y = 0; y < h; ++y) {
        // Rows are stored bottom row first.
        char* row = &bits[static_cast<size_t>(h - 1 - y) * rowBytes];
        for (int x = 0; x < w; ++x) {
            const RGB c = colour(x, y);
            row[x * 3 + 0] = static_cast<char>(c.b);
            row[x * 3 + 1] = static_cast<char>(c.g);
            row[x * 3 + 2] = static_cast<char>(c.r);
        }
    }
    ASSERT_EQ(LImage::SaveDIBitmap(path.c_str(), &info, bits.data()), 0) << path;
}

inline void writeSolidBmp(const std::string& path, int w, int h, RGB c)
{
    writeBmp(path, w, h, [c](int, int) { return c; });
}

// An 8 x 8 bitmap whose top-left 4 x 4 quadrant is `corner` and the rest `fill`.
inline void writeCornerBmp(const std::string& path, RGB corner, RGB fill)
{
    writeBmp(path, 8, 8, [=](int x, int y) { return x < 4 && y < 4 ? corner : fill; });
}

// A solid w x h JPEG of the colour given in ffmpeg's notation ("red", "0x3050A0").
inline void writeSolidJpg(const std::string& path, int w, int h, const std::string& colour)
{
    const std::string command = "ffmpeg -y -nostdin -loglevel error -f lavfi -i color=c=" + colour + ":s=" +
                                std::to_string(w) + "x" + std::to_string(h) + " -frames:v 1 '" + path + "'";
    ASSERT_EQ(std::system(command.c_str()), 0) << command;
}

// Level 0 of a texture as RGBA bytes, rows from t = 0 upwards; its size goes to w and h.
inline std::vector<unsigned char> textureImage(unsigned int id, int& w, int& h)
{
    glBindTexture(GL_TEXTURE_2D, id);
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &w);
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_HEIGHT, &h);
    std::vector<unsigned char> pixels(static_cast<size_t>(w) * h * 4);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    return pixels;
}

// The texel (s, t) of an image from textureImage.
inline RGB texel(const std::vector<unsigned char>& image, int w, int s, int t)
{
    const unsigned char* p = &image[(static_cast<size_t>(t) * w + s) * 4];
    return RGB{p[0], p[1], p[2]};
}

}  // namespace scene_test
