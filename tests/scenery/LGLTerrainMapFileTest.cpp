// LGLTerrainMapFileTest.cpp -- the terrain's map text: the exact text the writer produces, the reader's
// keywords, token counts and runs of record lines, damaged and hostile files, the two fatal paths, and
// saves that never lose the previous file.
#include <ostrum_gl/scenery/LGLTerrain.h>

#include "FileFailureSupport.h"
#include "TerrainTestSupport.h"
#include "TestSupport.h"

#include <dirent.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <locale>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

using namespace ostrum_test;
using namespace terrain_test;

namespace {

// The text a terrain built by makeSampleTerrain must be written as, line by line.
const char* const kExpectedMap = R"(=== Harrowfields map file ===

Terrain hills.bmp 96 3 7
Lighting 0.8 1 0.333333
LightPos 500 250.5 -12.25
Skybox clouds 1 0.5 0.125
Fog 600 2500 0.0015 0.7 0.8 0.9

Textures (blending)
rock.bmp 128
snow.bmp 96
mud.bmp 64

Bottom 5 2 0.25

Farplain 0 0 2 0.5
Farplain 1 0 2 0.5
Farplain 2 2 0 0.5
Farplain 3 0 0 1
Farplain 4 2 2 0
Farplain 5 0 2 0.5
Farplain 6 5 5 0.75
Farplain 7 4 4 1

Objects
tower 1.5 10 -3 2 0 90 -45 1
tree 0.333333 0 1 123457 0 0 0 0
rock_big 1.23457e+06 10000000 -7 0 359 -1 7 -2

Tiles
0 0 0
0 1 0.5
1 0 0.25
2 2 0
1 2 0.123457
0 2 1
1 1 0
2 0 0.75
0 0 1e-07
)";

void setObject(TerrainObject& o, const std::string& name, double scale, float x, float y, float z, int rx, int ry,
               int rz, int flag)
{
    o.modelName = name;
    o.scale = scale;
    o.pos.x = x;
    o.pos.y = y;
    o.pos.z = z;
    o.rotX = rx;
    o.rotY = ry;
    o.rotZ = rz;
    o.flag = flag;
}

// A 3 x 3-tile map whose tiles use textures 1, 3 and 4 of six, whose bottom and far plains use
// textures that no tile uses, with three objects at positions that need rounding.
std::unique_ptr<LGLTerrain> makeSampleTerrain()
{
    auto t = makeTerrain();
    t->heightMapFile = "hills.bmp";
    t->worldSize = 96;
    t->numTiles = 3;
    t->tileSize = 32;
    t->edgeHeight = 7;
    t->lighting[0] = 0.8;
    t->lighting[1] = 1.0;
    t->lighting[2] = 1.0 / 3.0;
    t->lightPos[0] = 500.0f;
    t->lightPos[1] = 250.5f;
    t->lightPos[2] = -12.25f;
    t->skyboxName = "clouds";
    t->skyboxColor[0] = 1.0f;
    t->skyboxColor[1] = 0.5f;
    t->skyboxColor[2] = 0.125f;
    t->fogEnabled = true;
    t->fogStart = 600;
    t->fogEnd = 2500;
    t->fogDensity = 0.0015;
    t->fogColor[0] = 0.7f;
    t->fogColor[1] = 0.8f;
    t->fogColor[2] = 0.9f;
    t->textureMode = 0;
    const char* names[6] = {"grass.bmp", "rock.bmp", "sand.bmp", "snow.bmp", "mud.bmp", "water.bmp"};
    const int repeats[6] = {64, 128, 32, 96, 64, 256};
    for (int i = 0; i < 6; ++i) {
        t->texNames[i] = names[i];
        t->texRepeat[i] = repeats[i];
    }
    t->numTextures = 6;
    t->bottomTexA = 5;
    t->bottomTexB = 2;
    t->bottomBlend = 0.25;
    t->farPlainMirrored = false;
    const TerrainTile plains[8] = {{0, 2, 0.5}, {0, 2, 0.5}, {2, 0, 0.5}, {0, 0, 1.0},
                                   {2, 2, 0.0}, {0, 2, 0.5}, {5, 5, 0.75}, {4, 4, 1.0}};
    std::copy(plains, plains + 8, t->farPlainTiles);
    const TerrainTile grid[3][3] = {
        {{1, 1, 0.0}, {1, 3, 0.5}, {3, 1, 0.25}},
        {{4, 4, 0.0}, {3, 4, 0.123456789}, {1, 4, 1.0}},
        {{3, 3, 0.0}, {4, 1, 0.75}, {1, 1, 1e-7}},
    };
    for (int x = 0; x < 3; ++x)
        for (int z = 0; z < 3; ++z)
            t->tiles[x][z] = grid[x][z];
    // Tiles beyond the 3 x 3 map are not part of it: their texture 0 must not be written.
    for (int z = 0; z < 256; ++z)
        t->tiles[3][z] = TerrainTile{0, 0, 0.0};
    setObject(t->objects[0], "tower", 1.5, 10.4f, -2.5f, 1.5f, 0, 90, -45, 1);
    setObject(t->objects[1], "tree", 1.0 / 3.0, -0.4f, 0.5f, 123456.5f, 0, 0, 0, 0);
    setObject(t->objects[2], "rock_big", 1234567.0, 1e7f, -6.5f, 0.0f, 359, -1, 7, -2);
    t->numObjects = 3;
    return t;
}

std::vector<std::string> linesOf(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream in(text);
    std::string line;
    while (std::getline(in, line))
        lines.push_back(line);
    return lines;
}

std::string mapText(LGLTerrain& t)
{
    std::ostringstream out;
    t.writeTexTilesAndEnv(out);
    return out.str();
}

// Reads `text` into `t` through the stream reader.
bool readText(LGLTerrain& t, const std::string& text)
{
    std::istringstream in(text);
    return t.readTexTilesAndEnv(in);
}

