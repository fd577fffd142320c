// LGLTerrain.h -- the landscape: 8-bit height grid, blended texture tiles, far plains, bottom, fog and
// placed models, with the editing operations of a map editor.
//
// One terrain is one very large object: the 200-entry texture tables, the 256 x 256 tile grid and its
// undo copy and the 10,000 placed-object records are held inline (about 120 MB). The game keeps one,
// on the heap, and never copies it in the frame loop. Heights are kept twice: bytes (heights) for
// drawing and saving, doubles (heightsFine) so that brush strokes of less than one step accumulate.
// A sample is addressed by row = z sample index, column = x sample index; world height = raw *
// heightScale.
//
// Index of sections:
//   [SECTION] grid and height editing
//   [SECTION] tiles and texturing
//   [SECTION] rendering
//   [SECTION] map file, height-map file and backups      (LGLTerrainFiles.cpp)
//   [SECTION] placed objects                             (LGLTerrainObjects.cpp)
//   [SECTION] program-wide tables
//
// Kept on purpose:
//  - setHeight writes the low eight bits of h / heightScale (400 stores 10) and leaves heightsFine
//    alone, so a later brush stroke on that sample starts from the old fine value.
//  - connectEdges and smoothEdges touch neither heightsFine nor the tile coordinates; the caller
//    refreshes them. smoothEdges blends a corner band twice (once as a row, once as a column), and
//    smoothEdges(0) weighs its one ring with 0/0, which writes 0.
//  - updateTileCoordinates visits numTiles * numTiles cells of the 256-wide storage in storage order
//    (z from 0 to 255 before x advances): exact for 256 tiles per side, and on a smaller map it
//    reaches cells beyond the map and leaves most of the map's own tiles as they were.
//  - generateTileSort sorts all 65,536 records of the program-wide table, not only the ones it wrote,
//    so on a map of fewer than 256 tiles per side the first records are mostly unwritten ones.
//  - The far-plain extent is taken from the first terrain that asks for a far-plain rectangle and
//    kept for every terrain of the program.
//  - A "flat" map renders its far plains and bottom and returns at once, before render's closing
//    restore: the far-plain texture stays enabled on the active unit.
//  - Grid-point picking names are i * 1000 + j, ambiguous above 1,000 samples per side.
//
// Choices recorded here:
//  - pglMultiTexCoord2fARB and pglActiveTextureARB are class-wide (one pair of entry points for the
//    process), fetched by every init. init(lookup) fetches them through a caller's lookup instead of
//    the platform's.
//  - Member names the map file gives no name to: lighting[3] (the three lighting factors),
//    lightPos[4], bottomBlend (the bottom's weight), texturesModified and objectsModified (the two
//    flags after heightsModified; the editor sets them, the terrain only clears them in init),
//    skyboxName, skyboxColor[3], userSetting (the integer setting of 50,000 that the terrain never
//    reads), fogEnabled and fogDensity, objects[10000] (the placed-object records).
//  - The constructor gives every number 0 (pointers null) besides the record defaults of TerrainTile
//    and TerrainObject; init then sets the designed defaults, and also: useTileSort true, no bottom
//    (bottomTexA -1), fog disabled with density 1, lighting factors 1, last pair (-10, -10), and
//    every size and counter 0. init releases height blocks an earlier load left behind. The default
//    resource path is defaultResPath.
//  - Editing without heights does nothing at all (connectEdges and smoothEdges do not set the flag
//    then either). A sample index past the grid (a world wider than numSamples * unitsPerSample)
//    is clamped to the last row or column, and unitsPerSample below 1 counts as 1. smoothEdges skips
//    rings that lie outside the grid. A brush of radius 0 gives its centre sample the weight of the
//    centre, sigmoid(1).
//  - Texture indices outside 0..199 (a damaged map file) bind texture name 0 and repeat over 64
//    units. Tile loops never go past the 256 x 256 storage, whatever numTiles says.
//  - The destructor releases the height blocks (not GL names: there may be no context then). Copies
//    get their own copies of the height blocks; both share the GL names of the display list and the
//    textures, so only one of them should dispose. A moved-from terrain keeps no height blocks, no
//    display list and no textures (numTextures 0).
//  - generateTileSort's listing: "<position> (<texA>,<texB>). " for the first written record and for
//    each record whose pair differs from the one before, then a line end; nothing on an empty map.
//  - render draws sorted tiles with the pair and weight stored in their sort records.
//  - renderRectOnTerrain steps max(1, tileSize) units; every corner of the rectangle is a vertex and
//    the strip ends where it began. The far-plain outline runs (left, bottom), (right, bottom),
//    (right, top), (left, top). Here "bottom" is the rectangle's larger z (bottom = top + depth).
//  - renderGridPoints scales y by heightScale inside a push and pop of the current matrix, which
//    restores the matrix exactly.
//  - A texture switch is counted only for a change to two different textures (two-unit binding).
//
// Map file and height-map file, kept on purpose:
//  - The writer renumbers the textures that tiles use and writes only those; "Bottom" and "Farplain"
//    keep their old numbers, so they name other textures after a reload when an unused texture lies
//    below theirs, and a texture only they use is not written.
//  - Object positions are written rounded half away from zero, so they come back as whole units.
//  - Tokens are cut at single blanks: two blanks side by side make an empty token and change the
//    count, and a line of that keyword with another count is ignored. Numbers are read the way atoi
//    and atof read them: text that is no number reads as 0, a number followed by other text as far
//    as the number goes.
//  - The line that saveHeightMap prints, 'Saving height map to "' and the path, has no closing
//    quote. heightsFine is not saved.
//  - A "flat" map loads no heights and keeps whatever heights the terrain held before.
//
// Map file and height-map file, choices recorded here:
//  - Both files are saved all or nothing through LFile::replaceFile: the bytes go to a temporary
//    file "." + name + ".tmp-XXXXXX" in the target's directory, which is renamed over the old file
//    once complete. A failed map save prints
//    "ERROR: LGLTerrain::saveTexTilesAndEnv. Could not write map file "<path>"; the previous file
//    is kept." and a failed height save "Save error!"; either way the old file stays whole, and a
//    failed save leaves the terrain as it was.
//  - Writer: floating values use the "C" locale's decimal point whatever the process locale; a
//    textureMode other than 1 writes "(blending)"; tile texture numbers outside 0..199 name no
//    texture and are written unchanged; rounded positions are written as whole numbers in full,
//    without exponent ("-0" becomes "0", an infinity "inf"). The text ends with the line end of the
//    last tile line.
//  - Reader: a line ends at '\n', and one '\r' before it is dropped, so files with Windows line
//    ends read the same. atof is the "C" locale's, whatever the process locale. Values beyond
//    a float's range become infinities. "Objects" and "Tiles" stand alone on their lines, "Bottom"
//    takes 4 tokens, a "Textures" line with another second token is no header. Inside a run of
//    record lines, a line of another token count is skipped and the run goes on to the first empty
//    line. Record lines that do not fit are ignored: objects past 10,000, tile lines past
//    numTiles * numTiles or with numTiles below 1, a "Farplain" line with an index outside 0..7.
//    Textures past 200 are counted in numTextures but not stored, so that loadTextures ends the
//    process with its message. A "Terrain" line with 0 tiles gives tileSize 0.
//  - readTexTilesAndEnv stops at a "Terrain" line of more than 256 tiles and returns false, having
//    taken its height file and world size but not its tile count; loadTexTilesAndEnv then ends the
//    process with status -1 and no message. It never exits itself.
//  - loadHeightMap releases the heights of an earlier load first. The bitmap must be uncompressed,
//    8 bits per pixel, as high as wide (a top-down file counts; its rows are used as stored, first
//    row z = 0) and of a width divisible by 4 (rows without padding). Any other bitmap prints
//    "ERROR: LGLTerrain::loadHeightMap. Height map "<path>" must be a square 8-bit bitmap
//    without compression and with a width divisible by 4 (it is <w> x <h>, <bits> bits,
//    compression <c>)." and a file that is no bitmap at all "ERROR: LGLTerrain::loadHeightMap.
//    "<path>" is not a readable bitmap."; both then end the process with status -1, as a missing
//    file does. Pixel values are the raw heights; the palette is not looked at.
//  - backupHeightMapFile prints "ERROR: LGLTerrain::backupHeightMapFile. All 999 backup names of
//    "<path>" are in use." before it ends the process. A copy that fails prints
//    "ERROR: LGLTerrain::backupHeightMapFile. Could not copy "<from>" to "<to>"." and removes
//    what it wrote, so the number stays free. Backups always end in ".bmp" and sit beside the height
//    file (a directory in heightMapFile is kept).
#pragma once

