// COnsetCorrelation: how much the onsets of a piece of audio are like those of some time before, for every time up to
// six seconds. A rhythm comes again after a beat and, more alike, after a bar: the tempo is read from that
// (TempoResults.h).
//
// Shape:   energies of steps of 5 ms go in, of the low notes and of the edges of everything; two steps are a frame. Of
//          a frame counts how much louder it is than the frame but one before, on the scale of a logarithm, in either
//          band.
// Units:   lags in frames of 10 ms; energies as squares on the scale of 16-bit integers.
// Errors:  an energy that is no number, or below 0, is silence.
// Threads: one at a time. Nothing is allocated.

#pragma once

class COnsetCorrelation
{
public:
    static constexpr int STEPS = 2;          // in a frame
    static constexpr int FRAME_MS = 10;      //
    static constexpr int MAX_LAG = 600;      // six seconds: a bar of the slowest music, and some bars of most
    static constexpr double EDGE_PART = 0.2; // of an onset's strength; what is left is that of the low notes

    // A step of 5 ms.
    void Add(double fLow, double fEdges);

    int GetFrames() const { return m_nFrames; } // so far
    // The covariance with the onsets of so many frames before, 0 to MAX_LAG; 0 without frames.
    double GetCovariance(int nLag) const;

private:
    // Lags are added up in whole groups, so that they become vector code; those beyond MAX_LAG are never asked for.
    static constexpr int GROUP = 8;
    static constexpr int LAGS = (MAX_LAG / GROUP + 1) * GROUP;
    static constexpr int HISTORY = 4 * LAGS;

    // One of the two bands.
    struct BAND
    {
        double fEnergy = 0;  // of the frame that is coming in
        double fAverage = 0; // of the last seconds
        float fLevel = 0;    // of the frame before, and of the one before that
        float fLevelBefore = 0;

        float GetRise(bool bFirst);
    };

    void AddOnset(float fOnset);

    BAND m_Low;
    BAND m_Edges;
    int m_nSteps = 0; // of the frame that is coming in
    int m_nFrames = 0;
    double m_fSum = 0;              // of all onsets
    double m_arySums[LAGS] = {};    // of their products with those of so many frames before
    int m_nNewest = HISTORY - LAGS; // where the last onset stands, those before it behind it
    float m_aryOnsets[HISTORY] = {};
};
