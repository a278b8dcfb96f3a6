#include "ILyReader.h"
#include "LyBuffer.h"
#include <climits>
#include <cstring>
#include <gtest/gtest.h>
#include <string>

namespace
{
LyBuffer Make(const std::string& str)
{
    LyBuffer buffer;
    buffer.FromBuffer(str.data(), static_cast<int>(str.size()));
    return buffer;
}

int Search(const LyBuffer& buffer, const char* pPattern, int nLength, int nStart, int nStep)
{
    return buffer.Search(reinterpret_cast<const unsigned char*>(pPattern), nLength, nStart, nStep);
}

struct SEARCH_CASE
{
    const char* pName;
    const char* pPattern;
    int nLength;
    int nStart;
    int nStep;
    int nResult;
};

const SEARCH_CASE s_arySearchCases[] = {
    // in "abcdabcdeabcd"
    {"First", "abcd", 4, 0, 1, 0},
    {"FromTheSecond", "abcd", 4, 1, 1, 4},
    {"LastPlace", "abcd", 4, 5, 1, 9},
    {"BehindTheLastPlace", "abcd", 4, 10, 1, -1},
    {"HighestStart", "a", 1, INT_MAX, 1, -1},
    {"NegativeStartIsTheStart", "abcd", 4, -3, 1, 0},
    {"LowestStartIsTheStart", "b", 1, INT_MIN, 1, 1},
    {"OneByte", "e", 1, 0, 1, 8},
    {"LastByte", "d", 1, 8, 1, 12},
    {"WholeBuffer", "abcdabcdeabcd", 13, 0, 1, 0},
    {"LongerThanTheBuffer", "abcdabcdeabcdx", 14, 0, 1, -1},
    {"Missing", "abce", 4, 0, 1, -1},
    {"FirstByteIsNotEnough", "abd", 3, 0, 1, -1},
    {"AlignedPositionsOnly", "eabc", 4, 0, 4, 8},
    {"UnalignedIsNotSeen", "bcda", 4, 0, 4, -1},
    {"StepsCountFromTheStart", "bcda", 4, 1, 4, 1},
    {"StepOfTwo", "cd", 2, 4, 2, 6},
    {"HighestStep", "abcd", 4, 0, INT_MAX, 0},
    {"HighestStepMisses", "abcd", 4, 1, INT_MAX, -1},
    {"NoPattern", nullptr, 4, 0, 1, -1},
    {"NoLength", "abcd", 0, 0, 1, -1},
    {"NegativeLength", "abcd", INT_MIN, 0, 1, -1},
    {"NoStep", "abcd", 4, 0, 0, -1},
    {"NegativeStep", "abcd", 4, 0, -1, -1},
};

struct BITS_CASE
{
    int nOffset;
    int nBits;
    unsigned int nValue;
};

const BITS_CASE s_aryBitsCases[] = {
    // of AB CD EF 01 23 45
    {4, 8, 0xBC},        {0, 1, 1},           {1, 1, 0},           {0, 8, 0xAB},
    {8, 8, 0xCD},        {0, 32, 0xABCDEF01}, {4, 32, 0xBCDEF012}, {16, 32, 0xEF012345},
    {7, 2, 3},                                                     // 1 of AB, 1 of CD
    {1, 32, 0x579BDE02},                                           // ABCDEF01 shifted by one, and the top bit of 23
    {47, 1, 1},          {46, 2, 1},          {0, 40, 0xABCDEF01}, // no more than 32 bits are read
    {47, 2, 0},                                                    // the end lies behind the buffer
    {48, 1, 0},          {17, 32, 0},         {-1, 8, 0},          {0, 0, 0},
    {0, -1, 0},          {INT_MAX, 32, 0},    {0, INT_MAX, 0},     {INT_MAX, INT_MAX, 0},
    {INT_MIN, 8, 0},
};

// A reader over a text. What it says of itself can be set, also to lies.
class FakeReader : public ILyReader
{
public:
    explicit FakeReader(const std::string& str) : m_strText(str), m_nLength(static_cast<long long>(str.size())) {}

    bool Create() override { return false; }
    bool Open() override { return m_bOpen; }
    void Close() override {}
    int Read(void* p, int nBytes) override
    {
        m_nAsked = nBytes;
        if (m_nClaim != INT_MIN)
            return m_nClaim;
        auto nGot = std::min(nBytes, static_cast<int>(m_strText.size()) - static_cast<int>(m_nPosition));
        std::memcpy(p, m_strText.data() + m_nPosition, static_cast<size_t>(nGot));
        m_nPosition += nGot;
        return nGot;
    }
    int Write(const void*, int) override { return 0; }
    long long GetLength() override { return m_nLength; }
    long long GetPosition() override { return m_nPosition; }
    long long Seek(long long nOffset, int) override { return m_nPosition = nOffset; }
    bool GetIsStream() override { return false; }
    bool GetCanClose() override { return true; }
    bool GetIsOpen() override { return m_bOpen; }
    wchar_t* GetInfo(const wchar_t*) override { return nullptr; }
    void SetTimeout(int) override {}
    void SetPostData(void*, int) override {}
    void SetDownloadParameters(LyString) override {}
    void SetProperty(const wchar_t*, const wchar_t*) override {}
    bool GetCanCancel() override { return true; }
    void SetEndOfFile() override {}

