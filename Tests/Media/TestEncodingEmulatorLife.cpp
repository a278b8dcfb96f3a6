// The life of the feed of a file: cancel, destruction, files by name, and real encoders.

#include "LySharedToolsHelper.h"
#include "Media/EncodingFeed.h"
#include "ProcessInfo.h"
#include "TempFolder.h"
#include <atomic>

using POSTS = std::vector<MessageQueue::POST>;
using FEED = CEncoderPluginFileBasedEncodingEmulator;

namespace
{
// An encoder that takes its time over one piece.
class SlowEncoder final : public FakeEncoder
{
public:
    bool OnData(const unsigned char* pData, int nBytes) override
    {
        m_bInPiece = true;
        while (m_bHold)
            std::this_thread::yield();
        return FakeEncoder::OnData(pData, nBytes);
    }
    std::atomic<bool> m_bInPiece{false};
    std::atomic<bool> m_bHold{true};
};

LyString Wide(const std::string& str)
{
    return LyString().FromUTF8(reinterpret_cast<const unsigned char*>(str.c_str()));
}
} // namespace

TEST_F(EncodingFeedTest, StopCancelsTheFeedWaitsForItAndTellsWhatItHadToTell)
{
    m_Plugin.Close();
    SlowEncoder slow;
    ASSERT_TRUE(m_Plugin.Open(nullptr, true));
    m_Callback.m_pEncoder = m_Plugin.m_pEncoder;
    slow.m_aryEvents.clear();
    FEED& feed = Make(MakeWav(MakeAudio(20 * 44100)));
    ASSERT_TRUE(feed.Start());
    while (!slow.m_bInPiece)
        std::this_thread::yield();
    (void)feed.Cancel();
    slow.m_bHold = false;
    m_Plugin.Stop();
    EXPECT_EQ(nullptr, m_Plugin.m_pEmulator.Get());
    EXPECT_EQ(1u, slow.m_aryPieces.size());
    EXPECT_EQ((POSTS{{2, 5}, {1, 0}}), m_Messages.GetPosts());
    EXPECT_EQ("5 error-1 finished", m_Callback.m_strEvents);
    EXPECT_EQ("Finish", slow.GetEvents()) << "the encoder's own Stop is not called";
    EXPECT_EQ(1, m_nDestroyed);
    m_Plugin.Close();
}

TEST_F(EncodingFeedTest, AFeedThatWasNeverStartedGoesQuietly)
{
    (void)Make(MakeWav(MakeAudio(400)));
    m_Plugin.Stop();
    EXPECT_EQ("", m_Callback.m_strEvents);
    EXPECT_EQ("", m_Fake.GetEvents());
    EXPECT_EQ(1, m_nDestroyed);
}

TEST_F(EncodingFeedTest, TheCallbackMayDestroyTheFeed)
{
    m_Callback.m_pStopAtEnd = &m_Plugin;
    m_Fake.m_bFinishes = false;
    FEED& feed = Make(MakeWav(MakeAudio(400)));
    ASSERT_TRUE(feed.Start());
    feed.WaitUntilFinished();
    feed.PumpMainThreadMessages();
    EXPECT_EQ("100 error-1 finished", m_Callback.m_strEvents);
    EXPECT_EQ(nullptr, m_Plugin.m_pEmulator.Get());
    EXPECT_EQ(1, m_nDestroyed);
}

TEST_F(EncodingFeedTest, TheSameObjectFeedsAgain)
{
    FEED& feed = Make(MakeWav(MakeAudio(400)));
    Run(feed);
    m_Fake.m_aryEvents.clear();
    m_Callback.m_strEvents.clear();
    ASSERT_TRUE(feed.Start());
    feed.WaitUntilFinished();
    feed.PumpMainThreadMessages();
    EXPECT_EQ(MakeAudio(400) + MakeAudio(400), m_Fake.m_strData);
}

TEST(EncodingEmulator, WithoutMessageManagerNothingIsTold)
{
    FakeEncoder fake;
    FeedCallback callback;
    CEncoderPlugin plugin;
    plugin.m_strLibrary = FakeEncoder::GetLibrary();
    plugin.m_strSettings = L"-8";
    ASSERT_TRUE(plugin.Open(nullptr, false));
    fake.m_aryEvents.clear();
    {
        FEED feed;
        feed.m_pPlugin = &plugin;
        feed.m_pCallback = &callback;
        feed.m_pFileReader.Set(new MemoryReader(MakeWav(MakeAudio(4000))), true, false);
        ASSERT_EQ(0, feed.m_WAVInfo.Open(feed.m_pFileReader.Get(), false, true));
        ASSERT_TRUE(feed.Start());
        feed.WaitUntilFinished();
        feed.PumpMainThreadMessages();
    }
    EXPECT_EQ(MakeAudio(4000), fake.m_strData);
    EXPECT_EQ("", fake.GetEvents());
    EXPECT_EQ("", callback.m_strEvents);
}

