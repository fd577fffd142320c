// TGAImageTest.cpp -- TGAImage::loadTGA: real TGA files, files built byte by byte and damaged files.
#include <ostrum_core/TGAImage.h>

#include "ImageTestFiles.h"
#include "TestSupport.h"

#include <cstdlib>
#include <string>
#include <vector>

using namespace image_test;

namespace {

// Owns the pixels a TGAImage hands out.
struct LoadedTga {
    TGAImage image;
    int result = -1;
    LoadedTga() = default;
    LoadedTga(const LoadedTga&) = delete;
    LoadedTga& operator=(const LoadedTga&) = delete;
    ~LoadedTga() { std::free(image.data); }
    std::string pixels() const
    {
        return std::string(reinterpret_cast<char*>(image.data),
                           static_cast<size_t>(image.width) * image.height * (image.bpp / 8));
    }
    std::vector<int> pixel(int x, int y) const
    {
        int channels = image.bpp / 8;
        const unsigned char* p = image.data + (static_cast<size_t>(y) * image.width + x) * channels;
        return std::vector<int>(p, p + channels);
    }
};

void loadPath(const std::string& relative, LoadedTga& tga)
{
    tga.result = tga.image.loadTGA(assetPath(relative).c_str());
}

void loadBytes(const std::string& file, LoadedTga& tga)
{
    tga.result = tga.image.loadTGAFromMemory(bytesOf(file), file.size());
}

void expectEmpty(const TGAImage& image)
{
    EXPECT_EQ(image.data, nullptr);
    EXPECT_EQ(image.width, 0);
    EXPECT_EQ(image.height, 0);
    EXPECT_EQ(image.bpp, 0);
}

// Each pixel of an uncompressed true-colour or grey file, read straight from the file: rows bottom
// first, BGR(A) turned into RGB(A), grey repeated three times.
std::string expectedFromRawFile(const std::string& file)
{
    size_t id = static_cast<unsigned char>(file[0]);
    int width = static_cast<int>(get16(file, 12));
    int height = static_cast<int>(get16(file, 14));
    int depth = static_cast<unsigned char>(file[16]);
    bool topDown = (static_cast<unsigned char>(file[17]) & 0x20) != 0;
    size_t stored = static_cast<size_t>(depth) / 8;
    std::string out;
    for (int row = 0; row < height; ++row) {
        int fileRow = topDown ? height - 1 - row : row;
        for (int x = 0; x < width; ++x) {
            size_t at = 18 + id + (static_cast<size_t>(fileRow) * width + x) * stored;
            if (depth == 8) {
                out.append(3, file[at]);
            } else {
                out.push_back(file[at + 2]);
                out.push_back(file[at + 1]);
                out.push_back(file[at]);
                if (depth == 32)
                    out.push_back(file[at + 3]);
            }
        }
    }
    return out;
}

// Where the pixel data of a file ends, found by walking its header, colour map and packets.
size_t pixelDataEnd(const std::string& file)
{
    size_t at = 18 + static_cast<unsigned char>(file[0]);
    if (file[1] == 1)
        at += get16(file, 5) * ((static_cast<size_t>(static_cast<unsigned char>(file[7])) + 7) / 8);
    size_t stored = (static_cast<size_t>(static_cast<unsigned char>(file[16])) + 7) / 8;
    size_t total = static_cast<size_t>(get16(file, 12)) * get16(file, 14);
    if (file[2] < 9)
        return at + total * stored;
    for (size_t n = 0; n < total;) {
        unsigned packet = static_cast<unsigned char>(file[at]);
        size_t count = (packet & 0x7F) + 1;
        at += 1 + ((packet & 0x80) ? stored : count * stored);
        n += count;
    }
    return at;
}

}  // namespace

// ---------------------------------------------------------------- real files

TEST(TGAImage, ConstructorGivesTheEmptyImage)
{
    TGAImage image;
    expectEmpty(image);
}

TEST(TGAImage, Uncompressed24BitFileIsDeliveredAsRgbBottomRowFirst)
{
    std::string file = asset("tga/pillow/200x32_rgb_bl_raw.tga");
    LoadedTga tga;
    loadBytes(file, tga);
    ASSERT_EQ(tga.result, 1);
    EXPECT_EQ(tga.image.width, 200);
    EXPECT_EQ(tga.image.height, 32);
    EXPECT_EQ(tga.image.bpp, 24);
    EXPECT_TRUE(tga.pixels() == expectedFromRawFile(file));
}

