// LGLBackdropTest.cpp -- backdrops: the texture and its "_t" rule, placing and rotating the rectangle,
// turning it to face the view, blending, the editor's outline and release, on Mesa.
#include <ostrum_gl/frame/LGLCamera.h>
#include <ostrum_gl/scenery/LGLBackdrop.h>

#include "ScenePictureFiles.h"
#include "TestSupport.h"

#include <GL/gl.h>
#include <GL/glext.h>
#include <GL/glu.h>

#include <array>
#include <functional>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

using ostrum_test::FeedbackItem;
using ostrum_test::FeedbackVertex;
using ostrum_test::GLTest;
using ostrum_test::itemsOf;
using ostrum_test::recordFeedback;
using ostrum_test::StdoutCapture;
using scene_test::RGB;
using scene_test::texel;
using scene_test::textureImage;

namespace {

const RGB kRed{255, 0, 0}, kGreen{0, 255, 0}, kBlue{0, 0, 255}, kYellow{255, 255, 0}, kWhite{255, 255, 255};
const double kPi = 3.14159265358979323846;

RGB pixel(int x, int y)
{
    unsigned char p[4] = {0, 0, 0, 0};
    glReadBuffer(GL_BACK);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(x, y, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, p);
    return RGB{p[0], p[1], p[2]};
}

::testing::AssertionResult colourIs(const RGB& seen, const RGB& expected, int tolerance)
{
    if (std::abs(seen.r - expected.r) <= tolerance && std::abs(seen.g - expected.g) <= tolerance &&
        std::abs(seen.b - expected.b) <= tolerance)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "(" << seen.r << ", " << seen.g << ", " << seen.b << ") is not ("
                                         << expected.r << ", " << expected.g << ", " << expected.b << ") within "
                                         << tolerance;
}

// A point turned by `degrees` about the x, y or z axis (right-handed), as glRotate turns it.
struct P3 {
    double x, y, z;
};
P3 turnX(P3 p, double degrees)
{
    const double a = degrees * kPi / 180.0, c = std::cos(a), s = std::sin(a);
    return {p.x, c * p.y - s * p.z, s * p.y + c * p.z};
}
P3 turnY(P3 p, double degrees)
{
    const double a = degrees * kPi / 180.0, c = std::cos(a), s = std::sin(a);
    return {c * p.x + s * p.z, p.y, -s * p.x + c * p.z};
}
P3 turnZ(P3 p, double degrees)
{
    const double a = degrees * kPi / 180.0, c = std::cos(a), s = std::sin(a);
    return {c * p.x - s * p.y, s * p.x + c * p.y, p.z};
}

// The textured strip's corners in drawing order and their texture coordinates.
const double kStripTex[4][2] = {{0.005, 0.995}, {0.995, 0.995}, {0.005, 0.005}, {0.995, 0.005}};

class LGLBackdropTest : public GLTest {
protected:
    void SetUp() override
    {
        GLTest::SetUp();
        dir = scene_test::testFolder() + "/";
        glDisable(GL_LIGHTING);
        glDisable(GL_FOG);
        glDisable(GL_BLEND);
        glDisable(GL_ALPHA_TEST);
        glDisable(GL_CULL_FACE);
        glDisable(GL_TEXTURE_2D);
        glDisable(GL_DEPTH_TEST);
        glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
        glLineWidth(1.0f);
        scene_test::clearGLErrors();
    }
    void TearDown() override
    {
        backdrop.dispose();
        scene_test::restoreDefaultState();
    }

    // One unit per pixel, y up, and deep enough for rotated rectangles.
    static void pixelView()
    {
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        glOrtho(0, 640, 0, 480, -1000, 1000);
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
    }

    // An 8 x 8 picture: red top left, green top right, blue bottom left, yellow bottom right.
    std::string quadrantPicture(const std::string& name)
    {
        const std::string file = dir + name;
        scene_test::writeBmp(file, 8, 8, [](int x, int y) {
            if (y < 4)
                return x < 4 ? kRed : kGreen;
            return x < 4 ? kBlue : kYellow;
        });
        return file;
    }

    std::string dir;
    LGLBackdrop backdrop;
    LGLCamera camera;
};

// The two triangles of the strip as window-coordinate corners 0..3 in drawing order; checks that the
// first triangle is corners 0, 1, 2 and the second holds corners 1, 2, 3.
std::array<FeedbackVertex, 4> stripCorners(const std::vector<FeedbackItem>& triangles)
{
    std::array<FeedbackVertex, 4> corners{};
    EXPECT_EQ(triangles.size(), 2u);
    if (triangles.size() != 2u || triangles[0].vertices.size() != 3u || triangles[1].vertices.size() != 3u)
        return corners;
    for (int i = 0; i < 3; ++i)
        corners[static_cast<size_t>(i)] = triangles[0].vertices[static_cast<size_t>(i)];
    int shared = 0;
    bool found = false;
    for (const auto& v : triangles[1].vertices) {
        bool known = false;
        for (int i = 1; i < 3; ++i)
            known = known || (std::fabs(v.x - corners[static_cast<size_t>(i)].x) < 1e-3 &&
                              std::fabs(v.y - corners[static_cast<size_t>(i)].y) < 1e-3 &&
                              std::fabs(v.z - corners[static_cast<size_t>(i)].z) < 1e-6);
        if (known) {
            ++shared;
        } else {
            corners[3] = v;
            found = true;
        }
    }
    EXPECT_EQ(shared, 2);
    EXPECT_TRUE(found);
    return corners;
}

std::vector<FeedbackItem> triangles(const std::function<void()>& draw)
{
    return itemsOf(recordFeedback(draw), GL_POLYGON_TOKEN);
}

}  // namespace

