// LGLAVITest.cpp -- movie textures on real movies: sizes, frame timing by the clock, looping and
// stopping, the uploaded pixels, seeking, other containers, the real AVI files and damaged files.
#include <ostrum_gl/effects/LGLAVI.h>
#include <ostrum_gl/platform/LGLPlatform.h>

#include "TestSupport.h"

#include <GL/gl.h>
#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <map>
#include <set>
#include <string>
#include <thread>
#include <vector>

using ostrum_test::assetsDir;
using ostrum_test::GLTest;
using ostrum_test::LastLineIs;
using ostrum_test::makeTempDir;
using ostrum_test::readFile;
using ostrum_test::writeFile;

namespace {

constexpr int kSize = LGLAVI::kTextureSize;

// ---------------------------------------------------------------- movies made with ffmpeg

// Movies are made once per test process; death-test children find them through the environment
// instead of making them again.
std::string movieDir()
{
    static const std::string dir = [] {
        if (const char* inherited = std::getenv("OSTRUM_TEST_MOVIE_DIR"))
            return std::string(inherited);
        std::string made = makeTempDir();
        setenv("OSTRUM_TEST_MOVIE_DIR", made.c_str(), 1);
        return made;
    }();
    return dir;
}

int runCommand(const std::string& command)
{
    int status = std::system(command.c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// Runs ffmpeg once per process for each name: `input` are its arguments before the output file.
std::string makeMovie(const std::string& name, const std::string& input)
{
    static std::map<std::string, std::string> made;
    auto found = made.find(name);
    if (found != made.end())
        return found->second;
    std::string path = movieDir() + "/" + name;
    if (!readFile(path).empty())
        return made[name] = path;
    std::string command = "ffmpeg -nostdin -v error -y " + input + " '" + path + "' 2>&1";
    EXPECT_EQ(runCommand(command), 0) << command;
    made[name] = path;
    return path;
}

// 50 frames of 64 x 48 at 25 frames per second; frame N is grey (5N, 5N, 5N).
const std::string kRampSource =
    "-f lavfi -i \"nullsrc=s=64x48:r=25:d=2,format=rgb24,geq=r='N*5':g='N*5':b='N*5'\" ";
// Key frames every 10 frames only, whatever the pictures do.
const std::string kMpeg4 = "-c:v mpeg4 -q:v 2 -g 10 -sc_threshold 1000000000 ";

std::string rampMpeg4Avi() { return makeMovie("ramp_mpeg4.avi", kRampSource + kMpeg4); }
std::string rampMjpegAvi() { return makeMovie("ramp_mjpeg.avi", kRampSource + "-c:v mjpeg -q:v 2 "); }
std::string rampMp4() { return makeMovie("ramp.mp4", kRampSource + kMpeg4); }
std::string rampWebm() { return makeMovie("ramp.webm", kRampSource + "-c:v libvpx -crf 4 -b:v 2M -g 10 "); }
std::string rampMkv() { return makeMovie("ramp.mkv", kRampSource + "-c:v ffv1 "); }

// 25 frames per second, 2 s, 320 x 240 of the colour R 0x33, G 0x66, B 0x99.
std::string solidLosslessAvi()
{
    return makeMovie("solid_ffv1.avi", "-f lavfi -i color=c=0x336699:s=320x240:r=25:d=2,format=bgr0 -c:v ffv1 ");
}
std::string solidMjpegAvi()
{
    return makeMovie("solid_mjpeg.avi", "-f lavfi -i color=c=0x336699:s=320x240:r=25:d=2 -c:v mjpeg -q:v 2 ");
}
std::string solidMpeg4Avi()
{
    return makeMovie("solid_mpeg4.avi", "-f lavfi -i color=c=0x336699:s=320x240:r=25:d=2 " + kMpeg4);
}

// Quadrants, lossless: top left red, top right green, bottom left blue, bottom right white.
std::string quadrantMovie(const std::string& name, int width, int height)
{
    int w = width / 2, h = height / 2;
    std::string size = std::to_string(width) + "x" + std::to_string(height);
    std::string filter = "color=c=red:s=" + size + ":r=25:d=0.2,format=bgr24," +
                         "drawbox=x=" + std::to_string(w) + ":y=0:w=" + std::to_string(w) + ":h=" + std::to_string(h) +
                         ":color=lime:t=fill," + "drawbox=x=0:y=" + std::to_string(h) + ":w=" + std::to_string(w) +
                         ":h=" + std::to_string(h) + ":color=blue:t=fill," + "drawbox=x=" + std::to_string(w) +
                         ":y=" + std::to_string(h) + ":w=" + std::to_string(w) + ":h=" + std::to_string(h) +
                         ":color=white:t=fill";
    return makeMovie(name, "-f lavfi -i \"" + filter + "\" -vf format=bgr0 -c:v ffv1 ");
}

std::string oneFrameMovie()
{
    return makeMovie("one_frame.avi", kRampSource + "-frames:v 1 " + kMpeg4);
}

// 10 frames (0.4 s) of the ramp.
std::string shortMovie()
{
    return makeMovie("short.avi", kRampSource + "-frames:v 10 " + kMpeg4);
}

std::string asset(const std::string& name)
{
    return assetsDir() + "/avi/" + name;
}

// ---------------------------------------------------------------- reading the texture back

using Texels = std::vector<unsigned char>;

Texels textureBytes(unsigned int texture)
{
    Texels bytes(static_cast<size_t>(kSize) * kSize * 3, 0xAB);
    glBindTexture(GL_TEXTURE_2D, texture);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glGetTexImage(GL_TEXTURE_2D, 0, GL_RGB, GL_UNSIGNED_BYTE, bytes.data());
    return bytes;
}

// The three bytes of texel (x, y) as they lie: y = 0 is the first row in memory.
std::array<int, 3> texel(const Texels& bytes, int x, int y)
{
    size_t at = (static_cast<size_t>(y) * kSize + x) * 3;
    return {bytes[at], bytes[at + 1], bytes[at + 2]};
}

// The mean of all bytes of the texture.
double meanByte(const Texels& bytes)
{
    double sum = 0;
    for (unsigned char b : bytes)
        sum += b;
    return sum / static_cast<double>(bytes.size());
}

// The largest difference of any byte from `value`.
int largestDifference(const Texels& bytes, const std::array<int, 3>& value)
{
    int worst = 0;
    for (size_t i = 0; i < bytes.size(); ++i)
        worst = std::max(worst, std::abs(bytes[i] - value[i % 3]));
    return worst;
}

void expectTexelNear(const Texels& bytes, int x, int y, std::array<int, 3> expected, int tolerance)
{
    auto got = texel(bytes, x, y);
    for (int c = 0; c < 3; ++c)
        EXPECT_NEAR(got[c], expected[c], tolerance) << "texel (" << x << ", " << y << ") byte " << c;
}

// The frame of the grey ramp that the texture shows.
double rampGrey(const LGLAVI& avi)
{
    return meanByte(textureBytes(avi.textures[0]));
}

struct Movie {
    LGLAVI avi;
    int width = -1;
    int height = -1;
};

// ---------------------------------------------------------------- fixtures

class LGLAVITest : public GLTest {
protected:
    void SetUp() override
    {
        GLTest::SetUp();
        LGLPlatform::setMessageHandler(recordMessage);
        messages().clear();
    }
    void TearDown() override { LGLPlatform::setMessageHandler(nullptr); }

    static std::vector<std::string>& messages()
    {
        static std::vector<std::string> list;
        return list;
    }
    static void recordMessage(const std::string& text, const std::string& caption)
    {
        messages().push_back(caption + ": " + text);
    }

    static void open(LGLAVI& avi, const std::string& path, int& width, int& height)
    {
        avi.createMovieTexture(path, width, height);
    }
    static void open(LGLAVI& avi, const std::string& path)
    {
        int width = 0, height = 0;
        avi.createMovieTexture(path, width, height);
    }

    // Grabs frame n of a grey ramp and checks that the texture shows it.
    static void expectRampFrame(LGLAVI& avi, int n, double tolerance)
    {
        avi.grabAVIFrame(n);
        EXPECT_NE(avi.frameData, nullptr) << "frame " << n;
        EXPECT_NEAR(rampGrey(avi), 5.0 * n, tolerance) << "frame " << n;
    }
};

using LGLAVIDeathTest = ::testing::Test;

}  // namespace

// ---------------------------------------------------------------- opening and sizes

TEST_F(LGLAVITest, CreateMovieTextureReportsTheMovieFrameSize)
{
    LGLAVI avi;
    int width = 0, height = 0;
    avi.createMovieTexture(solidMjpegAvi(), width, height);
    EXPECT_EQ(width, 320);
    EXPECT_EQ(height, 240);
    EXPECT_EQ(avi.movieWidth, 320);
    EXPECT_EQ(avi.movieHeight, 240);
    EXPECT_EQ(avi.streamInfo.frame.right - avi.streamInfo.frame.left, 320);
    EXPECT_EQ(avi.streamInfo.frame.bottom - avi.streamInfo.frame.top, 240);
    EXPECT_TRUE(messages().empty());
}

TEST_F(LGLAVITest, MovieOfTwentyFiveFramesPerSecondHasFortyMillisecondsPerFrame)
{
    for (const std::string& path : {solidMjpegAvi(), solidMpeg4Avi()}) {
        LGLAVI avi;
        open(avi, path);
        EXPECT_EQ(avi.lastFrame, 50) << path;
        // 50 frames last 2000 ms.
        EXPECT_EQ(avi.streamInfo.lengthMs, 2000) << path;
        EXPECT_EQ(avi.msPerFrame, 2000 / 50) << path;
        EXPECT_EQ(avi.streamInfo.rate, 25);
        EXPECT_EQ(avi.streamInfo.scale, 1);
    }
}

TEST_F(LGLAVITest, CreateMovieTextureStartsPlaybackAtFrameZeroNow)
{
    LGLAVI avi;
    avi.elapsed = 77;
    avi.frame = 9;
    long before = LGLAVI::clockMs();
    open(avi, solidMjpegAvi());
    long after = LGLAVI::clockMs();
    EXPECT_EQ(avi.elapsed, 0);
    EXPECT_EQ(avi.frame, 0);
    EXPECT_GE(avi.start, before);
    EXPECT_LE(avi.start, after);
}

TEST_F(LGLAVITest, BitmapHeaderDescribesA512By512TwentyFourBitBitmap)
{
    LGLAVI avi;
    open(avi, solidMjpegAvi());
    EXPECT_EQ(avi.bitmapHeader.biSize, 40u);
    EXPECT_EQ(avi.bitmapHeader.biWidth, 512);
    EXPECT_EQ(avi.bitmapHeader.biHeight, 512);
    EXPECT_EQ(avi.bitmapHeader.biPlanes, 1);
    EXPECT_EQ(avi.bitmapHeader.biBitCount, 24);
    EXPECT_EQ(avi.bitmapHeader.biCompression, static_cast<uint32_t>(BI_RGB));
    EXPECT_EQ(avi.bitmapHeader.biSizeImage, 0u);
    EXPECT_EQ(avi.bitmapHeader.biXPelsPerMeter, 0);
    EXPECT_EQ(avi.bitmapHeader.biYPelsPerMeter, 0);
    EXPECT_EQ(avi.bitmapHeader.biClrUsed, 0u);
    EXPECT_EQ(avi.bitmapHeader.biClrImportant, 0u);
    EXPECT_NE(avi.pixels, nullptr);
    EXPECT_EQ(avi.pixels, avi.bitmap.get());
    EXPECT_EQ(avi.dc, nullptr);
}

TEST_F(LGLAVITest, CreateMovieTextureReservesFiveThousandTextureNames)
{
    LGLAVI avi;
    open(avi, solidMjpegAvi());
    std::set<unsigned int> names(std::begin(avi.textures), std::end(avi.textures));
    EXPECT_EQ(names.size(), 5000u);
    EXPECT_EQ(names.count(0u), 0u);
    // The names are taken: OpenGL hands out none of them again.
    unsigned int next = 0;
    glGenTextures(1, &next);
    EXPECT_EQ(names.count(next), 0u);
    glDeleteTextures(1, &next);
    // Only the first one was ever bound and defined.
    EXPECT_TRUE(glIsTexture(avi.textures[0]));
    EXPECT_FALSE(glIsTexture(avi.textures[1]));
    EXPECT_FALSE(glIsTexture(avi.textures[4999]));
}

TEST_F(LGLAVITest, MovieTextureIsA512By512RgbTextureWithNearestMinifyingAndLinearMagnifying)
{
    LGLAVI avi;
    open(avi, solidMjpegAvi());
    EXPECT_TRUE(glIsEnabled(GL_TEXTURE_2D));
    GLint bound = 0;
    glGetIntegerv(GL_TEXTURE_BINDING_2D, &bound);
    EXPECT_EQ(static_cast<unsigned int>(bound), avi.textures[0]);
    GLint width = 0, height = 0, format = 0, minFilter = 0, magFilter = 0;
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &width);
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_HEIGHT, &height);
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_INTERNAL_FORMAT, &format);
    glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, &minFilter);
    glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, &magFilter);
    EXPECT_EQ(width, 512);
    EXPECT_EQ(height, 512);
    EXPECT_EQ(format, GL_RGB);
    EXPECT_EQ(minFilter, GL_NEAREST);
    EXPECT_EQ(magFilter, GL_LINEAR);
}

