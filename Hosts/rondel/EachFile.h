// The same for each of several files, as commands with FILE... do it.

#pragma once

#include "Commands.h"
#include "HostError.h"
#include <cstdio>
#include <string>
#include <vector>

// Runs an action for each file, whether it ends well: bool action(const std::string& strFile). One that fails by
// HostError is a line for the user on standard error, in its place between those of the others, which go on.
template <class ACTION>
EXIT_CODE ForEachFile(const std::vector<std::string>& aryFiles, ACTION action)
{
    bool bGood = true;
    for (const std::string& strFile : aryFiles)
    {
        try
        {
            bGood = action(strFile) && bGood;
        }
        catch (const HostError& error)
        {
            (void)std::fflush(stdout); // the lines stand in the order of the files
            std::fprintf(stderr, "rondel: %s\n", error.what());
            bGood = false;
        }
    }
    return bGood ? EXIT_DONE : EXIT_FAILED;
}
