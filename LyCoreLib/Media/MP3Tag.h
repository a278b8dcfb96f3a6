// CID3v2Tag: an ID3v2 tag of version 2.2, 2.3 or 2.4, read from a buffer, edited by field names, written to a buffer.
//
// Shape:   a tag is a list of frames, each with its header and its body as they go back to the file, so that a frame
//          nobody here understands survives, and with its decoded values in a property map. Over the frames lies a
//          table of field rows, which says which frame stands for which of the player's field names.
// Format:  ID3v2.2.0, ID3v2.3.0, ID3v2.4.0-structure and -frames; the comments tell what is decided beyond them.
// Units:   bytes. Numbers in a file are big-endian or sync-safe: 7 bits to a byte, big-endian, 28 bits in all.
// Errors:  a bad header means no tag, a bad frame ends the list, a body that does not decode stays as it is. None of
//          it is reported. Fields answer false or an empty text.
// Owner:   the tag owns its frames and its rows.
// Threads: a tag belongs to one thread at a time.

#pragma once

#include "LyArray.h"
#include "LyBuffer.h"
#include "LyMap.h"
#include "LyString.h"
#include "PropertyMap.h"
#include <span>

// ID3v2.4.0-structure, 4: the first byte of a frame that holds text.
enum ID3V2_FRAME_TEXT_ENCODINGS : int
{
    ID3V2_FRAME_TEXT_ENCODING_ANSI = 0,  // Latin-1
    ID3V2_FRAME_TEXT_ENCODING_UTF16 = 1, // with a mark of byte order
    ID3V2_FRAME_TEXT_ENCODING_UTF16BE = 2,
    ID3V2_FRAME_TEXT_ENCODING_UTF8 = 3
};

// What the body of a frame looks like; the rows below name the properties of the decoded form.
enum ID3V2_FRAME_TYPES : int
{
    ID3V2_FRAME_TYPE_OPAQUE = -1,      // kept raw; no properties
    ID3V2_FRAME_TYPE_TEXT = 0,         // T...: "Text Encoding", "Value"
    ID3V2_FRAME_TYPE_USER_TEXT = 1,    // TXXX: "Text Encoding", "Description", "Value"
    ID3V2_FRAME_TYPE_COMMENT = 2,      // COMM, USLT: as TXXX, and "Language ID"
    ID3V2_FRAME_TYPE_PICTURE = 3,      // APIC: as TXXX, and "Mime Type", "Picture Type"; the value is base64
    ID3V2_FRAME_TYPE_RATING = 4,       // POPM: "Value", 0 to 5
    ID3V2_FRAME_TYPE_PODCAST_FLAG = 5, // PCST: "Value", a number
    ID3V2_FRAME_TYPE_URL = 6,          // W..., but not WXXX: "Value"
    ID3V2_FRAME_TYPE_PRIVATE = 7       // PRIV: "Description", which is the owner, and "Value" in base64
};

// Flags of a tag header.
enum ID3V2_TAG_FLAGS : int
{
    ID3V2_TAG_FLAG_FOOTER = 0x10,
    ID3V2_TAG_FLAG_EXPERIMENTAL = 0x20,
    ID3V2_TAG_FLAG_EXTENDED_HEADER = 0x40,
    ID3V2_TAG_FLAG_UNSYNCHRONIZED = 0x80
};

// Flags of a frame header, the two bytes taken as a little-endian number: these lie in the second byte, where
// ID3v2.4.0-structure, 4.1.2, has them.
// Deliberate: they are looked for there in a tag of any version, and the bits of ID3v2.3 (0x80 for compression and 0x40
// for encryption) nowhere. Such a frame keeps its raw body, and goes back to the file unharmed.
enum ID3V2_FRAME_FLAGS : int
{
    ID3V2_FRAME_FLAG_DATA_LENGTH = 0x0100,
    ID3V2_FRAME_FLAG_UNSYNCHRONIZED = 0x0200,
    ID3V2_FRAME_FLAG_COMPRESSED = 0x0800
};

