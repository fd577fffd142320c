// BMPReaderTest.cpp -- LImage::LoadBMP: real bitmaps of every depth, files built byte by byte, and
// damaged files.
#include <ostrum_core/LImage.h>

#include "ImageTestFiles.h"
#include "TestSupport.h"

#include <climits>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

using namespace image_test;

namespace {

struct BmpRelease {
    void operator()(tImageBMP* image) const
    {
        std::free(image->data);
        std::free(image);
    }
};
using BmpPtr = std::unique_ptr<tImageBMP, BmpRelease>;

BmpPtr loadFile(const std::string& relative)
{
    return BmpPtr(LImage::LoadBMP(assetPath(relative).c_str()));
}

BmpPtr loadBytes(const std::string& file)
{
    return BmpPtr(LImage::LoadBMPFromMemory(bytesOf(file), file.size()));
}

// Every pixel of a loaded image against the same pixel read straight from an uncompressed bottom-up file.
void expectMatchesFileBytes(const std::string& relative)
{
    SCOPED_TRACE(relative);
    std::string file = asset(relative);
    BmpPtr image = loadBytes(file);
    ASSERT_TRUE(image);
    int mismatches = 0;
    for (int y = 0; y < image->sizeY; ++y) {
        for (int x = 0; x < image->sizeX; ++x) {
            if (pixelOf(image->data, image->sizeX, x, y) != filePixel(file, x, y) && ++mismatches < 5)
                ADD_FAILURE() << "pixel " << x << "," << y;
        }
    }
    EXPECT_EQ(mismatches, 0);
}

void expectSamePicture(const tImageBMP& a, const tImageBMP& b)
{
    ASSERT_EQ(a.sizeX, b.sizeX);
    ASSERT_EQ(a.sizeY, b.sizeY);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(a.data), static_cast<size_t>(a.sizeX) * a.sizeY * 3),
              std::string(reinterpret_cast<char*>(b.data), static_cast<size_t>(b.sizeX) * b.sizeY * 3));
}

std::string picture(const tImageBMP& image)
{
    return std::string(reinterpret_cast<char*>(image.data), static_cast<size_t>(image.sizeX) * image.sizeY * 3);
}

// A 4 x 2 eight-bit bitmap of four colours, every pixel its own index (row 0 = 0 1 2 3, row 1 = 3 2 1 0).
BmpPlan fourColourPlan()
{
    BmpPlan plan;
    plan.width = 4;
    plan.height = 2;
    plan.bpp = 8;
    plan.clrUsed = 4;
    plan.palette = {{10, 20, 30}, {40, 50, 60}, {70, 80, 90}, {100, 110, 120}};
    plan.pixels = bytes({0, 1, 2, 3, 3, 2, 1, 0});
    return plan;
}

// An RLE8 bitmap of the given size over a four-colour palette.
BmpPlan rle8Plan(int width, int height, const std::string& data)
{
    BmpPlan plan;
    plan.width = width;
    plan.height = height;
    plan.bpp = 8;
    plan.compression = BI_RLE8;
    plan.clrUsed = 4;
    plan.palette = {{1, 2, 3}, {40, 50, 60}, {70, 80, 90}, {100, 110, 120}};
    plan.pixels = data;
    plan.sizeImage = static_cast<uint32_t>(data.size());
    return plan;
}

}  // namespace

// ---------------------------------------------------------------- real files

TEST(LImageLoadBMP, Rgb24FileGivesItsSizeAndPixelsBottomRowFirst)
{
    BmpPtr image = loadFile("bmp/bmpsuite/rgb24.bmp");
    ASSERT_TRUE(image);
    EXPECT_EQ(image->sizeX, 127);
    EXPECT_EQ(image->sizeY, 64);
    expectMatchesFileBytes("bmp/bmpsuite/rgb24.bmp");
}

TEST(LImageLoadBMP, OddWidthRowsSkipTheirPadding)
{
    // 119 pixels of 3 bytes are 357 bytes, stored in rows of 360.
    BmpPtr image = loadFile("bmp/libjpeg-turbo/vgl_6434_0018a.bmp");
    ASSERT_TRUE(image);
    EXPECT_EQ(image->sizeX, 119);
    EXPECT_EQ(image->sizeY, 96);
    expectMatchesFileBytes("bmp/libjpeg-turbo/vgl_6434_0018a.bmp");
}

