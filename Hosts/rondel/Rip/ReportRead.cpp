#include "HostError.h"
#include "LogSeal.h"
#include "ReportFields.h"
#include "ReportJson.h"
#include "ReportPacking.h"
#include <algorithm>
#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>

namespace
{
// With members in the order of their names: looking one up takes a few steps, however many a hostile text has.
using json = nlohmann::json;

constexpr int MAX_DEPTH = 16; // a report has half of it
constexpr size_t SUM_DIGITS = 8;

[[noreturn]] void Fail(const std::string& strFault)
{
    throw HostError("the log of the rip cannot be used: " + strFault + "; take another copy of it, or rip anew.");
}

// Takes one record from its object.
class ReportReader
{
public:
    template <class T>
    using Ref = T&;

    // strPlace ends with a point, or is empty.
    ReportReader(const json& value, std::string strPlace) : m_value(value), m_strPlace(std::move(strPlace))
    {
        if (!m_value.is_object())
            FailAt(m_strPlace.empty() ? "it" : m_strPlace.substr(0, m_strPlace.size() - 1), "is no object");
    }

    void Text(const char* pKey, std::string& str)
    {
        const json& value = Get(pKey);
        Require(value.is_string(), pKey, "is no text");
        str = value.get_ref<const std::string&>();
    }
    void Flag(const char* pKey, bool& b)
    {
        const json& value = Get(pKey);
        Require(value.is_boolean(), pKey, "is neither true nor false");
        b = value.get<bool>();
    }
    template <class INTEGER>
    void Number(const char* pKey, INTEGER& n)
    {
        constexpr bool bSize = sizeof n > sizeof(int); // of a file
        n = TakeNumber(Get(pKey), pKey, bSize ? 0 : std::numeric_limits<INTEGER>::min(),
                       std::numeric_limits<INTEGER>::max());
    }
    void Sector(const char* pKey, int& n) { n = TakeNumber(Get(pKey), pKey, -REPORT_MAX_SECTOR, REPORT_MAX_SECTOR); }
    void Length(const char* pKey, int& n) { n = TakeNumber(Get(pKey), pKey, 0, REPORT_MAX_SECTOR); }
    void Real(const char* pKey, double& f) { f = TakeReal(Get(pKey), pKey); }
    void OptionalReal(const char* pKey, std::optional<double>& f)
    {
        f.reset();
        if (!Get(pKey).is_null())
            Real(pKey, f.emplace());
    }
    void OptionalNumber(const char* pKey, std::optional<int>& n)
    {
        n.reset();
        if (!Get(pKey).is_null())
            Number(pKey, n.emplace());
    }
    template <class T>
    void Derived(const char*, T) // follows from the others
    {
    }

    void Sum(const char* pKey, uint32_t& n)
    {
        n = 0;
        if (Get(pKey).is_null())
            return;
        std::string strDigits;
        Text(pKey, strDigits);
        Require(strDigits.size() == SUM_DIGITS && strDigits.find_first_not_of("0123456789ABCDEF") == std::string::npos,
                pKey, "is no sum of eight hexadecimal digits");
        n = static_cast<uint32_t>(std::stoul(strDigits, nullptr, 16));
    }

    template <class T, class NAMES>
    void Choice(const char* pKey, T& value, const NAMES& aryNames)
    {
        std::string strName;
        Text(pKey, strName);
        const auto it = std::find(aryNames.begin(), aryNames.end(), strName);
        Require(it != aryNames.end(), pKey, "has a name that is not known");
        value = static_cast<T>(it - aryNames.begin());
    }

    template <class RECORD>
    void Record(const char* pKey, RECORD& record)
    {
        ReportReader reader(Get(pKey), m_strPlace + pKey + ".");
        Fields(reader, record);
    }
    template <class RECORD>
    void OptionalRecord(const char* pKey, std::optional<RECORD>& record)
    {
        record.reset();
        if (!Get(pKey).is_null())
            Record(pKey, record.emplace());
    }
    template <class RECORD>
    void Series(const char* pKey, RECORD& record) // logs are without
    {
        if (m_value.contains(pKey))
            Record(pKey, record);
    }