// What a row of the field table says of its field. Without a WRITE flag a row finds frames, but never makes one.
enum ID3V2_FIELD_FLAGS : int
{
    ID3V2_FIELD_TOTAL = 0x1,                // the value may have a total behind a "/"
    ID3V2_FIELD_GENRE = 0x2,                // translated on reading
    ID3V2_FIELD_GAIN = 0x4,                 // replay gain in decibels
    ID3V2_FIELD_PEAK = 0x8,                 // replay gain peak
    ID3V2_FIELD_LIST = 0x10,                // several values, split at ";" by Set
    ID3V2_FIELD_DATE = 0x20,                // ISO 8601 in the frame, a floating-point date in the field
    ID3V2_FIELD_BASE64 = 0x40,              // the frame holds the base64 form of UTF-8 text
    ID3V2_FIELD_ORDERED = 0x10000,          // takes part in the frame order of saving
    ID3V2_FIELD_KEEP = 0x20000,             // Set leaves existing frames of this row alone
    ID3V2_FIELD_WRITE_23 = 0x40000,         // Set writes this row in a tag below version 2.4
    ID3V2_FIELD_WRITE_24 = 0x80000,         // Set writes this row in a tag of version 2.4
    ID3V2_FIELD_ANY_DESCRIPTION = 0x100000, // a frame matches whatever its description
    ID3V2_FIELD_ANY_FLAGS = -1              // as a mask: every row
};

// ID3v2.4.0-structure, 3.1: the ten bytes in front of a tag.
struct CID3v2TagHeader
{
    int GetSize() const; // an ordinary integer, once the header was read
    void SetSize(int nBytes);

    char m_ID[3];                  // "ID3"
    unsigned char m_nMajorVersion; // 2, 3 or 4
    unsigned char m_nRevision;
    unsigned char m_nFlags;  // ID3V2_TAG_FLAGS
    unsigned char m_Size[4]; // of all that follows, a footer not counted; in memory in the order of this machine
};
static_assert(sizeof(CID3v2TagHeader) == 10);

// ID3v2.4.0-structure, 4: the ten bytes in front of a frame of version 2.3 or 2.4. One of version 2.2 has six, and
// gets this form when it is read.
class CID3v2FrameHeader
{
public:
    // Whether all four characters are of A to Z, 0 to 9 and "?". An empty id, which begins with a zero byte, is what
    // bAllowEmpty says.
    bool GetIsValidID(bool bAllowEmpty) const;
    bool HasID(const char* pID) const; // four characters
    bool HasFlag(ID3V2_FRAME_FLAGS eFlag) const;
    unsigned int GetPlainSize() const; // the size field as a big-endian number
    void SetPlainSize(unsigned int nBytes);
    unsigned int GetSyncSafeSize() const;      // the size field, 7 bits to a byte
    void SetSyncSafeSize(unsigned int nBytes); // 28 bits of it

    char m_ID[4] = {};
    unsigned char m_Size[4] = {}; // as in the file: of the body alone
    unsigned char m_Flags[2] = {};
};
static_assert(sizeof(CID3v2FrameHeader) == 10);

// The names of the properties that a decoded frame has.
struct CID3v2Property
{
    static constexpr const wchar_t* TEXT_ENCODING = L"Text Encoding";
    static constexpr const wchar_t* LANGUAGE_ID = L"Language ID"; // three characters as one big-endian number
    static constexpr const wchar_t* DESCRIPTION = L"Description";
    static constexpr const wchar_t* VALUE = L"Value";
    static constexpr const wchar_t* MIME_TYPE = L"Mime Type";
    static constexpr const wchar_t* PICTURE_TYPE = L"Picture Type"; // ID3V2_PICTURE_FRONT_COVER and others
};

constexpr int ID3V2_PICTURE_FRONT_COVER = 3; // ID3v2.4.0-frames, 4.14

class CID3v2Frame
{
public:
    CID3v2Frame() = default;
    explicit CID3v2Frame(const CID3v2FrameHeader& header) : m_Header(header) {}
    virtual ~CID3v2Frame() = default;

    // The type of a frame id of four characters.
    static ID3V2_FRAME_TYPES GetFrameType(const char* pID);
    ID3V2_FRAME_TYPES GetType() const { return GetFrameType(m_Header.m_ID); }

