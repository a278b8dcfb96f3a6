// The seal of a log: the SHA-256 of all bytes ahead of it, at the log's end.
//
// Shape:   text:  a last line "Seal: SHA-256 " and 64 lower-case hexadecimal digits
//          JSON:  a last member "seal", its value the text "SHA-256 " and the digits, on a line of its own; then "}"
// What it proves: that the log has not changed since, by accident or by a careless hand. It is no signature: whoever
//          changes a log on purpose can seal it anew.
// Threads: any.

#pragma once

#include <string>
#include <string_view>

enum LOG_KIND : int
{
    LOG_TEXT = 0,
    LOG_JSON = 1 // it begins with a brace
};

enum LOG_SEAL_STATE : int
{
    LOG_SEAL_RIGHT = 0,
    LOG_SEAL_WRONG = 1,  // the bytes ahead of it have changed, or it has
    LOG_SEAL_MISSING = 2 // the log does not end with one: it was cut, or something was written behind it
};

LOG_KIND GetLogKind(std::string_view strLog);
LOG_SEAL_STATE CheckSeal(std::string_view strLog);

constexpr size_t LOG_SEAL_BYTES = 100; // that a seal adds, at most

// The log with its seal. The text ends with LF.
std::string SealTextLog(std::string strLog);
// The object begins with a brace, has a member at least, and ends with one on a line of its own.
std::string SealJsonLog(std::string strLog);
