// The read-cache measurement: the search itself, its run on a drive, and the wait for it.

#include "ReadCacheMeasurementDetails.h"

#include "ILyMessageBox.h"
#include "LySharedToolsHelper.h"
#include "OptionsHelper.h"
#include "THDriveInterface.h"
#include <algorithm>

bool ReadCacheMeasurement::TimeRead(int nCount, unsigned int& nMs)
{
    unsigned int nStart = m_Drive.Now();
    if (!m_Drive.Read(FIRST_SECTOR, nCount))
        return false;
    nMs = m_Drive.Now() - nStart;
    return true;
}

// False ends the measurement: a read failed, or it was cancelled.
bool ReadCacheMeasurement::TestSize(int nCount, bool& bFits)
{
    unsigned int nFirstMs;
    unsigned int nSecondMs;
    if (!TimeRead(nCount, nFirstMs) || m_Drive.GetCancelled() || !TimeRead(nCount, nSecondMs))
        return false;
    bFits = nFirstMs / std::max(nSecondMs, 1U) >= MIN_RATIO;
    return true;
}

void ReadCacheMeasurement::Run(unsigned int nBufferBytes)
{
    int nHigh = static_cast<int>((nBufferBytes + LY_CD_SECTOR_BYTES - 1) / LY_CD_SECTOR_BYTES);
    int nRoundedBytes = nHigh * LY_CD_SECTOR_BYTES;
    int nLow = nRoundedBytes <= MAX_BYTES_FOR_EIGHTH ? nRoundedBytes / EIGHTH : LOW_BOUND_OF_LARGE_BUFFERS;
    for (bool bFirstPass = true; !m_Drive.GetCancelled(); bFirstPass = false)
    {
        int nMiddle = (nLow + nHigh) / 2;
        if (nMiddle == nLow || nMiddle == nHigh)
            return;
        int nCount = bFirstPass ? nLow : nMiddle;
        bool bFits;
        if (!TestSize(nCount, bFits))
            return;
        if (!bFits)
        {
            nHigh = nCount;
            continue;
        }
        m_nResultBytes = nCount * LY_CD_SECTOR_BYTES;
        // Other sectors push these out of the cache, so that the next test starts from the disc again.
        if (!m_Drive.Read(FIRST_SECTOR + nHigh, nHigh))
            return;
        nLow = nCount;
    }
}

bool CTHDriveInterface::ReadCDDATest(int nSector, int nCount)
{
    unsigned char data[LY_CD_MAX_READ_BYTES];
    unsigned char cdb[12] = {CDB_READ_CD, READ_CD_TYPE_CDDA, 0, 0, 0, 0, 0, 0, 0, READ_CD_WHOLE_SECTOR, 0, 0};
    while (nCount > 0)
    {
        int nPiece = std::min(nCount, LY_CD_MAX_READ_SECTORS);
        MMCPut32(cdb + 2, static_cast<unsigned int>(nSector));
        cdb[8] = static_cast<unsigned char>(nPiece);
        if (!SendCmd(DRIVE_TRANSFER_IN, cdb, sizeof cdb, data, sizeof data, CD_TIMEOUT_MS, false))
            return false;
        nSector = static_cast<int>(static_cast<unsigned int>(nSector) + static_cast<unsigned int>(nPiece));
        nCount -= nPiece;
    }
    return true;
}

// The measurement's view of an open drive.
class MeasuredDrive final : public ReadCacheMeasurement::Drive
{
public:
    explicit MeasuredDrive(CTHDriveInterface& drive) : m_Drive(drive) {}

    bool Read(int nSector, int nCount) override { return m_Drive.ReadCDDATest(nSector, nCount); }
    unsigned int Now() override { return GetTickCount(); }
    bool GetCancelled() override { return m_Drive.GetCancel(); }

private:
    CTHDriveInterface& m_Drive;
};

bool CTHDriveInterface::Thread()
{
    constexpr int QUERY_BUFFER_KIB = 31;

    unsigned int nBufferKiB = 0;
    (void)QueryCDParms(QUERY_BUFFER_KIB, nBufferKiB); // 0 if it is not known, which is too small
    unsigned int nBufferBytes = nBufferKiB * 1024;
    if (nBufferBytes < ReadCacheMeasurement::MIN_BUFFER_BYTES)
        return false;

    // START STOP UNIT with nothing set. Whether the drive likes it does not matter: the read that follows decides.
    const unsigned char cdb[6] = {CDB_START_STOP_UNIT, 0, 0, 0, 0, 0};
    (void)SendCmd(DRIVE_TRANSFER_NONE, cdb, sizeof cdb, nullptr, 0, CD_TIMEOUT_MS, false);
    if (!ReadCDDATest(ReadCacheMeasurement::SPIN_UP_SECTOR, LY_CD_MAX_READ_SECTORS))
        return false;

    MeasuredDrive drive(*this);
    ReadCacheMeasurement(drive, m_nReadCacheSize).Run(nBufferBytes);
    return true;
}

int CTHDriveInterface::GetReadCacheSize()
{
    constexpr int WAIT_MESSAGE_DELAY_MS = 210;
    constexpr unsigned int FIRST_WAIT_MS = 100;
    constexpr unsigned int POLL_MS = 20;

    m_nReadCacheSize = 0;
    ILyMessageBox* pBoxes = GetLyMessageBoxHelper(true);
    LyString strText = TranslateString(L"Determining CD drive cache size...");
    ILyWaitMessage* pWait = pBoxes ? pBoxes->CreateWaitMessage(strText, WAIT_MESSAGE_DELAY_MS, true, nullptr) : nullptr;
    auto cancelled = [pWait] { return pWait && pWait->GetCancelled(); };

    if (Start(0, false))
    {
        Sleep(FIRST_WAIT_MS);
        while (GetRunning() && !cancelled())
            Sleep(POLL_MS);
    }
    if (GetRunning() || cancelled())
    {
        (void)Stop(-1); // its result is that of an abandoned measurement
        m_nReadCacheSize = READ_CACHE_ABANDONED;
    }
    if (pWait)
        pWait->Close();
    return m_nReadCacheSize;
}
