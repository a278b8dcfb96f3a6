// Whether an Ogg Opus file is whole: every page has the right check sum and number, the last one says that it is the
// last, and its time less the pre-skip is exactly the audio at 48 kHz.
//
// Sources: RFC 3533, 6 (pages) and RFC 7845 (Opus in them). A page, numbers little-endian:
//     0  "OggS"    4  0    5  flags (1 continued, 2 first, 4 last)    6  time, 8    14  stream, 4    18  number, 4
//    22  check sum, 4     26  segments, 1     27  the length of each segment, 1

#pragma once

#include "EncoderOutput.h"
#include <string>

std::string CheckOggOpus(EncoderBytes& file, uint64_t nSamples); // empty, or what is wrong