TEST(LImageLoadBMP, LargerRealTexturesMatchTheirFileBytes)
{
    expectMatchesFileBytes("bmp/dxsdk-legacy/banana.bmp");
    expectMatchesFileBytes("bmp/dxsdk-legacy/earth.bmp");
    expectMatchesFileBytes("bmp/dxsdk-legacy/tiger.bmp");
    expectMatchesFileBytes("bmp/dxsdk-legacy/floor.bmp");
}

TEST(LImageLoadBMP, EightBitPixelsAreLookedUpInThePalette)
{
    expectMatchesFileBytes("bmp/bmpsuite/pal8.bmp");
}

TEST(LImageLoadBMP, FourBitPixelsAreLookedUpInThePalette)
{
    expectMatchesFileBytes("bmp/bmpsuite/pal4.bmp");
}

TEST(LImageLoadBMP, OneBitPixelsAreLookedUpInThePalette)
{
    expectMatchesFileBytes("bmp/bmpsuite/pal1.bmp");
}

TEST(LImageLoadBMP, GreyHeightMapGivesItsIndexAsGrey)
{
    std::string file = asset("bmp/dxsdk-legacy/Crack_Displacement.bmp");
    BmpPtr image = loadBytes(file);
    ASSERT_TRUE(image);
    EXPECT_EQ(image->sizeX, 1024);
    EXPECT_EQ(image->sizeY, 1024);
    // The palette is a grey ramp, entry i = (i, i, i).
    for (int i = 0; i < 256; ++i)
        ASSERT_EQ(get32(file, 54 + 4 * i), static_cast<uint32_t>(i * 0x010101));
    for (int y : {0, 1, 511, 1023}) {
        for (int x : {0, 7, 600, 1023}) {
            int index = static_cast<unsigned char>(file[1078 + static_cast<size_t>(y) * 1024 + x]);
            EXPECT_EQ(pixelOf(image->data, 1024, x, y), (Rgb{index, index, index})) << x << "," << y;
        }
    }
}

TEST(LImageLoadBMP, Rgb32FileMatchesRgb24File)
{
    BmpPtr rgb24 = loadFile("bmp/bmpsuite/rgb24.bmp");
    BmpPtr rgb32 = loadFile("bmp/bmpsuite/rgb32.bmp");
    ASSERT_TRUE(rgb24 && rgb32);
    expectSamePicture(*rgb24, *rgb32);
}

TEST(LImageLoadBMP, TwentyFourBitFileWithUnusedPaletteMatchesRgb24File)
{
    BmpPtr rgb24 = loadFile("bmp/bmpsuite/rgb24.bmp");
    BmpPtr withPalette = loadFile("bmp/bmpsuite/rgb24pal.bmp");
    ASSERT_TRUE(rgb24 && withPalette);
    expectSamePicture(*rgb24, *withPalette);
}

TEST(LImageLoadBMP, Rgb565FileIsWithinRoundingOfRgb24File)
{
    BmpPtr rgb24 = loadFile("bmp/bmpsuite/rgb24.bmp");
    std::string file = asset("bmp/bmpsuite/rgb16-565.bmp");
    BmpPtr rgb565 = loadBytes(file);
    ASSERT_TRUE(rgb24 && rgb565);
    ASSERT_EQ(rgb565->sizeX, 127);
    ASSERT_EQ(rgb565->sizeY, 64);
    // Five and six bits per channel: steps of 8.2 and 4.0, so a rounded channel is at most 4 off.
    int worst = 0;
    for (size_t i = 0; i < 127 * 64 * 3; ++i)
        worst = std::max(worst, std::abs(rgb565->data[i] - rgb24->data[i]));
    EXPECT_LE(worst, 4);
    // One pixel by hand: the top right one, from its 16-bit value and the masks after the header.
    ASSERT_EQ(get32(file, 54), 0xF800u);
    ASSERT_EQ(get32(file, 58), 0x07E0u);
    ASSERT_EQ(get32(file, 62), 0x001Fu);
    uint32_t value = get16(file, 66 + 63 * 256 + 126 * 2);
    int r = static_cast<int>(((value >> 11) * 255 + 15) / 31);
    int g = static_cast<int>((((value >> 5) & 63) * 255 + 31) / 63);
    int b = static_cast<int>(((value & 31) * 255 + 15) / 31);
    EXPECT_EQ(pixelOf(rgb565->data, 127, 126, 63), (Rgb{r, g, b}));
}

