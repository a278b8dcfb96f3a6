// Front ends to the player's option store, its translations and its message boxes. They work, or quietly do nothing,
// whether or not the tools library is there.
//
// Errors:  a missing service means defaults and silence.
// Threads: the services do their own locking.

#pragma once

#include "ILyMessageBox.h"
#include "LyPtr.h"
#include "LySharedToolsHelper.h"
#include "LyString.h"

// One store of options, made by the tools library. The order of the operations is their order in the virtual table,
// in which the destructor takes two places: other libraries call them there.
// What the trailing arguments mean is the store's own; this system passes 0, empty or null.
class IOptionsHelper
{
public:
    virtual ~IOptionsHelper() = default;
    // A system string, the caller's.
    virtual LyXString Get(const wchar_t* pKey, const wchar_t* pDefault, int nA, const wchar_t* pB, int nC) = 0;
    virtual int Get(const wchar_t* pKey, int nDefault, int nA, int nB) = 0;
    virtual void Reserved5() {}
    virtual bool Set(const wchar_t* pKey, const wchar_t* pValue, int nA, const wchar_t* pB, int nC) = 0;
    virtual void Reserved7() {}
    virtual void Reserved8() {}
    virtual void Reserved9() {}
    virtual void Reserved10() {}
    virtual bool Delete(const wchar_t* pKey) = 0;
};

class COptionsHelper
{
public:
    // Opens the store of that name, a key path. It is the one class of this front end that loads the tools library.
    COptionsHelper(const wchar_t* pName, bool bCreate);

    LyString Get(const wchar_t* pKey, const LyString& strDefault, int nA = 0, const LyString& strB = LyString(),
                 int nC = 0) const;
    int Get(const wchar_t* pKey, int nDefault, int nA = 0, int nB = 0) const;
    bool Set(const wchar_t* pKey, const wchar_t* pValue, int nA = 0, const wchar_t* pOther = nullptr, int nC = 0);
    bool Delete(const wchar_t* pKey);

    LyPtr<IOptionsHelper, IOptionsHelper> m_pHelper; // null is a valid state
};

// The text in the language of the user interface; without the tools library, or a translation, as it is.
void TranslateString(LyString& strText);
LyString TranslateString(const wchar_t* pText);

// Shows a message box and waits for its answer, which is the number of the button; 0 if no box could be shown.
// With a key the box is shown once; bRemember keeps its answer. bFlag asks for a modal box.
int IMB(const wchar_t* pText, const wchar_t* pCaption, LyString strShowOnceKey, bool bRemember, bool bFlag);
