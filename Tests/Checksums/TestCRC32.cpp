#include "CRC32.h"
#include "CRC32Details.h"
#include <gtest/gtest.h>
#include <initializer_list>
#include <random>
#include <string>
#include <vector>

namespace
{
std::vector<uint8_t> MakeNoise(size_t nBytes)
{
    std::mt19937 random(static_cast<unsigned int>(nBytes));
    std::vector<uint8_t> ary(nBytes);
    for (uint8_t& n : ary)
        n = static_cast<uint8_t>(random());
    return ary;
}
} // namespace

TEST(CRC32, HasTheCheckValueOfTheStandard)
{
    EXPECT_EQ(0xCBF43926U, GetCRC32("123456789", 9));
    EXPECT_EQ(0U, GetCRC32("", 0));
    EXPECT_EQ(0xE8B7BE43U, GetCRC32("a", 1));
    EXPECT_EQ(0x414FA339U, GetCRC32("The quick brown fox jumps over the lazy dog", 43));
}

TEST(CRC32, FastVersionsEqualThePlainOneAtEveryLengthAndAlignment)
{
    const CRC32_UPDATE pFolding = GetFoldingCRC32();
    for (size_t nBytes = 0; nBytes < 400; ++nBytes)
    {
        const std::vector<uint8_t> ary = MakeNoise(nBytes);
        for (size_t nFrom = 0; nFrom <= nBytes && nFrom < 17; ++nFrom)
        {
            const uint32_t nExpected = AddToCRC32RegisterPlain(0x12345678, ary.data() + nFrom, nBytes - nFrom);
            EXPECT_EQ(nExpected, AddToCRC32Register(0x12345678, ary.data() + nFrom, nBytes - nFrom));
            EXPECT_EQ(nExpected, AddToCRC32RegisterByTables(0x12345678, ary.data() + nFrom, nBytes - nFrom));
            if (pFolding)
            {
                EXPECT_EQ(nExpected, pFolding(0x12345678, ary.data() + nFrom, nBytes - nFrom));
            }
        }
    }
}

TEST(CRC32, OfTwoPiecesFollowsFromTheirs)
{
    const std::vector<uint8_t> ary = MakeNoise(3000);
    for (size_t nFirst : std::initializer_list<size_t>{0, 1, 7, 64, 1000, 2999, 3000})
    {
        const uint32_t nA = GetCRC32(ary.data(), nFirst);
        const uint32_t nB = GetCRC32(ary.data() + nFirst, ary.size() - nFirst);
        EXPECT_EQ(GetCRC32(ary.data(), ary.size()), CombineCRC32(nA, nB, ary.size() - nFirst)) << nFirst;
    }
}

TEST(CRC32Shift, EqualsZeroBytes)
{
    const std::vector<uint8_t> aryZeros(5000);
    for (size_t nBytes : std::initializer_list<size_t>{0, 1, 4, 588, 2352, 5000})
    {
        const CRC32Shift shift(nBytes);
        for (uint32_t nRegister : {0U, 1U, 0x80000000U, 0xFFFFFFFFU, 0xDEADBEEFU})
            EXPECT_EQ(AddToCRC32RegisterPlain(nRegister, aryZeros.data(), nBytes), shift(nRegister)) << nBytes;
    }
}

TEST(CRC32Shift, OfMoreBytesThan32BitsCountGoesOnInSteps)
{
    const CRC32Shift whole(0x280000000);
    const CRC32Shift half(0x140000000);
    EXPECT_EQ(half(half(0xCAFEBABE)), whole(0xCAFEBABE));
}

TEST(CRC32Power, FollowsTheRulesOfPowers)
{
    EXPECT_EQ(CRC32_ONE, GetCRC32Power(0));
    EXPECT_EQ(CRC32_ONE >> 1, GetCRC32Power(1));
    EXPECT_EQ(CRC32_POLYNOMIAL, GetCRC32Power(32)); // x^32 is what the polynomial has below it
    EXPECT_EQ(CRC32_ONE, GetCRC32Power(0xFFFFFFFF));
    EXPECT_EQ(GetCRC32Power(1000), MultiplyCRC32(GetCRC32Power(400), GetCRC32Power(600)));
}
