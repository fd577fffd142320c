// DIBitmapTest.cpp -- LImage::LoadDIBitmap and SaveDIBitmap: raw pixel blocks with their headers, and
// round trips of the 8-bit grey height maps.
#include <ostrum_core/LImage.h>

#include "ImageTestFiles.h"
#include "TestSupport.h"

#include <sys/stat.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

using namespace image_test;

namespace {

// A loaded bitmap: the header block and the pixel block, both released with free.
struct Dib {
    BITMAPINFO* info = nullptr;
    char* bits = nullptr;
    Dib() = default;
    Dib(const Dib&) = delete;
    Dib& operator=(const Dib&) = delete;
    ~Dib()
    {
        std::free(info);
        std::free(bits);
    }
    explicit operator bool() const { return bits != nullptr; }
    size_t bitsSize() const { return LImage::DIBBitsSize(info->bmiHeader); }
    std::string block() const { return std::string(bits, bitsSize()); }
};

void loadPath(const std::string& path, Dib& dib)
{
    dib.bits = LImage::LoadDIBitmap(path.c_str(), &dib.info);
}

void loadBytes(const std::string& file, Dib& dib)
{
    dib.bits = LImage::LoadDIBitmapFromMemory(bytesOf(file), file.size(), &dib.info);
}

std::string saved(const Dib& dib)
{
    std::vector<unsigned char> out;
    EXPECT_EQ(LImage::SaveDIBitmapToMemory(dib.info, dib.bits, out), 0);
    return std::string(out.begin(), out.end());
}

struct BmpRelease {
    void operator()(tImageBMP* image) const
    {
        std::free(image->data);
        std::free(image);
    }
};
using BmpPtr = std::unique_ptr<tImageBMP, BmpRelease>;

std::string picture(const tImageBMP& image)
{
    return std::string(reinterpret_cast<char*>(image.data), static_cast<size_t>(image.sizeX) * image.sizeY * 3);
}

BmpPtr decode(const std::string& file)
{
    return BmpPtr(LImage::LoadBMPFromMemory(bytesOf(file), file.size()));
}

BITMAPINFOHEADER header(int width, int height, int bpp, uint32_t compression = BI_RGB, uint32_t clrUsed = 0,
                        uint32_t sizeImage = 0)
{
    BITMAPINFOHEADER h;
    std::memset(&h, 0, sizeof h);
    h.biSize = 40;
    h.biWidth = width;
    h.biHeight = height;
    h.biPlanes = 1;
    h.biBitCount = static_cast<uint16_t>(bpp);
    h.biCompression = compression;
    h.biClrUsed = clrUsed;
    h.biSizeImage = sizeImage;
    return h;
}

}  // namespace

// ---------------------------------------------------------------- loading

TEST(LImageLoadDIBitmap, PalettedFileGivesItsHeaderPaletteAndStoredBlock)
{
    std::string file = asset("bmp/bmpsuite/pal8.bmp");
    Dib dib;
    loadBytes(file, dib);
    ASSERT_TRUE(dib);
    const BITMAPINFOHEADER& h = dib.info->bmiHeader;
    EXPECT_EQ(h.biSize, 40u);
    EXPECT_EQ(h.biWidth, 127);
    EXPECT_EQ(h.biHeight, 64);
    EXPECT_EQ(h.biBitCount, 8);
    EXPECT_EQ(h.biCompression, static_cast<uint32_t>(BI_RGB));
    EXPECT_EQ(h.biClrUsed, 252u);
    EXPECT_EQ(h.biSizeImage, get32(file, 34));
    EXPECT_EQ(LImage::DIBColorCount(h), 252);
    // The table as stored behind the header, and the block exactly as stored: 64 rows of 128 bytes.
    EXPECT_EQ(std::string(reinterpret_cast<char*>(dib.info->bmiColors), 252 * 4), file.substr(54, 252 * 4));
    ASSERT_EQ(dib.bitsSize(), 128u * 64);
    EXPECT_EQ(dib.block(), file.substr(get32(file, 10), 128 * 64));
}

TEST(LImageLoadDIBitmap, GreyHeightMapKeepsTheRoomItsHeaderClaims)
{
    // The header claims 1,048,578 bytes of pixels, two more than the rows, and the file holds them.
    std::string file = asset("bmp/dxsdk-legacy/Crack_Displacement.bmp");
    Dib dib;
    loadBytes(file, dib);
    ASSERT_TRUE(dib);
    EXPECT_EQ(dib.info->bmiHeader.biWidth, 1024);
    EXPECT_EQ(dib.info->bmiHeader.biBitCount, 8);
    EXPECT_EQ(dib.info->bmiHeader.biSizeImage, 1048578u);
    ASSERT_EQ(dib.bitsSize(), 1048578u);
    EXPECT_EQ(dib.block(), file.substr(1078));
}

