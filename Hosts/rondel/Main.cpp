// rondel: plays the tracks of audio CDs and disc images through the plug-in, exactly as a player does, and rips them.

#include "Commands.h"
#include "HostError.h"
#include "LySharedToolsHelper.h"
#include "LyString.h"
#include <cstdio>
#include <exception>
#include <string_view>

namespace
{
constexpr const char* FOOTER = "Examples:\n"
                               "  rondel drives\n"
                               "  rondel info disc.cue\n"
                               "  rondel play D: 3\n"
                               "  rondel play disc.cue 3 -o track3.wav\n"
                               "  rondel play disc.cue 3 -o - | aplay\n"
                               "  rondel rip D: --encoder flac --to music\n"
                               "  rondel check disc.log\n"
                               "  rondel make-disc -o disc.cue *.flac\n"
                               "  rondel encode --encoder flac *.wav\n"
                               "  rondel inspect track3.wav\n"
                               "  rondel tags set track3.wav Title=Rondo Track=3/12\n"
                               "  rondel fetch https://example.org/cover.jpg\n\n"
                               "Exit codes: 0 done, 1 the disc or a file is at fault, 2 the command line is.";

// As the parser of the command line puts it, but for what is hard to understand.
std::string DescribeFault(const CLI::Error& error)
{
    constexpr std::string_view ONCE = ": At Most 1 required but received ";
    std::string strFault = error.what();
    while (!strFault.empty() && (strFault.back() == '\n' || strFault.back() == '.'))
        strFault.pop_back();
    const size_t nColon = strFault.find(": ");
    if (nColon == std::string::npos)
        return strFault;
    const std::string strName = strFault.substr(0, nColon);
    std::string strRest = strFault.substr(nColon + 2);
    if (strRest.starts_with(strName + " ")) // a check that names its option by itself
        return strRest;
    if (strFault.compare(nColon, ONCE.size(), ONCE) == 0)
        return strName + " may be given once, not " + strFault.substr(nColon + ONCE.size()) + " times";
    return strFault;
}

// One sentence, as for every other failure.
std::string DescribeUsageError(const CLI::App* pApp, const CLI::Error& error)
{
    const CLI::App* pCommand = pApp;
    std::string strHelp = "rondel";
    while (!pCommand->get_subcommands().empty())
    {
        pCommand = pCommand->get_subcommands().back();
        strHelp += " " + pCommand->get_name();
    }
    strHelp += " --help";
    const std::vector<std::string> aryUnknown = pApp->remaining();
    if (pCommand == pApp && !aryUnknown.empty() && !aryUnknown[0].starts_with('-'))
        return "rondel: '" + aryUnknown[0] + "' is no command; see '" + strHelp + "'.\n";
    return "rondel: " + DescribeFault(error) + "; see '" + strHelp + "'.\n";
}

int Run(int nArguments, char** ppArguments)
{
    CLI::App app("Plays, rips and inspects audio CDs and disc images.", "rondel");
    app.set_version_flag("--version", std::string("rondel ") + RONDEL_VERSION);
    app.require_subcommand(1);
    app.failure_message(DescribeUsageError);
    int nExitCode = EXIT_DONE;
    AddDrivesCommand(app, nExitCode);
    AddInfoCommand(app, nExitCode);
    AddPlayCommand(app, nExitCode);
    AddRipCommand(app, nExitCode);
    AddTrayCommands(app, nExitCode);
    AddMakeDiscCommand(app, nExitCode);
    AddOptionsCommand(app, nExitCode);
    AddFetchCommand(app, nExitCode);
    AddEncodeCommand(app, nExitCode);
    AddInspectCommand(app, nExitCode);
    AddCheckCommand(app, nExitCode);
    AddTagsCommand(app, nExitCode);
    app.footer(FOOTER);     // at last, so that the commands do not show it, too
    (void)GetLyTools(true); // log, translation and messages, where the library is there
    try
    {
        app.parse(nArguments, ppArguments);
    }
    catch (const CLI::ParseError& error)
    {
        return app.exit(error) == 0 ? EXIT_DONE : EXIT_USAGE;
    }
    return nExitCode;
}
} // namespace

int main(int nArguments, char** ppArguments)
{
    LyStringGlobals::SetLocale(true);
    try
    {
        return Run(nArguments, ppArguments);
    }
    catch (const HostError& error)
    {
        std::fprintf(stderr, "rondel: %s\n", error.what());
    }
    catch (const std::exception& error)
    {
        std::fprintf(stderr, "rondel: this should not have happened: %s\n", error.what());
    }
    return EXIT_FAILED;
}
