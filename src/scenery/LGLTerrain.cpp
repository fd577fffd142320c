// LGLTerrain.cpp -- the terrain's life cycle, height grid and editing, tiles and texture painting,
// and rendering of tiles, far plains, bottom, fog and editor aids.
#include <ostrum_gl/scenery/LGLTerrain.h>

#include <ostrum_core/LGeom.h>
#include <ostrum_core/LImage.h>
#include <ostrum_gl/frame/LGL.h>
#include <ostrum_gl/frame/LGLTextureBlending.h>
#include <ostrum_gl/platform/LGLPlatform.h>

#include <GL/gl.h>
#include <GL/glext.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <type_traits>
#include <utility>

// Index of sections:
//   [SECTION] program-wide values
//   [SECTION] life cycle
//   [SECTION] grid and height editing
//   [SECTION] tiles and texturing
//   [SECTION] rendering

// ============================================================ [SECTION] program-wide values

const char* const LGLTerrain::defaultResPath = "/usr/share/ostrum_gl/data/";
const char* const LGLTerrain::tileCategoryDir = "images/map_tiles/categories/";

LGLTerrain::tMultiTexCoord2fProc LGLTerrain::pglMultiTexCoord2fARB = nullptr;
LGLTerrain::tActiveTextureProc LGLTerrain::pglActiveTextureARB = nullptr;

LGLTerrain::tTileVertex LGLTerrain::tileVertices[LGLTerrain::MAX_TILES][LGLTerrain::MAX_TILES][4];
LGLTerrain::tTileSortRecord LGLTerrain::tileSort[LGLTerrain::TILE_SORT_SIZE];
int LGLTerrain::textureSwitches = 0;
float LGLTerrain::lastAlpha = -10.0f;
bool LGLTerrain::blendingActive = false;
int LGLTerrain::farPlainExtent = 0;
bool LGLTerrain::farPlainExtentSet = false;

namespace {

// The value trunc(v) for every v an int holds; anything else (a NaN, or beyond the int range)
// becomes INT_MIN, as the processor's own conversion gives, whose low byte is 0.
int truncToInt(double v)
{
    if (!(v > static_cast<double>(INT_MIN) - 1.0 && v < static_cast<double>(INT_MAX) + 1.0))
        return INT_MIN;
    return static_cast<int>(v);
}

int saturatedInt(long long v)
{
    return static_cast<int>(std::clamp<long long>(v, INT_MIN, INT_MAX));
}

unsigned char lowByte(int v)
{
    return static_cast<unsigned char>(static_cast<unsigned int>(v) & 0xFFu);
}

double clampSample(double v)
{
    if (v < 0.0)
        return 0.0;
    if (v > 255.0)
        return 255.0;
    return v;
}

// Bytes of the colour table that follow the 40-byte header of a bitmap info block.
size_t bitmapInfoBytes(const BITMAPINFO* info)
{
    int colours = LImage::DIBColorCount(info->bmiHeader);
    if (colours < 0)
        colours = 0;
    return sizeof(BITMAPINFOHEADER) + static_cast<size_t>(colours) * sizeof(RGBQUAD);
}

// (flipS, flipT) of each far plain when the far-plain texture is mirrored.
const bool farPlainFlips[LGLTerrain::NUM_FAR_PLAINS][2] = {
    {true, true}, {false, true}, {true, true}, {true, false},
    {true, false}, {true, true}, {false, true}, {true, true},
};

// Every member but the three height blocks, copied (Source = const LGLTerrain) or moved.
template <typename Source>
void transferMembers(LGLTerrain& to, Source& from)
{
    constexpr bool moving = !std::is_const<Source>::value;
    auto pass = [](auto& value) -> decltype(auto) {
        if constexpr (moving)
            return std::move(value);
        else
            return static_cast<const std::remove_reference_t<decltype(value)>&>(value);
    };

    to.edgeHeight = from.edgeHeight;
    to.numTiles = from.numTiles;
    to.worldSize = from.worldSize;
    to.tileSize = from.tileSize;
    to.numSamples = from.numSamples;
    to.unitsPerSample = from.unitsPerSample;
    to.useTileSort = from.useTileSort;
    std::copy(std::begin(from.lighting), std::end(from.lighting), to.lighting);
    std::copy(std::begin(from.lightPos), std::end(from.lightPos), to.lightPos);
    to.curRepeatA = from.curRepeatA;
    to.curRepeatB = from.curRepeatB;
    std::copy(std::begin(from.texRepeat), std::end(from.texRepeat), to.texRepeat);
    std::copy(std::begin(from.texIds), std::end(from.texIds), to.texIds);
    for (int i = 0; i < LGLTerrain::MAX_TEXTURES; ++i)
        to.texNames[i] = pass(from.texNames[i]);
    std::memcpy(to.tiles, from.tiles, sizeof to.tiles);
    std::memcpy(to.tilesBackup, from.tilesBackup, sizeof to.tilesBackup);
    std::copy(std::begin(from.farPlainTiles), std::end(from.farPlainTiles), to.farPlainTiles);
    to.bottomTexA = from.bottomTexA;
    to.bottomTexB = from.bottomTexB;
    to.bottomBlend = from.bottomBlend;
    to.numTextures = from.numTextures;
    to.displayList = from.displayList;
    to.heightMapFile = pass(from.heightMapFile);
    to.heightScale = from.heightScale;
    to.brushRadius = from.brushRadius;
    to.brushStrength = from.brushStrength;
    to.heightsModified = from.heightsModified;
    to.texturesModified = from.texturesModified;
    to.objectsModified = from.objectsModified;
    to.lastTexA = from.lastTexA;
    to.lastTexB = from.lastTexB;
    to.skyboxName = pass(from.skyboxName);
    std::copy(std::begin(from.skyboxColor), std::end(from.skyboxColor), to.skyboxColor);
    to.userSetting = from.userSetting;
    to.fogEnabled = from.fogEnabled;
    to.fogStart = from.fogStart;
    to.fogEnd = from.fogEnd;
    to.fogDensity = from.fogDensity;
    std::copy(std::begin(from.fogColor), std::end(from.fogColor), to.fogColor);
    to.fogHeightDependent = from.fogHeightDependent;
    to.fogReferenceHeight = from.fogReferenceHeight;
    to.farPlainMirrored = from.farPlainMirrored;
    to.textureMode = from.textureMode;
    to.wireframe = from.wireframe;
    to.selGridX = from.selGridX;
    to.selGridZ = from.selGridZ;
    for (int i = 0; i < LGLTerrain::MAX_OBJECTS; ++i)
        to.objects[i] = pass(from.objects[i]);
    to.numObjects = from.numObjects;
    to.usedModels = pass(from.usedModels);
    to.frameCounter = from.frameCounter;
    to.resPath = pass(from.resPath);
    to.tileCategoryPath = pass(from.tileCategoryPath);
}

}  // namespace

