// Serialised fields from hostile text, and a round trip.
//
// Input: the position as two bytes, the text; one byte for each character.

#include "FuzzCheck.h"
#include "LyString.h"
#include <cstddef>
#include <cstdint>

namespace
{
void CheckReading(const LyString& str, int nPosition)
{
    LyString strOut;
    for (;;)
    {
        const int nOld = nPosition;
        const bool bLoaded = str.LoadStringFast(nPosition, strOut, L"default");
        Check(nPosition >= nOld && (nPosition == nOld || nPosition <= str.GetLength()));
        if (!bLoaded)
        {
            Check(strOut == L"default");
            return;
        }
        Check(nPosition >= nOld + strOut.GetLength() + 4);
    }
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nBytes)
{
    if (nBytes < 2)
        return 0;
    LyString str;
    str.FromANSI(reinterpret_cast<const char*>(pData + 2), static_cast<int>(nBytes - 2), false);
    CheckReading(str, 0);
    int nPosition = pData[0] | pData[1] << 8;
    CheckReading(str, nPosition - 0x4000);
    (void)str.LoadIntFast(nPosition, -1);

    LyString strFields;
    strFields.SaveString(str);
    strFields.SaveInt(nPosition);
    strFields.SaveString(strFields);
    const LyString strText(static_cast<const wchar_t*>(str)); // up to its first zero
    LyString strOut;
    int nField = 0;
    Check(strFields.LoadStringFast(nField, strOut, nullptr) && strOut == strText);
    Check(strFields.LoadIntFast(nField, nPosition + 1) == nPosition);
    const int nEnd = nField;
    Check(strFields.LoadStringFast(nField, strOut, nullptr) && strOut == strFields.Left(nEnd));
    Check(nField == strFields.GetLength());
    return 0;
}
