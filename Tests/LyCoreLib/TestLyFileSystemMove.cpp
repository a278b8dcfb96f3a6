// MoveFile: the command that it runs, and every kind of name that a disk can hold.

#include "LyFileSystem.h"
#include "TempFolder.h"
#include <cstdlib>
#include <dlfcn.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>

namespace
{
namespace fs = std::filesystem;

std::string g_strCommand;

std::string Read(const std::string& strPath)
{
    std::ifstream file(strPath, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

LyString Wide(const std::string& str)
{
    return LyString().FromUTF8(reinterpret_cast<const unsigned char*>(str.c_str()));
}

class LyFileSystemMove : public testing::Test
{
protected:
    LyFileSystemMove() : m_FormerFolder(fs::current_path()) { fs::current_path(m_Folder.GetPath()); }
    ~LyFileSystemMove() override { fs::current_path(m_FormerFolder); }

    LyString Path(const LyString& strName) const { return Wide(m_Folder.GetPath()) + L"/" + strName; }

    TempFolder m_Folder;
    fs::path m_FormerFolder;
};
} // namespace

// Takes the place of the C library's, so that the tests see the commands.
extern "C" int system(const char* pCommand)
{
    g_strCommand = pCommand;
    static const auto s_pSystem = reinterpret_cast<int (*)(const char*)>(dlsym(RTLD_NEXT, "system"));
    return s_pSystem(pCommand);
}

struct COMMAND_CASE
{
    const char* pTest;
    const wchar_t* pFrom;
    const wchar_t* pTo;
    const char* pCommand;
};

const COMMAND_CASE s_aryCommandCases[] = {
    {"Plain", L"/no/a", L"/no/b", "mv '/no/a' '/no/b'"},
    {"Quotes", L"/no/it's", L"/no/''", "mv '/no/it'\\''s' '/no/'\\'''\\'''"},
    {"Shell", L"/no/$(x) `y` \\z", L"/no/*?\"", "mv '/no/$(x) `y` \\z' '/no/*?\"'"},
    {"RelativeDash", L"-no", L"--no", "mv './-no' './--no'"},
    {"DashInside", L"no-a", L"/no/-b", "mv 'no-a' '/no/-b'"},
    {"Empty", L"", L"", "mv '' ''"},
    {"Null", nullptr, nullptr, "mv '' ''"},
    {"Wide", L"/no/\u00E4\u20AC", L"/no/b", "mv '/no/\xC3\xA4\xE2\x82\xAC' '/no/b'"},
};

TEST_F(LyFileSystemMove, CommandIsQuoted)
{
    for (const COMMAND_CASE& row : s_aryCommandCases)
    {
        EXPECT_FALSE(MoveFile(row.pFrom, row.pTo)) << row.pTest;
        EXPECT_EQ(g_strCommand, row.pCommand) << row.pTest;
    }
}

struct NAME_CASE
{
    const char* pTest;
    std::wstring strName;
    std::string strOnDisk;
};

const NAME_CASE s_aryNameCases[] = {
    {"Quote", L"it's", "it's"},
    {"OnlyQuotes", L"'''", "'''"},
    {"QuoteAtTheEnds", L"'a'", "'a'"},
    {"DoubleQuotes", L"\"a\" b", "\"a\" b"},
    {"LineFeed", L"a\nb", "a\nb"},
    {"LineFeedAtTheEnd", L"a\n", "a\n"},
    {"OnlyALineFeed", L"\n", "\n"},
    {"CarriageReturnAndTab", L"a\r\tb", "a\r\tb"},
    {"LeadingDash", L"-f", "-f"},
    {"TwoDashes", L"--", "--"},
    {"LongOption", L"--target-directory=x", "--target-directory=x"},
    {"OnlyADash", L"-", "-"},
    {"DashAndQuote", L"-'", "-'"},
    {"Blanks", L"  a  b  ", "  a  b  "},
    {"OnlyABlank", L" ", " "},
    {"Dollar", L"$HOME $(touch x) ${y}", "$HOME $(touch x) ${y}"},
    {"Backticks", L"`touch x`", "`touch x`"},
    {"Backslash", L"a\\nb\\", "a\\nb\\"},
    {"OnlyABackslash", L"\\", "\\"},
    {"Patterns", L"*?[a-z]{1,2}", "*?[a-z]{1,2}"},
    {"OnlyAStar", L"*", "*"},
    {"Operators", L"a;b&c|d<e>f(g)!h#i", "a;b&c|d<e>f(g)!h#i"},
    {"Tilde", L"~", "~"},
    {"Percent", L"%s %d%%", "%s %d%%"},
    {"SuffixOfData", L"a.txt;1", "a.txt;1"},
    {"LooksLikeAURL", L"http:", "http:"},
    {"LeadingPoint", L".hidden", ".hidden"},
    {"Controls", L"\x01\x1B[0m\x7F", "\x01\x1B[0m\x7F"},
    {"TwoBytes", L"\u00E4\u00DF", "\xC3\xA4\xC3\x9F"},
    {"ThreeBytes", L"\u20AC\u65E5", "\xE2\x82\xAC\xE6\x97\xA5"},
    // What is no UTF-8, and still has a string: halves of surrogate pairs, and code points that this system writes with
    // three bytes where RFC 3629 has four.
    {"HighSurrogate", L"a\xD800", "a\xED\xA0\x80"},
    {"LowSurrogate", L"\xDFFF", "\xED\xBF\xBF"},
    {"CodePointAbove16Bits", L"\x1F600", "\xFF\x98\x80"},
    {"FirstCodePointAbove16Bits", L"\x10000", "\xF0\x80\x80"},
    {"LongestName", std::wstring(255, L'n'), std::string(255, 'n')},
    {"LongestNameOfQuotes", std::wstring(255, L'\''), std::string(255, '\'')},
    {"LongestNameOfThreeBytes", std::wstring(85, L'\u20AC'),
     []
     {
         std::string str;
         for (int n = 0; n < 85; ++n)
             str += "\xE2\x82\xAC";
         return str;
     }()},
};

TEST_F(LyFileSystemMove, EveryNameByItsFullPath)
{
    for (const NAME_CASE& row : s_aryNameCases)
    {
        const LyString strName = Path(row.strName.c_str());
        (void)m_Folder.Write("from", row.pTest);
        EXPECT_TRUE(MoveFile(Path(L"from"), strName)) << row.pTest;
        EXPECT_EQ(Read(m_Folder.GetPath(row.strOnDisk)), row.pTest);
        EXPECT_TRUE(MoveFile(strName, Path(L"to"))) << row.pTest;
        EXPECT_EQ(Read(m_Folder.GetPath("to")), row.pTest);
        fs::remove(m_Folder.GetPath("to"));
        EXPECT_TRUE(fs::is_empty(m_Folder.GetPath())) << row.pTest << ": nothing else was made or left";
    }
}

TEST_F(LyFileSystemMove, EveryNameInTheCurrentFolder)
{
    for (const NAME_CASE& row : s_aryNameCases)
    {
        (void)m_Folder.Write("from", row.pTest);
        EXPECT_TRUE(MoveFile(L"from", row.strName.c_str())) << row.pTest;
        EXPECT_EQ(Read(m_Folder.GetPath(row.strOnDisk)), row.pTest);
        EXPECT_TRUE(MoveFile(row.strName.c_str(), L"to")) << row.pTest;
        EXPECT_EQ(Read(m_Folder.GetPath("to")), row.pTest);
        fs::remove(m_Folder.GetPath("to"));
        EXPECT_TRUE(fs::is_empty(m_Folder.GetPath())) << row.pTest;
    }
}

TEST_F(LyFileSystemMove, EveryNameIntoAFolderOfThatName)
{
    for (const NAME_CASE& row : s_aryNameCases)
    {
        fs::create_directory(m_Folder.GetPath(row.strOnDisk));
        (void)m_Folder.Write("from", row.pTest);
        EXPECT_TRUE(MoveFile(L"from", row.strName.c_str())) << row.pTest;
        EXPECT_EQ(Read(m_Folder.GetPath(row.strOnDisk + "/from")), row.pTest);
        fs::remove_all(m_Folder.GetPath(row.strOnDisk));
    }
}

// Strings say a byte above 0x7F only as part of a sequence: as a name, such a byte reads as a character of its own, and
// that character's name is another one on the disk.
TEST_F(LyFileSystemMove, NamesThatNoStringSaysStayWhereTheyAre)
{
    for (const char* pOnDisk : {"\xE4.txt", "a\x80", "\xF0\x9F\x98\x80.txt"})
    {
        (void)m_Folder.Write(pOnDisk, "content");
        EXPECT_FALSE(MoveFile(Path(Wide(pOnDisk)), Path(L"to")));
        EXPECT_EQ(Read(m_Folder.GetPath(pOnDisk)), "content");
        EXPECT_FALSE(fs::exists(m_Folder.GetPath("to")));
    }
}

TEST_F(LyFileSystemMove, FailuresAreFalse)
{
    (void)m_Folder.Write("a", "content");
    EXPECT_FALSE(MoveFile(Path(L"missing"), Path(L"to")));
    EXPECT_FALSE(MoveFile(Path(L"a"), Path(L"missing/to")));
    EXPECT_FALSE(MoveFile(Path(L"a"), L""));
    EXPECT_FALSE(MoveFile(L"", Path(L"to")));
    EXPECT_FALSE(MoveFile(nullptr, nullptr));
    EXPECT_FALSE(MoveFile(Path(L"a"), Path(std::wstring(256, L'n').c_str()))) << "longer than any name may be";
    EXPECT_EQ(Read(m_Folder.GetPath("a")), "content");
}

TEST_F(LyFileSystemMove, ReplacesAFile)
{
    (void)m_Folder.Write("from", "new");
    (void)m_Folder.Write("to", "old");
    EXPECT_TRUE(MoveFile(Path(L"from"), Path(L"to")));
    EXPECT_EQ(Read(m_Folder.GetPath("to")), "new");
    EXPECT_FALSE(fs::exists(m_Folder.GetPath("from")));
}

TEST_F(LyFileSystemMove, AFileIsReplacedUnderEveryName)
{
    for (const NAME_CASE& row : s_aryNameCases)
    {
        if (row.strOnDisk.size() > 250)
            continue; // the backup needs a longer name
        const std::string strPath = m_Folder.Write(row.strOnDisk, "old");
        (void)m_Folder.Write("new", "new");
        if (row.strOnDisk == "a.txt;1")
            continue; // a file name that carries data, and means another file
        EXPECT_TRUE(LyFileSystem::SafeReplaceFile(Path(row.strName.c_str()), Path(L"new"), 1, false, false))
            << row.pTest;
        EXPECT_EQ(Read(strPath), "new") << row.pTest;
        fs::remove(strPath);
    }
}
