// RipLeftovers: files in the making that a rip has left behind because it was killed, and could not clear them away.
//
// Whose:   names that begin with ".rondel" and that an encoder or the proof of a folder makes are the program's own,
//          and so is a half-written state. "NAME.part" may be anybody's: beside a name of the rip it is the rip's own
//          if the state of the same command is there and does not name it among those that had been there before.
// In use:  what any process has open is not touched, nor anything where the system does not tell that.
// Errors:  none; what cannot be removed stays, and is in nobody's way.
// Threads: one at a time.

#pragma once

#include "RipNames.h"
#include <string>
#include <vector>

// In all folders that the rip has files in. pState is the state of the same command; null if there is none.
void RemoveLeftovers(const RIP_NAMES& names, const RIP_REPORT* pState);

// "NAME.part" and "NAME.part7" that stand beside the names of the rip, relative to its folder.
std::vector<std::string> ListPartialFiles(const RIP_NAMES& names);
