// The fields of a tag as people read and write them: in UTF-8, under the names of the field table.
//
//     Track #                     "3/12", with the total
//     Date, Original Date         as the frame has it: "1999", "1999-05-30"
//     Replay Gain Track, ...      "-6.48 dB"
//     Image File                  "image/jpeg, 12345 bytes": what there is, not its bytes
//     names without a row         a user text (TXXX) of that description
//
// Threads: as the tag.

#pragma once

#include "MP3Tag.h"
#include <string>
#include <utility>
#include <vector>

using TAG_FIELDS = std::vector<std::pair<std::string, std::string>>; // name and value; an empty value: no such field

constexpr const char* TAG_PICTURE_FIELD = "Image File";
constexpr const char* TAG_DATE_FIELD = "Date";
constexpr const char* TAG_YEAR_FIELD = "Year";
constexpr const char* TAG_ORIGINAL_DATE_FIELD = "Original Date";
constexpr const char* TAG_ORIGINAL_YEAR_FIELD = "Original Year";

// All fields that have a value, in the order of the table, then user texts that no row knows.
TAG_FIELDS CollectTagFields(CID3v2Tag& tag);
// One of them, by its own name; empty if there is none. Adds no rows to the tag's table.
std::string GetTagField(CID3v2Tag& tag, const std::string& strName);

// The field's own name for any spelling of it: the case, blanks, "_", "-" and "#" do not count, and common names of
// others ("Title", "TrackNumber", "Year", "REPLAYGAIN_TRACK_GAIN") lead to the field. What leads nowhere is the name of
// a user text and stays as it is. Throws HostError for what can be no name.
std::string FindTagFieldName(const CID3v2Tag& tag, const std::string& strSpelling);
// Whether the table has a field of that own name.
bool IsTableField(const std::string& strName);

// Text between the outside and tags, in which a character beyond U+FFFF is two, a surrogate pair: so it comes out of a
// frame, and so it must go in. What is no UTF-8, or holds a zero, is a HostError of the field.
LyString ToTagText(const std::string& strText, const std::string& strField);
std::string FromTagText(const wchar_t* pText);
