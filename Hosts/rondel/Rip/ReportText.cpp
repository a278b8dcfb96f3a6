#include "ReportText.h"
#include "LogEscapes.h"
#include "LogSeal.h"
#include "ReportTextDetails.h"
#include "Text.h"

namespace
{
constexpr double MEBIBYTE = 1024.0 * 1024.0;

std::string DescribeCache(const RIP_DRIVE& drive)
{
    if (drive.nCacheSectors < 1)
        return drive.bCacheMeasured ? "none, measured" : "none, as told or as the drive declares it";
    return FormatText("%d sectors (%.2f MiB), %s", drive.nCacheSectors,
                      drive.nCacheSectors * (LY_CD_SECTOR_BYTES / MEBIBYTE),
                      drive.bCacheMeasured ? "measured" : "as told or as the drive declares it");
}

// Of what this rip has read itself.
std::string DescribeSpeed(const RIP_REPORT& report)
{
    int nSectors = 0;
    double fSeconds = 0;
    for (const RIP_PIECE& piece : report.aryPieces)
    {
        if (piece.eState != RIP_PIECE_READ)
            continue;
        nSectors += piece.nSectors;
        fSeconds += piece.fSeconds;
    }
    const std::string strAverage = FormatSpeed(nSectors, fSeconds);
    std::string strSpeed = strAverage.empty() ? "" : strAverage + " on average";
    if (report.drive.nMaxSpeed > 0)
        strSpeed +=
            FormatText("%s%dx at most by the drive's word", strSpeed.empty() ? "" : ", ", report.drive.nMaxSpeed);
    return strSpeed;
}

void AddHead(TextLines& lines, const RIP_REPORT& report)
{
    lines.Title(EscapeForLine(report.strProgram) + ": log of a CD rip");
    lines.Field("Begun", report.strStarted);
    lines.Field("Ended", report.strEnded);
    lines.Field("Time", FormatDuration(report.fSeconds));
    lines.Field("Command", report.strCommand);
}

void AddDrive(TextLines& lines, const RIP_REPORT& report)
{
    const RIP_DRIVE& drive = report.drive;
    lines.Title("Drive");
    lines.Field(drive.bImage ? "Disc image" : "Device", drive.strPath);
    lines.Field("Drive", drive.strVendor + (drive.strVendor.empty() ? "" : " ") + drive.strModel);
    lines.Field("Revision", drive.strRevision);
    lines.Field("Profile", drive.strProfile);
    lines.Field("Read mode", report.bSecure ? "secure: each sector is read until two reads are alike"
                                            : "burst: each sector is read once, and nothing is compared");
    lines.Field("Read cache", DescribeCache(drive));
    lines.Field("Accurate stream", drive.bAccurateStream ? "yes" : "no");
    lines.Field("Read offset",
                drive.nReadOffset != 0 ? FormatText("%+d frames, corrected", drive.nReadOffset) : "none to correct");
    lines.Field("Speed", DescribeSpeed(report));
}

void AddContents(TextLines& lines, const CD_LAYOUT& layout)
{
    lines.Title("Table of contents");
    lines.Line("  Track     Start    Length   First sector   Last sector   Kind");
    for (const CD_LAYOUT_TRACK& track : layout.m_aryTracks)
        lines.Line(FormatText("  %5d  %8s  %8s  %13d  %12d   %s", track.m_nNumber,
                              FormatAddress(track.m_nStart).c_str(), FormatMSF(track.GetSectors()).c_str(),
                              track.m_nStart, track.m_nEnd - 1, track.m_bData ? "data" : "audio"));
    lines.Line(FormatText("  %5s  %8s  %8s  %13d  %12s   lead-out", "end", FormatAddress(layout.m_nLeadOut).c_str(), "",
                          layout.m_nLeadOut, ""));
}

void AddDisc(TextLines& lines, const RIP_REPORT& report)
{
    const RIP_DISC& disc = report.disc;
    lines.Title("Disc");
    lines.Field("Title", disc.strTitle);
    lines.Field("Performer", disc.strPerformer);
    lines.Field("UPC/EAN", disc.strUPC);
    lines.Field("AccurateRip", disc.strAccurateRipID);
    lines.Field("CDDB", disc.strCDDBID);
    lines.Field("MusicBrainz", disc.strMusicBrainzID);
    lines.Field("CTDB", disc.strCTDBID);
    AddContents(lines, disc.layout);
}

void AddMeasured(TextLines& lines, const std::optional<RIP_LOUDNESS>& loudness, const std::optional<int>& nDR)
{
    if (loudness)
        AddLoudness(lines, *loudness);
    if (nDR)
        lines.Field("Dynamic range", FormatText("DR %d", *nDR));
}

void AddWhole(TextLines& lines, const RIP_REPORT& report)
{
    lines.Title("The whole rip");
    if (report.bSecure)
        lines.Field("Re-reads", FormatText("%d", report.nReReads));
    lines.Field("CTDB sum of disc", FormatSum(report.nDiscCTDB));
    AddMeasured(lines, report.album, report.nAlbumDR);
    if (report.selection)
        lines.Field("Measured over", "what was ripped, not the whole album; so there is no gain of an album");
    AddMeasured(lines, report.selection, report.nSelectionDR);
    for (const RIP_FILE& file : report.aryFiles)
        AddFile(lines, file);
}
} // namespace

std::string MakeTextLog(const RIP_REPORT& report)
{
    TextLines lines;
    AddHead(lines, report);
    AddDrive(lines, report);
    AddDisc(lines, report);
    for (const RIP_PIECE& piece : report.aryPieces)
        AddPiece(lines, report, piece);
    AddWhole(lines, report);
    for (const RIP_VERIFICATION& verification : report.aryVerifications)
        AddVerification(lines, verification);
    AddConclusion(lines, report);
    lines.Empty();
    return SealTextLog(lines.Get());
}
