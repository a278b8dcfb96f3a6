// The expander of format directives.

#include "LyStringFormat.h"
#include "StringTestSupport.h"
#include <climits>
#include <cstddef>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

using Argument = LyString::CFormatArgument;

static_assert(sizeof(Argument) == 16);
static_assert(offsetof(Argument, m_nType) == 0 && sizeof(Argument::m_nType) == 4);
static_assert(offsetof(Argument, m_nValue) == 8 && sizeof(Argument::m_nValue) == 8);
static_assert(std::is_base_of_v<LyString, LyFormatString>);

namespace
{
struct FORMAT_CASE
{
    const wchar_t* pFormat;
    Argument argument;
    const wchar_t* pResult;
};

void CheckAll(const std::vector<FORMAT_CASE>& aryCases)
{
    for (const FORMAT_CASE& row : aryCases)
    {
        LyString str;
        str.Format(row.pFormat, row.argument);
        EXPECT_EQ(Contents(str), row.pResult) << "of " << row.pFormat;
    }
}

const wchar_t* const s_pNoText = nullptr;
} // namespace

// ---- Arguments

TEST(LyStringFormatArgument, KnowsItsType)
{
    LyString str(L"x");
    wchar_t text[] = L"y";
    EXPECT_EQ(Argument().m_nType, 0);
    EXPECT_EQ(Argument(L"x").m_nType, 1);
    EXPECT_EQ(Argument(text).m_nType, 1);
    EXPECT_EQ(Argument(str).m_nType, 2);
    EXPECT_EQ(Argument(static_cast<const void*>(&str)).m_nType, 3);
    EXPECT_EQ(Argument(1.5).m_nType, 4);
    EXPECT_EQ(Argument(1.5f).m_nType, 4);
    EXPECT_EQ(Argument(str).m_pString, &str);
    EXPECT_EQ(Argument(L"x").m_pText[0], L'x');
}

TEST(LyStringFormatArgument, TakesEveryIntegerAs64Bits)
{
    EXPECT_EQ(Argument(true).m_nValue, 1);
    EXPECT_EQ(Argument('a').m_nValue, 'a');
    EXPECT_EQ(Argument(L'a').m_nValue, 'a');
    EXPECT_EQ(Argument(static_cast<signed char>(-1)).m_nValue, -1);
    EXPECT_EQ(Argument(static_cast<unsigned char>(255)).m_nValue, 255);
    EXPECT_EQ(Argument(static_cast<short>(-2)).m_nValue, -2);
    EXPECT_EQ(Argument(static_cast<unsigned short>(65535)).m_nValue, 65535);
    EXPECT_EQ(Argument(-3).m_nValue, -3);
    EXPECT_EQ(Argument(4294967295U).m_nValue, 4294967295LL);
    EXPECT_EQ(Argument(LONG_MIN).m_nValue, LLONG_MIN);
    EXPECT_EQ(Argument(ULLONG_MAX).m_nValue, -1);
    for (const Argument& argument : {Argument(true), Argument('a'), Argument(1U), Argument(1ULL), Argument(1L)})
        EXPECT_EQ(argument.m_nType, 3);
}

// ---- Text around directives

TEST(LyStringFormat, WithoutArgumentsTheTextIsNotParsed)
{
    LyString str;
    EXPECT_STREQ(str.Format(L"100% %d %s %%"), L"100% %d %s %%");
    EXPECT_STREQ(LyFormatString(L"%d"), L"%d");
    EXPECT_STREQ(str.Format(s_pNoText), L"");
}

TEST(LyStringFormat, PlainTextStays)
{
    CheckAll({
        {L"", 1, L""},
        {L"plain", 1, L"plain"},
        {L"a%db", 1, L"a1b"},
        {L"%d", 1, L"1"},
        {L"100%%", 1, L"100%"},
        {L"%5%", 1, L"%"},
        {L"%", 1, L""},
        {L"x%", 1, L"x"},
        {L"x% 12.", 1, L"x"},
    });
    EXPECT_STREQ(LyFormatString(s_pNoText, 1), L"");
}

