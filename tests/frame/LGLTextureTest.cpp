// LGLTextureTest.cpp -- texture creation of LGL on Mesa: BMP, TGA, JPEG and DDS files, centred and
// colour-keyed textures, render and blank textures, the pixel-block flips and the fatal paths.
#include <ostrum_gl/frame/LGL.h>

#include <ostrum_core/LImage.h>
#include <ostrum_core/TGAImage.h>
#include <ostrum_gl/platform/LGLPlatform.h>

#include "TestSupport.h"

#include <GL/freeglut.h>
#include <GL/glext.h>
#include <sys/resource.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

using namespace ostrum_test;
namespace fs = std::filesystem;

namespace {

// ---------------------------------------------------------------- message boxes

struct Message {
    std::string text, caption;
};
std::vector<Message> messages;

void recordMessage(const std::string& text, const std::string& caption)
{
    messages.push_back({text, caption});
}

// Captures the message boxes shown while it lives.
class MessageLog {
public:
    MessageLog()
    {
        messages.clear();
        LGLPlatform::setMessageHandler(recordMessage);
    }
    ~MessageLog() { LGLPlatform::setMessageHandler(nullptr); }
    const std::vector<Message>& all() const { return messages; }
};

// ---------------------------------------------------------------- files

std::string asset(const std::string& relative)
{
    return assetsDir() + "/" + relative;
}

std::string copyAsset(const std::string& relative, const std::string& dir, const std::string& name)
{
    std::string target = dir + "/" + name;
    fs::copy_file(asset(relative), target, fs::copy_options::overwrite_existing);
    return target;
}

// Runs the real ffmpeg program; `args` follow "ffmpeg -y -loglevel error".
void ffmpeg(const std::string& args)
{
    std::string command = "ffmpeg -y -nostdin -loglevel error " + args;
    ASSERT_EQ(std::system(command.c_str()), 0) << command;
}

uint32_t le32(const std::string& b, size_t at)
{
    return static_cast<uint8_t>(b[at]) | static_cast<uint8_t>(b[at + 1]) << 8 | static_cast<uint8_t>(b[at + 2]) << 16 |
           static_cast<uint32_t>(static_cast<uint8_t>(b[at + 3])) << 24;
}

void putLE32(std::string& b, size_t at, uint32_t v)
{
    for (int i = 0; i < 4; ++i)
        b[at + i] = static_cast<char>((v >> (8 * i)) & 0xFF);
}

// A 24-bit uncompressed BMP of packed RGB pixels given bottom row first, as the file stores them.
void writeBMP24(const std::string& path, int w, int h, const std::vector<std::array<uint8_t, 3>>& bottomUp)
{
    const int rowBytes = (w * 3 + 3) / 4 * 4;
    std::string b(54 + rowBytes * h, '\0');
    b[0] = 'B';
    b[1] = 'M';
    putLE32(b, 2, static_cast<uint32_t>(b.size()));
    putLE32(b, 10, 54);
    putLE32(b, 14, 40);
    putLE32(b, 18, static_cast<uint32_t>(w));
    putLE32(b, 22, static_cast<uint32_t>(h));
    b[26] = 1;
    b[28] = 24;
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            const auto& p = bottomUp[y * w + x];
            size_t at = 54 + y * rowBytes + x * 3;
            b[at] = static_cast<char>(p[2]);
            b[at + 1] = static_cast<char>(p[1]);
            b[at + 2] = static_cast<char>(p[0]);
        }
    writeFile(path, b);
}

// Packed RGB bytes, bottom row first, of an uncompressed bottom-up 24-bit BMP, read straight from the
// file's bytes.
std::vector<uint8_t> readBMP24(const std::string& path, int& w, int& h)
{
    std::string b = readFile(path);
    w = static_cast<int>(le32(b, 18));
    h = static_cast<int>(le32(b, 22));
    const uint32_t offset = le32(b, 10);
    const int rowBytes = (w * 3 + 3) / 4 * 4;
    std::vector<uint8_t> rgb(static_cast<size_t>(w) * h * 3);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            for (int c = 0; c < 3; ++c)
                rgb[(y * w + x) * 3 + c] = static_cast<uint8_t>(b[offset + y * rowBytes + x * 3 + (2 - c)]);
    return rgb;
}

// A DDS file: magic, 124-byte description and the given data.
std::string makeDDS(const char* fourCC, uint32_t width, uint32_t height, uint32_t linearSize, uint32_t mipMapCount,
                    const std::string& data)
{
    std::string b(128, '\0');
    std::memcpy(&b[0], "DDS ", 4);
    putLE32(b, 4, 124);
    putLE32(b, 8, 0x000A1007);
    putLE32(b, 12, height);
    putLE32(b, 16, width);
    putLE32(b, 20, linearSize);
    putLE32(b, 28, mipMapCount);
    putLE32(b, 76, 32);
    putLE32(b, 80, 0x4);
    std::memcpy(&b[84], fourCC, 4);
    putLE32(b, 108, 0x1000);
    return b + data;
}

// ---------------------------------------------------------------- GL state

GLint levelParameter(unsigned int id, int level, GLenum pname)
{
    glBindTexture(GL_TEXTURE_2D, id);
    GLint value = -1;
    glGetTexLevelParameteriv(GL_TEXTURE_2D, level, pname, &value);
    return value;
}

GLint textureParameter(unsigned int id, GLenum pname)
{
    glBindTexture(GL_TEXTURE_2D, id);
    GLint value = -1;
    glGetTexParameteriv(GL_TEXTURE_2D, pname, &value);
    return value;
}

// Level pixels as bytes of `format` (GL_RGB or GL_RGBA), rows bottom first, tightly packed.
std::vector<uint8_t> levelPixels(unsigned int id, int level, GLenum format)
{
    const int w = levelParameter(id, level, GL_TEXTURE_WIDTH);
    const int h = levelParameter(id, level, GL_TEXTURE_HEIGHT);
    const int channels = format == GL_RGBA ? 4 : 3;
    std::vector<uint8_t> pixels(static_cast<size_t>(w) * h * channels);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glGetTexImage(GL_TEXTURE_2D, level, format, GL_UNSIGNED_BYTE, pixels.data());
    return pixels;
}

std::vector<uint8_t> compressedLevel(unsigned int id, int level)
{
    std::vector<uint8_t> bytes(static_cast<size_t>(levelParameter(id, level, GL_TEXTURE_COMPRESSED_IMAGE_SIZE)));
    glGetCompressedTexImage(GL_TEXTURE_2D, level, bytes.data());
    return bytes;
}

void clearGLErrors()
{
    while (glGetError() != GL_NO_ERROR) {
    }
}

// Blocks of 4 x 4 pixels times the block size: the bytes of one S3TC level, worked out here from the
// format's definition.
size_t s3tcLevelBytes(int w, int h, size_t blockBytes)
{
    return static_cast<size_t>((w + 3) / 4) * ((h + 3) / 4) * blockBytes;
}

// Expects the texture to hold `levels` S3TC levels, halving from w x h, whose bytes are the file's
// bytes after its 128-byte header, in order.
void expectDDSLevelsAsStored(unsigned int id, const std::string& file, GLenum format, int w, int h, int levels)
{
    const std::string bytes = readFile(file);
    const size_t blockBytes = format == GL_COMPRESSED_RGBA_S3TC_DXT1_EXT ? 8 : 16;
    size_t offset = 128;
    for (int level = 0; level < levels; ++level) {
        SCOPED_TRACE("level " + std::to_string(level));
        const int lw = std::max(w >> level, 1), lh = std::max(h >> level, 1);
        EXPECT_EQ(levelParameter(id, level, GL_TEXTURE_WIDTH), lw);
        EXPECT_EQ(levelParameter(id, level, GL_TEXTURE_HEIGHT), lh);
        EXPECT_EQ(levelParameter(id, level, GL_TEXTURE_COMPRESSED), GL_TRUE);
        EXPECT_EQ(static_cast<GLenum>(levelParameter(id, level, GL_TEXTURE_INTERNAL_FORMAT)), format);
        const size_t size = s3tcLevelBytes(lw, lh, blockBytes);
        ASSERT_EQ(static_cast<size_t>(levelParameter(id, level, GL_TEXTURE_COMPRESSED_IMAGE_SIZE)), size);
        ASSERT_LE(offset + size, bytes.size());
        std::vector<uint8_t> stored = compressedLevel(id, level);
        EXPECT_EQ(std::memcmp(stored.data(), bytes.data() + offset, size), 0);
        offset += size;
    }
    // Nothing beyond the last level.
    EXPECT_EQ(levelParameter(id, levels, GL_TEXTURE_WIDTH), 0);
}

// The process's current address-space size in bytes.
rlim_t currentAddressSpace()
{
    std::ifstream statm("/proc/self/statm");
    unsigned long long pages = 0;
    statm >> pages;
    return static_cast<rlim_t>(pages) * static_cast<rlim_t>(sysconf(_SC_PAGESIZE));
}

