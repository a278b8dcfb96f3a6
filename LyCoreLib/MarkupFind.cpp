// Moving through a document, paths, and the tokens of a tag.

#include "MarkupDetails.h"
#include <climits>

using namespace MarkupDetails;

namespace
{
// One name of a path with what may follow it in brackets. The texts lie in the path.
struct STEP
{
    const wchar_t* pName;
    const wchar_t* pAttribute; // of "[@attr]"; null if there is none
    const wchar_t* pChild;     // of "[child]"; null if there is none
    int nNth;                  // of "[n]"; -1 if there is none
    bool bImpossible;          // a second bracket: not in the language of paths
};

bool IsStepEnd(wchar_t c) { return c == 0 || c == L'/' || c == L'[' || c == L' ' || c == L'=' || c == L']'; }

bool IsDigit(wchar_t c) { return c >= L'0' && c <= L'9'; }

// Reads what follows an opening bracket and returns what follows the closing one.
const wchar_t* ReadBracket(const wchar_t* p, STEP& step)
{
    if (*p == L'@')
        step.pAttribute = ++p;
    else if (!IsDigit(*p))
        step.pChild = p;
    else
    {
        step.nNth = 0;
        for (; IsDigit(*p); ++p)
            step.nNth = step.nNth < INT_MAX / 10 ? step.nNth * 10 + (*p - L'0') : INT_MAX;
    }
    while (*p != 0 && *p != L']')
        ++p;
    return *p != 0 ? p + 1 : p;
}

// A path, cut into its steps.
class Path
{
public:
    explicit Path(const wchar_t* p)
    {
        m_bFromRoot = *p == L'/';
        if (m_bFromRoot)
            ++p;
        m_bAnywhere = m_bFromRoot && *p == L'/';
        if (m_bAnywhere)
            ++p;
        do
        {
            if (m_nSteps == CMarkup::MAX_STEPS)
            {
                m_nSteps = 0; // leads nowhere
                return;
            }
            p = ReadStep(p, m_Steps[m_nSteps++]);
        } while (p != nullptr);
    }

    int GetSteps() const { return m_nSteps; }
    const STEP& operator[](int nIndex) const { return m_Steps[nIndex]; }
    bool GetIsFromRoot() const { return m_bFromRoot; }
    bool GetIsAnywhere() const { return m_bAnywhere; }

private:
    // Returns where the next step begins; null behind the last one.
    static const wchar_t* ReadStep(const wchar_t* p, STEP& step)
    {
        step = {p, nullptr, nullptr, -1, false};
        while (!IsStepEnd(*p))
            ++p;
        if (*p == L'[')
            p = ReadBracket(p + 1, step);
        step.bImpossible = *p == L'[';
        return *p == L'/' ? p + 1 : nullptr;
    }

    STEP m_Steps[CMarkup::MAX_STEPS]; // the first m_nSteps are filled
    int m_nSteps = 0;
    bool m_bFromRoot;
    bool m_bAnywhere;
};

// Answers where the paths of one document lead. It walks the records; there is no recursion.
class PathFinder
{
public:
    PathFinder(const CMarkup& markup, const Path& path) : m_Markup(markup), m_Path(path) {}
    int FindFrom(int nParent, int nAfter) const;
    int FindAnywhere(int nAfter) const;

private:
    bool IsNamed(int nPos, const wchar_t* pName) const;
    bool Matches(int nPos, const STEP& step) const;
    bool HasAttribute(int nPos, const wchar_t* pName) const;
    bool HasChild(int nPos, const wchar_t* pName) const;
    bool IsNth(int nPos, const STEP& step) const;
    bool MatchesUpwards(int nPos) const;
    int FindChild(int nParent, int nAfter, const STEP& step) const;
    int FindNthChild(int nParent, int nAfter, const STEP& step) const;
    int FindSibling(int nPos, const STEP& step) const;
    int GetNextInText(int nPos) const;
    bool IsFirstChild(int nPos) const { return GetPos(GetPos(nPos).m_nParent).m_nFirstChild == nPos; }
    const MARKUP_POSITION& GetPos(int nPos) const { return m_Markup.x_GetPos(nPos); }

