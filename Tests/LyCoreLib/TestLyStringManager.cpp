#include "StringTestSupport.h"
#include <climits>
#include <clocale>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

namespace
{
LyStringBuffer* BlockOfCharacters(wchar_t* p) { return LyStringBuffer::FromCharacters(p); }

// Made before the static objects of the library itself, the loader among them.
struct EARLY
{
    EARLY() : m_str(L"early"), m_bManager(LyStringGlobals::s_nInitialized == LyStringGlobals::INITIALIZED) {}
    LyString m_str;
    bool m_bManager;
};
__attribute__((init_priority(101))) EARLY s_Early;

// A manager of a caller's own, which counts what comes back to it.
class CountingManager final : public LyStringGlobals
{
public:
    void Delete(LyStringBuffer* pBlock) override
    {
        ++m_nDeleted;
        LyStringGlobals::Delete(pBlock);
    }

    int m_nDeleted = 0;
};
} // namespace

TEST(LyStringGlobals, DerivedManagerTakesItsOwnBlocksBack)
{
    CountingManager manager;
    wchar_t* p = manager.NewLyStringBuffer(L"far", -1, -1, false, false, true);
    ILyStringManager* pOwner = BlockOfCharacters(p)->manager;
    ASSERT_EQ(pOwner, &manager);
    pOwner->Delete(BlockOfCharacters(p));
    EXPECT_EQ(manager.m_nDeleted, 1);
    EXPECT_EQ(manager.GetSlotCount(), 1);
}

TEST(LyStringBuffer, HasThePublishedLayout)
{
    static_assert(offsetof(LyStringBuffer, manager) == 0);
    static_assert(offsetof(LyStringBuffer, nLength) == 8);
    static_assert(offsetof(LyStringBuffer, nAllocated) == 12);
    static_assert(offsetof(LyStringBuffer, nReferences) == 16);
    static_assert(offsetof(LyStringBuffer, characters) == 20);
    static_assert(LyStringBuffer::EMPTY_REFERENCES == 0x7ffffc17 && LyStringBuffer::LOCKED == -1);
    static_assert(sizeof(LyString) == sizeof(void*));
}

TEST(LyStringGlobals, MakesTheManagerForAStringOfAnEarlyStaticConstructor)
{
    EXPECT_STREQ(s_Early.m_str, L"early");
    EXPECT_TRUE(s_Early.m_bManager);
    EXPECT_EQ(BlockOf(s_Early.m_str)->manager, LyStringGlobals::s_pManager);
}

TEST(LyStringGlobals, MarkerSaysThatTheManagerExists)
{
    static_assert(LyStringGlobals::INITIALIZED == 0xb23a8c33);
    EXPECT_EQ(LyStringGlobals::s_nInitialized.load(), 0xb23a8c33u);
    EXPECT_EQ(LyStringGlobals::GetManager(), LyStringGlobals::s_pManager);
}

TEST(LyStringGlobals, AnotherMarkerMakesTheManagerAvailableAgain)
{
    LyString strOld(L"old");
    LyStringGlobals::s_nInitialized = 0;
    LyString strNew(L"new");
    EXPECT_EQ(LyStringGlobals::s_nInitialized.load(), 0xb23a8c33u);
    EXPECT_EQ(BlockOf(strNew)->manager, LyStringGlobals::s_pManager);
    EXPECT_STREQ(strOld, L"old");
}

TEST(LyStringGlobals, IsMadeOnceBySeveralThreads)
{
    LyStringGlobals::s_nInitialized = 0;
    std::vector<std::thread> aryThreads;
    std::vector<ILyStringManager*> aryManagers(4);
    for (auto& pManager : aryManagers)
        aryThreads.emplace_back(
            [&]
            {
                LyString str(L"text");
                pManager = BlockOf(str)->manager;
            });
    for (auto& thread : aryThreads)
        thread.join();
    for (auto* pManager : aryManagers)
        EXPECT_EQ(pManager, LyStringGlobals::GetManager());
}

