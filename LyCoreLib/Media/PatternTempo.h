// The tempo of a pattern that comes again and again, from how much a piece's onsets are like those before.

#pragma once

class COnsetCorrelation;

struct PATTERN_TEMPO
{
    double fBPM = 0;       // beats a minute
    double fOctaveBPM = 0; // twice or half of it, whichever says more
    double fStrength = 0;  // how much alike a pattern is to the one before, 0 to 1
};

// False, and zeros, if nothing comes again, or if less than two seconds were heard. fFrameSeconds is the length of a
// frame.
bool ReadPatternTempo(const COnsetCorrelation& onsets, double fFrameSeconds, PATTERN_TEMPO& tempo);
