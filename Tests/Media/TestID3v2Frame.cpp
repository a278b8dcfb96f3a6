// What a frame's body reads as.

#include "ID3v2Bytes.h"
#include <gtest/gtest.h>
#include <optional>

using namespace ID3v2Bytes;

namespace
{
// A frame as it lies in a tag of version 2.4.
CID3v2Frame& Decoded(CID3v2Frame& frame, const std::string& strID, const std::string& strBody, int nFlags = 0)
{
    memcpy(frame.m_Header.m_ID, strID.data(), 4);
    frame.m_Header.m_Flags[1] = static_cast<unsigned char>(nFlags);
    frame.m_Data = Buffer(strBody);
    EXPECT_TRUE(frame.Decode(0));
    EXPECT_EQ(Content(frame.m_Data), strBody) << "the body stays";
    return frame;
}

struct TEXT_ROW
{
    const char* pName;
    const char* pID;
    std::string strBody;
    const char *pEncoding, *pLanguage, *pDescription, *pValue;
};
constexpr const char* NONE = "(none)";

const TEXT_ROW s_aryText[] = {
    {"Text", "TIT2", Bytes("\0Song"), "0", NONE, NONE, "Song"},
    {"TextOfTwoValues", "TPE1", Bytes("\0One\0Two\0"), "0", NONE, NONE, "One; Two"},
    {"TextWide", "TIT2", Bytes("\1\xFF\xFES\0\xAC\x20"), "1", NONE, NONE, "S\xE2\x82\xAC"},
    {"TextBigEndian", "TIT2", Bytes("\2\0S\x20\xAC"), "2", NONE, NONE, "S\xE2\x82\xAC"},
    {"TextUTF8", "TIT2", Bytes("\3S\xE2\x82\xAC\0"), "3", NONE, NONE, "S\xE2\x82\xAC"},
    {"TextOfUnknownEncoding", "TIT2", Bytes("\x07Song"), "7", NONE, NONE, ""},
    {"TextEmpty", "TIT2", "", "0", NONE, NONE, ""},
    {"TextOfOwnID", "THGN", Bytes("\0eng\0Song"), "0", NONE, NONE, "eng; Song"},
    {"UserText", "TXXX", Bytes("\0Mood\0Calm\0Dark"), "0", NONE, "Mood", "Calm; Dark"},
    {"UserTextEmptyDescription", "TXXX", Bytes("\0\0Calm"), "0", NONE, "", "Calm"},
    {"UserTextOnlyDescription", "TXXX", Bytes("\0Mood"), "0", NONE, "Mood", ""},
    {"UserTextEmpty", "TXXX", "", "0", NONE, "", ""},
    {"UserTextWide", "TXXX",
     Bytes("\1\xFF\xFEM\0\0\0\xFF\xFE"
           "C\0"),
     "1", NONE, "M", "C"},
    {"Comment", "COMM", Bytes("\0engShort\0Long\0"), "0", "6647399", "Short", "Long"}, // 65h 6Eh 67h
    {"CommentZeroLanguage", "COMM", Bytes("\0\0\0\0\0Long"), "0", "0", "", "Long"},
    {"CommentCutInItsLanguage", "COMM", Bytes("\0en"), "0", "6647296", "", ""}, // 65h 6Eh 00h
    {"CommentEmpty", "COMM", "", "0", "0", "", ""},
    {"Lyrics", "USLT", Bytes("\3deuText\0La\0"), "3", "6579573", "Text", "La"},
    {"URL", "WOAR", Bytes("http://a/\0"), NONE, NONE, NONE, "http://a/"},
    {"URLOfTwoValues", "WCOM", Bytes("a\0b"), NONE, NONE, NONE, "a; b"},
    {"URLEmpty", "WOAR", "", NONE, NONE, NONE, ""},
    {"PodcastFlag", "PCST", Bytes("\1\2\0\0"), NONE, NONE, NONE, "513"},
    {"PodcastFlagOfThreeBytes", "PCST", Bytes("\1\2\3"), NONE, NONE, NONE, "0"},
    {"Private", "PRIV", Bytes("owner\0\1\2\3"), NONE, NONE, "owner", "AQID"},
    {"PrivateWithoutOwner", "PRIV", Bytes("\0\1\2\3"), NONE, NONE, "", "AQID"},
    {"PrivateWithoutValue", "PRIV", "owner", NONE, NONE, "owner", ""},
    {"PrivateEmpty", "PRIV", "", NONE, NONE, "", ""},
};
} // namespace

class ID3v2FrameDecode : public testing::TestWithParam<TEXT_ROW>
{
};

TEST_P(ID3v2FrameDecode, SetsTheProperties)
{
    const TEXT_ROW& row = GetParam();
    CID3v2Frame frame;
    Decoded(frame, row.pID, row.strBody);
    EXPECT_EQ(Property(frame, L"Text Encoding"), row.pEncoding);
    EXPECT_EQ(Property(frame, L"Language ID"), row.pLanguage);
    EXPECT_EQ(Property(frame, L"Description"), row.pDescription);
    EXPECT_EQ(Property(frame, L"Value"), row.pValue);
    EXPECT_EQ(Property(frame, L"Mime Type"), NONE);
    EXPECT_EQ(Property(frame, L"Picture Type"), NONE);
}

