// Numbers written.

#include "LyStringFormat.h"
#include "StringTestSupport.h"
#include <algorithm>
#include <climits>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <string>

namespace
{
constexpr int BUFFER_CHARS = 80;
constexpr double INFINITE = std::numeric_limits<double>::infinity();
constexpr double NO_NUMBER = std::numeric_limits<double>::quiet_NaN();

std::wstring Unsigned(unsigned long long nValue, int nMinDigits, int nBase, int nFlags, int nRoom = BUFFER_CHARS)
{
    wchar_t buffer[BUFFER_CHARS];
    int nPosition = 0;
    LyString::FromUIntStatic(buffer, nRoom, nPosition, nValue, nMinDigits, nBase, nFlags);
    return {buffer, static_cast<size_t>(nPosition)};
}

std::wstring Signed(long long nValue, int nMinDigits, int nBase, int nFlags, int nRoom = BUFFER_CHARS)
{
    wchar_t buffer[BUFFER_CHARS];
    int nPosition = 0;
    LyString::FromIntStatic(buffer, nRoom, nPosition, nValue, nMinDigits, nBase, nFlags);
    return {buffer, static_cast<size_t>(nPosition)};
}

std::wstring Decimal(double fValue, int nDecimals, bool bFixed, int nMinIntegerDigits = 0, int nFlags = 0)
{
    LyString str(L"old");
    LyString::FromDecimalStatic(str, fValue, nDecimals, bFixed, nMinIntegerDigits, nFlags);
    return Contents(str);
}
} // namespace

// ---- Integers written

TEST(LyStringFromUInt, WritesDigitsOfTheBase)
{
    EXPECT_EQ(Unsigned(0, 0, 10, 0), L"0");
    EXPECT_EQ(Unsigned(0, 1, 10, 0), L"0");
    EXPECT_EQ(Unsigned(1234567890, 0, 10, 0), L"1234567890");
    EXPECT_EQ(Unsigned(ULLONG_MAX, 0, 10, 0), L"18446744073709551615");
    EXPECT_EQ(Unsigned(10, 0, 2, 0), L"1010");
    EXPECT_EQ(Unsigned(ULLONG_MAX, 0, 2, 0), std::wstring(64, L'1'));
    EXPECT_EQ(Unsigned(64, 0, 8, 0), L"100");
    EXPECT_EQ(Unsigned(0xBEEF, 0, 16, 0), L"BEEF");
    EXPECT_EQ(Unsigned(0xBEEF, 0, 16, LYSTRING_NUMBER_LOWER_CASE), L"beef");
    EXPECT_EQ(Unsigned(167, 0, 13, 0), L"CB"); // 12 * 13 + 11
}

TEST(LyStringFromUInt, WritesNumbersOfEveryLength)
{
    unsigned long long nPower = 1;
    for (size_t nZeros = 0; nZeros < 20; ++nZeros)
    {
        EXPECT_EQ(Unsigned(nPower, 0, 10, 0), L"1" + std::wstring(nZeros, L'0'));
        EXPECT_EQ(Unsigned(nPower - 1, 0, 10, 0), nZeros == 0 ? L"0" : std::wstring(nZeros, L'9'));
        nPower *= 10;
    }
    for (int nBits = 0; nBits < 64; ++nBits)
    {
        unsigned long long nValue = 1ULL << nBits;
        EXPECT_EQ(Unsigned(nValue, 0, 10, 0), std::to_wstring(nValue));
        EXPECT_EQ(Unsigned(nValue, 0, 16, 0),
                  std::wstring(1, L"1248"[nBits % 4]) + std::wstring(static_cast<size_t>(nBits / 4), L'0'));
        EXPECT_EQ(Unsigned(nValue, 0, 2, 0), L"1" + std::wstring(static_cast<size_t>(nBits), L'0'));
    }
}

