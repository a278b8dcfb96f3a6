// Narrow and foreign text to wide text, and back.

#include "LyBuffer.h"
#include "LyStringFormat.h"
#include "StringTestSupport.h"
#include <climits>
#include <cstring>
#include <gtest/gtest.h>
#include <memory>
#include <string>

namespace
{
std::wstring UTF8(const std::string& strBytes)
{
    LyString str(L"old");
    return Contents(str.FromUTF8(reinterpret_cast<const unsigned char*>(strBytes.c_str())));
}

// Reads the bytes and looks that the buffer is as it was.
std::wstring FromBytes(const std::string& strBytes, LYSTRING_ENCODING eEncoding, bool bRemoveNulls = false)
{
    LyBuffer buffer;
    buffer.FromBuffer(strBytes.data(), static_cast<int>(strBytes.size()));
    LyString str(L"old");
    str.FromBuffer(buffer, eEncoding, bRemoveNulls);
    EXPECT_EQ(buffer.GetSize(), static_cast<int>(strBytes.size()));
    EXPECT_EQ(std::string(reinterpret_cast<char*>(buffer.GetData()), strBytes.size()), strBytes);
    return Contents(str);
}

template <size_t N>
std::string Raw(const char (&text)[N])
{
    return {text, N - 1}; // with the zeros inside
}
} // namespace

static_assert(LYSTRING_ENCODING_FIND_OUT == 0 && LYSTRING_ENCODING_ANSI == 1 && LYSTRING_ENCODING_UTF8 == 2);
static_assert(LYSTRING_ENCODING_UTF16 == 3 && LYSTRING_ENCODING_UTF8_BOM == 5 && LYSTRING_ENCODING_UTF32 == 6);

// ---- ANSI

TEST(LyStringFromANSI, WidensWithoutSign)
{
    LyString str(L"old");
    EXPECT_STREQ(str.FromANSI("a\xE4\xFF"), L"a\xE4\xFF");
    EXPECT_STREQ(str.FromANSI("abc", -1, true), L"abc");
    EXPECT_STREQ(str.FromANSI("abc", 2, true), L"ab");
    EXPECT_STREQ(str.FromANSI("abc", 0, true), L"");
    str = L"old";
    EXPECT_STREQ(str.FromANSI(nullptr, 5, true), L"");
    str = L"old";
    EXPECT_STREQ(str.FromANSI("abc", -2, true), L"");
    str = L"old";
    EXPECT_STREQ(str.FromANSI(""), L"");
}

TEST(LyStringFromANSI, StopsAtAZeroOnlyIfAsked)
{
    LyString str;
    EXPECT_EQ(Contents(str.FromANSI("a\0b", 3, true)), L"a");
    EXPECT_EQ(Contents(str.FromANSI("a\0b", 3, false)), std::wstring(L"a\0b", 3));
    EXPECT_EQ(Contents(str.FromANSI("a\0b", -1, false)), L"a");
    const char noTerminator[] = {'x', 'y'};
    EXPECT_EQ(Contents(str.FromANSI(noTerminator, 2, true)), L"xy");
}

TEST(LyStringGetANSI, GivesAnOwnedArray)
{
    LyPtr<char, char> text;
    LyString(L"a\xE4\x20AC").GetANSI(text, 1252);
    EXPECT_STREQ(text.Get(), "a\xE4?");
    EXPECT_EQ(text.GetFlags(), 3);
    LyString().GetANSI(text, 0);
    EXPECT_STREQ(text.Get(), "");
}

TEST(LyStringNarrowViews, HoldTheConvertedText)
{
    LyString str(L"a\xE4\x20AC");
    EXPECT_STREQ(LyStringANSI(str).Get(), "a\xE4?");
    EXPECT_STREQ(LyStringUTF8(str).Get(), "a\xC3\xA4\xE2\x82\xAC");
}

// ---- UTF-8

TEST(LyStringFromUTF8, ReadsUpToThreeBytes)
{
    EXPECT_EQ(UTF8(""), L"");
    EXPECT_EQ(UTF8("abc"), L"abc");
    EXPECT_EQ(UTF8("\xC3\xA4"), L"\xE4");
    EXPECT_EQ(UTF8("a\xC3\xA4\xE2\x82\xAC"
                   "b"),
              L"a\xE4\x20AC"
              L"b");
    EXPECT_EQ(UTF8("\xEF\xBF\xBF"), L"\xFFFF");
    EXPECT_EQ(UTF8("\xED\xA0\xBD\xED\xB8\x80"), L"\xD83D\xDE00"); // pairs are not joined
    EXPECT_EQ(UTF8("\xC0\x80z"), std::wstring(L"\0z", 2));
    LyString str(L"old");
    EXPECT_STREQ(str.FromUTF8(static_cast<const unsigned char*>(nullptr)), L"");
}

