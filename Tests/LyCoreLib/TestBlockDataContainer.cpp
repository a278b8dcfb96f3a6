#include "CBlockDataContainer.h"
#include <climits>
#include <gtest/gtest.h>

namespace
{
unsigned char* Add(CBlockDataContainer& container, long long nBytes)
{
    return static_cast<unsigned char*>(container.AddBinary(nullptr, nBytes));
}
} // namespace

// The virtual table, three sizes, two arrays.
static_assert(sizeof(CBlockDataContainer) == 8 + 3 * 8 + 2 * 32);

TEST(CBlockDataContainer, StartsWithoutABlock)
{
    const CBlockDataContainer container(100, 10, 0);
    EXPECT_EQ(container.GetFreeBlocks().GetSize(), 0);
    EXPECT_EQ(container.GetFullBlocks().GetSize(), 0);
}

TEST(CBlockDataContainer, CarvesRecordsOneBehindTheOther)
{
    CBlockDataContainer container(100, 10, 0);
    unsigned char* p = Add(container, 40);
    EXPECT_EQ(Add(container, 30), p + 40);
    EXPECT_EQ(Add(container, 30), p + 70);
    ASSERT_EQ(container.GetFreeBlocks().GetSize(), 1);
    CBlockDataContainerItem* pBlock = container.GetFreeBlocks()[0];
    EXPECT_EQ(pBlock->m_nSize, 100);
    EXPECT_EQ(pBlock->m_nRemaining, 0);
    EXPECT_EQ(reinterpret_cast<unsigned char*>(pBlock) + 16, p) << "the data follows the head";
}

TEST(CBlockDataContainer, CopiesWhatIsGiven)
{
    CBlockDataContainer container(100, 10, 0);
    const char* pText = "abcdef";
    const void* p = container.AddBinary(pText, 7);
    ASSERT_NE(p, nullptr);
    EXPECT_STREQ(static_cast<const char*>(p), "abcdef");
    EXPECT_NE(p, pText);
}

TEST(CBlockDataContainer, LargeRecordGetsABlockOfItsOwnSize)
{
    CBlockDataContainer container(100, 10, 0);
    EXPECT_NE(Add(container, 250), nullptr);
    EXPECT_EQ(container.GetFreeBlocks()[0]->m_nSize, 250);
}

TEST(CBlockDataContainer, SmallRecordFillsAnEarlierBlock)
{
    CBlockDataContainer container(100, 10, 0);
    unsigned char* p = Add(container, 60);
    Add(container, 60); // does not fit; 40 left are enough to be kept in the walk
    EXPECT_EQ(container.GetFreeBlocks().GetSize(), 2);
    EXPECT_EQ(Add(container, 20), p + 60);
}

TEST(CBlockDataContainer, BlockBelowTheMinimumRemainderIsFull)
{
    CBlockDataContainer container(100, 10, 0);
    Add(container, 90); // exactly 10 left: kept
    Add(container, 20);
    EXPECT_EQ(container.GetFullBlocks().GetSize(), 0);
    Add(container, 1);  // into the first, 9 left
    Add(container, 20); // passes the first by
    EXPECT_EQ(container.GetFullBlocks().GetSize(), 1);
    EXPECT_EQ(container.GetFreeBlocks().GetSize(), 1);
    EXPECT_EQ(container.GetFullBlocks()[0]->m_nRemaining, 9);
}

TEST(CBlockDataContainer, BlockBehindTheEighthThatDoesNotFitIsFull)
{
    CBlockDataContainer container(100, 1, 0);
    for (int i = 0; i < 9; ++i)
        Add(container, 60); // nine blocks with 40 left each
    EXPECT_EQ(container.GetFreeBlocks().GetSize(), 9);
    EXPECT_EQ(container.GetFullBlocks().GetSize(), 0);
    CBlockDataContainerItem* pNinth = container.GetFreeBlocks()[8];
    Add(container, 60);
    EXPECT_EQ(container.GetFreeBlocks().GetSize(), 9) << "the ninth is replaced by the new one";
    ASSERT_EQ(container.GetFullBlocks().GetSize(), 1);
    EXPECT_EQ(container.GetFullBlocks()[0], pNinth);
}