TEST(LyStringGlobals, SharedEmptyStringIsAValidBlock)
{
    LyStringGlobals manager;
    LyStringBuffer* pEmpty = BlockOfCharacters(manager.GetEmptyLyStringData());
    EXPECT_EQ(pEmpty->manager, &manager);
    EXPECT_EQ(pEmpty->nLength, 0);
    EXPECT_EQ(pEmpty->nAllocated, 1);
    EXPECT_EQ(pEmpty->nReferences, 0x7ffffc17);
    EXPECT_EQ(pEmpty->characters[0], 0);
    LyStringBuffer* pOwn = BlockOfCharacters(LyStringGlobals::GetManager()->GetEmptyLyStringData());
    EXPECT_EQ(pOwn->manager, LyStringGlobals::GetManager());
    EXPECT_EQ(pOwn->nAllocated, 1);
    EXPECT_EQ(pOwn->nReferences, 0x7ffffc17);
    manager.Delete(pEmpty);
    EXPECT_EQ(manager.GetSlotCount(), 0);
}

// ---- Construct and Delete

TEST(LyStringConstruct, SetsUpTheBlock)
{
    LyStringGlobals manager;
    LyStringBuffer* p = manager.Construct(5, true);
    EXPECT_EQ(p->manager, &manager);
    EXPECT_EQ(p->nLength, 5);
    EXPECT_EQ(p->nAllocated, 6);
    EXPECT_EQ(p->nReferences, 1);
    manager.Delete(p);
}

TEST(LyStringConstruct, TakesAKeptBlockWithItsOwnCapacity)
{
    LyStringGlobals manager;
    LyStringBuffer* p = manager.Construct(20, true);
    p->nReferences = 0;
    manager.Delete(p);
    EXPECT_EQ(manager.GetSlotCount(), 1);
    LyStringBuffer* pAgain = manager.Construct(3, true);
    EXPECT_EQ(pAgain, p);
    EXPECT_EQ(pAgain->nAllocated, 21);
    EXPECT_EQ(pAgain->nLength, 3);
    EXPECT_EQ(pAgain->nReferences, 1);
    EXPECT_EQ(manager.GetSlotCount(), 0);
    manager.Delete(pAgain);
}

TEST(LyStringConstruct, LeavesKeptBlocksAloneIfNotAsked)
{
    LyStringGlobals manager;
    manager.Delete(manager.Construct(20, true));
    LyStringBuffer* p = manager.Construct(20, false);
    EXPECT_EQ(manager.GetSlotCount(), 1);
    manager.Delete(p);
}

struct SLOT_CASE
{
    const char* pName;
    int nCapacities[4]; // of the kept blocks, in the order of the slots; 0: none
    int nNeeded;        // terminator included
    int nTaken;         // index of the block that is taken; -1: none of them
};

const SLOT_CASE s_arySlotCases[] = {
    {"TooSmallIsNotTaken", {10, 20, 0, 0}, 21, -1},    {"ExactFit", {10, 20, 0, 0}, 20, 1},
    {"SmallestSlackWins", {200, 100, 150, 0}, 50, 1},  {"EqualSlackKeepsTheEarlier", {100, 80, 80, 0}, 50, 1},
    {"SlackOf15EndsTheSearch", {65, 50, 0, 0}, 50, 0}, {"SlackOf16DoesNot", {66, 50, 0, 0}, 50, 1},
    {"LargestSmallBlock", {1031, 0, 0, 0}, 1031, 0},
};

TEST(LyStringConstruct, PicksTheKeptBlockByItsSlack)
{
    for (const SLOT_CASE& row : s_arySlotCases)
    {
        LyStringGlobals manager;
        std::vector<LyStringBuffer*> aryBlocks;
        for (int nCapacity : row.nCapacities)
        {
            if (nCapacity > 0)
                aryBlocks.push_back(manager.Construct(nCapacity - 1, false));
        }
        for (LyStringBuffer* p : aryBlocks)
            manager.Delete(p);
        LyStringBuffer* pTaken = manager.Construct(row.nNeeded - 1, true);
        if (row.nTaken >= 0)
        {
            EXPECT_EQ(pTaken, aryBlocks[static_cast<size_t>(row.nTaken)]) << row.pName;
        }
        EXPECT_EQ(manager.GetSlotCount(), static_cast<int>(aryBlocks.size()) - (row.nTaken >= 0 ? 1 : 0)) << row.pName;
        manager.Delete(pTaken);
    }
}

