// LGLAnimTextureTest.cpp -- animated textures: loading frame files into the type table, scheduling
// slots, stepping frames by the timer, and drawing them facing the view or unrotated, on Mesa.
#include <ostrum_gl/effects/LGLAnimTexture.h>
#include <ostrum_gl/frame/LGLCamera.h>

#include "TestSupport.h"

#include <GL/gl.h>
#include <GL/glu.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <thread>
#include <vector>

using ostrum_test::FeedbackItem;
using ostrum_test::GLTest;
using ostrum_test::itemsOf;
using ostrum_test::makeTempDir;
using ostrum_test::recordFeedback;
using ostrum_test::StdoutCapture;
using ostrum_test::writeFile;

namespace {

using RGB = std::array<uint8_t, 3>;
const RGB kKey = {75, 75, 75};

void put16(std::string& out, uint32_t v)
{
    out += static_cast<char>(v & 0xFF);
    out += static_cast<char>((v >> 8) & 0xFF);
}
void put32(std::string& out, uint32_t v)
{
    put16(out, v & 0xFFFF);
    put16(out, v >> 16);
}

// A 24-bit BMP of w x h whose pixel (x, y), y = 0 the top row, is colour(x, y) in R, G, B.
void writeBMP(const std::string& path, int w, int h, const std::function<RGB(int, int)>& colour)
{
    const int row = (w * 3 + 3) & ~3;
    std::string out = "BM";
    put32(out, 54 + row * h);
    put32(out, 0);
    put32(out, 54);
    put32(out, 40);
    put32(out, static_cast<uint32_t>(w));
    put32(out, static_cast<uint32_t>(h));
    put16(out, 1);
    put16(out, 24);
    for (int i = 0; i < 6; ++i)
        put32(out, 0);
    for (int y = h - 1; y >= 0; --y) {
        std::string line;
        for (int x = 0; x < w; ++x) {
            RGB c = colour(x, y);
            line += static_cast<char>(c[2]);
            line += static_cast<char>(c[1]);
            line += static_cast<char>(c[0]);
        }
        line.resize(static_cast<size_t>(row), '\0');
        out += line;
    }
    writeFile(path, out);
}

// An uncompressed 32-bit TGA of w x h (bottom row first) of one colour and alpha.
void writeTGA32(const std::string& path, int w, int h, RGB colour, uint8_t alpha)
{
    std::string out(18, '\0');
    out[2] = 2;
    out[12] = static_cast<char>(w & 0xFF);
    out[13] = static_cast<char>(w >> 8);
    out[14] = static_cast<char>(h & 0xFF);
    out[15] = static_cast<char>(h >> 8);
    out[16] = 32;
    out[17] = 8;
    for (int i = 0; i < w * h; ++i) {
        out += static_cast<char>(colour[2]);
        out += static_cast<char>(colour[1]);
        out += static_cast<char>(colour[0]);
        out += static_cast<char>(alpha);
    }
    writeFile(path, out);
}

// Frame i: 8 x 8, the left half the key colour, the right half (20 + 10 i, 200, 100).
RGB frameColour(int i)
{
    return {static_cast<uint8_t>(20 + 10 * i), 200, 100};
}

void writeFrames(const std::string& dir, const std::string& name, int count, int first = 0)
{
    for (int i = first; i < first + count; ++i) {
        char number[16];
        std::snprintf(number, sizeof number, "%03d", i);
        writeBMP(dir + "/" + name + number + ".bmp", 8, 8, [i](int x, int) { return x < 4 ? kKey : frameColour(i); });
    }
}

struct TextureImage {
    int width = 0;
    int height = 0;
    std::vector<uint8_t> rgba;
    std::array<int, 4> at(int x, int y) const
    {
        size_t i = (static_cast<size_t>(y) * width + x) * 4;
        return {rgba[i], rgba[i + 1], rgba[i + 2], rgba[i + 3]};
    }
};

TextureImage readTexture(unsigned int id)
{
    TextureImage image;
    glBindTexture(GL_TEXTURE_2D, id);
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &image.width);
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_HEIGHT, &image.height);
    image.rgba.assign(static_cast<size_t>(image.width) * image.height * 4, 0);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, image.rgba.data());
    return image;
}

class LGLAnimTextureTest : public GLTest {
protected:
    void SetUp() override
    {
        GLTest::SetUp();
        LGLAnimTexture::dispose();
        dir = makeTempDir();
        glDisable(GL_TEXTURE_2D);
        glDisable(GL_BLEND);
        glDisable(GL_ALPHA_TEST);
        glDisable(GL_CULL_FACE);
        glColor4f(1, 1, 1, 1);
    }
    void TearDown() override
    {
        LGLAnimTexture::dispose();
        glDisable(GL_TEXTURE_2D);
        glDisable(GL_BLEND);
        glDisable(GL_ALPHA_TEST);
        glDisable(GL_CULL_FACE);
    }

