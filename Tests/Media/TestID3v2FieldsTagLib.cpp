// Fields as another library reads and writes them.

#include "FieldTags.h"
#include "TempFolder.h"
#include <attachedpictureframe.h>
#include <commentsframe.h>
#include <fstream>
#include <gtest/gtest.h>
#include <id3v2tag.h>
#include <memory>
#include <mpegfile.h>
#include <popularimeterframe.h>
#include <textidentificationframe.h>
#include <tpropertymap.h>
#include <unsynchronizedlyricsframe.h>

namespace
{
// A field, its name and value on the other side; the value on this side is what is set.
struct SHARED_CASE
{
    const wchar_t* pField;
    const wchar_t* pValue;
    const char* pTheirName;
    const wchar_t* pTheirValue23;
    const wchar_t* pTheirValue24;
};

const SHARED_CASE s_Cases[] = {
    {L"Name", L"\u00DCber \u4E2D", "TITLE", L"\u00DCber \u4E2D", L"\u00DCber \u4E2D"},
    {L"Subtitle", L"a", "SUBTITLE", L"a", L"a"},
    {L"Artist", L"One; Two", "ARTIST", L"One; Two", L"One|Two"},
    {L"Album", L"a", "ALBUM", L"a", L"a"},
    {L"Album Artist", L"a", "ALBUMARTIST", L"a", L"a"},
    {L"Composer", L"One; Two", "COMPOSER", L"One; Two", L"One|Two"},
    {L"Conductor", L"a", "CONDUCTOR", L"a", L"a"},
    {L"Lyricist", L"a", "LYRICIST", L"a", L"a"},
    {L"Remixer", L"a", "REMIXER", L"a", L"a"},
    {L"Genre", L"Jazz; Rock", "GENRE", L"Jazz; Rock", L"Jazz|Rock"},
    {L"Mood", L"a", "MOOD", L"a", L"a"},
    {L"Date", L"40304.5", "DATE", L"2010-05-06T12:00:00", L"2010-05-06 12:00:00"},
    {L"Year", L"1999", "DATE", L"1999", nullptr},
    {L"Original Date", L"40304.5", "ORIGINALDATE", nullptr, L"2010-05-06T12:00:00"},
    {L"Track #", L"3/12", "TRACKNUMBER", L"3/12", L"3/12"},
    {L"Disc #", L"1/2", "DISCNUMBER", L"1/2", L"1/2"},
    {L"Comment", L"a\nb", "COMMENT", L"a\nb", L"a\nb"},
    {L"Lyrics", L"a\nb", "LYRICS", L"a\nb", L"a\nb"},
    {L"BPM", L"120", "BPM", L"120", L"120"},
    {L"Key", L"Am", "INITIALKEY", L"Am", L"Am"},
    {L"Publisher", L"a", "LABEL", L"a", L"a"},
    {L"Copyright", L"a", "COPYRIGHT", L"a", L"a"},
    {L"Encoder", L"a", "ENCODING", L"a", L"a"},
    {L"Encoded By", L"a", "ENCODEDBY", L"a", L"a"},
    {L"ISRC", L"DEXX12345678", "ISRC", L"DEXX12345678", L"DEXX12345678"},
    {L"Catalog Number", L"a", "CATALOGNUMBER", L"a", L"a"},
    {L"Barcode", L"a", "BARCODE", L"a", L"a"},
    {L"Compilation", L"1", "COMPILATION", L"1", L"1"},
    {L"Artist Sort", L"a", "ARTISTSORT", L"a", L"a"},
    {L"Album Sort", L"a", "ALBUMSORT", L"a", L"a"},
    {L"Name Sort", L"a", "TITLESORT", L"a", L"a"},
    {L"Album Artist Sort", L"a", "ALBUMARTISTSORT", L"a", L"a"},
    {L"Media", L"CD", "MEDIA", L"CD", L"CD"},
    {L"Language", L"eng", "LANGUAGE", L"eng", L"eng"},
    {L"Replay Gain Track", L"-6.5", "REPLAYGAIN_TRACK_GAIN", L"-6.50 dB", L"-6.50 dB"},
    {L"Replay Gain Album Peak", L"0.500000", "REPLAYGAIN_ALBUM_PEAK", L"0.500000", L"0.500000"},
    {L"MusicBrainz Album Id", L"a", "MUSICBRAINZ_ALBUMID", L"a", L"a"},
    {L"MusicBrainz Artist Id", L"a", "MUSICBRAINZ_ARTISTID", L"a", L"a"},
    {L"MusicBrainz Album Artist Id", L"a", "MUSICBRAINZ_ALBUMARTISTID", L"a", L"a"},
    {L"MusicBrainz Release Group Id", L"a", "MUSICBRAINZ_RELEASEGROUPID", L"a", L"a"},
    {L"AcoustID Id", L"a", "ACOUSTID_ID", L"a", L"a"},
    {L"AcoustID Fingerprint", L"a", "ACOUSTID_FINGERPRINT", L"a", L"a"},
    {L"Artist URL", L"http://a", "ARTISTWEBPAGE", L"http://a", L"http://a"},
    {L"Copyright URL", L"http://a", "COPYRIGHTURL", L"http://a", L"http://a"},
    {L"My Own", L"a", "MY OWN", L"a", L"a"},
};

// A tag in a file that the other library opens: all of it is in front of the music, and there is no music.
class TheirFile
{
public:
    TheirFile() { (void)m_Folder.Write("a.mp3", ""); }