std::vector<std::string> entriesOf(const std::string& dir)
{
    std::vector<std::string> names;
    if (DIR* d = ::opendir(dir.c_str())) {
        while (struct dirent* e = ::readdir(d)) {
            const std::string name = e->d_name;
            if (name != "." && name != "..")
                names.push_back(name);
        }
        ::closedir(d);
    }
    std::sort(names.begin(), names.end());
    return names;
}

// A resource directory (ending in a slash) set on the terrain.
std::string giveResDir(LGLTerrain& t)
{
    const std::string dir = makeTempDir() + "/";
    t.setResPath(dir);
    return dir;
}

// A decimal comma, for streams of games that run in such a locale.
struct CommaPunct : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
};

}  // namespace

// ---------------------------------------------------------------- the exact text

TEST(LGLTerrainMapFileTest, WrittenMapMatchesExpectedTextLineByLine)
{
    auto t = makeSampleTerrain();
    const std::string dir = giveResDir(*t);
    t->saveTexTilesAndEnv("hills.map");
    const std::vector<std::string> got = linesOf(readFile(dir + "hills.map"));
    const std::vector<std::string> want = linesOf(kExpectedMap);
    ASSERT_EQ(got.size(), want.size());
    for (size_t i = 0; i < want.size(); ++i)
        EXPECT_EQ(got[i], want[i]) << "line " << i + 1;
    // byte for byte too: single line ends, a line end after the last tile line
    EXPECT_EQ(readFile(dir + "hills.map"), kExpectedMap);
}

TEST(LGLTerrainMapFileTest, FirstLineIsTheHeaderFollowedByAnEmptyLine)
{
    auto t = makeTerrain();
    const std::vector<std::string> lines = linesOf(mapText(*t));
    ASSERT_GE(lines.size(), 2u);
    EXPECT_EQ(lines[0], "=== Harrowfields map file ===");
    EXPECT_EQ(std::string(LGLTerrain::mapFileHeader), "=== Harrowfields map file ===");
    EXPECT_EQ(lines[1], "");
}

TEST(LGLTerrainMapFileTest, FreshTerrainWritesDefaultsFogOffAndEmptyTiles)
{
    auto t = makeTerrain();
    t->heightMapFile = "flat";
    const std::string want = "=== Harrowfields map file ===\n\n"
                             "Terrain flat 0 0 0\n"
                             "Lighting 1 1 1\n"
                             "LightPos 500 500 500\n"
                             "Skybox  1 1 1\n"
                             "Fog off\n"
                             "\n"
                             "Textures (blending)\n"
                             "\n"
                             "Farplain 0 0 0 0\nFarplain 1 0 0 0\nFarplain 2 0 0 0\nFarplain 3 0 0 0\n"
                             "Farplain 4 0 0 0\nFarplain 5 0 0 0\nFarplain 6 0 0 0\nFarplain 7 0 0 0\n"
                             "\n"
                             "Tiles\n";
    EXPECT_EQ(mapText(*t), want);
}

TEST(LGLTerrainMapFileTest, DetailOverlayModeWritesItsTexturesHeader)
{
    auto t = makeSampleTerrain();
    t->textureMode = 1;
    const std::vector<std::string> lines = linesOf(mapText(*t));
    EXPECT_EQ(lines[8], "Textures (detail_overlay)");
    t->textureMode = 7;
    EXPECT_EQ(linesOf(mapText(*t))[8], "Textures (blending)");
}

TEST(LGLTerrainMapFileTest, NoBottomLineWithoutBottomTexture)
{
    auto t = makeSampleTerrain();
    t->bottomTexA = -1;
    const std::string text = mapText(*t);
    EXPECT_EQ(text.find("Bottom"), std::string::npos);
    // the textures' empty line is followed directly by the far plains
    EXPECT_NE(text.find("mud.bmp 64\n\nFarplain 0 0 2 0.5\n"), std::string::npos);
}

TEST(LGLTerrainMapFileTest, MirroredFarPlainsWriteOneLineOfTheFirstRecord)
{
    auto t = makeSampleTerrain();
    t->farPlainMirrored = true;
    t->farPlainTiles[0] = TerrainTile{3, 1, 0.6};
    const std::string text = mapText(*t);
    EXPECT_NE(text.find("\n\nFarplain 3 1 0.6 mirrored\n\nObjects\n"), std::string::npos);
    EXPECT_EQ(text.find("Farplain 1 "), std::string::npos);
}

TEST(LGLTerrainMapFileTest, NoObjectsSectionWithoutObjects)
{
    auto t = makeSampleTerrain();
    t->numObjects = 0;
    const std::string text = mapText(*t);
    EXPECT_EQ(text.find("Objects"), std::string::npos);
    EXPECT_NE(text.find("Farplain 7 4 4 1\n\nTiles\n0 0 0\n"), std::string::npos);
}

TEST(LGLTerrainMapFileTest, ObjectPositionsAreRoundedHalfAwayFromZero)
{
    auto t = makeTerrain();
    const float xs[] = {2.5f, -2.5f, 0.49f, -0.49f, 3.5f, -3.5f, 1e10f};
    const char* want[] = {"3", "-3", "0", "0", "4", "-4", "10000000000"};
    for (int i = 0; i < 7; ++i)
        setObject(t->objects[i], "m", 1.0, xs[i], 0.0f, 0.0f, 0, 0, 0, 0);
    t->numObjects = 7;
    const std::vector<std::string> lines = linesOf(mapText(*t));
    const auto start = std::find(lines.begin(), lines.end(), "Objects");
    ASSERT_NE(start, lines.end());
    for (int i = 0; i < 7; ++i)
        EXPECT_EQ(*(start + 1 + i), std::string("m 1 ") + want[i] + " 0 0 0 0 0 0") << xs[i];
}

