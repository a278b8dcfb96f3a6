#include "FakeDisc.h"
#include "MemReader.h"
#include <algorithm>
#include <chrono>
#include <gtest/gtest.h>
#include <thread>
#include <type_traits>
#include <vector>

namespace
{
constexpr int REQUEST_BYTES = 2304;

class MemReaderTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_pFake = FakeDisc::Load();
        ASSERT_NE(nullptr, m_pFake);
    }
    void TearDown() override { m_pFake->OpenGate(); }

    int Start(CMemReader& reader, int nTrack)
    {
        int nBytes = -1;
        EXPECT_EQ(0, reader.start(FakeDisc::DRIVE, nTrack, 15, nBytes, 0));
        return nBytes;
    }
    static bool WaitFor(const std::function<bool()>& condition)
    {
        for (int i = 0; i < 500; ++i)
        {
            if (condition())
                return true;
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return false;
    }
    static bool IsPattern(const std::vector<char>& aryBytes, int nFirstSector)
    {
        for (size_t i = 0; i < aryBytes.size(); ++i)
        {
            const int nSector = nFirstSector + static_cast<int>(i) / LY_CD_SECTOR_BYTES;
            if (static_cast<unsigned char>(aryBytes[i]) !=
                FakeDisc::AudioByte(nSector, static_cast<int>(i) % LY_CD_SECTOR_BYTES))
                return false;
        }
        return true;
    }

    IFakeDisc* m_pFake = nullptr;
};
} // namespace

TEST_F(MemReaderTest, ANewReaderIsEmpty)
{
    const CMemReader reader;
    EXPECT_EQ(0, reader.m_nWritePos);
    EXPECT_EQ(0, reader.m_nReadPos);
    EXPECT_EQ(0, reader.m_nTrack);
    EXPECT_EQ(0, reader.m_nTrackBytes);
    EXPECT_FALSE(reader.m_bTrackDone);
    EXPECT_EQ(0, reader.m_nRingBase);
    EXPECT_EQ(0, reader.m_nReadError);
    EXPECT_EQ(0U, reader.m_nReadStartTick);
    EXPECT_NE(nullptr, reader.m_pRing);
    EXPECT_NE(nullptr, reader.m_pRipper);
    EXPECT_EQ(635040, CMemReader::RING_BYTES);
}

// What stands behind it in memory is read from outside by its place.
TEST_F(MemReaderTest, TheRipperIsAPlainPointerAheadOfThePositions)
{
    const CMemReader reader;
    static_assert(std::is_same_v<decltype(CMemReader::m_pRipper), CCDRipper*>);
    const auto* pRipper = reinterpret_cast<const char*>(&reader.m_pRipper);
    EXPECT_EQ(pRipper + sizeof(void*), reinterpret_cast<const char*>(&reader.m_nWritePos));
    EXPECT_EQ(pRipper + sizeof(void*) + 4 * sizeof(int), reinterpret_cast<const char*>(&reader.m_bTrackDone));
}

TEST_F(MemReaderTest, StartAnswersTheErrorOfTheDriveAndStartsNothing)
{
    CMemReader reader;
    int nBytes = -1;
    EXPECT_EQ(14, reader.start(L"Q:", 1, 15, nBytes, 0));
    EXPECT_EQ(-1, nBytes);
    EXPECT_FALSE(reader.GetRunning());
    EXPECT_TRUE(reader.stop());
}

TEST_F(MemReaderTest, StartSetsPlaybackModeAndSpeed)
{
    CMemReader reader;
    int nBytes = 0;
    ASSERT_EQ(0, reader.start(FakeDisc::DRIVE, 1, 15, nBytes, 8));
    EXPECT_EQ(COPY_MODE_PLAYBACK, reader.m_pRipper->m_nCopyMode);
    EXPECT_TRUE(reader.m_pRipper->m_bNoSave);
    FAKE_COMMAND speed{};
    ASSERT_TRUE(m_pFake->GetCommandOf(CDB_SET_CD_SPEED, 0, speed));
    EXPECT_EQ(8 * 176400 / 1024, speed.cdb[2] << 8 | speed.cdb[3]);
    EXPECT_EQ(FakeDisc::TRACK_SECTORS * LY_CD_SECTOR_BYTES, nBytes);
}