    // A loaded type of `count` frames of 8 x 8 with the given delay.
    int loadType(int count, int delay, const std::string& name = "fire")
    {
        writeFrames(dir, name, count);
        int type = -1;
        LGLAnimTexture::load(type, dir, name, count, delay);
        return type;
    }

    std::string dir;
};

// Waits until the object's timer has just moved on to a new millisecond.
int64_t freshMillisecond(const LGLAnimTexture& a)
{
    int64_t start = a.timer.read();
    int64_t now = start;
    while (now == start)
        now = a.timer.read();
    return now;
}

}  // namespace

// ---------------------------------------------------------------- loading

TEST_F(LGLAnimTextureTest, FrameFilesAreNameNumberedFromZeroWithThreeDigits)
{
    EXPECT_EQ(LGLAnimTexture::frameFile("fx", "fire", 0), "fx/fire000.bmp");
    EXPECT_EQ(LGLAnimTexture::frameFile("fx/", "fire", 7), "fx/fire007.bmp");
    EXPECT_EQ(LGLAnimTexture::frameFile("fx", "boom_", 49), "fx/boom_049.bmp");
    EXPECT_EQ(LGLAnimTexture::frameFile("", "spark", 12), "spark012.bmp");
    writeTGA32(dir + "/glow003.tga", 4, 4, {1, 2, 3}, 255);
    EXPECT_EQ(LGLAnimTexture::frameFile(dir, "glow", 3), dir + "/glow003.tga");
}

TEST_F(LGLAnimTextureTest, LoadAppendsATypeAndReturnsItsIndex)
{
    EXPECT_EQ(loadType(3, 100, "fire"), 0);
    EXPECT_EQ(loadType(2, 40, "flash"), 1);
    ASSERT_EQ(LGLAnimTexture::anim.size(), 2u);
    EXPECT_EQ(LGLAnimTexture::anim[0].frameCount, 3);
    EXPECT_EQ(LGLAnimTexture::anim[0].frameDelay, 100);
    EXPECT_EQ(LGLAnimTexture::anim[1].frameCount, 2);
    EXPECT_EQ(LGLAnimTexture::anim[1].frameDelay, 40);
}

TEST_F(LGLAnimTextureTest, EachFrameBecomesATextureWithTheKeyColourTransparent)
{
    int type = loadType(4, 100);
    const LGLAnimTexture::tAnim& a = LGLAnimTexture::anim[type];
    std::set<unsigned int> names;
    for (int i = 0; i < 4; ++i) {
        SCOPED_TRACE(i);
        ASSERT_NE(a.frameTextures[i], 0u);
        EXPECT_TRUE(glIsTexture(a.frameTextures[i]));
        names.insert(a.frameTextures[i]);
        TextureImage image = readTexture(a.frameTextures[i]);
        ASSERT_EQ(image.width, 8);
        ASSERT_EQ(image.height, 8);
        RGB c = frameColour(i);
        EXPECT_EQ(image.at(1, 3), (std::array<int, 4>{75, 75, 75, 0}));
        EXPECT_EQ(image.at(6, 3), (std::array<int, 4>{c[0], c[1], c[2], 255}));
    }
    EXPECT_EQ(names.size(), 4u);
    for (int i = 4; i < LGLAnimTexture::kMaxFrames; ++i)
        EXPECT_EQ(a.frameTextures[i], 0u);
}

TEST_F(LGLAnimTextureTest, KeyColourIsTransparentOnlyWhenAllThreeChannelsMatch)
{
    writeBMP(dir + "/key000.bmp", 4, 1, [](int x, int) {
        const RGB colours[4] = {{75, 75, 75}, {75, 75, 76}, {74, 75, 75}, {0, 0, 0}};
        return colours[x];
    });
    int type = -1;
    LGLAnimTexture::load(type, dir, "key", 1, 10);
    TextureImage image = readTexture(LGLAnimTexture::anim[type].frameTextures[0]);
    ASSERT_EQ(image.width, 4);
    EXPECT_EQ(image.at(0, 0)[3], 0);
    EXPECT_EQ(image.at(1, 0)[3], 255);
    EXPECT_EQ(image.at(2, 0)[3], 255);
    EXPECT_EQ(image.at(3, 0)[3], 255);
}

