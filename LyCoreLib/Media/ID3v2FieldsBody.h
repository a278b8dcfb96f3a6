// How a value becomes the body of a frame.

#pragma once

#include "LyArray.h"
#include "LyString.h"

class CID3v2Field;
class LyBuffer;

struct ID3v2FrameValue
{
    LyString strText;        // one value, for the frames that hold no more
    LyStringArray aryValues; // for those that hold text
    int nEncoding = 0;       // ID3V2_FRAME_TEXT_ENCODINGS: 0 or 1
};

// Appends the body of a frame for that row. Nothing, if there is none: for an opaque frame, and for a picture whose
// file, which the text names, cannot be loaded.
void BuildID3v2FrameBody(LyBuffer& body, const CID3v2Field& row, const ID3v2FrameValue& value);
