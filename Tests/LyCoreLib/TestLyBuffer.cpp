#include "LyBuffer.h"
#include "LyString.h"
#include <climits>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <type_traits>

namespace
{
void SetText(LyBuffer& buffer, const std::string& str)
{
    buffer.Empty(true);
    if (!str.empty())
        buffer.FromBuffer(str.data(), static_cast<int>(str.size()));
}

std::string GetText(const LyBuffer& buffer)
{
    return buffer.GetSize() == 0
               ? std::string()
               : std::string(reinterpret_cast<const char*>(buffer.GetData()), static_cast<size_t>(buffer.GetSize()));
}

void ExpectReleased(const LyBuffer& buffer)
{
    EXPECT_EQ(buffer.GetData(), nullptr);
    EXPECT_EQ(buffer.GetSize(), 0);
    EXPECT_EQ(buffer.GetAllocated(), 0);
}
} // namespace

TEST(LyBufferLayout, IsPointerSizeAndAllocation)
{
    static_assert(sizeof(LyBuffer) == sizeof(void*) + 2 * sizeof(int));
    static_assert(!std::is_polymorphic_v<LyBuffer>);
    LyBuffer buffer;
    buffer.GetAppendBlock(3, false, 10, true, false);
    unsigned char* p;
    int aryCounts[2];
    std::memcpy(&p, &buffer, sizeof p);
    std::memcpy(aryCounts, reinterpret_cast<const char*>(&buffer) + sizeof p, sizeof aryCounts);
    EXPECT_EQ(p, buffer.GetData());
    EXPECT_EQ(aryCounts[0], 3);
    EXPECT_EQ(aryCounts[1], 10);
}

TEST(LyBufferConstruct, PositiveSizeIsAllocated)
{
    LyBuffer buffer(100, true);
    EXPECT_EQ(buffer.GetSize(), 100);
    EXPECT_EQ(buffer.GetAllocated(), 100);
    for (int n = 0; n < 100; ++n)
        EXPECT_EQ(buffer.GetData()[n], 0);
    EXPECT_EQ(LyBuffer(7, false).GetSize(), 7);
}

TEST(LyBufferConstruct, NothingIsAllocatedBelowOne)
{
    ExpectReleased(LyBuffer());
    ExpectReleased(LyBuffer(0, true));
    ExpectReleased(LyBuffer(-1, true));
    ExpectReleased(LyBuffer(INT_MIN, false));
}

TEST(LyBufferConstruct, CopyIsIndependent)
{
    LyBuffer buffer;
    SetText(buffer, "abc");
    LyBuffer copy(buffer);
    EXPECT_EQ(GetText(copy), "abc");
    EXPECT_NE(copy.GetData(), buffer.GetData());
    LyBuffer assigned;
    assigned = buffer;
    EXPECT_EQ(GetText(assigned), "abc");
    const LyBuffer& same = assigned;
    assigned = same;
    EXPECT_EQ(GetText(assigned), "abc");
    assigned = LyBuffer();
    ExpectReleased(assigned);
    ExpectReleased(LyBuffer(LyBuffer()));
}

TEST(LyBufferEmpty, KeepsOrFreesTheMemory)
{
    LyBuffer buffer(10, false);
    const unsigned char* p = buffer.GetData();
    buffer.Empty(false);
    EXPECT_EQ(buffer.GetSize(), 0);
    EXPECT_EQ(buffer.GetAllocated(), 10);
    EXPECT_EQ(buffer.GetData(), p);
    buffer.Empty(true);
    ExpectReleased(buffer);
}

struct GROW_CASE
{
    const char* pName;
    int nStartSize;
    int nBytes;
    int nGrowBytes;
    int nAllocated; // afterwards
};

const GROW_CASE s_aryGrowCases[] = {
    {"ExactFit", 10, 5, 0, 15},
    {"GrowBlockIsMore", 10, 5, 100, 110},
    {"NeedIsMore", 10, 500, 100, 510},
    {"FirstByteOfAByteWriter", 0, 1, 16384, 16384},
    {"NothingAskedFor", 10, 0, 100, 10},
    {"NegativeCountsAsNothing", 10, -5, 100, 10},
    {"NegativeGrowIsAnExactFit", 10, 5, -100, 15},
    {"LowestGrowIsAnExactFit", 10, 5, INT_MIN, 15},
};

TEST(LyBufferAppend, GrowsByTheBlockOrToTheNeed)
{
    for (const GROW_CASE& c : s_aryGrowCases)
    {
        LyBuffer buffer(c.nStartSize, true);
        unsigned char* p = buffer.GetAppendBlock(c.nBytes, false, c.nGrowBytes, true, false);
        EXPECT_EQ(p, buffer.GetData() + c.nStartSize) << c.pName;
        EXPECT_EQ(buffer.GetAllocated(), c.nAllocated) << c.pName;
        EXPECT_EQ(buffer.GetSize(), c.nStartSize + (c.nBytes > 0 ? c.nBytes : 0)) << c.pName;
    }
}