TEST(LGLTerrainMapFileTest, FloatingValuesUseSixSignificantDigits)
{
    auto t = makeTerrain();
    t->lighting[0] = 0.123456789;
    t->lighting[1] = 1234567.0;
    t->lighting[2] = 2.5e-7;
    t->lightPos[0] = 0.1f;
    t->lightPos[1] = 100000.0f;
    t->lightPos[2] = 1000000.0f;
    const std::vector<std::string> lines = linesOf(mapText(*t));
    EXPECT_EQ(lines[3], "Lighting 0.123457 1.23457e+06 2.5e-07");
    EXPECT_EQ(lines[4], "LightPos 0.1 100000 1e+06");
}

TEST(LGLTerrainMapFileTest, WriterUsesDecimalPointAndRestoresTheStreamFormat)
{
    auto t = makeSampleTerrain();
    std::ostringstream out;
    const std::locale comma(std::locale::classic(), new CommaPunct);
    out.imbue(comma);
    out.precision(2);
    out.setf(std::ios_base::fixed, std::ios_base::floatfield);
    t->writeTexTilesAndEnv(out);
    EXPECT_EQ(out.str(), kExpectedMap);
    out << 1.5;
    EXPECT_EQ(out.str().substr(out.str().size() - 4), "1,50");
}

TEST(LGLTerrainMapFileTest, TexturesUsedByNoTileAreNotWrittenAndTilesAreRenumbered)
{
    auto t = makeSampleTerrain();
    // only texture 4 on every tile: one texture line, every tile line names texture 0
    for (int x = 0; x < 3; ++x)
        for (int z = 0; z < 3; ++z)
            t->tiles[x][z] = TerrainTile{4, 4, 0.0};
    const std::vector<std::string> lines = linesOf(mapText(*t));
    EXPECT_EQ(lines[8], "Textures (blending)");
    EXPECT_EQ(lines[9], "mud.bmp 64");
    EXPECT_EQ(lines[10], "");
    const auto tiles = std::find(lines.begin(), lines.end(), "Tiles");
    ASSERT_NE(tiles, lines.end());
    ASSERT_EQ(lines.end() - tiles, 10);
    for (auto it = tiles + 1; it != lines.end(); ++it)
        EXPECT_EQ(*it, "0 0 0");
}

TEST(LGLTerrainMapFileTest, BottomAndFarPlainsKeepOldTextureNumbers)
{
    auto t = makeSampleTerrain();
    t->bottomTexA = 3;  // new number 1, written as 3
    t->bottomTexB = 4;
    t->farPlainMirrored = true;
    t->farPlainTiles[0] = TerrainTile{4, 1, 0.5};  // new numbers 2, 0
    const std::string text = mapText(*t);
    EXPECT_NE(text.find("\nBottom 3 4 0.25\n"), std::string::npos);
    EXPECT_NE(text.find("\nFarplain 4 1 0.5 mirrored\n"), std::string::npos);
}

TEST(LGLTerrainMapFileTest, TileTextureNumbersOutsideTheTableAreWrittenUnchanged)
{
    auto t = makeSampleTerrain();
    t->tiles[0][0] = TerrainTile{-3, 250, 0.5};
    const std::vector<std::string> lines = linesOf(mapText(*t));
    const auto tiles = std::find(lines.begin(), lines.end(), "Tiles");
    ASSERT_NE(tiles, lines.end());
    EXPECT_EQ(*(tiles + 1), "-3 250 0.5");
    // texture 1 (first of the rest) is still renumbered 0
    EXPECT_EQ(*(tiles + 2), "0 1 0.5");
}

// ---------------------------------------------------------------- reading back

