#include "LyPtr.h"
#include <cstdlib>
#include <cwchar>

// By malloc, not by new: one library frees what another allocated, and each may have an operator new of its own.
wchar_t* LyCom::SysAllocString(const wchar_t* p)
{
    size_t nChars = p ? std::wcslen(p) : 0;
    auto* pCopy = static_cast<wchar_t*>(std::malloc((nChars + 1) * sizeof(wchar_t)));
    if (pCopy == nullptr)
        return nullptr;
    if (nChars > 0)
        std::wmemcpy(pCopy, p, nChars);
    pCopy[nChars] = 0;
    return pCopy;
}

void LyCom::SysFreeString(wchar_t* p) { std::free(p); }

void LyXString::Set(const wchar_t* p)
{
    wchar_t* pCopy = LyCom::SysAllocString(p);
    LyCom::SysFreeString(m_pText);
    m_pText = pCopy;
}
