// One line of a CUE sheet, taken apart. The format knows no escapes: a quotation mark is just a mark.

#pragma once

#include "SectorSource.h"
#include <string>
#include <string_view>

// The text without blanks and tabs at its ends.
std::string_view TrimBlanks(std::string_view str);

// Takes the first word off strRest, which starts behind the blanks that follow it. Empty at the end of the line.
std::string_view TakeWord(std::string_view& strRest);

// Takes the next line off strText, without its end: a carriage return, a line feed, or both.
std::string_view TakeLine(std::string_view& strText);

// A text argument: from the first quotation mark to the last, so that marks within it stay. A missing mark at either
// end is forgiven; without any the whole is the text.
std::string UnquoteArgument(std::string_view strArgument);

// The arguments of FILE: a name, mostly in quotation marks, and a type. Forgives a missing mark, a missing type (the
// extension decides) and types unknown to the format such as FLAC (the decoder decides). False without a name.
bool ParseFileArguments(std::string_view strArguments, std::string& strName, SECTOR_SOURCE_KIND& kind);
