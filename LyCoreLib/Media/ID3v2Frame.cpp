#include "ID3v2Packing.h"
#include "ID3v2Properties.h"
#include "MP3Tag.h"
#include <climits>
#include <cstring>

namespace
{
constexpr int SYNC_SAFE_VERSION = 4; // from which on the size of a frame is sync-safe
constexpr int DATA_LENGTH_BYTES = 4;
constexpr wchar_t PICTURE_DESCRIPTION[] = L"Picture";

std::span<const unsigned char> GetBytes(const LyBuffer& buffer)
{
    return {buffer.GetData(), static_cast<size_t>(buffer.GetSize())};
}
} // namespace

// Deliberate: every id that begins with T and was not named before is text, and so is "THGN". What is stored in it has
// the layout of a comment; it is read as one text, and its body goes back to the file as it came.
ID3V2_FRAME_TYPES CID3v2Frame::GetFrameType(const char* pID)
{
    auto Is = [pID](const char* pName) { return memcmp(pID, pName, sizeof CID3v2FrameHeader::m_ID) == 0; };
    if (Is("TXXX"))
        return ID3V2_FRAME_TYPE_USER_TEXT;
    if (Is("APIC"))
        return ID3V2_FRAME_TYPE_PICTURE;
    if (Is("POPM"))
        return ID3V2_FRAME_TYPE_RATING;
    if (pID[0] == 'T')
        return ID3V2_FRAME_TYPE_TEXT;
    if (Is("PCST"))
        return ID3V2_FRAME_TYPE_PODCAST_FLAG;
    if (pID[0] == 'W' && !Is("WXXX"))
        return ID3V2_FRAME_TYPE_URL;
    if (Is("COMM") || Is("THGN") || Is("USLT"))
        return ID3V2_FRAME_TYPE_COMMENT;
    return Is("PRIV") ? ID3V2_FRAME_TYPE_PRIVATE : ID3V2_FRAME_TYPE_OPAQUE;
}

// Deliberate: the data length indicator is skipped last, so compressed data are inflated with it still in front. That
// fails, and the compressed bytes are decoded.
bool CID3v2Frame::Decode(int)
{
    m_Properties.DeleteProperties();
    const ID3V2_FRAME_TYPES eType = GetType();
    if (eType == ID3V2_FRAME_TYPE_OPAQUE)
        return false;
    const int nStart = m_Header.HasFlag(ID3V2_FRAME_FLAG_DATA_LENGTH) ? DATA_LENGTH_BYTES : 0;
    const bool bUnsynchronized = m_Header.HasFlag(ID3V2_FRAME_FLAG_UNSYNCHRONIZED);
    const bool bCompressed = m_Header.HasFlag(ID3V2_FRAME_FLAG_COMPRESSED);
    if (!bUnsynchronized && !bCompressed)
    {
        m_Properties.m_pProperties = ID3v2Properties::Make(eType, {GetBytes(m_Data), nStart}); // m_Properties owns it
        return true;
    }
    LyBuffer body(m_Data);
    if (bUnsynchronized)
        CID3v2Tag::UnsynchronizeBuffer(body, INT_MAX, nullptr);
    if (bCompressed)
        CID3v2Tag::DecompressBuffer(body);
    m_Properties.m_pProperties = ID3v2Properties::Make(eType, {GetBytes(body), nStart});
    return true;
}

const wchar_t* CID3v2Frame::GetDescription() const
{
    const LyPropertyMap::PROPERTIES* pProperties = m_Properties.m_pProperties;
    const auto* pOwn = dynamic_cast<const ID3v2Properties*>(pProperties); // somebody may have put others there
    if (pOwn != nullptr && pOwn->IsWithoutDescription())
        return L"";
    const LyString* pText = pProperties != nullptr ? pProperties->FindValue(CID3v2Property::DESCRIPTION) : nullptr;
    return pText != nullptr ? static_cast<const wchar_t*>(*pText) : L"";
}

int CID3v2Frame::GetBinaryValueBytes() const
{
    if (GetType() != ID3V2_FRAME_TYPE_PICTURE && GetType() != ID3V2_FRAME_TYPE_PRIVATE)
        return 0;
    const auto* pOwn = dynamic_cast<const ID3v2Properties*>(m_Properties.m_pProperties);
    const int nBytes = pOwn != nullptr ? pOwn->GetBinaryValueBytes() : -1;
    if (nBytes >= 0)
        return nBytes;
    LyBuffer bytes;
    (void)bytes.FromStringBase64(m_Properties.GetProperty(CID3v2Property::VALUE)); // nothing in it is no bytes
    return bytes.GetSize();
}

void CID3v2Frame::SetHeaderFrameBytesFromBuffer(int nVersion)
{
    const auto nBytes = static_cast<unsigned int>(m_Data.GetSize());
    if (nVersion < SYNC_SAFE_VERSION)
        m_Header.SetPlainSize(nBytes);
    else
        m_Header.SetSyncSafeSize(nBytes);
}

void CID3v2Frame::EncodePicture(LyBuffer& buffer, const LyBuffer& image, const LyString& strMime, int nPictureType)
{
    if (&buffer == &image)
        return EncodePicture(buffer, LyBuffer(image), strMime, nPictureType);
    buffer.Empty(false);
    const unsigned char cEncoding = ID3V2_FRAME_TEXT_ENCODING_ANSI;
    const auto cPictureType = static_cast<unsigned char>(nPictureType);
    ID3v2Packing::Append(buffer, &cEncoding, 1);
    CID3v2Tag::EncodeString(cEncoding, strMime, buffer);
    ID3v2Packing::Append(buffer, &cPictureType, 1);
    CID3v2Tag::EncodeString(cEncoding, PICTURE_DESCRIPTION, buffer);
    ID3v2Packing::Append(buffer, image.GetData(), image.GetSize());
}
