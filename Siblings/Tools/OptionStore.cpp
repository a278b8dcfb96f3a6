#include "OptionStore.h"
#include "ConfigFolder.h"
#include "OptionAside.h"
#include "OptionText.h"
#include <cstdio>

namespace
{
const char* const FILE_NAME = "options.sqlite";
constexpr int MOST_ATTEMPTS = 3; // the file was there, was replaced, and was found broken
} // namespace

std::optional<std::wstring> OptionStore::Get(const wchar_t* pStore, const wchar_t* pKey)
{
    if (pStore == nullptr || pKey == nullptr)
        return std::nullopt;
    const std::string strStore = EncodeOptionText(pStore);
    const std::string strKey = EncodeOptionText(pKey);
    std::string strValue;
    const OPTION_RESULT result =
        Run(false, [&](OptionDatabase& database) { return database.Get(strStore, strKey, strValue); });
    return result == OPTION_RESULT::Good ? std::optional(DecodeOptionText(strValue)) : std::nullopt;
}

bool OptionStore::Set(const wchar_t* pStore, const wchar_t* pKey, const wchar_t* pValue)
{
    if (pStore == nullptr || pKey == nullptr)
        return false;
    const std::string strStore = EncodeOptionText(pStore);
    const std::string strKey = EncodeOptionText(pKey);
    const std::string strValue = EncodeOptionText(pValue != nullptr ? pValue : L"");
    return Run(true, [&](OptionDatabase& database) { return database.Set(strStore, strKey, strValue); }) ==
           OPTION_RESULT::Good;
}

bool OptionStore::Delete(const wchar_t* pStore, const wchar_t* pKey)
{
    // What is not there needs no writing, and no file.
    if (!Get(pStore, pKey))
        return false;
    const std::string strStore = EncodeOptionText(pStore);
    const std::string strKey = EncodeOptionText(pKey);
    return Run(true, [&](OptionDatabase& database) { return database.Delete(strStore, strKey); }) ==
           OPTION_RESULT::Good;
}

std::optional<std::vector<OptionStore::OPTION>> OptionStore::List(const wchar_t* pStore)
{
    const std::string strStore = pStore != nullptr ? EncodeOptionText(pStore) : std::string();
    std::vector<STORED_OPTION> aryStored;
    const OPTION_RESULT result = Run(false,
                                     [&](OptionDatabase& database)
                                     {
                                         aryStored.clear();
                                         return database.List(pStore != nullptr ? &strStore : nullptr, aryStored);
                                     });
    if (result != OPTION_RESULT::Good && result != OPTION_RESULT::Absent)
        return std::nullopt;
    std::vector<OPTION> aryOptions;
    aryOptions.reserve(aryStored.size());
    for (const STORED_OPTION& each : aryStored)
        aryOptions.push_back(
            {DecodeOptionText(each.m_strStore), DecodeOptionText(each.m_strKey), DecodeOptionText(each.m_strValue)});
    return aryOptions;
}

void OptionStore::Close()
{
    const std::lock_guard lock(m_Mutex);
    m_Database.reset();
}

template <class OPERATION>
OPTION_RESULT OptionStore::Run(bool bWrite, OPERATION operation)
{
    const std::lock_guard lock(m_Mutex);
    bool bCreate = bWrite;
    OPTION_RESULT result = OPTION_RESULT::Refused;
    for (int nAttempt = 0; nAttempt < MOST_ATTEMPTS; nAttempt++)
    {
        result = Open(bCreate);
        if (result == OPTION_RESULT::Good)
            result = operation(*m_Database);
        const bool bReplaced = result == OPTION_RESULT::Refused && m_Database && m_Database->GetHasMoved();
        if (!bReplaced && result != OPTION_RESULT::Damaged)
            break;
        if (result == OPTION_RESULT::Damaged && !KeepAside())
            return OPTION_RESULT::Refused;
        bCreate = bCreate || result == OPTION_RESULT::Damaged; // a fresh file begins in place of a broken one
    }
    Report(result, bWrite);
    return result;
}

// Has the file open that the name leads to now.
OPTION_RESULT OptionStore::Open(bool bCreate)
{
    if (m_Database && m_Database->GetIsOpen() && !m_Database->GetHasMoved())
        return OPTION_RESULT::Good;
    m_Database.reset();
    const std::string strFolder = GetConfigFolder();
    if (strFolder.empty())
        return OPTION_RESULT::Absent;
    if (bCreate)
        (void)MakeFolder(strFolder); // whoever opens the file finds out
    m_Database.emplace(strFolder + FILE_NAME);
    return m_Database->Open(bCreate);
}

bool OptionStore::KeepAside()
{
    const std::string strFile = m_Database->GetFileName();
    m_Database.reset();
    std::string strKeptAs;
    if (!KeepOptionsAside(strFile, strKeptAs))
    {
        Say(SENTENCE_NOT_ASIDE, "The options file " + strFile + " is broken and cannot be kept aside.");
        return false;
    }
    if (!strKeptAs.empty())
        Say(SENTENCE_ALWAYS, "The options file was broken. It is kept as " + strKeptAs + ", and a fresh one begins.");
    return true;
}

void OptionStore::Report(OPTION_RESULT result, bool bWrite)
{
    if (!m_Database)
    {
        if (bWrite)
            Say(SENTENCE_NO_FOLDER, "Options are not kept, since neither XDG_CONFIG_HOME nor HOME names a folder.");
        return;
    }
    const std::string& strFile = m_Database->GetFileName();
    if (result == OPTION_RESULT::Newer)
        Say(SENTENCE_NEWER,
            "The options file " + strFile + " is from a later version of this program and is not used.");
    if (result != OPTION_RESULT::Refused && result != OPTION_RESULT::Damaged)
        return;
    const std::string& strReason = m_Database->GetErrorText();
    if (bWrite)
        Say(SENTENCE_NOT_WRITTEN, "Options cannot be written to " + strFile + ": " + strReason + ".");
    else
        Say(SENTENCE_NOT_READ, "Options cannot be read from " + strFile + ": " + strReason + ".");
}

void OptionStore::Say(SENTENCE sentence, const std::string& strText)
{
    if ((m_nSaid & sentence) != 0)
        return;
    m_nSaid |= sentence;
    std::fprintf(stderr, "rondel: %s\n", strText.c_str());
}
