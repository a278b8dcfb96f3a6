// The properties of a frame are made when somebody asks, of what its body was when it was decoded: whatever has become
// of the body, of the frame's tag and of the entries by then.

#include "ID3v2Bytes.h"
#include "ID3v2Properties.h"
#include <gtest/gtest.h>
#include <memory>

using namespace ID3v2Bytes;

namespace
{
using FRAME = std::unique_ptr<CID3v2Frame>;

// Small bodies are kept in another way than large ones.
constexpr int SIZES[] = {0, 1, 5, 6, 7, 100, 1'000, 1'024, 1'025, 5'000, 300'000};

std::string Repeated(int nBytes, char c) { return std::string(static_cast<size_t>(nBytes), c); }

struct KIND
{
    const char* pID;
    std::string strStart;
    int nProperties;
};

const KIND s_aryKinds[] = {
    {"TIT2", Bytes("\0"), 2},
    {"TXXX", Bytes("\0name\0"), 3},
    {"COMM", Bytes("\0engname\0"), 4},
    {"APIC", Bytes("\0image/png\0\3name\0"), 5},
    {"POPM", Bytes("me\0\377"), 1},
    {"PCST", Bytes("\1\0\0\0"), 1},
    {"WOAR", "http://", 1},
    {"PRIV", Bytes("name\0"), 2},
};

// What a frame that is asked at once has.
LyPropertyMap DecodedAtOnce(const KIND& kind, const std::string& strBody)
{
    CID3v2Frame frame;
    memcpy(frame.m_Header.m_ID, kind.pID, 4);
    frame.m_Data = Buffer(strBody);
    EXPECT_TRUE(frame.Decode(0));
    return frame.m_Properties;
}

FRAME MakeFrame(const char* pID, const std::string& strBody)
{
    auto pFrame = std::make_unique<CID3v2Frame>();
    memcpy(pFrame->m_Header.m_ID, pID, 4);
    pFrame->m_Data = Buffer(strBody);
    EXPECT_TRUE(pFrame->Decode(0));
    return pFrame;
}

ID3v2Properties& PropertiesOf(CID3v2Frame& frame)
{
    return *static_cast<ID3v2Properties*>(frame.m_Properties.m_pProperties);
}

// Each body of a kind in a tag of its own.
template <class CHECK>
void ForEachBody(CHECK check)
{
    for (const KIND& kind : s_aryKinds)
    {
        for (const int nBytes : SIZES)
        {
            SCOPED_TRACE(std::string(kind.pID) + " and " + std::to_string(nBytes));
            check(kind, kind.strStart + Repeated(nBytes, 'x'));
        }
    }
}
} // namespace

TEST(ID3v2PropertiesLife, AreCountedBeforeAnybodyAsks)
{
    ForEachBody(
        [](const KIND& kind, const std::string& strBody)
        {
            for (const std::string& str : {strBody, std::string()})
            {
                const FRAME pFrame = MakeFrame(kind.pID, str);
                EXPECT_EQ(PropertiesOf(*pFrame).GetCount(), kind.nProperties);
                (void)pFrame->m_Properties.GetHasProperty(L"Value");
                EXPECT_EQ(PropertiesOf(*pFrame).GetCount(), kind.nProperties) << "asked";
            }
        });
}

TEST(ID3v2PropertiesLife, AreThoseOfTheBodyThatWasDecoded)
{
    ForEachBody(
        [](const KIND& kind, const std::string& strBody)
        {
            const LyPropertyMap expected = DecodedAtOnce(kind, strBody);
            CID3v2Tag tag;
            ASSERT_TRUE(Load(tag, Tag(3, Frame23("TIT2", Bytes("\0first")) + Frame23(kind.pID, strBody))));
            CID3v2Frame& frame = *tag.m_aryFrames[1];
            std::fill_n(frame.m_Data.GetData(), frame.m_Data.GetSize(), static_cast<unsigned char>('y'));
            EXPECT_TRUE(frame.m_Properties.CompareProperties(expected)) << "its bytes are others";
            ASSERT_TRUE(Load(tag, Tag(3, Frame23(kind.pID, strBody))));
            tag.m_aryFrames[0]->m_Data.Empty(true);
            EXPECT_TRUE(tag.m_aryFrames[0]->m_Properties.CompareProperties(expected)) << "it is gone";
        });
}

TEST(ID3v2PropertiesLife, OutliveTheTag)
{
    ForEachBody(
        [](const KIND& kind, const std::string& strBody)
        {
            const LyPropertyMap expected = DecodedAtOnce(kind, strBody);
            const std::string strTag = Tag(3, Frame23(kind.pID, strBody) + Frame23(kind.pID, strBody));
            FRAME aryFrames[4];
            {
                CID3v2Tag tag;
                ASSERT_TRUE(Load(tag, strTag));
                aryFrames[0].reset(tag.m_aryFrames.Detach(0));
                ASSERT_TRUE(Load(tag, strTag + strTag)); // other memory
                aryFrames[1].reset(tag.m_aryFrames.Detach(1));
                ASSERT_TRUE(tag.Empty());
                ASSERT_TRUE(Load(tag, strTag));
                aryFrames[2].reset(tag.m_aryFrames.Detach(0));
                aryFrames[3].reset(tag.m_aryFrames.Detach(0));
            }
            for (const FRAME& pFrame : aryFrames)
                EXPECT_TRUE(pFrame->m_Properties.CompareProperties(expected));
        });
}

TEST(ID3v2PropertiesLife, OutliveATagThatIsReadFromTheBodyOfAnotherFrame)
{
    const std::string strPicture = Bytes("\0image/png\0\3\0") + Repeated(5'000, 'x');
    const std::string strInner = Tag(3, Frame23("PRIV", Bytes("me\0") + Repeated(3'000, 'z')));
    CID3v2Tag tag;
    ASSERT_TRUE(Load(tag, Tag(3, Frame23("APIC", strPicture) + Frame23("GEOB", strInner))));
    const FRAME pPicture(tag.m_aryFrames.Detach(0));
    ASSERT_TRUE(tag.Load(tag.m_aryFrames[0]->m_Data, 0));
    EXPECT_EQ(IDs(tag), "PRIV");
    EXPECT_EQ(tag.m_aryFrames[0]->GetBinaryValueBytes(), 3'000);
    EXPECT_EQ(pPicture->GetBinaryValueBytes(), 5'000);
    EXPECT_TRUE(pPicture->m_Properties.CompareProperties(DecodedAtOnce(s_aryKinds[3], strPicture)));
}

TEST(ID3v2PropertiesLife, ReadTheSameTagAgainFromItsOwnBuffer)
{
    const std::string strPicture = Bytes("\0image/png\0\3\0") + Repeated(5'000, 'x');
    CID3v2Tag tag;
    ASSERT_TRUE(Load(tag, Tag(3, Frame23("APIC", strPicture))));
    ASSERT_TRUE(tag.Load(tag.m_RawTag, 0));
    EXPECT_TRUE(tag.m_aryFrames[0]->m_Properties.CompareProperties(DecodedAtOnce(s_aryKinds[3], strPicture)));
}

TEST(ID3v2PropertiesLife, DoNotDependOnTheBufferThatTheTagWasReadFrom)
{
    const std::string strPicture = Bytes("\0image/png\0\3\0") + Repeated(5'000, 'x');
    const LyPropertyMap expected = DecodedAtOnce(s_aryKinds[3], strPicture);
    for (const bool bGone : {false, true})
    {
        CID3v2Tag tag;
        ASSERT_TRUE(Load(tag, Tag(3, Frame23("APIC", strPicture) + Frame23("APIC", strPicture))));
        if (bGone)
            tag.m_RawTag.Empty(true);
        else
            std::fill_n(tag.m_RawTag.GetData(), tag.m_RawTag.GetSize(), static_cast<unsigned char>('y'));
        const FRAME pFrame(tag.m_aryFrames.Detach(1));
        EXPECT_TRUE(tag.m_aryFrames[0]->m_Properties.CompareProperties(expected));
        EXPECT_GT(Save(tag).size(), 5'000u);
        ASSERT_TRUE(tag.Empty());
        EXPECT_TRUE(pFrame->m_Properties.CompareProperties(expected));
    }
}

TEST(ID3v2PropertiesLife, OfATagWithAFooterAndOneThatIsUnsynchronized)
{
    const std::string strBody = Bytes("name\0") + Repeated(5'000, '\377');
    const LyPropertyMap expected = DecodedAtOnce(s_aryKinds[7], strBody);
    CID3v2Tag tag;
    const std::string strFooted = Tag(4, Frame24("PRIV", strBody), ID3V2_TAG_FLAG_FOOTER) + Repeated(10, 'f');
    ASSERT_TRUE(Load(tag, strFooted));
    ASSERT_EQ(IDs(tag), "PRIV");
    EXPECT_TRUE(tag.m_aryFrames[0]->m_Properties.CompareProperties(expected));
    ASSERT_TRUE(Load(tag, Tag(3, Unsynchronized(Frame23("PRIV", strBody)), ID3V2_TAG_FLAG_UNSYNCHRONIZED)));
    ASSERT_EQ(IDs(tag), "PRIV");
    EXPECT_TRUE(tag.m_aryFrames[0]->m_Properties.CompareProperties(expected));
    std::string strUnsynchronized = Unsynchronized(strBody);
    ASSERT_TRUE(Load(tag, Tag(4, Frame24("PRIV", strUnsynchronized, 2))));
    EXPECT_TRUE(tag.m_aryFrames[0]->m_Properties.CompareProperties(expected)) << "the frame alone";
}

TEST(ID3v2PropertiesLife, ThatWereRemovedAheadOfAnyQuestionStayAway)
{
    ForEachBody(
        [](const KIND& kind, const std::string& strBody)
        {
            FRAME pFrame = MakeFrame(kind.pID, strBody);
            PropertiesOf(*pFrame).RemoveAll();
            EXPECT_EQ(PropertiesOf(*pFrame).GetCount(), 0);
            EXPECT_FALSE(pFrame->m_Properties.GetHasProperty(L"Value"));
            EXPECT_TRUE(PropertiesOf(*pFrame).GetStartPosition().IsEnd());
            pFrame->m_Properties.SetProperty(L"Value", L"new");
            EXPECT_EQ(PropertiesOf(*pFrame).GetCount(), 1);
            EXPECT_EQ(Value(*pFrame), "new");
            pFrame = MakeFrame(kind.pID, strBody);
            EXPECT_FALSE(pFrame->m_Properties.GetHasProperty(L"Other")) << "all is decoded but a binary value";
            PropertiesOf(*pFrame).RemoveAll();
            EXPECT_EQ(pFrame->GetBinaryValueBytes(), 0);
            EXPECT_FALSE(pFrame->m_Properties.GetHasProperty(L"Value"));
            pFrame = MakeFrame(kind.pID, strBody);
            pFrame->m_Properties.DeleteProperties();
            EXPECT_EQ(pFrame->m_Properties.m_pProperties, nullptr);
        });
}

TEST(ID3v2PropertiesLife, TheTableMayGrowAheadOfAnyQuestion)
{
    ForEachBody(
        [](const KIND& kind, const std::string& strBody)
        {
            const LyPropertyMap expected = DecodedAtOnce(kind, strBody);
            FRAME pFrame = MakeFrame(kind.pID, strBody);
            EXPECT_TRUE(PropertiesOf(*pFrame).SetHashSize(100, true));
            EXPECT_TRUE(pFrame->m_Properties.CompareProperties(expected));
            pFrame = MakeFrame(kind.pID, strBody);
            for (int i = 0; i < 20; ++i)
                pFrame->m_Properties.SetPropertyInt(LyString(L"Name ") + LyString().FromInt(i), i);
            EXPECT_EQ(PropertiesOf(*pFrame).GetCount(), kind.nProperties + 20);
            for (int i = 0; i < 20; ++i)
                EXPECT_TRUE(pFrame->m_Properties.RemoveProperty(LyString(L"Name ") + LyString().FromInt(i)));
            EXPECT_TRUE(pFrame->m_Properties.CompareProperties(expected));
        });
}

TEST(ID3v2PropertiesLife, ADescriptionIsTheFramesOwn)
{
    for (const KIND& kind : s_aryKinds)
    {
        const FRAME pFrame = MakeFrame(kind.pID, kind.strStart + "x");
        const bool bHas = std::string("TXXX COMM APIC PRIV").find(kind.pID) != std::string::npos;
        for (int i = 0; i < 2; ++i) // before and after everything is there
        {
            EXPECT_STREQ(pFrame->GetDescription(), bHas ? L"name" : L"") << kind.pID;
            EXPECT_TRUE(pFrame->m_Properties.GetHasProperty(L"Value"));
        }
        pFrame->m_Properties.SetProperty(L"Description", L"another");
        EXPECT_STREQ(pFrame->GetDescription(), L"another") << kind.pID;
    }
}
