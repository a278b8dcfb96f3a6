#include "LyFilename.h"
#include "LyStringFormat.h"
#include "LyStringWriter.h"
#include <iterator>
#include <utility>

namespace
{
constexpr wchar_t FIRST_PRINTABLE = 32;
constexpr wchar_t ALWAYS_AS_NUMBER = 1;
constexpr int LONGEST_ESCAPE = 6; // "&quot;"

bool IsEscapedControl(wchar_t c, int nFlags)
{
    return c >= 0 && c < FIRST_PRINTABLE && c != L'\t' && c != L'\n' && c != L'\r' &&
           (nFlags & LYSTRING_HTMLIFY_CONTROLS);
}

bool IsEscaped(wchar_t c, int nFlags)
{
    switch (c)
    {
    case L'<':
    case L'>':
    case L'&':
        return true;
    case L'"':
        return (nFlags & LYSTRING_HTMLIFY_QUOTES) != 0;
    case L'\'':
        return (nFlags & LYSTRING_HTMLIFY_APOSTROPHES) != 0;
    default:
        return IsEscapedControl(c, nFlags);
    }
}

// Deliberate: character 1 keeps its number even where the others become question marks; texts use it as a mark.
void PutControl(LyStringWriter& writer, wchar_t c, int nFlags)
{
    if ((nFlags & LYSTRING_HTMLIFY_CONTROLS_TO_QUESTION_MARK) && c != ALWAYS_AS_NUMBER)
        return writer.Put(L'?');
    wchar_t digits[8]; // the least that the number writer takes
    int nDigits = 0;
    LyString::FromUIntStatic(digits, static_cast<int>(std::size(digits)), nDigits, static_cast<unsigned int>(c), 0, 16,
                             LYSTRING_NUMBER_LOWER_CASE);
    writer.Put(L"&#x", 3);
    writer.Put(digits, nDigits);
    writer.Put(L';');
}

void PutEscaped(LyStringWriter& writer, wchar_t c, int nFlags)
{
    switch (c)
    {
    case L'<':
        return writer.Put(L"&lt;", 4);
    case L'>':
        return writer.Put(L"&gt;", 4);
    case L'&':
        return writer.Put(L"&amp;", 5);
    case L'"':
        return writer.Put(L"&quot;", 6);
    case L'\'':
        return writer.Put(L"&apos;", 6);
    default:
        return PutControl(writer, c, nFlags);
    }
}
} // namespace

// ---- Markup

LyString& LyString::Htmlify(int nFlags)
{
    const int nLength = GetLength();
    int nClean = 0;
    while (nClean < nLength && !IsEscaped(m_pText[nClean], nFlags))
        ++nClean;
    if (nClean == nLength)
        return *this;

    long long nRoom = static_cast<long long>(nLength) + nLength / 10 + LONGEST_ESCAPE; // most texts need few
    if (nRoom > LyStringBuffer::MAX_CHARACTERS)
        nRoom = LyStringBuffer::MAX_CHARACTERS;
    LyString strResult;
    LyStringWriter writer(strResult, static_cast<int>(nRoom));
    for (int i = 0; i < nLength;)
    {
        writer.Put(m_pText + i, nClean - i);
        if (nClean < nLength)
            PutEscaped(writer, m_pText[nClean], nFlags);
        i = ++nClean;
        while (nClean < nLength && !IsEscaped(m_pText[nClean], nFlags))
            ++nClean;
    }
    writer.Finish();
    return *this = std::move(strResult);
}

// ---- Escapes of URLs

namespace
{
// The value of the escape at p, of which nLeft characters are there; -1 if there is none.
int GetEscapedValue(const wchar_t* p, int nLeft, wchar_t cEscape)
{
    if (nLeft < 3 || p[0] != cEscape)
        return -1;
    int nHigh = LyCharacterHelper::GetHexDigit(p[1]);
    int nLow = LyCharacterHelper::GetHexDigit(p[2]);
    return nHigh < 0 || nLow < 0 ? -1 : nHigh << 4 | nLow;
}

// Works in place, since the text never becomes longer.
class Dehexifier
{
public:
    Dehexifier(wchar_t* pText, int nLength) : m_pText(pText), m_nLength(nLength) {}

