// Names of files from a hostile template and hostile texts of a disc: whatever comes, the name is safe; and several of
// them are distinct.
//
// Input: the template and the fields, each ended by a line feed; the rest is the names to be made distinct, by line.

#include "FuzzCheck.h"
#include "HostError.h"
#include "NameTemplate.h"
#include "UTF8.h"
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace
{
std::string TakeLine(std::string_view& strRest)
{
    const size_t nEnd = std::min(strRest.find('\n'), strRest.size());
    std::string strLine(strRest.substr(0, nEnd));
    strRest.remove_prefix(std::min(nEnd + 1, strRest.size()));
    return strLine;
}

void CheckComponent(std::string_view str, size_t nMaxBytes)
{
    Check(!str.empty() && str.size() <= nMaxBytes);
    Check(str.front() != '.' && str.front() != ' ' && str.back() != '.' && str.back() != ' ');
    for (std::string_view strRest = str; !strRest.empty();)
    {
        size_t nBytes = 0;
        const char32_t n = UTF8Details::Decode(strRest, nBytes);
        Check(!UTF8Details::IsSurrogate(n) && n >= 0x20 && (n < 0x7F || n > 0x9F));
        strRest.remove_prefix(nBytes);
    }
    Check(str.find_first_of("<>:\"\\|?*/") == std::string_view::npos);
    Check(MakeSafeName(std::string(str), nMaxBytes) == str);
}

void CheckName(std::string_view strRest)
{
    for (;;)
    {
        const size_t nSlash = strRest.find('/');
        const bool bLast = nSlash == std::string_view::npos;
        CheckComponent(strRest.substr(0, nSlash), bLast ? NAME_MAX_BYTES - NAME_SUFFIX_BYTES : NAME_MAX_BYTES);
        if (bLast)
            return;
        strRest.remove_prefix(nSlash + 1);
    }
}

void CheckDistinct(std::string_view strRest)
{
    std::vector<std::string> aryNames;
    while (!strRest.empty() && aryNames.size() < 12)
        aryNames.push_back(MakeSafeName(TakeLine(strRest), NAME_MAX_BYTES - NAME_SUFFIX_BYTES));
    const std::vector<std::string> aryBefore = aryNames;
    MakeNamesDistinct(aryNames);
    Check(aryNames.size() == aryBefore.size());
    for (size_t i = 0; i < aryNames.size(); ++i)
    {
        Check(i > 0 || aryNames[i] == aryBefore[i]);
        CheckComponent(aryNames[i], NAME_MAX_BYTES - NAME_SUFFIX_BYTES);
        for (size_t j = 0; j < i; ++j)
            Check(!IsSameName(aryNames[i], aryNames[j]));
    }
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nBytes)
{
    std::string_view strRest(reinterpret_cast<const char*>(pData), nBytes);
    const std::string strTemplate = TakeLine(strRest);
    NAME_FIELDS fields;
    for (std::string* p :
         {&fields.strAlbum, &fields.strAlbumArtist, &fields.strTitle, &fields.strArtist, &fields.strISRC})
        *p = TakeLine(strRest);
    fields.nTrack = static_cast<int>(nBytes % 100);
    const bool bGood = CheckNameTemplate(strTemplate).empty();
    try
    {
        CheckName(ExpandNameTemplate(strTemplate, fields));
        Check(bGood);
    }
    catch (const HostError&)
    {
        Check(!bGood);
    }
    CheckDistinct(strRest);
    return 0;
}
