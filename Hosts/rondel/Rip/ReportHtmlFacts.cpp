// Facts of the HTML report: drive, disc, the rip itself; files; what databases say.

#include "CDUnits.h"
#include "ReportHtmlParts.h"
#include "Text.h"

namespace ReportHtml
{
namespace
{
std::string Fact(const char* pName, const std::string& strHtml)
{
    return strHtml.empty() ? "" : std::string("<dt>") + pName + "</dt><dd>" + strHtml + "</dd>";
}

std::string Code(const std::string& strText) { return strText.empty() ? "" : "<code>" + Isolate(strText) + "</code>"; }

std::string MakeGroup(const char* pTitle, const std::string& strFacts)
{
    return std::string("<div class=\"group\"><h3>") + pTitle + "</h3><dl>" + strFacts + "</dl></div>";
}

std::string MakeDiscFacts(const RIP_DISC& disc)
{
    const CD_LAYOUT& layout = disc.layout;
    const int nTracks = static_cast<int>(layout.m_aryTracks.size());
    const int nData = nTracks - layout.CountAudioTracks();
    std::string strTracks;
    if (nTracks > 0)
        strTracks = FormatCount(nTracks, "track") + (nData > 0 ? ", " + std::to_string(nData) + " with data" : "") +
                    ", " + FormatMSF(layout.m_nLeadOut);
    return MakeGroup("Disc", Fact("Title", Isolate(disc.strTitle)) + Fact("Performer", Isolate(disc.strPerformer)) +
                                 Fact("Holds", strTracks) + Fact("UPC", Code(disc.strUPC)) +
                                 Fact("AccurateRip", Code(disc.strAccurateRipID)) + Fact("CDDB", Code(disc.strCDDBID)) +
                                 Fact("MusicBrainz", Code(disc.strMusicBrainzID)) + Fact("CTDB", Code(disc.strCTDBID)));
}

std::string MakeDriveFacts(const RIP_DRIVE& drive)
{
    std::string strModel = Isolate(drive.strVendor) + " " + Isolate(drive.strModel) + " " + Isolate(drive.strRevision);
    if (strModel == "  ")
        strModel.clear();
    const std::string strCache =
        drive.nCacheSectors == 0 && !drive.bCacheMeasured
            ? ""
            : FormatCount(drive.nCacheSectors, "sector") + (drive.bCacheMeasured ? ", measured" : ", not measured");
    return MakeGroup("Drive",
                     Fact("Path", Code(drive.strPath)) + Fact("Kind", drive.bImage ? "disc image" : "drive") +
                         Fact("Model", strModel) + Fact("Profile", Isolate(drive.strProfile)) +
                         Fact("Cache", strCache) + Fact("Accurate stream", drive.bAccurateStream ? "yes" : "no") +
                         Fact("Read offset", FormatDecimal(drive.nReadOffset, 0) + " frames") +
                         Fact("Speed", drive.nMaxSpeed > 0 ? "up to " + std::to_string(drive.nMaxSpeed) + "×" : ""));
}

// "2026-11-21 12:00:41 +01:00": the parts of ISO 8601 apart, as people read them and lines break between them.
std::string ShowTime(std::string strTime)
{
    constexpr size_t TIME_AT = std::string_view("2026-11-21").size();
    constexpr size_t OFFSET_AT = std::string_view("2026-11-21T12:00:41").size();
    if (strTime.size() > OFFSET_AT && strTime[TIME_AT] == 'T')
    {
        strTime[TIME_AT] = ' ';
        strTime.insert(OFFSET_AT, " ");
    }
    return Isolate(strTime);
}

std::string MakeRipFacts(const RIP_REPORT& report)
{
    return MakeGroup("Rip", Fact("Mode", report.bSecure ? "secure: everything is read twice" : "burst: read once") +
                                Fact("Began", ShowTime(report.strStarted)) + Fact("Ended", ShowTime(report.strEnded)) +
                                Fact("Took", report.fSeconds > 0 ? FormatSeconds(report.fSeconds) + " min" : "") +
                                Fact("Command", Code(report.strCommand)) + Fact("Program", Isolate(report.strProgram)));
}

std::string Cell(const std::string& strHtml, const char* pClass = "n")
{
    return std::string("<td class=\"") + pClass + "\">" + OrUnknown(strHtml) + "</td>";
}

std::string DescribeTrackVerdict(const ACCURATERIP_TRACK_VERDICT& track)
{
    if (!track.m_bKnown)
        return "not compared";
    if (track.IsAccurate())
        return "agrees";
    if (track.m_nOtherConfidence > 0)
        return "agrees at an offset of " + FormatDecimal(track.m_nOtherOffset, 0) + " frames (" +
               std::to_string(track.m_nOtherConfidence) + ")";
    return track.m_nSubmissions > 0 ? "differs" : "nobody sent this track";
}

std::string MakeAccurateRipTable(const ACCURATERIP_VERDICT& verdict)
{
    std::string strTable =
        "<div class=\"scroll\" role=\"region\" tabindex=\"0\" aria-label=\"AccurateRip, table\"><table>"
        "<caption>AccurateRip, " +
        FormatCount(verdict.m_nBlocks, "pressing") +
        " of this disc</caption><thead><tr><th scope=\"col\">Track</th>"
        "<th scope=\"col\">Result</th><th scope=\"col\" class=\"n\">Alike, v1</th>"
        "<th scope=\"col\" class=\"n\">Alike, v2</th><th scope=\"col\" class=\"n\">Sent</th></tr>"
        "</thead><tbody>";
    for (const ACCURATERIP_TRACK_VERDICT& track : verdict.m_aryTracks)
        strTable += "<tr><th scope=\"row\">" + std::to_string(track.m_nTrack) + "</th>" +
                    Cell(DescribeTrackVerdict(track), "w") + Cell(std::to_string(track.m_nConfidence1)) +
                    Cell(std::to_string(track.m_nConfidence2)) + Cell(std::to_string(track.m_nSubmissions)) + "</tr>";
    return strTable + "</tbody></table></div>\n";
}
} // namespace

std::string MakeFacts(const RIP_REPORT& report)
{
    return "<section class=\"facts\" aria-labelledby=\"facts-h\"><h2 id=\"facts-h\">Disc and drive</h2>" +
           MakeDiscFacts(report.disc) + MakeDriveFacts(report.drive) + MakeRipFacts(report) + "</section>\n";
}

std::string MakeVerification(const RIP_REPORT& report)
{
    std::string strHtml;
    for (const RIP_VERIFICATION& verification : report.aryVerifications)
    {
        strHtml += "<h3>" + Isolate(verification.strKind) + ": " + Code(verification.strFile) + "</h3>\n";
        if (verification.accurateRip)
            strHtml += MakeAccurateRipTable(*verification.accurateRip);
        for (const std::string& strNote : verification.aryNotes)
            strHtml += "<p>" + Isolate(strNote) + "</p>\n";
    }
    return strHtml;
}

std::string MakeFiles(const std::vector<RIP_FILE>& aryFiles, const std::string& strCaption)
{
    if (aryFiles.empty())
        return "";
    std::string strTable =
        "<div class=\"scroll\" role=\"region\" tabindex=\"0\" aria-label=\"" + Escape(strCaption) +
        ", table\"><table class=\"files\"><caption>" + Escape(strCaption) +
        "</caption><thead><tr><th scope=\"col\">Name</th><th scope=\"col\">Encoder</th>"
        "<th scope=\"col\" class=\"n\">Bytes</th><th scope=\"col\">SHA-256 or CRC-32</th></tr></thead><tbody>";
    for (const RIP_FILE& file : aryFiles)
    {
        strTable += "<tr><th scope=\"row\">" + OrUnknown(Isolate(file.strName)) + "</th><td>" +
                    Isolate(file.strEncoder) + " <small>" + Isolate(file.strLibrary) + " " + Isolate(file.strSettings) +
                    "</small></td>";
        if (!file.strError.empty())
            strTable += "<td class=\"w error\" colspan=\"2\">No file: " + Isolate(file.strError) + "</td></tr>";
        else
            strTable += Cell(FormatWhole(file.nBytes)) +
                        Cell(Code(file.strSHA256.empty() ? file.strCRC32 : file.strSHA256), "sum") + "</tr>";
    }
    return strTable + "</tbody></table></div>\n";
}
} // namespace ReportHtml
