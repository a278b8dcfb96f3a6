// The exports of the tools library, libLyTools.dylib, beside the Attach and Detach of every library.
//
// Threads: any, between Attach and Detach.

#pragma once

#include "ILyTools.h"
#include "LyEntryPoint.h"

// The root object, from which every service is reached. Null for another version than LY_TOOLS_INTERFACE_VERSION.
LY_EXPORT ILyTools* GetLyToolsDLL(int nVersion);

// Tells the callback of each stored option: the name of its store, its key and its value, ordered by store and key.
// Null for pStore takes every store. It ends early when the callback answers false. The number of options told of; -1
// if the store cannot be read.
using LY_OPTION_CALLBACK = bool (*)(void* pContext, const wchar_t* pStore, const wchar_t* pKey, const wchar_t* pValue);
LY_EXPORT int EnumerateLyOptions(const wchar_t* pStore, LY_OPTION_CALLBACK pCallback, void* pContext);