TEST(LGLTerrainMapFileTest, FileWrittenAndReadBackGivesTheSameMapFieldByField)
{
    auto a = makeSampleTerrain();
    const std::string dir = giveResDir(*a);
    a->saveTexTilesAndEnv("m.map");

    auto b = makeTerrain();
    b->setResPath(dir);
    b->loadTexTilesAndEnv("m.map");

    EXPECT_EQ(b->heightMapFile, "hills.bmp");
    EXPECT_EQ(b->worldSize, 96);
    EXPECT_EQ(b->numTiles, 3);
    EXPECT_EQ(b->tileSize, 32);
    EXPECT_EQ(b->edgeHeight, 7);
    // floating values come back to six significant digits
    EXPECT_DOUBLE_EQ(b->lighting[0], 0.8);
    EXPECT_DOUBLE_EQ(b->lighting[1], 1.0);
    EXPECT_NEAR(b->lighting[2], 1.0 / 3.0, 1e-6);
    EXPECT_FLOAT_EQ(b->lightPos[0], 500.0f);
    EXPECT_FLOAT_EQ(b->lightPos[1], 250.5f);
    EXPECT_FLOAT_EQ(b->lightPos[2], -12.25f);
    EXPECT_EQ(b->skyboxName, "clouds");
    EXPECT_FLOAT_EQ(b->skyboxColor[0], 1.0f);
    EXPECT_FLOAT_EQ(b->skyboxColor[1], 0.5f);
    EXPECT_FLOAT_EQ(b->skyboxColor[2], 0.125f);
    EXPECT_TRUE(b->fogEnabled);
    EXPECT_EQ(b->fogStart, 600);
    EXPECT_EQ(b->fogEnd, 2500);
    EXPECT_DOUBLE_EQ(b->fogDensity, 0.0015);
    EXPECT_FLOAT_EQ(b->fogColor[0], 0.7f);
    EXPECT_FLOAT_EQ(b->fogColor[1], 0.8f);
    EXPECT_FLOAT_EQ(b->fogColor[2], 0.9f);
    EXPECT_EQ(b->textureMode, 0);

    // textures renumbered: old 1, 3, 4 are now 0, 1, 2
    ASSERT_EQ(b->numTextures, 3);
    EXPECT_EQ(b->texNames[0], a->texNames[1]);
    EXPECT_EQ(b->texNames[1], a->texNames[3]);
    EXPECT_EQ(b->texNames[2], a->texNames[4]);
    EXPECT_EQ(b->texRepeat[0], 128);
    EXPECT_EQ(b->texRepeat[1], 96);
    EXPECT_EQ(b->texRepeat[2], 64);
    const int oldToNew[6] = {-1, 0, -1, 1, 2, -1};
    for (int x = 0; x < 3; ++x) {
        for (int z = 0; z < 3; ++z) {
            EXPECT_EQ(b->tiles[x][z].texA, oldToNew[a->tiles[x][z].texA]) << x << "," << z;
            EXPECT_EQ(b->tiles[x][z].texB, oldToNew[a->tiles[x][z].texB]) << x << "," << z;
            // the same texture shows, by name
            EXPECT_EQ(b->texNames[b->tiles[x][z].texA], a->texNames[a->tiles[x][z].texA]);
            EXPECT_EQ(b->texNames[b->tiles[x][z].texB], a->texNames[a->tiles[x][z].texB]);
            EXPECT_NEAR(b->tiles[x][z].blend, a->tiles[x][z].blend, 1e-6 * std::max(1.0, a->tiles[x][z].blend));
        }
    }

    // the bottom and far plains keep the old numbers (so now they name other textures, or none)
    EXPECT_EQ(b->bottomTexA, 5);
    EXPECT_EQ(b->bottomTexB, 2);
    EXPECT_DOUBLE_EQ(b->bottomBlend, 0.25);
    EXPECT_FALSE(b->farPlainMirrored);
    for (int i = 0; i < 8; ++i) {
        EXPECT_EQ(b->farPlainTiles[i].texA, a->farPlainTiles[i].texA);
        EXPECT_EQ(b->farPlainTiles[i].texB, a->farPlainTiles[i].texB);
        EXPECT_DOUBLE_EQ(b->farPlainTiles[i].blend, a->farPlainTiles[i].blend);
    }

    // objects: the same, with positions rounded to whole units
    ASSERT_EQ(b->numObjects, 3);
    for (int i = 0; i < 3; ++i) {
        const TerrainObject& o = b->objects[i];
        const TerrainObject& w = a->objects[i];
        EXPECT_EQ(o.modelName, w.modelName);
        EXPECT_NEAR(o.scale, w.scale, 1e-5 * w.scale);
        EXPECT_EQ(o.pos.x, static_cast<float>(std::round(w.pos.x)));
        EXPECT_EQ(o.pos.y, static_cast<float>(std::round(w.pos.y)));
        EXPECT_EQ(o.pos.z, static_cast<float>(std::round(w.pos.z)));
        EXPECT_EQ(o.rotX, w.rotX);
        EXPECT_EQ(o.rotY, w.rotY);
        EXPECT_EQ(o.rotZ, w.rotZ);
        EXPECT_EQ(o.flag, w.flag);
        EXPECT_EQ(o.lod[0], nullptr);
        EXPECT_EQ(o.lod[1], nullptr);
        EXPECT_EQ(o.lod[2], nullptr);
    }
    EXPECT_EQ(b->objects[0].pos.x, 10.0f);
    EXPECT_EQ(b->objects[0].pos.y, -3.0f);
    EXPECT_EQ(b->objects[1].pos.z, 123457.0f);

    // and written again, the text is the same
    EXPECT_EQ(mapText(*b), kExpectedMap);
}

TEST(LGLTerrainMapFileTest, ReadingStartsWithNoObjectsAndNoBottom)
{
    auto t = makeSampleTerrain();
    ASSERT_TRUE(readText(*t, "Fog off\n"));
    EXPECT_EQ(t->numObjects, 0);
    EXPECT_EQ(t->bottomTexA, -1);
    // what the file does not name stays as it was
    EXPECT_EQ(t->heightMapFile, "hills.bmp");
    EXPECT_EQ(t->numTextures, 6);
}

TEST(LGLTerrainMapFileTest, MapWithoutBottomLineHasNoBottomPlane)
{
    auto t = makeSampleTerrain();
    t->bottomTexA = -1;
    const std::string text = mapText(*t);
    auto r = makeTerrain();
    r->bottomTexA = 4;
    ASSERT_TRUE(readText(*r, text));
    EXPECT_EQ(r->bottomTexA, -1);
}

TEST(LGLTerrainMapFileTest, FogOffAndAnyOtherTwoTokenFogLineDisableFog)
{
    auto t = makeTerrain();
    ASSERT_TRUE(readText(*t, "Fog 100 900 0.5 0.25 0.5 0.75\n"));
    EXPECT_TRUE(t->fogEnabled);
    EXPECT_EQ(t->fogStart, 100);
    EXPECT_EQ(t->fogEnd, 900);
    EXPECT_DOUBLE_EQ(t->fogDensity, 0.5);
    EXPECT_FLOAT_EQ(t->fogColor[0], 0.25f);
    EXPECT_FLOAT_EQ(t->fogColor[1], 0.5f);
    EXPECT_FLOAT_EQ(t->fogColor[2], 0.75f);
    ASSERT_TRUE(readText(*t, "Fog off\n"));
    EXPECT_FALSE(t->fogEnabled);
    ASSERT_TRUE(readText(*t, "Fog 100 900 0.5 0.25 0.5 0.75\n"));
    ASSERT_TRUE(readText(*t, "Fog on\n"));
    EXPECT_FALSE(t->fogEnabled);
    // the settings stay as they were
    EXPECT_EQ(t->fogStart, 100);
    // another count changes nothing
    ASSERT_TRUE(readText(*t, "Fog 1 2 3\n"));
    EXPECT_FALSE(t->fogEnabled);
    EXPECT_EQ(t->fogStart, 100);
}

TEST(LGLTerrainMapFileTest, TerrainLineWithFourOrSixTokensIsIgnored)
{
    auto t = makeTerrain();
    ASSERT_TRUE(readText(*t, "Terrain h.bmp 4096 128 3\n"));
    EXPECT_EQ(t->heightMapFile, "h.bmp");
    EXPECT_EQ(t->worldSize, 4096);
    EXPECT_EQ(t->numTiles, 128);
    EXPECT_EQ(t->edgeHeight, 3);
    EXPECT_EQ(t->tileSize, 32);
    ASSERT_TRUE(readText(*t, "Terrain other.bmp 100 10\nTerrain other.bmp 100 10 1 2\n"));
    EXPECT_EQ(t->heightMapFile, "h.bmp");
    EXPECT_EQ(t->worldSize, 4096);
    EXPECT_EQ(t->numTiles, 128);
    EXPECT_EQ(t->edgeHeight, 3);
    EXPECT_EQ(t->tileSize, 32);
}