TEST(LyStringFormat, UnknownConversionsAreTheirCharacter)
{
    CheckAll({
        {L"%q", 7, L"q"},
        {L"%5q", 7, L"q"},
        {L"%?%d", 7, L"?7"}, // and take no argument
        {L"%I", 7, L"I"},
        {L"%I32d", 7, L"I32d"},
        {L"%I6", 7, L"I6"},
        {L"%I64", 7, L"I64"},
        {L"%I64x", 7, L"I64x"},
        {L"%l", 7, L"l"},
        {L"%lX", 7, L"lX"},
        {L"%ll", 7, L"ll"},
        {L"%n", 7, L"n"},
    });
}

// ---- Integers

TEST(LyStringFormat, WritesSignedIntegers)
{
    CheckAll({
        {L"%d", 42, L"42"},
        {L"%i", 42, L"42"},
        {L"%ld", -42, L"-42"},
        {L"%I64d", LLONG_MAX, L"9223372036854775807"},
        {L"%I64d", LLONG_MIN, L"-9223372036854775808"},
        {L"%d", LLONG_MIN, L"-9223372036854775808"},
        {L"%d", 0, L"0"},
        {L"%d", 'A', L"65"},
        {L"%d", true, L"1"},
        {L"%d", -1, L"-1"},
    });
}

TEST(LyStringFormat, WritesUnsignedIntegers)
{
    CheckAll({
        {L"%u", 42, L"42"},
        {L"%lu", 4294967295U, L"4294967295"},
        {L"%I64u", ULLONG_MAX, L"18446744073709551615"},
        {L"%u", -1, L"18446744073709551615"},
    });
}

TEST(LyStringFormat, WidthOrElsePrecisionIsTheLeastCountOfDigits)
{
    CheckAll({
        {L"%5d", 42, L"00042"},
        {L"%05d", 42, L"00042"},
        {L"%.5d", 42, L"00042"},
        {L"%3.5d", 42, L"042"},
        {L"%2d", 12345, L"12345"},
        {L"%4d", -42, L"-0042"},
        {L"%3u", 7, L"007"},
        {L"%.3u", 7, L"007"},
        {L"%3d", 0, L"000"},
        {L"%.d", 5, L"5"},
        {L"%4x", 0xAB, L"00ab"},
        {L"%.4X", 0xAB, L"00AB"},
        {L"%25d", 1, L"0000000000000000000000001"},
    });
}

TEST(LyStringFormat, ABlankMakesLeadingZerosBlanks)
{
    CheckAll({
        {L"% 5d", 42, L"   42"},
        {L"% 5d", -42, L"-   42"}, // the sign is written first
        {L"% 3u", 7, L"  7"},
        {L"% 4x", 0xAB, L"  ab"},
        {L"% 3d", 0, L"  0"},
        {L"% d", 42, L"42"},
        {L"% .3d", 5, L"  5"},
        {L"% p", 0xAB, L"      AB"},
    });
}

TEST(LyStringFormat, WritesHexadecimal)
{
    CheckAll({
        {L"%x", 0xABCDEF, L"abcdef"},
        {L"%lx", 0xABCDEF, L"abcdef"},
        {L"%X", 0xABCDEF, L"ABCDEF"},
        {L"%p", 0xABC, L"00000ABC"},
        {L"%4p", 0xABC, L"00000ABC"},
        {L"%10p", 0xABC, L"0000000ABC"},
        {L"%p", static_cast<const void*>(nullptr), L"00000000"},
        {L"%p", reinterpret_cast<const void*>(0x7fff12345678), L"7FFF12345678"},
        {L"%h", 0xABC, L"0x00000ABC"},
        {L"%10h", 0xABC, L"0x0000000ABC"},
        {L"%h", 0x123456789AULL, L"0x123456789A"},
        {L"% h", 0xABC, L"0x     ABC"},
    });
}

TEST(LyStringFormat, CutsNegativeIntsToEightHexDigits)
{
    CheckAll({
        {L"%x", -1, L"ffffffff"},
        {L"%8X", -2, L"FFFFFFFE"},
        {L"%p", -1, L"FFFFFFFF"},
        {L"%h", -1, L"0xFFFFFFFF"},
        {L"%x", INT_MIN, L"80000000"},
        {L"%x", static_cast<long long>(INT_MIN) - 1, L"ffffffff7fffffff"},
        {L"%x", LLONG_MIN, L"8000000000000000"},
        {L"%9x", -1, L"ffffffffffffffff"},
        {L"%16X", -1, L"FFFFFFFFFFFFFFFF"},
        {L"%20X", -1, L"0000FFFFFFFFFFFFFFFF"},
    });
}

