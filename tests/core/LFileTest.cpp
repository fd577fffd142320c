// LFileTest.cpp -- file helpers and the case-insensitive resolution of resource paths.
#include <ostrum_core/LFile.h>

#include "TestSupport.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <string>

using ostrum_test::makeTempDir;
using ostrum_test::readFile;
using ostrum_test::writeFile;

namespace {

bool onDisk(const std::string& path)
{
    struct stat st;
    return ::lstat(path.c_str(), &st) == 0;
}

// Changes the working directory for one test and restores it afterwards.
class WorkingDirectory {
public:
    explicit WorkingDirectory(const std::string& dir)
    {
        char buf[4096];
        if (::getcwd(buf, sizeof buf) != nullptr)
            saved_ = buf;
        EXPECT_EQ(::chdir(dir.c_str()), 0);
    }
    ~WorkingDirectory()
    {
        if (!saved_.empty() && ::chdir(saved_.c_str()) != 0)
            ADD_FAILURE() << "could not return to " << saved_;
    }

private:
    std::string saved_;
};

}  // namespace

// ---------------------------------------------------------------- resolvePath

TEST(LFileResolvePath, PathThatExistsAsWrittenIsReturnedUnchanged)
{
    std::string dir = makeTempDir();
    writeFile(dir + "/Image1.jpg", "x");
    EXPECT_EQ(LFile::resolvePath(dir + "/Image1.jpg"), dir + "/Image1.jpg");
    // Also a directory, and with a redundant "./" in it: nothing is rewritten.
    EXPECT_EQ(LFile::resolvePath(dir + "/./Image1.jpg"), dir + "/./Image1.jpg");
    EXPECT_EQ(LFile::resolvePath(dir), dir);
}

TEST(LFileResolvePath, UpperCaseNameFindsLowerCaseFile)
{
    std::string dir = makeTempDir();
    writeFile(dir + "/image1.jpg", "jpeg bytes");
    EXPECT_EQ(LFile::resolvePath(dir + "/IMAGE1.JPG"), dir + "/image1.jpg");
}

TEST(LFileResolvePath, MixedCaseNameFindsFileOfOtherMixedCase)
{
    std::string dir = makeTempDir();
    writeFile(dir + "/IMAGE1.jpg", "x");
    EXPECT_EQ(LFile::resolvePath(dir + "/image1.JPG"), dir + "/IMAGE1.jpg");
}

TEST(LFileResolvePath, MissingDirectoryComponentIsMatchedWithoutCase)
{
    std::string dir = makeTempDir();
    ASSERT_EQ(::mkdir((dir + "/Textures").c_str(), 0755), 0);
    ASSERT_EQ(::mkdir((dir + "/Textures/Walls").c_str(), 0755), 0);
    writeFile(dir + "/Textures/Walls/brick.tga", "x");
    EXPECT_EQ(LFile::resolvePath(dir + "/textures/WALLS/Brick.TGA"), dir + "/Textures/Walls/brick.tga");
    // A directory component alone, with the file name already right.
    EXPECT_EQ(LFile::resolvePath(dir + "/TEXTURES/Walls/brick.tga"), dir + "/Textures/Walls/brick.tga");
}

TEST(LFileResolvePath, NoMatchReturnsPathAsWritten)
{
    std::string dir = makeTempDir();
    writeFile(dir + "/image1.jpg", "x");
    EXPECT_EQ(LFile::resolvePath(dir + "/IMAGE2.JPG"), dir + "/IMAGE2.JPG");
    // A missing directory in the middle: the whole path comes back as written.
    EXPECT_EQ(LFile::resolvePath(dir + "/NoSuchDir/IMAGE1.JPG"), dir + "/NoSuchDir/IMAGE1.JPG");
    // A file used as a directory does not resolve either.
    EXPECT_EQ(LFile::resolvePath(dir + "/IMAGE1.JPG/x"), dir + "/IMAGE1.JPG/x");
}

