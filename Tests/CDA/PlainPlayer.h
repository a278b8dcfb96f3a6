/* A player in plain C, which knows the plug-in only as tables of functions. */

#pragma once

#include <wchar.h>

#ifdef __cplusplus
extern "C"
{
#endif

    /* What a player learns of a track before it plays it. */
    typedef struct
    {
        wchar_t szName[64];
        long long nDurationMS;
        long long nTotalSamples;
    } PLAIN_TRACK;

    /* Loads the plug-in, plays the track at the path from nFromMS on into the buffer, and lets go of everything.
       The bytes that came, or -1 if the plug-in does not load or the track does not open. */
    long long PlainPlay(const char* pPlugin, const wchar_t* pPath, int nFromMS, unsigned char* pBuffer,
                        long long nBytes, PLAIN_TRACK* pTrack);

#ifdef __cplusplus
}
#endif
