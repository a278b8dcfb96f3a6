// Any answers of the kernel, one behind the other, to a hardware drive that is opened, read and asked. Each answer of
// the input:
//
//   0     errno, 0 for none
//   1     SCSI status
//   2     host status        3  driver status
//   4-7   what did not come, big-endian
//   8     length of the sense data (bits 0 to 5), length of the data in units of 64 (bits 6 and 7)
//   9     the sense data, then the data
//
// Behind the last answer the drive is unplugged.

#include "CDUnits.h"
#include "DeviceDrive.h"
#include "FuzzCheck.h"
#include "SenseData.h"
#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <scsi/sg.h>
#include <string>
#include <sys/mman.h>
#include <vector>

static constexpr int HEADER_BYTES = 9;
static constexpr unsigned char OLD_BYTE = 0xA5;

static const uint8_t* s_pInput;
static size_t s_nInput;

static size_t Fill(void* pTo, size_t nRoom, size_t nBytes)
{
    const size_t nTaken = std::min({nRoom, nBytes, s_nInput});
    if (nTaken > 0)
        std::memcpy(pTo, s_pInput, nTaken);
    s_pInput += nTaken;
    s_nInput -= nTaken;
    return nTaken;
}

static int Answer(int, sg_io_hdr& header)
{
    uint8_t head[HEADER_BYTES] = {};
    if (s_nInput < HEADER_BYTES)
        return ENODEV;
    (void)Fill(head, HEADER_BYTES, HEADER_BYTES);
    header.status = head[1];
    header.host_status = head[2];
    header.driver_status = head[3];
    header.resid = static_cast<int>(MMCGet32(head + 4));
    header.sb_len_wr = static_cast<unsigned char>(Fill(header.sbp, header.mx_sb_len, head[8] & 63));
    (void)Fill(header.dxferp, header.dxfer_len, static_cast<size_t>(head[8] >> 6) * 64);
    return head[0];
}

static void SendOne(DeviceDrive& drive, std::vector<unsigned char> cdb, int nRoom, DRIVE_TRANSFERTYPE eType)
{
    // A block of its exact size: one byte more would be seen.
    std::vector<unsigned char> buffer(static_cast<size_t>(nRoom), OLD_BYTE);
    int nBytes = nRoom;
    SENSE_DATA sense;
    const bool bGood = drive.Send({cdb.data(), static_cast<int>(cdb.size()), buffer.data(), nBytes, eType, 50}, sense);
    Check(nBytes >= 0 && nBytes <= nRoom);
    const unsigned char nCode = sense.m_aryBytes[0] & 0x7F;
    if (bGood)
    {
        Check(sense.GetCodes().m_nKey <= SENSE_RECOVERED_ERROR);
        const bool bWhole = cdb[0] != CDB_READ_CD || nBytes == nRoom;
        Check(bWhole && std::count(buffer.begin() + nBytes, buffer.end(), 0) ==
                            (eType == DRIVE_TRANSFER_IN ? nRoom - nBytes : 0));
        return;
    }
    Check(nCode == SENSE_RESPONSE_CURRENT || nCode == SENSE_RESPONSE_DEFERRED);
    Check(nBytes == 0 && std::count(buffer.begin(), buffer.end(), 0) == nRoom);
}

static void UseDrive(DeviceDrive& drive)
{
    while (s_nInput >= HEADER_BYTES)
    {
        SendOne(drive, {0xBE, 4, 0, 0, 0, 0, 0, 0, 2, 0x10, 0, 0}, 2 * LY_CD_SECTOR_BYTES, DRIVE_TRANSFER_IN);
        SendOne(drive, {0x43, 0, 0, 0, 0, 0, 0, 3, 36, 0}, 804, DRIVE_TRANSFER_IN);
        SendOne(drive, {0x1E, 0, 0, 0, 1, 0}, 0, DRIVE_TRANSFER_NONE);
        const unsigned char nState = drive.GetStateA();
        Check(nState <= 1);
        if (drive.GetStateB() == 0)
            break;
    }
}

// A node of this process alone, and no folder to leave notes in.
static std::string MakeNode()
{
    setenv("XDG_RUNTIME_DIR", "/proc/self", 1);
    return "/proc/self/fd/" + std::to_string(memfd_create("node", 0));
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nBytes)
{
    s_pInput = pData;
    s_nInput = nBytes;
    SENSE_DATA fixed;
    if (ReadSenseData(pData, static_cast<int>(std::min<size_t>(nBytes, 255)), fixed))
        Check((fixed.m_aryBytes[0] & 0x7E) == SENSE_RESPONSE_CURRENT);
    static const std::string s_strNode = MakeNode();
    DEVICE_CALLS calls;
    calls.m_SendSG = Answer;
    calls.m_IsDevice = [](int) { return true; };
    DeviceDrive drive(s_strNode, calls);
    std::string strError;
    if (drive.Load(strError) && drive.Acquire(strError))
    {
        UseDrive(drive);
        wchar_t* pPages = drive.GetPackedCapabilities();
        Check(std::wcslen(pPages) == 280);
        LyCom::SysFreeString(pPages);
        (void)drive.GetReadErrorText();
        drive.Release();
    }
    else
        Check(!strError.empty());
    return 0;
}
