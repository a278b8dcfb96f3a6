#include "TocFile.h"
#include "TocLexer.h"
#include <gtest/gtest.h>

namespace
{
TOC_SHEET Parse(const std::string& strText)
{
    TOC_SHEET sheet;
    SHEET_ERROR error;
    EXPECT_TRUE(ParseTocFile(strText, sheet, error)) << error.m_nLine << ": " << error.m_strText;
    return sheet;
}

TEST(TocLexer, SplitsWordsStringsAndBraces)
{
    TocLexer lexer("CD_DA // \"comment\" {\nTRACK AUDIO{0:2:0,12}\"a \\\"b\\\" \\344 c\\d\" //end");
    const std::pair<TOC_TOKEN_TYPE, const char*> aryWanted[] = {
        {TOC_WORD, "CD_DA"}, {TOC_WORD, "TRACK"}, {TOC_WORD, "AUDIO"}, {TOC_OPEN, "{"},
        {TOC_WORD, "0:2:0"}, {TOC_WORD, "12"},    {TOC_CLOSE, "}"},    {TOC_STRING, "a \"b\" \xC3\xA4 c\\d"},
        {TOC_END, ""},       {TOC_END, ""}};
    for (const auto& [nType, pText] : aryWanted)
    {
        TOC_TOKEN token = lexer.Take();
        EXPECT_EQ(nType, token.m_nType) << pText;
        EXPECT_EQ(pText, token.m_strText);
    }
}

TEST(TocLexer, CountsLines)
{
    TocLexer lexer("a\nb\r\nc\r\r\nd // x\n\n\"e");
    for (int nLine : {1, 2, 3, 5, 7})
        EXPECT_EQ(nLine, lexer.Take().m_nLine);
    EXPECT_EQ(TOC_END, lexer.Take().m_nType);
}

TEST(TocLexer, StringEndsWithItsLine)
{
    TocLexer lexer("\"ab\ncd");
    TOC_TOKEN token = lexer.Take();
    EXPECT_EQ(TOC_BROKEN, token.m_nType);
    EXPECT_EQ("ab", token.m_strText);
    EXPECT_EQ("cd", lexer.Take().m_strText);
}

TEST(TocLexer, OctalBytesOfUTF8AreUTF8)
{
    EXPECT_EQ("\xC3\xA4", TocLexer("\"\\303\\244\"").Take().m_strText);
    EXPECT_EQ("\\4\\400", TocLexer("\"\\4\\400\"").Take().m_strText); // too short, and above a byte
}

TEST(TocFile, IsToldFromACueSheet)
{
    const std::pair<const char*, bool> aryCases[] = {
        {"CD_DA\n", true},
        {"// made by hand\nCATALOG \"1\"\n", true},
        {"CATALOG \"1234567890123\"\nCD_ROM_XA\n", true},
        {"\n\nCD_TEXT {\n", true},
        {"TRACK AUDIO\nFILE \"a\" 0", true},
        {"TRACK 01 AUDIO\n", false},
        {"REM CD_DA\nCD_DA\n", false},
        {"FILE \"a\" WAVE\n", false},
        {"CATALOG 1234567890123\nTITLE x\n", false},
        {"nonsense\n", false},
    };
    for (const auto& [pText, bToc] : aryCases)
        EXPECT_EQ(bToc, LooksLikeTocFile(pText, "a.cue")) << pText;
    EXPECT_TRUE(LooksLikeTocFile("nonsense", "a.TOC"));
}

TEST(TocFile, ReadsACompleteFile)
{
    TOC_SHEET sheet = Parse("CD_ROM_XA\n"
                            "CATALOG \"1234567890123\"\n"
                            "CD_TEXT {\n"
                            "  LANGUAGE_MAP { 0 : EN  1:9 }\n"
                            "  LANGUAGE 0 {\n"
                            "    TITLE \"Album\"\n    PERFORMER \"Band\"\n    DISC_ID \"XY12345\"\n    UPC_EAN \"\"\n"
                            "    GENRE { 0, 0, 0 }\n    SIZE_INFO { 0, 1,  2,\n 3 }\n"
                            "  }\n"
                            "  LANGUAGE 1 { TITLE \"Anders\" }\n"
                            "}\n"
                            "// Track 1\n"
                            "TRACK AUDIO\n"
                            "COPY\nPRE_EMPHASIS\nFOUR_CHANNEL_AUDIO\n"
                            "ISRC \"USS1Z9900001\"\n"
                            "CD_TEXT { LANGUAGE 0 { TITLE \"One\" SONGWRITER \"S\" COMPOSER \"C\" ARRANGER \"A\" "
                            "MESSAGE \"M\" ISRC \"US-S1Z-99-00001\" } }\n"
                            "SILENCE 00:02:00\n"
                            "START\n"
                            "FILE \"a.wav\" 588 0:10:0\n"
                            "AUDIOFILE \"b.bin\" SWAP #44 0\n"
                            "INDEX 0:01:0\n"
                            "INDEX 0:02:0\n"
                            "TRACK MODE2_FORM_MIX\n"
                            "NO COPY\n"
                            "ZERO MODE2_FORM_MIX 00:02:00\n"
                            "DATAFILE \"d.bin\" #100 00:05:00 // length in bytes: 876000\n"
                            "START 00:02:00\n"
                            "END 00:03:00\n");
    EXPECT_EQ(DISC_SESSION_CDROM_XA, sheet.m_nType);
    EXPECT_EQ("1234567890123", sheet.m_strMCN);
    EXPECT_EQ("Album", sheet.m_Text.m_strTitle);
    EXPECT_EQ("Band", sheet.m_Text.m_strPerformer);
    EXPECT_EQ("XY12345", sheet.m_Text.m_strDiscId);
    ASSERT_EQ(2u, sheet.m_aryTracks.size());
    const TOC_TRACK& one = sheet.m_aryTracks[0];
    EXPECT_EQ(DISC_AUDIO, one.m_nMode);
    EXPECT_EQ(TRACK_CONTROL_COPY_PERMITTED | TRACK_CONTROL_PRE_EMPHASIS | TRACK_CONTROL_FOUR_CHANNELS, one.m_nControl);
    EXPECT_EQ("USS1Z9900001", one.m_strISRC);
    EXPECT_EQ("One", one.m_Text.m_strTitle);
    EXPECT_EQ("S", one.m_Text.m_strSongwriter);
    EXPECT_EQ("C", one.m_Text.m_strComposer);
    EXPECT_EQ("A", one.m_Text.m_strArranger);
    EXPECT_EQ("M", one.m_Text.m_strMessage);
    EXPECT_EQ(1, one.m_nStartPiece);
    EXPECT_EQ(-1, one.m_nStartSector);
    EXPECT_EQ(std::vector<int>({75, 150}), one.m_aryIndexes);
    ASSERT_EQ(3u, one.m_aryPieces.size());
    EXPECT_EQ(TOC_PIECE_SILENCE, one.m_aryPieces[0].m_nType);
    EXPECT_TRUE(one.m_aryPieces[0].m_Length.m_bSectors);
    EXPECT_EQ(150, one.m_aryPieces[0].m_Length.m_nValue);
    EXPECT_EQ("a.wav", one.m_aryPieces[1].m_strName);
    EXPECT_FALSE(one.m_aryPieces[1].m_Start.m_bSectors);
    EXPECT_EQ(588, one.m_aryPieces[1].m_Start.m_nValue);
    EXPECT_EQ(750, one.m_aryPieces[1].m_Length.m_nValue);
    EXPECT_TRUE(one.m_aryPieces[2].m_bSwap);
    EXPECT_EQ(44, one.m_aryPieces[2].m_nByteOffset);
    EXPECT_EQ(0, one.m_aryPieces[2].m_Length.m_nValue);
    const TOC_TRACK& two = sheet.m_aryTracks[1];
    EXPECT_EQ(DISC_MODE2_2336, two.m_nMode);
    EXPECT_EQ(TRACK_CONTROL_DATA, two.m_nControl);
    ASSERT_EQ(2u, two.m_aryPieces.size());
    EXPECT_EQ(TOC_PIECE_DATA, two.m_aryPieces[1].m_nType);
    EXPECT_EQ(100, two.m_aryPieces[1].m_nByteOffset);
    EXPECT_EQ(375, two.m_aryPieces[1].m_Length.m_nValue);
    EXPECT_EQ(150, two.m_nStartSector);
    EXPECT_TRUE(sheet.m_aryWarnings.empty());
}

TEST(TocFile, PregapIsSilenceAheadOfTheStart)
{
    TOC_TRACK track = Parse("TRACK AUDIO\nPREGAP 0:2:0\nFILE \"a\" 0\n").m_aryTracks[0];
    ASSERT_EQ(2u, track.m_aryPieces.size());
    EXPECT_EQ(150, track.m_aryPieces[0].m_Length.m_nValue);
    EXPECT_EQ(1, track.m_nStartPiece);
}

TEST(TocFile, FlagsCanBeTakenBack)
{
    EXPECT_EQ(0, Parse("TRACK AUDIO\nCOPY\nPRE_EMPHASIS\nFOUR_CHANNEL_AUDIO\nNO COPY\nNO PRE_EMPHASIS\n"
                       "TWO_CHANNEL_AUDIO\nFILE \"a\" 0\n")
                     .m_aryTracks[0]
                     .m_nControl);
}

TEST(TocFile, SoundFlagsDoNotReachADataTrack)
{
    EXPECT_EQ(TRACK_CONTROL_DATA | TRACK_CONTROL_COPY_PERMITTED,
              Parse("TRACK MODE1\nCOPY\nPRE_EMPHASIS\nFOUR_CHANNEL_AUDIO\nDATAFILE \"a\"\n").m_aryTracks[0].m_nControl);
}

TEST(TocFile, ModesAndSessionTypes)
{
    const std::pair<const char*, DISC_TRACK_MODE> aryModes[] = {
        {"MODE1", DISC_MODE1_2048},         {"MODE1_RAW", DISC_MODE1_2352},   {"MODE2", DISC_MODE2_2336},
        {"MODE2_RAW", DISC_MODE2_2352},     {"MODE2_FORM1", DISC_MODE2_2048}, {"MODE2_FORM2", DISC_MODE2_2324},
        {"MODE2_FORM_MIX", DISC_MODE2_2336}};
    for (const auto& [pMode, nMode] : aryModes)
        EXPECT_EQ(nMode, Parse(std::string("TRACK ") + pMode + " DATAFILE \"a\"").m_aryTracks[0].m_nMode) << pMode;
    EXPECT_EQ(DISC_SESSION_CDDA_OR_CDROM, Parse("CD_DA TRACK AUDIO SILENCE 1").m_nType);
    EXPECT_EQ(DISC_SESSION_CDDA_OR_CDROM, Parse("CD_ROM TRACK AUDIO SILENCE 1").m_nType);
    EXPECT_EQ(DISC_SESSION_CDI, Parse("CD_I TRACK AUDIO SILENCE 1").m_nType);
    EXPECT_EQ(DISC_SESSION_CDDA_OR_CDROM, Parse("CD_ROM_XA CD_DA TRACK AUDIO SILENCE 1").m_nType); // the last counts
}

TEST(TocFile, FirstTrackNumberAndNinetyNineTracks)
{
    std::string strToc = "CD_DA\n";
    for (int n = 0; n < 99; n++)
        strToc += "TRACK AUDIO\nSILENCE 0:4:0\n";
    EXPECT_EQ(99u, Parse(strToc).m_aryTracks.size());
    EXPECT_EQ(7, Parse("CD_DA FIRST_TRACK_NO 7 TRACK AUDIO SILENCE 1").m_nFirstTrack);
}

TEST(TocFile, DecorationsThatAreWrongAreLeftOutWithAWarning)
{
    TOC_SHEET sheet = Parse("CATALOG \"12\"\nTRACK AUDIO\nISRC \"x\"\nSILENCE 1\n");
    ASSERT_EQ(2u, sheet.m_aryWarnings.size());
    EXPECT_EQ(1, sheet.m_aryWarnings[0].m_nLine);
    EXPECT_EQ("the ISRC \"x\" is malformed and was left out", sheet.m_aryWarnings[1].m_strText);
}

struct FAULT_CASE
{
    const char* m_pToc;
    int m_nLine;
    const char* m_pText; // how the sentence starts
};

const FAULT_CASE s_aryFaults[] = {
    {"", 0, "this is not a TOC file, for it has no TRACK statement"},
    {"CD_DA\n", 0, "this is not a TOC file"},
    {"CD_DA\nNONSENSE\n", 2, "the statement \"NONSENSE\" is unknown ahead of the first TRACK"},
    {"CD_DA\n{", 2, "\"{\" stands where a statement should start"},
    {"CD_DA\n\"x\"", 2, "\"x\" stands where a statement should start"},
    {"CATALOG 12\n", 1, "CATALOG is not followed by a text"},
    {"CATALOG \"12\n", 1, "\"12\" lacks its second quotation mark; add it"},
    {"FIRST_TRACK_NO 0\n", 1, "the track number \"0\" is not one of 1 to 99"},
    {"TRACK\n", 1, "the track mode \"\" is unknown; write AUDIO"},
    {"TRACK MODE3\n", 1, "the track mode \"MODE3\" is unknown"},
    {"TRACK AUDIO RW_RAW\n", 1, "the track holds sub-channel data, in sectors of 2448 bytes, which are not supported"},
    {"TRACK MODE1 RW\n", 1, "the track holds sub-channel data"},
    {"TRACK AUDIO\n", 1, "the track has no content; add a FILE"},
    {"TRACK AUDIO\nTRACK AUDIO\nSILENCE 1", 1, "the track has no content"},
    {"TRACK AUDIO\nNONSENSE\n", 2, "the statement \"NONSENSE\" is unknown; correct"},
    {"TRACK AUDIO\nNO TITLE\n", 2, "NO is followed by \"TITLE\"; only COPY"},
    {"TRACK AUDIO\nFILE a 0\n", 2, "FILE is not followed by a text"},
    {"TRACK AUDIO\nFILE \"a\"\n", 2, "FILE: \"\" is no length; write"},
    {"TRACK AUDIO\nFILE \"a\" x\n", 2, "FILE: \"x\" is no length"},
    {"TRACK AUDIO\nFILE \"a\" 0 0:0:75\n", 2, "FILE: \"0:0:75\" is no length"},
    {"TRACK AUDIO\nFILE \"a\" #x 0\n", 2, "#x is no offset"},
    {"TRACK AUDIO\nFILE \"a\" # \n", 2, "# is no offset"},
    {"TRACK AUDIO\nFILE \"-\" 0\n", 2, "the standard input cannot be read as a disc"},
    {"TRACK AUDIO\nFIFO \"a\" 0\n", 2, "FIFO names a pipe"},
    {"TRACK AUDIO\nDATAFILE \"a\"\n", 2, "DATAFILE does not fit the mode of its track"},
    {"TRACK MODE1\nFILE \"a\" 0\n", 2, "FILE does not fit the mode of its track"},
    {"TRACK AUDIO\nSILENCE\n", 2, "SILENCE: \"\" is no length"},
    {"TRACK AUDIO\nSILENCE 9999999999999\n", 2, "SILENCE: \"9999999999999\" is no length"},
    {"TRACK AUDIO\nSILENCE 1\nPREGAP 0:2:0\n", 3, "PREGAP stands behind content of its track"},
    {"TRACK AUDIO\nPREGAP 150\n", 2, "PREGAP takes a time; write it as mm:ss:ff"},
    {"TRACK AUDIO\nSILENCE 1\nSTART 7\n", 3, "START takes a time"},
    {"TRACK AUDIO\nSILENCE 1\nINDEX 0:2:0\nINDEX 0:1:0\n", 4, "the index at 00:01:00 lies before the one ahead of it"},
    {"TRACK AUDIO\nSILENCE 1\nINDEX 0:0:0\n", 3, "the index at 00:00:00 lies before"},
    {"CD_TEXT\nLANGUAGE", 1, "CD_TEXT is not followed by an opening brace"},
    {"CD_TEXT {\nLANGUAGE 0 {\nTITLE \"x\"\n", 1, "the CD_TEXT block is malformed or not closed"},
    {"CD_TEXT { SOMETHING }", 1, "the CD_TEXT block is malformed or not closed"},
    {"CD_TEXT { LANGUAGE 0 { SIZE_INFO { 1, { } } }", 1, "the CD_TEXT block is malformed"},
};

TEST(TocFile, FaultsNameTheirLineAndAWayOut)
{
    for (const FAULT_CASE& row : s_aryFaults)
    {
        TOC_SHEET sheet;
        SHEET_ERROR error;
        EXPECT_FALSE(ParseTocFile(row.m_pToc, sheet, error)) << row.m_pToc;
        EXPECT_EQ(row.m_nLine, error.m_nLine) << row.m_pToc;
        EXPECT_EQ(0u, error.m_strText.find(row.m_pText)) << row.m_pToc << ": " << error.m_strText;
        EXPECT_NE(std::string::npos, error.m_strText.find(';')) << row.m_pToc << ": " << error.m_strText;
    }
}

TEST(TocFile, HundredthTrackAndHundredthIndexAreRefused)
{
    TOC_SHEET sheet;
    SHEET_ERROR error;
    std::string strToc = "FIRST_TRACK_NO 2\n";
    for (int n = 0; n < 99; n++)
        strToc += "TRACK AUDIO SILENCE 1\n";
    EXPECT_FALSE(ParseTocFile(strToc, sheet, error));
    EXPECT_EQ(100, error.m_nLine);
    strToc = "TRACK AUDIO SILENCE 0:10:0\n";
    for (int n = 1; n <= 99; n++)
        strToc += "INDEX 0:" + std::to_string(n / 75) + ":" + std::to_string(n % 75) + "\n";
    EXPECT_FALSE(ParseTocFile(strToc, sheet, error));
    EXPECT_EQ(100, error.m_nLine);
}
} // namespace
