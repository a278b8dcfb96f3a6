#include "SGTransport.h"
#include "CDUnits.h"
#include "Evidence.h"
#include "SGOutcome.h"
#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <fcntl.h>
#include <scsi/sg.h>
#include <sys/ioctl.h>
#include <sys/stat.h>

namespace
{
constexpr unsigned char READ_CD_MSF_OPCODE = 0xB9; // MMC-3, 6.16
constexpr int DATA_SECTOR_BYTES = 2048;            // of READ(10) and READ(12)

bool IsDeviceMode(const struct stat& status) { return S_ISBLK(status.st_mode) || S_ISCHR(status.st_mode); }

int OpenNode(const char* pPath, int nFlags)
{
    for (;;)
    {
        const int nDescriptor = open(pPath, nFlags);
        if (nDescriptor >= 0 || errno != EINTR)
            return nDescriptor >= 0 ? nDescriptor : -errno;
    }
}

// How long a command of this opcode is (SPC-3, 4.2.5.1). 0 for groups that have no fixed length.
int GetCDBBytes(unsigned char nOpcode)
{
    static constexpr int BYTES_BY_GROUP[] = {6, 10, 10, 0, 16, 12, 0, 0};
    return BYTES_BY_GROUP[nOpcode >> 5];
}

// The room of the data buffer, whatever the caller says.
int GetRoom(const DRIVE_COMMAND& command) { return command.m_pData != nullptr ? std::max(0, command.m_nDataBytes) : 0; }

void ZeroFrom(const DRIVE_COMMAND& command, int nFrom, int nRoom)
{
    if (nRoom > nFrom)
        std::memset(command.m_pData + nFrom, 0, static_cast<size_t>(nRoom - nFrom));
}

DRIVE_SENSE CheckCommand(const DRIVE_COMMAND& command)
{
    if (command.m_pCDB == nullptr || command.m_nCDBBytes < 1)
        return {SENSE_ILLEGAL_REQUEST, ASC_INVALID_OPCODE, 0};
    const bool bLength = command.m_nCDBBytes >= GetCDBBytes(command.m_pCDB[0]) && command.m_nCDBBytes <= CDB_MAX_BYTES;
    const bool bDirection = command.m_eType == DRIVE_TRANSFER_NONE || command.m_eType == DRIVE_TRANSFER_IN;
    if (!bLength || !bDirection)
        return {SENSE_ILLEGAL_REQUEST, ASC_INVALID_FIELD_IN_CDB, 0};
    return {};
}

void FillHeader(const DRIVE_COMMAND& command, int nTransferBytes, unsigned char* pSense, sg_io_hdr& header)
{
    header = {};
    header.interface_id = 'S';
    header.dxfer_direction = command.m_eType == DRIVE_TRANSFER_IN ? SG_DXFER_FROM_DEV : SG_DXFER_NONE;
    header.cmd_len = static_cast<unsigned char>(command.m_nCDBBytes);
    header.cmdp = const_cast<unsigned char*>(command.m_pCDB); // the kernel only reads it
    header.mx_sb_len = SENSE_BYTES;
    header.sbp = pSense;
    header.dxfer_len = static_cast<unsigned int>(nTransferBytes);
    header.dxferp = nTransferBytes > 0 ? command.m_pData : nullptr;
    header.timeout =
        static_cast<unsigned int>(command.m_nTimeoutMs > 0 ? command.m_nTimeoutMs : CTHDriveInterface::CD_TIMEOUT_MS);
}

// Makes the call, again after each signal. The errno; EINTR if signals took the whole time.
int Submit(const DEVICE_CALLS& calls, int nDescriptor, sg_io_hdr& header)
{
    using Clock = std::chrono::steady_clock;
    const auto deadline = Clock::now() + std::chrono::milliseconds(header.timeout);
    for (;;)
    {
        const int nErrno = calls.m_SendSG(nDescriptor, header);
        if (nErrno != EINTR || Clock::now() >= deadline)
            return nErrno;
    }
}

// MMC-3, 6.15: byte 9 selects user data (bit 4) and C2 error flags (bits 2 and 1), byte 10 the sub-channel.
int GetAudioSectorBytes(const unsigned char* pCDB)
{
    static constexpr int C2_BYTES[] = {0, 294, 296, 0};
    static constexpr int SUB_CHANNEL_BYTES[] = {0, 96, 16, 0, 96, 0, 0, 0};
    const int nUserData = (pCDB[9] & READ_CD_USER_DATA) != 0 ? LY_CD_SECTOR_BYTES : 0;
    return nUserData + C2_BYTES[pCDB[9] >> 1 & 3] + SUB_CHANNEL_BYTES[pCDB[10] & 7];
}
} // namespace

