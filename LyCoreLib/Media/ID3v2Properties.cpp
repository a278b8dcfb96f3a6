#include "ID3v2Properties.h"
#include "ID3v2Decode.h"
#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <new>
#include <utility>

namespace
{
// A body up to this size lies behind its properties; a larger one has a block, which goes once the text is made.
constexpr int MAX_SMALL_BYTES = 1024;
// Deliberate: fewer than the 7 with which other maps begin. The entries of a frame are at most five, and the C library
// gives this table half the memory, which counts in a tag of many small frames (TestWAVInfoMemory).
constexpr int CHAINS = 3;

// What the frames of all tags share: the keys in the order of ID3V2_PROPERTIES, and the texts of the commonest numbers.
struct SHARED
{
    LyString aryKeys[ID3V2_PROPERTIES_COUNT] = {CID3v2Property::VALUE,       CID3v2Property::TEXT_ENCODING,
                                                CID3v2Property::DESCRIPTION, CID3v2Property::LANGUAGE_ID,
                                                CID3v2Property::MIME_TYPE,   CID3v2Property::PICTURE_TYPE};
    unsigned int aryHashes[ID3V2_PROPERTIES_COUNT] = {};
    LyString aryNumbers[4] = {L"0", L"1", L"2", L"3"}; // encodings, and the type of a cover

    SHARED()
    {
        for (int i = 0; i < ID3V2_PROPERTIES_COUNT; ++i)
            aryHashes[i] = LyHash::HashText(aryKeys[i], false);
    }
};

const SHARED& GetShared()
{
    static const SHARED s_Shared;
    return s_Shared;
}

// The key of that name if it is one of those, or null.
const LyString* FindSharedKey(const wchar_t* pName)
{
    for (const LyString& strKey : GetShared().aryKeys)
    {
        if (LyHash::AreTextsEqual(strKey, pName, true))
            return &strKey;
    }
    return nullptr;
}
} // namespace

void ID3v2Properties::MakeSharedKeys() { (void)GetShared(); }

// ---- Making and ending

bool ID3v2Properties::IsSmall(int nBytes) { return nBytes <= MAX_SMALL_BYTES; }

ID3v2Properties* ID3v2Properties::Make(ID3V2_FRAME_TYPES eType, const ID3V2_PLAIN_BODY& body)
{
    const size_t nBehind = IsSmall(static_cast<int>(body.bytes.size())) ? body.bytes.size() : 0;
    const size_t nBytes = std::max(sizeof(ID3v2Properties), sizeof(ID3v2Properties) - sizeof m_arySmall + nBehind);
    return new (::operator new(nBytes)) ID3v2Properties(eType, body);
}

ID3v2Properties::ID3v2Properties(ID3V2_FRAME_TYPES eType, const ID3V2_PLAIN_BODY& body)
    : m_nBytes(static_cast<int>(body.bytes.size())), m_nOffset(body.nStart), m_nType(static_cast<signed char>(eType))
{
    if (IsSmall(m_nBytes))
    {
        std::copy(body.bytes.begin(), body.bytes.end(), GetSmallBody());
    }
    else
    {
        m_pMore = MORE::Make(GetID3v2PropertyCount(eType));
        m_pMore->pBlock = TakeID3v2Block(m_nBytes);
        if (m_pMore->pBlock != nullptr)
            std::copy(body.bytes.begin(), body.bytes.end(), m_pMore->pBlock->GetData());
    }
    m_nCount = GetID3v2PropertyCount(eType); // there is no entry yet, but nobody gets to see that
    m_ppHeads = static_cast<MAP_BUCKET_BASE**>(calloc(CHAINS, sizeof(MAP_BUCKET_BASE*)));
    if (m_ppHeads != nullptr)
        m_nHashSize = CHAINS;
    else
        Decode(); // without chains nobody asks
}

ID3v2Properties::~ID3v2Properties() { RemoveAll(); }

// ---- The body

unsigned char* ID3v2Properties::GetSmallBody()
{
    return static_cast<unsigned char*>(static_cast<void*>(this)) + (sizeof(ID3v2Properties) - sizeof m_arySmall);
}

std::span<const unsigned char> ID3v2Properties::GetBody() const
{
    const unsigned char* pBytes = nullptr;
    if (IsSmall(m_nBytes))
        pBytes = const_cast<ID3v2Properties*>(this)->GetSmallBody();
    else if (m_pMore->pBlock != nullptr)
        pBytes = m_pMore->pBlock->GetData();
    return {pBytes, pBytes != nullptr ? static_cast<size_t>(m_nBytes) : 0};
}

void ID3v2Properties::DropLargeBody()
{
    if (m_pMore != nullptr)
        m_pMore->pBlock = nullptr;
}

// ---- Decoding

std::unique_ptr<ID3v2Properties::MORE> ID3v2Properties::MORE::Make(int nEntries)
{
    return std::unique_ptr<MORE>(new (::operator new(sizeof(MORE) + static_cast<size_t>(nEntries) * ENTRY_BYTES)) MORE);
}

void* ID3v2Properties::TakeEntry()
{
    if (m_pMore == nullptr)
        m_pMore = MORE::Make(GetID3v2PropertyCount(static_cast<ID3V2_FRAME_TYPES>(m_nType)));
    return m_pMore->GetEntry(m_pMore->nEntries++);
}

