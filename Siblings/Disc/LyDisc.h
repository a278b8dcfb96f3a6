// The exports of the disc service library, libLyDisc.dylib, beside the Attach and Detach of every library.

#pragma once

#include "LyEntryPoint.h"
#include "THDriveInterface.h"

LY_EXPORT void LyDiscInitialize(long long nContext);
LY_EXPORT void LyDiscUninitialize(long long nContext);

// The one service of the library. With bCreate false it is null until somebody has created it.
LY_EXPORT IDiscManager* GetDiscManagerDLL(bool bCreate);

// One English sentence: why this path could not be opened the last time, or which of its sectors could not be read
// since it was acquired. Empty if all went well. A system string that the caller frees.
LY_EXPORT wchar_t* GetDiscErrorText(const wchar_t* pPath);

// What was tolerated or left out when the disc of this path was opened, an English sentence to a line; empty if
// nothing, or while nobody holds the drive. A system string that the caller frees.
LY_EXPORT wchar_t* GetDiscWarnings(const wchar_t* pPath);
