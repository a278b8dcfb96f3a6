// rondel tags: what the tags of files say, and how to change them.

#include "Commands.h"
#include "EachFile.h"
#include "HostError.h"
#include "Output.h"
#include "TagFile.h"
#include "TagsRequest.h"
#include "TagsShow.h"
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <utility>

namespace
{
using json = nlohmann::ordered_json;

constexpr const char* FOOTER =
    "WAV files, and files that begin with an ID3v2 tag (MP3). A file named \"set\" is written ./set.\n"
    "Exit codes: 0 done, 1 a file failed, 2 the command line is at fault.";

constexpr const char* SET_FOOTER =
    "Fields have the names that 'rondel tags' shows, in any case; Title, Track, Disc, AlbumArtist, Year and\n"
    "REPLAYGAIN_TRACK_GAIN are understood, too. Another name is kept as a text of its own. Field= with nothing behind "
    "it\n"
    "takes the field out, as --remove does; --remove Picture takes out all pictures.\n"
    "  Track=3/12           without a total, the one that is there stays\n"
    "  Date=1999-05-30      or a year alone\n"
    "  Artist=\"A; B\"        several, in a tag of version 2.4\n\n"
    "The JSON is {\"Title\": \"...\", \"Comment\": null}, or what 'rondel tags --json' prints, in which the files "
    "find\n"
    "their own entries. A file is replaced when the new one is whole. An INFO list in a WAV file stays as it is.";

struct TAGS_OPTIONS
{
    std::vector<std::string> aryFiles;
    bool bJson = false;
    TAGS_SET_OPTIONS set;
};

int Show(const TAGS_OPTIONS& options)
{
    if (options.aryFiles.empty())
        throw CLI::ValidationError("FILE is required");
    json list = json::array();
    const char* pBetween = "";
    const int nExitCode = ForEachFile(options.aryFiles,
                                      [&](const std::string& strFile)
                                      {
                                          TagFile file(strFile);
                                          if (options.bJson)
                                          {
                                              list.push_back(DescribeTags(file));
                                              return true;
                                          }
                                          std::fputs(std::exchange(pBetween, "\n"), stdout);
                                          PrintTags(file);
                                          return true;
                                      });
    if (options.bJson)
        PrintJson(list);
    CheckOutput();
    return nExitCode;
}

// A name that nobody knows is often one that is misspelt.
void NoteOwnNames(TagFile& file, const TAG_FIELDS& before, const TAG_FIELDS& after)
{
    std::set<std::string> aryKnown;
    for (const auto& field : before)
        aryKnown.insert(field.first);
    for (const auto& field : after)
    {
        const std::string& strName = field.first;
        if (!aryKnown.contains(strName) && !IsTableField(strName))
            std::fprintf(stderr,
                         "rondel: note: %s: \"%s\" is no field that is known, and is kept as a text of its own.\n",
                         file.GetPath().c_str(), strName.c_str());
    }
}

// The file's name stands ahead of what is wrong with the edit.
void Apply(const TagFile& file, CID3v2Tag& tag, const TAG_EDIT& edit)
{
    try
    {
        ApplyTagEdit(tag, edit);
    }
    catch (const HostError& error)
    {
        throw HostError(file.GetPath() + ": " + error.what());
    }
}

void SetOne(const std::string& strFile, const TagsRequest& request, const TAGS_SET_OPTIONS& options)
{
    TagFile file(strFile);
    const TAG_EDIT edit = request.GetEdit(strFile);
    const TAG_FIELDS before = CollectTagFields(file.GetTag());
    Apply(file, file.GetTag(), edit);
    const bool bChanged = file.GetTag().m_bDirty;
    if (bChanged)
    {
        LyBuffer saved;
        (void)file.GetTag().SaveToBuffer(saved); // what saving itself changes belongs to the difference
        const std::string strLosses = options.bDropDamaged ? std::string() : file.DescribeLosses();
        if (!strLosses.empty())
            throw HostError(strFile + " " + strLosses + "; --drop-damaged saves it nevertheless.");
    }
    const TAG_FIELDS after = CollectTagFields(file.GetTag());
    if (bChanged)
        NoteOwnNames(file, before, after);
    if (options.bDryRun)
        PrintTagDifference(strFile, before, after);
    else if (bChanged)
        file.Save([&](CID3v2Tag& tag) { Apply(file, tag, edit); });
}

int Set(const TAGS_SET_OPTIONS& options)
{
    const TagsRequest request(options);
    const int nExitCode = ForEachFile(request.GetFiles(),
                                      [&](const std::string& strFile)
                                      {
                                          SetOne(strFile, request, options);
                                          return true;
                                      });
    CheckOutput();
    return nExitCode;
}
} // namespace

void AddTagsCommand(CLI::App& app, int& nExitCode)
{
    auto p = std::make_shared<TAGS_OPTIONS>();
    CLI::App* pCommand = app.add_subcommand("tags", "Shows the tags of files, and changes them.");
    pCommand->add_option("FILES", p->aryFiles, "WAV and MP3 files")->check(CheckFileName);
    pCommand->add_flag("--json", p->bJson, "print JSON for programs");
    pCommand->footer(FOOTER);
    CLI::App* pSet = pCommand->add_subcommand("set", "Changes fields: rondel tags set FILE... Field=Value...");
    pSet->add_option("ARGUMENTS", p->set.aryArguments, "FILE and Field=Value, several of both");
    pSet->add_option("--remove", p->set.aryRemove, "take out a field")->allow_extra_args(false);
    pSet->add_option("--picture", p->set.strPicture, "an image file for the front cover");
    pSet->add_option("--from-json", p->set.strJson, "a file with fields and values");
    pSet->add_flag("--dry-run", p->set.bDryRun, "show the difference, and change nothing");
    pSet->add_flag("--drop-damaged", p->set.bDropDamaged, "lose what cannot be read of a damaged tag");
    pSet->footer(SET_FOOTER);
    pCommand->callback([p, pSet, &nExitCode] { nExitCode = pSet->parsed() ? Set(p->set) : Show(*p); });
}
