// Files in bulk: CFileLoader against the copying of a file, and unpacking against zlib's own reading of gzip files. The
// files lie in memory (/dev/shm), so that no disk takes part. What is told is processor time, that of children
// included, which a busy machine changes less than it does the clock on the wall.

#include "FileLoader.h"
#include "LySharedToolsHelper.h"
#include "ProcessInfo.h"
#include "ZLibHelper.h"
#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <string>
#include <sys/resource.h>
#include <sys/statvfs.h>
#include <sys/time.h>
#include <unistd.h>
#include <vector>
#include <zlib.h>

namespace
{
constexpr long long LARGE_BYTES = 1024LL * 1024 * 1024;
constexpr long long MIB = 1024 * 1024;

// Music-like bytes: neither all the same nor noise.
std::vector<unsigned char> MakeBytes(size_t nBytes)
{
    std::vector<unsigned char> aryBytes(nBytes);
    unsigned int nState = 1;
    for (size_t n = 0; n < nBytes; ++n)
    {
        nState = nState * 1664525 + 1013904223;
        aryBytes[n] = static_cast<unsigned char>((n / 64 & 127) + (nState >> 29));
    }
    return aryBytes;
}

// The folder of all files, and the libraries that this program works through.
class Place
{
public:
    static Place& Get()
    {
        static Place s_Place;
        return s_Place;
    }
    std::string GetPath(const char* pName) const { return m_strFolder + "/" + pName; }
    LyFilename GetName(const char* pName) const { return LyFilename(LyString().FromANSI(GetPath(pName).c_str())); }
    long long GetLargeBytes() const { return m_nLargeBytes; }
    long long GetUnpackedBytes() const { return UNPACKED_BYTES; }

private:
    static constexpr long long UNPACKED_BYTES = 64 * MIB;

    Place()
    {
        char szInMemory[] = "/dev/shm/RondelBench.XXXXXX";
        char szOnDisk[] = "/tmp/RondelBench.XXXXXX";
        const char* pFolder = mkdtemp(szInMemory);
        if (pFolder == nullptr)
            pFolder = mkdtemp(szOnDisk);
        if (pFolder == nullptr)
            std::abort();
        m_strFolder = pFolder;
        setenv("XDG_CONFIG_HOME", m_strFolder.c_str(), 1);
        GetProcessInfo(true)->SetSharedLibraryPath(LyString().FromANSI(RONDEL_BIN_DIR "/"));
        struct statvfs room = {};
        (void)statvfs(m_strFolder.c_str(), &room);
        // The file, its copy, and as much again of memory.
        const auto nRoom = static_cast<long long>(room.f_bavail * room.f_frsize);
        m_nLargeBytes = std::min(LARGE_BYTES, nRoom / 4);
        WriteLarge();
        WritePacked();
    }
    ~Place()
    {
        std::error_code error;
        std::filesystem::remove_all(m_strFolder, error);
        g_LySharedToolsHelper.UnloadLySharedLibs(false);
    }

