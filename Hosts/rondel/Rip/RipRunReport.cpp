// The end of a rip: what is told of one that is whole, or how to go on with one that is not.

#include "HostError.h"
#include "ReportHtml.h"
#include "ReportJson.h"
#include "ReportText.h"
#include "RipCue.h"
#include "RipFiles.h"
#include "RipMeter.h"
#include "RipRunDetails.h"
#include "RipTags.h"
#include "Text.h"
#include "Verification.h"
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>

std::string MakeLocalTime()
{
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    (void)localtime_r(&now, &local);
    char szText[64];
    std::string strTime(szText, std::strftime(szText, sizeof szText, "%Y-%m-%dT%H:%M:%S%z", &local));
    if (strTime.size() > 2)
        strTime.insert(strTime.size() - 2, ":"); // %z has none
    return strTime;
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
    if (m_bStopped && bFiles) // what ends a rip otherwise would also end this
        GiveTags();
    if (!bFiles)
    {
        (void)std::remove(m_Names.GetState().c_str()); // there is nothing to go on behind
        throw HostError(strWhat + "; nothing is finished, so begin anew with the same command.");
    }
    throw HostError(strWhat + "; " + std::to_string(nWhole) + " of " +
                    CountOf(static_cast<int>(m_Report.aryPieces.size()), "piece") +
                    " finished and kept, so go on with the same command and --resume.");
}

void RipRun::Complete()
{
    MeasureAlbum(m_Report);
    GiveTags();
    uint32_t nDiscCTDB = 0;
    if (m_Sums.GetDiscCTDB(nDiscCTDB))
        m_Report.nDiscCTDB = nDiscCTDB;
    WriteCues();
    CompareWithAnswers();
    WriteReport();
    (void)std::remove(m_Names.GetState().c_str());
}

// The state follows each file, so that a rip that is broken off here knows them all again.
void RipRun::GiveTags()
{
    const std::vector<std::string> aryFailures =
        FinishTags(m_Report, m_Names, [this] { WriteOne(m_Names.GetState(), MakeStateText(m_Report)); });
    for (const std::string& strFailure : aryFailures)
    {
        std::fprintf(stderr, "rondel: %s\n", strFailure.c_str());
        m_Report.aryNotes.push_back(strFailure);
    }
}

void RipRun::WriteCues()
{
    for (size_t n = 0; n < m_Names.aryCues.size(); ++n)
    {
        RIP_FILE cue;
        cue.strName = m_Names.aryCues[n];
        cue.strEncoder = "cue";
        const std::string strPath = m_Names.GetPath(cue.strName);
        WriteImageCue(strPath, m_Report, m_Names.aryGroups[0].aryOrders[n].file.strName);
        if (!FillInFile(strPath, cue))
            throw HostError(strPath + " cannot be read again (" + std::strerror(errno) +
                            "); begin anew with --overwrite.");
        m_Report.aryFiles.push_back(cue);
    }
}

// An answer that has gone since it was looked at costs the rip nothing but the comparison.
void RipRun::CompareWithAnswers()
{
    for (const std::string& strAnswer : m_Wishes.aryAnswers)
    {
        try
        {
            m_Report.aryVerifications.push_back(VerifyWithFile(strAnswer, m_Sums, m_Report));
        }
        catch (const HostError& error)
        {
            m_Report.aryNotes.push_back(std::string("Not compared: ") + error.what());
            std::printf("%s\n", m_Report.aryNotes.back().c_str());
        }
    }
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

void RipRun::ShowEnd()
{
    for (const RIP_VERIFICATION& verification : m_Report.aryVerifications)
        for (const std::string& strNote : verification.aryNotes)
            std::printf("%s: %s\n", verification.strKind.c_str(), strNote.c_str());
    std::printf("Log: %s\n", m_Names.GetLog().c_str());
    if (m_Report.eOutcome == RIP_OUTCOME_DOUBTFUL)
        throw HostError(CountOf(m_Report.CountBadSectors(), "sector") +
                        " of the disc could not be read beyond doubt; " + m_Names.GetLog() +
                        " names them, so clean the disc and rip those tracks again.");
}
