#include "Evidence.h"
#include "CDUnits.h"
#include <algorithm>
#include <chrono>
#include <climits>
#include <cstring>
#include <thread>

namespace
{
constexpr unsigned char READ_CD_MSF_OPCODE = 0xB9; // MMC-3, 6.16

template <class CLOCK>
long long GetMicroseconds()
{
    return std::chrono::duration_cast<std::chrono::microseconds>(CLOCK::now().time_since_epoch()).count();
}

int Limit(long long n) { return static_cast<int>(std::clamp(n, 0LL, static_cast<long long>(INT_MAX))); }

unsigned int Get24(const unsigned char* p) { return static_cast<unsigned int>(p[0]) << 16 | MMCGet16(p + 1); }

int GetAddressOfMSF(const unsigned char* p)
{
    return (p[0] * 60 + p[1]) * LY_CD_SECTORS_PER_SECOND + p[2] - LY_CD_MSF_OFFSET;
}

void PutDrive(DISC_EVIDENCE& record, int nDrive)
{
    for (unsigned char& c : record.m_aryReserved)
    {
        c = static_cast<unsigned char>(nDrive);
        nDrive >>= 8;
    }
}

int TakeDrive(DISC_EVIDENCE& record)
{
    unsigned char* p = record.m_aryReserved;
    const int nDrive = p[0] | p[1] << 8 | p[2] << 16;
    std::memset(p, 0, sizeof record.m_aryReserved);
    return nDrive;
}
} // namespace

EVIDENCE_START EVIDENCE_START::Now()
{
    return {GetMicroseconds<std::chrono::system_clock>(), GetMicroseconds<std::chrono::steady_clock>()};
}

// MMC-3 and SBC-2, the place of address and length (big-endian):
//
//   READ(10)     2-5 address   7-8 sectors
//   READ(12)     2-5 address   6-9 sectors
//   READ CD      2-5 address   6-8 sectors
//   READ CD MSF  3-5 start     6-8 one past the end, as minute, second and frame
SECTOR_RANGE GetSectorRange(const unsigned char* pCDB, int nCDBBytes)
{
    constexpr int SHORT_BYTES = 10;
    constexpr int LONG_BYTES = 12;
    if (pCDB == nullptr || nCDBBytes < SHORT_BYTES)
        return {};
    const int nLBA = static_cast<int>(MMCGet32(pCDB + 2)); // negative in the first pregap
    if (pCDB[0] == CDB_READ_10)
        return {nLBA, static_cast<int>(MMCGet16(pCDB + 7))};
    if (nCDBBytes < LONG_BYTES)
        return {};
    switch (pCDB[0])
    {
    case CDB_READ_12:
        return {nLBA, Limit(MMCGet32(pCDB + 6))};
    case CDB_READ_CD:
        return {nLBA, static_cast<int>(Get24(pCDB + 6))};
    case READ_CD_MSF_OPCODE:
        return {GetAddressOfMSF(pCDB + 3), std::max(0, GetAddressOfMSF(pCDB + 6) - GetAddressOfMSF(pCDB + 3))};
    default:
        return {};
    }
}

Evidence::Evidence() : m_pSlots(std::make_unique<SLOT[]>(RECORDS)) {}

void Evidence::Record(int nDrive, const EVIDENCE_START& start, const DRIVE_COMMAND& command, bool bGood,
                      const SENSE_DATA& sense)
{
    const bool bCommand = command.m_pCDB != nullptr && command.m_nCDBBytes > 0;
    const SECTOR_RANGE range = GetSectorRange(command.m_pCDB, command.m_nCDBBytes);
    DISC_EVIDENCE record = {};
    record.m_nStartUS = start.m_nWallUS;
    record.m_nDurationUS = Limit(GetMicroseconds<std::chrono::steady_clock>() - start.m_nSteadyUS);
    record.m_nLBA = range.m_nLBA;
    record.m_nSectors = range.m_nSectors;
    record.m_nDataBytes = std::max(0, command.m_nDataBytes);
    record.m_nOpcode = bCommand ? command.m_pCDB[0] : static_cast<unsigned char>(0);
    record.m_bGood = bGood;
    if (!bGood)
    {
        const DRIVE_SENSE codes = sense.GetCodes();
        record.m_nSenseKey = codes.m_nKey;
        record.m_nASC = codes.m_nASC;
        record.m_nASCQ = codes.m_nASCQ;
    }
    PutDrive(record, nDrive);
    Write(m_nLast.fetch_add(1, std::memory_order_relaxed) + 1, record);
}

void Evidence::Write(unsigned long long nNumber, DISC_EVIDENCE& record)
{
    SLOT& slot = m_pSlots[nNumber % RECORDS];
    // A writer that was stopped for a whole round of the ring finishes first, or the two would mix.
    const unsigned long long nBefore = nNumber > RECORDS ? nNumber - RECORDS : IN_WORK;
    while (slot[0].load(std::memory_order_acquire) != nBefore)
        std::this_thread::yield();
    unsigned long long aryWords[WORDS];
    record.m_nNumber = nNumber;
    std::memcpy(aryWords, &record, sizeof record);
    slot[0].store(IN_WORK, std::memory_order_relaxed);
    // Whoever sees one of the new words also sees that the slot was in work by then.
    for (size_t i = 1; i < WORDS; ++i)
        slot[i].store(aryWords[i], std::memory_order_release);
    slot[0].store(nNumber, std::memory_order_release);
}

// False if the slot holds another record by now, or holds this one only in part.
bool Evidence::Copy(unsigned long long nNumber, DISC_EVIDENCE& record) const
{
    const SLOT& slot = m_pSlots[nNumber % RECORDS];
    unsigned long long aryWords[WORDS];
    for (size_t i = 0; i < WORDS; ++i)
        aryWords[i] = slot[i].load(std::memory_order_acquire);
    if (aryWords[0] != nNumber || slot[0].load(std::memory_order_relaxed) != nNumber)
        return false;
    std::memcpy(&record, aryWords, sizeof record);
    return true;
}

int Evidence::Read(int nDrive, unsigned long long nAfter, DISC_EVIDENCE* pRecords, int nRecords) const
{
    const unsigned long long nLast = m_nLast.load(std::memory_order_acquire);
    if (pRecords == nullptr || nAfter >= nLast)
        return 0;
    int nCopied = 0;
    for (unsigned long long n = std::max(nAfter, nLast > RECORDS ? nLast - RECORDS : 0) + 1;
         n <= nLast && nCopied < nRecords; ++n)
    {
        DISC_EVIDENCE record;
        if (!Copy(n, record))
        {
            if (m_nLast.load(std::memory_order_acquire) >= n + RECORDS)
                continue; // it gave way to a newer one
            break;        // it is still being written
        }
        const int nDriveOfRecord = TakeDrive(record);
        if (nDrive == EVERY_DRIVE || nDrive == nDriveOfRecord)
            pRecords[nCopied++] = record;
    }
    return nCopied;
}
