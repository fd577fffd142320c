// LGLTerrainFiles.cpp -- the terrain's map text, its height bitmap and the numbered backups of it.
#include <ostrum_gl/scenery/LGLTerrain.h>

#include <ostrum_core/LFile.h>
#include <ostrum_core/LImage.h>
#include <ostrum_core/LString.h>

#include <locale.h>

#include <cfloat>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <istream>
#include <limits>
#include <locale>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

const char* const LGLTerrain::mapFileHeader = "=== Harrowfields map file ===";

namespace {

// atof as the "C" locale reads it, so that a game running in a locale with a decimal comma reads the
// maps it wrote.
double readDouble(const std::string& text)
{
    static locale_t cLocale = ::newlocale(LC_NUMERIC_MASK, "C", static_cast<locale_t>(nullptr));
    if (cLocale == static_cast<locale_t>(nullptr))
        return std::atof(text.c_str());
    return ::strtod_l(text.c_str(), nullptr, cLocale);
}

int readInt(const std::string& text)
{
    return std::atoi(text.c_str());
}

// A double beyond a float's range becomes the infinity of its sign, as the processor rounds it.
float readFloat(const std::string& text)
{
    const double v = readDouble(text);
    if (v > FLT_MAX)
        return std::numeric_limits<float>::infinity();
    if (v < -FLT_MAX)
        return -std::numeric_limits<float>::infinity();
    return static_cast<float>(v);
}

// A stored float position, rounded half away from zero and written as a whole number in full.
std::string roundedText(float value)
{
    double r = std::round(static_cast<double>(value));
    if (r == 0.0)
        r = 0.0;  // no "-0"
    char buf[64];
    std::snprintf(buf, sizeof buf, "%.0f", r);
    return buf;
}

size_t saturatingProduct(size_t a, size_t b)
{
    if (a != 0 && b > std::numeric_limits<size_t>::max() / a)
        return std::numeric_limits<size_t>::max();
    return a * b;
}

// Restores a stream's locale, precision and flags when the writer is done with it.
class StreamFormatGuard {
public:
    explicit StreamFormatGuard(std::ostream& out)
        : out_(out), locale_(out.imbue(std::locale::classic())), precision_(out.precision(6)),
          flags_(out.flags(std::ios_base::dec | std::ios_base::skipws))
    {
    }
    ~StreamFormatGuard()
    {
        out_.flags(flags_);
        out_.precision(precision_);
        out_.imbue(locale_);
    }
    StreamFormatGuard(const StreamFormatGuard&) = delete;
    StreamFormatGuard& operator=(const StreamFormatGuard&) = delete;

private:
    std::ostream& out_;
    std::locale locale_;
    std::streamsize precision_;
    std::ios_base::fmtflags flags_;
};

}  // namespace

// ============================================================ whole map

void LGLTerrain::load(std::string mapName)
{
    loadTexTilesAndEnv(mapName);
    const bool flat = heightMapFile == "flat";
    if (!flat) {
        loadHeightMap();
        generateTileSort();
    }
    loadTextures();
    if (!flat)
        updateTileCoordinates();
}

// ============================================================ map text

