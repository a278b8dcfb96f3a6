// Memory for the bytes of a binary value.
//
// A large block that is let go waits for the next one that is asked for. Who gives a picture to file after file asks
// for as much for each of them, and without the block that stays, the C library gives the pages of all buffers of a tag
// back to the system after each file.
// Threads: any.

#pragma once

#include <memory>

struct ID3V2_BLOCK // its bytes follow
{
    int m_nBytes; // for which it has room

    unsigned char* GetData() { return reinterpret_cast<unsigned char*>(this + 1); }
};

struct ID3V2_BLOCK_RELEASE
{
    void operator()(ID3V2_BLOCK* pBlock) const;
};
using ID3v2BlockPtr = std::unique_ptr<ID3V2_BLOCK, ID3V2_BLOCK_RELEASE>;

ID3v2BlockPtr TakeID3v2Block(int nBytes); // null: no memory