// ---------------------------------------------------------------- members

TEST_F(LGLBackdropTest, ConstructorStartsWithoutTexture)
{
    LGLBackdrop b;
    EXPECT_EQ(b.texture, 0u);
    EXPECT_EQ(b.alpha, 1.0f);
    EXPECT_FALSE(b.faceCamera);
    EXPECT_FALSE(b.relativeToCamera);
    EXPECT_EQ(b.halfWidth, 0);
    EXPECT_EQ(b.rect.right, 0);
}

TEST_F(LGLBackdropTest, SetStoresEveryMemberAndTheRectangle)
{
    backdrop.set(SVector3D(1.5f, -2.0f, 3.25f), 10.0f, 20.0f, 30.0f, 120, 64, true, true, 0.75f);
    EXPECT_EQ(backdrop.pos, SVector3D(1.5f, -2.0f, 3.25f));
    EXPECT_EQ(backdrop.rotX, 10.0f);
    EXPECT_EQ(backdrop.rotY, 20.0f);
    EXPECT_EQ(backdrop.rotZ, 30.0f);
    EXPECT_TRUE(backdrop.relativeToCamera);
    EXPECT_TRUE(backdrop.faceCamera);
    EXPECT_EQ(backdrop.alpha, 0.75f);
    EXPECT_EQ(backdrop.rect.left, 0);
    EXPECT_EQ(backdrop.rect.top, 0);
    EXPECT_EQ(backdrop.rect.right, 120);
    EXPECT_EQ(backdrop.rect.bottom, 64);
    EXPECT_EQ(backdrop.halfWidth, 60);
    EXPECT_EQ(backdrop.halfHeight, 32);
    EXPECT_EQ(backdrop.texture, 0u);
}

TEST_F(LGLBackdropTest, AnOddSizeIsHalvedDownwards)
{
    backdrop.set(SVector3D(0, 0, 0), 0, 0, 0, 41, 21, false, false, 1.0f);
    EXPECT_EQ(backdrop.halfWidth, 20);
    EXPECT_EQ(backdrop.halfHeight, 10);
    EXPECT_EQ(backdrop.rect.right, 41);
    EXPECT_EQ(backdrop.rect.bottom, 21);
}

TEST_F(LGLBackdropTest, CopiesCarryEveryMemberAndShareTheTexture)
{
    backdrop.loadTexture(quadrantPicture("copy.bmp"));
    backdrop.set(SVector3D(4, 5, 6), 7, 8, 9, 33, 17, true, false, 0.5f);
    auto same = [](const LGLBackdrop& a, const LGLBackdrop& b) {
        EXPECT_EQ(a.pos, b.pos);
        EXPECT_EQ(a.rotX, b.rotX);
        EXPECT_EQ(a.rotY, b.rotY);
        EXPECT_EQ(a.rotZ, b.rotZ);
        EXPECT_EQ(a.relativeToCamera, b.relativeToCamera);
        EXPECT_EQ(a.faceCamera, b.faceCamera);
        EXPECT_EQ(a.alpha, b.alpha);
        EXPECT_EQ(a.halfWidth, b.halfWidth);
        EXPECT_EQ(a.halfHeight, b.halfHeight);
        EXPECT_EQ(a.rect.right, b.rect.right);
        EXPECT_EQ(a.rect.bottom, b.rect.bottom);
        EXPECT_EQ(a.texture, b.texture);
    };
    LGLBackdrop assigned;
    assigned = backdrop;
    same(assigned, backdrop);
    LGLBackdrop copied(backdrop);
    same(copied, backdrop);
    LGLBackdrop source(backdrop);
    LGLBackdrop moveAssigned;
    moveAssigned = std::move(source);
    same(moveAssigned, backdrop);
    EXPECT_TRUE(glIsTexture(assigned.texture));
}

// ---------------------------------------------------------------- the texture

