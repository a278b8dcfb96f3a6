// WavEncoding: a WAV file through an encoder plug-in into another file, with its tags.
//
// Errors:  HostError. A file that failed, or was stopped, leaves nothing; an earlier file of its name stays.
// Threads: the file is read and encoded on a thread of its own, which has ended when the call returns.

#pragma once

#include "RipEncoders.h"
#include "StopSignals.h"
#include <string>

struct WAV_ENCODING
{
    std::string strSource;
    std::string strTarget; // empty: in strFolder under the source's name
    std::string strFolder; // empty: beside the source
    ENCODER_CHOICE choice;
    bool bTags = true; // those of the source go with it
    bool bOverwrite = false;
};

// The file that was made; empty if a signal stopped it. Notes for the user go to standard error.
std::string EncodeWav(const WAV_ENCODING& encoding, const StopSignals& signals);
