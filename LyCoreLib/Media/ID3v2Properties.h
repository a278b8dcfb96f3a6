// The entries of a decoded frame.
//
// Binary:  a binary value is published as base64 text, four bytes a character: 1.6 MB for a picture of 300 KB. Hardly
//          anybody asks for it, so that the bytes are kept, and the text is made once somebody asks for the value or
//          walks over the entries. Nobody who asks sees the difference: a map asks HashKey for each key that it looks
//          for, and GetBucketBytes ahead of a walk.
// Owner:   the bytes are a copy. What happens to the body that they came from does not change the value.
// Keys:    the frames of all tags share the names of their properties.
// Threads: as every map, one at a time; reading may make the text.

#pragma once

#include "ID3v2Block.h"
#include "PropertyMap.h"

class LyBuffer;

class ID3v2Properties : public LyPropertyMap::PROPERTIES
{
public:
    // Done by each new tag: one in static storage, which may decode in its destructor, so ends ahead of the keys.
    static void MakeSharedKeys();

    void Set(const wchar_t* pName, const LyString& strValue);
    void Set(const wchar_t* pName, int nValue);
    void SetBinaryValue(const unsigned char* p, int nBytes); // CID3v2Property::VALUE; below 1 byte it is empty
    bool GetBinaryValue(LyBuffer& bytes) const;              // true if there are any; makes no text

    unsigned int HashKey(const wchar_t* pKey) const override;
    int HashIndexBase(MAP_BUCKET_BASE* pBucket) const override;
    int GetBucketBytes() const override;
    BUCKET* CreateBucket(const wchar_t* pKey) override;

private:
    void MakeText() const;

    mutable ID3v2BlockPtr m_pBytes; // null once the text is made
    mutable int m_nBytes = 0;
};
