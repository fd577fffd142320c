// LGLTerrainRenderTest.cpp -- terrain drawing on Mesa: far-plain rectangles and their texture flips,
// the bottom, tiles in wireframe and textured, the blended and detail-overlay combiners read back as
// pixels, flat maps, tile order with and without the sort table, display lists, fog, grid points with
// picking names, and rectangle outlines.
#include <ostrum_gl/scenery/LGLTerrain.h>

#include <ostrum_core/LGeom.h>

#include "TerrainTestSupport.h"
#include "TestSupport.h"

#include <GL/gl.h>
#include <GL/glext.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

using namespace ostrum_test;
using namespace terrain_test;

namespace {

const double kPos = 0.05;  // world units: what float window coordinates resolve at these scales

struct Corner {
    double x, y, z;
};

void expectAt(const WorldPoint& p, const Corner& c, const std::string& what)
{
    EXPECT_NEAR(p.x, c.x, kPos) << what;
    EXPECT_NEAR(p.y, c.y, kPos) << what;
    EXPECT_NEAR(p.z, c.z, kPos) << what;
}

void expectRect(const tRect& r, int left, int top, int right, int bottom, const std::string& what)
{
    EXPECT_EQ(r.left, left) << what;
    EXPECT_EQ(r.top, top) << what;
    EXPECT_EQ(r.right, right) << what;
    EXPECT_EQ(r.bottom, bottom) << what;
}

// Hits of a GL_SELECT pass, each the list of names on the stack.
std::vector<std::vector<GLuint>> selectHits(const std::function<void()>& draw)
{
    std::vector<GLuint> buffer(1 << 22);
    glSelectBuffer(static_cast<GLsizei>(buffer.size()), buffer.data());
    glRenderMode(GL_SELECT);
    glInitNames();
    glPushName(0);
    draw();
    const GLint hits = glRenderMode(GL_RENDER);
    std::vector<std::vector<GLuint>> out;
    EXPECT_GE(hits, 0) << "selection buffer overflow";
    size_t i = 0;
    for (GLint h = 0; h < hits; ++h) {
        const GLuint count = buffer[i];
        i += 3;  // count, min depth, max depth
        out.emplace_back(buffer.begin() + static_cast<long>(i), buffer.begin() + static_cast<long>(i + count));
        i += count;
    }
    return out;
}

std::vector<GLfloat> currentColour()
{
    std::vector<GLfloat> c(4);
    glGetFloatv(GL_CURRENT_COLOR, c.data());
    return c;
}

}  // namespace

class LGLTerrainRenderTest : public TerrainGLTest {
protected:
    // Triangles (as their world corners) of a feedback pass.
    std::vector<std::vector<WorldPoint>> triangles(const TopView& view, const std::vector<FeedbackItem>& items)
    {
        std::vector<std::vector<WorldPoint>> out;
        for (const auto& item : itemsOf(items, GL_POLYGON_TOKEN))
            out.push_back(worldPoints(view, item.vertices));
        return out;
    }
};

// ---------------------------------------------------------------- far-plain rectangles

TEST_F(LGLTerrainRenderTest, FarPlainRectanglesSurroundTheMap)
{
    terrain->worldSize = 1000;
    tRect r;
    const int expected[8][4] = {
        {1000, -1000, 2000, 0}, {0, -1000, 1000, 0}, {-1000, -1000, 0, 0}, {1000, 0, 2000, 1000},
        {-1000, 0, 0, 1000},    {1000, 1000, 2000, 2000}, {0, 1000, 1000, 2000}, {-1000, 1000, 0, 2000},
    };
    for (int i = 0; i < 8; ++i) {
        terrain->getFarPlainRect(i, r);
        expectRect(r, expected[i][0], expected[i][1], expected[i][2], expected[i][3], "plain " + std::to_string(i));
    }
    EXPECT_EQ(LGLTerrain::farPlainExtent, 1000);
    EXPECT_TRUE(LGLTerrain::farPlainExtentSet);
}

TEST_F(LGLTerrainRenderTest, ASecondTerrainOfAnotherSizeKeepsTheFarPlainExtentOfTheFirst)
{
    terrain->worldSize = 1000;
    tRect r;
    terrain->getFarPlainRect(1, r);
    auto second = makeTerrain();
    second->worldSize = 300;
    second->getFarPlainRect(0, r);
    expectRect(r, 300, -1000, 1300, 0, "plain 0");
    second->getFarPlainRect(6, r);
    expectRect(r, 0, 300, 300, 1300, "plain 6");
    second->getFarPlainRect(4, r);
    expectRect(r, -1000, 0, 0, 300, "plain 4");
    // nor does the first terrain's own world size change it afterwards
    terrain->worldSize = 50;
    terrain->getFarPlainRect(2, r);
    expectRect(r, -1000, -1000, 0, 0, "plain 2");
}

TEST_F(LGLTerrainRenderTest, AFarPlainRectangleOutsideTheEightIsLeftAsItWas)
{
    terrain->worldSize = 100;
    tRect r{1, 2, 3, 4};
    terrain->getFarPlainRect(8, r);
    expectRect(r, 1, 2, 3, 4, "plain 8");
}

// ---------------------------------------------------------------- renderFarPlainRect

