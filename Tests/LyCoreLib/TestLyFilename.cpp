#include "IFileSystemManager.h"
#include "LyFilename.h"
#include "LyFileSystem.h"
#include "ProcessInfo.h"
#include "StandInTools.h"
#include <cstdio>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace
{
std::wstring Text(const LyString& str)
{
    return {static_cast<const wchar_t*>(str), static_cast<size_t>(str.GetLength())};
}

std::wstring Property(const LyFilename& filename, const wchar_t* pName)
{
    return Text(filename.m_Properties.GetProperty(pName, L"(none)"));
}

std::wstring ForSystem(const wchar_t* pName) { return Text(LyFilename(pName).GetFilenameForUseWithOperatingSystem()); }

LyString Wrap(const wchar_t* pVersion, const wchar_t* pItems)
{
    return LyString(L"<XMLFN version=\"") + pVersion + L"\">\r\n" + pItems + L"</XMLFN>";
}

// A file of five bytes in the folder for temporary files, as long as the object lives.
class FiveByteFile
{
public:
    FiveByteFile()
    {
        char szName[] = "/tmp/TestLyFilename.XXXXXX";
        int nDescriptor = mkstemp(szName);
        EXPECT_EQ(write(nDescriptor, "12345", 5), 5);
        close(nDescriptor);
        m_strPath.FromANSI(szName);
        m_strName = szName;
    }
    ~FiveByteFile() { std::remove(m_strName.c_str()); }
    LyString m_strPath;

private:
    std::string m_strName;
};

class InstallPath
{
public:
    explicit InstallPath(const wchar_t* pPath) : m_strOld(LyFileSystem::GetDirectoryInstall())
    {
        GetProcessInfo(true)->SetInstallPath(pPath, false);
    }
    ~InstallPath() { GetProcessInfo(true)->SetInstallPath(m_strOld, false); }

private:
    LyString m_strOld;
};
} // namespace

TEST(LyFilename, KeepsItsTextAndSyntax)
{
    LyFilename filename(L"/a/b.txt");
    EXPECT_EQ(Text(filename.GetFilename()), L"/a/b.txt");
    EXPECT_EQ(filename.m_nSyntax, 1);
    EXPECT_EQ(filename.m_Properties.m_pProperties, nullptr);
    EXPECT_TRUE(LyFilename().GetFilename().IsEmpty());
    EXPECT_TRUE(LyFilename(static_cast<const wchar_t*>(nullptr)).GetFilename().IsEmpty());
}

TEST(LyFilename, CopiesNamePropertiesAndSyntax)
{
    LyFilename filename(L"/a/b.flac;3");
    filename.m_nSyntax = FILENAME_SYNTAX_BACKSLASH;
    LyFilename copy(filename);
    LyFilename assigned(L"/c.flac;9");
    assigned = filename;
    LyFilename third;
    third.CopyFilename(filename);
    filename.Empty();
    for (const LyFilename* p : {&copy, &assigned, &third})
    {
        EXPECT_EQ(Text(p->GetFilename()), L"/a/b.flac");
        EXPECT_EQ(Property(*p, L"PostExtensionData"), L"3");
        EXPECT_EQ(p->m_nSyntax, 3);
    }
    const LyFilename& self = copy;
    copy = self;
    EXPECT_EQ(Property(copy, L"PostExtensionData"), L"3");
}

TEST(LyFilename, EmptyForgetsNameAndProperties)
{
    LyFilename filename(L"/a/b.flac;3");
    filename.Empty();
    EXPECT_TRUE(filename.GetFilename().IsEmpty());
    EXPECT_EQ(filename.m_Properties.m_pProperties, nullptr);
}

TEST(LyFilename, AssignedTextReplacesNameAndProperties)
{
    LyFilename filename(L"/a/b.flac;3");
    filename = L"/c.mp3";
    EXPECT_EQ(Text(filename.GetFilename()), L"/c.mp3");
    EXPECT_EQ(filename.m_Properties.m_pProperties, nullptr);
    filename = LyString(L"/d.cue;4");
    EXPECT_EQ(Property(filename, L"PostExtensionData"), L"4");
}

TEST(LyFilenameUpdate, KeepsOrClearsProperties)
{
    LyFilename filename(L"/a/b.flac;3");
    filename.m_strName = L"/c.mp3";
    filename.UpdateAfterModifyInternalFilename(false);
    EXPECT_EQ(Property(filename, L"PostExtensionData"), L"3");
    filename.UpdateAfterModifyInternalFilename(true);
    EXPECT_EQ(filename.m_Properties.m_pProperties, nullptr);
    EXPECT_EQ(Text(filename.GetFilename()), L"/c.mp3");
}