    std::string m_strText;
    long long m_nLength;
    long long m_nPosition = 0;
    bool m_bOpen = true;
    int m_nAsked = -1;
    int m_nClaim = INT_MIN; // what Read claims without reading
};
} // namespace

TEST(LyBufferSearch, FindsTheFirstMatchInSteps)
{
    LyBuffer buffer = Make("abcdabcdeabcd");
    for (const SEARCH_CASE& c : s_arySearchCases)
        EXPECT_EQ(Search(buffer, c.pPattern, c.nLength, c.nStart, c.nStep), c.nResult) << c.pName;
}

TEST(LyBufferSearch, NothingIsInNothing)
{
    EXPECT_EQ(Search(LyBuffer(), "a", 1, 0, 1), -1);
    EXPECT_EQ(Search(LyBuffer(), "a", 1, -1, 4), -1);
}

TEST(LyBufferReadBits, CountsFromTheTopBit)
{
    LyBuffer buffer = Make("\xAB\xCD\xEF\x01\x23\x45");
    for (const BITS_CASE& c : s_aryBitsCases)
        EXPECT_EQ(buffer.ReadBits(c.nOffset, c.nBits), c.nValue) << c.nOffset << ", " << c.nBits;
    EXPECT_EQ(LyBuffer().ReadBits(0, 1), 0u);
}

TEST(LyBufferFromReader, ReadsWhatIsAskedFor)
{
    FakeReader reader("abcdefgh");
    LyBuffer buffer = Make("old content");
    EXPECT_TRUE(buffer.FromReader(&reader, 3));
    EXPECT_EQ(buffer.GetSize(), 3);
    EXPECT_EQ(std::memcmp(buffer.GetData(), "abc", 3), 0);
}

TEST(LyBufferFromReader, MinusOneAndMinusTwoReadTheRest)
{
    for (int nBytes : {-1, -2})
    {
        FakeReader reader("abcdefgh");
        reader.m_nPosition = 5;
        LyBuffer buffer;
        EXPECT_TRUE(buffer.FromReader(&reader, nBytes));
        EXPECT_EQ(reader.m_nAsked, 3);
        ASSERT_EQ(buffer.GetSize(), 3);
        EXPECT_EQ(std::memcmp(buffer.GetData(), "fgh", 3), 0);
    }
}

TEST(LyBufferFromReader, SizeIsWhatCame)
{
    FakeReader reader("abc");
    LyBuffer buffer;
    EXPECT_TRUE(buffer.FromReader(&reader, 10));
    EXPECT_EQ(buffer.GetSize(), 3);
    EXPECT_FALSE(buffer.FromReader(&reader, 10)); // nothing more
    EXPECT_EQ(buffer.GetSize(), 0);
}

TEST(LyBufferFromReader, NothingToReadFromIsFalse)
{
    FakeReader reader("abc");
    LyBuffer buffer = Make("old");
    EXPECT_FALSE(buffer.FromReader(nullptr, 3));
    EXPECT_EQ(buffer.GetSize(), 0);
    EXPECT_FALSE(buffer.FromReader(&reader, 0));
    EXPECT_FALSE(buffer.FromReader(&reader, -3));
    reader.m_bOpen = false;
    buffer = Make("old");
    EXPECT_FALSE(buffer.FromReader(&reader, 3));
    EXPECT_EQ(buffer.GetSize(), 0);
    EXPECT_EQ(reader.m_nAsked, -1);
}

TEST(LyBufferFromReader, LiesAreNotBelieved)
{
    struct LIE
    {
        long long nLength;
        long long nPosition;
    };
    for (const LIE& lie : {LIE{LLONG_MIN, 1}, LIE{LLONG_MAX, -1}, LIE{0x100000000LL, 0}, LIE{2, 5}})
    {
        FakeReader reader("abc");
        reader.m_nLength = lie.nLength;
        reader.m_nPosition = lie.nPosition;
        LyBuffer buffer;
        EXPECT_FALSE(buffer.FromReader(&reader, -1));
        EXPECT_EQ(buffer.GetSize(), 0);
    }
    for (int nClaim : {-1, 11, INT_MAX})
    {
        FakeReader reader("abc");
        reader.m_nClaim = nClaim;
        LyBuffer buffer;
        EXPECT_EQ(buffer.FromReader(&reader, 10), nClaim > 0);
        EXPECT_EQ(buffer.GetSize(), nClaim > 0 ? 10 : 0);
    }
}