TEST_F(MemReaderTest, ABadTrackNumberCountsItsErrorCodeAsSectors)
{
    CMemReader reader;
    EXPECT_EQ(16 * LY_CD_SECTOR_BYTES, Start(reader, 0));
    CMemReader another;
    EXPECT_EQ(16 * LY_CD_SECTOR_BYTES, Start(another, 100));
}

TEST_F(MemReaderTest, TheThreadFillsTheRingButForARoomOf28Sectors)
{
    CMemReader reader;
    Start(reader, 1);
    // Ten reads of 27 fit; after nine, 27 sectors are free, one too few for the next.
    ASSERT_TRUE(WaitFor([&] { return reader.m_nWritePos == 9 * 27 * LY_CD_SECTOR_BYTES; }));
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_EQ(9 * 27 * LY_CD_SECTOR_BYTES, reader.m_nWritePos);
    // One byte short of a sector is not enough ...
    std::vector<char> aryBytes(LY_CD_SECTOR_BYTES - 1);
    EXPECT_EQ(LY_CD_SECTOR_BYTES - 1, reader.read(LY_CD_SECTOR_BYTES - 1, aryBytes.data()));
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_EQ(9 * 27 * LY_CD_SECTOR_BYTES, reader.m_nWritePos);
    // ... and with 65,856 bytes free the thread reads on.
    EXPECT_EQ(1, reader.read(1, aryBytes.data()));
    EXPECT_TRUE(WaitFor([&] { return reader.m_nWritePos == 0 && reader.m_nRingBase == CMemReader::RING_BYTES; }));
}

TEST_F(MemReaderTest, ALongTrackWrapsAndEndsWithAShortRead)
{
    CMemReader reader;
    const int nBytes = Start(reader, 2);
    std::vector<char> aryTrack(static_cast<size_t>(nBytes));
    for (int nDone = 0; nDone < nBytes;)
    {
        const int nPiece = std::min(10000, nBytes - nDone);
        ASSERT_EQ(nPiece, reader.read(nPiece, aryTrack.data() + nDone));
        nDone += nPiece;
    }
    EXPECT_TRUE(IsPattern(aryTrack, FakeDisc::TRACK_SECTORS));
    EXPECT_TRUE(WaitFor([&] { return reader.m_bTrackDone.load(); }));
    FAKE_COMMAND last{};
    ASSERT_TRUE(m_pFake->GetCommandOf(CDB_READ_CD, m_pFake->CountCommands(CDB_READ_CD) - 1, last));
    EXPECT_EQ(1000 % 270 % 27, last.cdb[8]); // 1000 sectors: three rings of 270, seven reads of 27, and one
    char nByte = 0;
    EXPECT_EQ(0, reader.read(1, &nByte));
}

TEST_F(MemReaderTest, ATrackShorterThanAReadEndsWithOneShortRead)
{
    const FAKE_TRACK aryTracks[] = {{1, 0, 2}, {2, 5, 2}};
    m_pFake->LoadDisc(aryTracks, 2, 100);
    CMemReader reader;
    EXPECT_EQ(5 * LY_CD_SECTOR_BYTES, Start(reader, 1));
    ASSERT_TRUE(WaitFor([&] { return reader.m_bTrackDone.load(); }));
    EXPECT_EQ(1, m_pFake->CountCommands(CDB_READ_CD));
    std::vector<char> aryBytes(5 * LY_CD_SECTOR_BYTES);
    EXPECT_EQ(5 * LY_CD_SECTOR_BYTES, reader.read(5 * LY_CD_SECTOR_BYTES, aryBytes.data()));
    EXPECT_TRUE(IsPattern(aryBytes, 0));
}

TEST_F(MemReaderTest, AReadForMoreThanRemainsGivesNothingAndDropsTheRest)
{
    const FAKE_TRACK aryTracks[] = {{1, 0, 2}, {2, 5, 2}};
    m_pFake->LoadDisc(aryTracks, 2, 100);
    CMemReader reader;
    Start(reader, 1);
    std::vector<char> aryBytes(5 * LY_CD_SECTOR_BYTES + 1);
    EXPECT_EQ(0, reader.read(5 * LY_CD_SECTOR_BYTES + 1, aryBytes.data()));
    EXPECT_EQ(0, reader.read(1, aryBytes.data()));
}