// ---- Post-extension data

struct SUFFIX_CASE
{
    const wchar_t* pText;
    const wchar_t* pName;
    const wchar_t* pData;
};

TEST(LyFilenamePostExtensionData, StandsBehindAShortExtension)
{
    const SUFFIX_CASE aryCases[] = {
        {L"/a/b.flac;3", L"/a/b.flac", L"3"},
        {L"/a/b.flac;x", L"/a/b.flac", L"x"},
        {L"/a/b.flac;", L"/a/b.flac", L""},
        {L"/a/b.c;two words", L"/a/b.c", L"two words"},
        {L"/a/b.cd;1/2", L"/a/b.cd", L"1/2"},
        {L"/a/b;c.flac;3", L"/a/b;c.flac", L"3"},
        {L"b.12345;3", L"b.12345", L"3"},
        {L"/a/b.123456;3", L"/a/b.123456;3", L"(none)"},
        {L"/a/b.toolong;3", L"/a/b.toolong;3", L"(none)"},
        {L"/a/b.;3", L"/a/b.;3", L"(none)"},
        {L"/a/b;3", L"/a/b;3", L"(none)"},
        {L"/a;3/b.flac", L"/a;3/b.flac", L"(none)"},
        {L"/a.b/c;3", L"/a.b/c;3", L"(none)"},
        {L"\\a.b\\c;3", L"\\a.b\\c;3", L"(none)"},
        {L"/a/b.flac;3/", L"/a/b.flac;3/", L"(none)"},
        {L"http://a/b.flac;3", L"http://a/b.flac;3", L"(none)"},
        {L";", L";", L"(none)"},
        {L"", L"", L"(none)"},
    };
    for (const SUFFIX_CASE& row : aryCases)
    {
        const LyFilename filename(row.pText);
        EXPECT_EQ(Text(filename.GetFilename()), row.pName);
        EXPECT_EQ(Property(filename, L"PostExtensionData"), row.pData);
    }
}

TEST(LyFilenamePostExtensionData, LeavesNameAndExtension)
{
    const LyFilename filename(L"/a/b.flac;3");
    EXPECT_EQ(Text(filename.GetName()), L"b");
    EXPECT_EQ(Text(filename.GetExtension(false)), L"flac");
}

// ---- The wrapper

TEST(LyFilenameWrapper, GivesNameAndProperties)
{
    const LyFilename filename(Wrap(L"1.0", L"<Item Name=\"Filename\">/a/b &amp; c.mp3</Item>\r\n"
                                           L"<Item Name=\"Title\">&lt;One&gt;</Item>\r\n"
                                           L"<Item Name=\"Nothing\"/>\r\n"));
    EXPECT_EQ(Text(filename.GetFilename()), L"/a/b & c.mp3");
    EXPECT_EQ(Property(filename, L"title"), L"<One>");
    EXPECT_EQ(Property(filename, L"Nothing"), L"");
    EXPECT_EQ(Property(filename, L"Filename"), L"(none)");
}

TEST(LyFilenameWrapper, IsWhatPropertiesWrite)
{
    LyPropertyMap map;
    map.SetProperty(L"Filename", L"/a/b.cue;7", false);
    map.SetProperty(L"Artist", L"\"X\" & Y", false);
    const LyFilename filename(map.SavePropertiesXML(L"XMLFN", false, 1.0));
    EXPECT_EQ(Text(filename.GetFilename()), L"/a/b.cue");
    EXPECT_EQ(Property(filename, L"Artist"), L"\"X\" & Y");
    EXPECT_EQ(Property(filename, L"PostExtensionData"), L"7") << "the suffix rides on the name inside, too";
}

TEST(LyFilenameWrapper, MindsNoCase)
{
    EXPECT_EQ(Text(LyFilename(L"<xmlfn VERSION=\"1.0\"><ITEM NAME='FILENAME'>/a</ITEM></xmlfn>").GetFilename()), L"/a");
}

TEST(LyFilenameWrapper, OfAnotherVersionIsEmpty)
{
    for (const wchar_t* pVersion : {L"2.0", L"1", L"1.00", L"", L" 1.0"})
    {
        const LyFilename filename(Wrap(pVersion, L"<Item Name=\"Filename\">/a</Item><Item Name=\"X\">y</Item>"));
        EXPECT_TRUE(filename.GetFilename().IsEmpty()) << pVersion;
        EXPECT_EQ(Property(filename, L"X"), L"(none)");
    }
}

