#include "DTSHelper.h"
#include "Media/DTSStreams.h"
#include <gtest/gtest.h>
#include <random>

using namespace std::string_literals;

namespace
{
std::string Zeros(int n) { return std::string(static_cast<size_t>(n), '\0'); }

bool Analyze(const std::string& strBytes)
{
    DTSHelper helper;
    return helper.Analyze(ToBuffer(strBytes));
}
} // namespace

// ---- The record

TEST(DTSHelper, StartsWithoutAStream)
{
    const DTSHelper helper;
    EXPECT_EQ(0, helper.m_nStreamType);
    EXPECT_EQ(-1, helper.m_nFirstFrameOffset);
}

TEST(DTSHelper, MembersLieInTheirOrder)
{
    static_assert(offsetof(DTSHelper, m_cReserved) == 0 && offsetof(DTSHelper, m_nStreamType) == 4);
    static_assert(offsetof(DTSHelper, m_nFirstFrameOffset) == 8 && offsetof(DTSHelper, m_FirstFrameHeader) == 12);
    using HEADER = DTSHelper::FrameHeader;
    static_assert(offsetof(HEADER, m_nSyncWord) == 0 && offsetof(HEADER, m_nFrameType) == 4);
    static_assert(offsetof(HEADER, m_nDeficitSamples) == 8 && offsetof(HEADER, m_bCRCPresent) == 12);
    static_assert(offsetof(HEADER, m_nSampleBlocks) == 16 && offsetof(HEADER, m_nFrameBytes) == 20);
}

// ---- The search

namespace
{
struct SEARCH_CASE
{
    const char* pName;
    std::string strBytes;
    int nType;
    int nOffset;
};

const SEARCH_CASE s_arySearchCases[] = {
    {"Nothing", ""s, 0, -1},
    {"Silence", Zeros(4096), 0, -1},
    {"14LEWithF0", "\xFF\x1F\x00\xE8\xF0\x07"s, 1, 0},
    {"14LEWithF1", "\xFF\x1F\x00\xE8\xF1\x07"s, 1, 0},
    {"14LEWithF2", "\xFF\x1F\x00\xE8\xF2\x07"s, 0, -1},
    {"14LEWithOtherEnd", "\xFF\x1F\x00\xE8\xF1\x06"s, 0, -1},
    {"14LEWithOtherSync", "\xFF\x1F\x01\xE8\xF1\x07"s, 0, -1},
    {"14BEWithF0", "\x1F\xFF\xE8\x00\x07\xF0"s, 2, 0},
    {"14BEWithF1", "\x1F\xFF\xE8\x00\x07\xF1"s, 2, 0},
    {"14BEWithEF", "\x1F\xFF\xE8\x00\x07\xEF"s, 0, -1},
    {"14BEWithOtherEnd", "\x1F\xFF\xE8\x00\x06\xF1"s, 0, -1},
    {"16LE", "\xFE\x7F\x01\x80\x00\x00"s, 3, 0},
    {"16LEWithOtherSync", "\xFE\x7F\x01\x81\x00\x00"s, 0, -1},
    {"16BE", "\x7F\xFE\x80\x01\x00\x00"s, 4, 0},
    {"16BEWithOtherSync", "\x7F\xFE\x80\x00\x00\x00"s, 0, -1},
    {"FiveBytesAreTooFew", "\x7F\xFE\x80\x01\x00"s, 0, -1},
    {"AtAnOddOffset", "\x01\x7F\xFE\x80\x01\x00\x00"s, 4, 1},
    {"AtTheLastPlace", Zeros(1000) + "\xFE\x7F\x01\x80\x00\x00"s, 3, 1000},
    {"BehindTheLastPlace", Zeros(1000) + "\xFE\x7F\x01\x80\x00"s, 0, -1},
    {"TheFirstOfTwo", "\xFE\x7F\x01\x80\x7F\xFE\x80\x01\x00\x00"s, 3, 0},
    {"BehindABeginning", "\x7F\xFE\x7F\xFE\x80\x01\x00\x00"s, 4, 2},
    {"BehindItsOwnFirstByte", "\xFF\xFF\x1F\x00\xE8\xF0\x07"s, 1, 1},
};
} // namespace