TEST_F(LGLAVITest, TextureIsBlackUntilTheFirstFrameIsGrabbed)
{
    LGLAVI avi;
    open(avi, solidMjpegAvi());
    EXPECT_EQ(largestDifference(textureBytes(avi.textures[0]), {0, 0, 0}), 0);
}

// ---------------------------------------------------------------- playback by the clock

TEST_F(LGLAVITest, ThousandMillisecondsAfterStartTheFrameIsTwentyFive)
{
    LGLAVI avi;
    open(avi, solidMjpegAvi());
    ASSERT_EQ(avi.msPerFrame, 40);
    avi.start = LGLAVI::clockMs() - 1000;
    avi.handle(false);
    // The clock may have moved on a little between setting start and handle.
    EXPECT_GE(avi.elapsed, 1000);
    EXPECT_LT(avi.elapsed, 1200);
    EXPECT_EQ(avi.frame, avi.elapsed / 40);
    if (avi.elapsed < 1040) {
        EXPECT_EQ(avi.frame, 25);
    }
}

TEST_F(LGLAVITest, HandleFollowsTheWallClock)
{
    LGLAVI avi;
    open(avi, solidMjpegAvi());
    avi.rewind();
    std::this_thread::sleep_for(std::chrono::milliseconds(130));
    avi.handle(false);
    EXPECT_GE(avi.elapsed, 130);
    EXPECT_LT(avi.elapsed, 1000);
    EXPECT_EQ(avi.frame, avi.elapsed / 40);
    EXPECT_GE(avi.frame, 3);
}

