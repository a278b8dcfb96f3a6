// What ripping costs, side by side in one run: a disc image of 48 minutes in memory, ripped into memory by "rondel rip"
// in its modes and by cd-paranoia, beside the least that any rip must do. The least is measured by this program itself,
// in processes of their own: read and write the same bytes; read them twice, compare and write.
//
//   BenchRip [minutes [rounds [folder]]]      48, 3, /dev/shm
//
// Printed are the best wall time of the rounds, the CPU time of that round (user and system, all threads and children),
// and both as multiples of the plain copy.

#include "CDUnits.h"
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <random>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace
{
namespace fs = std::filesystem;

constexpr int TRACKS = 12;
constexpr size_t BLOCK_BYTES = LY_CD_MAX_READ_BYTES; // what a rip asks for at a time
constexpr const char* RONDEL = RONDEL_BIN_DIR "/rondel";

[[noreturn]] void Stop(const std::string& strWhy)
{
    std::fprintf(stderr, "BenchRip: %s\n", strWhy.c_str());
    std::exit(1);
}

// Music enough for the analysers: two voices with a beat and some noise, never the same sector twice.
void MakeImage(const fs::path& folder, int nSectors)
{
    std::ofstream bin(folder / "image.bin", std::ios::binary);
    std::minstd_rand random(1);
    std::vector<short> arySector(2 * LY_CD_SECTOR_FRAMES);
    uint32_t nFrame = 0;
    for (int nSector = 0; nSector < nSectors; ++nSector)
    {
        for (size_t i = 0; i < arySector.size(); i += 2, ++nFrame)
        {
            const int nBeat = static_cast<int>(22050 - nFrame % 22050) / 4; // 120 a minute
            const int nSaw =
                static_cast<int>(nFrame * 440U % LY_CD_SAMPLE_RATE) - LY_CD_SAMPLE_RATE / 2; // -22050 to 22049
            const int nNoise = static_cast<int>(random() % 4001) - 2000;
            arySector[i] = static_cast<short>(nSaw * nBeat / 8192 + nNoise);
            arySector[i + 1] = static_cast<short>(nSaw / 4 + nNoise * nBeat / 8192);
        }
        bin.write(reinterpret_cast<const char*>(arySector.data()), LY_CD_SECTOR_BYTES);
    }
    if (!bin.flush())
        Stop("the image cannot be written to " + folder.string());
    std::ofstream cue(folder / "image.cue");
    cue << "FILE \"image.bin\" BINARY\n";
    for (int nTrack = 0; nTrack < TRACKS; ++nTrack)
    {
        const int nStart = nSectors / TRACKS * nTrack;
        char szTrack[80];
        std::snprintf(szTrack, sizeof szTrack, "  TRACK %02d AUDIO\n    INDEX 01 %02d:%02d:%02d\n", nTrack + 1,
                      nStart / 75 / 60, nStart / 75 % 60, nStart % 75);
        cue << szTrack;
    }
}

// A descriptor that reads or writes whole blocks, or ends the process.
class File
{
public:
    File(const fs::path& path, int nFlags) : m_nFile(open(path.c_str(), nFlags, 0644))
    {
        if (m_nFile < 0)
            Stop(path.string() + " does not open");
    }
    ~File() { (void)close(m_nFile); }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    size_t Read(char* p, size_t nBytes)
    {
        const ssize_t n = read(m_nFile, p, nBytes);
        return n > 0 ? static_cast<size_t>(n) : 0;
    }
    void Write(const char* p, size_t nBytes)
    {
        if (write(m_nFile, p, nBytes) != static_cast<ssize_t>(nBytes))
            Stop("writing fails");
    }

private:
    const int m_nFile;
};

// Into a file for each track, as the rips do.
int Copy(const fs::path& folder, bool bTwice)
{
    File first(folder / "image.bin", O_RDONLY);
    File second(folder / "image.bin", O_RDONLY);
    const auto nTrackBytes = static_cast<size_t>(fs::file_size(folder / "image.bin")) / TRACKS;
    std::vector<char> ary1(BLOCK_BYTES);
    std::vector<char> ary2(BLOCK_BYTES);
    for (int nTrack = 1; nTrack <= TRACKS; ++nTrack)
    {
        File out(folder / "out" / (std::to_string(nTrack) + ".wav"), O_WRONLY | O_CREAT | O_TRUNC);
        for (size_t nLeft = nTrackBytes; nLeft > 0;)
        {
            const size_t nBytes = first.Read(ary1.data(), std::min(nLeft, BLOCK_BYTES));
            if (nBytes == 0 || (bTwice && (second.Read(ary2.data(), nBytes) != nBytes ||
                                           std::memcmp(ary1.data(), ary2.data(), nBytes) != 0)))
                return 1;
            out.Write(ary1.data(), nBytes);
            nLeft -= nBytes;
        }
    }
    return 0;
}

int Execute(const std::vector<std::string>& aryCommand)
{
    std::vector<char*> aryPointers;
    aryPointers.reserve(aryCommand.size() + 1);
    for (const std::string& str : aryCommand)
        aryPointers.push_back(const_cast<char*>(str.c_str()));
    aryPointers.push_back(nullptr);
    const int nNull = open("/dev/null", O_RDWR);
    (void)dup2(nNull, STDIN_FILENO);
    (void)dup2(nNull, STDOUT_FILENO);
    (void)dup2(nNull, STDERR_FILENO);
    execvp(aryPointers[0], aryPointers.data());
    return 127;
}

struct COST
{
    double fWall = 0;
    double fCPU = 0;
    bool bDone = false;
};

double ToSeconds(const timeval& time)
{
    return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
}

// What came out; a rip that left something out is not faster.
uintmax_t CountOutput(const fs::path& out)
{
    uintmax_t nBytes = 0;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(out))
        if (entry.is_regular_file() && entry.path().extension() == ".wav")
            nBytes += entry.file_size();
    return nBytes;
}

