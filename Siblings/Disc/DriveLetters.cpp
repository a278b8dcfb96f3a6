#include "DriveLetters.h"
#include "OptionsHelper.h"
#include <algorithm>

LETTER_IMAGES ReadLetterImages()
{
    LETTER_IMAGES images;
    const COptionsHelper options(L"Disc Service", true);
    if (options.m_pHelper == nullptr)
        return images;
    wchar_t szKey[] = L"Letter A";
    wchar_t& cLetter = szKey[std::size(szKey) - 2];
    for (std::string& strImage : images)
    {
        strImage = GetDeviceNode(GetImagePath(options.Get(szKey, LyString())));
        ++cLetter;
    }
    return images;
}

bool DriveLetters::Update(const std::vector<std::string>& aryNodes, const LETTER_IMAGES& images,
                          const std::function<bool(const std::string&)>& pIsHeld)
{
    const std::array<std::string, DRIVE_LETTERS> aryBefore = m_aryPaths;
    const auto isThere = [&](const std::string& str)
    { return std::find(aryNodes.begin(), aryNodes.end(), str) != aryNodes.end(); };
    for (size_t i = 0; i < m_aryPaths.size(); ++i)
    {
        std::string& strPath = m_aryPaths[i];
        if (!strPath.empty() && pIsHeld(strPath))
            continue;
        m_aryByOption[i] = !images[i].empty();
        if (m_aryByOption[i])
            strPath = images[i];
        else if (!isThere(strPath) || std::find(images.begin(), images.end(), strPath) != images.end())
            strPath.clear();
    }
    for (const std::string& strNode : aryNodes)
        GiveLetter(strNode);
    return m_aryPaths != aryBefore;
}

void DriveLetters::GiveLetter(const std::string& strNode)
{
    if (Find(strNode) != NO_DRIVE_LETTER)
        return;
    const auto pFree = std::find(m_aryPaths.begin() + FIRST_GIVEN, m_aryPaths.end(), std::string());
    if (pFree != m_aryPaths.end())
        *pFree = strNode;
}

int DriveLetters::Find(const std::string& strPath) const
{
    const auto pFound = std::find(m_aryPaths.begin(), m_aryPaths.end(), strPath);
    return strPath.empty() || pFound == m_aryPaths.end() ? NO_DRIVE_LETTER
                                                         : static_cast<int>(pFound - m_aryPaths.begin());
}
