// A report in which every member has a value of its own, and a way to compare reports member by member.
//
// Tie names every member of a record: one that is added later does not compile until it is named here, and does not
// pass until FullReport fills it.

#pragma once

#include "RipReport.h"
#include <cstdio>
#include <limits>
#include <string>
#include <tuple>
#include <type_traits>

#define TIE(RECORD, ...)                                                                                               \
    inline auto Tie(const RECORD& record)                                                                              \
    {                                                                                                                  \
        const auto& [__VA_ARGS__] = record;                                                                            \
        return std::tie(__VA_ARGS__);                                                                                  \
    }

TIE(RIP_DRIVE, a, b, c, d, e, f, g, h, i, j, k)
TIE(CD_LAYOUT_TRACK, a, b, c, d)
TIE(CD_LAYOUT, a, b)
TIE(RIP_DISC, a, b, c, d, e, f, g, h)
TIE(RIP_FILE, a, b, c, d, e, f, g, h)
TIE(RIP_LOUDNESS, a, b, c, d, e, f, g)
TIE(RIP_ANALYSIS, a, b, c, d, e, f)
TIE(RIP_WAVE_POINT, a, b)
TIE(RIP_SPEED_POINT, a, b, c)
TIE(RIP_SERIES, a, b, c, d, e)
TIE(SECURE_RIP_ENTRY, a, b, c, d, e, f, g)
TIE(TRACK_CHECKSUMS, a, b, c, d, e, f, g)
TIE(RIP_PIECE, a, b, c, d, e, f, g, h, i, j, k, l, m, n)
TIE(ACCURATERIP_TRACK_VERDICT, a, b, c, d, e, f, g)
TIE(ACCURATERIP_MATCH, a, b, c, d, e)
TIE(ACCURATERIP_VERDICT, a, b, c, d)
TIE(CTDB_PART_VERDICT, a, b, c, d, e, f)
TIE(CTDB_VERDICT, a, b, c, d, e)
TIE(RIP_VERIFICATION, a, b, c, d, e)
TIE(RIP_REPORT, a, b, c, d, e, f, g, h, i, j, k, l, m, n, o, p, q, r, s, t, u)
#undef TIE

// Calls Take(leaf) for every text, number and flag of a record, and Empty() for every list and optional without one.
template <class T, class TAKE>
void ForEachLeaf(const T& value, TAKE& take)
{
    if constexpr (requires { Tie(value); })
        std::apply([&](const auto&... members) { (ForEachLeaf(members, take), ...); }, Tie(value));
    else if constexpr (requires { value.begin(); } && !std::is_same_v<T, std::string>)
    {
        take.Size(value.size());
        for (const auto& element : value)
            ForEachLeaf(element, take);
    }
    else if constexpr (requires { value.has_value(); })
    {
        take.Size(value ? 1 : 0);
        if (value)
            ForEachLeaf(*value, take);
    }
    else
        take.Leaf(value);
}

// All leaves as one text, exact to the bit.
struct LeafText
{
    std::string m_str;

    void Size(size_t n) { m_str += "[" + std::to_string(n) + "]"; }
    void Leaf(const std::string& str) { m_str += "\"" + str + "\"\n"; }
    template <class T>
    void Leaf(T value)
    {
        char aryText[64];
        if constexpr (std::is_floating_point_v<T>)
            (void)std::snprintf(aryText, sizeof aryText, "%a\n", static_cast<double>(value));
        else
            (void)std::snprintf(aryText, sizeof aryText, "%lld\n", static_cast<long long>(value));
        m_str += aryText;
    }
    static std::string Make(const RIP_REPORT& report)
    {
        LeafText text;
        ForEachLeaf(report, text);
        return text.m_str;
    }
};

struct DefaultCounter
{
    int m_nDefaults = 0;
    int m_nLeaves = 0;

    void Size(size_t n) { m_nDefaults += n == 0 ? 1 : 0; }
    template <class T>
    void Leaf(const T& value)
    {
        ++m_nLeaves;
        m_nDefaults += value == T() ? 1 : 0;
    }
};

// The rows of FullReport are told apart by their number.
inline RIP_FILE MakeFullFile(int n, bool bMade = true)
{
    const std::string strNumber = std::to_string(n);
    RIP_FILE file{"folder " + strNumber + "/song \xC3\xA4 " + strNumber + ".flac",
                  "encoder" + strNumber,
                  "library " + strNumber + ".5",
                  "level=" + strNumber,
                  10000000000LL + n,
                  std::string(60, 'a') + std::to_string(1000 + n),
                  "ABCD" + std::to_string(1000 + n),
                  ""};
    if (!bMade)
    {
        file.nBytes = 0;
        file.strSHA256.clear();
        file.strCRC32.clear();
        file.strError = "no room " + strNumber;
    }
    return file;
}

