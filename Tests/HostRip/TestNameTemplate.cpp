#include "HostError.h"
#include "NameTemplate.h"
#include "UTF8.h"
#include <gtest/gtest.h>

namespace
{
constexpr size_t LAST_BYTES = NAME_MAX_BYTES - NAME_SUFFIX_BYTES;

NAME_FIELDS GetFields() { return {"Album", "The Band", "Song", "A Guest", "DEABC1234567", 3, 12}; }

std::string Expand(const std::string& strTemplate) { return ExpandNameTemplate(strTemplate, GetFields()); }

struct TWO_TEXTS
{
    const char* m_pGiven;
    std::string m_strWanted;
};

std::string Repeat(const std::string& str, size_t nTimes)
{
    std::string strAll;
    while (nTimes-- > 0)
        strAll += str;
    return strAll;
}

std::vector<std::string> MakeDistinct(std::vector<std::string> aryNames)
{
    MakeNamesDistinct(aryNames);
    return aryNames;
}
} // namespace

TEST(NameTemplate, FieldsStandInFoldersAndInTheFile)
{
    EXPECT_EQ("The Band/Album/03 Song", Expand(DEFAULT_NAME_TEMPLATE));
    for (const TWO_TEXTS& row : {TWO_TEXTS{"%{album}", "Album"},
                                 {"%{albumartist}", "The Band"},
                                 {"%{title}", "Song"},
                                 {"%{artist}", "A Guest"},
                                 {"%{isrc}", "DEABC1234567"},
                                 {"%{track} of %{tracks}", "03 of 12"},
                                 {"%{TITLE}%{Track}", "Song03"},
                                 {"100%% %{title}", "100% Song"},
                                 {"%%{title}", "%{title}"},
                                 {"plain/name", "plain/name"},
                                 {"a/b/c/d/e/f/g/h/%{track}", "a/b/c/d/e/f/g/h/03"}})
        EXPECT_EQ(row.m_strWanted, Expand(row.m_pGiven)) << row.m_pGiven;
}

TEST(NameTemplate, WhatIsNotKnownHasAName)
{
    NAME_FIELDS fields;
    fields.nTrack = 7;
    EXPECT_EQ("Unknown Artist/Unknown Album/07 Track 07", ExpandNameTemplate(DEFAULT_NAME_TEMPLATE, fields));
    fields.strArtist = "A Guest";
    EXPECT_EQ("A Guest/A Guest", ExpandNameTemplate("%{albumartist}/%{artist}", fields));
    fields.strArtist = " \t";
    fields.strAlbumArtist = "The Band";
    EXPECT_EQ("The Band", ExpandNameTemplate("%{artist}", fields));
    EXPECT_EQ("07", ExpandNameTemplate("%{track} %{isrc}", fields));
    EXPECT_EQ("_", ExpandNameTemplate("%{isrc}", fields));
    fields.nTrack = 0;
    EXPECT_EQ("00 Track 00", ExpandNameTemplate("%{track} %{title}", fields));
    fields.nTrack = 123;
    EXPECT_EQ("123", ExpandNameTemplate("%{track}", fields));
}

TEST(NameTemplate, ABadTemplateIsRefusedWithASentence)
{
    for (const auto& [strTemplate, strWords] : std::vector<std::pair<std::string, std::string>>{
             {"", "without a name"},
             {"/%{title}", "without a name"},
             {"%{title}/", "without a name"},
             {"a//b", "without a name"},
             {"a/../b", "without a name"},
             {"./a", "without a name"},
             {" /a", "without a name"},
             {"..", "without a name"},
             {"%{album}\\%{title}", "write / between folders"},
             {"%{albumartist", "no %{field}"},
             {"100%", "no %{field}"},
             {"%t", "no %{field}"},
             {"%{}", "unknown field"},
             {"%{genre}", "unknown field %{genre}; there are %{album}, %{albumartist}, %{title}"},
             {"%{" + std::string("a\nb") + "}", "unknown field %{a b}"},
             {"%{a/b}", "no %{field}"},
             {"a/b/c/d/e/f/g/h/i/j", "more than 8 folders"},
             {std::string(NAME_MAX_TEMPLATE + 1, 'x'), "longer than 1000 bytes"}})
    {
        EXPECT_THROW((void)Expand(strTemplate), HostError) << strTemplate;
        const std::string strSentence = CheckNameTemplate(strTemplate);
        EXPECT_NE(std::string::npos, strSentence.find(strWords)) << strTemplate << ": " << strSentence;
        EXPECT_TRUE(strSentence.ends_with(".")) << strSentence;
    }
    EXPECT_EQ("", CheckNameTemplate(DEFAULT_NAME_TEMPLATE));
    EXPECT_EQ("", CheckNameTemplate(std::string(NAME_MAX_TEMPLATE, 'x')));
}