TEST(TGAImage, Uncompressed32BitFileKeepsItsAlpha)
{
    std::string file = asset("tga/pillow/200x32_rgba_bl_raw.tga");
    LoadedTga tga;
    loadBytes(file, tga);
    ASSERT_EQ(tga.result, 1);
    EXPECT_EQ(tga.image.bpp, 32);
    EXPECT_TRUE(tga.pixels() == expectedFromRawFile(file));
}

TEST(TGAImage, TopLeftOriginFileIsTurnedBottomRowFirst)
{
    std::string file = asset("tga/pillow/200x32_rgba_tl_raw.tga");
    ASSERT_EQ(static_cast<unsigned char>(file[17]) & 0x20, 0x20);
    LoadedTga tga;
    loadBytes(file, tga);
    ASSERT_EQ(tga.result, 1);
    EXPECT_TRUE(tga.pixels() == expectedFromRawFile(file));
    // And it is the same picture as the bottom-left file.
    LoadedTga bottomLeft;
    loadPath("tga/pillow/200x32_rgba_bl_raw.tga", bottomLeft);
    EXPECT_TRUE(tga.pixels() == bottomLeft.pixels());
}

TEST(TGAImage, RunLengthFilesMatchTheirUncompressedTwins)
{
    const char* pairs[][2] = {
        {"200x32_rgb_bl_raw.tga", "200x32_rgb_bl_rle.tga"},
        {"200x32_rgb_bl_raw.tga", "200x32_rgb_tl_rle.tga"},
        {"200x32_rgb_bl_raw.tga", "200x32_rgb_tl_raw.tga"},  // run-length coded despite its name
        {"200x32_rgba_bl_raw.tga", "200x32_rgba_bl_rle.tga"},
        {"200x32_rgba_bl_raw.tga", "200x32_rgba_tl_rle.tga"},
        {"200x32_l_bl_raw.tga", "200x32_l_bl_rle.tga"},
        {"200x32_p_bl_raw.tga", "200x32_p_bl_rle.tga"},
    };
    for (const auto& pair : pairs) {
        SCOPED_TRACE(pair[1]);
        LoadedTga raw;
        LoadedTga rle;
        loadPath(std::string("tga/pillow/") + pair[0], raw);
        loadPath(std::string("tga/pillow/") + pair[1], rle);
        ASSERT_EQ(raw.result, 1);
        ASSERT_EQ(rle.result, 1);
        EXPECT_EQ(rle.image.bpp, raw.image.bpp);
        EXPECT_TRUE(rle.pixels() == raw.pixels());
    }
}

TEST(TGAImage, GreyFileIsRepeatedIntoRgb)
{
    std::string file = asset("tga/pillow/200x32_l_bl_raw.tga");
    LoadedTga tga;
    loadBytes(file, tga);
    ASSERT_EQ(tga.result, 1);
    EXPECT_EQ(tga.image.bpp, 24);
    EXPECT_TRUE(tga.pixels() == expectedFromRawFile(file));
}

TEST(TGAImage, ColourMappedFileIsLookedUpInItsMap)
{
    std::string file = asset("tga/pillow/200x32_p_bl_raw.tga");
    LoadedTga tga;
    loadBytes(file, tga);
    ASSERT_EQ(tga.result, 1);
    EXPECT_EQ(tga.image.bpp, 24);
    // 256 map entries of 3 bytes (BGR) after the header, then one index byte per pixel.
    size_t pixels = 18 + 256 * 3;
    for (int y : {0, 13, 31}) {
        for (int x : {0, 57, 199}) {
            size_t entry = 18 + 3 * static_cast<size_t>(static_cast<unsigned char>(file[pixels + y * 200 + x]));
            std::vector<int> expected = {static_cast<unsigned char>(file[entry + 2]),
                                         static_cast<unsigned char>(file[entry + 1]),
                                         static_cast<unsigned char>(file[entry])};
            EXPECT_EQ(tga.pixel(x, y), expected) << x << "," << y;
        }
    }
}

TEST(TGAImage, ImageIdFieldIsSkipped)
{
    std::string file = asset("tga/pillow/tga_id_field.tga");
    ASSERT_EQ(file[0], 6);
    LoadedTga tga;
    loadBytes(file, tga);
    ASSERT_EQ(tga.result, 1);
    EXPECT_EQ(tga.image.width, 100);
    EXPECT_EQ(tga.image.height, 100);
    EXPECT_TRUE(tga.pixels() == expectedFromRawFile(file));
}