TEST(LImageLoadBMP, PalettedVariantsOfOnePictureDecodeAlike)
{
    BmpPtr pal8 = loadFile("bmp/bmpsuite/pal8.bmp");
    ASSERT_TRUE(pal8);
    for (const char* name : {"pal8-0.bmp", "pal8os2.bmp", "pal8v5.bmp", "pal8topdown.bmp", "pal8rle.bmp"}) {
        SCOPED_TRACE(name);
        BmpPtr other = loadFile(std::string("bmp/bmpsuite/") + name);
        ASSERT_TRUE(other);
        expectSamePicture(*pal8, *other);
    }
}

TEST(LImageLoadBMP, GreyRle8FileDecodesItsRamp)
{
    std::string file = asset("bmp/pillow/hopper_rle8_grayscale.bmp");
    BmpPtr image = loadBytes(file);
    ASSERT_TRUE(image);
    EXPECT_EQ(image->sizeX, 256);
    EXPECT_EQ(image->sizeY, 10);
    // The data opens with 256 runs of one pixel, colours 0, 1, ... 255, over a grey-ramp palette.
    uint32_t offBits = get32(file, 10);
    for (int x = 0; x < 256; ++x) {
        ASSERT_EQ(static_cast<unsigned char>(file[offBits + 2 * x]), 1);
        ASSERT_EQ(static_cast<unsigned char>(file[offBits + 2 * x + 1]), x);
        ASSERT_EQ(get32(file, 122 + 4 * x) & 0xFFFFFF, static_cast<uint32_t>(x * 0x010101));
    }
    for (int x = 0; x < 256; ++x)
        EXPECT_EQ(pixelOf(image->data, 256, x, 0), (Rgb{x, x, x})) << x;
}

TEST(LImageLoadBMP, CorruptRleFileGivesNull)
{
    EXPECT_FALSE(loadFile("bmp/bmpsuite/badrle.bmp"));
}

TEST(LImageLoadBMP, PaletteIndexPastThePaletteGivesNull)
{
    EXPECT_FALSE(loadFile("bmp/bmpsuite/pal8badindex.bmp"));
}

TEST(LImageLoadBMP, TruncatedRealFileGivesNull)
{
    EXPECT_FALSE(loadFile("bmp/bmpsuite/shortfile.bmp"));
}

TEST(LImageLoadBMP, MissingFileAndNullPathGiveNull)
{
    EXPECT_FALSE(BmpPtr(LImage::LoadBMP((ostrum_test::makeTempDir() + "/none.bmp").c_str())));
    EXPECT_FALSE(BmpPtr(LImage::LoadBMP(nullptr)));
    EXPECT_FALSE(BmpPtr(LImage::LoadBMPFromMemory(nullptr, 0)));
}

TEST(LImageLoadBMP, NameIsResolvedWithoutRegardToCase)
{
    std::string dir = ostrum_test::makeTempDir();
    ostrum_test::writeFile(dir + "/Wall.BMP", makeBmp(fourColourPlan()));
    BmpPtr image(LImage::LoadBMP((dir + "/wall.bmp").c_str()));
    ASSERT_TRUE(image);
    EXPECT_EQ(image->sizeX, 4);
}

TEST(LImageLoadBMP, LoaderPrintsNothing)
{
    ostrum_test::StdoutCapture capture;
    BmpPtr bad = loadFile("bmp/bmpsuite/badrle.bmp");
    BmpPtr good = loadFile("bmp/bmpsuite/pal8.bmp");
    EXPECT_EQ(capture.take(), "");
}

// ---------------------------------------------------------------- files built byte by byte

TEST(LImageLoadBMP, EightBitRowsComeBottomFirstAsStored)
{
    BmpPtr image = loadBytes(makeBmp(fourColourPlan()));
    ASSERT_TRUE(image);
    EXPECT_EQ(image->sizeX, 4);
    EXPECT_EQ(image->sizeY, 2);
    EXPECT_EQ(picture(*image), bytes({10, 20, 30, 40, 50, 60, 70, 80, 90, 100, 110, 120,
                                      100, 110, 120, 70, 80, 90, 40, 50, 60, 10, 20, 30}));
}

TEST(LImageLoadBMP, TopDownRowsAreReorderedBottomFirst)
{
    BmpPlan plan = fourColourPlan();
    plan.height = -2;
    BmpPtr image = loadBytes(makeBmp(plan));
    ASSERT_TRUE(image);
    EXPECT_EQ(image->sizeY, 2);
    // The file's first row is now the top one.
    EXPECT_EQ(pixelOf(image->data, 4, 0, 1), (Rgb{10, 20, 30}));
    EXPECT_EQ(pixelOf(image->data, 4, 0, 0), (Rgb{100, 110, 120}));
}

