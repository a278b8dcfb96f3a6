// Where the library keeps what belongs to the user (XDG Base Directory Specification 0.8).
//
// Shape:   names as the system holds them, bytes, with a slash at the end.
// Errors:  empty if neither the variable nor the home names an absolute folder: such values count as not set, and
//          nothing is ever written to a folder that was guessed.
// Threads: any, as long as nobody changes the environment meanwhile.

#pragma once

#include <string>

std::string GetConfigFolder(); // settings: $XDG_CONFIG_HOME/rondel/, or ~/.config/rondel/
std::string GetDataFolder();   // data: $XDG_DATA_HOME/rondel/, or ~/.local/share/rondel/
std::string GetStateFolder();  // logs and the like: $XDG_STATE_HOME/rondel/, or ~/.local/state/rondel/

// Makes the folder and those above it, for the user alone. True if it is there afterwards.
bool MakeFolder(const std::string& strFolder);