TEST(TGAImage, TopLeftFileWithIdFieldAndAlpha)
{
    std::string file = asset("tga/dxsdk-legacy/triangle.tga");
    LoadedTga tga;
    loadBytes(file, tga);
    ASSERT_EQ(tga.result, 1);
    EXPECT_EQ(tga.image.width, 128);
    EXPECT_EQ(tga.image.bpp, 32);
    EXPECT_TRUE(tga.pixels() == expectedFromRawFile(file));
}

TEST(TGAImage, LargerRealFilesMatchTheirBytes)
{
    for (const char* name : {"tga/dxsdk-legacy/checker.tga", "tga/dxsdk-legacy/stones_NM_height.tga"}) {
        std::string file = asset(name);
        LoadedTga tga;
        loadBytes(file, tga);
        ASSERT_EQ(tga.result, 1) << name;
        EXPECT_EQ(tga.image.width, 256) << name;
        EXPECT_TRUE(tga.pixels() == expectedFromRawFile(file)) << name;
    }
}

TEST(TGAImage, ColourMapFieldsOfAFileWithoutMapAreIgnored)
{
    // A 2 x 3 file whose header carries colour-map numbers although its map type is 0.
    std::string file = asset("tga/magnum/image.tga");
    ASSERT_EQ(file[1], 0);
    ASSERT_NE(get16(file, 5), 0u);
    LoadedTga tga;
    loadBytes(file, tga);
    ASSERT_EQ(tga.result, 1);
    EXPECT_EQ(tga.image.width, 2);
    EXPECT_EQ(tga.image.height, 3);
    EXPECT_TRUE(tga.pixels() == expectedFromRawFile(file));
}

TEST(TGAImage, TopRightOriginFileIsTurnedHalfRound)
{
    // The two files hold the same bytes but for the origin bits, so one is the other turned by 180°.
    LoadedTga plain;
    LoadedTga topRight;
    loadPath("tga/pillow/rgb32rle.tga", plain);
    loadPath("tga/pillow/rgb32rle_top_right.tga", topRight);
    ASSERT_EQ(plain.result, 1);
    ASSERT_EQ(topRight.result, 1);
    ASSERT_EQ(plain.image.width, 199);
    ASSERT_EQ(plain.image.height, 199);
    int mismatches = 0;
    for (int y = 0; y < 199; ++y) {
        for (int x = 0; x < 199; ++x)
            mismatches += topRight.pixel(x, y) != plain.pixel(198 - x, 198 - y);
    }
    EXPECT_EQ(mismatches, 0);
}

TEST(TGAImage, RunLengthPacketMayCrossIntoTheNextRow)
{
    std::string file = asset("tga/pillow/cross_scan_line.tga");
    LoadedTga tga;
    loadBytes(file, tga);
    ASSERT_EQ(tga.result, 1);
    // One raw packet of three pixels (0, 255, 255) runs from the bottom row into the top one, then a
    // raw packet of one pixel (0).
    ASSERT_EQ(file.substr(18, 6), bytes({0x02, 0x00, 0xFF, 0xFF, 0x00, 0x00}));
    EXPECT_EQ(tga.pixels(), bytes({0, 0, 0, 255, 255, 255, 255, 255, 255, 0, 0, 0}));
}

TEST(TGAImage, TruncatedRunLengthFileLeavesTheImageEmpty)
{
    LoadedTga tga;
    loadPath("tga/pillow/cross_scan_line_truncated.tga", tga);
    EXPECT_EQ(tga.result, 0);
    expectEmpty(tga.image);
}

TEST(TGAImage, CharPointerOverloadLoadsToo)
{
    std::string path = assetPath("tga/magnum/image.tga");
    std::vector<char> writable(path.begin(), path.end());
    writable.push_back('\0');
    TGAImage image;
    EXPECT_EQ(image.loadTGA(writable.data()), 1);
    EXPECT_EQ(image.width, 2);
    std::free(image.data);
}

TEST(TGAImage, NameIsResolvedWithoutRegardToCase)
{
    std::string dir = ostrum_test::makeTempDir();
    ostrum_test::writeFile(dir + "/Sky.TGA", asset("tga/magnum/image.tga"));
    LoadedTga tga;
    tga.result = tga.image.loadTGA((dir + "/sky.tga").c_str());
    EXPECT_EQ(tga.result, 1);
    EXPECT_EQ(tga.image.height, 3);
}

