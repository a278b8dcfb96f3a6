#include "DriveFaults.h"
#include "MMC.h"
#include <algorithm>
#include <cstring>

namespace
{
// SplitMix64 (Steele, Lea and Flood, "Fast splittable pseudorandom number generators", 2014).
constexpr unsigned long long GOLDEN_STEP = 0x9E3779B97F4A7C15U;

unsigned long long Mix(unsigned long long n)
{
    n = (n ^ n >> 30) * 0xBF58476D1CE4E5B9U;
    n = (n ^ n >> 27) * 0x94D049BB133111EBU;
    return n ^ n >> 31;
}

// Kinds of chance: those that look at the same numbers must not fall the same way.
constexpr unsigned long long CHANCE_COMMAND = 1;
constexpr unsigned long long CHANCE_UNREADABLE = 2;
constexpr unsigned long long CHANCE_JITTER = 3;
constexpr unsigned long long CHANCE_DIFFERS = 4;
constexpr unsigned long long CHANCE_SILENT = 5;
constexpr unsigned long long KINDS_OF_CHANCE = 8;

unsigned long long GetSeed(unsigned long long nSeed, unsigned long long nKind, size_t nLine)
{
    return nSeed + GOLDEN_STEP * (nLine * KINDS_OF_CHANCE + nKind);
}

bool Overlaps(const LBA_RANGE& range, int nLBA, int nSectors)
{
    return nSectors > 0 && range.m_nFirst < static_cast<long long>(nLBA) + nSectors && range.m_nLast >= nLBA;
}

// A drive says who it is and what went wrong whatever happens (SPC-3, 5.8.7: unit attention waits meanwhile).
bool IsAskedInAnyState(unsigned char nOpcode)
{
    return nOpcode == CDB_INQUIRY || nOpcode == CDB_REQUEST_SENSE || nOpcode == CDB_GET_CONFIGURATION ||
           nOpcode == CDB_GET_EVENT_STATUS;
}
} // namespace

bool IsReadOpcode(unsigned char nOpcode)
{
    return nOpcode == CDB_READ_CD || nOpcode == CDB_READ_10 || nOpcode == CDB_READ_12;
}

DriveRandom::DriveRandom(unsigned long long nSeed, unsigned long long nFirst, unsigned long long nSecond)
    : m_nState(Mix(Mix(nSeed + GOLDEN_STEP) + nFirst) + GOLDEN_STEP * nSecond)
{
}

unsigned long long DriveRandom::Next() { return Mix(m_nState += GOLDEN_STEP); }

void DriveFaults::Reset(const DRIVE_PROFILE& profile)
{
    m_pProfile = &profile;
    m_nCommands = 0;
    m_nReads = 0;
    m_Attentions.clear();
    m_aryTries.assign(profile.m_aryUnreadable.size(), {});
}

bool DriveFaults::IsAt(const COMMAND_TRIGGER& when, bool bRead) const
{
    return when.m_bReads ? bRead && when.m_nCommand == m_nReads : when.m_nCommand == m_nCommands;
}

FAULT_DECISION DriveFaults::OnCommand(unsigned char nOpcode)
{
    const bool bRead = IsReadOpcode(nOpcode);
    ++m_nCommands;
    m_nReads += bRead ? 1 : 0;
    FAULT_DECISION decision;
    for (const COMMAND_TRIGGER& when : m_pProfile->m_aryRemovals)
        decision.m_bRemoved |= IsAt(when, bRead);
    for (const CHANGE_FAULT& fault : m_pProfile->m_aryChanges)
        if (IsAt(fault.m_When, bRead))
            decision.m_pNewDisc = &fault.m_strImage;
    for (const ATTENTION_FAULT& fault : m_pProfile->m_aryAttentions)
        if (IsAt(fault.m_When, bRead))
            m_Attentions.insert(m_Attentions.end(), static_cast<size_t>(fault.m_nTimes), fault.m_Sense);
    for (const HANG_FAULT& fault : m_pProfile->m_aryHangs)
        if (IsAt(fault.m_When, bRead))
            decision.m_Hang += std::chrono::milliseconds(fault.m_nMs);
    if (!m_Attentions.empty() && !IsAskedInAnyState(nOpcode))
    {
        decision.m_Sense = m_Attentions.front();
        m_Attentions.pop_front();
        return decision;
    }
    for (size_t n = 0; n < m_pProfile->m_aryFails.size(); ++n)
    {
        const FAIL_FAULT& fault = m_pProfile->m_aryFails[n];
        DriveRandom random(GetSeed(m_pProfile->m_nSeed, CHANCE_COMMAND, n),
                           static_cast<unsigned long long>(m_nCommands), 0);
        if ((bRead || !fault.m_bReads) && random.Happens(fault.m_nPPM))
            decision.m_Sense = fault.m_Sense;
    }
    return decision;
}

