// The zlib service (RFC 1950, 1951 and 1952).
//
// Threads: an object belongs to one thread at a time.

#pragma once

#include "ZLibHelper.h"

class ZLibService final : public IZLib
{
public:
    static constexpr int FORMAT_ZLIB = 1; // the only one

    // Null for a level outside -1 to 9 and for another format.
    IZLibBufferCompressor* CreateBufferCompressor(int nLevel, int nFormat) override;
    IZLibBufferDecompressor* CreateBufferDecompressor() override;

    // Null for what cannot be opened, is no regular file, or does not begin as a
    // gzip file.
    //
    // The file gives the content of all its members in a row; what follows the
    // last one and is no member is passed over. Damage and a premature end, the
    // check sum of a member included, end the content: Read gives what came
    // before them, then -1.
    IZLibFile* OpenFile(const wchar_t* pPath) override;
};
