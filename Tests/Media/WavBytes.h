// WAV files for tests, as bytes.

#pragma once

#include <string>

inline std::string LittleEndian(unsigned int n, int nBytes)
{
    std::string strBytes;
    for (int i = 0; i < nBytes; ++i)
        strBytes += static_cast<char>(n >> (8 * i));
    return strBytes;
}

// With its pad byte, if the body needs one.
inline std::string MakeChunk(const std::string& strID, const std::string& strBody)
{
    return strID + LittleEndian(static_cast<unsigned int>(strBody.size()), 4) + strBody +
           std::string(strBody.size() % 2, '\0');
}

struct WAV_FIELDS
{
    unsigned int nTag = 1;
    unsigned int nChannels = 2;
    unsigned int nRate = 44100;
    unsigned int nBits = 16;
    int nBlockAlign = -1; // -1: what follows from the others
};

inline std::string MakeFormatChunk(const WAV_FIELDS& fields)
{
    const unsigned int nAlign =
        fields.nBlockAlign < 0 ? fields.nChannels * fields.nBits / 8 : static_cast<unsigned int>(fields.nBlockAlign);
    return MakeChunk("fmt ", LittleEndian(fields.nTag, 2) + LittleEndian(fields.nChannels, 2) +
                                 LittleEndian(fields.nRate, 4) + LittleEndian(fields.nRate * nAlign, 4) +
                                 LittleEndian(nAlign, 2) + LittleEndian(fields.nBits, 2));
}

inline std::string MakeRiff(const std::string& strChunks)
{
    return "RIFF" + LittleEndian(static_cast<unsigned int>(strChunks.size() + 4), 4) + "WAVE" + strChunks;
}

inline std::string MakeWav(const std::string& strData, const WAV_FIELDS& fields = {})
{
    return MakeRiff(MakeFormatChunk(fields) + MakeChunk("data", strData));
}

// Every byte tells its place.
inline std::string MakeAudio(size_t nBytes)
{
    std::string strData(nBytes, '\0');
    for (size_t n = 0; n < nBytes; ++n)
        strData[n] = static_cast<char>(n * 31 + n / 251);
    return strData;
}
