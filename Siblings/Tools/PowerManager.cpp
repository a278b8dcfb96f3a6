#include "PowerManager.h"

#include "UTF8.h"
#include <ctime>
#include <exception>
#include <fcntl.h>
#include <memory>
#include <string>
#include <systemd/sd-bus.h>
#include <unistd.h>

namespace
{
constexpr uint64_t FIRST_HALF = 0xffffffff;

struct BusCloser
{
    void operator()(sd_bus* p) const { (void)sd_bus_close_unref(p); }
};
struct MessageCloser
{
    void operator()(sd_bus_message* p) const { (void)sd_bus_message_unref(p); }
};
using BusPtr = std::unique_ptr<sd_bus, BusCloser>;
using MessagePtr = std::unique_ptr<sd_bus_message, MessageCloser>;

uint64_t GetNowUS()
{
    timespec now;
    (void)clock_gettime(CLOCK_MONOTONIC, &now); // cannot fail for this clock
    return static_cast<uint64_t>(now.tv_sec) * 1'000'000 + static_cast<uint64_t>(now.tv_nsec) / 1000;
}

// A bus takes valid UTF-8 alone.
std::string GetReason(const wchar_t* pName)
{
    std::wstring strName = pName != nullptr && *pName != 0 ? pName : L"Audio CD";
    for (wchar_t& c : strName)
    {
        if (UTF8Details::IsSurrogate(static_cast<char32_t>(c)))
            c = static_cast<wchar_t>(UTF8Details::REPLACEMENT);
    }
    return NarrowUTF8(strName);
}

// The bus, once it has let us in; null if it has not done so in time. The
// library's own time-out for this is far longer.
BusPtr OpenBus(uint64_t nDeadlineUS)
{
    sd_bus* p = nullptr;
    if (sd_bus_open_system(&p) < 0)
        return nullptr;
    BusPtr bus(p);
    for (;;)
    {
        const int nReady = sd_bus_is_ready(p);
        if (nReady != 0)
            return nReady > 0 ? std::move(bus) : nullptr;
        const int nProcessed = sd_bus_process(p, nullptr);
        const uint64_t nNowUS = GetNowUS();
        if (nProcessed < 0 || nNowUS >= nDeadlineUS)
            return nullptr;
        if (nProcessed == 0 && sd_bus_wait(p, nDeadlineUS - nNowUS) < 0)
            return nullptr;
    }
}

// The descriptor that holds the machine awake; -1 if there is none to be had.
int Inhibit(const std::string& strReason)
{
    const uint64_t nDeadlineUS = GetNowUS() + PowerManager::TIMEOUT_US;
    const BusPtr bus = OpenBus(nDeadlineUS);
    sd_bus_message* p = nullptr;
    if (bus == nullptr ||
        sd_bus_message_new_method_call(bus.get(), &p, "org.freedesktop.login1", "/org/freedesktop/login1",
                                       "org.freedesktop.login1.Manager", "Inhibit") < 0)
        return -1;
    const MessagePtr request(p);
    const uint64_t nNowUS = GetNowUS();
    if (sd_bus_message_append(p, "ssss", "sleep:idle", "Rondel", strReason.c_str(), "block") < 0 ||
        nNowUS >= nDeadlineUS)
        return -1;
    sd_bus_message* pAnswer = nullptr;
    if (sd_bus_call(bus.get(), p, nDeadlineUS - nNowUS, nullptr, &pAnswer) < 0)
        return -1;
    const MessagePtr answer(pAnswer);
    int nDescriptor = -1;
    if (sd_bus_message_read(pAnswer, "h", &nDescriptor) < 0)
        return -1;
    return fcntl(nDescriptor, F_DUPFD_CLOEXEC,
                 0); // the other one goes with its message
}
} // namespace

PowerManager::~PowerManager()
{
    for (const auto& [nEntry, nDescriptor] : m_mapHolds)
        (void)close(nDescriptor);
}

long long PowerManager::Acquire(const wchar_t* pName, int, int)
{
    int nDescriptor = -1;
    try
    {
        nDescriptor = Inhibit(GetReason(pName));
        if (nDescriptor < 0)
            return 0;
        const std::lock_guard lock(m_Mutex);
        if ((++m_nLastEntry & FIRST_HALF) == 0)
            ++m_nLastEntry;
        m_mapHolds.emplace(m_nLastEntry, nDescriptor);
        return static_cast<long long>(m_nLastEntry);
    }
    catch (const std::exception&)
    {
        if (nDescriptor >= 0)
            (void)close(nDescriptor);
        return 0; // no memory
    }
}

void PowerManager::Release(int nFirstHalf, int nSecondHalf)
{
    const uint64_t nEntry = uint64_t{static_cast<uint32_t>(nSecondHalf)} << 32 | static_cast<uint32_t>(nFirstHalf);
    const std::lock_guard lock(m_Mutex);
    const auto it = m_mapHolds.find(nEntry);
    if (it == m_mapHolds.end())
        return;
    (void)close(it->second);
    m_mapHolds.erase(it);
}