    template <class RECORD>
    void List(const char* pKey, std::vector<RECORD>& aryRecords, size_t nMost = std::numeric_limits<size_t>::max())
    {
        const json& list = GetList(pKey);
        Require(list.size() <= nMost, pKey, "has too many entries");
        aryRecords.clear();
        for (const json& value : list)
        {
            ReportReader reader(value, m_strPlace + pKey + "[" + std::to_string(aryRecords.size()) + "].");
            Fields(reader, aryRecords.emplace_back());
        }
    }
    void Texts(const char* pKey, std::vector<std::string>& aryTexts)
    {
        aryTexts.clear();
        for (const json& value : GetList(pKey))
        {
            Require(value.is_string(), pKey, "holds something that is no text");
            aryTexts.push_back(value.get_ref<const std::string&>());
        }
    }
    void StateTexts(const char* pKey, std::vector<std::string>& aryTexts) // logs are without
    {
        if (m_value.contains(pKey))
            Texts(pKey, aryTexts);
    }
    void Reals(const char* pKey, std::vector<double>& aryValues)
    {
        aryValues.clear();
        for (const json& value : GetList(pKey))
            aryValues.push_back(TakeReal(value, pKey));
    }
    template <class ROW>
    void Rows(const char* pKey, std::vector<ROW>& aryRows)
    {
        const json& value = Get(pKey);
        Require(value.is_string(), pKey, "is no text");
        Require(UnpackRows(value.get_ref<const std::string&>(), aryRows), pKey, "is not made of whole rows");
    }

private:
    [[noreturn]] static void FailAt(const std::string& strWhere, const char* pFault) { Fail(strWhere + " " + pFault); }
    void Require(bool bHolds, const char* pKey, const char* pFault) const
    {
        if (!bHolds)
            FailAt("\"" + m_strPlace + pKey + "\"", pFault);
    }
    const json& Get(const char* pKey) const
    {
        const auto it = m_value.find(pKey);
        Require(it != m_value.end(), pKey, "is missing");
        return *it;
    }
    const json& GetList(const char* pKey) const
    {
        const json& value = Get(pKey);
        Require(value.is_array(), pKey, "is no list");
        return value;
    }
    template <class INTEGER>
    INTEGER TakeNumber(const json& value, const char* pKey, INTEGER nLow, INTEGER nHigh) const
    {
        constexpr uint64_t MOST = std::numeric_limits<int64_t>::max();
        Require(value.is_number_integer(), pKey, "is no whole number");
        Require(!value.is_number_unsigned() || value.get<uint64_t>() <= MOST, pKey, "is out of range");
        const int64_t n = value.get<int64_t>();
        Require(n >= nLow && n <= nHigh, pKey, "is out of range");
        return static_cast<INTEGER>(n);
    }
    double TakeReal(const json& value, const char* pKey) const
    {
        if (value.is_string())
        {
            const std::string& str = value.get_ref<const std::string&>();
            if (str == "nan")
                return std::numeric_limits<double>::quiet_NaN();
            if (str == "-inf" || str == "inf")
                return (str == "inf" ? 1 : -1) * std::numeric_limits<double>::infinity();
        }
        Require(value.is_number(), pKey, "is no number");
        return value.get<double>();
    }
    const json& m_value;
    std::string m_strPlace;
};

json Parse(const std::string& strJson)
{
    const auto LimitDepth = [](int nDepth, json::parse_event_t, json&)
    {
        if (nDepth > MAX_DEPTH)
            Fail("it is nested too deeply");
        return true;
    };
    try
    {
        return json::parse(strJson, LimitDepth);
    }
    catch (const json::parse_error& error)
    {
        Fail("it is no JSON from byte " + std::to_string(error.byte) + " on");
    }
    catch (const json::exception&) // a number beyond all numbers
    {
        Fail("it has a number that nothing can hold");
    }
}
} // namespace

RIP_REPORT ReadUnsealedReport(const std::string& strJson)
{
    const json value = Parse(strJson);
    ReportReader reader(value, "");
    std::string strFormat;
    int nVersion = 0;
    reader.Text(REPORT_FORMAT_KEY, strFormat);
    if (strFormat != REPORT_FORMAT)
        Fail("it is of another kind");
    reader.Number(REPORT_VERSION_KEY, nVersion);
    if (nVersion != REPORT_VERSION)
        Fail("it is of version " + std::to_string(nVersion) + ", and only " + std::to_string(REPORT_VERSION) +
             " is known");
    RIP_REPORT report;
    Fields(reader, report);
    return report;
}

RIP_REPORT ReadReport(const std::string& strJson)
{
    const LOG_SEAL_STATE eSeal = CheckSeal(strJson);
    if (eSeal == LOG_SEAL_MISSING)
        Fail("its end is missing");
    if (eSeal == LOG_SEAL_WRONG)
        Fail("it has changed since it was written");
    return ReadUnsealedReport(strJson);
}
