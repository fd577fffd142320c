// LGLTerrainGridTest.cpp -- the terrain object and its height grid: construction, init defaults and
// the multitexturing message, resource paths, sample addressing, the four height operations with
// their kept quirks, border joining and smoothing, dispose, copy and move.
#include <ostrum_gl/scenery/LGLTerrain.h>

#include <ostrum_gl/platform/LGLPlatform.h>

#include "TerrainTestSupport.h"
#include "TestSupport.h"

#include <GL/freeglut.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

using namespace ostrum_test;
using namespace terrain_test;

namespace {

// The brush and border weight, written out here: 1 / (1 + e^(-4 (2x - 1))).
double logistic(double x)
{
    return 1.0 / (1.0 + std::exp(-4.0 * (2.0 * x - 1.0)));
}

}  // namespace

// ---------------------------------------------------------------- construction and init

TEST(LGLTerrainGridTest, ConstructorLeavesNoHeightsAndEmptyRecords)
{
    auto t = makeTerrain(false);
    EXPECT_FALSE(t->hasData());
    EXPECT_EQ(t->heights, nullptr);
    EXPECT_EQ(t->heightsFine, nullptr);
    EXPECT_EQ(t->heightBitmapInfo, nullptr);
    EXPECT_EQ(t->texNames[0], "");
    EXPECT_EQ(t->texNames[199], "");
    EXPECT_EQ(t->heightMapFile, "");
    EXPECT_EQ(t->resPath, "");
    EXPECT_EQ(t->objects[0].modelName, "");
    EXPECT_EQ(t->objects[9999].modelName, "");
    EXPECT_EQ(t->objects[9999].numBBSamples, 0);
    EXPECT_EQ(t->objects[9999].lod[2], nullptr);
    EXPECT_EQ(t->numObjects, 0);
    EXPECT_EQ(t->tilesBackup[255][255].texA, 0);
    EXPECT_EQ(t->tilesBackup[255][255].blend, 0.0);
    // the constructor does not run init
    EXPECT_EQ(t->heightScale, 0.0);
    EXPECT_EQ(t->texRepeat[0], 0);
}

TEST(LGLTerrainGridTest, InitFetchesTheMultitexturingEntryPoints)
{
    auto t = makeTerrain();
    EXPECT_EQ(reinterpret_cast<void*>(LGLTerrain::pglActiveTextureARB),
              LGLPlatform::getProcAddress("glActiveTextureARB"));
    EXPECT_EQ(reinterpret_cast<void*>(LGLTerrain::pglMultiTexCoord2fARB),
              LGLPlatform::getProcAddress("glMultiTexCoord2fARB"));
    EXPECT_NE(LGLTerrain::pglMultiTexCoord2fARB, nullptr);
}

TEST(LGLTerrainGridTest, InitSetsTheDefaults)
{
    auto t = makeTerrain();
    EXPECT_EQ(t->resPath, LGLTerrain::defaultResPath);
    EXPECT_EQ(t->resPath.front(), '/');
    EXPECT_EQ(t->resPath.back(), '/');
    EXPECT_EQ(t->tileCategoryPath, std::string(LGLTerrain::defaultResPath) + "images/map_tiles/categories/");
    EXPECT_EQ(t->numTextures, 0);
    EXPECT_EQ(t->numObjects, 0);
    for (int i = 0; i < 200; ++i)
        ASSERT_EQ(t->texRepeat[i], 64) << i;
    EXPECT_EQ(t->lightPos[0], 500.0f);
    EXPECT_EQ(t->lightPos[1], 500.0f);
    EXPECT_EQ(t->lightPos[2], 500.0f);
    EXPECT_EQ(t->lightPos[3], 1.0f);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(t->lighting[i], 1.0);
        EXPECT_EQ(t->fogColor[i], 1.0f);
        EXPECT_EQ(t->skyboxColor[i], 1.0f);
    }
    EXPECT_EQ(t->fogStart, 600);
    EXPECT_EQ(t->fogEnd, 2500);
    EXPECT_EQ(t->edgeHeight, 0);
    EXPECT_EQ(t->heightScale, 1.5);
    EXPECT_EQ(t->selGridX, 10);
    EXPECT_EQ(t->selGridZ, 245);
    EXPECT_EQ(t->brushStrength, 10);
    EXPECT_EQ(t->brushRadius, 10);
    EXPECT_FALSE(t->heightsModified);
    EXPECT_FALSE(t->texturesModified);
    EXPECT_FALSE(t->objectsModified);
    EXPECT_TRUE(t->useTileSort);
    EXPECT_EQ(t->userSetting, 50000);
    EXPECT_EQ(t->bottomTexA, -1);
    EXPECT_EQ(t->textureMode, 0);
    EXPECT_FALSE(t->wireframe);
    EXPECT_FALSE(t->farPlainMirrored);
    EXPECT_FALSE(t->hasData());
}

