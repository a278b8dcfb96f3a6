// CIFFInfo, CWAVInfo: audio files made of chunks. Format and place of the audio, audio read by blocks, metadata read
// and set by field names and written back into the open file.
//
// Format:  Multimedia Programming Interface and Data Specifications 1.0, RIFF WAVE. All numbers are little-endian:
//
//     0  "RIFF"    4  file length - 8    8  "WAVE"
//    12  chunks: identifier, 4    size, 4    body, size bytes    a pad byte if the size is odd
//
//          Known are "fmt ", "data", "LIST" (of type INFO), the ID3v2 tag ("id3 ", read as "ID3 " and "tag ", too) and
//          "UITS". RF64 and other families are refused: their sizes stand elsewhere.
// Units:   bytes. A block is one sample frame; a sample is one value of one channel. Positions have 64 bits.
// Errors:  -1, with all bits set, as long as nothing is open or a value cannot be told; false. Sizes in a file are
//          believed as far as the file reaches.
// Saving:  happens in the open file, without a copy: an interrupted save leaves the file as far as it got. Whoever
//          cares works on a copy and swaps it in. Close saves what is pending.
//          A save brings neither the chunk records up to date nor clears what made it necessary, so that a further save
//          goes by the places of before, and harms the file if chunks moved. Save by Close alone; who saves by hand
//          clears m_ID3v2Tag.m_bDirty and m_pUITSChunk->m_bDirty behind it, or closes the reader.
//          One object serves one file: what was found at an earlier opening stays, and a save may go by it.
// Owner:   a reader made by Open(name) is owned, one that is handed in stays the caller's.
// Threads: an object belongs to one thread at a time.

#pragma once

#include "AudioFormat.h"
#include "ILyReader.h"
#include "LyArray.h"
#include "LyBuffer.h"
#include "LyMap.h"
#include "LyPtr.h"
#include "LyString.h"
#include "MP3Tag.h"
#include <concepts>
#include <cstddef>

// One chunk of a file. Identifier and size are the 8 header bytes as they lie in the file.
struct CIFFChunk
{
    static constexpr int HEADER_BYTES = 8;

    bool HasID(const char* pID) const; // four characters
    // Header, body and pad byte.
    long long GetFullBytes() const { return HEADER_BYTES + static_cast<long long>(size) + (size & 1); }

    char id[4] = {};
    unsigned int size = 0; // of the body, without a pad byte
    long long offset = -1; // of the header in the file; -1: not in a file
};
static_assert(offsetof(CIFFChunk, size) == 4 && offsetof(CIFFChunk, offset) == 8 && sizeof(CIFFChunk) == 16);

// The chunk "UITS", a payload that is opaque here.
class CUITSChunk : public CIFFChunk
{
public:
    static constexpr int NOT_IN_FILE = 0x7FFFFFFF; // as a chunk index

    CUITSChunk() = default;
    explicit CUITSChunk(const CIFFChunk& chunk) : CIFFChunk(chunk), m_nBytesOnReading(chunk.size) {}
    CUITSChunk(const CUITSChunk&) = delete;
    CUITSChunk& operator=(const CUITSChunk&) = delete;

    virtual bool Write(ILyReader* pReader) = 0; // at the reader's position; true if all of it was written
    virtual ~CUITSChunk() = default;

    unsigned int m_nBytesOnReading = 0; // the size field as it was read; 0 for a chunk that was not
    LyBuffer m_Data;                    // the payload; with its pad byte, if it was read with an odd size
    int m_nChunkIndex = NOT_IN_FILE;    // in CIFFInfo::m_aryChunks
    bool m_bDirty = false;              // changed since reading
};

class CWAVUITSChunk : public CUITSChunk
{
public:
    using CUITSChunk::CUITSChunk;

    // Deliberate: no pad byte is written, so what is read with an odd size comes out without. A payload that is set has
    // an even size.
    bool Write(ILyReader* pReader) override;
};

