// The built plug-in, loaded and called as a player does, on disc images through the built disc service beside it: what
// it plays is what the image holds, byte for byte.

#include "PlayerDisc.h"
#include "PluginAsPlayer.h"
#include <atomic>
#include <climits>
#include <thread>

namespace
{
constexpr const char* DISC_SERVICE_FILE = RONDEL_PLAYER_DIR "/libLyDisc.dylib";

class PluginTest : public ::testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(m_Plugin.Attach()); }
    void TearDown() override { m_Plugin.Detach(); }

    // All that a track plays, whatever the size of the requests.
    std::string PlayTrack(const std::filesystem::path& disc, int nTrack, int nRequest = 65536)
    {
        PlayerSource source = m_Plugin.GetSource();
        if (source.Open(disc, nTrack) != 0)
            return "did not open";
        return source.Pull(LLONG_MAX, nRequest);
    }
    // The disc has nSectors from nFirst on as the track; the image is the pattern from nPatternSector on.
    void ExpectTrack(const std::filesystem::path& disc, int nTrack, const std::string& strTrack)
    {
        const long long nSectors = static_cast<long long>(strTrack.size()) / LY_CD_SECTOR_BYTES;
        EXPECT_TRUE(
            SameBytes(strTrack.substr(0, static_cast<size_t>(GetPlayedBytes(nSectors))), PlayTrack(disc, nTrack)))
            << "track " << nTrack;
    }

    DiscFolder m_Folder;
    PlayerPlugin m_Plugin;
};

std::string Silence(int nSectors) { return std::string(static_cast<size_t>(nSectors) * LY_CD_SECTOR_BYTES, '\0'); }

std::wstring GetURL(const std::filesystem::path& disc) { return L"cda://" + WidenUTF8(disc.string()) + L",1"; }

constexpr const char* ONE_TRACK_SHEET = "FILE \"a.bin\" BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n";
} // namespace

TEST_F(PluginTest, FormatAndNamesAreAnsweredAsText)
{
    (void)m_Folder.Write("a.bin", MakePatternSectors(0, 1000));
    PlayerSource source = m_Plugin.GetSource();
    EXPECT_EQ(L"CD audio input plug-in", source.Get(PlayerSource::FIELD_NAME));
    EXPECT_EQ(L"CDA; CDA File (*.CDA)", source.Get(PlayerSource::FIELD_FILE_TYPES));
    EXPECT_EQ(L"-1", source.Get(PlayerSource::FIELD_BITRATE));
    ASSERT_EQ(0, source.Open(m_Folder.Write("a.cue", ONE_TRACK_SHEET), 1));
    EXPECT_EQ(L"1411", source.Get(PlayerSource::FIELD_BITRATE));
    EXPECT_EQ(L"44100", source.Get(PlayerSource::FIELD_SAMPLE_RATE));
    EXPECT_EQ(L"2", source.Get(PlayerSource::FIELD_CHANNELS));
    EXPECT_EQ(L"16", source.Get(PlayerSource::FIELD_BITS));
    EXPECT_EQ(L"588000", source.Get(PlayerSource::FIELD_TOTAL_SAMPLES));
    EXPECT_EQ(L"13334", source.Get(PlayerSource::FIELD_DURATION)); // 13,333.3 ms, rounded up
    EXPECT_EQ(L"4", source.Get(24));
    EXPECT_EQ(L"0", source.Get(28));
    for (const int nField : {-1, 3, 5, 6, 7, 11, 13, 23, 25, 27, 29, 1000})
    {
        int nResult = 0;
        EXPECT_EQ(L"untouched", source.Get(nField, &nResult)) << nField;
        EXPECT_EQ(-1, nResult) << nField;
    }
    EXPECT_EQ(-1, source.Set(PlayerSource::FIELD_BITRATE, L"1"));
    EXPECT_EQ(-1, source.DoCommand(2));
}

