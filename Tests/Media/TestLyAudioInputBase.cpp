#include "LyAudioInputBase.h"
#include "LyCoreLib/RawTable.h"
#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <numeric>
#include <vector>

namespace
{
// A source that delivers counted bytes in pieces, as a script says.
class ScriptedSource : public LyAudioInputBase
{
public:
    struct STEP
    {
        int nBytes; // added to the buffer
        int nResult;
        bool bEnd; // sets the end flag
    };

    explicit ScriptedSource(std::vector<STEP> arySteps) : LyAudioInputBase(nullptr), m_arySteps(std::move(arySteps))
    {
        m_pBuffer = new unsigned char[static_cast<size_t>(m_nBufferSize)];
        m_nBufferFill = 0;
    }
    int AddDataToBuffer() override
    {
        ++m_nCalls;
        if (m_nNext == m_arySteps.size())
            return -1;
        const STEP step = m_arySteps[m_nNext++];
        for (int i = 0; i < step.nBytes; ++i)
            m_pBuffer[m_nBufferFill++] = m_nValue++;
        m_bEndOfData = step.bEnd;
        return step.nResult;
    }
    std::vector<unsigned char> Pull(int nBytes, int& nResult)
    {
        std::vector<unsigned char> aryBytes(static_cast<size_t>(nBytes) + 1);
        nResult = GetSamples(aryBytes.data(), nBytes);
        aryBytes.resize(static_cast<size_t>(std::max(0, nResult)));
        return aryBytes;
    }

    std::vector<STEP> m_arySteps;
    size_t m_nNext = 0;
    int m_nCalls = 0;
    unsigned char m_nValue = 0;
};

std::vector<unsigned char> Count(int nFrom, int nTo)
{
    std::vector<unsigned char> ary(static_cast<size_t>(nTo - nFrom));
    std::iota(ary.begin(), ary.end(), static_cast<unsigned char>(nFrom));
    return ary;
}

// A reader that records what is asked of it.
class FakeReader : public ILyReader
{
public:
    explicit FakeReader(std::vector<std::wstring>& aryCalls) : m_aryCalls(aryCalls) {}
    ~FakeReader() override { m_aryCalls.emplace_back(L"destroyed"); }
    bool Create() override { return false; }
    bool Open() override
    {
        m_aryCalls.emplace_back(L"Open");
        return m_bOpens;
    }
    void Close() override { m_aryCalls.emplace_back(L"Close"); }
    int Read(void*, int) override { return 0; }
    int Write(const void*, int) override { return 0; }
    long long GetLength() override { return 0; }
    long long GetPosition() override { return 0; }
    long long Seek(long long, int) override { return 0; }
    bool GetIsStream() override { return false; }
    bool GetCanClose() override { return m_bCanClose; }
    bool GetIsOpen() override { return true; }
    wchar_t* GetInfo(const wchar_t*) override { return LyCom::SysAllocString(nullptr); }
    void SetTimeout(int) override {}
    void SetPostData(void*, int) override {}
    void SetDownloadParameters(LyString) override {}
    void SetProperty(const wchar_t* pName, const wchar_t* pValue) override
    {
        m_aryCalls.push_back(std::wstring(pName) + L"=" + pValue);
    }
    bool GetCanCancel() override { return false; }
    void SetEndOfFile() override {}

    std::vector<std::wstring>& m_aryCalls;
    bool m_bOpens = true;
    bool m_bCanClose = true;
};

class FakeOwner : public ILyAudioInputOwner
{
public:
    ILyReader* CreateReader(const wchar_t* pPath) override
    {
        m_strPath = pPath;
        ILyReader* pReader = m_pReader;
        m_pReader = nullptr;
        return pReader;
    }
    std::wstring m_strPath;
    FakeReader* m_pReader = nullptr;
};
} // namespace

TEST(AudioInputFrame, NewObjectHoldsTheDocumentedValues)
{
    const LyAudioInputBase input(nullptr);
    EXPECT_EQ(nullptr, input.m_pOwner);
    EXPECT_EQ(nullptr, input.m_pReader);
    EXPECT_EQ(nullptr, input.m_pBuffer);
    EXPECT_EQ(-1, input.m_nBufferFill);
    EXPECT_EQ(65536, input.m_nBufferSize);
    EXPECT_EQ(0, input.m_nHoldBack);
    EXPECT_EQ(-1, input.m_nBitrate);
    EXPECT_EQ(-1, input.m_nSampleRate);
    EXPECT_EQ(-1, input.m_nBitsPerSample);
    EXPECT_EQ(-1, input.m_nChannels);
    EXPECT_EQ(0, input.m_nField28);
    EXPECT_FALSE(input.m_bSupportICY);
    EXPECT_EQ(-1, input.m_nTotalSamples);
    EXPECT_EQ(-1, input.m_nDurationMS);
    EXPECT_FALSE(input.m_bEndOfData);
    EXPECT_FALSE(input.m_bRetryWhenEmpty);
    EXPECT_EQ(0, input.m_nReadPosition);
}

