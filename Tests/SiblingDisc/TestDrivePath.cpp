#include "DrivePath.h"
#include "TempFolder.h"
#include "UTF8.h"
#include <filesystem>
#include <gtest/gtest.h>

TEST(DrivePath, ALetterNeedsItsColonAndMayHaveASlash)
{
    struct CASE
    {
        const wchar_t* pPath;
        int nLetter;
    };
    const CASE aryCases[] = {
        {L"E:", 4},
        {L"e:", 4},
        {L"E:\\", 4},
        {L"E:/", 4},
        {L"A:", 0},
        {L"z:", 25},
        {L"file:///E:/", 4},
        {L"file:///e%3A", 4},
        {L"file://E:", 4},
        {L"file://localhost/E:", 4},
        {L"E", NO_DRIVE_LETTER}, // a file of that name
        {L"", NO_DRIVE_LETTER},
        {L":", NO_DRIVE_LETTER},
        {L"E:x", NO_DRIVE_LETTER},
        {L"E:\\\\", NO_DRIVE_LETTER},
        {L"E:/disc.cue", NO_DRIVE_LETTER},
        {L"/E:", NO_DRIVE_LETTER},
        {L"5:", NO_DRIVE_LETTER},
        {L"[:", NO_DRIVE_LETTER},
        {L"{:", NO_DRIVE_LETTER},
        {L"@:", NO_DRIVE_LETTER},
        {L"`:", NO_DRIVE_LETTER},
        {L"\u00C4:", NO_DRIVE_LETTER},
        {L"EE:", NO_DRIVE_LETTER},
        {L"/dev/sr0", NO_DRIVE_LETTER},
    };
    for (const CASE& row : aryCases)
        EXPECT_EQ(row.nLetter, GetDriveLetter(row.pPath)) << NarrowUTF8(row.pPath);
    EXPECT_EQ(NO_DRIVE_LETTER, GetDriveLetter(nullptr));
}

TEST(DrivePath, ALetterIsShownWithItsColon)
{
    EXPECT_EQ("A:", GetLetterText(0));
    EXPECT_EQ("Z:", GetLetterText(25));
    EXPECT_EQ("", GetLetterText(26));
    EXPECT_EQ("", GetLetterText(NO_DRIVE_LETTER));
}

TEST(DrivePath, AFileURLNamesAnAbsolutePath)
{
    EXPECT_EQ("/a,b c.cue", GetImagePath(L"file:///a%2cb%20c.cue"));
    EXPECT_EQ("/a.cue", GetImagePath(L"file://localhost/a.cue"));
    EXPECT_EQ("/a%zz%2", GetImagePath(L"file:///a%zz%2"));
    EXPECT_EQ("/x/b.cue", GetImagePath(L"/x/./y/../b.cue"));
    EXPECT_EQ(std::filesystem::current_path().string() + "/b.cue", GetImagePath(L"b.cue"));
    EXPECT_EQ("", GetImagePath(L""));
    EXPECT_EQ("", GetImagePath(L"file://"));
    EXPECT_EQ("", GetImagePath(nullptr));
}

TEST(DrivePath, OnlyLinksInTheDeviceFolderAreFollowed)
{
    const TempFolder folder;
    const std::string strFile = folder.Write("a.cue", "");
    std::filesystem::create_symlink(strFile, folder.GetPath("link.cue"));
    EXPECT_EQ(folder.GetPath("link.cue"), GetDeviceNode(folder.GetPath("link.cue")));
    EXPECT_EQ("/dev/no-such-node", GetDeviceNode("/dev/no-such-node"));
    EXPECT_EQ("/dev/null", GetDeviceNode("/dev/null"));
    // Where the system has this link, as nearly every Linux system does, it leads out of the folder.
    if (std::filesystem::is_symlink("/dev/stdin"))
    {
        EXPECT_NE("/dev/stdin", GetDeviceNode("/dev/stdin"));
    }
}