TEST(DTSSearch, FindsTheFirstOfTheFourForms)
{
    for (const SEARCH_CASE& row : s_arySearchCases)
    {
        DTSHelper helper;
        helper.m_nStreamType = 7; // what was found before counts no more
        helper.m_nFirstFrameOffset = 7;
        EXPECT_EQ(row.nType != 0, helper.SearchForFirstDTSFrame(ToBuffer(row.strBytes))) << row.pName;
        EXPECT_EQ(row.nType, helper.m_nStreamType) << row.pName;
        EXPECT_EQ(row.nOffset, helper.m_nFirstFrameOffset) << row.pName;
    }
}

// ---- Frame headers

// Bytes of which the sync words are made, so that they and their beginnings come often, at every place.
TEST(DTSSearch, FindsWhatALookAtEachByteFinds)
{
    constexpr unsigned char ALPHABETS[][6] = {{0xFF, 0x1F, 0x00, 0xE8, 0xF1, 0x07},
                                              {0x1F, 0xFF, 0xE8, 0x00, 0x07, 0xF0},
                                              {0xFE, 0x7F, 0x01, 0x80, 0x7F, 0xFE},
                                              {0x7F, 0xFE, 0x80, 0x01, 0x55, 0xFF}};
    const auto isSync = [](const unsigned char* p)
    {
        const unsigned int n = static_cast<unsigned int>(p[0]) << 24 | p[1] << 16 | p[2] << 8 | p[3];
        return n == 0xFE7F0180 || n == 0x7FFE8001 || (n == 0xFF1F00E8 && (p[4] & 0xFE) == 0xF0 && p[5] == 0x07) ||
               (n == 0x1FFFE800 && p[4] == 0x07 && (p[5] & 0xFE) == 0xF0);
    };
    std::minstd_rand random(1);
    int nFound = 0;
    for (int nRound = 0; nRound < 20000; ++nRound)
    {
        std::string strBytes(random() % 120, '\x33');
        for (size_t n = random() % 40; n < strBytes.size(); n += 1 + random() % (nRound % 9 + 1))
            strBytes[n] = static_cast<char>(ALPHABETS[nRound % 4][random() % 6]);
        const std::string strSync = std::string(reinterpret_cast<const char*>(ALPHABETS[nRound % 4]), 6);
        if (nRound % 3 == 0 && strBytes.size() >= 6)
            strBytes.replace(random() % (strBytes.size() - 5), 6, strSync);
        int nExpected = -1;
        for (int n = 0; nExpected < 0 && n + 6 <= static_cast<int>(strBytes.size()); ++n)
            nExpected = isSync(reinterpret_cast<const unsigned char*>(strBytes.data()) + n) ? n : -1;
        DTSHelper helper;
        EXPECT_EQ(nExpected >= 0, helper.SearchForFirstDTSFrame(ToBuffer(strBytes)));
        ASSERT_EQ(nExpected, helper.m_nFirstFrameOffset) << "round " << nRound;
        nFound += nExpected >= 0 ? 1 : 0;
    }
    EXPECT_GT(nFound, 3000);
}

TEST(DTSFrameHeader, FieldsAreReadFromTheirBits)
{
    // 0 | 10101 | 1 | 0000111 | 00000101100011 | ...: 0101 0110 0001 1100 0001 0110 0011 xxxx
    const LyBuffer buffer = ToBuffer("\x7F\xFE\x80\x01\x56\x1C\x16\x3F"s + Zeros(7));
    DTSHelper::FrameHeader header;
    ASSERT_TRUE(DTSHelper::ParseFrameHeader(header, buffer, 0));
    EXPECT_EQ(0x7FFE8001, header.m_nSyncWord);
    EXPECT_EQ(0, header.m_nFrameType);
    EXPECT_EQ(22, header.m_nDeficitSamples);
    EXPECT_TRUE(header.m_bCRCPresent);
    EXPECT_EQ(8, header.m_nSampleBlocks);
    EXPECT_EQ(356, header.m_nFrameBytes);
}