TEST_F(LGLAVITest, HandleDoesNotDecode)
{
    LGLAVI avi;
    open(avi, rampMpeg4Avi());
    avi.start = LGLAVI::clockMs() - 400;
    avi.handle(false);
    EXPECT_EQ(avi.stream->decodedFrameCount(), 0);
    EXPECT_EQ(largestDifference(textureBytes(avi.textures[0]), {0, 0, 0}), 0);
}

TEST_F(LGLAVITest, WithoutLoopingTheFrameStaysAtTheLastFrameAndTheMovieIsAtEnd)
{
    LGLAVI avi;
    open(avi, solidMjpegAvi());
    avi.start = LGLAVI::clockMs() - 5000;
    avi.handle(false);
    EXPECT_EQ(avi.frame, 49);
    EXPECT_GE(avi.elapsed, 5000);
    EXPECT_TRUE(avi.movieAtEnd());
    avi.handle(false);
    EXPECT_EQ(avi.frame, 49);
    EXPECT_TRUE(avi.movieAtEnd());
}

TEST_F(LGLAVITest, WithLoopingTheFrameReturnsToZero)
{
    LGLAVI avi;
    open(avi, solidMjpegAvi());
    avi.start = LGLAVI::clockMs() - 5000;
    long before = LGLAVI::clockMs();
    avi.handle(true);
    EXPECT_EQ(avi.frame, 0);
    EXPECT_EQ(avi.elapsed, 0);
    EXPECT_GE(avi.start, before);
    EXPECT_FALSE(avi.movieAtEnd());
}

TEST_F(LGLAVITest, HandleLoopsOnlyOnceTheLastFrameHasPassed)
{
    LGLAVI avi;
    open(avi, solidMjpegAvi());
    // 1990 ms: frame 49, the last one, still on show.
    avi.start = LGLAVI::clockMs() - 1960;
    avi.handle(true);
    if (avi.elapsed < 2000) {
        EXPECT_EQ(avi.frame, 49);
        EXPECT_TRUE(avi.movieAtEnd());
    }
}

TEST_F(LGLAVITest, MovieAtEndFromTheLastFrameOn)
{
    LGLAVI avi;
    open(avi, solidMjpegAvi());
    avi.frame = 47;
    EXPECT_FALSE(avi.movieAtEnd());
    avi.frame = 48;
    EXPECT_FALSE(avi.movieAtEnd());
    avi.frame = 49;
    EXPECT_TRUE(avi.movieAtEnd());
    avi.frame = 50;
    EXPECT_TRUE(avi.movieAtEnd());
}

TEST_F(LGLAVITest, RewindRestartsAtFrameZeroNow)
{
    LGLAVI avi;
    open(avi, solidMjpegAvi());
    avi.elapsed = 1234;
    avi.frame = 30;
    avi.start = 5;
    long before = LGLAVI::clockMs();
    avi.rewind();
    long after = LGLAVI::clockMs();
    EXPECT_EQ(avi.elapsed, 0);
    EXPECT_EQ(avi.frame, 0);
    EXPECT_GE(avi.start, before);
    EXPECT_LE(avi.start, after);
}

TEST_F(LGLAVITest, ClockIsMonotonicMilliseconds)
{
    long a = LGLAVI::clockMs();
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    long b = LGLAVI::clockMs();
    // CPU time would hardly move while sleeping; wall milliseconds do.
    EXPECT_GE(b - a, 50);
    EXPECT_LT(b - a, 1000);
}

// ---------------------------------------------------------------- the pixels

