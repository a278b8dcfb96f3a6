#include "MemReader.h"
#include "LogHelper.h"
#include <algorithm>
#include <climits>
#include <cstring>

namespace
{
constexpr int RING_FULL = -1; // GetNextReadSectors: no room for a whole read and a guard sector
} // namespace

CMemReader::CMemReader() : LyThread(false, true)
{
    m_pRing = new unsigned char[RING_BYTES]();
    m_pRipper = new CCDRipper;
}

CMemReader::~CMemReader()
{
    (void)LyThread::Stop(-1);
    delete[] m_pRing;
    m_pRing = nullptr;
    delete m_pRipper;
    m_pRipper = nullptr;
}

int CMemReader::start(const wchar_t* pDrive, int nTrack, int nPriority, int& nTrackBytes, int nReadSpeed)
{
    CLogHelper log(LY_LOG_AREA_DRIVE, "CMemReader::start", false);
    if (GetRunning())
        LeaveTrack(); // the worker must not read from the drive while OpenDrive replaces it
    (void)m_pRipper->SetCopyMode(COPY_MODE_PLAYBACK);
    (void)m_pRipper->SetReadSpeed(nReadSpeed);
    const int nError = m_pRipper->OpenDrive(pDrive, true);
    if (nError != 0)
    {
        log.Log("returning error %d from OpenDrive", nError);
        return nError;
    }
    m_nTrack = nTrack;
    // Deliberate: the error codes 13 to 16 of GetTrackLength count as sectors here. A bad track number plays a few
    // sectors instead of failing; players rely on Open succeeding. Only a length that no disc can have is cut.
    const int nSectors = m_pRipper->GetTrackLength(static_cast<short>(nTrack));
    m_nTrackBytes = std::clamp(nSectors, 0, INT_MAX / LY_CD_SECTOR_BYTES) * LY_CD_SECTOR_BYTES;
    nTrackBytes = m_nTrackBytes;
    (void)LyThread::Start(nPriority, false);
    return 0;
}

int CMemReader::stop() { return LyThread::Stop(-1); }

// Stops the worker and makes the reader as good as new.
void CMemReader::LeaveTrack()
{
    (void)stop();
    m_nReadPos = 0;
    m_nWritePos = 0;
    m_nRingBase = 0;
    m_nReadError = 0;
    m_bTrackDone = false;
}

bool CMemReader::ProcessMainThreadMessage(int, long long) { return true; }

bool CMemReader::Thread()
{
    (void)m_pRipper->SectorReadInit();
    while (!GetCancel())
    {
        if (!FillOnce())
            Sleep(IDLE_SLEEP_MS);
    }
    (void)m_pRipper->SectorReadTerm();
    (void)m_pRipper->Stop();
    return true;
}

// One pass of the worker. False if there is nothing to do for now.
bool CMemReader::FillOnce()
{
    if (m_bTrackDone || m_nReadError != 0)
        return false;
    // A lock has no queue: without this the worker takes it again at once, and a seek waits for several reads.
    while (m_bSeekWaits && !GetCancel())
        Sleep(SEEK_SLEEP_MS);
    // The count is made under the lock as well: a seek between the two would leave it made for the old position.
    LySingleLock lock(&m_Lock);
    const int nSectors = GetNextReadSectors();
    if (nSectors == RING_FULL)
        return false;
    if (nSectors == 0)
        m_bTrackDone = true;
    else
        ReadIntoRing(nSectors);
    return true;
}

// How many sectors the next read may fetch: 0 at the end of the track, RING_FULL if there is no room. A read never
// wraps around the ring.
int CMemReader::GetNextReadSectors() const
{
    const int nWritePos = m_nWritePos;
    int nFree = m_nReadPos - nWritePos;
    if (nFree <= 0)
        nFree += RING_BYTES;
    if (nFree - LY_CD_SECTOR_BYTES < LY_CD_MAX_READ_BYTES)
        return RING_FULL;
    const int nTrackLeft = std::max(0, m_nTrackBytes - nWritePos - m_nRingBase) / LY_CD_SECTOR_BYTES;
    const int nRingLeft = (RING_BYTES - nWritePos) / LY_CD_SECTOR_BYTES;
    return std::min({LY_CD_MAX_READ_SECTORS, nTrackLeft, nRingLeft});
}

void CMemReader::ReadIntoRing(int nSectors)
{
    const int nWritePos = m_nWritePos;
    // A tick count of 0 would read as "no read in progress".
    m_nReadStartTick = std::max(1U, GetTickCount());
    const int nError = m_pRipper->ReadSectors(m_nTrack, (nWritePos + m_nRingBase) / LY_CD_SECTOR_BYTES, nSectors,
                                              reinterpret_cast<char*>(m_pRing + nWritePos));
    m_nReadStartTick = 0;
    m_nReadError = nError;
    if (nError != 0)
        return;
    const int nNewPos = nWritePos + nSectors * LY_CD_SECTOR_BYTES;
    if (nNewPos == RING_BYTES)
    {
        m_nRingBase += RING_BYTES;
        m_nWritePos = 0;
    }
    else
        m_nWritePos = nNewPos;
}

// A read that hangs is only seen from here: the worker remains inside the drive call.
bool CMemReader::GetIsHanging() const
{
    const unsigned int nStartTick = m_nReadStartTick;
    return nStartTick != 0 && static_cast<int>(GetTickCount() - nStartTick) > static_cast<int>(HANG_LIMIT_MS);
}

int CMemReader::read(int nBytes, char* pBuffer)
{
    for (int nGot = 0;;)
    {
        if (GetIsHanging())
            return 0;
        // Taken ahead of the offsets: whoever sees the end must see the bytes that came before it.
        const bool bNoMore = m_bTrackDone || m_nReadError != 0 || !GetRunning();
        int nAvailable = m_nWritePos - m_nReadPos;
        if (nAvailable < 0)
            nAvailable += RING_BYTES;
        // Deliberate: what was already copied is dropped. The last bytes of a track, fewer than one request, are not
        // played, and the player counts on whole requests.
        if (nAvailable == 0 && bNoMore)
            return 0;
        nGot += CopyOut(pBuffer + nGot, nBytes - nGot, nAvailable);
        if (nGot >= nBytes)
            return nBytes;
        Sleep(IDLE_SLEEP_MS);
    }
}

// Copies in at most two pieces, up to the end of the ring and then from its start. Returns the bytes copied.
int CMemReader::CopyOut(char* pBuffer, int nBytes, int nAvailable)
{
    const int nCount = std::min(nBytes, nAvailable);
    if (nCount < 1)
        return 0;
    const int nReadPos = m_nReadPos;
    const int nFirst = std::min(nCount, RING_BYTES - nReadPos);
    std::memcpy(pBuffer, m_pRing + nReadPos, static_cast<size_t>(nFirst));
    std::memcpy(pBuffer + nFirst, m_pRing, static_cast<size_t>(nCount - nFirst));
    m_nReadPos = (nReadPos + nCount) % RING_BYTES;
    return nCount;
}

int CMemReader::seek(int nPosition)
{
    if (nPosition >= m_nTrackBytes)
        return 0;
    m_bSeekWaits = true;
    LySingleLock lock(&m_Lock);
    m_bSeekWaits = false;
    m_nReadPos = 0;
    m_nWritePos = 0;
    m_nRingBase = std::max(0, nPosition); // ahead of the track is its start
    m_bTrackDone = false;
    // Deliberate: m_nReadError stays. After a read error a seek does not start the reading again; the track has ended.
    return 0;
}
