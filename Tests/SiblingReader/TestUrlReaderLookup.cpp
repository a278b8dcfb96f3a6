#include "ReaderTesting.h"
#include <atomic>
#include <netdb.h>

namespace
{
constexpr int LOOKUP_MS = 1500;
std::atomic<int> g_nLookups{0};
std::atomic<int> g_nAnswers{0};
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
