// The one stream of a rip, divided into pieces: at any block sizes, with sums, logs and files that fail.

#include "CDUnits.h"
#include "RipSink.h"
#include <cstring>
#include <gtest/gtest.h>
#include <map>
#include <random>

namespace
{
constexpr int FIRST = 30; // hidden audio is ahead of it
constexpr int STARTS[] = {0, FIRST, 130, 145, 400};

// Every frame of the disc is another one.
std::vector<unsigned char> MakeAudio(int nSector, int nSectors)
{
    std::vector<unsigned char> aryBytes(static_cast<size_t>(nSectors) * LY_CD_SECTOR_BYTES);
    for (size_t n = 0; n < aryBytes.size(); n += LY_CD_FRAME_BYTES)
    {
        const uint32_t nFrame =
            static_cast<uint32_t>(nSector * LY_CD_SECTOR_FRAMES + static_cast<int>(n) / LY_CD_FRAME_BYTES) *
            2654435761U;
        std::memcpy(&aryBytes[n], &nFrame, sizeof nFrame);
    }
    return aryBytes;
}

// What came to one output, file by file.
struct OUTPUT_RECORD
{
    std::map<std::string, std::vector<unsigned char>> mapEnded;
    std::vector<std::string> aryAbandoned;
    std::string strFailAt; // the name of a file that fails at its first audio
    bool bDiskFull = false;
};

class RecordingOutput final : public RipOutput
{
public:
    RecordingOutput(OUTPUT_RECORD& record, IRipFileListener& listener) : m_Record(record), m_Listener(listener) {}

