// How bytes go into the buffers of frames: as they are, or out of what is wrapped around them.

#pragma once

class LyBuffer;

namespace ID3v2Packing
{
// Appends bytes, if there are any; the buffer grows as for a writer of single bytes. Without memory it stays as it is.
void Append(LyBuffer& buffer, const void* p, int nBytes);

// Copies without unsynchronisation: of each FF 00 the zero is left out, and counted in nRemoved. Stops at nLimit bytes
// of output or at the end of the input; a zero behind the last byte of output still counts. The bytes written, which
// are at most the smaller of nLimit and nBytes. pOut may be p.
int CopyUnsynchronized(const unsigned char* p, int nBytes, unsigned char* pOut, int nLimit, int& nRemoved);
} // namespace ID3v2Packing
