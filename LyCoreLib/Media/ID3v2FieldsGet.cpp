// Reading a field.

#include "ID3v2FieldsDetails.h"
#include "MP3Tag.h"

namespace
{
constexpr int RAW_VALUES = 1; // the bit of Get's bRaw
constexpr int READING_FLAGS =
    ID3V2_FIELD_TOTAL | ID3V2_FIELD_GENRE | ID3V2_FIELD_PEAK | ID3V2_FIELD_GAIN | ID3V2_FIELD_DATE | ID3V2_FIELD_BASE64;
constexpr wchar_t ORIGINAL_VALUE[] = L"Value Original"; // with its total

// The order is part of what the flags mean: each one works on what the one before has left.
void ApplyFlags(const CID3v2Field& row, LyPropertyMap& map)
{
    if (!row.PassesMask(READING_FLAGS))
        return;
    LyString strValue = map.GetProperty(CID3v2Property::VALUE);
    if (row.HasFlag(ID3V2_FIELD_TOTAL))
    {
        map.SetProperty(ORIGINAL_VALUE, strValue);
        ID3v2Values::ReadTotal(strValue);
    }
    if (row.HasFlag(ID3V2_FIELD_GENRE))
        ID3v2Values::ReadGenre(strValue);
    if (row.HasFlag(ID3V2_FIELD_PEAK))
        ID3v2Values::ReadPeak(strValue);
    if (row.HasFlag(ID3V2_FIELD_GAIN))
        ID3v2Values::ReadGain(strValue);
    if (row.HasFlag(ID3V2_FIELD_DATE))
        ID3v2Values::ReadDate(strValue);
    if (row.HasFlag(ID3V2_FIELD_BASE64))
        ID3v2Values::ReadBase64(strValue);
    map.SetProperty(CID3v2Property::VALUE, strValue);
}
} // namespace

LyString CID3TagBase::GetSimple(const LyString& strName, int bRaw)
{
    LyPropertyMap map;
    return Get(strName, map, bRaw) ? map.GetProperty(CID3v2Property::VALUE) : LyString();
}

bool CID3v2Tag::Get(const LyString& strName, LyPropertyMap& map, int bRaw)
{
    LyPointerArray<CID3v2Field> aryFields;
    LyPointerArray<CID3v2Frame> aryFrames;
    // Deliberate: asking for a name that nobody knows makes its rows, and a later Set finds them.
    if (!FindFieldAndFrame(strName, aryFields, aryFrames, true) || !map.CopyProperties(aryFrames[0]->m_Properties))
    {
        map.DeleteProperties();
        return false;
    }
    if ((bRaw & RAW_VALUES) == 0)
        ApplyFlags(*aryFields[0], map);
    return true;
}