namespace
{
// Files by name, the real tools library, and the encoder that makes FLAC files.
class RealEncoding : public ::testing::Test
{
protected:
    RealEncoding()
    {
        GetProcessInfo(true)->SetSharedLibraryPath(Wide(RONDEL_BIN_DIR "/"));
        EXPECT_NE(nullptr, GetLyTools(true));
        m_Plugin.m_strName = L"flac";
        m_Plugin.m_strLibrary = Wide(RONDEL_BIN_DIR "/enc_flac.so");
        m_Plugin.m_strSettings = L"level=1";
        EXPECT_TRUE(m_Plugin.Open(nullptr, true));
        m_Callback.m_pEncoder = m_Plugin.m_pEncoder;
    }
    ~RealEncoding() override
    {
        m_Plugin.Stop();
        m_Plugin.Close();
        g_LySharedToolsHelper.UnloadLySharedLibs(false);
    }
    FEED& Make(const std::string& strFile)
    {
        auto* pFeed = new FEED;
        m_Plugin.m_pEmulator.Set(pFeed, true, false);
        pFeed->m_pPlugin = &m_Plugin;
        pFeed->m_pCallback = &m_Callback;
        m_bOpened = pFeed->OpenFile(Wide(strFile));
        return *pFeed;
    }
    void Set(const wchar_t* pKey, const std::string& strValue) { m_Plugin.m_pEncoder->SetInfo(pKey, Wide(strValue)); }
    std::string Decode(const std::string& strFlac) const
    {
        const std::string strRaw = m_Folder.GetPath("decoded.raw");
        const std::string strCommand =
            "flac -s -f -d --force-raw-format --endian=little --sign=signed " + strFlac + " -o " + strRaw;
        EXPECT_EQ(0, std::system(strCommand.c_str())) << strCommand;
        std::ifstream file(strRaw, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }

    TempFolder m_Folder;
    FeedCallback m_Callback;
    CEncoderPlugin m_Plugin;
    bool m_bOpened = false;
};
} // namespace

TEST_F(RealEncoding, AFileBecomesAFlacThatAnotherDecoderReads)
{
    const std::string strAudio = MakeAudio(10 * 44100);
    FEED& feed = Make(m_Folder.Write("in.wav", MakeWav(strAudio)));
    ASSERT_TRUE(m_bOpened);
    const std::string strFlac = m_Folder.GetPath("out.flac");
    Set(L"Output File", strFlac);
    Set(L"Expected Frames", std::to_string(feed.m_WAVInfo.GetTotalBlocks()));
    ASSERT_TRUE(feed.Start());
    while (m_Callback.m_strEvents.find("finished") == std::string::npos)
        feed.PumpMainThreadMessages();
    EXPECT_EQ("10 20 30 40 50 60 70 80 90 100 finished", m_Callback.m_strEvents);
    EXPECT_EQ(strAudio, Decode(strFlac));
}

TEST_F(RealEncoding, ACancelLeavesNoFileWhereTheLengthWasTold)
{
    FEED& feed = Make(m_Folder.Write("in.wav", MakeWav(MakeAudio(100 * 44100))));
    ASSERT_TRUE(m_bOpened);
    Set(L"Output File", m_Folder.GetPath("out.flac"));
    Set(L"Expected Frames", std::to_string(feed.m_WAVInfo.GetTotalBlocks()));
    ASSERT_TRUE(feed.Start());
    while (m_Callback.m_strEvents.empty())
        feed.PumpMainThreadMessages();
    m_Plugin.Stop();
    EXPECT_NE(std::string::npos, m_Callback.m_strEvents.find("error-1 finished")) << m_Callback.m_strEvents;
    size_t nFiles = 0;
    for (const auto& entry : std::filesystem::directory_iterator(m_Folder.GetPath()))
        nFiles += entry.is_regular_file() ? 1u : 0u;
    EXPECT_EQ(1u, nFiles) << "the source alone";
}

TEST_F(RealEncoding, WhatIsNoWavFileDoesNotOpen)
{
    (void)Make(m_Folder.GetPath("none.wav"));
    EXPECT_FALSE(m_bOpened);
    (void)Make(m_Folder.Write("text.wav", "This is text, and long enough for a header of a WAV file."));
    EXPECT_FALSE(m_bOpened);
    (void)Make(m_Folder.GetPath());
    EXPECT_FALSE(m_bOpened);
}
