// What opening a wave file takes of memory, and what a hostile one can make it take.

#include "LySharedToolsHelper.h"
#include "ProcessInfo.h"
#include "TempFolder.h"
#include "WaveFiles.h"
#include "WAVInfo.h"
#include <atomic>
#include <cstdlib>
#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <malloc.h>
#include <unistd.h>
#include <vector>

using namespace WaveFiles;

// ---- All memory of the process passes here, whether it comes by new or by the C library.

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
static constexpr bool COUNTS = false; // the sanitizers have an allocator of their own
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
static constexpr bool COUNTS = false;
#else
static constexpr bool COUNTS = true;
#define COUNT_BYTES
#endif
#else
static constexpr bool COUNTS = true;
#define COUNT_BYTES
#endif

static std::atomic<long long> s_nBytes;
static std::atomic<long long> s_nPeak;
static std::atomic<long long> s_nLargest;

#ifdef COUNT_BYTES
extern "C"
{
    void* __libc_malloc(size_t nBytes);
    void* __libc_realloc(void* p, size_t nBytes);
    void* __libc_calloc(size_t nCount, size_t nBytes);
    void __libc_free(void* p);
}

static void* Count(void* p, size_t nAsked)
{
    if (p == nullptr)
        return p;
    const long long nNow = s_nBytes += static_cast<long long>(malloc_usable_size(p));
    long long nPeak = s_nPeak;
    while (nNow > nPeak && !s_nPeak.compare_exchange_weak(nPeak, nNow))
    {
    }
    long long nLargest = s_nLargest;
    while (static_cast<long long>(nAsked) > nLargest &&
           !s_nLargest.compare_exchange_weak(nLargest, static_cast<long long>(nAsked)))
    {
    }
    return p;
}

static void Uncount(void* p)
{
    if (p != nullptr)
        s_nBytes -= static_cast<long long>(malloc_usable_size(p));
}

extern "C" void* malloc(size_t nBytes) { return Count(__libc_malloc(nBytes), nBytes); }
extern "C" void* calloc(size_t nCount, size_t nBytes) { return Count(__libc_calloc(nCount, nBytes), nCount * nBytes); }
extern "C" void* realloc(void* p, size_t nBytes)
{
    Uncount(p);
    void* pNew = __libc_realloc(p, nBytes);
    if (pNew == nullptr && nBytes != 0)
        Count(p, 0);
    return Count(pNew, nBytes);
}
extern "C" void free(void* p)
{
    Uncount(p);
    __libc_free(p);
}
#endif

namespace
{
constexpr long long MIB = 1024 * 1024;

class WAVInfoMemoryTest : public ::testing::Test
{
protected:
    WAVInfoMemoryTest()
    {
        GetProcessInfo(true)->SetSharedLibraryPath(LyString().FromANSI(RONDEL_BIN_DIR "/"));
        delete CreateGenericReader(L"/dev/null"); // the library is there
    }
    ~WAVInfoMemoryTest() override { g_LySharedToolsHelper.UnloadLySharedLibs(false); }