TEST(LImageLoadDIBitmap, TopDownBlockIsKeptAsStored)
{
    std::string file = asset("bmp/bmpsuite/pal8topdown.bmp");
    Dib dib;
    loadBytes(file, dib);
    ASSERT_TRUE(dib);
    EXPECT_EQ(dib.info->bmiHeader.biHeight, -64);
    EXPECT_EQ(dib.block(), file.substr(get32(file, 10), 128 * 64));
}

TEST(LImageLoadDIBitmap, BitFieldMasksOpenTheColourTable)
{
    std::string file = asset("bmp/bmpsuite/rgb16-565.bmp");
    Dib dib;
    loadBytes(file, dib);
    ASSERT_TRUE(dib);
    EXPECT_EQ(dib.info->bmiHeader.biCompression, static_cast<uint32_t>(BI_BITFIELDS));
    ASSERT_EQ(LImage::DIBColorCount(dib.info->bmiHeader), 3);
    uint32_t masks[3];
    std::memcpy(masks, dib.info->bmiColors, sizeof masks);
    EXPECT_EQ(masks[0], 0xF800u);
    EXPECT_EQ(masks[1], 0x07E0u);
    EXPECT_EQ(masks[2], 0x001Fu);
}

TEST(LImageLoadDIBitmap, V5HeaderIsHandedOutAs40Bytes)
{
    std::string file = asset("bmp/bmpsuite/pal8v5.bmp");
    Dib dib;
    loadBytes(file, dib);
    ASSERT_TRUE(dib);
    EXPECT_EQ(dib.info->bmiHeader.biSize, 40u);
    EXPECT_EQ(dib.info->bmiHeader.biClrUsed, 252u);
    // The palette stood behind the 124-byte header.
    EXPECT_EQ(std::string(reinterpret_cast<char*>(dib.info->bmiColors), 252 * 4), file.substr(14 + 124, 252 * 4));
}

TEST(LImageLoadDIBitmap, Os2CoreHeaderIsConvertedWithFourBytePaletteEntries)
{
    std::string file = asset("bmp/bmpsuite/pal8os2.bmp");
    Dib dib;
    loadBytes(file, dib);
    ASSERT_TRUE(dib);
    const BITMAPINFOHEADER& h = dib.info->bmiHeader;
    EXPECT_EQ(h.biSize, 40u);
    EXPECT_EQ(h.biWidth, 127);
    EXPECT_EQ(h.biHeight, 64);
    EXPECT_EQ(h.biBitCount, 8);
    EXPECT_EQ(h.biClrUsed, 256u);
    for (int i : {0, 1, 100, 255}) {
        const RGBQUAD& c = dib.info->bmiColors[i];
        size_t at = 26 + 3 * static_cast<size_t>(i);
        EXPECT_EQ(c.rgbBlue, static_cast<unsigned char>(file[at])) << i;
        EXPECT_EQ(c.rgbGreen, static_cast<unsigned char>(file[at + 1])) << i;
        EXPECT_EQ(c.rgbRed, static_cast<unsigned char>(file[at + 2])) << i;
        EXPECT_EQ(c.rgbReserved, 0) << i;
    }
}

TEST(LImageLoadDIBitmap, RleBlockStaysCompressed)
{
    std::string file = asset("bmp/bmpsuite/pal8rle.bmp");
    Dib dib;
    loadBytes(file, dib);
    ASSERT_TRUE(dib);
    EXPECT_EQ(dib.info->bmiHeader.biCompression, static_cast<uint32_t>(BI_RLE8));
    ASSERT_EQ(dib.bitsSize(), 7726u);
    EXPECT_EQ(dib.block(), file.substr(1062));
}

TEST(LImageLoadDIBitmap, RleBlockWithoutSizeRunsToTheEndOfTheFile)
{
    std::string file = asset("bmp/bmpsuite/pal8rle.bmp");
    file.replace(34, 4, std::string(4, '\0'));
    Dib dib;
    loadBytes(file, dib);
    ASSERT_TRUE(dib);
    EXPECT_EQ(dib.info->bmiHeader.biSizeImage, 7726u);
    EXPECT_EQ(dib.block(), file.substr(1062));
}

