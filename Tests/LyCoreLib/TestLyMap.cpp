#include "LyMap.h"
#include "LyStringFormat.h"
#include <climits>
#include <gtest/gtest.h>
#include <set>
#include <vector>

namespace
{
// Small numbers are their own hash, so that chains can be told in advance.
using CNumberMap = LyMap<int, int, int, int, true>;
using CNumberSet = LyMap<int, int, int, int, false>;

std::vector<int> Keys(const CNumberMap& map)
{
    std::vector<int> aryKeys;
    int nKey = 0;
    int nValue = 0;
    for (LyPOSITION position = map.GetStartPosition(); map.GetNextAssoc(position, nKey, nValue);)
    {
        EXPECT_EQ(nValue, -nKey);
        aryKeys.push_back(nKey);
    }
    return aryKeys;
}

void Insert(CNumberMap& map, std::initializer_list<int> keys)
{
    for (int nKey : keys)
        map.SetAt(nKey, -nKey);
}

struct Counted
{
    Counted() { ++s_nAlive; }
    virtual ~Counted() { --s_nAlive; }
    static inline int s_nAlive = 0;
};

struct CountedDerived : Counted
{
};

void** TableOf(void* pObject) { return *static_cast<void***>(pObject); }
} // namespace

// The virtual table, two counters, the container, the chains.
static_assert(sizeof(CNumberMap) == 32 && sizeof(LyStringCRCUniqueList<false>) == 32);
static_assert(sizeof(LyOwnedPtrMap<int, int, Counted, true>) == 40);
static_assert(sizeof(MAP_BUCKET_BASE) == sizeof(void*));
static_assert(sizeof(MAP_BUCKET<LyString, LyString>) == 3 * sizeof(void*));
static_assert(sizeof(MAP_BUCKET<LyString, LyString, false>) == 2 * sizeof(void*));
static_assert(sizeof(LyPOSITION) == 16);
static_assert(std::is_base_of_v<LyMap<int, int, Counted*, Counted*, true>, LyOwnedPtrMap<int, int, Counted, true>>);

TEST(LyMapEmpty, FindsNothing)
{
    CNumberMap map;
    int nValue = 7;
    EXPECT_EQ(map.GetHashSize(), 0);
    EXPECT_FALSE(map.Lookup(1, nValue));
    EXPECT_EQ(nValue, 7);
    EXPECT_EQ(map.FindValue(1), nullptr);
    EXPECT_FALSE(map.Contains(1));
    EXPECT_FALSE(map.RemoveKey(1));
    map.RemoveAll();
    EXPECT_EQ(map.GetCount(), 0);
}

TEST(LyMapEmpty, StartsAtTheEnd)
{
    const CNumberMap map;
    LyPOSITION position = map.GetStartPosition();
    EXPECT_EQ(position.m_nIndex, -1);
    EXPECT_EQ(position.m_pBucket, nullptr);
    int nKey = 7;
    int nValue = 8;
    EXPECT_FALSE(map.GetNextAssoc(position, nKey, nValue));
    EXPECT_EQ(nKey, 7);
    EXPECT_EQ(nValue, 8);
    map.IncrementPosition(position);
    EXPECT_TRUE(position.IsEnd());
}

TEST(LyMapConstructor, PositiveSizeIsIgnoredButMakesTheTable)
{
    EXPECT_EQ(CNumberMap(1000).GetHashSize(), 7);
    EXPECT_EQ(CNumberMap(1).GetHashSize(), 7);
    EXPECT_EQ(CNumberMap(0).GetHashSize(), 0);
    EXPECT_EQ(CNumberMap(-5).GetHashSize(), 0);
}

struct REHASH_CASE
{
    int nCount;
    int nHashSize;
    bool bNeeded;
};

TEST(LyMapRehash, IsNeededAboveTwoPerChainAndTwo)
{
    const REHASH_CASE aryCases[] = {
        {0, 0, true},       {0, -1, true},   {0, INT_MIN, true}, {0, 7, false},     {16, 7, false},
        {17, 7, true},      {64, 31, false}, {65, 31, true},     {256, 127, false}, {257, 127, true},
        {INT_MAX, 7, true}, {-1, 7, false},  {4, 1, false},      {5, 1, true},      {INT_MAX, INT_MAX, false},
    };
    for (const REHASH_CASE& row : aryCases)
        EXPECT_EQ(LyMapBase::MapGetNeedsRehash(row.nCount, row.nHashSize), row.bNeeded)
            << row.nCount << " in " << row.nHashSize;
}

