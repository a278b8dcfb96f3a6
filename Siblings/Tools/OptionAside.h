// Takes a broken or foreign options file out of the way, so that a fresh one can begin and nothing is lost.
//
// Files:     options.sqlite becomes options.sqlite.damaged-1, or the first number that is free; what SQLite keeps
// beside
//            it goes along under the same name.
// Processes: one at a time does it, and it looks at the file again before it does, so that the fresh file of one is not
//            taken away by another that found the broken one as well.
// Errors:    false if the file could not be moved.

#pragma once

#include <string>

// True if no broken file stands in the way any more. strKeptAs names the file that was kept; it is empty if somebody
// else has kept it meanwhile.
bool KeepOptionsAside(const std::string& strFile, std::string& strKeptAs);
