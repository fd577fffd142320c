// LFileReplaceTest.cpp -- LFile::replaceFile: a file replaced all at once or not at all.
#include <ostrum_core/LFile.h>

#include "FileFailureSupport.h"
#include "TestSupport.h"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

using ostrum_test::makeTempDir;
using ostrum_test::readFile;
using ostrum_test::writeFile;

namespace {

std::vector<std::string> entriesOf(const std::string& dir)
{
    std::vector<std::string> names;
    if (DIR* d = ::opendir(dir.c_str())) {
        while (struct dirent* e = ::readdir(d)) {
            std::string name = e->d_name;
            if (name != "." && name != "..")
                names.push_back(name);
        }
        ::closedir(d);
    }
    std::sort(names.begin(), names.end());
    return names;
}

mode_t permissionsOf(const std::string& path)
{
    struct stat st;
    if (::stat(path.c_str(), &st) != 0)
        return 0;
    return st.st_mode & 07777;
}

std::string bigText(size_t n)
{
    std::string s;
    for (size_t i = 0; i < n; ++i)
        s += static_cast<char>('a' + i % 26);
    return s;
}

}  // namespace

TEST(LFileReplaceFile, NewFileHoldsExactlyTheBytes)
{
    const std::string dir = makeTempDir();
    const std::string bytes("line one\n\0binary\xff", 17);
    ASSERT_TRUE(LFile::replaceFile(dir + "/new.txt", bytes.data(), bytes.size()));
    EXPECT_EQ(readFile(dir + "/new.txt"), bytes);
    EXPECT_EQ(entriesOf(dir), std::vector<std::string>{"new.txt"});
}

TEST(LFileReplaceFile, ExistingFileIsReplacedAndNoTemporaryIsLeft)
{
    const std::string dir = makeTempDir();
    writeFile(dir + "/map.txt", bigText(5000));
    ASSERT_TRUE(LFile::replaceFile(dir + "/map.txt", "short", 5));
    EXPECT_EQ(readFile(dir + "/map.txt"), "short");
    EXPECT_EQ(entriesOf(dir), std::vector<std::string>{"map.txt"});
}

TEST(LFileReplaceFile, EmptyContentGivesEmptyFile)
{
    const std::string dir = makeTempDir();
    writeFile(dir + "/e.txt", "old");
    ASSERT_TRUE(LFile::replaceFile(dir + "/e.txt", nullptr, 0));
    EXPECT_EQ(readFile(dir + "/e.txt"), "");
}

TEST(LFileReplaceFile, ReplacedFileKeepsItsPermissions)
{
    const std::string dir = makeTempDir();
    writeFile(dir + "/p.txt", "old");
    ASSERT_EQ(::chmod((dir + "/p.txt").c_str(), 0640), 0);
    ASSERT_TRUE(LFile::replaceFile(dir + "/p.txt", "new", 3));
    EXPECT_EQ(permissionsOf(dir + "/p.txt"), 0640u);
}

TEST(LFileReplaceFile, NewFileGetsDefaultPermissionsLessUmask)
{
    const std::string dir = makeTempDir();
    const mode_t saved = ::umask(022);
    const bool ok = LFile::replaceFile(dir + "/fresh.txt", "x", 1);
    ::umask(saved);
    ASSERT_TRUE(ok);
    EXPECT_EQ(permissionsOf(dir + "/fresh.txt"), 0644u);
}

TEST(LFileReplaceFile, MissingDirectoryFailsAndCreatesNothing)
{
    const std::string dir = makeTempDir();
    EXPECT_FALSE(LFile::replaceFile(dir + "/nowhere/f.txt", "x", 1));
    EXPECT_TRUE(entriesOf(dir).empty());
}

TEST(LFileReplaceFile, EmptyNameOrDirectoryNameFails)
{
    const std::string dir = makeTempDir();
    EXPECT_FALSE(LFile::replaceFile("", "x", 1));
    EXPECT_FALSE(LFile::replaceFile(dir + "/", "x", 1));
    EXPECT_TRUE(entriesOf(dir).empty());
}

TEST(LFileReplaceFile, FullDiskKeepsOldFileWholeAndRemovesTemporary)
{
    const std::string dir = makeTempDir();
    const std::string old = bigText(300);
    writeFile(dir + "/map.txt", old);
    const std::string bytes = bigText(8192);
    bool ok = true;
    {
        ostrum_test::FileSizeLimit limit(1024);
        ASSERT_TRUE(limit.active());
        ok = LFile::replaceFile(dir + "/map.txt", bytes.data(), bytes.size());
    }
    EXPECT_FALSE(ok);
    EXPECT_EQ(readFile(dir + "/map.txt"), old);
    EXPECT_EQ(entriesOf(dir), std::vector<std::string>{"map.txt"});
}

TEST(LFileReplaceFile, ReadOnlyDirectoryKeepsOldFileWhole)
{
    const std::string dir = makeTempDir();
    writeFile(dir + "/map.txt", "old contents");
    ASSERT_TRUE(ostrum_test::makeDirectoryReadOnly(dir));
    // The death-test child runs this test afresh (its own directory): it checks the file itself.
    EXPECT_EXIT(
        {
            if (!ostrum_test::dropRootPrivileges())
                std::exit(3);
            if (LFile::replaceFile(dir + "/map.txt", "new", 3))
                std::exit(1);
            const bool whole = readFile(dir + "/map.txt") == "old contents" &&
                               entriesOf(dir) == std::vector<std::string>{"map.txt"};
            std::exit(whole ? 0 : 2);
        },
        ::testing::ExitedWithCode(0), "");
    ASSERT_TRUE(ostrum_test::makeDirectoryWritable(dir));
}

TEST(LFileReplaceFile, OldFileUnderOtherCaseIsReplacedByNameAsWritten)
{
    const std::string dir = makeTempDir();
    writeFile(dir + "/map.txt", "old");
    writeFile(dir + "/other.txt", "keep");
    ASSERT_TRUE(LFile::replaceFile(dir + "/MAP.txt", "new", 3));
    EXPECT_EQ(entriesOf(dir), (std::vector<std::string>{"MAP.txt", "other.txt"}));
    EXPECT_EQ(readFile(dir + "/MAP.txt"), "new");
    EXPECT_EQ(readFile(dir + "/other.txt"), "keep");
}

TEST(LFileReplaceFile, DirectoryIsResolvedWithoutRegardToCase)
{
    const std::string dir = makeTempDir();
    ASSERT_EQ(::mkdir((dir + "/Maps").c_str(), 0755), 0);
    ASSERT_TRUE(LFile::replaceFile(dir + "/maps/m.txt", "abc", 3));
    EXPECT_EQ(readFile(dir + "/Maps/m.txt"), "abc");
    EXPECT_EQ(entriesOf(dir), std::vector<std::string>{"Maps"});
}
