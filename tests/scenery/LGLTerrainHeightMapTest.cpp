// LGLTerrainHeightMapTest.cpp -- the terrain's height bitmap (loading, refusing unusable bitmaps,
// saving all or nothing), its numbered backups, bitmaps made by ImageMagick, and loading a whole map.
#include <ostrum_gl/scenery/LGLTerrain.h>

#include <ostrum_core/LFile.h>
#include <ostrum_core/LImage.h>

#include "FileFailureSupport.h"
#include "TerrainTestSupport.h"
#include "TestSupport.h"

#include <dirent.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

using namespace ostrum_test;
using namespace terrain_test;

namespace {

// Writes a side x side 8-bit bitmap with a grey palette whose pixel (column x, stored row z) is
// value(x, z); rows are stored without padding, so side must be a multiple of 4 unless rowBytes says
// otherwise. A negative `height` writes a top-down file.
void write8BitBmp(const std::string& path, int width, int height, const std::function<int(int, int)>& value)
{
    const int rows = std::abs(height);
    const int rowBytes = (width + 3) / 4 * 4;
    std::vector<unsigned char> block(sizeof(BITMAPINFOHEADER) + 256 * sizeof(RGBQUAD), 0);
    BITMAPINFO* info = reinterpret_cast<BITMAPINFO*>(block.data());
    info->bmiHeader.biSize = 40;
    info->bmiHeader.biWidth = width;
    info->bmiHeader.biHeight = height;
    info->bmiHeader.biPlanes = 1;
    info->bmiHeader.biBitCount = 8;
    info->bmiHeader.biCompression = BI_RGB;
    info->bmiHeader.biSizeImage = static_cast<uint32_t>(rowBytes * rows);
    info->bmiHeader.biClrUsed = 256;
    for (int i = 0; i < 256; ++i) {
        info->bmiColors[i].rgbBlue = static_cast<uint8_t>(i);
        info->bmiColors[i].rgbGreen = static_cast<uint8_t>(i);
        info->bmiColors[i].rgbRed = static_cast<uint8_t>(i);
    }
    std::vector<char> bits(static_cast<size_t>(rowBytes) * rows, 0);
    for (int z = 0; z < rows; ++z)
        for (int x = 0; x < width; ++x)
            bits[static_cast<size_t>(z) * rowBytes + x] = static_cast<char>(value(x, z));
    ASSERT_EQ(LImage::SaveDIBitmap(path.c_str(), info, bits.data()), 0) << path;
}

int pattern(int x, int z)
{
    return (x * 7 + z * 13 + 5) % 256;
}

std::vector<std::string> entriesOf(const std::string& dir)
{
    std::vector<std::string> names;
    if (DIR* d = ::opendir(dir.c_str())) {
        while (struct dirent* e = ::readdir(d)) {
            const std::string name = e->d_name;
            if (name != "." && name != "..")
                names.push_back(name);
        }
        ::closedir(d);
    }
    std::sort(names.begin(), names.end());
    return names;
}

// A terrain with a resource directory and a height file name, its world `worldSize` units wide.
struct HeightFixture {
    std::unique_ptr<LGLTerrain> t = makeTerrain();
    std::string dir;

    HeightFixture(const std::string& file, int worldSize, const std::string& resDir = "")
    {
        dir = resDir.empty() ? makeTempDir() + "/" : resDir;
        t->setResPath(dir);
        t->heightMapFile = file;
        t->worldSize = worldSize;
    }
};

// Runs a shell command; its exit status (or -1 when it did not exit).
int run(const std::string& command)
{
    const int status = std::system(command.c_str());
    if (status == -1 || !WIFEXITED(status))
        return -1;
    return WEXITSTATUS(status);
}

// A P2 (text) grey map of side x side pixels, value(x, y) with y counted from the top row.
void writePgm(const std::string& path, int side, const std::function<int(int, int)>& value)
{
    std::string text = "P2\n" + std::to_string(side) + " " + std::to_string(side) + "\n255\n";
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x)
            text += std::to_string(value(x, y)) + (x + 1 < side ? " " : "\n");
    }
    writeFile(path, text);
}

}  // namespace

