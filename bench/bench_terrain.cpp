// bench_terrain.cpp -- terrain costs on a 256 x 256-tile map over a 512 x 512 height grid: the corner
// table, the height brush, texture painting, the tile sort, display-list compilation and one frame
// at 800 x 600, with the texture switches per frame with and without the tile sort.
#include <ostrum_core/LImage.h>
#include <ostrum_gl/scenery/LGLTerrain.h>

#include <GL/freeglut.h>
#include <GL/gl.h>
#include <GL/glu.h>
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

const int kSamples = 512;
const int kTiles = 256;
const int kWorld = 8192;  // 16 units per sample, 32 per tile
const int kTextures = 8;

std::unique_ptr<LGLTerrain> terrain;
std::string resDir;

// Runs `call` with standard output thrown away (the tile sort's listing, the display-list lines).
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

void writeSolidBmp(const std::string& path, int side, int r, int g, int b)
{
    BITMAPINFO info;
    std::memset(&info, 0, sizeof info);
    info.bmiHeader.biSize = 40;
    info.bmiHeader.biWidth = side;
    info.bmiHeader.biHeight = side;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 24;
    info.bmiHeader.biSizeImage = static_cast<uint32_t>(side * side * 3);
    std::vector<char> bits(static_cast<size_t>(side) * side * 3);
    for (size_t i = 0; i < bits.size(); i += 3) {
        bits[i] = static_cast<char>(b);
        bits[i + 1] = static_cast<char>(g ^ static_cast<int>(i & 8));
        bits[i + 2] = static_cast<char>(r);
    }
    LImage::SaveDIBitmap(path.c_str(), &info, bits.data());
}

// Rolling hills on the grid, eight textures painted in soft patches, textures loaded.
void buildTerrain()
{
    terrain = std::make_unique<LGLTerrain>();
    terrain->init();
    char pattern[] = "/tmp/ostrum_bench_terrain_XXXXXX";
    resDir = std::string(mkdtemp(pattern)) + "/";
    std::filesystem::create_directories(resDir + LGLTerrain::tileCategoryDir);
    terrain->setResPath(resDir);
    for (int i = 0; i < kTextures; ++i) {
        const std::string name = "tile" + std::to_string(i) + ".bmp";
        writeSolidBmp(terrain->tileCategoryPath + name, 64, 30 * i, 255 - 30 * i, 100);
        terrain->texNames[i] = name;
        terrain->texRepeat[i] = 64 << (i % 3);
    }
    terrain->numTextures = kTextures;
    quietly([] { terrain->loadTextures(); });

    const size_t count = static_cast<size_t>(kSamples) * kSamples;
    terrain->heights = static_cast<unsigned char*>(std::malloc(count));
    terrain->heightsFine = static_cast<double*>(std::malloc(count * sizeof(double)));
    for (int z = 0; z < kSamples; ++z) {
        for (int x = 0; x < kSamples; ++x) {
            const double h = 100 + 60 * std::sin(x * 0.031) * std::cos(z * 0.023) + 30 * std::sin((x + z) * 0.071);
            terrain->heights[z * kSamples + x] = static_cast<unsigned char>(h);
            terrain->heightsFine[z * kSamples + x] = static_cast<unsigned char>(h);
        }
    }
    terrain->numSamples = kSamples;
    terrain->worldSize = kWorld;
    terrain->unitsPerSample = kWorld / kSamples;
    terrain->numTiles = kTiles;
    terrain->tileSize = kWorld / kTiles;
    terrain->heightMapFile = "bench.bmp";
    terrain->edgeHeight = 60;
    terrain->bottomTexA = 0;
    terrain->bottomTexB = 1;
    terrain->farPlainTiles[0] = TerrainTile{0, 1, 1.0};
    terrain->initTiles(0);
    std::mt19937 random(12345);
    for (int stroke = 0; stroke < 600; ++stroke) {
        const int tex = static_cast<int>(random() % kTextures);
        const int x = static_cast<int>(random() % kTiles);
        const int z = static_cast<int>(random() % kTiles);
        const int radius = 3 + static_cast<int>(random() % 8);
        terrain->setTerrainTileTextureAt(tex, x, z, radius, 0.4 + (random() % 60) / 100.0, 2);
    }
    terrain->updateTileCoordinates();
    quietly([] { terrain->generateTileSort(); });
}