    void Begin(const RIP_ORDER& order) override
    {
        EXPECT_FALSE(m_bOpen);
        m_Order = order;
        m_bOpen = true;
        m_bFailed = false;
        m_aryBytes.clear();
    }
    void Write(const unsigned char* pData, size_t nBytes) override
    {
        EXPECT_TRUE(m_bOpen);
        m_aryBytes.insert(m_aryBytes.end(), pData, pData + nBytes);
        if (m_bFailed || m_Order.file.strName != m_Record.strFailAt)
            return;
        m_bFailed = true;
        m_Order.file.strError = "it broke";
        m_Listener.OnRipFile(m_Order.nGroup, m_Order.file, m_Record.bDiskFull);
    }
    void End(uint32_t nAudioCRC32) override
    {
        EXPECT_TRUE(m_bOpen);
        m_bOpen = false;
        if (m_bFailed)
            return;
        EXPECT_EQ(GetCRC32(m_aryBytes.data(), m_aryBytes.size()), nAudioCRC32);
        EXPECT_EQ(m_Order.nFrames * LY_CD_FRAME_BYTES, static_cast<long long>(m_aryBytes.size()));
        m_Record.mapEnded[m_Order.file.strName] = m_aryBytes;
        m_Listener.OnRipFile(m_Order.nGroup, m_Order.file, false);
    }
    void Abandon() override
    {
        if (m_bOpen)
            m_Record.aryAbandoned.push_back(m_Order.file.strName);
        m_bOpen = false;
    }
    bool Wait(int) override { return true; }

private:
    OUTPUT_RECORD& m_Record;
    IRipFileListener& m_Listener;
    RIP_ORDER m_Order;
    std::vector<unsigned char> m_aryBytes;
    bool m_bOpen = false;
    bool m_bFailed = false;
};

class RipSinkTest : public ::testing::Test
{
protected:
    // Hidden audio and three tracks; as an image or file by file, to so many outputs.
    void SetUpRip(bool bImage = false, size_t nOutputs = 1)
    {
        m_Report = {};
        m_Groups.clear();
        m_Records = std::vector<OUTPUT_RECORD>(nOutputs);
        RIP_GROUP image;
        for (size_t n = 0; n < 4; ++n)
        {
            RIP_PIECE piece;
            piece.nTrack = static_cast<int>(n);
            piece.nStart = STARTS[n];
            piece.nSectors = STARTS[n + 1] - STARTS[n];
            m_Report.aryPieces.push_back(piece);
            if (n > 0)
                m_Report.disc.layout.Add(piece.nStart);
            image.aryPieces.push_back(n);
            m_Groups.push_back({{n}, MakeOrders(nOutputs, n, piece.nSectors)});
        }
        m_Report.disc.layout.Finish(STARTS[4]);
        if (bImage)
        {
            image.aryOrders = MakeOrders(nOutputs, 0, STARTS[4]);
            m_Groups = {image};
        }
        m_pCollector = std::make_unique<RipCollector>(m_Report, m_Groups, bImage);
        m_pCollector->SetStateWriter(
            [this](const RIP_REPORT&)
            {
                ++m_nStates;
                return true;
            });
        m_nStates = 0;
        ASSERT_TRUE(m_Sums.SetLayout(m_Report.disc.layout, 0));
        m_Stream = {};
        m_Stream.pGroups = &m_Groups;
        m_Stream.pCollector = m_pCollector.get();
        m_Stream.pSums = &m_Sums;
        m_Stream.pLog = &m_Log;
        m_Stream.bAnalyze = false;
        for (size_t n = 0; n < 4; ++n)
            m_Stream.aryParts.push_back(
                {n, bImage ? 0 : n, !bImage || n == 0, !bImage || n == 3, m_Report.aryPieces[n]});
        for (OUTPUT_RECORD& record : m_Records)
            m_Stream.aryOutputs.push_back(std::make_unique<RecordingOutput>(record, *m_pCollector));
    }
    static std::vector<RIP_ORDER> MakeOrders(size_t nOutputs, size_t nGroup, int nSectors)
    {
        std::vector<RIP_ORDER> aryOrders;
        for (size_t n = 0; n < nOutputs; ++n)
        {
            RIP_ORDER order;
            order.nGroup = nGroup;
            order.nFrames = static_cast<long long>(nSectors) * LY_CD_SECTOR_FRAMES;
            order.file.strName = std::to_string(nGroup) + "." + std::to_string(n);
            aryOrders.push_back(order);
        }
        return aryOrders;
    }
    // The disc from its start in blocks of so many frames, 0 for random ones.
    void Feed(RipSink& sink, int nBlockFrames, int nSectors = STARTS[4])
    {
        std::vector<unsigned char> aryAudio = MakeAudio(0, nSectors);
        const long nAll = static_cast<long>(nSectors) * LY_CD_SECTOR_FRAMES;
        for (long nDone = 0; nDone < nAll;)
        {
            const long nWanted = nBlockFrames > 0 ? nBlockFrames : static_cast<long>(m_Random() % 30000);
            const long nBlock = std::min(nWanted, nAll - nDone);
            std::vector<unsigned int> aryBlock(static_cast<size_t>(nBlock));
            std::memcpy(aryBlock.data(), aryAudio.data() + nDone * LY_CD_FRAME_BYTES,
                        static_cast<size_t>(nBlock) * LY_CD_FRAME_BYTES);
            sink.WriteBuffer(nBlock, aryBlock.data());
            nDone += nBlock;
        }
    }
    void ExpectWhole() const
    {
        for (const OUTPUT_RECORD& record : m_Records)
        {
            EXPECT_EQ(4U, record.mapEnded.size());
            size_t n = 0;
            for (const auto& [strName, aryBytes] : record.mapEnded)
            {
                EXPECT_TRUE(aryBytes == MakeAudio(STARTS[n], STARTS[n + 1] - STARTS[n])) << strName;
                ++n;
            }
            EXPECT_TRUE(record.aryAbandoned.empty());
        }
        for (const RIP_PIECE& piece : m_Report.aryPieces)
        {
            EXPECT_EQ(RIP_PIECE_READ, piece.eState);
            EXPECT_EQ(m_Records.size(), piece.aryFiles.size());
            const std::vector<unsigned char> aryAudio = MakeAudio(piece.nStart, piece.nSectors);
            EXPECT_EQ(GetCRC32(aryAudio.data(), aryAudio.size()), piece.sums.m_nCRC32) << piece.nTrack;
            EXPECT_EQ(piece.nTrack > 0, piece.sums.m_nAccurateRip2 != 0);
        }
    }

    RIP_REPORT m_Report;
    std::vector<RIP_GROUP> m_Groups;
    std::unique_ptr<RipCollector> m_pCollector;
    DiscChecksums m_Sums;
    SecureRipLog m_Log;
    std::vector<OUTPUT_RECORD> m_Records;
    RIP_STREAM m_Stream;
    int m_nStates = 0;
    std::mt19937 m_Random{1};
};
} // namespace

