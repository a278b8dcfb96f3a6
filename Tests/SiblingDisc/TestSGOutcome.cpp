#include "SGOutcome.h"
#include <cerrno>
#include <gtest/gtest.h>
#include <scsi/sg.h>
#include <vector>

namespace
{
using Bytes = std::vector<unsigned char>;

const Bytes FIXED_MEDIUM = {0x70, 0, 3, 0, 0, 0, 0, 10, 0, 0, 0, 0, 0x11, 0x05, 0, 0, 0, 0};
const Bytes FIXED_RECOVERED = {0x70, 0, 1, 0, 0, 0, 0, 10, 0, 0, 0, 0, 0x17, 0x01, 0, 0, 0, 0};
const Bytes DEFERRED_RECOVERED = {0x71, 0, 1, 0, 0, 0, 0, 10, 0, 0, 0, 0, 0x17, 0x01, 0, 0, 0, 0};
const Bytes DEFERRED_MEDIUM = {0x71, 0, 3, 0, 0, 0, 0, 10, 0, 0, 0, 0, 0x11, 0x05, 0, 0, 0, 0};
const Bytes FIXED_NO_SENSE = {0x70, 0, 0x20, 0, 0, 0, 0, 10, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
const Bytes DESCRIPTOR_ATTENTION = {0x72, 6, 0x28, 0, 0, 0, 0, 0};
const Bytes DESCRIPTOR_DEFERRED_RECOVERED = {0x73, 1, 0x17, 1, 0, 0, 0, 0};

struct OUTCOME_CASE
{
    const char* m_pName;
    unsigned char m_nStatus;
    unsigned short m_nHost;
    unsigned short m_nDriver;
    Bytes m_Sense;
    bool m_bGood;
    unsigned char m_aryCodes[4]; // response code, key byte, ASC, ASCQ
};

const OUTCOME_CASE s_aryCases[] = {
    {"Good", 0, 0, 0, {}, true, {0, 0, 0, 0}},
    {"ReservedStatusBitsDoNotCount", 0x81, 0, 0, {}, true, {0, 0, 0, 0}},
    {"DriverSenseAloneIsNoError", 0, 0, 8, {}, true, {0, 0, 0, 0}},
    {"DriverSuggestionIsNoError", 0, 0, 0x10, {}, true, {0, 0, 0, 0}},
    {"CheckFixed", 2, 0, 8, FIXED_MEDIUM, false, {0x70, 3, 0x11, 5}},
    {"CheckWithoutDriverSense", 2, 0, 0, FIXED_MEDIUM, false, {0x70, 3, 0x11, 5}},
    {"CheckDescriptor", 2, 0, 8, DESCRIPTOR_ATTENTION, false, {0x70, 6, 0x28, 0}},
    {"SenseWithGoodStatus", 0, 0, 8, FIXED_MEDIUM, false, {0x70, 3, 0x11, 5}},
    {"RecoveredIsGood", 2, 0, 8, FIXED_RECOVERED, true, {0x70, 1, 0x17, 1}},
    {"DeferredRecoveredIsAFailure", 2, 0, 8, DEFERRED_RECOVERED, false, {0x71, 1, 0x17, 1}},
    {"DescriptorDeferredRecovered", 2, 0, 8, DESCRIPTOR_DEFERRED_RECOVERED, false, {0x71, 1, 0x17, 1}},
    {"Deferred", 2, 0, 8, DEFERRED_MEDIUM, false, {0x71, 3, 0x11, 5}},
    {"NoSenseIsPassedThrough", 2, 0, 8, FIXED_NO_SENSE, false, {0x70, 0x20, 0, 0}},
    {"CheckWithoutSense", 2, 0, 0, {}, false, {0x70, 0xB, 0, 6}},
    {"CheckWithUnknownForm", 2, 0, 8, {0x7F, 0, 3, 0}, false, {0x70, 0xB, 0, 6}},
    {"Busy", 0x08, 0, 0, {}, false, {0x70, 2, 0x04, 7}},
    {"TaskSetFull", 0x28, 0, 0, {}, false, {0x70, 2, 0x04, 7}},
    {"ReservationConflict", 0x18, 0, 0, {}, false, {0x70, 0xB, 0, 6}},
    {"TaskAborted", 0x40, 0, 0, {}, false, {0x70, 0xB, 0, 6}},
    {"NoConnect", 0, 0x01, 0, {}, false, {0x70, 4, 0x05, 0}},
    {"BusBusy", 0, 0x02, 0, {}, false, {0x70, 4, 0x08, 1}},
    {"TimeOut", 0, 0x03, 6, {}, false, {0x70, 4, 0x08, 1}},
    {"BadTarget", 0, 0x04, 0, {}, false, {0x70, 4, 0x05, 0}},
    {"Abort", 0, 0x05, 0, {}, false, {0x70, 0xB, 0, 6}},
    {"Parity", 0, 0x06, 0, {}, false, {0x70, 4, 0x08, 2}},
    {"HostError", 0, 0x07, 0, {}, false, {0x70, 4, 0x08, 0}},
    {"Reset", 0, 0x08, 0, {}, false, {0x70, 6, 0x29, 0}},
    {"BadInterrupt", 0, 0x09, 0, {}, false, {0x70, 4, 0x08, 0}},
    {"PassThrough", 0, 0x0A, 0, {}, false, {0x70, 4, 0x08, 0}},
    {"SoftError", 0, 0x0B, 0, {}, false, {0x70, 0xB, 0, 6}},
    {"RetryAtOnce", 0, 0x0C, 0, {}, false, {0x70, 0xB, 0, 6}},
    {"Requeue", 0, 0x0D, 0, {}, false, {0x70, 0xB, 0, 6}},
    {"TransportDisrupted", 0, 0x0E, 0, {}, false, {0x70, 4, 0x08, 0}},
    {"TransportFailFast", 0, 0x0F, 0, {}, false, {0x70, 4, 0x05, 0}},
    {"TargetFailure", 0, 0x10, 0, {}, false, {0x70, 4, 0x44, 0}},
    {"NexusFailure", 0, 0x11, 0, {}, false, {0x70, 0xB, 0, 6}},
    {"AllocationFailure", 0, 0x12, 0, {}, false, {0x70, 5, 0x55, 0}},
    {"HostMediumError", 0, 0x13, 0, {}, false, {0x70, 3, 0x11, 0}},
    {"TransportMarginal", 0, 0x14, 0, {}, false, {0x70, 4, 0x08, 0}},
    {"UnknownHost", 0, 0x1234, 0, {}, false, {0x70, 4, 0x08, 0}},
    {"DriverBusy", 0, 0, 1, {}, false, {0x70, 2, 0x04, 7}},
    {"DriverSoft", 0, 0, 2, {}, false, {0x70, 0xB, 0, 6}},
    {"DriverMedia", 0, 0, 3, {}, false, {0x70, 3, 0x11, 0}},
    {"DriverError", 0, 0, 4, {}, false, {0x70, 4, 0x44, 0}},
    {"DriverInvalid", 0, 0, 5, {}, false, {0x70, 5, 0x24, 0}},
    {"DriverTimeOut", 0, 0, 0x26, {}, false, {0x70, 4, 0x08, 1}},
    {"DriverHard", 0, 0, 7, {}, false, {0x70, 4, 0x44, 0}},
    {"UnknownDriver", 0, 0, 0x0F, {}, false, {0x70, 4, 0x08, 0}},
    {"DriveGoesBeforeHost", 2, 0x07, 8, FIXED_MEDIUM, false, {0x70, 3, 0x11, 5}},
    {"HostGoesBeforeRecovered", 2, 0x07, 8, FIXED_RECOVERED, false, {0x70, 4, 0x08, 0}},
    {"HostGoesBeforeNoSense", 2, 0x03, 8, FIXED_NO_SENSE, false, {0x70, 4, 0x08, 1}},
};

TEST(SGOutcome, EveryAnswerIsJudged)
{
    for (const OUTCOME_CASE& row : s_aryCases)
    {
        sg_io_hdr answer = {};
        answer.status = row.m_nStatus;
        answer.host_status = row.m_nHost;
        answer.driver_status = row.m_nDriver;
        answer.sb_len_wr = static_cast<unsigned char>(row.m_Sense.size());
        Bytes came = row.m_Sense;
        came.resize(SENSE_BYTES);
        SENSE_DATA sense;
        EXPECT_EQ(row.m_bGood, JudgeSGAnswer(answer, came.data(), sense)) << row.m_pName;
        EXPECT_EQ(row.m_aryCodes[0], sense.m_aryBytes[SENSE_OFFSET_RESPONSE_CODE]) << row.m_pName;
        EXPECT_EQ(row.m_aryCodes[1], sense.m_aryBytes[SENSE_OFFSET_KEY]) << row.m_pName;
        EXPECT_EQ(row.m_aryCodes[2], sense.m_aryBytes[SENSE_OFFSET_ASC]) << row.m_pName;
        EXPECT_EQ(row.m_aryCodes[3], sense.m_aryBytes[SENSE_OFFSET_ASCQ]) << row.m_pName;
    }
}

TEST(SGOutcome, LengthBeyondTheSenseBufferIsCut)
{
    sg_io_hdr answer = {};
    answer.status = 2;
    answer.sb_len_wr = 255;
    Bytes came = FIXED_MEDIUM;
    came.resize(SENSE_BYTES);
    came.shrink_to_fit();
    SENSE_DATA sense;
    EXPECT_FALSE(JudgeSGAnswer(answer, came.data(), sense));
    EXPECT_EQ(SENSE_MEDIUM_ERROR, sense.GetCodes().m_nKey);
}

struct ERRNO_CASE
{
    int m_nErrno;
    DRIVE_SENSE m_Sense;
    bool m_bGone;
};

TEST(SGOutcome, EveryErrnoHasSense)
{
    const ERRNO_CASE aryCases[] = {
        {ENODEV, {4, 0x05, 0}, true},  {ENXIO, {4, 0x05, 0}, true},      {ESHUTDOWN, {4, 0x05, 0}, true},
        {EBADF, {4, 0x05, 0}, false},  {ENOMEDIUM, {2, 0x3A, 0}, false}, {EBUSY, {2, 0x04, 7}, false},
        {EAGAIN, {2, 0x04, 7}, false}, {EACCES, {5, 0x20, 0}, false},    {EPERM, {5, 0x20, 0}, false},
        {ENOTTY, {5, 0x20, 0}, false}, {ENOSYS, {5, 0x20, 0}, false},    {EOPNOTSUPP, {5, 0x20, 0}, false},
        {EROFS, {5, 0x27, 0}, false},  {ENOMEM, {5, 0x55, 0}, false},    {ENOBUFS, {5, 0x55, 0}, false},
        {EINVAL, {5, 0x24, 0}, false}, {E2BIG, {5, 0x24, 0}, false},     {EMSGSIZE, {5, 0x24, 0}, false},
        {EDOM, {5, 0x24, 0}, false},   {EOVERFLOW, {5, 0x24, 0}, false}, {ETIMEDOUT, {4, 0x08, 1}, false},
        {ETIME, {4, 0x08, 1}, false},  {EINTR, {4, 0x08, 1}, false},     {EIO, {4, 0x08, 0}, false},
        {EFAULT, {4, 0x08, 0}, false},
    };
    for (const ERRNO_CASE& row : aryCases)
    {
        const DRIVE_SENSE sense = GetSenseOfErrno(row.m_nErrno);
        EXPECT_EQ(row.m_Sense.m_nKey, sense.m_nKey) << row.m_nErrno;
        EXPECT_EQ(row.m_Sense.m_nASC, sense.m_nASC) << row.m_nErrno;
        EXPECT_EQ(row.m_Sense.m_nASCQ, sense.m_nASCQ) << row.m_nErrno;
        EXPECT_EQ(row.m_bGone, IsGoneErrno(row.m_nErrno)) << row.m_nErrno;
    }
}
} // namespace