TEST_F(LGLAnimTextureTest, PictureSpansItsWholeTextureSoTexExtentIsOneAndTexStartZero)
{
    // A 48 x 24 picture: red in its first column, blue in its last, green between.
    writeBMP(dir + "/wide000.bmp", 48, 24, [](int x, int) -> RGB {
        if (x == 0)
            return {255, 0, 0};
        if (x == 47)
            return {0, 0, 255};
        return {0, 255, 0};
    });
    int type = -1;
    LGLAnimTexture::load(type, dir, "wide", 1, 10);
    const LGLAnimTexture::tAnim& a = LGLAnimTexture::anim[type];
    TextureImage image = readTexture(a.frameTextures[0]);
    // The texture is rescaled to powers of two, and its first and last columns are still the
    // picture's first and last: the picture covers the texture from edge to edge.
    EXPECT_GT(image.width, 0);
    EXPECT_EQ(image.width & (image.width - 1), 0);
    EXPECT_GT(image.at(0, image.height / 2)[0], 128);
    EXPECT_GT(image.at(image.width - 1, image.height / 2)[2], 128);
    EXPECT_DOUBLE_EQ(a.texExtent[0], 1.0);
    EXPECT_DOUBLE_EQ(a.texStart[0], 0.5 - a.texExtent[0] * 0.5);
    EXPECT_DOUBLE_EQ(a.texStart[0], 0.0);
}

TEST_F(LGLAnimTextureTest, LoadClampsTheFrameCountToFifty)
{
    writeFrames(dir, "many", 52);
    int type = -1;
    StdoutCapture out;
    LGLAnimTexture::load(type, dir, "many", 60, 30);
    EXPECT_EQ(out.take(), "");
    const LGLAnimTexture::tAnim& a = LGLAnimTexture::anim[type];
    EXPECT_EQ(a.frameCount, 50);
    for (int i = 0; i < 50; ++i) {
        EXPECT_TRUE(glIsTexture(a.frameTextures[i])) << i;
        EXPECT_DOUBLE_EQ(a.texExtent[i], 1.0);
    }
}

TEST_F(LGLAnimTextureTest, NegativeFrameCountLoadsNoFrame)
{
    writeFrames(dir, "none", 2);
    int type = -1;
    LGLAnimTexture::load(type, dir, "none", -3, 30);
    EXPECT_EQ(type, 0);
    EXPECT_EQ(LGLAnimTexture::anim[0].frameCount, 0);
    EXPECT_EQ(LGLAnimTexture::anim[0].frameTextures[0], 0u);
}

TEST_F(LGLAnimTextureTest, MissingFrameFilePrintsAnErrorAndKeepsTheFramesBeforeIt)
{
    writeFrames(dir, "gap", 3);
    int type = -1;
    StdoutCapture out;
    LGLAnimTexture::load(type, dir, "gap", 5, 30);
    EXPECT_EQ(out.take(), "ERROR LGLAnimTexture::load: frame file \"" + dir + "/gap003.bmp\" not found\n");
    EXPECT_EQ(type, 0);
    const LGLAnimTexture::tAnim& a = LGLAnimTexture::anim[type];
    EXPECT_EQ(a.frameCount, 3);
    EXPECT_EQ(a.frameTextures[3], 0u);
    EXPECT_DOUBLE_EQ(a.texExtent[3], 0.0);
}

TEST_F(LGLAnimTextureTest, FrameFilesAreFoundWithoutRegardToLetterCase)
{
    writeBMP(dir + "/SMOKE000.BMP", 8, 8, [](int, int) { return frameColour(2); });
    int type = -1;
    StdoutCapture out;
    LGLAnimTexture::load(type, dir, "smoke", 1, 30);
    EXPECT_EQ(out.take(), "");
    ASSERT_EQ(LGLAnimTexture::anim[type].frameCount, 1);
    TextureImage image = readTexture(LGLAnimTexture::anim[type].frameTextures[0]);
    EXPECT_EQ(image.at(4, 4), (std::array<int, 4>{40, 200, 100, 255}));
}

TEST_F(LGLAnimTextureTest, TgaFrameIsTakenBeforeABmpAndKeepsItsOwnAlpha)
{
    writeFrames(dir, "glow", 1);
    writeTGA32(dir + "/glow000.tga", 4, 4, {10, 20, 30}, 128);
    int type = -1;
    LGLAnimTexture::load(type, dir, "glow", 1, 30);
    TextureImage image = readTexture(LGLAnimTexture::anim[type].frameTextures[0]);
    ASSERT_EQ(image.width, 4);
    EXPECT_EQ(image.at(2, 2), (std::array<int, 4>{10, 20, 30, 128}));
}

