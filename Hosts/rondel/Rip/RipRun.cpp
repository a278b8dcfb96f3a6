#include "RipRun.h"
#include "Commands.h"
#include "HostError.h"
#include "ReportJson.h"
#include "RipFiles.h"
#include "RipJob.h"
#include "RipRunDetails.h"
#include "RipSections.h"
#include "Text.h"
#include <cerrno>
#include <condition_variable>
#include <cstring>
#include <mutex>

namespace
{
constexpr int POLL_MS = 100; // how soon a wish to stop is heard

class EndWaiter final : public IRipOwner
{
public:
    void Post(int, int, int, int) override
    {
        const std::lock_guard lock(m_Mutex);
        m_bEnded = true;
        m_Changed.notify_all();
    }
    bool Wait(int nMs)
    {
        std::unique_lock lock(m_Mutex);
        return m_Changed.wait_for(lock, std::chrono::milliseconds(nMs), [this] { return m_bEnded; });
    }

private:
    std::mutex m_Mutex;
    std::condition_variable m_Changed;
    bool m_bEnded = false;
};
} // namespace

// What the drive is remembered for, or a measurement of some seconds.
void RipRun::MeasureCache()
{
    if (!m_Wishes.bSecure || m_Wishes.nCacheSectors >= 0)
        return;
    const int nBytes = m_Ripper.GetReadCacheSize(Widen(m_strPath));
    GetCD().m_DriveInfo.m_nCacheSize = nBytes;
    m_Report.drive.bCacheMeasured = nBytes > 0;
}

// From now on all files with the planned names are this rip's own.
void RipRun::SaveFirstState()
{
    if (!WriteTextFile(m_Names.GetState(), MakeStateText(m_Report)))
        throw HostError(m_Names.GetState() + " cannot be written (" + std::strerror(errno) +
                        "); make room, or choose another folder with --to.");
}

void RipRun::Rip()
{
    RipCollector collector(m_Report, m_Names.aryGroups, m_Wishes.names.bImage);
    RIP_STREAM stream;
    FillStream(stream, collector);
    std::vector<RIP_PIECE> aryToRead;
    for (const RIP_STREAM::PART& part : stream.aryParts)
        aryToRead.push_back(part.piece);
    RipScreen screen(aryToRead, m_Wishes.bSecure);
    for (const RIP_PIECE& piece : m_Report.aryPieces)
        if (piece.IsWhole())
            screen.ShowPiece(piece);
    collector.SetListener([&](const RIP_PIECE& piece) { screen.ShowPiece(piece); });
    collector.SetStateWriter([this](const RIP_REPORT& report)
                             { return WriteTextFile(m_Names.GetState(), MakeStateText(report)); });
    RipJob job(m_Ripper);
    stream.pLog = &job.GetLog();
    stream.isBrokenOff = [&job] { return job.GetEnd() != RIP_END_WHOLE; };
    if (!stream.aryParts.empty())
        RunJob(job, stream, screen);
    m_Report.strEnded = MakeLocalTime();
    Judge(job, collector);
}

void RipRun::FillStream(RIP_STREAM& stream, RipCollector& collector)
{
    stream.pGroups = &m_Names.aryGroups;
    stream.pCollector = &collector;
    stream.pSums = &m_Sums;
    stream.bAnalyze = m_Wishes.bAnalyze;
    stream.fSecondsBefore = m_Report.fSeconds;
    for (size_t nGroup = 0; nGroup < m_Names.aryGroups.size(); ++nGroup)
    {
        const std::vector<size_t>& aryPieces = m_Names.aryGroups[nGroup].aryPieces;
        for (const size_t nPiece : aryPieces)
            if (!m_Report.aryPieces[nPiece].IsWhole())
                stream.aryParts.push_back({nPiece, nGroup, nPiece == aryPieces.front(), nPiece == aryPieces.back(),
                                           m_Report.aryPieces[nPiece]});
    }
    for (std::unique_ptr<RipEncoder>& pEncoder : m_aryEncoders)
        stream.aryOutputs.push_back(pEncoder != nullptr ? MakeEncoderOutput(std::move(pEncoder), collector)
                                                        : MakeWAVOutput(collector));
}

