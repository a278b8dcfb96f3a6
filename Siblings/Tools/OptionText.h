// The texts of options between wide characters and the bytes that the store's file holds.
//
// Shape:   UTF-8. A lone surrogate, which no UTF-8 has, is kept in the three bytes that its number would take, so that
//          every text up to U+10FFFF comes back as it went in. Any value beyond becomes U+FFFD.
// Errors:  a byte that belongs to no character, as another program may have written it, becomes U+DC00 + byte.
// Threads: functions without state.

#pragma once

#include <string>
#include <string_view>

std::string EncodeOptionText(std::wstring_view strWide);
std::wstring DecodeOptionText(std::string_view strBytes);