TEST_F(PluginTest, ATrackIsItsBytesUpToTheLastWholeRequest)
{
    const std::string strDisc = MakePatternSectors(0, 1000);
    (void)m_Folder.Write("a.bin", strDisc);
    const auto cue = m_Folder.Write("a.cue", ONE_TRACK_SHEET);
    const std::string strPlayed = strDisc.substr(0, static_cast<size_t>(GetPlayedBytes(1000)));
    ASSERT_EQ(2350080U, strPlayed.size()); // 1020 requests of 2304; 1920 bytes are left over
    for (const int nRequest : {REQUEST_BYTES, 1, 1000, 4096, 65536, 1000000})
    {
        if (nRequest != 1)
            EXPECT_TRUE(SameBytes(strPlayed, PlayTrack(cue, 1, nRequest))) << nRequest;
        else
        {
            PlayerSource source = m_Plugin.GetSource();
            ASSERT_EQ(0, source.Open(cue, 1));
            EXPECT_TRUE(SameBytes(strPlayed.substr(0, 10000), source.Pull(10000, 1)));
        }
    }
}

TEST_F(PluginTest, TheEndIsZeroAndStaysSo)
{
    (void)m_Folder.Write("a.bin", MakePatternSectors(0, 300));
    PlayerSource source = m_Plugin.GetSource();
    ASSERT_EQ(0, source.Open(m_Folder.Write("a.cue", ONE_TRACK_SHEET), 1));
    EXPECT_EQ(static_cast<size_t>(GetPlayedBytes(300)), source.Pull(LLONG_MAX, 10000).size());
    char aryBytes[100];
    EXPECT_EQ(0, source.GetSamples(aryBytes, 100));
    EXPECT_EQ(0, source.GetSamples(aryBytes, 100));
    EXPECT_EQ(0, source.GetSamples(aryBytes, 0));
}

TEST_F(PluginTest, PregapsBelongToTheTrackBeforeThem)
{
    // 1 from 0 to 300; in the file a pregap to 350; 2 to 700; a pregap of 75 that is in no file; 3 to 1000.
    const std::string strFile = MakePatternSectors(0, 1000);
    (void)m_Folder.Write("a.bin", strFile);
    const auto cue = m_Folder.Write("a.cue", "FILE \"a.bin\" BINARY\n"
                                             "TRACK 01 AUDIO\nFLAGS PRE\nINDEX 01 00:00:00\n"
                                             "TRACK 02 AUDIO\nFLAGS 4CH DCP\nINDEX 00 00:04:00\nINDEX 01 00:04:50\n"
                                             "INDEX 02 00:06:00\n"
                                             "TRACK 03 AUDIO\nFLAGS PRE 4CH\nPREGAP 00:01:00\nINDEX 01 00:09:25\n");
    ExpectTrack(cue, 1, MakePatternSectors(0, 350));
    ExpectTrack(cue, 2, MakePatternSectors(350, 350) + Silence(75));
    ExpectTrack(cue, 3, MakePatternSectors(700, 300));
}

TEST_F(PluginTest, AudioAheadOfTheFirstTrackIsNotPartOfIt)
{
    (void)m_Folder.Write("a.bin", MakePatternSectors(0, 600));
    const auto cue = m_Folder.Write("a.cue", "FILE \"a.bin\" BINARY\nTRACK 01 AUDIO\n"
                                             "INDEX 00 00:00:00\nINDEX 01 00:02:00\n");
    ExpectTrack(cue, 1, MakePatternSectors(150, 450));
}

TEST_F(PluginTest, AudioBehindADataTrackPlays)
{
    (void)m_Folder.Write("a.bin", MakePatternSectors(0, 900));
    const auto cue = m_Folder.Write("a.cue", "FILE \"a.bin\" BINARY\nTRACK 01 MODE1/2352\nINDEX 01 00:00:00\n"
                                             "TRACK 02 AUDIO\nINDEX 00 00:04:00\nINDEX 01 00:06:00\n"
                                             "TRACK 03 AUDIO\nINDEX 01 00:08:00\n");
    ExpectTrack(cue, 2, MakePatternSectors(450, 150));
    ExpectTrack(cue, 3, MakePatternSectors(600, 300));
}

