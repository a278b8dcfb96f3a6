// Small tags for the tests of fields, and what they hold, as texts of bytes.
//
//     CID3v2Tag tag;
//     LoadTag(tag, 4, {{"TIT2", Latin1("Name")}});
//     EXPECT_EQ(FramesOf(tag), "TIT2:" + Latin1("Name"));

#pragma once

#include "DateTimeHelper.h"
#include "ITranslator.h"
#include "MP3Tag.h"
#include "StandInTools.h"
#include "StringHelper.h"
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// A text with its zeros.
template <size_t nSize>
std::string Bytes(const char (&text)[nSize])
{
    return std::string(text, nSize - 1);
}

// The body of a text frame in Latin-1: the encoding, and each value with its terminator.
inline std::string Latin1(const std::string& strValue) { return Bytes("\0") + strValue + Bytes("\0"); }
inline std::string Latin1(const std::string& strDescription, const std::string& strValue)
{
    return Latin1(strDescription) + strValue + Bytes("\0");
}
// That of a comment: with a language of three bytes.
inline std::string Comment(const std::string& strDescription, const std::string& strValue)
{
    return Bytes("\0eng") + strDescription + Bytes("\0") + strValue + Bytes("\0");
}
// A picture with an empty description.
inline std::string Picture(char cType, const std::string& strImage)
{
    return Latin1("image/png") + cType + Bytes("\0") + strImage;
}

using TestFrames = std::vector<std::pair<std::string, std::string>>; // id and body

inline void AppendSize(std::string& strOut, size_t nBytes, int nBits)
{
    for (int i = 3; i >= 0; --i)
        strOut += static_cast<char>(nBytes >> (nBits * i) & ((1U << nBits) - 1));
}

inline void LoadTag(CID3v2Tag& tag, int nVersion, const TestFrames& aryFrames)
{
    std::string strFrames;
    for (const auto& [strID, strBody] : aryFrames)
    {
        strFrames += strID;
        AppendSize(strFrames, strBody.size(), nVersion < 4 ? 8 : 7);
        strFrames += Bytes("\0\0") + strBody;
    }
    std::string strTag = "ID3" + std::string(1, static_cast<char>(nVersion)) + Bytes("\0\0");
    AppendSize(strTag, strFrames.size(), 7);
    strTag += strFrames;
    LyBuffer buffer;
    (void)buffer.FromBuffer(strTag.data(), static_cast<int>(strTag.size()));
    (void)tag.Load(buffer, 0);
}

inline std::string BodyOf(const CID3v2Frame& frame)
{
    return std::string(reinterpret_cast<const char*>(frame.m_Data.GetData()),
                       static_cast<size_t>(frame.m_Data.GetSize()));
}
inline std::string IDOf(const CID3v2Frame& frame) { return std::string(frame.m_Header.m_ID, 4); }

// "TIT2:body" of each frame in order, without anything between them.
inline std::string FramesOf(const CID3v2Tag& tag)
{
    std::string strFrames;
    for (const CID3v2Frame* pFrame : tag.m_aryFrames)
        strFrames += IDOf(*pFrame) + ":" + BodyOf(*pFrame);
    return strFrames;
}

inline std::wstring Wide(const LyString& str) { return static_cast<const wchar_t*>(str); }
inline std::wstring ValueOf(CID3v2Tag& tag, const wchar_t* pName) { return Wide(tag.GetSimple(pName)); }

// A tag whose table holds nothing but what the test adds.
inline void RemoveRows(CID3v2Tag& tag)
{
    tag.m_mapFieldIndexes.RemoveAll();
    tag.m_aryFields.RemoveAll();
}
inline void AddRow(CID3v2Tag& tag, const char* pID, const wchar_t* pName, const wchar_t* pDescription, int nFlags,
                   int nPictureType = CID3v2Field::ANY_PICTURE_TYPE)
{
    tag.AddField(new CID3v2Field(pID, pName, pDescription, nFlags, nPictureType));
}

// The services that values go through: dates and text. Translations get the mark in front.
class FieldTools final : public StandInTools, public ITranslator
{
public:
    IStringHelper* GetStringHelper(bool) override { return &m_StringHelper; }
    IDateTimeHelper* GetDateTimeHelper(bool) override { return &m_DateTimeHelper; }
    ITranslator* GetTranslator(bool) override { return this; }

    void Reserved1() override {}
    void Reserved2() override {}
    void Translate(const ILyDllString& strText) override
    {
        const std::wstring strTranslated = m_strTranslationMark + strText.Get();
        strText.Set(strTranslated.c_str(), -1);
    }

    std::wstring m_strTranslationMark;

private:
    StringHelper m_StringHelper;
    DateTimeHelper m_DateTimeHelper;
};
