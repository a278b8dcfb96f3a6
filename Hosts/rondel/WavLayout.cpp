#include "WavLayout.h"
#include "AudioFormat.h"
#include "HostError.h"
#include "ILyReader.h"
#include <algorithm>
#include <climits>
#include <cstdio>

namespace
{
constexpr int FROM_START = 0;
constexpr int ID_BYTES = 4;
constexpr int CHUNK_HEADER_BYTES = 8;
constexpr int ROOT_HEADER_BYTES = 12;
constexpr int FORMAT_BYTES = 16;
constexpr int EXTENSIBLE_BYTES = 40;
constexpr int SUB_FORMAT_OFFSET = 24;
constexpr int BITS_PER_BYTE = 8;
constexpr long long LARGEST_ROOT = UINT_MAX;

unsigned int GetNumber(const unsigned char* p, int nBytes)
{
    unsigned int n = 0;
    for (int i = nBytes; i-- > 0;)
        n = n << BITS_PER_BYTE | p[i];
    return n;
}

std::string GetId(const unsigned char* p) { return {reinterpret_cast<const char*>(p), ID_BYTES}; }

// For a sentence: what is no letter is told by its number.
std::string Quote(const std::string& strId)
{
    std::string strText = "'";
    for (const char c : strId)
    {
        char szCode[8] = {c};
        if (c < ' ' || c > '~')
            std::snprintf(szCode, sizeof szCode, "\\x%02X", static_cast<unsigned int>(static_cast<unsigned char>(c)));
        strText += szCode;
    }
    return strText + "'";
}

std::string Bytes(long long n) { return std::to_string(n) + (n == 1 ? " byte" : " bytes"); }

class LayoutReader
{
public:
    LayoutReader(ILyReader& reader, const std::string& strName) : m_Reader(reader), m_strName(strName) {}
    WAV_LAYOUT Read();

private:
    int ReadAt(long long nOffset, unsigned char* p, int nBytes)
    {
        return m_Reader.Seek(nOffset, FROM_START) == nOffset ? m_Reader.Read(p, nBytes) : 0;
    }
    void Report(WAV_PROBLEM_KIND eKind, const std::string& strText)
    {
        m_Layout.aryProblems.push_back({eKind, strText});
    }
    void ReadRoot();
    void ReadChunks();
    bool ReadChunk(long long& nOffset);
    void ReadFormat(const WAV_LAYOUT_CHUNK& chunk);
    int Count(const char* pId) const;
    void JudgeChunks();
    void JudgeFormat();
    void JudgeData();