// Sets an environment variable for the death-test children started while it lives.
class ScopedEnv {
public:
    ScopedEnv(const char* name, const std::string& value) : name_(name)
    {
        if (const char* old = std::getenv(name)) {
            had_ = true;
            old_ = old;
        }
        setenv(name, value.c_str(), 1);
    }
    ~ScopedEnv()
    {
        if (had_)
            setenv(name_, old_.c_str(), 1);
        else
            unsetenv(name_);
    }

private:
    const char* name_;
    bool had_ = false;
    std::string old_;
};

// A sanitized child must return null from a failed malloc, as the C library does, instead of
// reporting it; and, living under an address-space limit, it cannot map the memory that the leak
// check at exit needs, so that check is off in the child.
std::string allocatorReturnsNull()
{
    const char* old = std::getenv("ASAN_OPTIONS");
    return std::string(old ? old : "") + (old ? ":" : "") + "allocator_may_return_null=1:detect_leaks=0";
}

// Expected RGB block of a centred square texture, worked out from the decoded JPEG: the image placed
// at (size/2 - w/2, size/2 - h/2) in a black square whose rows run bottom-up.
std::vector<uint8_t> centredSquare(const tImageJPG& jpg, int channels, int size, bool fitInside)
{
    std::vector<uint8_t> square(static_cast<size_t>(size) * size * 3, 0);
    const int offX = size / 2 - jpg.sizeX / 2, offY = size / 2 - jpg.sizeY / 2;
    const size_t total = static_cast<size_t>(jpg.sizeX) * jpg.sizeY;
    for (int iy = 0; iy < jpg.sizeY; ++iy)
        for (int ix = 0; ix < jpg.sizeX; ++ix) {
            const int cx = ix + offX, cy = iy + offY;
            if (cx < 0 || cx >= size || cy < 0 || cy >= size)
                continue;
            uint8_t* dst = &square[((size - 1 - cy) * static_cast<size_t>(size) + cx) * 3];
            const size_t i = static_cast<size_t>(iy) * jpg.sizeX + ix;
            if (channels == 3) {
                std::memcpy(dst, jpg.data + i * 3, 3);
            } else if (fitInside) {
                dst[0] = dst[1] = dst[2] = jpg.data[i];
            } else {
                const size_t next = i + 1 < total ? i + 1 : i;
                dst[0] = jpg.data[i];
                dst[1] = dst[2] = jpg.data[next];
            }
        }
    return square;
}

struct DecodedJPG {
    tImageJPG* image = nullptr;
    int channels = 0;
    explicit DecodedJPG(const std::string& path) { image = LImage::LoadJPG(path.c_str(), channels); }
    ~DecodedJPG()
    {
        if (image)
            std::free(image->data);
        std::free(image);
    }
};

bool allZero(const std::vector<uint8_t>& block, size_t from, size_t to)
{
    for (size_t i = from; i < to; ++i)
        if (block[i] != 0)
            return false;
    return true;
}

// A death-test child runs its test again from the start; it works in the folder of its parent, so that
// the paths in the lines it prints are the ones the parent expects.
std::string testFolder()
{
    static const char* const kVariable = "OSTRUM_LGL_TEXTURE_TEST_DIR";
    if (!GTEST_FLAG_GET(internal_run_death_test).empty())
        if (const char* inherited = std::getenv(kVariable))
            return inherited;
    std::string dir = makeTempDir();
    setenv(kVariable, dir.c_str(), 1);
    return dir;
}

class LGLTextureTest : public GLTest {
protected:
    void SetUp() override
    {
        GLTest::SetUp();
        dir = testFolder();
        clearGLErrors();
    }
    void TearDown() override
    {
        if (!made.empty())
            glDeleteTextures(static_cast<GLsizei>(made.size()), made.data());
    }
    unsigned int keep(unsigned int id)
    {
        made.push_back(id);
        return id;
    }
    std::string dir;
    std::vector<GLuint> made;
};

}  // namespace

// ================================================================ CreateTexture: BMP and TGA

TEST_F(LGLTextureTest, BmpFileBecomesMipmappedRGBTextureWithTheFilesPixels)
{
    const std::string file = asset("bmp/dxsdk-legacy/banana.bmp");
    unsigned int id = 0;
    int width = 0, height = 0;
    LGL::CreateTexture(id, file, width, height);
    keep(id);
    ASSERT_NE(id, 0u);
    EXPECT_TRUE(glIsTexture(id));
    EXPECT_EQ(width, 256);
    EXPECT_EQ(height, 256);
    EXPECT_EQ(levelParameter(id, 0, GL_TEXTURE_WIDTH), 256);
    EXPECT_EQ(levelParameter(id, 0, GL_TEXTURE_HEIGHT), 256);
    EXPECT_EQ(levelParameter(id, 0, GL_TEXTURE_INTERNAL_FORMAT), 3);
    EXPECT_EQ(levelParameter(id, 1, GL_TEXTURE_WIDTH), 128);
    EXPECT_EQ(levelParameter(id, 8, GL_TEXTURE_WIDTH), 1);

    int fw = 0, fh = 0;
    std::vector<uint8_t> expected = readBMP24(file, fw, fh);
    EXPECT_EQ(levelPixels(id, 0, GL_RGB), expected);
}

TEST_F(LGLTextureTest, BmpMadeByFfmpegKeepsItsColour)
{
    const std::string file = dir + "/olive.bmp";
    ffmpeg("-f lavfi -i color=c=0x80A040:s=32x16,format=bgr24 -frames:v 1 " + file);
    unsigned int id = 0;
    int width = 0, height = 0;
    LGL::CreateTexture(id, file, width, height);
    keep(id);
    EXPECT_EQ(width, 32);
    EXPECT_EQ(height, 16);
    std::vector<uint8_t> pixels = levelPixels(id, 0, GL_RGB);
    ASSERT_EQ(pixels.size(), 32u * 16 * 3);
    for (size_t i = 0; i < pixels.size(); i += 3) {
        ASSERT_EQ(pixels[i], 0x80);
        ASSERT_EQ(pixels[i + 1], 0xA0);
        ASSERT_EQ(pixels[i + 2], 0x40);
    }
}

TEST_F(LGLTextureTest, SizesAreReportedAsInTheFileWhileTheMipmapBuilderRescalesToAPowerOfTwo)
{
    // 127 x 64: the mipmap builder rounds 127 to the nearest power of two, 128.
    unsigned int id = 0;
    int width = 0, height = 0;
    LGL::CreateTexture(id, asset("bmp/bmpsuite/rgb24.bmp"), width, height);
    keep(id);
    EXPECT_EQ(width, 127);
    EXPECT_EQ(height, 64);
    EXPECT_EQ(levelParameter(id, 0, GL_TEXTURE_WIDTH), 128);
    EXPECT_EQ(levelParameter(id, 0, GL_TEXTURE_HEIGHT), 64);
}

TEST_F(LGLTextureTest, FiltersAreLinearMipmapNearestAndTheRejectedMagnificationCallLeavesLinear)
{
    unsigned int id = 0;
    LGL::CreateTexture(id, asset("bmp/dxsdk-legacy/banana.bmp"));
    keep(id);
    // GL_LINEAR_MIPMAP_LINEAR is no magnification filter: the call is rejected and recorded.
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_INVALID_ENUM));
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    EXPECT_EQ(textureParameter(id, GL_TEXTURE_MIN_FILTER), GL_LINEAR_MIPMAP_NEAREST);
    EXPECT_EQ(textureParameter(id, GL_TEXTURE_MAG_FILTER), GL_LINEAR);
    EXPECT_EQ(textureParameter(id, GL_TEXTURE_WRAP_S), GL_REPEAT);
    EXPECT_EQ(textureParameter(id, GL_TEXTURE_WRAP_T), GL_REPEAT);
    GLint alignment = 0;
    glGetIntegerv(GL_UNPACK_ALIGNMENT, &alignment);
    EXPECT_EQ(alignment, 1);
}

TEST_F(LGLTextureTest, NarrowBmpRowsArriveUnpadded)
{
    // Two pixels a row: 6 bytes, which only an unpack alignment of 1 reads right.
    const std::string file = dir + "/narrow.bmp";
    std::vector<std::array<uint8_t, 3>> pixels;
    for (int i = 0; i < 8; ++i)
        pixels.push_back({static_cast<uint8_t>(10 * i), static_cast<uint8_t>(200 - 10 * i), static_cast<uint8_t>(i)});
    writeBMP24(file, 2, 4, pixels);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    unsigned int id = 0;
    int width = 0, height = 0;
    LGL::CreateTexture(id, file, width, height);
    keep(id);
    EXPECT_EQ(width, 2);
    EXPECT_EQ(height, 4);
    std::vector<uint8_t> expected;
    for (const auto& p : pixels)
        expected.insert(expected.end(), p.begin(), p.end());
    EXPECT_EQ(levelPixels(id, 0, GL_RGB), expected);
}

