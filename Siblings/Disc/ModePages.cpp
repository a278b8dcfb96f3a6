#include "ModePages.h"
#include "MMC.h"
#include <algorithm>
#include <array>
#include <cstddef>

namespace
{
using Bytes = std::vector<unsigned char>;

constexpr unsigned char MODE_PAGE_ERROR_RECOVERY = 0x01;
constexpr unsigned char MODE_PAGE_AUDIO_CONTROL = 0x0E;
constexpr size_t PACKED_ERROR_RECOVERY_BYTES = 12;
constexpr size_t PACKED_CD_PARAMETERS_BYTES = 8;
constexpr size_t PACKED_CAPABILITIES_BYTES = 100;
constexpr size_t PACKED_AUDIO_CONTROL_BYTES = 16;
constexpr size_t PACKED_FLAGS = 4;
constexpr unsigned char READ_RETRIES = 1;
constexpr unsigned char CAPABILITY_ACCURATE_STREAM = 0x02; // byte 5

Bytes MakeErrorRecovery() { return {MODE_PAGE_ERROR_RECOVERY, 10, 0, READ_RETRIES, 0, 0, 0, 0, 0, 0, 0, 0}; }

Bytes MakeCDParameters()
{
    return {MODE_PAGE_CD_PARAMETERS, 6, 0, 0, 0, 60, 0, 75}; // seconds in a minute, frames in a second
}

Bytes MakeAudioControl()
{
    // Ports 0 and 1 carry channels 0 and 1 at full volume.
    return {MODE_PAGE_AUDIO_CONTROL, 14, 4, 0, 0, 0, 0, 0, 1, 0xFF, 2, 0xFF, 0, 0, 0, 0};
}

// Page 2Ah, MMC-3, 5.5.10. A drive that reads all CDs and writes none.
Bytes MakeCapabilities(const MODE_STATE& state)
{
    Bytes page(32);
    page[0] = MODE_PAGE_CAPABILITIES;
    page[1] = static_cast<unsigned char>(page.size() - 2);
    page[2] = 0x07; // reads CD-R, CD-RW, method 2
    page[4] = 0x70; // mode 2 form 1 and form 2, multi-session
    page[5] = 0x61; // CD-DA, ISRC, UPC
    if (state.m_bAccurateStream)
        page[5] |= CAPABILITY_ACCURATE_STREAM;
    page[6] = static_cast<unsigned char>(0x29 | (state.m_bLocked ? 0x02 : 0)); // tray, eject, lock and its state
    MMCPut16(&page[8], state.m_nMaxSpeed);
    MMCPut16(&page[12], state.m_nBufferKiB);
    MMCPut16(&page[14], state.m_nReadSpeed);
    return page;
}

MODE_PAGES MakeAllPages(const MODE_STATE& state)
{
    MODE_PAGES pages;
    if (state.m_pPages != nullptr)
        pages = *state.m_pPages;
    for (Bytes& page : std::array{MakeErrorRecovery(), MakeCDParameters(), MakeAudioControl(), MakeCapabilities(state)})
        pages.try_emplace(page[0], std::move(page));
    return pages;
}

// The page in a field of nBytes: what does not fit is cut, what is missing is zero.
void AppendField(Bytes& packed, const Bytes& page, size_t nBytes)
{
    const size_t nEnd = packed.size() + nBytes;
    packed.insert(packed.end(), page.begin(), page.end());
    packed.resize(nEnd);
}
} // namespace

std::vector<unsigned char> GetModePages(int nPage, bool bChangeable, const MODE_STATE& state)
{
    Bytes all;
    for (const auto& [nCode, page] : MakeAllPages(state))
    {
        if (nPage != MODE_PAGE_ALL && nPage != nCode)
            continue;
        const auto nStart = static_cast<std::ptrdiff_t>(all.size());
        all.insert(all.end(), page.begin(), page.end());
        if (bChangeable)
            std::fill(all.begin() + nStart + 2, all.end(), static_cast<unsigned char>(0));
    }
    return all;
}

std::string GetPackedModePages(const MODE_STATE& state)
{
    MODE_PAGES pages = MakeAllPages(state);
    Bytes packed;
    AppendField(packed, pages[MODE_PAGE_ERROR_RECOVERY], PACKED_ERROR_RECOVERY_BYTES);
    AppendField(packed, pages[MODE_PAGE_CD_PARAMETERS], PACKED_CD_PARAMETERS_BYTES);
    AppendField(packed, pages[MODE_PAGE_CAPABILITIES], PACKED_CAPABILITIES_BYTES);
    AppendField(packed, pages[MODE_PAGE_AUDIO_CONTROL], PACKED_AUDIO_CONTROL_BYTES);
    packed.resize(packed.size() + PACKED_FLAGS, 1);

    static constexpr char HEX_DIGITS[] = "0123456789ABCDEF";
    std::string strDigits;
    strDigits.reserve(2 * packed.size());
    for (const unsigned char c : packed)
        (strDigits += HEX_DIGITS[c >> 4]) += HEX_DIGITS[c & 15];
    return strDigits;
}