    void Write(CID3v2Tag& tag)
    {
        LyBuffer buffer;
        ASSERT_TRUE(tag.SaveToBuffer(buffer));
        const auto* p = reinterpret_cast<const char*>(buffer.GetData());
        (void)m_Folder.Write("a.mp3", std::string(p, static_cast<size_t>(buffer.GetSize())) + std::string(1000, '\0'));
        m_pFile = std::make_unique<TagLib::MPEG::File>(GetName().c_str(), false);
    }
    TagLib::ID3v2::Tag& GetTag() { return *m_pFile->ID3v2Tag(true); }
    TagLib::PropertyMap GetProperties() { return GetTag().properties(); }

    // What they render, as this side loads it.
    static void LoadInto(CID3v2Tag& tag, const TagLib::ID3v2::Tag& theirs, int nVersion)
    {
        const TagLib::ByteVector bytes = theirs.render(nVersion == 3 ? TagLib::ID3v2::v3 : TagLib::ID3v2::v4);
        LyBuffer buffer;
        ASSERT_TRUE(buffer.FromBuffer(bytes.data(), static_cast<int>(bytes.size())));
        ASSERT_TRUE(tag.Load(buffer, 0));
        ASSERT_EQ(tag.GetMajorVersion(), nVersion);
    }

private:
    std::string GetName() const { return m_Folder.GetPath("a.mp3"); }

    TempFolder m_Folder;
    std::unique_ptr<TagLib::MPEG::File> m_pFile;
};

std::wstring Join(const TagLib::StringList& list) { return list.toString("|").toWString(); }
} // namespace

TEST(ID3v2FieldsTagLib, ReadsEachFieldThatIsSet)
{
    for (const SHARED_CASE& test : s_Cases)
    {
        for (const int nVersion : {3, 4})
        {
            const wchar_t* pExpected = nVersion == 3 ? test.pTheirValue23 : test.pTheirValue24;
            if (pExpected == nullptr)
                continue;
            CID3v2Tag tag;
            LoadTag(tag, nVersion, {});
            ASSERT_TRUE(tag.Set(test.pField, test.pValue)) << Wide(test.pField).c_str();
            TheirFile file;
            file.Write(tag);
            EXPECT_EQ(Join(file.GetProperties()[test.pTheirName]), pExpected)
                << test.pTheirName << " " << nVersion << " " << file.GetProperties().toString().to8Bit(true);
        }
    }
}

TEST(ID3v2FieldsTagLib, ReadsAllFieldsOfOneTagTogether)
{
    const FieldTools tools;
    CID3v2Tag tag;
    LoadTag(tag, 4, {});
    for (const SHARED_CASE& test : s_Cases)
        EXPECT_EQ(tag.Set(test.pField, test.pValue), test.pField != std::wstring(L"Year"));
    TheirFile file;
    file.Write(tag);
    const TagLib::PropertyMap properties = file.GetProperties();
    EXPECT_TRUE(properties.unsupportedData().isEmpty()) << properties.unsupportedData().toString().to8Bit(true);
    for (const SHARED_CASE& test : s_Cases)
    {
        if (test.pTheirValue24 == nullptr)
            continue;
        EXPECT_EQ(Join(properties[test.pTheirName]), test.pTheirValue24) << test.pTheirName;
    }
}

TEST(ID3v2FieldsTagLib, ItsFieldsAreReadInBothVersions)
{
    const FieldTools tools;
    for (const SHARED_CASE& test : s_Cases)
    {
        for (const int nVersion : {3, 4})
        {
            const std::wstring strName = test.pField;
            if (test.pTheirValue24 == nullptr || (nVersion == 3 && strName == L"Mood"))
                continue; // written to no frame, or to one that version 2.3 does not have
            if (nVersion == 3 && strName.find(L"Date") != std::wstring::npos)
                continue; // taken apart into a year, a day and a time
            TagLib::PropertyMap properties;
            properties[test.pTheirName] = TagLib::String(test.pTheirValue24).split("|");
            TagLib::ID3v2::Tag theirs;
            (void)theirs.setProperties(properties);
            CID3v2Tag tag;
            TheirFile::LoadInto(tag, theirs, nVersion);
            if (strName == L"Genre")
            {
                // They write numbers for the genres in version 2.3. Only one number in brackets is translated.
                EXPECT_EQ(ValueOf(tag, L"Genre"), nVersion == 3 ? L"(8)(17)" : L"Jazz; Rock");
                continue;
            }
            LyPropertyMap map;
            EXPECT_TRUE(tag.Get(test.pField, map, 0)) << Wide(test.pField).c_str() << nVersion;
            std::wstring strRead = Wide(map.GetProperty(L"Value"));
            if (map.GetHasProperty(L"Value Original"))
                strRead = Wide(map.GetProperty(L"Value Original"));
            EXPECT_EQ(strRead, test.pValue) << test.pTheirName << " " << nVersion;
        }
    }
}