TEST(LyStringFromUTF8, OtherBytesStandForThemselves)
{
    EXPECT_EQ(UTF8("\x80"), L"\x80");
    EXPECT_EQ(UTF8("\xE4"
                   "bc"),
              L"\xE4"
              L"bc");
    EXPECT_EQ(UTF8("\xC3"), L"\xC3");
    EXPECT_EQ(UTF8("\xE2\x82"), L"\xE2\x82");
    EXPECT_EQ(UTF8("\xE2\x82"
                   "a"),
              L"\xE2\x82"
              L"a");
    EXPECT_EQ(UTF8("\xC3\xC3\xA4"), L"\xC3\xE4");
}

TEST(LyStringFromUTF8, FourByteSequencesAreNotKnown)
{
    // F0 9F 98 is a sequence of three: 10000 + 1F * 40 + 18
    EXPECT_EQ(UTF8("\xF0\x9F\x98\x80"), L"\x107D8\x80");
}

TEST(LyStringFromUTF8, CharactersOfFourBytesDoNotReadBack)
{
    LyString str(L"\x1F600");
    LyStringUTF8 text(str);
    ASSERT_EQ(std::strlen(text.Get()), 3U);
    EXPECT_NE(UTF8(text.Get()), L"\x1F600");
    EXPECT_EQ(UTF8(text.Get()), L"\xFF\x98\x80");
}

TEST(LyStringFromUTF8, AllOthersReadBack)
{
    for (wchar_t c = 1; c < 0x10000; ++c)
    {
        const wchar_t textWide[] = {L'x', c, L'y', 0};
        std::unique_ptr<char[]> text(LyCharacterHelper::GetUTF8FromUTFN(textWide, -1));
        ASSERT_EQ(UTF8(text.get()), textWide) << static_cast<int>(c);
    }
}

TEST(LyStringFromUTF8, ReadsTextOfEveryLength)
{
    for (size_t nLength = 0; nLength < 80; ++nLength)
    {
        std::string strPlain(nLength, 'a');
        EXPECT_EQ(UTF8(strPlain), std::wstring(nLength, L'a'));
        EXPECT_EQ(UTF8(strPlain + "\xC3\xA4"), std::wstring(nLength, L'a') + L"\xE4");
        EXPECT_EQ(UTF8("\xE2\x82\xAC" + strPlain), L"\x20AC" + std::wstring(nLength, L'a'));
    }
    std::string strLong;
    for (int i = 0; i < 100000; ++i)
        strLong += "\xC3\xA4";
    EXPECT_EQ(UTF8(strLong), std::wstring(100000, L'\xE4'));
}

TEST(LyStringFromUTF8, ReadsDefectsInLongText)
{
    std::string strBytes;
    std::wstring strText;
    for (int i = 0; i < 1000; ++i)
    {
        strBytes += "plain\x80\xC3\xE2\x82\xAC\xBF\xFF";
        strText += L"plain\x80\xC3\x20AC\xBF\xFF";
        if (i < 30 || i % 100 == 0)
        {
            EXPECT_EQ(UTF8(strBytes), strText) << i;
        }
    }
    EXPECT_EQ(UTF8(std::string(5000, '\x80')), std::wstring(5000, L'\x80'));
    EXPECT_EQ(UTF8(std::string(5000, '\xE2')), std::wstring(5000, L'\xE2'));
}

TEST(LyStringFromUTF8, AStringCountsAsBytes)
{
    LyString str;
    EXPECT_STREQ(str.FromUTF8(LyString(L"a\xC3\xA4")), L"a\xE4");
    str = L"\xE2\x82\xAC";
    EXPECT_STREQ(str.FromUTF8(str), L"\x20AC");                     // itself, too
    EXPECT_STREQ(str.FromUTF8(LyString(L"\x1C3\x2A4x")), L"\xE4x"); // each character is cut to a byte
    EXPECT_STREQ(str.FromUTF8(LyString(L"a\x100"
                                       L"b")),
                 L"a");
    EXPECT_STREQ(str.FromUTF8(LyString()), L"");
}

// ---- UTF-16 and UTF-32