TEST(LGLTerrainMapFileTest, TileSizeIsWorldSizeDividedByTilesTruncated)
{
    auto t = makeTerrain();
    ASSERT_TRUE(readText(*t, "Terrain h.bmp 1000 3 0\n"));
    EXPECT_EQ(t->tileSize, 333);
    ASSERT_TRUE(readText(*t, "Terrain h.bmp 1000 0 0\n"));
    EXPECT_EQ(t->numTiles, 0);
    EXPECT_EQ(t->tileSize, 0);
}

TEST(LGLTerrainMapFileTest, LightingLightPosAndSkyboxLines)
{
    auto t = makeTerrain();
    ASSERT_TRUE(readText(*t, "Lighting 0.5 0.25 2\nLightPos 1 -2 3.5\nSkybox dusk 0.1 0.2 0.3\n"));
    EXPECT_DOUBLE_EQ(t->lighting[0], 0.5);
    EXPECT_DOUBLE_EQ(t->lighting[1], 0.25);
    EXPECT_DOUBLE_EQ(t->lighting[2], 2.0);
    EXPECT_FLOAT_EQ(t->lightPos[0], 1.0f);
    EXPECT_FLOAT_EQ(t->lightPos[1], -2.0f);
    EXPECT_FLOAT_EQ(t->lightPos[2], 3.5f);
    EXPECT_FLOAT_EQ(t->lightPos[3], 1.0f);
    EXPECT_EQ(t->skyboxName, "dusk");
    EXPECT_FLOAT_EQ(t->skyboxColor[0], 0.1f);
    EXPECT_FLOAT_EQ(t->skyboxColor[1], 0.2f);
    EXPECT_FLOAT_EQ(t->skyboxColor[2], 0.3f);
    // other counts are ignored
    ASSERT_TRUE(readText(*t, "Lighting 9 9\nLightPos 9 9 9 9\nSkybox x 9 9\n"));
    EXPECT_DOUBLE_EQ(t->lighting[0], 0.5);
    EXPECT_FLOAT_EQ(t->lightPos[0], 1.0f);
    EXPECT_EQ(t->skyboxName, "dusk");
}

TEST(LGLTerrainMapFileTest, TexturesHeaderSetsModeAndReadsTextureLines)
{
    auto t = makeTerrain();
    ASSERT_TRUE(readText(*t, "Textures (detail_overlay)\na.bmp 64\nb.bmp 32\n"));
    EXPECT_EQ(t->textureMode, 1);
    EXPECT_EQ(t->numTextures, 2);
    EXPECT_EQ(t->texNames[0], "a.bmp");
    EXPECT_EQ(t->texNames[1], "b.bmp");
    EXPECT_EQ(t->texRepeat[1], 32);
    ASSERT_TRUE(readText(*t, "Textures (blending)\nc.bmp 16\n"));
    EXPECT_EQ(t->textureMode, 0);
    EXPECT_EQ(t->numTextures, 1);
    EXPECT_EQ(t->texNames[0], "c.bmp");
    // a header with another second token is no header: its lines are no texture lines
    ASSERT_TRUE(readText(*t, "Textures (other)\nd.bmp 8\n"));
    EXPECT_EQ(t->textureMode, 0);
    EXPECT_EQ(t->numTextures, 1);
    EXPECT_EQ(t->texNames[0], "c.bmp");
}

TEST(LGLTerrainMapFileTest, RecordLinesAreReadOnlyUpToTheFirstEmptyLine)
{
    auto t = makeTerrain();
    ASSERT_TRUE(readText(*t, "Textures (blending)\na.bmp 64\n\nb.bmp 32\nTiles\n0 0 0.5\n\n1 1 1\n"));
    EXPECT_EQ(t->numTextures, 1);
    EXPECT_EQ(t->texNames[1], "");
}

TEST(LGLTerrainMapFileTest, LinesOfOtherCountsInsideARunAreSkipped)
{
    auto t = makeTerrain();
    ASSERT_TRUE(readText(*t, "Terrain h.bmp 64 2 0\n"
                             "Textures (blending)\na.bmp 64\nnot a texture\nFog off\nb.bmp 8\n\n"
                             "Tiles\n1 1 0.5\n7\n2 2 0.25\n3 3 0 9\n4 4 1\n"));
    // "Fog off" has two tokens: inside the run it is a texture line
    EXPECT_EQ(t->numTextures, 3);
    EXPECT_EQ(t->texNames[1], "Fog");
    EXPECT_EQ(t->texRepeat[1], 0);
    EXPECT_EQ(t->texNames[2], "b.bmp");
    EXPECT_FALSE(t->fogEnabled);
    EXPECT_EQ(t->tiles[0][0].texA, 1);
    EXPECT_EQ(t->tiles[0][1].texA, 2);
    EXPECT_EQ(t->tiles[1][0].texA, 4);
}

TEST(LGLTerrainMapFileTest, TilesFillXOuterAndZInner)
{
    auto t = makeTerrain();
    std::string text = "Terrain h.bmp 300 3 0\nTiles\n";
    for (int k = 0; k < 9; ++k)
        text += std::to_string(k) + " " + std::to_string(k + 10) + " 0." + std::to_string(k) + "\n";
    ASSERT_TRUE(readText(*t, text));
    for (int k = 0; k < 9; ++k) {
        const TerrainTile& tile = t->tiles[k / 3][k % 3];
        EXPECT_EQ(tile.texA, k);
        EXPECT_EQ(tile.texB, k + 10);
        EXPECT_DOUBLE_EQ(tile.blend, k / 10.0);
    }
}

