// Any bytes as a CUE sheet: decoded, read, laid out, and asked for sectors.

#include "CueDisc.h"
#include "FuzzDiscImage.h"
#include "TextDecode.h"
#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nBytes)
{
    std::string strText = DecodeText({reinterpret_cast<const char*>(pData), nBytes});
    Check(IsValidUTF8(strText));
    CUE_SHEET sheet;
    SHEET_ERROR error;
    if (!ParseCueSheet(strText, sheet, error))
    {
        Check(!error.m_strText.empty() && error.m_nLine >= 0);
        return 0;
    }
    FuzzOpener opener;
    std::unique_ptr<DiscImage> pImage = BuildCueDisc(sheet, "fuzz.cue", opener, error);
    Check(pImage != nullptr || !error.m_strText.empty());
    if (pImage)
        CheckDisc(*pImage);
    return 0;
}
