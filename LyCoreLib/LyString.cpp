// Making, assigning and joining: everything that decides whether a block is shared, changed in place or replaced.

#include "LyString.h"
#include "LyStringDetails.h"
#include <cstdint>
#include <cwchar>

namespace
{
// Growth without an exact size: powers of two up to this many characters, steps of as many above.
constexpr int GROWTH_STEP = 0x100000;

// Deliberate: one doubling for each bit of the number, so that a power of two gives the next one. A string that is
// exactly full gets as much room again, and the terminator never costs a second growth.
int RoundUpCapacity(int nChars)
{
    if (nChars > GROWTH_STEP)
    {
        long long nRounded = (static_cast<long long>(nChars) + GROWTH_STEP - 1) / GROWTH_STEP * GROWTH_STEP;
        return nRounded <= LyStringBuffer::MAX_CHARACTERS ? static_cast<int>(nRounded) : nChars;
    }
    int nSize = 1;
    for (int nBits = nChars; nBits > 0; nBits >>= 1)
        nSize *= 2;
    return nSize;
}

bool IsEmptyBlock(const LyStringBuffer* pBlock) { return pBlock->GetReferences() == LyStringBuffer::EMPTY_REFERENCES; }
} // namespace

// ---- Blocks: shared, copied, dropped

// What a copy points at, seen from the manager that the copy belongs to.
wchar_t* LyString::ShareOrCopy(const LyString& str, ILyStringManager* pManager)
{
    LyStringBuffer* pBlock = str.Block();
    if (pBlock->nLength < 1)
        return pManager->GetEmptyLyStringData();
    if (pBlock->manager == pManager && pBlock->GetReferences() != LyStringBuffer::LOCKED)
    {
        LyInterlocked::Increment(&pBlock->nReferences);
        return str.m_pText;
    }
    return pManager->NewLyStringBuffer(str.m_pText, pBlock->nLength, -1, false, false, true);
}

void LyString::DropReference(LyStringBuffer* pBlock)
{
    // A block of one owner, or a locked one, is not counted down: nobody else can see it.
    if (pBlock->GetReferences() >= 2 && LyInterlocked::Decrement(&pBlock->nReferences) > 0)
        return;
    pBlock->manager->Delete(pBlock);
}

// ---- Making and assigning

LyString::LyString(LyString&& str) noexcept
{
    LyStringBuffer* pBlock = str.Block();
    ILyStringManager* pManager = LyStringGlobals::GetManager();
    if (pBlock->manager != pManager || pBlock->GetReferences() == LyStringBuffer::LOCKED)
    {
        m_pText = ShareOrCopy(str, pManager);
        return;
    }
    m_pText = str.m_pText;
    str.m_pText = pManager->GetEmptyLyStringData();
}

LyString::LyString(const wchar_t* p)
    : m_pText(LyStringGlobals::GetManager()->NewLyStringBuffer(p, -1, -1, false, true, true))
{
}

LyString::LyString(const LyXString& str) : LyString(str.Get()) {}

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): a string has the same block as itself
LyString& LyString::operator=(const LyString& str)
{
    if (m_pText == str.m_pText)
        return *this;
    LyStringBuffer* pSource = str.Block();
    if (pSource->nLength < 1)
    {
        Empty();
        return *this;
    }
    LyStringBuffer* pOld = Block();
    ILyStringManager* pManager = pOld->manager;
    bool bLocked = pOld->GetReferences() == LyStringBuffer::LOCKED;
    ReleaseBlock(pOld);
    if (!bLocked)
    {
        m_pText = ShareOrCopy(str, pManager);
        return *this;
    }
    // Deliberate: a locked target stays locked, because its holder still owes the ReleaseBuffer.
    m_pText = pManager->NewLyStringBuffer(str.m_pText, pSource->nLength, -1, false, false, true);
    (void)GetBuffer(-1, false, true);
    return *this;
}

LyString& LyString::operator=(LyString&& str) noexcept
{
    LyStringBuffer* pSource = str.Block();
    LyStringBuffer* pOld = Block();
    bool bMayTake = pSource->nLength > 0 && pSource->manager == pOld->manager &&
                    pSource->GetReferences() != LyStringBuffer::LOCKED &&
                    pOld->GetReferences() != LyStringBuffer::LOCKED;
    if (!bMayTake || m_pText == str.m_pText)
        return *this = static_cast<const LyString&>(str);
    m_pText = str.m_pText;
    str.m_pText = pOld->manager->GetEmptyLyStringData();
    ReleaseBlock(pOld);
    return *this;
}

LyString& LyString::operator=(const wchar_t* p)
{
    if (p != m_pText)
        Assign(p, -1);
    return *this;
}

