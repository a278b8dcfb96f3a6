// SGTransport: a command on its way to a drive through the kernel's SCSI generic interface, the SG_IO ioctl of version
// 3. This is the Linux side.
//
// Sent:    the CDB, the direction, the time-out and room for 32 bytes of sense data as given. DRIVE_TRANSFER_NONE goes
//          as SG_DXFER_NONE, DRIVE_TRANSFER_IN as SG_DXFER_FROM_DEV; any other direction is refused with 5/24/00, as
//          this service writes nothing. So are a CDB shorter than its group's length or longer than 16 bytes; no CDB at
//          all is 5/20/00.
// Length:  a command that brought less than there is room for is good, and the rest of the buffer is zero. Deliberate:
//          a READ that ended well and brought less than its sectors is a failure with 4/4B/00, so that missing sectors
//          never pass for silence.
// Errors:  false with sense data (see SGOutcome.h), the whole buffer zeroed and the length 0.
// Signals: a call that a signal interrupts is made again, until the time-out is over. Nothing else is sent twice.
// Threads: any; no state.

#pragma once

#include "ServiceDrive.h"
#include <functional>
#include <string>

struct sg_io_hdr;

// The calls to the kernel that reach a drive. Tests put their own in place of them.
struct DEVICE_CALLS
{
    // open(2): a descriptor, or an errno below 0.
    std::function<int(const char* pPath, int nFlags)> m_Open;
    // ioctl(2) with SG_IO: 0, or an errno above 0. The one way to the drive.
    std::function<int(int nDescriptor, sg_io_hdr& header)> m_SendSG;
    // Whether the descriptor is of a block or character device.
    std::function<bool(int nDescriptor)> m_IsDevice;

    DEVICE_CALLS(); // the system's own
};

// Runs one command. nErrno becomes 0, or why the kernel did not take the command.
bool SendBySG(const DEVICE_CALLS& calls, int nDescriptor, const DRIVE_COMMAND& command, SENSE_DATA& sense, int& nErrno);

// Fails a command that is not sent at all: the buffer is zeroed, as after any failure. Always false.
bool FailCommand(const DRIVE_COMMAND& command, const DRIVE_SENSE& codes, SENSE_DATA& sense);

// The bytes that a READ has to bring, at most what there is room for; 0 for all other commands. Of sectors that are not
// asked for as audio the length depends on the disc, and the room counts.
int GetRequiredBytes(const DRIVE_COMMAND& command);

// Whether a path leads to a block or character device, through links or not.
bool IsDevicePath(const std::string& strPath);