TEST_F(LGLAnimTextureTest, DisposeDeletesEveryFrameTextureAndEmptiesTheTable)
{
    loadType(3, 10, "a");
    loadType(2, 10, "b");
    std::vector<unsigned int> names;
    for (const auto& a : LGLAnimTexture::anim)
        names.insert(names.end(), a.frameTextures, a.frameTextures + a.frameCount);
    ASSERT_EQ(names.size(), 5u);
    LGLAnimTexture::dispose();
    EXPECT_TRUE(LGLAnimTexture::anim.empty());
    for (unsigned int name : names)
        EXPECT_FALSE(glIsTexture(name)) << name;
    // The next load starts the table again at 0.
    EXPECT_EQ(loadType(1, 10, "c"), 0);
}

// ---------------------------------------------------------------- slots

TEST_F(LGLAnimTextureTest, NewObjectHasNoTypeAndNoActiveSlot)
{
    LGLAnimTexture a;
    EXPECT_EQ(a.type, -1);
    EXPECT_EQ(a.defaultWidth, 0);
    EXPECT_EQ(a.defaultHeight, 0);
    EXPECT_FALSE(a.loop);
    for (const auto& slot : a.slots)
        EXPECT_FALSE(slot.active);
}

TEST_F(LGLAnimTextureTest, InitStoresTheMembersAndDeactivatesAllSlots)
{
    LGLAnimTexture a;
    for (auto& slot : a.slots)
        slot.active = true;
    a.init(3, 40, 30, true);
    EXPECT_EQ(a.type, 3);
    EXPECT_EQ(a.defaultWidth, 40);
    EXPECT_EQ(a.defaultHeight, 30);
    EXPECT_TRUE(a.loop);
    for (const auto& slot : a.slots)
        EXPECT_FALSE(slot.active);
}

TEST_F(LGLAnimTextureTest, ClearAllDeactivatesAllSlots)
{
    LGLAnimTexture a;
    a.init(0, 4, 4, false);
    for (int i = 0; i < 5; ++i)
        a.schedule(SVector3D(0, 0, 0));
    a.clearAll();
    for (const auto& slot : a.slots)
        EXPECT_FALSE(slot.active);
}

TEST_F(LGLAnimTextureTest, ScheduleStartsInTheFirstInactiveSlot)
{
    LGLAnimTexture a;
    a.init(0, 10, 10, false);
    a.schedule(SVector3D(1, 2, 3), 5, 6);
    a.schedule(SVector3D(4, 5, 6), 7, 8);
    a.schedule(SVector3D(7, 8, 9), 9, 10);
    a.slots[1].active = false;
    a.slots[1].frame = 3;
    a.slots[1].lastSwitch = 999;
    a.schedule(SVector3D(-1, -2, -3), 11, 12);
    const auto& slot = a.slots[1];
    EXPECT_TRUE(slot.active);
    EXPECT_EQ(slot.position, SVector3D(-1, -2, -3));
    EXPECT_EQ(slot.width, 11);
    EXPECT_EQ(slot.height, 12);
    EXPECT_EQ(slot.frame, 0);
    EXPECT_EQ(slot.lastSwitch, 0);
    EXPECT_EQ(a.slots[2].position, SVector3D(7, 8, 9));
    EXPECT_FALSE(a.slots[3].active);
}

TEST_F(LGLAnimTextureTest, TwentyFirstConcurrentScheduleIsIgnored)
{
    LGLAnimTexture a;
    a.init(0, 10, 10, false);
    for (int i = 0; i < 20; ++i)
        a.schedule(SVector3D(static_cast<float>(i), 0, 0), i + 1, i + 1);
    LGLAnimTexture before = a;
    a.schedule(SVector3D(100, 100, 100), 50, 50);
    for (int i = 0; i < 20; ++i) {
        EXPECT_TRUE(a.slots[i].active);
        EXPECT_EQ(a.slots[i].position, before.slots[i].position);
        EXPECT_EQ(a.slots[i].width, i + 1);
    }
}

TEST_F(LGLAnimTextureTest, ScheduleWithoutSizeUsesTheDefaultSize)
{
    LGLAnimTexture a;
    a.init(0, 32, 24, false);
    a.schedule(SVector3D(5, 6, 7));
    EXPECT_TRUE(a.slots[0].active);
    EXPECT_EQ(a.slots[0].width, 32);
    EXPECT_EQ(a.slots[0].height, 24);
    EXPECT_EQ(a.slots[0].position, SVector3D(5, 6, 7));
}

