// The text of a binary value is made when somebody asks for it. Nobody sees that, whichever way he asks.

#include "ID3v2Bytes.h"
#include "ID3v2Properties.h"
#include <functional>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

using namespace ID3v2Bytes;

namespace
{
const std::string PRIVATE_BODY = Bytes("owner\0\1\2\3");
const std::string PICTURE_BODY = Bytes("\0image/png\0\3front\0\1\2\3");
constexpr const char* BYTES_AS_TEXT = "AQID";

void Decode(CID3v2Frame& frame, const std::string& strID, const std::string& strBody)
{
    memcpy(frame.m_Header.m_ID, strID.data(), 4);
    frame.m_Data = Buffer(strBody);
    ASSERT_TRUE(frame.Decode(0));
}

using MAP = LyPropertyMap;
std::string ValueOf(const MAP& map) { return Narrow(map.GetProperty(L"Value")); }

// The first entry of a form that names a property and its value.
std::string Between(const LyString& strText, const wchar_t* pBegin, const wchar_t* pEnd)
{
    return Narrow(strText.GetSpan(pBegin, pEnd, true, 0, false, RECURSIVE_SPAN_NONE, false));
}

struct WAY
{
    const char* pName;
    std::function<std::string(const MAP&)> Ask;
};

const WAY s_aryWays[] = {
    {"GetProperty", ValueOf},
    {"GetPropertyInAnotherCase", [](const MAP& map) { return Narrow(map.GetProperty(L"vALUE")); }},
    {"TheEntriesThemselves",
     [](const MAP& map)
     {
         LyString strValue;
         return map.m_pProperties->Lookup(L"Value", strValue) ? Narrow(strValue) : "(none)";
     }},
    {"AWalkOverTheEntries",
     [](const MAP& map)
     {
         LyString strKey;
         LyString strValue;
         LyPOSITION position = map.m_pProperties->GetStartPosition();
         while (map.m_pProperties->GetNextAssoc(position, strKey, strValue))
             if (strKey == L"Value")
                 return Narrow(strValue);
         return std::string("(none)");
     }},
    {"CopyMade", [](const MAP& map) { return ValueOf(MAP(map)); }},
    {"CopyAssigned",
     [](const MAP& map)
     {
         MAP copy;
         copy = map;
         return ValueOf(copy);
     }},
    {"CopyProperties",
     [](const MAP& map)
     {
         MAP copy;
         return copy.CopyProperties(map) ? ValueOf(copy) : "(failed)";
     }},
    {"TextForm",
     [](const MAP& map)
     {
         LyString strForm;
         map.SaveProperties(strForm, true);
         MAP copy;
         copy.LoadProperties(strForm);
         return ValueOf(copy);
     }},
    {"XMLForm", [](const MAP& map) { return Between(map.SavePropertiesXML(L"Root", false, 1), L"\"Value\">", L"<"); }},
    {"Dump", [](const MAP& map) { return Between(map.DumpProperties(L"", L"|"), L"Value: ", L"|"); }},
};

MAP Expected(const char* pDescription, const std::vector<std::pair<const wchar_t*, const wchar_t*>>& aryOthers)
{
    MAP map;
    map.SetProperty(L"Description", LyString().FromANSI(pDescription));
    map.SetProperty(L"Value", L"AQID");
    for (const auto& [pName, pValue] : aryOthers)
        map.SetProperty(pName, pValue);
    return map;
}
} // namespace

class ID3v2PropertiesWay : public ::testing::TestWithParam<WAY>
{
};

TEST_P(ID3v2PropertiesWay, FindsTheTextOfABinaryValue)
{
    for (const auto& [pID, strBody] : {std::pair("PRIV", PRIVATE_BODY), std::pair("APIC", PICTURE_BODY)})
    {
        CID3v2Frame frame;
        Decode(frame, pID, strBody);
        EXPECT_EQ(GetParam().Ask(frame.m_Properties), BYTES_AS_TEXT) << pID;
        EXPECT_EQ(GetParam().Ask(frame.m_Properties), BYTES_AS_TEXT) << pID << " again";
        EXPECT_EQ(Value(frame), BYTES_AS_TEXT) << pID << " afterwards";
    }
}

INSTANTIATE_TEST_SUITE_P(Ways, ID3v2PropertiesWay, ::testing::ValuesIn(s_aryWays),
                         [](const auto& way) { return std::string(way.param.pName); });

