// A tagged WAV file in memory (/dev/shm) is opened, one field of it changed, and saved in place: CWAVInfo, through the
// reader library, against TagLib's RIFF::WAV::File. The file has ten seconds of audio; its title is as long each time,
// so that neither has to move anything.

#include "ProcessInfo.h"
#include "WAVInfo.h"
#include <attachedpictureframe.h>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <fstream>
#include <id3v2tag.h>
#include <string>
#include <textidentificationframe.h>
#include <unistd.h>
#include <wavfile.h>

namespace
{
constexpr const char* TITLES[] = {"The title of a song, take 1", "The title of a song, take 2"};

// The file, which goes with the object.
class TaggedFile
{
public:
    explicit TaggedFile(int nPictureBytes) : m_strPath("/dev/shm/BenchWAVTags." + std::to_string(getpid()) + ".wav")
    {
        constexpr unsigned int AUDIO_BYTES = 10 * 44100 * 4;
        std::ofstream stream(m_strPath, std::ios::binary);
        const auto put = [&stream](unsigned int n, int nBytes)
        {
            for (; nBytes > 0; --nBytes, n >>= 8)
                stream.put(static_cast<char>(n));
        };
        stream << "RIFF";
        put(36 + AUDIO_BYTES, 4);
        stream << "WAVEfmt ";
        put(16, 4);
        put(1, 2); // PCM
        put(2, 2);
        put(44100, 4);
        put(44100 * 4, 4);
        put(4, 2);
        put(16, 2);
        stream << "data";
        put(AUDIO_BYTES, 4);
        stream << std::string(AUDIO_BYTES, '\x55');
        stream.close();
        AddTag(nPictureBytes);
    }
    ~TaggedFile() { (void)std::remove(m_strPath.c_str()); }
    TaggedFile(const TaggedFile&) = delete;
    TaggedFile& operator=(const TaggedFile&) = delete;

    const std::string& GetPath() const { return m_strPath; }

private:
    // Fifteen texts and a picture, as an ordinary file has.
    void AddTag(int nPictureBytes) const
    {
        TagLib::RIFF::WAV::File file(m_strPath.c_str(), false);
        for (const char* pID : {"TIT2", "TPE1", "TPE2", "TALB", "TRCK", "TPOS", "TCOM", "TSRC", "TBPM", "TKEY", "TPUB",
                                "TCOP", "TENC", "TSSE", "TLAN"})
        {
            auto* pFrame = new TagLib::ID3v2::TextIdentificationFrame(pID, TagLib::String::UTF16);
            pFrame->setText(TITLES[0]);
            file.ID3v2Tag()->addFrame(pFrame);
        }
        if (nPictureBytes > 0)
        {
            auto* pPicture = new TagLib::ID3v2::AttachedPictureFrame;
            pPicture->setMimeType("image/jpeg");
            pPicture->setPicture(TagLib::ByteVector(static_cast<unsigned int>(nPictureBytes), '\x66'));
            file.ID3v2Tag()->addFrame(pPicture);
        }
        file.save(TagLib::RIFF::WAV::File::ID3v2, TagLib::File::StripNone, TagLib::ID3v2::v3);
    }

    std::string m_strPath;
};

void Own(benchmark::State& state)
{
    const TaggedFile file(static_cast<int>(state.range(0)));
    GetProcessInfo(true)->SetSharedLibraryPath(LyString().FromANSI(RONDEL_BIN_DIR "/"));
    const LyString strPath = LyString().FromANSI(file.GetPath().c_str());
    int nTitle = 0;
    for (auto _ : state)
    {
        CWAVInfo info;
        info.m_nTagWritingEnabled = 1;
        if (info.Open(strPath) != 0 || !info.Set(L"Name", LyString().FromANSI(TITLES[++nTitle % 2])) ||
            !info.SaveMetadataChanges(false))
            state.SkipWithError("the file is not saved");
    }
}

void Other(benchmark::State& state)
{
    const TaggedFile file(static_cast<int>(state.range(0)));
    int nTitle = 0;
    for (auto _ : state)
    {
        TagLib::RIFF::WAV::File wav(file.GetPath().c_str(), false);
        wav.ID3v2Tag()->setTitle(TITLES[++nTitle % 2]);
        if (!wav.save(TagLib::RIFF::WAV::File::ID3v2, TagLib::File::StripNone, TagLib::ID3v2::v3))
            state.SkipWithError("the file is not saved");
    }
}
} // namespace

BENCHMARK(Own)->Name("CWAVInfo")->ArgName("picture")->Arg(0)->Arg(30'000)->Arg(300'000);
BENCHMARK(Other)->Name("TagLib")->ArgName("picture")->Arg(0)->Arg(30'000)->Arg(300'000);