// ============================================================ [SECTION] life cycle

LGLTerrain::LGLTerrain() = default;

LGLTerrain::~LGLTerrain()
{
    releaseHeights();
}

LGLTerrain::LGLTerrain(const LGLTerrain& other)
{
    transferMembers(*this, other);
    copyHeightsFrom(other);
}

LGLTerrain::LGLTerrain(LGLTerrain&& other) noexcept
{
    *this = std::move(other);
}

LGLTerrain& LGLTerrain::operator=(const LGLTerrain& other)
{
    if (this != &other) {
        releaseHeights();
        transferMembers(*this, other);
        copyHeightsFrom(other);
    }
    return *this;
}

LGLTerrain& LGLTerrain::operator=(LGLTerrain&& other) noexcept
{
    if (this != &other) {
        releaseHeights();
        transferMembers(*this, other);
        heightBitmapInfo = other.heightBitmapInfo;
        heights = other.heights;
        heightsFine = other.heightsFine;
        other.heightBitmapInfo = nullptr;
        other.heights = nullptr;
        other.heightsFine = nullptr;
        other.displayList = 0;
        other.numTextures = 0;
    }
    return *this;
}

void LGLTerrain::releaseHeights()
{
    std::free(heightBitmapInfo);
    std::free(heights);
    std::free(heightsFine);
    heightBitmapInfo = nullptr;
    heights = nullptr;
    heightsFine = nullptr;
}

void LGLTerrain::copyHeightsFrom(const LGLTerrain& other)
{
    heightBitmapInfo = nullptr;
    heights = nullptr;
    heightsFine = nullptr;
    if (other.heightBitmapInfo != nullptr) {
        const size_t bytes = bitmapInfoBytes(other.heightBitmapInfo);
        heightBitmapInfo = static_cast<BITMAPINFO*>(std::malloc(bytes));
        if (heightBitmapInfo != nullptr)
            std::memcpy(heightBitmapInfo, other.heightBitmapInfo, bytes);
    }
    if (other.heights == nullptr)
        return;
    // The grid is numSamples x numSamples; a block read with its header may be longer (row padding),
    // and a save of the copy writes that many bytes, so the copy is made at least as long, zero-filled.
    const size_t samples = other.numSamples > 0 ? static_cast<size_t>(other.numSamples) * other.numSamples : 0;
    size_t bytes = samples;
    if (heightBitmapInfo != nullptr)
        bytes = std::max(bytes, LImage::DIBBitsSize(heightBitmapInfo->bmiHeader));
    heights = static_cast<unsigned char*>(std::calloc(std::max<size_t>(bytes, 1), 1));
    heightsFine = static_cast<double*>(std::calloc(std::max<size_t>(samples, 1), sizeof(double)));
    if (heights == nullptr || heightsFine == nullptr) {
        std::printf("ERROR: LGLTerrain copy. Memory allocation.\n");
        std::exit(-1);
    }
    std::memcpy(heights, other.heights, samples);
    if (other.heightsFine != nullptr)
        std::memcpy(heightsFine, other.heightsFine, samples * sizeof(double));
}

