#include "ImageFiles.h"
#include "PathResolve.h"
#include <gtest/gtest.h>

namespace
{
struct RESOLVE_CASE
{
    const char* m_pName;
    std::vector<std::string> m_aryFiles; // what is there, beside album.cue
    std::string m_strNamed;              // in the sheet
    SHEET_FILE_KIND m_nKind;
    std::string m_strFound; // from the sheet's folder on; empty: nothing
};

const RESOLVE_CASE s_aryCases[] = {
    {"AsItStands", {"a b.bin"}, "a b.bin", SHEET_FILE_RAW, "a b.bin"},
    {"InAFolder", {"CD 1/a.bin"}, "CD 1/a.bin", SHEET_FILE_RAW, "CD 1/a.bin"},
    {"Backslashes", {"CD 1/a.bin"}, "CD 1\\a.bin", SHEET_FILE_RAW, "CD 1/a.bin"},
    {"DotSteps", {"a.bin"}, ".\\a.bin", SHEET_FILE_RAW, "a.bin"},
    {"DriveLetter", {"a.wav"}, "C:\\Music\\Album\\a.wav", SHEET_FILE_AUDIO, "a.wav"},
    {"DriveLetterAlone", {"a.wav"}, "c:a.wav", SHEET_FILE_AUDIO, "a.wav"},
    {"LongestTailFirst", {"Album/a.wav", "a.wav"}, "C:\\Music\\Album\\a.wav", SHEET_FILE_AUDIO, "Album/a.wav"},
    {"NetworkShare", {"a.wav"}, "\\\\server\\share\\a.wav", SHEET_FILE_AUDIO, "a.wav"},
    {"AbsolutePathOfAnotherMachine", {"a.wav"}, "/Users/someone/Music/a.wav", SHEET_FILE_AUDIO, "a.wav"},
    {"OtherCase", {"ALBUM.BIN"}, "Album.bin", SHEET_FILE_RAW, "ALBUM.BIN"},
    {"OtherCaseInFolder", {"cd 1/A.Bin"}, "CD 1\\a.bin", SHEET_FILE_RAW, "cd 1/A.Bin"},
    {"OtherCaseBeyondASCII", {"\xC3\x84ra.bin"}, "\xC3\xA4ra.bin", SHEET_FILE_RAW, "\xC3\x84ra.bin"},
    {"Latin1OnDisk", {"\xE4ra.bin"}, "\xC3\xA4ra.bin", SHEET_FILE_RAW, "\xE4ra.bin"},
    {"ExactBeforeOtherCase", {"A.bin", "a.bin"}, "a.bin", SHEET_FILE_RAW, "a.bin"},
    {"ConvertedToFLAC", {"a.flac"}, "a.wav", SHEET_FILE_AUDIO, "a.flac"},
    {"ConvertedInOtherCase", {"A.FLAC"}, "a.wav", SHEET_FILE_AUDIO, "A.FLAC"},
    {"LosslessBeforeLossy", {"a.mp3", "a.flac", "a.ogg"}, "a.wav", SHEET_FILE_AUDIO, "a.flac"},
    {"RawImageConverted", {"a.flac"}, "a.bin", SHEET_FILE_RAW, "a.flac"},
    {"RawImageRenamed", {"a.img", "a.flac"}, "a.bin", SHEET_FILE_RAW, "a.img"},
    {"NoExtensionNamed", {"a.flac"}, "a", SHEET_FILE_AUDIO, "a.flac"},
    {"DotInTheName", {"01. Air.flac", "01.flac"}, "01. Air", SHEET_FILE_AUDIO, "01. Air.flac"},
    {"AudioNeverBecomesRaw", {"a.bin"}, "a.wav", SHEET_FILE_AUDIO, ""},
    {"CompanionIsNotConverted", {"a.bin", "a.flac"}, "a.cdt", SHEET_FILE_COMPANION, ""},
    {"CompanionInOtherCase", {"A.CDT"}, "a.cdt", SHEET_FILE_COMPANION, "A.CDT"},
    {"OtherNameIsNotTaken", {"b.flac"}, "a.wav", SHEET_FILE_AUDIO, ""},
    {"ForeignExtensionIsNotTaken", {"a.txt", "a.cue"}, "a.wav", SHEET_FILE_AUDIO, ""},
    {"Missing", {}, "a.bin", SHEET_FILE_RAW, ""},
    {"FolderIsNoFile", {"a.bin/x"}, "a.bin", SHEET_FILE_RAW, ""},
    {"EmptyName", {}, "", SHEET_FILE_RAW, ""},
    {"NothingButSeparators", {}, "\\\\", SHEET_FILE_RAW, ""},
    {"UpAFolder", {"x/a.bin", "y/z"}, "y\\..\\x\\a.bin", SHEET_FILE_RAW, "y/../x/a.bin"},
};

TEST(ResolveSheetPath, FindsWhatIsMeant)
{
    for (const RESOLVE_CASE& row : s_aryCases)
    {
        TempFolder folder;
        for (const std::string& strFile : row.m_aryFiles)
            folder.Write(strFile, "x");
        std::string strWanted = row.m_strFound.empty() ? "" : folder.GetPath(row.m_strFound);
        EXPECT_EQ(strWanted, ResolveSheetPath(folder.GetPath("album.cue"), row.m_strNamed, row.m_nKind)) << row.m_pName;
    }
}

TEST(ResolveSheetPath, TheOnlyFileMayHaveTheSheetsName)
{
    TempFolder folder;
    folder.Write("Album.FLAC", "x");
    EXPECT_EQ("", ResolveSheetPath(folder.GetPath("album.cue"), "CDImage.wav", SHEET_FILE_AUDIO, false));
    EXPECT_EQ(folder.GetPath("Album.FLAC"),
              ResolveSheetPath(folder.GetPath("album.cue"), "CDImage.wav", SHEET_FILE_AUDIO, true));
    folder.Write("Album.wav", "x");
    EXPECT_EQ(folder.GetPath("Album.wav"),
              ResolveSheetPath(folder.GetPath("album.cue"), "CDImage.wav", SHEET_FILE_AUDIO, true));
}

TEST(ResolveSheetPath, TakesAnAbsolutePath)
{
    TempFolder folder;
    std::string strFile = folder.Write("sub/a.bin", "x");
    EXPECT_EQ(strFile, ResolveSheetPath("/nowhere/album.cue", strFile, SHEET_FILE_RAW));
}

TEST(ResolveSheetPath, RefusesImpossibleNames)
{
    using namespace std::string_literals;
    EXPECT_EQ("", ResolveSheetPath("/tmp/album.cue", std::string(5000, 'a'), SHEET_FILE_RAW, true));
    EXPECT_EQ("", ResolveSheetPath("/tmp/album.cue", "a\0b"s, SHEET_FILE_RAW, true));
    EXPECT_EQ("", ResolveSheetPath("/tmp/album.cue", std::string(4000, '/'), SHEET_FILE_RAW, true));
}

TEST(GetSheetFolder, IsWhatStandsAheadOfTheLastSlash)
{
    EXPECT_EQ("/a/b", GetSheetFolder("/a/b/c.cue"));
    EXPECT_EQ("/", GetSheetFolder("/c.cue"));
    EXPECT_EQ(".", GetSheetFolder("c.cue"));
}

TEST(GetNameExtension, StartsAtTheLastDot)
{
    EXPECT_EQ(".gz", GetNameExtension("a.tar.gz"));
    EXPECT_EQ("a.tar", GetNameStem("a.tar.gz"));
    EXPECT_EQ("", GetNameExtension(".hidden"));
    EXPECT_EQ("", GetNameExtension("name"));
    EXPECT_EQ("name", GetNameStem("name"));
}
} // namespace
