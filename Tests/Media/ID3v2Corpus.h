// Tags that TagLib writes: every frame type, in every encoding, as version 2.3 and as version 2.4.

#pragma once

#include "ID3v2Judge.h"
#include <generalencapsulatedobjectframe.h>
#include <uniquefileidentifierframe.h>

namespace ID3v2Corpus
{
using namespace ID3v2Judge;
using namespace TagLib::ID3v2;
using TagLib::ByteVector;
using TagLib::StringList;

inline constexpr TagLib::String::Type s_aryEncodings[] = {TagLib::String::Latin1, TagLib::String::UTF16,
                                                          TagLib::String::UTF16BE, TagLib::String::UTF8};
inline const char* const s_aryTexts[] = {"", "Song", "\xC3\x9C-\xC3\xA9t\xC3\xA9", "a / b; c"};
inline const char* const s_aryWideTexts[] = {"\xE6\x97\xA5\xE6\x9C\xAC", "\xCE\xB1\xCE\xB2 \xE2\x82\xAC",
                                             "\xEF\xBF\xBD"};

inline ByteVector Image(size_t nBytes, const std::string& strStart)
{
    std::string str = strStart;
    while (str.size() < nBytes)
        str += static_cast<char>(str.size() * str.size() / 7);
    return ByteVector(str.data(), static_cast<unsigned int>(str.size()));
}

inline void AddTexts(TagLib::ID3v2::Tag& tag, const TagLib::String& strText, TagLib::String::Type eEncoding)
{
    // Of genres and dates TagLib makes something of its own: a test below.
    for (const char* pID : {"TIT2", "TPE1", "TPE2", "TALB", "TRCK", "TPOS", "TBPM", "TSRC", "TCOM", "TKEY", "TZZZ"})
    {
        auto* pFrame = new TextIdentificationFrame(pID, eEncoding);
        pFrame->setText(strText);
        tag.addFrame(pFrame);
    }
}

inline void AddDescribed(TagLib::ID3v2::Tag& tag, const TagLib::String& strText, TagLib::String::Type eEncoding)
{
    auto* pUser = new UserTextIdentificationFrame("Mood " + strText, StringList(strText), eEncoding);
    tag.addFrame(pUser);
    auto* pComment = new CommentsFrame(eEncoding);
    pComment->setLanguage("eng");
    pComment->setDescription(strText);
    pComment->setText("About " + strText);
    tag.addFrame(pComment);
    auto* pLyrics = new UnsynchronizedLyricsFrame(eEncoding);
    pLyrics->setLanguage("deu");
    pLyrics->setDescription("D");
    pLyrics->setText(strText + "\n" + strText);
    tag.addFrame(pLyrics);
}

inline void AddPicture(TagLib::ID3v2::Tag& tag, const TagLib::String& strText, TagLib::String::Type eEncoding,
                       const ByteVector& image)
{
    auto* pFrame = new AttachedPictureFrame;
    pFrame->setTextEncoding(eEncoding);
    pFrame->setMimeType("image/jpeg");
    pFrame->setType(AttachedPictureFrame::BackCover);
    pFrame->setDescription(strText);
    pFrame->setPicture(image);
    tag.addFrame(pFrame);
}

inline void AddOthers(TagLib::ID3v2::Tag& tag, int nRating)
{
    auto* pURL = new UrlLinkFrame("WOAR");
    pURL->setUrl("http://example.org/artist");
    tag.addFrame(pURL);
    auto* pUserURL = new UserUrlLinkFrame;
    pUserURL->setDescription("d");
    pUserURL->setUrl("http://example.org/");
    tag.addFrame(pUserURL);
    auto* pRating = new PopularimeterFrame;
    pRating->setEmail("a@example.org");
    pRating->setRating(nRating);
    pRating->setCounter(7);
    tag.addFrame(pRating);
    auto* pPrivate = new PrivateFrame;
    pPrivate->setOwner("owner");
    pPrivate->setData(ByteVector("\xFF\x00\xFF\xE0\x01", 5));
    tag.addFrame(pPrivate);
    tag.addFrame(new PodcastFrame);
    tag.addFrame(new UniqueFileIdentifierFrame("http://example.org", ByteVector("id", 2)));
    auto* pObject = new GeneralEncapsulatedObjectFrame;
    pObject->setObject(ByteVector("object"));
    tag.addFrame(pObject);
}

// Many tags, each rendered in both versions.
inline std::vector<std::string> MakeCorpus()
{
    std::vector<std::string> aryTags;
    int nRating = 0;
    auto Add = [&](const char* pText, TagLib::String::Type eEncoding)
    {
        TagLib::ID3v2::Tag tag;
        AddTexts(tag, Text(pText), eEncoding);
        AddDescribed(tag, Text(pText), eEncoding);
        AddPicture(tag, Text(pText), eEncoding, Image(100, "\xFF\xD8\xFF\xE0"));
        AddOthers(tag, nRating);
        nRating = (nRating + 37) % 256;
        for (const int nVersion : {3, 4})
            aryTags.push_back(Rendered(tag, nVersion));
    };
    for (const auto eEncoding : s_aryEncodings)
    {
        for (const char* pText : s_aryTexts)
            Add(pText, eEncoding);
        for (const char* pText : s_aryWideTexts)
        {
            if (eEncoding != TagLib::String::Latin1)
                Add(pText, eEncoding);
        }
        Add(std::string(3000, 'l').c_str(), eEncoding);
    }
    return aryTags;
}

inline const std::vector<std::string>& Get()
{
    static const std::vector<std::string> s_aryCorpus = MakeCorpus();
    return s_aryCorpus;
}
} // namespace ID3v2Corpus
