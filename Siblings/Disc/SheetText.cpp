#include "SheetText.h"

#include "CDUnits.h"
#include "TextDecode.h"
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>

namespace
{
constexpr size_t MAX_SHEET_BYTES = 1024 * 1024; // 99 tracks need a hundredth of it
constexpr size_t MAX_QUOTED_BYTES = 60;

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// The code without the separators that people write into it, in capitals.
std::string StripCode(std::string_view strCode)
{
    std::string strStripped;
    for (char c : strCode)
        if (c != '-' && c != ' ' && c != '\t')
            strStripped += c >= 'a' && c <= 'z' ? static_cast<char>(c - 0x20) : c;
    return strStripped;
}

bool IsAll(std::string_view str, char c) { return str.find_first_not_of(c) == std::string_view::npos; }
} // namespace

std::string FormatSheetError(const std::string& strPath, const SHEET_ERROR& error)
{
    std::string strPlace = error.m_nLine > 0 ? ", line " + std::to_string(error.m_nLine) : std::string();
    return strPath + strPlace + ": " + error.m_strText + ".";
}

bool LoadSmallFile(const std::string& strPath, size_t nMaxBytes, std::string& strContent, std::string& strReason)
{
    std::error_code error;
    auto status = std::filesystem::status(strPath, error);
    if (!std::filesystem::exists(status))
        strReason = "the file does not exist; check its path";
    else if (!std::filesystem::is_regular_file(status))
        strReason = "this is not a plain file; name the .cue, .toc, .ccd or .nrg file of the image";
    else if (std::filesystem::file_size(strPath, error) > nMaxBytes)
        strReason = "the file is too large for the sheet of an image; open the sheet that belongs to the image";
    if (!strReason.empty())
        return false;
    std::unique_ptr<FILE, int (*)(FILE*)> pFile(fopen(strPath.c_str(), "rbe"), fclose);
    if (!pFile)
    {
        strReason = std::string("the file cannot be opened (") + strerror(errno) + "); check its permissions";
        return false;
    }
    // The size may have changed since: read what is there, up to a little more than is allowed.
    char aryPart[4096];
    for (size_t nRead = 1; nRead > 0 && strContent.size() <= nMaxBytes;)
    {
        nRead = fread(aryPart, 1, sizeof aryPart, pFile.get());
        strContent.append(aryPart, nRead);
    }
    if (ferror(pFile.get()) == 0 && strContent.size() <= nMaxBytes)
        return true;
    strReason = "the file cannot be read; copy it again from where it came from";
    return false;
}

bool LoadSheetText(const std::string& strPath, std::string& strText, std::string& strError)
{
    SHEET_ERROR error;
    std::string strBytes;
    if (LoadSmallFile(strPath, MAX_SHEET_BYTES, strBytes, error.m_strText))
    {
        strText = DecodeText(strBytes);
        while (!strText.empty() && (strText.back() == '\0' || strText.back() == '\x1A')) // some editors pad the end
            strText.pop_back();
        if (strText.find_first_not_of(" \t\r\n") == std::string::npos)
            error.m_strText = "the file is empty; copy it again from where it came from";
        else if (strText.find('\0') != std::string::npos)
            error.m_strText =
                "this is not the sheet of a disc image; open the .cue, .toc, .ccd or .nrg file of the image";
        else
            return true;
    }
    strError = FormatSheetError(strPath, error);
    return false;
}

long long ParseDecimal(std::string_view strDigits, long long nMax)
{
    if (strDigits.empty() || strDigits.size() > 18) // 18 digits always fit
        return -1;
    long long nValue = 0;
    for (char c : strDigits)
    {
        if (!IsDigit(c))
            return -1;
        nValue = nValue * 10 + (c - '0');
    }
    return nValue <= nMax ? nValue : -1;
}

int ParseMSF(std::string_view strTime)
{
    static constexpr int s_aryMax[] = {99, 59, LY_CD_SECTORS_PER_SECOND - 1};
    int aryParts[3] = {};
    for (int n = 0; n < 3; n++)
    {
        size_t nEnd = n < 2 ? strTime.find(':') : strTime.size();
        if (nEnd == std::string_view::npos || nEnd > 2)
            return -1;
        aryParts[n] = static_cast<int>(ParseDecimal(strTime.substr(0, nEnd), s_aryMax[n]));
        if (aryParts[n] < 0)
            return -1;
        strTime.remove_prefix(n < 2 ? nEnd + 1 : nEnd);
    }
    return (aryParts[0] * 60 + aryParts[1]) * LY_CD_SECTORS_PER_SECOND + aryParts[2];
}

std::string FormatSheetTime(int nSectors)
{
    char szTime[32];
    int nSeconds = nSectors / LY_CD_SECTORS_PER_SECOND;
    (void)snprintf(szTime, sizeof szTime, "%02d:%02d:%02d", nSeconds / 60, nSeconds % 60,
                   nSectors % LY_CD_SECTORS_PER_SECOND);
    return szTime;
}

std::string NormaliseMCN(std::string_view strCode, bool& bValid)
{
    std::string strDigits = StripCode(strCode);
    bValid =
        (strDigits.size() == 12 || strDigits.size() == 13) && std::all_of(strDigits.begin(), strDigits.end(), IsDigit);
    if (strDigits.empty())
        bValid = true;
    if (!bValid || IsAll(strDigits, '0'))
        return {};
    return strDigits.size() == 12 ? "0" + strDigits : strDigits;
}

// IEC 60908, 17.5.4: two of country and three of owner, letters or digits; two digits of year and five of serial.
std::string NormaliseISRC(std::string_view strCode, bool& bValid)
{
    std::string strISRC = StripCode(strCode);
    auto letterOrDigit = [](char c) { return IsDigit(c) || (c >= 'A' && c <= 'Z'); };
    bValid = strISRC.size() == 12 && std::all_of(strISRC.begin(), strISRC.begin() + 5, letterOrDigit) &&
             std::all_of(strISRC.begin() + 5, strISRC.end(), IsDigit);
    if (strISRC.empty())
        bValid = true;
    return bValid && !IsAll(strISRC, '0') ? strISRC : std::string();
}

std::string QuoteWord(std::string_view strWord)
{
    bool bCut = strWord.size() > MAX_QUOTED_BYTES;
    size_t nBytes = bCut ? MAX_QUOTED_BYTES : strWord.size();
    while (bCut && nBytes > 0 && (static_cast<unsigned char>(strWord[nBytes]) & 0xC0) == 0x80)
        nBytes--; // not in the middle of a character
    std::string strQuoted = "\"";
    for (char c : strWord.substr(0, nBytes))
        strQuoted += static_cast<unsigned char>(c) < 0x20 || c == 0x7F ? '?' : c;
    return strQuoted + (bCut ? "...\"" : "\"");
}
