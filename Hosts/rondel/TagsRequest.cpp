#include "TagsRequest.h"
#include "HostError.h"
#include <CLI/CLI.hpp>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

namespace
{
using json = nlohmann::ordered_json;

// A name with a slash ahead of the equals sign is that of a file.
bool IsAssignment(const std::string& strArgument)
{
    const size_t nEquals = strArgument.find('=');
    return nEquals != std::string::npos && strArgument.find('/') > nEquals;
}

[[noreturn]] void FailJson(const std::string& strPath, const std::string& strWhat)
{
    throw HostError("the JSON file " + strPath + " " + strWhat +
                    "; it is {\"Title\": \"...\"}, or what 'rondel tags --json' prints.");
}

// A null takes the field out, as an empty text does.
std::string GetText(const std::string& strPath, const std::string& strName, const json& value)
{
    if (value.is_null())
        return {};
    if (value.is_string())
        return value.get<std::string>();
    if (value.is_number())
        return value.dump();
    FailJson(strPath, "has no text for \"" + strName + "\"");
}

TAG_FIELDS GetFields(const std::string& strPath, const json& object)
{
    if (!object.is_object())
        FailJson(strPath, "has fields that are no object");
    TAG_FIELDS fields;
    for (const auto& [strName, value] : object.items())
        fields.emplace_back(strName, GetText(strPath, strName, value));
    return fields;
}

std::string GetAbsolute(const std::string& strPath)
{
    std::error_code error;
    return std::filesystem::absolute(strPath, error).lexically_normal().string();
}
} // namespace

TagsRequest::TagsRequest(const TAGS_SET_OPTIONS& options) : m_strJson(options.strJson)
{
    for (const std::string& strArgument : options.aryArguments)
    {
        const size_t nEquals = strArgument.find('=');
        if (strArgument.empty())
            throw CLI::ValidationError("the name of a file is empty");
        if (!IsAssignment(strArgument))
            m_aryFiles.push_back(strArgument);
        else if (nEquals == 0)
            throw CLI::ValidationError("\"" + strArgument + "\" names no field ahead of its equals sign");
        else
            m_Edit.changes.emplace_back(strArgument.substr(0, nEquals), strArgument.substr(nEquals + 1));
    }
    for (const std::string& strField : options.aryRemove)
        m_Edit.changes.emplace_back(strField, "");
    if (m_aryFiles.empty())
        throw CLI::ValidationError("FILE is required; one with an equals sign in its name is written ./a=b.wav");
    if (m_Edit.changes.empty() && options.strPicture.empty() && options.strJson.empty())
        throw CLI::ValidationError("nothing is to be changed; give Field=Value, --remove, --picture or --from-json");
    if (!options.strPicture.empty())
        m_Edit.pPicture = LoadTagPicture(options.strPicture);
    if (!m_strJson.empty())
        ReadJson(m_strJson);
}

void TagsRequest::ReadJson(const std::string& strPath)
{
    std::error_code error;
    std::ifstream file(strPath, std::ios::binary);
    std::ostringstream text;
    if (!std::filesystem::is_regular_file(strPath, error) || !(text << file.rdbuf()))
        FailJson(strPath, "cannot be read");
    const json root = json::parse(text.str(), nullptr, false);
    if (root.is_discarded())
        FailJson(strPath, "is no JSON");
    if (root.is_object() && !root.contains("fields"))
    {
        m_AllFields = GetFields(strPath, root);
        return;
    }
    const json list = root.is_array() ? root : json::array({root});
    for (const json& entry : list)
    {
        if (!entry.is_object() || !entry.contains("fields"))
            FailJson(strPath, "has an entry without \"fields\"");
        const TAG_FIELDS fields = GetFields(strPath, entry["fields"]);
        if (entry.contains("file") && entry["file"].is_string())
            m_mapFields[GetAbsolute(entry["file"].get<std::string>())] = fields;
        else if (list.size() == 1)
            m_AllFields = fields;
        else
            FailJson(strPath, "has an entry without \"file\"");
    }
}

TAG_EDIT TagsRequest::GetEdit(const std::string& strFile) const
{
    TAG_EDIT edit = m_Edit;
    if (m_strJson.empty())
        return edit;
    const auto pFound = m_mapFields.find(GetAbsolute(strFile));
    if (pFound == m_mapFields.end() && !m_AllFields)
        throw HostError(strFile + " is not in the JSON file " + m_strJson + "; leave it out, or add it there.");
    const TAG_FIELDS& fields = m_AllFields ? *m_AllFields : pFound->second;
    edit.changes.insert(edit.changes.begin(), fields.begin(), fields.end());
    return edit;
}
