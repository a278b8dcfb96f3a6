#include "LyCoreLib/RawTable.h"
#include "Media/EncodingFeed.h"
#include <type_traits>

using POSTS = std::vector<MessageQueue::POST>;
using FEED = CEncoderPluginFileBasedEncodingEmulator;

// ---- The class

TEST(EncodingEmulator, IsAThreadWithItsMembersInOrder)
{
    static_assert(std::is_base_of_v<LyThread, FEED> && std::has_virtual_destructor_v<FEED>);
    FEED feed;
    EXPECT_EQ(static_cast<void*>(&feed), static_cast<void*>(static_cast<LyThread*>(&feed)));
    const void* const aryMembers[] = {&feed, &feed.m_pPlugin, &feed.m_pCallback, &feed.m_pFileReader, &feed.m_WAVInfo};
    for (size_t i = 1; i < std::size(aryMembers); ++i)
        EXPECT_LT(aryMembers[i - 1], aryMembers[i]) << i;
    EXPECT_EQ(nullptr, feed.m_pPlugin);
    EXPECT_EQ(nullptr, feed.m_pCallback);
    EXPECT_EQ(nullptr, feed.m_pFileReader.Get());
    EXPECT_FALSE(feed.m_WAVInfo.m_bOpen);
    EXPECT_EQ(0, feed.GetRunCount());
}

TEST_F(EncodingFeedTest, MessagesComeThroughTheFirstSlot)
{
    FEED& feed = Make(MakeWav(MakeAudio(4)));
    EXPECT_TRUE(CallSlot<bool>(&feed, 0, 2, 42LL));
    EXPECT_EQ("42", m_Callback.m_strEvents);
    EXPECT_TRUE(CallSlot<bool>(&feed, 0, 1, 1LL));
    EXPECT_EQ("42 finished", m_Callback.m_strEvents);
    EXPECT_EQ("Finish", m_Fake.GetEvents());
    EXPECT_TRUE(CallSlot<bool>(&feed, 0, 3, 1LL)) << "any other message is nothing";
    EXPECT_EQ("42 finished", m_Callback.m_strEvents);
}

// ---- The feed

TEST_F(EncodingFeedTest, AFileGoesToTheEncoderInQuartersOfASecond)
{
    const std::string strAudio = MakeAudio(3 * 44100 + 4000);
    Run(Make(MakeWav(strAudio)));
    EXPECT_EQ((std::vector<int>{44100, 44100, 44100, 4000}), m_Fake.m_aryPieces);
    EXPECT_EQ(strAudio, m_Fake.m_strData);
    EXPECT_EQ("Finish", m_Fake.GetEvents());
    // Blocks of 4 bytes: 11025, 22050 and 33075 of 34075.
    EXPECT_EQ((POSTS{{2, 32}, {2, 64}, {2, 97}, {2, 100}, {1, 1}}), m_Messages.GetPosts());
    EXPECT_EQ("32 64 97 100 finished", m_Callback.m_strEvents);
    EXPECT_EQ(m_Fake.m_aryPieces, m_pReader->m_aryReads) << "nothing is read twice";
}

namespace
{
struct CHUNK_CASE
{
    unsigned int nRate;
    int nChunkBlocks;
};
const CHUNK_CASE s_aryChunkCases[] = {{1, 1024},    {4095, 1024}, {4096, 1024},   {4099, 1024},
                                      {4100, 1025}, {8000, 2000}, {48000, 12000}, {44101, 11025}};
} // namespace

TEST_F(EncodingFeedTest, AChunkIsAQuarterOfASecondButAtLeast1024Blocks)
{
    for (const CHUNK_CASE& row : s_aryChunkCases)
    {
        m_Fake.m_aryPieces.clear();
        FEED& feed = Make(MakeWav(MakeAudio(24001), {1, 1, row.nRate, 8}));
        ASSERT_TRUE(feed.Start());
        feed.WaitUntilFinished();
        ASSERT_FALSE(m_Fake.m_aryPieces.empty());
        EXPECT_EQ(row.nChunkBlocks, m_Fake.m_aryPieces[0]) << row.nRate;
        EXPECT_EQ(24001 % row.nChunkBlocks, m_Fake.m_aryPieces.back()) << row.nRate;
    }
}

TEST_F(EncodingFeedTest, AnEmptyFileIsFinishedWithoutAnError)
{
    Run(Make(MakeWav("")));
    EXPECT_EQ((POSTS{{1, 1}}), m_Messages.GetPosts());
    EXPECT_EQ("finished", m_Callback.m_strEvents);
    EXPECT_EQ("Finish", m_Fake.GetEvents());
    EXPECT_TRUE(m_Fake.m_aryPieces.empty());
}

TEST_F(EncodingFeedTest, AnEmptyFileThatTheEncoderDoesNotWantIsAnError)
{
    m_Fake.m_bFinishes = false;
    Run(Make(MakeWav("")));
    EXPECT_EQ("error-1 finished", m_Callback.m_strEvents);
}

TEST_F(EncodingFeedTest, WithoutCallbackOnlyTheEndIsPosted)
{
    FEED& feed = Make(MakeWav(MakeAudio(100000)));
    feed.m_pCallback = nullptr;
    Run(feed);
    EXPECT_EQ((POSTS{{1, 1}}), m_Messages.GetPosts());
    EXPECT_EQ("Finish", m_Fake.GetEvents());
    EXPECT_EQ("", m_Callback.m_strEvents);
    EXPECT_TRUE(CallSlot<bool>(&feed, 0, 2, 42LL)) << "nor is progress told";
}

// ---- What goes wrong

