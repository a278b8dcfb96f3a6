// The options that tell by how many sample frames the reads of a drive model are corrected. The disc service goes by
// them, and hosts show them; both read them here, so that they mean the same.
//
//   store "Disc Service"   Read Offset <vendor> <model>   frames, a whole number; lists of drives give it for each
//   model
//                          Over-Read <vendor> <model>     true if the drive reads beyond the ends of a disc
//
// Threads: any; functions without state.

#pragma once

#include "CDUnits.h"
#include "UTF8.h"
#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

inline constexpr wchar_t DISC_SERVICE_STORE[] = L"Disc Service";
constexpr int READ_OFFSET_MAX_FRAMES = LY_CD_SECTOR_FRAMES * LY_CD_SECTORS_PER_SECOND; // lists know nothing near it

// The name of an option, of names as a drive tells them; one that is empty is left out.
inline std::wstring MakeDriveOptionKey(std::wstring_view strOption, std::string_view strVendor,
                                       std::string_view strModel)
{
    std::wstring strKey(strOption);
    for (std::string_view str : {strVendor, strModel})
    {
        str.remove_prefix(std::min(str.find_first_not_of(' '), str.size()));
        str.remove_suffix(str.size() - (str.find_last_not_of(' ') + 1));
        if (!str.empty())
            strKey += L' ' + WidenUTF8(str);
    }
    return strKey;
}

inline std::wstring GetReadOffsetKey(std::string_view strVendor, std::string_view strModel)
{
    return MakeDriveOptionKey(L"Read Offset", strVendor, strModel);
}

inline std::wstring GetOverReadKey(std::string_view strVendor, std::string_view strModel)
{
    return MakeDriveOptionKey(L"Over-Read", strVendor, strModel);
}

// Digits with a sign in front or without and blanks around them, from -READ_OFFSET_MAX_FRAMES to
// READ_OFFSET_MAX_FRAMES. Nothing for any other text.
inline std::optional<int> ParseReadOffset(std::wstring_view strValue)
{
    strValue.remove_prefix(std::min(strValue.find_first_not_of(L' '), strValue.size()));
    strValue.remove_suffix(strValue.size() - (strValue.find_last_not_of(L' ') + 1));
    const bool bNegative = strValue.starts_with(L'-');
    if (bNegative || strValue.starts_with(L'+'))
        strValue.remove_prefix(1);
    int nFrames = 0;
    for (const wchar_t c : strValue)
    {
        if (c < L'0' || c > L'9')
            return std::nullopt;
        nFrames = nFrames * 10 + static_cast<int>(c - L'0');
        if (nFrames > READ_OFFSET_MAX_FRAMES)
            return std::nullopt;
    }
    if (strValue.empty())
        return std::nullopt;
    return bNegative ? -nFrames : nFrames;
}
