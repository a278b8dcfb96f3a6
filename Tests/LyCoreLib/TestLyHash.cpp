#include "LyDateTime.h"
#include "LyMap.h"
#include <gtest/gtest.h>

struct HASH_CASE
{
    const char* pName;
    const wchar_t* pText;
    unsigned long long nCut;   // 64 bits, characters cut to 16 bits
    unsigned long long nWhole; // 64 bits, whole characters
};

class LyHashString : public testing::TestWithParam<HASH_CASE>
{
};

// "ab" is 97 * 65599 + 98; "abc" is that times 65599 plus 99.
INSTANTIATE_TEST_SUITE_P(Table, LyHashString,
                         testing::Values(HASH_CASE{"Null", nullptr, 0, 0}, HASH_CASE{"Empty", L"", 0, 0},
                                         HASH_CASE{"OneCharacter", L"a", 97, 97},
                                         HASH_CASE{"TwoCharacters", L"ab", 6363201, 6363201},
                                         HASH_CASE{"ThreeCharacters", L"abc", 417419622498, 417419622498},
                                         HASH_CASE{"Last16BitCharacter", L"\xffff", 0xffff, 0xffff},
                                         HASH_CASE{"AboveIsCut", L"\x10041", 0x41, 0x10041},
                                         HASH_CASE{"CutToNothing", L"\x20000", 0, 0x20000},
                                         HASH_CASE{"CutInTheMiddle", L"\x10061\x62", 6363201, 4305459265}),
                         [](const auto& row) { return row.param.pName; });

TEST_P(LyHashString, IsTheRecurrence)
{
    EXPECT_EQ(LyHash::HashString(GetParam().pText, true, true), GetParam().nCut);
    EXPECT_EQ(LyHash::HashString(GetParam().pText, true, false), GetParam().nWhole);
}

TEST_P(LyHashString, FollowsTheProcessor)
{
    const bool bSSE2 = (LyCpu::GetFlags() & LyCpu::SSE2) != 0;
    EXPECT_EQ(LyHash::HashString<wchar_t>(GetParam().pText, true), bSSE2 ? GetParam().nCut : GetParam().nWhole);
}

TEST_P(LyHashString, MapHashHas32BitsAndNoCut)
{
    EXPECT_EQ(LyHash::HashText(GetParam().pText, true), static_cast<unsigned int>(GetParam().nWhole));
}

TEST(LyHash, WrapsAt64Bits)
{
    unsigned long long h = 0;
    LyString str;
    for (wchar_t c = L'a'; c <= L'z'; ++c)
    {
        str += c;
        h = h * 65599 + static_cast<unsigned long long>(c);
    }
    EXPECT_EQ(LyHash::HashString<wchar_t>(str, true), h);
    EXPECT_EQ(LyHash::HashText(str, true), static_cast<unsigned int>(h));
}

TEST(LyHash, EqualTextInOtherCaseHasEqualHashes)
{
    EXPECT_EQ(LyHash::HashString<wchar_t>(L"ABC", false), 417419622498ULL);
    EXPECT_EQ(LyHash::HashString<wchar_t>(L"aBc", false), LyHash::HashString<wchar_t>(L"AbC", false));
    EXPECT_NE(LyHash::HashString<wchar_t>(L"aBc", true), LyHash::HashString<wchar_t>(L"AbC", true));
    EXPECT_EQ(LyHash::HashText(L"ABC", false), 807794786U); // 417419622498 modulo 2^32
}

struct EQUAL_CASE
{
    const char* pName;
    const wchar_t* pFirst;
    const wchar_t* pSecond;
    bool bEqualWithCase;
    bool bEqualWithoutCase;
};

class LyHashAreTextsEqual : public testing::TestWithParam<EQUAL_CASE>
{
};

INSTANTIATE_TEST_SUITE_P(Table, LyHashAreTextsEqual,
                         testing::Values(EQUAL_CASE{"Same", L"abc", L"abc", true, true},
                                         EQUAL_CASE{"OtherCase", L"abc", L"aBC", false, true},
                                         EQUAL_CASE{"Longer", L"abc", L"abcd", false, false},
                                         EQUAL_CASE{"Shorter", L"abcd", L"abc", false, false},
                                         EQUAL_CASE{"Different", L"abc", L"abd", false, false},
                                         EQUAL_CASE{"Empty", L"", L"", true, true},
                                         EQUAL_CASE{"NullIsEmpty", nullptr, L"", true, true},
                                         EQUAL_CASE{"NullIsNotText", L"a", nullptr, false, false},
                                         EQUAL_CASE{"BothNull", nullptr, nullptr, true, true},
                                         EQUAL_CASE{"Wide", L"\x10041", L"\x41", false, false}),
                         [](const auto& row) { return row.param.pName; });

TEST_P(LyHashAreTextsEqual, Compares)
{
    const EQUAL_CASE& row = GetParam();
    EXPECT_EQ(LyHash::AreTextsEqual(row.pFirst, row.pSecond, true), row.bEqualWithCase);
    EXPECT_EQ(LyHash::AreTextsEqual(row.pFirst, row.pSecond, false), row.bEqualWithoutCase);
}
