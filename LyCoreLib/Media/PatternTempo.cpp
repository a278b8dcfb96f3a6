#include "PatternTempo.h"
#include "BeatsPerMinuteAnalyzer.h"
#include "OnsetCorrelation.h"
#include <algorithm>
#include <array>
#include <cmath>

namespace
{
constexpr double SECONDS_PER_MINUTE = 60;
constexpr int MAX_LAG = COnsetCorrelation::MAX_LAG;
constexpr int MIN_FRAMES = 200;

// What is looked for first is the pattern: the shortest time after which the music is nearly as much like before as
// after any. It is a bar, or several, or in plain music a beat.
constexpr int SHORTEST_PATTERN = 25; // frames: 240 beats a minute
constexpr double NEARLY = 0.9;
constexpr double FAINTEST = 0.1; // less alike than this, and nothing comes again

// A beat is a whole part of the pattern, in two, three, four beats and their multiples; or of a pattern that is too
// short for a beat, twice.
constexpr double PARTS[] = {0.5, 1, 2, 3, 4, 6, 8, 9, 12, 16, 24};
constexpr double SLOWEST = CBeatsPerMinuteAnalyzerV1::MIN_TEMPO;
constexpr double FASTEST = CBeatsPerMinuteAnalyzerV1::MAX_TEMPO + 1;
// What is slower than this is nearly always a bar: it is a beat only if nothing shorter comes again.
constexpr double BARS_BELOW = 45;
constexpr double BAR_WEIGHT = 0.1;

// People tap music at some 110 rather than at 55 or 220 (van Noorden and Moelants, "Resonance in the Perception of
// Musical Pulse", 1999): an octave away counts as much less as a normal distribution over octaves says.
constexpr double COMMON = 110;
// Where the halves or thirds of a beat are as much alike as beats, they are the beats.
constexpr double SPLIT = 0.3;
// Where only whole bars come again, the common tempo is taken.
constexpr double ANY = 0.01;

// An octave that is told beside the tempo lies in this range.
constexpr double SLOWEST_OCTAVE = 40;
constexpr double FASTEST_OCTAVE = 200;

class PatternReader
{
public:
    PatternReader(const COnsetCorrelation& onsets, double fFrameSeconds)
        : m_fFramesPerMinute(SECONDS_PER_MINUTE / fFrameSeconds), m_nLags(std::min(MAX_LAG - 1, onsets.GetFrames() / 2))
    {
        // Smoothed: onsets that people play are not as exact as a frame.
        const auto covariance = [&](int nLag) { return onsets.GetCovariance(std::abs(nLag)); };
        for (int i = 0; i <= m_nLags; ++i)
            m_aryAlike[static_cast<size_t>(i)] = (covariance(i - 1) + 2 * covariance(i) + covariance(i + 1)) / 4;
        const double fSelf = m_aryAlike[0];
        for (double& f : m_aryAlike)
            f = fSelf > 0 ? f / fSelf : 0;
    }

    bool Read(PATTERN_TEMPO& tempo)
    {
        const double fPattern = FindPattern(tempo.fStrength);
        if (fPattern == 0)
            return false;
        double fBest = 0;
        for (const double fPart : PARTS)
        {
            const double fBPM = m_fFramesPerMinute / fPattern * fPart;
            if (fBPM < SLOWEST || fBPM >= FASTEST || (tempo.fBPM != 0 && GetScore(fBPM) <= fBest))
                continue;
            tempo.fBPM = fBPM;
            fBest = GetScore(fBPM);
        }
        if (tempo.fBPM != 0)
            tempo.fOctaveBPM = ChooseOctave(tempo.fBPM);
        return tempo.fBPM != 0;
    }

private:
    double At(int nLag) const { return m_aryAlike[static_cast<size_t>(nLag)]; }

    // In frames, between them by a parabola; 0 if there is none.
    double FindPattern(double& fStrength) const
    {
        const double fMost = *std::max_element(m_aryAlike.begin() + SHORTEST_PATTERN, m_aryAlike.end());
        for (int i = SHORTEST_PATTERN; i < m_nLags && fMost >= FAINTEST; ++i)
        {
            if (At(i) < NEARLY * fMost || At(i) < At(i - 1) || At(i) < At(i + 1))
                continue;
            fStrength = std::clamp(At(i), 0.0, 1.0);
            const double fBend = At(i - 1) - 2 * At(i) + At(i + 1);
            return fBend < 0 ? i + (At(i - 1) - At(i + 1)) / (2 * fBend) : i;
        }
        return 0;
    }

    // The most alike within a frame or so of a lag: tempos waver. Beyond all lags, nothing.
    double GetAlike(double fLag) const
    {
        constexpr double REACH = 1;
        constexpr double REACH_PART = 0.004;
        const double fReach = REACH + fLag * REACH_PART;
        double fMost = 0;
        for (int i = static_cast<int>(std::ceil(fLag - fReach)); i <= fLag + fReach; ++i)
            fMost = i >= 0 && i <= m_nLags ? std::max(fMost, At(i)) : fMost;
        return fMost;
    }

    double GetScore(double fBPM) const
    {
        const double fBeat = m_fFramesPerMinute / fBPM;
        const double fOctaves = std::log2(fBPM / COMMON);
        const double fWithin = std::max(GetAlike(fBeat / 2), GetAlike(fBeat / 3));
        const double fWeight = (fBPM < BARS_BELOW ? BAR_WEIGHT : 1) * std::exp(-fOctaves * fOctaves / 2);
        return (GetAlike(fBeat) - SPLIT * fWithin + ANY) * fWeight;
    }

    double ChooseOctave(double fBPM) const
    {
        const bool bUp = fBPM * 2 <= FASTEST_OCTAVE;
        const bool bDown = fBPM / 2 >= SLOWEST_OCTAVE;
        return bUp && (!bDown || GetScore(fBPM * 2) > GetScore(fBPM / 2)) ? fBPM * 2 : fBPM / 2;
    }

    double m_fFramesPerMinute;
    int m_nLags;
    std::array<double, MAX_LAG> m_aryAlike{}; // 1 at lag 0
};
} // namespace

bool ReadPatternTempo(const COnsetCorrelation& onsets, double fFrameSeconds, PATTERN_TEMPO& tempo)
{
    tempo = PATTERN_TEMPO();
    if (onsets.GetFrames() < MIN_FRAMES || !(fFrameSeconds > 0))
        return false;
    if (PatternReader(onsets, fFrameSeconds).Read(tempo))
        return true;
    tempo = PATTERN_TEMPO();
    return false;
}
