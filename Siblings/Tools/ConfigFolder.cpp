#include "ConfigFolder.h"
#include <cstdlib>
#include <sys/stat.h>

namespace
{
const char* const PRODUCT_FOLDER = "rondel/";
constexpr mode_t ONLY_THE_USER = 0700; // as the standard asks for folders that a program makes

std::string GetAbsoluteFolder(const char* pVariable)
{
    const char* pValue = std::getenv(pVariable);
    if (pValue == nullptr || *pValue != '/')
        return {};
    std::string strFolder(pValue);
    if (strFolder.back() != '/')
        strFolder += '/';
    return strFolder;
}

std::string GetProductFolder(const char* pVariable, const char* pBelowHome)
{
    std::string strFolder = GetAbsoluteFolder(pVariable);
    if (strFolder.empty())
    {
        strFolder = GetAbsoluteFolder("HOME");
        if (strFolder.empty())
            return strFolder;
        strFolder += pBelowHome;
    }
    return strFolder + PRODUCT_FOLDER;
}

bool IsFolder(const std::string& strFolder)
{
    struct stat status;
    return stat(strFolder.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}
} // namespace

std::string GetConfigFolder() { return GetProductFolder("XDG_CONFIG_HOME", ".config/"); }

std::string GetDataFolder() { return GetProductFolder("XDG_DATA_HOME", ".local/share/"); }

std::string GetStateFolder() { return GetProductFolder("XDG_STATE_HOME", ".local/state/"); }

bool MakeFolder(const std::string& strFolder)
{
    if (strFolder.empty())
        return false;
    if (IsFolder(strFolder))
        return true;
    for (size_t nSlash = strFolder.find('/', 1); nSlash != std::string::npos; nSlash = strFolder.find('/', nSlash + 1))
        (void)mkdir(strFolder.substr(0, nSlash).c_str(), ONLY_THE_USER); // one that is there already is as good
    (void)mkdir(strFolder.c_str(), ONLY_THE_USER);
    return IsFolder(strFolder);
}
