#include "LyMap.h"
#include "LyStringFormat.h"
#include <gtest/gtest.h>
#include <map>
#include <string>

namespace
{
using CTextMap = LyStringMap<LyString, false, LyString, const LyString&, true>;
using CCaseMap = LyStringMap<LyString, true, int, int, true>;

const wchar_t* Characters(const LyString& str) { return str; }
} // namespace

static_assert(std::is_base_of_v<LyMap<LyString, const wchar_t*, LyString, const LyString&, true>, CTextMap>);
static_assert(std::is_base_of_v<LyStringMap<LyString, false, int, int, false>, LyStringUniqueList<LyString, false>>);
static_assert(std::is_base_of_v<LyMap<LyStringHashBase<false>, LyStringHashBase<false>, int, int, false>,
                                LyStringCRCUniqueList<false>>);
static_assert(sizeof(LyStringHashBase<false>) == 8);

TEST(LyStringMap, KeysThatDifferInCaseAreOneKey)
{
    CTextMap map;
    map.SetAt(L"Artist", L"one");
    map.SetAt(L"ARTIST", L"two");
    EXPECT_EQ(map.GetCount(), 1);
    LyString strValue;
    EXPECT_TRUE(map.Lookup(L"artist", strValue));
    EXPECT_STREQ(strValue, L"two");
    LyString strKey;
    LyPOSITION position = map.GetStartPosition();
    EXPECT_TRUE(map.GetNextAssoc(position, strKey, strValue));
    EXPECT_STREQ(strKey, L"Artist") << "the key stays as it was first inserted";
    EXPECT_TRUE(map.RemoveKey(L"aRTIST"));
    EXPECT_EQ(map.GetCount(), 0);
}

TEST(LyStringMap, CaseSensitiveFormKeepsThemApart)
{
    CCaseMap map;
    map.SetAt(L"a", 1);
    map.SetAt(L"A", 2);
    int nValue = 0;
    EXPECT_TRUE(map.Lookup(L"a", nValue));
    EXPECT_EQ(nValue, 1);
    EXPECT_TRUE(map.Lookup(L"A", nValue));
    EXPECT_EQ(nValue, 2);
    EXPECT_FALSE(map.Lookup(L"b", nValue));
    EXPECT_EQ(nValue, 2);
}

TEST(LyStringMap, HashesIn32BitsWithoutACut)
{
    const CTextMap map;
    EXPECT_EQ(map.HashKey(nullptr), 0U);
    EXPECT_EQ(map.HashKey(L""), 0U);
    EXPECT_EQ(map.HashKey(L"ABC"), 807794786U); // 417419622498 modulo 2^32
    EXPECT_EQ(map.HashKey(L"\x10041"), 0x10041U);
    EXPECT_EQ(CCaseMap().HashKey(L"AB"), 65U * 65599U + 66U);
    EXPECT_TRUE(map.AreKeysEqual(L"Abc", L"aBC"));
    EXPECT_FALSE(map.AreKeysEqual(L"abc", L"abcd"));
    EXPECT_FALSE(map.AreKeysEqual(L"abcd", L"abc"));
    EXPECT_FALSE(CCaseMap().AreKeysEqual(L"Abc", L"aBC"));
}

TEST(LyStringMap, NullKeyIsTheEmptyOne)
{
    CTextMap map;
    map.SetAt(nullptr, L"value");
    EXPECT_TRUE(map.Contains(L""));
    EXPECT_TRUE(map.Contains(nullptr));
    EXPECT_EQ(map.GetCount(), 1);
    EXPECT_TRUE(map.RemoveKey(nullptr));
}

TEST(LyStringMap, KeyMayBeTheStoredOne)
{
    CTextMap map;
    map.SetAt(L"key", L"value");
    LyString strKey;
    LyString strValue;
    LyPOSITION position = map.GetStartPosition();
    map.GetNextAssoc(position, strKey, strValue);
    const wchar_t* pStored = strKey;
    strKey.Empty(); // only the map holds the text now
    EXPECT_TRUE(map.RemoveKey(pStored));
}

TEST(LyStringMap, StoredValuesShareTheirText)
{
    CTextMap map;
    const LyString strValue(L"value");
    map.SetAt(L"key", strValue);
    EXPECT_EQ(Characters(*map.FindValue(L"KEY")), Characters(strValue));
}