// ---------------------------------------------------------------- loading

TEST(LGLTerrainHeightMapTest, LoadReadsASquare8BitBitmapIntoBothGrids)
{
    HeightFixture f("h.bmp", 128);
    write8BitBmp(f.dir + "h.bmp", 8, 8, pattern);
    f.t->loadHeightMap();
    ASSERT_TRUE(f.t->hasData());
    ASSERT_NE(f.t->heightBitmapInfo, nullptr);
    EXPECT_EQ(f.t->heightBitmapInfo->bmiHeader.biWidth, 8);
    EXPECT_EQ(f.t->numSamples, 8);
    EXPECT_EQ(f.t->unitsPerSample, 16);
    for (int z = 0; z < 8; ++z) {
        for (int x = 0; x < 8; ++x) {
            EXPECT_EQ(raw(*f.t, x, z), pattern(x, z)) << x << "," << z;
            EXPECT_EQ(fine(*f.t, x, z), static_cast<double>(pattern(x, z))) << x << "," << z;
        }
    }
    // world height of a sample: raw * 1.5, truncated
    EXPECT_EQ(f.t->getHeight(3 * 16 + 5, 2 * 16), static_cast<int>(pattern(3, 2) * 1.5));
}

TEST(LGLTerrainHeightMapTest, BitmapOfWidth512OnAWorldOf8192Gives16UnitsPerSample)
{
    HeightFixture f("big.bmp", 8192);
    write8BitBmp(f.dir + "big.bmp", 512, 512, pattern);
    f.t->loadHeightMap();
    EXPECT_EQ(f.t->numSamples, 512);
    EXPECT_EQ(f.t->unitsPerSample, 16);
    EXPECT_EQ(raw(*f.t, 511, 511), pattern(511, 511));
    EXPECT_EQ(fine(*f.t, 300, 17), pattern(300, 17));
}

TEST(LGLTerrainHeightMapTest, UnitsPerSampleIsTruncated)
{
    HeightFixture f("h.bmp", 100);
    write8BitBmp(f.dir + "h.bmp", 8, 8, pattern);
    f.t->loadHeightMap();
    EXPECT_EQ(f.t->unitsPerSample, 12);
}

TEST(LGLTerrainHeightMapTest, TopDownBitmapRowsAreUsedAsStored)
{
    HeightFixture f("td.bmp", 64);
    write8BitBmp(f.dir + "td.bmp", 4, -4, pattern);
    f.t->loadHeightMap();
    EXPECT_EQ(f.t->numSamples, 4);
    for (int z = 0; z < 4; ++z)
        for (int x = 0; x < 4; ++x)
            EXPECT_EQ(raw(*f.t, x, z), pattern(x, z));
}

TEST(LGLTerrainHeightMapTest, LoadingAgainReplacesTheEarlierHeights)
{
    HeightFixture f("a.bmp", 256);
    write8BitBmp(f.dir + "a.bmp", 8, 8, [](int, int) { return 9; });
    write8BitBmp(f.dir + "b.bmp", 16, 16, pattern);
    f.t->loadHeightMap();
    EXPECT_EQ(f.t->numSamples, 8);
    f.t->heightMapFile = "b.bmp";
    f.t->loadHeightMap();
    EXPECT_EQ(f.t->numSamples, 16);
    EXPECT_EQ(f.t->unitsPerSample, 16);
    EXPECT_EQ(f.t->heightBitmapInfo->bmiHeader.biWidth, 16);
    EXPECT_EQ(raw(*f.t, 15, 15), pattern(15, 15));
    EXPECT_EQ(fine(*f.t, 15, 15), pattern(15, 15));
}

TEST(LGLTerrainHeightMapTest, HeightFileNameIsFoundWithoutRegardToCase)
{
    HeightFixture f("HILLS.BMP", 64);
    write8BitBmp(f.dir + "hills.bmp", 4, 4, pattern);
    f.t->loadHeightMap();
    EXPECT_EQ(f.t->numSamples, 4);
}