TEST(LyStringConstruct, AFreedSlotIsFilledFirst)
{
    LyStringGlobals manager;
    LyStringBuffer* pA = manager.Construct(9, false);
    LyStringBuffer* pB = manager.Construct(99, false);
    LyStringBuffer* pC = manager.Construct(9, false);
    manager.Delete(pA);
    manager.Delete(pB);
    EXPECT_EQ(manager.Construct(9, true), pA);
    manager.Delete(pC); // into the place of pA, before pB
    LyStringBuffer* p = manager.Construct(9, true);
    EXPECT_EQ(p, pC);
    manager.Delete(p);
    manager.Delete(pA);
}

TEST(LyStringConstruct, SeventeenthBlockIsNotKept)
{
    LyStringGlobals manager;
    std::vector<LyStringBuffer*> aryBlocks;
    for (int i = 0; i < 17; ++i)
        aryBlocks.push_back(manager.Construct(10, true));
    for (int i = 0; i < 16; ++i)
    {
        manager.Delete(aryBlocks[static_cast<size_t>(i)]);
        EXPECT_EQ(manager.GetSlotCount(), i + 1);
    }
    manager.Delete(aryBlocks[16]);
    EXPECT_EQ(manager.GetSlotCount(), 16);
}

TEST(LyStringConstruct, Keeps1030CharactersButNot1031)
{
    LyStringGlobals manager;
    manager.Delete(manager.Construct(1031, true));
    EXPECT_EQ(manager.GetSlotCount(), 0);
    manager.Delete(manager.Construct(1030, true));
    EXPECT_EQ(manager.GetSlotCount(), 1);
    LyStringBuffer* pLarge = manager.Construct(1031, true);
    EXPECT_EQ(manager.GetSlotCount(), 1);
    manager.Delete(pLarge);
}

TEST(LyStringConstruct, DeletingNullDoesNothing)
{
    LyStringGlobals manager;
    manager.Delete(nullptr);
    EXPECT_EQ(manager.GetSlotCount(), 0);
}

TEST(LyStringConstruct, HostileSizesAreRefused)
{
    LyStringGlobals manager;
    EXPECT_EQ(manager.Construct(INT_MAX, true), nullptr);
    EXPECT_EQ(manager.NewLyStringBuffer(INT_MAX), manager.GetEmptyLyStringData());
    EXPECT_EQ(manager.NewLyStringBuffer(-3), manager.GetEmptyLyStringData());
    EXPECT_EQ(manager.NewLyStringBuffer(L"x", -1, INT_MAX, true, true, true), manager.GetEmptyLyStringData());
    LyStringBuffer* p = manager.Construct(INT_MIN, true);
    EXPECT_EQ(p->nLength, 0);
    EXPECT_EQ(p->nAllocated, 1);
    manager.Delete(p);
}

TEST(LyStringConstruct, BlocksMayComeBackFromAnyThread)
{
    LyStringGlobals manager;
    std::vector<std::thread> aryThreads;
    for (int i = 0; i < 4; ++i)
        aryThreads.emplace_back(
            [&]
            {
                for (int n = 0; n < 2000; ++n)
                {
                    LyStringBuffer* pA = manager.Construct(n % 40, true);
                    LyStringBuffer* pB = manager.Construct(n % 7, true);
                    pA->characters[0] = pB->characters[0] = L'x';
                    manager.Delete(pA);
                    manager.Delete(pB);
                }
            });
    for (auto& thread : aryThreads)
        thread.join();
    EXPECT_GE(manager.GetSlotCount(), 1);
    EXPECT_LE(manager.GetSlotCount(), 16);
}

// ---- NewLyStringBuffer

struct COPY_CASE
{
    const char* pName;
    const wchar_t* pSource;
    int nSourceLength;
    int nAllocate;
    bool bEvenIfEmpty;
    bool bTrustLength;
    const wchar_t* pText; // expected, null for the shared empty string
    int nLength;
    int nAllocated;
};

