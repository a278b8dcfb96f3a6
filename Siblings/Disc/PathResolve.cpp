#include "PathResolve.h"

#include "TextDecode.h"
#include <algorithm>
#include <filesystem>
#include <iterator>
#include <vector>

namespace
{
namespace fs = std::filesystem;

constexpr size_t MAX_NAME_BYTES = 4096; // as long as a path may be; a longer name is noise

// The first extension that exists wins: lossless before lossy, common before rare.
constexpr std::string_view s_aryRawExtensions[] = {".bin", ".img", ".raw", ".iso", ".cdr"};
constexpr std::string_view s_aryAudioExtensions[] = {".flac", ".wav", ".aiff", ".aif",  ".w64", ".caf",
                                                     ".au",   ".ogg", ".oga",  ".opus", ".mp3"};

bool IsFile(const std::string& strPath)
{
    std::error_code error;
    return fs::is_regular_file(strPath, error);
}

std::string Join(const std::string& strFolder, const std::string& strName)
{
    return strFolder == "/" ? strFolder + strName : strFolder + "/" + strName;
}

// The names between the separators of any system, without drive, share marks and "." steps.
std::vector<std::string> SplitName(std::string strName)
{
    bool bLetter =
        strName.size() > 2 && ((strName[0] >= 'A' && strName[0] <= 'Z') || (strName[0] >= 'a' && strName[0] <= 'z'));
    if (bLetter && strName[1] == ':')
        strName.erase(0, 2);
    std::vector<std::string> aryParts(1);
    for (char c : strName)
    {
        if (c == '/' || c == '\\')
            aryParts.emplace_back();
        else
            aryParts.back() += c;
    }
    std::erase_if(aryParts, [](const std::string& strPart) { return strPart.empty() || strPart == "."; });
    return aryParts;
}

// One step down a folder, to the entry that pMatches accepts with the lowest rank (0 best, -1 no match).
template <class MATCH>
std::string FindEntry(const std::string& strFolder, bool bFile, MATCH pMatches)
{
    std::string strBest;
    int nBest = -1;
    std::error_code error;
    for (fs::directory_iterator it(strFolder, error), end; !error && it != end; it.increment(error))
    {
        std::string strEntry = it->path().filename().string();
        int nRank = pMatches(FoldCase(DecodeText(strEntry)));
        std::error_code ignored;
        if (nRank < 0 || (bFile ? !it->is_regular_file(ignored) : !it->is_directory(ignored)))
            continue;
        // Of entries that differ only in case the smallest name wins, so that the choice does not change by itself.
        if (nBest < 0 || nRank < nBest || (nRank == nBest && strEntry < strBest))
        {
            nBest = nRank;
            strBest = strEntry;
        }
    }
    return strBest;
}

// The folder reached from strFolder by the parts from nFirst on, but the last; in any case. Empty when there is none.
std::string FindFolder(std::string strFolder, const std::vector<std::string>& aryParts, size_t nFirst)
{
    for (size_t n = nFirst; n + 1 < aryParts.size(); n++)
    {
        std::string strEntry = aryParts[n];
        std::error_code error;
        if (strEntry != ".." && !fs::is_directory(Join(strFolder, strEntry), error))
        {
            std::string strWanted = FoldCase(aryParts[n]);
            strEntry = FindEntry(strFolder, false, [&](const std::string& str) { return str == strWanted ? 0 : -1; });
        }
        if (strEntry.empty())
            return {};
        strFolder = Join(strFolder, strEntry);
    }
    return strFolder;
}

int RankExtension(std::string_view strExtension, SHEET_FILE_KIND kind)
{
    int nRank = 0;
    if (kind == SHEET_FILE_COMPANION)
        return -1;
    if (kind == SHEET_FILE_RAW)
        for (std::string_view strKnown : s_aryRawExtensions)
        {
            if (strExtension == strKnown)
                return nRank;
            nRank++;
        }
    for (std::string_view strKnown : s_aryAudioExtensions)
    {
        if (strExtension == strKnown)
            return nRank;
        nRank++;
    }
    return -1;
}

std::string FindNoCase(const std::string& strFolder, const std::string& strName)
{
    std::string strWanted = FoldCase(strName);
    std::string strEntry =
        FindEntry(strFolder, true, [&](const std::string& str) { return str == strWanted ? 0 : -1; });
    return strEntry.empty() ? strEntry : Join(strFolder, strEntry);
}

// A file of the same name with an extension that may stand for the one named. What looks like an extension may be a
// part of the name ("01. Aria"), so the whole name is looked for as well, and first.
std::string FindConverted(const std::string& strFolder, const std::string& strName, SHEET_FILE_KIND kind)
{
    constexpr int BEHIND_WHOLE_NAMES = 100;
    std::string strWhole = FoldCase(strName);
    std::string_view strStem = GetNameStem(strWhole);
    auto matches = [&](std::string_view strEntry)
    {
        int nRank = RankExtension(GetNameExtension(strEntry), kind);
        if (nRank < 0 || GetNameStem(strEntry) == strWhole)
            return nRank;
        return GetNameStem(strEntry) == strStem ? nRank + BEHIND_WHOLE_NAMES : -1;
    };
    std::string strEntry = FindEntry(strFolder, true, matches);
    return strEntry.empty() ? strEntry : Join(strFolder, strEntry);
}

// Tries pFind in the folder of each tail of the name, the longest first.
template <class FIND>
std::string ForEachTail(const std::string& strFolder, const std::vector<std::string>& aryParts, FIND pFind)
{
    for (size_t nFirst = 0; nFirst < aryParts.size(); nFirst++)
    {
        std::string strReached = FindFolder(strFolder, aryParts, nFirst);
        std::string strFound = strReached.empty() ? strReached : pFind(strReached);
        if (!strFound.empty())
            return strFound;
    }
    return {};
}
} // namespace