#include <ostrum_core/WinTypes.h>
#include <ostrum_core/tRect.h>
#include <ostrum_gl/frame/LGLTextureBlending.h>
#include <ostrum_gl/scenery/TerrainObject.h>
#include <ostrum_gl/scenery/TerrainTile.h>

#include <iosfwd>
#include <map>
#include <string>
#include <vector>

class LGLCamera;
class LGLColMesh;
class LGLFrustum;
class Object3DS;
class SVector3D;

class LGLTerrain {
public:
    static const int MAX_TEXTURES = 200;
    static const int MAX_TILES = 256;
    static const int MAX_OBJECTS = 10000;
    static const int NUM_FAR_PLAINS = 8;
    static const char* const defaultResPath;
    static const char* const tileCategoryDir;

    typedef LGLTextureBlending::tMultiTexCoord2fProc tMultiTexCoord2fProc;
    typedef LGLTextureBlending::tActiveTextureProc tActiveTextureProc;
    typedef void* (*tProcAddressLookup)(const char* name);

    // ============================================================ members, in their designed order

    static tMultiTexCoord2fProc pglMultiTexCoord2fARB;
    static tActiveTextureProc pglActiveTextureARB;

    int edgeHeight = 0;
    int numTiles = 0;
    int worldSize = 0;
    int tileSize = 0;
    int numSamples = 0;
    int unitsPerSample = 0;
    bool useTileSort = false;