TEST(LGLTerrainGridTest, InitReleasesHeightsOfAnEarlierLoad)
{
    auto t = makeTerrain();
    giveHeights(*t, 8, 128, 7);
    ASSERT_TRUE(t->hasData());
    t->init();
    EXPECT_FALSE(t->hasData());
    EXPECT_EQ(t->heightsFine, nullptr);
}

TEST(LGLTerrainGridTest, InitFillsTheTilesOfTheCurrentGridWithTextureZero)
{
    auto t = makeTerrain(false);
    t->tiles[0][0] = TerrainTile{4, 5, 0.5};
    t->tiles[5][5] = TerrainTile{4, 5, 0.5};
    t->init();
    // init sets numTiles to 0 before initTiles(0): the grid it fills is empty
    EXPECT_EQ(t->numTiles, 0);
    EXPECT_EQ(t->tiles[0][0].texA, 4);
    EXPECT_EQ(t->tiles[5][5].texB, 5);
}

namespace {
std::string shownMessage;
LGLTerrain* quitTerrain = nullptr;
void recordMessage(const std::string& text, const std::string& caption)
{
    shownMessage = caption + ": " + text;
}
void* findNothing(const char*)
{
    return nullptr;
}
void* findOnlyActiveTexture(const char* name)
{
    return std::strcmp(name, "glActiveTextureARB") == 0 ? LGLPlatform::getProcAddress(name) : nullptr;
}
}  // namespace

// init runs from a GLUT timer inside the game's main loop: the loop must return because of it, and
// the defaults are set all the same.
#define EXPECT_TERRAIN_INIT_SHOWS_MESSAGE_AND_QUITS(lookup)                                                   \
    OSTRUM_EXPECT_EXIT_WITH_LINE(                                                                             \
        {                                                                                                     \
            GLTestWindow::ensure();                                                                           \
            LGLPlatform::setMessageHandler(recordMessage);                                                    \
            quitTerrain = new LGLTerrain;                                                                     \
            glutTimerFunc(20, [](int) { quitTerrain->init(lookup); }, 0);                                     \
            glutTimerFunc(10000, [](int) { std::exit(9); }, 0);                                               \
            glutMainLoop();                                                                                   \
            std::printf("main loop returned after \"%s\", heightScale %g, brush %d\n", shownMessage.c_str(),  \
                        quitTerrain->heightScale, quitTerrain->brushRadius);                                  \
            std::exit(3);                                                                                     \
        },                                                                                                    \
        3, "main loop returned after \"Error: Multitexturing not supported!\", heightScale 1.5, brush 10")

TEST(LGLTerrainGridTest, InitWithoutMultitexturingShowsMessageQuitsAndGoesOn)
{
    EXPECT_TERRAIN_INIT_SHOWS_MESSAGE_AND_QUITS(findNothing);
}

TEST(LGLTerrainGridTest, InitMissingOneEntryPointAlsoShowsMessageAndQuits)
{
    EXPECT_TERRAIN_INIT_SHOWS_MESSAGE_AND_QUITS(findOnlyActiveTexture);
}

TEST(LGLTerrainGridTest, SuccessfulInitShowsNoMessage)
{
    shownMessage.clear();
    LGLPlatform::setMessageHandler(recordMessage);
    auto t = makeTerrain();
    LGLPlatform::setMessageHandler(nullptr);
    EXPECT_EQ(shownMessage, "");
}

TEST(LGLTerrainGridTest, SetResPathRebuildsTheTileCategoryPath)
{
    auto t = makeTerrain();
    t->setResPath("/games/harrow/");
    EXPECT_EQ(t->resPath, "/games/harrow/");
    EXPECT_EQ(t->tileCategoryPath, "/games/harrow/images/map_tiles/categories/");
    t->setResPath("");
    EXPECT_EQ(t->tileCategoryPath, "images/map_tiles/categories/");
}

TEST(LGLTerrainGridTest, HasDataWhenEitherHeightsOrTheBitmapHeaderArePresent)
{
    auto t = makeTerrain();
    EXPECT_FALSE(t->hasData());
    t->heightBitmapInfo = static_cast<BITMAPINFO*>(std::calloc(1, sizeof(BITMAPINFO)));
    EXPECT_TRUE(t->hasData());
    std::free(t->heightBitmapInfo);
    t->heightBitmapInfo = nullptr;
    giveHeights(*t, 4, 64);
    EXPECT_TRUE(t->hasData());
}

// ---------------------------------------------------------------- sample addressing and getHeight

TEST(LGLTerrainGridTest, NegativePositionsReadSampleZeroZero)
{
    auto t = makeTerrain();
    giveHeights(*t, 8, 128, 0);  // 16 units per sample
    raw(*t, 0, 0) = 40;
    EXPECT_EQ(t->getHeight(-5, -5), 60);
    EXPECT_EQ(t->getHeight(0, 0), 60);
    EXPECT_EQ(t->getHeight(15, 15), 60);
}