TEST_F(LGLBackdropTest, TransparentNamesEndInUnderscoreTBeforeTheLastDot)
{
    EXPECT_TRUE(LGLBackdrop::isTransparentName("tree_t.bmp"));
    EXPECT_TRUE(LGLBackdrop::isTransparentName("data/pics/fence_t.tga"));
    EXPECT_TRUE(LGLBackdrop::isTransparentName("_t.bmp"));
    EXPECT_TRUE(LGLBackdrop::isTransparentName("old.v2/sign_t.jpg"));
    EXPECT_FALSE(LGLBackdrop::isTransparentName("tree_T.bmp"));
    EXPECT_FALSE(LGLBackdrop::isTransparentName("tree.bmp"));
    EXPECT_FALSE(LGLBackdrop::isTransparentName("tree_t"));
    EXPECT_FALSE(LGLBackdrop::isTransparentName("t.bmp"));
    EXPECT_FALSE(LGLBackdrop::isTransparentName(".bmp"));
    EXPECT_FALSE(LGLBackdrop::isTransparentName(""));
    EXPECT_FALSE(LGLBackdrop::isTransparentName("tree_t.backup.bmp"));
    EXPECT_FALSE(LGLBackdrop::isTransparentName("pics_t/tree.bmp"));
}

TEST_F(LGLBackdropTest, AnOrdinaryNameMakesAnOpaqueTexture)
{
    const std::string file = dir + "night.bmp";
    scene_test::writeBmp(file, 4, 4, [](int x, int) { return x < 2 ? RGB{0, 0, 0} : RGB{4, 4, 4}; });
    StdoutCapture out;
    backdrop.loadTexture(file);
    EXPECT_EQ(out.take(), "");
    ASSERT_TRUE(glIsTexture(backdrop.texture));
    int w = 0, h = 0;
    auto image = textureImage(backdrop.texture, w, h);
    EXPECT_EQ(image[3], 255);                                          // black stays opaque
    EXPECT_EQ(image[(static_cast<size_t>(3)) * 4 + 3], 255);           // so does near-black
    EXPECT_EQ(image[(static_cast<size_t>(3)) * 4 + 0], 4);
}

TEST_F(LGLBackdropTest, AnUnderscoreTNameMakesColoursWithEveryChannelBelowFiveTransparent)
{
    const std::string file = dir + "tree_t.bmp";
    // An 8 x 2 picture (no rescaling): each column one colour, and its alpha when keyed.
    const RGB colours[8] = {{0, 0, 0}, {4, 4, 4}, {5, 5, 5}, {4, 4, 200}, {4, 5, 4}, {3, 0, 1}, {200, 0, 0}, {255, 255, 255}};
    const int alpha[8] = {0, 0, 255, 255, 255, 0, 255, 255};
    scene_test::writeBmp(file, 8, 2, [&](int x, int) { return colours[x]; });
    StdoutCapture out;
    backdrop.loadTexture(file);
    EXPECT_EQ(out.take(), "");
    ASSERT_TRUE(glIsTexture(backdrop.texture));
    GLint format = 0;
    glBindTexture(GL_TEXTURE_2D, backdrop.texture);
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_INTERNAL_FORMAT, &format);
    EXPECT_TRUE(format == 4 || format == GL_RGBA) << format;
    int w = 0, h = 0;
    auto image = textureImage(backdrop.texture, w, h);
    ASSERT_EQ(w, 8);
    ASSERT_EQ(h, 2);
    for (int x = 0; x < 8; ++x) {
        SCOPED_TRACE(x);
        const unsigned char* p = &image[static_cast<size_t>(x) * 4];
        EXPECT_EQ(p[0], colours[x].r);
        EXPECT_EQ(p[1], colours[x].g);
        EXPECT_EQ(p[2], colours[x].b);
        EXPECT_EQ(p[3], alpha[x]);
    }
}

TEST_F(LGLBackdropTest, AnUnderscoreTNameOfAnotherTypeMakesNoTexture)
{
    const std::string file = dir + "photo_t.jpg";
    scene_test::writeSolidJpg(file, 16, 16, "red");
    StdoutCapture out;
    backdrop.loadTexture(file);
    EXPECT_EQ(out.take(), "ERROR LGL::CreateTransparentTexture: unsupported image type \"" + file + "\"\n");
    EXPECT_EQ(backdrop.texture, 0u);
}

TEST_F(LGLBackdropTest, AMissingTextureFileEndsTheProcess)
{
    const std::string file = dir + "missing.bmp";
    OSTRUM_EXPECT_EXIT_WITH_LINE(backdrop.loadTexture(file), 255,
                                 "** ERROR LGL::CreateTexture: Texture file \"" + file + "\" not found!");
}

TEST_F(LGLBackdropTest, AMissingTransparentTextureFileEndsTheProcess)
{
    const std::string file = dir + "missing_t.bmp";
    OSTRUM_EXPECT_EXIT_WITH_LINE(backdrop.loadTexture(file), 255,
                                 "ERROR LGL::CreateTransparentTexture: could not read the image \"" + file + "\"");
}

// ---------------------------------------------------------------- drawing before a texture