TEST(NameTemplate, ATextOfTheDiscNeverMakesAFolder)
{
    NAME_FIELDS fields = GetFields();
    fields.strTitle = "../../etc/passwd";
    EXPECT_EQ("03 ..-..-etc-passwd", ExpandNameTemplate("%{track} %{title}", fields));
    EXPECT_EQ("-..-etc-passwd", ExpandNameTemplate("%{title}", fields));
    fields.strAlbum = "..";
    fields.strAlbumArtist = "/";
    fields.strTitle = ".";
    EXPECT_EQ("-/_/_", ExpandNameTemplate("%{albumartist}/%{album}/%{title}", fields));
    fields.strTitle = "%{album}";
    EXPECT_EQ("%{album}", ExpandNameTemplate("%{title}", fields));
}

TEST(NameTemplate, CharactersThatAFileSystemRefusesAreReplaced)
{
    for (const TWO_TEXTS& row : {TWO_TEXTS{"AC/DC", "AC-DC"},
                                 {"a\\b", "a-b"},
                                 {"2:1", "2-1"},
                                 {"a|b", "a-b"},
                                 {"\"Heroes\"", "'Heroes'"},
                                 {"<3>", "(3)"},
                                 {"Why?", "Why_"},
                                 {"*", "_"},
                                 {"a\tb\r\n c", "a b c"},
                                 {"a  \n b", "a b"},
                                 {"a\x01"
                                  "b\x7F",
                                  "a_b_"},
                                 {"a\xC2\x9F"
                                  "b",
                                  "a_b"}, // C1
                                 {"a\xE2\x80\xA8"
                                  "b",
                                  "a b"}, // line separator
                                 {"a\xE2\x80\xAE"
                                  "b",
                                  "ab"}, // right-to-left override
                                 {"\xEF\xBB\xBFx", "x"},
                                 {"a\xEF\xBF\xBF"
                                  "b",
                                  "a\xEF\xBF\xBD"
                                  "b"}, // no character
                                 {"Gr\xC3\xB6\xC3\x9F"
                                  "e \xE6\x97\xA5 \xF0\x9F\x8E\xB5",
                                  "Gr\xC3\xB6\xC3\x9F"
                                  "e \xE6\x97\xA5 \xF0\x9F\x8E\xB5"}})
        EXPECT_EQ(row.m_strWanted, MakeSafeName(row.m_pGiven)) << row.m_pGiven;
    EXPECT_EQ("a_b", MakeSafeName(std::string("a\0b", 3)));
}

TEST(NameTemplate, BytesThatAreNoUTF8AreReplaced)
{
    const std::string strSign = "\xEF\xBF\xBD";
    EXPECT_EQ("caf" + strSign, MakeSafeName("caf\xE9"));
    EXPECT_EQ(strSign + strSign + "x", MakeSafeName("\xC0\xAFx"));          // "/" in two bytes
    EXPECT_EQ(strSign + strSign + strSign, MakeSafeName("\xED\xA0\x80"));   // half a pair
    EXPECT_EQ(strSign + strSign + strSign, MakeSafeName("\xF0\x9F\x8E"));   // cut off
    EXPECT_EQ(Repeat(strSign, 4), MakeSafeName("\xF4\x90\x80\x80"));        // beyond the last one
    EXPECT_EQ(Repeat(strSign, 85), MakeSafeName(std::string(300, '\xFF'))); // three bytes each
}

TEST(NameTemplate, BlanksAndDotsDoNotStandAtTheEnds)
{
    for (const TWO_TEXTS& row : {TWO_TEXTS{".hidden", "hidden"},
                                 {"...And Justice", "And Justice"},
                                 {"R.E.M.", "R.E.M"},
                                 {" a. . ", "a"},
                                 {"\xE3\x80\x80"
                                  "a\xC2\xA0",
                                  "a"}, // blanks of other kinds
                                 {"...", "_"},
                                 {"", "_"},
                                 {" ", "_"},
                                 {". .", "_"}})
        EXPECT_EQ(row.m_strWanted, MakeSafeName(row.m_pGiven)) << row.m_pGiven;
}

TEST(NameTemplate, NamesOfDevicesGetAnUnderscore)
{
    for (const char* pName : {"CON", "con", "Prn", "AUX", "nul", "COM1", "com0", "LPT9", "clock$", "CONIN$", "conout$",
                              "nul.txt", "con .tar.gz", "com\xC2\xB9", "LPT\xC2\xB3.x"})
        EXPECT_EQ("_" + std::string(pName), MakeSafeName(pName));
    for (const char* pName : {"CONS", "a con", "COM", "COM10", "LPT\xC2\xB4", "auxiliary", "com1x"})
        EXPECT_EQ(pName, MakeSafeName(pName));
    EXPECT_EQ("_con/_aux", ExpandNameTemplate("con/aux", {}));
    EXPECT_EQ("_nul." + std::string(250, 'x'), MakeSafeName("nul." + std::string(300, 'x')));
}

