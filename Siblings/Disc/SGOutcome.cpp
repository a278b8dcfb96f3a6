#include "SGOutcome.h"
#include "SenseData.h"
#include <algorithm>
#include <cerrno>
#include <scsi/sg.h>

namespace
{
constexpr DRIVE_SENSE OPERATION_IN_PROGRESS = {SENSE_NOT_READY, ASC_NOT_READY, ASCQ_OPERATION_IN_PROGRESS};
constexpr DRIVE_SENSE NO_MEDIUM = {SENSE_NOT_READY, ASC_MEDIUM_NOT_PRESENT, 0};
constexpr DRIVE_SENSE READ_FAILURE = {SENSE_MEDIUM_ERROR, ASC_READ_ERROR, 0};
constexpr DRIVE_SENSE COMMUNICATION_FAILURE = {SENSE_HARDWARE_ERROR, ASC_COMMUNICATION_FAILURE, 0};
constexpr DRIVE_SENSE COMMUNICATION_TIMEOUT = {SENSE_HARDWARE_ERROR, ASC_COMMUNICATION_FAILURE, 1};
constexpr DRIVE_SENSE PARITY_ERROR = {SENSE_HARDWARE_ERROR, ASC_COMMUNICATION_FAILURE, 2};
constexpr DRIVE_SENSE INTERNAL_FAILURE = {SENSE_HARDWARE_ERROR, ASC_INTERNAL_FAILURE, 0};
constexpr DRIVE_SENSE COMMAND_REFUSED = {SENSE_ILLEGAL_REQUEST, ASC_INVALID_OPCODE, 0};
constexpr DRIVE_SENSE INVALID_FIELD = {SENSE_ILLEGAL_REQUEST, ASC_INVALID_FIELD_IN_CDB, 0};
constexpr DRIVE_SENSE WRITE_PROTECTED = {SENSE_ILLEGAL_REQUEST, 0x27, 0};
constexpr DRIVE_SENSE NO_RESOURCES = {SENSE_ILLEGAL_REQUEST, 0x55, 0};
constexpr DRIVE_SENSE RESET_OCCURRED = {SENSE_UNIT_ATTENTION, ASC_RESET_OCCURRED, 0};
constexpr DRIVE_SENSE TERMINATED = {SENSE_ABORTED_COMMAND, ASC_NONE, 6};

// SAM-3, 5.3. The other bits of the byte are reserved.
constexpr unsigned char STATUS_MASK = 0x7E;
constexpr unsigned char STATUS_GOOD = 0x00;
constexpr unsigned char STATUS_BUSY = 0x08;
constexpr unsigned char STATUS_TASK_SET_FULL = 0x28;

constexpr unsigned int DRIVER_MASK = 0x0F; // above it stands what the driver suggests
constexpr unsigned int DRIVER_OK = 0x00;
constexpr unsigned int DRIVER_SENSE_CAME = 0x08; // no error by itself

struct CODE_ROW
{
    unsigned int m_nCode;
    DRIVE_SENSE m_Sense;
};

const CODE_ROW HOST_ROWS[] = {
    {0x01, SENSE_DRIVE_GONE},      // DID_NO_CONNECT
    {0x02, COMMUNICATION_TIMEOUT}, // DID_BUS_BUSY: until the time was over
    {0x03, COMMUNICATION_TIMEOUT}, // DID_TIME_OUT
    {0x04, SENSE_DRIVE_GONE},      // DID_BAD_TARGET
    {0x05, TERMINATED},            // DID_ABORT
    {0x06, PARITY_ERROR},          // DID_PARITY
    {0x07, COMMUNICATION_FAILURE}, // DID_ERROR
    {0x08, RESET_OCCURRED},        // DID_RESET
    {0x09, COMMUNICATION_FAILURE}, // DID_BAD_INTR
    {0x0A, COMMUNICATION_FAILURE}, // DID_PASSTHROUGH
    {0x0B, TERMINATED},            // DID_SOFT_ERROR
    {0x0C, TERMINATED},            // DID_IMM_RETRY
    {0x0D, TERMINATED},            // DID_REQUEUE
    {0x0E, COMMUNICATION_FAILURE}, // DID_TRANSPORT_DISRUPTED
    {0x0F, SENSE_DRIVE_GONE},      // DID_TRANSPORT_FASTFAIL
    {0x10, INTERNAL_FAILURE},      // DID_TARGET_FAILURE
    {0x11, TERMINATED},            // DID_NEXUS_FAILURE
    {0x12, NO_RESOURCES},          // DID_ALLOC_FAILURE
    {0x13, READ_FAILURE},          // DID_MEDIUM_ERROR
    {0x14, COMMUNICATION_FAILURE}, // DID_TRANSPORT_MARGINAL
};

const CODE_ROW DRIVER_ROWS[] = {
    {0x01, OPERATION_IN_PROGRESS}, // DRIVER_BUSY
    {0x02, TERMINATED},            // DRIVER_SOFT
    {0x03, READ_FAILURE},          // DRIVER_MEDIA
    {0x04, INTERNAL_FAILURE},      // DRIVER_ERROR
    {0x05, INVALID_FIELD},         // DRIVER_INVALID
    {0x06, COMMUNICATION_TIMEOUT}, // DRIVER_TIMEOUT
    {0x07, INTERNAL_FAILURE},      // DRIVER_HARD
};

template <size_t N>
DRIVE_SENSE Find(const CODE_ROW (&aryRows)[N], unsigned int nCode)
{
    const auto pRow =
        std::find_if(std::begin(aryRows), std::end(aryRows), [=](const CODE_ROW& row) { return row.m_nCode == nCode; });
    return pRow != std::end(aryRows) ? pRow->m_Sense : COMMUNICATION_FAILURE;
}

// What failed on the way to the drive; good if nothing did.
DRIVE_SENSE JudgeWay(const sg_io_hdr& answer)
{
    if (answer.host_status != 0)
        return Find(HOST_ROWS, answer.host_status);
    const unsigned int nDriver = answer.driver_status & DRIVER_MASK;
    return nDriver == DRIVER_OK || nDriver == DRIVER_SENSE_CAME ? DRIVE_SENSE() : Find(DRIVER_ROWS, nDriver);
}

DRIVE_SENSE GetSenseOfStatus(unsigned char nStatus)
{
    return nStatus == STATUS_BUSY || nStatus == STATUS_TASK_SET_FULL ? OPERATION_IN_PROGRESS : TERMINATED;
}
} // namespace