TEST(LyStringFromUTF16, CopiesUnits)
{
    LyString str(L"old");
    const unsigned short text[] = {'a', 0x20AC, 0xD83D, 0xDE00, 0};
    EXPECT_STREQ(str.FromUTF16(text), L"a\x20AC\xD83D\xDE00");
    EXPECT_STREQ(str.FromUTF16(text, 2), L"a\x20AC");
    EXPECT_STREQ(str.FromUTF16(text, 99, false, false), L"a\x20AC\xD83D\xDE00"); // a zero ends early
    EXPECT_STREQ(str.FromUTF16(text, 2, false, true), L"\x6100\xAC20");
    EXPECT_STREQ(str.FromUTF16(text, 0), L"");
    str = L"old";
    EXPECT_STREQ(str.FromUTF16(text, -2), L"");
    str = L"old";
    EXPECT_STREQ(str.FromUTF16(nullptr, 5), L"");
}

TEST(LyStringFromUTF16, ChecksTheByteOrderMark)
{
    LyString str;
    const unsigned short textPlain[] = {0xFEFF, 'a', 0};
    const unsigned short textSwapped[] = {0xFFFE, 0x6100, 0x3412, 0};
    EXPECT_STREQ(str.FromUTF16(textPlain, -1, true, false), L"a");
    EXPECT_STREQ(str.FromUTF16(textPlain, -1, false, false), L"\xFEFF"
                                                             L"a");
    EXPECT_STREQ(str.FromUTF16(textPlain, -1, true, true), L"\x6100"); // the mark does not take back the default
    EXPECT_STREQ(str.FromUTF16(textSwapped, -1, true, false), L"a\x1234");
    EXPECT_STREQ(str.FromUTF16(textSwapped, -1, true, true), L"a\x1234");
    EXPECT_STREQ(str.FromUTF16(textSwapped, -1, false, false), L"\xFFFE\x6100\x3412");
    EXPECT_STREQ(str.FromUTF16(textPlain, 1, true, false), L"");
    const unsigned short textTwice[] = {0xFEFF, 0xFEFF, 0};
    EXPECT_STREQ(str.FromUTF16(textTwice, -1, true, false), L"\xFEFF"); // only the first unit is one
}

TEST(LyStringFromUTF32, CopiesUnits)
{
    LyString str(L"old");
    EXPECT_STREQ(str.FromUTF32(L"a\x1F600"), L"a\x1F600");
    EXPECT_STREQ(str.FromUTF32(L"abc", 2), L"ab");
    EXPECT_STREQ(str.FromUTF32(L"a\0b", 3), L"a");
    const wchar_t textSwapped[] = {0x61000000, 0x00F60100, 0};
    EXPECT_STREQ(str.FromUTF32(textSwapped, -1, false, true), L"a\x1F600");
    const wchar_t textNegative[] = {static_cast<wchar_t>(0x80000000), 0};
    EXPECT_EQ(str.FromUTF32(textNegative, -1, false, true)[0], 0x80);
    EXPECT_STREQ(str.FromUTF32(L"abc", 0), L"");
    EXPECT_STREQ(str.FromUTF32(nullptr, 3), L"");
    EXPECT_STREQ(str.FromUTF32(nullptr, 3, true, true), L"");
    str = L"abcdef";
    EXPECT_STREQ(str.FromUTF32(TextOf(str) + 2, 3), L"cde"); // a part of itself
    const wchar_t* pText = str;
    EXPECT_EQ(str.FromUTF32(pText, -1, false, true)[0], 0x63000000);
}

TEST(LyStringFromUTF32, ChecksTheByteOrderMark)
{
    LyString str;
    EXPECT_STREQ(str.FromUTF32(L"\xFEFF"
                               L"a",
                               -1, true, false),
                 L"a");
    EXPECT_STREQ(str.FromUTF32(L"\xFEFF"
                               L"a",
                               -1, false, false),
                 L"\xFEFF"
                 L"a");
    const wchar_t textSwapped[] = {0xFFFE, 0x61000000, 0};
    EXPECT_STREQ(str.FromUTF32(textSwapped, -1, true, false), L"a");
    const wchar_t textSwapped32[] = {static_cast<wchar_t>(0xFFFE0000), 0x61000000, 0};
    EXPECT_STREQ(str.FromUTF32(textSwapped32, -1, true, false), L"a");
}

