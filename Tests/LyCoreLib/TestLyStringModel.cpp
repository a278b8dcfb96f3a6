// Many operations in a row on strings that share with each other, beside the same on std::wstring. What one operation
// leaves behind is what the next one starts from: blocks that are shared, kept, full, or taken from another manager.

#include "StringTestSupport.h"
#include <algorithm>
#include <gtest/gtest.h>
#include <random>

namespace
{
constexpr int STRINGS = 4;
constexpr int STEPS = 20000;
constexpr int MAX_CHARS = 3000;

class Model
{
public:
    explicit Model(unsigned int nSeed) : m_Random(nSeed) {}

    void Step()
    {
        int a = Below(STRINGS);
        int b = Below(STRINGS);
        switch (Below(3))
        {
        case 0:
            Assign(m_Strings[a], m_Models[a], b);
            break;
        case 1:
            Join(m_Strings[a], m_Models[a], b);
            break;
        default:
            Edit(m_Strings[a], m_Models[a], static_cast<wchar_t>(L'a' + b));
            break;
        }
        if (m_Models[a].size() > MAX_CHARS)
        {
            m_Strings[a] = L"again";
            m_Models[a] = L"again";
        }
    }

    void Check() const
    {
        for (int i = 0; i < STRINGS; ++i)
        {
            ASSERT_EQ(Contents(m_Strings[i]), m_Models[i]);
            ASSERT_EQ(m_Strings[i][m_Strings[i].GetLength()], 0);
            ASSERT_LT(m_Strings[i].GetLength(), BlockOf(m_Strings[i])->nAllocated);
            ASSERT_GE(BlockOf(m_Strings[i])->GetReferences(), 1);
        }
    }

private:
    int Below(int n) { return static_cast<int>(m_Random() % static_cast<unsigned int>(n)); }

    void Assign(LyString& str, std::wstring& model, int b)
    {
        switch (Below(4))
        {
        case 0:
            str = m_Strings[b];
            model = m_Models[b];
            break;
        case 1:
            TakePart(str, model, b);
            break;
        case 2:
            str = TextOf(str) + str.GetLength() / 3;
            model = model.substr(model.size() / 3);
            break;
        default:
            if (&str != &m_Strings[b])
            {
                str = std::move(m_Strings[b]);
                model = m_Models[b];
                m_Models[b] = Contents(m_Strings[b]);
            }
            break;
        }
    }

    void Join(LyString& str, std::wstring& model, int b)
    {
        switch (Below(6))
        {
        case 0:
            str += m_Strings[b];
            model += m_Models[b];
            break;
        case 1:
            str += static_cast<wchar_t>(L'a' + b);
            model += static_cast<wchar_t>(L'a' + b);
            break;
        case 2:
            str += TextOf(str) + str.GetLength() / 2;
            model += model.substr(model.size() / 2);
            break;
        case 3:
            str = m_Strings[b] + L"-" + m_Strings[0];
            model = m_Models[b] + L"-" + m_Models[0];
            break;
        case 4:
            str.AppendLeft(L'0', b);
            model.insert(0, static_cast<size_t>(b), L'0');
            break;
        default:
            str.Append4(str, str.GetLength(), L"xy", 1, nullptr, 3, m_Strings[b], m_Strings[b].GetLength(), 16 * b);
            model += model + L"x" + m_Models[b];
            break;
        }
    }

    void Edit(LyString& str, std::wstring& model, wchar_t c)
    {
        switch (Below(5))
        {
        case 0:
            Cut(str, model);
            break;
        case 1:
            Insert(str, model);
            break;
        case 2:
            str.Remove(c);
            std::erase(model, c);
            break;
        case 3:
            str.Empty();
            model.clear();
            break;
        default:
            Write(str, model);
            break;
        }
    }

    void TakePart(LyString& str, std::wstring& model, int nFrom)
    {
        int nStart = Below(9);
        int nCount = Below(40);
        str = m_Strings[nFrom].Mid(nStart, nCount);
        size_t nClamped = std::min(static_cast<size_t>(nStart), m_Models[nFrom].size());
        model = m_Models[nFrom].substr(nClamped, static_cast<size_t>(nCount));
    }
    void Cut(LyString& str, std::wstring& model)
    {
        int nLeft = Below(4);
        int nRight = Below(4);
        str.RemoveLeftAndRight(nLeft, nRight);
        if (static_cast<size_t>(nLeft + nRight) >= model.size())
            model.clear();
        else
            model = model.substr(static_cast<size_t>(nLeft), model.size() - static_cast<size_t>(nLeft + nRight));
    }
    void Insert(LyString& str, std::wstring& model)
    {
        int nIndex = Below(str.GetLength() + 1);
        str.Insert(nIndex, L'i');
        model.insert(static_cast<size_t>(nIndex), 1, L'i');
    }
    void Write(LyString& str, std::wstring& model)
    {
        int nChars = Below(60);
        wchar_t* p = str.GetBuffer(nChars, Below(2) == 0, Below(2) == 0);
        std::wmemset(p, L'w', static_cast<size_t>(nChars));
        str.ReleaseBuffer(nChars);
        model.assign(static_cast<size_t>(nChars), L'w');
    }

    std::mt19937 m_Random;
    LyString m_Strings[STRINGS];
    std::wstring m_Models[STRINGS];
};
} // namespace

TEST(LyStringModel, ManyOperationsBehaveAsOnAPlainString)
{
    for (unsigned int nSeed = 1; nSeed <= 4; ++nSeed)
    {
        Model model(nSeed);
        for (int i = 0; i < STEPS; ++i)
        {
            model.Step();
            ASSERT_NO_FATAL_FAILURE(model.Check()) << "seed " << nSeed << ", step " << i;
        }
    }
}
