#include "ConvertToFloatFilter.h"

#include <gtest/gtest.h>
#include <type_traits>
#include <vector>

TEST(ConvertToFloatFilter, IsAMemberFunctionItsObjectAndAWord)
{
    EXPECT_EQ(sizeof(CConvertToFloatFilter), 2 * sizeof(void*) + sizeof(void*) + sizeof(long long));
    EXPECT_TRUE(std::is_trivially_copyable_v<CConvertToFloatFilter>);
}

TEST(ConvertToFloatFilter, IsEmptyAtConstruction)
{
    const CConvertToFloatFilter filter;
    EXPECT_TRUE(filter.m_pFunction == nullptr);
    EXPECT_EQ(filter.m_pObject, nullptr);
    EXPECT_EQ(filter.m_nReserved, 0);
    EXPECT_FALSE(filter.IsBound());
}

TEST(ConvertToFloatFilter, UnboundGivesSilence)
{
    const CConvertToFloatFilter filter;
    const short arySamples[] = {1, 2, 3};
    double aryDoubles[] = {7, 7, 7, 7};
    EXPECT_FALSE(filter(arySamples, aryDoubles, 3));
    EXPECT_EQ(aryDoubles[0], 0);
    EXPECT_EQ(aryDoubles[2], 0);
    EXPECT_EQ(aryDoubles[3], 7);
}

TEST(ConvertToFloatFilter, SixteenBitsAreDividedBy32768)
{
    CConvertToFloatFilter filter;
    filter.BindTo16Bit();
    ASSERT_TRUE(filter.IsBound());
    const short arySamples[] = {0, 1, -1, 16384, 32767, -32768};
    double aryDoubles[6] = {};
    EXPECT_TRUE(filter(arySamples, aryDoubles, 6));
    const double aryExpected[] = {0, 1.0 / 32768, -1.0 / 32768, 0.5, 32767.0 / 32768, -1};
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(aryDoubles[i], aryExpected[i]);
}

TEST(ConvertToFloatFilter, EverySampleOfEveryCountIsConvertedAndNoMore)
{
    CConvertToFloatFilter filter;
    filter.BindTo16Bit();
    std::vector<short> arySamples(65536);
    for (int i = 0; i < 65536; ++i)
        arySamples[static_cast<size_t>(i)] = static_cast<short>(i - 32768);
    std::vector<double> aryDoubles(65536);
    ASSERT_TRUE(filter(arySamples.data(), aryDoubles.data(), 65536));
    for (size_t i = 0; i < aryDoubles.size(); ++i)
        ASSERT_EQ(aryDoubles[i], (static_cast<double>(i) - 32768) / 32768);
    for (size_t nCount = 0; nCount <= 20; ++nCount)
    {
        std::vector<double> aryShort(21, 5);
        filter(arySamples.data(), aryShort.data(), static_cast<int>(nCount));
        for (size_t i = 0; i < aryShort.size(); ++i)
            EXPECT_EQ(aryShort[i], i < nCount ? aryDoubles[i] : 5) << nCount;
    }
}

TEST(ConvertToFloatFilter, NothingToConvertIsSurvived)
{
    CConvertToFloatFilter filter;
    filter.BindTo16Bit();
    double aryDoubles[] = {3, 3};
    const short nSample = 1;
    EXPECT_TRUE(filter(&nSample, aryDoubles, 0));
    EXPECT_TRUE(filter(&nSample, aryDoubles, -5));
    EXPECT_TRUE(filter(&nSample, nullptr, 1));
    EXPECT_EQ(aryDoubles[0], 3);
    EXPECT_FALSE(filter(nullptr, aryDoubles, 1));
    EXPECT_EQ(aryDoubles[0], 0);
    EXPECT_EQ(aryDoubles[1], 3);
}