DRIVE_SENSE DriveFaults::OnDiscSectors(int nLBA, int nSectors)
{
    DRIVE_SENSE sense;
    for (size_t n = 0; n < m_aryTries.size(); ++n)
    {
        const UNREADABLE_FAULT& fault = m_pProfile->m_aryUnreadable[n];
        TRIES& tries = m_aryTries[n];
        if (!Overlaps(fault.m_Range, nLBA, nSectors))
            continue;
        if (tries.m_nLastRead != m_nReads)
        {
            tries.m_nLastRead = m_nReads;
            DriveRandom random(GetSeed(m_pProfile->m_nSeed, CHANCE_UNREADABLE, n),
                               static_cast<unsigned long long>(m_nReads), 0);
            tries.m_bFails = ++tries.m_nCount % fault.m_nEvery == 0 && random.Happens(fault.m_nPPM);
        }
        if (tries.m_bFails)
            sense = {SENSE_MEDIUM_ERROR, ASC_READ_ERROR, 5};
    }
    return sense;
}

bool DriveFaults::MayReadAhead(int nLBA) const
{
    return std::none_of(m_pProfile->m_aryUnreadable.begin(), m_pProfile->m_aryUnreadable.end(),
                        [nLBA](const UNREADABLE_FAULT& fault) { return fault.m_Range.Contains(nLBA); });
}

bool DriveFaults::SpoilsAnything() const
{
    return !m_pProfile->m_aryDiffers.empty() || !m_pProfile->m_aryJitter.empty() || !m_pProfile->m_arySilent.empty();
}

int DriveFaults::GetShift(int nLBA, unsigned long long nRead) const
{
    for (size_t n = 0; n < m_pProfile->m_aryJitter.size(); ++n)
    {
        const JITTER_FAULT& fault = m_pProfile->m_aryJitter[n];
        if (!fault.m_Range.Contains(nLBA))
            continue;
        // One read starts at one wrong place: all its sectors are shifted alike.
        DriveRandom random(GetSeed(m_pProfile->m_nSeed, CHANCE_JITTER, n), nRead, 0);
        return static_cast<int>(random.Below(static_cast<unsigned int>(2 * fault.m_nMaxFrames + 1))) -
               fault.m_nMaxFrames;
    }
    return 0;
}

bool DriveFaults::Spoil(unsigned char* pSector, int nLBA, unsigned long long nRead) const
{
    bool bChanged = false;
    const auto nPlace = static_cast<unsigned long long>(nLBA + LY_CD_MSF_OFFSET);
    for (size_t n = 0; n < m_pProfile->m_aryDiffers.size(); ++n)
    {
        if (!m_pProfile->m_aryDiffers[n].Contains(nLBA))
            continue;
        // The mix maps numbers one to one, so that the eight bytes are others after every read.
        DriveRandom random(GetSeed(m_pProfile->m_nSeed, CHANCE_DIFFERS, n), nPlace, nRead);
        const unsigned long long nNoise = random.Next();
        const size_t nWord = nPlace % (LY_CD_SECTOR_BYTES / sizeof nNoise) * sizeof nNoise;
        for (size_t i = 0; i < sizeof nNoise; ++i)
            pSector[nWord + i] = static_cast<unsigned char>(pSector[nWord + i] ^ (nNoise >> 8 * i & 0xFF));
        bChanged |= nNoise != 0;
    }
    for (size_t n = 0; n < m_pProfile->m_arySilent.size(); ++n)
        if (m_pProfile->m_arySilent[n].m_Range.Contains(nLBA))
            bChanged |= SpoilSilently(pSector, m_pProfile->m_arySilent[n],
                                      DriveRandom(GetSeed(m_pProfile->m_nSeed, CHANCE_SILENT, n), nPlace, nRead));
    return bChanged;
}

bool DriveFaults::SpoilSilently(unsigned char* pSector, const SILENT_FAULT& fault, DriveRandom random) const
{
    if (!random.Happens(fault.m_nPPM))
        return false;
    // A step that has no divisor in common with the length comes to every byte once before it comes back.
    constexpr unsigned int STEP = 1009;
    static_assert(LY_CD_SECTOR_BYTES == 2 * 2 * 2 * 2 * 3 * 7 * 7 && STEP % 2 != 0 && STEP % 3 != 0 && STEP % 7 != 0);
    unsigned int nAt = random.Below(LY_CD_SECTOR_BYTES);
    for (int n = 0; n < fault.m_nBytes; ++n)
    {
        pSector[nAt] = static_cast<unsigned char>(pSector[nAt] ^ (1 + random.Below(255)));
        nAt = (nAt + STEP) % LY_CD_SECTOR_BYTES;
    }
    return true;
}
