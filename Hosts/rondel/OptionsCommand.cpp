// rondel options: what the player's option store holds.

#include "Commands.h"
#include "HostError.h"
#include "OptionsHelper.h"
#include "Output.h"
#include "Services.h"
#include "Text.h"
#include <cctype>
#include <cstdio>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string_view>
#include <strings.h>

namespace
{
using json = nlohmann::ordered_json;

struct OPTIONS_OPTIONS
{
    std::string strStore;
    std::string strKey;
    std::string strValue;
    bool bJson = false;
};

constexpr const char* FOOTER =
    "What is read from there, besides the remembered drives in \"CD Reader\":\n"
    "  \"Software\\Lyndle\\Tune Hearth\\Plugins\\Input\\CDA\"  ReadSpeed, UseJitterCorrection\n"
    "  \"Disc Service\"  \"Letter D\" and so on: the disc image that has this letter\n"
    "                  \"Read Offset <vendor> <model>\": sample frames by which that drive's audio is put right\n"
    "                  \"Over-Read <vendor> <model>\": true if that drive reads beyond the ends of a disc\n"
    "  \"Properties\"    \"File Location - Temp Location\"";

void List(const OPTIONS_OPTIONS& options)
{
    const std::vector<LISTED_OPTION> aryOptions = ListOptions(options.strStore);
    if (options.bJson)
    {
        json list = json::object();
        for (const LISTED_OPTION& option : aryOptions)
            list[option.strStore][option.strKey] = option.strValue;
        PrintJson(list);
        return;
    }
    std::string strStore;
    for (const LISTED_OPTION& option : aryOptions)
    {
        if (option.strStore != strStore)
            std::printf("%s\n", option.strStore.c_str());
        strStore = option.strStore;
        std::printf("  %s = %s\n", option.strKey.c_str(), option.strValue.c_str());
    }
    if (aryOptions.empty())
        std::puts("No option is set; everything goes by its default.");
}

void Get(const OPTIONS_OPTIONS& options)
{
    RequireTools();
    // No value that somebody sets holds this character.
    const LyString strUnset(L"\x1");
    const LyString strValue = COptionsHelper(Widen(options.strStore), false).Get(Widen(options.strKey), strUnset);
    if (strValue == strUnset)
        throw HostError("there is no option \"" + options.strKey + "\" in \"" + options.strStore +
                        "\"; 'rondel options list' shows what there is.");
    std::puts(Narrow(strValue).c_str());
}

bool IsImageOfLetter(const OPTIONS_OPTIONS& options)
{
    constexpr size_t LETTER_AT = std::string_view("Letter ").size();
    const std::string& strKey = options.strKey;
    return strcasecmp(options.strStore.c_str(), "Disc Service") == 0 && strKey.size() == LETTER_AT + 1 &&
           strncasecmp(strKey.c_str(), "Letter ", LETTER_AT) == 0 && isalpha(static_cast<unsigned char>(strKey.back()));
}

// A path that only this folder knows would be another image's, or none, wherever else the letter is used.
std::string MakeValue(const OPTIONS_OPTIONS& options)
{
    const std::string& strValue = options.strValue;
    const bool bLetter = strValue.size() == 2 && strValue[1] == ':';
    if (!IsImageOfLetter(options) || strValue.empty() || bLetter || strValue.starts_with("file:"))
        return strValue;
    std::error_code error;
    std::string strPath = std::filesystem::absolute(strValue, error).string();
    if (error)
        throw HostError(strValue + " cannot be found from here (" + error.message() +
                        "); name it with its whole path.");
    return strPath;
}

void Set(const OPTIONS_OPTIONS& options)
{
    RequireTools();
    if (options.strStore.empty() || options.strKey.empty())
        throw HostError("an option has a store and a name of its own that are not empty; give both.");
    const LyString strKey = Widen(options.strKey);
    if (!COptionsHelper(Widen(options.strStore), true).Set(strKey, Widen(MakeValue(options)), 0, nullptr, 0))
        throw HostError("the option could not be stored; see what was said about its file, and correct that.");
}

void Delete(const OPTIONS_OPTIONS& options)
{
    RequireTools();
    if (!COptionsHelper(Widen(options.strStore), false).Delete(Widen(options.strKey)))
        throw HostError("there is no option \"" + options.strKey + "\" in \"" + options.strStore +
                        "\" that could be deleted; 'rondel options list' shows what there is.");
}
} // namespace

void AddOptionsCommand(CLI::App& app, int& nExitCode)
{
    auto p = std::make_shared<OPTIONS_OPTIONS>();
    CLI::App* pCommand = app.add_subcommand("options", "Lists, reads and sets the player's options.");
    pCommand->footer(FOOTER);
    pCommand->require_subcommand(1);
    const auto add = [&](const char* pName, const char* pText, void (*pRun)(const OPTIONS_OPTIONS&))
    {
        CLI::App* pAction = pCommand->add_subcommand(pName, pText);
        pAction->callback(
            [p, pRun, &nExitCode]
            {
                pRun(*p);
                CheckOutput();
                nExitCode = EXIT_DONE;
            });
        return pAction;
    };
    CLI::App* pList = add("list", "shows all options, or those of one store", List);
    pList->add_option("STORE", p->strStore, "the name of a store");
    pList->add_flag("--json", p->bJson, "print JSON for programs");
    CLI::App* pGet = add("get", "shows the value of one option", Get);
    CLI::App* pSet = add("set", "gives an option a value", Set);
    CLI::App* pDelete = add("delete", "takes an option away, so that its default holds", Delete);
    for (CLI::App* pAction : {pGet, pSet, pDelete})
    {
        pAction->add_option("STORE", p->strStore, "the name of its store")->required();
        pAction->add_option("KEY", p->strKey, "its own name")->required();
    }
    pSet->add_option("VALUE", p->strValue, "the value")->required();
}
