#include "OffsetDrive.h"
#include "CDUnits.h"
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace
{
constexpr int READ_CD_CDB_BYTES = 12;
constexpr unsigned char EXPECTED_TYPE = 0x1C; // READ CD, byte 1
constexpr unsigned char RELATIVE_ADDRESS = 0x01;
constexpr unsigned char MAIN_CHANNEL = 0xF8; // READ CD, byte 9
constexpr unsigned char C2_POINTERS = 0x06;
constexpr unsigned char SUB_CHANNEL = 0x07; // READ CD, byte 10
constexpr int MAX_SECTORS = 100 * 60 * LY_CD_SECTORS_PER_SECOND;
constexpr int TOC_BYTES = TOC_HEADER_BYTES + TOC_DESCRIPTOR_BYTES; // from the lead-out on there is nothing more

int FloorDivide(int n, int nBy) { return n >= 0 ? n / nBy : -((nBy - 1 - n) / nBy); }
} // namespace

OffsetDrive::OffsetDrive(std::unique_ptr<ServiceDrive> pDrive, FIND_OFFSET findOffset)
    : m_pDrive(std::move(pDrive)), m_FindOffset(std::move(findOffset))
{
}

OffsetDrive::OffsetDrive(std::unique_ptr<ServiceDrive> pDrive, const READ_OFFSET& offset)
    : OffsetDrive(std::move(pDrive), [offset](const DRIVE_DESCRIPTION&) { return offset; })
{
}

bool OffsetDrive::Acquire(std::string& strError)
{
    if (!m_pDrive->Acquire(strError))
        return false;
    const std::lock_guard lock(m_Mutex);
    if (m_nHolders++ > 0)
        return true;
    m_nLeadOut = UNKNOWN;
    m_Offset = m_FindOffset(m_pDrive->GetDescription());
    if (m_Offset.m_nFrames > READ_OFFSET::MAX_FRAMES || m_Offset.m_nFrames < -READ_OFFSET::MAX_FRAMES)
        m_Offset.m_nFrames = 0;
    m_bCorrects.store(m_Offset.m_nFrames != 0, std::memory_order_release);
    return true;
}

void OffsetDrive::Release()
{
    m_pDrive->Release();
    const std::lock_guard lock(m_Mutex);
    m_nHolders = std::max(0, m_nHolders - 1);
}

READ_OFFSET OffsetDrive::GetOffset()
{
    const std::lock_guard lock(m_Mutex);
    return m_Offset;
}

std::string OffsetDrive::GetWarnings()
{
    std::string strWarnings = m_pDrive->GetWarnings();
    const std::string strOwn = GetOffset().m_strWarning;
    strWarnings += (strWarnings.empty() || strOwn.empty() || strWarnings.back() == '\n' ? "" : "\n") + strOwn;
    return strWarnings;
}

bool OffsetDrive::Send(const DRIVE_COMMAND& command, SENSE_DATA& sense)
{
    if (!m_bCorrects.load(std::memory_order_acquire))
        return m_pDrive->Send(command, sense);
    std::unique_lock lock(m_Mutex);
    if (IsShifted(command))
        return ReadShifted(command, sense);
    lock.unlock(); // a tray that moves does not keep the others waiting
    const bool bGood = m_pDrive->Send(command, sense);
    lock.lock();
    ForgetDisc(command, bGood, sense);
    return bGood;
}

// READ CD of audio sectors alone, into a buffer that takes one at least.
bool OffsetDrive::IsShifted(const DRIVE_COMMAND& command) const
{
    const unsigned char* pCDB = command.m_pCDB;
    return m_Offset.m_nFrames != 0 && pCDB != nullptr && command.m_nCDBBytes >= READ_CD_CDB_BYTES &&
           pCDB[0] == CDB_READ_CD && (pCDB[1] & EXPECTED_TYPE) == READ_CD_TYPE_CDDA &&
           (pCDB[1] & RELATIVE_ADDRESS) == 0 && (pCDB[9] & MAIN_CHANNEL) != 0 && (pCDB[9] & C2_POINTERS) == 0 &&
           (pCDB[10] & SUB_CHANNEL) == 0 && (MMCGet32(pCDB + 5) & 0xFFFFFFU) != 0 && command.m_pData != nullptr &&
           command.m_eType == DRIVE_TRANSFER_IN && command.m_nDataBytes >= LY_CD_SECTOR_BYTES;
}

