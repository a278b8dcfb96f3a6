// The tools library's message boxes and wait messages, and the record that describes a box.
//
// Ownership: the service belongs to the tools library. A wait message belongs to whoever asked for it, until Close.
// Threads:   any. The service brings itself to the thread that shows windows.

#pragma once

#include "LyPtr.h"
#include <cstddef>

// What a message box is to show. Both sides of the library boundary read and write it, so its layout is fixed, and
// each text is a system string of its own, initially the empty text, that either side replaces by LyXString::Set.
// The fields without a telling name are the service's own.
struct LyMessageBoxDescriptor
{
    static constexpr int TEXT_COUNT = 256;

    LyMessageBoxDescriptor();
    ~LyMessageBoxDescriptor(); // releases the texts, the last one first
    LyMessageBoxDescriptor(const LyMessageBoxDescriptor&) = delete;
    LyMessageBoxDescriptor& operator=(const LyMessageBoxDescriptor&) = delete;

    LyXString m_strText;
    LyXString m_strCaption;
    bool m_bModal;
    LyXString m_strShowOnceKey; // not empty: the box is shown once, and the answer is kept under this key
    LyXString m_strSecondKey;
    LyXString m_strThirdKey;
    bool m_bRemember; // the answer to a box shown once is kept
    bool m_bService1;
    int m_nService1;
    LyXString m_aryTexts[TEXT_COUNT]; // buttons and lines
    LyXString m_strService1;
    bool m_bService2;
    LyXString m_strService2;
    int m_nService2;
    LyXString m_strService3;
    bool m_bService3; // initially true
    LyXString m_strService4;
    bool m_bService4;
    LyXString m_strService5;
    int m_nService5; // initially -1
};
static_assert(offsetof(LyMessageBoxDescriptor, m_bModal) == 16);
static_assert(offsetof(LyMessageBoxDescriptor, m_strShowOnceKey) == 24);
static_assert(offsetof(LyMessageBoxDescriptor, m_bRemember) == 48);
static_assert(offsetof(LyMessageBoxDescriptor, m_nService1) == 52);
static_assert(offsetof(LyMessageBoxDescriptor, m_aryTexts) == 56);
static_assert(offsetof(LyMessageBoxDescriptor, m_strService1) == 2104);
static_assert(offsetof(LyMessageBoxDescriptor, m_nService5) == 2176 && sizeof(LyMessageBoxDescriptor) == 2184);

// Told when the user presses the cancel button of a wait message.
class ILyWaitMessageCallback
{
public:
    virtual bool LyWaitMessage_Cancel() = 0;

protected:
    ~ILyWaitMessageCallback() = default;
};

// A window that says that something takes its time.
class ILyWaitMessage
{
public:
    virtual bool GetCancelled() = 0;
    virtual void SetProgress(const wchar_t* pText, const wchar_t* pSecondText, int nPercent) = 0; // -1: not known
    virtual void Close() = 0; // takes the window away and ends the object

protected:
    ~ILyWaitMessage() = default;
};

// The order of the operations is their order in the virtual table: other libraries call them there.
class ILyMessageBox
{
public:
    virtual void Reserved1() {}
    virtual void Reserved2() {}
    virtual int Show(LyMessageBoxDescriptor* pDescriptor) = 0; // blocks until the box is answered; the button's number
    // A wait message that appears after nDelayMS, with a cancel button if asked for. pCallback may be null; it
    // outlives the message. Null if no window can be shown.
    virtual ILyWaitMessage* CreateWaitMessage(const wchar_t* pText, int nDelayMS, bool bCancelButton,
                                              ILyWaitMessageCallback* pCallback) = 0;
    virtual void Reserved5() {}
    virtual void Reserved6() {}
    virtual void Reserved7() {}
    virtual void Reserved8() {}
    virtual void Reserved9() {}
    virtual void Reserved10() {}
    virtual void Reserved11() {}
    virtual void Reserved12() {}
    virtual void Reserved13() {}
    virtual void FillDefaultButtons(LyMessageBoxDescriptor* pDescriptor) = 0;     // which buttons there are
    virtual void FillDefaultButtonTexts(LyMessageBoxDescriptor* pDescriptor) = 0; // what is written on them

protected:
    ~ILyMessageBox() = default;
};
