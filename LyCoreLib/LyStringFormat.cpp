#include "LyStringFormat.h"

#include "LyStringWriter.h"
#include <algorithm>
#include <climits>
#include <cwchar>
#include <utility>

namespace
{
// What a directive takes besides its digits: a sign, "0x", and the character that the writers keep for their "?".
constexpr int DIRECTIVE_OVERHEAD = 4;
constexpr int MAX_DECIMAL_INTEGER_DIGITS = 20; // of 64 bits
constexpr int POINTER_DIGITS = 8;
constexpr int MAX_WIDTH = INT_MAX / 10 - 1; // numbers in a format stick here
constexpr long long MAX_FORMAT_CHARACTER = 0xffff;
constexpr int ROOM_FOR_ARGUMENTS = 48; // a first guess

class Expander
{
public:
    Expander(LyString::CFormatArgument** ppArguments, int nArguments, LyString& strOut, int nRoom)
        : m_ppArguments(ppArguments), m_nArguments(ppArguments ? nArguments : 0), m_Writer(strOut, nRoom)
    {
    }

    void Expand(const wchar_t* p);

private:
    const wchar_t* ReadDirective(const wchar_t* p);
    static int ReadNumber(const wchar_t*& p);
    static wchar_t ReadConversion(const wchar_t*& p);
    void PutDirective(wchar_t cConversion);

    const LyString::CFormatArgument* NextArgument(int nType);
    long long NextInteger();
    int GetMinDigits() const;
    int ReserveDigits(int nMinDigits);
    void PutSigned();
    void PutUnsigned();
    void PutHex(int nMinDigits, int nFlags);
    void PutDecimal();
    void PutText();
    void PutCharacter();

    LyString::CFormatArgument** m_ppArguments;
    int m_nArguments;
    int m_nNextArgument = 0;
    LyStringWriter m_Writer;