    // Fills m_Properties from m_Data by the frame's type. False for an opaque frame, whose properties stay empty. The
    // argument is not looked at. What fills them is m_Data as it is now, though the work waits until somebody asks.
    bool Decode(int nUnused = 0);

    // The property "Description", or an empty text. It stays the frame's.
    const wchar_t* GetDescription() const;
    // How many bytes the "Value" of a picture or of private data stands for; makes no base64 text. 0 for other types.
    int GetBinaryValueBytes() const;

    // Writes the length of m_Data into the header: sync-safe from version 4 on, otherwise big-endian.
    void SetHeaderFrameBytesFromBuffer(int nVersion);

    // Replaces buffer by the body of a picture frame, in Latin-1.
    // Deliberate: the description is always "Picture". What the picture had before is lost.
    static void EncodePicture(LyBuffer& buffer, const LyBuffer& image, const LyString& strMime, int nPictureType);

    CID3v2FrameHeader m_Header;

private:
    friend class CID3v2Tag;
    int m_nOrderRow = -1; // the index of its row, as long as the tag sorts; here, where it takes no room

public:
    LyBuffer m_Data; // the body as it goes to the file, without the unsynchronisation of the tag
    LyPropertyMap m_Properties;
};

// A row of the field table, which is its tag's own.
class CID3v2Field
{
public:
    static constexpr int ANY_PICTURE_TYPE = -1;

    CID3v2Field(const char* pID, const LyString& strName, const LyString& strDescription, int nFlags, int nPictureType);

    bool HasFlag(ID3V2_FIELD_FLAGS eFlag) const { return (m_nFlags & eFlag) != 0; }
    bool PassesMask(int nMask) const { return nMask == ID3V2_FIELD_ANY_FLAGS || (m_nFlags & nMask) != 0; }

    char m_ID[4];              // of the frame
    LyString m_strName;        // of the field; several rows may share one
    LyString m_strDescription; // what a frame of type 1 or 2 must hold as "Description", whatever the case
    int m_nFlags;              // ID3V2_FIELD_FLAGS
    int m_nPictureType;        // what a picture frame must hold as "Picture Type", or ANY_PICTURE_TYPE
};

// What every tag answers. The order of the operations is their order in the virtual table, in which the destructor
// takes two places.
class CID3TagBase
{
public:
    virtual ~CID3TagBase() = default;
    // Fills map with the properties of the field. Bit 0 of bRaw: as the frame has them.
    virtual bool Get(const LyString& strName, LyPropertyMap& map, int bRaw = 0) = 0;
    LyString GetSimple(const LyString& strName, int bRaw = 0); // the "Value" alone; empty if there is none
};

class CID3v2Tag : public CID3TagBase, public ILyQSortCompare<CID3v2Frame*>
{
public:
    static constexpr int HEADER_BYTES = 10; // of a tag, of its footer, and of a frame since version 2.3
    static constexpr int FRAME_HEADER_BYTES_22 = 6;
    static constexpr int PADDING_BLOCK_BYTES = 4096;  // to which a tag is filled up that is not of its old length
    static constexpr int MAX_PADDING_BYTES = 0x40000; // what callers of SaveToBuffer grant

    CID3v2Tag(); // empty, with the table of rows
    ~CID3v2Tag() override = default;
    CID3v2Tag(const CID3v2Tag&) = delete;
    CID3v2Tag& operator=(const CID3v2Tag&) = delete;

    // ---- Reading (ID3v2Tag.cpp, ID3v2Load.cpp)
    // Empties the tag, then reads the one that buffer begins with; nPosition is where in its file it stands. True if
    // there is a tag, however few frames it has. m_RawTag holds the buffer in any case.
    bool Load(const LyBuffer& buffer, long long nPosition = 0);
    bool Empty();                                       // always true; the rows stay
    bool LoadHeader(const LyBuffer& buffer, int& nPos); // moves nPos behind the header if there is one
    bool LoadFrames(const LyBuffer& buffer, int& nPos); // always true; nPos stands where the walk ended
    // The version of a loaded tag; 0 for one that was not read.
    int GetMajorVersion() const { return m_bLoaded ? m_Header.m_nMajorVersion : 0; }

