// An encoder as its host sees it: the built plug-in, behind CEncoderPlugin, in a folder of its own; and outside
// programs that judge what it has made.

#pragma once

#include "EncoderError.h"
#include "EncoderHelper.h"
#include "TempFolder.h"
#include "UTF8.h"
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

// Records what an encoder tells. May stop it on the way.
class EncoderEvents : public ILyEncoderCallback
{
public:
    void OnFinished(ILyEncoder*) override { m_strEvents += "finished "; }
    void OnError(ILyEncoder*, int nCode, const wchar_t* pText) override
    {
        m_strEvents += "error" + std::to_string(nCode) + " ";
        m_strText = NarrowUTF8(pText);
    }
    void OnProgress(ILyEncoder* pEncoder, int nPercent) override
    {
        m_aryPercents.push_back(nPercent);
        if (nPercent == m_nStopAt)
            pEncoder->Stop();
    }
    std::string m_strEvents;
    std::string m_strText;
    std::vector<int> m_aryPercents;
    int m_nStopAt = -1;
};

class EncoderTest : public ::testing::Test
{
protected:
    static constexpr int PIECE_BYTES = 27 * 2352; // one read of a drive

    static LyString Wide(const std::string& str) { return LyString(WidenUTF8(str).c_str()); }

    void Open(const char* pName, const std::string& strSettings, const std::string& strFile = "out.bin")
    {
        m_Plugin.m_strName = Wide(pName);
        m_Plugin.m_strLibrary = Wide(std::string(RONDEL_BIN_DIR "/enc_") + pName + ".so");
        m_Plugin.m_strSettings = Wide(strSettings);
        ASSERT_TRUE(m_Plugin.Open(&m_Events, true));
        SetOutput(m_Folder.GetPath(strFile));
    }
    void SetOutput(const std::string& strPath)
    {
        m_strPath = strPath;
        Set("Output File", strPath);
    }
    void Set(const char* pKey, const std::string& strValue)
    {
        m_Plugin.m_pEncoder->SetInfo(Wide(pKey), Wide(strValue));
    }
    std::string Get(const char* pKey) { return NarrowUTF8(static_cast<const wchar_t*>(m_Plugin.GetInfo(Wide(pKey)))); }
    int GetError() { return std::stoi(Get("Last Error Code")); }

    // False at the first piece that is not taken.
    bool Feed(const std::string& strData, int nPieceBytes = PIECE_BYTES)
    {
        for (size_t n = 0; n < strData.size(); n += static_cast<size_t>(nPieceBytes))
        {
            std::string strPiece = strData.substr(n, static_cast<size_t>(nPieceBytes));
            if (m_Plugin.EncodeBuffer(reinterpret_cast<unsigned char*>(strPiece.data()),
                                      static_cast<int>(strPiece.size())) != ENCODER_OK)
                return false;
        }
        return true;
    }
    bool Encode(const std::string& strData, int nPieceBytes = PIECE_BYTES)
    {
        return Feed(strData, nPieceBytes) && m_Plugin.FinishBufferInput();
    }

    // Two tones and some noise, the same at every call.
    static std::string MakeMusic(int nFrames, int nChannels = 2, int nBits = 16)
    {
        std::string strData;
        uint32_t nNoise = 12345;
        for (int i = 0; i < nFrames; ++i)
            for (int c = 0; c < nChannels; ++c)
            {
                nNoise = nNoise * 1664525u + 1013904223u;
                const double fNoise = static_cast<double>(nNoise >> 8) / 16777216.0 - 0.5;
                const double fTone = 0.6 * std::sin(i * 0.05 * (c + 1)) + 0.2 * std::sin(i * 0.31) + 0.1 * fNoise;
                const int32_t nSample = static_cast<int32_t>(fTone * 2147483647.0) >> (32 - nBits);
                for (int nByte = 0; nByte < nBits / 8; ++nByte)
                    strData += static_cast<char>((nSample >> (8 * nByte)) & 255);
            }
        return strData;
    }

    static std::string ReadFile(const std::string& strPath)
    {
        std::ifstream file(strPath, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }
    std::string ReadOutput() const { return ReadFile(m_strPath); }

    // The names in the folder, sorted, hidden ones too.
    std::string ListFolder() const
    {
        std::vector<std::string> aryNames;
        for (const auto& entry : std::filesystem::directory_iterator(m_Folder.GetPath()))
            aryNames.push_back(entry.path().filename().string());
        std::sort(aryNames.begin(), aryNames.end());
        std::string strAll;
        for (const std::string& strName : aryNames)
            strAll += (strAll.empty() ? "" : " ") + strName;
        return strAll;
    }

    // What an outside program says; its exit status is m_nStatus.
    std::string Run(const std::string& strCommand)
    {
        std::string strOutput;
        FILE* pPipe = popen(("cd " + m_Folder.GetPath() + " && " + strCommand).c_str(), "r");
        char aryText[4096];
        for (size_t n = 0; (n = fread(aryText, 1, sizeof aryText, pPipe)) > 0;)
            strOutput.append(aryText, n);
        m_nStatus = pclose(pPipe);
        return strOutput;
    }
    static bool HasProgram(const char* pName)
    {
        return system((std::string("command -v ") + pName + " >/dev/null").c_str()) == 0;
    }

    // The handle of the file that the encoder is writing, or -1.
    static int FindTemporaryHandle()
    {
        for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd"))
        {
            std::error_code error;
            if (std::filesystem::read_symlink(entry.path(), error).string().find(".part") != std::string::npos)
                return std::stoi(entry.path().filename().string());
        }
        return -1;
    }
    // From now on the encoder's disk is full.
    static void FillDisk()
    {
        const int nHandle = FindTemporaryHandle();
        ASSERT_GE(nHandle, 0);
        const int nFull = open("/dev/full", O_RDWR | O_CLOEXEC);
        ASSERT_GE(dup3(nFull, nHandle, O_CLOEXEC), 0);
        close(nFull);
    }

    // A PNG of one pixel: red.
    std::string WritePicture() const
    {
        static const unsigned char s_aryPNG[] = {
            0x89, 'P',  'N',  'G', '\r', '\n', 0x1A, '\n', 0,    0,    0,    13,   'I',  'H',  'D',  'R', 0, 0,
            0,    1,    0,    0,   0,    1,    8,    2,    0,    0,    0,    0x90, 0x77, 0x53, 0xDE, 0,   0, 0,
            12,   'I',  'D',  'A', 'T',  0x08, 0xD7, 0x63, 0xF8, 0xCF, 0xC0, 0,    0,    3,    1,    1,   0, 0x18,
            0xDD, 0x8D, 0xB0, 0,   0,    0,    0,    'I',  'E',  'N',  'D',  0xAE, 0x42, 0x60, 0x82};
        return m_Pictures.Write("cover.png", {reinterpret_cast<const char*>(s_aryPNG), sizeof s_aryPNG});
    }

    TempFolder m_Folder;
    TempFolder m_Pictures;
    EncoderEvents m_Events; // outlive the plug-in
    CEncoderPlugin m_Plugin;
    std::string m_strPath;
    int m_nStatus = 0;
};
