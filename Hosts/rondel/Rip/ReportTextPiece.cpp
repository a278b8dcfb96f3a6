#include "ReportTextDetails.h"
#include "Text.h"
#include <algorithm>
#include <cmath>

namespace
{
std::string DescribeState(const RIP_PIECE& piece)
{
    if (piece.eState == RIP_PIECE_OPEN)
        return "open: not read, or not to its end";
    const std::string strRead =
        piece.eState == RIP_PIECE_READ ? "read" : "taken from an earlier rip, its files checked; it was read";
    const std::string strSpeed = FormatSpeed(piece.nSectors, piece.fSeconds);
    return strRead + " in " + FormatDuration(piece.fSeconds) + (strSpeed.empty() ? "" : ", " + strSpeed);
}

std::string DescribeEntry(const SECURE_RIP_ENTRY& entry)
{
    switch (entry.nStatus)
    {
    case SECURE_RIP_REREAD:
        return "one mismatch, then alike";
    case SECURE_RIP_MATCHED:
        return FormatText("alike after %d mismatches", entry.nRetries);
    case SECURE_RIP_LIMIT:
        return FormatText("DOUBTFUL: %d mismatches, never alike", entry.nRetries);
    case SECURE_RIP_SHORT:
        return "DOUBTFUL: a read delivered too little";
    case SECURE_RIP_NOTHING:
        return "DOUBTFUL: nothing was delivered";
    case SECURE_RIP_UNREAD:
        return "DOUBTFUL: unreadable, silence here";
    case SECURE_RIP_CACHED:
        return "DOUBTFUL: both reads may be cached";
    case SECURE_RIP_UNFINISHED:
        return "DOUBTFUL: stopped while comparing";
    case SECURE_RIP_DIFFERS:
        return "DOUBTFUL: differed to the last";
    default:
        return "DOUBTFUL";
    }
}

void AddEntry(TextLines& lines, const RIP_PIECE& piece, const SECURE_RIP_ENTRY& entry)
{
    const int nInside = std::max(0, entry.nSector - piece.nStart);
    lines.Line(FormatText("  %-13s  %-17s  %8s  %6s  %6d  %s", FormatSectors(entry.nSector, entry.nSectors).c_str(),
                          FormatAddresses(entry.nSector, entry.nSectors).c_str(), FormatMSF(nInside).c_str(),
                          FormatDuration(entry.nElapsedMs / 1000.0).c_str(), entry.nMismatchedSectors,
                          DescribeEntry(entry).c_str()));
}

void AddEntries(TextLines& lines, const RIP_REPORT& report, const RIP_PIECE& piece)
{
    if (!piece.aryEntries.empty())
    {
        lines.Empty();
        lines.Line("  Sectors        On the disc        In track   After  Differ  What happened");
        for (const SECURE_RIP_ENTRY& entry : piece.aryEntries)
            AddEntry(lines, piece, entry);
        lines.Line(FormatText("  Doubtful sectors: %d", piece.CountBadSectors()));
        lines.Empty();
    }
    else if (report.bSecure && piece.IsWhole())
        lines.Field("Doubts", "none: no sector needed another reading");
}

void AddSums(TextLines& lines, const TRACK_CHECKSUMS& sums)
{
    if (!sums.m_bComplete && sums.m_nCRC32 == 0)
        return;
    lines.Field(TEXT_LABEL_CRC32, FormatSum(sums.m_nCRC32));
    if (!sums.m_bComplete)
        return;
    lines.Field("CRC-32 without null", FormatSum(sums.m_nCRC32WithoutNull));
    lines.Field("AccurateRip v1", FormatSum(sums.m_nAccurateRip1));
    lines.Field("AccurateRip v2", FormatSum(sums.m_nAccurateRip2));
    lines.Field("Sum of sector 450", FormatSum(sums.m_nFrame450));
    lines.Field("CTDB sum", FormatSum(sums.m_nCTDB));
}

void AddAnalysis(TextLines& lines, const RIP_ANALYSIS& analysis)
{
    AddLoudness(lines, analysis.loudness);
    std::string strChannels;
    for (const double fDR : analysis.aryChannelDR)
        strChannels += (strChannels.empty() ? "channels " : ", ") + FormatReal(fDR, "dB");
    const std::string strDR = analysis.nDR ? FormatText("DR %d", *analysis.nDR) : std::string();
    const bool bBoth = !strDR.empty() && !strChannels.empty();
    lines.Field("Dynamic range", strDR + (bBoth ? ", " : "") + strChannels);
    if (analysis.fBPM)
        lines.Field("Tempo",
                    FormatReal(*analysis.fBPM, "BPM") +
                        (analysis.fOctaveBPM ? FormatText(" (or %.2f)", *analysis.fOctaveBPM) : std::string()) +
                        FormatText(", confidence %.2f of 1", analysis.fBPMConfidence));
}
} // namespace