void LGLTerrain::init()
{
    init(LGLPlatform::getProcAddress);
}

void LGLTerrain::init(tProcAddressLookup lookup)
{
    pglActiveTextureARB = reinterpret_cast<tActiveTextureProc>(lookup ? lookup("glActiveTextureARB") : nullptr);
    pglMultiTexCoord2fARB =
        reinterpret_cast<tMultiTexCoord2fProc>(lookup ? lookup("glMultiTexCoord2fARB") : nullptr);
    if (pglActiveTextureARB == nullptr || pglMultiTexCoord2fARB == nullptr) {
        LGLPlatform::messageBox("Multitexturing not supported!", "Error");
        LGLPlatform::postQuit();
    }

    releaseHeights();
    setResPath(defaultResPath);

    numTextures = 0;
    numTiles = 0;
    worldSize = 0;
    tileSize = 0;
    numSamples = 0;
    unitsPerSample = 0;
    numObjects = 0;
    frameCounter = 0;
    curRepeatA = 0;
    curRepeatB = 0;
    displayList = 0;
    for (int i = 0; i < MAX_TEXTURES; ++i)
        texRepeat[i] = 64;
    for (double& factor : lighting)
        factor = 1.0;
    lightPos[0] = 500.0f;
    lightPos[1] = 500.0f;
    lightPos[2] = 500.0f;
    lightPos[3] = 1.0f;
    for (int i = 0; i < 3; ++i) {
        skyboxColor[i] = 1.0f;
        fogColor[i] = 1.0f;
    }
    fogEnabled = false;
    fogStart = 600;
    fogEnd = 2500;
    fogDensity = 1.0;
    fogHeightDependent = false;
    fogReferenceHeight = 0;
    edgeHeight = 0;
    heightScale = 1.5;
    selGridX = 10;
    selGridZ = 245;
    brushStrength = 10;
    brushRadius = 10;
    heightsModified = false;
    texturesModified = false;
    objectsModified = false;
    useTileSort = true;
    bottomTexA = -1;
    bottomTexB = 0;
    bottomBlend = 0.0;
    lastTexA = -10;
    lastTexB = -10;
    userSetting = 50000;
    textureMode = 0;
    wireframe = false;
    farPlainMirrored = false;

    initTiles(0);
}

void LGLTerrain::setResPath(std::string path)
{
    resPath = path;
    tileCategoryPath = path + tileCategoryDir;
}

bool LGLTerrain::hasData()
{
    return heightBitmapInfo != nullptr || heights != nullptr;
}

void LGLTerrain::dispose()
{
    releaseHeights();
    glDeleteLists(displayList, 1);
    displayList = 0;
    const int count = std::min(std::max(numTextures, 0), static_cast<int>(MAX_TEXTURES));
    if (count > 0) {
        glDeleteTextures(count, texIds);
        std::fill(texIds, texIds + count, 0u);
    }
    numObjects = 0;
    usedModels.clear();
}

// ============================================================ [SECTION] grid and height editing

int LGLTerrain::sampleIndex(int x, int z) const
{
    const int last = worldSize - 1;
    x = std::max(0, std::min(x, last));
    z = std::max(0, std::min(z, last));
    const int step = std::max(1, unitsPerSample);
    const int column = std::min(x / step, numSamples - 1);
    const int row = std::min(z / step, numSamples - 1);
    return row * numSamples + column;
}

int LGLTerrain::getHeight(int x, int z)
{
    if (heights == nullptr || numSamples < 1)
        return 0;
    return truncToInt(heights[sampleIndex(x, z)] * heightScale);
}

void LGLTerrain::setHeight(int x, int z, int h)
{
    if (heights == nullptr || numSamples < 1)
        return;
    const int raw = h < 1 ? 0 : truncToInt(h / heightScale);
    // kept on purpose: no clamping, a height above 255 steps wraps; heightsFine keeps its old value
    heights[sampleIndex(x, z)] = lowByte(raw);
    heightsModified = true;
    updateTileCoordinates();
}

void LGLTerrain::incHeight(int x, int z, int amount)
{
    if (heights == nullptr || heightsFine == nullptr || numSamples < 1)
        return;
    const int index = sampleIndex(x, z);
    const double value = clampSample(heightsFine[index] + 2.0 * amount);
    heights[index] = lowByte(truncToInt(value));
    heightsFine[index] = value;
    heightsModified = true;
    updateTileCoordinates();
}

