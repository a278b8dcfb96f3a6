// The rows that every tag has, with the indexes by which they are found. They are made once, and tags share them: a tag
// takes an array of pointers and a block of buckets.

#include "ID3v2FieldTable.h"
#include "MP3Tag.h"
#include <algorithm>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace
{
using INDEXES = LyNumberArray<int>;
using BUCKET = CID3v2FieldIndexes::BUCKET;

template <class T>
bool IsElement(const std::vector<T>& ary, const T* p)
{
    const std::less<> IsBelow;
    return !IsBelow(p, ary.data()) && IsBelow(p, ary.data() + ary.size());
}

// A tag in static storage makes it ahead of itself, and so ends ahead of it.
class SharedFields
{
public:
    static SharedFields& Get()
    {
        static SharedFields s_Fields;
        return s_Fields;
    }
    SharedFields(const SharedFields&) = delete;
    SharedFields& operator=(const SharedFields&) = delete;

    std::vector<CID3v2Field>& GetRows() { return m_aryRows; }
    const std::vector<BUCKET>& GetBuckets() const { return m_aryBuckets; } // one for each name, without a link
    unsigned int GetHash(int nBucket) const { return m_aryHashes[static_cast<size_t>(nBucket)]; } // of its name
    size_t GetBucketBytes() const { return m_aryBuckets.size() * sizeof(BUCKET); }
    bool Owns(const CID3v2Field* pField) const { return IsElement(m_aryRows, pField); }
    bool Owns(const INDEXES* pIndexes) const { return IsElement(m_aryLists, pIndexes); }

private:
    SharedFields()
    {
        m_aryRows.reserve(GetID3v2FieldRows().size());
        m_aryLists.reserve(GetID3v2FieldRows().size());
        std::map<std::wstring, size_t> mapLists;
        for (const ID3V2_FIELD_ROW& row : GetID3v2FieldRows())
        {
            const auto [pList, bNew] = mapLists.try_emplace(row.pName, m_aryLists.size());
            if (bNew)
                AddName(row.pName);
            (void)m_aryLists[pList->second].Add(static_cast<int>(m_aryRows.size())); // memory for a few numbers
            m_aryRows.emplace_back(row.pID, row.pName, row.pDescription, row.nFlags, row.nPictureType);
        }
    }
    void AddName(const wchar_t* pName)
    {
        m_aryLists.emplace_back();
        BUCKET bucket(pName);
        bucket.m_Value = &m_aryLists.back();
        m_aryBuckets.push_back(bucket);
        m_aryHashes.push_back(LyMapKey<const wchar_t*>::Hash(pName));
    }

    std::vector<CID3v2Field> m_aryRows;
    std::vector<INDEXES> m_aryLists; // the buckets' values
    std::vector<BUCKET> m_aryBuckets;
    std::vector<unsigned int> m_aryHashes;
};
} // namespace

void CID3v2Field::operator delete(CID3v2Field* pField, std::destroying_delete_t)
{
    if (SharedFields::Get().Owns(pField))
        return;
    pField->~CID3v2Field();
    ::operator delete(pField);
}

void CID3v2Tag::AddSharedFields()
{
    std::vector<CID3v2Field>& aryRows = SharedFields::Get().GetRows();
    if (!m_aryFields.SetSize(static_cast<int>(aryRows.size()), true))
        return; // no memory, no fields
    CID3v2Field** ppField = m_aryFields.GetData();
    for (CID3v2Field& row : aryRows)
        *ppField++ = &row;
    m_mapFieldIndexes.AddSharedIndexes();
}

CID3v2FieldIndexes::~CID3v2FieldIndexes() { RemoveAll(); }

// The buckets are copied bytewise, as arrays move their elements: the names in them are those of the shared ones, which
// outlive them. So nobody counts them, and they are not ended.
void CID3v2FieldIndexes::AddSharedIndexes()
{
    const SharedFields& fields = SharedFields::Get();
    const int nBuckets = static_cast<int>(fields.GetBuckets().size());
    if (m_nCount > 0 || !SetHashSize(nBuckets, true))
        return; // no memory, no names
    m_pSharedBuckets = std::make_unique_for_overwrite<unsigned char[]>(fields.GetBucketBytes());
    const auto* pBytes = reinterpret_cast<const unsigned char*>(fields.GetBuckets().data());
    std::copy_n(pBytes, fields.GetBucketBytes(), m_pSharedBuckets.get());
    auto* pBucket = reinterpret_cast<BUCKET*>(m_pSharedBuckets.get());
    for (m_nCount = 0; m_nCount < nBuckets; ++m_nCount, ++pBucket)
    {
        MAP_BUCKET_BASE*& pHead = m_ppHeads[IndexOf(fields.GetHash(m_nCount))];
        pBucket->m_pNext = pHead;
        pHead = pBucket;
    }
}

void CID3v2FieldIndexes::AddIndex(const LyString& strName, int nIndex)
{
    INDEXES* pIndexes = nullptr;
    const bool bNew = !Lookup(strName, pIndexes);
    if (bNew || SharedFields::Get().Owns(pIndexes))
    {
        auto pOwn = bNew ? std::make_unique<INDEXES>() : std::make_unique<INDEXES>(*pIndexes);
        pIndexes = pOwn.get();
        if (!SetAt(strName, pIndexes))
            return;           // no memory
        (void)pOwn.release(); // the map has it
    }
    (void)pIndexes->Add(nIndex); // without memory for it the row is not found by its name
}

void CID3v2FieldIndexes::DestroyBucket(BUCKET* pBucket, bool bFree)
{
    const SharedFields& fields = SharedFields::Get();
    const auto* pByte = reinterpret_cast<const unsigned char*>(pBucket);
    const std::less<> IsBelow;
    const bool bSharedBucket = m_pSharedBuckets != nullptr && !IsBelow(pByte, m_pSharedBuckets.get()) &&
                               IsBelow(pByte, m_pSharedBuckets.get() + fields.GetBucketBytes());
    if (!bSharedBucket)
    {
        LyOwnedPtrMap::DestroyBucket(pBucket, bFree);
        return;
    }
    if (bFree && m_bOwned && !fields.Owns(pBucket->m_Value))
        delete pBucket->m_Value;
}
