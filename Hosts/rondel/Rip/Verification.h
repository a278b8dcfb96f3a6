// Verification: a rip compared with an answer of a database that was saved as a file earlier; nothing is asked over a
// network. Which database it is of, its content tells: AccurateRip's answers are blocks of bytes, CTDB's are XML.
//
// Errors:  HostError, a sentence with a way out, for a file that cannot be read or is no answer.
// Rule:    a sum of 0 never matches. Tracks taken from an earlier rip are compared at offset 0 only, by the sums that
//          the report has of them.
// Threads: any, while nobody changes the sums or the report.

#pragma once

#include "RipReport.h"
#include <string>

constexpr long long ANSWER_MAX_BYTES = 4 * 1024 * 1024; // a thousand pressings of 99 tracks, and far more XML than that

// Whether there is an answer in the file, ahead of a rip that takes its time. Throws HostError.
void CheckAnswerFile(const std::string& strFile);

// What the answer says of the rip. Notes are sentences for the user. Throws HostError as CheckAnswerFile does.
RIP_VERIFICATION VerifyWithFile(const std::string& strFile, const DiscChecksums& sums, const RIP_REPORT& report);