const COPY_CASE s_aryCopyCases[] = {
    {"Measured", L"abc", -1, -1, false, false, L"abc", 3, 4},
    {"PartOfTheSource", L"abcdef", 2, -1, false, true, L"ab", 2, 3},
    {"TrustedOverAZero", L"a\0b", 3, -1, false, true, L"a\0b", 3, 4},
    {"NotTrustedOverAZero", L"a\0b", 3, -1, false, false, L"a", 1, 2},
    {"NotTrustedWithoutAZero", L"abcdef", 4, -1, false, false, L"abcd", 4, 5},
    {"RoomToGrow", L"ab", -1, 9, false, true, L"ab", 2, 10},
    {"CutToTheRoom", L"abcdef", -1, 4, false, true, L"abcd", 4, 5},
    {"NullSource", nullptr, 7, 5, false, true, L"", 0, 6},
    {"NullIsTheSharedEmptyString", nullptr, -1, -1, false, true, nullptr, 0, 1},
    {"EmptyIsTheSharedEmptyString", L"", -1, -1, false, true, nullptr, 0, 1},
    {"EmptyButAllocated", L"", -1, -1, true, true, L"", 0, 1},
    {"NoRoomWanted", L"abc", -1, 0, false, true, nullptr, 0, 1},
    {"NoRoomWantedButAllocated", L"abc", -1, 0, true, true, L"", 0, 1},
    {"HostileLength", L"abc", -9, -1, false, true, nullptr, 0, 1},
    {"HostileRoom", L"abc", -1, -9, false, true, nullptr, 0, 1},
};

TEST(LyStringNewBuffer, CopiesByTheRules)
{
    for (const COPY_CASE& row : s_aryCopyCases)
    {
        LyStringGlobals manager;
        wchar_t* p = manager.NewLyStringBuffer(row.pSource, row.nSourceLength, row.nAllocate, row.bEvenIfEmpty,
                                               row.bTrustLength, true);
        LyStringBuffer* pBlock = BlockOfCharacters(p);
        EXPECT_EQ(p == manager.GetEmptyLyStringData(), row.pText == nullptr) << row.pName;
        EXPECT_EQ(pBlock->nLength, row.nLength) << row.pName;
        EXPECT_EQ(pBlock->nAllocated, row.nAllocated) << row.pName;
        if (row.pText)
        {
            EXPECT_EQ(std::wmemcmp(p, row.pText, static_cast<size_t>(row.nLength) + 1), 0) << row.pName;
        }
        manager.Delete(pBlock);
    }
}

TEST(LyStringNewBuffer, BytesBecomeTheCharactersOfTheirValue)
{
    LyStringGlobals manager;
    wchar_t* p = manager.NewLyStringBuffer("a\x80\xff");
    EXPECT_EQ(std::wstring(p), std::wstring(L"a\x80\xff"));
    EXPECT_EQ(BlockOfCharacters(p)->nLength, 3);
    EXPECT_EQ(BlockOfCharacters(p)->nAllocated, 4);
    manager.Delete(BlockOfCharacters(p));
    EXPECT_EQ(manager.NewLyStringBuffer(""), manager.GetEmptyLyStringData());
    EXPECT_EQ(manager.NewLyStringBuffer(static_cast<const char*>(nullptr)), manager.GetEmptyLyStringData());
}

TEST(LyStringNewBuffer, CountedFormIsZeroedAndKeepsItsLength)
{
    LyStringGlobals manager;
    LyStringBuffer* pDirty = manager.Construct(4, true);
    std::wmemset(pDirty->characters, L'x', 5);
    manager.Delete(pDirty);
    wchar_t* p = manager.NewLyStringBuffer(4);
    EXPECT_EQ(p, pDirty->characters);
    EXPECT_EQ(BlockOfCharacters(p)->nLength, 4);
    EXPECT_EQ(std::wstring(p, 5), std::wstring(5, L'\0'));
    manager.Delete(BlockOfCharacters(p));
    EXPECT_EQ(manager.NewLyStringBuffer(0), manager.GetEmptyLyStringData());
}

TEST(LyStringNewBuffer, PlainFormIsEmptyAndPrivate)
{
    LyStringGlobals manager;
    wchar_t* p = manager.NewLyStringBuffer();
    EXPECT_NE(p, manager.GetEmptyLyStringData());
    EXPECT_EQ(*p, 0);
    EXPECT_EQ(BlockOfCharacters(p)->nReferences, 1);
    EXPECT_EQ(BlockOfCharacters(p)->nLength, 0);
    manager.Delete(BlockOfCharacters(p));
}