TEST_F(LGLTerrainRenderTest, ATiledFarPlainRectIsOneStripRepeatingByTheFirstUnitsLength)
{
    const TopView view{-20, 148, -20, 84};
    view.apply();
    terrain->curRepeatA = 32;
    tRect r;
    LGeom::setRectExt(r, 0, 0, 128, 64);
    const auto items = recordFeedback([&] { terrain->renderFarPlainRect(r, 10, true, true, true); });
    const auto tris = triangles(view, items);
    ASSERT_EQ(tris.size(), 2u);
    // (left, bottom), (right, bottom), (left, top), then (right, top); y = trunc(10 * 1.5)
    expectAt(tris[0][0], {0, 15, 64}, "first");
    expectAt(tris[0][1], {128, 15, 64}, "second");
    expectAt(tris[0][2], {0, 15, 0}, "third");
    const auto polys = itemsOf(items, GL_POLYGON_TOKEN);
    // the flips do not apply to a tiled plain: s = x / 32, t = z / 32
    EXPECT_NEAR(polys[0].vertices[0].s, 0.0, 1e-6);
    EXPECT_NEAR(polys[0].vertices[0].t, 2.0, 1e-6);
    EXPECT_NEAR(polys[0].vertices[1].s, 4.0, 1e-6);
    EXPECT_NEAR(polys[0].vertices[2].t, 0.0, 1e-6);
    bool sawFourth = false;
    for (size_t k = 0; k < 3; ++k) {
        if (std::abs(tris[1][k].x - 128) < kPos && std::abs(tris[1][k].z) < kPos) {
            sawFourth = true;
            EXPECT_NEAR(polys[1].vertices[k].s, 4.0, 1e-6);
            EXPECT_NEAR(polys[1].vertices[k].t, 0.0, 1e-6);
        }
    }
    EXPECT_TRUE(sawFourth);
}

TEST_F(LGLTerrainRenderTest, AStretchedFarPlainRectRunsZeroToOneAndFlips)
{
    const TopView view{-20, 148, -20, 84};
    view.apply();
    tRect r;
    LGeom::setRectExt(r, 0, 0, 128, 64);
    terrain->heightScale = 1.5;
    for (int flips = 0; flips < 4; ++flips) {
        const bool flipS = flips & 1;
        const bool flipT = flips & 2;
        const auto items = recordFeedback([&] { terrain->renderFarPlainRect(r, 3, flipS, flipT, false); });
        const auto polys = itemsOf(items, GL_POLYGON_TOKEN);
        ASSERT_EQ(polys.size(), 2u);
        const std::string what = "flipS " + std::to_string(flipS) + " flipT " + std::to_string(flipT);
        // (left, bottom): s 0 (1 flipped), t 1 (0 flipped); (right, bottom); (left, top)
        EXPECT_NEAR(polys[0].vertices[0].s, flipS ? 1.0 : 0.0, 1e-6) << what;
        EXPECT_NEAR(polys[0].vertices[0].t, flipT ? 0.0 : 1.0, 1e-6) << what;
        EXPECT_NEAR(polys[0].vertices[1].s, flipS ? 0.0 : 1.0, 1e-6) << what;
        EXPECT_NEAR(polys[0].vertices[1].t, flipT ? 0.0 : 1.0, 1e-6) << what;
        EXPECT_NEAR(polys[0].vertices[2].s, flipS ? 1.0 : 0.0, 1e-6) << what;
        EXPECT_NEAR(polys[0].vertices[2].t, flipT ? 1.0 : 0.0, 1e-6) << what;
        // level 3 * 1.5 = 4.5, truncated
        expectAt(worldPoints(view, polys[0].vertices)[0], {0, 4, 64}, what);
    }
}

// ---------------------------------------------------------------- far plains and bottom

TEST_F(LGLTerrainRenderTest, RepeatedFarPlainsAreTiledWithTheFarPlainTexture)
{
    giveTextures(*terrain, {{255, 0, 0}, {0, 255, 0}});
    terrain->worldSize = 100;
    terrain->edgeHeight = 4;
    terrain->farPlainTiles[0] = TerrainTile{1, 0, 1.0};
    terrain->texRepeat[1] = 50;
    const TopView view{-120, 220, -120, 220};
    view.apply();
    const auto items = recordFeedback([&] { terrain->renderFarPlains(); });
    const auto polys = itemsOf(items, GL_POLYGON_TOKEN);
    ASSERT_EQ(polys.size(), 16u);
    const UnitState u0 = unitState(GL_TEXTURE0_ARB);
    EXPECT_TRUE(u0.enabled);
    EXPECT_EQ(u0.binding, static_cast<GLint>(terrain->texIds[1]));
    EXPECT_EQ(u0.wrapS, GL_REPEAT);
    EXPECT_EQ(u0.wrapT, GL_REPEAT);
    EXPECT_EQ(terrain->curRepeatA, 50);
    EXPECT_EQ(terrain->curRepeatB, 64);
    // every vertex at height 4 * 1.5 = 6, with s = x / 50 and t = z / 50
    for (const auto& p : polys) {
        for (const auto& v : p.vertices) {
            EXPECT_NEAR(view.worldY(v), 6.0, kPos);
            EXPECT_NEAR(v.s, view.worldX(v) / 50.0, 1e-3);
            EXPECT_NEAR(v.t, view.worldZ(v) / 50.0, 1e-3);
        }
    }
    // plain i's first corner is its (left, bottom)
    const Corner firsts[8] = {{100, 6, 0}, {0, 6, 0}, {-100, 6, 0}, {100, 6, 100},
                              {-100, 6, 100}, {100, 6, 200}, {0, 6, 200}, {-100, 6, 200}};
    for (int i = 0; i < 8; ++i)
        expectAt(worldPoints(view, polys[2 * i].vertices)[0], firsts[i], "plain " + std::to_string(i));
}