    double lighting[3] = {0.0, 0.0, 0.0};
    float lightPos[4] = {0.0f, 0.0f, 0.0f, 0.0f};

    int curRepeatA = 0;
    int curRepeatB = 0;
    int texRepeat[MAX_TEXTURES] = {};
    unsigned int texIds[MAX_TEXTURES] = {};
    std::string texNames[MAX_TEXTURES];
    // First index x, second z.
    TerrainTile tiles[MAX_TILES][MAX_TILES];
    TerrainTile tilesBackup[MAX_TILES][MAX_TILES];

    TerrainTile farPlainTiles[NUM_FAR_PLAINS];
    int bottomTexA = 0;
    int bottomTexB = 0;
    double bottomBlend = 0.0;

    int numTextures = 0;
    unsigned int displayList = 0;

    std::string heightMapFile;
    BITMAPINFO* heightBitmapInfo = nullptr;
    unsigned char* heights = nullptr;
    double* heightsFine = nullptr;
    double heightScale = 0.0;
    int brushRadius = 0;
    int brushStrength = 0;
    bool heightsModified = false;
    bool texturesModified = false;
    bool objectsModified = false;

    int lastTexA = 0;
    int lastTexB = 0;

    std::string skyboxName;
    float skyboxColor[3] = {0.0f, 0.0f, 0.0f};

    int userSetting = 0;

    bool fogEnabled = false;
    int fogStart = 0;
    int fogEnd = 0;
    double fogDensity = 0.0;
    float fogColor[3] = {0.0f, 0.0f, 0.0f};
    bool fogHeightDependent = false;
    int fogReferenceHeight = 0;

