#include "MP3Tag.h"
#include <algorithm>
#include <cstring>

namespace
{
constexpr int BYTE_BITS = 8;
constexpr int SYNC_SAFE_BITS = 7;

// The four bytes as a big-endian number of so many bits each; the bits above them are masked away.
unsigned int ReadBigEndian(const unsigned char (&bytes)[4], int nBits)
{
    unsigned int nValue = 0;
    for (const unsigned char c : bytes)
        nValue = nValue << nBits | (c & ((1U << nBits) - 1));
    return nValue;
}

void WriteBigEndian(unsigned char (&bytes)[4], unsigned int nValue, int nBits)
{
    for (int i = 3; i >= 0; --i)
    {
        bytes[i] = static_cast<unsigned char>(nValue & ((1U << nBits) - 1));
        nValue >>= nBits;
    }
}

bool IsIDCharacter(char c) { return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '?'; }
} // namespace

int CID3v2TagHeader::GetSize() const
{
    int nBytes;
    memcpy(&nBytes, m_Size, sizeof nBytes);
    return nBytes;
}

void CID3v2TagHeader::SetSize(int nBytes) { memcpy(m_Size, &nBytes, sizeof m_Size); }

// Deliberate: "?" is valid, since it fills the ids of version 2.2 that version 2.3 has no name for.
bool CID3v2FrameHeader::GetIsValidID(bool bAllowEmpty) const
{
    return m_ID[0] == 0 ? bAllowEmpty : std::all_of(m_ID, m_ID + sizeof m_ID, IsIDCharacter);
}

bool CID3v2FrameHeader::HasID(const char* pID) const { return memcmp(m_ID, pID, sizeof m_ID) == 0; }

bool CID3v2FrameHeader::HasFlag(ID3V2_FRAME_FLAGS eFlag) const
{
    return ((m_Flags[0] | m_Flags[1] << BYTE_BITS) & eFlag) != 0;
}

unsigned int CID3v2FrameHeader::GetPlainSize() const { return ReadBigEndian(m_Size, BYTE_BITS); }

void CID3v2FrameHeader::SetPlainSize(unsigned int nBytes) { WriteBigEndian(m_Size, nBytes, BYTE_BITS); }

unsigned int CID3v2FrameHeader::GetSyncSafeSize() const { return ReadBigEndian(m_Size, SYNC_SAFE_BITS); }

void CID3v2FrameHeader::SetSyncSafeSize(unsigned int nBytes) { WriteBigEndian(m_Size, nBytes, SYNC_SAFE_BITS); }
