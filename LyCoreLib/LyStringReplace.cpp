#include "IStringHelper.h"
#include "LyArray.h"
#include "LySharedToolsHelper.h"
#include "LyStringDetails.h"
#include "LyStringFormat.h"
#include <cwchar>
#include <utility>

namespace
{
constexpr int FEW_PATTERNS = 8; // need no memory of their own

using HitArray = LyArray<LyStringReplaceHit, const LyStringReplaceHit&, true>;

// One pattern, and where it is found next.
class Pattern
{
public:
    static constexpr int NOT_SEARCHED = -2;
    static constexpr int NOT_FOUND = -1;

    void Set(const wchar_t* p)
    {
        m_pText = p;
        m_nLength = LyStringDetails::Measure(p);
        m_nNext = NOT_SEARCHED;
    }
    int GetLength() const { return m_nLength; }

    // The first place at or behind nStart. What was found earlier and still lies ahead is not searched again.
    int Find(const LyString& str, int nStart, IStringHelper* pHelper)
    {
        if (m_nNext == NOT_FOUND || m_nNext >= nStart)
            return m_nNext;
        m_nNext = pHelper ? pHelper->FindNoCase(str, m_pText, nStart)
                          : LyStringDetails::FindText(str, str.GetLength(), m_pText, m_nLength, nStart, true);
        // A service may find a text of another length; what does not lie inside the string is no match.
        if (m_nNext < nStart || m_nNext > str.GetLength() - m_nLength)
            m_nNext = NOT_FOUND;
        return m_nNext;
    }

private:
    const wchar_t* m_pText = nullptr;
    int m_nLength = 0;
    int m_nNext = NOT_SEARCHED;
};

bool AreUsable(const wchar_t** ppFrom, int nPairs, int nMaxHits)
{
    if (ppFrom == nullptr || nPairs < 1 || nMaxHits < 1)
        return false;
    for (int i = 0; i < nPairs; ++i)
    {
        if (ppFrom[i] == nullptr || *ppFrom[i] == 0)
            return false;
    }
    return true;
}

bool FindHits(HitArray& aryHits, const LyString& str, Pattern* pPatterns, int nPatterns, IStringHelper* pHelper,
              int nMaxHits)
{
    for (int nStart = 0; aryHits.GetSize() < nMaxHits;)
    {
        LyStringReplaceHit hit = {-1, str.GetLength()};
        for (int i = 0; i < nPatterns; ++i)
        {
            int nFound = pPatterns[i].Find(str, nStart, pHelper);
            if (nFound >= 0 && nFound < hit.nPosition)
                hit = {i, nFound};
        }
        if (hit.nPattern < 0)
            break;
        if (aryHits.Add(hit) < 0)
            return false;
        nStart = hit.nPosition + pPatterns[hit.nPattern].GetLength();
    }
    return true;
}

struct TEXT
{
    const wchar_t* p = nullptr;
    int nLength = 0;

    TEXT() = default;
    explicit TEXT(const wchar_t* pText) : p(pText), nLength(LyStringDetails::Measure(pText)) {}
    TEXT(const wchar_t* pText, int nChars) : p(pText), nLength(nChars) {}
};

wchar_t* Put(wchar_t* pOut, const TEXT& text)
{
    if (text.nLength > 0)
        std::wmemcpy(pOut, text.p, static_cast<size_t>(text.nLength));
    return pOut + text.nLength;
}

// Puts the result together in one buffer of its exact length.
class Assembler
{
public:
    Assembler(const LyString& str, const HitArray& aryHits, const Pattern* pPatterns)
        : m_str(str), m_aryHits(aryHits), m_pPatterns(pPatterns)
    {
    }

