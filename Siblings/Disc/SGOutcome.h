// SGOutcome: what a command that went through the kernel came to, and sense data of our own making where the drive had
// no say. This is the Linux side.
//
//   The kernel refused the command (errno)            | sense
//   --------------------------------------------------|--------
//   ENODEV, ENXIO, ESHUTDOWN, EBADF: drive is gone    | 4/05/00 does not respond to selection
//   ENOMEDIUM                                         | 2/3A/00 medium not present
//   EBUSY, EAGAIN                                     | 2/04/07 operation in progress
//   EACCES, EPERM: the kernel's filter of commands    | 5/20/00 invalid operation code
//   ENOTTY, ENOSYS, EOPNOTSUPP: takes no commands     | 5/20/00
//   EROFS                                             | 5/27/00 write protected
//   ENOMEM, ENOBUFS: a transfer too large for memory  | 5/55/00 system resource failure
//   EINVAL, E2BIG, EMSGSIZE, EDOM, ...: too large     | 5/24/00 invalid field in CDB
//   ETIMEDOUT, ETIME, EINTR for the whole time-out    | 4/08/01 communication time-out
//   any other, EIO among them                         | 4/08/00 communication failure
//
//   The drive's status        | sense where none came
//   --------------------------|--------
//   CHECK CONDITION, others   | B/00/06 I/O process terminated
//   BUSY, TASK SET FULL       | 2/04/07
//
//   The host adapter's status, the driver's status: tables in SGOutcome.cpp. Time-outs are 4/08/01, a missing device
//   4/05/00, a reset 6/29/00, an abort B/00/06, a busy driver 2/04/07, and what is not known 4/08/00.
//
// What the drive says itself goes before what the host or the driver says. A recovered error (key 1) is good: the
// command ended successfully, and the data came (SPC-3, 4.5.6). Deliberate: a deferred error is a failure whatever its
// key, since the command that brings it was not carried out (SPC-3, 4.5.5).
//
// Sources: SAM-3, 5.3 (status codes); the Linux SCSI generic interface, version 3.
// Threads: any; functions without state.

#pragma once

#include "ServiceDrive.h"

struct sg_io_hdr;

// The drive does not respond: it was unplugged, or nobody has opened it.
constexpr DRIVE_SENSE SENSE_DRIVE_GONE = {SENSE_HARDWARE_ERROR, 0x05, 0x00};
// A read ended well and yet brought less than was asked for: data phase error.
constexpr DRIVE_SENSE SENSE_DATA_CAME_SHORT = {SENSE_HARDWARE_ERROR, 0x4B, 0x00};

// Whether the command that the answer belongs to succeeded. The sense data is what the drive sent, in fixed form, also
// with a recovered error; or made up, on failure. pSense has the answer's sb_len_wr bytes, at most SENSE_BYTES.
bool JudgeSGAnswer(const sg_io_hdr& answer, const unsigned char* pSense, SENSE_DATA& sense);

// For a command that the kernel refused. nErrno is above 0.
DRIVE_SENSE GetSenseOfErrno(int nErrno);
// Whether the drive is gone for good: it has to be opened anew.
bool IsGoneErrno(int nErrno);
