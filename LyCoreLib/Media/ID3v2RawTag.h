// The bytes of a tag, to which large bodies of its frames refer instead of having copies of their own.
//
// Owner:   the tag owns the buffer with the bytes, and shares this object with its frames.
// Life:    frames that somebody took out of their tag may live on when it is loaded anew or ends. Ahead of that the tag
//          says Keep, and what is kept is a copy.
// Threads: those of the tag; one at a time.

#pragma once

#include "LyBuffer.h"
#include <memory>

class ID3v2RawTag
{
public:
    explicit ID3v2RawTag(const LyBuffer& raw) : m_pBuffer(&raw), m_pBytes(raw.GetData()), m_nBytes(raw.GetSize()) {}
    ID3v2RawTag(const ID3v2RawTag&) = delete;
    ID3v2RawTag& operator=(const ID3v2RawTag&) = delete;

    // What stands from nOffset on; null if the buffer has been given other memory, which its owner does not do.
    const unsigned char* GetBytes(int nOffset) const { return IsThere() ? m_pBytes + nOffset : nullptr; }
    void Keep();

private:
    bool IsThere() const { return m_pBuffer->GetData() == m_pBytes && m_pBuffer->GetAllocated() >= m_nBytes; }

    const LyBuffer* m_pBuffer;
    const unsigned char* m_pBytes;
    int m_nBytes;
    LyBuffer m_Kept;
};
using ID3v2RawTagPtr = std::shared_ptr<ID3v2RawTag>;
