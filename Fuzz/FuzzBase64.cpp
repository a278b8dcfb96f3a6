// Base64 both ways: any bytes as text and back, in lines that are alike whichever way they are made, and any text read
// as if it were base64.

#include "FuzzCheck.h"
#include "LyBuffer.h"
#include "LyString.h"
#include "LyStringBase64Details.h"
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>

using namespace LyStringBase64Details;

static void CheckBytes(const uint8_t* pData, int nBytes)
{
    LyString str;
    str.FromBinary(pData, nBytes);
    const int nChars = (nBytes + 2) / 3 * 4;
    Check(str.GetLength() == nChars + (nChars > 0 ? (nChars - 1) / LINE_CHARS : 0));
    for (int i = 0; i < str.GetLength(); ++i)
        Check((str[i] == L'\n') == (i % (LINE_CHARS + 1) == LINE_CHARS));
    LyBuffer buffer;
    Check(str.ToBinary(buffer) == (nBytes > 0));
    Check(buffer.GetSize() == nBytes && std::equal(pData, pData + nBytes, buffer.GetData()));
}

static void CheckLines(const uint8_t* pData, int nBytes)
{
    const ENCODE_LINE pVectorEncodeLine = GetVectorEncodeLine();
    for (; pVectorEncodeLine != nullptr && nBytes >= LINE_BYTES; pData += LINE_BYTES, nBytes -= LINE_BYTES)
    {
        wchar_t aryPlain[LINE_CHARS];
        wchar_t aryVector[LINE_CHARS];
        EncodeLine(aryPlain, pData);
        pVectorEncodeLine(aryVector, pData);
        Check(std::equal(aryPlain, std::end(aryPlain), aryVector));
    }
}

static void CheckText(const uint8_t* pData, int nBytes)
{
    LyString str;
    str.FromANSI(reinterpret_cast<const char*>(pData), nBytes, false);
    LyBuffer buffer;
    Check(str.ToBinary(buffer) == (buffer.GetSize() > 0));
    Check(buffer.GetSize() <= (str.GetLength() + 3) / 4 * 3);
    // Without its line ends it reads the same.
    LyBuffer again;
    (void)str.Remove(L'\r');
    (void)str.Remove(L'\n');
    Check(str.ToBinary(again) == (buffer.GetSize() > 0) && again.GetSize() == buffer.GetSize());
    Check(std::equal(again.GetData(), again.GetData() + again.GetSize(), buffer.GetData()));
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nBytes)
{
    CheckBytes(pData, static_cast<int>(nBytes));
    CheckLines(pData, static_cast<int>(nBytes));
    CheckText(pData, static_cast<int>(nBytes));
    return 0;
}