    ILyReader& m_Reader;
    const std::string& m_strName;
    WAV_LAYOUT m_Layout;
};

WAV_LAYOUT LayoutReader::Read()
{
    m_Layout.nFileBytes = m_Reader.GetLength();
    ReadRoot();
    ReadChunks();
    JudgeChunks();
    if (m_Layout.format.bKnown)
        JudgeFormat();
    return std::move(m_Layout);
}

void LayoutReader::ReadRoot()
{
    unsigned char aryRoot[ROOT_HEADER_BYTES] = {};
    const int nGot = ReadAt(0, aryRoot, sizeof aryRoot);
    const std::string strId = GetId(aryRoot);
    if (strId == "RF64" || strId == "BW64")
        throw HostError(m_strName + " is an " + strId +
                        " file, which can be longer than 4 GiB and is not read here; split it into WAV files, for "
                        "example with 'ffmpeg -i FILE -f segment'.");
    if (nGot < ROOT_HEADER_BYTES || strId != "RIFF" || GetId(aryRoot + CHUNK_HEADER_BYTES) != "WAVE")
        throw HostError(m_strName + " is no WAV file: it does not begin with 'RIFF' and 'WAVE'; name another one, or "
                                    "convert it, for example with 'ffmpeg'.");
    m_Layout.nRootBytes = GetNumber(aryRoot + ID_BYTES, 4);
    const long long nWanted = m_Layout.nFileBytes - CHUNK_HEADER_BYTES;
    if (nWanted != m_Layout.nRootBytes && nWanted <= LARGEST_ROOT)
        Report(WAV_PROBLEM_ROOT_SIZE, "the root size says " + Bytes(m_Layout.nRootBytes) + ", but " + Bytes(nWanted) +
                                          " follow it (--repair mends that)");
    else if (nWanted > LARGEST_ROOT)
        Report(WAV_PROBLEM_ROOT_SIZE, "the file is longer than the 4 GiB that a WAV file can tell");
}

void LayoutReader::ReadChunks()
{
    long long nOffset = ROOT_HEADER_BYTES;
    while (ReadChunk(nOffset))
    {
    }
    const long long nRest = m_Layout.nFileBytes - nOffset;
    if (static_cast<int>(m_Layout.aryChunks.size()) >= WAV_LAYOUT::MAX_CHUNKS)
        Report(WAV_PROBLEM_TOO_MANY, "there are more than " + std::to_string(WAV_LAYOUT::MAX_CHUNKS) + " chunks");
    else if (nRest > 0)
        Report(WAV_PROBLEM_NO_CHUNK, Bytes(nRest) + " at the end are no chunk");
}

// Moves the offset behind the chunk. False where there is none, or the file ends within it.
bool LayoutReader::ReadChunk(long long& nOffset)
{
    unsigned char aryHeader[CHUNK_HEADER_BYTES] = {};
    if (static_cast<int>(m_Layout.aryChunks.size()) >= WAV_LAYOUT::MAX_CHUNKS ||
        ReadAt(nOffset, aryHeader, sizeof aryHeader) != CHUNK_HEADER_BYTES)
        return false;
    WAV_LAYOUT_CHUNK chunk{GetId(aryHeader), GetNumber(aryHeader + ID_BYTES, 4), nOffset, true};
    const long long nThere = m_Layout.nFileBytes - nOffset - CHUNK_HEADER_BYTES;
    chunk.bWhole = chunk.nBytes <= nThere;
    if (!chunk.bWhole)
        Report(WAV_PROBLEM_CHUNK_CUT, "the chunk " + Quote(chunk.strId) + " at " + std::to_string(nOffset) + " says " +
                                          Bytes(chunk.nBytes) + ", but only " + Bytes(nThere) +
                                          " are there, so that it is not read");
    else if (chunk.nBytes % 2 != 0 && chunk.nBytes == nThere)
        Report(WAV_PROBLEM_PAD_BYTE, "the last chunk, " + Quote(chunk.strId) +
                                         ", has an odd size, and the byte that belongs behind it is missing");
    if (chunk.strId == "fmt " && chunk.bWhole)
        ReadFormat(chunk);
    nOffset = std::min(nOffset + CHUNK_HEADER_BYTES + chunk.nBytes + chunk.nBytes % 2, m_Layout.nFileBytes);
    m_Layout.aryChunks.push_back(chunk);
    return chunk.bWhole;
}

//  0 tag, 2    2 channels, 2    4 rate, 4    8 bytes per second, 4    12 block align, 2    14 bits, 2
// 24 sub-format of the extensible form: an identifier whose first two bytes are a tag
void LayoutReader::ReadFormat(const WAV_LAYOUT_CHUNK& chunk)
{
    unsigned char aryBody[EXTENSIBLE_BYTES] = {};
    const int nBytes = static_cast<int>(std::min<unsigned int>(chunk.nBytes, sizeof aryBody));
    if (nBytes < FORMAT_BYTES || ReadAt(chunk.nOffset + CHUNK_HEADER_BYTES, aryBody, nBytes) != nBytes)
        return;
    WAV_LAYOUT_FORMAT& format = m_Layout.format;
    format = {};
    format.bKnown = true;
    format.nTag = GetNumber(aryBody, 2);
    format.nChannels = GetNumber(aryBody + 2, 2);
    format.nRate = GetNumber(aryBody + 4, 4);
    format.nBytesPerSecond = GetNumber(aryBody + 8, 4);
    format.nBlockAlign = GetNumber(aryBody + 12, 2);
    format.nBits = GetNumber(aryBody + 14, 2);
    format.bExtensible = format.nTag == WAVE_TAG_EXTENSIBLE;
    // The identifiers of all formats that have a tag end as that of PCM does.
    const auto* pTail = reinterpret_cast<const unsigned char*>(&LY_GUID_PCM) + 2;
    if (format.bExtensible && nBytes == EXTENSIBLE_BYTES &&
        std::equal(aryBody + SUB_FORMAT_OFFSET + 2, aryBody + EXTENSIBLE_BYTES, pTail))
        format.nSubFormat = GetNumber(aryBody + SUB_FORMAT_OFFSET, 2);
}

int LayoutReader::Count(const char* pId) const
{
    return static_cast<int>(std::count_if(m_Layout.aryChunks.begin(), m_Layout.aryChunks.end(),
                                          [&](const WAV_LAYOUT_CHUNK& chunk)
                                          { return chunk.strId == pId && chunk.bWhole; }));
}

void LayoutReader::JudgeChunks()
{
    for (const char* pId : {"fmt ", "data"})
    {
        const int nCount = Count(pId);
        if (nCount == 0)
            Report(WAV_PROBLEM_MISSING, "there is no whole chunk " + Quote(pId));
        else if (nCount > 1)
            Report(WAV_PROBLEM_TWICE,
                   "there are " + std::to_string(nCount) + " chunks " + Quote(pId) + ", of which the last one counts");
    }
    if (Count("fmt ") > 0 && !m_Layout.format.bKnown)
        Report(WAV_PROBLEM_FORMAT, "the format chunk is shorter than " + Bytes(FORMAT_BYTES));
}

void LayoutReader::JudgeFormat()
{
    const WAV_LAYOUT_FORMAT& format = m_Layout.format;
    if (format.nChannels == 0 || format.nRate == 0)
        Report(WAV_PROBLEM_FORMAT, "the format has no channels, or no sample rate");
    const bool bSamples = format.GetKind() == WAVE_TAG_PCM || format.GetKind() == WAVE_TAG_IEEE_FLOAT;
    const unsigned int nSampleBytes = (format.nBits + BITS_PER_BYTE - 1) / BITS_PER_BYTE;
    if (bSamples && format.nBlockAlign != format.nChannels * nSampleBytes)
        Report(WAV_PROBLEM_FORMAT, "a block has " + Bytes(format.nBlockAlign) + ", but " +
                                       std::to_string(format.nChannels) + " channels of " +
                                       std::to_string(format.nBits) + " bits take " +
                                       Bytes(static_cast<long long>(format.nChannels) * nSampleBytes));
    const long long nPerSecond = static_cast<long long>(format.nRate) * format.nBlockAlign;
    if (bSamples && nPerSecond != format.nBytesPerSecond)
        Report(WAV_PROBLEM_FORMAT, "a second has " + Bytes(nPerSecond) + ", but the format says " +
                                       Bytes(format.nBytesPerSecond) + ", so that players show a wrong length");
    if (bSamples)
        JudgeData();
}

void LayoutReader::JudgeData()
{
    for (const WAV_LAYOUT_CHUNK& chunk : m_Layout.aryChunks)
    {
        if (chunk.strId != "data" || !chunk.bWhole || m_Layout.format.nBlockAlign == 0)
            continue;
        const unsigned int nRest = chunk.nBytes % m_Layout.format.nBlockAlign;
        if (nRest != 0)
            Report(WAV_PROBLEM_PART_OF_BLOCK,
                   "the audio ends within a block: " + Bytes(nRest) + " of " + Bytes(m_Layout.format.nBlockAlign));
    }
}
} // namespace

