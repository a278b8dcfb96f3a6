// Frames as lines of text, from this library and from TagLib, so that the two can be compared line by line.

#pragma once

#include "ID3v2Bytes.h"
#include <attachedpictureframe.h>
#include <commentsframe.h>
#include <id3v2framefactory.h>
#include <id3v2tag.h>
#include <mpegfile.h>
#include <podcastframe.h>
#include <popularimeterframe.h>
#include <privateframe.h>
#include <tbytevectorstream.h>
#include <textidentificationframe.h>
#include <unsynchronizedlyricsframe.h>
#include <urllinkframe.h>

namespace ID3v2Judge
{
using namespace ID3v2Bytes;
using LINES = std::vector<std::string>;

inline std::string Base64(const TagLib::ByteVector& bytes)
{
    LyString str;
    str.FromBinary(bytes.data(), static_cast<int>(bytes.size()));
    return Narrow(str);
}

inline std::string Join(const TagLib::StringList& list, size_t nFirst)
{
    std::string str;
    for (size_t i = nFirst; i < list.size(); ++i)
    {
        const std::string strValue = list[static_cast<unsigned int>(i)].to8Bit(true);
        str += (str.empty() || strValue.empty() ? "" : "; ") + strValue;
    }
    return str;
}

inline std::string Language(const TagLib::ByteVector& bytes)
{
    unsigned int nLanguage = 0;
    for (unsigned int i = 0; i < 3; ++i)
        nLanguage = nLanguage << 8 | (i < bytes.size() ? static_cast<unsigned char>(bytes[static_cast<int>(i)]) : 0U);
    return std::to_string(nLanguage);
}

inline std::string Line(const std::string& strID, const std::initializer_list<std::string>& aryProperties)
{
    std::string str = strID;
    for (const std::string& strProperty : aryProperties)
        str += " | " + strProperty;
    return str;
}

// ---- As TagLib reads it

inline std::string Line(const TagLib::ID3v2::Frame& frame)
{
    using namespace TagLib::ID3v2;
    const TagLib::ByteVector id = frame.frameID();
    const std::string strID(id.data(), id.size());
    if (const auto* pUser = dynamic_cast<const UserTextIdentificationFrame*>(&frame))
        return Line(strID, {pUser->description().to8Bit(true), Join(pUser->fieldList(), 1)});
    if (const auto* pText = dynamic_cast<const TextIdentificationFrame*>(&frame))
        return Line(strID, {Join(pText->fieldList(), 0)});
    if (const auto* pComment = dynamic_cast<const CommentsFrame*>(&frame))
        return Line(strID, {Language(pComment->language()), pComment->description().to8Bit(true),
                            pComment->text().to8Bit(true)});
    if (const auto* pLyrics = dynamic_cast<const UnsynchronizedLyricsFrame*>(&frame))
        return Line(strID,
                    {Language(pLyrics->language()), pLyrics->description().to8Bit(true), pLyrics->text().to8Bit(true)});
    if (const auto* pPicture = dynamic_cast<const AttachedPictureFrame*>(&frame))
        return Line(strID, {pPicture->mimeType().to8Bit(true), std::to_string(pPicture->type()),
                            pPicture->description().to8Bit(true), Base64(pPicture->picture())});
    if (const auto* pRating = dynamic_cast<const PopularimeterFrame*>(&frame))
        return Line(strID, {std::to_string((pRating->rating() + 50) / 51)});
    if (const auto* pPrivate = dynamic_cast<const PrivateFrame*>(&frame))
        return Line(strID, {pPrivate->owner().to8Bit(true), Base64(pPrivate->data())});
    if (dynamic_cast<const UserUrlLinkFrame*>(&frame) != nullptr)
        return strID;
    if (const auto* pURL = dynamic_cast<const UrlLinkFrame*>(&frame))
        return Line(strID, {pURL->url().to8Bit(true)});
    if (dynamic_cast<const PodcastFrame*>(&frame) != nullptr)
        return Line(strID, {"0"}); // it writes four zero bytes, and does not say what it read
    return strID;
}

inline LINES TagLibLines(const std::string& strTag)
{
    const TagLib::ByteVector bytes(strTag.data(), static_cast<unsigned int>(strTag.size()));
    TagLib::ByteVectorStream stream(bytes);
    TagLib::MPEG::File file(&stream, TagLib::ID3v2::FrameFactory::instance(), false);
    LINES lines;
    if (file.ID3v2Tag() == nullptr)
        return lines;
    for (const TagLib::ID3v2::Frame* pFrame : file.ID3v2Tag()->frameList())
        lines.push_back(Line(*pFrame));
    return lines;
}

// ---- As this library reads it

inline std::string Line(const CID3v2Frame& frame)
{
    auto Get = [&frame](const wchar_t* pName) { return Property(frame, pName); };
    switch (frame.GetType())
    {
    case ID3V2_FRAME_TYPE_USER_TEXT:
    case ID3V2_FRAME_TYPE_PRIVATE:
        return Line(ID(frame), {Get(L"Description"), Get(L"Value")});
    case ID3V2_FRAME_TYPE_COMMENT:
        return Line(ID(frame), {Get(L"Language ID"), Get(L"Description"), Get(L"Value")});
    case ID3V2_FRAME_TYPE_PICTURE:
        return Line(ID(frame), {Get(L"Mime Type"), Get(L"Picture Type"), Get(L"Description"), Get(L"Value")});
    case ID3V2_FRAME_TYPE_OPAQUE:
        return ID(frame);
    default:
        return Line(ID(frame), {Get(L"Value")});
    }
}

inline LINES OwnLines(const CID3v2Tag& tag)
{
    LINES lines;
    for (const CID3v2Frame* pFrame : tag.m_aryFrames)
        lines.push_back(Line(*pFrame));
    return lines;
}

inline LINES OwnLines(const std::string& strTag)
{
    CID3v2Tag tag;
    (void)Load(tag, strTag); // what is no tag has no lines
    return OwnLines(tag);
}

// ---- Tags that TagLib makes

inline TagLib::String Text(const char* pUTF8) { return TagLib::String(pUTF8, TagLib::String::UTF8); }

// The tag alone: the header of a file that holds nothing else.
inline std::string Rendered(TagLib::ID3v2::Tag& tag, int nVersion)
{
    const TagLib::ByteVector bytes = tag.render(nVersion == 3 ? TagLib::ID3v2::v3 : TagLib::ID3v2::v4);
    return std::string(bytes.data(), bytes.size());
}
} // namespace ID3v2Judge