TEST_F(LGLBackdropTest, RenderBeforeLoadTextureDrawsNothing)
{
    backdrop.set(SVector3D(100, 100, 0), 0, 0, 0, 50, 50, false, false, 0.5f);
    pixelView();
    auto items = recordFeedback([&] { backdrop.render(camera); });
    EXPECT_TRUE(items.empty());
    // Nothing was touched either.
    EXPECT_FALSE(glIsEnabled(GL_TEXTURE_2D));
    EXPECT_FALSE(glIsEnabled(GL_CULL_FACE));
    EXPECT_FALSE(glIsEnabled(GL_BLEND));
}

TEST_F(LGLBackdropTest, RenderFrameBeforeLoadTextureDrawsNothing)
{
    backdrop.set(SVector3D(100, 100, 0), 0, 0, 0, 50, 50, false, false, 1.0f);
    pixelView();
    auto items = recordFeedback([&] { backdrop.renderFrame(camera); });
    EXPECT_TRUE(items.empty());
    EXPECT_FALSE(glIsEnabled(GL_TEXTURE_2D));
}

// ---------------------------------------------------------------- placed backdrops

TEST_F(LGLBackdropTest, RenderDrawsTheRectangleAtItsPositionWithInsetTextureCoordinates)
{
    backdrop.loadTexture(quadrantPicture("plain.bmp"));
    backdrop.set(SVector3D(100, 50, 0), 0, 0, 0, 200, 100, false, false, 1.0f);
    pixelView();
    auto corners = stripCorners(triangles([&] { backdrop.render(camera); }));
    // (left, top) = (0, 0), (right, top), (left, bottom), (right, bottom): top lies at pos.y.
    const double expected[4][2] = {{100, 50}, {300, 50}, {100, 150}, {300, 150}};
    for (int i = 0; i < 4; ++i) {
        SCOPED_TRACE(i);
        EXPECT_NEAR(corners[static_cast<size_t>(i)].x, expected[i][0], 1e-3);
        EXPECT_NEAR(corners[static_cast<size_t>(i)].y, expected[i][1], 1e-3);
        EXPECT_NEAR(corners[static_cast<size_t>(i)].z, 0.5, 1e-6);
        EXPECT_NEAR(corners[static_cast<size_t>(i)].s, kStripTex[i][0], 1e-6);
        EXPECT_NEAR(corners[static_cast<size_t>(i)].t, kStripTex[i][1], 1e-6);
    }
}

TEST_F(LGLBackdropTest, AnUnrotatedPlacedBackdropShowsThePictureWithItsTopAtThePosition)
{
    backdrop.loadTexture(quadrantPicture("lying.bmp"));
    backdrop.set(SVector3D(100, 100, 0), 0, 0, 0, 200, 200, false, false, 1.0f);
    pixelView();
    backdrop.render(camera);
    // The picture's top row lies on y = 100 (lower on screen): red and green at the bottom.
    EXPECT_TRUE(colourIs(pixel(150, 150), kRed, 2));
    EXPECT_TRUE(colourIs(pixel(250, 150), kGreen, 2));
    EXPECT_TRUE(colourIs(pixel(150, 250), kBlue, 2));
    EXPECT_TRUE(colourIs(pixel(250, 250), kYellow, 2));
    // rotX = 180 stands it upright, left and right unchanged.
    glClear(GL_COLOR_BUFFER_BIT);
    backdrop.set(SVector3D(100, 100, 0), 180, 0, 0, 200, 200, false, false, 1.0f);
    backdrop.render(camera);
    EXPECT_TRUE(colourIs(pixel(150, 250), kRed, 2));
    EXPECT_TRUE(colourIs(pixel(250, 250), kGreen, 2));
    EXPECT_TRUE(colourIs(pixel(150, 150), kBlue, 2));
    EXPECT_TRUE(colourIs(pixel(250, 150), kYellow, 2));
}

TEST_F(LGLBackdropTest, RenderRotatesAboutTheCentreByYThenMinusXThenZ)
{
    backdrop.loadTexture(quadrantPicture("turned.bmp"));
    const P3 pos{320, 240, -50};
    const float rx = 30, ry = 40, rz = 50;
    backdrop.set(SVector3D(static_cast<float>(pos.x), static_cast<float>(pos.y), static_cast<float>(pos.z)), rx,
                 ry, rz, 160, 90, false, false, 1.0f);
    pixelView();
    auto corners = stripCorners(triangles([&] { backdrop.render(camera); }));
    const double local[4][2] = {{0, 0}, {160, 0}, {0, 90}, {160, 90}};
    for (int i = 0; i < 4; ++i) {
        SCOPED_TRACE(i);
        // Centre (80, 45); turned by z first, then by -x, then by y (glRotate order reversed).
        P3 p{local[i][0] - 80, local[i][1] - 45, 0};
        p = turnY(turnX(turnZ(p, rz), -rx), ry);
        const P3 world{pos.x + 80 + p.x, pos.y + 45 + p.y, pos.z + p.z};
        EXPECT_NEAR(corners[static_cast<size_t>(i)].x, world.x, 1e-2);
        EXPECT_NEAR(corners[static_cast<size_t>(i)].y, world.y, 1e-2);
        // glOrtho(near -1000, far 1000): window depth 0.5 - z / 2000.
        EXPECT_NEAR(corners[static_cast<size_t>(i)].z, 0.5 - world.z / 2000.0, 1e-5);
    }
}

