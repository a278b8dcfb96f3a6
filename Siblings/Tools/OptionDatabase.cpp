#include "OptionDatabase.h"
#include <cerrno>
#include <cstring>
#include <sqlite3.h>
#include <unistd.h>
#include <utility>

namespace
{
constexpr int BUSY_TIMEOUT_MS = 5000;
constexpr int64_t APPLICATION_ID = 0x526E646C; // "Rndl"
constexpr int64_t SCHEMA_VERSION = 1;
constexpr int PRIMARY_CODE = 0xFF; // of a code of SQLite; the bits above it say more
constexpr int COLUMN_COUNT = 3;

const char* const MAKE_TABLE = "CREATE TABLE options(store TEXT COLLATE NOCASE NOT NULL,"
                               " key TEXT COLLATE NOCASE NOT NULL, value TEXT NOT NULL,"
                               " PRIMARY KEY(store, key)) WITHOUT ROWID;"
                               "PRAGMA application_id = 0x526E646C; PRAGMA user_version = 1;";
const char* const COUNT_COLUMNS =
    "SELECT count(*) FROM pragma_table_info('options') WHERE name IN ('store', 'key', 'value')";
const char* const GET = "SELECT value FROM options WHERE store = ?1 AND key = ?2";
// A value that is there already is not written again.
const char* const SET = "INSERT INTO options(store, key, value) VALUES(?1, ?2, ?3) ON CONFLICT(store, key)"
                        " DO UPDATE SET value = excluded.value WHERE value IS NOT excluded.value";
const char* const DELETE = "DELETE FROM options WHERE store = ?1 AND key = ?2";
const char* const LIST = "SELECT store, key, value FROM options WHERE ?1 IS NULL OR store = ?1 ORDER BY store, key";

// Frees the locks and the texts of a statement that is kept, whichever way its use ends.
class StatementUse
{
public:
    explicit StatementUse(sqlite3_stmt* p) : m_p(p) {}
    ~StatementUse()
    {
        (void)sqlite3_reset(m_p); // repeats the code of the last step
        (void)sqlite3_clear_bindings(m_p);
    }
    StatementUse(const StatementUse&) = delete;
    StatementUse& operator=(const StatementUse&) = delete;

private:
    sqlite3_stmt* m_p;
};

// The text has to live until the statement's use ends.
int Bind(sqlite3_stmt* pStatement, int nParameter, const std::string& str)
{
    return sqlite3_bind_text64(pStatement, nParameter, str.c_str(), str.size(), SQLITE_STATIC, SQLITE_UTF8);
}

std::string GetColumn(sqlite3_stmt* pStatement, int nColumn)
{
    const unsigned char* pText = sqlite3_column_text(pStatement, nColumn);
    const int nBytes = sqlite3_column_bytes(pStatement, nColumn);
    return pText != nullptr ? std::string(reinterpret_cast<const char*>(pText), static_cast<size_t>(nBytes)) : "";
}
} // namespace

void OptionDatabase::CLOSE_CONNECTION::operator()(sqlite3* p) const { (void)sqlite3_close(p); }

void OptionDatabase::END_STATEMENT::operator()(sqlite3_stmt* p) const { (void)sqlite3_finalize(p); }

OptionDatabase::OptionDatabase(std::string strFile) : m_strFile(std::move(strFile)) {}

OptionDatabase::~OptionDatabase() = default;

void OptionDatabase::Close()
{
    m_pGet.reset();
    m_pSet.reset();
    m_pDelete.reset();
    m_pConnection.reset();
}

bool OptionDatabase::GetHasMoved() const
{
    int nMoved = 0;
    return m_pConnection != nullptr &&
           sqlite3_file_control(m_pConnection.get(), "main", SQLITE_FCNTL_HAS_MOVED, &nMoved) == SQLITE_OK &&
           nMoved != 0;
}

OPTION_RESULT OptionDatabase::Open(bool bCreate)
{
    bool bEmpty = false;
    OPTION_RESULT result = Connect(bCreate);
    if (result == OPTION_RESULT::Good)
        result = Examine(bEmpty);
    if (result == OPTION_RESULT::Good && bEmpty)
        result = bCreate ? MakeTable() : OPTION_RESULT::Absent;
    if (result != OPTION_RESULT::Good)
        Close();
    return result;
}

