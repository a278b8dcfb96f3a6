// What the reading of tags needs to unpack a part of a buffer where it lies.

#pragma once

namespace ID3v2Packing
{
// Copies without unsynchronisation: of each FF 00 the zero is left out, and counted in nRemoved. Stops at nLimit bytes
// of output or at the end of the input; a zero behind the last byte of output still counts. The bytes written, which
// are at most the smaller of nLimit and nBytes. pOut may be p.
int CopyUnsynchronized(const unsigned char* p, int nBytes, unsigned char* pOut, int nLimit, int& nRemoved);
} // namespace ID3v2Packing
