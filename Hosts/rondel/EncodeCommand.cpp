// rondel encode: WAV files through encoder plug-ins.

#include "Commands.h"
#include "HostError.h"
#include "Output.h"
#include "Text.h"
#include "WavEncoding.h"
#include <cstdio>
#include <filesystem>
#include <memory>
#include <vector>

namespace
{
constexpr const char* FOOTER =
    "An encoder is NAME or NAME:SETTINGS, as in flac:level=8, or cmd.SUFFIX=COMMAND for any program.\n"
    "Docs/ENCODERS.md has the settings. A file of the name given with -o is replaced when the new one is whole.";

struct ENCODE_OPTIONS
{
    std::vector<std::string> aryFiles;
    std::string strEncoder;
    std::string strOutput;
    std::string strFolder;
    bool bNoTags = false;
    bool bOverwrite = false;
    bool bList = false;
};

std::string CheckEncoder(const std::string& strText)
{
    ENCODER_CHOICE choice;
    const std::string strFault = ParseEncoderChoice(strText, choice);
    return strFault.empty() && choice.bWAV ? "wav makes no sense here, for the files are that already" : strFault;
}

int List()
{
    LyOwnedPtrArray<CEncoderPlugin> aryPlugins;
    CEncoderPlugin::ListEncoders(LyString(), aryPlugins);
    if (aryPlugins.GetSize() == 0)
        throw HostError("there are no encoders; they belong beside the program under names such as enc_flac.so.");
    std::puts("Encoder   Files   What it is");
    for (int i = 0; i < aryPlugins.GetSize(); ++i)
    {
        CEncoderPlugin& plugin = *aryPlugins[i];
        const std::string strLibrary = plugin.Open(nullptr, true) ? Narrow(plugin.GetInfo(LyString(L"Library"))) : "";
        const std::string strSuffix = Narrow(plugin.GetInfo(LyString(L"Extension")));
        const std::string strName = Narrow(plugin.GetInfo(LyString(L"Name")));
        std::printf("%-9s %-7s %s%s\n", Narrow(plugin.m_strName).c_str(),
                    strSuffix.empty() ? "any" : ("." + strSuffix).c_str(),
                    plugin.m_pEncoder == nullptr ? "does not load; install it anew" : strName.c_str(),
                    strLibrary.empty() ? "" : (" (" + strLibrary + ")").c_str());
    }
    CheckOutput();
    return EXIT_DONE;
}

void CheckOptions(const ENCODE_OPTIONS& options)
{
    if (options.aryFiles.empty())
        throw CLI::ValidationError("FILES is required");
    if (options.strEncoder.empty())
        throw CLI::ValidationError("--encoder is required; 'rondel encode --list' shows what there is");
    if (!options.strOutput.empty() && options.aryFiles.size() > 1)
        throw CLI::ValidationError("-o names one file, and there are several to encode; use --to for a folder");
    std::error_code error;
    if (!options.strFolder.empty() && !std::filesystem::is_directory(options.strFolder, error))
        throw HostError(options.strFolder + " is no folder; make it first, or name another one with --to.");
}

// False, and a line for the user, where a file failed.
bool EncodeOne(const WAV_ENCODING& encoding, const StopSignals& signals, bool& bStopped)
{
    try
    {
        bStopped = EncodeWav(encoding, signals).empty();
        return !bStopped;
    }
    catch (const HostError& error)
    {
        std::fprintf(stderr, "rondel: %s\n", error.what());
        return false;
    }
}

int Encode(const ENCODE_OPTIONS& options)
{
    CheckOptions(options);
    const StopSignals signals;
    WAV_ENCODING encoding;
    (void)ParseEncoderChoice(options.strEncoder, encoding.choice);
    encoding.strTarget = options.strOutput;
    encoding.strFolder = options.strFolder;
    encoding.bTags = !options.bNoTags;
    encoding.bOverwrite = options.bOverwrite;
    (void)RipEncoder(encoding.choice); // what is wrong with it is told once, not for every file
    size_t nDone = 0;
    bool bStopped = false;
    for (size_t n = 0; n < options.aryFiles.size() && !bStopped && !signals.GetStopWanted(); ++n)
    {
        encoding.strSource = options.aryFiles[n];
        nDone += EncodeOne(encoding, signals, bStopped) ? 1 : 0;
    }
    if (bStopped || (signals.GetStopWanted() && nDone < options.aryFiles.size()))
        throw HostError("stopped; " + std::to_string(nDone) + " of " + std::to_string(options.aryFiles.size()) +
                        " files are encoded, and nothing incomplete is left.");
    return nDone == options.aryFiles.size() ? EXIT_DONE : EXIT_FAILED;
}
} // namespace

void AddEncodeCommand(CLI::App& app, int& nExitCode)
{
    auto p = std::make_shared<ENCODE_OPTIONS>();
    CLI::App* pCommand = app.add_subcommand("encode", "Encodes WAV files, with their tags.");
    pCommand->add_option("FILES", p->aryFiles, "WAV files")->check(CheckFileName);
    pCommand->add_option("--encoder", p->strEncoder, "what to make of them; see below")->check(CheckEncoder);
    CLI::Option* pOutput = pCommand->add_option("-o,--output", p->strOutput, "the file to make of a single one");
    pCommand->add_option("--to", p->strFolder, "the folder for the new files; without it beside the old ones")
        ->excludes(pOutput);
    pCommand->add_flag("--overwrite", p->bOverwrite, "replace files that are there already");
    pCommand->add_flag("--no-tags", p->bNoTags, "leave the tags behind");
    pCommand->add_flag("--list", p->bList, "show the encoders");
    pCommand->footer(FOOTER);
    pCommand->callback([p, &nExitCode] { nExitCode = p->bList ? List() : Encode(*p); });
}