TEST(LyMapSetHashSize, DoublesUntilAboveTheTarget)
{
    struct CASE
    {
        int nCount;
        bool bAddMargin;
        int nHashSize;
    };
    const CASE aryCases[] = {{0, false, 7},    {7, false, 7},     {8, false, 15},    {15, false, 15},
                             {16, false, 31},  {100, false, 127}, {127, false, 127}, {128, false, 255},
                             {100, true, 127}, {106, true, 127},  {107, true, 255},  {6, true, 7},
                             {7, true, 15},    {-1, false, 7},    {INT_MIN, true, 7}};
    for (const CASE& row : aryCases)
    {
        CNumberMap map;
        EXPECT_TRUE(map.SetHashSize(row.nCount, row.bAddMargin));
        EXPECT_EQ(map.GetHashSize(), row.nHashSize) << row.nCount << row.bAddMargin;
    }
}

TEST(LyMapSetHashSize, RefusesWhatHasNoSize)
{
    CNumberMap map;
    Insert(map, {1, 2});
    EXPECT_FALSE(map.SetHashSize(INT_MAX, true)); // would take 2^32 - 1
    EXPECT_EQ(map.GetCount(), 2);
    EXPECT_TRUE(map.Contains(2));
}

TEST(LyMapGrowth, ComesWithTheSeventeenthAndTheSixtyFifthEntry)
{
    CNumberMap map;
    for (int i = 1; i <= 257; ++i)
    {
        Insert(map, {i});
        const int nExpected = i <= 16 ? 7 : i <= 64 ? 31 : i <= 256 ? 127 : 511;
        ASSERT_EQ(map.GetHashSize(), nExpected) << i;
    }
    EXPECT_EQ(map.GetCount(), 257);
    for (int i = 1; i <= 257; ++i)
        EXPECT_TRUE(map.RemoveKey(i));
    EXPECT_EQ(map.GetHashSize(), 511) << "a table never shrinks";
    EXPECT_EQ(map.GetCount(), 0);
}

TEST(LyMapGrowth, ReplacingNeverGrows)
{
    CNumberMap map;
    for (int i = 0; i < 16; ++i)
        Insert(map, {i});
    map.SetAt(3, -3);
    EXPECT_EQ(map.GetHashSize(), 7);
    EXPECT_EQ(map.GetCount(), 16);
}

TEST(LyMapIteration, GoesByChainAndThenInOrderOfInsertion)
{
    CNumberMap map;
    Insert(map, {8, 3, 7, 0, 1, 14});
    EXPECT_EQ(Keys(map), std::vector<int>({7, 0, 14, 8, 1, 3}));
}

// 0, 217 and 434 share a chain in 7 and in 31 chains.
TEST(LyMapIteration, GrowthTurnsAChainAround)
{
    CNumberMap map;
    Insert(map, {0, 217, 434, 1, 2, 3, 4, 5, 6, 8, 9, 10, 11, 12, 13, 15});
    std::vector<int> aryKeys = Keys(map);
    EXPECT_EQ(std::vector<int>(aryKeys.begin(), aryKeys.begin() + 3), std::vector<int>({0, 217, 434}));
    Insert(map, {16});
    aryKeys = Keys(map);
    EXPECT_EQ(aryKeys, std::vector<int>({434, 217, 0, 1, 2, 3, 4, 5, 6, 8, 9, 10, 11, 12, 13, 15, 16}));
}

// Old chains are walked in their order: 217 stands in an earlier chain of 15 than 434 does, and both end in one of 7.
TEST(LyMapIteration, RelinksByTheOldOrder)
{
    CNumberMap map;
    map.SetHashSize(8, false);
    Insert(map, {217, 434}); // chains 7 and 14 of 15
    ASSERT_EQ(Keys(map), std::vector<int>({217, 434}));
    map.SetHashSize(0, false);
    EXPECT_EQ(Keys(map), std::vector<int>({434, 217}));
}

TEST(LyMapIteration, InsertWithGrowthGoesToTheTail)
{
    CNumberMap map;
    Insert(map, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 31});
    ASSERT_EQ(map.GetHashSize(), 31);
    const std::vector<int> aryKeys = Keys(map);
    EXPECT_EQ(aryKeys[0], 0);
    EXPECT_EQ(aryKeys[1], 31);
}

TEST(LyMapIteration, PositionsNameTheirChain)
{
    CNumberMap map;
    Insert(map, {5, 12, 2});
    LyPOSITION position = map.GetStartPosition();
    EXPECT_EQ(position.m_nIndex, 2);
    map.IncrementPosition(position);
    EXPECT_EQ(position.m_nIndex, 5);
    map.IncrementPosition(position);
    EXPECT_EQ(position.m_nIndex, 5);
    EXPECT_NE(position.m_pBucket, nullptr);
    map.IncrementPosition(position);
    EXPECT_EQ(position, LyPOSITION());
    EXPECT_EQ(position.m_nIndex, -1);
}

