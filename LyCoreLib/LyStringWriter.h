// Writes text of unknown length into a string: the room grows geometrically, and the string is released once.
//
// Errors:  if there is no memory for more, the text ends where the room ended; what follows is dropped.
// Threads: one at a time. Between construction and Finish the string is locked and belongs to the writer.

#pragma once

#include "LyString.h"
#include <cwchar>

class LyStringWriter
{
public:
    // What the string held is dropped. Nothing put later may lie in it.
    LyStringWriter(LyString& strTarget, int nRoom) : m_strTarget(strTarget)
    {
        if (!Grow(nRoom, false))
            m_strTarget.Empty();
    }
    ~LyStringWriter() { Finish(); }
    LyStringWriter(const LyStringWriter&) = delete;
    LyStringWriter& operator=(const LyStringWriter&) = delete;

    // Room for nChars more, to be written at GetEnd() and then counted by Advance.
    bool Reserve(int nChars) { return nChars <= m_nRoom - m_nLength || GrowFor(nChars); }
    wchar_t* GetEnd() { return m_pText ? m_pText + m_nLength : nullptr; }
    void Advance(int nChars) { m_nLength += nChars; }

    void Put(wchar_t c)
    {
        if (Reserve(1))
            m_pText[m_nLength++] = c;
    }
    void Put(const wchar_t* p, int nChars)
    {
        if (nChars < 1 || !Reserve(nChars))
            return;
        std::wmemcpy(GetEnd(), p, static_cast<size_t>(nChars));
        m_nLength += nChars;
    }

    // Gives the string back; nothing may be put any more.
    void Finish()
    {
        if (m_pText)
            m_strTarget.ReleaseBuffer(m_nLength);
        m_pText = nullptr;
        m_nRoom = m_nLength;
        m_bFull = true;
    }

private:
    bool GrowFor(int nChars)
    {
        long long nNeeded = static_cast<long long>(m_nLength) + nChars;
        if (m_bFull || nNeeded > LyStringBuffer::MAX_CHARACTERS)
        {
            m_bFull = true;
            m_nRoom = m_nLength; // later, shorter pieces must not follow a gap
            return false;
        }
        long long nWanted = nNeeded + nNeeded / 2;
        if (nWanted > LyStringBuffer::MAX_CHARACTERS)
            nWanted = nNeeded;
        m_strTarget.ReleaseBuffer(m_nLength);
        return Grow(static_cast<int>(nWanted), true);
    }

    bool Grow(int nRoom, bool bKeepContents)
    {
        m_pText = m_strTarget.GetBuffer(nRoom, true, bKeepContents);
        m_bFull = m_pText == nullptr;
        m_nRoom = m_bFull ? m_nLength : nRoom;
        return !m_bFull;
    }

    LyString& m_strTarget;
    wchar_t* m_pText = nullptr;
    int m_nLength = 0;
    int m_nRoom = 0;
    bool m_bFull = false;
};