TEST(LImageLoadDIBitmap, SizeClaimBeyondTheFileIsCutToTheRows)
{
    BmpPlan plan;
    plan.width = 2;
    plan.height = 2;
    plan.bpp = 24;
    plan.sizeImage = 4096;
    plan.pixels = padRow("abcdef") + padRow("ghijkl");
    Dib dib;
    loadBytes(makeBmp(plan), dib);
    ASSERT_TRUE(dib);
    EXPECT_EQ(dib.info->bmiHeader.biSizeImage, 16u);
    EXPECT_EQ(dib.block(), plan.pixels);
}

TEST(LImageLoadDIBitmap, PixelValuesAreNotChecked)
{
    // The reader of packed RGB refuses this file for its palette indices; the raw block is fine.
    Dib dib;
    loadPath(assetPath("bmp/bmpsuite/pal8badindex.bmp"), dib);
    EXPECT_TRUE(dib);
    Dib rle;
    loadPath(assetPath("bmp/bmpsuite/badrle.bmp"), rle);
    EXPECT_TRUE(rle);
}

TEST(LImageLoadDIBitmap, DamagedFilesGiveNullAndNullInfo)
{
    for (const char* name : {"bmp/bmpsuite/shortfile.bmp", "jpg/magnum/rgb.jpg", "tga/magnum/image.tga"}) {
        Dib dib;
        dib.info = reinterpret_cast<BITMAPINFO*>(std::malloc(sizeof(BITMAPINFO)));
        BITMAPINFO* before = dib.info;
        dib.bits = LImage::LoadDIBitmap(assetPath(name).c_str(), &dib.info);
        EXPECT_FALSE(dib) << name;
        EXPECT_EQ(dib.info, nullptr) << name;
        std::free(before);
    }
    Dib missing;
    loadPath(ostrum_test::makeTempDir() + "/none.bmp", missing);
    EXPECT_FALSE(missing);
    EXPECT_EQ(missing.info, nullptr);
}

TEST(LImageLoadDIBitmap, NullInfoGivesNull)
{
    EXPECT_EQ(LImage::LoadDIBitmap(assetPath("bmp/bmpsuite/pal8.bmp").c_str(), nullptr), nullptr);
}

TEST(LImageLoadDIBitmap, EveryTruncationOfAnUncompressedFileGivesNull)
{
    std::string file = asset("bmp/bmpsuite/pal4.bmp");
    for (size_t length = 0; length < file.size(); ++length) {
        BITMAPINFO* info = nullptr;
        char* bits = LImage::LoadDIBitmapFromMemory(bytesOf(file), length, &info);
        ASSERT_EQ(bits, nullptr) << length;
        ASSERT_EQ(info, nullptr) << length;
    }
}

// ---------------------------------------------------------------- saving and round trips

TEST(LImageSaveDIBitmap, RoundTripOfAGreyHeightMapIsByteExact)
{
    std::string dir = ostrum_test::makeTempDir();
    std::string original = asset("bmp/dxsdk-legacy/Crack_Displacement.bmp");
    Dib dib;
    loadPath(assetPath("bmp/dxsdk-legacy/Crack_Displacement.bmp"), dib);
    ASSERT_TRUE(dib);
    ASSERT_EQ(LImage::SaveDIBitmap((dir + "/h.bmp").c_str(), dib.info, dib.bits), 0);
    EXPECT_TRUE(ostrum_test::readFile(dir + "/h.bmp") == original);
}

TEST(LImageSaveDIBitmap, RoundTripsOfStandardFilesAreByteExact)
{
    for (const char* name : {"bmp/bmpsuite/pal8.bmp", "bmp/bmpsuite/pal8-0.bmp", "bmp/bmpsuite/pal4.bmp",
                             "bmp/bmpsuite/pal1.bmp", "bmp/bmpsuite/pal8topdown.bmp", "bmp/bmpsuite/pal8rle.bmp",
                             "bmp/bmpsuite/rgb16-565.bmp", "bmp/bmpsuite/rgb24.bmp", "bmp/bmpsuite/rgb24pal.bmp",
                             "bmp/dxsdk-legacy/tiger.bmp"}) {
        std::string file = asset(name);
        Dib dib;
        loadBytes(file, dib);
        ASSERT_TRUE(dib) << name;
        EXPECT_TRUE(saved(dib) == file) << name;
    }
}