// As SetAt, for a key of which it is known that it is not there yet.
void ID3v2Properties::Add(ID3V2_PROPERTIES eName, LyString&& strValue)
{
    if (m_nHashSize == 0)
        return; // no memory
    const SHARED& shared = GetShared();
    auto* pBucket = new (TakeEntry()) BUCKET(shared.aryKeys[eName]);
    pBucket->m_Value = std::move(strValue);
    MAP_BUCKET_BASE*& pHead = m_ppHeads[IndexOf(shared.aryHashes[eName])];
    pBucket->m_pNext = pHead;
    pHead = pBucket;
    ++m_nCount;
}

void ID3v2Properties::Add(ID3V2_PROPERTIES eName, int nValue)
{
    const SHARED& shared = GetShared();
    const bool bCommon = nValue >= 0 && nValue < static_cast<int>(std::size(shared.aryNumbers));
    Add(eName, bCommon ? LyString(shared.aryNumbers[nValue]) : LyString().FromInt(nValue));
}

void ID3v2Properties::AddBinaryValue(int nOffset)
{
    Add(ID3V2_PROPERTY_VALUE, LyString());
    if (nOffset >= static_cast<int>(GetBody().size()))
        return; // nothing is in it
    m_nOffset = nOffset;
    m_eState = STATE_BINARY;
}

void ID3v2Properties::Ask() const
{
    if (m_eState == STATE_PACKED)
        const_cast<ID3v2Properties*>(this)->Decode();
}

void ID3v2Properties::Decode()
{
    const bool bRemoved = m_nCount == 0; // all of them, ahead of being there
    m_eState = STATE_DECODED;
    m_nCount = 0;
    if (!bRemoved)
        DecodeID3v2Body(static_cast<ID3V2_FRAME_TYPES>(m_nType), GetBody(), m_nOffset, *this);
    if (m_eState == STATE_DECODED)
        DropLargeBody();
}

// The entry is there, and stays where it is: whoever asked finds the text in its place.
void ID3v2Properties::MakeText() const
{
    auto* pThis = const_cast<ID3v2Properties*>(this);
    pThis->m_eState = STATE_DECODED; // so that looking for the value finds nothing more to do
    const std::span<const unsigned char> body = GetBody();
    LyString* pValue = pThis->FindValue(CID3v2Property::VALUE);
    if (pValue != nullptr && !body.empty())
        pValue->FromBinary(body.data() + m_nOffset, m_nBytes - m_nOffset);
    pThis->DropLargeBody();
}

bool ID3v2Properties::GetBinaryValue(LyBuffer& bytes) const
{
    Ask();
    if (m_eState == STATE_BINARY)
    {
        const std::span<const unsigned char> body = GetBody();
        return !body.empty() && bytes.FromBuffer(body.data() + m_nOffset, m_nBytes - m_nOffset);
    }
    const LyString* pValue = FindValue(CID3v2Property::VALUE);
    return pValue != nullptr && bytes.FromStringBase64(*pValue);
}

int ID3v2Properties::GetBinaryValueBytes() const
{
    Ask();
    return m_eState == STATE_BINARY && !GetBody().empty() ? m_nBytes - m_nOffset : -1;
}

bool ID3v2Properties::IsWithoutDescription() const
{
    return m_eState == STATE_PACKED && !HasID3v2Description(static_cast<ID3V2_FRAME_TYPES>(m_nType));
}

// ---- What the map asks

unsigned int ID3v2Properties::HashKey(const wchar_t* pKey) const
{
    Ask();
    if (m_eState == STATE_BINARY && AreKeysEqual(pKey, CID3v2Property::VALUE))
        MakeText();
    return LyPropertyMap::PROPERTIES::HashKey(pKey);
}

// A map that grows puts its entries elsewhere, and asks for none of them: they cannot be found at that time.
int ID3v2Properties::HashIndexBase(MAP_BUCKET_BASE* pBucket) const
{
    return IndexOf(LyPropertyMap::PROPERTIES::HashKey(static_cast<BUCKET*>(pBucket)->m_Key));
}

int ID3v2Properties::GetBucketBytes() const
{
    Ask();
    if (m_eState == STATE_BINARY)
        MakeText();
    return LyPropertyMap::PROPERTIES::GetBucketBytes();
}

ID3v2Properties::BUCKET* ID3v2Properties::CreateBucket(const wchar_t* pKey)
{
    const LyString* pShared = FindSharedKey(pKey);
    if (pShared != nullptr && m_pContainer == nullptr)
        return new BUCKET(*pShared);
    return LyPropertyMap::PROPERTIES::CreateBucket(pKey);
}

bool ID3v2Properties::IsInPlace(const BUCKET* pBucket) const
{
    const int nEntries = m_pMore != nullptr ? m_pMore->nEntries : 0;
    for (int i = 0; i < nEntries; ++i)
    {
        if (static_cast<const void*>(pBucket) == m_pMore->GetEntry(i))
            return true;
    }
    return false;
}

void ID3v2Properties::DestroyBucket(BUCKET* pBucket, bool bFree)
{
    if (!IsInPlace(pBucket))
        return LyPropertyMap::PROPERTIES::DestroyBucket(pBucket, bFree);
    if (m_eState == STATE_BINARY && AreKeysEqual(pBucket->m_Key, CID3v2Property::VALUE))
    {
        m_eState = STATE_DECODED; // all entries go, and nobody asks for its text any more
        DropLargeBody();
    }
    if (bFree)
        pBucket->~BUCKET(); // its memory goes with that of the others
}