TEST_F(LGLAnimTextureTest, CopyCopiesTheSlotsAndEveryMember)
{
    LGLAnimTexture a;
    a.init(2, 32, 24, true);
    a.schedule(SVector3D(5, 6, 7), 3, 4);
    a.slots[0].frame = 2;
    LGLAnimTexture b;
    b = a;
    EXPECT_EQ(b.type, 2);
    EXPECT_EQ(b.defaultWidth, 32);
    EXPECT_EQ(b.defaultHeight, 24);
    EXPECT_TRUE(b.loop);
    EXPECT_TRUE(b.slots[0].active);
    EXPECT_EQ(b.slots[0].frame, 2);
    EXPECT_EQ(b.slots[0].width, 3);
    EXPECT_FALSE(b.slots[1].active);
    LGLAnimTexture c(a);
    EXPECT_EQ(c.slots[0].position, SVector3D(5, 6, 7));
    // The timer keeps the original's start.
    EXPECT_NEAR(static_cast<double>(c.timer.read()), static_cast<double>(a.timer.read()), 1.0);
}

// ---------------------------------------------------------------- stepping

TEST_F(LGLAnimTextureTest, FrameDelayOfHundredAdvancesOnlyWhenMoreThanHundredHavePassed)
{
    LGLAnimTexture a;
    a.init(loadType(4, 100), 10, 10, false);
    a.schedule(SVector3D(0, 0, 0));
    // Exactly 100 ms: no change. Retried when the clock ticks during the attempt.
    for (int attempt = 0; attempt < 100; ++attempt) {
        int64_t now = freshMillisecond(a);
        a.slots[0].frame = 0;
        a.slots[0].lastSwitch = now - 100;
        a.handle();
        if (a.timer.read() == now)
            break;
    }
    EXPECT_EQ(a.slots[0].frame, 0);
    // 101 ms: the next frame, and lastSwitch takes the reading.
    int64_t now = a.timer.read();
    a.slots[0].lastSwitch = now - 101;
    a.handle();
    EXPECT_EQ(a.slots[0].frame, 1);
    EXPECT_GE(a.slots[0].lastSwitch, now);
    EXPECT_LE(a.slots[0].lastSwitch, a.timer.read());
}

TEST_F(LGLAnimTextureTest, SlotScheduledWithLastSwitchZeroAdvancesOnTheFirstHandle)
{
    LGLAnimTexture a;
    a.init(loadType(4, 5), 10, 10, false);
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    a.schedule(SVector3D(0, 0, 0));
    a.handle();
    EXPECT_EQ(a.slots[0].frame, 1);
    EXPECT_GE(a.slots[0].lastSwitch, 20);
    // And not again before the delay has passed once more.
    a.slots[0].lastSwitch = a.timer.read() + 1000;
    a.handle();
    EXPECT_EQ(a.slots[0].frame, 1);
}

TEST_F(LGLAnimTextureTest, OneShotSlotOfFourFramesIsInactiveAfterTheFourthFrameChange)
{
    LGLAnimTexture a;
    a.init(loadType(4, 100), 10, 10, false);
    a.schedule(SVector3D(0, 0, 0));
    for (int change = 1; change <= 3; ++change) {
        a.slots[0].lastSwitch = a.timer.read() - 1000;
        a.handle();
        EXPECT_TRUE(a.slots[0].active) << change;
        EXPECT_EQ(a.slots[0].frame, change);
    }
    a.slots[0].lastSwitch = a.timer.read() - 1000;
    a.handle();
    EXPECT_FALSE(a.slots[0].active);
    EXPECT_EQ(a.slots[0].frame, 0);
}

TEST_F(LGLAnimTextureTest, LoopingSlotStartsAgainAtFrameZero)
{
    LGLAnimTexture a;
    a.init(loadType(4, 100), 10, 10, true);
    a.schedule(SVector3D(0, 0, 0));
    for (int change = 1; change <= 4; ++change) {
        a.slots[0].lastSwitch = a.timer.read() - 1000;
        a.handle();
    }
    EXPECT_TRUE(a.slots[0].active);
    EXPECT_EQ(a.slots[0].frame, 0);
    a.slots[0].lastSwitch = a.timer.read() - 1000;
    a.handle();
    EXPECT_EQ(a.slots[0].frame, 1);
}