TEST(LyStringFormat, HugeWidthsAreLimited)
{
    LyString str;
    str.Format(L"%2000000000d|", 7);
    ASSERT_EQ(str.GetLength(), LyStringFormat::MAX_MIN_DIGITS + 1);
    EXPECT_EQ(Contents(str), std::wstring(LyStringFormat::MAX_MIN_DIGITS - 1, L'0') + L"7|");
    str.Format(L"% 99999999999999999999x|", -1);
    EXPECT_EQ(str.GetLength(), LyStringFormat::MAX_MIN_DIGITS + 1);
    EXPECT_EQ(str[0], L' ');
    str.Format(L"%.2147483648u", 7);
    EXPECT_EQ(str.GetLength(), LyStringFormat::MAX_MIN_DIGITS);
    str.Format(L"%2000000000f|", 7.5);
    EXPECT_EQ(Contents(str), std::wstring(255, L'0') + L"?|");
    str.Format(L"%.2000000000f|", 7.5);
    EXPECT_STREQ(str, L"7.5000000000000000|");
    str.Format(L"%2000000000s|", L"abc");
    EXPECT_STREQ(str, L"abc|");
}

// ---- Decimals

TEST(LyStringFormat, WritesDecimals)
{
    CheckAll({
        {L"%f", 2.5, L"2.5"},
        {L"%f", 2.0, L"2"},
        {L"%.2f", 2.0, L"2.00"},
        {L"%.2f", 2.5, L"2.50"},
        {L"%.2f", 2.345678, L"2.35"},
        {L"%.0f", 2.5, L"3"},
        {L"%.f", 2.4, L"2"},
        {L"%3f", 2.5, L"002.5"},
        {L"% 3.1f", 2.5, L"  2.5"},
        {L"%.2f", -0.05, L"-0.05"},
        {L"%.1f", 0.5f, L"0.5"},
    });
}

// ---- Text

TEST(LyStringFormat, WritesText)
{
    LyString str(L"abcdef");
    CheckAll({
        {L"%s", L"abcdef", L"abcdef"},
        {L"%ls", L"abcdef", L"abcdef"},
        {L"%s", str, L"abcdef"},
        {L"<%s>", L"", L"<>"},
        {L"<%s>", LyString(), L"<>"},
        {L"%s", s_pNoText, L"(null)"},
        {L"%3s", s_pNoText, L"(null)"},
    });
}

TEST(LyStringFormat, TheWidthIsTheMostCharactersOfText)
{
    LyString str(L"abcdef");
    CheckAll({
        {L"%3s", L"abcdef", L"abc"},
        {L"%3s", str, L"abc"},
        {L"%3ls", L"abcdef", L"abc"},
        {L"%9s", L"abcdef", L"abcdef"},
        {L"%9s", str, L"abcdef"},
        {L"%.3s", L"abcdef", L"abcdef"}, // the precision is not
        {L"%4.2s", L"abcdef", L"abcd"},
        {L"%0s", L"abcdef", L"abcdef"},
        {L"% 3s", L"abcdef", L"abc"},
    });
}

TEST(LyStringFormat, AStringKeepsItsZeros)
{
    LyString str;
    str.FromStringInMemoryFast(L"a\0b", 3);
    EXPECT_EQ(Contents(LyFormatString(L"<%s>", str)), std::wstring(L"<a\0b>", 5));
}

TEST(LyStringFormat, WritesCharactersUpTo65535)
{
    CheckAll({
        {L"<%c>", L'x', L"<x>"},
        {L"<%c>", 'x', L"<x>"},
        {L"<%c>", 1, L"<\x01>"},
        {L"<%c>", 0xFFFF, L"<\xFFFF>"},
        {L"<%c>", 0, L"<>"},
        {L"<%c>", 0x10000, L"<>"},
        {L"<%c>", -1, L"<>"},
        {L"<%c>", LLONG_MAX, L"<>"},
        {L"<%c>", L"x", L"<>"},
    });
}

// ---- Missing and wrong arguments

