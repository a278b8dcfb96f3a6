#include "EncoderError.h"
#include <iterator>

namespace
{
constexpr const wchar_t* s_aryTexts[] = {
    L"Ok",
    L"Error opening input file.",
    L"Error reading input file.",
    L"Error opening output file.",
    L"Error writing output file.",
    L"Error allocating memory.",
    L"Missing a necessary file for encoder operation.",
    L"Error piping data to external application.",
    L"Encoder doesn't support buffer input.",
    L"Error starting a thread.",
    L"Out of disk space.",
};
static_assert(std::size(s_aryTexts) == ENCODER_DISK_FULL + 1);
constexpr const wchar_t* UNKNOWN_TEXT = L"Unknown error from the encoder.";
} // namespace

LyString GetEncoderErrorText(long nError)
{
    const bool bKnown = nError >= ENCODER_OK && nError <= ENCODER_DISK_FULL;
    return LyString(bKnown ? s_aryTexts[nError] : UNKNOWN_TEXT);
}
