// Tags for a WAV file that has just been made: saved in place, without a copy.

#pragma once

#include <string>
#include <utility>
#include <vector>

// Fields and values as 'rondel tags set' takes them ("Title", "Track" with "3/12", "REPLAYGAIN_TRACK_GAIN" with
// "-6.48 dB"); an empty value: no such field. strPicture is an image file, or empty. Where nothing is given, or the
// user wants no tags in WAV files, the file stays as it is. The file must not be open for writing elsewhere. Its audio
// stays where it is, ahead of the tag; whoever sums up the file does so afterwards. A kill in between leaves a
// WAV file with all its audio and something behind it that is no chunk. Throws HostError; a file that had no tag is
// then as it was. Threads: any; one at a time for a file.
void TagWaveFile(const std::string& strPath, const std::vector<std::pair<std::string, std::string>>& aryFields,
                 const std::string& strPicture);
