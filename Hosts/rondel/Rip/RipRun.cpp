#include "RipRun.h"
#include "Commands.h"
#include "Disc.h"
#include "HostError.h"
#include "ReportHtml.h"
#include "ReportJson.h"
#include "ReportText.h"
#include "RipCue.h"
#include "RipFacts.h"
#include "RipFiles.h"
#include "RipJob.h"
#include "RipResume.h"
#include "RipScreen.h"
#include "RipSections.h"
#include "RipSink.h"
#include "StopSignals.h"
#include "Text.h"
#include "Verification.h"
#include <cerrno>
#include <condition_variable>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <optional>
#include <set>
#include <sstream>

namespace
{
constexpr int POLL_MS = 100; // how soon a wish to stop is heard

// "2026-11-21T13:45:00+01:00"
std::string MakeLocalTime()
{
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    (void)localtime_r(&now, &local);
    char szText[64];
    std::string strTime(szText, std::strftime(szText, sizeof szText, "%Y-%m-%dT%H:%M:%S%z", &local));
    if (strTime.size() > 2)
        strTime.insert(strTime.size() - 2, ":");
    return strTime;
}

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

class RipRun
{
public:
    explicit RipRun(const RIP_WISHES& wishes) : m_Wishes(wishes) {}
    int Run();

private:
    void MakeEncoders();
    void OpenDrive();
    void Plan();
    void CheckPlaces();
    void CheckNames();
    void Resume();
    void MeasureCache();
    void SaveFirstState();
    void FillStream(RIP_STREAM& stream, RipCollector& collector);
    void FillSections(const RIP_STREAM& stream, RipSectorList& list);
    void Rip();
    void RunJob(RipJob& job, RIP_STREAM& stream, RipScreen& screen);
    void Judge(const RipJob& job, const RipCollector& collector);
    [[noreturn]] void ThrowUnfinished();
    void Complete();
    void WriteReport();
    void WriteOne(const std::string& strPath, const std::string& strText);
    CSCSICD& GetCD() { return *m_Ripper.m_pReader->m_pCD; }

