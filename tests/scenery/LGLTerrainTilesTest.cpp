// LGLTerrainTilesTest.cpp -- the tile grid: filling, one-level undo, texture painting with its slot
// rules, the program-wide corner and sort tables, tile texture loading and the two-unit binding.
#include <ostrum_gl/scenery/LGLTerrain.h>

#include "TerrainTestSupport.h"
#include "TestSupport.h"

#include <GL/gl.h>
#include <GL/glext.h>

#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

using namespace ostrum_test;
using namespace terrain_test;

namespace {

void expectTile(const TerrainTile& tile, int a, int b, double blend, const std::string& where = "")
{
    EXPECT_EQ(tile.texA, a) << where;
    EXPECT_EQ(tile.texB, b) << where;
    EXPECT_NEAR(tile.blend, blend, 1e-12) << where;
}

void fillCornerTable(int x)
{
    for (auto& column : LGLTerrain::tileVertices)
        for (auto& tile : column)
            for (auto& corner : tile)
                corner = LGLTerrain::tTileVertex{x, x, x, -1.0, -1.0, -1.0, -1.0};
}

}  // namespace

// ---------------------------------------------------------------- grid and undo

TEST(LGLTerrainTilesTest, InitTilesFillsOnlyTheUsedGrid)
{
    auto t = makeTerrain();
    t->numTiles = 3;
    t->tiles[3][0] = TerrainTile{7, 8, 0.5};
    t->tiles[0][3] = TerrainTile{7, 8, 0.5};
    t->initTiles(5);
    for (int x = 0; x < 3; ++x)
        for (int z = 0; z < 3; ++z)
            expectTile(t->tiles[x][z], 5, 5, 0.0);
    expectTile(t->tiles[3][0], 7, 8, 0.5);
    expectTile(t->tiles[0][3], 7, 8, 0.5);
}

TEST(LGLTerrainTilesTest, PopTilesUndoesPaintingSincePushTiles)
{
    auto t = makeTerrain();
    t->numTiles = 8;
    t->initTiles(1);
    t->tiles[2][3] = TerrainTile{1, 4, 0.25};
    t->pushTiles();
    t->setTerrainTileTextureAt(2, 4, 4, 3, 1.0, 0);
    ASSERT_EQ(t->tiles[4][4].texA, 2);
    t->popTiles();
    for (int x = 0; x < 8; ++x)
        for (int z = 0; z < 8; ++z)
            if (x != 2 || z != 3)
                expectTile(t->tiles[x][z], 1, 1, 0.0);
    expectTile(t->tiles[2][3], 1, 4, 0.25);
}

TEST(LGLTerrainTilesTest, PopTilesWithoutPushRestoresTheZeroBackup)
{
    auto t = makeTerrain();
    t->numTiles = 4;
    t->initTiles(3);
    t->popTiles();
    for (int x = 0; x < 4; ++x)
        for (int z = 0; z < 4; ++z)
            expectTile(t->tiles[x][z], 0, 0, 0.0);
}

TEST(LGLTerrainTilesTest, PushTilesCopiesOnlyTheUsedPart)
{
    auto t = makeTerrain();
    t->numTiles = 2;
    t->tiles[1][1] = TerrainTile{3, 4, 0.5};
    t->tiles[2][0] = TerrainTile{3, 4, 0.5};
    t->pushTiles();
    expectTile(t->tilesBackup[1][1], 3, 4, 0.5);
    expectTile(t->tilesBackup[2][0], 0, 0, 0.0);
}

// ---------------------------------------------------------------- painting

TEST(LGLTerrainTilesTest, FullStrengthWithoutSoftnessPaintsASquareOfSideTwiceTheRadiusLessOne)
{
    auto t = makeTerrain();
    t->numTiles = 20;
    t->initTiles(1);
    t->tiles[9][11] = TerrainTile{4, 5, 0.5};
    t->setTerrainTileTextureAt(2, 10, 10, 3, 1.0, 0);
    for (int x = 0; x < 20; ++x) {
        for (int z = 0; z < 20; ++z) {
            const bool inside = std::abs(x - 10) <= 2 && std::abs(z - 10) <= 2;  // side 5
            const std::string where = std::to_string(x) + ", " + std::to_string(z);
            if (inside)
                expectTile(t->tiles[x][z], 2, 2, 0.0, where);
            else
                expectTile(t->tiles[x][z], 1, 1, 0.0, where);
        }
    }
}