bool OffsetDrive::ReadShifted(const DRIVE_COMMAND& command, SENSE_DATA& sense)
{
    const int nRoom = command.m_nDataBytes;
    const int nFirst = static_cast<int>(MMCGet32(command.m_pCDB + 2));
    const int nAsked = static_cast<int>(MMCGet32(command.m_pCDB + 5) & 0xFFFFFFU);
    // An address that no disc has is for the drive to refuse.
    if (nFirst < -LY_CD_MSF_OFFSET || nFirst > MAX_SECTORS)
        return m_pDrive->Send(command, sense);
    WINDOW window = {nFirst, std::min(nAsked, nRoom / LY_CD_SECTOR_BYTES), 0, 0, 0, false};
    const int nSectors = FloorDivide(m_Offset.m_nFrames, LY_CD_SECTOR_FRAMES);
    window.m_nRaw = nFirst + nSectors;
    window.m_nSkip = (m_Offset.m_nFrames - nSectors * LY_CD_SECTOR_FRAMES) * LY_CD_FRAME_BYTES;
    window.m_nRaws = window.m_nCount + (window.m_nSkip != 0 ? 1 : 0);
    bool bGood = FindLeadOut(command.m_nTimeoutMs, sense);
    if (bGood)
    {
        window.m_bInside = nFirst >= 0 && window.m_nCount <= m_nLeadOut - nFirst;
        m_aryRaw.resize(static_cast<size_t>(window.m_nRaws) * LY_CD_SECTOR_BYTES);
        bGood = ReadRaw(command, window, sense);
    }
    ForgetDisc(command, bGood, sense);
    if (!bGood)
    {
        std::memset(command.m_pData, 0, static_cast<size_t>(nRoom));
        command.m_nDataBytes = 0;
        return false;
    }
    command.m_nDataBytes = window.m_nCount * LY_CD_SECTOR_BYTES;
    std::memcpy(command.m_pData, m_aryRaw.data() + window.m_nSkip, static_cast<size_t>(command.m_nDataBytes));
    return true;
}

// Where the disc ends. Asked once for each disc.
bool OffsetDrive::FindLeadOut(int nTimeoutMs, SENSE_DATA& sense)
{
    if (m_nLeadOut != UNKNOWN)
        return true;
    unsigned char aryCDB[10] = {CDB_READ_TOC};
    aryCDB[6] = TOC_LEAD_OUT_TRACK;
    MMCPut16(aryCDB + 7, TOC_BYTES);
    unsigned char aryTOC[TOC_BYTES] = {};
    int nBytes = sizeof aryTOC;
    if (!m_pDrive->Send({aryCDB, sizeof aryCDB, aryTOC, nBytes, DRIVE_TRANSFER_IN, nTimeoutMs}, sense))
        return false;
    const unsigned char* pLeadOut = aryTOC + TOC_HEADER_BYTES;
    const int nLeadOut = static_cast<int>(MMCGet32(pLeadOut + TOC_DESCRIPTOR_OFFSET_ADDRESS));
    // An answer that is none: the disc is taken to be as long as discs can be.
    const bool bTold = nBytes == TOC_BYTES && pLeadOut[TOC_DESCRIPTOR_OFFSET_TRACK] == TOC_LEAD_OUT_TRACK;
    m_nLeadOut = bTold && nLeadOut > 0 && nLeadOut < MAX_SECTORS ? nLeadOut : MAX_SECTORS;
    return true;
}