    const RIP_WISHES& m_Wishes;
    std::string m_strPath;                                  // of the drive, for the disc service
    std::vector<std::unique_ptr<RipEncoder>> m_aryEncoders; // null for WAV
    std::vector<RIP_ENCODER_FACTS> m_aryFacts;
    CCDRipper m_Ripper;
    RIP_REPORT m_Report;
    RIP_NAMES m_Names;
    DiscChecksums m_Sums;
    std::optional<StopSignals> m_Signals; // from the first file on
    bool m_bStopped = false;
};

// ---- What can be refused

void RipRun::MakeEncoders()
{
    for (const std::string& strText : m_Wishes.aryEncoders)
    {
        ENCODER_CHOICE choice;
        const std::string strFault = ParseEncoderChoice(strText, choice);
        if (!strFault.empty())
            throw HostError(strFault + ".");
        RIP_ENCODER_FACTS facts{choice.strName, choice.strSuffix, {}, {}};
        std::unique_ptr<RipEncoder> pEncoder;
        if (!choice.bWAV)
        {
            pEncoder = std::make_unique<RipEncoder>(choice);
            if (facts.strSuffix.empty())
                facts.strSuffix = pEncoder->GetText("Extension");
            facts.strLibrary = pEncoder->GetText("Library");
            facts.strSettings = pEncoder->GetText("Settings");
        }
        m_aryFacts.push_back(facts);
        m_aryEncoders.push_back(std::move(pEncoder));
    }
}

void RipRun::OpenDrive()
{
    RequireDiscService();
    m_strPath = GetDrivePath(m_Wishes.strDisc);
    (void)m_Ripper.SetCopyMode(COPY_MODE_PLAYBACK); // the cache is measured once it is certain that there is a rip
    (void)m_Ripper.SetReadSpeed(m_Wishes.nSpeed);
    const bool bOpen = m_Ripper.OpenDrive(Widen(m_strPath), false) == CDRIPPER_DONE;
    if (bOpen && GetCD().m_FirstTrack != nullptr)
        return;
    const std::string strReason = GetDiscErrorText(m_strPath);
    if (!strReason.empty())
        throw HostError(strReason);
    throw HostError(m_strPath + (bOpen ? " has no table of contents that can be read; put an audio disc in the drive."
                                       : " is neither a drive nor a disc image that can be opened; name a drive that "
                                         "'rondel drives' lists, or a .cue, .toc, .ccd or .nrg file."));
}

void RipRun::Plan()
{
    RIP_PLAN plan = MakeRipPlan(GetTrackList(GetCD()), m_Wishes.choice);
    m_Report.strProgram = std::string("rondel ") + RONDEL_VERSION;
    m_Report.strStarted = MakeLocalTime();
    m_Report.strCommand = MakeRipCommandLine(m_Wishes);
    m_Report.bSecure = m_Wishes.bSecure;
    m_Report.drive = FindDriveFacts(m_Ripper, m_strPath);
    m_Report.disc = FindDiscFacts(m_Ripper);
    m_Report.aryPieces = std::move(plan.aryPieces);
    m_Report.aryNotes = std::move(plan.aryNotes);
    FindPieceFacts(m_Ripper, m_Report.aryPieces);
    std::istringstream warnings(GetDiscWarnings(m_strPath));
    for (std::string strLine; std::getline(warnings, strLine);)
        m_Report.aryNotes.push_back(strLine);
    RipSectorList list;
    for (const RIP_PIECE& piece : m_Report.aryPieces)
        if (!AddRangeSections(list, GetCD(), piece.nStart, piece.nSectors))
            throw HostError("sectors " + std::to_string(piece.nStart) + " to " +
                            std::to_string(piece.nStart + piece.nSectors - 1) +
                            " are not all audio of this disc; 'rondel info' shows where its tracks lie.");
    m_Names = MakeRipNames(m_Report, m_aryFacts, m_Wishes.names);
    (void)m_Sums.SetLayout(m_Report.disc.layout); // without one there are no sums, and the report has none
}

void RipRun::CheckPlaces()
{
    std::error_code error;
    if (!m_Wishes.names.strPicture.empty() && !std::filesystem::is_regular_file(m_Wishes.names.strPicture, error))
        throw HostError(m_Wishes.names.strPicture + " is no picture file; check its name, or leave out --picture.");
    for (const std::string& strAnswer : m_Wishes.aryAnswers)
        CheckAnswerFile(strAnswer);
    std::set<std::filesystem::path> setFolders = {m_Names.strFolder};
    for (const RIP_GROUP& group : m_Names.aryGroups)
        for (const RIP_ORDER& order : group.aryOrders)
            setFolders.insert(std::filesystem::path(order.strPath).parent_path());
    for (const std::filesystem::path& folder : setFolders)
    {
        (void)std::filesystem::create_directories(folder, error);
        if (error)
            throw HostError(folder.string() + " cannot be made (" + error.message() +
                            "); choose another folder with --to.");
        // The proof of the folder also readies what removes files in the making when a second signal comes.
        const int nError = CreatePartialFile((folder / ".rondel").string())->GetIsOpen() ? 0 : errno;
        if (nError != 0)
            throw HostError(folder.string() + " cannot be written to (" + std::strerror(nError) +
                            "); choose another folder with --to.");
    }
}

void RipRun::CheckNames()
{
    std::set<std::string> setNames;
    std::error_code error;
    const bool bState = std::filesystem::exists(m_Names.GetState(), error);
    for (const std::string& strName : m_Names.GetAll())
    {
        if (!setNames.insert(strName).second)
            throw HostError("two files of this rip would both be " + strName +
                            "; give a command another suffix, or the files other names with --name.");
        if (std::filesystem::is_directory(strName, error))
            throw HostError(strName + " is a folder; choose another folder with --to, or other names with --name.");
        if (m_Wishes.bOverwrite || (bState && m_Wishes.bResume) || !std::filesystem::exists(strName, error))
            continue;
        if (bState)
            throw HostError("a rip was broken off in " + m_Names.strFolder +
                            "; go on with --resume, or begin anew with --overwrite.");
        throw HostError(strName +
                        " exists already; choose another folder with --to, or replace what is there with --overwrite.");
    }
}

// ---- The rip

void RipRun::Resume()
{
    std::error_code error;
    const std::string strState = m_Names.GetState();
    if (m_Wishes.bResume && !std::filesystem::exists(strState, error))
        m_Report.aryNotes.push_back("There was nothing to resume; the rip began at its beginning.");
    else if (m_Wishes.bResume)
        TakeWholePieces(ReadRipState(strState, m_Report, m_Names), m_Report, m_Names, m_Sums);
}

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
        (void)AddRangeSections(list, GetCD(), part.piece.nStart, part.piece.nSectors);
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

void RipRun::RunJob(RipJob& job, RIP_STREAM& stream, RipScreen& screen)
{
    RipSectorList list;
    FillSections(stream, list);
    auto pSink = std::make_unique<RipSink>(stream);
    RIP_OPTIONS options;
    options.m_bSecure = m_Wishes.bSecure;
    options.m_nCacheSectors = m_Wishes.nCacheSectors;
    options.m_pProgress = pSink.get();
    std::unique_ptr<CWaveSave> pOutput = std::move(pSink);
    EndWaiter waiter;
    const int nResult = job.Start(list, pOutput, &waiter, options);
    if (nResult != RIP_STARTED)
        throw HostError(nResult == RIP_NO_MEMORY ? "there is not enough memory for a rip; close other programs."
                                                 : "the rip could not be started (" + std::to_string(nResult) + ").");
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
    (void)job.Stop(); // the thread has little left to do
    for (const std::unique_ptr<RipOutput>& pFiles : stream.aryOutputs)
        while (!pFiles->Wait(POLL_MS))
            screen.ShowProgress(job.GetProgress());
    m_bStopped = job.GetEnd() == RIP_END_STOPPED;
}

void RipRun::Judge(const RipJob& job, const RipCollector& collector)
{
    m_Report.strError = collector.GetFirstError();
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

// One sentence: what happened, what there is, how to go on.
void RipRun::ThrowUnfinished()
{
    int nWhole = 0;
    bool bFiles = false;
    for (const RIP_PIECE& piece : m_Report.aryPieces)
    {
        nWhole += piece.IsWhole() ? 1 : 0;
        for (const RIP_FILE& file : piece.aryFiles)
            bFiles |= file.strError.empty();
    }
    for (const RIP_FILE& file : m_Report.aryFiles)
        bFiles |= file.strError.empty();
    const std::string strWhat = m_bStopped ? "the rip was stopped" : m_Report.strError;
    if (!bFiles)
    {
        (void)std::remove(m_Names.GetState().c_str()); // there is nothing to go on behind
        throw HostError(strWhat + "; nothing is finished, so begin anew with the same command.");
    }
    throw HostError(strWhat + "; " + std::to_string(nWhole) + " of " +
                    CountOf(static_cast<int>(m_Report.aryPieces.size()), "piece") +
                    " finished and kept, so go on with the same command and --resume.");
}

// ---- The report

void RipRun::Complete()
{
    MeasureAlbum(m_Report);
    uint32_t nDiscCTDB = 0;
    if (m_Sums.GetDiscCTDB(nDiscCTDB))
        m_Report.nDiscCTDB = nDiscCTDB;
    for (size_t n = 0; n < m_Names.aryCues.size(); ++n)
    {
        RIP_FILE cue;
        cue.strName = m_Names.aryCues[n];
        cue.strEncoder = "cue";
        WriteImageCue(m_Names.GetPath(cue.strName), m_Report, m_Names.aryGroups[0].aryOrders[n].file.strName);
        if (!FillInFile(m_Names.GetPath(cue.strName), cue))
            throw HostError(m_Names.GetPath(cue.strName) + " cannot be read again; begin anew with --overwrite.");
        m_Report.aryFiles.push_back(cue);
    }
    for (const std::string& strAnswer : m_Wishes.aryAnswers)
        m_Report.aryVerifications.push_back(VerifyWithFile(strAnswer, m_Sums, m_Report));
    WriteReport();
    (void)std::remove(m_Names.GetState().c_str());
}

void RipRun::WriteReport()
{
    WriteOne(m_Names.GetHtml(), MakeHtmlReport(m_Report));
    WriteOne(m_Names.GetJson(), MakeJsonLog(m_Report));
    WriteOne(m_Names.GetLog(), MakeTextLog(m_Report));
}

void RipRun::WriteOne(const std::string& strPath, const std::string& strText)
{
    if (!WriteTextFile(strPath, strText))
        throw HostError(strPath + " cannot be written (" + std::strerror(errno) +
                        "); make room, and finish with the same command and --resume.");
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
    for (const RIP_VERIFICATION& verification : m_Report.aryVerifications)
        for (const std::string& strNote : verification.aryNotes)
            std::printf("%s: %s\n", verification.strKind.c_str(), strNote.c_str());
    std::printf("Log: %s\n", m_Names.GetLog().c_str());
    if (m_Report.eOutcome == RIP_OUTCOME_DOUBTFUL)
        throw HostError(CountOf(m_Report.CountBadSectors(), "sector") +
                        " of the disc could not be read beyond doubt; " + m_Names.GetLog() +
                        " names them, so clean the disc and rip those tracks again.");
    return EXIT_DONE;
}
} // namespace

int RunRip(const RIP_WISHES& wishes) { return RipRun(wishes).Run(); }
