// The bodies of new frames, type by type.

#include "FieldTags.h"
#include "TempFolder.h"
#include <gtest/gtest.h>

namespace
{
constexpr int BOTH = ID3V2_FIELD_WRITE_23 | ID3V2_FIELD_WRITE_24;

// The body that a row of that frame and description gets for a value; "none" if no frame comes of it.
std::string BodyFor(const char* pID, const wchar_t* pDescription, const LyString& strValue, int nVersion = 4)
{
    CID3v2Tag tag;
    RemoveRows(tag);
    AddRow(tag, pID, L"Field", pDescription, BOTH);
    LoadTag(tag, nVersion, {});
    const bool bWritten = tag.Set(L"Field", strValue);
    EXPECT_EQ(bWritten, tag.m_aryFrames.GetSize() == 1);
    EXPECT_EQ(tag.m_bDirty, bWritten);
    return bWritten ? BodyOf(*tag.m_aryFrames[0]) : "none";
}

LyString FromUTF8(const std::string& str)
{
    return LyString().FromUTF8(reinterpret_cast<const unsigned char*>(str.c_str()));
}
} // namespace

TEST(ID3v2FieldsBody, TextIsEncodingAndValue) { EXPECT_EQ(BodyFor("TIT2", L"not written", L"abc"), Bytes("\0abc\0")); }

TEST(ID3v2FieldsBody, UserTextHasItsDescription)
{
    EXPECT_EQ(BodyFor("TXXX", L"Mark", L"abc"), Bytes("\0Mark\0abc\0"));
}

TEST(ID3v2FieldsBody, CommentsAndLyricsHaveNoLanguage)
{
    EXPECT_EQ(BodyFor("COMM", L"Mark", L"abc"), Bytes("\0\0\0\0Mark\0abc\0"));
    EXPECT_EQ(BodyFor("USLT", L"", L"abc"), Bytes("\0\0\0\0\0abc\0"));
}

TEST(ID3v2FieldsBody, ACharacterAbove127IsUTF16InEveryVersion)
{
    for (const int nVersion : {2, 3, 4})
    {
        EXPECT_EQ(BodyFor("TXXX", L"M", L"\u007F", nVersion), Bytes("\0M\0\x7F\0"));
        EXPECT_EQ(BodyFor("TXXX", L"M", L"\u0080", nVersion), Bytes("\x01\xFF\xFEM\0\0\0\xFF\xFE\x80\0\0\0"));
        EXPECT_EQ(BodyFor("TIT2", L"", L"a\u4E2D", nVersion), Bytes("\x01\xFF\xFE"
                                                                    "a\0\x2D\x4E\0\0"));
    }
    EXPECT_EQ(BodyFor("COMM", L"", L"\u00FC"), Bytes("\x01\0\0\0\xFF\xFE\0\0\xFF\xFE\xFC\0\0\0"));
}

TEST(ID3v2FieldsBody, TheValueAlonePicksTheEncoding)
{
    EXPECT_EQ(BodyFor("TXXX", L"Gr\u00F6\u00DFe", L"abc"), Bytes("\0Gr\xF6\xDF"
                                                                 "e\0abc\0"));
}

TEST(ID3v2FieldsBody, EveryValueOfAListIsEncoded)
{
    CID3v2Tag tag;
    RemoveRows(tag);
    AddRow(tag, "TXXX", L"Field", L"M", BOTH | ID3V2_FIELD_LIST);
    EXPECT_TRUE(tag.Set(L"Field", L"a;\u00FC"));
    EXPECT_EQ(BodyOf(*tag.m_aryFrames[0]), Bytes("\x01\xFF\xFEM\0\0\0\xFF\xFE"
                                                 "a\0\0\0\xFF\xFE\xFC\0\0\0"));
}

TEST(ID3v2FieldsBody, APictureIsLoadedFromItsFile)
{
    const TempFolder folder;
    const std::pair<const char*, const char*> aryCases[] = {
        {"a.jpg", "image/jpeg"}, {"a.jpeg", "image/jpeg"}, {"a.png", "image/png"}, {"a.JPG", "image/jpeg"}};
    for (const auto& [pName, pMime] : aryCases)
    {
        const LyString strFile = FromUTF8(folder.Write(pName, Bytes("im\0age")));
        EXPECT_EQ(BodyFor("APIC", L"", strFile), Bytes("\0") + pMime + Bytes("\0\x03Picture\0im\0age")) << pName;
    }
}

