#include "LyString.h"
#include "LyStringFormat.h"

const wchar_t* LyDllString::Get() const { return *m_pString; }

void LyDllString::Set(const wchar_t* p, int nLength) const { m_pString->Assign(p, nLength); }

void LyDllString::Empty() const { m_pString->Empty(); }

// The other library says how much it will write: there is nothing to grow for.
wchar_t* LyDllString::GetBuffer(int nChars, bool bKeepContents) const
{
    return m_pString->GetBuffer(nChars, true, bKeepContents);
}

void LyDllString::ReleaseBuffer(int nLength) const { m_pString->ReleaseBuffer(nLength); }

LyStringANSI::LyStringANSI(const LyString& str, unsigned int nCodePage)
    : m_pText(LyCharacterHelper::GetANSIFromUTFN(str, nCodePage))
{
}

LyStringUTF8::LyStringUTF8(const LyString& str) : m_pText(LyCharacterHelper::GetUTF8FromUTFN(str, -1)) {}
