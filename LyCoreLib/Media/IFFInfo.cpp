// Opening, closing, and audio by blocks.

#include "LySharedToolsHelper.h"
#include "WAVInfo.h"
#include <algorithm>
#include <climits>
#include <cstring>

namespace
{
constexpr int FROM_START = 0;
constexpr int BITS_OF_BYTE = 8;
constexpr int PIECE_BYTES = 0x40000000; // one read of a long header

// What a reader takes as a count.
int As32Bits(long long nCount) { return static_cast<int>(static_cast<unsigned int>(nCount)); }
} // namespace

bool CIFFChunk::HasID(const char* pID) const { return std::memcmp(id, pID, sizeof id) == 0; }

// A subclass has closed already. One that did not is gone by now, and with it the operations that a save needs.
CIFFInfo::~CIFFInfo()
{
    m_pReader.Release();
    m_bOpen = false;
}

int CIFFInfo::Open(const wchar_t* pName, bool bStrictFormat, bool bScanAllChunks)
{
    const LyString strName(pName); // it may be the characters of the member
    (void)Close();
    m_strFilename = strName;
    m_pReader.Set(CreateGenericReader(m_strFilename), true, false);
    if (m_pReader == nullptr || !m_pReader->Open())
    {
        m_pReader.Release();
        return -1;
    }
    return Open(static_cast<ILyReader*>(nullptr), bStrictFormat, bScanAllChunks);
}

int CIFFInfo::Open(ILyReader* pReader, bool bStrictFormat, bool bScanAllChunks)
{
    if (pReader != nullptr)
    {
        // The reader that is here already survives the closing, and belongs to whom it belonged before.
        const bool bHere = pReader == m_pReader.Get();
        const bool bOwned = bHere && (m_pReader.GetFlags() & LyPtr<ILyReader, ILyReader>::OWNED) != 0;
        if (bHere)
            m_pReader.Set(pReader, false, false);
        (void)Close();
        m_pReader.Set(pReader, bOwned, false);
    }
    if (m_pReader == nullptr || !m_pReader->GetIsOpen())
        return -1;
    return OpenInternal(bStrictFormat, bScanAllChunks);
}

int CIFFInfo::ReOpen() { return Open(static_cast<const wchar_t*>(m_strFilename), true, true); }

int CIFFInfo::Close()
{
    (void)SaveMetadataChanges(false);
    m_pReader.Release();
    m_bOpen = false;
    return 0;
}

int CIFFInfo::ReadBlocks(void* pDest, long long nFirstBlock, long long nBlocks, long long* pnBytesRead,
                         bool bRestorePosition)
{
    if (!m_bOpen || m_pReader == nullptr)
        return -1;
    const long long nStart = GetByteFromBlock(nFirstBlock);
    const long long nPosition = m_pReader->GetPosition();
    long long nBytes = 0;
    if (__builtin_mul_overflow(GetBlockBits(), nBlocks, &nBytes))
        nBytes = nBlocks > 0 ? LLONG_MAX : 0;
    nBytes /= BITS_OF_BYTE;
    if (m_nDataBytes >= 0 && nStart >= 0)
        nBytes = std::min(nBytes, m_nDataBytes - nStart + m_nHeaderBytes);
    int nRead = 0;
    if (nBytes > 0)
    {
        // Deliberate: beyond 4 GiB each read seeks, wherever the reader stands: a place is compared by 32 bits, and
        // what does not fit them counts as another place. A seek is cheap.
        const bool bThere = nPosition == nStart && nStart == static_cast<unsigned int>(nStart);
        if (nStart < 0 || (!bThere && m_pReader->Seek(nStart, FROM_START) != nStart))
            return -1;
        // A reader takes 32 bits of the count. What they make of a larger one may be nothing.
        const int nCount = As32Bits(nBytes);
        if (pDest != nullptr && nCount > 0)
            nRead = std::clamp(m_pReader->Read(pDest, nCount), 0, nCount);
    }
    if (pnBytesRead != nullptr)
        *pnBytesRead = nRead;
    if (bRestorePosition)
        (void)m_pReader->Seek(nPosition, FROM_START);
    return 0;
}

int CIFFInfo::GetHeaderData(void* pDest)
{
    if (!m_bOpen || m_pReader == nullptr || pDest == nullptr || m_pReader->GetIsStream())
        return -1;
    const long long nPosition = m_pReader->GetPosition();
    (void)m_pReader->Seek(0, FROM_START);
    unsigned char* p = static_cast<unsigned char*>(pDest);
    for (long long nLeft = m_nHeaderBytes; nLeft > 0;)
    {
        const int nPiece = static_cast<int>(std::min<long long>(nLeft, PIECE_BYTES));
        if (m_pReader->Read(p, nPiece) != nPiece)
            break; // the file became shorter; what there is, is there
        p += nPiece;
        nLeft -= nPiece;
    }
    (void)m_pReader->Seek(nPosition, FROM_START);
    return 0;
}