struct FIELD_CASE
{
    int nField;
    const wchar_t* pAnswer; // null: refused
};

const FIELD_CASE s_aryFieldCases[] = {
    {0, L"320"},         {1, L"5000000000"}, {2, L"Unknown input plug-in"},
    {3, nullptr},        {4, nullptr},       {5, nullptr},
    {6, nullptr},        {7, nullptr},       {8, L"48000"},
    {9, L"6"},           {10, L"24"},        {11, nullptr},
    {12, L"9000000000"}, {13, nullptr},      {14, nullptr},
    {20, nullptr},       {23, nullptr},      {24, L"4"},
    {25, nullptr},       {26, nullptr},      {27, nullptr},
    {28, L"77"},         {29, nullptr},      {1000, nullptr},
    {-1, nullptr},
};

TEST(AudioInputFrame, FieldsAnswerAsDecimalTextAndOthersLeaveTheStringAlone)
{
    LyAudioInputBase input(nullptr);
    input.m_nBitrate = 320;
    input.m_nDurationMS = 5000000000;
    input.m_nSampleRate = 48000;
    input.m_nChannels = 6;
    input.m_nBitsPerSample = 24;
    input.m_nTotalSamples = 9000000000;
    input.m_nField28 = 77;
    for (const FIELD_CASE& row : s_aryFieldCases)
    {
        LyString strText(L"as before");
        const int nResult =
            input.GetInformation(static_cast<LY_AUDIO_INPUT_INFO_FIELDS>(row.nField), LyDllString(strText));
        EXPECT_EQ(row.pAnswer != nullptr ? 0 : -1, nResult) << row.nField;
        EXPECT_STREQ(row.pAnswer != nullptr ? row.pAnswer : L"as before", strText) << row.nField;
    }
}

TEST(AudioInputFrame, EveryFieldIsRefusedForWriting)
{
    LyAudioInputBase input(nullptr);
    for (int i = -1; i < 30; ++i)
        EXPECT_EQ(-1, input.SetInformation(static_cast<LY_AUDIO_INPUT_INFO_FIELDS>(i), L"1"));
}

TEST(AudioInputFrame, AddDataToBufferAnswersMinusOneUntilItIsOverridden)
{
    LyAudioInputBase input(nullptr);
    EXPECT_EQ(-1, input.AddDataToBuffer());
    unsigned char nByte = 0;
    EXPECT_EQ(-1, input.GetSamples(&nByte, 1));
}

TEST(AudioInputOpen, SetsThePropertiesAndOpensTheOwnersReader)
{
    std::vector<std::wstring> aryCalls;
    FakeOwner owner;
    owner.m_pReader = new FakeReader(aryCalls);
    {
        LyAudioInputBase input(&owner);
        input.m_bSupportICY = true;
        EXPECT_EQ(0, input.Open(L"/music/a.mp3"));
        EXPECT_NE(nullptr, input.m_pBuffer);
        EXPECT_EQ(0, input.m_nBufferFill);
    }
    EXPECT_EQ(L"/music/a.mp3", owner.m_strPath);
    EXPECT_EQ((std::vector<std::wstring>{L"READ_ONLY=1", L"Set Support ICY Metadata=1", L"Open", L"destroyed"}),
              aryCalls);
}

TEST(AudioInputOpen, WithoutICYSupportThePropertyIsEmpty)
{
    std::vector<std::wstring> aryCalls;
    FakeOwner owner;
    owner.m_pReader = new FakeReader(aryCalls);
    LyAudioInputBase input(&owner);
    EXPECT_EQ(0, input.Open(L"x"));
    ASSERT_EQ(3U, aryCalls.size());
    EXPECT_EQ(L"Set Support ICY Metadata=", aryCalls[1]);
}

TEST(AudioInputOpen, WithoutAReaderOpenIsRefused)
{
    FakeOwner owner;
    LyAudioInputBase input(&owner);
    EXPECT_EQ(-1, input.Open(L"x"));
    EXPECT_EQ(0, input.m_nBufferFill);
    LyAudioInputBase orphan(nullptr);
    EXPECT_EQ(-1, orphan.Open(L"x"));
}