TEST(LGLTerrainTilesTest, PaintingTheTextureATileAlreadyShowsFullyLeavesItUnchanged)
{
    auto t = makeTerrain();
    t->numTiles = 10;
    t->initTiles(2);
    t->setTerrainTileTextureAt(2, 5, 5, 3, 0.5, 2);
    t->setTerrainTileTextureAt(2, 5, 5, 2, 1.0, 0);
    for (int x = 0; x < 10; ++x)
        for (int z = 0; z < 10; ++z)
            expectTile(t->tiles[x][z], 2, 2, 0.0);
}

TEST(LGLTerrainTilesTest, APaintedTextureInTheFirstSlotMovesToTheSecond)
{
    auto t = makeTerrain();
    t->numTiles = 4;
    t->tiles[1][1] = TerrainTile{3, 5, 0.7};  // shows 70 % of texture 3
    t->setTerrainTileTextureAt(3, 1, 1, 1, 0.5, 0);
    // swapped to (5, 3, 0.3); the weight of 5 is already below the target 0.5
    expectTile(t->tiles[1][1], 5, 3, 0.3);
}

TEST(LGLTerrainTilesTest, ATileWhoseSecondSlotHoldsTheTextureLosesWeightOfItsFirst)
{
    auto t = makeTerrain();
    t->numTiles = 4;
    t->tiles[1][1] = TerrainTile{5, 3, 0.9};
    t->setTerrainTileTextureAt(3, 1, 1, 1, 0.25, 0);
    expectTile(t->tiles[1][1], 5, 3, 0.75);
}

TEST(LGLTerrainTilesTest, ADominantSecondTextureIsKeptInTheFirstSlot)
{
    auto t = makeTerrain();
    t->numTiles = 4;
    t->tiles[1][1] = TerrainTile{1, 2, 0.2};  // texture 2 dominates
    t->setTerrainTileTextureAt(3, 1, 1, 1, 0.5, 0);
    // (2, 3, 0.8), then the weight comes down to the target 0.5; texture 1 is gone
    expectTile(t->tiles[1][1], 2, 3, 0.5);
}

TEST(LGLTerrainTilesTest, ADominantFirstTextureStaysAndTheSecondIsReplaced)
{
    auto t = makeTerrain();
    t->numTiles = 4;
    t->tiles[1][1] = TerrainTile{1, 2, 0.8};
    t->setTerrainTileTextureAt(3, 1, 1, 1, 0.5, 0);
    expectTile(t->tiles[1][1], 1, 3, 0.5);
}

TEST(LGLTerrainTilesTest, ATileWithBothWeightsUnderTheTargetIsLeftUnchanged)
{
    auto t = makeTerrain();
    t->numTiles = 4;
    t->tiles[1][1] = TerrainTile{1, 2, 0.5};
    t->setTerrainTileTextureAt(3, 1, 1, 1, 0.4, 0);  // target 0.6
    expectTile(t->tiles[1][1], 1, 2, 0.5);
}

TEST(LGLTerrainTilesTest, AWeightBroughtToZeroPutsTheTextureInBothSlots)
{
    auto t = makeTerrain();
    t->numTiles = 4;
    t->tiles[1][1] = TerrainTile{5, 3, 0.0};  // shows only texture 3, stored in the second slot
    t->setTerrainTileTextureAt(3, 1, 1, 1, 0.3, 0);
    expectTile(t->tiles[1][1], 3, 3, 0.0);
}

