// The state of one transfer of CFileLoader, for its sources only.

#pragma once

#include "FileLoader.h"

#include <climits>

struct CFileLoader::TRANSFER
{
    LyBuffer* pBuffer;     // the bytes go here,
    ILyReader* pOutput;    // or, if there is none, here; may be null, too
    ILyWaitMessage* pWait; // may be null
    bool bIsURL;

    long long nSize = -1;         // of the source, from the start offset on; negative: not known
    long long nTotal = LLONG_MAX; // bytes to transfer at the most
    long long nDone = 0;
    int nChunkBytes = 0;

    bool bTested = false; // the content test has run
    bool bFailed = false; // memory or the output failed

    bool bReported = false; // the listener has heard of the progress
    float fReported = 0.0F;
    unsigned int nReportTick = 0;
};