// The reader of any container of chunks. What depends on the container is virtual. A subclass closes in its own
// destructor, while its operations are there: the one of this class lets go of the reader without saving.
//
// The order of the virtual operations is their order in the table, in which the destructor takes two places.
class CIFFInfo
{
public:
    static constexpr int FIRST_TAG_POSITION = 20;     // where the body of a first chunk stands, behind both headers
    static constexpr int MOVE_BLOCK_BYTES = 0x100000; // by which chunks are moved
    static constexpr int MAX_CHUNKS = 0x100000;       // a walk that finds so many ends: its records take 16 MiB
    static constexpr int NO_CHUNK = -1;               // as a chunk index
    static constexpr int OPTION_NOT_READ = -1;

    CIFFInfo() = default;
    virtual ~CIFFInfo();
    CIFFInfo(const CIFFInfo&) = delete;
    CIFFInfo& operator=(const CIFFInfo&) = delete;

    // ---- Opening (IFFInfo.cpp): 0, or -1. Strict: only formats that hold plain samples. Without bScanAllChunks the
    // walk ends as soon as format and audio are known, and metadata behind them stays unknown.
    virtual int Open(const wchar_t* pName, bool bStrictFormat = true, bool bScanAllChunks = true);
    // Null: once more with the reader that is there.
    virtual int Open(ILyReader* pReader, bool bStrictFormat = true, bool bScanAllChunks = true);
    int Open(std::nullptr_t, bool bStrictFormat = true, bool bScanAllChunks = true)
    {
        return Open(static_cast<ILyReader*>(nullptr), bStrictFormat, bScanAllChunks);
    }
    virtual int OpenInternal(bool bStrictFormat, bool bScanAllChunks) = 0;
    // Up to nBlocks blocks to pDest, which has room for them; *pnBytesRead are bytes. -1 if nothing is open or the
    // place cannot be reached.
    virtual int ReadBlocks(void* pDest, long long nFirstBlock, long long nBlocks, long long* pnBytesRead,
                           bool bRestorePosition = false);
    // For a count of another width. It stays as it is where nothing is read because of -1.
    template <std::integral COUNT>
    int ReadBlocks(void* pDest, long long nFirstBlock, long long nBlocks, COUNT* pnBytesRead,
                   bool bRestorePosition = false)
    {
        long long nBytesRead = 0;
        const int nResult = ReadBlocks(pDest, nFirstBlock, nBlocks, &nBytesRead, bRestorePosition);
        if (nResult == 0 && pnBytesRead != nullptr)
            *pnBytesRead = static_cast<COUNT>(nBytesRead);
        return nResult;
    }
    virtual int ReOpen(); // by the name; only so are the records right again after a save
    virtual int Close();  // saves what is pending; always 0

    // ---- Queries (IFFInfoQueries.cpp)
    virtual CAudioFormat* GetAudioFormat() { return &m_AudioFormat; } // in any case
    virtual long long GetLengthMS();
    virtual long long GetTotalBlocks();
    virtual long long GetTotalSamples();
    virtual long long GetSampleRate();
    virtual int GetBitsPerSample();  // the valid bits
    virtual int GetBytesPerSample(); // of the container of a sample
    virtual int GetChannels();
    virtual long long GetAverageBytesPerSecond();
    virtual int GetFormatID();
    virtual int GetBlockAlign();
    virtual long long GetDataBytes();
    virtual long long GetTotalBytes();
    virtual long long GetHeaderBytes();
    virtual int GetHeaderData(void* pDest); // all that stands before the audio, GetHeaderBytes(); 0, or -1
    virtual long long GetByteFromBlock(long long nBlock) = 0; // a position in the file
    virtual long long GetBlockFromByte(long long nByte) = 0;

