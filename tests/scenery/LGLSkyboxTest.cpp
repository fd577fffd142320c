// LGLSkyboxTest.cpp -- the sky box: the name table, choosing the face files, the compiled box and its
// faces, centring on the camera, fogged faces rendered off-screen, and release, on Mesa.
#include <ostrum_gl/scenery/LGLSkybox.h>

#include "ScenePictureFiles.h"
#include "TestSupport.h"

#include <GL/gl.h>
#include <GL/glext.h>
#include <GL/glu.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <cmath>
#include <string>
#include <vector>

using ostrum_test::FeedbackItem;
using ostrum_test::FeedbackVertex;
using ostrum_test::GLTest;
using ostrum_test::itemsOf;
using ostrum_test::recordFeedback;
using ostrum_test::StdoutCapture;
using ostrum_test::writeFile;
using scene_test::RGB;
using scene_test::texel;
using scene_test::textureImage;

namespace {

const RGB kWhite{255, 255, 255};
// The fill colour of face k's test picture.
const RGB kFaceColour[6] = {{255, 0, 0}, {0, 255, 0}, {0, 0, 255}, {255, 255, 0}, {255, 0, 255}, {0, 255, 255}};
const char* const kFaceColourName[6] = {"red", "lime", "blue", "yellow", "magenta", "cyan"};
const char* const kNumbered[6] = {"_01", "_02", "_03", "_04", "_05", "_06"};
const char* const kDirection[6] = {"_rt", "_ft", "_lf", "_bk", "_up", "_dn"};

// Corners of face k's strip for a box of W x H x D, as drawn.
std::array<std::array<int, 3>, 4> faceCorners(int k, int W, int H, int D)
{
    switch (k) {
    case 2:
        return {{{0, 0, 0}, {W, 0, 0}, {0, H, 0}, {W, H, 0}}};
    case 0:
        return {{{W, 0, D}, {0, 0, D}, {W, H, D}, {0, H, D}}};
    case 4:
        return {{{W, H, D}, {0, H, D}, {W, H, 0}, {0, H, 0}}};
    case 1:
        return {{{0, 0, D}, {0, 0, 0}, {0, H, D}, {0, H, 0}}};
    case 3:
        return {{{W, 0, 0}, {W, 0, D}, {W, H, 0}, {W, H, D}}};
    default:
        return {{{W, 0, 0}, {0, 0, 0}, {W, 0, D}, {0, 0, D}}};
    }
}
// The faces in the order they are drawn.
const int kDrawOrder[6] = {2, 0, 4, 1, 3, 5};
const float kStripTex[4][2] = {{0, 0}, {1, 0}, {0, 1}, {1, 1}};

bool near(const RGB& a, const RGB& b, int tolerance)
{
    return std::abs(a.r - b.r) <= tolerance && std::abs(a.g - b.g) <= tolerance && std::abs(a.b - b.b) <= tolerance;
}

::testing::AssertionResult colourIs(const RGB& seen, const RGB& expected, int tolerance)
{
    if (near(seen, expected, tolerance))
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "(" << seen.r << ", " << seen.g << ", " << seen.b << ") is not ("
                                         << expected.r << ", " << expected.g << ", " << expected.b << ") within "
                                         << tolerance;
}

// RGB of one pixel of the back buffer, window coordinates (y up).
RGB pixel(int x, int y)
{
    unsigned char p[4] = {0, 0, 0, 0};
    glReadBuffer(GL_BACK);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(x, y, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, p);
    return RGB{p[0], p[1], p[2]};
}

struct P3World {
    double x, y, z;
};

struct Projected {
    double x, y, z;
};

// Window coordinates of a point under the current matrices.
Projected project(double x, double y, double z)
{
    GLdouble model[16], projection[16];
    GLint viewport[4];
    glGetDoublev(GL_MODELVIEW_MATRIX, model);
    glGetDoublev(GL_PROJECTION_MATRIX, projection);
    glGetIntegerv(GL_VIEWPORT, viewport);
    Projected p{};
    gluProject(x, y, z, model, projection, viewport, &p.x, &p.y, &p.z);
    return p;
}

class LGLSkyboxTest : public GLTest {
protected:
    void SetUp() override
    {
        GLTest::SetUp();
        dir = scene_test::testFolder() + "/";
        savedDir = LGLSkybox::skyboxDir;
        LGLSkybox::setDir(dir);
        glDisable(GL_LIGHTING);
        glDisable(GL_FOG);
        glDisable(GL_BLEND);
        glDisable(GL_ALPHA_TEST);
        glDisable(GL_CULL_FACE);
        glDisable(GL_TEXTURE_2D);
        glCullFace(GL_BACK);
        glFrontFace(GL_CCW);
        glEnable(GL_DEPTH_TEST);
        glDepthFunc(GL_LESS);
        glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
        scene_test::clearGLErrors();
    }
    void TearDown() override
    {
        sky.dispose();
        LGLSkybox::skyboxDir = savedDir;
        scene_test::restoreDefaultState();
    }

