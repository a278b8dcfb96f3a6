// The last that is done to the files of a rip: WAV files get their tags, and all files the replay gain, which is not
// known while they are written: a track's when its audio has passed, an album's when the last track has. A rip of some
// tracks only does not know the album's, and gives none.
//
// Saving:  a WAV file that has no tag yet gets one behind its audio, in place: at each moment it is a whole WAV file
//          with all its audio. Any other file is copied, changed and swapped in. What a command has made
//          ("cmd") is left alone, since nobody knows what it is.
// Gain:    ReplayGain 2.0, dB against -18 LUFS, and the sample peak as a part of full scale. Opus files have it as RFC
//          7845, 5.2.1 wants it: 1/256 dB against -23 LUFS, without peaks.
// Errors:  a file whose tags cannot be written is as it was, and the sentence about it is answered: the audio is
//          worth more than its tags. Only changed, and a file that cannot be read again, throw HostError.
// Threads: one, when no output is at work any more.

#pragma once

#include "RipNames.h"
#include "RipReport.h"
#include <functional>
#include <string>
#include <vector>

// Of the files of whole pieces. An album's gain is given if the report has an album. Lengths and sums in the report
// follow the files; changed is called behind each file, so that the state of the rip can follow too.
std::vector<std::string> FinishTags(RIP_REPORT& report, const RIP_NAMES& names, const std::function<void()>& changed);
