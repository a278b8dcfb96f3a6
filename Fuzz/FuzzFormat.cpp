// Format directives with arguments of all types, right and wrong ones.
//
// Input: a byte of flags, the format text; one byte for each character.

#include "FuzzCheck.h"
#include "LyStringFormat.h"
#include <cstddef>
#include <cstdint>
#include <limits>

namespace
{
constexpr size_t MAX_FORMAT_BYTES = 256; // each directive may write some thousand characters
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nBytes)
{
    if (nBytes < 1 || nBytes > MAX_FORMAT_BYTES)
        return 0;
    LyString strFormat;
    for (size_t i = 1; i < nBytes && pData[i] != 0; ++i)
        strFormat += static_cast<wchar_t>(pData[i]);

    const LyString strText(L"a string");
    LyString::CFormatArgument arguments[] = {LyString::CFormatArgument(L"text"),
                                             LyString::CFormatArgument(strText),
                                             LyString::CFormatArgument(-1),
                                             LyString::CFormatArgument(-1.0e300),
                                             LyString::CFormatArgument(std::numeric_limits<double>::quiet_NaN()),
                                             LyString::CFormatArgument(static_cast<const wchar_t*>(nullptr)),
                                             LyString::CFormatArgument(std::numeric_limits<long long>::min()),
                                             LyString::CFormatArgument()};
    constexpr int nArguments = static_cast<int>(sizeof arguments / sizeof arguments[0]);
    LyString::CFormatArgument* pArguments[nArguments];
    for (int i = 0; i < nArguments; ++i)
        pArguments[i] = &arguments[(i + pData[0]) % nArguments];

    LyString strResult;
    strResult.FormatV(strFormat, pArguments, nArguments);
    Check(static_cast<const wchar_t*>(strResult)[strResult.GetLength()] == 0);
    Check(strResult.GetLength() <= strFormat.GetLength() * (LyStringFormat::MAX_MIN_DIGITS + 3));
    if (strFormat.Find(L'%') < 0)
        Check(strResult == strFormat);

    // A string formatted from itself gives the same.
    LyString strSelf(strFormat);
    strSelf.FormatV(strSelf, pArguments, nArguments);
    Check(strSelf == strResult);
    return 0;
}