TEST(NameTemplate, ComponentsAreCutAtACharacter)
{
    EXPECT_EQ(std::string(255, 'x'), MakeSafeName(std::string(256, 'x')));
    EXPECT_EQ(Repeat("\xC3\xB6", 127), MakeSafeName(Repeat("\xC3\xB6", 200)));
    EXPECT_EQ(Repeat("\xF0\x9F\x8E\xB5", 63), MakeSafeName(Repeat("\xF0\x9F\x8E\xB5", 70)));
    EXPECT_EQ(std::string(250, 'x'), MakeSafeName(std::string(250, 'x') + "  ... y"));
    // The accent of the last letter does not fit: neither stays.
    EXPECT_EQ(std::string(254, 'x'), MakeSafeName(std::string(254, 'x') + "e\xCC\x81"));
    EXPECT_EQ(std::string(252, 'x') + "e\xCC\x81", MakeSafeName(std::string(252, 'x') + "e\xCC\x81y"));
    EXPECT_EQ(Repeat("\xCC\x81", 127), MakeSafeName(Repeat("\xCC\x81", 200)));
    EXPECT_EQ("abcd", MakeSafeName("abcdef", 4));
    NAME_FIELDS fields;
    fields.strAlbum = fields.strTitle = std::string(1000, 'x');
    EXPECT_EQ(std::string(255, 'x') + "/" + std::string(LAST_BYTES, 'x'),
              ExpandNameTemplate("%{album}/%{title}", fields));
}

TEST(DistinctNames, LaterOnesGetANumber)
{
    using NAMES = std::vector<std::string>;
    EXPECT_EQ((NAMES{"a", "b"}), MakeDistinct({"a", "b"}));
    EXPECT_EQ((NAMES{"d/a", "d/a (2)", "d/b", "d/a (3)"}), MakeDistinct({"d/a", "d/a", "d/b", "d/a"}));
    EXPECT_EQ((NAMES{"a", "a (3)", "a (2)"}), MakeDistinct({"a", "a", "a (2)"}));
    EXPECT_EQ((NAMES{"a", "a (2)", "a (2) (2)"}), MakeDistinct({"a", "a", "a (2) (2)"}));
    EXPECT_EQ((NAMES{"a (2)", "a", "a (3)"}), MakeDistinct({"a (2)", "a", "a"}));
    EXPECT_EQ((NAMES{"1/a", "2/a"}), MakeDistinct({"1/a", "2/a"}));
    EXPECT_EQ(NAMES{}, MakeDistinct({}));
    EXPECT_EQ((NAMES{"Song", "SONG (2)"}), MakeDistinct({"Song", "SONG"}));
}

TEST(DistinctNames, TheNumberFitsIntoTheName)
{
    const std::string strLong(LAST_BYTES, 'x');
    EXPECT_EQ(std::string(LAST_BYTES - 4, 'x') + " (2)", MakeDistinct({strLong, strLong})[1]);
    const std::string strUmlauts = Repeat("\xC3\xB6", LAST_BYTES / 2);
    EXPECT_EQ(Repeat("\xC3\xB6", (LAST_BYTES - 4) / 2) + " (2)", MakeDistinct({strUmlauts, strUmlauts})[1]);
    const std::vector<std::string> aryMany = MakeDistinct(std::vector<std::string>(99, "d/" + strLong));
    for (size_t i = 0; i < aryMany.size(); ++i)
        for (size_t j = 0; j < i; ++j)
            EXPECT_FALSE(IsSameName(aryMany[i], aryMany[j]));
    EXPECT_EQ("d/" + std::string(LAST_BYTES - 5, 'x') + " (99)", aryMany.back());
}

TEST(DistinctNames, FileSystemsThatCompareOtherwiseAreReckonedWith)
{
    const std::vector<std::pair<const char*, const char*>> arySame = {
        {"song", "SONG"},
        {"\xC3\x84rger", "\xC3\xA4rger"},                         // umlaut in both cases
        {"\xD0\x9F\xD0\xB5", "\xD0\xBF\xD0\x95"},                 // Cyrillic
        {"\xCF\x83\xCE\xBF\xCF\x82", "\xCE\xA3\xCE\x9F\xCE\xA3"}, // Greek, with a final sigma
        {"Stra\xC3\x9F"
         "e",
         "STRASSE"},
        {"caf\xC3\xA9", "cafe\xCC\x81"},                          // é in one character and in two
        {"CAF\xC3\x89 1", "cafe\xCC\x81 1"},                      //
        {"\xEA\xB0\x81", "\xE1\x84\x80\xE1\x85\xA1\xE1\x86\xA8"}, // a Korean syllable and its parts
        {"\xE3\x81\x8C", "\xE3\x81\x8B\xE3\x82\x99"},             // a Japanese one
        {"a\xE2\x80\x8D"
         "b",
         "ab"}}; // a joiner
    for (const auto& [pFirst, pSecond] : arySame)
    {
        EXPECT_TRUE(IsSameName(pFirst, pSecond)) << pFirst << " " << pSecond;
        EXPECT_TRUE(IsSameName(pSecond, pFirst)) << pFirst << " " << pSecond;
    }
    const std::vector<std::pair<const char*, const char*>> aryOther = {
        {"a", "b"},         {"caf\xC3\xA9", "cafe"}, {"\xC3\xA9", "\xC3\xA8"},
        {"e\xCC\x81", "e"}, {"a b", "ab"},           {"1/a", "1-a"}};
    for (const auto& [pFirst, pSecond] : aryOther)
        EXPECT_FALSE(IsSameName(pFirst, pSecond)) << pFirst << " " << pSecond;
}