TEST(LGLTerrainHeightMapTest, MissingHeightFileEndsTheProcess)
{
    HeightFixture f("gone.bmp", 64, "/nonexistent-ostrum-maps/");
    OSTRUM_EXPECT_EXIT_WITH_LINE(f.t->loadHeightMap(), 255,
                                 "ERROR: HEIGHTMAP FILE /nonexistent-ostrum-maps/gone.bmp NOT FOUND!");
}

// The unusable bitmaps end like a missing file. Their files lie in a fixed directory of the test's own
// (the death-test child runs the test afresh, and the line names the path).
class LGLTerrainUnusableHeightMapTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        dir = std::filesystem::temp_directory_path().string() + "/ostrum_heightmaps_" +
              ::testing::UnitTest::GetInstance()->current_test_info()->name() + "_" + std::to_string(::getuid()) + "/";
        std::filesystem::create_directories(dir);
    }
    void TearDown() override { std::filesystem::remove_all(dir); }

    std::string expectedLine(const std::string& file, int w, int h, int bits, unsigned compression) const
    {
        return "ERROR: LGLTerrain::loadHeightMap. Height map \"" + dir + file +
               "\" must be a square 8-bit bitmap without compression and with a width divisible by 4 (it is " +
               std::to_string(w) + " x " + std::to_string(h) + ", " + std::to_string(bits) + " bits, compression " +
               std::to_string(compression) + ").";
    }

    std::string dir;
};

TEST_F(LGLTerrainUnusableHeightMapTest, NonSquareBitmapEndsWithAnErrorLineLikeAMissingFile)
{
    HeightFixture f("wide.bmp", 64, dir);
    write8BitBmp(dir + "wide.bmp", 8, 4, pattern);
    OSTRUM_EXPECT_EXIT_WITH_LINE(f.t->loadHeightMap(), 255, expectedLine("wide.bmp", 8, 4, 8, 0));
}

TEST_F(LGLTerrainUnusableHeightMapTest, ColourBitmapEndsWithAnErrorLineLikeAMissingFile)
{
    HeightFixture f("colour.bmp", 64, dir);
    writeSolidBmp(dir + "colour.bmp", 8, 8, 10, 20, 30);
    OSTRUM_EXPECT_EXIT_WITH_LINE(f.t->loadHeightMap(), 255, expectedLine("colour.bmp", 8, 8, 24, 0));
}

TEST_F(LGLTerrainUnusableHeightMapTest, WidthNotDivisibleBy4EndsWithAnErrorLine)
{
    HeightFixture f("odd.bmp", 64, dir);
    write8BitBmp(dir + "odd.bmp", 6, 6, pattern);
    OSTRUM_EXPECT_EXIT_WITH_LINE(f.t->loadHeightMap(), 255, expectedLine("odd.bmp", 6, 6, 8, 0));
}

TEST_F(LGLTerrainUnusableHeightMapTest, RunLengthEncodedBitmapEndsWithAnErrorLine)
{
    // 4 x 4, every row one run of four pixels of value 7, then end of line; end of bitmap at the end
    std::vector<unsigned char> rle;
    for (int row = 0; row < 4; ++row) {
        const unsigned char run[4] = {4, 7, 0, 0};
        rle.insert(rle.end(), run, run + 4);
    }
    rle.push_back(0);
    rle.push_back(1);
    std::vector<unsigned char> block(sizeof(BITMAPINFOHEADER) + 256 * sizeof(RGBQUAD), 0);
    BITMAPINFO* info = reinterpret_cast<BITMAPINFO*>(block.data());
    info->bmiHeader.biSize = 40;
    info->bmiHeader.biWidth = 4;
    info->bmiHeader.biHeight = 4;
    info->bmiHeader.biPlanes = 1;
    info->bmiHeader.biBitCount = 8;
    info->bmiHeader.biCompression = BI_RLE8;
    info->bmiHeader.biSizeImage = static_cast<uint32_t>(rle.size());
    info->bmiHeader.biClrUsed = 256;
    ASSERT_EQ(LImage::SaveDIBitmap((dir + "rle.bmp").c_str(), info, reinterpret_cast<char*>(rle.data())), 0);
    HeightFixture f("rle.bmp", 64, dir);
    OSTRUM_EXPECT_EXIT_WITH_LINE(f.t->loadHeightMap(), 255, expectedLine("rle.bmp", 4, 4, 8, 1));
}

