// What a file's tag holds, for people and for programs, and how it differs from what it would be.

#pragma once

#include "TagFields.h"
#include "TagFile.h"
#include <nlohmann/json_fwd.hpp>

void PrintTags(TagFile& file);
nlohmann::ordered_json DescribeTags(TagFile& file);

// The lines by which the fields differ, "-" ahead of what goes and "+" ahead of what comes.
void PrintTagDifference(const std::string& strPath, const TAG_FIELDS& before, const TAG_FIELDS& after);
