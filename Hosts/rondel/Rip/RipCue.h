// The cue sheet of an image that a rip made: the tracks of one audio file.
//
// Errors:  HostError.

#pragma once

#include "RipReport.h"
#include <string>

// strAudio is the file's name as the sheet is to have it.
void WriteImageCue(const std::string& strPath, const RIP_REPORT& report, const std::string& strAudio);
