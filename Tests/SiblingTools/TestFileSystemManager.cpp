#include "FileSystemManager.h"

#include "TempFolder.h"
#include "UTF8.h"
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace
{
bool GetExists(const std::string& strName, int nFlags = 0)
{
    FileSystemManager manager;
    return manager.GetFileExists(WidenUTF8(strName).c_str(), nFlags);
}
} // namespace

TEST(FileSystemManager, KnowsTheFilesOnTheDisk)
{
    const TempFolder folder;
    const std::string strFile = folder.Write("a b.txt", "");
    EXPECT_TRUE(GetExists(strFile));
    EXPECT_TRUE(GetExists(strFile, 2));
    EXPECT_FALSE(GetExists(folder.GetPath("b.txt")));
    EXPECT_FALSE(GetExists(strFile + "/c"));
}

TEST(FileSystemManager, AFolderIsNoFile)
{
    const TempFolder folder;
    EXPECT_FALSE(GetExists(folder.GetPath()));
    EXPECT_FALSE(GetExists(folder.GetPath(""), 2));
    EXPECT_FALSE(GetExists("/"));
}

TEST(FileSystemManager, ADeviceIsAFile) { EXPECT_TRUE(GetExists("/dev/null")); }

TEST(FileSystemManager, ALinkCountsAsWhatItLeadsTo)
{
    const TempFolder folder;
    std::filesystem::create_symlink(folder.Write("file", ""), folder.GetPath("good"));
    std::filesystem::create_symlink(folder.GetPath("none"), folder.GetPath("bad"));
    EXPECT_TRUE(GetExists(folder.GetPath("good")));
    EXPECT_FALSE(GetExists(folder.GetPath("bad")));
}

TEST(FileSystemManager, KnowsFileURLsAndNoOthers)
{
    const TempFolder folder;
    const std::string strFile = folder.Write("file.txt", "");
    EXPECT_TRUE(GetExists("file://" + strFile));
    EXPECT_TRUE(GetExists("file://localhost" + strFile));
    EXPECT_FALSE(GetExists("file://" + strFile + "x"));
    EXPECT_FALSE(GetExists("http://localhost" + strFile));
    EXPECT_FALSE(GetExists("cda://D,1"));
}

TEST(FileSystemManager, NamesMayHoldAnyCharacters)
{
    const TempFolder folder;
    for (const char* pName : {"Gr\xC3\xB6\xC3\x9F"
                              "e",
                              "\xF0\x9F\x8E\xB5", "it's \"so\"", "a\nb", "-rf", "\xFF"})
        EXPECT_TRUE(GetExists(folder.Write(pName, ""))) << pName;
}

TEST(FileSystemManager, NoNameIsNoFile)
{
    FileSystemManager manager;
    EXPECT_FALSE(manager.GetFileExists(nullptr, 0));
    EXPECT_FALSE(manager.GetFileExists(L"", 2));
}
