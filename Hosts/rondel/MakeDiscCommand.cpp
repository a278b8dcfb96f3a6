// rondel make-disc: a CUE/BIN disc image with CD-Text from audio files.

#include "AudioFile.h"
#include "CDUnits.h"
#include "Commands.h"
#include "CueWriter.h"
#include "HostError.h"
#include "PartialFile.h"
#include "Progress.h"
#include "Text.h"
#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <vector>

namespace
{
namespace fs = std::filesystem;

constexpr int COPY_FRAMES = 64 * LY_CD_SECTOR_FRAMES;
constexpr double MAX_GAP_SECONDS = 60;

struct MAKE_DISC_OPTIONS
{
    std::string strOutput;
    std::string strTitle;
    std::string strPerformer;
    std::vector<std::string> aryTitles;
    double fGapSeconds = 0;
    bool bForce = false;
    std::vector<std::string> aryFiles;
};

// The BIN under a temporary name, until it is whole.
class BinFile
{
public:
    explicit BinFile(const fs::path& path) : m_Path(path), m_Partial(path.string())
    {
        m_pFile = m_Partial.GetIsOpen() ? fdopen(m_Partial.TakeDescriptor(), "wb") : nullptr;
        if (m_pFile == nullptr)
            throw HostError(path.string() + " cannot be written (" + std::strerror(errno) +
                            "); choose a folder that is there and that you may write to.");
    }
    ~BinFile()
    {
        if (m_pFile != nullptr)
            (void)std::fclose(m_pFile);
    }
    BinFile(const BinFile&) = delete;
    BinFile& operator=(const BinFile&) = delete;