TEST(LFileResolvePath, NameDifferingInMoreThanCaseDoesNotMatch)
{
    std::string dir = makeTempDir();
    writeFile(dir + "/image1.jpg", "x");
    EXPECT_EQ(LFile::resolvePath(dir + "/IMAGE1.JPEG"), dir + "/IMAGE1.JPEG");
    EXPECT_EQ(LFile::resolvePath(dir + "/IMAGE1.JP"), dir + "/IMAGE1.JP");
}

TEST(LFileResolvePath, SeveralMatchesTakeTheFirstByByteOrder)
{
    std::string dir = makeTempDir();
    writeFile(dir + "/image.jpg", "lower");
    writeFile(dir + "/IMAGE.jpg", "upper");
    writeFile(dir + "/Image.jpg", "mixed");
    // "IMAGE.jpg" < "Image.jpg" < "image.jpg" in byte order.
    EXPECT_EQ(LFile::resolvePath(dir + "/image.JPG"), dir + "/IMAGE.jpg");
}

TEST(LFileResolvePath, RelativePathResolvesAgainstWorkingDirectory)
{
    std::string dir = makeTempDir();
    ASSERT_EQ(::mkdir((dir + "/Data").c_str(), 0755), 0);
    writeFile(dir + "/Data/map.txt", "x");
    WorkingDirectory cwd(dir);
    EXPECT_EQ(LFile::resolvePath("DATA/MAP.TXT"), "Data/map.txt");
    EXPECT_EQ(LFile::resolvePath("./data/Map.txt"), "./Data/map.txt");
    EXPECT_EQ(LFile::resolvePath("Data/../DATA/map.txt"), "Data/../Data/map.txt");
}

TEST(LFileResolvePath, EmptyPathStaysEmpty)
{
    EXPECT_EQ(LFile::resolvePath(""), "");
}

// ---------------------------------------------------------------- openFile

TEST(LFileOpenFile, ReadModeOpensFileNamedInOtherCase)
{
    std::string dir = makeTempDir();
    writeFile(dir + "/image1.jpg", "jpeg bytes");
    std::FILE* f = LFile::openFile(dir + "/IMAGE1.JPG", "rb");
    ASSERT_NE(f, nullptr);
    char buf[32] = {};
    size_t n = std::fread(buf, 1, sizeof buf, f);
    std::fclose(f);
    EXPECT_EQ(std::string(buf, n), "jpeg bytes");
}

TEST(LFileOpenFile, ReadModeOfMissingFileGivesNull)
{
    std::string dir = makeTempDir();
    EXPECT_EQ(LFile::openFile(dir + "/missing.txt", "rb"), nullptr);
}

TEST(LFileOpenFile, WriteModeResolvesDirectoryAndKeepsFileName)
{
    std::string dir = makeTempDir();
    ASSERT_EQ(::mkdir((dir + "/Maps").c_str(), 0755), 0);
    std::FILE* f = LFile::openFile(dir + "/MAPS/New.Txt", "wb");
    ASSERT_NE(f, nullptr);
    std::fputs("written", f);
    std::fclose(f);
    EXPECT_EQ(readFile(dir + "/Maps/New.Txt"), "written");
    EXPECT_FALSE(onDisk(dir + "/MAPS"));
}

TEST(LFileOpenFile, WriteModeDoesNotReuseFileOfOtherCase)
{
    std::string dir = makeTempDir();
    writeFile(dir + "/h_001.bmp", "old");
    std::FILE* f = LFile::openFile(dir + "/H_001.BMP", "wb");
    ASSERT_NE(f, nullptr);
    std::fputs("new", f);
    std::fclose(f);
    EXPECT_EQ(readFile(dir + "/h_001.bmp"), "old");
    EXPECT_EQ(readFile(dir + "/H_001.BMP"), "new");
}