TEST_F(LGLTextureTest, Tga24BecomesRGBAndTga32BecomesRGBAWithItsOwnAlpha)
{
    unsigned int rgb = 0, rgba = 0;
    int width = 0, height = 0;
    LGL::CreateTexture(rgb, asset("tga/dxsdk-legacy/checker.tga"), width, height);
    keep(rgb);
    EXPECT_EQ(width, 256);
    EXPECT_EQ(height, 256);
    EXPECT_EQ(levelParameter(rgb, 0, GL_TEXTURE_INTERNAL_FORMAT), 3);

    const std::string file = asset("tga/dxsdk-legacy/stones_NM_height.tga");
    LGL::CreateTexture(rgba, file, width, height);
    keep(rgba);
    EXPECT_EQ(width, 256);
    EXPECT_EQ(height, 256);
    EXPECT_EQ(levelParameter(rgba, 0, GL_TEXTURE_INTERNAL_FORMAT), 4);

    TGAImage tga;
    ASSERT_EQ(tga.loadTGA(file.c_str()), 1);
    std::vector<uint8_t> expected(tga.data, tga.data + 256 * 256 * 4);
    std::free(tga.data);
    EXPECT_EQ(levelPixels(rgba, 0, GL_RGBA), expected);
}

TEST_F(LGLTextureTest, WallTgaInMixedCaseGetsAnEmptyTextureNameWhileLowerAndUpperCaseLoad)
{
    const std::string lower = copyAsset("tga/dxsdk-legacy/checker.tga", dir, "wall.tga");
    const std::string upper = copyAsset("tga/dxsdk-legacy/checker.tga", dir, "wall.TGA");
    const std::string mixed = copyAsset("tga/dxsdk-legacy/checker.tga", dir, "wall.Tga");

    for (const std::string& file : {lower, upper}) {
        SCOPED_TRACE(file);
        unsigned int id = 0;
        int width = 0, height = 0;
        LGL::CreateTexture(id, file, width, height);
        keep(id);
        EXPECT_EQ(width, 256);
        EXPECT_EQ(levelParameter(id, 0, GL_TEXTURE_WIDTH), 256);
    }

    unsigned int id = 0;
    int width = -7, height = -7;
    LGL::CreateTexture(id, mixed, width, height);
    keep(id);
    EXPECT_NE(id, 0u);
    EXPECT_TRUE(glIsTexture(id));
    EXPECT_EQ(levelParameter(id, 0, GL_TEXTURE_WIDTH), 0);
    EXPECT_EQ(width, -7);
    EXPECT_EQ(height, -7);
    EXPECT_EQ(textureParameter(id, GL_TEXTURE_MIN_FILTER), GL_LINEAR_MIPMAP_NEAREST);
}

TEST_F(LGLTextureTest, MixedCaseOrUnknownExtensionsLoadNoImage)
{
    for (const char* name : {"photo.Jpg", "photo.Bmp", "photo.Dds", "photo.png", "photo"}) {
        SCOPED_TRACE(name);
        const std::string file = copyAsset("bmp/dxsdk-legacy/banana.bmp", dir, name);
        unsigned int id = 0;
        LGL::CreateTexture(id, file);
        keep(id);
        EXPECT_TRUE(glIsTexture(id));
        EXPECT_EQ(levelParameter(id, 0, GL_TEXTURE_WIDTH), 0);
    }
}

TEST_F(LGLTextureTest, TwoArgumentCreateTextureLoadsTheSameTexture)
{
    unsigned int id = 0;
    LGL::CreateTexture(id, asset("bmp/dxsdk-legacy/banana.bmp"));
    keep(id);
    int fw = 0, fh = 0;
    EXPECT_EQ(levelPixels(id, 0, GL_RGB), readBMP24(asset("bmp/dxsdk-legacy/banana.bmp"), fw, fh));
}

TEST_F(LGLTextureTest, ResourceNameInOtherLetterCaseFindsTheFile)
{
    copyAsset("bmp/dxsdk-legacy/banana.bmp", dir, "banana.bmp");
    unsigned int id = 0;
    int width = 0, height = 0;
    LGL::CreateTexture(id, dir + "/BANANA.bmp", width, height);
    keep(id);
    EXPECT_EQ(width, 256);
    EXPECT_EQ(levelParameter(id, 0, GL_TEXTURE_WIDTH), 256);
}

TEST_F(LGLTextureTest, DdsExtensionsInEitherCaseMakeCompressedTexturesAndLeaveTheSizes)
{
    for (const char* name : {"wheel.dds", "wheel.DDS"}) {
        SCOPED_TRACE(name);
        const std::string file = copyAsset("dds/magnum/dxt3.dds", dir, name);
        unsigned int id = 0;
        int width = -1, height = -1;
        LGL::CreateTexture(id, file, width, height);
        keep(id);
        EXPECT_EQ(width, -1);
        EXPECT_EQ(height, -1);
        EXPECT_EQ(static_cast<GLenum>(levelParameter(id, 0, GL_TEXTURE_INTERNAL_FORMAT)),
                  static_cast<GLenum>(GL_COMPRESSED_RGBA_S3TC_DXT3_EXT));
        EXPECT_EQ(levelParameter(id, 0, GL_TEXTURE_WIDTH), 64);
    }
}

TEST_F(LGLTextureTest, JpegExtensionsMakeTheCentredSquareTexture)
{
    const std::string source = dir + "/source.jpg";
    ffmpeg("-f lavfi -i color=c=red:s=100x50 -frames:v 1 " + source);
    for (const char* name : {"a.jpg", "a.JPG", "a.jpeg", "a.JPEG"}) {
        SCOPED_TRACE(name);
        fs::copy_file(source, dir + "/" + name, fs::copy_options::overwrite_existing);
        unsigned int id = 0;
        int width = -1, height = -1;
        LGL::CreateTexture(id, dir + "/" + name, width, height);
        keep(id);
        EXPECT_EQ(levelParameter(id, 0, GL_TEXTURE_WIDTH), 112);
        EXPECT_EQ(levelParameter(id, 0, GL_TEXTURE_HEIGHT), 112);
        EXPECT_EQ(width, -1);
        EXPECT_EQ(height, -1);
    }
}

TEST_F(LGLTextureTest, MissingTextureFileEndsTheProcess)
{
    const std::string file = dir + "/missing.bmp";
    unsigned int id = 0;
    OSTRUM_EXPECT_EXIT_WITH_LINE(LGL::CreateTexture(id, file), 255,
                                 "** ERROR LGL::CreateTexture: Texture file \"" + file + "\" not found!");
}

TEST_F(LGLTextureTest, UnreadableBmpOrTgaEndsTheProcess)
{
    const std::string bmp = copyAsset("bmp/bmpsuite/shortfile.bmp", dir, "short.bmp");
    const std::string tga = dir + "/garbage.tga";
    writeFile(tga, "this is no picture");
    unsigned int id = 0;
    OSTRUM_EXPECT_EXIT_WITH_LINE(LGL::CreateTexture(id, bmp), 255,
                                 "ERROR LGL::CreateTexture: could not read the image \"" + bmp + "\"");
    OSTRUM_EXPECT_EXIT_WITH_LINE(LGL::CreateTexture(id, tga), 255,
                                 "ERROR LGL::CreateTexture: could not read the image \"" + tga + "\"");
}

// ================================================================ CreateDDSTexture

TEST_F(LGLTextureTest, FirstDdsTextureRunsTheCompressionCheckWithoutMessages)
{
    MessageLog log;
    unsigned int id = 0;
    LGL::CreateDDSTexture(id, asset("dds/magnum/dxt1.dds"));
    keep(id);
    EXPECT_TRUE(LGL::textureCompressionChecked);
    EXPECT_NE(LGL::glCompressedTexImage2DARB, nullptr);
    EXPECT_TRUE(log.all().empty());
}

TEST_F(LGLTextureTest, Dxt1WithFullMipChainUploadsEveryLevelAsStored)
{
    MessageLog log;
    const std::string file = asset("dds/dxsdk-legacy/DwarfHead.dds");
    unsigned int id = 0;
    LGL::CreateDDSTexture(id, file);
    keep(id);
    ASSERT_NE(id, 0u);
    expectDDSLevelsAsStored(id, file, GL_COMPRESSED_RGBA_S3TC_DXT1_EXT, 256, 256, 9);
    EXPECT_EQ(textureParameter(id, GL_TEXTURE_MIN_FILTER), GL_LINEAR);
    EXPECT_EQ(textureParameter(id, GL_TEXTURE_MAG_FILTER), GL_LINEAR);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    EXPECT_TRUE(log.all().empty());
}

TEST_F(LGLTextureTest, NonPowerOfTwoDxt1KeepsItsLevelSizes)
{
    // 747 x 600 halves to 373 x 300 ... 1 x 1, ten levels.
    const std::string file = asset("dds/dxsdk/RifleStock1Bump.dds");
    unsigned int id = 0;
    LGL::CreateDDSTexture(id, file);
    keep(id);
    expectDDSLevelsAsStored(id, file, GL_COMPRESSED_RGBA_S3TC_DXT1_EXT, 747, 600, 10);
}