    // Six 8 x 8 face pictures of `name`: face k has colour k with a white top-left quadrant.
    void writeFaces(const std::string& name, const char* const suffixes[6], RGB const colours[6] = kFaceColour)
    {
        for (int k = 0; k < 6; ++k)
            scene_test::writeCornerBmp(dir + "sky_" + name + suffixes[k] + ".bmp", kWhite, colours[k]);
    }
    // Six solid 16 x 16 JPEG faces of `name` in the face colours, made once by ffmpeg and copied.
    void writeJpgFaces(const std::string& name, const char* const suffixes[6])
    {
        const std::string made = dir + "jpeg_colours/";
        if (!std::filesystem::exists(made)) {
            std::filesystem::create_directories(made);
            for (int k = 0; k < 6; ++k)
                scene_test::writeSolidJpg(made + std::to_string(k) + ".jpg", 16, 16, kFaceColourName[k]);
        }
        for (int k = 0; k < 6; ++k)
            std::filesystem::copy_file(made + std::to_string(k) + ".jpg", dir + "sky_" + name + suffixes[k] + ".jpg",
                                       std::filesystem::copy_options::overwrite_existing);
    }

    // The fill colour of a loaded face texture (its bottom-right texel).
    static RGB fillOf(unsigned int id)
    {
        int w = 0, h = 0;
        auto image = textureImage(id, w, h);
        return texel(image, w, w - 1, 0);
    }

    // A perspective view from the origin along `forward`, after clearing.
    static void lookFromOrigin(double fx, double fy, double fz, double ux, double uy, double uz)
    {
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        gluPerspective(60.0, 640.0 / 480.0, 1.0, 1000.0);
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        gluLookAt(0, 0, 0, fx, fy, fz, ux, uy, uz);
    }

    // An oblique orthographic view, one pixel per unit, in which no face of the box is seen edge-on.
    static void obliqueView()
    {
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        glOrtho(-320, 320, -240, 240, -1000, 1000);
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        glRotatef(25, 1, 0, 0);
        glRotatef(-35, 0, 1, 0);
        glTranslatef(-100, -60, -80);
    }

    std::string dir;
    std::string savedDir;
    LGLSkybox sky;
};

// Index of the expected corner that a feedback vertex lies on, or -1.
int cornerOf(const FeedbackVertex& v, const std::array<Projected, 4>& corners)
{
    for (int c = 0; c < 4; ++c) {
        if (std::fabs(v.x - corners[static_cast<size_t>(c)].x) < 1e-2 &&
            std::fabs(v.y - corners[static_cast<size_t>(c)].y) < 1e-2)
            return c;
    }
    return -1;
}

}  // namespace

// ---------------------------------------------------------------- the name table and the directory

TEST_F(LGLSkyboxTest, ConstructorAppendsTheTwentyThreeNamesAndStartsEmpty)
{
    const int before = LGLSkybox::getNumTexIDs();
    LGLSkybox s;
    ASSERT_EQ(LGLSkybox::getNumTexIDs(), before + 23);
    ASSERT_EQ(LGLSkybox::skyboxNames.size(), static_cast<size_t>(before + 23));
    for (int i = 0; i < 23; ++i)
        EXPECT_EQ(LGLSkybox::skyboxNames[static_cast<size_t>(before + i)], LGLSkybox::kDefaultNames[i]);
    EXPECT_EQ(s.texSetBase, 10);
    for (int set = 0; set < 2; ++set)
        for (int k = 0; k < 6; ++k)
            EXPECT_EQ(s.faceTextures[set][k], 9999u);
    EXPECT_EQ(s.displayList, static_cast<unsigned int>(-1));
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(s.size[i], 0);
        EXPECT_EQ(s.halfSize[i], 0);
    }
}

TEST_F(LGLSkyboxTest, EverySkyboxObjectAppendsTheNamesAgain)
{
    const int before = LGLSkybox::getNumTexIDs();
    LGLSkybox a;
    LGLSkybox b;
    EXPECT_EQ(LGLSkybox::getNumTexIDs(), before + 46);
    EXPECT_EQ(LGLSkybox::skyboxNames[static_cast<size_t>(before + 23 + 7)], LGLSkybox::kDefaultNames[7]);
}

TEST_F(LGLSkyboxTest, NamesAreTwentyThreeDistinctWords)
{
    std::vector<std::string> names(LGLSkybox::kDefaultNames, LGLSkybox::kDefaultNames + 23);
    for (size_t i = 0; i < names.size(); ++i) {
        EXPECT_FALSE(names[i].empty());
        for (size_t j = i + 1; j < names.size(); ++j)
            EXPECT_NE(names[i], names[j]);
    }
}

TEST_F(LGLSkyboxTest, SetDirSetsTheDirectoryOfEverySkybox)
{
    LGLSkybox::setDir("some/where/");
    EXPECT_EQ(LGLSkybox::skyboxDir, "some/where/");
    LGLSkybox::setDir(dir);
    EXPECT_EQ(LGLSkybox::skyboxDir, dir);
}

// ---------------------------------------------------------------- choosing and loading the faces

TEST_F(LGLSkyboxTest, NumberedBitmapFacesLoadInTableOrder)
{
    writeFaces("plain", kNumbered);
    StdoutCapture out;
    sky.loadTextures("plain", 200, 120, 160);
    EXPECT_EQ(out.take(), "");
    for (int k = 0; k < 6; ++k) {
        SCOPED_TRACE(k);
        ASSERT_TRUE(glIsTexture(sky.faceTextures[0][k]));
        EXPECT_TRUE(colourIs(fillOf(sky.faceTextures[0][k]), kFaceColour[k], 0));
        EXPECT_EQ(sky.faceTextures[1][k], 9999u);
    }
    EXPECT_EQ(sky.size[0], 200);
    EXPECT_EQ(sky.size[1], 120);
    EXPECT_EQ(sky.size[2], 160);
    EXPECT_EQ(sky.halfSize[0], 100);
    EXPECT_EQ(sky.halfSize[1], 60);
    EXPECT_EQ(sky.halfSize[2], 80);
    EXPECT_TRUE(glIsList(sky.displayList));
    EXPECT_EQ(sky.texSetBase, 10);
}

