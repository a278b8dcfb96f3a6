// Bytes as text: base64 and hexadecimal digits.

#include "LyBuffer.h"
#include "LyString.h"
#include "StringTestSupport.h"
#include <gtest/gtest.h>
#include <string>

namespace
{
std::wstring Encode(const std::string& strBytes)
{
    LyString str(L"old");
    return Contents(str.FromBinary(strBytes.data(), static_cast<int>(strBytes.size())));
}

std::string BytesOf(const LyBuffer& buffer)
{
    return {reinterpret_cast<const char*>(buffer.GetData()), static_cast<size_t>(buffer.GetSize())};
}

std::string Decode(const wchar_t* p)
{
    LyBuffer buffer;
    buffer.FromBuffer("old bytes", 9);
    bool bAny = LyString(p).ToBinary(buffer);
    EXPECT_EQ(bAny, buffer.GetSize() > 0);
    return BytesOf(buffer);
}

std::string DecodeHex(const wchar_t* p)
{
    LyBuffer buffer;
    buffer.FromBuffer("old bytes", 9);
    bool bAny = LyString(p).HexDigitsToBinary(buffer);
    EXPECT_EQ(bAny, buffer.GetSize() > 0);
    return BytesOf(buffer);
}
} // namespace

// RFC 4648, section 10
TEST(LyStringFromBinary, WritesTheKnownExamples)
{
    EXPECT_EQ(Encode(""), L"");
    EXPECT_EQ(Encode("f"), L"Zg==");
    EXPECT_EQ(Encode("fo"), L"Zm8=");
    EXPECT_EQ(Encode("foo"), L"Zm9v");
    EXPECT_EQ(Encode("foob"), L"Zm9vYg==");
    EXPECT_EQ(Encode("fooba"), L"Zm9vYmE=");
    EXPECT_EQ(Encode("foobar"), L"Zm9vYmFy");
    EXPECT_EQ(Encode(std::string("\0\0\0", 3)), L"AAAA");
    EXPECT_EQ(Encode("\xFB\xFF\xBF"), L"+/+/");
    LyString str(L"old");
    EXPECT_STREQ(str.FromBinary(nullptr, 3), L"");
    str = L"old";
    EXPECT_STREQ(str.FromBinary("abc", -1), L"");
}

TEST(LyStringFromBinary, BreaksLinesAfter64Characters)
{
    const std::wstring strLine(64, L'A');
    EXPECT_EQ(Encode(std::string(47, '\0')), std::wstring(63, L'A') + L"=");
    EXPECT_EQ(Encode(std::string(48, '\0')), strLine); // none at the end
    EXPECT_EQ(Encode(std::string(49, '\0')), strLine + L"\nAA==");
    EXPECT_EQ(Encode(std::string(96, '\0')), strLine + L"\n" + strLine);
    EXPECT_EQ(Encode(std::string(97, '\0')), strLine + L"\n" + strLine + L"\nAA==");
}

TEST(LyStringToBinary, ReadsTheKnownExamples)
{
    EXPECT_EQ(Decode(L""), "");
    EXPECT_EQ(Decode(L"Zg=="), "f");
    EXPECT_EQ(Decode(L"Zm8="), "fo");
    EXPECT_EQ(Decode(L"Zm9v"), "foo");
    EXPECT_EQ(Decode(L"Zm9vYg=="), "foob");
    EXPECT_EQ(Decode(L"Zm9vYmFy"), "foobar");
    EXPECT_EQ(Decode(L"+/+/"), "\xFB\xFF\xBF");
}

TEST(LyStringToBinary, SkipsLineEnds)
{
    EXPECT_EQ(Decode(L"Zm\r\n9v\nYm\rFy\r\n"), "foobar");
    EXPECT_EQ(Decode(L"\n\r\n"), "");
}

TEST(LyStringToBinary, ForeignCharactersAreZero)
{
    EXPECT_EQ(Decode(L"Zm9*"), Decode(L"Zm9A"));
    EXPECT_EQ(Decode(L"Z m9"), Decode(L"ZAm9")); // a blank is not skipped
    EXPECT_EQ(Decode(L"Zm9\x100"), Decode(L"Zm9A"));
    EXPECT_EQ(Decode(L"Zm9\x15A"), Decode(L"Zm9A")); // 15A is not taken for 5A
    const wchar_t textNegative[] = {L'Z', L'm', L'9', -90, 0};
    EXPECT_EQ(Decode(textNegative), Decode(L"Zm9A"));
}

TEST(LyStringToBinary, EachEqualsSignRemovesAByte)
{
    EXPECT_EQ(Decode(L"===="), "");
    EXPECT_EQ(Decode(L"="), "");
    EXPECT_EQ(Decode(L"Zm9v===="), "fo"); // six bytes less four
    EXPECT_EQ(Decode(L"Zm=v"), "f\x60");  // wherever it stands: 66 60 2F less one
}

TEST(LyStringToBinary, PaddingMayBeLeftOut)
{
    EXPECT_EQ(Decode(L"Zg"), "f");
    EXPECT_EQ(Decode(L"Zm8"), "fo");
    EXPECT_EQ(Decode(L"Zm9vY"), "foo");
    EXPECT_EQ(Decode(L"Z"), "");
}

TEST(LyStringToBinary, EveryLengthComesBack)
{
    std::string strBytes;
    for (int i = 0; i < 300; ++i)
    {
        LyString str;
        str.FromBinary(strBytes.data(), static_cast<int>(strBytes.size()));
        ASSERT_EQ(Decode(str), strBytes) << i;
        strBytes += static_cast<char>(i * 7);
    }
}

TEST(LyStringHexDigitsToBinary, ReadsPairs)
{
    EXPECT_EQ(DecodeHex(L""), "");
    EXPECT_EQ(DecodeHex(L"41"), "A");
    EXPECT_EQ(DecodeHex(L"4142ff"), "AB\xFF");
    EXPECT_EQ(DecodeHex(L"aBCdeF"), "\xAB\xCD\xEF");
    EXPECT_EQ(DecodeHex(L"00"), std::string(1, '\0'));
}

TEST(LyStringHexDigitsToBinary, AnOddCountTakesALeadingZero)
{
    EXPECT_EQ(DecodeHex(L"7"), "\x07");
    EXPECT_EQ(DecodeHex(L"ABC"), "\x0A\xBC");
    EXPECT_EQ(DecodeHex(L"G"), "");
}

TEST(LyStringHexDigitsToBinary, TheFirstForeignCharacterEndsTheRun)
{
    EXPECT_EQ(DecodeHex(L"41G2"), "A");
    EXPECT_EQ(DecodeHex(L"414G42"), "A");
    EXPECT_EQ(DecodeHex(L"41 42 "), "A");
    EXPECT_EQ(DecodeHex(L"0x41"), "");
    EXPECT_EQ(DecodeHex(L"41\xFF14\xFF12"), "A");
}