TEST_F(LGLTextureTest, Dxt1SmallerThanOneBlockIsOneBlock)
{
    const std::string file = asset("dds/magnum/dxt1.dds");
    unsigned int id = 0;
    LGL::CreateDDSTexture(id, file);
    keep(id);
    expectDDSLevelsAsStored(id, file, GL_COMPRESSED_RGBA_S3TC_DXT1_EXT, 3, 2, 1);
    EXPECT_EQ(levelParameter(id, 0, GL_TEXTURE_COMPRESSED_IMAGE_SIZE), 8);
}

TEST_F(LGLTextureTest, Dxt3LevelsUseSixteenByteBlocks)
{
    unsigned int whole = 0, partial = 0;
    LGL::CreateDDSTexture(whole, asset("dds/magnum/dxt3.dds"));
    LGL::CreateDDSTexture(partial, asset("dds/magnum/dxt3-incomplete-blocks.dds"));
    keep(whole);
    keep(partial);
    expectDDSLevelsAsStored(whole, asset("dds/magnum/dxt3.dds"), GL_COMPRESSED_RGBA_S3TC_DXT3_EXT, 64, 32, 1);
    // 63 x 27 needs 16 x 7 blocks.
    expectDDSLevelsAsStored(partial, asset("dds/magnum/dxt3-incomplete-blocks.dds"), GL_COMPRESSED_RGBA_S3TC_DXT3_EXT,
                            63, 27, 1);
    EXPECT_EQ(levelParameter(partial, 0, GL_TEXTURE_COMPRESSED_IMAGE_SIZE), 16 * 7 * 16);
}

TEST_F(LGLTextureTest, Dxt5WithMipChainsUploadsEveryLevel)
{
    unsigned int a = 0, b = 0;
    LGL::CreateDDSTexture(a, asset("dds/directxtktest/texture.dds"));
    LGL::CreateDDSTexture(b, asset("dds/dxsdk-legacy/Foliage.dds"));
    keep(a);
    keep(b);
    expectDDSLevelsAsStored(a, asset("dds/directxtktest/texture.dds"), GL_COMPRESSED_RGBA_S3TC_DXT5_EXT, 256, 256, 9);
    expectDDSLevelsAsStored(b, asset("dds/dxsdk-legacy/Foliage.dds"), GL_COMPRESSED_RGBA_S3TC_DXT5_EXT, 512, 512, 10);
}

TEST_F(LGLTextureTest, DdsFileWithoutMipmapCountUploadsNoLevel)
{
    MessageLog log;
    unsigned int id = 0;
    LGL::CreateDDSTexture(id, asset("dds/pillow/dxt3-argb-8bbp-explicitalpha_MipMaps-1.dds"));
    keep(id);
    ASSERT_NE(id, 0u);
    EXPECT_TRUE(glIsTexture(id));
    EXPECT_EQ(levelParameter(id, 0, GL_TEXTURE_WIDTH), 0);
    EXPECT_TRUE(log.all().empty());
}

TEST_F(LGLTextureTest, ZeroLinearSizeShowsItsMessageAndLeavesAnEmptyTexture)
{
    // seafloor.dds declares nine levels but a linear size of 0: the block read is empty.
    MessageLog log;
    unsigned int id = 0;
    LGL::CreateDDSTexture(id, asset("dds/dxsdk/seafloor.dds"));
    keep(id);
    ASSERT_EQ(log.all().size(), 1u);
    EXPECT_EQ(log.all()[0].text, "dwLinearSize is 0!");
    EXPECT_EQ(log.all()[0].caption, "ERROR");
    ASSERT_NE(id, 0u);
    EXPECT_EQ(levelParameter(id, 0, GL_TEXTURE_WIDTH), 0);
}

TEST_F(LGLTextureTest, MissingDdsFileShowsMessageAndLeavesIdUnchanged)
{
    MessageLog log;
    const std::string file = dir + "/nothing.dds";
    unsigned int id = 4242;
    LGL::CreateDDSTexture(id, file);
    EXPECT_EQ(id, 4242u);
    ASSERT_EQ(log.all().size(), 1u);
    EXPECT_EQ(log.all()[0].text, "loadDDSTextureFile couldn't find, or failed to load \"" + file + "\"");
    EXPECT_EQ(log.all()[0].caption, "ERROR");
}

TEST_F(LGLTextureTest, CouldNotFindMessageIsCutTo255Characters)
{
    MessageLog log;
    const std::string file = dir + "/" + std::string(300, 'n') + ".dds";
    unsigned int id = 0;
    LGL::CreateDDSTexture(id, file);
    ASSERT_EQ(log.all().size(), 1u);
    const std::string full = "loadDDSTextureFile couldn't find, or failed to load \"" + file + "\"";
    EXPECT_EQ(log.all()[0].text, full.substr(0, 255));
}

TEST_F(LGLTextureTest, FileWithoutDdsMagicShowsNotValidMessage)
{
    MessageLog log;
    const std::string notDDS = copyAsset("bmp/dxsdk-legacy/banana.bmp", dir, "banana.dds");
    const std::string shortHeader = dir + "/short.dds";
    writeFile(shortHeader, makeDDS("DXT1", 4, 4, 8, 1, "").substr(0, 100));
    const std::string tiny = dir + "/tiny.dds";
    writeFile(tiny, "DD");
    for (const std::string& file : {notDDS, shortHeader, tiny}) {
        SCOPED_TRACE(file);
        messages.clear();
        unsigned int id = 99;
        LGL::CreateDDSTexture(id, file);
        EXPECT_EQ(id, 99u);
        ASSERT_EQ(log.all().size(), 1u);
        EXPECT_EQ(log.all()[0].text, "The file \"" + file + "\" doesn't appear to be a valid .dds file!");
        EXPECT_EQ(log.all()[0].caption, "ERROR");
    }
}

TEST_F(LGLTextureTest, DdsWithoutDxtCompressionShowsItsMessage)
{
    MessageLog log;
    for (const char* name : {"dds/dxsdk-legacy/linear.dds", "dds/pillow/hopper.dds", "dds/vcsamples/nightfloor.dds",
                             "dds/pillow/bc1.dds"}) {
        SCOPED_TRACE(name);
        messages.clear();
        unsigned int id = 77;
        LGL::CreateDDSTexture(id, asset(name));
        EXPECT_EQ(id, 77u);
        ASSERT_EQ(log.all().size(), 1u);
        EXPECT_EQ(log.all()[0].text,
                  "The file \"" + asset(name) + "\" doesn't appear to be compressed using DXT1, DXT3, or DXT5!");
        EXPECT_EQ(log.all()[0].caption, "ERROR");
    }
}

TEST_F(LGLTextureTest, MipmapCountAboveTheLevelsPresentUploadsOnlyTheLevelsThere)
{
    // DwarfHead.dds holds its nine levels; a description claiming twenty reads no further.
    std::string bytes = readFile(asset("dds/dxsdk-legacy/DwarfHead.dds"));
    putLE32(bytes, 28, 20);
    const std::string file = dir + "/twenty.dds";
    writeFile(file, bytes);
    unsigned int id = 0;
    LGL::CreateDDSTexture(id, file);
    keep(id);
    expectDDSLevelsAsStored(id, file, GL_COMPRESSED_RGBA_S3TC_DXT1_EXT, 256, 256, 9);
}

TEST_F(LGLTextureTest, TruncatedDdsUploadsOnlyItsWholeLevels)
{
    // 40000 data bytes: level 0 (32768) is whole, level 1 (8192) is not.
    std::string bytes = readFile(asset("dds/dxsdk-legacy/DwarfHead.dds")).substr(0, 128 + 40000);
    const std::string file = dir + "/cut.dds";
    writeFile(file, bytes);
    unsigned int id = 0;
    LGL::CreateDDSTexture(id, file);
    keep(id);
    expectDDSLevelsAsStored(id, file, GL_COMPRESSED_RGBA_S3TC_DXT1_EXT, 256, 256, 1);
}

TEST_F(LGLTextureTest, LinearSizeLargerThanTheFileReadsWhatIsThere)
{
    std::string bytes = readFile(asset("dds/dxsdk-legacy/DwarfHead.dds"));
    putLE32(bytes, 20, 0xFFFFFFF0u);
    const std::string file = dir + "/huge_linear.dds";
    writeFile(file, bytes);
    unsigned int id = 0;
    LGL::CreateDDSTexture(id, file);
    keep(id);
    expectDDSLevelsAsStored(id, file, GL_COMPRESSED_RGBA_S3TC_DXT1_EXT, 256, 256, 9);
}