TEST_F(LGLSkyboxTest, DirectionBitmapFacesLoadWhenThereIsNoNumberedBitmap)
{
    writeFaces("dir", kDirection);
    sky.loadTextures("dir", 50, 50, 50);
    for (int k = 0; k < 6; ++k)
        EXPECT_TRUE(colourIs(fillOf(sky.faceTextures[0][k]), kFaceColour[k], 0)) << k;
}

TEST_F(LGLSkyboxTest, NumberedBitmapsWinOverDirectionBitmaps)
{
    const RGB grey[6] = {{10, 10, 10}, {20, 20, 20}, {30, 30, 30}, {40, 40, 40}, {50, 50, 50}, {60, 60, 60}};
    writeFaces("both", kDirection, grey);
    writeFaces("both", kNumbered);
    sky.loadTextures("both", 50, 50, 50);
    for (int k = 0; k < 6; ++k)
        EXPECT_TRUE(colourIs(fillOf(sky.faceTextures[0][k]), kFaceColour[k], 0)) << k;
}

TEST_F(LGLSkyboxTest, DirectionBitmapsWinOverNumberedJpegs)
{
    writeJpgFaces("mixed", kNumbered);
    writeFaces("mixed", kDirection);
    sky.loadTextures("mixed", 50, 50, 50);
    for (int k = 0; k < 6; ++k)
        EXPECT_TRUE(colourIs(fillOf(sky.faceTextures[0][k]), kFaceColour[k], 0)) << k;
}

TEST_F(LGLSkyboxTest, NumberedJpegFacesLoadWhenThereIsNoBitmap)
{
    writeJpgFaces("photo", kNumbered);
    writeJpgFaces("photo", kDirection);  // numbered JPEGs come before direction JPEGs
    for (int k = 0; k < 6; ++k)
        std::rename((dir + "sky_photo" + kDirection[k] + ".jpg").c_str(),
                    (dir + "sky_photo" + kDirection[(k + 1) % 6] + ".tmp").c_str());
    for (int k = 0; k < 6; ++k)
        std::rename((dir + "sky_photo" + kDirection[k] + ".tmp").c_str(),
                    (dir + "sky_photo" + kDirection[k] + ".jpg").c_str());
    sky.loadTextures("photo", 50, 50, 50);
    for (int k = 0; k < 6; ++k) {
        int w = 0, h = 0;
        auto image = textureImage(sky.faceTextures[0][k], w, h);
        EXPECT_EQ(w, 16);
        EXPECT_TRUE(colourIs(texel(image, w, 8, 8), kFaceColour[k], 8)) << k;
    }
}

TEST_F(LGLSkyboxTest, DirectionJpegFacesLoadWhenNothingElseIsThere)
{
    writeJpgFaces("film", kDirection);
    sky.loadTextures("film", 50, 50, 50);
    for (int k = 0; k < 6; ++k) {
        int w = 0, h = 0;
        auto image = textureImage(sky.faceTextures[0][k], w, h);
        EXPECT_TRUE(colourIs(texel(image, w, 8, 8), kFaceColour[k], 8)) << k;
    }
}

TEST_F(LGLSkyboxTest, NameWithoutFaceFilesInEitherSchemeOrFormatEndsTheProcess)
{
    // The last probe decides: with nothing found the direction names in JPEG are loaded, and the
    // first of them is missing.
    OSTRUM_EXPECT_EXIT_WITH_LINE(sky.loadTextures("nowhere", 100, 100, 100), 255,
                                 "** ERROR LGL::CreateTexture: Texture file \"" + dir +
                                     "sky_nowhere_rt.jpg\" not found!");
}

TEST_F(LGLSkyboxTest, FacesOtherThanTheProbedOnesDoNotChooseAScheme)
{
    // Only the first face of each scheme is probed: a numbered set without its "_01" bitmap falls
    // through to the direction names in JPEG.
    for (int k = 1; k < 6; ++k)
        scene_test::writeSolidBmp(dir + "sky_gap" + kNumbered[k] + ".bmp", 4, 4, kFaceColour[k]);
    OSTRUM_EXPECT_EXIT_WITH_LINE(sky.loadTextures("gap", 100, 100, 100), 255,
                                 "** ERROR LGL::CreateTexture: Texture file \"" + dir + "sky_gap_rt.jpg\" not found!");
}

TEST_F(LGLSkyboxTest, AMissingLaterFaceEndsTheProcess)
{
    writeFaces("partial", kNumbered);
    std::remove((dir + "sky_partial_04.bmp").c_str());
    OSTRUM_EXPECT_EXIT_WITH_LINE(sky.loadTextures("partial", 100, 100, 100), 255,
                                 "** ERROR LGL::CreateTexture: Texture file \"" + dir +
                                     "sky_partial_04.bmp\" not found!");
}

