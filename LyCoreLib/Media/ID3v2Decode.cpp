#include "ID3v2Decode.h"
#include "ID3v2Properties.h"
#include "ID3v2Text.h"
#include <cstring>
#include <utility>

namespace
{
constexpr int LANGUAGE_BYTES = 3;
constexpr int PODCAST_FLAG_BYTES = 4;
constexpr int RATING_STEP = 51;                                                      // 255 in five steps
constexpr unsigned char JPEG_START[] = {0xFF, 0xD8};                                 // ISO 10918-1: SOI
constexpr unsigned char PNG_START[] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'}; // PNG, 5.2

// Reads a frame's body from its start. Behind the end everything is zero or empty, and the position stays.
class BodyReader
{
public:
    BodyReader(std::span<const unsigned char> body, int nStart) : m_Body(body), m_nPos(nStart) {}

    bool IsAtEnd() const { return GetBytesLeft() <= 0; }
    int ReadByte() { return IsAtEnd() ? 0 : m_Body[static_cast<size_t>(m_nPos++)]; }
    LyString ReadOne(int nEncoding) { return ID3v2Text::Decode(nEncoding, m_Body, m_nPos, true); }
    LyString ReadAll(int nEncoding) { return ID3v2Text::Decode(nEncoding, m_Body, m_nPos, false); }

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
        if (GetBytesLeft() < PODCAST_FLAG_BYTES)
            return 0;
        unsigned int nValue = 0;
        for (int i = 0; i < PODCAST_FLAG_BYTES; ++i)
            nValue |= static_cast<unsigned int>(ReadByte()) << 8 * i;
        return static_cast<int>(nValue);
    }
    template <size_t nBytes>
    bool BeginsWith(const unsigned char (&bytes)[nBytes]) const
    {
        return GetBytesLeft() >= static_cast<int>(nBytes) && memcmp(m_Body.data() + m_nPos, bytes, nBytes) == 0;
    }
    int GetPosition() const { return m_nPos; }

private:
    int GetBytesLeft() const { return static_cast<int>(m_Body.size()) - m_nPos; }

    std::span<const unsigned char> m_Body;
    int m_nPos;
};

int ReadEncoding(BodyReader& reader, ID3v2Properties& properties)
{
    const int nEncoding = reader.ReadByte();
    properties.Add(ID3V2_PROPERTY_TEXT_ENCODING, nEncoding);
    return nEncoding;
}

void DecodeDescriptionAndValue(BodyReader& reader, int nEncoding, ID3v2Properties& properties)
{
    properties.Add(ID3V2_PROPERTY_DESCRIPTION, reader.ReadOne(nEncoding));
    properties.Add(ID3V2_PROPERTY_VALUE, reader.ReadAll(nEncoding));
}

void DecodeComment(BodyReader& reader, ID3v2Properties& properties)
{
    const int nEncoding = ReadEncoding(reader, properties);
    properties.Add(ID3V2_PROPERTY_LANGUAGE_ID, reader.ReadLanguage());
    DecodeDescriptionAndValue(reader, nEncoding, properties);
}

void DecodePicture(BodyReader& reader, ID3v2Properties& properties)
{
    const int nEncoding = ReadEncoding(reader, properties);
    properties.Add(ID3V2_PROPERTY_MIME_TYPE, reader.ReadOne(ID3V2_FRAME_TEXT_ENCODING_ANSI));
    properties.Add(ID3V2_PROPERTY_PICTURE_TYPE, reader.IsAtEnd() ? ID3V2_PICTURE_FRONT_COVER : reader.ReadByte());
    // Some writers leave the description out. No text begins as these images do.
    LyString strDescription;
    if (!reader.BeginsWith(JPEG_START) && !reader.BeginsWith(PNG_START))
        strDescription = reader.ReadOne(nEncoding);
    properties.Add(ID3V2_PROPERTY_DESCRIPTION, std::move(strDescription));
    properties.AddBinaryValue(reader.GetPosition());
}

// The owner is not kept, and neither is the counter of plays behind the rating.
void DecodeRating(BodyReader& reader, ID3v2Properties& properties)
{
    (void)reader.ReadOne(ID3V2_FRAME_TEXT_ENCODING_ANSI);
    properties.Add(ID3V2_PROPERTY_VALUE, (reader.ReadByte() + RATING_STEP - 1) / RATING_STEP);
}

// Deliberate: the value is taken from the owner's length on, counted from the body's first byte, where a data length
// indicator may stand.
void DecodePrivate(BodyReader& reader, ID3v2Properties& properties)
{
    LyString strOwner = reader.ReadOne(ID3V2_FRAME_TEXT_ENCODING_ANSI);
    const int nOffset = strOwner.GetLength() + 1;
    properties.Add(ID3V2_PROPERTY_DESCRIPTION, std::move(strOwner));
    properties.AddBinaryValue(nOffset);
}
} // namespace

void DecodeID3v2Body(ID3V2_FRAME_TYPES eType, std::span<const unsigned char> body, int nStart,
                     ID3v2Properties& properties)
{
    BodyReader reader(body, nStart);
    switch (eType)
    {
    case ID3V2_FRAME_TYPE_TEXT:
        properties.Add(ID3V2_PROPERTY_VALUE, reader.ReadAll(ReadEncoding(reader, properties)));
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
        properties.Add(ID3V2_PROPERTY_VALUE, reader.ReadLittleEndian());
        break;
    case ID3V2_FRAME_TYPE_URL:
        properties.Add(ID3V2_PROPERTY_VALUE, reader.ReadAll(ID3V2_FRAME_TEXT_ENCODING_ANSI));
        break;
    case ID3V2_FRAME_TYPE_PRIVATE:
        DecodePrivate(reader, properties);
        break;
    case ID3V2_FRAME_TYPE_OPAQUE:
        break;
    }
}

int GetID3v2PropertyCount(ID3V2_FRAME_TYPES eType)
{
    switch (eType)
    {
    case ID3V2_FRAME_TYPE_TEXT:
    case ID3V2_FRAME_TYPE_PRIVATE:
        return 2;
    case ID3V2_FRAME_TYPE_USER_TEXT:
        return 3;
    case ID3V2_FRAME_TYPE_COMMENT:
        return 4;
    case ID3V2_FRAME_TYPE_PICTURE:
        return 5;
    case ID3V2_FRAME_TYPE_RATING:
    case ID3V2_FRAME_TYPE_PODCAST_FLAG:
    case ID3V2_FRAME_TYPE_URL:
        return 1;
    case ID3V2_FRAME_TYPE_OPAQUE:
        break;
    }
    return 0;
}

bool HasID3v2Description(ID3V2_FRAME_TYPES eType)
{
    switch (eType)
    {
    case ID3V2_FRAME_TYPE_USER_TEXT:
    case ID3V2_FRAME_TYPE_COMMENT:
    case ID3V2_FRAME_TYPE_PICTURE:
    case ID3V2_FRAME_TYPE_PRIVATE:
        return true;
    default:
        return false;
    }
}