TEST_F(LGLAVITest, SolidColourFrameIsUploadedAsBlueGreenRedBytes)
{
    LGLAVI avi;
    open(avi, solidLosslessAvi());
    avi.grabAVIFrame(10);
    EXPECT_NE(avi.frameData, nullptr);
    // R 0x33, G 0x66, B 0x99 lie as B, G, R in every texel, declared as RGB and never swizzled.
    Texels bytes = textureBytes(avi.textures[0]);
    EXPECT_EQ(largestDifference(bytes, {0x99, 0x66, 0x33}), 0);
}

TEST_F(LGLAVITest, SolidColourMjpegAndMpeg4FramesAreUploadedAsBlueGreenRedBytes)
{
    for (const std::string& path : {solidMjpegAvi(), solidMpeg4Avi()}) {
        LGLAVI avi;
        open(avi, path);
        avi.grabAVIFrame(0);
        Texels bytes = textureBytes(avi.textures[0]);
        // Lossy YUV coding moves a flat colour by a few levels at most.
        EXPECT_LE(largestDifference(bytes, {0x99, 0x66, 0x33}), 4) << path;
    }
}

TEST_F(LGLAVITest, BitmapHoldsTheSameBytesAsTheTexture)
{
    LGLAVI avi;
    open(avi, solidLosslessAvi());
    avi.grabAVIFrame(3);
    Texels bytes = textureBytes(avi.textures[0]);
    ASSERT_NE(avi.pixels, nullptr);
    EXPECT_EQ(0, std::memcmp(bytes.data(), avi.pixels, bytes.size()));
}

TEST_F(LGLAVITest, MovieOfAnySizeFillsTheWholeTexture)
{
    struct Case {
        std::string path;
        int width;
        int height;
    };
    for (const Case& c : {Case{quadrantMovie("quad_320x240.avi", 320, 240), 320, 240},
                          Case{quadrantMovie("quad_64x16.avi", 64, 16), 64, 16},
                          Case{quadrantMovie("quad_16x96.avi", 16, 96), 16, 96}}) {
        SCOPED_TRACE(c.path);
        LGLAVI avi;
        int width = 0, height = 0;
        avi.createMovieTexture(c.path, width, height);
        EXPECT_EQ(width, c.width);
        EXPECT_EQ(height, c.height);
        avi.grabAVIFrame(0);
        Texels bytes = textureBytes(avi.textures[0]);
        // Bytes B, G, R; the first row in memory is the bottom of the picture.
        const std::array<int, 3> red{0, 0, 255}, green{0, 255, 0}, blue{255, 0, 0}, white{255, 255, 255};
        expectTexelNear(bytes, 0, 0, blue, 0);
        expectTexelNear(bytes, 511, 0, white, 0);
        expectTexelNear(bytes, 0, 511, red, 0);
        expectTexelNear(bytes, 511, 511, green, 0);
        // The quadrants meet in the middle of the texture, whatever the movie's aspect.
        expectTexelNear(bytes, 128, 128, blue, 0);
        expectTexelNear(bytes, 384, 128, white, 0);
        expectTexelNear(bytes, 128, 384, red, 0);
        expectTexelNear(bytes, 384, 384, green, 0);
    }
}

TEST_F(LGLAVITest, QuadrantsMeetInTheMiddleOfTheTexture)
{
    LGLAVI avi;
    open(avi, quadrantMovie("quad_320x240.avi", 320, 240));
    avi.grabAVIFrame(0);
    Texels bytes = textureBytes(avi.textures[0]);
    // 320 x 240 scaled by 1.6 and 2.13: a texel six away from the middle is still clear of the seam.
    expectTexelNear(bytes, 250, 250, {255, 0, 0}, 0);
    expectTexelNear(bytes, 262, 250, {255, 255, 255}, 0);
    expectTexelNear(bytes, 250, 262, {0, 0, 255}, 0);
    expectTexelNear(bytes, 262, 262, {0, 255, 0}, 0);
}

TEST_F(LGLAVITest, GrabCurrentAVIFrameGrabsTheFrameOfTheClock)
{
    LGLAVI avi;
    open(avi, rampMkv());
    avi.frame = 7;
    avi.grabCurrentAVIFrame();
    EXPECT_NEAR(rampGrey(avi), 35.0, 0.01);
}

TEST_F(LGLAVITest, BindCurrentAVIFrameTextureBindsTheFirstTextureName)
{
    LGLAVI avi;
    open(avi, solidMjpegAvi());
    glBindTexture(GL_TEXTURE_2D, 0);
    avi.bindCurrentAVIFrameTexture();
    GLint bound = 0;
    glGetIntegerv(GL_TEXTURE_BINDING_2D, &bound);
    EXPECT_EQ(static_cast<unsigned int>(bound), avi.textures[0]);
}

TEST_F(LGLAVITest, GrabAVIFrameEnablesTexturingAndBindsTheMovieTexture)
{
    LGLAVI avi;
    open(avi, solidMjpegAvi());
    glDisable(GL_TEXTURE_2D);
    glBindTexture(GL_TEXTURE_2D, 0);
    avi.grabAVIFrame(1);
    EXPECT_TRUE(glIsEnabled(GL_TEXTURE_2D));
    GLint bound = 0;
    glGetIntegerv(GL_TEXTURE_BINDING_2D, &bound);
    EXPECT_EQ(static_cast<unsigned int>(bound), avi.textures[0]);
    glDisable(GL_TEXTURE_2D);
}

// ---------------------------------------------------------------- decoding order and seeking

TEST_F(LGLAVITest, SequentialPlaybackDecodesForwardWithoutSeeking)
{
    LGLAVI avi;
    open(avi, rampMpeg4Avi());
    for (int n = 0; n < 50; ++n)
        expectRampFrame(avi, n, 2.0);
    EXPECT_EQ(avi.stream->seekCount(), 0);
    EXPECT_EQ(avi.stream->decodedFrameCount(), 50);
}

TEST_F(LGLAVITest, GrabbingTheSameFrameAgainDecodesNothing)
{
    LGLAVI avi;
    open(avi, rampMpeg4Avi());
    expectRampFrame(avi, 4, 2.0);
    int decoded = avi.stream->decodedFrameCount();
    expectRampFrame(avi, 4, 2.0);
    EXPECT_EQ(avi.stream->decodedFrameCount(), decoded);
}

