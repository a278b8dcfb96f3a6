// rondel make-disc: audio files become a disc image that lists and plays as they sounded.

#include "HostProcess.h"
#include <sndfile.h>

namespace
{
using json = nlohmann::json;

class RondelMakeDisc : public ::testing::Test
{
protected:
    struct AUDIO
    {
        int nFormat = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
        int nChannels = 2;
        int nRate = LY_CD_SAMPLE_RATE;
        const char* pTitle = nullptr;
        const char* pArtist = nullptr;
    };

    std::string Get(const std::string& strName) const { return m_Folder.Get(strName).string(); }
    // The bytes as 16-bit samples, in the format asked for.
    std::string WriteAudio(const std::string& strName, const std::string& strSamples, const AUDIO& audio) const
    {
        SF_INFO info = {};
        info.format = audio.nFormat;
        info.channels = audio.nChannels;
        info.samplerate = audio.nRate;
        SNDFILE* pFile = sf_open(Get(strName).c_str(), SFM_WRITE, &info);
        if (pFile == nullptr)
        {
            ADD_FAILURE() << sf_strerror(nullptr);
            return {};
        }
        if (audio.pTitle != nullptr)
            (void)sf_set_string(pFile, SF_STR_TITLE, audio.pTitle);
        if (audio.pArtist != nullptr)
            (void)sf_set_string(pFile, SF_STR_ARTIST, audio.pArtist);
        std::vector<short> arySamples(strSamples.size() / 2);
        memcpy(arySamples.data(), strSamples.data(), arySamples.size() * 2);
        (void)sf_write_short(pFile, arySamples.data(), static_cast<sf_count_t>(arySamples.size()));
        (void)sf_close(pFile);
        return Get(strName);
    }
    HOST_RESULT MakeDisc(std::vector<std::string> aryArguments) const
    {
        aryArguments.insert(aryArguments.begin(), {"make-disc", "-o", Get("disc.cue")});
        return HostProcess::Run(aryArguments);
    }
    json GetInfo() const
    {
        const HOST_RESULT result = HostProcess::Run({"info", "--json", Get("disc.cue")});
        EXPECT_EQ(0, result.m_nExit) << result.m_strErrors;
        EXPECT_EQ("", result.m_strErrors);
        return json::parse(result.m_strOutput, nullptr, false);
    }
    std::string Play(int nTrack) const
    {
        const HOST_RESULT result =
            HostProcess::Run({"play", Get("disc.cue"), std::to_string(nTrack), "-o", Get("played.wav")});
        EXPECT_EQ(0, result.m_nExit) << result.m_strErrors;
        return GetWavSamples(ReadWholeFile(Get("played.wav")));
    }
    void ExpectNothingMade() const
    {
        for (const char* pName : {"disc.cue", "disc.bin", "disc.cue.part", "disc.bin.part"})
            EXPECT_FALSE(std::filesystem::exists(Get(pName))) << pName;
    }
    static std::string Cut(const std::string& strSectors)
    {
        return strSectors.substr(0, strSectors.size() / REQUEST_BYTES * REQUEST_BYTES);
    }

    DiscFolder m_Folder;
};
} // namespace

TEST_F(RondelMakeDisc, ADiscOfOneTrackHasOneTrack)
{
    const HOST_RESULT made = MakeDisc({WriteAudio("one.wav", MakePatternSectors(0, 375), {})});
    EXPECT_EQ(Get("disc.cue") + ": 1 track, 00:05.00\n", made.m_strOutput);
}

TEST_F(RondelMakeDisc, WavAndFlacComeBackByteForByte)
{
    AUDIO flac;
    flac.nFormat = SF_FORMAT_FLAC | SF_FORMAT_PCM_16;
    AUDIO aiff;
    aiff.nFormat = SF_FORMAT_AIFF | SF_FORMAT_PCM_16;
    const HOST_RESULT made = MakeDisc({WriteAudio("one.wav", MakePatternSectors(0, 400), {}),
                                       WriteAudio("two.flac", MakePatternSectors(1000, 300), flac),
                                       WriteAudio("three.aiff", MakePatternSectors(2000, 350), aiff)});
    EXPECT_EQ(0, made.m_nExit) << made.m_strErrors;
    EXPECT_EQ(Get("disc.cue") + ": 3 tracks, 00:14.00\n", made.m_strOutput);
    EXPECT_TRUE(SameBytes(MakePatternSectors(0, 400) + MakePatternSectors(1000, 300) + MakePatternSectors(2000, 350),
                          ReadWholeFile(Get("disc.bin"))));
    EXPECT_TRUE(SameBytes(Cut(MakePatternSectors(0, 400)), Play(1)));
    EXPECT_TRUE(SameBytes(Cut(MakePatternSectors(1000, 300)), Play(2)));
    EXPECT_TRUE(SameBytes(Cut(MakePatternSectors(2000, 350)), Play(3)));
    const json disc = GetInfo();
    ASSERT_EQ(3U, disc["tracks"].size());
    EXPECT_EQ(400, disc["tracks"][1]["start_sector"]);
    EXPECT_EQ(350, disc["tracks"][2]["sectors"]);
}