TEST(TGAImage, MissingFileAndNullPathLeaveTheImageEmpty)
{
    LoadedTga tga;
    tga.result = tga.image.loadTGA((ostrum_test::makeTempDir() + "/none.tga").c_str());
    EXPECT_EQ(tga.result, 0);
    expectEmpty(tga.image);
    tga.result = tga.image.loadTGA(static_cast<const char*>(nullptr));
    EXPECT_EQ(tga.result, 0);
    expectEmpty(tga.image);
}

TEST(TGAImage, FailedLoadAfterAGoodOneLeavesTheImageEmpty)
{
    TGAImage image;
    ASSERT_EQ(image.loadTGA(assetPath("tga/magnum/image.tga").c_str()), 1);
    unsigned char* first = image.data;  // the caller's to free
    EXPECT_EQ(image.loadTGA(assetPath("tga/pillow/cross_scan_line_truncated.tga").c_str()), 0);
    expectEmpty(image);
    std::free(first);
}

TEST(TGAImage, LoaderPrintsNothing)
{
    ostrum_test::StdoutCapture capture;
    LoadedTga bad;
    LoadedTga good;
    loadPath("tga/pillow/cross_scan_line_truncated.tga", bad);
    loadPath("tga/magnum/image.tga", good);
    EXPECT_EQ(capture.take(), "");
}

// ---------------------------------------------------------------- files built byte by byte

TEST(TGAImage, RightToLeftRowsAreMirrored)
{
    TgaPlan plan;
    plan.width = 3;
    plan.descriptor = 0x10;
    LoadedTga tga;
    loadBytes(tgaHeader(plan) + bytes({3, 2, 1, 6, 5, 4, 9, 8, 7}), tga);
    ASSERT_EQ(tga.result, 1);
    EXPECT_EQ(tga.pixels(), bytes({7, 8, 9, 4, 5, 6, 1, 2, 3}));
}

TEST(TGAImage, TopDownRowsAreReversed)
{
    TgaPlan plan;
    plan.width = 1;
    plan.height = 3;
    plan.descriptor = 0x20;
    LoadedTga tga;
    loadBytes(tgaHeader(plan) + bytes({1, 1, 1, 2, 2, 2, 3, 3, 3}), tga);
    ASSERT_EQ(tga.result, 1);
    EXPECT_EQ(tga.pixels(), bytes({3, 3, 3, 2, 2, 2, 1, 1, 1}));
}

TEST(TGAImage, SixteenBitPixelsAreWidenedToRgb)
{
    TgaPlan plan;
    plan.width = 3;
    plan.depth = 16;
    std::string data;
    put16(data, 0x8000 | (31u << 10));  // red 31 with its attribute bit
    put16(data, 16u << 5);              // green 16
    put16(data, 1);                     // blue 1
    LoadedTga tga;
    loadBytes(tgaHeader(plan) + data, tga);
    ASSERT_EQ(tga.result, 1);
    EXPECT_EQ(tga.image.bpp, 24);
    // Five bits widened by repeating their top bits: v * 8 + v / 4.
    EXPECT_EQ(tga.pixels(), bytes({255, 0, 0, 0, 16 * 8 + 4, 0, 0, 0, 8}));
}

TEST(TGAImage, FifteenBitPixelsAreReadLikeSixteen)
{
    TgaPlan plan;
    plan.depth = 15;
    std::string data;
    put16(data, (2u << 10) | (3u << 5) | 4u);
    LoadedTga tga;
    loadBytes(tgaHeader(plan) + data, tga);
    ASSERT_EQ(tga.result, 1);
    EXPECT_EQ(tga.pixels(), bytes({16, 24, 33}));
}

TEST(TGAImage, ColourMapWithFirstEntryAndAlphaGivesRgba)
{
    TgaPlan plan;
    plan.imageType = 1;
    plan.mapType = 1;
    plan.mapFirst = 10;
    plan.mapLength = 2;
    plan.mapDepth = 32;
    plan.width = 3;
    plan.depth = 8;
    std::string map = bytes({30, 20, 10, 40, 3, 2, 1, 0});  // entries 10 and 11, BGRA
    LoadedTga tga;
    loadBytes(tgaHeader(plan) + map + bytes({11, 10, 11}), tga);
    ASSERT_EQ(tga.result, 1);
    EXPECT_EQ(tga.image.bpp, 32);
    EXPECT_EQ(tga.pixels(), bytes({1, 2, 3, 0, 10, 20, 30, 40, 1, 2, 3, 0}));
}

