// DiscImage::Open: which reader a path is for.

#include "CcdDisc.h"
#include "CueDisc.h"
#include "DiscImage.h"
#include "NrgDisc.h"
#include "SourceOpener.h"
#include "TextDecode.h"
#include "TocDisc.h"
#include "TocLexer.h"
#include <cstring>
#include <exception>
#include <string_view>

namespace
{
constexpr long long MAX_NRG_CHUNK_BYTES = 4 * 1024 * 1024; // 99 tracks and CD-Text need a hundredth of it
constexpr char CHD_SIGNATURE[] = "MComprHD";

std::unique_ptr<DiscImage> OpenCue(const std::string& strText, const std::string& strPath, SHEET_ERROR& error)
{
    CUE_SHEET sheet;
    if (!ParseCueSheet(strText, sheet, error))
        return nullptr;
    FileSourceOpener opener(strPath, sheet.m_aryFiles.size() == 1);
    return BuildCueDisc(sheet, strPath, opener, error);
}

std::unique_ptr<DiscImage> OpenToc(const std::string& strText, const std::string& strPath, SHEET_ERROR& error)
{
    TOC_SHEET sheet;
    if (!ParseTocFile(strText, sheet, error))
        return nullptr;
    FileSourceOpener opener(strPath, false);
    return BuildTocDisc(sheet, strPath, opener, error);
}

std::unique_ptr<DiscImage> OpenCcd(const std::string& strText, const std::string& strPath, SHEET_ERROR& error)
{
    CCD_SHEET sheet;
    if (!ParseCcdFile(strText, sheet, error))
        return nullptr;
    FileSourceOpener opener(strPath, false);
    return BuildCcdDisc(sheet, strPath, opener, error);
}

std::unique_ptr<DiscImage> OpenNrg(std::unique_ptr<SectorSource> pFile, long long nChunks, const std::string& strPath,
                                   SHEET_ERROR& error)
{
    std::vector<unsigned char> chunks(static_cast<size_t>(std::min(pFile->GetBytes() - nChunks, MAX_NRG_CHUNK_BYTES)));
    const int nGot = pFile->Read(nChunks, chunks.data(), static_cast<int>(chunks.size()));
    chunks.resize(static_cast<size_t>(nGot));
    NRG_SHEET sheet;
    if (!ParseNrgChunks(chunks, pFile->GetBytes(), sheet, error))
        return nullptr;
    return BuildNrgDisc(sheet, strPath, std::move(pFile), error);
}

std::unique_ptr<DiscImage> OpenSheet(const std::string& strPath, SHEET_ERROR& error, std::string& strError)
{
    std::string strText;
    if (!LoadSheetText(strPath, strText, strError))
        return nullptr;
    if (LooksLikeCcdFile(strText))
        return OpenCcd(strText, strPath, error);
    return LooksLikeTocFile(strText, strPath) ? OpenToc(strText, strPath, error) : OpenCue(strText, strPath, error);
}

bool HasNrgName(std::string_view strPath)
{
    constexpr size_t EXTENSION_BYTES = 4;
    return strPath.size() > EXTENSION_BYTES && EqualNoCase(strPath.substr(strPath.size() - EXTENSION_BYTES), ".nrg");
}

// Images that are one file are known by its first or last bytes; everything else is a text.
std::unique_ptr<DiscImage> OpenAny(const std::string& strPath, SHEET_ERROR& error, std::string& strError)
{
    std::string strReason;
    std::unique_ptr<SectorSource> pFile = OpenRawSectorSource(strPath, false, strReason);
    if (pFile == nullptr)
        return OpenSheet(strPath, error, strError);
    char aryFirst[sizeof CHD_SIGNATURE - 1] = {};
    (void)pFile->Read(0, reinterpret_cast<unsigned char*>(aryFirst), sizeof aryFirst); // a short file is no CHD
    if (std::memcmp(aryFirst, CHD_SIGNATURE, sizeof aryFirst) == 0)
    {
        error.m_strText = "CHD images are not read; convert it with 'chdman extractcd -i IMAGE.chd -o IMAGE.cue' and "
                          "open the CUE sheet";
        return nullptr;
    }
    long long nChunks = 0;
    if (FindNrgChunks(*pFile, nChunks))
        return OpenNrg(std::move(pFile), nChunks, strPath, error);
    std::unique_ptr<DiscImage> pImage = OpenSheet(strPath, error, strError);
    if (pImage == nullptr && HasNrgName(strPath))
    {
        strError.clear();
        error = {};
        error.m_strText = "the end of the NRG image is missing, and with it its table of contents; get a complete copy";
    }
    return pImage;
}
} // namespace

std::unique_ptr<DiscImage> DiscImage::Open(const std::string& strPath, std::string& strError)
try
{
    strError.clear();
    SHEET_ERROR error;
    std::unique_ptr<DiscImage> pImage = OpenAny(strPath, error, strError);
    if (!pImage && strError.empty())
        strError = FormatSheetError(strPath, error);
    return pImage;
}
catch (const std::exception& fault) // the standard library's own: out of memory, for one
{
    strError = strPath + ": the image cannot be opened (" + fault.what() + "); close other programs and try again.";
    return nullptr;
}