OPTION_RESULT OptionDatabase::Connect(bool bCreate)
{
    Close();
    if (!bCreate && access(m_strFile.c_str(), F_OK) != 0 && errno == ENOENT)
        return OPTION_RESULT::Absent;
    sqlite3* pConnection = nullptr;
    const int nFlags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX | (bCreate ? SQLITE_OPEN_CREATE : 0);
    const int nCode = sqlite3_open_v2(m_strFile.c_str(), &pConnection, nFlags, nullptr);
    m_pConnection.reset(pConnection); // also of a file that did not open, since it holds the error
    if (nCode != SQLITE_OK)
        return GetResult(nCode);
    // The file may come from anybody, so nothing in it is run.
    (void)sqlite3_db_config(pConnection, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    (void)sqlite3_db_config(pConnection, SQLITE_DBCONFIG_ENABLE_TRIGGER, 0, nullptr);
    (void)sqlite3_db_config(pConnection, SQLITE_DBCONFIG_ENABLE_VIEW, 0, nullptr);
    (void)sqlite3_busy_timeout(pConnection, BUSY_TIMEOUT_MS);
    return Execute("PRAGMA synchronous = FULL");
}

// One transaction, so that a table that another process makes meanwhile is seen whole or not at all.
OPTION_RESULT OptionDatabase::Examine(bool& bEmpty)
{
    int64_t nApplication = 0;
    int64_t nVersion = 0;
    int64_t nObjects = 0;
    OPTION_RESULT result = Execute("BEGIN");
    if (result == OPTION_RESULT::Good)
        result = ReadNumber("PRAGMA application_id", nApplication);
    if (result == OPTION_RESULT::Good)
        result = ReadNumber("PRAGMA user_version", nVersion);
    if (result == OPTION_RESULT::Good)
        result = ReadNumber("SELECT count(*) FROM sqlite_master", nObjects);
    if (result != OPTION_RESULT::Good)
        return result;
    bEmpty = nApplication == 0 && nVersion == 0 && nObjects == 0;
    if (!bEmpty && (nApplication != APPLICATION_ID || nVersion < SCHEMA_VERSION))
        return OPTION_RESULT::Damaged;
    if (nVersion > SCHEMA_VERSION)
        return OPTION_RESULT::Newer;
    if (!bEmpty)
        result = LookThrough();
    return result == OPTION_RESULT::Good ? Execute("COMMIT") : result;
}

OPTION_RESULT OptionDatabase::LookThrough()
{
    int64_t nColumns = 0;
    OPTION_RESULT result = ReadNumber(COUNT_COLUMNS, nColumns);
    if (result != OPTION_RESULT::Good)
        return result;
    if (nColumns != COLUMN_COUNT)
        return OPTION_RESULT::Damaged;
    STATEMENT pStatement;
    result = Prepare(pStatement, "PRAGMA quick_check(1)");
    if (result == OPTION_RESULT::Good)
        result = GetResult(sqlite3_step(pStatement.get()));
    if (result == OPTION_RESULT::Good && GetColumn(pStatement.get(), 0) != "ok")
        result = OPTION_RESULT::Damaged;
    return result;
}

OPTION_RESULT OptionDatabase::ReadNumber(const char* pQuery, int64_t& nNumber)
{
    STATEMENT pStatement;
    OPTION_RESULT result = Prepare(pStatement, pQuery);
    if (result == OPTION_RESULT::Good)
        result = GetResult(sqlite3_step(pStatement.get()));
    if (result == OPTION_RESULT::Good)
        nNumber = sqlite3_column_int64(pStatement.get(), 0);
    return result;
}

OPTION_RESULT OptionDatabase::MakeTable()
{
    OPTION_RESULT result = Execute("BEGIN IMMEDIATE");
    int64_t nObjects = 0;
    if (result == OPTION_RESULT::Good)
        result = ReadNumber("SELECT count(*) FROM sqlite_master", nObjects);
    if (result == OPTION_RESULT::Good && nObjects == 0) // otherwise another process was faster
        result = Execute(MAKE_TABLE);
    return result == OPTION_RESULT::Good ? Execute("COMMIT") : result;
}

OPTION_RESULT OptionDatabase::Execute(const char* pCommands)
{
    return GetResult(sqlite3_exec(m_pConnection.get(), pCommands, nullptr, nullptr, nullptr));
}

OPTION_RESULT OptionDatabase::Prepare(STATEMENT& pStatement, const char* pCommand)
{
    if (pStatement != nullptr)
        return OPTION_RESULT::Good;
    sqlite3_stmt* pNew = nullptr;
    const int nCode = sqlite3_prepare_v3(m_pConnection.get(), pCommand, -1, SQLITE_PREPARE_PERSISTENT, &pNew, nullptr);
    pStatement.reset(pNew);
    return GetResult(nCode);
}

OPTION_RESULT OptionDatabase::Get(const std::string& strStore, const std::string& strKey, std::string& strValue)
{
    const OPTION_RESULT result = Prepare(m_pGet, GET);
    if (result != OPTION_RESULT::Good)
        return result;
    const StatementUse use(m_pGet.get());
    int nCode = Bind(m_pGet.get(), 1, strStore);
    if (nCode == SQLITE_OK)
        nCode = Bind(m_pGet.get(), 2, strKey);
    if (nCode == SQLITE_OK)
        nCode = sqlite3_step(m_pGet.get());
    if (nCode == SQLITE_DONE)
        return OPTION_RESULT::Absent;
    if (nCode == SQLITE_ROW)
        strValue = GetColumn(m_pGet.get(), 0);
    return GetResult(nCode);
}

OPTION_RESULT OptionDatabase::Change(STATEMENT& pStatement, const char* pCommand, const std::string& strStore,
                                     const std::string& strKey, const std::string* pValue)
{
    const OPTION_RESULT result = Prepare(pStatement, pCommand);
    if (result != OPTION_RESULT::Good)
        return result;
    const StatementUse use(pStatement.get());
    int nCode = Bind(pStatement.get(), 1, strStore);
    if (nCode == SQLITE_OK)
        nCode = Bind(pStatement.get(), 2, strKey);
    if (nCode == SQLITE_OK && pValue != nullptr)
        nCode = Bind(pStatement.get(), 3, *pValue);
    if (nCode == SQLITE_OK)
        nCode = sqlite3_step(pStatement.get());
    return GetResult(nCode);
}

OPTION_RESULT OptionDatabase::Set(const std::string& strStore, const std::string& strKey, const std::string& strValue)
{
    return Change(m_pSet, SET, strStore, strKey, &strValue);
}

OPTION_RESULT OptionDatabase::Delete(const std::string& strStore, const std::string& strKey)
{
    const OPTION_RESULT result = Change(m_pDelete, DELETE, strStore, strKey, nullptr);
    const bool bNothing = result == OPTION_RESULT::Good && sqlite3_changes(m_pConnection.get()) == 0;
    return bNothing ? OPTION_RESULT::Absent : result;
}

OPTION_RESULT OptionDatabase::List(const std::string* pStore, std::vector<STORED_OPTION>& aryOptions)
{
    STATEMENT pStatement;
    const OPTION_RESULT result = Prepare(pStatement, LIST);
    if (result != OPTION_RESULT::Good)
        return result;
    int nCode = pStore != nullptr ? Bind(pStatement.get(), 1, *pStore) : SQLITE_OK;
    if (nCode == SQLITE_OK)
        nCode = sqlite3_step(pStatement.get());
    for (; nCode == SQLITE_ROW; nCode = sqlite3_step(pStatement.get()))
        aryOptions.push_back(
            {GetColumn(pStatement.get(), 0), GetColumn(pStatement.get(), 1), GetColumn(pStatement.get(), 2)});
    return GetResult(nCode);
}

OPTION_RESULT OptionDatabase::GetResult(int nCode)
{
    const int nPrimary = nCode & PRIMARY_CODE;
    if (nPrimary == SQLITE_OK || nPrimary == SQLITE_ROW || nPrimary == SQLITE_DONE)
        return OPTION_RESULT::Good;
    m_strError = m_pConnection != nullptr ? sqlite3_errmsg(m_pConnection.get()) : sqlite3_errstr(nCode);
    const int nSystem = m_pConnection != nullptr ? sqlite3_system_errno(m_pConnection.get()) : 0;
    if (nPrimary == SQLITE_IOERR || nPrimary == SQLITE_CANTOPEN)
        m_strError += nSystem != 0 ? std::string(" (") + std::strerror(nSystem) + ")" : "";
    return nPrimary == SQLITE_CORRUPT || nPrimary == SQLITE_NOTADB ? OPTION_RESULT::Damaged : OPTION_RESULT::Refused;
}
