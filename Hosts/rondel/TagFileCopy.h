// The steps of writing a file with a tag anew. Failures to read and write are those that the descriptors know.

#pragma once

#include "DescriptorReader.h"
#include "WAVInfo.h"

namespace TagFileCopy
{
// ID3v2.4.0-structure, 3.1: a size of 28 bits behind the header.
constexpr int MAX_TAG_BYTES = (1 << 28) - 1 + CID3v2Tag::HEADER_BYTES;
// The root length has 32 bits.
constexpr long long MAX_WAV_BYTES = 0xFFFFFFFFLL + CIFFChunk::HEADER_BYTES;

// Appends nBytes from a position in one file to the other.
void CopyBytes(DescriptorReader& from, long long nPosition, long long nBytes, DescriptorReader& to);

// The chunks of a WAV file that info has open, each with its pad byte, with the tag and then the UITS chunk moved to
// the end. So nothing has to move when the tag changes its length: a move would leave pad bytes out.
void CopyChunks(CWAVInfo& info, DescriptorReader& from, DescriptorReader& to);

// Saves the tag of info, which has the copy open; a tag without frames goes. The copy has an even length then. False if
// it could not be: the copy knows why, unless there was no memory.
bool SaveTag(CWAVInfo& info, DescriptorReader& copy);

// What stands behind the last chunk of the original and is none, to the end of the copy, and the root length.
void CopyTrailer(CWAVInfo& info, DescriptorReader& from, DescriptorReader& to);
} // namespace TagFileCopy