std::string FormatAddress(int nSector) { return FormatMSF(nSector + LY_CD_MSF_OFFSET); }

std::string FormatSectors(int nFirst, int nSectors)
{
    return nSectors == 1 ? FormatText("%d", nFirst) : FormatText("%d-%d", nFirst, nFirst + nSectors - 1);
}

std::string FormatAddresses(int nFirst, int nSectors)
{
    return FormatAddress(nFirst) + (nSectors == 1 ? "" : "-" + FormatAddress(nFirst + nSectors - 1));
}

std::string NamePiece(const RIP_REPORT& report, const RIP_PIECE& piece)
{
    if (piece.nTrack > 0)
        return FormatText("Track %d", piece.nTrack);
    const std::vector<CD_LAYOUT_TRACK>& aryTracks = report.disc.layout.m_aryTracks;
    if (!aryTracks.empty() && piece.nStart + piece.nSectors <= aryTracks.front().m_nStart)
        return FormatText("Audio ahead of track %d", aryTracks.front().m_nNumber);
    return "Sectors " + FormatSectors(piece.nStart, piece.nSectors);
}

void AddLoudness(TextLines& lines, const RIP_LOUDNESS& loudness)
{
    constexpr double DECIBELS_PER_DECADE = 20; // of amplitude
    const double fPercent = 100 * std::pow(10.0, loudness.fSamplePeak / DECIBELS_PER_DECADE);
    lines.Field("Peak level", FormatReal(loudness.fSamplePeak, "dBFS") + FormatText(" (%.1f %%)", fPercent));
    lines.Field("True peak", FormatReal(loudness.fTruePeak, "dBTP"));
    lines.Field("Loudness", FormatReal(loudness.fIntegrated, "LUFS"));
    lines.Field("Momentary maximum", FormatReal(loudness.fMomentaryMax, "LUFS"));
    lines.Field("Short-term maximum", FormatReal(loudness.fShortTermMax, "LUFS"));
    lines.Field("Loudness range", FormatReal(loudness.fRange, "LU"));
    if (loudness.fReplayGain)
        lines.Field("ReplayGain", FormatText("%+.2f dB", *loudness.fReplayGain));
}

void AddFile(TextLines& lines, const RIP_FILE& file)
{
    lines.Empty();
    lines.Unbroken(TEXT_LABEL_FILE, file.strName);
    lines.Field("Encoder", file.strEncoder + (file.strLibrary.empty() ? "" : " (" + file.strLibrary + ")"));
    lines.Field("Settings", file.strSettings);
    if (!file.strError.empty())
    {
        lines.Unbroken(TEXT_LABEL_NOT_MADE, file.strError);
        return;
    }
    lines.Field(TEXT_LABEL_SIZE, FormatText("%lld", file.nBytes) + TEXT_UNIT_SIZE);
    if (!file.strSHA256.empty())
        lines.Unbroken(TEXT_LABEL_SHA256, file.strSHA256);
    if (!file.strCRC32.empty())
        lines.Unbroken(TEXT_LABEL_CRC32, file.strCRC32);
}

void AddPiece(TextLines& lines, const RIP_REPORT& report, const RIP_PIECE& piece)
{
    lines.Title(NamePiece(report, piece));
    lines.Field("Title", piece.strTitle);
    lines.Field("Performer", piece.strPerformer);
    lines.Field("ISRC", piece.strISRC);
    lines.Field("Sectors", FormatSectors(piece.nStart, piece.nSectors) +
                               FormatText(" (%d), %s", piece.nSectors, FormatMSF(piece.nSectors).c_str()));
    lines.Field("Pre-emphasis", piece.bPreEmphasis ? "yes, as it is on the disc" : "");
    lines.Field("State", DescribeState(piece));
    AddEntries(lines, report, piece);
    if (piece.analysis)
        AddAnalysis(lines, *piece.analysis);
    AddSums(lines, piece.sums);
    for (const RIP_FILE& file : piece.aryFiles)
        AddFile(lines, file);
}