TEST(TGAImage, SixteenBitIndicesIntoASixteenBitMap)
{
    TgaPlan plan;
    plan.imageType = 9;
    plan.mapType = 1;
    plan.mapLength = 300;
    plan.mapDepth = 16;
    plan.width = 2;
    plan.depth = 16;
    std::string map(600, '\0');
    map[299 * 2 + 1] = static_cast<char>(0x7C);  // entry 299: red 31
    std::string data = bytes({0x81});            // a repeat packet of two pixels
    put16(data, 299);
    LoadedTga tga;
    loadBytes(tgaHeader(plan) + map + data, tga);
    ASSERT_EQ(tga.result, 1);
    EXPECT_EQ(tga.pixels(), bytes({255, 0, 0, 255, 0, 0}));
}

TEST(TGAImage, IndexOutsideTheColourMapLeavesTheImageEmpty)
{
    TgaPlan plan;
    plan.imageType = 1;
    plan.mapType = 1;
    plan.mapFirst = 10;
    plan.mapLength = 2;
    plan.mapDepth = 24;
    plan.depth = 8;
    std::string map = bytes({1, 2, 3, 4, 5, 6});
    for (int index : {9, 12, 255}) {
        LoadedTga tga;
        loadBytes(tgaHeader(plan) + map + bytes({index}), tga);
        EXPECT_EQ(tga.result, 0) << index;
        expectEmpty(tga.image);
    }
}

TEST(TGAImage, ColourMapOfATrueColourFileIsSkipped)
{
    TgaPlan plan;
    plan.mapType = 1;
    plan.mapLength = 2;
    plan.mapDepth = 24;
    plan.idLength = 2;
    LoadedTga tga;
    loadBytes(tgaHeader(plan) + "id" + bytes({9, 9, 9, 9, 9, 9}) + bytes({3, 2, 1}), tga);
    ASSERT_EQ(tga.result, 1);
    EXPECT_EQ(tga.pixels(), bytes({1, 2, 3}));
}

TEST(TGAImage, RunLengthRepeatAndRawPackets)
{
    TgaPlan plan;
    plan.imageType = 10;
    plan.width = 3;
    plan.height = 2;
    plan.depth = 32;
    // Repeat 4 of (1, 2, 3, 4), then 2 raw pixels.
    std::string data = bytes({0x83, 3, 2, 1, 4, 0x01, 7, 6, 5, 8, 11, 10, 9, 12});
    LoadedTga tga;
    loadBytes(tgaHeader(plan) + data, tga);
    ASSERT_EQ(tga.result, 1);
    EXPECT_EQ(tga.pixels(), bytes({1, 2, 3, 4, 1, 2, 3, 4, 1, 2, 3, 4, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}));
}

TEST(TGAImage, RunLengthPacketPastTheLastPixelLeavesTheImageEmpty)
{
    TgaPlan plan;
    plan.imageType = 11;
    plan.width = 2;
    plan.height = 2;
    plan.depth = 8;
    LoadedTga repeat;
    loadBytes(tgaHeader(plan) + bytes({0x84, 7}), repeat);
    EXPECT_EQ(repeat.result, 0);
    expectEmpty(repeat.image);
    LoadedTga raw;
    loadBytes(tgaHeader(plan) + bytes({0x02, 1, 2, 3, 0x01, 4, 5}), raw);
    EXPECT_EQ(raw.result, 0);
    expectEmpty(raw.image);
}

TEST(TGAImage, UnsupportedKindsLeaveTheImageEmpty)
{
    struct Case {
        int imageType;
        int depth;
        int mapType;
    };
    const Case cases[] = {
        {0, 24, 0},   // no image data
        {2, 8, 0},    // true colour of 8 bits
        {2, 31, 0},
        {3, 16, 0},   // grey with alpha
        {1, 8, 0},    // colour-mapped without a map
        {1, 24, 1},   // 24-bit indices
        {32, 8, 0},   // Huffman-coded
        {33, 8, 0},
        {2, 24, 2},   // unknown map type
    };
    for (const Case& c : cases) {
        TgaPlan plan;
        plan.imageType = c.imageType;
        plan.depth = c.depth;
        plan.mapType = c.mapType;
        if (c.mapType == 1) {
            plan.mapLength = 1;
            plan.mapDepth = 24;
        }
        LoadedTga tga;
        loadBytes(tgaHeader(plan) + std::string(64, '\0'), tga);
        EXPECT_EQ(tga.result, 0) << c.imageType << " " << c.depth;
        expectEmpty(tga.image);
    }
    // A colour map with entries of 8 bits or none at all.
    TgaPlan plan;
    plan.imageType = 1;
    plan.mapType = 1;
    plan.depth = 8;
    plan.mapDepth = 8;
    plan.mapLength = 1;
    LoadedTga badEntries;
    loadBytes(tgaHeader(plan) + std::string(8, '\0'), badEntries);
    EXPECT_EQ(badEntries.result, 0);
    plan.mapDepth = 24;
    plan.mapLength = 0;
    LoadedTga noEntries;
    loadBytes(tgaHeader(plan) + std::string(8, '\0'), noEntries);
    EXPECT_EQ(noEntries.result, 0);
}

