// fuzz_mapfile.cpp -- libFuzzer target for the map text reader: LGLTerrain::readTexTilesAndEnv over
// bytes in memory, then everything a game does with what it read that needs no OpenGL: the text written
// back and read again, a small height bitmap loaded under the map's world size and tile count, the tile
// sort, the corner table, height queries and edits across (and beyond) the world, and tile painting.
//
// A "Terrain" line of more than 256 tiles ends the process in loadTexTilesAndEnv; the stream reader
// reports it instead, so the target stops there. The terrain is large (its placed objects are held
// inline), so one is kept for the whole run and reset through dispose and the reader itself.
#include <ostrum_core/LImage.h>
#include <ostrum_gl/scenery/LGLTerrain.h>

#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace {

const int kSamples = 16;

std::string scratchDir()
{
    static const std::string dir = "/tmp/fuzz_mapfile_" + std::to_string(static_cast<long>(::getpid())) + "/";
    return dir;
}

// A 16 x 16 8-bit grey bitmap with a ramp of heights, written once.
void writeHeightBitmap(const std::string& path)
{
    std::vector<unsigned char> bytes;
    const uint32_t palette = 256 * 4;
    const uint32_t pixels = kSamples * kSamples;
    const uint32_t offset = 14 + 40 + palette;
    const uint32_t fileSize = offset + pixels;
    auto put16 = [&](uint32_t v) { bytes.push_back(v & 0xff); bytes.push_back((v >> 8) & 0xff); };
    auto put32 = [&](uint32_t v) { put16(v & 0xffff); put16(v >> 16); };
    bytes.push_back('B');
    bytes.push_back('M');
    put32(fileSize);
    put32(0);
    put32(offset);
    put32(40);
    put32(kSamples);
    put32(kSamples);
    put16(1);
    put16(8);
    put32(0);
    put32(pixels);
    put32(2835);
    put32(2835);
    put32(256);
    put32(256);
    for (uint32_t i = 0; i < 256; ++i) {
        bytes.push_back(i);
        bytes.push_back(i);
        bytes.push_back(i);
        bytes.push_back(0);
    }
    for (int z = 0; z < kSamples; ++z)
        for (int x = 0; x < kSamples; ++x)
            bytes.push_back(static_cast<unsigned char>((x * 13 + z * 7) & 0xff));
    if (std::FILE* f = std::fopen(path.c_str(), "wb")) {
        std::fwrite(bytes.data(), 1, bytes.size(), f);
        std::fclose(f);
    }
}

void removeScratchDir()
{
    std::filesystem::remove_all(scratchDir());
}

void exerciseHeights(LGLTerrain& t)
{
    const int w = t.worldSize;
    const long long wide = w;
    const long long probes[] = {0, 1, wide / 3, wide / 2, wide - 1, wide, wide + 1000, -1, -wide, INT_MAX, INT_MIN};
    for (long long x : probes)
        for (long long z : probes)
            t.getHeight(static_cast<int>(std::clamp<long long>(x, INT_MIN, INT_MAX)),
                        static_cast<int>(std::clamp<long long>(z, INT_MIN, INT_MAX)));
    t.brushRadius = 3;
    t.brushStrength = 2;
    t.elevateHeight(w / 2, w / 2, 4);
    t.incHeight(0, 0, 1);
    t.setHeight(w - 1, w - 1, 400);
    t.connectEdges();
    t.smoothEdges(2);
}

void exerciseTiles(LGLTerrain& t)
{
    t.pushTiles();
    t.setTerrainTileTextureAt(1, t.numTiles / 2, t.numTiles / 2, 2, 0.5, 1);
    t.setTerrainTileTextureAt(0, -5, t.numTiles + 5, 3, 1.0, 2);
    t.popTiles();
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    if (std::freopen("/dev/null", "w", stdout) == nullptr)
        return 0;
    const std::string dir = scratchDir();
    std::error_code error;
    std::filesystem::create_directories(dir, error);
    std::atexit(removeScratchDir);
    writeHeightBitmap(dir + "fuzz_heights.bmp");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static LGLTerrain* terrain = new LGLTerrain();
    static LGLTerrain* again = new LGLTerrain();
    LGLTerrain& t = *terrain;
    t.dispose();

    std::istringstream in(std::string(reinterpret_cast<const char*>(data), size));
    if (!t.readTexTilesAndEnv(in))
        return 0;

    // written back and read again
    std::ostringstream out;
    t.writeTexTilesAndEnv(out);
    again->dispose();
    std::istringstream back(out.str());
    again->readTexTilesAndEnv(back);

    // the reader has checked the tile count already; any positive world size is loaded
    if (t.heightMapFile == "flat" || t.worldSize < 1 || t.numTiles < 1)
        return 0;
    t.setResPath(scratchDir());
    t.heightMapFile = "fuzz_heights.bmp";
    t.loadHeightMap();
    t.generateTileSort();
    t.updateTileCoordinates();
    exerciseHeights(t);
    exerciseTiles(t);
    return 0;
}
