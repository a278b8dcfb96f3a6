// A picture for the front cover: its bytes, and what its header says about it. PNG and JPEG.

#pragma once

#include <cstddef>
#include <string>
#include <string_view>

struct ENCODER_PICTURE
{
    static constexpr size_t MAX_BYTES = 0xF00000; // a FLAC metadata block has 24 bits for its length
    static constexpr unsigned FRONT_COVER = 3;    // ID3v2.3.0, 4.15: picture type

    std::string strData;
    const char* pMime = nullptr;
    unsigned nWidth = 0;   // pixels
    unsigned nHeight = 0;  // pixels
    unsigned nDepth = 0;   // bits of a pixel
    unsigned nColours = 0; // of a palette; 0 without one

    // Reads the file. An ENCODER_ERROR; with anything but ENCODER_OK, strError says what is wrong.
    int Load(const std::string& strPath, std::string& strError);
    // Finds out about the bytes. False if they are no picture of a kind that is known.
    bool Identify();

private:
    bool IdentifyPNG();
    bool IdentifyJPEG();
};
