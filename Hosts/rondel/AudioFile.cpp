#include "AudioFile.h"
#include "CDUnits.h"
#include "HostError.h"
#include <filesystem>
#include <sndfile.h>
#include <utility>

namespace
{
std::string DescribeFailure(const std::string& strPath, const std::string& strReason)
{
    std::error_code error;
    if (!std::filesystem::exists(strPath, error))
        return strPath + " was not found; check its name.";
    if (std::filesystem::is_directory(strPath, error))
        return strPath + " is a folder; name the audio files in it.";
    return strPath + " is no audio file that can be read (" +
           strReason.substr(0, strReason.find_last_not_of(". \n") + 1) + "); take WAV, FLAC, AIFF, Ogg or MP3.";
}
} // namespace

AudioFile::AudioFile(const std::string& strPath) : m_strPath(strPath)
{
    SF_INFO info{};
    SNDFILE* pFile = sf_open(strPath.c_str(), SFM_READ, &info);
    if (pFile == nullptr)
        throw HostError(DescribeFailure(strPath, sf_strerror(nullptr)));
    m_pFile = pFile;
    m_nFrames = info.frames;
    m_nChannels = info.channels;
    if (info.samplerate == LY_CD_SAMPLE_RATE && (m_nChannels == 1 || m_nChannels == 2))
        return;
    sf_close(pFile);
    throw HostError(strPath + " has " + std::to_string(info.samplerate) + " Hz and " + std::to_string(m_nChannels) +
                    " channels where a CD has 44100 Hz and stereo; convert it first, as \"sox '" + strPath +
                    "' -r 44100 -c 2 -b 16 converted.wav\" does.");
}

AudioFile::AudioFile(AudioFile&& other) noexcept
    : m_strPath(std::move(other.m_strPath)), m_pFile(std::exchange(other.m_pFile, nullptr)), m_nFrames(other.m_nFrames),
      m_nChannels(other.m_nChannels), m_aryMono(std::move(other.m_aryMono))
{
}

AudioFile::~AudioFile()
{
    if (m_pFile != nullptr)
        sf_close(static_cast<SNDFILE*>(m_pFile));
}

int AudioFile::Read(short* pFrames, int nFrames)
{
    SNDFILE* pFile = static_cast<SNDFILE*>(m_pFile);
    if (m_nChannels == 2)
        return static_cast<int>(sf_readf_short(pFile, pFrames, nFrames));
    m_aryMono.resize(static_cast<size_t>(nFrames));
    const int nGot = static_cast<int>(sf_readf_short(pFile, m_aryMono.data(), nFrames));
    for (int i = 0; i < nGot; ++i)
        pFrames[2 * i] = pFrames[2 * i + 1] = m_aryMono[static_cast<size_t>(i)];
    return nGot;
}

std::string AudioFile::GetTag(int nTag) const
{
    const char* pText = sf_get_string(static_cast<SNDFILE*>(m_pFile), nTag);
    return pText != nullptr ? pText : "";
}

std::string AudioFile::GetTitle() const
{
    const std::string strTitle = GetTag(SF_STR_TITLE);
    return strTitle.empty() ? std::filesystem::path(m_strPath).stem().string() : strTitle;
}

std::string AudioFile::GetPerformer() const { return GetTag(SF_STR_ARTIST); }
