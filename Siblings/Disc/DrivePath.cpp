#include "DrivePath.h"
#include "UTF8.h"
#include <filesystem>

namespace
{
constexpr std::string_view FILE_URL = "file://";
constexpr std::string_view THIS_HOST = "localhost/";
constexpr std::string_view DEVICE_FOLDER = "/dev/";

int GetHexValue(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    const char cLower = static_cast<char>(c | 0x20);
    return cLower >= 'a' && cLower <= 'f' ? cLower - 'a' + 10 : -1;
}

std::string ReadEscapes(std::string_view strURL)
{
    std::string str;
    for (size_t i = 0; i < strURL.size(); ++i)
    {
        const int nHigh = strURL[i] == '%' && i + 2 < strURL.size() ? GetHexValue(strURL[i + 1]) : -1;
        const int nLow = nHigh >= 0 ? GetHexValue(strURL[i + 2]) : -1;
        if (nLow < 0)
        {
            str += strURL[i];
            continue;
        }
        str += static_cast<char>(nHigh << 4 | nLow);
        i += 2;
    }
    return str;
}

// The path without the marks of a URL.
std::string GetPlainPath(std::wstring_view strPath)
{
    std::string str = NarrowUTF8(strPath);
    if (!str.starts_with(FILE_URL))
        return str;
    std::string_view strRest = std::string_view(str).substr(FILE_URL.size());
    if (strRest.starts_with(THIS_HOST))
        strRest.remove_prefix(THIS_HOST.size() - 1);
    return ReadEscapes(strRest);
}

int ReadLetter(std::string_view str)
{
    constexpr size_t LETTER_AND_COLON = 2;
    if (str.size() < LETTER_AND_COLON || str.size() > LETTER_AND_COLON + 1 || str[1] != ':')
        return NO_DRIVE_LETTER;
    if (str.size() > LETTER_AND_COLON && str[LETTER_AND_COLON] != '/' && str[LETTER_AND_COLON] != '\\')
        return NO_DRIVE_LETTER;
    const char cLower = static_cast<char>(str[0] | 0x20);
    return cLower >= 'a' && cLower <= 'z' ? cLower - 'a' : NO_DRIVE_LETTER;
}
} // namespace

int GetDriveLetter(const wchar_t* pPath)
{
    return pPath != nullptr ? GetDriveLetter(std::wstring_view(pPath)) : NO_DRIVE_LETTER;
}

int GetDriveLetter(std::wstring_view strPath)
{
    const std::string str = GetPlainPath(strPath);
    std::string_view strPlain = str;
    // A URL of a letter has a slash of its own in front: file:///E:/
    if (strPlain.starts_with('/') && strPath.size() > str.size())
        strPlain.remove_prefix(1);
    return ReadLetter(strPlain);
}

std::string GetLetterText(int nLetter)
{
    return nLetter >= 0 && nLetter < DRIVE_LETTERS ? std::string{static_cast<char>('A' + nLetter), ':'} : std::string();
}

std::string GetImagePath(const wchar_t* pPath)
{
    const std::string strPath = GetPlainPath(pPath != nullptr ? pPath : L"");
    if (strPath.empty())
        return {};
    std::error_code error;
    const std::filesystem::path absolute = std::filesystem::absolute(strPath, error);
    return error ? strPath : absolute.lexically_normal().string();
}

std::string GetDeviceNode(const std::string& strPath)
{
    if (!strPath.starts_with(DEVICE_FOLDER))
        return strPath;
    std::error_code error;
    const std::filesystem::path node = std::filesystem::canonical(strPath, error);
    return error ? strPath : node.string();
}