TEST_F(PluginTest, ADataTrackPlaysAsSilence)
{
    (void)m_Folder.Write("a.bin", MakePatternSectors(0, 600));
    const auto cue = m_Folder.Write("a.cue", "FILE \"a.bin\" BINARY\nTRACK 01 MODE1/2352\nINDEX 01 00:00:00\n"
                                             "TRACK 02 AUDIO\nINDEX 01 00:04:00\n");
    ExpectTrack(cue, 1, Silence(300)); // refused by the drive; old bytes never pass for audio
}

TEST_F(PluginTest, TheLastAudioTrackOfAnEnhancedCDEndsAheadOfTheSessionGap)
{
    (void)m_Folder.Write("audio.bin", MakePatternSectors(0, 700));
    (void)m_Folder.Write("data.iso", std::string(300 * 2048, 'd'));
    const auto cue = m_Folder.Write("a.cue", "FILE \"audio.bin\" BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n"
                                             "TRACK 02 AUDIO\nINDEX 01 00:04:00\nREM SESSION 02\n"
                                             "FILE \"data.iso\" BINARY\nTRACK 03 MODE1/2048\nINDEX 01 00:00:00\n");
    ExpectTrack(cue, 1, MakePatternSectors(0, 300));
    ExpectTrack(cue, 2, MakePatternSectors(300, 400));
}

TEST_F(PluginTest, NinetyNineTracksPlay)
{
    constexpr int TRACK_SECTORS = 40;
    (void)m_Folder.Write("a.bin", MakePatternSectors(0, 99 * TRACK_SECTORS));
    std::string strSheet = "FILE \"a.bin\" BINARY\n";
    for (int nTrack = 1; nTrack <= 99; ++nTrack)
        strSheet += "TRACK " + std::string(nTrack < 10 ? "0" : "") + std::to_string(nTrack) + " AUDIO\nINDEX 01 " +
                    FormatSheetTime((nTrack - 1) * TRACK_SECTORS) + "\n";
    const auto cue = m_Folder.Write("a.cue", strSheet);
    for (int nTrack = 1; nTrack <= 99; ++nTrack)
        ExpectTrack(cue, nTrack, MakePatternSectors((nTrack - 1) * TRACK_SECTORS, TRACK_SECTORS));
}

TEST_F(PluginTest, ATrackOfSeventyNineMinutesPlaysAtBothEndsAndBetween)
{
    constexpr long long SECONDS = 79 * 60;
    const auto bin = m_Folder.Write("a.bin", "");
    std::filesystem::resize_file(bin, SECONDS * LY_CD_SECOND_BYTES); // a file of holes
    const auto cue = m_Folder.Write("a.cue", ONE_TRACK_SHEET);
    for (const long long nSecond : {0LL, 1000LL, 4738LL})
    {
        std::fstream stream(bin, std::ios::binary | std::ios::in | std::ios::out);
        stream.seekp(nSecond * LY_CD_SECOND_BYTES);
        const std::string strStretch = MakePatternSectors(nSecond * 75, 75);
        stream.write(strStretch.data(), static_cast<std::streamsize>(strStretch.size()));
    }
    PlayerSource source = m_Plugin.GetSource();
    ASSERT_EQ(0, source.Open(cue, 1));
    EXPECT_EQ(SECONDS * 1000, source.GetNumber(PlayerSource::FIELD_DURATION));
    EXPECT_EQ(SECONDS * 44100, source.GetNumber(PlayerSource::FIELD_TOTAL_SAMPLES));
    const std::string strStart = source.Pull(2 * LY_CD_SECOND_BYTES);
    EXPECT_TRUE(SameBytes(MakePatternSectors(0, 75) + Silence(75), strStart));
    ASSERT_EQ(0, source.Seek(999 * 1000));
    EXPECT_TRUE(
        SameBytes(Silence(75) + MakePatternSectors(75000, 75) + Silence(75), source.Pull(3 * LY_CD_SECOND_BYTES)));
    ASSERT_EQ(0, source.Seek(4738 * 1000 + 999));
    const std::string strLast = MakePatternSectors(4738 * 75, 75) + Silence(75);
    EXPECT_TRUE(SameBytes(strLast.substr(0, static_cast<size_t>(GetPlayedBytes(150))), source.Pull(LLONG_MAX)));
}