void LGLTerrain::elevateHeight(int x, int z, int amount)
{
    if (heights == nullptr || heightsFine == nullptr || numSamples < 1)
        return;
    const int r = brushRadius;
    const int centre = sampleIndex(x, z);
    const int cx = centre % numSamples;
    const int cz = centre / numSamples;
    const double stroke = static_cast<double>(brushStrength) * amount;
    for (int i = cx - r; i <= cx + r; ++i) {
        if (i < 0 || i >= numSamples)
            continue;
        for (int j = cz - r; j <= cz + r; ++j) {
            if (j < 0 || j >= numSamples)
                continue;
            const double d = std::sqrt(static_cast<double>(cx - i) * (cx - i) + static_cast<double>(cz - j) * (cz - j));
            if (d > r)
                continue;
            const double w = LGeom::sigmoid(1.0 - (r > 0 ? d / r : 0.0));
            const size_t index = static_cast<size_t>(j) * numSamples + i;
            const double value = clampSample(stroke * w + heightsFine[index]);
            heights[index] = lowByte(truncToInt(value + 0.5));
            heightsFine[index] = value;
        }
    }
    heightsModified = true;
    updateTileCoordinates();
}

void LGLTerrain::connectEdges()
{
    if (heights == nullptr || numSamples < 1)
        return;
    const int n = numSamples;
    const unsigned char edge = lowByte(edgeHeight);
    for (int k = 0; k < n; ++k) {
        heights[k] = edge;
        heights[static_cast<size_t>(n - 1) * n + k] = edge;
        heights[static_cast<size_t>(k) * n] = edge;
        heights[static_cast<size_t>(k) * n + n - 1] = edge;
    }
    // kept on purpose: heightsFine and the tile coordinates are left to the caller
    heightsModified = true;
}

void LGLTerrain::smoothEdges(int width)
{
    if (heights == nullptr || numSamples < 1)
        return;
    if (width < 0) {
        heightsModified = true;
        return;
    }
    const int n = numSamples;
    auto blend = [this](unsigned char& sample, double w) {
        sample = lowByte(truncToInt(edgeHeight * (1.0 - w) + sample * w));
    };
    // Rows first, then columns, so a corner band is blended twice (kept on purpose). With width 0,
    // t = 0/0 is not a number and the single ring becomes 0.
    for (int i = width; i >= 0; --i) {
        if (i >= n)
            continue;
        const double w = LGeom::sigmoid(static_cast<double>(i) / width);
        for (int k = 0; k < n; ++k) {
            blend(heights[static_cast<size_t>(i) * n + k], w);
            blend(heights[static_cast<size_t>(n - 1 - i) * n + k], w);
        }
    }
    for (int i = width; i >= 0; --i) {
        if (i >= n)
            continue;
        const double w = LGeom::sigmoid(static_cast<double>(i) / width);
        for (int k = 0; k < n; ++k) {
            blend(heights[static_cast<size_t>(k) * n + i], w);
            blend(heights[static_cast<size_t>(k) * n + (n - 1 - i)], w);
        }
    }
    heightsModified = true;
}

// ============================================================ [SECTION] tiles and texturing

int LGLTerrain::usedTiles() const
{
    return std::max(0, std::min(numTiles, static_cast<int>(MAX_TILES)));
}

int LGLTerrain::textureRepeatOf(int tex) const
{
    return tex >= 0 && tex < MAX_TEXTURES ? texRepeat[tex] : 64;
}

unsigned int LGLTerrain::textureIdOf(int tex) const
{
    return tex >= 0 && tex < MAX_TEXTURES ? texIds[tex] : 0u;
}

void LGLTerrain::setWrapFor(int tex)
{
    const GLint wrap = textureRepeatOf(tex) == worldSize ? GL_CLAMP_TO_EDGE : GL_REPEAT;
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, wrap);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, wrap);
}

void LGLTerrain::initTiles(int tex)
{
    const int n = usedTiles();
    for (int x = 0; x < n; ++x)
        for (int z = 0; z < n; ++z)
            tiles[x][z] = TerrainTile{tex, tex, 0.0};
}

void LGLTerrain::pushTiles()
{
    const int n = usedTiles();
    for (int x = 0; x < n; ++x)
        std::copy(tiles[x], tiles[x] + n, tilesBackup[x]);
}

void LGLTerrain::popTiles()
{
    const int n = usedTiles();
    for (int x = 0; x < n; ++x)
        std::copy(tilesBackup[x], tilesBackup[x] + n, tiles[x]);
}

