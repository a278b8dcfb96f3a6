// A folder for one test, readable for everybody, gone with all that is in it when the object goes.

#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

class TempFolder
{
public:
    TempFolder()
    {
        char szName[] = "/tmp/RondelTest.XXXXXX";
        if (mkdtemp(szName) == nullptr)
            abort();
        m_strPath = szName;
        std::filesystem::permissions(m_strPath, std::filesystem::perms(0755));
    }
    ~TempFolder()
    {
        std::error_code error;
        std::filesystem::remove_all(m_strPath, error);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    const std::string& GetPath() const { return m_strPath; }

    // The full name of something in the folder; of the empty name, the folder with a trailing slash.
    std::string GetPath(const std::string& strName) const { return m_strPath + "/" + strName; }

    // Makes a file in the folder, and the folders that its name holds. The file's full name.
    std::string Write(const std::string& strName, const std::string& strContent) const
    {
        std::filesystem::create_directories(std::filesystem::path(GetPath(strName)).parent_path());
        std::ofstream(GetPath(strName), std::ios::binary)
            .write(strContent.data(), static_cast<std::streamsize>(strContent.size()));
        return GetPath(strName);
    }

private:
    std::string m_strPath;
};
