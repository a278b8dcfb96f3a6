// A report as a rip of a scratched disc would leave it: clipped music, quiet music, noise, silence, a fade; places that
// were read again, and places in doubt. Everything is made up, and always the same.

#pragma once

#include "CDUnits.h"
#include "RipReport.h"
#include <algorithm>
#include <cmath>
#include <limits>

class SampleReport
{
public:
    // Tracks of these lengths, in sectors.
    static RIP_REPORT Make(const std::vector<int>& aryLengths, bool bFaults = true)
    {
        RIP_REPORT report;
        SetFacts(report);
        int nStart = 0;
        for (const int nSectors : aryLengths)
        {
            report.disc.layout.Add(nStart);
            report.aryPieces.push_back(MakePiece(static_cast<int>(report.aryPieces.size()) + 1, nStart, nSectors));
            nStart += nSectors;
        }
        report.disc.layout.Finish(nStart);
        if (bFaults)
            AddFaults(report);
        AddSpeed(report, nStart);
        AddVerification(report);
        return report;
    }
    // Nine tracks, 42 minutes.
    static RIP_REPORT Make() { return Make({17325, 22110, 15893, 30412, 19004, 24650, 12075, 28333, 20018}); }
    // 80 minutes, the longest that a disc holds by the book.
    static RIP_REPORT MakeLongest(int nTracks)
    {
        constexpr int LONGEST = 80 * 60 * LY_CD_SECTORS_PER_SECOND;
        return Make(std::vector<int>(static_cast<size_t>(nTracks), LONGEST / nTracks));
    }

    // One piece of 2000 sectors from sector 1000, with these places.
    static RIP_REPORT MakeMarked(std::vector<SECURE_RIP_ENTRY> aryEntries)
    {
        RIP_REPORT report;
        report.aryPieces.resize(1);
        report.aryPieces[0].nTrack = 1;
        report.aryPieces[0].nStart = 1000;
        report.aryPieces[0].nSectors = 2000;
        report.aryPieces[0].eState = RIP_PIECE_READ;
        report.aryPieces[0].aryEntries = std::move(aryEntries);
        return report;
    }

    static SECURE_RIP_ENTRY MakeEntry(const RIP_PIECE& piece, int nOffset, int nSectors, int nStatus, int nRetries)
    {
        return {piece.nTrack, piece.nStart + nOffset, nSectors,       nStatus,
                nRetries,     std::min(nSectors, 26), 61000 + nOffset};
    }

private:
    // Reproducible noise between 0 and 1.
    static double Noise(uint32_t& nState)
    {
        nState = nState * 1664525U + 1013904223U;
        return static_cast<double>(nState >> 8) / (1 << 24);
    }

    // The envelope of a piece at a part of it, 0 to 1; another character for each track.
    static double GetLevel(int nTrack, double fPart, double fSecond)
    {
        const double fPulse = 0.75 + 0.25 * std::cos(fSecond * 6.283 * 0.5);
        const double fEnds = std::min({1.0, fPart * 60, (1 - fPart) * 25});
        switch (nTrack % 5)
        {
        case 1: // clipped all along, but for a break
            return fPart > 0.55 && fPart < 0.63 ? 0.18 * fPulse : 1.6 * fEnds;
        case 2: // quiet, with one outburst
            return fEnds * (0.07 * fPulse + 0.7 * std::exp(-std::pow((fPart - 0.7) * 18, 2)));
        case 3: // grows
            return fEnds * (0.08 + 0.8 * fPart * fPart) * fPulse;
        case 4: // song with verses
            return fEnds * (std::fmod(fPart * 4, 1) < 0.55 ? 0.35 : 0.72) * fPulse;
        default: // noise, silence in the middle, noise
            return fPart > 0.4 && fPart < 0.52 ? 0 : 0.3 * fEnds;
        }
    }

    static void AddWave(RIP_PIECE& piece)
    {
        uint32_t nState = static_cast<uint32_t>(piece.nTrack) * 77777U;
        RIP_SERIES& series = piece.series;
        series.nWaveSectors = 5;
        for (int i = 0; i < piece.nSectors; i += series.nWaveSectors)
        {
            const double fLevel = 32768 * GetLevel(piece.nTrack, i / double(piece.nSectors), i / 75.0);
            const auto sample = [&](double f) { return static_cast<short>(std::clamp(f, -32768.0, 32767.0)); };
            const double fHigh = fLevel * (0.7 + 0.5 * Noise(nState));
            const double fLow = fLevel * (0.7 + 0.5 * Noise(nState));
            series.aryWave.push_back({sample(-fLow), sample(fHigh)});
        }
    }

