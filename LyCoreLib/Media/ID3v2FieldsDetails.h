// What the sources of the fields share: a name of older writers, and what turns values between a frame and a field,
// each thing as one row flag asks for it. Values change in place.

#pragma once

#include "LyString.h"

// The description of a comment in which older writers kept a field begins with this; the field's name follows.
constexpr wchar_t ID3V2_OLDER_WRITERS_PREFIX[] = L"Tune Hearth: ";

namespace ID3v2Values
{
// ID3v1 and its extensions: the names of the genres 0 to LAST_GENRE.
constexpr int LAST_GENRE = 147;
const wchar_t* GetGenreName(int nGenre); // null for a number that has none

// A number as people and programs write it, with a point or a comma; 0.0 if the text begins with none.
double GetNumber(const LyString& strText);

// From the frame to the field.
void ReadTotal(LyString& strValue);
void ReadGenre(LyString& strValue);
void ReadPeak(LyString& strValue);
void ReadGain(LyString& strValue);
void ReadDate(LyString& strValue);
void ReadBase64(LyString& strValue);

// From the field to the frame.
void WriteTotal(LyString& strValue, const LyString& strOldValue); // the old one as it stands in the frame
void WriteGain(LyString& strValue);
void WritePeak(LyString& strValue);
void WriteDate(LyString& strValue);
void WriteBase64(LyString& strValue);
// Whether a floating-point date names a year and nothing more. LyDateTime.h tells how it says so.
bool GetIsYearAlone(const LyString& strDate);
} // namespace ID3v2Values
