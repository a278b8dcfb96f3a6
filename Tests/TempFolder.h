// A folder for one test, readable for everybody, gone with all that is in it when the object goes.

#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <sys/statvfs.h>
#include <unistd.h>

enum TEMP_PLACE
{
    TEMP_ON_DISK,
    TEMP_IN_MEMORY // for hundreds of rounds that each wait for the disk; on it if the memory has no room for that
};

// All of a file, by the block: byte by byte a large one takes seconds under a sanitizer.
inline std::string ReadBlocks(const std::filesystem::path& path)
{
    std::ifstream stream(path, std::ios::binary);
    std::string strAll;
    char aryBlock[65536];
    while (stream.read(aryBlock, sizeof aryBlock), stream.gcount() > 0)
        strAll.append(aryBlock, static_cast<size_t>(stream.gcount()));
    return strAll;
}

class TempFolder
{
public:
    TempFolder() : TempFolder(TEMP_ON_DISK) {}
    explicit TempFolder(TEMP_PLACE ePlace)
    {
        m_strPath = (ePlace == TEMP_IN_MEMORY && IsMemoryRoomy() ? MEMORY : "/tmp") + std::string("/RondelTest.XXXXXX");
        if (mkdtemp(m_strPath.data()) == nullptr)
            abort();
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
    static constexpr const char* MEMORY = "/dev/shm";

    static bool IsMemoryRoomy()
    {
        constexpr unsigned long long ENOUGH_BYTES = 256ULL << 20;
        struct statvfs volume;
        return statvfs(MEMORY, &volume) == 0 && (volume.f_flag & ST_NOEXEC) == 0 && access(MEMORY, W_OK | X_OK) == 0 &&
               static_cast<unsigned long long>(volume.f_bavail) * volume.f_frsize >= ENOUGH_BYTES;
    }

    std::string m_strPath;
};
