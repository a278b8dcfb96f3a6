// rondel play: one track through the plug-in, by its binary interface alone.

#include "AudioOutput.h"
#include "CDUnits.h"
#include "Commands.h"
#include "Disc.h"
#include "HostError.h"
#include "Listen.h"
#include "Plugin.h"
#include "Progress.h"
#include "Text.h"
#include <algorithm>
#include <climits>
#include <cmath>
#include <optional>
#include <vector>

namespace
{
constexpr int BLOCK_BYTES = 14 * PLUGIN_REQUEST_BYTES;

struct PLAY_OPTIONS
{
    std::string strDisc;
    int nTrack = 0;
    std::string strFrom;
    std::string strTo;
    std::string strOutput; // empty: the sound card
    std::string strDevice = "default";
};

// A stretch of a track in bytes, from a whole second, as the plug-in seeks.
struct STRETCH
{
    long long nFrom = 0;
    long long nTo = 0;
};

double GetTime(const std::string& strTime, const char* pOption)
{
    const std::optional<double> fSeconds = ParseTime(strTime);
    if (!fSeconds)
        throw HostError(std::string(pOption) + " takes a time as mm:ss or seconds, not '" + strTime + "'.");
    return *fSeconds;
}

STRETCH GetStretch(const PLAY_OPTIONS& options, long long nTrackBytes)
{
    STRETCH stretch{0, nTrackBytes};
    const double fLength = static_cast<double>(nTrackBytes) / LY_CD_SECOND_BYTES;
    if (!options.strFrom.empty())
    {
        const double fFrom = std::floor(GetTime(options.strFrom, "--from"));
        if (fFrom * LY_CD_SECOND_BYTES >= static_cast<double>(nTrackBytes))
            throw HostError("--from " + options.strFrom + " lies behind the end of the track, which lasts " +
                            FormatSeconds(fLength) + "; give an earlier time.");
        stretch.nFrom = static_cast<long long>(fFrom) * LY_CD_SECOND_BYTES;
    }
    if (!options.strTo.empty())
    {
        const double fTo = std::min(GetTime(options.strTo, "--to"), fLength);
        stretch.nTo = std::llround(fTo * LY_CD_SAMPLE_RATE) * LY_CD_FRAME_BYTES;
        if (stretch.nTo <= stretch.nFrom)
            throw HostError("--to " + options.strTo +
                            " does not lie behind --from, so there is nothing to play; give a later time.");
    }
    return stretch;
}

// What the plug-in will deliver of a stretch: whole requests up to the end of the track.
long long GetExpectedBytes(const STRETCH& stretch, long long nTrackBytes)
{
    const long long nWhole = (nTrackBytes - stretch.nFrom) / PLUGIN_REQUEST_BYTES * PLUGIN_REQUEST_BYTES;
    return std::min(stretch.nTo - stretch.nFrom, nWhole);
}

long long Pull(ILyAudioInput& source, AudioOutput& output, long long nBytes, const std::string& strTask)
{
    std::vector<unsigned char> aryBlock(BLOCK_BYTES);
    Progress progress(strTask, nBytes);
    long long nDone = 0;
    while (nDone < nBytes)
    {
        const int nWanted = static_cast<int>(std::min<long long>(BLOCK_BYTES, nBytes - nDone));
        const int nGot = source.GetSamples(aryBlock.data(), nWanted);
        if (nGot < 1)
            break;
        output.Write(aryBlock.data(), nGot);
        nDone += nGot;
        progress.Set(nDone);
    }
    return nDone;
}

void Seek(ILyAudioInput& source, long long nPosition)
{
    if (nPosition == 0)
        return;
    const std::string strMS = std::to_string(nPosition / LY_CD_SECOND_BYTES * 1000);
    if (source.SetInformation(LY_AUDIO_INPUT_INFO_POSITION, Widen(strMS)) != 0)
        throw HostError("the plug-in refused to seek.");
}

// What is wrong with a track number as it was typed; empty if it is a number. Which tracks there are, the disc tells.
std::string CheckTrackNumber(const std::string& strTrack)
{
    constexpr size_t MAX_DIGITS = 9; // what an int always holds
    const size_t nSign = strTrack.starts_with('-');
    const bool bDigits = strTrack.find_first_not_of("0123456789", nSign) == std::string::npos;
    if (bDigits && strTrack.size() > nSign && strTrack.size() <= nSign + MAX_DIGITS)
        return {};
    return "'" + strTrack + "' is no track number, give one from 1 to 99";
}

// To the sound card, as one listens.
int PlayAloud(const PLAY_OPTIONS& options)
{
    LISTEN_OPTIONS listen{GetDrivePath(options.strDisc), options.nTrack, options.strDevice, 0, -1};
    double fLength = 0;
    {
        const Disc disc(listen.strDrive);
        fLength = static_cast<double>(disc.GetAudioTrack(options.nTrack).nSectors) / LY_CD_SECTORS_PER_SECOND;
    }
    const STRETCH stretch = GetStretch(options, static_cast<long long>(fLength * LY_CD_SECOND_BYTES));
    listen.fFromSeconds = static_cast<double>(stretch.nFrom) / LY_CD_SECOND_BYTES;
    if (!options.strTo.empty())
        listen.fToSeconds = static_cast<double>(stretch.nTo) / LY_CD_SECOND_BYTES;
    return Listen(listen);
}

int Play(const PLAY_OPTIONS& options)
{
    if (options.strOutput.empty())
        return PlayAloud(options);
    const std::string strDrive = GetDrivePath(options.strDisc);
    {
        // The plug-in plays whatever number it is given; what is on the disc is looked up beforehand.
        const Disc disc(strDrive);
        (void)disc.GetAudioTrack(options.nTrack);
    }
    const Plugin plugin;
    const std::unique_ptr<ILyAudioInput> pSource = plugin.CreateSource();
    if (pSource->Open(Widen("cda://" + strDrive + "," + std::to_string(options.nTrack))) != 0)
        throw HostError("the plug-in could not open track " + std::to_string(options.nTrack) + " of " +
                        options.strDisc + "; look at it with 'rondel info'.");
    const long long nTrackBytes = GetNumber(*pSource, LY_AUDIO_INPUT_INFO_TOTAL_SAMPLES) * LY_CD_FRAME_BYTES;
    const STRETCH stretch = GetStretch(options, nTrackBytes);
    const long long nExpected = GetExpectedBytes(stretch, nTrackBytes);
    const std::unique_ptr<AudioOutput> pOutput = AudioOutput::Create(options.strOutput, nExpected);
    Seek(*pSource, stretch.nFrom);
    const long long nDone = Pull(*pSource, *pOutput, nExpected, "Track " + std::to_string(options.nTrack));
    pOutput->Finish();
    ReportPlaying(strDrive, static_cast<double>(nExpected - nDone) / LY_CD_SECOND_BYTES);
    return EXIT_DONE;
}
} // namespace

void AddPlayCommand(CLI::App& app, int& nExitCode)
{
    auto pOptions = std::make_shared<PLAY_OPTIONS>();
    CLI::App* pCommand = app.add_subcommand("play", "Plays a track through the plug-in: to the sound card or a WAV.");
    pCommand->add_option("DISC", pOptions->strDisc, "a drive or a disc image")->required();
    pCommand->add_option("TRACK", pOptions->nTrack, "the number of the track, 1 to 99")
        ->required()
        ->check(CheckTrackNumber);
    pCommand->add_option("--from", pOptions->strFrom, "where to start, mm:ss; the plug-in seeks by whole seconds");
    pCommand->add_option("--to", pOptions->strTo, "where to stop, mm:ss");
    pCommand->add_option("-o,--output", pOptions->strOutput, "a WAV file, or - for a WAV on standard output");
    pCommand->add_option("--device", pOptions->strDevice, "the sound card, by its ALSA name")->capture_default_str();
    pCommand->footer(
        "Without -o the track is heard. Keys: space pauses, the arrows go back and forth by ten seconds, n and p\n"
        "go to the next and the previous track, q ends it.");
    pCommand->callback([pOptions, &nExitCode] { nExitCode = Play(*pOptions); });
}
