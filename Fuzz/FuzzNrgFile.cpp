// Any bytes as the chunks of an NRG file of some length: read, laid out, and asked for sectors.

#include "FuzzDiscImage.h"
#include "NrgDisc.h"
#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nBytes)
{
    static constexpr long long s_aryBytes[] = {100001, 2352LL * 75 * 60, 2352LL * 75 * 60 * 79, 1LL << 62};
    const long long nFileBytes = s_aryBytes[nBytes > 0 ? pData[nBytes - 1] % std::size(s_aryBytes) : 0];
    NRG_SHEET sheet;
    SHEET_ERROR error;
    if (!ParseNrgChunks({pData, pData + nBytes}, nFileBytes, sheet, error))
    {
        Check(!error.m_strText.empty());
        return 0;
    }
    std::unique_ptr<DiscImage> pImage =
        BuildNrgDisc(sheet, "fuzz.nrg", std::make_unique<FuzzSource>(nFileBytes), error);
    Check(pImage != nullptr || !error.m_strText.empty());
    if (pImage)
        CheckDisc(*pImage);
    return 0;
}
