// The numbered questions about a drive, answered from its mode pages: the CD capabilities and mechanical status page
// (MMC-3, annex: page 2Ah) and the CD device parameters page (page 0Dh). The questions are listed in
// THDriveInterface.h.

#include "LogHelper.h"
#include "LySCSIBase.h"
#include "MMC.h"

static constexpr double CD_SPEED_KB_PER_SECOND = 176.0; // 1x, in units of 1000 bytes

// Bytes of page 2Ah. From WRITE_SPEED_COUNT on, they exist only if the page is long enough.
static constexpr int PAGE_LENGTH = 1; // bytes behind this one
static constexpr int LOADING_MECHANISM = 6;
static constexpr int MAX_READ_SPEED = 8;
static constexpr int VOLUME_LEVELS = 10;
static constexpr int BUFFER_SIZE = 12;
static constexpr int CURRENT_READ_SPEED = 14;
static constexpr int WRITE_SPEED_COUNT = 30;
static constexpr int FIRST_WRITE_SPEED = 34; // of the first descriptor, which starts two bytes before
static constexpr int WRITE_SPEED_STEP = 4;
static constexpr int LENGTH_WITH_WRITE_SPEEDS = 32;

// Bytes of page 0Dh.
static constexpr int INACTIVITY_TIMER = 3;
static constexpr int SECONDS_PER_MINUTE = 4;
static constexpr int FRAMES_PER_SECOND = 6;

struct CAPABILITY_BIT
{
    signed char nCode;
    signed char nByte; // of page 2Ah
    signed char nBit;
};

static constexpr CAPABILITY_BIT s_aryBits[] = {
    {1, 2, 0},  {2, 2, 1},  {3, 2, 2},  {50, 2, 3}, // what it reads
    {4, 3, 0},  {5, 3, 1},  {40, 3, 1}, {49, 3, 4}, // what it writes
    {6, 4, 0},  {7, 4, 1},  {8, 4, 2},  {9, 4, 3},  // audio
    {10, 4, 4}, {11, 4, 5}, {12, 4, 6}, {41, 4, 7}, // mode 2, multi-session, buffer underrun
    {13, 5, 0}, {14, 5, 1}, {15, 5, 2}, {16, 5, 3}, // CD-DA and sub-channels
    {17, 5, 4}, {18, 5, 5}, {19, 5, 6},             // C2, ISRC, UPC
    {20, 6, 0}, {21, 6, 1}, {22, 6, 2}, {23, 6, 3}, // tray
    {25, 7, 0}, {26, 7, 1}, {27, 7, 2}, {28, 7, 3}, // volume and changer
};

static const CAPABILITY_BIT* FindBit(int nCode)
{
    for (const CAPABILITY_BIT& bit : s_aryBits)
    {
        if (bit.nCode == nCode)
            return &bit;
    }
    return nullptr;
}

static unsigned int GetMultiplier(unsigned int nSpeed)
{
    // NOLINTNEXTLINE(bugprone-incorrect-roundings): truncation after adding a half is the published arithmetic.
    return static_cast<unsigned int>(nSpeed / CD_SPEED_KB_PER_SECOND + 0.5);
}

// The fastest of the counted descriptors. The count comes from the drive: only what lies in the page is read.
static unsigned int GetMaxWriteSpeed(const unsigned char* pPage)
{
    if (pPage[PAGE_LENGTH] < LENGTH_WITH_WRITE_SPEEDS)
        return 0;
    unsigned int nMax = 0;
    int nDescriptors = static_cast<int>(MMCGet16(pPage + WRITE_SPEED_COUNT));
    for (int nAt = FIRST_WRITE_SPEED; nDescriptors > 0 && nAt + 2 <= DSENSEMASK::CAPABILITIES_BYTES; nDescriptors--)
    {
        unsigned int nSpeed = MMCGet16(pPage + nAt);
        if (nSpeed > nMax)
            nMax = nSpeed;
        nAt += WRITE_SPEED_STEP;
    }
    return nMax;
}

static bool QueryCapability(const unsigned char* pPage, int nCode, unsigned int& nValue)
{
    switch (nCode)
    {
    case 24:
        nValue = pPage[LOADING_MECHANISM] >> 5;
        return true;
    case 29:
        nValue = GetMultiplier(MMCGet16(pPage + MAX_READ_SPEED));
        return nValue != 0;
    case 30:
        nValue = MMCGet16(pPage + VOLUME_LEVELS);
        return true;
    case 31:
        nValue = MMCGet16(pPage + BUFFER_SIZE);
        return true;
    case 32:
        nValue = MMCGet16(pPage + CURRENT_READ_SPEED);
        return true;
    case 48:
        nValue = GetMultiplier(GetMaxWriteSpeed(pPage));
        CLogHelper(LY_LOG_AREA_DRIVE, "CTHDriveInterface::QueryCDParms", false)
            .Log("returning max write speed multiplier of %d", nValue);
        return nValue != 0;
    default:
        return false;
    }
}

static bool QueryCDParameter(const unsigned char* pPage, int nCode, unsigned int& nValue)
{
    switch (nCode)
    {
    case 33:
        nValue = MMCGet16(pPage + SECONDS_PER_MINUTE);
        return true;
    case 34:
        nValue = MMCGet16(pPage + FRAMES_PER_SECOND);
        return true;
    case 35:
        nValue = pPage[INACTIVITY_TIMER] & 0x0F;
        return true;
    default:
        return false;
    }
}

bool DSENSEMASK::QueryParameter(int nCode, unsigned int& nValue) const
{
    nValue = 0;
    if (const CAPABILITY_BIT* pBit = FindBit(nCode))
    {
        // Deliberate: a drive that says nothing has none of these abilities, and that is an answer. Every other kind of
        // question fails without its page.
        if (m_bCapabilitiesValid)
            nValue = (m_CapabilitiesPage[pBit->nByte] >> pBit->nBit) & 1U;
        return true;
    }
    if (m_bCDParamsValid && QueryCDParameter(m_CDParamsPage, nCode, nValue))
        return true;
    return m_bCapabilitiesValid && QueryCapability(m_CapabilitiesPage, nCode, nValue);
}