    // A file with a hole where the audio is.
    LyString WriteSparse(unsigned int nAudioBytes, const std::string& strBehind)
    {
        const std::string strPath = m_Folder.GetPath("a.wav");
        const int n = open(strPath.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        const std::string strHead = Riff(Format()) + "data" + Number(nAudioBytes);
        const off_t nBehind = static_cast<off_t>(strHead.size()) + nAudioBytes + nAudioBytes % 2;
        EXPECT_EQ(static_cast<ssize_t>(strHead.size()), pwrite(n, strHead.data(), strHead.size(), 0));
        EXPECT_EQ(0, ftruncate(n, nBehind));
        EXPECT_EQ(static_cast<ssize_t>(strBehind.size()), pwrite(n, strBehind.data(), strBehind.size(), nBehind));
        close(n);
        return LyString().FromANSI(strPath.c_str());
    }
    // The most that was in use while the file was open, above what was in use before.
    long long GetPeak(const LyString& strName)
    {
        const long long nBefore = s_nBytes;
        s_nPeak = nBefore;
        s_nLargest = 0;
        CWAVInfo info;
        info.m_nTagWritingEnabled = 1;
        EXPECT_EQ(0, info.Open(strName, true, true));
        m_nDataBytes = info.GetDataBytes();
        m_nFrames = info.m_ID3v2Tag.m_aryFrames.GetSize();
        return s_nPeak - nBefore;
    }
    TempFolder m_Folder;
    long long m_nDataBytes = 0;
    int m_nFrames = 0;
};

std::string Mebibyte(const std::string& strFrames)
{
    return Chunk("id3 ", Tag(strFrames, static_cast<size_t>(MIB) - 10 - strFrames.size()));
}
} // namespace

namespace
{
struct TAG_CASE
{
    const char* pName;
    std::string strTag;
    int nFrames;
    long long nMost = 8 * MIB; // a limit of its own for what is not made ahead of being asked for
};

constexpr size_t ROOM = static_cast<size_t>(MIB) - 40; // for the body of one frame

// Text without a zero byte.
std::string Letters(size_t nBytes)
{
    std::string str = Audio(nBytes);
    for (char& c : str)
        c = static_cast<char>('a' + c % 26);
    return str;
}

std::string Repeat(const std::string& str, size_t nBytes)
{
    std::string strAll;
    while (strAll.size() + str.size() <= nBytes)
        strAll += str;
    return strAll;
}

TAG_CASE ManyFrames(const char* pName, const std::string& strFrame)
{
    const std::string strFrames = Repeat(strFrame, ROOM);
    return {pName, Mebibyte(strFrames), static_cast<int>(strFrames.size() / strFrame.size())};
}

// A body of exactly that many bytes.
std::string Body(const std::string& strStart, size_t nBytes)
{
    return strStart + (nBytes > strStart.size() ? Letters(nBytes - strStart.size()) : "");
}

// Many small frames of each kind: what counts is how many they are, and not what they hold.
void AddSmallFrames(std::vector<TAG_CASE>& aryCases)
{
    static const struct
    {
        const char* pID;
        std::string strStart;
    } s_aryKinds[] = {
        {"TIT2", std::string(1, 0)},
        {"TXXX", std::string("\0name\0", 6)},
        {"COMM", std::string("\0engname\0", 9)},
        {"APIC", std::string("\0image/png\0\3\0", 13)},
        {"PRIV", std::string("owner\0", 6)},
        {"WOAR", "http://"},
        {"XYZW", ""},
    };
    for (const auto& kind : s_aryKinds)
    {
        for (const size_t nBytes : {20, 30, 50, 100, 200, 300})
            aryCases.push_back(ManyFrames(kind.pID, Frame(kind.pID, Body(kind.strStart, nBytes))));
    }
}

// One frame that fills the tag, and many: the worst of each kind that people make.
std::vector<TAG_CASE> MakeTagCases()
{
    std::vector<TAG_CASE> aryCases = {
        {"padding", Mebibyte(TextFrame("TIT2", "Title")), 1},
        {"a frame that nobody knows", Mebibyte(Frame("XYZW", Audio(ROOM))), 1},
        {"a picture", Mebibyte(Frame("APIC", std::string("\0image/png\0\3\0", 13) + Audio(ROOM - 30))), 1, 4 * MIB},
        {"private data", Mebibyte(Frame("PRIV", std::string("owner\0", 6) + Audio(ROOM - 30))), 1, 4 * MIB},
        {"a text", Mebibyte(TextFrame("USLT", "eng" + std::string(1, 0) + Letters(ROOM - 30))), 1},
        {"a text in UTF-8", Mebibyte(Frame("TIT2", "\3" + Letters(ROOM - 30))), 1},
        {"a text in UTF-16", Mebibyte(Frame("TIT2", "\1\xFF\xFE" + Letters(ROOM - 30))), 1},
        {"a list", Mebibyte(Frame("TPE1", std::string(1, 0) + Repeat(Letters(7) + std::string(1, 0), ROOM - 30))), 1},
        ManyFrames("many frames that nobody knows", Frame("XYZW", Audio(1000))),
        ManyFrames("many user texts", TextFrame("TXXX", Letters(20) + std::string(1, 0) + Letters(1000))),
        ManyFrames("many texts", TextFrame("TIT2", Letters(300))),
        ManyFrames("many private data", Frame("PRIV", std::string("owner\0", 6) + Audio(1000))),
        ManyFrames("many small private data", Frame("PRIV", std::string("owner\0", 6) + Audio(300))),
        ManyFrames("many small pictures", Frame("APIC", std::string("\0image/png\0\3\0", 13) + Audio(300))),
        ManyFrames("many small user texts", TextFrame("TXXX", Letters(20) + std::string(1, 0) + Letters(300))),
    };
    AddSmallFrames(aryCases);
    return aryCases;
}
} // namespace

TEST_F(WAVInfoMemoryTest, AFileOf4GiBWithATagOf1MiBTakesLessThan8MiB)
{
    for (const TAG_CASE& row : MakeTagCases())
    {
        const LyString strName = WriteSparse(0xFFFFFFF0u - 2 * MIB, row.strTag);
        const long long nPeak = GetPeak(strName);
        EXPECT_EQ(0xFFFFFFF0u - 2 * MIB, m_nDataBytes);
        EXPECT_EQ(row.nFrames, m_nFrames) << row.pName;
        RecordProperty(row.pName, std::to_string(nPeak));
        if (COUNTS)
        {
            EXPECT_GT(nPeak, MIB) << "else nothing was counted";
            EXPECT_LT(nPeak, row.nMost) << row.pName;
        }
    }
}

TEST_F(WAVInfoMemoryTest, NoSizeFieldAsksForMoreThanTheFileHas)
{
    if (!COUNTS)
        GTEST_SKIP() << "the sanitizers have an allocator of their own";
    const std::string strFile =
        Riff(Format() + Chunk("data", Audio(40)) + Chunk("id3 ", Tag(TextFrame("TIT2", "Title"))) +
             InfoList(InfoItem("IART", "Me")) + Chunk("UITS", "abc"));
    for (size_t nOffset = 12; nOffset + 4 <= strFile.size(); ++nOffset)
    {
        for (unsigned int nSize : {0x7FFFFFF0u, 0xFFFFFFFFu, 0x0FFFFFFFu})
        {
            std::string strLies = strFile;
            strLies.replace(nOffset, 4, Number(nSize));
            const std::string strPath = m_Folder.Write("lies.wav", strLies);
            s_nLargest = 0;
            CWAVInfo info;
            info.m_nTagWritingEnabled = 1;
            (void)info.Open(LyString().FromANSI(strPath.c_str()), false, true);
            EXPECT_LT(s_nLargest, 64 * 1024) << nOffset;
        }
    }
}