TEST(LGLTerrainGridTest, PositionsBeyondTheWorldReadTheLastColumn)
{
    auto t = makeTerrain();
    giveHeights(*t, 8, 128, 0);
    raw(*t, 7, 0) = 10;
    raw(*t, 6, 0) = 99;
    EXPECT_EQ(t->getHeight(t->worldSize + 100, 0), 15);
    EXPECT_EQ(t->getHeight(127, 0), 15);
    EXPECT_EQ(t->getHeight(112, 0), 15);
    EXPECT_EQ(t->getHeight(111, 0), 148);  // 99 * 1.5 = 148.5, truncated
}

TEST(LGLTerrainGridTest, RowIsZAndColumnIsX)
{
    auto t = makeTerrain();
    giveHeights(*t, 8, 128, 0);
    raw(*t, 2, 5) = 20;  // column 2 (x 32..47), row 5 (z 80..95)
    EXPECT_EQ(t->getHeight(40, 90), 30);
    EXPECT_EQ(t->getHeight(90, 40), 0);
}

TEST(LGLTerrainGridTest, WorldHeightIsRawTimesScaleTruncated)
{
    auto t = makeTerrain();
    giveHeights(*t, 4, 64, 3);
    EXPECT_EQ(t->getHeight(1, 1), 4);  // 4.5
    t->heightScale = 2.25;
    EXPECT_EQ(t->getHeight(1, 1), 6);  // 6.75
}

TEST(LGLTerrainGridTest, GetHeightWithoutHeightsIsZero)
{
    auto t = makeTerrain();
    t->worldSize = 128;
    t->unitsPerSample = 16;
    EXPECT_EQ(t->getHeight(10, 10), 0);
}

TEST(LGLTerrainGridTest, AWorldWiderThanTheGridReadsTheLastSample)
{
    auto t = makeTerrain();
    giveHeights(*t, 4, 100, 0);  // 25 units per sample, but set the world wider than the grid
    t->worldSize = 1000;
    raw(*t, 3, 3) = 8;
    EXPECT_EQ(t->getHeight(999, 999), 12);
    t->unitsPerSample = 0;  // counts as 1
    EXPECT_EQ(t->getHeight(2, 3), 0);
    EXPECT_EQ(t->getHeight(3, 3), 12);
}

// ---------------------------------------------------------------- setHeight

TEST(LGLTerrainGridTest, SetHeightZeroAndNegativeBothStoreZero)
{
    auto t = makeTerrain();
    giveHeights(*t, 4, 64, 50);
    t->setHeight(0, 0, 0);
    EXPECT_EQ(raw(*t, 0, 0), 0);
    t->setHeight(20, 0, -3);
    EXPECT_EQ(raw(*t, 1, 0), 0);
}

TEST(LGLTerrainGridTest, SetHeightAbove255StepsWraps)
{
    auto t = makeTerrain();
    giveHeights(*t, 4, 64, 0);
    t->setHeight(0, 0, 400);  // 400 / 1.5 = 266.67 -> 266, low byte 10
    EXPECT_EQ(raw(*t, 0, 0), 10);
    t->setHeight(0, 0, 90);  // 60
    EXPECT_EQ(raw(*t, 0, 0), 60);
    EXPECT_EQ(t->getHeight(0, 0), 90);
}

TEST(LGLTerrainGridTest, SetHeightLeavesTheFineHeightAndSetsTheFlag)
{
    auto t = makeTerrain();
    giveHeights(*t, 4, 64, 20);
    t->setHeight(17, 33, 150);
    EXPECT_EQ(raw(*t, 1, 2), 100);
    EXPECT_EQ(fine(*t, 1, 2), 20.0);
    EXPECT_TRUE(t->heightsModified);
    // a brush stroke on that sample starts from the old fine value
    t->incHeight(17, 33, 1);
    EXPECT_EQ(raw(*t, 1, 2), 22);
}

TEST(LGLTerrainGridTest, SetHeightRefreshesTheTileCoordinates)
{
    auto t = makeTerrain();
    giveHeights(*t, 4, 64, 0);
    t->numTiles = 1;
    t->tileSize = 64;
    t->updateTileCoordinates();
    ASSERT_EQ(LGLTerrain::tileVertices[0][0][2].y, 0);
    t->setHeight(0, 0, 30);
    EXPECT_EQ(LGLTerrain::tileVertices[0][0][2].y, 30);
}

TEST(LGLTerrainGridTest, EditingWithoutHeightsIsIgnored)
{
    auto t = makeTerrain();
    t->worldSize = 64;
    t->unitsPerSample = 16;
    t->setHeight(1, 1, 30);
    t->incHeight(1, 1, 3);
    t->elevateHeight(1, 1, 3);
    t->connectEdges();
    t->smoothEdges(2);
    t->smoothEdges(-1);
    EXPECT_FALSE(t->heightsModified);
    EXPECT_FALSE(t->hasData());
}