TEST_F(LGLTerrainRenderTest, MirroredFarPlainsAreStretchedClampedAndFlippedToJoin)
{
    giveTextures(*terrain, {{255, 0, 0}});
    terrain->worldSize = 100;
    terrain->farPlainMirrored = true;
    const TopView view{-120, 220, -120, 220};
    view.apply();
    const auto items = recordFeedback([&] { terrain->renderFarPlains(); });
    const auto polys = itemsOf(items, GL_POLYGON_TOKEN);
    ASSERT_EQ(polys.size(), 16u);
    EXPECT_EQ(unitState(GL_TEXTURE0_ARB).wrapS, GL_CLAMP_TO_EDGE);
    EXPECT_EQ(unitState(GL_TEXTURE0_ARB).wrapT, GL_CLAMP_TO_EDGE);
    const bool flips[8][2] = {{true, true}, {false, true}, {true, true}, {true, false},
                              {true, false}, {true, true}, {false, true}, {true, true}};
    for (int i = 0; i < 8; ++i) {
        const FeedbackVertex& leftBottom = polys[2 * i].vertices[0];
        const FeedbackVertex& rightBottom = polys[2 * i].vertices[1];
        const std::string what = "plain " + std::to_string(i);
        EXPECT_NEAR(leftBottom.s, flips[i][0] ? 1.0 : 0.0, 1e-6) << what;
        EXPECT_NEAR(leftBottom.t, flips[i][1] ? 0.0 : 1.0, 1e-6) << what;
        EXPECT_NEAR(rightBottom.s, flips[i][0] ? 0.0 : 1.0, 1e-6) << what;
    }
    // so the texture meets itself at the shared edges: plain 1's right edge (x = 100) and plain 0's
    // left edge carry the same s
    EXPECT_NEAR(polys[2].vertices[1].s, polys[0].vertices[0].s, 1e-6);
}

TEST_F(LGLTerrainRenderTest, InDetailOverlayModeFarPlainsBindNothingAndFeedTheSecondUnit)
{
    terrain->worldSize = 100;
    terrain->textureMode = 1;
    terrain->farPlainTiles[0] = TerrainTile{3, 4, 1.0};
    terrain->texRepeat[3] = 20;
    terrain->texRepeat[4] = 5;
    glBindTexture(GL_TEXTURE_2D, 0);
    const TopView view{-120, 220, -120, 220};
    view.apply();
    const auto items = recordFeedback([&] { terrain->renderFarPlains(); });
    EXPECT_EQ(itemsOf(items, GL_POLYGON_TOKEN).size(), 16u);
    EXPECT_FALSE(unitState(GL_TEXTURE0_ARB).enabled);
    // the last vertex given is plain 7's (right, top) = (0, 100): unit 1 received (0 / 5, 100 / 5)
    LGLTerrain::pglActiveTextureARB(GL_TEXTURE1_ARB);
    GLfloat unit1[4];
    glGetFloatv(GL_CURRENT_TEXTURE_COORDS, unit1);
    LGLTerrain::pglActiveTextureARB(GL_TEXTURE0_ARB);
    EXPECT_FLOAT_EQ(unit1[0], 0.0f);
    EXPECT_FLOAT_EQ(unit1[1], 20.0f);
}

TEST_F(LGLTerrainRenderTest, WithoutABottomTextureNoBottomIsDrawn)
{
    terrain->worldSize = 100;
    terrain->bottomTexA = -1;
    const TopView view{-10, 110, -10, 110};
    view.apply();
    EXPECT_TRUE(recordFeedback([&] { terrain->renderBottom(); }).empty());
}

TEST_F(LGLTerrainRenderTest, TheBottomCoversTheMapAtTheEdgeHeightRepeated)
{
    giveTextures(*terrain, {{255, 0, 0}, {0, 255, 0}, {0, 0, 255}});
    terrain->worldSize = 100;
    terrain->edgeHeight = 20;
    terrain->bottomTexA = 2;
    terrain->bottomTexB = 1;
    terrain->texRepeat[2] = 25;
    terrain->texRepeat[1] = 10;
    const TopView view{-10, 110, -10, 110};
    view.apply();
    const auto items = recordFeedback([&] { terrain->renderBottom(); });
    const auto polys = itemsOf(items, GL_POLYGON_TOKEN);
    ASSERT_EQ(polys.size(), 2u);
    const auto p = worldPoints(view, polys[0].vertices);
    expectAt(p[0], {0, 30, 100}, "left bottom");
    expectAt(p[1], {100, 30, 100}, "right bottom");
    expectAt(p[2], {0, 30, 0}, "left top");
    EXPECT_NEAR(polys[0].vertices[1].s, 4.0, 1e-6);
    EXPECT_NEAR(polys[0].vertices[1].t, 4.0, 1e-6);
    EXPECT_EQ(unitState(GL_TEXTURE0_ARB).binding, static_cast<GLint>(terrain->texIds[2]));
    EXPECT_EQ(unitState(GL_TEXTURE0_ARB).wrapS, GL_REPEAT);
    EXPECT_EQ(terrain->curRepeatA, 25);
    EXPECT_EQ(terrain->curRepeatB, 10);
}

// ---------------------------------------------------------------- tiles