TEST_F(PluginTest, SeeksLandOnWholeSecondsAndGoOnFromThere)
{
    (void)m_Folder.Write("a.bin", MakePatternSectors(0, 1500));
    PlayerSource source = m_Plugin.GetSource();
    ASSERT_EQ(0, source.Open(m_Folder.Write("a.cue", ONE_TRACK_SHEET), 1));
    for (const int nMilliseconds : {1999, 0, 19999, 5000, 1})
    {
        ASSERT_EQ(0, source.Seek(nMilliseconds));
        EXPECT_TRUE(SameBytes(MakePatternSectors(nMilliseconds / 1000 * 75, 30), source.Pull(30 * 2352, 999)))
            << nMilliseconds;
    }
    (void)source.Pull(LLONG_MAX);
    ASSERT_EQ(0, source.Seek(3000)); // from the end back
    EXPECT_TRUE(SameBytes(MakePatternSectors(225, 75), source.Pull(75 * 2352)));
    // Behind the end the place stays; only what the source had taken out of the ring is gone.
    ASSERT_EQ(0, source.Seek(20000));
    const long long nTaken = (75 * 2352 + REQUEST_BYTES - 1) / REQUEST_BYTES * REQUEST_BYTES;
    EXPECT_TRUE(SameBytes(MakePattern(225 * 2352 + nTaken, 2304), source.Pull(2304)));
}

TEST_F(PluginTest, TwoSourcesPlayAtOnceOnTwoThreads)
{
    (void)m_Folder.Write("a.bin", MakePatternSectors(0, 2000));
    (void)m_Folder.Write("b.bin", MakePatternSectors(5000, 2000));
    const auto a = m_Folder.Write("a.cue", "FILE \"a.bin\" BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n"
                                           "TRACK 02 AUDIO\nINDEX 01 00:13:25\n");
    const auto b = m_Folder.Write("b.cue", "FILE \"b.bin\" BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n");
    PlayerSource arySources[] = {m_Plugin.GetSource(), m_Plugin.GetSource(), m_Plugin.GetSource()};
    ASSERT_EQ(0, arySources[0].Open(a, 1) + arySources[1].Open(a, 2) + arySources[2].Open(b, 1));
    std::string aryPlayed[3];
    std::thread aryThreads[] = {std::thread([&] { aryPlayed[0] = arySources[0].Pull(LLONG_MAX, 5000); }),
                                std::thread([&] { aryPlayed[1] = arySources[1].Pull(LLONG_MAX, 3000); }),
                                std::thread([&] { aryPlayed[2] = arySources[2].Pull(LLONG_MAX, 7000); })};
    for (std::thread& thread : aryThreads)
        thread.join();
    EXPECT_TRUE(SameBytes(MakePattern(0, GetPlayedBytes(1000)), aryPlayed[0]));
    EXPECT_TRUE(SameBytes(MakePattern(1000 * 2352, GetPlayedBytes(1000)), aryPlayed[1]));
    EXPECT_TRUE(SameBytes(MakePattern(5000 * 2352, GetPlayedBytes(2000)), aryPlayed[2]));
}

// Making a source applies the user's locale, which is one for the whole process.
TEST_F(PluginTest, SourcesAreMadeOpenedAndDestroyedOnSeveralThreadsAtOnce)
{
    (void)m_Folder.Write("a.bin", MakePatternSectors(0, 100));
    const auto cue = m_Folder.Write("a.cue", ONE_TRACK_SHEET);
    const std::string strTrack = MakePattern(0, GetPlayedBytes(100));
    std::atomic<int> nGood{0};
    std::vector<std::thread> aryThreads;
    for (int nThread = 0; nThread < 4; ++nThread)
        aryThreads.emplace_back(
            [&]
            {
                for (int n = 0; n < 10; ++n)
                    nGood += PlayTrack(cue, 1) == strTrack;
            });
    for (std::thread& thread : aryThreads)
        thread.join();
    EXPECT_EQ(40, nGood);
}