TEST(LyFilenameWrapper, DamagedOneGivesWhatCanBeReached)
{
    EXPECT_EQ(Text(LyFilename(Wrap(L"1.0", L"<b><Item Name='Filename'>/a</Item>")).GetFilename()), L"/a");
    EXPECT_TRUE(LyFilename(L"<XMLFN version=").GetFilename().IsEmpty());
    EXPECT_TRUE(LyFilename(L"<XMLFN version=\"1.0\">").GetFilename().IsEmpty());
}

TEST(LyFilenameWrapper, InsideAWrapperIsANameLikeAnyOther)
{
    const LyFilename filename(Wrap(L"1.0", L"<Item Name='Filename'>&lt;XMLFN version=\"1.0\"></Item>"));
    EXPECT_EQ(Text(filename.GetFilename()), L"<XMLFN version=\"1.0\">");
}

TEST(LyFilenameWrapper, OtherTextIsNone)
{
    EXPECT_EQ(Text(LyFilename(L"<XMLFN>").GetFilename()), L"<XMLFN>");
    EXPECT_EQ(Text(LyFilename(L" <XMLFN version=\"1.0\"/>").GetFilename()), L" <XMLFN version=\"1.0\"/>");
}

// ---- Written forms

struct SYNTAX_CASE
{
    const wchar_t* pText;
    int nFrom;
    int nTo;
    const wchar_t* pResult;
};

TEST(LyFilenameConvertFilenameSyntax, FollowsItsTable)
{
    const SYNTAX_CASE aryCases[] = {
        {L"a/b\\c", 1, 3, L"a\\b\\c"},
        {L"a/b\\c", 1, 4, L"a/b/c"},
        {L"a/b\\c", 1, 2, L"a/b/c"},
        {L"a/b\\c", 3, 4, L"a/b/c"},
        {L"a/b\\c", 4, 3, L"a\\b\\c"},
        {L"a/b\\c", 2, 3, L"a\\b\\c"},
        {L"a/b\\c", 2, 4, L"a/b\\c"},
        {L"a/b\\c", 4, 4, L"a/b\\c"},
        {L"a/b\\c", 3, 3, L"a/b\\c"},
        {L"b\\c", 0, 4, L"b/c"},       // no "/": the backslash form
        {L"b\\c", 0, 3, L"b\\c"},      //
        {L"a/b\\c", 0, 3, L"a\\b\\c"}, // the slash form
        {L"a/b\\c", 0, 4, L"a/b\\c"},  //
        {L"file:///a%20b/c", 5, 4, L"/a b/c"},
        {L"file:///a%20b/c", 5, 2, L"/a b/c"},
        {L"/a%20b", 5, 4, L"/a%20b"}, // no prefix: nothing is decoded
        {L"file:///C:/a%20b", 5, 3, L"C:\\a b"},
        {L"file:///a%2Fb/c", 5, 3, L"a/b\\c"},
        {L"C:/a%20b", 5, 3, L"C:/a%20b"},
        {L"a/b", 5, 5, L"a/b"},
        {L"file:///a", 5, 1, L"file:///a"},
        {L"a/b\\c", 6, 4, L"a/b\\c"},
        {L"a/b\\c", -1, 4, L"a/b\\c"},
        {L"a/b\\c", 1, 5, L"a/b\\c"},
        {L"a/b\\c", 1, 0, L"a/b\\c"},
        {L"", 0, 4, L""},
    };
    for (const SYNTAX_CASE& row : aryCases)
    {
        LyString str(row.pText);
        LyFilename::ConvertFilenameSyntax(str, static_cast<EFilenameSyntax>(row.nFrom),
                                          static_cast<EFilenameSyntax>(row.nTo));
        EXPECT_EQ(Text(str), row.pResult) << row.nFrom << " to " << row.nTo;
    }
}

TEST(LyFilenameRemoveLocalURLPrefix, RemovesSchemeAndLocalHost)
{
    struct
    {
        const wchar_t* pText;
        bool bWasThere;
        const wchar_t* pResult;
    } const aryCases[] = {
        {L"file:///a/b", true, L"/a/b"},
        {L"FILE://LocalHost/a/b", true, L"/a/b"},
        {L"file://localhost", true, L"localhost"},
        {L"file://host/a", true, L"host/a"},
        {L"file:/a", false, L"file:/a"},
        {L"localhost/a", false, L"localhost/a"},
        {L"http://localhost/a", false, L"http://localhost/a"},
        {L"file://", true, L""},
        {L"", false, L""},
    };
    for (const auto& row : aryCases)
    {
        LyString str(row.pText);
        EXPECT_EQ(LyFilename::RemoveLocalURLPrefix(str), row.bWasThere);
        EXPECT_EQ(Text(str), row.pResult);
    }
}

