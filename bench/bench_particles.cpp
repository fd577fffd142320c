// bench_particles.cpp -- handle and render per frame of LGLParticleSystem: 10,000 sparks drawn as debris
// models, and 500 smoke particles drawn as camera-facing textured quads, on this machine's Mesa.
//
// The debris model is a small real model (a boulder of 16 faces) copied into a temporary folder; the
// smoke textures are grey pictures that the benchmark makes with the ffmpeg program. Needs an X display
// for its GLUT window (800 x 600).
#include <ostrum_gl/effects/LGLParticleSystem.h>
#include <ostrum_gl/frame/LGLCamera.h>

#include <GL/freeglut.h>
#include <GL/glu.h>
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace {

std::string workDir;

// How many particles a frame really moves and draws, printed beside each figure.
int aliveCount(const LGLParticleSystem& system)
{
    int alive = 0;
    for (const LGLParticleSystem::tParticle& p : system.particles)
        alive += p.alive ? 1 : 0;
    return alive;
}

// Sparks are a protected trigger: a game's emitter class fires them; so does this one.
class SparkEmitter : public LGLParticleSystem {
public:
    void fire() { triggerSparksEmission(); }
};

LGLCamera benchCamera()
{
    LGLCamera camera;
    camera.SetPosAndView(0, 200, 1500, 0, 200, 0, 0, 1, 0);
    return camera;
}

void setUpView()
{
    glViewport(0, 0, 800, 600);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    gluPerspective(17.5 * 3, 800.0 / 600.0, 5.0, 5000.0);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    benchCamera().Look();
}

// Sparks that live for ever (respawns -1) so that every frame moves and draws all of them.
void makeSparks(SparkEmitter& sparks, int count)
{
    sparks.set(1.0, count, -1, 40, 1.0f, 0.01f, 0.005f, 20.0f, 0.0f, 1.0f, 0.8f, 0.3f, 0, 200, 0, 0.0, -0.5, 0.0,
               LGLParticleSystem::FADE_RISE_FALL);
    sparks.fire();
}

void makeSmoke(LGLParticleSystem& smoke, int count)
{
    smoke.smoke = true;
    smoke.set(1.0, count, -1, 10, 0.2f, 0.005f, 0.002f, 10.0f, 0.5f, 0.6f, 0.6f, 0.6f, 0, 0, 0, 0.0, 0.2, 0.0,
              LGLParticleSystem::FADE_SIGMOID);
    smoke.triggerEmission();
    for (int i = 0; i < 2000; ++i)  // let the smoke spread out before measuring
        smoke.handle();
}

void BM_SparksHandle(benchmark::State& state)
{
    SparkEmitter sparks;
    makeSparks(sparks, static_cast<int>(state.range(0)));
    for (auto _ : state)
        sparks.handle();
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.counters["alive"] = aliveCount(sparks);
}
BENCHMARK(BM_SparksHandle)->Arg(10000)->Unit(benchmark::kMicrosecond);

void BM_SparksRender(benchmark::State& state)
{
    SparkEmitter sparks;
    makeSparks(sparks, static_cast<int>(state.range(0)));
    for (int i = 0; i < 50; ++i)
        sparks.handle();
    const LGLCamera camera = benchCamera();
    for (auto _ : state) {
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        setUpView();
        sparks.render(camera);
        glFinish();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.counters["alive"] = aliveCount(sparks);
}
BENCHMARK(BM_SparksRender)->Arg(10000)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_SmokeHandle(benchmark::State& state)
{
    LGLParticleSystem smoke;
    makeSmoke(smoke, static_cast<int>(state.range(0)));
    for (auto _ : state)
        smoke.handle();
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.counters["alive"] = aliveCount(smoke);
}
BENCHMARK(BM_SmokeHandle)->Arg(500)->Unit(benchmark::kMicrosecond);

void BM_SmokeRender(benchmark::State& state)
{
    LGLParticleSystem smoke;
    makeSmoke(smoke, static_cast<int>(state.range(0)));
    const LGLCamera camera = benchCamera();
    for (auto _ : state) {
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        setUpView();
        smoke.render(camera);
        glFinish();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.counters["alive"] = aliveCount(smoke);
}
BENCHMARK(BM_SmokeRender)->Arg(500)->Unit(benchmark::kMillisecond)->UseRealTime();

bool prepareFiles()
{
    char pattern[] = "/tmp/ostrum_bench_particles_XXXXXX";
    if (mkdtemp(pattern) == nullptr)
        return false;
    workDir = std::string(pattern) + "/";
    std::error_code ec;
    std::filesystem::copy_file(std::string(OSTRUM_ASSETS_DIR) + "/3ds/anim8or-projects/boulder_mesh_04.3ds",
                               workDir + "boulder.3ds", ec);
    if (ec)
        return false;
    for (const char* name : {"smoke_24_256.bmp", "smoke_02_01.bmp", "smoke_03_01.bmp"}) {
        const std::string command = "ffmpeg -nostdin -v error -y -f lavfi -i color=c=gray:s=64x64 -frames:v 1 '" +
                                    workDir + name + "'";
        if (std::system(command.c_str()) != 0)
            return false;
    }
    return true;
}

}  // namespace

int main(int argc, char** argv)
{
    glutInit(&argc, argv);
    glutInitDisplayMode(GLUT_RGBA | GLUT_DOUBLE | GLUT_DEPTH);
    glutInitWindowSize(800, 600);
    glutCreateWindow("bench_particles");
    if (!prepareFiles()) {
        std::fprintf(stderr, "bench_particles: could not prepare the model and smoke textures\n");
        return 1;
    }
    LGLParticleSystem::init();
    LGLParticleSystem::loadSmokeTextures(workDir);
    LGLParticleSystem::load3DSModel(workDir + "boulder.3ds");
    glEnable(GL_DEPTH_TEST);

    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();

    LGLParticleSystem::dispose();
    std::filesystem::remove_all(workDir);
    return 0;
}