// The view of one frame: 800 x 600, 45-degree perspective, looking over the map from one edge.
void setFrameView()
{
    glViewport(0, 0, 800, 600);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    gluPerspective(45.0, 800.0 / 600.0, 1.0, 30000.0);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    gluLookAt(kWorld / 2.0, 1200.0, kWorld + 1500.0, kWorld / 2.0, 0.0, kWorld / 2.0, 0.0, 1.0, 0.0);
}

void BM_UpdateTileCoordinates(benchmark::State& state)
{
    for (auto _ : state)
        terrain->updateTileCoordinates();
    state.SetItemsProcessed(state.iterations() * kTiles * kTiles);
}
BENCHMARK(BM_UpdateTileCoordinates)->Unit(benchmark::kMillisecond);

// The default brush (radius 10, strength 10); every stroke also refreshes the corner table.
void BM_ElevateHeight(benchmark::State& state)
{
    int sign = 1;
    for (auto _ : state) {
        terrain->elevateHeight(kWorld / 2, kWorld / 2, sign);
        sign = -sign;
    }
}
BENCHMARK(BM_ElevateHeight)->Unit(benchmark::kMillisecond);

void BM_SetTerrainTileTextureAt(benchmark::State& state)
{
    terrain->pushTiles();
    int k = 0;
    for (auto _ : state) {
        terrain->setTerrainTileTextureAt(k % kTextures, 40 + (k * 37) % 176, 40 + (k * 53) % 176, 6, 0.5, 3);
        ++k;
    }
    terrain->popTiles();
}
BENCHMARK(BM_SetTerrainTileTextureAt)->Unit(benchmark::kMicrosecond);

void BM_GenerateTileSort(benchmark::State& state)
{
    for (auto _ : state)
        quietly([] { terrain->generateTileSort(); });
}
BENCHMARK(BM_GenerateTileSort)->Unit(benchmark::kMillisecond);

// Compiles the whole terrain drawing into a display list; argument 1 draws through the tile sort.
void BM_GenerateDL(benchmark::State& state)
{
    terrain->useTileSort = state.range(0) != 0;
    setFrameView();
    for (auto _ : state) {
        quietly([] { terrain->generateDL(); });
        state.PauseTiming();
        glDeleteLists(terrain->displayList, 1);
        state.ResumeTiming();
    }
    state.counters["switches"] = LGLTerrain::textureSwitches;
}
BENCHMARK(BM_GenerateDL)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

// One frame: clear, replay the list, finish; with the texture switches the list holds.
void BM_RenderDLFrame(benchmark::State& state)
{
    terrain->useTileSort = state.range(0) != 0;
    setFrameView();
    quietly([] { terrain->generateDL(); });
    const int switches = LGLTerrain::textureSwitches;
    glEnable(GL_DEPTH_TEST);
    for (auto _ : state) {
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        terrain->renderDL();
        glFinish();
    }
    glutSwapBuffers();
    glDisable(GL_DEPTH_TEST);
    glDeleteLists(terrain->displayList, 1);
    state.counters["switches"] = switches;
}
BENCHMARK(BM_RenderDLFrame)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

// The same frame drawn directly, for comparison.
void BM_RenderFrame(benchmark::State& state)
{
    terrain->useTileSort = state.range(0) != 0;
    setFrameView();
    glEnable(GL_DEPTH_TEST);
    for (auto _ : state) {
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        terrain->render();
        glFinish();
    }
    glDisable(GL_DEPTH_TEST);
    state.counters["switches"] = LGLTerrain::textureSwitches;
}
BENCHMARK(BM_RenderFrame)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv)
{
    glutInit(&argc, argv);
    glutInitDisplayMode(GLUT_RGBA | GLUT_DOUBLE | GLUT_DEPTH);
    glutInitWindowSize(800, 600);
    glutCreateWindow("bench_terrain");
    glutDisplayFunc([] {});
    for (int i = 0; i < 5; ++i)
        glutMainLoopEvent();
    buildTerrain();

    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();

    terrain->dispose();
    terrain.reset();
    std::filesystem::remove_all(resDir);
    return 0;
}
