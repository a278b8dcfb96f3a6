// The tags that an encoder is given, in UTF-8, and what they are called in the formats.
//
// A tag's name is free text; case and blanks do not count. Those of the table below have names of their own in ID3v2;
// every other one goes into a Vorbis comment of its name, and into a TXXX frame.

#pragma once

#include <string>
#include <string_view>
#include <vector>

struct ENCODER_TAG
{
    std::string strName; // as it was given
    std::string strValue;
    std::string strKey; // by which it is found: "Year" and "Date" are one tag
};

class EncoderTags
{
public:
    // An empty value removes the tag. One that is there under another name of its own, in capitals or not, is replaced.
    void Set(std::string_view strName, std::string_view strValue);
    const std::string* Find(std::string_view strName) const; // null if it is not there
    const std::vector<ENCODER_TAG>& GetAll() const { return m_aryTags; }

private:
    std::vector<ENCODER_TAG> m_aryTags;
};

// The name of a Vorbis comment: "Track" is TRACKNUMBER, "Album Artist" is ALBUMARTIST. What the format does not allow
// in a name (all but 20h to 7Dh without "=") becomes "_".
std::string EncoderVorbisName(std::string_view strTagName);
// The text frame of ID3v2.3 with this meaning, or null. "TXXX:NAME" is a user text that others look for by its name.
const char* EncoderID3Frame(std::string_view strTagName);