TEST(LyStringFormat, WrongTypesCountAsNothing)
{
    LyString str(L"7");
    CheckAll({
        {L"<%d>", Argument(), L"<0>"},
        {L"<%u>", L"7", L"<0>"},
        {L"<%d>", str, L"<0>"},
        {L"<%d>", 7.0, L"<0>"},
        {L"<%x>", 7.0, L"<0>"},
        {L"<%p>", L"7", L"<00000000>"},
        {L"<%f>", 7, L"<0>"},
        {L"<%.1f>", L"7", L"<0.0>"},
        {L"<%s>", Argument(), L"<>"},
        {L"<%s>", 7, L"<>"},
        {L"<%s>", 7.0, L"<>"},
        {L"<%c>", Argument(), L"<>"},
    });
    EXPECT_STREQ(LyFormatString(L"%d%s%d", L"x", 7, 9), L"09"); // wrong ones are used up
}

TEST(LyStringFormat, MissingArgumentsCountAsNothing)
{
    LyString str;
    EXPECT_STREQ(str.FormatV(L"<%d|%u|%x|%f|%s|%c>", nullptr, 0), L"<0|0|0|0||>");
    EXPECT_STREQ(str.FormatV(L"<%d|%s>", nullptr, 3), L"<0|>");
    Argument seven(7);
    Argument* pArguments[] = {nullptr, &seven};
    EXPECT_STREQ(str.FormatV(L"<%d|%d|%d>", pArguments, 2), L"<0|7|0>");
    EXPECT_STREQ(str.FormatV(L"<%s|%d>", pArguments, -1), L"<|0>");
    Argument noString;
    noString.m_nType = Argument::STRING;
    noString.m_pString = nullptr;
    Argument strange(7);
    strange.m_nType = 99;
    Argument* pStrange[] = {&noString, &strange};
    EXPECT_STREQ(str.FormatV(L"<%s|%s>", pStrange, 2), L"<|>");
    EXPECT_STREQ(str.FormatV(nullptr, pArguments, 2), L"");
}

// ---- Whole calls

TEST(LyStringFormat, TakesSixArguments)
{
    LyString str;
    str.Format(L"%d %u %s %s %c %f", -1, 2U, L"three", LyString(L"four"), L'5', 6.5);
    EXPECT_STREQ(str, L"-1 2 three four 5 6.5");
    EXPECT_STREQ(LyFormatString(L"%d %u %s %s %c %f", -1, 2U, L"three", LyString(L"four"), L'5', 6.5),
                 L"-1 2 three four 5 6.5");
    EXPECT_STREQ(str.Format(L"%d%d%d%d%d%d%d", 1, 2, 3, 4, 5, 6), L"1234560");
    EXPECT_STREQ(LyFormatString(L"%%|%d%%", 50), L"%|50%");
}

TEST(LyStringFormat, AStringMayBeFormattedFromItself)
{
    LyString str(L"abc");
    str.Format(L"<%s|%s|%3s>", str, static_cast<const wchar_t*>(str), str);
    EXPECT_STREQ(str, L"<abc|abc|abc>");
    str = L"%d %s";
    EXPECT_STREQ(str.Format(str, 1, str), L"1 %d %s");
    EXPECT_STREQ(str.Format(str), L"1 %d %s");
}

TEST(LyStringFormat, FormatsStringsOfAnyLength)
{
    std::wstring strLong(100000, L'x');
    LyString str(strLong.c_str());
    str.Format(L"%s%s%d%s", str, strLong.c_str(), 7, str);
    EXPECT_EQ(Contents(str), strLong + strLong + L"7" + strLong);
}

TEST(LyStringFormat, BuildReplacesWhatTheTargetHeld)
{
    LyString str(L"old text");
    Argument seven(7);
    Argument* pArguments[] = {&seven};
    LyStringFormat::BuildFormatString(L"%d", pArguments, 1, str);
    EXPECT_STREQ(str, L"7");
    EXPECT_EQ(BlockOf(str)->nReferences, 1); // given back
    LyStringFormat::BuildFormatString(L"%s", pArguments, 1, str);
    EXPECT_STREQ(str, L"");
    LyStringFormat::BuildFormatString(nullptr, pArguments, 1, str);
    EXPECT_STREQ(str, L"");
}