    // Of the directive being expanded; 0 and -1 stand for not given.
    int m_nFlags = 0;
    int m_nWidth = 0;
    int m_nPrecision = -1;
};

void Expander::Expand(const wchar_t* p)
{
    while (*p)
    {
        const wchar_t* pText = p;
        while (*p && *p != L'%')
            ++p;
        m_Writer.Put(pText, static_cast<int>(p - pText));
        if (*p)
            p = ReadDirective(p + 1);
    }
}

// Expands the directive whose percent sign stands in front of p; returns the end of the directive.
const wchar_t* Expander::ReadDirective(const wchar_t* p)
{
    m_nFlags = 0;
    m_nPrecision = -1;
    if (*p == L' ')
    {
        m_nFlags = LYSTRING_NUMBER_LEADING_BLANKS;
        ++p;
    }
    m_nWidth = ReadNumber(p);
    if (*p == L'.')
    {
        ++p;
        m_nPrecision = ReadNumber(p);
    }
    PutDirective(ReadConversion(p));
    return p;
}

int Expander::ReadNumber(const wchar_t*& p)
{
    int nNumber = 0;
    for (; *p >= L'0' && *p <= L'9'; ++p)
        nNumber = std::min(nNumber * 10 + (*p - L'0'), MAX_WIDTH);
    return nNumber;
}

// A size belongs to the directive only in front of a conversion that knows it; else it is text like any other letter.
wchar_t Expander::ReadConversion(const wchar_t*& p)
{
    if (p[0] == L'l' && (p[1] == L'd' || p[1] == L'u' || p[1] == L'x' || p[1] == L's'))
        p += 1;
    else if (p[0] == L'I' && p[1] == L'6' && p[2] == L'4' && (p[3] == L'd' || p[3] == L'u'))
        p += 3;
    wchar_t cConversion = *p;
    if (cConversion)
        ++p;
    return cConversion;
}

void Expander::PutDirective(wchar_t cConversion)
{
    switch (cConversion)
    {
    case 0:
        return; // a lonely percent sign at the end
    case L'd':
    case L'i':
        return PutSigned();
    case L'u':
        return PutUnsigned();
    case L'x':
        return PutHex(GetMinDigits(), m_nFlags | LYSTRING_NUMBER_LOWER_CASE);
    case L'X':
        return PutHex(GetMinDigits(), m_nFlags);
    case L'p':
        return PutHex(std::max(GetMinDigits(), POINTER_DIGITS), m_nFlags);
    case L'h':
        return PutHex(std::max(GetMinDigits(), POINTER_DIGITS), m_nFlags | LYSTRING_NUMBER_HEX_PREFIX);
    case L'f':
        return PutDecimal();
    case L's':
        return PutText();
    case L'c':
        return PutCharacter();
    default:
        return m_Writer.Put(cConversion);
    }
}

// Null if the argument is missing or of another type.
const LyString::CFormatArgument* Expander::NextArgument(int nType)
{
    if (m_nNextArgument >= m_nArguments)
        return nullptr;
    const LyString::CFormatArgument* pArgument = m_ppArguments[m_nNextArgument++];
    return pArgument && pArgument->m_nType == nType ? pArgument : nullptr;
}

long long Expander::NextInteger()
{
    const LyString::CFormatArgument* pArgument = NextArgument(LyString::CFormatArgument::INTEGER);
    return pArgument ? pArgument->m_nValue : 0;
}

int Expander::GetMinDigits() const
{
    int nDigits = m_nWidth > 0 ? m_nWidth : std::max(m_nPrecision, 0);
    return std::min(nDigits, LyStringFormat::MAX_MIN_DIGITS);
}

// The room for one integer, enough for all of its digits; 0 without memory, which the number writers take for none.
int Expander::ReserveDigits(int nMinDigits)
{
    int nRoom = std::max(nMinDigits, MAX_DECIMAL_INTEGER_DIGITS) + DIRECTIVE_OVERHEAD;
    return m_Writer.Reserve(nRoom) ? nRoom : 0;
}

void Expander::PutSigned()
{
    long long nValue = NextInteger();
    int nMinDigits = GetMinDigits();
    int nRoom = ReserveDigits(nMinDigits);
    int nWritten = 0;
    LyString::FromIntStatic(m_Writer.GetEnd(), nRoom, nWritten, nValue, nMinDigits, 10, m_nFlags);
    m_Writer.Advance(nWritten);
}

void Expander::PutUnsigned()
{
    auto nValue = static_cast<unsigned long long>(NextInteger());
    int nMinDigits = GetMinDigits();
    int nRoom = ReserveDigits(nMinDigits);
    int nWritten = 0;
    LyString::FromUIntStatic(m_Writer.GetEnd(), nRoom, nWritten, nValue, nMinDigits, 10, m_nFlags);
    m_Writer.Advance(nWritten);
}

void Expander::PutHex(int nMinDigits, int nFlags)
{
    long long nSigned = NextInteger();
    auto nValue = static_cast<unsigned long long>(nSigned);
    // Deliberate: a negative int came here by sign extension, and its caller expects the 8 digits of an int.
    if (nMinDigits <= POINTER_DIGITS && nSigned < 0 && nSigned >= INT_MIN)
        nValue &= UINT_MAX;
    int nRoom = ReserveDigits(nMinDigits);
    int nWritten = 0;
    LyString::FromUIntStatic(m_Writer.GetEnd(), nRoom, nWritten, nValue, nMinDigits, 16, nFlags);
    m_Writer.Advance(nWritten);
}

void Expander::PutDecimal()
{
    const LyString::CFormatArgument* pArgument = NextArgument(LyString::CFormatArgument::DECIMAL);
    wchar_t text[LyStringFormat::MAX_DECIMAL_CHARS];
    int nLength = 0;
    LyStringFormat::WriteDecimal(text, LyStringFormat::MAX_DECIMAL_CHARS, nLength,
                                 pArgument ? pArgument->m_fValue : 0.0, m_nPrecision, m_nPrecision >= 0, m_nWidth,
                                 m_nFlags);
    m_Writer.Put(text, nLength);
}

// Deliberate: the width is the most characters taken, as in the formats of all callers; a precision has no meaning.
void Expander::PutText()
{
    if (m_nNextArgument >= m_nArguments)
        return;
    const LyString::CFormatArgument* pArgument = m_ppArguments[m_nNextArgument++];
    int nType = pArgument ? pArgument->m_nType : LyString::CFormatArgument::NOTHING;
    int nMax = m_nWidth > 0 ? m_nWidth : LyStringBuffer::MAX_CHARACTERS;
    if (nType == LyString::CFormatArgument::WIDE_TEXT)
    {
        static constexpr wchar_t s_Null[] = L"(null)";
        const wchar_t* p = pArgument->m_pText;
        if (p)
            m_Writer.Put(p, static_cast<int>(wcsnlen(p, static_cast<size_t>(nMax))));
        else
            m_Writer.Put(s_Null, static_cast<int>(std::size(s_Null)) - 1);
    }
    else if (nType == LyString::CFormatArgument::STRING && pArgument->m_pString)
    {
        m_Writer.Put(*pArgument->m_pString, std::min(pArgument->m_pString->GetLength(), nMax));
    }
}

void Expander::PutCharacter()
{
    long long nValue = NextInteger();
    if (nValue >= 1 && nValue <= MAX_FORMAT_CHARACTER)
        m_Writer.Put(static_cast<wchar_t>(nValue));
}
} // namespace

void LyStringFormat::BuildFormatString(const wchar_t* pFormat, LyString::CFormatArgument** ppArguments, int nArguments,
                                       LyString& strOut)
{
    if (pFormat == nullptr || *pFormat == 0)
        return strOut.Empty();
    size_t nFormatChars = std::wcslen(pFormat);
    if (nFormatChars > static_cast<size_t>(LyStringBuffer::MAX_CHARACTERS - ROOM_FOR_ARGUMENTS))
        return strOut.Empty();
    Expander(ppArguments, nArguments, strOut, static_cast<int>(nFormatChars) + ROOM_FOR_ARGUMENTS).Expand(pFormat);
}

LyString& LyString::Format(const wchar_t* pFormat) { return *this = pFormat; }

LyString& LyString::Format(const wchar_t* pFormat, CFormatArgument a, CFormatArgument b, CFormatArgument c,
                           CFormatArgument d, CFormatArgument e, CFormatArgument f)
{
    CFormatArgument* pArguments[] = {&a, &b, &c, &d, &e, &f};
    return FormatV(pFormat, pArguments, static_cast<int>(std::size(pArguments)));
}

// The arguments, and the format itself, may be this string: it changes only at the end.
LyString& LyString::FormatV(const wchar_t* pFormat, CFormatArgument** ppArguments, int nArguments)
{
    LyString strResult;
    LyStringFormat::BuildFormatString(pFormat, ppArguments, nArguments, strResult);
    return *this = std::move(strResult);
}