TEST(LyBufferAppend, KeepsTheOldBytes)
{
    LyBuffer buffer;
    SetText(buffer, "abc");
    std::memcpy(buffer.GetAppendBlock(3, false, 0, true, false), "def", 3);
    EXPECT_EQ(GetText(buffer), "abcdef");
}

TEST(LyBufferAppend, RoomThatIsThereIsUsed)
{
    LyBuffer buffer;
    buffer.GetAppendBlock(1, false, 16384, true, false);
    const unsigned char* p = buffer.GetData();
    for (int n = 1; n < 16384; ++n)
        buffer.GetAppendBlock(1, false, 16384, true, false);
    EXPECT_EQ(buffer.GetData(), p);
    EXPECT_EQ(buffer.GetAllocated(), 16384);
    buffer.GetAppendBlock(1, false, 16384, true, false);
    EXPECT_EQ(buffer.GetAllocated(), 32768);
}

TEST(LyBufferAppend, SizeRisesOnlyWhenAsked)
{
    LyBuffer buffer(4, true);
    unsigned char* p = buffer.GetAppendBlock(6, false, 0, false, false);
    EXPECT_EQ(p, buffer.GetData() + 4);
    EXPECT_EQ(buffer.GetSize(), 4);
    EXPECT_EQ(buffer.GetAllocated(), 10);
}

TEST(LyBufferAppend, ZeroesOnlyTheNewBytes)
{
    LyBuffer buffer(8, false);
    std::memset(buffer.GetData(), 0xAA, 8);
    buffer.RemoveRight(4);
    buffer.GetAppendBlock(3, true, 0, true, false);
    const unsigned char aryExpected[] = {0xAA, 0xAA, 0xAA, 0xAA, 0, 0, 0, 0xAA};
    EXPECT_EQ(buffer.GetSize(), 7);
    EXPECT_EQ(std::memcmp(buffer.GetData(), aryExpected, sizeof aryExpected), 0);
}

TEST(LyBufferAppend, SizeBeyondIntIsNull)
{
    LyBuffer buffer(10, true);
    EXPECT_EQ(buffer.GetAppendBlock(INT_MAX, false, 0, true, false), nullptr);
    EXPECT_EQ(buffer.GetAppendBlock(INT_MAX - 9, true, INT_MAX, true, false), nullptr);
    EXPECT_EQ(buffer.GetSize(), 10);
    EXPECT_EQ(buffer.GetAllocated(), 10);
}

TEST(LyBufferAppend, GrowBlockBeyondIntIsCut)
{
    LyBuffer buffer(10, true);
    unsigned char* p = buffer.GetAppendBlock(1, false, INT_MAX, true, false); // null where memory is short
    EXPECT_EQ(buffer.GetAllocated(), p == nullptr ? 10 : INT_MAX);
}

TEST(LyBufferAppend, NothingFromNothingIsNull)
{
    LyBuffer buffer;
    EXPECT_EQ(buffer.GetAppendBlock(0, true, 100, true, false), nullptr);
    ExpectReleased(buffer);
}

struct COPY_CASE
{
    const char* pName;
    int nBytes;
    int nStart;
    const char* pResult; // null: false, and released
};

const COPY_CASE s_aryCopyCases[] = {
    // from "abcdef"
    {"All", -1, 0, "abcdef"},
    {"AllFromTheMiddle", -1, 4, "ef"},
    {"Part", 2, 1, "bc"},
    {"NegativeStartIsTheStart", 3, -7, "abc"},
    {"LowestStartIsTheStart", -1, INT_MIN, "abcdef"},
    {"LastByte", 1, 5, "f"},
    {"NothingFrees", 0, 0, nullptr},
    {"OtherNegativeCountFrees", -2, 0, nullptr},
    {"OneTooMany", 7, 0, nullptr},
    {"OneTooManyFromTheMiddle", 4, 3, nullptr},
    {"AllBehindTheEnd", -1, 6, nullptr},
    {"AllFarBehindTheEnd", -1, 7, nullptr},
    {"HighestStart", 1, INT_MAX, nullptr},
    {"HighestCount", INT_MAX, 3, nullptr},
};

TEST(LyBufferFromBuffer, TakesWhatIsThere)
{
    LyBuffer source;
    SetText(source, "abcdef");
    for (const COPY_CASE& c : s_aryCopyCases)
    {
        LyBuffer buffer;
        SetText(buffer, "xy");
        EXPECT_EQ(buffer.FromBuffer(source, c.nBytes, c.nStart), c.pResult != nullptr) << c.pName;
        if (c.pResult != nullptr)
            EXPECT_EQ(GetText(buffer), c.pResult) << c.pName;
        else
            ExpectReleased(buffer);
    }
}