TEST_F(LGLSkyboxTest, AnUnreadableFaceEndsTheProcess)
{
    writeFaces("broken", kNumbered);
    writeFile(dir + "sky_broken_03.bmp", "BM not a bitmap");
    OSTRUM_EXPECT_EXIT_WITH_LINE(sky.loadTextures("broken", 100, 100, 100), 255,
                                 "ERROR LGL::CreateTexture: could not read the image \"" + dir +
                                     "sky_broken_03.bmp\"");
}

TEST_F(LGLSkyboxTest, ShortFormLoadsACube)
{
    writeFaces("cube", kNumbered);
    sky.loadTextures("cube", 91);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(sky.size[i], 91);
        EXPECT_EQ(sky.halfSize[i], 45);
    }
    EXPECT_TRUE(colourIs(fillOf(sky.faceTextures[0][5]), kFaceColour[5], 0));
}

TEST_F(LGLSkyboxTest, LoadTexturesByIDLoadsTheNameAtThatIndex)
{
    LGLSkybox other;  // makes sure the table holds the names
    const int id = 6;
    const std::string name = LGLSkybox::skyboxNames[id];
    writeFaces(name, kNumbered);
    sky.loadTexturesByID(id, 64);
    EXPECT_EQ(sky.size[0], 64);
    EXPECT_EQ(sky.size[1], 64);
    EXPECT_EQ(sky.size[2], 64);
    EXPECT_TRUE(glIsList(sky.displayList));
    EXPECT_TRUE(colourIs(fillOf(sky.faceTextures[0][0]), kFaceColour[0], 0));
    // The last id is in range too.
    const int last = LGLSkybox::getNumTexIDs() - 1;
    writeFaces(LGLSkybox::skyboxNames[static_cast<size_t>(last)], kDirection);
    LGLSkybox lastSky;
    lastSky.loadTexturesByID(last, 10);
    EXPECT_EQ(lastSky.size[0], 10);
    lastSky.dispose();
}

TEST_F(LGLSkyboxTest, LoadTexturesByIDOutsideTheTableDoesNothing)
{
    LGLSkybox other;
    // Face files for every name exist, so any load would succeed and show.
    for (const char* name : LGLSkybox::kDefaultNames)
        writeFaces(name, kNumbered);
    StdoutCapture out;
    sky.loadTexturesByID(-1, 64);
    sky.loadTexturesByID(LGLSkybox::getNumTexIDs(), 64);
    sky.loadTexturesByID(LGLSkybox::getNumTexIDs() + 5, 64);
    EXPECT_EQ(out.take(), "");
    EXPECT_EQ(sky.displayList, static_cast<unsigned int>(-1));
    for (int k = 0; k < 6; ++k)
        EXPECT_EQ(sky.faceTextures[0][k], 9999u);
    EXPECT_EQ(sky.size[0], 0);
}

// ---------------------------------------------------------------- the box

TEST_F(LGLSkyboxTest, RenderDrawsSixStripsInFaceOrderWithTheirCornersAndTextureCoordinates)
{
    writeFaces("box", kNumbered);
    const int W = 200, H = 120, D = 160;
    sky.loadTextures("box", W, H, D);
    obliqueView();
    std::array<std::array<Projected, 4>, 6> expected;
    for (int k = 0; k < 6; ++k) {
        auto corners = faceCorners(k, W, H, D);
        for (int c = 0; c < 4; ++c)
            expected[k][c] = project(corners[c][0], corners[c][1], corners[c][2]);
    }

    // render turns culling on: half the faces face away in one pass, the other half in the other.
    std::vector<int> facesSeen;
    for (GLenum culled : {GL_BACK, GL_FRONT}) {
        SCOPED_TRACE(culled == GL_BACK ? "back faces culled" : "front faces culled");
        glCullFace(culled);
        auto triangles = itemsOf(recordFeedback([&] { sky.render(); }), GL_POLYGON_TOKEN);
        ASSERT_EQ(triangles.size(), 6u);
        int lastPosition = -1;
        for (size_t f = 0; f < 3; ++f) {
            const FeedbackItem& first = triangles[2 * f];
            const FeedbackItem& second = triangles[2 * f + 1];
            ASSERT_EQ(first.vertices.size(), 3u);
            ASSERT_EQ(second.vertices.size(), 3u);
            // Which face: the one whose first three strip corners are the first triangle, in order.
            int face = -1;
            for (int k = 0; k < 6; ++k) {
                if (cornerOf(first.vertices[0], expected[k]) == 0 && cornerOf(first.vertices[1], expected[k]) == 1 &&
                    cornerOf(first.vertices[2], expected[k]) == 2)
                    face = k;
            }
            ASSERT_GE(face, 0) << "strip " << f;
            // The second triangle of the strip is corners 1, 2 and 3.
            std::vector<int> rest;
            for (const auto& v : second.vertices)
                rest.push_back(cornerOf(v, expected[face]));
            EXPECT_THAT(rest, ::testing::UnorderedElementsAre(1, 2, 3)) << "face " << face;
            // Texture coordinates (0, 0), (1, 0), (0, 1), (1, 1) on the four corners.
            for (const FeedbackItem* t : {&first, &second})
                for (const auto& v : t->vertices) {
                    const int c = cornerOf(v, expected[face]);
                    ASSERT_GE(c, 0);
                    EXPECT_FLOAT_EQ(v.s, kStripTex[c][0]) << "face " << face << " corner " << c;
                    EXPECT_FLOAT_EQ(v.t, kStripTex[c][1]) << "face " << face << " corner " << c;
                }
            // Faces come in the drawing order 2, 0, 4, 1, 3, 5.
            const int position = static_cast<int>(std::find(kDrawOrder, kDrawOrder + 6, face) - kDrawOrder);
            EXPECT_GT(position, lastPosition) << "face " << face;
            lastPosition = position;
            facesSeen.push_back(face);
        }
    }
    EXPECT_THAT(facesSeen, ::testing::UnorderedElementsAre(0, 1, 2, 3, 4, 5));
    EXPECT_TRUE(glIsEnabled(GL_TEXTURE_2D));
    EXPECT_TRUE(glIsEnabled(GL_CULL_FACE));
}