TEST_F(LGLTerrainRenderTest, AWireframeTileIsALineStripThroughItsCornersTwoUnitsUp)
{
    giveHeights(*terrain, 4, 64, 10);
    giveTiles(*terrain, 1, 64);
    raw(*terrain, 3, 3) = 30;
    terrain->updateTileCoordinates();
    terrain->wireframe = true;
    const TopView view{-10, 74, -10, 74};
    view.apply();
    const auto lines = itemsOf(recordFeedback([&] { terrain->renderTerrainTile(0, 0); }), GL_LINE_TOKEN);
    ASSERT_EQ(lines.size(), 3u);
    // corners (0, 64), (64, 64), (0, 0), (64, 0); heights 15 except (64, 64) reads sample (3, 3): 45
    const Corner corners[4] = {{0, 17, 64}, {64, 47, 64}, {0, 17, 0}, {64, 17, 0}};
    for (size_t k = 0; k < 3; ++k) {
        const auto p = worldPoints(view, lines[k].vertices);
        expectAt(p[0], corners[k], "segment start " + std::to_string(k));
        expectAt(p[1], corners[k + 1], "segment end " + std::to_string(k));
    }
}

TEST_F(LGLTerrainRenderTest, ATexturedTileIsATriangleStripWithItsStoredCoordinates)
{
    giveTiles(*terrain, 1, 64);
    terrain->tiles[0][0] = TerrainTile{0, 0, 0.0};
    terrain->texRepeat[0] = 16;
    terrain->updateTileCoordinates();
    const TopView view{-10, 74, -10, 74};
    view.apply();
    const auto polys = itemsOf(recordFeedback([&] { terrain->renderTerrainTile(0, 0); }), GL_POLYGON_TOKEN);
    ASSERT_EQ(polys.size(), 2u);
    const auto p = worldPoints(view, polys[0].vertices);
    expectAt(p[0], {0, 0, 64}, "corner 0");
    expectAt(p[1], {64, 0, 64}, "corner 1");
    expectAt(p[2], {0, 0, 0}, "corner 2");
    EXPECT_NEAR(polys[0].vertices[0].s, 0.0, 1e-6);
    EXPECT_NEAR(polys[0].vertices[0].t, 4.0, 1e-6);
    EXPECT_NEAR(polys[0].vertices[1].s, 4.0, 1e-6);
}

// A one-tile map over the whole window, textures red (0), green (1) and blue (2).
class LGLTerrainPixelTest : public LGLTerrainRenderTest {
protected:
    void SetUp() override
    {
        LGLTerrainRenderTest::SetUp();
        giveTextures(*terrain, {{255, 0, 0}, {0, 255, 0}, {0, 0, 255}, {200, 100, 50}, {128, 128, 128}});
        giveTiles(*terrain, 1, 64);
        terrain->heightMapFile = "h.bmp";
        terrain->useTileSort = false;
        terrain->farPlainTiles[0] = TerrainTile{2, 2, 1.0};
        view.apply();
    }
    std::vector<unsigned char> centreAfterRender()
    {
        terrain->updateTileCoordinates();
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        terrain->render();
        return readPixel(320, 240);
    }
    const TopView view{0, 64, 0, 64};
};

namespace {
void expectColour(const std::vector<unsigned char>& pixel, double r, double g, double b, double tolerance)
{
    EXPECT_NEAR(pixel[0], r, tolerance);
    EXPECT_NEAR(pixel[1], g, tolerance);
    EXPECT_NEAR(pixel[2], b, tolerance);
}
}  // namespace

TEST_F(LGLTerrainPixelTest, WeightOneShowsTheFirstTexture)
{
    terrain->tiles[0][0] = TerrainTile{0, 1, 1.0};
    expectColour(centreAfterRender(), 255, 0, 0, 1);
}

TEST_F(LGLTerrainPixelTest, WeightZeroShowsTheSecondTexture)
{
    terrain->tiles[0][0] = TerrainTile{0, 1, 0.0};
    expectColour(centreAfterRender(), 0, 255, 0, 1);
}

TEST_F(LGLTerrainPixelTest, WeightOneHalfShowsTheAverage)
{
    terrain->tiles[0][0] = TerrainTile{0, 1, 0.5};
    expectColour(centreAfterRender(), 127.5, 127.5, 0, 2);
}

TEST_F(LGLTerrainPixelTest, WeightOneQuarterLeansTowardsTheSecondTexture)
{
    terrain->tiles[0][0] = TerrainTile{2, 0, 0.25};
    expectColour(centreAfterRender(), 191.25, 0, 63.75, 2);
}

TEST_F(LGLTerrainPixelTest, ATileOfOneTextureShowsThatTexture)
{
    terrain->tiles[0][0] = TerrainTile{1, 1, 0.0};
    expectColour(centreAfterRender(), 0, 255, 0, 1);
}

TEST_F(LGLTerrainPixelTest, DetailOverlayDoublesTheProductOfTheTwoTextures)
{
    terrain->textureMode = 1;
    terrain->farPlainTiles[0] = TerrainTile{3, 4, 1.0};
    terrain->tiles[0][0] = TerrainTile{0, 1, 0.5};  // not used in this mode
    // 2 * (200, 100, 50) * 128 / 255
    expectColour(centreAfterRender(), 200.8, 100.4, 50.2, 3);
    EXPECT_EQ(envOfUnit(GL_TEXTURE1_ARB, GL_RGB_SCALE_ARB), 1);
    EXPECT_FALSE(unitState(GL_TEXTURE0_ARB).enabled);
    EXPECT_FALSE(unitState(GL_TEXTURE1_ARB).enabled);
}