TEST_F(RondelMakeDisc, TagsAndNamesBecomeTitles)
{
    AUDIO tagged;
    tagged.nFormat = SF_FORMAT_FLAC | SF_FORMAT_PCM_16;
    tagged.pTitle = "S\xC3\xA9lection";
    tagged.pArtist = "A Guest";
    const HOST_RESULT made = MakeDisc({"--title", "The \"Disc\"", "--performer", "The Band",
                                       WriteAudio("a.flac", MakePatternSectors(0, 300), tagged),
                                       WriteAudio("02 No Tag.wav", MakePatternSectors(0, 300), {})});
    ASSERT_EQ(0, made.m_nExit) << made.m_strErrors;
    const json disc = GetInfo();
    EXPECT_EQ("The 'Disc'", disc["title"]); // a sheet cannot hold the double quote
    EXPECT_EQ("The Band", disc["performer"]);
    EXPECT_EQ("S\xC3\xA9lection", disc["tracks"][0]["title"]);
    EXPECT_EQ("A Guest", disc["tracks"][0]["performer"]);
    EXPECT_EQ("02 No Tag", disc["tracks"][1]["title"]);
}

TEST_F(RondelMakeDisc, GivenTitlesGoAheadOfTags)
{
    const std::string strFile = WriteAudio("a.wav", MakePatternSectors(0, 300), {});
    ASSERT_EQ(
        0, MakeDisc({"--track-title", "Given One", "--track-title", "Given Two", strFile, strFile, strFile}).m_nExit);
    const json disc = GetInfo();
    EXPECT_EQ("Given One", disc["tracks"][0]["title"]);
    EXPECT_EQ("Given Two", disc["tracks"][1]["title"]);
    EXPECT_EQ("a", disc["tracks"][2]["title"]);
}

TEST_F(RondelMakeDisc, GapsAreSilenceAheadOfEachLaterTrack)
{
    ASSERT_EQ(0, MakeDisc({"--gap", "2", WriteAudio("a.wav", MakePatternSectors(0, 300), {}),
                           WriteAudio("b.wav", MakePatternSectors(500, 300), {})})
                     .m_nExit);
    const json disc = GetInfo();
    EXPECT_EQ(450, disc["tracks"][0]["sectors"]); // a pregap counts to the track before
    EXPECT_EQ(450, disc["tracks"][1]["start_sector"]);
    EXPECT_EQ(300, disc["tracks"][1]["sectors"]);
    EXPECT_TRUE(SameBytes(Cut(MakePatternSectors(0, 300) + std::string(150 * LY_CD_SECTOR_BYTES, '\0')), Play(1)));
    EXPECT_TRUE(SameBytes(Cut(MakePatternSectors(500, 300)), Play(2)));
}

TEST_F(RondelMakeDisc, ATrackIsFilledUpToItsLastSectorAndMonoIsDoubled)
{
    AUDIO mono;
    mono.nChannels = 1;
    const std::string strSamples = MakePattern(0, 2 * 200000);
    ASSERT_EQ(
        0,
        MakeDisc({WriteAudio("a.wav", strSamples, mono), WriteAudio("b.wav", MakePatternSectors(0, 300), {})}).m_nExit);
    std::string strStereo;
    for (size_t i = 0; i < strSamples.size(); i += 2)
        strStereo += strSamples.substr(i, 2) + strSamples.substr(i, 2);
    strStereo.resize(341 * LY_CD_SECTOR_BYTES); // 200,000 frames are 340.1 sectors
    EXPECT_TRUE(SameBytes(strStereo + MakePatternSectors(0, 300), ReadWholeFile(Get("disc.bin"))));
    EXPECT_EQ(341, GetInfo()["tracks"][1]["start_sector"]);
}

