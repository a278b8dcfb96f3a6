// A line of base64 text from the bytes that fill it, in two ways that give the same. For LyStringBase64.cpp and its
// test.

#pragma once

namespace LyStringBase64Details
{
constexpr int LINE_CHARS = 64;
constexpr int LINE_BYTES = LINE_CHARS / 4 * 3;

// Writes LINE_CHARS characters from LINE_BYTES bytes, and nothing behind them.
using ENCODE_LINE = void (*)(wchar_t* pOut, const unsigned char* p);

void EncodeLine(wchar_t* pOut, const unsigned char* p); // on any machine
ENCODE_LINE GetVectorEncodeLine();                      // 16 characters at a time; null if this machine cannot
} // namespace LyStringBase64Details