TEST(AudioInputOpen, AReaderThatDoesNotOpenStaysUntilTheObjectGoes)
{
    std::vector<std::wstring> aryCalls;
    FakeOwner owner;
    owner.m_pReader = new FakeReader(aryCalls);
    owner.m_pReader->m_bOpens = false;
    {
        LyAudioInputBase input(&owner);
        EXPECT_EQ(-1, input.Open(L"x"));
        EXPECT_NE(nullptr, input.m_pReader);
        EXPECT_EQ(nullptr, input.m_pBuffer);
        EXPECT_EQ(L"Open", aryCalls.back());
    }
    EXPECT_EQ(L"destroyed", aryCalls.back());
}

TEST(AudioInputOpen, ASecondOpenDestroysTheFirstReader)
{
    std::vector<std::wstring> aryCalls;
    FakeOwner owner;
    LyAudioInputBase input(&owner);
    owner.m_pReader = new FakeReader(aryCalls);
    ASSERT_EQ(0, input.Open(L"first"));
    aryCalls.clear();
    owner.m_pReader = new FakeReader(aryCalls);
    EXPECT_EQ(0, input.Open(L"second"));
    EXPECT_EQ(L"destroyed", aryCalls.front());
    EXPECT_EQ(1, std::count(aryCalls.begin(), aryCalls.end(), L"destroyed"));
}

TEST(AudioInputCommand, OnlyCloseReaderIsServedAndOnlyIfTheReaderCanClose)
{
    std::vector<std::wstring> aryCalls;
    FakeOwner owner;
    FakeReader* pReader = owner.m_pReader = new FakeReader(aryCalls);
    LyAudioInputBase input(&owner);
    EXPECT_EQ(-1, input.DoCommand(LY_AUDIO_INPUT_COMMAND_CLOSE_READER, 0, 0)); // no reader yet
    ASSERT_EQ(0, input.Open(L"x"));
    EXPECT_EQ(-1, input.DoCommand(static_cast<LY_AUDIO_INPUT_COMMANDS>(1), 0, 0));
    EXPECT_EQ(-1, input.DoCommand(static_cast<LY_AUDIO_INPUT_COMMANDS>(3), 0, 0));
    EXPECT_EQ(0, input.DoCommand(LY_AUDIO_INPUT_COMMAND_CLOSE_READER, 123, -456));
    EXPECT_EQ(L"Close", aryCalls.back());
    pReader->m_bCanClose = false;
    EXPECT_EQ(-1, input.DoCommand(LY_AUDIO_INPUT_COMMAND_CLOSE_READER, 0, 0));
    EXPECT_EQ(1, std::count(aryCalls.begin(), aryCalls.end(), L"Close"));
}

TEST(AudioInputPull, BytesComeInOrderAcrossRefills)
{
    ScriptedSource source({{10, 0, false}, {10, 0, false}, {10, 0, false}});
    int nResult = 0;
    EXPECT_EQ(Count(0, 25), source.Pull(25, nResult));
    EXPECT_EQ(25, nResult);
    EXPECT_EQ(3, source.m_nCalls);
    EXPECT_EQ(Count(25, 30), source.Pull(5, nResult));
    EXPECT_EQ(4, source.m_nCalls); // a drained buffer is refilled at once, also where the request is served
}

TEST(AudioInputPull, ZeroBytesAreMinusOneOnALiveStreamAndZeroAtItsEnd)
{
    ScriptedSource source({{4, 0, true}});
    int nResult = 7;
    (void)source.Pull(0, nResult);
    EXPECT_EQ(-1, nResult);
    (void)source.Pull(4, nResult);
    (void)source.Pull(0, nResult);
    EXPECT_EQ(0, nResult);
}

TEST(AudioInputPull, SomeBytesThenTheEndGivesThoseBytesAndThenZero)
{
    ScriptedSource source({{10, 0, false}, {0, 0, true}});
    int nResult = 0;
    EXPECT_EQ(Count(0, 10), source.Pull(100, nResult));
    (void)source.Pull(100, nResult);
    EXPECT_EQ(0, nResult);
}

TEST(AudioInputPull, ARefusalEndsTheCallAndItsBytesComeWithTheNext)
{
    ScriptedSource source({{10, 0, false}, {10, -1, false}, {10, 0, false}});
    int nResult = 0;
    EXPECT_EQ(Count(0, 10), source.Pull(30, nResult));
    EXPECT_EQ(Count(10, 30), source.Pull(20, nResult));
}

TEST(AudioInputPull, ARefillThatAddsNothingEndsTheCall)
{
    ScriptedSource source({{0, 0, false}, {5, 0, false}});
    int nResult = 0;
    (void)source.Pull(5, nResult);
    EXPECT_EQ(-1, nResult);
    EXPECT_EQ(1, source.m_nCalls);
}