TEST_F(LGLTextureTest, LinearSizeSmallerThanTheLevelsUploadsOnlyWhatFits)
{
    // A 128 x 128 DXT1 chain has eight levels: 8192 + 2048 + 512 + 128 + 32 + 8 + 8 + 8 = 10936 bytes.
    const std::string data(20000, '\x55');
    struct Case {
        uint32_t linearSize, mipMapCount;
        int levels;
    };
    const std::vector<Case> cases = {
        {8200, 8, 8},  // block of 16400 bytes: the whole chain
        {5000, 8, 1},  // block of 10000 bytes: level 0 whole, level 1 cut
        {8200, 1, 1},  // one level asked, block of 8200 bytes
        {8000, 1, 0},  // 8000 bytes cannot hold level 0
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::to_string(c.linearSize) + " / " + std::to_string(c.mipMapCount));
        const std::string file = dir + "/linear.dds";
        writeFile(file, makeDDS("DXT1", 128, 128, c.linearSize, c.mipMapCount, data));
        unsigned int id = 0;
        LGL::CreateDDSTexture(id, file);
        keep(id);
        expectDDSLevelsAsStored(id, file, GL_COMPRESSED_RGBA_S3TC_DXT1_EXT, 128, 128, c.levels);
    }
}

TEST_F(LGLTextureTest, DescriptionClaimingHugeSizesUploadsNothing)
{
    MessageLog log;
    const std::string file = dir + "/giant.dds";
    writeFile(file, makeDDS("DXT5", 0x40000000u, 0x40000000u, 4096, 3, std::string(4096, '\x11')));
    unsigned int id = 0;
    LGL::CreateDDSTexture(id, file);
    keep(id);
    ASSERT_NE(id, 0u);
    EXPECT_EQ(levelParameter(id, 0, GL_TEXTURE_WIDTH), 0);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    EXPECT_TRUE(log.all().empty());
}

TEST_F(LGLTextureTest, NegativeMipmapCountOrZeroSizesStayInsideTheData)
{
    const std::string negative = dir + "/negative.dds";
    writeFile(negative, makeDDS("DXT1", 4, 4, 8, 0xFFFFFFFFu, std::string(64, '\x22')));
    unsigned int id = 0;
    LGL::CreateDDSTexture(id, negative);
    keep(id);
    EXPECT_EQ(levelParameter(id, 0, GL_TEXTURE_WIDTH), 0);

    // A width and height of 0 are taken as 1: one 8-byte block.
    const std::string zero = dir + "/zero.dds";
    writeFile(zero, makeDDS("DXT1", 0, 0, 8, 1, std::string(8, '\x33')));
    unsigned int z = 0;
    LGL::CreateDDSTexture(z, zero);
    keep(z);
    expectDDSLevelsAsStored(z, zero, GL_COMPRESSED_RGBA_S3TC_DXT1_EXT, 1, 1, 1);
}

TEST_F(LGLTextureTest, DdsReaderWorksWithoutUploadAndReportsTheBytesItRead)
{
    MessageLog log;
    LGL::tDDSImageData* image = LGL::loadDDSTextureFile(asset("dds/dxsdk-legacy/DwarfHead.dds").c_str());
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->width, 256);
    EXPECT_EQ(image->height, 256);
    EXPECT_EQ(image->numMipMaps, 9);
    EXPECT_EQ(image->format, GL_COMPRESSED_RGBA_S3TC_DXT1_EXT);
    EXPECT_EQ(image->components, 3);
    // linear size 32768 times 2 asks for 65536 bytes; the file holds 43704.
    EXPECT_EQ(image->dataSize, 43704u);
    std::vector<LGL::tDDSLevel> levels = LGL::DDSLevels(image);
    ASSERT_EQ(levels.size(), 9u);
    EXPECT_EQ(levels[1].level, 1);
    EXPECT_EQ(levels[1].width, 128);
    EXPECT_EQ(levels[1].height, 128);
    EXPECT_EQ(levels[1].offset, 32768u);
    EXPECT_EQ(levels[1].size, 8192u);
    EXPECT_EQ(levels[8].offset + levels[8].size, 43704u);
    const std::string bytes = readFile(asset("dds/dxsdk-legacy/DwarfHead.dds"));
    EXPECT_EQ(std::memcmp(image->pixels, bytes.data() + 128, image->dataSize), 0);
    LGL::freeDDSImage(image);

    image = LGL::loadDDSTextureFile(asset("dds/magnum/dxt5.dds").c_str());
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->format, GL_COMPRESSED_RGBA_S3TC_DXT5_EXT);
    EXPECT_EQ(image->components, 4);
    EXPECT_EQ(image->dataSize, 16u);
    LGL::freeDDSImage(image);
    EXPECT_TRUE(log.all().empty());
}

TEST_F(LGLTextureTest, LaterDdsTexturesSkipTheCheckEvenAfterAFailure)
{
    MessageLog log;
    auto savedProc = LGL::glCompressedTexImage2DARB;
    auto savedFlag = LGL::textureCompressionChecked;

    LGL::textureCompressionChecked = false;
    LGL::CheckTextureCompression([](const char*) -> void* { return nullptr; });
    EXPECT_TRUE(LGL::textureCompressionChecked);
    ASSERT_EQ(log.all().size(), 1u);
    EXPECT_EQ(log.all()[0].text, "One or more ARB_texture_compression functions were not found");
    EXPECT_EQ(log.all()[0].caption, "ERROR");

    // The check is not repeated: no new message, and without the entry point nothing is uploaded.
    unsigned int id = 0;
    LGL::CreateDDSTexture(id, asset("dds/magnum/dxt1.dds"));
    keep(id);
    EXPECT_EQ(log.all().size(), 1u);
    ASSERT_NE(id, 0u);
    EXPECT_EQ(levelParameter(id, 0, GL_TEXTURE_WIDTH), 0);

    LGL::glCompressedTexImage2DARB = savedProc;
    LGL::textureCompressionChecked = savedFlag;
}

namespace {
std::vector<std::string> coreMessages;
}

TEST_F(LGLTextureTest, ContextWithoutCompressionExtensionShowsItsMessageOnce)
{
    // A core-profile context publishes no extension string through glGetString(GL_EXTENSIONS).
    const std::string file = asset("dds/magnum/dxt1.dds");
    OSTRUM_EXPECT_EXIT_WITH_LINE(
        {
            glutInitContextVersion(3, 2);
            glutInitContextProfile(GLUT_CORE_PROFILE);
            glutSetWindow(glutCreateWindow("core profile"));
            LGLPlatform::setMessageHandler([](const std::string& text, const std::string& caption) {
                coreMessages.push_back(caption + ": " + text);
            });
            LGL::textureCompressionChecked = false;
            unsigned int a = 0;
            unsigned int b = 0;
            LGL::CreateDDSTexture(a, file);
            LGL::CreateDDSTexture(b, file);
            GLint size = 0;
            glBindTexture(GL_TEXTURE_2D, b);
            glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_COMPRESSED_IMAGE_SIZE, &size);
            std::printf("%zu message(s), first \"%s\"; level 0 of the second texture holds %d bytes\n",
                        coreMessages.size(), coreMessages.empty() ? "" : coreMessages[0].c_str(), size);
            std::exit(0);
        },
        0,
        "1 message(s), first \"ERROR: ARB_texture_compression extension was not found\"; level 0 of the second "
        "texture holds 8 bytes");
}

TEST_F(LGLTextureTest, FailedPixelAllocationOfDdsReaderEndsTheProcess)
{
    // 16 MB of level data under an address-space limit 4 MB above what the process already uses.
    const std::string file = dir + "/big.dds";
    const uint32_t side = 4096;
    writeFile(file, makeDDS("DXT5", side, side, side * side, 1, std::string(side * side, '\0')));
    ScopedEnv env("ASAN_OPTIONS", allocatorReturnsNull());
    OSTRUM_EXPECT_EXIT_WITH_LINE(
        {
            struct rlimit limit;
            limit.rlim_cur = limit.rlim_max = currentAddressSpace() + (4u << 20);
            setrlimit(RLIMIT_AS, &limit);
            LGL::loadDDSTextureFile(file.c_str());
        },
        255, "ERROR in LGL::loadDDSTextureFile. Memory alloc failed.");
}

// ================================================================ CreateQuadraticCentredJPGTexture

TEST_F(LGLTextureTest, LandscapeJpegBecomesSquareWithBlackBandsOf80RowsAboveAndBelow)
{
    // Red over blue, 640 x 480.
    const std::string file = dir + "/landscape.jpg";
    ffmpeg("-f lavfi -i color=c=red:s=640x240 -f lavfi -i color=c=blue:s=640x240 -filter_complex vstack "
           "-frames:v 1 -pix_fmt yuvj444p -q:v 2 " + file);
    unsigned int id = 0;
    LGL::CreateQuadraticCentredJPGTexture(id, file, false, 0);
    keep(id);
    ASSERT_EQ(levelParameter(id, 0, GL_TEXTURE_WIDTH), 640);
    ASSERT_EQ(levelParameter(id, 0, GL_TEXTURE_HEIGHT), 640);
    EXPECT_EQ(levelParameter(id, 0, GL_TEXTURE_INTERNAL_FORMAT), 3);
    std::vector<uint8_t> level = levelPixels(id, 0, GL_RGB);
    const size_t row = 640 * 3;
    EXPECT_TRUE(allZero(level, 0, 80 * row));
    EXPECT_TRUE(allZero(level, 560 * row, 640 * row));
    EXPECT_FALSE(allZero(level, 80 * row, 81 * row));
    EXPECT_FALSE(allZero(level, 559 * row, 560 * row));
    // Rows run bottom-up: the blue half of the picture is low in the block, the red half high.
    const uint8_t* low = &level[(100 * 640 + 320) * 3];
    const uint8_t* high = &level[(540 * 640 + 320) * 3];
    EXPECT_LT(low[0], 30);
    EXPECT_GT(low[2], 220);
    EXPECT_GT(high[0], 220);
    EXPECT_LT(high[2], 30);

    DecodedJPG jpg(file);
    ASSERT_NE(jpg.image, nullptr);
    EXPECT_EQ(level, centredSquare(*jpg.image, jpg.channels, 640, false));
}