// The text may be part of this string: in place it is moved, otherwise the old block goes last.
void LyString::Assign(const wchar_t* p, int nLength)
{
    if (p == nullptr)
        nLength = 0;
    else if (nLength < 0)
        nLength = LyStringDetails::Measure(p);
    if (nLength == 0)
        return Empty();
    LyStringBuffer* pOld = Block();
    int nReferences = pOld->GetReferences();
    if (nReferences < 2 && pOld->nAllocated > nLength)
    {
        std::wmemmove(m_pText, p, static_cast<size_t>(nLength));
        m_pText[nLength] = 0;
        pOld->nLength = nLength;
        return;
    }
    wchar_t* pNew = pOld->manager->NewLyStringBuffer(p, nLength, -1, false, true, true);
    LyStringBuffer* pNewBlock = LyStringBuffer::FromCharacters(pNew);
    if (IsEmptyBlock(pNewBlock))
        return;
    if (nReferences == LyStringBuffer::LOCKED)
        pNewBlock->nReferences = LyStringBuffer::LOCKED;
    m_pText = pNew;
    ReleaseBlock(pOld);
}

void LyString::Empty()
{
    LyStringBuffer* pBlock = Block();
    if (pBlock->GetReferences() < 2)
    {
        if (pBlock->nLength > 0)
        {
            *m_pText = 0;
            pBlock->nLength = 0;
        }
        return;
    }
    m_pText = pBlock->manager->GetEmptyLyStringData();
    ReleaseBlock(pBlock);
}

bool LyString::operator==(const LyString& str) const
{
    if (m_pText == str.m_pText)
        return true;
    int nLength = GetLength();
    return nLength == str.GetLength() && std::wmemcmp(m_pText, str.m_pText, static_cast<size_t>(nLength)) == 0;
}

bool LyString::operator==(const wchar_t* p) const { return p ? std::wcscmp(m_pText, p) == 0 : IsEmpty(); }

// ---- Writable access

wchar_t* LyString::GetBuffer(int nMinChars, bool bExactSize, bool bKeepContents)
{
    LyStringBuffer* pOld = Block();
    int nReferences = pOld->GetReferences();
    const wchar_t* pKept = bKeepContents ? m_pText : nullptr;
    wchar_t* pNew;
    if (nReferences < 2)
    {
        if (nMinChars < 0 || pOld->nAllocated > nMinChars)
        {
            pOld->nReferences = LyStringBuffer::LOCKED;
            return m_pText;
        }
        // The length of a locked block is older than its text, and may lie behind the text's end.
        bool bTrustLength = nReferences != LyStringBuffer::LOCKED;
        int nSize = bExactSize ? nMinChars : RoundUpCapacity(nMinChars);
        pNew = pOld->manager->NewLyStringBuffer(pKept, pOld->nLength, nSize, false, bTrustLength, true);
    }
    else
    {
        int nSize = nMinChars < 0 ? pOld->nLength : nMinChars;
        pNew = pOld->manager->NewLyStringBuffer(pKept, pOld->nLength, nSize, true, true, true);
    }
    LyStringBuffer* pNewBlock = LyStringBuffer::FromCharacters(pNew);
    if (IsEmptyBlock(pNewBlock))
        return nullptr;
    pNewBlock->nReferences = LyStringBuffer::LOCKED;
    m_pText = pNew;
    ReleaseBlock(pOld);
    return m_pText;
}

void LyString::ReleaseBuffer(int nLength)
{
    LyStringBuffer* pBlock = Block();
    int nReferences = pBlock->GetReferences();
    if (nReferences >= 2)
        return; // no writable pointer was handed out
    if (nLength < 0)
    {
        const wchar_t* pZero = std::wmemchr(m_pText, 0, static_cast<size_t>(pBlock->nAllocated));
        nLength = pZero ? static_cast<int>(pZero - m_pText) : pBlock->nAllocated;
    }
    if (nLength >= pBlock->nAllocated)
        nLength = pBlock->nAllocated - 1;
    m_pText[nLength] = 0;
    pBlock->nLength = nLength;
    if (nReferences == LyStringBuffer::LOCKED)
        pBlock->nReferences = 1;
}

// ---- Joining

// Part of what is appended. A part of this string itself is remembered by its offset, because the block may change.
struct LyString::PART
{
    const wchar_t* p;
    int nLength;
    int nOffset = -1;
};