TEST(LyFilenameForSystem, IsAPath)
{
    EXPECT_EQ(ForSystem(L"file://localhost/a/b.txt"), L"/a/b.txt");
    EXPECT_EQ(ForSystem(L"file:///a/b%20c.txt"), L"/a/b c.txt");
    EXPECT_EQ(ForSystem(L"/a/b%20c.txt"), L"/a/b%20c.txt");
    EXPECT_EQ(ForSystem(L"http://a/b%20c.txt"), L"http://a/b%20c.txt");
    EXPECT_EQ(ForSystem(L"/a/b\\c.txt"), L"/a/b\\c.txt");
    EXPECT_EQ(ForSystem(L""), L"");
}

// ---- The install drive

TEST(LyFilenameInstallDrive, PrefixBecomesTheDriveOfTheInstallPath)
{
    InstallPath install(L"/dev/disk5/Player");
    EXPECT_EQ(ForSystem(L"(Install Drive):/Music/a.mp3"), L"/dev/disk5/Music/a.mp3");
    LyString str(L"(INSTALL drive):/a(Install Drive):b");
    EXPECT_TRUE(LyFilename::ConvertFilenameFromInstallPathRelative(str));
    EXPECT_EQ(Text(str), L"/dev/disk5/a/dev/disk5b") << "every occurrence";
    EXPECT_FALSE(LyFilename::ConvertFilenameFromInstallPathRelative(str));
    str = L"/a(Install Drive):b";
    EXPECT_FALSE(LyFilename::ConvertFilenameFromInstallPathRelative(str)) << "only a name that begins with it";
    EXPECT_EQ(Text(str), L"/a(Install Drive):b");
}

TEST(LyFilenameInstallDrive, IsTheRootForAnOrdinaryInstallPath)
{
    InstallPath install(L"/usr/lib/player");
    EXPECT_EQ(ForSystem(L"(Install Drive):Music/a.mp3"), L"/Music/a.mp3");
}

TEST(LyFilenameInstallDrive, InstallPathRelativeToItselfSaysNothing)
{
    for (const wchar_t* pPath :
         {L"(Install Drive):/x", L"file://(Install Drive):/x", L"file://file://(Install Drive):x",
          L"<XMLFN version=\"1.0\"><Item Name='Filename'>(Install Drive):x</Item></XMLFN>"})
    {
        InstallPath install(pPath);
        const LyFilename filename(L"(Install Drive):/a.mp3");
        (void)filename.GetFilenameForUseWithOperatingSystem();
        EXPECT_EQ(Text(filename.GetExtension(false)), L"mp3");
    }
}

// ---- Paths as text

TEST(LyFilenameFixDirectoryPath, LeavesOneSeparatorAtTheEnd)
{
    struct
    {
        const wchar_t* pText;
        wchar_t cSlash;
        const wchar_t* pResult;
    } const aryCases[] = {
        {L"", L'/', L""},        {L"/a", L'/', L"/a/"},     {L"/a/", L'/', L"/a/"},    {L"/a///", L'/', L"/a/"},
        {L"/", L'/', L"/"},      {L"//", L'/', L"//"},      {L"///", L'/', L"/"},      {L"a//", L'/', L"a/"},
        {L"/a", L'\\', L"/a\\"}, {L"\\\\", L'\\', L"\\\\"}, {L"a\\\\", L'\\', L"a\\"}, {L"//", L'\\', L"//\\"},
    };
    for (const auto& row : aryCases)
    {
        LyString str(row.pText);
        LyFilename::FixDirectoryPath(str, row.cSlash);
        EXPECT_EQ(Text(str), row.pResult);
    }
}

TEST(LyFilenameAddDirectory, AppendsAFolder)
{
    LyString str(L"/a");
    LyFilename::AddDirectory(str, L"b");
    EXPECT_EQ(Text(str), L"/a/b/");
    LyFilename::AddDirectory(str, L"c");
    EXPECT_EQ(Text(str), L"/a/b/c/");
    LyFilename::AddDirectory(str, str);
    EXPECT_EQ(Text(str), L"/a/b/c//a/b/c//");
    LyString strEmpty;
    LyFilename::AddDirectory(strEmpty, L"b");
    EXPECT_EQ(Text(strEmpty), L"b/");
}

