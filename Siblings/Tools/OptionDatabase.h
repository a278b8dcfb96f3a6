// The file of the option store: one table of store, key and value in an SQLite database.
//
// Format:  SQLite 3 with the application id "Rndl" and the schema version in the user version; store and key compare
//          without the case of A to Z; texts as OptionText.h has them.
// Journal: a rollback journal with full synchronisation. A kill or a loss of power at any moment leaves the old or the
//          new value, whole, and unlike a write-ahead log it needs no memory shared between the processes, so that it
//          works in a home on a network too. Nothing is cached between two operations that another process may have
//          changed: the file's change counter is read each time.
// Errors:  OPTION_RESULT; GetErrorText says more.
// Threads: one at a time; the owner locks.

#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

enum class OPTION_RESULT
{
    Good,
    Absent,  // no such option, or no file at all
    Refused, // not now, or not to this user: locked for too long, read-only, full, unreadable
    Damaged, // broken, or no file of ours
    Newer    // ours, in a form that a later version of this program writes
};

struct STORED_OPTION
{
    std::string m_strStore;
    std::string m_strKey;
    std::string m_strValue;
};

class OptionDatabase
{
public:
    explicit OptionDatabase(std::string strFile);
    ~OptionDatabase();
    OptionDatabase(const OptionDatabase&) = delete;
    OptionDatabase& operator=(const OptionDatabase&) = delete;

    // Opens the file and looks through it. Good: it can be used. With bCreate a file, and in an empty one the table,
    // is made; without, a file that has no options yet is Absent.
    OPTION_RESULT Open(bool bCreate);
    bool GetIsOpen() const { return m_pConnection != nullptr; }
    bool GetHasMoved() const; // the name no longer leads to the file that is open
    void Close();

    OPTION_RESULT Get(const std::string& strStore, const std::string& strKey, std::string& strValue);
    OPTION_RESULT Set(const std::string& strStore, const std::string& strKey, const std::string& strValue);
    OPTION_RESULT Delete(const std::string& strStore, const std::string& strKey);
    // Those of one store, or of all for null, ordered by store and key.
    OPTION_RESULT List(const std::string* pStore, std::vector<STORED_OPTION>& aryOptions);

    const std::string& GetFileName() const { return m_strFile; }
    const std::string& GetErrorText() const { return m_strError; }

private:
    struct CLOSE_CONNECTION
    {
        void operator()(sqlite3* p) const;
    };
    struct END_STATEMENT
    {
        void operator()(sqlite3_stmt* p) const;
    };
    using STATEMENT = std::unique_ptr<sqlite3_stmt, END_STATEMENT>;

    OPTION_RESULT Connect(bool bCreate);
    OPTION_RESULT Examine(bool& bEmpty);
    OPTION_RESULT ReadNumber(const char* pQuery, int64_t& nNumber);
    OPTION_RESULT LookThrough();
    OPTION_RESULT MakeTable();
    OPTION_RESULT Execute(const char* pCommands);
    OPTION_RESULT Prepare(STATEMENT& pStatement, const char* pCommand);
    OPTION_RESULT Change(STATEMENT& pStatement, const char* pCommand, const std::string& strStore,
                         const std::string& strKey, const std::string* pValue);
    OPTION_RESULT GetResult(int nCode); // of a code of SQLite; keeps the text of an error

    std::string m_strFile;
    std::string m_strError; // of the last operation that was not good
    std::unique_ptr<sqlite3, CLOSE_CONNECTION> m_pConnection;
    STATEMENT m_pGet; // made at first use, kept while the file is open
    STATEMENT m_pSet;
    STATEMENT m_pDelete;
};
