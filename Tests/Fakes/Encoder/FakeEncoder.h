// A scripted encoder plug-in. The plug-in is a library of its own and asks the test program what to answer; the test
// program keeps a record of what it was asked. One such object at a time.
//
//   FakeEncoder fake;
//   fake.m_nPiecesTaken = 2;
//   plugin.m_strLibrary = FakeEncoder::GetLibrary();
//   EXPECT_EQ("Attach, Create, ...", fake.GetEvents());
//
// Threads: one at a time.

#pragma once

#include "EncoderHelper.h"
#include <climits>
#include <functional>
#include <map>
#include <string>
#include <vector>

class FakeEncoder
{
public:
    using SET_FAKE = void (*)(FakeEncoder*);

    FakeEncoder() { Connect(this); }
    ~FakeEncoder() { Connect(nullptr); }
    FakeEncoder(const FakeEncoder&) = delete;
    FakeEncoder& operator=(const FakeEncoder&) = delete;

    static LyString GetFolder() { return LyString().FromANSI(RONDEL_FAKES_DIR "/encoders/"); }
    static LyString GetLibrary() { return LyString().FromANSI(RONDEL_FAKES_DIR "/encoders/enc_scripted.so"); }
    static LyString GetLibraryWithoutEntry()
    {
        return LyString().FromANSI(RONDEL_FAKES_DIR "/encoders/enc_no_entry.so");
    }

    std::string GetEvents() const
    {
        std::string strAll;
        for (const std::string& strEvent : m_aryEvents)
            strAll += (strAll.empty() ? "" : ", ") + strEvent;
        return strAll;
    }

    // The script.
    bool m_bMakesEncoder = true;
    bool m_bThrowsAtCreation = false;
    int m_nPiecesTaken = INT_MAX; // every further one is refused
    bool m_bFinishes = true;
    std::map<std::wstring, std::wstring> m_Infos; // of GetInfo; what is missing is null

    // The record. Called by the plug-in, and by tests that put an event of their own between its events.
    virtual void OnEvent(const char* pEvent) { m_aryEvents.push_back(pEvent); }
    virtual void OnCreate(int nParameter, ILyEncoderCallback* pCallback)
    {
        m_nParameter = nParameter;
        m_pCallback = pCallback;
    }
    virtual bool OnData(const unsigned char* pData, int nBytes)
    {
        m_aryPieces.push_back(nBytes);
        if (static_cast<int>(m_aryPieces.size()) > m_nPiecesTaken)
            return false;
        if (nBytes > 0)
            m_strData.append(reinterpret_cast<const char*>(pData), static_cast<size_t>(nBytes));
        return true;
    }
    virtual const wchar_t* OnGetInfo(const wchar_t* pKey)
    {
        auto it = m_Infos.find(pKey);
        return it != m_Infos.end() ? it->second.c_str() : nullptr;
    }
    virtual void OnSetInfo(const wchar_t* pKey, const wchar_t* pValue)
    {
        m_arySettings.push_back(std::wstring(pKey) + L"=" + pValue);
    }

    std::vector<std::string> m_aryEvents;
    std::vector<int> m_aryPieces;
    std::string m_strData;
    std::vector<std::wstring> m_arySettings;
    int m_nParameter = 0;
    ILyEncoderCallback* m_pCallback = nullptr;

private:
    // Holding the library keeps the one that the host loads the same; it is no part of the record.
    void Connect(FakeEncoder* pFake)
    {
        if (pFake != nullptr)
        {
            (void)m_Scripted.Load(GetLibrary(), false);
            (void)m_NoEntry.Load(GetLibraryWithoutEntry(), false);
        }
        for (LyLoadLibrary* pLibrary : {&m_Scripted, &m_NoEntry})
            if (auto pSet = reinterpret_cast<SET_FAKE>(pLibrary->GetProcAddress("SetFakeEncoder")))
                pSet(pFake);
    }

    LyLoadLibrary m_Scripted;
    LyLoadLibrary m_NoEntry;
};
