#include "EncoderTags.h"
#include <algorithm>

namespace
{
struct TAG_NAMES
{
    std::string_view strTag; // upper case, without blanks
    const char* pVorbis;
    const char* pID3; // null: no text frame has this meaning
};

// Vorbis comment names as in "Ogg Vorbis I: comment field and header", frames as in "ID3v2.3.0, 4.2".
constexpr TAG_NAMES s_aryNames[] = {
    {"TITLE", "TITLE", "TIT2"},
    {"ARTIST", "ARTIST", "TPE1"},
    {"ALBUM", "ALBUM", "TALB"},
    {"ALBUMARTIST", "ALBUMARTIST", "TPE2"},
    {"TRACK", "TRACKNUMBER", "TRCK"},
    {"TRACKNUMBER", "TRACKNUMBER", "TRCK"},
    {"DISC", "DISCNUMBER", "TPOS"},
    {"DISCNUMBER", "DISCNUMBER", "TPOS"},
    {"DATE", "DATE", "TYER"},
    {"YEAR", "DATE", "TYER"},
    {"GENRE", "GENRE", "TCON"},
    {"COMPOSER", "COMPOSER", "TCOM"},
    {"LYRICIST", "LYRICIST", "TEXT"},
    {"CONDUCTOR", "CONDUCTOR", "TPE3"},
    {"ARRANGER", "ARRANGER", "TPE4"},
    {"ISRC", "ISRC", "TSRC"},
    {"COPYRIGHT", "COPYRIGHT", "TCOP"},
    {"PUBLISHER", "ORGANIZATION", "TPUB"},
    {"COMMENT", "COMMENT", nullptr},
    {"BPM", "BPM", "TBPM"},
    {"COMPILATION", "COMPILATION", "TCMP"},
    {"GROUPING", "GROUPING", "TIT1"},
    {"KEY", "KEY", "TKEY"},
    {"LANGUAGE", "LANGUAGE", "TLAN"},
    {"MEDIA", "MEDIA", "TMED"},
    {"ENCODEDBY", "ENCODEDBY", "TENC"},
    {"TITLESORT", "TITLESORT", "TSOT"},
    {"ARTISTSORT", "ARTISTSORT", "TSOP"},
    {"ALBUMSORT", "ALBUMSORT", "TSOA"},
    {"ALBUMARTISTSORT", "ALBUMARTISTSORT", "TSO2"},
    {"COMPOSERSORT", "COMPOSERSORT", "TSOC"},
    // As the database's own tagger names them.
    {"MUSICBRAINZTRACKID", "MUSICBRAINZ_TRACKID", "TXXX:MusicBrainz Track Id"},
    {"MUSICBRAINZRELEASETRACKID", "MUSICBRAINZ_RELEASETRACKID", "TXXX:MusicBrainz Release Track Id"},
    {"MUSICBRAINZALBUMID", "MUSICBRAINZ_ALBUMID", "TXXX:MusicBrainz Album Id"},
    {"MUSICBRAINZRELEASEGROUPID", "MUSICBRAINZ_RELEASEGROUPID", "TXXX:MusicBrainz Release Group Id"},
    {"MUSICBRAINZARTISTID", "MUSICBRAINZ_ARTISTID", "TXXX:MusicBrainz Artist Id"},
    {"MUSICBRAINZALBUMARTISTID", "MUSICBRAINZ_ALBUMARTISTID", "TXXX:MusicBrainz Album Artist Id"},
    {"MUSICBRAINZDISCID", "MUSICBRAINZ_DISCID", "TXXX:MusicBrainz Disc Id"},
    {"ACOUSTIDID", "ACOUSTID_ID", "TXXX:Acoustid Id"},
};

std::string Fold(std::string_view str)
{
    std::string strFolded;
    for (char c : str)
        if (c != ' ')
            strFolded += c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    return strFolded;
}

const TAG_NAMES* FindNames(std::string_view strTagName)
{
    const std::string strFolded = Fold(strTagName);
    for (const TAG_NAMES& names : s_aryNames)
        if (names.strTag == strFolded)
            return &names;
    return nullptr;
}

std::string MakeKey(std::string_view strTagName)
{
    const TAG_NAMES* pNames = FindNames(strTagName);
    return pNames != nullptr ? pNames->pVorbis : Fold(strTagName);
}
} // namespace

void EncoderTags::Set(std::string_view strName, std::string_view strValue)
{
    const std::string strKey = MakeKey(strName);
    if (strKey.empty())
        return;
    auto it =
        std::find_if(m_aryTags.begin(), m_aryTags.end(), [&](const ENCODER_TAG& tag) { return tag.strKey == strKey; });
    if (strValue.empty())
    {
        if (it != m_aryTags.end())
            m_aryTags.erase(it);
    }
    else if (it != m_aryTags.end())
        *it = {std::string(strName), std::string(strValue), strKey};
    else
        m_aryTags.push_back({std::string(strName), std::string(strValue), strKey});
}

const std::string* EncoderTags::Find(std::string_view strName) const
{
    const std::string strKey = MakeKey(strName);
    for (const ENCODER_TAG& tag : m_aryTags)
        if (tag.strKey == strKey)
            return &tag.strValue;
    return nullptr;
}

std::string EncoderVorbisName(std::string_view strTagName)
{
    if (const TAG_NAMES* pNames = FindNames(strTagName))
        return pNames->pVorbis;
    std::string strName;
    for (char c : strTagName)
    {
        const bool bAllowed = c >= 0x20 && c <= 0x7D && c != '=';
        const char cUpper = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
        strName += bAllowed ? cUpper : '_';
    }
    return strName;
}

const char* EncoderID3Frame(std::string_view strTagName)
{
    const TAG_NAMES* pNames = FindNames(strTagName);
    return pNames != nullptr ? pNames->pID3 : nullptr;
}
