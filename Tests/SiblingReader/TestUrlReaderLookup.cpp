#include "ReaderTesting.h"
#include <atomic>
#include <curl/curl.h>
#include <dlfcn.h>
#include <netdb.h>
#include <thread>
#include <utility>

namespace
{
constexpr int LOOKUP_MS = 1500;
constexpr int CLOSE_MS = 100; // until a Close has begun, with much room
std::atomic<int> g_nLookups{0};
std::atomic<int> g_nAnswers{0};
ILyReader* g_pClosedInAStep = nullptr;
std::thread g_Closer;
} // namespace

// Takes the place of the C library's: a name server that takes its time and then knows nothing.
LY_EXPORT int getaddrinfo(const char*, const char*, const addrinfo*, addrinfo** ppResult)
{
    ++g_nLookups;
    std::this_thread::sleep_for(std::chrono::milliseconds(LOOKUP_MS));
    ++g_nAnswers;
    *ppResult = nullptr;
    return EAI_NONAME;
}

// Ahead of libcurl's: closes a reader whose name is being looked up, and takes the step all the same.
extern "C" CURLMcode curl_multi_perform(CURLM* pMulti, int* pRunning)
{
    static const auto s_pStep = reinterpret_cast<decltype(&curl_multi_perform)>(dlsym(RTLD_NEXT, "curl_multi_perform"));
    if (g_nLookups > 0 && g_pClosedInAStep != nullptr)
    {
        g_Closer = std::thread([pReader = std::exchange(g_pClosedInAStep, nullptr)] { pReader->Close(); });
        std::this_thread::sleep_for(std::chrono::milliseconds(CLOSE_MS));
    }
    return s_pStep(pMulti, pRunning);
}

TEST(UrlReaderLookup, UnknownHostIsTold)
{
    const ReaderPtr pReader = MakeReader("http://nowhere.test/");
    EXPECT_FALSE(pReader->Open());
    EXPECT_EQ(g_nLookups, 1);
    EXPECT_NE(GetInfo(*pReader, L"Error").find("nowhere.test: no such host"), std::string::npos)
        << GetInfo(*pReader, L"Error");
}

TEST(UrlReaderLookup, CloseEndsAnOpenThatWaitsForAName)
{
    g_nLookups = g_nAnswers = 0;
    {
        const ReaderPtr pReader = MakeReader("http://slow.test/");
        CloseSoon closer(*pReader);
        EXPECT_FALSE(pReader->Open());
        EXPECT_ENDED_BY_CLOSE(closer);
        EXPECT_EQ(g_nLookups, 1);
        EXPECT_EQ(g_nAnswers, 0) << "neither Open nor Close waited for the name server";
    }
    EXPECT_EQ(g_nAnswers, 1) << "no thread of the look-up outlives its reader";
}

// The transfer goes on in steps, and a Close may come in the middle of one.
TEST(UrlReaderLookup, CloseInTheMiddleOfAStepEndsAnOpenThatWaitsForAName)
{
    g_nLookups = g_nAnswers = 0;
    const ReaderPtr pReader = MakeReader("http://slow.test/");
    g_pClosedInAStep = pReader.get();
    EXPECT_FALSE(pReader->Open());
    EXPECT_EQ(g_nLookups, 1);
    EXPECT_EQ(g_nAnswers, 0) << "Open waited for the name server";
    ASSERT_TRUE(g_Closer.joinable());
    g_Closer.join();
    EXPECT_EQ(GetInfo(*pReader, L"Error"), "The reader was closed.");
}