TEST(LFileOpenFile, AppendModeAppendsToFileAsWritten)
{
    std::string dir = makeTempDir();
    writeFile(dir + "/log.txt", "a");
    std::FILE* f = LFile::openFile(dir + "/log.txt", "ab");
    ASSERT_NE(f, nullptr);
    std::fputs("b", f);
    std::fclose(f);
    EXPECT_EQ(readFile(dir + "/log.txt"), "ab");
}

TEST(LFileOpenFile, UpdateModeOpensExistingFileNamedInOtherCase)
{
    std::string dir = makeTempDir();
    writeFile(dir + "/data.bin", "abc");
    std::FILE* f = LFile::openFile(dir + "/DATA.BIN", "r+b");
    ASSERT_NE(f, nullptr);
    std::fputs("X", f);
    std::fclose(f);
    EXPECT_EQ(readFile(dir + "/data.bin"), "Xbc");
}

// ---------------------------------------------------------------- fileExist

TEST(LFileFileExist, ExistingFileIsFound)
{
    std::string dir = makeTempDir();
    writeFile(dir + "/tree.3ds", "x");
    EXPECT_TRUE(LFile::fileExist(dir + "/tree.3ds"));
}

TEST(LFileFileExist, FileNamedInOtherCaseIsFound)
{
    std::string dir = makeTempDir();
    writeFile(dir + "/image1.jpg", "x");
    EXPECT_TRUE(LFile::fileExist(dir + "/IMAGE1.JPG"));
}

TEST(LFileFileExist, EmptyFileIsFound)
{
    std::string dir = makeTempDir();
    writeFile(dir + "/empty.txt", "");
    EXPECT_TRUE(LFile::fileExist(dir + "/empty.txt"));
}

TEST(LFileFileExist, MissingFileIsNotFound)
{
    std::string dir = makeTempDir();
    EXPECT_FALSE(LFile::fileExist(dir + "/missing.bmp"));
    EXPECT_FALSE(LFile::fileExist(""));
}

TEST(LFileFileExist, DirectoryIsNotAFile)
{
    std::string dir = makeTempDir();
    ASSERT_EQ(::mkdir((dir + "/sub").c_str(), 0755), 0);
    EXPECT_FALSE(LFile::fileExist(dir + "/sub"));
    EXPECT_FALSE(LFile::fileExist(dir + "/SUB"));
}

TEST(LFileFileExist, UnreadableFileIsNotFound)
{
    if (::geteuid() == 0)
        GTEST_SKIP() << "root reads every file";
    std::string dir = makeTempDir();
    writeFile(dir + "/locked.txt", "x");
    ASSERT_EQ(::chmod((dir + "/locked.txt").c_str(), 0), 0);
    EXPECT_FALSE(LFile::fileExist(dir + "/locked.txt"));
}

TEST(LFileFileExist, SharedAssetIsFound)
{
    std::string dir = ostrum_test::assetsDir();
    EXPECT_TRUE(LFile::fileExist(dir + "/MANIFEST.md"));
    EXPECT_TRUE(LFile::fileExist(dir + "/manifest.MD"));
}

// ---------------------------------------------------------------- del

TEST(LFileDel, DeletesTheFile)
{
    std::string dir = makeTempDir();
    writeFile(dir + "/old.bmp", "x");
    EXPECT_TRUE(LFile::del(dir + "/old.bmp"));
    EXPECT_FALSE(onDisk(dir + "/old.bmp"));
}

TEST(LFileDel, DeletesFileNamedInOtherCase)
{
    std::string dir = makeTempDir();
    writeFile(dir + "/old.bmp", "x");
    LFile::del(dir + "/OLD.BMP");
    EXPECT_FALSE(onDisk(dir + "/old.bmp"));
}

TEST(LFileDel, MissingFileIsNoError)
{
    std::string dir = makeTempDir();
    EXPECT_TRUE(LFile::del(dir + "/never.bmp"));
    EXPECT_FALSE(onDisk(dir + "/never.bmp"));
}