void RipRun::FillSections(const RIP_STREAM& stream, RipSectorList& list)
{
    for (const RIP_STREAM::PART& part : stream.aryParts)
        (void)AddRangeSections(list, GetCD(), part.piece.nStart, part.piece.nSectors); // the plan has proved them
}

bool RipRun::StartJob(RipJob& job, RIP_STREAM& stream, IRipOwner& owner)
{
    RipSectorList list;
    FillSections(stream, list);
    auto pSink = std::make_unique<RipSink>(stream);
    RIP_OPTIONS options;
    options.m_bSecure = m_Wishes.bSecure;
    options.m_nCacheSectors = m_Wishes.nCacheSectors;
    options.m_pProgress = pSink.get();
    std::unique_ptr<CWaveSave> pOutput = std::move(pSink);
    const int nResult = job.Start(list, pOutput, &owner, options);
    if (nResult == RIP_STARTED)
        return true;
    m_strNotStarted = nResult == RIP_NO_MEMORY ? "there is not enough memory for a rip"
                                               : "the rip could not be started (" + std::to_string(nResult) + ")";
    return false;
}

void RipRun::RunJob(RipJob& job, RIP_STREAM& stream, RipScreen& screen)
{
    EndWaiter waiter;
    if (!StartJob(job, stream, waiter))
        return;
    stream.pCollector->Change(
        [&](RIP_REPORT& report)
        {
            report.drive.nCacheSectors = job.GetCacheSectors();
            report.drive.bAccurateStream = job.GetAccurateStream();
        });
    while (!waiter.Wait(POLL_MS))
    {
        if (m_Signals->GetStopWanted())
            job.RequestStop();
        screen.ShowProgress(job.GetProgress());
    }
    const auto waitForFiles = [&]
    {
        for (const std::unique_ptr<RipOutput>& pFiles : stream.aryOutputs)
            while (!pFiles->Wait(POLL_MS))
                screen.ShowProgress(job.GetProgress());
    };
    waitForFiles();   // first, so that the thread, which has little left to do, has ended:
    (void)job.Stop(); // a thread that has not is looked for again much later
    waitForFiles();
    m_bStopped = job.GetEnd() == RIP_END_STOPPED;
}

void RipRun::Judge(const RipJob& job, const RipCollector& collector)
{
    m_Report.strError = m_strNotStarted.empty() ? collector.GetFirstError() : m_strNotStarted;
    m_Report.eOutcome = m_Report.CountBadSectors() > 0 ? RIP_OUTCOME_DOUBTFUL : RIP_OUTCOME_WHOLE;
    bool bAll = true;
    for (const RIP_PIECE& piece : m_Report.aryPieces)
        bAll &= piece.IsWhole();
    if (bAll && m_Report.strError.empty())
        return;
    m_Report.eOutcome = m_bStopped ? RIP_OUTCOME_STOPPED : RIP_OUTCOME_FAILED;
    if (!m_Report.strError.empty())
        return;
    if (job.GetEnd() == RIP_END_DISC_GONE)
        m_Report.strError = "the disc was taken out or changed, or the drive is gone";
    else if (!m_bStopped)
        m_Report.strError = "the drive could not be read to the end of what was asked for";
}

int RipRun::Run()
{
    MakeEncoders();
    OpenDrive();
    Plan();
    CheckNames();
    CheckPlaces();
    Resume();
    MeasureCache();
    m_Signals.emplace();
    SaveFirstState();
    Rip();
    if (m_Report.eOutcome == RIP_OUTCOME_STOPPED || m_Report.eOutcome == RIP_OUTCOME_FAILED)
        ThrowUnfinished();
    Complete();
    ShowEnd();
    return EXIT_DONE;
}

int RunRip(const RIP_WISHES& wishes) { return RipRun(wishes).Run(); }
