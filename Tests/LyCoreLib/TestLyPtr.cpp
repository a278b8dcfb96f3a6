#include "LyString.h"
#include <gtest/gtest.h>
#include <type_traits>

namespace
{
int s_nDestroyed = 0;

struct COUNTED
{
    ~COUNTED() { ++s_nDestroyed; }
    int nValue = 7;
};

struct BASE
{
};
struct DERIVED : BASE
{
    ~DERIVED() { ++s_nDestroyed; }
};
} // namespace

class LyPtrTest : public testing::Test
{
protected:
    void SetUp() override { s_nDestroyed = 0; }
};

TEST_F(LyPtrTest, FlagValuesArePublished)
{
    using PTR = LyPtr<int, int>;
    static_assert(PTR::OWNED == 1 && PTR::ARRAY == 2);
    EXPECT_EQ(PTR(nullptr, true, true).GetFlags(), 3);
    EXPECT_EQ(PTR(nullptr, false, true).GetFlags(), 2);
    EXPECT_EQ(PTR(nullptr, false, false).GetFlags(), 0);
}

TEST_F(LyPtrTest, DeletesOneObjectIfOwned)
{
    {
        LyPtr<COUNTED, COUNTED> p(new COUNTED, true, false);
        EXPECT_EQ(p->nValue, 7);
        EXPECT_EQ(p.Get(), static_cast<COUNTED*>(p));
    }
    EXPECT_EQ(s_nDestroyed, 1);
}

TEST_F(LyPtrTest, DeletesAnArrayIfItIsOne)
{
    {
        LyPtr<COUNTED, COUNTED> p(new COUNTED[3], true, true);
    }
    EXPECT_EQ(s_nDestroyed, 3);
}

TEST_F(LyPtrTest, DeletesNothingThatIsBorrowed)
{
    COUNTED object;
    {
        LyPtr<COUNTED, COUNTED> p(&object, false, false);
        p.Release();
        EXPECT_EQ(p.Get(), nullptr);
    }
    EXPECT_EQ(s_nDestroyed, 0);
}

TEST_F(LyPtrTest, DeletesAsTheSecondType)
{
    {
        LyPtr<BASE, DERIVED> p(new DERIVED, true, false);
    }
    EXPECT_EQ(s_nDestroyed, 1);
}

TEST_F(LyPtrTest, SetReleasesWhatItHeld)
{
    LyPtr<COUNTED, COUNTED> p;
    EXPECT_EQ(p.Get(), nullptr);
    p.Set(new COUNTED, true, false);
    p.Set(new COUNTED[2], true, true);
    EXPECT_EQ(s_nDestroyed, 1);
    p.Set(nullptr, true, false);
    EXPECT_EQ(s_nDestroyed, 3);
}

TEST_F(LyPtrTest, SetOfTheHeldPointerChangesOnlyTheFlags)
{
    auto* pObject = new COUNTED;
    LyPtr<COUNTED, COUNTED> p(pObject, false, false);
    p.Set(pObject, true, false);
    EXPECT_EQ(s_nDestroyed, 0);
    p.Release();
    EXPECT_EQ(s_nDestroyed, 1);
    p.Release();
    EXPECT_EQ(s_nDestroyed, 1);
}

TEST_F(LyPtrTest, DetachGivesThePointerAway)
{
    LyPtr<COUNTED, COUNTED> p(new COUNTED, true, false);
    COUNTED* pObject = p.Detach();
    p.Release();
    EXPECT_EQ(s_nDestroyed, 0);
    delete pObject;
}

TEST(LyCom, CopiesASystemString)
{
    wchar_t* p = LyCom::SysAllocString(L"text");
    EXPECT_STREQ(p, L"text");
    LyCom::SysFreeString(p);
}

TEST(LyCom, NullGivesAnArrayOfTheTerminator)
{
    wchar_t* p = LyCom::SysAllocString(nullptr);
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(p[0], 0);
    LyCom::SysFreeString(p);
}

TEST(LyCom, FreeingNullDoesNothing) { LyCom::SysFreeString(nullptr); }

TEST(LyXString, TravelsAsABarePointer)
{
    static_assert(sizeof(LyXString) == sizeof(wchar_t*));
    static_assert(std::is_trivially_copyable_v<LyXString> && std::is_trivially_destructible_v<LyXString>);
    static_assert(std::is_standard_layout_v<LyXString>);
}

TEST(LyXString, SetReplacesTheOldText)
{
    LyXString str{};
    EXPECT_EQ(str.Get(), nullptr);
    str.Set(L"first");
    EXPECT_STREQ(str.Get(), L"first");
    str.Set(L"second");
    EXPECT_STREQ(str, L"second");
    str.Set(nullptr);
    EXPECT_STREQ(str, L"");
    LyCom::SysFreeString(str.m_pText);
}

TEST(LyXString, SetMayTakeItsOwnText)
{
    LyXString str{};
    str.Set(L"tail of it");
    str.Set(str.Get() + 5);
    EXPECT_STREQ(str, L"of it");
    LyCom::SysFreeString(str.m_pText);
}

TEST(LyXString, AStringMadeOfItIsACopy)
{
    LyXString source{};
    source.Set(L"copied");
    LyString strMade(source);
    LyString strAssigned;
    strAssigned = source;
    LyCom::SysFreeString(source.m_pText);
    EXPECT_STREQ(strMade, L"copied");
    EXPECT_STREQ(strAssigned, L"copied");
    EXPECT_TRUE(LyString(LyXString{}).IsEmpty());
}
