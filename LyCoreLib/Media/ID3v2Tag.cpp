#include "MP3Tag.h"
#include <cstring>

namespace
{
constexpr char TAG_ID[] = {'I', 'D', '3'};
constexpr int MIN_VERSION = 2;
constexpr int MAX_VERSION = 4;
constexpr int SYNC_SAFE_BYTES = 4;
constexpr int SYNC_SAFE_BITS = 7;
constexpr int SYNC_SAFE_MASK = 0x7F;

// Deliberate: the top bits of the bytes are masked away, not checked.
int DecodeSyncSafe(const unsigned char* p)
{
    int nValue = 0;
    for (int i = 0; i < SYNC_SAFE_BYTES; ++i)
        nValue = nValue << SYNC_SAFE_BITS | (p[i] & SYNC_SAFE_MASK);
    return nValue;
}
} // namespace

CID3v2Tag::CID3v2Tag() { AddSharedFields(); }

bool CID3v2Tag::Empty()
{
    m_bLoaded = false;
    m_bDirty = false;
    m_nEncoding = ID3V2_FRAME_TEXT_ENCODING_UTF8;
    m_RawTag.Empty(true);
    m_nFilePosition = 0;
    m_Header = {};
    m_aryFrames.RemoveAll();
    return true;
}

bool CID3v2Tag::Load(const LyBuffer& buffer, long long nPosition)
{
    // Who has read the tag into m_RawTag saves a copy of it. Emptying would let it go, so that part is left out.
    if (&buffer == &m_RawTag)
    {
        m_bLoaded = false;
        m_bDirty = false;
        m_nEncoding = ID3V2_FRAME_TEXT_ENCODING_UTF8;
        m_Header = {};
        m_aryFrames.RemoveAll();
    }
    else
    {
        (void)Empty();
        m_RawTag = buffer;
    }
    m_nFilePosition = nPosition;
    int nPos = 0;
    if (!LoadHeader(buffer, nPos))
        return m_bLoaded;
    // Deliberate: the size is taken as sync-safe and as counting its own four bytes in every version, as version 2.4
    // has it. ID3v2.3.0, 3.2, has neither, so a tag of that version is misread here.
    if (m_Header.m_nFlags & ID3V2_TAG_FLAG_EXTENDED_HEADER)
        nPos += ReadSyncSafeInt(buffer, nPos);
    if (m_Header.m_nFlags & ID3V2_TAG_FLAG_FOOTER)
    {
        LyBuffer withoutFooter;
        withoutFooter.FromBuffer(buffer.GetData(), buffer.GetSize() - HEADER_BYTES);
        (void)LoadFrames(withoutFooter, nPos);
    }
    else
    {
        (void)LoadFrames(buffer, nPos);
    }
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