TEST(LyStringFromUInt, FillsUpToTheLeastDigits)
{
    EXPECT_EQ(Unsigned(42, 5, 10, 0), L"00042");
    EXPECT_EQ(Unsigned(42, 2, 10, 0), L"42");
    EXPECT_EQ(Unsigned(42, -7, 10, 0), L"42");
    EXPECT_EQ(Unsigned(42, INT_MIN, 10, 0), L"42");
    EXPECT_EQ(Unsigned(0, 3, 10, 0), L"000");
    EXPECT_EQ(Unsigned(7, 30, 10, 0), std::wstring(29, L'0') + L"7");
    EXPECT_EQ(Unsigned(42, 5, 10, LYSTRING_NUMBER_LEADING_BLANKS), L"   42");
    EXPECT_EQ(Unsigned(0, 3, 10, LYSTRING_NUMBER_LEADING_BLANKS), L"  0");
    EXPECT_EQ(Unsigned(100, 5, 10, LYSTRING_NUMBER_LEADING_BLANKS), L"  100");
}

TEST(LyStringFromUInt, WritesSignAndPrefix)
{
    EXPECT_EQ(Unsigned(42, 0, 10, LYSTRING_NUMBER_PLUS_SIGN), L"+42");
    EXPECT_EQ(Unsigned(0, 0, 10, LYSTRING_NUMBER_PLUS_SIGN), L"+0");
    EXPECT_EQ(Unsigned(255, 0, 16, LYSTRING_NUMBER_HEX_PREFIX), L"0xFF");
    EXPECT_EQ(Unsigned(255, 4, 16, 7), L"+0x00ff");
    EXPECT_EQ(Unsigned(255, 0, 10, LYSTRING_NUMBER_HEX_PREFIX), L"255");
}

TEST(LyStringFromUInt, RefusesBasesAndBuffers)
{
    EXPECT_EQ(Unsigned(5, 0, 1, 0), L"");
    EXPECT_EQ(Unsigned(5, 0, 0, 0), L"");
    EXPECT_EQ(Unsigned(5, 0, -10, 0), L"");
    EXPECT_EQ(Unsigned(5, 0, 17, 0), L"");
    EXPECT_EQ(Unsigned(5, 0, 16, 0), L"5");
    EXPECT_EQ(Unsigned(5, 0, 10, 0, 7), L"");
    EXPECT_EQ(Unsigned(5, 0, 10, 0, 8), L"5");
    EXPECT_EQ(Unsigned(5, 0, 10, 0, 0), L"");
    EXPECT_EQ(Unsigned(5, 0, 10, 0, INT_MIN), L"");
    int nPosition = 3;
    LyString::FromUIntStatic(nullptr, 80, nPosition, 5, 0, 10, 0);
    EXPECT_EQ(nPosition, 3);
    wchar_t buffer[16] = {};
    for (int nBad : {-1, 9, 16, 17, INT_MAX, INT_MIN})
    {
        nPosition = nBad;
        LyString::FromUIntStatic(buffer, 16, nPosition, 5, 0, 10, 0);
        EXPECT_EQ(nPosition, nBad);
    }
    EXPECT_TRUE(std::all_of(std::begin(buffer), std::end(buffer), [](wchar_t c) { return c == 0; }));
}

TEST(LyStringFromUInt, GoesOnAtThePosition)
{
    wchar_t buffer[16] = {L'a', L'b'};
    buffer[5] = L'!';
    int nPosition = 2;
    LyString::FromUIntStatic(buffer, 16, nPosition, 123, 0, 10, 0);
    EXPECT_EQ(nPosition, 5);
    EXPECT_STREQ(buffer, L"ab123!"); // no terminator is written
}

TEST(LyStringFromUInt, MarksAFullBuffer)
{
    EXPECT_EQ(Unsigned(1234567, 0, 10, 0, 8), L"1234567");
    EXPECT_EQ(Unsigned(12345678, 0, 10, 0, 8), L"1234567?");
    EXPECT_EQ(Unsigned(ULLONG_MAX, 0, 10, 0, 8), L"1844674?");
    EXPECT_EQ(Unsigned(5, 8, 10, 0, 8), L"0000000?");
    EXPECT_EQ(Unsigned(5, 2000000000, 10, 0, 8), L"0000000?");
    EXPECT_EQ(Unsigned(5, INT_MAX, 10, LYSTRING_NUMBER_LEADING_BLANKS, 8), L"       ?");
    EXPECT_EQ(Unsigned(0x12345, 0, 16, 6, 8), L"+0x1234?");
}

