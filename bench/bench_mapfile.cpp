// bench_mapfile.cpp -- the map files of a large world: a 256 x 256-tile map with 10,000 placed objects
// saved and loaded through LGLTerrain, and its 512 x 512 height bitmap loaded and saved, each next to
// reading the same bytes from disk (the floor any reader pays). Sizes are printed as counters.
#include <ostrum_core/LImage.h>
#include <ostrum_gl/scenery/LGLTerrain.h>

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

const int kTiles = 256;
const int kSamples = 512;
const int kWorld = 8192;
const int kObjects = 10000;
const int kTextures = 8;

std::string resDir;
std::unique_ptr<LGLTerrain> source;

template <typename Call>
void quietly(Call call)
{
    std::fflush(stdout);
    const int saved = dup(1);
    const int devnull = open("/dev/null", O_WRONLY);
    dup2(devnull, 1);
    call();
    std::fflush(stdout);
    dup2(saved, 1);
    close(saved);
    close(devnull);
}

void writeHeightBitmap(const std::string& path)
{
    BITMAPINFO* info = static_cast<BITMAPINFO*>(std::calloc(1, sizeof(BITMAPINFOHEADER) + 256 * sizeof(RGBQUAD)));
    info->bmiHeader.biSize = 40;
    info->bmiHeader.biWidth = kSamples;
    info->bmiHeader.biHeight = kSamples;
    info->bmiHeader.biPlanes = 1;
    info->bmiHeader.biBitCount = 8;
    info->bmiHeader.biSizeImage = kSamples * kSamples;
    info->bmiHeader.biClrUsed = 256;
    for (int i = 0; i < 256; ++i) {
        info->bmiColors[i].rgbRed = static_cast<unsigned char>(i);
        info->bmiColors[i].rgbGreen = static_cast<unsigned char>(i);
        info->bmiColors[i].rgbBlue = static_cast<unsigned char>(i);
    }
    std::vector<char> bits(static_cast<size_t>(kSamples) * kSamples);
    std::mt19937 rng(7);
    for (size_t i = 0; i < bits.size(); ++i)
        bits[i] = static_cast<char>(rng() & 0xff);
    LImage::SaveDIBitmap(path.c_str(), info, bits.data());
    std::free(info);
}

// A terrain holding a full map: every tile blended, every object placed.
void buildSource()
{
    source = std::make_unique<LGLTerrain>();
    LGLTerrain& t = *source;
    t.setResPath(resDir);
    t.heightMapFile = "heights.bmp";
    t.worldSize = kWorld;
    t.numTiles = kTiles;
    t.tileSize = kWorld / kTiles;
    t.edgeHeight = 12;
    t.numTextures = kTextures;
    for (int i = 0; i < kTextures; ++i) {
        t.texNames[i] = "tile" + std::to_string(i) + ".bmp";
        t.texRepeat[i] = 64 + i;
    }
    std::mt19937 rng(11);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    for (int x = 0; x < kTiles; ++x)
        for (int z = 0; z < kTiles; ++z)
            t.tiles[x][z] = TerrainTile{static_cast<int>(rng() % kTextures), static_cast<int>(rng() % kTextures),
                                        unit(rng)};
    t.numObjects = kObjects;
    for (int i = 0; i < kObjects; ++i) {
        TerrainObject& o = t.objects[i];
        o.modelName = "model" + std::to_string(i % 40);
        o.scale = 0.5 + unit(rng);
        o.pos = SVector3D(static_cast<float>(unit(rng) * kWorld), static_cast<float>(unit(rng) * 255.0),
                          static_cast<float>(unit(rng) * kWorld));
        o.rotX = 0;
        o.rotY = static_cast<int>(rng() % 360);
        o.rotZ = 0;
        o.flag = static_cast<int>(rng() % 2);
    }
}

std::vector<char> readAll(const std::string& path)
{
    std::vector<char> bytes(static_cast<size_t>(std::filesystem::file_size(path)));
    std::FILE* f = std::fopen(path.c_str(), "rb");
    if (f != nullptr) {
        const size_t got = std::fread(bytes.data(), 1, bytes.size(), f);
        bytes.resize(got);
        std::fclose(f);
    }
    return bytes;
}

void writeAll(const std::string& path, const std::vector<char>& bytes)
{
    std::FILE* f = std::fopen(path.c_str(), "wb");
    if (f != nullptr) {
        std::fwrite(bytes.data(), 1, bytes.size(), f);
        std::fclose(f);
    }
}

void setUp()
{
    char pattern[] = "/tmp/bench_mapfile_XXXXXX";
    if (mkdtemp(pattern) == nullptr)
        std::abort();
    resDir = std::string(pattern) + "/";
    writeHeightBitmap(resDir + "heights.bmp");
    buildSource();
    quietly([] { source->saveTexTilesAndEnv("world.map"); });
}

void BM_MapSave(benchmark::State& state)
{
    for (auto _ : state)
        quietly([] { source->saveTexTilesAndEnv("saved.map"); });
    state.counters["bytes"] = static_cast<double>(std::filesystem::file_size(resDir + "saved.map"));
}

void BM_MapWriteSameBytes(benchmark::State& state)
{
    const std::vector<char> bytes = readAll(resDir + "world.map");
    for (auto _ : state)
        writeAll(resDir + "raw.map", bytes);
    state.counters["bytes"] = static_cast<double>(bytes.size());
}

void BM_MapLoad(benchmark::State& state)
{
    auto t = std::make_unique<LGLTerrain>();
    t->setResPath(resDir);
    for (auto _ : state)
        quietly([&] { t->loadTexTilesAndEnv("world.map"); });
    state.counters["objects"] = t->numObjects;
    state.counters["tiles"] = static_cast<double>(t->numTiles) * t->numTiles;
}

void BM_MapReadSameBytes(benchmark::State& state)
{
    for (auto _ : state) {
        std::vector<char> bytes = readAll(resDir + "world.map");
        benchmark::DoNotOptimize(bytes.data());
    }
}

void BM_HeightMapLoad(benchmark::State& state)
{
    auto t = std::make_unique<LGLTerrain>();
    t->setResPath(resDir);
    t->heightMapFile = "heights.bmp";
    t->worldSize = kWorld;
    for (auto _ : state)
        t->loadHeightMap();
    state.counters["samples"] = static_cast<double>(t->numSamples) * t->numSamples;
}

void BM_HeightMapReadSameBytes(benchmark::State& state)
{
    for (auto _ : state) {
        std::vector<char> bytes = readAll(resDir + "heights.bmp");
        benchmark::DoNotOptimize(bytes.data());
    }
}

void BM_HeightMapSave(benchmark::State& state)
{
    auto t = std::make_unique<LGLTerrain>();
    t->setResPath(resDir);
    t->heightMapFile = "heights.bmp";
    t->worldSize = kWorld;
    t->loadHeightMap();
    for (auto _ : state)
        quietly([&] { t->saveHeightMap(resDir + "saved_heights.bmp"); });
}

}  // namespace

BENCHMARK(BM_MapSave)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_MapWriteSameBytes)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_MapLoad)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_MapReadSameBytes)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_HeightMapLoad)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_HeightMapReadSameBytes)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_HeightMapSave)->Unit(benchmark::kMillisecond)->UseRealTime();

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    setUp();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    std::filesystem::remove_all(resDir);
    return 0;
}