    static void AddLoudness(RIP_PIECE& piece)
    {
        constexpr int SHORT_TERM_VALUES = 30; // 3 s
        uint32_t nState = static_cast<uint32_t>(piece.nTrack) * 999U + 5;
        const int nValues = piece.nSectors * 10 / 75;
        std::vector<double> aryPowers;
        double fSum = 0;
        for (int i = 0; i < nValues; ++i)
        {
            const double fLevel = std::min(0.6, GetLevel(piece.nTrack, i / double(nValues), i / 10.0));
            aryPowers.push_back(fLevel * fLevel * (0.3 + 0.7 * Noise(nState)));
            fSum +=
                aryPowers.back() - (i >= SHORT_TERM_VALUES ? aryPowers[static_cast<size_t>(i - SHORT_TERM_VALUES)] : 0);
            piece.series.aryMomentary.push_back(ToLUFS(aryPowers.back()));
            piece.series.aryShortTerm.push_back(ToLUFS(std::max(fSum, 0.0) / SHORT_TERM_VALUES));
        }
        RIP_LOUDNESS& loudness = piece.analysis->loudness;
        double fMean = 0;
        for (const double fPower : aryPowers)
            fMean += fPower / nValues;
        loudness.fIntegrated = ToLUFS(fMean);
        loudness.fMomentaryMax = *std::max_element(piece.series.aryMomentary.begin(), piece.series.aryMomentary.end());
        loudness.fShortTermMax = *std::max_element(piece.series.aryShortTerm.begin(), piece.series.aryShortTerm.end());
        loudness.fReplayGain = -18 - loudness.fIntegrated; // the reference of ReplayGain 2.0
    }
    static float ToLUFS(double fPower)
    {
        return fPower < 1e-9 ? -std::numeric_limits<float>::infinity()
                             : static_cast<float>(-3 + 10 * std::log10(fPower));
    }

    static RIP_PIECE MakePiece(int nTrack, int nStart, int nSectors)
    {
        static const char* const TITLES[] = {"Overture, with Cannon", "Moss",  "The Long Stair", "Four Rooms",
                                             "Tape & Hiss",           "Brick", "Night Ferry",    "Ascent — Part Ⅱ",
                                             "Kitchen Radio"};
        RIP_PIECE piece;
        piece.nTrack = nTrack;
        piece.strTitle = TITLES[(nTrack - 1) % 9];
        piece.strPerformer = "The Reference Ensemble";
        piece.strISRC = "DEX03260" + std::to_string(1000 + nTrack);
        piece.nStart = nStart;
        piece.nSectors = nSectors;
        piece.eState = RIP_PIECE_READ;
        piece.fSeconds = nSectors / 75.0 / 14;
        const uint32_t n = static_cast<uint32_t>(nTrack) * 2654435761U;
        piece.sums = {true, n, n ^ 0x1234U, n * 3, n * 5, n * 7, n * 11};
        RIP_ANALYSIS analysis;
        analysis.loudness = {-9.3 - nTrack % 5 * 3, -5.1, -7.2, 4.0 + nTrack, -0.01, 0.83, -8.7 + nTrack};
        analysis.nDR = 5 + nTrack % 8;
        analysis.aryChannelDR = {5.4 + nTrack % 8, 5.1 + nTrack % 8};
        analysis.fBPM = 96 + nTrack * 3;
        analysis.fOctaveBPM = *analysis.fBPM * 2;
        analysis.fBPMConfidence = 0.86;
        piece.analysis = analysis;
        const std::string strBase = (nTrack < 10 ? "0" : "") + std::to_string(nTrack) + " - " + piece.strTitle;
        piece.aryFiles = {
            {strBase + ".flac", "flac", "libFLAC 1.4.2", "level=8", 4000000LL + nSectors, std::string(64, 'a'), "", ""},
            {strBase + ".opus", "opus", "libopusenc 0.2", "bitrate=160", 900000LL + nSectors, std::string(64, '5'), "",
             ""}};
        AddWave(piece);
        AddLoudness(piece);
        return piece;
    }

