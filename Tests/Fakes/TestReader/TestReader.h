// A scripted reader, and the reader library that makes it. The script says what the reader answers; the record says
// what it was asked. While a TestReaderLibrary lives, CreateGenericReader makes such readers.
//
//   TestReaderLibrary library;
//   library.m_Script.strContent = "abc";

#pragma once

#include "ILyReader.h"
#include "LySharedToolsHelper.h"
#include "ProcessInfo.h"
#include <algorithm>
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <vector>

struct READER_SCRIPT
{
    static constexpr long long OF_THE_CONTENT = -2;

    std::string strContent;
    long long nLength = OF_THE_CONTENT; // what GetLength says; -1: not known
    bool bOpens = true;
    bool bSeeks = true;
    bool bCanCancel = true;
    bool bNoReader = false;                    // there is none for any name
    std::map<std::wstring, std::wstring> info; // of GetInfo; what is missing is null
    std::function<void()> onRead;              // before each read
    std::function<void()> onOpen;
};

struct READER_RECORD
{
    std::vector<std::wstring> aryCalls; // but for Read, GetLength and GetInfo
    std::vector<int> aryReads;          // bytes asked for
    std::wstring strPath;
    int nCreated = 0;
    int nDestroyed = 0;
    int nClosed = 0;
    std::string strPostData;
};

class ScriptedReader final : public ILyReader
{
public:
    ScriptedReader(READER_SCRIPT& script, READER_RECORD& record) : m_Script(script), m_Record(record)
    {
        ++m_Record.nCreated;
    }
    ~ScriptedReader() override { ++m_Record.nDestroyed; }
    ScriptedReader(const ScriptedReader&) = delete;
    ScriptedReader& operator=(const ScriptedReader&) = delete;

    bool Create() override { return false; }
    bool Open() override
    {
        m_Record.aryCalls.push_back(L"Open");
        if (m_Script.onOpen)
            m_Script.onOpen();
        return m_Script.bOpens;
    }
    void Close() override { ++m_Record.nClosed; }
    int Read(void* p, int nBytes) override
    {
        m_Record.aryReads.push_back(nBytes);
        if (m_Script.onRead)
            m_Script.onRead();
        const size_t nRest = m_Script.strContent.size() - std::min(m_nPosition, m_Script.strContent.size());
        const size_t nGot = std::min(static_cast<size_t>(nBytes), nRest);
        std::memcpy(p, m_Script.strContent.data() + (nGot > 0 ? m_nPosition : 0), nGot);
        m_nPosition += nGot;
        return static_cast<int>(nGot);
    }
    int Write(const void*, int) override { return 0; }
    long long GetLength() override
    {
        return m_Script.nLength != READER_SCRIPT::OF_THE_CONTENT ? m_Script.nLength
                                                                 : static_cast<long long>(m_Script.strContent.size());
    }
    long long GetPosition() override { return static_cast<long long>(m_nPosition); }
    long long Seek(long long nOffset, int nOrigin) override
    {
        m_Record.aryCalls.push_back(L"Seek " + std::to_wstring(nOffset) + L" " + std::to_wstring(nOrigin));
        if (!m_Script.bSeeks)
            return -1;
        m_nPosition = static_cast<size_t>(nOffset);
        return nOffset;
    }
    bool GetIsStream() override { return false; }
    bool GetCanClose() override { return true; }
    bool GetIsOpen() override { return true; }
    wchar_t* GetInfo(const wchar_t* pName) override
    {
        auto it = m_Script.info.find(pName);
        return it != m_Script.info.end() ? LyCom::SysAllocString(it->second.c_str()) : nullptr;
    }
    void SetTimeout(int nMS) override { m_Record.aryCalls.push_back(L"SetTimeout " + std::to_wstring(nMS)); }
    void SetPostData(void* p, int nBytes) override
    {
        m_Record.aryCalls.push_back(L"SetPostData " + std::to_wstring(nBytes));
        if (nBytes > 0)
            m_Record.strPostData.assign(static_cast<const char*>(p), static_cast<size_t>(nBytes));
    }
    void SetDownloadParameters(LyString strParameters) override
    {
        m_Record.aryCalls.push_back(std::wstring(L"SetDownloadParameters ") +
                                    static_cast<const wchar_t*>(strParameters));
    }
    void SetProperty(const wchar_t* pName, const wchar_t*) override
    {
        m_Record.aryCalls.push_back(std::wstring(L"SetProperty ") + pName);
    }
    bool GetCanCancel() override { return m_Script.bCanCancel; }
    void SetEndOfFile() override {}

private:
    READER_SCRIPT& m_Script;
    READER_RECORD& m_Record;
    size_t m_nPosition = 0;
};

class TestReaderLibrary
{
public:
    TestReaderLibrary()
    {
        s_pThis = this;
        g_LySharedToolsHelper.UnloadLyReaderLib();
        LyString strPath;
        strPath.FromANSI(RONDEL_FAKES_DIR "/test_reader/");
        GetProcessInfo(true)->SetSharedLibraryPath(strPath);
        EXPECT_TRUE(g_LySharedToolsHelper.LoadLyReaderLib(LyString()));
        auto pSetFactory = reinterpret_cast<void (*)(ILyReader * (*)(const wchar_t*))>(
            g_LySharedToolsHelper.m_ReaderLibrary.GetProcAddress("SetReaderFactory"));
        if (pSetFactory != nullptr)
            pSetFactory(&Make);
    }
    ~TestReaderLibrary()
    {
        EXPECT_EQ(m_Record.nCreated, m_Record.nDestroyed);
        g_LySharedToolsHelper.UnloadLyReaderLib();
    }
    TestReaderLibrary(const TestReaderLibrary&) = delete;
    TestReaderLibrary& operator=(const TestReaderLibrary&) = delete;

    READER_SCRIPT m_Script;
    READER_RECORD m_Record;

private:
    static ILyReader* Make(const wchar_t* pPath)
    {
        s_pThis->m_Record.strPath = pPath;
        return s_pThis->m_Script.bNoReader ? nullptr : new ScriptedReader(s_pThis->m_Script, s_pThis->m_Record);
    }

    static inline TestReaderLibrary* s_pThis = nullptr;
};

// The second reader: keeps what it is given.
class OutputReader final : public ILyReader
{
public:
    bool Create() override
    {
        ++m_nCreated;
        return m_bCreates;
    }
    bool Open() override { return false; }
    void Close() override { ++m_nClosed; }
    int Read(void*, int) override { return 0; }
    int Write(const void* p, int nBytes) override
    {
        const int nTaken = std::min(nBytes, m_nRoom - static_cast<int>(m_strWritten.size()));
        m_strWritten.append(static_cast<const char*>(p), static_cast<size_t>(nTaken));
        return nTaken;
    }
    long long GetLength() override { return 0; }
    long long GetPosition() override { return 0; }
    long long Seek(long long, int) override { return 0; }
    bool GetIsStream() override { return false; }
    bool GetCanClose() override { return true; }
    bool GetIsOpen() override { return true; }
    wchar_t* GetInfo(const wchar_t*) override { return nullptr; }
    void SetTimeout(int) override {}
    void SetPostData(void*, int) override {}
    void SetDownloadParameters(LyString) override {}
    void SetProperty(const wchar_t*, const wchar_t*) override {}
    bool GetCanCancel() override { return true; }
    void SetEndOfFile() override {}

    bool m_bCreates = true;
    int m_nRoom = 1 << 30;
    int m_nCreated = 0;
    int m_nClosed = 0;
    std::string m_strWritten;
};
