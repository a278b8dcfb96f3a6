#include "StringTestSupport.h"
#include <gtest/gtest.h>

TEST(LyDllString, IsATableAndOnePointer) { static_assert(sizeof(LyDllString) == 2 * sizeof(void*)); }

TEST(LyDllString, SetStoresACopy)
{
    LyString str(L"old");
    LyDllString target(str);
    wchar_t text[] = L"new text";
    target.Set(text, 3);
    EXPECT_STREQ(str, L"new");
    target.Set(text, -1);
    text[0] = L'X';
    EXPECT_STREQ(str, L"new text");
    EXPECT_EQ(target.Get(), TextOf(str));
    target.Set(nullptr, 5);
    EXPECT_TRUE(str.IsEmpty());
    target.Set(L"text", 0);
    EXPECT_TRUE(str.IsEmpty());
}

TEST(LyDllString, SetMayTakePartOfItsOwnText)
{
    LyString str(L"abcdef");
    LyDllString target(&str);
    target.Set(target.Get() + 3, -1);
    EXPECT_STREQ(str, L"def");
}

TEST(LyDllString, DetachesASharedString)
{
    LyString str(L"shared");
    LyString strCopy(str);
    LyDllString(str).Set(L"mine", -1);
    EXPECT_STREQ(strCopy, L"shared");
    EXPECT_STREQ(str, L"mine");
}

TEST(LyDllString, GivesTheBuffer)
{
    LyString str(L"ab");
    LyDllString target(str);
    wchar_t* p = target.GetBuffer(3, true);
    EXPECT_EQ(p[0], L'a');
    p[2] = L'c';
    target.ReleaseBuffer(3);
    EXPECT_STREQ(str, L"abc");
    p = target.GetBuffer(-1, true);
    p[1] = 0;
    target.ReleaseBuffer(-1);
    EXPECT_STREQ(str, L"a");
    target.Empty();
    EXPECT_TRUE(str.IsEmpty());
}

TEST(ILyDllString, OperationsStandInTheirPublishedSlots)
{
    LyString str(L"start");
    LyDllString target(str);
    const ILyDllString* pInterface = &target;
    EXPECT_STREQ(CallSlot<const wchar_t*>(pInterface, 0), L"start"); // Get
    CallSlot<void>(pInterface, 1, L"set", -1);                       // Set
    EXPECT_STREQ(str, L"set");
    CallSlot<void>(pInterface, 2); // Empty
    EXPECT_TRUE(str.IsEmpty());
    auto* p = CallSlot<wchar_t*>(pInterface, 3, 4, false); // GetBuffer
    std::wmemcpy(p, L"four", 4);
    CallSlot<void>(pInterface, 4, 4); // ReleaseBuffer
    EXPECT_STREQ(str, L"four");
}

TEST(LyStringANSI, WritesCharactersBelow256)
{
    LyStringANSI text(LyString(L"A\xe4\x20ac"), 0);
    EXPECT_STREQ(text, "A\xe4?");
    EXPECT_EQ(text.Get(), static_cast<const char*>(text));
    EXPECT_STREQ(LyStringANSI(LyString()), "");
}

TEST(LyStringUTF8, WritesUTF8)
{
    EXPECT_STREQ(LyStringUTF8(LyString(L"A\xe4\x20ac")), "A\xc3\xa4\xe2\x82\xac");
    EXPECT_STREQ(LyStringUTF8(LyString()), "");
}
