#include "NameTemplate.h"
#include "HostError.h"
#include <algorithm>
#include <cstdio>
#include <string_view>

const char* const DEFAULT_NAME_TEMPLATE = "%{albumartist}/%{album}/%{track} %{title}";

namespace
{
const std::string UNKNOWN_ARTIST = "Unknown Artist";

bool IsUnknown(const std::string& str) { return str.find_first_not_of(" \t\r\n") == std::string::npos; }

const std::string& FirstKnown(const std::string& str1, const std::string& str2, const std::string& str3)
{
    return !IsUnknown(str1) ? str1 : !IsUnknown(str2) ? str2 : str3;
}

std::string GetTrackText(int nTrack)
{
    char szTrack[16];
    std::snprintf(szTrack, sizeof szTrack, "%02d", nTrack);
    return szTrack;
}

std::string GetAlbum(const NAME_FIELDS& fields)
{
    return IsUnknown(fields.strAlbum) ? "Unknown Album" : fields.strAlbum;
}

std::string GetAlbumArtist(const NAME_FIELDS& fields)
{
    return FirstKnown(fields.strAlbumArtist, fields.strArtist, UNKNOWN_ARTIST);
}

std::string GetTitle(const NAME_FIELDS& fields)
{
    return IsUnknown(fields.strTitle) ? "Track " + GetTrackText(fields.nTrack) : fields.strTitle;
}

std::string GetArtist(const NAME_FIELDS& fields)
{
    return FirstKnown(fields.strArtist, fields.strAlbumArtist, UNKNOWN_ARTIST);
}

std::string GetISRC(const NAME_FIELDS& fields) { return fields.strISRC; }
std::string GetTrack(const NAME_FIELDS& fields) { return GetTrackText(fields.nTrack); }
std::string GetTracks(const NAME_FIELDS& fields) { return std::to_string(fields.nTracks); }

struct TEMPLATE_FIELD
{
    const char* pName;
    std::string (*pGet)(const NAME_FIELDS& fields);
};

const TEMPLATE_FIELD s_aryFields[] = {
    {"album", GetAlbum}, {"albumartist", GetAlbumArtist}, {"title", GetTitle}, {"artist", GetArtist}, {"isrc", GetISRC},
    {"track", GetTrack}, {"tracks", GetTracks},
};

const TEMPLATE_FIELD* FindField(std::string strName)
{
    for (char& c : strName)
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    const auto pField = std::find_if(std::begin(s_aryFields), std::end(s_aryFields),
                                     [&](const TEMPLATE_FIELD& field) { return strName == field.pName; });
    return pField != std::end(s_aryFields) ? pField : nullptr;
}

[[noreturn]] void Refuse(const std::string& strReason) { throw HostError("the template of names " + strReason + "."); }

std::string ListFields()
{
    std::string strList;
    for (const TEMPLATE_FIELD& field : s_aryFields)
        strList += (strList.empty() ? "%{" : ", %{") + std::string(field.pName) + "}";
    return strList;
}

// What stands at the start of the rest, as text; it is taken away from there. A per cent sign is there.
std::string TakeField(std::string_view& strRest, const NAME_FIELDS& fields)
{
    if (strRest.starts_with("%%"))
    {
        strRest.remove_prefix(2);
        return "%";
    }
    const size_t nEnd = strRest.find('}');
    if (!strRest.starts_with("%{") || nEnd == std::string_view::npos)
        Refuse("has a % that begins no %{field}; write %% for the sign itself");
    const std::string strName(strRest.substr(2, nEnd - 2));
    const TEMPLATE_FIELD* pField = FindField(strName);
    if (pField == nullptr)
        Refuse("names an unknown field %{" + MakeSafeName(strName) + "}; there are " + ListFields());
    strRest.remove_prefix(nEnd + 1);
    return pField->pGet(fields);
}

std::string ExpandComponent(std::string_view strRest, const NAME_FIELDS& fields)
{
    std::string strText;
    while (!strRest.empty())
    {
        const size_t nPlain = std::min(strRest.find('%'), strRest.size());
        strText += strRest.substr(0, nPlain);
        strRest.remove_prefix(nPlain);
        if (!strRest.empty())
            strText += TakeField(strRest, fields);
    }
    return strText;
}

void CheckComponent(std::string_view strComponent)
{
    if (strComponent.find_first_not_of(" .") == std::string_view::npos)
        Refuse("has a folder or a file without a name; it is relative, and something other than blanks and dots stands "
               "on both sides of each /");
    if (strComponent.find('\\') != std::string_view::npos)
        Refuse("has a backslash; write / between folders");
}
} // namespace

std::string ExpandNameTemplate(const std::string& strTemplate, const NAME_FIELDS& fields)
{
    if (strTemplate.size() > NAME_MAX_TEMPLATE)
        Refuse("is longer than " + std::to_string(NAME_MAX_TEMPLATE) + " bytes; make it shorter");
    if (std::count(strTemplate.begin(), strTemplate.end(), '/') >= static_cast<std::ptrdiff_t>(NAME_MAX_COMPONENTS))
        Refuse("has more than " + std::to_string(NAME_MAX_COMPONENTS - 1) + " folders; leave some out");
    std::string strName;
    std::string_view strRest = strTemplate;
    for (bool bLast = false; !bLast;)
    {
        const size_t nSlash = strRest.find('/');
        bLast = nSlash == std::string_view::npos;
        const std::string_view strComponent = strRest.substr(0, nSlash);
        CheckComponent(strComponent);
        strName += MakeSafeName(ExpandComponent(strComponent, fields),
                                bLast ? NAME_MAX_BYTES - NAME_SUFFIX_BYTES : NAME_MAX_BYTES);
        if (!bLast)
        {
            strName += '/';
            strRest.remove_prefix(nSlash + 1);
        }
    }
    return strName;
}

std::string CheckNameTemplate(const std::string& strTemplate)
{
    try
    {
        (void)ExpandNameTemplate(strTemplate, {});
        return {};
    }
    catch (const HostError& error)
    {
        return error.what();
    }
}
