// CLoudnessResults: what the blocks of CR128Analyzer say about a piece of audio, or about several together.
//
// Shape:   pieces, each the energies of successive blocks of 100 ms. No window reaches from one piece into the next, so
//          that a track's pieces together give the album.
// Units:   LUFS (decibels relative to full scale, K-weighted), LU and dB for differences. m_Momentary and m_ShortTerm
//          are energies, as m_Blocks is; ToLUFS makes levels of them.
// Errors:  a level that nothing determines (silence, too short) is minus infinity, a range 0. What has no such value is
//          told by GetReplayGain's result.
// Source:  ITU-R BS.1770-4 (integrated), EBU Tech 3341 (momentary, short-term), EBU Tech 3342 (range), ReplayGain 2.0.
// Threads: one at a time; the readers may run together.

#pragma once

#include "LyArray.h"

class CR128Analyzer;

class CLoudnessResults
{
public:
    static constexpr int MOMENTARY_BLOCKS = 4;   // 400 ms: EBU Tech 3341, and the gating block of BS.1770-4
    static constexpr int SHORT_TERM_BLOCKS = 30; // 3 s: EBU Tech 3341

    CLoudnessResults() = default;
    explicit CLoudnessResults(const CR128Analyzer& analyzer);

    // Adds a piece. False, and nothing changed, without memory, for a negative count, and for null with blocks.
    bool Add(const CR128Analyzer& analyzer);
    bool Add(const double* pBlocks, int nBlocks); // part of m_Blocks: say, a track of a disc

    double GetIntegrated() const;   // of all there is, with both gates
    double GetMomentaryMax() const; // of any 400 ms, every 100 ms
    double GetShortTermMax() const; // of any 3 s, every 100 ms
    double GetRange() const;        // in LU

    // How many dB bring it to the reference level: a track's gain, or with an album's tracks together the album's.
    // False if there is no loudness to go by; fGain is 0 then.
    bool GetReplayGain(double& fGain) const;

    static double ToLUFS(double fEnergy); // minus infinity for no energy
    static double ToEnergy(double fLUFS);

    LyNumberArray<double> m_Momentary; // of each window of 400 ms
    LyNumberArray<double> m_ShortTerm; // of each window of 3 s
};
