// The log of a rip as JSON, and the way back: whole reports are kept in it when a rip is to go on later.
//
// Shape:   UTF-8, one object, indented by two, its members always in the same order, the last one the seal (LogSeal.h).
//          Docs/LOGS.md describes all keys. What is not known is null or an empty text; a number that JSON cannot write
//          stands as one of the texts "-inf", "inf" and "nan". Bytes that are no UTF-8 become replacement characters.
// Errors:  ReadReport throws HostError, one sentence that names what is wrong and where.
// Threads: any.

#pragma once

#include "RipReport.h"
#include <string>

std::string MakeJsonLog(const RIP_REPORT& report);
// The same and the series, from which a rip that was broken off goes on, and the HTML report can be made again.
std::string MakeStateText(const RIP_REPORT& report);

// From what either of them made. It takes nothing that was cut or changed since, and nothing whose sectors no disc has.
RIP_REPORT ReadReport(const std::string& strJson);
// The same for text that may have lost its seal.
RIP_REPORT ReadUnsealedReport(const std::string& strJson);
