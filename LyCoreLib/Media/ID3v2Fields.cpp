// The table of field rows, and the pairs of row and frame for a name.

#include "ID3v2FieldsDetails.h"
#include "ID3v2FieldTable.h"
#include "ID3v2Properties.h"
#include "MP3Tag.h"
#include <algorithm>
#include <cstring>
#include <memory>
#include <utility>
#include <vector>

namespace
{
constexpr char USER_TEXT_ID[] = "TXXX";
constexpr char COMMENT_ID[] = "COMM";
constexpr wchar_t NEVER_CREATED[] = L"Year"; // a tag of version 2.4 holds it in its date

bool AreEqualNoCase(const wchar_t* pFirst, const wchar_t* pSecond)
{
    return LyHash::AreTextsEqual(pFirst, pSecond, false);
}

bool IsFrameOfField(const CID3v2Frame& frame, const CID3v2Field& row)
{
    if (!frame.m_Header.HasID(row.m_ID))
        return false;
    switch (frame.GetType())
    {
    case ID3V2_FRAME_TYPE_USER_TEXT:
    case ID3V2_FRAME_TYPE_COMMENT:
        return row.HasFlag(ID3V2_FIELD_ANY_DESCRIPTION) || AreEqualNoCase(frame.GetDescription(), row.m_strDescription);
    case ID3V2_FRAME_TYPE_PICTURE:
        return row.m_nPictureType == CID3v2Field::ANY_PICTURE_TYPE ||
               frame.m_Properties.GetPropertyInt(CID3v2Property::PICTURE_TYPE) == row.m_nPictureType;
    default:
        return true;
    }
}

// The table's rows with their texts, which those of every tag share, and the indexes of the rows of each name, in row
// order. A tag in static storage makes it ahead of itself, and so ends ahead of it.
struct TABLE
{
    TABLE();

    std::vector<CID3v2Field> aryRows;
    std::vector<std::pair<LyString, std::vector<int>>> aryNames;
};

TABLE::TABLE()
{
    aryRows.reserve(GetID3v2FieldRows().size());
    for (const ID3V2_FIELD_ROW& row : GetID3v2FieldRows())
    {
        const int nIndex = static_cast<int>(aryRows.size());
        aryRows.emplace_back(row.pID, row.pName, row.pDescription, row.nFlags, row.nPictureType);
        const auto pName = std::find_if(aryNames.begin(), aryNames.end(),
                                        [&row](const auto& name) { return name.first == row.pName; });
        if (pName != aryNames.end())
            pName->second.push_back(nIndex);
        else
            aryNames.push_back({aryRows.back().m_strName, {nIndex}});
    }
}

const TABLE& GetTable()
{
    static const TABLE s_Table;
    return s_Table;
}
} // namespace

void CID3v2Tag::AddTableFields()
{
    ID3v2Properties::MakeSharedKeys();
    const TABLE& table = GetTable();
    const int nRows = static_cast<int>(table.aryRows.size());
    // At once what all of them take, and no more: where a kilobyte is asked for, the C library first puts all small
    // blocks together that are free, which takes as long as all else here. Without memory there are no rows.
    constexpr int NAME_CHAINS = 63; // for two names each, as in any map
    if (!m_aryFields.SetSize(nRows, true))
        return;
    for (int i = 0; i < nRows; ++i)
        m_aryFields[i] = new CID3v2Field(table.aryRows[static_cast<size_t>(i)]);
    (void)m_mapFieldIndexes.SetHashSize(NAME_CHAINS, false);
    for (const auto& [strName, aryIndexes] : table.aryNames)
    {
        auto pIndexes = std::make_unique<LyNumberArray<int>>();
        if (!pIndexes->SetSize(static_cast<int>(aryIndexes.size()), true))
            continue; // the rows are not found by their name
        std::copy(aryIndexes.begin(), aryIndexes.end(), pIndexes->begin());
        if (m_mapFieldIndexes.SetAt(strName, pIndexes.get()))
            (void)pIndexes.release(); // the map has it
    }
}

void CID3v2Tag::AddField(CID3v2Field* pField)
{
    if (pField == nullptr)
        return;
    const int nIndex = m_aryFields.Add(pField);
    if (nIndex < 0)
    {
        delete pField; // no memory
        return;
    }
    LyNumberArray<int>* pIndexes = nullptr;
    if (!m_mapFieldIndexes.Lookup(pField->m_strName, pIndexes))
    {
        auto pNew = std::make_unique<LyNumberArray<int>>();
        pIndexes = pNew.get();
        if (!m_mapFieldIndexes.SetAt(pField->m_strName, pIndexes))
            return;           // no memory
        (void)pNew.release(); // the map has it
    }
    (void)pIndexes->Add(nIndex); // without memory for it the row is not found by its name
}

CID3v2Field* CID3v2Tag::FindField(const LyString& strName, int& nPos, bool bCreate, int nMask)
{
    LyNumberArray<int>* pIndexes = nullptr;
    if (m_mapFieldIndexes.Lookup(strName, pIndexes))
    {
        for (const int nIndex : *pIndexes)
        {
            CID3v2Field* pField = m_aryFields[nIndex];
            if (nIndex < nPos || !pField->PassesMask(nMask))
                continue;
            nPos = nIndex + 1;
            return pField;
        }
    }
    if (!bCreate || nPos != 0 || AreEqualNoCase(strName, NEVER_CREATED))
        return nullptr;
    nPos = m_aryFields.GetSize();
    constexpr int nWrite = ID3V2_FIELD_WRITE_23 | ID3V2_FIELD_WRITE_24;
    AddField(new CID3v2Field(USER_TEXT_ID, strName, strName, nWrite, CID3v2Field::ANY_PICTURE_TYPE));
    AddField(
        new CID3v2Field(COMMENT_ID, strName, ID3V2_OLDER_WRITERS_PREFIX + strName, 0, CID3v2Field::ANY_PICTURE_TYPE));
    return FindField(strName, nPos, false, nMask);
}

int CID3v2Tag::FindField(const char* pID, const wchar_t* pDescription, int nMask) const
{
    for (int i = 0; pID != nullptr && i < m_aryFields.GetSize(); ++i)
    {
        const CID3v2Field& row = *m_aryFields[i];
        if (memcmp(row.m_ID, pID, sizeof row.m_ID) == 0 && row.PassesMask(nMask) &&
            AreEqualNoCase(pDescription, row.m_strDescription))
            return i;
    }
    return -1;
}

bool CID3v2Tag::FindFieldAndFrame(const LyString& strName, LyPointerArray<CID3v2Field>& aryFields,
                                  LyPointerArray<CID3v2Frame>& aryFrames, bool bCreate)
{
    aryFields.RemoveAll(false);
    aryFrames.RemoveAll(false);
    int nPos = 0;
    while (CID3v2Field* pField = FindField(strName, nPos, bCreate, ID3V2_FIELD_ANY_FLAGS))
    {
        for (CID3v2Frame* pFrame : m_aryFrames)
        {
            if (IsFrameOfField(*pFrame, *pField) && aryFields.Add(pField) >= 0)
                (void)aryFrames.Add(pFrame);
        }
    }
    return aryFrames.GetSize() > 0;
}
