// TerrainTestSupport.h -- what the terrain tests share: terrains on the heap, height grids filled as
// an editor would, small tile-texture files, and a top-down view of the world's x-z plane.
#pragma once

#include <ostrum_core/LImage.h>
#include <ostrum_gl/scenery/LGLTerrain.h>

#include "TestSupport.h"

#include <GL/gl.h>
#include <GL/glext.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace terrain_test {

// A terrain is about 120 MB: always on the heap.
inline std::unique_ptr<LGLTerrain> makeTerrain(bool initialise = true)
{
    auto terrain = std::make_unique<LGLTerrain>();
    if (initialise)
        terrain->init();
    return terrain;
}

// Gives the terrain a samples x samples grid over a world of worldSize units, every sample `fill`,
// with heightsFine matching, as the height-map loader would.
inline void giveHeights(LGLTerrain& t, int samples, int worldSize, unsigned char fill = 0)
{
    std::free(t.heights);
    std::free(t.heightsFine);
    const size_t count = static_cast<size_t>(samples) * samples;
    t.heights = static_cast<unsigned char*>(std::malloc(count));
    t.heightsFine = static_cast<double*>(std::malloc(count * sizeof(double)));
    for (size_t i = 0; i < count; ++i) {
        t.heights[i] = fill;
        t.heightsFine[i] = fill;
    }
    t.numSamples = samples;
    t.worldSize = worldSize;
    t.unitsPerSample = worldSize / samples;
}

// The raw sample at column x, row z.
inline unsigned char& raw(LGLTerrain& t, int x, int z)
{
    return t.heights[static_cast<size_t>(z) * t.numSamples + x];
}
inline double& fine(LGLTerrain& t, int x, int z)
{
    return t.heightsFine[static_cast<size_t>(z) * t.numSamples + x];
}

// A numTiles x numTiles tile grid of tileSize units per tile.
inline void giveTiles(LGLTerrain& t, int numTiles, int tileSize)
{
    t.numTiles = numTiles;
    t.tileSize = tileSize;
    t.worldSize = numTiles * tileSize;
}

// A w x h 24-bit bitmap file of one colour, written with the core library.
inline void writeSolidBmp(const std::string& path, int w, int h, int r, int g, int b)
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
        for (int x = 0; x < w; ++x) {
            char* p = &bits[static_cast<size_t>(y) * rowBytes + x * 3];
            p[0] = static_cast<char>(b);
            p[1] = static_cast<char>(g);
            p[2] = static_cast<char>(r);
        }
    }
    ASSERT_EQ(LImage::SaveDIBitmap(path.c_str(), &info, bits.data()), 0) << path;
}

struct Colour {
    int r, g, b;
};

// A resource directory with one solid tile texture per colour, named tex<i>.bmp, registered as the
// terrain's textures 0, 1, ... and loaded (the loading lines are swallowed).
inline std::string giveTextures(LGLTerrain& t, const std::vector<Colour>& colours)
{
    const std::string dir = ostrum_test::makeTempDir() + "/";
    std::filesystem::create_directories(dir + "images/map_tiles/categories");
    t.setResPath(dir);
    for (size_t i = 0; i < colours.size(); ++i) {
        const std::string name = "tex" + std::to_string(i) + ".bmp";
        writeSolidBmp(t.tileCategoryPath + name, 8, 8, colours[i].r, colours[i].g, colours[i].b);
        t.texNames[i] = name;
    }
    t.numTextures = static_cast<int>(colours.size());
    ostrum_test::StdoutCapture quiet;
    t.loadTextures();
    return dir;
}

// An orthographic view straight down the y axis: world x runs left to right over the window and world
// z from the top of the window (zmin) to its bottom (zmax); world y becomes depth.
struct TopView {
    double xmin, xmax, zmin, zmax;
    static constexpr double kDepth = 10000.0;