// ---------------------------------------------------------------- incHeight

TEST(LGLTerrainGridTest, IncHeightRaisesByTwiceTheAmount)
{
    auto t = makeTerrain();
    giveHeights(*t, 4, 64, 100);
    t->incHeight(40, 40, 3);
    EXPECT_EQ(raw(*t, 2, 2), 106);
    EXPECT_EQ(fine(*t, 2, 2), 106.0);
    EXPECT_TRUE(t->heightsModified);
    t->incHeight(40, 40, -5);
    EXPECT_EQ(raw(*t, 2, 2), 96);
}

TEST(LGLTerrainGridTest, IncHeightStopsAt255AndAtZero)
{
    auto t = makeTerrain();
    giveHeights(*t, 4, 64, 100);
    t->incHeight(0, 0, 1000000);
    EXPECT_EQ(raw(*t, 0, 0), 255);
    EXPECT_EQ(fine(*t, 0, 0), 255.0);
    t->incHeight(0, 0, -2000000000);
    EXPECT_EQ(raw(*t, 0, 0), 0);
    EXPECT_EQ(fine(*t, 0, 0), 0.0);
}

TEST(LGLTerrainGridTest, IncHeightTruncatesTheFineValue)
{
    auto t = makeTerrain();
    giveHeights(*t, 4, 64, 0);
    fine(*t, 1, 1) = 10.75;
    t->incHeight(16, 16, 1);
    EXPECT_EQ(fine(*t, 1, 1), 12.75);
    EXPECT_EQ(raw(*t, 1, 1), 12);
}

// ---------------------------------------------------------------- elevateHeight

TEST(LGLTerrainGridTest, ElevateHeightRaisesARoundSigmoidPatch)
{
    auto t = makeTerrain();
    giveHeights(*t, 32, 512, 50);  // 16 units per sample
    t->brushRadius = 3;
    t->brushStrength = 10;
    t->elevateHeight(10 * 16 + 5, 20 * 16 + 9, 2);  // sample (10, 20)
    for (int z = 0; z < 32; ++z) {
        for (int x = 0; x < 32; ++x) {
            const double d = std::sqrt(double((x - 10) * (x - 10) + (z - 20) * (z - 20)));
            double expected = 50.0;
            if (d <= 3.0)
                expected = 50.0 + 20.0 * logistic(1.0 - d / 3.0);
            ASSERT_NEAR(fine(*t, x, z), expected, 1e-9) << x << ", " << z;
            ASSERT_EQ(raw(*t, x, z), static_cast<int>(expected + 0.5)) << x << ", " << z;
        }
    }
    // the centre gains about 19.6 steps, the rim about 0.36
    EXPECT_EQ(raw(*t, 10, 20), 70);
    EXPECT_EQ(raw(*t, 13, 20), 50);
    EXPECT_TRUE(t->heightsModified);
}

TEST(LGLTerrainGridTest, ElevateHeightAtAMapCornerChangesOnlyTheQuarterDiscInside)
{
    auto t = makeTerrain();
    giveHeights(*t, 16, 256, 100);
    t->brushRadius = 3;
    t->brushStrength = 10;
    t->elevateHeight(-50, -50, 1);
    int changed = 0;
    for (int z = 0; z < 16; ++z) {
        for (int x = 0; x < 16; ++x) {
            if (fine(*t, x, z) != 100.0) {
                ++changed;
                EXPECT_LE(x * x + z * z, 9) << x << ", " << z;
            }
        }
    }
    // samples with x, z >= 0 and x^2 + z^2 <= 9: 4 + 3 + 3 + 1
    EXPECT_EQ(changed, 11);
}

TEST(LGLTerrainGridTest, ElevateHeightWithAmountZeroChangesNothingButSetsTheFlag)
{
    auto t = makeTerrain();
    giveHeights(*t, 16, 256, 77);
    t->updateTileCoordinates();
    t->elevateHeight(100, 100, 0);
    for (int i = 0; i < 16 * 16; ++i) {
        ASSERT_EQ(t->heights[i], 77);
        ASSERT_EQ(t->heightsFine[i], 77.0);
    }
    EXPECT_TRUE(t->heightsModified);
}

TEST(LGLTerrainGridTest, ElevateHeightClampsTo255AndZero)
{
    auto t = makeTerrain();
    giveHeights(*t, 16, 256, 100);
    t->brushRadius = 2;
    t->elevateHeight(128, 128, 100000);
    EXPECT_EQ(raw(*t, 8, 8), 255);
    EXPECT_EQ(fine(*t, 8, 8), 255.0);
    t->elevateHeight(128, 128, -100000);
    EXPECT_EQ(raw(*t, 8, 8), 0);
    EXPECT_EQ(fine(*t, 8, 8), 0.0);
}

