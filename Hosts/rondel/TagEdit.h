// TagEdit: what a user wants to change in a tag, checked and carried out. The values are those of TagFields.h.
//
// Errors:  HostError for a value that the field does not take. The tag may then be changed in part; nobody saves it.
// Threads: as the tag.

#pragma once

#include "TagFields.h"
#include <memory>
#include <string>

// An image that players show, in memory.
struct TAG_PICTURE
{
    LyBuffer image;
    std::string strMime; // by what the bytes are, not by the name
};
// HostError for what is no such image, or more than a tag can hold.
std::shared_ptr<const TAG_PICTURE> LoadTagPicture(const std::string& strPath);

struct TAG_EDIT
{
    TAG_FIELDS changes;                          // in any spelling of the names; an empty value takes the field out
    std::shared_ptr<const TAG_PICTURE> pPicture; // null: none is given

    bool IsEmpty() const { return changes.empty() && pPicture == nullptr; }
};

// What gives a tag these fields, those without a value left out, and a picture of that name if there is one. HostError
// as LoadTagPicture.
TAG_EDIT MakeTagEdit(const TAG_FIELDS& fields, const std::string& strPicture);

// A field that has its value already is left as it is, and a tag of such fields is not changed at all. Where the edit
// changes anything, tag.m_bDirty is set.
void ApplyTagEdit(CID3v2Tag& tag, const TAG_EDIT& edit);
