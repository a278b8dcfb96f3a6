// The translator: texts of the user interface in the user's language, from
// message catalogues.
//
// A catalogue is the file <folder of this
// library>/locale/<language>/LC_MESSAGES/rondel.mo. The languages are found
// once, at the first text, in the order of wish: the option "Language" of the
// store "Properties"; the list in LANGUAGE; the locale, which is the first of
// LC_ALL, LC_MESSAGES and LANG that is set. "de_AT.UTF-8" asks for "de_AT",
// then "de". A text that one language lacks is looked for in the next one.
// English is the language of the source, and ends the list; with the locale "C"
// or "POSIX" the environment asks for nothing.
//
// Errors:  a catalogue that is not there is passed over; a broken one, too,
// with a sentence on stderr. What no catalogue
//          holds stays as it is.
// Threads: any.

#pragma once

#include "Catalogue.h"
#include "ITranslator.h"
#include <mutex>
#include <string>
#include <vector>

class Translator final : public ITranslator
{
public:
    Translator() = default;
    // Takes its catalogues from another folder, and its languages, a list like
    // that of LANGUAGE, from the caller.
    Translator(std::string strFolder, std::string strLanguages);

    void Translate(const ILyDllString& strText) override;

    // The folder beside this library in which the catalogues stand.
    static std::string GetDefaultFolder();
    // The list of languages that the environment asks for, separated by colons;
    // empty for the source's own.
    static std::string GetEnvironmentLanguages();
    // The names under which the catalogues for such a list may stand, the most
    // wanted first.
    static std::vector<std::string> GetCatalogueNames(const std::string& strLanguages);

private:
    void LoadCatalogues();
    std::wstring Find(const wchar_t* pText) const;

    bool m_bOwnLanguages = false; // the caller said which
    std::string m_strFolder;
    std::string m_strLanguages;
    std::once_flag m_Once;
    std::vector<Catalogue> m_aryCatalogues; // filled once; read only after that
};