DEVICE_CALLS::DEVICE_CALLS()
    : m_Open(OpenNode),
      m_SendSG([](int nDescriptor, sg_io_hdr& header) { return ioctl(nDescriptor, SG_IO, &header) < 0 ? errno : 0; }),
      m_IsDevice(
          [](int nDescriptor)
          {
              struct stat status;
              return fstat(nDescriptor, &status) == 0 && IsDeviceMode(status);
          })
{
}

bool FailCommand(const DRIVE_COMMAND& command, const DRIVE_SENSE& codes, SENSE_DATA& sense)
{
    sense.Set(codes);
    ZeroFrom(command, 0, GetRoom(command));
    command.m_nDataBytes = 0;
    return false;
}

int GetRequiredBytes(const DRIVE_COMMAND& command)
{
    constexpr unsigned char SECTOR_TYPE_MASK = 0x1C; // byte 1 of READ CD
    const int nRoom = GetRoom(command);
    if (command.m_pCDB == nullptr || command.m_nCDBBytes < 1 || command.m_eType != DRIVE_TRANSFER_IN)
        return 0;
    const long long nSectors = GetSectorRange(command.m_pCDB, command.m_nCDBBytes).m_nSectors;
    switch (command.m_pCDB[0])
    {
    case CDB_READ_CD:
    case READ_CD_MSF_OPCODE:
        if (nSectors == 0)
            return 0;
        if ((command.m_pCDB[1] & SECTOR_TYPE_MASK) != READ_CD_TYPE_CDDA)
            return nRoom;
        return static_cast<int>(std::min<long long>(nRoom, nSectors * GetAudioSectorBytes(command.m_pCDB)));
    case CDB_READ_10:
    case CDB_READ_12:
        return static_cast<int>(std::min<long long>(nRoom, nSectors * DATA_SECTOR_BYTES));
    default:
        return 0;
    }
}

bool SendBySG(const DEVICE_CALLS& calls, int nDescriptor, const DRIVE_COMMAND& command, SENSE_DATA& sense, int& nErrno)
{
    nErrno = 0;
    const DRIVE_SENSE refusal = CheckCommand(command);
    if (!refusal.IsGood())
        return FailCommand(command, refusal, sense);
    const int nRoom = GetRoom(command);
    const int nTransferBytes = command.m_eType == DRIVE_TRANSFER_IN ? nRoom : 0;
    // Some host adapters do not notice that less came than was asked for: old bytes must not stay where nothing came.
    ZeroFrom(command, 0, nTransferBytes);
    unsigned char arySense[SENSE_BYTES] = {};
    sg_io_hdr header;
    FillHeader(command, nTransferBytes, arySense, header);
    nErrno = Submit(calls, nDescriptor, header);
    if (nErrno != 0)
        return FailCommand(command, GetSenseOfErrno(nErrno), sense);
    if (!JudgeSGAnswer(header, arySense, sense))
    {
        ZeroFrom(command, 0, nRoom);
        command.m_nDataBytes = 0;
        return false;
    }
    // A negative rest would be more than there is room for.
    const int nCame = nTransferBytes - std::clamp(header.resid, 0, nTransferBytes);
    if (nCame < GetRequiredBytes(command))
        return FailCommand(command, SENSE_DATA_CAME_SHORT, sense);
    ZeroFrom(command, nCame, nTransferBytes);
    command.m_nDataBytes = nCame;
    return true;
}

bool IsDevicePath(const std::string& strPath)
{
    struct stat status;
    return stat(strPath.c_str(), &status) == 0 && IsDeviceMode(status);
}
