// What the body of a frame holds, as MP3Tag.h tells it for each type.

#pragma once

#include "MP3Tag.h"
#include <span>

class ID3v2Properties;

// Sets the properties of a frame of that type. nStart: where in the body its layout begins.
void DecodeID3v2Body(ID3V2_FRAME_TYPES eType, std::span<const unsigned char> body, int nStart,
                     ID3v2Properties& properties);
// How many they are, whatever the body; 0 for an opaque frame.
int GetID3v2PropertyCount(ID3V2_FRAME_TYPES eType);
bool HasID3v2Description(ID3V2_FRAME_TYPES eType);
