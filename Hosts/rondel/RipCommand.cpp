// rondel rip: a disc, or parts of it, into files, with a report.

#include "Commands.h"
#include "NameTemplate.h"
#include "RipJob.h"
#include "RipRun.h"

namespace
{
constexpr const char* FOOTER =
    "Encoders, several of them from one reading:\n"
    "  wav                     the default\n"
    "  flac, mp3, opus         with settings behind a colon: flac:level=8, mp3:vbr=0, \"opus:bitrate=160; vbr=on\"\n"
    "  cmd.SUFFIX=COMMAND      any program, as in cmd.mp3='lame -V 2 - %o': %o is the file, without it the program's\n"
    "                          output is. Settings go first: cmd.ogg='input=raw; command=oggenc -r - -o %o'\n"
    "                          It gets the tags that it asks for, as %{Title}, and no replay gain.\n"
    "Docs/ENCODERS.md lists all settings.\n\n"
    "Names are made by a template, in which / divides folders: %{albumartist} %{album} %{artist} %{title} %{track}\n"
    "%{tracks} %{isrc}. What a file system would not take is replaced.\n\n"
    "What is not finished never has its final name. Ctrl-C ends a rip; the same command with --resume goes on behind\n"
    "the last finished track. Exit codes: 0 all is right, 1 sectors are doubtful or a file failed, 2 the command line.";

struct RIP_COMMAND_OPTIONS
{
    RIP_WISHES wishes;
    std::string strMode = "secure";
    bool bNoAnalysis = false;
};

std::string CheckTracks(const std::string& strText)
{
    std::vector<int> aryTracks;
    return ParseTrackList(strText, aryTracks);
}

std::string CheckRange(const std::string& strText)
{
    int nFirst = 0;
    int nLast = 0;
    return ParseSectorRange(strText, nFirst, nLast);
}

std::string CheckEncoder(const std::string& strText)
{
    ENCODER_CHOICE choice;
    return ParseEncoderChoice(strText, choice);
}

void AddWhat(CLI::App& command, RIP_WISHES& wishes)
{
    command.add_option("DISC", wishes.strDisc, "a drive or a disc image")->required();
    CLI::Option* pTracks =
        command.add_option("--tracks", wishes.choice.strTracks, "tracks as in 1-3,7; without it all")
            ->check(CheckTracks);
    CLI::Option* pRange =
        command.add_option("--range", wishes.choice.strRange, "sectors as in 0-749, first and last")->check(CheckRange);
    CLI::Option* pHidden =
        command.add_flag("--hidden", wishes.choice.bHidden, "also the audio hidden ahead of track 1");
    pRange->excludes(pTracks)->excludes(pHidden);
}

void AddHow(CLI::App& command, RIP_COMMAND_OPTIONS& options)
{
    command.add_option("--mode", options.strMode, "secure reads all twice and compares; burst reads once")
        ->check(CLI::IsMember({"secure", "burst"}))
        ->capture_default_str();
    command.add_option("--cache", options.wishes.nCacheSectors, "the drive's read cache in sectors; else measured")
        ->check(CLI::Range(0, RIP_OPTIONS::MAX_CACHE_SECTORS));
    command.add_option("--speed", options.wishes.nSpeed, "read no faster than so many times that of playing")
        ->check(CLI::Range(1, 72));
    command.add_flag("--no-analysis", options.bNoAnalysis, "do not measure loudness, peaks, dynamic range and tempo");
    command.add_option("--verify-with", options.wishes.aryAnswers, "a saved answer of AccurateRip or CTDB")
        ->allow_extra_args(false);
}

void AddWhere(CLI::App& command, RIP_WISHES& wishes)
{
    command.add_option("--encoder", wishes.aryEncoders, "what the files are to be; see below")
        ->allow_extra_args(false)
        ->check(CheckEncoder)
        ->capture_default_str();
    command.add_option("--to", wishes.names.strTo, "the folder; without it the current one");
    command.add_option("--name", wishes.names.strTemplate, "names of the files, by a template")
        ->check(CheckNameTemplate)
        ->capture_default_str();
    command.add_flag("--image", wishes.names.bImage, "one file and a cue sheet instead of a file for each track");
    command.add_option("--picture", wishes.names.strPicture, "a PNG or JPEG file for the front cover");
    command.add_flag("--resume", wishes.bResume, "go on behind the last finished track of the same rip");
    command.add_flag("--overwrite", wishes.bOverwrite, "replace files that are there already");
}
} // namespace

void AddRipCommand(CLI::App& app, int& nExitCode)
{
    auto pOptions = std::make_shared<RIP_COMMAND_OPTIONS>();
    CLI::App* pCommand = app.add_subcommand("rip", "Rips a disc into files, with a log and a report.");
    AddWhat(*pCommand, pOptions->wishes);
    AddHow(*pCommand, *pOptions);
    AddWhere(*pCommand, pOptions->wishes);
    pCommand->footer(FOOTER);
    pCommand->callback(
        [pOptions, &nExitCode]
        {
            pOptions->wishes.bSecure = pOptions->strMode == "secure";
            pOptions->wishes.bAnalyze = !pOptions->bNoAnalysis;
            nExitCode = RunRip(pOptions->wishes);
        });
}