TEST(LyStringFromInt, WritesSignedValues)
{
    EXPECT_EQ(Signed(0, 0, 10, 0), L"0");
    EXPECT_EQ(Signed(-42, 0, 10, 0), L"-42");
    EXPECT_EQ(Signed(-42, 4, 10, 0), L"-0042");
    EXPECT_EQ(Signed(-42, 4, 10, LYSTRING_NUMBER_LEADING_BLANKS), L"-  42");
    EXPECT_EQ(Signed(LLONG_MIN, 0, 10, 0), L"-9223372036854775808");
    EXPECT_EQ(Signed(LLONG_MAX, 0, 10, 0), L"9223372036854775807");
    EXPECT_EQ(Signed(LLONG_MIN, 0, 2, 0), L"-1" + std::wstring(63, L'0'));
    EXPECT_EQ(Signed(-255, 0, 16, LYSTRING_NUMBER_HEX_PREFIX), L"-0xFF");
    EXPECT_EQ(Signed(-12345678, 0, 10, 0, 8), L"-123456?");
}

TEST(LyStringFromInt, PlusIsOnlyForValuesAbove0)
{
    EXPECT_EQ(Signed(42, 0, 10, LYSTRING_NUMBER_PLUS_SIGN), L"+42");
    EXPECT_EQ(Signed(0, 0, 10, LYSTRING_NUMBER_PLUS_SIGN), L"0");
    EXPECT_EQ(Signed(-42, 0, 10, LYSTRING_NUMBER_PLUS_SIGN), L"-42");
}

TEST(LyStringFromInt, KnowsBasesUpTo36)
{
    EXPECT_EQ(Signed(35, 0, 36, 0), L"Z");
    EXPECT_EQ(Signed(-36 * 36, 0, 36, 0), L"-100");
    EXPECT_EQ(Signed(1295, 0, 36, LYSTRING_NUMBER_LOWER_CASE), L"zz");
    EXPECT_EQ(Signed(5, 0, 37, 0), L"");
    EXPECT_EQ(Signed(5, 0, 1, 0), L"");
    EXPECT_EQ(Signed(5, 0, 10, 0, 7), L"");
}

TEST(LyStringFromInt, TheStringFormHas31Characters)
{
    LyString str(L"old");
    LyString::FromIntStatic(str, -5, 3, 10, 0);
    EXPECT_STREQ(str, L"-005");
    LyString::FromIntStatic(str, 5, 30, 10, 0);
    EXPECT_EQ(Contents(str), std::wstring(29, L'0') + L"5");
    LyString::FromIntStatic(str, 5, 31, 10, 0);
    EXPECT_EQ(Contents(str), std::wstring(30, L'0') + L"?");
    LyString::FromIntStatic(str, -1, 0, 37, 0);
    EXPECT_STREQ(str, L"");
}

TEST(LyStringFromInt, MembersReplaceTheText)
{
    LyString str(L"old");
    EXPECT_STREQ(str.FromInt(-7), L"-7");
    EXPECT_STREQ(str.FromInt(7, 3), L"007");
    EXPECT_STREQ(str.FromInt(255, 4, 16, LYSTRING_NUMBER_LOWER_CASE), L"00ff");
    EXPECT_STREQ(str.FromInt(INT_MIN), L"-2147483648");
    EXPECT_STREQ(str.FromPointer(reinterpret_cast<void*>(0xABC)), L"00000ABC");
    EXPECT_STREQ(str.FromPointer(nullptr), L"00000000");
}

// ---- Decimals written