TEST_F(EncodingFeedTest, AnEncoderThatRefusesEndsTheFeedWithItsWords)
{
    m_Fake.m_nPiecesTaken = 2;
    m_Fake.m_Infos[L"Last Error"] = L"The disk is full.";
    Run(Make(MakeWav(MakeAudio(5 * 44100))));
    EXPECT_EQ(3u, m_Fake.m_aryPieces.size());
    EXPECT_EQ((POSTS{{2, 20}, {2, 40}, {1, 0}}), m_Messages.GetPosts());
    EXPECT_EQ("20 40 error-1 finished", m_Callback.m_strEvents);
    EXPECT_EQ(L"The disk is full.", m_Callback.m_strError);
    EXPECT_EQ("Finish", m_Fake.GetEvents()) << "in any case";
}

TEST_F(EncodingFeedTest, AnEncoderWithoutWordsGetsSome)
{
    m_Fake.m_nPiecesTaken = 0;
    Run(Make(MakeWav(MakeAudio(4000))));
    EXPECT_EQ("error-1 finished", m_Callback.m_strEvents);
    EXPECT_EQ(L"Encoding error", m_Callback.m_strError);
}

TEST_F(EncodingFeedTest, AnEndThatFailsIsAnErrorThoughAllWasSent)
{
    m_Fake.m_bFinishes = false;
    m_Fake.m_Infos[L"Last Error"] = L"It does not check out.";
    Run(Make(MakeWav(MakeAudio(4000))));
    EXPECT_EQ((POSTS{{2, 100}, {1, 1}}), m_Messages.GetPosts());
    EXPECT_EQ("100 error-1 finished", m_Callback.m_strEvents);
    EXPECT_EQ(L"It does not check out.", m_Callback.m_strError);
}

TEST_F(EncodingFeedTest, AReadErrorEndsTheFeed)
{
    FEED& feed = Make(MakeWav(MakeAudio(100000)));
    m_pReader->m_nReadableEnd = 44 + 44100;
    Run(feed);
    EXPECT_EQ((std::vector<int>{44100}), m_Fake.m_aryPieces);
    EXPECT_EQ((POSTS{{2, 44}, {1, 0}}), m_Messages.GetPosts());
    EXPECT_EQ("44 error-1 finished", m_Callback.m_strEvents);
}

TEST_F(EncodingFeedTest, AFeedThatHasNoOpenFileFails)
{
    Run(Make("no WAV file", false));
    EXPECT_EQ((POSTS{{1, 0}}), m_Messages.GetPosts());
    EXPECT_EQ("error-1 finished", m_Callback.m_strEvents);
}

TEST_F(EncodingFeedTest, ShortReadsMoveOnByWholeBlocks)
{
    FEED& feed = Make(MakeWav(MakeAudio(100)));
    m_pReader->m_nMostPerRead = 42; // ten blocks, and a half
    Run(feed);
    const std::string strAudio = MakeAudio(100);
    EXPECT_EQ((std::vector<int>{42, 42, 20}), m_Fake.m_aryPieces);
    EXPECT_EQ(strAudio.substr(0, 42) + strAudio.substr(40, 42) + strAudio.substr(80), m_Fake.m_strData);
    EXPECT_EQ((POSTS{{2, 40}, {2, 80}, {2, 100}, {1, 1}}), m_Messages.GetPosts());
}

TEST_F(EncodingFeedTest, ReadsOfLessThanABlockEndTheFeed)
{
    FEED& feed = Make(MakeWav(MakeAudio(100)));
    m_pReader->m_nMostPerRead = 3;
    Run(feed);
    EXPECT_EQ((POSTS{{1, 0}}), m_Messages.GetPosts());
}

TEST_F(EncodingFeedTest, AudioThatEndsWithinABlockIsSentToItsEnd)
{
    Run(Make(MakeWav(MakeAudio(402))));
    EXPECT_EQ((std::vector<int>{402}), m_Fake.m_aryPieces);
    EXPECT_EQ((POSTS{{2, 100}, {1, 1}}), m_Messages.GetPosts());
}

namespace
{
struct HOSTILE_CASE
{
    const char* pName;
    WAV_FIELDS fields;
    size_t nBytes;
    int nFirstPiece;
    int nPieces; // whose bytes are all
};
const HOSTILE_CASE s_aryHostileCases[] = {
    {"LargestRate", {1, 2, 0xFFFFFFFF, 16}, 100000, 100000, 1},
    {"LargestBlocks", {1, 2, 44100, 16, 0xFFFF}, 0xFFFF * 3, 0xFFFF * 3, 1},
    {"BothLargest", {1, 0xFFFF, 0xFFFFFFFF, 0xFFFF, 0xFFFF}, 0xFFFF * 2, 0xFFFF * 2, 1},
    {"NoRate", {1, 2, 0, 16}, 5000, 4096, 2},
};
} // namespace

TEST_F(EncodingFeedTest, NumbersFromAFileDoNotDecideHowMuchMemoryIsTaken)
{
    for (const HOSTILE_CASE& row : s_aryHostileCases)
    {
        m_Fake.m_aryPieces.clear();
        FEED& feed = Make(MakeWav(MakeAudio(row.nBytes), row.fields));
        ASSERT_TRUE(feed.Start());
        feed.WaitUntilFinished();
        ASSERT_EQ(static_cast<size_t>(row.nPieces), m_Fake.m_aryPieces.size()) << row.pName;
        EXPECT_EQ(row.nFirstPiece, m_Fake.m_aryPieces[0]) << row.pName;
    }
}

TEST_F(EncodingFeedTest, BlocksWithoutALengthAreNotFed)
{
    Run(Make(MakeWav(MakeAudio(5000), {1, 2, 44100, 16, 0})));
    EXPECT_EQ((POSTS{{1, 0}}), m_Messages.GetPosts());
    EXPECT_TRUE(m_Fake.m_aryPieces.empty());
}