bool JudgeSGAnswer(const sg_io_hdr& answer, const unsigned char* pSense, SENSE_DATA& sense)
{
    const unsigned char nStatus = answer.status & STATUS_MASK;
    const bool bSense = ReadSenseData(pSense, std::min<int>(answer.sb_len_wr, SENSE_BYTES), sense);
    const unsigned char nKey = sense.GetCodes().m_nKey;
    const bool bDeferred = bSense && IsDeferred(sense);
    if (nKey > SENSE_RECOVERED_ERROR || (bDeferred && nStatus != STATUS_GOOD))
        return false;
    const DRIVE_SENSE way = JudgeWay(answer);
    if (!way.IsGood())
    {
        sense.Set(way);
        return false;
    }
    if (nStatus == STATUS_GOOD || (nKey == SENSE_RECOVERED_ERROR && !bDeferred))
        return true;
    if (!bSense)
        sense.Set(GetSenseOfStatus(nStatus));
    return false;
}

DRIVE_SENSE GetSenseOfErrno(int nErrno)
{
    if (IsGoneErrno(nErrno))
        return SENSE_DRIVE_GONE;
    switch (nErrno)
    {
    case EBADF:
        return SENSE_DRIVE_GONE;
    case ENOMEDIUM:
        return NO_MEDIUM;
    case EBUSY:
    case EAGAIN:
        return OPERATION_IN_PROGRESS;
    case EACCES:
    case EPERM:
    case ENOTTY:
    case ENOSYS:
    case EOPNOTSUPP:
        return COMMAND_REFUSED;
    case EROFS:
        return WRITE_PROTECTED;
    case ENOMEM:
    case ENOBUFS:
        return NO_RESOURCES;
    case EINVAL:
    case E2BIG:
    case EMSGSIZE:
    case EDOM:
    case EOVERFLOW:
        return INVALID_FIELD;
    case ETIMEDOUT:
    case ETIME:
    case EINTR:
        return COMMUNICATION_TIMEOUT;
    default:
        return COMMUNICATION_FAILURE;
    }
}

bool IsGoneErrno(int nErrno) { return nErrno == ENODEV || nErrno == ENXIO || nErrno == ESHUTDOWN; }
