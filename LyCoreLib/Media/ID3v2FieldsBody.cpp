// The body of a new frame.

#include "ID3v2FieldsBody.h"
#include "ID3v2Packing.h"
#include "LyFilename.h"
#include "MP3Tag.h"
#include <climits>
#include <iterator>

namespace
{
constexpr int LANGUAGE_BYTES = 3;
constexpr unsigned char NO_LANGUAGE[LANGUAGE_BYTES] = {}; // Deliberate: a new comment never tells its language
constexpr int PODCAST_FLAG_BYTES = 4;
constexpr int MAX_IMAGE_BYTES = INT_MAX;
constexpr unsigned char RATINGS[] = {0, 1, 64, 128, 192, 255}; // of no star to five

void AppendByte(LyBuffer& body, int nByte)
{
    const auto cByte = static_cast<unsigned char>(nByte);
    ID3v2Packing::Append(body, &cByte, 1);
}

void AppendLatin1(LyBuffer& body, const LyString& strText)
{
    CID3v2Tag::EncodeString(ID3V2_FRAME_TEXT_ENCODING_ANSI, strText, body);
}

// encoding, and for a comment a language; description, unless it is a plain text; values
void BuildText(LyBuffer& body, ID3V2_FRAME_TYPES eType, const CID3v2Field& row, const ID3v2FrameValue& value)
{
    AppendByte(body, value.nEncoding);
    if (eType == ID3V2_FRAME_TYPE_COMMENT)
        ID3v2Packing::Append(body, NO_LANGUAGE, LANGUAGE_BYTES);
    if (eType != ID3V2_FRAME_TYPE_TEXT)
        CID3v2Tag::EncodeString(value.nEncoding, row.m_strDescription, body);
    for (const LyString& strValue : value.aryValues)
        CID3v2Tag::EncodeString(value.nEncoding, strValue, body);
}

// Deliberate: an image that cannot be loaded gives no body, and no frame takes the place of the one that was there.
void BuildPicture(LyBuffer& body, const LyString& strFile)
{
    const LyFilename filename(strFile);
    LyBuffer image;
    if (!image.FromFile(filename, MAX_IMAGE_BYTES, filename.GetIsURL())) // only an address needs the reader library
        return;
    LyString strType = filename.GetExtension();
    if (LyHash::AreTextsEqual(strType, L"jpg", false))
        strType = L"jpeg";
    CID3v2Frame::EncodePicture(body, image, L"image/" + strType, ID3V2_PICTURE_FRONT_COVER);
}

// Deliberate: no owner, and no counter of plays, whatever the frame had before.
void BuildRating(LyBuffer& body, int nRating)
{
    AppendLatin1(body, LyString());
    AppendByte(body, nRating >= 1 && nRating < static_cast<int>(std::size(RATINGS)) ? RATINGS[nRating] : 0);
}

void BuildPodcastFlag(LyBuffer& body, int nFlag)
{
    for (int i = 0; i < PODCAST_FLAG_BYTES; ++i)
        AppendByte(body, nFlag >> 8 * i);
}

void BuildPrivate(LyBuffer& body, const CID3v2Field& row, const LyString& strBase64)
{
    LyBuffer data;
    (void)data.FromStringBase64(strBase64); // nothing in it is an empty value
    AppendLatin1(body, row.m_strDescription);
    ID3v2Packing::Append(body, data.GetData(), data.GetSize());
}
} // namespace

void BuildID3v2FrameBody(LyBuffer& body, const CID3v2Field& row, const ID3v2FrameValue& value)
{
    const ID3V2_FRAME_TYPES eType = CID3v2Frame::GetFrameType(row.m_ID);
    switch (eType)
    {
    case ID3V2_FRAME_TYPE_TEXT:
    case ID3V2_FRAME_TYPE_USER_TEXT:
    case ID3V2_FRAME_TYPE_COMMENT:
        BuildText(body, eType, row, value);
        break;
    case ID3V2_FRAME_TYPE_PICTURE:
        BuildPicture(body, value.strText);
        break;
    case ID3V2_FRAME_TYPE_RATING:
        BuildRating(body, value.strText.GetInt());
        break;
    case ID3V2_FRAME_TYPE_PODCAST_FLAG:
        BuildPodcastFlag(body, value.strText.GetInt());
        break;
    case ID3V2_FRAME_TYPE_URL:
        AppendLatin1(body, value.strText);
        break;
    case ID3V2_FRAME_TYPE_PRIVATE:
        BuildPrivate(body, row, value.strText);
        break;
    case ID3V2_FRAME_TYPE_OPAQUE:
        break;
    }
}