TEST_F(LGLTextureTest, LandscapeJpegFittedInsideIsCroppedAtTheSidesTo480)
{
    // Green | red | blue columns of 80, 480 and 80 pixels: only red survives the crop.
    const std::string file = dir + "/columns.jpg";
    ffmpeg("-f lavfi -i color=c=green:s=80x480 -f lavfi -i color=c=red:s=480x480 -f lavfi -i color=c=blue:s=80x480 "
           "-filter_complex hstack=inputs=3 -frames:v 1 -pix_fmt yuvj444p -q:v 2 " + file);
    unsigned int id = 0;
    LGL::CreateQuadraticCentredJPGTexture(id, file, true, 0);
    keep(id);
    ASSERT_EQ(levelParameter(id, 0, GL_TEXTURE_WIDTH), 480);
    ASSERT_EQ(levelParameter(id, 0, GL_TEXTURE_HEIGHT), 480);
    std::vector<uint8_t> level = levelPixels(id, 0, GL_RGB);
    for (int x : {4, 240, 475}) {
        const uint8_t* p = &level[(240 * 480 + x) * 3];
        EXPECT_GT(p[0], 200) << x;
        EXPECT_LT(p[1], 60) << x;
        EXPECT_LT(p[2], 60) << x;
    }
    DecodedJPG jpg(file);
    ASSERT_NE(jpg.image, nullptr);
    EXPECT_EQ(level, centredSquare(*jpg.image, jpg.channels, 480, true));
}

TEST_F(LGLTextureTest, JpegOf100By50GivesSize112)
{
    const std::string file = dir + "/small.jpg";
    ffmpeg("-f lavfi -i color=c=white:s=100x50 -frames:v 1 -pix_fmt yuvj444p " + file);
    unsigned int id = 0;
    LGL::CreateQuadraticCentredJPGTexture(id, file, false, 0);
    keep(id);
    ASSERT_EQ(levelParameter(id, 0, GL_TEXTURE_WIDTH), 112);
    ASSERT_EQ(levelParameter(id, 0, GL_TEXTURE_HEIGHT), 112);
    std::vector<uint8_t> level = levelPixels(id, 0, GL_RGB);
    // Offsets (56 - 50, 56 - 25) = (6, 31): columns 0..5 and 106..111, rows 0..30 and 81..111 black.
    auto at = [&](int x, int y) { return level[(y * 112 + x) * 3]; };
    EXPECT_EQ(at(5, 50), 0);
    EXPECT_GT(at(6, 50), 200);
    EXPECT_GT(at(105, 50), 200);
    EXPECT_EQ(at(106, 50), 0);
    EXPECT_EQ(at(50, 30), 0);
    EXPECT_GT(at(50, 31), 200);
    EXPECT_GT(at(50, 80), 200);
    EXPECT_EQ(at(50, 81), 0);
    DecodedJPG jpg(file);
    ASSERT_NE(jpg.image, nullptr);
    EXPECT_EQ(level, centredSquare(*jpg.image, jpg.channels, 112, false));
}

TEST_F(LGLTextureTest, JpegFittedInsideTakesTheSmallerSideRaisedToSixteen)
{
    // 100 x 50 fitted inside: 50 -> 64, offsets (32 - 50, 32 - 25) = (-18, 7).
    const std::string file = dir + "/small.jpg";
    ffmpeg("-f lavfi -i testsrc=s=100x50 -frames:v 1 -pix_fmt yuvj444p " + file);
    unsigned int id = 0;
    LGL::CreateQuadraticCentredJPGTexture(id, file, true, 0);
    keep(id);
    ASSERT_EQ(levelParameter(id, 0, GL_TEXTURE_WIDTH), 64);
    DecodedJPG jpg(file);
    ASSERT_NE(jpg.image, nullptr);
    EXPECT_EQ(levelPixels(id, 0, GL_RGB), centredSquare(*jpg.image, jpg.channels, 64, true));
}

TEST_F(LGLTextureTest, GreyJpegTakesTheNextPixelForGreenAndBlueUnlessFittedInside)
{
    const std::string file = asset("jpg/pillow/hopper_gray.jpg");
    DecodedJPG jpg(file);
    ASSERT_NE(jpg.image, nullptr);
    ASSERT_EQ(jpg.channels, 1);
    unsigned int quirk = 0, plain = 0;
    LGL::CreateQuadraticCentredJPGTexture(quirk, file, false, 0);
    LGL::CreateQuadraticCentredJPGTexture(plain, file, true, 0);
    keep(quirk);
    keep(plain);
    std::vector<uint8_t> q = levelPixels(quirk, 0, GL_RGB);
    std::vector<uint8_t> p = levelPixels(plain, 0, GL_RGB);
    EXPECT_EQ(q, centredSquare(*jpg.image, 1, 128, false));
    EXPECT_EQ(p, centredSquare(*jpg.image, 1, 128, true));
    // By hand: the picture's top-left pixel sits in the block's last row, first column.
    const uint8_t* g = jpg.image->data;
    const uint8_t* topLeft = &q[(127 * 128) * 3];
    EXPECT_EQ(topLeft[0], g[0]);
    EXPECT_EQ(topLeft[1], g[1]);
    EXPECT_EQ(topLeft[2], g[1]);
    EXPECT_NE(q, p);
}

TEST_F(LGLTextureTest, TinyGreyJpegRepeatsItsLastPixel)
{
    // 3 x 2 grey: size 16; the picture's last pixel has no next pixel and repeats its own value.
    const std::string file = asset("jpg/magnum/gray.jpg");
    DecodedJPG jpg(file);
    ASSERT_NE(jpg.image, nullptr);
    unsigned int id = 0;
    LGL::CreateQuadraticCentredJPGTexture(id, file, false, 0);
    keep(id);
    std::vector<uint8_t> level = levelPixels(id, 0, GL_RGB);
    ASSERT_EQ(level.size(), 16u * 16 * 3);
    // Offsets (8 - 1, 8 - 1): the last pixel (2, 1) is at column 9 of canvas row 8, block row 7.
    const uint8_t* last = &level[(7 * 16 + 9) * 3];
    EXPECT_EQ(last[0], jpg.image->data[5]);
    EXPECT_EQ(last[1], jpg.image->data[5]);
    EXPECT_EQ(last[2], jpg.image->data[5]);
    EXPECT_EQ(level, centredSquare(*jpg.image, 1, 16, false));
}

TEST_F(LGLTextureTest, TargetSizeAveragesBlocksOfSourcePixels)
{
    const std::string file = asset("jpg/pillow/hopper.jpg");
    DecodedJPG jpg(file);
    ASSERT_NE(jpg.image, nullptr);
    std::vector<uint8_t> square = centredSquare(*jpg.image, jpg.channels, 128, false);

    unsigned int id = 0;
    LGL::CreateQuadraticCentredJPGTexture(id, file, false, 32);
    keep(id);
    ASSERT_EQ(levelParameter(id, 0, GL_TEXTURE_WIDTH), 32);
    ASSERT_EQ(levelParameter(id, 0, GL_TEXTURE_HEIGHT), 32);
    std::vector<uint8_t> level = levelPixels(id, 0, GL_RGB);
    for (int ty = 0; ty < 32; ++ty)
        for (int tx = 0; tx < 32; ++tx)
            for (int c = 0; c < 3; ++c) {
                int sum = 0;
                for (int y = 0; y < 4; ++y)
                    for (int x = 0; x < 4; ++x)
                        sum += square[((ty * 4 + y) * 128 + tx * 4 + x) * 3 + c];
                ASSERT_EQ(level[(ty * 32 + tx) * 3 + c], sum / 16) << tx << "," << ty << "," << c;
            }
}

TEST_F(LGLTextureTest, TargetSizeThatDividesLessThanTwiceKeepsTheSize)
{
    const std::string file = asset("jpg/pillow/hopper.jpg");
    for (int target : {100, 128, 512, -5}) {
        SCOPED_TRACE(target);
        unsigned int id = 0;
        LGL::CreateQuadraticCentredJPGTexture(id, file, false, target);
        keep(id);
        EXPECT_EQ(levelParameter(id, 0, GL_TEXTURE_WIDTH), 128);
    }
    // 128 / 60 = 2: blocks of 2 x 2 into 60 x 60.
    unsigned int id = 0;
    LGL::CreateQuadraticCentredJPGTexture(id, file, false, 60);
    keep(id);
    EXPECT_EQ(levelParameter(id, 0, GL_TEXTURE_WIDTH), 60);
}

