// Listening: tracks through the plug-in to the sound card, with keys and a line that shows the position.

#pragma once

#include <string>

struct LISTEN_OPTIONS
{
    std::string strDrive; // as the plug-in is to address it
    int nTrack = 0;
    std::string strDevice; // of ALSA
    double fFromSeconds = 0;
    double fToSeconds = -1; // -1: to the end
};

// Plays until the track has been heard or somebody quits. Throws HostError. The exit code.
int Listen(const LISTEN_OPTIONS& options);