TEST(LyStringFromDecimal, WritesWhatTheFractionNeeds)
{
    EXPECT_EQ(Decimal(2.5, -1, false), L"2.5");
    EXPECT_EQ(Decimal(2.0, -1, false), L"2");
    EXPECT_EQ(Decimal(0.0, -1, false), L"0");
    EXPECT_EQ(Decimal(0.125, -1, false), L"0.125");
    EXPECT_EQ(Decimal(0.1, -1, false), L"0.1");
    EXPECT_EQ(Decimal(-12.75, -1, false), L"-12.75");
    EXPECT_EQ(Decimal(1.0 / 3.0, -1, false), L"0.3333333333333333");
    EXPECT_EQ(Decimal(0.0000000000000001, -1, false), L"0.0000000000000001");
    EXPECT_EQ(Decimal(1e-17, -1, false), L"0");
    EXPECT_EQ(Decimal(2.5, -7, false), L"2.5"); // every negative count means 16
}

TEST(LyStringFromDecimal, RoundsToTheDecimals)
{
    EXPECT_EQ(Decimal(0.9996, 3, false), L"1");
    EXPECT_EQ(Decimal(0.9996, 3, true), L"1.000");
    EXPECT_EQ(Decimal(9.9996, 3, true), L"10.000");
    EXPECT_EQ(Decimal(0.9994, 3, false), L"0.999");
    EXPECT_EQ(Decimal(2.345678, 2, false), L"2.35");
    EXPECT_EQ(Decimal(2.5, 0, true), L"3");
    EXPECT_EQ(Decimal(2.5, 0, false), L"3");
    EXPECT_EQ(Decimal(2.4, 0, true), L"2");
    EXPECT_EQ(Decimal(-2.5, 0, true), L"-3");
    EXPECT_EQ(Decimal(0.05, 1, true), L"0.1");
    EXPECT_EQ(Decimal(0.04, 1, true), L"0.0");
    EXPECT_EQ(Decimal(-0.04, 1, true), L"-0.0");
    EXPECT_EQ(Decimal(-0.04, 1, false), L"-0");
}

TEST(LyStringFromDecimal, FixedDecimalsAreFilledUp)
{
    EXPECT_EQ(Decimal(2.0, 2, true), L"2.00");
    EXPECT_EQ(Decimal(2.5, 2, true), L"2.50");
    EXPECT_EQ(Decimal(0.05, 4, true), L"0.0500");
    EXPECT_EQ(Decimal(2.0, 0, true), L"2");
    EXPECT_EQ(Decimal(2.0, 20, true), L"2.0000000000000000"); // 16 at most
    EXPECT_EQ(Decimal(2.0, INT_MAX, true), L"2.0000000000000000");
    EXPECT_EQ(Decimal(2.0, -1, true), L"2");
    EXPECT_EQ(Decimal(2.5, -1, true), L"2.5000000000000000");
    EXPECT_EQ(Decimal(2.50, 5, false), L"2.5"); // without it zeros go
}

TEST(LyStringFromDecimal, FillsTheIntegerPart)
{
    EXPECT_EQ(Decimal(2.5, -1, false, 3), L"002.5");
    EXPECT_EQ(Decimal(2.0, -1, false, 3), L"002");
    EXPECT_EQ(Decimal(-2.5, 2, true, 3), L"-002.50");
    EXPECT_EQ(Decimal(2.05, 2, true, 3, LYSTRING_NUMBER_LEADING_BLANKS), L"  2.05"); // not behind the point
    EXPECT_EQ(Decimal(0.5, -1, false, 2, LYSTRING_NUMBER_LEADING_BLANKS), L" 0.5");
}

TEST(LyStringFromDecimal, WritesTheSign)
{
    EXPECT_EQ(Decimal(2.5, -1, false, 0, LYSTRING_NUMBER_PLUS_SIGN), L"+2.5");
    EXPECT_EQ(Decimal(0.0, -1, false, 0, LYSTRING_NUMBER_PLUS_SIGN), L"+0");
    EXPECT_EQ(Decimal(-2.5, -1, false, 0, LYSTRING_NUMBER_PLUS_SIGN), L"-2.5");
    EXPECT_EQ(Decimal(-0.0, -1, false), L"0");
    EXPECT_EQ(Decimal(2.5, -1, false, 0, LYSTRING_NUMBER_HEX_PREFIX), L"2.5");
}