TEST_F(LGLAVITest, JumpBackwardsSeeksToTheKeyFrameAndDecodesUpToTheFrame)
{
    LGLAVI avi;
    open(avi, rampMpeg4Avi());
    for (int n = 0; n <= 27; ++n)
        avi.grabAVIFrame(n);
    int decoded = avi.stream->decodedFrameCount();
    // Frame 13: the key frame before it is frame 10, so four frames come out of the codec.
    expectRampFrame(avi, 13, 2.0);
    EXPECT_EQ(avi.stream->seekCount(), 1);
    EXPECT_EQ(avi.stream->decodedFrameCount() - decoded, 4);
    // And playback goes on forward from there.
    expectRampFrame(avi, 14, 2.0);
    EXPECT_EQ(avi.stream->seekCount(), 1);
}

TEST_F(LGLAVITest, JumpFarAheadSeeksToTheNearestKeyFrame)
{
    LGLAVI avi;
    open(avi, rampMpeg4Avi());
    expectRampFrame(avi, 0, 2.0);
    int decoded = avi.stream->decodedFrameCount();
    expectRampFrame(avi, 45, 2.0);
    EXPECT_EQ(avi.stream->seekCount(), 1);
    // Frames 40 to 45 only.
    EXPECT_EQ(avi.stream->decodedFrameCount() - decoded, 6);
}

TEST_F(LGLAVITest, ShortSkipAheadDecodesForward)
{
    LGLAVI avi;
    open(avi, rampMpeg4Avi());
    expectRampFrame(avi, 11, 2.0);
    int seeks = avi.stream->seekCount();
    expectRampFrame(avi, 13, 2.0);
    expectRampFrame(avi, 16, 2.0);
    EXPECT_EQ(avi.stream->seekCount(), seeks);
}

TEST_F(LGLAVITest, RandomAccessShowsEveryRequestedFrame)
{
    LGLAVI avi;
    open(avi, rampMpeg4Avi());
    for (int n : {49, 0, 25, 24, 9, 10, 38, 2, 48, 30, 31, 5, 49, 1})
        expectRampFrame(avi, n, 2.0);
}

TEST_F(LGLAVITest, LoopingPlaybackStartsAgainFromFrameZero)
{
    LGLAVI avi;
    open(avi, rampMpeg4Avi());
    for (int n = 0; n < 50; ++n)
        avi.grabAVIFrame(n);
    expectRampFrame(avi, 0, 2.0);
    expectRampFrame(avi, 1, 2.0);
}

TEST_F(LGLAVITest, MjpegAviPlaysFrameByFrame)
{
    LGLAVI avi;
    open(avi, rampMjpegAvi());
    EXPECT_EQ(avi.lastFrame, 50);
    EXPECT_EQ(avi.msPerFrame, 40);
    for (int n : {0, 1, 2, 20, 3, 49})
        expectRampFrame(avi, n, 2.0);
}

TEST_F(LGLAVITest, FramesOutsideTheMovieLeaveTheTextureAsItWas)
{
    LGLAVI avi;
    open(avi, rampMkv());
    expectRampFrame(avi, 12, 0.01);
    for (int n : {-1, 50, 1000}) {
        avi.grabAVIFrame(n);
        EXPECT_EQ(avi.frameData, nullptr);
        EXPECT_NEAR(rampGrey(avi), 60.0, 0.01);
    }
}

// ---------------------------------------------------------------- other containers

TEST_F(LGLAVITest, Mp4WebmAndMkvMoviesPlayTheSameWay)
{
    struct Case {
        std::string path;
        double tolerance;
    };
    for (const Case& c : {Case{rampMp4(), 2.0}, Case{rampWebm(), 3.0}, Case{rampMkv(), 0.01}}) {
        SCOPED_TRACE(c.path);
        LGLAVI avi;
        int width = 0, height = 0;
        avi.createMovieTexture(c.path, width, height);
        EXPECT_EQ(width, 64);
        EXPECT_EQ(height, 48);
        EXPECT_EQ(avi.lastFrame, 50);
        EXPECT_EQ(avi.msPerFrame, 40);
        for (int n = 0; n < 6; ++n)
            expectRampFrame(avi, n, c.tolerance);
        for (int n : {44, 12, 49, 0})
            expectRampFrame(avi, n, c.tolerance);
        avi.start = LGLAVI::clockMs() - 5000;
        avi.handle(false);
        EXPECT_EQ(avi.frame, 49);
        EXPECT_TRUE(avi.movieAtEnd());
        EXPECT_TRUE(messages().empty());
    }
}

// ---------------------------------------------------------------- one frame, caching

TEST_F(LGLAVITest, OneFrameMovieIsAlwaysAtItsEnd)
{
    LGLAVI avi;
    open(avi, oneFrameMovie());
    EXPECT_EQ(avi.lastFrame, 1);
    EXPECT_EQ(avi.msPerFrame, 40);
    EXPECT_TRUE(avi.movieAtEnd());
    avi.start = LGLAVI::clockMs() - 500;
    avi.handle(false);
    EXPECT_EQ(avi.frame, 0);
    EXPECT_TRUE(avi.movieAtEnd());
    avi.start = LGLAVI::clockMs() - 500;
    avi.handle(true);
    EXPECT_EQ(avi.frame, 0);
    EXPECT_EQ(avi.elapsed, 0);
    expectRampFrame(avi, 0, 2.0);
    expectRampFrame(avi, 0, 2.0);
}

TEST_F(LGLAVITest, CacheMovieOfOneFrameReturnsAtOnce)
{
    LGLAVI avi;
    open(avi, oneFrameMovie());
    auto begin = std::chrono::steady_clock::now();
    avi.cacheMovie();
    auto took = std::chrono::steady_clock::now() - begin;
    EXPECT_LT(took, std::chrono::milliseconds(500));
    EXPECT_EQ(avi.frame, 0);
    EXPECT_EQ(avi.elapsed, 0);
}

