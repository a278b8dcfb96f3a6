#include "MessageBoxService.h"
#include "BoxQuestion.h"
#include "LyForeignCall.h"
#include "WaitMessage.h"
#include <cwchar>
#include <utility>

namespace
{
constexpr const wchar_t* s_aryOK[] = {L"OK", nullptr};
constexpr const wchar_t* s_aryOKCancel[] = {L"OK", L"Cancel", nullptr};
constexpr const wchar_t* s_aryYesNo[] = {L"Yes", L"No", nullptr};
constexpr const wchar_t* s_aryYesNoCancel[] = {L"Yes", L"No", L"Cancel", nullptr};

constexpr const wchar_t* CANCEL_HINT = L"Esc cancels";
constexpr int FIRST_BUTTON = 1;
constexpr int NO_BOX = 0;

const wchar_t* const* GetButtonTexts(int nSet)
{
    switch (nSet)
    {
    case MESSAGE_BOX_OK_CANCEL:
        return s_aryOKCancel;
    case MESSAGE_BOX_YES_NO:
        return s_aryYesNo;
    case MESSAGE_BOX_YES_NO_CANCEL:
        return s_aryYesNoCancel;
    default:
        return s_aryOK;
    }
}

std::wstring GetText(const LyXString& text) { return text.Get() != nullptr ? text.Get() : L""; }
} // namespace

MessageBoxService::MessageBoxService() : m_pTurns(std::make_shared<TerminalTurns>()) {}

MessageBoxService::~MessageBoxService() { m_pTurns->SilenceAll(); }

void MessageBoxService::SetMemory(MEMORY_GET get, MEMORY_SET set)
{
    m_Get = std::move(get);
    m_Set = std::move(set);
}

void MessageBoxService::SetTranslation(TRANSLATION translate) { m_Translate = std::move(translate); }

int MessageBoxService::Show(LyMessageBoxDescriptor* pDescriptor)
{
    int nAnswer = NO_BOX;
    if (pDescriptor != nullptr)
        (void)LyForeignCall([&] { nAnswer = ShowBox(*pDescriptor); });
    return nAnswer;
}

ILyWaitMessage* MessageBoxService::CreateWaitMessage(const wchar_t* pText, int nDelayMS, bool bCancelButton,
                                                     ILyWaitMessageCallback* pCallback)
{
    ILyWaitMessage* pMessage = nullptr;
    (void)LyForeignCall(
        [&] {
            pMessage = WaitMessage::Create(pText, nDelayMS, bCancelButton, pCallback, m_pTurns, Translate(CANCEL_HINT));
        });
    return pMessage;
}

void MessageBoxService::FillDefaultButtons(LyMessageBoxDescriptor* pDescriptor)
{
    if (pDescriptor == nullptr)
        return;
    pDescriptor->m_nService1 = MESSAGE_BOX_OK;
    pDescriptor->m_nService5 = FIRST_BUTTON;
}

void MessageBoxService::FillDefaultButtonTexts(LyMessageBoxDescriptor* pDescriptor)
{
    if (pDescriptor == nullptr)
        return;
    (void)LyForeignCall(
        [&]
        {
            LyXString* pNext = pDescriptor->m_aryTexts;
            for (const wchar_t* const* ppText = GetButtonTexts(pDescriptor->m_nService1); *ppText != nullptr; ++ppText)
                (pNext++)->Set(Translate(*ppText).c_str());
            pNext->Set(L""); // ends the buttons
        });
}

int MessageBoxService::ShowBox(const LyMessageBoxDescriptor& descriptor)
{
    const BoxQuestion question = ReadDescriptor(descriptor);
    const std::wstring strKey = GetText(descriptor.m_strShowOnceKey);
    std::lock_guard lock(m_Mutex);
    if (!strKey.empty())
        if (const std::wstring strValue = Recall(strKey); !strValue.empty())
            return GetRememberedAnswer(question, strValue, descriptor.m_bRemember);

    int nAnswer = question.m_nDefault;
    const bool bAsked = Terminal::CanAsk();
    if (bAsked)
    {
        m_pTurns->BeginQuestion();
        (void)LyForeignCall([&] { nAnswer = question.Ask(); });
        m_pTurns->EndQuestion();
    }
    else
        question.Print();
    if (!strKey.empty() && (bAsked || question.m_aryButtons.size() == 1))
        Remember(strKey, descriptor.m_bRemember ? std::to_wstring(nAnswer) : MEMORY_SHOWN);
    return nAnswer;
}

BoxQuestion MessageBoxService::ReadDescriptor(const LyMessageBoxDescriptor& descriptor) const
{
    BoxQuestion question;
    question.m_strText = GetText(descriptor.m_strText);
    question.m_strCaption = GetText(descriptor.m_strCaption);
    for (const LyXString& text : descriptor.m_aryTexts)
    {
        if (GetText(text).empty())
            break;
        question.m_aryButtons.push_back(GetText(text));
    }
    if (question.m_aryButtons.empty())
        question.m_aryButtons.push_back(Translate(s_aryOK[0]));
    question.m_nDefault = question.IsButton(descriptor.m_nService5) ? descriptor.m_nService5 : FIRST_BUTTON;
    return question;
}

// A memory that fails remembers nothing.
std::wstring MessageBoxService::Recall(const std::wstring& strKey)
{
    std::wstring strValue;
    (void)LyForeignCall(
        [&]
        {
            if (m_Get)
                strValue = m_Get(strKey.c_str());
            else if (auto it = m_OwnMemory.find(strKey); it != m_OwnMemory.end())
                strValue = it->second;
        });
    return strValue;
}

void MessageBoxService::Remember(const std::wstring& strKey, const std::wstring& strValue)
{
    (void)LyForeignCall(
        [&]
        {
            if (m_Set)
                m_Set(strKey.c_str(), strValue.c_str());
            else
                m_OwnMemory[strKey] = strValue;
        });
}

int MessageBoxService::GetRememberedAnswer(const BoxQuestion& question, const std::wstring& strValue, bool bRemember)
{
    const long nAnswer = std::wcstol(strValue.c_str(), nullptr, 10); // 0 for MEMORY_SHOWN
    return bRemember && question.IsButton(nAnswer) ? static_cast<int>(nAnswer) : question.m_nDefault;
}

std::wstring MessageBoxService::Translate(const wchar_t* pText) const
{
    std::wstring strText = m_Translate ? m_Translate(pText) : std::wstring();
    return strText.empty() ? pText : strText;
}