TEST_F(MemReaderTest, SeekToTheLastByteIsAcceptedAndToTheLengthIgnored)
{
    CMemReader reader;
    const int nBytes = Start(reader, 1);
    ASSERT_TRUE(WaitFor([&] { return reader.m_nWritePos > 0; }));
    EXPECT_EQ(0, reader.seek(nBytes));
    EXPECT_EQ(0, reader.m_nRingBase);
    EXPECT_EQ(0, reader.seek(nBytes - 1));
    EXPECT_EQ(nBytes - 1, reader.m_nRingBase);
    // Less than a sector is left, so that the track ends at once.
    EXPECT_TRUE(WaitFor([&] { return reader.m_bTrackDone.load(); }));
    char nByte = 0;
    EXPECT_EQ(0, reader.read(1, &nByte));
}

TEST_F(MemReaderTest, SeekWakesATrackThatIsDone)
{
    CMemReader reader;
    const int nBytes = Start(reader, 1);
    (void)reader.seek(nBytes - 2 * LY_CD_SECTOR_BYTES);
    ASSERT_TRUE(WaitFor([&] { return reader.m_bTrackDone.load(); }));
    (void)reader.seek(10 * LY_CD_SECTOR_BYTES);
    std::vector<char> aryBytes(LY_CD_SECTOR_BYTES);
    ASSERT_EQ(LY_CD_SECTOR_BYTES, reader.read(LY_CD_SECTOR_BYTES, aryBytes.data()));
    EXPECT_TRUE(IsPattern(aryBytes, 10));
}

TEST_F(MemReaderTest, ASeekAheadOfTheTrackIsItsStart)
{
    CMemReader reader;
    Start(reader, 2);
    (void)reader.seek(-5 * LY_CD_SECTOR_BYTES);
    std::vector<char> aryBytes(LY_CD_SECTOR_BYTES);
    ASSERT_EQ(LY_CD_SECTOR_BYTES, reader.read(LY_CD_SECTOR_BYTES, aryBytes.data()));
    EXPECT_TRUE(IsPattern(aryBytes, FakeDisc::TRACK_SECTORS));
}

TEST_F(MemReaderTest, ManySeeksWhileTheThreadReadsAlwaysGiveTheRightBytes)
{
    CMemReader reader;
    Start(reader, 3);
    std::vector<char> aryBytes(3 * LY_CD_SECTOR_BYTES);
    for (int i = 0; i < 200; ++i)
    {
        const int nSector = i * 613 % (FakeDisc::TRACK_SECTORS - 3);
        (void)reader.seek(nSector * LY_CD_SECTOR_BYTES);
        ASSERT_EQ(3 * LY_CD_SECTOR_BYTES, reader.read(3 * LY_CD_SECTOR_BYTES, aryBytes.data()));
        ASSERT_TRUE(IsPattern(aryBytes, 2 * FakeDisc::TRACK_SECTORS + nSector)) << i;
    }
}

TEST_F(MemReaderTest, ASeekWaitsForTheReadInProgressAndForNoOther)
{
    constexpr int TARGET = 100;
    CMemReader reader;
    m_pFake->CloseGate();
    Start(reader, 1);
    ASSERT_TRUE(m_pFake->WaitForHeldReads(1, 5000));
    m_pFake->ForgetCommands();
    std::thread seeker([&] { (void)reader.seek(TARGET * LY_CD_SECTOR_BYTES); });
    EXPECT_TRUE(WaitFor([&] { return reader.m_bSeekWaits.load(); }));
    m_pFake->OpenGate();
    seeker.join();
    ASSERT_TRUE(WaitFor([&] { return m_pFake->CountCommands(CDB_READ_CD) > 0; }));
    FAKE_COMMAND command = {};
    ASSERT_TRUE(m_pFake->GetCommandOf(CDB_READ_CD, 0, command));
    EXPECT_EQ(TARGET, command.cdb[4] << 8 | command.cdb[5]);
}

