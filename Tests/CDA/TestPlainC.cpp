// The two borders of the plug-in seen from plain C, where an object is a table of functions: a player above it, and a
// disc service below it. Neither knows more than the order of the operations.

#include "PlainPlayer.h"
#include "PlayerDisc.h"
#include "ProcessInfo.h"
#include "UTF8.h"
#include <cstring>
#include <vector>

namespace
{
constexpr const char* PLUGIN_FILE = RONDEL_BIN_DIR "/in_Rondel.so";
constexpr const char* PLAIN_SERVICE_DIR = RONDEL_FAKES_DIR "/plain_disc/";
constexpr const char* SERVICE_DIR = RONDEL_BIN_DIR "/";
constexpr long long ROOM_BYTES = 1000LL * LY_CD_SECTOR_BYTES;

class PlainC : public ::testing::Test
{
protected:
    // Plays with the disc service of that folder.
    long long Play(const char* pServiceDir, const std::wstring& strPath, int nFromMS = 0)
    {
        // The block of paths is the process's, so that the plug-in sees it too; and the plug-in takes its name away
        // when it goes, so that each play has a block of its own.
        CProcessInfo info;
        info.SetSharedLibraryPath(WidenUTF8(pServiceDir).c_str());
        m_aryBytes.assign(static_cast<size_t>(ROOM_BYTES), 0xEE);
        const long long nBytes =
            PlainPlay(PLUGIN_FILE, strPath.c_str(), nFromMS, m_aryBytes.data(), ROOM_BYTES, &m_Track);
        m_aryBytes.resize(static_cast<size_t>(std::max(0LL, nBytes)));
        return nBytes;
    }
    // The frames of the plain service, which are numbered.
    bool IsCount(int nFirstFrame) const
    {
        for (size_t i = 0; i + LY_CD_FRAME_BYTES <= m_aryBytes.size(); i += LY_CD_FRAME_BYTES)
        {
            int nFrame = 0;
            memcpy(&nFrame, m_aryBytes.data() + i, sizeof nFrame);
            if (nFrame != nFirstFrame + static_cast<int>(i / LY_CD_FRAME_BYTES))
                return false;
        }
        return true;
    }

    std::vector<unsigned char> m_aryBytes;
    PLAIN_TRACK m_Track{};
};
} // namespace

TEST_F(PlainC, APlayerPlaysADiscServiceOfTablesOfFunctions)
{
    EXPECT_EQ(GetPlayedBytes(800), Play(PLAIN_SERVICE_DIR, L"cda://plain,2"));
    EXPECT_TRUE(IsCount(200 * 588));
    EXPECT_STREQ(L"CD audio input plug-in", m_Track.szName);
    EXPECT_EQ(800 * 588, m_Track.nTotalSamples);
    EXPECT_EQ(10667, m_Track.nDurationMS); // 800 sectors, rounded up to whole milliseconds
}

TEST_F(PlainC, APlayerSeeksByText)
{
    EXPECT_EQ(GetPlayedBytes(800 - 75), Play(PLAIN_SERVICE_DIR, L"cda://plain,2", 1999));
    EXPECT_TRUE(IsCount(275 * 588));
}

TEST_F(PlainC, ADriveThatTheServiceDoesNotKnowDoesNotOpen) { EXPECT_EQ(-1, Play(PLAIN_SERVICE_DIR, L"cda://other,2")); }

TEST_F(PlainC, APlayerPlaysADiscImage)
{
    const DiscFolder folder;
    (void)folder.Write("a.bin", MakePatternSectors(0, 500));
    const auto sheet = folder.Write("a.cue", "FILE \"a.bin\" BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n"
                                             "TRACK 02 AUDIO\nINDEX 01 00:02:00\n");
    EXPECT_EQ(GetPlayedBytes(350), Play(SERVICE_DIR, L"cda://" + WidenUTF8(sheet.string()) + L",2"));
    const std::string strWanted = MakePatternSectors(150, 350).substr(0, m_aryBytes.size());
    EXPECT_TRUE(SameBytes(strWanted, std::string(m_aryBytes.begin(), m_aryBytes.end())));
}