TEST_F(LGLBackdropTest, AnOddWidthTurnsAboutAPointHalfAUnitLeftOfTheCentre)
{
    backdrop.loadTexture(quadrantPicture("odd.bmp"));
    backdrop.set(SVector3D(100, 100, 0), 0, 0, 180, 41, 21, false, false, 1.0f);
    pixelView();
    auto corners = stripCorners(triangles([&] { backdrop.render(camera); }));
    // A half turn about (20, 10): x -> 40 - x, y -> 20 - y.
    const double expected[4][2] = {{140, 120}, {99, 120}, {140, 99}, {99, 99}};
    for (int i = 0; i < 4; ++i) {
        SCOPED_TRACE(i);
        EXPECT_NEAR(corners[static_cast<size_t>(i)].x, expected[i][0], 1e-3);
        EXPECT_NEAR(corners[static_cast<size_t>(i)].y, expected[i][1], 1e-3);
    }
}

TEST_F(LGLBackdropTest, RelativeToCameraAddsTheCameraPosition)
{
    backdrop.loadTexture(quadrantPicture("follow.bmp"));
    camera.SetPosAndView(200, 100, 30, 200, 100, 0, 0, 1, 0);
    backdrop.set(SVector3D(10, 20, -5), 0, 0, 0, 40, 30, true, false, 1.0f);
    pixelView();
    auto corners = stripCorners(triangles([&] { backdrop.render(camera); }));
    EXPECT_NEAR(corners[0].x, 210, 1e-3);
    EXPECT_NEAR(corners[0].y, 120, 1e-3);
    EXPECT_NEAR(corners[0].z, 0.5 - 25.0 / 2000.0, 1e-6);
    EXPECT_NEAR(corners[3].x, 250, 1e-3);
    EXPECT_NEAR(corners[3].y, 150, 1e-3);
    // Without the flag the camera does not matter.
    backdrop.relativeToCamera = false;
    corners = stripCorners(triangles([&] { backdrop.render(camera); }));
    EXPECT_NEAR(corners[0].x, 10, 1e-3);
    EXPECT_NEAR(corners[0].y, 20, 1e-3);
}

// ---------------------------------------------------------------- camera-facing backdrops

namespace {

struct ViewCase {
    const char* name;
    SVector3D eye;
    SVector3D target;
};

const ViewCase kViews[] = {
    {"down -z", SVector3D(0, 0, 50), SVector3D(0, 0, 0)},
    {"down +z", SVector3D(0, 0, -50), SVector3D(0, 0, 0)},
    {"along +x", SVector3D(-50, 0, 0), SVector3D(0, 0, 0)},
    {"along -x", SVector3D(50, 0, 0), SVector3D(0, 0, 0)},
    {"from above at 30 degrees", SVector3D(0, 25, 43.30127f), SVector3D(0, 0, 0)},
    {"from below, turned", SVector3D(30, -20, -30), SVector3D(0, 0, 0)},
    {"steeply down", SVector3D(5, 60, 8), SVector3D(0, 0, 0)},
    {"sideways and up, eye off the centre", SVector3D(-70, -10, 35), SVector3D(20, 15, -4)},
};

}  // namespace

TEST_F(LGLBackdropTest, FacingRenderStandsParallelToTheViewPlaneUprightAndUnmirrored)
{
    backdrop.loadTexture(quadrantPicture("facing.bmp"));
    const SVector3D pos(3, 2, -1);
    // relativeToCamera and the rotations play no part in the facing render.
    backdrop.set(pos, 33, 44, 55, 41, 20, true, true, 1.0f);
    for (const ViewCase& c : kViews) {
        SCOPED_TRACE(c.name);
        camera.SetPosAndView(c.eye.x, c.eye.y, c.eye.z, c.target.x, c.target.y, c.target.z, 0, 1, 0);
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        glOrtho(-320, 320, -240, 240, -1000, 1000);
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        camera.Look();
        GLdouble model[16], projection[16];
        GLint viewport[4];
        glGetDoublev(GL_MODELVIEW_MATRIX, model);
        glGetDoublev(GL_PROJECTION_MATRIX, projection);
        glGetIntegerv(GL_VIEWPORT, viewport);
        // The turn is about the rectangle's centre, pos + (halfWidth, halfHeight, 0).
        GLdouble cx = 0, cy = 0, cz = 0;
        gluProject(pos.x + 20, pos.y + 10, pos.z, model, projection, viewport, &cx, &cy, &cz);

        auto corners = stripCorners(triangles([&] { backdrop.render(camera); }));
        // Width 41 about the integer half 20: from -20 to +21; height 20: from -10 to +10. The
        // picture's top (texture t 0.995) at the window's top, its left (s 0.005) at the left.
        const double expected[4][2] = {{cx - 20, cy + 10}, {cx + 21, cy + 10}, {cx - 20, cy - 10}, {cx + 21, cy - 10}};
        for (int i = 0; i < 4; ++i) {
            SCOPED_TRACE(i);
            EXPECT_NEAR(corners[static_cast<size_t>(i)].x, expected[i][0], 1e-2);
            EXPECT_NEAR(corners[static_cast<size_t>(i)].y, expected[i][1], 1e-2);
            EXPECT_NEAR(corners[static_cast<size_t>(i)].s, kStripTex[i][0], 1e-6);
            EXPECT_NEAR(corners[static_cast<size_t>(i)].t, kStripTex[i][1], 1e-6);
            // Parallel to the view plane: one depth for all four corners, the centre's.
            EXPECT_NEAR(corners[static_cast<size_t>(i)].z, cz, 1e-5);
        }
    }
}

