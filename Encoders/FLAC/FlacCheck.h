// Whether a FLAC file holds the audio that it should: it is decoded from its first byte to its last, and the MD5 sum of
// what came out is compared with the one in its header.

#pragma once

#include "EncoderOutput.h"
#include "EncoderPCM.h"
#include <string>

std::string CheckFlac(EncoderBytes& file, const ENCODER_FORMAT& format, long long nFrames); // empty, or what is wrong
