// The values of fields, as the rows' flags turn them on the way in and out.

#include "ID3v2FieldsDetails.h"
#include "LyBuffer.h"
#include "LyDateTime.h"
#include "LyStringFormat.h"
#include <climits>
#include <cmath>

namespace
{
constexpr wchar_t TOTAL_DELIMITER = L'/';
constexpr wchar_t GENRE_UNKNOWN[] = L"-1";
constexpr wchar_t GAIN_UNIT[] = L"db";
// Some writers repeat the name of the field in its value.
constexpr wchar_t GAIN_NAME[] = L"replaygain_track_gain";
constexpr wchar_t PEAK_NAME[] = L"replaygain_track_peak";
constexpr int GAIN_DECIMALS = 2; // ReplayGain 2.0, metadata format
constexpr int PEAK_DECIMALS = 6;
constexpr int DECIMALS_AS_NEEDED = -1;

// The marks of precision (LyDateTime.h), as fractions of a day.
constexpr double MARK_TOLERANCE = 1.1574074074074073e-7; // 10 milliseconds
constexpr double NO_TIME_MARK = 1.1574074074074074e-6;   // 0.1 seconds
constexpr double MIDNIGHT_MARK = 2.3148148148148148e-6;  // 0.2 seconds
constexpr double ANY_TIME_ABOVE = 1.1574074074074073e-5; // 1 second

bool IsNear(double fFraction, double fMark) { return std::fabs(fFraction - fMark) < MARK_TOLERANCE; }

// Whatever the case, with and without the text service.
void RemoveNoCase(LyString& strText, const LyString& strPattern)
{
    int nFound = strText.FindNoCase(strPattern);
    if (nFound < 0)
        return;
    LyString strRest;
    int nStart = 0;
    for (; nFound >= 0; nFound = strText.FindNoCase(strPattern, nStart))
    {
        strRest.Append(static_cast<const wchar_t*>(strText) + nStart, nFound - nStart, 0);
        nStart = nFound + strPattern.GetLength();
    }
    strText = strRest + strText.Mid(nStart);
}

void FormatNumber(LyString& strValue, double fValue, int nDecimals)
{
    strValue.FromDecimal(fValue, nDecimals, true);
    (void)strValue.Replace(L',', L'.'); // the point of the locale
}
} // namespace

double ID3v2Values::GetNumber(const LyString& strText)
{
    return LyString::GetDouble(strText, nullptr, true, INT_MAX, true);
}

void ID3v2Values::ReadTotal(LyString& strValue) { (void)strValue.RemoveAfter(TOTAL_DELIMITER, true); }

// Deliberate: a value is a number only if it begins with a bracket. Text behind the number goes, digits in it belong to
// the number, and brackets without a number are genre 0.
void ID3v2Values::ReadGenre(LyString& strValue)
{
    if (strValue == GENRE_UNKNOWN)
    {
        strValue.Empty();
        return;
    }
    if (strValue[0] != L'(')
        return;
    LyString strNumber(strValue);
    (void)strNumber.Remove(L'(');
    (void)strNumber.Remove(L')');
    if (const wchar_t* pName = GetGenreName(strNumber.GetInt()))
        strValue = pName;
}

void ID3v2Values::ReadPeak(LyString& strValue) { RemoveNoCase(strValue, PEAK_NAME); }

void ID3v2Values::ReadGain(LyString& strValue)
{
    if (strValue.IsEmpty())
        return;
    RemoveNoCase(strValue, GAIN_UNIT);
    RemoveNoCase(strValue, GAIN_NAME);
    strValue.Format(L"%f", GetNumber(strValue));
}

void ID3v2Values::ReadDate(LyString& strValue)
{
    if (strValue.IsEmpty())
        return;
    LyDateTime date;
    if (date.Parse(strValue))
        strValue.FromDecimal(date.GetValue(), DECIMALS_AS_NEEDED, false);
    else
        strValue.Empty();
}

void ID3v2Values::ReadBase64(LyString& strValue)
{
    if (strValue.IsEmpty())
        return;
    LyBuffer buffer;
    (void)buffer.FromStringBase64(strValue); // nothing in it is an empty text
    strValue.FromBuffer(buffer, LYSTRING_ENCODING_UTF8, false);
}

// Deliberate: a new value that has a total of its own gets the old one behind it.
void ID3v2Values::WriteTotal(LyString& strValue, const LyString& strOldValue)
{
    const int nFound = strOldValue.Find(TOTAL_DELIMITER);
    if (nFound >= 0)
        strValue = LyFormatString(L"%s/%d", strValue, strOldValue.Mid(nFound + 1).GetInt());
}

// Deliberate: a gain of 0, and what is no number, is written as an empty text. The frame is there, and says nothing.
void ID3v2Values::WriteGain(LyString& strValue)
{
    const double fGain = GetNumber(strValue);
    strValue.Empty();
    if (fGain == 0)
        return;
    FormatNumber(strValue, fGain, GAIN_DECIMALS);
    if (fGain > 0)
        strValue.Insert(0, L'+');
    strValue += L" dB";
}

void ID3v2Values::WritePeak(LyString& strValue) { FormatNumber(strValue, GetNumber(strValue), PEAK_DECIMALS); }

void ID3v2Values::WriteDate(LyString& strValue)
{
    strValue = LyDateTime(GetNumber(strValue)).FormatISO8601(false, true);
}

void ID3v2Values::WriteBase64(LyString& strValue)
{
    const int nBytes = LyCharacterHelper::GetUTF8Bytes(strValue, true, -1);
    LyBuffer buffer;
    unsigned char* p = nBytes > 0 ? buffer.GetAppendBlock(nBytes) : nullptr;
    if (p != nullptr)
        (void)LyCharacterHelper::DecodeUTFNToUTF8(strValue, p, true, -1);
    strValue = buffer.ToStringBase64();
}

bool ID3v2Values::GetIsYearAlone(const LyString& strDate)
{
    const double fDate = GetNumber(strDate);
    const LyDateTime::LyBrokenOutDateTime date(fDate, true, true, true);
    if (!date.m_bValid || date.m_nMonth != 0 || date.m_nDay != 1)
        return false;
    const double fFraction = std::fabs(fDate - std::trunc(fDate));
    return fFraction <= ANY_TIME_ABOVE && !IsNear(fFraction, MIDNIGHT_MARK) && !IsNear(fFraction, NO_TIME_MARK);
}