TEST_F(LGLTerrainUnusableHeightMapTest, FileThatIsNoBitmapEndsWithAnErrorLine)
{
    writeFile(dir + "text.bmp", "this is not a bitmap at all");
    HeightFixture f("text.bmp", 64, dir);
    OSTRUM_EXPECT_EXIT_WITH_LINE(f.t->loadHeightMap(), 255,
                                 "ERROR: LGLTerrain::loadHeightMap. \"" + dir + "text.bmp\" is not a readable bitmap.");
}

TEST_F(LGLTerrainUnusableHeightMapTest, TruncatedBitmapEndsWithAnErrorLine)
{
    write8BitBmp(dir + "whole.bmp", 16, 16, pattern);
    const std::string bytes = readFile(dir + "whole.bmp");
    writeFile(dir + "cut.bmp", bytes.substr(0, bytes.size() - 100));
    HeightFixture f("cut.bmp", 64, dir);
    // the core reader refuses pixel rows that the file does not hold
    OSTRUM_EXPECT_EXIT_WITH_LINE(f.t->loadHeightMap(), 255,
                                 "ERROR: LGLTerrain::loadHeightMap. \"" + dir + "cut.bmp\" is not a readable bitmap.");
}

// ---------------------------------------------------------------- ImageMagick's bitmaps

TEST(LGLTerrainHeightMapTest, GreyBitmapMadeByImageMagickLoadsItsGreyValues)
{
    HeightFixture f("im.bmp", 1024);
    // every grey value occurs, so the palette ImageMagick writes is the plain ramp 0..255
    auto grey = [](int x, int y) { return (x + 64 * y) % 256; };
    writePgm(f.dir + "im.pgm", 64, grey);
    ASSERT_EQ(run("convert '" + f.dir + "im.pgm' +dither -type Palette -depth 8 -compress None 'BMP3:" + f.dir +
                  "im.bmp' 2>&1"),
              0)
        << "ImageMagick's convert must be installed";
    f.t->loadHeightMap();
    ASSERT_EQ(f.t->numSamples, 64);
    EXPECT_EQ(f.t->unitsPerSample, 16);
    EXPECT_EQ(f.t->heightBitmapInfo->bmiHeader.biBitCount, 8);
    for (int i = 0; i < 256; ++i)
        ASSERT_EQ(f.t->heightBitmapInfo->bmiColors[i].rgbRed, i);
    // the file's rows run bottom up: sample row z is the picture's row 63 - z
    for (int z = 0; z < 64; ++z)
        for (int x = 0; x < 64; ++x)
            ASSERT_EQ(raw(*f.t, x, z), grey(x, 63 - z)) << x << "," << z;
}

TEST_F(LGLTerrainUnusableHeightMapTest, ColourBitmapMadeByImageMagickIsRefused)
{
    writePgm(dir + "im.pgm", 8, [](int x, int y) { return x * 30 + y; });
    ASSERT_EQ(run("convert '" + dir + "im.pgm' -type TrueColor -compress None 'BMP3:" + dir + "im24.bmp' 2>&1"), 0)
        << "ImageMagick's convert must be installed";
    HeightFixture f("im24.bmp", 64, dir);
    OSTRUM_EXPECT_EXIT_WITH_LINE(f.t->loadHeightMap(), 255, expectedLine("im24.bmp", 8, 8, 24, 0));
}