TEST(LGLTerrainTilesTest, ASoftBrushFadesTowardsItsRim)
{
    auto t = makeTerrain();
    t->numTiles = 20;
    t->initTiles(1);
    // radius 2, soft 2, strength 0.8: extent 4, inner radius 1; the old texture keeps
    // 1 - (1 - f) * 0.8 with f = max(0, distance - 1) / 2, at most 1
    t->setTerrainTileTextureAt(3, 10, 10, 2, 0.8, 2);
    auto kept = [](double distance) {
        const double f = std::max(0.0, distance - 1.0) / 2.0;
        return std::min(1.0, 1.0 - (1.0 - f) * 0.8);
    };
    expectTile(t->tiles[10][10], 1, 3, 0.2, "centre");
    expectTile(t->tiles[11][10], 1, 3, 0.2, "distance 1");
    expectTile(t->tiles[12][10], 1, 3, 0.6, "distance 2");
    expectTile(t->tiles[11][11], 1, 3, kept(std::sqrt(2.0)), "diagonal");
    EXPECT_NEAR(t->tiles[11][11].blend, 0.365685, 1e-6);
    expectTile(t->tiles[12][12], 1, 3, kept(std::sqrt(8.0)), "diagonal 2");
    // distance 3 keeps everything: the tile is not touched
    expectTile(t->tiles[13][10], 1, 1, 0.0, "distance 3");
    expectTile(t->tiles[14][14], 1, 1, 0.0, "corner of the extent");
    expectTile(t->tiles[15][10], 1, 1, 0.0, "outside the extent");
}

TEST(LGLTerrainTilesTest, PaintingSkipsTilesOutsideTheMap)
{
    auto t = makeTerrain();
    t->numTiles = 4;
    t->initTiles(1);
    t->tiles[4][0] = TerrainTile{9, 9, 0.0};
    t->tiles[0][4] = TerrainTile{9, 9, 0.0};
    t->setTerrainTileTextureAt(2, 0, 3, 3, 1.0, 0);
    for (int x = 0; x < 4; ++x)
        for (int z = 0; z < 4; ++z)
            expectTile(t->tiles[x][z], x <= 2 && z >= 1 ? 2 : 1, x <= 2 && z >= 1 ? 2 : 1, 0.0);
    expectTile(t->tiles[4][0], 9, 9, 0.0);
    expectTile(t->tiles[0][4], 9, 9, 0.0);
}

// ---------------------------------------------------------------- corner table

TEST(LGLTerrainTilesTest, CornerTableHoldsPositionsHeightsAndTextureCoordinates)
{
    auto t = makeTerrain();
    giveHeights(*t, 128, 1024, 0);  // 8 units per sample
    giveTiles(*t, 256, 4);
    raw(*t, 2, 4) = 10;
    raw(*t, 3, 4) = 20;
    raw(*t, 2, 3) = 30;
    raw(*t, 3, 3) = 40;
    t->tiles[5][7] = TerrainTile{2, 3, 0.5};
    t->texRepeat[2] = 64;
    t->texRepeat[3] = 16;
    t->updateTileCoordinates();

    const LGLTerrain::tTileVertex(&c)[4] = LGLTerrain::tileVertices[5][7];
    // (left, far), (right, far), (left, near), (right, near) of the tile x 20..24, z 28..32
    const int xs[4] = {20, 24, 20, 24};
    const int zs[4] = {32, 32, 28, 28};
    const int ys[4] = {15, 30, 45, 60};
    for (int k = 0; k < 4; ++k) {
        EXPECT_EQ(c[k].x, xs[k]) << k;
        EXPECT_EQ(c[k].z, zs[k]) << k;
        EXPECT_EQ(c[k].y, ys[k]) << k;
        EXPECT_DOUBLE_EQ(c[k].s0, xs[k] / 64.0) << k;
        EXPECT_DOUBLE_EQ(c[k].t0, zs[k] / 64.0) << k;
        EXPECT_DOUBLE_EQ(c[k].s1, xs[k] / 16.0) << k;
        EXPECT_DOUBLE_EQ(c[k].t1, zs[k] / 16.0) << k;
    }
    EXPECT_EQ(t->curRepeatA, 64);  // the last visited tile's repeats: (255, 255) uses texture 0
    // the far edge of the last tile reads the last sample (positions are clamped to the world)
    raw(*t, 127, 127) = 100;
    t->updateTileCoordinates();
    EXPECT_EQ(LGLTerrain::tileVertices[255][255][1].x, 1024);
    EXPECT_EQ(LGLTerrain::tileVertices[255][255][1].z, 1024);
    EXPECT_EQ(LGLTerrain::tileVertices[255][255][1].y, 150);
}

