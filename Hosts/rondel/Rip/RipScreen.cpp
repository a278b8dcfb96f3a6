#include "RipScreen.h"
#include "CDUnits.h"
#include "Text.h"
#include <algorithm>
#include <cstdio>

namespace
{
constexpr std::chrono::milliseconds UPDATE_TIME(250);
constexpr double NEW_SHARE = 0.2; // of a speed just measured in the one that is shown

double GetSpeed(int nSectors, double fSeconds)
{
    return fSeconds > 0 ? static_cast<double>(nSectors) / LY_CD_SECTORS_PER_SECOND / fSeconds : 0;
}

std::string FormatSpeed(double fSpeed)
{
    char szText[32];
    std::snprintf(szText, sizeof szText, fSpeed < 100 ? "%.1fx" : "%.0fx", fSpeed);
    return szText;
}

std::string FormatPercent(long long nPart, long long nAll)
{
    return std::to_string(nAll > 0 ? nPart * 100 / nAll : 100) + " %";
}

// Nothing is called right that was not read twice alike.
std::string DescribeState(const RIP_PIECE& piece, bool bSecure)
{
    const int nBad = piece.CountBadSectors();
    std::string strText = nBad == 0 ? (bSecure ? "right" : "read once") : CountOf(nBad, "doubtful sector");
    for (const RIP_FILE& file : piece.aryFiles)
        if (!file.strError.empty())
            strText += ", " + file.strError;
    return strText;
}
} // namespace

std::string GetPieceName(const RIP_PIECE& piece)
{
    if (piece.nTrack > 0)
        return "Track " + std::to_string(piece.nTrack);
    return piece.strTitle;
}

RipScreen::RipScreen(std::vector<RIP_PIECE> aryPieces, bool bSecure)
    : m_aryPieces(std::move(aryPieces)), m_bSecure(bSecure)
{
}

std::string RipScreen::MakeProgressText(const RIP_PROGRESS& progress, Clock::time_point now)
{
    size_t nPiece = 0;
    int nDone = progress.nDone;
    while (nPiece + 1 < m_aryPieces.size() && nDone >= m_aryPieces[nPiece].nSectors)
        nDone -= m_aryPieces[nPiece++].nSectors;
    const RIP_PIECE& piece = m_aryPieces[nPiece];
    const double fNew =
        GetSpeed(progress.nDone - m_nLastDone, std::chrono::duration<double>(now - m_LastUpdate).count());
    m_fSpeed = m_nLastDone == 0 ? fNew : m_fSpeed + NEW_SHARE * (fNew - m_fSpeed);
    m_nLastDone = progress.nDone;
    m_LastUpdate = now;

    std::string strText = GetPieceName(piece) + ": " + FormatPercent(nDone, piece.nSectors) +
                          ", all: " + FormatPercent(progress.nDone, progress.nTotal) + ", " + FormatSpeed(m_fSpeed);
    if (progress.nReReads > 0)
        strText += ", " + CountOf(progress.nReReads, "re-read");
    const double fAverage = GetSpeed(progress.nDone, std::chrono::duration<double>(now - m_Start).count());
    if (fAverage > 0)
        strText +=
            ", " + FormatSeconds((progress.nTotal - progress.nDone) / fAverage / LY_CD_SECTORS_PER_SECOND) + " left";
    return strText;
}

void RipScreen::ShowProgress(const RIP_PROGRESS& progress)
{
    const std::lock_guard lock(m_Mutex);
    const Clock::time_point now = Clock::now();
    if (!m_Line.GetIsTerminal() || m_aryPieces.empty() || now - m_LastUpdate < UPDATE_TIME)
        return;
    m_Line.Show(MakeProgressText(progress, now));
}

void RipScreen::ShowPiece(const RIP_PIECE& piece)
{
    std::string strLine = GetPieceName(piece) + ": " + FormatMSF(piece.nSectors);
    if (piece.eState == RIP_PIECE_TAKEN)
        strLine += ", taken from before";
    else if (piece.fSeconds > 0)
        strLine += ", " + FormatSpeed(GetSpeed(piece.nSectors, piece.fSeconds));
    ShowLine(strLine + ", " + DescribeState(piece, m_bSecure));
}

void RipScreen::ShowLine(const std::string& strLine)
{
    const std::lock_guard lock(m_Mutex);
    m_Line.TakeAway();
    std::printf("%s\n", strLine.c_str());
    (void)std::fflush(stdout);
}