void LGLTerrain::writeTexTilesAndEnv(std::ostream& out)
{
    StreamFormatGuard guard(out);

    out << mapFileHeader << "\n\n";
    out << "Terrain " << heightMapFile << ' ' << worldSize << ' ' << numTiles << ' ' << edgeHeight << '\n';
    out << "Lighting " << lighting[0] << ' ' << lighting[1] << ' ' << lighting[2] << '\n';
    out << "LightPos " << lightPos[0] << ' ' << lightPos[1] << ' ' << lightPos[2] << '\n';
    out << "Skybox " << skyboxName << ' ' << skyboxColor[0] << ' ' << skyboxColor[1] << ' ' << skyboxColor[2]
        << '\n';
    if (fogEnabled) {
        out << "Fog " << fogStart << ' ' << fogEnd << ' ' << fogDensity << ' ' << fogColor[0] << ' ' << fogColor[1]
            << ' ' << fogColor[2] << '\n';
    } else {
        out << "Fog off\n";
    }
    out << '\n';

    // Only the textures that tiles use are written, numbered anew in the order of their old index.
    const int n = usedTiles();
    bool used[MAX_TEXTURES] = {};
    for (int x = 0; x < n; ++x) {
        for (int z = 0; z < n; ++z) {
            const TerrainTile& t = tiles[x][z];
            if (t.texA >= 0 && t.texA < MAX_TEXTURES)
                used[t.texA] = true;
            if (t.texB >= 0 && t.texB < MAX_TEXTURES)
                used[t.texB] = true;
        }
    }
    int renumbered[MAX_TEXTURES];
    int next = 0;
    for (int i = 0; i < MAX_TEXTURES; ++i)
        renumbered[i] = used[i] ? next++ : -1;
    auto newIndex = [&renumbered](int tex) { return tex >= 0 && tex < MAX_TEXTURES ? renumbered[tex] : tex; };

    out << (textureMode == 1 ? "Textures (detail_overlay)" : "Textures (blending)") << '\n';
    for (int i = 0; i < MAX_TEXTURES; ++i) {
        if (used[i])
            out << texNames[i] << ' ' << texRepeat[i] << '\n';
    }
    out << '\n';

    // kept on purpose: the bottom and the far plains keep the old texture numbers
    if (bottomTexA >= 0)
        out << "Bottom " << bottomTexA << ' ' << bottomTexB << ' ' << bottomBlend << "\n\n";

    if (farPlainMirrored) {
        const TerrainTile& p = farPlainTiles[0];
        out << "Farplain " << p.texA << ' ' << p.texB << ' ' << p.blend << " mirrored\n";
    } else {
        for (int i = 0; i < NUM_FAR_PLAINS; ++i) {
            const TerrainTile& p = farPlainTiles[i];
            out << "Farplain " << i << ' ' << p.texA << ' ' << p.texB << ' ' << p.blend << '\n';
        }
    }
    out << '\n';

    const int objectCount = std::max(0, std::min(numObjects, static_cast<int>(MAX_OBJECTS)));
    if (objectCount > 0) {
        out << "Objects\n";
        for (int i = 0; i < objectCount; ++i) {
            const TerrainObject& o = objects[i];
            out << o.modelName << ' ' << o.scale << ' ' << roundedText(o.pos.x) << ' ' << roundedText(o.pos.y) << ' '
                << roundedText(o.pos.z) << ' ' << o.rotX << ' ' << o.rotY << ' ' << o.rotZ << ' ' << o.flag << '\n';
        }
        out << '\n';
    }

    out << "Tiles\n";
    for (int x = 0; x < n; ++x) {
        for (int z = 0; z < n; ++z) {
            const TerrainTile& t = tiles[x][z];
            out << newIndex(t.texA) << ' ' << newIndex(t.texB) << ' ' << t.blend << '\n';
        }
    }
}

void LGLTerrain::saveTexTilesAndEnv(std::string name)
{
    const std::string path = resPath + name;
    std::ostringstream text;
    writeTexTilesAndEnv(text);
    const std::string bytes = text.str();
    if (!LFile::replaceFile(path, bytes.data(), bytes.size()))
        std::printf("ERROR: LGLTerrain::saveTexTilesAndEnv. Could not write map file \"%s\"; the previous file is kept.\n",
                    path.c_str());
}

