// A small synthesizer: plucked strings, bells, pads and a bass, in a common room.
//
// Units:   seconds from the start of the piece; pitches as MIDI note numbers (69 is A4, 440 Hz); levels 0 to 1.
// Result:  the same samples on every machine with the same compiler: all chance comes from a fixed generator.

#pragma once

#include <vector>

enum INSTRUMENT
{
    PLUCK,
    BELL,
    PAD,
    BASS
};

struct NOTE
{
    double fStart;
    double fLength;
    int nPitch;
    double fLevel;
    double fPan; // -1 left, 1 right
    INSTRUMENT eInstrument;
};

// Plays the notes into interleaved stereo of fSeconds, with room, faded in and out at the ends if asked.
std::vector<float> Render(const std::vector<NOTE>& aryNotes, double fSeconds, bool bFadeIn, bool bFadeOut);