    // ---- Metadata (IFFInfoTags.cpp, IFFInfoSave.cpp)
    // A picture ("Image File") is written to a temporary file, and its name is the value.
    virtual bool Get(const LyString& strField, LyString& strValue);
    virtual bool Set(const LyString& strField, const LyString& strValue);
    // True if all is well, also if there was nothing to do or the user wants no tags written.
    virtual bool SaveMetadataChanges(bool bRemoveTag);
    virtual LyString GetTagFormatString(); // for display; empty without a tag

    // ---- What a container is like
    virtual void FlipLong(void* pNumber); // turns a size field between file and memory: nothing in RIFF
    virtual bool ChangeRootChunkLength(ILyReader* pReader, long long nDelta);
    virtual unsigned int GetRootChunkLength(ILyReader* pReader);
    // Behind nSize bytes that were written. True if a byte was needed and written.
    virtual bool PadOneByteAtCurrentPositionIfNeeded(ILyReader* pReader, long long nSize);
    virtual const char* GetID3ChunkIDName() = 0; // four characters
    virtual bool FixBadRootChunkSize();          // makes the root length fit the file
    virtual bool GetSupportTags() { return true; }

    static bool ChunkIsID3(const void* pID); // four bytes
    bool GetTagWritingEnabled();             // the user's option, read once in the life of the object
    // Loads the tag from the body of a chunk, on whose first byte the reader stands. 1 or 0 as there is a tag; -1 if
    // the body is not all there.
    int ReadID3Tags(unsigned int nSize);
    // Bits of a block; 0 for a format that has none.
    long long GetBlockBits() const;

    LyPtr<ILyReader, ILyReader> m_pReader;
    CAudioFormat m_AudioFormat;
    long long m_nHeaderBytes = 0;  // where the audio begins
    long long m_nTrailerBytes = 0; // behind the audio
    long long m_nTotalBytes = 0;   // length of the file when it was opened
    bool m_bOpen = false;
    long long m_nDataBytes = -1; // of the audio; negative is unknown
    CID3v2Tag m_ID3v2Tag;
    int m_nID3ChunkIndex = NO_CHUNK; // the tag in m_aryChunks
    LyString m_strFilename;          // as given to Open
    // In the order of the file. Deliberate: the chunks of a further opening follow those of the one before, and the
    // indexes point at the new ones.
    LyCoreArray<CIFFChunk, const CIFFChunk&, false> m_aryChunks;
    int m_nTagWritingEnabled = OPTION_NOT_READ; // then 0 or 1
    LyPtr<CUITSChunk, CUITSChunk> m_pUITSChunk; // null if there is none
};

// The texts of a LIST chunk of type INFO, by field name. They are read only.
class CWAVInfoListChunk : public LyStringMap<LyString, false, LyString, const LyString&, true>
{
public:
    // The body of a LIST chunk. False, and an empty map, if its type is not INFO.
    bool Parse(const LyBuffer& buffer);
    bool Get(const LyString& strField, LyString& strValue) const; // true if there is text
    LyString GetTagFormatString() const;                          // a line for each entry
};

class CWAVInfo : public CIFFInfo
{
public:
    CWAVInfo() = default;
    ~CWAVInfo() override; // closes

    int OpenInternal(bool bStrictFormat, bool bScanAllChunks) override; // WAVInfoOpen.cpp
    using CIFFInfo::ReadBlocks;
    int ReadBlocks(void* pDest, long long nFirstBlock, long long nBlocks, long long* pnBytesRead,
                   bool bRestorePosition = false) override;
    long long GetByteFromBlock(long long nBlock) override;
    long long GetBlockFromByte(long long nByte) override;
    bool Get(const LyString& strField, LyString& strValue) override; // the tag first, then the INFO list
    bool Set(const LyString& strField, const LyString& strValue) override;
    LyString GetTagFormatString() override;
    bool ChangeRootChunkLength(ILyReader* pReader, long long nDelta) override;
    unsigned int GetRootChunkLength(ILyReader* pReader) override;
    const char* GetID3ChunkIDName() override;

    CWAVInfoListChunk m_List;
};