TEST(TGAImage, ZeroSizesLeaveTheImageEmpty)
{
    for (int side : {0, 1}) {
        TgaPlan plan;
        plan.width = side;
        plan.height = 1 - side;
        LoadedTga tga;
        loadBytes(tgaHeader(plan) + std::string(6, '\0'), tga);
        EXPECT_EQ(tga.result, 0);
        expectEmpty(tga.image);
    }
}

TEST(TGAImage, SidesUpTo16384AreAcceptedAndLargerOnesRefused)
{
    TgaPlan plan;
    plan.imageType = 11;
    plan.depth = 8;
    plan.width = 16384;
    // 128 repeat packets of 128 grey pixels each.
    std::string data;
    for (int i = 0; i < 128; ++i)
        data += bytes({0xFF, i});
    LoadedTga wide;
    loadBytes(tgaHeader(plan) + data, wide);
    ASSERT_EQ(wide.result, 1);
    EXPECT_EQ(wide.pixel(16383, 0), (std::vector<int>{127, 127, 127}));
    plan.width = 16385;
    LoadedTga wider;
    loadBytes(tgaHeader(plan) + data + bytes({0, 1}), wider);
    EXPECT_EQ(wider.result, 0);
    plan.width = 1;
    plan.height = 65535;
    LoadedTga higher;
    loadBytes(tgaHeader(plan) + std::string(65535 * 2, '\x80'), higher);
    EXPECT_EQ(higher.result, 0);
    // The memory entry takes a smaller limit when asked.
    plan.height = 2;
    std::string small = tgaHeader(plan) + bytes({0x81, 5});
    TGAImage image;
    EXPECT_EQ(image.loadTGAFromMemory(bytesOf(small), small.size(), 1), 0);
    EXPECT_EQ(image.loadTGAFromMemory(bytesOf(small), small.size(), 2), 1);
    std::free(image.data);
}

TEST(TGAImage, EveryTruncationOfAFileLeavesTheImageEmpty)
{
    for (const char* name : {"tga/pillow/200x32_rgb_bl_rle.tga", "tga/pillow/200x32_p_bl_raw.tga",
                             "tga/pillow/200x32_rgba_tl_rle.tga", "tga/magnum/image.tga"}) {
        std::string file = asset(name);
        size_t end = pixelDataEnd(file);
        ASSERT_LE(end, file.size());
        for (size_t length = 0; length < end; length += (length < 800 ? 1 : 31)) {
            TGAImage image;
            ASSERT_EQ(image.loadTGAFromMemory(bytesOf(file), length), 0) << name << " " << length;
            ASSERT_EQ(image.data, nullptr);
        }
        // What follows the pixels (the extension area and footer of TGA 2.0 files) is not needed.
        TGAImage image;
        EXPECT_EQ(image.loadTGAFromMemory(bytesOf(file), end), 1) << name;
        std::free(image.data);
    }
}

TEST(TGAImage, CorruptedBytesNeverCrashTheReader)
{
    for (const char* name : {"tga/pillow/200x32_p_bl_rle.tga", "tga/pillow/200x32_rgba_tl_rle.tga"}) {
        std::string file = asset(name);
        for (size_t at = 0; at < std::min<size_t>(file.size(), 1200); ++at) {
            for (int value : {0x00, 0x7F, 0x80, 0xFF}) {
                std::string damaged = file;
                damaged[at] = static_cast<char>(value);
                TGAImage image;
                if (image.loadTGAFromMemory(bytesOf(damaged), damaged.size()) == 1) {
                    ASSERT_TRUE(image.bpp == 24 || image.bpp == 32);
                    ASSERT_GE(image.width, 1);
                    ASSERT_GE(image.height, 1);
                    std::free(image.data);
                } else {
                    ASSERT_EQ(image.data, nullptr);
                }
            }
        }
    }
}
