#include "ID3v2FieldTable.h"
#include "MP3Tag.h"

namespace
{
constexpr int ANY = CID3v2Field::ANY_PICTURE_TYPE;

// What Set does with a row. READ finds what others wrote, and Set puts the written row in its place; SHARED finds what
// belongs to another field, which Set leaves alone.
constexpr int READ = 0;
constexpr int SHARED = ID3V2_FIELD_KEEP;
constexpr int WRITE_23 = ID3V2_FIELD_WRITE_23 | ID3V2_FIELD_ORDERED;
constexpr int WRITE_24 = ID3V2_FIELD_WRITE_24 | ID3V2_FIELD_ORDERED;
constexpr int WRITE = WRITE_23 | WRITE_24;

// ID3v2.3.0, 4.2: what stands behind the first zero of a text is not shown. A field of several values is therefore one
// text in a tag of that version, and has a row of its own there.
constexpr int LIST_24 = WRITE_24 | ID3V2_FIELD_LIST;

constexpr int TOTAL = ID3V2_FIELD_TOTAL;
constexpr int GENRE = ID3V2_FIELD_GENRE;
constexpr int GAIN = ID3V2_FIELD_GAIN;
constexpr int PEAK = ID3V2_FIELD_PEAK;
constexpr int DATE = ID3V2_FIELD_DATE;
constexpr int ANY_TEXT = ID3V2_FIELD_ANY_DESCRIPTION;

constexpr int COVER = ID3V2_PICTURE_FRONT_COVER;
constexpr int OTHER_PICTURE = 0;
// The first byte of an image, which a picture of version 2.2 gets for its type when it is read.
constexpr int JPEG_AS_TYPE = 0xFF;
constexpr int PNG_AS_TYPE = 0x89;

// Deliberate: no row has "PRIV". A private frame is found by its id alone, and setting one would remove those of all
// owners. Identifiers and counters in "UFID" and "PCNT" have no values here; user texts stand for them.
constexpr ID3V2_FIELD_ROW s_Rows[] = {
    // Names
    {"TIT2", L"Name", L"", WRITE, ANY},
    {"TIT3", L"Subtitle", L"", WRITE, ANY},
    {"TPE1", L"Artist", L"", WRITE_23, ANY},
    {"TPE1", L"Artist", L"", LIST_24, ANY},
    {"TALB", L"Album", L"", WRITE, ANY},
    {"TPE2", L"Album Artist", L"", WRITE_23, ANY},
    {"TPE2", L"Album Artist", L"", LIST_24, ANY},
    {"TXXX", L"Album Artist", L"ALBUM ARTIST", READ, ANY},
    {"TXXX", L"Album Artist", L"ALBUMARTIST", READ, ANY},
    {"TIT1", L"Grouping", L"", WRITE, ANY},
    {"TSST", L"Set Subtitle", L"", WRITE_24, ANY},
    {"TXXX", L"Set Subtitle", L"SETSUBTITLE", WRITE_23, ANY},
    {"TCOM", L"Composer", L"", WRITE_23, ANY},
    {"TCOM", L"Composer", L"", LIST_24, ANY},
    {"TPE3", L"Conductor", L"", WRITE, ANY},
    {"TEXT", L"Lyricist", L"", WRITE_23, ANY},
    {"TEXT", L"Lyricist", L"", LIST_24, ANY},
    {"TPE4", L"Remixer", L"", WRITE, ANY},
    {"TOPE", L"Original Artist", L"", WRITE, ANY},
    {"TOAL", L"Original Album", L"", WRITE, ANY},
    {"TOLY", L"Original Lyricist", L"", WRITE, ANY},

    // Deliberate: the rows for sorting are written in both versions. Version 2.3 does not name their frames, but every
    // player reads them there, and version 2.2 has them as "TSA" and "TSP".
    {"TSOT", L"Name Sort", L"", WRITE, ANY},
    {"TSOP", L"Artist Sort", L"", WRITE, ANY},
    {"TSOA", L"Album Sort", L"", WRITE, ANY},
    {"TSO2", L"Album Artist Sort", L"", WRITE, ANY},
    {"TSOC", L"Composer Sort", L"", WRITE, ANY},

    // Kind
    {"TCON", L"Genre", L"", WRITE_23 | GENRE, ANY},
    {"TCON", L"Genre", L"", LIST_24 | GENRE, ANY},
    {"TMOO", L"Mood", L"", LIST_24, ANY},
    {"TXXX", L"Mood", L"MOOD", WRITE_23, ANY},
    {"TLAN", L"Language", L"", WRITE_23, ANY},
    {"TLAN", L"Language", L"", LIST_24, ANY},
    {"TMED", L"Media", L"", WRITE, ANY},
    {"TBPM", L"BPM", L"", WRITE, ANY},
    {"TKEY", L"Key", L"", WRITE, ANY},
    {"TCMP", L"Compilation", L"", WRITE, ANY},

    // Deliberate: the frames of version 2.3 hold a year, or a day without one. A date stands there in a user text, and
    // a date that is only a year is the field "Year". Version 2.4 has one frame for both, and a year alone is written
    // to it as a date; the field "Year" only reads it.
    {"TDRC", L"Date", L"", WRITE_24 | DATE, ANY},
    {"TXXX", L"Date", L"Date", WRITE_23 | DATE, ANY},
    {"TYER", L"Date", L"", SHARED | DATE, ANY},
    {"TYER", L"Year", L"", WRITE_23, ANY},
    {"TDRC", L"Year", L"", SHARED, ANY},
    {"TDOR", L"Original Date", L"", WRITE_24 | DATE, ANY},
    {"TXXX", L"Original Date", L"Original Date", WRITE_23 | DATE, ANY},
    {"TORY", L"Original Date", L"", SHARED | DATE, ANY},
    {"TORY", L"Original Year", L"", WRITE_23, ANY},
    {"TXXX", L"Original Year", L"Original Year", WRITE_24, ANY},
    {"TDOR", L"Original Year", L"", SHARED, ANY},
    {"TDRL", L"Release Date", L"", WRITE_24 | DATE, ANY},
    {"TXXX", L"Release Date", L"Release Date", WRITE_23 | DATE, ANY},
    {"TDEN", L"Encoding Date", L"", WRITE_24 | DATE, ANY},
    {"TXXX", L"Encoding Date", L"Encoding Date", WRITE_23 | DATE, ANY},

    // Place
    {"TRCK", L"Track #", L"", WRITE | TOTAL, ANY},
    {"TPOS", L"Disc #", L"", WRITE | TOTAL, ANY},

    // Texts
    {"COMM", L"Comment", L"", WRITE, ANY},
    {"TXXX", L"Comment", L"Comment", READ, ANY},
    {"TDES", L"Comment", L"", READ, ANY},
    {"USLT", L"Lyrics", L"", WRITE | ANY_TEXT, ANY},
    {"TXXX", L"Lyrics", L"LYRICS", READ, ANY},
    {"TXXX", L"Lyrics", L"UNSYNCEDLYRICS", READ, ANY},

    // Origin
    {"TPUB", L"Publisher", L"", WRITE, ANY},
    {"TCOP", L"Copyright", L"", WRITE, ANY},
    {"TPRO", L"Produced Notice", L"", WRITE_24, ANY},
    {"TXXX", L"Produced Notice", L"PRODUCEDNOTICE", WRITE_23, ANY},
    {"TOWN", L"File Owner", L"", WRITE, ANY},
    {"TRSN", L"Radio Station", L"", WRITE, ANY},
    {"TSSE", L"Encoder", L"", WRITE, ANY},
    {"TENC", L"Encoded By", L"", WRITE, ANY},
    {"TSRC", L"ISRC", L"", WRITE, ANY},
    {"TXXX", L"Catalog Number", L"CATALOGNUMBER", WRITE, ANY},
    {"TXXX", L"Barcode", L"BARCODE", WRITE, ANY},

    // Measurements
    {"TXXX", L"Replay Gain Track", L"REPLAYGAIN_TRACK_GAIN", WRITE | GAIN, ANY},
    {"TXXX", L"Replay Gain Track Peak", L"REPLAYGAIN_TRACK_PEAK", WRITE | PEAK, ANY},
    {"TXXX", L"Replay Gain Album", L"REPLAYGAIN_ALBUM_GAIN", WRITE | GAIN, ANY},
    {"TXXX", L"Replay Gain Album Peak", L"REPLAYGAIN_ALBUM_PEAK", WRITE | PEAK, ANY},
    {"TXXX", L"Replay Gain Reference", L"REPLAYGAIN_REFERENCE_LOUDNESS", WRITE, ANY},
    {"TXXX", L"R128 Track Gain", L"R128_TRACK_GAIN", WRITE, ANY}, // RFC 7845, 5.2.1: a whole number of 1/256 dB
    {"TXXX", L"R128 Album Gain", L"R128_ALBUM_GAIN", WRITE, ANY},

    // The listener's own
    {"POPM", L"Rating", L"", WRITE, ANY},
    {"TXXX", L"Play Count", L"Play Count", WRITE, ANY},

    // Deliberate: a picture of type 0 is taken for the cover, since many writers leave the type there. Pictures of
    // other types are shown where there is no cover, and stay when one is set.
    {"APIC", L"Image File", L"Picture", WRITE, COVER},
    {"APIC", L"Image File", L"", READ, OTHER_PICTURE},
    {"APIC", L"Image File", L"", READ, JPEG_AS_TYPE},
    {"APIC", L"Image File", L"", READ, PNG_AS_TYPE},
    {"APIC", L"Image File", L"", SHARED, ANY},

    // Addresses
    {"WOAR", L"Artist URL", L"", WRITE, ANY},
    {"WOAF", L"File URL", L"", WRITE, ANY},
    {"WOAS", L"Source URL", L"", WRITE, ANY},
    {"WCOM", L"Commercial URL", L"", WRITE, ANY},
    {"WCOP", L"Copyright URL", L"", WRITE, ANY},
    {"WPAY", L"Payment URL", L"", WRITE, ANY},
    {"WPUB", L"Publisher URL", L"", WRITE, ANY},
    {"WORS", L"Radio Station URL", L"", WRITE, ANY},

    // Podcasts
    {"WFED", L"Feed URL", L"", WRITE, ANY},
    {"TXXX", L"Episode URL", L"Episode URL", WRITE, ANY},
    {"TGID", L"Episode URL", L"", READ, ANY},
    {"PCST", L"iTunes Podcast Flag", L"", WRITE, ANY},
    {"TCAT", L"Podcast Category", L"", WRITE, ANY},
    {"TKWD", L"Podcast Keywords", L"", WRITE, ANY},

    // What saving keeps up for other players; nobody is shown these names.
    // Deliberate: the date is no "TDRL". A save removes these fields where there is no feed, and with it would go the
    // release date of every album.
    {"TDES", L"!@#$% iTunes Podcast Description !@#$%", L"", WRITE, ANY},
    {"WFED", L"!@#$% iTunes Podcast Feed URL !@#$%", L"", WRITE, ANY},
    {"TGID", L"!@#$% iTunes Podcast Episode URL !@#$%", L"", WRITE, ANY},
    {"PCST", L"!@#$% iTunes Podcast Flag !@#$%", L"", WRITE, ANY},
    {"TXXX", L"!@#$% iTunes Podcast Date !@#$%", L"iTunes Podcast Date", WRITE | DATE, ANY},

    // Identifiers
    {"TXXX", L"MusicBrainz Track Id", L"MusicBrainz Track Id", WRITE, ANY},
    {"TXXX", L"MusicBrainz Release Track Id", L"MusicBrainz Release Track Id", WRITE, ANY},
    {"TXXX", L"MusicBrainz Album Id", L"MusicBrainz Album Id", WRITE, ANY},
    {"TXXX", L"MusicBrainz Release Group Id", L"MusicBrainz Release Group Id", WRITE, ANY},
    {"TXXX", L"MusicBrainz Artist Id", L"MusicBrainz Artist Id", WRITE_23, ANY},
    {"TXXX", L"MusicBrainz Artist Id", L"MusicBrainz Artist Id", LIST_24, ANY},
    {"TXXX", L"MusicBrainz Album Artist Id", L"MusicBrainz Album Artist Id", WRITE_23, ANY},
    {"TXXX", L"MusicBrainz Album Artist Id", L"MusicBrainz Album Artist Id", LIST_24, ANY},
    {"TXXX", L"MusicBrainz Work Id", L"MusicBrainz Work Id", WRITE, ANY},
    {"TXXX", L"MusicBrainz Disc Id", L"MusicBrainz Disc Id", WRITE, ANY},
    {"TXXX", L"MusicBrainz Album Type", L"MusicBrainz Album Type", WRITE, ANY},
    {"TXXX", L"MusicBrainz Album Status", L"MusicBrainz Album Status", WRITE, ANY},
    {"TXXX", L"MusicBrainz Album Release Country", L"MusicBrainz Album Release Country", WRITE, ANY},
    {"TXXX", L"AcoustID Id", L"Acoustid Id", WRITE, ANY},
    {"TXXX", L"AcoustID Fingerprint", L"Acoustid Fingerprint", WRITE, ANY},
};

} // namespace

std::span<const ID3V2_FIELD_ROW> GetID3v2FieldRows() { return s_Rows; }