inline RIP_LOUDNESS MakeFullLoudness(double f)
{
    return {-f - 0.11, -f - 0.22, -f - 0.33, f + 0.44, -f - 0.55, -f - 0.66, -f - 0.77};
}

inline RIP_PIECE MakeFullPiece(int n)
{
    const auto Sum = [n](uint32_t nKind) { return 0xA0000000 + 0x10000 * static_cast<uint32_t>(n) + nKind; };
    RIP_PIECE piece;
    piece.nTrack = n;
    piece.strTitle = "Title " + std::to_string(n);
    piece.strPerformer = "Performer " + std::to_string(n);
    piece.strISRC = "ISRC0000000" + std::to_string(n);
    piece.nStart = 1000 * n;
    piece.nSectors = 900 + n;
    piece.bPreEmphasis = true;
    piece.eState = n % 2 == 0 ? RIP_PIECE_TAKEN : RIP_PIECE_READ;
    piece.fSeconds = 7.125 + n;
    for (int nStatus = 0; nStatus < SECURE_RIP_STATUSES; ++nStatus)
        piece.aryEntries.push_back({n, 1000 * n + 30 * nStatus + 1, 5 + nStatus, nStatus, 31 + nStatus, 61 + nStatus,
                                    1000 * (100 + nStatus) + n});
    piece.sums = {true, Sum(1), Sum(2), Sum(3), Sum(4), Sum(5), Sum(6)};
    piece.analysis =
        RIP_ANALYSIS{MakeFullLoudness(20.0 + n), 200 + n, {n + 0.15, n + 0.25}, n + 120.35, n + 240.7, 0.375};
    piece.series.nWaveSectors = 7 + n;
    piece.series.aryWave = {{-32768, 32767}, {static_cast<short>(-n), static_cast<short>(n)}};
    piece.series.aryMomentary = {-0.1F, -23.45F, 1e-30F, std::numeric_limits<float>::max()};
    piece.series.aryShortTerm = {-0.3F, -std::numeric_limits<float>::infinity(), -12.75F};
    piece.series.arySpeed = {{1027, 8.3F, 0.7F}, {1054, 1.0F / 3, 1.7F}};
    piece.aryFiles = {MakeFullFile(10 * n), MakeFullFile(10 * n + 1, false)};
    return piece;
}

inline RIP_VERIFICATION MakeFullVerification()
{
    RIP_VERIFICATION verification;
    verification.strFile = "dBAR-answer.bin";
    verification.strKind = "AccurateRip";
    verification.accurateRip =
        ACCURATERIP_VERDICT{811,
                            812,
                            {{1, true, 813, 814, -815, 816, 817}, {2, true, 818, 819, 820, 821, 822}},
                            {{1, 823, 824, 450, -825}}};
    verification.ctdb = CTDB_VERDICT{831, 832, 833, {834, true, 835, -836, 837, 838}, {{1, true, 839, -840, 841, 842}}};
    verification.aryNotes = {"First note of the comparison.", "Second note of the comparison."};
    return verification;
}

inline RIP_REPORT MakeFullReport()
{
    RIP_REPORT report;
    report.strProgram = "rondel 9.8.7";
    report.strStarted = "2026-01-02T03:04:05+01:00";
    report.strEnded = "2026-01-02T03:24:25+01:00";
    report.strCommand = "rondel rip /dev/sr7 --to /music";
    report.bSecure = true;
    report.eOutcome = RIP_OUTCOME_DOUBTFUL;
    report.strError = "the error of the rip";
    report.drive = {"/dev/sr7", "VENDOR", "MODEL", "R1.23", true, "profile-7", 1717, true, true, 667, 52};
    report.disc.strTitle = "Disc title";
    report.disc.strPerformer = "Disc performer";
    report.disc.strUPC = "4006381333931";
    report.disc.layout.m_aryTracks = {{1, 1000, 2000, true}, {2, 2000, 3456, true}};
    report.disc.layout.m_nLeadOut = 3457;
    report.disc.strAccurateRipID = "00000001-00000002-03000402";
    report.disc.strCDDBID = "03000402";
    report.disc.strMusicBrainzID = "abcdefghijklmnopqrstuvwxyz.-";
    report.disc.strCTDBID = "1000:2000:3457";
    report.aryPieces = {MakeFullPiece(1), MakeFullPiece(2)};
    report.nReReads = 4711;
    report.fSeconds = 1220.5;
    report.album = MakeFullLoudness(40);
    report.nAlbumDR = 309;
    report.selection = MakeFullLoudness(50);
    report.nSelectionDR = 310;
    report.nDiscCTDB = 0xDEADBEEF;
    report.aryFiles = {MakeFullFile(90), MakeFullFile(91, false)};
    report.aryVerifications = {MakeFullVerification()};
    report.aryNotes = {"Note one of the rip.", "Note two of the rip."};
    report.aryPartsBefore = {"folder 10/song.wav.part", "song.log.part7"};
    return report;
}
