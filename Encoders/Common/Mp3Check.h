// Whether an MP3 file is what its gapless header says: every frame stands where the one before it ends, the last one
// ends the file, and the frames less delay and padding are exactly the audio.
//
// Source: the Xing header with the LAME extension, which players read for gapless playing. Offsets from "Xing"/"Info":
//     0  name, 4      4  flags, 4 (all fields: 15)     8  frames, 4 (without this one)   12  bytes, 4
//    16  seek points, 100                            116  quality, 4
//   120  encoder, 9     141  delay and padding, 12 bits each, in frames of audio

#pragma once

#include "EncoderOutput.h"
#include <string>

// nOffset is where the audio begins, behind the tag. Empty, or what is wrong.
std::string CheckMp3(EncoderBytes& file, uint64_t nOffset, long long nFrames);
