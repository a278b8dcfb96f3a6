#include "TagsShow.h"
#include "LyDateTime.h"
#include "Text.h"
#include <algorithm>
#include <climits>
#include <cstdio>
#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>

namespace
{
using json = nlohmann::ordered_json;

constexpr wchar_t LIST_DATE_FIELD[] = L"Date"; // a number in the INFO list

// A text on one line of a terminal: line ends are shown as "\n", and what would steer the terminal is not sent there.
std::string OneLine(const std::string& strText)
{
    std::string str;
    for (const char c : strText)
    {
        if (c == '\n')
            str += "\\n";
        else if (c != '\r')
            str += static_cast<unsigned char>(c) < ' ' || c == '\x7F' ? '?' : c;
    }
    return str;
}

std::string GetForm(TagFile& file)
{
    return file.GetTag().m_bLoaded ? "ID3v2." + std::to_string(file.GetTag().GetMajorVersion()) : "none";
}

TAG_FIELDS CollectInfoList(const CWAVInfoListChunk& list)
{
    TAG_FIELDS fields;
    LyString strField;
    LyString strText;
    for (LyPOSITION position = list.GetStartPosition(); list.GetNextAssoc(position, strField, strText);)
    {
        if (strField == LIST_DATE_FIELD && !strText.IsEmpty())
            strText = LyDateTime(LyString::GetDouble(strText, nullptr, true, INT_MAX, true)).FormatISO8601(false, true);
        fields.emplace_back(FromTagText(strField), FromTagText(strText));
    }
    std::sort(fields.begin(), fields.end());
    return fields;
}

json ToObject(const TAG_FIELDS& fields)
{
    json object = json::object();
    for (const auto& [strName, strValue] : fields)
        object[strName] = strValue;
    return object;
}

// ID3v2.4.0-structure, 3: the three letters of ISO 639-2, which the frame has as a number; empty where it has none.
std::string GetLanguage(int nLanguage)
{
    std::string strLetters;
    for (int nShift = 16; nShift >= 0; nShift -= 8)
        strLetters += static_cast<char>(nLanguage >> nShift & 0xFF);
    const bool bLetters = std::all_of(strLetters.begin(), strLetters.end(), [](char c) { return c > ' ' && c <= '~'; });
    return bLetters ? strLetters : std::string();
}

// A picture's and a private frame's value is base64.
json DescribeFrame(const CID3v2Frame& frame)
{
    json object = {{"id", std::string(frame.m_Header.m_ID, sizeof frame.m_Header.m_ID)},
                   {"bytes", frame.m_Data.GetSize()}};
    const auto add = [&](const char* pKey, const wchar_t* pProperty, bool bNumber)
    {
        if (!frame.m_Properties.GetHasProperty(pProperty))
            return;
        if (bNumber)
            object[pKey] = frame.m_Properties.GetPropertyInt(pProperty);
        else
            object[pKey] = FromTagText(frame.m_Properties.GetProperty(pProperty));
    };
    add("encoding", CID3v2Property::TEXT_ENCODING, true);
    if (frame.m_Properties.GetHasProperty(CID3v2Property::LANGUAGE_ID))
        object["language"] = GetLanguage(frame.m_Properties.GetPropertyInt(CID3v2Property::LANGUAGE_ID));
    add("description", CID3v2Property::DESCRIPTION, false);
    add("mime_type", CID3v2Property::MIME_TYPE, false);
    add("picture_type", CID3v2Property::PICTURE_TYPE, true);
    add("value", CID3v2Property::VALUE, false);
    return object;
}

void PrintFields(const char* pHeading, const TAG_FIELDS& fields)
{
    if (fields.empty())
        return;
    size_t nWidth = 0;
    for (const auto& field : fields)
        nWidth = std::max(nWidth, std::min<size_t>(field.first.size(), 32));
    std::printf("%s\n", pHeading);
    for (const auto& [strName, strValue] : fields)
        std::printf("  %-*s  %s\n", static_cast<int>(nWidth), OneLine(strName).c_str(), OneLine(strValue).c_str());
}

} // namespace

void PrintTags(TagFile& file)
{
    std::printf("%s\n", OneLine(file.GetPath()).c_str());
    CID3v2Tag& tag = file.GetTag();
    if (tag.m_bLoaded)
        std::printf("Tag: %s, %d bytes, %d frame%s\n", GetForm(file).c_str(), file.GetTagBytes(),
                    tag.m_aryFrames.GetSize(), tag.m_aryFrames.GetSize() == 1 ? "" : "s");
    else
        std::puts("Tag: none");
    PrintFields("Fields", CollectTagFields(tag));
    if (tag.m_aryFrames.GetSize() > 0)
        std::puts("Frames");
    for (int i = 0; i < tag.m_aryFrames.GetSize(); ++i)
        std::printf("  %s\n", OneLine(FromTagText(tag.GetFrameSummary(i))).c_str());
    PrintFields("INFO list, which is shown only", CollectInfoList(file.GetInfoList()));
}

json DescribeTags(TagFile& file)
{
    CID3v2Tag& tag = file.GetTag();
    TAG_FIELDS fields = CollectTagFields(tag);
    std::erase_if(fields, [](const auto& field) { return field.first == TAG_PICTURE_FIELD; });
    json frames = json::array();
    for (const CID3v2Frame* pFrame : tag.m_aryFrames)
        frames.push_back(DescribeFrame(*pFrame));
    const std::string strPicture = GetTagField(tag, TAG_PICTURE_FIELD);
    std::error_code error;
    return {{"file", std::filesystem::absolute(file.GetPath(), error).string()},
            {"form", GetForm(file)},
            {"tag_bytes", file.GetTagBytes()},
            {"fields", ToObject(fields)},
            {"picture", strPicture.empty() ? json(nullptr) : json(strPicture)},
            {"frames", frames},
            {"info", ToObject(CollectInfoList(file.GetInfoList()))}};
}

void PrintTagDifference(const std::string& strPath, const TAG_FIELDS& before, const TAG_FIELDS& after)
{
    std::printf("%s%s\n", OneLine(strPath).c_str(), before == after ? ": no change" : "");
    const auto print = [](char cMark, const std::string& strName, const std::string& strValue)
    { std::printf("  %c %s: %s\n", cMark, OneLine(strName).c_str(), OneLine(strValue).c_str()); };
    const std::map<std::string, std::string> mapOld(before.begin(), before.end());
    const std::map<std::string, std::string> mapNew(after.begin(), after.end());
    for (const auto& [strName, strValue] : before)
    {
        const auto pNew = mapNew.find(strName);
        if (pNew != mapNew.end() && pNew->second == strValue)
            continue;
        print('-', strName, strValue);
        if (pNew != mapNew.end())
            print('+', strName, pNew->second);
    }
    for (const auto& [strName, strValue] : after)
        if (!mapOld.contains(strName))
            print('+', strName, strValue);
}
