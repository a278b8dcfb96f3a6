// The numeric errors of encoders, and their texts.

#pragma once

#include "LyString.h"

enum ENCODER_ERROR : int
{
    ENCODER_REFUSED = -1, // the encoder took no data and gave no reason
    ENCODER_OK = 0,
    ENCODER_INPUT_OPEN = 1,
    ENCODER_INPUT_READ = 2,
    ENCODER_OUTPUT_OPEN = 3,
    ENCODER_OUTPUT_WRITE = 4,
    ENCODER_NO_MEMORY = 5,
    ENCODER_MISSING_FILE = 6,
    ENCODER_PIPE = 7,
    ENCODER_NO_BUFFER_INPUT = 8,
    ENCODER_NO_THREAD = 9,
    ENCODER_DISK_FULL = 10
};

// The text of an error, untranslated. Every other number has the text of an unknown error.
LyString GetEncoderErrorText(long nError);