TEST_F(LGLSkyboxTest, FromInsideNearACornerAllSixFacesAreDrawnInFaceOrder)
{
    // From an eye near one corner, looking at the opposite one with a wide view, a part of every face
    // lies ahead: one recording sees all six, in the order they are drawn. Each feedback vertex is
    // taken back to the world to tell its face and the texture coordinates it must carry there.
    writeFaces("order", kNumbered);
    const int W = 200, H = 120, D = 160;
    sky.loadTextures("order", W, H, D);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    gluPerspective(150.0, 640.0 / 480.0, 0.5, 2000.0);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    gluLookAt(6, 5, 7, W, H, D, 0, 1, 0);
    GLdouble model[16], projection[16];
    GLint viewport[4];
    glGetDoublev(GL_MODELVIEW_MATRIX, model);
    glGetDoublev(GL_PROJECTION_MATRIX, projection);
    glGetIntegerv(GL_VIEWPORT, viewport);

    auto polygons = itemsOf(recordFeedback([&] { sky.render(); }), GL_POLYGON_TOKEN);
    ASSERT_FALSE(polygons.empty());
    std::vector<int> order;
    for (const auto& polygon : polygons) {
        std::vector<P3World> points;
        for (const auto& v : polygon.vertices) {
            P3World w{};
            gluUnProject(v.x, v.y, v.z, model, projection, viewport, &w.x, &w.y, &w.z);
            points.push_back(w);
        }
        P3World centre{0, 0, 0};
        for (const auto& w : points) {
            centre.x += w.x / points.size();
            centre.y += w.y / points.size();
            centre.z += w.z / points.size();
        }
        // The face whose plane the polygon's centre lies on.
        const double tolerance = 0.5;
        int face = -1;
        if (std::fabs(centre.z - D) < tolerance)
            face = 0;
        else if (std::fabs(centre.x) < tolerance)
            face = 1;
        else if (std::fabs(centre.z) < tolerance)
            face = 2;
        else if (std::fabs(centre.x - W) < tolerance)
            face = 3;
        else if (std::fabs(centre.y - H) < tolerance)
            face = 4;
        else if (std::fabs(centre.y) < tolerance)
            face = 5;
        ASSERT_GE(face, 0) << centre.x << ", " << centre.y << ", " << centre.z;
        if (order.empty() || order.back() != face)
            order.push_back(face);
        // s and t on each face: linear in the position, 0 and 1 on the strip's corners.
        for (size_t i = 0; i < points.size(); ++i) {
            const P3World& w = points[i];
            double s = 0, t = 0;
            switch (face) {
            case 2: s = w.x / W; t = w.y / H; break;
            case 0: s = (W - w.x) / W; t = w.y / H; break;
            case 4: s = (W - w.x) / W; t = (D - w.z) / D; break;
            case 1: s = (D - w.z) / D; t = w.y / H; break;
            case 3: s = w.z / D; t = w.y / H; break;
            default: s = (W - w.x) / W; t = w.z / D; break;
            }
            EXPECT_NEAR(polygon.vertices[i].s, s, 2e-3) << "face " << face;
            EXPECT_NEAR(polygon.vertices[i].t, t, 2e-3) << "face " << face;
        }
    }
    EXPECT_THAT(order, ::testing::ElementsAre(2, 0, 4, 1, 3, 5));
}

TEST_F(LGLSkyboxTest, RenderClampsEveryFaceTextureToItsEdge)
{
    writeFaces("clamp", kNumbered);
    sky.loadTextures("clamp", 100, 100, 100);
    // The wrap modes are part of the compiled box: they are set when it is drawn.
    setPixelProjection();
    sky.renderDL(0, 0, 0);
    for (int k = 0; k < 6; ++k) {
        GLint s = 0, t = 0;
        glBindTexture(GL_TEXTURE_2D, sky.faceTextures[0][k]);
        glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, &s);
        glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, &t);
        EXPECT_EQ(s, GL_CLAMP_TO_EDGE) << k;
        EXPECT_EQ(t, GL_CLAMP_TO_EDGE) << k;
    }
}

