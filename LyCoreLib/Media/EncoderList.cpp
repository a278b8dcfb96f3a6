// Which encoder plug-ins stand in a folder. EncoderHelper.h declares it.

#include "EncoderHelper.h"
#include "LyFileSystem.h"
#include <algorithm>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace
{
constexpr std::string_view PREFIX = "enc_";
constexpr std::string_view SUFFIX = ".so";

LyString FromUTF8(const std::string& str)
{
    LyString strWide;
    strWide.FromUTF8(reinterpret_cast<const unsigned char*>(str.c_str()));
    return strWide;
}

// A file whose name this system cannot say cannot be loaded.
bool IsPluginName(const std::string& strFile)
{
    return strFile.size() > PREFIX.size() + SUFFIX.size() && strFile.starts_with(PREFIX) && strFile.ends_with(SUFFIX) &&
           strFile == LyStringUTF8(FromUTF8(strFile)).Get();
}

// The files of the plug-ins in order. A folder that cannot be read, or no further, has no more of them.
std::vector<std::string> GetPluginFiles(const std::string& strFolder)
{
    std::vector<std::string> aryFiles;
    std::error_code error;
    for (std::filesystem::directory_iterator it(strFolder, error), end; it != end; it.increment(error))
    {
        std::error_code noFile;
        std::string strFile = it->path().filename().string();
        if (IsPluginName(strFile) && it->is_regular_file(noFile))
            aryFiles.push_back(std::move(strFile));
    }
    std::sort(aryFiles.begin(), aryFiles.end());
    return aryFiles;
}
} // namespace

void CEncoderPlugin::ListEncoders(LyString strFolder, LyOwnedPtrArray<CEncoderPlugin>& aryEncoders)
{
    if (strFolder.IsEmpty())
        strFolder = LyFileSystem::GetDirectoryInstance();
    LyFileSystem::CleanDirectory(strFolder);
    for (const std::string& strFile : GetPluginFiles(LyStringUTF8(strFolder).Get()))
    {
        CEncoderPlugin* pEncoder = new CEncoderPlugin;
        pEncoder->m_strName = FromUTF8(strFile.substr(PREFIX.size(), strFile.size() - PREFIX.size() - SUFFIX.size()));
        pEncoder->m_strLibrary = strFolder;
        pEncoder->m_strLibrary += FromUTF8(strFile);
        (void)aryEncoders.Add(pEncoder);
    }
}