TEST_F(LGLAnimTextureTest, HandleStepsEveryActiveSlotAndLeavesInactiveOnesAlone)
{
    LGLAnimTexture a;
    a.init(loadType(4, 100), 10, 10, false);
    a.schedule(SVector3D(0, 0, 0));
    a.schedule(SVector3D(1, 0, 0));
    a.slots[5].frame = 2;
    a.slots[5].lastSwitch = 0;
    int64_t old = a.timer.read() - 1000;
    a.slots[0].lastSwitch = old;
    a.slots[1].lastSwitch = old;
    a.handle();
    EXPECT_EQ(a.slots[0].frame, 1);
    EXPECT_EQ(a.slots[1].frame, 1);
    EXPECT_EQ(a.slots[0].lastSwitch, a.slots[1].lastSwitch);
    EXPECT_EQ(a.slots[5].frame, 2);
    EXPECT_EQ(a.slots[5].lastSwitch, 0);
}

TEST_F(LGLAnimTextureTest, HandleWithoutALoadedTypeChangesNothing)
{
    LGLAnimTexture a;
    a.init(7, 10, 10, false);
    a.schedule(SVector3D(0, 0, 0));
    a.slots[0].lastSwitch = -100000;
    a.handle();
    EXPECT_TRUE(a.slots[0].active);
    EXPECT_EQ(a.slots[0].frame, 0);
}

TEST_F(LGLAnimTextureTest, SlotsOfATypeWithoutFramesEndOnTheirFirstHandle)
{
    int type = -1;
    LGLAnimTexture::load(type, dir, "absent", 0, 10);
    LGLAnimTexture a;
    a.init(type, 10, 10, true);
    a.schedule(SVector3D(0, 0, 0));
    a.handle();
    EXPECT_FALSE(a.slots[0].active);
}

// ---------------------------------------------------------------- drawing

namespace {

using ostrum_test::FeedbackVertex;

// The quads that `draw` draws, each as its four vertices in the order they were given. Mesa's
// feedback splits a quad (v0, v1, v2, v3) into the triangles (v0, v1, v3) and (v1, v2, v3).
std::vector<std::vector<FeedbackVertex>> quads(const std::function<void()>& draw)
{
    std::vector<FeedbackItem> triangles = itemsOf(recordFeedback(draw), GL_POLYGON_TOKEN);
    std::vector<std::vector<FeedbackVertex>> result;
    EXPECT_EQ(triangles.size() % 2, 0u);
    for (size_t k = 0; k + 1 < triangles.size(); k += 2) {
        const auto& first = triangles[k].vertices;
        const auto& second = triangles[k + 1].vertices;
        if (first.size() != 3 || second.size() != 3) {
            ADD_FAILURE() << "a quad that is not two triangles";
            continue;
        }
        EXPECT_EQ(first[1].x, second[0].x);
        EXPECT_EQ(first[1].y, second[0].y);
        EXPECT_EQ(first[2].x, second[2].x);
        EXPECT_EQ(first[2].y, second[2].y);
        result.push_back({first[0], first[1], second[1], first[2]});
    }
    return result;
}

}  // namespace

TEST_F(LGLAnimTextureTest, RenderRawDrawsEverySlotAtTheDefaultSizeEvenWhenScheduledWithAnotherSize)
{
    LGLAnimTexture a;
    a.init(loadType(2, 100), 40, 30, false);
    a.schedule(SVector3D(100, 100, 0), 10, 10);
    a.schedule(SVector3D(300, 200, 0), 50, 60);
    setPixelProjection();
    auto items = quads([&] { a.render_raw(); });
    ASSERT_EQ(items.size(), 2u);
    const float corners[2][2] = {{100, 100}, {300, 200}};
    for (int k = 0; k < 2; ++k) {
        SCOPED_TRACE(k);
        const auto& v = items[k];
        ASSERT_EQ(v.size(), 4u);
        const float x = corners[k][0], y = corners[k][1];
        // (left, top), (right, top), (right, bottom), (left, bottom) with top 0 and bottom 30.
        const float expected[4][4] = {{x, y, 0, 1}, {x + 40, y, 1, 1}, {x + 40, y + 30, 1, 0}, {x, y + 30, 0, 0}};
        for (int i = 0; i < 4; ++i) {
            EXPECT_NEAR(v[i].x, expected[i][0], 1e-3);
            EXPECT_NEAR(v[i].y, expected[i][1], 1e-3);
            EXPECT_NEAR(v[i].s, expected[i][2], 1e-6);
            EXPECT_NEAR(v[i].t, expected[i][3], 1e-6);
            EXPECT_NEAR(v[i].r, 1.0, 1e-6);
            EXPECT_NEAR(v[i].g, 1.0, 1e-6);
            EXPECT_NEAR(v[i].b, 1.0, 1e-6);
            EXPECT_NEAR(v[i].a, 0.9, 1e-6);
        }
    }
}