TEST(LGLTerrainMapFileTest, TileLinesBeyondTheGridAreIgnored)
{
    auto t = makeTerrain();
    t->tiles[2][0] = TerrainTile{77, 77, 0.0};
    t->tiles[0][2] = TerrainTile{77, 77, 0.0};
    std::string text = "Terrain h.bmp 200 2 0\nTiles\n";
    for (int k = 0; k < 10; ++k)
        text += "5 5 1\n";
    ASSERT_TRUE(readText(*t, text));
    EXPECT_EQ(t->tiles[1][1].texA, 5);
    EXPECT_EQ(t->tiles[2][0].texA, 77);
    EXPECT_EQ(t->tiles[0][2].texA, 77);
}

TEST(LGLTerrainMapFileTest, TileLinesWithoutTilesPerSideAreIgnored)
{
    auto t = makeTerrain();
    ASSERT_TRUE(readText(*t, "Tiles\n5 5 1\n"));
    EXPECT_EQ(t->tiles[0][0].texA, 0);
    ASSERT_TRUE(readText(*t, "Terrain h.bmp 200 -4 0\nTiles\n5 5 1\n"));
    EXPECT_EQ(t->numTiles, -4);
    EXPECT_EQ(t->tileSize, -50);
    EXPECT_EQ(t->tiles[0][0].texA, 0);
}

TEST(LGLTerrainMapFileTest, MoreThan200TexturesAreCountedButNotStored)
{
    auto t = makeTerrain();
    std::string text = "Textures (blending)\n";
    for (int i = 0; i < 205; ++i)
        text += "t" + std::to_string(i) + ".bmp " + std::to_string(i + 1) + "\n";
    ASSERT_TRUE(readText(*t, text));
    EXPECT_EQ(t->numTextures, 205);
    EXPECT_EQ(t->texNames[199], "t199.bmp");
    EXPECT_EQ(t->texRepeat[199], 200);
    // the loader of the tile textures ends the process with its own message
    OSTRUM_EXPECT_EXIT_WITH_LINE(t->loadTextures(), 255, "ERROR: numTex>maxNumTextures  205 > 200");
}

TEST(LGLTerrainMapFileTest, ObjectsPast10000AreIgnored)
{
    auto t = makeTerrain();
    std::string text = "Objects\n";
    for (int i = 0; i < LGLTerrain::MAX_OBJECTS + 5; ++i)
        text += "m" + std::to_string(i) + " 1 " + std::to_string(i) + " 0 0 0 0 0 0\n";
    ASSERT_TRUE(readText(*t, text));
    EXPECT_EQ(t->numObjects, +LGLTerrain::MAX_OBJECTS);
    EXPECT_EQ(t->objects[9999].modelName, "m9999");
    EXPECT_EQ(t->objects[9999].pos.x, 9999.0f);
}

TEST(LGLTerrainMapFileTest, ObjectLinesFillRecordsAndClearLevelModels)
{
    auto t = makeTerrain();
    Object3DS* fake = reinterpret_cast<Object3DS*>(&t);  // only compared, never used
    t->objects[0].lod[0] = fake;
    t->objects[0].lod[2] = fake;
    ASSERT_TRUE(readText(*t, "Objects\nhut 0.5 1.5 -2 300 10 20 30 4\nbad line\nmill 2 0 0 0 0 0 0 0\n"));
    ASSERT_EQ(t->numObjects, 2);
    const TerrainObject& o = t->objects[0];
    EXPECT_EQ(o.modelName, "hut");
    EXPECT_DOUBLE_EQ(o.scale, 0.5);
    EXPECT_FLOAT_EQ(o.pos.x, 1.5f);
    EXPECT_FLOAT_EQ(o.pos.y, -2.0f);
    EXPECT_FLOAT_EQ(o.pos.z, 300.0f);
    EXPECT_EQ(o.rotX, 10);
    EXPECT_EQ(o.rotY, 20);
    EXPECT_EQ(o.rotZ, 30);
    EXPECT_EQ(o.flag, 4);
    EXPECT_EQ(o.lod[0], nullptr);
    EXPECT_EQ(o.lod[2], nullptr);
    EXPECT_EQ(t->objects[1].modelName, "mill");
}

TEST(LGLTerrainMapFileTest, FarplainLinesFillRecordsAndMirroring)
{
    auto t = makeTerrain();
    ASSERT_TRUE(readText(*t, "Farplain 3 1 2 0.5\n"));
    EXPECT_FALSE(t->farPlainMirrored);
    EXPECT_EQ(t->farPlainTiles[3].texA, 1);
    EXPECT_EQ(t->farPlainTiles[3].texB, 2);
    EXPECT_DOUBLE_EQ(t->farPlainTiles[3].blend, 0.5);
    ASSERT_TRUE(readText(*t, "Farplain 4 5 0.75 mirrored\n"));
    EXPECT_TRUE(t->farPlainMirrored);
    EXPECT_EQ(t->farPlainTiles[0].texA, 4);
    EXPECT_EQ(t->farPlainTiles[0].texB, 5);
    EXPECT_DOUBLE_EQ(t->farPlainTiles[0].blend, 0.75);
    // an index outside 0..7 is ignored, record and mirroring alike
    ASSERT_TRUE(readText(*t, "Farplain 8 9 9 1\nFarplain -1 9 9 1\nFarplain 1 2 3\n"));
    EXPECT_TRUE(t->farPlainMirrored);
    for (const TerrainTile& p : t->farPlainTiles)
        EXPECT_NE(p.texA, 9);
}

TEST(LGLTerrainMapFileTest, BottomLineSetsBothTexturesAndWeight)
{
    auto t = makeTerrain();
    ASSERT_TRUE(readText(*t, "Bottom 3 4 0.125\n"));
    EXPECT_EQ(t->bottomTexA, 3);
    EXPECT_EQ(t->bottomTexB, 4);
    EXPECT_DOUBLE_EQ(t->bottomBlend, 0.125);
    ASSERT_TRUE(readText(*t, "Bottom 3 4\n"));
    EXPECT_EQ(t->bottomTexA, -1);
}

