// The options of all plug-ins and programs of the user: texts by store and key, in one file,
// <config folder>/options.sqlite (see ConfigFolder.h and OptionDatabase.h).
//
// Shape:     a store's name is a key path such as "Software\Lyndle\Tune Hearth\Plugins\Input\CDA". Names of stores and
//            keys are equal if they are so but for the case of A to Z, as users of key paths expect; they are otherwise
//            taken as they are. An empty key is a key. Values are any text, of which nothing is replaced.
// Files:     opened at first use; made, with its folder, at the first Set. Nothing else is ever written.
// Processes: any number use the file at once and see each other's values. Who has to wait waits at most five seconds.
// Errors:    what cannot be read is not there; what cannot be written is refused. Either is told in one sentence on the
//            standard error output, once for each reason. A broken or foreign file is kept aside as
//            options.sqlite.damaged-1, -2 ..., with a sentence, and a fresh one begins. A file that a later version
//            of this program wrote is left as it is.
// Threads:   any.

#pragma once

#include "OptionDatabase.h"
#include <mutex>
#include <optional>
#include <string>
#include <vector>

class OptionStore
{
public:
    OptionStore() = default;
    OptionStore(const OptionStore&) = delete;
    OptionStore& operator=(const OptionStore&) = delete;

    // Null texts name an option that is not there.
    std::optional<std::wstring> Get(const wchar_t* pStore, const wchar_t* pKey);
    bool Set(const wchar_t* pStore, const wchar_t* pKey, const wchar_t* pValue); // a null value is the empty text
    bool Delete(const wchar_t* pStore, const wchar_t* pKey);                     // true if it was there

    struct OPTION
    {
        std::wstring m_strStore;
        std::wstring m_strKey;
        std::wstring m_strValue;
    };
    // Those of one store, or of all for null, ordered by store and key. Nothing if they cannot be read.
    std::optional<std::vector<OPTION>> List(const wchar_t* pStore);

    void Close(); // lets go of the file; the next operation opens it again

private:
    enum SENTENCE : unsigned int
    {
        SENTENCE_ALWAYS = 0, // as often as it happens
        SENTENCE_NO_FOLDER = 1,
        SENTENCE_NOT_READ = 2,
        SENTENCE_NOT_WRITTEN = 4,
        SENTENCE_NEWER = 8,
        SENTENCE_NOT_ASIDE = 16
    };

    template <class OPERATION>
    OPTION_RESULT Run(bool bWrite, OPERATION operation);
    OPTION_RESULT Open(bool bCreate);
    bool KeepAside();
    void Report(OPTION_RESULT result, bool bWrite);
    void Say(SENTENCE sentence, const std::string& strText);

    std::mutex m_Mutex;
    std::optional<OptionDatabase> m_Database; // none before the first use
    unsigned int m_nSaid = 0;                 // of SENTENCE
};
