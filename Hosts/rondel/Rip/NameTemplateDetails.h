// What the sources of NameTemplate share: texts as characters. Threads: functions without state.

#pragma once

#include <string>
#include <string_view>

namespace NameTemplateDetails
{
// A byte that is no UTF-8 becomes a lone surrogate, and such a one that byte again (UTF8.h).
std::u32string Decode(std::string_view str);
std::string Encode(const std::u32string& strText);

// Whether the character only changes the one ahead of it: an accent of its own, a variant, a later part of a Korean
// syllable. Of those scripts that file systems take apart; no table of all there are.
bool IsMark(char32_t n);

// To so many bytes of UTF-8 at most, between two characters, and then without blanks and dots at the ends.
void Cut(std::u32string& str, size_t nMaxBytes);
} // namespace NameTemplateDetails
