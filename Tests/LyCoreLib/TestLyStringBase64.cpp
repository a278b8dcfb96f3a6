// Bytes as text: base64 and hexadecimal digits.

#include "LyBuffer.h"
#include "LyString.h"
#include "LyStringBase64Details.h"
#include "StringTestSupport.h"
#include <algorithm>
#include <gtest/gtest.h>
#include <iterator>
#include <random>
#include <string>
#include <vector>

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

// Both ways once more, one character at a time.
std::wstring EncodePlainly(const std::string& strBytes)
{
    static const wchar_t aryAlphabet[] = L"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::wstring str;
    for (size_t nBit = 0, nChar = 0; nBit < strBytes.size() * 8; nBit += 6, ++nChar)
    {
        unsigned int nDigit = 0;
        for (size_t n = nBit; n < nBit + 6; ++n)
            nDigit = nDigit << 1 | (n / 8 < strBytes.size() ? strBytes[n / 8] >> (7 - n % 8) & 1 : 0);
        if (nChar % 64 == 0 && nChar > 0)
            str += L'\n';
        str += aryAlphabet[nDigit];
    }
    return str.append((3 - strBytes.size() % 3) % 3, L'=');
}

std::string DecodePlainly(const std::wstring& strText)
{
    static const std::wstring strAlphabet = L"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::vector<unsigned int> aryDigits;
    size_t nSurplus = 0;
    for (const wchar_t c : strText)
    {
        if (c == L'\r' || c == L'\n')
            continue;
        const size_t nDigit = strAlphabet.find(c);
        aryDigits.push_back(nDigit == std::wstring::npos ? 0 : static_cast<unsigned int>(nDigit));
        nSurplus += c == L'=';
    }
    for (; aryDigits.size() % 4 != 0; ++nSurplus)
        aryDigits.push_back(0);
    std::string strBytes;
    for (size_t n = 0; n < aryDigits.size(); n += 4)
    {
        const unsigned int nGroup =
            aryDigits[n] << 18 | aryDigits[n + 1] << 12 | aryDigits[n + 2] << 6 | aryDigits[n + 3];
        for (int nShift = 16; nShift >= 0; nShift -= 8)
            strBytes += static_cast<char>(nGroup >> nShift & 255);
    }
    return strBytes.substr(0, strBytes.size() - std::min(nSurplus, strBytes.size()));
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

TEST(LyStringFromBinary, SaysTheSameAsOneDigitAtATime)
{
    std::minstd_rand random(1);
    std::string strBytes;
    for (int i = 0; i < 700; ++i)
    {
        ASSERT_EQ(Encode(strBytes), EncodePlainly(strBytes)) << i;
        strBytes += static_cast<char>(random() >> 9);
    }
}

// Each byte at each place, in lines of which nothing more than their bytes is there.
TEST(LyStringFromBinary, BothWaysToALineGiveTheSame)
{
    using namespace LyStringBase64Details;
    const ENCODE_LINE pVectorEncodeLine = GetVectorEncodeLine();
    if (pVectorEncodeLine == nullptr)
        GTEST_SKIP() << "this machine has one way";
    std::minstd_rand random(3);
    for (int i = 0; i < 256 * LINE_BYTES; ++i)
    {
        std::vector<unsigned char> aryLine(LINE_BYTES);
        for (unsigned char& c : aryLine)
            c = static_cast<unsigned char>(random() >> 9);
        aryLine[static_cast<size_t>(i % LINE_BYTES)] = static_cast<unsigned char>(i / LINE_BYTES);
        std::vector<wchar_t> aryPlain(LINE_CHARS), aryVector(LINE_CHARS);
        EncodeLine(aryPlain.data(), aryLine.data());
        pVectorEncodeLine(aryVector.data(), aryLine.data());
        ASSERT_EQ(aryPlain, aryVector) << i;
    }
}

// Texts as they come, with line ends, padding and foreign characters at every place of a group.
TEST(LyStringToBinary, SaysTheSameAsOneCharacterAtATime)
{
    static const wchar_t aryOthers[] = L"\r\n=\n\r= *\x100\x141\xFFFF\n\n";
    std::minstd_rand random(7);
    for (int i = 0; i < 3000; ++i)
    {
        const size_t nChars = random() % 200;
        const unsigned int nOneIn = 2U + static_cast<unsigned int>(random() % 60);
        std::wstring strText;
        while (strText.size() < nChars)
        {
            const std::wstring strDigits = EncodePlainly(std::string(3, static_cast<char>(random() >> 8)));
            strText +=
                random() % nOneIn == 0 ? aryOthers[random() % (std::size(aryOthers) - 1)] : strDigits[random() % 4];
        }
        ASSERT_EQ(Decode(strText.c_str()), DecodePlainly(strText)) << i;
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
