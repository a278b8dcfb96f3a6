// Message catalogues made by hand, in either byte order, whole or damaged.

#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

struct CatalogueBytes
{
    static constexpr size_t HEADER_BYTES = 28;

    using Texts = std::vector<std::pair<std::string, std::string>>;

    static Texts GetTexts()
    {
        return {{"", "Content-Type: text/plain; charset=UTF-8\n"},
                {"Reading", "Lesen"},
                {"one file" + std::string(1, '\0') + "%d files", "eine Datei" + std::string(1, '\0') + "%d Dateien"},
                {"size", "Gr\xC3\xB6\xC3\x9F"
                         "e"}};
    }

    static void PutNumber(std::string& str, uint32_t n, bool bBigEndian)
    {
        for (int i = 0; i < 4; ++i)
            str += static_cast<char>(n >> (bBigEndian ? 24 - 8 * i : 8 * i));
    }

    // The texts in the order in which they are given.
    static std::string Make(const Texts& aryTexts, bool bBigEndian = false)
    {
        const uint32_t nTexts = static_cast<uint32_t>(aryTexts.size());
        const uint32_t nTranslations = HEADER_BYTES + nTexts * 8;
        std::string strFile;
        for (const uint32_t n : {0x950412deU, 0U, nTexts, static_cast<uint32_t>(HEADER_BYTES), nTranslations, 0U, 0U})
            PutNumber(strFile, n, bBigEndian);
        std::string strTexts;
        const uint32_t nFirstText = nTranslations + nTexts * 8;
        for (const bool bTranslation : {false, true})
        {
            for (const auto& [strOriginal, strTranslation] : aryTexts)
            {
                const std::string& str = bTranslation ? strTranslation : strOriginal;
                PutNumber(strFile, static_cast<uint32_t>(str.size()), bBigEndian);
                PutNumber(strFile, nFirstText + static_cast<uint32_t>(strTexts.size()), bBigEndian);
                strTexts += str + '\0';
            }
        }
        return strFile + strTexts;
    }

    // A copy with another number at an offset.
    static std::string Patch(std::string strFile, size_t nOffset, uint32_t n)
    {
        std::string strNumber;
        PutNumber(strNumber, n, false);
        return strFile.replace(nOffset, strNumber.size(), strNumber);
    }
};