TEST(ID3v2Properties, AreCompared)
{
    const MAP picture =
        Expected("front", {{L"Text Encoding", L"0"}, {L"Mime Type", L"image/png"}, {L"Picture Type", L"3"}});
    CID3v2Frame first;
    Decode(first, "APIC", PICTURE_BODY);
    EXPECT_TRUE(first.m_Properties.CompareProperties(picture));
    CID3v2Frame second;
    Decode(second, "APIC", PICTURE_BODY);
    EXPECT_TRUE(picture.CompareProperties(second.m_Properties));
    CID3v2Frame third;
    Decode(third, "APIC", PICTURE_BODY);
    CID3v2Frame other;
    Decode(other, "APIC", PICTURE_BODY + "x");
    EXPECT_FALSE(third.m_Properties.CompareProperties(other.m_Properties));
}

TEST(ID3v2Properties, AreAllThereBeforeAnybodyAsks)
{
    CID3v2Frame frame;
    Decode(frame, "APIC", PICTURE_BODY);
    EXPECT_EQ(frame.m_Properties.m_pProperties->GetCount(), 5);
    EXPECT_TRUE(frame.m_Properties.GetHasProperty(L"Value"));
}

TEST(ID3v2Properties, StayWhatTheyWereWhenTheBodyChanges)
{
    CID3v2Frame frame;
    Decode(frame, "PRIV", PRIVATE_BODY);
    frame.m_Data.GetData()[6] = 'x';
    EXPECT_EQ(Value(frame), BYTES_AS_TEXT);
    Decode(frame, "PRIV", PRIVATE_BODY);
    frame.m_Data.Empty(true);
    EXPECT_EQ(Value(frame), BYTES_AS_TEXT);
    EXPECT_TRUE(frame.Decode(0));
    EXPECT_EQ(Value(frame), "") << "decoded anew";
}

TEST(ID3v2Properties, AreChangedLikeThoseOfAnyMap)
{
    CID3v2Frame frame;
    Decode(frame, "PRIV", PRIVATE_BODY);
    frame.m_Properties.SetProperty(L"Value", L"Another");
    EXPECT_EQ(Value(frame), "Another");
    Decode(frame, "PRIV", PRIVATE_BODY);
    EXPECT_TRUE(frame.m_Properties.RemoveProperty(L"value"));
    EXPECT_FALSE(frame.m_Properties.GetHasProperty(L"Value"));
    frame.m_Properties.SetProperty(L"Value", L"Another");
    EXPECT_EQ(Value(frame), "Another");
    Decode(frame, "PRIV", PRIVATE_BODY);
    frame.m_Properties.m_pProperties->RemoveAll();
    frame.m_Properties.SetProperty(L"Value", L"Another");
    EXPECT_EQ(Value(frame), "Another");
    Decode(frame, "PRIV", PRIVATE_BODY);
    for (int i = 0; i < 100; ++i) // the table of entries grows
        frame.m_Properties.SetPropertyInt(LyString(L"Name ") + LyString().FromInt(i), i);
    EXPECT_EQ(Value(frame), BYTES_AS_TEXT);
    EXPECT_EQ(Property(frame, L"Name 99"), "99");
}

TEST(ID3v2Properties, AFrameIsCopiedWithThem)
{
    CID3v2Frame copy;
    {
        CID3v2Frame frame;
        Decode(frame, "APIC", PICTURE_BODY);
        copy = CID3v2Frame(frame);
    }
    EXPECT_EQ(Value(copy), BYTES_AS_TEXT);
    EXPECT_EQ(Property(copy, L"Mime Type"), "image/png");
}

TEST(ID3v2Properties, GiveTheBytesWithAndWithoutTheText)
{
    CID3v2Frame frame;
    Decode(frame, "PRIV", PRIVATE_BODY);
    auto* pProperties = static_cast<ID3v2Properties*>(frame.m_Properties.m_pProperties);
    LyBuffer bytes;
    EXPECT_TRUE(pProperties->GetBinaryValue(bytes));
    EXPECT_EQ(Content(bytes), "\1\2\3");
    EXPECT_EQ(pProperties->GetBinaryValueBytes(), 3);
    LyString strValue;
    EXPECT_TRUE(pProperties->Lookup(L"Value", strValue));
    EXPECT_EQ(strValue, L"AQID");
    EXPECT_EQ(pProperties->GetBinaryValueBytes(), -1) << "it is a text now";
    EXPECT_TRUE(pProperties->GetBinaryValue(bytes));
    EXPECT_EQ(Content(bytes), "\1\2\3");
    EXPECT_TRUE(pProperties->RemoveKey(L"Value"));
    EXPECT_FALSE(pProperties->GetBinaryValue(bytes)) << "there is no value";
}

TEST(ID3v2Properties, AnEmptyBinaryValueIsAnEmptyText)
{
    CID3v2Frame frame;
    Decode(frame, "PRIV", Bytes("owner\0"));
    LyBuffer bytes;
    EXPECT_FALSE(static_cast<ID3v2Properties*>(frame.m_Properties.m_pProperties)->GetBinaryValue(bytes));
    EXPECT_EQ(Value(frame), "");
}

