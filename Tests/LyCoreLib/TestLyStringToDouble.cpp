// Decimal numbers read.

#include "LyString.h"
#include <climits>
#include <clocale>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <string>

namespace
{
struct DOUBLE_CASE
{
    const wchar_t* pText;
    double fValue;
    int nConsumed;
};

void CheckAll(const DOUBLE_CASE* pCases, size_t nCases, bool bAnySeparator, bool bAllowExponent)
{
    for (size_t i = 0; i < nCases; ++i)
    {
        int nConsumed = -1;
        EXPECT_EQ(LyString::GetDouble(pCases[i].pText, &nConsumed, bAnySeparator, INT_MAX, bAllowExponent),
                  pCases[i].fValue)
            << pCases[i].pText;
        EXPECT_EQ(nConsumed, pCases[i].nConsumed) << pCases[i].pText;
    }
}
} // namespace

const DOUBLE_CASE s_aryPlainCases[] = {
    {L"", 0.0, 0},
    {L"0", 0.0, 1},
    {L"42", 42.0, 2},
    {L"2.5", 2.5, 3},
    {L".5", 0.5, 2},
    {L"5.", 5.0, 2},
    {L"-2.5", -2.5, 4},
    {L"+2.5", 2.5, 4},
    {L"  2.5", 2.5, 5},
    {L"1 234.5", 1234.5, 7}, // blanks group digits
    {L"- 5", -5.0, 3},
    {L"5-", -5.0, 2},
    {L"--5", -5.0, 3},
    {L"\x2012"
     L"7",
     -7.0, 2},
    {L"2.5abc", 2.5, 3},
    {L"abc", 0.0, 0},
    {L"\t5", 0.0, 0},
    {L"1,234", 1234.0, 5},   // skipped: it is not the decimal point
    {L"1,234.5", 1234.0, 5}, // the second one stops the scan
    {L"1.2.3", 1.2, 3},
    {L"1.2,3", 1.2, 3},
    {L"1e3", 1.0, 1},   // no exponent was allowed
    {L"\x661", 0.0, 0}, // only plain digits
};

TEST(LyStringGetDouble, ReadsWithTheDecimalPoint)
{
    CheckAll(s_aryPlainCases, std::size(s_aryPlainCases), false, false);
}

const DOUBLE_CASE s_aryAnySeparatorCases[] = {
    {L"1,5", 1.5, 3}, {L"1.5", 1.5, 3}, {L"1,234.5", 1.234, 5}, {L"1.234,5", 1.234, 5}, {L",5", 0.5, 2},
};

TEST(LyStringGetDouble, ReadsWithAnySeparator)
{
    CheckAll(s_aryAnySeparatorCases, std::size(s_aryAnySeparatorCases), true, false);
}

const DOUBLE_CASE s_aryExponentCases[] = {
    {L"1e3", 1000.0, 3},
    {L"1E3", 1000.0, 3},
    {L"1e+3", 1000.0, 4},
    {L"2.5e-3", 0.0025, 6},
    {L"-2.5e2", -250.0, 6},
    {L"1e", 1.0, 2},
    {L"1e2.9", 100.0, 5}, // truncated
    {L"1e2,9x", 100.0, 5},
    {L"1e-2.9", 0.01, 6},
    {L"1e1e1", 1e10, 5}, // an exponent of an exponent
    {L"e5", 0.0, 2},
    {L"1 e 2", 100.0, 5},
    {L"1e2e", 100.0, 4},
    {L"5e-324", 5e-324, 6},
    {L"1e400", std::numeric_limits<double>::infinity(), 5},
    {L"-1e400", -std::numeric_limits<double>::infinity(), 6},
    {L"1e-400", 0.0, 6},
    {L"1e1000000000", std::numeric_limits<double>::infinity(), 12},
    {L"1e-1000000000", 0.0, 13},
    {L"0e1000000000", 0.0, 12},
    {L"1e99999999999999999999999999999", std::numeric_limits<double>::infinity(), 31},
    {L"1e1e1e1e1e1e9", std::numeric_limits<double>::infinity(), 13},
    {L"0.001e310", 1e307, 9},
    {L"1e2.5.7", 100.0, 5},
};

TEST(LyStringGetDouble, ReadsExponents) { CheckAll(s_aryExponentCases, std::size(s_aryExponentCases), false, true); }

TEST(LyStringGetDouble, DeepExponentsEndTheNumber)
{
    std::wstring str;
    for (int i = 0; i < 1000000; ++i)
        str += L"0e";
    int nConsumed = 0;
    EXPECT_EQ(LyString::GetDouble(str.c_str(), &nConsumed, false, INT_MAX, true), 0.0);
    EXPECT_EQ(nConsumed, 33); // sixteen of them and one mantissa more
}

TEST(LyStringGetDouble, LongNumbersKeepTheirMagnitude)
{
    EXPECT_EQ(LyString::GetDouble(L"18446744073709551615", nullptr, false, 99, false), 18446744073709551615.0);
    EXPECT_DOUBLE_EQ(LyString::GetDouble(L"18446744073709551616", nullptr, false, 99, false), 18446744073709551616.0);
    EXPECT_DOUBLE_EQ(LyString::GetDouble((L"1" + std::wstring(40, L'0')).c_str(), nullptr, false, 99, false), 1e40);
    EXPECT_DOUBLE_EQ(
        LyString::GetDouble((L"1" + std::wstring(400, L'0') + L".5e-400").c_str(), nullptr, false, 999, true), 1.0);
    EXPECT_DOUBLE_EQ(LyString::GetDouble(L"0.12345678901234567890123456789", nullptr, false, 99, false),
                     0.12345678901234567890);
    EXPECT_EQ(LyString::GetDouble((L"." + std::wstring(100, L'0') + L"1").c_str(), nullptr, false, 999, false), 0.0);
}

TEST(LyStringGetDouble, LooksAtNoMoreThanItMay)
{
    const wchar_t text[] = {L'1', L'2', L'.', L'5', L'e', L'2', L'1'}; // no terminator
    int nConsumed = -1;
    const double fExpected[] = {0.0, 1.0, 12.0, 12.0, 12.5, 12.5, 1250.0};
    for (int nMaxChars = 0; nMaxChars <= 6; ++nMaxChars)
    {
        EXPECT_EQ(LyString::GetDouble(text, &nConsumed, false, nMaxChars, true), fExpected[nMaxChars]) << nMaxChars;
        EXPECT_EQ(nConsumed, nMaxChars);
    }
    EXPECT_EQ(LyString::GetDouble(L"5", &nConsumed, false, -1, true), 0.0);
    EXPECT_EQ(nConsumed, 0);
    EXPECT_EQ(LyString::GetDouble(L"5", &nConsumed, false, INT_MIN, true), 0.0);
    EXPECT_EQ(LyString::GetDouble(nullptr, &nConsumed, false, 10, true), 0.0);
    EXPECT_EQ(nConsumed, 0);
    EXPECT_EQ(LyString::GetDouble(L"5", nullptr, false, 1, true), 5.0);
}

// The C library begins with the locale "C", whose decimal point is a point. The first question decides.
TEST(LyStringGetDecimalPointCharacter, IsThatOfTheFirstLocale)
{
    EXPECT_EQ(LyString::GetDecimalPointCharacter(), L'.');
    if (std::setlocale(LC_ALL, "de_DE.UTF-8") != nullptr)
    {
        EXPECT_EQ(LyString::GetDecimalPointCharacter(), L'.');
        std::setlocale(LC_ALL, "C");
    }
}
