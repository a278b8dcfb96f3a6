#include "CueSheet.h"
#include <gtest/gtest.h>

namespace
{
const std::string FILE_LINE = "FILE \"a.bin\" BINARY\n";
const std::string TRACK_1 = "TRACK 01 AUDIO\nINDEX 01 00:00:00\n";

CUE_SHEET Parse(const std::string& strText)
{
    CUE_SHEET sheet;
    SHEET_ERROR error;
    EXPECT_TRUE(ParseCueSheet(strText, sheet, error)) << error.m_nLine << ": " << error.m_strText;
    return sheet;
}

TEST(CueSheet, ReadsACompleteSheet)
{
    CUE_SHEET sheet = Parse("REM GENRE Rock\n"
                            "REM DATE 1999\n"
                            "CATALOG 1234567890123\n"
                            "CDTEXTFILE \"disc.cdt\"\n"
                            "PERFORMER \"The Band\"\n"
                            "TITLE \"The Album\"\n"
                            "SONGWRITER \"Someone\"\n"
                            "DISC_ID \"XY12345\"\n"
                            "FILE \"album.bin\" BINARY\n"
                            "  TRACK 01 AUDIO\n"
                            "    TITLE \"One\"\n"
                            "    PERFORMER \"Guest\"\n"
                            "    COMPOSER \"C\"\n"
                            "    ARRANGER \"A\"\n"
                            "    MESSAGE \"M\"\n"
                            "    FLAGS DCP PRE 4CH SCMS\n"
                            "    ISRC USS1Z9900001\n"
                            "    PREGAP 00:02:00\n"
                            "    INDEX 01 00:00:00\n"
                            "    INDEX 02 01:00:00\n"
                            "    POSTGAP 00:01:00\n"
                            "  TRACK 02 MODE1/2352\n"
                            "    INDEX 00 03:00:10\n"
                            "    INDEX 01 03:02:10\n");
    EXPECT_EQ("1234567890123", sheet.m_strMCN);
    EXPECT_EQ("disc.cdt", sheet.m_strCDTextFile);
    EXPECT_EQ(4, sheet.m_nCDTextFileLine);
    EXPECT_EQ("The Band", sheet.m_Text.m_strPerformer);
    EXPECT_EQ("The Album", sheet.m_Text.m_strTitle);
    EXPECT_EQ("Someone", sheet.m_Text.m_strSongwriter);
    EXPECT_EQ("XY12345", sheet.m_Text.m_strDiscId);
    ASSERT_EQ(1u, sheet.m_aryFiles.size());
    EXPECT_EQ("album.bin", sheet.m_aryFiles[0].m_strName);
    EXPECT_EQ(9, sheet.m_aryFiles[0].m_nLine);
    ASSERT_EQ(2u, sheet.m_aryTracks.size());
    const CUE_TRACK& one = sheet.m_aryTracks[0];
    EXPECT_EQ(1, one.m_nNumber);
    EXPECT_EQ("One", one.m_Text.m_strTitle);
    EXPECT_EQ("Guest", one.m_Text.m_strPerformer);
    EXPECT_EQ("C", one.m_Text.m_strComposer);
    EXPECT_EQ("A", one.m_Text.m_strArranger);
    EXPECT_EQ("M", one.m_Text.m_strMessage);
    EXPECT_EQ(TRACK_CONTROL_COPY_PERMITTED | TRACK_CONTROL_PRE_EMPHASIS | TRACK_CONTROL_FOUR_CHANNELS, one.m_nControl);
    EXPECT_EQ("USS1Z9900001", one.m_strISRC);
    EXPECT_EQ(150, one.m_nPregap);
    EXPECT_EQ(75, one.m_nPostgap);
    ASSERT_EQ(2u, one.m_aryIndexes.size());
    EXPECT_EQ(2, one.m_aryIndexes[1].m_nNumber);
    EXPECT_EQ(4500, one.m_aryIndexes[1].m_nSector);
    const CUE_TRACK& two = sheet.m_aryTracks[1];
    EXPECT_EQ(DISC_MODE1_2352, two.m_nMode);
    EXPECT_EQ(TRACK_CONTROL_DATA, two.m_nControl);
    ASSERT_EQ(2u, two.m_aryIndexes.size());
    EXPECT_EQ(0, two.m_aryIndexes[0].m_nNumber);
    EXPECT_EQ(13510, two.m_aryIndexes[0].m_nSector);
    EXPECT_TRUE(sheet.m_aryWarnings.empty());
}

TEST(CueSheet, TakesLineEndsOfAllSystems)
{
    for (const char* pEnd : {"\n", "\r\n", "\r"})
    {
        std::string strEnd = pEnd;
        CUE_SHEET sheet =
            Parse("FILE a.bin BINARY" + strEnd + strEnd + "\tTRACK 01 AUDIO  " + strEnd + "INDEX 01 0:0:0");
        ASSERT_EQ(1u, sheet.m_aryTracks.size());
        EXPECT_EQ(3, sheet.m_aryTracks[0].m_nLine);
        EXPECT_EQ(4, sheet.m_aryTracks[0].m_aryIndexes[0].m_nLine);
    }
}

TEST(CueSheet, CommandsAreTakenInAnyCase)
{
    CUE_SHEET sheet = Parse("file \"a.bin\" binary\ntrack 1 audio\nflags dcp\nindex 1 0:0:0\n");
    EXPECT_EQ(SECTOR_SOURCE_RAW, sheet.m_aryFiles[0].m_nKind);
    EXPECT_EQ(TRACK_CONTROL_COPY_PERMITTED, sheet.m_aryTracks[0].m_nControl);
}

struct FILE_CASE
{
    const char* m_pLine;
    const char* m_pName;
    SECTOR_SOURCE_KIND m_nKind;
};

TEST(CueSheet, FileLinesAreTakenAsPeopleWriteThem)
{
    const FILE_CASE aryCases[] = {
        {"FILE \"a b.bin\" BINARY", "a b.bin", SECTOR_SOURCE_RAW},
        {"FILE \"a.bin\" MOTOROLA", "a.bin", SECTOR_SOURCE_RAW_SWAPPED},
        {"FILE \"a.wav\" WAVE", "a.wav", SECTOR_SOURCE_AUDIO},
        {"FILE \"a.aiff\" AIFF", "a.aiff", SECTOR_SOURCE_AUDIO},
        {"FILE \"a.mp3\" MP3", "a.mp3", SECTOR_SOURCE_AUDIO},
        {"FILE \"a.flac\" FLAC", "a.flac", SECTOR_SOURCE_AUDIO},
        {"FILE \"a.ape\" APE", "a.ape", SECTOR_SOURCE_AUDIO},    // the decoder will judge
        {"FILE a.bin BINARY", "a.bin", SECTOR_SOURCE_RAW},       // no marks
        {"FILE a b.bin BINARY", "a b.bin", SECTOR_SOURCE_RAW},   // no marks, a blank
        {"FILE \"a b.wav WAVE", "a b.wav", SECTOR_SOURCE_AUDIO}, // no second mark
        {"FILE a b.wav\" WAVE", "a b.wav", SECTOR_SOURCE_AUDIO}, // no first mark
        {"FILE \"The \"Best\".wav\" WAVE", "The \"Best\".wav", SECTOR_SOURCE_AUDIO},
        {"FILE \"a.bin\"", "a.bin", SECTOR_SOURCE_RAW}, // no type
        {"FILE \"a.wav\"", "a.wav", SECTOR_SOURCE_AUDIO},
        {"FILE \"WAVE\" WAVE", "WAVE", SECTOR_SOURCE_AUDIO},
        {"FILE \"C:\\x\\a.bin\" BINARY", "C:\\x\\a.bin", SECTOR_SOURCE_RAW}, // no escapes
    };
    for (const FILE_CASE& row : aryCases)
    {
        CUE_SHEET sheet = Parse(std::string(row.m_pLine) + "\n" + TRACK_1);
        EXPECT_EQ(row.m_pName, sheet.m_aryFiles[0].m_strName) << row.m_pLine;
        EXPECT_EQ(row.m_nKind, sheet.m_aryFiles[0].m_nKind) << row.m_pLine;
    }
}

TEST(CueSheet, TextsForgiveMissingMarks)
{
    const std::pair<const char*, const char*> aryCases[] = {{"\"One\"", "One"},
                                                            {"One", "One"},
                                                            {"\"One Two", "One Two"},
                                                            {"One Two\"", "One Two"},
                                                            {"\"\"", ""},
                                                            {"", ""},
                                                            {"\"", ""},
                                                            {"\"Say \"Hi\" now\"", "Say \"Hi\" now"},
                                                            {"  \"One\"  ", "One"}};
    for (const auto& [pWritten, pText] : aryCases)
        EXPECT_EQ(pText, Parse(FILE_LINE + TRACK_1 + "TITLE " + pWritten + "\n").m_aryTracks[0].m_Text.m_strTitle)
            << pWritten;
}

TEST(CueSheet, TrackModes)
{
    struct MODE_CASE
    {
        const char* m_pMode;
        DISC_TRACK_MODE m_nMode;
        DISC_SESSION_TYPE m_nType;
    };
    const MODE_CASE aryCases[] = {{"AUDIO", DISC_AUDIO, DISC_SESSION_CDDA_OR_CDROM},
                                  {"MODE1/2048", DISC_MODE1_2048, DISC_SESSION_CDDA_OR_CDROM},
                                  {"MODE1/2352", DISC_MODE1_2352, DISC_SESSION_CDDA_OR_CDROM},
                                  {"MODE2/2336", DISC_MODE2_2336, DISC_SESSION_CDROM_XA},
                                  {"MODE2/2352", DISC_MODE2_2352, DISC_SESSION_CDROM_XA},
                                  {"CDI/2352", DISC_MODE2_2352, DISC_SESSION_CDI},
                                  {"mode2/2352", DISC_MODE2_2352, DISC_SESSION_CDROM_XA}};
    for (const MODE_CASE& row : aryCases)
    {
        CUE_SHEET sheet = Parse(FILE_LINE + "TRACK 01 " + row.m_pMode + "\nINDEX 01 00:00:00\n");
        EXPECT_EQ(row.m_nMode, sheet.m_aryTracks[0].m_nMode) << row.m_pMode;
        EXPECT_EQ(row.m_nType, sheet.m_aryTracks[0].m_nSessionType) << row.m_pMode;
        EXPECT_EQ(row.m_nMode == DISC_AUDIO ? 0 : TRACK_CONTROL_DATA, sheet.m_aryTracks[0].m_nControl) << row.m_pMode;
    }
}

TEST(CueSheet, SoundFlagsDoNotReachADataTrack)
{
    CUE_SHEET sheet = Parse(FILE_LINE + "TRACK 01 MODE1/2352\nFLAGS DATA DCP PRE 4CH\nINDEX 01 00:00:00\n");
    EXPECT_EQ(TRACK_CONTROL_DATA | TRACK_CONTROL_COPY_PERMITTED, sheet.m_aryTracks[0].m_nControl);
    EXPECT_TRUE(sheet.m_aryWarnings.empty());
}

TEST(CueSheet, RepeatedFileLineIsOneFile)
{
    CUE_SHEET sheet = Parse(FILE_LINE + TRACK_1 + FILE_LINE +
                            "TRACK 02 AUDIO\nINDEX 01 00:10:00\nFILE b.bin BINARY\n"
                            "TRACK 03 AUDIO\nINDEX 01 00:00:00\n");
    EXPECT_EQ(2u, sheet.m_aryFiles.size());
    EXPECT_EQ(0, sheet.m_aryTracks[1].m_aryIndexes[0].m_nFile);
    EXPECT_EQ(1, sheet.m_aryTracks[2].m_aryIndexes[0].m_nFile);
}

TEST(CueSheet, FileMayChangeWithinATrack)
{
    CUE_SHEET sheet =
        Parse(FILE_LINE + TRACK_1 + "TRACK 02 AUDIO\nINDEX 00 00:10:00\nFILE b.bin BINARY\nINDEX 01 0:0:0");
    EXPECT_EQ(0, sheet.m_aryTracks[1].m_aryIndexes[0].m_nFile);
    EXPECT_EQ(1, sheet.m_aryTracks[1].m_aryIndexes[1].m_nFile);
}

TEST(CueSheet, RemarksOpenSessions)
{
    CUE_SHEET sheet = Parse("REM SESSION 01\n" + FILE_LINE + TRACK_1 +
                            "REM LEAD-OUT 01:00:00\nREM SESSION 02\nREM LEAD-IN 00:30:00\nREM PREGAP 00:03:00\n"
                            "TRACK 02 MODE2/2352\nINDEX 01 00:10:00\nREM SESSION 02\n"
                            "TRACK 03 MODE2/2352\nINDEX 01 00:20:00\nREM SESSION 03\n");
    ASSERT_EQ(2u, sheet.m_arySessions.size()); // the third has no track
    EXPECT_EQ(0, sheet.m_aryTracks[0].m_nSession);
    EXPECT_EQ(1, sheet.m_aryTracks[1].m_nSession);
    EXPECT_EQ(1, sheet.m_aryTracks[2].m_nSession);
    EXPECT_EQ(4500, sheet.m_arySessions[0].m_nLeadOut);
    EXPECT_EQ(2250, sheet.m_arySessions[1].m_nLeadIn);
    EXPECT_EQ(225, sheet.m_arySessions[1].m_nPregap);
    EXPECT_EQ(-1, sheet.m_arySessions[1].m_nLeadOut);
}

TEST(CueSheet, SessionBeforeTheFirstTrackIsTheFirst)
{
    CUE_SHEET sheet = Parse("REM SESSION 02\n" + FILE_LINE + TRACK_1);
    EXPECT_EQ(1u, sheet.m_arySessions.size());
    EXPECT_EQ(0, sheet.m_aryTracks[0].m_nSession);
}

TEST(CueSheet, OddRemarksAreRemarks)
{
    CUE_SHEET sheet = Parse(FILE_LINE + TRACK_1 +
                            "REM\nREM SESSION\nREM SESSION two\nREM SESSION 999\nREM LEAD-OUT soon\n"
                            "REM LEAD-IN 00:10:00\nREM COMMENT \"INDEX 01\"\nREM PREGAP 00:01:00\n");
    EXPECT_EQ(1u, sheet.m_arySessions.size());
    EXPECT_EQ(-1, sheet.m_arySessions[0].m_nLeadIn);
    EXPECT_EQ(-1, sheet.m_arySessions[0].m_nPregap);
    EXPECT_TRUE(sheet.m_aryWarnings.empty());
}

TEST(CueSheet, NinetyNineTracksAndAFirstAboveOne)
{
    std::string strSheet = FILE_LINE;
    for (int n = 1; n <= 99; n++)
        strSheet += "TRACK " + std::to_string(n) + " AUDIO\nINDEX 01 " + FormatSheetTime(n * 300) + "\n";
    EXPECT_EQ(99u, Parse(strSheet).m_aryTracks.size());
    EXPECT_EQ(7, Parse(FILE_LINE + "TRACK 07 AUDIO\nINDEX 01 00:00:00\n").m_aryTracks[0].m_nNumber);
}

TEST(CueSheet, DecorationsThatAreWrongAreLeftOutWithAWarning)
{
    CUE_SHEET sheet = Parse("CATALOG 123\nISRC USS1Z9900001\nFLAGS DCP\nNONSENSE 1\n" + FILE_LINE + TRACK_1 +
                            "ISRC nonsense\nFLAGS LOUD DCP\n");
    EXPECT_EQ("", sheet.m_strMCN);
    EXPECT_EQ("", sheet.m_aryTracks[0].m_strISRC);
    EXPECT_EQ(TRACK_CONTROL_COPY_PERMITTED, sheet.m_aryTracks[0].m_nControl);
    std::vector<int> aryLines;
    for (const SHEET_ERROR& warning : sheet.m_aryWarnings)
        aryLines.push_back(warning.m_nLine);
    EXPECT_EQ(std::vector<int>({1, 2, 3, 4, 8, 9}), aryLines);
    EXPECT_EQ("the catalogue number \"123\" has not 13 digits and was left out", sheet.m_aryWarnings[0].m_strText);
}

TEST(CueSheet, WarningsEndAtAHundred)
{
    std::string strSheet = FILE_LINE + TRACK_1;
    for (int n = 0; n < 1000; n++)
        strSheet += "NONSENSE\n";
    EXPECT_EQ(SHEET_MAX_WARNINGS, Parse(strSheet).m_aryWarnings.size());
}

struct FAULT_CASE
{
    const char* m_pName;
    std::string m_strSheet;
    int m_nLine;
    const char* m_pText; // how the sentence starts
};

const FAULT_CASE s_aryFaults[] = {
    {"Empty", "", 0, "this is not a CUE sheet, for it has no TRACK line; open the .cue file of the image"},
    {"AnyText", "Dear Sir or Madam,\n\nplease find enclosed", 0, "this is not a CUE sheet"},
    {"NoTrack", FILE_LINE, 0, "this is not a CUE sheet"},
    {"NoFile", TRACK_1, 1, "no FILE line stands before the first TRACK; add one"},
    {"NoFileName", "FILE\n" + TRACK_1, 1, "FILE names no file; write"},
    {"EmptyFileName", "FILE \"\" BINARY\n" + TRACK_1, 1, "FILE names no file; write"},
    {"NoIndex", FILE_LINE + "TRACK 01 AUDIO\n", 2, "track 1 has no INDEX 01; add the line"},
    {"NoIndexInTheMiddle", FILE_LINE + "TRACK 01 AUDIO\n" + "TRACK 02 AUDIO\nINDEX 01 00:00:00\n", 2, "track 1 has no"},
    {"OnlyIndex00", FILE_LINE + "TRACK 01 AUDIO\nINDEX 00 00:00:00\n", 2, "track 1 has no INDEX 01"},
    {"IndexFirst", FILE_LINE + "INDEX 01 00:00:00\n", 2, "INDEX stands before the first TRACK"},
    {"PregapFirst", FILE_LINE + "PREGAP 00:00:00\n", 2, "PREGAP stands before the first TRACK"},
    {"TrackZero", FILE_LINE + "TRACK 00 AUDIO\n", 2, "the track number \"00\" is not one of 1 to 99"},
    {"TrackHundred", FILE_LINE + "TRACK 100 AUDIO\n", 2, "the track number \"100\" is not one of 1 to 99"},
    {"TrackWord", FILE_LINE + "TRACK one AUDIO\n", 2, "the track number \"one\""},
    {"TrackSkipped", FILE_LINE + TRACK_1 + "TRACK 03 AUDIO\n", 4, "track 3 follows track 1, but numbers rise by one"},
    {"TrackTwice", FILE_LINE + TRACK_1 + TRACK_1, 4, "track 1 follows track 1"},
    {"ModeUnknown", FILE_LINE + "TRACK 01 MODE3/2352\n", 2, "the track type \"MODE3/2352\" is unknown; write"},
    {"ModeMissing", FILE_LINE + "TRACK 01\n", 2, "the track type \"\" is unknown"},
    {"Graphics", FILE_LINE + "TRACK 01 CDG\n", 2, "tracks of type \"CDG\" have sectors of 2448 bytes with graphics"},
    {"SubChannels", FILE_LINE + "TRACK 01 MODE1/2448\n", 2, "tracks of type \"MODE1/2448\" have sectors of 2448"},
    {"IndexOutOfOrder", FILE_LINE + TRACK_1 + "INDEX 03 00:01:00\n", 4, "INDEX 03 is out of order"},
    {"IndexTwice", FILE_LINE + TRACK_1 + "INDEX 01 00:01:00\n", 4, "INDEX 01 is out of order"},
    {"IndexStartsAtTwo", FILE_LINE + "TRACK 01 AUDIO\nINDEX 02 00:00:00\n", 3, "INDEX 02 is out of order"},
    {"IndexNumber", FILE_LINE + "TRACK 01 AUDIO\nINDEX 100 00:00:00\n", 3, "the index number \"100\" is not one of"},
    {"IndexTime", FILE_LINE + "TRACK 01 AUDIO\nINDEX 01 00:00:75\n", 3, "\"00:00:75\" is no time; write minutes to 99"},
    {"IndexTimeMissing", FILE_LINE + "TRACK 01 AUDIO\nINDEX 01\n", 3, "\"\" is no time"},
    {"PregapTime", FILE_LINE + "TRACK 01 AUDIO\nPREGAP 2\n", 3, "\"2\" is no time"},
    {"PostgapTime", FILE_LINE + TRACK_1 + "POSTGAP 00:61:00\n", 4, "\"00:61:00\" is no time"},
};

TEST(CueSheet, FaultsNameTheirLineAndAWayOut)
{
    for (const FAULT_CASE& row : s_aryFaults)
    {
        CUE_SHEET sheet;
        SHEET_ERROR error;
        EXPECT_FALSE(ParseCueSheet(row.m_strSheet, sheet, error)) << row.m_pName;
        EXPECT_EQ(row.m_nLine, error.m_nLine) << row.m_pName;
        EXPECT_EQ(0u, error.m_strText.find(row.m_pText)) << row.m_pName << ": " << error.m_strText;
        EXPECT_NE(std::string::npos, error.m_strText.find(';')) << row.m_pName << ": " << error.m_strText;
        EXPECT_NE('.', error.m_strText.back()) << row.m_pName;
    }
}
} // namespace
