// ReportHtmlParts: what the sources of the HTML report share. Each function answers a piece of the page that is
// well-formed in itself.

#pragma once

#include "RipReport.h"
#include <cstdint>
#include <string>
#include <string_view>

namespace ReportHtml
{
constexpr const char* UNKNOWN = "–";

// A chart is this many columns wide at most, and with many pieces fewer, so that the page stays small.
constexpr int CHART_COLUMNS = 1000;
constexpr int PAGE_COLUMNS = 32000;
constexpr int LEAST_COLUMNS = 250;
int GetColumns(size_t nPieces);

// Text. Escaped is for contents and for attributes in double quotes; isolated text keeps its direction of writing to
// itself.
std::string Escape(std::string_view strText);
std::string Isolate(std::string_view strText);
std::string FormatDecimal(double f, int nDigits);  // a true minus sign; "−∞"; a dash for what is no number
std::string FormatWhole(long long n);              // "359,845"
std::string FormatCount(long long n, const char*); // "1 sector", "2 sectors"
std::string FormatSum(uint32_t n);                 // eight digits; a dash for 0
std::string FormatPlace(double fPart);             // 0 to 1 as "12.345%"
std::string OrUnknown(const std::string& strHtml); // a dash for nothing

// What a piece is called, as plain text: "Track 3", "Hidden audio", "Sectors 300 to 599".
std::string GetPieceName(const RIP_REPORT& report, const RIP_PIECE& piece);
int CountReReadPlaces(const RIP_PIECE& piece);
const char* GetStatusText(int nStatus); // SECURE_RIP_STATUS

// The parts of the page.
std::string MakeVerdict(const RIP_REPORT& report);
std::string MakeFacts(const RIP_REPORT& report);
std::string MakeTrackTable(const RIP_REPORT& report);
std::string MakeSumTable(const RIP_REPORT& report);
std::string MakeVerification(const RIP_REPORT& report);
std::string MakeFiles(const std::vector<RIP_FILE>& aryFiles, const std::string& strCaption);
std::string MakeTrackDetails(const RIP_REPORT& report, size_t nPiece);

// The charts. Ids end in the index of the piece.
std::string MakeSymbols(); // that the charts use; once for the page
std::string MakeSpeedChart(const RIP_REPORT& report);
std::string MakeWaveChart(const RIP_REPORT& report, size_t nPiece);
std::string MakeLoudnessChart(const RIP_REPORT& report, size_t nPiece);
std::string MakeThumbnail(const RIP_REPORT& report, size_t nPiece); // shows the waveform of MakeWaveChart once more

extern const char* const STYLE;  // style sheet; without < and &, as XML takes it
extern const char* const SCRIPT; // likewise
} // namespace ReportHtml