void LyString::AppendParts(PART* pParts, int nParts, int nGrowBlock)
{
    const LyStringBuffer* pOld = Block();
    auto nOldText = reinterpret_cast<uintptr_t>(m_pText);
    long long nTotal = pOld->nLength;
    for (int i = 0; i < nParts; ++i)
    {
        if (pParts[i].p && pParts[i].nLength == -1)
            pParts[i].nLength = LyStringDetails::Measure(pParts[i].p);
        if (pParts[i].p == nullptr || pParts[i].nLength < 0)
            pParts[i].nLength = 0;
        nTotal += pParts[i].nLength;
        auto nBytes = reinterpret_cast<uintptr_t>(pParts[i].p) - nOldText;
        if (nBytes < static_cast<size_t>(pOld->nAllocated) * sizeof(wchar_t))
            pParts[i].nOffset = static_cast<int>(nBytes / sizeof(wchar_t));
    }
    if (nTotal == pOld->nLength || nTotal > LyStringBuffer::MAX_CHARACTERS)
        return;
    bool bExactSize = nGrowBlock > 0 && nTotal >= pOld->nAllocated;
    long long nSize = bExactSize ? ((nTotal + 1) / nGrowBlock + 1) * nGrowBlock : nTotal;
    if (nSize > LyStringBuffer::MAX_CHARACTERS)
        nSize = nTotal;
    if (GetBuffer(static_cast<int>(nSize), bExactSize, true) == nullptr)
        return;

    int nKept = GetLength();
    int nEnd = nKept;
    for (int i = 0; i < nParts; ++i)
    {
        const wchar_t* p = pParts[i].p;
        int nLength = pParts[i].nLength;
        if (pParts[i].nOffset >= 0)
        {
            p = m_pText + pParts[i].nOffset;
            nLength = nLength < nKept - pParts[i].nOffset ? nLength : nKept - pParts[i].nOffset;
        }
        if (nLength < 1)
            continue;
        std::wmemcpy(m_pText + nEnd, p, static_cast<size_t>(nLength));
        nEnd += nLength;
    }
    ReleaseBuffer(nEnd);
}

void LyString::Append(const wchar_t* p, int nLength, int nGrowBlock)
{
    if (p && nLength > 0 && HasRoomFor(nLength))
    {
        LyStringBuffer* pBlock = Block();
        std::wmemmove(m_pText + pBlock->nLength, p, static_cast<size_t>(nLength));
        pBlock->nLength += nLength;
        m_pText[pBlock->nLength] = 0;
        return;
    }
    PART part{p, nLength};
    AppendParts(&part, 1, nGrowBlock);
}

void LyString::Append4(const wchar_t* p1, int nLength1, const wchar_t* p2, int nLength2, const wchar_t* p3,
                       int nLength3, const wchar_t* p4, int nLength4, int nGrowBlock)
{
    PART parts[] = {{p1, nLength1}, {p2, nLength2}, {p3, nLength3}, {p4, nLength4}};
    AppendParts(parts, 4, nGrowBlock);
}

void LyString::Append(const LyString& str)
{
    if (IsEmpty())
        *this = str;
    else
        Append(str.m_pText, str.GetLength(), -1);
}

LyString& LyString::operator+=(const LyString& str)
{
    Append(str);
    return *this;
}

LyString& LyString::operator+=(const wchar_t* p)
{
    if (p)
        Append(p, LyStringDetails::Measure(p), -1);
    return *this;
}

void LyString::AppendLeft(wchar_t c, int nCount)
{
    if (nCount < 1 || nCount > LyStringBuffer::MAX_CHARACTERS - GetLength())
        return;
    if (GetBuffer(GetLength() + nCount, false, true) == nullptr)
        return;
    int nLength = GetLength();
    std::wmemmove(m_pText + nCount, m_pText, static_cast<size_t>(nLength));
    std::wmemset(m_pText, c, static_cast<size_t>(nCount));
    ReleaseBuffer(nLength + nCount);
}

namespace
{
// One allocation of exactly the sum: a string that is not yet its own gets no room to grow.
LyString Join(const wchar_t* p1, int nLength1, const wchar_t* p2, int nLength2)
{
    LyString str;
    str.Append4(p1, nLength1, p2, nLength2, nullptr, 0, nullptr, 0, -1);
    return str;
}
} // namespace

LyString operator+(const LyString& a, const LyString& b)
{
    if (b.IsEmpty())
        return a;
    return a.IsEmpty() ? b : Join(a, a.GetLength(), b, b.GetLength());
}

LyString operator+(const LyString& a, const wchar_t* b) { return b && *b ? Join(a, a.GetLength(), b, -1) : a; }

LyString operator+(const wchar_t* a, const LyString& b) { return a && *a ? Join(a, -1, b, b.GetLength()) : b; }

LyString LyJoin(const LyString& a, wchar_t b) { return Join(a, a.GetLength(), &b, 1); }

LyString LyJoin(wchar_t a, const LyString& b) { return Join(&a, 1, b, b.GetLength()); }

void OutputDebugString(const wchar_t*) {}

void NotImplemented(const LyString&) {}
