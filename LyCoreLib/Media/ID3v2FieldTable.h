// The fields that every tag knows: which frame stands for which of the player's field names.
//
// Shape:   one row to a pair of name and frame, in the order in which the names are shown. Rows of one name stand
//          together, the one that is asked first in front.
// Format:  ID3v2.3.0, 4, and ID3v2.4.0-frames, 4; the frames of podcasts and of sorting that players have agreed on;
//          ReplayGain 2.0; the user texts that MusicBrainz and AcoustID publish for their identifiers.
// Threads: any; nothing here changes.

#pragma once

#include <span>

struct ID3V2_FIELD_ROW
{
    const char* pID;             // of the frame, four characters
    const wchar_t* pName;        // of the field
    const wchar_t* pDescription; // of the frame
    int nFlags;                  // ID3V2_FIELD_FLAGS
    int nPictureType;            // for a picture; CID3v2Field::ANY_PICTURE_TYPE otherwise
};

std::span<const ID3V2_FIELD_ROW> GetID3v2FieldRows();
