// Wide text to narrow text, and the counting of UTF-8.

#include "LyStringFormat.h"
#include <climits>
#include <cstring>
#include <gtest/gtest.h>
#include <memory>
#include <string>

namespace
{
std::string UTF8(const wchar_t* p, int nLength = -1)
{
    std::unique_ptr<char[]> text(LyCharacterHelper::GetUTF8FromUTFN(p, nLength));
    return text.get();
}

std::string ANSI(const wchar_t* p)
{
    std::unique_ptr<char[]> text(LyCharacterHelper::GetANSIFromUTFN(p, 1252));
    return text.get();
}

const unsigned char* Bytes(const char* p) { return reinterpret_cast<const unsigned char*>(p); }
} // namespace

struct UTF8_CASE
{
    const wchar_t* pText;
    const char* pBytes;
};

const UTF8_CASE s_aryUTF8Cases[] = {
    {L"", ""},
    {L"abc", "abc"},
    {L"\x7F", "\x7F"},
    {L"\x80", "\xC2\x80"},
    {L"\xE4", "\xC3\xA4"},
    {L"\x7FF", "\xDF\xBF"},
    {L"\x800", "\xE0\xA0\x80"},
    {L"\x20AC", "\xE2\x82\xAC"},
    {L"\xD83D", "\xED\xA0\xBD"}, // half of a pair is a character like any other
    {L"\xFFFF", "\xEF\xBF\xBF"},
    {L"\x10000", "\xF0\x80\x80"}, // the top bits spill into the first byte
    {L"\x1F600", "\xFF\x98\x80"},
    {L"\x20000", "\xE0\x80\x80"}, // and out of it
    {L"a\xE4\x20AC"
     L"b",
     "a\xC3\xA4\xE2\x82\xAC"
     "b"},
};

TEST(LyCharacterHelperUTF8, WritesUpToThreeBytes)
{
    for (const UTF8_CASE& row : s_aryUTF8Cases)
    {
        EXPECT_EQ(UTF8(row.pText), row.pBytes);
        int nBytes = static_cast<int>(std::strlen(row.pBytes));
        EXPECT_EQ(LyCharacterHelper::GetUTF8Bytes(row.pText, false, -1), nBytes) << row.pBytes;
        EXPECT_EQ(LyCharacterHelper::GetUTF8Bytes(row.pText, true, -1), nBytes + 1) << row.pBytes;
    }
}

TEST(LyCharacterHelperUTF8, NegativeCharactersTakeThreeBytes)
{
    const wchar_t text[] = {-1, INT_MIN, 0};
    EXPECT_EQ(LyCharacterHelper::GetUTF8Bytes(text, false, -1), 6);
    EXPECT_EQ(UTF8(text), "\xFF\xBF\xBF\xE0\x80\x80");
}

TEST(LyCharacterHelperUTF8, TheLengthIsTakenAsItIs)
{
    EXPECT_EQ(UTF8(L"abc", 2), "ab");
    EXPECT_EQ(UTF8(L"abc", 0), "");
    EXPECT_EQ(UTF8(L"abc", -2), "");
    EXPECT_EQ(UTF8(nullptr, -1), "");
    EXPECT_EQ(UTF8(nullptr, 5), "");
    EXPECT_EQ(LyCharacterHelper::GetUTF8Bytes(L"a\0\xE4", true, 3), 5);
    EXPECT_EQ(LyCharacterHelper::GetUTF8Bytes(nullptr, false, 7), 0);
    EXPECT_EQ(LyCharacterHelper::GetUTF8Bytes(nullptr, true, -1), 1);
    EXPECT_EQ(LyCharacterHelper::GetUTF8Bytes(L"abc", false, INT_MIN), 0);
}

TEST(LyCharacterHelperUTF8, DecodeWritesIntoACallersBuffer)
{
    unsigned char buffer[8];
    std::memset(buffer, '!', sizeof buffer);
    EXPECT_EQ(LyCharacterHelper::DecodeUTFNToUTF8(L"a\xE4", buffer, false, -1), 3);
    EXPECT_EQ(std::memcmp(buffer, "a\xC3\xA4!!!!!", 8), 0);
    EXPECT_EQ(LyCharacterHelper::DecodeUTFNToUTF8(L"a\xE4", buffer, true, -1), 4);
    EXPECT_EQ(std::memcmp(buffer, "a\xC3\xA4\0!!!!", 8), 0);
    EXPECT_EQ(LyCharacterHelper::DecodeUTFNToUTF8(L"xyz", buffer, true, 1), 2);
    EXPECT_EQ(std::memcmp(buffer, "x\0\xA4\0!!!!", 8), 0);
    EXPECT_EQ(LyCharacterHelper::DecodeUTFNToUTF8(nullptr, buffer, true, -1), 1);
    EXPECT_EQ(buffer[0], 0);
    EXPECT_EQ(LyCharacterHelper::DecodeUTFNToUTF8(L"abc", nullptr, true, -1), 0);
}

