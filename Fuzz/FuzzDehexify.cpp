// The rewriters of text: escapes of URLs, markup, counters, replacing, base64 and hexadecimal digits.
//
// Input: a byte of flags, the escape character, the text; one byte for each character.

#include "FuzzCheck.h"
#include "LyBuffer.h"
#include "LyStringFormat.h"
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace
{
void CheckMarkup(LyString str, int nFlags)
{
    const int nOld = str.GetLength();
    str.Htmlify(nFlags);
    Check(str.GetLength() >= nOld && str.Find(L'<') < 0 && str.Find(L'>') < 0);
    Check((nFlags & LYSTRING_HTMLIFY_QUOTES) == 0 || str.Find(L'"') < 0);
}

void CheckReplace(LyString str)
{
    const LyString strOld(str);
    const int nHits = str.Replace(L"%", L"%25");
    Check(str.GetLength() == strOld.GetLength() + 2 * nHits);
    const wchar_t* pFrom[] = {L"%25", L"a", L"%2"};
    const wchar_t* pTo[] = {L"%", L"a", nullptr};
    Check(str.Replace(pFrom, pTo, 2, true, 0x7fffffff, false, nullptr, nullptr) >= nHits);
    Check(str == strOld);
    str.Replace(pFrom, pTo, 3, false, 5, true, L"<", L">");
    Check(str.GetLength() >= strOld.GetLength());
}

void CheckBinary(const LyString& str, const uint8_t* pData, size_t nBytes)
{
    LyBuffer buffer;
    bool bAny = str.ToBinary(buffer);
    Check(bAny == (buffer.GetSize() > 0));
    bAny = str.HexDigitsToBinary(buffer);
    Check(bAny == (buffer.GetSize() > 0));
    LyString strBinary;
    strBinary.FromBinary(pData, static_cast<int>(nBytes));
    strBinary.ToBinary(buffer);
    Check(buffer.GetSize() == static_cast<int>(nBytes));
    Check(std::memcmp(buffer.GetData(), pData, nBytes) == 0);
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nBytes)
{
    if (nBytes < 2)
        return 0;
    const bool bKeep = (pData[0] & 1) != 0;
    const bool bPlusIsSpace = (pData[0] & 2) != 0;
    const auto cEscape = static_cast<wchar_t>(pData[1]);
    LyString strText;
    strText.FromANSI(reinterpret_cast<const char*>(pData + 2), static_cast<int>(nBytes - 2), false);

    LyString str(strText);
    str.Dehexify(cEscape, bKeep, bPlusIsSpace);
    Check(str.GetLength() <= strText.GetLength());
    if (strText.Find(cEscape) < 0 && !bPlusIsSpace)
        Check(str == strText);

    str = strText;
    str.IncrementString(bKeep);
    Check(str.EndsWith(L')', false));
    CheckMarkup(strText, pData[0]);
    CheckReplace(strText);
    CheckBinary(strText, pData, nBytes);
    return 0;
}
