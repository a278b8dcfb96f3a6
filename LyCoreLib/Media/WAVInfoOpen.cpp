// The walk over the chunks of a RIFF WAVE file.
//
// The fmt chunk, of which the first 16 bytes are read:
//
//     0  format tag, 2               2  channels, 2      4  samples per second, 4
//     8  average bytes per second, 4   12  block align, 2   14  bits per sample, 2

#include "DTSHelper.h"
#include "WAVInfo.h"
#include <algorithm>
#include <climits>
#include <cstring>

namespace
{
constexpr int FROM_START = 0;
constexpr int ROOT_BYTES = 12; // "RIFF", the root length, "WAVE"
constexpr int CD_CHANNELS = 2;
constexpr int CD_RATE = 44100;
constexpr int CD_BITS = 16;
constexpr unsigned short TAG_DTS = 8;

struct FMT_BODY
{
    unsigned short nTag;
    unsigned short nChannels;
    unsigned int nSamplesPerSec;
    unsigned int nAvgBytesPerSec;
    unsigned short nBlockAlign;
    unsigned short nBits;
};
static_assert(sizeof(FMT_BODY) == 16);

bool IsOfPlainSamples(int nTag)
{
    return nTag == WAVE_TAG_PCM || nTag == WAVE_TAG_IEEE_FLOAT || nTag == WAVE_TAG_EXTENSIBLE;
}

const _GUID& GetSubFormat(int nTag)
{
    switch (nTag)
    {
    case WAVE_TAG_PCM:
        return LY_GUID_PCM;
    case WAVE_TAG_IEEE_FLOAT:
        return LY_GUID_IEEE_FLOAT;
    case WAVE_TAG_MULAW:
        return LY_GUID_MULAW;
    case WAVE_TAG_MPEG:
        return LY_GUID_MPEG;
    case WAVE_TAG_DOLBY_SPDIF:
        return LY_GUID_DOLBY_SPDIF;
    default:
        // Deliberate: the extensible form, too, since the bytes behind the 16 are not read. Its depth decides.
        return LY_GUID_NULL;
    }
}

// A walk. The operations of the chunks say whether it goes on.
class ChunkWalk
{
public:
    ChunkWalk(CWAVInfo& info, bool bStrictFormat, bool bScanAllChunks)
        : m_Info(info), m_pReader(info.m_pReader), m_bStrictFormat(bStrictFormat), m_bScanAllChunks(bScanAllChunks)
    {
    }
    void Run();
    bool HasFormatAndData() const { return m_bFormatSeen && m_bDataSeen; }

private:
    bool NextChunk();
    bool ReadBody(const CIFFChunk& chunk, int nIndex);
    bool ReadFormat();
    bool ReadData(const CIFFChunk& chunk);
    bool ReadTag(const CIFFChunk& chunk, int nIndex);
    bool ReadList(const CIFFChunk& chunk);
    bool ReadUITS(const CIFFChunk& chunk, int nIndex);
    void TestForDTS();
    bool GoOn() const { return m_bScanAllChunks || !HasFormatAndData(); }