TEST_F(LGLAnimTextureTest, RenderRawDrawsNothingForInactiveSlotsOrFramesOutsideTheType)
{
    LGLAnimTexture a;
    a.init(loadType(4, 100), 40, 30, false);
    setPixelProjection();
    EXPECT_TRUE(quads([&] { a.render_raw(); }).empty());
    a.schedule(SVector3D(10, 10, 0));
    a.schedule(SVector3D(20, 10, 0));
    a.slots[1].frame = 4;
    EXPECT_EQ(quads([&] { a.render_raw(); }).size(), 1u);
}

TEST_F(LGLAnimTextureTest, RenderRawLeavesTexturingOnCullingOffAndAlphaTestAndBlendingOff)
{
    LGLAnimTexture a;
    int type = loadType(3, 100);
    a.init(type, 40, 30, false);
    a.schedule(SVector3D(10, 10, 0));
    a.schedule(SVector3D(60, 10, 0));
    a.slots[1].frame = 2;
    glEnable(GL_CULL_FACE);
    glBindTexture(GL_TEXTURE_2D, LGLAnimTexture::anim[type].frameTextures[2]);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    setPixelProjection();
    a.render_raw();
    EXPECT_TRUE(glIsEnabled(GL_TEXTURE_2D));
    EXPECT_FALSE(glIsEnabled(GL_CULL_FACE));
    EXPECT_FALSE(glIsEnabled(GL_ALPHA_TEST));
    EXPECT_FALSE(glIsEnabled(GL_BLEND));
    GLint func = 0, src = 0, dst = 0, bound = 0, wrapS = 0, wrapT = 0;
    GLfloat ref = -1;
    glGetIntegerv(GL_ALPHA_TEST_FUNC, &func);
    glGetFloatv(GL_ALPHA_TEST_REF, &ref);
    glGetIntegerv(GL_BLEND_SRC, &src);
    glGetIntegerv(GL_BLEND_DST, &dst);
    EXPECT_EQ(func, GL_GREATER);
    EXPECT_EQ(ref, 0.0f);
    EXPECT_EQ(src, GL_SRC_ALPHA);
    EXPECT_EQ(dst, GL_ONE_MINUS_SRC_ALPHA);
    // The last slot's frame texture stays bound, with repeat wrapping.
    glGetIntegerv(GL_TEXTURE_BINDING_2D, &bound);
    EXPECT_EQ(static_cast<unsigned int>(bound), LGLAnimTexture::anim[type].frameTextures[2]);
    glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, &wrapS);
    glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, &wrapT);
    EXPECT_EQ(wrapS, GL_REPEAT);
    EXPECT_EQ(wrapT, GL_REPEAT);
}

