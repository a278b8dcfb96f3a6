// Integers read, of base 10 and 16.

#include "LyStringFormat.h"
#include <climits>
#include <clocale>
#include <gtest/gtest.h>

namespace
{
using IntReader = LyStringToInteger<int, 10, 2147483647>;
using HexReader = LyStringToInteger<unsigned int, 16, 4294967295>;
using WideHexReader = LyStringToInteger<unsigned long long, 16, 18446744073709551615ULL>;
} // namespace

struct INT_CASE
{
    const wchar_t* pText;
    int nValue;
    int nConsumed;
};

const INT_CASE s_aryIntCases[] = {
    {L"", 0, 0},
    {L"0", 0, 1},
    {L"42", 42, 2},
    {L"-42", -42, 3},
    {L"+42", 42, 3},
    {L" \t\n42 ", 42, 5},
    {L"42abc", 42, 2},
    {L"a42", 0, 0},
    {L"--42", 0, 1},
    {L"+-42", 0, 1},
    {L"- 42", 0, 1},
    {L"-", 0, 1},
    {L"4 2", 4, 1},
    {L"1.5", 1, 1},
    {L"00000000000000000000012", 12, 23},
    {L"2147483647", INT_MAX, 10},
    {L"2147483648", INT_MAX, 9}, // the digit that is too many is not consumed
    {L"-2147483647", -INT_MAX, 11},
    {L"-2147483648", -INT_MAX, 10},
    {L"99999999999999999999999999", INT_MAX, 9},
    {L"\x661\x662", 12, 2},
    {L"\x669", 9, 1},
    {L"\x66A", 0, 0},
    {L"\x65F", 0, 0},
    {L"\xFF17\x1811", 71, 2},
    {L"5\x0967", 51, 2},
};

TEST(LyStringToInteger, ReadsUpToTheFirstForeignCharacter)
{
    for (const INT_CASE& row : s_aryIntCases)
    {
        int nConsumed = -1;
        EXPECT_EQ(IntReader::Get(row.pText, &nConsumed), row.nValue) << row.pText;
        EXPECT_EQ(nConsumed, row.nConsumed) << row.pText;
        EXPECT_EQ(IntReader::Get(row.pText, nullptr), row.nValue) << row.pText;
        EXPECT_EQ(LyString(row.pText).GetInt(), row.nValue) << row.pText;
    }
}

TEST(LyStringToInteger, KnowsTheDigitsOfManyScripts)
{
    for (wchar_t cZero : {0x660, 0x6F0, 0x966, 0x9E6, 0xA66, 0xAE6, 0xB66, 0xC66, 0xCE6, 0xD66, 0xE50, 0xED0, 0xF20,
                          0x1040, 0x17E0, 0x1810, 0xFF10})
    {
        for (int i = 0; i < 10; ++i)
        {
            const wchar_t text[] = {L'1', cZero + i, 0};
            EXPECT_EQ(IntReader::Get(text, nullptr), 10 + i) << static_cast<int>(cZero);
        }
        const wchar_t textBelow[] = {L'1', cZero - 1, 0};
        const wchar_t textAbove[] = {L'1', cZero + 10, 0};
        EXPECT_EQ(IntReader::Get(textBelow, nullptr), 1) << static_cast<int>(cZero);
        EXPECT_EQ(IntReader::Get(textAbove, nullptr), 1) << static_cast<int>(cZero);
    }
}

TEST(LyStringToInteger, SkipsTheWhiteSpaceOfTheLocale)
{
    if (std::setlocale(LC_CTYPE, "C.UTF-8") == nullptr)
        GTEST_SKIP() << "no locale with wide blanks";
    EXPECT_EQ(IntReader::Get(L"\x3000 \x2003"
                             L"42",
                             nullptr),
              42);
    std::setlocale(LC_CTYPE, "C");
}

TEST(LyStringToInteger, NullIs0)
{
    int nConsumed = -1;
    EXPECT_EQ(IntReader::Get(nullptr, &nConsumed), 0);
    EXPECT_EQ(nConsumed, 0);
    EXPECT_EQ(HexReader::Get(nullptr, nullptr), 0U);
}

TEST(LyStringToInteger, ReadsHexadecimal)
{
    EXPECT_EQ(HexReader::Get(L"beef", nullptr), 0xBEEFU);
    EXPECT_EQ(HexReader::Get(L"BEEFG", nullptr), 0xBEEFU);
    EXPECT_EQ(HexReader::Get(L"ffffffff", nullptr), 0xFFFFFFFFU);
    EXPECT_EQ(HexReader::Get(L"100000000", nullptr), 0xFFFFFFFFU);
    EXPECT_EQ(HexReader::Get(L"-1", nullptr), 0xFFFFFFFFU);
    EXPECT_EQ(HexReader::Get(L"-100000000", nullptr), 1U); // minus the largest value
    EXPECT_EQ(WideHexReader::Get(L"ffffffffffffffff", nullptr), ULLONG_MAX);
    EXPECT_EQ(WideHexReader::Get(L"10000000000000000", nullptr), ULLONG_MAX);
    EXPECT_EQ(WideHexReader::Get(L"123456789abcdef0", nullptr), 0x123456789ABCDEF0ULL);
}

TEST(LyStringGetHex, SkipsThePrefix)
{
    EXPECT_EQ(LyString(L"0x1F").GetHex(), 0x1FU);
    EXPECT_EQ(LyString(L"1f").GetHex(), 0x1FU);
    EXPECT_EQ(LyString(L"0xffffffffff").GetHex(), 0xFFFFFFFFU);
    EXPECT_EQ(LyString(L"0x").GetHex(), 0U);
    EXPECT_EQ(LyString(L"0").GetHex(), 0U);
    EXPECT_EQ(LyString(L"").GetHex(), 0U);
    EXPECT_EQ(LyString(L"0x0x5").GetHex(), 0U); // only one
    EXPECT_EQ(LyString(L"0x7fff12345678").GetPointer(), reinterpret_cast<void*>(0x7fff12345678));
    EXPECT_EQ(LyString(L"00000ABC").GetPointer(), reinterpret_cast<void*>(0xABC));
    EXPECT_EQ(LyString(L"").GetPointer(), nullptr);
    LyString str;
    EXPECT_EQ(str.FromPointer(&str).GetPointer(), &str);
}