TEST(LyStringFromUTFN, IsUTF32)
{
    LyString str;
    EXPECT_STREQ(str.FromUTFN(L"\xFEFF"
                              L"a\x1F600",
                              -1, true, false),
                 L"a\x1F600");
    EXPECT_STREQ(str.FromUTFN(L"abc", 2), L"ab");
}

// ---- Buffers

TEST(LyStringFromBuffer, ReadsTheEncodingItIsTold)
{
    EXPECT_EQ(FromBytes("a\xC3\xA4", LYSTRING_ENCODING_ANSI), L"a\xC3\xA4");
    EXPECT_EQ(FromBytes("a\xC3\xA4", LYSTRING_ENCODING_UTF8), L"a\xE4");
    EXPECT_EQ(FromBytes("\xEF\xBB\xBF"
                        "a",
                        LYSTRING_ENCODING_UTF8),
              L"\xFEFF"
              L"a");
    EXPECT_EQ(FromBytes("\xEF\xBB\xBF"
                        "a",
                        LYSTRING_ENCODING_UTF8_BOM),
              L"a");
    EXPECT_EQ(FromBytes("a\xC3\xA4", LYSTRING_ENCODING_UTF8_BOM), L"a\xE4");
    EXPECT_EQ(FromBytes(Raw("a\0b\0"), LYSTRING_ENCODING_UTF16), L"ab");
    EXPECT_EQ(FromBytes(Raw("\xFF\xFE"
                            "a\0"),
                        LYSTRING_ENCODING_UTF16),
              L"a");
    EXPECT_EQ(FromBytes(Raw("\xFE\xFF\0a"), LYSTRING_ENCODING_UTF16), L"a");
    EXPECT_EQ(FromBytes(Raw("a\0\0\0\0\xF6\x01\0"), LYSTRING_ENCODING_UTF32), L"a\x1F600");
    EXPECT_EQ(FromBytes(Raw("\xFF\xFE\0\0a\0\0\0"), LYSTRING_ENCODING_UTF32), L"a");
    EXPECT_EQ(FromBytes(Raw("\0\0\xFE\xFF\0\0\0a"), LYSTRING_ENCODING_UTF32), L"a");
    EXPECT_EQ(FromBytes("abc", static_cast<LYSTRING_ENCODING>(4)), L"");
    EXPECT_EQ(FromBytes("abc", static_cast<LYSTRING_ENCODING>(-1)), L"");
}

TEST(LyStringFromBuffer, FindsOutByTheMark)
{
    EXPECT_EQ(FromBytes(Raw("\xFF\xFE"
                            "A\0"),
                        LYSTRING_ENCODING_FIND_OUT),
              L"A");
    EXPECT_EQ(FromBytes(Raw("\xFE\xFF\0A"), LYSTRING_ENCODING_FIND_OUT), L"A");
    EXPECT_EQ(FromBytes("\xEF\xBB\xBF\xC3\xA4", LYSTRING_ENCODING_FIND_OUT), L"\xE4");
    EXPECT_EQ(FromBytes("\xEF\xBB\xBF"
                        "a\xE4",
                        LYSTRING_ENCODING_FIND_OUT),
              L"a\xE4"); // whatever follows it
    EXPECT_EQ(FromBytes("\xFF\xFE", LYSTRING_ENCODING_FIND_OUT), L"");
    EXPECT_EQ(FromBytes("\xEF\xBB\xBF", LYSTRING_ENCODING_FIND_OUT), L"");
    EXPECT_EQ(FromBytes("\xEF\xBB", LYSTRING_ENCODING_FIND_OUT), L"\xEF\xBB");
    EXPECT_EQ(FromBytes("\xFF", LYSTRING_ENCODING_FIND_OUT), L"\xFF");
}

TEST(LyStringFromBuffer, FindsOutByTheBytes)
{
    EXPECT_EQ(FromBytes("", LYSTRING_ENCODING_FIND_OUT), L"");
    EXPECT_EQ(FromBytes("plain", LYSTRING_ENCODING_FIND_OUT), L"plain");
    EXPECT_EQ(FromBytes("a\xC3\xA4", LYSTRING_ENCODING_FIND_OUT), L"a\xE4");
    EXPECT_EQ(FromBytes("a\xE4", LYSTRING_ENCODING_FIND_OUT), L"a\xE4");
    EXPECT_EQ(FromBytes("a\xC3\xA4\xE4", LYSTRING_ENCODING_FIND_OUT), L"a\xC3\xA4\xE4"); // one bad sequence decides
    EXPECT_EQ(FromBytes("\xE4\xC3\xA4", LYSTRING_ENCODING_FIND_OUT), L"\xE4\xC3\xA4");
    EXPECT_EQ(FromBytes("a\xC3", LYSTRING_ENCODING_FIND_OUT), L"a\xC3"); // cut in the middle
    EXPECT_EQ(FromBytes(Raw("a\0b\0"), LYSTRING_ENCODING_FIND_OUT), L"ab");
    EXPECT_EQ(FromBytes(Raw("a\0\0\0b\0\0\0"), LYSTRING_ENCODING_FIND_OUT), L"ab");
    EXPECT_EQ(FromBytes(Raw("\xE4\0\xAC\x20"), LYSTRING_ENCODING_FIND_OUT), L"\xE4\x20AC");
}

