#include "LogSetting.h"
#include <algorithm>
#include <charconv>
#include <filesystem>

namespace
{
constexpr const char* ALL_AREAS = "all";
} // namespace

bool LogSetting::Parse(const char* pText)
{
    *this = LogSetting();
    const std::string strText = pText != nullptr ? pText : "";
    if (strText.empty())
        return true;
    const size_t nColon = strText.find(':');
    if (nColon == std::string::npos || nColon + 1 == strText.size() || !ParseAreas(strText.substr(0, nColon)))
    {
        *this = LogSetting();
        return false;
    }
    const std::string strTarget = strText.substr(nColon + 1);
    if (strTarget == TARGET_STDERR)
        return true;
    // The host may change its working folder before the first line.
    std::error_code error;
    m_strFile = std::filesystem::absolute(strTarget, error).string();
    if (error)
        m_strFile = strTarget;
    return true;
}

bool LogSetting::IsOn(int nArea) const
{
    return m_bAll || std::find(m_aryAreas.begin(), m_aryAreas.end(), nArea) != m_aryAreas.end();
}

bool LogSetting::ParseAreas(const std::string& strAreas)
{
    m_bAll = strAreas == ALL_AREAS;
    if (m_bAll)
        return true;
    const char* p = strAreas.data();
    const char* pEnd = p + strAreas.size();
    while (true)
    {
        int nArea = 0;
        const auto [pNext, eError] = std::from_chars(p, pEnd, nArea);
        if (eError != std::errc() || nArea < 0)
            return false;
        if (!IsOn(nArea))
            m_aryAreas.push_back(nArea);
        if (pNext == pEnd)
            return true;
        if (*pNext != ',')
            return false;
        p = pNext + 1;
    }
}