TEST_F(LGLBackdropTest, FacingRenderShowsThePictureTopLeftAtTheTopLeftOfTheWindow)
{
    backdrop.loadTexture(quadrantPicture("picture.bmp"));
    const SVector3D pos(-100, -50, 10);
    backdrop.set(pos, 0, 0, 0, 200, 100, false, true, 1.0f);
    for (const ViewCase& c : kViews) {
        SCOPED_TRACE(c.name);
        camera.SetPosAndView(c.eye.x, c.eye.y, c.eye.z, c.target.x, c.target.y, c.target.z, 0, 1, 0);
        glClear(GL_COLOR_BUFFER_BIT);
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        glOrtho(-320, 320, -240, 240, -1000, 1000);
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        camera.Look();
        GLdouble model[16], projection[16];
        GLint viewport[4];
        glGetDoublev(GL_MODELVIEW_MATRIX, model);
        glGetDoublev(GL_PROJECTION_MATRIX, projection);
        glGetIntegerv(GL_VIEWPORT, viewport);
        GLdouble cx = 0, cy = 0, cz = 0;
        gluProject(pos.x + 100, pos.y + 50, pos.z, model, projection, viewport, &cx, &cy, &cz);
        backdrop.render(camera);
        const int x = static_cast<int>(cx), y = static_cast<int>(cy);
        EXPECT_TRUE(colourIs(pixel(x - 50, y + 25), kRed, 2));
        EXPECT_TRUE(colourIs(pixel(x + 50, y + 25), kGreen, 2));
        EXPECT_TRUE(colourIs(pixel(x - 50, y - 25), kBlue, 2));
        EXPECT_TRUE(colourIs(pixel(x + 50, y - 25), kYellow, 2));
        // Nothing outside the rectangle.
        EXPECT_TRUE(colourIs(pixel(x - 110, y), RGB{0, 0, 0}, 0));
        EXPECT_TRUE(colourIs(pixel(x, y + 60), RGB{0, 0, 0}, 0));
    }
}

// ---------------------------------------------------------------- opacity and state