TEST(LImageLoadBMP, OneBitPixelsTakeTheHighBitFirst)
{
    BmpPlan plan;
    plan.width = 10;
    plan.height = 1;
    plan.bpp = 1;
    plan.palette = {{0, 0, 0}, {255, 255, 255}};
    plan.pixels = padRow(bytes({0xA5, 0x40}));  // 1010 0101 01
    BmpPtr image = loadBytes(makeBmp(plan));
    ASSERT_TRUE(image);
    const int expected[10] = {1, 0, 1, 0, 0, 1, 0, 1, 0, 1};
    for (int x = 0; x < 10; ++x)
        EXPECT_EQ(image->data[x * 3], expected[x] * 255) << x;
}

TEST(LImageLoadBMP, TwoBitPixelsTakeTheHighPairFirst)
{
    BmpPlan plan;
    plan.width = 5;
    plan.bpp = 2;
    plan.palette = {{0, 0, 0}, {1, 1, 1}, {2, 2, 2}, {3, 3, 3}};
    plan.pixels = padRow(bytes({0x1B, 0x80}));  // 00 01 10 11 | 10
    BmpPtr image = loadBytes(makeBmp(plan));
    ASSERT_TRUE(image);
    EXPECT_EQ(picture(*image), bytes({0, 0, 0, 1, 1, 1, 2, 2, 2, 3, 3, 3, 2, 2, 2}));
}

TEST(LImageLoadBMP, FourBitPixelsTakeTheHighNibbleFirst)
{
    BmpPlan plan;
    plan.width = 3;
    plan.bpp = 4;
    plan.clrUsed = 3;
    plan.palette = {{9, 9, 9}, {10, 11, 12}, {200, 201, 202}};
    plan.pixels = padRow(bytes({0x21, 0x00}));
    BmpPtr image = loadBytes(makeBmp(plan));
    ASSERT_TRUE(image);
    EXPECT_EQ(picture(*image), bytes({200, 201, 202, 10, 11, 12, 9, 9, 9}));
}

TEST(LImageLoadBMP, SixteenBitPlainPixelsAre555)
{
    BmpPlan plan;
    plan.width = 3;
    plan.bpp = 16;
    std::string row;
    put16(row, 0x7C00);  // red 31
    put16(row, 0x0200);  // green 16
    put16(row, 0x0001);  // blue 1
    plan.pixels = padRow(row);
    BmpPtr image = loadBytes(makeBmp(plan));
    ASSERT_TRUE(image);
    int green16 = (16 * 255 + 15) / 31;
    int blue1 = (1 * 255 + 15) / 31;
    EXPECT_EQ(picture(*image), bytes({255, 0, 0, 0, green16, 0, 0, 0, blue1}));
}

TEST(LImageLoadBMP, SixteenBitFieldsAfterA40ByteHeaderGive565)
{
    BmpPlan plan;
    plan.width = 2;
    plan.bpp = 16;
    plan.compression = BI_BITFIELDS;
    plan.masks = {0xF800, 0x07E0, 0x001F};
    std::string row;
    put16(row, 0x07E0);          // green 63
    put16(row, (10u << 11) | 20);  // red 10, blue 20
    plan.pixels = padRow(row);
    BmpPtr image = loadBytes(makeBmp(plan));
    ASSERT_TRUE(image);
    EXPECT_EQ(picture(*image), bytes({0, 255, 0, (10 * 255 + 15) / 31, 0, (20 * 255 + 15) / 31}));
}

TEST(LImageLoadBMP, BitFieldsInsideAV4HeaderAreRead)
{
    BmpPlan plan;
    plan.width = 1;
    plan.bpp = 16;
    plan.infoSize = 108;
    plan.compression = BI_BITFIELDS;
    plan.masks = {0x001F, 0x03E0, 0x7C00, 0};  // blue and red swapped on purpose
    std::string row;
    put16(row, 0x001F);
    plan.pixels = padRow(row);
    BmpPtr image = loadBytes(makeBmp(plan));
    ASSERT_TRUE(image);
    EXPECT_EQ(picture(*image), bytes({255, 0, 0}));
}

