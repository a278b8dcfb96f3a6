#include "OptionsHelper.h"
#include "LySharedToolsHelper.h"

COptionsHelper::COptionsHelper(const wchar_t* pName, bool bCreate)
    : m_pHelper(CreateOptionsHelperName(pName, bCreate), true, false)
{
}

LyString COptionsHelper::Get(const wchar_t* pKey, const LyString& strDefault, int nA, const LyString& strB,
                             int nC) const
{
    if (m_pHelper == nullptr)
        return strDefault;
    LyXString text = m_pHelper->Get(pKey, strDefault, nA, strB, nC);
    LyString strValue(text);
    LyCom::SysFreeString(text.m_pText);
    return strValue;
}

int COptionsHelper::Get(const wchar_t* pKey, int nDefault, int nA, int nB) const
{
    return m_pHelper != nullptr ? m_pHelper->Get(pKey, nDefault, nA, nB) : nDefault;
}

bool COptionsHelper::Set(const wchar_t* pKey, const wchar_t* pValue, int nA, const wchar_t* pOther, int nC)
{
    return m_pHelper != nullptr && m_pHelper->Set(pKey, pValue, nA, pOther, nC);
}

bool COptionsHelper::Delete(const wchar_t* pKey) { return m_pHelper != nullptr && m_pHelper->Delete(pKey); }
