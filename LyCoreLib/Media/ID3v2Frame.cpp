#include "MP3Tag.h"
#include <algorithm>
#include <climits>
#include <cstring>

namespace
{
constexpr int GROW_BYTES = LyBuffer::BYTE_WRITER_GROW_BYTES;
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
    LyString GetRestInBase64() const { return GetBase64From(m_nPos); }
    LyString GetBase64From(int nOffset) const
    {
        LyString str;
        if (nOffset < m_Body.GetSize())
            str.FromBinary(m_Body.GetData() + nOffset, m_Body.GetSize() - nOffset);
        return str;
    }

private:
    const LyBuffer& m_Body;
    int m_nPos;
};

int ReadEncoding(BodyReader& reader, LyPropertyMap& properties)
{
    const int nEncoding = reader.ReadByte();
    properties.SetPropertyInt(CID3v2Property::TEXT_ENCODING, nEncoding);
    return nEncoding;
}

void DecodeDescriptionAndValue(BodyReader& reader, int nEncoding, LyPropertyMap& properties)
{
    properties.SetProperty(CID3v2Property::DESCRIPTION, reader.ReadOne(nEncoding));
    properties.SetProperty(CID3v2Property::VALUE, reader.ReadAll(nEncoding));
}

void DecodeComment(BodyReader& reader, LyPropertyMap& properties)
{
    const int nEncoding = ReadEncoding(reader, properties);
    properties.SetPropertyInt(CID3v2Property::LANGUAGE_ID, reader.ReadLanguage());
    DecodeDescriptionAndValue(reader, nEncoding, properties);
}

void DecodePicture(BodyReader& reader, LyPropertyMap& properties)
{
    const int nEncoding = ReadEncoding(reader, properties);
    properties.SetProperty(CID3v2Property::MIME_TYPE, reader.ReadOne(ID3V2_FRAME_TEXT_ENCODING_ANSI));
    properties.SetPropertyInt(CID3v2Property::PICTURE_TYPE,
                              reader.IsAtEnd() ? ID3V2_PICTURE_FRONT_COVER : reader.ReadByte());
    // Some writers leave the description out. No text begins as these images do.
    LyString strDescription;
    if (!reader.BeginsWith(JPEG_START) && !reader.BeginsWith(PNG_START))
        strDescription = reader.ReadOne(nEncoding);
    properties.SetProperty(CID3v2Property::DESCRIPTION, strDescription);
    properties.SetProperty(CID3v2Property::VALUE, reader.GetRestInBase64());
}

// The owner is not kept, and neither is the counter of plays behind the rating.
void DecodeRating(BodyReader& reader, LyPropertyMap& properties)
{
    (void)reader.ReadOne(ID3V2_FRAME_TEXT_ENCODING_ANSI);
    properties.SetPropertyInt(CID3v2Property::VALUE, (reader.ReadByte() + RATING_STEP - 1) / RATING_STEP);
}

// Deliberate: the value is taken from the owner's length on, counted from the body's first byte, where a data length
// indicator may stand.
void DecodePrivate(BodyReader& reader, LyPropertyMap& properties)
{
    const LyString strOwner = reader.ReadOne(ID3V2_FRAME_TEXT_ENCODING_ANSI);
    properties.SetProperty(CID3v2Property::DESCRIPTION, strOwner);
    properties.SetProperty(CID3v2Property::VALUE, reader.GetBase64From(strOwner.GetLength() + 1));
}

bool DecodeBody(BodyReader& reader, ID3V2_FRAME_TYPES eType, LyPropertyMap& properties)
{
    switch (eType)
    {
    case ID3V2_FRAME_TYPE_TEXT:
        properties.SetProperty(CID3v2Property::VALUE, reader.ReadAll(ReadEncoding(reader, properties)));
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
        properties.SetPropertyInt(CID3v2Property::VALUE, reader.ReadLittleEndian());
        break;
    case ID3V2_FRAME_TYPE_URL:
        properties.SetProperty(CID3v2Property::VALUE, reader.ReadAll(ID3V2_FRAME_TEXT_ENCODING_ANSI));
        break;
    case ID3V2_FRAME_TYPE_PRIVATE:
        DecodePrivate(reader, properties);
        break;
    case ID3V2_FRAME_TYPE_OPAQUE:
        return false;
    }
    return true;
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
    const int nStart = m_Header.HasFlag(ID3V2_FRAME_FLAG_DATA_LENGTH) ? DATA_LENGTH_BYTES : 0;
    const bool bUnsynchronized = m_Header.HasFlag(ID3V2_FRAME_FLAG_UNSYNCHRONIZED);
    const bool bCompressed = m_Header.HasFlag(ID3V2_FRAME_FLAG_COMPRESSED);
    if (GetType() == ID3V2_FRAME_TYPE_OPAQUE)
        return false;
    if (!bUnsynchronized && !bCompressed)
    {
        BodyReader reader(m_Data, nStart);
        return DecodeBody(reader, GetType(), m_Properties);
    }
    LyBuffer body(m_Data);
    if (bUnsynchronized)
        CID3v2Tag::UnsynchronizeBuffer(body, INT_MAX, nullptr);
    if (bCompressed)
        CID3v2Tag::DecompressBuffer(body);
    BodyReader reader(body, nStart);
    return DecodeBody(reader, GetType(), m_Properties);
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
    auto Append = [&buffer](const unsigned char* p, int nBytes)
    {
        unsigned char* pEnd = nBytes > 0 ? buffer.GetAppendBlock(nBytes, false, GROW_BYTES) : nullptr;
        if (pEnd != nullptr)
            std::copy_n(p, nBytes, pEnd);
    };
    Append(&cEncoding, 1);
    CID3v2Tag::EncodeString(cEncoding, strMime, buffer);
    Append(&cPictureType, 1);
    CID3v2Tag::EncodeString(cEncoding, PICTURE_DESCRIPTION, buffer);
    Append(image.GetData(), image.GetSize());
}
