// Message boxes without windows: asked on the terminal, where somebody sits there to answer, and otherwise printed as
// one sentence on the standard error stream and answered with the default button.
//
// Buttons: m_aryTexts of the descriptor holds their texts, the first empty one ends them. The number of a button counts
//          from 1, and 0 says that nothing could be shown. m_nService1 is the set of the default buttons
//          (MESSAGE_BOX_BUTTONS), m_nService5 the number of the default button; one outside the buttons means the
//          first. FillDefaultButtons gives a plain OK; a caller that changes the set before FillDefaultButtonTexts gets
//          its texts. A box without any text on a button has the button "OK".
// Answers: a button's number, or the beginning of its text in either case of letters; Enter alone, the end of the input
// and a
//          signal that the program handles take the default button.
// Once:    a box with m_strShowOnceKey is shown once for that key, as the memory says. Later the kept answer comes back
//          without asking, with m_bRemember, or else the default button. Where several buttons leave a choice and
//          nobody was there to be asked, nothing is remembered. Without a memory a key lasts as long as the service.
// Threads: any; one box is asked at a time. SetMemory and SetTranslation come before the first use.

#pragma once

#include "ILyMessageBox.h"
#include "TerminalTurns.h"
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>

class BoxQuestion;

enum MESSAGE_BOX_BUTTONS : int
{
    MESSAGE_BOX_OK = 0,
    MESSAGE_BOX_OK_CANCEL = 1,
    MESSAGE_BOX_YES_NO = 2,
    MESSAGE_BOX_YES_NO_CANCEL = 3
};

class MessageBoxService final : public ILyMessageBox
{
public:
    // The store that the memory is kept in, under this name of an option store.
    static constexpr const wchar_t* MEMORY_STORE = L"Message Boxes";
    // What is remembered of a box that was shown, but whose answer is not kept. Otherwise the answer in decimal.
    static constexpr const wchar_t* MEMORY_SHOWN = L"shown";

    using MEMORY_GET = std::function<std::wstring(const wchar_t* pKey)>; // empty: nothing is remembered
    using MEMORY_SET = std::function<void(const wchar_t* pKey, const wchar_t* pValue)>;
    using TRANSLATION = std::function<std::wstring(const wchar_t* pText)>;

    MessageBoxService();
    ~MessageBoxService(); // ends the threads of wait messages that nobody closed

    void SetMemory(MEMORY_GET get, MEMORY_SET set);
    void SetTranslation(TRANSLATION translate); // for the texts of buttons and hints

    void Reserved1() override {}
    void Reserved2() override {}
    int Show(LyMessageBoxDescriptor* pDescriptor) override;
    ILyWaitMessage* CreateWaitMessage(const wchar_t* pText, int nDelayMS, bool bCancelButton,
                                      ILyWaitMessageCallback* pCallback) override;
    void Reserved5() override {}
    void Reserved6() override {}
    void Reserved7() override {}
    void Reserved8() override {}
    void Reserved9() override {}
    void Reserved10() override {}
    void Reserved11() override {}
    void Reserved12() override {}
    void Reserved13() override {}
    void FillDefaultButtons(LyMessageBoxDescriptor* pDescriptor) override;
    void FillDefaultButtonTexts(LyMessageBoxDescriptor* pDescriptor) override;

private:
    int ShowBox(const LyMessageBoxDescriptor& descriptor);
    BoxQuestion ReadDescriptor(const LyMessageBoxDescriptor& descriptor) const;
    std::wstring Recall(const std::wstring& strKey); // empty: the box was not shown yet
    void Remember(const std::wstring& strKey, const std::wstring& strValue);
    static int GetRememberedAnswer(const BoxQuestion& question, const std::wstring& strValue, bool bRemember);
    std::wstring Translate(const wchar_t* pText) const;

    std::mutex m_Mutex; // one box at a time, from the look into the memory to the note in it
    MEMORY_GET m_Get;
    MEMORY_SET m_Set;
    TRANSLATION m_Translate;
    std::map<std::wstring, std::wstring> m_OwnMemory; // in force without a memory
    const std::shared_ptr<TerminalTurns> m_pTurns;
};