TEST(LGLTerrainHeightMapTest, HeightMapSavedReadsBackInImageMagick)
{
    HeightFixture f("h.bmp", 64);
    write8BitBmp(f.dir + "h.bmp", 8, 8, pattern);
    f.t->loadHeightMap();
    {
        StdoutCapture quiet;
        f.t->saveHeightMap(f.dir + "out.bmp");
    }
    // ImageMagick reads the saved file; its text dump of one pixel holds the palette grey
    const std::string dump = f.dir + "dump.txt";
    ASSERT_EQ(run("convert '" + f.dir + "out.bmp' -depth 8 'txt:" + dump + "' 2>&1"), 0)
        << "ImageMagick's convert must be installed";
    const std::string text = readFile(dump);
    // picture row 0 is the stored row 7 (bottom up); pixel (2, 0) has the grey value pattern(2, 7)
    const int v = pattern(2, 7);
    char hex[8];
    std::snprintf(hex, sizeof hex, "%02X%02X%02X", v, v, v);
    EXPECT_NE(text.find("2,0: "), std::string::npos) << text.substr(0, 200);
    const size_t at = text.find("2,0: ");
    const size_t lineEnd = text.find('\n', at);
    EXPECT_NE(text.substr(at, lineEnd - at).find(hex), std::string::npos) << text.substr(at, lineEnd - at);
}

// ---------------------------------------------------------------- saving

TEST(LGLTerrainHeightMapTest, SavingWhatWasLoadedWritesTheSameFile)
{
    HeightFixture f("h.bmp", 64);
    write8BitBmp(f.dir + "h.bmp", 16, 16, pattern);
    f.t->loadHeightMap();
    StdoutCapture out;
    f.t->saveHeightMap(f.dir + "copy.bmp");
    // kept on purpose: the line has no closing quote
    EXPECT_EQ(out.take(), "Saving height map to \"" + f.dir + "copy.bmp\n");
    EXPECT_EQ(readFile(f.dir + "copy.bmp"), readFile(f.dir + "h.bmp"));
}

TEST(LGLTerrainHeightMapTest, SaveWithoutANameWritesTheHeightFileInTheResourceDirectory)
{
    HeightFixture f("h.bmp", 64);
    write8BitBmp(f.dir + "h.bmp", 8, 8, pattern);
    f.t->loadHeightMap();
    f.t->setHeight(0, 0, 300);  // raw 200
    StdoutCapture out;
    f.t->saveHeightMap();
    EXPECT_EQ(out.take(), "Saving height map to \"" + f.dir + "h.bmp\n");
    EXPECT_EQ(entriesOf(f.dir), std::vector<std::string>{"h.bmp"});
    auto again = makeTerrain();
    again->setResPath(f.dir);
    again->heightMapFile = "h.bmp";
    again->worldSize = 64;
    again->loadHeightMap();
    EXPECT_EQ(raw(*again, 0, 0), 200);
    EXPECT_EQ(raw(*again, 1, 0), pattern(1, 0));
}

TEST(LGLTerrainHeightMapTest, FineHeightsAreNotSavedAndReloadAsTheRoundedBytes)
{
    HeightFixture f("h.bmp", 64);
    write8BitBmp(f.dir + "h.bmp", 8, 8, [](int, int) { return 100; });
    f.t->loadHeightMap();
    raw(*f.t, 2, 3) = 101;
    fine(*f.t, 2, 3) = 100.7;
    {
        StdoutCapture quiet;
        f.t->saveHeightMap();
    }
    f.t->loadHeightMap();
    EXPECT_EQ(raw(*f.t, 2, 3), 101);
    EXPECT_EQ(fine(*f.t, 2, 3), 101.0);
}

TEST(LGLTerrainHeightMapTest, SaveWithoutHeightsSaysSaveError)
{
    HeightFixture f("h.bmp", 64);
    StdoutCapture out;
    f.t->saveHeightMap();
    EXPECT_EQ(out.take(), "Saving height map to \"" + f.dir + "h.bmp\nSave error!\n");
    EXPECT_TRUE(entriesOf(f.dir).empty());
}

TEST(LGLTerrainHeightMapTest, SaveOnAFullDiskKeepsTheOldFileAndTheHeights)
{
    HeightFixture f("h.bmp", 64);
    write8BitBmp(f.dir + "h.bmp", 64, 64, pattern);
    const std::string old = readFile(f.dir + "h.bmp");
    f.t->loadHeightMap();
    raw(*f.t, 0, 0) = 1;
    std::string output;
    {
        StdoutCapture out;
        FileSizeLimit limit(1024);
        ASSERT_TRUE(limit.active());
        f.t->saveHeightMap();
        output = out.take();
    }
    EXPECT_EQ(output, "Saving height map to \"" + f.dir + "h.bmp\nSave error!\n");
    EXPECT_EQ(readFile(f.dir + "h.bmp"), old);
    EXPECT_EQ(entriesOf(f.dir), std::vector<std::string>{"h.bmp"});
    // the heights in memory are kept
    EXPECT_EQ(raw(*f.t, 0, 0), 1);
}

