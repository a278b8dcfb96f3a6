// A rip into the host's own files that is stopped at each of its blocks: what was whole by then stays, under its name,
// and nothing else has one.

#include "CDRipper.h"
#include "LySharedToolsHelper.h"
#include "ProcessInfo.h"
#include "RipJob.h"
#include "RipNames.h"
#include "RipperLib/RipWatch.h"
#include "RipSections.h"
#include "RipSink.h"
#include "TempFolder.h"
#include "Text.h"
#include <fstream>
#include <gtest/gtest.h>
#include <set>

namespace
{
constexpr int STARTS[] = {0, 20, 80, 85, 170}; // hidden audio, three tracks, the end
constexpr size_t PIECES = 4;
constexpr size_t WAV_HEADER_BYTES = 44;

std::string MakeAudio(int nSector, int nSectors)
{
    std::string strBytes;
    for (int n = nSector * LY_CD_SECTOR_BYTES; n < (nSector + nSectors) * LY_CD_SECTOR_BYTES; ++n)
        strBytes += static_cast<char>((static_cast<unsigned int>(n) * 2654435761U >> 13) | 1U);
    return strBytes;
}

// Passes the progress on to the sink, and stops the rip when it is told of the nth time.
class StoppingProgress final : public IRipProgress
{
public:
    StoppingProgress(RipSink& sink, RipJob& job, int nStopAt) : m_Sink(sink), m_Job(job), m_nStopAt(nStopAt) {}

    void OnRipProgress(const RIP_PROGRESS& progress) override
    {
        m_Sink.OnRipProgress(progress);
        if (++m_nTimes != m_nStopAt)
            return;
        m_nDone = progress.nDone;
        m_Job.RequestStop();
    }
    int GetTimes() const { return m_nTimes; }
    int GetDone() const { return m_nDone; } // sectors when the stop was asked for

private:
    RipSink& m_Sink;
    RipJob& m_Job;
    const int m_nStopAt;
    int m_nTimes = 0;
    int m_nDone = STARTS[PIECES];
};

struct STOP_RESULT
{
    int m_nTimes = 0; // that progress was told of
    int m_nDone = 0;
    int m_nEnd = RIP_END_WHOLE;
};

class RipStops : public ::testing::Test
{
protected:
    void SetUp() override
    {
        GetProcessInfo(true)->SetSharedLibraryPath(LyString().FromANSI(RONDEL_BIN_DIR "/"));
        (void)GetDiscManager(true);
        (void)m_Folder.Write("disc.bin", MakeAudio(0, STARTS[PIECES]));
        (void)m_Folder.Write("disc.cue", "FILE \"disc.bin\" BINARY\nTRACK 01 AUDIO\nINDEX 00 00:00:00\n"
                                         "INDEX 01 00:00:20\nTRACK 02 AUDIO\nINDEX 01 00:01:05\n"
                                         "TRACK 03 AUDIO\nINDEX 01 00:01:10\n");
    }
    void TearDown() override { g_LySharedToolsHelper.UnloadLySharedLibs(false); }

