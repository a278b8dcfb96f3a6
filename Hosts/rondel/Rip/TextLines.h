// The lines of a text log: titles of sections, labels with values behind them, and tables.
//
// Shape:   a label begins in column 2, its value in TEXT_VALUE_COLUMN; what is longer than TEXT_COLUMNS goes on in the
//          same column of the next line, if there are blanks or colons at which it may be broken. Lines end with LF.
// Hostile: values are escaped here (LogEscapes.h). No value makes a line that begins left of its column.
// Threads: an object belongs to one thread.

#pragma once

#include <string>

constexpr size_t TEXT_COLUMNS = 100;
constexpr size_t TEXT_LABEL_COLUMN = 2;
constexpr size_t TEXT_VALUE_COLUMN = 24;

class TextLines
{
public:
    void Title(const std::string& str);   // in column 0, an empty line ahead of it unless it is the first
    void Line(const std::string& strRow); // made by the host from its own words and numbers
    void Empty();
    void Field(const char* pLabel, const std::string& strValue);    // nothing for an empty value
    void Unbroken(const char* pLabel, const std::string& strValue); // on one line, however long: a name to be read back

    const std::string& Get() const { return m_strText; }

private:
    std::string m_strText;
};

// As a line of TextLines::Unbroken begins with it.
std::string MakeLabel(const char* pLabel);

// Values as people read them.
std::string FormatText(const char* pFormat, ...) __attribute__((format(printf, 1, 2)));
std::string FormatReal(double f, const char* pUnit, int nDecimals = 2); // "-inf LUFS" for silence
std::string FormatSum(unsigned int nSum);                               // eight digits; "not known" for 0
std::string FormatSpeed(int nSectors, double fSeconds);                 // "12.3x"; empty if it is not known
std::string FormatDuration(double fSeconds);                            // "m:ss", whatever the number