TEST(LGLTerrainHeightMapTest, SaveInAReadOnlyDirectoryKeepsTheOldFile)
{
    HeightFixture f("h.bmp", 64);
    write8BitBmp(f.dir + "h.bmp", 8, 8, pattern);
    const std::string old = readFile(f.dir + "h.bmp");
    f.t->loadHeightMap();
    raw(*f.t, 0, 0) = 1;
    ASSERT_TRUE(makeDirectoryReadOnly(f.dir));
    // The death-test child runs this test afresh (its own directory): it checks the file itself.
    OSTRUM_EXPECT_EXIT_WITH_LINE(
        {
            if (!dropRootPrivileges())
                std::exit(3);
            f.t->saveHeightMap();
            std::exit(readFile(f.dir + "h.bmp") == old && entriesOf(f.dir) == std::vector<std::string>{"h.bmp"} ? 0 : 4);
        },
        0, "Save error!");
    ASSERT_TRUE(makeDirectoryWritable(f.dir));
}

// ---------------------------------------------------------------- backups

TEST(LGLTerrainHeightMapTest, FirstBackupIsNumber001WithTheSameBytes)
{
    HeightFixture f("h.bmp", 64);
    write8BitBmp(f.dir + "h.bmp", 8, 8, pattern);
    StdoutCapture out;
    f.t->backupHeightMapFile();
    EXPECT_EQ(out.take(), "");
    EXPECT_EQ(entriesOf(f.dir), (std::vector<std::string>{"h.bmp", "h_001.bmp"}));
    EXPECT_EQ(readFile(f.dir + "h_001.bmp"), readFile(f.dir + "h.bmp"));
}

TEST(LGLTerrainHeightMapTest, WithBackups001And002PresentTheNextIs003)
{
    HeightFixture f("h.bmp", 64);
    write8BitBmp(f.dir + "h.bmp", 8, 8, pattern);
    writeFile(f.dir + "h_001.bmp", "one");
    writeFile(f.dir + "h_002.bmp", "two");
    f.t->backupHeightMapFile();
    EXPECT_EQ(entriesOf(f.dir), (std::vector<std::string>{"h.bmp", "h_001.bmp", "h_002.bmp", "h_003.bmp"}));
    EXPECT_EQ(readFile(f.dir + "h_003.bmp"), readFile(f.dir + "h.bmp"));
    EXPECT_EQ(readFile(f.dir + "h_001.bmp"), "one");
    f.t->backupHeightMapFile();
    EXPECT_TRUE(LFile::fileExist(f.dir + "h_004.bmp"));
}

TEST(LGLTerrainHeightMapTest, FirstFreeNumberIsTakenEvenBelowHigherOnes)
{
    HeightFixture f("h.bmp", 64);
    write8BitBmp(f.dir + "h.bmp", 8, 8, pattern);
    writeFile(f.dir + "h_001.bmp", "one");
    writeFile(f.dir + "h_003.bmp", "three");
    f.t->backupHeightMapFile();
    EXPECT_EQ(readFile(f.dir + "h_002.bmp"), readFile(f.dir + "h.bmp"));
    EXPECT_EQ(readFile(f.dir + "h_003.bmp"), "three");
}

TEST(LGLTerrainHeightMapTest, BackupSitsBesideAHeightFileInASubdirectory)
{
    HeightFixture f("maps/hills.BMP", 64);
    std::filesystem::create_directories(f.dir + "maps");
    write8BitBmp(f.dir + "maps/hills.BMP", 8, 8, pattern);
    f.t->backupHeightMapFile();
    EXPECT_EQ(entriesOf(f.dir + "maps"), (std::vector<std::string>{"hills.BMP", "hills_001.bmp"}));
}