TEST(LGLTerrainTilesTest, ARepeatOfTheWholeWorldSpansTheMapOnce)
{
    auto t = makeTerrain();
    giveTiles(*t, 256, 2);
    t->tiles[255][0] = TerrainTile{4, 4, 0.0};
    t->texRepeat[4] = 512;
    t->updateTileCoordinates();
    EXPECT_DOUBLE_EQ(LGLTerrain::tileVertices[255][0][1].s0, 1.0);
    EXPECT_DOUBLE_EQ(LGLTerrain::tileVertices[255][0][1].t0, 2.0 / 512.0);
    EXPECT_DOUBLE_EQ(LGLTerrain::tileVertices[255][0][2].s0, 510.0 / 512.0);
}

TEST(LGLTerrainTilesTest, CornersWithoutHeightsLieAtZero)
{
    auto t = makeTerrain();
    giveTiles(*t, 256, 8);
    fillCornerTable(-777);
    t->updateTileCoordinates();
    EXPECT_EQ(LGLTerrain::tileVertices[3][4][0].y, 0);
    EXPECT_EQ(LGLTerrain::tileVertices[3][4][0].x, 24);
    EXPECT_EQ(LGLTerrain::tileVertices[3][4][0].z, 40);
}

TEST(LGLTerrainTilesTest, OnASmallMapTheUpdateVisitsStorageOrderAndReachesBeyondTheMap)
{
    auto t = makeTerrain();
    giveTiles(*t, 2, 10);
    fillCornerTable(-777);
    t->updateTileCoordinates();
    // four cells: (0, 0), (0, 1), (0, 2), (0, 3)
    for (int k = 0; k < 4; ++k) {
        EXPECT_EQ(LGLTerrain::tileVertices[0][k][0].x, 0) << k;
        EXPECT_EQ(LGLTerrain::tileVertices[0][k][0].z, 10 * (k + 1)) << k;
        EXPECT_EQ(LGLTerrain::tileVertices[0][k][3].x, 10) << k;
        EXPECT_EQ(LGLTerrain::tileVertices[0][k][3].z, 10 * k) << k;
    }
    // the map's own tiles (1, 0) and (1, 1) are not visited
    EXPECT_EQ(LGLTerrain::tileVertices[1][0][0].x, -777);
    EXPECT_EQ(LGLTerrain::tileVertices[1][1][3].z, -777);
    EXPECT_EQ(LGLTerrain::tileVertices[0][4][0].x, -777);
}

TEST(LGLTerrainTilesTest, WithoutTilesTheCornerTableIsLeftAlone)
{
    auto t = makeTerrain();
    giveTiles(*t, 0, 10);
    fillCornerTable(-5);
    t->updateTileCoordinates();
    EXPECT_EQ(LGLTerrain::tileVertices[0][0][0].x, -5);
}

TEST(LGLTerrainTilesTest, DetailOverlayModeTakesTheRepeatsOfTheFarPlainPair)
{
    auto t = makeTerrain();
    giveTiles(*t, 1, 32);
    t->textureMode = 1;
    t->farPlainTiles[0] = TerrainTile{4, 5, 1.0};
    t->texRepeat[4] = 128;
    t->texRepeat[5] = 8;
    t->updateTileCoordinates();
    const LGLTerrain::tTileVertex& v = LGLTerrain::tileVertices[0][0][1];  // (32, 32)
    EXPECT_DOUBLE_EQ(v.s0, 0.25);
    EXPECT_DOUBLE_EQ(v.t0, 0.25);
    EXPECT_DOUBLE_EQ(v.s1, 4.0);
    EXPECT_DOUBLE_EQ(v.t1, 4.0);
}

class LGLTerrainTileVertexTest : public TerrainGLTest {
};

