// The reads of the copy engine: one block with retries, sector by sector past the bad spots, and compared reads.

#include "CDAC.h"
#include "CDUnits.h"
#include <algorithm>
#include <cstring>

namespace
{
constexpr int BLOCK_READ_ATTEMPTS = 3;
constexpr int BIG_SPOT_RUN = 10;        // bad sectors in a row from which on the salvage jumps
constexpr int MAX_FAILED_COMPARES = 16; // the seventeenth comparison is the last
constexpr int MIN_SALVAGE_ERRORS = 2;
constexpr int REPORTED_SECTORS_MASK = 0xff; // short reads are reported in eight bits
} // namespace

// One read. The command layer reports errors of other commands only, left behind in its last error, which is taken
// here.
bool CDAC::ReadOnce(int nStart, int nCount, void* pBuffer)
{
    m_pCD->ReadCDDA(nStart, nCount, pBuffer);
    return m_pCD->Lasterror() == 0;
}

int CDAC::ReadCDDA(int nStart, int nCount, void* pBuffer)
{
    m_nLastError = CDAC_NO_ERROR;
    for (int i = 0; i < BLOCK_READ_ATTEMPTS; ++i)
    {
        if (ReadOnce(nStart, nCount, pBuffer))
            return 0;
    }
    m_nLastError = CDAC_READ_FAILED;
    return 0;
}

// Good sectors are packed together: skipped ones leave no gap. From the eleventh bad sector in a row on, the jump over
// the spot doubles each time.
int CDAC::ReadCDSkipErrors(int nStart, int nCount, unsigned int* pBuffer, int nMaxErrors)
{
    unsigned char* pOut = reinterpret_cast<unsigned char*>(pBuffer);
    int nSkipped = 0;
    int nRun = 0;
    for (int i = 0; i < nCount; ++i)
    {
        if (ReadOnce(nStart + i, 1, pOut + static_cast<ptrdiff_t>(i - nSkipped) * LY_CD_SECTOR_BYTES))
        {
            nRun = 0;
            continue;
        }
        m_nLastError = CDAC_READ_FAILED;
        ++nSkipped;
        if (nRun >= BIG_SPOT_RUN)
        {
            i += nRun + 1;
            nSkipped += nRun + 1;
            nRun = 2 * (nRun + 1);
        }
        else
            ++nRun;
        if (nSkipped > nMaxErrors)
            return 0;
    }
    return nCount - nSkipped;
}

int CDAC::ReadMulti(int nStart, int nCount, void* pBuffer)
{
    for (int nDone = 0; nDone < nCount;)
    {
        const int nPiece = std::min(LY_CD_MAX_READ_SECTORS, nCount - nDone);
        unsigned char* pPlace =
            static_cast<unsigned char*>(pBuffer) + static_cast<ptrdiff_t>(nDone) * LY_CD_SECTOR_BYTES;
        (void)ReadCDDA(nStart + nDone, nPiece, pPlace);
        if (Lasterror() != CDAC_NO_ERROR)
        {
            // Deliberate: the salvage writes to the start of the whole buffer, not to the place of the failed piece.
            // The count alone decides what is done with the block.
            return nDone + ReadCDSkipErrors(nStart + nDone, nCount - nDone, static_cast<unsigned int*>(pBuffer),
                                            std::max(nCount - 1, MIN_SALVAGE_ERRORS));
        }
        nDone += nPiece;
    }
    return std::max(nCount, 0);
}

bool CDAC::GetBufferMatch(const unsigned char* pA, const unsigned char* pB, int nBytes, bool bCountSectors,
                          int& nMismatched)
{
    const bool bEqual = nBytes < 1 || std::memcmp(pA, pB, static_cast<size_t>(nBytes)) == 0;
    if (!bCountSectors)
        return bEqual;
    nMismatched = 0;
    // Deliberate: the last sector is never counted; reports of different discs are compared by this figure.
    for (int nOffset = 0; !bEqual && nOffset < nBytes - LY_CD_SECTOR_BYTES; nOffset += LY_CD_SECTOR_BYTES)
    {
        if (std::memcmp(pA + nOffset, pB + nOffset, LY_CD_SECTOR_BYTES) != 0)
            ++nMismatched;
    }
    return bEqual;
}

void CDAC::Report(SECURE_READ_STATUS eStatus, int nStart, int nSectors)
{
    SECURE_READ_RESULT result{eStatus, 0, nSectors & REPORTED_SECTORS_MASK, nStart - m_nSectionStart, 0};
    OnSecureReadResult(result);
}

int CDAC::SecureRead(int nStart, int nCount)
{
    unsigned char* pBlock = m_pBuffers[m_nBufferIndex];
    unsigned char* pComparison = m_pBuffers[COMPARISON_BUFFER];
    int nDelivered = ReadMulti(nStart, nCount, pBlock);
    if (nDelivered == 0)
    {
        Report(SECURE_READ_NOTHING, nStart, nCount); // the error of the salvage stays, and ends the copy
        return 0;
    }
    if (nDelivered < nCount)
    {
        Report(SECURE_READ_SHORT, nStart, nCount - nDelivered);
        m_nLastError = CDAC_NO_ERROR;
        return 0;
    }
    SECURE_READ_RESULT result{SECURE_READ_PLAIN, 0, nCount, nStart - m_nSectionStart, 0};
    for (bool bIntoComparison = true;; bIntoComparison = !bIntoComparison)
    {
        // Each pass overwrites the older of the two latest reads.
        unsigned char* pTarget = bIntoComparison ? pComparison : pBlock;
        const int nDefeat = std::min(m_pCD->GetMaxSektors() - nDelivered, m_nSectionEnd - m_nSectionStart);
        if (m_pCD->GetMaxSektors() > nDelivered)
            (void)ReadMulti(m_nSectionStart, nDefeat, pTarget); // so that the drive's cache cannot answer
        nDelivered = ReadMulti(nStart, nCount, pTarget);
        if (nDelivered < nCount)
        {
            Report(SECURE_READ_SHORT, nStart, nCount);
            m_nLastError = CDAC_NO_ERROR;
            return 0;
        }
        const bool bMatch = GetBufferMatch(pBlock, pComparison, nCount * LY_CD_SECTOR_BYTES, result.nRetries == 0,
                                           result.nMismatchedSectors);
        if (!m_bRunning)
            return 0;
        if (bMatch || result.nRetries >= MAX_FAILED_COMPARES)
            break;
        ++result.nRetries;
        ++m_nReReads;
    }
    // Deliberate: a block that matched only in the last comparison counts as one that never matched.
    if (result.nRetries == MAX_FAILED_COMPARES)
        result.nStatus = SECURE_READ_LIMIT;
    else if (result.nRetries >= 2)
        result.nStatus = SECURE_READ_MATCHED;
    if (result.nStatus != SECURE_READ_PLAIN)
        OnSecureReadResult(result);
    return result.nRetries + 1;
}
