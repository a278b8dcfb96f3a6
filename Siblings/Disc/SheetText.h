// What the readers of CUE sheets and TOC files share: loading the text, times, codes, and sentences about faults.

#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// A fault in a sheet: the line, from 1 (0: the sheet as a whole), and a sentence without its subject and final stop, in
// the form "what is wrong; what to do about it".
struct SHEET_ERROR
{
    int m_nLine = 0;
    std::string m_strText;
};

constexpr size_t SHEET_MAX_WARNINGS = 100; // a sheet with more is noise, and nobody reads on

// "the path, line 3: what is wrong; what to do about it."
std::string FormatSheetError(const std::string& strPath, const SHEET_ERROR& error);

// Loads a text file of at most 1 MiB and decodes it to UTF-8. False, with the sentence, when it is no such file.
bool LoadSheetText(const std::string& strPath, std::string& strText, std::string& strError);

// All bytes of a plain file of at most nMaxBytes. False, with the reason, when it cannot be had.
bool LoadSmallFile(const std::string& strPath, size_t nMaxBytes, std::string& strContent, std::string& strReason);

// A time "mm:ss:ff" as a number of sectors, -1 for anything else. Minutes to 99, seconds to 59, frames to 74, each of
// one or two digits.
int ParseMSF(std::string_view strTime);
std::string FormatSheetTime(int nSectors);

// A decimal number of digits alone, -1 for anything else or above nMax.
long long ParseDecimal(std::string_view strDigits, long long nMax);

// The catalogue number as 13 digits: a UPC of 12 gets a leading zero, hyphens and blanks are dropped. Thirteen zeros
// mean "none" and give an empty answer, as does anything that is no catalogue number; bValid tells the two apart.
std::string NormaliseMCN(std::string_view strCode, bool& bValid);

// The ISRC as 12 capitals and digits, hyphens and blanks dropped. Answers as above.
std::string NormaliseISRC(std::string_view strCode, bool& bValid);

// A word from a sheet for use in a sentence: in quotation marks, cut after 60 bytes, control characters as '?'.
std::string QuoteWord(std::string_view strWord);