TEST(LImageLoadBMP, ThirtyTwoBitFieldsOfTenBitsAreScaledTo255)
{
    BmpPlan plan;
    plan.width = 2;
    plan.bpp = 32;
    plan.compression = BI_BITFIELDS;
    plan.masks = {0x3FF00000, 0x000FFC00, 0x000003FF};
    std::string row;
    put32(row, (1023u << 20) | (512u << 10) | 0);
    put32(row, (0u << 20) | (1u << 10) | 1022u);
    plan.pixels = row;
    BmpPtr image = loadBytes(makeBmp(plan));
    ASSERT_TRUE(image);
    EXPECT_EQ(picture(*image), bytes({255, (512 * 255 + 511) / 1023, 0, 0, (255 + 511) / 1023, (1022 * 255 + 511) / 1023}));
}

TEST(LImageLoadBMP, ThirtyTwoBitPlainPixelsDropTheirFourthByte)
{
    BmpPlan plan;
    plan.width = 1;
    plan.bpp = 32;
    plan.pixels = bytes({30, 20, 10, 99});
    BmpPtr image = loadBytes(makeBmp(plan));
    ASSERT_TRUE(image);
    EXPECT_EQ(picture(*image), bytes({10, 20, 30}));
}

TEST(LImageLoadBMP, AlphaBitFieldsAreReadWithoutTheAlpha)
{
    BmpPlan plan;
    plan.width = 1;
    plan.bpp = 32;
    plan.compression = 6;
    plan.masks = {0x000000FF, 0x0000FF00, 0x00FF0000, 0xFF000000};
    plan.pixels = bytes({1, 2, 3, 4});
    BmpPtr image = loadBytes(makeBmp(plan));
    ASSERT_TRUE(image);
    EXPECT_EQ(picture(*image), bytes({1, 2, 3}));
}

TEST(LImageLoadBMP, BrokenBitFieldMasksGiveNull)
{
    BmpPlan plan;
    plan.width = 1;
    plan.bpp = 16;
    plan.compression = BI_BITFIELDS;
    plan.pixels = padRow(bytes({0, 0}));
    plan.masks = {0xF00F, 0x07E0, 0x001F};  // red in two pieces
    EXPECT_FALSE(loadBytes(makeBmp(plan)));
    plan.masks = {0x1F800, 0x07E0, 0x001F};  // red past the 16 bits of a pixel
    EXPECT_FALSE(loadBytes(makeBmp(plan)));
    plan.masks = {0xF800, 0x07E0};  // masks cut off by the end of the file
    plan.pixels.clear();
    EXPECT_FALSE(loadBytes(makeBmp(plan)));
}

TEST(LImageLoadBMP, Os2CoreHeaderWithThreeBytePaletteIsRead)
{
    BmpPlan plan = fourColourPlan();
    plan.infoSize = 12;
    plan.bpp = 8;
    // A core header has no palette size: the palette runs up to the pixels (4 entries here).
    BmpPtr image = loadBytes(makeBmp(plan));
    ASSERT_TRUE(image);
    BmpPtr windows = loadBytes(makeBmp(fourColourPlan()));
    ASSERT_TRUE(windows);
    expectSamePicture(*windows, *image);
}

TEST(LImageLoadBMP, Os2CoreHeaderWithoutRoomForAPaletteGivesNull)
{
    BmpPlan plan = fourColourPlan();
    plan.infoSize = 12;
    plan.palette.clear();
    EXPECT_FALSE(loadBytes(makeBmp(plan)));
}

TEST(LImageLoadBMP, Os2Version2HeaderIsRead)
{
    BmpPlan plan = fourColourPlan();
    plan.infoSize = 64;
    BmpPtr image = loadBytes(makeBmp(plan));
    ASSERT_TRUE(image);
    EXPECT_EQ(pixelOf(image->data, 4, 3, 0), (Rgb{100, 110, 120}));
    // Its compression 3 is Huffman coding, not bit fields.
    plan.compression = 3;
    plan.bpp = 1;
    EXPECT_FALSE(loadBytes(makeBmp(plan)));
}

// ---------------------------------------------------------------- RLE

