#include "TagEdit.h"
#include "HostError.h"
#include "LyDateTime.h"
#include "Services.h"
#include "Text.h"
#include <algorithm>
#include <charconv>
#include <cmath>

namespace
{
constexpr int LONGEST_NUMBER = 9; // digits of a track, a disc or a total
constexpr int HIGHEST_RATING = 5;
constexpr int DATES_VERSION = 4; // from which on one frame holds a date of any precision
constexpr size_t YEAR_DIGITS = 4;
// A gain that is written as 0.00, which a gain of exactly 0 is not.
constexpr double SMALLEST_GAIN = 0.001;
constexpr double LEAST_GAIN_SHOWN = 0.005;

[[noreturn]] void Refuse(const std::string& strField, const std::string& strValue, const std::string& strWayOut)
{
    const bool bLong = strValue.size() > 40;
    throw HostError(strField + " cannot be \"" + (bLong ? strValue.substr(0, 37) + "..." : strValue) + "\"; " +
                    strWayOut);
}

bool IsPlain(const std::string& str)
{
    return std::all_of(str.begin(), str.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

bool IsNumber(std::string_view str)
{
    return !str.empty() && str.size() <= LONGEST_NUMBER &&
           std::all_of(str.begin(), str.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// One change of one tag.
class FieldChange
{
public:
    FieldChange(CID3v2Tag& tag, const std::string& strName, const std::string& strValue)
        : m_Tag(tag), m_strName(strName), m_strValue(strValue)
    {
    }
    void Run();

private:
    void Set(const std::string& strName, const std::string& strValue);
    void Remove(const std::string& strName) { (void)m_Tag.Set(Widen(strName), LyString()); }
    void RemovePictures();
    void SetDate(const char* pDateField, const char* pYearField);
    void SetByFlags(const CID3v2Field& row);
    void SetNumber();
    double GetDecimal() const;
    void CheckForm(const CID3v2Field& row) const;

    CID3v2Tag& m_Tag;
    const std::string& m_strName;
    const std::string& m_strValue;
};

void FieldChange::Run()
{
    if (GetTagField(m_Tag, m_strName) == m_strValue)
        return;
    if (m_strName == TAG_DATE_FIELD)
        return SetDate(TAG_DATE_FIELD, TAG_YEAR_FIELD);
    if (m_strName == TAG_ORIGINAL_DATE_FIELD)
        return SetDate(TAG_ORIGINAL_DATE_FIELD, TAG_ORIGINAL_YEAR_FIELD);
    if (m_strName == TAG_PICTURE_FIELD)
        return RemovePictures();
    if (m_strValue.empty())
        return Remove(m_strName);
    int nPos = 0;
    const CID3v2Field* pRow = m_Tag.FindField(Widen(m_strName), nPos, false, ID3V2_FIELD_ANY_FLAGS);
    if (pRow != nullptr)
        return SetByFlags(*pRow);
    // The value decides how name and value are stored, and the plain encoding has plain letters only.
    if (!IsPlain(m_strName) && IsPlain(m_strValue))
        throw HostError("the field \"" + m_strName +
                        "\" has a name that cannot go with a value of plain letters; use a plain name.");
    Set(m_strName, m_strValue);
}

void FieldChange::Set(const std::string& strName, const std::string& strValue)
{
    if (!m_Tag.Set(Widen(strName), ToTagText(strValue, strName)))
        Refuse(strName, strValue, "the tag does not take it.");
}

// Also those that are no covers: who takes the picture out does not want to see the next one.
void FieldChange::RemovePictures()
{
    for (int i = m_Tag.m_aryFrames.GetSize() - 1; i >= 0; --i)
    {
        if (m_Tag.m_aryFrames[i]->GetType() != ID3V2_FRAME_TYPE_PICTURE)
            continue;
        m_Tag.m_aryFrames.RemoveAt(i);
        m_Tag.m_bDirty = true;
    }
}

// Version 2.3 has a frame for the year, which other players read, and the date in a text of its own. A year alone is in
// that frame only; version 2.4 has a frame for both.
void FieldChange::SetDate(const char* pDateField, const char* pYearField)
{
    Remove(pYearField);
    if (m_strValue.empty())
        return Remove(pDateField);
    RequireTools();
    LyDateTime date;
    if (!date.Parse(ToTagText(m_strValue, m_strName)))
        Refuse(m_strName, m_strValue, "write it as 1999, 1999-05 or 1999-05-30.");
    const std::string strText = Narrow(date.FormatISO8601(false, true));
    const bool bOlder = m_Tag.GetMajorVersion() < DATES_VERSION;
    const bool bWritten = m_Tag.Set(Widen(pDateField), date.GetFloatString());
    if (bOlder)
        Set(pYearField, strText.substr(0, YEAR_DIGITS));
    else if (!bWritten)
        Refuse(m_strName, m_strValue, "the tag does not take it.");
}

// A new total is written as it is given; without one, the old one stays.
void FieldChange::SetNumber()
{
    const size_t nSlash = m_strValue.find('/');
    const bool bTotal = nSlash != std::string::npos;
    if (!IsNumber(m_strValue.substr(0, nSlash)) || (bTotal && !IsNumber(m_strValue.substr(nSlash + 1))))
        Refuse(m_strName, m_strValue, "write it as 3 or 3/12.");
    if (bTotal)
        Remove(m_strName);
    Set(m_strName, m_strValue);
}

// The number at the start of the value, as in "-6.48 dB".
double FieldChange::GetDecimal() const
{
    const char* pFirst = m_strValue.c_str();
    pFirst += *pFirst == '+' ? 1 : 0;
    double fValue = 0;
    const auto [pEnd, eError] =
        std::from_chars(pFirst, m_strValue.c_str() + m_strValue.size(), fValue, std::chars_format::fixed);
    const std::string_view strRest(pEnd);
    if (eError != std::errc() || !std::isfinite(fValue) ||
        !(strRest.empty() || strRest == " dB" || strRest == "dB" || strRest == " db"))
        Refuse(m_strName, m_strValue, "write a number, as in -6.48 or 0.988553.");
    return fValue;
}

void FieldChange::CheckForm(const CID3v2Field& row) const
{
    const ID3V2_FRAME_TYPES eType = CID3v2Frame::GetFrameType(row.m_ID);
    if (eType == ID3V2_FRAME_TYPE_URL && !IsPlain(m_strValue))
        Refuse(m_strName, m_strValue, "an address has plain letters only, others are written as %C3%A9.");
    if (eType == ID3V2_FRAME_TYPE_RATING &&
        (m_strValue.size() != 1 || m_strValue[0] < '0' || m_strValue[0] > '0' + HIGHEST_RATING))
        Refuse(m_strName, m_strValue, "it is 0 to 5.");
    if (eType == ID3V2_FRAME_TYPE_PODCAST_FLAG && !IsNumber(m_strValue))
        Refuse(m_strName, m_strValue, "it is a number.");
}

void FieldChange::SetByFlags(const CID3v2Field& row)
{
    CheckForm(row);
    if (row.HasFlag(ID3V2_FIELD_TOTAL))
        return SetNumber();
    if (row.HasFlag(ID3V2_FIELD_GAIN) && std::fabs(GetDecimal()) < LEAST_GAIN_SHOWN)
        return Set(m_strName, std::to_string(SMALLEST_GAIN));
    if (row.HasFlag(ID3V2_FIELD_PEAK))
        (void)GetDecimal(); // a number it must be
    if (row.HasFlag(ID3V2_FIELD_DATE))
    {
        RequireTools();
        LyDateTime date;
        if (!date.Parse(ToTagText(m_strValue, m_strName)))
            Refuse(m_strName, m_strValue, "write it as 1999, 1999-05 or 1999-05-30.");
        return Set(m_strName, Narrow(date.GetFloatString()));
    }
    Set(m_strName, m_strValue);
}

bool HasPicture(CID3v2Tag& tag, const LyBuffer& body)
{
    return std::any_of(tag.m_aryFrames.begin(), tag.m_aryFrames.end(),
                       [&](const CID3v2Frame* pFrame)
                       {
                           return pFrame->GetType() == ID3V2_FRAME_TYPE_PICTURE &&
                                  pFrame->m_Data.GetSize() == body.GetSize() &&
                                  std::equal(body.GetData(), body.GetData() + body.GetSize(), pFrame->m_Data.GetData());
                       });
}

// In the place of the cover; the frame is made here, since the type of the image goes by its bytes.
void SetPicture(CID3v2Tag& tag, const TAG_PICTURE& picture)
{
    CID3v2FrameHeader header;
    std::copy_n("APIC", sizeof header.m_ID, header.m_ID);
    auto pFrame = std::make_unique<CID3v2Frame>(header);
    CID3v2Frame::EncodePicture(pFrame->m_Data, picture.image, Widen(picture.strMime), ID3V2_PICTURE_FRONT_COVER);
    if (HasPicture(tag, pFrame->m_Data))
        return;
    (void)tag.Set(Widen(TAG_PICTURE_FIELD), LyString());
    pFrame->SetHeaderFrameBytesFromBuffer(tag.GetMajorVersion());
    (void)pFrame->Decode(); // a picture has all that it takes
    if (tag.m_aryFrames.Add(pFrame.get()) < 0)
        throw HostError("there is no memory for the picture; end other programs first.");
    (void)pFrame.release(); // the tag has it
    tag.m_bDirty = true;
}
} // namespace

TAG_EDIT MakeTagEdit(const TAG_FIELDS& fields, const std::string& strPicture)
{
    TAG_EDIT edit;
    for (const auto& field : fields)
        if (!field.second.empty())
            edit.changes.push_back(field);
    if (!strPicture.empty())
        edit.pPicture = LoadTagPicture(strPicture);
    return edit;
}

void ApplyTagEdit(CID3v2Tag& tag, const TAG_EDIT& edit)
{
    for (const auto& [strSpelling, strValue] : edit.changes)
    {
        const std::string strName = FindTagFieldName(tag, strSpelling);
        if (strName == TAG_PICTURE_FIELD && !strValue.empty())
            throw HostError("a picture is no text; give its file with --picture.");
        FieldChange(tag, strName, strValue).Run();
    }
    if (edit.pPicture != nullptr)
        SetPicture(tag, *edit.pPicture);
}