TEST_F(LGLSkyboxTest, FromInsideEveryFaceShowsItsPictureUprightAndUnmirrored)
{
    writeFaces("inside", kNumbered);
    sky.loadTextures("inside", 200, 200, 200);
    struct View {
        int face;
        double f[3];
        double up[3];
    };
    // The four side faces seen straight on: the white quadrant at the window's top left.
    const View sides[] = {
        {2, {0, 0, -1}, {0, 1, 0}},  // z = 0, the box's -z side once centred
        {0, {0, 0, 1}, {0, 1, 0}},   // z = D
        {1, {-1, 0, 0}, {0, 1, 0}},  // x = 0
        {3, {1, 0, 0}, {0, 1, 0}},   // x = W
    };
    for (const View& v : sides) {
        SCOPED_TRACE(v.face);
        lookFromOrigin(v.f[0], v.f[1], v.f[2], v.up[0], v.up[1], v.up[2]);
        sky.renderDL(0, 0, 0);
        EXPECT_TRUE(colourIs(pixel(160, 360), kWhite, 2));
        EXPECT_TRUE(colourIs(pixel(480, 360), kFaceColour[v.face], 2));
        EXPECT_TRUE(colourIs(pixel(160, 120), kFaceColour[v.face], 2));
        EXPECT_TRUE(colourIs(pixel(480, 120), kFaceColour[v.face], 2));
    }
    // Top and bottom: the face's colour in three quadrants and its white corner in one.
    const View caps[] = {{4, {0, 1, 0}, {0, 0, -1}}, {5, {0, -1, 0}, {0, 0, 1}}};
    for (const View& v : caps) {
        SCOPED_TRACE(v.face);
        lookFromOrigin(v.f[0], v.f[1], v.f[2], v.up[0], v.up[1], v.up[2]);
        sky.renderDL(0, 0, 0);
        int white = 0, coloured = 0;
        for (auto xy : {std::array<int, 2>{160, 360}, {480, 360}, {160, 120}, {480, 120}}) {
            const RGB p = pixel(xy[0], xy[1]);
            white += near(p, kWhite, 2);
            coloured += near(p, kFaceColour[v.face], 2);
        }
        EXPECT_EQ(white, 1);
        EXPECT_EQ(coloured, 3);
    }
}

TEST_F(LGLSkyboxTest, RenderDLCentresTheBoxOnThePoint)
{
    writeFaces("centre", kNumbered);
    sky.loadTextures("centre", 200, 120, 160);
    obliqueView();
    glLoadIdentity();
    glRotatef(25, 1, 0, 0);
    glRotatef(-35, 0, 1, 0);
    // Face 2's first corner, (0, 0, 0) of the box, lands at the point minus the half sizes.
    const Projected expected = project(30 - 100, -20 - 60, 15 - 80);
    const Projected far = project(30 + 100, -20 + 60, 15 + 80);
    std::vector<FeedbackItem> triangles;
    for (GLenum culled : {GL_BACK, GL_FRONT}) {
        glCullFace(culled);
        auto pass = itemsOf(recordFeedback([&] { sky.renderDL(30, -20, 15); }), GL_POLYGON_TOKEN);
        triangles.insert(triangles.end(), pass.begin(), pass.end());
    }
    ASSERT_EQ(triangles.size(), 12u);
    bool sawNear = false, sawFar = false;
    for (const auto& t : triangles)
        for (const auto& v : t.vertices) {
            sawNear = sawNear || (std::fabs(v.x - expected.x) < 1e-2 && std::fabs(v.y - expected.y) < 1e-2 &&
                                  std::fabs(v.z - expected.z) < 1e-5);
            sawFar = sawFar || (std::fabs(v.x - far.x) < 1e-2 && std::fabs(v.y - far.y) < 1e-2 &&
                                std::fabs(v.z - far.z) < 1e-5);
        }
    EXPECT_TRUE(sawNear);
    EXPECT_TRUE(sawFar);
    // The matrix is as it was.
    GLdouble model[16];
    glGetDoublev(GL_MODELVIEW_MATRIX, model);
    glPushMatrix();
    glLoadIdentity();
    glRotatef(25, 1, 0, 0);
    glRotatef(-35, 0, 1, 0);
    GLdouble reference[16];
    glGetDoublev(GL_MODELVIEW_MATRIX, reference);
    glPopMatrix();
    for (int i = 0; i < 16; ++i)
        EXPECT_DOUBLE_EQ(model[i], reference[i]);
}

TEST_F(LGLSkyboxTest, OddBoxSizesCentreTheBoxHalfAUnitOff)
{
    writeFaces("odd", kNumbered);
    sky.loadTextures("odd", 11, 7, 5);
    EXPECT_EQ(sky.halfSize[0], 5);
    EXPECT_EQ(sky.halfSize[1], 3);
    EXPECT_EQ(sky.halfSize[2], 2);
    // Looked at straight down -z in pixels: x and y of every corner show directly.
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(0, 640, 0, 480, -1000, 1000);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glCullFace(GL_BACK);
    // Face 2 (z = 0 of the box) faces +z: its strip from the box's (0, 0) to (11, 7).
    auto triangles = itemsOf(recordFeedback([&] { sky.renderDL(100, 200, 0); }), GL_POLYGON_TOKEN);
    ASSERT_FALSE(triangles.empty());
    const auto& first = triangles[0].vertices;
    ASSERT_EQ(first.size(), 3u);
    // From x - 5 to x + 6, y - 3 to y + 4, z - 2 to z + 3.
    EXPECT_FLOAT_EQ(first[0].x, 95);
    EXPECT_FLOAT_EQ(first[0].y, 197);
    EXPECT_FLOAT_EQ(first[1].x, 106);
    EXPECT_FLOAT_EQ(first[1].y, 197);
    EXPECT_FLOAT_EQ(first[2].x, 95);
    EXPECT_FLOAT_EQ(first[2].y, 204);
    // Window depth of z - 2 under glOrtho(-1000, 1000): 0.5 - (z - 2) / 2000 with z = 0.
    EXPECT_NEAR(first[0].z, 0.5 + 2.0 / 2000.0, 1e-6);
}

