// Text of the system as one line for a terminal or a log.

#pragma once

#include <cstddef>
#include <string>

// Appends the text as UTF-8. Control characters, those of line and direction among them, become "\n", "\t", "\r",
// "\x1b" or "\u2028"; what is no character at all becomes U+FFFD. Null is the empty text.
void AppendOneLine(std::string& strOut, const wchar_t* pText, size_t nChars);
void AppendOneLine(std::string& strOut, const wchar_t* pText);

// One of those that AppendOneLine writes in another way.
bool IsControlCharacter(wchar_t c);

// The columns of a terminal that a character takes: 2 for the wide ones of East Asia, 0 for marks that join the
// character in front, otherwise 1.
int GetColumns(wchar_t c);