TEST(LyStringFromDecimal, ThePointGoesBelow192Characters)
{
    EXPECT_EQ(Decimal(2.5, -1, false, 191), std::wstring(190, L'0') + L"2.5");
    EXPECT_EQ(Decimal(2.5, -1, false, 192), std::wstring(191, L'0') + L"2");
    EXPECT_EQ(Decimal(-2.5, -1, false, 191), L"-" + std::wstring(190, L'0') + L"2");
    EXPECT_EQ(Decimal(2.5, -1, false, INT_MAX), std::wstring(255, L'0') + L"?");
}

TEST(LyStringFromDecimal, SurvivesEveryDouble)
{
    EXPECT_EQ(Decimal(9007199254740993.0, -1, false), L"9007199254740992");
    EXPECT_EQ(Decimal(18446744073709549568.0, -1, false), L"18446744073709549568"); // the last below 2 to the 64
    EXPECT_EQ(Decimal(18446744073709551616.0, -1, false), L"18446744073709551615");
    EXPECT_EQ(Decimal(1e300, 2, true), L"18446744073709551615.00");
    EXPECT_EQ(Decimal(-1e300, -1, false), L"-18446744073709551615");
    EXPECT_EQ(Decimal(INFINITE, -1, false), L"18446744073709551615");
    EXPECT_EQ(Decimal(-INFINITE, 0, true), L"-18446744073709551615");
    EXPECT_EQ(Decimal(NO_NUMBER, -1, false), L"0");
    EXPECT_EQ(Decimal(NO_NUMBER, 2, true), L"0.00");
    EXPECT_EQ(Decimal(std::numeric_limits<double>::denorm_min(), 2, true), L"0.00");
    EXPECT_EQ(Decimal(std::nextafter(1.0, 0.0), -1, false), L"0.9999999999999998"); // 17 digits are too many
    EXPECT_EQ(Decimal(std::nextafter(1.0, 0.0), 15, false), L"1");
}

TEST(LyStringFromDecimal, TheMemberIsTheSame)
{
    LyString str(L"old");
    EXPECT_STREQ(str.FromDecimal(2.5, 2, true), L"2.50");
    EXPECT_STREQ(str.FromDecimal(-2.5, -1, false, 3, LYSTRING_NUMBER_LEADING_BLANKS), L"-  2.5");
}

TEST(LyStringFromDecimal, ABufferWithoutRoomStays)
{
    wchar_t buffer[8] = L"old";
    int nPosition = 1;
    LyStringFormat::WriteDecimal(buffer, 8, nPosition, 2.5, -1, false, 0, 0);
    EXPECT_EQ(nPosition, 1);
    EXPECT_STREQ(buffer, L"old");
    nPosition = 0;
    LyStringFormat::WriteDecimal(buffer, 8, nPosition, 2.5, -1, false, 0, 0);
    EXPECT_EQ(std::wstring(buffer, static_cast<size_t>(nPosition)), L"2"); // no room is left for decimals
}

// ---- Plain copies

TEST(LyStringFromStringInMemoryFast, CopiesExactly)
{
    LyString str(L"old");
    str.FromStringInMemoryFast(L"a\0b", 3);
    EXPECT_EQ(Contents(str), std::wstring(L"a\0b", 3));
    EXPECT_STREQ(str.FromStringInMemoryFast(L"abcdef", 2), L"ab");
    EXPECT_STREQ(str.FromStringInMemoryFast(L"abc", 0), L"");
    str = L"old";
    EXPECT_STREQ(str.FromStringInMemoryFast(L"abc", -1), L"");
    str = L"old";
    EXPECT_STREQ(str.FromStringInMemoryFast(nullptr, 5), L"");
    str = L"abcdef";
    EXPECT_STREQ(str.FromStringInMemoryFast(TextOf(str) + 2, 3), L"cde");
}

TEST(LyStringFromBSTR, CopiesAndFreesIfAsked)
{
    LyString str;
    wchar_t* p = LyCom::SysAllocString(L"text");
    EXPECT_STREQ(str.FromBSTR(p, false), L"text");
    EXPECT_STREQ(str.FromBSTR(p, true), L"text"); // a leak if it were not freed
    EXPECT_STREQ(str.FromBSTR(nullptr, false), L"");
    EXPECT_STREQ(str.FromBSTR(nullptr, true), L"");
}
