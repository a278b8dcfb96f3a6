// Why a URL could not be read, in a sentence that says what can be done about it. English; for GetInfo("Error").
// Threads: functions without state.

#pragma once

#include <curl/curl.h>
#include <string>

// Of a transfer that failed. pDetail is the transport's own text, which may be empty.
std::string GetTransferErrorText(CURLcode eResult, const char* pDetail, const std::string& strHost, int nTimeoutMS);

std::string GetTimeoutErrorText(const std::string& strHost, int nTimeoutMS);

// Of an answer that is none to the question, by its status.
std::string GetStatusErrorText(int nStatus, const std::string& strHost);
