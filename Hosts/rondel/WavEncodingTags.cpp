#include "WavEncodingTags.h"
#include "LyDateTime.h"
#include "Text.h"
#include <climits>
#include <filesystem>

namespace
{
struct TAG_ROW
{
    const wchar_t* pField;
    const char* pTag; // of the encoders, as Docs/ENCODERS.md has them
};

const TAG_ROW s_aryTags[] = {
    {L"Name", "Title"},          {L"Artist", "Artist"},       {L"Album", "Album"}, {L"Album Artist", "Album Artist"},
    {L"Composer", "Composer"},   {L"Conductor", "Conductor"}, {L"Genre", "Genre"}, {L"Comment", "Comment"},
    {L"Publisher", "Publisher"}, {L"Copyright", "Copyright"}, {L"ISRC", "ISRC"},
};

// With a total behind a "/", if there is one.
const TAG_ROW s_aryNumbers[] = {{L"Track #", "Track"}, {L"Disc #", "Disc"}};

std::string GetField(CWAVInfo& info, const wchar_t* pField)
{
    LyString strValue;
    return info.Get(LyString(pField), strValue) ? Narrow(strValue) : std::string();
}

std::string GetNumberField(CWAVInfo& info, const wchar_t* pField)
{
    const std::string strTag = Narrow(info.m_ID3v2Tag.GetSimple(LyString(pField), 1));
    return strTag.empty() ? GetField(info, pField) : strTag;
}

// The field is the number of a date; tags of files have it as people write it.
std::string GetDate(CWAVInfo& info)
{
    LyString strValue;
    if (!info.Get(LyString(L"Date"), strValue) || strValue.IsEmpty())
        return GetField(info, L"Year");
    const LyDateTime date(LyString::GetDouble(strValue, nullptr, true, INT_MAX, true));
    return Narrow(date.FormatISO8601(false, true));
}

void GiveTag(RipEncoder& encoder, const char* pTag, const std::string& strValue)
{
    if (!strValue.empty())
        encoder.SetText(std::string("Tag ") + pTag, strValue);
}
} // namespace

WavEncodingTags::WavEncodingTags(CWAVInfo& info, RipEncoder& encoder)
{
    for (const TAG_ROW& row : s_aryTags)
        GiveTag(encoder, row.pTag, GetField(info, row.pField));
    for (const TAG_ROW& row : s_aryNumbers)
        GiveTag(encoder, row.pTag, GetNumberField(info, row.pField));
    if (GetNumberField(info, L"Track #").empty())
        GiveTag(encoder, "Track", GetField(info, L"IPRT")); // where some programs keep the number in an INFO list
    GiveTag(encoder, "Date", GetDate(info));
    const std::string strPicture = GetField(info, L"Image File");
    std::error_code error;
    if (strPicture.starts_with('/') && std::filesystem::is_regular_file(strPicture, error))
    {
        m_strPicture = strPicture;
        encoder.SetText("Picture", strPicture);
    }
}

WavEncodingTags::~WavEncodingTags()
{
    std::error_code error;
    if (!m_strPicture.empty())
        (void)std::filesystem::remove(m_strPicture, error);
}