TEST_F(LGLBackdropTest, AlphaBelowOneBlendsWithWhiteAtThatOpacity)
{
    const std::string file = dir + "white.bmp";
    scene_test::writeSolidBmp(file, 4, 4, kWhite);
    backdrop.loadTexture(file);
    backdrop.set(SVector3D(100, 100, 0), 0, 0, 0, 100, 100, false, false, 0.25f);
    pixelView();
    glClearColor(0, 0, 1, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    glClearColor(0, 0, 0, 0);
    glColor4f(1, 0, 0, 1);
    auto corners = stripCorners(triangles([&] { backdrop.render(camera); }));
    for (const auto& v : corners) {
        EXPECT_FLOAT_EQ(v.r, 1.0f);
        EXPECT_FLOAT_EQ(v.g, 1.0f);
        EXPECT_FLOAT_EQ(v.b, 1.0f);
        EXPECT_FLOAT_EQ(v.a, 0.25f);
    }
    glColor4f(1, 0, 0, 1);
    backdrop.render(camera);
    // A quarter white over blue.
    EXPECT_TRUE(colourIs(pixel(150, 150), RGB{64, 64, 255}, 2));
    EXPECT_FALSE(glIsEnabled(GL_BLEND));
    GLfloat colour[4];
    glGetFloatv(GL_CURRENT_COLOR, colour);
    EXPECT_FLOAT_EQ(colour[0], 1.0f);
    EXPECT_FLOAT_EQ(colour[3], 0.25f);
}

TEST_F(LGLBackdropTest, AlphaOfExactlyOneDrawsWithoutBlending)
{
    const std::string file = dir + "white.bmp";
    scene_test::writeSolidBmp(file, 4, 4, kWhite);
    backdrop.loadTexture(file);
    backdrop.set(SVector3D(100, 100, 0), 0, 0, 0, 100, 100, false, false, 1.0f);
    pixelView();
    glClearColor(0, 0, 1, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    glClearColor(0, 0, 0, 0);
    // A translucent current colour: blending would mix it with the blue; without blending it is
    // written as it is, and the backdrop does not change it.
    glColor4f(1, 1, 1, 0.3f);
    auto corners = stripCorners(triangles([&] { backdrop.render(camera); }));
    for (const auto& v : corners)
        EXPECT_FLOAT_EQ(v.a, 0.3f);
    backdrop.render(camera);
    EXPECT_TRUE(colourIs(pixel(150, 150), kWhite, 1));
    EXPECT_FALSE(glIsEnabled(GL_BLEND));
    // Blending that the game left on stays on; alpha 1 neither turns it on nor off.
    glEnable(GL_BLEND);
    backdrop.render(camera);
    EXPECT_TRUE(glIsEnabled(GL_BLEND));
    glDisable(GL_BLEND);
}

TEST_F(LGLBackdropTest, TransparentTexelsAreDroppedByTheAlphaTest)
{
    const std::string file = dir + "hole_t.bmp";
    // The left half black (transparent), the right half red.
    scene_test::writeBmp(file, 8, 8, [](int x, int) { return x < 4 ? RGB{0, 0, 0} : kRed; });
    backdrop.loadTexture(file);
    backdrop.set(SVector3D(100, 100, 0), 0, 0, 0, 200, 100, false, false, 1.0f);
    pixelView();
    glEnable(GL_DEPTH_TEST);
    glClearColor(0, 1, 0, 1);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glClearColor(0, 0, 0, 0);
    glColor4f(1, 1, 1, 1);
    backdrop.render(camera);
    EXPECT_TRUE(colourIs(pixel(130, 150), kGreen, 0));  // the background shows through
    EXPECT_TRUE(colourIs(pixel(270, 150), kRed, 2));
    glDisable(GL_DEPTH_TEST);
}

TEST_F(LGLBackdropTest, RenderLeavesTexturingAndCullingOnAndTheAlphaTestOff)
{
    backdrop.loadTexture(quadrantPicture("state.bmp"));
    backdrop.set(SVector3D(10, 20, 30), 10, 20, 30, 64, 32, false, false, 0.5f);
    pixelView();
    glTranslatef(5, 6, 7);
    GLdouble model[16];
    glGetDoublev(GL_MODELVIEW_MATRIX, model);
    glEnable(GL_ALPHA_TEST);
    glAlphaFunc(GL_LESS, 0.7f);
    scene_test::clearGLErrors();
    backdrop.render(camera);
    EXPECT_TRUE(glIsEnabled(GL_TEXTURE_2D));
    EXPECT_TRUE(glIsEnabled(GL_CULL_FACE));
    EXPECT_FALSE(glIsEnabled(GL_ALPHA_TEST));
    EXPECT_FALSE(glIsEnabled(GL_BLEND));
    GLint func = 0;
    GLfloat ref = -1;
    glGetIntegerv(GL_ALPHA_TEST_FUNC, &func);
    glGetFloatv(GL_ALPHA_TEST_REF, &ref);
    EXPECT_EQ(func, GL_GREATER);
    EXPECT_EQ(ref, 0.0f);
    GLint bound = 0, wrapS = 0, wrapT = 0;
    glGetIntegerv(GL_TEXTURE_BINDING_2D, &bound);
    EXPECT_EQ(static_cast<unsigned int>(bound), backdrop.texture);
    glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, &wrapS);
    glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, &wrapT);
    EXPECT_EQ(wrapS, GL_CLAMP_TO_EDGE);
    EXPECT_EQ(wrapT, GL_CLAMP_TO_EDGE);
    GLdouble after[16];
    glGetDoublev(GL_MODELVIEW_MATRIX, after);
    for (int i = 0; i < 16; ++i)
        EXPECT_DOUBLE_EQ(after[i], model[i]);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    glDisable(GL_CULL_FACE);
    glDisable(GL_TEXTURE_2D);
}

TEST_F(LGLBackdropTest, RenderIgnoresCullingOfEitherSide)
{
    // Culling is off while the rectangle is drawn: seen from behind it still shows.
    backdrop.loadTexture(quadrantPicture("both.bmp"));
    backdrop.set(SVector3D(100, 100, 0), 0, 180, 0, 100, 100, false, false, 1.0f);
    pixelView();
    glEnable(GL_CULL_FACE);
    glCullFace(GL_FRONT_AND_BACK);
    EXPECT_EQ(triangles([&] { backdrop.render(camera); }).size(), 2u);
    glCullFace(GL_BACK);
    glDisable(GL_CULL_FACE);
}

// ---------------------------------------------------------------- the outline

