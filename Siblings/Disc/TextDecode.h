// Text of unknown origin to UTF-8: sheets come from many systems and many years, and say nothing of their encoding.

#pragma once

#include <string>
#include <string_view>

// True for well-formed UTF-8 (RFC 3629: no overlong forms, no surrogates, nothing above U+10FFFF).
bool IsValidUTF8(std::string_view strBytes);

// Each byte becomes one character. 80h to 9Fh are taken as Windows-1252 has them: what calls itself Latin-1 and uses
// these bytes means quotation marks and dashes, never control characters.
std::string Latin1ToUTF8(std::string_view strBytes);

// A byte-order mark decides (UTF-8, UTF-16 of either order) and is taken off. Without one the bytes are UTF-8 if they
// are well-formed, else Latin-1. The result is always well-formed.
std::string DecodeText(std::string_view strBytes);

// Adds one character. What is no character (a surrogate, a number above U+10FFFF) becomes U+FFFD.
void AppendUTF8(std::string& strText, char32_t nCharacter);

// The text with capitals made small: ASCII, Latin-1, Latin Extended-A, Greek and Cyrillic. For comparing names of files
// that wandered between systems, not for sorting. Malformed bytes stay as they are.
std::string FoldCase(std::string_view strText);

// True if both are the same, but for the case of ASCII letters. For keywords.
bool EqualNoCase(std::string_view strA, std::string_view strB);