TEST(ID3v2FieldsTagLib, TheirDateOfVersion23GivesTheYear)
{
    const FieldTools tools;
    TagLib::ID3v2::Tag theirs;
    TagLib::PropertyMap properties;
    properties["DATE"] = TagLib::StringList("2010-05-06");
    (void)theirs.setProperties(properties);
    CID3v2Tag tag;
    TheirFile::LoadInto(tag, theirs, 3);
    EXPECT_EQ(ValueOf(tag, L"Year"), L"2010");
    EXPECT_EQ(ValueOf(tag, L"Date"), L"40179");
}

TEST(ID3v2FieldsTagLib, SeesTheCover)
{
    const TempFolder folder;
    const std::string strImage = Bytes("\x89PNG\r\n\x1A\n\0\0data");
    CID3v2Tag tag;
    const std::string strFile = folder.Write("cover.png", strImage);
    ASSERT_TRUE(tag.Set(L"Image File", LyString().FromUTF8(reinterpret_cast<const unsigned char*>(strFile.c_str()))));
    TheirFile file;
    file.Write(tag);
    const auto& pictures = file.GetTag().frameList("APIC");
    ASSERT_EQ(pictures.size(), 1u);
    const auto* pPicture = dynamic_cast<const TagLib::ID3v2::AttachedPictureFrame*>(pictures.front());
    ASSERT_NE(pPicture, nullptr);
    EXPECT_EQ(pPicture->type(), TagLib::ID3v2::AttachedPictureFrame::FrontCover);
    EXPECT_EQ(pPicture->mimeType(), "image/png");
    EXPECT_EQ(std::string(pPicture->picture().data(), pPicture->picture().size()), strImage);
}

TEST(ID3v2FieldsTagLib, SeesTheRating)
{
    CID3v2Tag tag;
    ASSERT_TRUE(tag.Set(L"Rating", L"4"));
    TheirFile file;
    file.Write(tag);
    const auto& ratings = file.GetTag().frameList("POPM");
    ASSERT_EQ(ratings.size(), 1u);
    EXPECT_EQ(dynamic_cast<const TagLib::ID3v2::PopularimeterFrame*>(ratings.front())->rating(), 192);
}

TEST(ID3v2FieldsTagLib, ItsPicturesRatingsAndTextsAreRead)
{
    for (const int nVersion : {3, 4})
    {
        TagLib::ID3v2::Tag theirs;
        auto* pPicture = new TagLib::ID3v2::AttachedPictureFrame;
        pPicture->setType(TagLib::ID3v2::AttachedPictureFrame::FrontCover);
        pPicture->setMimeType("image/jpeg");
        pPicture->setPicture(TagLib::ByteVector("\xFF\xD8image", 7));
        theirs.addFrame(pPicture);
        auto* pRating = new TagLib::ID3v2::PopularimeterFrame;
        pRating->setRating(200);
        theirs.addFrame(pRating);
        auto* pComment = new TagLib::ID3v2::CommentsFrame(TagLib::String::UTF16);
        pComment->setText(L"K\u00F6ln");
        theirs.addFrame(pComment);
        auto* pLyrics = new TagLib::ID3v2::UnsynchronizedLyricsFrame(TagLib::String::UTF16);
        pLyrics->setDescription("some");
        pLyrics->setText("words");
        theirs.addFrame(pLyrics);
        CID3v2Tag tag;
        TheirFile::LoadInto(tag, theirs, nVersion);
        LyPropertyMap map;
        EXPECT_TRUE(tag.Get(L"Image File", map));
        EXPECT_EQ(map.GetProperty(L"Mime Type"), L"image/jpeg");
        EXPECT_EQ(map.GetProperty(L"Value"), L"/9hpbWFnZQ==");
        EXPECT_EQ(ValueOf(tag, L"Rating"), L"4");
        EXPECT_EQ(ValueOf(tag, L"Comment"), L"K\u00F6ln");
        EXPECT_EQ(ValueOf(tag, L"Lyrics"), L"words");
    }
}