TEST(ID3v2FieldsBody, APictureIsAlwaysTheCover)
{
    const TempFolder folder;
    CID3v2Tag tag;
    RemoveRows(tag);
    AddRow(tag, "APIC", L"Field", L"", BOTH, 4);
    EXPECT_TRUE(tag.Set(L"Field", FromUTF8(folder.Write("a.png", "image"))));
    EXPECT_EQ(tag.m_aryFrames[0]->m_Properties.GetPropertyInt(L"Picture Type"), 3);
    EXPECT_EQ(ValueOf(tag, L"Field"), L"") << "the row does not find it";
}

TEST(ID3v2FieldsBody, APictureThatCannotBeLoadedRemovesTheOldOne)
{
    CID3v2Tag tag;
    LoadTag(tag, 4, {{"APIC", Picture(3, "old")}});
    EXPECT_FALSE(tag.Set(L"Image File", L"/nonexistent/image.png"));
    EXPECT_EQ(FramesOf(tag), "");
    EXPECT_TRUE(tag.m_bDirty);
}

TEST(ID3v2FieldsBody, RatingsAreFiveSteps)
{
    const std::pair<const wchar_t*, std::string> aryCases[] = {
        {L"0", Bytes("\0\0")},    {L"1", Bytes("\0\x01")},  {L"2", Bytes("\0\x40")}, {L"3", Bytes("\0\x80")},
        {L"4", Bytes("\0\xC0")},  {L"5", Bytes("\0\xFF")},  {L"6", Bytes("\0\0")},   {L"-1", Bytes("\0\0")},
        {L"many", Bytes("\0\0")}, {L"5.9", Bytes("\0\xFF")}};
    for (const auto& [pValue, strBody] : aryCases)
        EXPECT_EQ(BodyFor("POPM", L"", pValue), strBody) << Wide(pValue).c_str();
}

TEST(ID3v2FieldsBody, RatingsReadAsTheyWereSet)
{
    for (const wchar_t* pValue : {L"0", L"1", L"2", L"3", L"4", L"5"})
    {
        CID3v2Tag tag;
        EXPECT_TRUE(tag.Set(L"Rating", pValue));
        EXPECT_EQ(ValueOf(tag, L"Rating"), pValue);
    }
}

TEST(ID3v2FieldsBody, ThePodcastFlagIsALittleEndianNumber)
{
    EXPECT_EQ(BodyFor("PCST", L"", L"0"), Bytes("\0\0\0\0"));
    EXPECT_EQ(BodyFor("PCST", L"", L"16909060"), Bytes("\x04\x03\x02\x01"));
    EXPECT_EQ(BodyFor("PCST", L"", L"-2"), Bytes("\xFE\xFF\xFF\xFF"));
}

TEST(ID3v2FieldsBody, AnAddressIsLatin1WithATerminator)
{
    EXPECT_EQ(BodyFor("WOAR", L"", L"http://a/\u00FC"), Bytes("http://a/\xFC\0"));
}

TEST(ID3v2FieldsBody, PrivateDataHaveTheirOwnerAndComeFromBase64)
{
    EXPECT_EQ(BodyFor("PRIV", L"owner", L"QUJD"), Bytes("owner\0ABC"));
    EXPECT_EQ(BodyFor("PRIV", L"owner", L"\n"), Bytes("owner\0"));
}

TEST(ID3v2FieldsBody, AnOpaqueFrameIsNeverWritten)
{
    for (const char* pID : {"UFID", "WXXX", "GEOB", "PCNT"})
        EXPECT_EQ(BodyFor(pID, L"", L"abc"), "none") << pID;
}

TEST(ID3v2FieldsBody, AnOpaqueFrameIsRemovedAllTheSame)
{
    CID3v2Tag tag;
    RemoveRows(tag);
    AddRow(tag, "UFID", L"Field", L"", BOTH);
    LoadTag(tag, 4, {{"UFID", "abc"}});
    EXPECT_FALSE(tag.Set(L"Field", L"value"));
    EXPECT_EQ(FramesOf(tag), "");
    EXPECT_TRUE(tag.m_bDirty);
}
