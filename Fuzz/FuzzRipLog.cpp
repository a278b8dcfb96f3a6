// Any bytes as a log of a rip, text or JSON: read, checked against an empty folder, and, where they are a report,
// written again in all three forms, which must tell the same.

#include "FuzzCheck.h"
#include "HostError.h"
#include "LogCheck.h"
#include "LogEscapes.h"
#include "ReportJson.h"
#include "ReportText.h"
#include <cstdlib>
#include <unistd.h>

// Gone with the program.
static const std::string& GetEmptyFolder()
{
    static const std::string s_strFolder = []
    {
        char aryName[] = "/tmp/RondelFuzz.XXXXXX";
        Check(mkdtemp(aryName) != nullptr);
        return std::string(aryName);
    }();
    static const int s_nRegistered = std::atexit([] { (void)rmdir(GetEmptyFolder().c_str()); });
    (void)s_nRegistered;
    return s_strFolder;
}

static void CheckFiles(const LOG_CONTENT& content)
{
    for (const LOG_FILE& file : content.aryFiles)
    {
        Check(UnescapeLine(EscapeForLine(file.strName)) == file.strName);
        const LOG_FILE_VERDICT verdict = CheckLogFile(GetEmptyFolder(), file);
        Check(verdict.eState != LOG_FILE_RIGHT && verdict.eState != LOG_FILE_CHANGED);
        Check(verdict.eState == LOG_FILE_NOT_MADE || file.strSHA256.size() == 64);
    }
}

static void CheckLogs(const RIP_REPORT& report)
{
    const std::string strState = MakeStateText(report);
    Check(MakeStateText(ReadReport(strState)) == strState);
    const LOG_CONTENT text = ReadLog(MakeTextLog(report));
    const LOG_CONTENT json = ReadLog(MakeJsonLog(report));
    Check(text.eKind == LOG_TEXT && json.eKind == LOG_JSON);
    Check(text.eSeal == LOG_SEAL_RIGHT && json.eSeal == LOG_SEAL_RIGHT);
    Check(text.strFault == json.strFault && text.aryFiles.size() == json.aryFiles.size());
    for (size_t n = 0; n < text.aryFiles.size(); ++n)
    {
        const LOG_FILE& a = text.aryFiles[n];
        const LOG_FILE& b = json.aryFiles[n];
        Check(a.strName == b.strName && a.nBytes == b.nBytes && a.strSHA256 == b.strSHA256);
        Check(a.strError == b.strError);
    }
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nBytes)
{
    const std::string strLog(reinterpret_cast<const char*>(pData), nBytes);
    CheckFiles(ReadLog(strLog));
    if (const auto str = UnescapeLine(strLog))
        Check(EscapeForLine(*str) == strLog);
    try
    {
        CheckLogs(ReadUnsealedReport(strLog));
    }
    catch (const HostError&)
    {
    }
    return 0;
}
