#include "PropertyMap.h"
#include "LyStringFormat.h"
#include <climits>
#include <memory>

namespace
{
int GetCount(const LyPropertyMap& map) { return map.m_pProperties != nullptr ? map.m_pProperties->GetCount() : 0; }

// Calls visit(key, value) for each entry, in the order that every form of the map shares.
template <class VISIT>
void ForEach(const LyPropertyMap& map, VISIT visit)
{
    if (map.m_pProperties == nullptr)
        return;
    LyString strKey;
    LyString strValue;
    LyPOSITION position = map.m_pProperties->GetStartPosition();
    while (map.m_pProperties->GetNextAssoc(position, strKey, strValue))
        visit(strKey, strValue);
}

// The text forms of numbers.
LyString FromInt(int nValue)
{
    LyString str;
    LyString::FromIntStatic(str, nValue, 0, 10, 0);
    return str;
}

LyString FromDouble(double fValue)
{
    LyString str;
    LyString::FromDecimalStatic(str, fValue, -1, false, 0, 0);
    return str;
}

LyString FromPointer(void* pValue)
{
    LyString str;
    str.FromPointer(pValue);
    return str;
}
} // namespace

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): CopyProperties looks for itself
LyPropertyMap& LyPropertyMap::operator=(const LyPropertyMap& other)
{
    (void)LyPropertyMap::CopyProperties(other); // always true
    return *this;
}

bool LyPropertyMap::GetHasProperty(const wchar_t* pName) const
{
    return m_pProperties != nullptr && m_pProperties->Contains(pName);
}

LyString LyPropertyMap::GetProperty(const wchar_t* pName, const wchar_t* pDefault) const
{
    const PROPERTIES* pProperties = m_pProperties;
    const LyString* pValue = pProperties != nullptr ? pProperties->FindValue(pName) : nullptr;
    return pValue != nullptr ? *pValue : LyString(pDefault);
}

// Deliberate: the default goes through its text, too. So what a missing key gives is what a stored default would give.
int LyPropertyMap::GetPropertyInt(const wchar_t* pName, int nDefault) const
{
    return GetProperty(pName, FromInt(nDefault)).GetInt();
}

double LyPropertyMap::GetPropertyDouble(const wchar_t* pName, double fDefault) const
{
    return LyString::GetDouble(GetProperty(pName, FromDouble(fDefault)), nullptr, true, INT_MAX, true);
}

void* LyPropertyMap::GetPropertyPointer(const wchar_t* pName, void* pDefault) const
{
    return GetProperty(pName, FromPointer(pDefault)).GetPointer();
}

void LyPropertyMap::SetProperty(const wchar_t* pName, const LyString& strValue, bool bRemoveIfEmpty)
{
    if (bRemoveIfEmpty && strValue.IsEmpty())
    {
        (void)RemoveProperty(pName); // it may not have been there
        return;
    }
    if (m_pProperties == nullptr)
        m_pProperties = new PROPERTIES;
    (void)m_pProperties->SetAt(pName, strValue); // false without memory: the entry is missing then
}

void LyPropertyMap::SetPropertyInt(const wchar_t* pName, int nValue) { SetProperty(pName, FromInt(nValue), false); }

void LyPropertyMap::SetPropertyPointer(const wchar_t* pName, void* pValue)
{
    SetProperty(pName, FromPointer(pValue), false);
}

void LyPropertyMap::SetPropertyDouble(const wchar_t* pName, double fValue)
{
    SetProperty(pName, FromDouble(fValue), false);
}

void LyPropertyMap::DeleteProperties()
{
    delete m_pProperties;
    m_pProperties = nullptr;
}

bool LyPropertyMap::RemoveProperty(const wchar_t* pName)
{
    if (m_pProperties == nullptr || !m_pProperties->RemoveKey(pName))
        return false;
    if (m_pProperties->GetCount() == 0)
        LyPropertyMap::DeleteProperties();
    return true;
}

bool LyPropertyMap::CopyProperties(const LyPropertyMap& other)
{
    if (this == &other)
        return true;
    LyPropertyMap::DeleteProperties();
    if (other.m_pProperties == nullptr)
        return true;
    m_pProperties = new PROPERTIES;
    ForEach(other,
            [this](const LyString& strKey, const LyString& strValue) { (void)m_pProperties->SetAt(strKey, strValue); });
    return true;
}

// Deliberate: a key that the other map does not have counts as an empty value there.
bool LyPropertyMap::CompareProperties(const LyPropertyMap& other) const
{
    if (this == &other)
        return true;
    if (GetCount(*this) != GetCount(other))
        return false;
    if (m_pProperties == nullptr)
        return true;
    LyString strKey;
    LyString strValue;
    LyPOSITION position = m_pProperties->GetStartPosition();
    while (m_pProperties->GetNextAssoc(position, strKey, strValue))
    {
        if (other.GetProperty(strKey, nullptr) != strValue)
            return false;
    }
    return true;
}

void LyPropertyMap::SaveProperties(LyString& strOut, bool bSaveValues) const
{
    const int nCount = bSaveValues ? GetCount(*this) : 0;
    strOut.SaveInt(nCount);
    if (nCount == 0)
        return;
    ForEach(*this,
            [&strOut](const LyString& strKey, const LyString& strValue)
            {
                strOut.SaveString(strKey);
                strOut.SaveString(strValue);
            });
}

void LyPropertyMap::LoadProperties(const LyString& strIn)
{
    int nPosition = 0;
    LoadProperties(strIn, nPosition);
}

// A damaged field does not end the loop, since a later one may be good again. But once a key and a value are read
// without a step forward, all that are left would be the same empty entry: a count from outside costs no time.
void LyPropertyMap::LoadProperties(const LyString& strIn, int& nPosition)
{
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): strIn may be a value of this map
    const LyString strText(strIn);
    DeleteProperties();
    const int nCount = strText.LoadIntFast(nPosition, 0);
    LyString strKey;
    LyString strValue;
    int nBefore = -1;
    for (int i = 0; i < nCount && nPosition != nBefore; ++i)
    {
        nBefore = nPosition;
        (void)strText.LoadStringFast(nPosition, strKey, L""); // a damaged field reads as empty
        (void)strText.LoadStringFast(nPosition, strValue, L"");
        SetProperty(strKey, strValue, false);
    }
}

LyString LyPropertyMap::DumpProperties(const LyString& strPrefix, const LyString& strPostfix) const
{
    LyString strOut;
    ForEach(*this, [&](const LyString& strKey, const LyString& strValue)
            { strOut += LyFormatString(L"%s%s: %s%s", strPrefix, strKey, strValue, strPostfix); });
    return strOut;
}