TEST_F(LGLAVITest, CacheMovieDecodesInRealTimeThenRewinds)
{
    LGLAVI avi;
    open(avi, shortMovie());
    ASSERT_EQ(avi.lastFrame, 10);
    ASSERT_EQ(avi.msPerFrame, 40);
    auto begin = std::chrono::steady_clock::now();
    avi.cacheMovie();
    auto took = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - begin);
    // It runs until frame 9 is due: 9 x 40 ms.
    EXPECT_GE(took.count(), 9 * 40);
    EXPECT_LT(took.count(), 5000);
    EXPECT_EQ(avi.frame, 0);
    EXPECT_EQ(avi.elapsed, 0);
    long now = LGLAVI::clockMs();
    EXPECT_LE(avi.start, now);
    EXPECT_GE(avi.start, now - 1000);
    // The last frame it grabbed is the last frame of the movie.
    EXPECT_NEAR(rampGrey(avi), 45.0, 2.0);
    EXPECT_GE(avi.stream->decodedFrameCount(), 1);
    EXPECT_LE(avi.stream->decodedFrameCount(), 10);
}

// ---------------------------------------------------------------- copies and closing

TEST_F(LGLAVITest, CopiesShareTheDecoderAndTheTexture)
{
    LGLAVI avi;
    open(avi, rampMkv());
    avi.frame = 5;
    avi.start = 1234;
    LGLAVI copy(avi);
    EXPECT_EQ(copy.stream, avi.stream);
    EXPECT_EQ(copy.getFrame, avi.getFrame);
    EXPECT_EQ(copy.drawDib, avi.drawDib);
    EXPECT_EQ(copy.pixels, avi.pixels);
    EXPECT_EQ(copy.frame, 5);
    EXPECT_EQ(copy.start, 1234);
    EXPECT_EQ(copy.lastFrame, avi.lastFrame);
    EXPECT_EQ(copy.msPerFrame, avi.msPerFrame);
    EXPECT_TRUE(std::equal(std::begin(avi.textures), std::end(avi.textures), std::begin(copy.textures)));

    copy.grabAVIFrame(20);
    EXPECT_NEAR(rampGrey(avi), 100.0, 0.01);

    LGLAVI assigned;
    assigned = avi;
    EXPECT_EQ(assigned.stream, avi.stream);
    EXPECT_EQ(assigned.textures[0], avi.textures[0]);
}

TEST_F(LGLAVITest, MovingCopiesEveryMemberAndTheSourceKeepsPlaying)
{
    LGLAVI avi;
    open(avi, rampMkv());
    LGLAVI moved(std::move(avi));
    EXPECT_EQ(moved.stream, avi.stream);
    EXPECT_EQ(moved.textures[0], avi.textures[0]);
    LGLAVI assigned;
    assigned = std::move(moved);
    EXPECT_EQ(assigned.stream, avi.stream);
    avi.grabAVIFrame(2);
    EXPECT_NEAR(rampGrey(assigned), 10.0, 0.01);
}

TEST_F(LGLAVITest, ClosingOneCopyLeavesTheOtherPlaying)
{
    LGLAVI avi;
    open(avi, rampMkv());
    LGLAVI copy = avi;
    avi.closeAVI();
    copy.grabAVIFrame(9);
    EXPECT_NE(copy.frameData, nullptr);
    EXPECT_NEAR(rampGrey(copy), 45.0, 0.01);
}

TEST_F(LGLAVITest, CloseAVIReleasesTheDecoderButNotTheTextureNames)
{
    LGLAVI avi;
    open(avi, rampMkv());
    avi.grabAVIFrame(6);
    std::weak_ptr<LGLMovieDecoder> decoder = avi.stream;
    unsigned int texture = avi.textures[0];
    avi.closeAVI();
    EXPECT_TRUE(decoder.expired());
    EXPECT_EQ(avi.stream, nullptr);
    EXPECT_EQ(avi.getFrame, nullptr);
    EXPECT_EQ(avi.drawDib, nullptr);
    EXPECT_EQ(avi.bitmap, nullptr);
    EXPECT_EQ(avi.pixels, nullptr);
    EXPECT_EQ(avi.textures[0], texture);
    EXPECT_TRUE(glIsTexture(texture));
    // Grabbing after closing changes nothing and does not fault.
    avi.grabAVIFrame(7);
    EXPECT_EQ(avi.frameData, nullptr);
    EXPECT_NEAR(rampGrey(avi), 30.0, 0.01);
    avi.closeAVI();
}

TEST_F(LGLAVITest, OpeningAnotherMovieReplacesTheFirst)
{
    LGLAVI avi;
    open(avi, rampMkv());
    std::weak_ptr<LGLMovieDecoder> first = avi.stream;
    int width = 0, height = 0;
    avi.createMovieTexture(solidMjpegAvi(), width, height);
    EXPECT_TRUE(first.expired());
    EXPECT_EQ(width, 320);
    avi.grabAVIFrame(0);
    EXPECT_LE(largestDifference(textureBytes(avi.textures[0]), {0x99, 0x66, 0x33}), 4);
}

TEST_F(LGLAVITest, MoviePathIsResolvedWithoutRegardToLetterCase)
{
    std::string dir = makeTempDir();
    std::string bytes = readFile(rampMkv());
    writeFile(dir + "/Ramp.MKV", bytes);
    LGLAVI avi;
    int width = 0, height = 0;
    avi.createMovieTexture(dir + "/ramp.mkv", width, height);
    EXPECT_EQ(width, 64);
    EXPECT_EQ(avi.lastFrame, 50);
    EXPECT_TRUE(messages().empty());
}

// ---------------------------------------------------------------- the real AVI files

namespace {

struct RealMovie {
    const char* name;
    int width;
    int height;
    int frames;
    const char* rate;  // frames per second as ffmpeg reads it
    int lengthMs;      // frames x 1000 / rate, truncated
};

// The reference picture of frame n: the ffmpeg program's own decode at the movie's frame rate,
// scaled to 512 x 512 bilinearly, bottom row first, in B, G, R bytes.
Texels referenceFrame(const std::string& path, const char* rate, int n)
{
    std::string out = movieDir() + "/reference.raw";
    std::string command = "ffmpeg -nostdin -v error -y -i '" + path + "' -vf \"fps=" + rate + ",select=eq(n\\," +
                          std::to_string(n) + "),scale=512:512:flags=bilinear,vflip\" -frames:v 1 -pix_fmt bgr24 " +
                          "-f rawvideo '" + out + "' 2>&1";
    EXPECT_EQ(runCommand(command), 0) << command;
    std::string bytes = readFile(out);
    return Texels(bytes.begin(), bytes.end());
}

double meanDifference(const Texels& a, const Texels& b)
{
    if (a.size() != b.size())
        return 1e9;
    double sum = 0;
    for (size_t i = 0; i < a.size(); ++i)
        sum += std::abs(a[i] - b[i]);
    return sum / static_cast<double>(a.size());
}

}  // namespace

