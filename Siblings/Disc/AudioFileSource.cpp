#include "CDUnits.h"
#include "SectorSource.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <sndfile.h>
#include <vector>

namespace
{
constexpr int BOUNCE_FRAMES = 4 * LY_CD_SECTOR_FRAMES; // small enough to stay in the processor's nearest cache
constexpr int STEREO = 2;
constexpr sf_count_t MAX_FRAMES = sf_count_t(1) << 40; // far beyond any disc; more is a lie in a header

struct SNDFILE_CLOSER
{
    void operator()(SNDFILE* pFile) const { (void)sf_close(pFile); } // opened for reading
};
using SNDFILE_PTR = std::unique_ptr<SNDFILE, SNDFILE_CLOSER>;

// True for samples that no 16-bit read delivers as they sound: floating point has to be scaled and clipped by us.
bool IsFloat(int nFormat)
{
    int nSubFormat = nFormat & SF_FORMAT_SUBMASK;
    return nSubFormat == SF_FORMAT_FLOAT || nSubFormat == SF_FORMAT_DOUBLE;
}

bool HasLowBitsToLose(int nFormat)
{
    int nSubFormat = nFormat & SF_FORMAT_SUBMASK;
    return nSubFormat == SF_FORMAT_PCM_24 || nSubFormat == SF_FORMAT_PCM_32 || nSubFormat == SF_FORMAT_ALAC_20 ||
           nSubFormat == SF_FORMAT_ALAC_24 || nSubFormat == SF_FORMAT_ALAC_32;
}

SNDFILE_PTR OpenDecoder(const std::string& strPath, SF_INFO& info)
{
    info = {};
    SNDFILE_PTR pFile(sf_open(strPath.c_str(), SFM_READ, &info));
    if (pFile) // a lossy decoder overshoots full scale now and then; without this the overshoot would wrap round
        (void)sf_command(pFile.get(), SFC_SET_CLIPPING, nullptr, SF_TRUE);
    return pFile;
}

// Decodes an audio file into the form of a CD. The decoder keeps its position between reads, so that a track that is
// read from its start to its end is never sought in.
class AudioFileSource : public SectorSource
{
public:
    AudioFileSource(std::string strPath, SNDFILE_PTR pFile, const SF_INFO& info, bool bSwapBytes)
        : m_strPath(std::move(strPath)), m_pFile(std::move(pFile)), m_nFrames(info.frames), m_nChannels(info.channels),
          m_bFloat(IsFloat(info.format)), m_bSwapBytes(bSwapBytes), m_aryShorts(STEREO * BOUNCE_FRAMES),
          m_aryFloats(m_bFloat ? STEREO * BOUNCE_FRAMES : 0)
    {
    }

    long long GetBytes() const override { return m_nFrames * LY_CD_FRAME_BYTES; }

    int Read(long long nOffset, unsigned char* pBuffer, int nBytes) override
    {
        sf_count_t nFrame = nOffset / LY_CD_FRAME_BYTES;
        int nWanted = nBytes / LY_CD_FRAME_BYTES;
        if (nOffset < 0 || nWanted <= 0 || nFrame >= m_nFrames || !SeekTo(nFrame))
            return 0;
        nWanted = static_cast<int>(std::min<sf_count_t>(nWanted, m_nFrames - nFrame));
        int nDone = 0;
        while (nDone < nWanted)
        {
            int nRead = ReadFrames(pBuffer + nDone * LY_CD_FRAME_BYTES, nWanted - nDone);
            if (nRead <= 0)
                break;
            nDone += nRead;
        }
        m_nPosition = nFrame + nDone;
        if (nDone < nWanted)
            m_pFile.reset(); // see SeekTo
        if ((std::endian::native == std::endian::big) != m_bSwapBytes)
            SwapBytePairs(pBuffer, nDone * LY_CD_FRAME_BYTES);
        return nDone * LY_CD_FRAME_BYTES;
    }

private:
    std::string m_strPath;
    SNDFILE_PTR m_pFile; // null after a failure
    sf_count_t m_nFrames;
    sf_count_t m_nPosition = 0; // frame at which the decoder stands
    int m_nChannels;
    bool m_bFloat;
    bool m_bSwapBytes;
    std::vector<short> m_aryShorts; // for what cannot be decoded in place: mono, float, a buffer at an odd address
    std::vector<float> m_aryFloats;

    // Some decoders never recover from running into damage. After a failure the file is opened anew, so that the good
    // part of a damaged file stays good; this alone allocates.
    bool SeekTo(sf_count_t nFrame)
    {
        if (!m_pFile && !Reopen())
            return false;
        if (m_nPosition == nFrame)
            return true;
        if (sf_seek(m_pFile.get(), nFrame, SEEK_SET) != nFrame)
            m_pFile.reset();
        m_nPosition = nFrame;
        return m_pFile != nullptr;
    }

