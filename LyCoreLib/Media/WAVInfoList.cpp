// The texts of a LIST chunk of type INFO.

#include "LyDateTime.h"
#include "LyStringFormat.h"
#include "WAVInfo.h"
#include <cstring>

namespace
{
constexpr int ID_BYTES = 4;
constexpr int ITEM_HEADER_BYTES = 8; // identifier and size

struct INFO_FIELD
{
    char szID[ID_BYTES + 1];
    const wchar_t* pField;
};

// Deliberate: "TORG" does not begin with I as the published ones do. It is what this system's files hold.
constexpr INFO_FIELD s_aryFields[] = {
    {"IARL", L"Archival Location"}, //
    {"IART", L"Artist"},            //
    {"ICMS", L"Commissioned"},      //
    {"ICMT", L"Comment"},           //
    {"ICOP", L"Copyright"},         //
    {"ICRD", L"Date"},              //
    {"ICRP", L"Cropped"},           //
    {"IDIM", L"Dimensions"},        //
    {"IDPI", L"Dot Per Inch"},      //
    {"IENG", L"Engineer"},          //
    {"IGNR", L"Genre"},             //
    {"IKEY", L"Keywords"},          //
    {"ILGT", L"Lightness"},         //
    {"IMED", L"Medium"},            //
    {"INAM", L"Name"},              //
    {"IPLT", L"Palette Setting"},   //
    {"IPRD", L"Album"},             //
    {"ISBJ", L"Subject"},           //
    {"ISFT", L"Software"},          //
    {"ISHP", L"Sharpness"},         //
    {"ISRC", L"Source"},            //
    {"ISRF", L"Source Form"},       //
    {"ITCH", L"Technician"},        //
    {"ITRK", L"Track #"},           //
    {"TORG", L"Publisher"},         //
};
constexpr char DATE_ID[] = "ICRD";

bool IsID(const unsigned char* p, const char* pID) { return std::memcmp(p, pID, ID_BYTES) == 0; }

// An identifier that is not in the table names its field itself.
LyString GetFieldName(const unsigned char* pID)
{
    for (const INFO_FIELD& field : s_aryFields)
    {
        if (IsID(pID, field.szID))
            return field.pField;
    }
    wchar_t aryName[ID_BYTES + 1] = {};
    for (int i = 0; i < ID_BYTES; ++i)
        aryName[i] = pID[i];
    return aryName;
}

// Deliberate: the last byte becomes a terminator, whatever it is. A text of an even size that has none loses its last
// character.
LyString GetText(const unsigned char* pBody, int nEvenBytes)
{
    LyString str;
    if (nEvenBytes < 1)
        return str;
    LyBuffer body;
    if (!body.FromBuffer(pBody, nEvenBytes))
        return str;
    body.GetData()[nEvenBytes - 1] = 0;
    str.FromBuffer(body, LYSTRING_ENCODING_FIND_OUT, false);
    return str;
}

LyString ToFloatDate(const LyString& strText)
{
    LyDateTime date;
    (void)date.Parse(strText); // what names no date is an empty text
    return date.GetFloatString();
}

unsigned int ReadNumber(const unsigned char* p)
{
    unsigned int n = 0;
    std::memcpy(&n, p, sizeof n);
    return n;
}
} // namespace

bool CWAVInfoListChunk::Parse(const LyBuffer& buffer)
{
    RemoveAll();
    const unsigned char* p = buffer.GetData();
    if (buffer.GetSize() < ID_BYTES || !IsID(p, "INFO"))
        return false;
    for (long long nPos = ID_BYTES; buffer.GetSize() - nPos >= ITEM_HEADER_BYTES;)
    {
        const unsigned char* pID = p + nPos;
        const long long nSize = ReadNumber(pID + ID_BYTES);
        const long long nEven = nSize + (nSize & 1);
        nPos += ITEM_HEADER_BYTES;
        // Deliberate: the pad byte must be there, too. A last item of odd size without one is dropped.
        if (nEven > buffer.GetSize() - nPos)
            break;
        LyString strText = GetText(p + nPos, static_cast<int>(nEven));
        if (IsID(pID, DATE_ID))
            strText = ToFloatDate(strText);
        (void)SetAt(GetFieldName(pID), strText);
        nPos += nEven;
    }
    return true;
}

bool CWAVInfoListChunk::Get(const LyString& strField, LyString& strValue) const
{
    const LyString* pValue = FindValue(strField);
    strValue = pValue != nullptr ? *pValue : LyString();
    return !strValue.IsEmpty();
}

LyString CWAVInfoListChunk::GetTagFormatString() const
{
    LyString str, strField, strText;
    for (LyPOSITION position = GetStartPosition(); GetNextAssoc(position, strField, strText);)
    {
        str += L"\r\n  ";
        str += strField;
        str += L": ";
        str += strText;
    }
    return str;
}