TEST(DTSFrameHeader, OnesAreReadFromTheirBits)
{
    const LyBuffer buffer = ToBuffer("ab\x7F\xFE\x80\x01\xFD\xFF\xFF\xF0"s + Zeros(7));
    DTSHelper::FrameHeader header;
    ASSERT_TRUE(DTSHelper::ParseFrameHeader(header, buffer, 2));
    EXPECT_EQ(1, header.m_nFrameType);
    EXPECT_EQ(32, header.m_nDeficitSamples);
    EXPECT_FALSE(header.m_bCRCPresent);
    EXPECT_EQ(128, header.m_nSampleBlocks);
    EXPECT_EQ(16384, header.m_nFrameBytes);
}

TEST(DTSFrameHeader, NeedsFifteenBytesBehindAnOffsetThatIsNotNegative)
{
    const std::string strFrame = MakeDTSFrame(95);
    DTSHelper::FrameHeader header;
    EXPECT_TRUE(DTSHelper::ParseFrameHeader(header, ToBuffer(strFrame.substr(0, 15)), 0));
    EXPECT_FALSE(DTSHelper::ParseFrameHeader(header, ToBuffer(strFrame.substr(0, 14)), 0));
    EXPECT_TRUE(DTSHelper::ParseFrameHeader(header, ToBuffer("x" + strFrame.substr(0, 15)), 1));
    EXPECT_FALSE(DTSHelper::ParseFrameHeader(header, ToBuffer("x" + strFrame.substr(0, 14)), 1));
    EXPECT_FALSE(DTSHelper::ParseFrameHeader(header, ToBuffer(strFrame), -1));
    EXPECT_FALSE(DTSHelper::ParseFrameHeader(header, ToBuffer(strFrame), 0x7FFFFFFF));
    EXPECT_FALSE(DTSHelper::ParseFrameHeader(header, LyBuffer(), 0));
}

TEST(DTSFrameHeader, NeedsTheSyncWordInBigEndianWords)
{
    DTSHelper::FrameHeader header;
    header.m_nFrameBytes = 12;
    for (const DTS_STREAM_TYPE eType : ALL_DTS_PACKINGS)
        EXPECT_EQ(eType == DTS_STREAM_16_BIT_BIG_ENDIAN,
                  DTSHelper::ParseFrameHeader(header, ToBuffer(PackDTS(MakeDTSFrame(112), eType)), 0))
            << eType;
    EXPECT_EQ(112, header.m_nFrameBytes);
    EXPECT_FALSE(DTSHelper::ParseFrameHeader(header, ToBuffer(MakeDTSFrame(112)), 1));
}

TEST(DTSFrameHeader, HasSizesThatFramesCanHave)
{
    DTSHelper::FrameHeader header;
    EXPECT_TRUE(DTSHelper::ParseFrameHeader(header, ToBuffer(MakeDTSFrame(100, 5)), 0));
    EXPECT_FALSE(DTSHelper::ParseFrameHeader(header, ToBuffer(MakeDTSFrame(100, 4)), 0));
    EXPECT_TRUE(DTSHelper::ParseFrameHeader(header, ToBuffer(MakeDTSFrame(95)), 0));
    EXPECT_FALSE(DTSHelper::ParseFrameHeader(header, ToBuffer(MakeDTSFrame(94)), 0));
}

// ---- 14 bits

TEST(DTSFourteenBits, EightWordsBecomeSeven)
{
    // Only the low 14 bits count: 11111111111111 00000000000000 11111111111111 ... from 16-bit words.
    const std::string strWords = "\x3F\xFF\x00\x00\xFF\xFF\xC0\x00\x3F\xFF\x00\x00\x3F\xFF\x00\x00"s;
    unsigned char aryOut[14] = {};
    EXPECT_EQ(7, DTSHelper::ConvertFourteenBitDTS(strWords.data(), 8, aryOut));
    // 14 ones, 14 zeros, 14 ones, 14 zeros: FF FC 00 0F FF C0 00, twice.
    const std::string strHalf = "\xFF\xFC\x00\x0F\xFF\xC0\x00"s;
    EXPECT_EQ(strHalf + strHalf, std::string(reinterpret_cast<char*>(aryOut), 14));
}

TEST(DTSFourteenBits, TheSyncWordAppearsFromItsSixBytes)
{
    const std::string strWords = "\x1F\xFF\xE8\x00\x07\xF1"s + Zeros(10);
    unsigned char aryOut[14] = {};
    EXPECT_EQ(7, DTSHelper::ConvertFourteenBitDTS(strWords.data(), 8, aryOut));
    EXPECT_EQ("\x7F\xFE\x80\x01\xFC\x40"s, std::string(reinterpret_cast<char*>(aryOut), 6));
}

