#include "ID3v2Packing.h"
#include "ID3v2Properties.h"
#include "MP3Tag.h"
#include <climits>
#include <cstring>

namespace
{
constexpr int SYNC_SAFE_VERSION = 4; // from which on the size of a frame is sync-safe
constexpr int DATA_LENGTH_BYTES = 4;
constexpr int LANGUAGE_BYTES = 3;
constexpr int PODCAST_FLAG_BYTES = 4;
constexpr int RATING_STEP = 51; // 255 in five steps
constexpr wchar_t PICTURE_DESCRIPTION[] = L"Picture";
constexpr unsigned char JPEG_START[] = {0xFF, 0xD8};                                 // ISO 10918-1: SOI
constexpr unsigned char PNG_START[] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'}; // PNG, 5.2

// Reads a frame's body from its start. Behind the end everything is zero or empty, and the position stays.
class BodyReader
{
public:
    BodyReader(const LyBuffer& body, int nStart) : m_Body(body), m_nPos(nStart) {}

    bool IsAtEnd() const { return m_nPos >= m_Body.GetSize(); }
    int ReadByte() { return IsAtEnd() ? 0 : m_Body.GetData()[m_nPos++]; }
    LyString ReadOne(int nEncoding) { return CID3v2Tag::DecodeString(nEncoding, m_Body, m_nPos, true); }
    LyString ReadAll(int nEncoding) { return CID3v2Tag::DecodeString(nEncoding, m_Body, m_nPos, false); }

