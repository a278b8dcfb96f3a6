// rondel check: whether a log of a rip is as it was written, and the files are as it says.

#include "Commands.h"
#include "LogCheck.h"
#include "LogEscapes.h"
#include "Output.h"
#include <cstdio>
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>

namespace
{
using json = nlohmann::ordered_json;

constexpr const char* KIND_NAMES[] = {"text", "json"};
constexpr const char* SEAL_NAMES[] = {"right", "wrong", "missing"};
constexpr const char* SEAL_TEXTS[] = {"the seal is right",
                                      "the SEAL IS WRONG: the log has changed since it was written",
                                      "the SEAL IS MISSING: the log was cut or written to, or is none"};
constexpr const char* STATE_NAMES[] = {"right", "not_made", "changed", "missing", "outside", "unreadable"};
constexpr const char* STATE_TEXTS[] = {"right",     "not made, as the log says", "CHANGED", "MISSING", "OUTSIDE",
                                       "UNREADABLE"};

struct CHECK_OPTIONS
{
    std::string strLog;
    bool bJson = false;
};

struct CHECK_RESULT
{
    LOG_CONTENT content;
    std::vector<LOG_FILE_VERDICT> aryVerdicts; // of the files of the log
    int nFaults = 0;
};

CHECK_RESULT Check(const std::string& strLog)
{
    CHECK_RESULT result;
    result.content = ReadLog(LoadLog(strLog));
    std::error_code error; // the log may be gone by now: then its files are found missing
    const std::string strFolder = std::filesystem::canonical(strLog, error).parent_path().string();
    result.nFaults = result.content.eSeal != LOG_SEAL_RIGHT ? 1 : 0;
    result.nFaults += result.content.strFault.empty() ? 0 : 1;
    for (const LOG_FILE& file : result.content.aryFiles)
        result.nFaults += result.aryVerdicts.emplace_back(CheckLogFile(strFolder, file)).IsFault() ? 1 : 0;
    return result;
}

void PrintResultAsJson(const std::string& strLog, const CHECK_RESULT& result)
{
    json files = json::array();
    for (size_t n = 0; n < result.aryVerdicts.size(); ++n)
    {
        const LOG_FILE_VERDICT& verdict = result.aryVerdicts[n];
        files.push_back({{"name", result.content.aryFiles[n].strName},
                         {"state", STATE_NAMES[verdict.eState]},
                         {"detail", verdict.strDetail}});
    }
    PrintJson({{"log", strLog},
               {"kind", KIND_NAMES[result.content.eKind]},
               {"seal", SEAL_NAMES[result.content.eSeal]},
               {"fault", result.content.strFault},
               {"files", files},
               {"right", result.nFaults == 0}});
}

void PrintResult(const std::string& strLog, const CHECK_RESULT& result)
{
    std::printf("%s: %s\n", EscapeForLine(strLog).c_str(), SEAL_TEXTS[result.content.eSeal]);
    for (size_t n = 0; n < result.aryVerdicts.size(); ++n)
    {
        const LOG_FILE_VERDICT& verdict = result.aryVerdicts[n];
        std::printf("%s: %s", EscapeForLine(result.content.aryFiles[n].strName).c_str(), STATE_TEXTS[verdict.eState]);
        std::puts(verdict.strDetail.empty() ? "" : (" (" + EscapeForLine(verdict.strDetail) + ")").c_str());
    }
    if (!result.content.strFault.empty())
        std::puts(result.content.strFault.c_str());
    if (result.nFaults == 0)
        std::printf("All is right: the log, and %zu files.\n", result.aryVerdicts.size());
    else
        std::printf("NOT all is right; faults: %d.\n", result.nFaults);
}
} // namespace

void AddCheckCommand(CLI::App& app, int& nExitCode)
{
    auto pOptions = std::make_shared<CHECK_OPTIONS>();
    CLI::App* pCommand = app.add_subcommand("check", "Verifies the log of a rip and the files that it names.");
    pCommand->add_option("LOG", pOptions->strLog, "a text or JSON log that a rip has written")
        ->required()
        ->check(CheckFileName);
    pCommand->add_flag("--json", pOptions->bJson, "print JSON for programs");
    pCommand->callback(
        [pOptions, &nExitCode]
        {
            const CHECK_RESULT result = Check(pOptions->strLog);
            if (pOptions->bJson)
                PrintResultAsJson(pOptions->strLog, result);
            else
                PrintResult(pOptions->strLog, result);
            CheckOutput();
            nExitCode = result.nFaults == 0 ? EXIT_DONE : EXIT_FAILED;
        });
}
