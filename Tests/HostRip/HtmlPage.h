// A page taken apart, strictly: as XML 1.0 has it, elements are closed in order, attributes are quoted and no name
// comes twice, "<" and "&" stand for nothing but tags and entities, and there are no characters that XML does not know.

#pragma once

#include <cstring>
#include <functional>
#include <map>
#include <string>
#include <vector>

struct HTML_ELEMENT
{
    std::string strName;
    std::map<std::string, std::string> mapAttributes;
    std::string strText; // its own and that of all within
    int nParent = -1;

    std::string Get(const std::string& strAttribute) const
    {
        const auto it = mapAttributes.find(strAttribute);
        return it != mapAttributes.end() ? it->second : "";
    }
    bool Has(const std::string& strAttribute) const { return mapAttributes.contains(strAttribute); }
};

class HtmlPage
{
public:
    explicit HtmlPage(const std::string& strPage) : m_strPage(strPage)
    {
        if (!m_strPage.starts_with("<!DOCTYPE html>"))
            Fail("no type of document");
        m_nAt = std::strlen("<!DOCTYPE html>");
        while (m_strFault.empty() && m_nAt < m_strPage.size())
            ReadNext();
        if (m_strFault.empty() && m_nOpen != -1)
            Fail("not closed: " + m_aryElements[static_cast<size_t>(m_nOpen)].strName);
    }

    const std::string& GetFault() const { return m_strFault; }
    const std::vector<HTML_ELEMENT>& GetAll() const { return m_aryElements; }

    // All elements of a name, with this value of an attribute if one is named.
    std::vector<HTML_ELEMENT> Find(const std::string& strName, const std::string& strAttribute = "",
                                   const std::string& strValue = "") const
    {
        std::vector<HTML_ELEMENT> aryFound;
        for (const HTML_ELEMENT& element : m_aryElements)
            if (element.strName == strName && (strAttribute.empty() || element.Get(strAttribute) == strValue))
                aryFound.push_back(element);
        return aryFound;
    }
    // The elements of a name directly within one that has this class.
    std::vector<HTML_ELEMENT> FindIn(const std::string& strClass, const std::string& strName) const
    {
        std::vector<HTML_ELEMENT> aryFound;
        for (const HTML_ELEMENT& element : m_aryElements)
            if (element.strName == strName && element.nParent >= 0 &&
                m_aryElements[static_cast<size_t>(element.nParent)].Get("class") == strClass)
                aryFound.push_back(element);
        return aryFound;
    }
    std::string GetText() const { return m_aryElements.empty() ? "" : m_aryElements[0].strText; }

private:
    void Fail(const std::string& strWhat)
    {
        if (m_strFault.empty())
            m_strFault = strWhat + " at byte " + std::to_string(m_nAt) + ": " + m_strPage.substr(m_nAt, 60);
    }

    void ReadNext()
    {
        if (m_strPage[m_nAt] != '<')
            return ReadText();
        const size_t nEnd = m_strPage.find('>', m_nAt);
        if (nEnd == std::string::npos)
            return Fail("a tag without an end");
        if (m_strPage[m_nAt + 1] == '/')
            return ReadEnd(nEnd);
        ReadBegin(nEnd);
    }

    void ReadText()
    {
        const size_t nEnd = std::min(m_strPage.find('<', m_nAt), m_strPage.size());
        const std::string strText = Decode(m_strPage.substr(m_nAt, nEnd - m_nAt));
        if (m_nOpen == -1 && strText.find_first_not_of(" \n") != std::string::npos)
            Fail("text outside of everything");
        for (int n = m_nOpen; n != -1; n = m_aryElements[static_cast<size_t>(n)].nParent)
            m_aryElements[static_cast<size_t>(n)].strText += strText;
        m_nAt = nEnd;
    }

    void ReadEnd(size_t nEnd)
    {
        const std::string strName = m_strPage.substr(m_nAt + 2, nEnd - m_nAt - 2);
        if (m_nOpen == -1 || m_aryElements[static_cast<size_t>(m_nOpen)].strName != strName)
            return Fail("closed, but not open");
        m_nOpen = m_aryElements[static_cast<size_t>(m_nOpen)].nParent;
        m_nAt = nEnd + 1;
    }

    void ReadBegin(size_t nEnd)
    {
        std::string strTag = m_strPage.substr(m_nAt + 1, nEnd - m_nAt - 1);
        const bool bEmpty = strTag.ends_with('/');
        if (bEmpty)
            strTag.pop_back();
        HTML_ELEMENT element;
        element.nParent = m_nOpen;
        size_t i = std::min(strTag.find(' '), strTag.size());
        element.strName = strTag.substr(0, i);
        if (element.strName.find_first_not_of("abcdefghijklmnopqrstuvwxyz123456") != std::string::npos ||
            element.strName.empty())
            Fail("a strange tag");
        while (m_strFault.empty() && i < strTag.size())
            i = ReadAttribute(element, strTag, i);
        if (m_nOpen == -1 && !m_aryElements.empty())
            Fail("a second root");
        m_aryElements.push_back(element);
        if (!bEmpty)
            m_nOpen = static_cast<int>(m_aryElements.size()) - 1;
        m_nAt = nEnd + 1;
    }

    size_t ReadAttribute(HTML_ELEMENT& element, const std::string& strTag, size_t i)
    {
        const size_t nEqual = strTag.find("=\"", i);
        const size_t nEnd = nEqual == std::string::npos ? nEqual : strTag.find('"', nEqual + 2);
        if (strTag[i] != ' ' || nEnd == std::string::npos)
        {
            Fail("a strange attribute");
            return strTag.size();
        }
        const std::string strName = strTag.substr(i + 1, nEqual - i - 1);
        const std::string strValue = strTag.substr(nEqual + 2, nEnd - nEqual - 2);
        if (strName.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ-12") != std::string::npos ||
            !element.mapAttributes.emplace(strName, Decode(strValue)).second)
            Fail("an attribute with a strange name, or twice");
        return nEnd + 1;
    }

    std::string Decode(const std::string& strText)
    {
        static const std::map<std::string, std::string> s_mapEntities = {
            {"&amp;", "&"}, {"&lt;", "<"}, {"&gt;", ">"}, {"&quot;", "\""}, {"&#39;", "'"}};
        std::string strResult;
        for (size_t i = 0; i < strText.size();)
        {
            const unsigned char c = static_cast<unsigned char>(strText[i]);
            if ((c < 0x20 && c != '\n') || c == 0x7F)
                Fail("a control character");
            if (c != '&')
            {
                strResult += strText[i++];
                continue;
            }
            const size_t nEnd = std::min(strText.find(';', i), strText.size() - 1);
            const auto it = s_mapEntities.find(strText.substr(i, nEnd + 1 - i));
            if (it == s_mapEntities.end())
                Fail("an unknown entity");
            else
                strResult += it->second;
            i = nEnd + 1;
        }
        return strResult;
    }

    std::string m_strPage;
    std::string m_strFault;
    std::vector<HTML_ELEMENT> m_aryElements;
    size_t m_nAt = 0;
    int m_nOpen = -1;
};
