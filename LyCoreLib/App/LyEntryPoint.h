// The two exports that every library of the system has. They bracket the library's life in its host and are counted.
// Threads: any; no lock is taken.

#pragma once

#include "GlobalMacros.h"

LY_EXPORT bool Attach(HINSTANCE__* hInstance); // false if the library could not start; nothing to do without an LyApp
// The last one unloads the sibling libraries: every object that the library gave out is gone by then.
LY_EXPORT void Detach();