TEST_F(LGLTerrainPixelTest, RenderLeavesBothUnitsOffAndTheColourWhite)
{
    terrain->tiles[0][0] = TerrainTile{0, 1, 0.3};
    centreAfterRender();
    EXPECT_FALSE(unitState(GL_TEXTURE0_ARB).enabled);
    EXPECT_FALSE(unitState(GL_TEXTURE1_ARB).enabled);
    EXPECT_EQ(activeUnit(), GL_TEXTURE0_ARB);
    EXPECT_EQ(envOfUnit(GL_TEXTURE1_ARB, GL_COMBINE_RGB_ARB), GL_MODULATE);
    EXPECT_FALSE(LGLTerrain::blendingActive);
    const auto c = currentColour();
    EXPECT_FLOAT_EQ(c[0], 1.0f);
    EXPECT_FLOAT_EQ(c[1], 1.0f);
    EXPECT_FLOAT_EQ(c[2], 1.0f);
    EXPECT_FLOAT_EQ(c[3], 1.0f);
    // drawing afterwards is untextured white
    glBegin(GL_TRIANGLE_STRIP);
    glVertex3i(0, 0, 64);
    glVertex3i(64, 0, 64);
    glVertex3i(0, 0, 0);
    glVertex3i(64, 0, 0);
    glEnd();
    expectColour(readPixel(320, 240), 255, 255, 255, 0);
}

TEST_F(LGLTerrainPixelTest, WireframeDrawsGreyLinesWithoutTexture)
{
    terrain->tiles[0][0] = TerrainTile{0, 1, 0.5};
    terrain->wireframe = true;
    terrain->updateTileCoordinates();
    const auto items = recordFeedback([&] { terrain->render(); });
    const auto lines = itemsOf(items, GL_LINE_TOKEN);
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_NEAR(lines[0].vertices[0].r, 0.2, 1e-3);
    EXPECT_NEAR(lines[0].vertices[0].g, 0.2, 1e-3);
    EXPECT_NEAR(lines[0].vertices[0].b, 0.2, 1e-3);
    EXPECT_EQ(LGLTerrain::textureSwitches, 0);
}

TEST_F(LGLTerrainPixelTest, AFlatMapDrawsOnlyFarPlainsAndBottom)
{
    terrain->tiles[0][0] = TerrainTile{0, 1, 0.5};
    terrain->bottomTexA = 2;
    terrain->bottomTexB = 2;
    terrain->updateTileCoordinates();
    const TopView wide{-100, 164, -100, 164};
    wide.apply();
    const auto withTiles = itemsOf(recordFeedback([&] { terrain->render(); }), GL_POLYGON_TOKEN);
    EXPECT_EQ(withTiles.size(), 2u * 8 + 2 + 2);  // far plains, bottom, one tile
    terrain->heightMapFile = "flat";
    const auto flat = itemsOf(recordFeedback([&] { terrain->render(); }), GL_POLYGON_TOKEN);
    ASSERT_EQ(flat.size(), 2u * 8 + 2);
    // a flat map returns before the closing restore: the far-plain texture stays on
    EXPECT_TRUE(unitState(GL_TEXTURE0_ARB).enabled);
}

// ---------------------------------------------------------------- tile order

class LGLTerrainTileOrderTest : public LGLTerrainRenderTest {
protected:
    // A 2 x 2 map of 8-unit tiles whose corners were all computed (as a 256-tile update does).
    void SetUp() override
    {
        LGLTerrainRenderTest::SetUp();
        giveTiles(*terrain, 256, 8);
        terrain->updateTileCoordinates();
        giveTiles(*terrain, 2, 8);
        terrain->heightMapFile = "h.bmp";
        terrain->wireframe = true;
        view.apply();
    }
    // The first corner of each wireframe tile drawn, in order.
    std::vector<WorldPoint> tileStarts()
    {
        const auto lines = itemsOf(recordFeedback([&] { terrain->render(); }), GL_LINE_TOKEN);
        std::vector<WorldPoint> starts;
        for (size_t k = 0; k < lines.size(); k += 3)
            starts.push_back(worldPoints(view, lines[k].vertices)[0]);
        return starts;
    }
    const TopView view{-1, 17, -1, 17};
};

TEST_F(LGLTerrainTileOrderTest, WithoutTheSortTilesAreDrawnInGridOrder)
{
    terrain->useTileSort = false;
    const auto starts = tileStarts();
    ASSERT_EQ(starts.size(), 4u);
    expectAt(starts[0], {0, 2, 8}, "tile (0, 0)");
    expectAt(starts[1], {0, 2, 16}, "tile (0, 1)");
    expectAt(starts[2], {8, 2, 8}, "tile (1, 0)");
    expectAt(starts[3], {8, 2, 16}, "tile (1, 1)");
}

TEST_F(LGLTerrainTileOrderTest, WithTheSortTilesAreDrawnInTheOrderOfTheTable)
{
    terrain->useTileSort = true;
    LGLTerrain::tileSort[0] = {1, 1, 0, 0, 0.0};
    LGLTerrain::tileSort[1] = {0, 1, 0, 0, 0.0};
    LGLTerrain::tileSort[2] = {1, 0, 0, 0, 0.0};
    LGLTerrain::tileSort[3] = {0, 0, 0, 0, 0.0};
    LGLTerrain::tileSort[4] = {1, 1, 0, 0, 0.0};
    const auto starts = tileStarts();
    ASSERT_EQ(starts.size(), 4u);
    expectAt(starts[0], {8, 2, 16}, "first record");
    expectAt(starts[1], {0, 2, 16}, "second record");
    expectAt(starts[2], {8, 2, 8}, "third record");
    expectAt(starts[3], {0, 2, 8}, "fourth record");
}

