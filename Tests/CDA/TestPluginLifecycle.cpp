// What the plug-in costs a player and leaves behind: memory, threads, descriptors, shared memory, processor time.

#include "PlayerDisc.h"
#include "PluginAsPlayer.h"
#include "ProcessInfo.h"
#include "Thinning.h"
#include <chrono>
#include <climits>
#include <ctime>
#include <malloc.h>
#include <thread>

namespace
{
// A sanitizer keeps memory back and slows everything down: then only what has no measure in bytes or time is asked.
using Thinning::SANITIZED;
constexpr int WARM_UP_ROUNDS = 20;
constexpr int ROUNDS = Thinning::Some(1000, 100); // most of the time they wait, each for its threads
constexpr int TRACK_SECTORS = 1500;

int CountEntries(const char* pFolder, const std::string& strPart = "")
{
    int nCount = 0;
    for (const auto& entry : std::filesystem::directory_iterator(pFolder))
        nCount += entry.path().filename().string().find(strPart) != std::string::npos;
    return nCount;
}

int CountSharedBlocks() { return CountEntries("/dev/shm", "(" + std::to_string(getpid()) + ")"); }

// A detached thread is gone a moment after its owner has seen its end.
int CountThreadsAtRest(int nExpected)
{
    for (int n = 0; n < 500 && CountEntries("/proc/self/task") != nExpected; ++n)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    return CountEntries("/proc/self/task");
}

// A figure of the kernel's summary of this process's memory, in bytes.
long long GetMemoryFigure(const std::string& strName)
{
    std::ifstream stream("/proc/self/smaps_rollup");
    for (std::string strLine; std::getline(stream, strLine);)
    {
        if (strLine.starts_with(strName + ":"))
            return std::stoll(strLine.substr(strName.size() + 1)) * 1024;
    }
    ADD_FAILURE() << "the kernel tells no " << strName;
    return 0;
}

double GetProcessorSeconds()
{
    timespec time;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

class PluginLifecycle : public ::testing::Test
{
protected:
    void SetUp() override
    {
        (void)m_Folder.Write("a.bin", MakePatternSectors(0, TRACK_SECTORS));
        m_Disc = m_Folder.Write("a.cue", "FILE \"a.bin\" BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n");
    }
    // From loading to unloading, with a little music between.
    void RunOnce() const
    {
        PlayerPlugin plugin;
        ASSERT_TRUE(plugin.Attach());
        {
            PlayerSource source = plugin.GetSource();
            ASSERT_EQ(0, source.Open(m_Disc, 1));
            ASSERT_EQ(10000U, source.Pull(10000).size());
            ASSERT_EQ(0, source.Seek(2000));
            ASSERT_EQ(5000U, source.Pull(5000).size());
        }
        plugin.Detach();
    }

    DiscFolder m_Folder;
    std::filesystem::path m_Disc;
};
} // namespace

TEST_F(PluginLifecycle, LoadingPlayingAndUnloadingLeavesNothingBehind)
{
    for (int n = 0; n < WARM_UP_ROUNDS; ++n)
        RunOnce();
    EXPECT_FALSE(PlayerPlugin::IsLoaded(PlayerPlugin::FILE));
    const int nThreads = CountThreadsAtRest(1);
    const int nDescriptors = CountEntries("/proc/self/fd");
    const int nSharedBlocks = CountSharedBlocks();
    const size_t nHeapBytes = mallinfo2().uordblks;
    const long long nResidentBytes = GetMemoryFigure("Rss");
    for (int n = 0; n < ROUNDS && !HasFatalFailure(); ++n)
        RunOnce();
    EXPECT_FALSE(PlayerPlugin::IsLoaded(PlayerPlugin::FILE));
    EXPECT_EQ(nThreads, CountThreadsAtRest(nThreads));
    EXPECT_EQ(nDescriptors, CountEntries("/proc/self/fd"));
    EXPECT_EQ(nSharedBlocks, CountSharedBlocks());
    EXPECT_EQ(0, nSharedBlocks);
    if (SANITIZED)
        return;
    // The allocator itself goes on keeping a little for some hundred rounds; 32 bytes lost in each would be 32,000.
    EXPECT_LT(mallinfo2().uordblks, nHeapBytes + 32000);
    EXPECT_LT(GetMemoryFigure("Rss"), nResidentBytes + (1 << 20));
}

TEST_F(PluginLifecycle, OpeningAndDestroyingSourcesLeavesNothingBehind)
{
    PlayerPlugin plugin;
    ASSERT_TRUE(plugin.Attach());
    size_t nHeapBytes = 0;
    int nThreads = 0;
    int nDescriptors = 0;
    for (int n = -WARM_UP_ROUNDS; n < ROUNDS / 10; ++n)
    {
        if (n == 0)
        {
            nThreads = CountThreadsAtRest(1);
            nDescriptors = CountEntries("/proc/self/fd");
            nHeapBytes = mallinfo2().uordblks;
        }
        PlayerSource source = plugin.GetSource();
        ASSERT_EQ(n % 2 == 0 ? 0 : 1, source.Open(n % 2 == 0 ? m_Disc.string() : m_Disc.string() + "x", 1));
        (void)source.Pull(1000);
    }
    EXPECT_EQ(nThreads, CountThreadsAtRest(nThreads));
    EXPECT_EQ(nDescriptors, CountEntries("/proc/self/fd"));
    if (!SANITIZED)
    {
        EXPECT_LT(mallinfo2().uordblks, nHeapBytes + 5000);
    }
    plugin.Detach();
}

TEST_F(PluginLifecycle, PlayingATrackCostsLessThanTwoMebibytes)
{
    PlayerPlugin plugin;
    ASSERT_TRUE(plugin.Attach());
    {
        malloc_trim(0); // what earlier tests have freed shall not serve as room
        const long long nNothing = GetMemoryFigure("Anonymous");
        EXPECT_EQ(1, plugin.GetSource().Open(m_Disc.string() + "x", 1));
        malloc_trim(0);
        const long long nLibraries = GetMemoryFigure("Anonymous") - nNothing; // the disc service and what it needs
        PlayerSource source = plugin.GetSource();
        ASSERT_EQ(0, source.Open(m_Disc, 1));
        char aryBytes[REQUEST_BYTES];
        for (int n = 0; n < 1000; ++n) // more than three times round the ring
            ASSERT_EQ(REQUEST_BYTES, source.GetSamples(aryBytes, REQUEST_BYTES));
        const long long nTrack = GetMemoryFigure("Anonymous") - nNothing - nLibraries;
        RecordProperty("BytesOfTheLibraries", std::to_string(nLibraries));
        RecordProperty("BytesOfATrack", std::to_string(nTrack));
        if (!SANITIZED)
        {
            EXPECT_LT(nTrack, 2 << 20);
            EXPECT_LT(nLibraries + nTrack, 3 << 20);
        }
    }
    plugin.Detach();
}

TEST_F(PluginLifecycle, PlayingInRealTimeTakesLittleProcessorTime)
{
    using namespace std::chrono_literals;
    constexpr int STEPS = 60;
    PlayerPlugin plugin;
    ASSERT_TRUE(plugin.Attach());
    {
        PlayerSource source = plugin.GetSource();
        ASSERT_EQ(0, source.Open(m_Disc, 1));
        (void)source.Pull(1);
        std::this_thread::sleep_for(200ms); // the ring is full by now
        const double fBefore = GetProcessorSeconds();
        for (int n = 0; n < STEPS; ++n)
        {
            EXPECT_EQ(LY_CD_SECOND_BYTES / 20U, source.Pull(LY_CD_SECOND_BYTES / 20).size());
            std::this_thread::sleep_for(50ms);
        }
        const double fShare = (GetProcessorSeconds() - fBefore) / (STEPS / 20.0);
        RecordProperty("ProcessorPercentOfOneCore", std::to_string(fShare * 100));
        if (!SANITIZED)
        {
            EXPECT_LT(fShare, 0.05); // about 0.1 % on an idle machine
        }
    }
    plugin.Detach();
}

namespace
{
// Where plain users may read: a build folder may be closed to them.
int PlayAsPlainUser(const std::filesystem::path& folder, const std::filesystem::path& disc)
{
    constexpr unsigned int NOBODY = 65534;
    if (getuid() == 0 && (setgid(NOBODY) != 0 || setuid(NOBODY) != 0))
        return 2;
    CProcessInfo info;
    info.SetSharedLibraryPath(WidenUTF8(folder.string() + "/").c_str());
    PlayerPlugin plugin((folder / "in_Rondel.so").c_str());
    if (!plugin.Attach())
        return 3;
    PlayerSource source = plugin.GetSource();
    if (source.Open(disc, 1) != 0)
        return 4;
    return source.Pull(LLONG_MAX) == MakePattern(0, GetPlayedBytes(TRACK_SECTORS)) ? 0 : 5;
}
} // namespace

using PluginLifecycleDeathTest = PluginLifecycle;

TEST_F(PluginLifecycleDeathTest, APlainUserWithoutRealTimePriorityPlaysTheSame)
{
    std::filesystem::copy(RONDEL_BIN_DIR "/in_Rondel.so", m_Folder.Get("in_Rondel.so"));
    std::filesystem::copy(RONDEL_BIN_DIR "/libLyDisc.dylib", m_Folder.Get("libLyDisc.dylib"));
    EXPECT_EXIT(_exit(PlayAsPlainUser(m_Folder.Get("").parent_path(), m_Disc)), testing::ExitedWithCode(0), "");
}
