#include "LogCheck.h"
#include "HostError.h"
#include "LogEscapes.h"
#include "ReportJson.h"
#include "ReportTextDetails.h"
#include <algorithm>
#include <charconv>
#include <map>
#include <optional>

namespace
{
constexpr size_t SHA256_DIGITS = 64;
constexpr size_t CRC32_DIGITS = 8;

bool IsSum(const std::string& str, size_t nDigits, const char* pDigits)
{
    return str.size() == nDigits && str.find_first_not_of(pDigits) == std::string::npos;
}

bool HasSum(const LOG_FILE& file)
{
    const bool bSHA256 = IsSum(file.strSHA256, SHA256_DIGITS, "0123456789abcdef");
    const bool bCRC32 = IsSum(file.strCRC32, CRC32_DIGITS, "0123456789ABCDEF");
    return (bSHA256 || bCRC32) && (bSHA256 || file.strSHA256.empty()) && (bCRC32 || file.strCRC32.empty());
}

bool IsComplete(const LOG_FILE& file)
{
    return !file.strName.empty() && (!file.strError.empty() || (file.nBytes >= 0 && HasSum(file)));
}

// Gathers the files, each name once: however often a log names a file, it is read once.
class Files
{
public:
    explicit Files(LOG_CONTENT& content) : m_Content(content) {}

    void Add(LOG_FILE file)
    {
        if (!IsComplete(file))
            return Complain("of \"" + EscapeForLine(file.strName) + "\" it does not tell name, size and sum");
        if (!file.strError.empty()) // there is nothing else to tell of it
            file = {file.strName, 0, "", "", file.strError};
        const auto [it, bNew] = m_Places.try_emplace(file.strName, m_Content.aryFiles.size());
        if (bNew)
            return m_Content.aryFiles.push_back(std::move(file));
        const LOG_FILE& first = m_Content.aryFiles[it->second];
        if (first.nBytes != file.nBytes || first.strSHA256 != file.strSHA256 || first.strCRC32 != file.strCRC32 ||
            first.strError != file.strError)
            Complain("it tells two things of \"" + EscapeForLine(file.strName) + "\"");
    }
    void Complain(const std::string& strFault)
    {
        if (m_Content.strFault.empty())
            m_Content.strFault = "the log cannot be read in full: " + strFault + "; take another copy of it.";
    }

private:
    LOG_CONTENT& m_Content;
    std::map<std::string, size_t> m_Places;
};

// Reads the lines of a text log that are about files.
class TextLogReader
{
public:
    explicit TextLogReader(Files& files) : m_files(files) {}

    void Read(std::string_view log)
    {
        while (!log.empty())
        {
            const size_t nEnd = std::min(log.find('\n'), log.size());
            TakeLine(log.substr(0, nEnd));
            log.remove_prefix(std::min(nEnd + 1, log.size()));
        }
        Finish();
    }

private:
    void TakeLine(std::string_view line)
    {
        if (line.empty())
            Finish();
        else if (const auto name = TakeLabel(line, TEXT_LABEL_FILE))
            Start(*name);
        else if (m_bInFile)
            TakeValue(line);
    }

    static std::optional<std::string_view> TakeLabel(std::string_view line, const char* pLabel)
    {
        const std::string strLabel = MakeLabel(pLabel);
        if (!line.starts_with(strLabel))
            return std::nullopt;
        return line.substr(strLabel.size());
    }

    void Start(std::string_view name)
    {
        Finish();
        const std::optional<std::string> strName = UnescapeLine(name);
        if (!strName)
            return m_files.Complain("a file has a name that no log writes");
        m_file = LOG_FILE();
        m_file.strName = *strName;
        m_file.nBytes = -1; // not told yet
        m_bInFile = true;
    }

    void TakeValue(std::string_view line)
    {
        if (const auto size = TakeLabel(line, TEXT_LABEL_SIZE))
        {
            const char* pEnd = size->data() + size->size();
            const std::from_chars_result result = std::from_chars(size->data(), pEnd, m_file.nBytes);
            if (result.ec != std::errc() || std::string_view(result.ptr, pEnd) != TEXT_UNIT_SIZE)
                m_file.nBytes = -1;
        }
        else if (const auto sum = TakeLabel(line, TEXT_LABEL_SHA256))
            m_file.strSHA256 = *sum;
        else if (const auto crc = TakeLabel(line, TEXT_LABEL_CRC32))
            m_file.strCRC32 = *crc;
        else if (const auto error = TakeLabel(line, TEXT_LABEL_NOT_MADE))
        {
            m_file.strError = UnescapeLine(*error).value_or("");
            m_file.nBytes = 0;
        }
    }

    void Finish()
    {
        if (m_bInFile)
            m_files.Add(std::move(m_file));
        m_bInFile = false;
    }

    Files& m_files;
    LOG_FILE m_file; // whose lines come
    bool m_bInFile = false;
};

void ReadJsonLog(const std::string& strLog, LOG_CONTENT& content, Files& files)
{
    try
    {
        const RIP_REPORT report = ReadUnsealedReport(strLog);
        const auto AddAll = [&files](const std::vector<RIP_FILE>& aryFiles)
        {
            for (const RIP_FILE& file : aryFiles)
                files.Add({file.strName, file.nBytes, file.strSHA256, file.strCRC32, file.strError});
        };
        for (const RIP_PIECE& piece : report.aryPieces)
            AddAll(piece.aryFiles);
        AddAll(report.aryFiles);
    }
    catch (const HostError& error)
    {
        content.strFault = error.what();
    }
}
} // namespace

LOG_CONTENT ReadLog(const std::string& strLog)
{
    LOG_CONTENT content;
    content.eKind = GetLogKind(strLog);
    content.eSeal = CheckSeal(strLog);
    Files files(content);
    if (content.eKind == LOG_JSON)
        ReadJsonLog(strLog, content, files);
    else
        TextLogReader(files).Read(strLog);
    return content;
}