TEST(LGLTerrainGridTest, SmallBrushStrokesAccumulateAndRoundHalfAwayFromZero)
{
    auto t = makeTerrain();
    giveHeights(*t, 16, 256, 100);
    t->brushRadius = 1;
    t->brushStrength = 1;
    // the rim sample (9, 8) gains logistic(0) = 0.01799 per stroke: the byte moves once the fine
    // value reaches 100.5
    const double step = logistic(0.0);
    const int strokes = static_cast<int>(std::ceil(0.5 / step));  // 28
    for (int k = 0; k < strokes - 1; ++k)
        t->elevateHeight(8 * 16, 8 * 16, 1);
    EXPECT_EQ(raw(*t, 9, 8), 100);
    EXPECT_LT(fine(*t, 9, 8), 100.5);
    t->elevateHeight(8 * 16, 8 * 16, 1);
    EXPECT_GE(fine(*t, 9, 8), 100.5);
    EXPECT_EQ(raw(*t, 9, 8), 101);
    EXPECT_NEAR(fine(*t, 9, 8), 100.0 + strokes * step, 1e-9);
}

TEST(LGLTerrainGridTest, ABrushOfRadiusZeroRaisesOnlyItsCentreWithTheCentreWeight)
{
    auto t = makeTerrain();
    giveHeights(*t, 8, 128, 10);
    t->brushRadius = 0;
    t->brushStrength = 10;
    t->elevateHeight(3 * 16, 4 * 16, 1);
    EXPECT_NEAR(fine(*t, 3, 4), 10.0 + 10.0 * logistic(1.0), 1e-9);
    EXPECT_EQ(raw(*t, 3, 4), 20);
    EXPECT_EQ(raw(*t, 2, 4), 10);
    EXPECT_EQ(raw(*t, 3, 5), 10);
}

TEST(LGLTerrainGridTest, ElevateHeightRefreshesTheTileCoordinates)
{
    auto t = makeTerrain();
    giveHeights(*t, 8, 128, 0);
    t->numTiles = 1;
    t->tileSize = 128;
    t->updateTileCoordinates();
    t->brushRadius = 2;
    t->elevateHeight(0, 0, 2);  // sample (0, 0) gains 20 * logistic(1) = 19.64 -> 20
    EXPECT_EQ(raw(*t, 0, 0), 20);
    EXPECT_EQ(LGLTerrain::tileVertices[0][0][2].y, 30);
}

// ---------------------------------------------------------------- connectEdges and smoothEdges

TEST(LGLTerrainGridTest, ConnectEdgesSetsEveryBorderSampleToTheEdgeHeight)
{
    auto t = makeTerrain();
    giveHeights(*t, 6, 96, 200);
    t->numTiles = 1;
    t->tileSize = 96;
    t->updateTileCoordinates();
    t->edgeHeight = 30;
    t->connectEdges();
    for (int z = 0; z < 6; ++z) {
        for (int x = 0; x < 6; ++x) {
            const bool border = x == 0 || z == 0 || x == 5 || z == 5;
            EXPECT_EQ(raw(*t, x, z), border ? 30 : 200) << x << ", " << z;
            EXPECT_EQ(fine(*t, x, z), 200.0);
        }
    }
    EXPECT_TRUE(t->heightsModified);
    // the tile coordinates are not refreshed
    EXPECT_EQ(LGLTerrain::tileVertices[0][0][2].y, 300);
}

TEST(LGLTerrainGridTest, SmoothEdgesBlendsTheBorderBandWithSigmoidWeights)
{
    auto t = makeTerrain();
    giveHeights(*t, 8, 128, 200);
    t->edgeHeight = 100;
    t->smoothEdges(2);
    // ring weights: logistic(0) = 0.017986, logistic(0.5) = 0.5, logistic(1) = 0.982014
    EXPECT_EQ(raw(*t, 4, 0), 101);  // 100 * 0.982 + 200 * 0.018 = 101.80
    EXPECT_EQ(raw(*t, 3, 1), 150);
    EXPECT_EQ(raw(*t, 4, 2), 198);  // 198.20
    EXPECT_EQ(raw(*t, 3, 3), 200);
    EXPECT_EQ(raw(*t, 4, 7), 101);
    EXPECT_EQ(raw(*t, 3, 6), 150);
    EXPECT_EQ(raw(*t, 0, 3), 101);  // a column ring of an untouched row
    EXPECT_EQ(raw(*t, 7, 4), 101);
    EXPECT_EQ(raw(*t, 6, 3), 150);
    // corner bands are blended twice: first as a row, then as a column
    EXPECT_EQ(raw(*t, 0, 0), 100);  // 101 -> 100 * 0.982 + 101 * 0.018 = 100.02
    EXPECT_EQ(raw(*t, 0, 1), 100);  // 150 -> 100.90
    EXPECT_EQ(raw(*t, 1, 0), 100);  // 101 -> 100.5
    EXPECT_EQ(raw(*t, 1, 1), 125);  // 150 -> 125
    EXPECT_EQ(raw(*t, 7, 7), 100);
    EXPECT_TRUE(t->heightsModified);
    // neither heightsFine is touched
    EXPECT_EQ(fine(*t, 0, 0), 200.0);
}