void LGLTerrain::setTerrainTileTextureAt(int tex, int tileX, int tileZ, int radius, double strength, int soft)
{
    const int n = usedTiles();
    const int extent = soft == 0 ? radius - 1 : radius + soft;
    const int inner = soft == 0 ? radius - 2 : radius - 1;
    for (int dx = -extent; dx <= extent; ++dx) {
        for (int dz = -extent; dz <= extent; ++dz) {
            const int x = tileX + dx;
            const int z = tileZ + dz;
            if (x < 0 || x >= n || z < 0 || z >= n)
                continue;
            double target;
            if (soft > 0) {
                const double f = std::max(0.0, std::sqrt(static_cast<double>(dx * dx + dz * dz)) - inner) / soft;
                target = std::min(1.0, 1.0 - (1.0 - f) * strength);
            } else {
                target = 1.0 - strength;
            }
            TerrainTile& tile = tiles[x][z];
            const bool holdsTex = tile.texA == tex || tile.texB == tex;
            if (tile.texA == tex && tile.texB != tex) {
                // the painted texture goes to the second slot
                tile.texA = tile.texB;
                tile.texB = tex;
                tile.blend = 1.0 - tile.blend;
            } else if (!holdsTex) {
                if (tile.blend <= target && 1.0 - tile.blend <= target)
                    continue;
                if (1.0 - tile.blend > tile.blend) {
                    // the dominant old texture is kept in the first slot
                    tile.texA = tile.texB;
                    tile.texB = tex;
                    tile.blend = 1.0 - tile.blend;
                }
            }
            tile.texB = tex;
            tile.blend = std::min(tile.blend, target);
            if (tile.blend == 0.0)
                tile.texA = tex;
        }
    }
}

void LGLTerrain::updateTileCoordinates()
{
    if (numTiles < 1)
        return;
    // kept on purpose: numTiles * numTiles cells in storage order, z running over all 256 before x
    // advances, so only a 256-tile map is visited exactly
    const long long cells = std::min(static_cast<long long>(numTiles) * numTiles, static_cast<long long>(TILE_SORT_SIZE));
    static const int cornerDx[4] = {0, 1, 0, 1};
    static const int cornerDz[4] = {1, 1, 0, 0};
    for (long long cell = 0; cell < cells; ++cell) {
        const int i = static_cast<int>(cell / MAX_TILES);
        const int k = static_cast<int>(cell % MAX_TILES);
        const TerrainTile& pair = textureMode == 0 ? tiles[i][k] : farPlainTiles[0];
        curRepeatA = textureRepeatOf(pair.texA);
        curRepeatB = textureRepeatOf(pair.texB);
        for (int c = 0; c < 4; ++c) {
            tTileVertex& v = tileVertices[i][k][c];
            // a world too wide for int corners (a damaged map) keeps its corners at the int limits
            v.x = saturatedInt(static_cast<long long>(tileSize) * (i + cornerDx[c]));
            v.z = saturatedInt(static_cast<long long>(tileSize) * (k + cornerDz[c]));
            v.y = getHeight(v.x, v.z);
            v.s0 = static_cast<double>(v.x) / curRepeatA;
            v.t0 = static_cast<double>(v.z) / curRepeatA;
            v.s1 = static_cast<double>(v.x) / curRepeatB;
            v.t1 = static_cast<double>(v.z) / curRepeatB;
        }
    }
}

void LGLTerrain::setTerrainTileVertex(int corner, int tileX, int tileZ)
{
    if (corner < 0 || corner > 3 || tileX < 0 || tileX >= MAX_TILES || tileZ < 0 || tileZ >= MAX_TILES)
        return;
    const tTileVertex& v = tileVertices[tileX][tileZ][corner];
    pglMultiTexCoord2fARB(GL_TEXTURE0_ARB, static_cast<float>(v.s0), static_cast<float>(v.t0));
    pglMultiTexCoord2fARB(GL_TEXTURE1_ARB, static_cast<float>(v.s1), static_cast<float>(v.t1));
    glVertex3i(v.x, v.y, v.z);
}

// Never reports equality, so equal records sort in whatever order the library's sort leaves them.
int LGLTerrain::compareTileSortRecords(const void* first, const void* second)
{
    const auto* a = static_cast<const tTileSortRecord*>(first);
    const auto* b = static_cast<const tTileSortRecord*>(second);
    if (a->texA != b->texA)
        return a->texA < b->texA ? -1 : 1;
    if (a->texB != b->texB)
        return a->texB < b->texB ? -1 : 1;
    return a->blend < b->blend ? -1 : 1;
}

void LGLTerrain::generateTileSort()
{
    const int n = usedTiles();
    int written = 0;
    for (int x = 0; x < n; ++x) {
        for (int z = 0; z < n; ++z) {
            tileSort[written++] = tTileSortRecord{x, z, tiles[x][z].texA, tiles[x][z].texB, tiles[x][z].blend};
        }
    }
    // kept on purpose: the whole table is sorted, records of earlier maps or never written included
    std::qsort(tileSort, TILE_SORT_SIZE, sizeof(tTileSortRecord), compareTileSortRecords);
    for (int k = 0; k < written; ++k) {
        if (k == 0 || tileSort[k].texA != tileSort[k - 1].texA || tileSort[k].texB != tileSort[k - 1].texB)
            std::printf("%i (%i,%i). ", k, tileSort[k].texA, tileSort[k].texB);
    }
    if (written > 0)
        std::printf("\n");
}

