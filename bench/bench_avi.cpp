// bench_avi.cpp -- frames per second of LGLAVI::grabAVIFrame in sequential playback of a 640 x 480
// MPEG-4 movie (AVI, 25 frames per second, 10 s) that the benchmark makes with the ffmpeg program.
//
// The items per second of BM_GrabAVIFrameSequential are the frames per second a game gets from
// grabAVIFrame (decode, scale to 512 x 512, upload). The other two split that cost: decoding and
// scaling alone, and the texture upload alone. Needs an X display for its hidden GLUT window.
#include <ostrum_gl/effects/LGLAVI.h>
#include <ostrum_gl/platform/LGLMovieDecoder.h>

#include <GL/freeglut.h>
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

std::string moviePath;

void BM_GrabAVIFrameSequential(benchmark::State& state)
{
    LGLAVI avi;
    int width = 0, height = 0;
    avi.createMovieTexture(moviePath, width, height);
    int n = 0;
    for (auto _ : state) {
        avi.grabAVIFrame(n);
        // Back to the start after the last frame, as looping playback does.
        n = (n + 1) % avi.lastFrame;
    }
    glFinish();
    state.SetItemsProcessed(state.iterations());
    state.counters["seeks"] = avi.stream->seekCount();
    avi.closeAVI();
}
BENCHMARK(BM_GrabAVIFrameSequential)->Unit(benchmark::kMillisecond)->MinTime(3.0)->UseRealTime();

void BM_DecodeAndScaleSequential(benchmark::State& state)
{
    LGLMovieDecoder decoder;
    decoder.openStream(moviePath);
    decoder.openFrameDecoder();
    LGLMovieDecoder::Scaler scaler;
    std::vector<unsigned char> bits(static_cast<size_t>(LGLAVI::kTextureSize) * LGLAVI::kTextureSize * 3);
    const int length = decoder.streamInfo().length;
    int n = 0;
    for (auto _ : state) {
        decoder.decodeFrame(n);
        scaler.draw(decoder, bits.data(), LGLAVI::kTextureSize, LGLAVI::kTextureSize);
        n = (n + 1) % length;
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_DecodeAndScaleSequential)->Unit(benchmark::kMillisecond)->MinTime(3.0)->UseRealTime();

void BM_UploadOnly(benchmark::State& state)
{
    LGLAVI avi;
    int width = 0, height = 0;
    avi.createMovieTexture(moviePath, width, height);
    avi.grabAVIFrame(0);
    for (auto _ : state) {
        glBindTexture(GL_TEXTURE_2D, avi.textures[0]);
        glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, LGLAVI::kTextureSize, LGLAVI::kTextureSize, GL_RGB, GL_UNSIGNED_BYTE,
                        avi.pixels);
    }
    glFinish();
    state.SetItemsProcessed(state.iterations());
    avi.closeAVI();
}
BENCHMARK(BM_UploadOnly)->Unit(benchmark::kMillisecond)->MinTime(1.0)->UseRealTime();

}  // namespace

int main(int argc, char** argv)
{
    glutInit(&argc, argv);
    glutInitDisplayMode(GLUT_RGBA | GLUT_DOUBLE);
    glutInitWindowSize(64, 64);
    glutCreateWindow("bench_avi");
    glutHideWindow();

    char dir[] = "/tmp/bench_avi_XXXXXX";
    if (mkdtemp(dir) == nullptr) {
        std::printf("bench_avi: could not make a temporary folder\n");
        return 1;
    }
    moviePath = std::string(dir) + "/movie640x480.avi";
    std::string command = "ffmpeg -nostdin -v error -y -f lavfi -i testsrc=s=640x480:r=25:d=10 -c:v mpeg4 -q:v 4 '" +
                          moviePath + "'";
    if (std::system(command.c_str()) != 0) {
        std::printf("bench_avi: could not make the movie with: %s\n", command.c_str());
        return 1;
    }

    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();

    std::remove(moviePath.c_str());
    rmdir(dir);
    return 0;
}
