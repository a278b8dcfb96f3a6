// What the user asks 'rondel tags set' for: which files, and what is to change in each.

#pragma once

#include "TagEdit.h"
#include <map>
#include <optional>
#include <string>
#include <vector>

struct TAGS_SET_OPTIONS
{
    std::vector<std::string> aryArguments; // FILE and Field=Value in any order
    std::vector<std::string> aryRemove;
    std::string strPicture;
    std::string strJson;
    bool bDryRun = false;
    bool bDropDamaged = false;
};

class TagsRequest
{
public:
    // Throws HostError for a picture or a JSON file that is none, and CLI::ValidationError for what makes no sense.
    explicit TagsRequest(const TAGS_SET_OPTIONS& options);

    const std::vector<std::string>& GetFiles() const { return m_aryFiles; }
    // What the JSON says comes first, so that the command line has the last word. Throws HostError for a file that the
    // JSON does not know.
    TAG_EDIT GetEdit(const std::string& strFile) const;

private:
    void ReadJson(const std::string& strPath);

    std::vector<std::string> m_aryFiles;
    TAG_EDIT m_Edit;                               // by the command line
    std::string m_strJson;                         // empty: none
    std::optional<TAG_FIELDS> m_AllFields;         // of the JSON, for every file
    std::map<std::string, TAG_FIELDS> m_mapFields; // by absolute path
};