TEST_F(LGLTerrainTileVertexTest, SetTerrainTileVertexGivesBothUnitsTheirCoordinatesThenTheVertex)
{
    giveTiles(*terrain, 1, 64);
    terrain->tiles[0][0] = TerrainTile{1, 2, 0.5};
    terrain->texRepeat[1] = 128;
    terrain->texRepeat[2] = 16;
    terrain->updateTileCoordinates();
    const TopView view{-10, 74, -10, 74};
    view.apply();
    const auto items = recordFeedback([&] {
        glBegin(GL_POINTS);
        terrain->setTerrainTileVertex(1, 0, 0);  // (64, 0, 64)
        glEnd();
    });
    const auto points = itemsOf(items, GL_POINT_TOKEN);
    ASSERT_EQ(points.size(), 1u);
    const FeedbackVertex& v = points[0].vertices[0];
    EXPECT_NEAR(v.x, view.windowX(64), 1e-3);
    EXPECT_NEAR(v.y, view.windowY(64), 1e-3);
    EXPECT_NEAR(v.s, 0.5f, 1e-6);
    EXPECT_NEAR(v.t, 0.5f, 1e-6);
    LGLTerrain::pglActiveTextureARB(GL_TEXTURE1_ARB);
    GLfloat unit1[4] = {0, 0, 0, 0};
    glGetFloatv(GL_CURRENT_TEXTURE_COORDS, unit1);
    LGLTerrain::pglActiveTextureARB(GL_TEXTURE0_ARB);
    EXPECT_FLOAT_EQ(unit1[0], 4.0f);
    EXPECT_FLOAT_EQ(unit1[1], 4.0f);
}

// ---------------------------------------------------------------- tile sort

namespace {
void fillSortTable(int texA)
{
    for (auto& record : LGLTerrain::tileSort)
        record = LGLTerrain::tTileSortRecord{-1, -1, texA, 0, 0.0};
}
}  // namespace

TEST(LGLTerrainTilesTest, TheTileSortOrdersByFirstTextureThenSecondThenWeight)
{
    auto t = makeTerrain();
    t->numTiles = 3;
    const TerrainTile grid[3][3] = {
        {{2, 1, 0.5}, {1, 4, 0.2}, {2, 1, 0.25}},
        {{1, 3, 0.9}, {1, 3, 0.1}, {0, 0, 0.0}},
        {{2, 0, 0.3}, {1, 4, 0.1}, {1, 3, 0.5}},
    };
    for (int x = 0; x < 3; ++x)
        for (int z = 0; z < 3; ++z)
            t->tiles[x][z] = grid[x][z];
    fillSortTable(1000);
    StdoutCapture out;
    t->generateTileSort();
    const std::string listing = out.take();

    // the expected order, with each record's tile
    const int expected[9][2] = {{1, 2}, {1, 1}, {2, 2}, {1, 0}, {2, 1}, {0, 1}, {2, 0}, {0, 2}, {0, 0}};
    for (int k = 0; k < 9; ++k) {
        const auto& record = LGLTerrain::tileSort[k];
        EXPECT_EQ(record.x, expected[k][0]) << k;
        EXPECT_EQ(record.z, expected[k][1]) << k;
        const TerrainTile& tile = grid[expected[k][0]][expected[k][1]];
        EXPECT_EQ(record.texA, tile.texA) << k;
        EXPECT_EQ(record.texB, tile.texB) << k;
        EXPECT_EQ(record.blend, tile.blend) << k;
    }
    EXPECT_EQ(LGLTerrain::tileSort[9].texA, 1000);
    EXPECT_EQ(listing, "0 (0,0). 1 (1,3). 4 (1,4). 6 (2,0). 7 (2,1). \n");
}

TEST(LGLTerrainTilesTest, TheTileSortSortsTheWholeTableIncludingRecordsItDidNotWrite)
{
    auto t = makeTerrain();
    t->numTiles = 2;
    t->initTiles(5);
    fillSortTable(0);
    StdoutCapture out;
    t->generateTileSort();
    // the 65,532 unwritten records (texture pair 0, 0) come first
    for (int k = 0; k < 4; ++k) {
        EXPECT_EQ(LGLTerrain::tileSort[k].texA, 0) << k;
        EXPECT_EQ(LGLTerrain::tileSort[k].x, -1) << k;
    }
    EXPECT_EQ(LGLTerrain::tileSort[LGLTerrain::TILE_SORT_SIZE - 4].texA, 5);
    EXPECT_EQ(out.take(), "0 (0,0). \n");
}

