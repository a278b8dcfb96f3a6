// The exports of the reader library, libLyReader.dylib, beside the Attach and Detach of every library.
//
// Threads: any, between Attach and Detach.

#pragma once

#include "ILyReader.h"
#include "LyEntryPoint.h"

LY_EXPORT void LyReaderInitialize(long long nContext);
LY_EXPORT void LyReaderUninitialize(long long nContext);

// A new reader for a file name or for a URL (file, http, https), not yet open; the caller deletes it. Null if the name
// is empty or its scheme is none of these.
LY_EXPORT ILyReader* CreateGenericReaderDLL(const wchar_t* pPath);