TEST_F(LGLSkyboxTest, RenderDLBeforeLoadingDrawsNothing)
{
    setPixelProjection();
    auto items = recordFeedback([&] { sky.renderDL(0, 0, 0); });
    EXPECT_TRUE(items.empty());
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

TEST_F(LGLSkyboxTest, GenerateDLReplacesTheOldList)
{
    writeFaces("again", kNumbered);
    sky.loadTextures("again", 100, 100, 100);
    const unsigned int first = sky.displayList;
    ASSERT_TRUE(glIsList(first));
    sky.generateDL();
    // The old name was deleted: either it is gone or it was handed out again as the new list.
    EXPECT_TRUE(sky.displayList == first || !glIsList(first));
    EXPECT_TRUE(glIsList(sky.displayList));
    const unsigned int second = sky.displayList;
    sky.loadTextures("again", 60, 60, 60);
    EXPECT_TRUE(sky.displayList == second || !glIsList(second));
    EXPECT_EQ(sky.size[0], 60);
}

TEST_F(LGLSkyboxTest, GenerateDLBeforeLoadingCompilesNoFace)
{
    sky.generateDL();
    ASSERT_TRUE(glIsList(sky.displayList));
    setPixelProjection();
    auto items = recordFeedback([&] { sky.renderDL(0, 0, 0); });
    EXPECT_TRUE(items.empty());
    EXPECT_FALSE(glIsTexture(9999));
}

// ---------------------------------------------------------------- fog

TEST_F(LGLSkyboxTest, ApplyFogBlendsTheFogColourIntoEveryFaceAndDrawsTheFoggedSet)
{
    writeFaces("fog", kNumbered);
    sky.loadTextures("fog", 200, 200, 200);
    const unsigned int listBefore = sky.displayList;
    glViewport(10, 20, 300, 200);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(-5, 5, -5, 5, -5, 5);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glTranslatef(1, 2, 3);
    GLdouble projection[16], model[16];
    glGetDoublev(GL_PROJECTION_MATRIX, projection);
    glGetDoublev(GL_MODELVIEW_MATRIX, model);
    glColor4f(0.1f, 0.9f, 0.3f, 0.2f);  // a colour the faces must not pick up

    scene_test::clearGLErrors();
    sky.applyFog(0.5, LGL::tGLRGB{0.0f, 0.0f, 1.0f});

    EXPECT_EQ(sky.texSetBase, 20);
    for (int k = 0; k < 6; ++k) {
        SCOPED_TRACE(k);
        const unsigned int id = sky.faceTextures[1][k];
        ASSERT_NE(id, 9999u);
        ASSERT_TRUE(glIsTexture(id));
        int w = 0, h = 0;
        auto image = textureImage(id, w, h);
        EXPECT_EQ(w, 512);
        EXPECT_EQ(h, 512);
        GLint format = 0;
        glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_INTERNAL_FORMAT, &format);
        EXPECT_EQ(format, GL_RGBA);
        // Half the face's fill colour and half blue, in the face's lower right part.
        const RGB fill = kFaceColour[k];
        const RGB fogged{(fill.r + 1) / 2, (fill.g + 1) / 2, (fill.b + 255 + 1) / 2};
        EXPECT_TRUE(colourIs(texel(image, w, 384, 128), fogged, 2));
        // The white top-left corner became light blue; it lies in rows of the window (below 480).
        EXPECT_TRUE(colourIs(texel(image, w, 128, 400), RGB{128, 128, 255}, 2));
        // The loaded faces are still there.
        EXPECT_TRUE(glIsTexture(sky.faceTextures[0][k]));
    }
    // What applyFog leaves behind.
    EXPECT_TRUE(glIsEnabled(GL_DEPTH_TEST));
    EXPECT_TRUE(glIsEnabled(GL_BLEND));
    GLint viewport[4];
    glGetIntegerv(GL_VIEWPORT, viewport);
    EXPECT_EQ(viewport[0], 10);
    EXPECT_EQ(viewport[1], 20);
    EXPECT_EQ(viewport[2], 300);
    EXPECT_EQ(viewport[3], 200);
    GLdouble projectionAfter[16], modelAfter[16];
    glGetDoublev(GL_PROJECTION_MATRIX, projectionAfter);
    glGetDoublev(GL_MODELVIEW_MATRIX, modelAfter);
    for (int i = 0; i < 16; ++i) {
        EXPECT_DOUBLE_EQ(projectionAfter[i], projection[i]);
        EXPECT_DOUBLE_EQ(modelAfter[i], model[i]);
    }
    GLint mode = 0;
    glGetIntegerv(GL_MATRIX_MODE, &mode);
    EXPECT_EQ(mode, GL_MODELVIEW);
    GLfloat colour[4];
    glGetFloatv(GL_CURRENT_COLOR, colour);
    EXPECT_FLOAT_EQ(colour[0], 1.0f);
    EXPECT_FLOAT_EQ(colour[3], 1.0f);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    EXPECT_TRUE(sky.displayList == listBefore || !glIsList(listBefore));

    // The rebuilt box around the camera shows the fogged faces.
    glDisable(GL_BLEND);
    glViewport(0, 0, 640, 480);
    const int lookAt[4] = {2, 0, 1, 3};
    const double forward[4][3] = {{0, 0, -1}, {0, 0, 1}, {-1, 0, 0}, {1, 0, 0}};
    for (int i = 0; i < 4; ++i) {
        const int k = lookAt[i];
        SCOPED_TRACE(k);
        lookFromOrigin(forward[i][0], forward[i][1], forward[i][2], 0, 1, 0);
        sky.renderDL(0, 0, 0);
        const RGB fill = kFaceColour[k];
        EXPECT_TRUE(colourIs(pixel(480, 120), RGB{(fill.r + 1) / 2, (fill.g + 1) / 2, (fill.b + 256) / 2}, 3));
        EXPECT_TRUE(colourIs(pixel(160, 300), RGB{128, 128, 255}, 3));
    }
}

