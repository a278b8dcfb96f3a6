// The entries of a decoded frame, which are made when somebody asks.
//
// Decoding: of most frames nobody asks for anything, and those of a tag are many. Until the first question only the
//          body's bytes are kept. A map asks HashKey for each key that it looks for, and GetBucketBytes ahead of a
//          walk: there the entries are made, so that nobody who asks sees the difference. How many there will be is
//          known by the frame's type.
// Binary:  a binary value is published as base64 text, four bytes a character: 1.6 MB for a picture of 300 KB. Hardly
//          anybody asks for it, so that its text is made by itself, when it is asked for or walked over.
// Owner:   the bytes are a copy: those of a small body lie behind this object, those of a large one in a block. What
//          happens to the frame's body or its tag later does not change the value.
// Keys:    the frames of all tags share the names of their properties.
// Threads: as every map, one at a time; reading may make entries.

#pragma once

#include "ID3v2Block.h"
#include "MP3Tag.h"
#include "PropertyMap.h"
#include <span>

// The names in CID3v2Property.
enum ID3V2_PROPERTIES : int
{
    ID3V2_PROPERTY_VALUE,
    ID3V2_PROPERTY_TEXT_ENCODING,
    ID3V2_PROPERTY_DESCRIPTION,
    ID3V2_PROPERTY_LANGUAGE_ID,
    ID3V2_PROPERTY_MIME_TYPE,
    ID3V2_PROPERTY_PICTURE_TYPE,
    ID3V2_PROPERTIES_COUNT
};

// The body of a frame for its decoding: as the frame's flags left it, and where in it the layout begins.
struct ID3V2_PLAIN_BODY
{
    std::span<const unsigned char> bytes;
    int nStart = 0;
};

class ID3v2Properties final : public LyPropertyMap::PROPERTIES
{
public:
    // Done by each new tag: one in static storage, which may decode in its destructor, so ends ahead of the keys.
    static void MakeSharedKeys();

    // The entries for a frame of a type that has some. The caller deletes them.
    static ID3v2Properties* Make(ID3V2_FRAME_TYPES eType, const ID3V2_PLAIN_BODY& body);
    ~ID3v2Properties() override;
    static void operator delete(void* p) { ::operator delete(p); } // it is larger than its type tells

    // For the decoding, which adds each name once.
    void Add(ID3V2_PROPERTIES eName, LyString&& strValue);
    void Add(ID3V2_PROPERTIES eName, int nValue);
    void AddBinaryValue(int nOffset); // what stands in the body from there on

    bool GetBinaryValue(LyBuffer& bytes) const; // true if there are any; makes no text
    int GetBinaryValueBytes() const;            // how many they are, or -1 if the value is a text by now
    bool IsWithoutDescription() const;          // as far as can be told without decoding

    unsigned int HashKey(const wchar_t* pKey) const override;
    int HashIndexBase(MAP_BUCKET_BASE* pBucket) const override;
    int GetBucketBytes() const override;
    BUCKET* CreateBucket(const wchar_t* pKey) override;
    void DestroyBucket(BUCKET* pBucket, bool bFree) override;

private:
    enum STATES : unsigned char
    {
        STATE_PACKED, // nothing is decoded
        STATE_BINARY, // all entries are there, but the text of the value is empty yet
        STATE_DECODED // and the bytes are gone, if they were large
    };

    // What few frames have: a body that is too large to lie behind its properties, and entries, which lie behind this.
    struct MORE
    {
        static std::unique_ptr<MORE> Make(int nEntries); // has room for so many
        static void operator delete(void* p) { ::operator delete(p); }
        unsigned char* GetEntry(int nIndex)
        {
            return reinterpret_cast<unsigned char*>(this + 1) + nIndex * ENTRY_BYTES;
        }

        static constexpr int ENTRY_BYTES = sizeof(BUCKET);
        ID3v2BlockPtr pBlock; // the body; without memory for it the values are empty
        int nEntries = 0;     // which were made
    };
    static_assert(alignof(BUCKET) <= alignof(MORE));

    ID3v2Properties(ID3V2_FRAME_TYPES eType, const ID3V2_PLAIN_BODY& body);
    static bool IsSmall(int nBytes);
    unsigned char* GetSmallBody();
    std::span<const unsigned char> GetBody() const;
    void DropLargeBody();
    void* TakeEntry();
    bool IsInPlace(const BUCKET* pBucket) const;
    void Ask() const;
    void Decode();
    void MakeText() const;

    std::unique_ptr<MORE> m_pMore; // null: a small body, not decoded
    int m_nBytes;                  // of the body
    int m_nOffset;                 // in the body: of the layout, and once that is decoded, of the binary value
    signed char m_nType;           // ID3V2_FRAME_TYPES
    STATES m_eState = STATE_PACKED;
    unsigned char m_arySmall[6]{}; // a small body begins here, in what the object has left, and goes on behind it
};
static_assert(sizeof(ID3v2Properties) == 56, "its share of a tag of many small frames");