TEST(LGLTerrainTilesTest, TheTileSortOfAFullMapListsEveryTileOnceInOrder)
{
    auto t = makeTerrain();
    t->numTiles = 256;
    for (int x = 0; x < 256; ++x)
        for (int z = 0; z < 256; ++z)
            t->tiles[x][z] = TerrainTile{(x * 7 + z) % 5, (x + z * 3) % 4, ((x * 13 + z * 29) % 11) / 10.0};
    StdoutCapture out;
    t->generateTileSort();
    out.take();
    std::vector<int> seen(65536, 0);
    for (int k = 0; k < LGLTerrain::TILE_SORT_SIZE; ++k) {
        const auto& r = LGLTerrain::tileSort[k];
        ASSERT_GE(r.x, 0);
        ASSERT_LT(r.x, 256);
        ASSERT_GE(r.z, 0);
        ASSERT_LT(r.z, 256);
        ++seen[r.x * 256 + r.z];
        const TerrainTile& tile = t->tiles[r.x][r.z];
        ASSERT_EQ(r.texA, tile.texA);
        ASSERT_EQ(r.texB, tile.texB);
        ASSERT_EQ(r.blend, tile.blend);
        if (k > 0) {
            const auto& p = LGLTerrain::tileSort[k - 1];
            const bool ordered = p.texA < r.texA || (p.texA == r.texA && (p.texB < r.texB || (p.texB == r.texB && p.blend <= r.blend)));
            ASSERT_TRUE(ordered) << k;
        }
    }
    for (int n : seen)
        ASSERT_EQ(n, 1);
}

TEST(LGLTerrainTilesTest, TheSortOrderNeverReportsEquality)
{
    const LGLTerrain::tTileSortRecord a{1, 2, 3, 4, 0.5};
    const LGLTerrain::tTileSortRecord b{9, 9, 3, 4, 0.5};
    const LGLTerrain::tTileSortRecord c{0, 0, 3, 4, 0.25};
    const LGLTerrain::tTileSortRecord d{0, 0, 2, 9, 0.9};
    EXPECT_EQ(LGLTerrain::compareTileSortRecords(&a, &b), 1);
    EXPECT_EQ(LGLTerrain::compareTileSortRecords(&b, &a), 1);
    EXPECT_EQ(LGLTerrain::compareTileSortRecords(&a, &a), 1);
    EXPECT_EQ(LGLTerrain::compareTileSortRecords(&c, &a), -1);
    EXPECT_EQ(LGLTerrain::compareTileSortRecords(&a, &c), 1);
    EXPECT_EQ(LGLTerrain::compareTileSortRecords(&d, &c), -1);
}

TEST(LGLTerrainTilesTest, AnEmptyMapSortsButListsNothing)
{
    auto t = makeTerrain();
    t->numTiles = 0;
    StdoutCapture out;
    t->generateTileSort();
    EXPECT_EQ(out.take(), "");
}

// ---------------------------------------------------------------- texture loading

class LGLTerrainTextureTest : public TerrainGLTest {
};

TEST_F(LGLTerrainTextureTest, LoadTexturesAnnouncesAndCreatesEveryTileTexture)
{
    const std::string dir = makeTempDir() + "/";
    std::filesystem::create_directories(dir + "images/map_tiles/categories");
    terrain->setResPath(dir);
    writeSolidBmp(dir + "images/map_tiles/categories/grass.bmp", 8, 8, 10, 200, 10);
    writeSolidBmp(dir + "images/map_tiles/categories/rock.bmp", 16, 8, 120, 120, 120);
    terrain->texNames[0] = "grass.bmp";
    terrain->texNames[1] = "rock.bmp";
    terrain->numTextures = 2;
    StdoutCapture out;
    terrain->loadTextures();
    EXPECT_EQ(out.take(), "Loading \"grass.bmp\"...\nLoading \"rock.bmp\"...\n");
    ASSERT_TRUE(glIsTexture(terrain->texIds[0]));
    ASSERT_TRUE(glIsTexture(terrain->texIds[1]));
    EXPECT_NE(terrain->texIds[0], terrain->texIds[1]);
    glBindTexture(GL_TEXTURE_2D, terrain->texIds[1]);
    GLint width = 0;
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &width);
    EXPECT_EQ(width, 16);
    glBindTexture(GL_TEXTURE_2D, 0);
}

