// Replay gain in the files of encoder plug-ins.
//
// Threads: any; one at a time for a file.

#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

// What players turn their volume by.
struct RIP_GAIN
{
    double fGain = 0; // dB, to -18 LUFS
    double fPeak = 0; // of the samples, as a part of full scale
};

struct RIP_GAINS
{
    std::optional<RIP_GAIN> track;
    std::optional<RIP_GAIN> album;

    bool IsEmpty() const { return !track && !album; }
};

// The fields as ID3v2 and Vorbis comments name them: "REPLAYGAIN_TRACK_GAIN" with "-6.48 dB", and so on.
std::vector<std::pair<std::string, std::string>> MakeGainFields(const RIP_GAINS& gains);
// As Opus files have them: "R128_TRACK_GAIN" with "-2939".
std::vector<std::pair<std::string, std::string>> MakeOpusGainFields(const RIP_GAINS& gains);

// Puts them into a file of the encoder "flac" or "opus", in place of what it has of them. A copy is changed, and takes
// the file's place in the end. Throws HostError; the file is then as it was.
void AddVorbisGain(const std::string& strPath, const std::string& strEncoder, const RIP_GAINS& gains);
