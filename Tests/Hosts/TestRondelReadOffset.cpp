// The read offset of a drive, as a user sets it: from then on what is played is what is on the disc.

#include "HostProcess.h"

namespace
{
using json = nlohmann::json;

class RondelReadOffset : public ::testing::Test
{
protected:
    static constexpr int SECTORS = 300;
    static constexpr int OFFSET = 667;

    void SetUp() override
    {
        setenv("XDG_CONFIG_HOME", m_Folder.Get("config").c_str(), 1);
        m_strAudio = MakePatternSectors(0, SECTORS);
        (void)m_Folder.Write("a.bin", m_strAudio);
        m_strCue = m_Folder
                       .Write("a.cue", "FILE \"a.bin\" BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n"
                                       "TRACK 02 AUDIO\nINDEX 01 00:02:00\n")
                       .string();
        (void)m_Folder.Write("a.cue.drive",
                             "Vendor = ACME\nModel = CD 24X\nReadOffset = " + std::to_string(OFFSET) + "\n");
    }
    void SetOffset(const std::string& strValue)
    {
        EXPECT_EQ(0, HostProcess::Run({"options", "set", "Disc Service", "Read Offset ACME CD 24X", strValue}).m_nExit);
    }
    std::string Play(int nTrack)
    {
        const std::string strWav = m_Folder.Get("out.wav").string();
        const HOST_RESULT result = HostProcess::Run({"play", m_strCue, std::to_string(nTrack), "-o", strWav});
        EXPECT_EQ(0, result.m_nExit) << result.m_strErrors;
        return GetWavSamples(ReadWholeFile(strWav));
    }
    json GetOffset()
    {
        return json::parse(HostProcess::Run({"info", "--json", m_strCue}).m_strOutput, nullptr,
                           false)["drive"]["read_offset"];
    }

    DiscFolder m_Folder;
    std::string m_strAudio;
    std::string m_strCue;
};
} // namespace

TEST_F(RondelReadOffset, WhatIsPlayedIsCorrected)
{
    constexpr size_t SECOND_TRACK = 150 * LY_CD_SECTOR_BYTES;
    const std::string strShifted = Play(2);
    EXPECT_TRUE(SameBytes(m_strAudio.substr(SECOND_TRACK - OFFSET * LY_CD_FRAME_BYTES, strShifted.size()), strShifted));
    SetOffset("+667");
    const std::string strFirst = Play(1);
    EXPECT_TRUE(SameBytes(m_strAudio.substr(0, strFirst.size()), strFirst));
    std::string strWanted = m_strAudio;
    strWanted.replace(strWanted.size() - OFFSET * LY_CD_FRAME_BYTES, std::string::npos, OFFSET * LY_CD_FRAME_BYTES,
                      '\0'); // the drive cannot read beyond the end
    const std::string strSecond = Play(2);
    EXPECT_TRUE(SameBytes(strWanted.substr(SECOND_TRACK, strSecond.size()), strSecond));
    EXPECT_EQ(strShifted.size(), strSecond.size());
}

TEST_F(RondelReadOffset, InfoShowsIt)
{
    EXPECT_EQ(0, GetOffset());
    SetOffset("-582");
    EXPECT_EQ(-582, GetOffset());
    EXPECT_NE(std::string::npos,
              HostProcess::Run({"info", m_strCue}).m_strOutput.find("  read offset (frames)         -582\n"));
}

TEST_F(RondelReadOffset, AValueThatIsNoneIsNoted)
{
    SetOffset("some");
    EXPECT_EQ(0, GetOffset());
    const HOST_RESULT result = HostProcess::Run({"info", m_strCue});
    EXPECT_EQ(0, result.m_nExit);
    EXPECT_EQ(
        "rondel: note: The option \"Read Offset ACME CD 24X\" of \"Disc Service\" is \"some\" and was left out of "
        "account; set it to a whole number of sample frames, as +6 or -582.\n",
        result.m_strErrors);
}