bool LGLTerrain::readTexTilesAndEnv(std::istream& in)
{
    numObjects = 0;
    bottomTexA = -1;

    enum Run { NoRun, TextureRun, ObjectRun, TileRun };
    Run run = NoRun;
    int textureCount = 0;
    long long tileCount = 0;

    std::string line;
    while (std::getline(in, line)) {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();

        if (run != NoRun) {
            // a run of record lines ends at the first empty line
            if (line.empty()) {
                run = NoRun;
                continue;
            }
            const std::vector<std::string> t = LString::split(line, " ");
            if (run == TextureRun && t.size() == 2) {
                if (textureCount < MAX_TEXTURES) {
                    texNames[textureCount] = t[0];
                    texRepeat[textureCount] = readInt(t[1]);
                }
                if (textureCount < INT_MAX)
                    numTextures = ++textureCount;
            } else if (run == ObjectRun && t.size() == 9) {
                if (numObjects < MAX_OBJECTS) {
                    TerrainObject& o = objects[numObjects++];
                    o.modelName = t[0];
                    o.scale = readDouble(t[1]);
                    o.pos.x = readFloat(t[2]);
                    o.pos.y = readFloat(t[3]);
                    o.pos.z = readFloat(t[4]);
                    o.rotX = readInt(t[5]);
                    o.rotY = readInt(t[6]);
                    o.rotZ = readInt(t[7]);
                    o.flag = readInt(t[8]);
                    o.lod[0] = nullptr;
                    o.lod[1] = nullptr;
                    o.lod[2] = nullptr;
                }
            } else if (run == TileRun && t.size() == 3) {
                if (numTiles >= 1) {
                    const long long x = tileCount / numTiles;
                    const long long z = tileCount % numTiles;
                    if (x < numTiles && x < MAX_TILES && z < MAX_TILES) {
                        TerrainTile& tile = tiles[x][z];
                        tile.texA = readInt(t[0]);
                        tile.texB = readInt(t[1]);
                        tile.blend = readDouble(t[2]);
                    }
                }
                ++tileCount;
            }
            continue;
        }

        const std::vector<std::string> t = LString::split(line, " ");
        const std::string& key = t[0];
        const size_t count = t.size();
        if (key == "Terrain" && count == 5) {
            heightMapFile = t[1];
            worldSize = readInt(t[2]);
            const int tilesPerSide = readInt(t[3]);
            if (tilesPerSide > MAX_TILES)
                return false;
            numTiles = tilesPerSide;
            edgeHeight = readInt(t[4]);
            tileSize = numTiles != 0 ? static_cast<int>(static_cast<long long>(worldSize) / numTiles) : 0;
        } else if (key == "Lighting" && count == 4) {
            for (int i = 0; i < 3; ++i)
                lighting[i] = readDouble(t[1 + i]);
        } else if (key == "LightPos" && count == 4) {
            for (int i = 0; i < 3; ++i)
                lightPos[i] = readFloat(t[1 + i]);
        } else if (key == "Skybox" && count == 5) {
            skyboxName = t[1];
            for (int i = 0; i < 3; ++i)
                skyboxColor[i] = readFloat(t[2 + i]);
        } else if (key == "Fog" && count == 2) {
            // kept on purpose: the second token is not looked at, so any two-token line turns fog off
            fogEnabled = false;
        } else if (key == "Fog" && count == 7) {
            fogEnabled = true;
            fogStart = readInt(t[1]);
            fogEnd = readInt(t[2]);
            fogDensity = readDouble(t[3]);
            for (int i = 0; i < 3; ++i)
                fogColor[i] = readFloat(t[4 + i]);
        } else if (key == "Textures" && count == 2 && (t[1] == "(blending)" || t[1] == "(detail_overlay)")) {
            textureMode = t[1] == "(blending)" ? 0 : 1;
            run = TextureRun;
            textureCount = 0;
        } else if (key == "Bottom" && count == 4) {
            bottomTexA = readInt(t[1]);
            bottomTexB = readInt(t[2]);
            bottomBlend = readDouble(t[3]);
        } else if (key == "Farplain" && count == 5) {
            if (t[4] == "mirrored") {
                farPlainTiles[0] = TerrainTile{readInt(t[1]), readInt(t[2]), readDouble(t[3])};
                farPlainMirrored = true;
            } else {
                const int i = readInt(t[1]);
                if (i >= 0 && i < NUM_FAR_PLAINS) {
                    farPlainTiles[i] = TerrainTile{readInt(t[2]), readInt(t[3]), readDouble(t[4])};
                    farPlainMirrored = false;
                }
            }
        } else if (key == "Objects" && count == 1) {
            run = ObjectRun;
        } else if (key == "Tiles" && count == 1) {
            run = TileRun;
            tileCount = 0;
        }
        // any other line is skipped
    }
    return true;
}

void LGLTerrain::loadTexTilesAndEnv(std::string name)
{
    numObjects = 0;
    const std::string path = resPath + name;
    if (!LFile::fileExist(path)) {
        std::printf("Map file \"%s\" does not exist!\n", path.c_str());
        std::exit(-1);
    }
    std::ifstream in(LFile::resolvePath(path), std::ios::binary);
    // more than 256 tiles per side: the process ends without a message
    if (!readTexTilesAndEnv(in))
        std::exit(-1);
}