TEST(LGLTerrainHeightMapTest, Backup999IsTheLastOne)
{
    HeightFixture f("h.bmp", 64);
    write8BitBmp(f.dir + "h.bmp", 8, 8, pattern);
    for (int n = 1; n <= 998; ++n) {
        char name[32];
        std::snprintf(name, sizeof name, "h_%03d.bmp", n);
        writeFile(f.dir + name, "");
    }
    f.t->backupHeightMapFile();
    EXPECT_EQ(readFile(f.dir + "h_999.bmp"), readFile(f.dir + "h.bmp"));
    EXPECT_FALSE(LFile::fileExist(f.dir + "h_1000.bmp"));
}

TEST_F(LGLTerrainUnusableHeightMapTest, ThousandthBackupEndsTheProcess)
{
    write8BitBmp(dir + "h.bmp", 8, 8, pattern);
    for (int n = 1; n <= 999; ++n) {
        char name[32];
        std::snprintf(name, sizeof name, "h_%03d.bmp", n);
        writeFile(dir + name, "");
    }
    HeightFixture f("h.bmp", 64, dir);
    OSTRUM_EXPECT_EXIT_WITH_LINE(f.t->backupHeightMapFile(), 255,
                                 "ERROR: LGLTerrain::backupHeightMapFile. All 999 backup names of \"" + dir +
                                     "h.bmp\" are in use.");
}

TEST(LGLTerrainHeightMapTest, BackupOfAMissingHeightFileSaysSoAndLeavesNothing)
{
    HeightFixture f("gone.bmp", 64);
    StdoutCapture out;
    f.t->backupHeightMapFile();
    EXPECT_EQ(out.take(), "ERROR: LGLTerrain::backupHeightMapFile. Could not copy \"" + f.dir + "gone.bmp\" to \"" +
                              f.dir + "gone_001.bmp\".\n");
    EXPECT_TRUE(entriesOf(f.dir).empty());
}

TEST(LGLTerrainHeightMapTest, FailedBackupCopyLeavesNoPartialFile)
{
    HeightFixture f("h.bmp", 64);
    write8BitBmp(f.dir + "h.bmp", 64, 64, pattern);
    std::string output;
    {
        StdoutCapture out;
        FileSizeLimit limit(1024);
        ASSERT_TRUE(limit.active());
        f.t->backupHeightMapFile();
        output = out.take();
    }
    EXPECT_EQ(output, "ERROR: LGLTerrain::backupHeightMapFile. Could not copy \"" + f.dir + "h.bmp\" to \"" + f.dir +
                          "h_001.bmp\".\n");
    EXPECT_EQ(entriesOf(f.dir), std::vector<std::string>{"h.bmp"});
}

// ---------------------------------------------------------------- whole maps

class LGLTerrainLoadTest : public TerrainGLTest {
protected:
    // A map directory with tile textures a.bmp (red) and b.bmp (green) and the given map text.
    void writeMap(const std::string& text)
    {
        dir = makeTempDir() + "/";
        std::filesystem::create_directories(dir + "images/map_tiles/categories");
        writeSolidBmp(dir + "images/map_tiles/categories/a.bmp", 8, 8, 255, 0, 0);
        writeSolidBmp(dir + "images/map_tiles/categories/b.bmp", 8, 8, 0, 255, 0);
        writeFile(dir + "m.map", text);
        terrain->setResPath(dir);
    }

    std::string dir;
};

TEST_F(LGLTerrainLoadTest, FlatMapLoadsTexturesButNoHeights)
{
    writeMap("=== Harrowfields map file ===\n\nTerrain flat 1024 4 0\n\nTextures (blending)\na.bmp 64\nb.bmp 32\n\n"
             "Bottom 0 1 0.5\n\nTiles\n0 1 0.5\n");
    StdoutCapture out;
    terrain->load("m.map");
    EXPECT_EQ(out.take(), "Loading \"a.bmp\"...\nLoading \"b.bmp\"...\n");
    EXPECT_FALSE(terrain->hasData());
    EXPECT_EQ(terrain->heights, nullptr);
    EXPECT_EQ(terrain->numTextures, 2);
    EXPECT_TRUE(glIsTexture(terrain->texIds[0]));
    EXPECT_TRUE(glIsTexture(terrain->texIds[1]));
    EXPECT_EQ(terrain->tiles[0][0].texB, 1);
}

