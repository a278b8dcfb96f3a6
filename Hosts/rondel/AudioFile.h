// An audio file as the track of a disc: 16-bit stereo at 44,100 Hz, decoded by libsndfile. Mono is doubled; finer
// samples are cut to 16 bits by the library. Other sample rates and channel counts are refused with a way out.

#pragma once

#include <memory>
#include <string>
#include <vector>

class AudioFile
{
public:
    explicit AudioFile(const std::string& strPath); // throws HostError
    ~AudioFile();
    AudioFile(AudioFile&& other) noexcept;
    AudioFile& operator=(AudioFile&&) = delete;

    int Read(short* pFrames, int nFrames); // interleaved stereo; frames read, 0 at the end
    long long GetFrames() const { return m_nFrames; }
    std::string GetTitle() const;     // the tag, or the file's name
    std::string GetPerformer() const; // the tag, or empty

private:
    std::string GetTag(int nTag) const;

    std::string m_strPath;
    void* m_pFile = nullptr; // SNDFILE, owned
    long long m_nFrames = 0;
    int m_nChannels = 0;
    std::vector<short> m_aryMono;
};