TEST(LImageSaveDIBitmap, EditedHeightsAreWrittenAndReadBack)
{
    std::string dir = ostrum_test::makeTempDir();
    Dib dib;
    loadPath(assetPath("bmp/dxsdk-legacy/Crack_Displacement.bmp"), dib);
    ASSERT_TRUE(dib);
    // Raise one sample and flatten a row, as a map editor would.
    dib.bits[5 * 1024 + 7] = static_cast<char>(250);
    std::memset(dib.bits + 10 * 1024, 17, 1024);
    ASSERT_EQ(LImage::SaveDIBitmap((dir + "/edited.bmp").c_str(), dib.info, dib.bits), 0);
    Dib again;
    loadPath(dir + "/edited.bmp", again);
    ASSERT_TRUE(again);
    EXPECT_EQ(std::memcmp(&again.info->bmiHeader, &dib.info->bmiHeader, sizeof(BITMAPINFOHEADER)), 0);
    EXPECT_EQ(std::memcmp(again.info->bmiColors, dib.info->bmiColors, 256 * 4), 0);
    EXPECT_TRUE(again.block() == dib.block());
    // The packed RGB reader sees the edit through the grey palette.
    BmpPtr image(LImage::LoadBMP((dir + "/edited.bmp").c_str()));
    ASSERT_TRUE(image);
    EXPECT_EQ(image->data[(5 * 1024 + 7) * 3], 250);
    EXPECT_EQ(image->data[(10 * 1024 + 500) * 3 + 2], 17);
}

TEST(LImageSaveDIBitmap, ConvertedHeadersSaveAsEquivalentWindowsBitmaps)
{
    BmpPtr reference = decode(asset("bmp/bmpsuite/pal8.bmp"));
    ASSERT_TRUE(reference);
    for (const char* name : {"bmp/bmpsuite/pal8os2.bmp", "bmp/bmpsuite/pal8v5.bmp"}) {
        Dib dib;
        loadBytes(asset(name), dib);
        ASSERT_TRUE(dib) << name;
        std::string file = saved(dib);
        EXPECT_EQ(get32(file, 14), 40u) << name;
        BmpPtr again = decode(file);
        ASSERT_TRUE(again) << name;
        EXPECT_EQ(picture(*again), picture(*reference)) << name;
    }
}

TEST(LImageSaveDIBitmap, BuiltHeaderIsWrittenWithItsFileHeader)
{
    // A 3 x 2 eight-bit grey bitmap made in memory, as a new height map would be.
    struct {
        BITMAPINFOHEADER bmiHeader;
        RGBQUAD bmiColors[256];
    } block;
    block.bmiHeader = header(3, 2, 8);
    for (int i = 0; i < 256; ++i)
        block.bmiColors[i] = RGBQUAD{static_cast<uint8_t>(i), static_cast<uint8_t>(i), static_cast<uint8_t>(i), 0};
    char bits[8] = {1, 2, 3, 0, 4, 5, 6, 0};
    std::string dir = ostrum_test::makeTempDir();
    ASSERT_EQ(LImage::SaveDIBitmap((dir + "/new.bmp").c_str(), reinterpret_cast<BITMAPINFO*>(&block), bits), 0);
    std::string file = ostrum_test::readFile(dir + "/new.bmp");
    ASSERT_EQ(file.size(), 14u + 40 + 1024 + 8);
    EXPECT_EQ(file.substr(0, 2), "BM");
    EXPECT_EQ(get32(file, 2), file.size());
    EXPECT_EQ(get32(file, 10), 14u + 40 + 1024);
    EXPECT_EQ(get32(file, 14), 40u);
    EXPECT_EQ(get32(file, 18), 3u);
    EXPECT_EQ(get32(file, 22), 2u);
    EXPECT_EQ(get16(file, 28), 8u);
    EXPECT_EQ(get32(file, 54 + 4 * 200), 200u * 0x010101);
    EXPECT_EQ(file.substr(1078), std::string(bits, 8));
    BmpPtr image(LImage::LoadBMP((dir + "/new.bmp").c_str()));
    ASSERT_TRUE(image);
    EXPECT_EQ(picture(*image), bytes({1, 1, 1, 2, 2, 2, 3, 3, 3, 4, 4, 4, 5, 5, 5, 6, 6, 6}));
}