TEST(LGLTerrainMapFileTest, WindowsLineEndsReadLikePlainOnes)
{
    std::string text = kExpectedMap;
    std::string crlf;
    for (char c : text) {
        if (c == '\n')
            crlf += '\r';
        crlf += c;
    }
    auto a = makeTerrain();
    auto b = makeTerrain();
    ASSERT_TRUE(readText(*a, text));
    ASSERT_TRUE(readText(*b, crlf));
    EXPECT_EQ(mapText(*b), mapText(*a));
    EXPECT_EQ(b->numTextures, 3);
    EXPECT_EQ(b->numObjects, 3);
}

TEST(LGLTerrainMapFileTest, MalformedNumbersReadAsFarAsTheyGo)
{
    auto t = makeTerrain();
    ASSERT_TRUE(readText(*t, "Terrain h.bmp abc 4x 7.9\nLighting x 2.5y .5\n"));
    EXPECT_EQ(t->worldSize, 0);
    EXPECT_EQ(t->numTiles, 4);
    EXPECT_EQ(t->edgeHeight, 7);
    EXPECT_EQ(t->tileSize, 0);
    EXPECT_DOUBLE_EQ(t->lighting[0], 0.0);
    EXPECT_DOUBLE_EQ(t->lighting[1], 2.5);
    EXPECT_DOUBLE_EQ(t->lighting[2], 0.5);
}

TEST(LGLTerrainMapFileTest, DoubleBlanksChangeTheTokenCount)
{
    auto t = makeTerrain();
    ASSERT_TRUE(readText(*t, "Lighting 0.5  0.5 0.5\nFog  off\n"));
    EXPECT_DOUBLE_EQ(t->lighting[0], 1.0);
    // "Fog", "", "off": three tokens, ignored
    ASSERT_TRUE(readText(*t, "Fog 1 2 0.5 1 1 1\nFog  off\n"));
    EXPECT_TRUE(t->fogEnabled);
}

TEST(LGLTerrainMapFileTest, HugeNumbersStayInsideTheTables)
{
    auto t = makeTerrain();
    ASSERT_TRUE(readText(*t, "LightPos 1e999 -1e999 1e300\n"
                             "Terrain h.bmp 99999999999999 2 -99999999999\n"
                             "Farplain 99999999999 1 1 1\n"
                             "Bottom 99999999999 -99999999999 1e400\n"
                             "Objects\nm 1e400 1e300 -1e300 nan 99999999999 0 0 0\n\n"
                             "Tiles\n99999999999 -99999999999 1e999\n"));
    EXPECT_EQ(t->lightPos[0], std::numeric_limits<float>::infinity());
    EXPECT_EQ(t->lightPos[1], -std::numeric_limits<float>::infinity());
    EXPECT_EQ(t->lightPos[2], std::numeric_limits<float>::infinity());
    EXPECT_EQ(t->numTiles, 2);
    ASSERT_EQ(t->numObjects, 1);
    EXPECT_EQ(t->objects[0].pos.x, std::numeric_limits<float>::infinity());
    EXPECT_EQ(t->objects[0].pos.y, -std::numeric_limits<float>::infinity());
    EXPECT_TRUE(std::isnan(t->objects[0].pos.z));
    EXPECT_TRUE(std::isinf(t->bottomBlend));
    EXPECT_TRUE(std::isinf(t->tiles[0][0].blend));
    // and such a map can be written again
    const std::string text = mapText(*t);
    EXPECT_NE(text.find("\nm inf inf -inf nan "), std::string::npos) << text;
}

TEST(LGLTerrainMapFileTest, WorldTooWideForIntCornersKeepsCornersAtTheIntLimits)
{
    auto t = makeTerrain();
    ASSERT_TRUE(readText(*t, "Terrain h.bmp 2147483647 2 0\n\nTiles\n0 0 0\n0 0 0\n0 0 0\n0 0 0\n"));
    ASSERT_EQ(t->tileSize, 1073741823);
    giveHeights(*t, 4, t->worldSize, 9);
    t->updateTileCoordinates();
    // kept on purpose: a 2-tile map visits the first four cells of row 0, so tile (0, 3) is the widest
    EXPECT_EQ(LGLTerrain::tileVertices[0][1][2].z, 1073741823);
    EXPECT_EQ(LGLTerrain::tileVertices[0][1][1].x, 1073741823);
    EXPECT_EQ(LGLTerrain::tileVertices[0][1][0].z, 2147483646);
    EXPECT_EQ(LGLTerrain::tileVertices[0][3][2].z, INT_MAX);
    EXPECT_EQ(LGLTerrain::tileVertices[0][0][2].x, 0);
}

TEST(LGLTerrainMapFileTest, VeryLongLinesAreSkipped)
{
    auto t = makeTerrain();
    std::string text = "Fog 1 2 0.5 1 1 1\n" + std::string(1 << 20, 'x') + "\n" + std::string(1 << 20, ' ') + "\nFog off\n";
    ASSERT_TRUE(readText(*t, text));
    EXPECT_FALSE(t->fogEnabled);
}

TEST(LGLTerrainMapFileTest, StreamReaderStopsAtMoreThan256Tiles)
{
    auto t = makeTerrain();
    t->numTiles = 16;
    EXPECT_FALSE(readText(*t, "Terrain big.bmp 9000 257 5\nFog 1 2 0.5 1 1 1\n"));
    EXPECT_EQ(t->heightMapFile, "big.bmp");
    EXPECT_EQ(t->worldSize, 9000);
    EXPECT_EQ(t->numTiles, 16);
    EXPECT_EQ(t->edgeHeight, 0);
    EXPECT_FALSE(t->fogEnabled);
    EXPECT_TRUE(readText(*t, "Terrain big.bmp 8192 256 5\n"));
    EXPECT_EQ(t->numTiles, 256);
    EXPECT_EQ(t->tileSize, 32);
}