TEST(CBlockDataContainer, EmptyKeepsTheBlocksForNewRecords)
{
    CBlockDataContainer container(100, 50, 0);
    unsigned char* pFirst = Add(container, 60);
    Add(container, 60); // the first is full
    ASSERT_EQ(container.GetFullBlocks().GetSize(), 1);
    container.Empty(false);
    EXPECT_EQ(container.GetFullBlocks().GetSize(), 0);
    ASSERT_EQ(container.GetFreeBlocks().GetSize(), 2);
    for (const CBlockDataContainerItem* pBlock : container.GetFreeBlocks())
        EXPECT_EQ(pBlock->m_nRemaining, 100);
    Add(container, 100);
    EXPECT_EQ(Add(container, 100), pFirst) << "the full ones come behind the others";
    EXPECT_EQ(container.GetFreeBlocks().GetSize() + container.GetFullBlocks().GetSize(), 2);
}

TEST(CBlockDataContainer, EmptyWithFreeingHasNothingLeft)
{
    CBlockDataContainer container(100, 50, 0);
    Add(container, 60);
    Add(container, 60);
    container.Empty(true);
    EXPECT_EQ(container.GetFreeBlocks().GetAllocated(), 0);
    EXPECT_EQ(container.GetFullBlocks().GetAllocated(), 0);
    EXPECT_NE(Add(container, 60), nullptr);
}

TEST(CBlockDataContainer, ExtraBytesLieBehindTheData)
{
    CBlockDataContainer container(8, 0, 24);
    unsigned char* p = Add(container, 8);
    memset(p, 0x55, 8 + 24); // within the allocation, or the address sanitizer says so
    EXPECT_EQ(container.GetFreeBlocks()[0]->m_nSize, 8);
    EXPECT_NE(Add(container, 1), p + 8);
}

TEST(CBlockDataContainer, AllocateBlockTakesTheLargerSize)
{
    CBlockDataContainer container(100, 10, 0);
    EXPECT_EQ(container.AllocateBlock(20)->m_nSize, 100);
    EXPECT_EQ(container.AllocateBlock(200)->m_nSize, 200);
    EXPECT_EQ(container.GetFreeBlocks()[1]->m_nRemaining, 200);
}

TEST(CBlockDataContainer, RefusesHostileSizes)
{
    CBlockDataContainer container(100, 10, 0);
    EXPECT_EQ(Add(container, -1), nullptr);
    EXPECT_EQ(Add(container, LLONG_MIN), nullptr);
    EXPECT_EQ(Add(container, LLONG_MAX), nullptr);
    EXPECT_EQ(container.AllocateBlock(LLONG_MAX), nullptr);
    EXPECT_EQ(container.GetFreeBlocks().GetSize(), 0);
    EXPECT_NE(Add(container, 0), nullptr);

    CBlockDataContainer containerNegative(-100, -10, -1000);
    EXPECT_NE(Add(containerNegative, 30), nullptr);
    EXPECT_EQ(containerNegative.GetFreeBlocks()[0]->m_nSize, 30);
    EXPECT_EQ(containerNegative.AllocateBlock(-5)->m_nSize, 0);

    CBlockDataContainer containerHuge(LLONG_MAX, 0, LLONG_MAX);
    EXPECT_EQ(Add(containerHuge, 1), nullptr);
}

TEST(CBlockDataContainer, SecondSlotDeletes)
{
    auto* pContainer = new CBlockDataContainer(100, 10, 0);
    Add(*pContainer, 10);
    void** ppSlots = *reinterpret_cast<void***>(pContainer);
    reinterpret_cast<void (*)(void*)>(ppSlots[1])(pContainer); // the leak check sees what is left
}