TEST(ID3v2Properties, AFrameTellsHowManyBytesItsValueStandsFor)
{
    CID3v2Frame frame;
    Decode(frame, "APIC", PICTURE_BODY);
    EXPECT_EQ(frame.GetBinaryValueBytes(), 3);
    EXPECT_EQ(Value(frame), BYTES_AS_TEXT);
    EXPECT_EQ(frame.GetBinaryValueBytes(), 3) << "and as a text";
    frame.m_Properties.SetProperty(L"Value", L"AQIDBA==");
    EXPECT_EQ(frame.GetBinaryValueBytes(), 4);
    frame.m_Properties.DeleteProperties();
    EXPECT_EQ(frame.GetBinaryValueBytes(), 0);
    Decode(frame, "PRIV", PRIVATE_BODY);
    EXPECT_EQ(frame.GetBinaryValueBytes(), 3);
    Decode(frame, "TIT2", Bytes("\0AQID"));
    EXPECT_EQ(frame.GetBinaryValueBytes(), 0) << "a text stands for none";
}

TEST(ID3v2Properties, AFieldHasTheText)
{
    CID3v2Tag tag;
    ASSERT_TRUE(Load(tag, Tag(3, Frame23("APIC", PICTURE_BODY))));
    LyPropertyMap map;
    EXPECT_TRUE(tag.Get(L"Image File", map, 0));
    EXPECT_EQ(ValueOf(map), BYTES_AS_TEXT);
    EXPECT_EQ(Narrow(tag.GetSimple(L"Image File", 1)), BYTES_AS_TEXT);
}

// ---- Memory that is used again

namespace
{
// A picture of that many bytes, each of them c.
std::string PictureTag(int nBytes, char c)
{
    return Tag(3, Frame23("APIC", Bytes("\0image/png\0\3front\0") + std::string(static_cast<size_t>(nBytes), c)));
}

void ExpectPicture(const CID3v2Tag& tag, int nBytes, char c)
{
    LyBuffer image;
    EXPECT_TRUE(image.FromStringBase64(Find(tag, "APIC")->m_Properties.GetProperty(L"Value")));
    EXPECT_EQ(Content(image), std::string(static_cast<size_t>(nBytes), c));
}
} // namespace

TEST(ID3v2Block, IsTakenAgainWhereItIsLargeEnough)
{
    constexpr int nBytes = 200'000;
    ID3v2BlockPtr first = TakeID3v2Block(nBytes);
    const ID3v2BlockPtr second = TakeID3v2Block(nBytes);
    const ID3V2_BLOCK* const pFirst = first.get();
    first->m_nBytes = nBytes - 1; // to tell it by
    first.reset();
    const ID3v2BlockPtr smaller = TakeID3v2Block(nBytes / 2);
    EXPECT_EQ(smaller.get(), pFirst);
    EXPECT_EQ(smaller->m_nBytes, nBytes - 1) << "it is as large as it was";
    const ID3v2BlockPtr another = TakeID3v2Block(nBytes / 2);
    EXPECT_EQ(another->m_nBytes, nBytes / 2) << "there is only one that waits";
    const ID3v2BlockPtr larger = TakeID3v2Block(2 * nBytes);
    EXPECT_EQ(larger->m_nBytes, 2 * nBytes);
}

TEST(ID3v2Block, HoldsTheBytesOfItsOwnPicture)
{
    const std::pair<int, char> aryPictures[] = {{300'000, 'a'}, {70'000, 'b'}, {300'000, 'c'}, {3'000'000, 'd'},
                                                {400'000, 'e'}, {1, 'f'},      {65'536, 'g'}};
    for (const auto& [nBytes, c] : aryPictures)
    {
        CID3v2Tag tag;
        CID3v2Tag other;
        ASSERT_TRUE(Load(tag, PictureTag(nBytes, c)));
        ASSERT_TRUE(Load(other, PictureTag(nBytes + 1, static_cast<char>(c + 1))));
        ExpectPicture(tag, nBytes, c);
        ExpectPicture(other, nBytes + 1, static_cast<char>(c + 1));
    }
}

TEST(ID3v2Block, ServesSeveralThreads)
{
    std::vector<std::thread> aryThreads;
    for (int nThread = 0; nThread < 4; ++nThread)
        aryThreads.emplace_back(
            [nThread]
            {
                for (int i = 0; i < 20; ++i)
                {
                    CID3v2Tag tag;
                    ASSERT_TRUE(Load(tag, PictureTag(70'000 + nThread * 1000, static_cast<char>('a' + nThread))));
                    ExpectPicture(tag, 70'000 + nThread * 1000, static_cast<char>('a' + nThread));
                }
            });
    for (std::thread& thread : aryThreads)
        thread.join();
}