    // The new length. bTopBit becomes true if a value of 128 or more was decoded.
    int Run(wchar_t cEscape, bool bKeepEscapedEscape, bool bPlusIsSpace, bool& bTopBit)
    {
        while (m_nRead < m_nLength)
        {
            int nValue = GetEscapedValue(m_pText + m_nRead, m_nLength - m_nRead, cEscape);
            if (nValue < 0)
            {
                wchar_t c = m_pText[m_nRead++];
                m_pText[m_nWritten++] = bPlusIsSpace && c == L'+' ? L' ' : c;
                continue;
            }
            m_nRead += 3;
            m_pText[m_nWritten++] = nValue;
            bTopBit |= nValue >= 0x80;
            if (bKeepEscapedEscape && nValue == cEscape)
                CopyDigits();
        }
        return m_nWritten;
    }

private:
    // What follows a decoded escape character is an escape of the text itself, and stays one.
    void CopyDigits()
    {
        constexpr int nMaxDigits = 3;
        for (int i = 0; i < nMaxDigits && m_nRead < m_nLength; ++i)
        {
            if (LyCharacterHelper::GetHexDigit(m_pText[m_nRead]) < 0)
                return;
            m_pText[m_nWritten++] = m_pText[m_nRead++];
        }
    }

    wchar_t* m_pText;
    int m_nLength;
    int m_nRead = 0;
    int m_nWritten = 0;
};

bool HasEscapes(const wchar_t* p, int nLength, wchar_t cEscape, bool bPlusIsSpace)
{
    for (int i = 0; i < nLength; ++i)
    {
        if ((bPlusIsSpace && p[i] == L'+') || GetEscapedValue(p + i, nLength - i, cEscape) >= 0)
            return true;
    }
    return false;
}
} // namespace

LyString& LyString::Dehexify(wchar_t cEscape, bool bKeepEscapedEscape, bool bPlusIsSpace)
{
    if (!HasEscapes(m_pText, GetLength(), cEscape, bPlusIsSpace))
        return *this;
    int nLength = GetLength();
    wchar_t* p = GetBuffer(-1, false, true);
    if (p == nullptr)
        return *this;
    bool bTopBit = false;
    ReleaseBuffer(Dehexifier(p, nLength).Run(cEscape, bKeepEscapedEscape, bPlusIsSpace, bTopBit));
    if (bTopBit)
        FromUTF8(*this);
    return *this;
}

// ---- Counters: a base text, optionally a blank, "(", a number, ")"

namespace
{
constexpr int MAX_COUNTER_DIGITS = 4;

// Where the "(" of the counter stands, -1 without one. A number of more digits, or with a leading zero, was not made by
// counting: it is a part of the text.
int FindCounter(const LyString& str)
{
    int nClose = str.GetLength() - 1;
    int nOpen = str.ReverseFind(L'(');
    if (nOpen < 0 || str[nClose] != L')')
        return -1;
    int nDigits = nClose - nOpen - 1;
    if (nDigits < 1 || nDigits > MAX_COUNTER_DIGITS || str[nOpen + 1] == L'0')
        return -1;
    for (int i = nOpen + 1; i < nClose; ++i)
    {
        if (str[i] < L'0' || str[i] > L'9')
            return -1;
    }
    return nOpen;
}
} // namespace

LyString& LyString::IncrementString(bool bRestartAboveOne)
{
    int nNumber = 0;
    LyString strBase = *this;
    const wchar_t* pBlank = L" ";
    int nOpen = FindCounter(*this);
    if (nOpen >= 0)
    {
        nNumber = Mid(nOpen + 1).GetInt();
        bool bBlank = nOpen > 0 && m_pText[nOpen - 1] == L' ';
        strBase = Left(bBlank ? nOpen - 1 : nOpen);
        pBlank = bBlank ? L" " : L"";
    }
    nNumber = bRestartAboveOne && nNumber >= 2 ? 1 : nNumber + 1;
    return *this = strBase + LyFormatString(L"%s(%d)", pBlank, nNumber);
}

// ---- Names of files

LyString& LyString::FixDirectoryPath(wchar_t cSlash)
{
    LyFilename::FixDirectoryPath(*this, cSlash);
    return *this;
}

LyString& LyString::AddDirectory(const LyString& strDirectory)
{
    LyFilename::AddDirectory(*this, strDirectory);
    return *this;
}

LyString& LyString::IncrementFilename(bool bRestartAboveOne)
{
    LyFilename::IncrementFilename(*this, bRestartAboveOne);
    return *this;
}
