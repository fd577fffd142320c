// Object3DSRenderTest.cpp -- Object3DS rendering on Mesa: display lists, the opaque and transparent
// passes (faces, colours, alpha, texture coordinates, bound textures, material state), render and
// renderSubObject, transparent-face collection, texture animations and movies, the debugging views,
// and a real textured model read back as pixels.
#include "Object3DSTestSupport.h"

#include <ostrum_core/LImage.h>
#include <ostrum_gl/effects/LGLAVI.h>
#include <ostrum_gl/frame/LGL.h>

#include <GL/gl.h>

#include <sys/wait.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <set>

using namespace ostrum_test;
using namespace test3ds;
using namespace objtest;

namespace {

// Window coordinates of model points under the test's orthographic view of [-10, 10] x [-10, 10].
float wx(float x)
{
    return (x + 10.0f) / 20.0f * GLTestWindow::kWidth;
}
float wy(float y)
{
    return (y + 10.0f) / 20.0f * GLTestWindow::kHeight;
}

// A triangle facing the viewer: file points (x, 0, y) become library points (x, y, 0), counter-clockwise
// as given.
std::string flatTriangle(const std::string& name, const std::string& materialName, float x0, float y0, float x1,
                         float y1, float x2, float y2, const std::vector<UV>& uv = {})
{
    const std::string group = materialName.empty() ? std::string() : faceGroup(materialName, {0});
    return meshObject(name, {{x0, 0, y0}, {x1, 0, y1}, {x2, 0, y2}}, {{0, 1, 2}}, group, uv);
}

// Two triangles of a square, each with its own material.
std::string twoFaceSquare(const std::string& name, const std::string& first, const std::string& second, float x,
                          float y, float size)
{
    return meshObject(name, {{x, 0, y}, {x + size, 0, y}, {x + size, 0, y + size}, {x, 0, y + size}},
                      {{0, 1, 2}, {0, 2, 3}}, faceGroup(first, {0}) + faceGroup(second, {1}),
                      {{0, 0}, {1, 0}, {1, 1}, {0, 1}});
}

GLuint solidTexture(int r, int g, int b)
{
    const std::string path = makeTempDir() + "/solid.bmp";
    writeFile(path, solidBmp(r, g, b, 4));
    GLuint id = 0;
    LGL::CreateTexture(id, path);
    return id;
}

class Object3DSRender : public GLTest {
protected:
    void SetUp() override
    {
        GLTest::SetUp();
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        glOrtho(-10, 10, -10, 10, -100, 100);
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        glDisable(GL_LIGHTING);
        glDisable(GL_LIGHT0);
        glDisable(GL_TEXTURE_2D);
        glDisable(GL_BLEND);
        glDisable(GL_ALPHA_TEST);
        glDisable(GL_DEPTH_TEST);
        glDisable(GL_CULL_FACE);
        glDisable(GL_COLOR_MATERIAL);
        glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
        glLineWidth(1.0f);
        const GLfloat black[4] = {0, 0, 0, 1};
        glMaterialfv(GL_FRONT_AND_BACK, GL_SPECULAR, black);
        glMaterialfv(GL_FRONT_AND_BACK, GL_EMISSION, black);
        glMaterialf(GL_FRONT_AND_BACK, GL_SHININESS, 0.0f);
        while (glGetError() != GL_NO_ERROR) {
        }
    }

    static std::unique_ptr<Object3DS> loadBytes(const std::string& bytes)
    {
        auto o = makeObject();
        loadCaptured(*o, writeModel(bytes));
        return o;
    }

    static std::vector<FeedbackItem> polygons(const std::function<void()>& draw)
    {
        return itemsOf(recordFeedback(draw), GL_POLYGON_TOKEN);
    }

    static std::vector<FeedbackItem> callList(GLuint list)
    {
        return polygons([&] { glCallList(list); });
    }

    static void expectAt(const FeedbackVertex& v, float x, float y)
    {
        EXPECT_NEAR(v.x, wx(x), 1e-2);
        EXPECT_NEAR(v.y, wy(y), 1e-2);
    }

    static void expectColour(const FeedbackVertex& v, float r, float g, float b, float a)
    {
        EXPECT_NEAR(v.r, r, 1e-6);
        EXPECT_NEAR(v.g, g, 1e-6);
        EXPECT_NEAR(v.b, b, 1e-6);
        EXPECT_NEAR(v.a, a, 1e-6);
    }

    static std::vector<GLfloat> frontMaterial(GLenum which)
    {
        std::vector<GLfloat> v(4, -1.0f);
        glGetMaterialfv(GL_FRONT, which, v.data());
        return v;
    }

    static std::vector<GLfloat> currentColour()
    {
        std::vector<GLfloat> c(4, -1.0f);
        glGetFloatv(GL_CURRENT_COLOR, c.data());
        return c;
    }