    const CMarkup& m_Markup;
    const Path& m_Path;
};

// Goes down the path, and back up wherever it does not go on.
int PathFinder::FindFrom(int nParent, int nAfter) const
{
    int nStep = 0;
    int nPos = FindChild(nParent, nAfter, m_Path[0]);
    for (;;)
    {
        if (nPos != 0)
        {
            if (nStep == m_Path.GetSteps() - 1)
                return nPos;
            nParent = nPos;
            nPos = FindChild(nParent, 0, m_Path[++nStep]);
            continue;
        }
        if (nStep == 0)
            return 0;
        nPos = FindSibling(nParent, m_Path[--nStep]);
        nParent = GetPos(nParent).m_nParent;
    }
}

int PathFinder::FindAnywhere(int nAfter) const
{
    int nPos = GetNextInText(nAfter);
    while (nPos != 0 && !MatchesUpwards(nPos))
        nPos = GetNextInText(nPos);
    return nPos;
}

// The next element in the order of the start tags; 0 at the end.
int PathFinder::GetNextInText(int nPos) const
{
    if (GetPos(nPos).m_nFirstChild != 0)
        return GetPos(nPos).m_nFirstChild;
    while (nPos != 0 && GetPos(nPos).m_nNextSibling == 0)
        nPos = GetPos(nPos).m_nParent;
    return nPos != 0 ? GetPos(nPos).m_nNextSibling : 0;
}

// Whether the path leads to the element from some element or other around it.
bool PathFinder::MatchesUpwards(int nPos) const
{
    for (int i = m_Path.GetSteps() - 1; i >= 0; --i)
    {
        if (nPos == 0 || !Matches(nPos, m_Path[i]) || !IsNth(nPos, m_Path[i]))
            return false;
        nPos = GetPos(nPos).m_nParent;
    }
    return true;
}

bool PathFinder::IsNth(int nPos, const STEP& step) const
{
    if (step.nNth < 0)
        return true;
    int nCount = 1;
    for (; !IsFirstChild(nPos) && nCount <= step.nNth; nPos = GetPos(nPos).m_nPreviousSibling)
    {
        if (IsNamed(GetPos(nPos).m_nPreviousSibling, step.pName))
            ++nCount;
    }
    return nCount == step.nNth;
}

int PathFinder::FindChild(int nParent, int nAfter, const STEP& step) const
{
    if (step.nNth >= 0)
        return FindNthChild(nParent, nAfter, step);
    if (nAfter != 0)
        return FindSibling(nAfter, step);
    int nPos = GetPos(nParent).m_nFirstChild;
    return nPos == 0 || Matches(nPos, step) ? nPos : FindSibling(nPos, step);
}

int PathFinder::FindNthChild(int nParent, int nAfter, const STEP& step) const
{
    int nCount = 0;
    for (int nPos = GetPos(nParent).m_nFirstChild; nPos != 0; nPos = GetPos(nPos).m_nNextSibling)
    {
        if (Matches(nPos, step) && ++nCount == step.nNth)
            return nAfter == 0 || GetPos(nPos).m_nStart > GetPos(nAfter).m_nStart ? nPos : 0;
    }
    return 0;
}

// The next sibling that matches. There is only one n-th.
int PathFinder::FindSibling(int nPos, const STEP& step) const
{
    if (step.nNth >= 0)
        return 0;
    do
        nPos = GetPos(nPos).m_nNextSibling;
    while (nPos != 0 && !Matches(nPos, step));
    return nPos;
}

bool PathFinder::IsNamed(int nPos, const wchar_t* pName) const
{
    return *pName == L'*' || IsStepEnd(*pName) || GetNameToken(m_Markup, nPos).Match(pName);
}

bool PathFinder::Matches(int nPos, const STEP& step) const
{
    if (step.bImpossible || !IsNamed(nPos, step.pName))
        return false;
    if (step.pAttribute != nullptr)
        return HasAttribute(nPos, step.pAttribute);
    return step.pChild == nullptr || HasChild(nPos, step.pChild);
}

bool PathFinder::HasAttribute(int nPos, const wchar_t* pName) const
{
    CMarkup::TokenPos token(m_Markup.m_strDocument, m_Markup.m_nDocFlags);
    token.m_nNext = GetPos(nPos).m_nStart + 1;
    return !IsStepEnd(*pName) && CMarkup::x_FindAttrib(token, pName);
}

bool PathFinder::HasChild(int nPos, const wchar_t* pName) const
{
    for (nPos = GetPos(nPos).m_nFirstChild; nPos != 0; nPos = GetPos(nPos).m_nNextSibling)
    {
        if (IsNamed(nPos, pName))
            return true;
    }
    return false;
}
} // namespace

bool CMarkup::FindElem(const wchar_t* pName)
{
    const int nPos = x_FindElem(m_nParentPos, m_nMainPos, pName);
    if (nPos == 0)
        return false;
    m_nMainPos = nPos;
    m_nParentPos = x_GetPos(nPos).m_nParent;
    m_nChildPos = 0;
    m_nNodeLength = 0;
    return true;
}

bool CMarkup::IntoElem()
{
    if (m_nMainPos == 0)
        return false;
    m_nParentPos = m_nMainPos;
    m_nMainPos = m_nChildPos;
    m_nChildPos = 0;
    m_nNodeLength = 0;
    return true;
}

bool CMarkup::OutOfElem()
{
    if (m_nParentPos == 0)
        return false;
    m_nChildPos = m_nMainPos;
    m_nMainPos = m_nParentPos;
    m_nParentPos = x_GetPos(m_nMainPos).m_nParent;
    m_nNodeLength = 0;
    return true;
}

int CMarkup::x_FindElem(int nParent, int nAfter, const wchar_t* pPath) const
{
    if (m_nAllocated == 0 || (nParent != 0 && !x_IsElement(nParent)) || (nAfter != 0 && !x_IsElement(nAfter)))
        return 0;
    const Path path(pPath != nullptr ? pPath : L"");
    if (path.GetSteps() == 0)
        return 0;
    const PathFinder finder(*this, path);
    if (path.GetIsAnywhere())
        return finder.FindAnywhere(nAfter);
    return path.GetIsFromRoot() ? finder.FindFrom(0, 0) : finder.FindFrom(nParent, nAfter);
}