const char* GetWavProblemName(WAV_PROBLEM_KIND eKind)
{
    constexpr const char* NAMES[] = {"root_size", "chunk_cut", "no_chunk",      "pad_byte",       "missing",
                                     "twice",     "format",    "part_of_block", "too_many_chunks"};
    return NAMES[eKind];
}

bool WAV_LAYOUT::HasProblem(WAV_PROBLEM_KIND eKind) const
{
    return std::any_of(aryProblems.begin(), aryProblems.end(),
                       [&](const WAV_PROBLEM& problem) { return problem.eKind == eKind; });
}

WAV_LAYOUT ReadWavLayout(ILyReader& reader, const std::string& strName) { return LayoutReader(reader, strName).Read(); }

std::string DescribeWavFormat(const WAV_LAYOUT_FORMAT& format)
{
    struct NAME
    {
        unsigned int nTag;
        const char* pName;
    };
    constexpr NAME NAMES[] = {{WAVE_TAG_PCM, "PCM"},
                              {2, "ADPCM"},
                              {WAVE_TAG_IEEE_FLOAT, "float"},
                              {6, "A-law"},
                              {WAVE_TAG_MULAW, "mu-law"},
                              {0x11, "IMA ADPCM"},
                              {WAVE_TAG_MPEG, "MPEG"},
                              {0x55, "MP3"},
                              {WAVE_TAG_DOLBY_SPDIF, "Dolby Digital"},
                              {0x2001, "DTS"}};
    const unsigned int nKind = format.GetKind();
    const auto* pName =
        std::find_if(std::begin(NAMES), std::end(NAMES), [&](const NAME& n) { return n.nTag == nKind; });
    char szNumber[32];
    std::snprintf(szNumber, sizeof szNumber, "format %u", nKind);
    return std::string(pName != std::end(NAMES) ? pName->pName : szNumber) + (format.bExtensible ? ", extensible" : "");
}