TEST_F(LGLTerrainTileOrderTest, WithTheSortButNoSortMadeEveryDrawVisitsTheFirstRecordsOfTheTable)
{
    terrain->useTileSort = true;
    for (auto& record : LGLTerrain::tileSort)
        record = LGLTerrain::tTileSortRecord{0, 0, 0, 0, 0.0};
    const auto starts = tileStarts();
    ASSERT_EQ(starts.size(), 4u);
    for (const auto& s : starts)
        expectAt(s, {0, 2, 8}, "tile (0, 0) each time");
}

TEST_F(LGLTerrainRenderTest, TheTileSortCutsTextureSwitches)
{
    giveTextures(*terrain, {{255, 0, 0}, {0, 255, 0}, {0, 0, 255}});
    giveTiles(*terrain, 256, 4);
    terrain->updateTileCoordinates();
    giveTiles(*terrain, 2, 4);
    terrain->heightMapFile = "h.bmp";
    // pairs in grid order: (0, 1), (1, 2), (0, 1), (1, 2)
    terrain->tiles[0][0] = TerrainTile{0, 1, 0.5};
    terrain->tiles[0][1] = TerrainTile{1, 2, 0.5};
    terrain->tiles[1][0] = TerrainTile{0, 1, 0.5};
    terrain->tiles[1][1] = TerrainTile{1, 2, 0.5};
    const TopView view{0, 8, 0, 8};
    view.apply();
    terrain->useTileSort = false;
    LGLTerrain::textureSwitches = 99;
    terrain->render();
    EXPECT_EQ(LGLTerrain::textureSwitches, 4);

    for (auto& record : LGLTerrain::tileSort)
        record = LGLTerrain::tTileSortRecord{0, 0, 1000, 0, 0.0};
    StdoutCapture quiet;
    terrain->generateTileSort();
    quiet.take();
    terrain->useTileSort = true;
    terrain->render();
    EXPECT_EQ(LGLTerrain::textureSwitches, 2);
}

// ---------------------------------------------------------------- display lists

TEST_F(LGLTerrainPixelTest, GenerateDLCompilesTheRenderIntoANewList)
{
    terrain->tiles[0][0] = TerrainTile{0, 1, 0.5};
    terrain->updateTileCoordinates();
    StdoutCapture out;
    terrain->generateDL();
    EXPECT_EQ(out.take(), "Generating DL...\n done.\n");
    ASSERT_NE(terrain->displayList, 0u);
    EXPECT_TRUE(glIsList(terrain->displayList));
    EXPECT_TRUE(glIsEnabled(GL_CULL_FACE));

    const auto direct = itemsOf(recordFeedback([&] { terrain->render(); }), GL_POLYGON_TOKEN);
    const auto listed = itemsOf(recordFeedback([&] { terrain->renderDL(); }), GL_POLYGON_TOKEN);
    ASSERT_EQ(listed.size(), direct.size());
    ASSERT_GE(listed.size(), 2u);
    for (size_t k = 0; k < listed.size(); ++k) {
        for (size_t v = 0; v < 3; ++v) {
            EXPECT_NEAR(listed[k].vertices[v].x, direct[k].vertices[v].x, 1e-3);
            EXPECT_NEAR(listed[k].vertices[v].y, direct[k].vertices[v].y, 1e-3);
        }
    }
    glClear(GL_COLOR_BUFFER_BIT);
    terrain->renderDL();
    expectColour(readPixel(320, 240), 127.5, 127.5, 0, 2);
}

TEST_F(LGLTerrainPixelTest, UpdateDLReplacesTheListWithTheCurrentDrawing)
{
    terrain->tiles[0][0] = TerrainTile{0, 1, 1.0};
    terrain->updateTileCoordinates();
    StdoutCapture out;
    terrain->generateDL();
    const GLuint old = terrain->displayList;
    terrain->tiles[0][0] = TerrainTile{0, 1, 0.0};
    terrain->updateDL();
    EXPECT_EQ(out.take(), "Generating DL...\n done.\nGenerating DL...\n done.\n");
    EXPECT_TRUE(glIsList(terrain->displayList));
    if (terrain->displayList != old) {
        EXPECT_FALSE(glIsList(old));
    }
    glClear(GL_COLOR_BUFFER_BIT);
    terrain->renderDL();
    expectColour(readPixel(320, 240), 0, 255, 0, 1);
}

// ---------------------------------------------------------------- fog

class LGLTerrainFogTest : public TerrainGLTest {
protected:
    static GLfloat fogValue(GLenum pname)
    {
        GLfloat v = 0;
        glGetFloatv(pname, &v);
        return v;
    }
};

TEST_F(LGLTerrainFogTest, SetFogTurnsOnLinearFogWithTheTerrainsSettings)
{
    terrain->fogColor[0] = 0.5f;
    terrain->fogColor[1] = 0.25f;
    terrain->fogColor[2] = 0.75f;
    terrain->setFog();
    EXPECT_TRUE(glIsEnabled(GL_FOG));
    GLint mode = 0;
    glGetIntegerv(GL_FOG_MODE, &mode);
    EXPECT_EQ(mode, GL_LINEAR);
    GLfloat colour[4];
    glGetFloatv(GL_FOG_COLOR, colour);
    EXPECT_FLOAT_EQ(colour[0], 0.5f);
    EXPECT_FLOAT_EQ(colour[1], 0.25f);
    EXPECT_FLOAT_EQ(colour[2], 0.75f);
    EXPECT_FLOAT_EQ(colour[3], 0.1f);
    EXPECT_FLOAT_EQ(fogValue(GL_FOG_START), 600.0f);
    EXPECT_FLOAT_EQ(fogValue(GL_FOG_END), 2500.0f);
}