    bool Reopen()
    {
        SF_INFO info;
        m_pFile = OpenDecoder(m_strPath, info);
        m_nPosition = 0;
        if (m_pFile && (info.channels != m_nChannels || IsFloat(info.format) != m_bFloat))
            m_pFile.reset(); // another file by now, for which the buffers are not made
        return m_pFile != nullptr;
    }

    int ReadFrames(unsigned char* pBuffer, int nFrames)
    {
        bool bAligned = reinterpret_cast<uintptr_t>(pBuffer) % alignof(short) == 0;
        if (m_nChannels == STEREO && !m_bFloat && bAligned)
            return static_cast<int>(sf_readf_short(m_pFile.get(), reinterpret_cast<short*>(pBuffer), nFrames));
        nFrames = std::min(nFrames, BOUNCE_FRAMES);
        int nRead = m_bFloat ? ReadFloats(nFrames)
                             : static_cast<int>(sf_readf_short(m_pFile.get(), m_aryShorts.data(), nFrames));
        if (m_nChannels == 1)
            for (int n = nRead; n-- > 0;) // from the end, so that nothing is overwritten before it was read
                m_aryShorts[size_t(n) * 2 + 1] = m_aryShorts[size_t(n) * 2] = m_aryShorts[size_t(n)];
        if (nRead > 0)
            memcpy(pBuffer, m_aryShorts.data(), size_t(nRead) * LY_CD_FRAME_BYTES);
        return nRead;
    }

    // Full scale is 32768, as the decoders of 16-bit files have it, so that 16 bits kept as float come back exactly.
    int ReadFloats(int nFrames)
    {
        int nRead = static_cast<int>(sf_readf_float(m_pFile.get(), m_aryFloats.data(), nFrames));
        for (int n = 0; n < nRead * m_nChannels; n++)
        {
            float fSample = m_aryFloats[size_t(n)] * 32768.0f;
            fSample = fSample > -32768.0f ? std::min(fSample, 32767.0f) : -32768.0f; // not a number goes to the bottom
            m_aryShorts[size_t(n)] = static_cast<short>(std::lrintf(fSample));
        }
        return nRead;
    }
};

// Why a file that can be decoded cannot be a CD's audio. Empty when it can.
std::string GetObjection(const SF_INFO& info)
{
    if (info.frames <= 0)
        return "holds no audio; copy it again from where it came from";
    if (info.frames > MAX_FRAMES)
        return "claims an impossible length; convert it to FLAC or WAV anew";
    if (info.samplerate != LY_CD_SAMPLE_RATE)
        return "has " + std::to_string(info.samplerate) +
               " samples per second and a disc has 44100; convert the file to 44100 Hz";
    if (info.channels != 1 && info.channels != STEREO)
        return "has " + std::to_string(info.channels) + " channels and a disc has 2; convert the file to stereo";
    return {};
}

std::string GetLossWarning(const SF_INFO& info)
{
    if (HasLowBitsToLose(info.format))
        return "has samples of more than 16 bits; the lower bits are cut off";
    return IsFloat(info.format) ? "has floating-point samples; they are rounded to 16 bits" : std::string();
}
} // namespace

std::unique_ptr<SectorSource> OpenAudioFileSource(const std::string& strPath, bool bSwapBytes, std::string& strError,
                                                  std::string& strWarning)
{
    const std::string strFile = "the file \"" + strPath + "\" ";
    std::error_code error;
    if (!std::filesystem::is_regular_file(strPath, error))
    {
        strError = strFile + "is not a plain file; name the audio file itself";
        return nullptr;
    }
    if (std::filesystem::file_size(strPath, error) == 0)
    {
        strError = strFile + "is empty; copy it again from where it came from";
        return nullptr;
    }
    SF_INFO info;
    SNDFILE_PTR pFile = OpenDecoder(strPath, info);
    if (!pFile)
    {
        std::string strReason = sf_strerror(nullptr);
        while (!strReason.empty() && (strReason.back() == '.' || strReason.back() == '\n'))
            strReason.pop_back();
        strError = strFile + "cannot be decoded (" + strReason + "); convert it to FLAC or WAV";
        return nullptr;
    }
    if (std::string strObjection = GetObjection(info); !strObjection.empty())
    {
        strError = strFile + strObjection;
        return nullptr;
    }
    if (std::string strLoss = GetLossWarning(info); !strLoss.empty())
        strWarning = strFile + strLoss;
    return std::make_unique<AudioFileSource>(strPath, std::move(pFile), info, bSwapBytes);
}
