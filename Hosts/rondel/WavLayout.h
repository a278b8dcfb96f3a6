// WavLayout: how a WAV file is put together, and what is wrong with that. It lists also what a reader of audio passes
// over, or refuses.
//
// Format:  Multimedia Programming Interface and Data Specifications 1.0, RIFF WAVE, and its extensible form.
// Units:   bytes; offsets are those of a chunk's header in the file.
// Errors:  HostError for what is no RIFF WAVE file at all; everything else is a problem in the list.

#pragma once

#include <string>
#include <vector>

class ILyReader;

struct WAV_LAYOUT_CHUNK
{
    std::string strId;       // four characters, as in the file
    unsigned int nBytes = 0; // of the body, as the header says
    long long nOffset = 0;
    bool bWhole = true; // false: the file ends within it
};

struct WAV_LAYOUT_FORMAT
{
    bool bKnown = false; // there is a format chunk of 16 bytes at least
    unsigned int nTag = 0;
    unsigned int nChannels = 0;
    unsigned int nRate = 0;
    unsigned int nBytesPerSecond = 0;
    unsigned int nBlockAlign = 0;
    unsigned int nBits = 0;
    unsigned int nSubFormat = 0; // of the extensible form: the tag that its sub-format stands for, or 0
    bool bExtensible = false;

    unsigned int GetKind() const { return bExtensible ? nSubFormat : nTag; } // a WAVE_FORMAT_TAG
};

enum WAV_PROBLEM_KIND
{
    WAV_PROBLEM_ROOT_SIZE, // the only one that can be mended without harm to anything else
    WAV_PROBLEM_CHUNK_CUT,
    WAV_PROBLEM_NO_CHUNK,
    WAV_PROBLEM_PAD_BYTE,
    WAV_PROBLEM_MISSING,
    WAV_PROBLEM_TWICE,
    WAV_PROBLEM_FORMAT,
    WAV_PROBLEM_PART_OF_BLOCK,
    WAV_PROBLEM_TOO_MANY
};
const char* GetWavProblemName(WAV_PROBLEM_KIND eKind); // one word for programs: "root_size" ...

struct WAV_PROBLEM
{
    WAV_PROBLEM_KIND eKind;
    std::string strText; // a sentence without its stop
};

struct WAV_LAYOUT
{
    static constexpr int MAX_CHUNKS = 65536; // more are not listed

    long long nFileBytes = 0;
    unsigned int nRootBytes = 0; // as the file says
    std::vector<WAV_LAYOUT_CHUNK> aryChunks;
    WAV_LAYOUT_FORMAT format;
    std::vector<WAV_PROBLEM> aryProblems;

    bool HasProblem(WAV_PROBLEM_KIND eKind) const;
};

// From an open reader, whose position is lost. strName is for the user.
WAV_LAYOUT ReadWavLayout(ILyReader& reader, const std::string& strName);

std::string DescribeWavFormat(const WAV_LAYOUT_FORMAT& format); // "PCM, extensible"