    void Write(const short* pSamples, long long nFrames)
    {
        static_assert(sizeof(short) * 2 == LY_CD_FRAME_BYTES);
        const auto nCount = static_cast<size_t>(nFrames);
        m_bGood = std::fwrite(pSamples, LY_CD_FRAME_BYTES, nCount, m_pFile) == nCount && m_bGood;
    }
    void WriteSilence(long long nFrames)
    {
        static const std::vector<short> s_arySilence(2 * LY_CD_SECTOR_FRAMES);
        for (; nFrames > 0; nFrames -= LY_CD_SECTOR_FRAMES)
            Write(s_arySilence.data(), std::min<long long>(nFrames, LY_CD_SECTOR_FRAMES));
    }
    void Finish()
    {
        const bool bClosed = std::fclose(m_pFile) == 0;
        m_pFile = nullptr;
        if (!bClosed || !m_bGood || !m_Partial.Finish())
            throw HostError(m_Path.string() +
                            " could not be written to its end; is the disk full? Choose another place.");
    }

private:
    fs::path m_Path;
    PartialFile m_Partial;
    FILE* m_pFile = nullptr;
    bool m_bGood = true;
};

fs::path GetBinPath(const std::string& strCue) { return fs::path(strCue).replace_extension(".bin"); }

void CheckOptions(const MAKE_DISC_OPTIONS& options)
{
    if (fs::path(options.strOutput).extension() != ".cue")
        throw HostError("-o takes the name of a .cue file; the .bin comes beside it.");
    if (options.aryFiles.size() > LY_CD_MAX_TRACKS)
        throw HostError("a disc holds at most 99 tracks; " + std::to_string(options.aryFiles.size()) +
                        " files are given, so make several discs.");
    if (options.aryTitles.size() > options.aryFiles.size())
        throw HostError("there are " + std::to_string(options.aryTitles.size()) + " --track-title but only " +
                        std::to_string(options.aryFiles.size()) + " files; leave some out.");
    if (!(options.fGapSeconds >= 0 && options.fGapSeconds <= MAX_GAP_SECONDS)) // also what is no number
        throw HostError("--gap takes 0 to 60 seconds.");
    for (const fs::path& file : {fs::path(options.strOutput), GetBinPath(options.strOutput)})
    {
        if (!options.bForce && fs::exists(file))
            throw HostError(file.string() + " is already there; choose another name, or say --force.");
    }
}

// Copies a file's audio, filled up to whole sectors. Returns the sectors.
int CopyTrack(AudioFile& file, BinFile& bin, std::vector<short>& arySamples, Progress& progress, long long& nFramesDone)
{
    long long nFrames = 0;
    while (const int nGot = file.Read(arySamples.data(), COPY_FRAMES))
    {
        bin.Write(arySamples.data(), nGot);
        nFrames += nGot;
        nFramesDone += nGot;
        progress.Set(nFramesDone);
    }
    const long long nSectors = (nFrames + LY_CD_SECTOR_FRAMES - 1) / LY_CD_SECTOR_FRAMES;
    bin.WriteSilence(nSectors * LY_CD_SECTOR_FRAMES - nFrames);
    return static_cast<int>(nSectors);
}

CUE_DISC Collect(const MAKE_DISC_OPTIONS& options, std::vector<AudioFile>& aryAudio)
{
    CUE_DISC disc;
    disc.strTitle = options.strTitle;
    disc.strPerformer = options.strPerformer;
    long long nFrames = 0;
    for (size_t i = 0; i < options.aryFiles.size(); ++i)
    {
        aryAudio.emplace_back(options.aryFiles[i]);
        CUE_TRACK track;
        track.strTitle = i < options.aryTitles.size() ? options.aryTitles[i] : aryAudio.back().GetTitle();
        track.strPerformer = aryAudio.back().GetPerformer();
        disc.aryTracks.push_back(track);
        nFrames += aryAudio.back().GetFrames();
    }
    if (nFrames > 99LL * 60 * LY_CD_SAMPLE_RATE)
        throw HostError("the files are longer together than the 99 minutes that a disc can address; leave some out.");
    return disc;
}

int MakeDisc(const MAKE_DISC_OPTIONS& options)
{
    CheckOptions(options);
    std::vector<AudioFile> aryAudio;
    CUE_DISC disc = Collect(options, aryAudio);
    const fs::path cue(options.strOutput);
    const fs::path bin = GetBinPath(options.strOutput);
    disc.strBinName = bin.filename().string();

    long long nTotalFrames = 0;
    for (const AudioFile& file : aryAudio)
        nTotalFrames += file.GetFrames();
    BinFile binFile(bin);
    Progress progress("Writing " + bin.filename().string(), nTotalFrames);
    std::vector<short> arySamples(2 * COPY_FRAMES);
    const int nGapSectors = static_cast<int>(std::lround(options.fGapSeconds * LY_CD_SECTORS_PER_SECOND));
    long long nFramesDone = 0;
    int nSector = 0;
    for (size_t i = 0; i < aryAudio.size(); ++i)
    {
        CUE_TRACK& track = disc.aryTracks[i];
        track.nGapSector = nSector;
        if (i > 0)
        {
            binFile.WriteSilence(static_cast<long long>(nGapSectors) * LY_CD_SECTOR_FRAMES);
            nSector += nGapSectors;
        }
        track.nStartSector = nSector;
        nSector += CopyTrack(aryAudio[i], binFile, arySamples, progress, nFramesDone);
    }
    binFile.Finish();
    WriteCue(cue.string(), disc);
    std::printf("%s: %s, %s\n", options.strOutput.c_str(),
                CountOf(static_cast<long long>(disc.aryTracks.size()), "track").c_str(), FormatMSF(nSector).c_str());
    return EXIT_DONE;
}
} // namespace

void AddMakeDiscCommand(CLI::App& app, int& nExitCode)
{
    auto pOptions = std::make_shared<MAKE_DISC_OPTIONS>();
    CLI::App* pCommand = app.add_subcommand("make-disc", "Makes a disc image (CUE/BIN with CD-Text) from audio files.");
    pCommand->add_option("-o,--output", pOptions->strOutput, "the .cue file to write; the .bin comes beside it")
        ->required();
    pCommand->add_option("--title", pOptions->strTitle, "the title of the disc");
    pCommand->add_option("--performer", pOptions->strPerformer, "the performer of the disc");
    pCommand
        ->add_option("--track-title", pOptions->aryTitles,
                     "a title, once for each track in order; otherwise the file's own tag or name")
        ->take_all()
        ->expected(1)
        ->allow_extra_args(false);
    pCommand->add_option("--gap", pOptions->fGapSeconds,
                         "seconds of silence between tracks; 0, the default, is gapless");
    pCommand->add_flag("--force", pOptions->bForce, "replace a disc image that is already there");
    pCommand->add_option("FILES", pOptions->aryFiles, "audio files at 44,100 Hz (WAV, FLAC, AIFF, Ogg, MP3)")
        ->required();
    pCommand->callback([pOptions, &nExitCode] { nExitCode = MakeDisc(*pOptions); });
}