TEST_F(RondelMakeDisc, NothingThatIsThereIsReplacedUnlessAsked)
{
    const std::string strFile = WriteAudio("a.wav", MakePatternSectors(0, 300), {});
    (void)m_Folder.Write("disc.cue", "old sheet");
    ExpectSentence(MakeDisc({strFile}), 1, {"disc.cue is already there", "--force"});
    EXPECT_EQ("old sheet", ReadWholeFile(Get("disc.cue")));
    std::filesystem::remove(Get("disc.cue"));
    (void)m_Folder.Write("disc.bin", "old image");
    ExpectSentence(MakeDisc({strFile}), 1, {"disc.bin is already there", "--force"});
    EXPECT_EQ("old image", ReadWholeFile(Get("disc.bin")));
    EXPECT_EQ(0, MakeDisc({"--force", strFile}).m_nExit);
    EXPECT_TRUE(SameBytes(MakePatternSectors(0, 300), ReadWholeFile(Get("disc.bin"))));
}

TEST_F(RondelMakeDisc, WhatCannotBecomeADiscIsRefused)
{
    const std::string strFile = WriteAudio("a.wav", MakePatternSectors(0, 300), {});
    ExpectSentence(MakeDisc({Get("none.wav")}), 1, {"none.wav was not found", "check its name"});
    ExpectSentence(MakeDisc({m_Folder.Write("letter.wav", "Dear Sir").string()}), 1,
                   {"letter.wav is no audio file", "take WAV, FLAC"});
    ExpectSentence(MakeDisc({Get("")}), 1, {"is a folder", "name the audio files in it"});
    AUDIO wrong;
    wrong.nRate = 48000;
    ExpectSentence(MakeDisc({strFile, WriteAudio("fast.wav", MakePatternSectors(0, 300), wrong)}), 1,
                   {"fast.wav has 48000 Hz", "sox"});
    wrong.nRate = LY_CD_SAMPLE_RATE;
    wrong.nChannels = 6;
    ExpectSentence(MakeDisc({WriteAudio("wide.wav", MakePatternSectors(0, 300), wrong)}), 1,
                   {"wide.wav has 44100 Hz and 6 channels", "sox"});
    ExpectSentence(MakeDisc({"--gap", "-1", strFile}), 1, {"--gap takes 0 to 60 seconds"});
    ExpectSentence(MakeDisc({"--gap", "61", strFile}), 1, {"--gap takes 0 to 60 seconds"});
    ExpectSentence(MakeDisc({"--gap", "nan", strFile}), 1, {"--gap takes 0 to 60 seconds"});
    ExpectSentence(MakeDisc({"--track-title", "A", "--track-title", "B", strFile}), 1,
                   {"2 --track-title but only 1 files", "leave some out"});
    ExpectSentence(MakeDisc(std::vector<std::string>(100, strFile)), 1, {"at most 99 tracks", "make several discs"});
    ExpectNothingMade();
    ExpectSentence(HostProcess::Run({"make-disc", "-o", Get("disc.wav"), strFile}), 1,
                   {"-o takes the name of a .cue file"});
    ExpectSentence(HostProcess::Run({"make-disc", "-o", Get("no/disc.cue"), strFile}), 1,
                   {"disc.bin cannot be written", "choose a folder"});
}

TEST_F(RondelMakeDisc, AFullDiskLeavesNothingBehind)
{
    const std::string strFile = WriteAudio("a.wav", MakePatternSectors(0, 300), {});
    ExpectSentence(HostProcess::RunShell("trap '' XFSZ; ulimit -f 100; exec \"$RONDEL\" make-disc -o '" +
                                         Get("disc.cue") + "' '" + strFile + "'"),
                   1, {"disc.bin could not be written to its end", "is the disk full?", "another place"});
    ExpectNothingMade();
}

TEST_F(RondelMakeDisc, NinetyNineTracksAndNamesOfAllKinds)
{
    const std::string strFile = WriteAudio("tune \xF0\x9F\x8E\xB5, one.wav", MakePatternSectors(0, 10), {});
    ASSERT_EQ(0, MakeDisc(std::vector<std::string>(99, strFile)).m_nExit);
    const json disc = GetInfo();
    ASSERT_EQ(99U, disc["tracks"].size());
    EXPECT_EQ("tune ?, one", disc["tracks"][98]["title"]); // CD-Text knows Latin letters only
    EXPECT_TRUE(SameBytes(Cut(MakePatternSectors(0, 10)), Play(99)));
}