TEST_F(LGLTerrainLoadTest, MapReadsHeightsSortsTilesLoadsTexturesAndSetsCorners)
{
    writeMap("=== Harrowfields map file ===\n\nTerrain h.bmp 128 4 2\n\nTextures (blending)\na.bmp 64\nb.bmp 32\n\n"
             "Tiles\n0 0 0\n0 1 0.5\n1 1 0\n1 0 0.25\n");
    write8BitBmp(dir + "h.bmp", 8, 8, pattern);
    StdoutCapture out;
    terrain->load("m.map");
    const std::string output = out.take();
    EXPECT_EQ(terrain->numSamples, 8);
    EXPECT_EQ(terrain->unitsPerSample, 16);
    EXPECT_EQ(terrain->tileSize, 32);
    EXPECT_TRUE(glIsTexture(terrain->texIds[0]));
    EXPECT_TRUE(glIsTexture(terrain->texIds[1]));
    // the tile sort's listing (its groups depend on what the program-wide table held before) comes
    // first, then the textures are loaded
    const size_t loading = output.find("Loading \"a.bmp\"...\nLoading \"b.bmp\"...\n");
    ASSERT_NE(loading, std::string::npos) << output;
    EXPECT_EQ(output.rfind("0 (", 0), 0u) << output;
    EXPECT_EQ(output.substr(loading - 3, 3), ". \n") << output;
    // the corners of the tiles the coordinate pass visits first (x index 0): heights from the bitmap
    for (int k = 0; k < 4; ++k) {
        for (int c = 0; c < 4; ++c) {
            const LGLTerrain::tTileVertex& v = LGLTerrain::tileVertices[0][k][c];
            const int x = 32 * (c % 2);
            const int z = 32 * (k + (c < 2 ? 1 : 0));
            EXPECT_EQ(v.x, x);
            EXPECT_EQ(v.z, z);
            const int sx = std::min(x, 127) / 16;
            const int sz = std::min(z, 127) / 16;
            EXPECT_EQ(v.y, static_cast<int>(pattern(sx, sz) * 1.5)) << k << "," << c;
        }
    }
    // tile (0, 1) blends textures 0 and 1: s1 over a repeat of 32
    EXPECT_DOUBLE_EQ(LGLTerrain::tileVertices[0][1][1].s1, 32.0 / 32.0);
    EXPECT_DOUBLE_EQ(LGLTerrain::tileVertices[0][1][1].s0, 32.0 / 64.0);
}

TEST_F(LGLTerrainLoadTest, MapWithoutBottomLineDrawsNoBottomPlane)
{
    writeMap("=== Harrowfields map file ===\n\nTerrain flat 1024 4 0\n\nTextures (blending)\na.bmp 64\n\nTiles\n");
    terrain->bottomTexA = 0;
    {
        StdoutCapture quiet;
        terrain->load("m.map");
    }
    EXPECT_EQ(terrain->bottomTexA, -1);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(-100, 1200, -1200, 100, -10000, 10000);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glRotated(90.0, 1.0, 0.0, 0.0);
    const auto none = recordFeedback([&] { terrain->renderBottom(); });
    EXPECT_TRUE(itemsOf(none, GL_POLYGON_TOKEN).empty());

    // the same map with a "Bottom" line draws it
    writeMap("=== Harrowfields map file ===\n\nTerrain flat 1024 4 0\n\nTextures (blending)\na.bmp 64\n\n"
             "Bottom 0 0 1\n\nTiles\n");
    {
        StdoutCapture quiet;
        terrain->load("m.map");
    }
    const auto some = recordFeedback([&] { terrain->renderBottom(); });
    EXPECT_FALSE(itemsOf(some, GL_POLYGON_TOKEN).empty());
}