    static void AddFaults(RIP_REPORT& report)
    {
        if (report.aryPieces.size() < 6)
            return;
        RIP_PIECE& again = report.aryPieces[1];
        again.aryEntries = {MakeEntry(again, again.nSectors / 4, 27, SECURE_RIP_REREAD, 1),
                            MakeEntry(again, again.nSectors / 2, 27, SECURE_RIP_MATCHED, 4),
                            MakeEntry(again, again.nSectors / 2 + 400, 54, SECURE_RIP_MATCHED, 9)};
        RIP_PIECE& bad = report.aryPieces[3];
        bad.aryEntries = {MakeEntry(bad, bad.nSectors / 5, 27, SECURE_RIP_MATCHED, 6),
                          MakeEntry(bad, bad.nSectors * 2 / 5, 27, SECURE_RIP_LIMIT, 16),
                          MakeEntry(bad, bad.nSectors * 2 / 5 + 9, 2, SECURE_RIP_DIFFERS, 16),
                          MakeEntry(bad, bad.nSectors * 3 / 5, bad.nSectors / 50, SECURE_RIP_UNREAD, 0),
                          MakeEntry(bad, bad.nSectors * 4 / 5, 27, SECURE_RIP_REREAD, 1)};
        RIP_PIECE& worn = report.aryPieces[5];
        for (int i = 0; i < 40; ++i)
            worn.aryEntries.push_back(MakeEntry(worn, (i * 37 % 40) * worn.nSectors / 41, 27,
                                                i % 9 == 0 ? SECURE_RIP_LIMIT : SECURE_RIP_MATCHED, 3 + i % 13));
        report.eOutcome = RIP_OUTCOME_DOUBTFUL;
        report.nReReads = 312;
    }

    // As a drive of constant turns reads: slowly inside, fast outside, and haltingly where it must read again.
    static void AddSpeed(RIP_REPORT& report, int nEnd)
    {
        uint32_t nState = 4711;
        double fSecond = 0;
        for (RIP_PIECE& piece : report.aryPieces)
        {
            for (int nSector = piece.nStart; nSector < piece.nStart + piece.nSectors;)
            {
                const int nBlock = std::min(27, piece.nStart + piece.nSectors - nSector);
                const bool bFault =
                    std::any_of(piece.aryEntries.begin(), piece.aryEntries.end(),
                                [&](const auto& entry) {
                                    return entry.nSector < nSector + nBlock && entry.nSector + entry.nSectors > nSector;
                                });
                nSector += nBlock;
                const double fSpeed = (9 + 13.0 * nSector / nEnd) * (0.93 + 0.07 * Noise(nState)) / (bFault ? 9 : 1);
                fSecond += nBlock / 75.0 / fSpeed;
                piece.series.arySpeed.push_back({nSector, static_cast<float>(fSpeed), static_cast<float>(fSecond)});
            }
        }
    }

    static void AddVerification(RIP_REPORT& report)
    {
        RIP_VERIFICATION verification;
        verification.strFile = "dBAR-009-0012ab34.bin";
        verification.strKind = "AccurateRip";
        verification.accurateRip.emplace();
        verification.accurateRip->m_nBlocks = 2;
        for (const RIP_PIECE& piece : report.aryPieces)
        {
            const bool bBad = piece.CountBadSectors() > 0;
            verification.accurateRip->m_aryTracks.push_back(
                {piece.nTrack, true, bBad ? 0 : 17, bBad ? 0 : 12, 0, 0, 31});
        }
        verification.aryNotes = {"The answer holds one pressing that is 12 frames away."};
        report.aryVerifications.push_back(verification);
    }

    static void SetFacts(RIP_REPORT& report)
    {
        report.strProgram = "rondel 0.1.0";
        report.strStarted = "2026-11-21T12:00:41+01:00";
        report.strEnded = "2026-11-21T12:05:20+01:00";
        report.strCommand = "rondel rip /dev/sr0 --mode secure --encoder flac --encoder opus --to Music";
        report.eOutcome = RIP_OUTCOME_WHOLE;
        report.drive = {"/dev/sr0", "ACME", "CD-RW 5224A", "1.03", false, "", 54, true, true, 6, 52};
        report.disc.strTitle = "Measured Pieces";
        report.disc.strPerformer = "The Reference Ensemble";
        report.disc.strUPC = "0724384260958";
        report.disc.strAccurateRipID = "0012ab34-008cd1f0-7a0a4c09";
        report.disc.strCDDBID = "7a0a4c09";
        report.disc.strMusicBrainzID = "lwHl8fGzJyLXQR33ug60E8jhf4k-";
        report.disc.strCTDBID = "qz3HqLQ8kPm0oVYvYqGfWb2RaFs-";
        report.fSeconds = 279;
        report.nReReads = 0;
        report.album = RIP_LOUDNESS{-11.4, -4.8, -6.9, 9.6, 0, 0.83, -6.6};
        report.nAlbumDR = 8;
        report.nDiscCTDB = 0x8C14D0E2;
        report.aryFiles = {{"Measured Pieces.cue", "", "", "", 1893, std::string(64, 'c'), "", ""}};
        report.aryNotes = {"The drive was slowed down to 16× for track 4."};
    }
};
