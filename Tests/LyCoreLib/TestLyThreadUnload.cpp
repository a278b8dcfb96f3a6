#include "LyTimer.h"
#include <dirent.h>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <string>

namespace
{
const char* const MODULE = RONDEL_FAKES_DIR "/Thread/ThreadModule.so";

int CountThreads()
{
    int nThreads = 0;
    DIR* pDirectory = opendir("/proc/self/task");
    while (dirent* pEntry = readdir(pDirectory))
    {
        if (pEntry->d_name[0] != '.')
            ++nThreads;
    }
    closedir(pDirectory);
    return nThreads;
}

// A worker that has told its owner of its end needs a moment more.
int CountThreadsAtRest(int nExpected)
{
    constexpr int TRIES = 10'000;
    int nThreads = CountThreads();
    for (int n = 0; n < TRIES && nThreads > nExpected; ++n)
    {
        Sleep(1);
        nThreads = CountThreads();
    }
    return nThreads;
}

// Loads the library, runs a worker of it and unloads it at once.
bool LoadRunUnload(bool bLinger)
{
    void* hLibrary = dlopen(MODULE, RTLD_LAZY | RTLD_LOCAL);
    if (hLibrary == nullptr)
        return false;
    auto* pRun = reinterpret_cast<bool (*)(bool)>(dlsym(hLibrary, "RunModuleWorker"));
    bool bResult = pRun != nullptr && pRun(bLinger);
    dlclose(hLibrary);
    return bResult;
}

bool GetIsLoaded()
{
    void* hLibrary = dlopen(MODULE, RTLD_LAZY | RTLD_NOLOAD);
    if (hLibrary != nullptr)
        dlclose(hLibrary);
    return hLibrary != nullptr;
}
} // namespace

TEST(LyThreadUnload, LibraryMayGoAsSoonAsItsWorkerHasEnded)
{
    // The first round may start threads that stay, of a tool that watches the program.
    ASSERT_TRUE(LoadRunUnload(false));
    Sleep(500);
    const int nThreadsBefore = CountThreads();
    for (int n = 0; n < 1000; ++n)
        ASSERT_TRUE(LoadRunUnload(n % 2 != 0)) << n;
    EXPECT_EQ(CountThreadsAtRest(nThreadsBefore), nThreadsBefore);
    // With the last worker gone, nothing holds the library any more. A library whose unloading had to wait goes with
    // the next one that is closed, so the first look may still find it.
    (void)GetIsLoaded();
    EXPECT_FALSE(GetIsLoaded());
}