struct SEQUENCE_CASE
{
    const char* pBytes;
    int nSequence; // -7: bad
    int nCharacters;
};

const SEQUENCE_CASE s_arySequenceCases[] = {
    {"a", 1, 1},
    {"\x7F", 1, 1},
    {"\x80", -7, 1}, // a continuation without a lead
    {"\xBF\xBF", -7, 2},
    {"\xC3\xA4", 2, 1},
    {"\xC0\x80", 2, 1}, // longer than it need be
    {"\xDF\xBF", 2, 1},
    {"\xC3", -7, 1},
    {"\xC3"
     "a",
     -7, 2},
    {"\xC3\xC3\xA4", -7, 2},
    {"\xE2\x82\xAC", 3, 1},
    {"\xE2\x82", -7, 2},
    {"\xE2\x82"
     "a",
     -7, 3},
    {"\xE2"
     "a",
     -7, 2},
    {"\xE0\x80\x80", 3, 1},
    {"\xF0\x9F\x98\x80", 3, 2}, // a sequence of three, and a byte
    {"\xFD\xBF\xBF", 3, 1},
    {"\xFE\xBF\xBF", -7, 3},
    {"\xFF\x98\x80", -7, 3},
    {"a\xC3\xA4\xE2\x82\xAC", 1, 3},
};

TEST(LyCharacterHelperUTF8, CountsSequences)
{
    for (const SEQUENCE_CASE& row : s_arySequenceCases)
    {
        int nBytes = static_cast<int>(std::strlen(row.pBytes));
        EXPECT_EQ(LyCharacterHelper::GetUTF8CharacterBytes(Bytes(row.pBytes), -7), row.nSequence) << nBytes;
        EXPECT_EQ(LyCharacterHelper::GetUTF8Characters(Bytes(row.pBytes), nBytes), row.nCharacters) << nBytes;
        EXPECT_EQ(LyCharacterHelper::GetUTF8Characters(Bytes(row.pBytes), -1), row.nCharacters) << nBytes;
    }
    EXPECT_EQ(LyCharacterHelper::GetUTF8CharacterBytes(Bytes(""), -7), 1); // zero is a character
    EXPECT_EQ(LyCharacterHelper::GetUTF8CharacterBytes(nullptr, -7), -7);
}

TEST(LyCharacterHelperUTF8, LooksAtNoMoreBytesThanItMay)
{
    const unsigned char bytes[] = {'a', 0xE2, 0x82};
    EXPECT_EQ(LyCharacterHelper::GetUTF8Characters(bytes, 3), 3); // the sequence is not whole
    EXPECT_EQ(LyCharacterHelper::GetUTF8Characters(bytes, 2), 2);
    EXPECT_EQ(LyCharacterHelper::GetUTF8Characters(bytes, 0), 0);
    EXPECT_EQ(LyCharacterHelper::GetUTF8Characters(bytes, -2), 0);
    EXPECT_EQ(LyCharacterHelper::GetUTF8Characters(nullptr, 5), 0);
    EXPECT_EQ(LyCharacterHelper::GetUTF8Characters(nullptr, -1), 0);
}

TEST(LyCharacterHelperANSI, WritesBytesBelow256)
{
    EXPECT_EQ(ANSI(L""), "");
    EXPECT_EQ(ANSI(nullptr), "");
    EXPECT_EQ(ANSI(L"a\xE4\xFF"), "a\xE4\xFF");
    EXPECT_EQ(ANSI(L"\x100\x20AC\x1F600z"), "???z");
    const wchar_t textNegative[] = {-1, L'a', 0};
    EXPECT_EQ(ANSI(textNegative), "?a");
}

TEST(LyCharacterHelperANSI, TheCodePageIsIgnored)
{
    for (unsigned int nCodePage : {0U, 437U, 1252U, 65001U, UINT_MAX})
    {
        std::unique_ptr<char[]> text(LyCharacterHelper::GetANSIFromUTFN(L"\xE4\x20AC", nCodePage));
        EXPECT_STREQ(text.get(), "\xE4?");
    }
}

TEST(LyCharacterHelperHexDigit, KnowsBothCases)
{
    EXPECT_EQ(LyCharacterHelper::GetHexDigit(L'0'), 0);
    EXPECT_EQ(LyCharacterHelper::GetHexDigit(L'9'), 9);
    EXPECT_EQ(LyCharacterHelper::GetHexDigit(L'a'), 10);
    EXPECT_EQ(LyCharacterHelper::GetHexDigit(L'F'), 15);
    for (wchar_t c : {L'g', L'G', L'/', L':', L'@', L'`', L'\0', L'\x661', wchar_t{INT_MIN + 'a'}, wchar_t{-1}})
        EXPECT_EQ(LyCharacterHelper::GetHexDigit(c), -1) << static_cast<int>(c);
}
