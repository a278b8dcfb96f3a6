// CDAC (digital audio copy): takes a list of sector ranges off a disc into a CWaveSave.
//
// Burst mode reads each block once, with retries on drive errors. Secure mode reads each block until two reads in a row
// are equal byte for byte, at most 18 times, with a read elsewhere in between where the block is smaller than the
// maximum. While a block is read into one buffer, the block before it leaves the other for the output.
//
// Units:   sectors of LY_CD_SECTOR_BYTES; addresses are logical block addresses.
// Errors:  kept in m_nLastError; Lasterror() reads and clears it.
// Owner:   the pointers are borrowed but for the buffers. The destructor is not virtual and the controller deletes the
//          object as a CDAC, so that a derived class must not depend on a destructor of its own.
// Threads: Copy runs on the rip's worker; StopCopy may come from any other.

#pragma once

#include "RipSectorList.h"
#include "SCSICD.h"
#include <atomic>

class CWaveSave;

enum CDAC_RESULT : int
{
    CDAC_NO_ERROR = 0,
    CDAC_READ_FAILED = 2,
    CDAC_STOPPED = 7,
    CDAC_FATAL = 9 // ends the copy at once, without salvage; only a derived class sets it
};

enum SECURE_READ_STATUS : int
{
    SECURE_READ_PLAIN = 0,   // never reported
    SECURE_READ_MATCHED = 1, // after 2 to 15 failed comparisons
    SECURE_READ_LIMIT = 2,   // 16 comparisons failed, whatever the last one said
    SECURE_READ_SHORT = 3,   // a read delivered too little
    SECURE_READ_NOTHING = 4  // the first read delivered nothing
};

struct SECURE_READ_RESULT
{
    int nStatus;
    int nRetries;           // comparisons that failed ahead of the last one
    int nSectors;           // sectors concerned
    int nOffset;            // of the block, in sectors from the start of its section
    int nMismatchedSectors; // in the first comparison, the block's last sector not counted
};
static_assert(sizeof(SECURE_READ_RESULT) == 20);

class CDAC
{
public:
    static constexpr int BUFFERS = 3;
    static constexpr int COMPARISON_BUFFER = 2;

    CDAC() = default;
    ~CDAC(); // not virtual: the table is published and has no place for it
    CDAC(const CDAC&) = delete;
    CDAC& operator=(const CDAC&) = delete;

    // Deletes what was made as something derived from CDAC, running CDAC's destructor alone. Null does nothing.
    static void Delete(CDAC* pDAC);

    // Slots of the owner of a rip, in this order.
    virtual void WriteInit() {}
    virtual void WritePercent(int nPercent) { (void)nPercent; }
    virtual void WriteDone() {}
    virtual void OnIdle() {}
    virtual void OnSecureReadResult(SECURE_READ_RESULT& result) = 0;

    void Copy();
    void StopCopy() { m_bRunning = false; }
    int Lasterror();
    int ReadCDDA(int nStart, int nCount, void* pBuffer);
    int ReadCDSkipErrors(int nStart, int nCount, unsigned int* pBuffer, int nMaxErrors);
    int ReadMulti(int nStart, int nCount, void* pBuffer);
    static bool GetBufferMatch(const unsigned char* pA, const unsigned char* pB, int nBytes, bool bCountSectors,
                               int& nMismatched);
    int SecureRead(int nStart, int nCount); // nRetries + 1, or 0 for a block that was not obtained

    CSCSICD* m_pCD = nullptr;
    RipSectorList* m_pSectorList = nullptr;
    int m_nCurrentSector = 0;
    int m_nSectionStart = 0;
    int m_nSectionEnd = 0;
    int m_nTrack = 0;
    int m_nLastError = CDAC_NO_ERROR;
    int m_nBlockSectors = 0;
    int m_nSectorsLeft = 0;              // of the section, the current block included
    std::atomic<bool> m_bRunning{false}; // set by whoever builds the object
    CWaveSave* m_pWaveSave = nullptr;
    int m_nReserved = 0;
    unsigned char* m_pBuffers[BUFFERS] = {}; // arrays, owned: two blocks and the comparison
    int m_nBufferIndex = 0;                  // of the block now being read
    int m_nReReads = 0;                      // of the whole copy

private:
    bool ReadOnce(int nStart, int nCount, void* pBuffer);
    void Report(SECURE_READ_STATUS eStatus, int nStart, int nSectors);
    bool CopySection(int nIndex, int nBlockSize);
    bool HandleBlockError();
    void WriteBlock(int nSectors, int nBuffer);
    void ReportProgress(int nIndex);
};
