#include "LyBuffer.h"

#include "LyString.h"
#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>

LyBuffer::LyBuffer(int nBytes, bool bZero)
{
    if (nBytes > 0)
        GetAppendBlock(nBytes, bZero, 0, true, false);
}

LyBuffer::LyBuffer(const LyBuffer& buffer) { FromBuffer(buffer, -1, 0); }

LyBuffer& LyBuffer::operator=(const LyBuffer& buffer)
{
    if (this != &buffer)
        FromBuffer(buffer, -1, 0);
    return *this;
}

LyBuffer::~LyBuffer() { std::free(m_pData); }

void LyBuffer::Empty(bool bFreeMemory)
{
    m_nSize = 0;
    if (!bFreeMemory)
        return;
    std::free(m_pData);
    m_pData = nullptr;
    m_nAllocated = 0;
}

unsigned char* LyBuffer::GetAppendBlock(int nBytes, bool bZero, int nGrowBytes, bool bAddToSize, bool)
{
    nBytes = std::max(nBytes, 0);
    long long nNeeded = static_cast<long long>(m_nSize) + nBytes;
    if (nNeeded > m_nAllocated)
    {
        if (nNeeded > INT_MAX)
            return nullptr;
        long long nGrown = static_cast<long long>(m_nAllocated) + nGrowBytes;
        if (!Reallocate(std::clamp<long long>(nGrown, nNeeded, INT_MAX)))
            return nullptr;
    }
    if (m_pData == nullptr) // nothing was there, and nothing was asked for
        return nullptr;
    unsigned char* pOldEnd = m_pData + m_nSize;
    if (bZero)
        std::memset(pOldEnd, 0, static_cast<size_t>(nBytes));
    if (bAddToSize)
        m_nSize += nBytes;
    return pOldEnd;
}

// Growth by the C library keeps the bytes in place where there is room behind them, and moves large blocks by their
// pages: many small steps stay cheap.
bool LyBuffer::Reallocate(long long nBytes)
{
    void* p = std::realloc(m_pData, static_cast<size_t>(nBytes));
    if (p == nullptr)
        return false;
    m_pData = static_cast<unsigned char*>(p);
    m_nAllocated = static_cast<int>(nBytes);
    return true;
}

// Makes the size nBytes, of which all will be written: where it grows, the old bytes need not be kept.
bool LyBuffer::SetSizeForOverwrite(int nBytes)
{
    if (nBytes > m_nAllocated)
    {
        Empty(true);
        if (!Reallocate(nBytes))
            return false;
    }
    m_nSize = nBytes;
    return true;
}

bool LyBuffer::FromBuffer(const LyBuffer& buffer, int nBytes, int nStart)
{
    nStart = std::max(nStart, 0);
    int nAvailable = buffer.m_nSize - nStart;
    if (nBytes == -1)
        nBytes = nAvailable;
    if (buffer.m_pData == nullptr || nBytes > nAvailable)
        nBytes = 0;
    return FromBuffer(buffer.m_pData == nullptr ? nullptr : buffer.m_pData + std::min(nStart, buffer.m_nSize), nBytes);
}

bool LyBuffer::FromBuffer(const void* p, int nBytes)
{
    if (p == nullptr || nBytes < 1 || !SetSizeForOverwrite(nBytes))
    {
        Empty(true);
        return false;
    }
    // The source may be a part of this buffer; then it did not grow.
    std::memmove(m_pData, p, static_cast<size_t>(nBytes));
    return true;
}

bool LyBuffer::FromStringBase64(const LyString& str) { return str.ToBinary(*this); }

LyString LyBuffer::ToStringBase64() const
{
    LyString str;
    str.FromBinary(m_pData, m_nSize);
    return str;
}

bool LyBuffer::FromStringHexDigits(const LyString& str) { return str.HexDigitsToBinary(*this); }

bool LyBuffer::RemoveRight(int nBytes)
{
    if (nBytes < 1)
        return false;
    m_nSize = std::max(m_nSize - nBytes, 0);
    return true;
}

bool LyBuffer::PadForBlockAlign(int nBlock, unsigned char cPad, int nGrowBytes)
{
    if (nBlock < 1)
        return false;
    int nRest = m_nSize % nBlock;
    if (nRest == 0)
        return true;
    int nPadBytes = nBlock - nRest;
    unsigned char* p = GetAppendBlock(nPadBytes, false, nGrowBytes, true, false);
    if (p == nullptr)
        return false;
    std::memset(p, cPad, static_cast<size_t>(nPadBytes));
    return true;
}
