#include "RetryPolicy.h"

RetryPolicy::RetryPolicy(unsigned char nOpcode, int nTimeoutMs) : m_nOpcode(nOpcode), m_nTimeoutMs(nTimeoutMs) {}

// The drive is still working through what it has in its buffer.
static bool SaysBufferFull(const unsigned char* pSense)
{
    int nQualifier = pSense[SENSE_OFFSET_ASCQ];
    return pSense[SENSE_OFFSET_KEY] == SENSE_NOT_READY && pSense[SENSE_OFFSET_ASC] == ASC_NOT_READY &&
           (nQualifier == ASCQ_FORMAT_IN_PROGRESS || nQualifier == ASCQ_OPERATION_IN_PROGRESS ||
            nQualifier == ASCQ_LONG_WRITE_IN_PROGRESS);
}

RetryPolicy::VERDICT RetryPolicy::OnFailure(const unsigned char* pSense, unsigned int nNowMs)
{
    m_bBufferFull = false;
    if (m_nOpcode == CDB_WRITE_10)
    {
        m_nLimit = WRITE_SENDS;
        m_bBufferFull = SaysBufferFull(pSense);
    }
    // The time-out in force counts, which a full buffer may have raised. A negative one never ends.
    if (m_nFirstFailureTick != 0 && nNowMs - m_nFirstFailureTick > static_cast<unsigned int>(m_nTimeoutMs))
        return TIMED_OUT;

    unsigned int nStart = m_nFirstFailureTick != 0 ? m_nFirstFailureTick : nNowMs;
    m_nTries++;
    if (m_bBufferFull)
    {
        m_nTimeoutMs = BUFFER_FULL_TIMEOUT_MS; // and it stays for the sends that are left
        m_nTries = 0;
    }
    // Deliberate: the sense key is compared with all its bits, flags included.
    int nLimit = pSense[SENSE_OFFSET_KEY] == SENSE_UNIT_ATTENTION ? UNIT_ATTENTION_SENDS : m_nLimit;
    bool bMayRepeat = m_nTries < nLimit || m_bBufferFull;
    // Deliberate: a failed TEST UNIT READY or MODE SENSE(10) is an answer, not a fault, whatever the sense data says.
    if (!bMayRepeat || m_nOpcode == CDB_TEST_UNIT_READY || m_nOpcode == CDB_MODE_SENSE_10)
        return GIVE_UP;
    m_nFirstFailureTick = nStart;
    m_nLimit = nLimit;
    return SEND_AGAIN;
}