TEST(DTSFourteenBits, ALastGroupOfFewerThanEightWordsIsLeftOut)
{
    const std::string strWords(40, '\xFF');
    for (const auto& [nWords, nWritten] : {std::pair{-8, 0}, {0, 0}, {7, 0}, {8, 7}, {15, 7}, {16, 14}, {20, 14}})
    {
        std::string strOut(40, 'x');
        EXPECT_EQ(nWritten, DTSHelper::ConvertFourteenBitDTS(strWords.data(), nWords, strOut.data())) << nWords;
        EXPECT_EQ(static_cast<size_t>(nWritten) * 2, strOut.find('x')) << nWords;
        EXPECT_EQ(std::string::npos, strOut.find_first_not_of('x', static_cast<size_t>(nWritten) * 2)) << nWords;
    }
}

TEST(DTSFourteenBits, TheResultMayLieOverTheSource)
{
    std::string strBytes;
    for (int n = 0; n < 112; ++n)
        strBytes += static_cast<char>(n * 37 + 11);
    std::string strWords = SpreadTo14Bits(strBytes);
    ASSERT_EQ(128u, strWords.size());
    EXPECT_EQ(56, DTSHelper::ConvertFourteenBitDTS(strWords.data(), 64, strWords.data()));
    EXPECT_EQ(strBytes, strWords.substr(0, 112));
}

TEST(DTSFourteenBits, NothingIsConvertedFromOrToNowhere)
{
    unsigned char aryWords[16] = {};
    EXPECT_EQ(0, DTSHelper::ConvertFourteenBitDTS(nullptr, 8, aryWords));
    EXPECT_EQ(0, DTSHelper::ConvertFourteenBitDTS(aryWords, 8, nullptr));
}

// ---- The whole

TEST(DTSAnalyze, SilenceAndNothingAreNone)
{
    DTSHelper helper;
    EXPECT_FALSE(helper.Analyze(LyBuffer()));
    EXPECT_FALSE(helper.Analyze(ToBuffer(Zeros(DTSHelper::MAX_TEST_BYTES))));
    EXPECT_EQ(0, helper.m_nStreamType);
    EXPECT_EQ(-1, helper.m_nFirstFrameOffset);
}

TEST(DTSAnalyze, FramesBehindZerosAreAStreamInEveryPacking)
{
    for (const DTS_STREAM_TYPE eType : ALL_DTS_PACKINGS)
    {
        DTSHelper helper;
        ASSERT_TRUE(helper.Analyze(ToBuffer(Zeros(1000) + PackDTS(MakeDTSFrames(50, 1792), eType)))) << eType;
        EXPECT_EQ(eType, helper.m_nStreamType);
        EXPECT_EQ(1000, helper.m_nFirstFrameOffset);
        EXPECT_EQ(0x7FFE8001, helper.m_FirstFrameHeader.m_nSyncWord);
        EXPECT_EQ(1792, helper.m_FirstFrameHeader.m_nFrameBytes);
        EXPECT_EQ(16, helper.m_FirstFrameHeader.m_nSampleBlocks);
    }
    EXPECT_TRUE(Analyze(Zeros(1000) + MakeDTSFrames(50, 2048)));
}

TEST(DTSAnalyze, TheHeaderIsThatOfTheFirstFrame)
{
    DTSHelper helper;
    ASSERT_TRUE(helper.Analyze(ToBuffer(MakeDTSFrame(300, 8) + MakeDTSFrames(3, 500))));
    EXPECT_EQ(300, helper.m_FirstFrameHeader.m_nFrameBytes);
    EXPECT_EQ(8, helper.m_FirstFrameHeader.m_nSampleBlocks);
}

TEST(DTSAnalyze, OneSyncWordByChanceIsNone)
{
    EXPECT_FALSE(Analyze(Zeros(50000) + "\x7F\xFE\x80\x01"s + Zeros(50000))) << "a header that no frame has";
    EXPECT_FALSE(Analyze(MakeDTSFrame(2048) + Zeros(50000))) << "more behind it that is none";
    EXPECT_FALSE(Analyze(Zeros(2048) + MakeDTSFrame(2048))) << "as much ahead of it";
}

