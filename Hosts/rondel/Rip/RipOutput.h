// RipOutput: one kind of file that a rip makes, one file after the other: WAV, or what an encoder plug-in makes.
//
// Life:    Begin, Write as often as there is audio, End or Abandon; and again for the next file. What becomes of each
//          file is told to the listener, once: at its end, or when it fails. An abandoned file is not told of.
// Names:   a file grows under another name and gets its own when it is whole.
// Units:   bytes of 16-bit stereo PCM, little-endian.
// Errors:  told to the listener. After a failure, the rest of the file's audio is dropped.
// Threads: all operations by the rip's, which copies the audio and goes on; each output writes on a thread of its own
//          (RipWorker.h), on which the listener hears, too.

#pragma once

#include "RipReport.h"
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

// One file to be made.
struct RIP_ORDER
{
    size_t nGroup = 0;   // of files of the same audio, one for each output
    std::string strPath; // its folder is there
    RIP_FILE file;       // the name and the encoder, for the report
    long long nFrames = 0;
    std::vector<std::pair<std::string, std::string>> aryTags; // name and value; an empty value: no such tag
    std::string strPicture;                                   // a file, or empty
};

class IRipFileListener
{
public:
    // The file with its length and sum, or with its error. bDiskFull: of no other file would become more.
    virtual void OnRipFile(size_t nGroup, const RIP_FILE& file, bool bDiskFull) = 0;

protected:
    ~IRipFileListener() = default;
};

class RipOutput
{
public:
    virtual ~RipOutput() = default; // ends as Abandon and Wait do
    RipOutput(const RipOutput&) = delete;
    RipOutput& operator=(const RipOutput&) = delete;

    virtual void Begin(const RIP_ORDER& order) = 0;
    virtual void Write(const unsigned char* pData, size_t nBytes) = 0;
    virtual void End(uint32_t nAudioCRC32) = 0; // the CRC-32 of all that was written
    virtual void Abandon() = 0;                 // harmless without a file
    virtual bool Wait(int nMs) = 0;             // true once the listener has heard of all that was ended

protected:
    RipOutput() = default;
};

std::unique_ptr<RipOutput> MakeWAVOutput(IRipFileListener& listener);