TEST(AudioInputPull, RetryWhenEmptyGoesOnAfterAnEmptyRefill)
{
    ScriptedSource source({{0, 0, false}, {0, 0, false}, {5, 0, false}});
    source.m_bRetryWhenEmpty = true;
    int nResult = 0;
    EXPECT_EQ(Count(0, 5), source.Pull(5, nResult));
}

TEST(AudioInputPull, RetryWhenEmptyGivesUpOnAStalledSourceAndOnARefusal)
{
    ScriptedSource stalled(std::vector<ScriptedSource::STEP>(200000000 / 100, {0, 0, false}));
    stalled.m_bRetryWhenEmpty = true;
    int nResult = 0;
    (void)stalled.Pull(5, nResult);
    EXPECT_EQ(-1, nResult);
    ScriptedSource refusing({{0, -1, false}, {5, 0, false}});
    refusing.m_bRetryWhenEmpty = true;
    (void)refusing.Pull(5, nResult);
    EXPECT_EQ(-1, nResult);
    EXPECT_EQ(1, refusing.m_nCalls);
}

TEST(AudioInputPull, HeldBackBytesAreNeverHandedOutAndStayInTheBuffer)
{
    ScriptedSource source({{10, 0, false}, {10, 0, false}, {0, 0, true}});
    source.m_nHoldBack = 6;
    int nResult = 0;
    EXPECT_EQ(Count(0, 14), source.Pull(20, nResult));
    EXPECT_EQ(6, source.m_nBufferFill - source.m_nReadPosition);
    EXPECT_EQ(14, source.m_pBuffer[source.m_nReadPosition]);
    (void)source.Pull(20, nResult);
    EXPECT_EQ(0, nResult);
}

TEST(AudioInputPull, ResetDropsAllBytesAndTheEnd)
{
    ScriptedSource source({{10, 0, true}, {3, 0, false}});
    int nResult = 0;
    (void)source.Pull(4, nResult);
    EXPECT_EQ(0, source.ResetInternalBuffer());
    EXPECT_EQ(0, source.m_nBufferFill);
    EXPECT_EQ(0, source.m_nReadPosition);
    EXPECT_FALSE(source.m_bEndOfData);
    EXPECT_EQ(Count(10, 13), source.Pull(3, nResult));
}

TEST(AudioInputTable, OperationsStandInTheirSlots)
{
    ScriptedSource source({{4, 0, false}});
    ILyAudioInput* pInput = &source;
    LyString strText;
    LyDllString text(strText);
    // The destructor takes slots 0 and 1.
    EXPECT_EQ(-1, (CallSlot<int>(pInput, 2, static_cast<const wchar_t*>(L"x"))));
    EXPECT_EQ(0, (CallSlot<int, int, const ILyDllString*>(pInput, 3, 24, &text)));
    EXPECT_STREQ(L"4", strText);
    EXPECT_EQ(-1, (CallSlot<int>(pInput, 4, 3, static_cast<const wchar_t*>(L"0"))));
    EXPECT_EQ(-1, (CallSlot<int>(pInput, 5, 2, 0LL, 0LL)));
    unsigned char aryBytes[4] = {};
    EXPECT_EQ(4, (CallSlot<int>(pInput, 6, static_cast<unsigned char*>(aryBytes), 4)));
    EXPECT_EQ(3, aryBytes[3]);
    EXPECT_EQ(-1, (CallSlot<int>(pInput, 7)));
    EXPECT_EQ(0, (CallSlot<int>(pInput, 8)));
}

TEST(ReaderTable, NamedOperationsStandInTheirOrderBehindTheDestructor)
{
    std::vector<std::wstring> aryCalls;
    FakeReader reader(aryCalls);
    const ILyReader* pReader = &reader;
    EXPECT_FALSE((CallSlot<bool>(pReader, 2)));
    EXPECT_TRUE((CallSlot<bool>(pReader, 3)));
    (void)CallSlot<int>(pReader, 4);
    EXPECT_EQ((std::vector<std::wstring>{L"Open", L"Close"}), aryCalls);
    EXPECT_TRUE((CallSlot<bool>(pReader, 11))); // GetCanClose
    EXPECT_TRUE((CallSlot<bool>(pReader, 12))); // GetIsOpen
    (void)CallSlot<int>(pReader, 17, static_cast<const wchar_t*>(L"N"), static_cast<const wchar_t*>(L"V"));
    EXPECT_EQ(L"N=V", aryCalls.back());
}
