#include "ID3v2Properties.h"
#include "LyBuffer.h"
#include "MP3Tag.h"
#include <algorithm>
#include <array>
#include <utility>

namespace
{
using KEYS = std::array<LyString, 6>;

// Those that decoding sets.
const KEYS& GetSharedKeys()
{
    static const KEYS s_aryKeys = {CID3v2Property::VALUE,       CID3v2Property::TEXT_ENCODING,
                                   CID3v2Property::DESCRIPTION, CID3v2Property::LANGUAGE_ID,
                                   CID3v2Property::MIME_TYPE,   CID3v2Property::PICTURE_TYPE};
    return s_aryKeys;
}

// The key of that name if it is one of those, or null.
const LyString* FindSharedKey(const wchar_t* pName)
{
    for (const LyString& strKey : GetSharedKeys())
    {
        if (LyHash::AreTextsEqual(strKey, pName, true))
            return &strKey;
    }
    return nullptr;
}
} // namespace

void ID3v2Properties::MakeSharedKeys() { (void)GetSharedKeys(); }

void ID3v2Properties::Set(const wchar_t* pName, const LyString& strValue)
{
    (void)SetAt(pName, strValue); // false without memory: the entry is missing then
}

void ID3v2Properties::Set(const wchar_t* pName, int nValue) { Set(pName, LyString().FromInt(nValue)); }

void ID3v2Properties::SetBinaryValue(const unsigned char* p, int nBytes)
{
    Set(CID3v2Property::VALUE, LyString());
    m_pBytes = nBytes > 0 ? TakeID3v2Block(nBytes) : nullptr;
    m_nBytes = nBytes;
    if (m_pBytes != nullptr) // else there is nothing in it, or no memory for it
        std::copy_n(p, nBytes, m_pBytes->GetData());
}

bool ID3v2Properties::GetBinaryValue(LyBuffer& bytes) const
{
    if (m_pBytes != nullptr)
        return bytes.FromBuffer(m_pBytes->GetData(), m_nBytes);
    const LyString* pValue = FindValue(CID3v2Property::VALUE);
    return pValue != nullptr && bytes.FromStringBase64(*pValue);
}

unsigned int ID3v2Properties::HashKey(const wchar_t* pKey) const
{
    if (m_pBytes != nullptr && AreKeysEqual(pKey, CID3v2Property::VALUE))
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
    if (m_pBytes != nullptr)
        MakeText();
    return LyPropertyMap::PROPERTIES::GetBucketBytes();
}

// The entry is there, and stays where it is: whoever asked finds the text in its place.
void ID3v2Properties::MakeText() const
{
    const ID3v2BlockPtr pBytes = std::move(m_pBytes); // so that looking for the value finds nothing more to do
    if (const LyString* pValue = FindValue(CID3v2Property::VALUE))
        const_cast<LyString*>(pValue)->FromBinary(pBytes->GetData(), m_nBytes);
}

ID3v2Properties::BUCKET* ID3v2Properties::CreateBucket(const wchar_t* pKey)
{
    const LyString* pShared = FindSharedKey(pKey);
    if (pShared != nullptr && m_pContainer == nullptr)
        return new BUCKET(*pShared);
    return LyPropertyMap::PROPERTIES::CreateBucket(pKey);
}
