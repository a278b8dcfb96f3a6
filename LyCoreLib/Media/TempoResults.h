// CTempoResults: the tempo that the histogram of CBeatsPerMinuteAnalyzerV1 speaks for.
//
// The histogram has intervals between loud low notes, and such an interval may be a beat, half a beat, or one and a
// half of them. The tempo is that of the pulse of which most intervals are whole multiples.
//
// It may be an octave off, half or twice what a listener would tap: the analyser folds what it counts into 35 to 180,
// and music has both in it. From 181 on the tempo is told an octave lower. Threads: any; the analyser is only read.

#pragma once

class CBeatsPerMinuteAnalyzerV1;

class CTempoResults
{
public:
    CTempoResults() = default;
    explicit CTempoResults(const CBeatsPerMinuteAnalyzerV1& analyzer);

    double m_fBPM = 0;        // beats per minute; 0: no interval was counted
    double m_fConfidence = 0; // near 1: every one of many intervals is whole pulses; 0: no more of them than by chance
    int m_nIntervals = 0;     // how many were counted at all
};
