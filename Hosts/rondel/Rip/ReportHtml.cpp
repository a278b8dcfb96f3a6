#include "ReportHtml.h"
#include "LyString.h"
#include "ReportHtmlParts.h"
#include "SecureHash.h"
#include "Text.h"
#include <cstring>

namespace ReportHtml
{
namespace
{
// CSP Level 2, 4.2.5: the base64 form of the SHA-256 of what stands between the tags.
std::string MakeHashSource(const char* pText)
{
    const SHA256Hash::DIGEST digest = SHA256Hash::Make(pText, std::strlen(pText));
    LyString str;
    str.FromBinary(digest.data(), static_cast<int>(digest.size()));
    std::string strBase64 = Narrow(str);
    std::erase_if(strBase64, [](char c) { return c == '\r' || c == '\n'; });
    return "'sha256-" + strBase64 + "'";
}

// Nothing is loaded from anywhere, and no style or script counts but these two: even if a text of the disc found a way
// around the escapes, it would stay a text.
std::string MakePolicy()
{
    return "default-src 'none'; style-src " + MakeHashSource(STYLE) + "; script-src " + MakeHashSource(SCRIPT) +
           "; base-uri 'none'; form-action 'none'";
}

std::string GetDiscName(const RIP_REPORT& report)
{
    const std::string& strTitle = report.disc.strTitle;
    const std::string& strPerformer = report.disc.strPerformer;
    if (strTitle.empty() && strPerformer.empty())
        return "Disc without a name";
    return strPerformer.empty() ? strTitle : strTitle.empty() ? strPerformer : strPerformer + " – " + strTitle;
}

std::string MakeHead(const RIP_REPORT& report)
{
    return "<head><meta charset=\"utf-8\"/>\n"
           "<meta http-equiv=\"Content-Security-Policy\" content=\"" +
           MakePolicy() +
           "\"/>\n<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\"/>\n"
           "<meta name=\"color-scheme\" content=\"light dark\"/>\n<meta name=\"referrer\" content=\"no-referrer\"/>\n"
           "<meta name=\"generator\" content=\"" +
           Escape(report.strProgram) + "\"/>\n<title>Rip of " + Escape(GetDiscName(report)) + "</title>\n<style>" +
           STYLE + "</style></head>\n";
}

std::string MakeHeader(const RIP_REPORT& report)
{
    const std::string strTitle = report.disc.strTitle.empty() ? GetDiscName(report) : report.disc.strTitle;
    return "<a class=\"skip\" href=\"#tracks\">Skip to the tracks</a>\n" + MakeSymbols() +
           "<header><p class=\"kind\">Report of a rip</p><h1>" + Isolate(strTitle) + "</h1>" +
           (report.disc.strTitle.empty() || report.disc.strPerformer.empty()
                ? ""
                : "<p class=\"by\">" + Isolate(report.disc.strPerformer) + "</p>") +
           "</header>\n";
}

std::string MakeNotes(const RIP_REPORT& report)
{
    if (report.aryNotes.empty())
        return "";
    std::string strNotes = "<section class=\"notes\" aria-labelledby=\"notes-h\"><h2 id=\"notes-h\">Notes</h2><ul>";
    for (const std::string& strNote : report.aryNotes)
        strNotes += "<li>" + Isolate(strNote) + "</li>";
    return strNotes + "</ul></section>\n";
}

std::string MakeTracks(const RIP_REPORT& report)
{
    std::string strTracks = "<section aria-labelledby=\"tracks\"><h2 id=\"tracks\" tabindex=\"-1\">Tracks</h2>\n";
    if (report.aryPieces.empty())
        return strTracks + "<p class=\"none\">Nothing was read.</p></section>\n";
    strTracks += MakeTrackTable(report);
    for (size_t i = 0; i < report.aryPieces.size(); ++i)
        strTracks += MakeTrackDetails(report, i);
    return strTracks + "</section>\n<section aria-labelledby=\"sums-h\"><h2 id=\"sums-h\">Check sums</h2>\n" +
           MakeSumTable(report) + MakeVerification(report) + "</section>\n";
}

std::string MakeFooter(const RIP_REPORT& report)
{
    return "<footer><p>" + OrUnknown(Isolate(report.strProgram)) +
           ". Times are minutes, seconds and, where there is a point, 75ths of a second. In a chart each column "
           "shows the extremes of the time that it stands for.</p></footer>\n";
}
} // namespace
} // namespace ReportHtml

std::string MakeHtmlReport(const RIP_REPORT& report)
{
    using namespace ReportHtml;
    return "<!DOCTYPE html>\n<html lang=\"en\">\n" + MakeHead(report) + "<body>\n" + MakeHeader(report) + "<main>\n" +
           MakeVerdict(report) + MakeFacts(report) +
           "<section aria-labelledby=\"speed-h\"><h2 id=\"speed-h\">Reading</h2>\n" + MakeSpeedChart(report) +
           "</section>\n" + MakeNotes(report) + MakeTracks(report) +
           MakeFiles(report.aryFiles, "Files of the whole disc") + "</main>\n" + MakeFooter(report) + "<script>" +
           SCRIPT + "</script>\n</body></html>\n";
}