    void apply() const
    {
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        glOrtho(xmin, xmax, -zmax, -zmin, -kDepth, kDepth);
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        glRotated(90.0, 1.0, 0.0, 0.0);  // (x, y, z) -> (x, -z, y)
    }
    // Window position of a world point (hand formula).
    double windowX(double x) const { return (x - xmin) / (xmax - xmin) * ostrum_test::GLTestWindow::kWidth; }
    double windowY(double z) const { return (zmax - z) / (zmax - zmin) * ostrum_test::GLTestWindow::kHeight; }
    // World coordinates of a feedback vertex.
    double worldX(const ostrum_test::FeedbackVertex& v) const
    {
        return xmin + v.x / ostrum_test::GLTestWindow::kWidth * (xmax - xmin);
    }
    double worldZ(const ostrum_test::FeedbackVertex& v) const
    {
        return zmax - v.y / ostrum_test::GLTestWindow::kHeight * (zmax - zmin);
    }
    double worldY(const ostrum_test::FeedbackVertex& v) const { return -(2.0 * v.z - 1.0) * kDepth; }
};

struct WorldPoint {
    double x, y, z;
};

// The world points of a list of feedback vertices.
inline std::vector<WorldPoint> worldPoints(const TopView& view, const std::vector<ostrum_test::FeedbackVertex>& vs)
{
    std::vector<WorldPoint> out;
    for (const auto& v : vs)
        out.push_back({view.worldX(v), view.worldY(v), view.worldZ(v)});
    return out;
}

// GL state of one texture unit.
struct UnitState {
    bool enabled;
    GLint binding;
    GLint wrapS;
    GLint wrapT;
};

inline UnitState unitState(GLenum unit)
{
    GLint saved = 0;
    glGetIntegerv(GL_ACTIVE_TEXTURE_ARB, &saved);
    LGLTerrain::pglActiveTextureARB(unit);
    UnitState state{glIsEnabled(GL_TEXTURE_2D) == GL_TRUE, 0, 0, 0};
    glGetIntegerv(GL_TEXTURE_BINDING_2D, &state.binding);
    glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, &state.wrapS);
    glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, &state.wrapT);
    LGLTerrain::pglActiveTextureARB(static_cast<GLenum>(saved));
    return state;
}

inline GLint activeUnit()
{
    GLint unit = 0;
    glGetIntegerv(GL_ACTIVE_TEXTURE_ARB, &unit);
    return unit;
}

inline GLint envOfUnit(GLenum unit, GLenum pname)
{
    const GLint saved = activeUnit();
    LGLTerrain::pglActiveTextureARB(unit);
    GLint value = -1;
    glGetTexEnviv(GL_TEXTURE_ENV, pname, &value);
    LGLTerrain::pglActiveTextureARB(static_cast<GLenum>(saved));
    return value;
}

// Puts the texture units, culling, fog and the colour back to OpenGL's defaults, for tests that
// follow a terrain call which leaves state behind.
inline void resetTextureState()
{
    if (LGLTerrain::pglActiveTextureARB == nullptr)
        return;
    for (GLenum unit : {GL_TEXTURE1_ARB, GL_TEXTURE0_ARB}) {
        LGLTerrain::pglActiveTextureARB(unit);
        glDisable(GL_TEXTURE_2D);
        glBindTexture(GL_TEXTURE_2D, 0);
        glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
        glTexEnvi(GL_TEXTURE_ENV, GL_COMBINE_RGB_ARB, GL_MODULATE);
        glTexEnvi(GL_TEXTURE_ENV, GL_RGB_SCALE_ARB, 1);
    }
    glDisable(GL_CULL_FACE);
    glDisable(GL_FOG);
    glPointSize(1.0f);
    glColor4f(1, 1, 1, 1);
    LGLTerrain::blendingActive = false;
    LGLTerrain::lastAlpha = -10.0f;
    LGLTerrain::farPlainExtentSet = false;
    LGLTerrain::farPlainExtent = 0;
}

// The fixture of the terrain tests that draw: the GL window, default texture state, and a terrain
// made and initialised on the heap.
class TerrainGLTest : public ostrum_test::GLTest {
protected:
    void SetUp() override
    {
        GLTest::SetUp();
        terrain = makeTerrain();
        ASSERT_NE(LGLTerrain::pglActiveTextureARB, nullptr);
        resetTextureState();
        while (glGetError() != GL_NO_ERROR) {
        }
    }
    void TearDown() override
    {
        if (terrain)
            terrain->dispose();
        resetTextureState();
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
    }

    std::unique_ptr<LGLTerrain> terrain;
};

}  // namespace terrain_test