void LGLTerrain::loadTextures()
{
    if (numTextures > MAX_TEXTURES) {
        std::printf("ERROR: numTex>maxNumTextures  %i > %i", numTextures, MAX_TEXTURES);
        std::fflush(stdout);
        std::exit(-1);
    }
    for (int i = 0; i < numTextures; ++i) {
        std::printf("Loading \"%s\"...\n", texNames[i].c_str());
        LGL::CreateTexture(texIds[i], tileCategoryPath + texNames[i]);
    }
}

void LGLTerrain::activate2TextureBlending(int, int, int texA, int texB, float alpha)
{
    if (wireframe)
        return;
    if (texA != lastTexA || texB != lastTexB) {
        if (texA == texB) {
            if (blendingActive) {
                disactivate2TextureBlending();
                blendingActive = false;
            }
            glEnable(GL_TEXTURE_2D);
            glBindTexture(GL_TEXTURE_2D, textureIdOf(texA));
        } else {
            ++textureSwitches;
            blendingActive = true;
            pglActiveTextureARB(GL_TEXTURE0_ARB);
            glEnable(GL_TEXTURE_2D);
            glBindTexture(GL_TEXTURE_2D, textureIdOf(texA));
            setWrapFor(texA);
            pglActiveTextureARB(GL_TEXTURE1_ARB);
            glEnable(GL_TEXTURE_2D);
            glBindTexture(GL_TEXTURE_2D, textureIdOf(texB));
            setWrapFor(texB);
        }
    }
    if (alpha != lastAlpha)
        glColor4f(1.0f, 1.0f, 1.0f, alpha);
    lastTexA = texA;
    lastTexB = texB;
    lastAlpha = alpha;
}

void LGLTerrain::disactivate2TextureBlending()
{
    pglActiveTextureARB(GL_TEXTURE1_ARB);
    glDisable(GL_TEXTURE_2D);
    pglActiveTextureARB(GL_TEXTURE0_ARB);
    glDisable(GL_TEXTURE_2D);
}

// ============================================================ [SECTION] rendering

void LGLTerrain::getFarPlainRect(int i, tRect& r)
{
    if (!farPlainExtentSet) {
        farPlainExtent = worldSize;
        farPlainExtentSet = true;
    }
    const int w = worldSize;
    const int f = farPlainExtent;
    switch (i) {
    case 0: LGeom::setRectExt(r, w, -f, f, f); break;
    case 1: LGeom::setRectExt(r, 0, -f, w, f); break;
    case 2: LGeom::setRectExt(r, -f, -f, f, f); break;
    case 3: LGeom::setRectExt(r, w, 0, f, w); break;
    case 4: LGeom::setRectExt(r, -f, 0, f, w); break;
    case 5: LGeom::setRectExt(r, w, w, f, f); break;
    case 6: LGeom::setRectExt(r, 0, w, w, f); break;
    case 7: LGeom::setRectExt(r, -f, w, f, f); break;
    default: break;
    }
}

void LGLTerrain::renderFarPlainRect(tRect r, int level, bool flipS, bool flipT, bool tiled)
{
    const int y = truncToInt(level * heightScale);
    const bool overlay = textureMode == 1;
    auto vertex = [&](int x, int z, double s, double t) {
        if (tiled)
            glTexCoord2d(static_cast<double>(x) / curRepeatA, static_cast<double>(z) / curRepeatA);
        else
            glTexCoord2d(s, t);
        if (overlay)
            pglMultiTexCoord2fARB(GL_TEXTURE1_ARB, static_cast<float>(static_cast<double>(x) / curRepeatB),
                                  static_cast<float>(static_cast<double>(z) / curRepeatB));
        glVertex3i(x, y, z);
    };
    const double sLeft = flipS ? 1.0 : 0.0;
    const double sRight = flipS ? 0.0 : 1.0;
    const double tBottom = flipT ? 0.0 : 1.0;
    const double tTop = flipT ? 1.0 : 0.0;
    glBegin(GL_TRIANGLE_STRIP);
    vertex(r.left, r.bottom, sLeft, tBottom);
    vertex(r.right, r.bottom, sRight, tBottom);
    vertex(r.left, r.top, sLeft, tTop);
    vertex(r.right, r.top, sRight, tTop);
    glEnd();
}

void LGLTerrain::renderFarPlains()
{
    const TerrainTile& plain = farPlainTiles[0];
    if (textureMode == 0) {
        glEnable(GL_TEXTURE_2D);
        glBindTexture(GL_TEXTURE_2D, textureIdOf(plain.texA));
        const GLint wrap = farPlainMirrored ? GL_CLAMP_TO_EDGE : GL_REPEAT;
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, wrap);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, wrap);
    }
    for (int i = 0; i < NUM_FAR_PLAINS; ++i) {
        curRepeatA = textureRepeatOf(plain.texA);
        curRepeatB = textureRepeatOf(plain.texB);
        tRect r;
        getFarPlainRect(i, r);
        if (farPlainMirrored)
            renderFarPlainRect(r, edgeHeight, farPlainFlips[i][0], farPlainFlips[i][1], false);
        else
            renderFarPlainRect(r, edgeHeight, false, false, true);
    }
}

