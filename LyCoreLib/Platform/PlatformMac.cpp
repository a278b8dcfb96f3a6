#include "LyPlatform.h"

#include <cstdint>
#include <cstdlib>
#include <mach-o/dyld.h>
#include <mach/mach.h>
#include <mach/mach_time.h>
#include <mach/thread_policy.h>
#include <objc/message.h>
#include <objc/runtime.h>
#include <pthread.h>
#include <sched.h>
#include <sys/sysctl.h>
#include <unistd.h>
#if defined(__x86_64__) || defined(__i386__)
#include <cpuid.h>
#endif

namespace
{
id SendMessage(id pReceiver, const char* pSelector)
{
    return reinterpret_cast<id (*)(id, SEL)>(objc_msgSend)(pReceiver, sel_registerName(pSelector));
}

// The destructor is what counts; the value only gives it something to do.
class LibraryHold
{
public:
    constexpr LibraryHold() = default;
    ~LibraryHold() { m_bHeld = false; }
    LibraryHold(const LibraryHold&) = delete;
    LibraryHold& operator=(const LibraryHold&) = delete;
    void Hold() { m_bHeld = true; }

private:
    volatile bool m_bHeld = false;
};

// The importance of a thread within its task, under time sharing.
void SetTimeSharePriority(thread_port_t nThread, int nPriority)
{
    thread_extended_policy_data_t extended;
    extended.timeshare = 1;
    thread_policy_set(nThread, THREAD_EXTENDED_POLICY, reinterpret_cast<thread_policy_t>(&extended),
                      THREAD_EXTENDED_POLICY_COUNT);

    constexpr thread_flavor_t INFO_FLAVOR = 3; // THREAD_BASIC_INFO
    constexpr mach_msg_type_number_t INFO_COUNT = 10;
    integer_t info[INFO_COUNT] = {};
    mach_msg_type_number_t nCount = INFO_COUNT;
    thread_port_t nSelf = pthread_mach_thread_np(pthread_self());
    kern_return_t nResult = thread_info(nSelf, INFO_FLAVOR, info, &nCount);

    // Deliberate: the kernel's result is what is taken off, 0 on success. What it delivered is not read; threads have
    // always been placed in this way, and their order to each other rests on it.
    thread_precedence_policy_data_t precedence;
    precedence.importance = nPriority - nResult;
    thread_policy_set(nThread, THREAD_PRECEDENCE_POLICY, reinterpret_cast<thread_policy_t>(&precedence),
                      THREAD_PRECEDENCE_POLICY_COUNT);
}

// A period of 5 ms with half of it as work, which must be done within three quarters of the period.
// Deliberate: the ratio of the timebase is applied as it stands. Where a tick is no nanosecond the period is another,
// and the ring thread is tuned to it.
void SetRealTimePriority(thread_port_t nThread)
{
    static const mach_timebase_info_data_t s_Timebase = []
    {
        mach_timebase_info_data_t timebase;
        mach_timebase_info(&timebase);
        return timebase;
    }();
    constexpr double PERIOD_NANOSECONDS = 5'000'000;
    double fRatio = static_cast<double>(s_Timebase.numer) / s_Timebase.denom;

    thread_time_constraint_policy_data_t constraint;
    constraint.period = static_cast<uint32_t>(fRatio * PERIOD_NANOSECONDS);
    constraint.computation = static_cast<uint32_t>(constraint.period * 0.5);
    constraint.constraint = static_cast<uint32_t>(constraint.computation * 1.5);
    constraint.preemptible = 1;
    thread_policy_set(nThread, THREAD_TIME_CONSTRAINT_POLICY, reinterpret_cast<thread_policy_t>(&constraint),
                      THREAD_TIME_CONSTRAINT_POLICY_COUNT);
}
} // namespace

unsigned long long LyPlatform::GetClockTicks() { return mach_absolute_time(); }

LyPlatform::TIMEBASE LyPlatform::GetClockTimebase()
{
    mach_timebase_info_data_t timebase;
    mach_timebase_info(&timebase);
    return {timebase.numer, timebase.denom};
}

void LyPlatform::SetThreadAttributePriority(pthread_attr_t* pAttributes, int nPriority)
{
    if (nPriority == 0)
        return;
    sched_param parameter{};
    parameter.sched_priority =
        GetSchedulingParameter(nPriority, sched_get_priority_min(SCHED_RR), sched_get_priority_max(SCHED_RR));
    pthread_attr_setinheritsched(pAttributes, PTHREAD_EXPLICIT_SCHED);
    pthread_attr_setschedpolicy(pAttributes, nPriority == REAL_TIME_PRIORITY ? SCHED_RR : SCHED_OTHER);
    pthread_attr_setschedparam(pAttributes, &parameter);
}

void LyPlatform::SetStartedThreadPriority(pthread_t hThread, int nPriority)
{
    thread_port_t nThread = pthread_mach_thread_np(hThread);
    if (nPriority == REAL_TIME_PRIORITY)
        SetRealTimePriority(nThread);
    else
        SetTimeSharePriority(nThread, nPriority);
}

int LyPlatform::GetProcessId() { return static_cast<int>(getpid()); }

pthread_t LyPlatform::GetThreadId() { return pthread_self(); }

// A library with such an object is never unloaded.
void LyPlatform::HoldLibraryUntilThreadEnds()
{
    thread_local LibraryHold s_Hold;
    s_Hold.Hold();
}

void* LyPlatform::BeginAutoreleasePool()
{
    Class pClass = objc_getClass("NSAutoreleasePool");
    if (pClass == nullptr)
        return nullptr;
    return SendMessage(SendMessage(reinterpret_cast<id>(pClass), "alloc"), "init");
}

void LyPlatform::EndAutoreleasePool(void* pPool)
{
    if (pPool != nullptr)
        SendMessage(static_cast<id>(pPool), "release");
}

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
    uint32_t nBytes = static_cast<uint32_t>(nBufferBytes);
    bool bComplete = _NSGetExecutablePath(pBuffer, &nBytes) == 0;
    if (!bComplete)
        pBuffer[0] = 0;
    return bComplete;
}

bool LyPlatform::IsOpenedOnce(int) { return false; } // nothing tells

const char* LyPlatform::GetHomeDirectory() { return std::getenv("HOME"); }

double LyPlatform::GetProcessStartSeconds()
{
    kinfo_proc process{};
    size_t nBytes = sizeof process;
    int aryName[] = {CTL_KERN, KERN_PROC, KERN_PROC_PID, getpid()};
    if (sysctl(aryName, 4, &process, &nBytes, nullptr, 0) != 0)
        return 0;
    return static_cast<double>(process.kp_proc.p_starttime.tv_sec);
}

void LyPlatform::RunApplicationLoop()
{
    Class pClass = objc_getClass("NSApplication");
    if (pClass != nullptr)
        SendMessage(SendMessage(reinterpret_cast<id>(pClass), "sharedApplication"), "run");
}
