// Music of known tempo: small bands of drums, basses and chords that play patterns, with the unevenness of hands.
//
// Units:   44,100 Hz, one channel, 16 bits.
// Result:  the same samples every time: all chance comes from a fixed generator.

#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <map>
#include <numbers>
#include <string>
#include <utility>
#include <vector>

enum TEMPO_INSTRUMENT
{
    TEMPO_KICK,
    TEMPO_SNARE,
    TEMPO_HAT,
    TEMPO_BASS,
    TEMPO_CHORD
};

struct TEMPO_PART
{
    TEMPO_INSTRUMENT eInstrument;
    // One or more bars, a character for each step: '.' rests, 'x' plays, 'X' plays loudly; a digit plays so many half
    // tones above the root of the bar.
    const char* pPattern;
    double fLevel;
};

struct TEMPO_PIECE
{
    const char* pName;
    double fBPM;      // beats a minute
    int nBeats;       // in a bar
    int nSteps;       // in a bar
    double fSwing;    // where every second step lies between its neighbours: 0.5 is straight
    double fUnevenMS; // how far a note may be off its time
    double fDrift;    // how far the tempo wanders, as a part of it
    std::vector<TEMPO_PART> aryParts;
};

class TempoBand
{
public:
    static constexpr int RATE = 44100;

    static std::vector<short> Play(const TEMPO_PIECE& piece, double fSeconds)
    {
        TempoBand band(fSeconds);
        double fBar = 0;
        for (int nBar = 0; fBar < fSeconds; ++nBar)
        {
            const double fBPM = piece.fBPM * (1 + piece.fDrift * std::sin(nBar * 0.7));
            const double fStep = 60 / fBPM * piece.nBeats / piece.nSteps;
            for (const TEMPO_PART& part : piece.aryParts)
                band.PlayBar(piece, part, nBar, fBar, fStep);
            fBar += fStep * piece.nSteps;
        }
        return band.Finish();
    }

private:
    explicit TempoBand(double fSeconds) : m_arySamples(static_cast<size_t>(fSeconds * RATE)) {}

    // From -1 to 1 (Marsaglia's xorshift).
    double Chance()
    {
        m_nState ^= m_nState << 13;
        m_nState ^= m_nState >> 17;
        m_nState ^= m_nState << 5;
        return m_nState / 2147483648.0 - 1;
    }

    void PlayBar(const TEMPO_PIECE& piece, const TEMPO_PART& part, int nBar, double fBar, double fStep)
    {
        static constexpr int ROOTS[] = {0, 5, 7, 3}; // each for two bars
        const std::string strPattern = part.pPattern;
        const int nBars = static_cast<int>(strPattern.size()) / piece.nSteps;
        for (int i = 0; i < piece.nSteps; ++i)
        {
            const char c = strPattern[static_cast<size_t>(nBar % nBars * piece.nSteps + i)];
            if (c == '.')
                continue;
            const double fPlace = i % 2 == 0 ? i : i - 1 + 2 * piece.fSwing;
            const double fTime = fBar + fPlace * fStep + Chance() * piece.fUnevenMS / 1000;
            const double fLevel = part.fLevel * (c == 'X' ? 1.4 : 1.0) * (1 + 0.15 * Chance());
            const int nStep = c >= '0' && c <= '9' ? c - '0' : 0;
            AddNote(part.eInstrument, std::max(0.0, fTime), fLevel, ROOTS[nBar / 2 % 4] + nStep);
        }
    }

    void AddNote(TEMPO_INSTRUMENT eInstrument, double fTime, double fLevel, int nPitch)
    {
        const size_t nStart = static_cast<size_t>(fTime * RATE);
        const std::vector<double>& aryTone = GetTone(eInstrument, nPitch);
        for (size_t n = 0; n < aryTone.size() && nStart + n < m_arySamples.size(); ++n)
            m_arySamples[nStart + n] += fLevel * aryTone[n];
    }

    // Each is made once; a drum has no pitch.
    const std::vector<double>& GetTone(TEMPO_INSTRUMENT eInstrument, int nPitch)
    {
        constexpr double LOWEST_BASS_HZ = 41.2; // the E of a bass; chords are two octaves above it
        const bool bPitched = eInstrument == TEMPO_BASS || eInstrument == TEMPO_CHORD;
        std::vector<double>& aryTone = m_mapTones[{eInstrument, bPitched ? nPitch : 0}];
        if (!aryTone.empty())
            return aryTone;
        const double fHz = LOWEST_BASS_HZ * (eInstrument == TEMPO_CHORD ? 4 : 1) * std::pow(2.0, nPitch / 12.0);
        const double fLength = eInstrument == TEMPO_CHORD ? 1.2 : eInstrument == TEMPO_HAT ? 0.2 : 0.6;
        for (int i = 0; i < static_cast<int>(fLength * RATE); ++i)
            aryTone.push_back(GetSample(eInstrument, static_cast<double>(i) / RATE, fHz));
        return aryTone;
    }

    double GetSample(TEMPO_INSTRUMENT eInstrument, double t, double fHz)
    {
        constexpr double TAU = 2 * std::numbers::pi;
        const auto tone = [t](double f) { return std::sin(TAU * f * t); };
        switch (eInstrument)
        {
        case TEMPO_KICK: // falls in pitch to 48 Hz
            return std::exp(-t * 14) * std::sin(TAU * (48 * t - 3 * std::exp(-t * 30)));
        case TEMPO_SNARE:
            return std::exp(-t * 18) * (0.6 * Chance() + 0.5 * tone(185));
        case TEMPO_HAT: // noise without its low notes
        {
            const double fBefore = m_fNoise;
            m_fNoise = Chance();
            return std::exp(-t * 45) * (m_fNoise - fBefore);
        }
        case TEMPO_BASS:
            return std::min(1.0, t / 0.008) * std::exp(-t * 3.5) *
                   (tone(fHz) + 0.5 * tone(2 * fHz) + 0.25 * tone(3 * fHz));
        case TEMPO_CHORD: // a major third and a fifth above
            return 0.3 * std::min(1.0, t / 0.004) * std::exp(-t * 2.5) *
                   (tone(fHz) + tone(1.26 * fHz) + tone(1.498 * fHz) +
                    0.5 * (tone(2 * fHz) + tone(2.52 * fHz) + tone(2.996 * fHz)));
        }
        return 0;
    }

    // At 0.9 of full scale.
    std::vector<short> Finish() const
    {
        double fPeak = 1e-9;
        for (const double f : m_arySamples)
            fPeak = std::max(fPeak, std::fabs(f));
        std::vector<short> arySamples;
        for (const double f : m_arySamples)
            arySamples.push_back(static_cast<short>(std::lround(f * 0.9 / fPeak * 32767)));
        return arySamples;
    }

    std::vector<double> m_arySamples;
    std::map<std::pair<TEMPO_INSTRUMENT, int>, std::vector<double>> m_mapTones;
    double m_fNoise = 0;
    uint32_t m_nState = 2463534242U;
};
