// Any bytes as a TOC file: decoded, read, laid out, and asked for sectors.

#include "FuzzDiscImage.h"
#include "TextDecode.h"
#include "TocDisc.h"
#include "TocLexer.h"
#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nBytes)
{
    std::string strText = DecodeText({reinterpret_cast<const char*>(pData), nBytes});
    (void)LooksLikeTocFile(strText, "fuzz.toc");
    TOC_SHEET sheet;
    SHEET_ERROR error;
    if (!ParseTocFile(strText, sheet, error))
    {
        Check(!error.m_strText.empty() && error.m_nLine >= 0);
        return 0;
    }
    FuzzOpener opener;
    std::unique_ptr<DiscImage> pImage = BuildTocDisc(sheet, "fuzz.toc", opener, error);
    Check(pImage != nullptr || !error.m_strText.empty());
    if (pImage)
        CheckDisc(*pImage);
    return 0;
}