    bool farPlainMirrored = false;
    int textureMode = 0;
    bool wireframe = false;

    int selGridX = 0;
    int selGridZ = 0;

    TerrainObject objects[MAX_OBJECTS];
    int numObjects = 0;
    std::vector<Object3DS*> usedModels;
    int frameCounter = 0;

    std::string resPath;
    std::string tileCategoryPath;

    // ============================================================ life cycle

    LGLTerrain();
    ~LGLTerrain();
    LGLTerrain(const LGLTerrain& other);
    LGLTerrain(LGLTerrain&& other) noexcept;
    LGLTerrain& operator=(const LGLTerrain& other);
    LGLTerrain& operator=(LGLTerrain&& other) noexcept;

    // Entry points, defaults, initTiles(0). Missing multitexturing shows "Multitexturing not
    // supported!" (caption "Error") and asks the main loop to end; initialisation goes on.
    void init();
    void init(tProcAddressLookup lookup);
    // resPath := path; tileCategoryPath := path + "images/map_tiles/categories/".
    void setResPath(std::string path);
    bool hasData();
    // Height blocks, display list and textures released; no placed objects.
    void dispose();

    // ============================================================ [SECTION] grid and height editing

    // World height of the sample under (x, z); 0 without heights.
    int getHeight(int x, int z);
    void setHeight(int x, int z, int h);
    // Raises the sample under (x, z) by 2 * amount steps, within 0..255.
    void incHeight(int x, int z, int amount);
    // Round sigmoid brush of brushRadius samples and brushStrength around (x, z).
    void elevateHeight(int x, int z, int amount);
    // Every border sample := edgeHeight.
    void connectEdges();
    // Blends a border band `width` samples wide towards edgeHeight.
    void smoothEdges(int width);

    // ============================================================ [SECTION] tiles and texturing

    // Every tile of the numTiles x numTiles grid := (tex, tex, 0).
    void initTiles(int tex);
    // One level of undo for painting: the used part of tiles to tilesBackup, and back.
    void pushTiles();
    void popTiles();
    // Paints tex over the tiles around (tileX, tileZ), with a soft rim of `soft` tiles.
    void setTerrainTileTextureAt(int tex, int tileX, int tileZ, int radius, double strength, int soft);
    // Rebuilds the program-wide corner table from the heights and repeat lengths.
    void updateTileCoordinates();
    // Unit 0 and unit 1 coordinates of one stored corner, then its vertex.
    void setTerrainTileVertex(int corner, int tileX, int tileZ);
    // Fills and sorts the program-wide sort table by texture pair and weight; prints the groups.
    void generateTileSort();
    // Creates the numTextures tile textures from tileCategoryPath; more than 200 ends the process.
    void loadTextures();
    // Binds the pair (a, b) with weight alpha unless it is already bound; the first two arguments
    // are not used.
    void activate2TextureBlending(int tileX, int tileZ, int texA, int texB, float alpha);
    // Texturing off on unit 1, then on unit 0.
    void disactivate2TextureBlending();

    // ============================================================ [SECTION] rendering

    // Far plains, bottom and tiles; leaves both units off and the colour white.
    void render();
    // render compiled into displayList (new), recompiled (old list deleted first), called.
    void generateDL();
    void updateDL();
    void renderDL();
    // Far plain i (0..7) as (x, z, width, depth) around the map.
    void getFarPlainRect(int i, tRect& r);
    void renderFarPlainRect(tRect r, int level, bool flipS, bool flipT, bool tiled);
    void renderFarPlains();
    void renderBottom();
    void renderTerrainTile(int tileX, int tileZ);
    // Linear fog; with fogHeightDependent the end closes in as fogReferenceHeight rises.
    void setFog();
    // The height samples as points, the brush around the selected one; names for picking.
    void renderGridPoints(bool pick);
    // Outline of a world rectangle following the ground, and of far plain i.
    void renderRectOnTerrain(tRect r);
    void renderRectOnFarPlain(int i);