TEST_F(LGLTerrainFogTest, SetFogIgnoresTheReferenceHeightUnlessHeightDependent)
{
    terrain->fogReferenceHeight = 400;
    terrain->setFog();
    EXPECT_FLOAT_EQ(fogValue(GL_FOG_END), 2500.0f);
}

TEST_F(LGLTerrainFogTest, HeightDependentFogClosesInAsTheReferenceHeightRises)
{
    terrain->fogHeightDependent = true;
    terrain->edgeHeight = 10;
    terrain->fogReferenceHeight = 320;  // 300 above twice the ground level
    terrain->setFog();
    EXPECT_FLOAT_EQ(fogValue(GL_FOG_END), 2500.0f - 4 * 300);
    terrain->fogReferenceHeight = 0;  // below the ground: no change
    terrain->setFog();
    EXPECT_FLOAT_EQ(fogValue(GL_FOG_END), 2500.0f);
    terrain->fogReferenceHeight = 1000;  // far above: at least 100, and beyond the start
    terrain->setFog();
    EXPECT_FLOAT_EQ(fogValue(GL_FOG_END), 601.0f);
    terrain->fogStart = 50;
    terrain->setFog();
    EXPECT_FLOAT_EQ(fogValue(GL_FOG_END), 100.0f);
    EXPECT_FLOAT_EQ(fogValue(GL_FOG_START), 50.0f);
}

// ---------------------------------------------------------------- grid points

class LGLTerrainGridPointsTest : public LGLTerrainRenderTest {
protected:
    // 4 x 4 samples, 16 units apart, raw height 10 i + j; sample (1, 2) selected, brush radius 1.
    void SetUp() override
    {
        LGLTerrainRenderTest::SetUp();
        giveHeights(*terrain, 4, 64, 0);
        for (int i = 0; i < 4; ++i)
            for (int j = 0; j < 4; ++j)
                raw(*terrain, i, j) = static_cast<unsigned char>(10 * i + j);
        terrain->selGridX = 1;
        terrain->selGridZ = 2;
        terrain->brushRadius = 1;
        view.apply();
    }
    const TopView view{-8, 56, -8, 56};
};

TEST_F(LGLTerrainGridPointsTest, EverySampleIsAPointWithTheBrushAroundTheSelectedOneInRed)
{
    GLfloat before[16], after[16];
    glGetFloatv(GL_MODELVIEW_MATRIX, before);
    glEnable(GL_TEXTURE_2D);
    const auto points = itemsOf(recordFeedback([&] { terrain->renderGridPoints(false); }), GL_POINT_TOKEN);
    ASSERT_EQ(points.size(), 16u);
    size_t k = 0;
    for (int i = 0; i < 4; ++i) {
        for (int j = 0; j < 4; ++j) {
            if (i == 1 && j == 2)
                continue;
            const FeedbackVertex& v = points[k++].vertices[0];
            const std::string what = std::to_string(i) + ", " + std::to_string(j);
            // (i * 16, (raw + 2) * heightScale, j * 16)
            expectAt(worldPoints(view, {v})[0], {16.0 * i, (10 * i + j + 2) * 1.5, 16.0 * j}, what);
            const bool brush = (i - 1) * (i - 1) + (j - 2) * (j - 2) <= 1;
            EXPECT_FLOAT_EQ(v.r, 1.0f) << what;
            EXPECT_NEAR(v.g, brush ? 0.2f : 1.0f, 1e-6) << what;
            EXPECT_NEAR(v.b, brush ? 0.2f : 1.0f, 1e-6) << what;
        }
    }
    const FeedbackVertex& selected = points[15].vertices[0];
    expectAt(worldPoints(view, {selected})[0], {16, 21, 32}, "selected");
    EXPECT_FLOAT_EQ(selected.g, 0.0f);
    EXPECT_FLOAT_EQ(selected.b, 0.0f);

    glGetFloatv(GL_MODELVIEW_MATRIX, after);
    for (int m = 0; m < 16; ++m)
        EXPECT_FLOAT_EQ(after[m], before[m]) << m;
    EXPECT_FALSE(glIsEnabled(GL_TEXTURE_2D));
    GLfloat size = 0;
    glGetFloatv(GL_POINT_SIZE, &size);
    EXPECT_EQ(size, 1.0f);
    const auto c = currentColour();
    EXPECT_FLOAT_EQ(c[1], 1.0f);
    EXPECT_FLOAT_EQ(c[2], 1.0f);
}

TEST_F(LGLTerrainGridPointsTest, TheSelectedSampleIsDrawnLarger)
{
    terrain->renderGridPoints(false);
    // the selected point (16, 32) sits at window (240, 180) and is 5 pixels wide; a plain point
    // such as (32, 32) at (400, 180) is 2 pixels wide
    const auto wide = readPixel(242, 180);
    EXPECT_EQ(wide[0], 255);
    EXPECT_EQ(wide[1], 0);
    const auto centre = readPixel(400, 180);
    EXPECT_EQ(centre[0], 255);
    EXPECT_EQ(centre[1], 51);
    const auto beside = readPixel(402, 180);
    EXPECT_EQ(beside[0], 0);
}

TEST_F(LGLTerrainGridPointsTest, PickingNamesAreIThousandPlusJ)
{
    const auto hits = selectHits([&] { terrain->renderGridPoints(true); });
    ASSERT_EQ(hits.size(), 16u);
    std::vector<GLuint> names;
    for (const auto& hit : hits) {
        ASSERT_EQ(hit.size(), 1u);
        names.push_back(hit[0]);
    }
    const std::vector<GLuint> expected = {0,    1,    2,    3,    1000, 1001, 1003, 2000,
                                          2001, 2002, 2003, 3000, 3001, 3002, 3003, 1002};
    EXPECT_EQ(names, expected);
}

