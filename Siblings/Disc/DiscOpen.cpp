// DiscImage::Open: which reader a path is for.

#include "CueDisc.h"
#include "DiscImage.h"
#include "SourceOpener.h"
#include "TocDisc.h"
#include "TocLexer.h"
#include <exception>

namespace
{
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
} // namespace

std::unique_ptr<DiscImage> DiscImage::Open(const std::string& strPath, std::string& strError)
try
{
    strError.clear();
    std::string strText;
    if (!LoadSheetText(strPath, strText, strError))
        return nullptr;
    SHEET_ERROR error;
    std::unique_ptr<DiscImage> pImage =
        LooksLikeTocFile(strText, strPath) ? OpenToc(strText, strPath, error) : OpenCue(strText, strPath, error);
    if (!pImage)
        strError = FormatSheetError(strPath, error);
    return pImage;
}
catch (const std::exception& fault) // the standard library's own: out of memory, for one
{
    strError = strPath + ": the image cannot be opened (" + fault.what() + "); close other programs and try again.";
    return nullptr;
}
