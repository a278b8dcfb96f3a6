#include "LyPlatform.h"

#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <cxxabi.h>
#include <fcntl.h>
#include <sched.h>
#include <sys/resource.h>
#include <time.h>
#include <unistd.h>
#if defined(__x86_64__) || defined(__i386__)
#include <cpuid.h>
#endif

// Stands for the library that this file is linked into (Itanium C++ ABI, 3.3.6.3).
extern "C" __attribute__((visibility("hidden"))) void* __dso_handle;

namespace
{
constexpr unsigned long long NANOSECONDS_PER_SECOND = 1'000'000'000;
constexpr int LOWEST_NICE = -20;
constexpr int HIGHEST_NICE = 19;

// The kernel's number of a thread. There is no portable way to it from outside, but the identifier of a thread's
// processor clock holds it, inverted, above the three bits for the kind of the clock (Linux, posix-timers_types.h).
bool GetKernelThreadId(pthread_t hThread, id_t& nThreadId)
{
    clockid_t nClock;
    if (pthread_getcpuclockid(hThread, &nClock) != 0)
        return false;
    nThreadId = static_cast<id_t>(~(nClock >> 3));
    return true;
}
} // namespace

unsigned long long LyPlatform::GetClockTicks()
{
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<unsigned long long>(now.tv_sec) * NANOSECONDS_PER_SECOND +
           static_cast<unsigned long long>(now.tv_nsec);
}

LyPlatform::TIMEBASE LyPlatform::GetClockTimebase() { return {1, 1}; }

void LyPlatform::SetThreadAttributePriority(pthread_attr_t* pAttributes, int nPriority)
{
    if (nPriority == 0)
        return;
    sched_param parameter{};
    parameter.sched_priority =
        GetSchedulingParameter(nPriority, sched_get_priority_min(SCHED_RR), sched_get_priority_max(SCHED_RR));
    pthread_attr_setinheritsched(pAttributes, PTHREAD_EXPLICIT_SCHED);
    if (nPriority == REAL_TIME_PRIORITY)
    {
        pthread_attr_setschedpolicy(pAttributes, SCHED_RR);
    }
    else
    {
        // Normal scheduling knows the parameter 0 only; what sets these threads apart is their nice value.
        pthread_attr_setschedpolicy(pAttributes, SCHED_OTHER);
        parameter.sched_priority = 0;
    }
    pthread_attr_setschedparam(pAttributes, &parameter);
}

// The counterpart of a thread's importance within its process is the distance of its nice value from that of the
// process. Raising it needs a privilege; without it, the thread runs as it is.
void LyPlatform::SetStartedThreadPriority(pthread_t hThread, int nPriority)
{
    id_t nThreadId;
    if (!GetKernelThreadId(hThread, nThreadId))
        return;
    // The main thread, whose number is the process's, has the nice value that the user gave to the program.
    int nNice = getpriority(PRIO_PROCESS, static_cast<id_t>(getpid())) - nPriority;
    if (nNice < LOWEST_NICE)
        nNice = LOWEST_NICE;
    if (nNice > HIGHEST_NICE)
        nNice = HIGHEST_NICE;
    (void)setpriority(PRIO_PROCESS, nThreadId, nNice);
}

int LyPlatform::GetProcessId() { return static_cast<int>(getpid()); }

// The kernel counts the start from the machine's (proc_pid_stat(5), field 22). The fields are counted from behind the
// program's name, which may hold anything.
double LyPlatform::GetProcessStartSeconds()
{
    constexpr int FIELDS_FROM_NAME_TO_START = 20;
    char szText[1024];
    const int nFile = open("/proc/self/stat", O_RDONLY | O_CLOEXEC);
    const ssize_t nBytes = nFile != -1 ? read(nFile, szText, sizeof szText - 1) : -1;
    if (nFile != -1)
        close(nFile);
    szText[nBytes > 0 ? nBytes : 0] = 0;
    const char* p = strrchr(szText, ')');
    for (int i = 0; p != nullptr && i < FIELDS_FROM_NAME_TO_START; i++)
        p = strchr(p + 1, ' ');
    timespec now;
    timespec sinceBoot;
    if (p == nullptr || clock_gettime(CLOCK_REALTIME, &now) != 0 || clock_gettime(CLOCK_BOOTTIME, &sinceBoot) != 0)
        return 0;
    const double fStart = static_cast<double>(strtoull(p, nullptr, 10)) / static_cast<double>(sysconf(_SC_CLK_TCK));
    return static_cast<double>(now.tv_sec - sinceBoot.tv_sec) + fStart;
}

pthread_t LyPlatform::GetThreadId() { return pthread_self(); }

// What the compiler does for a thread-local object with a destructor, only without the object: one in a library that is
// loaded late would cost each thread a block of its own.
void LyPlatform::HoldLibraryUntilThreadEnds()
{
    abi::__cxa_thread_atexit([](void*) {}, nullptr, &__dso_handle);
}

void* LyPlatform::BeginAutoreleasePool() { return nullptr; }

void LyPlatform::EndAutoreleasePool(void*) {}

bool LyPlatform::GetCPUID(unsigned int nLeaf, CPUID_REGISTERS& registers)
{
    registers = {};
#if defined(__x86_64__) || defined(__i386__)
    return __get_cpuid(nLeaf, &registers.nEAX, &registers.nEBX, &registers.nECX, &registers.nEDX) != 0;
#else
    (void)nLeaf;
    return false;
#endif
}

bool LyPlatform::GetExecutablePath(char* pBuffer, int nBufferBytes)
{
    if (pBuffer == nullptr || nBufferBytes < 1)
        return false;
    ssize_t nBytes = readlink("/proc/self/exe", pBuffer, static_cast<size_t>(nBufferBytes));
    // A link that fills the buffer may have been cut.
    bool bComplete = nBytes > 0 && nBytes < nBufferBytes;
    pBuffer[bComplete ? nBytes : 0] = 0;
    return bComplete;
}

// A write lease is granted only then (fcntl(2)). It is given back at once. Should somebody open the file in between,
// the signal that tells of it is one that does nothing.
bool LyPlatform::IsOpenedOnce(int nDescriptor)
{
    if (fcntl(nDescriptor, F_SETSIG, SIGURG) != 0 || fcntl(nDescriptor, F_SETLEASE, F_WRLCK) != 0)
        return false;
    (void)fcntl(nDescriptor, F_SETLEASE, F_UNLCK);
    return true;
}

const char* LyPlatform::GetHomeDirectory() { return std::getenv("HOME"); }

void LyPlatform::RunApplicationLoop() {}