TEST_F(LGLTextureTest, CentredJpegTextureIsMipmappedWithTheTextureFilters)
{
    unsigned int id = 0;
    LGL::CreateQuadraticCentredJPGTexture(id, asset("jpg/pillow/hopper.jpg"), false, 0);
    keep(id);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_INVALID_ENUM));
    EXPECT_EQ(textureParameter(id, GL_TEXTURE_MIN_FILTER), GL_LINEAR_MIPMAP_NEAREST);
    EXPECT_EQ(textureParameter(id, GL_TEXTURE_MAG_FILTER), GL_LINEAR);
    EXPECT_EQ(levelParameter(id, 1, GL_TEXTURE_WIDTH), 64);
    EXPECT_EQ(levelParameter(id, 7, GL_TEXTURE_WIDTH), 1);
}

TEST_F(LGLTextureTest, CentredTextureIgnoresOtherExtensions)
{
    for (const char* name : {"hopper.Jpg", "hopper.png", "hopper.bmp"}) {
        SCOPED_TRACE(name);
        const std::string file = copyAsset("jpg/pillow/hopper.jpg", dir, name);
        unsigned int id = 31337;
        LGL::CreateQuadraticCentredJPGTexture(id, file, false, 0);
        EXPECT_EQ(id, 31337u);
    }
}

TEST_F(LGLTextureTest, UndecodableJpegEndsTheProcessWithStatusZero)
{
    const std::string file = dir + "/broken.jpg";
    writeFile(file, "\xFF\xD8 not really a JPEG");
    unsigned int id = 0;
    OSTRUM_EXPECT_EXIT_WITH_LINE(LGL::CreateQuadraticCentredJPGTexture(id, file, false, 0), 0,
                                 "ERROR LGL::CreateQuadraticCentredJPGTexture: could not read the image \"" + file +
                                     "\"");
}

// ================================================================ CreateTransparentTexture

namespace {
// Pixels of a 4 x 2 test bitmap, bottom row first.
const std::vector<std::array<uint8_t, 3>> keyPixels = {
    {100, 100, 100}, {50, 50, 50}, {150, 150, 150}, {50, 150, 50},
    {0, 0, 0},       {1, 0, 0},    {99, 100, 101},  {255, 255, 255},
};

std::vector<uint8_t> alphasOf(const std::vector<uint8_t>& rgba)
{
    std::vector<uint8_t> alphas;
    for (size_t i = 3; i < rgba.size(); i += 4)
        alphas.push_back(rgba[i]);
    return alphas;
}
}  // namespace

TEST_F(LGLTextureTest, TransparentOverloadWithoutKeyMakesBlackTransparentAndNearBlackOpaque)
{
    const std::string file = dir + "/key.bmp";
    writeBMP24(file, 4, 2, keyPixels);
    unsigned int id = 0;
    LGL::CreateTransparentTexture(id, file);
    keep(id);
    EXPECT_EQ(levelParameter(id, 0, GL_TEXTURE_INTERNAL_FORMAT), 4);
    std::vector<uint8_t> rgba = levelPixels(id, 0, GL_RGBA);
    EXPECT_EQ(alphasOf(rgba), (std::vector<uint8_t>{255, 255, 255, 255, 0, 255, 255, 255}));
    // Colours are copied unchanged.
    for (size_t i = 0; i < keyPixels.size(); ++i)
        for (int c = 0; c < 3; ++c)
            EXPECT_EQ(rgba[i * 4 + c], keyPixels[i][c]);
}

TEST_F(LGLTextureTest, KeyModesCompareEveryChannelWithItsKeyValue)
{
    const std::string file = dir + "/key.bmp";
    writeBMP24(file, 4, 2, keyPixels);
    struct Case {
        int mode;
        std::vector<uint8_t> alphas;
    };
    const std::vector<Case> cases = {
        {0, {77, 255, 255, 255, 255, 255, 255, 255}},  // equal to (100, 100, 100)
        {1, {255, 77, 255, 255, 77, 77, 255, 255}},    // all three below
        {2, {255, 255, 77, 255, 255, 255, 255, 77}},   // all three above
        {7, {77, 255, 255, 255, 255, 255, 255, 255}},  // any other mode compares for equality
        {-1, {77, 77, 77, 77, 77, 77, 77, 77}},        // every pixel the fixed alpha
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.mode);
        unsigned int id = 0;
        int width = 0, height = 0;
        LGL::CreateTransparentTexture(id, file, c.mode, 100, 100, 100, 77, width, height);
        keep(id);
        EXPECT_EQ(width, 4);
        EXPECT_EQ(height, 2);
        std::vector<uint8_t> rgba = levelPixels(id, 0, GL_RGBA);
        EXPECT_EQ(alphasOf(rgba), c.alphas);
        for (size_t i = 0; i < keyPixels.size(); ++i)
            for (int k = 0; k < 3; ++k)
                EXPECT_EQ(rgba[i * 4 + k], keyPixels[i][k]);
    }
}

TEST_F(LGLTextureTest, TransparentTextureFiltersAreLinearAndMipmapped)
{
    const std::string file = dir + "/key.bmp";
    writeBMP24(file, 4, 2, keyPixels);
    unsigned int id = 0;
    LGL::CreateTransparentTexture(id, file);
    keep(id);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    EXPECT_EQ(textureParameter(id, GL_TEXTURE_MAG_FILTER), GL_LINEAR);
    EXPECT_EQ(textureParameter(id, GL_TEXTURE_MIN_FILTER), GL_LINEAR_MIPMAP_NEAREST);
    EXPECT_EQ(levelParameter(id, 1, GL_TEXTURE_WIDTH), 2);
}

TEST_F(LGLTextureTest, Tga32KeepsItsOwnAlphaWhateverTheKey)
{
    const std::string file = asset("tga/dxsdk-legacy/triangle.tga");
    unsigned int id = 0;
    int width = 0, height = 0;
    LGL::CreateTransparentTexture(id, file, -1, 0, 0, 0, 9, width, height);
    keep(id);
    EXPECT_EQ(width, 128);
    EXPECT_EQ(height, 128);
    TGAImage tga;
    ASSERT_EQ(tga.loadTGA(file.c_str()), 1);
    ASSERT_EQ(tga.bpp, 32);
    std::vector<uint8_t> expected(tga.data, tga.data + 128 * 128 * 4);
    std::free(tga.data);
    std::vector<uint8_t> rgba = levelPixels(id, 0, GL_RGBA);
    EXPECT_EQ(rgba, expected);
    EXPECT_NE(alphasOf(rgba), std::vector<uint8_t>(128 * 128, 9));
}

TEST_F(LGLTextureTest, Tga24IsKeyedLikeABitmap)
{
    const std::string file = copyAsset("tga/dxsdk-legacy/checker.tga", dir, "checker.TGA");
    TGAImage tga;
    ASSERT_EQ(tga.loadTGA(file.c_str()), 1);
    ASSERT_EQ(tga.bpp, 24);
    std::vector<uint8_t> expected;
    for (int i = 0; i < 256 * 256; ++i) {
        const uint8_t* p = tga.data + i * 3;
        expected.insert(expected.end(), {p[0], p[1], p[2]});
        expected.push_back(p[0] == 0 && p[1] == 0 && p[2] == 0 ? 0 : 255);
    }
    std::free(tga.data);
    unsigned int id = 0;
    LGL::CreateTransparentTexture(id, file);
    keep(id);
    std::vector<uint8_t> rgba = levelPixels(id, 0, GL_RGBA);
    EXPECT_EQ(rgba, expected);
}

TEST_F(LGLTextureTest, TransparentTextureRefusesOtherImageTypes)
{
    const std::string file = asset("jpg/pillow/hopper.jpg");
    unsigned int id = 5150;
    int width = -3, height = -3;
    StdoutCapture out;
    LGL::CreateTransparentTexture(id, file, 0, 0, 0, 0, 0, width, height);
    EXPECT_EQ(out.take(), "ERROR LGL::CreateTransparentTexture: unsupported image type \"" + file + "\"\n");
    EXPECT_EQ(id, 5150u);
    EXPECT_EQ(width, -3);
    EXPECT_EQ(height, -3);
}

TEST_F(LGLTextureTest, UnreadableTransparentImageEndsTheProcess)
{
    const std::string bmp = dir + "/missing.bmp";
    const std::string tga = dir + "/missing.tga";
    unsigned int id = 0;
    OSTRUM_EXPECT_EXIT_WITH_LINE(LGL::CreateTransparentTexture(id, bmp), 255,
                                 "ERROR LGL::CreateTransparentTexture: could not read the image \"" + bmp + "\"");
    OSTRUM_EXPECT_EXIT_WITH_LINE(LGL::CreateTransparentTexture(id, tga), 255,
                                 "ERROR LGL::CreateTransparentTexture: could not read the image \"" + tga + "\"");
}

