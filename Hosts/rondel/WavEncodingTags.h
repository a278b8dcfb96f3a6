// The tags of a WAV file on their way to an encoder.

#pragma once

#include "RipEncoders.h"
#include "WAVInfo.h"
#include <string>

// Gives the encoder what the file's tag or INFO list says. A picture is a temporary file, which lives as long as the
// object.
class WavEncodingTags
{
public:
    WavEncodingTags(CWAVInfo& info, RipEncoder& encoder);
    ~WavEncodingTags();
    WavEncodingTags(const WavEncodingTags&) = delete;
    WavEncodingTags& operator=(const WavEncodingTags&) = delete;

private:
    std::string m_strPicture; // empty: none
};