TEST_F(LGLTerrainTextureTest, MoreThanTwoHundredTexturesEndTheProcess)
{
    terrain->numTextures = 201;
    OSTRUM_EXPECT_EXIT_WITH_LINE(terrain->loadTextures(), 255, "ERROR: numTex>maxNumTextures  201 > 200");
}

TEST_F(LGLTerrainTextureTest, AMissingTileTextureEndsTheProcess)
{
    terrain->setResPath("/nonexistent/res/");
    terrain->texNames[0] = "gone.bmp";
    terrain->numTextures = 1;
    OSTRUM_EXPECT_EXIT_WITH_LINE(
        terrain->loadTextures(), 255,
        "** ERROR LGL::CreateTexture: Texture file \"/nonexistent/res/images/map_tiles/categories/gone.bmp\" not found!");
}

// ---------------------------------------------------------------- two-unit binding

class LGLTerrainBindingTest : public TerrainGLTest {
protected:
    void SetUp() override
    {
        TerrainGLTest::SetUp();
        giveTextures(*terrain, {{255, 0, 0}, {0, 255, 0}, {0, 0, 255}});
        terrain->worldSize = 1024;
        terrain->texRepeat[1] = 1024;
        LGLTerrain::textureSwitches = 0;
        terrain->lastTexA = -10;
        terrain->lastTexB = -10;
        LGLTerrain::pglActiveTextureARB(GL_TEXTURE0_ARB);
        // CreateTexture's magnification filter call is refused on purpose (GL_INVALID_ENUM)
        while (glGetError() != GL_NO_ERROR) {
        }
    }
    static std::vector<GLfloat> colour()
    {
        std::vector<GLfloat> c(4);
        glGetFloatv(GL_CURRENT_COLOR, c.data());
        return c;
    }
};

TEST_F(LGLTerrainBindingTest, ADifferentPairBindsBothUnitsAndCountsASwitch)
{
    terrain->activate2TextureBlending(3, 4, 0, 1, 0.25f);
    const UnitState u0 = unitState(GL_TEXTURE0_ARB);
    const UnitState u1 = unitState(GL_TEXTURE1_ARB);
    EXPECT_TRUE(u0.enabled);
    EXPECT_EQ(u0.binding, static_cast<GLint>(terrain->texIds[0]));
    EXPECT_EQ(u0.wrapS, GL_REPEAT);
    EXPECT_TRUE(u1.enabled);
    EXPECT_EQ(u1.binding, static_cast<GLint>(terrain->texIds[1]));
    EXPECT_EQ(activeUnit(), GL_TEXTURE1_ARB);
    EXPECT_EQ(LGLTerrain::textureSwitches, 1);
    EXPECT_TRUE(LGLTerrain::blendingActive);
    EXPECT_FLOAT_EQ(colour()[3], 0.25f);
    EXPECT_FLOAT_EQ(colour()[0], 1.0f);
    EXPECT_EQ(terrain->lastTexA, 0);
    EXPECT_EQ(terrain->lastTexB, 1);
    EXPECT_EQ(LGLTerrain::lastAlpha, 0.25f);
}

TEST_F(LGLTerrainBindingTest, ATextureWhoseRepeatIsTheWorldSizeIsClampedAtItsEdges)
{
    terrain->activate2TextureBlending(0, 0, 0, 1, 0.5f);
    const UnitState u1 = unitState(GL_TEXTURE1_ARB);
    EXPECT_EQ(u1.wrapS, GL_CLAMP_TO_EDGE);
    EXPECT_EQ(u1.wrapT, GL_CLAMP_TO_EDGE);
    terrain->activate2TextureBlending(0, 0, 1, 2, 0.5f);
    EXPECT_EQ(unitState(GL_TEXTURE0_ARB).wrapT, GL_CLAMP_TO_EDGE);
    EXPECT_EQ(unitState(GL_TEXTURE1_ARB).wrapS, GL_REPEAT);
}

TEST_F(LGLTerrainBindingTest, TheSamePairAgainBindsNothing)
{
    terrain->activate2TextureBlending(0, 0, 0, 1, 0.25f);
    glBindTexture(GL_TEXTURE_2D, 0);  // unit 1 is active
    terrain->activate2TextureBlending(0, 1, 0, 1, 0.75f);
    EXPECT_EQ(unitState(GL_TEXTURE1_ARB).binding, 0);
    EXPECT_EQ(LGLTerrain::textureSwitches, 1);
    EXPECT_FLOAT_EQ(colour()[3], 0.75f);
}