TEST(DTSAnalyze, AFirstFrameThatDoesNotParseIsNoneThoughATypeIsFound)
{
    DTSHelper helper;
    EXPECT_FALSE(helper.Analyze(ToBuffer(MakeDTSFrame(94) + MakeDTSFrames(50, 2048))));
    EXPECT_EQ(DTS_STREAM_16_BIT_BIG_ENDIAN, helper.m_nStreamType);
    EXPECT_EQ(0, helper.m_nFirstFrameOffset);
}

namespace
{
struct BALANCE_CASE
{
    const char* pName;
    int nAhead;
    int nBehind;
    bool bStream;
};

// Around one frame of 100 bytes. Behind it, the places count at which 15 bytes still fit.
const BALANCE_CASE s_aryBalanceCases[] = {
    {"Alone", 0, 0, true},           {"OneLessAhead", 99, 0, true},    {"AsManyAhead", 100, 0, false},
    {"TooFewToCount", 99, 14, true}, {"OneThatCounts", 99, 15, false}, {"OneThatCountsOfTwo", 98, 15, true},
    {"OnlyBehind", 0, 113, true},    {"AsManyBehind", 0, 114, false},
};
} // namespace

TEST(DTSAnalyze, GoodBytesMustOutweighTheOthers)
{
    for (const BALANCE_CASE& row : s_aryBalanceCases)
        EXPECT_EQ(row.bStream, Analyze(Zeros(row.nAhead) + MakeDTSFrame(100) + Zeros(row.nBehind))) << row.pName;
}

TEST(DTSAnalyze, FramesAreFoundAgainBehindAGap)
{
    EXPECT_TRUE(Analyze(MakeDTSFrame(2048) + Zeros(3000) + MakeDTSFrame(2048))) << "3000 against 4096";
    EXPECT_FALSE(Analyze(MakeDTSFrame(2048) + Zeros(4096) + MakeDTSFrame(2048))) << "4096 against 4096";
}

TEST(DTSAnalyze, TheLastFrameMayLieBeyondTheBuffer)
{
    const std::string strStream = MakeDTSFrames(50, 2048);
    for (const size_t nCut : {size_t{1}, size_t{2033}, size_t{2034}, size_t{2047}})
        EXPECT_TRUE(Analyze(strStream.substr(0, strStream.size() - nCut))) << nCut;
    EXPECT_TRUE(Analyze(Zeros(16000) + MakeDTSFrame(16384).substr(0, 15))) << "its stated bytes count";
}

TEST(DTSAnalyze, LittleEndianWordsAreCutToAnEvenLength)
{
    const std::string strFrame = PackDTS(MakeDTSFrame(100), DTS_STREAM_16_BIT_LITTLE_ENDIAN);
    EXPECT_TRUE(Analyze(strFrame.substr(0, 16)));
    EXPECT_FALSE(Analyze(strFrame.substr(0, 15))) << "14 bytes are left";
}

TEST(DTSAnalyze, FourteenBitWordsAreCutToWholeGroups)
{
    // 16 bytes become 14, one too few for a header; 32 become 28.
    for (const DTS_STREAM_TYPE eType : {DTS_STREAM_14_BIT_LITTLE_ENDIAN, DTS_STREAM_14_BIT_BIG_ENDIAN})
    {
        const std::string strFrame = PackDTS(MakeDTSFrame(112), eType);
        EXPECT_FALSE(Analyze(strFrame.substr(0, 6)));
        EXPECT_FALSE(Analyze(strFrame.substr(0, 31)));
        EXPECT_TRUE(Analyze(strFrame.substr(0, 32)));
    }
}

TEST(DTSAnalyze, TheBufferIsLeftAsItIs)
{
    const std::string strStream = PackDTS(MakeDTSFrames(20, 1792), DTS_STREAM_14_BIT_LITTLE_ENDIAN);
    const LyBuffer buffer = ToBuffer(strStream);
    DTSHelper helper;
    EXPECT_TRUE(helper.Analyze(buffer));
    EXPECT_EQ(strStream, std::string(reinterpret_cast<const char*>(buffer.GetData()), strStream.size()));
}