INSTANTIATE_TEST_SUITE_P(All, ID3v2FrameDecode, testing::ValuesIn(s_aryText),
                         [](const auto& row) { return std::string(row.param.pName); });

TEST(ID3v2FrameDecodeOpaque, IsFalseAndHasNoProperties)
{
    for (const char* pID : {"UFID", "WXXX", "GEOB", "PIC?", "MCDI"})
    {
        CID3v2Frame frame;
        Decoded(frame, "TIT2", Bytes("\0Song"));
        memcpy(frame.m_Header.m_ID, pID, 4);
        EXPECT_FALSE(frame.Decode(0)) << pID;
        EXPECT_EQ(frame.m_Properties.m_pProperties, nullptr) << "the properties from before are gone";
        EXPECT_EQ(Content(frame.m_Data), Bytes("\0Song"));
    }
}

TEST(ID3v2FrameDecodeAgain, DropsWhatWasThereAndLooksAtNoArgument)
{
    CID3v2Frame frame;
    Decoded(frame, "TXXX", Bytes("\0Mood\0Calm"));
    memcpy(frame.m_Header.m_ID, "TIT2", 4);
    EXPECT_TRUE(frame.Decode(12345));
    EXPECT_EQ(Property(frame, L"Description"), NONE);
    EXPECT_EQ(Value(frame), "Mood; Calm");
}

// ---- Ratings

TEST(ID3v2FrameDecodeRating, HasFiveSteps)
{
    struct ROW
    {
        int nByte;
        const char* pValue;
    } const aryRows[] = {{0, "0"},   {1, "1"},   {51, "1"},  {52, "2"},  {102, "2"}, {103, "3"},
                         {153, "3"}, {154, "4"}, {196, "4"}, {204, "4"}, {205, "5"}, {255, "5"}};
    for (const ROW& row : aryRows)
    {
        CID3v2Frame frame;
        EXPECT_EQ(Value(Decoded(frame, "POPM", Bytes("a@b\0") + static_cast<char>(row.nByte))), row.pValue)
            << row.nByte;
        EXPECT_EQ(Property(frame, L"Description"), NONE) << "the owner is not kept";
    }
}

TEST(ID3v2FrameDecodeRating, ACounterBehindItMakesNoDifference)
{
    CID3v2Frame frame;
    EXPECT_EQ(Value(Decoded(frame, "POPM", Bytes("a@b\0\xFF\0\0\0\x07"))), "5");
    EXPECT_EQ(Value(Decoded(frame, "POPM", Bytes("\0\xFF\1"))), "5");
}

TEST(ID3v2FrameDecodeRating, ABodyWithoutOneIsZero)
{
    CID3v2Frame frame;
    for (const std::string& strBody : {std::string(), Bytes("\0"), std::string("a@b"), Bytes("a@b\0")})
        EXPECT_EQ(Value(Decoded(frame, "POPM", strBody)), "0");
}

// ---- Pictures

namespace
{
struct PICTURE_ROW
{
    const char* pName;
    std::string strBody;
    const char *pEncoding, *pMime, *pType, *pDescription, *pValue;
};

const PICTURE_ROW s_aryPictures[] = {
    {"Whole", Bytes("\0image/png\0\4Back\0\1\2\3"), "0", "image/png", "4", "Back", "AQID"},
    {"WideDescription",
     Bytes("\1image/png\0\3\xFF\xFE"
           "B\0\0\0\1\2\3"),
     "1", "image/png", "3", "B", "AQID"},
    {"EmptyDescription", Bytes("\0image/png\0\3\0\1\2\3"), "0", "image/png", "3", "", "AQID"},
    {"JpegWithoutDescription", Bytes("\0image/jpeg\0\3\xFF\xD8\xFF\0"), "0", "image/jpeg", "3", "", "/9j/AA=="},
    {"JpegWithoutDescriptionWide", Bytes("\1image/jpeg\0\3\xFF\xD8\xFF\0"), "1", "image/jpeg", "3", "", "/9j/AA=="},
    {"PngWithoutDescription", Bytes("\0image/png\0\3\x89PNG\r\n\x1A\n\0"), "0", "image/png", "3", "", "iVBORw0KGgoA"},
    {"NotQuitePng", Bytes("\0image/png\0\3\x89PNG\r\n\x1A\0\1\2\3"), "0", "image/png", "3", "\xC2\x89PNG\r\n\x1A",
     "AQID"},
    {"JpegBehindADescription", Bytes("\0image/jpeg\0\3d\0\xFF\xD8\xFF"), "0", "image/jpeg", "3", "d", "/9j/"},
    {"NothingBehindTheMime", Bytes("\0image/jpeg\0"), "0", "image/jpeg", "3", "", ""},
    {"NothingBehindTheType", Bytes("\0image/jpeg\0\7"), "0", "image/jpeg", "7", "", ""},
    {"MimeWithoutTerminator", Bytes("\0image/jpeg"), "0", "image/jpeg", "3", "", ""},
    {"Empty", "", "0", "", "3", "", ""},
};
} // namespace