    int ReadLanguage()
    {
        int nLanguage = 0;
        for (int i = 0; i < LANGUAGE_BYTES; ++i)
            nLanguage = nLanguage << 8 | ReadByte();
        return nLanguage;
    }
    // A number of four bytes, little-endian; 0 if they are not all there.
    int ReadLittleEndian()
    {
        if (m_Body.GetSize() - m_nPos < PODCAST_FLAG_BYTES)
            return 0;
        unsigned int nValue = 0;
        for (int i = 0; i < PODCAST_FLAG_BYTES; ++i)
            nValue |= static_cast<unsigned int>(ReadByte()) << 8 * i;
        return static_cast<int>(nValue);
    }
    template <size_t nBytes>
    bool BeginsWith(const unsigned char (&bytes)[nBytes]) const
    {
        return m_Body.GetSize() - m_nPos >= static_cast<int>(nBytes) &&
               memcmp(m_Body.GetData() + m_nPos, bytes, nBytes) == 0;
    }
    int GetPosition() const { return m_nPos; }
    // What stands from nOffset on becomes the binary value.
    void TakeValue(int nOffset, ID3v2Properties& properties) const
    {
        const int nBytes = m_Body.GetSize() - nOffset;
        properties.SetBinaryValue(nBytes > 0 ? m_Body.GetData() + nOffset : nullptr, nBytes);
    }

private:
    const LyBuffer& m_Body;
    int m_nPos;
};

int ReadEncoding(BodyReader& reader, ID3v2Properties& properties)
{
    const int nEncoding = reader.ReadByte();
    properties.Set(CID3v2Property::TEXT_ENCODING, nEncoding);
    return nEncoding;
}

void DecodeDescriptionAndValue(BodyReader& reader, int nEncoding, ID3v2Properties& properties)
{
    properties.Set(CID3v2Property::DESCRIPTION, reader.ReadOne(nEncoding));
    properties.Set(CID3v2Property::VALUE, reader.ReadAll(nEncoding));
}

void DecodeComment(BodyReader& reader, ID3v2Properties& properties)
{
    const int nEncoding = ReadEncoding(reader, properties);
    properties.Set(CID3v2Property::LANGUAGE_ID, reader.ReadLanguage());
    DecodeDescriptionAndValue(reader, nEncoding, properties);
}

void DecodePicture(BodyReader& reader, ID3v2Properties& properties)
{
    const int nEncoding = ReadEncoding(reader, properties);
    properties.Set(CID3v2Property::MIME_TYPE, reader.ReadOne(ID3V2_FRAME_TEXT_ENCODING_ANSI));
    properties.Set(CID3v2Property::PICTURE_TYPE, reader.IsAtEnd() ? ID3V2_PICTURE_FRONT_COVER : reader.ReadByte());
    // Some writers leave the description out. No text begins as these images do.
    LyString strDescription;
    if (!reader.BeginsWith(JPEG_START) && !reader.BeginsWith(PNG_START))
        strDescription = reader.ReadOne(nEncoding);
    properties.Set(CID3v2Property::DESCRIPTION, strDescription);
    reader.TakeValue(reader.GetPosition(), properties);
}

// The owner is not kept, and neither is the counter of plays behind the rating.
void DecodeRating(BodyReader& reader, ID3v2Properties& properties)
{
    (void)reader.ReadOne(ID3V2_FRAME_TEXT_ENCODING_ANSI);
    properties.Set(CID3v2Property::VALUE, (reader.ReadByte() + RATING_STEP - 1) / RATING_STEP);
}

// Deliberate: the value is taken from the owner's length on, counted from the body's first byte, where a data length
// indicator may stand.
void DecodePrivate(BodyReader& reader, ID3v2Properties& properties)
{
    const LyString strOwner = reader.ReadOne(ID3V2_FRAME_TEXT_ENCODING_ANSI);
    properties.Set(CID3v2Property::DESCRIPTION, strOwner);
    reader.TakeValue(strOwner.GetLength() + 1, properties);
}

void DecodeBody(BodyReader reader, ID3V2_FRAME_TYPES eType, ID3v2Properties& properties)
{
    switch (eType)
    {
    case ID3V2_FRAME_TYPE_TEXT:
        properties.Set(CID3v2Property::VALUE, reader.ReadAll(ReadEncoding(reader, properties)));
        break;
    case ID3V2_FRAME_TYPE_USER_TEXT:
        DecodeDescriptionAndValue(reader, ReadEncoding(reader, properties), properties);
        break;
    case ID3V2_FRAME_TYPE_COMMENT:
        DecodeComment(reader, properties);
        break;
    case ID3V2_FRAME_TYPE_PICTURE:
        DecodePicture(reader, properties);
        break;
    case ID3V2_FRAME_TYPE_RATING:
        DecodeRating(reader, properties);
        break;
    case ID3V2_FRAME_TYPE_PODCAST_FLAG:
        properties.Set(CID3v2Property::VALUE, reader.ReadLittleEndian());
        break;
    case ID3V2_FRAME_TYPE_URL:
        properties.Set(CID3v2Property::VALUE, reader.ReadAll(ID3V2_FRAME_TEXT_ENCODING_ANSI));
        break;
    case ID3V2_FRAME_TYPE_PRIVATE:
        DecodePrivate(reader, properties);
        break;
    case ID3V2_FRAME_TYPE_OPAQUE:
        break;
    }
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
    if (GetType() == ID3V2_FRAME_TYPE_OPAQUE)
        return false;
    auto* pProperties = new ID3v2Properties;
    m_Properties.m_pProperties = pProperties; // which owns them
    const int nStart = m_Header.HasFlag(ID3V2_FRAME_FLAG_DATA_LENGTH) ? DATA_LENGTH_BYTES : 0;
    const bool bUnsynchronized = m_Header.HasFlag(ID3V2_FRAME_FLAG_UNSYNCHRONIZED);
    const bool bCompressed = m_Header.HasFlag(ID3V2_FRAME_FLAG_COMPRESSED);
    if (!bUnsynchronized && !bCompressed)
    {
        DecodeBody(BodyReader(m_Data, nStart), GetType(), *pProperties);
        return true;
    }
    LyBuffer body(m_Data);
    if (bUnsynchronized)
        CID3v2Tag::UnsynchronizeBuffer(body, INT_MAX, nullptr);
    if (bCompressed)
        CID3v2Tag::DecompressBuffer(body);
    DecodeBody(BodyReader(body, nStart), GetType(), *pProperties);
    return true;
}

const wchar_t* CID3v2Frame::GetDescription() const
{
    const LyPropertyMap::PROPERTIES* pProperties = m_Properties.m_pProperties;
    const LyString* pText = pProperties != nullptr ? pProperties->FindValue(CID3v2Property::DESCRIPTION) : nullptr;
    return pText != nullptr ? static_cast<const wchar_t*>(*pText) : L"";
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