// ================================================================ render and blank textures

TEST_F(LGLTextureTest, RenderTextureIsAnEmptyImageOfTheGivenSize)
{
    unsigned int id = 0;
    LGL::CreateRenderTexture(id, 64, 32, 3, GL_RGB);
    keep(id);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    EXPECT_EQ(levelParameter(id, 0, GL_TEXTURE_WIDTH), 64);
    EXPECT_EQ(levelParameter(id, 0, GL_TEXTURE_HEIGHT), 32);
    EXPECT_EQ(levelParameter(id, 0, GL_TEXTURE_INTERNAL_FORMAT), 3);
    EXPECT_EQ(levelParameter(id, 1, GL_TEXTURE_WIDTH), 0);
    EXPECT_EQ(textureParameter(id, GL_TEXTURE_MIN_FILTER), GL_LINEAR);
    EXPECT_EQ(textureParameter(id, GL_TEXTURE_MAG_FILTER), GL_LINEAR);
    std::vector<uint8_t> pixels = levelPixels(id, 0, GL_RGB);
    EXPECT_TRUE(allZero(pixels, 0, pixels.size()));
}

TEST_F(LGLTextureTest, SquareRenderTextureTakesOneSize)
{
    unsigned int id = 0;
    LGL::CreateRenderTexture(id, 128, 4, GL_RGBA);
    keep(id);
    EXPECT_EQ(levelParameter(id, 0, GL_TEXTURE_WIDTH), 128);
    EXPECT_EQ(levelParameter(id, 0, GL_TEXTURE_HEIGHT), 128);
    EXPECT_EQ(levelParameter(id, 0, GL_TEXTURE_INTERNAL_FORMAT), 4);
    std::vector<uint8_t> pixels = levelPixels(id, 0, GL_RGBA);
    EXPECT_TRUE(allZero(pixels, 0, pixels.size()));
}

TEST_F(LGLTextureTest, RenderTextureWithMoreFormatComponentsThanChannelsStaysInsideItsBlock)
{
    unsigned int id = 0;
    LGL::CreateRenderTexture(id, 16, 16, 1, GL_RGBA);
    keep(id);
    EXPECT_EQ(levelParameter(id, 0, GL_TEXTURE_WIDTH), 16);
    EXPECT_EQ(levelParameter(id, 0, GL_TEXTURE_INTERNAL_FORMAT), 1);
}

TEST_F(LGLTextureTest, RenderTextureReceivesTheFrameBuffer)
{
    setPixelProjection();
    glColor3f(0, 1, 0);
    glBegin(GL_QUADS);
    glVertex2i(0, 0);
    glVertex2i(32, 0);
    glVertex2i(32, 32);
    glVertex2i(0, 32);
    glEnd();
    unsigned int id = 0;
    LGL::CreateRenderTexture(id, 32, 3, GL_RGB);
    keep(id);
    glCopyTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 0, 0, 32, 32);
    std::vector<uint8_t> pixels = levelPixels(id, 0, GL_RGB);
    EXPECT_EQ(pixels[0], 0);
    EXPECT_EQ(pixels[1], 255);
    EXPECT_EQ(pixels[2], 0);
}

TEST_F(LGLTextureTest, BlankTextureIgnoresItsColourAndIsBlack)
{
    unsigned int id = 0;
    glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    LGL::CreateBlankTexture(id, 255, 255, 255, 30, 21);
    keep(id);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    EXPECT_EQ(levelParameter(id, 0, GL_TEXTURE_WIDTH), 30);
    EXPECT_EQ(levelParameter(id, 0, GL_TEXTURE_HEIGHT), 21);
    EXPECT_EQ(levelParameter(id, 0, GL_TEXTURE_INTERNAL_FORMAT), 3);
    EXPECT_EQ(textureParameter(id, GL_TEXTURE_MIN_FILTER), GL_LINEAR);
    EXPECT_EQ(textureParameter(id, GL_TEXTURE_MAG_FILTER), GL_LINEAR);
    GLint alignment = 0;
    glGetIntegerv(GL_UNPACK_ALIGNMENT, &alignment);
    EXPECT_EQ(alignment, 1);
    std::vector<uint8_t> pixels = levelPixels(id, 0, GL_RGB);
    ASSERT_EQ(pixels.size(), 30u * 21 * 3);
    EXPECT_TRUE(allZero(pixels, 0, pixels.size()));
}

TEST_F(LGLTextureTest, BlankTextureThatCannotBeAllocatedEndsTheProcess)
{
    ScopedEnv env("ASAN_OPTIONS", allocatorReturnsNull());
    unsigned int id = 0;
    OSTRUM_EXPECT_EXIT_WITH_LINE(LGL::CreateBlankTexture(id, 0, 0, 0, 1 << 20, 1 << 20), 255,
                                 "ERROR in CreateBlankTexture memory allocation");
    OSTRUM_EXPECT_EXIT_WITH_LINE(LGL::CreateBlankTexture(id, 0, 0, 0, -1, 16), 255,
                                 "ERROR in CreateBlankTexture memory allocation");
}

// ================================================================ flips

namespace {
// width x height pixels of `bpp` bytes, byte k of pixel (x, y) = 100 * y + 10 * x + k.
std::vector<uint8_t> numbered(int width, int height, int bpp)
{
    std::vector<uint8_t> data;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (int k = 0; k < bpp; ++k)
                data.push_back(static_cast<uint8_t>(100 * y + 10 * x + k));
    return data;
}
}  // namespace

TEST(LGLFlipTest, VerticalFlipReversesTheRows)
{
    for (int height : {1, 2, 3, 4}) {
        SCOPED_TRACE(height);
        std::vector<uint8_t> data = numbered(3, height, 2);
        LGL::FlipBitmapVertical(data.data(), 3, height, 2);
        std::vector<uint8_t> expected;
        for (int y = height - 1; y >= 0; --y)
            for (int x = 0; x < 3; ++x)
                for (int k = 0; k < 2; ++k)
                    expected.push_back(static_cast<uint8_t>(100 * y + 10 * x + k));
        EXPECT_EQ(data, expected);
    }
}

TEST(LGLFlipTest, HorizontalFlipReversesWholePixelsOfEachRow)
{
    for (int width : {1, 2, 3, 4}) {
        SCOPED_TRACE(width);
        std::vector<uint8_t> data = numbered(width, 2, 3);
        LGL::FlipBitmapHorizontal(data.data(), width, 2, 3);
        std::vector<uint8_t> expected;
        for (int y = 0; y < 2; ++y)
            for (int x = width - 1; x >= 0; --x)
                for (int k = 0; k < 3; ++k)
                    expected.push_back(static_cast<uint8_t>(100 * y + 10 * x + k));
        EXPECT_EQ(data, expected);
    }
}

TEST(LGLFlipTest, FlippingTwiceGivesTheBlockBack)
{
    std::vector<uint8_t> data = numbered(5, 3, 4);
    const std::vector<uint8_t> original = data;
    LGL::FlipBitmapVertical(data.data(), 5, 3, 4);
    LGL::FlipBitmapHorizontal(data.data(), 5, 3, 4);
    EXPECT_NE(data, original);
    LGL::FlipBitmapHorizontal(data.data(), 5, 3, 4);
    LGL::FlipBitmapVertical(data.data(), 5, 3, 4);
    EXPECT_EQ(data, original);
}

TEST(LGLFlipTest, EmptyBlocksAreLeftAlone)
{
    std::vector<uint8_t> data = numbered(2, 2, 1);
    const std::vector<uint8_t> original = data;
    LGL::FlipBitmapVertical(data.data(), 0, 2, 1);
    LGL::FlipBitmapHorizontal(data.data(), 2, 0, 1);
    LGL::FlipBitmapVertical(data.data(), 2, 0, 1);
    EXPECT_EQ(data, original);
}

TEST(LGLFlipTest, FlipsWhoseRowBufferCannotBeAllocatedEndTheProcess)
{
    ScopedEnv env("ASAN_OPTIONS", allocatorReturnsNull());
    unsigned char pixel[4] = {0, 0, 0, 0};
    OSTRUM_EXPECT_EXIT_WITH_LINE(LGL::FlipBitmapVertical(pixel, 0x7FFFFFFF, 1, 0x7FFFFFFF), 255,
                                 "ERROR in FlipBitmapVertical memory allocation");
    OSTRUM_EXPECT_EXIT_WITH_LINE(LGL::FlipBitmapHorizontal(pixel, 0x7FFFFFFF, 1, 0x7FFFFFFF), 255,
                                 "ERROR in FlipBitmapHorizontal memory allocation");
    OSTRUM_EXPECT_EXIT_WITH_LINE(LGL::FlipBitmapVertical(pixel, -1, 1, 4), 255,
                                 "ERROR in FlipBitmapVertical memory allocation");
    OSTRUM_EXPECT_EXIT_WITH_LINE(LGL::FlipBitmapHorizontal(pixel, -1, 1, 4), 255,
                                 "ERROR in FlipBitmapHorizontal memory allocation");
}
