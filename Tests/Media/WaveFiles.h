// Wave files and tags, built piece by piece as strings, for the tests of those who read them.

#pragma once

#include <string>
#include <utility>
#include <vector>

namespace WaveFiles
{
inline std::string Number(unsigned int n, int nWidth = 4)
{
    std::string str;
    for (int i = 0; i < nWidth; ++i, n >>= 8)
        str += static_cast<char>(n & 255);
    return str;
}

inline unsigned int GetNumber(const std::string& str, size_t nOffset)
{
    unsigned int n = 0;
    for (size_t i = 4; i-- > 0;)
        n = n << 8 | static_cast<unsigned char>(str.at(nOffset + i));
    return n;
}

inline std::string Chunk(const std::string& strID, const std::string& strBody, bool bPad = true)
{
    const bool bOdd = strBody.size() % 2 != 0;
    return strID + Number(static_cast<unsigned int>(strBody.size())) + strBody + std::string(bOdd && bPad ? 1 : 0, 0);
}

inline std::string Format(int nTag = 1, int nChannels = 2, int nRate = 44100, int nBits = 16,
                          const std::string& strMore = "")
{
    const int nAlign = nBits / 8 * nChannels;
    return Chunk("fmt ", Number(static_cast<unsigned int>(nTag), 2) + Number(static_cast<unsigned int>(nChannels), 2) +
                             Number(static_cast<unsigned int>(nRate)) +
                             Number(static_cast<unsigned int>(nRate * nAlign)) +
                             Number(static_cast<unsigned int>(nAlign), 2) +
                             Number(static_cast<unsigned int>(nBits), 2) + strMore);
}

// Bytes that look like nothing else, and like no DTS stream.
inline std::string Audio(size_t nBytes, unsigned int nSeed = 1)
{
    std::string str;
    for (size_t i = 0; i < nBytes; ++i)
    {
        nSeed = nSeed * 1664525u + 1013904223u;
        str += static_cast<char>(nSeed >> 25); // 0 to 127
    }
    return str;
}

inline std::string Riff(const std::string& strChunks)
{
    return "RIFF" + Number(static_cast<unsigned int>(strChunks.size() + 4)) + "WAVE" + strChunks;
}

inline std::string BigEndian(unsigned int n)
{
    std::string str;
    for (int nShift = 24; nShift >= 0; nShift -= 8)
        str += static_cast<char>((n >> nShift) & 255);
    return str;
}

// A frame of ID3v2.3 (and of 2.4, below 128 bytes).
inline std::string Frame(const std::string& strID, const std::string& strBody)
{
    return strID + BigEndian(static_cast<unsigned int>(strBody.size())) + std::string(2, 0) + strBody;
}

inline std::string TextFrame(const std::string& strID, const std::string& strText)
{
    return Frame(strID, std::string(1, 0) + strText + std::string(1, 0));
}

inline std::string Tag(const std::string& strFrames, size_t nPadding = 0, int nVersion = 3)
{
    const unsigned int n = static_cast<unsigned int>(strFrames.size() + nPadding);
    std::string str = "ID3" + std::string(1, static_cast<char>(nVersion)) + std::string(2, 0);
    for (int nShift = 21; nShift >= 0; nShift -= 7)
        str += static_cast<char>((n >> nShift) & 127);
    return str + strFrames + std::string(nPadding, 0);
}

inline std::string InfoItem(const std::string& strID, const std::string& strBody) { return Chunk(strID, strBody); }

inline std::string InfoList(const std::string& strItems) { return Chunk("LIST", "INFO" + strItems); }

struct CHUNK
{
    std::string strID;
    size_t nOffset; // of the header
    size_t nSize;   // as the header says
    size_t GetFull() const { return 8 + nSize + nSize % 2; }
};

// The chunks of a file, as far as they lie in it whole.
inline std::vector<CHUNK> List(const std::string& strFile)
{
    std::vector<CHUNK> aryChunks;
    for (size_t n = 12; n + 8 <= strFile.size();)
    {
        CHUNK chunk = {strFile.substr(n, 4), n, GetNumber(strFile, n + 4)};
        if (n + 8 + chunk.nSize > strFile.size())
            break;
        aryChunks.push_back(chunk);
        n += chunk.GetFull();
    }
    return aryChunks;
}

inline std::string GetBody(const std::string& strFile, const CHUNK& chunk)
{
    return strFile.substr(chunk.nOffset + 8, chunk.nSize);
}

// "fmt data id3 ": the identifiers, one behind the other.
inline std::string Names(const std::string& strFile)
{
    std::string str;
    for (const CHUNK& chunk : List(strFile))
        str += chunk.strID;
    return str;
}
} // namespace WaveFiles