TEST_F(LGLAVITest, RealAviFilesOpenWithTheirSizeLengthAndFrameTime)
{
    // From the stream headers: 40 frames at 15 per second last 2666 ms, so 66 ms a frame.
    const RealMovie movies[] = {
        {"vcsamples/MFC2.AVI", 40, 40, 40, "15", 40 * 1000 / 15},
        {"vcsamples/filecopy.avi", 260, 40, 17, "10", 17 * 1000 / 10},
        {"vcsamples/search.avi", 80, 48, 29, "500000/83333", static_cast<int>(29LL * 1000 * 83333 / 500000)},
        {"vcsamples/dillo.avi", 80, 48, 71, "96", 71 * 1000 / 96},
        {"win32xx/upload.avi", 272, 60, 34, "10", 34 * 1000 / 10},
    };
    for (const RealMovie& m : movies) {
        SCOPED_TRACE(m.name);
        LGLAVI avi;
        int width = 0, height = 0;
        avi.createMovieTexture(asset(m.name), width, height);
        EXPECT_EQ(width, m.width);
        EXPECT_EQ(height, m.height);
        EXPECT_EQ(avi.lastFrame, m.frames);
        EXPECT_EQ(avi.streamInfo.lengthMs, m.lengthMs);
        EXPECT_EQ(avi.msPerFrame, m.lengthMs / m.frames);
        EXPECT_TRUE(messages().empty());
    }
}

TEST_F(LGLAVITest, RealAviFramesMatchTheDecodeOfTheFfmpegProgram)
{
    const RealMovie movies[] = {
        {"vcsamples/MFC2.AVI", 40, 40, 40, "15", 0},
        {"vcsamples/filecopy.avi", 260, 40, 17, "10", 0},
        {"vcsamples/search.avi", 80, 48, 29, "500000/83333", 0},
        {"vcsamples/dillo.avi", 80, 48, 71, "96", 0},
        {"win32xx/upload.avi", 272, 60, 34, "10", 0},
    };
    for (const RealMovie& m : movies) {
        LGLAVI avi;
        int width = 0, height = 0;
        avi.createMovieTexture(asset(m.name), width, height);
        for (int n : {0, 1, m.frames / 2, 5, m.frames - 1}) {
            SCOPED_TRACE(std::string(m.name) + " frame " + std::to_string(n));
            avi.grabAVIFrame(n);
            EXPECT_NE(avi.frameData, nullptr);
            Texels reference = referenceFrame(asset(m.name), m.rate, n);
            ASSERT_EQ(reference.size(), static_cast<size_t>(kSize) * kSize * 3);
            EXPECT_LT(meanDifference(textureBytes(avi.textures[0]), reference), 1.5);
        }
    }
}

TEST_F(LGLAVITest, AviWithRepeatedFramesShowsTheLastStoredPictureForThem)
{
    // dillo.avi stores 8 pictures for its 71 frames; frames between two stored pictures repeat the
    // earlier one, as the ffmpeg program's constant-rate decode shows them.
    LGLAVI avi;
    open(avi, asset("vcsamples/dillo.avi"));
    ASSERT_EQ(avi.lastFrame, 71);
    for (int n : {0, 2, 3, 4, 9, 30, 70, 12}) {
        SCOPED_TRACE(n);
        avi.grabAVIFrame(n);
        EXPECT_LT(meanDifference(textureBytes(avi.textures[0]), referenceFrame(asset("vcsamples/dillo.avi"), "96", n)),
                  1.5);
    }
}

TEST_F(LGLAVITest, HeaderOnlyAviKeepsItsHeaderLengthAndStaysBlack)
{
    // RIFF.avi is a header without movie data: 233 frames of 320 x 240 at 15 per second.
    LGLAVI avi;
    int width = 0, height = 0;
    avi.createMovieTexture(asset("exiftool/RIFF.avi"), width, height);
    EXPECT_EQ(width, 320);
    EXPECT_EQ(height, 240);
    EXPECT_EQ(avi.lastFrame, 233);
    EXPECT_EQ(avi.msPerFrame, static_cast<int>(233LL * 1000 * 33333 / 500000) / 233);
    for (int n : {0, 1, 100, 232}) {
        avi.grabAVIFrame(n);
        EXPECT_EQ(avi.frameData, nullptr);
    }
    EXPECT_EQ(largestDifference(textureBytes(avi.textures[0]), {0, 0, 0}), 0);
    avi.start = LGLAVI::clockMs() - 100000;
    avi.handle(false);
    EXPECT_EQ(avi.frame, 232);
}

// ---------------------------------------------------------------- damaged files

namespace {

// Runs `play` in a child process; it must end normally (status 0) after printing "played", or through
// the designed fatal path (status 255 after "Failed To Open The AVI Frame"), and never by a signal.
bool endedByDesign(int status)
{
    return WIFEXITED(status) && (WEXITSTATUS(status) == 0 || WEXITSTATUS(status) == 255);
}

// Opens a movie without a texture (no GL needed), scales every frame into the bitmap and prints
// "played".
void playWithoutTexture(const std::string& path)
{
    ostrum_test::routeStdoutToStderr();
    LGLAVI avi;
    avi.drawDib = std::make_shared<LGLMovieDecoder::Scaler>();
    avi.openAVI(path.c_str());
    int last = std::min(avi.lastFrame, 400);
    for (int n = 0; n < last; ++n)
        avi.grabAVIFrame(n);
    for (int n : {last - 1, 0, last / 2, 1})
        avi.grabAVIFrame(n);
    std::printf("played\n");
    std::fflush(stdout);
    std::exit(0);
}

std::string damagedCopy(const std::string& source, const std::string& name, size_t keep)
{
    std::string bytes = readFile(source);
    std::string path = movieDir() + "/" + name;
    writeFile(path, bytes.substr(0, std::min(keep, bytes.size())));
    return path;
}

}  // namespace

