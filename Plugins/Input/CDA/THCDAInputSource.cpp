#include "THCDAInputSource.h"
#include "CDUnits.h"
#include "LyFilename.h"
#include "LyStringFormat.h"
#include "MemReader.h"
#include "OptionsHelper.h"
#include <algorithm>
#include <climits>

namespace
{
constexpr const wchar_t* OPTIONS_KEY = L"Software\\Lyndle\\Tune Hearth\\Plugins\\Input\\CDA";
constexpr const wchar_t* URL_PREFIX = L"cda://";
constexpr const wchar_t* TRACK_FILE_TYPE = L"cda";
constexpr const wchar_t* TRACK_FILE_MARK = L"Track";
constexpr int TRACK_FILE_DIGITS = 2;
constexpr int THREAD_PRIORITY = 15; // real time
constexpr int REFILL_BYTES = 2304;  // the step of every refill is fixed
constexpr int CD_BITRATE_KBPS = LY_CD_SECOND_BYTES * 8 / 1000;
constexpr int MS_PER_SECOND = 1000;
static_assert(CD_BITRATE_KBPS == 1411);

bool GetIsTrackNumber(int nTrack) { return nTrack >= 1 && nTrack <= LY_CD_MAX_TRACKS; }

// The number in the name of a track file ("Track05.cda"); 0 without one.
int GetTrackFileNumber(const LyString& strPath)
{
    const int nMark = strPath.FindNoCase(TRACK_FILE_MARK, 0, true);
    if (nMark < 0)
        return 0;
    return LyStringToInteger<int, 10, INT_MAX>::Get(strPath.Mid(nMark, TRACK_FILE_DIGITS), nullptr);
}

bool GetFromURL(LyString& strPath, LyString& strDrive, int& nTrack)
{
    if (!strPath.BeginsWith(URL_PREFIX, true))
        return false;
    (void)strPath.RemoveLeft(URL_PREFIX, false);
    const int nComma = strPath.Find(L',');
    if (nComma < 0)
        return false;
    strDrive = strPath.Left(nComma);
    nTrack = strPath.Mid(nComma + 1).GetInt();
    return GetIsTrackNumber(nTrack) && !strDrive.IsEmpty();
}

// Deliberate: the number is tested and not stored. A caller's track variable keeps what it held; the player relies on
// it, and Open puts the number there beforehand.
bool GetFromTrackFile(const LyString& strPath, LyString& strDrive)
{
    const LyFilename filename(strPath);
    if (filename.GetFileType() != TRACK_FILE_TYPE || strPath.FindNoCase(TRACK_FILE_MARK, 0) < 0)
        return false;
    strDrive = filename.GetDrive();
    return GetIsTrackNumber(GetTrackFileNumber(strPath)) && !strDrive.IsEmpty();
}
} // namespace

CTHCDAInputSource::CTHCDAInputSource(ILyAudioInputOwner* pOwner) : LyAudioInputBase(pOwner) {}

CTHCDAInputSource::~CTHCDAInputSource()
{
    if (m_pMemReader != nullptr)
    {
        (void)m_pMemReader->stop();
        delete m_pMemReader;
        m_pMemReader = nullptr;
    }
}

int CTHCDAInputSource::Open(const wchar_t* pPath)
{
    delete[] m_pBuffer;
    m_pBuffer = new unsigned char[static_cast<size_t>(m_nBufferSize)];
    m_nBufferFill = 0;
    delete m_pMemReader;
    m_pMemReader = new CMemReader;

    LyString strDrive;
    int nTrack = GetTrackFileNumber(pPath);
    // Deliberate: a malformed path goes on with what it gave, and the ring reader's answer decides.
    (void)GetTrackAndDrive(pPath, strDrive, nTrack);

    const COptionsHelper options(OPTIONS_KEY, true);
    const int nReadSpeed = options.Get(L"ReadSpeed", 0, 0, 0);
    // Deliberate: the option is read and has no effect, since playback has no jitter correction. The store counts reads
    // of its options, so the read stays.
    (void)options.Get(L"UseJitterCorrection", 0, 0, 0);

    int nTrackBytes = 0;
    if (m_pMemReader->start(strDrive, nTrack, THREAD_PRIORITY, nTrackBytes, nReadSpeed) != 0)
        return 1;
    SetFormat(nTrackBytes);
    return 0;
}

void CTHCDAInputSource::SetFormat(int nTrackBytes)
{
    const long long nSectors = nTrackBytes / LY_CD_SECTOR_BYTES;
    m_nBitrate = CD_BITRATE_KBPS;
    m_nSampleRate = LY_CD_SAMPLE_RATE;
    m_nBitsPerSample = 16;
    m_nChannels = 2;
    m_nTotalSamples = nTrackBytes / LY_CD_FRAME_BYTES;
    m_nDurationMS = (nSectors * MS_PER_SECOND + LY_CD_SECTORS_PER_SECOND - 1) / LY_CD_SECTORS_PER_SECOND;
}

bool CTHCDAInputSource::GetTrackAndDrive(LyString strPath, LyString& strDrive, int& nTrack)
{
    // The second form sees the text without the prefix, which the first has removed by then.
    return GetFromURL(strPath, strDrive, nTrack) || GetFromTrackFile(strPath, strDrive);
}

int CTHCDAInputSource::GetInformation(LY_AUDIO_INPUT_INFO_FIELDS eField, const ILyDllString& result)
{
    if (eField == LY_AUDIO_INPUT_INFO_NAME)
    {
        result.Set(L"CD audio input plug-in", -1);
        return 0;
    }
    if (eField == LY_AUDIO_INPUT_INFO_FILE_TYPES)
    {
        result.Set(L"CDA; CDA File (*.CDA)", -1);
        return 0;
    }
    return LyAudioInputBase::GetInformation(eField, result);
}

int CTHCDAInputSource::SetInformation(LY_AUDIO_INPUT_INFO_FIELDS eField, const wchar_t* pValue)
{
    if (eField != LY_AUDIO_INPUT_INFO_POSITION)
        return LyAudioInputBase::SetInformation(eField, pValue);
    // A source that was never opened has nothing to seek in, and is refused as the frame refuses.
    if (m_pMemReader == nullptr)
        return -1;
    const long long nSeconds = LyStringToInteger<int, 10, INT_MAX>::Get(pValue, nullptr) / MS_PER_SECOND;
    const long long nPosition = std::clamp<long long>(nSeconds * LY_CD_SECOND_BYTES, INT_MIN, INT_MAX);
    (void)m_pMemReader->seek(static_cast<int>(nPosition));
    (void)ResetInternalBuffer();
    return 0;
}

int CTHCDAInputSource::AddDataToBuffer()
{
    if (m_pMemReader == nullptr)
        return -1;
    const int nBytes = std::min(REFILL_BYTES, m_nBufferSize - m_nBufferFill);
    const int nRead = m_pMemReader->read(nBytes, reinterpret_cast<char*>(m_pBuffer + m_nBufferFill));
    if (nRead < 1)
        m_bEndOfData = true;
    else
        m_nBufferFill += nRead;
    return 0;
}
