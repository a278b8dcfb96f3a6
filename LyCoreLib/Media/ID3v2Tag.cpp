#include "MP3Tag.h"
#include <algorithm>
#include <cstring>

namespace
{
constexpr char TAG_ID[] = {'I', 'D', '3'};
constexpr int MIN_VERSION = 2;
constexpr int MAX_VERSION = 4;
constexpr int SYNC_SAFE_BYTES = sizeof CID3v2FrameHeader::m_Size;

// Deliberate: the top bits of the bytes are masked away, not checked.
int DecodeSyncSafe(const unsigned char* p)
{
    CID3v2FrameHeader header; // which knows such numbers
    memcpy(header.m_Size, p, SYNC_SAFE_BYTES);
    return static_cast<int>(header.GetSyncSafeSize()); // 28 bits
}
} // namespace

CID3v2Tag::CID3v2Tag() { AddTableFields(); }

void CID3v2Tag::EmptyAllButRawTag()
{
    m_bLoaded = false;
    m_bDirty = false;
    m_nEncoding = ID3V2_FRAME_TEXT_ENCODING_UTF8;
    m_nFilePosition = 0;
    m_Header = {};
    m_aryFrames.RemoveAll();
}

bool CID3v2Tag::Empty()
{
    EmptyAllButRawTag();
    m_RawTag.Empty(true);
    return true;
}

bool CID3v2Tag::Load(const LyBuffer& buffer, long long nPosition)
{
    // What is given may be the body of a frame, which then ends behind the copy. Who has read the tag into m_RawTag
    // saves it.
    const bool bOwnBody = std::any_of(m_aryFrames.begin(), m_aryFrames.end(),
                                      [&buffer](const CID3v2Frame* pFrame) { return &pFrame->m_Data == &buffer; });
    if (!bOwnBody)
        EmptyAllButRawTag();
    if (&buffer != &m_RawTag)
    {
        m_RawTag.Empty(true); // the tag before may have been much larger
        m_RawTag = buffer;
    }
    EmptyAllButRawTag();
    m_nFilePosition = nPosition;
    int nPos = 0;
    if (!LoadHeader(m_RawTag, nPos))
        return m_bLoaded;
    // Deliberate: the size is taken as sync-safe and as counting its own four bytes in every version, as version 2.4
    // has it. ID3v2.3.0, 3.2, has neither, so a tag of that version is misread here.
    if (m_Header.m_nFlags & ID3V2_TAG_FLAG_EXTENDED_HEADER)
        nPos += ReadSyncSafeInt(m_RawTag, nPos);
    const int nFooterBytes = m_Header.m_nFlags & ID3V2_TAG_FLAG_FOOTER ? HEADER_BYTES : 0;
    WalkFrames({m_RawTag.GetData(), static_cast<size_t>(m_RawTag.GetSize() - nFooterBytes)}, nPos);
    m_bLoaded = true;
    return true;
}

bool CID3v2Tag::LoadHeader(const LyBuffer& buffer, int& nPos)
{
    if (nPos < 0 || nPos > buffer.GetSize() - HEADER_BYTES)
        return false;
    memcpy(&m_Header, buffer.GetData() + nPos, HEADER_BYTES);
    nPos += HEADER_BYTES;
    const int nVersion = m_Header.m_nMajorVersion;
    if (memcmp(m_Header.m_ID, TAG_ID, sizeof TAG_ID) != 0 || nVersion < MIN_VERSION || nVersion > MAX_VERSION)
        return false;
    if (m_Header.m_nFlags & ID3V2_TAG_FLAG_EXPERIMENTAL)
        return false;
    m_Header.SetSize(DecodeSyncSafe(m_Header.m_Size));
    // Deliberate: a byte less than the header promises is accepted; some writers count one too many.
    const int nFooterBytes = m_Header.m_nFlags & ID3V2_TAG_FLAG_FOOTER ? HEADER_BYTES : 0;
    return buffer.GetSize() >= m_Header.GetSize() + HEADER_BYTES + nFooterBytes - 1;
}

int CID3v2Tag::ReadSyncSafeInt(const LyBuffer& buffer, int nOffset)
{
    if (nOffset < 0 || nOffset > buffer.GetSize() - SYNC_SAFE_BYTES)
        return 0;
    return DecodeSyncSafe(buffer.GetData() + nOffset);
}