TEST(LGLTerrainGridTest, SmoothEdgesWithWidthZeroWritesZeroOnTheOuterRing)
{
    auto t = makeTerrain();
    giveHeights(*t, 4, 64, 200);
    t->edgeHeight = 100;
    t->smoothEdges(0);
    for (int z = 0; z < 4; ++z) {
        for (int x = 0; x < 4; ++x) {
            const bool border = x == 0 || z == 0 || x == 3 || z == 3;
            EXPECT_EQ(raw(*t, x, z), border ? 0 : 200) << x << ", " << z;
        }
    }
}

TEST(LGLTerrainGridTest, SmoothEdgesWithNegativeWidthOnlySetsTheFlag)
{
    auto t = makeTerrain();
    giveHeights(*t, 4, 64, 200);
    t->edgeHeight = 100;
    t->smoothEdges(-1);
    for (int i = 0; i < 16; ++i)
        ASSERT_EQ(t->heights[i], 200);
    EXPECT_TRUE(t->heightsModified);
}

TEST(LGLTerrainGridTest, SmoothEdgesWiderThanTheGridSkipsRingsOutsideIt)
{
    auto t = makeTerrain();
    giveHeights(*t, 4, 64, 10);
    t->edgeHeight = 250;
    t->smoothEdges(10);
    // rings 10..4 lie outside the grid; ring i (i = 3..0, weight logistic(i / 10)) blends rows i and
    // 3 - i, then columns i and 3 - i. Row 1 is ring 2's mirror, then ring 1 itself.
    auto blend = [](int v, double w) { return static_cast<int>(250 * (1.0 - w) + v * w); };
    const int row1 = blend(blend(10, logistic(0.2)), logistic(0.1));
    const int sample11 = blend(blend(row1, logistic(0.2)), logistic(0.1));
    EXPECT_EQ(raw(*t, 1, 1), sample11);
    EXPECT_EQ(raw(*t, 2, 1), sample11);
    const int row0 = blend(blend(10, logistic(0.3)), logistic(0.0));
    EXPECT_EQ(raw(*t, 1, 0), blend(blend(row0, logistic(0.2)), logistic(0.1)));
    EXPECT_TRUE(t->heightsModified);
}

// ---------------------------------------------------------------- dispose

class LGLTerrainDisposeTest : public TerrainGLTest {
};

TEST_F(LGLTerrainDisposeTest, AfterDisposeThereIsNoDataAndHeightsReadZero)
{
    giveHeights(*terrain, 8, 128, 40);
    terrain->heightBitmapInfo = static_cast<BITMAPINFO*>(std::calloc(1, sizeof(BITMAPINFO)));
    ASSERT_EQ(terrain->getHeight(10, 10), 60);
    terrain->dispose();
    EXPECT_FALSE(terrain->hasData());
    EXPECT_EQ(terrain->heights, nullptr);
    EXPECT_EQ(terrain->heightsFine, nullptr);
    EXPECT_EQ(terrain->heightBitmapInfo, nullptr);
    EXPECT_EQ(terrain->getHeight(10, 10), 0);
}