TEST_F(LGLBackdropTest, RenderFrameDrawsAWhiteOutlineAroundTheRectangle)
{
    backdrop.loadTexture(quadrantPicture("frame.bmp"));
    backdrop.set(SVector3D(100, 50, 0), 0, 0, 0, 200, 100, false, false, 0.5f);
    pixelView();
    glColor4f(1, 0, 0, 0.5f);
    auto lines = itemsOf(recordFeedback([&] { backdrop.renderFrame(camera); }), GL_LINE_TOKEN);
    ASSERT_EQ(lines.size(), 4u);
    // left-top, right-top, right-bottom, left-bottom, back to left-top.
    const double path[5][2] = {{100, 50}, {300, 50}, {300, 150}, {100, 150}, {100, 50}};
    for (size_t i = 0; i < 4; ++i) {
        SCOPED_TRACE(i);
        ASSERT_EQ(lines[i].vertices.size(), 2u);
        EXPECT_NEAR(lines[i].vertices[0].x, path[i][0], 1e-3);
        EXPECT_NEAR(lines[i].vertices[0].y, path[i][1], 1e-3);
        EXPECT_NEAR(lines[i].vertices[1].x, path[i + 1][0], 1e-3);
        EXPECT_NEAR(lines[i].vertices[1].y, path[i + 1][1], 1e-3);
        for (const auto& v : lines[i].vertices) {
            EXPECT_FLOAT_EQ(v.r, 1.0f);
            EXPECT_FLOAT_EQ(v.g, 1.0f);
            EXPECT_FLOAT_EQ(v.b, 1.0f);
        }
    }
    GLfloat width = 0;
    glGetFloatv(GL_LINE_WIDTH, &width);
    EXPECT_EQ(width, 1.0f);
    EXPECT_TRUE(glIsEnabled(GL_TEXTURE_2D));
    glDisable(GL_TEXTURE_2D);
}

TEST_F(LGLBackdropTest, RenderFrameLinesAreTwoPixelsWideAndUntextured)
{
    // A red texture bound: textured lines would come out red.
    const std::string file = dir + "red.bmp";
    scene_test::writeSolidBmp(file, 4, 4, kRed);
    backdrop.loadTexture(file);
    backdrop.set(SVector3D(100, 100, 0), 0, 0, 0, 200, 100, false, false, 1.0f);
    pixelView();
    glEnable(GL_TEXTURE_2D);
    glBindTexture(GL_TEXTURE_2D, backdrop.texture);
    backdrop.renderFrame(camera);
    // The bottom edge (y = 100) at column 200: two lit rows.
    int lit = 0;
    for (int y = 95; y <= 105; ++y) {
        const RGB p = pixel(200, y);
        if (p.r > 0) {
            ++lit;
            EXPECT_TRUE(colourIs(p, kWhite, 0)) << y;
        }
    }
    EXPECT_EQ(lit, 2);
    // Nothing inside the outline.
    EXPECT_TRUE(colourIs(pixel(200, 150), RGB{0, 0, 0}, 0));
    glDisable(GL_TEXTURE_2D);
}

TEST_F(LGLBackdropTest, RenderFrameUsesThePlacedRotationsEvenForAFacingBackdrop)
{
    backdrop.loadTexture(quadrantPicture("editor.bmp"));
    camera.SetPosAndView(300, 200, 40, 400, 200, 0, 0, 1, 0);
    backdrop.set(SVector3D(100, 100, 0), 0, 0, 90, 100, 40, true, true, 1.0f);
    pixelView();
    auto lines = itemsOf(recordFeedback([&] { backdrop.renderFrame(camera); }), GL_LINE_TOKEN);
    ASSERT_EQ(lines.size(), 4u);
    // relativeToCamera moves it by the camera position; a quarter turn about (50, 20): x -> 70 - y,
    // y -> x - 30.
    const P3 first{300 + 100 + 70 - 0, 200 + 100 + 0 - 30, 40};
    EXPECT_NEAR(lines[0].vertices[0].x, first.x, 1e-3);
    EXPECT_NEAR(lines[0].vertices[0].y, first.y, 1e-3);
    EXPECT_NEAR(lines[0].vertices[0].z, 0.5 - first.z / 2000.0, 1e-6);
    // right-top (100, 0) -> (70, 70).
    EXPECT_NEAR(lines[0].vertices[1].x, 400 + 70, 1e-3);
    EXPECT_NEAR(lines[0].vertices[1].y, 300 + 70, 1e-3);
    glDisable(GL_TEXTURE_2D);
}

// ---------------------------------------------------------------- release

TEST_F(LGLBackdropTest, DisposeDeletesTheTextureAndNothingIsDrawnAfterwards)
{
    backdrop.loadTexture(quadrantPicture("bye.bmp"));
    backdrop.set(SVector3D(100, 100, 0), 0, 0, 0, 50, 50, false, false, 1.0f);
    const unsigned int id = backdrop.texture;
    ASSERT_TRUE(glIsTexture(id));
    scene_test::clearGLErrors();
    backdrop.dispose();
    EXPECT_FALSE(glIsTexture(id));
    EXPECT_EQ(backdrop.texture, 0u);
    pixelView();
    EXPECT_TRUE(recordFeedback([&] { backdrop.render(camera); }).empty());
    EXPECT_TRUE(recordFeedback([&] { backdrop.renderFrame(camera); }).empty());
    backdrop.dispose();
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}