TEST_F(PluginTest, NamesOfAllKindsOpen)
{
    for (const char* pName : {"plain.cue", "with blanks .cue", "caf\xE9 of bytes.cue", "Grüße.cue", "日本.cue",
                              "tune \xF0\x9F\x8E\xB5.cue", "per%20cent.cue", "a+b&c'd.cue"})
    {
        (void)m_Folder.Write("a.bin", MakePatternSectors(0, 300));
        ExpectTrack(m_Folder.Write(pName, ONE_TRACK_SHEET), 1, MakePatternSectors(0, 300));
    }
    // A comma ends the drive in a path; a file URL carries it.
    const auto comma = m_Folder.Write("one, two.cue", ONE_TRACK_SHEET);
    PlayerSource source = m_Plugin.GetSource();
    EXPECT_EQ(1, source.Open(comma, 1));
    PlayerSource byURL = m_Plugin.GetSource();
    EXPECT_EQ(0, byURL.OpenURL(L"file://" + WidenUTF8(m_Folder.Get("one%2C two.cue").string()), 1));
    EXPECT_TRUE(SameBytes(MakePattern(0, REQUEST_BYTES), byURL.Pull(REQUEST_BYTES)));
}

TEST_F(PluginTest, WhatIsNoDiscIsRefusedWithOneAndTheObjectGoesInPeace)
{
    (void)m_Folder.Write("random.cue", MakePattern(0, 5000));
    const auto lost = m_Folder.Write("lost.cue", "FILE \"gone.bin\" BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n");
    const auto folder = m_Folder.Get("");
    for (const std::wstring& strPath :
         {GetURL(m_Folder.Get("none.cue")), GetURL(m_Folder.Get("random.cue")), GetURL(lost), GetURL(folder),
          std::wstring(L"cda://E:,5"), std::wstring(L"cda://"), std::wstring(L"cda://,"), std::wstring(L""),
          std::wstring(100000, L'x'), std::wstring(L"cda://\xD800\xDC00,1")})
    {
        PlayerSource source = m_Plugin.GetSource();
        EXPECT_EQ(1, source.Open(strPath));
        EXPECT_EQ(L"-1", source.Get(PlayerSource::FIELD_TOTAL_SAMPLES));
        char aryBytes[100];
        EXPECT_GE(0, source.GetSamples(aryBytes, 100));
        (void)source.Seek(1000);
    }
}

TEST_F(PluginTest, ATrackThatIsNotThereIsAFewSectors)
{
    (void)m_Folder.Write("a.bin", MakePatternSectors(0, 300));
    const auto cue = m_Folder.Write("a.cue", ONE_TRACK_SHEET);
    PlayerSource source = m_Plugin.GetSource();
    EXPECT_EQ(0, source.Open(cue, 7));
    EXPECT_EQ(16 * 588, source.GetNumber(PlayerSource::FIELD_TOTAL_SAMPLES)); // the error code counts as sectors
    EXPECT_EQ(static_cast<size_t>(GetPlayedBytes(16)), source.Pull(LLONG_MAX).size());
}

TEST_F(PluginTest, WhatABrokenImageStillHoldsPlaysAndTheRestIsSilence)
{
    // The sheet promises track 2 from second 8 on; the file ends after 6 seconds.
    (void)m_Folder.Write("a.bin", MakePatternSectors(0, 450));
    const auto cue = m_Folder.Write("a.cue", "FILE \"a.bin\" BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n"
                                             "TRACK 02 AUDIO\nINDEX 01 00:08:00\n");
    const std::string strPlayed = PlayTrack(cue, 1);
    ASSERT_EQ(static_cast<size_t>(GetPlayedBytes(600)), strPlayed.size());
    const size_t nWhole = 450 / 27 * 27 * LY_CD_SECTOR_BYTES; // reads that the file serves whole
    EXPECT_TRUE(SameBytes(MakePatternSectors(0, 450).substr(0, nWhole), strPlayed.substr(0, nWhole)));
    const size_t nBehind = 450 * LY_CD_SECTOR_BYTES;
    EXPECT_TRUE(SameBytes(std::string(strPlayed.size() - nBehind, '\0'), strPlayed.substr(nBehind)));
}