TEST_F(MemReaderTest, AReadErrorLetsTheRingDrainAndASeekDoesNotStartItAgain)
{
    CMemReader reader;
    Start(reader, 1);
    ASSERT_TRUE(WaitFor([&] { return reader.m_nWritePos == 9 * 27 * LY_CD_SECTOR_BYTES; }));
    // A running rip makes every further read fail with 15.
    reader.m_pRipper->m_pReader->m_bRipping = true;
    std::vector<char> aryBytes(LY_CD_SECTOR_BYTES);
    for (int i = 0; i < 9 * 27; ++i)
        ASSERT_EQ(LY_CD_SECTOR_BYTES, reader.read(LY_CD_SECTOR_BYTES, aryBytes.data()));
    ASSERT_TRUE(WaitFor([&] { return reader.m_nReadError != 0; }));
    EXPECT_EQ(15, reader.m_nReadError);
    EXPECT_EQ(0, reader.read(1, aryBytes.data()));
    reader.m_pRipper->m_pReader->m_bRipping = false;
    (void)reader.seek(0);
    EXPECT_EQ(15, reader.m_nReadError);
    EXPECT_EQ(0, reader.read(1, aryBytes.data()));
}

TEST_F(MemReaderTest, AReadThatHangsLongerThanTenSecondsIsGivenUp)
{
    CMemReader reader;
    reader.m_nWritePos = LY_CD_SECTOR_BYTES; // bytes are there, and still the answer is nothing
    char nByte = 0;
    reader.m_nReadStartTick = GetTickCount() - 9000;
    EXPECT_EQ(1, reader.read(1, &nByte));
    reader.m_nReadStartTick = GetTickCount() - 10001;
    EXPECT_EQ(0, reader.read(1, &nByte));
    reader.m_nReadStartTick = 0;
    EXPECT_EQ(1, reader.read(1, &nByte));
}

TEST_F(MemReaderTest, TheWatchdogSeesAReadInProgress)
{
    m_pFake->CloseGate();
    CMemReader reader;
    Start(reader, 1);
    ASSERT_TRUE(m_pFake->WaitForHeldReads(1, 5000));
    EXPECT_NE(0U, reader.m_nReadStartTick);
    m_pFake->OpenGate();
    EXPECT_TRUE(WaitFor([&] { return reader.m_nWritePos > 0; }));
}

TEST_F(MemReaderTest, TheRingIsReadInTwoPiecesAtItsEnd)
{
    CMemReader reader;
    for (int i = 0; i < CMemReader::RING_BYTES; ++i)
        reader.m_pRing[i] = static_cast<unsigned char>(i % 251);
    reader.m_nReadPos = CMemReader::RING_BYTES - 100;
    reader.m_nWritePos = LY_CD_SECTOR_BYTES;
    std::vector<char> aryBytes(REQUEST_BYTES);
    ASSERT_EQ(REQUEST_BYTES, reader.read(REQUEST_BYTES, aryBytes.data()));
    for (int i = 0; i < REQUEST_BYTES; ++i)
    {
        const int nPlace = (CMemReader::RING_BYTES - 100 + i) % CMemReader::RING_BYTES;
        ASSERT_EQ(static_cast<char>(nPlace % 251), aryBytes[static_cast<size_t>(i)]);
    }
    EXPECT_EQ(REQUEST_BYTES - 100, reader.m_nReadPos);
}

TEST_F(MemReaderTest, StopWaitsForTheReadInProgressAndTheDestructorIsSafeAfterIt)
{
    m_pFake->CloseGate();
    CMemReader reader;
    Start(reader, 1);
    ASSERT_TRUE(m_pFake->WaitForHeldReads(1, 5000));
    std::thread opener(
        [this]
        {
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
            m_pFake->OpenGate();
        });
    EXPECT_TRUE(reader.stop());
    EXPECT_FALSE(reader.GetRunning());
    opener.join();
}

TEST_F(MemReaderTest, AReaderThatRunsLeavesItsTrackForTheNextOne)
{
    CMemReader reader;
    Start(reader, 1);
    std::vector<char> aryBytes(REQUEST_BYTES);
    ASSERT_EQ(REQUEST_BYTES, reader.read(REQUEST_BYTES, aryBytes.data()));
    Start(reader, 2);
    aryBytes.resize(LY_CD_SECTOR_BYTES);
    ASSERT_EQ(LY_CD_SECTOR_BYTES, reader.read(LY_CD_SECTOR_BYTES, aryBytes.data()));
    EXPECT_TRUE(IsPattern(aryBytes, FakeDisc::TRACK_SECTORS));
    EXPECT_EQ(2, reader.m_nTrack);
    EXPECT_TRUE(reader.GetRunning());
}

TEST_F(MemReaderTest, MessagesAreAnsweredTrue)
{
    CMemReader reader;
    EXPECT_TRUE(reader.ProcessMainThreadMessage(1, 2));
}