TEST_F(LGLSkyboxTest, LaterFogsRenderFromTheLoadedFacesIntoTheSameTextures)
{
    writeFaces("refog", kNumbered);
    sky.loadTextures("refog", 100, 100, 100);
    sky.applyFog(0.5, LGL::tGLRGB{0.0f, 0.0f, 1.0f});
    unsigned int fogged[6];
    for (int k = 0; k < 6; ++k)
        fogged[k] = sky.faceTextures[1][k];
    sky.applyFog(0.25, LGL::tGLRGB{1.0f, 1.0f, 1.0f});
    EXPECT_EQ(sky.texSetBase, 20);
    for (int k = 0; k < 6; ++k) {
        SCOPED_TRACE(k);
        EXPECT_EQ(sky.faceTextures[1][k], fogged[k]);
        int w = 0, h = 0;
        auto image = textureImage(fogged[k], w, h);
        // Three quarters of the loaded fill and a quarter white: not fog over fog.
        const RGB fill = kFaceColour[k];
        const RGB expected{(fill.r * 3 + 255) / 4, (fill.g * 3 + 255) / 4, (fill.b * 3 + 255) / 4};
        EXPECT_TRUE(colourIs(texel(image, w, 384, 128), expected, 2));
    }
}

TEST_F(LGLSkyboxTest, FogOfNothingCopiesTheFacesAsTheyAre)
{
    writeFaces("clearfog", kNumbered);
    sky.loadTextures("clearfog", 100, 100, 100);
    sky.applyFog(0.0, LGL::tGLRGB{1.0f, 0.0f, 0.0f});
    for (int k = 0; k < 6; ++k) {
        int w = 0, h = 0;
        auto image = textureImage(sky.faceTextures[1][k], w, h);
        // The picture keeps its orientation: white top left, fill elsewhere.
        EXPECT_TRUE(colourIs(texel(image, w, 100, 400), kWhite, 1)) << k;
        EXPECT_TRUE(colourIs(texel(image, w, 400, 400), kFaceColour[k], 1)) << k;
        EXPECT_TRUE(colourIs(texel(image, w, 100, 100), kFaceColour[k], 1)) << k;
        EXPECT_TRUE(colourIs(texel(image, w, 400, 100), kFaceColour[k], 1)) << k;
    }
}

TEST_F(LGLSkyboxTest, ApplyFogBeforeLoadingDoesNothing)
{
    sky.applyFog(0.5, LGL::tGLRGB{0.0f, 0.0f, 1.0f});
    EXPECT_EQ(sky.texSetBase, 10);
    EXPECT_EQ(sky.displayList, static_cast<unsigned int>(-1));
    for (int k = 0; k < 6; ++k)
        EXPECT_EQ(sky.faceTextures[1][k], 9999u);
}

// ---------------------------------------------------------------- release

TEST_F(LGLSkyboxTest, DisposeDeletesTheListAndEveryFaceTexture)
{
    writeFaces("gone", kNumbered);
    sky.loadTextures("gone", 100, 100, 100);
    sky.applyFog(0.5, LGL::tGLRGB{0.0f, 0.0f, 0.0f});
    const unsigned int list = sky.displayList;
    unsigned int textures[2][6];
    for (int set = 0; set < 2; ++set)
        for (int k = 0; k < 6; ++k)
            textures[set][k] = sky.faceTextures[set][k];
    ASSERT_EQ(sky.texSetBase, 20);
    scene_test::clearGLErrors();

    sky.dispose();

    EXPECT_FALSE(glIsList(list));
    EXPECT_EQ(sky.displayList, static_cast<unsigned int>(-1));
    for (int set = 0; set < 2; ++set)
        for (int k = 0; k < 6; ++k) {
            EXPECT_FALSE(glIsTexture(textures[set][k]));
            EXPECT_EQ(sky.faceTextures[set][k], 9999u);
        }
    EXPECT_EQ(sky.texSetBase, 10);
    // Nothing is drawn and a second dispose has nothing left to delete.
    setPixelProjection();
    EXPECT_TRUE(recordFeedback([&] { sky.renderDL(0, 0, 0); }).empty());
    sky.dispose();
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

TEST_F(LGLSkyboxTest, DisposeOfAFreshSkyboxDeletesNothing)
{
    unsigned int unrelated = 0;
    glGenTextures(1, &unrelated);
    glBindTexture(GL_TEXTURE_2D, unrelated);
    sky.dispose();
    EXPECT_TRUE(glIsTexture(unrelated));
    EXPECT_EQ(sky.texSetBase, 10);
    glDeleteTextures(1, &unrelated);
}
