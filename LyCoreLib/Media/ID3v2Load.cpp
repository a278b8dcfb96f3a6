// The walk over the frames of a tag.
//
//     version 2.2:  id, 3   size, 3, big-endian                                     body
//     version 2.3:  id, 4   size, 4, big-endian                        flags, 2     body
//     version 2.4:  id, 4   size, 4, sync-safe, by some big-endian     flags, 2     body

#include "ID3v2Packing.h"
#include "ID3v2Properties.h"
#include "MP3Tag.h"
#include <algorithm>
#include <climits>
#include <cstring>
#include <memory>
#include <span>

namespace
{
using BYTES = std::span<const unsigned char>;

constexpr int VERSION_22 = 2;
constexpr int VERSION_24 = 4; // sizes of frames are sync-safe
constexpr int SIZE_BYTES_22 = 3;
constexpr int ID_BYTES_22 = 3;
constexpr unsigned char NOT_SYNC_SAFE = 0x80;

// The ids of version 2.2 that get a name of version 2.3.
const char* const s_aryNames22[][2] = {
    {"TAL", "TALB"}, {"TP1", "TPE1"}, {"TP2", "TPE2"}, {"TRK", "TRCK"}, {"TYE", "TYER"}, {"TT1", "TIT1"},
    {"TT2", "TIT2"}, {"COM", "COMM"}, {"TCM", "TCOM"}, {"TEN", "TENC"}, {"TXX", "TXXX"}, {"PIC", "APIC"},
    {"TCO", "TCON"}, {"TPA", "TPOS"}, {"TSA", "TSOA"}, {"TSP", "TSOP"}, {"TCP", "TCMP"}, {"UFI", "UFID"},
};

// Any other id keeps its three letters, and gets a fourth that no published id has.
void RenameFrom22(char (&id)[4])
{
    for (const auto& names : s_aryNames22)
    {
        if (memcmp(id, names[0], ID_BYTES_22) == 0)
        {
            memcpy(id, names[1], sizeof id);
            return;
        }
    }
    id[ID_BYTES_22] = '?';
}

CID3v2FrameHeader MakeHeaderFrom22(const unsigned char* p)
{
    CID3v2FrameHeader header;
    memcpy(header.m_ID, p, ID_BYTES_22);
    RenameFrom22(header.m_ID);
    memcpy(header.m_Size + 1, p + ID_BYTES_22, SIZE_BYTES_22);
    return header;
}

int GetSize(BYTES bytes) { return static_cast<int>(bytes.size()); } // they come from a buffer

// The size of the body, or -1. In version 2.4 a byte that no sync-safe number has tells of a writer that knows none.
int GetBodyBytes(const CID3v2FrameHeader& header, int nVersion)
{
    const bool bPlain = nVersion < VERSION_24 || std::any_of(header.m_Size, std::end(header.m_Size),
                                                             [](unsigned char c) { return c >= NOT_SYNC_SAFE; });
    const unsigned int nBytes = bPlain ? header.GetPlainSize() : header.GetSyncSafeSize();
    return nBytes <= INT_MAX ? static_cast<int>(nBytes) : -1;
}

// The header of the frame at nPos and the bytes of its body, all of which are there; nPos moves to the body. False at
// the end of the frames: at padding, at damage, or where the buffer ends.
bool ReadFrameHeader(BYTES bytes, int& nPos, int nVersion, CID3v2FrameHeader& header, int& nBodyBytes)
{
    const int nHeaderBytes = nVersion == VERSION_22 ? CID3v2Tag::FRAME_HEADER_BYTES_22 : CID3v2Tag::HEADER_BYTES;
    if (nPos < 0 || nPos > GetSize(bytes) - nHeaderBytes)
        return false;
    const unsigned char* p = bytes.data() + nPos;
    if (nVersion == VERSION_22)
        header = MakeHeaderFrom22(p);
    else
        memcpy(static_cast<void*>(&header), p, sizeof header);
    nBodyBytes = GetBodyBytes(header, nVersion);
    if (!header.GetIsValidID(false) || nBodyBytes < 0 || nBodyBytes > GetSize(bytes) - nPos - nHeaderBytes)
        return false;
    nPos += nHeaderBytes;
    return true;
}

// How many frames the walk meets, where their sizes are those that they have in the file.
int CountFrames(BYTES bytes, int nPos, int nVersion)
{
    CID3v2FrameHeader header;
    int nBytes = 0;
    int nFrames = 0;
    for (; ReadFrameHeader(bytes, nPos, nVersion, header, nBytes); nPos += nBytes)
        ++nFrames;
    return nFrames;
}

// Whether what begins at nPos cannot be a frame or padding, as far as its ten bytes are there to tell.
bool IsNoFrameAt(BYTES bytes, int nPos)
{
    CID3v2FrameHeader header;
    if (nPos > GetSize(bytes) - CID3v2Tag::HEADER_BYTES)
        return false;
    memcpy(static_cast<void*>(&header), bytes.data() + nPos, sizeof header);
    return !header.GetIsValidID(true);
}

// The body of a frame in a tag that is unsynchronised as a whole, in plain form. Where nothing begins behind nBytes,
// they are the size that the frame had before, and the body takes what it needs for them.
void TakeUnsynchronized(BYTES bytes, int& nPos, int nBytes, CID3v2Frame& frame, int nVersion)
{
    const int nRest = GetSize(bytes) - nPos;
    const bool bSizeFromBefore = IsNoFrameAt(bytes, nPos + nBytes);
    (void)frame.m_Data.GetAppendBlock(nBytes); // null for an empty body
    int nRemoved = 0;
    const int nWritten = ID3v2Packing::CopyUnsynchronized(bytes.data() + nPos, bSizeFromBefore ? nRest : nBytes,
                                                          frame.m_Data.GetData(), frame.m_Data.GetSize(), nRemoved);
    (void)frame.m_Data.RemoveRight(frame.m_Data.GetSize() - nWritten); // there may be nothing to remove
    const long long nEnd = static_cast<long long>(nPos) + nBytes + (bSizeFromBefore ? nRemoved : 0);
    nPos = static_cast<int>(std::min<long long>(nEnd, INT_MAX));
    frame.m_Header.m_Flags[1] &= static_cast<unsigned char>(~(ID3V2_FRAME_FLAG_UNSYNCHRONIZED >> 8));
    frame.SetHeaderFrameBytesFromBuffer(nVersion);
}

// Gives a picture frame of version 2.2 the form of version 2.3.
// Deliberate: it was decoded by the layout of version 2.3, which has text where version 2.2 has the three letters of
// the image format. These, the picture type and the description have run together into the mime type, and the image's
// first byte is taken for the picture type. Tags in the wild were written back like that, and readers of them count on
// it.
void ConvertPictureFrom22(CID3v2Frame& frame)
{
    LyBuffer image;
    // As it was decoded a moment ago.
    (void)static_cast<const ID3v2Properties*>(frame.m_Properties.m_pProperties)
        ->GetBinaryValue(image); // it may be none
    CID3v2Frame::EncodePicture(frame.m_Data, image, frame.m_Properties.GetProperty(CID3v2Property::MIME_TYPE),
                               frame.m_Properties.GetPropertyInt(CID3v2Property::PICTURE_TYPE));
    frame.m_Header.SetPlainSize(static_cast<unsigned int>(frame.m_Data.GetSize()));
    (void)frame.Decode();
}
} // namespace