TEST(LImageLoadBMP, Rle8RunsEndOfLineDeltaAndEndOfBitmap)
{
    std::string data = bytes({3, 1, 0, 3, 2, 3, 1, 0, 0, 0,  // row 0: run 1 1 1, absolute 2 3 1 (padded), end of line
                              0, 2, 2, 0, 2, 3, 0, 0,        // row 1: delta 2 right, run 3 3, end of line
                              0, 1});                        // end of bitmap: row 2 is never drawn
    BmpPtr image = loadBytes(makeBmp(rle8Plan(6, 3, data)));
    ASSERT_TRUE(image);
    const Rgb c0{1, 2, 3}, c1{40, 50, 60}, c2{70, 80, 90}, c3{100, 110, 120};
    const Rgb row0[6] = {c1, c1, c1, c2, c3, c1};
    const Rgb row1[6] = {c0, c0, c3, c3, c0, c0};
    for (int x = 0; x < 6; ++x) {
        EXPECT_EQ(pixelOf(image->data, 6, x, 0), row0[x]) << x;
        EXPECT_EQ(pixelOf(image->data, 6, x, 1), row1[x]) << x;
        EXPECT_EQ(pixelOf(image->data, 6, x, 2), c0) << x;
    }
}

TEST(LImageLoadBMP, Rle4RunsAlternateTheirTwoNibbles)
{
    // A run of 5 of 0x12 gives 1 2 1 2 1; an absolute run of 5 nibbles (3 bytes, padded to 4) gives
    // 3 0 2 1 3.
    BmpPlan plan = rle8Plan(10, 1, bytes({5, 0x12, 0, 5, 0x30, 0x21, 0x30, 0x00, 0, 1}));
    plan.bpp = 4;
    plan.compression = BI_RLE4;
    BmpPtr image = loadBytes(makeBmp(plan));
    ASSERT_TRUE(image);
    const int expected[10] = {1, 2, 1, 2, 1, 3, 0, 2, 1, 3};
    const Rgb colours[4] = {{1, 2, 3}, {40, 50, 60}, {70, 80, 90}, {100, 110, 120}};
    for (int x = 0; x < 10; ++x)
        EXPECT_EQ(pixelOf(image->data, 10, x, 0), colours[expected[x]]) << x;
}

TEST(LImageLoadBMP, RleDataMayEndAfterTheLastRowWithoutItsEndCode)
{
    EXPECT_TRUE(loadBytes(makeBmp(rle8Plan(2, 2, bytes({2, 1, 0, 0, 2, 3, 0, 0})))));
}

TEST(LImageLoadBMP, RleDataEndingBeforeTheLastRowGivesNull)
{
    EXPECT_FALSE(loadBytes(makeBmp(rle8Plan(2, 2, bytes({2, 1, 0, 0})))));
    // An absolute run cut off by the end of the file.
    EXPECT_FALSE(loadBytes(makeBmp(rle8Plan(4, 1, bytes({0, 4, 1, 2})))));
    // A delta cut off after its escape.
    EXPECT_FALSE(loadBytes(makeBmp(rle8Plan(4, 1, bytes({0, 2})))));
}

TEST(LImageLoadBMP, RleRunPastTheEndOfItsRowGivesNull)
{
    EXPECT_FALSE(loadBytes(makeBmp(rle8Plan(4, 2, bytes({5, 1, 0, 1})))));
    EXPECT_FALSE(loadBytes(makeBmp(rle8Plan(4, 2, bytes({2, 1, 0, 3, 1, 1, 1, 0, 0, 1})))));
    // A full row followed by one more pixel on the same row.
    EXPECT_FALSE(loadBytes(makeBmp(rle8Plan(4, 2, bytes({4, 1, 1, 2, 0, 1})))));
}

TEST(LImageLoadBMP, RleRowsPastTheEndOfTheImageGiveNull)
{
    EXPECT_FALSE(loadBytes(makeBmp(rle8Plan(1, 1, bytes({1, 1, 0, 0, 0, 0, 1, 1, 0, 1})))));
    EXPECT_FALSE(loadBytes(makeBmp(rle8Plan(2, 2, bytes({0, 2, 0, 3, 0, 1})))));   // delta below the image
    EXPECT_FALSE(loadBytes(makeBmp(rle8Plan(2, 2, bytes({0, 2, 3, 0, 0, 1})))));   // delta right of the image
    // A delta to the very end is fine when nothing more is drawn.
    EXPECT_TRUE(loadBytes(makeBmp(rle8Plan(2, 2, bytes({0, 2, 0, 2, 0, 1})))));
}

TEST(LImageLoadBMP, RleIndexPastThePaletteGivesNull)
{
    EXPECT_FALSE(loadBytes(makeBmp(rle8Plan(2, 1, bytes({2, 4, 0, 1})))));
}

TEST(LImageLoadBMP, TopDownRleFileGivesNull)
{
    EXPECT_FALSE(loadBytes(makeBmp(rle8Plan(2, -1, bytes({2, 1, 0, 1})))));
}