// Runs the work in a process of its own, which starts in the folder for output.
COST Measure(const fs::path& folder, const std::function<int()>& work)
{
    const fs::path out = folder / "out";
    fs::remove_all(out);
    fs::create_directories(out);
    const auto start = std::chrono::steady_clock::now();
    const pid_t nProcess = fork();
    if (nProcess == 0)
        _exit(chdir(out.c_str()) == 0 ? work() : 1);
    int nStatus = 0;
    rusage usage{};
    if (wait4(nProcess, &nStatus, 0, &usage) != nProcess)
        Stop("a process cannot be started");
    const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - start;
    return {wall.count(), ToSeconds(usage.ru_utime) + ToSeconds(usage.ru_stime),
            WIFEXITED(nStatus) && WEXITSTATUS(nStatus) == 0 && CountOutput(out) >= fs::file_size(folder / "image.bin")};
}

struct RIVAL
{
    const char* pName;
    std::function<int()> work;
    COST best;
};

std::vector<RIVAL> MakeRivals(const fs::path& folder)
{
    const std::string strCue = (folder / "image.cue").string();
    const auto Rip = [strCue](std::vector<std::string> aryMore)
    {
        std::vector<std::string> ary = {RONDEL, "rip", strCue, "--to", ".", "--encoder", "wav"};
        ary.insert(ary.end(), aryMore.begin(), aryMore.end());
        return [ary] { return Execute(ary); };
    };
    const auto Paranoia = [strCue](std::vector<std::string> aryMore)
    {
        std::vector<std::string> ary = {"cd-paranoia", "-q", "-w", "-B", "-d", strCue};
        ary.insert(ary.end(), aryMore.begin(), aryMore.end());
        ary.push_back("1-");
        return [ary] { return Execute(ary); };
    };
    return {{"read and write", [folder] { return Copy(folder, false); }, {}},
            {"rondel rip --mode burst --no-analysis", Rip({"--mode", "burst", "--no-analysis"}), {}},
            {"rondel rip --mode burst", Rip({"--mode", "burst"}), {}},
            {"cd-paranoia -Z", Paranoia({"-Z"}), {}},
            {"read twice, compare and write", [folder] { return Copy(folder, true); }, {}},
            {"rondel rip --mode secure --no-analysis", Rip({"--mode", "secure", "--no-analysis"}), {}},
            {"rondel rip --mode secure", Rip({"--mode", "secure"}), {}},
            {"cd-paranoia", Paranoia({}), {}}};
}

void Print(const std::vector<RIVAL>& aryRivals)
{
    const COST& least = aryRivals.front().best;
    std::printf("%-40s %9s %9s %9s %9s\n", "", "wall s", "CPU s", "wall x", "CPU x");
    for (const RIVAL& rival : aryRivals)
    {
        if (rival.best.bDone)
            std::printf("%-40s %9.3f %9.3f %9.2f %9.2f\n", rival.pName, rival.best.fWall, rival.best.fCPU,
                        rival.best.fWall / least.fWall, rival.best.fCPU / least.fCPU);
        else
            std::printf("%-40s %9s\n", rival.pName, "failed");
    }
}
} // namespace

int main(int nArguments, char** ppArguments)
{
    const int nMinutes = nArguments > 1 ? std::clamp(std::atoi(ppArguments[1]), 1, 79) : 48;
    const int nRounds = nArguments > 2 ? std::clamp(std::atoi(ppArguments[2]), 1, 100) : 3;
    std::string strFolder = std::string(nArguments > 3 ? ppArguments[3] : "/dev/shm") + "/BenchRip.XXXXXX";
    if (mkdtemp(strFolder.data()) == nullptr)
        Stop(strFolder + " cannot be made");
    const fs::path folder = strFolder;
    setenv("XDG_CONFIG_HOME", (folder / "config").c_str(), 1); // nobody's own settings take part
    MakeImage(folder, nMinutes * 60 * LY_CD_SECTORS_PER_SECOND);
    std::vector<RIVAL> aryRivals = MakeRivals(folder);
    for (int nRound = 0; nRound < nRounds; ++nRound)
    {
        for (RIVAL& rival : aryRivals)
        {
            const COST cost = Measure(folder, rival.work);
            if (nRound == 0 || !cost.bDone || (rival.best.bDone && cost.fWall < rival.best.fWall))
                rival.best = cost;
        }
    }
    Print(aryRivals);
    std::error_code error;
    fs::remove_all(folder, error);
    return 0;
}