TEST_F(RipSinkTest, DividesTheStreamAtAnyBlockSize)
{
    for (const int nBlockFrames : {1009, 588, 27 * 588, 15 * 588, 100 * 588, 400 * 588, 0, 0, 0})
    {
        SetUpRip(false, 2);
        {
            RipSink sink(m_Stream);
            Feed(sink, nBlockFrames);
            EXPECT_EQ(WAVESAVE_WRITTEN, sink.m_nError);
        }
        ExpectWhole();
        EXPECT_EQ(4, m_nStates);
        uint32_t nDisc = 0;
        EXPECT_TRUE(m_Sums.GetDiscCTDB(nDisc));
    }
}

TEST_F(RipSinkTest, AnImageIsOneFileOfAllPieces)
{
    SetUpRip(true);
    {
        RipSink sink(m_Stream);
        Feed(sink, 0);
    }
    ASSERT_EQ(1U, m_Records[0].mapEnded.size());
    EXPECT_TRUE(m_Records[0].mapEnded.begin()->second == MakeAudio(0, STARTS[4]));
    ASSERT_EQ(1U, m_Report.aryFiles.size());
    for (const RIP_PIECE& piece : m_Report.aryPieces)
        EXPECT_EQ(RIP_PIECE_READ, piece.eState);
    EXPECT_EQ(1, m_nStates);
}

TEST_F(RipSinkTest, WhatIsNotWholeIsAbandonedAndTheRestStays)
{
    SetUpRip();
    {
        RipSink sink(m_Stream);
        Feed(sink, 588, 140);
        sink.Stop();
        sink.Stop(); // as a cancelled rip does
    }
    EXPECT_EQ(2U, m_Records[0].mapEnded.size());
    EXPECT_EQ(std::vector<std::string>{"2.0"}, m_Records[0].aryAbandoned);
    EXPECT_TRUE(m_Report.aryPieces[1].IsWhole());
    EXPECT_FALSE(m_Report.aryPieces[2].IsWhole());
    EXPECT_FALSE(m_Report.aryPieces[3].IsWhole());
}

TEST_F(RipSinkTest, APieceThatABrokenOffRipJustCompletesIsWholeOnlyIfNothingOfItIsDoubted)
{
    for (const bool bDoubted : {false, true})
    {
        SetUpRip();
        m_Log.Clear();
        if (bDoubted)
            m_Log.Add({2, 140, 5, SECURE_RIP_UNFINISHED, 0, 0, 0});
        m_Stream.isBrokenOff = [] { return true; };
        {
            RipSink sink(m_Stream);
            Feed(sink, 588, STARTS[3]);
            sink.Stop();
        }
        EXPECT_EQ(!bDoubted, m_Report.aryPieces[2].IsWhole());
        EXPECT_EQ(bDoubted ? 1U : 0U, m_Records[0].aryAbandoned.size());
        EXPECT_TRUE(m_Report.aryPieces[1].IsWhole());
    }
}

TEST_F(RipSinkTest, EntriesOfTheLogGoToTheirPieces)
{
    SetUpRip();
    m_Log.Add({1, 100, 10, SECURE_RIP_LIMIT, 16, 3, 0});
    m_Log.Add({3, 399, 1, SECURE_RIP_UNREAD, 0, 0, 0});
    m_Log.SetReReads(17);
    {
        RipSink sink(m_Stream);
        Feed(sink, 588);
    }
    EXPECT_EQ(0, m_Report.aryPieces[0].CountBadSectors());
    EXPECT_EQ(10, m_Report.aryPieces[1].CountBadSectors());
    EXPECT_EQ(0, m_Report.aryPieces[2].CountBadSectors());
    EXPECT_EQ(1, m_Report.aryPieces[3].CountBadSectors());
    EXPECT_EQ(17, m_Report.nReReads);
}

