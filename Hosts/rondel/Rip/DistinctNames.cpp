// NameTemplate: names that every file system tells apart.

#include "NameTemplate.h"
#include "NameTemplateDetails.h"
#include <algorithm>
#include <locale>
#include <stdexcept>

using namespace NameTemplateDetails;

namespace
{
constexpr char32_t CLUSTER = 1; // stands for a letter with its accents, in one character or in several

// What a file system may look at when it compares names.
struct NAME_KEY
{
    std::u32string strFolded;   // without case
    std::u32string strSkeleton; // and without telling accents apart
    bool bMarks = false;        // there are accents of their own

    bool operator==(const NAME_KEY& other) const
    {
        return strFolded == other.strFolded || ((bMarks || other.bMarks) && strSkeleton == other.strSkeleton);
    }
};

// HFS+ does not see them (case-insensitive comparison, TN1150).
bool IsIgnored(char32_t n)
{
    return (n >= 0x200B && n <= 0x200F) || (n >= 0x202A && n <= 0x202E) || (n >= 0x2060 && n <= 0x206F) || n == 0xFEFF;
}

// Whatever the user's own locale is; where this one is missing, the case of A to Z alone does not count.
const std::ctype<wchar_t>& GetCharacters()
{
    static const std::locale s_locale = []
    {
        try
        {
            return std::locale("C.UTF-8");
        }
        catch (const std::runtime_error&)
        {
            return std::locale::classic();
        }
    }();
    static const auto& s_characters = std::use_facet<std::ctype<wchar_t>>(s_locale);
    return s_characters;
}

// Upper case first: the final sigma has the same as the other one, and the long s as s.
char32_t Fold(char32_t n)
{
    const std::ctype<wchar_t>& characters = GetCharacters();
    return static_cast<char32_t>(characters.tolower(characters.toupper(static_cast<wchar_t>(n))));
}

void AddToSkeleton(std::u32string& strSkeleton, char32_t n)
{
    if (!IsMark(n))
        strSkeleton += n < 0x80 ? n : CLUSTER;
    else if (!strSkeleton.empty())
        strSkeleton.back() = CLUSTER;
}

NAME_KEY MakeKey(const std::string& strName)
{
    NAME_KEY key;
    for (const char32_t nOld : Decode(strName))
    {
        if (IsIgnored(nOld))
            continue;
        const bool bSharpS = nOld == 0x00DF || nOld == 0x1E9E; // APFS takes it for two of them
        const char32_t n = bSharpS ? 's' : Fold(nOld);
        key.strFolded.append(bSharpS ? 2 : 1, n);
        key.bMarks |= IsMark(n);
        AddToSkeleton(key.strSkeleton, n);
        if (bSharpS)
            key.strSkeleton += n;
    }
    return key;
}

// The name with a number behind its last component, which keeps its room for a suffix.
std::string AddNumber(const std::string& strName, int nNumber)
{
    const std::string strNumber = " (" + std::to_string(nNumber) + ")";
    const size_t nLast = strName.rfind('/') + 1; // 0 if there is none
    std::u32string strLast = Decode(std::string_view(strName).substr(nLast));
    Cut(strLast, NAME_MAX_BYTES - NAME_SUFFIX_BYTES - strNumber.size());
    return strName.substr(0, nLast) + Encode(strLast) + strNumber;
}
} // namespace

bool IsSameName(const std::string& strFirst, const std::string& strSecond)
{
    return MakeKey(strFirst) == MakeKey(strSecond);
}

void MakeNamesDistinct(std::vector<std::string>& aryNames)
{
    std::vector<NAME_KEY> aryKeys; // of all names as they are by now
    aryKeys.reserve(aryNames.size());
    for (const std::string& strName : aryNames)
        aryKeys.push_back(MakeKey(strName));
    for (size_t i = 1; i < aryNames.size(); ++i)
    {
        const auto pOwn = aryKeys.begin() + static_cast<std::ptrdiff_t>(i);
        if (std::find(aryKeys.begin(), pOwn, *pOwn) == pOwn)
            continue;
        // A number neither meets what came ahead nor takes what a later one has by itself.
        std::string strName;
        NAME_KEY key;
        int nNumber = 2;
        do
        {
            strName = AddNumber(aryNames[i], nNumber++);
            key = MakeKey(strName);
        } while (std::find(aryKeys.begin(), aryKeys.end(), key) != aryKeys.end());
        aryNames[i] = strName;
        *pOwn = std::move(key);
    }
}
