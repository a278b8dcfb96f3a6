#include "TagFields.h"
#include "HostError.h"
#include "ID3v2FieldTable.h"
#include "LyBuffer.h"
#include "LyHash.h"
#include "Text.h"
#include "UTF8.h"
#include <algorithm>
#include <cstring>
#include <cwchar>
#include <set>

namespace
{
constexpr char USER_TEXT_ID[] = "TXXX";
constexpr const wchar_t* PSEUDO_PREFIX = L"!@#$%"; // of what saving keeps up by itself
constexpr char32_t FIRST_BEYOND_UTF16 = 0x10000;
constexpr char32_t HIGH_SURROGATE = 0xD800;
constexpr char32_t LOW_SURROGATE = 0xDC00;
constexpr char32_t END_OF_SURROGATES = 0xE000;
constexpr int HALF_BITS = 10; // of what a surrogate carries

struct TAG_ALIAS
{
    const char* pSpelling; // reduced
    const char* pName;
};
const TAG_ALIAS s_aryAliases[] = {
    {"title", "Name"},
    {"tracknumber", "Track #"},
    {"discnumber", "Disc #"},
    {"year", TAG_DATE_FIELD},
    {"originalyear", TAG_ORIGINAL_DATE_FIELD},
    {"cataloguenumber", "Catalog Number"},
    {"picture", TAG_PICTURE_FIELD},
    {"cover", TAG_PICTURE_FIELD},
    {"initialkey", "Key"},
    {"label", "Publisher"},
    {"organization", "Publisher"},
    {"discsubtitle", "Set Subtitle"},
};

bool IsPseudo(const ID3V2_FIELD_ROW& row) { return std::wcsncmp(row.pName, PSEUDO_PREFIX, 5) == 0; }

// A name as far as it counts.
std::string Reduce(const std::string& strName)
{
    std::string str;
    for (const char c : strName)
    {
        if (c >= 'A' && c <= 'Z')
            str += static_cast<char>(c - 'A' + 'a');
        else if (std::strchr(" _-#", c) == nullptr)
            str += c;
    }
    return str;
}

const ID3V2_FIELD_ROW* FindUserTextRow(const std::string& strReduced)
{
    for (const ID3V2_FIELD_ROW& row : GetID3v2FieldRows())
    {
        if (!IsPseudo(row) && std::strncmp(row.pID, USER_TEXT_ID, 4) == 0 &&
            Reduce(NarrowUTF8(row.pDescription)) == strReduced)
            return &row;
    }
    return nullptr;
}

// The description of a user text; empty for any other frame.
LyString GetUserTextName(const CID3v2Frame& frame)
{
    return frame.GetType() == ID3V2_FRAME_TYPE_USER_TEXT ? frame.m_Properties.GetProperty(CID3v2Property::DESCRIPTION)
                                                         : LyString();
}

// What the tag has under a name without a row. A name in the same case goes ahead of one in another.
std::string GetOwnText(const CID3v2Tag& tag, const std::string& strName)
{
    const LyString strOwn = ToTagText(strName, "a field's name");
    for (const bool bCase : {true, false})
        for (const CID3v2Frame* pFrame : tag.m_aryFrames)
        {
            const LyString strFound = GetUserTextName(*pFrame);
            if (!strFound.IsEmpty() && LyHash::AreTextsEqual(strFound, strOwn, bCase))
                return FromTagText(pFrame->m_Properties.GetProperty(CID3v2Property::VALUE));
        }
    return {};
}

bool HasTableRow(const LyString& strDescription)
{
    return std::any_of(GetID3v2FieldRows().begin(), GetID3v2FieldRows().end(),
                       [&](const ID3V2_FIELD_ROW& row)
                       {
                           return std::strncmp(row.pID, USER_TEXT_ID, 4) == 0 &&
                                  LyHash::AreTextsEqual(strDescription, row.pDescription, false);
                       });
}

std::string DescribePicture(const CID3v2Frame& frame)
{
    const std::string strMime = FromTagText(frame.m_Properties.GetProperty(CID3v2Property::MIME_TYPE));
    return (strMime.empty() ? "picture" : strMime) + ", " + std::to_string(frame.GetBinaryValueBytes()) + " bytes";
}

// A year that only repeats the beginning of the date tells nothing.
bool IsYearOfDate(CID3v2Tag& tag, const std::string& strName, const std::string& strValue)
{
    if (strName != TAG_YEAR_FIELD && strName != TAG_ORIGINAL_YEAR_FIELD)
        return false;
    const std::string strDate = GetTagField(tag, strName == TAG_YEAR_FIELD ? TAG_DATE_FIELD : TAG_ORIGINAL_DATE_FIELD);
    return strDate == strValue || strDate.starts_with(strValue.substr(0, 4));
}

void CheckOwnName(const std::string& strName)
{
    const bool bPlain =
        std::all_of(strName.begin(), strName.end(), [](char c) { return c >= ' ' && c <= '~' && c != '='; });
    if (strName.empty() || !bPlain || strName.starts_with("!@#$%"))
        throw HostError("\"" + strName +
                        "\" can be no name of a field; 'rondel tags' shows names, and own ones consist of plain "
                        "letters, digits and blanks.");
}
} // namespace

