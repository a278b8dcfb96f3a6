#include "CDRipper.h"
#include "SystemPowerManagerEntry.h"

namespace
{
constexpr const wchar_t* OPTIONS_STORE = L"CD Reader";
constexpr int DRIVE_OPEN_MODE = 2;
constexpr int MAX_READ_ATTEMPTS = 3;
constexpr unsigned int READ_RETRY_LIMIT_MS = 4001;
} // namespace

CCDRipper::CCDRipper() : LyThread(false, true)
{
    m_pDrive.Set(new CTHDriveInterface, true, false);
    m_pOptions.Set(new COptionsHelper(OPTIONS_STORE, false), true, false);
}

CCDRipper::~CCDRipper() { (void)CCDRipper::Stop(); }

int CCDRipper::Init()
{
    m_pReader.Set(new MyReader, true, false);
    m_nReserved1 = 0;
    m_nReserved2 = 0;
    m_pReader->m_bInitialized = true;
    return CDRIPPER_DONE;
}

int CCDRipper::OpenDrive(const wchar_t* pDrive, bool bNoSave)
{
    m_bNoSave = bNoSave;
    if (m_pReader == nullptr || !m_pReader->m_bInitialized)
        (void)Init();
    if (m_pReader->m_bRipping)
        return CDRIPPER_RIP_RUNNING;
    delete m_pReader->m_pDriveInfo;
    m_pReader->m_pDriveInfo = nullptr;

    const LyString strDrive(pDrive);
    if (!m_pDrive->Open(strDrive, DRIVE_OPEN_MODE))
        return CDRIPPER_NO_DRIVE;
    DRIVE_INFO info;
    (void)m_pDrive->GetDriveInfo(info);
    m_pReader->m_pDriveInfo = new TDriveInfo(info, m_nCopyMode);
    CSCSICD::Delete(m_pReader->m_pCD);
    m_pReader->m_pCD = nullptr;
    // Playback does not wait for the measurement.
    if (m_nCopyMode == COPY_MODE_RIP)
        m_pReader->m_pDriveInfo->m_nCacheSize = GetReadCacheSize(strDrive);
    SaveCDModelName(strDrive);

    m_pReader->m_pCD = new CSCSICD(m_pDrive, *m_pReader->m_pDriveInfo, strDrive);
    m_pReader->m_pCD->SetCurrentSpeed(m_nReadSpeed);
    m_pReader->m_bDriveOpen = true;
    return CDRIPPER_DONE;
}

int CCDRipper::GetTrackLength(short nTrack)
{
    if (m_pReader == nullptr || !m_pReader->m_bInitialized)
        return CDRIPPER_NOT_INITIALIZED;
    if (!m_pReader->m_bDriveOpen)
        return CDRIPPER_NO_DRIVE;
    if (m_pReader->m_bRipping)
        return CDRIPPER_RIP_RUNNING;
    if (nTrack < 1 || nTrack > m_pReader->m_pCD->GetLastTrackNumber())
        return CDRIPPER_BAD_TRACK;
    TTrackList infos{};
    infos.nTrackNumber = static_cast<unsigned char>(nTrack);
    (void)m_pReader->m_pCD->ReadTrackInfo(infos);
    return infos.nSectors;
}

short CCDRipper::ReadSectors(int nTrack, int nSector, int nCount, char* pBuffer)
{
    return static_cast<short>(ReadSectors_Aspi(static_cast<short>(nTrack), nSector, nCount, pBuffer));
}

int CCDRipper::ReadSectors_Aspi(short nTrack, long nSector, long nCount, char* pBuffer)
{
    if (m_pReader == nullptr || !m_pReader->m_bInitialized)
        return CDRIPPER_NOT_INITIALIZED;
    // Deliberate: unlike in GetTrackLength a running rip goes ahead of a closed drive. Callers poll this one during a
    // rip and must hear of the rip.
    if (m_pReader->m_bRipping)
        return CDRIPPER_RIP_RUNNING;
    if (!m_pReader->m_bDriveOpen)
        return CDRIPPER_NO_DRIVE;
    TTrackList infos{};
    infos.nTrackNumber = static_cast<unsigned char>(nTrack);
    (void)m_pReader->m_pCD->ReadTrackInfo(infos); // an unknown track reads from the start of the disc
    const int nFirst = static_cast<int>(nSector + infos.nStartSector);

    const unsigned int nStartTick = GetTickCount();
    for (int nAttempt = 1;; ++nAttempt)
    {
        m_pReader->m_pCD->ReadCDDA(nFirst, static_cast<int>(nCount), pBuffer);
        const int nError = m_pReader->m_pCD->Lasterror();
        if (nError == 0 || nAttempt == MAX_READ_ATTEMPTS || GetTickCount() - nStartTick >= READ_RETRY_LIMIT_MS)
            return nError;
    }
}

int CCDRipper::SetCopyMode(short nMode)
{
    m_nCopyMode = nMode;
    return CDRIPPER_DONE;
}

int CCDRipper::SetReadSpeed(int nSpeed)
{
    m_nReadSpeed = nSpeed;
    return CDRIPPER_DONE;
}

int CCDRipper::SectorReadInit() { return CDRIPPER_DONE; }

int CCDRipper::SectorReadTerm() { return CDRIPPER_DONE; }

bool CCDRipper::Thread()
{
    const CSystemPowerManagerEntry power(TranslateString(L"CD ripping"));
    const int nError = RunCopy();
    if (m_pReader != nullptr && m_pReader->m_pOwner != nullptr)
        m_pReader->m_pOwner->Post(nError != 0 ? CDRIPPER_RIP_FAILED : CDRIPPER_RIP_FINISHED, nError, 0, 0);
    return nError != 0;
}

// The copy itself, and the end of its engine and its output. Returns the error of the copy.
int CCDRipper::RunCopy()
{
    if (m_pReader == nullptr)
        return 0;
    int nError = 0;
    const bool bCopy = m_pReader->m_pDAC != nullptr;
    if (bCopy)
    {
        m_pReader->m_bRipping = true;
        m_pReader->m_pDAC->Copy();
        nError = m_pReader->m_pDAC->Lasterror();
        const LySingleLock lock(&m_CopyLock);
        CDAC::Delete(m_pReader->m_pDAC);
        m_pReader->m_pDAC = nullptr;
    }
    else
        MarkRipEnded(); // nothing was read: nobody needs to wait for the output
    // This finishes the output.
    delete m_pReader->m_pWaveSave;
    m_pReader->m_pWaveSave = nullptr;
    if (bCopy)
        MarkRipEnded();
    return nError;
}

void CCDRipper::MarkRipEnded()
{
    m_pReader->m_bThreadActive = false;
    m_pReader->m_bRipping = false;
}

bool CCDRipper::ProcessMainThreadMessage(int, long long) { return true; }

bool CCDRipper::Stop()
{
    {
        const LySingleLock lock(&m_CopyLock);
        if (m_pReader != nullptr && m_pReader->m_pDAC != nullptr)
            m_pReader->m_pDAC->StopCopy();
    }
    return LyThread::Stop(-1);
}
