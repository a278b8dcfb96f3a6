#include "ReportJson.h"
#include "CRC32.h"
#include "LogSeal.h"
#include "ReportFields.h"
#include "ReportPacking.h"
#include <cmath>
#include <nlohmann/json.hpp>

namespace
{
using json = nlohmann::ordered_json;

json MakeReal(double f)
{
    if (std::isnan(f))
        return "nan";
    if (std::isinf(f))
        return f < 0 ? "-inf" : "inf";
    return f;
}

// Long rows as texts, in the order of the document. They are put in behind the JSON writer, which looks at every
// character of a text and would take longer for these than for all else together.
struct ROWS_TEXT
{
    const char* pKey;
    std::string strText;
};

// Each text where the writer has left an empty one under its key. Nothing else looks like that: the writer escapes the
// quotation marks within texts.
std::string PutRowsIn(const std::string& strJson, const std::vector<ROWS_TEXT>& aryRows)
{
    size_t nSize = strJson.size() + LOG_SEAL_BYTES; // the state is long: it is made where it stays
    for (const ROWS_TEXT& rows : aryRows)
        nSize += rows.strText.size();
    std::string strResult;
    strResult.reserve(nSize);
    size_t nPlace = 0;
    for (const ROWS_TEXT& rows : aryRows)
    {
        const std::string strEmpty = std::string("\"").append(rows.pKey).append("\":\"\"");
        const size_t nBehindMark = strJson.find(strEmpty, nPlace) + strEmpty.size() - 1;
        strResult.append(strJson, nPlace, nBehindMark - nPlace).append(rows.strText);
        nPlace = nBehindMark;
    }
    strResult.append(strJson, nPlace);
    return strResult;
}

// Makes the object of one record.
class ReportWriter
{
public:
    template <class T>
    using Ref = const T&;

    // With pRows it is a state's record, with series; a log's without.
    explicit ReportWriter(std::vector<ROWS_TEXT>* pRows) : m_pRows(pRows) {}
    json&& Take() { return std::move(m_value); }

    void Text(const char* pKey, const std::string& str) { m_value[pKey] = str; }
    void Flag(const char* pKey, bool b) { m_value[pKey] = b; }
    void Number(const char* pKey, long long n) { m_value[pKey] = n; }
    void Sector(const char* pKey, int n) { m_value[pKey] = n; }
    void Length(const char* pKey, int n) { m_value[pKey] = n; }
    void Real(const char* pKey, double f) { m_value[pKey] = MakeReal(f); }
    void OptionalReal(const char* pKey, std::optional<double> f) { m_value[pKey] = f ? MakeReal(*f) : json(); }
    void OptionalNumber(const char* pKey, std::optional<int> n) { m_value[pKey] = n ? json(*n) : json(); }
    template <class T>
    void Derived(const char* pKey, T value)
    {
        m_value[pKey] = value;
    }

    void Sum(const char* pKey, uint32_t n) { m_value[pKey] = n != 0 ? json(MakeCRC32Text(n)) : json(); }

    template <class T, class NAMES>
    void Choice(const char* pKey, T value, const NAMES& aryNames)
    {
        const size_t n = static_cast<size_t>(value);
        m_value[pKey] = n < aryNames.size() ? json(aryNames[n]) : json();
    }

    template <class RECORD>
    void Record(const char* pKey, const RECORD& record)
    {
        m_value[pKey] = Make(record);
    }
    template <class RECORD>
    void OptionalRecord(const char* pKey, const std::optional<RECORD>& record)
    {
        m_value[pKey] = record ? Make(*record) : json();
    }
    template <class RECORD>
    void Series(const char* pKey, const RECORD& record)
    {
        if (m_pRows != nullptr)
            Record(pKey, record);
    }

    template <class RECORD>
    void List(const char* pKey, const std::vector<RECORD>& aryRecords, size_t = 0)
    {
        json& list = m_value[pKey] = json::array();
        for (const RECORD& record : aryRecords)
            list.push_back(Make(record));
    }
    void Texts(const char* pKey, const std::vector<std::string>& aryTexts) { m_value[pKey] = aryTexts; }
    void StateTexts(const char* pKey, const std::vector<std::string>& aryTexts)
    {
        if (m_pRows != nullptr)
            Texts(pKey, aryTexts);
    }
    void Reals(const char* pKey, const std::vector<double>& aryValues)
    {
        json& list = m_value[pKey] = json::array();
        for (const double f : aryValues)
            list.push_back(MakeReal(f));
    }
    template <class ROW>
    void Rows(const char* pKey, const std::vector<ROW>& aryRows) // of series
    {
        m_value[pKey] = "";
        m_pRows->push_back({pKey, PackRows(aryRows)});
    }

private:
    template <class RECORD>
    json Make(const RECORD& record) const
    {
        ReportWriter writer(m_pRows);
        Fields(writer, record);
        return writer.Take();
    }

    json m_value = json::object();
    std::vector<ROWS_TEXT>* m_pRows;
};

constexpr int INDENT = 2;
constexpr int ONE_LINE = -1; // without blanks

std::string MakeJson(const RIP_REPORT& report, std::vector<ROWS_TEXT>* pRows, int nIndent)
{
    ReportWriter writer(pRows);
    writer.Text(REPORT_FORMAT_KEY, REPORT_FORMAT);
    writer.Number(REPORT_VERSION_KEY, REPORT_VERSION);
    Fields(writer, report);
    return writer.Take().dump(nIndent, ' ', false, json::error_handler_t::replace);
}
} // namespace

std::string MakeJsonLog(const RIP_REPORT& report) { return SealJsonLog(MakeJson(report, nullptr, INDENT)); }

// Not for people, and written often.
std::string MakeStateText(const RIP_REPORT& report)
{
    std::vector<ROWS_TEXT> aryRows;
    const std::string strJson = MakeJson(report, &aryRows, ONE_LINE);
    return SealJsonLog(PutRowsIn(strJson, aryRows));
}