std::string GetSheetFolder(const std::string& strSheetPath)
{
    size_t nSlash = strSheetPath.rfind('/');
    if (nSlash == std::string::npos)
        return ".";
    return nSlash == 0 ? "/" : strSheetPath.substr(0, nSlash);
}

std::string_view GetNameExtension(std::string_view strName)
{
    size_t nDot = strName.rfind('.');
    return nDot == std::string_view::npos || nDot == 0 ? std::string_view() : strName.substr(nDot);
}

std::string_view GetNameStem(std::string_view strName)
{
    return strName.substr(0, strName.size() - GetNameExtension(strName).size());
}

std::string ResolveSheetPath(const std::string& strSheetPath, const std::string& strName, SHEET_FILE_KIND kind,
                             bool bOnlyFile)
{
    if (strName.empty() || strName.size() > MAX_NAME_BYTES || strName.find('\0') != std::string::npos)
        return {};
    const std::string strFolder = GetSheetFolder(strSheetPath);
    std::string strExact = strName[0] == '/' ? strName : Join(strFolder, strName);
    if (IsFile(strExact))
        return strExact;
    std::vector<std::string> aryParts = SplitName(strName);
    if (aryParts.empty())
        return {};
    const std::string& strLast = aryParts.back();

    auto exact = [&](const std::string& str)
    { return IsFile(Join(str, strLast)) ? Join(str, strLast) : std::string(); };
    std::string strFound = ForEachTail(strFolder, aryParts, exact);
    if (strFound.empty())
        strFound = ForEachTail(strFolder, aryParts, [&](const std::string& str) { return FindNoCase(str, strLast); });
    if (strFound.empty())
        strFound =
            ForEachTail(strFolder, aryParts, [&](const std::string& str) { return FindConverted(str, strLast, kind); });
    if (!strFound.empty() || !bOnlyFile)
        return strFound;

    std::string strSheetName = strSheetPath.substr(strSheetPath.find_last_of('/') + 1);
    std::string strTwin = std::string(GetNameStem(strSheetName)) + std::string(GetNameExtension(strLast));
    if (strTwin != strSheetName)
        strFound = FindNoCase(strFolder, FoldCase(DecodeText(strTwin)));
    return strFound.empty() ? FindConverted(strFolder, DecodeText(strTwin), kind) : strFound;
}