TEST(LGLTerrainMapFileTest, MoreThan256TilesEndsTheProcessWithoutAMessage)
{
    auto t = makeTerrain();
    const std::string dir = giveResDir(*t);
    writeFile(dir + "big.map", "=== Harrowfields map file ===\n\nTerrain big.bmp 9000 257 5\n");
    OSTRUM_EXPECT_EXIT_WITH_LINE(
        {
            std::printf("before loading\n");
            t->loadTexTilesAndEnv("big.map");
            std::printf("still running\n");
        },
        255, "before loading");
}

TEST(LGLTerrainMapFileTest, MissingMapFileEndsTheProcessWithItsMessage)
{
    auto t = makeTerrain();
    t->setResPath("/nonexistent-ostrum-maps/");
    OSTRUM_EXPECT_EXIT_WITH_LINE(t->loadTexTilesAndEnv("nothing.map"), 255,
                                 "Map file \"/nonexistent-ostrum-maps/nothing.map\" does not exist!");
}

TEST(LGLTerrainMapFileTest, MapFileNameIsFoundWithoutRegardToCase)
{
    auto a = makeSampleTerrain();
    const std::string dir = giveResDir(*a);
    a->saveTexTilesAndEnv("hills.map");
    auto b = makeTerrain();
    b->setResPath(dir);
    b->loadTexTilesAndEnv("HILLS.MAP");
    EXPECT_EQ(b->numObjects, 3);
    EXPECT_EQ(b->heightMapFile, "hills.bmp");
}

// ---------------------------------------------------------------- saving never loses the old file

TEST(LGLTerrainMapFileTest, SaveReplacesTheOldFileAndLeavesNothingElse)
{
    auto t = makeSampleTerrain();
    const std::string dir = giveResDir(*t);
    writeFile(dir + "m.map", std::string(100000, 'o'));
    StdoutCapture out;
    t->saveTexTilesAndEnv("m.map");
    EXPECT_EQ(out.take(), "");
    EXPECT_EQ(readFile(dir + "m.map"), kExpectedMap);
    EXPECT_EQ(entriesOf(dir), std::vector<std::string>{"m.map"});
}

TEST(LGLTerrainMapFileTest, SaveOnAFullDiskKeepsTheOldFileAndSaysSo)
{
    auto t = makeSampleTerrain();
    const std::string dir = giveResDir(*t);
    const std::string old = "=== Harrowfields map file ===\n\nTerrain old.bmp 10 1 0\n";
    writeFile(dir + "m.map", old);
    // the new text is longer than any file may grow
    std::string output;
    {
        StdoutCapture out;
        FileSizeLimit limit(200);
        ASSERT_TRUE(limit.active());
        t->saveTexTilesAndEnv("m.map");
        output = out.take();
    }
    EXPECT_EQ(output, "ERROR: LGLTerrain::saveTexTilesAndEnv. Could not write map file \"" + dir +
                          "m.map\"; the previous file is kept.\n");
    EXPECT_EQ(readFile(dir + "m.map"), old);
    EXPECT_EQ(entriesOf(dir), std::vector<std::string>{"m.map"});
}

TEST(LGLTerrainMapFileTest, SaveInAReadOnlyDirectoryKeepsTheOldFileAndSaysSo)
{
    auto t = makeSampleTerrain();
    const std::string dir = giveResDir(*t);
    writeFile(dir + "m.map", "old map");
    ASSERT_TRUE(makeDirectoryReadOnly(dir));
    // The death-test child runs this test afresh (its own directory): it checks the file itself.
    EXPECT_EXIT(
        {
            routeStdoutToStderr();
            if (!dropRootPrivileges())
                std::exit(3);
            t->saveTexTilesAndEnv("m.map");
            const bool whole = readFile(dir + "m.map") == "old map" && entriesOf(dir) == std::vector<std::string>{"m.map"};
            std::exit(whole ? 0 : 4);
        },
        ::testing::ExitedWithCode(0),
        ::testing::ContainsRegex("ERROR: LGLTerrain::saveTexTilesAndEnv\\. Could not write map file "
                                 "\"/[^\"]*/m\\.map\"; the previous file is kept\\."));
    ASSERT_TRUE(makeDirectoryWritable(dir));
}

TEST(LGLTerrainMapFileTest, SaveIntoAMissingDirectoryPrintsAnErrorLine)
{
    auto t = makeSampleTerrain();
    const std::string dir = giveResDir(*t);
    StdoutCapture out;
    t->saveTexTilesAndEnv("no/such/dir/m.map");
    EXPECT_EQ(out.take(), "ERROR: LGLTerrain::saveTexTilesAndEnv. Could not write map file \"" + dir +
                              "no/such/dir/m.map\"; the previous file is kept.\n");
    EXPECT_TRUE(entriesOf(dir).empty());
}

TEST(LGLTerrainMapFileTest, FullSizeMapWrittenAndReadBackKeepsEveryTile)
{
    auto a = makeTerrain();
    a->heightMapFile = "big.bmp";
    a->worldSize = 8192;
    a->numTiles = 256;
    a->tileSize = 32;
    for (int i = 0; i < 10; ++i) {
        a->texNames[i] = "t" + std::to_string(i) + ".bmp";
        a->texRepeat[i] = 32 * (i + 1);
    }
    a->numTextures = 10;
    for (int x = 0; x < 256; ++x)
        for (int z = 0; z < 256; ++z)
            a->tiles[x][z] = TerrainTile{(x + z) % 10, (x * z) % 10, ((x + 3 * z) % 9) / 8.0};
    const std::string text = mapText(*a);
    auto b = makeTerrain();
    ASSERT_TRUE(readText(*b, text));
    ASSERT_EQ(b->numTextures, 10);
    for (int x = 0; x < 256; ++x) {
        for (int z = 0; z < 256; ++z) {
            ASSERT_EQ(b->tiles[x][z].texA, a->tiles[x][z].texA) << x << "," << z;
            ASSERT_EQ(b->tiles[x][z].texB, a->tiles[x][z].texB) << x << "," << z;
            ASSERT_NEAR(b->tiles[x][z].blend, a->tiles[x][z].blend, 1e-6) << x << "," << z;
        }
    }
}
