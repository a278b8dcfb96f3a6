// Where played audio goes that nobody listens to at once: a WAV file or standard output.
//
// Data:   16-bit little-endian stereo PCM at 44,100 Hz.
// Errors: HostError, with a way out. A file under its final name is complete: it is written beside it and renamed.

#pragma once

#include <memory>
#include <string>

class AudioOutput
{
public:
    virtual ~AudioOutput() = default;
    virtual void Write(const unsigned char* pData, int nBytes) = 0;
    virtual void Finish() = 0;

    // strTarget: a file name, or "-" for a WAV on standard output. nExpectedBytes goes into the header where it cannot
    // be corrected afterwards.
    static std::unique_ptr<AudioOutput> Create(const std::string& strTarget, long long nExpectedBytes);
};
