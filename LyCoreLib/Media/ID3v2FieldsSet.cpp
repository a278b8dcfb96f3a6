// Writing a field.

#include "ID3v2FieldsBody.h"
#include "ID3v2FieldsDetails.h"
#include "MP3Tag.h"
#include <algorithm>
#include <functional>

namespace
{
constexpr int DATES_VERSION = 4; // from which on one frame holds a date of any precision
constexpr wchar_t VALUE_DELIMITER[] = L";";
constexpr wchar_t FIRST_BEYOND_LATIN1_HALF = 128;

// Takes the frames out of the tag that belong to rows that Set may replace. True if there were any.
bool RemoveFrames(CID3v2Tag& tag, const LyPointerArray<CID3v2Field>& aryFields,
                  const LyPointerArray<CID3v2Frame>& aryFrames)
{
    // Several rows may have found the same frame. The sorted pointers make one walk enough, however many there are.
    LyPointerArray<CID3v2Frame> aryRemoved;
    for (int i = 0; i < aryFrames.GetSize(); ++i)
    {
        if (!aryFields[i]->HasFlag(ID3V2_FIELD_KEEP))
            (void)aryRemoved.Add(aryFrames[i]);
    }
    if (aryRemoved.GetSize() == 0)
        return false;
    std::sort(aryRemoved.begin(), aryRemoved.end(), std::less<>());
    auto IsRemoved = [&](const CID3v2Frame* pFrame)
    { return std::binary_search(aryRemoved.begin(), aryRemoved.end(), pFrame, std::less<>()); };
    CID3v2Frame** ppEnd = std::stable_partition(tag.m_aryFrames.begin(), tag.m_aryFrames.end(), std::not_fn(IsRemoved));
    return tag.m_aryFrames.SetSize(static_cast<int>(ppEnd - tag.m_aryFrames.begin())); // which destroys the others
}

// The first of the flags that is set decides.
void ApplyFlags(const CID3v2Field& row, const LyString& strOldValue, LyString& strText)
{
    if (row.HasFlag(ID3V2_FIELD_TOTAL))
        ID3v2Values::WriteTotal(strText, strOldValue);
    else if (row.HasFlag(ID3V2_FIELD_GAIN))
        ID3v2Values::WriteGain(strText);
    else if (row.HasFlag(ID3V2_FIELD_PEAK))
        ID3v2Values::WritePeak(strText);
    else if (row.HasFlag(ID3V2_FIELD_DATE))
        ID3v2Values::WriteDate(strText);
    else if (row.HasFlag(ID3V2_FIELD_BASE64))
        ID3v2Values::WriteBase64(strText);
}

// Deliberate: a new frame is Latin-1 or UTF-16 in a tag of any version, and the value alone decides, not the
// description that goes with it.
int ChooseEncoding(const LyString& strValue)
{
    for (int i = 0; i < strValue.GetLength(); ++i)
    {
        if (strValue[i] < 0 || strValue[i] >= FIRST_BEYOND_LATIN1_HALF)
            return ID3V2_FRAME_TEXT_ENCODING_UTF16;
    }
    return ID3V2_FRAME_TEXT_ENCODING_ANSI;
}

bool AppendFrame(CID3v2Tag& tag, const CID3v2Field& row, const LyBuffer& body)
{
    CID3v2FrameHeader header;
    std::copy_n(row.m_ID, sizeof header.m_ID, header.m_ID);
    auto* pFrame = new CID3v2Frame(header);
    pFrame->m_Data = body;
    pFrame->SetHeaderFrameBytesFromBuffer(tag.GetMajorVersion());
    (void)pFrame->Decode(); // an opaque frame has no body, and never comes here
    if (tag.m_aryFrames.Add(pFrame) >= 0)
        return true;
    delete pFrame;
    return false;
}

bool WriteRow(CID3v2Tag& tag, const CID3v2Field& row, const LyString& strNewValue, const LyString& strOldValue)
{
    ID3v2FrameValue value;
    value.strText = strNewValue;
    ApplyFlags(row, strOldValue, value.strText);
    // Deliberate: a list is split from the value as it was given.
    if (row.HasFlag(ID3V2_FIELD_LIST))
        value.aryValues.InitFromList(strNewValue, VALUE_DELIMITER, true);
    else
        (void)value.aryValues.Add(value.strText);
    value.nEncoding = ChooseEncoding(strNewValue);
    LyBuffer body;
    BuildID3v2FrameBody(body, row, value);
    return body.GetSize() > 0 && AppendFrame(tag, row, body);
}
} // namespace

bool CID3v2Tag::Set(const LyString& strGivenName, const LyString& strGivenValue)
{
    // What is given may be a text of a frame that goes.
    const LyString strName(strGivenName);   // NOLINT(performance-unnecessary-copy-initialization)
    const LyString strValue(strGivenValue); // NOLINT(performance-unnecessary-copy-initialization)
    int nFirst = 0; // only a value with a total needs the old one, and that of a picture costs much
    const bool bTotal = FindField(strName, nFirst, false, ID3V2_FIELD_TOTAL) != nullptr;
    const LyString strOldValue = bTotal ? GetSimple(strName, 1) : LyString();
    {
        LyPointerArray<CID3v2Field> aryFields;
        LyPointerArray<CID3v2Frame> aryFrames;
        if (FindFieldAndFrame(strName, aryFields, aryFrames, true) && RemoveFrames(*this, aryFields, aryFrames))
            m_bDirty = true;
    }
    if (strName == L"Feed URL")
        (void)Set(L"iTunes Podcast Flag", strValue.IsEmpty() ? L"" : L"0"); // it follows; nobody asks whether it did
    // Deliberate: below version 2.4 a date that is only a year is removed. The field "Year" holds it there.
    const bool bRemove = strValue.IsEmpty() || (strName == L"Date" && GetMajorVersion() < DATES_VERSION &&
                                                ID3v2Values::GetIsYearAlone(strValue));
    // Deliberate: false for a removal, too. It says that no frame was written, not that nothing changed.
    if (bRemove)
        return false;
    const int nMask = GetMajorVersion() < DATES_VERSION ? ID3V2_FIELD_WRITE_23 : ID3V2_FIELD_WRITE_24;
    bool bWritten = false;
    int nPos = 0;
    while (const CID3v2Field* pField = FindField(strName, nPos, true, nMask))
        bWritten = WriteRow(*this, *pField, strValue, strOldValue) || bWritten;
    m_bDirty = m_bDirty || bWritten;
    return bWritten;
}
