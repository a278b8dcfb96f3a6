// A tools library in the test program itself that has the string helper and nothing else. While an object of this
// class lives, GetStringHelper finds the helper.

#pragma once

#include "IStringHelper.h"
#include "StandInTools.h"
#include <algorithm>
#include <cwctype>
#include <string>

// Finds without regard to case, or gives the answer that it was told to give.
class FakeStringHelper final : public IStringHelper
{
public:
    static constexpr int SEARCH = -2;

    int FindNoCase(const wchar_t* pText, const wchar_t* pPattern, int nStart) override
    {
        ++m_nCalls;
        if (m_nAnswer != SEARCH)
            return m_nAnswer;
        size_t nFound = Fold(pText).find(Fold(pPattern), static_cast<size_t>(nStart));
        return nFound == std::wstring::npos ? -1 : static_cast<int>(nFound);
    }
    int Compare(const wchar_t*, const wchar_t*, int) override { return 0; }

    int m_nAnswer = SEARCH;
    int m_nCalls = 0;

private:
    static std::wstring Fold(std::wstring str)
    {
        std::transform(str.begin(), str.end(), str.begin(),
                       [](wchar_t c) { return static_cast<wchar_t>(std::towlower(static_cast<wint_t>(c))); });
        return str;
    }
};

class FakeStringTools final : public StandInTools
{
public:
    IStringHelper* GetStringHelper(bool) override { return &m_Helper; }

    FakeStringHelper m_Helper;
};
