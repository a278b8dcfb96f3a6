// The commands of the host program. Each adds itself to the command line and runs when it was chosen.

#pragma once

#include <CLI/CLI.hpp>
#include <string>

enum EXIT_CODE : int
{
    EXIT_DONE = 0,
    EXIT_FAILED = 1, // the disc, the track or a file; one sentence on stderr says what to do
    EXIT_USAGE = 2   // the command line
};

// For the parser: what is wrong with a name of a file, or nothing.
std::string CheckFileName(const std::string& strName);

void AddInfoCommand(CLI::App& app, int& nExitCode);
void AddPlayCommand(CLI::App& app, int& nExitCode);
void AddRipCommand(CLI::App& app, int& nExitCode);
void AddMakeDiscCommand(CLI::App& app, int& nExitCode);
void AddDrivesCommand(CLI::App& app, int& nExitCode);
void AddTrayCommands(CLI::App& app, int& nExitCode); // eject, close, lock, unlock
void AddOptionsCommand(CLI::App& app, int& nExitCode);
void AddFetchCommand(CLI::App& app, int& nExitCode);
void AddEncodeCommand(CLI::App& app, int& nExitCode);
void AddInspectCommand(CLI::App& app, int& nExitCode);
void AddCheckCommand(CLI::App& app, int& nExitCode);
void AddTagsCommand(CLI::App& app, int& nExitCode);
