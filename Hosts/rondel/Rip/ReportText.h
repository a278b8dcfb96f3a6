// The log of a rip as text, in the manner collectors know: what was read, how, with which doubts, and what came out.
//
// Shape:   UTF-8, lines that end with LF, meant for 100 columns. The last line is the seal (LogSeal.h). Docs/LOGS.md
//          describes the whole of it.
// Hostile: whatever comes from the disc stands behind a label on its line: LogEscapes.h keeps it from making lines.
// Threads: any.

#pragma once

#include "RipReport.h"
#include <string>

std::string MakeTextLog(const RIP_REPORT& report);