    bool Assemble(const wchar_t** ppTo, bool bKeepMatch, const TEXT& prefix, const TEXT& suffix, LyString& strOut) const
    {
        long long nLength = m_str.GetLength();
        for (const LyStringReplaceHit& hit : m_aryHits)
        {
            nLength += prefix.nLength + suffix.nLength;
            if (!bKeepMatch)
                nLength += GetReplacement(ppTo, hit).nLength - GetMatch(hit).nLength;
        }
        if (nLength > LyStringBuffer::MAX_CHARACTERS)
            return false;
        if (nLength == 0)
            return true;
        wchar_t* pOut = strOut.GetBuffer(static_cast<int>(nLength), true, false);
        if (pOut == nullptr)
            return false;
        int nCopied = 0;
        for (const LyStringReplaceHit& hit : m_aryHits)
        {
            TEXT match = GetMatch(hit);
            pOut = Put(pOut, TEXT(static_cast<const wchar_t*>(m_str) + nCopied, hit.nPosition - nCopied));
            pOut = Put(pOut, prefix);
            pOut = Put(pOut, bKeepMatch ? match : GetReplacement(ppTo, hit));
            pOut = Put(pOut, suffix);
            nCopied = hit.nPosition + match.nLength;
        }
        Put(pOut, TEXT(static_cast<const wchar_t*>(m_str) + nCopied, m_str.GetLength() - nCopied));
        strOut.ReleaseBuffer(static_cast<int>(nLength));
        return true;
    }

private:
    TEXT GetPart(int nStart, int nEnd) const
    {
        return TEXT(static_cast<const wchar_t*>(m_str) + nStart, nEnd - nStart);
    }
    TEXT GetMatch(const LyStringReplaceHit& hit) const
    {
        return GetPart(hit.nPosition, hit.nPosition + m_pPatterns[hit.nPattern].GetLength());
    }
    static TEXT GetReplacement(const wchar_t** ppTo, const LyStringReplaceHit& hit)
    {
        return ppTo ? TEXT(ppTo[hit.nPattern]) : TEXT();
    }

    const LyString& m_str;
    const HitArray& m_aryHits;
    const Pattern* m_pPatterns;
};
} // namespace

int LyString::Replace(const wchar_t** ppFrom, const wchar_t** ppTo, int nPairs, bool bCaseSensitive, int nMaxHits,
                      bool bKeepMatch, const wchar_t* pPrefix, const wchar_t* pSuffix)
{
    if (!AreUsable(ppFrom, nPairs, nMaxHits))
        return 0;
    Pattern fewPatterns[FEW_PATTERNS];
    LyCoreArray<Pattern, const Pattern&, false> aryPatterns;
    Pattern* pPatterns = fewPatterns;
    if (nPairs > FEW_PATTERNS)
    {
        if (!aryPatterns.SetSize(nPairs, true))
            return 0;
        pPatterns = aryPatterns.GetData();
    }
    for (int i = 0; i < nPairs; ++i)
        pPatterns[i].Set(ppFrom[i]);

    // Deliberate: without the service the search is sensitive to case. Only the service knows case in all languages,
    // and a replacement that nobody asked for is worse than one that is missing.
    IStringHelper* pHelper = bCaseSensitive ? nullptr : GetStringHelper(true);
    HitArray aryHits;
    if (!FindHits(aryHits, *this, pPatterns, nPairs, pHelper, nMaxHits) || aryHits.GetSize() == 0)
        return 0;
    LyString strResult;
    if (!Assembler(*this, aryHits, pPatterns).Assemble(ppTo, bKeepMatch, TEXT(pPrefix), TEXT(pSuffix), strResult))
        return 0;
    *this = std::move(strResult);
    return aryHits.GetSize();
}

int LyString::Replace(const wchar_t* pFrom, const wchar_t* pTo)
{
    return Replace(&pFrom, &pTo, 1, true, 0x7fffffff, false, nullptr, nullptr);
}

int LyString::ReplaceNoCase(const wchar_t* pFrom, const wchar_t* pTo, int nMaxHits)
{
    return Replace(&pFrom, &pTo, 1, false, nMaxHits, false, nullptr, nullptr);
}

int LyString::Replace(wchar_t cFrom, wchar_t cTo)
{
    int nFirst = Find(cFrom, 0);
    if (nFirst < 0)
        return 0;
    wchar_t* p = GetBuffer(-1, false, true);
    if (p == nullptr)
        return 0;
    int nLength = GetLength();
    int nHits = 0;
    // Deliberate: a replacement by zero cuts the string, which ends at the first place; there is no second one.
    if (cTo == 0)
    {
        nLength = nFirst;
        nHits = 1;
    }
    for (int i = nFirst; i < nLength; ++i)
    {
        if (p[i] != cFrom)
            continue;
        p[i] = cTo;
        ++nHits;
    }
    ReleaseBuffer(nLength);
    return nHits;
}