TEST_F(RipSinkTest, AFullDiskEndsTheRip)
{
    SetUpRip(false, 2);
    m_Records[1].strFailAt = "1.1";
    m_Records[1].bDiskFull = true;
    {
        RipSink sink(m_Stream);
        Feed(sink, 588, 29);
        EXPECT_EQ(WAVESAVE_WRITTEN, sink.m_nError);
        Feed(sink, 588, 5);
        EXPECT_EQ(WAVESAVE_FILE_REFUSED, sink.m_nError);
        Feed(sink, 588);
        sink.Stop();
    }
    EXPECT_EQ("it broke", m_pCollector->GetFirstError());
    EXPECT_TRUE(m_Report.aryPieces[0].IsWhole());
    EXPECT_FALSE(m_Report.aryPieces[1].IsWhole());
    EXPECT_EQ(std::vector<std::string>{"1.0"}, m_Records[0].aryAbandoned);
}

TEST_F(RipSinkTest, OneEncoderThatFailsLeavesTheOthersAtWork)
{
    SetUpRip(false, 2);
    m_Records[1].strFailAt = "2.1";
    {
        RipSink sink(m_Stream);
        Feed(sink, 588);
        EXPECT_EQ(WAVESAVE_WRITTEN, sink.m_nError);
    }
    EXPECT_EQ(4U, m_Records[0].mapEnded.size());
    EXPECT_EQ(3U, m_Records[1].mapEnded.size());
    EXPECT_FALSE(m_Report.aryPieces[2].IsWhole()); // so that it is read again for the file that is missing
    ASSERT_EQ(2U, m_Report.aryPieces[2].aryFiles.size());
    EXPECT_EQ("", m_Report.aryPieces[2].aryFiles[0].strError);
    EXPECT_EQ("it broke", m_Report.aryPieces[2].aryFiles[1].strError);
    EXPECT_TRUE(m_Report.aryPieces[3].IsWhole());
}

TEST_F(RipSinkTest, ARipWhoseOnlyFileFailsEnds)
{
    SetUpRip();
    m_Records[0].strFailAt = "0.0";
    RipSink sink(m_Stream);
    Feed(sink, 588, 1);
    EXPECT_EQ(WAVESAVE_FILE_REFUSED, sink.m_nError);
}

TEST_F(RipSinkTest, MoreThanWasAskedForAndNothingAtAllDoNoHarm)
{
    SetUpRip();
    {
        RipSink sink(m_Stream);
        Feed(sink, 27 * 588);
        Feed(sink, 27 * 588, 10);
        sink.WriteBuffer(5, nullptr);
        sink.WriteBuffer(-5, nullptr);
    }
    ExpectWhole();
    SetUpRip();
    {
        RipSink sink(m_Stream);
    }
    EXPECT_TRUE(m_Records[0].mapEnded.empty());
}

TEST_F(RipSinkTest, TheSpeedOfEachPieceIsTakenDown)
{
    SetUpRip();
    {
        RipSink sink(m_Stream);
        sink.OnRipProgress({});
        for (int nSector = 5; nSector <= STARTS[4]; nSector += 5)
        {
            RIP_PROGRESS progress;
            progress.nDone = progress.nSector = nSector;
            sink.OnRipProgress(progress);
        }
        Feed(sink, 0);
    }
    for (const RIP_PIECE& piece : m_Report.aryPieces)
    {
        ASSERT_EQ(static_cast<size_t>(piece.nSectors / 5), piece.series.arySpeed.size());
        EXPECT_EQ(piece.nStart + 5, piece.series.arySpeed.front().nSector);
        EXPECT_EQ(piece.nStart + piece.nSectors, piece.series.arySpeed.back().nSector);
        EXPECT_GT(piece.fSeconds, 0);
        EXPECT_EQ(static_cast<size_t>(piece.nSectors), piece.series.aryWave.size());
    }
}

// Two blocks are read in 300 and 50 ms. The first is written behind it, something else within the second.
TEST(RipClock, WhatIsWrittenInBetweenDoesNotCount)
{
    const RipClock::Clock::time_point start;
    const auto At = [&](int nMs) { return start + std::chrono::milliseconds(nMs); };
    RipClock clock(At(0));
    EXPECT_DOUBLE_EQ(0.3, clock.TakeBlockSeconds(At(300)));
    clock.OnWriteBegins(At(300));
    clock.OnWriteEnds(At(2000));
    clock.OnWriteBegins(At(2020));
    clock.OnWriteEnds(At(2120));
    EXPECT_DOUBLE_EQ(0.05, clock.TakeBlockSeconds(At(2150)));
    EXPECT_DOUBLE_EQ(0, clock.TakeBlockSeconds(At(2150)));
}