// ============================================================ height bitmap

void LGLTerrain::loadHeightMap()
{
    const std::string path = resPath + heightMapFile;
    if (!LFile::fileExist(path)) {
        std::printf("ERROR: HEIGHTMAP FILE %s NOT FOUND!\n", path.c_str());
        std::exit(-1);
    }
    releaseHeights();

    BITMAPINFO* info = nullptr;
    char* bits = LImage::LoadDIBitmap(path.c_str(), &info);
    if (bits == nullptr || info == nullptr) {
        std::free(bits);
        std::free(info);
        std::printf("ERROR: LGLTerrain::loadHeightMap. \"%s\" is not a readable bitmap.\n", path.c_str());
        std::exit(-1);
    }
    const BITMAPINFOHEADER& h = info->bmiHeader;
    const long long width = h.biWidth;
    const long long height = h.biHeight < 0 ? -static_cast<long long>(h.biHeight) : h.biHeight;
    const bool usable = h.biBitCount == 8 && h.biCompression == BI_RGB && width >= 1 && width == height &&
                        width % 4 == 0 &&
                        LImage::DIBBitsSize(h) >= static_cast<size_t>(width) * static_cast<size_t>(width);
    if (!usable) {
        std::printf("ERROR: LGLTerrain::loadHeightMap. Height map \"%s\" must be a square 8-bit bitmap without "
                    "compression and with a width divisible by 4 (it is %i x %i, %i bits, compression %u).\n",
                    path.c_str(), static_cast<int>(h.biWidth), static_cast<int>(h.biHeight),
                    static_cast<int>(h.biBitCount), static_cast<unsigned>(h.biCompression));
        std::free(bits);
        std::free(info);
        std::exit(-1);
    }

    heightBitmapInfo = info;
    heights = reinterpret_cast<unsigned char*>(bits);
    numSamples = static_cast<int>(width);

    const size_t samples = static_cast<size_t>(numSamples) * static_cast<size_t>(numSamples);
    heightsFine = static_cast<double*>(std::malloc(saturatingProduct(samples, sizeof(double))));
    if (heightsFine == nullptr) {
        std::printf("ERROR: LGLTerrain::loadHeightMap. Memory allocation.\n");
        std::exit(-1);
    }
    for (size_t i = 0; i < samples; ++i)
        heightsFine[i] = heights[i];
    unitsPerSample = worldSize / numSamples;
}

void LGLTerrain::saveHeightMap()
{
    saveHeightMap(resPath + heightMapFile);
}

void LGLTerrain::saveHeightMap(std::string fileName)
{
    // kept on purpose: the line has no closing quote
    std::printf("Saving height map to \"%s\n", fileName.c_str());
    std::vector<unsigned char> bytes;
    const bool ok = heightBitmapInfo != nullptr && heights != nullptr &&
                    LImage::SaveDIBitmapToMemory(heightBitmapInfo, reinterpret_cast<const char*>(heights), bytes) == 0 &&
                    LFile::replaceFile(fileName, bytes.data(), bytes.size());
    if (!ok)
        std::printf("Save error!\n");
}

// ============================================================ backups

void LGLTerrain::backupHeightMapFile()
{
    const std::string source = resPath + heightMapFile;
    const std::string stem = LFile::getFilenameWithoutExtension(heightMapFile);
    std::string name;
    int n = 1;
    for (; n <= MAX_BACKUPS; ++n) {
        name = stem + "_" + LString::trimZInt(n, 3) + ".bmp";
        if (!LFile::fileExist(resPath + name))
            break;
    }
    if (n > MAX_BACKUPS) {
        std::printf("ERROR: LGLTerrain::backupHeightMapFile. All %i backup names of \"%s\" are in use.\n", MAX_BACKUPS,
                    source.c_str());
        std::exit(-1);
    }
    const std::string target = resPath + name;
    if (!LFile::copy(source, target)) {
        LFile::del(target);
        std::printf("ERROR: LGLTerrain::backupHeightMapFile. Could not copy \"%s\" to \"%s\".\n", source.c_str(),
                    target.c_str());
    }
}