class ID3v2FrameDecodePicture : public testing::TestWithParam<PICTURE_ROW>
{
};

TEST_P(ID3v2FrameDecodePicture, SetsTheProperties)
{
    const PICTURE_ROW& row = GetParam();
    CID3v2Frame frame;
    Decoded(frame, "APIC", row.strBody);
    EXPECT_EQ(Property(frame, L"Text Encoding"), row.pEncoding);
    EXPECT_EQ(Property(frame, L"Mime Type"), row.pMime);
    EXPECT_EQ(Property(frame, L"Picture Type"), row.pType);
    EXPECT_EQ(Property(frame, L"Description"), row.pDescription);
    EXPECT_EQ(Property(frame, L"Value"), row.pValue);
}

INSTANTIATE_TEST_SUITE_P(All, ID3v2FrameDecodePicture, testing::ValuesIn(s_aryPictures),
                         [](const auto& row) { return std::string(row.param.pName); });

TEST(ID3v2EncodePicture, WritesABodyWithTheConstantDescription)
{
    LyBuffer buffer = Buffer("from before");
    CID3v2Frame::EncodePicture(buffer, Buffer(Bytes("\1\2\0\3")), L"image/png", 4);
    EXPECT_EQ(Content(buffer), Bytes("\0image/png\0\4Picture\0\1\2\0\3"));
    CID3v2Frame::EncodePicture(buffer, LyBuffer(), L"", 0x103);
    EXPECT_EQ(Content(buffer), Bytes("\0\0\3Picture\0")) << "the type is one byte";
}

TEST(ID3v2EncodePicture, TheImageMayBeTheBuffer)
{
    LyBuffer buffer = Buffer("image");
    CID3v2Frame::EncodePicture(buffer, buffer, L"m", 3);
    EXPECT_EQ(Content(buffer), Bytes("\0m\0\3Picture\0image"));
}

TEST(ID3v2EncodePicture, WhatIsWrittenIsReadBack)
{
    CID3v2Frame frame;
    memcpy(frame.m_Header.m_ID, "APIC", 4);
    CID3v2Frame::EncodePicture(frame.m_Data, Buffer(Bytes("\1\2\3")), L"image/gif", 4);
    ASSERT_TRUE(frame.Decode(0));
    EXPECT_EQ(Property(frame, L"Mime Type"), "image/gif");
    EXPECT_EQ(Property(frame, L"Picture Type"), "4");
    EXPECT_EQ(Property(frame, L"Description"), "Picture");
    EXPECT_EQ(Value(frame), "AQID");
}

// ---- Flags of the frame

TEST(ID3v2FrameFlags, UnsynchronisationIsRemovedForDecodingOnly)
{
    CID3v2Frame frame;
    EXPECT_EQ(Value(Decoded(frame, "PRIV", Bytes("o\0\xFF\0\xFB"), 0x02)), "//s=");
    EXPECT_EQ(Value(Decoded(frame, "PRIV", Bytes("o\0\xFF\0\xFB"), 0x00)), "/wD7");
}

TEST(ID3v2FrameFlags, ADataLengthIndicatorIsSkipped)
{
    CID3v2Frame frame;
    EXPECT_EQ(Value(Decoded(frame, "TIT2", Bytes("\0\0\0\5\0Song"), 0x01)), "Song");
    EXPECT_EQ(Value(Decoded(frame, "PCST", Bytes("\0\0\0\4\1\0\0\0"), 0x01)), "1");
    for (const std::string& strBody : {std::string(), Bytes("\0\0\0"), Bytes("\0\0\0\5")})
        EXPECT_EQ(Value(Decoded(frame, "TIT2", strBody, 0x01)), "") << "nothing is left behind it";
    EXPECT_EQ(Property(Decoded(frame, "APIC", Bytes("\0\0\0"), 0x01), L"Picture Type"), "3");
}

TEST(ID3v2FrameFlags, UnsynchronisationGoesBeforeTheIndicator)
{
    // FF 00 in the indicator are one byte of it.
    CID3v2Frame frame;
    EXPECT_EQ(Value(Decoded(frame, "TIT2", Bytes("\0\0\xFF\0\5\0Song"), 0x03)), "Song");
}

TEST(ID3v2FrameFlags, TheValueOfAPrivateFrameIsCountedFromTheBodysStart)
{
    CID3v2Frame frame;
    Decoded(frame, "PRIV", Bytes("\0\0\0\5o\0\1\2\3"), 0x01);
    EXPECT_EQ(Property(frame, L"Description"), "o");
    EXPECT_EQ(Value(frame), "AAVvAAECAw=="); // from the third byte on: 00 05 6F 00 01 02 03
}

TEST(ID3v2FrameFlags, ThoseOfVersion23AreNotLookedAt)
{
    CID3v2Frame frame;
    EXPECT_EQ(Value(Decoded(frame, "TIT2", Bytes("\0Song"), 0xC0)), "Song");
}
