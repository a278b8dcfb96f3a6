// The working parts of formatting and conversion: the expander of format directives, the encodings, the integer reader.
//
// Errors:  none are reported. Readers stop at the first character that does not fit, writers cut and mark by "?", and
//          what there is no memory for is empty.
// Threads: everything works on the caller's objects and may run in any thread.

#pragma once

#include "LyBuffer.h"
#include "LyString.h"

enum LYSTRING_ENCODING : int
{
    LYSTRING_ENCODING_FIND_OUT = 0,
    LYSTRING_ENCODING_ANSI = 1,
    LYSTRING_ENCODING_UTF8 = 2,
    LYSTRING_ENCODING_UTF16 = 3,
    LYSTRING_ENCODING_UTF8_BOM = 5, // UTF-8 with a possible byte order mark
    LYSTRING_ENCODING_UTF32 = 6
};

// What the number writers do beside writing digits.
enum LYSTRING_NUMBER_FLAGS : int
{
    LYSTRING_NUMBER_LOWER_CASE = 1,     // letters for digits above 9; in decimals: always a point
    LYSTRING_NUMBER_PLUS_SIGN = 2,      // a plus sign for positive values
    LYSTRING_NUMBER_HEX_PREFIX = 4,     // a leading "0x" in base 16
    LYSTRING_NUMBER_LEADING_BLANKS = 32 // blanks instead of leading zeros; the last digit is never one
};

// What LyString::Htmlify escapes beside the less-than sign, the greater-than sign and the ampersand.
enum LYSTRING_HTMLIFY_FLAGS : int
{
    LYSTRING_HTMLIFY_APOSTROPHES = 4,
    LYSTRING_HTMLIFY_QUOTES = 8,
    LYSTRING_HTMLIFY_CONTROLS = 16,                 // below 32, other than tab, line feed and carriage return
    LYSTRING_HTMLIFY_CONTROLS_TO_QUESTION_MARK = 32 // with the flag above: not "&#x1f;" but "?"
};

// Expands a printf-like format straight into a string. No C library format routine is used.
//
//   % [blank] [width] [. precision] conversion
//
//   %                        a percent sign
//   d i ld I64d              signed decimal; the width, or without one the precision, is the least count of digits,
//                            filled up by zeros, or by blanks if the blank was given
//   u lu I64u                unsigned decimal
//   x lx                     hexadecimal in lower case. With at most 8 digits a negative 32 bit number prints as such.
//   X                        hexadecimal in upper case
//   p                        as X, at least 8 digits
//   h                        as p, with "0x" in front
//   f                        LyString::FromDecimalStatic; the precision is a fixed count of decimals
//   s ls                     text; the width is the most characters taken. A null text is "(null)".
//   c                        one character of value 1 to 65535; others give nothing
//   anything else            that character, and the text goes on behind it
//
// An argument that is missing, or of the wrong type, is 0 or no text. Limits: integers are filled up to MAX_MIN_DIGITS
// at most, decimals are cut at MAX_DECIMAL_CHARS.
class LyStringFormat
{
public:
    static constexpr int MAX_MIN_DIGITS = 4096;    // a larger width in a format counts as this one
    static constexpr int MAX_DECIMAL_CHARS = 256;  // the longest decimal number that is written
    static constexpr int MAX_DECIMAL_DIGITS = 16;  // digits behind the point
    static constexpr int MAX_DECIMAL_FILLED = 192; // with as many characters in front there is no point any more

    // What strOut held is replaced. strOut must be none of the arguments.
    static void BuildFormatString(const wchar_t* pFormat, LyString::CFormatArgument** ppArguments, int nArguments,
                                  LyString& strOut);
    // LyString::FromDecimalStatic into a caller's buffer, from nPosition on. What is not a number counts as 0, and an
    // integer part that 64 bits cannot hold as the most that they can, 18446744073709551615.
    static void WriteDecimal(wchar_t* pBuffer, int nBufferChars, int& nPosition, double fValue, int nDecimals,
                             bool bFixedDecimals, int nMinIntegerDigits, int nFlags);
};

// A string made by formatting, for use inside an expression.
class LyFormatString : public LyString
{
public:
    using CFormatArgument = LyString::CFormatArgument;

    LyFormatString(const wchar_t* pFormat) { Format(pFormat); }
    LyFormatString(const wchar_t* pFormat, CFormatArgument a, CFormatArgument b = {}, CFormatArgument c = {},
                   CFormatArgument d = {}, CFormatArgument e = {}, CFormatArgument f = {})
    {
        Format(pFormat, a, b, c, d, e, f);
    }
};

// Conversions between the wide text of the system ("UTFN") and narrow text. Results made by new[] go to the caller.
// They are null only if there is no memory; a null text gives an empty one.
//
// UTF-8 as this system writes and reads it: one byte below 0x80, two below 0x800, three for everything else.
// Deliberate: there is no four-byte form and no surrogate handling; the top bits of a code point from 0x10000 up spill
// into the first byte. Other libraries count bytes in the same way.
class LyCharacterHelper
{
public:
    static char* GetANSIFromUTFN(const wchar_t* p, unsigned int nCodePage); // the code page is ignored
    static char* GetUTF8FromUTFN(const wchar_t* p, int nLength);            // -1 measures
    // The bytes that a text takes, its terminator included if wanted; -1 if they are more than an int can say.
    static int GetUTF8Bytes(const wchar_t* p, bool bWithTerminator, int nLength);
    // Writes that many bytes and returns their count, as GetUTF8Bytes does. Nothing is written on a null pOut.
    static int DecodeUTFNToUTF8(const wchar_t* p, unsigned char* pOut, bool bTerminate, int nLength);
    // The characters that nBytes bytes read as (-1: all up to the first zero).
    static int GetUTF8Characters(const unsigned char* p, int nBytes);
    // The bytes of the sequence at p: 1, 2, 3 or nValueIfBad. Only the bytes of a sequence are looked at.
    static int GetUTF8CharacterBytes(const unsigned char* p, int nValueIfBad);

    static int GetHexDigit(wchar_t c) // its value, or -1
    {
        if (c >= L'0' && c <= L'9')
            return c - L'0';
        wchar_t cLower = c | 0x20;
        return cLower >= L'a' && cLower <= L'f' ? cLower - L'a' + 10 : -1;
    }
};

// Reads an integer of base nBase: white space, one sign, digits (also the decimal digits of other scripts). On overflow
// the value sticks at nMax, and reading stops at the digit that was too many.
template <class T, int nBase, unsigned long long nMax>
class LyStringToInteger
{
public:
    static T Get(const wchar_t* p, int* pnConsumed); // null gives 0; the position reached goes to *pnConsumed
};
extern template class LyStringToInteger<int, 10, 2147483647ULL>;
extern template class LyStringToInteger<unsigned int, 16, 4294967295ULL>;
extern template class LyStringToInteger<unsigned long long, 16, 18446744073709551615ULL>;

// One match of LyString::Replace.
struct LyStringReplaceHit
{
    int nPattern;  // index of the pattern
    int nPosition; // where it begins
};
