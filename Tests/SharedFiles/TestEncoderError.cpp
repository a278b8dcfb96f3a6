#include "EncoderError.h"
#include <climits>
#include <gtest/gtest.h>

namespace
{
struct ERROR_CASE
{
    long nError;
    const wchar_t* pText;
};

constexpr const wchar_t* UNKNOWN = L"Unknown error from the encoder.";
const ERROR_CASE s_aryCases[] = {
    {0, L"Ok"},
    {1, L"Error opening input file."},
    {2, L"Error reading input file."},
    {3, L"Error opening output file."},
    {4, L"Error writing output file."},
    {5, L"Error allocating memory."},
    {6, L"Missing a necessary file for encoder operation."},
    {7, L"Error piping data to external application."},
    {8, L"Encoder doesn't support buffer input."},
    {9, L"Error starting a thread."},
    {10, L"Out of disk space."},
    {11, UNKNOWN},
    {-1, UNKNOWN},
    {0x100000000L, UNKNOWN}, // no code is cut to 32 bits
    {LONG_MIN, UNKNOWN},
    {LONG_MAX, UNKNOWN},
};
} // namespace

TEST(EncoderError, EachCodeHasItsText)
{
    for (const ERROR_CASE& row : s_aryCases)
        EXPECT_STREQ(row.pText, GetEncoderErrorText(row.nError)) << row.nError;
}
