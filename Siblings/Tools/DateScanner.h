// A place in a text that is taken apart from left to right. Digits, letters and blanks are those of ASCII; a comparison
// ignores case. An operation that fails takes nothing, unless it says otherwise.

#pragma once

#include <cstddef>
#include <string_view>

class DateScanner
{
public:
    // The text without the blanks at its ends. It outlives the scanner.
    explicit DateScanner(std::wstring_view strText) : m_strRest(strText)
    {
        TakeBlanks();
        while (!m_strRest.empty() && IsBlank(m_strRest.back()))
            m_strRest.remove_suffix(1);
    }

    bool IsAtEnd() const { return m_strRest.empty(); }

    // How many digits stand here in a row.
    int CountDigits() const
    {
        size_t nDigits = 0;
        while (nDigits < m_strRest.size() && nDigits < MAX_DIGITS && IsDigit(m_strRest[nDigits]))
            ++nDigits;
        return static_cast<int>(nDigits);
    }

    // The number of the next nDigits characters, which must be digits; others may follow. nDigits is 1 to 4.
    bool TakeDigits(int nDigits, int& nValue)
    {
        if (CountDigits() < nDigits)
            return false;
        nValue = 0;
        for (int n = 0; n < nDigits; ++n)
            nValue = nValue * 10 + (m_strRest[static_cast<size_t>(n)] - L'0');
        m_strRest.remove_prefix(static_cast<size_t>(nDigits));
        return true;
    }

    // A fraction of nUnit, cut to a whole number; 0 if no point or comma stands here. False if no digit follows one.
    bool TakeFraction(int nUnit, int& nValue)
    {
        nValue = 0;
        if (!TakeCharacter(L'.') && !TakeCharacter(L','))
            return true;
        if (CountDigits() == 0)
            return false;
        constexpr long long BILLION = 1'000'000'000; // what lies behind nine digits moves nothing
        long long nNumerator = 0;
        for (long long nPlace = BILLION / 10; !m_strRest.empty() && IsDigit(m_strRest.front()); nPlace /= 10)
        {
            nNumerator += (m_strRest.front() - L'0') * nPlace;
            m_strRest.remove_prefix(1);
        }
        nValue = static_cast<int>(nNumerator * nUnit / BILLION);
        return true;
    }

    bool TakeCharacter(wchar_t cLower)
    {
        if (m_strRest.empty() || ToLower(m_strRest.front()) != cLower)
            return false;
        m_strRest.remove_prefix(1);
        return true;
    }

    // True if there was at least one.
    bool TakeBlanks()
    {
        const size_t nBefore = m_strRest.size();
        while (!m_strRest.empty() && IsBlank(m_strRest.front()))
            m_strRest.remove_prefix(1);
        return m_strRest.size() < nBefore;
    }

    std::wstring_view TakeLetters()
    {
        size_t nLetters = 0;
        while (nLetters < m_strRest.size() && ToLower(m_strRest[nLetters]) >= L'a' &&
               ToLower(m_strRest[nLetters]) <= L'z')
            ++nLetters;
        const std::wstring_view str = m_strRest.substr(0, nLetters);
        m_strRest.remove_prefix(nLetters);
        return str;
    }

    static bool IsSame(std::wstring_view str, std::wstring_view strLower)
    {
        if (str.size() != strLower.size())
            return false;
        for (size_t n = 0; n < str.size(); ++n)
        {
            if (ToLower(str[n]) != strLower[n])
                return false;
        }
        return true;
    }

private:
    static constexpr size_t MAX_DIGITS = 9; // no form has so many: more make no difference

    static bool IsDigit(wchar_t c) { return c >= L'0' && c <= L'9'; }
    static bool IsBlank(wchar_t c) { return c == L' ' || c == L'\t' || c == L'\r' || c == L'\n'; }
    static wchar_t ToLower(wchar_t c) { return c >= L'A' && c <= L'Z' ? c + (L'a' - L'A') : c; }

    std::wstring_view m_strRest;
};
