// CTempoResults: the tempo of what CBeatsPerMinuteAnalyzerV1 heard.
//
// It is that of the beats into which the shortest pattern that comes again divides (PatternTempo.h). Where nothing
// comes again, or only seconds were heard, the histogram of intervals tells: then the tempo is that of the pulse of
// which most intervals are whole multiples.
//
// It may be an octave off, half or twice what a listener would tap, since music has both in it and people do not agree
// either: the other octave is told beside it. From 181 on the tempo is told an octave lower.
// Threads: any; the analyser is only read.

#pragma once

class CBeatsPerMinuteAnalyzerV1;

class CTempoResults
{
public:
    CTempoResults() = default;
    explicit CTempoResults(const CBeatsPerMinuteAnalyzerV1& analyzer);

    double m_fBPM = 0;       // beats per minute; 0: nothing comes again, and no interval was counted
    double m_fOctaveBPM = 0; // twice or half of it, as which it may be tapped as well; 0 without a tempo
    // How much alike the pattern is from one time to the next: near 1 for a machine, about a half for people, 0 for
    // chance. Of the histogram: near 1 if every one of many intervals is whole pulses.
    double m_fConfidence = 0;
    int m_nIntervals = 0; // how many are in the histogram

private:
    void ReadHistogram(const CBeatsPerMinuteAnalyzerV1& analyzer, double fAll);
};
