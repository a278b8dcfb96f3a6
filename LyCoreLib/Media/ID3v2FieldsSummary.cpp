// A frame as one line for a reader.

#include "ID3v2FieldsDetails.h"
#include "ID3v2Properties.h"
#include "MP3Tag.h"
#include "OptionsHelper.h"

namespace
{
constexpr int LONGEST_LABEL = 20;
constexpr int CUT_LABEL = 18; // and two points
constexpr int LONGEST_VALUE = 128;
constexpr int LONGEST_BINARY_VALUE = LONGEST_VALUE / 4 * 3; // whose base64 text may be as long as that

void FinishLabel(LyString& strLabel)
{
    strLabel.Trim();
    (void)strLabel.RemoveLeft(ID3V2_OLDER_WRITERS_PREFIX, true);
    if (strLabel.GetLength() > LONGEST_LABEL)
        strLabel = strLabel.Left(CUT_LABEL) + L"..";
}

// Without the text of a picture being made for it.
bool IsTooLarge(const CID3v2Frame& frame)
{
    const auto* pOwn = dynamic_cast<const ID3v2Properties*>(frame.m_Properties.m_pProperties);
    return (pOwn != nullptr && pOwn->GetBinaryValueBytes() > LONGEST_BINARY_VALUE) ||
           frame.m_Properties.GetProperty(CID3v2Property::VALUE).GetLength() > LONGEST_VALUE;
}

LyString GetValueText(const CID3v2Frame& frame)
{
    LyString strValue;
    if (frame.GetType() == ID3V2_FRAME_TYPE_OPAQUE)
        strValue = TranslateString(L"<unknown data type>");
    else if (IsTooLarge(frame))
        strValue = TranslateString(L"<too large to display>");
    else
        strValue = frame.m_Properties.GetProperty(CID3v2Property::VALUE);
    (void)strValue.Replace(L"\r\n", L"\n");
    (void)strValue.Replace(L"\n", L"\\n");
    return strValue;
}
} // namespace

LyString CID3v2Tag::GetFrameSummary(int nIndex)
{
    if (nIndex < 0 || nIndex >= m_aryFrames.GetSize())
        return TranslateString(L"<invalid frame>");
    const CID3v2Frame& frame = *m_aryFrames[nIndex];
    LyString strLine;
    for (const char c : frame.m_Header.m_ID)
        strLine += static_cast<wchar_t>(static_cast<unsigned char>(c));

    LyString strLabel = frame.m_Properties.GetProperty(CID3v2Property::DESCRIPTION);
    const int nRow = FindField(frame.m_Header.m_ID, strLabel, ID3V2_FIELD_ANY_FLAGS);
    if (strLabel.IsEmpty() && nRow >= 0)
        strLabel = m_aryFields[nRow]->m_strName;
    FinishLabel(strLabel);
    if (!strLabel.IsEmpty())
        strLine += L" (" + strLabel + L")";

    LyString strPicture = frame.m_Properties.GetProperty(CID3v2Property::PICTURE_TYPE);
    if (strPicture.GetInt() == ID3V2_PICTURE_FRONT_COVER)
        strPicture = TranslateString(L"Cover");
    if (!strPicture.IsEmpty())
        strLine += TranslateString(L" (") + strPicture + L")";
    return strLine + L": " + GetValueText(frame);
}
