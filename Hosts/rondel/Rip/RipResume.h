// RipResume: the state of a rip that was broken off, and how the next one goes on behind it.
//
// Shape:   the state is a report in JSON with its series, written anew after each piece that is whole, and gone once
//          the log is written. What was whole is taken if each of its files has the length and the sum of the
//          state; everything else is read again.
// Sums:    lossless files are read, so that the disc's sums and comparisons with databases know their tracks, too. Of
//          others the sums of the tracks remain as they were.
// Errors:  HostError, with a way out, for a state of another disc or of other wishes.
// Threads: one at a time.

#pragma once

#include "RipNames.h"
#include <string>

// What the state is a state of; throws unless the new rip, as planned, is the same.
RIP_REPORT ReadRipState(const std::string& strPath, const RIP_REPORT& planned, const RIP_NAMES& names);

// Takes over what is whole, as RIP_PIECE_TAKEN. Notes tell what is not.
void TakeWholePieces(const RIP_REPORT& state, RIP_REPORT& report, const RIP_NAMES& names, DiscChecksums& sums);