// ---------------------------------------------------------------- hostile headers

TEST(LImageLoadBMP, ZeroWidthOrHeightGivesNull)
{
    BmpPlan plan = fourColourPlan();
    plan.width = 0;
    EXPECT_FALSE(loadBytes(makeBmp(plan)));
    plan = fourColourPlan();
    plan.height = 0;
    EXPECT_FALSE(loadBytes(makeBmp(plan)));
    plan = fourColourPlan();
    plan.width = -4;
    EXPECT_FALSE(loadBytes(makeBmp(plan)));
}

TEST(LImageLoadBMP, SidesUpTo16384AreAcceptedAndLargerOnesRefused)
{
    BmpPlan plan;
    plan.bpp = 8;
    plan.clrUsed = 1;
    plan.palette = {{5, 6, 7}};
    plan.width = 16384;
    plan.height = 1;
    plan.pixels = std::string(16384, '\0');
    BmpPtr wide = loadBytes(makeBmp(plan));
    ASSERT_TRUE(wide);
    EXPECT_EQ(pixelOf(wide->data, 16384, 16383, 0), (Rgb{5, 6, 7}));
    plan.width = 16385;
    plan.pixels = std::string(16388, '\0');
    EXPECT_FALSE(loadBytes(makeBmp(plan)));
    plan.width = 1;
    plan.height = 16384;
    plan.pixels = std::string(16384 * 4, '\0');
    EXPECT_TRUE(loadBytes(makeBmp(plan)));
    plan.height = 16385;
    plan.pixels = std::string(16385 * 4, '\0');
    EXPECT_FALSE(loadBytes(makeBmp(plan)));
    plan.height = -16385;
    EXPECT_FALSE(loadBytes(makeBmp(plan)));
    plan.height = INT_MIN;
    EXPECT_FALSE(loadBytes(makeBmp(plan)));
}

TEST(LImageLoadBMP, HugeDeclaredSizeWithLittleDataGivesNull)
{
    BmpPlan plan;
    plan.bpp = 32;
    plan.width = 16384;
    plan.height = 16384;
    plan.pixels = std::string(64, '\0');
    EXPECT_FALSE(loadBytes(makeBmp(plan)));
    plan.height = -16384;
    EXPECT_FALSE(loadBytes(makeBmp(plan)));
}

TEST(LImageLoadBMP, SmallerLimitOfTheMemoryEntryIsHonoured)
{
    std::string file = makeBmp(fourColourPlan());
    EXPECT_TRUE(BmpPtr(LImage::LoadBMPFromMemory(bytesOf(file), file.size(), 4)));
    EXPECT_FALSE(BmpPtr(LImage::LoadBMPFromMemory(bytesOf(file), file.size(), 3)));
}

TEST(LImageLoadBMP, UnsupportedDepthOrCompressionGivesNull)
{
    for (int bpp : {0, 3, 5, 12, 48, 64}) {
        BmpPlan plan = fourColourPlan();
        plan.bpp = static_cast<uint16_t>(bpp);
        EXPECT_FALSE(loadBytes(makeBmp(plan))) << bpp;
    }
    for (uint32_t compression : {4u, 5u, 7u, 0xFFFFFFFFu}) {
        BmpPlan plan = fourColourPlan();
        plan.compression = compression;
        EXPECT_FALSE(loadBytes(makeBmp(plan))) << compression;
    }
    // RLE8 with 4-bit pixels, bit fields with 24-bit pixels.
    BmpPlan plan = fourColourPlan();
    plan.bpp = 4;
    plan.compression = BI_RLE8;
    EXPECT_FALSE(loadBytes(makeBmp(plan)));
    plan = BmpPlan();
    plan.compression = BI_BITFIELDS;
    plan.masks = {0xFF0000, 0xFF00, 0xFF};
    plan.pixels = padRow("abc");
    EXPECT_FALSE(loadBytes(makeBmp(plan)));
}

TEST(LImageLoadBMP, WrongSignatureOrHeaderSizeGivesNull)
{
    std::string file = makeBmp(fourColourPlan());
    std::string other = file;
    other[0] = 'X';
    EXPECT_FALSE(loadBytes(other));
    for (uint32_t infoSize : {0u, 11u, 13u, 0x7FFFFFFFu, static_cast<uint32_t>(file.size())}) {
        other = file;
        other.replace(14, 4, std::string(reinterpret_cast<char*>(&infoSize), 4));
        EXPECT_FALSE(loadBytes(other)) << infoSize;
    }
}