// ---- Attach, Detach and GetInputSource

TEST(PluginLife, GetInputSourceWorksWithoutAttach)
{
    const DiscFolder folder;
    (void)folder.Write("a.bin", MakePatternSectors(0, 300));
    const auto cue = folder.Write("a.cue", ONE_TRACK_SHEET);
    PlayerPlugin plugin;
    {
        PlayerSource source = plugin.GetSource();
        ASSERT_EQ(0, source.Open(cue, 1));
        EXPECT_TRUE(SameBytes(MakePattern(0, GetPlayedBytes(300)), source.Pull(LLONG_MAX)));
    }
    EXPECT_TRUE(plugin.Attach());
    {
        // It goes before the last Detach, which unloads the disc service that it reads from.
        PlayerSource source = plugin.GetSource();
        EXPECT_EQ(0, source.Open(cue, 1));
    }
    plugin.Detach();
}

TEST(PluginLife, TheOwnerIsNotAsked)
{
    // An owner whose table is nowhere: a call on it would be the end.
    void* aryNoTable[1] = {nullptr};
    PlayerPlugin plugin;
    PlayerSource source = plugin.GetSource(aryNoTable);
    EXPECT_EQ(1, source.Open(L"cda://E:,1"));
}

TEST(PluginLife, OnlyTheDetachThatEndsTheLastAttachLetsTheSiblingsGo)
{
    const DiscFolder folder;
    (void)folder.Write("a.bin", MakePatternSectors(0, 300));
    const auto cue = folder.Write("a.cue", ONE_TRACK_SHEET);
    PlayerPlugin plugin;
    ASSERT_TRUE(plugin.Attach());
    ASSERT_TRUE(plugin.Attach());
    EXPECT_FALSE(PlayerPlugin::IsLoaded(DISC_SERVICE_FILE));
    EXPECT_EQ(0, plugin.GetSource().Open(cue, 1));
    EXPECT_TRUE(PlayerPlugin::IsLoaded(DISC_SERVICE_FILE));
    plugin.Detach();
    EXPECT_TRUE(PlayerPlugin::IsLoaded(DISC_SERVICE_FILE));
    EXPECT_EQ(0, plugin.GetSource().Open(cue, 1));
    plugin.Detach();
    EXPECT_FALSE(PlayerPlugin::IsLoaded(DISC_SERVICE_FILE));
    // Loaded again on demand: attached or not makes no difference.
    ASSERT_TRUE(plugin.Attach());
    EXPECT_EQ(0, plugin.GetSource().Open(cue, 1));
    plugin.Detach();
    EXPECT_FALSE(PlayerPlugin::IsLoaded(DISC_SERVICE_FILE));
}

TEST(PluginLife, OneDetachTooManyIsHarmless)
{
    PlayerPlugin plugin;
    plugin.Detach();
    plugin.Detach();
    EXPECT_TRUE(plugin.Attach());
    EXPECT_EQ(1, plugin.GetSource().Open(L"cda://E:,1"));
    plugin.Detach();
}

TEST(PluginLife, AfterItsLastUseTheLibraryIsUnloaded)
{
    {
        PlayerPlugin plugin;
        ASSERT_TRUE(plugin.Attach());
        EXPECT_EQ(1, plugin.GetSource().Open(L"cda://E:,1"));
        plugin.Detach();
        EXPECT_TRUE(PlayerPlugin::IsLoaded(PlayerPlugin::FILE));
    }
    EXPECT_FALSE(PlayerPlugin::IsLoaded(PlayerPlugin::FILE));
    EXPECT_FALSE(PlayerPlugin::IsLoaded(DISC_SERVICE_FILE));
}