TEST(LyBufferFromBuffer, MayTakeFromItself)
{
    for (const COPY_CASE& c : s_aryCopyCases)
    {
        LyBuffer buffer;
        SetText(buffer, "abcdef");
        EXPECT_EQ(buffer.FromBuffer(buffer, c.nBytes, c.nStart), c.pResult != nullptr) << c.pName;
        EXPECT_EQ(GetText(buffer), c.pResult != nullptr ? c.pResult : "") << c.pName;
    }
}

TEST(LyBufferFromBuffer, ShorterContentKeepsTheAllocation)
{
    LyBuffer buffer(100, true);
    EXPECT_TRUE(buffer.FromBuffer("abc", 3));
    EXPECT_EQ(GetText(buffer), "abc");
    EXPECT_EQ(buffer.GetAllocated(), 100);
}

TEST(LyBufferFromBuffer, RawMemory)
{
    LyBuffer buffer;
    EXPECT_TRUE(buffer.FromBuffer("abcd", 4));
    EXPECT_EQ(GetText(buffer), "abcd");
    EXPECT_FALSE(buffer.FromBuffer("abcd", 0));
    ExpectReleased(buffer);
    SetText(buffer, "abc");
    EXPECT_FALSE(buffer.FromBuffer(nullptr, 4));
    ExpectReleased(buffer);
    SetText(buffer, "abc");
    EXPECT_FALSE(buffer.FromBuffer("abcd", -1)); // no length is known of raw memory
    ExpectReleased(buffer);
}

TEST(LyBufferText, Base64BothWays)
{
    LyBuffer buffer;
    SetText(buffer, "Hello");
    EXPECT_STREQ(buffer.ToStringBase64(), L"SGVsbG8=");
    LyBuffer back;
    EXPECT_TRUE(back.FromStringBase64(L"SGVsbG8="));
    EXPECT_EQ(GetText(back), "Hello");
}

TEST(LyBufferText, HexDigits)
{
    LyBuffer buffer;
    EXPECT_TRUE(buffer.FromStringHexDigits(L"00fF12"));
    ASSERT_EQ(buffer.GetSize(), 3);
    EXPECT_EQ(buffer.GetData()[0], 0x00);
    EXPECT_EQ(buffer.GetData()[1], 0xFF);
    EXPECT_EQ(buffer.GetData()[2], 0x12);
}

TEST(LyBufferRemoveRight, TakesBytesOffTheEnd)
{
    LyBuffer buffer;
    SetText(buffer, "abcdef");
    EXPECT_FALSE(buffer.RemoveRight(0));
    EXPECT_FALSE(buffer.RemoveRight(-1));
    EXPECT_FALSE(buffer.RemoveRight(INT_MIN));
    EXPECT_EQ(GetText(buffer), "abcdef");
    EXPECT_TRUE(buffer.RemoveRight(2));
    EXPECT_EQ(GetText(buffer), "abcd");
    EXPECT_TRUE(buffer.RemoveRight(INT_MAX));
    EXPECT_EQ(buffer.GetSize(), 0);
    EXPECT_EQ(buffer.GetAllocated(), 6);
    EXPECT_TRUE(buffer.RemoveRight(1)); // of nothing
    EXPECT_EQ(buffer.GetSize(), 0);
}

struct PAD_CASE
{
    int nSize;
    int nBlock;
    int nPadded;
    bool bResult;
};

const PAD_CASE s_aryPadCases[] = {
    {16, 16, 16, true}, {15, 16, 16, true}, {17, 16, 32, true}, {1, 16, 16, true}, {0, 16, 0, true},
    {3, 2, 4, true},    {4, 2, 4, true},    {5, 1, 5, true},    {5, 0, 5, false},  {5, -4, 5, false},
};

TEST(LyBufferPad, FillsUpToTheBlock)
{
    for (const PAD_CASE& c : s_aryPadCases)
    {
        LyBuffer buffer(c.nSize, true);
        EXPECT_EQ(buffer.PadForBlockAlign(c.nBlock, 0x5A, 0), c.bResult) << c.nSize << " by " << c.nBlock;
        ASSERT_EQ(buffer.GetSize(), c.nPadded) << c.nSize << " by " << c.nBlock;
        for (int n = c.nSize; n < c.nPadded; ++n)
            EXPECT_EQ(buffer.GetData()[n], 0x5A);
    }
}

TEST(LyBufferPad, GrowsByTheBlockGiven)
{
    LyBuffer buffer(3, true);
    EXPECT_TRUE(buffer.PadForBlockAlign(2, 0, 16384));
    EXPECT_EQ(buffer.GetAllocated(), 3 + 16384);
}