TEST(LyMapSetAt, InsertsAndReplaces)
{
    CNumberMap map;
    EXPECT_TRUE(map.SetAt(5, 50));
    EXPECT_TRUE(map.SetAt(5, 51));
    int nValue = 0;
    EXPECT_TRUE(map.Lookup(5, nValue));
    EXPECT_EQ(nValue, 51);
    EXPECT_EQ(map.GetCount(), 1);
    *map.FindValue(5) = 52;
    EXPECT_TRUE(map.Lookup(5, nValue));
    EXPECT_EQ(nValue, 52);
    EXPECT_EQ(*static_cast<const CNumberMap&>(map).FindValue(5), 52);
}

TEST(LyMapRemoveKey, TakesFromAnywhereInAChain)
{
    CNumberMap map;
    Insert(map, {0, 7, 14, 21});
    EXPECT_TRUE(map.RemoveKey(7));
    EXPECT_FALSE(map.RemoveKey(7));
    EXPECT_EQ(Keys(map), std::vector<int>({0, 14, 21}));
    EXPECT_TRUE(map.RemoveKey(0));
    EXPECT_TRUE(map.RemoveKey(21));
    EXPECT_EQ(Keys(map), std::vector<int>({14}));
    EXPECT_EQ(map.GetCount(), 1);
}

TEST(LyMapRemoveAll, KeepsTheTable)
{
    CNumberMap map;
    Insert(map, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17});
    map.RemoveAll();
    EXPECT_EQ(map.GetCount(), 0);
    EXPECT_EQ(map.GetHashSize(), 31);
    EXPECT_TRUE(map.GetStartPosition().IsEnd());
    EXPECT_FALSE(map.Contains(1));
    Insert(map, {1});
    EXPECT_EQ(Keys(map), std::vector<int>({1}));
}

TEST(LyMapSet, HasKeysAndNoValues)
{
    CNumberSet set;
    EXPECT_TRUE(set.Add(1));
    EXPECT_FALSE(set.Add(1));
    EXPECT_TRUE(set.SetAt(2, 99));
    EXPECT_TRUE(set.Contains(2));
    EXPECT_EQ(set.GetCount(), 2);
    EXPECT_EQ(set.GetBucketBytes(), 16); // the link, and the key with its padding
    EXPECT_EQ(set.FindValue(2), nullptr);
    int nKey = 0;
    LyPOSITION position = set.GetStartPosition();
    EXPECT_TRUE(set.GetNextAssoc(position, nKey));
    EXPECT_EQ(nKey, 1);
    int nValue = 7;
    EXPECT_TRUE(set.GetNextAssoc(position, nKey, nValue));
    EXPECT_EQ(nKey, 2);
    EXPECT_EQ(nValue, 7);
}

TEST(LyMapContainer, HoldsTheBuckets)
{
    CNumberMap map;
    Insert(map, {1, 2});
    map.SetUseBlockDataContainer(true, 64);
    EXPECT_EQ(map.GetCount(), 0) << "changing the allocator empties the map";
    for (int i = 0; i < 1000; ++i)
        Insert(map, {i});
    EXPECT_EQ(map.GetCount(), 1000);
    EXPECT_TRUE(map.RemoveKey(500));
    EXPECT_FALSE(map.Contains(500));
    map.RemoveAll();
    EXPECT_EQ(map.GetCount(), 0);
    Insert(map, {1});
    EXPECT_EQ(Keys(map), std::vector<int>({1}));
    map.SetUseBlockDataContainer(false, 64);
    EXPECT_EQ(map.GetCount(), 0);
    Insert(map, {2});
    EXPECT_EQ(Keys(map), std::vector<int>({2}));
}

TEST(LyMapContainer, WithoutABlockAnInsertIsRefused)
{
    class NoRoom : public CNumberMap
    {
    public:
        BUCKET* CreateBucket(int) override { return nullptr; }
    } map;
    EXPECT_FALSE(map.SetAt(1, 1));
    EXPECT_FALSE(map.Add(1));
    EXPECT_EQ(map.GetCount(), 0);
    EXPECT_TRUE(map.GetStartPosition().IsEnd());
}