TEST(LyStringMap, AgreesWithAnOrderedMap)
{
    CCaseMap map;
    std::map<std::wstring, int> mapModel;
    unsigned int nSeed = 1;
    for (int i = 0; i < 5000; ++i)
    {
        nSeed = nSeed * 1664525 + 1013904223;
        const int nKey = static_cast<int>(nSeed >> 16) % 400;
        const LyString strKey = LyFormatString(L"key %d", nKey);
        if ((nSeed >> 9) % 3 == 0)
        {
            EXPECT_EQ(map.RemoveKey(strKey), mapModel.erase(Characters(strKey)) == 1);
        }
        else
        {
            map.SetAt(strKey, i);
            mapModel[Characters(strKey)] = i;
        }
        ASSERT_EQ(map.GetCount(), static_cast<int>(mapModel.size()));
    }
    int nSeen = 0;
    LyString strKey;
    int nValue = 0;
    for (LyPOSITION position = map.GetStartPosition(); map.GetNextAssoc(position, strKey, nValue); ++nSeen)
        EXPECT_EQ(mapModel.at(Characters(strKey)), nValue);
    EXPECT_EQ(nSeen, map.GetCount());
}

TEST(LyStringUniqueList, IsASetOfStrings)
{
    LyStringUniqueList<LyString, false> list;
    EXPECT_TRUE(list.Add(L"One"));
    EXPECT_FALSE(list.Add(L"ONE"));
    EXPECT_TRUE(list.Contains(L"one"));
    EXPECT_EQ(list.GetCount(), 1);
    EXPECT_EQ(list.GetBucketBytes(), 16); // the link and the key
    LyStringUniqueList<LyString, true> listWithCase;
    EXPECT_TRUE(listWithCase.Add(L"One"));
    EXPECT_TRUE(listWithCase.Add(L"ONE"));
}

TEST(LyStringHashBase, IsTheHashOfTheText)
{
    EXPECT_EQ(LyStringHashBase<false>().m_nHash, 0U);
    EXPECT_EQ(LyStringHashBase<false>(L"ABC").m_nHash, 417419622498ULL);
    EXPECT_EQ(LyStringHashBase<true>(LyString(L"abc")).m_nHash, 417419622498ULL);
    EXPECT_EQ(LyStringHashBase<true>(0).m_nHash, 0U);
    EXPECT_EQ(static_cast<unsigned long long>(LyStringHashBase<true>(417419622498ULL)), 417419622498ULL);
}

TEST(LyStringCRCUniqueList, RemembersHashes)
{
    LyStringCRCUniqueList<false> list;
    EXPECT_TRUE(list.Add(L"One"));
    EXPECT_FALSE(list.Add(LyString(L"oNE")));
    EXPECT_TRUE(list.Contains(L"ONE"));
    EXPECT_FALSE(list.Contains(L"Two"));
    EXPECT_TRUE(list.Add(417419622498ULL));
    EXPECT_TRUE(list.Contains(L"abc"));
    LyStringCRCUniqueList<true> listWithCase;
    EXPECT_TRUE(listWithCase.Add(L"One"));
    EXPECT_TRUE(listWithCase.Add(L"oNE"));
}

TEST(LyStringCRCUniqueList, ComparesAll64Bits)
{
    LyStringCRCUniqueList<false> list;
    EXPECT_EQ(list.HashKey(0x1234567800000005ULL), 5U);
    EXPECT_TRUE(list.AreKeysEqual(0x1234567800000005ULL, 0x1234567800000005ULL));
    EXPECT_FALSE(list.AreKeysEqual(0x1234567800000005ULL, 0x0234567800000005ULL));
    EXPECT_TRUE(list.Add(0x1234567800000005ULL));
    EXPECT_TRUE(list.Add(0x0234567800000005ULL));
    EXPECT_EQ(list.GetCount(), 2);
    EXPECT_EQ(list.GetBucketBytes(), 16);
}

TEST(LyStringCRCUniqueList, HoldsManyAndDropsThemInOneStep)
{
    LyStringCRCUniqueList<false> list;
    for (unsigned long long n = 1; n <= 20000; ++n) // 16 bytes each: several blocks of 0x10000
        EXPECT_TRUE(list.Add(n * 0x9e3779b97f4a7c15ULL));
    for (unsigned long long n = 1; n <= 20000; ++n)
        ASSERT_TRUE(list.Contains(n * 0x9e3779b97f4a7c15ULL));
    list.RemoveAll();
    EXPECT_EQ(list.GetCount(), 0);
    EXPECT_TRUE(list.Add(1));
}
