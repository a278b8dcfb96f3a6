#include "WavEncodingTags.h"
#include "LyDateTime.h"
#include "TagFields.h"
#include "Text.h"
#include <algorithm>
#include <climits>
#include <filesystem>
#include <iterator>
#include <string_view>
#include <strings.h>

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

// Beyond those, what a tag says of the music and not of its file. Names of encoders are free beyond their own.
const TAG_ROW s_aryMore[] = {
    {L"Lyricist", "Lyricist"},
    {L"Arranger", "Arranger"},
    {L"Lyrics", "Lyrics"},
    {L"BPM", "BPM"},
    {L"Key", "Key"},
    {L"Mood", "Mood"},
    {L"Grouping", "Grouping"},
    {L"Compilation", "Compilation"},
    {L"Language", "Language"},
    {L"Media", "Media"},
    {L"Catalog Number", "CATALOGNUMBER"},
    {L"Name Sort", "Title Sort"},
    {L"Artist Sort", "Artist Sort"},
    {L"Album Sort", "Album Sort"},
    {L"Album Artist Sort", "Album Artist Sort"},
    {L"Composer Sort", "Composer Sort"},
    {L"MusicBrainz Track Id", "MusicBrainz Track Id"},
    {L"MusicBrainz Release Track Id", "MusicBrainz Release Track Id"},
    {L"MusicBrainz Album Id", "MusicBrainz Album Id"},
    {L"MusicBrainz Release Group Id", "MusicBrainz Release Group Id"},
    {L"MusicBrainz Artist Id", "MusicBrainz Artist Id"},
    {L"MusicBrainz Album Artist Id", "MusicBrainz Album Artist Id"},
    {L"MusicBrainz Disc Id", "MusicBrainz Disc Id"},
    {L"AcoustID Id", "AcoustID Id"},
};

// RFC 7845, 5.2.1: files of Opus have gains of another kind.
const TAG_ROW s_aryGains[] = {
    {L"Replay Gain Track", "REPLAYGAIN_TRACK_GAIN"},
    {L"Replay Gain Track Peak", "REPLAYGAIN_TRACK_PEAK"},
    {L"Replay Gain Album", "REPLAYGAIN_ALBUM_GAIN"},
    {L"Replay Gain Album Peak", "REPLAYGAIN_ALBUM_PEAK"},
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

void GiveTag(RipEncoder& encoder, const std::string& strTag, const std::string& strValue)
{
    if (!strValue.empty())
        encoder.SetText("Tag " + strTag, strValue);
}

// Of other samples than the new file has: "iTunSMPB" is the gap ahead of them, "iTunNORM" their levels.
bool IsOfSamples(const std::string& strName) { return strName.starts_with("iTun"); }

// RFC 7845, 5.2.1, does not want any of these in Opus.
bool IsReplayGain(const std::string& strName)
{
    constexpr std::string_view GAIN = "replaygain_";
    return strncasecmp(strName.c_str(), GAIN.data(), GAIN.size()) == 0;
}

// What a tag has beyond the fields that everybody knows. However much that is, the new file has room for it.
void GiveOwnTexts(CID3v2Tag& tag, RipEncoder& encoder)
{
    constexpr int MOST_TEXTS = 1000;
    constexpr size_t MOST_BYTES = 4 * 1024 * 1024; // FLAC has 24 bits for the length of all
    int nTexts = 0;
    size_t nBytes = 0;
    for (const auto& [strName, strValue] : CollectTagFields(tag))
    {
        if (IsTableField(strName) || IsOfSamples(strName) || (encoder.GetName() == "opus" && IsReplayGain(strName)))
            continue;
        if (nTexts == MOST_TEXTS || strName.size() + strValue.size() > MOST_BYTES - nBytes)
            continue;
        ++nTexts;
        nBytes += strName.size() + strValue.size();
        GiveTag(encoder, strName, strValue);
    }
}

void GiveMoreTags(CID3v2Tag& tag, RipEncoder& encoder)
{
    constexpr size_t MOST_BYTES = 256 * 1024; // lyrics take some thousands; all of these leave room for own texts
    const auto give = [&](const TAG_ROW& row)
    {
        const std::string strValue = GetTagField(tag, Narrow(LyString(row.pField)));
        if (strValue.size() <= MOST_BYTES)
            GiveTag(encoder, row.pTag, strValue);
    };
    std::for_each(std::begin(s_aryMore), std::end(s_aryMore), give);
    if (encoder.GetName() != "opus")
        std::for_each(std::begin(s_aryGains), std::end(s_aryGains), give);
}
} // namespace

WavEncodingTags::WavEncodingTags(CWAVInfo& info, RipEncoder& encoder)
{
    // First, since they may have names of fields, which replace them then.
    GiveOwnTexts(info.m_ID3v2Tag, encoder);
    for (const TAG_ROW& row : s_aryTags)
        GiveTag(encoder, row.pTag, GetField(info, row.pField));
    for (const TAG_ROW& row : s_aryNumbers)
        GiveTag(encoder, row.pTag, GetNumberField(info, row.pField));
    if (GetNumberField(info, L"Track #").empty())
        GiveTag(encoder, "Track", GetField(info, L"IPRT")); // where some programs keep the number in an INFO list
    GiveTag(encoder, "Date", GetDate(info));
    GiveMoreTags(info.m_ID3v2Tag, encoder);
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