TEST(ILyStringManager, OperationsStandInTheirPublishedSlots)
{
    LyStringGlobals manager;
    auto* pBlock = CallSlot<LyStringBuffer*>(&manager, 0, 6, true); // Construct
    EXPECT_EQ(pBlock->nAllocated, 7);
    CallSlot<void>(&manager, 1, pBlock); // Delete
    EXPECT_EQ(manager.GetSlotCount(), 1);
    auto* pCopy = CallSlot<wchar_t*>(&manager, 2, L"abcdef", 3, -1, false, true, true);
    EXPECT_STREQ(pCopy, L"abc");
    auto* pNarrow = CallSlot<wchar_t*>(&manager, 3, "narrow");
    EXPECT_STREQ(pNarrow, L"narrow");
    auto* pZeros = CallSlot<wchar_t*>(&manager, 4, 2);
    EXPECT_EQ(BlockOfCharacters(pZeros)->nLength, 2);
    auto* pPrivate = CallSlot<wchar_t*>(&manager, 5);
    EXPECT_EQ(BlockOfCharacters(pPrivate)->nLength, 0);
    EXPECT_EQ(BlockOfCharacters(pPrivate)->nReferences, 1);
    EXPECT_EQ(CallSlot<wchar_t*>(&manager, 6), manager.GetEmptyLyStringData());
    for (wchar_t* p : {pCopy, pNarrow, pZeros, pPrivate})
        manager.Delete(BlockOfCharacters(p));
}

// ---- Character tables

TEST(LyStringCharacters, ClassFlagsArePublished)
{
    static_assert(LyStringGlobals::DIGIT == 1 && LyStringGlobals::ALPHABETIC == 2);
    static_assert(LyStringGlobals::WHITE_SPACE == 4 && LyStringGlobals::UPPER_CASE == 8);
    static_assert(LyStringGlobals::LOWER_CASE == 16 && LyStringGlobals::PUNCTUATION == 32);
    static_assert(LyStringGlobals::PRINTABLE == 64);
}

TEST(LyStringCharacters, TablesFollowTheLibraryBelow256)
{
    struct ROW
    {
        wchar_t c;
        int nClasses;
        int nLower;
    };
    const ROW aryRows[] = {
        {L'7', 1 | 64, L'7'}, {L'Q', 2 | 8 | 64, L'q'}, {L'q', 2 | 16 | 64, L'q'}, {L' ', 4 | 64, L' '},
        {L'\t', 4, L'\t'},    {L',', 32 | 64, L','},    {L'\x01', 0, 1},           {L'\0', 0, 0},
        {L'\x7f', 0, 0x7f}};
    std::setlocale(LC_ALL, "C");
    LyStringGlobals::SetLocale(false);
    const LyStringGlobals& globals = LyStringGlobals::GetGlobals();
    for (const ROW& row : aryRows)
    {
        for (int nClass = 1; nClass <= 64; nClass *= 2)
            EXPECT_EQ(globals.HasClass(row.c, nClass), (row.nClasses & nClass) != 0)
                << static_cast<int>(row.c) << " " << nClass;
        EXPECT_EQ(globals.ToLower(row.c), row.nLower);
    }
}

TEST(LyStringCharacters, WideFunctionsServeFrom256)
{
    if (!std::setlocale(LC_ALL, "C.UTF-8"))
        GTEST_SKIP() << "no UTF-8 locale here";
    const LyStringGlobals& globals = LyStringGlobals::GetGlobals();
    EXPECT_EQ(globals.ToLower(0x42f), 0x44f); // Cyrillic ya
    EXPECT_TRUE(globals.IsSpace(0x2003));     // em space
    EXPECT_FALSE(globals.IsSpace(0x42f));
    EXPECT_TRUE(globals.HasClass(0x42f, LyStringGlobals::UPPER_CASE));
    EXPECT_FALSE(globals.IsSpace(static_cast<wchar_t>(-5)));
    EXPECT_EQ(globals.ToLower(static_cast<wchar_t>(-5)), -5);
    std::setlocale(LC_ALL, "C");
}

TEST(LyStringCharacters, UserLocaleIsAppliedOnlyIfAsked)
{
    setenv("LC_ALL", "C.UTF-8", 1);
    std::setlocale(LC_ALL, "C");
    LyStringGlobals::SetLocale(false);
    EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "C");
    LyStringGlobals::SetLocale(true);
    EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "C.UTF-8");
    EXPECT_EQ(LyStringGlobals::GetGlobals().ToLower(L'A'), L'a');
    std::setlocale(LC_ALL, "C");
    LyStringGlobals::SetLocale(false);
}
