// The file loader over the built reader and tools libraries, in front of a web server of its own.

#pragma once

#include "FileLoader.h"
#include "LySharedToolsHelper.h"
#include "NginxServer.h"
#include "ProcessInfo.h"
#include "ReaderTesting.h"
#include <fstream>
#include <iterator>
#include <vector>

class FileLoaderWeb : public testing::Test
{
protected:
    FileLoaderWeb()
    {
        setenv("no_proxy", "*", 1); // loopback goes straight
        setenv("XDG_CONFIG_HOME", m_Folder.GetPath("config").c_str(), 1);
        setenv("XDG_DATA_HOME", m_Folder.GetPath("data").c_str(), 1); // temporary files go there, too
        g_LySharedToolsHelper.UnloadLySharedLibs(false);
        GetProcessInfo(true)->SetSharedLibraryPath(LyString().FromANSI(RONDEL_BIN_DIR "/"));
        (void)GetLyTools(true); // its services are asked for, but never loaded by that
    }
    ~FileLoaderWeb() override { g_LySharedToolsHelper.UnloadLySharedLibs(false); }

    void SetUp() override
    {
        ASSERT_TRUE(m_Server.GetIsRunning());
        ASSERT_NE(nullptr, GetLyTools(false));
    }

    static LyFilename Name(const std::string& strName) { return LyFilename(WidenUTF8(strName).c_str()); }
    LyFilename URL(const std::string& strPath) const { return Name(m_Server.GetURL(strPath)); }

    bool Load(const std::string& strPath) { return m_Loader.LoadBuffer(URL(strPath), m_Buffer); }
    bool LoadWithGzip(const std::string& strPath)
    {
        m_Loader.SetDownloadParameters(nullptr, nullptr, 0, false); // what asks for gzip
        return Load(strPath);
    }
    std::string GetText() const
    {
        return {reinterpret_cast<const char*>(m_Buffer.GetData()), static_cast<size_t>(m_Buffer.GetSize())};
    }
    static std::string Narrow(const LyString& str) { return LyStringUTF8(str).Get(); }
    std::string GetHeader(const wchar_t* pName) const { return Narrow(m_Loader.GetResponseHeader(pName)); }
    std::string GetStatus() const { return Narrow(m_Loader.m_strStatusCode); }

    static std::string ReadFile(const std::string& strPath)
    {
        std::ifstream file(strPath, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }
    // Makes the file <name>.gz on the server.
    void WritePacked(const std::string& strName, const std::string& strContent) const
    {
        m_Server.Write(strName, strContent);
        const std::string strPath = m_Server.GetFolder().GetPath("files/" + strName);
        ASSERT_EQ(0, std::system(("gzip '" + strPath + "'").c_str()));
    }
    std::vector<std::string> FindFiles(const std::string& strPart) const
    {
        std::vector<std::string> aryFound;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(m_Folder.GetPath()))
            if (entry.path().filename().string().find(strPart) != std::string::npos)
                aryFound.push_back(entry.path());
        return aryFound;
    }

    TempFolder m_Folder;
    NginxServer m_Server;
    CFileLoader m_Loader;
    LyBuffer m_Buffer;
};