// All that is needed into m_aryRaw: the part on the disc, and what lies outside of it.
bool OffsetDrive::ReadRaw(const DRIVE_COMMAND& command, const WINDOW& window, SENSE_DATA& sense)
{
    const int nEnd = window.m_nRaw + window.m_nRaws;
    for (int nRaw = window.m_nRaw; nRaw < nEnd;)
    {
        int nCount = std::min(LY_CD_MAX_READ_SECTORS, nEnd - nRaw);
        // No command goes over an end of the disc, so that what is there is read whatever is beyond.
        for (const int nBorder : {0, m_nLeadOut})
            if (nRaw < nBorder)
                nCount = std::min(nCount, nBorder - nRaw);
        if (!ReadPiece(command, window, nRaw, nCount, sense))
            return false;
        nRaw += nCount;
    }
    return true;
}

bool OffsetDrive::ReadPiece(const DRIVE_COMMAND& command, const WINDOW& window, int nRaw, int nCount, SENSE_DATA& sense)
{
    unsigned char* pData = m_aryRaw.data() + static_cast<ptrdiff_t>(nRaw - window.m_nRaw) * LY_CD_SECTOR_BYTES;
    const bool bOutside = window.m_bInside && (nRaw < 0 || nRaw >= m_nLeadOut);
    if (bOutside && !m_Offset.m_bOverRead)
    {
        std::memset(pData, 0, static_cast<size_t>(nCount) * LY_CD_SECTOR_BYTES);
        return true;
    }
    if (ReadSectors(command, nRaw, nCount, pData, sense))
        return true;
    const int nKey = sense.GetCodes().m_nKey;
    const bool bRefused = nKey == SENSE_ILLEGAL_REQUEST; // no audio there, or no address of this disc
    const bool bDamaged = nKey == SENSE_MEDIUM_ERROR || nKey == SENSE_BLANK_CHECK;
    if (!window.m_bInside || !(bRefused || (bOutside && bDamaged)))
        return false;
    // One by one: only a neighbour may be silence, never what was asked for.
    for (int i = 0; i < nCount; ++i)
    {
        unsigned char* pSector = pData + static_cast<ptrdiff_t>(i) * LY_CD_SECTOR_BYTES;
        if (ReadSectors(command, nRaw + i, 1, pSector, sense))
            continue;
        const bool bAsked = nRaw + i >= window.m_nFirst && nRaw + i - window.m_nFirst < window.m_nCount;
        if (bAsked || (!bOutside && sense.GetCodes().m_nKey != SENSE_ILLEGAL_REQUEST))
            return false;
        std::memset(pSector, 0, LY_CD_SECTOR_BYTES);
    }
    sense = {};
    return true;
}

// The caller's command for other sectors.
bool OffsetDrive::ReadSectors(const DRIVE_COMMAND& command, int nRaw, int nCount, unsigned char* pData,
                              SENSE_DATA& sense)
{
    unsigned char aryCDB[READ_CD_CDB_BYTES];
    std::memcpy(aryCDB, command.m_pCDB, sizeof aryCDB);
    MMCPut32(aryCDB + 2, static_cast<unsigned int>(nRaw));
    MMCPut24(aryCDB + 6, static_cast<unsigned int>(nCount));
    int nBytes = nCount * LY_CD_SECTOR_BYTES;
    if (!m_pDrive->Send({aryCDB, sizeof aryCDB, pData, nBytes, DRIVE_TRANSFER_IN, command.m_nTimeoutMs}, sense))
        return false;
    // What a drive leaves out is not to be what an earlier command left here.
    const int nWhole = nCount * LY_CD_SECTOR_BYTES;
    if (nBytes >= 0 && nBytes < nWhole)
        std::memset(pData + nBytes, 0, static_cast<size_t>(nWhole - nBytes));
    return true;
}

// A drive that has something to tell of its disc, or moves it, may have another one.
void OffsetDrive::ForgetDisc(const DRIVE_COMMAND& command, bool bGood, const SENSE_DATA& sense)
{
    const int nKey = sense.GetCodes().m_nKey;
    const bool bMoved =
        command.m_pCDB != nullptr && command.m_nCDBBytes > 0 && command.m_pCDB[0] == CDB_START_STOP_UNIT;
    if (bMoved || (!bGood && (nKey == SENSE_NOT_READY || nKey == SENSE_UNIT_ATTENTION)))
        m_nLeadOut = UNKNOWN;
}