void LGLTerrain::renderBottom()
{
    if (bottomTexA < 0)
        return;
    if (textureMode == 0) {
        glBindTexture(GL_TEXTURE_2D, textureIdOf(bottomTexA));
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_REPEAT);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_REPEAT);
    }
    curRepeatA = textureRepeatOf(bottomTexA);
    curRepeatB = textureRepeatOf(bottomTexB);
    tRect r;
    LGeom::setRectExt(r, 0, 0, worldSize, worldSize);
    renderFarPlainRect(r, edgeHeight, false, false, true);
}

void LGLTerrain::renderTerrainTile(int tileX, int tileZ)
{
    if (tileX < 0 || tileX >= MAX_TILES || tileZ < 0 || tileZ >= MAX_TILES)
        return;
    if (wireframe) {
        glBegin(GL_LINE_STRIP);
        for (const tTileVertex& v : tileVertices[tileX][tileZ])
            glVertex3i(v.x, v.y + 2, v.z);
        glEnd();
        return;
    }
    glBegin(GL_TRIANGLE_STRIP);
    for (int c = 0; c < 4; ++c)
        setTerrainTileVertex(c, tileX, tileZ);
    glEnd();
}

void LGLTerrain::renderTile(int tileX, int tileZ, int texA, int texB, double blend)
{
    if (textureMode == 0) {
        curRepeatA = textureRepeatOf(texA);
        curRepeatB = textureRepeatOf(texB);
        activate2TextureBlending(tileX, tileZ, texA, texB, static_cast<float>(blend));
    } else {
        curRepeatA = textureRepeatOf(farPlainTiles[0].texA);
        curRepeatB = textureRepeatOf(farPlainTiles[0].texB);
    }
    renderTerrainTile(tileX, tileZ);
}

void LGLTerrain::render()
{
    lastTexA = -10;
    lastTexB = -10;
    lastAlpha = -10.0f;
    const bool overlay = textureMode == 1;

    if (overlay && !wireframe) {
        pglActiveTextureARB(GL_TEXTURE0_ARB);
        glEnable(GL_TEXTURE_2D);
        glBindTexture(GL_TEXTURE_2D, textureIdOf(farPlainTiles[0].texA));
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
        pglActiveTextureARB(GL_TEXTURE1_ARB);
        glEnable(GL_TEXTURE_2D);
        glBindTexture(GL_TEXTURE_2D, textureIdOf(farPlainTiles[0].texB));
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_REPEAT);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_REPEAT);
        glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_COMBINE_ARB);
        glTexEnvi(GL_TEXTURE_ENV, GL_RGB_SCALE_ARB, 2);
    }

    textureSwitches = 0;
    renderFarPlains();
    renderBottom();

    // kept on purpose: a flat map has only far plains and bottom, and returns before the restore
    if (heightMapFile == "flat")
        return;

    if (wireframe) {
        glDisable(GL_TEXTURE_2D);
        glColor3f(0.2f, 0.2f, 0.2f);
    } else if (!overlay) {
        // texA * blend + texB * (1 - blend): unit 0's result interpolated with unit 1's texture by
        // the primary colour's alpha
        pglActiveTextureARB(GL_TEXTURE1_ARB);
        glEnable(GL_TEXTURE_2D);
        LGLTextureBlending::SetInterpolateCombiner();
    }

    const int n = usedTiles();
    if (!useTileSort) {
        for (int x = 0; x < n; ++x)
            for (int z = 0; z < n; ++z)
                renderTile(x, z, tiles[x][z].texA, tiles[x][z].texB, tiles[x][z].blend);
    } else {
        for (int k = 0; k < n * n; ++k) {
            const tTileSortRecord& record = tileSort[k];
            renderTile(record.x, record.z, record.texA, record.texB, record.blend);
        }
    }

    if (overlay) {
        pglActiveTextureARB(GL_TEXTURE1_ARB);
        glTexEnvi(GL_TEXTURE_ENV, GL_RGB_SCALE_ARB, 1);
    } else {
        pglActiveTextureARB(GL_TEXTURE0_ARB);
        glEnable(GL_TEXTURE_2D);
        pglActiveTextureARB(GL_TEXTURE1_ARB);
        glEnable(GL_TEXTURE_2D);
        glTexEnvi(GL_TEXTURE_ENV, GL_COMBINE_RGB_ARB, GL_MODULATE);
    }
    pglActiveTextureARB(GL_TEXTURE1_ARB);
    glDisable(GL_TEXTURE_2D);
    pglActiveTextureARB(GL_TEXTURE0_ARB);
    glDisable(GL_TEXTURE_2D);
    blendingActive = false;
    glColor3f(1.0f, 1.0f, 1.0f);
}

