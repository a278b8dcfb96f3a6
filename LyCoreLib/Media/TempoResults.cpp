#include "TempoResults.h"
#include "BeatsPerMinuteAnalyzer.h"
#include "PatternTempo.h"
#include <algorithm>
#include <climits>
#include <cmath>

namespace
{
constexpr int MIN_TEMPO = CBeatsPerMinuteAnalyzerV1::MIN_TEMPO;
constexpr int MAX_TEMPO = CBeatsPerMinuteAnalyzerV1::MAX_TEMPO;
constexpr int STEP_MS = CBeatsPerMinuteAnalyzerV1::STEP_MS;
constexpr int MS_PER_MINUTE = 60000;
constexpr double MIDDLE_TEMPO = 85; // the octave told beside a tempo above it is the lower one

// Pulses that are tried: beats, or halves of them, a minute; each faster than the one before by this factor.
constexpr double SLOWEST_PULSE = MIN_TEMPO;
constexpr double FASTEST_PULSE = 2 * MAX_TEMPO;
constexpr double NEXT_PULSE = 1.002;

// How far from a whole number of pulses an interval may be to count, less and less towards this: a bass is slower to
// start than a drum, and the ends of intervals lie on steps.
constexpr double REACH_MS = 40;

// What one entry of the histogram stands for: whole steps, whose tempo was cut to a whole number.
struct INTERVALS
{
    double fCount;
    double fMiddleMS;
    double fSpreadMS; // from the middle to either end
};

INTERVALS GetIntervals(const CBeatsPerMinuteAnalyzerV1& analyzer, int nTempo)
{
    const double fCount = std::max(0, analyzer.m_Histogram[nTempo]);
    const int nLongest = MS_PER_MINUTE / nTempo / STEP_MS * STEP_MS;
    const int nShortest = (MS_PER_MINUTE / (nTempo + 1) / STEP_MS + 1) * STEP_MS;
    if (nShortest > nLongest) // only the folding of others leads here
        return {fCount, MS_PER_MINUTE / (nTempo + 0.5), 0};
    return {fCount, (nShortest + nLongest) / 2.0, (nLongest - nShortest) / 2.0};
}

// How a pulse goes with the intervals.
struct FIT
{
    double fFitting = 0;  // intervals that are whole numbers of pulses; those less near count less
    double fChance = 0;   // how many would be so by chance
    double fProducts = 0; // over the fitting ones: pulses times interval, and pulses squared
    double fSquares = 0;

    double GetScore() const { return fFitting - fChance; }
};

FIT GetFit(const CBeatsPerMinuteAnalyzerV1& analyzer, double fPulseMS)
{
    FIT fit;
    for (int i = MIN_TEMPO; i <= MAX_TEMPO; ++i)
    {
        if (analyzer.m_Histogram[i] <= 0)
            continue;
        const INTERVALS intervals = GetIntervals(analyzer, i);
        const double fPulses = std::max(1.0, std::round(intervals.fMiddleMS / fPulseMS));
        const double fOffMS = std::fabs(intervals.fMiddleMS - fPulses * fPulseMS) - intervals.fSpreadMS;
        const double fFitting = intervals.fCount * std::clamp(1 - fOffMS / REACH_MS, 0.0, 1.0);
        fit.fFitting += fFitting;
        fit.fChance += intervals.fCount * std::min(1.0, (2 * intervals.fSpreadMS + REACH_MS) / fPulseMS);
        fit.fProducts += fFitting * fPulses * intervals.fMiddleMS;
        fit.fSquares += fFitting * fPulses * fPulses;
    }
    return fit;
}

// The pulse that goes with more intervals than any other, chance set aside, in ms; then the mean of what goes with it.
double FindPulse(const CBeatsPerMinuteAnalyzerV1& analyzer)
{
    double fPulse = SLOWEST_PULSE;
    double fBestMS = MS_PER_MINUTE / fPulse;
    FIT best = GetFit(analyzer, fBestMS);
    while (fPulse < FASTEST_PULSE)
    {
        fPulse *= NEXT_PULSE;
        const FIT fit = GetFit(analyzer, MS_PER_MINUTE / fPulse);
        if (fit.GetScore() <= best.GetScore())
            continue;
        best = fit;
        fBestMS = MS_PER_MINUTE / fPulse;
    }
    return best.fSquares > 0 ? best.fProducts / best.fSquares : fBestMS;
}

// A step is a whole number of frames, and so not quite 5 ms at some rates: 220 frames at 44.1 kHz.
double GetStepCorrection(const CBeatsPerMinuteAnalyzerV1& analyzer)
{
    const double fStepsPerSecond =
        static_cast<double>(analyzer.m_Filter.m_fSampleRate) / std::max(1, analyzer.m_nSamplesPerStep);
    return fStepsPerSecond > 0 ? fStepsPerSecond / CBeatsPerMinuteAnalyzerV1::STEPS_PER_SECOND : 1;
}
} // namespace

CTempoResults::CTempoResults(const CBeatsPerMinuteAnalyzerV1& analyzer)
{
    double fAll = 0;
    for (int i = MIN_TEMPO; i <= MAX_TEMPO; ++i)
        fAll += std::max(0, analyzer.m_Histogram[i]);
    m_nIntervals = static_cast<int>(std::min<double>(fAll, INT_MAX));
    PATTERN_TEMPO tempo;
    constexpr double FRAME_SECONDS = COnsetCorrelation::FRAME_MS / 1000.0;
    if (!ReadPatternTempo(analyzer.GetOnsets(), FRAME_SECONDS / GetStepCorrection(analyzer), tempo))
    {
        ReadHistogram(analyzer, fAll);
        return;
    }
    m_fBPM = tempo.fBPM;
    m_fOctaveBPM = tempo.fOctaveBPM;
    m_fConfidence = tempo.fStrength;
}

void CTempoResults::ReadHistogram(const CBeatsPerMinuteAnalyzerV1& analyzer, double fAll)
{
    if (fAll == 0)
        return;
    const double fPulseMS = FindPulse(analyzer);
    m_fBPM = MS_PER_MINUTE / fPulseMS * GetStepCorrection(analyzer);
    if (m_fBPM >= MAX_TEMPO + 1) // a pulse of half beats
        m_fBPM /= 2;
    m_fOctaveBPM = m_fBPM > MIDDLE_TEMPO ? m_fBPM / 2 : m_fBPM * 2;
    const FIT fit = GetFit(analyzer, fPulseMS);
    // Some pulse goes with any few intervals: what n of them say is uncertain by 1 / sqrt(n).
    if (fit.fChance < fAll)
        m_fConfidence = std::clamp(fit.GetScore() / (fAll - fit.fChance) - 1 / std::sqrt(fAll), 0.0, 1.0);
}
