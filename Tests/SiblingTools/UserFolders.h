// A home of its own for one test: the folders of the user lead into a temporary one, until the scope ends.

#pragma once

#include "TempFolder.h"
#include <cstdlib>
#include <optional>
#include <string>

class Environment
{
public:
    // Null unsets the variable.
    Environment(const char* pName, const char* pValue) : m_strName(pName)
    {
        if (const char* pOld = std::getenv(pName))
            m_Old = pOld;
        Put(pValue);
    }
    ~Environment() { Put(m_Old ? m_Old->c_str() : nullptr); }
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;

private:
    void Put(const char* pValue) const
    {
        if (pValue != nullptr)
            setenv(m_strName.c_str(), pValue, 1);
        else
            unsetenv(m_strName.c_str());
    }

    std::string m_strName;
    std::optional<std::string> m_Old;
};

class UserFolders
{
public:
    UserFolders() = default;
    explicit UserFolders(TEMP_PLACE ePlace) : m_Folder(ePlace) {}

    std::string GetConfig() const { return m_Folder.GetPath("config"); }
    std::string GetOptionsFile() const { return m_Folder.GetPath("config/rondel/options.sqlite"); }
    const TempFolder& GetFolder() const { return m_Folder; }

private:
    TempFolder m_Folder;
    Environment m_Home{"HOME", m_Folder.GetPath("home").c_str()};
    Environment m_Config{"XDG_CONFIG_HOME", m_Folder.GetPath("config").c_str()};
    Environment m_Data{"XDG_DATA_HOME", m_Folder.GetPath("data").c_str()};
};
