// Text of every encoding from hostile bytes, and back to UTF-8.
//
// Input: a byte of flags, the bytes of the text.

#include "FuzzCheck.h"
#include "LyBuffer.h"
#include "LyStringFormat.h"
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>

namespace
{
// What is written reads back, unless it holds a zero or a character that takes more than 16 bits.
void CheckUTF8(const LyString& str)
{
    std::unique_ptr<char[]> text(LyCharacterHelper::GetUTF8FromUTFN(str, str.GetLength()));
    const int nBytes = LyCharacterHelper::GetUTF8Bytes(str, false, str.GetLength());
    Check(text && nBytes >= str.GetLength() && nBytes <= 3 * str.GetLength() && text[static_cast<size_t>(nBytes)] == 0);
    for (int i = 0; i < str.GetLength(); ++i)
    {
        if (str[i] <= 0 || str[i] > 0xFFFF)
            return;
    }
    LyString strBack;
    strBack.FromUTF8(reinterpret_cast<const unsigned char*>(text.get()));
    Check(strBack == str);
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nBytes)
{
    if (nBytes < 1)
        return 0;
    const bool bRemoveNulls = (pData[0] & 1) != 0;
    const uint8_t* pText = pData + 1;
    const size_t nText = nBytes - 1;
    LyBuffer buffer;
    buffer.FromBuffer(pText, static_cast<int>(nText));
    for (int nEncoding = 0; nEncoding <= LYSTRING_ENCODING_UTF32 + 1; ++nEncoding)
    {
        LyString str;
        str.FromBuffer(buffer, static_cast<LYSTRING_ENCODING>(nEncoding), bRemoveNulls);
        Check(str.GetLength() <= static_cast<int>(nText));
        Check(buffer.GetSize() == static_cast<int>(nText));
        Check(nText == 0 || std::memcmp(buffer.GetData(), pText, nText) == 0);
        CheckUTF8(str);
    }
    const int nChars = LyCharacterHelper::GetUTF8Characters(pText, static_cast<int>(nText));
    Check(nChars <= static_cast<int>(nText) && nChars * 3 >= static_cast<int>(nText));
    return 0;
}
