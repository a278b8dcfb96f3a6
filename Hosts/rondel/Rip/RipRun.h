// RipRun: the rip command, from the user's wishes to the files and their report.
//
// Order:   everything that can be refused is refused before the disc is read. Then one rip job reads all that is
//          wanted, in one go. The logs come last, and only for a rip that is whole; until then a state file stands in
//          their place, with which --resume goes on.
// Errors:  HostError; also for a rip that is whole with doubtful sectors, which its log names.
// Threads: the caller's.

#pragma once

#include "RipEncoders.h"
#include "RipNames.h"
#include "RipPlan.h"
#include <string>
#include <vector>

struct RIP_WISHES
{
    std::string strDisc; // as the user named it
    RIP_CHOICE choice;
    bool bSecure = true;
    std::vector<std::string> aryEncoders = {"wav"}; // as typed
    RIP_NAME_WISHES names;
    bool bResume = false;
    bool bOverwrite = false;
    int nCacheSectors = -1; // as the drive's cache is measured
    int nSpeed = 0;         // times; 0: the drive's best
    bool bAnalyze = true;
    std::vector<std::string> aryAnswers; // files of databases
};

// As it could be typed, without --resume.
std::string MakeRipCommandLine(const RIP_WISHES& wishes);

int RunRip(const RIP_WISHES& wishes); // the exit code