bool CID3v2Tag::LoadFrames(const LyBuffer& buffer, int& nPos)
{
    WalkFrames({buffer.GetData(), static_cast<size_t>(buffer.GetSize())}, nPos);
    return true;
}

// Deliberate: the walk goes on to the end of the buffer, whatever size the tag's header tells.
void CID3v2Tag::WalkFrames(BYTES bytes, int& nPos)
{
    const int nVersion = m_Header.m_nMajorVersion;
    const bool bUnsynchronized = (m_Header.m_nFlags & ID3V2_TAG_FLAG_UNSYNCHRONIZED) != 0;
    const int nFrames = bUnsynchronized || m_aryFrames.GetSize() > 0 ? 0 : CountFrames(bytes, nPos, nVersion);
    if (m_aryFrames.SetSize(m_aryFrames.GetSize() + nFrames, true))
        (void)m_aryFrames.SetSize(m_aryFrames.GetSize() - nFrames); // there is room for exactly those
    CID3v2FrameHeader header;
    int nBytes = 0;
    while (ReadFrameHeader(bytes, nPos, nVersion, header, nBytes))
    {
        auto frame = std::make_unique<CID3v2Frame>(header);
        if (bUnsynchronized)
        {
            TakeUnsynchronized(bytes, nPos, nBytes, *frame, nVersion);
        }
        else
        {
            (void)frame->m_Data.FromBuffer(bytes.data() + nPos, nBytes); // false for an empty body
            nPos += nBytes;
        }
        (void)frame->Decode(); // an opaque frame is kept as well
        if (nVersion == VERSION_22 && frame->GetType() == ID3V2_FRAME_TYPE_PICTURE)
            ConvertPictureFrom22(*frame);
        if (m_aryFrames.Add(frame.get()) >= 0)
            (void)frame.release(); // the array has it
    }
}