TEST(LFileDel, LeavesDirectoriesAlone)
{
    std::string dir = makeTempDir();
    ASSERT_EQ(::mkdir((dir + "/sub").c_str(), 0755), 0);
    EXPECT_FALSE(LFile::del(dir + "/sub"));
    EXPECT_TRUE(onDisk(dir + "/sub"));
}

// ---------------------------------------------------------------- copy

TEST(LFileCopy, CopiesTheBytes)
{
    std::string dir = makeTempDir();
    std::string bytes;
    for (int i = 0; i < 200000; ++i)
        bytes += static_cast<char>((i * 7 + i / 256) & 0xff);
    writeFile(dir + "/h.bmp", bytes);
    EXPECT_TRUE(LFile::copy(dir + "/h.bmp", dir + "/h_001.bmp"));
    EXPECT_EQ(readFile(dir + "/h_001.bmp"), bytes);
    EXPECT_EQ(readFile(dir + "/h.bmp"), bytes);
}

TEST(LFileCopy, ReplacesTheTarget)
{
    std::string dir = makeTempDir();
    writeFile(dir + "/a.txt", "short");
    writeFile(dir + "/b.txt", "a much longer old content");
    EXPECT_TRUE(LFile::copy(dir + "/a.txt", dir + "/b.txt"));
    EXPECT_EQ(readFile(dir + "/b.txt"), "short");
}

TEST(LFileCopy, EmptyFileGivesEmptyCopy)
{
    std::string dir = makeTempDir();
    writeFile(dir + "/empty", "");
    EXPECT_TRUE(LFile::copy(dir + "/empty", dir + "/copy"));
    EXPECT_TRUE(onDisk(dir + "/copy"));
    EXPECT_EQ(readFile(dir + "/copy"), "");
}

TEST(LFileCopy, SourceNamedInOtherCaseIsFound)
{
    std::string dir = makeTempDir();
    writeFile(dir + "/h.bmp", "heights");
    EXPECT_TRUE(LFile::copy(dir + "/H.BMP", dir + "/backup.bmp"));
    EXPECT_EQ(readFile(dir + "/backup.bmp"), "heights");
}

TEST(LFileCopy, MissingSourceCreatesNothing)
{
    std::string dir = makeTempDir();
    EXPECT_FALSE(LFile::copy(dir + "/missing", dir + "/target"));
    EXPECT_FALSE(onDisk(dir + "/target"));
}

TEST(LFileCopy, CopyOntoItselfKeepsTheContent)
{
    std::string dir = makeTempDir();
    writeFile(dir + "/self.txt", "keep me");
    EXPECT_TRUE(LFile::copy(dir + "/self.txt", dir + "/self.txt"));
    EXPECT_EQ(readFile(dir + "/self.txt"), "keep me");
}

TEST(LFileCopy, TargetInMissingDirectoryFails)
{
    std::string dir = makeTempDir();
    writeFile(dir + "/a.txt", "x");
    EXPECT_FALSE(LFile::copy(dir + "/a.txt", dir + "/nodir/a.txt"));
}

// ---------------------------------------------------------------- name splitting

TEST(LFileExtractFilenameAndPath, SplitsAtLastSlashKeepingTheSeparator)
{
    std::string name = "unset", path = "unset";
    LFile::extractFilenameAndPath("data/models/tree.3ds", name, path);
    EXPECT_EQ(name, "tree.3ds");
    EXPECT_EQ(path, "data/models/");
    EXPECT_EQ(path + name, "data/models/tree.3ds");
}

TEST(LFileExtractFilenameAndPath, BackslashIsASeparatorToo)
{
    std::string name, path;
    LFile::extractFilenameAndPath("data\\models\\Tree.3DS", name, path);
    EXPECT_EQ(name, "Tree.3DS");
    EXPECT_EQ(path, "data\\models\\");
    LFile::extractFilenameAndPath("data\\models/tree.3ds", name, path);
    EXPECT_EQ(name, "tree.3ds");
    EXPECT_EQ(path, "data\\models/");
}