    // Four bytes at nOffset as a 28 bit number, or 0 if they are not there.
    static int ReadSyncSafeInt(const LyBuffer& buffer, int nOffset);
    // Removes unsynchronisation, despite the name: of FF 00 the zero goes. Stops at nLimit bytes of output.
    // *pnRemoved, which may be null, is how many bytes went.
    static void UnsynchronizeBuffer(LyBuffer& buffer, int nLimit, int* pnRemoved = nullptr);
    // Inflates a zlib stream in place. The result has room for INFLATE_FACTOR times the input; what does not fit, does
    // not inflate, or meets no service stays as it was.
    static void DecompressBuffer(LyBuffer& buffer);
    static constexpr int INFLATE_FACTOR = 20;
    // Reads zero-terminated values from nPos on, the first one with bOnlyOne, otherwise all up to the end, joined with
    // "; ". An encoding that is none of ID3V2_FRAME_TEXT_ENCODINGS gives empty text.
    static LyString DecodeString(int nEncoding, const LyBuffer& buffer, int& nPos, bool bOnlyOne);

    // ---- Fields (ID3v2Fields.cpp and what begins with that name)
    void AddField(CID3v2Field* pField); // takes ownership
    // The first row of that name from index nPos on that passes the mask; nPos moves behind it. With bCreate, and nPos
    // at 0, a name without one gets two rows: user text and, for what older writers left, a comment.
    CID3v2Field* FindField(const LyString& strName, int& nPos, bool bCreate, int nMask);
    // The index of the first row of that frame id and description that passes the mask, or -1.
    int FindField(const char* pID, const wchar_t* pDescription, int nMask) const;
    // The pairs of row and frame for a name, at the same index of the two arrays. True if there is one.
    bool FindFieldAndFrame(const LyString& strName, LyPointerArray<CID3v2Field>& aryFields,
                           LyPointerArray<CID3v2Frame>& aryFrames, bool bCreate);
    bool Get(const LyString& strName, LyPropertyMap& map, int bRaw = 0) override;
    // Replaces the frames of the field; an empty value removes them. True if a frame was written.
    bool Set(const LyString& strName, const LyString& strValue);
    LyString GetFrameSummary(int nIndex); // one line for a reader

    // ---- Saving (ID3v2Save.cpp)
    // Replaces buffer by the whole tag. True, as long as there is memory for it. Sorts the frames and refreshes the
    // podcast fields on the way. The tag keeps its old length if it fits and is not more than nMaxPadding (0: no
    // limit) too long.
    bool SaveToBuffer(LyBuffer& buffer, int nMaxPadding = MAX_PADDING_BYTES);
    int LyQSort_Compare(CID3v2Frame** ppFirst, CID3v2Frame** ppSecond) override;
    // Appends the text and its terminator in encoding 0 or 1; for another one, nothing.
    static void EncodeString(int nEncoding, const LyString& strText, LyBuffer& buffer);

    LyOwnedPtrArray<CID3v2Field, false> m_aryFields;
    // Name to the indexes of its rows in m_aryFields, in row order.
    LyOwnedPtrMap<LyString, const wchar_t*, LyNumberArray<int>, true> m_mapFieldIndexes;
    bool m_bLoaded = false;
    bool m_bDirty = false;                            // frames changed since loading
    int m_nEncoding = ID3V2_FRAME_TEXT_ENCODING_UTF8; // nobody asks for it
    LyBuffer m_RawTag;                                // what Load was given; its length is that of the tag in the file
    long long m_nFilePosition = 0;
    CID3v2TagHeader m_Header = {};                   // as read, but for the size; never changed in memory
    LyOwnedPtrArray<CID3v2Frame, false> m_aryFrames; // in file order, until the next save

private:
    void EmptyAllButRawTag();
    void WalkFrames(std::span<const unsigned char> bytes, int& nPos);
    void AddTableFields(); // the rows that every tag has
    void SetPodcastFields();
    void SortFrames();
    int FindOrderRow(const CID3v2Frame& frame) const;

    bool m_bSorting = false; // the frames know their rows
};
