// Serialised fields: "(" count ":" characters ")", one after the other. The count makes every character allowed in the
// text, brackets included. Saving the text ab and then the number -12 gives "(2:ab)(3:-12)".

#include "LyStringDetails.h"
#include "LyStringFormat.h"

namespace
{
// A string that takes many fields grows by whole steps of so many characters.
constexpr int GROW_CHARS = 1024;
constexpr int MAX_HEAD_CHARS = 16; // "(2147483647:", and what the number writer keeps free
} // namespace

void LyString::SaveString(const wchar_t* p)
{
    int nLength = LyStringDetails::Measure(p);
    wchar_t head[MAX_HEAD_CHARS];
    int nHead = 0;
    head[nHead++] = L'(';
    FromUIntStatic(head, MAX_HEAD_CHARS, nHead, static_cast<unsigned int>(nLength), 0, 10, 0);
    head[nHead++] = L':';
    Append4(head, nHead, p, nLength, L")", 1, nullptr, 0, GROW_CHARS);
}

void LyString::SaveInt(int nValue)
{
    LyString strValue;
    SaveString(strValue.FromInt(nValue));
}

bool LyString::LoadStringFast(int& nPosition, LyString& strOut, const wchar_t* pDefault) const
{
    const int nLength = GetLength();
    if (&strOut == this || nPosition < 0 || nPosition >= nLength || m_pText[nPosition] != L'(')
    {
        strOut = pDefault;
        return false;
    }
    const wchar_t* const pText = m_pText;
    ++nPosition;
    if (pText[nPosition] == L':') // no count at all
    {
        ++nPosition;
        strOut = pDefault;
        return false;
    }
    // Deliberate: the position stays where the reading failed, so that a caller can see how far the field was good.
    long long nCount = 0;
    for (; pText[nPosition] != L':'; ++nPosition)
    {
        wchar_t c = pText[nPosition];
        if (c < L'0' || c > L'9')
        {
            strOut = pDefault;
            return false;
        }
        if (nCount < nLength) // larger ones are wrong already, and stay so
            nCount = nCount * 10 + (c - L'0');
    }
    ++nPosition;
    if (nCount >= nLength - nPosition || pText[nPosition + nCount] != L')')
    {
        strOut = pDefault;
        return false;
    }
    int nTextStart = nPosition;
    nPosition += static_cast<int>(nCount) + 1;
    strOut.FromStringInMemoryFast(pText + nTextStart, static_cast<int>(nCount));
    return true;
}

int LyString::LoadIntFast(int& nPosition, int nDefault) const
{
    LyString strValue;
    (void)LoadStringFast(nPosition, strValue, nullptr); // a field that cannot be read is as empty as one without text
    return strValue.IsEmpty() ? nDefault : strValue.GetInt();
}