void LGLTerrain::generateDL()
{
    glEnable(GL_CULL_FACE);
    displayList = glGenLists(1);
    std::printf("Generating DL...\n");
    glNewList(displayList, GL_COMPILE);
    render();
    glEndList();
    std::printf(" done.\n");
}

void LGLTerrain::updateDL()
{
    glDeleteLists(displayList, 1);
    generateDL();
}

void LGLTerrain::renderDL()
{
    glCallList(displayList);
}

void LGLTerrain::setFog()
{
    glEnable(GL_FOG);
    glFogi(GL_FOG_MODE, GL_LINEAR);
    const GLfloat colour[4] = {fogColor[0], fogColor[1], fogColor[2], 0.1f};
    glFogfv(GL_FOG_COLOR, colour);
    glFogf(GL_FOG_START, static_cast<GLfloat>(fogStart));
    int end = fogEnd;
    if (fogHeightDependent)
        end = std::max(fogStart + 1, std::max(100, fogEnd - 4 * std::max(0, fogReferenceHeight - 2 * edgeHeight)));
    glFogf(GL_FOG_END, static_cast<GLfloat>(end));
}

void LGLTerrain::renderGridPoints(bool pick)
{
    if (heights == nullptr || numSamples < 1)
        return;
    const int n = numSamples;
    selGridX = std::max(0, std::min(selGridX, n - 1));
    selGridZ = std::max(0, std::min(selGridZ, n - 1));
    const int r = brushRadius;
    const int step = unitsPerSample;

    glDisable(GL_TEXTURE_2D);
    glPointSize(2.0f);
    glPushMatrix();
    glScaled(1.0, heightScale, 1.0);
    if (pick)
        glLoadName(1);
    glColor3f(1.0f, 1.0f, 1.0f);

    auto colourFor = [&](int i, int j) {
        const int di = i - selGridX;
        const int dj = j - selGridZ;
        const bool inBrush = std::abs(di) <= r && std::abs(dj) <= r &&
                             std::sqrt(static_cast<double>(di) * di + static_cast<double>(dj) * dj) <= r;
        if (inBrush)
            glColor3f(1.0f, 0.2f, 0.2f);
        else
            glColor3f(1.0f, 1.0f, 1.0f);
    };
    auto point = [&](int i, int j) { glVertex3i(i * step, heights[static_cast<size_t>(j) * n + i] + 2, j * step); };

    if (pick) {
        // a name cannot change inside glBegin/glEnd: one point per block
        for (int i = 0; i < n; ++i) {
            for (int j = 0; j < n; ++j) {
                if (i == selGridX && j == selGridZ)
                    continue;
                glLoadName(static_cast<GLuint>(i * 1000 + j));
                colourFor(i, j);
                glBegin(GL_POINTS);
                point(i, j);
                glEnd();
            }
        }
    } else {
        glBegin(GL_POINTS);
        for (int i = 0; i < n; ++i) {
            for (int j = 0; j < n; ++j) {
                if (i == selGridX && j == selGridZ)
                    continue;
                colourFor(i, j);
                point(i, j);
            }
        }
        glEnd();
    }

    if (pick)
        glLoadName(static_cast<GLuint>(selGridX * 1000 + selGridZ));
    glColor3f(1.0f, 0.0f, 0.0f);
    glPointSize(5.0f);
    glBegin(GL_POINTS);
    point(selGridX, selGridZ);
    glEnd();
    glPointSize(1.0f);
    glColor3f(1.0f, 1.0f, 1.0f);
    glPopMatrix();
}

void LGLTerrain::renderRectOnTerrain(tRect r)
{
    glDisable(GL_CULL_FACE);
    glDisable(GL_TEXTURE_2D);
    const int step = std::max(1, tileSize);
    auto vertex = [this](int x, int z) { glVertex3i(x, getHeight(x, z) + 2, z); };
    glBegin(GL_LINE_STRIP);
    for (int x = r.left; x < r.right; x += step)
        vertex(x, r.bottom);
    for (int z = r.bottom; z > r.top; z -= step)
        vertex(r.right, z);
    for (int x = r.right; x > r.left; x -= step)
        vertex(x, r.top);
    for (int z = r.top; z < r.bottom; z += step)
        vertex(r.left, z);
    vertex(r.left, r.bottom);
    glEnd();
}

void LGLTerrain::renderRectOnFarPlain(int i)
{
    if (i < 0 || i >= NUM_FAR_PLAINS)
        return;
    glDisable(GL_CULL_FACE);
    glDisable(GL_TEXTURE_2D);
    tRect r = {0, 0, 0, 0};
    getFarPlainRect(i, r);
    const int y = truncToInt(edgeHeight * heightScale + 2.0);
    glBegin(GL_LINE_LOOP);
    glVertex3i(r.left, y, r.bottom);
    glVertex3i(r.right, y, r.bottom);
    glVertex3i(r.right, y, r.top);
    glVertex3i(r.left, y, r.top);
    glEnd();
}
