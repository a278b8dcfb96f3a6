// The text service: searching without case, and an order of texts.
//
// Case is folded one character at a time (Unicode, simple case folding), the
// same for every user and every locale of the process. The order of two texts
// is that of their folded characters, by code point.
//
// Threads: any.

#pragma once

#include "IStringHelper.h"
#include <clocale>
#include <mutex>

class StringHelper final : public IStringHelper
{
public:
    StringHelper() = default;
    ~StringHelper();
    StringHelper(const StringHelper&) = delete;
    StringHelper& operator=(const StringHelper&) = delete;

    // A null text or pattern is nowhere, and so is anything from a start behind
    // the end. A start below 0 is 0. The empty pattern is found where the search
    // begins.
    int FindNoCase(const wchar_t* pText, const wchar_t* pPattern, int nStart) override;

    // -1, 0 or 1; null is the empty text. Without LY_STRING_COMPARE_IGNORE_CASE
    // the code points decide. With it, texts that differ in case alone are equal;
    // with LY_STRING_COMPARE_STABLE as well, their code points decide between
    // them, so that 0 says that the texts are the same.
    int Compare(const wchar_t* pFirst, const wchar_t* pSecond, int nFlags) override;

private:
    locale_t GetFoldingLocale();

    std::once_flag m_Once;
    locale_t m_hLocale{}; // owned; none if this machine has no locale to fold by
};
