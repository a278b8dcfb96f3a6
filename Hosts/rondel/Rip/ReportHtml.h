// ReportHtml: the report of a rip as a page to look at: the verdict on top, the disc and the drive, the read speed over
// the disc, and for each piece the waveform with the places that were read again or are in doubt, and the loudness.
//
// Shape:   one file. It needs nothing from outside and says so itself (Content-Security-Policy), is read without the
//          script that adds values under the pointer, and is well-formed as XML, too. UTF-8.
// Size:    series are thinned to what a screen can show; a disc of 80 minutes stays below 1.5 MB.
// Errors:  none; what the report doesn't know is a dash. Texts of the disc are hostile: they come escaped, and what is
//          no UTF-8 or a control character is replaced.
// Threads: any.

#pragma once

#include "RipReport.h"
#include <string>

std::string MakeHtmlReport(const RIP_REPORT& report);
