#include "LyFilename.h"
#include "IFileSystemManager.h"
#include "LyFile.h"
#include "LyFileSystem.h"
#include "LySharedToolsHelper.h"
#include "Markup.h"

namespace
{
constexpr wchar_t WRAPPER_START[] = L"<XMLFN version=";
constexpr wchar_t WRAPPER_ROOT[] = L"XMLFN";
constexpr wchar_t WRAPPER_VERSION[] = L"1.0";
constexpr wchar_t FILENAME_ITEM[] = L"Filename";
constexpr wchar_t POST_EXTENSION_PROPERTY[] = L"PostExtensionData";
constexpr int MAX_SUFFIXED_EXTENSION = 5; // a longer extension takes no suffix
constexpr int EXISTS_FLAG = 2;            // what the file system manager is told for the second flag

constexpr int FILENAME_ITEM_CHARS = 8;

bool IsFilenameItem(const LyString& strName)
{
    return strName.GetLength() == FILENAME_ITEM_CHARS && strName.CompareLeft(FILENAME_ITEM, false, -1) == 0;
}
} // namespace

LyFilename::LyFilename(const wchar_t* pName) : m_strName(pName) { UpdateAfterModifyInternalFilename(false); }

LyFilename::LyFilename(const LyString& strName) : m_strName(strName) { UpdateAfterModifyInternalFilename(false); }

LyFilename& LyFilename::operator=(const LyFilename& other)
{
    CopyFilename(other);
    return *this;
}

LyFilename& LyFilename::operator=(const wchar_t* pName)
{
    m_strName = pName;
    UpdateAfterModifyInternalFilename(true);
    return *this;
}

LyFilename& LyFilename::operator=(const LyString& strName)
{
    m_strName = strName;
    UpdateAfterModifyInternalFilename(true);
    return *this;
}

void LyFilename::CopyFilename(const LyFilename& other)
{
    m_strName = other.m_strName;
    (void)m_Properties.CopyProperties(other.m_Properties); // always true
    m_nSyntax = other.m_nSyntax;
}

void LyFilename::Empty()
{
    m_strName.Empty();
    m_Properties.DeleteProperties();
}

void LyFilename::UpdateAfterModifyInternalFilename(bool bClearProperties)
{
    if (bClearProperties)
        m_Properties.DeleteProperties();
    if (m_strName[0] == WRAPPER_START[0] && m_strName.CompareLeft(WRAPPER_START, false, -1) == 0)
        UnwrapXML();
    SplitPostExtensionData();
}

// A wrapper of another version holds nothing that could be read: the name is empty then.
void LyFilename::UnwrapXML()
{
    CMarkup markup(m_strName);
    m_strName.Empty();
    if (!markup.FindElem(WRAPPER_ROOT) || markup.GetAttrib(L"version") != WRAPPER_VERSION)
        return;
    (void)markup.IntoElem(); // there is an element to step into
    while (markup.FindElem(L"Item"))
    {
        const LyString strName = markup.GetAttrib(L"Name");
        if (IsFilenameItem(strName))
            m_strName = markup.GetData();
        else
            m_Properties.SetProperty(strName, markup.GetData(), false);
    }
}

void LyFilename::SplitPostExtensionData()
{
    const int nSemicolon = m_strName.ReverseFind(L';');
    if (nSemicolon < 0)
        return;
    const int nExtension = m_strName.ReverseFind(L'.') + 1;
    const int nLength = nSemicolon - nExtension;
    if (nExtension < 1 || nLength < 1 || nLength > MAX_SUFFIXED_EXTENSION || GetIsURL() ||
        m_strName.EndsWith(L'/', false))
        return;
    const LyString strExtension = m_strName.Mid(nExtension, nLength);
    if (strExtension.Find(L'/') >= 0 || strExtension.Find(L'\\') >= 0)
        return; // the point stands in a folder's name
    m_Properties.SetProperty(POST_EXTENSION_PROPERTY, m_strName.Mid(nSemicolon + 1), false);
    m_strName = m_strName.Left(nSemicolon);
}

LyString LyFilename::GetFilenameForUseWithOperatingSystem() const
{
    LyString strName(m_strName);
    ConvertFilenameSyntax(strName, FILENAME_SYNTAX_FILE_URL, FILENAME_SYNTAX_NATIVE);
    (void)ConvertFilenameFromInstallPathRelative(strName); // most names are not
    return strName;
}

bool LyFilename::GetFileExists(bool bUseFileSystemManager, bool bFlag) const
{
    if (m_strName.IsEmpty())
        return false;
    IFileSystemManager* pManager = bUseFileSystemManager ? GetFileSystemManager(true) : nullptr;
    if (pManager != nullptr)
        return pManager->GetFileExists(m_strName, bFlag ? EXISTS_FLAG : 0);
    return LyFileSystem::FileExistsLowLevel(GetFilenameForUseWithOperatingSystem());
}

// A URL of the file scheme is a local file.
long long LyFilename::GetFileSize(bool bAllowNetwork) const
{
    bool bIsURL = false;
    AnalyzeFilename(nullptr, nullptr, nullptr, nullptr, nullptr, &bIsURL);
    if (!bIsURL)
        return LyFileInfo(*this).GetFileSize();
    return bAllowNetwork ? GetURLSize() : -1;
}
