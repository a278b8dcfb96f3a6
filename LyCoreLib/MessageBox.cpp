// Translation and message boxes: the front ends that OptionsHelper.h declares, and the record of ILyMessageBox.h.

#include "ILyMessageBox.h"
#include "ITranslator.h"
#include "LySharedToolsHelper.h"
#include "OptionsHelper.h"
#include <iterator>

namespace
{
// The texts of a descriptor in their order in memory, without those of the array between the two groups.
using TEXT_FIELD = LyXString LyMessageBoxDescriptor::*;
constexpr TEXT_FIELD s_aryFieldsBeforeArray[] = {
    &LyMessageBoxDescriptor::m_strText,        &LyMessageBoxDescriptor::m_strCaption,
    &LyMessageBoxDescriptor::m_strShowOnceKey, &LyMessageBoxDescriptor::m_strSecondKey,
    &LyMessageBoxDescriptor::m_strThirdKey,
};
constexpr TEXT_FIELD s_aryFieldsBehindArray[] = {
    &LyMessageBoxDescriptor::m_strService1, &LyMessageBoxDescriptor::m_strService2,
    &LyMessageBoxDescriptor::m_strService3, &LyMessageBoxDescriptor::m_strService4,
    &LyMessageBoxDescriptor::m_strService5,
};

void SetEmpty(LyXString& text) { text.m_pText = LyCom::SysAllocString(nullptr); }

void Free(LyXString& text)
{
    LyCom::SysFreeString(text.m_pText);
    text.m_pText = nullptr;
}
} // namespace

LyMessageBoxDescriptor::LyMessageBoxDescriptor()
    : m_bModal(false), m_bRemember(false), m_bService1(false), m_nService1(0), m_bService2(false), m_nService2(0),
      m_bService3(true), m_bService4(false), m_nService5(-1)
{
    for (TEXT_FIELD pField : s_aryFieldsBeforeArray)
        SetEmpty(this->*pField);
    for (LyXString& text : m_aryTexts)
        SetEmpty(text);
    for (TEXT_FIELD pField : s_aryFieldsBehindArray)
        SetEmpty(this->*pField);
}

LyMessageBoxDescriptor::~LyMessageBoxDescriptor()
{
    for (auto it = std::rbegin(s_aryFieldsBehindArray); it != std::rend(s_aryFieldsBehindArray); ++it)
        Free(this->**it);
    for (auto it = std::rbegin(m_aryTexts); it != std::rend(m_aryTexts); ++it)
        Free(*it);
    for (auto it = std::rbegin(s_aryFieldsBeforeArray); it != std::rend(s_aryFieldsBeforeArray); ++it)
        Free(this->**it);
}

void TranslateString(LyString& strText)
{
    if (strText.IsEmpty())
        return;
    ILyTools* pTools = GetLyTools(false);
    ITranslator* pTranslator = pTools != nullptr ? pTools->GetTranslator(true) : nullptr;
    if (pTranslator != nullptr)
        pTranslator->Translate(LyDllString(strText));
}

LyString TranslateString(const wchar_t* pText)
{
    LyString strText(pText);
    TranslateString(strText);
    return strText;
}

int IMB(const wchar_t* pText, const wchar_t* pCaption, LyString strShowOnceKey, bool bRemember, bool bFlag)
{
    ILyMessageBox* pService = GetLyMessageBoxHelper(true);
    if (pService == nullptr)
        return 0;
    LyMessageBoxDescriptor descriptor;
    descriptor.m_strText.Set(pText);
    descriptor.m_strCaption.Set(pCaption);
    descriptor.m_bModal = bFlag;
    pService->FillDefaultButtons(&descriptor);
    pService->FillDefaultButtonTexts(&descriptor);
    if (!strShowOnceKey.IsEmpty())
    {
        descriptor.m_strShowOnceKey.Set(strShowOnceKey);
        descriptor.m_strSecondKey.Set(L"");
        descriptor.m_strThirdKey.Set(L"");
        descriptor.m_bRemember = bRemember;
    }
    return pService->Show(&descriptor);
}
