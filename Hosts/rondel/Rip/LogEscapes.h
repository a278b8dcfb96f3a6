// Text from outside in a line of a log or of a listing: it cannot end the line, move the cursor or turn the direction
// of writing.
//
// Shape:   a backslash becomes two; each byte of a control character, of a mark of direction, of another character
//          that cannot be seen, and of what is no UTF-8 becomes \x and two upper-case hexadecimal digits.
// Threads: any.

#pragma once

#include <optional>
#include <string>
#include <string_view>

std::string EscapeForLine(std::string_view str);
// Empty for what EscapeForLine cannot have made.
std::optional<std::string> UnescapeLine(std::string_view str);