    CWAVInfo& m_Info;
    ILyReader* m_pReader;
    bool m_bStrictFormat;
    bool m_bScanAllChunks;
    bool m_bFormatSeen = false;
    bool m_bDataSeen = false;
    long long m_nPos = ROOT_BYTES; // of the next chunk's header
    long long m_nEvenBytes = 0;    // of the body of this one, with its pad byte
};

void ChunkWalk::Run()
{
    while (NextChunk())
    {
    }
}

bool ChunkWalk::NextChunk()
{
    CIFFChunk chunk;
    if (m_pReader->GetPosition() != m_nPos && m_pReader->Seek(m_nPos, FROM_START) != m_nPos)
        return false;
    if (m_pReader->Read(&chunk, CIFFChunk::HEADER_BYTES) != CIFFChunk::HEADER_BYTES)
        return false;
    // What claims to be longer than the file ends the walk. The pad byte is not counted: the last chunk often has none.
    if (m_nPos + CIFFChunk::HEADER_BYTES + chunk.size > m_Info.m_nTotalBytes)
        return false;
    const int nIndex = m_Info.m_aryChunks.GetSize();
    if (nIndex >= CIFFInfo::MAX_CHUNKS)
        return false;
    chunk.offset = m_nPos;
    if (m_Info.m_aryChunks.Add(chunk) != nIndex)
        return false;
    m_nEvenBytes = chunk.GetFullBytes() - CIFFChunk::HEADER_BYTES;
    m_nPos += chunk.GetFullBytes();
    return ReadBody(chunk, nIndex);
}

bool ChunkWalk::ReadBody(const CIFFChunk& chunk, int nIndex)
{
    if (chunk.HasID("fmt "))
        return ReadFormat();
    if (chunk.HasID("data"))
        return ReadData(chunk);
    if (CIFFInfo::ChunkIsID3(chunk.id))
        return ReadTag(chunk, nIndex);
    if (chunk.HasID("LIST"))
        return ReadList(chunk);
    if (chunk.HasID("UITS"))
        return ReadUITS(chunk, nIndex);
    return true;
}

bool ChunkWalk::ReadFormat()
{
    FMT_BODY body;
    if (m_nEvenBytes < static_cast<long long>(sizeof body) ||
        m_pReader->Read(&body, sizeof body) != static_cast<int>(sizeof body))
        return false;
    if (m_bStrictFormat && !IsOfPlainSamples(body.nTag))
        return false;
    CAudioFormat& format = m_Info.m_AudioFormat;
    format.SetFormat(body.nBits, static_cast<int>(body.nSamplesPerSec), body.nChannels, false, GetSubFormat(body.nTag),
                     true);
    format.nAvgBytesPerSec = body.nAvgBytesPerSec;
    format.nBlockAlign = body.nBlockAlign;
    m_bFormatSeen = true;
    return GoOn();
}

bool ChunkWalk::ReadData(const CIFFChunk& chunk)
{
    m_Info.m_nDataBytes = chunk.size;
    m_Info.m_nHeaderBytes = m_pReader->GetPosition();
    TestForDTS();
    m_bDataSeen = true;
    return GoOn();
}

// A stream that says to be a CD's audio may hold DTS instead. Only the tag tells.
void ChunkWalk::TestForDTS()
{
    CAudioFormat& format = m_Info.m_AudioFormat;
    if (format.nChannels != CD_CHANNELS || format.nSamplesPerSec != CD_RATE || format.wBitsPerSample != CD_BITS)
        return;
    LyBuffer buffer;
    (void)buffer.FromReader(m_pReader, static_cast<int>(std::min<long long>(m_nEvenBytes, DTSHelper::MAX_TEST_BYTES)));
    DTSHelper dts;
    if (dts.Analyze(buffer) && dts.m_nStreamType != DTS_STREAM_NONE)
        format.wFormatTag = TAG_DTS;
}

bool ChunkWalk::ReadTag(const CIFFChunk& chunk, int nIndex)
{
    if (m_Info.ReadID3Tags(chunk.size) < 0)
        return false;
    m_Info.m_nID3ChunkIndex = nIndex;
    return true;
}

// Deliberate: a list of another type is parsed, too, which leaves no entries of an earlier one.
bool ChunkWalk::ReadList(const CIFFChunk& chunk)
{
    LyBuffer buffer;
    if (chunk.size > INT_MAX)
        return false;
    (void)buffer.FromReader(m_pReader, static_cast<int>(chunk.size));
    if (buffer.GetSize() < static_cast<int>(chunk.size))
        return false;
    (void)m_Info.m_List.Parse(buffer);
    return true;
}

bool ChunkWalk::ReadUITS(const CIFFChunk& chunk, int nIndex)
{
    CWAVUITSChunk* pUITS = new CWAVUITSChunk(chunk);
    m_Info.m_pUITSChunk.Set(pUITS, true, false);
    pUITS->m_nChunkIndex = nIndex;
    // The pad byte belongs to it, even if the file ends ahead of it.
    if (m_nEvenBytes > INT_MAX || pUITS->m_Data.GetAppendBlock(static_cast<int>(m_nEvenBytes), true) == nullptr)
        return true;
    (void)m_pReader->Read(pUITS->m_Data.GetData(), static_cast<int>(m_nEvenBytes));
    return true;
}
} // namespace

int CWAVInfo::OpenInternal(bool bStrictFormat, bool bScanAllChunks)
{
    m_bOpen = false;
    if (m_pReader == nullptr)
        return -1;
    const long long nPosition = m_pReader->GetPosition();
    (void)m_pReader->Seek(0, FROM_START);
    m_nTotalBytes = m_pReader->GetLength();
    char aryRoot[ROOT_BYTES] = {};
    // Deliberate: the root length between the two words plays no part. The file's own does.
    const bool bWave = m_pReader->Read(aryRoot, ROOT_BYTES) == ROOT_BYTES && std::memcmp(aryRoot, "RIFF", 4) == 0 &&
                       std::memcmp(aryRoot + CIFFChunk::HEADER_BYTES, "WAVE", 4) == 0;
    ChunkWalk walk(*this, bStrictFormat, bScanAllChunks);
    if (bWave)
        walk.Run();
    if (bWave && walk.HasFormatAndData())
    {
        m_nDataBytes = std::min(m_nDataBytes, m_nTotalBytes - m_nHeaderBytes);
        m_nTrailerBytes = m_nTotalBytes - m_nDataBytes - m_nHeaderBytes;
        m_bOpen = true;
    }
    (void)m_pReader->Seek(nPosition, FROM_START);
    return m_bOpen ? 0 : -1;
}