    void WriteLarge() const
    {
        const std::vector<unsigned char> aryBytes = MakeBytes(MIB);
        const int nFile = open(GetPath("large").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
        for (long long n = 0; n < m_nLargeBytes / MIB; ++n)
            if (write(nFile, aryBytes.data(), aryBytes.size()) < 0)
                std::abort();
        (void)close(nFile);
    }
    void WritePacked() const
    {
        const std::vector<unsigned char> aryBytes = MakeBytes(UNPACKED_BYTES);
        gzFile file = gzopen(GetPath("packed").c_str(), "wb6");
        if (gzwrite(file, aryBytes.data(), static_cast<unsigned int>(aryBytes.size())) <= 0)
            std::abort();
        (void)gzclose(file);
    }

    std::string m_strFolder;
    long long m_nLargeBytes = 0;
};

// Processor time of this process and of the children that it has waited for, in seconds.
double GetProcessorTime()
{
    double fSeconds = 0;
    for (const int nWho : {RUSAGE_SELF, RUSAGE_CHILDREN})
    {
        rusage usage = {};
        (void)getrusage(nWho, &usage);
        for (const timeval& time : {usage.ru_utime, usage.ru_stime})
            fSeconds += static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    }
    return fSeconds;
}

// Runs the work again and again, telling the processor time that it takes.
template <class WORK>
void Measure(benchmark::State& state, WORK work)
{
    const Place& place = Place::Get(); // made before anything is measured
    for (auto _ : state)
    {
        const double fStart = GetProcessorTime();
        if (!work())
            state.SkipWithError("it failed");
        state.SetIterationTime(GetProcessorTime() - fStart);
        std::filesystem::remove(place.GetPath("copy"));
    }
    state.SetBytesProcessed(state.iterations() * place.GetLargeBytes());
}

void SetBytes(benchmark::State& state, long long nBytes) { state.SetBytesProcessed(state.iterations() * nBytes); }

// ---- Loading

// What a load to an output costs beyond the reading: nothing is kept.
class Nowhere final : public ILyReader
{
public:
    bool Create() override { return true; }
    bool Open() override { return false; }
    void Close() override {}
    int Read(void*, int) override { return 0; }
    int Write(const void*, int nBytes) override { return nBytes; }
    long long GetLength() override { return 0; }
    long long GetPosition() override { return 0; }
    long long Seek(long long, int) override { return -1; }
    bool GetIsStream() override { return false; }
    bool GetCanClose() override { return true; }
    bool GetIsOpen() override { return true; }
    wchar_t* GetInfo(const wchar_t*) override { return nullptr; }
    void SetTimeout(int) override {}
    void SetPostData(void*, int) override {}
    void SetDownloadParameters(LyString) override {}
    void SetProperty(const wchar_t*, const wchar_t*) override {}
    bool GetCanCancel() override { return true; }
    void SetEndOfFile() override {}
};

bool LoadTo(ILyReader& output)
{
    CFileLoader loader;
    bool bOpened = true;
    return loader.LoadInternal(Place::Get().GetName("large"), nullptr, &output, LyFilename(), bOpened, LyDateTime());
}

void LoaderToAFile(benchmark::State& state)
{
    Measure(state,
            []
            {
                const LyFilename copy = Place::Get().GetName("copy");
                const std::unique_ptr<ILyReader> pOutput(CreateGenericReader(copy.GetFilename()));
                return pOutput != nullptr && LoadTo(*pOutput);
            });
}

void LoaderToNowhere(benchmark::State& state)
{
    Nowhere nowhere;
    Measure(state, [&nowhere] { return LoadTo(nowhere); });
}

void LoaderToABuffer(benchmark::State& state)
{
    Measure(state,
            []
            {
                LyBuffer buffer;
                return CFileLoader().LoadBuffer(Place::Get().GetName("large"), buffer);
            });
}

// As cp does it where files cannot be cloned.
void Copy(benchmark::State& state)
{
    const Place& place = Place::Get();
    const std::string strCommand = "cp --reflink=never " + place.GetPath("large") + " " + place.GetPath("copy");
    Measure(state, [&strCommand] { return std::system(strCommand.c_str()) == 0; });
}

bool ReadAll(unsigned char* p, long long nStep)
{
    const int nFile = open(Place::Get().GetPath("large").c_str(), O_RDONLY | O_CLOEXEC);
    for (ssize_t nRead; (nRead = read(nFile, p, MIB)) > 0;)
        p += nRead * nStep;
    return close(nFile) == 0;
}

// The same reads into one piece of memory as large as the file.
void ReadToMemory(benchmark::State& state)
{
    Measure(state,
            []
            {
                const auto nBytes = static_cast<size_t>(Place::Get().GetLargeBytes()) + MIB;
                const std::unique_ptr<void, decltype(&std::free)> pMemory(std::malloc(nBytes), &std::free);
                return pMemory != nullptr && ReadAll(static_cast<unsigned char*>(pMemory.get()), 1);
            });
}

// The same reads into the same megabyte.
void ReadToNowhere(benchmark::State& state)
{
    std::vector<unsigned char> aryBytes(MIB);
    Measure(state, [&aryBytes] { return ReadAll(aryBytes.data(), 0); });
}

// ---- Unpacking

void InflateToABuffer(benchmark::State& state)
{
    const Place& place = Place::Get();
    CZLibHelper helper;
    for (auto _ : state)
    {
        LyBuffer buffer;
        if (!helper.DecompressFileToBuffer(place.GetName("packed").GetFilename(), buffer, nullptr) ||
            buffer.GetSize() != place.GetUnpackedBytes())
            state.SkipWithError("not unpacked");
    }
    SetBytes(state, place.GetUnpackedBytes());
}

void InflateToAFile(benchmark::State& state)
{
    const Place& place = Place::Get();
    CZLibHelper helper;
    for (auto _ : state)
        if (!helper.DecompressFile(place.GetName("packed").GetFilename(), place.GetName("unpacked").GetFilename(),
                                   nullptr))
            state.SkipWithError("not unpacked");
    SetBytes(state, place.GetUnpackedBytes());
}

// gzread in the steps of the helper, appending to memory that grows as the helper's does.
void ZlibToABuffer(benchmark::State& state)
{
    constexpr int CHUNK_BYTES = 8192;
    const Place& place = Place::Get();
    for (auto _ : state)
    {
        LyBuffer buffer;
        gzFile file = gzopen(place.GetPath("packed").c_str(), "rb");
        unsigned char aryChunk[CHUNK_BYTES];
        for (int nRead; (nRead = gzread(file, aryChunk, CHUNK_BYTES)) > 0;)
            std::memcpy(buffer.GetAppendBlock(nRead, false, 262144), aryChunk, static_cast<size_t>(nRead));
        (void)gzclose(file);
        if (buffer.GetSize() != place.GetUnpackedBytes())
            state.SkipWithError("not unpacked");
    }
    SetBytes(state, place.GetUnpackedBytes());
}

void ZlibToAFile(benchmark::State& state)
{
    constexpr int CHUNK_BYTES = 16384;
    const Place& place = Place::Get();
    for (auto _ : state)
    {
        gzFile file = gzopen(place.GetPath("packed").c_str(), "rb");
        const int nOutput = open(place.GetPath("unpacked").c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        unsigned char aryChunk[CHUNK_BYTES];
        for (int nRead; (nRead = gzread(file, aryChunk, CHUNK_BYTES)) > 0;)
            if (write(nOutput, aryChunk, static_cast<size_t>(nRead)) != nRead)
                state.SkipWithError("not written");
        (void)close(nOutput);
        (void)gzclose(file);
    }
    SetBytes(state, place.GetUnpackedBytes());
}
} // namespace

BENCHMARK(LoaderToAFile)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(Copy)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(LoaderToABuffer)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(ReadToMemory)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(LoaderToNowhere)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(ReadToNowhere)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(InflateToABuffer)->Unit(benchmark::kMillisecond);
BENCHMARK(ZlibToABuffer)->Unit(benchmark::kMillisecond);
BENCHMARK(InflateToAFile)->Unit(benchmark::kMillisecond);
BENCHMARK(ZlibToAFile)->Unit(benchmark::kMillisecond);