TEST(LyFilenameIncrementFilename, CountsInTheName)
{
    struct
    {
        const wchar_t* pText;
        bool bRestart;
        const wchar_t* pResult;
    } const aryCases[] = {
        {L"/a/b.txt", false, L"/a/b (1).txt"},
        {L"/a/b (1).txt", false, L"/a/b (2).txt"},
        {L"/a/b(9).txt", false, L"/a/b(10).txt"},
        {L"/a/b (2).txt", true, L"/a/b (1).txt"},
        {L"/a/b (1).txt", true, L"/a/b (2).txt"},
        {L"/a/b", false, L"/a/b (1)"},
        {L"/a.b/c", false, L"/a.b/c (1)"},
        {L"b.tar.gz", false, L"b.tar (1).gz"},
        {L"C:\\a\\b.txt", false, L"C:\\a\\b (1).txt"},
    };
    for (const auto& row : aryCases)
    {
        LyString str(row.pText);
        LyFilename::IncrementFilename(str, row.bRestart);
        EXPECT_EQ(Text(str), row.pResult);
    }
}

TEST(LyFilenameGetLongName, IsTheName) { EXPECT_EQ(Text(LyFilename::GetLongName(L"/a/B~1.TXT")), L"/a/B~1.TXT"); }

TEST(LyFilenameStatics, GiveDriveAndExtension)
{
    EXPECT_EQ(Text(LyFilename::GetFilenameDrive(L"C:\\a.txt")), L"C:");
    EXPECT_EQ(Text(LyFilename::GetFilenameDrive(L"/a.txt")), L"/");
    EXPECT_EQ(Text(LyFilename::GetFilenameExtension(L"/a/b.txt")), L"txt");
    EXPECT_EQ(Text(LyFilename::GetFilenameExtension(nullptr)), L"");
    EXPECT_STREQ(FILENAME_SLASH, L"/");
}

// ---- On the disk

TEST(LyFilenameGetFileExists, AsksTheDisk)
{
    const FiveByteFile file;
    EXPECT_TRUE(LyFilename(file.m_strPath).GetFileExists(false, false));
    EXPECT_TRUE(LyFilename(file.m_strPath).GetFileExists(true, true)) << "without the service, the disk decides";
    EXPECT_TRUE(LyFilename(L"file://" + file.m_strPath).GetFileExists(false, false));
    EXPECT_FALSE(LyFilename(file.m_strPath + L"x").GetFileExists(false, false));
    EXPECT_FALSE(LyFilename(L"/tmp").GetFileExists(false, false)) << "a folder is no file";
    EXPECT_FALSE(LyFilename(L"").GetFileExists(false, false));
}

namespace
{
class StandInFileSystem final : public IFileSystemManager
{
public:
    bool GetFileExists(const wchar_t* pName, int nFlags) override
    {
        m_aryNames.push_back(pName);
        m_aryFlags.push_back(nFlags);
        return m_bExists;
    }
    std::vector<std::wstring> m_aryNames;
    std::vector<int> m_aryFlags;
    bool m_bExists = true;
};

class ToolsWithFileSystem final : public StandInTools
{
public:
    IFileSystemManager* GetFileSystemManager(bool bCreate) override { return bCreate ? &m_FileSystem : nullptr; }
    StandInFileSystem m_FileSystem;
};
} // namespace

TEST(LyFilenameGetFileExists, AsksTheServiceIfWanted)
{
    ToolsWithFileSystem tools;
    EXPECT_TRUE(LyFilename(L"archive://a/b").GetFileExists(true, false));
    EXPECT_TRUE(LyFilename(L"/nowhere/c").GetFileExists(true, true));
    EXPECT_FALSE(LyFilename(L"/nowhere/d").GetFileExists(false, true)) << "the service is not asked";
    EXPECT_FALSE(LyFilename(L"").GetFileExists(true, false));
    tools.m_FileSystem.m_bExists = false;
    EXPECT_FALSE(LyFilename(L"/tmp").GetFileExists(true, false));
    EXPECT_EQ(tools.m_FileSystem.m_aryNames, (std::vector<std::wstring>{L"archive://a/b", L"/nowhere/c", L"/tmp"}));
    EXPECT_EQ(tools.m_FileSystem.m_aryFlags, (std::vector<int>{0, 2, 0}));
}

TEST(LyFilenameGetFileSize, AsksTheDisk)
{
    const FiveByteFile file;
    EXPECT_EQ(LyFilename(file.m_strPath).GetFileSize(false), 5);
    EXPECT_EQ(LyFilename(L"file://" + file.m_strPath).GetFileSize(false), 5);
    EXPECT_EQ(LyFilename(file.m_strPath + L"x").GetFileSize(true), -1);
    EXPECT_EQ(LyFilename(L"http://a/b").GetFileSize(false), -1);
}