TEST_F(LGLAVIDeathTest, FileThatIsNoMovieShowsTheStreamMessageAndEndsWithTheFrameLine)
{
    std::string path = makeTempDir() + "/notes.avi";
    std::string text;
    for (int i = 0; i < 200; ++i)
        text += "this is not a movie, just some words in a file\n";
    writeFile(path, text);
    EXPECT_EXIT(
        {
            ostrum_test::routeStdoutToStderr();
            LGLAVI avi;
            avi.openAVI(path.c_str());
        },
        ::testing::ExitedWithCode(255),
        ::testing::AllOf(::testing::HasSubstr("Error: Failed To Open The AVI Stream\n"),
                         LastLineIs("Failed To Open The AVI Frame")));
}

TEST_F(LGLAVIDeathTest, MissingFileShowsTheStreamMessageAndEndsWithTheFrameLine)
{
    std::string path = makeTempDir() + "/missing.avi";
    EXPECT_EXIT(
        {
            ostrum_test::routeStdoutToStderr();
            LGLAVI avi;
            int width = 0;
            int height = 0;
            avi.createMovieTexture(path, width, height);
        },
        ::testing::ExitedWithCode(255),
        ::testing::AllOf(::testing::HasSubstr("Error: Failed To Open The AVI Stream\n"),
                         LastLineIs("Failed To Open The AVI Frame")));
}

TEST_F(LGLAVIDeathTest, StreamMessageGoesThroughThePlatformMessageBox)
{
    std::string path = makeTempDir() + "/empty.avi";
    writeFile(path, "");
    EXPECT_EXIT(
        {
            ostrum_test::routeStdoutToStderr();
            LGLPlatform::setMessageHandler([](const std::string& text, const std::string& caption) {
                std::printf("box [%s] [%s]\n", caption.c_str(), text.c_str());
            });
            LGLAVI avi;
            avi.openAVI(path.c_str());
        },
        ::testing::ExitedWithCode(255),
        ::testing::AllOf(::testing::HasSubstr("box [Error] [Failed To Open The AVI Stream]\n"),
                         LastLineIs("Failed To Open The AVI Frame")));
}

TEST_F(LGLAVIDeathTest, AudioOnlyFileHasNoVideoStreamToOpen)
{
    std::string path = makeTempDir() + "/tone.avi";
    ASSERT_EQ(runCommand("ffmpeg -nostdin -v error -y -f lavfi -i sine=d=0.2 -c:a pcm_s16le '" + path + "' 2>&1"), 0);
    OSTRUM_EXPECT_EXIT_WITH_LINE(
        {
            LGLAVI avi;
            avi.openAVI(path.c_str());
        },
        255, "Failed To Open The AVI Frame");
}

TEST_F(LGLAVIDeathTest, NullPathShowsTheStreamMessageAndEndsWithTheFrameLine)
{
    OSTRUM_EXPECT_EXIT_WITH_LINE(
        {
            LGLAVI avi;
            avi.openAVI(nullptr);
        },
        255, "Failed To Open The AVI Frame");
}

TEST_F(LGLAVIDeathTest, CorruptedMovieDataNeverCrashes)
{
    // Bytes in the middle of the movie data overwritten; the headers and the index stay.
    for (const std::string& source : {rampMpeg4Avi(), rampMjpegAvi(), rampMp4(), rampWebm(), rampMkv()}) {
        std::string bytes = readFile(source);
        uint32_t state = 12345;
        for (size_t i = bytes.size() / 3; i < bytes.size() * 2 / 3; i += 3) {
            state = state * 1103515245u + 12345u;
            bytes[i] = static_cast<char>(state >> 24);
        }
        std::string path = movieDir() + "/corrupt_" + source.substr(source.rfind('/') + 1);
        writeFile(path, bytes);
        SCOPED_TRACE(path);
        EXPECT_EXIT(playWithoutTexture(path), endedByDesign,
                    ::testing::AnyOf(LastLineIs("played"), LastLineIs("Failed To Open The AVI Frame")));
    }
}

TEST_F(LGLAVIDeathTest, TruncatedMoviesNeverCrash)
{
    for (const std::string& source : {rampMpeg4Avi(), rampMjpegAvi(), rampMp4(), rampWebm(), rampMkv(),
                                      asset("vcsamples/dillo.avi"), asset("vcsamples/MFC2.AVI")}) {
        size_t size = readFile(source).size();
        for (size_t keep : {size_t(12), size_t(64), size_t(300), size / 4, size / 2, size * 9 / 10, size - 1}) {
            std::string path =
                damagedCopy(source, "cut_" + std::to_string(keep) + "_" + source.substr(source.rfind('/') + 1), keep);
            SCOPED_TRACE(path);
            EXPECT_EXIT(playWithoutTexture(path), endedByDesign,
                        ::testing::AnyOf(LastLineIs("played"), LastLineIs("Failed To Open The AVI Frame")));
        }
    }
}

TEST_F(LGLAVITest, TruncatedAviKeepsItsHeaderLengthAndShowsItsLastDecodablePicture)
{
    // The MJPEG ramp cut after 60 % of its bytes: some thirty pictures are left, the last of them
    // cut short, and the index at the end of the file is lost.
    std::string source = rampMjpegAvi();
    size_t size = readFile(source).size();
    std::string path = damagedCopy(source, "cut_ramp_mjpeg.avi", size * 6 / 10);
    LGLAVI movie;
    open(movie, path);
    EXPECT_EQ(movie.lastFrame, 50);
    EXPECT_EQ(movie.msPerFrame, 40);
    expectRampFrame(movie, 0, 2.0);
    expectRampFrame(movie, 5, 2.0);
    expectRampFrame(movie, 20, 2.0);
    // A frame past the stored pictures shows the last picture that decodes, and so does the next
    // grab of it, without decoding anything again.
    movie.grabAVIFrame(49);
    EXPECT_NE(movie.frameData, nullptr);
    double grey = rampGrey(movie);
    EXPECT_GT(grey, 100.0 + 2.0);
    EXPECT_LT(grey, 5.0 * 49 - 2.0);
    double steps = grey / 5.0;
    EXPECT_NEAR(steps, std::round(steps), 0.4);
    int decoded = movie.stream->decodedFrameCount();
    int seeks = movie.stream->seekCount();
    movie.grabAVIFrame(49);
    EXPECT_NEAR(rampGrey(movie), grey, 0.01);
    EXPECT_EQ(movie.stream->decodedFrameCount(), decoded);
    EXPECT_EQ(movie.stream->seekCount(), seeks);
}
