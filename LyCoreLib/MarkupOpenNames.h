// The names of the elements that are open while a document is parsed.

#pragma once

#include "MarkupDetails.h"
#include <map>
#include <utility>

namespace MarkupDetails
{
// How many elements of each name are open. Texts full of end tags that match nothing would otherwise be compared with
// every open element each time.
class OpenNames
{
public:
    OpenNames(const wchar_t* pText, bool bIgnoreCase) : m_Names(LESS{pText, bIgnoreCase}) {}

    void Add(int nStart) { ++m_Names[GetName(nStart)]; }
    void Remove(int nStart)
    {
        auto it = m_Names.find(GetName(nStart));
        if (it != m_Names.end() && --it->second == 0)
            m_Names.erase(it);
    }
    bool Contains(const CMarkup::TokenPos& token) const
    {
        return m_Names.find(NAME(token.m_nLeft, token.GetLength())) != m_Names.end();
    }

private:
    using NAME = std::pair<int, int>; // offset and length in the text

    struct LESS
    {
        const wchar_t* pText;
        bool bIgnoreCase;

        bool operator()(const NAME& first, const NAME& second) const
        {
            const LyStringGlobals& globals = LyStringGlobals::GetGlobals();
            const int nCommon = first.second < second.second ? first.second : second.second;
            for (int i = 0; i < nCommon; ++i)
            {
                int c1 = pText[first.first + i];
                int c2 = pText[second.first + i];
                if (c1 != c2 && bIgnoreCase)
                {
                    c1 = globals.ToLower(c1);
                    c2 = globals.ToLower(c2);
                }
                if (c1 != c2)
                    return c1 < c2;
            }
            return first.second < second.second;
        }
    };

    NAME GetName(int nStart) const
    {
        const wchar_t* pText = m_Names.key_comp().pText;
        return NAME(nStart + 1, SkipName(pText, nStart + 1) - nStart - 1);
    }

    std::map<NAME, int, LESS> m_Names;
};
} // namespace MarkupDetails
