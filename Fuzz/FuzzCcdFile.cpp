// Any bytes as a CCD file: decoded, read, laid out, and asked for sectors.

#include "CcdDisc.h"
#include "FuzzDiscImage.h"
#include "TextDecode.h"
#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nBytes)
{
    // The first letter of the name chooses the length of the image.
    const std::string strName = nBytes > 0 ? std::string(1, static_cast<char>('a' + pData[0] % 6)) + ".ccd" : "a.ccd";
    std::string strText = DecodeText({reinterpret_cast<const char*>(pData), nBytes});
    (void)LooksLikeCcdFile(strText);
    CCD_SHEET sheet;
    SHEET_ERROR error;
    if (!ParseCcdFile(strText, sheet, error))
    {
        Check(!error.m_strText.empty() && error.m_nLine >= 0);
        return 0;
    }
    FuzzOpener opener;
    std::unique_ptr<DiscImage> pImage = BuildCcdDisc(sheet, strName, opener, error);
    Check(pImage != nullptr || !error.m_strText.empty());
    if (pImage)
        CheckDisc(*pImage);
    return 0;
}