    // The whole window as RGBA bytes.
    static std::vector<unsigned char> frame()
    {
        std::vector<unsigned char> px(GLTestWindow::kWidth * GLTestWindow::kHeight * 4);
        glReadPixels(0, 0, GLTestWindow::kWidth, GLTestWindow::kHeight, GL_RGBA, GL_UNSIGNED_BYTE, px.data());
        return px;
    }
};

// ---------------------------------------------------------------- the two passes

TEST_F(Object3DSRender, TransparentUntexturedFaceDrawsOnlyInTransparentPassWithAlpha179)
{
    auto o = loadBytes(file3ds(material("glass", "", 40, 80, 120, 0, 30) + flatTriangle("t", "glass", 0, 0, 4, 0, 0, 4)));
    ASSERT_DOUBLE_EQ(o->model.pMaterials[0].transparency, 0.3);
    EXPECT_TRUE(callList(o->opaqueList).empty());
    EXPECT_TRUE(callList(o->subObjectLists[0]).empty());
    const auto faces = callList(o->transparentList);
    ASSERT_EQ(faces.size(), 1u);
    ASSERT_EQ(faces[0].vertices.size(), 3u);
    expectAt(faces[0].vertices[0], 0, 0);
    expectAt(faces[0].vertices[1], 4, 0);
    expectAt(faces[0].vertices[2], 0, 4);
    for (const FeedbackVertex& v : faces[0].vertices)
        expectColour(v, 40 / 255.0f, 80 / 255.0f, 120 / 255.0f, 179 / 255.0f);
    // Blending is switched off after each face and the alpha test on.
    EXPECT_FALSE(glIsEnabled(GL_BLEND));
    EXPECT_TRUE(glIsEnabled(GL_ALPHA_TEST));
    EXPECT_FALSE(glIsEnabled(GL_TEXTURE_2D));
    EXPECT_EQ(currentColour(), (std::vector<GLfloat>{1, 1, 1, 1}));
}

TEST_F(Object3DSRender, TransparentFaceIsBlendedWithSourceAlpha)
{
    // Red at alpha 179 over a cleared black buffer: 255 * 179 / 255 = 179 in red.
    auto o = loadBytes(file3ds(material("glass", "", 255, 0, 0, 0, 30) + flatTriangle("t", "glass", -8, -8, 8, -8, -8, 8)));
    glCallList(o->transparentList);
    const std::vector<unsigned char> p = readPixel(GLTestWindow::kWidth / 4, GLTestWindow::kHeight / 4);
    EXPECT_NEAR(p[0], 179, 1);
    EXPECT_EQ(p[1], 0);
    EXPECT_EQ(p[2], 0);
    GLint src = 0, dst = 0;
    glGetIntegerv(GL_BLEND_SRC, &src);
    glGetIntegerv(GL_BLEND_DST, &dst);
    EXPECT_EQ(src, GL_SRC_ALPHA);
    EXPECT_EQ(dst, GL_ONE_MINUS_SRC_ALPHA);
}

TEST_F(Object3DSRender, OpaqueMaterialNeverReachesTransparentPass)
{
    auto o = loadBytes(file3ds(material("stone", "", 40, 80, 120) + flatTriangle("t", "stone", 0, 0, 4, 0, 0, 4)));
    ASSERT_EQ(o->model.pMaterials[0].transparency, 0.0);
    EXPECT_TRUE(callList(o->transparentList).empty());
    const auto faces = callList(o->opaqueList);
    ASSERT_EQ(faces.size(), 1u);
    for (const FeedbackVertex& v : faces[0].vertices)
        expectColour(v, 40 / 255.0f, 80 / 255.0f, 120 / 255.0f, 1.0f);
    const auto sub = callList(o->subObjectLists[0]);
    ASSERT_EQ(sub.size(), 1u);
    expectAt(sub[0].vertices[1], 4, 0);
    EXPECT_FALSE(glIsEnabled(GL_TEXTURE_2D));
    // After each face the colour is white again.
    const std::vector<GLfloat> c = currentColour();
    EXPECT_EQ(c, (std::vector<GLfloat>{1, 1, 1, 1}));
}

TEST_F(Object3DSRender, FacesOfOneSubObjectSplitBetweenPassesByMaterial)
{
    auto o = loadBytes(file3ds(material("stone", "", 255, 0, 0) + material("glass", "", 0, 0, 255, 0, 50) +
                               twoFaceSquare("sq", "stone", "glass", 0, 0, 4)));
    const auto opaque = callList(o->opaqueList);
    const auto transparent = callList(o->transparentList);
    ASSERT_EQ(opaque.size(), 1u);
    ASSERT_EQ(transparent.size(), 1u);
    expectAt(opaque[0].vertices[1], 4, 0);
    expectColour(opaque[0].vertices[0], 1, 0, 0, 1);
    expectAt(transparent[0].vertices[2], 0, 4);
    // 0.5 * 255 = 127.5, rounded away from zero.
    expectColour(transparent[0].vertices[0], 0, 0, 1, 128 / 255.0f);
}

TEST_F(Object3DSRender, FaceWithoutMaterialIsDrawnOpaqueInWhite)
{
    auto o = loadBytes(file3ds(flatTriangle("t", "", 0, 0, 4, 0, 0, 4)));
    ASSERT_EQ(o->model.numOfMaterials, 0);
    const auto faces = callList(o->opaqueList);
    ASSERT_EQ(faces.size(), 1u);
    for (const FeedbackVertex& v : faces[0].vertices)
        expectColour(v, 1, 1, 1, 1);
    EXPECT_TRUE(callList(o->transparentList).empty());
}

TEST_F(Object3DSRender, TexturedOpaqueFaceCarriesTextureCoordinatesAndWhite)
{
    const std::string dir = makeTempDir();
    writeFile(dir + "/green.bmp", solidBmp(0, 255, 0, 4));
    writeFile(dir + "/model.3ds", file3ds(material("tex", "green.bmp", 10, 20, 30) +
                                          flatTriangle("t", "tex", -8, -8, 8, -8, -8, 8, {{0.25f, 0.5f}, {1, 0}, {0, 1}})));
    auto o = makeObject();
    loadCaptured(*o, dir + "/model.3ds");
    const auto faces = callList(o->opaqueList);
    ASSERT_EQ(faces.size(), 1u);
    expectColour(faces[0].vertices[0], 1, 1, 1, 1);
    EXPECT_NEAR(faces[0].vertices[0].s, 0.25, 1e-6);
    EXPECT_NEAR(faces[0].vertices[0].t, 0.5, 1e-6);
    EXPECT_NEAR(faces[0].vertices[1].s, 1.0, 1e-6);
    EXPECT_NEAR(faces[0].vertices[2].t, 1.0, 1e-6);
    // Texturing is left on with the material's texture bound.
    EXPECT_TRUE(glIsEnabled(GL_TEXTURE_2D));
    GLint bound = 0;
    glGetIntegerv(GL_TEXTURE_BINDING_2D, &bound);
    EXPECT_EQ(static_cast<GLuint>(bound), o->textures[0]);
    glClear(GL_COLOR_BUFFER_BIT);
    glCallList(o->opaqueList);
    const std::vector<unsigned char> p = readPixel(wx(-6), wy(-6));
    EXPECT_EQ(p[0], 0);
    EXPECT_EQ(p[1], 255);
    EXPECT_EQ(p[2], 0);
}

TEST_F(Object3DSRender, TexturedFaceWithoutTextureCoordinatesSendsNone)
{
    const std::string dir = makeTempDir();
    writeFile(dir + "/green.bmp", solidBmp(0, 255, 0, 4));
    writeFile(dir + "/model.3ds", file3ds(material("tex", "green.bmp") + flatTriangle("t", "tex", 0, 0, 4, 0, 0, 4)));
    auto o = makeObject();
    loadCaptured(*o, dir + "/model.3ds");
    glTexCoord2f(0.75f, 0.125f);
    const auto faces = callList(o->opaqueList);
    ASSERT_EQ(faces.size(), 1u);
    for (const FeedbackVertex& v : faces[0].vertices) {
        EXPECT_NEAR(v.s, 0.75, 1e-6);
        EXPECT_NEAR(v.t, 0.125, 1e-6);
    }
}

TEST_F(Object3DSRender, TexturedTransparentFaceIsWhiteWithAlphaOne)
{
    const std::string dir = makeTempDir();
    writeFile(dir + "/green.bmp", solidBmp(0, 255, 0, 4));
    writeFile(dir + "/model.3ds", file3ds(material("tex", "green.bmp", 10, 20, 30, 0, 40) +
                                          flatTriangle("t", "tex", 0, 0, 4, 0, 0, 4, {{0, 0}, {1, 0}, {0, 1}})));
    auto o = makeObject();
    loadCaptured(*o, dir + "/model.3ds");
    EXPECT_TRUE(callList(o->opaqueList).empty());
    const auto faces = callList(o->transparentList);
    ASSERT_EQ(faces.size(), 1u);
    for (const FeedbackVertex& v : faces[0].vertices)
        expectColour(v, 1, 1, 1, 1);
    EXPECT_NEAR(faces[0].vertices[1].s, 1.0, 1e-6);
}

// ---------------------------------------------------------------- material state

TEST_F(Object3DSRender, EmissionIsSetForTheFaceAndResetAfterThePass)
{
    auto o = loadBytes(file3ds(material("glow", "", 0, 0, 0, 0, 0, 40) + flatTriangle("t", "glow", 0, 0, 4, 0, 0, 4)));
    ASSERT_DOUBLE_EQ(o->model.pMaterials[0].emissive, 0.4);
    // Lit with no light and black ambient and diffuse: a vertex shows its emission alone.
    glEnable(GL_LIGHTING);
    const GLfloat black[4] = {0, 0, 0, 1};
    glLightModelfv(GL_LIGHT_MODEL_AMBIENT, black);
    glMaterialfv(GL_FRONT, GL_AMBIENT, black);
    glMaterialfv(GL_FRONT, GL_DIFFUSE, black);
    const auto faces = callList(o->opaqueList);
    glDisable(GL_LIGHTING);
    ASSERT_EQ(faces.size(), 1u);
    EXPECT_NEAR(faces[0].vertices[0].r, 0.4, 1e-5);
    EXPECT_NEAR(faces[0].vertices[2].b, 0.4, 1e-5);
    EXPECT_EQ(frontMaterial(GL_EMISSION), (std::vector<GLfloat>{0, 0, 0, 1}));
}

class Object3DSSpecular : public Object3DSRender {
protected:
    // A model whose faces all have the unit normal (0, 0.6, 0.8), lit by a white specular light
    // from +z: the specular term is s * (n . h)^shininess with n . h = 0.8.
    std::vector<FeedbackItem> litFaces(Object3DS& o, bool transparent)
    {
        for (t3DSObject& s : o.model.pObject)
            for (CVector3& n : s.pNormals)
                n = libraryPoint(0.0f, -0.8f, 0.6f);
        o.scale(1.0);  // rebuilds the lists with these normals
        glEnable(GL_LIGHTING);
        glEnable(GL_LIGHT0);
        const GLfloat black[4] = {0, 0, 0, 1};
        const GLfloat white[4] = {1, 1, 1, 1};
        const GLfloat fromZ[4] = {0, 0, 1, 0};
        glLightModelfv(GL_LIGHT_MODEL_AMBIENT, black);
        glLightModeli(GL_LIGHT_MODEL_LOCAL_VIEWER, GL_FALSE);
        glLightfv(GL_LIGHT0, GL_AMBIENT, black);
        glLightfv(GL_LIGHT0, GL_DIFFUSE, black);
        glLightfv(GL_LIGHT0, GL_SPECULAR, white);
        glLightfv(GL_LIGHT0, GL_POSITION, fromZ);
        glMaterialfv(GL_FRONT, GL_AMBIENT, black);
        glMaterialfv(GL_FRONT, GL_DIFFUSE, black);
        const auto faces = callList(transparent ? o.transparentList : o.opaqueList);
        glDisable(GL_LIGHTING);
        glDisable(GL_LIGHT0);
        return faces;
    }
};

TEST_F(Object3DSSpecular, OpaqueFaceUsesShininessOneAndResetsAfterward)
{
    auto o = loadBytes(file3ds(material("shiny", "", 0, 0, 0, 50) + flatTriangle("t", "shiny", 0, 0, 4, 0, 0, 4)));
    const auto faces = litFaces(*o, false);
    ASSERT_EQ(faces.size(), 1u);
    // 0.5 * 0.8^1.
    EXPECT_NEAR(faces[0].vertices[0].r, 0.4, 1e-4);
    EXPECT_EQ(frontMaterial(GL_SPECULAR), (std::vector<GLfloat>{0, 0, 0, 1}));
    GLfloat shininess = -1;
    glGetMaterialfv(GL_FRONT, GL_SHININESS, &shininess);
    EXPECT_EQ(shininess, 0.0f);
}

TEST_F(Object3DSSpecular, TransparentFaceUsesShininessZero)
{
    auto o = loadBytes(file3ds(material("shiny", "", 0, 0, 0, 50, 20) + flatTriangle("t", "shiny", 0, 0, 4, 0, 0, 4)));
    const auto faces = litFaces(*o, false);
    EXPECT_TRUE(faces.empty());
    const auto transparent = litFaces(*o, true);
    ASSERT_EQ(transparent.size(), 1u);
    // 0.5 * 0.8^0.
    EXPECT_NEAR(transparent[0].vertices[0].r, 0.5, 1e-4);
    EXPECT_EQ(frontMaterial(GL_SPECULAR), (std::vector<GLfloat>{0, 0, 0, 1}));
}

TEST_F(Object3DSSpecular, LastFaceWithoutShininessLeavesShininessOneBehind)
{
    auto o = loadBytes(file3ds(material("shiny", "", 0, 0, 0, 50) + material("dull", "") +
                               twoFaceSquare("sq", "shiny", "dull", 0, 0, 4)));
    const auto faces = litFaces(*o, false);
    ASSERT_EQ(faces.size(), 2u);
    EXPECT_NEAR(faces[0].vertices[0].r, 0.4, 1e-4);
    // The second face turns the specular colour off but keeps shininess 1, and no reset follows.
    EXPECT_NEAR(faces[1].vertices[0].r, 0.0, 1e-6);
    EXPECT_EQ(frontMaterial(GL_SPECULAR), (std::vector<GLfloat>{0, 0, 0, 1}));
    GLfloat shininess = -1;
    glGetMaterialfv(GL_FRONT, GL_SHININESS, &shininess);
    EXPECT_EQ(shininess, 1.0f);
}

// ---------------------------------------------------------------- render and its lists

TEST_F(Object3DSRender, ModelWithoutSubObjectsRendersOnlyItsTransparentList)
{
    auto o = loadBytes(file3ds(material("m", "")));
    ASSERT_EQ(o->model.numOfObjects, 0);
    EXPECT_TRUE(o->subObjectLists.empty());
    EXPECT_TRUE(glIsList(o->transparentList));
    EXPECT_TRUE(recordFeedback([&] { o->render(); }).empty());
    // What render calls: the transparent list, and nothing else.
    glNewList(o->transparentList, GL_COMPILE);
    glPassThrough(7.0f);
    glEndList();
    glNewList(o->opaqueList, GL_COMPILE);
    glPassThrough(1.0f);
    glEndList();
    const auto items = recordFeedback([&] { o->render(); });
    ASSERT_EQ(items.size(), 1u);
    EXPECT_EQ(items[0].token, static_cast<GLenum>(GL_PASS_THROUGH_TOKEN));
    EXPECT_EQ(items[0].passThrough, 7.0f);
}

TEST_F(Object3DSRender, RenderCallsSubObjectListsInOrderThenTransparentList)
{
    auto o = loadBytes(file3ds(material("red", "", 255, 0, 0) + material("glass", "", 0, 0, 255, 0, 50) +
                               flatTriangle("a", "red", 0, 0, 2, 0, 0, 2) + flatTriangle("b", "glass", 3, 3, 5, 3, 3, 5) +
                               flatTriangle("c", "red", -5, -5, -3, -5, -5, -3)));
    ASSERT_EQ(o->subObjectLists.size(), 3u);
    glNewList(o->subObjectLists[0], GL_COMPILE);
    glPassThrough(10.0f);
    glEndList();
    glNewList(o->subObjectLists[1], GL_COMPILE);
    glPassThrough(11.0f);
    glEndList();
    glNewList(o->subObjectLists[2], GL_COMPILE);
    glPassThrough(12.0f);
    glEndList();
    glNewList(o->transparentList, GL_COMPILE);
    glPassThrough(20.0f);
    glEndList();
    const auto items = recordFeedback([&] { o->render(); });
    std::vector<float> order;
    for (const auto& i : items)
        order.push_back(i.passThrough);
    EXPECT_EQ(order, (std::vector<float>{10, 11, 12, 20}));
}

TEST_F(Object3DSRender, RenderDrawsOpaqueThenTransparentFaces)
{
    auto o = loadBytes(file3ds(material("red", "", 255, 0, 0) + material("glass", "", 0, 0, 255, 0, 50) +
                               twoFaceSquare("sq", "glass", "red", 0, 0, 4) + flatTriangle("c", "red", -5, -5, -3, -5, -5, -3)));
    const auto faces = polygons([&] { o->render(); });
    ASSERT_EQ(faces.size(), 3u);
    expectColour(faces[0].vertices[0], 1, 0, 0, 1);  // square's opaque face
    expectAt(faces[0].vertices[2], 0, 4);
    expectColour(faces[1].vertices[0], 1, 0, 0, 1);  // sub-object c
    expectAt(faces[1].vertices[0], -5, -5);
    expectColour(faces[2].vertices[0], 0, 0, 1, 128 / 255.0f);  // the transparent face last
    expectAt(faces[2].vertices[1], 4, 0);
    const auto transparent = polygons([&] { o->renderTranspFaces(); });
    ASSERT_EQ(transparent.size(), 1u);
    expectAt(transparent[0].vertices[1], 4, 0);
}

TEST_F(Object3DSRender, RenderSubObjectOutOfRangeDrawsNothing)
{
    auto o = loadBytes(file3ds(material("red", "", 255, 0, 0) + flatTriangle("a", "red", 0, 0, 2, 0, 0, 2) +
                               flatTriangle("b", "red", 3, 3, 5, 3, 3, 5)));
    EXPECT_TRUE(recordFeedback([&] { o->renderSubObject(-1); }).empty());
    EXPECT_TRUE(recordFeedback([&] { o->renderSubObject(o->model.numOfObjects); }).empty());
    const auto second = polygons([&] { o->renderSubObject(1); });
    ASSERT_EQ(second.size(), 1u);
    expectAt(second[0].vertices[0], 3, 3);
}

TEST_F(Object3DSRender, SubObjectWithAnimatedTextureHasNoListAndIsDrawnWithCurrentFrame)
{
    const std::string dir = makeTempDir();
    writeFile(dir + "/base.bmp", solidBmp(255, 255, 255, 4));
    writeFile(dir + "/model.3ds", file3ds(material("anim", "base.bmp") + material("plain", "", 9, 9, 9) +
                                          flatTriangle("a", "anim", -8, -8, 8, -8, -8, 8, {{0, 0}, {1, 0}, {0, 1}}) +
                                          flatTriangle("b", "plain", 8, 8, 9, 8, 8, 9)));
    auto o = makeObject();
    loadCaptured(*o, dir + "/model.3ds");
    EXPECT_NE(o->subObjectLists[0], 0u);
    EXPECT_FALSE(Object3DSTest::subObjectHasAnimatedTexture(*o, 0));

    Object3DS::tTexAnim anim;
    anim.frameTextures = {solidTexture(255, 0, 0), solidTexture(0, 0, 255)};
    anim.frameEnds = {10, 20};
    anim.step = 1;
    o->animRecords.push_back(anim);
    o->animSlot[0] = 0;
    EXPECT_TRUE(Object3DSTest::subObjectHasAnimatedTexture(*o, 0));
    EXPECT_FALSE(Object3DSTest::subObjectHasAnimatedTexture(*o, 1));
    o->scale(1.0);  // rebuilds the lists
    ASSERT_EQ(o->subObjectLists.size(), 2u);
    EXPECT_EQ(o->subObjectLists[0], 0u);
    EXPECT_NE(o->subObjectLists[1], 0u);

    glClear(GL_COLOR_BUFFER_BIT);
    o->render();
    std::vector<unsigned char> p = readPixel(wx(-6), wy(-6));
    EXPECT_EQ(p[0], 255);
    EXPECT_EQ(p[2], 0);
    o->animRecords[0].curFrame = 1;
    glClear(GL_COLOR_BUFFER_BIT);
    o->render();
    p = readPixel(wx(-6), wy(-6));
    EXPECT_EQ(p[0], 0);
    EXPECT_EQ(p[2], 255);
    // renderSubObject draws it immediately too.
    glClear(GL_COLOR_BUFFER_BIT);
    o->renderSubObject(0);
    EXPECT_EQ(readPixel(wx(-6), wy(-6))[2], 255);
    // The whole-model list holds the texture bound when it was compiled: frame 0.
    glClear(GL_COLOR_BUFFER_BIT);
    glCallList(o->opaqueList);
    p = readPixel(wx(-6), wy(-6));
    EXPECT_EQ(p[0], 255);
    EXPECT_EQ(p[2], 0);
}

TEST_F(Object3DSRender, MovieTextureWinsOverAnimationInOpaquePassButNotInTransparentPass)
{
    const std::string dir = makeTempDir();
    writeFile(dir + "/base.bmp", solidBmp(255, 255, 255, 4));
    writeFile(dir + "/model.3ds", file3ds(material("wall", "base.bmp") + material("pane", "base.bmp", 0, 0, 0, 0, 1) +
                                          flatTriangle("a", "wall", -8, -8, 8, -8, -8, 8, {{0, 0}, {1, 0}, {0, 1}}) +
                                          flatTriangle("b", "pane", -8, -8, 8, -8, -8, 8, {{0, 0}, {1, 0}, {0, 1}})));
    auto o = makeObject();
    loadCaptured(*o, dir + "/model.3ds");
    Object3DS::tTexAnim anim;
    anim.frameTextures = {solidTexture(0, 255, 0)};
    anim.frameEnds = {10};
    o->animRecords.push_back(anim);
    o->animSlot[0] = 0;
    o->animSlot[1] = 0;
    o->movies[0].textures[0] = solidTexture(255, 0, 0);
    o->numMovies = 1;
    o->movieSlot[0] = 0;
    o->movieSlot[1] = 0;
    o->scale(1.0);

    glClear(GL_COLOR_BUFFER_BIT);
    o->renderSubObject(0);
    std::vector<unsigned char> p = readPixel(wx(-6), wy(-6));
    EXPECT_EQ(p[0], 255);  // the movie
    EXPECT_EQ(p[1], 0);

    glClear(GL_COLOR_BUFFER_BIT);
    o->renderTranspFaces();
    p = readPixel(wx(-6), wy(-6));
    EXPECT_EQ(p[0], 0);  // the animation frame, blended at alpha 1
    EXPECT_EQ(p[1], 255);

    // Without slots each material binds its own texture.
    o->animSlot[1] = -1;
    o->scale(1.0);
    glClear(GL_COLOR_BUFFER_BIT);
    o->renderTranspFaces();
    p = readPixel(wx(-6), wy(-6));
    EXPECT_EQ(p[0], 255);
    EXPECT_EQ(p[1], 255);
    EXPECT_EQ(p[2], 255);
}

TEST_F(Object3DSRender, SlotsOnUntexturedMaterialDoNotMakeAnAnimatedSubObject)
{
    auto o = loadBytes(file3ds(material("plain", "", 9, 9, 9) + flatTriangle("a", "plain", 0, 0, 1, 0, 0, 1)));
    o->animRecords.resize(1);
    o->animSlot[0] = 0;
    o->movieSlot[0] = 0;
    EXPECT_FALSE(Object3DSTest::subObjectHasAnimatedTexture(*o, 0));
}

TEST_F(Object3DSRender, VerboseListBuildSaysHowMany)
{
    auto o = makeObject();
    o->verbose = true;
    const std::string out = loadCaptured(
        *o, writeModel(file3ds(flatTriangle("a", "", 0, 0, 1, 0, 0, 1) + flatTriangle("b", "", 0, 0, 1, 0, 0, 1))));
    EXPECT_NE(out.find("Creating 2 subobject DLs\n"), std::string::npos) << out;
}

TEST_F(Object3DSRender, RenderAfterDisposeDrawsSubObjectsImmediately)
{
    auto o = loadBytes(file3ds(material("red", "", 255, 0, 0) + flatTriangle("a", "red", 0, 0, 2, 0, 0, 2)));
    o->dispose();
    const auto faces = polygons([&] { o->render(); });
    ASSERT_EQ(faces.size(), 1u);
    expectColour(faces[0].vertices[0], 1, 1, 1, 1);  // the material list is gone
}

// ---------------------------------------------------------------- transparent faces

TEST_F(Object3DSRender, DetermineTransparentFacesPrintsItsLinesAndKeepsLastFace)
{
    auto o = loadBytes(file3ds(material("stone", "") + material("glass", "", 0, 0, 0, 0, 30) +
                               meshObject("a", {{0, 0, 0}, {1, 0, 0}, {1, 0, 1}, {0, 0, 1}}, {{0, 1, 2}, {0, 2, 3}, {1, 2, 3}},
                                          faceGroup("stone", {0}) + faceGroup("glass", {1, 2})) +
                               flatTriangle("b", "stone", 0, 0, 1, 0, 0, 1)));
    StdoutCapture capture;
    o->determineTransparentFaces(false);
    EXPECT_EQ(capture.take(),
              "a\n"
              "materialID 0, MaterialSize 2\nface  0, numFaces 3\ntransp  0.000000\n"
              "materialID 1, MaterialSize 2\nface  1, numFaces 3\ntransp  0.300000\n1\n1b\n2\n"
              "materialID 1, MaterialSize 2\nface  2, numFaces 3\ntransp  0.300000\n1\n1b\n2\n"
              "c\n"
              "materialID 0, MaterialSize 2\nface  0, numFaces 1\ntransp  0.000000\n"
              "c\n"
              "d\n");
    ASSERT_EQ(o->model.pObject[0].transparentFaces.size(), 1u);
    EXPECT_EQ(o->model.pObject[0].transparentFaces[0].vertIndex[0], 1);  // the last transparent face
    EXPECT_TRUE(o->model.pObject[1].transparentFaces.empty());
}

TEST_F(Object3DSRender, ForcedTransparencyChangesMaterialsButNotTheLists)
{
    auto o = loadBytes(file3ds(material("stone", "", 255, 0, 0) + flatTriangle("a", "stone", 0, 0, 2, 0, 0, 2)));
    StdoutCapture capture;
    o->determineTransparentFaces(true);
    EXPECT_EQ(capture.take(),
              "a\nmaterialID 0, MaterialSize 1\nface  0, numFaces 1\ntransp  0.800000\n1\n1b\n2\nc\nd\n");
    EXPECT_DOUBLE_EQ(o->model.pMaterials[0].transparency, 0.8);
    EXPECT_EQ(o->model.pObject[0].transparentFaces.size(), 1u);
    EXPECT_EQ(callList(o->opaqueList).size(), 1u);  // compiled before: still opaque
    o->scale(1.0);
    EXPECT_TRUE(callList(o->opaqueList).empty());
    const auto faces = callList(o->transparentList);
    ASSERT_EQ(faces.size(), 1u);
    EXPECT_NEAR(faces[0].vertices[0].a, 51 / 255.0f, 1e-6);  // 0.2 * 255 = 51
}

TEST_F(Object3DSRender, DetermineTransparentFacesOnEmptyModelPrintsADAndReturns)
{
    auto o = makeObject();
    StdoutCapture capture;
    o->determineTransparentFaces(true);
    EXPECT_EQ(capture.take(), "a\nd\n");
}

// ---------------------------------------------------------------- texture animation

Object3DS::tTexAnim record(std::vector<int> ends, int frame, int time, int step, int mode)
{
    Object3DS::tTexAnim a;
    a.frameEnds = std::move(ends);
    a.frameTextures.assign(a.frameEnds.size(), 0u);
    a.curFrame = frame;
    a.time = time;
    a.step = step;
    a.mode = mode;
    return a;
}

TEST_F(Object3DSRender, BackAndForthRecordReversesAtLastFrameAndContinuesFromFrameNMinus2)
{
    auto o = makeObject();
    o->animRecords.push_back(record({10, 20, 30}, 2, 25, 10, 2));
    o->handleTextureAnimation();
    EXPECT_EQ(o->animRecords[0].curFrame, 1);
    EXPECT_EQ(o->animRecords[0].time, 20);
    EXPECT_EQ(o->animRecords[0].step, -10);
    o->handleTextureAnimation();  // t = 10 <= frameEnds[0]
    EXPECT_EQ(o->animRecords[0].curFrame, 0);
    EXPECT_EQ(o->animRecords[0].time, 10);
    o->handleTextureAnimation();  // t = 0 at frame 0: off the start, forward again from frame 1
    EXPECT_EQ(o->animRecords[0].curFrame, 1);
    EXPECT_EQ(o->animRecords[0].time, 10);
    EXPECT_EQ(o->animRecords[0].step, 10);
}

TEST_F(Object3DSRender, LoopingRecordWithPositiveStepWrapsToFrameZeroWithTimeZero)
{
    auto o = makeObject();
    o->animRecords.push_back(record({10, 20, 30}, 2, 25, 10, 0));
    o->handleTextureAnimation();
    EXPECT_EQ(o->animRecords[0].curFrame, 0);
    EXPECT_EQ(o->animRecords[0].time, 0);
    EXPECT_EQ(o->animRecords[0].step, 10);
}

TEST_F(Object3DSRender, LoopingRecordWithNegativeStepWrapsToLastFrame)
{
    auto o = makeObject();
    o->animRecords.push_back(record({10, 20, 30}, 0, 5, -10, 1));
    o->handleTextureAnimation();
    EXPECT_EQ(o->animRecords[0].curFrame, 2);
    EXPECT_EQ(o->animRecords[0].time, 30);
    EXPECT_EQ(o->animRecords[0].step, -10);
}

TEST_F(Object3DSRender, RecordTimeAdvancesAndFramesChangeAtTheirEnds)
{
    auto o = makeObject();
    o->animRecords.push_back(record({10, 20, 30}, 0, 0, 4, 0));
    o->animRecords.push_back(record({10, 20, 30}, 2, 30, -5, 0));
    o->handleTextureAnimation();
    EXPECT_EQ(o->animRecords[0].curFrame, 0);
    EXPECT_EQ(o->animRecords[0].time, 4);
    EXPECT_EQ(o->animRecords[1].curFrame, 2);
    EXPECT_EQ(o->animRecords[1].time, 25);
    o->handleTextureAnimation();
    o->handleTextureAnimation();  // time 12 >= 10
    EXPECT_EQ(o->animRecords[0].curFrame, 1);
    EXPECT_EQ(o->animRecords[0].time, 12);
    EXPECT_EQ(o->animRecords[1].curFrame, 1);  // time 15 <= frameEnds[1]
    EXPECT_EQ(o->animRecords[1].time, 15);
}

TEST_F(Object3DSRender, RecordsWithoutFramesOrOneFrameStayInRange)
{
    auto o = makeObject();
    o->animRecords.push_back(record({}, 0, 0, 5, 0));
    o->animRecords.push_back(record({10}, 0, 8, 5, 2));
    o->animRecords.push_back(record({10}, 0, 2, -5, 0));
    o->handleTextureAnimation();
    EXPECT_EQ(o->animRecords[0].time, 0);  // skipped
    EXPECT_EQ(o->animRecords[1].curFrame, 0);
    EXPECT_EQ(o->animRecords[1].time, 0);
    EXPECT_EQ(o->animRecords[1].step, -5);
    EXPECT_EQ(o->animRecords[2].curFrame, 0);
    EXPECT_EQ(o->animRecords[2].time, 10);
}

// ---------------------------------------------------------------- movies

std::string rampMovie()
{
    // 50 frames of 64 x 48 at 25 frames per second: 40 ms each; frame N is grey 5N.
    static const std::string path = [] {
        const std::string p = makeTempDir() + "/ramp.avi";
        const std::string command =
            "ffmpeg -nostdin -v error -y -f lavfi -i \"nullsrc=s=64x48:r=25:d=2,format=rgb24,geq=r='N*5':g='N*5':"
            "b='N*5'\" -c:v ffv1 '" + p + "' 2>&1";
        const int status = std::system(command.c_str());
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << command;
        return p;
    }();
    return path;
}

double meanTextureGrey(GLuint texture)
{
    std::vector<unsigned char> texels(LGLAVI::kTextureSize * LGLAVI::kTextureSize * 3);
    glBindTexture(GL_TEXTURE_2D, texture);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glGetTexImage(GL_TEXTURE_2D, 0, GL_RGB, GL_UNSIGNED_BYTE, texels.data());
    double sum = 0;
    for (unsigned char b : texels)
        sum += b;
    return sum / texels.size();
}

TEST_F(Object3DSRender, MoviesFollowTheClockAndRestartAtTheirEnd)
{
    auto o = makeObject();
    int width = 0, height = 0;
    o->movies[0].createMovieTexture(rampMovie(), width, height);
    ASSERT_EQ(o->movies[0].msPerFrame, 40);
    ASSERT_EQ(o->movies[0].lastFrame, 50);
    o->numMovies = 1;

    o->movies[0].start = LGLAVI::clockMs() - 10 * 40 - 20;
    o->handleTextureMovies();
    const int frame = o->movies[0].frame;
    EXPECT_GE(frame, 10);
    EXPECT_LE(frame, 12);
    EXPECT_GE(o->movies[0].elapsed, 420);
    EXPECT_EQ(o->movies[0].elapsed / 40, frame);
    EXPECT_NEAR(meanTextureGrey(o->movies[0].textures[0]), 5.0 * frame, 3.0);

    const long before = LGLAVI::clockMs();
    o->movies[0].start = before - 50 * 40 - 5;
    o->handleTextureMovies();
    EXPECT_EQ(o->movies[0].frame, 0);
    EXPECT_EQ(o->movies[0].elapsed, 0);
    EXPECT_GE(o->movies[0].start, before);
    EXPECT_NEAR(meanTextureGrey(o->movies[0].textures[0]), 0.0, 3.0);

    // Movies beyond numMovies are left alone.
    o->movies[1].start = 12345;
    o->handleTextureMovies();
    EXPECT_EQ(o->movies[1].start, 12345);
    o->movies[0].closeAVI();
}

// ---------------------------------------------------------------- debugging views

TEST_F(Object3DSRender, BoundingBoxIsDrawnSolidThenAsWireFrameAtTheModelExtents)
{
    auto o = loadBytes(file3ds(meshObject("a", {{1, -2, 2}, {3, -1, 5}, {2, -4, 3}}, {{0, 1, 2}})));
    glEnable(GL_CULL_FACE);
    const auto items = recordFeedback([&] { o->renderBoundingBox(); });
    while (glGetError() != GL_NO_ERROR) {
    }
    const auto faces = itemsOf(items, GL_POLYGON_TOKEN);
    const auto lines = itemsOf(items, GL_LINE_TOKEN);
    ASSERT_FALSE(faces.empty());
    ASSERT_FALSE(lines.empty());
    // The real y extents, 2 to 5 (stored as -5 and -2), x 1 to 3, z 1 to 4.
    std::set<std::pair<int, int>> corners;
    for (const auto* list : {&faces, &lines})
        for (const FeedbackItem& item : *list)
            for (const FeedbackVertex& v : item.vertices) {
                const bool onX = std::fabs(v.x - wx(1)) < 0.05 || std::fabs(v.x - wx(3)) < 0.05;
                const bool onY = std::fabs(v.y - wy(2)) < 0.05 || std::fabs(v.y - wy(5)) < 0.05;
                EXPECT_TRUE(onX && onY) << v.x << " " << v.y;
                corners.insert({static_cast<int>(std::lround(v.x)), static_cast<int>(std::lround(v.y))});
            }
    EXPECT_EQ(corners.size(), 4u);
    for (const FeedbackItem& f : faces)
        expectColour(f.vertices[0], 0.0f, 0.2f, 0.5f, 0.1f);
    for (const FeedbackItem& l : lines)
        expectColour(l.vertices[0], 1.0f, 1.0f, 1.0f, 0.5f);
    EXPECT_FALSE(glIsEnabled(GL_CULL_FACE));
    EXPECT_FALSE(glIsEnabled(GL_BLEND));
    GLint mode[2] = {0, 0};
    glGetIntegerv(GL_POLYGON_MODE, mode);
    EXPECT_EQ(mode[0], GL_FILL);
    EXPECT_EQ(mode[1], GL_FILL);
    GLfloat width = 0;
    glGetFloatv(GL_LINE_WIDTH, &width);
    EXPECT_EQ(width, 1.0f);
    EXPECT_EQ(currentColour(), (std::vector<GLfloat>{1, 1, 1, 1}));
}

TEST_F(Object3DSRender, BoundingSphereIsARedWireSphereOfTheRadiusAtTheOrigin)
{
    auto o = loadBytes(file3ds(meshObject("a", {{4, 0, 4}, {6, 0, 4}, {4, 0, 6}}, {{0, 1, 2}})));
    const float r = static_cast<float>(o->radius);
    ASSERT_GT(r, 1.0f);
    const auto lines = itemsOf(recordFeedback([&] { o->renderBoundingSphere(); }), GL_LINE_TOKEN);
    ASSERT_GT(lines.size(), 100u);
    float farthest = 0.0f;
    for (const FeedbackItem& l : lines)
        for (const FeedbackVertex& v : l.vertices) {
            expectColour(v, 1, 0, 0, 1);
            const float x = v.x / GLTestWindow::kWidth * 20.0f - 10.0f;
            const float y = v.y / GLTestWindow::kHeight * 20.0f - 10.0f;
            EXPECT_LE(std::sqrt(x * x + y * y), r + 1e-3f);
            farthest = std::max(farthest, std::sqrt(x * x + y * y));
        }
    EXPECT_NEAR(farthest, r, 1e-2);  // centred on the origin, not on the model centre (5, 5)
    EXPECT_TRUE(glIsEnabled(GL_TEXTURE_2D));
    EXPECT_EQ(currentColour(), (std::vector<GLfloat>{1, 1, 1, 1}));
}

TEST_F(Object3DSRender, NormalsAreYellowLinesFromEveryVertex)
{
    auto o = loadBytes(file3ds(flatTriangle("a", "", 0, 0, 4, 0, 0, 4) + flatTriangle("b", "", 5, 5, 8, 5, 5, 8)));
    for (t3DSObject& s : o->model.pObject)
        for (CVector3& n : s.pNormals)
            n = libraryPoint(1.0f, 0.0f, 0.0f);  // along +x
    const auto lines = itemsOf(recordFeedback([&] { o->renderNormals(); }), GL_LINE_TOKEN);
    ASSERT_EQ(lines.size(), 6u);
    const float length = static_cast<float>(o->radius * 0.05);
    expectAt(lines[0].vertices[0], 0, 0);
    expectAt(lines[0].vertices[1], length, 0);
    expectAt(lines[4].vertices[0], 8, 5);
    expectAt(lines[4].vertices[1], 8 + length, 5);
    for (const FeedbackItem& l : lines)
        expectColour(l.vertices[0], 1, 1, 0, 1);
    EXPECT_FALSE(glIsEnabled(GL_TEXTURE_2D));
    EXPECT_EQ(currentColour(), (std::vector<GLfloat>{1, 1, 1, 1}));
}

// ---------------------------------------------------------------- a real textured model

TEST_F(Object3DSRender, RealRifleRendersWithItsBitmapTexture)
{
    const std::string dir = makeTempDir();
    ASSERT_TRUE(LFile::copy(assetsDir() + "/3ds/assimp-nonbsd/mar_rifle.3ds", dir + "/mar_rifle.3ds"));
    ASSERT_TRUE(LFile::copy(assetsDir() + "/3ds/assimp-nonbsd/m_rifl.bmp", dir + "/m_rifl.bmp"));
    auto o = makeObject();
    ASSERT_EQ(loadCaptured(*o, dir + "/mar_rifle.3ds"), "");
    o->scaleTo(9.0);
    glDisable(GL_CULL_FACE);
    glEnable(GL_DEPTH_TEST);
    glTranslated(-o->centerX, o->centerY, -o->centerZ);

    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    o->render();
    const std::vector<unsigned char> textured = frame();

    // The same model with a blue texture in its place shows where the model is drawn.
    const GLuint own = o->textures[0];
    o->textures[0] = solidTexture(0, 0, 255);
    o->scale(1.0);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    o->render();
    const std::vector<unsigned char> blue = frame();
    glDisable(GL_DEPTH_TEST);

    tImageBMP* image = LImage::LoadBMP((dir + "/m_rifl.bmp").c_str());
    ASSERT_NE(image, nullptr);
    std::vector<int> lo(3, 255), hi(3, 0);
    for (int i = 0; i < image->sizeX * image->sizeY; ++i)
        for (int c = 0; c < 3; ++c) {
            lo[c] = std::min<int>(lo[c], image->data[i * 3 + c]);
            hi[c] = std::max<int>(hi[c], image->data[i * 3 + c]);
        }
    std::free(image->data);
    std::free(image);

    int covered = 0;
    std::vector<double> mean(3, 0.0);
    std::set<unsigned> colours;
    for (size_t i = 0; i < blue.size(); i += 4) {
        const bool drawn = blue[i] == 0 && blue[i + 1] == 0 && blue[i + 2] == 255;
        if (!drawn) {
            // Nothing else is drawn: the background stays black in both frames.
            EXPECT_EQ(blue[i] | blue[i + 1] | blue[i + 2], 0);
            EXPECT_EQ(textured[i] | textured[i + 1] | textured[i + 2], 0);
            continue;
        }
        ++covered;
        for (int c = 0; c < 3; ++c)
            mean[c] += textured[i + c];
        colours.insert(textured[i] << 16 | textured[i + 1] << 8 | textured[i + 2]);
    }
    ASSERT_GT(covered, 1000);
    EXPECT_GT(colours.size(), 20u);  // a picture, not one colour
    for (int c = 0; c < 3; ++c) {
        mean[c] /= covered;
        EXPECT_GE(mean[c], lo[c]);
        EXPECT_LE(mean[c], hi[c]);
    }
    EXPECT_TRUE(glIsTexture(own));
}

}  // namespace