std::string GetTagField(CID3v2Tag& tag, const std::string& strName)
{
    LyPointerArray<CID3v2Field> aryFields;
    LyPointerArray<CID3v2Frame> aryFrames;
    LyPropertyMap map;
    const LyString strField = Widen(strName);
    if (!tag.FindFieldAndFrame(strField, aryFields, aryFrames, false))
        return IsTableField(strName) ? std::string() : GetOwnText(tag, strName);
    if (strName == TAG_PICTURE_FIELD)
        return DescribePicture(*aryFrames[0]); // the field is the first of them, as any field is
    // Only genres are to be translated; numbers keep their totals, dates and gains the form of the frame.
    if (!tag.Get(strField, map, aryFields[0]->HasFlag(ID3V2_FIELD_GENRE) ? 0 : 1))
        return {};
    return FromTagText(map.GetProperty(CID3v2Property::VALUE));
}

TAG_FIELDS CollectTagFields(CID3v2Tag& tag)
{
    TAG_FIELDS fields;
    std::set<std::string> aryNames; // beside the fields, since a tag may have user texts without number
    const auto add = [&](const std::string& strName, const std::string& strValue)
    {
        if (!strValue.empty() && aryNames.insert(strName).second)
            fields.emplace_back(strName, strValue);
    };
    const wchar_t* pLast = L"";
    for (const ID3V2_FIELD_ROW& row : GetID3v2FieldRows())
    {
        if (IsPseudo(row) || std::wcscmp(row.pName, pLast) == 0)
            continue;
        pLast = row.pName;
        const std::string strName = NarrowUTF8(row.pName);
        const std::string strValue = GetTagField(tag, strName);
        if (!strValue.empty() && !IsYearOfDate(tag, strName, strValue))
            add(strName, strValue);
    }
    for (const CID3v2Frame* pFrame : tag.m_aryFrames)
    {
        const LyString strName = GetUserTextName(*pFrame);
        if (!strName.IsEmpty() && !HasTableRow(strName))
            add(FromTagText(strName), FromTagText(pFrame->m_Properties.GetProperty(CID3v2Property::VALUE)));
    }
    return fields;
}

bool IsTableField(const std::string& strName)
{
    const std::wstring strWide = WidenUTF8(strName);
    return std::any_of(GetID3v2FieldRows().begin(), GetID3v2FieldRows().end(),
                       [&](const ID3V2_FIELD_ROW& row) { return strWide == row.pName; });
}

std::string FindTagFieldName(const CID3v2Tag& tag, const std::string& strSpelling)
{
    const std::string strReduced = Reduce(strSpelling);
    for (const TAG_ALIAS& alias : s_aryAliases)
        if (strReduced == alias.pSpelling)
            return alias.pName;
    for (const ID3V2_FIELD_ROW& row : GetID3v2FieldRows())
        if (!IsPseudo(row) && Reduce(NarrowUTF8(row.pName)) == strReduced)
            return NarrowUTF8(row.pName);
    if (const ID3V2_FIELD_ROW* pRow = FindUserTextRow(strReduced))
        return NarrowUTF8(pRow->pName);
    const LyString strWide = ToTagText(strSpelling, "a field's name");
    for (const CID3v2Frame* pFrame : tag.m_aryFrames)
    {
        const LyString strName = GetUserTextName(*pFrame);
        if (!strName.IsEmpty() && LyHash::AreTextsEqual(strName, strWide, false))
            return FromTagText(strName);
    }
    CheckOwnName(strSpelling);
    return strSpelling;
}

LyString ToTagText(const std::string& strText, const std::string& strField)
{
    if (strText.find('\0') != std::string::npos)
        throw HostError("the value of " + strField + " holds a zero byte, which ends a text; leave it out.");
    std::wstring strWide;
    for (const wchar_t cWide : WidenUTF8(strText))
    {
        const auto c = static_cast<char32_t>(cWide);
        if (UTF8Details::IsSurrogate(c))
            throw HostError("the value of " + strField + " is no UTF-8; give it in that encoding.");
        if (c < FIRST_BEYOND_UTF16)
        {
            strWide += cWide;
            continue;
        }
        const char32_t nHalves = c - FIRST_BEYOND_UTF16;
        strWide += static_cast<wchar_t>(HIGH_SURROGATE + (nHalves >> HALF_BITS));
        strWide += static_cast<wchar_t>(LOW_SURROGATE + (nHalves & ((1U << HALF_BITS) - 1)));
    }
    return LyString(strWide.c_str());
}

std::string FromTagText(const wchar_t* pText)
{
    std::string str;
    for (const wchar_t* p = pText; p != nullptr && *p != 0; ++p)
    {
        const auto c = static_cast<char32_t>(*p);
        const auto cNext = static_cast<char32_t>(p[1]);
        if (c >= HIGH_SURROGATE && c < LOW_SURROGATE && cNext >= LOW_SURROGATE && cNext < END_OF_SURROGATES)
        {
            UTF8Details::Append(str, FIRST_BEYOND_UTF16 + ((c - HIGH_SURROGATE) << HALF_BITS) + cNext - LOW_SURROGATE);
            ++p;
            continue;
        }
        UTF8Details::Append(str, UTF8Details::IsSurrogate(c) ? UTF8Details::REPLACEMENT : c);
    }
    return str;
}
