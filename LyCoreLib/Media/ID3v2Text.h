// Reading the texts of a body, wherever it lies.

#pragma once

#include "LyString.h"
#include <span>

namespace ID3v2Text
{
// As CID3v2Tag::DecodeString, which is this for a buffer.
LyString Decode(int nEncoding, std::span<const unsigned char> bytes, int& nPos, bool bOnlyOne);
} // namespace ID3v2Text
