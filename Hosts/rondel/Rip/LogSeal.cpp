#include "LogSeal.h"
#include "SecureHash.h"
#include <algorithm>
#include <cstdint>
#include <utility>

namespace
{
constexpr std::string_view TEXT_BEFORE = "Seal: SHA-256 ";
constexpr std::string_view TEXT_BEHIND = "\n";
constexpr std::string_view JSON_BEFORE = "  \"seal\": \"SHA-256 ";
constexpr std::string_view JSON_BEHIND = "\"\n}\n";
constexpr std::string_view BLANKS = " \t\r\n";
constexpr size_t DIGITS = 2 * std::tuple_size_v<SHA256Hash::DIGEST>;

std::string MakeDigits(std::string_view str)
{
    const SHA256Hash::DIGEST digest = SHA256Hash::Make(str.data(), str.size());
    return MakeHexText(digest.data(), digest.size());
}

std::string Seal(std::string strLog, std::string_view before, std::string_view behind)
{
    const std::string strDigits = MakeDigits(strLog);
    strLog.append(before).append(strDigits).append(behind);
    return strLog;
}

// Both kinds keep to one form, to the byte: a seal that is only nearly one could hide a change in itself.
LOG_SEAL_STATE Check(std::string_view strLog, std::string_view before, std::string_view behind)
{
    const size_t nSeal = before.size() + DIGITS + behind.size();
    if (strLog.size() < nSeal || !strLog.ends_with(behind))
        return LOG_SEAL_MISSING;
    const std::string_view ahead = strLog.substr(0, strLog.size() - nSeal);
    const std::string_view seal = strLog.substr(ahead.size());
    if (!seal.starts_with(before) || (!ahead.empty() && ahead.back() != '\n'))
        return LOG_SEAL_MISSING;
    return seal.substr(before.size(), DIGITS) == MakeDigits(ahead) ? LOG_SEAL_RIGHT : LOG_SEAL_WRONG;
}
} // namespace

LOG_KIND GetLogKind(std::string_view strLog) { return strLog.starts_with('{') ? LOG_JSON : LOG_TEXT; }

LOG_SEAL_STATE CheckSeal(std::string_view strLog)
{
    return GetLogKind(strLog) == LOG_JSON ? Check(strLog, JSON_BEFORE, JSON_BEHIND)
                                          : Check(strLog, TEXT_BEFORE, TEXT_BEHIND);
}

std::string SealTextLog(std::string strLog) { return Seal(std::move(strLog), TEXT_BEFORE, TEXT_BEHIND); }

std::string SealJsonLog(std::string strLog)
{
    strLog.resize(std::min(strLog.rfind('}'), strLog.size()));
    strLog.resize(strLog.find_last_not_of(BLANKS) + 1);
    return Seal(std::move(strLog.append(",\n")), JSON_BEFORE, JSON_BEHIND);
}
