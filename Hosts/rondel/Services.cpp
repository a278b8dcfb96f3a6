#include "Services.h"
#include "HostError.h"
#include "LyDisc.h"
#include "LySharedToolsHelper.h"
#include "LyTools.h"
#include "Text.h"
#include <cstdio>
#include <sstream>

namespace
{
template <class FUNCTION>
FUNCTION* GetExport(const LyLoadLibrary& library, const char* pName)
{
    return reinterpret_cast<FUNCTION*>(library.GetProcAddress(pName));
}

// What an export of the disc service says of a path; empty where there is no such export.
std::string AskService(const char* pExport, const std::string& strPath)
{
    if (GetDiscManager(true) == nullptr)
        return {};
    const auto pGetText = GetExport<wchar_t*(const wchar_t*)>(g_LySharedToolsHelper.m_DiscLibrary, pExport);
    if (pGetText == nullptr)
        return {};
    wchar_t* pText = pGetText(Widen(strPath));
    std::string strText = Narrow(pText);
    LyCom::SysFreeString(pText);
    return strText;
}

bool TakeDrive(void* pContext, const DISC_DRIVE_ENTRY* pEntry)
{
    static_cast<std::vector<LISTED_DRIVE>*>(pContext)->push_back(
        {Narrow(pEntry->m_pPath), Narrow(pEntry->m_pLetter), Narrow(pEntry->m_pVendor), Narrow(pEntry->m_pModel),
         Narrow(pEntry->m_pRevision), Narrow(pEntry->m_pReason), pEntry->m_nState, pEntry->m_bImage});
    return true;
}

bool TakeOption(void* pContext, const wchar_t* pStore, const wchar_t* pKey, const wchar_t* pValue)
{
    static_cast<std::vector<LISTED_OPTION>*>(pContext)->push_back({Narrow(pStore), Narrow(pKey), Narrow(pValue)});
    return true;
}
} // namespace

void RequireTools()
{
    if (GetLyTools(true) == nullptr)
        throw HostError("the tools library libLyTools.dylib does not load; it belongs beside the program.");
}

void RequireDiscService()
{
    if (GetDiscManager(true) == nullptr)
        throw HostError("the disc service libLyDisc.dylib does not load; it belongs beside the program.");
}

void RequireReader()
{
    if (!g_LySharedToolsHelper.LoadLyReaderLib(LyString()))
        throw HostError("the reader library libLyReader.dylib does not load; it belongs beside the program.");
}

std::vector<LISTED_DRIVE> ListDrives()
{
    RequireDiscService();
    std::vector<LISTED_DRIVE> aryDrives;
    const auto pEnumerate =
        GetExport<decltype(EnumerateDiscDrives)>(g_LySharedToolsHelper.m_DiscLibrary, "EnumerateDiscDrives");
    if (pEnumerate == nullptr)
        throw HostError("this disc service cannot list its drives; install the one that came with the program.");
    (void)pEnumerate(TakeDrive, &aryDrives);
    return aryDrives;
}

std::vector<LISTED_OPTION> ListOptions(const std::string& strStore)
{
    RequireTools();
    std::vector<LISTED_OPTION> aryOptions;
    const auto pEnumerate =
        GetExport<decltype(EnumerateLyOptions)>(g_LySharedToolsHelper.m_ToolsLibrary, "EnumerateLyOptions");
    const LyString strName = Widen(strStore);
    if (pEnumerate == nullptr ||
        pEnumerate(strStore.empty() ? nullptr : static_cast<const wchar_t*>(strName), TakeOption, &aryOptions) < 0)
        throw HostError("the options cannot be read; see what was said about their file, and correct that.");
    return aryOptions;
}

std::string GetDiscErrorText(const std::string& strPath) { return AskService("GetDiscErrorText", strPath); }

std::string GetDiscWarnings(const std::string& strPath) { return AskService("GetDiscWarnings", strPath); }

void ShowWarnings(const std::string& strPath)
{
    std::istringstream stream(GetDiscWarnings(strPath));
    for (std::string strLine; std::getline(stream, strLine);)
        std::fprintf(stderr, "rondel: note: %s\n", strLine.c_str());
}

void ReportPlaying(const std::string& strPath, double fMissingSeconds)
{
    const std::string strUnread = GetDiscErrorText(strPath);
    const std::string strEarly =
        fMissingSeconds > 0 ? "the track ended " + FormatSeconds(fMissingSeconds) + " early" : std::string();
    if (!strUnread.empty())
        throw HostError(strEarly.empty() ? strUnread : strEarly + "; " + strUnread);
    ShowWarnings(strPath);
    if (!strEarly.empty())
        throw HostError(strEarly + ": the drive did not deliver; what came before is complete, so try the rest again "
                                   "with --from.");
}
