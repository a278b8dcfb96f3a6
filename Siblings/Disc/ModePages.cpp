#include "ModePages.h"
#include "MMC.h"
#include <algorithm>
#include <cstddef>

namespace
{
using Bytes = std::vector<unsigned char>;

constexpr unsigned char MODE_PAGE_ERROR_RECOVERY = 0x01;
constexpr unsigned char MODE_PAGE_AUDIO_CONTROL = 0x0E;
constexpr size_t PACKED_CAPABILITIES_BYTES = 100;
constexpr size_t PACKED_FLAGS = 4;
constexpr unsigned char READ_RETRIES = 1;

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

// Page 2Ah, MMC-3, 5.5.10. A drive that reads all CDs and writes none; no buffer, since nothing is cached.
Bytes MakeCapabilities(const MODE_STATE& state)
{
    Bytes page(32);
    page[0] = MODE_PAGE_CAPABILITIES;
    page[1] = static_cast<unsigned char>(page.size() - 2);
    page[2] = 0x07; // reads CD-R, CD-RW, method 2
    page[4] = 0x70; // mode 2 form 1 and form 2, multi-session
    page[5] = 0x63; // CD-DA, accurate stream, ISRC, UPC
    page[6] = static_cast<unsigned char>(0x29 | (state.m_bLocked ? 0x02 : 0)); // tray, eject, lock and its state
    MMCPut16(&page[8], IMAGE_DRIVE_MAX_SPEED);
    MMCPut16(&page[14], state.m_nReadSpeed);
    return page;
}
} // namespace

std::vector<unsigned char> GetModePages(int nPage, bool bChangeable, const MODE_STATE& state)
{
    Bytes all;
    for (const Bytes& page : {MakeErrorRecovery(), MakeCDParameters(), MakeAudioControl(), MakeCapabilities(state)})
    {
        if (nPage != MODE_PAGE_ALL && nPage != page[0])
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
    Bytes packed = MakeErrorRecovery();
    for (const Bytes& page : {MakeCDParameters(), MakeCapabilities(state)})
        packed.insert(packed.end(), page.begin(), page.end());
    packed.resize(MakeErrorRecovery().size() + MakeCDParameters().size() + PACKED_CAPABILITIES_BYTES);
    const Bytes audio = MakeAudioControl();
    packed.insert(packed.end(), audio.begin(), audio.end());
    packed.resize(packed.size() + PACKED_FLAGS, 1);

    static constexpr char HEX_DIGITS[] = "0123456789ABCDEF";
    std::string strDigits;
    strDigits.reserve(2 * packed.size());
    for (const unsigned char c : packed)
        (strDigits += HEX_DIGITS[c >> 4]) += HEX_DIGITS[c & 15];
    return strDigits;
}