TEST(LyStringFromBuffer, TrailingZerosSayNothing)
{
    EXPECT_EQ(FromBytes(Raw("A\0"), LYSTRING_ENCODING_FIND_OUT), L"A");
    EXPECT_EQ(FromBytes(Raw("abc\0\0\0"), LYSTRING_ENCODING_FIND_OUT), L"abc");
    EXPECT_EQ(FromBytes(Raw("a\xC3\xA4\0\0"), LYSTRING_ENCODING_FIND_OUT), L"a\xE4");
    EXPECT_EQ(FromBytes(Raw("\0\0\0\0"), LYSTRING_ENCODING_FIND_OUT), L"");
}

TEST(LyStringFromBuffer, IncompleteUnitsAreFilledUp)
{
    EXPECT_EQ(FromBytes(Raw("a\0b"), LYSTRING_ENCODING_UTF16), L"ab");
    EXPECT_EQ(FromBytes(Raw("a\0b"), LYSTRING_ENCODING_UTF16, true), L"ab");
    EXPECT_EQ(FromBytes(Raw("a\0\0\0b"), LYSTRING_ENCODING_UTF32), L"ab");
    EXPECT_EQ(FromBytes(Raw("a\0\0\0b"), LYSTRING_ENCODING_UTF32, true), L"ab");
    EXPECT_EQ(FromBytes(Raw("a"), LYSTRING_ENCODING_UTF32), L"a");
}

TEST(LyStringFromBuffer, ZerosEndTheTextOrAreRemoved)
{
    EXPECT_EQ(FromBytes(Raw("ab\0cd"), LYSTRING_ENCODING_ANSI), L"ab");
    EXPECT_EQ(FromBytes(Raw("ab\0cd"), LYSTRING_ENCODING_ANSI, true), L"abcd");
    EXPECT_EQ(FromBytes(Raw("\xC3\xA4\0cd"), LYSTRING_ENCODING_UTF8), L"\xE4");
    EXPECT_EQ(FromBytes(Raw("\xC3\xA4\0cd"), LYSTRING_ENCODING_UTF8, true), L"\xE4"
                                                                            L"cd");
    EXPECT_EQ(FromBytes(Raw("\xEF\xBB\xBF"
                            "a\0b"),
                        LYSTRING_ENCODING_UTF8_BOM, true),
              L"ab");
    EXPECT_EQ(FromBytes(Raw("a\0\0\0b\0"), LYSTRING_ENCODING_UTF16), L"a");
    EXPECT_EQ(FromBytes(Raw("a\0\0\0b\0"), LYSTRING_ENCODING_UTF16, true), L"ab");
    EXPECT_EQ(FromBytes(Raw("a\0\0\0\0\0\0\0b\0\0\0"), LYSTRING_ENCODING_UTF32, true), L"ab");
    EXPECT_EQ(FromBytes(Raw("a\0\0\0\0\0\0\0b\0\0\0"), LYSTRING_ENCODING_FIND_OUT, true), L"ab");
    EXPECT_EQ(FromBytes("", LYSTRING_ENCODING_UTF16, true), L"");
}

TEST(LyStringFromBuffer, TheBufferMayBeEmptyOrRoomy)
{
    LyBuffer buffer;
    LyString str(L"old");
    EXPECT_STREQ(str.FromBuffer(buffer, LYSTRING_ENCODING_FIND_OUT, false), L"");
    EXPECT_EQ(buffer.GetSize(), 0);
    buffer.FromBuffer("long text", 9);
    buffer.FromBuffer("ab", 2); // the old bytes still stand behind
    EXPECT_STREQ(str.FromBuffer(buffer, LYSTRING_ENCODING_FIND_OUT, false), L"ab");
    EXPECT_EQ(buffer.GetSize(), 2);
}