TEST(LImageLoadBMP, PixelOffsetPastTheFileOrInsideThePaletteGivesNull)
{
    BmpPlan plan = fourColourPlan();
    plan.offBits = 100000;
    EXPECT_FALSE(loadBytes(makeBmp(plan)));
    plan.offBits = 14 + 40 + 8;  // two palette entries into a four-entry palette
    EXPECT_FALSE(loadBytes(makeBmp(plan)));
    plan.offBits = 0xFFFFFFFF;
    EXPECT_FALSE(loadBytes(makeBmp(plan)));
}

TEST(LImageLoadBMP, PixelOffsetBeyondThePaletteSkipsTheGap)
{
    BmpPlan plan = fourColourPlan();
    plan.pixels = std::string(6, '\x7F') + plan.pixels;  // six bytes of filler before the pixels
    plan.offBits = 14 + 40 + 16 + 6;
    BmpPtr image = loadBytes(makeBmp(plan));
    ASSERT_TRUE(image);
    BmpPtr plain = loadBytes(makeBmp(fourColourPlan()));
    expectSamePicture(*plain, *image);
}

TEST(LImageLoadBMP, PaletteTooShortGivesNull)
{
    // 200 colours promised, the file ends after 4 of them.
    BmpPlan plan = fourColourPlan();
    plan.clrUsed = 200;
    plan.pixels.clear();
    plan.offBits = 14 + 40 + 16;
    EXPECT_FALSE(loadBytes(makeBmp(plan)));
    // A 24-bit file promising more than 256 table entries.
    plan = BmpPlan();
    plan.clrUsed = 257;
    plan.pixels = padRow("abc");
    EXPECT_FALSE(loadBytes(makeBmp(plan)));
}

TEST(LImageLoadBMP, PaletteIndexPastASmallPaletteGivesNull)
{
    BmpPlan plan = fourColourPlan();
    plan.clrUsed = 3;
    plan.palette.resize(3);  // index 3 of the pixels now has no colour
    EXPECT_FALSE(loadBytes(makeBmp(plan)));
}

TEST(LImageLoadBMP, EveryTruncationOfAFileGivesNull)
{
    std::string file = asset("bmp/bmpsuite/pal8.bmp");
    for (size_t length = 0; length < file.size(); length += (length < 1100 ? 1 : 97))
        ASSERT_FALSE(BmpPtr(LImage::LoadBMPFromMemory(bytesOf(file), length))) << length;
    EXPECT_FALSE(BmpPtr(LImage::LoadBMPFromMemory(bytesOf(file), file.size() - 1)));
    EXPECT_TRUE(BmpPtr(LImage::LoadBMPFromMemory(bytesOf(file), file.size())));
}

TEST(LImageLoadBMP, EveryTruncationOfAnRleFileGivesNull)
{
    std::string file = asset("bmp/bmpsuite/pal8rle.bmp");
    // The last two bytes are the end-of-bitmap code; the data before ends inside row 63.
    for (size_t length = 0; length + 2 < file.size(); length += (length < 1100 ? 1 : 13))
        ASSERT_FALSE(BmpPtr(LImage::LoadBMPFromMemory(bytesOf(file), length))) << length;
}

TEST(LImageLoadBMP, CorruptedBytesNeverCrashTheReader)
{
    // Every byte of a small RLE file and of the headers of a paletted one set to a few hostile values;
    // whatever comes back must be whole (checked by the sanitizer build) and sized as the header says.
    for (const char* name : {"bmp/bmpsuite/pal8rle.bmp", "bmp/bmpsuite/pal4.bmp", "bmp/bmpsuite/rgb16-565.bmp"}) {
        std::string file = asset(name);
        size_t end = std::min<size_t>(file.size(), 1300);
        for (size_t at = 0; at < end; ++at) {
            for (int value : {0x00, 0x01, 0x7F, 0xFF}) {
                std::string damaged = file;
                damaged[at] = static_cast<char>(value);
                BmpPtr image = loadBytes(damaged);
                if (image) {
                    ASSERT_GE(image->sizeX, 1);
                    ASSERT_LE(image->sizeX, LImage::MaxImageSide);
                    ASSERT_GE(image->sizeY, 1);
                    ASSERT_LE(image->sizeY, LImage::MaxImageSide);
                }
            }
        }
    }
}