TEST(LImageSaveDIBitmap, FailuresReturnMinusOne)
{
    std::string dir = ostrum_test::makeTempDir();
    Dib dib;
    loadPath(assetPath("bmp/bmpsuite/pal8.bmp"), dib);
    ASSERT_TRUE(dib);
    EXPECT_EQ(LImage::SaveDIBitmap(nullptr, dib.info, dib.bits), -1);
    EXPECT_EQ(LImage::SaveDIBitmap((dir + "/a.bmp").c_str(), nullptr, dib.bits), -1);
    EXPECT_EQ(LImage::SaveDIBitmap((dir + "/a.bmp").c_str(), dib.info, nullptr), -1);
    EXPECT_EQ(LImage::SaveDIBitmap((dir + "/no/such/dir/a.bmp").c_str(), dib.info, dib.bits), -1);
    EXPECT_EQ(LImage::SaveDIBitmap(dir.c_str(), dib.info, dib.bits), -1);
    struct stat st;
    EXPECT_NE(::stat((dir + "/a.bmp").c_str(), &st), 0);
    // Headers that cannot be sized.
    dib.info->bmiHeader.biBitCount = 7;
    EXPECT_EQ(LImage::SaveDIBitmap((dir + "/a.bmp").c_str(), dib.info, dib.bits), -1);
    dib.info->bmiHeader = header(0, 2, 8);
    EXPECT_EQ(LImage::SaveDIBitmap((dir + "/a.bmp").c_str(), dib.info, dib.bits), -1);
    dib.info->bmiHeader = header(2, 2, 8, BI_RLE8);  // compressed data of unknown size
    EXPECT_EQ(LImage::SaveDIBitmap((dir + "/a.bmp").c_str(), dib.info, dib.bits), -1);
}

TEST(LImageSaveDIBitmap, WriteErrorReturnsMinusOne)
{
    struct stat st;
    if (::stat("/dev/full", &st) != 0)
        GTEST_SKIP() << "no /dev/full on this machine";
    Dib dib;
    loadPath(assetPath("bmp/bmpsuite/pal8.bmp"), dib);
    ASSERT_TRUE(dib);
    EXPECT_EQ(LImage::SaveDIBitmap("/dev/full", dib.info, dib.bits), -1);
}

// ---------------------------------------------------------------- header arithmetic

TEST(LImageDIBHeader, ColourCountFollowsDepthCompressionAndColoursUsed)
{
    EXPECT_EQ(LImage::DIBColorCount(header(4, 4, 8)), 256);
    EXPECT_EQ(LImage::DIBColorCount(header(4, 4, 8, BI_RGB, 12)), 12);
    EXPECT_EQ(LImage::DIBColorCount(header(4, 4, 4, BI_RGB, 300)), 16);
    EXPECT_EQ(LImage::DIBColorCount(header(4, 4, 1)), 2);
    EXPECT_EQ(LImage::DIBColorCount(header(4, 4, 2)), 4);
    EXPECT_EQ(LImage::DIBColorCount(header(4, 4, 24)), 0);
    EXPECT_EQ(LImage::DIBColorCount(header(4, 4, 24, BI_RGB, 256)), 256);
    EXPECT_EQ(LImage::DIBColorCount(header(4, 4, 24, BI_RGB, 257)), -1);
    EXPECT_EQ(LImage::DIBColorCount(header(4, 4, 16, BI_BITFIELDS)), 3);
    EXPECT_EQ(LImage::DIBColorCount(header(4, 4, 32, 6)), 4);
    EXPECT_EQ(LImage::DIBColorCount(header(4, 4, 32, BI_BITFIELDS, 2)), 5);
    EXPECT_EQ(LImage::DIBColorCount(header(4, 4, 24, BI_BITFIELDS)), -1);
    EXPECT_EQ(LImage::DIBColorCount(header(4, 4, 8, BI_RLE4)), -1);
    EXPECT_EQ(LImage::DIBColorCount(header(4, 4, 4, BI_RLE4)), 16);
    EXPECT_EQ(LImage::DIBColorCount(header(4, 4, 12)), -1);
}

TEST(LImageDIBHeader, BitsSizeIsThePaddedRowsOrTheLargerClaim)
{
    EXPECT_EQ(LImage::DIBBitsSize(header(3, 2, 8)), 8u);
    EXPECT_EQ(LImage::DIBBitsSize(header(3, -2, 8)), 8u);
    EXPECT_EQ(LImage::DIBBitsSize(header(127, 64, 1)), 16u * 64);
    EXPECT_EQ(LImage::DIBBitsSize(header(119, 96, 24)), 360u * 96);
    EXPECT_EQ(LImage::DIBBitsSize(header(3, 2, 8, BI_RGB, 0, 100)), 100u);
    EXPECT_EQ(LImage::DIBBitsSize(header(3, 2, 8, BI_RGB, 0, 5)), 8u);
    EXPECT_EQ(LImage::DIBBitsSize(header(3, 2, 8, BI_RLE8, 0, 77)), 77u);
    EXPECT_EQ(LImage::DIBBitsSize(header(3, 2, 8, BI_RLE8)), 0u);
    EXPECT_EQ(LImage::DIBBitsSize(header(0, 2, 8)), 0u);
    EXPECT_EQ(LImage::DIBBitsSize(header(16385, 2, 8)), 0u);
    EXPECT_EQ(LImage::DIBBitsSize(header(16384, 16384, 32)), 16384u * 16384 * 4);
}