TEST_F(LGLTerrainBindingTest, TheColourIsSetOnlyWhenTheAlphaChanges)
{
    terrain->activate2TextureBlending(0, 0, 0, 1, 0.25f);
    glColor4f(0.0f, 0.0f, 0.0f, 0.9f);
    terrain->activate2TextureBlending(0, 0, 1, 2, 0.25f);
    EXPECT_FLOAT_EQ(colour()[0], 0.0f);
    EXPECT_FLOAT_EQ(colour()[3], 0.9f);
    EXPECT_EQ(LGLTerrain::textureSwitches, 2);
}

TEST_F(LGLTerrainBindingTest, EqualTexturesAfterBlendingSwitchUnitOneOffAndBindOnUnitZero)
{
    terrain->activate2TextureBlending(0, 0, 0, 1, 0.5f);
    terrain->activate2TextureBlending(0, 0, 2, 2, 0.0f);
    const UnitState u0 = unitState(GL_TEXTURE0_ARB);
    EXPECT_FALSE(unitState(GL_TEXTURE1_ARB).enabled);
    EXPECT_TRUE(u0.enabled);
    EXPECT_EQ(u0.binding, static_cast<GLint>(terrain->texIds[2]));
    EXPECT_EQ(activeUnit(), GL_TEXTURE0_ARB);
    EXPECT_FALSE(LGLTerrain::blendingActive);
    EXPECT_EQ(LGLTerrain::textureSwitches, 1);  // a single texture is not counted
}

TEST_F(LGLTerrainBindingTest, EqualTexturesWithoutBlendingBindOnTheActiveUnit)
{
    LGLTerrain::pglActiveTextureARB(GL_TEXTURE1_ARB);
    terrain->activate2TextureBlending(0, 0, 2, 2, 0.0f);
    const UnitState u1 = unitState(GL_TEXTURE1_ARB);
    EXPECT_TRUE(u1.enabled);
    EXPECT_EQ(u1.binding, static_cast<GLint>(terrain->texIds[2]));
    EXPECT_FALSE(unitState(GL_TEXTURE0_ARB).enabled);
}

TEST_F(LGLTerrainBindingTest, InWireframeModeNothingIsBound)
{
    terrain->wireframe = true;
    terrain->activate2TextureBlending(0, 0, 0, 1, 0.25f);
    EXPECT_FALSE(unitState(GL_TEXTURE0_ARB).enabled);
    EXPECT_FALSE(unitState(GL_TEXTURE1_ARB).enabled);
    EXPECT_EQ(LGLTerrain::textureSwitches, 0);
    EXPECT_EQ(terrain->lastTexA, -10);
    EXPECT_FLOAT_EQ(colour()[3], 1.0f);
}

TEST_F(LGLTerrainBindingTest, DisactivateSwitchesBothUnitsOffButRemembersThePair)
{
    terrain->activate2TextureBlending(0, 0, 0, 1, 0.5f);
    terrain->disactivate2TextureBlending();
    EXPECT_FALSE(unitState(GL_TEXTURE0_ARB).enabled);
    EXPECT_FALSE(unitState(GL_TEXTURE1_ARB).enabled);
    EXPECT_EQ(activeUnit(), GL_TEXTURE0_ARB);
    // the same pair again binds nothing: texturing stays off
    terrain->activate2TextureBlending(0, 0, 0, 1, 0.5f);
    EXPECT_FALSE(unitState(GL_TEXTURE0_ARB).enabled);
    EXPECT_FALSE(unitState(GL_TEXTURE1_ARB).enabled);
}

TEST_F(LGLTerrainBindingTest, TextureIndicesOutsideTheTableBindNoTexture)
{
    terrain->activate2TextureBlending(0, 0, -1, 250, 0.5f);
    EXPECT_EQ(unitState(GL_TEXTURE0_ARB).binding, 0);
    EXPECT_EQ(unitState(GL_TEXTURE1_ARB).binding, 0);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}