    void MakeReport()
    {
        m_Report = {};
        for (size_t n = 0; n < PIECES; ++n)
        {
            RIP_PIECE piece;
            piece.nTrack = static_cast<int>(n);
            piece.nStart = STARTS[n];
            piece.nSectors = STARTS[n + 1] - STARTS[n];
            m_Report.aryPieces.push_back(piece);
            if (n > 0)
                m_Report.disc.layout.Add(piece.nStart);
        }
        m_Report.disc.layout.Finish(STARTS[PIECES]);
    }
    void FillStream(RIP_STREAM& stream, RipCollector& collector)
    {
        stream.pGroups = &m_Names.aryGroups;
        stream.pCollector = &collector;
        stream.pSums = &m_Sums;
        stream.bAnalyze = false;
        for (size_t nGroup = 0; nGroup < m_Names.aryGroups.size(); ++nGroup)
        {
            const std::vector<size_t>& aryPieces = m_Names.aryGroups[nGroup].aryPieces;
            for (const size_t n : aryPieces)
                stream.aryParts.push_back(
                    {n, nGroup, n == aryPieces.front(), n == aryPieces.back(), m_Report.aryPieces[n]});
        }
        stream.aryOutputs.push_back(MakeWAVOutput(collector));
    }
    // Rips all into "out"; stopped when progress is told of for the nth time, which is first ahead of the first block.
    STOP_RESULT Rip(bool bSecure, bool bImage, int nStopAt)
    {
        std::filesystem::remove_all(m_Folder.GetPath("out"));
        std::filesystem::create_directories(m_Folder.GetPath("out"));
        MakeReport();
        RIP_NAME_WISHES wishes{m_Folder.GetPath("out"), "%{track}", bImage, ""};
        m_Names = MakeRipNames(m_Report, {{"wav", "wav", "", ""}}, wishes);
        (void)m_Sums.SetLayout(m_Report.disc.layout, 0);
        CCDRipper ripper;
        (void)ripper.SetCopyMode(COPY_MODE_PLAYBACK);
        EXPECT_EQ(CDRIPPER_DONE, ripper.OpenDrive(Widen(m_Folder.GetPath("disc.cue")), true));
        RipCollector collector(m_Report, m_Names.aryGroups, bImage);
        RIP_STREAM stream;
        FillStream(stream, collector);
        RipJob job(ripper);
        stream.pLog = &job.GetLog();
        stream.isBrokenOff = [&job] { return job.GetEnd() != RIP_END_WHOLE; };
        auto pSink = std::make_unique<RipSink>(stream);
        StoppingProgress progress(*pSink, job, nStopAt);
        RIP_OPTIONS options;
        options.m_bSecure = bSecure;
        options.m_nCacheSectors = 0;
        options.m_pProgress = &progress;
        RipSectorList list;
        for (size_t n = 0; n < PIECES; ++n)
            (void)list.Add({static_cast<int>(n), STARTS[n], STARTS[n + 1] - STARTS[n]});
        std::unique_ptr<CWaveSave> pOutput = std::move(pSink);
        WaitingOwner owner;
        EXPECT_EQ(RIP_STARTED, job.Start(list, pOutput, &owner, options));
        (void)owner.Wait();
        (void)job.Stop();
        for (const std::unique_ptr<RipOutput>& pFiles : stream.aryOutputs)
            while (!pFiles->Wait(1000))
            {
            }
        return {progress.GetTimes(), progress.GetDone(), job.GetEnd()};
    }
    std::set<std::string> GetOutput() const
    {
        std::set<std::string> setNames;
        for (const auto& entry : std::filesystem::directory_iterator(m_Folder.GetPath("out")))
            setNames.insert(entry.path().filename().string());
        return setNames;
    }
    std::string ReadAudio(const std::string& strName) const
    {
        std::ifstream file(m_Folder.GetPath("out/" + strName), std::ios::binary);
        const std::string strWav{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
        return strWav.size() < WAV_HEADER_BYTES ? "" : strWav.substr(WAV_HEADER_BYTES);
    }

    // Tracks: all that was read to its end before the stop, and no more.
    void ExpectTracks(const STOP_RESULT& result) const
    {
        std::set<std::string> setWanted;
        for (size_t n = 0; n < PIECES; ++n)
        {
            const std::string strName = "0" + std::to_string(n);
            const bool bWhole = STARTS[n + 1] <= result.m_nDone;
            EXPECT_EQ(bWhole, m_Report.aryPieces[n].IsWhole()) << strName;
            EXPECT_EQ(bWhole ? 1U : 0U, m_Report.aryPieces[n].aryFiles.size()) << strName;
            if (!bWhole)
                continue;
            setWanted.insert(strName + ".wav");
            const std::string strWanted = MakeAudio(STARTS[n], STARTS[n + 1] - STARTS[n]);
            EXPECT_TRUE(ReadAudio(strName + ".wav").starts_with(strWanted)) << strName;
            EXPECT_EQ(0, m_Report.aryPieces[n].CountBadSectors()) << strName;
        }
        EXPECT_EQ(setWanted, GetOutput());
    }
    void ExpectImage(const STOP_RESULT& result) const
    {
        const bool bWhole = result.m_nDone == STARTS[PIECES];
        EXPECT_EQ(bWhole ? std::set<std::string>{"rip.wav"} : std::set<std::string>(), GetOutput());
        for (const RIP_PIECE& piece : m_Report.aryPieces)
            EXPECT_EQ(bWhole, piece.IsWhole()) << piece.nTrack;
        if (bWhole)
        {
            EXPECT_TRUE(ReadAudio("rip.wav").starts_with(MakeAudio(0, STARTS[PIECES])));
        }
    }
    void StopEverywhere(bool bSecure, bool bImage)
    {
        const int nTimes = Rip(bSecure, bImage, 0).m_nTimes;
        EXPECT_GE(nTimes, 9); // blocks of 27 sectors: 1, 3, 1 and 4 of them
        for (int nStopAt = 1; nStopAt <= nTimes; ++nStopAt)
        {
            SCOPED_TRACE("stopped at " + std::to_string(nStopAt));
            const STOP_RESULT result = Rip(bSecure, bImage, nStopAt);
            if (bImage)
                ExpectImage(result);
            else
                ExpectTracks(result);
            EXPECT_EQ(result.m_nDone == STARTS[PIECES] ? RIP_END_WHOLE : RIP_END_STOPPED, result.m_nEnd);
        }
    }

    TempFolder m_Folder;
    RIP_REPORT m_Report;
    RIP_NAMES m_Names;
    DiscChecksums m_Sums;
};
} // namespace

TEST_F(RipStops, TracksReadOnce) { StopEverywhere(false, false); }

TEST_F(RipStops, TracksReadTwice) { StopEverywhere(true, false); }

TEST_F(RipStops, AnImageReadOnce) { StopEverywhere(false, true); }

TEST_F(RipStops, AnImageReadTwice) { StopEverywhere(true, true); }