    // ============================================================ [SECTION] map file, height-map file and backups

    // The first line of every map file.
    static const char* const mapFileHeader;
    // The highest backup number of a height file.
    static constexpr int MAX_BACKUPS = 999;

    // The map text at resPath + name, then the heights, the tile sort, the textures and the corners.
    void load(std::string mapName);
    // Writes the map text to resPath + name; the old file is replaced only by a complete new one.
    void saveTexTilesAndEnv(std::string name);
    // Reads the map text at resPath + name; a missing file or more than 256 tiles per side ends the
    // process.
    void loadTexTilesAndEnv(std::string name);
    // The map text, as saveTexTilesAndEnv writes it.
    void writeTexTilesAndEnv(std::ostream& out);
    // The map text read from a stream, as loadTexTilesAndEnv reads it; false where the file reader
    // ends the process (more than 256 tiles per side), having stopped at that line.
    bool readTexTilesAndEnv(std::istream& in);
    // The 8-bit square height bitmap at resPath + heightMapFile; a missing or unusable file ends the
    // process.
    void loadHeightMap();
    // The heights as a bitmap at resPath + heightMapFile, or at fileName as it is.
    void saveHeightMap();
    void saveHeightMap(std::string fileName);
    // Copies the height file to the next free name <name>_001.bmp .. <name>_999.bmp.
    void backupHeightMapFile();

    // ============================================================ [SECTION] placed objects

    void loadObject3DSModels(std::map<std::string, Object3DS>& models);
    void update3DSObjectLocation(int i);
    void update3DSObjectLocations();
    void updateBBWorldCoordinates(int i);
    bool boundingBoxInFrustum(int i, LGLFrustum& f);
    void updateColMesh(int i);
    bool objectCollidesWith(Object3DS* o, SVector3D& pos, LGLColMesh& mesh);
    void cloneObject(int i);
    void deleteObject(int i);
    void changeObjectModel(int i, std::string name, Object3DS* model);
    void render3DSObjects(bool pick, int selected, LGLFrustum& frustum, LGLCamera& camera);

    // ============================================================ [SECTION] program-wide tables

    // One corner of a tile: world position and the texture coordinates of units 0 and 1.
    struct tTileVertex {
        int x;
        int y;
        int z;
        double s0;
        double t0;
        double s1;
        double t1;
    };
    // Corner order: (x0, z0 + size), (x0 + size, z0 + size), (x0, z0), (x0 + size, z0), one triangle
    // strip. Indexed [tile x][tile z][corner].
    static tTileVertex tileVertices[MAX_TILES][MAX_TILES][4];

    struct tTileSortRecord {
        int x;
        int z;
        int texA;
        int texB;
        double blend;
    };
    static const int TILE_SORT_SIZE = MAX_TILES * MAX_TILES;
    static tTileSortRecord tileSort[TILE_SORT_SIZE];
    // The order of the sort: texA, then texB, then blend, ascending; never 0 (equal records compare
    // as greater).
    static int compareTileSortRecords(const void* first, const void* second);

    // Two-unit texture switches of the current frame (reset by render).
    static int textureSwitches;
    // The alpha set by the last activate2TextureBlending.
    static float lastAlpha;
    // Whether both units are bound for blending.
    static bool blendingActive;
    // The far-plain extent and whether it has been taken yet.
    static int farPlainExtent;
    static bool farPlainExtentSet;

private:
    int sampleIndex(int x, int z) const;
    int usedTiles() const;
    int textureRepeatOf(int tex) const;
    unsigned int textureIdOf(int tex) const;
    void setWrapFor(int tex);
    void renderTile(int tileX, int tileZ, int texA, int texB, double blend);
    void releaseHeights();
    void copyHeightsFrom(const LGLTerrain& other);
};