TEST(LyMapSlots, StandInTheirOrder)
{
    CNumberMap map;
    Insert(map, {8});
    MAP_BUCKET_BASE* pBucket = map.GetStartPosition().m_pBucket;
    void** ppSlots = TableOf(&map);
    EXPECT_EQ(reinterpret_cast<int (*)(const void*, MAP_BUCKET_BASE*)>(ppSlots[3])(&map, pBucket), 1);
    EXPECT_EQ(reinterpret_cast<int (*)(const void*)>(ppSlots[4])(&map), 16);
    EXPECT_EQ(reinterpret_cast<unsigned int (*)(const void*, int)>(ppSlots[5])(&map, 77), 77U);
    EXPECT_TRUE(reinterpret_cast<bool (*)(const void*, int, int)>(ppSlots[6])(&map, 4, 4));
    EXPECT_FALSE(reinterpret_cast<bool (*)(const void*, int, int)>(ppSlots[6])(&map, 4, 5));
    using BUCKET = CNumberMap::BUCKET;
    BUCKET* pNew = reinterpret_cast<BUCKET* (*)(void*, int)>(ppSlots[8])(&map, 3);
    EXPECT_EQ(pNew->m_Key, 3);
    EXPECT_EQ(pNew->m_pNext, nullptr);
    reinterpret_cast<void (*)(void*, BUCKET*, bool)>(ppSlots[7])(&map, pNew, false); // stays
    EXPECT_EQ(pNew->m_Key, 3);
    reinterpret_cast<void (*)(void*, MAP_BUCKET_BASE*)>(ppSlots[2])(&map, pNew); // is freed
}

TEST(LyMapKeys, MayBeAnythingThatHasAHash)
{
    int nFirst = 0;
    LyMap<int*, int*, int, int, true> mapPointers;
    mapPointers.SetAt(&nFirst, 1);
    EXPECT_TRUE(mapPointers.Contains(&nFirst));
    EXPECT_FALSE(mapPointers.Contains(nullptr));
    LyMap<double, double, int, int, false> setDoubles;
    EXPECT_TRUE(setDoubles.Add(1.5));
    EXPECT_TRUE(setDoubles.Contains(1.5));
    LyMap<LyString, const LyString&, int, int, false> setStrings;
    EXPECT_TRUE(setStrings.Add(L"a"));
    EXPECT_TRUE(setStrings.Add(L"A"));
    EXPECT_FALSE(setStrings.Add(L"a"));
    LyMap<long long, long long, int, int, false> setLongs;
    EXPECT_TRUE(setLongs.Add(1));
    EXPECT_TRUE(setLongs.Add(0x100000001LL)); // same low 32 bits
    EXPECT_EQ(setLongs.GetCount(), 2);
}

TEST(LyMapKeys, OfAClassGoThroughItsOverrides)
{
    struct KEY
    {
        int n;
    };
    class KeySet : public LyMap<KEY, const KEY&, int, int, false>
    {
    public:
        unsigned int HashKey(const KEY& key) const override { return static_cast<unsigned int>(key.n); }
        bool AreKeysEqual(const KEY& first, const KEY& second) const override { return first.n == second.n; }
    } set;
    EXPECT_TRUE(set.Add(KEY{3}));
    EXPECT_FALSE(set.Add(KEY{3}));
    EXPECT_EQ(set.GetStartPosition().m_nIndex, 3);
}

TEST(LyOwnedPtrMap, DeletesValuesWithTheirBuckets)
{
    {
        LyOwnedPtrMap<LyString, const wchar_t*, Counted, true> map;
        for (int i = 0; i < 20; ++i)
            map.SetAt(LyFormatString(L"%d", i), new CountedDerived());
        EXPECT_EQ(Counted::s_nAlive, 20);
        EXPECT_TRUE(map.RemoveKey(L"7"));
        EXPECT_EQ(Counted::s_nAlive, 19);
        map.RemoveAll();
        EXPECT_EQ(Counted::s_nAlive, 0);
        map.SetAt(L"again", new Counted());
        map.SetAt(L"nothing", nullptr);
    }
    EXPECT_EQ(Counted::s_nAlive, 0);
}

TEST(LyOwnedPtrMap, ReplacedValueGoesBackToTheCaller)
{
    LyOwnedPtrMap<int, int, Counted, true> map;
    Counted* pOld = new Counted();
    map.SetAt(1, pOld);
    map.SetAt(1, new Counted());
    EXPECT_EQ(Counted::s_nAlive, 2);
    delete pOld;
}

TEST(LyOwnedPtrMap, DeletesNothingWithoutOwnership)
{
    Counted object;
    {
        LyOwnedPtrMap<int, int, Counted, false> map(false);
        map.SetAt(1, &object);
        map.SetAt(2, &object);
        map.RemoveKey(1);
    }
    EXPECT_EQ(Counted::s_nAlive, 1);
}

TEST(LyOwnedPtrMap, TextKeysAreComparedWithTheirCase)
{
    LyOwnedPtrMap<LyString, const wchar_t*, Counted, true> map;
    map.SetAt(L"Name", new Counted());
    EXPECT_TRUE(map.Contains(L"Name"));
    EXPECT_FALSE(map.Contains(L"name"));
}
