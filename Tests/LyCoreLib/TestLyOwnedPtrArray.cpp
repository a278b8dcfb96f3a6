#include "LyArray.h"
#include <gtest/gtest.h>

namespace
{
// Counts the objects of its kind that are alive.
struct Counted
{
    Counted() { ++s_nAlive; }
    ~Counted() { --s_nAlive; }
    static inline int s_nAlive = 0;
};

void** TableOf(void* pObject) { return *static_cast<void***>(pObject); }
} // namespace

// The array and, behind it, whether it owns.
static_assert(sizeof(LyOwnedPtrArray<int, false>) == 40);
static_assert(!std::is_copy_constructible_v<LyOwnedPtrArray<int, false>>);
static_assert(std::is_base_of_v<LyCoreArray<int*, int*, false>, LyOwnedPtrArray<int, true>>);
static_assert(std::is_base_of_v<LyNumberArray<int*>, LyPointerArray<int>>);

TEST(LyPointerArray, OwnsNothing)
{
    Counted object;
    {
        LyPointerArray<Counted> ary;
        ary.Add(&object);
        ary.RemoveAt(0, 1);
        ary.Add(&object);
    }
    EXPECT_EQ(Counted::s_nAlive, 1);
}

TEST(LyOwnedPtrArray, DeletesWhatLeaves)
{
    {
        LyOwnedPtrArray<Counted, false> ary;
        for (int i = 0; i < 4; ++i)
            ary.Add(new Counted());
        EXPECT_EQ(Counted::s_nAlive, 4);
        ary.RemoveAt(0, 1);
        EXPECT_EQ(Counted::s_nAlive, 3);
        ary.SetAt(0, new Counted(), true);
        EXPECT_EQ(Counted::s_nAlive, 3);
        ary.SetSize(2, false, true, true);
        EXPECT_EQ(Counted::s_nAlive, 2);
        ary.SetSize(5, false, true, true);
        EXPECT_EQ(ary[4], nullptr);
        ary.RemoveAll(false);
        EXPECT_EQ(Counted::s_nAlive, 0);
        ary.Add(new Counted());
    }
    EXPECT_EQ(Counted::s_nAlive, 0);
}

TEST(LyOwnedPtrArray, SetAtWithoutDestroyHandsTheOldObjectBack)
{
    LyOwnedPtrArray<Counted> ary;
    ary.Add(new Counted());
    Counted* pOld = ary[0];
    ary.SetAtGrow(0, new Counted());
    EXPECT_EQ(Counted::s_nAlive, 2);
    delete pOld;
    EXPECT_EQ(Counted::s_nAlive, 1);
}

TEST(LyOwnedPtrArray, DeletesNothingWithoutOwnership)
{
    Counted object;
    {
        LyOwnedPtrArray<Counted, true> ary(false);
        ary.Add(&object);
        ary.Add(&object);
        ary.RemoveAt(0, 1);
    }
    EXPECT_EQ(Counted::s_nAlive, 1);
}

TEST(LyOwnedPtrArray, HookIgnoresIndexesOutside)
{
    LyOwnedPtrArray<Counted> ary;
    ary.DestroyElement(-1);
    ary.DestroyElement(0);
    EXPECT_EQ(ary.GetSize(), 0);
}

TEST(LyOwnedPtrArray, DetachGivesTheObjectAway)
{
    LyOwnedPtrArray<Counted> ary;
    ary.Add(new Counted());
    ary.Add(new Counted());
    Counted* pFirst = ary.Detach(0);
    EXPECT_EQ(ary.GetSize(), 1);
    EXPECT_EQ(Counted::s_nAlive, 2);
    delete pFirst;
    EXPECT_EQ(ary.Detach(1), nullptr);
    EXPECT_EQ(ary.Detach(-1), nullptr);
}

TEST(LyOwnedPtrArraySlots, SecondDeletesTheArrayAndWhatItOwns)
{
    auto* pArray = new LyOwnedPtrArray<Counted, false>();
    pArray->Add(new Counted());
    reinterpret_cast<void (*)(void*)>(TableOf(pArray)[1])(pArray);
    EXPECT_EQ(Counted::s_nAlive, 0);
}
