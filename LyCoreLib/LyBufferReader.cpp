// A buffer filled from an open reader.

#include "ILyReader.h"
#include "LyBuffer.h"
#include <algorithm>
#include <climits>

bool LyBuffer::FromReader(ILyReader* pReader, int nBytes)
{
    constexpr int ALL = -1;
    constexpr int ALL_TOO = -2; // what callers pass for "as much as there is"
    Empty(false);
    if (pReader == nullptr || !pReader->GetIsOpen())
        return false;
    if (nBytes == ALL || nBytes == ALL_TOO)
    {
        long long nRest = 0;
        if (__builtin_sub_overflow(pReader->GetLength(), pReader->GetPosition(), &nRest) || nRest > INT_MAX)
            return false;
        nBytes = static_cast<int>(std::max(nRest, 0LL));
    }
    if (nBytes < 1)
        return false;
    unsigned char* p = GetAppendBlock(nBytes, false, 0, false, false);
    if (p == nullptr)
        return false;
    // What a reader claims to have read beyond the block is not believed.
    m_nSize = std::clamp(pReader->Read(p, nBytes), 0, nBytes);
    return m_nSize > 0;
}