TEST(LFileExtractFilenameAndPath, NameWithoutDirectoryHasEmptyPath)
{
    std::string name = "unset", path = "unset";
    LFile::extractFilenameAndPath("tree.3ds", name, path);
    EXPECT_EQ(name, "tree.3ds");
    EXPECT_EQ(path, "");
}

TEST(LFileExtractFilenameAndPath, TrailingSeparatorGivesEmptyName)
{
    std::string name = "unset", path = "unset";
    LFile::extractFilenameAndPath("/abs/dir/", name, path);
    EXPECT_EQ(name, "");
    EXPECT_EQ(path, "/abs/dir/");
    LFile::extractFilenameAndPath("/file", name, path);
    EXPECT_EQ(name, "file");
    EXPECT_EQ(path, "/");
}

TEST(LFileGetFileExtension, KeepsLetterCase)
{
    EXPECT_EQ(LFile::getFileExtension("wall.Tga"), "Tga");
    EXPECT_EQ(LFile::getFileExtension("wall.TGA"), "TGA");
    EXPECT_EQ(LFile::getFileExtension("wall.tga"), "tga");
}

TEST(LFileGetFileExtension, TextAfterTheLastDot)
{
    EXPECT_EQ(LFile::getFileExtension("data/archive.tar.gz"), "gz");
    EXPECT_EQ(LFile::getFileExtension("skies/day.jpeg"), "jpeg");
    EXPECT_EQ(LFile::getFileExtension("name."), "");
}

TEST(LFileGetFileExtension, NoDotGivesEmptyText)
{
    EXPECT_EQ(LFile::getFileExtension("README"), "");
    EXPECT_EQ(LFile::getFileExtension(""), "");
}

TEST(LFileGetFileExtension, DotInDirectoryIsNotAnExtension)
{
    EXPECT_EQ(LFile::getFileExtension("maps.v2/height"), "");
    EXPECT_EQ(LFile::getFileExtension("maps.v2\\height"), "");
    EXPECT_EQ(LFile::getFileExtension("maps.v2/height.bmp"), "bmp");
}

TEST(LFileGetFileExtension, NameIsNotResolved)
{
    // The name on disk is lower case; the extension is read from the text as written.
    std::string dir = makeTempDir();
    writeFile(dir + "/wall.tga", "x");
    EXPECT_EQ(LFile::getFileExtension(dir + "/WALL.TGA"), "TGA");
}

TEST(LFileGetFilenameWithoutExtension, RemovesLastDotAndExtension)
{
    EXPECT_EQ(LFile::getFilenameWithoutExtension("h.bmp"), "h");
    EXPECT_EQ(LFile::getFilenameWithoutExtension("archive.tar.gz"), "archive.tar");
    EXPECT_EQ(LFile::getFilenameWithoutExtension("Wall.TGA"), "Wall");
    EXPECT_EQ(LFile::getFilenameWithoutExtension("name."), "name");
}

TEST(LFileGetFilenameWithoutExtension, KeepsDirectoryPart)
{
    EXPECT_EQ(LFile::getFilenameWithoutExtension("maps/h.bmp"), "maps/h");
    EXPECT_EQ(LFile::getFilenameWithoutExtension("maps\\H.BMP"), "maps\\H");
}

TEST(LFileGetFilenameWithoutExtension, NameWithoutDotIsKeptWhole)
{
    EXPECT_EQ(LFile::getFilenameWithoutExtension("README"), "README");
    EXPECT_EQ(LFile::getFilenameWithoutExtension("maps.v2/height"), "maps.v2/height");
    EXPECT_EQ(LFile::getFilenameWithoutExtension(""), "");
}