TEST_F(LGLAnimTextureTest, KeyColourIsNotDrawnAndThePictureBlendsAtNinetyPercent)
{
    LGLAnimTexture a;
    a.init(loadType(1, 100), 160, 80, false);
    a.schedule(SVector3D(100, 100, 0));
    glClearColor(0, 0, 1, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    glClearColor(0, 0, 0, 0);
    setPixelProjection();
    glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
    a.render_raw();
    glFinish();
    // The left half of the frame is the key colour: the background stays.
    auto left = readPixel(120, 140);
    EXPECT_EQ(left[0], 0);
    EXPECT_EQ(left[1], 0);
    EXPECT_EQ(left[2], 255);
    // The right half (20, 200, 100) at alpha 0.9 over blue.
    auto right = readPixel(240, 140);
    EXPECT_NEAR(right[0], 0.9 * 20, 2);
    EXPECT_NEAR(right[1], 0.9 * 200, 2);
    EXPECT_NEAR(right[2], 0.9 * 100 + 0.1 * 255, 2);
}

namespace {

struct ViewCase {
    const char* name;
    SVector3D eye;
    SVector3D target;
};

}  // namespace

TEST_F(LGLAnimTextureTest, RenderStandsEveryQuadParallelToTheViewPlaneUprightAndUnmirrored)
{
    const SVector3D slotPosition(3, 2, -1);
    const ViewCase cases[] = {
        {"down -z", SVector3D(0, 0, 50), SVector3D(0, 0, 0)},
        {"along +x", SVector3D(-50, 0, 0), SVector3D(0, 0, 0)},
        {"along -x", SVector3D(50, 0, 0), SVector3D(0, 0, 0)},
        {"down +z", SVector3D(0, 0, -50), SVector3D(0, 0, 0)},
        {"from above at 30 degrees", SVector3D(0, 25, 43.30127f), SVector3D(0, 0, 0)},
        {"from below, turned", SVector3D(30, -20, -30), SVector3D(0, 0, 0)},
        {"steeply down", SVector3D(5, 60, 8), SVector3D(0, 0, 0)},
    };
    LGLAnimTexture a;
    a.init(loadType(2, 100), 40, 20, false);
    a.schedule(slotPosition, 41, 20);
    a.slots[0].frame = 1;
    for (const ViewCase& c : cases) {
        SCOPED_TRACE(c.name);
        LGLCamera camera;
        camera.SetPosAndView(c.eye.x, c.eye.y, c.eye.z, c.target.x, c.target.y, c.target.z, 0, 1, 0);
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        glOrtho(-320, 320, -240, 240, -1000, 1000);
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        camera.Look();
        // Where the slot's anchor lands, by GLU from the same matrices.
        GLdouble model[16], projection[16];
        GLint viewport[4];
        glGetDoublev(GL_MODELVIEW_MATRIX, model);
        glGetDoublev(GL_PROJECTION_MATRIX, projection);
        glGetIntegerv(GL_VIEWPORT, viewport);
        GLdouble cx = 0, cy = 0, cz = 0;
        gluProject(slotPosition.x, slotPosition.y, slotPosition.z, model, projection, viewport, &cx, &cy, &cz);

        auto items = quads([&] { a.render(camera); });
        ASSERT_EQ(items.size(), 1u);
        const auto& v = items[0];
        ASSERT_EQ(v.size(), 4u);
        // Width 41 is centred with the integer half 20: from -20 to +21; height 20 from -10 to +10.
        // Upright and unmirrored: the picture's top left, texture (0, 1), is the window's top left.
        const double expected[4][4] = {{cx - 20, cy + 10, 0, 1},
                                       {cx + 21, cy + 10, 1, 1},
                                       {cx + 21, cy - 10, 1, 0},
                                       {cx - 20, cy - 10, 0, 0}};
        for (int i = 0; i < 4; ++i) {
            SCOPED_TRACE(i);
            EXPECT_NEAR(v[i].x, expected[i][0], 1e-2);
            EXPECT_NEAR(v[i].y, expected[i][1], 1e-2);
            EXPECT_NEAR(v[i].s, expected[i][2], 1e-6);
            EXPECT_NEAR(v[i].t, expected[i][3], 1e-6);
            // Parallel to the view plane: one depth for all four corners, the anchor's.
            EXPECT_NEAR(v[i].z, cz, 1e-5);
        }
        EXPECT_FALSE(glIsEnabled(GL_ALPHA_TEST));
        EXPECT_TRUE(glIsEnabled(GL_TEXTURE_2D));
        EXPECT_FALSE(glIsEnabled(GL_CULL_FACE));
        // The modelview matrix is as it was.
        GLdouble after[16];
        glGetDoublev(GL_MODELVIEW_MATRIX, after);
        for (int i = 0; i < 16; ++i)
            EXPECT_DOUBLE_EQ(after[i], model[i]);
    }
}

TEST_F(LGLAnimTextureTest, RenderFacesTheViewDirectionNotTheCamera)
{
    // Two slots far apart, seen by one camera: both quads are parallel to the view plane, so both
    // have a single depth of their own, though they lie in different directions from the eye.
    LGLAnimTexture a;
    a.init(loadType(1, 100), 10, 10, false);
    a.schedule(SVector3D(-150, 0, 0), 20, 20);
    a.schedule(SVector3D(150, 50, -40), 20, 20);
    LGLCamera camera;
    camera.SetPosAndView(0, 0, 100, 0, 0, 0, 0, 1, 0);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(-320, 320, -240, 240, -1000, 1000);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    camera.Look();
    auto items = quads([&] { a.render(camera); });
    ASSERT_EQ(items.size(), 2u);
    for (const auto& item : items) {
        ASSERT_EQ(item.size(), 4u);
        for (const auto& v : item)
            EXPECT_NEAR(v.z, item[0].z, 1e-6);
    }
    EXPECT_GT(std::abs(items[0][0].z - items[1][0].z), 1e-3);
}

TEST_F(LGLAnimTextureTest, RenderWithoutALoadedTypeDrawsNothing)
{
    LGLAnimTexture a;
    a.init(4, 10, 10, false);
    a.schedule(SVector3D(0, 0, 0));
    LGLCamera camera;
    setPixelProjection();
    EXPECT_TRUE(quads([&] { a.render(camera); }).empty());
    EXPECT_TRUE(quads([&] { a.render_raw(); }).empty());
}