TEST_F(LGLTerrainGridPointsTest, PickingNamesAreAmbiguousAboveAThousandSamplesPerSide)
{
    giveHeights(*terrain, 1001, 1001, 0);  // one unit per sample
    const TopView narrow{-0.5, 1.5, -0.5, 1000.5};
    narrow.apply();
    const auto hits = selectHits([&] { terrain->renderGridPoints(true); });
    // the visible columns 0 and 1: samples (0, 1000) and (1, 0) both answer to 1000
    ASSERT_EQ(hits.size(), 2002u);
    int thousand = 0;
    for (const auto& hit : hits)
        thousand += hit.size() == 1 && hit[0] == 1000;
    EXPECT_EQ(thousand, 2);
}

TEST_F(LGLTerrainGridPointsTest, TheSelectionIsClampedToTheGrid)
{
    terrain->selGridX = 10;
    terrain->selGridZ = -3;
    const auto points = itemsOf(recordFeedback([&] { terrain->renderGridPoints(false); }), GL_POINT_TOKEN);
    EXPECT_EQ(terrain->selGridX, 3);
    EXPECT_EQ(terrain->selGridZ, 0);
    ASSERT_EQ(points.size(), 16u);
    expectAt(worldPoints(view, {points[15].vertices[0]})[0], {48, 48, 0}, "selected");
}

TEST_F(LGLTerrainRenderTest, WithoutHeightsNoGridPointsAreDrawn)
{
    const TopView view{-8, 56, -8, 56};
    view.apply();
    EXPECT_TRUE(recordFeedback([&] { terrain->renderGridPoints(false); }).empty());
}

// ---------------------------------------------------------------- outlines

TEST_F(LGLTerrainRenderTest, ARectangleOnTheTerrainFollowsTheGroundAtTileSteps)
{
    giveHeights(*terrain, 4, 64, 0);
    raw(*terrain, 2, 3) = 20;  // x 32..47, z 48..63
    raw(*terrain, 0, 1) = 10;  // x 0..15, z 16..31
    terrain->tileSize = 16;
    glEnable(GL_CULL_FACE);
    glEnable(GL_TEXTURE_2D);
    const TopView view{-8, 56, -8, 56};
    view.apply();
    tRect r;
    LGeom::setRect(r, 8, 16, 40, 48);
    const auto lines = itemsOf(recordFeedback([&] { terrain->renderRectOnTerrain(r); }), GL_LINE_TOKEN);
    const Corner walk[9] = {{8, 2, 48},  {24, 2, 48}, {40, 32, 48}, {40, 2, 32}, {40, 2, 16},
                            {24, 2, 16}, {8, 17, 16}, {8, 2, 32},   {8, 2, 48}};
    ASSERT_EQ(lines.size(), 8u);
    for (size_t k = 0; k < 8; ++k) {
        const auto p = worldPoints(view, lines[k].vertices);
        expectAt(p[0], walk[k], "from " + std::to_string(k));
        expectAt(p[1], walk[k + 1], "to " + std::to_string(k + 1));
    }
    EXPECT_FALSE(glIsEnabled(GL_CULL_FACE));
    EXPECT_FALSE(glIsEnabled(GL_TEXTURE_2D));
}

TEST_F(LGLTerrainRenderTest, ARectangleOnATerrainWithoutHeightsLiesTwoUnitsUp)
{
    terrain->tileSize = 0;  // steps of one unit
    const TopView view{-2, 6, -2, 6};
    view.apply();
    tRect r;
    LGeom::setRect(r, 0, 0, 2, 1);
    const auto lines = itemsOf(recordFeedback([&] { terrain->renderRectOnTerrain(r); }), GL_LINE_TOKEN);
    ASSERT_EQ(lines.size(), 6u);  // (0,1) (1,1) (2,1) (2,0) (1,0) (0,0) (0,1)
    for (const auto& line : lines)
        for (const auto& p : worldPoints(view, line.vertices))
            EXPECT_NEAR(p.y, 2.0, kPos);
}

TEST_F(LGLTerrainRenderTest, AFarPlainOutlineIsALoopJustAboveTheEdgeHeight)
{
    terrain->worldSize = 100;
    terrain->edgeHeight = 5;
    glEnable(GL_CULL_FACE);
    glEnable(GL_TEXTURE_2D);
    const TopView view{-120, 220, -120, 220};
    view.apply();
    const auto lines = itemsOf(recordFeedback([&] { terrain->renderRectOnFarPlain(3); }), GL_LINE_TOKEN);
    ASSERT_EQ(lines.size(), 4u);
    // plain 3 spans x 100..200, z 0..100; height trunc(5 * 1.5 + 2) = 9
    const Corner loop[5] = {{100, 9, 100}, {200, 9, 100}, {200, 9, 0}, {100, 9, 0}, {100, 9, 100}};
    for (size_t k = 0; k < 4; ++k) {
        const auto p = worldPoints(view, lines[k].vertices);
        expectAt(p[0], loop[k], "from " + std::to_string(k));
        expectAt(p[1], loop[k + 1], "to " + std::to_string(k + 1));
    }
    EXPECT_FALSE(glIsEnabled(GL_CULL_FACE));
    EXPECT_FALSE(glIsEnabled(GL_TEXTURE_2D));
    EXPECT_TRUE(recordFeedback([&] { terrain->renderRectOnFarPlain(8); }).empty());
}
