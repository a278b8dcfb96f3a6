// The position records of CMarkup, in segments, so that a document that grows copies at most the last of them.

#include "Markup.h"
#include <cstdlib>
#include <new>
#include <utility>

namespace
{
constexpr int FIRST_POSITIONS = 8;
constexpr long long MAX_POSITIONS = 0x7fff0000; // whole segments that an index can name

int GetSegments(int nPositions)
{
    return nPositions / CMarkup::SEGMENT_RECORDS + (nPositions % CMarkup::SEGMENT_RECORDS != 0 ? 1 : 0);
}

// False, and everything as it was, if there is no memory.
template <class T>
bool Reallocate(T*& p, int nCount)
{
    void* pNew = std::realloc(static_cast<void*>(p), static_cast<size_t>(nCount) * sizeof(T));
    if (pNew == nullptr)
        return false;
    p = static_cast<T*>(pNew);
    return true;
}
} // namespace

CMarkup::~CMarkup()
{
    for (int i = 0; i < GetSegments(m_nAllocated); ++i)
        std::free(m_ppSegments[i]);
    std::free(static_cast<void*>(m_ppSegments));
    delete[] m_pSavedPositions;
}

bool CMarkup::x_AllocPosArray(int nPositions)
{
    long long nWanted = nPositions;
    if (nPositions == 0)
        nWanted = m_nAllocated + m_nAllocated / 2LL;
    if (nWanted < FIRST_POSITIONS)
        nWanted = FIRST_POSITIONS;
    if (nWanted > MAX_POSITIONS)
        nWanted = MAX_POSITIONS;
    while (m_nAllocated < nWanted)
    {
        // The last segment becomes as large as need be, or full; then another one begins.
        const int nSegment = m_nAllocated >> SEGMENT_BITS;
        if (nSegment >= m_nSegmentCapacity)
        {
            if (!Reallocate(m_ppSegments, 2 * m_nSegmentCapacity + 4))
                return false;
            m_nSegmentCapacity = 2 * m_nSegmentCapacity + 4;
        }
        if (m_nAllocated % SEGMENT_RECORDS == 0)
            m_ppSegments[nSegment] = nullptr;
        const int nBefore = nSegment << SEGMENT_BITS;
        const long long nRest = nWanted - nBefore;
        const int nRecords = nRest < SEGMENT_RECORDS ? static_cast<int>(nRest) : SEGMENT_RECORDS;
        if (!Reallocate(m_ppSegments[nSegment], nRecords))
            return false;
        if (m_nAllocated == 0)
            m_ppSegments[0][0] = {};
        m_nAllocated = nBefore + nRecords;
    }
    return m_nAllocated >= nPositions;
}

int CMarkup::x_GetFreePos()
{
    if (m_nDeletedPos != 0)
    {
        const int nPos = m_nDeletedPos;
        m_nDeletedPos = x_GetPos(nPos).m_nNextSibling;
        return nPos;
    }
    if (m_nFreePos >= m_nAllocated && (!x_AllocPosArray(0) || m_nFreePos >= m_nAllocated))
        return 0;
    return m_nFreePos++;
}

bool CMarkup::NodeStack::Push(int nStart, int nLength)
{
    if (m_nCount == m_nCapacity)
    {
        if (m_nCapacity > MAX_POSITIONS / 2 - 6)
            return false;
        const int nCapacity = 2 * m_nCapacity + 6;
        NodePos* pNodes = new (std::nothrow) NodePos[static_cast<size_t>(nCapacity)];
        if (pNodes == nullptr)
            return false;
        for (int i = 0; i < m_nCount; ++i)
            pNodes[i] = std::move(m_pNodes[i]);
        delete[] m_pNodes;
        m_pNodes = pNodes;
        m_nCapacity = nCapacity;
    }
    NodePos& node = m_pNodes[m_nCount++];
    node.m_nNodeType = MARKUP_NODE_START_TAG;
    node.m_nStart = nStart;
    node.m_nLength = nLength;
    return true;
}
