// A command line as its arguments. No shell takes part: nothing is expanded but the placeholders below, and what is put
// in for them stays one argument, whatever characters it holds.
//
//   blanks        divide arguments
//   '...'         takes everything as it stands
//   "..."         takes everything as it stands but \" and \\  (backslash ahead of other characters: as it stands)
//   \c            outside of quotes: the character c
//
//   %o  the output file        %p  the picture file, empty without one
//   %r  sample rate in Hz      %c  channels      %b  bits of a sample
//   %{Title}  a tag, empty without it            %%  a per cent sign
//
// Errors: false, and an English sentence.

#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

// Answers a placeholder: its letter, or '{' and the name of a tag. False if there is no such placeholder.
using ENCODER_PLACEHOLDER = std::function<bool(char cKind, std::string_view strName, std::string& strText)>;

// At least one argument, or an error.
bool EncoderSplitCommand(std::string_view strCommand, std::vector<std::string>& aryArguments, std::string& strError);
bool EncoderExpandArgument(std::string_view strArgument, const ENCODER_PLACEHOLDER& placeholder,
                           std::string& strExpanded, std::string& strError);
