#include "Translator.h"

#include "LyTools.h"
#include "OptionsHelper.h"
#include "UTF8.h"
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <memory>
#include <string_view>

namespace
{
std::string GetVariable(const char* pName)
{
    const char* p = getenv(pName);
    return p != nullptr ? p : "";
}

bool IsSourceLocale(std::string_view strName) { return strName == "C" || strName == "POSIX"; }

bool IsSourceLanguage(std::string_view strName)
{
    const std::string_view strLanguage = strName.substr(0, strName.find_first_of("_.@"));
    return strLanguage == "en" || IsSourceLocale(strLanguage);
}

// The name becomes the name of a folder, and comes from the environment.
bool IsName(std::string_view str)
{
    constexpr std::string_view ALLOWED = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_-@";
    return !str.empty() && str.find_first_not_of(ALLOWED) == std::string_view::npos;
}

// language[_territory][.charset][@modifier]. The charset does not matter: all
// catalogues are in UTF-8.
void AddNames(std::string_view strLocale, std::vector<std::string>& aryNames)
{
    const size_t nModifier = std::min(strLocale.find('@'), strLocale.size());
    const std::string strModifier(strLocale.substr(nModifier));
    const std::string_view strFront = strLocale.substr(0, nModifier);
    const std::string strRegion(strFront.substr(0, strFront.find('.')));
    const std::string strLanguage = strRegion.substr(0, strRegion.find('_'));
    for (const std::string& str : {strRegion + strModifier, strRegion, strLanguage + strModifier, strLanguage})
    {
        if (IsName(str) && std::find(aryNames.begin(), aryNames.end(), str) == aryNames.end())
            aryNames.push_back(str);
    }
}

// What the user chose in the player; empty if nothing.
std::string GetLanguageOption()
{
    ILyTools* pTools = GetLyToolsDLL(LY_TOOLS_INTERFACE_VERSION);
    const std::unique_ptr<IOptionsHelper> options(pTools != nullptr ? pTools->CreateOptionsHelper(L"Properties", false)
                                                                    : nullptr);
    if (options == nullptr)
        return {};
    const LyXString strLanguage = options->Get(L"Language", L"", 0, L"", 0);
    std::string str = NarrowUTF8(strLanguage.Get() != nullptr ? strLanguage.Get() : L"");
    LyCom::SysFreeString(strLanguage.m_pText);
    return str;
}
} // namespace

Translator::Translator(std::string strFolder, std::string strLanguages)
    : m_bOwnLanguages(true), m_strFolder(std::move(strFolder)), m_strLanguages(std::move(strLanguages))
{
}

// The variables are those of gettext, save for one thing.
// Deliberate: LANGUAGE counts although no locale is set. Somebody has asked for
// that language, and nobody for "C".
std::string Translator::GetEnvironmentLanguages()
{
    std::string strLocale;
    for (const char* pName : {"LC_ALL", "LC_MESSAGES", "LANG"})
    {
        if (strLocale.empty())
            strLocale = GetVariable(pName);
    }
    if (IsSourceLocale(strLocale))
        return {};
    const std::string strList = GetVariable("LANGUAGE");
    return strList.empty() ? strLocale : strList;
}

std::vector<std::string> Translator::GetCatalogueNames(const std::string& strLanguages)
{
    std::vector<std::string> aryNames;
    std::string_view strRest = strLanguages;
    while (!strRest.empty())
    {
        const std::string_view strLocale = strRest.substr(0, strRest.find(':'));
        if (IsSourceLanguage(strLocale))
            break;
        AddNames(strLocale, aryNames);
        strRest.remove_prefix(std::min(strLocale.size() + 1, strRest.size()));
    }
    return aryNames;
}

std::string Translator::GetDefaultFolder()
{
    static const char s_cHere = 0; // lies in this library, wherever that is
    Dl_info info;
    if (dladdr(&s_cHere, &info) == 0 || info.dli_fname == nullptr)
        return "locale";
    const std::string strLibrary = info.dli_fname;
    const size_t nSlash = strLibrary.rfind('/');
    return (nSlash == std::string::npos ? std::string() : strLibrary.substr(0, nSlash + 1)) + "locale";
}

void Translator::LoadCatalogues()
{
    if (!m_bOwnLanguages)
    {
        m_strFolder = GetDefaultFolder();
        m_strLanguages = GetLanguageOption();
        if (m_strLanguages.empty())
            m_strLanguages = GetEnvironmentLanguages();
    }
    for (const std::string& strName : GetCatalogueNames(m_strLanguages))
    {
        const std::string strPath = m_strFolder + "/" + strName + "/LC_MESSAGES/rondel.mo";
        std::string strReason;
        Catalogue catalogue;
        const Catalogue::LOAD_RESULT eResult = catalogue.Open(strPath, strReason);
        if (eResult == Catalogue::LOADED)
            m_aryCatalogues.push_back(std::move(catalogue));
        else if (eResult == Catalogue::BROKEN)
            fprintf(stderr, "The translations in \"%s\" are not used: %s.\n", strPath.c_str(), strReason.c_str());
    }
}

std::wstring Translator::Find(const wchar_t* pText) const
{
    const std::string strText = NarrowUTF8(pText);
    for (const Catalogue& catalogue : m_aryCatalogues)
    {
        const std::string_view strTranslation = catalogue.Find(strText);
        if (!strTranslation.empty())
            return WidenUTF8(strTranslation);
    }
    return {};
}

// Deliberate: the empty text is never looked up. Its translation is the header
// of the catalogue.
void Translator::Translate(const ILyDllString& strText)
{
    const wchar_t* pText = strText.Get();
    if (pText == nullptr || *pText == 0)
        return;
    try
    {
        std::call_once(m_Once, [this] { LoadCatalogues(); });
        if (m_aryCatalogues.empty())
            return;
        const std::wstring strTranslation = Find(pText);
        if (!strTranslation.empty())
            strText.Set(strTranslation.c_str(), static_cast<int>(strTranslation.size()));
    }
    catch (const std::exception&)
    {
        // Without memory the text stays English.
    }
}