TEST_F(LGLTerrainDisposeTest, DisposeDeletesTheDisplayListAndTheTileTextures)
{
    const GLuint list = glGenLists(1);
    glNewList(list, GL_COMPILE);
    glEndList();
    terrain->displayList = list;
    glGenTextures(2, terrain->texIds);
    for (int i = 0; i < 2; ++i)
        glBindTexture(GL_TEXTURE_2D, terrain->texIds[i]);
    glBindTexture(GL_TEXTURE_2D, 0);
    const GLuint first = terrain->texIds[0];
    const GLuint second = terrain->texIds[1];
    terrain->numTextures = 2;
    terrain->numObjects = 12;
    ASSERT_TRUE(glIsList(list));
    ASSERT_TRUE(glIsTexture(first));

    terrain->dispose();
    EXPECT_FALSE(glIsList(list));
    EXPECT_FALSE(glIsTexture(first));
    EXPECT_FALSE(glIsTexture(second));
    EXPECT_EQ(terrain->numObjects, 0);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

TEST_F(LGLTerrainDisposeTest, ADisposedTerrainCanBeFilledAgain)
{
    giveHeights(*terrain, 4, 64, 40);
    terrain->dispose();
    terrain->dispose();
    giveHeights(*terrain, 4, 64, 20);
    EXPECT_TRUE(terrain->hasData());
    EXPECT_EQ(terrain->getHeight(0, 0), 30);
}

// ---------------------------------------------------------------- copy and move

namespace {

// Gives every member a value of its own.
void fingerprint(LGLTerrain& t)
{
    t.edgeHeight = 3;
    t.numTiles = 4;
    t.worldSize = 256;
    t.tileSize = 64;
    t.useTileSort = false;
    t.lighting[2] = 0.25;
    t.lightPos[1] = 7.5f;
    t.curRepeatA = 11;
    t.curRepeatB = 12;
    t.texRepeat[199] = 256;
    t.texIds[5] = 77;
    t.texNames[199] = "grass.bmp";
    t.tiles[255][254] = TerrainTile{3, 4, 0.75};
    t.tilesBackup[1][2] = TerrainTile{5, 6, 0.5};
    t.farPlainTiles[7] = TerrainTile{8, 9, 0.125};
    t.bottomTexA = 2;
    t.bottomTexB = 3;
    t.bottomBlend = 0.375;
    t.numTextures = 6;
    t.displayList = 42;
    t.heightMapFile = "h.bmp";
    t.heightScale = 2.5;
    t.brushRadius = 4;
    t.brushStrength = 5;
    t.heightsModified = true;
    t.texturesModified = true;
    t.objectsModified = true;
    t.lastTexA = 1;
    t.lastTexB = 2;
    t.skyboxName = "dusk";
    t.skyboxColor[2] = 0.5f;
    t.userSetting = 1234;
    t.fogEnabled = true;
    t.fogStart = 10;
    t.fogEnd = 20;
    t.fogDensity = 0.3;
    t.fogColor[1] = 0.25f;
    t.fogHeightDependent = true;
    t.fogReferenceHeight = 99;
    t.farPlainMirrored = true;
    t.textureMode = 1;
    t.wireframe = true;
    t.selGridX = 6;
    t.selGridZ = 7;
    t.objects[9999].modelName = "tower";
    t.objects[9999].pos = SVector3D(1, 2, 3);
    t.objects[9999].bbSamples[999] = TerrainObject::tBBSample{4, 5, 6};
    t.objects[9999].numBBSamples = 1000;
    t.objects[0].matrix[12] = 9.0f;
    t.numObjects = 10000;
    t.usedModels.push_back(reinterpret_cast<Object3DS*>(&t));
    t.frameCounter = 8;
    t.setResPath("/res/");
    giveHeights(t, 8, 256, 9);
    t.unitsPerSample = 32;
    t.heightsFine[63] = 9.5;
    const size_t infoBytes = sizeof(BITMAPINFOHEADER) + 256 * sizeof(RGBQUAD);
    t.heightBitmapInfo = static_cast<BITMAPINFO*>(std::calloc(1, infoBytes));
    t.heightBitmapInfo->bmiHeader.biSize = 40;
    t.heightBitmapInfo->bmiHeader.biWidth = 8;
    t.heightBitmapInfo->bmiHeader.biHeight = 8;
    t.heightBitmapInfo->bmiHeader.biPlanes = 1;
    t.heightBitmapInfo->bmiHeader.biBitCount = 8;
    reinterpret_cast<RGBQUAD*>(t.heightBitmapInfo->bmiColors)[255].rgbRed = 255;
}

void expectFingerprint(const LGLTerrain& t, const LGLTerrain* source)
{
    EXPECT_EQ(t.edgeHeight, 3);
    EXPECT_EQ(t.numTiles, 4);
    EXPECT_EQ(t.worldSize, 256);
    EXPECT_EQ(t.tileSize, 64);
    EXPECT_EQ(t.numSamples, 8);
    EXPECT_EQ(t.unitsPerSample, 32);
    EXPECT_FALSE(t.useTileSort);
    EXPECT_EQ(t.lighting[2], 0.25);
    EXPECT_EQ(t.lightPos[1], 7.5f);
    EXPECT_EQ(t.curRepeatA, 11);
    EXPECT_EQ(t.curRepeatB, 12);
    EXPECT_EQ(t.texRepeat[199], 256);
    EXPECT_EQ(t.texIds[5], 77u);
    EXPECT_EQ(t.texNames[199], "grass.bmp");
    EXPECT_EQ(t.tiles[255][254].texB, 4);
    EXPECT_EQ(t.tiles[255][254].blend, 0.75);
    EXPECT_EQ(t.tilesBackup[1][2].texA, 5);
    EXPECT_EQ(t.farPlainTiles[7].blend, 0.125);
    EXPECT_EQ(t.bottomTexA, 2);
    EXPECT_EQ(t.bottomTexB, 3);
    EXPECT_EQ(t.bottomBlend, 0.375);
    EXPECT_EQ(t.heightMapFile, "h.bmp");
    EXPECT_EQ(t.heightScale, 2.5);
    EXPECT_EQ(t.brushRadius, 4);
    EXPECT_EQ(t.brushStrength, 5);
    EXPECT_TRUE(t.heightsModified);
    EXPECT_TRUE(t.texturesModified);
    EXPECT_TRUE(t.objectsModified);
    EXPECT_EQ(t.lastTexA, 1);
    EXPECT_EQ(t.lastTexB, 2);
    EXPECT_EQ(t.skyboxName, "dusk");
    EXPECT_EQ(t.skyboxColor[2], 0.5f);
    EXPECT_EQ(t.userSetting, 1234);
    EXPECT_TRUE(t.fogEnabled);
    EXPECT_EQ(t.fogStart, 10);
    EXPECT_EQ(t.fogEnd, 20);
    EXPECT_EQ(t.fogDensity, 0.3);
    EXPECT_EQ(t.fogColor[1], 0.25f);
    EXPECT_TRUE(t.fogHeightDependent);
    EXPECT_EQ(t.fogReferenceHeight, 99);
    EXPECT_TRUE(t.farPlainMirrored);
    EXPECT_EQ(t.textureMode, 1);
    EXPECT_TRUE(t.wireframe);
    EXPECT_EQ(t.selGridX, 6);
    EXPECT_EQ(t.selGridZ, 7);
    EXPECT_EQ(t.objects[9999].modelName, "tower");
    EXPECT_EQ(t.objects[9999].pos.z, 3.0f);
    EXPECT_EQ(t.objects[9999].bbSamples[999].y, 5.0f);
    EXPECT_EQ(t.objects[9999].numBBSamples, 1000);
    EXPECT_EQ(t.objects[0].matrix[12], 9.0f);
    EXPECT_EQ(t.numObjects, 10000);
    ASSERT_EQ(t.usedModels.size(), 1u);
    EXPECT_EQ(t.frameCounter, 8);
    EXPECT_EQ(t.resPath, "/res/");
    EXPECT_EQ(t.tileCategoryPath, "/res/images/map_tiles/categories/");
    ASSERT_NE(t.heights, nullptr);
    ASSERT_NE(t.heightsFine, nullptr);
    ASSERT_NE(t.heightBitmapInfo, nullptr);
    EXPECT_EQ(t.heights[17], 9);
    EXPECT_EQ(t.heightsFine[63], 9.5);
    EXPECT_EQ(t.heightBitmapInfo->bmiHeader.biWidth, 8);
    EXPECT_EQ(reinterpret_cast<const RGBQUAD*>(t.heightBitmapInfo->bmiColors)[255].rgbRed, 255);
    if (source != nullptr) {
        // copies own their height blocks
        EXPECT_NE(t.heights, source->heights);
        EXPECT_NE(t.heightsFine, source->heightsFine);
        EXPECT_NE(t.heightBitmapInfo, source->heightBitmapInfo);
        EXPECT_EQ(t.numTextures, 6);
        EXPECT_EQ(t.displayList, 42u);
    }
}

}  // namespace

TEST(LGLTerrainGridTest, CopyConstructionCopiesEveryMemberAndOwnsItsHeights)
{
    auto original = makeTerrain();
    fingerprint(*original);
    auto copy = std::make_unique<LGLTerrain>(*original);
    expectFingerprint(*copy, original.get());
    raw(*copy, 1, 2) = 200;
    EXPECT_EQ(raw(*original, 1, 2), 9);
}

TEST(LGLTerrainGridTest, CopyAssignmentCopiesEveryMemberAndReleasesItsOwnHeights)
{
    auto original = makeTerrain();
    fingerprint(*original);
    auto target = makeTerrain();
    giveHeights(*target, 4, 64, 1);
    *target = *original;
    expectFingerprint(*target, original.get());
    *target = *target;
    expectFingerprint(*target, original.get());
}

TEST(LGLTerrainGridTest, MoveConstructionTakesTheHeightsAndTheGLNames)
{
    auto original = makeTerrain();
    fingerprint(*original);
    const unsigned char* heights = original->heights;
    auto moved = std::make_unique<LGLTerrain>(std::move(*original));
    expectFingerprint(*moved, nullptr);
    EXPECT_EQ(moved->heights, heights);
    EXPECT_EQ(moved->numTextures, 6);
    EXPECT_EQ(moved->displayList, 42u);
    EXPECT_FALSE(original->hasData());
    EXPECT_EQ(original->heightsFine, nullptr);
    EXPECT_EQ(original->numTextures, 0);
    EXPECT_EQ(original->displayList, 0u);
}

TEST(LGLTerrainGridTest, MoveAssignmentTakesTheHeights)
{
    auto original = makeTerrain();
    fingerprint(*original);
    auto target = makeTerrain();
    giveHeights(*target, 4, 64, 1);
    *target = std::move(*original);
    expectFingerprint(*target, nullptr);
    EXPECT_FALSE(original->hasData());
}

TEST(LGLTerrainGridTest, ACopyOfATerrainWithoutHeightsHasNone)
{
    auto original = makeTerrain();
    original->texNames[3] = "rock.bmp";
    LGLTerrain* copy = new LGLTerrain(*original);
    EXPECT_FALSE(copy->hasData());
    EXPECT_EQ(copy->texNames[3], "rock.bmp");
    delete copy;
}
